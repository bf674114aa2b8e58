// The h248 area of the client: `tr104ctl h248 status` and the demo's H.248 section.

#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "ctl/areas.h"
#include "ctl/startup.h"
#include "ctl/steps.h"
#include "emulator/h248_emulator.h"

namespace tr104ctl {

namespace {

// The gateway's controllers and registration, and each line's registration and counters, read
// through the H.248 variants whatever the library's current protocol.
int status(Context &context) {
    static const DemoStep kGateway[] = {
        {"Tr104PrimaryMGCH248", false, nullptr, 0, ""},
        {"Tr104PrimaryMGCPortH248", false, nullptr, 0, ""},
        {"Tr104SecondaryMGCH248", false, nullptr, 0, ""},
        {"Tr104SecondaryMGCPortH248", false, nullptr, 0, ""},
        {"Tr104MgcStatusH248", false, nullptr, 0, "0 unregistered, 1 registered, 2 registering, 3 failed"},
        {"Tr104CurrMgcAddrH248", false, nullptr, 0, ""},
        {"Tr104MgIdH248", false, nullptr, 0, ""},
        {"Tr104RcvdReqsH248", false, nullptr, 0, ""},
        {"Tr104SendReqsH248", false, nullptr, 0, ""},
    };
    static const DemoStep kLines[] = {
        {"Tr104LineRegStatusH248", false, nullptr, 1, ""},
        {"Tr104LineIncomingCallsConnectedH248", false, nullptr, 1, ""},
        {"Tr104LineOutgoingCallsConnectedH248", false, nullptr, 1, ""},
        {"Tr104LineRegStatusH248", false, nullptr, 2, ""},
        {"Tr104LineIncomingCallsConnectedH248", false, nullptr, 2, ""},
        {"Tr104LineOutgoingCallsConnectedH248", false, nullptr, 2, ""},
    };
    const int problems = runSection(context.lib, "H.248 gateway", kGateway) + runSection(context.lib, "lines", kLines);
    return problems == 0 ? 0 : 1;
}

// Switches the voice module's protocol through an inbound protocol change (command 3) and waits
// until the library has taken it.
bool switchTo(const Library &lib, vmemu::VoiceModuleEmulator &emulator, bool h248) {
    const int32_t *module = lib.variable<int32_t>("gCurrentModule");
    const int *protocol = lib.variable<int>("gTr104CurrProtocolType");
    const int wanted = h248 ? 2 : 4;
    std::printf("> inbound 3: the voice module now runs %s (type %d)", h248 ? "H.248" : "SIP", wanted);
    std::fflush(stdout);
    if (module == nullptr || protocol == nullptr || !vmemu::h248::switchProtocol(emulator, *module, h248)) {
        std::printf("\n");
        std::fprintf(stderr, "tr104ctl: the emulator cannot push the protocol change\n");
        return false;
    }
    for (int i = 0; i < 50 && *protocol != wanted; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (i % 10 == 9) {
            std::printf(".");
            std::fflush(stdout);
        }
    }
    std::printf(" -> protocol type %d\n", *protocol);
    return *protocol == wanted;
}

}  // namespace

std::vector<AreaCommand> h248Commands() {
    auto request = std::make_shared<std::string>("status");
    return {{"h248", "controllers, registration and counters of the H.248 gateway",
             [request](CLI::App &command) {
                 command.add_option("REQUEST", *request, "what to show (status)")->check(CLI::IsMember({"status"}));
             },
             &status}};
}

// The demo's h248 section, run against the emulator after the library's full start-up.  Returns
// the number of problems seen (0 when everything behaved as shown).  It ends under SIP again.
int runH248Demo(Context &context) {
    const Library &lib = context.lib;
    vmemu::VoiceModuleEmulator &emulator = *context.emulator;
    std::printf("\n== H.248: the voice module switches protocol\n");
    if (!switchTo(lib, emulator, true)) {
        return 1;
    }
    int problems = 0;
    static const DemoStep kControllers[] = {
        {"Tr104PrimaryMGC", true, "mgc1.example.net", 0, "entry 0 of the MGC block, mask bit 0"},
        {"Tr104PrimaryMGCPort", true, "2944", 0, "mask bit 1"},
        {"Tr104SecondaryMGC", true, "mgc2.example.net", 0, "index word 1: entry 1"},
        {"Tr104SecondaryMGCPort", true, "2945", 0, ""},
        {"Tr104PrimaryMGC", false, nullptr, 0, ""},
        {"Tr104PrimaryMGCPort", false, nullptr, 0, ""},
        {"Tr104SecondaryMGC", false, nullptr, 0, "the reply must carry index 1"},
        {"Tr104SecondaryMGCPort", false, nullptr, 0, ""},
        {"Tr104PrimaryMGCPort", true, "65536", 0, "refused, nothing sent"},
    };
    problems += runSection(lib, "H.248 controllers", kControllers);

    static const DemoStep kRegistration[] = {
        {"Tr104MgcStatus", false, nullptr, 0, "not registered yet: 0"},
        {"Tr104MgcRegisterH248", true, "mgc1.example.net,1", 0, "register with the primary MGC"},
        {"Tr104MgcStatus", false, nullptr, 0, "registered: 1"},
        {"Tr104CurrMgcNum", false, nullptr, 0, ""},
        {"Tr104CurrMgcAddr", false, nullptr, 0, ""},
        {"Tr104LineRegister", true, "1", 1, "command 12369"},
        {"Tr104LineRegStatus", false, nullptr, 1, "\"IDLE\" in the port status"},
        {"Tr104LineServerStatus", false, nullptr, 1, ""},
        {"Tr104LineRegStatus", false, nullptr, 2, "line 2 was never registered"},
    };
    problems += runSection(lib, "H.248 registration", kRegistration);

    // What the signalling stack would have counted.
    using vmemu::h248::setCounter;
    setCounter(emulator, 1, offsetof(Tr104H248StatsBlock, unIncomingReceived), 5);
    setCounter(emulator, 1, offsetof(Tr104H248StatsBlock, unIncomingConnected), 4);
    setCounter(emulator, 1, offsetof(Tr104H248StatsBlock, unOutgoingConnected), 3);
    setCounter(emulator, 2, offsetof(Tr104H248StatsBlock, unIncomingReceived), 1);
    setCounter(emulator, 1, offsetof(Tr104H248StatsBlock, unRcvdReqs), 120);
    setCounter(emulator, 1, offsetof(Tr104H248StatsBlock, unSendReqs), 118);
    setCounter(emulator, 1, offsetof(Tr104H248StatsBlock, unPacketUnknown), 2);
    static const DemoStep kCounters[] = {
        {"Tr104LineIncomingCallsReceivedH248", false, nullptr, 1, ""},
        {"Tr104LineIncomingCallsReceivedH248", false, nullptr, 2, ""},
        {"Tr104LineTotalCallTimesH248", false, nullptr, 1, "4 incoming + 3 outgoing connected"},
        {"Tr104RcvdReqsH248", false, nullptr, 0, "gateway counters: always line 1"},
        {"Tr104SendReqsH248", false, nullptr, 0, ""},
        {"Tr104NgnPacketUnKnownH248", false, nullptr, 0, "added to the value passed in (0)"},
    };
    problems += runSection(lib, "H.248 counters", kCounters);

    static const DemoStep kTimers[] = {
        {"Tr104RetransmissionTime", true, "30", 0, "seconds"},
        {"Tr104RetransmissionTime", false, nullptr, 0, ""},
        {"Tr104RetransmissionTime", true, "61", 0, "1..60 s: refused"},
    };
    problems += runSection(lib, "H.248 retransmission timer", kTimers);
    const std::vector<char> trans = vmemu::h248::block(emulator, GET_TRANS_TIME);
    uint32_t ms = 0;
    if (trans.size() >= sizeof(Tr104H248TransTimerBlock)) {
        std::memcpy(&ms, trans.data() + offsetof(Tr104H248TransTimerBlock, unRetranTime), sizeof(ms));
    }
    std::printf("  the voice module keeps %u ms\n", ms);
    if (ms != 30000) {
        ++problems;
    }

    std::printf("\n== H.248: back to SIP for what follows\n");
    if (!switchTo(lib, emulator, false)) {
        ++problems;
    }
    return problems;
}

}  // namespace tr104ctl
