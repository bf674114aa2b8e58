// Capability and limit parameters of the voice service: read-only, most with a fixed answer,
// two asked from the voice module, several answered by the SIP handlers while SIP runs.  The
// descriptors are the rows of tr104/catalogue/device.toml.
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

#include "tr104/catalogue/device_Capability.inc"
