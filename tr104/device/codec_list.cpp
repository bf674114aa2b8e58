// The codec list of a line (five entries of gCodecListUnit per line) and what a change of it
// does to the running voice module: the line's codec settings are carried by the voice profile
// bound to its port, so every accepted write is applied there at once.  The design is told in
// include/tr104/device.h.
#include <cstdio>
#include <cstring>

#include "tr104/codec.h"
#include "tr104/device/device_internal.h"
#include "tr104/voice_profile.h"

namespace tr104::device {
namespace {

enum class Item : uint8_t { Codec, BitRate, Packetization, Silence, Enable, Priority };

// Change-mask bits of a list entry (priority and enable as the list defines them).
constexpr uint32_t kChangedCodec = 0x1;
constexpr uint32_t kChangedPacketization = 0x4;
constexpr uint32_t kChangedSilence = 0x10;

struct ListItem {
    Signature sig;
    Item item;
    uint32_t changed;  // bit of the entry's change mask
    int low, high;  // accepted values of an integer item
    const char *refused;  // "%d" the refused value
};

constexpr ListItem listItem(const char *name, const char *valueName, Item item, uint32_t changed, int low, int high,
                            const char *refused, Access access = Access::GetSet) {
    return ListItem{Signature{name, valueName, Locate::Line, access}, item, changed, low, high, refused};
}

constexpr int kMaxPriority = 0x7FFFFFFF;
const ListItem kType = listItem("Tr104LineCodecListType", "pCodecType", Item::Codec, kChangedCodec, 0, 0, nullptr);
const ListItem kBitRate =
    listItem("Tr104LineCodecListBitRate", "pBitRate", Item::BitRate, 0, 0, 0, nullptr, Access::GetOnly);
const ListItem kPacketization =
    listItem("Tr104LineCodecListPacketizationPeriod", "pPacketizationPeriod", Item::Packetization,
             kChangedPacketization, 10, 60, "param error, packetization period[%d] out of range[10,60]\n");
const ListItem kSilence = listItem("Tr104LineCodecListSilenceSuppression", "pSilenceSuppression", Item::Silence,
                                   kChangedSilence, 0, 1, "param error, silence suppression[%d]\n");
const ListItem kEnable = listItem("Tr104LineCodecListEnable", "pEnable", Item::Enable, TR104_CODEC_CHANGE_ENABLE, 0, 1,
                                  "param error, enable[%d]\n");
const ListItem kPriority = listItem("Tr104LineCodecListPriority", "pPriority", Item::Priority,
                                    TR104_CODEC_CHANGE_PRIORITY, 1, kMaxPriority, "param error, priority[%d]\n");
const Signature kUsed{"Tr104LineCodecUsed", "pCodecUsed", Locate::Line, Access::GetOnly};

using Line = CodecListUnit[TR104_CODEC_LIST_ENTRIES];

// A list never set up by the start-up (line number 0) is set up on first use.
Line &lineList(int line) {
    if (gCodecListUnit[0].unLineNo == 0) {
        CodecListUnitConfigInit();
    }
    return *reinterpret_cast<Line *>(&gCodecListUnit[TR104_CODEC_LIST_INDEX(line, 1)]);
}

int checkEntry(const Signature &sig, int nFlag, const void *pValue, const int *nLocate) {
    if (const int rc = core::checkArguments(sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    if (!core::inRange(nLocate[3], 1, TR104_CODEC_LIST_ENTRIES)) {
        TR104_DEBUG_AS(sig.name, "param error, nLocate[3]=%d\n", nLocate[3]);
        return TR104_ERR_PARAM;
    }
    return TR104_OK;
}

// The codec selection of a line: payload types of the enabled entries that name a codec, by
// priority (lower first), entries of equal priority in list order.  The count, or -1 when a
// codec would be selected twice.
int selection(const Line &list, uint8_t (&codecs)[TR104_PROFILE_CODEC_COUNT]) {
    std::memset(codecs, TR104_PROFILE_CODEC_UNUSED, sizeof(codecs));
    bool taken[TR104_CODEC_LIST_ENTRIES] = {};
    int count = 0;
    for (;;) {
        int best = -1;
        for (int i = 0; i < TR104_CODEC_LIST_ENTRIES; ++i) {
            const CodecListUnit &e = list[i];
            if (!taken[i] && e.ucEnable != 0 && e.nCodecType != TR104_CODEC_NONE &&
                (best < 0 || e.unPriority < list[best].unPriority)) {
                best = i;
            }
        }
        if (best < 0) {
            return count;
        }
        taken[best] = true;
        const auto code = static_cast<uint8_t>(list[best].nCodecType);
        for (int i = 0; i < count; ++i) {
            if (codecs[i] == code) {
                return -1;
            }
        }
        codecs[count++] = code;
    }
}

// Sends the line's codec settings named by bit to the profile bound to the port; a port without
// a profile gets "port<n>" created, set and bound in one request.
int applyToProfile(const char *name, int line, Tr104SipProfileRecord &profile) {
    Tr104SipLineRecord status{};
    if (getLineStatus(line, &status) != 0) {
        TR104_DEBUG_AS(name, "get port[%d] status error\n", line);
        return TR104_ERR_EXCHANGE;
    }
    unsigned int cmd = SET_PROFILE_CMD_ID;
    if (status.unProfileId != 0) {
        core::copyBounded(profile.aName, status.aProfileName, sizeof(profile.aName) - 1);
    } else {
        std::snprintf(profile.aName, sizeof(profile.aName), "port%d", line);
        profile.ucPort = static_cast<uint8_t>(line);
        cmd = CREATE_SET_BIND_PROFILE_ID;
    }
    if (core::sendRecord(name, &profile, sizeof(profile), cmd) != TR104_OK) {
        TR104_DEBUG_AS(name, "set line[%d] codec msg snd failed.\n", line);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The entry's new value in a copy of the line's list.  -2 for a value that is refused.
int changeItem(const ListItem &it, Line &list, int entry, const void *pValue) {
    CodecListUnit &e = list[entry - 1];
    if (it.item == Item::Codec) {
        const int code = ConvertCodecTypeStr2Int(static_cast<const char *>(pValue));
        if (code == TR104_CODEC_UNKNOWN) {
            return TR104_ERR_PARAM;
        }
        e.nCodecType = code;
    } else {
        const int value = core::intValue(pValue);
        if (!core::inRange(value, it.low, it.high)) {
            TR104_DEBUG_AS(it.sig.name, it.refused, value);
            return TR104_ERR_PARAM;
        }
        // The voice profile keeps one packetization period and one silence suppression per
        // line: every entry of the line takes the value.
        for (CodecListUnit &each : list) {
            if (it.item == Item::Packetization)
                each.ucPacketizationPeriod = static_cast<uint8_t>(value);
            if (it.item == Item::Silence)
                each.ucSilenceSuppression = static_cast<uint8_t>(value);
        }
        if (it.item == Item::Enable)
            e.ucEnable = static_cast<uint8_t>(value);
        if (it.item == Item::Priority)
            e.unPriority = static_cast<uint32_t>(value);
    }
    e.unChangeMask |= it.changed;
    return TR104_OK;
}

int setItem(const ListItem &it, int line, int entry, const void *pValue) {
    Line &stored = lineList(line);
    Line changed;
    std::memcpy(changed, stored, sizeof(changed));
    if (const int rc = changeItem(it, changed, entry, pValue); rc != TR104_OK) {
        return rc;
    }
    // The profile record carries the codecs of a SIP voice module; under H.248 the call agent
    // chooses them, and nothing here could apply the change.
    if (gTr104CurrProtocolType != TR104_PROTOCOL_SIP) {
        TR104_DEBUG_AS(it.sig.name, "line[%d] codec list entry[%d]: the voice module does not run SIP\n", line, entry);
        return TR104_ERR_EXCHANGE;
    }
    Tr104SipProfileRecord profile{};
    if (it.item == Item::Packetization) {
        profile.unChangeMask = TR104_PROFILE_PACKETIZATION;
        profile.ucPacketization = changed[0].ucPacketizationPeriod;
    } else if (it.item == Item::Silence) {
        profile.unChangeMask = TR104_PROFILE_SILENCE_SUPPRESSION;
        profile.ucSilenceSuppression = changed[0].ucSilenceSuppression;
    } else {
        uint8_t before[TR104_PROFILE_CODEC_COUNT];
        const int count = selection(changed, profile.aucCodecs);
        if (count < 0) {
            TR104_DEBUG_AS(it.sig.name, "line[%d] codec list entry[%d]: codec already selected\n", line, entry);
            return TR104_ERR_EXCHANGE;
        }
        if (count == 0 && selection(stored, before) > 0) {
            TR104_DEBUG_AS(it.sig.name, "line[%d] codec list entry[%d]: no codec would be left\n", line, entry);
            return TR104_ERR_EXCHANGE;
        }
        profile.unChangeMask = TR104_PROFILE_CODEC;
    }
    if (const int rc = applyToProfile(it.sig.name, line, profile); rc != TR104_OK) {
        return rc;
    }
    std::memcpy(stored, changed, sizeof(changed));
    return TR104_OK;
}

void getItem(const ListItem &it, const CodecListUnit &e, void *pValue) {
    switch (it.item) {
    case Item::Codec: std::strcpy(static_cast<char *>(pValue), ConvertCodecTypeInt2Str(e.nCodecType)); return;
    case Item::BitRate:
        core::putInt(pValue,
                     e.nCodecType == TR104_CODEC_NONE ? 0 : static_cast<int>(tr104GetBitRateByCodecEnum(e.nCodecType)));
        return;
    case Item::Packetization: core::putInt(pValue, e.ucPacketizationPeriod); return;
    case Item::Silence: core::putInt(pValue, e.ucSilenceSuppression); return;
    case Item::Enable: core::putInt(pValue, e.ucEnable); return;
    case Item::Priority: core::putInt(pValue, static_cast<int>(e.unPriority)); return;
    }
}

int listValue(const ListItem &it, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkEntry(it.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int line = core::lineOf(nLocate);
    if (nFlag == 0) {
        getItem(it, lineList(line)[nLocate[3] - 1], pValue);
        return TR104_OK;
    }
    return setItem(it, line, nLocate[3], pValue);
}

int codecUsed(int nFlag, void *pValue, int *nLocate) {
    if (const int rc = core::checkArguments(kUsed, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    uint8_t codecs[TR104_PROFILE_CODEC_COUNT];
    const int count = selection(lineList(core::lineOf(nLocate)), codecs);
    std::strcpy(static_cast<char *>(pValue), count > 0 ? ConvertCodecTypeInt2Str(codecs[0]) : "");
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::device

#define TR104_CODEC_LIST_HANDLER(name, item)                                          \
    extern "C" TR104_API int name(int nFlag, void *pValue, int *nLocate) {            \
        return tr104::device::listValue(tr104::device::item, nFlag, pValue, nLocate); \
    }

TR104_CODEC_LIST_HANDLER(Tr104LineCodecListType, kType)
TR104_CODEC_LIST_HANDLER(Tr104LineCodecListBitRate, kBitRate)
TR104_CODEC_LIST_HANDLER(Tr104LineCodecListPacketizationPeriod, kPacketization)
TR104_CODEC_LIST_HANDLER(Tr104LineCodecListSilenceSuppression, kSilence)
TR104_CODEC_LIST_HANDLER(Tr104LineCodecListEnable, kEnable)
TR104_CODEC_LIST_HANDLER(Tr104LineCodecListPriority, kPriority)

extern "C" TR104_API int Tr104LineCodecUsed(int nFlag, void *pValue, int *nLocate) {
    return tr104::device::codecUsed(nFlag, pValue, nLocate);
}
