// Call and signalling counters of a SIP line: one record per line holds them all; each handler
// is a descriptor naming its field, and one body reads the record.  Profile-wide values add up
// the lines that can be read.
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

// The line counters (rows of tr104/catalogue/sip.toml, defined where the generated descriptors are
// included) that the sums below read.
extern const Counter kTr104LineIncomingCallsConnectedSip, kTr104LineOutgoingCallsConnectedSip,
    kTr104LineRxInviteReqsSip, kTr104LineRxInviteRetransSip, kTr104LineRxNoninviteReqsSip,
    kTr104LineRxNoninviteRetransSip, kTr104LineRxResponseSip, kTr104LineTxInviteReqsSip, kTr104LineTxInviteRetransSip,
    kTr104LineTxNoninviteReqsSip, kTr104LineTxNoninviteRetransSip, kTr104LineTxResponseSip;

// A value made of counters of one line, each read through its handler: weight × counter.
struct Term {
    const Counter *counter;
    uint32_t weight;
};

struct Derived {
    Signature sig;
    Term terms[6];
    const char *getError;
};

// Requests and responses of the line without their retransmissions.
const Derived kNewTransactions{{"Tr104LineNewTransactionsSip", "pNewTransactions", Locate::Line, Access::GetOnly},
                               {{&kTr104LineRxInviteReqsSip, 1},
                                {&kTr104LineRxNoninviteReqsSip, 1},
                                {&kTr104LineRxResponseSip, 1},
                                {&kTr104LineTxInviteReqsSip, 1},
                                {&kTr104LineTxNoninviteReqsSip, 1},
                                {&kTr104LineTxResponseSip, 1}},
                               "get line[%d] new transactions failed.\n"};
const Derived kTotalCallTimes{{"Tr104LineTotalCallTimesSip", "pTotalCallTimes", Locate::Line, Access::GetOnly},
                              {{&kTr104LineIncomingCallsConnectedSip, 1}, {&kTr104LineOutgoingCallsConnectedSip, 1}},
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
    {"Tr104RcvdReqsSip", {{&kTr104LineRxInviteReqsSip, 1}, {&kTr104LineRxNoninviteReqsSip, 1}}, false},
    {"Tr104SendReqsSip", {{&kTr104LineTxInviteReqsSip, 1}, {&kTr104LineTxNoninviteReqsSip, 1}}, false},
    {"Tr104RcvdResponsesSip", {{&kTr104LineRxResponseSip, 1}}, false},
    {"Tr104SendResponsesSip", {{&kTr104LineTxResponseSip, 1}}, false},
    {"Tr104NgnPacketRetransSip",
     {{&kTr104LineTxInviteRetransSip, 2},
      {&kTr104LineTxNoninviteRetransSip, 0},
      {&kTr104LineRxInviteRetransSip, 1},
      {&kTr104LineRxNoninviteRetransSip, 1}},
     false},
    {"Tr104NgnPacketLossSip", {}, true},
    {"Tr104NgnPacketErrorSip", {}, true},
    {"Tr104NgnPacketUnKnownSip", {}, true},
};

template <size_t N>
int sumTerms(const Term (&terms)[N], int lineNo, uint32_t *sum);

}  // namespace

int lineCounter(const Counter &c, int nFlag, void *pValue, int *nLocate) {
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
        if (t.counter == nullptr) {
            break;  // the rest of the list is empty
        }
        int locate[4] = {0, 0, lineNo, 0};
        int value = 0;
        if (lineCounter(*t.counter, 0, &value, locate) != TR104_OK) {
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

#include "tr104/catalogue/sip_LineCounter.inc"
