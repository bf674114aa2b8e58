// H.248 statistics: the call counters of each line and the gateway's signalling counters, all
// fields of one statistics block.  The signalling counters always ask for line 1.  The
// descriptors are the rows of tr104/catalogue/h248.toml.
#include "tr104/h248/h248_internal.h"

namespace tr104::h248 {
namespace {

const Block kStats{sizeof(Tr104H248StatsBlock), GET_H248_STATISTICS_ID, 0, nullptr};

}  // namespace
}  // namespace tr104::h248

using namespace tr104::h248;
namespace core = tr104::core;

#include "tr104/catalogue/h248_BlockValue.inc"
#include "tr104/catalogue/h248_BlockValueWide.inc"
