// Opening the channel, with the emulator when no voice module answers.
#include "ctl/channel.h"

#include <sched.h>
#include <sys/ipc.h>
#include <sys/msg.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "ctl/exit.h"
#include "emulator/protocol_family.h"
#include "tr104/channel.h"

namespace tr104ctl {

namespace {

bool voiceModuleQueueExists() { return msgget(TR104_SND_QUEUE_KEY, 0) != -1; }

// A request queue without room for one more message: nobody reads it, and a request would wait
// on it for ever.
bool voiceModuleQueueFull() {
    const int id = msgget(TR104_SND_QUEUE_KEY, 0);
    msqid_ds state{};
    return id != -1 && msgctl(id, IPC_STAT, &state) == 0 && state.msg_qbytes - state.msg_cbytes < TR104_MSG_TEXT_LEN;
}

}  // namespace

bool Channel::emulate(const std::string &protocolName) {
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

bool Channel::open(int moduleKind, bool *answered) {
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

void Channel::forget() {
    for (const char *name :
         {"gTr104RcvMsgQueueSemId", "gTr104SndMsgQueueId", "gTr104RcvOutMsgQueueId", "gTr104RcvInMsgQueueId"}) {
        if (int32_t *id = lib_.variable<int32_t>(name)) {
            *id = -1;
        }
    }
}

int connect(Channel &channel, const ConnectRequest &opt) {
    bool answered = false;
    Emulate mode = opt.command == "demo" ? Emulate::Always : opt.emulate;
    if (opt.command == "watch" && mode == Emulate::Auto) {
        mode = Emulate::Never;  // an emulator that nobody scripts would report nothing
    }
    if (mode == Emulate::Auto && (!voiceModuleQueueExists() || voiceModuleQueueFull())) {
        mode = Emulate::Always;
    }
    if (mode == Emulate::Never && voiceModuleQueueFull()) {
        std::fprintf(stderr, "tr104ctl: the voice module's request queue is full: nobody reads it\n");
        return kExitFailed;
    }
    if (mode == Emulate::Always) {
        if (!channel.emulate(opt.protocolName)) {
            return kExitUsage;
        }
        return channel.open(opt.moduleKind, &answered) ? -1 : kExitFailed;
    }
    if (!channel.open(opt.moduleKind, &answered)) {
        return kExitFailed;
    }
    if (!answered && mode == Emulate::Auto) {
        std::fprintf(stderr, "tr104ctl: no voice module answers; the emulator plays it\n");
        channel.forget();
        if (!channel.emulate(opt.protocolName) || !channel.open(opt.moduleKind, &answered)) {
            return kExitFailed;
        }
    } else if (!answered) {
        std::fprintf(stderr, "tr104ctl: the voice module does not name its protocol\n");
    }
    return -1;
}

}  // namespace tr104ctl
