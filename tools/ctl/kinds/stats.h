// The client's table of the stats handlers: value kind and text size of each (included by
// ctl/value_kinds.h, after HandlerKind).
#pragma once

#include <span>

namespace tr104ctl {

inline constexpr std::span<const HandlerKind> kStatsKinds{};

}  // namespace tr104ctl
