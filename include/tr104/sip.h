/*
 * SIP line and profile handlers: the SIP variants of the per-line and per-profile parameters
 * (line enable and registration, status, caller ID, call waiting, three-way calling, gains,
 * echo cancellation, comfort noise, DTMF method, jitter buffer, digit map, signalling timers,
 * hotline, display name, statistics reset, line swap) and the records they exchange with the
 * voice module.
 *
 * Every handler has the convention of framework.h: int Tr104<Param>Sip(nFlag, pValue, nLocate),
 * nLocate[2] the line (1 or 2, the voice module's port number), returning 0, -1 (exchange
 * failed) or -2 (bad argument).  Handlers of profile-wide values ignore nLocate.  Text values are
 * copied into the caller's buffer, which must hold the parameter's longest text (2048 bytes for
 * the digit map).
 *
 * Records hold integers in the platform's byte order (the voice module shares it) and are
 * zero-filled before use; a set request carries only the line (or profile name) and the one
 * value being changed.
 */
#ifndef TR104_SIP_H
#define TR104_SIP_H

#include <stdint.h>

#include "tr104/export.h"
#include "tr104/voice_profile.h"

TR104_EXTERN_C_BEGIN

/* Command ids of the SIP line records (the voice profile's are in voice_profile.h). */
enum Tr104SipCommandId {
    SET_MIN_JIT_VALUE_ID = 16413,
    GET_MIN_JIT_VALUE_ID = 16414,
    SET_MAX_JIT_VALUE_ID = 16415,
    GET_MAX_JIT_VALUE_ID = 16416,
    SET_JIT_MODE_ID = 16417,
    GET_JIT_MODE_ID = 16418,
    REGISTER_LINE_ID = 16421,
    UNREGISTER_LINE_ID = 16422,
    SET_FAX_MODE_ID = 16447,
    GET_FAX_MODE_ID = 16448,
    SET_FAX_T38_ENABLE_ID = 16449,
    GET_FAX_T38_ENABLE_ID = 16450,
    SET_VBD_ID = 16453,
    GET_VBD_ID = 16454,
    SET_SIG_TIMEOUT_ID = 16460,
    GET_SIG_TIMEOUT_ID = 16461,
    SET_DIG_TIMEOUT = 16475,
    GET_DIG_TIMEOUT = 16476,
    SET_DIGITMAP_ID = 16477,
    GET_DIGITMAP_ID = 16478,
    ENABLE_DIGITMAP_ID = 16479,
    DISABLE_DIGITMAP_ID = 16480,
    SET_DigitMapMatchMode_ID = 16481,
    GET_DigitMapMatchMode_ID = 16482,
    GET_MAX_SESSIONS_PER_LINE_ID = 16496,
    GET_MAX_SESSIONS_ALL_LINES_ID = 16497,
    GET_RTCP_FLAG_ID = 16498,
    GET_RTP_REDUNDANCY_FLAG_ID = 16499,
    GET_VLAN_TAG_COUPLED_FLAG_ID = 16500,
    GET_FAX_T38_FLAG_ID = 16501,
    GET_FAX_PASS_THROUGH_FLAG_ID = 16502,
    GET_MODEM_PASS_THROUGH_FLAG_ID = 16503,
    GET_DIGITMAP_FLAG_ID = 16504,
    GET_NUMBERING_PLAN_FLAG_ID = 16505,
    GET_DIGITMAP_ENABLE_ID = 16516,
    GET_NUMBER_OF_LINES_ID = 16517,
    GET_WAN_NAME_ID = 16518,
    SET_CALLERID_FORMAT_ID = 16546,
    GET_CALLERID_FORMAT_ID = 16547,
    SET_CALLERID_MODE_ID = 16566,
    GET_CALLERID_MODE_ID = 16567,
    SET_CALL_WAITING_ID = 16568,
    GET_CALL_WAITING_ID = 16569,
    SET_CONFERENCE_ID = 16573,
    GET_CONFERENCE_ID = 16575,
    SET_HOTLINE_NUM_ID = 16580,
    GET_HOTLINE_NUM_ID = 16581,
    SET_HOTLINE_DELAY_ID = 16582,
    GET_HOTLINE_DELAY_ID = 16583,
    SET_PORT_DISPLAY_NAME_ID = 16590,
    GET_PORT_DISPLAY_NAME_ID = 16591,
    GET_LINE_ENABLE_ID = 16593,
    SET_LINE_ENABLE_ID = 16594,
    RESET_LINE_STATISTICS_ID = 16602
};

/* Line feature record (76 bytes). */
typedef struct Tr104SipLineFeatureRecord {
    uint32_t unLine; /*  0 line number */
    uint8_t ucCallerIdMode; /*  4 0 disabled, 1 FSK, 2 FSK (read only), 3 DTMF */
    uint8_t ucCallWaiting; /*  5 call waiting flag */
    uint8_t aucReserved1[67]; /*  6 */
    uint8_t ucConference; /* 73 three-way calling flag */
    uint8_t aucReserved2[2]; /* 74 */
} Tr104SipLineFeatureRecord;

/* Selectors of the signalling timer record. */
#define TR104_SIG_TIMER_START_DIGIT 1u
#define TR104_SIG_TIMER_NO_ANSWER 2u
#define TR104_SIG_TIMER_BUSY_TONE 8u
#define TR104_SIG_TIMER_HANGING_REMINDER 16u
#define TR104_SIG_TIMER_CALL_WAITING_REJECT 32u

/* Signalling timer record (32 bytes): every timer in milliseconds; a set names the one it
 * changes in usSelector. */
typedef struct Tr104SipSignalTimerRecord {
    uint16_t usSelector; /*  0 timer being set */
    uint16_t usReserved; /*  2 */
    uint32_t unStartDigit; /*  4 start-digit (and dial-tone) timer */
    uint32_t unNoAnswer; /*  8 */
    uint32_t unReserved; /* 12 */
    uint32_t unBusyTone; /* 16 */
    uint32_t unHangingReminder; /* 20 off-hook warning tone */
    uint32_t unCallWaitingReject; /* 24 */
    uint32_t unReserved2; /* 28 */
} Tr104SipSignalTimerRecord;

/* Digit timer record (40 bytes): a set writes one field and 0xFFFFFFFF (unchanged) in the other. */
#define TR104_DIGIT_TIMER_UNCHANGED 0xFFFFFFFFu
typedef struct Tr104SipDigitTimerRecord {
    uint8_t aucReserved1[16]; /*  0 */
    uint32_t unShortDigit; /* 16 short inter-digit timer */
    uint32_t unLongDigit; /* 20 long inter-digit timer */
    uint8_t aucReserved2[16]; /* 24 */
} Tr104SipDigitTimerRecord;

/* One chunk of a digit map written with SET_DIGITMAP_ID (258 bytes). */
#define TR104_DIGITMAP_CHUNK_CHARS 192
#define TR104_DIGITMAP_MAX_LEN 2048
typedef struct Tr104SipDigitMapChunk {
    uint8_t ucReserved; /* 0 */
    uint8_t ucChunk; /* 1 chunk number, from 0 */
    char aText[256]; /* 2 the chunk's characters, zero-filled */
} Tr104SipDigitMapChunk;

/* Digit-map match mode record (258 bytes). */
typedef struct Tr104SipMatchModeRecord {
    uint8_t ucMode; /* 0 0 "Max", 1 "Min" */
    uint8_t aucReserved[257];
} Tr104SipMatchModeRecord;

/* Fax mode record (36 bytes): the profile's fax attributes.  A write names the attribute it
 * changes in unConfigFlag. */
#define CONFIG_FLAG_FAX_CTRL_MODE 0x01u
#define CONFIG_FLAG_FAX_PROCESS_MODE 0x02u
#define CONFIG_FLAG_FAX_T38_SDP_TYPE 0x04u
#define CONFIG_FLAG_FAX_FAX_MODEM_SWITCH 0x08u
#define CONFIG_FLAG_FAX_ECHO_CANCEL_SWITCH 0x10u
#define CONFIG_FLAG_FAX_SILENCE_SUPP_SWITCH 0x20u
typedef struct Tr104SipFaxModeRecord {
    uint32_t unConfigFlag; /*  0 attribute a write changes */
    uint32_t unProcessMode; /*  4 fax process mode */
    uint32_t unT38SdpType; /*  8 T.38 SDP type */
    uint32_t unFaxModemSwitch; /* 12 fax/modem attribute flag */
    uint32_t unEchoCancelSwitch; /* 16 echo cancel attribute flag */
    uint32_t unSilenceSuppSwitch; /* 20 silence suppression attribute flag */
    uint32_t aunReserved[2]; /* 24 */
    uint32_t unFaxCtrlMode; /* 32 fax control mode: 0 "Force", 1 "Disable", 2 "Auto" */
} Tr104SipFaxModeRecord;

/* Voice-band-data record (20 bytes): a write names the field it changes in unSelector. */
#define TR104_VBD_ENABLE 1u
#define TR104_VBD_CODEC 2u
#define TR104_VBD_RX_INTERVAL 4u
#define TR104_VBD_TX_INTERVAL 8u
typedef struct Tr104SipVbdRecord {
    uint32_t unSelector; /*  0 field being set */
    uint32_t unEnable; /*  4 0 or 1 */
    uint32_t unCodec; /*  8 payload-type code (codec.h) */
    uint32_t unRxInterval; /* 12 receive packet interval, ms */
    uint32_t unTxInterval; /* 16 send packet interval, ms */
} Tr104SipVbdRecord;

/* Line record fields */
TR104_API int Tr104LineEnableSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRegisterSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineDisplayNameSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineHotlineNumSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineHotlineDelaySip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineJitterBufferModeSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineMaxJitterBufferValueSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineMinJitterBufferValueSip(int nFlag, void *pValue, int *nLocate);

/* Port status conversions (get only) */
TR104_API int Tr104LineRegStatusSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineServerStatusSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PortStatusSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineHookStatusSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCallStatusSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineSessionTypeSip(int nFlag, void *pValue, int *nLocate);

/* Voice-profile values of a line (the profile bound to the port, created when missing) */
TR104_API int Tr104LineTransmitGainSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineReceiveGainSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineEchoCancelFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineComfortNoiseFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineJitterBufferTargetSip(int nFlag, void *pValue, int *nLocate);
/* nLocate[2] 0 means every line (a get reads line 1). */
TR104_API int Tr104ProfileDTMFMethodSip(int nFlag, void *pValue, int *nLocate);
/* nDirection non-zero: receive gain, zero: transmit gain. */
TR104_API int Tr104LineGainSip(int nFlag, int nDirection, void *pValue, int *nLocate);

/* Line features */
TR104_API int Tr104LineCallWaitingFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCall3wayFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineMaxSessionsSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCallerIdFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CallerIdModeSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CallerIdFormatSip(int nFlag, void *pValue, int *nLocate);

/* Profile-wide timers: seconds (signalling timers) or the voice module's unit (digit timers) */
TR104_API int Tr104StartDigitTimerSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104DialToneTimerSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104NoAnswerTimerSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104BusyToneTimerSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104HangingReminderToneTimerSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CallWaitingRejectTimerSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104ShortDigitTimerSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LongDigitTimerSip(int nFlag, void *pValue, int *nLocate);

/* Digit map */
TR104_API int Tr104ProfileDigitMapEnableSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104ProfileDigitMapMatchModeSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104ProfileDigitMapStringSip(int nFlag, void *pValue, int *nLocate);

/* Statistics reset (set 1 only; a get yields 0) */
TR104_API int Tr104LineResetStatisticsFlagSip(int nFlag, void *pValue, int *nLocate);

/* Read-only profile values (get only) */
TR104_API int Tr104MaxSessionsPerLineSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104MaxSessionsAllLinesSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104RTCPFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104RTPRedundancyFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104VlanTagCoupledFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38FlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxPassThroughFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104ModemPassThroughFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104DigitMapFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104NumberingPlanFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104ProfileNumberOfLinesSip(int nFlag, void *pValue, int *nLocate);
/* The text needs a buffer of TR104_WAN_NAME_LEN bytes. */
#define TR104_WAN_NAME_LEN 64
TR104_API int Tr104ProfileWanNameSip(int nFlag, void *pValue, int *nLocate);

/* Fax: T.38 values of the line's voice profile (rates in bit/s, TCF "Local"/"Network") */
TR104_API int Tr104FaxT38BitRateSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38TCFMethodSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38HighSpeedRedundancySip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38LowSpeedRedundancySip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38PortAdd2Sip(int nFlag, void *pValue, int *nLocate);
/* T.38 on a line; nLocate[2] 0 is line 1. */
TR104_API int Tr104FaxT38EnableSip(int nFlag, void *pValue, int *nLocate);

/* Fax mode attributes (profile-wide) */
TR104_API int Tr104FaxCtrlModeSip(int nFlag, void *pValue, int *nLocate);
/* "Force", "Disable", "Auto": the fax control mode as text */
TR104_API int Tr104ProfileFaxPassThroughSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxProcessModeSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104T38SDPTypeSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxModemAttrFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104EchoCancelAttrFlagSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SilenceSuppAttrFlagSip(int nFlag, void *pValue, int *nLocate);

/* Voice-band data (profile-wide) */
TR104_API int Tr104VbdEnableSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104VbdRxIntervalSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104VbdTxIntervalSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104VbdCodecSip(int nFlag, void *pValue, int *nLocate);

/* Line swap: the physical port ("1" or "2") a line uses.  A set naming the other port swaps
 * the two lines' directory numbers, user names and passwords. */
#define TR104_PHY_REFERENCE_LEN 32
TR104_API extern char gPhyReferenceList[2][TR104_PHY_REFERENCE_LEN];
TR104_API int Tr104PhyReferenceListSip(int nFlag, void *pValue, int *nLocate);

TR104_EXTERN_C_END

#endif
