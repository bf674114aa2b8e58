// What a line does, as the user agent's events tell it: its registration, its calls, the line
// counters and the RTP statistics of its calls.  Fed with events, read as the records the
// library asks for.  Not thread-safe: the owner locks.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "emulator/line_states.h"
#include "tr104/sip.h"
#include "tr104/statistics.h"

namespace voiced {

using Clock = std::chrono::steady_clock;

// RTP statistics of one call as its RTCP reports give them: packets we sent and what the far end
// reports of them (tx), packets we received with our own loss and jitter (rx); jitter and round
// trip in microseconds.
struct RtcpStats {
    uint32_t txSent = 0;
    int32_t txLost = 0;
    uint32_t txJitter = 0;
    uint32_t rxSent = 0;
    int32_t rxLost = 0;
    uint32_t rxJitter = 0;
    uint32_t rtt = 0;
};

// One event of the user agent (REGISTER_OK, CALL_ESTABLISHED, ...) for one of its accounts.
struct Event {
    std::string type;
    std::string aor;  // the account's address of record
    std::string direction;  // "incoming" or "outgoing" for call events
    std::string peer;
    std::string id;  // call id; empty on events before the call has one
    std::string param;  // SIP reason ("401 Unauthorized", "404 Not Found"), peer URI ...
    std::optional<RtcpStats> rtcp;
};

// The status code of a SIP reason ("404 Not Found" -> 404), 0 for a text without one.
int sipStatusOf(const std::string &reason);

// G.711 at 20 ms: 160 bytes of audio and the 12-byte RTP header in each packet.
inline constexpr uint32_t kRtpPacketBytes = 172;
inline constexpr uint32_t kG711Kbps = 64;

class LineActivity {
public:
    // The line's account was added (registering starts), is being removed (unregistering) or
    // was removed (unregistered).
    void accountAdded();
    void accountRemoving() { registration_ = vmemu::line::kUnregistering; }
    void accountRemoved();
    void onEvent(const Event &event, Clock::time_point now);

    // The registration text of the port status ("reg-ok", "reg-ing", "reg-fail", ...) and, after
    // a failure, the registrar's reason.
    const std::string &registration() const { return registration_; }
    const std::string &failureReason() const { return reason_; }
    bool registered() const { return registration_ == vmemu::line::kRegistered; }
    // The call in progress, if any: its id and whether it was answered.
    std::optional<std::string> activeCall() const;

    // The status fields of the port status record: state code, registration, hook, call state.
    void fillStatus(Tr104SipLineRecord *status) const;
    // Counters with the time of a call still under way counted up to now.
    Tr104SipLineStatsRecord counters(uint32_t line, Clock::time_point now) const;
    Tr104LineRtpStatsBlock rtp(uint32_t line) const;
    // The statistics reset: counters and RTP statistics start again from zero.
    void resetStatistics(Clock::time_point now);

private:
    struct Call {
        bool outgoing = false;
        bool ringing = false;
        bool established = false;
        Clock::time_point start{};
        Clock::time_point answered{};
        RtcpStats rtcp;
    };
    void callSeen(const Event &event, Clock::time_point now);
    void callClosed(const Call &call, const std::string &reason, Clock::time_point now);

    std::string registration_ = vmemu::line::kUnregistered;
    std::string reason_;
    std::map<std::string, Call> calls_;
    Tr104SipLineStatsRecord counters_{};
    RtcpStats closedRtp_;  // calls already closed, added up
    bool hadRtp_ = false;
};

}  // namespace voiced
