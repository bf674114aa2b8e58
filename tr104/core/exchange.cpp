// The locked request/reply exchange with the voice module and its thin wrappers.
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tr104/framework.h"
#include "tr104/core/debug.h"
#include "tr104/core/record_layout.h"

namespace {

constexpr int kLockWaitSeconds = 5;
constexpr int kLongPollLimit = 251;  // modules 7 and 10: about 1 s
constexpr int kShortPollLimit = 51;  // every other module: about 0.2 s
constexpr useconds_t kFirstMissPause = 1;
constexpr useconds_t kFifthMissPause = 20000;

// A reply whose payload starts with thirteen 0xFF bytes and a zero byte is a refusal.
constexpr char kFailureMarker[] = "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF";

bool takeLock(int semId) {
    sembuf op{};
    op.sem_num = 0;
    op.sem_op = -1;
    op.sem_flg = SEM_UNDO;
    timespec timeout{kLockWaitSeconds, 0};
    return semtimedop(semId, &op, 1, &timeout) != -1;
}

void releaseLock(int semId) {
    sembuf op{};
    op.sem_num = 0;
    op.sem_op = 1;
    op.sem_flg = SEM_UNDO;
    (void)semop(semId, &op, 1);
}

// Drops every message left in the reply queue (replies to earlier exchanges that gave up).
bool clearMsgQueue(int queueId, Tr104WireMsg *scratch) {
    msqid_ds status{};
    if (msgctl(queueId, IPC_STAT, &status) == -1) {
        printf("\rget message queue configuration failed.");
        return false;
    }
    while (status.msg_qnum != 0) {
        if (msgrcv(queueId, scratch, TR104_MSG_TEXT_LEN, 0, IPC_NOWAIT | MSG_NOERROR) == -1) {
            printf("\r\nreceive message in clearMsgQueue failed.");
            return false;
        }
        if (msgctl(queueId, IPC_STAT, &status) == -1) {
            printf("\rget message queue configuration failed.");
            return false;
        }
    }
    return true;
}

void putWord(char *dst, uint32_t value) { std::memcpy(dst, &value, sizeof(value)); }
uint32_t getWord(const char *src) {
    uint32_t value;
    std::memcpy(&value, src, sizeof(value));
    return value;
}

}  // namespace

extern "C" TR104_API int msgSndAndRcvSem(Tr104Msg *pIoSemMsgPara, unsigned int ifNeedResponse) {
    if (pIoSemMsgPara == nullptr) {
        printf("\n msgSndAndRcvSem - pIoSemMsgPara is null");
        return -1;
    }
    if (ifNeedResponse >= 2) {
        printf("\n msgSndAndRcvSem - ifNeedResponse [%d] is error\n", ifNeedResponse);
        return -1;
    }
    Tr104Msg *msg = pIoSemMsgPara;
    if (!takeLock(msg->semId)) {
        printf("\r\n semtimedop wait for %ds.", kLockWaitSeconds);
        perror("\r\n perror:\n");
        printf("\n msgSndAndRcvSem - decrSem fail");
        return -1;
    }

    Tr104WireMsg wire;
    if (!clearMsgQueue(msg->rcvQueueId, &wire)) {
        releaseLock(msg->semId);
        printf("\n msgSndAndRcvSem - clearMsgQueue fail");
        return -1;
    }

    // The outgoing message: type, command, request payload and a zero reply area.
    std::memset(&wire, 0, sizeof(wire));
    wire.mtype = static_cast<long>(msg->cmd_type);
    putWord(wire.text + TR104_TEXT_CMD_OFFSET, msg->cmd);
    std::memcpy(wire.text + TR104_TEXT_CFG_OFFSET, msg->cfgBuffer, TR104_CFG_BUFFER_LEN);
    const uint32_t requestType = msg->cmd_type;
    const uint32_t requestCmd = msg->cmd;

    if (msgsnd(msg->sndQueueId, &wire, TR104_MSG_TEXT_LEN, 0) == -1) {
        printf("\n msgSndAndRcvSem - msg send  fail");
        releaseLock(msg->semId);
        return -1;
    }
    if (ifNeedResponse == 1) {
        releaseLock(msg->semId);
        return 0;
    }

    const int limit = (requestType == 7 || requestType == 10) ? kLongPollLimit : kShortPollLimit;
    int misses = 0;
    ssize_t received = -1;
    for (;;) {
        received = msgrcv(msg->rcvQueueId, &wire, TR104_MSG_TEXT_LEN, 0, IPC_NOWAIT | MSG_NOERROR);
        if (received > 0) {
            break;
        }
        if (received == 0) {
            continue;
        }
        ++misses;
        if (misses > limit) {
            break;
        }
        if (misses == 1) {
            usleep(kFirstMissPause);
        } else if (misses % 5 == 0) {
            usleep(kFifthMissPause);
        }
    }

    if (received > 0) {
        msg->cmd_type = static_cast<uint32_t>(wire.mtype);
        msg->cmd = getWord(wire.text + TR104_TEXT_CMD_OFFSET);
        std::memcpy(msg->rspBuffer, wire.text + TR104_TEXT_RSP_OFFSET, TR104_RSP_BUFFER_LEN);
    } else {
        // After a give-up the record holds the request again.  This is taken from a private
        // copy rather than the kernel buffer: a failed receive under user-mode emulation may
        // overwrite the buffer's type word, a real kernel leaves it alone.
        msg->cmd_type = requestType;
        msg->cmd = requestCmd;
        std::memset(msg->rspBuffer, 0, TR104_RSP_BUFFER_LEN);
    }
    releaseLock(msg->semId);

    if (std::strncmp(msg->rspBuffer, kFailureMarker, sizeof(kFailureMarker)) == 0) {
        return -1;
    }
    if (received > 0) {
        return static_cast<int>(received);
    }
    printf("\n[%s,%d]: cmd_type(%d) cmd(%d) nReturnValue=%d, time=%d\n", __func__, __LINE__,
           static_cast<int>(msg->cmd_type), static_cast<int>(msg->cmd), static_cast<int>(received), misses);
    return static_cast<int>(received);
}

extern "C" TR104_API int tr104MsgSndAndWaitIfNeedResponse(int eCmdId, void *pCfgBuffer, unsigned int unCfgBufferLen,
                                                          unsigned int ifNeedResponse) {
    if (pCfgBuffer == nullptr) {
        TR104_DEBUG("pCfgBuffer is null!\n");
        return -2;
    }
    if (eCmdId < 20481 || eCmdId > 24574) {
        TR104_DEBUG("eCmdId(%d) out of range!\n", eCmdId);
        return -2;
    }
    if (unCfgBufferLen == 0) {
        TR104_DEBUG("unCfgBufferLen is 0!\n");
        return -2;
    }
    // The copies are bounded by the record's payload areas; callers keep within them.
    const unsigned int len = unCfgBufferLen < TR104_CFG_BUFFER_LEN ? unCfgBufferLen : TR104_CFG_BUFFER_LEN;
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        TR104_DEBUG("construct msg fail!\n");
        return -1;
    }
    msg.cmd_type = static_cast<uint32_t>(gCurrentModule);
    msg.cmd = static_cast<uint32_t>(eCmdId);
    std::memcpy(msg.cfgBuffer, pCfgBuffer, len);
    if (msgSndAndRcvSem(&msg, ifNeedResponse) == -1) {
        TR104_DEBUG("msg(module=%d cmd=%d) snd failed.\n", gCurrentModule, eCmdId);
        return -1;
    }
    TR104_DEBUG("send msg OK!\n");
    if (ifNeedResponse == 1) {
        return 0;
    }
    if (msg.cmd_type != TR104_CMD_TYPE_DATA || msg.cmd != static_cast<uint32_t>(eCmdId)) {
        return -1;
    }
    TR104_DEBUG("send msg OK and recv a response(cmd=%d)!\n", eCmdId);
    std::memcpy(pCfgBuffer, msg.rspBuffer, len);
    return 0;
}

extern "C" TR104_API int sendtr104Msg(unsigned int cmd, const void *data, unsigned int len) {
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        TR104_DEBUG("construct msg error\n");
        return -1;
    }
    msg.cmd = cmd;
    if (data != nullptr) {
        std::memcpy(msg.cfgBuffer, data, len < TR104_CFG_BUFFER_LEN ? len : TR104_CFG_BUFFER_LEN);
    }
    if (msgSndAndRcvSem(&msg, 1) == -1) {
        TR104_DEBUG("SET_PROFILE_CMD_ID msg snd failed.\n");
        return -1;
    }
    return 0;
}

namespace {
// The fields of the port-status block this layer prints; the rest belongs to the handlers.
constexpr size_t kPortStatusProfileIdOffset = 356;
constexpr size_t kPortStatusProfileNameOffset = 360;
constexpr size_t kPortStatusProfileNameMax = 22;
}  // namespace

extern "C" TR104_API int getLineStatus(int port, void *status) {
    if (status == nullptr) {
        return -2;
    }
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        TR104_DEBUG("construct msg error\n");
        return -1;
    }
    char block[TR104_PORT_STATUS_LEN] = {};
    putWord(block, static_cast<uint32_t>(port));
    if (CfgPreHandleGetParam(&msg, block, sizeof(block), TR104_GET_PORT_STATUS_ID) != 0) {
        TR104_DEBUG("get port[%d] status error\n", port);
        return -1;
    }
    std::memcpy(status, block, sizeof(block));
    TR104_DEBUG("get port[%d] status:profilename:%.*s profileid:%d\n", port,
                static_cast<int>(kPortStatusProfileNameMax), block + kPortStatusProfileNameOffset,
                static_cast<int>(getWord(block + kPortStatusProfileIdOffset)));
    return 0;
}
