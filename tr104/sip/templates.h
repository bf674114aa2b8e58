// The shapes most SIP handlers share, as descriptors and one generic body each:
//  - a value of the line record (lineValue),
//  - a value of the voice profile bound to a line's port (profileValue, in core: H.248 shares it),
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

// ---- Voice-profile values: core's bodies, shared with the H.248 line audio settings -----------

using core::lineAudio;
using core::LineAudio;
using core::lineGain;
using core::ProfileConv;
using core::profileValue;
using core::ProfileValue;

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
