/*
 * What every data-model handler has in common: the debug print, the generic gets with reply
 * checking and the small typed exchange driven by two tables.
 *
 * Handler signature: int Tr104<Param>(int nFlag, void *pValue, int *nLocate)
 *   nFlag 0 get, 1 set; pValue an int or a text buffer; nLocate[1] profile or physical
 *   interface, nLocate[2] line, nLocate[3] entry below the line.
 *   Returns 0 success, -1 exchange failed or reply unusable, -2 bad argument.
 */
#ifndef TR104_FRAMEWORK_H
#define TR104_FRAMEWORK_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

#define TR104_OK 0
#define TR104_ERR_EXCHANGE (-1)
#define TR104_ERR_PARAM (-2)

/* Non-zero while handlers print their diagnostics. */
TR104_API extern int gTr104CfgDebug;
/* Protocol the voice module runs: 2 H.248, 4 SIP, 0 none known. */
TR104_API extern int gTr104CurrProtocolType;

/* Prints "\n[m:%d,p:%d][%s,%d] " and then the caller's text.  Callers print only while
 * gTr104CfgDebug is set. */
TR104_API void Tr104DebugPrint(const char *function, int line, const char *format, ...)
    __attribute__((format(printf, 3, 4)));
/* Inbound debug switch: on when the first reply word is 1, else off.  Returns 0. */
TR104_API int Tr104SetDebugLevel(const Tr104Msg *msg);

/* The common get: sends unCfgBufferLen (1..2047) bytes of pCfgBuffer as command nCmdId
 * (1..20478) and copies the same number of reply bytes back.  0 or -1. */
TR104_API int CfgPreHandleGetParam(Tr104Msg *pIoMsgParam, void *pCfgBuffer, unsigned int unCfgBufferLen,
                                   unsigned int nCmdId);
/* The common get of a string: strncpy(dst, reply, len), no terminator added when the reply
 * fills len.  0 or -1, silently. */
TR104_API int CfgPreHandleGetStringParam(Tr104Msg *pIoMsgParam, char *dst, unsigned int len, int nCmdId);

/* Data-type sizes: size -1 invalid, 0 the caller gives the size. */
typedef struct VoiceGeneralDataTypeInfo {
    int32_t nDataType;
    int32_t nSize;
} VoiceGeneralDataTypeInfo;
#define TR104_DATA_TYPE_COUNT 7
TR104_API extern VoiceGeneralDataTypeInfo gVoiceGenaralDataTypeInfo[TR104_DATA_TYPE_COUNT];

typedef struct VoiceTr104CmdInfo {
    uint32_t eCmdId;
    uint32_t unParamId;
    uint32_t eDataType;
    uint32_t ifNeedResponse;
    uint32_t reserved;
} VoiceTr104CmdInfo;
#define TR104_SIMPLE_CMD_COUNT 2
TR104_API extern VoiceTr104CmdInfo gVoiceTr104CmdInfo[TR104_SIMPLE_CMD_COUNT];

/* Request block of the typed exchange (the cfgBuffer of command ids 20481..24574). */
#define TR104_SIMPLE_VALUE_MAX 2024
typedef struct Tr104SimpleDataBlock {
    uint32_t unCmdId;
    uint32_t unPortNo;
    uint32_t unParamId;
    uint32_t unOne; /* always 1 */
    uint32_t unParamId2; /* the parameter id again */
    uint32_t unValueSize; /* bytes of aValue carried */
    char aValue[TR104_SIMPLE_VALUE_MAX];
} Tr104SimpleDataBlock;

TR104_API int tr104GetVoiceGeneralDataType(int dataType);
/* Typed exchange over gVoiceTr104CmdInfo.  The block carries the data type's size of value
 * bytes (the caller's size for types of size 0); for a set, value must hold that many bytes
 * and size must stay below 2025.  Returns 0, -1 or -2. */
TR104_API int Tr104SetSimplyDataType(unsigned int cmdId, unsigned int paramId, unsigned int portNo, int size,
                                     const void *value);

TR104_EXTERN_C_END

#endif
