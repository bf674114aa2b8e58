// The dispatching wrappers, every one of them, under every protocol value.
//
// This test program defines every SIP and H.248 variant itself: they record their call and
// answer a value of their own.  The program exports them, so the library's references to the
// variants resolve to these definitions, and each wrapper can be checked for the variant it
// reaches, the arguments it hands over and the result it passes back.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/stdout_capture.h"
#include "tr104/framework.h"
#include "tr104/catalogue/dispatch_lists.h"
#include "tr104/handlers.h"
#include "tr104/protocol.h"

namespace {

constexpr int kSipAnswer = 41;
constexpr int kH248Answer = 42;
constexpr int kNotifyAnswer = 43;

struct Call {
    std::string variant;
    int nFlag = 0;
    const void *pValue = nullptr;
    const int *nLocate = nullptr;
    const Tr104Msg *msg = nullptr;
};
std::vector<Call> calls;

int record(const char *variant, int nFlag, void *pValue, int *nLocate, int answer) {
    calls.push_back({variant, nFlag, pValue, nLocate, nullptr});
    return answer;
}

int recordNotify(const char *variant, const Tr104Msg *msg) {
    calls.push_back({variant, 0, nullptr, nullptr, msg});
    return kNotifyAnswer;
}

}  // namespace

#define STUB_SIP(name) \
    extern "C" int name##Sip(int f, void *v, int *l) { return record(#name "Sip", f, v, l, kSipAnswer); }
#define STUB_H248(name) \
    extern "C" int name##H248(int f, void *v, int *l) { return record(#name "H248", f, v, l, kH248Answer); }
#define STUB_BOTH(name) STUB_SIP(name) STUB_H248(name)
#define STUB_NOTIFY(name) \
    extern "C" int name##Sip(const Tr104Msg *m) { return recordNotify(#name "Sip", m); }

TR104_BOTH_PROTOCOL_WRAPPERS(STUB_BOTH)
TR104_SIP_ONLY_WRAPPERS(STUB_SIP)
TR104_SIP_TOLERATED_WRAPPERS(STUB_SIP)
TR104_H248_ONLY_WRAPPERS(STUB_H248)
TR104_CHANGE_NOTIFY_WRAPPERS(STUB_NOTIFY)
#define STUB_H248_GATEWAY(name) \
    extern "C" int name##H248(int f, void *v) { return record(#name "H248", f, v, nullptr, kH248Answer); }
TR104_H248_GATEWAY_WRAPPERS(STUB_H248_GATEWAY)
TR104_BOTH_PROTOCOL_GATEWAY_H248_WRAPPERS(STUB_SIP)
TR104_BOTH_PROTOCOL_GATEWAY_H248_WRAPPERS(STUB_H248_GATEWAY)
extern "C" int Tr104PhyNameRuleH248(int f, char *p, uint32_t *, uint32_t *, uint32_t *) {
    return record("Tr104PhyNameRuleH248", f, p, nullptr, kH248Answer);
}
extern "C" int Tr104EphNameRuleH248(int f, char *p, uint32_t *, uint32_t *, uint32_t *, uint32_t *) {
    return record("Tr104EphNameRuleH248", f, p, nullptr, kH248Answer);
}
extern "C" int Tr104EphNameRule2H248(int f, char *p, uint32_t *, uint32_t *, uint32_t *) {
    return record("Tr104EphNameRule2H248", f, p, nullptr, kH248Answer);
}
STUB_SIP(Tr104LineCallerIdFlag)
STUB_SIP(Tr104PhyReferenceList)

namespace {

using tr104test::capturedStdout;
using Handler = int (*)(int, void *, int *);

enum class Kind { Both, BothGatewayH248, SipOnly, SipTolerated, H248Only, SipStub };

struct Wrapper {
    const char *name;
    Handler fn;
    Kind kind;
};

#define ROW(name, kind) Wrapper{#name, name, kind},
#define ROW_BOTH(name) ROW(name, Kind::Both)
#define ROW_GATEWAY_H248(name) ROW(name, Kind::BothGatewayH248)
#define ROW_SIP_ONLY(name) ROW(name, Kind::SipOnly)
#define ROW_SIP_TOLERATED(name) ROW(name, Kind::SipTolerated)
#define ROW_H248_ONLY(name) ROW(name, Kind::H248Only)
#define ROW_SIP_STUB(name) ROW(name, Kind::SipStub)

const std::vector<Wrapper> kWrappers = {
    TR104_BOTH_PROTOCOL_WRAPPERS(ROW_BOTH) TR104_BOTH_PROTOCOL_GATEWAY_H248_WRAPPERS(ROW_GATEWAY_H248)
        TR104_SIP_ONLY_WRAPPERS(ROW_SIP_ONLY) TR104_SIP_TOLERATED_WRAPPERS(ROW_SIP_TOLERATED)
            TR104_H248_ONLY_WRAPPERS(ROW_H248_ONLY) TR104_SIP_STUB_WRAPPERS(ROW_SIP_STUB)};

using Notifier = int (*)(const Tr104Msg *);
struct NotifyWrapper {
    const char *name;
    Notifier fn;
};
#define ROW_NOTIFY(name) NotifyWrapper{#name, name},
const std::vector<NotifyWrapper> kNotifiers = {TR104_CHANGE_NOTIFY_WRAPPERS(ROW_NOTIFY)};

// What a wrapper of a family does under a protocol: the variant it calls ("" for none) and
// the result it gives.
struct Expected {
    const char *suffix;
    int result;
};

Expected expectedFor(Kind kind, int protocol) {
    const bool sip = protocol == TR104_PROTOCOL_SIP;
    const bool h248 = protocol == TR104_PROTOCOL_H248;
    switch (kind) {
    case Kind::Both:
    case Kind::BothGatewayH248:
        return sip ? Expected{"Sip", kSipAnswer} : h248 ? Expected{"H248", kH248Answer} : Expected{"", -1};
    case Kind::SipOnly: return sip ? Expected{"Sip", kSipAnswer} : Expected{"", -1};
    case Kind::SipTolerated: return sip ? Expected{"Sip", kSipAnswer} : h248 ? Expected{"", 0} : Expected{"", -1};
    case Kind::H248Only: return h248 ? Expected{"H248", kH248Answer} : Expected{"", -1};
    case Kind::SipStub: return sip ? Expected{"", 0} : Expected{"", -1};
    }
    return {"", -1};
}

class DispatchTest : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override {
        calls.clear();
        gTr104CfgDebug = 0;
        gTr104CurrProtocolType = GetParam();
    }
    void TearDown() override {
        gTr104CurrProtocolType = 0;
        gTr104CfgDebug = 0;
    }
};

TEST_P(DispatchTest, EveryWrapperFollowsItsFamily) {
    const int protocol = GetParam();
    int value = 0;
    int locate[4] = {0, 1, 2, 0};
    for (const Wrapper &w : kWrappers) {
        for (int nFlag : {0, 1}) {
            calls.clear();
            const Expected want = expectedFor(w.kind, protocol);
            EXPECT_EQ(w.fn(nFlag, &value, locate), want.result) << w.name << " under " << protocol;
            if (want.suffix[0] == '\0') {
                EXPECT_TRUE(calls.empty()) << w.name << " called " << calls.front().variant;
                continue;
            }
            ASSERT_EQ(calls.size(), 1u) << w.name;
            EXPECT_EQ(calls[0].variant, std::string(w.name) + want.suffix);
            EXPECT_EQ(calls[0].nFlag, nFlag) << w.name;
            EXPECT_EQ(calls[0].pValue, &value) << w.name;
            // A gateway-wide H.248 variant takes two arguments: it is never handed nLocate.
            const bool twoArguments = w.kind == Kind::BothGatewayH248 && want.result == kH248Answer;
            EXPECT_EQ(calls[0].nLocate, twoArguments ? nullptr : locate) << w.name;
        }
    }
}

// Gateway-wide H.248 wrappers take two arguments; the naming rules their fields' pointers.
TEST_P(DispatchTest, TwoArgumentAndNamingRuleWrappersReachOnlyTheH248Variant) {
    using Gateway = int (*)(int, void *);
    struct Row {
        const char *name;
        Gateway fn;
    };
#define ROW_GATEWAY(name) Row{#name, name},
    const Row rows[] = {TR104_H248_GATEWAY_WRAPPERS(ROW_GATEWAY)};
#undef ROW_GATEWAY
    const bool h248 = GetParam() == TR104_PROTOCOL_H248;
    char text[16] = "";
    uint32_t a = 0, b = 0, c = 0, d = 0, e = 0;
    std::vector<std::pair<std::string, int>> results;
    for (const Row &r : rows) {
        calls.clear();
        results.emplace_back(r.name, r.fn(1, text));
    }
    calls.clear();
    results.emplace_back("Tr104PhyNameRule", Tr104PhyNameRule(1, text, &a, &b, &c));
    results.emplace_back("Tr104EphNameRule", Tr104EphNameRule(1, text, &a, &b, &c, &d));
    results.emplace_back("Tr104EphNameRule2", Tr104EphNameRule2(1, text, &a, &b, &e));
    for (const auto &[name, result] : results) {
        EXPECT_EQ(result, h248 ? kH248Answer : -1) << name;
    }
    if (h248) {
        ASSERT_EQ(calls.size(), 3u);
        EXPECT_EQ(calls[2].variant, "Tr104EphNameRule2H248");
        EXPECT_EQ(calls[2].pValue, text);
    } else {
        EXPECT_TRUE(calls.empty());
    }
}

TEST_P(DispatchTest, NotificationsReachTheSipVariantOnlyUnderSip) {
    const bool sip = GetParam() == TR104_PROTOCOL_SIP;
    Tr104Msg msg{};
    for (const NotifyWrapper &n : kNotifiers) {
        calls.clear();
        EXPECT_EQ(n.fn(&msg), sip ? kNotifyAnswer : 0) << n.name;
        if (sip) {
            ASSERT_EQ(calls.size(), 1u) << n.name;
            EXPECT_EQ(calls[0].variant, std::string(n.name) + "Sip");
            EXPECT_EQ(calls[0].msg, &msg);
        } else {
            EXPECT_TRUE(calls.empty()) << n.name;
        }
    }
}

TEST_P(DispatchTest, RefusalsPrintNothingEvenWhileDebugging) {
    gTr104CfgDebug = 1;
    int value = 0;
    int locate[4] = {0, 1, 1, 0};
    const std::string out = capturedStdout([&] {
        for (const Wrapper &w : kWrappers) {
            w.fn(0, &value, locate);
        }
    });
    EXPECT_EQ(out, "");
}

INSTANTIATE_TEST_SUITE_P(Protocols, DispatchTest, ::testing::Values(0, 1, 2, 3, 4, 5, -1),
                         [](const ::testing::TestParamInfo<int> &info) {
                             return info.param < 0 ? std::string("minus") + std::to_string(-info.param)
                                                   : "type" + std::to_string(info.param);
                         });

class MixedMemberTest : public ::testing::Test {
protected:
    void SetUp() override { calls.clear(); }
    void TearDown() override {
        gTr104CurrProtocolType = 0;
        gTr104CfgDebug = 0;
    }
};

TEST_F(MixedMemberTest, CallerIdFlagAnswersItselfUnderH248) {
    gTr104CurrProtocolType = TR104_PROTOCOL_H248;
    int flag = 7;
    EXPECT_EQ(Tr104LineCallerIdFlag(0, &flag, nullptr), 0);
    EXPECT_EQ(flag, 1);
    flag = 0;
    EXPECT_EQ(Tr104LineCallerIdFlag(1, &flag, nullptr), 0);
    EXPECT_EQ(flag, 0);

    gTr104CfgDebug = 1;
    const std::string out = capturedStdout([&] {
        EXPECT_EQ(Tr104LineCallerIdFlag(0, nullptr, nullptr), -2);
        EXPECT_EQ(Tr104LineCallerIdFlag(2, &flag, nullptr), -2);
    });
    EXPECT_NE(out.find("[Tr104LineCallerIdFlag,"), std::string::npos) << out;
    EXPECT_NE(out.find("param error, pLineCallerIdFlag is null\n"), std::string::npos) << out;
    EXPECT_NE(out.find("param error, nFlag[2]\n"), std::string::npos) << out;
    EXPECT_TRUE(calls.empty());
}

TEST_F(MixedMemberTest, CallerIdFlagGoesToSipOrRefuses) {
    int flag = 0;
    int locate[4] = {0, 1, 2, 0};
    gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
    EXPECT_EQ(Tr104LineCallerIdFlag(1, &flag, locate), kSipAnswer);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].variant, "Tr104LineCallerIdFlagSip");
    EXPECT_EQ(calls[0].nLocate, locate);
    for (int protocol : {0, 3, 5}) {
        gTr104CurrProtocolType = protocol;
        EXPECT_EQ(Tr104LineCallerIdFlag(0, &flag, locate), -1);
        EXPECT_EQ(Tr104LineCallerIdFlag(0, nullptr, locate), -1);  // no argument test here
    }
    EXPECT_EQ(calls.size(), 1u);
}

TEST_F(MixedMemberTest, PhyReferenceListTestsArgumentsUnderEveryProtocol) {
    char port[32] = "1";
    struct Case {
        int protocol;
        bool nullValue;
        int line;
        int result;
    };
    const Case cases[] = {
        {4, true, 1, -2},  {0, true, 1, -2},          {2, true, 2, -2},          {4, false, 0, -2},
        {4, false, 3, -2}, {0, false, -1, -2},        {2, false, 3, -2},         {0, false, 1, -1},
        {2, false, 2, -1}, {4, false, 1, kSipAnswer}, {4, false, 2, kSipAnswer},
    };
    for (const Case &c : cases) {
        calls.clear();
        gTr104CurrProtocolType = c.protocol;
        int locate[4] = {0, 1, c.line, 0};
        EXPECT_EQ(Tr104PhyReferenceList(1, c.nullValue ? nullptr : port, locate), c.result)
            << "protocol " << c.protocol << " line " << c.line;
        EXPECT_EQ(calls.size(), c.result == kSipAnswer ? 1u : 0u);
    }
}

TEST_F(MixedMemberTest, PhyReferenceListMessages) {
    char port[32] = "2";
    int badLine[4] = {0, 1, 3, 0};
    int goodLine[4] = {0, 1, 2, 0};
    gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
    gTr104CfgDebug = 1;
    const std::string out = capturedStdout([&] {
        Tr104PhyReferenceList(0, nullptr, goodLine);
        Tr104PhyReferenceList(0, port, badLine);
        Tr104PhyReferenceList(0, port, goodLine);
    });
    EXPECT_NE(out.find("param error, pPhyReferenceList is null\n"), std::string::npos) << out;
    EXPECT_NE(out.find("param error, nLocate[2]=3\n"), std::string::npos) << out;
    EXPECT_NE(out.find("Invoke function Tr104PhyReferenceList.\r\n"), std::string::npos) << out;
    gTr104CfgDebug = 0;
    EXPECT_EQ(capturedStdout([&] { Tr104PhyReferenceList(0, port, goodLine); }), "");
}

}  // namespace
