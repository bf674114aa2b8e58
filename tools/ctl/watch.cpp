// `tr104ctl watch`: every change the library reports to the agent, as the agent receives it.
#include "ctl/watch.h"

#include <signal.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <iterator>
#include <string>

#include "ctl/agent.h"
#include "ctl/startup.h"

namespace tr104ctl {

namespace {

// The records they carry (in the reply area of the inbound message).
constexpr size_t kLineRecordLen = 452;  // line u32 @0, number @8, user name @224, password @290
constexpr size_t kServerRecordLen = 276;  // server flag u32 @44, address @48, port u16 @118
constexpr size_t kRecordTextMax = 65;

constexpr ScriptedChange kWatchScript[] = {
    {kInboundDirectoryNumber, 1, "5550101", nullptr, 0},     {kInboundDirectoryNumber, 3, "5550303", nullptr, 0},
    {kInboundProxy, 1, "proxy2.example.net", nullptr, 5062}, {kInboundRegistrar, 2, "10.0.0.2", nullptr, 5070},
    {kInboundAuthentication, 2, "alice", "s3cret", 0},
};

// The record of a change, laid out as the voice module sends it.
std::string changeRecord(const ScriptedChange &c) {
    const bool server = c.cmd == kInboundProxy || c.cmd == kInboundRegistrar;
    std::string record(server ? kServerRecordLen : kLineRecordLen, '\0');
    auto text = [&record](size_t offset, const char *value) {
        if (value != nullptr) {
            std::memcpy(&record[offset], value, strnlen(value, kRecordTextMax));
        }
    };
    if (server) {
        std::memcpy(&record[44], &c.lineOrFlag, sizeof(c.lineOrFlag));
        text(48, c.first);
        std::memcpy(&record[118], &c.port, sizeof(c.port));
    } else {
        std::memcpy(&record[0], &c.lineOrFlag, sizeof(c.lineOrFlag));
        text(c.cmd == kInboundAuthentication ? 224 : 8, c.first);
        if (c.cmd == kInboundAuthentication) {
            text(290, c.second);
        }
    }
    return record;
}

std::string describeChange(const ScriptedChange &c) {
    char line[192];
    switch (c.cmd) {
    case kInboundDirectoryNumber:
        std::snprintf(line, sizeof(line), "line %u: directory number \"%s\"", c.lineOrFlag, c.first);
        break;
    case kInboundAuthentication:
        // The password is pushed but never shown.
        std::snprintf(line, sizeof(line), "line %u: user name \"%s\" and a password", c.lineOrFlag, c.first);
        break;
    default:
        std::snprintf(line, sizeof(line), "%s %s: \"%s\" port %u", c.lineOrFlag == 1 ? "primary" : "standby",
                      c.cmd == kInboundProxy ? "proxy" : "registrar", c.first, c.port);
        break;
    }
    return line;
}

// SIGINT and SIGTERM end a live watch.
sigset_t stopSignals() {
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    return stop;
}

void printWatchTotals(unsigned calls, unsigned values) {
    std::printf("the agent received %u notification(s) with %u value(s)\n", calls, values);
}

}  // namespace

bool pushChange(const Library &lib, vmemu::VoiceModuleEmulator &emulator, const ScriptedChange &change) {
    const int32_t *module = lib.variable<int32_t>("gCurrentModule");
    const int *protocol = lib.variable<int>("gTr104CurrProtocolType");
    AgentCounters &agent = agentCounters();
    const unsigned before = agent.calls.load();
    const std::string record = changeRecord(change);
    std::printf("> inbound %u, %s\n", change.cmd, describeChange(change).c_str());
    std::fflush(stdout);
    if (!emulator.sendInbound(*module, TR104_CMD_TYPE_DATA, change.cmd, record.data(), record.size())) {
        std::fprintf(stderr, "tr104ctl: the emulator cannot push inbound %u\n", change.cmd);
        return false;
    }
    if (!inboundSettled(lib, Millis(5000))) {
        std::fprintf(stderr, "tr104ctl: nobody reads the inbound queue\n");
        return false;
    }
    if (agent.calls.load() == before) {
        std::printf("  (no notification: the library reports changes only under SIP; protocol type is %d)\n",
                    protocol != nullptr ? *protocol : 0);
    }
    return true;
}

int watchScripted(const Library &lib, vmemu::VoiceModuleEmulator &emulator) {
    const int32_t *module = lib.variable<int32_t>("gCurrentModule");
    AgentCounters &agent = agentCounters();
    std::printf("the emulated voice module reports %zu changes on inbound queue key %d:\n", std::size(kWatchScript),
                vmemu::VoiceModuleEmulator::inboundKey(*module));
    std::fflush(stdout);
    for (const ScriptedChange &change : kWatchScript) {
        if (!pushChange(lib, emulator, change)) {
            return 1;
        }
    }
    printWatchTotals(agent.calls.load(), agent.values.load());
    return 0;
}

int watchLive(const Library &lib, int seconds, int count) {
    const int32_t *module = lib.variable<int32_t>("gCurrentModule");
    const int *protocol = lib.variable<int>("gTr104CurrProtocolType");
    AgentCounters &agent = agentCounters();
    std::printf("watching inbound queue key %d for %s%s; Ctrl-C ends\n",
                vmemu::VoiceModuleEmulator::inboundKey(*module),
                seconds > 0 ? (std::to_string(seconds) + " s").c_str() : "ever",
                count > 0 ? (" or " + std::to_string(count) + " notification(s)").c_str() : "");
    if (protocol != nullptr && *protocol != 4) {
        std::printf("(protocol type %d: the library reports changes only under SIP, 4)\n", *protocol);
    }
    std::fflush(stdout);
    const sigset_t stop = stopSignals();
    const Clock::time_point start = Clock::now();
    const Clock::time_point deadline = start + std::chrono::seconds(seconds);
    for (;;) {
        if (count > 0 && agent.calls.load() >= static_cast<unsigned>(count)) {
            break;
        }
        if (seconds > 0 && Clock::now() >= deadline) {
            break;
        }
        const timespec slice{0, 100 * 1000 * 1000};
        if (sigtimedwait(&stop, nullptr, &slice) > 0) {
            break;
        }
    }
    const double took = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf("watched %.1f s: ", took);
    printWatchTotals(agent.calls.load(), agent.values.load());
    return 0;
}

void blockStopSignals() {
    const sigset_t stop = stopSignals();
    pthread_sigmask(SIG_BLOCK, &stop, nullptr);
}

}  // namespace tr104ctl
