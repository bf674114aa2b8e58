#include "voiced/simulated_call.h"

#include <cstdio>

#include "emulator/line_states.h"

namespace voiced {

namespace {

namespace caller = vmemu::line::caller;
namespace called = vmemu::line::called;
using vmemu::line::kFailed;
using vmemu::line::kSucceeded;

// A hang-up the user agent does not confirm within this time ends the test anyway.
constexpr std::chrono::seconds kHangupGrace{5};

}  // namespace

void SimulatedCall::end(uint32_t conclusion, uint32_t failCode) {
    phase_ = Phase::Ended;
    conclusion_ = conclusion;
    failCode_ = failCode;
}

CallAction SimulatedCall::hangUpAndEnd(uint32_t failCode, Clock::time_point now) {
    if (callId_.empty()) {
        end(failCode == 0 ? kSucceeded : kFailed, failCode);
        return CallAction::None;
    }
    phase_ = Phase::HangingUp;
    pendingFail_ = failCode;
    hungUp_ = now;
    return CallAction::Hangup;
}

CallAction SimulatedCall::start(uint32_t type, const std::string &number, uint32_t timeoutSeconds, bool registered,
                                Clock::time_point now) {
    if (type == TR104_SMULT_CALLED_STOPPED || type == TR104_SMULT_CALLER_STOPPED) {
        if (!underWay()) {
            return CallAction::None;
        }
        const bool hadCall = !callId_.empty() && phase_ != Phase::HangingUp;
        end(kFailed, 0);  // stopped before its end: failed, with no reason
        return hadCall ? CallAction::Hangup : CallAction::None;
    }
    if (type != TR104_SMULT_CALLED && type != TR104_SMULT_CALLER) {
        return CallAction::None;
    }
    *this = SimulatedCall(hold_);
    caller_ = type == TR104_SMULT_CALLER;
    number_ = number;
    timeout_ = std::chrono::seconds(timeoutSeconds == 0 ? 60 : timeoutSeconds);
    started_ = now;
    phase_ = Phase::Waiting;
    if (!registered) {
        // No registration, no dial tone (caller); no call can reach the line (called).
        end(kFailed, caller_ ? caller::kNoDialTone : called::kNoIncomingCall);
        return CallAction::None;
    }
    return caller_ ? CallAction::Dial : CallAction::None;
}

CallAction SimulatedCall::onEvent(const Event &event, Clock::time_point now) {
    if (!underWay() || event.id.empty()) {
        return CallAction::None;
    }
    if (callId_.empty()) {
        // The test's call: our outgoing one (caller), the first incoming one (called).
        if (event.direction != (caller_ ? "outgoing" : "incoming")) {
            return CallAction::None;
        }
        callId_ = event.id;
        aor_ = event.aor;
        if (!caller_) {
            phase_ = Phase::Ringing;
        }
    }
    if (event.id != callId_) {
        return CallAction::None;
    }
    parties_.insert(event.aor);
    if (event.type == "CALL_RTCP" && event.rtcp && (event.rtcp->txSent != 0 || event.rtcp->rxSent != 0)) {
        reported_.insert(event.aor);
        statsSeen_ = reported_.size() == parties_.size();
        return poll(now);
    }
    if (event.aor != aor_) {
        return CallAction::None;  // the other end, when it is one of our lines: only its statistics matter
    }
    if (event.type == "CALL_RINGING" || event.type == "CALL_INCOMING") {
        if (phase_ == Phase::Waiting) {
            phase_ = Phase::Ringing;
        }
    } else if (event.type == "CALL_ESTABLISHED") {
        if (phase_ == Phase::Waiting || phase_ == Phase::Ringing) {
            phase_ = Phase::Connected;
            connected_ = now;
        }
    } else if (event.type == "CALL_CLOSED") {
        switch (phase_) {
        case Phase::HangingUp: end(pendingFail_ == 0 ? kSucceeded : kFailed, pendingFail_); break;
        case Phase::Connected:
            end(kSucceeded, 0);  // the far end hung up: the call was made
            break;
        default: {
            const int status = sipStatusOf(event.param);
            const bool rang = phase_ == Phase::Ringing;
            if (!caller_) {
                end(kFailed, called::kNoAnswer);
            } else if (rang) {
                end(kFailed, caller::kNoAnswer);
            } else {
                end(kFailed, status == 408 || status == 480 ? caller::kUnreachable : caller::kAfterDialRelease);
            }
            break;
        }
        }
    }
    return CallAction::None;
}

CallAction SimulatedCall::poll(Clock::time_point now) {
    switch (phase_) {
    case Phase::Waiting:
    case Phase::Ringing:
        if (now - started_ >= timeout_) {
            const bool rang = phase_ == Phase::Ringing;
            return hangUpAndEnd(caller_ ? (rang ? caller::kNoAnswer : caller::kNoNetworkAnswer)
                                        : (rang ? called::kNoAnswer : called::kNoIncomingCall),
                                now);
        }
        return CallAction::None;
    case Phase::Connected: {
        const auto held = now - connected_;
        if ((statsSeen_ && held >= hold_.min) || held >= hold_.max) {
            return hangUpAndEnd(0, now);
        }
        return CallAction::None;
    }
    case Phase::HangingUp:
        if (now - hungUp_ >= kHangupGrace) {
            end(pendingFail_ == 0 ? kSucceeded : kFailed, pendingFail_);
        }
        return CallAction::None;
    default: return CallAction::None;
    }
}

void SimulatedCall::fill(Tr104SmultParam *block) const {
    uint32_t status = caller_ ? caller::kReceiveEnd : called::kIdle;
    switch (phase_) {
    case Phase::None: status = caller::kIdle; break;
    case Phase::Waiting: break;
    case Phase::Ringing: status = caller_ ? caller::kRingBack : called::kRingBack; break;
    case Phase::Connected:
    case Phase::HangingUp: status = caller_ ? caller::kConnected : called::kConnected; break;
    case Phase::Ended: status = caller_ ? caller::kTestEnd : called::kTestEnd; break;
    }
    block->unCallerStatus = caller_ ? status : caller::kIdle;
    block->unCalledStatus = caller_ ? called::kIdle : status;
    block->unConclusion = conclusion_;
    block->unCallerFailCode = caller_ ? failCode_ : 0;
    block->unCalledFailCode = caller_ ? 0 : failCode_;
}

std::string SimulatedCall::describe() const {
    static const char *const kPhases[] = {"none", "waiting", "ringing", "connected", "hanging up", "ended"};
    char line[160];
    std::snprintf(line, sizeof(line), "%s test, number \"%s\": %s, conclusion %u, fail code %u",
                  caller_ ? "caller" : "called", number_.c_str(), kPhases[static_cast<int>(phase_)], conclusion_,
                  failCode_);
    return line;
}

}  // namespace voiced
