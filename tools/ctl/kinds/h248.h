// The client's table of the h248 handlers: value kind and text size of each (included by
// ctl/value_kinds.h, after HandlerKind).
#pragma once

#include <span>

namespace tr104ctl {

inline constexpr std::span<const HandlerKind> kH248Kinds{};

}  // namespace tr104ctl
