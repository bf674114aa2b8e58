// Start-up as a whole and the inbound thread: messages pushed by the voice module reach their
// handlers, keep-alives and ignored commands pass silently, errors are reported.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <dirent.h>

#include <atomic>
#include <cstring>
#include <string>

#include "support/channel_fixture.h"
#include "agent_calls.h"
#include "tr104/protocol.h"
#include "tr104/startup.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

int threadCount() {
    int n = 0;
    if (DIR *dir = opendir("/proc/self/task")) {
        while (dirent *e = readdir(dir)) {
            n += e->d_name[0] != '.';
        }
        closedir(dir);
    }
    return n;
}

// Runs Tr104VoiceCfgInit(kind) in a child and returns how many threads it added (or -1).
int threadsStartedBy(int kind) {
    int fds[2];
    if (pipe(fds) != 0) {
        return -1;
    }
    const pid_t child = fork();
    if (child == 0) {
        const int before = threadCount();
        const int rc = Tr104VoiceCfgInit(kind);
        const int added = rc == 0 ? threadCount() - before : -1;
        (void)!write(fds[1], &added, sizeof(added));
        _exit(0);
    }
    close(fds[1]);
    int added = -1;
    (void)!read(fds[0], &added, sizeof(added));
    close(fds[0]);
    waitpid(child, nullptr, 0);
    return added;
}

TEST(Startup, OnlyKindsOneToFourStartTheInboundThread) {
    const int withInbound = threadsStartedBy(1);
    const int withoutInbound = threadsStartedBy(6);
    ASSERT_GE(withoutInbound, 0);
    EXPECT_EQ(withInbound, withoutInbound + 1);
    EXPECT_EQ(threadsStartedBy(7), withoutInbound);
    EXPECT_EQ(threadsStartedBy(4), withInbound);
}

TEST(Startup, UnknownKindReadsAnInboundQueueThatDoesNotExist) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        dup2(fds[1], 1);
        setvbuf(stdout, nullptr, _IONBF, 0);
        Tr104VoiceCfgInit(8);
        pause();
        _exit(0);
    }
    close(fds[1]);
    std::string out;
    char buf[4096];
    const auto deadline = Clock::now() + 30s;
    while (out.find("receive in msg failure.receive in msg failure.") == std::string::npos && Clock::now() < deadline) {
        const ssize_t n = read(fds[0], buf, sizeof(buf));
        if (n <= 0) {
            break;
        }
        out.append(buf, static_cast<size_t>(n));
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(fds[0]);
    EXPECT_NE(out.find("Tr104VoiceMsgQueuesInit failed, module name error!"), std::string::npos);
    EXPECT_NE(out.find("receive in msg failure.receive in msg failure."), std::string::npos);
}

// One started library per process, as in the agent.
class Inbound : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        tr104test::resetChannelGlobals();
        ASSERT_EQ(Tr104VoiceCfgInit(1), 0);
    }
    void SetUp() override {
        gTr104CfgDebug = 0;
        ASSERT_TRUE(emulator.start());
    }
    void TearDown() override { emulator.stop(); }

    void push(uint32_t type, uint32_t cmd, uint32_t word) {
        ASSERT_TRUE(emulator.sendInbound(7, type, cmd, &word, sizeof(word)));
    }
    // Pushes a debug switch and waits until the inbound thread has applied it: everything
    // pushed before it has been handled too (so the switch must change the current value).
    bool pushDebugAndWait(uint32_t word, int expected) {
        push(1, 12, word);
        const auto deadline = Clock::now() + 20s;
        while (gTr104CfgDebug != expected && Clock::now() < deadline) {
            std::this_thread::sleep_for(2ms);
        }
        return gTr104CfgDebug == expected;
    }

    vmemu::VoiceModuleEmulator emulator;
};

TEST_F(Inbound, DebugSwitchFromTheVoiceModule) {
    EXPECT_TRUE(pushDebugAndWait(1, 1));
    EXPECT_TRUE(pushDebugAndWait(2, 0));
    EXPECT_TRUE(pushDebugAndWait(1, 1));
    EXPECT_TRUE(pushDebugAndWait(0, 0));
}

TEST_F(Inbound, IgnoredCommandsAndKeepAlivesAreSilentErrorsAreReported) {
    testing::internal::CaptureStdout();
    push(1, 45, 0);  // ignored command
    push(3, 12, 1);  // keep-alive: not handled even though it names the debug switch
    push(2, 12, 1);  // wrong type: reported and dropped
    push(1, 777, 0);  // unknown command
    ASSERT_TRUE(pushDebugAndWait(1, 1));
    gTr104CfgDebug = 0;
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, "RecvInMsg.cmd_type=2 error.\npVoiceModuleMsg->cmd=777 error.\n");
}

std::atomic<int> gRefreshedWith{-1};
std::atomic<int> gPagesLoaded{0};

TEST_F(Inbound, ProtocolChangeAndDirectoryNumberReachTheirHandlers) {
    ASSERT_EQ(RegisterRefreshVoiceCfgFunc([](int *type) { gRefreshedWith = *type; }), 0);
    ASSERT_EQ(RegisterLoadVoicePagesFunc([] { ++gPagesLoaded; }), 0);
    // Command 3: the second word is the new protocol type; a first word of 1 also refreshes
    // the agent's voice configuration, and the pages are reloaded either way.
    const uint32_t protocol[2] = {1, 4};
    ASSERT_TRUE(emulator.sendInbound(7, 1, 3, protocol, sizeof(protocol)));
    ASSERT_TRUE(pushDebugAndWait(1, 1));
    gTr104CfgDebug = 0;
    EXPECT_EQ(gTr104CurrProtocolType, 4);
    EXPECT_EQ(gRefreshedWith.load(), 4);
    EXPECT_EQ(gPagesLoaded.load(), 1);

    // Under SIP a new directory number is reported to the agent.
    const size_t before = gAgentCalls.size();
    char line[452] = {};
    const uint32_t lineNo = 2;
    std::memcpy(line, &lineNo, 4);
    std::strcpy(line + 8, "88001234");
    ASSERT_TRUE(emulator.sendInbound(7, 1, 16584, line, sizeof(line)));
    ASSERT_TRUE(pushDebugAndWait(1, 1));
    gTr104CfgDebug = 0;
    ASSERT_EQ(gAgentCalls.size(), before + 1);
    EXPECT_EQ(gAgentCalls.back().pairs[0].second, "88001234");

    // Under H.248 the same message is dropped.
    const uint32_t h248[2] = {0, 2};
    ASSERT_TRUE(emulator.sendInbound(7, 1, 3, h248, sizeof(h248)));
    ASSERT_TRUE(emulator.sendInbound(7, 1, 16584, line, sizeof(line)));
    ASSERT_TRUE(pushDebugAndWait(1, 1));
    gTr104CfgDebug = 0;
    EXPECT_EQ(gTr104CurrProtocolType, 2);
    EXPECT_EQ(gRefreshedWith.load(), 4);  // first word 0: no refresh
    EXPECT_EQ(gPagesLoaded.load(), 2);
    EXPECT_EQ(gAgentCalls.size(), before + 1);
    gTr104CurrProtocolType = 0;
}

TEST_F(Inbound, SaveRequestIsSentWithoutWaiting) {
    tr104test::resetChannelGlobals();
    ASSERT_EQ(tr104VoiceMsgQueuesInit(1), 0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(Tr104VoiceCfgSave(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n=====Tr104VoiceCfgSave()=====");
    ASSERT_TRUE(emulator.waitForRequests(1, 10s));
    const vmemu::Request save = emulator.requests()[0];
    EXPECT_EQ(save.cmd, 99u);
    EXPECT_EQ(save.module, 7);
    EXPECT_EQ(std::count(save.payload.begin(), save.payload.end(), 0), 2048);
}

TEST(OmInit, OpensTheLockTheSendQueueAndReplyQueue160Only) {
    tr104test::resetChannelGlobals();
    ASSERT_EQ(VoipOmInit(), 0);
    EXPECT_EQ(gTr104RcvMsgQueueSemId, semget(36, 1, 0));
    EXPECT_EQ(semctl(gTr104RcvMsgQueueSemId, 0, GETVAL), 1);
    EXPECT_EQ(gTr104SndMsgQueueId, msgget(30, 0));
    EXPECT_EQ(gTr104RcvOutMsgQueueId, msgget(160, 0));
    EXPECT_EQ(gTr104RcvInMsgQueueId, -1);
    EXPECT_EQ(gCurrentModule, 7);
    const int out = gTr104RcvOutMsgQueueId;
    ASSERT_EQ(VoipOmInit(), 0);  // what is open stays open
    EXPECT_EQ(gTr104RcvOutMsgQueueId, out);
}

}  // namespace
