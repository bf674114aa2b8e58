// The deferred parameter buffer with the runtime's real watchdog: groups applied at once when
// complete, or by the slot's timer 5 s after the first parameter.
#include <cstring>

#include "support/channel_fixture.h"
#include "tr104/startup.h"
#include "v2lin/v2lin.h"

namespace {

using namespace std::chrono_literals;
using tr104test::ChannelTest;
using Clock = std::chrono::steady_clock;

constexpr int kSlot = 3;  // the proxy group: address (bit 0) and port (bit 1)
constexpr uint32_t kGetProxy = 16393;
constexpr uint32_t kSetProxy = 16392;
constexpr size_t kHostOffset = 48;
constexpr size_t kPortOffset = 118;

// The proxy group's apply step as its handlers do it: an incomplete group is completed from
// the voice module's current record, then the record is sent.
int applyProxy(Tr104Msg *msg, void *staged) {
    char record[276] = {};
    const uint16_t flags = getTr104CfgParamInfoCfgFlag(kSlot);
    if ((flags & 3) != 3) {
        if (CfgPreHandleGetParam(msg, record, sizeof(record), kGetProxy) != 0) {
            return -1;
        }
    }
    const char *in = static_cast<const char *>(staged);
    if (flags & 1) {
        std::memcpy(record + kHostOffset, in + kHostOffset, 66);
    }
    if (flags & 2) {
        std::memcpy(record + kPortOffset, in + kPortOffset, 2);
    }
    return sendtr104Msg(kSetProxy, record, sizeof(record));
}

int failingApply(Tr104Msg *, void *) { return -1; }

class Deferred : public ChannelTest {
protected:
    void SetUp() override {
        ChannelTest::SetUp();
        static const bool runtimeStarted = [] { return v2lin_init() == 0 && constructTr104CfgParamInfo() == 0; }();
        ASSERT_TRUE(runtimeStarted);
        saved_ = gTr104CfgParamInfo[kSlot].timeroutFuncHandle;
        gTr104CfgParamInfo[kSlot].timeroutFuncHandle = applyProxy;
        resetTr104CfgParamInfo(kSlot);

        // The voice module's current proxy record.
        char current[276] = {};
        std::strcpy(current + kHostOffset, "old.example.net");
        const uint16_t port = 5060;
        std::memcpy(current + kPortOffset, &port, 2);
        emulator.setHandler(kGetProxy, [current](const vmemu::Request &, vmemu::Payload &reply) {
            std::memcpy(reply.data(), current, sizeof(current));
            return true;
        });
    }
    void TearDown() override {
        resetTr104CfgParamInfo(kSlot);
        gTr104CfgParamInfo[kSlot].timeroutFuncHandle = saved_;
        ChannelTest::TearDown();
    }

    // What a set handler does: stage the field, set its bit, hand over to the buffer.
    int stageHost(const char *host) {
        char *buffer = static_cast<char *>(getTr104CfgParamInfoParamBuffer(kSlot));
        std::strncpy(buffer + kHostOffset, host, 65);
        appendTr104CfgParamInfoCfgFlag(kSlot, 1);
        Tr104Msg msg = request(0);
        return tr104CfgParamHandleByTimer(kSlot, &msg, buffer);
    }
    int stagePort(uint16_t port) {
        char *buffer = static_cast<char *>(getTr104CfgParamInfoParamBuffer(kSlot));
        std::memcpy(buffer + kPortOffset, &port, 2);
        appendTr104CfgParamInfoCfgFlag(kSlot, 2);
        Tr104Msg msg = request(0);
        return tr104CfgParamHandleByTimer(kSlot, &msg, buffer);
    }

    Tr104CfgApplyFunc saved_ = nullptr;
};

TEST_F(Deferred, IncompleteGroupIsAppliedByItsTimerFromTheCurrentRecord) {
    const auto start = Clock::now();
    ASSERT_EQ(stagePort(5070), 0);
    EXPECT_EQ(gTr104CfgParamInfo[kSlot].timerStarted, 1);
    EXPECT_EQ(emulator.requestCount(), 0u);  // nothing sent at once

    ASSERT_TRUE(emulator.waitForRequests(2, 30s));
    EXPECT_GE(std::chrono::duration<double>(Clock::now() - start).count(), 4.5);
    const auto seen = emulator.requests();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].cmd, kGetProxy);
    EXPECT_EQ(seen[1].cmd, kSetProxy);
    EXPECT_EQ(seen[1].text_at(kHostOffset, 66), "old.example.net");  // merged from the current record
    EXPECT_EQ(seen[1].word<uint16_t>(kPortOffset), 5070);  // the staged port
    // The slot is idle again.
    const auto deadline = Clock::now() + 10s;
    while (gTr104CfgParamInfo[kSlot].timerStarted != 0 && Clock::now() < deadline) {
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_EQ(gTr104CfgParamInfo[kSlot].timerStarted, 0);
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);
}

TEST_F(Deferred, CompleteGroupIsSentAtOnceAndItsTimerCancelled) {
    ASSERT_EQ(stageHost("first.example.net"), 0);
    ASSERT_EQ(stageHost("proxy.example.net"), 0);  // the same bit again: the later value counts
    EXPECT_EQ(emulator.requestCount(), 0u);
    ASSERT_EQ(stagePort(5080), 0);
    ASSERT_TRUE(emulator.waitForRequests(1, 10s));
    EXPECT_EQ(gTr104CfgParamInfo[kSlot].timerStarted, 0);
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);

    std::this_thread::sleep_for(6s);  // past the timer's 5 s: no second send may appear
    const auto seen = emulator.requests();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].cmd, kSetProxy);
    EXPECT_EQ(seen[0].text_at(kHostOffset, 66), "proxy.example.net");
    EXPECT_EQ(seen[0].word<uint16_t>(kPortOffset), 5080);
}

TEST_F(Deferred, FailedApplyReturnsMinusOneAndLeavesTheSlotIdle) {
    gTr104CfgParamInfo[kSlot].timeroutFuncHandle = failingApply;
    ASSERT_EQ(stageHost("a.example.net"), 0);
    EXPECT_EQ(stagePort(1), -1);
    EXPECT_EQ(gTr104CfgParamInfo[kSlot].timerStarted, 0);
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);
    const char *buffer = static_cast<const char *>(getTr104CfgParamInfoParamBuffer(kSlot));
    EXPECT_EQ(std::count(buffer, buffer + 2048, 0), 2048);
}

TEST_F(Deferred, SlotsOutsideTheTableChangeNothing) {
    for (int slot : {20, 21, 100, -1}) {
        EXPECT_EQ(getTr104CfgParamInfoCfgFlag(slot), 0);
        EXPECT_EQ(getTr104CfgParamInfoParamBuffer(slot), nullptr);
        appendTr104CfgParamInfoCfgFlag(slot, 0xFFFF);
        resetTr104CfgParamInfo(slot);
        Tr104Msg msg = request(0);
        EXPECT_EQ(tr104CfgParamHandleByTimer(slot, &msg, nullptr), -1);
    }
    for (int slot = 0; slot < TR104_CFG_PARAM_SLOTS; ++slot) {
        EXPECT_EQ(gTr104CfgParamInfo[slot].cfgFlag, 0) << slot;
    }
}

TEST_F(Deferred, TheGroupsAndTheirSizes) {
    const int counts[TR104_CFG_PARAM_SLOTS] = {3, 2, 2, 2, 2, 2, 6, 6, 2, 2};
    for (int slot = 0; slot < TR104_CFG_PARAM_SLOTS; ++slot) {
        EXPECT_EQ(gTr104CfgParamInfo[slot].paramCount, counts[slot]) << slot;
        EXPECT_NE(gTr104CfgParamInfo[slot].wdId, nullptr) << slot;
    }
    EXPECT_EQ(gTr104CfgParamTimeout, 5000);
    // A slot without a group has nothing to wait for and nothing to apply.
    Tr104Msg msg = request(0);
    EXPECT_EQ(tr104CfgParamHandleByTimer(12, &msg, getTr104CfgParamInfoParamBuffer(12)), 0);
    EXPECT_EQ(gTr104CfgParamInfo[12].timerStarted, 0);
}

}  // namespace
