// SIP server addresses: address and port of the primary and secondary registrar, proxy and
// outbound proxy.  Reads go straight to the voice module; writes are staged in the server's
// slot of the deferred parameter buffer, whose apply function sends address and port together.
//
// The six servers differ only in their slot, flag, commands, names and messages: they are
// described in one table, and one body per handler kind serves them all.
#include <bit>
#include <cstdio>
#include <cstring>

#include "tr104/common.h"
#include "tr104/sip/server_record.h"
#include "tr104/sip/sip_internal.h"
#include "tr104/sip_servers.h"
#include "tr104/startup.h"

namespace tr104::sip {
namespace {

enum class ServerKind : uint8_t {
    Proxy,  // the address decides nUseIpOrHostname; the staged flag is sent
    Outbound,  // as a proxy
    Registrar  // nUseIpOrHostname as read; the server's own flag is sent
};

struct ServerSpec {
    int slot;  // deferred-buffer slot
    uint32_t flag;
    ServerKind kind;
    uint32_t getCmd;
    uint32_t setCmd;
    const char *addrHandler;  // exported handler names, printed with their messages
    const char *portHandler;
    const char *applyName;
    const char *stem;  // "ProxyServer": pProxyServerIp, GetProxyServerIp, pProxyServerPort ...
    const char *addrWords;  // "proxy server": "param error, proxy server addr len too long\n"
    const char *readFailed;
    const char *sendFailed;
    bool showBeforeSend;  // print the record before sending it
};

constexpr char kProxySendFailed[] = "SET_PROXY_CFG_ID msg snd failed.\n";
constexpr char kOutboundSendFailed[] = "SET_OUT_BOUND_CFG_ID msg snd failed.\n";
constexpr char kRegistrarSendFailed[] = "SET_REGISTRAR_CFG_ID msg snd failed.\n";
constexpr char kOutboundReadFailed[] = "get OutboundProxyServer config failed.\n";
constexpr char kRegistrarReadFailed[] = "get ip config failed.\n";

enum ServerId { kRegistrar, kSecondaryRegistrar, kProxy, kSecondaryProxy, kOutbound, kSecondaryOutbound };

constexpr ServerSpec kServers[] = {
    {1, TR104_SERVER_PRIMARY, ServerKind::Registrar, GET_REGISTRAR_CFG_ID, SET_REGISTRAR_CFG_ID,
     "Tr104SipRegistrarServerIpSip", "Tr104SipRegistrarServerPortSip", "setRegServer", "RegistrarServer",
     "registrar server", kRegistrarReadFailed, kRegistrarSendFailed, false},
    {2, TR104_SERVER_SECONDARY, ServerKind::Registrar, GET_REGISTRAR_CFG_ID, SET_REGISTRAR_CFG_ID,
     "Tr104SipSecondaryRegServerIpSip", "Tr104SipSecondaryRegServerPortSip", "setSecondaryRegServer",
     "SecondaryRegServer", "secondary registrar server", kRegistrarReadFailed, kRegistrarSendFailed, false},
    {3, TR104_SERVER_PRIMARY, ServerKind::Proxy, GET_PROXY_CFG_ID, SET_PROXY_CFG_ID, "Tr104SipProxyServerIpSip",
     "Tr104SipProxyServerPortSip", "setProxyServer", "ProxyServer", "proxy server", "get ProxyServer config failed.\n",
     kProxySendFailed, false},
    {4, TR104_SERVER_SECONDARY, ServerKind::Proxy, GET_PROXY_CFG_ID, SET_PROXY_CFG_ID,
     "Tr104SipSecondaryProxyServerIpSip", "Tr104SipSecondaryProxyServerPortSip", "setSecondaryProxyServer",
     "SecondaryProxyServer", "secondary proxy server", "get secondary proxy server config failed.\n", kProxySendFailed,
     true},
    {8, TR104_SERVER_PRIMARY, ServerKind::Outbound, GET_OUT_BOUND_CFG_ID, SET_OUT_BOUND_CFG_ID,
     "Tr104SipOutboundProxyIpSip", "Tr104SipOutboundProxyPortSip", "setOutBoundProxyServer", "OutboundProxy",
     "outbound proxy", kOutboundReadFailed, kOutboundSendFailed, false},
    {9, TR104_SERVER_SECONDARY, ServerKind::Outbound, GET_OUT_BOUND_CFG_ID, SET_OUT_BOUND_CFG_ID,
     "Tr104SipSecondaryOutboundProxyIpSip", "Tr104SipSecondaryOutboundProxyPortSip", "setSecondaryOutBoundProxyServer",
     "SecondaryOutboundProxy", "secondary outbound proxy", kOutboundReadFailed, kOutboundSendFailed, false},
};

static_assert(kServers[kRegistrar].slot == 1 && kServers[kSecondaryRegistrar].slot == 2 && kServers[kProxy].slot == 3 &&
                  kServers[kSecondaryProxy].slot == 4 && kServers[kOutbound].slot == 8 &&
                  kServers[kSecondaryOutbound].slot == 9 && sizeof(kServers) / sizeof(kServers[0]) == 6,
              "the table is indexed by ServerId");

enum class ServerValue : uint8_t { Address, Port };

constexpr size_t kAddrMax = TR104_SERVER_ADDR_LEN - 1;  // characters of an address text
constexpr uint16_t kBothBits = kServerAddrBit | kServerPortBit;

ServerRecord loadRecord(const void *bytes) {
    ServerRecord record;
    std::memcpy(&record, bytes, sizeof(record));
    return record;
}

// Reads the record of a server (selected by flag) into record, on msg.  0 or -1.
int readServer(Tr104Msg *msg, uint32_t getCmd, uint32_t flag, ServerRecord *record) {
    std::memset(record, 0, sizeof(*record));
    record->nServerFlag = flag;
    return CfgPreHandleGetParam(msg, record, sizeof(*record), getCmd) == 0 ? 0 : -1;
}

// Writes a value into the server's slot and hands the slot to the deferred buffer.
int stageValue(const ServerSpec &s, ServerValue which, const void *pValue, Tr104Msg *msg) {
    const char *handler = which == ServerValue::Address ? s.addrHandler : s.portHandler;
    void *buffer = getTr104CfgParamInfoParamBuffer(s.slot);
    ServerRecord staged = loadRecord(buffer);
    if (which == ServerValue::Address) {
        const char *text = static_cast<const char *>(pValue);
        if (strnlen(text, TR104_SERVER_ADDR_LEN) >= TR104_SERVER_ADDR_LEN) {
            TR104_DEBUG_AS(handler, "param error, %s addr len too long\n", s.addrWords);
            return TR104_ERR_PARAM;
        }
        std::memset(staged.aHostAddr, 0, sizeof(staged.aHostAddr));
        copyBounded(staged.aHostAddr, text, kAddrMax);
    } else {
        const int port = intValue(pValue);
        if (static_cast<unsigned int>(port) >= 65536u) {
            TR104_DEBUG_AS(handler, "param error, p%sPort [%d] is error\n", s.stem, port);
            return TR104_ERR_PARAM;
        }
        staged.usPort = static_cast<uint16_t>(port);
    }
    staged.nServerFlag = s.flag;
    std::memcpy(buffer, &staged, sizeof(staged));
    appendTr104CfgParamInfoCfgFlag(s.slot, which == ServerValue::Address ? kServerAddrBit : kServerPortBit);
    return tr104CfgParamHandleByTimer(s.slot, msg, buffer);
}

// The address and port handlers of every server.
int serverHandler(ServerId id, ServerValue which, int nFlag, void *pValue) {
    const ServerSpec &s = kServers[id];
    const bool address = which == ServerValue::Address;
    const char *handler = address ? s.addrHandler : s.portHandler;
    if (pValue == nullptr) {
        TR104_DEBUG_AS(handler, "param error, p%s%s is null\n", s.stem, address ? "Ip" : "Port");
        return TR104_ERR_PARAM;
    }
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        say(handler, "construct msg fail!\n");
        return TR104_ERR_PARAM;
    }
    if (nFlag != 0 && nFlag != 1) {
        TR104_DEBUG_AS(handler, "param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    if (nFlag == 1) {
        return stageValue(s, which, pValue, &msg);
    }
    ServerRecord record;
    if (readServer(&msg, s.getCmd, s.flag, &record) != 0) {
        if (address) {
            TR104_DEBUG_AS(handler, "Get%sIp error \n", s.stem);
        } else {
            TR104_DEBUG_AS(handler, "get %sPort error \n", s.stem);
        }
        return TR104_ERR_EXCHANGE;
    }
    if (address) {
        copyFieldText(static_cast<char *>(pValue), record.aHostAddr,
                      TR104_FIELD_ROOM(ServerRecord, aHostAddr, aucReserved2));
    } else {
        putInt(pValue, record.usPort);
    }
    return TR104_OK;
}

// The apply function of every server slot.  A slot holding only one of the two values is
// completed from the voice module's current record, which is sent back with that value
// replaced (bytes this library does not use go back as the voice module gave them).
int applyServer(ServerId id, Tr104Msg *msg, void *paramBuffer) {
    const ServerSpec &s = kServers[id];
    if (msg == nullptr || paramBuffer == nullptr) {
        return TR104_ERR_EXCHANGE;
    }
    const ServerRecord staged = loadRecord(paramBuffer);
    const uint16_t mask = getTr104CfgParamInfoCfgFlag(s.slot);
    ServerRecord record{};
    if ((mask & kBothBits) != kBothBits) {
        if (readServer(msg, s.getCmd, s.flag, &record) != 0) {
            say(s.applyName, s.readFailed);
            return TR104_ERR_EXCHANGE;
        }
        // An address of the voice module's is 65 characters at most.
        record.aHostAddr[kAddrMax] = '\0';
    }
    if (mask & kServerAddrBit) {
        std::memcpy(record.aHostAddr, staged.aHostAddr, sizeof(record.aHostAddr));
    }
    if (mask & kServerPortBit) {
        record.usPort = staged.usPort;
    }
    if (s.kind == ServerKind::Registrar) {
        record.nServerFlag = s.flag;
    } else {
        record.nServerFlag = staged.nServerFlag;
        // An empty address passes the check: it counts as an IPv4 address.
        record.nUseIpOrHostname = check_ipaddr(record.aHostAddr) == 0 ? 1u : 0u;
    }
    if (s.showBeforeSend) {
        TR104_DEBUG_AS(s.applyName, "nServerFlag[%d], nUseIpOrHostname[%d],aHostAddr[%s],usPort[%d] \n",
                       static_cast<int>(record.nServerFlag), static_cast<int>(record.nUseIpOrHostname),
                       record.aHostAddr, static_cast<int>(record.usPort));
    }
    if (sendOnRecord(msg, s.setCmd, &record, sizeof(record)) != 0) {
        say(s.applyName, s.sendFailed);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

constexpr char kActiveProxyName[] = "Tr104ActiveSipProxyServerSip";
constexpr char kTransportName[] = "Tr104SipProxyServerTransportSip";

int activeProxy(int nFlag, void *pValue) {
    if (pValue == nullptr) {
        say(kActiveProxyName, "param error, pActiveProxyServer is null\n");
        return TR104_ERR_PARAM;
    }
    if (nFlag != 0 && nFlag != 1) {
        TR104_DEBUG_AS(kActiveProxyName, "param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    if (nFlag == 1) {
        return TR104_OK;  // the voice module chooses the proxy in use
    }
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        say(kActiveProxyName, "construct msg fail!\n");
        return TR104_ERR_PARAM;
    }
    ServerRecord record;
    if (readServer(&msg, GET_PROXY_CFG_ID, TR104_SERVER_IN_USE, &record) != 0) {
        say(kActiveProxyName, "GetProxyServerIp error \n");
        return TR104_ERR_EXCHANGE;
    }
    // The address in use is handed over as any server address: at most kAddrMax characters, though
    // its field has room for more.
    copyFieldText(static_cast<char *>(pValue), record.aActiveProxy, TR104_SERVER_ADDR_LEN);
    return TR104_OK;
}

// The proxy transport is a value of this library only; the voice module is not told.  It starts
// as UDP, the transport the voice module's SIP stack uses until told otherwise.
char keptTransport[8] = "UDP";

int proxyTransport(int nFlag, void *pValue) {
    if (pValue == nullptr) {
        say(kTransportName, "param error, pProxyServerTransport is null\n");
        return TR104_ERR_PARAM;
    }
    if (nFlag == 0) {
        std::memcpy(pValue, keptTransport, 4);
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG_AS(kTransportName, "param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    static const char *const kTransports[] = {"UDP", "TCP", "TLS", "SCTP"};
    const char *text = static_cast<const char *>(pValue);
    for (const char *transport : kTransports) {
        if (std::strcmp(text, transport) == 0) {
            std::memset(keptTransport, 0, sizeof(keptTransport));
            std::strcpy(keptTransport, transport);
            return TR104_OK;
        }
    }
    // Show at most what an accepted value could hold.
    TR104_DEBUG_AS(kTransportName, "param error, pProxyServerTransport[%.64s]\n", text);
    return TR104_ERR_PARAM;
}

}  // namespace
}  // namespace tr104::sip

using tr104::sip::ServerValue;

// One line per server: the exported address and port handlers, and the slot's apply function.
#define TR104_SERVER_HANDLERS(server, addr, port)                                                  \
    extern "C" TR104_API int addr(int nFlag, void *pValue, int *) {                                \
        return tr104::sip::serverHandler(tr104::sip::server, ServerValue::Address, nFlag, pValue); \
    }                                                                                              \
    extern "C" TR104_API int port(int nFlag, void *pValue, int *) {                                \
        return tr104::sip::serverHandler(tr104::sip::server, ServerValue::Port, nFlag, pValue);    \
    }
#define TR104_SERVER_APPLY(server, apply)                                     \
    extern "C" TR104_API int apply(Tr104Msg *msg, void *paramBuffer) {        \
        return tr104::sip::applyServer(tr104::sip::server, msg, paramBuffer); \
    }

TR104_SERVER_HANDLERS(kRegistrar, Tr104SipRegistrarServerIpSip, Tr104SipRegistrarServerPortSip)
TR104_SERVER_HANDLERS(kSecondaryRegistrar, Tr104SipSecondaryRegServerIpSip, Tr104SipSecondaryRegServerPortSip)
TR104_SERVER_HANDLERS(kProxy, Tr104SipProxyServerIpSip, Tr104SipProxyServerPortSip)
TR104_SERVER_HANDLERS(kSecondaryProxy, Tr104SipSecondaryProxyServerIpSip, Tr104SipSecondaryProxyServerPortSip)
TR104_SERVER_HANDLERS(kOutbound, Tr104SipOutboundProxyIpSip, Tr104SipOutboundProxyPortSip)
TR104_SERVER_HANDLERS(kSecondaryOutbound, Tr104SipSecondaryOutboundProxyIpSip, Tr104SipSecondaryOutboundProxyPortSip)

TR104_SERVER_APPLY(kRegistrar, setRegServer)
TR104_SERVER_APPLY(kSecondaryRegistrar, setSecondaryRegServer)
TR104_SERVER_APPLY(kProxy, setProxyServer)
TR104_SERVER_APPLY(kSecondaryProxy, setSecondaryProxyServer)
TR104_SERVER_APPLY(kOutbound, setOutBoundProxyServer)
TR104_SERVER_APPLY(kSecondaryOutbound, setSecondaryOutBoundProxyServer)

namespace tr104::sip {
namespace {

constexpr int32_t kServerValues = std::popcount(kBothBits);  // address and port
constexpr core::DeferredGroup kServerGroups[] = {
    {kServers[kRegistrar].slot, setRegServer, kServerValues},
    {kServers[kSecondaryRegistrar].slot, setSecondaryRegServer, kServerValues},
    {kServers[kProxy].slot, setProxyServer, kServerValues},
    {kServers[kSecondaryProxy].slot, setSecondaryProxyServer, kServerValues},
    {kServers[kOutbound].slot, setOutBoundProxyServer, kServerValues},
    {kServers[kSecondaryOutbound].slot, setSecondaryOutBoundProxyServer, kServerValues},
};

}  // namespace

constinit const core::Registration kServerRegistration{"sip", {}, kServerGroups};

}  // namespace tr104::sip

extern "C" TR104_API int Tr104ActiveSipProxyServerSip(int nFlag, void *pValue, int *) {
    return tr104::sip::activeProxy(nFlag, pValue);
}

extern "C" TR104_API int Tr104SipProxyServerTransportSip(int nFlag, void *pValue, int *) {
    return tr104::sip::proxyTransport(nFlag, pValue);
}
