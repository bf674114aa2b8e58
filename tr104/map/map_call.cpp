// Calls by path: the conversions between the data model's values and the handlers' values, and
// the call of an entry's handler with pValue of its kind.  The client and the agent plug-ins use
// these, so that every caller converts and calls alike.
#include <arpa/inet.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "tr104/map.h"

namespace {

void say(char *error, unsigned len, const std::string &text) {
    if (error != nullptr && len != 0) {
        std::snprintf(error, len, "%s", text.c_str());
    }
}

void put(char *out, unsigned len, std::string_view text) {
    if (out != nullptr && len != 0) {
        std::snprintf(out, len, "%.*s", static_cast<int>(text.size()), text.data());
    }
}

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

// Calls fn(text, number) for each pair of an "enum:TEXT=N,..." conversion until it returns true.
template <typename Fn>
bool forEachPair(std::string_view convert, Fn fn) {
    std::string_view rest = convert.substr(5);  // after "enum:"
    while (!rest.empty()) {
        const size_t comma = rest.find(',');
        const std::string_view item = rest.substr(0, comma);
        const size_t eq = item.find('=');
        if (fn(item.substr(0, eq), eq == std::string_view::npos ? std::string_view() : item.substr(eq + 1))) {
            return true;
        }
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    }
    return false;
}

// A whole decimal text within [low, high].
bool parseInteger(const char *text, long long low, long long high, long long *out) {
    errno = 0;
    char *end = nullptr;
    const long long v = std::strtoll(text, &end, 10);
    if (text[0] == '\0' || *end != '\0' || errno != 0 || v < low || v > high) {
        return false;
    }
    *out = v;
    return true;
}

// A value the map serves itself: {N} becomes the path's N-th instance number, {#Object} the
// instances of the object.
std::string fixedValue(const char *pattern, const int *numbers) {
    std::string out;
    for (const char *at = pattern; *at != '\0'; ++at) {
        const char *close = *at == '{' ? std::strchr(at, '}') : nullptr;
        if (close == nullptr) {
            out += *at;
            continue;
        }
        const std::string inside(at + 1, close);
        if (!inside.empty() && inside[0] == '#') {
            out += std::to_string(tr104MapInstanceCount(inside.c_str() + 1));
        } else {
            const int n = std::atoi(inside.c_str());
            out += n >= 1 && n <= 4 && numbers != nullptr ? std::to_string(numbers[n - 1]) : "";
        }
        at = close;
    }
    return out;
}

const char *meaning(int rc) {
    switch (rc) {
    case -1: return "the exchange with the voice module failed or its answer was unusable";
    case -2: return "the handler refused the value or the instance";
    default: return "unexpected result";
    }
}

}  // namespace

extern "C" TR104_MAP_API int tr104MapResolve(const char *path, int set, const Tr104MapEntry **entry, int *locate,
                                             char *error, unsigned int errorLen) {
    char why[256] = "";
    const int rc = tr104MapLookup(path, entry, locate, why, sizeof(why));
    if (rc == TR104_MAP_NOT_SERVED) {
        say(error, errorLen, std::string(path) + ": not served: " + (*entry)->note);
        return TR104_MAP_BAD_PATH;
    }
    if (rc != TR104_MAP_SERVED) {
        say(error, errorLen, why);
        return TR104_MAP_BAD_PATH;
    }
    if (std::strchr((*entry)->access, set != 0 ? 'W' : 'R') == nullptr) {
        say(error, errorLen, std::string(path) + (set != 0 ? ": read only" : ": write only"));
        return TR104_MAP_NO_ACCESS;
    }
    return TR104_MAP_SERVED;
}

extern "C" TR104_MAP_API int tr104MapToHandlerValue(const Tr104MapEntry *entry, const char *value, char *out,
                                                    unsigned int outLen, char *error, unsigned int errorLen) {
    const std::string_view type = entry->type, convert = entry->convert;
    std::string v = value != nullptr ? value : "";
    // A boolean kept by its handler as a text ("Enabled"): its conversion names true and false.
    if (type == "boolean" && startsWith(convert, "enum:") && (v == "1" || v == "0")) {
        v = v == "1" ? "true" : "false";
    }
    if (convert == "bool01" || (type == "boolean" && !startsWith(convert, "enum:"))) {
        if (v == "true" || v == "1" || v == "false" || v == "0") {
            put(out, outLen, v == "true" || v == "1" ? "1" : "0");
            return 0;
        }
        say(error, errorLen, "a boolean is true, false, 1 or 0, not '" + v + "'");
        return TR104_MAP_BAD_VALUE;
    }
    if (startsWith(convert, "enum:")) {
        std::string names;
        const bool found = forEachPair(convert, [&](std::string_view text, std::string_view number) {
            if (text == v) {
                put(out, outLen, number);
                return true;
            }
            if (("|" + names + "|").find("|" + std::string(text) + "|") == std::string::npos) {
                names += (names.empty() ? "" : "|") + std::string(text);
            }
            return false;
        });
        if (!found) {
            for (size_t bar = names.find('|'); bar != std::string::npos; bar = names.find('|', bar)) {
                names.replace(bar, 1, ", ");
            }
            say(error, errorLen, "'" + v + "' is not one of " + names);
        }
        return found ? 0 : TR104_MAP_BAD_VALUE;
    }
    long long number = 0;
    in_addr addr{};
    if (convert == "dotted") {
        if (inet_pton(AF_INET, v.c_str(), &addr) != 1) {
            say(error, errorLen, "'" + v + "' is not an IPv4 address");
            return TR104_MAP_BAD_VALUE;
        }
    } else if (type == "int" || type == "unsignedInt") {
        const bool isInt = type == "int";
        if (!parseInteger(v.c_str(), isInt ? INT32_MIN : 0, isInt ? INT32_MAX : UINT32_MAX, &number)) {
            say(error, errorLen, "'" + v + "' is not " + (isInt ? "an int" : "an unsignedInt"));
            return TR104_MAP_BAD_VALUE;
        }
    } else if (type == "float") {
        char *end = nullptr;
        std::strtod(v.c_str(), &end);
        if (v.empty() || *end != '\0') {
            say(error, errorLen, "'" + v + "' is not a number");
            return TR104_MAP_BAD_VALUE;
        }
    }
    put(out, outLen, v);
    return 0;
}

extern "C" TR104_MAP_API void tr104MapToModelValue(const Tr104MapEntry *entry, const char *shown, char *out,
                                                   unsigned int outLen) {
    const std::string_view convert = entry->convert, s = shown != nullptr ? shown : "";
    if (convert == "bool01") {
        put(out, outLen, s == "0" ? "false" : "true");
        return;
    }
    if (startsWith(convert, "enum:") && forEachPair(convert, [&](std::string_view text, std::string_view number) {
            if (number == s) {
                put(out, outLen, text);
                return true;
            }
            return false;
        })) {
        return;
    }
    put(out, outLen, s);
}

extern "C" TR104_MAP_API const char *tr104MapValueKindName(int valueKind) {
    switch (valueKind) {
    case TR104_MAP_VALUE_INT: return "int";
    case TR104_MAP_VALUE_FLOAT: return "float";
    case TR104_MAP_VALUE_BYTE: return "byte";
    case TR104_MAP_VALUE_ADDR: return "addr";
    case TR104_MAP_VALUE_TEXT: return "text";
    default: return "-";
    }
}

extern "C" TR104_MAP_API int tr104MapCall(const Tr104MapEntry *entry, const int *nLocate, int set,
                                          const char *handlerValue, char *shown, unsigned int shownLen, char *error,
                                          unsigned int errorLen) {
    if (entry != nullptr && entry->fixed != nullptr) {
        if (set != 0) {
            say(error, errorLen, "the map's own value is read only");
            return TR104_MAP_NO_ACCESS;
        }
        put(shown, shownLen, fixedValue(entry->fixed, nLocate));
        return 0;
    }
    if (entry == nullptr || entry->fn == nullptr) {
        say(error, errorLen, "no handler serves this parameter");
        return TR104_MAP_BAD_PATH;
    }
    const int kind = entry->valueKind;
    const char *text = handlerValue != nullptr ? handlerValue : "";
    // pValue: one buffer, zero-filled as the agent's is, large enough for any parameter's text.
    union {
        int word;
        float real;
        uint8_t byte;
        uint32_t address;
        char text[4096];
    } value;
    std::memset(&value, 0, sizeof(value));
    if (set != 0) {
        long long number = 0;
        const std::string handler = std::string("'") + entry->handler + "'";
        std::string wrong;
        if (kind == TR104_MAP_VALUE_INT) {
            wrong = parseInteger(text, INT32_MIN, INT32_MAX, &number) ? "" : handler + " takes an integer";
            value.word = static_cast<int>(number);
        } else if (kind == TR104_MAP_VALUE_BYTE) {
            wrong = parseInteger(text, 0, 255, &number) ? "" : handler + " takes 0..255";
            value.byte = static_cast<uint8_t>(number);
        } else if (kind == TR104_MAP_VALUE_ADDR) {
            if (inet_pton(AF_INET, text, &value.address) != 1) {
                say(error, errorLen, std::string("'") + text + "' is not an IPv4 address");
                return TR104_MAP_BAD_VALUE;
            }
        } else if (kind == TR104_MAP_VALUE_FLOAT) {
            char *end = nullptr;
            errno = 0;
            value.real = std::strtof(text, &end);
            wrong = text[0] != '\0' && *end == '\0' && errno == 0 ? "" : handler + " takes a number";
        } else {
            std::memcpy(value.text, text, std::min(std::strlen(text), sizeof(value.text) - 1));
        }
        if (!wrong.empty()) {
            say(error, errorLen, wrong + ", not '" + text + "'");
            return TR104_MAP_BAD_VALUE;
        }
    }
    int locate[4] = {0, 0, 0, 0};
    if (nLocate != nullptr) {
        std::memcpy(locate, nLocate, sizeof(locate));
    }
    const int rc = entry->arity == 2
                       ? reinterpret_cast<int (*)(int, void *)>(entry->fn)(set != 0 ? 1 : 0, &value)
                       : reinterpret_cast<int (*)(int, void *, int *)>(entry->fn)(set != 0 ? 1 : 0, &value, locate);
    if (rc != 0) {
        say(error, errorLen, std::string(entry->handler) + " returned " + std::to_string(rc) + ": " + meaning(rc));
        return rc;
    }
    if (set == 0) {
        char line[64];
        if (kind == TR104_MAP_VALUE_INT) {
            std::snprintf(line, sizeof(line), "%d", value.word);
        } else if (kind == TR104_MAP_VALUE_BYTE) {
            std::snprintf(line, sizeof(line), "%u", value.byte);
        } else if (kind == TR104_MAP_VALUE_ADDR) {
            inet_ntop(AF_INET, &value.address, line, sizeof(line));
        } else if (kind == TR104_MAP_VALUE_FLOAT) {
            std::snprintf(line, sizeof(line), "%g", static_cast<double>(value.real));
        } else {
            // A text that fills the parameter's buffer carries no terminator.
            const size_t size = std::min<size_t>(entry->valueSize, sizeof(value.text));
            put(shown, shownLen, std::string_view(value.text, strnlen(value.text, size)));
            return 0;
        }
        put(shown, shownLen, line);
    }
    return 0;
}

extern "C" TR104_MAP_API int tr104MapGet(const char *path, char *value, unsigned int valueLen, char *error,
                                         unsigned int errorLen) {
    const Tr104MapEntry *entry = nullptr;
    int locate[4];
    int rc = tr104MapResolve(path, 0, &entry, locate, error, errorLen);
    if (rc != TR104_MAP_SERVED) {
        return rc;
    }
    char shown[4096] = "", why[256] = "";
    rc = tr104MapCall(entry, locate, 0, nullptr, shown, sizeof(shown), why, sizeof(why));
    if (rc != 0) {
        say(error, errorLen, std::string(path) + ": " + why);
        return rc;
    }
    // The standard hides these values from whoever reads the data model; the handler itself
    // still answers them to the management agent.
    tr104MapToModelValue(entry, entry->hidden != 0 ? "" : shown, value, valueLen);
    return 0;
}

extern "C" TR104_MAP_API int tr104MapSet(const char *path, const char *value, char *error, unsigned int errorLen) {
    const Tr104MapEntry *entry = nullptr;
    int locate[4];
    int rc = tr104MapResolve(path, 1, &entry, locate, error, errorLen);
    if (rc != TR104_MAP_SERVED) {
        return rc;
    }
    char handlerValue[4096] = "", why[256] = "";
    rc = tr104MapToHandlerValue(entry, value, handlerValue, sizeof(handlerValue), why, sizeof(why));
    if (rc == 0) {
        rc = tr104MapCall(entry, locate, 1, handlerValue, nullptr, 0, why, sizeof(why));
    }
    if (rc != 0) {
        say(error, errorLen, std::string(path) + ": " + why);
    }
    return rc;
}
