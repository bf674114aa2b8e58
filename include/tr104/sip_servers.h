/*
 * SIP server addresses: the registrar, the proxy and the outbound proxy of the SIP profile,
 * each as a primary and a secondary (standby) server with an address and a port.
 *
 * A get reads the server's configuration record from the voice module.  A set stages the value
 * in the server's slot of the deferred parameter buffer (startup.h): the slot's apply function
 * sends address and port together as soon as both have been written, or when the slot's timer
 * runs out, completing the missing value from the voice module's current record.
 *
 * Handlers follow framework.h: int f(nFlag, pValue, nLocate), nFlag 0 get, 1 set; they do not
 * use nLocate (there is one profile).  Address values are texts of at most 65 characters: a get
 * needs a buffer of TR104_SERVER_ADDR_LEN bytes.  Port values are ints.  Returns 0, -1 (the
 * exchange failed) or -2 (bad argument).
 */
#ifndef TR104_SIP_SERVERS_H
#define TR104_SIP_SERVERS_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

/* Command ids of the server configuration records. */
enum Tr104SipServerCommandId {
    SET_OUT_BOUND_CFG_ID = 16387,
    GET_OUT_BOUND_CFG_ID = 16388,
    SET_REGISTRAR_CFG_ID = 16389,
    GET_REGISTRAR_CFG_ID = 16390,
    SET_PROXY_CFG_ID = 16392,
    GET_PROXY_CFG_ID = 16393
};

/* Server configuration record: 276 bytes. */
#define TR104_SERVER_RECORD_LEN 276
/* Address text: at most 65 characters and a terminator. */
#define TR104_SERVER_ADDR_LEN 66
/* nServerFlag values. */
#define TR104_SERVER_PRIMARY 1
#define TR104_SERVER_SECONDARY 2
/* Read with this flag: the record carries the address of the proxy in use. */
#define TR104_SERVER_IN_USE 0

/* Address and port of the six servers. */
TR104_API int Tr104SipProxyServerIpSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipProxyServerPortSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryProxyServerIpSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryProxyServerPortSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipRegistrarServerIpSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipRegistrarServerPortSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryRegServerIpSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryRegServerPortSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipOutboundProxyIpSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipOutboundProxyPortSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryOutboundProxyIpSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryOutboundProxyPortSip(int nFlag, void *pValue, int *nLocate);

/* Address of the proxy in use (get only; a set does nothing and returns 0).  The buffer must
 * hold TR104_SERVER_ADDR_LEN bytes. */
TR104_API int Tr104ActiveSipProxyServerSip(int nFlag, void *pValue, int *nLocate);

/* Proxy transport, kept in the library and never sent: "UDP", "TCP", "TLS" or "SCTP" (exact
 * case).  A get copies 4 bytes of the kept text: give a zeroed buffer of at least 5 bytes so
 * that "SCTP" ends with a terminator. */
TR104_API int Tr104SipProxyServerTransportSip(int nFlag, void *pValue, int *nLocate);

/* Apply functions of the server slots of the deferred buffer (slots 1, 2, 3, 4, 8, 9): send the
 * staged record, first completed from the voice module's current one when the slot holds only
 * the address or only the port.  0 or -1. */
TR104_API int setRegServer(Tr104Msg *msg, void *paramBuffer);
TR104_API int setSecondaryRegServer(Tr104Msg *msg, void *paramBuffer);
TR104_API int setProxyServer(Tr104Msg *msg, void *paramBuffer);
TR104_API int setSecondaryProxyServer(Tr104Msg *msg, void *paramBuffer);
TR104_API int setOutBoundProxyServer(Tr104Msg *msg, void *paramBuffer);
TR104_API int setSecondaryOutBoundProxyServer(Tr104Msg *msg, void *paramBuffer);

TR104_EXTERN_C_END

#endif
