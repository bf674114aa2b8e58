// Phone ports, line tests and simulated calls against the emulated voice module.
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "emulator/linetest_emulator.h"
#include "sip/sip_fixture.h"
#include "tr104/h248.h"
#include "tr104/handlers.h"
#include "tr104/linetest.h"
#include "tr104/protocol.h"

namespace {

using namespace std::chrono_literals;
using siptest::debugOutput;
using siptest::printed;
using Handler = int (*)(int, void *, int *);
namespace lt = vmemu::linetest;

void resetLibrary() {
    for (int i = 0; i < TR104_LINETEST_PORTS; ++i) {
        std::strcpy(gTestSelector[i], "Outer_Line_Test");
        std::strcpy(gTestState[i], "None");
        gTestProgess[i] = gIsTestOnBusy[i] = gSmultTestType[i] = gSmultTimeout[i] = 0;
        gVACHazardousThreshold[i] = gVDCHazardousThreshold[i] = gABGResistanceThreshold[i] = 0;
        gABResistanceThreshold[i] = gRingerEquivalenceMin[i] = gRingerEquivalenceMax[i] = 0;
        gDialTonePowerThreshold[i] = 0;
        std::memset(gSmultCalledNum[i], 0, sizeof(gSmultCalledNum[i]));
    }
}

class LineTest : public siptest::SipTest {
protected:
    void SetUp() override {
        SipTest::SetUp();
        resetLibrary();
        lt::setTestDuration(emulator, 100ms);
        lt::setCallStep(emulator, 30ms);
    }

public:
    int *port(int n) {
        locate_ = {0, n, 0, 0};
        return locate_.data();
    }
    int get(Handler h, int p, void *v) { return h(0, v, port(p)); }
    int geti(Handler h, int p) {
        int v = -99;
        const int rc = get(h, p, &v);
        return rc == 0 ? v : -1000 + rc;
    }
    std::string gets(Handler h, int p) {
        char buf[64] = {};
        const int rc = get(h, p, buf);
        return rc == 0 ? std::string(buf) : "<" + std::to_string(rc) + ">";
    }
    int sets(Handler h, int p, const char *text) {
        std::vector<char> buf(text, text + std::strlen(text) + 1);
        return h(1, buf.data(), port(p));
    }
    int seti(Handler h, int p, int v) { return h(1, &v, port(p)); }
    // Polls a text handler until it reads `want` (the emulator's time moves on its own).
    bool reaches(Handler h, int p, const std::string &want) {
        for (auto end = std::chrono::steady_clock::now() + 5s; std::chrono::steady_clock::now() < end;) {
            if (gets(h, p) == want) {
                return true;
            }
            std::this_thread::sleep_for(10ms);
        }
        return false;
    }
    // Everything sent so far has been served; the log then starts afresh.
    std::vector<vmemu::Request> sent() {
        char status[TR104_PORT_STATUS_LEN];
        EXPECT_EQ(getLineStatus(1, status), 0);
        auto all = emulator.requests();
        all.pop_back();
        emulator.clearLog();
        return all;
    }
};

// ---- Bad input: -2, nothing sent, the lock free ------------------------------------------------

struct Refused {
    const char *what;
    std::function<int(LineTest &)> call;
    int rc = -2;
};

TEST_F(LineTest, RefusedInputSendsNothing) {
    const std::vector<Refused> rows = {
        {"port 3", [](LineTest &t) { return t.geti(Tr104PhysicalInterfaceID, 3) + 1000; }},
        {"port 0", [](LineTest &t) { return t.gets(Tr104PhysicalInterfacePort, 0) == "<-2>" ? -2 : 0; }},
        {"null value", [](LineTest &t) { return Tr104PhysicalInterfaceDialMode(0, nullptr, t.port(1)); }},
        {"flag 2",
         [](LineTest &t) {
             int v = 0;
             return Tr104PhysicalInterfaceTestSelector(2, &v, t.port(1));
         }},
        {"dial mode text", [](LineTest &t) { return t.sets(Tr104PhysicalInterfaceDialMode, 1, "dtmf"); }},
        {"Kc port 3", [](LineTest &t) { return t.sets(Tr104PhysicalInterfaceKcType, 3, "16Kc"); }},
        {"Kc text", [](LineTest &t) { return t.sets(Tr104PhysicalInterfaceKcType, 1, "16kc"); }},
        {"clip when",
         [](LineTest &) {
             char v[] = "afterring";
             return Tr104PhysicalInterfaceClipWhen(1, v);
         }},
        {"clip pole 2",
         [](LineTest &) {
             int v = 2;
             return Tr104PhysicalInterfaceClipReversePole(1, &v);
         }},
        {"reverse pole 2", [](LineTest &t) { return t.seti(Tr104PhysicalInterfaceReversePoleH248, 1, 2); }},
        {"MWI set",
         [](LineTest &) {
             int v = 0;
             return Tr104PhysicalInterfaceMWIRingFlag(1, &v);
         }},
        {"flash up 205",
         [](LineTest &) {
             int v = 205;
             return Tr104PhysicalInterfaceFlashUpTime(1, &v);
         }},
        {"flash up 190",
         [](LineTest &) {
             int v = 190;
             return Tr104PhysicalInterfaceFlashUpTime(1, &v);
         }},
        {"flash up 2510",
         [](LineTest &) {
             int v = 2510;
             return Tr104PhysicalInterfaceFlashUpTime(1, &v);
         }},
        {"flash down 0",
         [](LineTest &) {
             int v = 0;
             return Tr104PhysicalInterfaceFlashDownTime(1, &v);
         }},
        {"state lower case", [](LineTest &t) { return t.sets(Tr104PhysicalInterfaceTestState, 1, "requested"); }},
        {"unknown selector",
         [](LineTest &t) {
             t.sets(Tr104PhysicalInterfaceTestSelector, 1, "X_CT-COM_SimulateTest");
             return t.sets(Tr104PhysicalInterfaceTestState, 1, "Requested");
         },
         -1},
        {"unknown selector get",
         [](LineTest &t) {
             t.sets(Tr104PhysicalInterfaceTestSelector, 2, "Outer_line_test");
             return t.gets(Tr104PhysicalInterfaceTestState, 2) == "<-1>" ? -1 : 0;
         },
         -1},
        {"measurement set", [](LineTest &t) { return t.seti(Tr104PhysicalInterfaceTestAGACVoltage, 1, 1); }},
        {"all tests get", [](LineTest &t) { return t.geti(Tr104PhysicalInterfaceAllTests, 1) + 1000; }},
        {"test end set", [](LineTest &t) { return t.seti(Tr104PhysicalInterfaceTestEnd, 1, 0); }},
        {"smult type", [](LineTest &t) { return t.sets(Tr104SmultTestType, 1, "caller"); }},
        {"smult type port 3", [](LineTest &t) { return t.sets(Tr104SmultTestType, 3, "Caller"); }},
        {"confirm digit A", [](LineTest &t) { return t.sets(Tr104SmultDialConfirmNum, 1, "A"); }},
        {"confirm digit 12", [](LineTest &t) { return t.sets(Tr104SmultDialConfirmNum, 1, "12"); }},
        {"smult start port 3", [](LineTest &) { return setSmultParam(3); }},
        {"smult query null", [](LineTest &) { return getSmultParam(nullptr); }},
        {"smult query port 0",
         [](LineTest &) {
             Tr104SmultParam b{};
             return getSmultParam(&b);
         }},
        {"caller without number",
         [](LineTest &t) {
             t.sets(Tr104SmultTestType, 1, "Caller");
             t.sets(Tr104PhysicalInterfaceTestSelector, 1, "X_CMCC_SimulateTest");
             return t.sets(Tr104PhysicalInterfaceTestState, 1, "Requested");
         },
         -1},
    };
    for (const Refused &row : rows) {
        SCOPED_TRACE(row.what);
        resetLibrary();
        EXPECT_EQ(row.call(*this), row.rc);
        EXPECT_TRUE(sent().empty());
        EXPECT_EQ(tr104test::semValue(), 1);
    }
}

TEST_F(LineTest, MessagesOfThePortChecks) {
    int v = 0;
    int at[4] = {0, 5, 7, 0};
    EXPECT_TRUE(printed(debugOutput([&] { Tr104PhysicalInterfacePort(0, &v, at); }), "Tr104PhysicalInterfacePort",
                        "param error, nLocate[2]=7\n"));
    EXPECT_TRUE(printed(debugOutput([&] { Tr104PhysicalInterfaceKcType(0, &v, at); }), "Tr104PhysicalInterfaceKcType",
                        "param error, port is invaild\n"));
    v = 205;
    EXPECT_TRUE(debugOutput([&] {
                    Tr104PhysicalInterfaceFlashUpTime(1, &v);
                }).find("flash up time must be in multiples of 10\r\n") != std::string::npos);
}

// Debug lines printed word for word: each row's call prints `line` as a whole line of its own
// handler (the debug prefix before it, a line end or the next prefix after it) and never the
// form in `never`.
struct QuotedLine {
    const char *handler;
    std::function<int(LineTest &)> call;
    const char *line;
    const char *never;
};

TEST_F(LineTest, DebugLinesQuoteTheSystemTexts) {
    lt::setMeasurement(emulator, 1, "aGroundDCVoltage", "-48");
    lt::setMeasurement(emulator, 1, "bGroundDCVoltage", "7");
    const QuotedLine rows[] = {
        {"Tr104DeviceNameH248",
         [](LineTest &) {
             char t[] = "dev1";
             return Tr104DeviceNameH248(1, t);
         },
         "nFlag[1], pDeviceName[dev1]\n", "pMgId[dev1]"},
        {"Tr104DeviceNameH248",
         [](LineTest &) {
             char t[80] = {};
             return Tr104DeviceNameH248(0, t);
         },
         "nFlag[0], pDeviceName[dev1]\n", "pMgId["},
        {"Tr104DeviceNameH248", [](LineTest &) { return Tr104DeviceNameH248(1, nullptr) == -2 ? 0 : -1; },
         "param error, pMgId is null\n", "pDeviceName is null"},
        {"Tr104PhysicalTermIdH248",
         [](LineTest &) {
             char id[] = "T1";
             int at[4] = {0, 1, 1, 0};
             return Tr104PhysicalTermIdH248(1, id, at);
         },
         "nFlag[1], pTermId[T1], nLocate[2][1]\n", "pTermId[T1]\n"},
        {"Tr104PhysicalTermIdH248",
         [](LineTest &) {
             char id[40] = {};
             int at[4] = {0, 1, 1, 0};
             return Tr104PhysicalTermIdH248(0, id, at);
         },
         "nFlag[0], pTermId[T1], nLocate[2][1]\n", "pTermId[T1]\n"},
        // The entry line has no line end of its own: the next debug line follows it.
        {"Tr104PhysicalInterfaceClipReversePole",
         [](LineTest &) {
             int v = 1;
             return Tr104PhysicalInterfaceClipReversePole(1, &v);
         },
         "nFlag[1], *pClipReversePole[1]", "nFlag[1], *pClipReversePole[1]\n\n"},
        {"Tr104PhysicalInterfaceClipReversePole",
         [](LineTest &) {
             int v = 0;
             return Tr104PhysicalInterfaceClipReversePole(0, &v);
         },
         "get *pClipReversePole[1]\n", nullptr},
        {"Tr104PhysicalInterfaceClipReversePole",
         [](LineTest &) {
             int v = 0;
             return Tr104PhysicalInterfaceClipReversePole(1, &v);
         },
         "set *pClipReversePole[0]\n", nullptr},
        {"Tr104PhysicalInterfaceTestAGDCVoltage",
         [](LineTest &t) { return t.geti(Tr104PhysicalInterfaceTestAGDCVoltage, 1) == -48 ? 0 : -1; },
         "get OutLineTestInfo.aGroudDCVoltage [-48].\n", "aGroundDCVoltage"},
        {"Tr104PhysicalInterfaceTestBGDCVoltage",
         [](LineTest &t) { return t.geti(Tr104PhysicalInterfaceTestBGDCVoltage, 1) == 7 ? 0 : -1; },
         "get OutLineTestInfo.bGroudDCVoltage [7].\n", "bGroundDCVoltage"},
    };
    for (const QuotedLine &row : rows) {
        SCOPED_TRACE(row.line);
        int rc = -9;
        const std::string out = debugOutput([&] { rc = row.call(*this); });
        EXPECT_EQ(rc, 0);
        const std::string prefix = std::string("[") + row.handler + ",";
        size_t at = out.find(std::string("] ") + row.line);
        ASSERT_NE(at, std::string::npos) << out;
        EXPECT_NE(out.rfind(prefix, at), std::string::npos) << out;
        at += 2 + std::strlen(row.line);
        const bool whole = row.line[std::strlen(row.line) - 1] == '\n' || at == out.size() || out[at] == '\n';
        EXPECT_TRUE(whole) << out;
        if (row.never != nullptr) {
            EXPECT_EQ(out.find(row.never), std::string::npos) << out;
        }
    }
}

// ---- Physical interface ------------------------------------------------------------------------

TEST_F(LineTest, PortValuesAndRequests) {
    EXPECT_EQ(gets(Tr104PhysicalInterfacePort, 2), "PORT2");
    EXPECT_EQ(geti(Tr104PhysicalInterfaceID, 2), 2);
    float f = -1;
    EXPECT_EQ(get(Tr104PhysicalInterfaceTestDialToneBreakTime, 2, &f), 0);
    EXPECT_EQ(f, 0.0f);
    EXPECT_TRUE(sent().empty());  // the break time asks nothing

    // Kc type: port 0 goes to the voice module as it is.
    EXPECT_EQ(sets(Tr104PhysicalInterfaceKcType, 0, "12Kc"), 0);
    EXPECT_EQ(sets(Tr104PhysicalInterfaceDialMode, 2, "Pulse"), 0);
    for (int up : {200, 2500}) {
        EXPECT_EQ(Tr104PhysicalInterfaceFlashUpTime(1, &up), 0);
    }
    int down = 10;
    EXPECT_EQ(Tr104PhysicalInterfaceFlashDownTime(1, &down), 0);
    const auto r = sent();
    ASSERT_EQ(r.size(), 5u);
    EXPECT_EQ(r[0].cmd, SET_KC_TYPE_ID);
    EXPECT_EQ(r[0].word<uint32_t>(0), 0u);
    EXPECT_EQ(r[0].word<uint32_t>(28), 1u);
    EXPECT_EQ(r[1].cmd, SET_PORT_DIAL_MODE_ID);
    EXPECT_TRUE(siptest::zeroExcept(r[1], {{0, 1}, {138, 1}}));
    EXPECT_EQ(r[1].payload[138], 2);
    EXPECT_EQ(r[3].word<uint32_t>(0), TR104_FLASH_UP);
    EXPECT_EQ(r[3].word<uint32_t>(8), 2500u);
    EXPECT_TRUE(siptest::zeroExcept(r[4], {{0, 4}, {4, 4}}));
    EXPECT_EQ(r[4].word<uint32_t>(4), 10u);

    EXPECT_EQ(gets(Tr104PhysicalInterfaceDialMode, 2), "Pulse");
    EXPECT_EQ(gets(Tr104PhysicalInterfaceDialModeH248, 1), "DTMF");
    EXPECT_EQ(gets(Tr104PhysicalInterfaceKcType, 0), "12Kc");
    EXPECT_EQ(gets(Tr104PhysicalInterfaceKcType, 1), "16Kc");
    int value = 0;
    EXPECT_EQ(Tr104PhysicalInterfaceFlashUpTime(0, &value), 0);
    EXPECT_EQ(value, 2500);
    EXPECT_EQ(Tr104PhysicalInterfaceFlashDownTime(0, &value), 0);
    EXPECT_EQ(value, 10);
}

TEST_F(LineTest, DrawTimeAndReversePoleFollowTheProtocol) {
    float seconds = -1;
    gTr104CurrProtocolType = TR104_PROTOCOL_H248;
    EXPECT_EQ(Tr104PhysicalInterfaceTestDialToneDrawTime(0, &seconds, port(1)), 0);
    EXPECT_EQ(seconds, 3.0f);  // 3500 ms in whole seconds
    EXPECT_EQ(Tr104PhysicalInterfaceTestDialToneDrawTime(1, &seconds, port(1)), -2);
    int pole = -1;
    EXPECT_EQ(Tr104PhysicalInterfaceReversePole(0, &pole, port(2)), 0);
    EXPECT_EQ(pole, 1);
    pole = 0;
    EXPECT_EQ(Tr104PhysicalInterfaceReversePole(1, &pole, port(2)), 0);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceReversePoleH248, 2), 0);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceReversePoleH248, 1), 1);
    int busy = 5;
    EXPECT_EQ(Tr104PhysicalInterfaceTestIsDeviceBusy(0, &busy, port(1)), 0);
    EXPECT_EQ(busy, 5);  // H.248: nothing written
    gTr104CurrProtocolType = TR104_PROTOCOL_NONE;
    EXPECT_EQ(Tr104PhysicalInterfaceTestIsDeviceBusy(0, &busy, port(1)), -1);
    EXPECT_EQ(Tr104PhysicalInterfaceTestDialToneDrawTime(0, &seconds, port(1)), -1);
    EXPECT_EQ(Tr104PhysicalInterfaceReversePole(0, &pole, port(1)), -1);
}

// ---- Line tests --------------------------------------------------------------------------------

TEST_F(LineTest, OuterLineTestEndToEnd) {
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestState, 2), "None");
    EXPECT_EQ(sets(Tr104PhysicalInterfaceTestState, 2, "Requested"), 0);
    const auto r = sent();
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r[0].cmd, SET_PORT_TEST_STATE_ID);
    EXPECT_TRUE(siptest::zeroExcept(r[0], {{2, 3}}));
    EXPECT_EQ(r[0].payload[2], 2);
    EXPECT_EQ(static_cast<uint8_t>(r[0].payload[3]), TR104_TEST_TYPE_OUTER);
    EXPECT_EQ(r[0].payload[4], 2);  // not while busy
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestState, 2), "Testing");
    EXPECT_TRUE(reaches(Tr104PhysicalInterfaceTestState, 2, "Complete"));
    emulator.clearLog();
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestState, 2), "Complete");  // stored, nothing asked
    EXPECT_TRUE(sent().empty());

    lt::setMeasurement(emulator, 2, "aGroundACVoltage", "-30");
    lt::setMeasurement(emulator, 2, "abCapacitance", "0123456789012345");  // fills its 16 bytes
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestAGACVoltage, 2), -30);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestABInsulationResistance, 2), 15000);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestRingerEquivalence, 2), 2);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestABCapacitance, 2), 2147483647);  // saturated
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestAGACVoltage2, 2), "-30");
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestBGDCVoltage2, 2), "-2");
    const auto q = sent();
    ASSERT_FALSE(q.empty());
    EXPECT_EQ(q[0].cmd, GET_OUTER_LINE_TEST_ID);
    EXPECT_TRUE(siptest::zeroExcept(q[0], {{2, 1}}));

    // "Stop" starts a line test again; busy mode 1 when allowed.
    EXPECT_EQ(seti(Tr104PhysicalInterfaceIsTestOnBusy, 2, 1), 0);
    EXPECT_EQ(sets(Tr104PhysicalInterfaceTestState, 2, "Stop"), 0);
    const auto again = sent();
    ASSERT_EQ(again.size(), 1u);
    EXPECT_EQ(again[0].payload[4], 1);
    EXPECT_EQ(gSmultTestType[1], TR104_SMULT_CALLER_STOPPED);
    EXPECT_EQ(lt::testsStarted(emulator, 2), 2);
}

TEST_F(LineTest, StateEdges) {
    // Empty selector: "None" with no exchange, and a request does nothing.
    EXPECT_EQ(sets(Tr104PhysicalInterfaceTestSelector, 1, ""), 0);
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestState, 1), "None");
    EXPECT_EQ(sets(Tr104PhysicalInterfaceTestState, 1, "Requested"), 0);
    EXPECT_TRUE(sent().empty());

    // Finished but not supported: the progress ends.
    lt::setNotSupported(emulator, 1, true);
    EXPECT_EQ(sets(Tr104PhysicalInterfaceTestSelector, 1, "Inner_Line_Test"), 0);
    EXPECT_EQ(sets(Tr104PhysicalInterfaceTestState, 1, "Requested"), 0);
    EXPECT_EQ(sent().size(), 1u);
    EXPECT_EQ(lt::lastTestType(emulator, 1), TR104_TEST_TYPE_INNER);
    EXPECT_TRUE(reaches(Tr104PhysicalInterfaceTestState, 1, "Error_TestNotSupported"));
    EXPECT_EQ(gTestProgess[0], 0);
    gTestProgess[0] = 2;
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestState, 1), "<-1>");

    // A failed query keeps the progress.
    gTestProgess[0] = 1;
    emulator.setFault(GET_PORT_TEST_STATE_ID, {vmemu::Fault::FailureMarker, 0, 1});
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestState, 1), "<-1>");
    EXPECT_EQ(gTestProgess[0], 1);
    EXPECT_EQ(tr104test::semValue(), 1);

    // Both tests, one after the other.
    lt::setNotSupported(emulator, 1, false);
    sent();
    int ignored = 0;
    EXPECT_EQ(Tr104PhysicalInterfaceAllTests(1, &ignored, port(1)), 0);
    const auto r = sent();
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(static_cast<uint8_t>(r[0].payload[3]), TR104_TEST_TYPE_OUTER);
    EXPECT_EQ(static_cast<uint8_t>(r[1].payload[3]), TR104_TEST_TYPE_INNER);
    EXPECT_STREQ(gTestSelector[0], "Inner_Line_Test");
}

TEST_F(LineTest, ConclusionTexts) {
    const std::pair<uint8_t, const char *> rows[] = {
        {0, "Normal"},
        {'0', "Abnormal"},
        {'1', "ABLinePoorInsulation"},
        {'4', "BothLineGrouding"},
        {'7', "PhoneOffhook"},
        {'8', "ShortCircuit"},
        {'9', "Abnormal"},
        {1, "Abnormal"},
    };
    for (const auto &[code, text] : rows) {
        lt::setConclusion(emulator, 1, code);
        EXPECT_EQ(gets(Tr104PhysicalInterfaceTestConclusion, 1), text) << int(code);
    }
    emulator.setFault(GET_OUTER_LINE_TEST_ID, {vmemu::Fault::Silent, 0, 1});
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestConclusion, 1), "<-1>");
}

struct FlagRow {
    Handler handler;
    int32_t *threshold;
    int32_t value;
    const char *fieldA;
    const char *a;
    const char *fieldB;
    const char *b;
    int want;
};

TEST_F(LineTest, FlagWords) {
    constexpr Handler ac = Tr104PhysicalInterfaceTestVACFlags;
    constexpr Handler abg = Tr104PhysicalInterfaceTestABGResistanceFlags;
    constexpr Handler ren = Tr104PhysicalInterfaceTestRingerLoadFlags;
    constexpr Handler ab = Tr104PhysicalInterfaceTestABResistanceFlags;
    constexpr Handler tone = Tr104PhysicalInterfaceTestDialTonePowerFlags;
    const FlagRow rows[] = {
        {ac, gVACHazardousThreshold, 0, "aGroundACVoltage", "500", "bGroundACVoltage", "500", 63},
        {ac, gVACHazardousThreshold, 10, "aGroundACVoltage", "5", "bGroundACVoltage", "10", 63},
        {ac, gVACHazardousThreshold, 10, "aGroundACVoltage", "-11", "bGroundACVoltage", "5", 31},
        {ac, gVACHazardousThreshold, 10, "aGroundACVoltage", "5", "bGroundACVoltage", "11", 59},
        {ac, gVACHazardousThreshold, -10, "aGroundACVoltage", "11", "bGroundACVoltage", "11", 27},
        {ac, gVACHazardousThreshold, 10, "aGroundACVoltage", "0", "bGroundACVoltage", "-500", 63},
        {ac, gVACHazardousThreshold, INT32_MIN, "aGroundACVoltage", "0", "bGroundACVoltage", "0", 27},
        {Tr104PhysicalInterfaceTestVDCFlags, gVDCHazardousThreshold, 40, "aGroundDCVoltage", "-48", "bGroundDCVoltage",
         "-48", 31},
        {abg, gABGResistanceThreshold, 100, "aGroundInsulationResistance", "-1", "bGroundInsulationResistance", "50",
         31},
        {abg, gABGResistanceThreshold, -1, "aGroundInsulationResistance", "5", "bGroundInsulationResistance", "5", 63},
        {ren, gRingerEquivalenceMin, 1, "ringerEquivalentNumber", "1", nullptr, nullptr, 7},
        {ren, gRingerEquivalenceMin, 1, "ringerEquivalentNumber", "5", nullptr, nullptr, 7},
        {ren, gRingerEquivalenceMin, 1, "ringerEquivalentNumber", "6", nullptr, nullptr, 3},
        {ren, gRingerEquivalenceMin, 1, "ringerEquivalentNumber", "0", nullptr, nullptr, 3},
        {ren, gRingerEquivalenceMin, 1, "ringerEquivalentNumber", "-1", nullptr, nullptr, 3},  // max 5, unsigned
        {ab, gABResistanceThreshold, 0, "abInsulationResistance", "10", nullptr, nullptr, 56},
        {ab, gABResistanceThreshold, 100, "abInsulationResistance", "200", nullptr, nullptr, 24},
        {ab, gABResistanceThreshold, 100, "abInsulationResistance", "100", nullptr, nullptr, 56},
        {tone, gDialTonePowerThreshold, -20, "signalToneVolume", "-12.5", nullptr, nullptr, 59},
        {tone, gDialTonePowerThreshold, -12, "signalToneVolume", "-12.5", nullptr, nullptr, 63},
    };
    gRingerEquivalenceMax[0] = 5;
    for (const FlagRow &row : rows) {
        row.threshold[0] = row.value;
        lt::setMeasurement(emulator, 1, row.fieldA, row.a);
        if (row.fieldB != nullptr) {
            lt::setMeasurement(emulator, 1, row.fieldB, row.b);
        }
        EXPECT_EQ(geti(row.handler, 1), row.want) << row.fieldA << " " << row.a << " threshold " << row.value;
        row.threshold[0] = 0;
    }
    // No upper bound when the maximum is 0.
    gRingerEquivalenceMin[0] = 1;
    gRingerEquivalenceMax[0] = 0;
    lt::setMeasurement(emulator, 1, "ringerEquivalentNumber", "100");
    EXPECT_EQ(geti(ren, 1), 7);
    // Hazardous potential: both words 63.
    lt::setMeasurement(emulator, 2, "aGroundACVoltage", "60");
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestHazardousPotential, 2), 1);
    gVACHazardousThreshold[1] = 50;
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestHazardousPotential, 2), 0);
    emulator.setFault(GET_OUTER_LINE_TEST_ID, {vmemu::Fault::FailureMarker, 0, 1});
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestVACFlags, 2), -1001);
}

TEST_F(LineTest, ThresholdsAndInnerResults) {
    EXPECT_EQ(seti(Tr104PhysicalInterfaceTestDBDT3, 2, -7), 0);
    EXPECT_EQ(seti(Tr104PhysicalInterfaceDialToneFrequency2, 1, 425), 0);
    EXPECT_EQ(gDBDT3[1], -7);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestDBDT3, 2), -7);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceDialToneFrequency2, 1), 425);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceDialToneFrequency2, 2), 0);

    lt::setStateBytes(emulator, 1, 1, 0);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestSignalToneState, 1), 0);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestFeederVoltageState, 1), 1);
    lt::setStateBytes(emulator, 1, 0, 4);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestLoopCurrentState, 1), 0);  // the feeder byte
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestSignalToneState, 1), 1);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestLoopCurrent, 1), 25);
    float f = 0;
    EXPECT_EQ(get(Tr104PhysicalInterfaceTestSignalToneVolume, 1, &f), 0);
    EXPECT_FLOAT_EQ(f, -12.5f);
    EXPECT_EQ(get(Tr104PhysicalInterfaceTestQuietChannelPower, 1, &f), 0);
    EXPECT_FLOAT_EQ(f, -70.0f);
    const auto r = sent();
    ASSERT_FALSE(r.empty());
    EXPECT_EQ(r.back().cmd, GET_INNER_LINE_TEST_ID);
    EXPECT_EQ(geti(Tr104PhysicalInterfaceTestForeignEMF, 2), 1);
    EXPECT_EQ(seti(Tr104PhysicalInterfaceTestDcSignature, 2, 0), 0);
    EXPECT_TRUE(sent().empty());
}

// ---- Simulated calls ---------------------------------------------------------------------------

TEST_F(LineTest, CallerTestWalksToItsEnd) {
    EXPECT_EQ(sets(Tr104SmultTestType, 1, "Caller"), 0);
    const std::string longNumber(40, '7');
    EXPECT_EQ(sets(Tr104SmultCalledNum, 1, longNumber.c_str()), 0);
    EXPECT_EQ(sets(Tr104PhysicalInterfaceTestSelector, 1, "X_ CT-COM _SimulateTest"), 0);
    EXPECT_EQ(sets(Tr104PhysicalInterfaceTestState, 1, "Requested"), 0);
    auto r = sent();
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r[0].cmd, SET_SMULT_TEST_ID);
    EXPECT_EQ(r[0].word<uint32_t>(0), 2u);
    EXPECT_EQ(r[0].word<uint32_t>(8), 1u);
    EXPECT_EQ(r[0].word<uint32_t>(12), 60u);  // 0 means a minute
    EXPECT_EQ(std::string(r[0].payload.data() + 16, 33), std::string(32, '7') + '\0');
    EXPECT_TRUE(siptest::zeroExcept(r[0], {{0, 4}, {8, 8}, {16, 32}}));
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestState, 1), "Requested");
    EXPECT_TRUE(reaches(Tr104SmultStatus, 1, "Testend"));
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestState, 1), "Complete");
    EXPECT_EQ(gets(Tr104SmultConclusion, 1), "Success");
    char reason[40];
    std::memset(reason, 'x', sizeof(reason));
    EXPECT_EQ(get(Tr104SmultCallerFailReason, 1, reason), 0);
    EXPECT_EQ(reason[0], 'x');  // code 0: untouched

    // A failing end: code 2 reads as the first entry; the timeout goes as it is.
    lt::setCallEnd(emulator, 2, 2);
    EXPECT_EQ(sets(Tr104SmultTestType, 2, "Caller"), 0);
    EXPECT_EQ(sets(Tr104SmultCalledNum, 2, "100"), 0);
    EXPECT_EQ(seti(Tr104SmultTimeout, 2, 5), 0);
    sent();
    EXPECT_EQ(setSmultParam(2), 0);
    EXPECT_EQ(sent()[0].word<uint32_t>(12), 5u);
    EXPECT_TRUE(reaches(Tr104SmultStatus, 2, "Testend"));
    EXPECT_EQ(gets(Tr104SmultConclusion, 2), "Fail");
    EXPECT_EQ(gets(Tr104SmultCallerFailReason, 2), "NoDailTone");
    // The response code takes the test type of port 1 (a caller test here too).
    EXPECT_EQ(geti(Tr104SmultFailedRspCode, 2), 2);
    gSmultTestType[0] = TR104_SMULT_NONE;
    int untouched = 77;
    EXPECT_EQ(get(Tr104SmultFailedRspCode, 2, &untouched), 0);
    EXPECT_EQ(untouched, 77);

    emulator.setFault(GET_SMULT_TEST_ID, {vmemu::Fault::WrongCmd, 0, 1});
    EXPECT_EQ(gets(Tr104SmultConclusion, 2), "<-1>");
}

TEST_F(LineTest, CalledTestTypesAndDialConfirm) {
    EXPECT_EQ(sets(Tr104SmultTestType, 1, "Called"), 0);
    EXPECT_EQ(gets(Tr104SmultTestType, 1), "Called");
    EXPECT_EQ(gets(Tr104SmultStatus, 1), "Idle");
    EXPECT_EQ(gets(Tr104PhysicalInterfaceTestSelector, 1), "Outer_Line_Test");
    EXPECT_EQ(setSmultParam(1), 0);
    EXPECT_EQ(gets(Tr104SmultStatus, 1), "Ringing-back");
    const auto q = sent();
    EXPECT_EQ(q.back().cmd, GET_SMULT_TEST_ID);
    EXPECT_EQ(q.back().word<uint32_t>(0), TR104_SMULT_QUERY_CALLED);
    EXPECT_TRUE(reaches(Tr104SmultStatus, 1, "Testend"));
    EXPECT_EQ(sets(Tr104SmultTestType, 1, "None"), 0);
    EXPECT_EQ(gSmultTestType[0], TR104_SMULT_CALLED_STOPPED);
    EXPECT_EQ(gets(Tr104SmultTestType, 1), "None");
    EXPECT_EQ(sets(Tr104SmultTestType, 2, "Caller"), 0);
    EXPECT_EQ(sets(Tr104SmultTestType, 2, "None"), 0);
    EXPECT_EQ(gSmultTestType[1], TR104_SMULT_CALLER_STOPPED);
    EXPECT_EQ(gets(Tr104SmultStatus, 2), "Testend");  // no test running

    sent();
    EXPECT_EQ(seti(Tr104SmultDialConfirmEnable, 2, 1), 0);
    EXPECT_EQ(sets(Tr104SmultDialConfirmNum, 2, "*"), 0);
    const auto r = sent();
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(r[1].word<uint32_t>(0), TR104_DIAL_CONFIRM_DIGIT);
    EXPECT_EQ(r[1].word<uint32_t>(4), 2u);
    EXPECT_EQ(r[1].payload[12], '*');
    EXPECT_EQ(geti(Tr104SmultDialConfirmEnable, 2), 1);
    EXPECT_EQ(geti(Tr104SmultDialConfirmEnable, 1), 0);
    EXPECT_EQ(gets(Tr104SmultDialConfirmNum, 2), "*");
    EXPECT_EQ(gets(Tr104SmultDialConfirmResult, 2), "Success");
    lt::setDialConfirmResult(emulator, 2, 0);
    EXPECT_EQ(gets(Tr104SmultDialConfirmResult, 2), "Fail");
}

// ---- The end waits: the caller's thread sleeps (each its own test, run beside the others) ------

void expectWait(Handler h, int seconds) {
    int value = -1;
    int at[4] = {0, 1, 0, 0};
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(h(0, &value, at), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(seconds));
    EXPECT_EQ(value, 0);
}

TEST(LineTestEnd, TestEndWaitsThirtySeconds) { expectWait(Tr104PhysicalInterfaceTestEnd, 30); }
TEST(LineTestEnd, AllTestsEndWaitsFortySeconds) { expectWait(Tr104PhysicalInterfaceAllTestsEnd, 40); }

}  // namespace
