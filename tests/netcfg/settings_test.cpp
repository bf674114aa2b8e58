// DNS, DHCP options, PPPoE, the management URL, time, the number tables, the LED standard and
// the RTP DSCP mark against the emulated voice module.
#include "netcfg/netcfg_fixture.h"

namespace {

using netcfgtest::NetTest;
using netcfgtest::ValueHandler;
using siptest::debugOutput;
using siptest::printed;

class Settings : public NetTest {
protected:
    static int setText(ValueHandler h, const std::string &text) {
        std::vector<char> buf(text.begin(), text.end());
        buf.push_back('\0');
        return h(1, buf.data());
    }
    static std::string getText(ValueHandler h) {
        std::vector<char> buf(1024, 0);
        const int rc = h(0, buf.data());
        return rc == 0 ? std::string(buf.data()) : "<" + std::to_string(rc) + ">";
    }
};

// Every set of a block with a fields-present word carries its field and its bit alone; the
// voice module keeps the others, and the get reads the field back.
TEST_F(Settings, FieldSetsCarryTheirBitAlone) {
    const struct {
        ValueHandler handler;
        uint32_t setCmd;
        uint32_t bit;
        size_t offset, width;
        int number;  // a number value, or
        const char *text;  // a text value
    } cases[] = {
        {Tr104DHCPOption60Enable, TR104_SET_DHCP_OPTION60_ID, 0x1, 4, 4, 1, nullptr},
        {Tr104DHCPOption60Type, TR104_SET_DHCP_OPTION60_ID, 0x4, 8, 4, 3, nullptr},
        {Tr104DHCPOption60Value, TR104_SET_DHCP_OPTION60_ID, 0x2, 16, 132, 0, "voip-ont-class"},
        {Tr104DHCPOption60ValueMode, TR104_SET_DHCP_OPTION60_ID, 0x8, 12, 4, 2, nullptr},
        {Tr104DHCPOption125Enable, TR104_SET_DHCP_OPTION125_ID, 0x1, 4, 1, 1, nullptr},
        {Tr104DHCPOption125Value, TR104_SET_DHCP_OPTION125_ID, 0x2, 5, 131, 0, "vendor-125"},
        {Tr104PPPoEAccount, TR104_SET_PPPOE_PARAM_ID, 0x2, 8, 64, 0, "alice@isp"},
        {Tr104PPPoEPassword, TR104_SET_PPPOE_PARAM_ID, 0x4, 72, 64, 0, "s3cret"},
        {Tr104PPPoEEnable, TR104_SET_PPPOE_PARAM_ID, 0x1, 4, 4, 1, nullptr},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.setCmd * 16 + c.bit);
        served();
        int value = c.number;
        ASSERT_EQ(c.text ? setText(c.handler, c.text) : c.handler(1, &value), 0);
        std::vector<vmemu::Request> sent;
        for (const auto &r : served()) {
            if (r.cmd == c.setCmd)
                sent.push_back(r);
        }
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].word<uint32_t>(0), c.bit);
        EXPECT_TRUE(siptest::zeroExcept(sent[0], {{0, 4}, {c.offset, c.width}}));
        if (c.text) {
            EXPECT_EQ(getText(c.handler), c.text);
        } else {
            value = -1;
            ASSERT_EQ(c.handler(0, &value), 0);
            EXPECT_EQ(value, c.number);
        }
    }
    // Earlier fields survived the later sets.
    EXPECT_EQ(vmemu::option60(emulator).unEnable, 1u);
    EXPECT_STREQ(vmemu::pppoe(emulator).aAccount, "alice@isp");
}

TEST_F(Settings, LimitsOfTheFieldSets) {
    const std::string at130(130, 'x'), at63(63, 'a');
    const struct {
        ValueHandler handler;
        std::string text;
        int rc;
        const char *handlerName, *message;
    } texts[] = {
        {Tr104DHCPOption60Value, at130, 0, nullptr, nullptr},
        {Tr104DHCPOption60Value, at130 + "x", -2, "Tr104DHCPOption60Value",
         "param error, option60  value len too long\n"},
        {Tr104DHCPOption125Value, at130, 0, nullptr, nullptr},
        {Tr104DHCPOption125Value, at130 + "x", -2, "Tr104DHCPOption125Value",
         "param error, option125 value len too long\n"},
        {Tr104PPPoEAccount, at63, 0, nullptr, nullptr},
        {Tr104PPPoEAccount, at63 + "a", -2, "Tr104PPPoEAccount", "param error, pPPPoEAccount is too long!"},
        {Tr104PPPoEPassword, at63 + "a", -2, "Tr104PPPoEPassword", "param error, pPPPoEPassword is too long!"},
    };
    for (const auto &t : texts) {
        SCOPED_TRACE(t.text.size());
        served();
        const std::string out = debugOutput([&] { EXPECT_EQ(setText(t.handler, t.text), t.rc); });
        if (t.rc != 0) {
            EXPECT_TRUE(printed(out, t.handlerName, t.message)) << out;
            expectNothingSent();
        } else {
            EXPECT_EQ(getText(t.handler), t.text);
        }
    }
    const struct {
        ValueHandler handler;
        int value;
        const char *message;
    } numbers[] = {
        {Tr104DHCPOption60Type, -1, "param error, *pOptionType[-1]\n"},
        {Tr104DHCPOption60ValueMode, -5, "param error, *pOptionValueMode[-5]\n"},
        {Tr104PPPoEEnable, 2, "param error, pPPPoEEnableFlag[2]\n"},
    };
    served();
    for (const auto &n : numbers) {
        int v = n.value;
        const std::string out = debugOutput([&] { EXPECT_EQ(n.handler(1, &v), -2); });
        EXPECT_NE(out.find(n.message), std::string::npos) << out;
    }
    expectNothingSent();

    // The value text is refused while the value mode is not 0: only the mode is read.
    int mode = 1;
    ASSERT_EQ(Tr104DHCPOption60ValueMode(1, &mode), 0);
    served();
    EXPECT_EQ(setText(Tr104DHCPOption60Value, "abc"), -2);
    const auto sent = served();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].cmd, TR104_GET_DHCP_OPTION60_ID);
}

TEST_F(Settings, DnsDhcpAndTheManagementUrl) {
    uint32_t d1 = ip("1.1.1.1"), d2 = ip("9.9.9.9");
    ASSERT_EQ(Tr104DnsIpConfig1(1, &d1), 0);
    ASSERT_EQ(Tr104DnsIpConfig2(1, &d2), 0);
    auto sent = served();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1].word<uint32_t>(272), 1u);
    EXPECT_TRUE(siptest::zeroExcept(sent[1], {{4, 4}, {272, 4}}));
    uint32_t read = 0;
    // Each server prints its own lines: server 2's read says so.
    const std::string dnsOut = debugOutput([&] { ASSERT_EQ(Tr104DnsIpConfig2(0, &read), 0); });
    EXPECT_TRUE(printed(dnsOut, "Tr104DnsIpConfig2", "*get DnsIp_2[" + std::to_string(d2) + "]\n")) << dnsOut;
    EXPECT_EQ(read, d2);
    ASSERT_EQ(Tr104DnsIpConfig1(0, &read), 0);
    EXPECT_EQ(read, d1);
    EXPECT_EQ(state().dnsWrites, 2);

    for (const auto &[value, cmd, enabled] : {std::tuple{1, TR104_SET_DHCP_ENABLE_ID, 1},
                                              {2, TR104_SET_DHCP_DISABLE_ID, 0},
                                              {1, TR104_SET_DHCP_ENABLE_ID, 1}}) {
        served();
        int v = value;
        ASSERT_EQ(Tr104DhcpEnable(1, &v), 0);
        sent = served();
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(cmd));
        v = -1;
        ASSERT_EQ(Tr104DhcpEnable(0, &v), 0);
        EXPECT_EQ(v, enabled);
    }

    EXPECT_EQ(getText(Tr104AcsUrlConfig), "http://acs.example.net:7547/acs");
    served();
    EXPECT_EQ(setText(Tr104AcsUrlConfig, "http://other"), 0);
    EXPECT_EQ(Tr104PPPoEMode(1, nullptr), 0);
    expectNothingSent();

    testing::internal::CaptureStdout();
    EXPECT_EQ(Tr104DhcpOption120(0, "x"), 0);
    EXPECT_EQ(Tr104DhcpOption120(1, std::string(2049, 's').c_str()), -2);
    EXPECT_EQ(Tr104DhcpOption120(1, "sip.example.net"), 0);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("[Tr104DhcpOption120] param error, pOption120 is too long.\r\n"), std::string::npos) << out;
    served();
    EXPECT_EQ(state().option120, "sip.example.net");
}

TEST_F(Settings, TimeAndTheZone) {
    int enable = 1;
    ASSERT_EQ(Tr104TimeEnable(1, &enable), 0);
    ASSERT_EQ(setText(Tr104TimeNtpServer2, "ntp2.example.net"), 0);
    EXPECT_EQ(getText(Tr104TimeNtpServer1), "pool.ntp.org");
    EXPECT_EQ(getText(Tr104TimeNtpServer2), "ntp2.example.net");
    EXPECT_EQ(getText(Tr104TimeStatus), "Synchronized");
    EXPECT_EQ(setText(Tr104TimeStatus, "x"), -2);
    // A server name is sent running on over the fields after it, as far as the block's end; read
    // back, it ends within its own field.
    const std::string longName(600, 'n');
    served();
    ASSERT_EQ(setText(Tr104TimeNtpServer1, longName), 0);
    const auto sentLong = served();
    ASSERT_EQ(sentLong.size(), 1u);
    EXPECT_EQ(sentLong[0].text_at(TR104_TIME_NTP1_AT, TR104_TIME_PAYLOAD_LEN),
              longName.substr(0, TR104_TIME_PAYLOAD_LEN - TR104_TIME_NTP1_AT - 1));
    EXPECT_EQ(getText(Tr104TimeNtpServer1),
              longName.substr(0, TR104_FIELD_ROOM(Tr104TimePayload, aNtpServer1, aNtpServer2) - 1));
    enable = 0;
    ASSERT_EQ(Tr104TimeEnable(0, &enable), 0);
    EXPECT_EQ(enable, 1);

    const struct {
        const char *zone;
        int rc;
        int32_t seconds;  // sent; read back as the same text
    } zones[] = {{"+08:00", 0, 28800}, {"-03:30", 0, -12600}, {"+12:00", 0, 43200}, {"+05:30", 0, 19800},
                 {"+2:00", -2, 0},     {"+02:30", -2, 0},     {"+12:30", -2, 0},    {"+13:00", -2, 0},
                 {"08:00+", -2, 0},    {"+08:60", -2, 0},     {"+08:00 ", -2, 0}};
    for (const auto &z : zones) {
        SCOPED_TRACE(z.zone);
        served();
        EXPECT_EQ(checkTimeZoneValid(z.zone), z.rc == 0 ? 1 : 0);
        EXPECT_EQ(setText(Tr104TimeLocalTimeZone, z.zone), z.rc);
        const auto sent = served();
        ASSERT_EQ(sent.size(), z.rc == 0 ? 1u : 0u);
        if (z.rc == 0) {
            EXPECT_EQ(sent[0].word<int32_t>(TR104_TIME_OFFSET_AT), z.seconds);
            EXPECT_EQ(getText(Tr104TimeLocalTimeZone), z.zone);
        }
    }
    EXPECT_EQ(checkTimeZoneValid(nullptr), 0);
    const char zero[] = "+00:00";
    ASSERT_EQ(setText(Tr104TimeLocalTimeZone, zero), 0);
    EXPECT_EQ(getText(Tr104TimeLocalTimeZone), "-00:00") << "an offset of 0 reads back with a minus";

    // The local time is the voice module's clock: a date and a time.
    const std::string now = getText(Tr104TimeCurrentLocalTime);
    EXPECT_EQ(now.size(), 19u) << now;
    EXPECT_EQ(now[4], '-');
    EXPECT_EQ(now[13], ':');

    served();
    ASSERT_EQ(setText(Tr104TimeLocalTimeZoneName, "Asia/Shanghai"), 0);
    EXPECT_EQ(getText(Tr104TimeLocalTimeZoneName), "Asia/Shanghai");
    EXPECT_STREQ(gLocalTimeZoneName, "Asia/Shanghai");
    EXPECT_EQ(setText(Tr104TimeLocalTimeZoneName, std::string(64, 'z')), -2);
    EXPECT_STREQ(gLocalTimeZoneName, "Asia/Shanghai");
    expectNothingSent();
}

TEST_F(Settings, NumberTables) {
    EXPECT_EQ(checkPosNumValid("0123456789*#abcdABCD"), 1);
    EXPECT_EQ(checkPosNumValid("0123456789*#abcdABCD1"), 0);
    EXPECT_EQ(checkIptNumValid("12E4"), 0);
    EXPECT_EQ(checkIptNumValid(nullptr), 0);
    EXPECT_EQ(checkPOSorIPTTypeValid("Z"), 1);
    EXPECT_EQ(checkPOSorIPTTypeValid(nullptr), 0);

    using TableHandler = int (*)(int, char *, char *, int *);
    const struct {
        TableHandler handler;
        uint32_t addCmd, deleteCmd;
        std::vector<vmemu::NumberEntry> vmemu::NetState::*entries;
    } tables[] = {{Tr104PosParamConfig, TR104_ADD_POS_NUM_ID, TR104_DEL_POS_NUM_ID, &vmemu::NetState::pos},
                  {Tr104IptParamConfig, TR104_ADD_IPT_NUM_ID, TR104_DEL_IPT_NUM_ID, &vmemu::NetState::ipt}};
    for (const auto &t : tables) {
        SCOPED_TRACE(t.addCmd);
        char type = 'A';
        char first[] = "0123456789*#abcdABCD";
        char second[] = "5551234";
        ASSERT_EQ(t.handler(1, first, &type, nullptr), 0);
        type = 'B';
        ASSERT_EQ(t.handler(1, second, &type, nullptr), 0);
        char bad[] = "12E4";
        EXPECT_EQ(t.handler(1, bad, &type, nullptr), -2);
        EXPECT_EQ(t.handler(0, nullptr, &type, nullptr), -2);
        auto sent = served();
        ASSERT_EQ(sent.size(), 2u);
        EXPECT_EQ(sent[1].cmd, t.addCmd);
        EXPECT_EQ(sent[1].word<uint8_t>(4), 7);
        EXPECT_EQ(sent[1].word<uint8_t>(6), 'B');
        EXPECT_EQ(sent[1].text_at(80, 21), "5551234");
        EXPECT_EQ((state().*t.entries).size(), 2u);

        int locate[4] = {0, 0, 2, 0};
        char number[32] = {};
        type = 0;
        ASSERT_EQ(t.handler(0, number, &type, locate), 0);
        EXPECT_STREQ(number, "5551234");
        EXPECT_EQ(type, 'B');
        locate[2] = 3;
        ASSERT_EQ(t.handler(0, number, &type, locate), 0);
        EXPECT_STREQ(number, "") << "an entry beyond the table clears the number";
        EXPECT_EQ(type, 0);
        locate[2] = 11;
        EXPECT_EQ(t.handler(0, number, &type, locate), -2);

        ASSERT_EQ(t.handler(2, second, &type, nullptr), 0);
        served();
        EXPECT_EQ((state().*t.entries).size(), 1u);
        ASSERT_EQ(t.handler(2, nullptr, &type, nullptr), 0);
        sent = served();
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].cmd, t.deleteCmd);
        EXPECT_EQ(sent[0].word<uint8_t>(0), 1) << "delete all";
        EXPECT_TRUE((state().*t.entries).empty());
    }

    uint8_t led = 3;
    ASSERT_EQ(Tr104LedStandard(1, &led), 0);
    led = 0;
    ASSERT_EQ(Tr104LedStandard(0, &led), 0);
    EXPECT_EQ(led, 3);
    EXPECT_EQ(state().ledStandard, 3);

    int mark = 5;
    const struct {
        int protocol, rc;
    } dscp[] = {{TR104_PROTOCOL_SIP, -1}, {TR104_PROTOCOL_H248, 0}, {TR104_PROTOCOL_NONE, -1}};
    for (const auto &d : dscp) {
        gTr104CurrProtocolType = d.protocol;
        EXPECT_EQ(Tr104RtpDSCPMark(1, &mark), d.rc) << d.protocol;
    }
    gTr104CurrProtocolType = TR104_PROTOCOL_NONE;
}

}  // namespace
