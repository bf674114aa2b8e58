// The states a voice module reports of its two lines, as the records carry them: the port
// status (registration text, state code, call state) and the simulated call test (each side's
// status codes, the conclusion, the fail codes).  The emulator walks them by the clock,
// tr104-voiced by what its user agent reports.
#pragma once

#include <cstdint>

namespace vmemu::line {

// Registration texts of the port status.
inline constexpr char kRegistering[] = "reg-ing";
inline constexpr char kRegistered[] = "reg-ok";
inline constexpr char kRegisterFailed[] = "reg-fail";
inline constexpr char kUnregistering[] = "unreg-ing";
inline constexpr char kUnregistered[] = "unreg-ok";

// The call state text of a port without a call.
inline constexpr char kCallIdle[] = "Idle";

// State codes of the port status.
enum PortState : uint32_t {
    kPortIdleUnregistered = 0,
    kPortIdle = 1,
    kPortDialling = 3,
    kPortRingBack = 4,
    kPortRinging = 5,
    kPortTalking = 6,
    kPortRegisterFailed = 12,
};

// The simulated call test: status and fail codes of the caller side (the port places the call) ...
namespace caller {
inline constexpr uint32_t kIdle = 1;
inline constexpr uint32_t kOffHook = 2;
inline constexpr uint32_t kDialTone = 3;
inline constexpr uint32_t kReceiving = 4;  // dialling
inline constexpr uint32_t kReceiveEnd = 5;  // dialled, no answer from the network yet
inline constexpr uint32_t kRingBack = 6;
inline constexpr uint32_t kConnected = 7;
inline constexpr uint32_t kTestEnd = 10;
// Fail codes.
inline constexpr uint32_t kNoDialTone = 2;  // the line is not registered
inline constexpr uint32_t kAfterDialRelease = 4;  // refused after dialling: not found, busy, ...
inline constexpr uint32_t kNoAnswer = 5;  // it rang
inline constexpr uint32_t kUnreachable = 6;  // 408 or 480 without ringing
inline constexpr uint32_t kNoNetworkAnswer = 7;  // nothing before the timeout
}  // namespace caller

// ... and of the called side (the port waits for a call).
namespace called {
inline constexpr uint32_t kIdle = 1;
inline constexpr uint32_t kOffHook = 2;
inline constexpr uint32_t kRingBack = 3;
inline constexpr uint32_t kConnected = 4;
inline constexpr uint32_t kTestEnd = 5;
// Fail codes.
inline constexpr uint32_t kNoIncomingCall = 1;
inline constexpr uint32_t kNoAnswer = 3;
}  // namespace called

// The test's conclusion (0 while none).
inline constexpr uint32_t kSucceeded = 1;
inline constexpr uint32_t kFailed = 2;

}  // namespace vmemu::line
