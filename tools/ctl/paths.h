// Data-model paths in the client: a path resolves through the map (libtr104map) to its handler
// and nLocate, and values convert between the data model's form and the handler's.
#pragma once

#include <string>

#include "ctl/invoke.h"
#include "tr104/map.h"

namespace tr104ctl {

// Exit status of `which` for a standard parameter the library does not serve.
constexpr int kExitNotServed = 3;

inline bool looksLikePath(const std::string &name) { return name.find('.') != std::string::npos; }

// A handler (or a protocol variant of one) that serves a hidden parameter.
bool hiddenHandler(const std::string &name);

// The handler's value of a get in the data model's form.
std::string toModelValue(const Tr104MapEntry &e, const std::string &shown);

// A get or set by path: the request for the handler, or why there is none (exit status 2).
bool pathRequest(const std::string &path, bool set, const std::string &value, CallRequest *req,
                 const Tr104MapEntry **entry, std::string *why);

}  // namespace tr104ctl
