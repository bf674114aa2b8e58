// The handler convention: debug print, the common gets and the table-driven typed exchange.
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "tr104/framework.h"
#include "tr104/core/debug.h"
#include "tr104/core/record_layout.h"
#include "tr104/core/core.h"

static_assert(sizeof(Tr104SimpleDataBlock) == TR104_CFG_BUFFER_LEN);
static_assert(offsetof(Tr104SimpleDataBlock, unValueSize) == 20);
static_assert(offsetof(Tr104SimpleDataBlock, aValue) == 24);
static_assert(sizeof(VoiceGeneralDataTypeInfo) == 8);
static_assert(sizeof(VoiceTr104CmdInfo) == 20);

extern "C" {
TR104_API int gTr104CfgDebug = 0;
TR104_API int gTr104CurrProtocolType = 0;

TR104_API VoiceGeneralDataTypeInfo gVoiceGenaralDataTypeInfo[TR104_DATA_TYPE_COUNT] = {
    {0, -1}, {1, 1}, {2, 1}, {3, 4}, {4, 4}, {5, 4}, {6, 0},
};

TR104_API VoiceTr104CmdInfo gVoiceTr104CmdInfo[TR104_SIMPLE_CMD_COUNT] = {
    {20481, 1, 5, 1, 0},  // set, send only
    {20482, 1, 5, 0, 0},  // get, wait for the reply
};
}

extern "C" TR104_API void Tr104DebugPrint(const char *function, int line, const char *format, ...) {
    printf("\n[m:%d,p:%d][%s,%d] ", gCurrentModule, gTr104CurrProtocolType, function ? function : "", line);
    if (format == nullptr) {
        return;
    }
    va_list args;
    va_start(args, format);
    vprintf(format, args);
    va_end(args);
}

extern "C" TR104_API int Tr104SetDebugLevel(const Tr104Msg *msg) {
    if (msg == nullptr) {
        return -1;
    }
    uint32_t level;
    std::memcpy(&level, msg->rspBuffer, sizeof(level));
    gTr104CfgDebug = level == 1 ? 1 : 0;
    return 0;
}

namespace {
constexpr unsigned int kMaxGetCmdId = 20478;

bool replyAnswers(const Tr104Msg *msg, unsigned int cmdId) {
    return msg->cmd_type == TR104_CMD_TYPE_DATA && msg->cmd == cmdId;
}
}  // namespace

extern "C" TR104_API int CfgPreHandleGetParam(Tr104Msg *pIoMsgParam, void *pCfgBuffer, unsigned int unCfgBufferLen,
                                              unsigned int nCmdId) {
    if (pIoMsgParam == nullptr || pCfgBuffer == nullptr) {
        printf("[%s,%d]: pIoMsgParam or pCfgBuffer is null!\n", __func__, __LINE__);
        return -1;
    }
    if (nCmdId < 1 || nCmdId > kMaxGetCmdId) {
        printf("[%s,%d]: nCmdId=0x%x\n", __func__, __LINE__, nCmdId);
        return -1;
    }
    if (unCfgBufferLen == 0) {
        printf("[%s,%d]: unCfgBufferLen=0\n", __func__, __LINE__);
        return -1;
    }
    pIoMsgParam->cmd = nCmdId;
    if (unCfgBufferLen >= TR104_CFG_BUFFER_LEN) {
        printf("[%s,%d]: unCfgBufferLen=%d\n", __func__, __LINE__, unCfgBufferLen);
        return -1;
    }
    std::memcpy(pIoMsgParam->cfgBuffer, pCfgBuffer, unCfgBufferLen);
    if (msgSndAndRcvSem(pIoMsgParam, 0) == -1) {
        printf("[%s,%d]: msgSndAndRcvSem() err!\n", __func__, __LINE__);
        return -1;
    }
    if (!replyAnswers(pIoMsgParam, nCmdId)) {
        printf("[%s,%d]: err, cmd_type=%d, nCmdId=0x%x, cmd=0x%x\n", __func__, __LINE__,
               static_cast<int>(pIoMsgParam->cmd_type), nCmdId, pIoMsgParam->cmd);
        return -1;
    }
    std::memcpy(pCfgBuffer, pIoMsgParam->rspBuffer, unCfgBufferLen);
    return 0;
}

extern "C" TR104_API int CfgPreHandleGetStringParam(Tr104Msg *pIoMsgParam, char *dst, unsigned int len, int nCmdId) {
    const unsigned int cmdId = static_cast<unsigned int>(nCmdId);
    if (pIoMsgParam == nullptr || dst == nullptr || cmdId < 1 || cmdId > kMaxGetCmdId || len == 0) {
        return -1;
    }
    pIoMsgParam->cmd = cmdId;
    if (msgSndAndRcvSem(pIoMsgParam, 0) == -1 || !replyAnswers(pIoMsgParam, cmdId)) {
        return -1;
    }
    // The text fills the caller's len bytes as strncpy leaves it (no terminator when it is len
    // characters or more); a reply area without a terminator holds a text of its first 2047 bytes.
    const size_t inReply = tr104::core::fieldTextLength(pIoMsgParam->rspBuffer, sizeof(pIoMsgParam->rspBuffer));
    const size_t textLen = inReply < len ? inReply : len;
    std::memcpy(dst, pIoMsgParam->rspBuffer, textLen);
    if (textLen < len) {
        std::memset(dst + textLen, 0, len - textLen);
    }
    return 0;
}

extern "C" TR104_API int tr104GetVoiceGeneralDataType(int dataType) {
    for (const VoiceGeneralDataTypeInfo &row : gVoiceGenaralDataTypeInfo) {
        if (row.nDataType == dataType) {
            return row.nSize;
        }
    }
    return -1;
}

extern "C" TR104_API int Tr104SetSimplyDataType(unsigned int cmdId, unsigned int paramId, unsigned int portNo, int size,
                                                const void *value) {
    if (portNo >= 3) {
        TR104_DEBUG("port no error(%d).\n", portNo);
        return -2;
    }
    const VoiceTr104CmdInfo *info = nullptr;
    for (const VoiceTr104CmdInfo &row : gVoiceTr104CmdInfo) {
        if (row.eCmdId == cmdId && row.unParamId == paramId) {
            info = &row;
            break;
        }
    }
    if (info == nullptr || info->eDataType == 0) {
        TR104_DEBUG("do not find datatype by cmdid(%d) and paramid(%u).\n", cmdId, paramId);
        return -2;
    }
    int bufferSize = tr104GetVoiceGeneralDataType(static_cast<int>(info->eDataType));
    if (bufferSize == -1) {
        TR104_DEBUG("do not find data buffer size by datatype(%d).\n", info->eDataType);
        return -2;
    }
    if (bufferSize == 0) {
        bufferSize = size;
        if (bufferSize < 1) {
            TR104_DEBUG("data buffer size <= 0(%d).\n", size);
            return -2;
        }
    }

    // The size word and the copied value bytes agree: both are the data type's buffer size
    // (the caller's size for types that leave it to the caller).  A set refuses a caller's
    // size of 2025 or more, which also keeps every copy inside the block.
    Tr104SimpleDataBlock block{};
    block.unCmdId = cmdId;
    block.unPortNo = portNo;
    block.unParamId = paramId;
    block.unOne = 1;
    block.unParamId2 = paramId;
    block.unValueSize = static_cast<uint32_t>(bufferSize);
    if (info->ifNeedResponse == 1) {
        if (size > TR104_SIMPLE_VALUE_MAX || bufferSize > TR104_SIMPLE_VALUE_MAX) {
            TR104_DEBUG("param value too long(size=%d).\n", size);
            return -2;
        }
        if (value == nullptr) {
            return -2;
        }
        std::memcpy(block.aValue, value, static_cast<size_t>(bufferSize));
    }
    return tr104MsgSndAndWaitIfNeedResponse(static_cast<int>(cmdId), &block, sizeof(block), info->ifNeedResponse);
}
