// Capability and limit parameters of the voice service: read-only, most with a fixed answer,
// two asked from the voice module, several answered by the SIP handlers while SIP runs.
#include "tr104/device/device_internal.h"
#include "tr104/sip.h"

namespace tr104::device {
namespace {

enum class Source : uint8_t {
    Fixed,  // the answer, whatever the protocol
    SipFirst,  // SIP: the SIP handler; H.248: the answer; any other protocol: -1, no check
    Query,  // asked from the voice module
};

struct Capability {
    Signature sig;
    Source source;
    int answer;
    SipVariant sip = nullptr;
    uint16_t cmd = 0;  // Query: command id of the 4-byte get
    const char *failure = nullptr;  // Query: read failed
    const char *done = nullptr;  // printed after the answer ("%d" the value), or null
    const char *entry = nullptr;  // printed on entry ("%d" nFlag and the value), or null
};

constexpr Capability fixed(const char *name, const char *valueName, int answer, const char *done = nullptr) {
    return Capability{
        deviceSignature(name, valueName, Access::GetOnly), Source::Fixed, answer, nullptr, 0, nullptr, done};
}
constexpr Capability sipFirst(const char *name, const char *valueName, int answer, SipVariant sip) {
    return Capability{deviceSignature(name, valueName, Access::GetOnly), Source::SipFirst, answer, sip};
}
constexpr Capability query(const char *name, const char *valueName, uint16_t cmd, const char *failure,
                           const char *done) {
    return Capability{deviceSignature(name, valueName, Access::GetOnly), Source::Query, 0, nullptr, cmd, failure, done};
}

const Capability kProfileNumber = query("Tr104ProfileNumber", "pProfileNumber", TR104_GET_PROFILE_NUMBER_ID,
                                        "get voice profile number error.\n", "get ProfileNumber[%d]\n");
const Capability kMaxCountPerProfile =
    query("Tr104MaxCountPerProfile", "pMaxCountPerProfile", TR104_GET_MAX_COUNT_PER_PROFILE_ID,
          "getMaxCountPerProfile error\n", "get MaxCountPerProfile[%d]\n");
const Capability kMaxSessionsPerLine =
    sipFirst("Tr104MaxSessionsPerLine", "pMaxSessionsPerLine", 1, Tr104MaxSessionsPerLineSip);
// Under H.248 the answer is 2, the protocol number itself.
const Capability kMaxSessionsAllLines =
    sipFirst("Tr104MaxSessionsAllLines", "pMaxSessionsAllLines", TR104_PROTOCOL_H248, Tr104MaxSessionsAllLinesSip);
const Capability kVoiceProtocolGroup =
    fixed("Tr104VoiceProtocolGroup", "pVoiceProtocolGroup", 6, "get voice protocol group[%d] \n");
const Capability kRTCPFlag = sipFirst("Tr104RTCPFlag", "pRTCPFlag", 1, Tr104RTCPFlagSip);
const Capability kSRTPFlag = fixed("Tr104SRTPFlag", "pSRTPFlag", 0);
const Capability kRTPRedundancyFlag =
    sipFirst("Tr104RTPRedundancyFlag", "pRTPRedundancyFlag", 1, Tr104RTPRedundancyFlagSip);
const Capability kDSCPCoupledFlag = fixed("Tr104DSCPCoupledFlag", "pDSCPCoupledFlag", 0);
const Capability kVlanTagCoupledFlag =
    sipFirst("Tr104VlanTagCoupledFlag", "pVlanTagCoupledFlag", 1, Tr104VlanTagCoupledFlagSip);
const Capability kPSTNSoftSwitchOverFlag = fixed("Tr104PSTNSoftSwitchOverFlag", "pPSTNSoftSwitchOverFlag", 0);
const Capability kFaxT38Flag = sipFirst("Tr104FaxT38Flag", "pFaxT38Flag", 1, Tr104FaxT38FlagSip);
const Capability kFaxPassThroughFlag =
    sipFirst("Tr104FaxPassThroughFlag", "pFaxPassThroughFlag", 1, Tr104FaxPassThroughFlagSip);
const Capability kModemPassThroughFlag =
    sipFirst("Tr104ModemPassThroughFlag", "pModemPassThroughFlag", 1, Tr104ModemPassThroughFlagSip);
const Capability kToneGenerationFlag = fixed("Tr104ToneGenerationFlag", "pToneGenerationFlag", 0);
const Capability kRingGenerationFlag = fixed("Tr104RingGenerationFlag", "pRingGenerationFlag", 0);
const Capability kDigitMapFlag{deviceSignature("Tr104DigitMapFlag", "pDigitMapFlag", Access::GetOnly),
                               Source::Fixed,
                               1,
                               nullptr,
                               0,
                               nullptr,
                               nullptr,
                               "nFlag[%d], *pDigitMapFlag[%d]\n"};
const Capability kNumberingPlanFlag =
    sipFirst("Tr104NumberingPlanFlag", "pNumberingPlanFlag", 0, Tr104NumberingPlanFlagSip);
const Capability kButtonMapFlag = fixed("Tr104ButtonMapFlag", "pButtonMapFlag", 0);
const Capability kVoicePortTestsFlag = fixed("Tr104VoicePortTestsFlag", "pVoicePortTestsFlag", 1);
// The voice module always sends heartbeats.
const Capability kHeartbeatFlag = fixed("Tr104HeartbeatFlag", "pHeartbeatFlag", 1);
const Capability kProfileNumberOfLines =
    sipFirst("Tr104ProfileNumberOfLines", "pNumberOfLines", 2, Tr104ProfileNumberOfLinesSip);

int answerCapability(const Capability &c, int nFlag, void *pValue) {
    if (c.source == Source::SipFirst) {
        const int protocol = gTr104CurrProtocolType;
        if (protocol == TR104_PROTOCOL_SIP) {
            return c.sip(nFlag, pValue, nullptr);
        }
        if (protocol != TR104_PROTOCOL_H248) {
            return TR104_ERR_EXCHANGE;
        }
    }
    if (c.entry != nullptr) {
        TR104_DEBUG_AS(c.sig.name, c.entry, nFlag, pValue != nullptr ? core::intValue(pValue) : 0);
    }
    if (const int rc = checkDevice(c.sig, nFlag, pValue); rc != TR104_OK) {
        return rc;
    }
    int value = c.answer;
    if (c.source == Source::Query) {
        if (core::readRecord(c.sig.name, &value, sizeof(value), c.cmd) != TR104_OK) {
            core::say(c.sig.name, c.failure);
            return TR104_ERR_EXCHANGE;
        }
    }
    core::putInt(pValue, value);
    if (c.done != nullptr) {
        TR104_DEBUG_AS(c.sig.name, c.done, value);
    }
    return TR104_OK;
}

const Signature kRegions = deviceSignature("Tr104CapabilityRegions", "pRegions", Access::GetOnly);

}  // namespace
}  // namespace tr104::device

using tr104::device::answerCapability;

#define TR104_CAPABILITY(name)                                          \
    extern "C" TR104_API int Tr104##name(int nFlag, void *pValue) {     \
        return answerCapability(tr104::device::k##name, nFlag, pValue); \
    }

TR104_CAPABILITY(ProfileNumber)
TR104_CAPABILITY(MaxCountPerProfile)
TR104_CAPABILITY(MaxSessionsPerLine)
TR104_CAPABILITY(MaxSessionsAllLines)
TR104_CAPABILITY(VoiceProtocolGroup)
TR104_CAPABILITY(RTCPFlag)
TR104_CAPABILITY(SRTPFlag)
TR104_CAPABILITY(RTPRedundancyFlag)
TR104_CAPABILITY(DSCPCoupledFlag)
TR104_CAPABILITY(VlanTagCoupledFlag)
TR104_CAPABILITY(PSTNSoftSwitchOverFlag)
TR104_CAPABILITY(FaxT38Flag)
TR104_CAPABILITY(FaxPassThroughFlag)
TR104_CAPABILITY(ModemPassThroughFlag)
TR104_CAPABILITY(ToneGenerationFlag)
TR104_CAPABILITY(RingGenerationFlag)
TR104_CAPABILITY(DigitMapFlag)
TR104_CAPABILITY(NumberingPlanFlag)
TR104_CAPABILITY(ButtonMapFlag)
TR104_CAPABILITY(VoicePortTestsFlag)
TR104_CAPABILITY(HeartbeatFlag)
TR104_CAPABILITY(ProfileNumberOfLines)

// The line count is fixed by the hardware: a get writes 2.  It prints nothing for a null value,
// but refuses it (-2): a write through it would take the agent down.
extern "C" TR104_API int Tr104MaxLineCount(int nFlag, void *pValue) {
    if (nFlag != 0) {
        TR104_DEBUG("param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    if (pValue == nullptr) {
        return TR104_ERR_PARAM;
    }
    tr104::core::putInt(pValue, 2);
    return TR104_OK;
}

// No region is announced: an empty text.
extern "C" TR104_API int Tr104CapabilityRegions(int nFlag, void *pValue) {
    if (const int rc = tr104::device::checkDevice(tr104::device::kRegions, nFlag, pValue); rc != TR104_OK) {
        return rc;
    }
    static_cast<char *>(pValue)[0] = '\0';
    return TR104_OK;
}
