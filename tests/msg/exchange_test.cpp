// The locked exchange: stale replies, refusals, give-ups, the lock on every path.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "support/channel_fixture.h"

namespace {

using namespace std::chrono_literals;
using tr104test::ChannelTest;
using tr104test::queueDepth;
using tr104test::semValue;
using Clock = std::chrono::steady_clock;

constexpr uint32_t kPortStatus = 16592;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// A port-status block as the voice module keeps it.
std::array<char, 452> portBlock(uint32_t port, uint32_t profileId, const char *profile) {
    std::array<char, 452> block{};
    std::memcpy(block.data(), &port, 4);
    std::memcpy(block.data() + 356, &profileId, 4);
    std::strcpy(block.data() + 360, profile);
    return block;
}

class Exchange : public ChannelTest {};

// Holds the channel lock as another process would, for the life of the object.
class LockHeldElsewhere {
public:
    LockHeldElsewhere() {
        sembuf take{0, -1, 0};
        taken_ = semop(gTr104RcvMsgQueueSemId, &take, 1) == 0;
    }
    ~LockHeldElsewhere() {
        sembuf give{0, 1, 0};
        if (taken_) {
            semop(gTr104RcvMsgQueueSemId, &give, 1);
        }
    }
    bool taken() const { return taken_; }

private:
    bool taken_ = false;
};

TEST_F(Exchange, GetReturnsTheReplyLengthAndCopiesOnlyTypeCommandAndReplyArea) {
    auto block = portBlock(1, 3, "port1");
    emulator.put("port status", block.data(), block.size());
    Tr104Msg msg = request(kPortStatus);
    uint32_t port = 1;
    std::memcpy(msg.cfgBuffer, &port, 4);
    std::memset(msg.cfgBuffer + 1000, 0x77, 8);  // the reply's copy of cfgBuffer is not taken back
    msg.rspBuffer[0] = 'x';
    ASSERT_EQ(msgSndAndRcvSem(&msg, 0), 4100);
    EXPECT_EQ(msg.cmd_type, 1u);
    EXPECT_EQ(msg.cmd, kPortStatus);
    EXPECT_EQ(std::memcmp(msg.rspBuffer, block.data(), block.size()), 0);
    EXPECT_EQ(msg.cfgBuffer[1000], 0x77);
    EXPECT_EQ(semValue(), 1);

    // The request as the voice module saw it: module 7, the command, a zero reply area.
    auto seen = emulator.requestsFor(kPortStatus);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].module, 7);
    EXPECT_EQ(seen[0].word<uint32_t>(0), 1u);
    EXPECT_EQ(std::count(seen[0].reply.begin(), seen[0].reply.end(), 0), 2048);
}

TEST_F(Exchange, StaleRepliesAreDrainedBeforeTheRequestGoesOut) {
    Tr104WireMsg stale{};
    stale.mtype = 1;
    const uint32_t staleCmd = kPortStatus;
    std::memcpy(stale.text, &staleCmd, 4);
    std::memset(stale.text + TR104_TEXT_RSP_OFFSET, 'S', 100);
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(msgsnd(gTr104RcvOutMsgQueueId, &stale, TR104_MSG_TEXT_LEN, IPC_NOWAIT), 0);
    }
    ASSERT_EQ(queueDepth(gTr104RcvOutMsgQueueId), 3u);

    auto block = portBlock(2, 9, "fresh");
    emulator.put("port status", block.data(), block.size());
    char status[452] = {};
    ASSERT_EQ(getLineStatus(2, status), 0);
    EXPECT_STREQ(status + 360, "fresh");
    EXPECT_EQ(queueDepth(gTr104RcvOutMsgQueueId), 0u);
}

TEST_F(Exchange, RepliesThatDoNotAnswerTheRequestAreRefusedByBothGets) {
    for (vmemu::Fault fault : {vmemu::Fault::WrongCmd, vmemu::Fault::WrongType}) {
        emulator.setFault(kPortStatus, {fault, 0, -1});
        Tr104Msg msg = request(0);
        uint32_t block[113] = {1};
        testing::internal::CaptureStdout();
        EXPECT_EQ(CfgPreHandleGetParam(&msg, block, sizeof(block), kPortStatus), -1) << vmemu::faultName(fault);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_NE(out.find("]: err, cmd_type="), std::string::npos) << out;
        EXPECT_EQ(block[0], 1u);  // the caller's buffer is left alone

        Tr104Msg smsg = request(0);
        char text[16] = "untouched";
        EXPECT_EQ(CfgPreHandleGetStringParam(&smsg, text, sizeof(text), kPortStatus), -1);
        EXPECT_STREQ(text, "untouched");
        EXPECT_EQ(semValue(), 1);
    }
}

TEST_F(Exchange, FailureMarkerIsThirteenFFAndAZeroByteComparedAsAString) {
    emulator.setFault(kPortStatus, {vmemu::Fault::FailureMarker, 0, 1});
    Tr104Msg msg = request(kPortStatus);
    EXPECT_EQ(msgSndAndRcvSem(&msg, 0), -1);
    EXPECT_EQ(msg.cmd_type, 1u);  // the reply was taken back all the same
    EXPECT_EQ(semValue(), 1);

    // Fourteen 0xFF bytes are a different string: an ordinary reply.
    emulator.setHandler(kPortStatus, [](const vmemu::Request &, vmemu::Payload &reply) {
        std::memset(reply.data(), 0xFF, 14);
        return true;
    });
    Tr104Msg msg2 = request(kPortStatus);
    EXPECT_EQ(msgSndAndRcvSem(&msg2, 0), 4100);

    // Twelve 0xFF bytes and a zero byte are not the marker either.
    emulator.setHandler(kPortStatus, [](const vmemu::Request &, vmemu::Payload &reply) {
        std::memset(reply.data(), 0xFF, 12);
        return true;
    });
    Tr104Msg msg3 = request(kPortStatus);
    EXPECT_EQ(msgSndAndRcvSem(&msg3, 0), 4100);
}

TEST_F(Exchange, SendOnlyReturnsZeroAndWaitsForNothing) {
    emulator.setFault(0, {vmemu::Fault::Silent, 0, -1});
    Tr104Msg msg = request(16594);
    msg.cfgBuffer[0] = 2;
    const auto start = Clock::now();
    EXPECT_EQ(msgSndAndRcvSem(&msg, 1), 0);
    EXPECT_LT(secondsSince(start), 0.8);  // a waited exchange would poll for a second
    ASSERT_TRUE(emulator.waitForRequests(1, 10s));
    EXPECT_EQ(emulator.requests()[0].cmd, 16594u);
    EXPECT_EQ(msg.cmd_type, 7u);  // nothing copied back
    EXPECT_EQ(semValue(), 1);
}

TEST_F(Exchange, BadArgumentsFailBeforeTheLockIsTouched) {
    // Hold the lock: a call that touched it would wait 5 s.
    LockHeldElsewhere lock;
    ASSERT_TRUE(lock.taken());
    Tr104Msg msg = request(kPortStatus);
    testing::internal::CaptureStdout();
    const auto start = Clock::now();
    EXPECT_EQ(msgSndAndRcvSem(&msg, 2), -1);
    EXPECT_EQ(msgSndAndRcvSem(nullptr, 0), -1);
    EXPECT_LT(secondsSince(start), 2.0);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("\n msgSndAndRcvSem - ifNeedResponse [2] is error\n"), std::string::npos);
    EXPECT_NE(out.find("\n msgSndAndRcvSem - pIoSemMsgPara is null"), std::string::npos);
    EXPECT_EQ(semValue(), 0);
    EXPECT_EQ(emulator.requestCount(), 0u);
}

TEST_F(Exchange, LockHeldElsewhereGivesUpAfterFiveSeconds) {
    LockHeldElsewhere lock;
    ASSERT_TRUE(lock.taken());
    Tr104Msg msg = request(kPortStatus);
    testing::internal::CaptureStdout();
    const auto start = Clock::now();
    EXPECT_EQ(msgSndAndRcvSem(&msg, 0), -1);
    const double waited = secondsSince(start);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_GE(waited, 4.5);
    EXPECT_LT(waited, 30.0);
    EXPECT_NE(out.find("\r\n semtimedop wait for 5s."), std::string::npos) << out;
    EXPECT_NE(out.find("\n msgSndAndRcvSem - decrSem fail"), std::string::npos) << out;
    EXPECT_EQ(semValue(), 0);  // still the other holder's
    EXPECT_EQ(emulator.requestCount(), 0u);
}

TEST_F(Exchange, LockIsFreeAfterSendAndDrainFailures) {
    Tr104Msg noSendQueue = request(kPortStatus);
    noSendQueue.sndQueueId = -1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(msgSndAndRcvSem(&noSendQueue, 0), -1);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("\n msgSndAndRcvSem - msg send  fail"), std::string::npos) << out;
    EXPECT_EQ(semValue(), 1);

    Tr104Msg noReplyQueue = request(kPortStatus);
    noReplyQueue.rcvQueueId = -1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(msgSndAndRcvSem(&noReplyQueue, 0), -1);
    out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("\rget message queue configuration failed."), std::string::npos) << out;
    EXPECT_NE(out.find("\n msgSndAndRcvSem - clearMsgQueue fail"), std::string::npos) << out;
    EXPECT_EQ(semValue(), 1);
    EXPECT_EQ(emulator.requestCount(), 0u);
}

// A process that dies holding the lock gives it back (undo on exit).
TEST_F(Exchange, LockTakenByAProcessThatIsKilledIsReleased) {
    emulator.setFault(kPortStatus, {vmemu::Fault::Silent, 0, 1});
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        Tr104Msg msg = request(kPortStatus);
        msgSndAndRcvSem(&msg, 0);  // polls for about a second with the lock held
        _exit(0);
    }
    // Wait until the child holds the lock and its request is out, then kill it.
    ASSERT_TRUE(emulator.waitForRequests(1, 20s));
    EXPECT_EQ(semValue(), 0);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(semValue(), 1);
    char block[452] = {};
    EXPECT_EQ(getLineStatus(1, block), 0);
}

TEST_F(Exchange, SilentVoiceModuleCostsTheLongWaitForModule7) {
    emulator.setFault(0, {vmemu::Fault::Silent, 0, -1});
    Tr104Msg msg = request(kPortStatus);
    std::memset(msg.cfgBuffer, 0x42, 16);
    testing::internal::CaptureStdout();
    const auto start = Clock::now();
    EXPECT_EQ(msgSndAndRcvSem(&msg, 0), -1);
    const double waited = secondsSince(start);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_GE(waited, 0.9);  // 50 pauses of 20 ms
    EXPECT_LT(waited, 20.0);
    EXPECT_EQ(msg.cmd_type, 7u);
    EXPECT_EQ(msg.cmd, kPortStatus);
    EXPECT_EQ(std::count(msg.rspBuffer, msg.rspBuffer + 2048, 0), 2048);
    EXPECT_NE(out.find("cmd_type(7) cmd(16592) nReturnValue=-1, time=252\n"), std::string::npos) << out;
    EXPECT_EQ(semValue(), 1);
}

class ShortWaitExchange : public ChannelTest {
protected:
    int moduleKind() const override { return 2; }  // module 9
};

TEST_F(ShortWaitExchange, SilentVoiceModuleCostsAboutAFifthOfASecond) {
    emulator.setFault(0, {vmemu::Fault::Silent, 0, -1});
    Tr104Msg msg = request(kPortStatus);
    testing::internal::CaptureStdout();
    const auto start = Clock::now();
    EXPECT_EQ(msgSndAndRcvSem(&msg, 0), -1);
    const double waited = secondsSince(start);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_GE(waited, 0.18);  // 10 pauses of 20 ms
    EXPECT_LT(waited, 0.9);  // well short of the long wait's 50 pauses
    EXPECT_EQ(msg.cmd_type, 9u);
    EXPECT_NE(out.find("cmd_type(9) cmd(16592) nReturnValue=-1, time=52\n"), std::string::npos) << out;

    // The reply queue of module 9 is 160: a late answer lands there and is drained next time.
    emulator.clearFaults();
    emulator.setFault(kPortStatus, {vmemu::Fault::Late, 1500, 1});
    Tr104Msg late = request(kPortStatus);
    testing::internal::CaptureStdout();
    EXPECT_EQ(msgSndAndRcvSem(&late, 0), -1);
    testing::internal::GetCapturedStdout();
    // Wait for the late reply to arrive, then make sure the next exchange is not fooled by it.
    const auto deadline = Clock::now() + 20s;
    while (queueDepth(gTr104RcvOutMsgQueueId) == 0 && Clock::now() < deadline) {
        std::this_thread::sleep_for(5ms);
    }
    ASSERT_EQ(queueDepth(gTr104RcvOutMsgQueueId), 1u);
    emulator.setHandler(kPortStatus, [](const vmemu::Request &, vmemu::Payload &reply) {
        std::strcpy(reply.data(), "second");
        return true;
    });
    Tr104Msg next = request(kPortStatus);
    ASSERT_EQ(msgSndAndRcvSem(&next, 0), 4100);
    EXPECT_STREQ(next.rspBuffer, "second");
}

class NoReplyQueueModule : public ChannelTest {
protected:
    int moduleKind() const override { return 5; }  // module 13: no reply queue
};

TEST_F(NoReplyQueueModule, ExchangesFailAtTheDrainAndNothingIsSent) {
    // Modules without a reply queue cannot drain one: gets and sets alike fail, lock freed.
    char block[452] = {};
    testing::internal::CaptureStdout();
    EXPECT_EQ(getLineStatus(1, block), -1);
    EXPECT_EQ(sendtr104Msg(16594, block, 8), -1);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("clearMsgQueue fail"), std::string::npos) << out;
    EXPECT_EQ(semValue(), 1);
    EXPECT_EQ(gCurrentModule, 13);
    EXPECT_EQ(emulator.requestCount(), 0u);
}

}  // namespace

namespace {

// A long-running emulator keeps only the most recent requests but counts them all.
TEST_F(Exchange, EmulatorLogIsBoundedButCountsEveryRequest) {
    emulator.setLogLimit(2);
    for (uint32_t port = 1; port <= 3; ++port) {
        char block[452] = {};
        ASSERT_EQ(getLineStatus(static_cast<int>(port), block), 0);
    }
    EXPECT_EQ(emulator.requestCount(), 3u);
    EXPECT_TRUE(emulator.waitForRequests(3, 1s));
    const auto kept = emulator.requests();
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[0].word<uint32_t>(0), 2u);
    EXPECT_EQ(kept[1].word<uint32_t>(0), 3u);
    emulator.clearLog();
    EXPECT_EQ(emulator.requestCount(), 0u);
}

}  // namespace
