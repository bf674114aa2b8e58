// RTP statistics of a line, the same under both protocols: each handler is a descriptor naming
// the block word it reports; one body reads the block, one adds up the two lines of a profile.
// The descriptors are the rows of tr104/catalogue/stats.toml.

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

uint32_t wordAt(const void *block, size_t offset) {
    uint32_t v;
    std::memcpy(&v, static_cast<const char *>(block) + offset, sizeof(v));
    return v;
}

int rtpValue(const RtpValue &v, int nFlag, void *pValue, int *nLocate) {
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

// A profile value over both lines: their sum, or the sum halved (rounding down).
struct ProfileSum {
    const char *name;
    const RtpValue &line;  // the line value added up
    bool halved;
    const char *failed;
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
        if (rtpValue(s.line, 0, &got, locate) != TR104_OK) {
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

}  // namespace tr104::stats

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

#include "tr104/catalogue/stats_RtpValue.inc"
#include "tr104/catalogue/stats_RtpProfileSum.inc"
