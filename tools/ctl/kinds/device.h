// The client's table of the device handlers: value kind and text size of each (included by
// ctl/value_kinds.h, after HandlerKind).
#pragma once

#include <span>

namespace tr104ctl {

inline constexpr std::span<const HandlerKind> kDeviceKinds{};

}  // namespace tr104ctl
