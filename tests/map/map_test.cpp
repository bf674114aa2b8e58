// The data-model map: every entry resolves from a concrete path to itself and to the nLocate
// its handler takes; bad paths are told apart from paths the model does not have.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "tr104/map.h"

namespace {

// A concrete path of a pattern: each {i} replaced by the given numbers in turn.
std::string concrete(const std::string &pattern, std::initializer_list<int> numbers) {
    std::string out;
    auto n = numbers.begin();
    for (size_t at = 0; at < pattern.size();) {
        if (pattern.compare(at, 3, "{i}") == 0) {
            out += std::to_string(n != numbers.end() ? *n++ : 1);
            at += 3;
        } else {
            out += pattern[at++];
        }
    }
    return out;
}

TEST(Map, EveryEntryResolvesToItselfWithItsLocator) {
    std::set<std::string> paths;
    unsigned served = 0;
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        const Tr104MapEntry &e = gTr104Map[i];
        SCOPED_TRACE(e.path);
        EXPECT_TRUE(paths.insert(e.path).second) << "mapped twice";
        // The highest instance a two-port device has: voice service 1, profile 1, then 2, 2, 2.
        const std::string path = concrete(e.path, {1, 1, 2, 2});
        const Tr104MapEntry *found = nullptr;
        int locate[4] = {9, 9, 9, 9};
        char error[200] = "";
        const int rc = tr104MapLookup(path.c_str(), &found, locate, error, sizeof(error));
        const bool byMap = e.fixed != nullptr;
        EXPECT_EQ(rc, e.handler != nullptr || byMap ? TR104_MAP_SERVED : TR104_MAP_NOT_SERVED) << error;
        EXPECT_EQ(found, &e);
        if (byMap) {
            // The map's own value: read only, no handler; the instance numbers in path order.
            EXPECT_STREQ(e.access, "R");
            EXPECT_EQ(e.fn, nullptr);
            const int inOrder[4] = {1, e.instances > 1 ? 1 : 0, 0, 0};
            EXPECT_EQ(std::memcmp(locate, inOrder, sizeof(locate)), 0);
            continue;
        }
        if (e.handler == nullptr) {
            EXPECT_GT(std::strlen(e.note), 5u) << "a parameter not served says why";
            continue;
        }
        ++served;
        EXPECT_NE(e.fn, nullptr);
        EXPECT_TRUE(e.arity == 2 || e.arity == 3);
        // The path's instance numbers land at their indexes; the rest stays 0.
        const int numbers[4] = {1, 1, 2, 2};
        int expected[4] = {0, 0, 0, 0};
        for (int k = 0; k < e.instances; ++k) {
            if (e.locate[k] >= 0) {
                expected[e.locate[k]] = numbers[k];
            }
        }
        // Fixed instance numbers: "nLocate[K]=N", comma-separated.
        for (const char *at = e.arg; at != nullptr; at = std::strchr(at + 1, ',')) {
            unsigned fixedAt = 0;
            int fixed = 0;
            if (std::sscanf(at + (*at == ',' ? 1 : 0), "nLocate[%u]=%d", &fixedAt, &fixed) == 2) {
                expected[fixedAt] = fixed;
            }
        }
        EXPECT_EQ(std::memcmp(locate, expected, sizeof(locate)), 0)
            << locate[0] << "," << locate[1] << "," << locate[2] << "," << locate[3];
        EXPECT_EQ(tr104MapFind(e.path), &e);
    }
    EXPECT_GT(served, 300u);
}

TEST(Map, BadPathsAreToldApart) {
    const std::string line = "InternetGatewayDevice.Services.VoiceService.1.VoiceProfile.1.Line.";
    const struct {
        std::string path;
        int rc;
        const char *says;
    } cases[] = {
        {"", TR104_MAP_MALFORMED, "empty path"},
        {line + "1.Enable.", TR104_MAP_MALFORMED, "empty name"},
        {line + "1..Enable", TR104_MAP_MALFORMED, "empty name"},
        {line + "0.Enable", TR104_MAP_MALFORMED, "instance '0' of Line: not 1..2"},
        {line + "3.Enable", TR104_MAP_MALFORMED, "instance '3' of Line: not 1..2"},
        {line + "x.Enable", TR104_MAP_MALFORMED, "instance 'x' of Line"},
        {line + "01x.Enable", TR104_MAP_MALFORMED, "instance '01x'"},
        {line + "1.NoSuchThing", TR104_MAP_UNKNOWN, "no such parameter"},
        {"InternetGatewayDevice.Services.VoiceService.2.VoiceProfileNumberOfEntries", TR104_MAP_MALFORMED,
         "of VoiceService: not 1..1"},
        {line + "2.Enable", TR104_MAP_SERVED, ""},
        {line + "2.Ringer.Event.7.Function", TR104_MAP_NOT_SERVED, ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path);
        const Tr104MapEntry *entry = nullptr;
        int locate[4];
        char error[200] = "";
        EXPECT_EQ(tr104MapLookup(c.path.c_str(), &entry, locate, error, sizeof(error)), c.rc);
        EXPECT_NE(std::string(error).find(c.says), std::string::npos) << error;
        EXPECT_EQ(entry != nullptr, c.rc >= 0);
    }
    EXPECT_EQ(tr104MapLookup(nullptr, nullptr, nullptr, nullptr, 0), TR104_MAP_MALFORMED);
    const Tr104MapEntry *entry = nullptr;
    int locate[4];
    ASSERT_EQ(tr104MapLookup((line + "2.Enable").c_str(), &entry, locate, nullptr, 0), TR104_MAP_SERVED);
    EXPECT_STREQ(entry->handler, "Tr104LineEnable");
    EXPECT_EQ(locate[2], 2);
}

// A text value's buffer holds the longest text the handler writes, terminator included: a call
// state fills the line record's 172-byte field.
TEST(Map, TextBuffersHoldTheLongestTextTheHandlerWrites) {
    const struct {
        const char *pattern;
        unsigned longest;
    } rows[] = {
        {"InternetGatewayDevice.Services.VoiceService.{i}.VoiceProfile.{i}.Line.{i}.CallState", 172},
    };
    for (const auto &r : rows) {
        const Tr104MapEntry *e = tr104MapFind(r.pattern);
        ASSERT_NE(e, nullptr) << r.pattern;
        ASSERT_EQ(e->valueKind, TR104_MAP_VALUE_TEXT) << r.pattern;
        EXPECT_GE(e->valueSize, r.longest) << r.pattern;
    }
}

// What callers decide on is typed in the entry: the value's kind and size, a get that blocks its
// caller, the one protocol whose handlers answer.
TEST(Map, EntriesCarryTheirValueKindBlockingAndProtocol) {
    const std::string vs = "InternetGatewayDevice.Services.VoiceService.{i}.";
    const struct {
        std::string pattern;
        int kind;
        unsigned size;
        int blocks, protocol;
    } rows[] = {
        {vs + "PhyInterface.{i}.X_QRV_AllTestsEnd", TR104_MAP_VALUE_INT, 4, 1, 0},
        {vs + "VoiceProfile.{i}.Line.{i}.SIP.AuthUserName", TR104_MAP_VALUE_TEXT, 66, 0, 0},
        {vs + "VoiceProfile.{i}.RTP.LocalPortMin", TR104_MAP_VALUE_INT, 4, 0, 2},
        {vs + "VoiceProfile.{i}.DTMFMethod", TR104_MAP_VALUE_TEXT, 0, 0, 4},
        {vs + "Capabilities.SIP.Role", TR104_MAP_VALUE_TEXT, 0, 0, 0},
        {"InternetGatewayDevice.X_QRV_VOIP_IPPARAMS.DNSServer1", TR104_MAP_VALUE_ADDR, 4, 0, 0},
        {vs + "X_QRV_LEDStandard", TR104_MAP_VALUE_BYTE, 1, 0, 0},
    };
    for (const auto &r : rows) {
        const Tr104MapEntry *e = tr104MapFind(r.pattern.c_str());
        ASSERT_NE(e, nullptr) << r.pattern;
        EXPECT_EQ(e->valueKind, r.kind) << r.pattern;
        if (r.size != 0) {
            EXPECT_EQ(e->valueSize, r.size) << r.pattern;
        }
        EXPECT_EQ(e->blocksCaller, r.blocks) << r.pattern;
        EXPECT_EQ(e->protocol, r.protocol) << r.pattern;
    }
    // The instance counts the lookup accepts are the ones callers enumerate.
    for (const auto &[object, count] : {std::pair{"Line", 2},
                                        {"List", 5},
                                        {"VoiceProfile", 1},
                                        {"Event", 1},
                                        {"Client", 2},
                                        {"Network", 1},
                                        {"FXS", 2},
                                        {"CodecProfile", 5}}) {
        EXPECT_EQ(tr104MapInstanceCount(object), count) << object;
    }
    char error[160] = "";
    EXPECT_EQ(tr104MapLookup("InternetGatewayDevice.Services.VoiceService.1.VoiceProfile.1.Line.3.Enable", nullptr,
                             nullptr, error, sizeof(error)),
              TR104_MAP_MALFORMED);
    EXPECT_NE(std::strstr(error, "not 1..2"), nullptr) << error;
}

// The values the standard's definitions hide are the passwords a handler serves (in both trees);
// the vendor's PPPoE password is hidden alike.  Each grouped parameter knows its slot of the
// deferred buffer.
TEST(Map, PasswordsAreHiddenAndGroupedValuesKnowTheirSlot) {
    int hidden = 0;
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        const Tr104MapEntry &e = gTr104Map[i];
        const std::string path = e.path;
        const bool password = path.size() > 8 && path.compare(path.size() - 8, 8, "Password") == 0;
        if (e.handler == nullptr) {
            continue;
        }
        EXPECT_EQ(e.hidden, password ? 1 : 0) << path;
        hidden += e.hidden;
        EXPECT_EQ(e.deferredSlot >= 0, std::strstr(e.note, "deferred slot") != nullptr) << path;
    }
    EXPECT_EQ(hidden, 3);  // the line's password in both trees, the vendor's PPPoE password
    const struct {
        const char *pattern;
        int slot;
    } grouped[] = {
        {"InternetGatewayDevice.Services.VoiceService.{i}.VoiceProfile.{i}.SIP.ProxyServerPort", 3},
        {"InternetGatewayDevice.Services.VoiceService.{i}.VoiceProfile.{i}.Line.{i}.SIP.AuthPassword", 5},
        {"InternetGatewayDevice.X_QRV_VOIP_IPPARAMS.SubnetMask", 0},
        {"InternetGatewayDevice.Services.VoiceService.{i}.VoiceProfile.{i}.Line.{i}.Enable", -1},
    };
    for (const auto &g : grouped) {
        const Tr104MapEntry *e = tr104MapFind(g.pattern);
        ASSERT_NE(e, nullptr) << g.pattern;
        EXPECT_EQ(e->deferredSlot, g.slot) << g.pattern;
    }
}

}  // namespace
