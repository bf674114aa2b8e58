// The statistics area of the client: `tr104ctl stats --line N` and the demo's statistics section.

#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "ctl/areas.h"
#include "ctl/invoke.h"
#include "ctl/steps.h"
#include "emulator/stats_emulator.h"

namespace tr104ctl {

namespace {

struct Row {
    const char *handler;
    const char *label;
    const char *unit;
};

constexpr Row kRtpRows[] = {
    {"Tr104LineSendRtpPackets", "RTP packets sent", ""},
    {"Tr104LineSendRtpBytes", "RTP bytes sent", "bytes"},
    {"Tr104LineRcvdRtpPackets", "RTP packets received", ""},
    {"Tr104LineRcvdRtpBytes", "RTP bytes received", "bytes"},
    {"Tr104LineLostRtpPackets", "RTP packets lost", ""},
    {"Tr104LineLostRtpPacketsPercent", "packet loss", "%"},
    {"Tr104LineLostFarEndPacketsPercent", "far-end packet loss", "%"},
    {"Tr104LineRtpJitter", "jitter", "ms"},
    {"Tr104LineRtpFarEndJitter", "far-end jitter", "ms"},
    {"Tr104LineJitterBufferOverruns", "jitter buffer overruns", ""},
    {"Tr104LineJitterBufferUnderruns", "jitter buffer underruns", ""},
    {"Tr104LineUpStreamSpeed", "stream speed (up = down)", "kbit/s"},
    {"Tr104LineMaxRtcpTime", "longest RTCP interval", "ms"},
    {"Tr104LineNetworkAvgDelay", "network delay (= round trip)", "ms"},
    {"Tr104LineErrorRtpPackets", "RTP packets in error", ""},
};

constexpr Row kCallRows[] = {
    {"Tr104LineIncomingCallsReceived", "incoming calls received", ""},
    {"Tr104LineIncomingCallsAnswered", "incoming calls answered", ""},
    {"Tr104LineIncomingCallsConnected", "incoming calls connected", ""},
    {"Tr104LineIncomingCallsFailed", "incoming calls failed", ""},
    {"Tr104LineOutgoingCallsAttempted", "outgoing calls attempted", ""},
    {"Tr104LineOutgoingCallsAnswered", "outgoing calls answered", ""},
    {"Tr104LineOutgoingCallsConnected", "outgoing calls connected", ""},
    {"Tr104LineOutgoingCallsFailed", "outgoing calls failed", ""},
    {"Tr104LineTotalCallsDropped", "calls dropped", ""},
    {"Tr104LineTotalCallTimes", "calls connected", ""},
    {"Tr104LineTotalCallsTime", "call time", "s"},
    {"Tr104LineNewTransactions", "SIP transactions", ""},
};

constexpr Row kProfileRows[] = {
    {"Tr104SendRtpPackets", "RTP packets sent", ""},
    {"Tr104RcvdRtpPackets", "RTP packets received", ""},
    {"Tr104LostRtpPacketsPercent", "packet loss (average)", "%"},
    {"Tr104NetworkAvgDelay", "network delay (average)", "ms"},
    {"Tr104RtpAvgJitter", "jitter (average)", "ms"},
    {"Tr104RcvdReqs", "signalling requests received", ""},
    {"Tr104SendReqs", "signalling requests sent", ""},
    {"Tr104NgnPacketRetrans", "retransmissions", ""},
};

// One table: label, value and unit, or why there is no value.  Returns the rows that failed.
int printRows(const Library &lib, const char *title, std::span<const Row> rows, int line) {
    std::printf("\n%s\n", title);
    int failed = 0;
    for (const Row &row : rows) {
        failed += printValue(lib, row.handler, line, row.label, row.unit, 32);
    }
    return failed;
}

int printLine(const Library &lib, int line) {
    int failed = printRows(lib, ("line " + std::to_string(line) + ": RTP").c_str(), kRtpRows, line);
    failed += printRows(lib, ("line " + std::to_string(line) + ": calls").c_str(), kCallRows, line);
    failed += printRows(lib, "profile (lines 1 and 2)", kProfileRows, 0);
    return failed;
}

}  // namespace

std::vector<AreaCommand> statsCommands() {
    auto line = std::make_shared<int>(1);
    return {{"stats", "the line's RTP and call statistics, the profile sums",
             [line](CLI::App &command) {
                 command.add_option("--line", *line, "the line (1 or 2; 1)")->check(numberIn(1, 2));
             },
             [line](Context &context) { return printLine(context.lib, *line) == 0 ? 0 : 1; }}};
}

// The demo's statistics section: a call of 30 s on line 1, seen in the counters.
int runStatsDemo(Context &context) {
    const Library &lib = context.lib;
    vmemu::VoiceModuleEmulator &emulator = *context.emulator;
    static const DemoStep kBefore[] = {
        {"Tr104LineOutgoingCallsConnected", false, nullptr, 1, ""},
        {"Tr104LineSendRtpPackets", false, nullptr, 1, ""},
        {"Tr104TelEvent2833PayloadType", false, nullptr, 0, "telephone events: RFC 2833 payload type"},
        {"Tr104TelEvent2833PayloadType", true, "129", 0, "0..128"},
    };
    int problems = runSection(lib, "statistics: line 1 before a call", kBefore);
    std::printf("  (the voice module completes an outgoing call of 30 s on line 1)\n");
    vmemu::stats::addCall(emulator, 1, 30, false);
    static const DemoStep kAfter[] = {
        {"Tr104LineOutgoingCallsConnected", false, nullptr, 1, ""},
        {"Tr104LineTotalCallsTime", false, nullptr, 1, "seconds"},
        {"Tr104LineSendRtpPackets", false, nullptr, 1, "50 packets a second"},
        {"Tr104LineLostRtpPacketsPercentIntervalEnd", false, nullptr, 1, "current interval"},
        {"Tr104SendRtpPackets", false, nullptr, 0, "the profile: lines 1 and 2"},
        {"Tr104NgnPacketRetrans", false, nullptr, 0, ""},
    };
    problems += runSection(lib, "statistics: line 1 after the call", kAfter);
    return problems;
}

}  // namespace tr104ctl
