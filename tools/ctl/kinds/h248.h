// The client's table of the h248 handlers: value kind and text size of each (included by
// ctl/value_kinds.h, after HandlerKind).  Handlers the base table already names (line enable,
// timers, caller id mode, ...) reach their H.248 variant through it.
#pragma once

#include <cstdint>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace tr104ctl {

namespace h248kinds {

// "a,b,c" -> {"a", "b", "c"}
inline std::vector<std::string> splitValues(const std::string &text) {
    std::vector<std::string> parts;
    std::stringstream in(text);
    std::string part;
    while (std::getline(in, part, ',')) {
        parts.push_back(part);
    }
    return parts;
}

inline bool toWord(const std::string &text, uint32_t *out) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos || text.size() > 10) {
        return false;
    }
    const unsigned long long v = std::stoull(text);
    if (v > 0xFFFFFFFFull) {
        return false;
    }
    *out = static_cast<uint32_t>(v);
    return true;
}

// A text and `words` integers, given as "TEXT,N,N..." for a set; rendered the same way.
template <size_t words>
CustomResult textAndWords(void *handler, bool set, const std::string &value, const char *usage) {
    CustomResult r;
    char text[32] = "";
    uint32_t w[words] = {};
    if (set) {
        const std::vector<std::string> parts = splitValues(value);
        bool ok = parts.size() == words + 1 && parts[0].size() < sizeof(text);
        for (size_t i = 0; ok && i < words; ++i) {
            ok = toWord(parts[i + 1], &w[i]);
        }
        if (!ok) {
            r.message = std::string("give the value as ") + usage;
            return r;
        }
        parts[0].copy(text, parts[0].size());
    }
    r.called = true;
    if constexpr (words == 3) {
        using Fn = int (*)(int, char *, uint32_t *, uint32_t *, uint32_t *);
        r.rc = reinterpret_cast<Fn>(handler)(set ? 1 : 0, text, &w[0], &w[1], &w[2]);
    } else {
        using Fn = int (*)(int, char *, uint32_t *, uint32_t *, uint32_t *, uint32_t *);
        r.rc = reinterpret_cast<Fn>(handler)(set ? 1 : 0, text, &w[0], &w[1], &w[2], &w[3]);
    }
    if (!set && r.rc == 0) {
        r.shown = text;
        for (uint32_t v : w) {
            r.shown += "," + std::to_string(v);
        }
    }
    return r;
}

inline CustomResult nameRule(void *handler, bool set, const std::string &value, int *) {
    return textAndWords<3>(handler, set, value, "PREFIX,ADDED_LENGTH,START,UNIFORM (e.g. AALN/,1,0,1)");
}

inline CustomResult ephemeralRangeRule(void *handler, bool set, const std::string &value, int *) {
    return textAndWords<4>(handler, set, value, "FIRST_PART,START,END,STEP,FILL_FLAG (e.g. RTP/,0,99,1,0)");
}

// Set only: "ADDRESS,1" registers with the MGC at ADDRESS, "ADDRESS,0" unregisters.
inline CustomResult mgcRegister(void *handler, bool set, const std::string &value, int *) {
    CustomResult r;
    const std::vector<std::string> parts = splitValues(value);
    uint32_t flag = 0;
    if (!set || parts.size() != 2 || !toWord(parts[1], &flag)) {
        r.message = "MGC registration is set only: give the value as ADDRESS,1 (register) or ADDRESS,0";
        return r;
    }
    using Fn = int (*)(int, void *, char *, int *);
    std::string address = parts[0];
    int registerValue = static_cast<int>(flag);
    r.called = true;
    r.rc = reinterpret_cast<Fn>(handler)(1, &registerValue, address.data(), nullptr);
    return r;
}

}  // namespace h248kinds

constexpr size_t kMgcText = 69;
constexpr size_t kPrefixText = 16;

inline constexpr HandlerKind kH248KindRows[] = {
    // Gateway identity and controllers
    {"Tr104ProtocolVersion", ValueKind::Integer, 0},
    {"Tr104MessageFormat", ValueKind::Integer, 0},
    {"Tr104MessageEncodingType", ValueKind::Text, 8},
    {"Tr104PrimaryMGC", ValueKind::Text, kMgcText},
    {"Tr104PrimaryMGCPort", ValueKind::Integer, 0},
    {"Tr104SecondaryMGC", ValueKind::Text, kMgcText},
    {"Tr104SecondaryMGCPort", ValueKind::Integer, 0},
    {"Tr104CurrMgcNum", ValueKind::Integer, 0},
    {"Tr104CurrMgcAddr", ValueKind::Text, 140},
    {"Tr104MgcStatus", ValueKind::Integer, 0},
    {"Tr104MgcRegisterH248", ValueKind::Custom, 0, -1, &h248kinds::mgcRegister},
    {"Tr104MgcRegister", ValueKind::Custom, 0, -1, &h248kinds::mgcRegister},
    {"Tr104MgLocalPort", ValueKind::Integer, 0},
    {"Tr104MgId", ValueKind::Text, kMgcText},
    {"Tr104DeviceName", ValueKind::Text, 69},
    {"Tr104MgRegMode", ValueKind::Integer, 0},
    {"Tr104MgRegisterCycle", ValueKind::Integer, 0},
    {"Tr104MgRegister", ValueKind::Integer, 0},
    {"Tr104AuthenticationMeth", ValueKind::Integer, 0},
    // Termination naming
    {"Tr104TermId", ValueKind::Text, kPrefixText},
    {"Tr104PhysicalTermId", ValueKind::Text, 33},
    {"Tr104PhysicalTermIDPrefix", ValueKind::Text, kPrefixText},
    {"Tr104PhysicalTermIDAddLen", ValueKind::Integer, 0},
    {"Tr104PhysicalTermIDStartVlaue", ValueKind::Integer, 0},
    {"Tr104PhysicalTermIDUniform", ValueKind::Integer, 0},
    {"Tr104PhyNameRule", ValueKind::Custom, 0, -1, &h248kinds::nameRule},
    {"Tr104EphemeralTermIDPrefix", ValueKind::Text, kPrefixText},
    {"Tr104EphemeralTermIDAddLen", ValueKind::Integer, 0},
    {"Tr104EphemeralTermIDUniform", ValueKind::Integer, 0},
    {"Tr104EphemeralTermIDStartVlaue", ValueKind::Integer, 0},
    {"Tr104EphemeralTermIDNumber", ValueKind::Integer, 0},
    {"Tr104EphemeralTermIDName", ValueKind::Text, 32},
    {"Tr104EphemeralTermIDFirstName", ValueKind::Text, 35},
    {"Tr104EphNameRule", ValueKind::Custom, 0, -1, &h248kinds::ephemeralRangeRule},
    {"Tr104EphNameRule2", ValueKind::Custom, 0, -1, &h248kinds::nameRule},
    // Heartbeat and transaction timers (retransmission timers in seconds)
    {"Tr104HeartbeatMode", ValueKind::Integer, 0},
    {"Tr104HeartbeatCycle", ValueKind::Integer, 0},
    {"Tr104HeartbeatCount", ValueKind::Integer, 0},
    {"Tr104HeartbeatFormat", ValueKind::Integer, 0},
    {"Tr104ThreeHandShakeEnable", ValueKind::Integer, 0},
    {"Tr104LongTimer", ValueKind::Integer, 0},
    {"Tr104PendingTimer", ValueKind::Integer, 0},
    {"Tr104RetranTimerInitial", ValueKind::Integer, 0},
    {"Tr104MaxRetranCount", ValueKind::Integer, 0},
    {"Tr104RetransmissionTime", ValueKind::Integer, 0},
    {"Tr104RetransmissionCycle", ValueKind::Integer, 0},
    // Line and profile values of the H.248 variants
    {"Tr104PortServiceState", ValueKind::Text, 16},
    {"Tr104RtpMinLocalPort", ValueKind::Integer, 0},
    {"Tr104RtpMaxLocalPort", ValueKind::Integer, 0},
    {"Tr104SessionLocalRtpPort", ValueKind::Integer, 0},
    {"Tr104LineAnnounceType", ValueKind::Text, 16},
    {"Tr104FaxCtrlMode", ValueKind::Integer, 0},
    {"Tr104FaxT38EventDetectMode", ValueKind::Integer, 0},
    {"Tr104VbdEnable", ValueKind::Integer, 0},
    {"Tr104VbdTxInterval", ValueKind::Integer, 0},
    {"Tr104VbdRxInterval", ValueKind::Integer, 0},
    {"Tr104VbdCodec", ValueKind::Integer, 0},
    // Statistics: the line counters (nLocate[2]) and the gateway's signalling counters
    {"Tr104LineIncomingCallsReceived", ValueKind::Integer, 0},
    {"Tr104LineIncomingCallsAnswered", ValueKind::Integer, 0},
    {"Tr104LineIncomingCallsConnected", ValueKind::Integer, 0},
    {"Tr104LineIncomingCallsFailed", ValueKind::Integer, 0},
    {"Tr104LineOutgoingCallsAttempted", ValueKind::Integer, 0},
    {"Tr104LineOutgoingCallsAnswered", ValueKind::Integer, 0},
    {"Tr104LineOutgoingCallsConnected", ValueKind::Integer, 0},
    {"Tr104LineOutgoingCallsFailed", ValueKind::Integer, 0},
    {"Tr104LineTotalCallsDropped", ValueKind::Integer, 0},
    {"Tr104LineTotalCallTimes", ValueKind::Integer, 0},
    {"Tr104LineTotalCallsTime", ValueKind::Integer, 0},
    {"Tr104LineTotalCallsSetupTimer", ValueKind::Integer, 0},
    {"Tr104LineTotalCallTerminateFails", ValueKind::Integer, 0},
    {"Tr104LineTotalPotsReleaseCounts", ValueKind::Integer, 0},
    {"Tr104LineTotalPotsOffHookTimer", ValueKind::Integer, 0},
    {"Tr104RcvdReqs", ValueKind::Integer, 0},
    {"Tr104SendReqs", ValueKind::Integer, 0},
    {"Tr104RcvdResponses", ValueKind::Integer, 0},
    {"Tr104SendResponses", ValueKind::Integer, 0},
    {"Tr104NgnPacketLoss", ValueKind::Integer, 0},
    {"Tr104NgnPacketRetrans", ValueKind::Integer, 0},
    {"Tr104NgnPacketError", ValueKind::Integer, 0},
    // Adds the count to the value passed in: the client passes 0
    {"Tr104NgnPacketUnKnown", ValueKind::Integer, 0},
};

inline constexpr std::span<const HandlerKind> kH248Kinds{kH248KindRows};

}  // namespace tr104ctl
