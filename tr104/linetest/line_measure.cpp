// Line tests: the selector and state of each port, the thresholds the agent writes, the
// measurements of the outer and inner line tests, the flag words derived from them and the
// conclusion.  The tests run in the voice module; the library starts them and follows their
// progress per port.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "tr104/linetest/linetest_internal.h"

TR104_API char gTestSelector[TR104_LINETEST_PORTS][TR104_LINETEST_TEXT_LEN] = {"Outer_Line_Test", "Outer_Line_Test"};
TR104_API char gTestState[TR104_LINETEST_PORTS][TR104_LINETEST_TEXT_LEN] = {"None", "None"};
TR104_API int32_t gTestProgess[TR104_LINETEST_PORTS];
TR104_API int32_t gIsTestOnBusy[TR104_LINETEST_PORTS];
TR104_API int32_t gVDCHazardousThreshold[TR104_LINETEST_PORTS];
TR104_API int32_t gVACHazardousThreshold[TR104_LINETEST_PORTS];
TR104_API int32_t gVDCForeignThreshold[TR104_LINETEST_PORTS];
TR104_API int32_t gVACForeignThreshold[TR104_LINETEST_PORTS];
TR104_API int32_t gABGResistanceThreshold[TR104_LINETEST_PORTS];
TR104_API int32_t gABResistanceThreshold[TR104_LINETEST_PORTS];
TR104_API int32_t gRingerEquivalenceMin[TR104_LINETEST_PORTS];
TR104_API int32_t gRingerEquivalenceMax[TR104_LINETEST_PORTS];
TR104_API int32_t gDBDT1[TR104_LINETEST_PORTS];
TR104_API int32_t gDBDT2[TR104_LINETEST_PORTS];
TR104_API int32_t gDBDT3[TR104_LINETEST_PORTS];
TR104_API int32_t gDBDT4[TR104_LINETEST_PORTS];
TR104_API int32_t gDialToneFrequency1[TR104_LINETEST_PORTS];
TR104_API int32_t gDialToneFrequency2[TR104_LINETEST_PORTS];
TR104_API int32_t gDialToneFrequency3[TR104_LINETEST_PORTS];
TR104_API int32_t gDialTonePowerThreshold[TR104_LINETEST_PORTS];
TR104_API int32_t gQuietChannelPowerThreshold[TR104_LINETEST_PORTS];

namespace tr104::linetest {

namespace {

// Both line-test result records carry the port at the same place.
template <typename Result>
int readResult(const char *name, int port, Result *rec, unsigned int cmd) {
    *rec = Result{};
    rec->ucPort = static_cast<uint8_t>(port);
    return readRecord(name, rec, sizeof(*rec), cmd);
}

// The texts fill their 16 bytes and may have no terminator: they are bounded first.
struct BoundedText {
    explicit BoundedText(const char *field) { std::memcpy(text, field, TR104_MEASURE_LEN); }
    char text[TR104_MEASURE_LEN + 1] = {};
};

}  // namespace

int readOuter(const char *name, int port, Tr104OuterLineResult *rec) {
    return readResult(name, port, rec, GET_OUTER_LINE_TEST_ID);
}

int readInner(const char *name, int port, Tr104InnerLineResult *rec) {
    return readResult(name, port, rec, GET_INNER_LINE_TEST_ID);
}

int decimal(const char *field) {
    // Converted as a wide integer and held to the range of an int, so that a value out of range
    // reads the same on the 32-bit device and on a 64-bit host.
    const long long value = std::strtoll(BoundedText(field).text, nullptr, 10);
    return value > INT32_MAX ? INT32_MAX : value < INT32_MIN ? INT32_MIN : static_cast<int>(value);
}

float decimalFloat(const char *field) { return std::strtof(BoundedText(field).text, nullptr); }

namespace {

// The thresholds and per-port settings are held values: their rows are in the catalogue.

// ---- Measurements ------------------------------------------------------------------------------

enum class Kind : uint8_t { Integer, Text, Float, PassedWhenZero };

struct Measure {
    const char *name;
    uint16_t recordLen;  // the record holding it: the inner-line (8217) or outer-line (8216) result
    uint16_t offset;  // field in the record
    Kind kind;
    const char *debugName;  // the field's name in the debug line of an integer
    const char *label;  // short name in the messages
};

bool isInner(const Measure &m) { return m.recordLen == sizeof(Tr104InnerLineResult); }
static_assert(sizeof(Tr104InnerLineResult) != sizeof(Tr104OuterLineResult));

// Reads the record of a measurement; `raw` points at its field inside `buffer`.
int fetch(const Measure &m, int port, char (&buffer)[sizeof(Tr104OuterLineResult)], const char **raw) {
    int rc;
    if (isInner(m)) {
        Tr104InnerLineResult rec;
        rc = readInner(m.name, port, &rec);
        std::memcpy(buffer, &rec, sizeof(rec));
    } else {
        Tr104OuterLineResult rec;
        rc = readOuter(m.name, port, &rec);
        std::memcpy(buffer, &rec, sizeof(rec));
    }
    *raw = buffer + m.offset;
    return rc;
}

int measure(const Measure &m, int nFlag, void *pValue, int *nLocate) {
    const int port = checkedPort({m.name, "pValue", Locate::Port, Access::GetOnly}, nFlag, pValue, nLocate);
    if (port < 0) {
        return port;
    }
    char buffer[sizeof(Tr104OuterLineResult)];
    const char *raw = nullptr;
    if (fetch(m, port, buffer, &raw) != TR104_OK) {
        TR104_DEBUG_AS(m.name, "get line[%d] %s failed.\n", port, m.label);
        return TR104_ERR_EXCHANGE;
    }
    char text[TR104_MEASURE_LEN + 1] = {};
    std::memcpy(text, raw, m.kind == Kind::PassedWhenZero ? 1 : TR104_MEASURE_LEN);
    switch (m.kind) {
    case Kind::Integer:
        TR104_DEBUG_AS(m.name, "get %s.%s [%s].\n", isInner(m) ? "InLineTestInfo" : "OutLineTestInfo", m.debugName,
                       text);
        putInt(pValue, decimal(raw));
        TR104_DEBUG_AS(m.name, "get line[%d] %s [%d].\n", port, m.label, decimal(raw));
        break;
    case Kind::Text:
        // The text as the voice module wrote it, 16 bytes at most (no terminator added when
        // it fills them: the caller's buffer holds 16 bytes and more).
        std::strncpy(static_cast<char *>(pValue), raw, TR104_MEASURE_LEN);
        TR104_DEBUG_AS(m.name, "get line[%d] %s[%s].\n", port, m.label, text);
        break;
    case Kind::Float:
        putFloat(pValue, decimalFloat(raw));
        TR104_DEBUG_AS(m.name, "get line[%d] %s [%s].\n", port, m.label, text);
        break;
    case Kind::PassedWhenZero: putInt(pValue, *raw == 0 ? 1 : 0); break;
    }
    return TR104_OK;
}

// ---- Flag words --------------------------------------------------------------------------------

enum class Rule : uint8_t {
    Voltages,  // |threshold| against |A| and B with its sign: bits 5 and 2
    Resistances,  // threshold against A and B, unsigned: bits 5 and 2
    ABResistance,  // 24 when the threshold is set and below the value, else 56
    RingerLoad,  // 7 within min..max (max 0: no upper bound), unsigned, else 3
    TonePower,  // 59 when the tone volume exceeds the threshold, else 63
};

struct FlagWord {
    const char *name;
    Rule rule;
    const int32_t *threshold;
    const Measure *a;  // read first: its record holds b too
    const Measure *b;
};

// The two compare functions of the tone power: floating point throughout.
bool floatAbove(float value, float threshold) { return value > threshold; }
float asFloat(int32_t threshold) { return static_cast<float>(threshold); }

// |v| as the C library's abs gives it on these machines: the most negative int stays itself.
int magnitude(int v) { return v < 0 ? static_cast<int>(0u - static_cast<unsigned int>(v)) : v; }

// Both bits set when the threshold is 0; else bit 5 cleared when the threshold is below A and
// bit 2 when it is below B.
int pairWord(bool thresholdSet, bool belowA, bool belowB) {
    if (!thresholdSet) {
        return 63;
    }
    return 63 & ~(belowA ? 32 : 0) & ~(belowB ? 4 : 0);
}

// The word of a port, or -1 when a measurement cannot be read.
int computeFlags(const FlagWord &f, int port) {
    char buffer[sizeof(Tr104OuterLineResult)];
    const char *raw = nullptr;
    if (fetch(*f.a, port, buffer, &raw) != TR104_OK) {
        return -1;
    }
    const int32_t threshold = f.threshold[port - 1];
    const int a = decimal(raw);
    const int b = decimal(buffer + f.b->offset);
    switch (f.rule) {
    case Rule::Voltages: {
        const int t = magnitude(threshold);
        return pairWord(t != 0, t < magnitude(a), t < b);
    }
    case Rule::Resistances: {
        const auto t = static_cast<uint32_t>(threshold);
        return pairWord(t != 0, t < static_cast<uint32_t>(a), t < static_cast<uint32_t>(b));
    }
    case Rule::ABResistance:
        return threshold != 0 && static_cast<uint32_t>(threshold) < static_cast<uint32_t>(a) ? 24 : 56;
    case Rule::RingerLoad: {
        const auto ren = static_cast<uint32_t>(a);
        const auto max = static_cast<uint32_t>(gRingerEquivalenceMax[port - 1]);
        return ren >= static_cast<uint32_t>(threshold) && (max == 0 || ren <= max) ? 7 : 3;
    }
    case Rule::TonePower: return floatAbove(decimalFloat(raw), asFloat(threshold)) ? 59 : 63;
    }
    return -1;
}

int flags(const FlagWord &f, int nFlag, void *pValue, int *nLocate) {
    const int rc = checkArguments({f.name, "pFlags", Locate::Port, Access::GetOnly}, nFlag, pValue, nLocate);
    if (rc != TR104_OK) {
        return rc;
    }
    const int word = computeFlags(f, portOf(nLocate));
    if (word < 0) {
        TR104_DEBUG_AS(f.name, "get line[%d] flags failed.\n", portOf(nLocate));
        return TR104_ERR_EXCHANGE;
    }
    putInt(pValue, word);
    TR104_DEBUG_AS(f.name, "get line[%d] flags[%d].\n", portOf(nLocate), word);
    return TR104_OK;
}

// ---- Selector and state ------------------------------------------------------------------------

const TextCode kTestTypes[] = {
    {"X_CU_LineTest", TR104_TEST_TYPE_OUTER},
    {"PhoneConnectivityTest", TR104_TEST_TYPE_OUTER},
    {"Outer_Line_Test", TR104_TEST_TYPE_OUTER},
    {"Inner_Line_Test", TR104_TEST_TYPE_INNER},
    {"X_ CT-COM _SimulateTest", 0},
    {"X_CMCC_SimulateTest", 0},
};
constexpr int kSimulated = 0;

// The type code of the port's selector; nullptr for an unknown text.
const TextCode *selectedType(int port) { return findText(kTestTypes, gTestSelector[port - 1]); }

void select(int port, const char *text) {
    std::memset(gTestSelector[port - 1], 0, TR104_LINETEST_TEXT_LEN);
    std::strncpy(gTestSelector[port - 1], text, TR104_LINETEST_TEXT_LEN - 1);
}

// "Requested": start the selected test.
int request(const char *name, int port) {
    if (gTestSelector[port - 1][0] == '\0') {
        return TR104_OK;
    }
    const TextCode *type = selectedType(port);
    if (type == nullptr) {
        TR104_DEBUG_AS(name, "get port[%d] test state's type[%s] error\n", port, gTestSelector[port - 1]);
        return TR104_ERR_EXCHANGE;
    }
    if (type->code == kSimulated) {
        return setSmultParam(port);
    }
    gTestProgess[port - 1] = 1;
    Tr104TestStateRecord rec{};
    rec.ucPort = static_cast<uint8_t>(port);
    rec.ucTestType = static_cast<uint8_t>(type->code);
    rec.ucProgress = gIsTestOnBusy[port - 1] == 1 ? TR104_TEST_BUSY_ALLOWED : TR104_TEST_BUSY_REFUSED;
    if (sendRecord(name, &rec, sizeof(rec), SET_PORT_TEST_STATE_ID) != TR104_OK) {
        say(name, "SET_PORT_TEST_STATE_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The state of a line test started by this library: asks the voice module how far it got.
int lineTestState(const char *name, int port, void *pValue) {
    Tr104TestStateRecord rec{};
    rec.ucPort = static_cast<uint8_t>(port);
    if (readRecord(name, &rec, sizeof(rec), GET_PORT_TEST_STATE_ID) != TR104_OK) {
        TR104_DEBUG_AS(name, "get port[%d] test state error \n", port);
        return TR104_ERR_EXCHANGE;
    }
    const char *state = "Error_TestNotSupported";
    if (rec.ucProgress == TR104_TEST_PROGRESS_TESTING) {
        state = "Testing";
    } else {
        if (rec.ucProgress == TR104_TEST_PROGRESS_FINISHED && rec.ucResult == 0) {
            state = "Complete";
        }
        gTestProgess[port - 1] = 0;
    }
    std::memset(gTestState[port - 1], 0, TR104_LINETEST_TEXT_LEN);
    std::strcpy(gTestState[port - 1], state);
    putText(pValue, state);
    TR104_DEBUG_AS(name, "get port[%d] test state[%s]\n", port, state);
    return TR104_OK;
}

int getState(const char *name, int port, void *pValue) {
    if (gTestSelector[port - 1][0] == '\0') {
        putText(pValue, "None");
        return TR104_OK;
    }
    const TextCode *type = selectedType(port);
    if (type == nullptr) {
        TR104_DEBUG_AS(name, "get port[%d] test state's type[%s] error\n", port, gTestSelector[port - 1]);
        return TR104_ERR_EXCHANGE;
    }
    if (type->code == kSimulated) {
        const char *status = smultStatusText(name, port);
        if (status == nullptr) {
            TR104_DEBUG_AS(name, "get port[%d] smult test state error\n", port);
            return TR104_ERR_EXCHANGE;
        }
        // Copied without the terminator, as the simulated-call texts are.
        putBare(pValue, std::strcmp(status, "Testend") == 0 ? "Complete"
                        : std::strcmp(status, "Idle") == 0  ? "None"
                                                            : "Requested");
        return TR104_OK;
    }
    switch (gTestProgess[port - 1]) {
    case 0: putText(pValue, gTestState[port - 1]); return TR104_OK;
    case 1: return lineTestState(name, port, pValue);
    default: return TR104_ERR_EXCHANGE;
    }
}

const TextCode kConclusions[] = {
    {"Normal", 0},
    {"ABLinePoorInsulation", '1'},
    {"PhoneDisconnect", '2'},
    {"BothLoopLineMixOther", '3'},
    {"BothLineGrouding", '4'},
    {"PowerLineContacted", '5'},
    {"BothLineLeakageToGround", '6'},
    {"PhoneOffhook", '7'},
    {"ShortCircuit", '8'},
};

// Waits of the end handlers: in the caller's thread, then 0.
int endWait(const char *name, int seconds, const char *message, int nFlag, void *pValue, int *nLocate) {
    const int rc = checkArguments({name, "pValue", Locate::Port, Access::GetOnly}, nFlag, pValue, nLocate);
    if (rc != TR104_OK) {
        return rc;
    }
    say(name, message);
    sleep(static_cast<unsigned int>(seconds));
    putInt(pValue, 0);
    return TR104_OK;
}

// Always 1; a set is accepted and ignored.
struct Fixed {
    const char *name;
    const char *getDone;
    const char *setDone;
};
int fixedOne(const Fixed &f, int nFlag, void *pValue, int *nLocate) {
    const int rc = checkArguments({f.name, "pValue", Locate::Port, Access::GetSet}, nFlag, pValue, nLocate);
    if (rc != TR104_OK) {
        return rc;
    }
    if (nFlag == 0) {
        putInt(pValue, 1);
        TR104_DEBUG_AS(f.name, f.getDone, portOf(nLocate), 1);
    } else {
        TR104_DEBUG_AS(f.name, f.setDone, portOf(nLocate));
    }
    return TR104_OK;
}

int selectAndRequest(const char *name, int port, const char *selector) {
    select(port, selector);
    return request(name, port);
}

}  // namespace
}  // namespace tr104::linetest

#include "tr104/catalogue/linetest_Measure.inc"
#include "tr104/catalogue/linetest_FlagWord.inc"

using namespace tr104::linetest;

extern "C" __attribute__((weak)) int Tr104PhysicalInterfaceTestIsDeviceBusySip(int, void *, int *);

TR104_API int Tr104PhysicalInterfaceTestSelector(int nFlag, void *pValue, int *nLocate) {
    const int port = checkedPort({__func__, "pTestSelector", Locate::Port, Access::GetSet}, nFlag, pValue, nLocate);
    if (port < 0) {
        return port;
    }
    if (nFlag == 0) {
        putText(pValue, gTestSelector[port - 1]);
        TR104_DEBUG("get pTestSelector[%s]\n", gTestSelector[port - 1]);
        return TR104_OK;
    }
    // Not checked here: an unknown selector is refused when the test is requested.  The entry
    // keeps its terminator (31 characters at most).
    select(port, static_cast<const char *>(pValue));
    TR104_DEBUG("set pTestSelector[%s], nLocate[1]=%d\n", gTestSelector[port - 1], port);
    return TR104_OK;
}

TR104_API int Tr104PhysicalInterfaceTestState(int nFlag, void *pValue, int *nLocate) {
    const int port = checkedPort({__func__, "pTestState", Locate::Port, Access::GetSet}, nFlag, pValue, nLocate);
    if (port < 0) {
        return port;
    }
    if (nFlag == 0) {
        return getState(__func__, port, pValue);
    }
    const char *text = static_cast<const char *>(pValue);
    if (std::strcmp(text, "Stop") == 0) {
        // A stop ends a simulated call; for a line test it starts the test again.
        int32_t &type = gSmultTestType[port - 1];
        type = type == TR104_SMULT_CALLED ? TR104_SMULT_CALLED_STOPPED : TR104_SMULT_CALLER_STOPPED;
    } else if (std::strcmp(text, "Requested") != 0) {
        say(__func__, "param error, test state must be Requested or Stop.\n");
        return TR104_ERR_PARAM;
    }
    return request(__func__, port);
}

// Whether the port is busy is the signalling stack's to say: under SIP the SIP handlers answer
// it; under H.248 the value is left as it is and 0 returned.
TR104_API int Tr104PhysicalInterfaceTestIsDeviceBusy(int nFlag, void *pValue, int *nLocate) {
    const int protocol = gTr104CurrProtocolType;
    if (protocol == TR104_PROTOCOL_SIP) {
        return Tr104PhysicalInterfaceTestIsDeviceBusySip != nullptr
                   ? Tr104PhysicalInterfaceTestIsDeviceBusySip(nFlag, pValue, nLocate)
                   : TR104_ERR_EXCHANGE;
    }
    return protocol == TR104_PROTOCOL_H248 ? TR104_OK : TR104_ERR_EXCHANGE;
}

TR104_API int Tr104PhysicalInterfaceAllTests(int nFlag, void *pValue, int *nLocate) {
    const int port = checkedPort({__func__, "pAllTests", Locate::Port, Access::SetOnly}, nFlag, pValue, nLocate);
    if (port < 0) {
        return port;
    }
    if (selectAndRequest(__func__, port, "Outer_Line_Test") != TR104_OK ||
        selectAndRequest(__func__, port, "Inner_Line_Test") != TR104_OK) {
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

TR104_API int Tr104PhysicalInterfaceTestHazardousPotential(int nFlag, void *pValue, int *nLocate) {
    const int port =
        checkedPort({__func__, "pHazardousPotential", Locate::Port, Access::GetSet}, nFlag, pValue, nLocate);
    if (port < 0) {
        return port;
    }
    if (nFlag == 1) {
        return selectAndRequest(__func__, port, "Outer_Line_Test") == TR104_OK ? TR104_OK : TR104_ERR_EXCHANGE;
    }
    const int dc = computeFlags(kTr104PhysicalInterfaceTestVDCFlags, port);
    const int ac = dc < 0 ? -1 : computeFlags(kTr104PhysicalInterfaceTestVACFlags, port);
    if (ac < 0) {
        putInt(pValue, 0);
        return TR104_ERR_EXCHANGE;
    }
    putInt(pValue, dc == 63 && ac == 63 ? 1 : 0);
    return TR104_OK;
}

TR104_API int Tr104PhysicalInterfaceTestEnd(int nFlag, void *pValue, int *nLocate) {
    return endWait(__func__, 30, "\n sleep 30 second\n", nFlag, pValue, nLocate);
}

TR104_API int Tr104PhysicalInterfaceAllTestsEnd(int nFlag, void *pValue, int *nLocate) {
    return endWait(__func__, 40, "\n sleep 40 second\n", nFlag, pValue, nLocate);
}

TR104_API int Tr104PhysicalInterfaceTestConclusion(int nFlag, void *pValue, int *nLocate) {
    const int port = checkedPort({__func__, "pTestConclusion", Locate::Port, Access::GetOnly}, nFlag, pValue, nLocate);
    if (port < 0) {
        return port;
    }
    Tr104OuterLineResult rec;
    if (readOuter(__func__, port, &rec) != TR104_OK) {
        TR104_DEBUG("get line[%d] TestConclusion failed.\n", port);
        return TR104_ERR_EXCHANGE;
    }
    // The zero byte is "Normal"; the digit characters name the faults, "0" among the others.
    const TextCode *c = findCode(kConclusions, rec.ucConclusion);
    const char *text = c != nullptr ? c->text : "Abnormal";
    putText(pValue, text);
    TR104_DEBUG("get line[%d] TestConclusion[%s] ok\n", port, text);
    return TR104_OK;
}

TR104_API int Tr104PhysicalInterfaceTestForeignEMF(int nFlag, void *pValue, int *nLocate) {
    return fixedOne({__func__, "get line[%d] *pForeignEMF[%d]\n", "set line[%d] ForeignEMF \n"}, nFlag, pValue,
                    nLocate);
}

TR104_API int Tr104PhysicalInterfaceTestDcSignature(int nFlag, void *pValue, int *nLocate) {
    return fixedOne({__func__, "get line[%d] *pDcSignature[%d]\n", "set line[%d] pDcSignature \n"}, nFlag, pValue,
                    nLocate);
}
