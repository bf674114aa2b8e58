// H.248 statistics: the call counters of each line and the gateway's signalling counters, all
// fields of one statistics block.  The signalling counters always ask for line 1.  The
// descriptors are the rows of tr104/catalogue/h248.toml.
#include "tr104/h248/h248_internal.h"
#include "tr104/handlers.h"

namespace tr104::h248 {
namespace {

const Block kStats{sizeof(Tr104H248StatsBlock), GET_H248_STATISTICS_ID, 0, nullptr};

}  // namespace
}  // namespace tr104::h248

using namespace tr104::h248;
namespace core = tr104::core;

// Connected calls of the line, incoming and outgoing, through the dispatching handlers.
TR104_API int Tr104LineTotalCallTimesH248(int nFlag, void *pValue, int *nLocate) {
    constexpr const char *kName = "Tr104LineTotalCallTimesH248";
    const Signature sig{kName, "pTotalCallTimes", Locate::Line, Access::GetOnly};
    if (const int rc = core::checkArguments(sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    int incoming = 0;
    int outgoing = 0;
    if (Tr104LineIncomingCallsConnected(0, &incoming, nLocate) != TR104_OK) {
        core::say(kName, "\n get total incoming calls connected failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    if (Tr104LineOutgoingCallsConnected(0, &outgoing, nLocate) != TR104_OK) {
        core::say(kName, "\n get total outgoing calls connected failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    // 32-bit counters add as the device's words do: past 2^31 the sum wraps, it never traps.
    const int total = static_cast<int>(static_cast<uint32_t>(incoming) + static_cast<uint32_t>(outgoing));
    core::putInt(pValue, total);
    TR104_DEBUG_AS(kName, "get line[%d] total call times [%d].\n", nLocate[2], total);
    return TR104_OK;
}

#include "tr104/catalogue/h248_BlockValue.inc"
#include "tr104/catalogue/h248_BlockValueWide.inc"
