// Data-model paths in the client: a path resolves through the map (libtr104map) to its handler
// and nLocate, and values convert between the data model's form and the handler's.
#pragma once

#include <arpa/inet.h>

#include <cerrno>
#include <cstdlib>
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

// The pairs of an "enum:TEXT=N,..." conversion.
inline std::vector<std::pair<std::string, std::string>> enumPairs(const std::string &convert) {
    std::vector<std::pair<std::string, std::string>> pairs;
    size_t at = 5;  // after "enum:"
    while (at < convert.size()) {
        const size_t comma = convert.find(',', at);
        const std::string item = convert.substr(at, comma == std::string::npos ? std::string::npos : comma - at);
        const size_t eq = item.find('=');
        pairs.emplace_back(item.substr(0, eq), item.substr(eq + 1));
        at = comma == std::string::npos ? convert.size() : comma + 1;
    }
    return pairs;
}

// The data model's value of a set as the handler takes it; false (and why) when it does not fit
// the parameter's type.
inline bool toHandlerValue(const Tr104MapEntry &e, const std::string &value, std::string *out, std::string *why) {
    const std::string type = e.type;
    const std::string convert = e.convert;
    if (convert == "bool01" || type == "boolean") {
        if (value == "true" || value == "1") {
            *out = "1";
        } else if (value == "false" || value == "0") {
            *out = "0";
        } else {
            *why = "a boolean is true, false, 1 or 0, not '" + value + "'";
            return false;
        }
        return true;
    }
    if (convert.rfind("enum:", 0) == 0) {
        std::string names;
        for (const auto &[text, number] : enumPairs(convert)) {
            if (text == value) {
                *out = number;
                return true;
            }
            names += (names.empty() ? "" : ", ") + text;
        }
        *why = "'" + value + "' is not one of " + names;
        return false;
    }
    if (convert == "dotted") {
        in_addr addr{};
        if (inet_pton(AF_INET, value.c_str(), &addr) != 1) {
            *why = "'" + value + "' is not an IPv4 address";
            return false;
        }
    } else if (type == "int" || type == "unsignedInt") {
        errno = 0;
        char *end = nullptr;
        const long long v = std::strtoll(value.c_str(), &end, 10);
        const long long low = type == "int" ? -2147483648LL : 0;
        const long long high = type == "int" ? 2147483647LL : 4294967295LL;
        if (value.empty() || *end != '\0' || errno != 0 || v < low || v > high) {
            *why = "'" + value + "' is not " + (type == "int" ? "an int" : "an unsignedInt");
            return false;
        }
    } else if (type == "float") {
        char *end = nullptr;
        std::strtod(value.c_str(), &end);
        if (value.empty() || *end != '\0') {
            *why = "'" + value + "' is not a number";
            return false;
        }
    }
    *out = value;
    return true;
}

// The handler's value of a get in the data model's form.
inline std::string toModelValue(const Tr104MapEntry &e, const std::string &shown) {
    const std::string convert = e.convert;
    if (convert == "bool01") {
        return shown == "0" ? "false" : "true";
    }
    if (convert.rfind("enum:", 0) == 0) {
        for (const auto &[text, number] : enumPairs(convert)) {
            if (number == shown) {
                return text;
            }
        }
    }
    return shown;
}

// A get or set by path: the request for the handler, or why there is none (exit status 2).
inline bool pathRequest(const std::string &path, bool set, const std::string &value, CallRequest *req,
                        const Tr104MapEntry **entry, std::string *why) {
    const ResolvedPath r = resolvePath(path);
    if (r.rc != TR104_MAP_SERVED) {
        *why = r.error;
        return false;
    }
    const std::string access = r.entry->access;
    if (set && access.find('W') == std::string::npos) {
        *why = path + ": read only";
        return false;
    }
    if (!set && access.find('R') == std::string::npos) {
        *why = path + ": write only";
        return false;
    }
    req->handler = r.entry->handler;
    req->set = set;
    std::copy(std::begin(r.locate), std::end(r.locate), req->locate);
    if (set && !toHandlerValue(*r.entry, value, &req->value, why)) {
        *why = path + ": " + *why;
        return false;
    }
    *entry = r.entry;
    return true;
}

}  // namespace tr104ctl
