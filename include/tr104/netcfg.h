/*
 * The voice interface's network settings: IP addressing, VLANs, DNS, DHCP options, PPPoE, the
 * management URL, time, the POS and IPT number tables and the LED standard.
 *
 * Handlers follow framework.h: nFlag 0 get, 1 set (the number tables also 2 delete); they
 * return 0, -1 (the exchange failed) or -2 (bad argument, nothing sent).  Addresses are 32-bit
 * words passed through unchanged (the device's order: the first octet is the most significant
 * byte there).  Values written one at a time are grouped by the deferred buffer (startup.h):
 * the voice address, mask and gateway in slot 0, the six SIP VLAN values in slot 6, the six RTP
 * VLAN values in slot 7; a group is sent at once when complete, else after gTr104CfgParamTimeout
 * milliseconds merged into the voice module's current configuration.
 */
#ifndef TR104_NETCFG_H
#define TR104_NETCFG_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

/* Command ids of the voice network settings. */
#define TR104_SET_PRI_IP_CFG_ID 4
#define TR104_SET_LED_STANDARD_ID 21
#define TR104_GET_LED_STANDARD_ID 22
#define TR104_SET_DHCP_ENABLE_ID 25
#define TR104_SET_DHCP_DISABLE_ID 26
#define TR104_GET_DHCP_ID 29
#define TR104_SET_DHCP_OPTION60_ID 31
#define TR104_GET_DHCP_OPTION60_ID 32
#define TR104_SET_DHCP_OPTION120_ID 33
#define TR104_SET_DHCP_OPTION125_ID 35
#define TR104_GET_DHCP_OPTION125_ID 36
#define TR104_SET_PPPOE_PARAM_ID 38
#define TR104_GET_PPPOE_PARAM_ID 39
#define TR104_GET_DEVICE_IP_ID 40
#define TR104_SET_DEVICE_IP_ID 41
#define TR104_SET_VLAN_ID 43
#define TR104_GET_VLAN_ID 44
#define TR104_ADD_POS_NUM_ID 52
#define TR104_DEL_POS_NUM_ID 53
#define TR104_GET_POS_NUM_ID 54
#define TR104_ADD_IPT_NUM_ID 55
#define TR104_DEL_IPT_NUM_ID 56
#define TR104_GET_IPT_NUM_ID 57
#define TR104_GET_NTP_ENABLE_ID 62
#define TR104_SET_NTP_ENABLE_ID 63
#define TR104_GET_TIME_STATUS_ID 64
#define TR104_GET_NTP_SERVER1_ID 65
#define TR104_SET_NTP_SERVER1_ID 66
#define TR104_GET_NTP_SERVER2_ID 67
#define TR104_SET_NTP_SERVER2_ID 68
#define TR104_GET_TIME_ZONE_ID 69
#define TR104_SET_TIME_ZONE_ID 70
#define TR104_GET_LOCAL_TIME_ID 75
#define TR104_ADD_DNS_SERVER_ID 77
#define TR104_GET_DNS_SERVER_ID 78
#define TR104_GET_ACS_URL_ID 80

/* ---- IP addressing: command 40 get, 41 set ---- */
#define TR104_IP_KIND_VOICE 1
#define TR104_IP_KIND_RTP 2
typedef struct Tr104IpConfigPayload {
    uint8_t ucKind; /*   0: 1 voice interface, 2 RTP */
    uint8_t aucZero[3];
    uint32_t unVoiceAddr; /*   4 */
    uint32_t unVoiceMask; /*   8 */
    uint32_t unVoiceGateway; /*  12 */
    uint32_t unRtpAddr; /*  16 */
    uint32_t unRtpMask; /*  20 */
    uint32_t unRtpGateway; /*  24 */
    uint8_t aucRest[248]; /*  28: the voice module's, kept as the last get returned them */
} Tr104IpConfigPayload;

/* Tr104VoiceIpAddr's direct payload under command 41 (28 bytes, sent without the lock).  It
 * travels in the same 4100-byte message as the 276-byte payload: a voice module tells the two
 * apart by the interface name at 16 (where the configuration holds the RTP words) followed by
 * zeros to the configuration's end. */
typedef struct Tr104DirectIpPayload {
    uint32_t unPort;
    uint32_t unAddr;
    uint32_t unMask;
    uint32_t unGateway;
    char aIfName[12]; /* at most 10 characters, zero-filled */
} Tr104DirectIpPayload;

/* ---- VLANs: command 44 get, 43 set; slots 6 (SIP) and 7 (RTP) ---- */
#define TR104_VLAN_ID 0x01u
#define TR104_VLAN_PRIORITY 0x02u
#define TR104_VLAN_TYPE_ID 0x04u
#define TR104_SVLAN_ID 0x08u
#define TR104_SVLAN_PRIORITY 0x10u
#define TR104_SVLAN_TYPE_ID 0x20u
typedef struct Tr104VlanClass {
    uint32_t unSVlanTypeId;
    uint8_t ucSVlanPriority;
    uint8_t ucZero1;
    uint16_t usSVlanId;
    uint32_t unVlanTypeId;
    uint8_t ucVlanPriority;
    uint8_t ucZero2;
    uint16_t usVlanId;
} Tr104VlanClass;
typedef struct Tr104VlanPayload {
    uint32_t unKind; /* 1 SIP, 2 RTP */
    Tr104VlanClass sip; /* 4 */
    Tr104VlanClass rtp; /* 20 */
} Tr104VlanPayload;

/* ---- DNS, DHCP, PPPoE ---- */
typedef struct Tr104DnsPayload { /* command 78 get, 77 set */
    uint32_t unZero;
    uint32_t unServer; /*   4 */
    uint8_t aucZero[264];
    uint32_t unIndex; /* 272: 0 first server, 1 second */
} Tr104DnsPayload;
typedef struct Tr104DirectDnsPayload { /* command 77, Tr104DnsIpAddr only */
    uint32_t unPort;
    uint32_t unServer1;
    uint32_t unServer2;
} Tr104DirectDnsPayload;
#define TR104_DHCP_PAYLOAD_LEN 1308
typedef struct Tr104Option60Payload { /* command 32 get, 31 set */
    uint32_t unFields; /* 0x1 enable, 0x2 value, 0x4 type, 0x8 value mode */
    uint32_t unEnable; /*  4 */
    int32_t nType; /*  8 */
    int32_t nValueMode; /* 12 */
    char aValue[132]; /* 16: at most 130 characters */
} Tr104Option60Payload;
/* The bits of unFields: the fields a set carries. */
#define TR104_OPTION60_ENABLE_BIT 0x1u
#define TR104_OPTION60_VALUE_BIT 0x2u
#define TR104_OPTION60_TYPE_BIT 0x4u
#define TR104_OPTION60_VALUE_MODE_BIT 0x8u
typedef struct Tr104Option125Payload { /* command 36 get, 35 set */
    uint32_t unFields; /* 0x1 enable, 0x2 value */
    uint8_t ucEnable; /* 4 */
    char aValue[131]; /* 5: at most 130 characters */
} Tr104Option125Payload;
#define TR104_OPTION125_ENABLE_BIT 0x1u
#define TR104_OPTION125_VALUE_BIT 0x2u
typedef struct Tr104PppoePayload { /* command 39 get, 38 set */
    uint32_t unFields; /* 0x1 enable, 0x2 account, 0x4 password */
    uint32_t unEnable; /*   4 */
    char aAccount[64]; /*   8: at most 63 characters */
    char aPassword[64]; /*  72: at most 63 characters */
    uint8_t aucZero[28]; /* 136 */
} Tr104PppoePayload;
#define TR104_PPPOE_ENABLE_BIT 0x1u
#define TR104_PPPOE_ACCOUNT_BIT 0x2u
#define TR104_PPPOE_PASSWORD_BIT 0x4u

/* ---- Time: commands 62..70, 75 ---- */
typedef struct Tr104TimePayload { /* commands 64..70 */
    uint8_t aucZero1[52];
    int32_t nOffset; /*  52: time-zone offset in seconds, east positive */
    uint8_t aucZero2[8]; /*  56 */
    char aStatus[32]; /*  64: time status text */
    char aNtpServer1[255]; /*  96 */
    char aNtpServer2[269]; /* 351: the odd offset is the voice module's */
} Tr104TimePayload;
#define TR104_TIME_PAYLOAD_LEN sizeof(Tr104TimePayload)
#define TR104_TIME_OFFSET_AT offsetof(Tr104TimePayload, nOffset)
#define TR104_TIME_STATUS_AT offsetof(Tr104TimePayload, aStatus)
#define TR104_TIME_NTP1_AT offsetof(Tr104TimePayload, aNtpServer1)
#define TR104_TIME_NTP2_AT offsetof(Tr104TimePayload, aNtpServer2)

/* ---- Number tables: POS 54 get, 52 add, 53 delete; IPT 57, 55, 56 ---- */
#define TR104_NUMBER_ENTRIES 10
#define TR104_NUMBER_MAX_LEN 20
typedef struct Tr104NumberTable {
    uint8_t ucDeleteAll; /*  0 */
    uint8_t aucZero1[3];
    uint8_t ucLength; /*  4 */
    uint8_t ucEntry; /*  5: the wanted entry (1-based); in a reply the entry count */
    char aTypes[10]; /*  6 */
    uint8_t aucZero2[64]; /* 16 */
    char aNumbers[10][21]; /* 80 */
    uint8_t aucZero3[2]; /* 290 */
} Tr104NumberTable;

/* IP addressing */
TR104_API int Tr104IpAddrConfig(int nFlag, void *pIpAddr);
TR104_API int Tr104NetMaskConfig(int nFlag, void *pNetMask);
TR104_API int Tr104GatewayConfig(int nFlag, void *pGateway);
TR104_API int Tr104IpParamConfig(int nFlag, uint32_t *pIpAddr, uint32_t *pNetMask, uint32_t *pGateway);
TR104_API int Tr104RtpIpParamConfig(int nFlag, uint32_t *pRtpIp, uint32_t *pRtpMask, uint32_t *pRtpGw);
/* Act on the voice address and gateway (slot 0), like the handlers above. */
TR104_API int Tr104RtpIpAddrConfig(int nFlag, void *pIpAddr);
TR104_API int Tr104RtpGateWayConfig(int nFlag, void *pGateway);
/* Direct send (msgsnd, IPC_NOWAIT, no lock, no reply); pPort: its third word is the port. */
TR104_API int Tr104VoiceIpAddr(int nFlag, uint32_t *pIpAddr, uint32_t *pNetmask, uint32_t *pGateway,
                               const char *pIfName, const uint32_t *pPort);
/* 0 static, 1 DHCP, 2 PPPoE; the value is checked (below 3) before a get too. */
TR104_API int Tr104IpMode(int nFlag, void *pIpMode, int *nLocate);
/* Command 4: OLT and ONU numbers (low bytes) and the address; returns what puts returns when
 * the send fails. */
TR104_API int VoipPrivateIpCfg(int nOltNo, int nOnuNo, uint32_t unIpAddr);
/* Apply functions of slots 0, 6 and 7 (record, slot buffer).  0 or -1. */
TR104_API int setIpConfig(Tr104Msg *msg, void *paramBuffer);
TR104_API int setSipVlanParam(Tr104Msg *msg, void *paramBuffer);
TR104_API int setRtpVlanParam(Tr104Msg *msg, void *paramBuffer);

/* VLANs.  Ids 1..4096, type ids 1..65535, SIP priorities 1..7: any other value is stored as 0;
 * RTP priorities 0..7, 8 or more refused. */
TR104_API int Tr104SipVlanId(int nFlag, void *pValue);
TR104_API int Tr104SipVlanPriority(int nFlag, void *pValue);
TR104_API int Tr104SipVlanTypeId(int nFlag, void *pValue);
TR104_API int Tr104SipSVlanId(int nFlag, void *pValue);
TR104_API int Tr104SipSVlanPriority(int nFlag, void *pValue);
TR104_API int Tr104SipSVlanTypeId(int nFlag, void *pValue);
TR104_API int Tr104RtpVlanId(int nFlag, void *pValue);
TR104_API int Tr104RtpVlanPriority(int nFlag, void *pValue);
TR104_API int Tr104RtpVlanTypeId(int nFlag, void *pValue);
TR104_API int Tr104RtpSVlanId(int nFlag, void *pValue);
TR104_API int Tr104RtpSVlanPriority(int nFlag, void *pValue);
TR104_API int Tr104RtpSVlanTypeId(int nFlag, void *pValue);

/* DNS, DHCP, PPPoE, management URL */
TR104_API int Tr104DnsIpConfig1(int nFlag, void *pDnsIp);
TR104_API int Tr104DnsIpConfig2(int nFlag, void *pDnsIp);
TR104_API int Tr104DnsIpAddr(int nFlag, uint32_t *pDnsIp1, uint32_t *pDnsIp2, const uint32_t *pPort);
/* Get only (256-byte text); a set succeeds and does nothing. */
TR104_API int Tr104AcsUrlConfig(int nFlag, void *pAcsUrl);
/* A set of exactly 1 enables, any other value disables. */
TR104_API int Tr104DhcpEnable(int nFlag, void *pDhcpEnableFlag);
TR104_API int Tr104DHCPOption60Enable(int nFlag, void *pOptionEnable);
TR104_API int Tr104DHCPOption60Type(int nFlag, void *pOptionType);
TR104_API int Tr104DHCPOption60ValueMode(int nFlag, void *pOptionValueMode);
/* Refused while the value mode is not 0; at most 130 characters. */
TR104_API int Tr104DHCPOption60Value(int nFlag, void *pOptionValue);
/* Direct send of the option text (at most 2048 characters); a get does nothing. */
TR104_API int Tr104DhcpOption120(int nFlag, const char *pOption120);
TR104_API int Tr104DHCPOption125Enable(int nFlag, void *pOptionEnable);
TR104_API int Tr104DHCPOption125Value(int nFlag, void *pOptionValue);
TR104_API int Tr104PPPoEAccount(int nFlag, void *pPPPoEAccount);
TR104_API int Tr104PPPoEPassword(int nFlag, void *pPPPoEPassword);
TR104_API int Tr104PPPoEEnable(int nFlag, void *pPPPoEEnableFlag);
/* Does nothing and returns 0. */
TR104_API int Tr104PPPoEMode(int nFlag, void *pValue);

/* Time */
TR104_API extern char gLocalTimeZoneName[64];
TR104_API int Tr104TimeEnable(int nFlag, void *pTimeEnable);
TR104_API int Tr104TimeStatus(int nFlag, void *pTimeStatus);
TR104_API int Tr104TimeNtpServer1(int nFlag, void *pNtpServer1);
TR104_API int Tr104TimeNtpServer2(int nFlag, void *pNtpServer2);
TR104_API int Tr104TimeCurrentLocalTime(int nFlag, void *pCurrentLocalTime);
/* "+HH:MM" / "-HH:MM"; an offset of 0 reads back as "-00:00". */
TR104_API int Tr104TimeLocalTimeZone(int nFlag, void *pLocalTimeZone);
TR104_API int Tr104TimeLocalTimeZoneName(int nFlag, void *pLocalTimeZoneName);
/* 1 when the text is a valid time zone, else 0. */
TR104_API int checkTimeZoneValid(const char *pTimeZone);

/* POS and IPT numbers (nFlag 0 get entry nLocate[2], 1 add, 2 delete; a delete without a
 * number deletes all), the LED standard, the RTP DSCP mark */
TR104_API int Tr104PosParamConfig(int nFlag, char *pPosNum, char *pPosType, int *nLocate);
TR104_API int Tr104IptParamConfig(int nFlag, char *pIptNum, char *pIptType, int *nLocate);
/* 1 valid, 0 not (with the reason under debug). */
TR104_API int checkPosNumValid(const char *pNum);
TR104_API int checkIptNumValid(const char *pNum);
TR104_API int checkPOSorIPTTypeValid(const char *pType);
TR104_API int Tr104LedStandard(int nFlag, void *pLedStandard);
/* SIP: Tr104RtpDSCPMarkSip (a variant the embedding process provides); H.248: 0; else -1. */
TR104_API int Tr104RtpDSCPMark(int nFlag, void *pValue);

TR104_EXTERN_C_END

#endif
