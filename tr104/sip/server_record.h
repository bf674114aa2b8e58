// The voice module's server configuration record: one SIP server (registrar, proxy or outbound
// proxy, primary or standby) as the server read and write commands carry it, and as the
// deferred buffer stages it for the server's slot.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tr104/framework.h"
#include "tr104/sip_servers.h"

namespace tr104::sip {

// 276 bytes; integers in the platform's byte order.  The bytes before offset 40 are not used
// by this library and stay zero in requests.
struct ServerRecord {
    uint8_t aucReserved[40];  //   0
    uint32_t nUseIpOrHostname;  // 40 1: aHostAddr is a dotted IPv4 address, 0: a host name
    uint32_t nServerFlag;  // 44 1 primary, 2 secondary (standby), 0 the proxy in use
    char aHostAddr[TR104_SERVER_ADDR_LEN];  // 48 at most 65 characters and a terminator
    uint8_t aucReserved2[4];  // 114
    uint16_t usPort;  // 118
    char aActiveProxy[156];  // 120 address of the proxy in use (proxy reads with flag 0)
};

static_assert(sizeof(ServerRecord) == 276);
static_assert(offsetof(ServerRecord, nUseIpOrHostname) == 40);
static_assert(offsetof(ServerRecord, nServerFlag) == 44);
static_assert(offsetof(ServerRecord, aHostAddr) == 48);
static_assert(offsetof(ServerRecord, usPort) == 118);
static_assert(offsetof(ServerRecord, aActiveProxy) == 120);
static_assert(alignof(ServerRecord) == 4);

// Change-mask bits of a server slot.
constexpr uint16_t kServerAddrBit = 0x1;
constexpr uint16_t kServerPortBit = 0x2;

// Sends len bytes of record as command cmd on an existing message record (which may still
// hold the answer of an earlier read), without waiting for an answer.  0 or -1.
inline int sendOnRecord(Tr104Msg *msg, uint32_t cmd, const void *record, size_t len) {
    msg->cmd_type = static_cast<uint32_t>(gCurrentModule);
    msg->cmd = cmd;
    std::memset(msg->cfgBuffer, 0, sizeof(msg->cfgBuffer));
    std::memset(msg->rspBuffer, 0, sizeof(msg->rspBuffer));
    std::memcpy(msg->cfgBuffer, record, len < sizeof(msg->cfgBuffer) ? len : sizeof(msg->cfgBuffer));
    return msgSndAndRcvSem(msg, 1) == -1 ? -1 : 0;
}

}  // namespace tr104::sip
