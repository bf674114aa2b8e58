// Pieces shared by the device-level handlers: the checks of a handler that takes (nFlag, pValue)
// and the SIP handlers some of them hand over to.
#pragma once

#include "tr104/device.h"
#include "tr104/framework.h"
#include "tr104/protocol.h"
#include "tr104/core/core.h"

namespace tr104::device {

using core::Access;
using core::Locate;
using core::Signature;

using SipVariant = int (*)(int nFlag, void *pValue, int *nLocate);

// A handler of one value per device or profile: nLocate is never read.
constexpr Signature deviceSignature(const char *name, const char *valueName, Access access) {
    return Signature{name, valueName, Locate::None, access};
}

// The checks of such a handler: null value, then nFlag.  0 or -2.
inline int checkDevice(const Signature &sig, int nFlag, const void *pValue) {
    return core::checkArguments(sig, nFlag, pValue, nullptr);
}

}  // namespace tr104::device
