// Faults of the voice module and of the callers, one test each, named after the fault.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "sipid/sipid_fixture.h"
#include "support/channel_fixture.h"
#include "tr104.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using tr104test::queueDepth;
using tr104test::semValue;

constexpr uint32_t kTagCmd = 20001;  // a set command no family keeps: the emulator only logs it

// Waits until `done` holds, for at most `limit`.
template <typename F>
bool waitUntil(F done, std::chrono::milliseconds limit = 10s) {
    const auto deadline = Clock::now() + limit;
    while (!done()) {
        if (Clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

// A voice module in a process of its own; `prepare` adjusts it before it serves.
pid_t startVoiceModuleProcess(void (*prepare)(vmemu::VoiceModuleEmulator &)) {
    const pid_t pid = fork();
    if (pid == 0) {
        vmemu::VoiceModuleEmulator emulator;
        if (prepare != nullptr) {
            prepare(emulator);
        }
        if (!emulator.start()) {
            _exit(3);
        }
        for (;;) {
            pause();
        }
    }
    return pid;
}

void killProcess(pid_t pid) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}

// Sends one tagged set (send only); the tag is the payload's first word.
int sendTagged(uint32_t tag) { return sendtr104Msg(kTagCmd, &tag, sizeof(tag)); }

class Faults : public tr104test::ChannelTest {
protected:
    int moduleKind() const override { return 2; }  // module 9: the 0.2 s reply wait
    void SetUp() override {
        resetChannelGlobalsOnly();
        ASSERT_EQ(tr104VoiceMsgQueuesInit(moduleKind()), 0);  // the emulator starts per test
    }
    void TearDown() override {
        emulator.stop();
        setQueueBytes(16384);
    }
    static void resetChannelGlobalsOnly() { tr104test::resetChannelGlobals(); }
    static void setQueueBytes(size_t bytes) {
        msqid_ds ds{};
        msgctl(gTr104SndMsgQueueId, IPC_STAT, &ds);
        ds.msg_qbytes = bytes;
        msgctl(gTr104SndMsgQueueId, IPC_SET, &ds);
    }
    // Tags of the tagged sets the emulator received, in arrival order.
    std::vector<uint32_t> tagsSeen() const {
        std::vector<uint32_t> tags;
        for (const vmemu::Request &r : emulator.requestsFor(kTagCmd)) {
            tags.push_back(r.word<uint32_t>(0));
        }
        return tags;
    }
};

// The dead voice module answered late: its reply lies in the reply queue when a new voice
// module takes over.  The next exchange drops it and takes the new module's answer.
TEST_F(Faults, VoiceModuleKilledAndRestarted) {
    const pid_t dying = startVoiceModuleProcess([](vmemu::VoiceModuleEmulator &e) {
        e.setHandler(TR104_GET_PORT_STATUS_ID, [](const vmemu::Request &, vmemu::Payload &reply) {
            std::strcpy(reply.data() + 360, "stale");  // the profile name of the block
            return true;
        });
        e.setFault(TR104_GET_PORT_STATUS_ID, {vmemu::Fault::Late, 600});
    });
    char status[TR104_PORT_STATUS_LEN] = {};
    EXPECT_EQ(getLineStatus(1, status), -1) << "the late answer comes after the 0.2 s wait";
    ASSERT_TRUE(waitUntil([] { return queueDepth(gTr104RcvOutMsgQueueId) == 1; })) << "the late reply was not queued";
    killProcess(dying);

    const pid_t fresh = startVoiceModuleProcess(nullptr);
    for (int i = 0; i < 3; ++i) {
        std::memset(status, 0, sizeof(status));
        ASSERT_EQ(getLineStatus(1, status), 0) << "call " << i << " after the restart";
        EXPECT_STRNE(status + 360, "stale") << "a reply of the dead voice module was taken";
    }
    EXPECT_EQ(queueDepth(gTr104RcvOutMsgQueueId), 0u);
    EXPECT_EQ(semValue(), 1);
    killProcess(fresh);
}

// A caller blocked inside the exchange (its send waits on a full queue) is killed: the kernel
// undoes its hold on the lock and the next caller goes ahead.
TEST_F(Faults, CallerKilledWhileHoldingTheLock) {
    setQueueBytes(TR104_MSG_TEXT_LEN);  // one request fills the queue
    ASSERT_EQ(sendTagged(1), 0);
    const pid_t caller = fork();
    if (caller == 0) {
        _exit(sendTagged(2) == 0 ? 0 : 1);  // blocks holding the lock
    }
    ASSERT_TRUE(waitUntil([] { return semValue() == 0; })) << "the caller never took the lock";
    killProcess(caller);
    EXPECT_EQ(semValue(), 1) << "the dead caller's lock was not undone";
    ASSERT_TRUE(emulator.start());
    EXPECT_EQ(sendTagged(3), 0);
    ASSERT_TRUE(emulator.waitForRequests(2, 5s));
    EXPECT_EQ(tagsSeen(), (std::vector<uint32_t>{1, 3}));
}

// Nobody reads the send queue: a send waits (blocking, as the channel's protocol has it) and
// goes on when the voice module reads again; nothing is lost or reordered.
TEST_F(Faults, FullSendQueue) {
    for (size_t bytes : {size_t{16384}, size_t{2 * TR104_MSG_TEXT_LEN}}) {
        SCOPED_TRACE(bytes);
        emulator.stop();
        emulator.clearLog();
        setQueueBytes(bytes);
        const uint32_t fits = static_cast<uint32_t>(bytes / TR104_MSG_TEXT_LEN);
        for (uint32_t tag = 1; tag <= fits; ++tag) {
            ASSERT_EQ(sendTagged(tag), 0);
        }
        std::atomic<int> rc{99};
        std::thread blocked([&] { rc = sendTagged(fits + 1); });
        ASSERT_TRUE(waitUntil([] { return semValue() == 0; }));
        std::this_thread::sleep_for(100ms);
        EXPECT_EQ(rc.load(), 99) << "the send did not wait for room";
        ASSERT_TRUE(emulator.start());  // the voice module reads again
        blocked.join();
        EXPECT_EQ(rc.load(), 0);
        ASSERT_TRUE(emulator.waitForRequests(fits + 1, 5s));
        std::vector<uint32_t> expected;
        for (uint32_t tag = 1; tag <= fits + 1; ++tag) {
            expected.push_back(tag);
        }
        EXPECT_EQ(tagsSeen(), expected);
        EXPECT_EQ(semValue(), 1);
    }
}

// Several threads run handlers while the voice module switches the protocol under them.
TEST_F(Faults, ProtocolSwitchWhileHandlersRun) {
    ASSERT_TRUE(emulator.start());
    std::atomic<bool> stop{false};
    std::atomic<int> bad{0}, done{0};
    std::vector<std::thread> callers;
    for (int t = 0; t < 3; ++t) {
        callers.emplace_back([&, t] {
            int line[4] = {0, 1, 1 + t % 2, 0};
            while (!stop) {
                char text[64] = {};
                int word = 0;
                for (int rc : {Tr104LineEnable(0, text, line), Tr104LineCallWaitingFlag(0, &word, line),
                               Tr104FaxT38Enable(0, &word, line)}) {
                    bad += rc != 0 && rc != -1;
                    ++done;
                }
            }
        });
    }
    Tr104Msg msg{};
    for (int i = 0; i < 300; ++i) {
        const int32_t words[2] = {0, i % 3 == 0 ? TR104_PROTOCOL_SIP : i % 3 == 1 ? TR104_PROTOCOL_H248 : 0};
        std::memcpy(msg.rspBuffer, words, sizeof(words));
        Tr104SetProtocolType(&msg);  // what the inbound thread does on the switch message
        std::this_thread::sleep_for(1ms);
    }
    stop = true;
    for (std::thread &c : callers) {
        c.join();
    }
    gTr104CurrProtocolType = 0;
    EXPECT_EQ(bad.load(), 0);
    EXPECT_GT(done.load(), 0);
    EXPECT_EQ(semValue(), 1);
}

// The proxy's address is staged while the voice module does not answer: the slot's timer
// reads the current record to complete it, fails, and frees the slot.  The next group works.
class DeferredFaults : public sipid::DeferredChannelTest {
protected:
    std::vector<int> slots() const override { return {3}; }
};

TEST_F(DeferredFaults, DeferredGroupHalfWrittenWhileTheModuleIsDown) {
    emulator.setFault(0, {vmemu::Fault::Silent});
    ASSERT_EQ(setText(Tr104SipProxyServerIpSip, "lost.example.net"), 0);
    EXPECT_TRUE(emulator.waitForRequests(1, 15s)) << "the timer never tried to complete the group";
    EXPECT_TRUE(awaitIdle(3)) << "the slot stayed busy after the failed apply";
    emulator.clearFaults();
    emulator.clearLog();
    ASSERT_EQ(setText(Tr104SipProxyServerIpSip, "proxy.example.net"), 0);
    ASSERT_EQ(setInt(Tr104SipProxyServerPortSip, 5070), 0);
    const auto sent = served();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].text_at(48, 66), "proxy.example.net");
    EXPECT_EQ(sent[0].word<uint16_t>(118), 5070);
    EXPECT_EQ(semValue(), 1);
}

}  // namespace
