/*
 * The SIP call counters of a line: the SIP line statistics record and the SIP variants of the
 * call and transaction counters (statistics.h holds the rest of the statistics).
 */
#ifndef TR104_SIP_CALL_STATS_H
#define TR104_SIP_CALL_STATS_H

#include <stdint.h>

#include "tr104/export.h"

TR104_EXTERN_C_BEGIN

#define TR104_SIP_LINE_STATS_CMD 16603

/* SIP line statistics record (108 bytes). */
typedef struct Tr104SipLineStatsRecord {
    uint32_t unLine; /*   0 */
    uint32_t unInCallsReceived; /*   4 */
    uint32_t unInCallsAnswered; /*   8 */
    uint32_t unInCallsConnected; /*  12 */
    uint32_t unInCallsFailed; /*  16 */
    uint32_t unOutCallsAttempted; /*  20 */
    uint32_t unOutCallsAnswered; /*  24 */
    uint32_t unOutCallsConnected; /*  28 */
    uint32_t unOutCallsFailed; /*  32 */
    uint32_t unCallsDropped; /*  36 */
    uint32_t unTotalCallTime; /*  40 */
    uint32_t unCallSetupTime; /*  44 */
    uint32_t unCallTerminateFails; /*  48 */
    uint32_t unPotsReleaseCount; /*  52 */
    uint32_t unPotsOffHookTime; /*  56 */
    uint32_t unRxInviteReqs; /*  60 */
    uint32_t unRxInviteRetrans; /*  64 */
    uint32_t unRxNoninviteReqs; /*  68 */
    uint32_t unRxNoninviteRetrans; /*  72 */
    uint32_t unRxResponse; /*  76 */
    uint32_t unRxResponseRetrans; /*  80 */
    uint32_t unTxInviteReqs; /*  84 */
    uint32_t unTxInviteRetrans; /*  88 */
    uint32_t unTxNoninviteReqs; /*  92 */
    uint32_t unTxNoninviteRetrans; /*  96 */
    uint32_t unTxResponse; /* 100 */
    uint32_t unTxResponseRetrans; /* 104 */
} Tr104SipLineStatsRecord;

/* SIP call counters of a line */
TR104_API int Tr104LineIncomingCallsReceivedSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineIncomingCallsAnsweredSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineIncomingCallsConnectedSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineIncomingCallsFailedSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsAttemptedSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsAnsweredSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsConnectedSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsFailedSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallsDroppedSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallsTimeSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallsSetupTimerSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallTerminateFailsSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalPotsReleaseCountsSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalPotsOffHookTimerSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxInviteReqsSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxInviteRetransSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxNoninviteReqsSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxNoninviteRetransSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxResponseSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxResponseRetransSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxInviteReqsSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxInviteRetransSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxNoninviteReqsSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxNoninviteRetransSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxResponseSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxResponseRetransSip(int nFlag, void *pValue, int *nLocate);
/* Derived: requests and responses without retransmissions; connected calls */
TR104_API int Tr104LineNewTransactionsSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallTimesSip(int nFlag, void *pValue, int *nLocate);
/* Profile-wide sums over the lines that can be read */
TR104_API int Tr104RcvdReqsSip(int nFlag, void *pValue);
TR104_API int Tr104SendReqsSip(int nFlag, void *pValue);
TR104_API int Tr104RcvdResponsesSip(int nFlag, void *pValue);
TR104_API int Tr104SendResponsesSip(int nFlag, void *pValue);
/* Twice the INVITE retransmissions sent plus the INVITE and non-INVITE retransmissions received */
TR104_API int Tr104NgnPacketRetransSip(int nFlag, void *pValue);
/* Always 0 */
TR104_API int Tr104NgnPacketLossSip(int nFlag, void *pValue);
TR104_API int Tr104NgnPacketErrorSip(int nFlag, void *pValue);
TR104_API int Tr104NgnPacketUnKnownSip(int nFlag, void *pValue);

TR104_EXTERN_C_END

#endif
