// The shared start-up of the programs that play the voice module (see service.h).
#include "emulator/service.h"

#include <signal.h>

#include <iostream>
#include <thread>

#include "emulator/control.h"
#include "emulator/state_file.h"
#include "tr104/version.h"

namespace vmemu {
namespace {

// Reads console commands from standard input until it ends.
void commandLoop(VoiceModuleEmulator *emulator) {
    for (std::string line; std::getline(std::cin, line);) {
        std::fputs(runControlLine(*emulator, line).c_str(), stdout);
        std::fflush(stdout);
    }
}

void saveTo(VoiceModuleEmulator &emulator, const Program &program, const std::string &path) {
    std::string error;
    if (!saveState(emulator, path, &error)) {
        std::fprintf(stderr, "%s%s\n", program.errorPrefix, error.c_str());
    }
}

}  // namespace

int parseCommandLine(const Program &program, int argc, char **argv, ServiceOptions *options) {
    for (int i = 1; i < argc; ++i) {
        if (program.option) {
            if (const int rc = program.option(argc, argv, &i); rc != kNotOwn) {
                if (rc != kTaken) {
                    return rc;
                }
                continue;
            }
        }
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--ready-file" && hasValue) {
            options->readyFile = argv[++i];
        } else if (arg == "--state" && hasValue) {
            options->stateFile = argv[++i];
        } else if (arg == "--control" && hasValue) {
            options->controlPath = argv[++i];
        } else if (arg == "--quiet") {
            options->quiet = true;
        } else if (arg == "--version") {
            std::printf("%s %s\n", program.name, TR104_VERSION_STRING);
            return 0;
        } else if (arg == "--help" || arg == "-h") {
            program.usage(stdout);
            return 0;
        } else {
            program.usage(stderr);
            return 2;
        }
    }
    return kTaken;
}

int serve(VoiceModuleEmulator &emulator, const Program &program, const ServiceOptions &options,
          const ServiceHooks &hooks) {
    // Signals are taken by sigwait below; every thread inherits the blocked mask.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    const auto failed = [&program](const std::string &error) {
        std::fprintf(stderr, "%s%s\n", program.errorPrefix, error.c_str());
        return 1;
    };
    if (std::string error; !options.stateFile.empty() && !loadState(emulator, options.stateFile, &error)) {
        return failed(error);
    }
    // A save of the configuration writes the file at once (the library does not wait for it).
    emulator.onRequest([&](const Request &request) {
        if (!options.quiet) {
            std::printf("%s %s\n", program.tag, emulator.describe(request).c_str());
            std::fflush(stdout);
        }
        if (hooks.onRequest) {
            hooks.onRequest(request);
        }
        if (request.cmd == kSaveVoiceCfgCmd && !options.stateFile.empty()) {
            saveTo(emulator, program, options.stateFile);
        }
    });
    const auto stopHooks = [&hooks] {
        if (hooks.stop) {
            hooks.stop();
        }
    };
    if (std::string error; hooks.start && !hooks.start(&error)) {
        return failed(error);
    }
    if (!emulator.start()) {
        stopHooks();
        return 1;
    }
    ControlServer control;
    if (std::string error; !options.controlPath.empty() && !control.start(emulator, options.controlPath, &error)) {
        emulator.stop();
        stopHooks();
        return failed(error);
    }
    std::printf("%s serving the send queue (key %d)\n", program.tag, TR104_SND_QUEUE_KEY);
    std::fflush(stdout);
    if (!options.readyFile.empty()) {
        if (FILE *f = std::fopen(options.readyFile.c_str(), "w")) {
            std::fclose(f);
        }
    }
    std::thread(commandLoop, &emulator).detach();

    int signal = 0;
    sigwait(&stopSignals, &signal);
    control.stop();
    emulator.stop();
    stopHooks();
    if (!options.stateFile.empty()) {
        saveTo(emulator, program, options.stateFile);
    }
    std::printf("%s stopped: %zu requests served, %zu replies dropped\n", program.tag, emulator.requestCount(),
                emulator.droppedReplies());
    return 0;
}

int run(VoiceModuleEmulator &emulator, const Program &program, int argc, char **argv, const ServiceHooks &hooks) {
    ServiceOptions options;
    if (const int rc = parseCommandLine(program, argc, argv, &options); rc != kTaken) {
        return rc;
    }
    return serve(emulator, program, options, hooks);
}

}  // namespace vmemu
