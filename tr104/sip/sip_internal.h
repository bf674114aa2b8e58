// Shared pieces of the SIP handlers: record layout checks, the argument checks every handler
// makes, and the read and write exchanges of one record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tr104/framework.h"
#include "tr104/framework/debug.h"
#include "tr104/sip.h"

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

static_assert(sizeof(Tr104SipLineFeatureRecord) == 76);
static_assert(offsetof(Tr104SipLineFeatureRecord, unLine) == 0);
static_assert(offsetof(Tr104SipLineFeatureRecord, ucCallerIdMode) == 4);
static_assert(offsetof(Tr104SipLineFeatureRecord, ucCallWaiting) == 5);
static_assert(offsetof(Tr104SipLineFeatureRecord, ucConference) == 73);

static_assert(sizeof(Tr104SipSignalTimerRecord) == 32);
static_assert(offsetof(Tr104SipSignalTimerRecord, usSelector) == 0);
static_assert(offsetof(Tr104SipSignalTimerRecord, unStartDigit) == 4);
static_assert(offsetof(Tr104SipSignalTimerRecord, unNoAnswer) == 8);
static_assert(offsetof(Tr104SipSignalTimerRecord, unBusyTone) == 16);
static_assert(offsetof(Tr104SipSignalTimerRecord, unHangingReminder) == 20);
static_assert(offsetof(Tr104SipSignalTimerRecord, unCallWaitingReject) == 24);

static_assert(sizeof(Tr104SipDigitTimerRecord) == 40);
static_assert(offsetof(Tr104SipDigitTimerRecord, unShortDigit) == 16);
static_assert(offsetof(Tr104SipDigitTimerRecord, unLongDigit) == 20);

static_assert(sizeof(Tr104SipDigitMapChunk) == 258);
static_assert(offsetof(Tr104SipDigitMapChunk, ucChunk) == 1);
static_assert(offsetof(Tr104SipDigitMapChunk, aText) == 2);
static_assert(sizeof(Tr104SipMatchModeRecord) == 258);

static_assert(sizeof(Tr104SipFaxModeRecord) == 36);
static_assert(offsetof(Tr104SipFaxModeRecord, unConfigFlag) == 0);
static_assert(offsetof(Tr104SipFaxModeRecord, unProcessMode) == 4);
static_assert(offsetof(Tr104SipFaxModeRecord, unT38SdpType) == 8);
static_assert(offsetof(Tr104SipFaxModeRecord, unFaxModemSwitch) == 12);
static_assert(offsetof(Tr104SipFaxModeRecord, unEchoCancelSwitch) == 16);
static_assert(offsetof(Tr104SipFaxModeRecord, unSilenceSuppSwitch) == 20);
static_assert(offsetof(Tr104SipFaxModeRecord, unFaxCtrlMode) == 32);

static_assert(sizeof(Tr104SipVbdRecord) == 20);
static_assert(offsetof(Tr104SipVbdRecord, unSelector) == 0);
static_assert(offsetof(Tr104SipVbdRecord, unEnable) == 4);
static_assert(offsetof(Tr104SipVbdRecord, unCodec) == 8);
static_assert(offsetof(Tr104SipVbdRecord, unRxInterval) == 12);
static_assert(offsetof(Tr104SipVbdRecord, unTxInterval) == 16);

namespace tr104::sip {

// Which instance numbers a handler checks.
enum class Locate : uint8_t {
    Line,       // nLocate[2] in 1..2
    LineOrAll,  // nLocate[2] in 0..2, 0 meaning every line
    Unchecked,  // nLocate[2] is used as the line without a range check
    None,       // profile-wide: nLocate is not used
};

// Which directions a handler serves; the other one is refused like a bad nFlag.
enum class Access : uint8_t { GetSet, GetOnly, SetOnly };

// What the common argument checks need to know about a handler.
struct Signature {
    const char *name;       // exported handler name, printed with every message
    const char *valueName;  // name of the value pointer in "param error, %s is null\n"
    Locate locate;
    Access access;
    const char *flagError = "param error, nFlag[%d]\n";
};

// The checks in their fixed order: null value, line number, nFlag.  0 or -2.
int checkArguments(const Signature &sig, int nFlag, const void *pValue, const int *nLocate);

// Reads a record: sends it as the request of cmd and copies the answer back over it.
// 0, or -1 (the message record could not be built, or the exchange failed).
int readRecord(const char *name, void *record, unsigned int len, unsigned int cmd);
// Sends a record as cmd without waiting for an answer.  0 or -1.
int sendRecord(const char *name, const void *record, unsigned int len, unsigned int cmd);
// Reads a text answer of at most len bytes straight into dst.  0 or -1.
int readText(const char *name, char *dst, unsigned int len, unsigned int cmd);

// A fixed message, printed only while debugging is on.
inline void say(const char *name, const char *text) { TR104_DEBUG_AS(name, "%s", text); }

// Text-to-text or text-to-number tables of the conversions.
struct TextCode {
    const char *text;
    int code;
};
const TextCode *findText(const TextCode *table, size_t count, const char *text);
const TextCode *findCode(const TextCode *table, size_t count, int code);

template <size_t N>
const TextCode *findText(const TextCode (&table)[N], const char *text) {
    return findText(table, N, text);
}
template <size_t N>
const TextCode *findCode(const TextCode (&table)[N], int code) {
    return findCode(table, N, code);
}

// The line number of a handler that has passed its checks.
inline int lineOf(const int *nLocate) { return nLocate[2]; }

// Integer value of the caller.
inline int intValue(const void *pValue) {
    int v;
    std::memcpy(&v, pValue, sizeof(v));
    return v;
}
inline void putInt(void *pValue, int v) { std::memcpy(pValue, &v, sizeof(v)); }

// low <= value <= high as one unsigned comparison (value - low < high - low + 1).
inline bool inRange(int value, int low, int high) {
    return static_cast<unsigned int>(value) - static_cast<unsigned int>(low) <
           static_cast<unsigned int>(high) - static_cast<unsigned int>(low) + 1u;
}

// The statistics reset of a line, both protocols: a get yields 0 without asking; a set of 1 sends
// the line under resetCmd; another value is reported and answers notOne (0 accepted, -2 refused).
// sendFailed may name the line with %d.
struct LineReset {
    Signature sig;
    unsigned int resetCmd;
    int notOne;
    const char *sendFailed;
};
int resetLineStatistics(const LineReset &r, int nFlag, void *pValue, int *nLocate);

// Copies at most max characters of src (stopping at its terminator) and a terminator.
void copyBounded(char *dst, const char *src, size_t max);

// A text read from a field of a record ends within the field, whatever the voice module left
// there: its characters up to the terminator, at most room - 1 of them (room: the field's bytes
// up to the next field, TR104_FIELD_ROOM).  fieldTextLength counts them; copyFieldText copies
// them and a terminator, room bytes at most, as a text that fits its field has always been.
inline size_t fieldTextLength(const char *field, size_t room) { return room > 0 ? strnlen(field, room - 1) : 0; }
void copyFieldText(char *dst, const char *field, size_t room);

}  // namespace tr104::sip
