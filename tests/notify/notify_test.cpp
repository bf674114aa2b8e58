// Change notifications as the management agent receives them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "tr104.h"
#include "tr104/netcfg.h"
#include "tr104/notify.h"

namespace {}  // namespace

#include "agent_calls.h"

std::vector<AgentCall> gAgentCalls;

extern "C" __attribute__((visibility("default"))) int notifyChangedValues_toTr069(int module, char **names,
                                                                                  char **values, int count) {
    AgentCall call{module, {}};
    for (int i = 0; i < count; ++i) {
        call.pairs.emplace_back(names[i], values[i]);
    }
    gAgentCalls.push_back(call);
    return 17;
}

// The board-support library's version registry, called by the library's load-time
// initialisers before main() runs: plain zero-initialised storage only.
namespace {
int gVersionCalls;
char gVersionName[32];
char gVersionText[32];
}  // namespace

extern "C" __attribute__((visibility("default"))) int ux_bsp_version_export(const char *name, const char *version,
                                                                            const char *, const char *) {
    ++gVersionCalls;
    std::strncpy(gVersionName, name, sizeof(gVersionName) - 1);
    std::strncpy(gVersionText, version, sizeof(gVersionText) - 1);
    return 0;
}

namespace {

TEST(VersionExport, BothLoadTimeInitialisersAnnounceTheLibrary) {
    EXPECT_EQ(gVersionCalls, 2);
    EXPECT_STREQ(gVersionName, "libtr104.so");
    EXPECT_NE(gVersionText[0], 0);
}

const std::string kProfile = "InternetGatewayDevice.Services.VoiceService.1.VoiceProfile.1.";

Tr104Msg lineBlock(uint32_t line, const char *number, const char *user, const char *password) {
    Tr104Msg msg{};
    msg.cmd_type = 1;
    std::memcpy(msg.rspBuffer, &line, 4);
    std::strcpy(msg.rspBuffer + 8, number);
    std::strcpy(msg.rspBuffer + 224, user);
    std::strcpy(msg.rspBuffer + 290, password);
    return msg;
}

Tr104Msg serverBlock(uint32_t flag, const char *host, uint16_t port) {
    Tr104Msg msg{};
    msg.cmd_type = 1;
    std::memcpy(msg.rspBuffer + 44, &flag, 4);
    std::strcpy(msg.rspBuffer + 48, host);
    std::memcpy(msg.rspBuffer + 118, &port, 2);
    return msg;
}

class Notify : public ::testing::Test {
protected:
    void SetUp() override {
        gAgentCalls.clear();
        gTr104CfgDebug = 0;
    }
    // The single call the agent must have received.
    const AgentCall &onlyCall() {
        EXPECT_EQ(gAgentCalls.size(), 1u);
        static const AgentCall none{};
        return gAgentCalls.empty() ? none : gAgentCalls.back();
    }
};

TEST_F(Notify, DirectoryNumberByLineWithAnEmptyNameForOtherLines) {
    const struct {
        uint32_t line;
        std::string name;
    } cases[] = {
        {1, kProfile + "Line.1.DirectoryNumber"},
        {2, kProfile + "Line.2.DirectoryNumber"},
        {3, ""},
        {0, ""},
    };
    for (const auto &c : cases) {
        gAgentCalls.clear();
        Tr104Msg msg = lineBlock(c.line, "5551234", "u", "p");
        EXPECT_EQ(Tr104LineTelNumChangeNotifySip(&msg), 0);
        const AgentCall &call = onlyCall();
        EXPECT_EQ(call.module, 28);
        ASSERT_EQ(call.pairs.size(), 1u);
        EXPECT_EQ(call.pairs[0].first, c.name) << c.line;
        EXPECT_EQ(call.pairs[0].second, "5551234");
    }
}

TEST_F(Notify, AuthenticationOfAnyLineButOneIsReportedAsLineTwo) {
    for (uint32_t line : {1u, 2u, 3u, 0u}) {
        gAgentCalls.clear();
        Tr104Msg msg = lineBlock(line, "", "alice", "s3cret");
        EXPECT_EQ(Tr104LineAuthParamsChangeNotifySip(&msg), 0);
        const AgentCall &call = onlyCall();
        ASSERT_EQ(call.pairs.size(), 2u);
        const std::string prefix = kProfile + (line == 1 ? "Line.1." : "Line.2.");
        EXPECT_EQ(call.pairs[0], std::make_pair(prefix + "SIP.AuthUserName", std::string("alice"))) << line;
        EXPECT_EQ(call.pairs[1], std::make_pair(prefix + "SIP.AuthPassword", std::string("s3cret"))) << line;
    }
}

TEST_F(Notify, ServersUnderPrimaryOrStandbyNames) {
    const struct {
        int (*notifier)(const Tr104Msg *);
        uint32_t flag;
        const char *address;
        const char *port;
    } cases[] = {
        {Tr104ProxyParamsChangeNotifySip, 1, "SIP.ProxyServer", "SIP.ProxyServerPort"},
        {Tr104ProxyParamsChangeNotifySip, 2, "SIP.X_CT-COM_Standby-ProxyServer",
         "SIP.X_CT-COM_Standby-ProxyServerPort"},
        {Tr104ProxyParamsChangeNotifySip, 0, "SIP.X_CT-COM_Standby-ProxyServer",
         "SIP.X_CT-COM_Standby-ProxyServerPort"},
        {Tr104RegParamsChangeNotifySip, 1, "SIP.RegistrarServer", "SIP.RegistrarServerPort"},
        {Tr104RegParamsChangeNotifySip, 2, "SIP.X_CT-COM_Standby-RegistrarServer",
         "SIP.X_CT-COM_Standby-RegistrarServerPort"},
    };
    for (const auto &c : cases) {
        gAgentCalls.clear();
        Tr104Msg msg = serverBlock(c.flag, "proxy.example.net", 5061);
        EXPECT_EQ(c.notifier(&msg), 0);
        const AgentCall &call = onlyCall();
        ASSERT_EQ(call.pairs.size(), 2u);
        EXPECT_EQ(call.pairs[0], std::make_pair(kProfile + c.address, std::string("proxy.example.net")));
        EXPECT_EQ(call.pairs[1], std::make_pair(kProfile + c.port, std::string("5061")));
    }
}

// The voice interface's settings: addresses as dotted text, the addressing type by its word, the
// VLAN id and priority of each traffic class.
TEST_F(Notify, NetworkSettingsOfTheVoiceInterface) {
    const std::string ip = "InternetGatewayDevice.X_QRV_VOIP_IPPARAMS.";
    Tr104Msg msg{};
    const uint32_t words[] = {1, CommIpAddrStrToUnInt("10.0.0.5"), CommIpAddrStrToUnInt("255.255.0.0"),
                              CommIpAddrStrToUnInt("10.0.0.1")};
    std::memcpy(msg.rspBuffer, words, sizeof(words));
    EXPECT_EQ(Tr104IpParamsChangeNotify(&msg), 0);
    const std::vector<std::pair<std::string, std::string>> addresses = {{ip + "ExternalIPAddress", "10.0.0.5"},
                                                                        {ip + "SubnetMask", "255.255.0.0"},
                                                                        {ip + "DefaultGateway", "10.0.0.1"}};
    EXPECT_EQ(onlyCall().pairs, addresses);

    for (const auto &[type, text] : {std::pair<uint32_t, std::string>{0, "Static"}, {1, "DHCP"}, {2, ""}}) {
        gAgentCalls.clear();
        std::memcpy(msg.rspBuffer, &type, 4);
        EXPECT_EQ(Tr104DHCPParamChangeNotify(&msg), 0);
        ASSERT_EQ(onlyCall().pairs.size(), 1u);
        EXPECT_EQ(onlyCall().pairs[0], std::make_pair(ip + "AddressingType", text)) << type;
    }

    Tr104VlanPayload vlan{};
    vlan.sip.usVlanId = 100;
    vlan.sip.ucVlanPriority = 5;
    vlan.rtp.usVlanId = 4096;
    vlan.rtp.ucVlanPriority = 7;
    std::memcpy(msg.rspBuffer, &vlan, sizeof(vlan));
    const struct {
        int (*notifier)(const Tr104Msg *);
        const char *klass, *id, *priority;
    } cases[] = {{Tr104SipVlanParamsChangeNotify, "SIP", "100", "5"},
                 {Tr104RtpVlanParamsChangeNotify, "RTP", "4096", "7"}};
    for (const auto &c : cases) {
        gAgentCalls.clear();
        EXPECT_EQ(c.notifier(&msg), 0);
        ASSERT_EQ(onlyCall().pairs.size(), 2u);
        EXPECT_EQ(onlyCall().pairs[0], std::make_pair(kProfile + c.klass + ".VLANIDMark", std::string(c.id)));
        EXPECT_EQ(onlyCall().pairs[1],
                  std::make_pair(kProfile + c.klass + ".EthernetPriorityMark", std::string(c.priority)));
    }
    gAgentCalls.clear();
    EXPECT_EQ(Tr104IpParamsChangeNotify(nullptr), -1);
    EXPECT_EQ(Tr104RtpVlanParamsChangeNotify(nullptr), -1);
    EXPECT_TRUE(gAgentCalls.empty());
}

TEST_F(Notify, OverlongStringsAreCutAtTheValueBuffer) {
    Tr104Msg msg{};
    const uint32_t line = 1;
    std::memcpy(msg.rspBuffer, &line, 4);
    std::memset(msg.rspBuffer + 8, '7', 1000);  // no terminator for a thousand bytes
    EXPECT_EQ(Tr104LineTelNumChangeNotifySip(&msg), 0);
    ASSERT_EQ(onlyCall().pairs.size(), 1u);
    EXPECT_EQ(onlyCall().pairs[0].second, std::string(255, '7'));
}

TEST_F(Notify, DebugOffPrintsNothingButTheAgentIsCalled) {
    Tr104Msg msg = lineBlock(1, "42", "u", "p");
    testing::internal::CaptureStdout();
    Tr104LineTelNumChangeNotifySip(&msg);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(gAgentCalls.size(), 1u);

    gTr104CfgDebug = 1;
    testing::internal::CaptureStdout();
    Tr104LineTelNumChangeNotifySip(&msg);
    const std::string out = testing::internal::GetCapturedStdout();
    gTr104CfgDebug = 0;
    EXPECT_NE(out.find("NameList[0]= [" + kProfile + "Line.1.DirectoryNumber],ValueList[0] =[42]\n"), std::string::npos)
        << out;
    EXPECT_NE(out.find("  notifyChangedValues_toTr069 return value = [17]\n"), std::string::npos) << out;
}

TEST_F(Notify, NothingReachesTheAgentForEmptyInput) {
    char name[] = "n";
    char value[] = "v";
    char *names[] = {name};
    char *values[] = {value};
    Tr104NotifyChangeValuesToTr069(nullptr, values, 1);
    Tr104NotifyChangeValuesToTr069(names, nullptr, 1);
    Tr104NotifyChangeValuesToTr069(names, values, 0);
    EXPECT_TRUE(gAgentCalls.empty());
    EXPECT_EQ(Tr104LineTelNumChangeNotifySip(nullptr), -1);
    EXPECT_EQ(Tr104ProxyParamsChangeNotifySip(nullptr), -1);
    EXPECT_TRUE(gAgentCalls.empty());
    Tr104NotifyChangeValuesToTr069(names, values, 1);
    EXPECT_EQ(gAgentCalls.size(), 1u);
}

}  // namespace
