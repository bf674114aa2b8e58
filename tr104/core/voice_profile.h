// The voice profile bound to a line's port: one body for a value of it (profileValue), the line
// audio settings the SIP and the H.248 handlers share, and the layout checks of the port status
// and profile records.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tr104/core/core.h"
#include "tr104/voice_profile.h"

// The records are the voice module's layouts: the same offsets on the 64-bit host and on the
// 32-bit device.
static_assert(sizeof(Tr104SipLineRecord) == 452);
static_assert(offsetof(Tr104SipLineRecord, unLine) == 0);
static_assert(offsetof(Tr104SipLineRecord, unEnable) == 4);
static_assert(offsetof(Tr104SipLineRecord, aHotlineNum) == 8);
static_assert(offsetof(Tr104SipLineRecord, aDisplayName) == 74);
static_assert(offsetof(Tr104SipLineRecord, unPortState) == 140);
static_assert(offsetof(Tr104SipLineRecord, aRegState) == 144);
static_assert(offsetof(Tr104SipLineRecord, aHookState) == 164);
static_assert(offsetof(Tr104SipLineRecord, aCallState) == 184);
static_assert(offsetof(Tr104SipLineRecord, unProfileId) == 356);
static_assert(offsetof(Tr104SipLineRecord, aProfileName) == 360);
static_assert(offsetof(Tr104SipLineRecord, unHotlineDelay) == 404);
static_assert(offsetof(Tr104SipLineRecord, unMinJitter) == 432);
static_assert(offsetof(Tr104SipLineRecord, unMaxJitter) == 436);
static_assert(offsetof(Tr104SipLineRecord, aJitterMode) == 440);
static_assert(sizeof(Tr104SipLineRecord) == TR104_PORT_STATUS_LEN);

static_assert(sizeof(Tr104SipProfileRecord) == 76);
static_assert(offsetof(Tr104SipProfileRecord, ucPort) == 0);
static_assert(offsetof(Tr104SipProfileRecord, aName) == 2);
static_assert(offsetof(Tr104SipProfileRecord, unChangeMask) == 24);
static_assert(offsetof(Tr104SipProfileRecord, aucCodecs) == 28);
static_assert(offsetof(Tr104SipProfileRecord, ucSilenceSuppression) == 38);
static_assert(offsetof(Tr104SipProfileRecord, ucComfortNoise) == 39);
static_assert(offsetof(Tr104SipProfileRecord, ucDtmfMethod) == 40);
static_assert(offsetof(Tr104SipProfileRecord, ucEchoCancel) == 41);
static_assert(offsetof(Tr104SipProfileRecord, cReceiveGain) == 42);
static_assert(offsetof(Tr104SipProfileRecord, cTransmitGain) == 43);
static_assert(offsetof(Tr104SipProfileRecord, ucJitterTarget) == 44);
static_assert(offsetof(Tr104SipProfileRecord, ucPacketization) == 45);
static_assert(offsetof(Tr104SipProfileRecord, unT38BitRate) == 56);
static_assert(offsetof(Tr104SipProfileRecord, unT38TcfMethod) == 60);
static_assert(offsetof(Tr104SipProfileRecord, unT38HighSpeedRedundancy) == 64);
static_assert(offsetof(Tr104SipProfileRecord, unT38LowSpeedRedundancy) == 68);
static_assert(offsetof(Tr104SipProfileRecord, unT38PortAdd2) == 72);

namespace tr104::core {

enum class ProfileConv : uint8_t {
    SignedByte,  // gains: a signed byte widened, range checked
    Byte,  // flags and targets: the low byte, no check
    DtmfText,  // DTMF method names
    Word,  // a word in low..high both ways
    T38Rate,  // bit/s <-> rate code
    TcfText,  // TCF method names
};

struct ProfileValue {
    Signature sig;
    uint8_t offset;  // field in the profile record
    uint8_t width;  // 1 or 4 bytes
    uint32_t bit;  // change-mask bit of the field (0: none)
    ProfileConv conv;
    int low, high;  // accepted range (SignedByte, Word)
    int refusal;  // result of a refused set value
    const char *getError;  // read failed: "%d" the line
    const char *getDone;  // printed after a successful get (line, value), or null
    const char *rangeBound;  // refused while a profile is bound ("%d" or "%s" the value)
    const char *rangeCreate;  // refused while none is
    const char *badStored;  // the stored value has no data-model form ("%d" the value)
};

// Line 0, where the signature admits it, means every line: a get reads line 1, a set writes
// line 1 and then line 2.
int profileValue(const ProfileValue &v, int nFlag, void *pValue, int *nLocate);

// The audio settings of a line's voice profile, by their handlers' names (Tr104Line<name>Sip,
// Tr104Line<name>H248).  SIP and H.248 set them through the same profile requests; a handler
// passes its own name for the messages.
#define TR104_LINE_AUDIO_SETTINGS(X) \
    X(TransmitGain)                  \
    X(ReceiveGain)                   \
    X(EchoCancelFlag)                \
    X(ComfortNoiseFlag)              \
    X(JitterBufferTarget)
#define TR104_LINE_AUDIO_NAME(name) name,
enum class LineAudio : uint8_t { TR104_LINE_AUDIO_SETTINGS(TR104_LINE_AUDIO_NAME) Count };
#undef TR104_LINE_AUDIO_NAME
int lineAudio(LineAudio which, const char *name, int nFlag, void *pValue, int *nLocate);
// The exported variant of one protocol: TR104_LINE_AUDIO_SETTINGS(TR104_LINE_AUDIO_SIP), say.
#define TR104_LINE_AUDIO_VARIANT(name, protocol)                                                       \
    extern "C" TR104_API int Tr104Line##name##protocol(int nFlag, void *pValue, int *nLocate) {        \
        return tr104::core::lineAudio(tr104::core::LineAudio::name, __func__, nFlag, pValue, nLocate); \
    }

// Either gain, by direction (non-zero receive), through one combined request when the port has
// no profile yet.
int lineGain(const char *name, int nFlag, int nDirection, void *pValue, int *nLocate);

}  // namespace tr104::core
