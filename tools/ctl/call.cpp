// `tr104ctl get` and `set` of one handler or path.
#include "ctl/call.h"

#include <cstdio>
#include <optional>

#include "ctl/exit.h"
#include "ctl/paths.h"
#include "ctl/startup.h"

namespace tr104ctl {

namespace {

// A set of a deferred parameter ends only once its slot has been applied: the group's other
// value may never come, and a value still staged when the process ends is lost.
int waitDeferred(const Library &lib, const std::string &calledName, int slot, Clock::time_point since) {
    const SlotState state = readSlot(lib, slot);
    if (!state.idle()) {
        std::printf("%s: staged in slot %d of the deferred buffer; its timer applies it in %d ms\n", calledName.c_str(),
                    slot, deferredTimeoutMs(lib));
        std::fflush(stdout);
    }
    const Millis limit(deferredTimeoutMs(lib) + 5000);
    const std::optional<Millis> took = waitSlotIdle(lib, slot, since, limit);
    if (!took) {
        std::fprintf(stderr, "tr104ctl: slot %d was not applied within %lld ms; the staged value is lost\n", slot,
                     static_cast<long long>(limit.count()));
        return kExitFailed;
    }
    if (state.idle()) {
        std::printf("%s: slot %d applied at once\n", calledName.c_str(), slot);
    } else {
        std::printf("%s: slot %d applied by its timer after %.1f s\n", calledName.c_str(), slot,
                    static_cast<double>(took->count()) / 1000.0);
    }
    return 0;
}

}  // namespace

// One get or set, as the agent makes it.
int runCall(Context &context, const CallRequest &requested) {
    const Library &lib = context.lib;
    // A data-model path names its handler and instance numbers through the map; its value
    // converts between the data model's form and the handler's.
    CallRequest call = requested;
    const Tr104MapEntry *entry = nullptr;
    if (looksLikePath(requested.handler)) {
        std::string why;
        if (!pathRequest(requested.handler, requested.set, requested.value, &call, &entry, &why)) {
            return fail(why);
        }
        if (entry->fixed != nullptr) {
            // The map's own value (a reference, an instance count): no handler is called.
            char value[512] = "", error[512] = "";
            if (tr104MapGet(requested.handler.c_str(), value, sizeof(value), error, sizeof(error)) != 0) {
                return fail(error);
            }
            std::printf("%s\n", value);
            return 0;
        }
    }
    const HandlerKind *row = findKind(call.handler);
    const int slot = call.set && row != nullptr ? row->deferredSlot : -1;
    if (slot >= 0 && !startDeferredBuffer(context)) {
        return kExitFailed;
    }
    const Clock::time_point start = Clock::now();
    const CallResult result = callHandler(lib, call);
    std::fflush(stdout);
    if (!result.called) {
        return fail(result.message);
    }
    if (result.rc != 0) {
        std::fprintf(stderr, "tr104ctl: %s returned %d: %s\n", result.calledName.c_str(), result.rc,
                     describeFailure(result.rc).c_str());
        return kExitFailed;
    }
    if (slot >= 0) {
        return waitDeferred(lib, result.calledName, slot, start);
    }
    if (!call.set) {
        // A hidden value (a password) reads as empty, by path and by handler name alike.
        const bool hidden = entry != nullptr ? entry->hidden != 0 : hiddenHandler(result.calledName);
        const std::string shown = hidden ? "" : result.shown;
        std::printf("%s\n", entry != nullptr ? toModelValue(*entry, shown).c_str() : shown.c_str());
    }
    return 0;
}

}  // namespace tr104ctl
