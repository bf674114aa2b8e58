// The start-up and shut-down of a program that plays the voice module on this machine's channel
// (tr104-vmemu, tr104-voiced): the options they share (--state, --control, --ready-file,
// --quiet, --version, --help), the stop signals, the configuration file, the request log, the
// control socket, the ready file and the console on standard input.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include "emulator/voice_module_emulator.h"

namespace vmemu {

// What sets one program apart.
struct Program {
    const char *name;  // "tr104-vmemu": --version prints it before the version
    const char *tag;  // "[vmemu]": the request log and the start and stop lines begin with it
    const char *errorPrefix;  // a message on standard error begins with it
    void (*usage)(FILE *to);
    // One of the program's own options at argv[*i] (taking its value advances *i): kTaken, kNotOwn,
    // or the exit status after the program's own message.
    std::function<int(int argc, char **argv, int *i)> option;
};
inline constexpr int kTaken = -1;
inline constexpr int kNotOwn = -2;

struct ServiceOptions {
    std::string stateFile;  // empty: none
    std::string controlPath;  // empty: no control socket
    std::string readyFile;  // empty: none
    bool quiet = false;
};

// Reads the command line into *options: kTaken to go on, or the exit status (0 after --version
// or --help, 2 after a bad option).
int parseCommandLine(const Program &program, int argc, char **argv, ServiceOptions *options);

// What a program runs along with the emulator.
struct ServiceHooks {
    std::function<bool(std::string *error)> start;  // before the queue is served
    std::function<void()> stop;  // after the queue's serving and the control socket ended
    std::function<void(const Request &)> onRequest;  // each request, once the emulator served it
};

// Serves the channel until SIGINT or SIGTERM: loads the configuration file (a file it cannot
// take stops it, untouched), starts the hooks, the emulator and the control socket, creates the
// ready file and reads console commands from standard input; on a stop, saves the configuration
// and prints how many requests were served.  The exit status: 0, or 1 when it could not start.
// Call it before any thread is started: every thread must inherit the blocked stop signals.
int serve(VoiceModuleEmulator &emulator, const Program &program, const ServiceOptions &options,
          const ServiceHooks &hooks = {});

// The whole program: the command line, then serve; the exit status.
int run(VoiceModuleEmulator &emulator, const Program &program, int argc, char **argv, const ServiceHooks &hooks = {});

}  // namespace vmemu
