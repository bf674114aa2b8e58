// A channel whose deferred buffer runs: the runtime and the slots started once per process, a
// short timer delay, the voice module speaking SIP, every slot idle again after each test.
#pragma once

#include "support/channel_fixture.h"
#include "tr104/protocol.h"
#include "tr104/startup.h"

namespace tr104test {

class DeferredBufferTest : public ChannelTest {
protected:
    int moduleKind() const override { return 2; }  // the short reply wait
    void SetUp() override {
        ChannelTest::SetUp();
        static const bool started = v2lin_init() == 0 && constructTr104CfgParamInfo() == 0;
        ASSERT_TRUE(started);
        gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
        savedTimeout_ = gTr104CfgParamTimeout;
        gTr104CfgParamTimeout = kTimeoutMs;
    }
    void TearDown() override {
        for (int slot = 0; slot < TR104_CFG_PARAM_SLOTS; ++slot) {
            resetTr104CfgParamInfo(slot);
        }
        gTr104CfgParamTimeout = savedTimeout_;
        gTr104CurrProtocolType = 0;
        ChannelTest::TearDown();
    }
    static bool idle(int slot) {
        return gTr104CfgParamInfo[slot].timerStarted == 0 && gTr104CfgParamInfo[slot].cfgFlag == 0;
    }
    static constexpr int kTimeoutMs = 300;

private:
    int32_t savedTimeout_ = 0;
};

}  // namespace tr104test
