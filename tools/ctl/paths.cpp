// Paths through the map; the conversions are libtr104map's, shared with the agent plug-ins.
#include "ctl/paths.h"

#include <vector>

namespace tr104ctl {

bool hiddenHandler(const std::string &name) {
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        const Tr104MapEntry &e = gTr104Map[i];
        if (e.hidden != 0 && e.handler != nullptr && baseName(name) == baseName(e.handler)) {
            return true;
        }
    }
    return false;
}

std::string toModelValue(const Tr104MapEntry &e, const std::string &shown) {
    std::vector<char> text(shown.size() + 256, '\0');
    tr104MapToModelValue(&e, shown.c_str(), text.data(), text.size());
    return text.data();
}

bool pathRequest(const std::string &path, bool set, const std::string &value, CallRequest *req,
                 const Tr104MapEntry **entry, std::string *why) {
    const Tr104MapEntry *e = nullptr;
    char error[512] = "";
    if (tr104MapResolve(path.c_str(), set ? 1 : 0, &e, req->locate, error, sizeof(error)) != TR104_MAP_SERVED) {
        *why = error;
        return false;
    }
    // A value the map serves itself has no handler to call (runCall reads it from the map).
    req->handler = e->handler != nullptr ? e->handler : "";
    req->set = set;
    if (set) {
        std::vector<char> text(value.size() + 64, '\0');
        if (tr104MapToHandlerValue(e, value.c_str(), text.data(), text.size(), error, sizeof(error)) != 0) {
            *why = path + ": " + error;
            return false;
        }
        req->value = text.data();
    }
    *entry = e;
    return true;
}

}  // namespace tr104ctl
