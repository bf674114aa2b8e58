// tr104-vmemu: plays the voice module on this machine's channel (send queue key 30).
//
//   tr104-vmemu [--fault CMD:KIND[:MS[:COUNT]]]... [--state FILE] [--control PATH]
//               [--ready-file PATH] [--quiet] [--version] [--help]
//
// Each request is printed on one line.  Console commands (fault, clear, inbound, log, requests, help and
// those of each area) are read from standard input and, with --control, from a Unix-domain
// socket; with --state the configuration is kept in a file across restarts.  SIGINT or SIGTERM
// stops it and prints how many requests were served.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>
#include <thread>

#include "emulator/control.h"
#include "emulator/state_file.h"
#include "emulator/voice_module_emulator.h"
#include "tr104/version.h"

namespace {

void usage(FILE *to) {
    std::fprintf(to,
                 "usage: tr104-vmemu [OPTION]...\n"
                 "Plays the voice module on this machine's channel (System V send queue key %d).\n"
                 "  --fault CMD:KIND[:MS[:COUNT]]  inject a fault from the start (repeatable); KIND: none marker\n"
                 "                                 silent late wrongcmd wrongtype garbage noise; CMD 0: every command\n"
                 "  --state FILE      keep the configuration in FILE (JSON, mode 0600: it holds the passwords):\n"
                 "                    loaded at start (a file it cannot take stops it, untouched), replaced\n"
                 "                    atomically when the library saves the configuration (Tr104VoiceCfgSave)\n"
                 "                    and on exit\n"
                 "  --control PATH    also take console commands on a Unix-domain stream socket at PATH:\n"
                 "                    one command per line, its answer comes back, the connection stays open\n"
                 "                    e.g.  printf 'fault 0 silent\\nlog 5\\n' | socat - UNIX-CONNECT:PATH\n"
                 "  --ready-file PATH create PATH once the queue is served\n"
                 "  --quiet           do not print each request\n"
                 "  --version         print the version\n"
                 "Console commands (standard input and the control socket):\n%s",
                 TR104_SND_QUEUE_KEY, vmemu::controlHelp().c_str());
}

// Reads console commands from standard input until it ends.
void commandLoop(vmemu::VoiceModuleEmulator *emulator) {
    for (std::string line; std::getline(std::cin, line);) {
        std::fputs(vmemu::runControlLine(*emulator, line).c_str(), stdout);
        std::fflush(stdout);
    }
}

void saveTo(vmemu::VoiceModuleEmulator &emulator, const std::string &path) {
    std::string error;
    if (!vmemu::saveState(emulator, path, &error)) {
        std::fprintf(stderr, "[vmemu] %s\n", error.c_str());
    }
}

}  // namespace

int main(int argc, char **argv) {
    vmemu::VoiceModuleEmulator emulator;
    const char *readyFile = nullptr;
    std::string stateFile, controlPath;
    bool quiet = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--fault" && hasValue) {
            uint32_t cmd;
            vmemu::FaultSpec wanted;
            if (!vmemu::parseFault(argv[++i], &cmd, &wanted)) {
                usage(stderr);
                return 2;
            }
            emulator.setFault(cmd, wanted);
        } else if (arg == "--ready-file" && hasValue) {
            readyFile = argv[++i];
        } else if (arg == "--state" && hasValue) {
            stateFile = argv[++i];
        } else if (arg == "--control" && hasValue) {
            controlPath = argv[++i];
        } else if (arg == "--quiet") {
            quiet = true;
        } else if (arg == "--version") {
            std::printf("tr104-vmemu %s\n", TR104_VERSION_STRING);
            return 0;
        } else if (arg == "--help" || arg == "-h") {
            usage(stdout);
            return 0;
        } else {
            usage(stderr);
            return 2;
        }
    }

    // Signals are taken by sigwait below; every thread inherits the blocked mask.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    if (std::string error; !stateFile.empty() && !vmemu::loadState(emulator, stateFile, &error)) {
        std::fprintf(stderr, "[vmemu] %s\n", error.c_str());
        return 1;
    }
    // A save of the configuration writes the file at once (the library does not wait for it).
    emulator.onRequest([&emulator, quiet, &stateFile](const vmemu::Request &request) {
        if (!quiet) {
            std::printf("[vmemu] %s\n", emulator.describe(request).c_str());
            std::fflush(stdout);
        }
        if (request.cmd == vmemu::kSaveVoiceCfgCmd && !stateFile.empty()) {
            saveTo(emulator, stateFile);
        }
    });
    if (!emulator.start()) {
        return 1;
    }
    vmemu::ControlServer control;
    if (std::string error; !controlPath.empty() && !control.start(emulator, controlPath, &error)) {
        std::fprintf(stderr, "[vmemu] %s\n", error.c_str());
        return 1;
    }
    std::printf("[vmemu] serving the send queue (key %d)\n", TR104_SND_QUEUE_KEY);
    std::fflush(stdout);
    if (readyFile != nullptr) {
        if (FILE *f = std::fopen(readyFile, "w")) {
            std::fclose(f);
        }
    }
    std::thread(commandLoop, &emulator).detach();

    int signal = 0;
    sigwait(&stopSignals, &signal);
    control.stop();
    emulator.stop();
    if (!stateFile.empty()) {
        saveTo(emulator, stateFile);
    }
    std::printf("[vmemu] stopped: %zu requests served, %zu replies dropped\n", emulator.requestCount(),
                emulator.droppedReplies());
    return 0;
}
