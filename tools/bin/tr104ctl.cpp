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
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "ctl/agent.h"
#include "ctl/areas.h"
#include "ctl/call.h"
#include "ctl/channel.h"
#include "ctl/demo.h"
#include "ctl/exit.h"
#include "ctl/init.h"
#include "ctl/list.h"
#include "ctl/path_set.h"
#include "ctl/paths.h"
#include "ctl/startup.h"
#include "ctl/watch.h"
#include "tr104/version.h"

// The management agent's entry point that the library reports changed values to.
extern "C" __attribute__((visibility("default"))) int notifyChangedValues_toTr069(int module, char **names,
                                                                                  char **values, int count) {
    return tr104ctl::receiveNotification(module, names, values, count);
}

namespace {

using namespace tr104ctl;

struct Options {
    std::string command;  // get, set, init, watch, demo, list or an area command's name
    CallRequest call;
    std::vector<std::string> setValues;  // set: the value, then further PATH VALUE pairs
    std::vector<PathSet> pathSets;  // set by path: the checked pairs
    std::string library;
    ConnectRequest connect;  // the voice module: emulated or this machine's
    bool debug = false;
    bool init = false;  // full start-up before the command
    int watchSeconds = 60;  // watch: how long (0: until interrupted)
    int watchCount = 0;  // watch: stop after this many notifications (0: no limit)
    AreaCommand *area = nullptr;
};

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
    auto *asInt = command.add_flag_callback(
        "--int", [opt] { opt->call.kindOverride = TR104_MAP_VALUE_INT; },
        "the handler takes an integer (a handler the client does not know)");
    auto *asText = command.add_flag_callback(
        "--text", [opt] { opt->call.kindOverride = TR104_MAP_VALUE_TEXT; }, "the handler takes a text");
    auto *asFloat = command.add_flag_callback(
        "--float", [opt] { opt->call.kindOverride = TR104_MAP_VALUE_FLOAT; }, "the handler takes a float");
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
int parseOptions(int argc, char **argv, std::vector<AreaCommand> &areas, Options *opt) {
    CLI::App app{kDescription, "tr104ctl"};
    app.fallthrough();
    app.require_subcommand(1);
    app.set_version_flag("--version", versionText());
    app.add_option("--lib", opt->library, "libtr104.so to load (else $TR104_LIBRARY, else beside tr104ctl)");
    auto *emulate = app.add_flag_callback(
        "--emulate", [opt] { opt->connect.emulate = Emulate::Always; },
        "play the voice module in a private IPC namespace");
    app.add_flag_callback(
           "--no-emulate", [opt] { opt->connect.emulate = Emulate::Never; },
           "talk to the voice module of this machine only")
        ->excludes(emulate);
    app.add_option("--protocol", opt->connect.protocolName, "protocol name the emulated voice module reports (SIP)");
    app.add_option("--kind,--module-kind", opt->connect.moduleKind,
                   "module kind the client starts as (1; watch: 1 to 4)")
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
    for (AreaCommand &command : areas) {
        CLI::App *sub = app.add_subcommand(command.name, command.description);
        command.define(*sub);
        sub->callback([opt, &command] {
            opt->command = command.name;
            opt->area = &command;
        });
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
    if (opt->command == "watch" && opt->connect.moduleKind > 4) {
        return fail("watch needs a module kind with an inbound queue (1 to 4), not " +
                    std::to_string(opt->connect.moduleKind));
    }
    return -1;
}

}  // namespace

static int run(int argc, char **argv) {
    Options opt;
    std::vector<AreaCommand> areas = allAreaCommands();
    if (const int code = parseOptions(argc, argv, areas, &opt); code >= 0) {
        return code;
    }
    AreaCommand *area = opt.area;
    if (opt.command == "list") {
        return listHandlers();
    }
    if (opt.command == "watch" && opt.connect.emulate != Emulate::Always) {
        blockStopSignals();
    }
    Library lib;
    std::string error;
    if (!lib.open(opt.library, &error)) {
        return fail(error);
    }
    Channel channel(lib);
    opt.connect.command = opt.command;
    if (const int code = connect(channel, opt.connect); code >= 0) {
        return code;
    }
    if (opt.debug) {
        if (int *debug = lib.variable<int>("gTr104CfgDebug")) {
            *debug = 1;
        }
    }
    Context context{lib, channel.emulator(), opt.connect.moduleKind};
    const bool fullStart =
        opt.init || opt.command == "watch" || opt.command == "demo" || (area != nullptr && area->fullStart);
    if (fullStart && !startLibrary(context, context.moduleKind)) {
        return kExitFailed;
    }
    if (opt.command == "init") {
        return reportStartup(lib, context.moduleKind);
    }
    if (area != nullptr) {
        return area->run(context);
    }
    if (opt.command == "demo") {
        return runDemo(context);
    }
    if (opt.command == "watch") {
        return channel.emulator() != nullptr ? watchScripted(lib, *channel.emulator())
                                             : watchLive(lib, opt.watchSeconds, opt.watchCount);
    }
    if (!opt.pathSets.empty()) {
        return runPathSets(context, opt.pathSets);
    }
    return runCall(context, opt.call);
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
