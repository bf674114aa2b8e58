// The simulated call test of a port, made with real calls: a caller test dials the number and
// follows the call through ringing to connected; a called test waits for a call to the line.
// A connected call is held until every party of it on this voice module has reported RTP
// statistics (at least CallHold::min, at most CallHold::max), then hung up and the test ends in
// success.  Failures end with the fail codes the
// library reads: caller 2 no dial tone (the line is not registered), 4 released after dialling
// (refused: not found, busy, ...), 5 no answer (it rang), 6 not reachable (408/480 without
// ringing), 7 no answer from the network before the timeout; called 1 no incoming call, 3 no
// answer.  Not thread-safe: the owner locks.
#pragma once

#include <chrono>
#include <cstdint>
#include <set>
#include <string>

#include "tr104/linetest.h"
#include "voiced/line_activity.h"

namespace voiced {

// What the owner has to do with the user agent after a step.
enum class CallAction { None, Dial, Hangup };

// How long a connected test call is held: until its first RTP statistics, at least min, at
// most max.
struct CallHold {
    std::chrono::milliseconds min{2000};
    std::chrono::milliseconds max{15000};
};

class SimulatedCall {
public:
    explicit SimulatedCall(CallHold hold = CallHold{}) : hold_(hold) {}

    // A start request (its test type 1..4): 1 and 2 start a test, 3 and 4 stop the one under way.
    CallAction start(uint32_t type, const std::string &number, uint32_t timeoutSeconds, bool registered,
                     Clock::time_point now);
    // An event of any of the user agent's accounts: the test follows its own call (by its id),
    // and the other end's statistics when both ends are ours.
    CallAction onEvent(const Event &event, Clock::time_point now);
    // The passing of time: the timeout, the end of the hold, a hang-up that is not confirmed.
    CallAction poll(Clock::time_point now);
    // The query's status, conclusion and fail codes.
    void fill(Tr104SmultParam *block) const;

    bool underWay() const { return phase_ != Phase::None && phase_ != Phase::Ended; }
    bool started() const { return phase_ != Phase::None; }
    bool caller() const { return caller_; }
    const std::string &number() const { return number_; }
    // One readable line: type, phase, call, result.
    std::string describe() const;

private:
    enum class Phase { None, Waiting, Ringing, Connected, HangingUp, Ended };
    void end(uint32_t conclusion, uint32_t failCode);
    CallAction hangUpAndEnd(uint32_t failCode, Clock::time_point now);

    CallHold hold_;
    Phase phase_ = Phase::None;
    bool caller_ = false;
    std::string number_;
    std::string callId_;
    std::string aor_;  // our end of the call
    std::set<std::string> parties_;  // the ends of the call on this voice module
    std::set<std::string> reported_;  // those that have reported RTP statistics
    std::chrono::seconds timeout_{60};
    Clock::time_point started_{};
    Clock::time_point connected_{};
    Clock::time_point hungUp_{};
    bool statsSeen_ = false;
    uint32_t conclusion_ = 0;
    uint32_t failCode_ = 0;
    uint32_t pendingFail_ = 0;  // the fail code once a hang-up is confirmed (0 success)
};

}  // namespace voiced
