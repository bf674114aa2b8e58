// Record and exchanges of the voice network handlers.
#include <sys/msg.h>

#include <cstdio>

#include "tr104/netcfg/netcfg_internal.h"

namespace tr104::netcfg {

void handRecord(Tr104Msg *msg) {
    std::memset(msg, 0, sizeof(*msg));
    msg->cmd_type = static_cast<uint32_t>(gCurrentModule);
    msg->semId = gTr104RcvMsgQueueSemId;
    msg->sndQueueId = gTr104SndMsgQueueId;
    msg->rcvQueueId = gTr104RcvOutMsgQueueId;
}

int getPayload(void *payload, unsigned int len, unsigned int cmd) {
    Tr104Msg msg;
    handRecord(&msg);
    return CfgPreHandleGetParam(&msg, payload, len, cmd) == 0 ? TR104_OK : TR104_ERR_EXCHANGE;
}

int getText(char *dst, unsigned int len, unsigned int cmd) {
    Tr104Msg msg;
    handRecord(&msg);
    return CfgPreHandleGetStringParam(&msg, dst, len, static_cast<int>(cmd)) == 0 ? TR104_OK : TR104_ERR_EXCHANGE;
}

int sendPayload(Tr104Msg *msg, const void *payload, unsigned int len, unsigned int cmd) {
    msg->cmd_type = static_cast<uint32_t>(gCurrentModule);
    msg->cmd = cmd;
    std::memset(msg->cfgBuffer, 0, sizeof(msg->cfgBuffer));
    std::memset(msg->rspBuffer, 0, sizeof(msg->rspBuffer));
    if (payload != nullptr) {
        std::memcpy(msg->cfgBuffer, payload, len < TR104_CFG_BUFFER_LEN ? len : TR104_CFG_BUFFER_LEN);
    }
    return msgSndAndRcvSem(msg, 1) == -1 ? TR104_ERR_EXCHANGE : TR104_OK;
}

int sendDirect(unsigned int cmd, const void *payload, size_t len) {
    Tr104WireMsg wire;
    std::memset(&wire, 0, sizeof(wire));
    wire.mtype = gCurrentModule;
    const uint32_t command = cmd;
    std::memcpy(wire.text + TR104_TEXT_CMD_OFFSET, &command, sizeof(command));
    std::memcpy(wire.text + TR104_TEXT_CFG_OFFSET, payload, len < TR104_CFG_BUFFER_LEN ? len : TR104_CFG_BUFFER_LEN);
    return msgsnd(gTr104SndMsgQueueId, &wire, TR104_MSG_TEXT_LEN, IPC_NOWAIT) == -1 ? TR104_ERR_EXCHANGE : TR104_OK;
}

int directChecks(const char *name, bool present, const char *nullMessage, int nFlag, bool flagOnStdout) {
    if (!present) {
        printf(nullMessage, name);
        return TR104_ERR_PARAM;
    }
    if (nFlag == 0) {
        return TR104_OK;
    }
    if (nFlag != 1) {
        if (flagOnStdout) {
            printf("[%s] param error, nFlag[%d]\n", name, nFlag);
        } else {
            TR104_DEBUG_AS(name, "param error, nFlag[%d]\n", nFlag);
        }
        return TR104_ERR_PARAM;
    }
    return 1;
}

uint32_t portOf(const uint32_t *pPort) {
    if (pPort == nullptr) {
        return 0;
    }
    uint32_t port;
    std::memcpy(&port, reinterpret_cast<const char *>(pPort) + 2 * sizeof(uint32_t), sizeof(port));
    return port;
}

}  // namespace tr104::netcfg

namespace tr104::netcfg {

int smallValue(const SmallValue &v, int nFlag, void *pValue) {
    if (pValue == nullptr) {
        say(v.name, v.nullError);
        return TR104_ERR_PARAM;
    }
    auto current = [&] { return v.width == 1 ? *static_cast<const uint8_t *>(pValue) : intValue(pValue); };
    TR104_DEBUG_AS(v.name, v.entry, nFlag, current());
    uint8_t payload[4] = {};
    if (nFlag == 0) {
        if (getPayload(payload, v.width, v.getCmd) != TR104_OK) {
            say(v.name, v.getError);
            return TR104_ERR_EXCHANGE;
        }
        std::memcpy(pValue, payload, v.width);
        TR104_DEBUG_AS(v.name, v.getDone, current());
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG_AS(v.name, "param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    std::memcpy(payload, pValue, v.width);
    if (sendPayload(payload, v.width, v.setCmd) != TR104_OK) {
        say(v.name, v.sendError);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace tr104::netcfg
