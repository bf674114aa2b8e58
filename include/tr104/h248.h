/*
 * H.248 gateway configuration, line and profile handlers and statistics: the H.248 variants
 * of the data-model handlers and the blocks they exchange with the voice module.
 *
 * Blocks: a 16-bit change mask at offset 0 (a set carries one field and its bit; the voice
 * module ignores fields whose bit is clear), 32-bit integers and NUL-padded texts, all in the
 * platform's byte order.  Handlers of gateway-wide or profile-wide values take (nFlag, pValue)
 * and never read a third argument; line handlers take nLocate (nLocate[2] the line, 1 or 2).
 * Returns 0, -1 (exchange failed or reply unusable) or -2 (bad argument, nothing sent).
 */
#ifndef TR104_H248_H
#define TR104_H248_H

#include <stdint.h>

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

/* Command ids of the H.248 blocks. */
enum Tr104H248CommandId {
    SET_MGC_CFG_ID = 12289,
    GET_MGC_CFG_ID = 12292,
    REG_MGC_ID = 12293,
    UNREG_MGC_ID = 12294,
    SET_MID = 12295,
    GET_MID = 12296,
    SET_SINGLE_USERNAME = 12298,
    GET_H248_PORT_STATUS_ID = 12299,
    GET_SINGLE_USERNAME = 12300,
    GET_LOCAL_PORT = 12307, /* the get is the lower number of this pair */
    SET_LOCAL_PORT = 12308,
    SET_REGMG_PARAM = 12317,
    GET_REGMG_PARAM = 12318,
    SET_H248_FAX_MODE_ID = 12325,
    GET_H248_FAX_MODE_ID = 12326,
    SET_ALIVE_PARAM = 12329,
    GET_ALIVE_PARAM = 12330,
    SET_TRANS_TIME = 12339,
    GET_TRANS_TIME = 12340,
    SET_EPH_NAME = 12341,
    GET_EPH_NAME = 12342,
    SET_PHY_NAME = 12343,
    GET_PHY_NAME = 12344,
    SET_RTP_LOCAL_PORT_ID = 12345,
    GET_RTP_LOCAL_PORT_ID = 12346,
    SET_TONE_TIMEOUT_ID = 12347,
    SET_H248_DIG_TIMEOUT_ID = 12348,
    GET_H248_DIG_TIMEOUT_ID = 12349,
    SET_H248_MATCH_MODE_ID = 12352,
    GET_H248_MATCH_MODE_ID = 12353,
    SET_CALLID_PARAM = 12358,
    GET_CALLID_PARAM = 12359,
    SET_MD5_PARAM = 12367,
    GET_MD5_PARAM = 12368,
    REG_H248_LINE_ID = 12369,
    UNREG_H248_LINE_ID = 12370,
    GET_H248_LINE_ENABLE_ID = 12390,
    SET_H248_LINE_ENABLE_ID = 12391,
    RESET_H248_LINE_STATISTICS_ID = 12392,
    GET_H248_STATISTICS_ID = 12393,
    GET_H248_MAX_SESSIONS_PER_LINE_ID = 12394,
    GET_H248_MAX_SESSIONS_ALL_LINES_ID = 12395,
    GET_H248_RTCP_FLAG_ID = 12396,
    GET_H248_RTP_REDUNDANCY_FLAG_ID = 12397,
    GET_H248_VLAN_TAG_COUPLED_FLAG_ID = 12398,
    GET_H248_NUMBER_OF_LINES_ID = 12399
};

#define TR104_H248_MGC_ADDR_LEN 69
#define TR104_H248_MID_LEN 69
#define TR104_H248_PREFIX_LEN 16
#define TR104_H248_TERM_ID_LEN 33
#define TR104_H248_TERM_IDS 3
#define TR104_H248_EPH_NAME_LEN 32
#define TR104_H248_DEVICE_NAME_LEN 69
#define TR104_H248_ENCODING_LEN 8

/* MGC block (432 bytes). Mask bit 0 address, bit 1 port; the index word names the entry. */
typedef struct Tr104H248MgcBlock {
    uint16_t usMask; /*   0 */
    char aMgcAddr[2][TR104_H248_MGC_ADDR_LEN]; /*   2 entry 0 primary, entry 1 secondary */
    char aPad1[130]; /* 140 */
    uint16_t usMgcPort[2]; /* 270 */
    char aPad2[6]; /* 274 */
    uint32_t unMgcIndex; /* 280 0 primary, 1 secondary */
    uint32_t unCurrMgcNum; /* 284 read only */
    uint32_t unMgcStatus; /* 288 read only, internal code */
    char aCurrMgcAddr[140]; /* 292 read only */
} Tr104H248MgcBlock;
/* Change-mask bits (usMask / the first word) of the fields a set carries. */
#define TR104_H248_MGC_ADDR_BIT 0x1
#define TR104_H248_MGC_PORT_BIT 0x2

/* MG identity block (80 bytes). Mask bit 0 MID, bit 1 registration mode. */
typedef struct Tr104H248MidBlock {
    uint16_t usMask; /*  0 */
    uint16_t usPad; /*  2 */
    uint32_t unRegMode; /*  4 0..2 */
    uint8_t aReserved[2]; /*  8 sent as zeros */
    char aMid[TR104_H248_MID_LEN]; /* 10 */
    char aPad[1]; /* 79 */
} Tr104H248MidBlock;
#define TR104_H248_MID_BIT 0x1
#define TR104_H248_MID_REG_MODE_BIT 0x2

/* Physical termination naming block (32 bytes). Bits: 0 prefix, 1 start, 2 added length, 3 fill. */
typedef struct Tr104H248PhyNameBlock {
    uint16_t usMask; /*  0 */
    char aPrefix[TR104_H248_PREFIX_LEN]; /*  2 */
    uint16_t usPad; /* 18 */
    uint32_t unStart; /* 20 */
    uint32_t unAddLen; /* 24 */
    uint32_t unFillFlag; /* 28 0 zero-filled (uniform), 1 not filled */
} Tr104H248PhyNameBlock;
#define TR104_H248_PHY_PREFIX_BIT 0x1
#define TR104_H248_PHY_START_BIT 0x2
#define TR104_H248_PHY_ADD_LEN_BIT 0x4
#define TR104_H248_PHY_FILL_BIT 0x8

/* Ephemeral termination naming block (104 bytes). Bits: 0 prefix, 1 added length, 2 fill,
 * 3 start.  From offset 36 the block holds the fill word (36..39) and, in a reply naming an
 * instance, the instance's name from offset 37 over the fill word's last bytes: aTail is read
 * at the TR104_H248_EPH_* offsets below. */
typedef struct Tr104H248EphNameBlock {
    uint16_t usMask; /*  0 */
    uint16_t usInstance; /*  2 the instance a get concerns */
    char aPrefix[TR104_H248_PREFIX_LEN]; /*  4 */
    uint32_t unStart; /* 20 */
    uint32_t unEnd; /* 24 */
    uint32_t unStep; /* 28 */
    uint32_t unAddLen; /* 32 */
    unsigned char aTail[68]; /* 36 fill word, instance name, first name */
} Tr104H248EphNameBlock;
#define TR104_H248_EPH_PREFIX_BIT 0x1
#define TR104_H248_EPH_ADD_LEN_BIT 0x2
#define TR104_H248_EPH_FILL_BIT 0x4
#define TR104_H248_EPH_START_BIT 0x8
#define TR104_H248_EPH_FILL_OFFSET 36
#define TR104_H248_EPH_NAME_OFFSET 37
#define TR104_H248_EPH_FIRST_NAME_OFFSET 69

/* Termination identifier block (128 bytes). */
typedef struct Tr104H248TermIdBlock {
    uint32_t unLine; /* 0 1-based */
    char aTermId[TR104_H248_TERM_IDS][TR104_H248_TERM_ID_LEN]; /* 4 entry line - 1 */
    char aPad[25];
} Tr104H248TermIdBlock;

/* Alive (heartbeat) block (124 bytes). Bits: 0 cycle, 1 count, 3 format, 4 mode. */
typedef struct Tr104H248AliveBlock {
    uint16_t usMask; /*  0 */
    uint16_t usPad;
    uint32_t unMode; /*  4 */
    uint32_t unCycle; /*  8 */
    uint32_t unCount; /* 12 */
    uint32_t unReserved; /* 16 sent as zero */
    uint32_t unFormat; /* 20 */
    char aPad[100];
} Tr104H248AliveBlock;
#define TR104_H248_ALIVE_CYCLE_BIT 0x1
#define TR104_H248_ALIVE_COUNT_BIT 0x2
#define TR104_H248_ALIVE_FORMAT_BIT 0x8
#define TR104_H248_ALIVE_MODE_BIT 0x10

/* Transaction timer block (28 bytes). Bits: 0 initial, 1 cycle, 2 time, 3 count, 4 handshake. */
typedef struct Tr104H248TransTimerBlock {
    uint16_t usMask; /*  0 */
    uint16_t usPad;
    uint32_t unRetranInitial; /*  4 ms */
    uint32_t unReserved; /*  8 */
    uint32_t unRetranCycle; /* 12 ms */
    uint32_t unRetranTime; /* 16 ms */
    uint32_t unMaxRetranCount; /* 20 */
    uint32_t unHandShake; /* 24 */
} Tr104H248TransTimerBlock;
#define TR104_H248_RETRAN_INITIAL_BIT 0x1
#define TR104_H248_RETRAN_CYCLE_BIT 0x2
#define TR104_H248_RETRAN_TIME_BIT 0x4
#define TR104_H248_MAX_RETRAN_COUNT_BIT 0x8
#define TR104_H248_HANDSHAKE_BIT 0x10

/* Registration block (32 bytes): the cycle at offset 8. */
typedef struct Tr104H248RegBlock {
    uint32_t aReserved[2];
    uint32_t unRegisterCycle; /* 8 */
    uint32_t aRest[5];
} Tr104H248RegBlock;

/* Authentication block (588 bytes): the method at offset 4. */
typedef struct Tr104H248AuthBlock {
    uint32_t unReserved;
    uint32_t unAuthMethod; /* 4 */
    char aRest[580];
} Tr104H248AuthBlock;

/* Local port block (16 bytes): the gateway's H.248 port at offset 4. */
typedef struct Tr104H248LocalPortBlock {
    uint32_t unReserved;
    uint32_t unLocalPort; /* 4 */
    uint32_t aRest[2];
} Tr104H248LocalPortBlock;

/* Digit-timer block (40 bytes). Bits as the fields' masks below. */
typedef struct Tr104H248DigitTimerBlock {
    uint16_t usMask; /*  0 */
    uint16_t usPad;
    uint32_t unDialTone; /*  4 ms, bit 0x1 */
    uint32_t unNoAnswer; /*  8 ms, bit 0x2 */
    uint32_t aReserved[2]; /* 12 */
    uint32_t unBusyTone; /* 20 ms, bit 0x10 */
    uint32_t unHangingReminder; /* 24 ms, bit 0x20 */
    uint32_t unStartDigit; /* 28 bit 0x40 */
    uint32_t unShortDigit; /* 32 bit 0x80 */
    uint32_t unLongDigit; /* 36 bit 0x100 */
} Tr104H248DigitTimerBlock;
#define TR104_H248_DIAL_TONE_BIT 0x1
#define TR104_H248_NO_ANSWER_BIT 0x2
#define TR104_H248_BUSY_TONE_BIT 0x10
#define TR104_H248_HANGING_REMINDER_BIT 0x20
#define TR104_H248_START_DIGIT_BIT 0x40
#define TR104_H248_SHORT_DIGIT_BIT 0x80
#define TR104_H248_LONG_DIGIT_BIT 0x100

/* Line-enable block (128 bytes). */
typedef struct Tr104H248LineEnableBlock {
    uint32_t unLine; /*   0 */
    char aPad[116];
    uint32_t unEnable; /* 120 1 "Enabled", 0 "Disabled" */
    uint32_t unRest;
} Tr104H248LineEnableBlock;

/* Digit-map match-mode block (28 bytes): 0 "Max", non-zero "Min". */
typedef struct Tr104H248MatchModeBlock {
    uint16_t usMask;
    uint16_t usPad;
    uint32_t aReserved[2];
    uint32_t unMatchMode; /* 12 */
    uint32_t aRest[3];
} Tr104H248MatchModeBlock;

/* RTP local port block (12 bytes). */
typedef struct Tr104H248RtpPortBlock {
    uint32_t unMinPort; /* 0 */
    uint32_t unMaxPort; /* 4 */
    uint32_t unRest;
} Tr104H248RtpPortBlock;

/* Fax and voice-band-data block (48 bytes); the mask is one of the field values below, whole. */
typedef struct Tr104H248FaxBlock {
    uint16_t usMask; /*  0 */
    uint16_t usPad;
    uint32_t aReserved[2];
    uint32_t unEventDetect; /* 12 0x4, data model value - 1 */
    uint32_t unVbdEnable; /* 16 0x8 */
    uint32_t unVbdRxInterval; /* 20 0x20 */
    uint32_t unVbdTxInterval; /* 24 0x10 */
    uint32_t unVbdCodec; /* 28 0x40 */
    uint32_t aReserved2[3];
    uint32_t unFaxCtrlMode; /* 44 0x400 */
} Tr104H248FaxBlock;
#define TR104_H248_EVENT_DETECT_BIT 0x4
#define TR104_H248_VBD_ENABLE_BIT 0x8
#define TR104_H248_VBD_TX_INTERVAL_BIT 0x10
#define TR104_H248_VBD_RX_INTERVAL_BIT 0x20
#define TR104_H248_VBD_CODEC_BIT 0x40
#define TR104_H248_FAX_CTRL_MODE_BIT 0x400

/* Caller-id block (16 bytes): mask bit 1, mode 0 "FSK", 8 "DTMF". */
typedef struct Tr104H248CallerIdBlock {
    uint16_t usMask;
    uint16_t usPad;
    uint32_t unReserved;
    uint32_t unMode; /* 8 */
    uint32_t unRest;
} Tr104H248CallerIdBlock;
#define TR104_H248_CALLER_ID_MODE_BIT 0x2

/* Port status record (276 bytes), get 12299; word 0 of the request is the line.  The reply
 * holds single bytes from offset 1 over the request's line word. */
typedef struct Tr104H248PortStatusBlock {
    uint8_t ucReserved; /*   0 */
    uint8_t ucSessionType; /*   1 */
    uint8_t ucPortState; /*   2 port status code, 0..255 */
    uint8_t ucServiceState; /*   3 0 in service, 1 out of service, 2 locked */
    uint32_t unLocalRtpPort; /*   4 local RTP port of the line's session */
    uint32_t unAnnounceType; /*   8 announcement type code */
    char aReserved[21]; /*  12 */
    char aRegState[20]; /*  33 registration state text */
    char aReserved2[201]; /*  53 */
    char aHookState[22]; /* 254 hook state text */
} Tr104H248PortStatusBlock;

/* A read-only profile value (4 bytes): one word under its own get command (max sessions, the
   profile's capability flags). */
typedef struct Tr104H248WordBlock {
    uint32_t unValue; /*   0 */
} Tr104H248WordBlock;

/* Statistics block (124 bytes), get 12393; word 0 of the request is the line. */
typedef struct Tr104H248StatsBlock {
    uint32_t unLine; /*   0 */
    uint32_t unIncomingReceived; /*   4 */
    uint32_t unIncomingAnswered; /*   8 */
    uint32_t unIncomingConnected; /*  12 */
    uint32_t unIncomingFailed; /*  16 */
    uint32_t unOutgoingAttempted; /*  20 */
    uint32_t unOutgoingAnswered; /*  24 */
    uint32_t unOutgoingConnected; /*  28 */
    uint32_t unOutgoingFailed; /*  32 */
    uint32_t unCallsDropped; /*  36 */
    uint32_t unCallsTime; /*  40 */
    uint32_t unCallsSetupTimer; /*  44 */
    uint32_t unCallTerminateFails; /*  48 */
    uint32_t unPotsReleaseCounts; /*  52 */
    uint32_t unPotsOffHookTimer; /*  56 */
    uint32_t unRcvdReqs; /*  60 */
    uint32_t unSendReqs; /*  64 */
    uint32_t unRcvdResponses; /*  68 */
    uint32_t unSendResponses; /*  72 */
    uint32_t aReserved[8]; /*  76 */
    uint32_t unPacketLoss; /* 108 */
    uint32_t unPacketRetrans; /* 112 */
    uint32_t unPacketError; /* 116 */
    uint32_t unPacketUnknown; /* 120 */
} Tr104H248StatsBlock;

/* ---- Gateway configuration (gateway-wide: two arguments) ---- */
TR104_API int Tr104ProtocolVersionH248(int nFlag, void *pValue);
TR104_API int Tr104MessageFormatH248(int nFlag, void *pValue);
TR104_API int Tr104MessageEncodingTypeH248(int nFlag, void *pValue);
TR104_API int Tr104PrimaryMGCH248(int nFlag, void *pValue);
TR104_API int Tr104PrimaryMGCPortH248(int nFlag, void *pValue);
TR104_API int Tr104SecondaryMGCH248(int nFlag, void *pValue);
TR104_API int Tr104SecondaryMGCPortH248(int nFlag, void *pValue);
TR104_API int Tr104CurrMgcNumH248(int nFlag, void *pValue);
TR104_API int Tr104CurrMgcAddrH248(int nFlag, void *pValue);
TR104_API int Tr104MgcStatusH248(int nFlag, void *pValue);
TR104_API int Tr104MgLocalPortH248(int nFlag, void *pValue);
TR104_API int Tr104MgIdH248(int nFlag, void *pValue);
TR104_API int Tr104DeviceNameH248(int nFlag, void *pValue);
TR104_API int Tr104MgRegModeH248(int nFlag, void *pValue);
TR104_API int Tr104PhysicalTermIDPrefixH248(int nFlag, void *pValue);
TR104_API int Tr104PhysicalTermIDAddLenH248(int nFlag, void *pValue);
TR104_API int Tr104PhysicalTermIDStartVlaueH248(int nFlag, void *pValue);
TR104_API int Tr104PhysicalTermIDUniformH248(int nFlag, void *pValue);
/* Prefix (16-byte buffer), added length, start value, uniform flag (1 = zero-filled names). */
TR104_API int Tr104PhyNameRuleH248(int nFlag, char *pPrefix, uint32_t *pLength, uint32_t *pStart, uint32_t *pFillFlag);
TR104_API int Tr104TermIdH248(int nFlag, void *pValue);
TR104_API int Tr104PhysicalTermIdH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104EphemeralTermIDPrefixH248(int nFlag, void *pValue);
TR104_API int Tr104EphemeralTermIDAddLenH248(int nFlag, void *pValue);
TR104_API int Tr104EphemeralTermIDUniformH248(int nFlag, void *pValue);
TR104_API int Tr104EphemeralTermIDStartVlaueH248(int nFlag, void *pValue);
TR104_API int Tr104EphemeralTermIDNameH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104EphemeralTermIDFirstNameH248(int nFlag, void *pValue);
/* First part (16-byte buffer), start, end, step, fill flag as the block holds it. */
TR104_API int Tr104EphNameRuleH248(int nFlag, char *pFirstPart, uint32_t *pStart, uint32_t *pEnd, uint32_t *pStep,
                                   uint32_t *pFillOrNot);
/* The masked form: prefix, added length, start value, uniform flag (as Tr104PhyNameRuleH248). */
TR104_API int Tr104EphNameRule2H248(int nFlag, char *pPrefix, uint32_t *pLength, uint32_t *pStart, uint32_t *pFillFlag);
TR104_API int Tr104EphemeralTermIDNumberH248(int nFlag, void *pValue);
TR104_API int Tr104HeartbeatModeH248(int nFlag, void *pValue);
TR104_API int Tr104HeartbeatCycleH248(int nFlag, void *pValue);
TR104_API int Tr104HeartbeatCountH248(int nFlag, void *pValue);
TR104_API int Tr104HeartbeatFormatH248(int nFlag, void *pValue);
TR104_API int Tr104ThreeHandShakeEnableH248(int nFlag, void *pValue);
TR104_API int Tr104LongTimerH248(int nFlag, void *pValue);
TR104_API int Tr104PendingTimerH248(int nFlag, void *pValue);
TR104_API int Tr104RetranTimerInitialH248(int nFlag, void *pValue);
TR104_API int Tr104MaxRetranCountH248(int nFlag, void *pValue);
TR104_API int Tr104RetransmissionTimeH248(int nFlag, void *pValue);
TR104_API int Tr104RetransmissionCycleH248(int nFlag, void *pValue);
TR104_API int Tr104MgRegisterCycleH248(int nFlag, void *pValue);
TR104_API int Tr104MgRegisterH248(int nFlag, void *pValue);
TR104_API int Tr104AuthenticationMethH248(int nFlag, void *pValue);
/* Registers with the MGC at pMgcAddr (the int at pRegister 1) or unregisters from it (any other
 * value).  The signature of Tr104MgcRegister (device.h); nFlag and nLocate are not used. */
TR104_API int Tr104MgcRegisterH248(int nFlag, void *pRegister, char *pMgcAddr, int *nLocate);

/* ---- Line and profile handlers ---- */
TR104_API int Tr104StartDigitTimerH248(int nFlag, void *pValue);
TR104_API int Tr104ShortDigitTimerH248(int nFlag, void *pValue);
TR104_API int Tr104LongDigitTimerH248(int nFlag, void *pValue);
TR104_API int Tr104HangingReminderToneTimerH248(int nFlag, void *pValue);
TR104_API int Tr104BusyToneTimerH248(int nFlag, void *pValue);
TR104_API int Tr104DialToneTimerH248(int nFlag, void *pValue);
TR104_API int Tr104NoAnswerTimerH248(int nFlag, void *pValue);
TR104_API int Tr104LineEnableH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104ProfileDigitMapMatchModeH248(int nFlag, void *pValue);
TR104_API int Tr104RtpMinLocalPortH248(int nFlag, void *pValue);
TR104_API int Tr104RtpMaxLocalPortH248(int nFlag, void *pValue);
TR104_API int Tr104FaxCtrlModeH248(int nFlag, void *pValue);
TR104_API int Tr104FaxT38EventDetectModeH248(int nFlag, void *pValue);
TR104_API int Tr104VbdEnableH248(int nFlag, void *pValue);
TR104_API int Tr104VbdTxIntervalH248(int nFlag, void *pValue);
TR104_API int Tr104VbdRxIntervalH248(int nFlag, void *pValue);
TR104_API int Tr104VbdCodecH248(int nFlag, void *pValue);
TR104_API int Tr104CallerIdModeH248(int nFlag, void *pValue);
TR104_API int Tr104LineResetStatisticsFlagH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104MaxSessionsPerLineH248(int nFlag, void *pValue);
TR104_API int Tr104MaxSessionsAllLinesH248(int nFlag, void *pValue);
TR104_API int Tr104RTCPFlagH248(int nFlag, void *pValue);
TR104_API int Tr104RTPRedundancyFlagH248(int nFlag, void *pValue);
TR104_API int Tr104VlanTagCoupledFlagH248(int nFlag, void *pValue);
TR104_API int Tr104ProfileNumberOfLinesH248(int nFlag, void *pValue);
TR104_API int Tr104LineRegStatusH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineServerStatusH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineSessionTypeH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineHookStatusH248(int nFlag, void *pValue, int *nLocate);
/* Port handlers: nLocate[1] is the port (1 or 2). */
TR104_API int Tr104PortStatusH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PortServiceStateH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SessionLocalRtpPortH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineAnnounceTypeH248(int nFlag, void *pValue, int *nLocate);
/* Audio settings of the voice profile bound to the line's port, through the same profile
 * requests as their SIP variants (sip.h): gains -32..32 (receive -31..31), the echo-cancellation
 * and comfort-noise flags and the jitter-buffer target as one byte. */
TR104_API int Tr104LineTransmitGainH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineReceiveGainH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineEchoCancelFlagH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineComfortNoiseFlagH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineJitterBufferTargetH248(int nFlag, void *pValue, int *nLocate);
/* nDirection non-zero: receive gain, zero: transmit gain. */
TR104_API int Tr104LineGainH248(int nFlag, int nDirection, void *pValue, int *nLocate);
TR104_API int Tr104LineRegisterH248(int nFlag, void *pValue, int *nLocate);

/* ---- Statistics ---- */
TR104_API int Tr104LineIncomingCallsReceivedH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineIncomingCallsAnsweredH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineIncomingCallsConnectedH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineIncomingCallsFailedH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsAttemptedH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsAnsweredH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsConnectedH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsFailedH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallsDroppedH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallsTimeH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallsSetupTimerH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallTerminateFailsH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalPotsReleaseCountsH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalPotsOffHookTimerH248(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallTimesH248(int nFlag, void *pValue, int *nLocate);
/* Gateway-wide signalling counters: always line 1.  Tr104NgnPacketUnKnownH248 adds the count
 * to the caller's value (pass a variable set to zero). */
TR104_API int Tr104RcvdReqsH248(int nFlag, void *pValue);
TR104_API int Tr104SendReqsH248(int nFlag, void *pValue);
TR104_API int Tr104RcvdResponsesH248(int nFlag, void *pValue);
TR104_API int Tr104SendResponsesH248(int nFlag, void *pValue);
TR104_API int Tr104NgnPacketLossH248(int nFlag, void *pValue);
TR104_API int Tr104NgnPacketRetransH248(int nFlag, void *pValue);
TR104_API int Tr104NgnPacketErrorH248(int nFlag, void *pValue);
TR104_API int Tr104NgnPacketUnKnownH248(int nFlag, void *pValue);

TR104_EXTERN_C_END

#endif
