// How the client calls each handler it knows.  The handlers of one data-model parameter take
// their arguments and value from the data-model map (libtr104map) and are called through the
// map's call; the few that are not one parameter have rows of their own (ctl/kinds/): a value
// of one kind without a path, the gain with its direction, and the handlers with several value
// pointers.  A name without a protocol ending covers the wrapper and its variants:
// "Tr104LineEnable" also Tr104LineEnableSip and Tr104LineEnableH248.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tr104/map.h"

namespace tr104ctl {

enum class Convention {
    Value,  // (nFlag, pValue[, nLocate]) with one value of the row's kind: the map's call
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
    Convention convention;
    int arity;  // Value: 2 (nFlag, pValue) or 3 (nFlag, pValue, nLocate)
    int valueKind;  // Value: Tr104MapValueKind
    unsigned int valueSize;  // Value: bytes of the value (a text: the buffer the agent passes)
    // The slot of the deferred parameter buffer a set stages its value in; -1: a set is sent
    // at once.  A staged value reaches the voice module only when its group completes or the
    // slot's timer runs out, so the client keeps running until the slot is applied.
    int deferredSlot = -1;
    CustomCall custom = nullptr;  // Custom: how to call it
};

// Texts of handlers without a path: the agent's usual buffer.
constexpr unsigned int kDefaultText = 256;

// Rows of one value without a path, and a handler of its own convention.
constexpr HandlerKind valueRow(const char *name, int arity, int valueKind, unsigned int size, int slot = -1) {
    return {name, Convention::Value, arity, valueKind, size, slot, nullptr};
}
constexpr HandlerKind customRow(const char *name, CustomCall call) {
    return {name, Convention::Custom, 0, TR104_MAP_VALUE_NONE, 0, -1, call};
}

// The own rows of each area (ctl/kinds/*.cpp).
std::span<const HandlerKind> deviceKinds();
std::span<const HandlerKind> h248Kinds();
std::span<const HandlerKind> netcfgKinds();

// The calls of the handlers with several values, by area (the robustness tests call them too).
namespace device {
CustomResult led(void *handler, bool set, const std::string &value, int *nLocate);
}  // namespace device
namespace net {
CustomResult triple(void *handler, bool set, const std::string &value, int *nLocate);
CustomResult voiceIpAddr(void *handler, bool set, const std::string &value, int *nLocate);
CustomResult dnsAddr(void *handler, bool set, const std::string &value, int *nLocate);
CustomResult privateIp(void *handler, bool set, const std::string &value, int *nLocate);
CustomResult numbers(void *handler, bool set, const std::string &value, int *nLocate);
CustomResult check(void *handler, bool set, const std::string &value, int *nLocate);
}  // namespace net
namespace h248kinds {
CustomResult nameRule(void *handler, bool set, const std::string &value, int *nLocate);
CustomResult ephemeralRangeRule(void *handler, bool set, const std::string &value, int *nLocate);
CustomResult mgcRegister(void *handler, bool set, const std::string &value, int *nLocate);
}  // namespace h248kinds

// The parameter name without its protocol ending.
std::string baseName(const std::string &name);

// Every handler the client knows: the own rows first, then the map's handlers once each.
const std::vector<HandlerKind> &allKinds();

// The row of a handler or of one of its variants; nullptr when the client does not know it.
const HandlerKind *findKind(const std::string &name);

// How `list` names a row's value.
std::string kindName(const HandlerKind &row);

}  // namespace tr104ctl
