// Shared pieces of the voice network handlers: the payload layouts checked against the voice
// module's, and the exchanges that go straight onto the request queue.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tr104/netcfg.h"
#include "tr104/core/core.h"
#include "tr104/core/registry.h"

static_assert(sizeof(Tr104IpConfigPayload) == 276);
static_assert(offsetof(Tr104IpConfigPayload, unVoiceAddr) == 4);
static_assert(offsetof(Tr104IpConfigPayload, unVoiceMask) == 8);
static_assert(offsetof(Tr104IpConfigPayload, unVoiceGateway) == 12);
static_assert(offsetof(Tr104IpConfigPayload, unRtpAddr) == 16);
static_assert(offsetof(Tr104IpConfigPayload, unRtpMask) == 20);
static_assert(offsetof(Tr104IpConfigPayload, unRtpGateway) == 24);
static_assert(offsetof(Tr104IpConfigPayload, aucRest) == 28);
static_assert(sizeof(Tr104DirectIpPayload) == 28);
static_assert(offsetof(Tr104DirectIpPayload, aIfName) == 16);

static_assert(sizeof(Tr104VlanPayload) == 36);
static_assert(offsetof(Tr104VlanPayload, sip) + offsetof(Tr104VlanClass, unSVlanTypeId) == 4);
static_assert(offsetof(Tr104VlanPayload, sip) + offsetof(Tr104VlanClass, ucSVlanPriority) == 8);
static_assert(offsetof(Tr104VlanPayload, sip) + offsetof(Tr104VlanClass, usSVlanId) == 10);
static_assert(offsetof(Tr104VlanPayload, sip) + offsetof(Tr104VlanClass, unVlanTypeId) == 12);
static_assert(offsetof(Tr104VlanPayload, sip) + offsetof(Tr104VlanClass, ucVlanPriority) == 16);
static_assert(offsetof(Tr104VlanPayload, sip) + offsetof(Tr104VlanClass, usVlanId) == 18);
static_assert(offsetof(Tr104VlanPayload, rtp) + offsetof(Tr104VlanClass, unSVlanTypeId) == 20);
static_assert(offsetof(Tr104VlanPayload, rtp) + offsetof(Tr104VlanClass, ucSVlanPriority) == 24);
static_assert(offsetof(Tr104VlanPayload, rtp) + offsetof(Tr104VlanClass, usSVlanId) == 26);
static_assert(offsetof(Tr104VlanPayload, rtp) + offsetof(Tr104VlanClass, unVlanTypeId) == 28);
static_assert(offsetof(Tr104VlanPayload, rtp) + offsetof(Tr104VlanClass, ucVlanPriority) == 32);
static_assert(offsetof(Tr104VlanPayload, rtp) + offsetof(Tr104VlanClass, usVlanId) == 34);

static_assert(sizeof(Tr104DnsPayload) == 276);
static_assert(offsetof(Tr104DnsPayload, unServer) == 4);
static_assert(offsetof(Tr104DnsPayload, unIndex) == 272);
static_assert(sizeof(Tr104DirectDnsPayload) == 12);
static_assert(sizeof(Tr104Option60Payload) == 148);
static_assert(offsetof(Tr104Option60Payload, unEnable) == 4);
static_assert(offsetof(Tr104Option60Payload, nType) == 8);
static_assert(offsetof(Tr104Option60Payload, nValueMode) == 12);
static_assert(offsetof(Tr104Option60Payload, aValue) == 16);
static_assert(sizeof(Tr104Option125Payload) == 136);
static_assert(offsetof(Tr104Option125Payload, ucEnable) == 4);
static_assert(offsetof(Tr104Option125Payload, aValue) == 5);
static_assert(sizeof(Tr104PppoePayload) == 164);
static_assert(offsetof(Tr104PppoePayload, unEnable) == 4);
static_assert(offsetof(Tr104PppoePayload, aAccount) == 8);
static_assert(offsetof(Tr104PppoePayload, aPassword) == 72);
static_assert(offsetof(Tr104PppoePayload, aucZero) == 136);

static_assert(sizeof(Tr104TimePayload) == 620);
static_assert(offsetof(Tr104TimePayload, nOffset) == 52);
static_assert(offsetof(Tr104TimePayload, aucZero2) == 56);
static_assert(offsetof(Tr104TimePayload, aStatus) == 64);
static_assert(offsetof(Tr104TimePayload, aNtpServer1) == 96);
static_assert(offsetof(Tr104TimePayload, aNtpServer2) == 351);

static_assert(sizeof(Tr104NumberTable) == 292);
static_assert(offsetof(Tr104NumberTable, ucLength) == 4);
static_assert(offsetof(Tr104NumberTable, ucEntry) == 5);
static_assert(offsetof(Tr104NumberTable, aTypes) == 6);
static_assert(offsetof(Tr104NumberTable, aNumbers) == 80);

namespace tr104::netcfg {

using core::intValue;
using core::putInt;
using core::readRecord;
using core::readText;
using core::say;
using core::sendRecord;

// Straight onto the request queue with msgsnd, IPC_NOWAIT: no lock, no reply.  0 or -1.
int sendDirect(unsigned int cmd, const void *payload, size_t len);
// The checks of a handler that sends straight onto the queue and does nothing on a get: the
// pointers (nullMessage, "%s" the handler, on standard output), then nFlag.  Returns 1 when a
// set goes ahead, else what the handler returns (0 for a get, -2).  flagOnStdout: the nFlag
// message goes to standard output ("[%s] param error, nFlag[%d]\n") rather than to the debug
// output ("param error, nFlag[%d]\n").
int directChecks(const char *name, bool present, const char *nullMessage, int nFlag, bool flagOnStdout);
// The port number of a port record: its third word, 0 without a record.
uint32_t portOf(const uint32_t *pPort);

}  // namespace tr104::netcfg

namespace tr104::netcfg {

// A value of one word (or one byte) that has a get command and a set command of its own.
struct SmallValue {
    const char *name;
    const char *nullError;
    const char *entry;  // "%d" nFlag and the value
    uint16_t getCmd, setCmd;
    uint8_t width;  // 1 or 4 bytes, in the caller's buffer as in the payload
    const char *getError;
    const char *getDone;  // "%d" the value
    const char *sendError;
};
int smallValue(const SmallValue &v, int nFlag, void *pValue);

// The deferred-buffer groups of the voice interface's addressing and of the two VLAN classes.
extern const core::Registration kAddressingRegistration;
extern const core::Registration kVlanRegistration;

}  // namespace tr104::netcfg
