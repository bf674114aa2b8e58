// Handlers that serve both protocols with one body: the codecs the device supports, answered
// from the codec table, and the call-session parameters, which this voice module does not
// report.
#include <cstring>

#include "tr104/codec.h"
#include "tr104/device/device_internal.h"

namespace tr104::device {
namespace {

// The supported codecs in payload-type order: Capabilities.Codecs.{1..5}.
constexpr int kSupported[] = {0, 4, 8, 9, 18};
constexpr int kSupportedCount = sizeof(kSupported) / sizeof(kSupported[0]);
// Packetization periods the codec list accepts, in the data model's range notation.
constexpr const char kPeriods[] = "10-60";

enum class Supported : uint8_t { Name, BitRate, Periods, SilenceSuppression };

struct SupportedItem {
    Signature sig;
    Supported item;
};

constexpr SupportedItem supported(const char *name, const char *valueName, Supported item) {
    return SupportedItem{Signature{name, valueName, Locate::None, Access::GetOnly}, item};
}

const SupportedItem kCodecType = supported("Tr104CodecType", "pCodecType", Supported::Name);
const SupportedItem kCodecBitRate = supported("Tr104CodecBitRate", "pCodecBitRate", Supported::BitRate);
const SupportedItem kCodecPacketizationPeriod =
    supported("Tr104CodecPacketizationPeriod", "pCodecPacketizationPeriod", Supported::Periods);
const SupportedItem kCodecSilenceSuppression =
    supported("Tr104CodecSilenceSuppression", "pCodecSilenceSuppression", Supported::SilenceSuppression);

int supportedCodec(const SupportedItem &s, int nFlag, void *pValue, const int *nLocate) {
    if (const int rc = core::checkArguments(s.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    if (nLocate == nullptr || !core::inRange(nLocate[1], 1, kSupportedCount)) {
        TR104_DEBUG_AS(s.sig.name, "param error, nLocate[1]=%d\n", nLocate != nullptr ? nLocate[1] : 0);
        return TR104_ERR_PARAM;
    }
    const int code = kSupported[nLocate[1] - 1];
    switch (s.item) {
    case Supported::Name: std::strcpy(static_cast<char *>(pValue), ConvertCodecTypeInt2Str(code)); break;
    case Supported::BitRate: core::putInt(pValue, static_cast<int>(tr104GetBitRateByCodecEnum(code))); break;
    case Supported::Periods: std::strcpy(static_cast<char *>(pValue), kPeriods); break;
    case Supported::SilenceSuppression: core::putInt(pValue, 1); break;
    }
    return TR104_OK;
}

// A parameter the voice module has no request for: the checks, then -1.
int notProvided(const Signature &sig, int nFlag, void *pValue, const int *nLocate) {
    if (const int rc = core::checkArguments(sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    TR104_DEBUG_AS(sig.name, "%s: this voice module does not provide the parameter\n", sig.name);
    return TR104_ERR_EXCHANGE;
}

const Signature kSessionStartTime{"Tr104SessionStartTime", "pSessionStartTime", Locate::Line, Access::GetOnly};
const Signature kSessionEndTime{"Tr104SessionEndTime", "pSessionEndTime", Locate::Line, Access::GetOnly};
const Signature kSessionDuration{"Tr104SessionDuration", "pSessionDuration", Locate::Line, Access::GetOnly};
const Signature kSipSessionTimerSessionExpires{"Tr104SipSessionTimerSessionExpires", "pSessionExpires", Locate::None,
                                               Access::GetSet};
// The registration diagnostics of the device: the voice module has no request that runs them.
const Signature kIADDiagnosticsState{"Tr104IADDiagnosticsState", "pIADDiagnosticsState", Locate::None, Access::GetSet};
const Signature kLineSessionTimerFlag{"Tr104LineSessionTimerFlag", "pLineSessionTimerFlag", Locate::Line,
                                      Access::GetSet};

}  // namespace
}  // namespace tr104::device

#define TR104_SUPPORTED_CODEC(name)                                                           \
    extern "C" TR104_API int Tr104##name(int nFlag, void *pValue, int *nLocate) {             \
        return tr104::device::supportedCodec(tr104::device::k##name, nFlag, pValue, nLocate); \
    }
#define TR104_NOT_PROVIDED(name)                                                           \
    extern "C" TR104_API int Tr104##name(int nFlag, void *pValue, int *nLocate) {          \
        return tr104::device::notProvided(tr104::device::k##name, nFlag, pValue, nLocate); \
    }

TR104_SUPPORTED_CODEC(CodecType)
TR104_SUPPORTED_CODEC(CodecBitRate)
TR104_SUPPORTED_CODEC(CodecPacketizationPeriod)
TR104_SUPPORTED_CODEC(CodecSilenceSuppression)
TR104_NOT_PROVIDED(SessionStartTime)
TR104_NOT_PROVIDED(SessionEndTime)
TR104_NOT_PROVIDED(SessionDuration)
TR104_NOT_PROVIDED(LineSessionTimerFlag)

// Profile- and device-wide: two arguments, like every parameter that exists once per profile.
extern "C" TR104_API int Tr104SipSessionTimerSessionExpires(int nFlag, void *pValue) {
    return tr104::device::notProvided(tr104::device::kSipSessionTimerSessionExpires, nFlag, pValue, nullptr);
}
extern "C" TR104_API int Tr104IADDiagnosticsState(int nFlag, void *pValue) {
    return tr104::device::notProvided(tr104::device::kIADDiagnosticsState, nFlag, pValue, nullptr);
}
