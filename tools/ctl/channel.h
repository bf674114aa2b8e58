// The channel: the voice module of this machine, or the emulator in a private IPC namespace.
#pragma once

#include <sched.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "ctl/library.h"
#include "emulator/protocol_family.h"
#include "emulator/voice_module_emulator.h"

namespace tr104ctl {

// The channel: the voice module of this machine, or the emulator in a private IPC namespace.
class Channel {
public:
    explicit Channel(const Library &lib) : lib_(lib) {}

    bool emulate(const std::string &protocolName) {
        if (unshare(CLONE_NEWIPC) != 0) {
            std::fprintf(stderr, "tr104ctl: cannot enter a private IPC namespace for the emulator: %s (run as root)\n",
                         std::strerror(errno));
            return false;
        }
        emulator_ = std::make_unique<vmemu::VoiceModuleEmulator>();
        if (!protocolName.empty()) {
            vmemu::setProtocolName(*emulator_, protocolName);
        }
        return emulator_->start();
    }

    // Opens the queues as the given module kind and learns the protocol.  false when the
    // queues cannot be opened; *answered says whether the voice module answered.
    bool open(int moduleKind, bool *answered) {
        auto init = lib_.function<int (*)(int)>("tr104VoiceMsgQueuesInit");
        auto refresh = lib_.function<int (*)()>("Tr104RefreshCurrProtocolType");
        if (init == nullptr || init(moduleKind) != 0) {
            std::fprintf(stderr, "tr104ctl: cannot open the channel to the voice module\n");
            return false;
        }
        // Kinds without a reply queue (5 to 7) cannot read anything: there is nothing to learn.
        const int32_t *replyQueue = lib_.variable<int32_t>("gTr104RcvOutMsgQueueId");
        if (replyQueue != nullptr && *replyQueue == -1) {
            *answered = true;
            return true;
        }
        *answered = refresh != nullptr && refresh() == 0;
        return true;
    }

    // Forgets the queues of this namespace, so that the next open() finds the emulator's.
    void forget() {
        for (const char *name :
             {"gTr104RcvMsgQueueSemId", "gTr104SndMsgQueueId", "gTr104RcvOutMsgQueueId", "gTr104RcvInMsgQueueId"}) {
            if (int32_t *id = lib_.variable<int32_t>(name)) {
                *id = -1;
            }
        }
    }

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
