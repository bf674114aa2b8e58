// A channel with the emulated voice module, the device state of the library back to its
// load-time values, and helpers for the device handlers.
#pragma once

#include <array>
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "emulator/device_emulator.h"
#include "sip/sip_fixture.h"

namespace devicetest {

using DeviceHandler = int (*)(int, void *);

class DeviceTest : public siptest::SipTest {
protected:
    void SetUp() override {
        SipTest::SetUp();
        gTr104CurrProtocolType = TR104_PROTOCOL_NONE;
        std::strcpy(gProfileEnable, "Enabled");
        std::strcpy(gProfileName, "VoiceProfile1");
        gVoiceServerType = 1;
        CodecListUnitConfigInit();
    }
    void TearDown() override {
        gTr104CurrProtocolType = TR104_PROTOCOL_NONE;
        SipTest::TearDown();
    }

    // Nothing was sent since restartLog(), and the channel's lock is free.
    void expectNothingSent() {
        char status[TR104_PORT_STATUS_LEN];
        EXPECT_EQ(getLineStatus(1, status), 0);
        const auto seenNow = emulator.requests();
        ASSERT_FALSE(seenNow.empty());
        EXPECT_EQ(seenNow.size(), 1u) << "first request: " << emulator.describe(seenNow.front());
        EXPECT_EQ(tr104test::semValue(), 1);
    }
};

}  // namespace devicetest
