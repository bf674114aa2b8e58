// Protocol type: the persisted file, the switch with its restart, learning the protocol from the
// voice module, and the inbound change with its callbacks.
#include <sys/mount.h>

#include <chrono>
#include <string>
#include <vector>

#include "common/stdout_capture.h"
#include "emulator/protocol_family.h"
#include "private_root.h"
#include "support/channel_fixture.h"
#include "tr104/protocol.h"

namespace {

using tr104test::capturedStdout;
using tr104test::clearUxcfg;
using tr104test::fileExists;
using tr104test::PrivateRootEnvironment;
using tr104test::readFile;
using tr104test::writeFile;

[[maybe_unused]] ::testing::Environment *const privateRoot =
    ::testing::AddGlobalTestEnvironment(new PrivateRootEnvironment);

const std::string kProtocolFile = TR104_PROTOCOL_FILE;
const std::string kCliFile = TR104_VOICE_CLI_FILE;
const std::string kRestartMessage = "\r\nVoice protocol switched, restart system now...\r";

class ProtocolFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        clearUxcfg();
        PrivateRootEnvironment::resetRebootCount();
    }
    void TearDown() override { setReadOnly(false); }

    static void setReadOnly(bool readOnly) {
        const unsigned long flags = MS_REMOUNT | (readOnly ? MS_RDONLY : 0);
        ASSERT_EQ(mount(nullptr, "/uxcfg", nullptr, flags, nullptr), 0);
    }
};

TEST_F(ProtocolFileTest, PersistedTypeIsOneLineAndReadsBack) {
    for (int type : {0, 2, 4}) {
        ASSERT_EQ(SetProtocolTypeToScript(type), 0);
        EXPECT_EQ(readFile(kProtocolFile), "voipType " + std::to_string(type) + "\n");
        EXPECT_EQ(GetProtocolTypeFromScript(), type);
        EXPECT_EQ(Tr104GetProtocolTypeFromScript(), type);
    }
}

TEST_F(ProtocolFileTest, TypesOutsideTheRangeAreRefusedBeforeTheFile) {
    for (int type : {5, 6, -1}) {
        const std::string out = capturedStdout([&] { EXPECT_EQ(SetProtocolTypeToScript(type), -1); });
        EXPECT_EQ(out, "unknown protocol type: " + std::to_string(type) + "!\r\n");
        EXPECT_FALSE(fileExists(kProtocolFile));
    }
}

TEST_F(ProtocolFileTest, ReadingParsesAnyWordFollowedByTheNumber) {
    struct Case {
        std::string content;
        int expected;
    };
    const Case cases[] = {
        {"voipType 2\n", 2},
        {"anything 2\n", 2},
        {"protocol 4 trailing words\n", 4},
        {"  voipType   3", 3},
        {"voipType\n", 0},
        {"voipType sip\n", 0},
        {"", -1},
        {" \n\n", -1},
        // A keyword far longer than any real one still reads as a malformed line.
        {std::string(300, 'k') + " 2\n", 0},
    };
    for (const Case &c : cases) {
        writeFile(kProtocolFile, c.content);
        EXPECT_EQ(GetProtocolTypeFromScript(), c.expected) << '"' << c.content << '"';
    }
}

TEST_F(ProtocolFileTest, MissingFileIsReported) {
    const std::string out = capturedStdout([] { EXPECT_EQ(GetProtocolTypeFromScript(), -1); });
    EXPECT_EQ(out, "can't open file /uxcfg/voip.conf!\r\n");
}

TEST_F(ProtocolFileTest, SwitchPersistsWaitsPrintsAndRestarts) {
    const auto start = std::chrono::steady_clock::now();
    const std::string out = capturedStdout([] { EXPECT_EQ(SwitchProtocolType(4), 0); });
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(readFile(kProtocolFile), "voipType 4\n");
    EXPECT_EQ(out, kRestartMessage);
    EXPECT_GE(waited, std::chrono::milliseconds(1900));
    EXPECT_EQ(PrivateRootEnvironment::rebootCount(), 1);
}

TEST_F(ProtocolFileTest, SwitchWithRestartFlagRestarts) {
    const std::string out = capturedStdout([] { EXPECT_EQ(SwitchProtocolType2(2, 1), 0); });
    EXPECT_EQ(readFile(kProtocolFile), "voipType 2\n");
    EXPECT_EQ(out, kRestartMessage);
    EXPECT_EQ(PrivateRootEnvironment::rebootCount(), 1);
}

TEST_F(ProtocolFileTest, SwitchWithoutRestartOnlyPersists) {
    const auto start = std::chrono::steady_clock::now();
    const std::string out = capturedStdout([] { EXPECT_EQ(SwitchProtocolType2(4, 0), 0); });
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
    EXPECT_EQ(readFile(kProtocolFile), "voipType 4\n");
    EXPECT_EQ(out, "");
    EXPECT_EQ(PrivateRootEnvironment::rebootCount(), 0);
}

TEST_F(ProtocolFileTest, RefusedSwitchesLeaveTheFileAndTheDeviceAlone) {
    struct Case {
        int type;
        int flag;  // -1: SwitchProtocolType
        const char *message;
    };
    const Case cases[] = {
        {5, 1, "unknown protocol type: 5!\r\n"},  {5, 7, "unknown protocol type: 5!\r\n"},  // the type is tested first
        {4, 2, "param err, bRebootFlag=2!\r\n"},  {4, -3, "param err, bRebootFlag=-3!\r\n"},
        {9, -1, "unknown protocol type: 9!\r\n"},
    };
    for (const Case &c : cases) {
        writeFile(kProtocolFile, "voipType 2\n");
        const std::string out = capturedStdout(
            [&] { EXPECT_EQ(c.flag == -1 ? SwitchProtocolType(c.type) : SwitchProtocolType2(c.type, c.flag), -1); });
        EXPECT_EQ(out, c.message);
        EXPECT_EQ(readFile(kProtocolFile), "voipType 2\n");
    }
    EXPECT_EQ(PrivateRootEnvironment::rebootCount(), 0);
}

TEST_F(ProtocolFileTest, UnwritableFileStopsTheSwitch) {
    setReadOnly(true);
    const std::string out = capturedStdout([] {
        EXPECT_EQ(SwitchProtocolType(4), -1);
        EXPECT_EQ(SwitchProtocolType2(4, 1), -1);
    });
    const std::string once = "can't open file /uxcfg/voip.conf!\r\nwrite protocol type error!\r";
    EXPECT_EQ(out, once + once);
    EXPECT_EQ(PrivateRootEnvironment::rebootCount(), 0);
}

TEST_F(ProtocolFileTest, EraseLeavesOneErasedByte) {
    writeFile(kCliFile, "voice cli line 1\nvoice cli line 2\n");
    const std::string out = capturedStdout([] { EXPECT_EQ(EraseVoiceCliConfig(), 0); });
    EXPECT_EQ(readFile(kCliFile), std::string(1, '\xFF'));
    EXPECT_EQ(out, "\r\nerase voice cli configuration ok.\r");

    setReadOnly(true);
    const std::string failed = capturedStdout([] { EXPECT_EQ(EraseVoiceCliConfig(), -1); });
    EXPECT_EQ(failed, "can't open file /uxcfg/voiceconf.ini!\r\n");
}

// Learning the protocol from the voice module (command 2).
class ProtocolQueryTest : public tr104test::ChannelTest {
protected:
    void SetUp() override {
        ChannelTest::SetUp();
        gTr104CurrProtocolType = 0;
    }
    void TearDown() override {
        ChannelTest::TearDown();
        gTr104CurrProtocolType = 0;
    }
};

TEST_F(ProtocolQueryTest, RefreshSetsTheTypeFromTheName) {
    struct Case {
        const char *name;
        int before;
        int expected;
    };
    const Case cases[] = {
        {"SIP", 0, 4},          {"H.248", 0, 2}, {"H.248", 4, 2}, {"MGCP", 4, 0},
        {"sip", 2, 0},          {"SIPS", 4, 0},  {"", 2, 0},      {"H.2480", 2, 0},  // six bytes, no terminator
        {"SIP-over-TLS", 4, 0},
    };
    for (const Case &c : cases) {
        vmemu::setProtocolName(emulator, c.name);
        gTr104CurrProtocolType = c.before;
        EXPECT_EQ(Tr104RefreshCurrProtocolType(), 0) << c.name;
        EXPECT_EQ(gTr104CurrProtocolType, c.expected) << c.name;
    }
    const auto sent = emulator.requestsFor(TR104_GET_PROTOCOL_NAME_ID);
    ASSERT_EQ(sent.size(), std::size(cases));
    EXPECT_EQ(sent[0].module, 7);
}

TEST_F(ProtocolQueryTest, FailedRefreshKeepsTheType) {
    emulator.setFault(TR104_GET_PROTOCOL_NAME_ID, {vmemu::Fault::WrongCmd, 0, -1});
    gTr104CurrProtocolType = 2;
    gTr104CfgDebug = 1;
    const std::string out = capturedStdout([] { EXPECT_EQ(Tr104RefreshCurrProtocolType(), -1); });
    gTr104CfgDebug = 0;
    EXPECT_EQ(gTr104CurrProtocolType, 2);
    EXPECT_NE(out.find("[Tr104RefreshCurrProtocolType,"), std::string::npos) << out;
    EXPECT_NE(out.find("get voice protocol type error \n"), std::string::npos) << out;
}

TEST_F(ProtocolQueryTest, RefreshPrintsOnlyWhileDebugging) {
    vmemu::setProtocolName(emulator, "H.248");
    EXPECT_EQ(capturedStdout([] { EXPECT_EQ(Tr104RefreshCurrProtocolType(), 0); }), "");
    gTr104CfgDebug = 1;
    const std::string out = capturedStdout([] { EXPECT_EQ(Tr104RefreshCurrProtocolType(), 0); });
    gTr104CfgDebug = 0;
    EXPECT_NE(out.find("get voice protocol type[H.248] \n"), std::string::npos) << out;
}

TEST_F(ProtocolQueryTest, ParameterReportsTheNameWithoutChangingTheType) {
    vmemu::setProtocolName(emulator, "H.248");
    char name[16];
    std::memset(name, '#', sizeof(name));
    EXPECT_EQ(Tr104VoiceProtocolType(0, name, nullptr), 0);
    EXPECT_STREQ(name, "H.248");
    EXPECT_EQ(gTr104CurrProtocolType, 0);

    // A longer name fills the six bytes and nothing beyond them.
    vmemu::setProtocolName(emulator, "SIP/2.0-TLS");
    std::memset(name, '#', sizeof(name));
    EXPECT_EQ(Tr104VoiceProtocolType(0, name, nullptr), 0);
    EXPECT_EQ(std::string(name, 7), "SIP/2.#");
}

TEST_F(ProtocolQueryTest, ParameterRefusesBadArgumentsWithoutAnExchange) {
    char name[8] = {};
    gTr104CfgDebug = 1;
    const std::string out = capturedStdout([&] {
        EXPECT_EQ(Tr104VoiceProtocolType(0, nullptr, nullptr), -2);
        EXPECT_EQ(Tr104VoiceProtocolType(1, name, nullptr), -2);
        EXPECT_EQ(Tr104VoiceProtocolType(-1, name, nullptr), -2);
    });
    gTr104CfgDebug = 0;
    EXPECT_NE(out.find("param error, pVoiceProtocolType is null\n"), std::string::npos);
    EXPECT_NE(out.find("param error, nFlag[1]\n"), std::string::npos);
    EXPECT_NE(out.find("param error, nFlag[-1]\n"), std::string::npos);
    EXPECT_EQ(emulator.requestCount(), 0u);

    emulator.setFault(TR104_GET_PROTOCOL_NAME_ID, {vmemu::Fault::WrongType, 0, -1});
    EXPECT_EQ(Tr104VoiceProtocolType(0, name, nullptr), -1);
}

// Inbound command 3 and the agent's callbacks.
std::vector<int> refreshSeen;  // the protocol type each refresh callback saw
int *refreshArgument = nullptr;
int pagesLoaded = 0;

void recordRefresh(int *type) {
    refreshArgument = type;
    refreshSeen.push_back(*type);
}
void recordPages() { ++pagesLoaded; }
void otherRefresh(int *) {}

class ProtocolChangeTest : public ::testing::Test {
protected:
    void SetUp() override { reset(); }
    void TearDown() override { reset(); }
    static void reset() {
        gRefreshVoiceConfigFunc = nullptr;
        gLoadVoicePagesFunc = nullptr;
        gTr104CurrProtocolType = 0;
        refreshSeen.clear();
        refreshArgument = nullptr;
        pagesLoaded = 0;
    }
    static Tr104Msg change(uint32_t refresh, uint32_t type) {
        Tr104Msg msg{};
        msg.cmd_type = TR104_CMD_TYPE_DATA;
        msg.cmd = TR104_SET_PROTOCOL_TYPE_ID;
        const uint32_t words[2] = {refresh, type};
        std::memcpy(msg.rspBuffer, words, sizeof(words));
        return msg;
    }
};

TEST_F(ProtocolChangeTest, RegisteringNullKeepsTheOldCallback) {
    EXPECT_EQ(RegisterRefreshVoiceCfgFunc(recordRefresh), 0);
    EXPECT_EQ(RegisterLoadVoicePagesFunc(recordPages), 0);
    EXPECT_EQ(RegisterRefreshVoiceCfgFunc(nullptr), -1);
    EXPECT_EQ(RegisterLoadVoicePagesFunc(nullptr), -1);
    EXPECT_EQ(gRefreshVoiceConfigFunc, &recordRefresh);
    EXPECT_EQ(gLoadVoicePagesFunc, &recordPages);
    EXPECT_EQ(RegisterRefreshVoiceCfgFunc(otherRefresh), 0);
    EXPECT_EQ(gRefreshVoiceConfigFunc, &otherRefresh);
}

TEST_F(ProtocolChangeTest, TypeAndCallbacksFollowTheMessage) {
    struct Case {
        uint32_t refresh;
        uint32_t type;
        bool refreshed;
    };
    const Case cases[] = {{1, 2, true}, {1, 4, true}, {0, 4, false}, {2, 2, false}, {1, 0, true}, {0, 7, false}};
    ASSERT_EQ(RegisterRefreshVoiceCfgFunc(recordRefresh), 0);
    ASSERT_EQ(RegisterLoadVoicePagesFunc(recordPages), 0);
    int pages = 0;
    for (const Case &c : cases) {
        refreshSeen.clear();
        const Tr104Msg msg = change(c.refresh, c.type);
        EXPECT_EQ(Tr104SetProtocolType(&msg), 0);
        EXPECT_EQ(gTr104CurrProtocolType, static_cast<int>(c.type));
        if (c.refreshed) {
            // The callback runs after the type is set and is handed the global itself.
            EXPECT_EQ(refreshSeen, std::vector<int>{static_cast<int>(c.type)});
            EXPECT_EQ(refreshArgument, &gTr104CurrProtocolType);
        } else {
            EXPECT_TRUE(refreshSeen.empty());
        }
        EXPECT_EQ(pagesLoaded, ++pages);
    }
}

TEST_F(ProtocolChangeTest, WorksWithoutCallbacksAndRefusesNull) {
    const Tr104Msg msg = change(1, 2);
    EXPECT_EQ(Tr104SetProtocolType(&msg), 0);
    EXPECT_EQ(gTr104CurrProtocolType, 2);
    EXPECT_EQ(Tr104SetProtocolType(nullptr), -1);
    EXPECT_EQ(gTr104CurrProtocolType, 2);
}

}  // namespace
