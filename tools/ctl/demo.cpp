// `tr104ctl demo`: the scripted tour.
#include "ctl/demo.h"

#include <dlfcn.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include "ctl/areas.h"
#include "ctl/deferred_demo.h"
#include "ctl/steps.h"
#include "ctl/watch.h"
#include "tr104/channel.h"

namespace tr104ctl {

int runDemo(Context &context) {
    const Library &lib = context.lib;
    vmemu::VoiceModuleEmulator &emulator = *context.emulator;
    int *protocol = lib.variable<int>("gTr104CurrProtocolType");
    auto refresh = lib.function<int (*)()>("Tr104RefreshCurrProtocolType");
    auto setProtocol = lib.function<int (*)(const Tr104Msg *)>("Tr104SetProtocolType");
    if (protocol == nullptr || refresh == nullptr || setProtocol == nullptr) {
        std::fprintf(stderr, "tr104ctl: this libtr104.so has no protocol selection\n");
        return 1;
    }
    const TimedRequests timed(emulator);
    int problems = 0;

    std::printf("== select SIP: the voice module names its protocol, the library follows it\n");
    const int refreshed = refresh();  // learnt at start-up already; once more to show it
    std::printf("  %-58s -> %d, gTr104CurrProtocolType = %d\n", "Tr104RefreshCurrProtocolType()", refreshed, *protocol);
    static const DemoStep kProtocolSteps[] = {{"Tr104VoiceProtocolType", false, nullptr, 0, ""}};
    problems += runSteps(lib, kProtocolSteps, 1);

    static const DemoStep kEnable[] = {
        {"Tr104LineEnable", false, nullptr, 1, ""},
        {"Tr104LineEnable", true, "Enabled", 1, ""},
        {"Tr104LineEnable", false, nullptr, 1, "the voice module kept it"},
        {"Tr104LineEnable", true, "enabled", 1, "texts are case-sensitive"},
        {"Tr104LineEnable", false, nullptr, 3, "only lines 1 and 2 exist"},
    };
    problems += runSection(lib, "line enable", kEnable);

    static const DemoStep kGains[] = {
        {"Tr104LineTransmitGain", true, "-5", 2, "creates and binds profile \"port2\""},
        {"Tr104LineTransmitGain", false, nullptr, 2, ""},
        {"Tr104LineReceiveGain", true, "31", 2, ""},
        {"Tr104LineReceiveGain", false, nullptr, 2, ""},
        {"Tr104LineReceiveGain", true, "32", 2, "receive gain stops at 31"},
    };
    problems += runSection(lib, "gains (dB) of line 2, kept in the voice profile bound to the port", kGains);

    static const DemoStep kTimers[] = {
        {"Tr104StartDigitTimer", true, "20", 1, "seconds; the voice module keeps ms"},
        {"Tr104DialToneTimer", false, nullptr, 1, "shares the start-digit field"},
        {"Tr104NoAnswerTimer", true, "601", 1, "1..600 s"},
        {"Tr104ShortDigitTimer", true, "5000", 1, ""},
        {"Tr104ShortDigitTimer", false, nullptr, 1, ""},
    };
    problems += runSection(lib, "timers", kTimers);

    static const DemoStep kDigitMap[] = {
        {"Tr104ProfileDigitMapString", true, "[2-9]xxxxxxx|1[3-8]xxxxxxxxx|0xxxxxxxxxx|E|F|*xx#", 1, ""},
        {"Tr104ProfileDigitMapString", false, nullptr, 1, ""},
        {"Tr104ProfileDigitMapEnable", false, nullptr, 1, ""},
    };
    problems += runSection(lib, "digit map", kDigitMap);

    const int deferredProblems = runDeferredDemo(context, timed);

    std::printf("\n== the voice module reports a new directory number for line 1 (through the inbound thread)\n");
    // The library reaches the agent's entry point only when the executable exports it.
    if (dlsym(RTLD_DEFAULT, "notifyChangedValues_toTr069") == nullptr) {
        std::printf("  (this tr104ctl does not export notifyChangedValues_toTr069: notifications stay unseen)\n");
    }
    static constexpr ScriptedChange kNewNumber{kInboundDirectoryNumber, 1, "5550123", nullptr, 0};
    const bool pushed = pushChange(lib, emulator, kNewNumber);

    std::printf("\n== the voice module switches to H.248 (inbound command 3), then back to SIP\n");
    static const DemoStep kUnderH248[] = {
        {"Tr104LineEnable", false, nullptr, 1, "the H.248 variant"},
        {"Tr104LineCallerIdFlag", false, nullptr, 1, "answered by the wrapper under H.248"},
        {"Tr104LineCodecList", false, nullptr, 1, "SIP only"},
    };
    static const DemoStep kUnderSip[] = {
        {"Tr104LineEnable", false, nullptr, 1, ""},
    };
    struct Change {
        uint32_t type;
        const DemoStep *steps;
        size_t count;
    };
    const Change changes[] = {{2, kUnderH248, std::size(kUnderH248)}, {4, kUnderSip, std::size(kUnderSip)}};
    for (const Change &change : changes) {
        Tr104Msg msg{};
        msg.cmd_type = TR104_CMD_TYPE_DATA;
        msg.cmd = 3;
        const uint32_t words[2] = {1, change.type};
        std::memcpy(msg.rspBuffer, words, sizeof(words));
        char what[64];
        std::snprintf(what, sizeof(what), "Tr104SetProtocolType(refresh, %u)", change.type);
        const int rc = setProtocol(&msg);
        std::printf("  %-58s -> %d, gTr104CurrProtocolType = %d\n", what, rc, *protocol);
        problems += runSteps(lib, change.steps, change.count);
    }

    const int areaProblems = runAreaDemos(context);

    std::printf("\n== what the voice module received\n");
    for (const vmemu::Request &r : emulator.requests()) {
        std::printf("  %s\n", emulator.describe(r).c_str());
    }
    std::printf("\n%zu requests; %d step(s) skipped\n", emulator.requestCount(), problems);
    if (areaProblems != 0) {
        std::printf("%d problem(s) in the sections above\n", areaProblems);
        return 1;
    }
    if (deferredProblems != 0 || !pushed) {
        std::printf("the deferred buffer or the inbound thread did not behave as shown above\n");
        return 1;
    }
    return 0;
}

}  // namespace tr104ctl
