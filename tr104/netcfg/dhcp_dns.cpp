// DNS servers, the DHCP client (enable, options 60, 120 and 125), the PPPoE client and the
// management server's URL of the voice interface.
//
// The option and PPPoE blocks start with a word naming the fields a set carries: every set
// sends one field and its bit, and the voice module keeps the others.  Those handlers are one
// body and their rows in tr104/catalogue/netcfg.toml.
#include <cstdio>

#include "tr104/netcfg/netcfg_internal.h"

namespace tr104::netcfg {
namespace {

constexpr char kFlagError[] = "param error, nFlag[%d]\n";

enum class Form : uint8_t {
    Byte,
    Word,
    Text,  // a get copies the text and its terminator
    RawText,  // a get copies the text without its terminator: the caller clears the buffer
};

// Which values a set of a number accepts.
enum class Accept : uint8_t { Any, NonNegative, Flag /* 0 or 1 */ };

struct FieldValue {
    const char *name;
    const char *valueName;  // "param error, %s is null\n" (with the text of nullSuffix)
    const char *nullSuffix;  // "\n" or "!\n"
    const char *entry;  // "%d" nFlag and the value (a number) or "%s" (a text)
    uint16_t getCmd, setCmd, len;
    uint16_t offset;
    Form form;
    uint16_t room;  // bytes of a text field
    uint16_t limit;  // longest text a set accepts
    uint32_t bit;
    Accept accept;
    const char *valueError;  // refused value ("%d" the value) or too long text
    const char *getError;
    const char *getDone;  // "%d" or "%s"
    const char *sendError;
    // A set's own condition, checked before anything else (a value given): 0 or the refusal.
    int (*beforeSet)(const FieldValue &f, const char *text) = nullptr;
};

// The longest texts a set takes.
constexpr uint16_t kOptionTextLongest = 130;
constexpr uint16_t kPppoeTextLongest = 63;

// The text fields' room: to the next field, or to the end of the block.
constexpr uint16_t kOption60Room = TR104_LAST_FIELD_ROOM(Tr104Option60Payload, aValue);
constexpr uint16_t kOption125Room = TR104_LAST_FIELD_ROOM(Tr104Option125Payload, aValue);
constexpr uint16_t kAccountRoom = TR104_FIELD_ROOM(Tr104PppoePayload, aAccount, aPassword);
constexpr uint16_t kPasswordRoom = TR104_FIELD_ROOM(Tr104PppoePayload, aPassword, aucZero);

constexpr size_t kLargestBlock = sizeof(Tr104PppoePayload);
static_assert(kLargestBlock >= sizeof(Tr104Option60Payload) && kLargestBlock >= sizeof(Tr104Option125Payload));

bool accepted(Accept a, int value) {
    switch (a) {
    case Accept::Any: return true;
    case Accept::NonNegative: return value >= 0;
    case Accept::Flag: return static_cast<unsigned int>(value) < 2u;
    }
    return false;
}

int fieldValue(const FieldValue &f, int nFlag, void *pValue) {
    if (f.beforeSet != nullptr && nFlag == 1 && pValue != nullptr) {
        if (const int rc = f.beforeSet(f, static_cast<const char *>(pValue)); rc != TR104_OK) {
            return rc;
        }
    }
    if (pValue == nullptr) {
        TR104_DEBUG_AS(f.name, "param error, %s is null%s", f.valueName, f.nullSuffix);
        return TR104_ERR_PARAM;
    }
    const bool text = f.form == Form::Text || f.form == Form::RawText;
    char *textValue = static_cast<char *>(pValue);
    if (text) {
        TR104_DEBUG_AS(f.name, f.entry, nFlag, nFlag == 1 ? textValue : "");
    } else {
        TR104_DEBUG_AS(f.name, f.entry, nFlag, intValue(pValue));
    }
    uint8_t block[kLargestBlock] = {};
    uint8_t *field = block + f.offset;
    if (nFlag == 0) {
        if (readRecord(f.name, block, f.len, f.getCmd) != TR104_OK) {
            say(f.name, f.getError);
            return TR104_ERR_EXCHANGE;
        }
        if (text) {
            const size_t n = core::fieldTextLength(reinterpret_cast<const char *>(field), f.room);
            std::memcpy(textValue, field, n);
            if (f.form == Form::Text) {
                textValue[n] = '\0';
            }
            field[n] = '\0';  // the debug line shows the text as the caller got it
            TR104_DEBUG_AS(f.name, f.getDone, reinterpret_cast<const char *>(field));
        } else {
            const int v = f.form == Form::Byte ? *field : intValue(field);
            putInt(pValue, v);
            TR104_DEBUG_AS(f.name, f.getDone, v);
        }
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG_AS(f.name, kFlagError, nFlag);
        return TR104_ERR_PARAM;
    }
    if (text) {
        const size_t n = strnlen(textValue, f.limit + 1u);
        if (n > f.limit) {
            say(f.name, f.valueError);
            return TR104_ERR_PARAM;
        }
        std::memcpy(field, textValue, n);
    } else {
        const int v = intValue(pValue);
        if (!accepted(f.accept, v)) {
            TR104_DEBUG_AS(f.name, f.valueError, v);
            return TR104_ERR_PARAM;
        }
        if (f.form == Form::Byte) {
            *field = static_cast<uint8_t>(v);
        } else {
            putInt(field, v);
        }
    }
    std::memcpy(block, &f.bit, sizeof(f.bit));
    if (sendRecord(f.name, block, f.len, f.setCmd) != TR104_OK) {
        say(f.name, f.sendError);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The option 60 value text is written only while the value mode is 0 (the voice module builds
// the value itself in the other modes).  The length is checked before the mode is read, so a
// refused text sends nothing at all.
int optionValueWritable(const FieldValue &f, const char *text) {
    if (strnlen(text, f.limit + 1u) > f.limit) {
        say(f.name, f.valueError);
        return TR104_ERR_PARAM;
    }
    int mode = 0;
    if (Tr104DHCPOption60ValueMode(0, &mode) != TR104_OK) {
        say(f.name, "get Option60 value mode error\n");
        return TR104_ERR_EXCHANGE;
    }
    if (mode != 0) {
        TR104_DEBUG_AS(f.name, kFlagError, 1);
        return TR104_ERR_PARAM;
    }
    return TR104_OK;
}

// One of the two DNS servers, selected by the index word of the block.
struct DnsServer {
    const char *name;
    uint32_t index;
    const char *entry;  // "%d" nFlag and the value
    const char *getDone;  // "%u" the server
};

int dnsServer(const DnsServer &d, int nFlag, void *pDnsIp) {
    const char *name = d.name;
    if (pDnsIp == nullptr) {
        say(name, "param error, pDnsIp is null\n");
        return TR104_ERR_PARAM;
    }
    TR104_DEBUG_AS(name, d.entry, nFlag, intValue(pDnsIp));
    Tr104DnsPayload payload{};
    payload.unIndex = d.index;
    if (nFlag == 0) {
        if (readRecord(name, &payload, sizeof(payload), TR104_GET_DNS_SERVER_ID) != TR104_OK) {
            say(name, "get dns ip failed.\n");
            return TR104_ERR_EXCHANGE;
        }
        putInt(pDnsIp, static_cast<int>(payload.unServer));
        TR104_DEBUG_AS(name, d.getDone, payload.unServer);
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG_AS(name, kFlagError, nFlag);
        return TR104_ERR_PARAM;
    }
    payload.unServer = static_cast<uint32_t>(intValue(pDnsIp));
    if (sendRecord(name, &payload, sizeof(payload), TR104_ADD_DNS_SERVER_ID) != TR104_OK) {
        say(name, "ADD_DNS_SERVER_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::netcfg

using namespace tr104::netcfg;

// Both servers straight onto the request queue (no lock, no reply); messages on standard output.
extern "C" TR104_API int Tr104DnsIpAddr(int nFlag, uint32_t *pDnsIp1, uint32_t *pDnsIp2, const uint32_t *pPort) {
    if (const int rc = directChecks(__func__, pDnsIp1 != nullptr && pDnsIp2 != nullptr,
                                    "[%s] param error, pDnsIp1 or pDnsIp2 is null!\r\n", nFlag, false);
        rc != 1) {
        return rc;
    }
    const Tr104DirectDnsPayload payload{portOf(pPort), *pDnsIp1, *pDnsIp2};
    printf("[%s] module=%d, nPort=%d, Dns1=0x%x, Dns2=0x%x.\r\n", __func__, gCurrentModule,
           static_cast<int>(payload.unPort), payload.unServer1, payload.unServer2);
    if (sendDirect(TR104_ADD_DNS_SERVER_ID, &payload, sizeof(payload)) != TR104_OK) {
        printf("[%s] send msg ADD_DNS_SERVER_ID failed.\r\n", __func__);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The management server's URL, as the voice module knows it: read only, and a set is accepted
// without doing anything so that a configuration restore does not fail on it.
extern "C" TR104_API int Tr104AcsUrlConfig(int nFlag, void *pAcsUrl) {
    if (pAcsUrl == nullptr) {
        TR104_DEBUG("param error, pAcsUrl is null\n");
        return TR104_ERR_PARAM;
    }
    char *url = static_cast<char *>(pAcsUrl);
    TR104_DEBUG("nFlag[%d], *pAcsUrl[%d]\n", nFlag, url[0]);
    if (nFlag == 0) {
        if (readText(__func__, url, 256, TR104_GET_ACS_URL_ID) != TR104_OK) {
            TR104_DEBUG("get ACS URL failed.\n");
            return TR104_ERR_EXCHANGE;
        }
        TR104_DEBUG("*get AcsUrl[%.256s]\n", url);
        return TR104_OK;
    }
    if (nFlag == 1) {
        TR104_DEBUG("cannot set ACS URL, only get");
        return TR104_OK;
    }
    TR104_DEBUG(kFlagError, nFlag);
    return TR104_ERR_PARAM;
}

// A set of exactly 1 enables the client; any other value disables it.
extern "C" TR104_API int Tr104DhcpEnable(int nFlag, void *pDhcpEnableFlag) {
    if (pDhcpEnableFlag == nullptr) {
        TR104_DEBUG("param error, pDhcpEnableFlag is null\n");
        return TR104_ERR_PARAM;
    }
    const int value = intValue(pDhcpEnableFlag);
    TR104_DEBUG("nFlag[%d], *pDhcpEnableFlag[%d]\n", nFlag, value);
    if (nFlag == 0) {
        uint8_t payload[TR104_DHCP_PAYLOAD_LEN] = {};
        if (readRecord(__func__, payload, sizeof(payload), TR104_GET_DHCP_ID) != TR104_OK) {
            TR104_DEBUG("get dhcp enable flag error\n");
            return TR104_ERR_EXCHANGE;
        }
        const int enabled = intValue(payload);
        putInt(pDhcpEnableFlag, enabled);
        TR104_DEBUG("get DhcpEnableFlag[%d]\n", enabled);
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG(kFlagError, nFlag);
        return TR104_ERR_PARAM;
    }
    if (sendRecord(__func__, nullptr, 0, value == 1 ? TR104_SET_DHCP_ENABLE_ID : TR104_SET_DHCP_DISABLE_ID) !=
        TR104_OK) {
        TR104_DEBUG("SET_DHCP_ENABLE_ID or SET_DHCP_DISABLE_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// Option 120 (the SIP servers) straight onto the request queue; messages on standard output.
extern "C" TR104_API int Tr104DhcpOption120(int nFlag, const char *pOption120) {
    constexpr size_t kLongest = 2048;
    if (const int rc =
            directChecks(__func__, pOption120 != nullptr, "[%s] param error, pOption120 is null!\r\n", nFlag, true);
        rc != 1) {
        return rc;
    }
    const size_t n = strnlen(pOption120, kLongest + 1);
    if (n > kLongest) {
        printf("[%s] param error, pOption120 is too long.\r\n", __func__);
        return TR104_ERR_PARAM;
    }
    printf("[%s] module=%d, pOption120=%s.\r\n", __func__, gCurrentModule, pOption120);
    // The whole request area: the text and zeros (a 2048-character text fills it to the end).
    char area[TR104_CFG_BUFFER_LEN] = {};
    std::memcpy(area, pOption120, n < sizeof(area) ? n : sizeof(area));
    if (sendDirect(TR104_SET_DHCP_OPTION120_ID, area, sizeof(area)) != TR104_OK) {
        printf("[%s] send msg SET_DHCP_OPTION120 failed.\r\n", __func__);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The PPPoE mode is not configurable on this device: both directions succeed and do nothing.
extern "C" TR104_API int Tr104PPPoEMode(int nFlag, void *pValue) {
    (void)nFlag;
    (void)pValue;
    return TR104_OK;
}

#include "tr104/catalogue/netcfg_MaskedField.inc"
#include "tr104/catalogue/netcfg_DnsServer.inc"
