// The library's start-up inside the client, and what the client can observe of it: the slots
// of the deferred parameter buffer and the inbound queue its inbound thread reads.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "ctl/area.h"
#include "ctl/library.h"

namespace tr104ctl {

using Clock = std::chrono::steady_clock;
using Millis = std::chrono::milliseconds;

// Full start-up, as the management agent does it: Tr104VoiceCfgInit(kind) opens the channel,
// starts the runtime, builds the deferred buffer and, for kinds 1 to 4, the inbound thread.
bool startLibrary(Context &context, int kind);

// What a staged set needs and no more: the runtime (whose timer task runs the watchdogs) and
// the buffer's slots with their watchdogs.  No inbound thread: one would read this module
// kind's inbound queue and take messages meant for the management agent running as that kind.
bool startDeferredBuffer(Context &context);

// One slot of the deferred buffer, read while the library's timer task may write it.
struct SlotState {
    bool present = false;  // the library has the buffer
    int32_t timerStarted = 0;
    uint16_t cfgFlag = 0;
    bool hasWatchdog = false;
    bool idle() const { return timerStarted == 0 && cfgFlag == 0; }
};

SlotState readSlot(const Library &lib, int slot);

// The delay from a group's first staged value to its forced application.
int deferredTimeoutMs(const Library &lib);

// Waits until a slot is idle again (applied, by completion or by its timer).  The time it took,
// or nothing when the deadline passed first.
std::optional<Millis> waitSlotIdle(const Library &lib, int slot, Clock::time_point since, Millis timeout);

// Puts a keep-alive on this process's inbound queue and waits until the queue is empty.  The
// inbound thread handles one message after another, so once it has taken the keep-alive every
// message queued before it has been handled (notifications included).  false when the queue
// is not read within the timeout.
bool inboundSettled(const Library &lib, Millis timeout);

}  // namespace tr104ctl
