// One handler call as the management agent makes it: find the handler by name, build pValue
// of the handler's kind from a text, call it with nFlag and nLocate, and render the value.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "ctl/library.h"
#include "ctl/value_kinds.h"

namespace tr104ctl {

struct CallRequest {
    std::string handler;
    bool set = false;
    std::string value;                    // the value of a set, as text
    int locate[4] = {0, 1, 1, 0};         // nLocate: [1] profile, [2] line, [3] entry
    std::optional<int> direction;         // Directed handlers
    std::optional<ValueKind> kindOverride;
};

struct CallResult {
    bool called = false;   // false: the request itself was wrong (message says why)
    std::string message;   // why it was not called
    std::string calledName;  // the exported name actually called
    int rc = 0;
    std::string shown;     // a get's value, rendered
};

// Locators and integer values: the whole text must be a decimal number within [low, high].
inline bool parseInt(const std::string &text, long low, long high, int *out) {
    if (text.empty()) {
        return false;
    }
    errno = 0;
    char *end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || value < low || value > high) {
        return false;
    }
    *out = static_cast<int>(value);
    return true;
}

inline bool parseFloat(const std::string &text, float *out) {
    if (text.empty()) {
        return false;
    }
    errno = 0;
    char *end = nullptr;
    const float value = std::strtof(text.c_str(), &end);
    if (errno != 0 || *end != '\0') {
        return false;
    }
    *out = value;
    return true;
}

inline const char *protocolSuffix(int protocol) {
    return protocol == 4 ? "Sip" : protocol == 2 ? "H248" : nullptr;
}

// The exported function for a name: the name itself or, for a parameter that only exists as
// protocol variants, the variant of the current protocol.
inline std::string resolveHandler(const Library &lib, const std::string &name) {
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

inline CallResult callHandler(const Library &lib, const CallRequest &req) {
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
    if (row != nullptr && row->custom != nullptr && !req.kindOverride) {
        int locate[4];
        std::memcpy(locate, req.locate, sizeof(locate));
        const CustomResult custom = row->custom(lib.symbol(result.calledName), req.set, req.value, locate);
        result.called = custom.called;
        result.message = custom.message;
        result.rc = custom.rc;
        result.shown = custom.shown;
        return result;
    }
    const ValueKind kind = req.kindOverride.value_or(row != nullptr ? row->kind : ValueKind::Integer);
    const size_t textSize = row != nullptr && row->textSize != 0 ? row->textSize : kDefaultText;
    if (kind == ValueKind::Directed && !req.direction) {
        result.message = "'" + req.handler + "' needs --direction (0 transmit, 1 receive)";
        return result;
    }

    // The value buffer: large enough for any parameter's text, zero-filled as the agent's is.
    std::vector<char> buffer(std::max<size_t>(4096, req.value.size() + 1), '\0');
    int integer = 0;
    float real = 0;
    void *pValue = buffer.data();
    if (kind == ValueKind::Integer || kind == ValueKind::Directed) {
        pValue = &integer;
        if (req.set && !parseInt(req.value, -2147483648L, 2147483647L, &integer)) {
            result.message = "'" + req.handler + "' takes an integer, not '" + req.value + "'";
            return result;
        }
    } else if (kind == ValueKind::Float) {
        pValue = &real;
        if (req.set && !parseFloat(req.value, &real)) {
            result.message = "'" + req.handler + "' takes a number, not '" + req.value + "'";
            return result;
        }
    } else if (req.set) {
        std::memcpy(buffer.data(), req.value.data(), req.value.size());
    }

    int locate[4];
    std::memcpy(locate, req.locate, sizeof(locate));
    const int nFlag = req.set ? 1 : 0;
    if (kind == ValueKind::Directed) {
        using Handler = int (*)(int, int, void *, int *);
        result.rc = lib.function<Handler>(result.calledName)(nFlag, *req.direction, pValue, locate);
    } else {
        using Handler = int (*)(int, void *, int *);
        result.rc = lib.function<Handler>(result.calledName)(nFlag, pValue, locate);
    }
    result.called = true;
    if (req.set || result.rc != 0) {
        return result;
    }
    char text[64];
    switch (kind) {
        case ValueKind::Integer:
        case ValueKind::Directed:
            std::snprintf(text, sizeof(text), "%d", integer);
            result.shown = text;
            break;
        case ValueKind::Float:
            std::snprintf(text, sizeof(text), "%g", static_cast<double>(real));
            result.shown = text;
            break;
        case ValueKind::Custom:
            break;
        case ValueKind::Text:
            // A text that fills the parameter's buffer carries no terminator.
            result.shown.assign(buffer.data(), strnlen(buffer.data(), textSize));
            break;
    }
    return result;
}

inline std::string describeFailure(int rc) {
    switch (rc) {
        case -1:
            return "the exchange with the voice module failed, its answer was unusable, or the current protocol "
                   "has no such parameter";
        case -2:
            return "the handler refused the arguments (value, line or flag)";
        default:
            return "unexpected result";
    }
}

}  // namespace tr104ctl
