/*
 * Start-up of the library, the inbound-message thread and the deferred parameter buffer.
 */
#ifndef TR104_STARTUP_H
#define TR104_STARTUP_H

#include "tr104/channel.h"
#include "v2lin/lwdLib.h"

TR104_EXTERN_C_BEGIN

/* Full start-up for a module kind (1..7): channel, runtime, deferred buffer and, for kinds
 * 1..4, the inbound thread.  Call once per process before any handler.  0 or -1. */
TR104_API int Tr104VoiceCfgInit(int moduleKind);
/* Smaller initialiser: the lock, the send queue and the reply queue with key 160.  0 or -1. */
TR104_API int VoipOmInit(void);
/* Body of the inbound thread: reads the inbound queue for ever. */
TR104_API void *RecvInMsgHandleFunction(void *unused);
/* Hands one inbound message to its handler by command id. */
TR104_API void processVoiceModuleMsg(const Tr104Msg *pVoiceModuleMsg);
/* Asks the voice module to save its configuration (command 99, send only).  0 or -1. */
TR104_API int Tr104VoiceCfgSave(void);

/* The deferred parameter buffer: one slot per group of related parameters.  A set handler
 * stores its value in the slot's paramBuffer, ORs its bit into cfgFlag and calls
 * tr104CfgParamHandleByTimer; the group is applied at once when complete, or by the slot's
 * watchdog gTr104CfgParamTimeout milliseconds after its first parameter. */
#define TR104_CFG_PARAM_SLOTS 20
typedef int (*Tr104CfgApplyFunc)(Tr104Msg *msg, void *paramBuffer);

typedef struct Tr104CfgParamInfo {
    int32_t timerStarted; /* 1 while the slot's timer runs */
    char paramBuffer[TR104_CFG_BUFFER_LEN]; /* staged block, laid out as the apply function's message */
    uint16_t cfgFlag; /* bit n: parameter n of the group is staged */
    WDOG_ID wdId; /* the slot's watchdog */
    Tr104CfgApplyFunc timeroutFuncHandle; /* the group's apply function; -1 on failure */
    int32_t paramCount; /* parameters in the group: bits 0 .. paramCount-1 */
} Tr104CfgParamInfo;

/* Slots: 0 voice IP address, 1 registrar, 2 secondary registrar, 3 proxy, 4 secondary proxy,
 * 5 line authentication, 6 SIP VLAN, 7 RTP VLAN, 8 outbound proxy, 9 secondary outbound proxy. */
TR104_API extern Tr104CfgParamInfo gTr104CfgParamInfo[TR104_CFG_PARAM_SLOTS];
/* Milliseconds from a group's first staged parameter to its forced application. */
TR104_API extern int32_t gTr104CfgParamTimeout;

TR104_API int constructTr104CfgParamInfo(void);
TR104_API int tr104CfgParamHandleByTimer(int nCfgParamTimerType, Tr104Msg *msg, void *buffer);
TR104_API int timerHandleFunc(int nCfgParamTimerType);
TR104_API void resetTr104CfgParamInfo(int nCfgParamTimerType);
TR104_API uint16_t getTr104CfgParamInfoCfgFlag(int nCfgParamTimerType);
TR104_API void appendTr104CfgParamInfoCfgFlag(int nCfgParamTimerType, uint16_t bits);
TR104_API void *getTr104CfgParamInfoParamBuffer(int nCfgParamTimerType);

TR104_EXTERN_C_END

#endif
