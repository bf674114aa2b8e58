#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "tr104/sip/server_record.h"
#include "tr104/sip_identity.h"
#include "voiced/account.h"
#include "voiced/baresip.h"
#include "voiced/line_activity.h"
#include "voiced/simulated_call.h"
#include "voiced/voice_module.h"

namespace voiced {
namespace {

using std::chrono::seconds;

TEST(VoicedAccount, AccountLinesFromSettings) {
    const Server registrar{"10.0.0.1", 5060}, proxy{"proxy.example", 5070}, outbound{"10.0.0.9", 0};
    const LineSettings line{true, "1001", "u1001", "pw"};
    struct Case {
        const char *name;
        ProfileSettings profile;
        LineSettings line;
        bool autoAnswer;
        const char *expected;  // nullptr: no account
        const char *reason;
    } cases[] = {
        {"registrar alone",
         {registrar, {}, {}, 60},
         line,
         false,
         "<sip:1001@10.0.0.1:5060>;auth_user=u1001;auth_pass=pw;regint=60",
         ""},
        {"proxy routes, answers",
         {registrar, proxy, {}, 60},
         line,
         true,
         "<sip:1001@10.0.0.1:5060>;auth_user=u1001;auth_pass=pw;outbound=\"sip:proxy.example:5070;lr\";regint=60;"
         "answermode=auto",
         ""},
        {"outbound before proxy, proxy as registrar",
         {{}, proxy, outbound, 30},
         {true, "7", "", ""},
         false,
         "<sip:7@proxy.example:5070>;auth_user=7;outbound=\"sip:10.0.0.9;lr\";regint=30",
         ""},
        {"disabled", {registrar, {}, {}, 60}, {false, "1001", "u", "p"}, false, nullptr, "disabled"},
        {"no number", {registrar, {}, {}, 60}, {true, "", "u", "p"}, false, nullptr, "no directory number"},
        {"no server", {}, line, false, nullptr, "no registrar or proxy address"},
        {"separator in password", {registrar, {}, {}, 60}, {true, "1001", "u", "a;b"}, false, nullptr, "a number"},
    };
    for (const Case &c : cases) {
        const auto account = accountLine(c.profile, c.line, c.autoAnswer);
        EXPECT_EQ(account.value_or("(none)"), c.expected ? c.expected : "(none)") << c.name;
        EXPECT_EQ(notRegisteringBecause(c.profile, c.line).rfind(c.reason, 0), 0u) << c.name;
    }
    EXPECT_EQ(redacted("<sip:1@h>;auth_pass=secret;regint=60"), "<sip:1@h>;auth_pass=***;regint=60");
    EXPECT_EQ(redacted("Creating UA for <sip:1@h>;auth_pass=secret"), "Creating UA for <sip:1@h>;auth_pass=***");
    EXPECT_EQ(dialUri({registrar, {}, {}, 60}, "1002"), "sip:1002@10.0.0.1:5060");
    EXPECT_EQ(dialUri({registrar, {}, {}, 60}, "sip:x@y"), "sip:x@y");
}

TEST(VoicedControl, NetstringsAndEvents) {
    std::string buffer = netstring("{\"a\":1}") + "5:ab";
    std::string payload;
    EXPECT_EQ(takeNetstring(&buffer, &payload), 1);
    EXPECT_EQ(payload, "{\"a\":1}");
    EXPECT_EQ(takeNetstring(&buffer, &payload), 0) << "incomplete";
    buffer += "cde,";
    EXPECT_EQ(takeNetstring(&buffer, &payload), 1);
    EXPECT_EQ(payload, "abcde");
    for (const char *bad : {"x:1,", "3:abcd", "99999999999:", ":a,"}) {
        std::string b = bad;
        EXPECT_EQ(takeNetstring(&b, &payload), -1) << bad;
    }
    const auto event = parseEvent(R"({"event":true,"type":"CALL_RTCP","accountaor":"sip:1@h","direction":"outgoing",
        "id":"c1","param":"audio","rtcp_stats":{"tx":{"sent":250,"lost":2,"jit":625},"rx":{"sent":249,"lost":-1,
        "jit":875},"rtt":245}})");
    ASSERT_TRUE(event && event->rtcp);
    EXPECT_EQ(event->aor, "sip:1@h");
    EXPECT_EQ(event->rtcp->txSent, 250u);
    EXPECT_EQ(event->rtcp->rxLost, -1);
    EXPECT_EQ(event->rtcp->rtt, 245u);
    EXPECT_FALSE(parseEvent(R"({"response":true,"ok":true,"data":"","token":"1"})"));
    EXPECT_EQ(parseAnswer(R"({"response":true,"ok":true,"data":"ua","token":"7"})", "7")->data, "ua");
    EXPECT_FALSE(parseAnswer(R"({"response":true,"ok":true,"data":"ua","token":"7"})", "8")) << "another command's";
    EXPECT_TRUE(parseAnswer("{\"response\":true,\"ok\":true,\"data\":\"\x01\",\"token\":\"7\"}", "7")->ok)
        << "data that is not valid JSON";
    EXPECT_FALSE(parseEvent("{not json"));
    EXPECT_FALSE(parseEvent(R"({"event":true,"type":3,"rtcp_stats":[1]})")->rtcp);
}

Event ev(const char *type, const char *direction = "", const char *param = "", const char *aor = "sip:1@h") {
    return Event{type, aor, direction, "sip:2@h", *direction ? "c1" : "", param, std::nullopt};
}
Event rtcp(uint32_t sent, const char *direction = "outgoing", const char *aor = "sip:1@h") {
    Event e = ev("CALL_RTCP", direction, "audio", aor);
    e.rtcp = RtcpStats{sent, 0, 600, sent - 1, 1, 900, 300};
    return e;
}

TEST(VoicedLineActivity, EventsMakeStatusAndCounters) {
    const auto t0 = Clock::now();
    LineActivity line;
    Tr104SipLineRecord status{};
    line.accountAdded();
    line.onEvent(ev("REGISTERING"), t0);
    line.onEvent(ev("REGISTER_FAIL", "", "401 Unauthorized"), t0);
    line.fillStatus(&status);
    EXPECT_STREQ(status.aRegState, "reg-fail");
    EXPECT_EQ(status.unPortState, vmemu::line::kPortRegisterFailed);
    EXPECT_EQ(line.failureReason(), "401 Unauthorized");
    line.onEvent(ev("REGISTER_OK", "", "200 OK"), t0);
    // An outgoing call: ringing, answered after 1 s, 250 packets each way, hung up by us 4 s later.
    const struct {
        Event event;
        int second;
        const char *callState;
    } steps[] = {
        {ev("CALL_RINGING", "outgoing"), 0, "Call Setuping"},
        {ev("CALL_ESTABLISHED", "outgoing"), 1, "Call Setup"},
        {rtcp(250), 4, "Call Setup"},
        {ev("CALL_CLOSED", "outgoing", "Connection reset by user"), 5, "Idle"},
    };
    for (const auto &[event, second, callState] : steps) {
        line.onEvent(event, t0 + seconds(second));
        line.fillStatus(&status);
        EXPECT_STREQ(status.aCallState, callState) << event.type;
    }
    EXPECT_EQ(status.unPortState, vmemu::line::kPortIdle);
    // An incoming call the far end gives up on before it is answered.
    Event incoming = ev("CALL_INCOMING", "incoming");
    incoming.id = "c2";
    line.onEvent(incoming, t0);
    line.fillStatus(&status);
    EXPECT_STREQ(status.aCallState, "Ringing");
    incoming.type = "CALL_CLOSED";
    line.onEvent(incoming, t0 + seconds(3));
    const Tr104SipLineStatsRecord c = line.counters(1, t0 + seconds(10));
    EXPECT_EQ(c.unLine, 1u);
    EXPECT_EQ(std::vector<uint32_t>({c.unOutCallsAttempted, c.unOutCallsAnswered, c.unOutCallsConnected,
                                     c.unOutCallsFailed, c.unInCallsReceived, c.unInCallsConnected, c.unInCallsFailed}),
              std::vector<uint32_t>({1, 1, 1, 0, 1, 0, 1}));
    EXPECT_EQ(c.unTotalCallTime, 4u);
    EXPECT_EQ(c.unPotsReleaseCount, 2u);
    const Tr104LineRtpStatsBlock r = line.rtp(1);
    EXPECT_EQ(std::vector<uint32_t>({r.unSendPackets, r.unSendBytes, r.unRcvdPackets, r.unLostPackets, r.unLostPercent,
                                     r.unJitter, r.unFarEndJitter, r.unNetworkDelay, r.unStreamSpeed}),
              std::vector<uint32_t>({250, 250 * kRtpPacketBytes, 249, 1, 0, 900, 600, 300, kG711Kbps}));
    line.resetStatistics(t0);
    EXPECT_EQ(line.counters(1, t0).unOutCallsAttempted, 0u);
    EXPECT_EQ(line.rtp(1).unSendPackets, 0u);
}

TEST(VoicedSimulatedCall, RealCallEndsWithTheRightCodes) {
    const auto t0 = Clock::now();
    struct Case {
        const char *name;
        uint32_t type;
        bool registered;
        std::vector<Event> events;
        int waitSeconds;  // polled this long after the events
        uint32_t conclusion, callerStatus, calledStatus, failCode;
    } cases[] = {
        {"not registered", TR104_SMULT_CALLER, false, {}, 0, 2, 10, 1, 2},
        {"answered, statistics of both ends, hung up",
         TR104_SMULT_CALLER,
         true,
         {ev("CALL_RINGING", "outgoing"), ev("CALL_ESTABLISHED", "outgoing"),
          ev("CALL_ESTABLISHED", "incoming", "", "sip:2@h"), rtcp(250), rtcp(250, "incoming", "sip:2@h"),
          ev("CALL_CLOSED", "outgoing", "Connection reset by user")},
         3,
         1,
         10,
         1,
         0},
        {"not found", TR104_SMULT_CALLER, true, {ev("CALL_CLOSED", "outgoing", "404 Not Found")}, 0, 2, 10, 1, 4},
        {"unavailable", TR104_SMULT_CALLER, true, {ev("CALL_CLOSED", "outgoing", "480 Unavailable")}, 0, 2, 10, 1, 6},
        {"rings, no answer", TR104_SMULT_CALLER, true, {ev("CALL_RINGING", "outgoing")}, 31, 0, 7, 1, 0},
        {"called, nobody calls", TR104_SMULT_CALLED, true, {}, 31, 2, 1, 5, 1},
        {"called, answered", TR104_SMULT_CALLED, true, {ev("CALL_ESTABLISHED", "incoming")}, 0, 0, 1, 4, 0},
    };
    for (const Case &c : cases) {
        SimulatedCall test;
        const CallAction first = test.start(c.type, "1002", 30, c.registered, t0);
        EXPECT_EQ(first, c.registered && c.type == TR104_SMULT_CALLER ? CallAction::Dial : CallAction::None) << c.name;
        CallAction last = CallAction::None;
        for (const Event &e : c.events) {
            last = test.onEvent(e, t0 + seconds(1));
        }
        if (c.waitSeconds > 0) {
            last = test.poll(t0 + seconds(c.waitSeconds));
        }
        Tr104SmultParam block{};
        test.fill(&block);
        EXPECT_EQ(block.unConclusion, c.conclusion) << c.name;
        EXPECT_EQ(block.unCallerStatus, c.callerStatus) << c.name;
        EXPECT_EQ(block.unCalledStatus, c.calledStatus) << c.name;
        EXPECT_EQ(c.type == TR104_SMULT_CALLER ? block.unCallerFailCode : block.unCalledFailCode, c.failCode) << c.name;
        if (std::string(c.name) == "rings, no answer") {
            EXPECT_EQ(last, CallAction::Hangup);  // the timeout hangs up; the end is its confirmation
            test.onEvent(ev("CALL_CLOSED", "outgoing", "Connection reset by user"), t0 + seconds(32));
            test.fill(&block);
            EXPECT_EQ(block.unCallerFailCode, 5u);
        }
    }
    // The hold waits for the far end's statistics when the far end is one of ours.
    SimulatedCall test;
    test.start(TR104_SMULT_CALLER, "1002", 30, true, t0);
    test.onEvent(ev("CALL_ESTABLISHED", "outgoing"), t0);
    test.onEvent(ev("CALL_ESTABLISHED", "incoming", "", "sip:2@h"), t0);
    EXPECT_EQ(test.onEvent(rtcp(250), t0 + seconds(5)), CallAction::None);
    EXPECT_EQ(test.onEvent(rtcp(250, "incoming", "sip:2@h"), t0 + seconds(6)), CallAction::Hangup);
}

TEST(VoicedSettings, ReadFromTheEmulatorsRecords) {
    vmemu::VoiceModuleEmulator emulator;
    std::vector<std::string> families;
    for (const vmemu::RecordFamily &f : emulator.families()) {
        families.push_back(f.name);
    }
    int applied = 0;
    for (const std::string &name : families) {
        applied += appliesToAccounts(name);
    }
    EXPECT_EQ(applied, 6) << "every family the accounts are made of is the emulator's";
    tr104::sip::ServerRecord server{};
    server.nServerFlag = TR104_SERVER_PRIMARY;
    std::strcpy(server.aHostAddr, "10.1.1.1");
    server.usPort = 5062;
    emulator.put("sip registrar server", &server, sizeof(server));
    server.nServerFlag = TR104_SERVER_SECONDARY;
    std::strcpy(server.aHostAddr, "10.2.2.2");
    emulator.put("sip registrar server", &server, sizeof(server));
    char line[sizeof(Tr104SipLineRecord)] = {};
    const uint32_t two = 2, on = 1;
    std::memcpy(line, &two, 4);
    std::memcpy(line + 4, &on, 4);
    emulator.put("sip line enable", line, sizeof(line));
    std::strcpy(line + TR104_LINE_NUMBER_OFFSET, "1002");
    emulator.put("sip directory number", line, sizeof(line));
    std::strcpy(line + TR104_LINE_AUTH_USER_OFFSET, "user2");
    std::strcpy(line + TR104_LINE_AUTH_PWD_OFFSET, "pw2");
    emulator.put("sip line auth", line, sizeof(line));
    const ProfileSettings profile = storedProfile(emulator, 120);
    EXPECT_EQ(profile.registrar.hostPort(), "10.1.1.1:5062") << "the primary registrar";
    EXPECT_TRUE(profile.proxy.empty());
    const LineSettings two_ = storedLine(emulator, 2);
    EXPECT_TRUE(two_.enabled);
    EXPECT_EQ(two_.number + "/" + two_.authUser + "/" + two_.password, "1002/user2/pw2");
    EXPECT_FALSE(storedLine(emulator, 1).enabled);
}

}  // namespace
}  // namespace voiced
