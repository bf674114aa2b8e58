/*
 * The voice profile bound to a port and the port status that names it: records the SIP and the
 * H.248 handlers share (a line's audio settings live in its port's voice profile, whatever the
 * signalling protocol), with their command ids.
 *
 * Records hold integers in the platform's byte order (the voice module shares it) and are
 * zero-filled before use.
 */
#ifndef TR104_VOICE_PROFILE_H
#define TR104_VOICE_PROFILE_H

#include <stdint.h>

#include "tr104/export.h"

TR104_EXTERN_C_BEGIN

/* Command ids of the port status and of the voice profile. */
enum Tr104VoiceProfileCommandId {
    CREATE_PROFILE_ID = 16405,
    SET_PROFILE_CMD_ID = 16407,
    GET_PROFILE_CMD_ID = 16408,
    BIND_PROFILE_ID = 16409,
    CREATE_SET_BIND_PROFILE_ID = 16410,
    GET_PORT_STATUS_ID = 16592
};

/* Line record (452 bytes): one layout shared by the line commands, each of which fills and
 * reads only its own fields.  GET_PORT_STATUS_ID answers the status fields. */
typedef struct Tr104SipLineRecord {
    uint32_t unLine; /*   0 line (port) number, 1 or 2 */
    uint32_t unEnable; /*   4 1 enabled, 0 disabled */
    char aHotlineNum[66]; /*   8 hotline number */
    char aDisplayName[65]; /*  74 display name */
    uint8_t aucReserved1[1]; /* 139 */
    uint32_t unPortState; /* 140 port state code */
    char aRegState[20]; /* 144 "N/A", "reg-ing", "reg-ok", "reg-fail", "unreg-ing" ... */
    char aHookState[20]; /* 164 hook state text */
    char aCallState[172]; /* 184 call state text */
    uint32_t unProfileId; /* 356 non-zero when a voice profile is bound to the port */
    char aProfileName[44]; /* 360 name of the bound profile (21 characters used) */
    uint32_t unHotlineDelay; /* 404 hotline delay */
    uint8_t aucReserved2[24]; /* 408 */
    uint32_t unMinJitter; /* 432 minimum jitter buffer */
    uint32_t unMaxJitter; /* 436 maximum jitter buffer */
    char aJitterMode[10]; /* 440 jitter buffer mode text */
    uint8_t aucReserved3[2]; /* 450 */
} Tr104SipLineRecord;

/* Change-mask bits of the profile record. */
#define TR104_PROFILE_CODEC_COUNT 5
#define TR104_PROFILE_CODEC_UNUSED 0xFFu
#define TR104_PROFILE_CODEC 0x01u
#define TR104_PROFILE_SILENCE_SUPPRESSION 0x02u
#define TR104_PROFILE_COMFORT_NOISE 0x04u
#define TR104_PROFILE_DTMF_METHOD 0x08u
#define TR104_PROFILE_ECHO_CANCEL 0x10u
#define TR104_PROFILE_RECEIVE_GAIN 0x20u
#define TR104_PROFILE_TRANSMIT_GAIN 0x40u
#define TR104_PROFILE_JITTER_TARGET 0x80u
#define TR104_PROFILE_PACKETIZATION 0x100u
#define TR104_PROFILE_T38_BIT_RATE 0x1000u
#define TR104_PROFILE_T38_PORT_ADD2 0x2000u
#define TR104_PROFILE_T38_TCF_METHOD 0x4000u
#define TR104_PROFILE_T38_HIGH_SPEED_REDUNDANCY 0x8000u

/* Profile record (76 bytes): one voice profile of the voice module, bound to a port.  A set
 * changes only the fields whose bit is in unChangeMask. */
typedef struct Tr104SipProfileRecord {
    uint8_t ucPort; /*  0 port the profile is bound to (bind requests) */
    uint8_t ucReserved1; /*  1 */
    char aName[22]; /*  2 profile name ("port%d" when this library creates it) */
    uint32_t unChangeMask; /* 24 fields a set changes */
    uint8_t aucCodecs[5]; /* 28 bit 0x01: codec selection, payload types in order of
                                          preference, 0xFF in unused places */
    uint8_t aucReserved2[5]; /* 33 */
    uint8_t ucSilenceSuppression; /* 38 bit 0x02 */
    uint8_t ucComfortNoise; /* 39 bit 0x04 */
    uint8_t ucDtmfMethod; /* 40 bit 0x08: 0 InBand, 1 RFC2833, 2 RFC2833 Redundancy, 3 SIPInfo */
    uint8_t ucEchoCancel; /* 41 bit 0x10 */
    int8_t cReceiveGain; /* 42 bit 0x20 */
    int8_t cTransmitGain; /* 43 bit 0x40 */
    uint8_t ucJitterTarget; /* 44 bit 0x80 */
    uint8_t ucPacketization; /* 45 bit 0x100 */
    uint8_t aucReserved3[10]; /* 46 */
    uint32_t unT38BitRate; /* 56 bit 0x1000 */
    uint32_t unT38TcfMethod; /* 60 bit 0x4000 */
    uint32_t unT38HighSpeedRedundancy; /* 64 bit 0x8000 */
    uint32_t unT38LowSpeedRedundancy; /* 68 */
    uint32_t unT38PortAdd2; /* 72 bit 0x2000 */
} Tr104SipProfileRecord;

TR104_EXTERN_C_END

#endif /* TR104_VOICE_PROFILE_H */
