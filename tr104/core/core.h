// The toolkit of every handler area: the argument checks, the exchanges of one record, the text
// copies bounded by a field's room, the text/code tables and the small value helpers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tr104/core/debug.h"
#include "tr104/framework.h"

namespace tr104::core {

// Which instance numbers a handler checks.
enum class Locate : uint8_t {
    Line,  // nLocate[2] in 1..2
    LineOrAll,  // nLocate[2] in 0..2, 0 meaning every line
    Unchecked,  // nLocate[2] is used as the line without a range check
    None,  // profile-wide or gateway-wide: nLocate is not used
    Port,  // nLocate[1] in 1..2, "param error, nLocate[1]=%d\n"
    PortAsLine,  // nLocate[1] in 1..2, refused as "param error, nLocate[2]=%d\n" with nLocate[2]
    PortNamedLine,  // nLocate[1] in 1..2, refused as "param error, nLocate[2]=%d\n" with nLocate[1]
    KcPort,  // nLocate[1] in 0..2, "param error, port is invaild\n"
};

// Which directions a handler serves; the other one is refused like a bad nFlag.
enum class Access : uint8_t { GetSet, GetOnly, SetOnly };

// Where the refusals are printed.
enum class Report : uint8_t {
    Debug,  // through the debug output, only while debugging is on
    NullOnStdout,  // a null value always on standard output ("%s" the handler), nFlag as Debug
    Stdout,  // both always on standard output, "%s" the handler before the flag's "%d"
};

// What the common argument checks need to know about a handler.
struct Signature {
    const char *name;  // exported handler name, printed with every message
    const char *valueName;  // name of the value pointer in "param error, %s is null\n"; with a
        // Report other than Debug, the whole null message
    Locate locate;
    Access access;
    const char *flagError = "param error, nFlag[%d]\n";
    Report report = Report::Debug;
};

// The checks in their fixed order: null value, instance number, nFlag.  0 or -2.
int checkArguments(const Signature &sig, int nFlag, const void *pValue, const int *nLocate);

// The checks, then the port: the port (nLocate[1]), or the refusal (-2).
inline int checkedPort(const Signature &sig, int nFlag, const void *pValue, const int *nLocate) {
    const int rc = checkArguments(sig, nFlag, pValue, nLocate);
    return rc != TR104_OK ? rc : nLocate[1];
}

// Zero a record and give it this process's module number and channel identifiers.
void fillRequestRecord(Tr104Msg *msg);

// Reads a record: sends it as the request of cmd and copies the answer back over it.
// 0, or -1 (the message record could not be built, or the exchange failed).
int readRecord(const char *name, void *record, unsigned int len, unsigned int cmd);
// Sends a record as cmd without waiting for an answer.  0 or -1.
int sendRecord(const char *name, const void *record, unsigned int len, unsigned int cmd);
// Same, on msg (a record the caller filled): its payload and reply area are cleared first.
int sendRecord(Tr104Msg *msg, const void *record, unsigned int len, unsigned int cmd);
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

// A profile's total: a value of each of its two lines, added up.  perLine(line, &value) reads
// one line's value and says whether it could; the first line it cannot read ends the sum (false).
template <typename PerLine>
bool sumOverLines(PerLine perLine, uint32_t *sum) {
    for (int line = 1; line <= 2; ++line) {
        uint32_t value = 0;
        if (!perLine(line, &value)) {
            return false;
        }
        *sum += value;
    }
    return true;
}

// Copies at most max characters of src (stopping at its terminator) and a terminator.
void copyBounded(char *dst, const char *src, size_t max);

// A text read from a field of a record ends within the field, whatever the voice module left
// there: its characters up to the terminator, at most room - 1 of them (room: the field's bytes
// up to the next field, TR104_FIELD_ROOM).  fieldTextLength counts them; copyFieldText copies
// them and a terminator, room bytes at most, as a text that fits its field has always been.
inline size_t fieldTextLength(const char *field, size_t room) { return room > 0 ? strnlen(field, room - 1) : 0; }
void copyFieldText(char *dst, const char *field, size_t room);

}  // namespace tr104::core
