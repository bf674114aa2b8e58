// `tr104ctl init` on its own: what start-up set up, checked from the outside.
#include "ctl/init.h"

#include <cstdint>
#include <cstdio>

#include "ctl/startup.h"
#include "emulator/voice_module_emulator.h"
#include "tr104/startup.h"

namespace tr104ctl {

int reportStartup(const Library &lib, int kind) {
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
        std::printf("  %-16s semaphore key %d, send queue key %d; this kind has no reply or inbound queue\n", "channel",
                    TR104_SEM_KEY, TR104_SND_QUEUE_KEY);
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
