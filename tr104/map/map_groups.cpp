// Applying the deferred buffer's waiting groups at the end of one management message.
#include <cstdio>
#include <vector>

#include "tr104/map.h"
#include "tr104/startup.h"

namespace {

bool waiting(const Tr104CfgParamInfo &info) { return info.timerStarted != 0 || info.cfgFlag != 0; }

// Sends what a slot holds, as its timer would (the apply function completes a partial group
// from the voice module), and leaves the slot idle.  0, or -1 when nothing could be sent.
int applyNow(int slot) {
    Tr104CfgParamInfo &info = gTr104CfgParamInfo[slot];
    // Cancelled first: the timer must not send the same group a second time.
    (void)wdCancel(info.wdId);
    int rc = 0;
    if (info.cfgFlag != 0 && info.timeroutFuncHandle != nullptr) {
        Tr104Msg msg;
        rc = tr104MsgConstruct(&msg) != 0 || info.timeroutFuncHandle(&msg, info.paramBuffer) == -1 ? -1 : 0;
    }
    resetTr104CfgParamInfo(slot);
    return rc;
}

}  // namespace

extern "C" TR104_MAP_API int tr104MapApplyGroups(const char *const *paths, unsigned int count, char *error,
                                                 unsigned int errorLen) {
    // Slots in the order the paths first touched them.
    std::vector<int> slots;
    if (paths == nullptr) {
        for (int slot = 0; slot < TR104_CFG_PARAM_SLOTS; ++slot) {
            slots.push_back(slot);
        }
    }
    for (unsigned int i = 0; paths != nullptr && i < count; ++i) {
        const Tr104MapEntry *entry = nullptr;
        if (tr104MapLookup(paths[i], &entry, nullptr, nullptr, 0) != TR104_MAP_SERVED || entry->deferredSlot < 0 ||
            entry->deferredSlot >= TR104_CFG_PARAM_SLOTS) {
            continue;
        }
        bool seen = false;
        for (const int slot : slots) {
            seen = seen || slot == entry->deferredSlot;
        }
        if (!seen) {
            slots.push_back(entry->deferredSlot);
        }
    }
    int result = 0;
    for (const int slot : slots) {
        if (!waiting(gTr104CfgParamInfo[slot]) || applyNow(slot) == 0) {
            continue;
        }
        if (result == 0 && error != nullptr && errorLen != 0) {
            std::snprintf(error, errorLen, "the values staged in slot %d of the deferred buffer could not be sent",
                          slot);
        }
        result = -1;
    }
    return result;
}
