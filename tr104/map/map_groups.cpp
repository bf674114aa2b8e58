// Applying the deferred buffer's waiting groups at the end of one management message.
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <vector>

#include "tr104/map.h"
#include "tr104/startup.h"

namespace {

bool waiting(const Tr104CfgParamInfo &info) { return info.timerStarted != 0 || info.cfgFlag != 0; }

// Sends what a slot holds, as its timer would (the apply function completes a partial group
// from the voice module), and leaves the slot idle.  0, or -1 when nothing could be sent.
int sendSlot(int slot) {
    Tr104CfgParamInfo &info = gTr104CfgParamInfo[slot];
    int rc = 0;
    if (info.cfgFlag != 0 && info.timeroutFuncHandle != nullptr) {
        Tr104Msg msg;
        rc = tr104MsgConstruct(&msg) != 0 || info.timeroutFuncHandle(&msg, info.paramBuffer) == -1 ? -1 : 0;
    }
    resetTr104CfgParamInfo(slot);
    return rc;
}

// A slot is sent on the timer's thread, by a watchdog of this library's own fired at once.  That
// thread runs one watchdog routine at a time, so a slot timer that fired just before and is
// still sending the group finishes first, and this request then finds nothing waiting: a group is
// never sent twice nor read while the other sender clears it, and the slot is only ever looked at
// on that thread while the caller waits.  Cancelling the slot's timer from here would not be
// enough: a routine already started goes on.
struct SlotRequest {
    std::mutex lock;
    std::condition_variable changed;
    WDOG_ID watchdog = nullptr;
    bool armed = false;  // a caller waits for it
    bool done = false;
    int rc = 0;
};
SlotRequest gRequests[TR104_CFG_PARAM_SLOTS];

// Longest wait for the timer's thread: a group being sent takes two exchanges, each bounded by
// the reply wait and the channel lock.
constexpr std::chrono::seconds kSendBound{30};

void sendOnTimerThread(int32_t slot) {
    SlotRequest &r = gRequests[slot];
    {
        std::lock_guard<std::mutex> hold(r.lock);
        if (!r.armed) {
            return;  // its caller gave up waiting
        }
    }
    const int rc = waiting(gTr104CfgParamInfo[slot]) ? sendSlot(slot) : 0;
    std::lock_guard<std::mutex> hold(r.lock);
    r.done = true;
    r.rc = rc;
    r.changed.notify_all();
}

int applyNow(int slot) {
    SlotRequest &r = gRequests[slot];
    std::unique_lock<std::mutex> hold(r.lock);
    if (r.watchdog == nullptr && gTr104CfgParamInfo[slot].wdId != nullptr) {
        r.watchdog = wdCreate();
    }
    r.armed = true;
    r.done = false;
    if (r.watchdog == nullptr || wdStart(r.watchdog, 1, sendOnTimerThread, slot) != 0) {
        // The slots have no timers (the runtime is not started): nothing else sends them.
        r.armed = false;
        hold.unlock();
        return waiting(gTr104CfgParamInfo[slot]) ? sendSlot(slot) : 0;
    }
    const bool settled = r.changed.wait_for(hold, kSendBound, [&r] { return r.done; });
    r.armed = false;
    return settled && r.rc == 0 ? 0 : -1;
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
        if (applyNow(slot) == 0) {
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
