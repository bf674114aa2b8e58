// `tr104ctl list`: the handlers the client knows and the kind of their values.
#pragma once

namespace tr104ctl {

int listHandlers();

}  // namespace tr104ctl
