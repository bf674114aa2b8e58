// Resolving a concrete data-model path to its entry of the map and the nLocate array.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "tr104/map.h"

namespace {

struct Range {
    long low, high;
};

// Tables the library does not serve take any instance number.
Range rangeOf(std::string_view object) {
    for (unsigned i = 0; i < gTr104MapRangeCount; ++i) {
        if (object == gTr104MapRanges[i].object) {
            return {gTr104MapRanges[i].low, gTr104MapRanges[i].high};
        }
    }
    return {1, 65535};
}

// Next dot-separated name of a path, from `at`; false at the end.
bool nextName(std::string_view path, size_t *at, std::string_view *name) {
    if (*at > path.size()) {
        return false;
    }
    const size_t dot = path.find('.', *at);
    const size_t end = dot == std::string_view::npos ? path.size() : dot;
    *name = path.substr(*at, end - *at);
    *at = end + 1;
    return true;
}

enum class Match { Yes, No, BadInstance };

// Compares a concrete path with a pattern; fills the instance numbers and, for a bad instance,
// the message.
Match matchPattern(std::string_view pattern, std::string_view path, long *numbers, char *error, unsigned errorLen) {
    size_t pa = 0, pp = 0;
    std::string_view want, got, previous;
    int n = 0;
    for (;;) {
        const bool moreWant = nextName(pattern, &pa, &want);
        const bool moreGot = nextName(path, &pp, &got);
        if (!moreWant || !moreGot) {
            return moreWant == moreGot ? Match::Yes : Match::No;
        }
        if (want == "{i}") {
            const Range r = rangeOf(previous);
            char *end = nullptr;
            const std::string text(got);
            const long v = std::strtol(text.c_str(), &end, 10);
            const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
            if (!digits || *end != '\0' || v < r.low || v > r.high) {
                if (error != nullptr && errorLen != 0) {
                    std::snprintf(error, errorLen, "instance '%.*s' of %.*s: not %ld..%ld",
                                  static_cast<int>(got.size()), got.data(), static_cast<int>(previous.size()),
                                  previous.data(), r.low, r.high);
                }
                return Match::BadInstance;
            }
            if (n < 4) {
                numbers[n] = v;
            }
            ++n;
        } else if (want != got) {
            return Match::No;
        }
        previous = want;
    }
}

// The fixed instance numbers of an entry: "nLocate[K]=N", comma-separated.
void fixInstances(const char *arg, int *nLocate) {
    for (const char *at = arg; at != nullptr; at = std::strchr(at, ',')) {
        at += *at == ',' ? 1 : 0;
        unsigned index = 0;
        int fixed = 0;
        if (std::sscanf(at, "nLocate[%u]=%d", &index, &fixed) == 2 && index < 4) {
            nLocate[index] = fixed;
        }
    }
}

void say(char *error, unsigned errorLen, const char *text, std::string_view path) {
    if (error != nullptr && errorLen != 0) {
        std::snprintf(error, errorLen, "%s: '%.*s'", text, static_cast<int>(path.size()), path.data());
    }
}

}  // namespace

// Instances a two-port device has, in both trees (the second tree's SIP clients, extensions and
// phone ports are its lines; its one SIP network and VoIP profile the voice profile; its codec
// profiles and codec capabilities the codec table; its calling-features sets the lines' features).
extern "C" TR104_MAP_API const Tr104MapRange gTr104MapRanges[] = {
    {"VoiceService", 1, 1}, {"VoiceProfile", 1, 1}, {"Line", 1, 2},   {"PhyInterface", 1, 2}, {"Codecs", 1, 5},
    {"List", 1, 5},         {"Session", 1, 2},      {"Client", 1, 2}, {"Network", 1, 1},      {"Extension", 1, 2},
    {"FXS", 1, 2},          {"VoIPProfile", 1, 1},  {"Codec", 1, 5},  {"CodecProfile", 1, 5}, {"Set", 1, 2},
};
extern "C" TR104_MAP_API const unsigned int gTr104MapRangeCount = sizeof(gTr104MapRanges) / sizeof(gTr104MapRanges[0]);

extern "C" TR104_MAP_API int tr104MapInstanceCount(const char *object) {
    for (unsigned i = 0; object != nullptr && i < gTr104MapRangeCount; ++i) {
        if (std::strcmp(object, gTr104MapRanges[i].object) == 0) {
            return gTr104MapRanges[i].high;
        }
    }
    return 1;
}

extern "C" TR104_MAP_API int tr104MapLookup(const char *path, const Tr104MapEntry **entry, int *nLocate, char *error,
                                            unsigned int errorLen) {
    if (entry != nullptr) {
        *entry = nullptr;
    }
    if (nLocate != nullptr) {
        std::memset(nLocate, 0, 4 * sizeof(int));
    }
    if (path == nullptr || path[0] == '\0') {
        say(error, errorLen, "empty path", "");
        return TR104_MAP_MALFORMED;
    }
    const std::string_view p(path);
    if (p.back() == '.' || p.front() == '.' || p.find("..") != std::string_view::npos) {
        say(error, errorLen, "a parameter path has no empty name (no leading, trailing or double dot)", p);
        return TR104_MAP_MALFORMED;
    }
    bool badInstance = false;
    char firstProblem[160] = "";
    for (unsigned int i = 0; i < gTr104MapCount; ++i) {
        const Tr104MapEntry &e = gTr104Map[i];
        long numbers[4] = {0, 0, 0, 0};
        char problem[160] = "";
        const Match m = matchPattern(e.path, p, numbers, problem, sizeof(problem));
        if (m == Match::BadInstance) {
            if (!badInstance) {
                std::memcpy(firstProblem, problem, sizeof(problem));
            }
            badInstance = true;
            continue;
        }
        if (m == Match::No) {
            continue;
        }
        if (entry != nullptr) {
            *entry = &e;
        }
        if (nLocate != nullptr) {
            for (int k = 0; k < e.instances && k < 4; ++k) {
                if (e.fixed != nullptr) {
                    nLocate[k] = static_cast<int>(numbers[k]);
                } else if (e.locate[k] >= 0) {
                    nLocate[e.locate[k]] = static_cast<int>(numbers[k]);
                }
            }
            fixInstances(e.arg, nLocate);
        }
        return e.handler != nullptr || e.fixed != nullptr ? TR104_MAP_SERVED : TR104_MAP_NOT_SERVED;
    }
    if (badInstance) {
        if (error != nullptr && errorLen != 0) {
            std::snprintf(error, errorLen, "%s: '%s'", firstProblem, path);
        }
        return TR104_MAP_MALFORMED;
    }
    say(error, errorLen, "no such parameter in the voice data model", p);
    return TR104_MAP_UNKNOWN;
}

extern "C" TR104_MAP_API const Tr104MapEntry *tr104MapFind(const char *pattern) {
    if (pattern == nullptr) {
        return nullptr;
    }
    for (unsigned int i = 0; i < gTr104MapCount; ++i) {
        if (std::strcmp(gTr104Map[i].path, pattern) == 0) {
            return &gTr104Map[i];
        }
    }
    return nullptr;
}
