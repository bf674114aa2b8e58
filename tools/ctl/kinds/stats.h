// The client's table of the statistics handlers (included by ctl/value_kinds.h, after
// HandlerKind and the device table).  Line values take --line (and --entry for an interval,
// 0..16); profile values and telephone events take (nFlag, pValue) only.
#pragma once

#include <span>

namespace tr104ctl {

inline constexpr HandlerKind kStatsKindRows[] = {
    // Line RTP statistics, intervals and SIP counters of a line
    {"Tr104LineSendRtpPackets", ValueKind::Integer, 0},
    {"Tr104LineSendRtpBytes", ValueKind::Integer, 0},
    {"Tr104LineRcvdRtpPackets", ValueKind::Integer, 0},
    {"Tr104LineRcvdRtpBytes", ValueKind::Integer, 0},
    {"Tr104LineLostRtpPackets", ValueKind::Integer, 0},
    {"Tr104LineLostRtpPacketsPercent", ValueKind::Integer, 0},
    {"Tr104LineLostFarEndPacketsPercent", ValueKind::Integer, 0},
    {"Tr104LineRtpJitter", ValueKind::Integer, 0},
    {"Tr104LineAverageReceiveInterarrivalJitter", ValueKind::Integer, 0},
    {"Tr104LineAverageFarEndInterarrivalJitter", ValueKind::Integer, 0},
    {"Tr104LineRtpFarEndJitter", ValueKind::Integer, 0},
    {"Tr104LineJitterBufferOverruns", ValueKind::Integer, 0},
    {"Tr104LineJitterBufferUnderruns", ValueKind::Integer, 0},
    {"Tr104LineUpStreamSpeed", ValueKind::Integer, 0},
    {"Tr104LineDownStreamSpeed", ValueKind::Integer, 0},
    {"Tr104LineMaxRtcpTime", ValueKind::Integer, 0},
    {"Tr104LineNetworkAvgDelay", ValueKind::Integer, 0},
    {"Tr104LineAverageRoundTripDelay", ValueKind::Integer, 0},
    {"Tr104LineErrorRtpPackets", ValueKind::Integer, 0},
    {"Tr104LineRtpStatisticsIntervalEndTime", ValueKind::Integer, 0},
    {"Tr104LineMaxRtcpTimeIntervalEnd", ValueKind::Integer, 0},
    {"Tr104LineLostRtpPacketsPercentIntervalEnd", ValueKind::Integer, 0},
    {"Tr104LineErrorRtpPacketsIntervalEnd", ValueKind::Integer, 0},
    {"Tr104LineMaximumRtpJitterIntervalEnd", ValueKind::Integer, 0},
    {"Tr104LineJitterBufferOverrunsIntervalEnd", ValueKind::Integer, 0},
    {"Tr104LineJitterBufferUnderrunsIntervalEnd", ValueKind::Integer, 0},
    {"Tr104LineNewTransactions", ValueKind::Integer, 0},
    {"Tr104LineRxInviteReqs", ValueKind::Integer, 0},
    {"Tr104LineRxInviteRetrans", ValueKind::Integer, 0},
    {"Tr104LineRxNoninviteReqs", ValueKind::Integer, 0},
    {"Tr104LineRxNoninviteRetrans", ValueKind::Integer, 0},
    {"Tr104LineRxResponse", ValueKind::Integer, 0},
    {"Tr104LineRxResponseRetrans", ValueKind::Integer, 0},
    {"Tr104LineTxInviteReqs", ValueKind::Integer, 0},
    {"Tr104LineTxInviteRetrans", ValueKind::Integer, 0},
    {"Tr104LineTxNoninviteReqs", ValueKind::Integer, 0},
    {"Tr104LineTxNoninviteRetrans", ValueKind::Integer, 0},
    {"Tr104LineTxResponse", ValueKind::Integer, 0},
    {"Tr104LineTxResponseRetrans", ValueKind::Integer, 0},
    // Profile sums and averages, telephone events, profile-wide signalling counters
    {"Tr104SendRtpPackets", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104RcvdRtpPackets", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104SendRtpBytes", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104RcvdRtpBytes", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104LostRtpPacketsPercent", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104NetworkAvgDelay", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104RtpAvgJitter", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104VoiceBandwidth", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104VoiceRecordItemNumForWEB", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104VoiceRecordForWEB", ValueKind::Custom, 0, -1, device::text},
    {"Tr104TelEvent2833NegoState", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104TelEvent2833PayloadType", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104TelEvent2198PayloadType", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104RcvdReqs", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104SendReqs", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104RcvdResponses", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104SendResponses", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104NgnPacketLoss", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104NgnPacketRetrans", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104NgnPacketError", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104NgnPacketUnKnown", ValueKind::Custom, 0, -1, device::integer},
};

inline constexpr std::span<const HandlerKind> kStatsKinds{kStatsKindRows};

}  // namespace tr104ctl
