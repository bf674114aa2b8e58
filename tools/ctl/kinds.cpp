// The handlers the client knows, from its own rows and the data-model map.
#include "ctl/kinds.h"

#include <algorithm>
#include <cstring>

namespace tr104ctl {

namespace {

// The gain with its direction.
constexpr HandlerKind kOwnRows[] = {
    {"Tr104LineGain", Convention::Directed, 3, TR104_MAP_VALUE_INT, 4},
};

HandlerKind kindOfEntry(const Tr104MapEntry &e) {
    return valueRow(e.handler, e.arity, e.valueKind, e.valueSize, e.deferredSlot);
}

}  // namespace

std::string baseName(const std::string &name) {
    for (const char *suffix : {"Sip", "H248"}) {
        const size_t len = std::strlen(suffix);
        if (name.size() > len && name.compare(name.size() - len, len, suffix) == 0) {
            return name.substr(0, name.size() - len);
        }
    }
    return name;
}

const std::vector<HandlerKind> &allKinds() {
    static const std::vector<HandlerKind> kinds = [] {
        std::vector<HandlerKind> all(std::begin(kOwnRows), std::end(kOwnRows));
        for (std::span<const HandlerKind> table : {deviceKinds(), h248Kinds(), netcfgKinds()}) {
            all.insert(all.end(), table.begin(), table.end());
        }
        for (unsigned i = 0; i < gTr104MapCount; ++i) {
            const Tr104MapEntry &e = gTr104Map[i];
            const bool known = e.handler == nullptr || std::any_of(all.begin(), all.end(), [&](const HandlerKind &k) {
                                   return std::strcmp(k.name, e.handler) == 0;
                               });
            if (!known) {
                all.push_back(kindOfEntry(e));
            }
        }
        return all;
    }();
    return kinds;
}

const HandlerKind *findKind(const std::string &name) {
    for (const std::string &candidate : {name, baseName(name)}) {
        for (const HandlerKind &row : allKinds()) {
            if (candidate == row.name || (candidate == name && baseName(row.name) == name)) {
                return &row;
            }
        }
    }
    return nullptr;
}

std::string kindName(const HandlerKind &row) {
    switch (row.convention) {
    case Convention::Directed: return "integer with a direction (--direction 0 transmit, 1 receive)";
    case Convention::Custom: return "several values";
    case Convention::Value: break;
    }
    switch (row.valueKind) {
    case TR104_MAP_VALUE_TEXT: return "text";
    case TR104_MAP_VALUE_FLOAT: return "float";
    case TR104_MAP_VALUE_BYTE: return "integer 0..255";
    case TR104_MAP_VALUE_ADDR: return "IPv4 address";
    default: return "integer";
    }
}

}  // namespace tr104ctl
