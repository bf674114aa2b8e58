// One handler call by name.  A handler of one value is called through the data-model map's call
// (the same conversions as a call by path); the client calls only the handlers of its own
// conventions itself.
#include "ctl/invoke.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace tr104ctl {

namespace {

const char *protocolSuffix(int protocol) { return protocol == 4 ? "Sip" : protocol == 2 ? "H248" : nullptr; }

// The exported function for a name: the name itself or, for a parameter that only exists as
// protocol variants, the variant of the current protocol.
std::string resolveHandler(const Library &lib, const std::string &name) {
    if (lib.symbol(name) != nullptr) {
        return name;
    }
    const int *protocol = lib.variable<int>("gTr104CurrProtocolType");
    const char *suffix = protocol != nullptr ? protocolSuffix(*protocol) : nullptr;
    if (suffix != nullptr && baseName(name) == name && lib.symbol(name + suffix) != nullptr) {
        return name + suffix;
    }
    return "";
}

// Tr104LineGain: (nFlag, nDirection, pValue, nLocate) with an integer.
void callDirected(const Library &lib, const CallRequest &req, CallResult *result) {
    int integer = 0;
    if (req.set) {
        errno = 0;
        char *end = nullptr;
        const long value = std::strtol(req.value.c_str(), &end, 10);
        if (req.value.empty() || errno != 0 || *end != '\0' || value < INT32_MIN || value > INT32_MAX) {
            result->message = "'" + req.handler + "' takes an integer, not '" + req.value + "'";
            return;
        }
        integer = static_cast<int>(value);
    }
    int locate[4];
    std::memcpy(locate, req.locate, sizeof(locate));
    using Handler = int (*)(int, int, void *, int *);
    result->rc = lib.function<Handler>(result->calledName)(req.set ? 1 : 0, *req.direction, &integer, locate);
    result->called = true;
    result->shown = std::to_string(integer);
}

}  // namespace

CallResult callHandler(const Library &lib, const CallRequest &req) {
    CallResult result;
    result.calledName = resolveHandler(lib, req.handler);
    if (result.calledName.empty()) {
        result.message = "no handler named '" + req.handler + "' in " + lib.path();
        return result;
    }
    const HandlerKind *row = findKind(req.handler);
    if (row == nullptr && !req.kindOverride) {
        result.message = "the value kind of '" + req.handler + "' is not known: give --int, --text or --float";
        return result;
    }
    const Convention convention = req.kindOverride ? Convention::Value : row->convention;
    if (convention == Convention::Custom) {
        int locate[4];
        std::memcpy(locate, req.locate, sizeof(locate));
        const CustomResult custom = row->custom(lib.symbol(result.calledName), req.set, req.value, locate);
        result.called = custom.called;
        result.message = custom.message;
        result.rc = custom.rc;
        result.shown = custom.shown;
        return result;
    }
    if (convention == Convention::Directed) {
        if (!req.direction) {
            result.message = "'" + req.handler + "' needs --direction (0 transmit, 1 receive)";
        } else {
            callDirected(lib, req, &result);
        }
        return result;
    }
    // One value: the map's call, with the entry the handler would have in the map.
    Tr104MapEntry entry{};
    entry.handler = req.handler.c_str();
    entry.fn = lib.function<Tr104MapFunction>(result.calledName);
    entry.arity = req.kindOverride ? 3 : row->arity;
    entry.valueKind = req.kindOverride.value_or(row != nullptr ? row->valueKind : TR104_MAP_VALUE_INT);
    entry.valueSize = req.kindOverride ? kDefaultText : row->valueSize;
    char shown[4096] = "";
    char error[512] = "";
    const int rc = tr104MapCall(&entry, req.locate, req.set ? 1 : 0, req.value.c_str(), shown, sizeof(shown), error,
                                sizeof(error));
    if (rc == TR104_MAP_BAD_VALUE) {
        result.message = error;
        return result;
    }
    result.called = true;
    result.rc = rc;
    result.shown = shown;
    return result;
}

std::string describeFailure(int rc) {
    switch (rc) {
    case -1:
        return "the exchange with the voice module failed, its answer was unusable, or the current protocol "
               "has no such parameter";
    case -2: return "the handler refused the arguments (value, line or flag)";
    default: return "unexpected result";
    }
}

}  // namespace tr104ctl
