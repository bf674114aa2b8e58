// Sets by path, applied as one management message.
#include "ctl/path_set.h"

#include <algorithm>
#include <cstdio>

#include "ctl/paths.h"
#include "ctl/startup.h"
#include "tr104/startup.h"

namespace tr104ctl {

bool checkPathSets(const std::vector<std::string> &words, std::vector<PathSet> *sets, std::string *why) {
    if (words.size() % 2 != 0) {
        *why = "'" + words.back() + "' has no value: set takes PATH VALUE pairs";
        return false;
    }
    for (size_t i = 0; i < words.size(); i += 2) {
        PathSet set;
        set.path = words[i];
        CallRequest request;
        if (!looksLikePath(set.path)) {
            *why = "'" + set.path + "' is not a data-model path: only paths are set in pairs";
            return false;
        }
        if (!pathRequest(set.path, true, words[i + 1], &request, &set.entry, why)) {
            return false;
        }
        // The agent's buffer holds the text and its terminator: a longer text is refused before
        // anything is sent rather than by its handler after the pairs before it.
        const size_t size = set.entry->valueKind == TR104_MAP_VALUE_TEXT ? set.entry->valueSize : 0;
        if (size != 0 && request.value.size() >= size) {
            *why = set.path + ": a text of at most " + std::to_string(size - 1) + " characters, not " +
                   std::to_string(request.value.size());
            return false;
        }
        set.handlerValue = request.value;
        std::copy(request.locate, request.locate + 4, set.locate);
        sets->push_back(set);
    }
    return true;
}

namespace {

// Writes now the groups waiting for the given paths (all their pairs' slots), with progress.
bool applyWaitingGroups(const Library &lib, const std::vector<const char *> &paths) {
    std::vector<int> told;
    for (const char *path : paths) {
        const Tr104MapEntry *entry = nullptr;
        if (tr104MapLookup(path, &entry, nullptr, nullptr, 0) == TR104_MAP_SERVED && entry->deferredSlot >= 0 &&
            !readSlot(lib, entry->deferredSlot).idle() &&
            std::find(told.begin(), told.end(), entry->deferredSlot) == told.end()) {
            told.push_back(entry->deferredSlot);
            std::printf("slot %d: writing its staged values now, the rest of its group as the voice module has it\n",
                        entry->deferredSlot);
        }
    }
    std::fflush(stdout);
    char error[256] = "";
    if (tr104MapApplyGroups(paths.data(), static_cast<unsigned>(paths.size()), error, sizeof(error)) != 0) {
        std::fprintf(stderr, "tr104ctl: %s\n", error);
        return false;
    }
    return true;
}

}  // namespace

int runPathSets(Context &context, const std::vector<PathSet> &sets) {
    const Library &lib = context.lib;
    std::vector<const PathSet *> stagedSets;  // pairs whose values wait in a slot
    // A slot written (its group completed, or its values written early) has nothing waiting.
    const auto written = [&stagedSets](int slot) {
        std::erase_if(stagedSets, [slot](const PathSet *s) { return s->entry->deferredSlot == slot; });
    };
    for (const PathSet &set : sets) {
        const int slot = set.entry->deferredSlot;
        if (slot >= 0 && !startDeferredBuffer(context)) {
            return 1;
        }
        // One slot serves every instance of its group (both lines' credentials): values of
        // another instance waiting there are written before this one replaces them.
        const auto waiting = std::find_if(stagedSets.begin(), stagedSets.end(), [&set, slot](const PathSet *other) {
            return other->entry->deferredSlot == slot && !std::equal(set.locate, set.locate + 4, other->locate);
        });
        if (waiting != stagedSets.end()) {
            if (!applyWaitingGroups(lib, {(*waiting)->path.c_str()})) {
                return 1;
            }
            written(slot);
        }
        char error[512] = "";
        const int rc =
            tr104MapCall(set.entry, set.locate, 1, set.handlerValue.c_str(), nullptr, 0, error, sizeof(error));
        std::fflush(stdout);
        if (rc != 0) {
            std::fprintf(stderr, "tr104ctl: %s: %s; the values staged before it are not sent\n", set.path.c_str(),
                         error);
            for (const PathSet *other : stagedSets) {
                resetTr104CfgParamInfo(other->entry->deferredSlot);
            }
            return 1;
        }
        if (slot < 0) {
            std::printf("%s: set\n", set.path.c_str());
        } else if (readSlot(lib, slot).idle()) {
            std::printf("%s: set, completing slot %d: its group written at once\n", set.path.c_str(), slot);
            written(slot);
        } else {
            std::printf("%s: staged in slot %d\n", set.path.c_str(), slot);
            stagedSets.push_back(&set);
        }
    }
    std::fflush(stdout);
    std::vector<const char *> staged;
    for (const PathSet *set : stagedSets) {
        staged.push_back(set->path.c_str());
    }
    return applyWaitingGroups(lib, staged) ? 0 : 1;
}

}  // namespace tr104ctl
