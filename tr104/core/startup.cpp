// Start-up of the library and the inbound-message thread.
#include <pthread.h>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tr104/core/debug.h"
#include "tr104/core/record_layout.h"
#include "tr104/core/registry.h"
#include "tr104/catalogue/inbound_lists.h"
#include "tr104/framework.h"
#include "tr104/protocol.h"
#include "tr104/startup.h"

namespace {

constexpr uint32_t kSaveVoiceCfgCmd = 99;
constexpr useconds_t kInboundPause = 100;
constexpr key_t kOmReplyQueueKey = 160;

// Inbound command ids core answers itself (tr104/catalogue/contract.toml); the layers above
// register their own.
#define TR104_INBOUND_ENTRY(cmd, handler) {cmd, handler},
constexpr tr104::core::InboundCommand kCoreInbound[] = {TR104_INBOUND_CORE(TR104_INBOUND_ENTRY)};
#undef TR104_INBOUND_ENTRY

}  // namespace

namespace tr104::core {

constinit const Registration kCoreRegistration{"core", kCoreInbound, {}};

InboundCommand inboundCommand(uint32_t cmd, bool *found) {
    for (const Registration *registration : kRegistrations) {
        for (const InboundCommand &entry : registration->inbound) {
            if (entry.cmd == cmd) {
                *found = true;
                return entry;
            }
        }
    }
    *found = false;
    return {cmd, nullptr};
}

}  // namespace tr104::core

extern "C" TR104_API void processVoiceModuleMsg(const Tr104Msg *pVoiceModuleMsg) {
    if (pVoiceModuleMsg == nullptr) {
        return;
    }
    bool found = false;
    const tr104::core::InboundCommand entry = tr104::core::inboundCommand(pVoiceModuleMsg->cmd, &found);
    if (found) {
        if (entry.handler != nullptr) {
            entry.handler(pVoiceModuleMsg);
        }
        return;
    }
    printf("pVoiceModuleMsg->cmd=%d error.\n", static_cast<int>(pVoiceModuleMsg->cmd));
}

extern "C" TR104_API void *RecvInMsgHandleFunction(void *) {
    Tr104WireMsg wire;
    std::memset(&wire, 0, sizeof(wire));
    Tr104Msg msg;
    std::memset(&msg, 0, sizeof(msg));
    for (;;) {
        if (msgrcv(gTr104RcvInMsgQueueId, &wire, TR104_MSG_TEXT_LEN, 0, 0) == -1) {
            printf("receive in msg failure.");
            continue;
        }
        // The handlers read the message as a record: type, command and the payload area.
        msg.cmd_type = static_cast<uint32_t>(wire.mtype);
        std::memcpy(&msg.cmd, wire.text + TR104_TEXT_CMD_OFFSET, sizeof(msg.cmd));
        std::memcpy(msg.cfgBuffer, wire.text + TR104_TEXT_CFG_OFFSET, TR104_CFG_BUFFER_LEN);
        std::memcpy(msg.rspBuffer, wire.text + TR104_TEXT_RSP_OFFSET, TR104_RSP_BUFFER_LEN);
        if (msg.cmd_type == TR104_CMD_TYPE_DATA) {
            processVoiceModuleMsg(&msg);
        } else if (msg.cmd_type != TR104_CMD_TYPE_KEEPALIVE) {
            printf("RecvInMsg.cmd_type=%d error.\n", static_cast<int>(msg.cmd_type));
        }
        usleep(kInboundPause);
    }
    return nullptr;
}

extern "C" TR104_API int Tr104VoiceCfgInit(int moduleKind) {
    printf("\n========Tr104VoiceCfgInit(%d)========\n", moduleKind);
    if (tr104VoiceMsgQueuesInit(moduleKind) < 0) {
        puts("Tr104VoiceCfgInit:msgget tr104 send msg queue failed");
        return -1;
    }
    if (v2lin_init() != 0) {
        puts("Failed to v2lin_init");
        return -1;
    }
    if (constructTr104CfgParamInfo() < 0) {
        puts("Failed to construct gTr104CfgParamInfo");
        return -1;
    }
    if (moduleKind == 5 || moduleKind == 6 || moduleKind == 7) {
        return 0;
    }
    pthread_t thread;
    if (pthread_create(&thread, nullptr, RecvInMsgHandleFunction, nullptr) != 0) {
        puts("create tr104 module receive in msg thread failed!");
        return -1;
    }
    pthread_detach(thread);
    return 0;
}

extern "C" TR104_API int VoipOmInit(void) {
    TR104_DEBUG("enter \r\n");
    if (!tr104::core::openChannelLock() ||
        !tr104::core::openQueue(&gTr104SndMsgQueueId, TR104_SND_QUEUE_KEY,
                                "\r\n msgget VoipOmInit send msg queue failed, errno = %d") ||
        !tr104::core::openQueue(&gTr104RcvOutMsgQueueId, kOmReplyQueueKey,
                                "msgget tr104 receive msg queue failed, errno = %d\n")) {
        return -1;
    }
    return 0;
}

extern "C" TR104_API int Tr104VoiceCfgSave(void) {
    printf("\n=====Tr104VoiceCfgSave()=====");
    Tr104Msg msg;
    tr104MsgConstruct(&msg);
    msg.cmd = kSaveVoiceCfgCmd;
    if (msgSndAndRcvSem(&msg, 1) == -1) {
        TR104_DEBUG("SAVE_VOICE_CFG msg snd failed.\n");
        return -1;
    }
    return 0;
}
