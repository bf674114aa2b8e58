// The shapes most SIP handlers share, as descriptors and one generic body each:
//  - a value of the line record (lineValue),
//  - a value of the voice profile bound to a line's port (profileValue),
//  - a value of a profile-wide record whose set names the field it changes (profileWide).
#pragma once

#include "tr104/sip/sip_internal.h"

namespace tr104::sip {

// ---- Line record values ------------------------------------------------------------------------

// How the value of the data model maps to the line record's field.
enum class LineConv : uint8_t {
    EnableText,  // "Enabled"/"Disabled" <-> 1/0 word
    Integer,  // the word itself
    Text,  // text field
    Register,  // set only: 1 registers, anything else unregisters (the command carries it)
    RegStatus,  // registration text -> data-model state
    ServerStatus,  // port state code and registration text -> 0, 1, 2, 5
    PortState,  // port state code, low-order byte
    HookText,  // hook text as it is
    CallStatus,  // call text, a few renamed
    SessionType,  // call text -> 0, 1, 3
};

// What a set does with a text longer than the field allows.
enum class TooLong : uint8_t {
    Refuse,  // -2 with the descriptor's value error
    Cut,  // keep the first `limit` characters
    RunOn,  // no check: the text is copied as it is, up to the end of the record
};

struct LineValue {
    Signature sig;
    uint16_t getCmd;
    uint16_t setCmd;
    uint16_t offset;  // field in the line record
    uint16_t width;  // bytes of the field
    LineConv conv;
    const char *getError;  // read failed (may name the line with %d)
    const char *setError;  // send failed
    const char *valueError;  // value refused
    TooLong tooLong = TooLong::Refuse;
    uint16_t limit = 0;  // longest text a set accepts (Refuse) or keeps (Cut)
};

// Line 0, where the signature admits it, is line 1.
int lineValue(const LineValue &v, int nFlag, void *pValue, int *nLocate);

// ---- Voice-profile values ----------------------------------------------------------------------

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
#define TR104_LINE_AUDIO_VARIANT(name, protocol)                                                     \
    extern "C" TR104_API int Tr104Line##name##protocol(int nFlag, void *pValue, int *nLocate) {      \
        return tr104::sip::lineAudio(tr104::sip::LineAudio::name, __func__, nFlag, pValue, nLocate); \
    }

// Either gain, by direction (non-zero receive), through one combined request when the port has
// no profile yet.
int lineGain(const char *name, int nFlag, int nDirection, void *pValue, int *nLocate);

// ---- Profile-wide values -----------------------------------------------------------------------

// A word a set request carries beside the value: the selector of the field being set, or the
// other field's "unchanged" marker.
struct Marker {
    uint8_t offset;
    uint8_t width;  // 2 or 4 bytes
    uint32_t value;
};

// Which values a set accepts.
enum class Accept : uint8_t {
    Any,  // every value
    Range,  // low..high
    LowByte,  // the value's low byte in low..high (VBD packet intervals)
    VbdCodec,  // 0, 4, 8, 18, or any code of 255 and above
};

struct ProfileWide {
    Signature sig;
    uint16_t getCmd;
    uint16_t setCmd;
    uint8_t recordLen;
    uint8_t offset;  // field of the value (a word)
    uint32_t scale;  // voice module units per data-model unit
    Accept accept;
    int low, high;
    Marker marker;
    const char *getError;
    const char *rangeError;  // "%d" (or "%s" for a text) the refused value
    const char *setError;
    const TextCode *names = nullptr;  // a text value: names of the codes
    uint8_t nameCount = 0;
};

// The scale of a timer kept in seconds by the data model and in milliseconds by the voice module.
constexpr uint32_t kMsPerSecond = 1000;

int profileWide(const ProfileWide &w, int nFlag, void *pValue, int *nLocate);

}  // namespace tr104::sip
