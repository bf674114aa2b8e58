// SIP server addresses: reads straight from the voice module, writes staged per server and sent
// as one record when address and port are both there, or completed from the current record by
// the slot's timer.
#include <cstring>

#include "sipid/sipid_fixture.h"
#include "tr104/sip_servers.h"

namespace {

using namespace sipid;

constexpr size_t kUseIpOffset = 40;
constexpr size_t kFlagOffset = 44;
constexpr size_t kHostOffset = 48;
constexpr size_t kPortOffset = 118;
constexpr size_t kActiveOffset = 120;

struct Server {
    const char *name;
    Handler address;
    Handler port;
    int slot;
    uint32_t flag;
    uint32_t getCmd;
    uint32_t setCmd;
    const char *family;  // the emulator's record family
    bool registrar;
};

const Server kServers[] = {
    {"registrar", Tr104SipRegistrarServerIpSip, Tr104SipRegistrarServerPortSip, 1, 1, 16390, 16389,
     "sip registrar server", true},
    {"secondary registrar", Tr104SipSecondaryRegServerIpSip, Tr104SipSecondaryRegServerPortSip, 2, 2, 16390, 16389,
     "sip registrar server", true},
    {"proxy", Tr104SipProxyServerIpSip, Tr104SipProxyServerPortSip, 3, 1, 16393, 16392, "sip proxy server", false},
    {"secondary proxy", Tr104SipSecondaryProxyServerIpSip, Tr104SipSecondaryProxyServerPortSip, 4, 2, 16393, 16392,
     "sip proxy server", false},
    {"outbound proxy", Tr104SipOutboundProxyIpSip, Tr104SipOutboundProxyPortSip, 8, 1, 16388, 16387,
     "sip outbound proxy", false},
    {"secondary outbound proxy", Tr104SipSecondaryOutboundProxyIpSip, Tr104SipSecondaryOutboundProxyPortSip, 9, 2,
     16388, 16387, "sip outbound proxy", false},
};
const Server &kRegistrar = kServers[0];
const Server &kSecondaryRegistrar = kServers[1];
const Server &kProxy = kServers[2];
const Server &kSecondaryProxy = kServers[3];
const Server &kOutbound = kServers[4];

// A server record as the voice module keeps it.
std::vector<char> serverRecord(uint32_t flag, const char *host, uint16_t port, uint32_t useIp) {
    std::vector<char> r(TR104_SERVER_RECORD_LEN, 0);
    std::memcpy(r.data() + kUseIpOffset, &useIp, 4);
    std::memcpy(r.data() + kFlagOffset, &flag, 4);
    std::strncpy(r.data() + kHostOffset, host, 65);
    std::memcpy(r.data() + kPortOffset, &port, 2);
    return r;
}

class Servers : public DeferredChannelTest {
protected:
    std::vector<int> slots() const override { return {1, 2, 3, 4, 8, 9}; }

    void store(const Server &s, const char *host, uint16_t port, uint32_t useIp) {
        const std::vector<char> r = serverRecord(s.flag, host, port, useIp);
        emulator.put(s.family, r.data(), r.size());
    }
};

// Address and then port of each server: one record at the second write, no read, and the
// values read back through the handlers.
TEST_F(Servers, AddressThenPortSendsOneRecordAtOnce) {
    for (const Server &s : kServers) {
        SCOPED_TRACE(s.name);
        const std::string host = std::string(s.name[0] == 's' ? "standby" : "main") + ".example.net";
        ASSERT_EQ(setText(s.address, host), 0);
        EXPECT_EQ(gTr104CfgParamInfo[s.slot].timerStarted, 1);
        EXPECT_EQ(getTr104CfgParamInfoCfgFlag(s.slot), 0x1);
        ASSERT_EQ(setInt(s.port, 5061), 0);
        EXPECT_EQ(gTr104CfgParamInfo[s.slot].timerStarted, 0);
        EXPECT_EQ(getTr104CfgParamInfoCfgFlag(s.slot), 0);

        const auto sent = served();
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].cmd, s.setCmd);
        EXPECT_EQ(sent[0].word<uint32_t>(kFlagOffset), s.flag);
        EXPECT_EQ(sent[0].text_at(kHostOffset, 66), host);
        EXPECT_EQ(sent[0].word<uint16_t>(kPortOffset), 5061);
        EXPECT_EQ(sent[0].word<uint32_t>(kUseIpOffset), 0u);  // a host name (registrars: nothing read)

        EXPECT_EQ(getText(s.address), host);
        int port = 0;
        ASSERT_EQ(s.port(0, &port, nullptr), 0);
        EXPECT_EQ(port, 5061);
        const auto reads = served();
        ASSERT_EQ(reads.size(), 2u);
        for (const auto &r : reads) {
            EXPECT_EQ(r.cmd, s.getCmd);
            EXPECT_EQ(r.word<uint32_t>(kFlagOffset), s.flag);  // the server is named by its flag
        }
    }
    // Primary and standby records are kept apart.
    EXPECT_EQ(getText(Tr104SipProxyServerIpSip), "main.example.net");
    EXPECT_EQ(getText(Tr104SipSecondaryProxyServerIpSip), "standby.example.net");
}

TEST_F(Servers, TheTimerIsCancelledOnceTheRecordIsSent) {
    ASSERT_EQ(setText(Tr104SipProxyServerIpSip, "first.example.net"), 0);
    ASSERT_EQ(setText(Tr104SipProxyServerIpSip, "proxy.example.net"), 0);  // the later value counts
    ASSERT_EQ(setInt(Tr104SipProxyServerPortSip, 5070), 0);
    ASSERT_TRUE(emulator.waitForRequests(1, 10s));
    std::this_thread::sleep_for(6s);  // past the timer's 5 s: no second send may appear
    const auto sent = served();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].cmd, 16392u);
    EXPECT_EQ(sent[0].text_at(kHostOffset, 66), "proxy.example.net");
    EXPECT_EQ(sent[0].word<uint16_t>(kPortOffset), 5070);
}

// A server given only its port (or only its address) is completed by the slot's timer from the
// voice module's current record.  Several slots run their timers side by side.
TEST_F(Servers, AnIncompleteServerIsCompletedFromTheCurrentRecordAfterFiveSeconds) {
    store(kProxy, "old-proxy.example.net", 5060, 0);
    store(kSecondaryRegistrar, "old-registrar.example.net", 5062, 1);  // registrars keep this word
    store(kOutbound, "10.1.1.1", 5064, 1);
    const auto start = Clock::now();
    ASSERT_EQ(setInt(kProxy.port, 5070), 0);
    ASSERT_EQ(setInt(kSecondaryRegistrar.port, 5072), 0);
    ASSERT_EQ(setText(kOutbound.address, "outbound.example.net"), 0);
    EXPECT_EQ(served().size(), 0u);  // nothing sent at once

    const auto seen = awaitRequests(6);
    EXPECT_GE(std::chrono::duration<double>(Clock::now() - start).count(), 4.5);
    for (int slot : {3, 2, 8}) {
        EXPECT_TRUE(awaitIdle(slot)) << slot;
    }
    const auto sent = served();
    ASSERT_EQ(sent.size(), 6u);

    struct Expect {
        const Server *server;
        const char *host;
        uint16_t port;
        uint32_t useIp;
    };
    const Expect expected[] = {
        {&kProxy, "old-proxy.example.net", 5070, 0},
        {&kSecondaryRegistrar, "old-registrar.example.net", 5072, 1},
        {&kOutbound, "outbound.example.net", 5064, 0},
    };
    for (const Expect &e : expected) {
        SCOPED_TRACE(e.server->name);
        // One read of the server's record, then one write of the merged record.
        std::vector<vmemu::Request> mine;
        for (const auto &r : sent) {
            if ((r.cmd == e.server->getCmd || r.cmd == e.server->setCmd) &&
                r.word<uint32_t>(kFlagOffset) == e.server->flag) {
                mine.push_back(r);
            }
        }
        ASSERT_EQ(mine.size(), 2u);
        EXPECT_EQ(mine[0].cmd, e.server->getCmd);
        EXPECT_EQ(mine[1].cmd, e.server->setCmd);
        EXPECT_EQ(mine[1].text_at(kHostOffset, 66), e.host);
        EXPECT_EQ(mine[1].word<uint16_t>(kPortOffset), e.port);
        EXPECT_EQ(mine[1].word<uint32_t>(kUseIpOffset), e.useIp);
    }
}

// Ports up to 65535 and addresses up to 65 characters; anything larger is refused before it
// is staged.
TEST_F(Servers, PortAndAddressLimits) {
    struct Case {
        int port;
        int rc;
    };
    const Case cases[] = {{0, 0}, {5060, 0}, {65535, 0}, {65536, -2}, {70000, -2}, {-1, -2}, {-65536, -2}};
    for (const Server &s : kServers) {
        for (const Case &c : cases) {
            SCOPED_TRACE(std::string(s.name) + " port " + std::to_string(c.port));
            resetTr104CfgParamInfo(s.slot);
            EXPECT_EQ(setInt(s.port, c.port), c.rc);
            if (c.rc == 0) {
                EXPECT_EQ(getTr104CfgParamInfoCfgFlag(s.slot), 0x2);
                uint16_t staged = 0;
                std::memcpy(&staged, gTr104CfgParamInfo[s.slot].paramBuffer + kPortOffset, 2);
                EXPECT_EQ(staged, c.port);
            } else {
                // Refused before anything is staged.
                EXPECT_EQ(getTr104CfgParamInfoCfgFlag(s.slot), 0);
                EXPECT_EQ(gTr104CfgParamInfo[s.slot].timerStarted, 0);
            }
        }
        resetTr104CfgParamInfo(s.slot);
        EXPECT_EQ(setText(s.address, std::string(66, 'a')), -2);
        EXPECT_EQ(getTr104CfgParamInfoCfgFlag(s.slot), 0);
        ASSERT_EQ(setText(s.address, std::string(65, 'a')), 0);
        ASSERT_EQ(setInt(s.port, 1), 0);
    }
    const auto sent = served();
    EXPECT_EQ(sent.size(), 6u);
    for (const auto &r : sent) {
        EXPECT_EQ(r.text_at(kHostOffset, 70), std::string(65, 'a'));
        EXPECT_EQ(r.payload[kHostOffset + 65], 0);
    }
}

// Proxies tell the voice module whether the address is dotted or a host name; registrars send
// the word as the voice module gave it (0 when nothing was read).
TEST_F(Servers, DottedAddressOrHostName) {
    struct Case {
        const char *host;
        uint32_t proxyUseIp;
    };
    const Case cases[] = {
        {"192.168.10.20", 1}, {"sip.example.net", 0}, {"", 1}, {"300.1.1.1", 0}, {"10.0.0.1a", 0},
    };
    for (const Server &s : kServers) {
        for (const Case &c : cases) {
            SCOPED_TRACE(std::string(s.name) + " \"" + c.host + "\"");
            ASSERT_EQ(setText(s.address, c.host), 0);
            ASSERT_EQ(setInt(s.port, 5060), 0);
            const auto sent = served();
            ASSERT_EQ(sent.size(), 1u);
            EXPECT_EQ(sent[0].word<uint32_t>(kUseIpOffset), s.registrar ? 0u : c.proxyUseIp);
        }
    }
}

TEST_F(Servers, FailedReadsAndBadArguments) {
    emulator.setFault(16393, {vmemu::Fault::FailureMarker, 0, -1});
    int port = 0;
    const std::string out = debugOutput([&] {
        EXPECT_EQ(getText(Tr104SipProxyServerIpSip), "<-1>");
        EXPECT_EQ(Tr104SipProxyServerPortSip(0, &port, nullptr), -1);
    });
    EXPECT_NE(out.find("[Tr104SipProxyServerIpSip,"), std::string::npos) << out;
    EXPECT_NE(out.find("GetProxyServerIp error \n"), std::string::npos) << out;
    emulator.clearFaults();
    EXPECT_EQ(served().size(), 2u);

    for (const Server &s : kServers) {
        SCOPED_TRACE(s.name);
        char text[TR104_SERVER_ADDR_LEN] = "x";
        EXPECT_EQ(s.address(0, nullptr, nullptr), -2);
        EXPECT_EQ(s.port(1, nullptr, nullptr), -2);
        EXPECT_EQ(s.address(2, text, nullptr), -2);
        EXPECT_EQ(s.port(-1, &port, nullptr), -2);
        EXPECT_EQ(getTr104CfgParamInfoCfgFlag(s.slot), 0);
    }
    EXPECT_EQ(served().size(), 0u);
}

TEST_F(Servers, ActiveProxyIsTheTextAtOffset120) {
    EXPECT_EQ(getText(Tr104ActiveSipProxyServerSip), "192.168.1.10");  // the emulator's factory value
    std::vector<char> inUse(TR104_SERVER_RECORD_LEN, 0);
    std::strcpy(inUse.data() + kActiveOffset, "proxy-b.example.net");
    std::strcpy(inUse.data() + kHostOffset, "not this one");
    emulator.put("sip proxy server", inUse.data(), inUse.size());
    EXPECT_EQ(getText(Tr104ActiveSipProxyServerSip), "proxy-b.example.net");
    auto sent = served();
    ASSERT_EQ(sent.size(), 2u);
    for (const auto &r : sent) {
        EXPECT_EQ(r.cmd, 16393u);
        EXPECT_EQ(r.word<uint32_t>(kFlagOffset), 0u);
    }
    // An over-long answer is cut to an address's 65 characters.
    std::memset(inUse.data() + kActiveOffset, 'p', TR104_SERVER_RECORD_LEN - kActiveOffset);
    emulator.put("sip proxy server", inUse.data(), inUse.size());
    EXPECT_EQ(getText(Tr104ActiveSipProxyServerSip), std::string(65, 'p'));

    char text[TR104_SERVER_ADDR_LEN] = "unchanged";
    EXPECT_EQ(Tr104ActiveSipProxyServerSip(1, text, nullptr), 0);  // a set does nothing
    EXPECT_STREQ(text, "unchanged");
    EXPECT_EQ(Tr104ActiveSipProxyServerSip(0, nullptr, nullptr), -2);
    EXPECT_EQ(Tr104ActiveSipProxyServerSip(3, text, nullptr), -2);
    emulator.setFault(16393, {vmemu::Fault::Silent, 0, -1});
    EXPECT_EQ(Tr104ActiveSipProxyServerSip(0, text, nullptr), -1);
    emulator.clearFaults();
    sent = served();
    EXPECT_EQ(sent.size(), 2u);  // the over-long read and the failed one
}

TEST_F(Servers, TransportIsKeptInTheLibrary) {
    struct Case {
        const char *text;
        int rc;
        const char *readBack;
    };
    const Case cases[] = {
        {"TLS", 0, "TLS"}, {"udp", -2, "TLS"}, {"UDP", 0, "UDP"},   {"SCTP", 0, "SCTP"},
        {"TCP", 0, "TCP"}, {"", -2, "TCP"},    {"TLS ", -2, "TCP"}, {"SCTPX", -2, "TCP"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(setText(Tr104SipProxyServerTransportSip, c.text), c.rc);
        char value[8] = {};
        ASSERT_EQ(Tr104SipProxyServerTransportSip(0, value, nullptr), 0);
        EXPECT_STREQ(value, c.readBack);
    }
    // A get copies four bytes: the rest of the caller's buffer is left alone.
    char value[8] = "#######";
    ASSERT_EQ(Tr104SipProxyServerTransportSip(0, value, nullptr), 0);
    EXPECT_EQ(std::string(value, 7), std::string("TCP\0###", 7));
    const std::string out = debugOutput([] { EXPECT_EQ(setText(Tr104SipProxyServerTransportSip, "udp"), -2); });
    EXPECT_NE(out.find("param error, pProxyServerTransport[udp]\n"), std::string::npos) << out;
    EXPECT_EQ(Tr104SipProxyServerTransportSip(1, nullptr, nullptr), -2);
    EXPECT_EQ(served().size(), 0u);  // never sent to the voice module
}

}  // namespace
