// Data-model paths in the client: a path resolves through the map (libtr104map) to its handler
// and nLocate, and values convert between the data model's form and the handler's.
#pragma once

#include <string>
#include <vector>

#include "ctl/invoke.h"
#include "tr104/map.h"

namespace tr104ctl {

// Exit status of `which` for a standard parameter the library does not serve.
constexpr int kExitNotServed = 3;

inline bool looksLikePath(const std::string &name) { return name.find('.') != std::string::npos; }

struct ResolvedPath {
    int rc = TR104_MAP_UNKNOWN;  // tr104MapLookup's result
    const Tr104MapEntry *entry = nullptr;
    int locate[4] = {0, 0, 0, 0};
    std::string error;
};

inline ResolvedPath resolvePath(const std::string &path) {
    ResolvedPath r;
    char error[256] = "";
    r.rc = tr104MapLookup(path.c_str(), &r.entry, r.locate, error, sizeof(error));
    r.error = error;
    if (r.rc == TR104_MAP_NOT_SERVED) {
        r.error = path + ": not served: " + r.entry->note;
    }
    return r;
}

// A handler (or a protocol variant of one) that serves a hidden parameter.
inline bool hiddenHandler(const std::string &name) {
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        const Tr104MapEntry &e = gTr104Map[i];
        if (e.hidden != 0 && e.handler != nullptr && baseName(name) == baseName(e.handler)) {
            return true;
        }
    }
    return false;
}

// The data model's value of a set as the handler takes it; false (and why) when it does not fit
// the parameter's type.  The conversions are libtr104map's, shared with the agent plug-ins.
inline bool toHandlerValue(const Tr104MapEntry &e, const std::string &value, std::string *out, std::string *why) {
    std::vector<char> text(value.size() + 64, '\0');
    char error[512] = "";
    if (tr104MapToHandlerValue(&e, value.c_str(), text.data(), text.size(), error, sizeof(error)) != 0) {
        *why = error;
        return false;
    }
    *out = text.data();
    return true;
}

// The handler's value of a get in the data model's form.
inline std::string toModelValue(const Tr104MapEntry &e, const std::string &shown) {
    std::vector<char> text(shown.size() + 256, '\0');
    tr104MapToModelValue(&e, shown.c_str(), text.data(), text.size());
    return text.data();
}

// A get or set by path: the request for the handler, or why there is none (exit status 2).
inline bool pathRequest(const std::string &path, bool set, const std::string &value, CallRequest *req,
                        const Tr104MapEntry **entry, std::string *why) {
    const Tr104MapEntry *e = nullptr;
    char error[512] = "";
    if (tr104MapResolve(path.c_str(), set ? 1 : 0, &e, req->locate, error, sizeof(error)) != TR104_MAP_SERVED) {
        *why = error;
        return false;
    }
    req->handler = e->handler;
    req->set = set;
    if (set && !toHandlerValue(*e, value, &req->value, why)) {
        *why = path + ": " + *why;
        return false;
    }
    *entry = e;
    return true;
}

}  // namespace tr104ctl
