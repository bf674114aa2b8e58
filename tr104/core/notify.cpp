// Change notification to the management agent.
#include <cstdio>
#include <cstring>

#include "tr104/core/debug.h"
#include "tr104/core/host_imports.h"
#include "tr104/common.h"
#include "tr104/notify.h"

namespace {

constexpr size_t kNameLen = 200;  // one data-model path
constexpr size_t kValueLen = 256;  // one value string

// Offsets in the inbound blocks: the 452-byte line record and the 276-byte server record.
constexpr size_t kLineNumberOffset = 0;
constexpr size_t kLineDirectoryNumberOffset = 8;
constexpr size_t kLineAuthUserNameOffset = 224;
constexpr size_t kLineAuthPasswordOffset = 290;
constexpr size_t kServerFlagOffset = 44;
constexpr size_t kServerHostAddrOffset = 48;
constexpr size_t kServerPortOffset = 118;

constexpr char kProfile[] = "InternetGatewayDevice.Services.VoiceService.1.VoiceProfile.1.";

// Up to three name/value pairs on the notifier's stack, cleared before use.
struct Notification {
    char names[3][kNameLen];
    char values[3][kValueLen];
    int count = 0;

    Notification() {
        std::memset(names, 0, sizeof(names));
        std::memset(values, 0, sizeof(values));
    }
    void name(int i, const char *suffix) { std::snprintf(names[i], kNameLen, "%s%s", kProfile, suffix); }
    // Copies a string of the inbound block, bounded by the value buffer.
    void text(int i, const char *block, size_t offset) { std::strncpy(values[i], block + offset, kValueLen - 1); }
    void number(int i, int n) { std::snprintf(values[i], kValueLen, "%d", n); }
    void send() {
        char *namePtrs[3] = {names[0], names[1], names[2]};
        char *valuePtrs[3] = {values[0], values[1], values[2]};
        Tr104NotifyChangeValuesToTr069(namePtrs, valuePtrs, count);
    }
};

uint32_t word(const char *block, size_t offset) {
    uint32_t v;
    std::memcpy(&v, block + offset, sizeof(v));
    return v;
}

// A VLAN record's id and priority (16-bit id, priority byte) under the names of one traffic class.
int notifyVlan(const Tr104Msg *msg, const char *klass, size_t idOffset, size_t priorityOffset) {
    if (msg == nullptr) {
        return -1;
    }
    const char *block = msg->rspBuffer;
    Notification n;
    n.count = 2;
    std::snprintf(n.names[0], kNameLen, "%s%s.VLANIDMark", kProfile, klass);
    std::snprintf(n.names[1], kNameLen, "%s%s.EthernetPriorityMark", kProfile, klass);
    uint16_t id;
    std::memcpy(&id, block + idOffset, sizeof(id));
    n.number(0, id);
    n.number(1, static_cast<uint8_t>(block[priorityOffset]));
    n.send();
    return 0;
}

constexpr char kIpParams[] = "InternetGatewayDevice.X_QRV_VOIP_IPPARAMS.";

// A server record's address and port, under the primary or the standby names.
int notifyServer(const Tr104Msg *msg, const char *primary[2], const char *standby[2]) {
    if (msg == nullptr) {
        return -1;
    }
    const char *block = msg->rspBuffer;
    const char **names = word(block, kServerFlagOffset) == 1 ? primary : standby;
    Notification n;
    n.count = 2;
    n.name(0, names[0]);
    n.name(1, names[1]);
    n.text(0, block, kServerHostAddrOffset);
    uint16_t port;
    std::memcpy(&port, block + kServerPortOffset, sizeof(port));
    n.number(1, port);
    n.send();
    return 0;
}

}  // namespace

extern "C" TR104_API void Tr104NotifyChangeValuesToTr069(char **names, char **values, int count) {
    if (names == nullptr || values == nullptr || count < 1) {
        return;
    }
    if (gTr104CfgDebug) {
        for (int i = 0; i < count; ++i) {
            Tr104DebugPrint(__func__, __LINE__, "NameList[%d]= [%s],ValueList[%d] =[%s]\n", i, names[i], i, values[i]);
        }
    }
    int result = -1;
    if (notifyChangedValues_toTr069 != nullptr) {
        result = notifyChangedValues_toTr069(TR104_NOTIFY_MODULE, names, values, count);
    }
    TR104_DEBUG("  notifyChangedValues_toTr069 return value = [%d]\n", result);
}

extern "C" TR104_API int Tr104LineTelNumChangeNotifySip(const Tr104Msg *msg) {
    if (msg == nullptr) {
        return -1;
    }
    const char *block = msg->rspBuffer;
    Notification n;
    n.count = 1;
    // Only lines 1 and 2 have a path; another line is still reported, with an empty name.
    const uint32_t line = word(block, kLineNumberOffset);
    if (line == 1 || line == 2) {
        std::snprintf(n.names[0], kNameLen, "%sLine.%u.DirectoryNumber", kProfile, line);
    }
    n.text(0, block, kLineDirectoryNumberOffset);
    n.send();
    return 0;
}

extern "C" TR104_API int Tr104LineAuthParamsChangeNotifySip(const Tr104Msg *msg) {
    if (msg == nullptr) {
        return -1;
    }
    const char *block = msg->rspBuffer;
    // Any line other than 1 is reported as line 2.
    const unsigned line = word(block, kLineNumberOffset) == 1 ? 1 : 2;
    Notification n;
    n.count = 2;
    std::snprintf(n.names[0], kNameLen, "%sLine.%u.SIP.AuthUserName", kProfile, line);
    std::snprintf(n.names[1], kNameLen, "%sLine.%u.SIP.AuthPassword", kProfile, line);
    n.text(0, block, kLineAuthUserNameOffset);
    n.text(1, block, kLineAuthPasswordOffset);
    n.send();
    return 0;
}

extern "C" TR104_API int Tr104ProxyParamsChangeNotifySip(const Tr104Msg *msg) {
    static const char *primary[2] = {"SIP.ProxyServer", "SIP.ProxyServerPort"};
    static const char *standby[2] = {"SIP.X_CT-COM_Standby-ProxyServer", "SIP.X_CT-COM_Standby-ProxyServerPort"};
    return notifyServer(msg, primary, standby);
}

extern "C" TR104_API int Tr104RegParamsChangeNotifySip(const Tr104Msg *msg) {
    static const char *primary[2] = {"SIP.RegistrarServer", "SIP.RegistrarServerPort"};
    static const char *standby[2] = {"SIP.X_CT-COM_Standby-RegistrarServer",
                                     "SIP.X_CT-COM_Standby-RegistrarServerPort"};
    return notifyServer(msg, primary, standby);
}

// The voice interface's address, mask and gateway: words 1 to 3 of the block, as dotted text.
extern "C" TR104_API int Tr104IpParamsChangeNotify(const Tr104Msg *msg) {
    if (msg == nullptr) {
        return -1;
    }
    static const char *kNames[3] = {"ExternalIPAddress", "SubnetMask", "DefaultGateway"};
    Notification n;
    n.count = 3;
    for (int i = 0; i < 3; ++i) {
        std::snprintf(n.names[i], kNameLen, "%s%s", kIpParams, kNames[i]);
        CommIpAddrUnIntToStr(word(msg->rspBuffer, 4u * (i + 1)), n.values[i]);
    }
    n.send();
    return 0;
}

// The addressing type: 0 "Static", 1 "DHCP", anything else an empty value (still reported).
extern "C" TR104_API int Tr104DHCPParamChangeNotify(const Tr104Msg *msg) {
    if (msg == nullptr) {
        return -1;
    }
    Notification n;
    n.count = 1;
    std::snprintf(n.names[0], kNameLen, "%sAddressingType", kIpParams);
    const uint32_t type = word(msg->rspBuffer, 0);
    std::strcpy(n.values[0], type == 0 ? "Static" : type == 1 ? "DHCP" : "");
    n.send();
    return 0;
}

extern "C" TR104_API int Tr104SipVlanParamsChangeNotify(const Tr104Msg *msg) { return notifyVlan(msg, "SIP", 18, 16); }
extern "C" TR104_API int Tr104RtpVlanParamsChangeNotify(const Tr104Msg *msg) { return notifyVlan(msg, "RTP", 34, 32); }
