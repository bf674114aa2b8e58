// What kind of value each handler takes, so that the client can pass it the right pValue.
//
// The handlers of one data-model parameter take their kind from the data-model map (libtr104map:
// the handler's value, its arguments and its deferred group); the few that are not one parameter
// (several values, a direction, no arguments) have rows of their own in ctl/kinds/.  A name
// without a protocol ending covers the wrapper and its variants: "Tr104LineEnable" also
// Tr104LineEnableSip and Tr104LineEnableH248.
#pragma once

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "tr104/map.h"

namespace tr104ctl {

enum class ValueKind {
    Integer,  // pValue points to a 32-bit integer
    Text,  // pValue points to a character buffer
    Float,  // pValue points to a single-precision float
    Directed,  // Tr104LineGainSip: an integer direction before pValue (non-zero receive)
    Custom,  // its own arguments: the row's `custom` calls it
};

// What a handler with its own calling convention (several value pointers, say) did.
struct CustomResult {
    bool called = false;  // false: the request was wrong, message says why
    std::string message;
    int rc = 0;
    std::string shown;  // a get's value, rendered
};
// Calls `handler` (the exported function, resolved by name) with the value text of a set, and
// renders what a get returned.
using CustomCall = CustomResult (*)(void *handler, bool set, const std::string &value, int *nLocate);

struct HandlerKind {
    const char *name;
    ValueKind kind;
    size_t textSize;  // Text: the parameter's buffer size (what the agent would pass)
    // The slot of the deferred parameter buffer a set stages its value in; -1: a set is sent
    // at once.  A staged value reaches the voice module only when its group completes or the
    // slot's timer runs out, so the client keeps running until the slot is applied.
    int deferredSlot = -1;
    // Handlers whose arguments are not (nFlag, pValue, nLocate): how to call them.
    CustomCall custom = nullptr;
};

constexpr size_t kDefaultText = 256;
// Server address and line identity texts: at most 65 characters and a terminator.
constexpr size_t kAddressText = 66;

// Handlers of their own kind outside the areas: the gain with its direction.
inline constexpr HandlerKind kHandlerKinds[] = {
    {"Tr104LineGain", ValueKind::Directed, 0},
};

}  // namespace tr104ctl

// The rows of the handlers that are not one parameter, and the calls of two-argument handlers.
#include "ctl/kinds/device.h"
#include "ctl/kinds/h248.h"
#include "ctl/kinds/netcfg.h"

namespace tr104ctl {

// The parameter name without its protocol ending.
inline std::string baseName(const std::string &name) {
    for (const char *suffix : {"Sip", "H248"}) {
        const size_t len = std::strlen(suffix);
        if (name.size() > len && name.compare(name.size() - len, len, suffix) == 0) {
            return name.substr(0, name.size() - len);
        }
    }
    return name;
}

// The kind of a map entry's handler.
inline HandlerKind kindOfEntry(const Tr104MapEntry &e) {
    HandlerKind k{e.handler, ValueKind::Integer, 0};
    const bool text = e.valueKind == TR104_MAP_VALUE_TEXT;
    if (e.arity == 2) {
        k.kind = ValueKind::Custom;
        k.custom = text                                  ? device::text
                   : e.valueKind == TR104_MAP_VALUE_ADDR ? net::address
                   : e.valueKind == TR104_MAP_VALUE_BYTE ? net::byte
                                                         : device::integer;
    } else if (text) {
        k.kind = ValueKind::Text;
        k.textSize = e.valueSize;
    } else if (e.valueKind == TR104_MAP_VALUE_FLOAT) {
        k.kind = ValueKind::Float;
    }
    k.deferredSlot = e.deferredSlot;
    return k;
}

// Every handler the client knows: the own rows first, then the map's handlers once each.
inline const std::vector<HandlerKind> &allKinds() {
    static const std::vector<HandlerKind> kinds = [] {
        std::vector<HandlerKind> all;
        for (std::span<const HandlerKind> table :
             {std::span<const HandlerKind>(kHandlerKinds), kDeviceKinds, kH248Kinds, kNetcfgKinds}) {
            all.insert(all.end(), table.begin(), table.end());
        }
        for (unsigned i = 0; i < gTr104MapCount; ++i) {
            const Tr104MapEntry &e = gTr104Map[i];
            const bool known = e.handler == nullptr || std::any_of(all.begin(), all.end(), [&](const HandlerKind &k) {
                                   return std::strcmp(k.name, e.handler) == 0;
                               });
            if (!known) {
                all.push_back(kindOfEntry(e));
            }
        }
        return all;
    }();
    return kinds;
}

// The row of a handler or of one of its variants; nullptr when the client does not know it.
inline const HandlerKind *findKind(const std::string &name) {
    for (const std::string &candidate : {name, baseName(name)}) {
        for (const HandlerKind &row : allKinds()) {
            if (candidate == row.name || (candidate == name && baseName(row.name) == name)) {
                return &row;
            }
        }
    }
    return nullptr;
}

inline const char *kindName(ValueKind kind) {
    switch (kind) {
    case ValueKind::Integer: return "integer";
    case ValueKind::Text: return "text";
    case ValueKind::Float: return "float";
    case ValueKind::Directed: return "integer with a direction (--direction 0 transmit, 1 receive)";
    case ValueKind::Custom: return "several values";
    }
    return "?";
}

}  // namespace tr104ctl
