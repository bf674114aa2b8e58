// SIP line identity: directory number and URI sent at once, user name and password staged
// together in slot 5, the user-name-and-URI write of the management agent, and the line swap
// running against these handlers.
#include <algorithm>
#include <cstring>

#include "sipid/sipid_fixture.h"
#include "tr104/sip.h"
#include "tr104/sip_identity.h"

namespace {

using namespace sipid;

constexpr int kSlot = 5;
constexpr size_t kNumberOffset = 8;
constexpr size_t kUserOffset = 224;
constexpr size_t kPasswordOffset = 290;
constexpr uint32_t kSetTelNum = 16578, kGetTelNum = 16579;
constexpr uint32_t kSetUri = 16588, kGetUri = 16589;
constexpr uint32_t kSetAuth = 16585, kGetAuth = 16586;
constexpr char kHiddenInLog[] = "********";  // a password as the voice module's request log shows it

int failingApply(Tr104Msg *, void *) { return -1; }

class Identity : public DeferredChannelTest {
protected:
    std::vector<int> slots() const override { return {kSlot}; }

    void TearDown() override {
        gTr104CfgParamInfo[kSlot].timeroutFuncHandle = setLineAuthCfg;
        DeferredChannelTest::TearDown();
    }

    int *line(int n) {
        locate_[2] = n;
        return locate_;
    }

    // The voice module's records of a line.
    void storeText(const char *family, int lineNo, size_t offset, const char *text) {
        std::vector<char> r(TR104_PORT_STATUS_LEN, 0);
        const uint32_t l = static_cast<uint32_t>(lineNo);
        std::memcpy(r.data(), &l, 4);
        if (auto stored = emulator.get(family, r.data(), r.size())) {
            r = *stored;
        }
        std::memset(r.data() + offset, 0, 66);
        std::strncpy(r.data() + offset, text, 65);
        emulator.put(family, r.data(), r.size());
    }
    // The password the voice module keeps for a line: its request log shows "********".
    std::string storedPassword(int lineNo) {
        Tr104SipLineIdentityRecord key{};
        key.unLine = static_cast<uint32_t>(lineNo);
        const auto stored = emulator.get("sip line auth", &key, sizeof(key));
        return stored ? std::string(stored->data() + kPasswordOffset) : "(none)";
    }
    void storeAuth(int lineNo, const char *user, const char *password) {
        storeText("sip line auth", lineNo, kUserOffset, user);
        storeText("sip line auth", lineNo, kPasswordOffset, password);
    }

    int locate_[4] = {0, 1, 1, 0};
};

struct DirectCase {
    const char *name;
    Handler handler;
    uint32_t setCmd;
    uint32_t getCmd;
};
const DirectCase kDirect[] = {
    {"directory number", Tr104LineTelNumSip, kSetTelNum, kGetTelNum},
    {"URI", Tr104LineURISip, kSetUri, kGetUri},
};

TEST_F(Identity, DirectoryNumberAndUriAreSentAtOnce) {
    for (const DirectCase &c : kDirect) {
        for (int l : {1, 2}) {
            SCOPED_TRACE(std::string(c.name) + " line " + std::to_string(l));
            const std::string value = (c.setCmd == kSetUri ? "sip:800" : "800") + std::to_string(l);
            ASSERT_EQ(setText(c.handler, value, line(l)), 0);
            auto sent = served();
            ASSERT_EQ(sent.size(), 1u);
            EXPECT_EQ(sent[0].cmd, c.setCmd);
            EXPECT_EQ(sent[0].word<uint32_t>(0), static_cast<uint32_t>(l));
            EXPECT_EQ(sent[0].text_at(kNumberOffset, 66), value);
            EXPECT_TRUE(std::all_of(sent[0].payload.begin() + kNumberOffset + 66, sent[0].payload.end(),
                                    [](char b) { return b == 0; }));

            EXPECT_EQ(getText(c.handler, line(l)), value);
            sent = served();
            ASSERT_EQ(sent.size(), 1u);
            EXPECT_EQ(sent[0].cmd, c.getCmd);
            EXPECT_EQ(sent[0].word<uint32_t>(0), static_cast<uint32_t>(l));
        }
    }
    // Number and URI are kept apart although they share an offset.
    EXPECT_EQ(getText(Tr104LineTelNumSip, line(2)), "8002");
    EXPECT_EQ(getText(Tr104LineURISip, line(2)), "sip:8002");
}

const Handler kHandlers[] = {Tr104LineTelNumSip, Tr104LineURISip, Tr104LineAuthUserNameSip, Tr104LineAuthPasswordSip};

TEST_F(Identity, TextsUpTo65CharactersAreAccepted) {
    const std::string longest(65, '7');
    for (Handler h : kHandlers) {
        EXPECT_EQ(setText(h, longest + "8", line(1)), -2);
        EXPECT_EQ(setText(h, longest + "89", line(1)), -2);
        EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);
    }
    EXPECT_EQ(served().size(), 0u);
    for (Handler h : kHandlers) {
        EXPECT_EQ(setText(h, longest, line(1)), 0);
    }
    const auto sent = served();
    ASSERT_EQ(sent.size(), 3u);  // number, URI, then user name and password together
    EXPECT_EQ(sent[0].text_at(kNumberOffset, 70), longest);
    EXPECT_EQ(sent[1].text_at(kNumberOffset, 70), longest);
    EXPECT_EQ(sent[2].cmd, kSetAuth);
    EXPECT_EQ(sent[2].text_at(kUserOffset, 66), longest);
    EXPECT_EQ(sent[2].text_at(kPasswordOffset, 66), kHiddenInLog);
    EXPECT_EQ(storedPassword(1), longest);
}

TEST_F(Identity, ArgumentsAreChecked) {
    char text[TR104_LINE_IDENTITY_LEN] = "1234";
    for (Handler h : kHandlers) {
        EXPECT_EQ(h(0, nullptr, line(1)), -2);
        for (int l : {0, 3, -1}) {
            EXPECT_EQ(h(1, text, line(l)), -2) << l;
        }
        EXPECT_EQ(h(2, text, line(1)), -2);
    }
    const std::string out = debugOutput([&] {
        EXPECT_EQ(Tr104LineAuthUserNameAndURIForTr069Sip(0, text, line(1)), -2);
        EXPECT_EQ(Tr104LineAuthUserNameAndURIForTr069Sip(1, nullptr, line(1)), -2);
    });
    EXPECT_NE(out.find("param error, nFlag=0\n"), std::string::npos) << out;
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);
    EXPECT_EQ(served().size(), 0u);
}

TEST_F(Identity, UserNameAndPasswordGoInOneRequest) {
    ASSERT_EQ(setText(Tr104LineAuthUserNameSip, "alice", line(2)), 0);
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0x1);
    EXPECT_EQ(gTr104CfgParamInfo[kSlot].timerStarted, 1);
    EXPECT_EQ(served().size(), 0u);
    ASSERT_EQ(setText(Tr104LineAuthPasswordSip, "secret", line(2)), 0);
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);
    EXPECT_EQ(gTr104CfgParamInfo[kSlot].timerStarted, 0);

    auto sent = served();
    ASSERT_EQ(sent.size(), 1u);  // no read
    EXPECT_EQ(sent[0].cmd, kSetAuth);
    EXPECT_EQ(sent[0].word<uint32_t>(0), 2u);
    EXPECT_EQ(sent[0].text_at(kUserOffset, 66), "alice");
    EXPECT_EQ(sent[0].text_at(kPasswordOffset, 66), kHiddenInLog);
    EXPECT_EQ(storedPassword(2), "secret");

    EXPECT_EQ(getText(Tr104LineAuthUserNameSip, line(2)), "alice");
    EXPECT_EQ(getText(Tr104LineAuthPasswordSip, line(2)), "secret");
    sent = served();
    ASSERT_EQ(sent.size(), 2u);
    for (const auto &r : sent) {
        EXPECT_EQ(r.cmd, kGetAuth);
        EXPECT_EQ(r.word<uint32_t>(0), 2u);
    }
}

TEST_F(Identity, AWriteForTheOtherLineMovesTheStagedValues) {
    ASSERT_EQ(setText(Tr104LineAuthUserNameSip, "bob", line(1)), 0);
    ASSERT_EQ(setText(Tr104LineAuthPasswordSip, "pw2", line(2)), 0);
    const auto sent = served();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].cmd, kSetAuth);
    EXPECT_EQ(sent[0].word<uint32_t>(0), 2u);  // the line of the latest write
    EXPECT_EQ(sent[0].text_at(kUserOffset, 66), "bob");
    EXPECT_EQ(sent[0].text_at(kPasswordOffset, 66), kHiddenInLog);
    EXPECT_EQ(storedPassword(2), "pw2");
}

// The password alone is completed by the slot's timer with the line's current user name.
TEST_F(Identity, PasswordOnlyReadsTheCurrentUserNameAndSendsBoth) {
    storeAuth(1, "carol", "old-password");
    const auto start = Clock::now();
    ASSERT_EQ(setText(Tr104LineAuthPasswordSip, "first", line(1)), 0);
    ASSERT_EQ(setText(Tr104LineAuthPasswordSip, "new-password", line(1)), 0);  // the later value counts
    EXPECT_EQ(served().size(), 0u);

    const auto seen = awaitRequests(2);
    EXPECT_GE(std::chrono::duration<double>(Clock::now() - start).count(), 4.5);
    EXPECT_TRUE(awaitIdle(kSlot));
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);
    const auto sent = served();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].cmd, kGetAuth);
    EXPECT_EQ(sent[0].word<uint32_t>(0), 1u);
    EXPECT_EQ(sent[1].cmd, kSetAuth);
    EXPECT_EQ(sent[1].word<uint32_t>(0), 1u);
    EXPECT_EQ(sent[1].text_at(kUserOffset, 66), "carol");
    EXPECT_EQ(sent[1].text_at(kPasswordOffset, 66), kHiddenInLog);
    EXPECT_EQ(storedPassword(1), "new-password");
}

// The management agent's user name write: the URI follows it while the line has no number.
TEST_F(Identity, UserNameForTr069SetsTheUriOfALineWithoutNumber) {
    struct Case {
        const char *number;  // the line's directory number
        bool numberReadFails;
        bool uriSet;
    };
    const Case cases[] = {{"", false, true}, {"5551234", false, false}, {"", true, false}};
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string("number \"") + c.number + (c.numberReadFails ? "\", read fails" : "\""));
        emulator.clearRecords();
        storeText("sip directory number", 1, kNumberOffset, c.number);
        if (c.numberReadFails) {
            emulator.setFault(kGetTelNum, {vmemu::Fault::FailureMarker, 0, -1});
        }
        resetTr104CfgParamInfo(kSlot);
        ASSERT_EQ(setText(Tr104LineAuthUserNameAndURIForTr069Sip, "dave", line(1)), 0);
        emulator.clearFaults();
        EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0x1);  // the user name waits for its password
        const auto sent = served();
        ASSERT_EQ(sent.size(), c.uriSet ? 2u : 1u);
        EXPECT_EQ(sent[0].cmd, kGetTelNum);
        if (c.uriSet) {
            EXPECT_EQ(sent[1].cmd, kSetUri);
            EXPECT_EQ(sent[1].word<uint32_t>(0), 1u);
            EXPECT_EQ(sent[1].text_at(kNumberOffset, 66), "dave");
        }
        ASSERT_EQ(setText(Tr104LineAuthPasswordSip, "pw", line(1)), 0);
        const auto auth = served();
        ASSERT_EQ(auth.size(), 1u);
        EXPECT_EQ(auth[0].text_at(kUserOffset, 66), "dave");
    }
}

TEST_F(Identity, AFailedUserNameEmptiesTheUriAgain) {
    gTr104CfgParamInfo[kSlot].timeroutFuncHandle = failingApply;
    ASSERT_EQ(setText(Tr104LineAuthPasswordSip, "pw", line(2)), 0);  // the user name completes the group
    std::string out;
    out = debugOutput([&] { EXPECT_EQ(setText(Tr104LineAuthUserNameAndURIForTr069Sip, "erin", line(2)), -1); });
    EXPECT_NE(out.find("set URI ok, set AuthUserName error\n"), std::string::npos) << out;
    const auto sent = served();
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_EQ(sent[0].cmd, kGetTelNum);
    EXPECT_EQ(sent[1].cmd, kSetUri);
    EXPECT_EQ(sent[1].text_at(kNumberOffset, 66), "erin");
    EXPECT_EQ(sent[2].cmd, kSetUri);
    EXPECT_EQ(sent[2].word<uint32_t>(0), 2u);
    EXPECT_EQ(sent[2].text_at(kNumberOffset, 66), "");
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);

    // A URI that cannot be set stops before the user name.
    const std::string longName(66, 'n');
    out = debugOutput([&] { EXPECT_EQ(setText(Tr104LineAuthUserNameAndURIForTr069Sip, longName, line(2)), -1); });
    EXPECT_NE(out.find("set URI error\n"), std::string::npos) << out;
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);
}

// Moving line 1 to the other port exchanges the two lines' numbers, user names and passwords.
TEST_F(Identity, LineSwapExchangesTheIdentities) {
    storeText("sip directory number", 1, kNumberOffset, "1001");
    storeText("sip directory number", 2, kNumberOffset, "1002");
    storeAuth(1, "user1", "pass1");
    storeAuth(2, "user2", "pass2");
    ASSERT_STREQ(gPhyReferenceList[0], "1");
    char port[TR104_PHY_REFERENCE_LEN] = "2";
    ASSERT_EQ(Tr104PhyReferenceListSip(1, port, line(1)), 0);
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);  // every staged pair was sent at once

    EXPECT_EQ(getText(Tr104LineTelNumSip, line(1)), "1002");
    EXPECT_EQ(getText(Tr104LineTelNumSip, line(2)), "1001");
    EXPECT_EQ(getText(Tr104LineAuthUserNameSip, line(1)), "user2");
    EXPECT_EQ(getText(Tr104LineAuthPasswordSip, line(1)), "pass2");
    EXPECT_EQ(getText(Tr104LineAuthUserNameSip, line(2)), "user1");
    EXPECT_EQ(getText(Tr104LineAuthPasswordSip, line(2)), "pass1");
    EXPECT_STREQ(gPhyReferenceList[0], "2");
    EXPECT_STREQ(gPhyReferenceList[1], "1");
    // Back again for the other tests of this process.
    std::strcpy(port, "1");
    ASSERT_EQ(Tr104PhyReferenceListSip(1, port, line(1)), 0);
    EXPECT_EQ(getText(Tr104LineTelNumSip, line(1)), "1001");
}

}  // namespace

namespace {

using namespace sipid;

// The exported protocol wrappers reach these handlers under SIP, and refuse under H.248.
TEST_F(Identity, ExportedWrappersReachTheSipHandlers) {
    const int saved = gTr104CurrProtocolType;
    gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
    EXPECT_EQ(setText(Tr104LineTelNum, "4242", line(2)), 0);
    EXPECT_EQ(setText(Tr104SipProxyServerIp, "10.2.3.4"), 0);
    EXPECT_EQ(setInt(Tr104SipProxyServerPort, 5090), 0);
    EXPECT_EQ(getText(Tr104LineTelNum, line(2)), "4242");
    auto sent = served();
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_EQ(sent[0].cmd, kSetTelNum);
    EXPECT_EQ(sent[1].cmd, 16392u);
    EXPECT_EQ(sent[1].word<uint32_t>(40), 1u);  // a dotted address
    EXPECT_EQ(sent[2].cmd, kGetTelNum);

    gTr104CurrProtocolType = TR104_PROTOCOL_H248;
    EXPECT_EQ(setText(Tr104LineAuthUserName, "frank", line(1)), -1);
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(kSlot), 0);
    gTr104CurrProtocolType = saved;
    EXPECT_EQ(served().size(), 0u);
}

}  // namespace
