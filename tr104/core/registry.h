// What the layers above core hand to it: the inbound commands they answer, the deferred-buffer
// groups they apply, and work to do once the deferred buffer is built.  Core names none of their
// functions; it walks the registrations of tr104/library, which lists every layer's.
//
// Every table is constant data (no constructor registers anything), so it is complete before the
// library's own constructors run, and core's reference to the list pulls every layer's objects
// into a static link: no registration can be lost to the linker dropping an object file.
#pragma once

#include <cstdint>
#include <span>

#include "tr104/startup.h"

namespace tr104::core {

// An inbound command id and its handler; a null handler consumes the message silently.
struct InboundCommand {
    uint32_t cmd;
    int (*handler)(const Tr104Msg *msg);
};

// A deferred-buffer slot's group: the function that sends the slot and the number of values
// that complete it.
struct DeferredGroup {
    int slot;
    Tr104CfgApplyFunc apply;
    int32_t paramCount;
};

struct Registration {
    const char *layer;  // folder of the layer, for the checks that read the list
    std::span<const InboundCommand> inbound;
    std::span<const DeferredGroup> groups;
};

// Core's own inbound commands.
extern const Registration kCoreRegistration;

// Every layer's registration, core's included.  Defined by tr104/library.
extern const std::span<const Registration *const> kRegistrations;

// The handler of an inbound command id; `found` tells an unknown id from one consumed silently.
InboundCommand inboundCommand(uint32_t cmd, bool *found);

}  // namespace tr104::core
