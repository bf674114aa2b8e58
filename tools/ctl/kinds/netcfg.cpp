// The voice network handlers that take several values in one value separated by blanks, or
// that have no path of their own: addresses written and shown as dotted text (the word as
// inet_pton gives it, which is what the agent passes).  The other network handlers take their
// kind from the data-model map.
#include <arpa/inet.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "ctl/kinds.h"

namespace tr104ctl {

namespace net {

static bool parseAddress(const std::string &text, uint32_t *word) {
    return inet_pton(AF_INET, text.c_str(), word) == 1;
}

static std::string showAddress(uint32_t word) {
    char text[INET_ADDRSTRLEN] = {};
    inet_ntop(AF_INET, &word, text, sizeof(text));
    return text;
}

static std::vector<std::string> words(const std::string &value) {
    std::istringstream in(value);
    std::vector<std::string> out;
    for (std::string w; in >> w;) {
        out.push_back(w);
    }
    return out;
}

// Several addresses of one value; false (and the message) when one is not an address.
static bool parseAddresses(const std::vector<std::string> &texts, size_t count, uint32_t *out, CustomResult *r) {
    if (texts.size() < count) {
        r->message = "the value must hold " + std::to_string(count) + " addresses separated by blanks";
        return false;
    }
    for (size_t i = 0; i < count; ++i) {
        if (!parseAddress(texts[i], &out[i])) {
            r->message = "'" + texts[i] + "' is not an IPv4 address";
            return false;
        }
    }
    return true;
}

// Address, mask and gateway through three pointers.
CustomResult triple(void *handler, bool set, const std::string &value, int *) {
    CustomResult r;
    uint32_t w[3] = {};
    if (set && !parseAddresses(words(value), 3, w, &r)) {
        return r;
    }
    r.called = true;
    r.rc =
        reinterpret_cast<int (*)(int, uint32_t *, uint32_t *, uint32_t *)>(handler)(set ? 1 : 0, &w[0], &w[1], &w[2]);
    r.shown = showAddress(w[0]) + " " + showAddress(w[1]) + " " + showAddress(w[2]);
    return r;
}

// Tr104VoiceIpAddr: "ADDRESS MASK GATEWAY IFNAME PORT".
CustomResult voiceIpAddr(void *handler, bool set, const std::string &value, int *) {
    CustomResult r;
    if (!set) {
        r.message = "a set only: \"ADDRESS MASK GATEWAY IFNAME PORT\"";
        return r;
    }
    const std::vector<std::string> v = words(value);
    uint32_t w[3] = {};
    if (!parseAddresses(v, 3, w, &r)) {
        return r;
    }
    const uint32_t port[3] = {0, 0, v.size() > 4 ? static_cast<uint32_t>(std::strtoul(v[4].c_str(), nullptr, 10)) : 0u};
    r.called = true;
    r.rc = reinterpret_cast<int (*)(int, uint32_t *, uint32_t *, uint32_t *, const char *, const uint32_t *)>(handler)(
        1, &w[0], &w[1], &w[2], v.size() > 3 ? v[3].c_str() : "", port);
    return r;
}

// Tr104DnsIpAddr: "DNS1 DNS2 PORT".
CustomResult dnsAddr(void *handler, bool set, const std::string &value, int *) {
    CustomResult r;
    if (!set) {
        r.message = "a set only: \"DNS1 DNS2 PORT\"";
        return r;
    }
    const std::vector<std::string> v = words(value);
    uint32_t w[2] = {};
    if (!parseAddresses(v, 2, w, &r)) {
        return r;
    }
    const uint32_t port[3] = {0, 0, v.size() > 2 ? static_cast<uint32_t>(std::strtoul(v[2].c_str(), nullptr, 10)) : 0u};
    r.called = true;
    r.rc = reinterpret_cast<int (*)(int, uint32_t *, uint32_t *, const uint32_t *)>(handler)(1, &w[0], &w[1], port);
    return r;
}

// VoipPrivateIpCfg: "OLT ONU ADDRESS".
CustomResult privateIp(void *handler, bool set, const std::string &value, int *) {
    CustomResult r;
    const std::vector<std::string> v = words(value);
    uint32_t addr = 0;
    if (!set || v.size() != 3 || !parseAddress(v[2], &addr)) {
        r.message = "a set only: \"OLT ONU ADDRESS\"";
        return r;
    }
    r.called = true;
    r.rc =
        reinterpret_cast<int (*)(int, int, uint32_t)>(handler)(std::atoi(v[0].c_str()), std::atoi(v[1].c_str()), addr);
    return r;
}

// The POS and IPT tables: a get shows entry --line N ("NUMBER TYPE"); a set of "NUMBER TYPE"
// adds, "delete NUMBER" deletes one and "delete" all.
CustomResult numbers(void *handler, bool set, const std::string &value, int *nLocate) {
    CustomResult r;
    const std::vector<std::string> v = words(value);
    char number[32] = {};
    char type = 0;
    int nFlag = 0;
    char *pNumber = number;
    if (set && !v.empty() && v[0] == "delete") {
        nFlag = 2;
        if (v.size() > 1) {
            std::snprintf(number, sizeof(number), "%s", v[1].c_str());
        } else {
            pNumber = nullptr;
        }
    } else if (set) {
        if (v.size() != 2 || v[1].size() != 1) {
            r.message = "the value must be \"NUMBER TYPE\" (one character), \"delete NUMBER\" or \"delete\"";
            return r;
        }
        nFlag = 1;
        std::snprintf(number, sizeof(number), "%s", v[0].c_str());
        type = v[1][0];
    }
    r.called = true;
    r.rc = reinterpret_cast<int (*)(int, char *, char *, int *)>(handler)(nFlag, pNumber, &type, nLocate);
    r.shown = number[0] != 0 ? std::string(number) + " " + (type != 0 ? std::string(1, type) : "-") : "(no entry)";
    return r;
}

// The syntax checks (1 valid, 0 not): a set of the text to check; an invalid text answers -2.
CustomResult check(void *handler, bool set, const std::string &value, int *) {
    CustomResult r;
    if (!set) {
        r.message = "give the text to check as a set's value";
        return r;
    }
    r.called = true;
    r.rc = reinterpret_cast<int (*)(const char *)>(handler)(value.c_str()) == 1 ? 0 : -2;
    return r;
}

}  // namespace net

namespace {

constexpr HandlerKind kNetcfgKindRows[] = {
    valueRow("Tr104RtpIpAddrConfig", 2, TR104_MAP_VALUE_ADDR, 4, 0),
    valueRow("Tr104RtpGateWayConfig", 2, TR104_MAP_VALUE_ADDR, 4, 0),
    customRow("Tr104IpParamConfig", net::triple),
    customRow("Tr104RtpIpParamConfig", net::triple),
    customRow("Tr104VoiceIpAddr", net::voiceIpAddr),
    customRow("VoipPrivateIpCfg", net::privateIp),
    customRow("Tr104DnsIpAddr", net::dnsAddr),
    valueRow("Tr104DhcpOption120", 2, TR104_MAP_VALUE_TEXT, 2048),
    valueRow("Tr104PPPoEMode", 2, TR104_MAP_VALUE_INT, 4),
    customRow("checkTimeZoneValid", net::check),
    customRow("Tr104PosParamConfig", net::numbers),
    customRow("Tr104IptParamConfig", net::numbers),
    customRow("checkPosNumValid", net::check),
    customRow("checkIptNumValid", net::check),
    customRow("checkPOSorIPTTypeValid", net::check),
};

}  // namespace

std::span<const HandlerKind> netcfgKinds() { return kNetcfgKindRows; }

}  // namespace tr104ctl
