// Profile-wide timers and the digit map.
#include "sip_fixture.h"

namespace {

using siptest::debugOutput;
using siptest::Handler;
using siptest::printed;
using siptest::SipTest;

class SipTimers : public SipTest {};

struct SignalTimer {
    const char *name;
    Handler handler;
    size_t offset;
    uint16_t selector;
    const char *rangeMessage;  // "%d" the value
};

const SignalTimer kSignalTimers[] = {
    {"Tr104StartDigitTimerSip", Tr104StartDigitTimerSip, 4, 1, "invalid parameter should be 1-600.\n"},
    {"Tr104DialToneTimerSip", Tr104DialToneTimerSip, 4, 1, "set param error, pDialTime[%d].\n"},
    {"Tr104NoAnswerTimerSip", Tr104NoAnswerTimerSip, 8, 2, "invalid parameter should be 1-600.\n"},
    {"Tr104BusyToneTimerSip", Tr104BusyToneTimerSip, 16, 8, "invalid parameter should be 1-600.\n"},
    {"Tr104HangingReminderToneTimerSip", Tr104HangingReminderToneTimerSip, 20, 16,
     "invalid parameter should be 1-600.\n"},
    {"Tr104CallWaitingRejectTimerSip", Tr104CallWaitingRejectTimerSip, 24, 32, "invalid parameter should be 1-600.\n"},
};

TEST_F(SipTimers, SecondsBecomeMillisecondsWithTheTimersSelector) {
    for (const SignalTimer &t : kSignalTimers) {
        SCOPED_TRACE(t.name);
        for (int seconds : {1, 600}) {
            restartLog();
            ASSERT_EQ(setInt(t.handler, 0, seconds), 0);
            int got = 0;
            ASSERT_EQ(getInt(t.handler, 0, &got), 0);
            EXPECT_EQ(got, seconds);
            const auto sent = seen(2);
            EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(SET_SIG_TIMEOUT_ID));
            EXPECT_EQ(sent[0].word<uint16_t>(0), t.selector);
            EXPECT_EQ(sent[0].word<uint32_t>(t.offset), static_cast<uint32_t>(seconds) * 1000u);
            EXPECT_TRUE(siptest::zeroExcept(sent[0], {{0, 2}, {t.offset, 4}}));
            EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(GET_SIG_TIMEOUT_ID));
            EXPECT_TRUE(siptest::zeroExcept(sent[1], {})) << "a get sends a zeroed record";
        }
        for (int bad : {0, 601, -1}) {
            restartLog();
            char message[64];
            std::snprintf(message, sizeof(message), t.rangeMessage, bad);
            std::string out = debugOutput([&] { EXPECT_EQ(setInt(t.handler, 0, bad), -2); });
            EXPECT_TRUE(printed(out, t.name, message)) << out;
            EXPECT_EQ(emulator.requestCount(), 0u);
        }
    }
}

TEST_F(SipTimers, ReadsRoundDownToWholeSecondsAndTimersKeepEachOther) {
    Tr104SipSignalTimerRecord stored{};
    stored.unStartDigit = 1999;
    stored.unNoAnswer = 999;
    stored.unBusyTone = 45000;
    emulator.put("sip signal timers", &stored, sizeof(stored));
    const struct {
        Handler handler;
        int seconds;
    } reads[] = {{Tr104StartDigitTimerSip, 1},
                 {Tr104DialToneTimerSip, 1},
                 {Tr104NoAnswerTimerSip, 0},
                 {Tr104BusyToneTimerSip, 45}};
    for (const auto &r : reads) {
        int got = -1;
        EXPECT_EQ(getInt(r.handler, 0, &got), 0);
        EXPECT_EQ(got, r.seconds);
    }
    // The dial-tone timer is the start-digit timer; other timers are left alone.
    ASSERT_EQ(setInt(Tr104DialToneTimerSip, 0, 17), 0);
    int got = 0;
    EXPECT_EQ(getInt(Tr104StartDigitTimerSip, 0, &got), 0);
    EXPECT_EQ(got, 17);
    ASSERT_EQ(setInt(Tr104StartDigitTimerSip, 0, 23), 0);
    EXPECT_EQ(getInt(Tr104DialToneTimerSip, 0, &got), 0);
    EXPECT_EQ(got, 23);
    EXPECT_EQ(getInt(Tr104BusyToneTimerSip, 0, &got), 0);
    EXPECT_EQ(got, 45);
}

TEST_F(SipTimers, DigitTimersSendTheOtherAsUnchanged) {
    const struct {
        Handler handler;
        const char *name;
        size_t offset, other;
    } timers[] = {{Tr104ShortDigitTimerSip, "Tr104ShortDigitTimerSip", 16, 20},
                  {Tr104LongDigitTimerSip, "Tr104LongDigitTimerSip", 20, 16}};
    ASSERT_EQ(setInt(Tr104ShortDigitTimerSip, 0, 4000), 0);
    ASSERT_EQ(setInt(Tr104LongDigitTimerSip, 0, 20000), 0);
    for (const auto &t : timers) {
        SCOPED_TRACE(t.name);
        for (int value : {-1, 0, 65535}) {
            restartLog();
            ASSERT_EQ(setInt(t.handler, 0, value), 0);
            const auto sent = seen(1);
            EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(SET_DIG_TIMEOUT));
            EXPECT_EQ(sent[0].word<int32_t>(t.offset), value) << "no scaling";
            EXPECT_EQ(sent[0].word<uint32_t>(t.other), 0xFFFFFFFFu);
            EXPECT_TRUE(siptest::zeroExcept(sent[0], {{16, 8}}));
        }
        for (int bad : {-2, 65536}) {
            std::string out = debugOutput([&] { EXPECT_EQ(setInt(t.handler, 0, bad), -2); });
            EXPECT_TRUE(printed(out, t.name, "invalid parameter should be 0-65535.\n")) << out;
        }
    }
    // Each timer kept what was written to it last; -1 written as a value is "unchanged".
    int shortTimer = 0, longTimer = 0;
    ASSERT_EQ(setInt(Tr104ShortDigitTimerSip, 0, 3000), 0);
    EXPECT_EQ(getInt(Tr104ShortDigitTimerSip, 0, &shortTimer), 0);
    EXPECT_EQ(getInt(Tr104LongDigitTimerSip, 0, &longTimer), 0);
    EXPECT_EQ(shortTimer, 3000);
    EXPECT_EQ(longTimer, 65535);
}

class SipDigitMap : public SipTest {};

TEST_F(SipDigitMap, ChunksAreNumberedToLengthOver192Inclusive) {
    for (size_t len : {0u, 1u, 191u, 192u, 193u, 384u, 400u}) {
        SCOPED_TRACE(len);
        restartLog();
        std::string text;
        for (size_t i = 0; i < len; ++i) {
            text.push_back(static_cast<char>('0' + i % 10));
        }
        ASSERT_EQ(setText(Tr104ProfileDigitMapStringSip, 0, text.c_str()), 0);
        const size_t chunks = len / 192 + 1;
        const auto sent = seen(chunks + 1);
        ASSERT_EQ(sent.size(), chunks + 1);
        for (size_t i = 0; i < chunks; ++i) {
            EXPECT_EQ(sent[i].cmd, static_cast<uint32_t>(SET_DIGITMAP_ID));
            EXPECT_EQ(sent[i].word<uint8_t>(1), i);
            EXPECT_EQ(sent[i].text_at(2, 256), text.substr(i * 192, 192));
            EXPECT_TRUE(siptest::zeroExcept(sent[i], {{1, 1}, {2, 192}}));
        }
        EXPECT_EQ(sent[chunks].cmd, static_cast<uint32_t>(ENABLE_DIGITMAP_ID));
        EXPECT_TRUE(siptest::zeroExcept(sent[chunks], {}));
        std::vector<char> back(TR104_DIGITMAP_MAX_LEN, 'z');
        ASSERT_EQ(Tr104ProfileDigitMapStringSip(0, back.data(), nullptr), 0);
        EXPECT_EQ(std::string(back.data()), text);
    }
}

TEST_F(SipDigitMap, StarAndHashTravelAsEAndF) {
    char map[] = "*xx#|[2-9]xxxxxxx|**#";
    ASSERT_EQ(Tr104ProfileDigitMapStringSip(1, map, nullptr), 0);
    EXPECT_STREQ(map, "ExxF|[2-9]xxxxxxx|EEF") << "the caller's text is rewritten";
    const auto sent = seen(2);
    EXPECT_EQ(sent[0].text_at(2, 256), "ExxF|[2-9]xxxxxxx|EEF");
    EXPECT_EQ(getText(Tr104ProfileDigitMapStringSip, 0), "*xx#|[2-9]xxxxxxx|**#");
}

TEST_F(SipDigitMap, FailedReadIsReported) {
    emulator.setFault(GET_DIGITMAP_ID, {vmemu::Fault::FailureMarker, 0, 1});
    std::string out = debugOutput([&] { EXPECT_EQ(getText(Tr104ProfileDigitMapStringSip, 0), "<-1>"); });
    EXPECT_TRUE(printed(out, "Tr104ProfileDigitMapStringSip", "get digitmap string failed.\n")) << out;
}

TEST_F(SipDigitMap, EnableSwitchAndMatchMode) {
    const struct {
        int value;
        int rc;
        uint32_t cmd;  // 0: nothing sent
        int readBack;
    } cases[] = {{0, 0, DISABLE_DIGITMAP_ID, 0}, {1, 0, ENABLE_DIGITMAP_ID, 1}, {2, -1, 0, 1}, {-1, -1, 0, 1}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.value);
        restartLog();
        EXPECT_EQ(setInt(Tr104ProfileDigitMapEnableSip, 0, c.value), c.rc);
        int got = -1;
        EXPECT_EQ(getInt(Tr104ProfileDigitMapEnableSip, 0, &got), 0);
        EXPECT_EQ(got, c.readBack);
        const auto sent = seen(c.cmd != 0 ? 2 : 1);
        EXPECT_EQ(sent.front().cmd, c.cmd != 0 ? c.cmd : static_cast<uint32_t>(GET_DIGITMAP_ENABLE_ID));
    }

    ASSERT_EQ(setText(Tr104ProfileDigitMapMatchModeSip, 0, "Min"), 0);
    EXPECT_EQ(getText(Tr104ProfileDigitMapMatchModeSip, 0), "Min");
    ASSERT_EQ(setText(Tr104ProfileDigitMapMatchModeSip, 0, "Max"), 0);
    EXPECT_EQ(getText(Tr104ProfileDigitMapMatchModeSip, 0), "Max");
    std::string out = debugOutput([&] { EXPECT_EQ(setText(Tr104ProfileDigitMapMatchModeSip, 0, "max"), -2); });
    EXPECT_TRUE(printed(out, "Tr104ProfileDigitMapMatchModeSip", "param error.\n")) << out;
    Tr104SipMatchModeRecord mode{};
    mode.ucMode = 7;
    emulator.put("sip digit map match mode", &mode, sizeof(mode));
    EXPECT_EQ(getText(Tr104ProfileDigitMapMatchModeSip, 0), "Min");
}

}  // namespace
