// The client's table of the device handlers: value kind and text size of each (included by
// ctl/value_kinds.h, after HandlerKind).  Handlers of one value per device or profile take
// (nFlag, pValue) only, and get_act_led takes nothing: their rows call them with exactly that.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace tr104ctl {

namespace device {

using TwoArguments = int (*)(int nFlag, void *pValue);

inline CustomResult callTwo(void *handler, bool set, const std::string &value, bool text) {
    CustomResult r;
    std::vector<char> buffer(text ? 2048 : sizeof(int), 0);
    if (set && text) {
        std::memcpy(buffer.data(), value.c_str(), std::min(value.size(), buffer.size() - 1));
    } else if (set) {
        errno = 0;
        char *end = nullptr;
        const long v = std::strtol(value.c_str(), &end, 10);
        if (value.empty() || errno != 0 || *end != '\0' || v < INT32_MIN || v > INT32_MAX) {
            r.message = "the value must be an integer";
            return r;
        }
        const int word = static_cast<int>(v);
        std::memcpy(buffer.data(), &word, sizeof(word));
    }
    r.called = true;
    r.rc = reinterpret_cast<TwoArguments>(handler)(set ? 1 : 0, buffer.data());
    if (text) {
        r.shown.assign(buffer.data(), strnlen(buffer.data(), buffer.size()));
    } else {
        int word;
        std::memcpy(&word, buffer.data(), sizeof(word));
        r.shown = std::to_string(word);
    }
    return r;
}

inline CustomResult integer(void *handler, bool set, const std::string &value, int *) {
    return callTwo(handler, set, value, false);
}
inline CustomResult text(void *handler, bool set, const std::string &value, int *) {
    return callTwo(handler, set, value, true);
}
// get_act_led(): no arguments, the LED state as its result (a get only).
inline CustomResult led(void *handler, bool set, const std::string &, int *) {
    CustomResult r;
    if (set) {
        r.message = "get_act_led is read only";
        return r;
    }
    r.called = true;
    const int state = reinterpret_cast<int (*)()>(handler)();
    r.rc = state < 0 ? state : 0;
    r.shown = std::to_string(state);
    return r;
}

}  // namespace device

// Integers of a device-wide value, texts of one, and line handlers.
#define TR104_DEVICE_INT(name) {name, ValueKind::Custom, 0, -1, device::integer}
#define TR104_DEVICE_TEXT(name) {name, ValueKind::Custom, 0, -1, device::text}

inline constexpr HandlerKind kDeviceKindRows[] = {
    // Capabilities
    TR104_DEVICE_INT("Tr104ProfileNumber"),
    TR104_DEVICE_INT("Tr104MaxCountPerProfile"),
    TR104_DEVICE_INT("Tr104MaxLineCount"),
    TR104_DEVICE_INT("Tr104MaxSessionsPerLine"),
    TR104_DEVICE_INT("Tr104MaxSessionsAllLines"),
    TR104_DEVICE_INT("Tr104VoiceProtocolGroup"),
    TR104_DEVICE_TEXT("Tr104CapabilityRegions"),
    TR104_DEVICE_INT("Tr104RTCPFlag"),
    TR104_DEVICE_INT("Tr104SRTPFlag"),
    TR104_DEVICE_INT("Tr104RTPRedundancyFlag"),
    TR104_DEVICE_INT("Tr104DSCPCoupledFlag"),
    TR104_DEVICE_INT("Tr104VlanTagCoupledFlag"),
    TR104_DEVICE_INT("Tr104PSTNSoftSwitchOverFlag"),
    TR104_DEVICE_INT("Tr104FaxT38Flag"),
    TR104_DEVICE_INT("Tr104FaxPassThroughFlag"),
    TR104_DEVICE_INT("Tr104ModemPassThroughFlag"),
    TR104_DEVICE_INT("Tr104ToneGenerationFlag"),
    TR104_DEVICE_INT("Tr104RingGenerationFlag"),
    TR104_DEVICE_INT("Tr104DigitMapFlag"),
    TR104_DEVICE_INT("Tr104NumberingPlanFlag"),
    TR104_DEVICE_INT("Tr104ButtonMapFlag"),
    TR104_DEVICE_INT("Tr104VoicePortTestsFlag"),
    // Device operations
    TR104_DEVICE_INT("Tr104PrivateProtocolEnable"),
    TR104_DEVICE_INT("Tr104PrivateIgnoreClearCfgEnable"),
    {"get_act_led", ValueKind::Custom, 0, -1, device::led},
    TR104_DEVICE_INT("Tr104HeartbeatFlag"),
    TR104_DEVICE_INT("Tr104VoiceOperation"),
    // Profile settings
    TR104_DEVICE_TEXT("Tr104ProfileEnable"),
    TR104_DEVICE_INT("Tr104ProfileReset"),
    TR104_DEVICE_INT("Tr104ProfileNumberOfLines"),
    TR104_DEVICE_TEXT("Tr104ProfileName"),
    TR104_DEVICE_TEXT("Tr104ProfileSignalingProtocol"),
    TR104_DEVICE_INT("Tr104ServerType"),
    // Codec list of a line (--entry picks nLocate[3]) and the supported codecs (nLocate[1])
    {"Tr104LineCodecListType", ValueKind::Text, 32},
    {"Tr104LineCodecListBitRate", ValueKind::Integer, 0},
    {"Tr104LineCodecListPacketizationPeriod", ValueKind::Integer, 0},
    {"Tr104LineCodecListSilenceSuppression", ValueKind::Integer, 0},
    {"Tr104LineCodecListEnable", ValueKind::Integer, 0},
    {"Tr104LineCodecListPriority", ValueKind::Integer, 0},
    {"Tr104LineCodecUsed", ValueKind::Text, 32},
    {"Tr104CodecType", ValueKind::Text, 32},
    {"Tr104CodecBitRate", ValueKind::Integer, 0},
    {"Tr104CodecPacketizationPeriod", ValueKind::Text, 64},
    {"Tr104CodecSilenceSuppression", ValueKind::Integer, 0},
    // Not provided by this voice module (-1)
    {"Tr104SessionStartTime", ValueKind::Text, 64},
    {"Tr104SessionEndTime", ValueKind::Text, 64},
    {"Tr104SessionDuration", ValueKind::Integer, 0},
    TR104_DEVICE_INT("Tr104SipSessionTimerSessionExpires"),
    TR104_DEVICE_TEXT("Tr104IADDiagnosticsState"),
    {"Tr104LineSessionTimerFlag", ValueKind::Integer, 0},
    // SIP variants left to the embedding process (-1 without one): the value kinds their data-model
    // parameters have
    {"Tr069LineCodecListCodecType", ValueKind::Text, kDefaultText},
    {"Tr104SipRoleString", ValueKind::Text, kDefaultText},
    {"Tr104SipExtensions", ValueKind::Text, kDefaultText},
    {"Tr104SipTransportProtocols", ValueKind::Text, kDefaultText},
    {"Tr104SipURISchemes", ValueKind::Text, kDefaultText},
    {"Tr104SipEventSubscription", ValueKind::Integer, 0},
    {"Tr104SipResponseMap", ValueKind::Integer, 0},
    {"Tr104SipSecondaryProxyServerTransport", ValueKind::Text, 16},
    {"Tr104SipRegistrarServerTransport", ValueKind::Text, 16},
    {"Tr104SipSecondaryRegServerTransport", ValueKind::Text, 16},
    {"Tr104SipRegistrationPeriod", ValueKind::Integer, 0},
    {"Tr104SipRegisterRetryInterval", ValueKind::Integer, 0},
    {"Tr104SipReRegistrationHeader", ValueKind::Text, kDefaultText},
    {"Tr104SipUserAgentDomain", ValueKind::Text, kDefaultText},
    {"Tr104SipUserAgentPort", ValueKind::Integer, 0},
    {"Tr104SipUseCodecPriorityInSDPResponse", ValueKind::Integer, 0},
    {"Tr104SipDSCPMark", ValueKind::Integer, 0},
    {"Tr104SipTimerT1", ValueKind::Integer, 0},
    {"Tr104SipTimerT2", ValueKind::Integer, 0},
    {"Tr104SipTimerT4", ValueKind::Integer, 0},
    {"Tr104KeepAliveEnable", ValueKind::Integer, 0},
    {"Tr104KeepAliveInterval", ValueKind::Integer, 0},
    {"Tr104KeepAliveTimes", ValueKind::Integer, 0},
    {"Tr104SipSessionUpdateTimer", ValueKind::Integer, 0},
    {"Tr104JINGCharMode", ValueKind::Integer, 0},
    {"Tr104CIDHeadField", ValueKind::Text, kDefaultText},
    {"Tr104CodecAndPtPriority", ValueKind::Text, kDefaultText},
    {"Tr104PromptToneOfNoReg", ValueKind::Integer, 0},
    {"Tr104AttentedTransferCode", ValueKind::Text, 32},
    {"Tr104UnattentedTransferCode", ValueKind::Text, 32},
    {"Tr104PbxDailingFlag", ValueKind::Integer, 0},
    {"Tr104PbxDailingNum", ValueKind::Text, 32},
    {"Tr104CallWaitingOnlyFlash", ValueKind::Integer, 0},
    {"Tr104CallConferenceOnlyFlash", ValueKind::Integer, 0},
    {"Tr104DialTonePattern", ValueKind::Text, kDefaultText},
    {"Tr104MCidService", ValueKind::Integer, 0},
    {"Tr104NoDialingBehaviour", ValueKind::Integer, 0},
};

#undef TR104_DEVICE_INT
#undef TR104_DEVICE_TEXT

inline constexpr std::span<const HandlerKind> kDeviceKinds{kDeviceKindRows};

}  // namespace tr104ctl
