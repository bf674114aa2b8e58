// The handler convention: the common gets, the typed exchange and the debug switch.
#include <algorithm>
#include <cstring>

#include "support/channel_fixture.h"
#include "tr104/notify.h"

namespace {

using namespace std::chrono_literals;
using tr104test::ChannelTest;
using tr104test::semValue;

class Convention : public ChannelTest {};

TEST_F(Convention, CommonGetLimitsOnCommandIdAndLength) {
    struct Case {
        unsigned cmd;
        unsigned len;
        int result;
        const char *message;  // printed on refusal
    };
    const Case cases[] = {
        {20478, 8, 0, nullptr},
        {1, 8, 0, nullptr},
        {20479, 8, -1, "]: nCmdId=0x4fff\n"},
        {0, 8, -1, "]: nCmdId=0x0\n"},
        {100, 0, -1, "]: unCfgBufferLen=0\n"},
        {100, 2047, 0, nullptr},
        {100, 2048, -1, "]: unCfgBufferLen=2048\n"},
    };
    // Command 1 is a set of the voice module (no answer): here it answers like any get.
    emulator.setHandler(1, [](const vmemu::Request &r, vmemu::Payload &reply) {
        reply = r.payload;
        return true;
    });
    size_t sent = 0;
    for (const Case &c : cases) {
        std::vector<char> buffer(4096, 0);
        Tr104Msg msg = request(0);
        testing::internal::CaptureStdout();
        EXPECT_EQ(CfgPreHandleGetParam(&msg, buffer.data(), c.len, c.cmd), c.result) << c.cmd << "/" << c.len;
        const std::string out = testing::internal::GetCapturedStdout();
        if (c.message) {
            EXPECT_NE(out.find(std::string("[CfgPreHandleGetParam,")), std::string::npos) << out;
            EXPECT_NE(out.find(c.message), std::string::npos) << out;
        } else {
            ++sent;
        }
        EXPECT_EQ(emulator.requestCount(), sent) << "a refused get must send nothing";
    }
    Tr104Msg msg = request(0);
    testing::internal::CaptureStdout();
    char buf[4];
    EXPECT_EQ(CfgPreHandleGetParam(nullptr, buf, 4, 5), -1);
    EXPECT_EQ(CfgPreHandleGetParam(&msg, nullptr, 4, 5), -1);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("pIoMsgParam or pCfgBuffer is null!\n"), std::string::npos);
    EXPECT_EQ(semValue(), 1);
}

TEST_F(Convention, CommonGetCopiesBackOnlyTheRequestedLength) {
    emulator.setHandler(300, [](const vmemu::Request &, vmemu::Payload &reply) {
        std::memset(reply.data(), 'R', reply.size());
        return true;
    });
    char buffer[64];
    std::memset(buffer, 'C', sizeof(buffer));
    Tr104Msg msg = request(0);
    ASSERT_EQ(CfgPreHandleGetParam(&msg, buffer, 16, 300), 0);
    EXPECT_EQ(std::string(buffer, 16), std::string(16, 'R'));
    EXPECT_EQ(buffer[16], 'C');
    // Only the first 16 bytes of the buffer travelled as the request.
    auto seen = emulator.requestsFor(300);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].payload[15], 'C');
    EXPECT_EQ(seen[0].payload[16], 0);
}

TEST_F(Convention, StringGetIsAStrncpyOfTheReply) {
    emulator.setHandler(2, [](const vmemu::Request &, vmemu::Payload &reply) {
        std::strcpy(reply.data(), "H.248");
        return true;
    });
    // A buffer larger than the text: the text, then zero padding.
    char big[10];
    std::memset(big, '#', sizeof(big));
    Tr104Msg msg = request(0);
    ASSERT_EQ(CfgPreHandleGetStringParam(&msg, big, sizeof(big), 2), 0);
    EXPECT_STREQ(big, "H.248");
    EXPECT_EQ(big[9], 0);
    // A buffer the text fills: no terminator is added.
    char exact[6] = {'#', '#', '#', '#', '#', '#'};
    Tr104Msg msg2 = request(0);
    ASSERT_EQ(CfgPreHandleGetStringParam(&msg2, exact, 3, 2), 0);
    EXPECT_EQ(std::string(exact, 6), "H.2###");
    // Refusals are silent.
    testing::internal::CaptureStdout();
    Tr104Msg msg3 = request(0);
    EXPECT_EQ(CfgPreHandleGetStringParam(&msg3, exact, 0, 2), -1);
    EXPECT_EQ(CfgPreHandleGetStringParam(&msg3, exact, 6, 20479), -1);
    EXPECT_EQ(CfgPreHandleGetStringParam(&msg3, nullptr, 6, 2), -1);
    EXPECT_EQ(CfgPreHandleGetStringParam(nullptr, exact, 6, 2), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(emulator.requestCount(), 2u);
}

// A reply area without a terminator holds a text of its first 2047 bytes: a caller with room for
// more gets them and a terminator; a shorter buffer is filled as a text that fits fills it.
TEST_F(Convention, StringGetOfAnUnterminatedReplyStaysInsideTheRecord) {
    emulator.setHandler(7, [](const vmemu::Request &, vmemu::Payload &reply) {
        reply.fill('z');
        return true;
    });
    for (const size_t len : {size_t{100}, size_t{TR104_RSP_BUFFER_LEN}, size_t{3000}}) {
        SCOPED_TRACE(len);
        std::vector<char> dst(3100, '#');
        Tr104Msg msg = request(0);
        ASSERT_EQ(CfgPreHandleGetStringParam(&msg, dst.data(), static_cast<unsigned>(len), 7), 0);
        const size_t text = std::min(len, size_t{TR104_RSP_BUFFER_LEN - 1});
        EXPECT_EQ(std::count(dst.begin(), dst.begin() + text, 'z'), static_cast<long>(text));
        EXPECT_EQ(std::count(dst.begin() + text, dst.begin() + len, 0), static_cast<long>(len - text));
        EXPECT_EQ(std::count(dst.begin() + len, dst.end(), '#'), static_cast<long>(dst.size() - len));
    }
}

TEST_F(Convention, TypedExchangeLimits) {
    // Command id range of the typed exchange.
    char block[8] = {};
    EXPECT_EQ(tr104MsgSndAndWaitIfNeedResponse(20480, block, 8, 1), -2);
    EXPECT_EQ(tr104MsgSndAndWaitIfNeedResponse(24575, block, 8, 1), -2);
    EXPECT_EQ(tr104MsgSndAndWaitIfNeedResponse(20481, nullptr, 8, 1), -2);
    EXPECT_EQ(tr104MsgSndAndWaitIfNeedResponse(20481, block, 0, 1), -2);
    EXPECT_EQ(emulator.requestCount(), 0u);
    EXPECT_EQ(tr104MsgSndAndWaitIfNeedResponse(20481, block, 8, 1), 0);
    EXPECT_EQ(tr104MsgSndAndWaitIfNeedResponse(24574, block, 8, 1), 0);
    ASSERT_TRUE(emulator.waitForRequests(2, 10s));

    // Ports 0..2 exist for the typed exchange; value sizes up to 2024 fit a set.
    const uint32_t value = 0x11223344;
    EXPECT_EQ(Tr104SetSimplyDataType(20481, 1, 3, 4, &value), -2);
    EXPECT_EQ(Tr104SetSimplyDataType(20481, 1, 2, 2025, &value), -2);
    EXPECT_EQ(Tr104SetSimplyDataType(20481, 2, 1, 4, &value), -2);  // no such parameter
    EXPECT_EQ(Tr104SetSimplyDataType(20483, 1, 1, 4, &value), -2);  // no such command
    EXPECT_EQ(emulator.requestCount(), 2u);
    std::vector<char> large(2024, 'v');
    EXPECT_EQ(Tr104SetSimplyDataType(20481, 1, 2, 2024, large.data()), 0);
    EXPECT_EQ(Tr104SetSimplyDataType(20481, 1, 2, 4, &value), 0);
    ASSERT_TRUE(emulator.waitForRequests(4, 10s));
}

TEST_F(Convention, TypedSetBlockLayoutAndTypedGet) {
    const uint32_t value = 0xA1B2C3D4;
    ASSERT_EQ(Tr104SetSimplyDataType(20481, 1, 2, 4, &value), 0);
    ASSERT_TRUE(emulator.waitForRequests(1, 10s));
    const vmemu::Request set = emulator.requests()[0];
    EXPECT_EQ(set.cmd, 20481u);
    const uint32_t expectedWords[6] = {20481, 2, 1, 1, 1, 4};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(set.word<uint32_t>(i * 4), expectedWords[i]) << "word " << i;
    }
    EXPECT_EQ(set.word<uint32_t>(24), value);
    EXPECT_EQ(std::count(set.payload.begin() + 28, set.payload.end(), 0), 2048 - 28);

    // The get's reply is copied back over the block, not into the caller's value.
    uint32_t out = 0x55;
    EXPECT_EQ(Tr104SetSimplyDataType(20482, 1, 2, 4, &out), 0);
    EXPECT_EQ(out, 0x55u);
    const auto gets = emulator.requestsFor(20482);
    ASSERT_EQ(gets.size(), 1u);
    EXPECT_EQ(gets[0].word<uint32_t>(4), 2u);
    EXPECT_EQ(gets[0].word<uint32_t>(24), 0u);  // a get carries no value

    // A refused typed get is -1 (the exchange failed).
    emulator.setFault(20482, {vmemu::Fault::FailureMarker, 0, 1});
    EXPECT_EQ(Tr104SetSimplyDataType(20482, 1, 2, 4, &out), -1);
}

TEST(DataTypes, SizesOfTheSevenTypes) {
    const int expected[] = {-1, 1, 1, 4, 4, 4, 0};
    for (int type = 0; type < 7; ++type) {
        EXPECT_EQ(tr104GetVoiceGeneralDataType(type), expected[type]) << type;
    }
    EXPECT_EQ(tr104GetVoiceGeneralDataType(7), -1);
    EXPECT_EQ(tr104GetVoiceGeneralDataType(-3), -1);
}

TEST(DebugSwitch, InboundCommandTurnsDebuggingOnOnlyForOne) {
    Tr104Msg msg{};
    const uint32_t words[] = {1, 2, 0, 1};
    const int expected[] = {1, 0, 0, 1};
    for (size_t i = 0; i < 4; ++i) {
        std::memcpy(msg.rspBuffer, &words[i], 4);
        EXPECT_EQ(Tr104SetDebugLevel(&msg), 0);
        EXPECT_EQ(gTr104CfgDebug, expected[i]) << words[i];
    }
    gTr104CfgDebug = 0;
}

TEST(DebugSwitch, DebugPrintPrefixesModuleProtocolFunctionAndLine) {
    gCurrentModule = 9;
    gTr104CurrProtocolType = 4;
    testing::internal::CaptureStdout();
    Tr104DebugPrint("Tr104LineEnableSip", 123, "param error, nFlag[%d]\n", 5);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n[m:9,p:4][Tr104LineEnableSip,123] param error, nFlag[5]\n");
    gCurrentModule = 7;
    gTr104CurrProtocolType = 0;
}

TEST_F(Convention, TypedExchangeMessagesOnlyWhileDebugging) {
    char block[8] = {};
    testing::internal::CaptureStdout();
    EXPECT_EQ(tr104MsgSndAndWaitIfNeedResponse(20480, block, 8, 1), -2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    gTr104CfgDebug = 1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(tr104MsgSndAndWaitIfNeedResponse(20480, block, 8, 1), -2);
    EXPECT_EQ(Tr104SetSimplyDataType(20481, 1, 3, 4, block), -2);
    const std::string out = testing::internal::GetCapturedStdout();
    gTr104CfgDebug = 0;
    EXPECT_NE(out.find("eCmdId(20480) out of range!\n"), std::string::npos) << out;
    EXPECT_NE(out.find("port no error(3).\n"), std::string::npos) << out;
}

}  // namespace

// This executable, like test programs and tools, provides neither the management agent's
// function nor the board-support one: the library loaded and must skip the calls.
TEST(HostImports, NotificationWithoutAnAgentIsSkipped) {
    char name[] = "InternetGatewayDevice.Services.VoiceService.1.VoiceProfile.1.Line.1.DirectoryNumber";
    char value[] = "1";
    char *names[] = {name};
    char *values[] = {value};
    gTr104CfgDebug = 1;
    testing::internal::CaptureStdout();
    Tr104NotifyChangeValuesToTr069(names, values, 1);
    const std::string out = testing::internal::GetCapturedStdout();
    gTr104CfgDebug = 0;
    EXPECT_NE(out.find("return value = [-1]"), std::string::npos) << out;
}
