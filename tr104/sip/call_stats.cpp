// Call and signalling counters of a SIP line: one record per line holds them all; each handler
// is a descriptor naming its field, and one body reads the record.  Profile-wide values add up
// the lines that can be read.
#include <iterator>

#include "tr104/sip/sip_internal.h"
#include "tr104/sip_call_stats.h"

static_assert(sizeof(Tr104SipLineStatsRecord) == 108);
static_assert(offsetof(Tr104SipLineStatsRecord, unInCallsReceived) == 4);
static_assert(offsetof(Tr104SipLineStatsRecord, unOutCallsAttempted) == 20);
static_assert(offsetof(Tr104SipLineStatsRecord, unCallsDropped) == 36);
static_assert(offsetof(Tr104SipLineStatsRecord, unPotsOffHookTime) == 56);
static_assert(offsetof(Tr104SipLineStatsRecord, unRxInviteReqs) == 60);
static_assert(offsetof(Tr104SipLineStatsRecord, unRxResponseRetrans) == 80);
static_assert(offsetof(Tr104SipLineStatsRecord, unTxInviteReqs) == 84);
static_assert(offsetof(Tr104SipLineStatsRecord, unTxResponseRetrans) == 104);

namespace tr104::sip {
namespace {

struct Counter {
    Signature sig;
    uint8_t offset;
    const char *getError;  // may name the line with %d
};

#define TR104_COUNTER(name, valueName, field, error) \
    { {name, valueName, Locate::Line, Access::GetOnly}, offsetof(Tr104SipLineStatsRecord, field), error }

const Counter kCounters[] = {
    TR104_COUNTER("Tr104LineIncomingCallsReceivedSip", "pIncomingCallsReceived", unInCallsReceived,
                  "get line[%d] total incoming calls received failed.\n"),
    TR104_COUNTER("Tr104LineIncomingCallsAnsweredSip", "pIncomingCallsAnswered", unInCallsAnswered,
                  "get line[%d] total incoming calls answered failed.\n"),
    TR104_COUNTER("Tr104LineIncomingCallsConnectedSip", "pIncomingCallsConnected", unInCallsConnected,
                  "get line[%d] total incoming calls connected failed.\n"),
    TR104_COUNTER("Tr104LineIncomingCallsFailedSip", "pIncomingCallsFailed", unInCallsFailed,
                  "get line[%d] total incoming calls failed failed.\n"),
    TR104_COUNTER("Tr104LineOutgoingCallsAttemptedSip", "pOutgoingCallsAttempted", unOutCallsAttempted,
                  "get line[%d] total outgoing calls attempted failed.\n"),
    TR104_COUNTER("Tr104LineOutgoingCallsAnsweredSip", "pOutgoingCallsAnswered", unOutCallsAnswered,
                  "get line[%d] total outgoing calls answered failed.\n"),
    TR104_COUNTER("Tr104LineOutgoingCallsConnectedSip", "pOutgoingCallsConnected", unOutCallsConnected,
                  "get line[%d] total outgoing calls connected failed.\n"),
    TR104_COUNTER("Tr104LineOutgoingCallsFailedSip", "pOutgoingCallsFailed", unOutCallsFailed,
                  "get line[%d] total outgoing calls failed failed.\n"),
    TR104_COUNTER("Tr104LineTotalCallsDroppedSip", "pTotalCallsDropped", unCallsDropped,
                  "get line[%d] total calls dropped failed.\n"),
    TR104_COUNTER("Tr104LineTotalCallsTimeSip", "pTotalCallsTime", unTotalCallTime,
                  "get line[%d] total call time failed.\n"),
    TR104_COUNTER("Tr104LineTotalCallsSetupTimerSip", "pTotalCallsSetupTimer", unCallSetupTime,
                  "get line[%d] total call setup time failed.\n"),
    TR104_COUNTER("Tr104LineTotalCallTerminateFailsSip", "pTotalCallTerminateFails", unCallTerminateFails,
                  "get line[%d] total call terminate fails failed.\n"),
    TR104_COUNTER("Tr104LineTotalPotsReleaseCountsSip", "pTotalPotsReleaseCounts", unPotsReleaseCount,
                  "get line[%d] total pots release counts failed.\n"),
    TR104_COUNTER("Tr104LineTotalPotsOffHookTimerSip", "pTotalPotsOffHookTimer", unPotsOffHookTime,
                  "get line[%d] total pots off hook time failed.\n"),
    TR104_COUNTER("Tr104LineRxInviteReqsSip", "pRxInviteReqs", unRxInviteReqs, "get rcvdINVITE failed.\n"),
    TR104_COUNTER("Tr104LineRxInviteRetransSip", "pRxInviteRetrans", unRxInviteRetrans,
                  "get rcvdINVITE retrans failed.\n"),
    TR104_COUNTER("Tr104LineRxNoninviteReqsSip", "pRxNoninviteReqs", unRxNoninviteReqs, "get rcvdNonINVITE failed.\n"),
    TR104_COUNTER("Tr104LineRxNoninviteRetransSip", "pRxNoninviteRetrans", unRxNoninviteRetrans,
                  "get rcvdNonINVITE retrans failed.\n"),
    TR104_COUNTER("Tr104LineRxResponseSip", "pRxResponse", unRxResponse, "get rcvdResponse failed.\n"),
    TR104_COUNTER("Tr104LineRxResponseRetransSip", "pRxResponseRetrans", unRxResponseRetrans,
                  "get rcvdResponse retrans failed.\n"),
    TR104_COUNTER("Tr104LineTxInviteReqsSip", "pTxInviteReqs", unTxInviteReqs, "get sendINVITE failed.\n"),
    TR104_COUNTER("Tr104LineTxInviteRetransSip", "pTxInviteRetrans", unTxInviteRetrans,
                  "get sendINVITE retrans failed.\n"),
    TR104_COUNTER("Tr104LineTxNoninviteReqsSip", "pTxNoninviteReqs", unTxNoninviteReqs, "get sendNonINVITE failed.\n"),
    TR104_COUNTER("Tr104LineTxNoninviteRetransSip", "pTxNoninviteRetrans", unTxNoninviteRetrans,
                  "get sendNonINVITE retrans failed.\n"),
    TR104_COUNTER("Tr104LineTxResponseSip", "pTxResponse", unTxResponse, "get sendResponse failed.\n"),
    TR104_COUNTER("Tr104LineTxResponseRetransSip", "pTxResponseRetrans", unTxResponseRetrans,
                  "get sendResponse retrans failed.\n"),
};

enum Index {
    kInReceived,
    kInAnswered,
    kInConnected,
    kInFailed,
    kOutAttempted,
    kOutAnswered,
    kOutConnected,
    kOutFailed,
    kDropped,
    kCallTime,
    kSetupTime,
    kTerminateFails,
    kReleaseCount,
    kOffHookTime,
    kRxInvite,
    kRxInviteRetrans,
    kRxNoninvite,
    kRxNoninviteRetrans,
    kRxResponse,
    kRxResponseRetrans,
    kTxInvite,
    kTxInviteRetrans,
    kTxNoninvite,
    kTxNoninviteRetrans,
    kTxResponse,
    kTxResponseRetrans,
    kCounterCount
};
static_assert(std::size(kCounters) == kCounterCount);

// A value made of counters of one line, each read through its handler: weight × counter.
struct Term {
    int counter;
    uint32_t weight;
};

struct Derived {
    Signature sig;
    Term terms[6];
    const char *getError;
};

// Requests and responses of the line without their retransmissions.
const Derived kNewTransactions{
    {"Tr104LineNewTransactionsSip", "pNewTransactions", Locate::Line, Access::GetOnly},
    {{kRxInvite, 1}, {kRxNoninvite, 1}, {kRxResponse, 1}, {kTxInvite, 1}, {kTxNoninvite, 1}, {kTxResponse, 1}},
    "get line[%d] new transactions failed.\n"};
const Derived kTotalCallTimes{{"Tr104LineTotalCallTimesSip", "pTotalCallTimes", Locate::Line, Access::GetOnly},
                              {{kInConnected, 1}, {kOutConnected, 1}},
                              "get line[%d] total call times failed.\n"};

// Profile-wide: the same sum over lines 1 and 2, skipping a line that cannot be read.
struct ProfileCounter {
    const char *name;
    Term terms[4];
    bool alwaysZero;
};

// INVITE retransmissions sent count twice and non-INVITE retransmissions sent not at all: that
// weighting is what the parameter reports.
const ProfileCounter kProfileCounters[] = {
    {"Tr104RcvdReqsSip", {{kRxInvite, 1}, {kRxNoninvite, 1}}, false},
    {"Tr104SendReqsSip", {{kTxInvite, 1}, {kTxNoninvite, 1}}, false},
    {"Tr104RcvdResponsesSip", {{kRxResponse, 1}}, false},
    {"Tr104SendResponsesSip", {{kTxResponse, 1}}, false},
    {"Tr104NgnPacketRetransSip",
     {{kTxInviteRetrans, 2}, {kTxNoninviteRetrans, 0}, {kRxInviteRetrans, 1}, {kRxNoninviteRetrans, 1}},
     false},
    {"Tr104NgnPacketLossSip", {}, true},
    {"Tr104NgnPacketErrorSip", {}, true},
    {"Tr104NgnPacketUnKnownSip", {}, true},
};

template <size_t N>
int sumTerms(const Term (&terms)[N], int lineNo, uint32_t *sum);

}  // namespace

int callCounter(int index, int nFlag, void *pValue, int *nLocate) {
    const Counter &c = kCounters[index];
    if (const int rc = checkArguments(c.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    Tr104SipLineStatsRecord record{};
    record.unLine = static_cast<uint32_t>(lineOf(nLocate));
    if (readRecord(c.sig.name, &record, sizeof(record), TR104_SIP_LINE_STATS_CMD) != TR104_OK) {
        TR104_DEBUG_AS(c.sig.name, c.getError, lineOf(nLocate));
        return TR104_ERR_EXCHANGE;
    }
    uint32_t value;
    std::memcpy(&value, reinterpret_cast<const char *>(&record) + c.offset, sizeof(value));
    putInt(pValue, static_cast<int>(value));
    return TR104_OK;
}

namespace {

template <size_t N>
int sumTerms(const Term (&terms)[N], int lineNo, uint32_t *sum) {
    for (const Term &t : terms) {
        if (t.weight == 0 && t.counter == 0) {
            break;  // the rest of the list is empty
        }
        int locate[4] = {0, 0, lineNo, 0};
        int value = 0;
        if (callCounter(t.counter, 0, &value, locate) != TR104_OK) {
            return TR104_ERR_EXCHANGE;
        }
        *sum += t.weight * static_cast<uint32_t>(value);
    }
    return TR104_OK;
}

}  // namespace

int derivedCounter(const Derived &d, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(d.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    uint32_t sum = 0;
    if (sumTerms(d.terms, lineOf(nLocate), &sum) != TR104_OK) {
        TR104_DEBUG_AS(d.sig.name, d.getError, lineOf(nLocate));
        return TR104_ERR_EXCHANGE;
    }
    putInt(pValue, static_cast<int>(sum));
    return TR104_OK;
}

int profileCounter(int index, int nFlag, void *pValue) {
    const ProfileCounter &p = kProfileCounters[index];
    if (const int rc = checkArguments({p.name, "pValue", Locate::None, Access::GetOnly}, nFlag, pValue, nullptr);
        rc != TR104_OK) {
        return rc;
    }
    uint32_t total = 0;
    if (!p.alwaysZero) {
        // A line whose statistics cannot be read counts as zero.
        core::sumOverLines(
            [&p](int line, uint32_t *sum) {
                if (sumTerms(p.terms, line, sum) != TR104_OK) {
                    TR104_DEBUG_AS(p.name, "get line[%d] statistics failed, line skipped.\n", line);
                    *sum = 0;
                }
                return true;
            },
            &total);
    }
    putInt(pValue, static_cast<int>(total));
    return TR104_OK;
}

const Derived &newTransactions() { return kNewTransactions; }
const Derived &totalCallTimes() { return kTotalCallTimes; }

}  // namespace tr104::sip

#define TR104_SIP_COUNTER(name, index)                                             \
    extern "C" TR104_API int name(int nFlag, void *pValue, int *nLocate) {         \
        return tr104::sip::callCounter(tr104::sip::index, nFlag, pValue, nLocate); \
    }
TR104_SIP_COUNTER(Tr104LineIncomingCallsReceivedSip, kInReceived)
TR104_SIP_COUNTER(Tr104LineIncomingCallsAnsweredSip, kInAnswered)
TR104_SIP_COUNTER(Tr104LineIncomingCallsConnectedSip, kInConnected)
TR104_SIP_COUNTER(Tr104LineIncomingCallsFailedSip, kInFailed)
TR104_SIP_COUNTER(Tr104LineOutgoingCallsAttemptedSip, kOutAttempted)
TR104_SIP_COUNTER(Tr104LineOutgoingCallsAnsweredSip, kOutAnswered)
TR104_SIP_COUNTER(Tr104LineOutgoingCallsConnectedSip, kOutConnected)
TR104_SIP_COUNTER(Tr104LineOutgoingCallsFailedSip, kOutFailed)
TR104_SIP_COUNTER(Tr104LineTotalCallsDroppedSip, kDropped)
TR104_SIP_COUNTER(Tr104LineTotalCallsTimeSip, kCallTime)
TR104_SIP_COUNTER(Tr104LineTotalCallsSetupTimerSip, kSetupTime)
TR104_SIP_COUNTER(Tr104LineTotalCallTerminateFailsSip, kTerminateFails)
TR104_SIP_COUNTER(Tr104LineTotalPotsReleaseCountsSip, kReleaseCount)
TR104_SIP_COUNTER(Tr104LineTotalPotsOffHookTimerSip, kOffHookTime)
TR104_SIP_COUNTER(Tr104LineRxInviteReqsSip, kRxInvite)
TR104_SIP_COUNTER(Tr104LineRxInviteRetransSip, kRxInviteRetrans)
TR104_SIP_COUNTER(Tr104LineRxNoninviteReqsSip, kRxNoninvite)
TR104_SIP_COUNTER(Tr104LineRxNoninviteRetransSip, kRxNoninviteRetrans)
TR104_SIP_COUNTER(Tr104LineRxResponseSip, kRxResponse)
TR104_SIP_COUNTER(Tr104LineRxResponseRetransSip, kRxResponseRetrans)
TR104_SIP_COUNTER(Tr104LineTxInviteReqsSip, kTxInvite)
TR104_SIP_COUNTER(Tr104LineTxInviteRetransSip, kTxInviteRetrans)
TR104_SIP_COUNTER(Tr104LineTxNoninviteReqsSip, kTxNoninvite)
TR104_SIP_COUNTER(Tr104LineTxNoninviteRetransSip, kTxNoninviteRetrans)
TR104_SIP_COUNTER(Tr104LineTxResponseSip, kTxResponse)
TR104_SIP_COUNTER(Tr104LineTxResponseRetransSip, kTxResponseRetrans)

extern "C" TR104_API int Tr104LineNewTransactionsSip(int nFlag, void *pValue, int *nLocate) {
    return tr104::sip::derivedCounter(tr104::sip::newTransactions(), nFlag, pValue, nLocate);
}
extern "C" TR104_API int Tr104LineTotalCallTimesSip(int nFlag, void *pValue, int *nLocate) {
    return tr104::sip::derivedCounter(tr104::sip::totalCallTimes(), nFlag, pValue, nLocate);
}

#define TR104_SIP_PROFILE_COUNTER(name, index) \
    extern "C" TR104_API int name(int nFlag, void *pValue) { return tr104::sip::profileCounter(index, nFlag, pValue); }
TR104_SIP_PROFILE_COUNTER(Tr104RcvdReqsSip, 0)
TR104_SIP_PROFILE_COUNTER(Tr104SendReqsSip, 1)
TR104_SIP_PROFILE_COUNTER(Tr104RcvdResponsesSip, 2)
TR104_SIP_PROFILE_COUNTER(Tr104SendResponsesSip, 3)
TR104_SIP_PROFILE_COUNTER(Tr104NgnPacketRetransSip, 4)
TR104_SIP_PROFILE_COUNTER(Tr104NgnPacketLossSip, 5)
TR104_SIP_PROFILE_COUNTER(Tr104NgnPacketErrorSip, 6)
TR104_SIP_PROFILE_COUNTER(Tr104NgnPacketUnKnownSip, 7)
