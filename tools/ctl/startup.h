// The library's start-up inside the client, and what the client can observe of it: the slots
// of the deferred parameter buffer and the inbound queue its inbound thread reads.
#pragma once

#include <sys/ipc.h>
#include <sys/msg.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <thread>

#include "ctl/library.h"
#include "emulator/voice_module_emulator.h"
#include "tr104/startup.h"

namespace tr104ctl {

using Clock = std::chrono::steady_clock;
using Millis = std::chrono::milliseconds;

// How far the library has been started in this process.
enum class Started { Nothing, DeferredBuffer, Full };

inline Started &startedState() {
    static Started state = Started::Nothing;
    return state;
}

// Full start-up, as the management agent does it: Tr104VoiceCfgInit(kind) opens the channel,
// starts the runtime, builds the deferred buffer and, for kinds 1 to 4, the inbound thread.
inline bool startLibrary(const Library &lib, int kind) {
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
    startedState() = Started::Full;
    return true;
}

// What a staged set needs and no more: the runtime (whose timer task runs the watchdogs) and
// the buffer's slots with their watchdogs.  No inbound thread: one would read this module
// kind's inbound queue and take messages meant for the management agent running as that kind.
inline bool startDeferredBuffer(const Library &lib) {
    if (startedState() != Started::Nothing) {
        return true;
    }
    auto runtime = lib.function<int (*)()>("v2lin_init");
    auto construct = lib.function<int (*)()>("constructTr104CfgParamInfo");
    if (runtime == nullptr || construct == nullptr || runtime() != 0 || construct() < 0) {
        std::fprintf(stderr, "tr104ctl: cannot start the library's deferred parameter buffer\n");
        return false;
    }
    startedState() = Started::DeferredBuffer;
    return true;
}

// One slot of the deferred buffer, read while the library's timer task may write it.
struct SlotState {
    bool present = false;  // the library has the buffer
    int32_t timerStarted = 0;
    uint16_t cfgFlag = 0;
    bool hasWatchdog = false;
    bool idle() const { return timerStarted == 0 && cfgFlag == 0; }
};

inline SlotState readSlot(const Library &lib, int slot) {
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

// The delay from a group's first staged value to its forced application.
inline int deferredTimeoutMs(const Library &lib) {
    const int32_t *timeout = lib.variable<int32_t>("gTr104CfgParamTimeout");
    return timeout != nullptr ? *timeout : 0;
}

// Waits until a slot is idle again (applied, by completion or by its timer).  The time it took,
// or nothing when the deadline passed first.
inline std::optional<Millis> waitSlotIdle(const Library &lib, int slot, Clock::time_point since, Millis timeout) {
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

// Puts a keep-alive on this process's inbound queue and waits until the queue is empty.  The
// inbound thread handles one message after another, so once it has taken the keep-alive every
// message queued before it has been handled (notifications included).  false when the queue
// is not read within the timeout.
inline bool inboundSettled(const Library &lib, Millis timeout) {
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

// `tr104ctl init` on its own: what start-up set up, checked from the outside.  0 when
// everything is in place, else 1.
inline int reportStartup(const Library &lib, int kind) {
    const int32_t *module = lib.variable<int32_t>("gCurrentModule");
    const int32_t *inbound = lib.variable<int32_t>("gTr104RcvInMsgQueueId");
    auto taskId = lib.function<int32_t (*)(const char *)>("taskNameToId");
    int problems = 0;
    const long moduleNumber = module != nullptr ? *module : 0;
    const int replyKey = vmemu::VoiceModuleEmulator::replyKey(moduleNumber);
    const int inboundKey = vmemu::VoiceModuleEmulator::inboundKey(moduleNumber);

    std::printf("module kind %d started (Tr104VoiceCfgInit -> 0)\n", kind);
    std::printf("  %-16s %ld (gCurrentModule)\n", "module number", moduleNumber);
    if (replyKey != 0) {
        std::printf("  %-16s semaphore key %d, send queue key %d, reply queue key %d, inbound queue key %d\n",
                    "channel", TR104_SEM_KEY, TR104_SND_QUEUE_KEY, replyKey, inboundKey);
    } else {
        std::printf("  %-16s semaphore key %d, send queue key %d; this kind has no reply or inbound queue\n",
                    "channel", TR104_SEM_KEY, TR104_SND_QUEUE_KEY);
    }
    for (const char *task : {"tUsrRoot", "tExcTask"}) {
        const int32_t id = taskId != nullptr ? taskId(task) : -1;
        std::printf("  %-16s %s %s\n", "runtime task", task, id != -1 ? "running" : "MISSING");
        problems += id == -1;
    }
    int watchdogs = 0;
    for (int slot = 0; slot < TR104_CFG_PARAM_SLOTS; ++slot) {
        watchdogs += readSlot(lib, slot).hasWatchdog;
    }
    std::printf("  %-16s %d slots, %d with a watchdog; a group is applied %d ms after its first value\n",
                "deferred buffer", TR104_CFG_PARAM_SLOTS, watchdogs, deferredTimeoutMs(lib));
    problems += watchdogs != TR104_CFG_PARAM_SLOTS;
    if (inboundKey == 0) {
        std::printf("  %-16s none: module kind %d has no inbound queue\n", "inbound thread", kind);
    } else if (inbound != nullptr && *inbound != -1 && inboundSettled(lib, Millis(5000))) {
        std::printf("  %-16s reading inbound queue key %d (it took a keep-alive put there)\n", "inbound thread",
                    inboundKey);
    } else {
        std::printf("  %-16s nobody reads inbound queue key %d\n", "inbound thread", inboundKey);
        ++problems;
    }
    return problems == 0 ? 0 : 1;
}

}  // namespace tr104ctl
