// The device area of the client: `tr104ctl caps` and the demo's section on capabilities, the
// profile settings and a line's codec list.

#include <cstdio>
#include <span>
#include <string>
#include <vector>

#include "ctl/areas.h"
#include "ctl/invoke.h"
#include "ctl/steps.h"
#include "emulator/device_emulator.h"

namespace tr104ctl {

namespace {

// The capability parameters, in the order `caps` prints them.
constexpr const char *kCapabilities[] = {
    "Tr104VoiceProtocolType",
    "Tr104ProfileNumber",
    "Tr104MaxCountPerProfile",
    "Tr104MaxLineCount",
    "Tr104MaxSessionsPerLine",
    "Tr104MaxSessionsAllLines",
    "Tr104VoiceProtocolGroup",
    "Tr104CapabilityRegions",
    "Tr104RTCPFlag",
    "Tr104SRTPFlag",
    "Tr104RTPRedundancyFlag",
    "Tr104DSCPCoupledFlag",
    "Tr104VlanTagCoupledFlag",
    "Tr104PSTNSoftSwitchOverFlag",
    "Tr104FaxT38Flag",
    "Tr104FaxPassThroughFlag",
    "Tr104ModemPassThroughFlag",
    "Tr104ToneGenerationFlag",
    "Tr104RingGenerationFlag",
    "Tr104DigitMapFlag",
    "Tr104NumberingPlanFlag",
    "Tr104ButtonMapFlag",
    "Tr104VoicePortTestsFlag",
    "Tr104HeartbeatFlag",
    "Tr104ProfileNumberOfLines",
};

// One table line per parameter: its value, or the handler's result when it gave none.
int printCapabilities(const Library &lib) {
    int failed = 0;
    std::printf("%-30s %s\n", "capability", "value");
    for (const char *name : kCapabilities) {
        CallRequest req;
        req.handler = name;
        const CallResult r = callHandler(lib, req);
        std::string shown = !r.called   ? "(" + r.message + ")"
                            : r.rc != 0 ? "(result " + std::to_string(r.rc) + ")"
                                        : "\"" + r.shown + "\"";
        failed += r.called && r.rc == 0 ? 0 : 1;
        std::printf("%-30s %s\n", name, shown.c_str());
    }
    std::printf("supported codecs:");
    for (int k = 1; k <= 5; ++k) {
        CallRequest req;
        req.handler = "Tr104CodecType";
        req.locate[1] = k;
        const CallResult r = callHandler(lib, req);
        std::printf(" %s", r.called && r.rc == 0 ? r.shown.c_str() : "?");
    }
    std::printf("\n");
    return failed;
}

int runCaps(Context &context) {
    auto refresh = context.lib.function<int (*)()>("Tr104RefreshCurrProtocolType");
    if (refresh != nullptr) {
        refresh();
    }
    const int failed = printCapabilities(context.lib);
    if (failed != 0) {
        std::printf("%d parameter(s) without a value (under no known protocol the SIP/H.248 ones answer -1)\n", failed);
    }
    return 0;
}

}  // namespace

std::vector<AreaCommand> deviceCommands() {
    return {{"caps", "print the voice service's capability parameters", [](CLI::App &) {}, &runCaps}};
}

// The demo's device section, run against the emulator after the library's full start-up.  Returns
// the number of problems seen (0 when everything behaved as shown).
int runDeviceDemo(Context &context) {
    const Library &lib = context.lib;
    vmemu::VoiceModuleEmulator &emulator = *context.emulator;
    std::printf("\n== capabilities (protocol SIP: several come from the voice module)\n");
    int problems = printCapabilities(lib);
    static const DemoStep kProfile[] = {
        {"Tr104ProfileEnable", true, "enabled", 0, "exact words only"},
        {"Tr104ProfileName", false, nullptr, 0, "kept in the library"},
        {"Tr104ServerType", true, "2", 0, "tells the voice module to run H.248 after its next start"},
        {"Tr104ProfileSignalingProtocol", false, nullptr, 0, "still SIP until then"},
        {"Tr104ServerType", true, "0", 0, "back to SIP"},
        {"get_act_led", false, nullptr, 0, "the voice module's state 1 is reported as 0"},
    };
    problems += runSection(lib, "profile settings and the voice LED", kProfile);
    std::printf("\n== codec list of line 1, applied to the running voice profile at once\n");
    struct CodecStep {
        const char *handler;
        const char *value;  // nullptr: a get
        int entry;
        const char *note;
    };
    static const CodecStep kCodecs[] = {
        {"Tr104LineCodecListType", "G.729", 1, ""},
        {"Tr104LineCodecListType", "G.711ALaw", 2, ""},
        {"Tr104LineCodecListPriority", "2", 1, "lower numbers come first: G.711ALaw leads"},
        {"Tr104LineCodecListType", "G.729", 3, "listed already: cannot be applied"},
        {"Tr104LineCodecUsed", nullptr, 0, "offered first"},
        {"Tr104LineCodecListPacketizationPeriod", "30", 1, "one period per line"},
        {"Tr104LineCodecListPacketizationPeriod", "70", 1, "10..60 ms"},
    };
    for (const CodecStep &step : kCodecs) {
        CallRequest req;
        req.handler = step.handler;
        req.set = step.value != nullptr;
        req.value = step.value != nullptr ? step.value : "";
        req.locate[3] = step.entry;
        const CallResult r = callHandler(lib, req);
        problems += r.called ? 0 : 1;
        char what[96];
        std::snprintf(what, sizeof(what), "%s %s line 1 entry %d%s%s", req.set ? "set" : "get", step.handler,
                      step.entry, req.set ? " = " : "", req.value.c_str());
        const std::string outcome = !r.called              ? "skipped: " + r.message
                                    : r.rc != 0 || req.set ? "-> " + std::to_string(r.rc)
                                                           : "-> 0, \"" + r.shown + "\"";
        std::printf("  %-58s %s%s%s\n", what, outcome.c_str(), step.note[0] ? "   # " : "", step.note);
    }
    // A read waits behind the writes still on their way to the voice module.
    if (auto status = lib.function<int (*)(int, void *)>("getLineStatus")) {
        char block[TR104_PORT_STATUS_LEN];
        status(1, block);
    }
    std::printf("  the voice module runs line 1 with:");
    for (int code : vmemu::codecSelection(emulator, 1)) {
        std::printf(" payload type %d", code);
    }
    std::printf(", %d ms\n", vmemu::profilePacketization(emulator, 1));
    const bool applied =
        vmemu::codecSelection(emulator, 1) == std::vector<int>{8, 18} && vmemu::profilePacketization(emulator, 1) == 30;
    return problems + (applied ? 0 : 1);
}

}  // namespace tr104ctl
