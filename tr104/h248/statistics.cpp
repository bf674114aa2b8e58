// H.248 statistics: the call counters of each line and the gateway's signalling counters, all
// fields of one statistics block.  The signalling counters always ask for line 1.
#include "tr104/h248/h248_internal.h"

namespace tr104::h248 {
namespace {

const Block kStats{sizeof(Tr104H248StatsBlock), GET_H248_STATISTICS_ID, 0, nullptr};

constexpr BlockValue lineCounter(const char *name, const char *valueName, uint16_t offset, const char *getError,
                                 const char *done) {
    return BlockValue{Signature{name, valueName, Locate::Line, Access::GetOnly},
                      &kStats,
                      offset,
                      4,
                      Conv::Word,
                      0,
                      0,
                      0,
                      nullptr,
                      Where::Line,
                      1,
                      0,
                      nullptr,
                      0,
                      getError,
                      done};
}
constexpr BlockValue ngnCounter(const char *name, const char *valueName, uint16_t offset, const char *getError,
                                const char *done, Conv conv = Conv::Word) {
    return BlockValue{Signature{name, valueName, Locate::None, Access::GetOnly},
                      &kStats,
                      offset,
                      4,
                      conv,
                      0,
                      0,
                      0,
                      nullptr,
                      Where::Line1,
                      1,
                      0,
                      nullptr,
                      0,
                      getError,
                      done};
}

#define TR104_STAT(field) static_cast<uint16_t>(offsetof(Tr104H248StatsBlock, field))

const BlockValue kIncomingReceived = lineCounter(
    "Tr104LineIncomingCallsReceivedH248", "pIncomingCallsReceived", TR104_STAT(unIncomingReceived),
    "get line[%d] total incoming calls received failed.\n", "get line[%d] total incoming calls received[%d]\n");
const BlockValue kIncomingAnswered = lineCounter(
    "Tr104LineIncomingCallsAnsweredH248", "pIncomingCallsAnswered", TR104_STAT(unIncomingAnswered),
    "get line[%d] total incoming calls answered failed.\n", "get line[%d] total incoming calls answered [%d].\n");
const BlockValue kIncomingConnected = lineCounter(
    "Tr104LineIncomingCallsConnectedH248", "pIncomingCallsConnected", TR104_STAT(unIncomingConnected),
    "get line[%d] total incoming calls connected failed.\n", "get line[%d] total incoming calls connected [%d].\n");
const BlockValue kIncomingFailed =
    lineCounter("Tr104LineIncomingCallsFailedH248", "pIncomingCallsFailed", TR104_STAT(unIncomingFailed),
                "get line[%d] total incoming calls failed number failed.\n",
                "get line[%d] total incoming calls failed number [%d].\n");
const BlockValue kOutgoingAttempted = lineCounter(
    "Tr104LineOutgoingCallsAttemptedH248", "pOutgoingCallsAttempted", TR104_STAT(unOutgoingAttempted),
    "get line[%d] total outgoing calls attempted failed.\n", "get line[%d] total outgoing calls attempted [%d].\n");
const BlockValue kOutgoingAnswered = lineCounter(
    "Tr104LineOutgoingCallsAnsweredH248", "pOutgoingCallsAnswered", TR104_STAT(unOutgoingAnswered),
    "get line[%d] total outgoing calls answered failed.\n", "get line[%d] total outgoing calls answered [%d].\n");
const BlockValue kOutgoingConnected = lineCounter(
    "Tr104LineOutgoingCallsConnectedH248", "pOutgoingCallsConnected", TR104_STAT(unOutgoingConnected),
    "get line[%d] total outgoing calls connected failed.\n", "get line[%d] total outgoing calls connected [%d].\n");
const BlockValue kOutgoingFailed =
    lineCounter("Tr104LineOutgoingCallsFailedH248", "pOutgoingCallsFailed", TR104_STAT(unOutgoingFailed),
                "get line[%d] total outgoing calls failed number failed.\n",
                "get line[%d] total outgoing calls failed number [%d].\n");
const BlockValue kCallsDropped = lineCounter(
    "Tr104LineTotalCallsDroppedH248", "pTotalCallsDropped", TR104_STAT(unCallsDropped),
    "get line[%d] total outgoing calls dropped failed.\n", "get line[%d] total outgoing calls dropped [%d].\n");
const BlockValue kCallsTime =
    lineCounter("Tr104LineTotalCallsTimeH248", "pTotalCallsTime", TR104_STAT(unCallsTime),
                "get line[%d] total calls time failed.\n", "get line[%d] total calls time [%d].\n");
const BlockValue kCallsSetupTimer =
    lineCounter("Tr104LineTotalCallsSetupTimerH248", "pTotalCallsSetupTimer", TR104_STAT(unCallsSetupTimer),
                "get line[%d] total calls time failed.\n", "get line[%d] calls setup timer[%d].\n");
const BlockValue kCallTerminateFails =
    lineCounter("Tr104LineTotalCallTerminateFailsH248", "pTotalCallTerminateFails", TR104_STAT(unCallTerminateFails),
                "get line[%d] total call terminate failed.\n", "get line[%d] total call terminate [%d].\n");
const BlockValue kPotsReleaseCounts =
    lineCounter("Tr104LineTotalPotsReleaseCountsH248", "pTotalPotsReleaseCounts", TR104_STAT(unPotsReleaseCounts),
                "get line[%d] total pots release counts fail.\n", "get line[%d] total pots release counts [%d].\n");
const BlockValue kPotsOffHookTimer =
    lineCounter("Tr104LineTotalPotsOffHookTimerH248", "pTotalPotsOffHookTimer", TR104_STAT(unPotsOffHookTimer),
                "get line[%d] total pots off hook timer failed.\n", "get line[%d] total pots off hook timer [%d].\n");

const BlockValue kRcvdReqs = ngnCounter("Tr104RcvdReqsH248", "pRcvdReqs", TR104_STAT(unRcvdReqs),
                                        "get ngn recv req failed.\n", "get ngn recv req [%d]\n");
const BlockValue kSendReqs = ngnCounter("Tr104SendReqsH248", "pSendReqs", TR104_STAT(unSendReqs),
                                        "get ngn send req failed.\n", "get ngn send req [%d]\n");
const BlockValue kRcvdResponses = ngnCounter("Tr104RcvdResponsesH248", "pRcvdResponses", TR104_STAT(unRcvdResponses),
                                             "get ngn recv reply failed.\n", "get ngn recv reply [%d]\n");
const BlockValue kSendResponses = ngnCounter("Tr104SendResponsesH248", "pSendResponses", TR104_STAT(unSendResponses),
                                             "get ngn send reply failed.\n", "get ngn send reply [%d]\n");
const BlockValue kPacketLoss = ngnCounter("Tr104NgnPacketLossH248", "pNgnPacketLoss", TR104_STAT(unPacketLoss),
                                          "get ngn loss failed.\n", "get ngn loss [%d]\n");
const BlockValue kPacketRetrans =
    ngnCounter("Tr104NgnPacketRetransH248", "pNgnPacketRetrans", TR104_STAT(unPacketRetrans),
               "get ngn retrans failed.\n", "get ngn retrans [%d]\n");
const BlockValue kPacketError = ngnCounter("Tr104NgnPacketErrorH248", "pNgnPacketError", TR104_STAT(unPacketError),
                                           "get ngn error failed.\n", "get ngn error [%d]\n");
// Adds the count to the caller's value: the caller passes a variable set to zero.
const BlockValue kPacketUnknown =
    ngnCounter("Tr104NgnPacketUnKnownH248", "pNgnPacketUnKnown", TR104_STAT(unPacketUnknown),
               "get ngn unknown failed.\n", "get ngn unknown [%d]\n", Conv::AddWord);

#undef TR104_STAT

}  // namespace
}  // namespace tr104::h248

using namespace tr104::h248;
namespace core = tr104::core;

#define TR104_LINE_COUNTER(name, desc) \
    TR104_API int name(int nFlag, void *pValue, int *nLocate) { return blockValue(desc, nFlag, pValue, nLocate); }
#define TR104_NGN_COUNTER(name, desc) \
    TR104_API int name(int nFlag, void *pValue) { return blockValue(desc, nFlag, pValue, nullptr); }

TR104_LINE_COUNTER(Tr104LineIncomingCallsReceivedH248, kIncomingReceived)
TR104_LINE_COUNTER(Tr104LineIncomingCallsAnsweredH248, kIncomingAnswered)
TR104_LINE_COUNTER(Tr104LineIncomingCallsConnectedH248, kIncomingConnected)
TR104_LINE_COUNTER(Tr104LineIncomingCallsFailedH248, kIncomingFailed)
TR104_LINE_COUNTER(Tr104LineOutgoingCallsAttemptedH248, kOutgoingAttempted)
TR104_LINE_COUNTER(Tr104LineOutgoingCallsAnsweredH248, kOutgoingAnswered)
TR104_LINE_COUNTER(Tr104LineOutgoingCallsConnectedH248, kOutgoingConnected)
TR104_LINE_COUNTER(Tr104LineOutgoingCallsFailedH248, kOutgoingFailed)
TR104_LINE_COUNTER(Tr104LineTotalCallsDroppedH248, kCallsDropped)
TR104_LINE_COUNTER(Tr104LineTotalCallsTimeH248, kCallsTime)
TR104_LINE_COUNTER(Tr104LineTotalCallsSetupTimerH248, kCallsSetupTimer)
TR104_LINE_COUNTER(Tr104LineTotalCallTerminateFailsH248, kCallTerminateFails)
TR104_LINE_COUNTER(Tr104LineTotalPotsReleaseCountsH248, kPotsReleaseCounts)
TR104_LINE_COUNTER(Tr104LineTotalPotsOffHookTimerH248, kPotsOffHookTimer)
TR104_NGN_COUNTER(Tr104RcvdReqsH248, kRcvdReqs)
TR104_NGN_COUNTER(Tr104SendReqsH248, kSendReqs)
TR104_NGN_COUNTER(Tr104RcvdResponsesH248, kRcvdResponses)
TR104_NGN_COUNTER(Tr104SendResponsesH248, kSendResponses)
TR104_NGN_COUNTER(Tr104NgnPacketLossH248, kPacketLoss)
TR104_NGN_COUNTER(Tr104NgnPacketRetransH248, kPacketRetrans)
TR104_NGN_COUNTER(Tr104NgnPacketErrorH248, kPacketError)
TR104_NGN_COUNTER(Tr104NgnPacketUnKnownH248, kPacketUnknown)
