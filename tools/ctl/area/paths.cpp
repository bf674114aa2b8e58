// The data model by path: `tr104ctl which [--json] PATH` (the map's entry of a path) and
// `tr104ctl dump [PREFIX] [--json]` (every readable parameter, as a GetParameterValues would).

#include <chrono>
#include <memory>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "ctl/areas.h"
#include "ctl/invoke.h"
#include "ctl/paths.h"

namespace tr104ctl {

namespace {

// The arguments of `which` and `dump`.
struct PathArgs {
    std::string path;  // which: the path; dump: the prefix (empty: everything)
    bool json = false;
};

void defineWhich(CLI::App &command, PathArgs &gArgs) {
    command.add_option("PATH", gArgs.path, "a concrete data-model path")->required();
    command.add_flag("--json", gArgs.json, "one JSON object on one line");
}

void defineDump(CLI::App &command, PathArgs &gArgs) {
    command.add_option("PREFIX", gArgs.path, "only the parameters whose path starts with it");
    command.add_flag("--json", gArgs.json, "a JSON array of {path, value} or {path, fault}");
}

// A path's entry and nLocate.
struct Resolved {
    int rc = TR104_MAP_UNKNOWN;
    const Tr104MapEntry *entry = nullptr;
    int locate[4] = {0, 0, 0, 0};
};

// The handler's value as the map's source names it: "int", "text:66".
std::string valueName(const Tr104MapEntry &e) {
    const std::string kind = tr104MapValueKindName(e.valueKind);
    return e.valueKind == TR104_MAP_VALUE_TEXT ? kind + ":" + std::to_string(e.valueSize) : kind;
}

int runWhich(const PathArgs &gArgs) {
    const std::string &path = gArgs.path;
    const bool json = gArgs.json;
    Resolved r;
    char error[256] = "";
    r.rc = tr104MapLookup(path.c_str(), &r.entry, r.locate, error, sizeof(error));
    if (r.rc == TR104_MAP_UNKNOWN || r.rc == TR104_MAP_MALFORMED) {
        std::fprintf(stderr, "tr104ctl: %s\n", error);
        return 2;
    }
    const Tr104MapEntry &e = *r.entry;
    if (json) {
        nlohmann::ordered_json out;
        out["path"] = path;
        if (r.rc == TR104_MAP_NOT_SERVED) {
            out["served"] = false;
            out["reason"] = e.note;
        } else {
            // A value the map serves itself has no handler: "(map)", and the value it gives.
            out["handler"] = e.fixed != nullptr ? "(map)" : e.handler;
            if (e.fixed != nullptr) {
                out["fixed"] = e.fixed;
            }
            out["nLocate"] = {r.locate[0], r.locate[1], r.locate[2], r.locate[3]};
            out["type"] = e.type;
            out["access"] = e.access;
            if (std::string(e.arg) != "-") {
                out["arg"] = e.arg;
            }
            if (e.hidden != 0) {
                out["hidden"] = true;
            }
        }
        std::printf("%s\n", out.dump().c_str());
    } else if (r.rc == TR104_MAP_NOT_SERVED) {
        std::printf("%s\n  not served: %s\n", path.c_str(), e.note);
    } else if (e.fixed != nullptr) {
        std::printf("%s\n  pattern   %s\n  served by the map itself: %s\n  type      %s, access %s\n", path.c_str(),
                    e.path, e.fixed, e.type, e.access);
    } else {
        std::printf(
            "%s\n  pattern   %s\n  handler   %s (%s)\n  nLocate   [%d, %d, %d, %d]\n"
            "  type      %s, access %s\n  value     %s, conversion %s\n",
            path.c_str(), e.path, e.handler, e.arity == 2 ? "nFlag, pValue" : "nFlag, pValue, nLocate", r.locate[0],
            r.locate[1], r.locate[2], r.locate[3], e.type, e.access, valueName(e).c_str(), e.convert);
        if (std::string(e.note) != "-") {
            std::printf("  note      %s\n", e.note);
        }
        if (e.hidden != 0) {
            std::printf("  hidden    a get by path reads it as empty\n");
        }
    }
    return r.rc == TR104_MAP_SERVED ? 0 : kExitNotServed;
}

// The concrete paths of a pattern for the instances a two-port device has (gTr104MapRanges): profile
// 1, lines, physical interfaces, SIP clients, extensions and phone ports 1 and 2, codec entries 1
// to 5, sessions 1 and 2.
std::vector<std::string> instancesOf(const std::string &pattern) {
    std::vector<std::string> out{""};
    std::string previous;
    size_t at = 0;
    while (at < pattern.size()) {
        const size_t dot = pattern.find('.', at);
        const std::string name = pattern.substr(at, dot == std::string::npos ? std::string::npos : dot - at);
        const std::string sep = dot == std::string::npos ? "" : ".";
        std::vector<std::string> next;
        if (name == "{i}") {
            const int high = tr104MapInstanceCount(previous.c_str());
            for (const std::string &o : out) {
                for (int i = 1; i <= high; ++i) {
                    next.push_back(o + std::to_string(i) + sep);
                }
            }
            out = next;
        } else {
            for (std::string &o : out) {
                o += name + sep;
            }
        }
        previous = name;
        at = dot == std::string::npos ? pattern.size() : dot + 1;
    }
    return out;
}

// Entries of the other protocol are left out: their handlers answer only under it.
bool forProtocol(const Tr104MapEntry &e, int protocol) {
    return e.protocol == 0 || e.protocol == protocol || (protocol != 2 && protocol != 4);
}

int runDump(const Context &context, const PathArgs &gArgs) {
    const bool json = gArgs.json;
    const std::string &prefix = gArgs.path;
    const int *protocol = context.lib.variable<int>("gTr104CurrProtocolType");
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    int read = 0, faults = 0, notRead = 0, consecutiveSlow = 0;
    bool dead = false;
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        const Tr104MapEntry &e = gTr104Map[i];
        // Parameters whose get blocks the caller (the end of a line test) are left out.
        if ((e.handler == nullptr && e.fixed == nullptr) || std::string(e.access).find('R') == std::string::npos ||
            e.blocksCaller != 0 || !forProtocol(e, protocol != nullptr ? *protocol : 0)) {
            continue;
        }
        for (const std::string &path : instancesOf(e.path)) {
            if (!prefix.empty() && path.rfind(prefix, 0) != 0) {
                continue;
            }
            nlohmann::ordered_json item{{"path", path}};
            std::string line;
            if (dead) {
                ++notRead;
                item["fault"] = "not read";
                line = path + " ! not read: the voice module does not answer";
            } else {
                std::vector<char> value(4096, '\0');
                const Clock::time_point t0 = Clock::now();
                // The library's call by path: lookup, the handler's pValue and the conversion.
                const int got = tr104MapGet(path.c_str(), value.data(), value.size(), nullptr, 0);
                const bool slow = Clock::now() - t0 > std::chrono::milliseconds(500);
                if (got == 0) {
                    consecutiveSlow = 0;
                    ++read;
                    item["value"] = value.data();
                    line = path + " = " + value.data();
                } else {
                    ++faults;
                    const int rc = got == -1 ? -1 : -2;
                    item["fault"] = rc;
                    line = path + " ! " + std::to_string(rc) + (rc == -1 ? " exchange failed" : " refused");
                    // Two slow failures in a row: nobody answers; the rest is reported unread.
                    consecutiveSlow = rc == -1 && slow ? consecutiveSlow + 1 : 0;
                    dead = consecutiveSlow >= 2;
                }
            }
            if (json) {
                array.push_back(item);
            } else {
                std::printf("%s\n", line.c_str());
            }
        }
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (json) {
        std::printf("%s\n", array.dump().c_str());
    } else {
        std::printf("# %d read, %d faults, %d not read in %.2f s\n", read, faults, notRead, seconds);
    }
    return dead || read == 0 ? 1 : 0;
}

}  // namespace

std::vector<AreaCommand> pathCommands() {
    auto which = std::make_shared<PathArgs>();
    auto dump = std::make_shared<PathArgs>();
    return {
        {"which", "the handler, nLocate, type and access of a data-model path",
         [which](CLI::App &command) { defineWhich(command, *which); }, [which](Context &) { return runWhich(*which); }},
        {"dump", "every readable parameter under PREFIX, as a GetParameterValues would",
         [dump](CLI::App &command) { defineDump(command, *dump); },
         [dump](Context &context) { return runDump(context, *dump); }},
    };
}

}  // namespace tr104ctl
