// The argument checks every handler makes, in one order: the value, the instance, nFlag.
#include <cstdio>

#include "tr104/core/core.h"

namespace tr104::core {

namespace {

// Line numbers 1..2, or 0..2 where 0 means every line; ports the same on nLocate[1].
bool instanceRefused(const Signature &sig, const int *nLocate) {
    switch (sig.locate) {
    case Locate::None:
    case Locate::Unchecked: return false;
    case Locate::Line:
    case Locate::LineOrAll: {
        // One unsigned comparison.
        const unsigned int first = sig.locate == Locate::LineOrAll ? 0u : 1u;
        if (static_cast<unsigned int>(nLocate[2]) - first < 3u - first) {
            return false;
        }
        TR104_DEBUG_AS(sig.name, "param error, nLocate[2]=%d\n", nLocate[2]);
        return true;
    }
    case Locate::KcPort:
        // The Kc type alone admits port 0, passed on to the voice module as it is.
        if (static_cast<unsigned int>(nLocate[1]) < 3u) {
            return false;
        }
        say(sig.name, "param error, port is invaild\n");
        return true;
    case Locate::Port:
    case Locate::PortAsLine:
    case Locate::PortNamedLine: break;
    }
    const int port = nLocate[1];
    if (port == 1 || port == 2) {
        return false;
    }
    // The port name reports the refused port as the line number it once was.
    if (sig.locate == Locate::PortAsLine) {
        TR104_DEBUG_AS(sig.name, "param error, nLocate[2]=%d\n", nLocate[2]);
    } else if (sig.locate == Locate::PortNamedLine) {
        TR104_DEBUG_AS(sig.name, "param error, nLocate[2]=%d\n", port);
    } else {
        TR104_DEBUG_AS(sig.name, "param error, nLocate[1]=%d\n", port);
    }
    return true;
}

}  // namespace

int checkArguments(const Signature &sig, int nFlag, const void *pValue, const int *nLocate) {
    if (pValue == nullptr) {
        if (sig.report == Report::Debug) {
            TR104_DEBUG_AS(sig.name, "param error, %s is null\n", sig.valueName);
        } else {
            printf(sig.valueName, sig.name);
        }
        return TR104_ERR_PARAM;
    }
    if (sig.locate != Locate::None) {
        if (nLocate == nullptr) {
            say(sig.name, "param error, nLocate is null\n");
            return TR104_ERR_PARAM;
        }
        if (instanceRefused(sig, nLocate)) {
            return TR104_ERR_PARAM;
        }
    }
    const bool flagServed =
        (nFlag == 0 && sig.access != Access::SetOnly) || (nFlag == 1 && sig.access != Access::GetOnly);
    if (!flagServed) {
        if (sig.report == Report::Stdout) {
            printf(sig.flagError, sig.name, nFlag);
        } else {
            TR104_DEBUG_AS(sig.name, sig.flagError, nFlag);
        }
        return TR104_ERR_PARAM;
    }
    return TR104_OK;
}

}  // namespace tr104::core
