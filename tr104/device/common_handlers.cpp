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

}  // namespace
}  // namespace tr104::device

// The descriptors and handlers of the catalogue's SupportedCodec, NotProvided and NotProvidedWide
// rows (tr104/catalogue/framework.toml).
#include "tr104/catalogue/framework_NotProvided.inc"
#include "tr104/catalogue/framework_NotProvidedWide.inc"
#include "tr104/catalogue/framework_SupportedCodec.inc"
