// The H.248 handlers that take several values: the naming rules and the registration with a
// controller.  The other H.248 handlers take their kind from the data-model map.
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "ctl/kinds.h"

namespace tr104ctl {

namespace h248kinds {

// "a,b,c" -> {"a", "b", "c"}
static std::vector<std::string> splitValues(const std::string &text) {
    std::vector<std::string> parts;
    std::stringstream in(text);
    std::string part;
    while (std::getline(in, part, ',')) {
        parts.push_back(part);
    }
    return parts;
}

static bool toWord(const std::string &text, uint32_t *out) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos || text.size() > 10) {
        return false;
    }
    const unsigned long long v = std::stoull(text);
    if (v > 0xFFFFFFFFull) {
        return false;
    }
    *out = static_cast<uint32_t>(v);
    return true;
}

// A text and `words` integers, given as "TEXT,N,N..." for a set; rendered the same way.
template <size_t words>
static CustomResult textAndWords(void *handler, bool set, const std::string &value, const char *usage) {
    CustomResult r;
    char text[32] = "";
    uint32_t w[words] = {};
    if (set) {
        const std::vector<std::string> parts = splitValues(value);
        bool ok = parts.size() == words + 1 && parts[0].size() < sizeof(text);
        for (size_t i = 0; ok && i < words; ++i) {
            ok = toWord(parts[i + 1], &w[i]);
        }
        if (!ok) {
            r.message = std::string("give the value as ") + usage;
            return r;
        }
        parts[0].copy(text, parts[0].size());
    }
    r.called = true;
    if constexpr (words == 3) {
        using Fn = int (*)(int, char *, uint32_t *, uint32_t *, uint32_t *);
        r.rc = reinterpret_cast<Fn>(handler)(set ? 1 : 0, text, &w[0], &w[1], &w[2]);
    } else {
        using Fn = int (*)(int, char *, uint32_t *, uint32_t *, uint32_t *, uint32_t *);
        r.rc = reinterpret_cast<Fn>(handler)(set ? 1 : 0, text, &w[0], &w[1], &w[2], &w[3]);
    }
    if (!set && r.rc == 0) {
        r.shown = text;
        for (uint32_t v : w) {
            r.shown += "," + std::to_string(v);
        }
    }
    return r;
}

CustomResult nameRule(void *handler, bool set, const std::string &value, int *) {
    return textAndWords<3>(handler, set, value, "PREFIX,ADDED_LENGTH,START,UNIFORM (e.g. AALN/,1,0,1)");
}

CustomResult ephemeralRangeRule(void *handler, bool set, const std::string &value, int *) {
    return textAndWords<4>(handler, set, value, "FIRST_PART,START,END,STEP,FILL_FLAG (e.g. RTP/,0,99,1,0)");
}

// Set only: "ADDRESS,1" registers with the MGC at ADDRESS, "ADDRESS,0" unregisters.
CustomResult mgcRegister(void *handler, bool set, const std::string &value, int *) {
    CustomResult r;
    const std::vector<std::string> parts = splitValues(value);
    uint32_t flag = 0;
    if (!set || parts.size() != 2 || !toWord(parts[1], &flag)) {
        r.message = "MGC registration is set only: give the value as ADDRESS,1 (register) or ADDRESS,0";
        return r;
    }
    using Fn = int (*)(int, void *, char *, int *);
    std::string address = parts[0];
    int registerValue = static_cast<int>(flag);
    r.called = true;
    r.rc = reinterpret_cast<Fn>(handler)(1, &registerValue, address.data(), nullptr);
    return r;
}

}  // namespace h248kinds

namespace {

constexpr HandlerKind kH248KindRows[] = {
    customRow("Tr104MgcRegisterH248", &h248kinds::mgcRegister),
    customRow("Tr104MgcRegister", &h248kinds::mgcRegister),
    customRow("Tr104PhyNameRule", &h248kinds::nameRule),
    customRow("Tr104EphNameRule", &h248kinds::ephemeralRangeRule),
    customRow("Tr104EphNameRule2", &h248kinds::nameRule),
};

}  // namespace

std::span<const HandlerKind> h248Kinds() { return kH248KindRows; }

}  // namespace tr104ctl
