// tr104-vmemu: plays the voice module on this machine's channel (send queue key 30).
//
//   tr104-vmemu [--fault CMD:KIND[:MS[:COUNT]]]... [--ready-file PATH] [--quiet]
//
// KIND is one of none, marker, silent, late, wrongcmd, wrongtype, garbage, noise; CMD 0 applies the
// fault to every command.  Each request is printed on one line.  While running, commands can
// be typed on standard input:
//   fault CMD KIND [MS [COUNT]]     inject a fault
//   clear                           remove every fault
//   inbound MODULE TYPE CMD [WORD]...  push an unsolicited message (words of the payload)
//   help                            list these and the commands of each area (h248, linetest ...)
// SIGINT or SIGTERM stops it and prints how many requests were served.
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "emulator/voice_module_emulator.h"

namespace {

void usage() {
    std::fprintf(stderr,
                 "usage: tr104-vmemu [--fault CMD:KIND[:MS[:COUNT]]]... [--ready-file PATH] [--quiet]\n"
                 "  KIND: none marker silent late wrongcmd wrongtype garbage noise; CMD 0 = every command\n");
}

bool parseFault(const std::string &text, uint32_t *cmd, vmemu::FaultSpec *wanted) {
    std::vector<std::string> parts;
    std::stringstream in(text);
    for (std::string part; std::getline(in, part, ':');) {
        parts.push_back(part);
    }
    if (parts.size() < 2) {
        return false;
    }
    auto kind = vmemu::faultFromName(parts[1]);
    if (!kind) {
        return false;
    }
    *cmd = static_cast<uint32_t>(std::strtoul(parts[0].c_str(), nullptr, 0));
    wanted->kind = *kind;
    wanted->delayMs = parts.size() > 2 ? std::atoi(parts[2].c_str()) : 0;
    wanted->count = parts.size() > 3 ? std::atoi(parts[3].c_str()) : -1;
    return true;
}

// Reads commands from standard input until it ends.
void commandLoop(vmemu::VoiceModuleEmulator *emulator) {
    char line[512];
    while (std::fgets(line, sizeof(line), stdin) != nullptr) {
        std::stringstream in(line);
        std::string verb;
        in >> verb;
        if (verb == "fault") {
            std::string cmd, kind, ms = "0", count = "-1";
            in >> cmd >> kind >> ms >> count;
            uint32_t id;
            vmemu::FaultSpec wanted;
            if (parseFault(cmd + ":" + kind + ":" + ms + ":" + count, &id, &wanted)) {
                emulator->setFault(id, wanted);
                std::printf("fault %u %s\n", id, vmemu::faultName(wanted.kind));
            } else {
                std::printf("bad fault\n");
            }
        } else if (verb == "clear") {
            emulator->clearFaults();
            std::printf("faults cleared\n");
        } else if (verb == "inbound") {
            long module = 0;
            uint32_t type = 0, cmd = 0, word = 0;
            in >> module >> type >> cmd;
            std::vector<uint32_t> words;
            while (in >> word) {
                words.push_back(word);
            }
            const bool ok = emulator->sendInbound(module, type, cmd, words.data(), words.size() * sizeof(uint32_t));
            std::printf("inbound module=%ld cmd=%u %s\n", module, cmd, ok ? "sent" : "failed");
        } else if (verb == "help") {
            std::printf("fault CMD KIND [MS [COUNT]]\nclear\ninbound MODULE TYPE CMD [WORD]...\n");
            for (const std::string &help : vmemu::consoleHelp()) {
                std::printf("%s\n", help.c_str());
            }
        } else if (std::string out; !verb.empty() && vmemu::runConsoleCommand(*emulator, verb, in, &out)) {
            std::printf("%s", out.c_str());
            if (!out.empty() && out.back() != '\n') {
                std::printf("\n");
            }
        } else if (!verb.empty()) {
            std::printf("unknown command: %s (help lists the commands)\n", verb.c_str());
        }
        std::fflush(stdout);
    }
}

}  // namespace

int main(int argc, char **argv) {
    vmemu::VoiceModuleEmulator emulator;
    const char *readyFile = nullptr;
    bool quiet = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--fault" && i + 1 < argc) {
            uint32_t cmd;
            vmemu::FaultSpec wanted;
            if (!parseFault(argv[++i], &cmd, &wanted)) {
                usage();
                return 2;
            }
            emulator.setFault(cmd, wanted);
        } else if (arg == "--ready-file" && i + 1 < argc) {
            readyFile = argv[++i];
        } else if (arg == "--quiet") {
            quiet = true;
        } else if (arg == "--help" || arg == "-h") {
            usage();
            return 0;
        } else {
            usage();
            return 2;
        }
    }

    // Signals are taken by sigwait below; every thread inherits the blocked mask.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    if (!quiet) {
        emulator.onRequest([&emulator](const vmemu::Request &request) {
            std::printf("[vmemu] %s\n", emulator.describe(request).c_str());
            std::fflush(stdout);
        });
    }
    if (!emulator.start()) {
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
    emulator.stop();
    std::printf("[vmemu] stopped: %zu requests served, %zu replies dropped\n", emulator.requestCount(),
                emulator.droppedReplies());
    return 0;
}
