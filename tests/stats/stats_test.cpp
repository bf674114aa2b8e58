// RTP statistics of a line and of a profile, telephone events and the SIP call counters, read
// from the emulated voice module.
#include <string>
#include <vector>

#include "emulator/stats_emulator.h"
#include "support/channel_fixture.h"

namespace {

using Handler = int (*)(int, void *, int *);
using Profile = int (*)(int, void *);

class Stats : public tr104test::ChannelTest {
protected:
    void SetUp() override {
        ChannelTest::SetUp();
        gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
    }
    int *at(int line, int interval = 0) {
        locate_ = {0, 1, line, interval};
        return locate_.data();
    }
    // Line 1 and 2 blocks whose words are distinct: word i of line L holds L*1000 + i.
    void fillRtp() {
        for (uint32_t line : {1u, 2u}) {
            uint32_t words[39];
            for (uint32_t i = 0; i < 39; ++i) {
                words[i] = line * 1000 + i;
            }
            words[0] = line;
            Tr104LineRtpStatsBlock block;
            std::memcpy(&block, words, sizeof(block));
            vmemu::stats::setRtp(emulator, block);
        }
    }
    void expectNothingSent() {
        EXPECT_EQ(emulator.requestCount(), 0u);
        EXPECT_EQ(tr104test::semValue(), 1);
    }
    std::array<int, 4> locate_{};
};

TEST_F(Stats, LineValuesReportTheirWordAndShareTheSharedOnes) {
    fillRtp();
    const struct {
        Handler fn;
        uint32_t word;
    } rows[] = {
        {Tr104LineSendRtpPackets, 9},
        {Tr104LineSendRtpBytes, 10},
        {Tr104LineRcvdRtpPackets, 11},
        {Tr104LineRcvdRtpBytes, 12},
        {Tr104LineLostRtpPackets, 13},
        {Tr104LineLostRtpPacketsPercent, 14},
        {Tr104LineLostFarEndPacketsPercent, 16},
        {Tr104LineRtpJitter, 17},
        {Tr104LineAverageReceiveInterarrivalJitter, 17},
        {Tr104LineAverageFarEndInterarrivalJitter, 17},
        {Tr104LineRtpFarEndJitter, 18},
        {Tr104LineJitterBufferOverruns, 19},
        {Tr104LineJitterBufferUnderruns, 20},
        {Tr104LineUpStreamSpeed, 21},
        {Tr104LineDownStreamSpeed, 21},
        {Tr104LineMaxRtcpTime, 22},
        {Tr104LineNetworkAvgDelay, 23},
        {Tr104LineAverageRoundTripDelay, 23},
        {Tr104LineErrorRtpPackets, 24},
    };
    for (const auto &row : rows) {
        for (int line : {1, 2}) {
            SCOPED_TRACE(testing::Message() << "word " << row.word << " line " << line);
            emulator.clearLog();
            int value = -1;
            ASSERT_EQ(row.fn(0, &value, at(line)), 0);
            EXPECT_EQ(value, line * 1000 + static_cast<int>(row.word));
            const auto sent = emulator.requestsFor(TR104_RTP_STATS_CMD);
            ASSERT_EQ(sent.size(), 1u);
            EXPECT_EQ(sent[0].word<uint32_t>(0), static_cast<uint32_t>(line));
            for (size_t w = 1; w < 39; ++w) {
                EXPECT_EQ(sent[0].word<uint32_t>(w * 4), 0u);
            }
        }
    }
    // Bad arguments: nothing reaches the voice module.
    emulator.clearLog();
    int value = 0;
    for (const auto &row : rows) {
        EXPECT_EQ(row.fn(0, &value, at(3)), -2);
        EXPECT_EQ(row.fn(0, &value, at(0)), -2);
        EXPECT_EQ(row.fn(1, &value, at(1)), -2);
        EXPECT_EQ(row.fn(0, nullptr, at(1)), -2);
    }
    expectNothingSent();
}

TEST_F(Stats, IntervalsTakeZeroToSixteenAndComputeTheirLossPercentage) {
    Tr104LineRtpIntervalBlock block{};
    block.unLine = 2;
    block.unInterval = 16;
    block.unEndTime = 1700000000;
    block.unMaxRtcpTime = 4000;
    block.unRcvdPackets = 300;
    block.unLostPackets = 7;
    block.unErrorPackets = 9;
    block.unMaxJitter = 33;
    block.unBufferOverruns = 4;
    block.unBufferUnderruns = 5;
    vmemu::stats::setInterval(emulator, block);
    const struct {
        Handler fn;
        int expected;
    } rows[] = {
        {Tr104LineRtpStatisticsIntervalEndTime, 1700000000}, {Tr104LineMaxRtcpTimeIntervalEnd, 4000},
        {Tr104LineLostRtpPacketsPercentIntervalEnd, 2},      {Tr104LineErrorRtpPacketsIntervalEnd, 0},
        {Tr104LineMaximumRtpJitterIntervalEnd, 33},          {Tr104LineJitterBufferOverrunsIntervalEnd, 4},
        {Tr104LineJitterBufferUnderrunsIntervalEnd, 5},
    };
    for (const auto &row : rows) {
        int value = -1;
        ASSERT_EQ(row.fn(0, &value, at(2, 16)), 0);
        EXPECT_EQ(value, row.expected);
    }
    const auto sent = emulator.requestsFor(TR104_RTP_INTERVAL_CMD);
    ASSERT_EQ(sent.size(), std::size(rows));
    EXPECT_EQ(sent[0].word<uint32_t>(8), 2u);
    EXPECT_EQ(sent[0].word<uint32_t>(12), 16u);
    // Nothing received: 0 %, not a division by zero.
    int value = -1;
    ASSERT_EQ(Tr104LineLostRtpPacketsPercentIntervalEnd(0, &value, at(1, 3)), 0);
    EXPECT_EQ(value, 0);
    // Interval 17 (or a negative one) is refused before any exchange, except by the end time.
    emulator.clearLog();
    for (const auto &row : rows) {
        if (row.fn != Tr104LineRtpStatisticsIntervalEndTime) {
            EXPECT_EQ(row.fn(0, &value, at(1, 17)), -2);
            EXPECT_EQ(row.fn(0, &value, at(1, -1)), -2);
        }
    }
    expectNothingSent();
    EXPECT_EQ(Tr104LineRtpStatisticsIntervalEndTime(0, &value, at(1, 17)), 0);
}

TEST_F(Stats, ProfileValuesAddUpOrHalveBothLines) {
    fillRtp();
    const struct {
        Profile fn;
        uint32_t word;
        bool halved;
    } rows[] = {
        {Tr104SendRtpPackets, 9, false}, {Tr104RcvdRtpPackets, 11, false},       {Tr104SendRtpBytes, 10, false},
        {Tr104RcvdRtpBytes, 12, false},  {Tr104LostRtpPacketsPercent, 14, true}, {Tr104NetworkAvgDelay, 23, true},
        {Tr104RtpAvgJitter, 17, true},
    };
    for (const auto &row : rows) {
        int value = -1;
        ASSERT_EQ(row.fn(0, &value), 0);
        const uint32_t sum = 1000 + row.word + 2000 + row.word;
        EXPECT_EQ(static_cast<uint32_t>(value), row.halved ? sum / 2 : sum) << row.word;
        EXPECT_EQ(row.fn(1, &value), -2);
        EXPECT_EQ(row.fn(0, nullptr), -2);
    }
    // The average of 3 and 4 is 3; a line that cannot be read fails the profile value.
    Tr104LineRtpStatsBlock one{}, two{};
    one.unLine = 1;
    one.unJitter = 3;
    two.unLine = 2;
    two.unJitter = 4;
    vmemu::stats::setRtp(emulator, one);
    vmemu::stats::setRtp(emulator, two);
    int value = -1;
    ASSERT_EQ(Tr104RtpAvgJitter(0, &value), 0);
    EXPECT_EQ(value, 3);
    emulator.setFault(TR104_RTP_STATS_CMD, {vmemu::Fault::FailureMarker, 0, -1});
    EXPECT_EQ(Tr104RtpAvgJitter(0, &value), -1);
    EXPECT_EQ(Tr104LineRtpJitter(0, &value, at(1)), -1);
    EXPECT_EQ(tr104test::semValue(), 1);
    // Bandwidth is always 0; the web records do nothing.
    value = 7;
    EXPECT_EQ(Tr104VoiceBandwidth(0, &value), 0);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(Tr104VoiceBandwidth(1, &value), -2);
    EXPECT_EQ(Tr104VoiceRecordItemNumForWEB(0, &value), 0);
}

TEST_F(Stats, TelephoneEventsSendOnlyTheirOwnWord) {
    const struct {
        Profile fn;
        size_t offset;
        uint32_t mask, cmd, highest, initial;
    } rows[] = {
        {Tr104TelEvent2833PayloadType, 4, 1, 47, 128, 101},
        {Tr104TelEvent2198PayloadType, 8, 2, 47, 128, 100},
        {Tr104TelEvent2833NegoState, 12, 4, 49, 1, 1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.offset);
        int value = -1;
        ASSERT_EQ(row.fn(0, &value), 0);
        EXPECT_EQ(static_cast<uint32_t>(value), row.initial);
        emulator.clearLog();
        value = static_cast<int>(row.highest) + 1;
        EXPECT_EQ(row.fn(1, &value), -2);
        EXPECT_EQ(row.fn(2, &value), -2);
        EXPECT_EQ(row.fn(1, nullptr), -2);
        expectNothingSent();
        value = static_cast<int>(row.highest);
        ASSERT_EQ(row.fn(1, &value), 0);
        ASSERT_TRUE(emulator.waitForRequests(1, std::chrono::seconds(5)));
        const auto sent = emulator.requestsFor(row.cmd);
        ASSERT_EQ(sent.size(), 1u);
        for (size_t offset = 0; offset < 20; offset += 4) {
            const uint32_t expected = offset == 0 ? row.mask : offset == row.offset ? row.highest : 0;
            EXPECT_EQ(sent[0].word<uint32_t>(offset), expected) << offset;
        }
        value = -1;
        ASSERT_EQ(row.fn(0, &value), 0);
        EXPECT_EQ(static_cast<uint32_t>(value), row.highest);
    }
}

TEST_F(Stats, SipCountersDerivedValuesAndProfileSums) {
    Tr104SipLineStatsRecord record{};
    record.unLine = 1;
    uint32_t *words = &record.unInCallsReceived;
    for (uint32_t i = 0; i < 26; ++i) {
        words[i] = 100 + i;  // offset 4 + 4i
    }
    vmemu::stats::setSip(emulator, record);
    const Handler counters[] = {
        Tr104LineIncomingCallsReceivedSip,
        Tr104LineIncomingCallsAnsweredSip,
        Tr104LineIncomingCallsConnectedSip,
        Tr104LineIncomingCallsFailedSip,
        Tr104LineOutgoingCallsAttemptedSip,
        Tr104LineOutgoingCallsAnsweredSip,
        Tr104LineOutgoingCallsConnectedSip,
        Tr104LineOutgoingCallsFailedSip,
        Tr104LineTotalCallsDroppedSip,
        Tr104LineTotalCallsTimeSip,
        Tr104LineTotalCallsSetupTimerSip,
        Tr104LineTotalCallTerminateFailsSip,
        Tr104LineTotalPotsReleaseCountsSip,
        Tr104LineTotalPotsOffHookTimerSip,
        Tr104LineRxInviteReqsSip,
        Tr104LineRxInviteRetransSip,
        Tr104LineRxNoninviteReqsSip,
        Tr104LineRxNoninviteRetransSip,
        Tr104LineRxResponseSip,
        Tr104LineRxResponseRetransSip,
        Tr104LineTxInviteReqsSip,
        Tr104LineTxInviteRetransSip,
        Tr104LineTxNoninviteReqsSip,
        Tr104LineTxNoninviteRetransSip,
        Tr104LineTxResponseSip,
        Tr104LineTxResponseRetransSip,
    };
    for (size_t i = 0; i < std::size(counters); ++i) {
        int value = -1;
        ASSERT_EQ(counters[i](0, &value, at(1)), 0) << i;
        EXPECT_EQ(value, static_cast<int>(100 + i));
        // Counters cannot be written.
        EXPECT_EQ(counters[i](1, &value, at(1)), -2);
    }
    const auto sent = emulator.requestsFor(TR104_SIP_LINE_STATS_CMD);
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent[0].word<uint32_t>(0), 1u);
    int value = -1;
    ASSERT_EQ(Tr104LineNewTransactions(0, &value, at(1)), 0);
    EXPECT_EQ(value, 114 + 116 + 118 + 120 + 122 + 124);
    ASSERT_EQ(Tr104LineTotalCallTimes(0, &value, at(1)), 0);
    EXPECT_EQ(value, 102 + 106);
    ASSERT_EQ(Tr104LineIncomingCallsReceived(0, &value, at(1)), 0);
    EXPECT_EQ(value, 100);

    // Line 2 cannot be read: the sums are line 1's, and still succeed.
    emulator.setHandler(TR104_SIP_LINE_STATS_CMD, [&](const vmemu::Request &r, vmemu::Payload &reply) {
        if (r.word<uint32_t>(0) == 2) {
            std::memset(reply.data(), 0xFF, 13);
            reply[13] = 0;
        } else {
            std::memcpy(reply.data(), &record, sizeof(record));
        }
        return true;
    });
    const struct {
        Profile fn;
        int expected;
    } sums[] = {
        {Tr104RcvdReqs, 114 + 116},
        {Tr104SendReqs, 120 + 122},
        {Tr104RcvdResponses, 118},
        {Tr104SendResponses, 124},
        {Tr104NgnPacketRetrans, 2 * 121 + 115 + 117},
        {Tr104NgnPacketLoss, 0},
        {Tr104NgnPacketError, 0},
        {Tr104NgnPacketUnKnown, 0},
    };
    for (const auto &s : sums) {
        value = -1;
        EXPECT_EQ(s.fn(0, &value), 0);
        EXPECT_EQ(value, s.expected);
        EXPECT_EQ(s.fn(1, &value), -2);
    }
    // 3 INVITE and 5 non-INVITE retransmissions sent, nothing received: 6.
    Tr104SipLineStatsRecord retrans{};
    retrans.unLine = 1;
    retrans.unTxInviteRetrans = 3;
    retrans.unTxNoninviteRetrans = 5;
    record = retrans;
    ASSERT_EQ(Tr104NgnPacketRetrans(0, &value), 0);
    EXPECT_EQ(value, 6);
    // Under another protocol the wrappers do not reach the SIP counters.
    gTr104CurrProtocolType = 0;
    EXPECT_EQ(Tr104RcvdReqs(0, &value), -1);
    EXPECT_EQ(Tr104LineIncomingCallsReceived(0, &value, at(1)), -1);
}

TEST_F(Stats, AnEmulatedCallAdvancesTheCounters) {
    vmemu::stats::addCall(emulator, 1, 30, false);
    int value = -1;
    ASSERT_EQ(Tr104LineOutgoingCallsConnectedSip(0, &value, at(1)), 0);
    EXPECT_EQ(value, 1);
    ASSERT_EQ(Tr104LineTotalCallsTimeSip(0, &value, at(1)), 0);
    EXPECT_EQ(value, 30);
    ASSERT_EQ(Tr104LineSendRtpPackets(0, &value, at(1)), 0);
    EXPECT_EQ(value, 1500);
    ASSERT_EQ(Tr104LineLostRtpPacketsPercentIntervalEnd(0, &value, at(1, 0)), 0);
    EXPECT_EQ(value, 1);  // 15 lost of 1485 received
    ASSERT_EQ(Tr104SendRtpPackets(0, &value), 0);
    EXPECT_EQ(value, 1500);
}

}  // namespace
