// RTP statistics of a line, the same under both protocols: each handler is a descriptor naming
// the block word it reports; one body reads the block, one adds up the two lines of a profile.
#include <iterator>

#include "tr104/core/core.h"
#include "tr104/statistics.h"

static_assert(sizeof(Tr104LineRtpStatsBlock) == 156);
static_assert(offsetof(Tr104LineRtpStatsBlock, unSendPackets) == 36);
static_assert(offsetof(Tr104LineRtpStatsBlock, unSendBytes) == 40);
static_assert(offsetof(Tr104LineRtpStatsBlock, unRcvdPackets) == 44);
static_assert(offsetof(Tr104LineRtpStatsBlock, unRcvdBytes) == 48);
static_assert(offsetof(Tr104LineRtpStatsBlock, unLostPackets) == 52);
static_assert(offsetof(Tr104LineRtpStatsBlock, unLostPercent) == 56);
static_assert(offsetof(Tr104LineRtpStatsBlock, unFarEndLostPercent) == 64);
static_assert(offsetof(Tr104LineRtpStatsBlock, unJitter) == 68);
static_assert(offsetof(Tr104LineRtpStatsBlock, unFarEndJitter) == 72);
static_assert(offsetof(Tr104LineRtpStatsBlock, unBufferOverruns) == 76);
static_assert(offsetof(Tr104LineRtpStatsBlock, unBufferUnderruns) == 80);
static_assert(offsetof(Tr104LineRtpStatsBlock, unStreamSpeed) == 84);
static_assert(offsetof(Tr104LineRtpStatsBlock, unNetworkDelay) == 92);
static_assert(offsetof(Tr104LineRtpStatsBlock, unErrorPackets) == 96);
static_assert(sizeof(Tr104LineRtpIntervalBlock) == 216);
static_assert(offsetof(Tr104LineRtpIntervalBlock, unLine) == 8);
static_assert(offsetof(Tr104LineRtpIntervalBlock, unInterval) == 12);

namespace tr104::stats {
namespace {

using core::Access;
using core::Locate;
using core::Signature;

enum class Block : uint8_t {
    Line,  // command 84, 156 bytes, the line in word 0
    Interval,  // command 85, 216 bytes, line and interval in words 2 and 3
    IntervalAny,  // the same without the interval check (the interval's end time)
};

enum class Report : uint8_t {
    Word,  // the word itself
    Zero,  // 0 after a successful read
    LostPercent,  // 100 * lost / received of the interval, 0 when nothing was received
};

struct RtpValue {
    Signature sig;
    Block block;
    uint16_t offset;  // word reported
    Report report;
    const char *getError;  // "%d" the line
    const char *getDone;  // line and value
};

#define TR104_RTP_WORD(field) static_cast<uint16_t>(offsetof(Tr104LineRtpStatsBlock, field))
#define TR104_RTP_INTERVAL(field) static_cast<uint16_t>(offsetof(Tr104LineRtpIntervalBlock, field))

// The get messages of each line value: "get line[%d] <what> failed.\n" and "... [%d].\n".
#define TR104_RTP_MESSAGES(what) "get line[%d] " what " failed.\n", "get line[%d] " what " [%d].\n"

const RtpValue kValues[] = {
    {{"Tr104LineSendRtpPackets", "pSendRtpPacketsNum", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unSendPackets),
     Report::Word,
     TR104_RTP_MESSAGES("total send rtp packets number")},
    {{"Tr104LineSendRtpBytes", "pSendRtpBytesNum", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unSendBytes),
     Report::Word,
     TR104_RTP_MESSAGES("total send rtp bytes number")},
    {{"Tr104LineRcvdRtpPackets", "pRcvdRtpPacketsNum", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unRcvdPackets),
     Report::Word,
     TR104_RTP_MESSAGES("total received rtp packets number")},
    {{"Tr104LineRcvdRtpBytes", "pRcvdRtpBytesNum", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unRcvdBytes),
     Report::Word,
     TR104_RTP_MESSAGES("total received rtp bytes number")},
    {{"Tr104LineLostRtpPackets", "pLostRtpPacketsNum", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unLostPackets),
     Report::Word,
     TR104_RTP_MESSAGES("total lost rtp packets number")},
    {{"Tr104LineLostRtpPacketsPercent", "pLostRtpPacketsPercent", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unLostPercent),
     Report::Word,
     TR104_RTP_MESSAGES("rtp packet loss percent")},
    {{"Tr104LineLostFarEndPacketsPercent", "pLostFarEndPacketsPercent", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unFarEndLostPercent),
     Report::Word,
     TR104_RTP_MESSAGES("far end packet loss percent")},
    {{"Tr104LineRtpJitter", "pRtpJitter", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unJitter),
     Report::Word,
     TR104_RTP_MESSAGES("rtp jitter")},
    {{"Tr104LineAverageReceiveInterarrivalJitter", "pAvgRcvJitter", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unJitter),
     Report::Word,
     TR104_RTP_MESSAGES("average receive interarrival jitter")},
    // The far end's interarrival jitter is the near end's word: the voice module reports one.
    {{"Tr104LineAverageFarEndInterarrivalJitter", "pAvgFarEndJitter", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unJitter),
     Report::Word,
     TR104_RTP_MESSAGES("average far end interarrival jitter")},
    {{"Tr104LineRtpFarEndJitter", "pRtpFarEndJitter", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unFarEndJitter),
     Report::Word,
     TR104_RTP_MESSAGES("rtp far end jitter")},
    {{"Tr104LineJitterBufferOverruns", "pJitterBufferOverruns", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unBufferOverruns),
     Report::Word,
     TR104_RTP_MESSAGES("jitter buffer overruns")},
    {{"Tr104LineJitterBufferUnderruns", "pJitterBufferUnderruns", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unBufferUnderruns),
     Report::Word,
     TR104_RTP_MESSAGES("jitter buffer underruns")},
    // Up and down stream report the same word.
    {{"Tr104LineUpStreamSpeed", "pUpStreamSpeed", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unStreamSpeed),
     Report::Word,
     TR104_RTP_MESSAGES("up stream speed")},
    {{"Tr104LineDownStreamSpeed", "pDownStreamSpeed", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unStreamSpeed),
     Report::Word,
     TR104_RTP_MESSAGES("down stream speed")},
    // The block's word 22 carries the longest RTCP interval seen.
    {{"Tr104LineMaxRtcpTime", "pMaxRtcpTime", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unMaxRtcpTime),
     Report::Word,
     TR104_RTP_MESSAGES("max rtcp time")},
    {{"Tr104LineNetworkAvgDelay", "pNetworkAvgDelay", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unNetworkDelay),
     Report::Word,
     TR104_RTP_MESSAGES("network average delay")},
    // The round-trip delay is the network delay word.
    {{"Tr104LineAverageRoundTripDelay", "pAvgRoundTripDelay", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unNetworkDelay),
     Report::Word,
     TR104_RTP_MESSAGES("average round trip delay")},
    {{"Tr104LineErrorRtpPackets", "pErrorRtpPackets", Locate::Line, Access::GetOnly},
     Block::Line,
     TR104_RTP_WORD(unErrorPackets),
     Report::Word,
     TR104_RTP_MESSAGES("error rtp packets")},
    // One 15-minute interval.
    {{"Tr104LineRtpStatisticsIntervalEndTime", "pIntervalEndTime", Locate::Line, Access::GetOnly},
     Block::IntervalAny,
     TR104_RTP_INTERVAL(unEndTime),
     Report::Word,
     TR104_RTP_MESSAGES("statistics interval end time")},
    {{"Tr104LineMaxRtcpTimeIntervalEnd", "pMaxRtcpTime", Locate::Line, Access::GetOnly},
     Block::Interval,
     TR104_RTP_INTERVAL(unMaxRtcpTime),
     Report::Word,
     TR104_RTP_MESSAGES("interval max rtcp time")},
    {{"Tr104LineLostRtpPacketsPercentIntervalEnd", "pLostRtpPacketsPercent", Locate::Line, Access::GetOnly},
     Block::Interval,
     TR104_RTP_INTERVAL(unLostPackets),
     Report::LostPercent,
     "get line[%d] interval lost packets "
     "failed.\n",
     nullptr},
    // The interval's error count is read and reported as 0: the voice module does not count it.
    {{"Tr104LineErrorRtpPacketsIntervalEnd", "pErrorRtpPackets", Locate::Line, Access::GetOnly},
     Block::Interval,
     TR104_RTP_INTERVAL(unErrorPackets),
     Report::Zero,
     TR104_RTP_MESSAGES("interval error rtp packets")},
    {{"Tr104LineMaximumRtpJitterIntervalEnd", "pMaxRtpJitter", Locate::Line, Access::GetOnly},
     Block::Interval,
     TR104_RTP_INTERVAL(unMaxJitter),
     Report::Word,
     TR104_RTP_MESSAGES("interval maximum rtp jitter")},
    {{"Tr104LineJitterBufferOverrunsIntervalEnd", "pJitterBufferOverruns", Locate::Line, Access::GetOnly},
     Block::Interval,
     TR104_RTP_INTERVAL(unBufferOverruns),
     Report::Word,
     TR104_RTP_MESSAGES("interval jitter buffer overruns")},
    {{"Tr104LineJitterBufferUnderrunsIntervalEnd", "pJitterBufferUnderruns", Locate::Line, Access::GetOnly},
     Block::Interval,
     TR104_RTP_INTERVAL(unBufferUnderruns),
     Report::Word,
     TR104_RTP_MESSAGES("interval jitter buffer underruns")},
};

enum Index {
    kSendPackets,
    kSendBytes,
    kRcvdPackets,
    kRcvdBytes,
    kLostPackets,
    kLostPercent,
    kFarEndLostPercent,
    kJitter,
    kAvgRcvJitter,
    kAvgFarEndJitter,
    kFarEndJitter,
    kOverruns,
    kUnderruns,
    kUpSpeed,
    kDownSpeed,
    kMaxRtcpTime,
    kNetworkDelay,
    kRoundTripDelay,
    kErrorPackets,
    kIntervalEndTime,
    kIntervalMaxRtcp,
    kIntervalLostPercent,
    kIntervalErrors,
    kIntervalMaxJitter,
    kIntervalOverruns,
    kIntervalUnderruns,
    kValueCount
};
static_assert(std::size(kValues) == kValueCount);

uint32_t wordAt(const void *block, size_t offset) {
    uint32_t v;
    std::memcpy(&v, static_cast<const char *>(block) + offset, sizeof(v));
    return v;
}

}  // namespace

int rtpValue(int index, int nFlag, void *pValue, int *nLocate) {
    const RtpValue &v = kValues[index];
    if (const int rc = core::checkArguments(v.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int lineNo = core::lineOf(nLocate);
    uint32_t value = 0;
    if (v.block == Block::Line) {
        Tr104LineRtpStatsBlock block{};
        block.unLine = static_cast<uint32_t>(lineNo);
        if (core::readRecord(v.sig.name, &block, sizeof(block), TR104_RTP_STATS_CMD) != TR104_OK) {
            TR104_DEBUG_AS(v.sig.name, v.getError, lineNo);
            return TR104_ERR_EXCHANGE;
        }
        value = wordAt(&block, v.offset);
    } else {
        // Intervals 0..16; the end time is asked for whatever interval the caller names.
        if (v.block == Block::Interval && static_cast<unsigned int>(nLocate[3]) > TR104_RTP_INTERVAL_MAX) {
            TR104_DEBUG_AS(v.sig.name, "param error, nLocate[3]=%d\n", nLocate[3]);
            return TR104_ERR_PARAM;
        }
        Tr104LineRtpIntervalBlock block{};
        block.unLine = static_cast<uint32_t>(lineNo);
        block.unInterval = static_cast<uint32_t>(nLocate[3]);
        if (core::readRecord(v.sig.name, &block, sizeof(block), TR104_RTP_INTERVAL_CMD) != TR104_OK) {
            TR104_DEBUG_AS(v.sig.name, v.getError, lineNo);
            return TR104_ERR_EXCHANGE;
        }
        value = wordAt(&block, v.offset);
        if (v.report == Report::LostPercent) {
            const uint32_t received = block.unRcvdPackets;
            const uint32_t percent = received == 0 ? 0 : static_cast<uint32_t>(100ull * value / received);
            TR104_DEBUG_AS(v.sig.name,
                           "get line[%d] %d(15 min) interval lost packet[%d],recv RTP packets[%d],rtp packet "
                           "loss percent[%d]\n ",
                           lineNo, nLocate[3], static_cast<int>(value), static_cast<int>(received),
                           static_cast<int>(percent));
            value = percent;
        } else if (v.report == Report::Zero) {
            value = 0;
        }
    }
    core::putInt(pValue, static_cast<int>(value));
    if (v.getDone != nullptr) {
        TR104_DEBUG_AS(v.sig.name, v.getDone, lineNo, static_cast<int>(value));
    }
    return TR104_OK;
}

namespace {

// A profile value over both lines: their sum, or the sum halved (rounding down).
struct ProfileSum {
    const char *name;
    int lineValue;  // index of the line handler
    bool halved;
    const char *failed;
};

const ProfileSum kSums[] = {
    {"Tr104SendRtpPackets", kSendPackets, false, "get send rtp packets failed.\n"},
    {"Tr104RcvdRtpPackets", kRcvdPackets, false, "get received rtp packets failed.\n"},
    {"Tr104SendRtpBytes", kSendBytes, false, "get send rtp bytes failed.\n"},
    {"Tr104RcvdRtpBytes", kRcvdBytes, false, "get received rtp bytes failed.\n"},
    {"Tr104LostRtpPacketsPercent", kLostPercent, true, "get lost rtp packets percent failed.\n"},
    {"Tr104NetworkAvgDelay", kNetworkDelay, true, "get network average delay failed.\n"},
    {"Tr104RtpAvgJitter", kJitter, true, "get rtp average jitter failed.\n"},
};

int profileSum(const ProfileSum &s, int nFlag, void *pValue) {
    if (const int rc =
            core::checkArguments({s.name, "pValue", core::Locate::None, core::Access::GetOnly}, nFlag, pValue, nullptr);
        rc != TR104_OK) {
        return rc;
    }
    const auto perLine = [&s](int line, uint32_t *value) {
        int locate[4] = {0, 0, line, 0};
        int got = 0;
        if (rtpValue(s.lineValue, 0, &got, locate) != TR104_OK) {
            return false;
        }
        *value = static_cast<uint32_t>(got);
        return true;
    };
    uint32_t sum = 0;
    if (!core::sumOverLines(perLine, &sum)) {
        core::say(s.name, s.failed);
        return TR104_ERR_EXCHANGE;
    }
    core::putInt(pValue, static_cast<int>(s.halved ? sum >> 1 : sum));
    return TR104_OK;
}

}  // namespace

int rtpProfile(int index, int nFlag, void *pValue) { return profileSum(kSums[index], nFlag, pValue); }

}  // namespace tr104::stats

#define TR104_RTP_LINE(name, index)                                                 \
    extern "C" TR104_API int name(int nFlag, void *pValue, int *nLocate) {          \
        return tr104::stats::rtpValue(tr104::stats::index, nFlag, pValue, nLocate); \
    }
TR104_RTP_LINE(Tr104LineSendRtpPackets, kSendPackets)
TR104_RTP_LINE(Tr104LineSendRtpBytes, kSendBytes)
TR104_RTP_LINE(Tr104LineRcvdRtpPackets, kRcvdPackets)
TR104_RTP_LINE(Tr104LineRcvdRtpBytes, kRcvdBytes)
TR104_RTP_LINE(Tr104LineLostRtpPackets, kLostPackets)
TR104_RTP_LINE(Tr104LineLostRtpPacketsPercent, kLostPercent)
TR104_RTP_LINE(Tr104LineLostFarEndPacketsPercent, kFarEndLostPercent)
TR104_RTP_LINE(Tr104LineRtpJitter, kJitter)
TR104_RTP_LINE(Tr104LineAverageReceiveInterarrivalJitter, kAvgRcvJitter)
TR104_RTP_LINE(Tr104LineAverageFarEndInterarrivalJitter, kAvgFarEndJitter)
TR104_RTP_LINE(Tr104LineRtpFarEndJitter, kFarEndJitter)
TR104_RTP_LINE(Tr104LineJitterBufferOverruns, kOverruns)
TR104_RTP_LINE(Tr104LineJitterBufferUnderruns, kUnderruns)
TR104_RTP_LINE(Tr104LineUpStreamSpeed, kUpSpeed)
TR104_RTP_LINE(Tr104LineDownStreamSpeed, kDownSpeed)
TR104_RTP_LINE(Tr104LineMaxRtcpTime, kMaxRtcpTime)
TR104_RTP_LINE(Tr104LineNetworkAvgDelay, kNetworkDelay)
TR104_RTP_LINE(Tr104LineAverageRoundTripDelay, kRoundTripDelay)
TR104_RTP_LINE(Tr104LineErrorRtpPackets, kErrorPackets)
TR104_RTP_LINE(Tr104LineRtpStatisticsIntervalEndTime, kIntervalEndTime)
TR104_RTP_LINE(Tr104LineMaxRtcpTimeIntervalEnd, kIntervalMaxRtcp)
TR104_RTP_LINE(Tr104LineLostRtpPacketsPercentIntervalEnd, kIntervalLostPercent)
TR104_RTP_LINE(Tr104LineErrorRtpPacketsIntervalEnd, kIntervalErrors)
TR104_RTP_LINE(Tr104LineMaximumRtpJitterIntervalEnd, kIntervalMaxJitter)
TR104_RTP_LINE(Tr104LineJitterBufferOverrunsIntervalEnd, kIntervalOverruns)
TR104_RTP_LINE(Tr104LineJitterBufferUnderrunsIntervalEnd, kIntervalUnderruns)

#define TR104_RTP_PROFILE(name, index) \
    extern "C" TR104_API int name(int nFlag, void *pValue) { return tr104::stats::rtpProfile(index, nFlag, pValue); }
TR104_RTP_PROFILE(Tr104SendRtpPackets, 0)
TR104_RTP_PROFILE(Tr104RcvdRtpPackets, 1)
TR104_RTP_PROFILE(Tr104SendRtpBytes, 2)
TR104_RTP_PROFILE(Tr104RcvdRtpBytes, 3)
TR104_RTP_PROFILE(Tr104LostRtpPacketsPercent, 4)
TR104_RTP_PROFILE(Tr104NetworkAvgDelay, 5)
TR104_RTP_PROFILE(Tr104RtpAvgJitter, 6)

extern "C" TR104_API int Tr104VoiceBandwidth(int nFlag, void *pValue) {
    if (pValue == nullptr) {
        TR104_DEBUG("param error, pVoiceBandwidth is null\n");
        return TR104_ERR_PARAM;
    }
    if (nFlag != 0) {
        TR104_DEBUG("param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    tr104::core::putInt(pValue, 0);
    TR104_DEBUG("get average jitter [%d].\n", 0);  // the message the agent's logs know
    return TR104_OK;
}

// The web pages' call records are not kept: nothing to report.
extern "C" TR104_API int Tr104VoiceRecordItemNumForWEB(int, void *) { return TR104_OK; }
extern "C" TR104_API int Tr104VoiceRecordForWEB(int, void *) { return TR104_OK; }
