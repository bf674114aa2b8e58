// tr104ctl: a management-agent stand-in.  It loads libtr104.so with dlopen, as the agent does,
// and gets or sets any exported handler by name with its locator:
//
//   tr104ctl get Tr104LineEnable --line 1
//   tr104ctl set Tr104LineTransmitGain --line 2 -- -5
//   tr104ctl init --kind 2 get Tr104LineEnable --line 1
//   tr104ctl watch --seconds 60
//   tr104ctl demo
//
// With --emulate (the default when no voice module answers) it first moves into a private IPC
// namespace and plays the voice module itself.  It also receives the library's change
// notifications (notifyChangedValues_toTr069) and prints them.
//
// `init` runs the library's full start-up (Tr104VoiceCfgInit) before the command, as the
// management agent does; `watch` and `demo` always do.  A set of a parameter that the library
// stages in its deferred buffer (server addresses and ports, user name and password) starts the
// runtime and the buffer by itself and waits until the slot has been applied, because a value
// still staged when the client ends never reaches the voice module.  It does not start the
// inbound thread: that would read the inbound queue of the client's module kind and take the
// messages meant for the management agent running as that kind.
#include <sched.h>
#include <sys/ipc.h>
#include <sys/msg.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "ctl/agent.h"
#include "ctl/areas.h"
#include "ctl/demo.h"
#include "ctl/invoke.h"
#include "ctl/library.h"
#include "ctl/paths.h"
#include "ctl/startup.h"
#include "ctl/value_kinds.h"
#include "ctl/watch.h"
#include "emulator/protocol_family.h"
#include "emulator/voice_module_emulator.h"

// The management agent's entry point that the library reports changed values to.
extern "C" __attribute__((visibility("default"))) int notifyChangedValues_toTr069(int module, char **names,
                                                                                  char **values, int count) {
    return tr104ctl::receiveNotification(module, names, values, count);
}

namespace {

using namespace tr104ctl;

constexpr int kExitFailed = 1;  // the handler ran and returned -1 or -2
constexpr int kExitUsage = 2;   // the request was wrong: name, value kind, locator, option

enum class Emulate { Auto, Always, Never };

struct Options {
    std::string command;
    CallRequest call;
    std::vector<std::string> positional;
    std::string library;
    Emulate emulate = Emulate::Auto;
    std::string protocolName;
    int moduleKind = 1;
    bool debug = false;
    bool init = false;       // full start-up before the command
    int watchSeconds = 60;   // watch: how long (0: until interrupted)
    int watchCount = 0;      // watch: stop after this many notifications (0: no limit)
    bool watchOptions = false;
};

void usage(FILE *out) {
    std::fprintf(out,
                 "usage: tr104ctl [options] get HANDLER [locator] | get PATH\n"
                 "       tr104ctl [options] set HANDLER [locator] [--] VALUE | set PATH VALUE\n"
                 "       tr104ctl [options] init [--kind N] [get ... | set ... | watch ... | demo]\n"
                 "       tr104ctl [options] watch [--seconds S] [--count N]\n"
                 "       tr104ctl [options] demo | list\n"
                 "locator: --line N (nLocate[2], default 1)  --profile N (nLocate[1], default 1)\n"
                 "         --entry N (nLocate[3])  --direction N (gain: 0 transmit, 1 receive)\n"
                 "options: --lib PATH            libtr104.so to load (else $TR104_LIBRARY, beside tr104ctl)\n"
                 "         --emulate             play the voice module in a private IPC namespace\n"
                 "         --no-emulate          talk to the voice module of this machine only\n"
                 "         --protocol NAME       protocol name the emulated voice module reports (SIP)\n"
                 "         --kind N, --module-kind N  module kind the client starts as (1; watch: 1 to 4)\n"
                 "         --int | --text | --float  value kind of a handler the client does not know\n"
                 "         --debug               switch the library's handler diagnostics on\n"
                 "watch:   --seconds S           wait S seconds for the voice module's changes (60; 0: until Ctrl-C)\n"
                 "         --count N             end after N notifications\n"
                 "         with --emulate the emulator pushes a scripted series of changes instead\n"
                 "Without --emulate or --no-emulate the emulator plays the voice module when none answers\n"
                 "(watch: only with --emulate).  init, watch and demo run the library's full start-up\n"
                 "(Tr104VoiceCfgInit); a set of a deferred parameter waits until its group is applied.\n");
    for (std::span<const AreaCommand> table : kAreaCommandTables) {
        for (const AreaCommand &command : table) {
            std::fprintf(out, "%s\n", command.usage);
        }
    }
}

int fail(const std::string &message) {
    std::fprintf(stderr, "tr104ctl: %s\n", message.c_str());
    return kExitUsage;
}

// Parses the command line; returns -1 when it is fine, else the exit code.  With an area
// command, argc ends before its name: what follows the name is the command's own.
int parseOptions(int argc, char **argv, Options *opt, const AreaCommand *area) {
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (optionsEnded || arg.size() < 2 || arg[0] != '-' || (arg[1] != '-' && arg != "-h")) {
            opt->positional.push_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsEnded = true;
            continue;
        }
        auto next = [&](std::string *out) {
            if (i + 1 >= argc) {
                return false;
            }
            *out = argv[++i];
            return true;
        };
        std::string value;
        struct Locator {
            const char *option;
            int index;
        };
        static const Locator kLocators[] = {{"--profile", 1}, {"--line", 2}, {"--entry", 3}};
        bool handled = false;
        for (const Locator &loc : kLocators) {
            if (arg == loc.option) {
                if (!next(&value) || !parseInt(value, 0, 65535, &opt->call.locate[loc.index])) {
                    return fail(std::string("bad locator ") + loc.option + " '" + value +
                                "': give a number from 0 to 65535");
                }
                handled = true;
            }
        }
        if (handled) {
            continue;
        }
        if (arg == "--direction") {
            int direction = 0;
            if (!next(&value) || !parseInt(value, -2147483648L, 2147483647L, &direction)) {
                return fail("bad --direction '" + value + "': give 0 (transmit) or 1 (receive)");
            }
            opt->call.direction = direction;
        } else if (arg == "--lib") {
            if (!next(&opt->library)) {
                return fail("--lib needs a path");
            }
        } else if (arg == "--protocol") {
            if (!next(&opt->protocolName)) {
                return fail("--protocol needs a name");
            }
        } else if (arg == "--module-kind" || arg == "--kind") {
            if (!next(&value) || !parseInt(value, 1, 7, &opt->moduleKind)) {
                return fail("bad " + arg + " '" + value + "': give 1 to 7");
            }
        } else if (arg == "--seconds") {
            if (!next(&value) || !parseInt(value, 0, 86400, &opt->watchSeconds)) {
                return fail("bad --seconds '" + value + "': give 0 to 86400");
            }
            opt->watchOptions = true;
        } else if (arg == "--count") {
            if (!next(&value) || !parseInt(value, 1, 1000000, &opt->watchCount)) {
                return fail("bad --count '" + value + "': give 1 to 1000000");
            }
            opt->watchOptions = true;
        } else if (arg == "--emulate") {
            opt->emulate = Emulate::Always;
        } else if (arg == "--no-emulate") {
            opt->emulate = Emulate::Never;
        } else if (arg == "--int") {
            opt->call.kindOverride = ValueKind::Integer;
        } else if (arg == "--text") {
            opt->call.kindOverride = ValueKind::Text;
        } else if (arg == "--float") {
            opt->call.kindOverride = ValueKind::Float;
        } else if (arg == "--debug") {
            opt->debug = true;
        } else if (arg == "--help" || arg == "-h") {
            usage(stdout);
            return 0;
        } else {
            return fail("unknown option " + arg + " (values starting with '-' go after --)");
        }
    }
    if (area != nullptr) {
        if (!opt->positional.empty()) {
            return fail(std::string("'") + opt->positional[0] + "' cannot come before " + area->name);
        }
        if (opt->watchOptions) {
            return fail("--seconds and --count belong to watch");
        }
        opt->command = area->name;
        return -1;
    }
    if (!opt->positional.empty() && opt->positional[0] == "init") {
        opt->init = true;
        opt->positional.erase(opt->positional.begin());
        if (opt->positional.empty()) {
            opt->positional.push_back("init");
        } else if (opt->positional[0] != "get" && opt->positional[0] != "set" && opt->positional[0] != "watch" &&
                   opt->positional[0] != "demo") {
            return fail("init runs before get, set, watch or demo, not '" + opt->positional[0] + "'");
        }
    }
    if (opt->positional.empty()) {
        usage(stderr);
        return kExitUsage;
    }
    opt->command = opt->positional[0];
    const size_t args = opt->positional.size() - 1;
    if (opt->watchOptions && opt->command != "watch") {
        return fail("--seconds and --count belong to watch");
    }
    if (opt->command == "get" || opt->command == "set") {
        const size_t wanted = opt->command == "get" ? 1 : 2;
        if (args != wanted) {
            return fail(opt->command == "get" ? "usage: tr104ctl get HANDLER [locator]"
                                              : "usage: tr104ctl set HANDLER [locator] [--] VALUE");
        }
        opt->call.handler = opt->positional[1];
        opt->call.set = opt->command == "set";
        if (opt->call.set) {
            opt->call.value = opt->positional[2];
        }
    } else if (opt->command == "demo" || opt->command == "list" || opt->command == "watch" ||
               opt->command == "init") {
        if (args != 0) {
            return fail(opt->command + " takes no arguments");
        }
        // Module kinds 5 to 7 have no inbound queue.
        if (opt->command == "watch" && opt->moduleKind > 4) {
            return fail("watch needs a module kind with an inbound queue (1 to 4), not " +
                        std::to_string(opt->moduleKind));
        }
    } else {
        std::string known = "init, get, set, watch, demo, list";
        for (std::span<const AreaCommand> table : kAreaCommandTables) {
            for (const AreaCommand &command : table) {
                known += std::string(", ") + command.name;
            }
        }
        return fail("unknown command '" + opt->command + "' (" + known + ")");
    }
    return -1;
}

int listHandlers() {
    for (const HandlerKind &row : allKinds()) {
        std::printf("%-36s %s", row.name, kindName(row.kind));
        if (row.deferredSlot >= 0) {
            std::printf(", a set is staged in deferred slot %d", row.deferredSlot);
        }
        std::printf("\n");
    }
    return 0;
}

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
        for (const char *name : {"gTr104RcvMsgQueueSemId", "gTr104SndMsgQueueId", "gTr104RcvOutMsgQueueId",
                                 "gTr104RcvInMsgQueueId"}) {
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

bool voiceModuleQueueExists() { return msgget(TR104_SND_QUEUE_KEY, 0) != -1; }

// A request queue without room for one more message: nobody reads it, and a request would wait
// on it for ever.
bool voiceModuleQueueFull() {
    const int id = msgget(TR104_SND_QUEUE_KEY, 0);
    msqid_ds state{};
    return id != -1 && msgctl(id, IPC_STAT, &state) == 0 && state.msg_qbytes - state.msg_cbytes < TR104_MSG_TEXT_LEN;
}

int connect(Channel &channel, const Options &opt) {
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

// A set of a deferred parameter ends only once its slot has been applied: the group's other
// value may never come, and a value still staged when the process ends is lost.
int waitDeferred(const Library &lib, const std::string &calledName, int slot, Clock::time_point since) {
    const SlotState state = readSlot(lib, slot);
    if (!state.idle()) {
        std::printf("%s: staged in slot %d of the deferred buffer; its timer applies it in %d ms\n",
                    calledName.c_str(), slot, deferredTimeoutMs(lib));
        std::fflush(stdout);
    }
    const Millis limit(deferredTimeoutMs(lib) + 5000);
    const std::optional<Millis> took = waitSlotIdle(lib, slot, since, limit);
    if (!took) {
        std::fprintf(stderr, "tr104ctl: slot %d was not applied within %lld ms; the staged value is lost\n", slot,
                     static_cast<long long>(limit.count()));
        return kExitFailed;
    }
    if (state.idle()) {
        std::printf("%s: slot %d applied at once\n", calledName.c_str(), slot);
    } else {
        std::printf("%s: slot %d applied by its timer after %.1f s\n", calledName.c_str(), slot,
                    static_cast<double>(took->count()) / 1000.0);
    }
    return 0;
}

// One get or set, as the agent makes it.
int runCall(const Library &lib, const CallRequest &requested) {
    // A data-model path names its handler and instance numbers through the map; its value
    // converts between the data model's form and the handler's.
    CallRequest call = requested;
    const Tr104MapEntry *entry = nullptr;
    if (looksLikePath(requested.handler)) {
        std::string why;
        if (!pathRequest(requested.handler, requested.set, requested.value, &call, &entry, &why)) {
            return fail(why);
        }
    }
    const HandlerKind *row = findKind(call.handler);
    const int slot = call.set && row != nullptr ? row->deferredSlot : -1;
    if (slot >= 0 && !startDeferredBuffer(lib)) {
        return kExitFailed;
    }
    const Clock::time_point start = Clock::now();
    const CallResult result = callHandler(lib, call);
    std::fflush(stdout);
    if (!result.called) {
        return fail(result.message);
    }
    if (result.rc != 0) {
        std::fprintf(stderr, "tr104ctl: %s returned %d: %s\n", result.calledName.c_str(), result.rc,
                     describeFailure(result.rc).c_str());
        return kExitFailed;
    }
    if (slot >= 0) {
        return waitDeferred(lib, result.calledName, slot, start);
    }
    if (!call.set) {
        std::printf("%s\n", entry != nullptr ? toModelValue(*entry, result.shown).c_str() : result.shown.c_str());
    }
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    Options opt;
    // An area command takes every argument after its name; the client's options come before it.
    const AreaCommand *area = nullptr;
    int areaAt = argc;
    for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
        if ((area = findAreaCommand(argv[i])) != nullptr) {
            areaAt = i;
            break;
        }
    }
    if (const int code = parseOptions(areaAt, argv, &opt, area); code >= 0) {
        return code;
    }
    if (opt.command == "list") {
        return listHandlers();
    }
    if (opt.command == "watch" && opt.emulate != Emulate::Always) {
        blockStopSignals();
    }
    Library lib;
    std::string error;
    if (!lib.open(opt.library, &error)) {
        return fail(error);
    }
    Channel channel(lib);
    if (const int code = connect(channel, opt); code >= 0) {
        return code;
    }
    if (opt.debug) {
        if (int *debug = lib.variable<int>("gTr104CfgDebug")) {
            *debug = 1;
        }
    }
    const bool fullStart =
        opt.init || opt.command == "watch" || opt.command == "demo" || (area != nullptr && area->fullStart);
    if (fullStart && !startLibrary(lib, opt.moduleKind)) {
        return kExitFailed;
    }
    if (opt.command == "init") {
        return reportStartup(lib, opt.moduleKind);
    }
    if (area != nullptr) {
        const AreaContext context{lib, channel.emulator(), opt.moduleKind};
        return area->run(context, std::vector<std::string>(argv + areaAt + 1, argv + argc));
    }
    if (opt.command == "demo") {
        return runDemo(lib, *channel.emulator());
    }
    if (opt.command == "watch") {
        return channel.emulator() != nullptr ? watchScripted(lib, *channel.emulator())
                                             : watchLive(lib, opt.watchSeconds, opt.watchCount);
    }
    return runCall(lib, opt.call);
}
