// A Set message's groups of the deferred buffer: written at its commit, dropped at its abort.
#include "set_transaction.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "tr104/map.h"
#include "tr104/startup.h"

namespace tr104usp {

template <typename Which>
int SetTransaction::apply(Which which, char *error, unsigned errorLen) {
    std::vector<const char *> paths;
    for (const Staged &s : staged_) {
        if (which(s)) {
            paths.push_back(s.path.c_str());
        }
    }
    const int rc =
        paths.empty() ? 0 : tr104MapApplyGroups(paths.data(), static_cast<unsigned>(paths.size()), error, errorLen);
    std::erase_if(staged_, which);
    return rc;
}

void SetTransaction::start() {
    staged_.clear();
    open_ = true;
}

int SetTransaction::set(const std::string &path, const char *value, char *error, unsigned errorLen) {
    const Tr104MapEntry *entry = nullptr;
    Staged staged{path, -1, {}};
    if (tr104MapLookup(path.c_str(), &entry, staged.locate, nullptr, 0) == TR104_MAP_SERVED) {
        staged.slot = entry->deferredSlot;
    }
    if (staged.slot >= 0 && apply(
                                [&staged](const Staged &s) {
                                    return s.slot == staged.slot && !std::equal(s.locate, s.locate + 4, staged.locate);
                                },
                                error, errorLen) != 0) {
        return -1;
    }
    const int rc = tr104MapSet(path.c_str(), value, error, errorLen);
    if (rc != 0 || staged.slot < 0) {
        return rc;
    }
    staged_.push_back(staged);
    return open_ ? 0 : commit(error, errorLen);
}

int SetTransaction::commit(char *error, unsigned errorLen) {
    open_ = false;
    return apply([](const Staged &) { return true; }, error, errorLen);
}

std::vector<int> SetTransaction::abort() {
    open_ = false;
    std::set<int> slots;
    for (const Staged &s : staged_) {
        slots.insert(s.slot);
    }
    staged_.clear();
    std::vector<int> dropped;
    for (const int slot : slots) {
        if (getTr104CfgParamInfoCfgFlag(slot) != 0) {
            dropped.push_back(slot);
        }
        resetTr104CfgParamInfo(slot);
    }
    return dropped;
}

}  // namespace tr104usp
