// The linetest area of the client: `tr104ctl linetest` runs a line test on a port and prints
// its measurements, flag words and conclusion; `tr104ctl simcall` runs a simulated call; the
// demo's line-test section.

#include <unistd.h>

#include <chrono>
#include <memory>
#include <cstdio>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "ctl/areas.h"
#include "ctl/invoke.h"
#include "ctl/steps.h"
#include "emulator/linetest_emulator.h"

namespace tr104ctl {

namespace {

// One handler call on a port (nLocate[1]); prints a one-line error when it fails.
struct PortCall {
    const Library &lib;
    int port;

    CallResult operator()(const std::string &handler, bool set = false, const std::string &value = "") const {
        CallRequest req;
        req.handler = handler;
        req.set = set;
        req.value = value;
        req.locate[1] = port;
        CallResult r = callHandler(lib, req);
        if (!r.called) {
            std::fprintf(stderr, "tr104ctl: %s\n", r.message.c_str());
        } else if (r.rc != 0) {
            std::fprintf(stderr, "tr104ctl: %s %s on port %d: %d, %s\n", set ? "set" : "get", handler.c_str(), port,
                         r.rc, describeFailure(r.rc).c_str());
        }
        return r;
    }
    bool ok(const std::string &handler, bool set = false, const std::string &value = "") const {
        const CallResult r = (*this)(handler, set, value);
        return r.called && r.rc == 0;
    }
    std::string get(const std::string &handler) const {
        const CallResult r = (*this)(handler);
        return r.called && r.rc == 0 ? r.shown : "?";
    }
};

// Handler of a threshold given as "VACHazardousThreshold", "gDBDT1", "DialToneFrequency2" or in full.
std::string thresholdHandler(const Library &lib, std::string name) {
    if (name.rfind("Tr104", 0) == 0) {
        return name;
    }
    if (name.size() > 1 && name[0] == 'g') {
        name.erase(0, 1);
    }
    for (const char *prefix : {"Tr104PhysicalInterfaceTest", "Tr104PhysicalInterface"}) {
        if (lib.symbol(prefix + name) != nullptr) {
            return prefix + name;
        }
    }
    return "";
}

struct Measurement {
    const char *handler;  // after "Tr104PhysicalInterfaceTest"
    const char *label;
    const char *unit;
};
// Units as the voice module reports its measurements.
constexpr Measurement kOuter[] = {
    {"AGDCVoltage", "A-ground DC voltage", "V"},
    {"BGDCVoltage", "B-ground DC voltage", "V"},
    {"ABDCVoltage", "A-B DC voltage", "V"},
    {"AGACVoltage", "A-ground AC voltage", "V"},
    {"BGACVoltage", "B-ground AC voltage", "V"},
    {"ABACVoltage", "A-B AC voltage", "V"},
    {"AGInsulationResistance", "A-ground insulation resistance", "kohm"},
    {"BGInsulationResistance", "B-ground insulation resistance", "kohm"},
    {"ABInsulationResistance", "A-B insulation resistance", "kohm"},
    {"ABPolarityReversalResistance", "A-B polarity reversal resistance", "kohm"},
    {"AGCapacitance", "A-ground capacitance", "nF"},
    {"BGCapacitance", "B-ground capacitance", "nF"},
    {"ABCapacitance", "A-B capacitance", "nF"},
    {"ABLoopResistance", "loop resistance", "ohm"},
    {"RingerEquivalence", "ringer equivalence", "REN"},
};
constexpr Measurement kInner[] = {
    {"LoopCurrent", "loop current", "mA"},
    {"FeederVoltage", "feeder voltage", "V"},
    {"SignalToneVolume", "signal tone volume", "dBm"},
    {"SignalToneFrequency", "signal tone frequency", "Hz"},
    {"RingingCurrentVoltage", "ringing voltage", "V"},
    {"QuietChannelPower", "quiet channel power", "dBm"},
    {"SignalToneState", "signal tone passed", "1 yes"},
    {"FeederVoltageState", "feeder voltage passed", "1 yes"},
    {"LoopCurrentState", "loop current passed", "1 yes"},
};

// A flag word and what its meaningful bits say (a set bit: within limits).
struct FlagBits {
    const char *handler;
    const char *bit5;  // null: bit not meaningful
    const char *bit2;
};
constexpr FlagBits kFlags[] = {
    {"VACFlags", "A-ground AC voltage", "B-ground AC voltage"},
    {"VDCFlags", "A-ground DC voltage", "B-ground DC voltage"},
    {"ABGResistanceFlags", "A-ground resistance", "B-ground resistance"},
    {"ABResistanceFlags", "A-B resistance", nullptr},
    {"RingerLoadFlags", nullptr, "ringer load"},
    {"DialTonePowerFlags", nullptr, "dial tone power"},
};

void printFlags(const PortCall &call) {
    std::printf("\n  %-22s %5s  %-8s  %s\n", "flag word", "value", "bits 5-0", "meaning (set: within limits)");
    for (const FlagBits &f : kFlags) {
        const CallResult r = call(std::string("Tr104PhysicalInterfaceTest") + f.handler);
        if (!r.called || r.rc != 0) {
            continue;
        }
        const int word = std::atoi(r.shown.c_str());
        char bits[7];
        for (int b = 5; b >= 0; --b) {
            bits[5 - b] = (word >> b) & 1 ? '1' : '0';
        }
        bits[6] = '\0';
        std::string meaning;
        for (const auto &[bit, what] : {std::pair{5, f.bit5}, std::pair{2, f.bit2}}) {
            if (what != nullptr) {
                meaning +=
                    std::string(meaning.empty() ? "" : ", ") + what + ((word >> bit) & 1 ? " ok" : " OUT OF LIMITS");
            }
        }
        std::printf("  %-22s %5d  %-8s  %s\n", f.handler, word, bits, meaning.c_str());
    }
}

template <size_t N>
void printMeasurements(const PortCall &call, const Measurement (&rows)[N]) {
    std::printf("\n  %-34s %12s  %s\n", "measurement", "value", "unit");
    for (const Measurement &m : rows) {
        std::printf("  %-34s %12s  %s\n", m.label,
                    call.get(std::string("Tr104PhysicalInterfaceTest") + m.handler).c_str(), m.unit);
    }
}

// Polls a text handler once a second until done() says so; prints a progress line per poll.
// The last text read, or "" after the time limit.
template <typename Done>
std::string poll(const PortCall &call, const std::string &handler, int limitSeconds, Done done) {
    const auto start = std::chrono::steady_clock::now();
    for (int second = 0;; ++second) {
        const CallResult r = call(handler);
        if (!r.called || r.rc != 0) {
            return "?";
        }
        std::printf("  [%2d s] port %d: %s\n", second, call.port, r.shown.c_str());
        std::fflush(stdout);
        if (done(r.shown)) {
            return r.shown;
        }
        if (second >= limitSeconds) {
            return "";
        }
        std::this_thread::sleep_until(start + std::chrono::seconds(second + 1));
    }
}

// The options of `linetest` and `simcall`.
struct TestArgs {
    int port = 0;
    int limit = 60;  // linetest: how long to wait for the result
    int timeout = 0;  // simcall: the voice module's timeout (0: 60 s)
    std::string selector = "Outer_Line_Test";
    std::vector<std::string> thresholds;  // NAME=VALUE
    std::string caller;  // simcall: the number to call
    bool called = false;  // simcall: wait for a call
};

void definePort(CLI::App &command, TestArgs &gTest) {
    command.add_option("--port", gTest.port, "the port (1 or 2)")->required()->check(numberIn(1, 2));
}

void defineLineTest(CLI::App &command, TestArgs &gTest) {
    definePort(command, gTest);
    command.add_option("--selector", gTest.selector, "Outer_Line_Test (the default) or Inner_Line_Test");
    command.add_option("--threshold", gTest.thresholds, "NAME=VALUE: a limit of the test (several may be given)")
        ->check([](const std::string &t) {
            return t.find('=') == std::string::npos ? "give NAME=VALUE, not '" + t + "'" : std::string();
        });
    command.add_option("--timeout", gTest.limit, "seconds to wait for the result (60)")->check(numberIn(1, 3600));
}

void defineSimulatedCall(CLI::App &command, TestArgs &gTest) {
    definePort(command, gTest);
    auto *caller = command.add_option("--caller", gTest.caller, "call NUMBER from the port");
    command.add_flag("--called", gTest.called, "wait for a call to the port")->excludes(caller);
    command.add_option("--timeout", gTest.timeout, "the voice module's timeout in seconds (0: 60)")
        ->check(numberIn(0, 3600));
}

int runLineTest(const Context &ctx, const TestArgs &gTest) {
    const int port = gTest.port;
    const int limit = gTest.limit;
    const std::string selector = gTest.selector;
    std::vector<std::pair<std::string, std::string>> thresholds;
    for (const std::string &t : gTest.thresholds) {
        const std::string handler = thresholdHandler(ctx.lib, t.substr(0, t.find('=')));
        if (handler.empty()) {
            std::fprintf(stderr, "tr104ctl: unknown threshold '%s'\n", t.substr(0, t.find('=')).c_str());
            return 2;
        }
        thresholds.emplace_back(handler, t.substr(t.find('=') + 1));
    }
    if (selector.find("SimulateTest") != std::string::npos) {
        std::fprintf(stderr, "tr104ctl linetest: '%s' is a simulated call: use tr104ctl simcall\n", selector.c_str());
        return 2;
    }
    const PortCall call{ctx.lib, port};
    if (!call.ok("Tr104PhysicalInterfaceTestSelector", true, selector)) {
        return 1;
    }
    for (const auto &[handler, value] : thresholds) {
        if (!call.ok(handler, true, value)) {
            return 1;
        }
        std::printf("  %s = %s\n", handler.c_str(), value.c_str());
    }
    std::printf("line test %s on port %d\n", selector.c_str(), port);
    if (!call.ok("Tr104PhysicalInterfaceTestState", true, "Requested")) {
        return 1;
    }
    const std::string state = poll(call, "Tr104PhysicalInterfaceTestState", limit,
                                   [](const std::string &s) { return s != "Testing" && s != "Requested"; });
    if (state.empty()) {
        std::fprintf(stderr, "tr104ctl: the line test did not complete within %d s\n", limit);
        return 1;
    }
    if (state != "Complete") {
        std::fprintf(stderr, "tr104ctl: the line test ended with \"%s\"\n", state.c_str());
        return 1;
    }
    if (selector == "Inner_Line_Test") {
        printMeasurements(call, kInner);
    } else {
        printMeasurements(call, kOuter);
    }
    printFlags(call);
    std::printf("\n  conclusion: %s\n", call.get("Tr104PhysicalInterfaceTestConclusion").c_str());
    return 0;
}

int runSimulatedCall(const Context &ctx, const TestArgs &gTest) {
    const int port = gTest.port;
    const int timeout = gTest.timeout;
    const std::string &number = gTest.caller;
    const std::string type = gTest.called ? "Called" : "Caller";
    if (!gTest.called && number.empty()) {
        std::fprintf(stderr, "tr104ctl: simcall: --caller NUMBER or --called is required\n");
        return 2;
    }
    const PortCall call{ctx.lib, port};
    if (!call.ok("Tr104SmultTestType", true, type) ||
        (type == "Caller" && !call.ok("Tr104SmultCalledNum", true, number)) ||
        !call.ok("Tr104SmultTimeout", true, std::to_string(timeout)) ||
        !call.ok("Tr104PhysicalInterfaceTestSelector", true, "X_CMCC_SimulateTest")) {
        return 1;
    }
    std::printf("simulated %s call on port %d%s%s, timeout %d s\n", type == "Caller" ? "outgoing" : "incoming", port,
                type == "Caller" ? " to " : "", number.c_str(), timeout == 0 ? 60 : timeout);
    if (!call.ok("Tr104PhysicalInterfaceTestState", true, "Requested")) {
        return 1;
    }
    // The voice module ends the call by its timeout; a few seconds more are allowed.
    const int limit = (timeout == 0 ? 60 : timeout) + 5;
    const std::string status =
        poll(call, "Tr104SmultStatus", limit, [](const std::string &s) { return s == "Testend"; });
    if (status != "Testend") {
        std::fprintf(stderr, "tr104ctl: the simulated call did not end within %d s\n", limit);
        return 1;
    }
    const std::string conclusion = call.get("Tr104SmultConclusion");
    std::printf("\n  %-20s %s\n", "conclusion", conclusion.c_str());
    const std::string reason = call.get(type == "Caller" ? "Tr104SmultCallerFailReason" : "Tr104SmultCalledFailReason");
    std::printf("  %-20s %s\n", "fail reason", reason.empty() ? "none" : reason.c_str());
    std::printf("  %-20s %s\n", "fail code", call.get("Tr104SmultFailedRspCode").c_str());
    return conclusion == "Success" ? 0 : 1;
}

}  // namespace

std::vector<AreaCommand> linetestCommands() {
    auto test = std::make_shared<TestArgs>();
    auto call = std::make_shared<TestArgs>();
    return {
        {"linetest", "run a line test on a port and print its measurements and conclusion",
         [test](CLI::App &command) { defineLineTest(command, *test); },
         [test](Context &context) { return runLineTest(context, *test); }},
        {"simcall", "run a simulated call on a port (--caller NUMBER or --called)",
         [call](CLI::App &command) { defineSimulatedCall(command, *call); },
         [call](Context &context) { return runSimulatedCall(context, *call); }},
    };
}

// The demo's linetest section, run against the emulator after the library's full start-up.  Returns
// the number of problems seen (0 when everything behaved as shown).  The emulated test finishes at
// once, so that the tour stays short and its output the same on every run.
int runLinetestDemo(Context &context) {
    const Library &lib = context.lib;
    vmemu::VoiceModuleEmulator &emulator = *context.emulator;
    vmemu::linetest::setTestDuration(emulator, std::chrono::milliseconds(0));
    static constexpr DemoStep kSteps[] = {
        {"Tr104PhysicalInterfacePort", false, nullptr, 0, "port 1's name"},
        {"Tr104PhysicalInterfaceTestSelector", true, "Outer_Line_Test", 0, "choose the outer-line test"},
        {"Tr104PhysicalInterfaceTestVACHazardousThreshold", true, "50", 0, "AC voltages above 50 V trip"},
        {"Tr104PhysicalInterfaceTestState", true, "Requested", 0, "start it"},
        {"Tr104PhysicalInterfaceTestState", false, nullptr, 0, "poll until Complete"},
        {"Tr104PhysicalInterfaceTestABInsulationResistance", false, nullptr, 0, "a measurement"},
        {"Tr104PhysicalInterfaceTestVACFlags", false, nullptr, 0, "63: all within limits"},
        {"Tr104PhysicalInterfaceTestConclusion", false, nullptr, 0, "the voice module's verdict"},
        {"Tr104PhysicalInterfaceTestState", true, "requested", 0, "refused: the text is exact (-2)"},
    };
    const int problems = runSection(lib, "Line test (port 1)", kSteps);
    vmemu::linetest::setTestDuration(emulator, vmemu::linetest::kDefaultTestDuration);
    return problems;
}

}  // namespace tr104ctl
