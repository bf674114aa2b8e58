// Capabilities and limits, device operations and profile settings.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "device_fixture.h"

namespace {

using devicetest::DeviceHandler;
using devicetest::DeviceTest;
using siptest::debugOutput;
using siptest::printed;

constexpr int kNone = TR104_PROTOCOL_NONE;
constexpr int kH248 = TR104_PROTOCOL_H248;
constexpr int kSip = TR104_PROTOCOL_SIP;
constexpr int kRefused = -100;  // the protocol refuses the call before any check

class Capabilities : public DeviceTest {};

// Every capability under no protocol, H.248 and SIP (the emulator's SIP answers), with its null
// message; a set is refused by every one under every protocol that reaches the handler.
TEST_F(Capabilities, AnswerByProtocol) {
    struct Case {
        DeviceHandler handler;
        const char *name;
        const char *valueName;
        int none, h248, sip;
    };
    const Case cases[] = {
        {Tr104MaxSessionsPerLine, "Tr104MaxSessionsPerLine", "pMaxSessionsPerLine", kRefused, 1, 2},
        {Tr104MaxSessionsAllLines, "Tr104MaxSessionsAllLines", "pMaxSessionsAllLines", kRefused, 2, 4},
        {Tr104VoiceProtocolGroup, "Tr104VoiceProtocolGroup", "pVoiceProtocolGroup", 6, 6, 6},
        {Tr104RTCPFlag, "Tr104RTCPFlag", "pRTCPFlag", kRefused, 1, 1},
        {Tr104SRTPFlag, "Tr104SRTPFlag", "pSRTPFlag", 0, 0, 0},
        {Tr104RTPRedundancyFlag, "Tr104RTPRedundancyFlag", "pRTPRedundancyFlag", kRefused, 1, 0},
        {Tr104DSCPCoupledFlag, "Tr104DSCPCoupledFlag", "pDSCPCoupledFlag", 0, 0, 0},
        {Tr104VlanTagCoupledFlag, "Tr104VlanTagCoupledFlag", "pVlanTagCoupledFlag", kRefused, 1, 0},
        {Tr104PSTNSoftSwitchOverFlag, "Tr104PSTNSoftSwitchOverFlag", "pPSTNSoftSwitchOverFlag", 0, 0, 0},
        {Tr104FaxT38Flag, "Tr104FaxT38Flag", "pFaxT38Flag", kRefused, 1, 1},
        {Tr104FaxPassThroughFlag, "Tr104FaxPassThroughFlag", "pFaxPassThroughFlag", kRefused, 1, 1},
        {Tr104ModemPassThroughFlag, "Tr104ModemPassThroughFlag", "pModemPassThroughFlag", kRefused, 1, 1},
        {Tr104ToneGenerationFlag, "Tr104ToneGenerationFlag", "pToneGenerationFlag", 0, 0, 0},
        {Tr104RingGenerationFlag, "Tr104RingGenerationFlag", "pRingGenerationFlag", 0, 0, 0},
        {Tr104DigitMapFlag, "Tr104DigitMapFlag", "pDigitMapFlag", 1, 1, 1},
        {Tr104NumberingPlanFlag, "Tr104NumberingPlanFlag", "pNumberingPlanFlag", kRefused, 0, 0},
        {Tr104ButtonMapFlag, "Tr104ButtonMapFlag", "pButtonMapFlag", 0, 0, 0},
        {Tr104VoicePortTestsFlag, "Tr104VoicePortTestsFlag", "pVoicePortTestsFlag", 1, 1, 1},
        {Tr104ProfileNumberOfLines, "Tr104ProfileNumberOfLines", "pNumberOfLines", kRefused, 2, 2},
    };
    for (const Case &c : cases) {
        for (const auto &[protocol, expected] : {std::pair{kNone, c.none}, {kH248, c.h248}, {kSip, c.sip}}) {
            SCOPED_TRACE(std::string(c.name) + " under protocol " + std::to_string(protocol));
            gTr104CurrProtocolType = protocol;
            int value = -7;
            const int rc = c.handler(0, &value);
            if (expected == kRefused) {
                EXPECT_EQ(rc, -1);
                EXPECT_EQ(c.handler(0, nullptr), -1) << "no argument is looked at";
                continue;
            }
            EXPECT_EQ(rc, 0);
            EXPECT_EQ(value, expected);
            EXPECT_EQ(c.handler(1, &value), -2);
            const std::string out = debugOutput([&] { EXPECT_EQ(c.handler(0, nullptr), -2); });
            EXPECT_TRUE(printed(out,
                                protocol == kSip && c.none == kRefused ? (std::string(c.name) + "Sip").c_str() : c.name,
                                std::string("param error, ") + c.valueName + " is null\n"))
                << out;
        }
    }
}

TEST_F(Capabilities, FixedTextsAndTheUncheckedLineCount) {
    int lines = 0;
    EXPECT_EQ(Tr104MaxLineCount(0, &lines), 0);
    EXPECT_EQ(lines, 2);
    EXPECT_EQ(Tr104MaxLineCount(1, nullptr), -2) << "a set is refused before the pointer is used";
    char regions[8] = "xx";
    EXPECT_EQ(Tr104CapabilityRegions(0, regions), 0);
    EXPECT_STREQ(regions, "");
    EXPECT_EQ(Tr104CapabilityRegions(0, nullptr), -2);
    EXPECT_EQ(Tr104CapabilityRegions(1, regions), -2);
    const std::string out = debugOutput([&] { EXPECT_EQ(Tr104VoiceProtocolGroup(0, &lines), 0); });
    EXPECT_TRUE(printed(out, "Tr104VoiceProtocolGroup", "get voice protocol group[6] \n")) << out;
}

TEST_F(Capabilities, CountsComeFromTheVoiceModule) {
    vmemu::setProfileCounts(emulator, 3, 4);
    int value = 0;
    EXPECT_EQ(Tr104ProfileNumber(0, &value), 0);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(Tr104MaxCountPerProfile(0, &value), 0);
    EXPECT_EQ(value, 4);
    const auto sent = seen(2);
    EXPECT_EQ(sent[0].cmd, 94u);
    EXPECT_EQ(sent[1].cmd, 95u);
    emulator.setFault(0, {vmemu::Fault::FailureMarker});
    const std::string out = debugOutput([&] { EXPECT_EQ(Tr104ProfileNumber(0, &value), -1); });
    EXPECT_TRUE(printed(out, "Tr104ProfileNumber", "get voice profile number error.\n")) << out;
    emulator.clearFaults();
    restartLog();
    EXPECT_EQ(Tr104MaxCountPerProfile(1, &value), -2);
    EXPECT_EQ(Tr104ProfileNumber(0, nullptr), -2);
    expectNothingSent();
}

class DeviceOps : public DeviceTest {};

TEST_F(DeviceOps, LedStateMapping) {
    const struct { int module, reported; } cases[] = {{1, 0}, {2, 2}, {0, 1}, {3, -1}, {-1, -1}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.module);
        restartLog();
        vmemu::setLed(emulator, c.module);
        EXPECT_EQ(get_act_led(), c.reported);
        const auto sent = seen(1);
        EXPECT_EQ(sent[0].cmd, 20u);
        EXPECT_EQ(sent[0].word<int>(0), 1) << "the request word is preset to 1";
    }
    emulator.setFault(20, {vmemu::Fault::FailureMarker});
    EXPECT_EQ(get_act_led(), -1);
}

TEST_F(DeviceOps, PrivateProtocolSwitches) {
    const struct {
        DeviceHandler handler;
        uint32_t getCmd, setCmd;
    } cases[] = {{Tr104PrivateProtocolEnable, 6, 5}, {Tr104PrivateIgnoreClearCfgEnable, 8, 7}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.setCmd);
        restartLog();
        int value = 1;
        ASSERT_EQ(c.handler(1, &value), 0);
        value = 0;
        ASSERT_EQ(c.handler(0, &value), 0);
        EXPECT_EQ(value, 1);
        const auto sent = seen(2);
        EXPECT_EQ(sent[0].cmd, c.setCmd);
        EXPECT_EQ(sent[0].word<int>(0), 1);
        EXPECT_TRUE(siptest::zeroExcept(sent[0], {{0, 4}}));
        EXPECT_EQ(sent[1].cmd, c.getCmd);
        restartLog();
        EXPECT_EQ(c.handler(2, &value), -2);
        EXPECT_EQ(c.handler(1, nullptr), -2);
        expectNothingSent();
    }
    const vmemu::DeviceState s = vmemu::deviceState(emulator);
    EXPECT_EQ(s.privateProtocol, 1);
    EXPECT_EQ(s.ignoreClearConfig, 1);
}

TEST_F(DeviceOps, HeartbeatAndOperationArguments) {
    int value = 0;
    EXPECT_EQ(Tr104HeartbeatFlag(0, &value), 0);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(Tr104HeartbeatFlag(1, &value), -2);
    EXPECT_EQ(Tr104HeartbeatFlag(0, nullptr), -2);
    const struct {
        int nFlag;
        bool null;
        int operation;
        const char *message;
    } refused[] = {
        {0, false, 0, "param error, nFlag=0\n"},
        {1, true, 0, "param error, pOperation is null\n"},
        {1, false, 3, "param error, *pOperation=3\n"},
        {1, false, -1, "param error, *pOperation=-1\n"},
    };
    restartLog();
    for (const auto &r : refused) {
        SCOPED_TRACE(r.message);
        int operation = r.operation;
        const std::string out =
            debugOutput([&] { EXPECT_EQ(Tr104VoiceOperation(r.nFlag, r.null ? nullptr : &operation), -2); });
        EXPECT_TRUE(printed(out, "Tr104VoiceOperation", r.message)) << out;
    }
    // No protocol: no registration variant is reached.
    for (int operation : {0, 1}) {
        EXPECT_EQ(Tr104VoiceOperation(1, &operation), -1);
    }
    expectNothingSent();
}

// Operation 2 restarts the device through the shell's "reboot": a recording stand-in first on
// PATH counts the calls.
TEST_F(DeviceOps, RestartRunsRebootOnce) {
    char dir[] = "/tmp/tr104-reboot-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string script = std::string(dir) + "/reboot";
    const std::string record = std::string(dir) + "/calls";
    {
        std::ofstream out(script);
        out << "#!/bin/sh\necho reboot \"$@\" >> " << record << "\n";
    }
    ASSERT_EQ(chmod(script.c_str(), 0755), 0);
    const std::string oldPath = std::getenv("PATH") != nullptr ? std::getenv("PATH") : "";
    setenv("PATH", (std::string(dir) + ":" + oldPath).c_str(), 1);
    int operation = 2;
    testing::internal::CaptureStdout();
    const int rc = Tr104VoiceOperation(1, &operation);
    const std::string out = testing::internal::GetCapturedStdout();
    setenv("PATH", oldPath.c_str(), 1);
    EXPECT_EQ(rc, 0);
    EXPECT_NE(out.find("[Tr104VoiceOperation] system reboot...\n"), std::string::npos) << out;
    std::ifstream calls(record);
    std::string all((std::istreambuf_iterator<char>(calls)), std::istreambuf_iterator<char>());
    EXPECT_EQ(all, "reboot\n");
    std::remove(record.c_str());
    std::remove(script.c_str());
    rmdir(dir);
}

class ProfileSettings : public DeviceTest {};

TEST_F(ProfileSettings, EnableIsCaseSensitive) {
    char text[32] = {};
    const struct {
        const char *set;
        int rc;
        const char *after;
    } cases[] = {
        {"enabled", -2, "Enabled"},     {"Disabled", 0, "Disabled"}, {"Quiescent", 0, "Quiescent"},
        {"QUIESCENT", -2, "Quiescent"}, {"", -2, "Quiescent"},       {"Enabled", 0, "Enabled"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.set);
        std::strcpy(text, c.set);
        EXPECT_EQ(Tr104ProfileEnable(1, text), c.rc);
        EXPECT_EQ(Tr104ProfileEnable(0, text), 0);
        EXPECT_STREQ(text, c.after);
    }
    EXPECT_EQ(Tr104ProfileEnable(0, nullptr), -2);
    EXPECT_EQ(Tr104ProfileEnable(2, text), -2);
}

TEST_F(ProfileSettings, KeptValues) {
    int reset = -1;
    EXPECT_EQ(Tr104ProfileReset(0, &reset), 0);
    EXPECT_EQ(reset, 0);
    reset = 1;
    EXPECT_EQ(Tr104ProfileReset(1, &reset), 0);
    reset = 0;
    EXPECT_EQ(Tr104ProfileReset(0, &reset), 0);
    EXPECT_EQ(reset, 1);
    char name[128] = {};
    EXPECT_EQ(Tr104ProfileName(0, name), 0);
    EXPECT_STREQ(name, "VoiceProfile1");
    std::string longName(100, 'n');
    std::strcpy(name, longName.c_str());
    EXPECT_EQ(Tr104ProfileName(1, name), 0);
    EXPECT_EQ(Tr104ProfileName(0, name), 0);
    EXPECT_EQ(std::string(name), longName.substr(0, TR104_PROFILE_NAME_LEN - 1)) << "cut to the kept text";
    EXPECT_EQ(Tr104ProfileName(1, nullptr), -2);
    EXPECT_EQ(Tr104ProfileReset(3, &reset), -2);
    expectNothingSent();
}

TEST_F(ProfileSettings, SignalingProtocolAndServerType) {
    char text[16] = {};
    for (const auto &[protocol, name] : {std::pair{kNone, "NONE"}, {kH248, "H.248"}, {kSip, "SIP"}}) {
        gTr104CurrProtocolType = protocol;
        EXPECT_EQ(Tr104ProfileSignalingProtocol(0, text), 0);
        EXPECT_STREQ(text, name);
    }
    gTr104CurrProtocolType = kNone;
    const struct {
        int type;
        int rc;
        const char *sent;  // nullptr: nothing sent
    } cases[] = {{2, 0, "H.248"}, {0, 0, "SIP"}, {1, 0, "SIP"}, {3, -2, nullptr}, {-1, -2, nullptr}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.type);
        restartLog();
        int type = c.type;
        EXPECT_EQ(Tr104ServerType(1, &type), c.rc);
        if (c.sent == nullptr) {
            expectNothingSent();
            continue;
        }
        const auto sent = seen(1);
        EXPECT_EQ(sent[0].cmd, 1u);
        EXPECT_EQ(sent[0].text_at(0, 16), c.sent);
        EXPECT_TRUE(siptest::zeroExcept(sent[0], {{0, std::strlen(c.sent)}}));
        EXPECT_EQ(vmemu::deviceState(emulator).configuredProtocol, c.sent);
        type = -1;
        EXPECT_EQ(Tr104ServerType(0, &type), 0);
        EXPECT_EQ(type, c.type);
    }
    EXPECT_EQ(gVoiceServerType, 1) << "a refused type leaves the kept one";
    EXPECT_EQ(gTr104CurrProtocolType, kNone) << "the running protocol is not switched";
    EXPECT_EQ(Tr104ProfileSignalingProtocol(0, nullptr), -2);
    EXPECT_EQ(Tr104ServerType(0, nullptr), -2);
}

}  // namespace
