// tr104-voiced: the voice module on this machine's channel (send queue key 30), backed by a
// real SIP user agent (baresip).  It serves every record as tr104-vmemu does and applies the
// SIP profile and lines: registration, calls, counters and RTP statistics are real.
//
//   tr104-voiced [--sip-address ADDR] [--sip-port PORT] [--registration-period S]
//                [--auto-answer LINES] [--baresip PATH] [--baresip-modules DIR] [--verbose]
//                [--state FILE] [--control PATH] [--ready-file PATH] [--quiet] [--version] [--help]
#include <cstdio>
#include <cstdlib>
#include <istream>
#include <optional>
#include <string>

#include "emulator/control.h"
#include "emulator/service.h"
#include "emulator/voice_module_emulator.h"
#include "voiced/voice_module.h"

namespace {

voiced::VoiceModule *gVoiceModule = nullptr;

void usage(FILE *to) {
    std::fprintf(to,
                 "usage: tr104-voiced [OPTION]...\n"
                 "Plays the voice module on this machine's channel (System V send queue key %d) with a real SIP\n"
                 "user agent (baresip): the profile's registrar, proxy and outbound proxy and each line's enable,\n"
                 "directory number, user name and password become SIP accounts that register; the lines' status,\n"
                 "call counters and RTP statistics and the simulated call test come from real calls.  Line tests,\n"
                 "the phone ports and H.248 stay emulated (no hardware, no media gateway controller).\n"
                 "  --sip-address ADDR        address the user agent uses (default 127.0.0.1)\n"
                 "  --sip-port PORT           the user agent's SIP port (default 5080; PORT+1 is taken too)\n"
                 "  --registration-period S   registration period in seconds (default 3600)\n"
                 "  --auto-answer LINES       lines whose phone answers a call by itself: all (default), none, 1, 2\n"
                 "  --baresip PATH            the baresip program (default: baresip on PATH)\n"
                 "  --baresip-modules DIR     its modules (default /usr/lib/baresip/modules)\n"
                 "  --verbose                 print baresip's own output (passwords hidden)\n"
                 "  --state FILE              keep the configuration in FILE (JSON), as tr104-vmemu does\n"
                 "  --control PATH            also take console commands on a Unix-domain stream socket at PATH\n"
                 "  --ready-file PATH         create PATH once the queue is served and the user agent runs\n"
                 "  --quiet                   do not print each request\n"
                 "  --version                 print the version\n"
                 "Console commands (standard input and the control socket):\n%s",
                 TR104_SND_QUEUE_KEY, vmemu::controlHelp().c_str());
}

bool sipCommand(vmemu::VoiceModuleEmulator &, const std::string &verb, std::istream &args, std::string *out) {
    if (verb != "sip" || gVoiceModule == nullptr) {
        return false;
    }
    std::string what, number;
    int line = 0;
    args >> what >> line >> number;
    const bool lineOk = line == 1 || line == 2;
    if (what == "dial" && lineOk && !number.empty()) {
        *out = gVoiceModule->dial(line, number);
    } else if (what == "hangup" && lineOk) {
        *out = gVoiceModule->hangup(line);
    } else if (what == "lines" || what.empty()) {
        *out = gVoiceModule->describe();
    } else {
        *out = "usage: sip lines | sip dial LINE NUMBER | sip hangup LINE\n";
    }
    return true;
}

vmemu::ConsoleRegistrar sipConsole(
    "sip lines | sip dial LINE NUMBER | sip hangup LINE   the SIP lines: registration, "
    "calls, counters; a call placed or ended by hand",
    &sipCommand);

bool parsePort(const char *text, uint16_t *port) {
    char *end = nullptr;
    const unsigned long value = std::strtoul(text, &end, 10);
    if (end == text || *end != '\0' || value == 0 || value > 65534) {
        return false;
    }
    *port = static_cast<uint16_t>(value);
    return true;
}

// The options of the user agent.
int ownOption(voiced::Options *options, int argc, char **argv, int *i) {
    const std::string arg = argv[*i];
    const bool hasValue = *i + 1 < argc;
    const auto bad = [](const std::string &what) {
        std::fprintf(stderr, "tr104-voiced: %s\n", what.c_str());
        return 2;
    };
    if (arg == "--sip-address" && hasValue) {
        options->baresip.sipAddress = argv[++*i];
    } else if (arg == "--sip-port" && hasValue) {
        if (!parsePort(argv[++*i], &options->baresip.sipPort)) {
            return bad(std::string("--sip-port wants a port from 1 to 65534, not ") + argv[*i]);
        }
    } else if (arg == "--registration-period" && hasValue) {
        const long seconds = std::strtol(argv[++*i], nullptr, 10);
        if (seconds < 10 || seconds > 86400) {
            return bad(std::string("--registration-period wants 10 to 86400 seconds, not ") + argv[*i]);
        }
        options->registrationPeriod = static_cast<uint32_t>(seconds);
    } else if (arg == "--auto-answer" && hasValue) {
        const std::string lines = argv[++*i];
        if (lines != "all" && lines != "none" && lines != "1" && lines != "2") {
            return bad("--auto-answer wants all, none, 1 or 2, not " + lines);
        }
        options->autoAnswer[0] = lines == "all" || lines == "1";
        options->autoAnswer[1] = lines == "all" || lines == "2";
    } else if (arg == "--baresip" && hasValue) {
        options->baresip.program = argv[++*i];
    } else if (arg == "--baresip-modules" && hasValue) {
        options->baresip.modules = argv[++*i];
    } else if (arg == "--verbose") {
        options->baresip.verbose = true;
    } else {
        return vmemu::kNotOwn;
    }
    return vmemu::kTaken;
}

}  // namespace

int main(int argc, char **argv) {
    voiced::Options options;
    const vmemu::Program program{
        "tr104-voiced", "[voiced]", "tr104-voiced: ", &usage,
        [&options](int count, char **args, int *at) { return ownOption(&options, count, args, at); }};
    vmemu::VoiceModuleEmulator emulator;
    // Made once the command line is read, with its options.
    std::optional<voiced::VoiceModule> voiceModule;
    vmemu::ServiceHooks hooks;
    hooks.start = [&](std::string *error) {
        gVoiceModule = &voiceModule.emplace(emulator, options);
        return voiceModule->start(error);
    };
    hooks.stop = [&voiceModule] {
        voiceModule->stop();
        gVoiceModule = nullptr;
    };
    hooks.onRequest = [&voiceModule](const vmemu::Request &request) { voiceModule->onRequest(request); };
    return vmemu::run(emulator, program, argc, argv, hooks);
}
