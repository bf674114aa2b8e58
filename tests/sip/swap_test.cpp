// The line swap exchanges the two lines' identities through the line identity handlers.  This
// executable carries stand-ins of those handlers (exported, so the library binds to them): they
// exchange the line record with the voice module's line identity commands.
#include "sip_fixture.h"

namespace {

constexpr uint32_t kSetTelNum = 16578, kGetTelNum = 16579, kSetAuth = 16585, kGetAuth = 16586;
constexpr size_t kNumber = 8, kUser = 224, kPassword = 290, kTextLen = 66;

int fails = 0;  // when set, every stand-in call fails

int identity(int nFlag, void *pValue, int *nLocate, uint32_t getCmd, uint32_t setCmd, size_t offset) {
    if (fails != 0) {
        return -1;
    }
    Tr104SipLineRecord rec{};
    rec.unLine = static_cast<uint32_t>(nLocate[2]);
    char *field = reinterpret_cast<char *>(&rec) + offset;
    Tr104Msg msg;
    tr104MsgConstruct(&msg);
    if (CfgPreHandleGetParam(&msg, &rec, sizeof(rec), getCmd) != 0) {
        return -1;
    }
    if (nFlag == 0) {
        std::strncpy(static_cast<char *>(pValue), field, kTextLen - 1);
        return 0;
    }
    std::memset(field, 0, kTextLen);
    std::strncpy(field, static_cast<const char *>(pValue), kTextLen - 1);
    return sendtr104Msg(setCmd, &rec, sizeof(rec));
}

}  // namespace

extern "C" {
int Tr104LineTelNumSip(int nFlag, void *pValue, int *nLocate) {
    return identity(nFlag, pValue, nLocate, kGetTelNum, kSetTelNum, kNumber);
}
int Tr104LineAuthUserNameSip(int nFlag, void *pValue, int *nLocate) {
    return identity(nFlag, pValue, nLocate, kGetAuth, kSetAuth, kUser);
}
int Tr104LineAuthPasswordSip(int nFlag, void *pValue, int *nLocate) {
    return identity(nFlag, pValue, nLocate, kGetAuth, kSetAuth, kPassword);
}
}

namespace {

using siptest::debugOutput;
using siptest::printed;
using siptest::SipTest;

class SipLineSwap : public SipTest {
protected:
    void SetUp() override {
        SipTest::SetUp();
        std::strcpy(gPhyReferenceList[0], "1");
        std::strcpy(gPhyReferenceList[1], "2");
        fails = 0;
        setIdentity(1, "5550001", "alice", "secret-a");
        setIdentity(2, "5550002", "bob", "secret-b");
    }

    void setIdentity(uint32_t line, const char *number, const char *user, const char *password) {
        Tr104SipLineRecord rec{};
        rec.unLine = line;
        std::strcpy(rec.aHotlineNum, number);  // the directory number's offset
        emulator.put("sip directory number", &rec, sizeof(rec));
        char *bytes = reinterpret_cast<char *>(&rec);
        std::strcpy(bytes + kUser, user);
        std::strcpy(bytes + kPassword, password);
        emulator.put("sip line auth", &rec, sizeof(rec));
    }

    std::string stored(const char *family, uint32_t line, size_t offset) {
        Tr104SipLineRecord key{};
        key.unLine = line;
        auto rec = emulator.get(family, &key, sizeof(key));
        return rec ? std::string(rec->data() + offset) : std::string("<none>");
    }
};

TEST_F(SipLineSwap, MovingALineToTheOtherPortExchangesTheIdentities) {
    EXPECT_EQ(getText(Tr104PhyReferenceListSip, 1), "1");
    std::string out = debugOutput([&] { EXPECT_EQ(setText(Tr104PhyReferenceListSip, 1, "2"), 0); });
    EXPECT_TRUE(printed(out, "Tr104PhyReferenceListSip", "Line 1 get number success.\r\n")) << out;
    EXPECT_TRUE(printed(out, "Tr104PhyReferenceListSip", "Line 2 set phone number success.\r\n")) << out;
    // A get after the swap goes through the channel: every write has been served by then.
    EXPECT_EQ(getText(Tr104LineTelNumSip, 2), "5550001");
    EXPECT_EQ(stored("sip directory number", 1, kNumber), "5550002");
    EXPECT_EQ(stored("sip directory number", 2, kNumber), "5550001");
    EXPECT_EQ(stored("sip line auth", 1, kUser), "bob");
    EXPECT_EQ(stored("sip line auth", 1, kPassword), "secret-b");
    EXPECT_EQ(stored("sip line auth", 2, kUser), "alice");
    EXPECT_EQ(stored("sip line auth", 2, kPassword), "secret-a");
    EXPECT_EQ(getText(Tr104PhyReferenceListSip, 1), "2");
    EXPECT_EQ(getText(Tr104PhyReferenceListSip, 2), "1");

    // Placeholders keep the two lines apart while they change: no write gives a line the
    // other line's number before that line has let go of it.
    std::vector<std::string> numbers[3];
    for (const vmemu::Request &r : emulator.requestsFor(kSetTelNum)) {
        numbers[r.word<uint32_t>(0)].push_back(r.text_at(kNumber, kTextLen));
    }
    ASSERT_EQ(numbers[1].size(), 2u);
    ASSERT_EQ(numbers[2].size(), 2u);
    EXPECT_NE(numbers[1][0], numbers[2][0]);
    EXPECT_NE(numbers[1][0].find("swap"), std::string::npos);
    EXPECT_EQ(numbers[1][1], "5550002");
}

TEST_F(SipLineSwap, OwnPortAndBadValues) {
    // "1" is line 1's own port: nothing to do.
    EXPECT_EQ(setText(Tr104PhyReferenceListSip, 1, "1"), 0);
    EXPECT_EQ(emulator.requestCount(), 0u);
    for (const char *bad : {"3", "0", "", "12", "one"}) {
        std::string out = debugOutput([&] { EXPECT_EQ(setText(Tr104PhyReferenceListSip, 2, bad), -2); });
        EXPECT_TRUE(
            printed(out, "Tr104PhyReferenceListSip", std::string("param error, pPhyReferenceList=") + bad + "\n"))
            << out;
    }
    EXPECT_EQ(emulator.requestCount(), 0u);
    EXPECT_EQ(getText(Tr104PhyReferenceListSip, 2), "2");
}

TEST_F(SipLineSwap, FailedStepsAreReportedAndTheSwapGoesOn) {
    fails = 1;
    std::string out = debugOutput([&] { EXPECT_EQ(setText(Tr104PhyReferenceListSip, 2, "1"), 0); });
    EXPECT_TRUE(printed(out, "Tr104PhyReferenceListSip", "Line 1 get number failed.\r\n")) << out;
    EXPECT_TRUE(printed(out, "Tr104PhyReferenceListSip", "Line 2 set phone number failed.\r\n")) << out;
    EXPECT_EQ(getText(Tr104PhyReferenceListSip, 2), "1");
}

}  // namespace
