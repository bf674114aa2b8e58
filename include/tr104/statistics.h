/*
 * RTP statistics of a line, telephone events and the SIP call counters.
 *
 * RTP statistics (both protocols, one body): every line handler reads the line's statistics
 * block (command 84, Tr104LineRtpStatsBlock) or one 15-minute interval of it (command 85,
 * Tr104LineRtpIntervalBlock, interval nLocate[3] 0..16) and reports one word.  They are get
 * only: int f(nFlag, pValue, nLocate), nLocate[2] the line 1..2, pValue a 32-bit unsigned
 * integer.  Some words are shared on purpose: far-end interarrival jitter reports the near-end
 * jitter word, the round-trip delay the network delay word, up- and down-stream speed the same
 * word.  The profile handlers (nFlag, pValue) add up lines 1 and 2 (packets and bytes) or halve
 * that sum (loss percentage, delay, jitter).
 *
 * Telephone events (both protocols, one body, (nFlag, pValue)): the RFC 2833 negotiation state
 * (0..1) and the RFC 2833 and RFC 2198 payload types (0..128), over one 20-byte block (get 50);
 * a set sends only its own word and the mask (command 47 for a payload type, 49 for the state).
 *
 * SIP call counters (the ...Sip variants behind the wrappers of handlers.h): every per-line
 * counter reads the line's 108-byte record (command 16603) and reports one field; get only.
 * The profile-wide ones ((nFlag, pValue)) add up the lines they can read.
 *
 * Returns 0, -1 (the exchange failed) or -2 (bad argument, nothing sent).
 */
#ifndef TR104_STATISTICS_H
#define TR104_STATISTICS_H

#include "tr104/channel.h"
#include "tr104/sip_call_stats.h"

TR104_EXTERN_C_BEGIN

#define TR104_RTP_STATS_CMD 84
#define TR104_RTP_INTERVAL_CMD 85
#define TR104_RTP_INTERVAL_MAX 16
#define TR104_TEL_EVENT_GET_CMD 50
#define TR104_TEL_EVENT_SET_PAYLOAD_CMD 47
#define TR104_TEL_EVENT_SET_NEGO_CMD 49

/* Line statistics block (156 bytes): word 0 the line in a request; the words below in a reply. */
typedef struct Tr104LineRtpStatsBlock {
    uint32_t unLine; /*   0 */
    uint32_t aunReserved1[8]; /*   4 */
    uint32_t unSendPackets; /*  36 */
    uint32_t unSendBytes; /*  40 */
    uint32_t unRcvdPackets; /*  44 */
    uint32_t unRcvdBytes; /*  48 */
    uint32_t unLostPackets; /*  52 */
    uint32_t unLostPercent; /*  56 */
    uint32_t unReserved15; /*  60 */
    uint32_t unFarEndLostPercent; /*  64 */
    uint32_t unJitter; /*  68: near end, also reported as the far end's interarrival jitter */
    uint32_t unFarEndJitter; /*  72 */
    uint32_t unBufferOverruns; /*  76 */
    uint32_t unBufferUnderruns; /*  80 */
    uint32_t unStreamSpeed; /*  84: up and down stream */
    uint32_t unMaxRtcpTime; /*  88 */
    uint32_t unNetworkDelay; /*  92: also the average round-trip delay */
    uint32_t unErrorPackets; /*  96 */
    uint32_t aunReserved2[14]; /* 100 */
} Tr104LineRtpStatsBlock;

/* Interval statistics block (216 bytes): words 2 and 3 the line and the interval in a request;
 * the voice module answers the interval's values in words 4 to 11. */
typedef struct Tr104LineRtpIntervalBlock {
    uint32_t aunReserved1[2]; /*   0 */
    uint32_t unLine; /*   8 */
    uint32_t unInterval; /*  12 */
    uint32_t unEndTime; /*  16: end of the interval, seconds since 1970 */
    uint32_t unMaxRtcpTime; /*  20 */
    uint32_t unRcvdPackets; /*  24 */
    uint32_t unLostPackets; /*  28 */
    uint32_t unErrorPackets; /*  32: read, reported as 0 */
    uint32_t unMaxJitter; /*  36 */
    uint32_t unBufferOverruns; /*  40 */
    uint32_t unBufferUnderruns; /*  44 */
    uint32_t aunReserved2[42]; /*  48 */
} Tr104LineRtpIntervalBlock;

/* Telephone-event block (20 bytes). */
#define TR104_TEL_EVENT_2833_PAYLOAD 0x1u
#define TR104_TEL_EVENT_2198_PAYLOAD 0x2u
#define TR104_TEL_EVENT_NEGO_STATE 0x4u
typedef struct Tr104TelEventBlock {
    uint32_t unMask;
    uint32_t un2833PayloadType;
    uint32_t un2198PayloadType;
    uint32_t un2833NegoState;
    uint32_t unReserved;
} Tr104TelEventBlock;

/* Line RTP statistics */
TR104_API int Tr104LineSendRtpPackets(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineSendRtpBytes(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRcvdRtpPackets(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRcvdRtpBytes(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineLostRtpPackets(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineLostRtpPacketsPercent(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineLostFarEndPacketsPercent(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRtpJitter(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineAverageReceiveInterarrivalJitter(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineAverageFarEndInterarrivalJitter(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRtpFarEndJitter(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineJitterBufferOverruns(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineJitterBufferUnderruns(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineUpStreamSpeed(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineDownStreamSpeed(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineMaxRtcpTime(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineNetworkAvgDelay(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineAverageRoundTripDelay(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineErrorRtpPackets(int nFlag, void *pValue, int *nLocate);
/* One 15-minute interval: nLocate[3] 0..16 (the end time takes any interval) */
TR104_API int Tr104LineRtpStatisticsIntervalEndTime(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineMaxRtcpTimeIntervalEnd(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineLostRtpPacketsPercentIntervalEnd(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineErrorRtpPacketsIntervalEnd(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineMaximumRtpJitterIntervalEnd(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineJitterBufferOverrunsIntervalEnd(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineJitterBufferUnderrunsIntervalEnd(int nFlag, void *pValue, int *nLocate);
/* Profile: sums of lines 1 and 2, or halved sums */
TR104_API int Tr104SendRtpPackets(int nFlag, void *pValue);
TR104_API int Tr104RcvdRtpPackets(int nFlag, void *pValue);
TR104_API int Tr104SendRtpBytes(int nFlag, void *pValue);
TR104_API int Tr104RcvdRtpBytes(int nFlag, void *pValue);
TR104_API int Tr104LostRtpPacketsPercent(int nFlag, void *pValue);
TR104_API int Tr104NetworkAvgDelay(int nFlag, void *pValue);
TR104_API int Tr104RtpAvgJitter(int nFlag, void *pValue);
/* A get answers 0: the voice module reports no bandwidth. */
TR104_API int Tr104VoiceBandwidth(int nFlag, void *pValue);
/* The call records of the device's web pages: nothing to report, 0 and nothing changed. */
TR104_API int Tr104VoiceRecordItemNumForWEB(int nFlag, void *pValue);
TR104_API int Tr104VoiceRecordForWEB(int nFlag, void *pValue);

/* Telephone events */
TR104_API int Tr104TelEvent2833NegoState(int nFlag, void *pValue);
TR104_API int Tr104TelEvent2833PayloadType(int nFlag, void *pValue);
TR104_API int Tr104TelEvent2198PayloadType(int nFlag, void *pValue);

TR104_EXTERN_C_END

#endif
