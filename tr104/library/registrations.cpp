// The library assembled: every layer's registration with core, in one list.
#include "tr104/core/registry.h"
#include "tr104/framework/framework_internal.h"
#include "tr104/netcfg/netcfg_internal.h"
#include "tr104/sip/sip_internal.h"

namespace tr104::library {
namespace {

constexpr const core::Registration *kAll[] = {
    &core::kCoreRegistration,    &framework::kChangeRegistration,  &sip::kServerRegistration,
    &sip::kIdentityRegistration, &netcfg::kAddressingRegistration, &netcfg::kVlanRegistration,
};

}  // namespace
}  // namespace tr104::library

namespace tr104::core {

constinit const std::span<const Registration *const> kRegistrations{tr104::library::kAll};

}  // namespace tr104::core
