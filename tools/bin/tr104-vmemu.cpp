// tr104-vmemu: plays the voice module on this machine's channel (send queue key 30).
//
//   tr104-vmemu [--fault CMD:KIND[:MS[:COUNT]]]... [--state FILE] [--control PATH]
//               [--ready-file PATH] [--quiet] [--version] [--help]
//
// Each request is printed on one line.  Console commands (fault, clear, inbound, log, requests, help and
// those of each area) are read from standard input and, with --control, from a Unix-domain
// socket; with --state the configuration is kept in a file across restarts.  SIGINT or SIGTERM
// stops it and prints how many requests were served.
#include <cstdio>
#include <string>

#include "emulator/control.h"
#include "emulator/service.h"
#include "emulator/voice_module_emulator.h"

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

// --fault CMD:KIND[:MS[:COUNT]]: a fault injected from the start.
int faultOption(vmemu::VoiceModuleEmulator &emulator, int argc, char **argv, int *i) {
    if (std::string(argv[*i]) != "--fault" || *i + 1 >= argc) {
        return vmemu::kNotOwn;
    }
    uint32_t cmd;
    vmemu::FaultSpec wanted;
    if (!vmemu::parseFault(argv[++*i], &cmd, &wanted)) {
        usage(stderr);
        return 2;
    }
    emulator.setFault(cmd, wanted);
    return vmemu::kTaken;
}

}  // namespace

int main(int argc, char **argv) {
    vmemu::VoiceModuleEmulator emulator;
    const vmemu::Program program{
        "tr104-vmemu", "[vmemu]", "[vmemu] ", &usage,
        [&emulator](int count, char **args, int *at) { return faultOption(emulator, count, args, at); }};
    return vmemu::run(emulator, program, argc, argv);
}
