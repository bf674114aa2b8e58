// Voice-profile values of a line: find the bound profile, or create "port%d" and bind it.
#include "sip_fixture.h"
#include "tr104/h248.h"
#include "tr104/handlers.h"
#include "tr104/protocol.h"

namespace {

using siptest::debugOutput;
using siptest::Handler;
using siptest::printed;
using siptest::SipTest;

class SipProfile : public SipTest {
protected:
    // A port whose status reports a bound profile of this name.
    void bindPort(uint32_t port, const char *profile) {
        Tr104SipLineRecord status{};
        status.unLine = port;
        status.unProfileId = 5;
        std::strcpy(status.aProfileName, profile);
        putPortStatus(status);
    }

    std::vector<uint32_t> commands(size_t n) {
        std::vector<uint32_t> cmds;
        for (const vmemu::Request &r : seen(n)) {
            cmds.push_back(r.cmd);
        }
        return cmds;
    }
};

TEST_F(SipProfile, UnboundPortGetsAProfileCreatedSetAndBound) {
    ASSERT_EQ(setInt(Tr104LineTransmitGainSip, 2, -7), 0);
    const auto sent = seen(4);
    ASSERT_EQ(sent.size(), 4u);
    EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(GET_PORT_STATUS_ID));
    EXPECT_EQ(sent[0].word<uint32_t>(0), 2u);
    const uint32_t expected[] = {CREATE_PROFILE_ID, SET_PROFILE_CMD_ID, BIND_PROFILE_ID};
    for (size_t i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        const vmemu::Request &r = sent[i + 1];
        EXPECT_EQ(r.cmd, expected[i]);
        EXPECT_EQ(r.text_at(2, 22), "port2");
        EXPECT_EQ(r.word<uint32_t>(24), static_cast<uint32_t>(TR104_PROFILE_TRANSMIT_GAIN));
        EXPECT_EQ(r.word<int8_t>(43), -7);
        // Only the bind request names the port.
        EXPECT_EQ(r.word<uint8_t>(0), i == 2 ? 2u : 0u);
        EXPECT_TRUE(siptest::zeroExcept(r, {{0, 1}, {2, 22}, {24, 4}, {43, 1}}));
    }

    // The port status now reports the bound profile: the next calls find it.
    restartLog();
    int gain = 0;
    ASSERT_EQ(getInt(Tr104LineTransmitGainSip, 2, &gain), 0);
    EXPECT_EQ(gain, -7);
    const auto get = seen(2);
    EXPECT_EQ(get[1].cmd, static_cast<uint32_t>(GET_PROFILE_CMD_ID));
    EXPECT_EQ(get[1].text_at(2, 22), "port2");

    restartLog();
    ASSERT_EQ(setInt(Tr104LineReceiveGainSip, 2, 9), 0);
    EXPECT_EQ(commands(2), (std::vector<uint32_t>{GET_PORT_STATUS_ID, SET_PROFILE_CMD_ID}));
    ASSERT_EQ(getInt(Tr104LineReceiveGainSip, 2, &gain), 0);
    EXPECT_EQ(gain, 9);
    ASSERT_EQ(getInt(Tr104LineTransmitGainSip, 2, &gain), 0);
    EXPECT_EQ(gain, -7) << "a masked set changes only its own field";
}

TEST_F(SipProfile, BoundPortIsChangedUnderItsOwnName) {
    bindPort(1, "office-profile-name-x");
    ASSERT_EQ(setInt(Tr104LineEchoCancelFlagSip, 1, 1), 0);
    const auto sent = seen(2);
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(SET_PROFILE_CMD_ID));
    EXPECT_EQ(sent[1].text_at(2, 22), "office-profile-name-x");
    EXPECT_EQ(sent[1].word<uint32_t>(24), static_cast<uint32_t>(TR104_PROFILE_ECHO_CANCEL));
    EXPECT_EQ(sent[1].word<uint8_t>(41), 1u);
    int flag = 0;
    std::string out = debugOutput([&] { ASSERT_EQ(getInt(Tr104LineEchoCancelFlagSip, 1, &flag), 0); });
    EXPECT_EQ(flag, 1);
    EXPECT_TRUE(printed(out, "Tr104LineEchoCancelFlagSip", "get line[1] echo cancel [1]\n")) << out;
}

// Each audio setting through its wrapper under either protocol: the same profile request and
// read-back, answered by the protocol's own variant (its name heads the handler's messages).
TEST_F(SipProfile, EveryMemberWritesItsFieldAndBitUnderEitherProtocol) {
    struct Case {
        Handler wrapper;
        const char *name;
        size_t offset;
        uint32_t bit;
        int value[2];  // SIP, H.248
        int readBack[2];
    };
    const Case cases[] = {
        {Tr104LineTransmitGain, "Tr104LineTransmitGain", 43, TR104_PROFILE_TRANSMIT_GAIN, {32, -32}, {32, -32}},
        {Tr104LineReceiveGain, "Tr104LineReceiveGain", 42, TR104_PROFILE_RECEIVE_GAIN, {-31, 31}, {-31, 31}},
        {Tr104LineEchoCancelFlag, "Tr104LineEchoCancelFlag", 41, TR104_PROFILE_ECHO_CANCEL, {1, 0}, {1, 0}},
        {Tr104LineComfortNoiseFlag, "Tr104LineComfortNoiseFlag", 39, TR104_PROFILE_COMFORT_NOISE, {0x101, 0}, {1, 0}},
        {Tr104LineJitterBufferTarget,
         "Tr104LineJitterBufferTarget",
         44,
         TR104_PROFILE_JITTER_TARGET,
         {200, 40},
         {200, 40}},
    };
    bindPort(1, "p");
    const std::pair<int, const char *> protocols[] = {{TR104_PROTOCOL_SIP, "Sip"}, {TR104_PROTOCOL_H248, "H248"}};
    for (size_t p = 0; p < 2; ++p) {
        gTr104CurrProtocolType = protocols[p].first;
        for (const Case &c : cases) {
            const std::string variant = std::string(c.name) + protocols[p].second;
            SCOPED_TRACE(variant);
            restartLog();
            ASSERT_EQ(setInt(c.wrapper, 1, c.value[p]), 0);
            const auto sent = seen(2);
            EXPECT_EQ(sent[0].cmd, static_cast<uint32_t>(GET_PORT_STATUS_ID));
            EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(SET_PROFILE_CMD_ID));
            EXPECT_EQ(sent[1].text_at(2, 22), "p");
            EXPECT_EQ(sent[1].word<uint32_t>(24), c.bit);
            EXPECT_EQ(sent[1].word<uint8_t>(c.offset), static_cast<uint8_t>(c.value[p]));
            EXPECT_TRUE(siptest::zeroExcept(sent[1], {{2, 22}, {24, 4}, {c.offset, 1}}));
            int got = 0;
            ASSERT_EQ(getInt(c.wrapper, 1, &got), 0);
            EXPECT_EQ(got, c.readBack[p]);
            const std::string out = debugOutput([&] { EXPECT_EQ(getInt(c.wrapper, 3, &got), -2); });
            EXPECT_TRUE(printed(out, variant.c_str(), "param error, nLocate[2]=3\n")) << out;
        }
    }
    gTr104CurrProtocolType = 0;
    int value = 1;
    EXPECT_EQ(Tr104LineComfortNoiseFlag(1, &value, line(1)), -1);
}

TEST_F(SipProfile, GainRangesAndTheirMessages) {
    const struct {
        Handler handler;
        const char *name;
        int value;
        bool bound;
        int rc;
        const char *message;
    } cases[] = {
        {Tr104LineTransmitGainSip, "Tr104LineTransmitGainSip", -32, true, 0, nullptr},
        {Tr104LineTransmitGainSip, "Tr104LineTransmitGainSip", 32, true, 0, nullptr},
        {Tr104LineTransmitGainSip, "Tr104LineTransmitGainSip", 33, true, -1,
         "transmit gain value is out of range[-32,32].\n"},
        {Tr104LineTransmitGainSip, "Tr104LineTransmitGainSip", -33, false, -1,
         "transmit gain value is out of range[-32,32].\n"},
        {Tr104LineReceiveGainSip, "Tr104LineReceiveGainSip", 31, true, 0, nullptr},
        {Tr104LineReceiveGainSip, "Tr104LineReceiveGainSip", -31, true, 0, nullptr},
        {Tr104LineReceiveGainSip, "Tr104LineReceiveGainSip", 32, true, -1,
         "transmit gain value is out of range[-31,31].\n"},
        {Tr104LineReceiveGainSip, "Tr104LineReceiveGainSip", -32, false, -1,
         "receive gain value is out of range[-31,31].\n"},
        {Tr104LineTransmitGainSip, "Tr104LineTransmitGainSip", INT32_MIN, true, -1,
         "transmit gain value is out of range[-32,32].\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " " + std::to_string(c.value));
        emulator.clearRecords();
        if (c.bound) {
            bindPort(1, "p1");
        }
        restartLog();
        std::string out = debugOutput([&] { EXPECT_EQ(setInt(c.handler, 1, c.value), c.rc); });
        if (c.message != nullptr) {
            EXPECT_TRUE(printed(out, c.name, c.message)) << out;
            EXPECT_EQ(seen(1).size(), 1u) << "only the port status is read";
        }
    }
}

TEST_F(SipProfile, FailuresAlongTheCreatePath) {
    emulator.setFault(GET_PORT_STATUS_ID, {vmemu::Fault::FailureMarker, 0, 1});
    std::string out = debugOutput([&] { EXPECT_EQ(setInt(Tr104LineTransmitGainSip, 1, 1), -1); });
    EXPECT_TRUE(printed(out, "Tr104LineTransmitGainSip", "get port[1] status error\n")) << out;
    emulator.setFault(GET_PROFILE_CMD_ID, {vmemu::Fault::FailureMarker, 0, 1});
    int gain = 55;
    out = debugOutput([&] { EXPECT_EQ(getInt(Tr104LineReceiveGainSip, 2, &gain), -1); });
    EXPECT_EQ(gain, 55);
    EXPECT_TRUE(printed(out, "Tr104LineReceiveGainSip", "get line[2] receive gain error\n")) << out;
    emulator.setFault(GET_PROFILE_CMD_ID, {vmemu::Fault::FailureMarker, 0, 1});
    out = debugOutput([&] { EXPECT_EQ(getInt(Tr104LineComfortNoiseFlagSip, 2, &gain), -1); });
    EXPECT_TRUE(printed(out, "Tr104LineComfortNoiseFlagSip", "get line[2] echo cancel error\n")) << out;
}

TEST_F(SipProfile, DtmfMethodOverAllLinesOrOne) {
    ASSERT_EQ(setText(Tr104ProfileDTMFMethodSip, 0, "SIPInfo"), 0);
    // Both lines: port status, create, set, bind for line 1 and then for line 2.
    const auto sent = seen(8);
    ASSERT_EQ(sent.size(), 8u);
    EXPECT_EQ(sent[0].word<uint32_t>(0), 1u);
    EXPECT_EQ(sent[3].text_at(2, 22), "port1");
    EXPECT_EQ(sent[4].word<uint32_t>(0), 2u);
    EXPECT_EQ(sent[7].text_at(2, 22), "port2");
    EXPECT_EQ(sent[7].word<uint8_t>(40), 3u);
    EXPECT_EQ(sent[7].word<uint32_t>(24), static_cast<uint32_t>(TR104_PROFILE_DTMF_METHOD));

    ASSERT_EQ(setText(Tr104ProfileDTMFMethodSip, 2, "RFC2833 Redundancy"), 0);
    EXPECT_EQ(getText(Tr104ProfileDTMFMethodSip, 2), "RFC2833 Redundancy");
    EXPECT_EQ(getText(Tr104ProfileDTMFMethodSip, 0), "SIPInfo") << "line 0 reads line 1";
    EXPECT_EQ(getText(Tr104ProfileDTMFMethodSip, 1), "SIPInfo");
    ASSERT_EQ(setText(Tr104ProfileDTMFMethodSip, 1, "InBand"), 0);
    EXPECT_EQ(getText(Tr104ProfileDTMFMethodSip, 1), "InBand");
    ASSERT_EQ(setText(Tr104ProfileDTMFMethodSip, 1, "RFC2833"), 0);
    EXPECT_EQ(getText(Tr104ProfileDTMFMethodSip, 1), "RFC2833");

    std::string out = debugOutput([&] { EXPECT_EQ(setText(Tr104ProfileDTMFMethodSip, 0, "rfc2833"), -2); });
    EXPECT_TRUE(printed(out, "Tr104ProfileDTMFMethodSip", "param error, DTMF Method[rfc2833].\n")) << out;

    Tr104SipProfileRecord stored{};
    std::strcpy(stored.aName, "port1");
    stored.ucDtmfMethod = 4;
    emulator.put("sip profile", &stored, sizeof(stored));
    out = debugOutput([&] { EXPECT_EQ(getText(Tr104ProfileDTMFMethodSip, 1), "<-1>"); });
    EXPECT_TRUE(printed(out, "Tr104ProfileDTMFMethodSip", "DTMF method[4] error.\n")) << out;
}

TEST_F(SipProfile, LineGainCreatesSetsAndBindsInOneRequest) {
    const int port = 2;
    int twelve = 12;
    std::string out = debugOutput([&] { EXPECT_EQ(Tr104LineGainSip(1, 1, &twelve, line(port)), 0); });
    EXPECT_TRUE(printed(out, "Tr104LineGainSip", "gain:12 profileid:0.\n")) << out;
    auto sent = seen(2);
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(CREATE_SET_BIND_PROFILE_ID));
    EXPECT_EQ(sent[1].word<uint8_t>(0), 2u);
    EXPECT_EQ(sent[1].text_at(2, 22), "port2");
    EXPECT_EQ(sent[1].word<uint32_t>(24), static_cast<uint32_t>(TR104_PROFILE_RECEIVE_GAIN));
    EXPECT_EQ(sent[1].word<int8_t>(42), 12);

    restartLog();
    int gain = -32;
    EXPECT_EQ(Tr104LineGainSip(1, 0, &gain, line(port)), 0);
    sent = seen(2);
    EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(SET_PROFILE_CMD_ID));
    EXPECT_EQ(sent[1].word<int8_t>(43), -32);

    int got = 0;
    EXPECT_EQ(Tr104LineGainSip(0, 1, &got, line(port)), 0);
    EXPECT_EQ(got, 12);
    EXPECT_EQ(Tr104LineGainSip(0, 0, &got, line(port)), 0);
    EXPECT_EQ(got, -32);
    for (int bad : {33, -33}) {
        restartLog();
        EXPECT_EQ(Tr104LineGainSip(1, 1, &bad, line(port)), -1);
        EXPECT_EQ(seen(1).size(), 1u);
    }
    // The H.248 variant: the same requests under its own name.
    restartLog();
    int five = 5;
    out = debugOutput([&] { EXPECT_EQ(Tr104LineGainH248(1, 0, &five, line(port)), 0); });
    EXPECT_TRUE(printed(out, "Tr104LineGainH248", "gain:5 profileid:")) << out;
    sent = seen(2);
    EXPECT_EQ(sent[1].cmd, static_cast<uint32_t>(SET_PROFILE_CMD_ID));
    EXPECT_EQ(sent[1].word<int8_t>(43), 5);
    EXPECT_EQ(Tr104LineGainH248(0, 0, &got, line(port)), 0);
    EXPECT_EQ(got, 5);
}

}  // namespace
