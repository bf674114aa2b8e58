#include "voiced/line_activity.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace voiced {

namespace line = vmemu::line;

namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::seconds;

uint32_t secondsBetween(Clock::time_point from, Clock::time_point to) {
    return static_cast<uint32_t>(std::max<int64_t>(0, duration_cast<seconds>(to - from).count()));
}

template <size_t N>
void putText(char (&field)[N], const std::string &text) {
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(text.size(), N - 1));
}

uint32_t lost(int32_t reported) { return reported > 0 ? static_cast<uint32_t>(reported) : 0; }

uint32_t percent(uint32_t part, uint32_t whole) {
    return whole == 0 ? 0 : static_cast<uint32_t>(100ull * part / whole);
}

// Adds one call's RTP statistics to a sum: packets and losses add up, jitter and round trip are
// those of the latest call that had any.
void addCall(RtcpStats *sum, const RtcpStats &call) {
    sum->txSent += call.txSent;
    sum->rxSent += call.rxSent;
    sum->txLost += std::max(0, call.txLost);
    sum->rxLost += std::max(0, call.rxLost);
    if (call.txSent != 0 || call.rxSent != 0) {
        sum->rxJitter = call.rxJitter;
        sum->txJitter = call.txJitter;
        sum->rtt = call.rtt;
    }
}

}  // namespace

int sipStatusOf(const std::string &reason) {
    int code = 0;
    return std::sscanf(reason.c_str(), "%3d", &code) == 1 ? code : 0;
}

void LineActivity::accountAdded() {
    registration_ = line::kRegistering;
    reason_.clear();
}

void LineActivity::accountRemoved() {
    registration_ = line::kUnregistered;
    reason_.clear();
    calls_.clear();
}

std::optional<std::string> LineActivity::activeCall() const {
    if (calls_.empty()) {
        return std::nullopt;
    }
    return calls_.begin()->first;
}

void LineActivity::callSeen(const Event &event, Clock::time_point now) {
    if (event.id.empty() || calls_.count(event.id) != 0) {
        return;
    }
    Call call;
    call.outgoing = event.direction == "outgoing";
    call.start = now;
    if (call.outgoing) {
        ++counters_.unOutCallsAttempted;
        ++counters_.unTxInviteReqs;
    } else {
        ++counters_.unInCallsReceived;
        ++counters_.unRxInviteReqs;
    }
    calls_.emplace(event.id, call);
}

void LineActivity::callClosed(const Call &call, const std::string &reason, Clock::time_point now) {
    ++counters_.unPotsReleaseCount;
    counters_.unPotsOffHookTime += secondsBetween(call.start, now);
    if (!call.established) {
        if (call.outgoing) {
            ++counters_.unOutCallsFailed;
            counters_.unRxResponse += sipStatusOf(reason) >= 300 ? 1 : 0;  // the final answer that refused it
        } else {
            ++counters_.unInCallsFailed;
        }
        return;
    }
    counters_.unTotalCallTime += secondsBetween(call.answered, now);
    if (reason.find("by user") != std::string::npos) {
        ++counters_.unTxNoninviteReqs;  // our BYE and its answer
        ++counters_.unRxResponse;
    } else if (reason.find("by peer") != std::string::npos) {
        ++counters_.unRxNoninviteReqs;  // the far end's BYE and our answer
        ++counters_.unTxResponse;
    } else {
        ++counters_.unCallsDropped;  // ended by a failure, not by either party
    }
    addCall(&closedRtp_, call.rtcp);
}

void LineActivity::onEvent(const Event &event, Clock::time_point now) {
    const std::string &type = event.type;
    if (type == "REGISTERING") {
        registration_ = line::kRegistering;
        ++counters_.unTxNoninviteReqs;
        return;
    }
    if (type == "REGISTER_OK") {
        registration_ = line::kRegistered;
        reason_.clear();
        ++counters_.unRxResponse;
        return;
    }
    if (type == "REGISTER_FAIL") {
        registration_ = line::kRegisterFailed;
        reason_ = event.param;
        ++counters_.unRxResponse;
        return;
    }
    if (type == "UNREGISTERING") {
        registration_ = line::kUnregistering;
        return;
    }
    if (type.rfind("CALL_", 0) != 0) {
        return;
    }
    callSeen(event, now);
    auto it = calls_.find(event.id);
    if (it == calls_.end()) {
        return;
    }
    Call &call = it->second;
    if (type == "CALL_RINGING") {
        call.ringing = true;
        counters_.unRxResponse += call.outgoing ? 1 : 0;  // 180 Ringing
    } else if (type == "CALL_INCOMING") {
        call.ringing = true;
        ++counters_.unTxResponse;
    } else if (type == "CALL_ESTABLISHED" && !call.established) {
        call.established = true;
        call.answered = now;
        counters_.unCallSetupTime += static_cast<uint32_t>(duration_cast<milliseconds>(now - call.start).count());
        if (call.outgoing) {
            ++counters_.unOutCallsAnswered;
            ++counters_.unOutCallsConnected;
            ++counters_.unRxResponse;  // 200 OK
            ++counters_.unTxNoninviteReqs;  // ACK
        } else {
            ++counters_.unInCallsAnswered;
            ++counters_.unInCallsConnected;
            ++counters_.unTxResponse;
            ++counters_.unRxNoninviteReqs;
        }
    } else if (type == "CALL_RTCP" && event.rtcp) {
        call.rtcp = *event.rtcp;
        hadRtp_ = hadRtp_ || event.rtcp->txSent != 0 || event.rtcp->rxSent != 0;
    } else if (type == "CALL_CLOSED") {
        const Call closed = call;
        calls_.erase(it);
        callClosed(closed, event.param, now);
    }
}

void LineActivity::fillStatus(Tr104SipLineRecord *status) const {
    putText(status->aRegState, registration_);
    std::string callState = line::kCallIdle;
    uint32_t code = registered()                             ? line::kPortIdle
                    : registration_ == line::kRegisterFailed ? line::kPortRegisterFailed
                                                             : line::kPortIdleUnregistered;
    if (!calls_.empty()) {
        const Call &call = calls_.begin()->second;
        if (call.established) {
            callState = "Call Setup";
            code = line::kPortTalking;
        } else if (call.outgoing) {
            callState = call.ringing ? "Call Setuping" : "Calling";
            code = call.ringing ? line::kPortRingBack : line::kPortDialling;
        } else {
            callState = "Ringing";
            code = line::kPortRinging;
        }
    }
    status->unPortState = code;
    putText(status->aHookState,
            calls_.empty() || (!calls_.begin()->second.outgoing && !calls_.begin()->second.established) ? "on-hook"
                                                                                                        : "off-hook");
    putText(status->aCallState, callState);
}

Tr104SipLineStatsRecord LineActivity::counters(uint32_t line, Clock::time_point now) const {
    Tr104SipLineStatsRecord out = counters_;
    out.unLine = line;
    for (const auto &[id, call] : calls_) {
        if (call.established) {
            out.unTotalCallTime += secondsBetween(call.answered, now);
        }
        out.unPotsOffHookTime += secondsBetween(call.start, now);
    }
    return out;
}

Tr104LineRtpStatsBlock LineActivity::rtp(uint32_t line) const {
    RtcpStats sum = closedRtp_;
    for (const auto &[id, call] : calls_) {
        addCall(&sum, call.rtcp);
    }
    Tr104LineRtpStatsBlock out{};
    out.unLine = line;
    out.unSendPackets = sum.txSent;
    out.unSendBytes = sum.txSent * kRtpPacketBytes;
    out.unRcvdPackets = sum.rxSent;
    out.unRcvdBytes = sum.rxSent * kRtpPacketBytes;
    out.unLostPackets = lost(sum.rxLost);
    out.unLostPercent = percent(out.unLostPackets, out.unRcvdPackets + out.unLostPackets);
    out.unFarEndLostPercent = percent(lost(sum.txLost), sum.txSent);
    out.unJitter = sum.rxJitter;
    out.unFarEndJitter = sum.txJitter;
    out.unStreamSpeed = hadRtp_ ? kG711Kbps : 0;
    out.unNetworkDelay = sum.rtt;
    return out;
}

void LineActivity::resetStatistics(Clock::time_point now) {
    counters_ = {};
    closedRtp_ = {};
    hadRtp_ = false;
    // A call under way counts again from now.
    for (auto &[id, call] : calls_) {
        call.start = now;
        call.answered = now;
        call.rtcp = {};
    }
}

}  // namespace voiced
