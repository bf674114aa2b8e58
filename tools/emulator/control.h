// The emulator's console: the commands tr104-vmemu takes on its standard input and on its control
// socket (a Unix-domain stream socket), one command per line, the answer text back.
#pragma once

#include <cstdint>
#include <string>
#include <thread>

#include "emulator/voice_module_emulator.h"

namespace vmemu {

// CMD:KIND[:MS[:COUNT]] as given to --fault (CMD 0: every command).
bool parseFault(const std::string &text, uint32_t *cmd, FaultSpec *wanted);

// The console's commands, one line each (the base commands, then those of every area).
std::string controlHelp();

// Runs one console line and returns its answer (one or more lines, each ending in a newline;
// empty for an empty line).
std::string runControlLine(VoiceModuleEmulator &emulator, const std::string &line);

// Serves the console on a Unix-domain stream socket: any number of connections, each sending
// lines and reading each line's answer; a connection may stay open for many commands.
class ControlServer {
public:
    ControlServer() = default;
    ~ControlServer() { stop(); }
    ControlServer(const ControlServer &) = delete;
    ControlServer &operator=(const ControlServer &) = delete;

    // Binds PATH (a stale socket file there is replaced); false with *error when it cannot.
    bool start(VoiceModuleEmulator &emulator, const std::string &path, std::string *error);
    // Closes every connection and removes the socket file.
    void stop();

private:
    void serve(VoiceModuleEmulator *emulator);

    int listen_ = -1;
    int wake_[2] = {-1, -1};
    std::string path_;
    std::thread thread_;
};

}  // namespace vmemu
