// The H.248 variants that answer through the dispatching wrappers, whatever protocol is current:
// a line's total of connected calls and the termination id.
#include <cstdint>

#include "tr104/core/core.h"
#include "tr104/h248.h"
#include "tr104/handlers.h"

using tr104::core::Access;
using tr104::core::Locate;
using tr104::core::Signature;
namespace core = tr104::core;

extern "C" {

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

// The termination id is the physical termination prefix, whatever protocol answers it.
TR104_API int Tr104TermIdH248(int nFlag, void *pValue) { return Tr104PhysicalTermIDPrefix(nFlag, pValue); }

}  // extern "C"
