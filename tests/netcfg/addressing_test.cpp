// The voice interface's addressing and VLANs: single values grouped by the deferred buffer and
// sent as one configuration, incomplete groups completed from the voice module's current one by
// the slot's timer, the all-at-once handlers, and the direct messages.
#include <iterator>

#include "netcfg/netcfg_fixture.h"
#include "tr104/sip_identity.h"
#include "tr104/sip_servers.h"

namespace {

using netcfgtest::NetTest;
using netcfgtest::ValueHandler;
using siptest::debugOutput;
using siptest::printed;

class Addressing : public NetTest {};

// Every group reaches its slot from the area that owns it, with the number of values that
// complete it; slots 10 to 19 hold none.
TEST_F(Addressing, TheDeferredSlotsApplyThroughTheirHandlersFunctions) {
    const struct {
        Tr104CfgApplyFunc apply;
        int32_t values;
    } slots[] = {{setIpConfig, 3},
                 {setRegServer, 2},
                 {setSecondaryRegServer, 2},
                 {setProxyServer, 2},
                 {setSecondaryProxyServer, 2},
                 {setLineAuthCfg, 2},
                 {setSipVlanParam, 6},
                 {setRtpVlanParam, 6},
                 {setOutBoundProxyServer, 2},
                 {setSecondaryOutBoundProxyServer, 2}};
    for (int slot = 0; slot < TR104_CFG_PARAM_SLOTS; ++slot) {
        SCOPED_TRACE(slot);
        const bool grouped = slot < static_cast<int>(std::size(slots));
        EXPECT_EQ(gTr104CfgParamInfo[slot].timeroutFuncHandle, grouped ? slots[slot].apply : nullptr);
        EXPECT_EQ(gTr104CfgParamInfo[slot].paramCount, grouped ? slots[slot].values : 0);
    }
}

// Address, mask and gateway one at a time: one configuration with all three when the third
// arrives, no read.  The RTP address and gateway handlers act on the same words.
TEST_F(Addressing, ThreeValuesMakeOneConfiguration) {
    const struct {
        ValueHandler addr, mask, gateway;
    } orders[] = {{Tr104IpAddrConfig, Tr104NetMaskConfig, Tr104GatewayConfig},
                  {Tr104RtpIpAddrConfig, Tr104NetMaskConfig, Tr104RtpGateWayConfig}};
    for (const auto &o : orders) {
        const vmemu::NetState before = state();
        uint32_t a = ip("10.1.2.3"), m = ip("255.255.255.0"), g = ip("10.1.2.1");
        ASSERT_EQ(o.gateway(1, &g), 0);
        ASSERT_EQ(o.addr(1, &a), 0);
        EXPECT_EQ(served().size(), 0u) << "nothing before the group is complete";
        ASSERT_EQ(o.mask(1, &m), 0);
        EXPECT_EQ(gTr104CfgParamInfo[0].timerStarted, 0) << "the slot is idle again";
        const auto sent = served();
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].cmd, TR104_SET_DEVICE_IP_ID);
        EXPECT_TRUE(siptest::zeroExcept(sent[0], {{0, 1}, {4, 12}}));
        EXPECT_EQ(sent[0].word<uint8_t>(0), TR104_IP_KIND_VOICE);
        const vmemu::NetState after = state();
        EXPECT_EQ(after.ip.unVoiceAddr, a);
        EXPECT_EQ(after.ip.unVoiceMask, m);
        EXPECT_EQ(after.ip.unVoiceGateway, g);
        EXPECT_EQ(after.ip.unRtpAddr, before.ip.unRtpAddr);
        uint32_t read = 0;
        ASSERT_EQ(Tr104RtpIpAddrConfig(0, &read), 0);
        EXPECT_EQ(read, a);
        ASSERT_EQ(Tr104NetMaskConfig(0, &read), 0);
        EXPECT_EQ(read, m);
        served();
    }
}

// One value alone: when the timer fires, the current configuration is read and sent back with
// the value replaced (and the voice module's own bytes after 28 as it gave them).
TEST_F(Addressing, OneValueIsCompletedFromTheCurrentConfigurationByTheTimer) {
    vmemu::setVoiceAddress(emulator, ip("192.168.5.9"), ip("255.255.0.0"), ip("192.168.0.1"));
    uint32_t gateway = ip("192.168.0.254");
    ASSERT_EQ(Tr104GatewayConfig(1, &gateway), 0);
    ASSERT_TRUE(awaitIdle(0));
    const auto sent = served();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].cmd, TR104_GET_DEVICE_IP_ID);
    EXPECT_EQ(sent[1].cmd, TR104_SET_DEVICE_IP_ID);
    EXPECT_EQ(sent[1].text_at(28, 16), "voip0");
    const vmemu::NetState s = state();
    EXPECT_EQ(s.ip.unVoiceAddr, ip("192.168.5.9"));
    EXPECT_EQ(s.ip.unVoiceMask, ip("255.255.0.0"));
    EXPECT_EQ(s.ip.unVoiceGateway, gateway);
    EXPECT_EQ(s.ipWrites, 1);
    EXPECT_EQ(s.directIpWrites, 0) << "a configuration is not taken for the direct message";
}

TEST_F(Addressing, AllAtOnceAndTheRtpWords) {
    uint32_t a = ip("172.16.0.2"), m = ip("255.240.0.0"), g = ip("172.16.0.1");
    ASSERT_EQ(Tr104IpParamConfig(1, &a, &m, &g), 0);
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(0), 0);
    uint32_t ra = ip("172.17.0.2"), rm = ip("255.255.0.0"), rg = ip("172.17.0.1");
    ASSERT_EQ(Tr104RtpIpParamConfig(1, &ra, &rm, &rg), 0);
    auto sent = served();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].word<uint8_t>(0), TR104_IP_KIND_VOICE);
    EXPECT_EQ(sent[1].word<uint8_t>(0), TR104_IP_KIND_RTP);
    EXPECT_TRUE(siptest::zeroExcept(sent[1], {{0, 1}, {16, 12}}));
    uint32_t x = 0, y = 0, z = 0;
    ASSERT_EQ(Tr104IpParamConfig(0, &x, &y, &z), 0);
    EXPECT_EQ(std::vector<uint32_t>({x, y, z}), std::vector<uint32_t>({a, m, g}));
    ASSERT_EQ(Tr104RtpIpParamConfig(0, &x, &y, &z), 0);
    EXPECT_EQ(std::vector<uint32_t>({x, y, z}), std::vector<uint32_t>({ra, rm, rg}));
    served();

    emulator.setFault(TR104_GET_DEVICE_IP_ID, {vmemu::Fault::FailureMarker});
    const std::string out = debugOutput([&] { EXPECT_EQ(Tr104IpParamConfig(0, &x, &y, &z), -1); });
    EXPECT_TRUE(printed(out, "Tr104IpParamConfig", "get ip param error \n")) << out;
    uint32_t gateway = 1;
    ASSERT_EQ(Tr104GatewayConfig(1, &gateway), 0);
    ASSERT_TRUE(awaitIdle(0));
    emulator.clearFaults();
    for (const auto &r : served()) {
        EXPECT_NE(r.cmd, TR104_SET_DEVICE_IP_ID) << "a failed read of the current configuration sends nothing";
    }
}

TEST_F(Addressing, RefusedArgumentsSendNothing) {
    uint32_t v = 0;
    int mode = 7;
    const struct {
        const char *handler;
        int (*call)(uint32_t *v, int *mode);
        const char *message;
    } cases[] = {
        {"Tr104IpAddrConfig", [](uint32_t *, int *) { return Tr104IpAddrConfig(1, nullptr); },
         "param error, Ip Addr is null\n"},
        {"Tr104NetMaskConfig", [](uint32_t *v, int *) { return Tr104NetMaskConfig(2, v); }, "param error, nFlag[2]\n"},
        {"Tr104IpParamConfig", [](uint32_t *v, int *) { return Tr104IpParamConfig(1, v, nullptr, v); },
         "param error, pIpAddr or pNetMask or pGateway is null\n"},
        {"Tr104RtpIpParamConfig", [](uint32_t *v, int *) { return Tr104RtpIpParamConfig(1, nullptr, v, v); },
         "param error, pRtpIp or pRtpMask or pRtpGw is null\n"},
        {"Tr104IpMode", [](uint32_t *, int *mode) { return Tr104IpMode(0, mode, nullptr); },
         "param error, *pIpMode[7]\n"},
        {"Tr104IpMode", [](uint32_t *, int *) { return Tr104IpMode(1, nullptr, nullptr); },
         "param error, pIpMode is null!\n"},
        {"Tr104SipVlanId", [](uint32_t *, int *) { return Tr104SipVlanId(0, nullptr); },
         "param error, pSipVlanId is null\n"},
        {"Tr104RtpVlanPriority",
         [](uint32_t *, int *) {
             int p = 8;
             return Tr104RtpVlanPriority(1, &p);
         },
         "param error, pRtpVlanPriority[8] is error\n"},
        {"Tr104RtpSVlanPriority",
         [](uint32_t *, int *) {
             int p = -1;
             return Tr104RtpSVlanPriority(1, &p);
         },
         "param error, pRtpSVlanPriority[-1] is error\n"},
    };
    served();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.message);
        const std::string out = debugOutput([&] { EXPECT_EQ(c.call(&v, &mode), -2); });
        EXPECT_TRUE(printed(out, c.handler, c.message)) << out;
    }
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(0) | getTr104CfgParamInfoCfgFlag(7), 0) << "nothing staged";
    // The writes straight onto the queue print a null pointer on standard output, debugging on or
    // off; a bad nFlag there too, or only through the debug output (the DNS servers).
    const struct {
        int (*call)(uint32_t *v);
        const char *message;
        bool alwaysPrinted;
    } direct[] = {
        {[](uint32_t *v) { return Tr104VoiceIpAddr(1, v, nullptr, v, "eth0", nullptr); },
         "[Tr104VoiceIpAddr] param error, pIpAddr or pNetmask or pGateway is null!\r\n", true},
        {[](uint32_t *v) { return Tr104VoiceIpAddr(3, v, v, v, "eth0", nullptr); },
         "[Tr104VoiceIpAddr] param error, nFlag[3]\n", true},
        {[](uint32_t *v) { return Tr104DnsIpAddr(1, nullptr, v, nullptr); },
         "[Tr104DnsIpAddr] param error, pDnsIp1 or pDnsIp2 is null!\r\n", true},
        {[](uint32_t *v) { return Tr104DnsIpAddr(3, v, v, nullptr); }, "[Tr104DnsIpAddr,", false},
        {[](uint32_t *) { return Tr104DhcpOption120(1, nullptr); },
         "[Tr104DhcpOption120] param error, pOption120 is null!\r\n", true},
        {[](uint32_t *) { return Tr104DhcpOption120(-1, "x"); }, "[Tr104DhcpOption120] param error, nFlag[-1]\n", true},
    };
    for (const auto &c : direct) {
        SCOPED_TRACE(c.message);
        testing::internal::CaptureStdout();
        EXPECT_EQ(c.call(&v), -2);
        const std::string quiet = testing::internal::GetCapturedStdout();
        EXPECT_EQ(quiet.find(c.message) != std::string::npos, c.alwaysPrinted) << quiet;
        const std::string out = debugOutput([&] { EXPECT_EQ(c.call(&v), -2); });
        EXPECT_NE(out.find(c.message), std::string::npos) << out;
    }
    const std::string dns = debugOutput([&] { Tr104DnsIpAddr(3, &v, &v, nullptr); });
    EXPECT_TRUE(printed(dns, "Tr104DnsIpAddr", "param error, nFlag[3]\n")) << dns;
    expectNothingSent();
}

// The direct messages go straight onto the queue: the interface name cut to 10 characters,
// the port from the third word of the port record; both DNS servers at once.
TEST_F(Addressing, DirectMessages) {
    uint32_t a = ip("10.9.8.7"), m = ip("255.0.0.0"), g = ip("10.0.0.1");
    const uint32_t port[3] = {0, 0, 2};
    testing::internal::CaptureStdout();
    EXPECT_EQ(Tr104VoiceIpAddr(0, &a, &m, &g, "ignored", port), 0);
    EXPECT_EQ(Tr104VoiceIpAddr(1, &a, &m, &g, "voice-uplink-01", port), 0);
    uint32_t d1 = ip("8.8.8.8"), d2 = ip("8.8.4.4");
    EXPECT_EQ(Tr104DnsIpAddr(1, &d1, &d2, port), 0);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("[Tr104VoiceIpAddr] module=7, port=2, "), std::string::npos) << out;
    EXPECT_NE(out.find("ifName=voice-upli.\r\n"), std::string::npos) << out;
    EXPECT_NE(out.find("[Tr104DnsIpAddr] module=7, nPort=2, Dns1=0x"), std::string::npos) << out;
    const auto sent = served();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_TRUE(siptest::zeroExcept(sent[0], {{0, 26}}));
    const vmemu::NetState s = state();
    EXPECT_EQ(s.directIpWrites, 1);
    EXPECT_STREQ(s.lastDirectIp.aIfName, "voice-upli");
    EXPECT_EQ(s.lastDirectIp.unPort, 2u);
    EXPECT_EQ(s.ip.unVoiceAddr, a);
    EXPECT_EQ(s.directDnsWrites, 1);
    EXPECT_EQ(s.dns[1], d2);
}

TEST_F(Addressing, ModeFollowsTheDhcpAndPppoeClients) {
    const struct { int mode, dhcp, pppoe; } cases[] = {{1, 1, 0}, {2, 0, 1}, {0, 0, 0}};
    for (const auto &c : cases) {
        int mode = c.mode;
        ASSERT_EQ(Tr104IpMode(1, &mode, nullptr), 0);
        served();
        EXPECT_EQ(state().dhcpEnable, c.dhcp);
        EXPECT_EQ(vmemu::pppoe(emulator).unEnable, static_cast<uint32_t>(c.pppoe));
        mode = 0;
        ASSERT_EQ(Tr104IpMode(0, &mode, nullptr), 0);
        EXPECT_EQ(mode, c.mode);
    }
    int negative = -1;
    EXPECT_EQ(Tr104IpMode(1, &negative, nullptr), -2);
    EXPECT_EQ(VoipPrivateIpCfg(0x103, 7, ip("10.20.30.40")), 0);
    served();
    EXPECT_EQ(state().oltNo, 3);
    EXPECT_EQ(state().onuNo, 7);
    EXPECT_EQ(state().privateAddr, ip("10.20.30.40"));
}

class Vlans : public NetTest {};

const ValueHandler kSipHandlers[] = {Tr104SipVlanId,  Tr104SipVlanPriority,  Tr104SipVlanTypeId,
                                     Tr104SipSVlanId, Tr104SipSVlanPriority, Tr104SipSVlanTypeId};
const ValueHandler kRtpHandlers[] = {Tr104RtpVlanId,  Tr104RtpVlanPriority,  Tr104RtpVlanTypeId,
                                     Tr104RtpSVlanId, Tr104RtpSVlanPriority, Tr104RtpSVlanTypeId};

// Each handler reads its own field of its own class.
TEST_F(Vlans, GetsReadTheirField) {
    vmemu::setVlanClass(emulator, false, {0x88a8, 3, 0, 300, 0x8100, 4, 0, 40});
    vmemu::setVlanClass(emulator, true, {0x9100, 6, 0, 600, 0x8101, 7, 0, 70});
    const int sip[] = {40, 4, 0x8100, 300, 3, 0x88a8};
    const int rtp[] = {70, 7, 0x8101, 600, 6, 0x9100};
    for (int i = 0; i < 6; ++i) {
        int value = -1;
        ASSERT_EQ(kSipHandlers[i](0, &value), 0);
        EXPECT_EQ(value, sip[i]) << i;
        ASSERT_EQ(kRtpHandlers[i](0, &value), 0);
        EXPECT_EQ(value, rtp[i]) << i;
    }
}

// Six values of a class in a row: one configuration on the sixth, no read; the other class
// untouched.
TEST_F(Vlans, SixValuesMakeOneConfiguration) {
    for (const bool rtp : {false, true}) {
        const ValueHandler *h = rtp ? kRtpHandlers : kSipHandlers;
        const vmemu::NetState before = state();
        const int values[] = {200, 6, 0x8100, 20, 2, 0x88a8};
        for (int i = 0; i < 6; ++i) {
            int v = values[i];
            ASSERT_EQ(h[i](1, &v), 0);
            EXPECT_EQ(served().size(), i < 5 ? 0u : 1u) << i;
        }
        EXPECT_EQ(gTr104CfgParamInfo[rtp ? 7 : 6].timerStarted, 0);
        const vmemu::NetState after = state();
        const Tr104VlanClass &c = rtp ? after.vlan.rtp : after.vlan.sip;
        EXPECT_EQ(c.usVlanId, 200);
        EXPECT_EQ(c.ucVlanPriority, 6);
        EXPECT_EQ(c.unVlanTypeId, 0x8100u);
        EXPECT_EQ(c.usSVlanId, 20);
        EXPECT_EQ(c.ucSVlanPriority, 2);
        EXPECT_EQ(c.unSVlanTypeId, 0x88a8u);
        const Tr104VlanClass &other = rtp ? after.vlan.sip : after.vlan.rtp;
        const Tr104VlanClass &otherBefore = rtp ? before.vlan.sip : before.vlan.rtp;
        EXPECT_EQ(std::memcmp(&other, &otherBefore, sizeof(other)), 0);
        EXPECT_EQ(after.vlanWrites, before.vlanWrites + 1);
    }
}

// What a set stores: ids 1..4096, type ids 1..65535 and SIP priorities 1..7 are kept and any
// other value becomes 0; RTP priorities 0..7 are kept and others refused.
TEST_F(Vlans, RangesAndTheTimer) {
    const struct {
        ValueHandler handler;
        int value, stored;
        size_t offset, width;
    } cases[] = {
        {Tr104SipVlanId, 4096, 4096, 18, 2},
        {Tr104SipVlanId, 4097, 0, 18, 2},
        {Tr104SipVlanPriority, 9, 0, 16, 1},
        {Tr104SipVlanPriority, 7, 7, 16, 1},
        {Tr104SipSVlanPriority, 0, 0, 8, 1},
        {Tr104SipSVlanTypeId, 65536, 0, 4, 4},
        {Tr104RtpVlanId, 0, 0, 34, 2},
        {Tr104RtpVlanId, 5000, 0, 34, 2},
        {Tr104RtpVlanId, 4096, 4096, 34, 2},
        {Tr104RtpVlanPriority, 0, 0, 32, 1},
        {Tr104RtpSVlanTypeId, 65535, 65535, 20, 4},
        {Tr104RtpSVlanId, -3, 0, 26, 2},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.value);
        resetTr104CfgParamInfo(6);
        resetTr104CfgParamInfo(7);
        int v = c.value;
        ASSERT_EQ(c.handler(1, &v), 0);
        const int slot = c.offset >= 20 ? 7 : 6;
        const char *staged = static_cast<const char *>(getTr104CfgParamInfoParamBuffer(slot));
        uint8_t u8 = 0;
        uint16_t u16 = 0;
        uint32_t u32 = 0;
        std::memcpy(c.width == 1   ? static_cast<void *>(&u8)
                    : c.width == 2 ? static_cast<void *>(&u16)
                                   : &u32,
                    staged + c.offset, c.width);
        EXPECT_EQ(c.width == 1 ? u8 : c.width == 2 ? u16 : u32, static_cast<uint32_t>(c.stored));
        std::memcpy(&u32, staged, 4);
        EXPECT_EQ(u32, slot == 6 ? 1u : 2u) << "the kind of the class";
    }
    resetTr104CfgParamInfo(6);
    resetTr104CfgParamInfo(7);
    served();

    // Only the SIP VLAN id: read and written back with the id replaced when the timer fires.
    vmemu::setVlanClass(emulator, false, {0x88a8, 3, 0, 300, 0x8100, 4, 0, 40});
    int id = 100;
    ASSERT_EQ(Tr104SipVlanId(1, &id), 0);
    EXPECT_EQ(gTr104CfgParamInfo[6].timerStarted, 1);
    ASSERT_TRUE(awaitIdle(6));
    const auto sent = served();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].cmd, TR104_GET_VLAN_ID);
    EXPECT_EQ(sent[1].cmd, TR104_SET_VLAN_ID);
    EXPECT_EQ(sent[1].word<uint32_t>(0), 1u);
    const Tr104VlanClass sip = state().vlan.sip;
    EXPECT_EQ(sip.usVlanId, 100);
    EXPECT_EQ(sip.ucVlanPriority, 4);
    EXPECT_EQ(sip.usSVlanId, 300);

    // A failed send on completion: -1, and the slot is idle.
    emulator.stop();
    const int keptQueue = gTr104SndMsgQueueId;
    gTr104SndMsgQueueId = -1;
    for (int i = 0; i < 5; ++i) {
        int v = 1;
        ASSERT_EQ(kRtpHandlers[i](1, &v), 0);
    }
    int v = 1;
    const std::string out = debugOutput([&] { EXPECT_EQ(Tr104RtpSVlanTypeId(1, &v), -1); });
    gTr104SndMsgQueueId = keptQueue;
    EXPECT_TRUE(printed(out, "Tr104RtpSVlanTypeId", "setRtpVlanParam failed.\n")) << out;
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(7), 0);
    EXPECT_EQ(gTr104CfgParamInfo[7].timerStarted, 0);
    ASSERT_TRUE(emulator.start());
}

}  // namespace
