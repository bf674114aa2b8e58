// The SIP variants of a line's audio settings, and the SIP profile values of the catalogue: every
// one a descriptor for core's voice-profile body.
#include "tr104/sip/templates.h"

#define TR104_LINE_AUDIO_SIP(name) TR104_LINE_AUDIO_VARIANT(name, Sip)
TR104_LINE_AUDIO_SETTINGS(TR104_LINE_AUDIO_SIP)

extern "C" {
TR104_API int Tr104LineGainSip(int nFlag, int nDirection, void *pValue, int *nLocate) {
    return tr104::core::lineGain(__func__, nFlag, nDirection, pValue, nLocate);
}
}

// The descriptors and handlers of the catalogue's ProfileValue rows (tr104/catalogue/sip.toml).
#include "tr104/catalogue/sip_ProfileValue.inc"
