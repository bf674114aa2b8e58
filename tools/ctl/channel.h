// The channel: the voice module of this machine, or the emulator in a private IPC namespace.
#pragma once

#include <memory>
#include <string>

#include "ctl/library.h"
#include "emulator/voice_module_emulator.h"

namespace tr104ctl {

class Channel {
public:
    explicit Channel(const Library &lib) : lib_(lib) {}

    // Moves into a private IPC namespace and starts the emulator there.
    bool emulate(const std::string &protocolName);

    // Opens the queues as the given module kind and learns the protocol.  false when the
    // queues cannot be opened; *answered says whether the voice module answered.
    bool open(int moduleKind, bool *answered);

    // Forgets the queues of this namespace, so that the next open() finds the emulator's.
    void forget();

    vmemu::VoiceModuleEmulator *emulator() { return emulator_.get(); }

private:
    const Library &lib_;
    std::unique_ptr<vmemu::VoiceModuleEmulator> emulator_;
};

enum class Emulate { Auto, Always, Never };

struct ConnectRequest {
    std::string command;  // watch and demo choose their voice module themselves
    Emulate emulate = Emulate::Auto;
    std::string protocolName;
    int moduleKind = 1;
};

// Opens the channel as the options ask: -1 when it is open, else the exit code.
int connect(Channel &channel, const ConnectRequest &opt);

}  // namespace tr104ctl
