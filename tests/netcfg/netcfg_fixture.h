// The channel with the emulated voice module and the deferred buffer, for the voice network
// settings: slots 0, 6 and 7 idle before and after every test, and the watchdog's delay short
// so that a test waiting for a group's timer waits a fraction of a second.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "emulator/netcfg_emulator.h"
#include "sip/sip_fixture.h"
#include "sipid/sipid_fixture.h"
#include "tr104/netcfg.h"

namespace netcfgtest {

using ValueHandler = int (*)(int, void *);

class NetTest : public sipid::DeferredChannelTest {
protected:
    std::vector<int> slots() const override { return {0, 6, 7}; }
    void SetUp() override {
        DeferredChannelTest::SetUp();
        gTr104CfgParamTimeout = 200;
    }
    void TearDown() override {
        gTr104CfgParamTimeout = 5000;
        DeferredChannelTest::TearDown();
    }

    vmemu::NetState state() { return vmemu::netState(emulator); }
    static uint32_t ip(const char *dotted) { return CommIpAddrStrToUnInt(dotted); }

    // Nothing reached the voice module since the last served(), and the lock is free.
    void expectNothingSent() {
        const auto sent = served();
        EXPECT_TRUE(sent.empty()) << "first request: " << emulator.describe(sent.front());
        EXPECT_EQ(tr104test::semValue(), 1);
    }
};

}  // namespace netcfgtest
