// The deferred parameter buffer: related parameter writes collected per group and applied in
// one message, at once when the group is complete or by the slot's watchdog.
#include <cstdio>
#include <cstring>

#include "tr104/codec.h"
#include "tr104/core/debug.h"
#include "tr104/core/deferred_internal.h"
#include "tr104/core/record_layout.h"
#include "tr104/core/registry.h"
#include "tr104/startup.h"

extern "C" {
TR104_API int32_t gTr104CfgParamTimeout = 5000;

// Zero-filled, so that its 40 KB of buffers take no room in the library file; the groups are
// written into their slots as the library is loaded, before any caller can look.
TR104_API Tr104CfgParamInfo gTr104CfgParamInfo[TR104_CFG_PARAM_SLOTS];
}

namespace {

// Each layer's groups, from its registration.  Slots no layer claims hold no group.
__attribute__((constructor)) void describeSlotGroups() {
    for (const tr104::core::Registration *registration : tr104::core::kRegistrations) {
        for (const tr104::core::DeferredGroup &group : registration->groups) {
            if (group.slot >= 0 && group.slot < TR104_CFG_PARAM_SLOTS) {
                gTr104CfgParamInfo[group.slot].timeroutFuncHandle = group.apply;
                gTr104CfgParamInfo[group.slot].paramCount = group.paramCount;
            }
        }
    }
}

}  // namespace

namespace {

bool validSlot(int slot) { return slot >= 0 && slot < TR104_CFG_PARAM_SLOTS; }

// The watchdog calls a routine with one 32-bit argument; the slot's routine returns a status
// that nobody reads on the timer task.
void onSlotTimer(int32_t slot) { (void)timerHandleFunc(slot); }

bool groupComplete(const Tr104CfgParamInfo &info) {
    const uint32_t all = info.paramCount >= 16 ? 0xFFFFu : ((1u << info.paramCount) - 1u);
    return (info.cfgFlag & all) == all;
}

}  // namespace

namespace tr104::core {

void armCfgParamTimer(int slot) {
    if (!validSlot(slot)) {
        return;
    }
    Tr104CfgParamInfo &info = gTr104CfgParamInfo[slot];
    if (info.timerStarted == 0) {
        if (wdStart(info.wdId, gTr104CfgParamTimeout, onSlotTimer, slot) != 0) {
            TR104_DEBUG_AS("tr104CfgParamHandleByTimer", "start timer[%d] failure. \n", slot);
        }
        info.timerStarted = 1;
    }
}

}  // namespace tr104::core

extern "C" TR104_API int constructTr104CfgParamInfo(void) {
    for (int slot = 0; slot < TR104_CFG_PARAM_SLOTS; ++slot) {
        Tr104CfgParamInfo &info = gTr104CfgParamInfo[slot];
        std::memset(info.paramBuffer, 0, sizeof(info.paramBuffer));
        info.wdId = wdCreate();
        if (info.wdId == nullptr) {
            printf("wdCreate timer[%d] is NULL \n", slot);
            return -1;
        }
    }
    CodecListUnitConfigInit();
    return 0;
}

extern "C" TR104_API void resetTr104CfgParamInfo(int nCfgParamTimerType) {
    if (!validSlot(nCfgParamTimerType)) {
        return;
    }
    Tr104CfgParamInfo &info = gTr104CfgParamInfo[nCfgParamTimerType];
    if (wdCancel(info.wdId) != 0) {
        TR104_DEBUG("wdCancel timer[%d] Id[%d]failure.\n", nCfgParamTimerType,
                    static_cast<int>(reinterpret_cast<intptr_t>(info.wdId)));
    }
    info.timerStarted = 0;
    std::memset(info.paramBuffer, 0, sizeof(info.paramBuffer));
    info.cfgFlag = 0;
}

extern "C" TR104_API int tr104CfgParamHandleByTimer(int nCfgParamTimerType, Tr104Msg *msg, void *buffer) {
    if (!validSlot(nCfgParamTimerType)) {
        return -1;
    }
    const int slot = nCfgParamTimerType;
    Tr104CfgParamInfo &info = gTr104CfgParamInfo[slot];
    tr104::core::armCfgParamTimer(slot);
    if (!groupComplete(info)) {
        return 0;
    }
    if (info.timeroutFuncHandle == nullptr) {
        TR104_DEBUG("[%d] timeroutFuncHandle = NULL!\n", slot);
        resetTr104CfgParamInfo(slot);
        return 0;
    }
    if (info.timeroutFuncHandle(msg, buffer) == -1) {
        TR104_DEBUG("set Param timeout failed.\n");
        resetTr104CfgParamInfo(slot);
        return -1;
    }
    resetTr104CfgParamInfo(slot);
    return 0;
}

extern "C" TR104_API int timerHandleFunc(int nCfgParamTimerType) {
    TR104_DEBUG("nCfgParamTimerType[%d]\n", nCfgParamTimerType);
    if (!validSlot(nCfgParamTimerType)) {
        return 0;
    }
    Tr104CfgParamInfo &info = gTr104CfgParamInfo[nCfgParamTimerType];
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        TR104_DEBUG("construct msg fail!\n");
        return -2;
    }
    if (info.timeroutFuncHandle != nullptr) {
        (void)info.timeroutFuncHandle(&msg, info.paramBuffer);
    } else {
        printf("[%d] timeroutFuncHandle = NULL!\n", nCfgParamTimerType);
    }
    resetTr104CfgParamInfo(nCfgParamTimerType);
    return 0;
}

extern "C" TR104_API uint16_t getTr104CfgParamInfoCfgFlag(int nCfgParamTimerType) {
    return validSlot(nCfgParamTimerType) ? gTr104CfgParamInfo[nCfgParamTimerType].cfgFlag : 0;
}

extern "C" TR104_API void appendTr104CfgParamInfoCfgFlag(int nCfgParamTimerType, uint16_t bits) {
    if (validSlot(nCfgParamTimerType)) {
        gTr104CfgParamInfo[nCfgParamTimerType].cfgFlag |= bits;
    }
}

extern "C" TR104_API void *getTr104CfgParamInfoParamBuffer(int nCfgParamTimerType) {
    return validSlot(nCfgParamTimerType) ? gTr104CfgParamInfo[nCfgParamTimerType].paramBuffer : nullptr;
}
