// Fax: T.38 values of the line's voice profile, T.38 on the line, the fax mode attributes and
// voice-band data.
#include "sip_fixture.h"

namespace {

using siptest::debugOutput;
using siptest::Handler;
using siptest::printed;
using siptest::SipTest;

class SipFax : public SipTest {
protected:
    void SetUp() override {
        SipTest::SetUp();
        Tr104SipLineRecord status{};
        status.unLine = 1;
        status.unProfileId = 1;
        std::strcpy(status.aProfileName, "fax");
        putPortStatus(status);
    }

    // Stores a T.38 word in line 1's profile.
    void storeProfileWord(size_t offset, uint32_t value) {
        Tr104SipProfileRecord profile{};
        std::strcpy(profile.aName, "fax");
        std::memcpy(reinterpret_cast<char *>(&profile) + offset, &value, sizeof(value));
        emulator.put("sip profile", &profile, sizeof(profile));
    }
};

TEST_F(SipFax, T38BitRateCodes) {
    const int rates[] = {2400, 4800, 7200, 9600, 12000, 14400};
    for (uint32_t code = 1; code <= 6; ++code) {
        SCOPED_TRACE(code);
        restartLog();
        ASSERT_EQ(setInt(Tr104FaxT38BitRateSip, 1, rates[code - 1]), 0);
        const auto sent = seen(2);
        EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(SET_PROFILE_CMD_ID));
        EXPECT_EQ(sent[1].word<uint32_t>(56), code);
        EXPECT_EQ(sent[1].word<uint32_t>(24), static_cast<uint32_t>(TR104_PROFILE_T38_BIT_RATE));
        int got = 0;
        ASSERT_EQ(getInt(Tr104FaxT38BitRateSip, 1, &got), 0);
        EXPECT_EQ(got, rates[code - 1]);
    }
    std::string out = debugOutput([&] { EXPECT_EQ(setInt(Tr104FaxT38BitRateSip, 1, 9601), -1); });
    EXPECT_TRUE(printed(out, "Tr104FaxT38BitRateSip", "fax Rate param error \n")) << out;
    EXPECT_EQ(setInt(Tr104FaxT38BitRateSip, 1, 0), -1);

    storeProfileWord(56, 0);
    int got = 0;
    EXPECT_EQ(getInt(Tr104FaxT38BitRateSip, 1, &got), 0);
    EXPECT_EQ(got, 14400) << "a stored 0 is the highest rate";
    storeProfileWord(56, 7);
    got = 5;
    out = debugOutput([&] { EXPECT_EQ(getInt(Tr104FaxT38BitRateSip, 1, &got), -1); });
    EXPECT_TRUE(printed(out, "Tr104FaxT38BitRateSip", "No Match Fax T38 Bit Rate \n")) << out;
    EXPECT_EQ(got, 5);
}

TEST_F(SipFax, T38ProfileWordsAndTheirRanges) {
    struct Case {
        const char *name;
        Handler handler;
        size_t offset;
        uint32_t bit;
        int high;
        const char *refused;  // "%d"
    };
    const Case cases[] = {
        {"Tr104FaxT38HighSpeedRedundancySip", Tr104FaxT38HighSpeedRedundancySip, 64,
         TR104_PROFILE_T38_HIGH_SPEED_REDUNDANCY, 3,
         "set HighSpeedRedundancy param *pHighSpeedRedundancy=%d(0~3)error \n"},
        {"Tr104FaxT38LowSpeedRedundancySip", Tr104FaxT38LowSpeedRedundancySip, 68, 0, 7,
         "set LowSpeedRedundancy param *pLowSpeedRedundancy=%d(0~7)error \n"},
        {"Tr104FaxT38PortAdd2Sip", Tr104FaxT38PortAdd2Sip, 72, TR104_PROFILE_T38_PORT_ADD2, 1,
         "set pPortAdd2 param *pPortAdd2=%d(0~1)error \n"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        for (int value : {0, c.high}) {
            restartLog();
            ASSERT_EQ(setInt(c.handler, 1, value), 0);
            const auto sent = seen(2);
            EXPECT_EQ(sent[1].word<uint32_t>(24), c.bit);
            EXPECT_EQ(sent[1].word<int32_t>(c.offset), value);
            int got = -1;
            ASSERT_EQ(getInt(c.handler, 1, &got), 0);
            EXPECT_EQ(got, value);
        }
        for (int bad : {-1, c.high + 1}) {
            char message[96];
            std::snprintf(message, sizeof(message), c.refused, bad);
            std::string out = debugOutput([&] { EXPECT_EQ(setInt(c.handler, 1, bad), -2); });
            EXPECT_TRUE(printed(out, c.name, message)) << out;
        }
        storeProfileWord(c.offset, static_cast<uint32_t>(c.high + 1));
        int got = 42;
        EXPECT_EQ(getInt(c.handler, 1, &got), -1);
        EXPECT_EQ(got, 42);
    }
}

TEST_F(SipFax, TcfMethodNames) {
    for (const char *name : {"Local", "Network"}) {
        ASSERT_EQ(setText(Tr104FaxT38TCFMethodSip, 1, name), 0);
        EXPECT_EQ(getText(Tr104FaxT38TCFMethodSip, 1), name);
    }
    std::string out = debugOutput([&] { EXPECT_EQ(setText(Tr104FaxT38TCFMethodSip, 1, "local"), -2); });
    EXPECT_TRUE(printed(out, "Tr104FaxT38TCFMethodSip", "param error.\n")) << out;
    storeProfileWord(60, 1);
    out = debugOutput([&] { EXPECT_EQ(getText(Tr104FaxT38TCFMethodSip, 1), "<-1>"); });
    EXPECT_TRUE(printed(out, "Tr104FaxT38TCFMethodSip", "get TCFMethod error.\n")) << out;
}

TEST_F(SipFax, T38EnableOnTheLineRecordWithLineZeroAsOne) {
    ASSERT_EQ(setInt(Tr104FaxT38EnableSip, 0, 1), 0);
    int got = 0;
    ASSERT_EQ(getInt(Tr104FaxT38EnableSip, 1, &got), 0);
    EXPECT_EQ(got, 1);
    ASSERT_EQ(getInt(Tr104FaxT38EnableSip, 2, &got), 0);
    EXPECT_EQ(got, 0);
    const auto sent = seen(3);
    EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(SET_FAX_T38_ENABLE_ID));
    EXPECT_EQ(sent[0].word<uint32_t>(0), 1u);
    EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(GET_FAX_T38_ENABLE_ID));
}

TEST_F(SipFax, FaxModeAttributesNameTheFieldTheyChange) {
    struct Case {
        Handler handler;
        size_t offset;
        uint32_t flag;
        int value;
    };
    const Case cases[] = {
        {Tr104FaxCtrlModeSip, 32, CONFIG_FLAG_FAX_CTRL_MODE, 2},
        {Tr104FaxProcessModeSip, 4, CONFIG_FLAG_FAX_PROCESS_MODE, 3},
        {Tr104T38SDPTypeSip, 8, CONFIG_FLAG_FAX_T38_SDP_TYPE, 1},
        {Tr104FaxModemAttrFlagSip, 12, CONFIG_FLAG_FAX_FAX_MODEM_SWITCH, 1},
        {Tr104EchoCancelAttrFlagSip, 16, CONFIG_FLAG_FAX_ECHO_CANCEL_SWITCH, 1},
        {Tr104SilenceSuppAttrFlagSip, 20, CONFIG_FLAG_FAX_SILENCE_SUPP_SWITCH, 1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.flag);
        restartLog();
        ASSERT_EQ(setInt(c.handler, 0, c.value), 0);
        const auto sent = seen(1);
        EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(SET_FAX_MODE_ID));
        EXPECT_EQ(sent[0].word<uint32_t>(0), c.flag);
        EXPECT_EQ(sent[0].word<int32_t>(c.offset), c.value);
        EXPECT_TRUE(siptest::zeroExcept(sent[0], {{0, 4}, {c.offset, 4}}));
    }
    for (const Case &c : cases) {
        int got = -1;
        ASSERT_EQ(getInt(c.handler, 0, &got), 0);
        EXPECT_EQ(got, c.value) << "each attribute kept its own value";
    }
    std::string out = debugOutput([&] { EXPECT_EQ(setInt(Tr104FaxCtrlModeSip, 0, 3), -2); });
    EXPECT_TRUE(printed(out, "Tr104FaxCtrlModeSip", "set FaxCtrlMode param *pFaxCtrlMode=3(0~2)error \n")) << out;
}

TEST_F(SipFax, PassThroughIsTheControlModeAsText) {
    const struct {
        const char *text;
        int mode;
    } cases[] = {{"Force", 0}, {"Disable", 1}, {"Auto", 2}};
    for (const auto &c : cases) {
        ASSERT_EQ(setText(Tr104ProfileFaxPassThroughSip, 0, c.text), 0);
        int mode = -1;
        ASSERT_EQ(getInt(Tr104FaxCtrlModeSip, 0, &mode), 0);
        EXPECT_EQ(mode, c.mode);
        EXPECT_EQ(getText(Tr104ProfileFaxPassThroughSip, 0), c.text);
    }
    std::string out = debugOutput([&] { EXPECT_EQ(setText(Tr104ProfileFaxPassThroughSip, 0, "auto"), -2); });
    EXPECT_TRUE(
        printed(out, "Tr104ProfileFaxPassThroughSip", "set FaxPassThrough param *pFaxPassThrough(auto) error \n"))
        << out;
    Tr104SipFaxModeRecord rec{};
    rec.unFaxCtrlMode = 9;
    emulator.put("sip fax mode", &rec, sizeof(rec));
    char text[16];
    std::memset(text, 'x', sizeof(text));
    EXPECT_EQ(Tr104ProfileFaxPassThroughSip(0, text, nullptr), 0);
    EXPECT_STREQ(text, "");
}

TEST_F(SipFax, VoiceBandDataValues) {
    struct Case {
        const char *name;
        Handler handler;
        size_t offset;
        uint32_t selector;
        std::vector<int> good, bad;
        const char *refused;  // "%d"
    };
    const Case cases[] = {
        {"Tr104VbdEnableSip",
         Tr104VbdEnableSip,
         4,
         1,
         {0, 1},
         {2, -1},
         "set VbdEnable param *pVbdEnable=%d(0~1)error \n"},
        {"Tr104VbdCodecSip",
         Tr104VbdCodecSip,
         8,
         2,
         {0, 4, 8, 18, 255, 300},
         {9, 2, 254, -1},
         "pVbdCodec error  [%d] \n"},
        {"Tr104VbdRxIntervalSip",
         Tr104VbdRxIntervalSip,
         12,
         4,
         {10, 60, 266},
         {9, 61, 0, 256},
         "*pVbdRxInterval [%d]  error \n"},
        {"Tr104VbdTxIntervalSip",
         Tr104VbdTxIntervalSip,
         16,
         8,
         {20, 266, 316},
         {70, 265},
         "*pVbdTxInterval [%d]  error \n"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        for (int value : c.good) {
            SCOPED_TRACE(value);
            restartLog();
            ASSERT_EQ(setInt(c.handler, 0, value), 0);
            const auto sent = seen(1);
            EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(SET_VBD_ID));
            EXPECT_EQ(sent[0].word<uint32_t>(0), c.selector);
            EXPECT_EQ(sent[0].word<int32_t>(c.offset), value) << "sent as it is";
            EXPECT_TRUE(siptest::zeroExcept(sent[0], {{0, 4}, {c.offset, 4}}));
            int got = -1;
            ASSERT_EQ(getInt(c.handler, 0, &got), 0);
            EXPECT_EQ(got, value);
        }
        for (int value : c.bad) {
            SCOPED_TRACE(value);
            char message[64];
            std::snprintf(message, sizeof(message), c.refused, value);
            restartLog();
            std::string out = debugOutput([&] { EXPECT_EQ(setInt(c.handler, 0, value), -2); });
            EXPECT_TRUE(printed(out, c.name, message)) << out;
            EXPECT_EQ(emulator.requestCount(), 0u);
        }
    }
}

}  // namespace
