// The library's start-up inside the client and the deferred buffer's slots seen from outside.
#include "ctl/startup.h"

#include <sys/ipc.h>
#include <sys/msg.h>

#include <cerrno>
#include <cstdio>
#include <thread>

#include "tr104/startup.h"

namespace tr104ctl {

bool startLibrary(Context &context, int kind) {
    const Library &lib = context.lib;
    auto init = lib.function<int (*)(int)>("Tr104VoiceCfgInit");
    if (init == nullptr) {
        std::fprintf(stderr, "tr104ctl: this libtr104.so has no Tr104VoiceCfgInit\n");
        return false;
    }
    const int rc = init(kind);
    std::fflush(stdout);
    if (rc != 0) {
        std::fprintf(stderr, "tr104ctl: Tr104VoiceCfgInit(%d) returned %d\n", kind, rc);
        return false;
    }
    context.started = Started::Full;
    return true;
}

bool startDeferredBuffer(Context &context) {
    const Library &lib = context.lib;
    if (context.started != Started::Nothing) {
        return true;
    }
    auto runtime = lib.function<int (*)()>("v2lin_init");
    auto construct = lib.function<int (*)()>("constructTr104CfgParamInfo");
    if (runtime == nullptr || construct == nullptr || runtime() != 0 || construct() < 0) {
        std::fprintf(stderr, "tr104ctl: cannot start the library's deferred parameter buffer\n");
        return false;
    }
    context.started = Started::DeferredBuffer;
    return true;
}

SlotState readSlot(const Library &lib, int slot) {
    SlotState state;
    Tr104CfgParamInfo *table = lib.variable<Tr104CfgParamInfo>("gTr104CfgParamInfo");
    if (table == nullptr || slot < 0 || slot >= TR104_CFG_PARAM_SLOTS) {
        return state;
    }
    Tr104CfgParamInfo &info = table[slot];
    state.present = true;
    state.timerStarted = __atomic_load_n(&info.timerStarted, __ATOMIC_ACQUIRE);
    state.cfgFlag = __atomic_load_n(&info.cfgFlag, __ATOMIC_ACQUIRE);
    state.hasWatchdog = __atomic_load_n(&info.wdId, __ATOMIC_ACQUIRE) != nullptr;
    return state;
}

int deferredTimeoutMs(const Library &lib) {
    const int32_t *timeout = lib.variable<int32_t>("gTr104CfgParamTimeout");
    return timeout != nullptr ? *timeout : 0;
}

std::optional<Millis> waitSlotIdle(const Library &lib, int slot, Clock::time_point since, Millis timeout) {
    const Clock::time_point deadline = Clock::now() + timeout;
    for (;;) {
        if (readSlot(lib, slot).idle()) {
            return std::chrono::duration_cast<Millis>(Clock::now() - since);
        }
        if (Clock::now() >= deadline) {
            return std::nullopt;
        }
        std::this_thread::sleep_for(Millis(5));
    }
}

bool inboundSettled(const Library &lib, Millis timeout) {
    const int32_t *queue = lib.variable<int32_t>("gTr104RcvInMsgQueueId");
    if (queue == nullptr || *queue == -1) {
        return false;
    }
    Tr104WireMsg keepAlive{};
    keepAlive.mtype = TR104_CMD_TYPE_KEEPALIVE;
    const Clock::time_point deadline = Clock::now() + timeout;
    while (msgsnd(*queue, &keepAlive, TR104_MSG_TEXT_LEN, IPC_NOWAIT) != 0) {
        if (errno != EAGAIN || Clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(Millis(1));
    }
    for (;;) {
        msqid_ds stat{};
        if (msgctl(*queue, IPC_STAT, &stat) != 0) {
            return false;
        }
        if (stat.msg_qnum == 0) {
            return true;
        }
        if (Clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(Millis(1));
    }
}

}  // namespace tr104ctl
