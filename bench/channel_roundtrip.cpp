// What a call costs through the library's exported handlers, against the voice-module emulator
// running in a process of its own, beside the raw System V round trip on the same semaphore and
// queues (take, send, blocking receive, give) in the same run:
//   - get and set round trips of several handler families: p50, p90, p99, max, ratios to raw;
//   - the poll loop's long pauses (20 ms after the fifth miss) per 10 000 calls for a voice
//     module that answers at once, after 50 us, 100 us and 1 ms;
//   - throughput with 1, 2 and 4 calling threads and with 2 calling processes;
//   - a get of every served parameter of the data-model map (a whole GetParameterValues);
//   - Tr104VoiceCfgInit's start-up time, resident memory and threads;
//   - the emulator's own service time (request read to reply queued).
// Everything runs in a private IPC namespace, entered before the emulator's process is forked.
//
//   channel_roundtrip [--markdown=FILE] [--smoke] [benchmark options]
// --smoke shortens every loop (CI runs it as a test; it asserts no timing).
#include <benchmark/benchmark.h>
#include <sched.h>
#include <signal.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <map>
#include <string>
#include <vector>

#include "emulator/voice_module_emulator.h"
#include "tr104.h"
#include "tr104/map.h"

namespace {

using Clock = std::chrono::steady_clock;
bool gSmoke = false;
constexpr double kLongPauseUs = 10000;  // a call this long slept the poll loop's 20 ms pause

double usSince(Clock::time_point t0) { return std::chrono::duration<double, std::micro>(Clock::now() - t0).count(); }

// ---- percentiles of single calls ----

struct Stats {
    double p50 = 0, p90 = 0, p99 = 0, max = 0;
    size_t n = 0;
};
std::map<std::string, Stats> gLatency;  // by case name, in microseconds
std::vector<std::string> gLatencyOrder;
std::map<std::string, double> gFigures;  // other named figures

Stats percentiles(std::vector<double> us) {
    Stats s;
    if (us.empty())
        return s;
    std::sort(us.begin(), us.end());
    auto at = [&](double q) { return us[std::min(us.size() - 1, static_cast<size_t>(q * us.size()))]; };
    s = {at(0.50), at(0.90), at(0.99), us.back(), us.size()};
    return s;
}

void keep(benchmark::State &state, const std::string &name, const std::vector<double> &us) {
    const Stats s = percentiles(us);
    if (!gLatency.count(name))
        gLatencyOrder.push_back(name);
    gLatency[name] = s;
    state.counters["p50_us"] = s.p50;
    state.counters["p99_us"] = s.p99;
    state.counters["max_us"] = s.max;
}

// ---- where the time goes: the poll loop's sleeps ----
// This program's usleep takes the library's calls (an executable's definition comes first), so
// the sleeps of the poll loop are counted exactly, with their actual length, on the threads
// that ask for it.
thread_local bool tCountSleeps = false;
std::atomic<long> gShortSleeps{0}, gLongSleeps{0}, gShortSleepNs{0};

}  // namespace

extern "C" int usleep(useconds_t us) {
    const auto t0 = Clock::now();
    timespec left{static_cast<time_t>(us / 1000000), static_cast<long>(us % 1000000) * 1000};
    while (nanosleep(&left, &left) == -1 && errno == EINTR) {
    }
    if (tCountSleeps) {
        if (us < 1000) {
            ++gShortSleeps;
            gShortSleepNs += std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - t0).count();
        } else {
            ++gLongSleeps;
        }
    }
    return 0;
}

namespace {

// ---- processes: the emulated voice module, a second caller, a fresh start-up ----

struct Command {
    char op;  // 'd' reply delay (arg us), 's' service times, 'r' run calls for arg ms, 'q' quit
    int64_t arg;
};

struct Child {
    pid_t pid = -1;
    int to = -1, from = -1;
    void send(char op, int64_t arg = 0) const {
        const Command c{op, arg};
        (void)!write(to, &c, sizeof c);
    }
    template <typename T>
    T receive() const {
        T v{};
        (void)!read(from, &v, sizeof v);
        return v;
    }
};

// Forks a child that runs body(in, out) with a pipe each way.
template <typename Body>
Child forkChild(Body body) {
    int down[2], up[2];
    if (pipe(down) != 0 || pipe(up) != 0)
        return {};
    Child c;
    c.pid = fork();
    if (c.pid == 0) {
        close(down[1]);
        close(up[0]);
        body(down[0], up[1]);
        _exit(0);
    }
    close(down[0]);
    close(up[1]);
    c.to = down[1];
    c.from = up[0];
    return c;
}

Child gServer, gSecondCaller;

int gModulePriority = 0;  // --module-priority=N: the emulated voice module at SCHED_FIFO N

void serveVoiceModule(int in, int out) {
    if (gModulePriority > 0) {
        // Its serving thread inherits the policy.
        sched_param sp{};
        sp.sched_priority = gModulePriority;
        pthread_setschedparam(pthread_self(), SCHED_FIFO, &sp);
    }
    vmemu::VoiceModuleEmulator emulator;
    emulator.setLogLimit(16);
    const char ready = emulator.start() ? 1 : 0;
    (void)!write(out, &ready, 1);
    Command c;
    while (read(in, &c, sizeof c) == sizeof c && c.op != 'q') {
        if (c.op == 'd') {
            emulator.setReplyDelay(std::chrono::microseconds(c.arg));
            (void)!write(out, &ready, 1);
        } else if (c.op == 's') {
            const std::vector<uint32_t> ns = emulator.serviceTimes();
            const uint64_t n = ns.size();
            (void)!write(out, &n, sizeof n);
            for (size_t i = 0; i < ns.size(); i += 1024) {
                (void)!write(out, ns.data() + i, std::min<size_t>(1024, ns.size() - i) * sizeof(uint32_t));
            }
            emulator.clearServiceTimes();
        }
    }
    emulator.stop();
}

void setReplyDelay(int64_t us) {
    gServer.send('d', us);
    (void)gServer.receive<char>();
}

// ---- the calls ----

int gLine1[4] = {0, 1, 1, 0};

int lineGet() {
    char value[64] = {};
    return Tr104LineEnable(0, value, gLine1);
}

// The second caller: the same get for the time asked, then the number of calls.
void callInLoop(int in, int out) {
    if (tr104VoiceMsgQueuesInit(1) != 0)
        return;
    gTr104CurrProtocolType = 4;
    Command c;
    while (read(in, &c, sizeof c) == sizeof c && c.op == 'r') {
        const auto until = Clock::now() + std::chrono::milliseconds(c.arg);
        int64_t calls = 0;
        while (Clock::now() < until)
            calls += lineGet() == 0;
        (void)!write(out, &calls, sizeof calls);
    }
}

// Start-up of a fresh process: time of Tr104VoiceCfgInit(1), resident kB and threads after it.
long statusField(const char *name) {
    FILE *f = std::fopen("/proc/self/status", "r");
    char line[256];
    long v = -1;
    while (f != nullptr && std::fgets(line, sizeof line, f) != nullptr) {
        if (std::strncmp(line, name, std::strlen(name)) == 0)
            v = std::atol(line + std::strlen(name));
    }
    if (f != nullptr)
        std::fclose(f);
    return v;
}

void measureStartup() {
    Child c = forkChild([](int, int out) {
        const double before[2] = {static_cast<double>(statusField("VmRSS:")),
                                  static_cast<double>(statusField("Threads:"))};
        std::fflush(stdout);
        const int saved = dup(1);
        const int null = open("/dev/null", O_WRONLY);  // its banner
        dup2(null, 1);
        const auto t0 = Clock::now();
        const int rc = Tr104VoiceCfgInit(1);
        const double us = usSince(t0);
        std::fflush(stdout);
        dup2(saved, 1);
        const double r[6] = {rc == 0 ? us : -1,
                             before[0],
                             before[1],
                             static_cast<double>(statusField("VmRSS:")),
                             static_cast<double>(statusField("Threads:")),
                             static_cast<double>(rc)};
        (void)!write(out, r, sizeof r);
    });
    double r[6] = {-1, 0, 0, 0, 0, -1};
    (void)!read(c.from, r, sizeof r);
    waitpid(c.pid, nullptr, 0);
    gFigures["startup_us"] = r[0];
    gFigures["rss_before_kb"] = r[1];
    gFigures["threads_before"] = r[2];
    gFigures["rss_after_kb"] = r[3];
    gFigures["threads_after"] = r[4];
}

// ---- benchmarks ----

// The exchange written directly: take the semaphore, send, block for the reply, give.
void BM_RawRoundTrip(benchmark::State &state) {
    std::vector<double> us;
    Tr104WireMsg out{}, in{};
    out.mtype = gCurrentModule;
    const uint32_t cmd = TR104_GET_PORT_STATUS_ID;
    std::memcpy(out.text, &cmd, sizeof(cmd));
    out.text[TR104_TEXT_CFG_OFFSET] = 1;
    sembuf take{0, -1, SEM_UNDO}, give{0, 1, SEM_UNDO};
    for (auto _ : state) {
        const auto t0 = Clock::now();
        semop(gTr104RcvMsgQueueSemId, &take, 1);
        msgsnd(gTr104SndMsgQueueId, &out, TR104_MSG_TEXT_LEN, 0);
        const ssize_t n = msgrcv(gTr104RcvOutMsgQueueId, &in, TR104_MSG_TEXT_LEN, 0, MSG_NOERROR);
        semop(gTr104RcvMsgQueueSemId, &give, 1);
        us.push_back(usSince(t0));
        if (n <= 0) {
            state.SkipWithError("raw receive failed");
            break;
        }
    }
    keep(state, "raw round trip", us);
}

struct HandlerCase {
    const char *name;
    int (*call)();
};

int gPort = 2944;
const HandlerCase kCases[] = {
    {"line get (Tr104LineEnable)", &lineGet},
    {"profile get (Tr104TelEvent2833PayloadType)",
     [] {
         int v = 0;
         return Tr104TelEvent2833PayloadType(0, &v);
     }},
    {"masked H.248 block get (Tr104PrimaryMGCPortH248)",
     [] {
         int v = 0;
         return Tr104PrimaryMGCPortH248(0, &v);
     }},
    {"statistics get (Tr104LineSendRtpPackets)",
     [] {
         int v = 0;
         return Tr104LineSendRtpPackets(0, &v, gLine1);
     }},
    {"masked H.248 block set (Tr104PrimaryMGCPortH248)", [] { return Tr104PrimaryMGCPortH248(1, &gPort); }},
    // The address waits in its slot of the deferred buffer; the port completes the group, which
    // goes out as one write.
    {"staged set pair (Tr104SipProxyServerIp + Port)",
     [] {
         char address[66] = "192.0.2.10";
         int loc[4] = {0, 1, 0, 0};
         const int rc = Tr104SipProxyServerIp(1, address, loc);
         return rc != 0 ? rc : Tr104SipProxyServerPort(1, &gPort, loc);
     }},
};

void BM_Handler(benchmark::State &state) {
    const HandlerCase &c = kCases[state.range(0)];
    state.SetLabel(c.name);
    std::vector<double> us;
    gShortSleeps = gLongSleeps = gShortSleepNs = 0;
    tCountSleeps = true;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        const int rc = c.call();
        us.push_back(usSince(t0));
        if (rc != 0) {
            state.SkipWithError("the handler failed");
            break;
        }
    }
    tCountSleeps = false;
    keep(state, c.name, us);
    gFigures[std::string("short sleeps@") + c.name] = static_cast<double>(gShortSleeps);
    gFigures[std::string("long sleeps@") + c.name] = static_cast<double>(gLongSleeps);
    gFigures[std::string("short sleep us@") + c.name] = gShortSleeps > 0 ? gShortSleepNs / 1000.0 / gShortSleeps : 0;
}

// Tr104VoiceCfgInit adopts its caller as the runtime's root task, at SCHED_FIFO 80; other threads
// of the agent stay at SCHED_OTHER.  The benchmarks call from SCHED_OTHER threads unless asked.
void setCallerRealTime(bool on) {
    sched_param sp{};
    sp.sched_priority = on ? 80 : 0;
    pthread_setschedparam(pthread_self(), on ? SCHED_FIFO : SCHED_OTHER, &sp);
}

std::string pauseKey(int64_t delay, bool realTime) { return std::to_string(delay) + (realTime ? " rt" : ""); }

// Calls of a voice module answering after range(0) us: how many slept the 20 ms pause; range(1)
// 1 calls at SCHED_FIFO 80.
void BM_LongPauses(benchmark::State &state) {
    const int64_t delay = state.range(0);
    const bool realTime = state.range(1) != 0;
    setReplyDelay(delay);
    setCallerRealTime(realTime);
    const int limit = gSmoke ? 50 : 10000;
    const double budgetUs = (gSmoke ? 0.3 : 5.0) * 1e6;
    std::vector<double> us;
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < limit && usSince(start) < budgetUs; ++i) {
            const auto t0 = Clock::now();
            if (lineGet() != 0)
                state.SkipWithError("the handler failed");
            us.push_back(usSince(t0));
        }
    }
    setCallerRealTime(false);
    setReplyDelay(0);
    const double pauses =
        static_cast<double>(std::count_if(us.begin(), us.end(), [](double t) { return t > kLongPauseUs; }));
    const double per10k = us.empty() ? 0 : pauses * 10000.0 / static_cast<double>(us.size());
    state.counters["pauses_per_10k"] = per10k;
    state.counters["calls"] = static_cast<double>(us.size());
    keep(state, "reply after " + pauseKey(delay, realTime), us);
    gFigures["pauses_per_10k@" + pauseKey(delay, realTime)] = per10k;
}

void BM_ThroughputThreads(benchmark::State &state) {
    if (state.thread_index() == 0)
        gLongSleeps = 0;
    tCountSleeps = true;
    for (auto _ : state) {
        if (lineGet() != 0)
            state.SkipWithError("the handler failed");
    }
    tCountSleeps = false;
    state.SetItemsProcessed(state.iterations());
    if (state.thread_index() == 0) {
        gFigures["long sleeps@" + std::to_string(state.threads()) + " threads"] = static_cast<double>(gLongSleeps);
    }
}

void BM_ThroughputTwoProcesses(benchmark::State &state) {
    const int64_t ms = gSmoke ? 100 : 1000;
    for (auto _ : state) {
        gSecondCaller.send('r', ms);
        const auto until = Clock::now() + std::chrono::milliseconds(ms);
        int64_t calls = 0;
        while (Clock::now() < until)
            calls += lineGet() == 0;
        const int64_t other = gSecondCaller.receive<int64_t>();
        const double rate = static_cast<double>(calls + other) * 1000.0 / static_cast<double>(ms);
        state.counters["calls_per_s"] = rate;
        state.counters["share_of_second"] = static_cast<double>(other) / static_cast<double>(calls + other);
        gFigures["calls_per_s@2 processes"] = rate;
    }
}

// The concrete paths of a pattern on a two-port device: one service and profile, lines and
// physical interfaces 1..2, codec entries 1..5, sessions 1..2.
void expand(const std::string &pattern, size_t from, const std::string &done, std::vector<std::string> *out) {
    const size_t at = pattern.find("{i}", from);
    if (at == std::string::npos) {
        out->push_back(done + pattern.substr(from));
        return;
    }
    const std::string head = pattern.substr(from, at - from);
    const size_t dot = head.find_last_of('.', head.size() - 2);
    const std::string object = head.substr(dot == std::string::npos ? 0 : dot + 1, head.size() - 1 - (dot + 1));
    const int high = tr104MapInstanceCount(object.c_str());
    for (int i = 1; i <= high; ++i)
        expand(pattern, at + 3, done + head + std::to_string(i), out);
}

// A get of every readable parameter the map serves, as a whole GetParameterValues does; the
// gets that block their caller by design (the end of a line test) and the other protocol's
// parameters are left out.
void BM_Dump(benchmark::State &state) {
    std::vector<std::pair<const Tr104MapEntry *, std::vector<int>>> calls;
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        const Tr104MapEntry &e = gTr104Map[i];
        if (e.fn == nullptr || std::strchr(e.access, 'R') == nullptr || e.blocksCaller != 0 || e.protocol == 2) {
            continue;
        }
        std::vector<std::string> paths;
        expand(e.path, 0, "", &paths);
        for (const std::string &p : paths) {
            const Tr104MapEntry *entry = nullptr;
            std::vector<int> locate(4, 0);
            if (tr104MapLookup(p.c_str(), &entry, locate.data(), nullptr, 0) == TR104_MAP_SERVED) {
                calls.emplace_back(entry, locate);
            }
        }
    }
    const bool realTime = state.range(0) != 0;
    const std::string at = realTime ? "@rt" : "";
    setCallerRealTime(realTime);
    int failed = 0;
    for (auto _ : state) {
        failed = 0;
        const auto t0 = Clock::now();
        for (auto &[e, locate] : calls) {
            alignas(8) char value[4096] = {};
            const int rc = e->arity == 2
                               ? reinterpret_cast<int (*)(int, void *)>(e->fn)(0, value)
                               : reinterpret_cast<int (*)(int, void *, int *)>(e->fn)(0, value, locate.data());
            failed += rc != 0;
        }
        const double s = usSince(t0) / 1e6;
        state.counters["calls"] = static_cast<double>(calls.size());
        state.counters["failed"] = failed;
        state.counters["wall_s"] = s;
        state.counters["calls_per_s"] = static_cast<double>(calls.size()) / s;
        gFigures["dump_calls"] = static_cast<double>(calls.size());
        gFigures["dump_failed"] = failed;
        gFigures["dump_s" + at] = s;
    }
    setCallerRealTime(false);
}

void registerAll() {
    benchmark::RegisterBenchmark("BM_RawRoundTrip", BM_RawRoundTrip)->MinTime(gSmoke ? 0.05 : 2.0)->UseRealTime();
    auto *h = benchmark::RegisterBenchmark("BM_Handler", BM_Handler)->MinTime(gSmoke ? 0.05 : 2.0)->UseRealTime();
    for (size_t i = 0; i < std::size(kCases); ++i)
        h->Arg(static_cast<int64_t>(i));
    benchmark::RegisterBenchmark("BM_LongPauses", BM_LongPauses)
        ->ArgsProduct({{0, 50, 100, 1000}, {0, 1}})
        ->Iterations(1);
    benchmark::RegisterBenchmark("BM_ThroughputThreads", BM_ThroughputThreads)
        ->Threads(1)
        ->Threads(2)
        ->Threads(4)
        ->MinTime(gSmoke ? 0.05 : 1.0)
        ->UseRealTime();
    benchmark::RegisterBenchmark("BM_ThroughputTwoProcesses", BM_ThroughputTwoProcesses)->Iterations(1);
    benchmark::RegisterBenchmark("BM_Dump", BM_Dump)->Arg(0)->Iterations(gSmoke ? 1 : 3);
    if (!gSmoke)
        benchmark::RegisterBenchmark("BM_Dump", BM_Dump)->Arg(1)->Iterations(1);
}

// Keeps the calls-per-second figure of the threaded runs.
class Reporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run> &runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &r : runs) {
            auto it = r.counters.find("items_per_second");
            if (r.run_name.function_name == "BM_ThroughputThreads" && it != r.counters.end()) {
                gFigures["calls_per_s@" + std::to_string(r.threads) + " threads"] = it->second;
            }
        }
    }
};

// ---- the Markdown section ----

const char *verdict(bool met) { return met ? "met" : "**missed**"; }

void writeMarkdown(FILE *md, const Stats &service) {
    const Stats raw = gLatency["raw round trip"];
    if (gModulePriority > 0) {
        std::fprintf(md, "## Channel: handlers against the emulator in a separate process at SCHED_FIFO %d\n\n",
                     gModulePriority);
    } else {
        std::fprintf(md, "## Channel: handlers against the emulator in a separate process at SCHED_OTHER\n\n");
    }
    std::fprintf(md,
                 "| call | calls | p50 us | p90 us | p99 us | max us | p50 / raw | p99 / raw |\n"
                 "|---|---:|---:|---:|---:|---:|---:|---:|\n");
    for (const std::string &name : gLatencyOrder) {
        if (name.rfind("reply after", 0) == 0)
            continue;
        const Stats &s = gLatency[name];
        std::fprintf(md, "| %s | %zu | %.1f | %.1f | %.1f | %.1f | %.2f | %.2f |\n", name.c_str(), s.n, s.p50, s.p90,
                     s.p99, s.max, raw.p50 > 0 ? s.p50 / raw.p50 : 0, raw.p99 > 0 ? s.p99 / raw.p99 : 0);
    }
    std::fprintf(md, "\nSets wait for no reply (they send and give the lock back), hence below 1x.\n\n");
    std::fprintf(
        md,
        "Where the time goes: a get polls its reply queue; one that finds no reply at its first poll "
        "sleeps \"1 us\" (a SCHED_OTHER thread's timer slack makes it longer) before polling again, "
        "and the 20 ms pause after the fifth miss; the raw round trip blocks in msgrcv and is woken as "
        "the reply is queued. The poll loop's sleeps, counted on the calling thread:\n\n"
        "| get | calls | slept after the first miss | actual sleep us | 20 ms pauses |\n|---|---:|---:|---:|---:|\n");
    for (const HandlerCase &c : kCases) {
        const double n = static_cast<double>(gLatency[c.name].n),
                     shortSleeps = gFigures[std::string("short sleeps@") + c.name];
        if (std::strstr(c.name, " get ") == nullptr || n == 0)
            continue;
        std::fprintf(md, "| %s | %.0f | %.0f (%.1f%%) | %.1f | %.0f |\n", c.name, n, shortSleeps, 100 * shortSleeps / n,
                     gFigures[std::string("short sleep us@") + c.name], gFigures[std::string("long sleeps@") + c.name]);
    }
    std::fprintf(md, "\n");
    std::fprintf(md, "### Long pauses of the poll loop (a call over %.0f ms slept the 20 ms pause)\n\n",
                 kLongPauseUs / 1000);
    std::fprintf(md,
                 "| voice module answers | caller | calls | p50 us | p99 us | long pauses per 10 000 calls |\n"
                 "|---|---|---:|---:|---:|---:|\n");
    for (bool rt : {false, true}) {
        for (int d : {0, 50, 100, 1000}) {
            const Stats &s = gLatency["reply after " + pauseKey(d, rt)];
            std::fprintf(md, "| %s | %s | %zu | %.1f | %.1f | %.0f |\n",
                         d == 0 ? "at once" : ("after " + std::to_string(d) + " us").c_str(),
                         rt ? "SCHED_FIFO 80" : "SCHED_OTHER", s.n, s.p50, s.p99,
                         gFigures["pauses_per_10k@" + pauseKey(d, rt)]);
        }
    }
    std::fprintf(md,
                 "\nA caller at SCHED_FIFO 80 (the thread that ran Tr104VoiceCfgInit) has no timer slack: its \"1 us\" "
                 "sleep lasts a few microseconds and its next four polls follow at once, so unless the reply is "
                 "queued within those microseconds (the voice module woken and done, often on the other core) the "
                 "fifth miss sleeps 20 ms. A SCHED_OTHER caller's first sleep lasts its timer slack (about 50 us), "
                 "long enough for a voice module that answers at once. Both are the poll loop's own timing.\n");
    if (!gFigures.count("dump_s"))
        return;  // the other benchmarks were filtered out
    std::fprintf(md,
                 "\n### Throughput (line get, one semaphore serialises every caller)\n\n"
                 "More callers than cores compete with the voice module for the processor: a reply that comes "
                 "after the first poll's sleep and four more polls costs a 20 ms pause.\n\n"
                 "| callers | calls per second | 20 ms pauses |\n|---|---:|---:|\n");
    for (const char *k : {"1 threads", "2 threads", "4 threads", "2 processes"}) {
        const std::string pauses = std::string("long sleeps@") + k;
        std::fprintf(md, "| %s | %.0f | %s |\n", std::strcmp(k, "1 threads") == 0 ? "1 thread" : k,
                     gFigures[std::string("calls_per_s@") + k],
                     gFigures.count(pauses) ? std::to_string(static_cast<long>(gFigures[pauses])).c_str() : "-");
    }
    std::fprintf(md, "\n### Whole-tree dump (a get of every served parameter, profile 1, lines and ports 1..2)\n\n");
    std::fprintf(md, "%.0f calls (%.0f refused or failed) in %.3f s: %.0f calls per second.\n\n",
                 gFigures["dump_calls"], gFigures["dump_failed"], gFigures["dump_s"],
                 gFigures["dump_s"] > 0 ? gFigures["dump_calls"] / gFigures["dump_s"] : 0);
    if (gFigures.count("dump_s@rt")) {
        std::fprintf(md, "From a thread at SCHED_FIFO 80 (as the thread that ran Tr104VoiceCfgInit): %.3f s.\n\n",
                     gFigures["dump_s@rt"]);
    }
    std::fprintf(md, "### Start-up of a fresh process (Tr104VoiceCfgInit(1))\n\n");
    std::fprintf(
        md, "%.0f us; resident memory %.0f kB before, %.0f kB after (+%.0f kB); threads %.0f before, %.0f after.\n\n",
        gFigures["startup_us"], gFigures["rss_before_kb"], gFigures["rss_after_kb"],
        gFigures["rss_after_kb"] - gFigures["rss_before_kb"], gFigures["threads_before"], gFigures["threads_after"]);
    std::fprintf(md, "### Emulator service time (request read to reply queued, %zu requests)\n\n", service.n);
    std::fprintf(md, "p50 %.1f us, p90 %.1f us, p99 %.1f us, max %.1f us.\n\n", service.p50, service.p90, service.p99,
                 service.max);
    const Stats &get = gLatency[kCases[0].name];
    std::fprintf(md, "### Goals\n\n| goal | measured | |\n|---|---|---|\n");
    std::fprintf(md, "| handler get p50 <= 1.2x raw | %.2fx | %s |\n", get.p50 / raw.p50,
                 verdict(get.p50 <= 1.2 * raw.p50));
    std::fprintf(md, "| handler get p99 <= 2x raw | %.2fx | %s |\n", get.p99 / raw.p99,
                 verdict(get.p99 <= 2 * raw.p99));
    std::fprintf(md, "| long pauses <= 1 per 10 000 calls, answer at once | %.1f (SCHED_FIFO caller: %.0f) | %s |\n",
                 gFigures["pauses_per_10k@0"], gFigures["pauses_per_10k@0 rt"],
                 verdict(gFigures["pauses_per_10k@0"] <= 1));
    std::fprintf(md, "| whole-tree dump < 1 s | %.3f s | %s |\n\n", gFigures["dump_s"],
                 verdict(gFigures["dump_s"] < 1));
}

}  // namespace

int main(int argc, char **argv) {
    const char *markdown = nullptr;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--markdown=", 11) == 0) {
            markdown = argv[i] + 11;
        } else if (std::strncmp(argv[i], "--module-priority=", 18) == 0) {
            gModulePriority = std::atoi(argv[i] + 18);
        } else if (std::strcmp(argv[i], "--smoke") == 0) {
            gSmoke = true;
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    if (unshare(CLONE_NEWIPC) != 0) {
        std::perror("unshare(CLONE_NEWIPC) (run as root)");
        return 1;
    }
    measureStartup();
    // Processes are forked while this one still has a single thread.
    gServer = forkChild(serveVoiceModule);
    gSecondCaller = forkChild(callInLoop);
    if (gServer.receive<char>() != 1 || Tr104VoiceCfgInit(1) != 0) {
        std::fprintf(stderr, "cannot open the channel\n");
        return 1;
    }
    gTr104CurrProtocolType = 4;
    setCallerRealTime(false);
    benchmark::Initialize(&argc, argv);
    registerAll();
    Reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    gServer.send('s');
    std::vector<uint32_t> ns(gServer.receive<uint64_t>());
    for (size_t got = 0; got < ns.size() * sizeof(uint32_t);) {
        const ssize_t n =
            read(gServer.from, reinterpret_cast<char *>(ns.data()) + got, ns.size() * sizeof(uint32_t) - got);
        if (n <= 0)
            break;
        got += static_cast<size_t>(n);
    }
    std::vector<double> serviceUs(ns.begin(), ns.end());
    for (double &v : serviceUs)
        v /= 1000.0;
    const Stats service = percentiles(serviceUs);
    gSecondCaller.send('q');
    gServer.send('q');
    waitpid(gSecondCaller.pid, nullptr, 0);
    waitpid(gServer.pid, nullptr, 0);

    writeMarkdown(stdout, service);
    if (markdown != nullptr) {
        if (FILE *md = std::fopen(markdown, "w")) {
            writeMarkdown(md, service);
            std::fclose(md);
        }
    }
    return 0;
}
