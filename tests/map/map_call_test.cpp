// Calls by path: the conversions between the data model's values and the handlers', and gets
// and sets through the emulator (the bytes it receives, nothing sent on a refusal, a failure
// named with its path, handler and result).
#include <gtest/gtest.h>

#include <arpa/inet.h>

#include <cstring>
#include <string>

#include "support/channel_fixture.h"
#include "tr104/map.h"

namespace {

const std::string kRoot = "InternetGatewayDevice.";
const std::string kLine = kRoot + "Services.VoiceService.1.VoiceProfile.1.Line.";

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
            EXPECT_EQ(back, c.model == "1" ? "true" : c.model);
        }
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
        uint32_t cmd;       // the set's command id
        size_t offset;      // where its value lies in the payload
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
    EXPECT_EQ(std::string(error), enable + ": Tr104LineEnable returned -1: the exchange with the voice module "
                                           "failed or its answer was unusable");
    EXPECT_EQ(tr104test::semValue(), 1);
}

}  // namespace
