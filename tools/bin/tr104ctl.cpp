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
// runtime and the buffer by itself, because a value still staged when the client ends never
// reaches the voice module: a set by handler name waits until the slot has been applied; sets by
// path (`set PATH VALUE [PATH VALUE]...`) are one management message, whose waiting groups are
// written when its last pair has been set.  Hidden values (passwords) are never printed.  It does not start the
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

#include <CLI/CLI.hpp>

#include "ctl/agent.h"
#include "ctl/areas.h"
#include "ctl/demo.h"
#include "ctl/invoke.h"
#include "ctl/library.h"
#include "ctl/path_set.h"
#include "ctl/paths.h"
#include "ctl/startup.h"
#include "ctl/value_kinds.h"
#include "ctl/watch.h"
#include "tr104/version.h"
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
    std::string command;  // get, set, init, watch, demo, list or an area command's name
    CallRequest call;
    std::vector<std::string> setValues;  // set: the value, then further PATH VALUE pairs
    std::vector<PathSet> pathSets;  // set by path: the checked pairs
    std::string library;
    Emulate emulate = Emulate::Auto;
    std::string protocolName;
    int moduleKind = 1;
    bool debug = false;
    bool init = false;       // full start-up before the command
    int watchSeconds = 60;   // watch: how long (0: until interrupted)
    int watchCount = 0;      // watch: stop after this many notifications (0: no limit)
    const AreaCommand *area = nullptr;
};

int fail(const std::string &message) {
    std::fprintf(stderr, "tr104ctl: %s\n", message.c_str());
    return kExitUsage;
}

const char kDescription[] =
    "tr104ctl: a management-agent stand-in for libtr104.so.  It loads the library as the agent does and\n"
    "gets or sets any handler by name (with its locator) or by data-model path.\n"
    "Without --emulate or --no-emulate the emulator plays the voice module when none answers (watch: only\n"
    "with --emulate).  init, watch and demo run the library's full start-up (Tr104VoiceCfgInit); a set of a\n"
    "deferred parameter by handler name waits until its group is applied; sets by path take several PATH\n"
    "VALUE pairs, checked before anything is sent and applied as one message.  Hidden values (passwords)\n"
    "read as empty.  Values starting with '-' go after --.";

// get and set: the handler or path, the locator and the value kind.
void defineCall(CLI::App &command, Options *opt, bool set) {
    command.add_option("NAME", opt->call.handler, "an exported handler (Tr104LineEnable) or a data-model path")
        ->required();
    if (set) {
        command
            .add_option("VALUE", opt->setValues,
                        "the value (the data model's form for a path); after a path, more PATH VALUE pairs")
            ->required();
    }
    command.add_option("--line", opt->call.locate[2], "nLocate[2] (1)")->check(numberIn(0, 65535));
    command.add_option("--profile", opt->call.locate[1], "nLocate[1] (1)")->check(numberIn(0, 65535));
    command.add_option("--entry", opt->call.locate[3], "nLocate[3] (0)")->check(numberIn(0, 65535));
    command.add_option("--direction", opt->call.direction, "the gain's direction: 0 transmit, 1 receive");
    auto *asInt = command.add_flag_callback("--int", [opt] { opt->call.kindOverride = ValueKind::Integer; },
                                            "the handler takes an integer (a handler the client does not know)");
    auto *asText = command.add_flag_callback("--text", [opt] { opt->call.kindOverride = ValueKind::Text; },
                                             "the handler takes a text");
    auto *asFloat = command.add_flag_callback("--float", [opt] { opt->call.kindOverride = ValueKind::Float; },
                                              "the handler takes a float");
    asInt->excludes(asText)->excludes(asFloat);
    asText->excludes(asFloat);
    command.callback([opt, set] {
        opt->command = set ? "set" : "get";
        opt->call.set = set;
        if (set) {
            opt->call.value = opt->setValues.front();
        }
    });
}

// The commands that may follow init: get, set, watch and demo.
void defineStartedCommands(CLI::App &parent, Options *opt) {
    defineCall(*parent.add_subcommand("get", "the value of a handler or path"), opt, false);
    defineCall(*parent.add_subcommand("set", "set a handler, or paths in PATH VALUE pairs (one message)"), opt, true);
    CLI::App *watch = parent.add_subcommand("watch", "print the voice module's change notifications as they arrive");
    watch->add_option("--seconds", opt->watchSeconds, "how long to wait (60; 0: until Ctrl-C)")
        ->check(numberIn(0, 86400));
    watch->add_option("--count", opt->watchCount, "end after N notifications")->check(numberIn(1, 1000000));
    watch->callback([opt] { opt->command = "watch"; });
    parent.add_subcommand("demo", "the guided tour against the emulator")->callback([opt] { opt->command = "demo"; });
}

std::string versionText() {
    return std::string("tr104ctl ") + TR104_VERSION_STRING + " (libtr104 " + TR104_VERSION_STRING + ")";
}

// Parses the command line; returns -1 when it is fine, else the exit code.
int parseOptions(int argc, char **argv, Options *opt) {
    CLI::App app{kDescription, "tr104ctl"};
    app.fallthrough();
    app.require_subcommand(1);
    app.set_version_flag("--version", versionText());
    app.add_option("--lib", opt->library, "libtr104.so to load (else $TR104_LIBRARY, else beside tr104ctl)");
    auto *emulate = app.add_flag_callback("--emulate", [opt] { opt->emulate = Emulate::Always; },
                                          "play the voice module in a private IPC namespace");
    app.add_flag_callback("--no-emulate", [opt] { opt->emulate = Emulate::Never; },
                          "talk to the voice module of this machine only")
        ->excludes(emulate);
    app.add_option("--protocol", opt->protocolName, "protocol name the emulated voice module reports (SIP)");
    app.add_option("--kind,--module-kind", opt->moduleKind, "module kind the client starts as (1; watch: 1 to 4)")
        ->check(numberIn(1, 7));
    app.add_flag("--debug", opt->debug, "switch the library's handler diagnostics on");

    defineStartedCommands(app, opt);
    CLI::App *init = app.add_subcommand("init", "the library's full start-up, then get, set, watch or demo if given");
    init->require_subcommand(0, 1);
    defineStartedCommands(*init, opt);
    init->final_callback([opt] {
        opt->init = true;
        if (opt->command.empty()) {
            opt->command = "init";
        }
    });
    app.add_subcommand("list", "the handlers the client knows, with their value kinds")->callback([opt] {
        opt->command = "list";
    });
    for (std::span<const AreaCommand> table : kAreaCommandTables) {
        for (const AreaCommand &command : table) {
            CLI::App *sub = app.add_subcommand(command.name, command.description);
            command.define(*sub);
            sub->callback([opt, &command] {
                opt->command = command.name;
                opt->area = &command;
            });
        }
    }
    if (argc < 2) {
        std::fputs(app.help().c_str(), stderr);
        return kExitUsage;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &e) {
        return app.exit(e);
    } catch (const CLI::ParseError &e) {
        // No command, or a first word that is none.
        const std::vector<std::string> rest = app.remaining();
        if (app.get_subcommands().empty() && !rest.empty() && rest[0][0] != '-') {
            std::string known;
            for (const CLI::App *sub : app.get_subcommands({})) {
                known += (known.empty() ? "" : ", ") + sub->get_name();
            }
            return fail("unknown command '" + rest[0] + "' (" + known + ")");
        }
        return fail(std::string(e.what()) + " (tr104ctl --help)");
    }
    // Sets by path are checked before the voice module is asked anything.
    if (opt->command == "set" && looksLikePath(opt->call.handler)) {
        std::vector<std::string> words{opt->call.handler};
        words.insert(words.end(), opt->setValues.begin(), opt->setValues.end());
        if (std::string why; !checkPathSets(words, &opt->pathSets, &why)) {
            return fail(why);
        }
    } else if (opt->command == "set" && opt->setValues.size() > 1) {
        return fail("several values are set by data-model path only (PATH VALUE pairs), not with '" +
                    opt->call.handler + "'");
    }
    // Module kinds 5 to 7 have no inbound queue.
    if (opt->command == "watch" && opt->moduleKind > 4) {
        return fail("watch needs a module kind with an inbound queue (1 to 4), not " +
                    std::to_string(opt->moduleKind));
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
        // A hidden value (a password) reads as empty, by path and by handler name alike.
        const bool hidden = entry != nullptr ? entry->hidden != 0 : hiddenHandler(result.calledName);
        const std::string shown = hidden ? "" : result.shown;
        std::printf("%s\n", entry != nullptr ? toModelValue(*entry, shown).c_str() : shown.c_str());
    }
    return 0;
}

}  // namespace

static int run(int argc, char **argv) {
    Options opt;
    if (const int code = parseOptions(argc, argv, &opt); code >= 0) {
        return code;
    }
    const AreaCommand *area = opt.area;
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
        return area->run(context);
    }
    if (opt.command == "demo") {
        return runDemo(lib, *channel.emulator());
    }
    if (opt.command == "watch") {
        return channel.emulator() != nullptr ? watchScripted(lib, *channel.emulator())
                                             : watchLive(lib, opt.watchSeconds, opt.watchCount);
    }
    if (!opt.pathSets.empty()) {
        return runPathSets(lib, opt.pathSets);
    }
    return runCall(lib, opt.call);
}

int main(int argc, char **argv) {
    // The command line and the JSON output may throw (out of memory, a value they cannot hold):
    // one line and a failure, never an abort.
    try {
        return run(argc, argv);
    } catch (const std::exception &e) {
        std::fprintf(stderr, "tr104ctl: %s\n", e.what());
        return kExitFailed;
    }
}
