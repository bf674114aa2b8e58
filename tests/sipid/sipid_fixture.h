// The channel with the emulated voice module, the runtime and the deferred buffer started once
// per process, and the slots a test uses left idle before and after it.
#pragma once

#include <chrono>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "common/stdout_capture.h"
#include "support/channel_fixture.h"
#include "tr104/startup.h"
#include "v2lin/v2lin.h"

namespace sipid {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Handler = int (*)(int, void *, int *);

class DeferredChannelTest : public tr104test::ChannelTest {
protected:
    // Slots of the deferred buffer the test may use.
    virtual std::vector<int> slots() const = 0;

    void SetUp() override {
        ChannelTest::SetUp();
        static const bool runtimeStarted = [] { return v2lin_init() == 0 && constructTr104CfgParamInfo() == 0; }();
        ASSERT_TRUE(runtimeStarted);
        for (int slot : slots()) {
            resetTr104CfgParamInfo(slot);
        }
    }
    void TearDown() override {
        for (int slot : slots()) {
            resetTr104CfgParamInfo(slot);
        }
        ChannelTest::TearDown();
    }

    // Everything the voice module has been sent so far, once it has all been served: a read
    // goes out after every send still on its way, and is left out of the result.
    std::vector<vmemu::Request> served() {
        char status[TR104_PORT_STATUS_LEN];
        EXPECT_EQ(getLineStatus(1, status), 0);
        std::vector<vmemu::Request> out;
        for (const vmemu::Request &r : emulator.requests()) {
            if (r.cmd != TR104_GET_PORT_STATUS_ID) {
                out.push_back(r);
            }
        }
        emulator.clearLog();
        return out;
    }

    // Waits (with a generous deadline) until the voice module has seen n requests.
    std::vector<vmemu::Request> awaitRequests(size_t n) {
        EXPECT_TRUE(emulator.waitForRequests(n, 30s)) << "expected " << n << " requests";
        return emulator.requests();
    }

    // Waits until a slot is idle again (its timer has run and applied it).
    static bool awaitIdle(int slot) {
        const auto deadline = Clock::now() + 30s;
        while (gTr104CfgParamInfo[slot].timerStarted != 0 && Clock::now() < deadline) {
            std::this_thread::sleep_for(10ms);
        }
        return gTr104CfgParamInfo[slot].timerStarted == 0;
    }

    static int setText(Handler h, const std::string &text, int *locate = nullptr) {
        std::vector<char> buf(text.begin(), text.end());
        buf.push_back('\0');
        return h(1, buf.data(), locate);
    }
    static int setInt(Handler h, int value, int *locate = nullptr) { return h(1, &value, locate); }
    // A get into a zeroed buffer: the text, or "<rc>" on failure.
    static std::string getText(Handler h, int *locate = nullptr) {
        std::vector<char> buf(256, 0);
        const int rc = h(0, buf.data(), locate);
        return rc == 0 ? std::string(buf.data()) : "<" + std::to_string(rc) + ">";
    }
};

// Runs f with debugging on and returns what it printed.
template <typename F>
std::string debugOutput(F &&f) {
    gTr104CfgDebug = 1;
    std::string out = tr104test::capturedStdout(f);
    gTr104CfgDebug = 0;
    return out;
}

}  // namespace sipid
