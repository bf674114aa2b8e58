// One handler call by name, as the management agent makes it: find the handler, give it pValue
// of its kind from a text, call it with nFlag and nLocate, and render the value.
#pragma once

#include <optional>
#include <string>

#include "ctl/kinds.h"
#include "ctl/library.h"

namespace tr104ctl {

struct CallRequest {
    std::string handler;
    bool set = false;
    std::string value;  // the value of a set, as text
    int locate[4] = {0, 1, 1, 0};  // nLocate: [1] profile, [2] line, [3] entry
    std::optional<int> direction;  // Directed handlers
    std::optional<int> kindOverride;  // a Tr104MapValueKind given on the command line
};

struct CallResult {
    bool called = false;  // false: the request itself was wrong (message says why)
    std::string message;  // why it was not called
    std::string calledName;  // the exported name actually called
    int rc = 0;
    std::string shown;  // a get's value, rendered
};

CallResult callHandler(const Library &lib, const CallRequest &req);

// What a handler's -1 or -2 means.
std::string describeFailure(int rc);

}  // namespace tr104ctl
