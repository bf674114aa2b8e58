// The codec list of a line: stored in the library, applied at once to the voice profile of the
// line's port; and the codecs the device supports, and the parameters it does not provide.
#include "device_fixture.h"

namespace {

using devicetest::DeviceTest;
using siptest::debugOutput;
using siptest::Handler;
using siptest::printed;

class CodecList : public DeviceTest {
protected:
    void SetUp() override {
        DeviceTest::SetUp();
        gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
    }
    int *entry(int line, int k) {
        locate_ = {0, 1, line, k};
        return locate_.data();
    }
    int setCodec(int line, int k, const char *name) {
        std::string text(name);
        return Tr104LineCodecListType(1, text.data(), entry(line, k));
    }
    int setItem(Handler h, int line, int k, int value) { return h(1, &value, entry(line, k)); }
    int getItem(Handler h, int line, int k) {
        int value = -99;
        EXPECT_EQ(h(0, &value, entry(line, k)), 0);
        return value;
    }
    std::string codecOf(int line, int k) {
        char text[32] = {};
        EXPECT_EQ(Tr104LineCodecListType(0, text, entry(line, k)), 0);
        return text;
    }
    // What the voice module runs, once every set sent so far has been served.
    std::vector<int> running(int line) {
        sync();
        return vmemu::codecSelection(emulator, line);
    }
    void sync() {
        char status[TR104_PORT_STATUS_LEN];
        EXPECT_EQ(getLineStatus(1, status), 0);
    }
};

TEST_F(CodecList, WritesReachTheRunningProfile) {
    // The first write finds no profile on the port: "port1" is created, set and bound at once.
    ASSERT_EQ(setCodec(1, 1, "G.729"), 0);
    auto sent = seen(2);
    EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(GET_PORT_STATUS_ID));
    EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(CREATE_SET_BIND_PROFILE_ID));
    EXPECT_EQ(sent[1].text_at(2, 22), "port1");
    EXPECT_EQ(sent[1].word<uint32_t>(24), static_cast<uint32_t>(TR104_PROFILE_CODEC));
    EXPECT_EQ(sent[1].word<uint8_t>(28), 18u);
    EXPECT_EQ(sent[1].word<uint8_t>(29), 0xFFu);
    EXPECT_EQ(running(1), (std::vector<int>{18}));

    // Later writes change the bound profile; the selection follows the priorities.
    ASSERT_EQ(setCodec(1, 2, "g.711alaw"), 0) << "codec names are matched without regard to case";
    ASSERT_EQ(setCodec(1, 3, "G.711MuLaw"), 0);
    EXPECT_EQ(running(1), (std::vector<int>{18, 8, 0})) << "equal priorities keep list order";
    ASSERT_EQ(setItem(Tr104LineCodecListPriority, 1, 1, 3), 0);
    ASSERT_EQ(setItem(Tr104LineCodecListPriority, 1, 3, 1), 0);
    EXPECT_EQ(running(1), (std::vector<int>{8, 0, 18}));
    ASSERT_EQ(setItem(Tr104LineCodecListEnable, 1, 2, 0), 0);
    EXPECT_EQ(running(1), (std::vector<int>{0, 18}));
    char used[32] = {};
    ASSERT_EQ(Tr104LineCodecUsed(0, used, entry(1, 0)), 0);
    EXPECT_STREQ(used, "G.711MuLaw");

    restartLog();
    ASSERT_EQ(setItem(Tr104LineCodecListPacketizationPeriod, 1, 3, 30), 0);
    sent = seen(2);
    EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(SET_PROFILE_CMD_ID));
    EXPECT_EQ(sent[1].text_at(2, 22), "port1");
    EXPECT_EQ(sent[1].word<uint32_t>(24), static_cast<uint32_t>(TR104_PROFILE_PACKETIZATION));
    EXPECT_TRUE(siptest::zeroExcept(sent[1], {{2, 22}, {24, 4}, {45, 1}}));
    ASSERT_EQ(setItem(Tr104LineCodecListSilenceSuppression, 1, 1, 1), 0);
    sync();
    EXPECT_EQ(vmemu::profilePacketization(emulator, 1), 30);
    EXPECT_EQ(vmemu::profileSilenceSuppression(emulator, 1), 1);
    for (int k = 1; k <= TR104_CODEC_LIST_ENTRIES; ++k) {
        SCOPED_TRACE(k);
        EXPECT_EQ(getItem(Tr104LineCodecListPacketizationPeriod, 1, k), 30) << "one period per line";
        EXPECT_EQ(getItem(Tr104LineCodecListSilenceSuppression, 1, k), 1);
    }
    EXPECT_EQ(codecOf(1, 2), "G.711ALaw");
    EXPECT_EQ(getItem(Tr104LineCodecListBitRate, 1, 1), 8000);
    EXPECT_EQ(getItem(Tr104LineCodecListBitRate, 1, 4), 0) << "no codec, no rate";
    EXPECT_EQ(getItem(Tr104LineCodecListEnable, 1, 2), 0);
    EXPECT_EQ(getItem(Tr104LineCodecListPriority, 1, 1), 3);
    const CodecListUnit &e = gCodecListUnit[TR104_CODEC_LIST_INDEX(1, 1)];
    EXPECT_EQ(e.unChangeMask, 0x1u | TR104_CODEC_CHANGE_PRIORITY | 0x10u);
    EXPECT_TRUE(running(2).empty()) << "line 2 is untouched";
}

TEST_F(CodecList, ChangesThatCannotBeAppliedAnswerMinusOne) {
    ASSERT_EQ(setCodec(2, 1, "G.729"), 0);
    ASSERT_EQ(setCodec(2, 2, "G.722"), 0);
    // The same codec twice on the line: in an empty entry, or replacing another codec.
    for (int k : {3, 2}) {
        SCOPED_TRACE(k);
        restartLog();
        EXPECT_EQ(setCodec(2, k, "G.729"), -1);
        expectNothingSent();
    }
    ASSERT_EQ(setItem(Tr104LineCodecListEnable, 2, 2, 0), 0);
    ASSERT_EQ(setCodec(2, 2, "G.729"), 0) << "a disabled entry may repeat a codec";
    EXPECT_EQ(setItem(Tr104LineCodecListEnable, 2, 2, 1), -1) << "but not be enabled";
    restartLog();
    const std::string out = debugOutput([&] { EXPECT_EQ(setItem(Tr104LineCodecListEnable, 2, 1, 0), -1); });
    EXPECT_TRUE(printed(out, "Tr104LineCodecListEnable", "no codec would be left")) << out;
    EXPECT_EQ(setCodec(2, 1, ""), -1) << "clearing the last codec";
    expectNothingSent();
    EXPECT_EQ(getItem(Tr104LineCodecListEnable, 2, 1), 1);
    EXPECT_EQ(codecOf(2, 1), "G.729");

    // Not under SIP: no profile record carries the codecs.
    restartLog();
    for (int protocol : {TR104_PROTOCOL_H248, TR104_PROTOCOL_NONE}) {
        gTr104CurrProtocolType = protocol;
        EXPECT_EQ(setCodec(2, 3, "G.711MuLaw"), -1);
        EXPECT_EQ(codecOf(2, 3), "");
    }
    expectNothingSent();
    gTr104CurrProtocolType = TR104_PROTOCOL_SIP;

    // The voice module cannot be reached: the list keeps its value.
    emulator.setFault(GET_PORT_STATUS_ID, {vmemu::Fault::FailureMarker, 0, 1});
    EXPECT_EQ(setItem(Tr104LineCodecListPriority, 2, 1, 4), -1);
    EXPECT_EQ(getItem(Tr104LineCodecListPriority, 2, 1), 0);
    EXPECT_EQ(running(2), (std::vector<int>{18}));
}

TEST_F(CodecList, BadArgumentsSendNothing) {
    char text[32] = "G.729";
    int value = 20;
    const struct {
        Handler handler;
        int nFlag;
        void *pValue;
        int line, k;
        const char *message;
    } cases[] = {
        {Tr104LineCodecListType, 1, text, 3, 1, "param error, nLocate[2]=3\n"},
        {Tr104LineCodecListType, 1, text, 1, 0, "param error, nLocate[3]=0\n"},
        {Tr104LineCodecListType, 1, text, 1, 6, "param error, nLocate[3]=6\n"},
        {Tr104LineCodecListType, 1, nullptr, 1, 1, "param error, pCodecType is null\n"},
        {Tr104LineCodecListType, 2, text, 1, 1, "param error, nFlag[2]\n"},
        {Tr104LineCodecListBitRate, 1, &value, 1, 1, "param error, nFlag[1]\n"},
        {Tr104LineCodecUsed, 1, text, 1, 1, "param error, nFlag[1]\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.message);
        const std::string out = debugOutput([&] { EXPECT_EQ(c.handler(c.nFlag, c.pValue, entry(c.line, c.k)), -2); });
        EXPECT_NE(out.find(c.message), std::string::npos) << out;
    }
    const struct {
        Handler handler;
        int value;
    } ranges[] = {
        {Tr104LineCodecListPacketizationPeriod, 9},
        {Tr104LineCodecListPacketizationPeriod, 61},
        {Tr104LineCodecListSilenceSuppression, 2},
        {Tr104LineCodecListEnable, -1},
        {Tr104LineCodecListPriority, 0},
    };
    for (const auto &r : ranges) {
        SCOPED_TRACE(r.value);
        EXPECT_EQ(setItem(r.handler, 1, 1, r.value), -2);
    }
    EXPECT_EQ(setItem(Tr104LineCodecListPacketizationPeriod, 1, 1, 10), 0);
    EXPECT_EQ(setItem(Tr104LineCodecListPacketizationPeriod, 1, 1, 60), 0);
    restartLog();
    std::strcpy(text, "G.711");
    EXPECT_EQ(Tr104LineCodecListType(1, text, entry(1, 1)), -2);
    expectNothingSent();
}

TEST_F(CodecList, SupportedCodecsAndParametersNotProvided) {
    const struct {
        int k;
        const char *name;
        int rate;
    } codecs[] = {{1, "G.711MuLaw", 64000},
                  {2, "G.723.1", 5300},
                  {3, "G.711ALaw", 64000},
                  {4, "G.722", 64000},
                  {5, "G.729", 8000}};
    for (const auto &c : codecs) {
        SCOPED_TRACE(c.k);
        int at[4] = {0, c.k, 0, 0};
        char text[32] = {};
        int value = 0;
        EXPECT_EQ(Tr104CodecType(0, text, at), 0);
        EXPECT_STREQ(text, c.name);
        EXPECT_EQ(Tr104CodecBitRate(0, &value, at), 0);
        EXPECT_EQ(value, c.rate);
        EXPECT_EQ(Tr104CodecPacketizationPeriod(0, text, at), 0);
        EXPECT_STREQ(text, "10-60");
        EXPECT_EQ(Tr104CodecSilenceSuppression(0, &value, at), 0);
        EXPECT_EQ(value, 1);
    }
    int bad[4] = {0, 6, 0, 0};
    int value = 0;
    EXPECT_EQ(Tr104CodecBitRate(0, &value, bad), -2);
    EXPECT_EQ(Tr104CodecBitRate(1, &value, entry(1, 1)), -2);

    const struct {
        Handler handler;
        const char *name;
    } absent[] = {{Tr104SessionStartTime, "Tr104SessionStartTime"},
                  {Tr104SessionEndTime, "Tr104SessionEndTime"},
                  {Tr104SessionDuration, "Tr104SessionDuration"},
                  {[](int f, void *v, int *) { return Tr104SipSessionTimerSessionExpires(f, v); },
                   "Tr104SipSessionTimerSessionExpires"},
                  {[](int f, void *v, int *) { return Tr104IADDiagnosticsState(f, v); }, "Tr104IADDiagnosticsState"},
                  {Tr104LineSessionTimerFlag, "Tr104LineSessionTimerFlag"}};
    restartLog();
    for (const auto &a : absent) {
        SCOPED_TRACE(a.name);
        const std::string out = debugOutput([&] { EXPECT_EQ(a.handler(0, &value, entry(1, 1)), -1); });
        EXPECT_TRUE(printed(out, a.name, "does not provide the parameter")) << out;
        EXPECT_EQ(a.handler(0, nullptr, entry(1, 1)), -2);
    }
    EXPECT_EQ(Tr104SessionStartTime(0, &value, entry(3, 1)), -2);
    expectNothingSent();
}

}  // namespace
