// The deferred buffer's timer, for handlers that test their group's bits themselves.
#pragma once

namespace tr104::core {

// Starts the slot's watchdog (gTr104CfgParamTimeout, then the slot's apply function) unless it
// is already running; a failed start is reported under debug and the slot counts as started.
void armCfgParamTimer(int slot);

}  // namespace tr104::core
