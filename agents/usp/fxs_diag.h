// The diagnostic tests of a phone port as a USP controller asks for them (POTS.FXS.{i}.
// DiagTests()): each test selector runs the port's outer-line test in the voice module and is
// judged on the measurements and the conclusion that concern it.
#pragma once

#include <atomic>

namespace tr104usp {

// The selectors a controller may give, in the order it lists them.
inline constexpr const char *kDiagSelectors[] = {"Hazard Potential", "Foreign Voltage", "Resistive Faults", "Off-hook",
                                                 "REN"};

bool diagSelectorKnown(const char *selector);

// What the operation completes with: Status, and TestResult when Status is "Complete" (else
// nullptr: the result is indeterminate).  detail says what decided it, for the agent's log.
struct DiagOutcome {
    const char *status;
    const char *result;
    char detail[160];
};

// Runs the outer-line test of port (1 or 2) and judges it for selector; blocks the calling
// thread until the voice module reports the test finished (polled every pollMs), stop is set
// ("Canceled") or timeoutMs have passed ("Error_Internal").
DiagOutcome runFxsDiag(int port, const char *selector, const std::atomic<bool> &stop, int pollMs, int timeoutMs);

}  // namespace tr104usp
