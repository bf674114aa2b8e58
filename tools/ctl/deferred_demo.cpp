// The deferred buffer's section of the demo.
#include "ctl/deferred_demo.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "ctl/invoke.h"
#include "ctl/steps.h"
#include "tr104/sip_servers.h"

namespace tr104ctl {

namespace {

// Byte offsets of the server configuration record.
constexpr size_t kServerUseIpOffset = 40;
constexpr size_t kServerFlagOffset = 44;
constexpr size_t kServerAddrOffset = 48;
constexpr size_t kServerPortOffset = 118;

bool isServerCommand(uint32_t cmd) { return cmd >= SET_OUT_BOUND_CFG_ID && cmd <= GET_PROXY_CFG_ID; }
bool isServerWrite(uint32_t cmd) {
    return cmd == SET_OUT_BOUND_CFG_ID || cmd == SET_REGISTRAR_CFG_ID || cmd == SET_PROXY_CFG_ID;
}

// One request as the demo shows it: its time from `origin`, its name and, for a server write,
// the record it carries.
void printTimedRequest(const vmemu::VoiceModuleEmulator &emulator, const TimedRequests::Entry &e,
                       Clock::time_point origin) {
    const double offset = std::chrono::duration<double>(e.at - origin).count();
    std::string line = emulator.describe(e.request);
    if (isServerCommand(e.request.cmd) && isServerWrite(e.request.cmd)) {
        char fields[160];
        std::snprintf(fields, sizeof(fields), ": \"%s\" port %u, nUseIpOrHostname %u",
                      e.request.text_at(kServerAddrOffset, TR104_SERVER_ADDR_LEN).c_str(),
                      e.request.word<uint16_t>(kServerPortOffset), e.request.word<uint32_t>(kServerUseIpOffset));
        line += fields;
    }
    std::printf("    %+7.3f s  %s\n", offset, line.c_str());
}

// Sets one staged parameter and shows its slot afterwards.
bool stageValue(const Library &lib, const char *handler, const char *value, int slot, const char *note) {
    CallRequest req;
    req.handler = handler;
    req.set = true;
    req.value = value;
    const CallResult r = callHandler(lib, req);
    char what[96];
    std::snprintf(what, sizeof(what), "set %s = \"%s\"", handler, value);
    const SlotState s = readSlot(lib, slot);
    char state[96];
    if (s.idle()) {
        std::snprintf(state, sizeof(state), "slot %d idle: group applied", slot);
    } else {
        std::snprintf(state, sizeof(state), "slot %d collecting: cfgFlag 0x%x, timer %s", slot, s.cfgFlag,
                      s.timerStarted ? "running" : "not started");
    }
    std::printf("  %-50s -> %s   # %s; %s\n", what, r.called ? std::to_string(r.rc).c_str() : r.message.c_str(), state,
                note);
    std::fflush(stdout);
    return r.called && r.rc == 0;
}

// The requests that arrived since `mark` must be exactly `wanted` (command ids, in order).
bool expectRequests(const vmemu::VoiceModuleEmulator &emulator, const TimedRequests &log, size_t mark,
                    Clock::time_point origin, std::initializer_list<uint32_t> wanted, Millis timeout) {
    const bool arrived = log.waitFor(mark + wanted.size(), timeout);
    const std::vector<TimedRequests::Entry> got = log.since(mark);
    std::printf("  the voice module received:\n");
    for (const TimedRequests::Entry &e : got) {
        printTimedRequest(emulator, e, origin);
    }
    bool same = arrived && got.size() == wanted.size();
    for (size_t i = 0; same && i < got.size(); ++i) {
        same = got[i].request.cmd == wanted.begin()[i];
    }
    if (!same) {
        std::printf("  UNEXPECTED: wanted %zu request(s) within %lld ms\n", wanted.size(),
                    static_cast<long long>(timeout.count()));
    }
    return same;
}

}  // namespace

int runDeferredDemo(Context &context, const TimedRequests &log) {
    const Library &lib = context.lib;
    vmemu::VoiceModuleEmulator &emulator = *context.emulator;
    const int *protocol = lib.variable<int>("gTr104CurrProtocolType");
    if (protocol == nullptr || *protocol != 4) {
        std::printf("\n== deferred buffer: skipped, the server parameters belong to SIP (protocol type %d)\n",
                    protocol != nullptr ? *protocol : 0);
        return 0;
    }
    int problems = 0;
    const int timeoutMs = deferredTimeoutMs(lib);
    const Millis generous(timeoutMs + 5000);

    std::printf("\n== deferred buffer: the proxy's address, then its port -> one write at the second call\n");
    size_t mark = log.size();
    Clock::time_point origin = Clock::now();
    problems += !stageValue(lib, "Tr104SipProxyServerIp", "10.20.30.40", 3, "nothing sent yet");
    problems += !stageValue(lib, "Tr104SipProxyServerPort", "5062", 3, "sent at once, timer cancelled");
    problems += !expectRequests(emulator, log, mark, origin, {SET_PROXY_CFG_ID}, Millis(5000));

    std::printf("\n== deferred buffer: only the registrar's port -> applied by the slot's timer after %d ms\n",
                timeoutMs);
    char current[TR104_SERVER_RECORD_LEN] = {};
    const uint32_t primary = TR104_SERVER_PRIMARY;
    const uint16_t port = 5060;
    std::memcpy(current + kServerFlagOffset, &primary, sizeof(primary));
    std::strcpy(current + kServerAddrOffset, "registrar.example.net");
    std::memcpy(current + kServerPortOffset, &port, sizeof(port));
    emulator.put("sip registrar server", current, sizeof(current));
    std::printf("  the voice module holds the primary registrar \"registrar.example.net\" port 5060\n");
    mark = log.size();
    origin = Clock::now();
    problems += !stageValue(lib, "Tr104SipRegistrarServerPort", "5070", 1, "nothing sent yet");
    std::printf("  waiting for slot 1's timer (gTr104CfgParamTimeout = %d ms) ...\n", timeoutMs);
    std::fflush(stdout);
    problems += !expectRequests(emulator, log, mark, origin, {GET_REGISTRAR_CFG_ID, SET_REGISTRAR_CFG_ID}, generous);
    problems += !waitSlotIdle(lib, 1, origin, generous).has_value();
    static const DemoStep kReadBack[] = {
        {"Tr104SipRegistrarServerIp", false, nullptr, 0, "the address was kept"},
        {"Tr104SipRegistrarServerPort", false, nullptr, 0, "the new port"},
    };
    problems += runSteps(lib, kReadBack, std::size(kReadBack));

    const size_t proxyWrites = emulator.requestsFor(SET_PROXY_CFG_ID).size();
    std::printf("  proxy writes in all: %zu%s\n", proxyWrites,
                proxyWrites == 1 ? " (its timer was cancelled when its group completed)" : "  UNEXPECTED");
    problems += proxyWrites != 1;
    std::fflush(stdout);
    return problems;
}

}  // namespace tr104ctl
