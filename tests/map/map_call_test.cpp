// Calls by path: the conversions between the data model's values and the handlers', and gets
// and sets through the emulator (the bytes it receives, nothing sent on a refusal, a failure
// named with its path, handler and result).
#include <gtest/gtest.h>

#include <arpa/inet.h>

#include <cstring>
#include <string>
#include <thread>
#include <utility>

#include "support/channel_fixture.h"
#include "support/deferred_fixture.h"
#include "tr104/map.h"
#include "tr104/sip_identity.h"
#include "tr104/sip_servers.h"
#include "tr104/startup.h"

namespace {

const std::string kRoot = "InternetGatewayDevice.";
const std::string kLine = kRoot + "Services.VoiceService.1.VoiceProfile.1.Line.";

const std::string kService2 = "Device.Services.VoiceService.1.";

const Tr104MapEntry &entryOf(const std::string &path) {
    const Tr104MapEntry *e = nullptr;
    EXPECT_EQ(tr104MapLookup(path.c_str(), &e, nullptr, nullptr, 0), TR104_MAP_SERVED) << path;
    return *e;
}

TEST(MapValues, ConvertBothWaysOrSayWhy) {
    const struct {
        std::string path, model, handler;  // handler "" = refused, `why` says so
        const char *why;
    } cases[] = {
        {kRoot + "X_QRV_VOIP_IPPARAMS.AddressingType", "DHCP", "1", ""},
        {kRoot + "X_QRV_VOIP_IPPARAMS.AddressingType", "dhcp", "", "'dhcp' is not one of Static, DHCP, PPPoE"},
        {kRoot + "X_QRV_VOIP_IPPARAMS.DHCPEnable", "true", "1", ""},
        {kRoot + "X_QRV_VOIP_IPPARAMS.DHCPEnable", "yes", "", "a boolean is true, false, 1 or 0, not 'yes'"},
        {kRoot + "X_QRV_VOIP_IPPARAMS.DNSServer1", "10.1.2.3", "10.1.2.3", ""},
        {kRoot + "X_QRV_VOIP_IPPARAMS.DNSServer1", "10.1.2", "", "'10.1.2' is not an IPv4 address"},
        {kLine + "1.VoiceProcessing.TransmitGain", "-12", "-12", ""},
        {kLine + "1.VoiceProcessing.TransmitGain", "2147483648", "", "'2147483648' is not an int"},
        {kRoot + "Services.VoiceService.1.VoiceProfile.1.SIP.ProxyServerPort", "-1", "", "is not an unsignedInt"},
        {kRoot + "Services.VoiceService.1.PhyInterface.1.Tests.X_QRV_DialToneBreakTime", "1.5x", "",
         "'1.5x' is not a number"},
        {kLine + "1.DirectoryNumber", "5551234", "5551234", ""},
        // Conversions of the second tree, named in the catalogue.
        {kService2 + "SIP.Client.1.Enable", "true", "Enabled", ""},
        {kService2 + "SIP.Client.1.Enable", "1", "Enabled", ""},
        {kService2 + "CallControl.Line.2.Enable", "0", "Disabled", ""},
        {kService2 + "SIP.Client.1.Enable", "maybe", "", "'maybe' is not one of true, false"},
        {kService2 + "VoIPProfile.1.DTMFMethod", "RFC4733", "RFC2833", ""},
        {kService2 + "VoIPProfile.1.DTMFMethod", "RFC2833", "", "is not one of InBand, RFC4733, SIPInfo"},
        {kService2 + "POTS.FXS.2.DialType", "Tone", "DTMF", ""},
        {kRoot + "Services.VoiceService.1.PhyInterface.2.PhyPort", "2", "PORT2", ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path + " " + c.model);
        const Tr104MapEntry &e = entryOf(c.path);
        char out[64] = "", why[128] = "", back[64] = "";
        const int rc = tr104MapToHandlerValue(&e, c.model.c_str(), out, sizeof(out), why, sizeof(why));
        EXPECT_EQ(rc, c.handler.empty() ? TR104_MAP_BAD_VALUE : 0);
        EXPECT_EQ(out, c.handler);
        EXPECT_NE(std::string(why).find(c.why), std::string::npos) << why;
        if (rc == 0) {
            tr104MapToModelValue(&e, out, back, sizeof(back));
            EXPECT_EQ(back, c.model == "1" ? "true" : c.model == "0" ? "false" : c.model);
        }
    }
}

// A get of the second tree: the handler's value (the voice module's or the first tree's text) in
// the second tree's names, several values to one, a value no pair names as read; the references
// and counts the map gives itself, with the path's instance numbers.
TEST(MapValues, TheSecondTreeReadsInItsOwnNames) {
    const struct {
        std::string path;
        const char *handler;  // nullptr: the map's own value
        const char *model;
    } cases[] = {
        {kService2 + "SIP.Client.2.Status", "Unregistering", "Deregistering"},
        {kService2 + "SIP.Client.2.Status", "Error", "Error_Registration"},
        {kService2 + "SIP.Client.1.Status", "Testing", "Up"},
        {kService2 + "CallControl.Line.1.Status", "Registering", "Up"},
        {kService2 + "CallControl.Line.1.Status", "Error", "Error"},
        {kService2 + "CallControl.Extension.2.Status", "Initializing", "Initializing"},
        {kService2 + "CallControl.Line.2.CallStatus", "InCall", "Connected"},
        {kService2 + "CallControl.Line.2.CallStatus", "Hold", "Connected"},
        {kService2 + "CallControl.Extension.1.CallStatus", "Ringing", "Alerting"},
        {kService2 + "CallControl.Extension.1.CallStatus", "Dial Timeout", "Dialing"},
        {kService2 + "CallControl.Extension.1.CallStatus", "Something new", "Something new"},
        {kService2 + "CallControl.Line.2.Provider", nullptr, "Device.Services.VoiceService.1.SIP.Client.2"},
        {kService2 + "CallControl.Extension.1.Provider", nullptr, "Device.Services.VoiceService.1.POTS.FXS.1"},
        {kService2 + "CodecProfile.4.Codec", nullptr, "Device.Services.VoiceService.1.Capabilities.Codec.4"},
        {kService2 + "SIP.ClientNumberOfEntries", nullptr, "2"},
        {kService2 + "CodecProfileNumberOfEntries", nullptr, "5"},
        {kService2 + "ISDN.BRINumberOfEntries", nullptr, "0"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path);
        char got[128] = "", why[128] = "";
        if (c.handler != nullptr) {
            tr104MapToModelValue(&entryOf(c.path), c.handler, got, sizeof(got));
        } else {
            EXPECT_EQ(tr104MapGet(c.path.c_str(), got, sizeof(got), why, sizeof(why)), 0) << why;
            // Read only: a set is refused before anything is called.
            EXPECT_EQ(tr104MapSet(c.path.c_str(), c.model, why, sizeof(why)), TR104_MAP_NO_ACCESS);
            int locate[4] = {0, 0, 0, 0};
            EXPECT_EQ(tr104MapCall(&entryOf(c.path), locate, 1, c.model, nullptr, 0, why, sizeof(why)),
                      TR104_MAP_NO_ACCESS);
        }
        EXPECT_STREQ(got, c.model);
    }
}

// The voice module runs SIP: the dispatching handlers call their SIP variants.
class MapCall : public tr104test::ChannelTest {
protected:
    int moduleKind() const override { return 2; }  // the short reply wait
    void SetUp() override {
        ChannelTest::SetUp();
        gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
    }
    void TearDown() override {
        gTr104CurrProtocolType = 0;
        ChannelTest::TearDown();
    }
};

TEST_F(MapCall, SetsSendTheHandlersValueAndGetsReadItBack) {
    uint32_t word = 0;
    inet_pton(AF_INET, "10.1.2.3", &word);
    const struct {
        std::string path, value;
        uint32_t cmd;  // the set's command id
        size_t offset;  // where its value lies in the payload
        std::string bytes;  // the value's bytes there
    } cases[] = {
        {kRoot + "X_QRV_VOIP_IPPARAMS.DNSServer1", "10.1.2.3", TR104_ADD_DNS_SERVER_ID, 4,
         std::string(reinterpret_cast<const char *>(&word), 4)},
        {kLine + "2.Enable", "Disabled", SET_LINE_ENABLE_ID, 0, ""},
        {kRoot + "Services.VoiceService.1.X_QRV_LEDStandard", "3", TR104_SET_LED_STANDARD_ID, 0, ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path);
        char error[256] = "", value[256] = "";
        const size_t before = emulator.requestCount();
        ASSERT_EQ(tr104MapSet(c.path.c_str(), c.value.c_str(), error, sizeof(error)), 0) << error;
        ASSERT_TRUE(emulator.waitForRequests(before + 1, std::chrono::seconds(2)));
        const auto sent = emulator.requestsFor(c.cmd);
        ASSERT_EQ(sent.size(), 1u);
        if (!c.bytes.empty()) {
            EXPECT_EQ(std::memcmp(sent[0].payload.data() + c.offset, c.bytes.data(), c.bytes.size()), 0);
        }
        ASSERT_EQ(tr104MapGet(c.path.c_str(), value, sizeof(value), error, sizeof(error)), 0) << error;
        EXPECT_EQ(value, c.value);
    }
    EXPECT_EQ(tr104test::semValue(), 1);
}

TEST_F(MapCall, RefusalsSendNothingAndFailuresNameTheParameter) {
    const std::string maxLines = kRoot + "Services.VoiceService.1.Capabilities.MaxLineCount";
    const struct {
        std::string path, value;  // value "" = a get
        int rc;
        const char *says;
    } cases[] = {
        {maxLines, "3", TR104_MAP_NO_ACCESS, ": read only"},
        {kLine + "3.Enable", "", TR104_MAP_BAD_PATH, "instance '3' of Line"},
        {kLine + "1.Ringer.Event.1.Function", "", TR104_MAP_BAD_PATH, ": not served: "},
        {kRoot + "X_QRV_VOIP_IPPARAMS.AddressingType", "dhcp", TR104_MAP_BAD_VALUE, "AddressingType: 'dhcp' is not"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path);
        char error[256] = "", value[64] = "";
        const int rc = c.value.empty() ? tr104MapGet(c.path.c_str(), value, sizeof(value), error, sizeof(error))
                                       : tr104MapSet(c.path.c_str(), c.value.c_str(), error, sizeof(error));
        EXPECT_EQ(rc, c.rc);
        EXPECT_NE(std::string(error).find(c.says), std::string::npos) << error;
    }
    EXPECT_EQ(emulator.requestCount(), 0u);

    // A voice module that does not answer: the handler's -1, named.
    emulator.setFault(0, vmemu::FaultSpec{vmemu::Fault::Silent});
    char error[256] = "", value[64] = "";
    const std::string enable = kLine + "1.Enable";
    EXPECT_EQ(tr104MapGet(enable.c_str(), value, sizeof(value), error, sizeof(error)), -1);
    EXPECT_EQ(std::string(error), enable +
                                      ": Tr104LineEnable returned -1: the exchange with the voice module "
                                      "failed or its answer was unusable");
    EXPECT_EQ(tr104test::semValue(), 1);
}

// The end of one management message: the groups its sets left waiting are written at once, each
// once, completed from the voice module's values, and their timers do not write them again.  A
// hidden value reads empty by path while its handler still answers it.
class MapGroups : public tr104test::DeferredBufferTest {};

TEST_F(MapGroups, WaitingGroupsAreWrittenOnceAtTheEnd) {
    const std::string profile = kRoot + "Services.VoiceService.1.VoiceProfile.1.";
    const std::string port = profile + "SIP.ProxyServerPort", password = kLine + "1.SIP.AuthPassword",
                      enable = kLine + "1.Enable";
    char error[256] = "";
    for (const auto &[path, value] :
         {std::pair(port, "5070"), std::pair(password, "s3cret"), std::pair(enable, "Enabled")}) {
        ASSERT_EQ(tr104MapSet(path.c_str(), value, error, sizeof(error)), 0) << error;
    }
    EXPECT_FALSE(idle(3));
    EXPECT_FALSE(idle(5));
    EXPECT_TRUE(emulator.requestsFor(SET_PROXY_CFG_ID).empty());
    const char *paths[] = {port.c_str(), password.c_str(), enable.c_str(), "no.such.path"};
    ASSERT_EQ(tr104MapApplyGroups(paths, 4, error, sizeof(error)), 0) << error;
    // The line's enable, then a read and a write per group (writes go unanswered: wait for them).
    ASSERT_TRUE(emulator.waitForRequests(5, std::chrono::seconds(5)));
    EXPECT_TRUE(idle(3));
    EXPECT_TRUE(idle(5));
    // Each incomplete group: its current values read, then one write.
    for (const uint32_t cmd : {uint32_t{GET_PROXY_CFG_ID}, uint32_t{SET_PROXY_CFG_ID}, uint32_t{GET_USER_AUTHOR_ID},
                               uint32_t{SET_USER_AUTHOR_ID}}) {
        EXPECT_EQ(emulator.requestsFor(cmd).size(), 1u) << cmd;
    }
    // The timers were cancelled: three of their delays later nothing more has been written.
    const size_t before = emulator.requestCount();
    std::this_thread::sleep_for(std::chrono::milliseconds(3 * kTimeoutMs));
    EXPECT_EQ(emulator.requestCount(), before);

    char value[128] = "";
    ASSERT_EQ(tr104MapGet(port.c_str(), value, sizeof(value), error, sizeof(error)), 0) << error;
    EXPECT_STREQ(value, "5070");
    std::strcpy(value, "stale");
    ASSERT_EQ(tr104MapGet(password.c_str(), value, sizeof(value), error, sizeof(error)), 0) << error;
    EXPECT_STREQ(value, "") << "a hidden value reads empty by path";
    int locate[4] = {0, 1, 1, 0};
    char text[TR104_LINE_IDENTITY_LEN] = "";
    ASSERT_EQ(Tr104LineAuthPasswordSip(0, text, locate), 0);
    EXPECT_STREQ(text, "s3cret") << "the handler answers the agent as ever";

    // Nothing waiting: nothing sent.
    const size_t settled = emulator.requestCount();
    EXPECT_EQ(tr104MapApplyGroups(paths, 4, error, sizeof(error)), 0);
    EXPECT_EQ(tr104MapApplyGroups(nullptr, 0, error, sizeof(error)), 0);
    EXPECT_EQ(emulator.requestCount(), settled);
}

// The message ends just as the group's timer fires: the timer's send is under way (its read of
// the current values answered late) when the message's end applies the same group.  The group
// goes out once, with the staged value, and the call returns once it is out.
TEST_F(MapGroups, AGroupItsTimerIsSendingIsSentOnce) {
    const std::string user = kLine + "1.SIP.AuthUserName";
    char error[256] = "";
    emulator.setFault(GET_USER_AUTHOR_ID, vmemu::FaultSpec{vmemu::Fault::Late, 150, 1});
    ASSERT_EQ(tr104MapSet(user.c_str(), "alice", error, sizeof(error)), 0) << error;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (emulator.requestsFor(GET_USER_AUTHOR_ID).empty() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ASSERT_EQ(emulator.requestsFor(GET_USER_AUTHOR_ID).size(), 1u) << "the timer fired";
    const char *paths[] = {user.c_str()};
    EXPECT_EQ(tr104MapApplyGroups(paths, 1, error, sizeof(error)), 0) << error;
    EXPECT_TRUE(idle(5));
    ASSERT_TRUE(emulator.waitForRequests(2, std::chrono::seconds(5)));
    std::this_thread::sleep_for(std::chrono::milliseconds(2 * kTimeoutMs));
    EXPECT_EQ(emulator.requestsFor(GET_USER_AUTHOR_ID).size(), 1u);
    EXPECT_EQ(emulator.requestsFor(SET_USER_AUTHOR_ID).size(), 1u);
    char value[64] = "";
    ASSERT_EQ(tr104MapGet(user.c_str(), value, sizeof(value), error, sizeof(error)), 0) << error;
    EXPECT_STREQ(value, "alice");
}

TEST_F(MapGroups, AGroupThatCannotBeCompletedIsReportedAndDropped) {
    const std::string port = kRoot + "Services.VoiceService.1.VoiceProfile.1.SIP.ProxyServerPort";
    char error[256] = "";
    ASSERT_EQ(tr104MapSet(port.c_str(), "5070", error, sizeof(error)), 0) << error;
    emulator.setFault(GET_PROXY_CFG_ID, vmemu::FaultSpec{vmemu::Fault::FailureMarker});
    const char *paths[] = {port.c_str()};
    EXPECT_EQ(tr104MapApplyGroups(paths, 1, error, sizeof(error)), -1);
    EXPECT_STREQ(error, "the values staged in slot 3 of the deferred buffer could not be sent");
    EXPECT_TRUE(idle(3));
    EXPECT_TRUE(emulator.requestsFor(SET_PROXY_CFG_ID).empty());
}

}  // namespace
