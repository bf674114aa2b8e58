// Line record values, port status conversions, line features, the statistics reset, the
// read-only profile values, and the argument checks of every SIP handler.
#include "sip_fixture.h"

namespace {

using siptest::debugOutput;
using siptest::Handler;
using siptest::printed;
using siptest::SipTest;

enum class Lines { Checked, ZeroMeansAll, Unchecked, Ignored };
enum class Dir { GetSet, GetOnly, SetOnly };

struct Member {
    const char *name;
    Handler handler;
    const char *valueName;
    Lines lines;
    Dir dir;
};

int lineGainTransmit(int nFlag, void *pValue, int *nLocate) { return Tr104LineGainSip(nFlag, 0, pValue, nLocate); }

const Member kMembers[] = {
    {"Tr104LineEnableSip", Tr104LineEnableSip, "pLineEnable", Lines::Checked, Dir::GetSet},
    {"Tr104LineRegisterSip", Tr104LineRegisterSip, "pLineRegister", Lines::Checked, Dir::SetOnly},
    {"Tr104LineDisplayNameSip", Tr104LineDisplayNameSip, "pLineDisplayName", Lines::Checked, Dir::GetSet},
    {"Tr104LineHotlineNumSip", Tr104LineHotlineNumSip, "pLineHotlineNum", Lines::Checked, Dir::GetSet},
    {"Tr104LineHotlineDelaySip", Tr104LineHotlineDelaySip, "pLineHotlineDelay", Lines::Checked, Dir::GetSet},
    {"Tr104LineJitterBufferModeSip", Tr104LineJitterBufferModeSip, "pLineJitterBufferMode", Lines::Checked,
     Dir::GetSet},
    {"Tr104LineMaxJitterBufferValueSip", Tr104LineMaxJitterBufferValueSip, "pLineMaxJitterBufferValue", Lines::Checked,
     Dir::GetSet},
    {"Tr104LineMinJitterBufferValueSip", Tr104LineMinJitterBufferValueSip, "pLineMinJitterBufferValue", Lines::Checked,
     Dir::GetSet},
    {"Tr104LineRegStatusSip", Tr104LineRegStatusSip, "pLineRegStatus", Lines::Checked, Dir::GetOnly},
    {"Tr104LineServerStatusSip", Tr104LineServerStatusSip, "pLineServerStatus", Lines::Checked, Dir::GetOnly},
    {"Tr104PortStatusSip", Tr104PortStatusSip, "pPortStatus", Lines::Checked, Dir::GetOnly},
    {"Tr104LineHookStatusSip", Tr104LineHookStatusSip, "pLineHookStatus", Lines::Checked, Dir::GetOnly},
    {"Tr104LineCallStatusSip", Tr104LineCallStatusSip, "pLineCallStatus", Lines::Checked, Dir::GetOnly},
    {"Tr104LineSessionTypeSip", Tr104LineSessionTypeSip, "pLineSessionType", Lines::Checked, Dir::GetOnly},
    {"Tr104LineTransmitGainSip", Tr104LineTransmitGainSip, "pLineTransmitGain", Lines::Checked, Dir::GetSet},
    {"Tr104LineReceiveGainSip", Tr104LineReceiveGainSip, "pLineReceiveGain", Lines::Checked, Dir::GetSet},
    {"Tr104LineEchoCancelFlagSip", Tr104LineEchoCancelFlagSip, "pLineEchoCancelFlag", Lines::Checked, Dir::GetSet},
    {"Tr104LineComfortNoiseFlagSip", Tr104LineComfortNoiseFlagSip, "pLineComfortNoiseFlag", Lines::Checked,
     Dir::GetSet},
    {"Tr104LineJitterBufferTargetSip", Tr104LineJitterBufferTargetSip, "pLineJitterBufferTarget", Lines::Checked,
     Dir::GetSet},
    {"Tr104ProfileDTMFMethodSip", Tr104ProfileDTMFMethodSip, "pProfileDTMFMethod", Lines::ZeroMeansAll, Dir::GetSet},
    {"Tr104LineGainSip", lineGainTransmit, "pGain", Lines::Checked, Dir::GetSet},
    {"Tr104LineCallWaitingFlagSip", Tr104LineCallWaitingFlagSip, "pLineCallWaitingFlag", Lines::Checked, Dir::GetSet},
    {"Tr104LineCall3wayFlagSip", Tr104LineCall3wayFlagSip, "pLineCall3wayFlag", Lines::Checked, Dir::GetSet},
    {"Tr104LineMaxSessionsSip", Tr104LineMaxSessionsSip, "pLineMaxSessions", Lines::Unchecked, Dir::GetSet},
    {"Tr104LineCallerIdFlagSip", Tr104LineCallerIdFlagSip, "pLineCallerIdFlag", Lines::Checked, Dir::GetSet},
    {"Tr104CallerIdModeSip", Tr104CallerIdModeSip, "pCallerIdMode", Lines::Checked, Dir::GetSet},
    {"Tr104CallerIdFormatSip", Tr104CallerIdFormatSip, "pCallerIdFormat", Lines::Ignored, Dir::GetSet},
    {"Tr104StartDigitTimerSip", Tr104StartDigitTimerSip, "pStartDigitTimer", Lines::Ignored, Dir::GetSet},
    {"Tr104DialToneTimerSip", Tr104DialToneTimerSip, "pDialToneTimer", Lines::Ignored, Dir::GetSet},
    {"Tr104NoAnswerTimerSip", Tr104NoAnswerTimerSip, "pNoAnswerTimer", Lines::Ignored, Dir::GetSet},
    {"Tr104BusyToneTimerSip", Tr104BusyToneTimerSip, "pBusyToneTimer", Lines::Ignored, Dir::GetSet},
    {"Tr104HangingReminderToneTimerSip", Tr104HangingReminderToneTimerSip, "pHangingReminderToneTimer", Lines::Ignored,
     Dir::GetSet},
    {"Tr104CallWaitingRejectTimerSip", Tr104CallWaitingRejectTimerSip, "pCallWaitingRejectTimer", Lines::Ignored,
     Dir::GetSet},
    {"Tr104ShortDigitTimerSip", Tr104ShortDigitTimerSip, "pShortDigitTimer", Lines::Ignored, Dir::GetSet},
    {"Tr104LongDigitTimerSip", Tr104LongDigitTimerSip, "pLongDigitTimer", Lines::Ignored, Dir::GetSet},
    {"Tr104ProfileDigitMapEnableSip", Tr104ProfileDigitMapEnableSip, "pDigitMapEnable", Lines::Ignored, Dir::GetSet},
    {"Tr104ProfileDigitMapMatchModeSip", Tr104ProfileDigitMapMatchModeSip, "pDigitMapMatchMode", Lines::Ignored,
     Dir::GetSet},
    {"Tr104ProfileDigitMapStringSip", Tr104ProfileDigitMapStringSip, "pDigitMapString", Lines::Ignored, Dir::GetSet},
    {"Tr104LineResetStatisticsFlagSip", Tr104LineResetStatisticsFlagSip, "pLineResetStatisticsFlag", Lines::Checked,
     Dir::GetSet},
    {"Tr104MaxSessionsPerLineSip", Tr104MaxSessionsPerLineSip, "pMaxSessionsPerLine", Lines::Ignored, Dir::GetOnly},
    {"Tr104MaxSessionsAllLinesSip", Tr104MaxSessionsAllLinesSip, "pMaxSessionsAllLines", Lines::Ignored, Dir::GetOnly},
    {"Tr104RTCPFlagSip", Tr104RTCPFlagSip, "pRTCPFlag", Lines::Ignored, Dir::GetOnly},
    {"Tr104RTPRedundancyFlagSip", Tr104RTPRedundancyFlagSip, "pRTPRedundancyFlag", Lines::Ignored, Dir::GetOnly},
    {"Tr104VlanTagCoupledFlagSip", Tr104VlanTagCoupledFlagSip, "pVlanTagCoupledFlag", Lines::Ignored, Dir::GetOnly},
    {"Tr104FaxT38FlagSip", Tr104FaxT38FlagSip, "pFaxT38Flag", Lines::Ignored, Dir::GetOnly},
    {"Tr104FaxPassThroughFlagSip", Tr104FaxPassThroughFlagSip, "pFaxPassThroughFlag", Lines::Ignored, Dir::GetOnly},
    {"Tr104ModemPassThroughFlagSip", Tr104ModemPassThroughFlagSip, "pModemPassThroughFlag", Lines::Ignored,
     Dir::GetOnly},
    {"Tr104DigitMapFlagSip", Tr104DigitMapFlagSip, "pDigitMapFlag", Lines::Ignored, Dir::GetOnly},
    {"Tr104NumberingPlanFlagSip", Tr104NumberingPlanFlagSip, "pNumberingPlanFlag", Lines::Ignored, Dir::GetOnly},
    {"Tr104ProfileNumberOfLinesSip", Tr104ProfileNumberOfLinesSip, "pNumberOfLines", Lines::Ignored, Dir::GetOnly},
    {"Tr104ProfileWanNameSip", Tr104ProfileWanNameSip, "pWanName", Lines::Ignored, Dir::GetOnly},
    {"Tr104PhyReferenceListSip", Tr104PhyReferenceListSip, "pPhyReferenceList", Lines::Checked, Dir::GetSet},
    {"Tr104FaxT38BitRateSip", Tr104FaxT38BitRateSip, "pFaxT38BitRate", Lines::Checked, Dir::GetSet},
    {"Tr104FaxT38TCFMethodSip", Tr104FaxT38TCFMethodSip, "pTCFMethod", Lines::Checked, Dir::GetSet},
    {"Tr104FaxT38HighSpeedRedundancySip", Tr104FaxT38HighSpeedRedundancySip, "pHighSpeedRedundancy", Lines::Checked,
     Dir::GetSet},
    {"Tr104FaxT38LowSpeedRedundancySip", Tr104FaxT38LowSpeedRedundancySip, "pLowSpeedRedundancy", Lines::Checked,
     Dir::GetSet},
    {"Tr104FaxT38PortAdd2Sip", Tr104FaxT38PortAdd2Sip, "pPortAdd2", Lines::Checked, Dir::GetSet},
    {"Tr104FaxT38EnableSip", Tr104FaxT38EnableSip, "pFaxT38Enable", Lines::ZeroMeansAll, Dir::GetSet},
    {"Tr104FaxCtrlModeSip", Tr104FaxCtrlModeSip, "pDetectMode", Lines::Ignored, Dir::GetSet},
    {"Tr104ProfileFaxPassThroughSip", Tr104ProfileFaxPassThroughSip, "pFaxPassThrough", Lines::Ignored, Dir::GetSet},
    {"Tr104FaxProcessModeSip", Tr104FaxProcessModeSip, "pFaxProcessMode", Lines::Ignored, Dir::GetSet},
    {"Tr104T38SDPTypeSip", Tr104T38SDPTypeSip, "pT38SDPType", Lines::Ignored, Dir::GetSet},
    {"Tr104FaxModemAttrFlagSip", Tr104FaxModemAttrFlagSip, "pFaxModemAttrFlag", Lines::Ignored, Dir::GetSet},
    {"Tr104EchoCancelAttrFlagSip", Tr104EchoCancelAttrFlagSip, "pEchoCancelAttrFlag", Lines::Ignored, Dir::GetSet},
    {"Tr104SilenceSuppAttrFlagSip", Tr104SilenceSuppAttrFlagSip, "pSilenceSuppAttrFlag", Lines::Ignored, Dir::GetSet},
    {"Tr104VbdEnableSip", Tr104VbdEnableSip, "pVbdEnable", Lines::Ignored, Dir::GetSet},
    {"Tr104VbdRxIntervalSip", Tr104VbdRxIntervalSip, "pVbdRxInterval", Lines::Ignored, Dir::GetSet},
    {"Tr104VbdTxIntervalSip", Tr104VbdTxIntervalSip, "pVbdTxInterval", Lines::Ignored, Dir::GetSet},
    {"Tr104VbdCodecSip", Tr104VbdCodecSip, "pVbdCodec", Lines::Ignored, Dir::GetSet},
};

class SipArguments : public SipTest {};

// Bad arguments give -2, print their message only while debugging, and send nothing.
TEST_F(SipArguments, EveryHandlerRefusesBadArgumentsInOrderWithoutSending) {
    for (const Member &m : kMembers) {
        SCOPED_TRACE(m.name);
        char value[4096] = {};
        // A null value is reported first, even with a bad line and a bad nFlag.
        std::string out = debugOutput([&] { EXPECT_EQ(m.handler(7, nullptr, line(3)), -2); });
        EXPECT_TRUE(printed(out, m.name, std::string("param error, ") + m.valueName + " is null\n")) << out;
        testing::internal::CaptureStdout();
        EXPECT_EQ(m.handler(0, nullptr, line(1)), -2);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "printed while debugging is off";

        if (m.lines == Lines::Checked || m.lines == Lines::ZeroMeansAll) {
            // The line is tested before nFlag.
            out = debugOutput([&] { EXPECT_EQ(m.handler(7, value, line(3)), -2); });
            EXPECT_TRUE(printed(out, m.name, "param error, nLocate[2]=3\n")) << out;
            EXPECT_EQ(m.handler(0, value, line(-1)), -2);
            if (m.lines == Lines::Checked) {
                out = debugOutput([&] { EXPECT_EQ(m.handler(0, value, line(0)), -2); });
                EXPECT_TRUE(printed(out, m.name, "param error, nLocate[2]=0\n")) << out;
            }
        }
        const char *flagText = std::strcmp(m.name, "Tr104CallerIdFormatSip") == 0
                                   ? "Tr104CallerIdFormatSip param error, nFlag[2]\n"
                                   : "param error, nFlag[2]\n";
        out = debugOutput([&] { EXPECT_EQ(m.handler(2, value, line(1)), -2); });
        EXPECT_TRUE(printed(out, m.name, flagText)) << out;
        EXPECT_EQ(m.handler(-1, value, line(1)), -2);
        if (m.dir == Dir::GetOnly) {
            out = debugOutput([&] { EXPECT_EQ(m.handler(1, value, line(1)), -2); });
            EXPECT_TRUE(printed(out, m.name, "param error, nFlag[1]\n")) << out;
        }
        if (m.dir == Dir::SetOnly) {
            out = debugOutput([&] { EXPECT_EQ(m.handler(0, value, line(1)), -2); });
            EXPECT_TRUE(printed(out, m.name, "param error, nFlag[0]\n")) << out;
        }
        EXPECT_EQ(emulator.requestCount(), 0u);
    }
}

TEST_F(SipArguments, LineChecksAndTheirExceptions) {
    int value = 2;
    // Line 3 would be an unchecked line number for the maximum number of sessions.
    EXPECT_EQ(Tr104LineMaxSessionsSip(1, &value, line(3)), 0);
    auto sent = seen(1);
    EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(SET_CONFERENCE_ID));
    EXPECT_EQ(sent[0].word<uint32_t>(0), 3u);
    // Profile-wide handlers take no locator at all.
    EXPECT_EQ(Tr104StartDigitTimerSip(0, &value, nullptr), 0);
    EXPECT_EQ(Tr104RTCPFlagSip(0, &value, nullptr), 0);
}

class SipLineValues : public SipTest {};

// Set, then get: the request carries the line and the one field, the get reads it back.
TEST_F(SipLineValues, IntegerFieldsRoundTripOnTheirOwnCommands) {
    struct Case {
        Handler handler;
        uint32_t setCmd, getCmd;
        size_t offset;
        int value;
    };
    const Case cases[] = {
        {Tr104LineHotlineDelaySip, SET_HOTLINE_DELAY_ID, GET_HOTLINE_DELAY_ID, 404, 15},
        {Tr104LineMaxJitterBufferValueSip, SET_MAX_JIT_VALUE_ID, GET_MAX_JIT_VALUE_ID, 436, 200},
        {Tr104LineMinJitterBufferValueSip, SET_MIN_JIT_VALUE_ID, GET_MIN_JIT_VALUE_ID, 432, -20},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.setCmd);
        restartLog();
        ASSERT_EQ(setInt(c.handler, 2, c.value), 0);
        int got = 0;
        ASSERT_EQ(getInt(c.handler, 2, &got), 0);
        EXPECT_EQ(got, c.value);
        ASSERT_EQ(getInt(c.handler, 1, &got), 0);
        EXPECT_EQ(got, 0) << "line 1 keeps its own value";
        auto sent = seen(3);
        ASSERT_EQ(sent.size(), 3u);
        EXPECT_EQ(sent[0].cmd, c.setCmd);
        EXPECT_EQ(sent[0].module, 7);
        EXPECT_EQ(sent[0].word<uint32_t>(0), 2u);
        EXPECT_EQ(sent[0].word<int32_t>(c.offset), c.value);
        // Nothing but the line and the value.
        EXPECT_TRUE(siptest::zeroExcept(sent[0], {{0, 4}, {c.offset, 4}}));
        EXPECT_EQ(sent[1].cmd, c.getCmd);
    }
}

TEST_F(SipLineValues, LineEnableIsCaseSensitiveAndWrittenWithoutTerminator) {
    const struct {
        const char *text;
        int rc;
        int word;
    } cases[] = {{"Enabled", 0, 1}, {"Disabled", 0, 0}, {"enabled", -2, -1}, {"ENABLED", -2, -1}, {"", -2, -1}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        restartLog();
        std::string out = debugOutput([&] { EXPECT_EQ(setText(Tr104LineEnableSip, 1, c.text), c.rc); });
        if (c.rc != 0) {
            EXPECT_TRUE(printed(out, "Tr104LineEnableSip", "line enable param error.\n")) << out;
            EXPECT_EQ(emulator.requestCount(), 0u);
            continue;
        }
        auto sent = seen(1);
        EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(SET_LINE_ENABLE_ID));
        EXPECT_EQ(sent[0].word<uint32_t>(4), static_cast<uint32_t>(c.word));
        char buf[16];
        std::memset(buf, 'x', sizeof(buf));
        ASSERT_EQ(Tr104LineEnableSip(0, buf, line(1)), 0);
        EXPECT_EQ(std::string(buf, 9), c.word ? "Enabledxx" : "Disabledx");
    }
}

TEST_F(SipLineValues, TextFieldsAndTheirLengthRules) {
    // Hotline number: 65 characters accepted, 66 refused.
    const std::string hot65(65, '7');
    EXPECT_EQ(setText(Tr104LineHotlineNumSip, 1, hot65.c_str()), 0);
    EXPECT_EQ(getText(Tr104LineHotlineNumSip, 1), hot65);
    std::string out =
        debugOutput([&] { EXPECT_EQ(setText(Tr104LineHotlineNumSip, 1, std::string(66, '7').c_str()), -2); });
    EXPECT_TRUE(printed(out, "Tr104LineHotlineNumSip", "param error, line HotlineNum len too long\n")) << out;

    // Jitter buffer mode: cut to 9 characters.
    EXPECT_EQ(setText(Tr104LineJitterBufferModeSip, 2, "adaptive-long"), 0);
    EXPECT_EQ(getText(Tr104LineJitterBufferModeSip, 2), "adaptive-");

    // Display name: no length check; the request carries the whole text from offset 74 on.
    EXPECT_EQ(setText(Tr104LineDisplayNameSip, 1, "Alice"), 0);
    EXPECT_EQ(getText(Tr104LineDisplayNameSip, 1), "Alice");
    restartLog();
    const std::string longName(100, 'n');
    EXPECT_EQ(setText(Tr104LineDisplayNameSip, 1, longName.c_str()), 0);
    auto sent = seen(1);
    EXPECT_EQ(sent[0].text_at(74, 200), longName);
    // A text longer than the record stays inside it.
    restartLog();
    EXPECT_EQ(setText(Tr104LineDisplayNameSip, 1, std::string(1000, 'n').c_str()), 0);
    sent = seen(1);
    EXPECT_EQ(sent[0].text_at(74, 2000).size(), 452u - 74u - 1u);
}

TEST_F(SipLineValues, RegisterSendsRegisterForOneAndUnregisterOtherwise) {
    const struct {
        int value;
        uint32_t cmd;
        const char *status;
    } cases[] = {{1, REGISTER_LINE_ID, "Up"}, {0, UNREGISTER_LINE_ID, "Disabled"}, {5, UNREGISTER_LINE_ID, "Disabled"}};
    for (const auto &c : cases) {
        restartLog();
        EXPECT_EQ(setInt(Tr104LineRegisterSip, 2, c.value), 0);
        auto sent = seen(1);
        EXPECT_EQ(sent[0].cmd, c.cmd);
        EXPECT_EQ(sent[0].word<uint32_t>(0), 2u);
        EXPECT_EQ(getText(Tr104LineRegStatusSip, 2), c.status);
    }
}

// ---- Port status conversions ----------------------------------------------------------------

Tr104SipLineRecord portStatus(uint32_t line, uint32_t code, const char *reg, const char *call = "",
                              const char *hook = "") {
    Tr104SipLineRecord s{};
    s.unLine = line;
    s.unPortState = code;
    std::strncpy(s.aRegState, reg, sizeof(s.aRegState) - 1);
    std::strncpy(s.aCallState, call, sizeof(s.aCallState) - 1);
    std::strncpy(s.aHookState, hook, sizeof(s.aHookState) - 1);
    return s;
}

TEST_F(SipLineValues, RegistrationTextMapsAndUnknownTextLeavesTheBuffer) {
    const struct {
        const char *reg;
        const char *expected;
    } cases[] = {
        {"N/A", "Initializing"},        {"reg-ok", "Up"},         {"reg-ing", "Registering"},
        {"unreg-ing", "Unregistering"}, {"unreg-ok", "Disabled"}, {"reg-fail", "Error"},
        {"unreg-fail", "Error"},        {"reg-OK", "untouched"},  {"", "untouched"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.reg);
        putPortStatus(portStatus(1, 1, c.reg));
        char buf[32] = "untouched";
        EXPECT_EQ(Tr104LineRegStatusSip(0, buf, line(1)), 0);
        EXPECT_STREQ(buf, c.expected);
    }
}

TEST_F(SipLineValues, ServerStatusFollowsTheCodeThenTheRegistration) {
    const struct {
        uint32_t code;
        const char *reg;
        int expected;  // -7: left as it was
    } cases[] = {
        {0, "reg-ok", 0},  {3, "reg-ok", 2},    {8, "", 2},          {11, "reg-ok", 2}, {1, "reg-ok", 1},
        {12, "reg-ok", 1}, {12, "reg-fail", 5}, {2, "reg-fail", -7}, {9, "", -7},       {13, "N/A", -7},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.code);
        putPortStatus(portStatus(2, c.code, c.reg));
        int value = -7;
        EXPECT_EQ(Tr104LineServerStatusSip(0, &value, line(2)), 0);
        EXPECT_EQ(value, c.expected);
    }
    putPortStatus(portStatus(2, 0x1234, ""));
    int code = 0;
    EXPECT_EQ(Tr104PortStatusSip(0, &code, line(2)), 0);
    EXPECT_EQ(code, 0x34);
}

TEST_F(SipLineValues, CallTextGivesCallStatusAndSessionType) {
    const struct {
        const char *call;
        const char *status;
        int session;
    } cases[] = {
        {"Idle", "Idle", 0},
        {"Calling", "Calling", 1},
        {"Ringing", "Ringing", 1},
        {"Call Setuping", "Connecting", 1},
        {"Call Setup", "InCall", 1},
        {"Call Hold", "Hold", 1},
        {"Dialing", "Dialing", 1},
        {"Fax Setup", "Fax Setup", 3},
        {"Fax Setuping", "Fax Setuping", 3},
        {"Busy Tone", "Busy Tone", 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.call);
        putPortStatus(portStatus(1, 0, "reg-ok", c.call, "on-hook"));
        EXPECT_EQ(getText(Tr104LineCallStatusSip, 1), c.status);
        int session = -1;
        EXPECT_EQ(Tr104LineSessionTypeSip(0, &session, line(1)), 0);
        EXPECT_EQ(session, c.session);
    }
    EXPECT_EQ(getText(Tr104LineHookStatusSip, 1), "on-hook");
}

TEST_F(SipLineValues, TextsWithoutTerminatorStayInsideTheirField) {
    Tr104SipLineRecord status{};
    status.unLine = 2;
    std::memset(status.aHookState, 'h', sizeof(status.aHookState));
    std::memset(status.aCallState, 'c', sizeof(status.aCallState));
    status.unProfileId = 0x41414141;  // right after the call text
    putPortStatus(status);
    EXPECT_EQ(getText(Tr104LineHookStatusSip, 2), std::string(19, 'h'));
    EXPECT_EQ(getText(Tr104LineCallStatusSip, 2), std::string(171, 'c'));
    Tr104SipLineRecord jitter{};
    jitter.unLine = 2;
    std::memset(jitter.aJitterMode, 'j', sizeof(jitter.aJitterMode));
    jitter.unMinJitter = 0x42424242;
    emulator.put("sip jitter mode", &jitter, sizeof(jitter));
    EXPECT_EQ(getText(Tr104LineJitterBufferModeSip, 2), std::string(9, 'j'));
}

TEST_F(SipLineValues, FailedReadsReturnMinusOneAndLeaveTheValue) {
    emulator.setFault(0, {vmemu::Fault::FailureMarker, 0, -1});
    const Handler integers[] = {Tr104LineHotlineDelaySip,    Tr104LineServerStatusSip, Tr104LineSessionTypeSip,
                                Tr104LineCallWaitingFlagSip, Tr104LineTransmitGainSip, Tr104StartDigitTimerSip,
                                Tr104ShortDigitTimerSip,     Tr104RTCPFlagSip,         Tr104CallerIdFormatSip};
    for (Handler h : integers) {
        int value = 1234;
        EXPECT_EQ(getInt(h, 1, &value), -1);
        EXPECT_EQ(value, 1234);
    }
    std::string out = debugOutput([&] { EXPECT_EQ(getText(Tr104LineEnableSip, 1), "<-1>"); });
    EXPECT_TRUE(printed(out, "Tr104LineEnableSip", "get Line Enable error.\n")) << out;
    out = debugOutput([&] { EXPECT_EQ(getText(Tr104LineRegStatusSip, 2), "<-1>"); });
    EXPECT_TRUE(printed(out, "Tr104LineRegStatusSip", "get port[2] status error\n")) << out;
    out = debugOutput([&] { EXPECT_EQ(getText(Tr104ProfileWanNameSip, 0), "<-1>"); });
    EXPECT_TRUE(printed(out, "Tr104ProfileWanNameSip", "get WanName error.\n")) << out;
    int lines = 0;
    out = debugOutput([&] { EXPECT_EQ(Tr104ProfileNumberOfLinesSip(0, &lines, nullptr), -1); });
    EXPECT_TRUE(printed(out, "Tr104ProfileNumberOfLinesSip", "pNumberOfLines error \n")) << out;
    out = debugOutput([&] { EXPECT_EQ(Tr104RTCPFlagSip(0, &lines, nullptr), -1); });
    EXPECT_TRUE(printed(out, "Tr104RTCPFlagSip", "getRTCPFlag error \n")) << out;
}

// ---- Line features --------------------------------------------------------------------------

class SipLineFeatures : public SipTest {};

TEST_F(SipLineFeatures, FlagBytesRoundTripOnTheirOwnCommands) {
    struct Case {
        Handler handler;
        uint32_t setCmd;
        size_t offset;
        int value;
        uint8_t wire;
        int readBack;
    };
    const Case cases[] = {
        {Tr104LineCallWaitingFlagSip, SET_CALL_WAITING_ID, 5, 1, 1, 1},
        {Tr104LineCallWaitingFlagSip, SET_CALL_WAITING_ID, 5, 0x1FE, 0xFE, 0xFE},  // the low byte, unchecked
        {Tr104LineCall3wayFlagSip, SET_CONFERENCE_ID, 73, 1, 1, 1},
        {Tr104LineMaxSessionsSip, SET_CONFERENCE_ID, 73, 1, 0, 1},
        {Tr104LineMaxSessionsSip, SET_CONFERENCE_ID, 73, 2, 1, 2},
        {Tr104LineCallerIdFlagSip, SET_CALLERID_MODE_ID, 4, 1, 1, 1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.setCmd);
        restartLog();
        ASSERT_EQ(setInt(c.handler, 2, c.value), 0);
        int got = -1;
        ASSERT_EQ(getInt(c.handler, 2, &got), 0);
        EXPECT_EQ(got, c.readBack);
        auto sent = seen(2);
        EXPECT_EQ(sent[0].cmd, c.setCmd);
        EXPECT_EQ(sent[0].word<uint32_t>(0), 2u);
        EXPECT_EQ(sent[0].word<uint8_t>(c.offset), c.wire);
        EXPECT_TRUE(siptest::zeroExcept(sent[0], {{0, 4}, {c.offset, 1}}));
    }
    int sessions = 3;
    std::string out = debugOutput([&] { EXPECT_EQ(Tr104LineMaxSessionsSip(1, &sessions, line(1)), -2); });
    EXPECT_TRUE(printed(out, "Tr104LineMaxSessionsSip", "param error, line[1] max sessions is[3] excess to 2\n"))
        << out;
}

TEST_F(SipLineFeatures, CallerIdCanOnlyBeSwitchedOffThroughTheFlag) {
    EXPECT_EQ(setText(Tr104CallerIdModeSip, 1, "DTMF"), 0);
    EXPECT_EQ(getText(Tr104CallerIdModeSip, 1), "DTMF");
    int flag = -1;
    EXPECT_EQ(getInt(Tr104LineCallerIdFlagSip, 1, &flag), 0);
    EXPECT_EQ(flag, 1);

    std::string out = debugOutput([&] { EXPECT_EQ(setText(Tr104CallerIdModeSip, 1, "DISABLED"), -2); });
    EXPECT_TRUE(printed(out, "Tr104CallerIdModeSip", "param error, pCallerIdMode[DISABLED]\n")) << out;
    EXPECT_EQ(setText(Tr104CallerIdModeSip, 1, "fsk"), -2);
    EXPECT_EQ(getText(Tr104CallerIdModeSip, 1), "DTMF");

    EXPECT_EQ(setInt(Tr104LineCallerIdFlagSip, 1, 0), 0);
    EXPECT_EQ(getText(Tr104CallerIdModeSip, 1), "DISABLED");
    EXPECT_EQ(setInt(Tr104LineCallerIdFlagSip, 1, 7), 0);  // anything but 1 switches it off
    EXPECT_EQ(getInt(Tr104LineCallerIdFlagSip, 1, &flag), 0);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(setText(Tr104CallerIdModeSip, 1, "FSK"), 0);
    EXPECT_EQ(getInt(Tr104LineCallerIdFlagSip, 1, &flag), 0);
    EXPECT_EQ(flag, 1);
}

TEST_F(SipLineFeatures, CallerIdCodesTheDataModelDoesNotKnow) {
    const struct {
        uint8_t code;
        const char *mode;
        int modeRc;
        int flag;
        int flagRc;
    } cases[] = {{0, "DISABLED", 0, 0, 0}, {1, "FSK", 0, 1, 0},   {2, "FSK", 0, 1, 0},
                 {3, "DTMF", 0, 1, 0},     {4, "FSK", -1, 0, -1}, {200, "FSK", -1, 0, -1}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.code);
        Tr104SipLineFeatureRecord rec{};
        rec.unLine = 1;
        rec.ucCallerIdMode = c.code;
        emulator.put("sip caller id mode", &rec, sizeof(rec));
        char mode[16] = {};
        EXPECT_EQ(Tr104CallerIdModeSip(0, mode, line(1)), c.modeRc);
        EXPECT_STREQ(mode, c.mode);
        int flag = -5;
        std::string out = debugOutput([&] { EXPECT_EQ(getInt(Tr104LineCallerIdFlagSip, 1, &flag), c.flagRc); });
        EXPECT_EQ(flag, c.flag);
        EXPECT_EQ(printed(out, "Tr104LineCallerIdFlagSip", "unknown caller id mode.\n"), c.flagRc != 0) << out;
    }
}

TEST_F(SipLineFeatures, CallerIdFormatIsTheValueItself) {
    EXPECT_EQ(setInt(Tr104CallerIdFormatSip, 0, 0x01020304), 0);
    int got = 0;
    EXPECT_EQ(getInt(Tr104CallerIdFormatSip, 0, &got), 0);
    EXPECT_EQ(got, 0x01020304);
    auto sent = seen(2);
    EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(SET_CALLERID_FORMAT_ID));
    EXPECT_EQ(sent[0].word<int32_t>(0), 0x01020304);
    EXPECT_EQ(sent[0].word<int32_t>(4), 0);
    EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(GET_CALLERID_FORMAT_ID));
}

// ---- Statistics reset and read-only values --------------------------------------------------

TEST_F(SipLineValues, StatisticsResetSendsOnlyForOne) {
    int value = 9;
    EXPECT_EQ(Tr104LineResetStatisticsFlagSip(0, &value, line(1)), 0);
    EXPECT_EQ(value, 0);
    std::string out = debugOutput([&] { EXPECT_EQ(setInt(Tr104LineResetStatisticsFlagSip, 1, 0), 0); });
    EXPECT_TRUE(printed(out, "Tr104LineResetStatisticsFlagSip",
                        "param error, when write, *pLineResetStatisticsFlag must be TRUE.\n"))
        << out;
    EXPECT_EQ(emulator.requestCount(), 0u);
    EXPECT_EQ(setInt(Tr104LineResetStatisticsFlagSip, 2, 1), 0);
    auto sent = seen(1);
    EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(RESET_LINE_STATISTICS_ID));
    EXPECT_EQ(sent[0].word<uint32_t>(0), 2u);
    EXPECT_EQ(sent[0].word<uint32_t>(4), 0u);
}

TEST_F(SipLineValues, ReadOnlyProfileValuesComeStraightFromTheVoiceModule) {
    const struct {
        Handler handler;
        uint32_t cmd;
        int value;
    } cases[] = {
        {Tr104MaxSessionsPerLineSip, GET_MAX_SESSIONS_PER_LINE_ID, 2},
        {Tr104MaxSessionsAllLinesSip, GET_MAX_SESSIONS_ALL_LINES_ID, 4},
        {Tr104RTCPFlagSip, GET_RTCP_FLAG_ID, 1},
        {Tr104RTPRedundancyFlagSip, GET_RTP_REDUNDANCY_FLAG_ID, 0},
        {Tr104VlanTagCoupledFlagSip, GET_VLAN_TAG_COUPLED_FLAG_ID, 0},
        {Tr104FaxT38FlagSip, GET_FAX_T38_FLAG_ID, 1},
        {Tr104FaxPassThroughFlagSip, GET_FAX_PASS_THROUGH_FLAG_ID, 1},
        {Tr104ModemPassThroughFlagSip, GET_MODEM_PASS_THROUGH_FLAG_ID, 1},
        {Tr104DigitMapFlagSip, GET_DIGITMAP_FLAG_ID, 1},
        {Tr104NumberingPlanFlagSip, GET_NUMBERING_PLAN_FLAG_ID, 0},
        {Tr104ProfileNumberOfLinesSip, GET_NUMBER_OF_LINES_ID, 2},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.cmd);
        restartLog();
        int value = -9;
        EXPECT_EQ(c.handler(0, &value, nullptr), 0);
        EXPECT_EQ(value, c.value);
        auto sent = seen(1);
        EXPECT_EQ(sent[0].cmd, c.cmd);
        EXPECT_EQ(std::count(sent[0].payload.begin(), sent[0].payload.end(), 0), 2048) << "an empty request";
    }
    EXPECT_EQ(getText(Tr104ProfileWanNameSip, 0), "1_VOIP_R_VID_46");
}

}  // namespace
