// The channel's identifiers and their set-up, and the filling of a request record.
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/sem.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "tr104/framework.h"
#include "tr104/core/core.h"
#include "tr104/core/record_layout.h"

extern "C" {
TR104_API int32_t gTr104RcvMsgQueueSemId = -1;
TR104_API int32_t gTr104SndMsgQueueId = -1;
TR104_API int32_t gTr104RcvOutMsgQueueId = -1;
TR104_API int32_t gTr104RcvInMsgQueueId = -1;
TR104_API int32_t gCurrentModule = 7;
}

namespace {

// One row per module kind: the module number written into cmd_type, and the keys of the
// process's reply and inbound queues (0: the kind has none).
struct ModuleKind {
    int32_t module;
    key_t replyKey;
    key_t inboundKey;
};

constexpr ModuleKind kModuleKinds[] = {
    {7, 36, 37},  // kind 1
    {9, 160, 161},  // kind 2
    {10, 162, 163},  // kind 3
    {15, 164, 165},  // kind 4
    {13, 0, 0},  // kind 5
    {11, 0, 0},  // kind 6
    {14, 0, 0},  // kind 7
};

}  // namespace

extern "C" TR104_API int tr104VoiceMsgQueuesInit(int moduleKind) {
    if (!tr104::core::openChannelLock()) {
        return -1;
    }
    if (!tr104::core::openQueue(&gTr104SndMsgQueueId, TR104_SND_QUEUE_KEY,
                                "msgget tr104 send msg queue failed, errno = %d\n")) {
        return -1;
    }
    if (moduleKind < 1 || moduleKind > static_cast<int>(std::size(kModuleKinds))) {
        puts("Tr104VoiceMsgQueuesInit failed, module name error!");
        return 0;
    }
    const ModuleKind &kind = kModuleKinds[moduleKind - 1];
    gCurrentModule = kind.module;
    if (kind.replyKey == 0) {
        return 0;
    }
    if (!tr104::core::openQueue(&gTr104RcvOutMsgQueueId, kind.replyKey,
                                "msgget tr104 receive msg queue failed, errno = %d\n") ||
        !tr104::core::openQueue(&gTr104RcvInMsgQueueId, kind.inboundKey,
                                "msgget tr104 receive in msg queue failed, errno = %d\n")) {
        return -1;
    }
    return 0;
}

namespace tr104::core {

bool openChannelLock() {
    if (gTr104RcvMsgQueueSemId != -1) {
        return true;
    }
    gTr104RcvMsgQueueSemId = semget(TR104_SEM_KEY, 1, IPC_CREAT | 0770);
    if (gTr104RcvMsgQueueSemId == -1) {
        printf("semget return error: %d\n", errno);
        return false;
    }
    // Every process that opens the lock resets it to free: the last one to start wins.
    if (semctl(gTr104RcvMsgQueueSemId, 0, SETVAL, 1) == -1) {
        printf("semctl return error: %d\n", errno);
        return false;
    }
    return true;
}

// The queues are created with permission bits zero, as the voice module expects them.
bool openQueue(int32_t *id, key_t key, const char *failure) {
    if (*id == -1) {
        *id = msgget(key, IPC_CREAT);
        if (*id == -1) {
            printf(failure, errno);
            return false;
        }
    }
    return true;
}

void fillRequestRecord(Tr104Msg *msg) {
    std::memset(msg, 0, sizeof(*msg));
    msg->cmd_type = static_cast<uint32_t>(gCurrentModule);
    msg->semId = gTr104RcvMsgQueueSemId;
    msg->sndQueueId = gTr104SndMsgQueueId;
    msg->rcvQueueId = gTr104RcvOutMsgQueueId;
}

}  // namespace tr104::core

extern "C" TR104_API int tr104MsgConstruct(Tr104Msg *msg) {
    if (msg == nullptr) {
        return -1;
    }
    tr104::core::fillRequestRecord(msg);
    return 0;
}

extern "C" TR104_API void tr104MsgInit(Tr104Msg *msg) {
    if (msg == nullptr) {
        if (gTr104CfgDebug) {
            Tr104DebugPrint(__func__, __LINE__, "param error, pMsg is null\n");
        }
        return;
    }
    tr104::core::fillRequestRecord(msg);
}
