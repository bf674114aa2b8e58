// Runtime cost against plain POSIX code: a task-to-task semGive/semTake ping-pong, the same
// give and take in one thread, a msgQSend/msgQReceive stream and the firing of a 50 ms watchdog,
// each beside the same pattern written with a pthread mutex and condition variables.  Both partners of a pair run at SCHED_FIFO 80 (the runtime raises the
// benchmark thread to 80 when it starts a task).  Prints the runtime/pthread time ratios.
#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sched.h>
#include <string.h>
#include <time.h>

#include <cerrno>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <vector>
#include <cstdio>
#include <map>
#include <string>

#include "v2lin/v2lin.h"

namespace {

constexpr int kPartnerPriority = 80;
constexpr int kQueueSlots = 16;
struct Payload {
    uint32_t words[4];
};

// ---- the runtime ----

SEM_ID gPing, gPong;
std::atomic<int> gStop{0};

int32_t pongTask(int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t) {
    for (;;) {
        semTake(gPing, V2LIN_WAIT_FOREVER);
        if (gStop.load())
            break;
        semGive(gPong);
    }
    return 0;
}

void BM_RuntimeSemPingPong(benchmark::State &state) {
    gPing = semBCreate(0, 0);
    gPong = semBCreate(0, 0);
    gStop = 0;
    int32_t id = taskSpawn("tPong", kPartnerPriority, 0, 0, pongTask, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    for (auto _ : state) {
        semGive(gPing);
        semTake(gPong, V2LIN_WAIT_FOREVER);
    }
    gStop = 1;
    semGive(gPing);
    while (taskIdVerify(id) == 0)
        taskDelay(1);
    semDelete(gPing);
    semDelete(gPong);
    state.SetItemsProcessed(state.iterations() * 2);
}

// The bookkeeping of one give and one take, without a second thread.
void BM_RuntimeSemGiveTake(benchmark::State &state) {
    SEM_ID s = semCCreate(0, 0);
    for (auto _ : state) {
        semGive(s);
        semTake(s, V2LIN_WAIT_FOREVER);
    }
    semDelete(s);
}

MSG_Q_ID gQueue;

int32_t producerTask(int32_t count, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t) {
    Payload p{};
    for (int32_t i = 0; i < count; i++) {
        p.words[0] = static_cast<uint32_t>(i);
        msgQSend(gQueue, &p, sizeof p, V2LIN_WAIT_FOREVER, V2LIN_MSG_PRI_NORMAL);
    }
    return 0;
}

void BM_RuntimeMsgQStream(benchmark::State &state) {
    gQueue = msgQCreate(kQueueSlots, sizeof(Payload), 0);
    int32_t id = taskSpawn("tProducer", kPartnerPriority, 0, 0, producerTask,
                           static_cast<int32_t>(state.max_iterations), 0, 0, 0, 0, 0, 0, 0, 0, 0);
    Payload p;
    for (auto _ : state) {
        msgQReceive(gQueue, &p, sizeof p, V2LIN_WAIT_FOREVER);
        benchmark::DoNotOptimize(p);
    }
    while (taskIdVerify(id) == 0)
        taskDelay(1);
    msgQDelete(gQueue);
    state.SetItemsProcessed(state.iterations());
}

// ---- the same patterns with a mutex and condition variables ----

struct Flag {
    pthread_mutex_t mu = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t cond = PTHREAD_COND_INITIALIZER;
    int tokens = 0;
    void give() {
        pthread_mutex_lock(&mu);
        tokens++;
        pthread_cond_broadcast(&cond);
        pthread_mutex_unlock(&mu);
    }
    void take() {
        pthread_mutex_lock(&mu);
        while (tokens < 1)
            pthread_cond_wait(&cond, &mu);
        tokens--;
        pthread_mutex_unlock(&mu);
    }
};

void BM_PthreadGiveTake(benchmark::State &state) {
    Flag f;
    for (auto _ : state) {
        f.give();
        f.take();
    }
}

struct Ring {
    pthread_mutex_t mu = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t notEmpty = PTHREAD_COND_INITIALIZER;
    pthread_cond_t notFull = PTHREAD_COND_INITIALIZER;
    Payload slots[kQueueSlots];
    int head = 0, count = 0;
    void put(const Payload &p) {
        pthread_mutex_lock(&mu);
        while (count == kQueueSlots)
            pthread_cond_wait(&notFull, &mu);
        memcpy(&slots[(head + count) % kQueueSlots], &p, sizeof p);
        count++;
        pthread_cond_broadcast(&notEmpty);
        pthread_mutex_unlock(&mu);
    }
    void get(Payload *p) {
        pthread_mutex_lock(&mu);
        while (count == 0)
            pthread_cond_wait(&notEmpty, &mu);
        memcpy(p, &slots[head], sizeof *p);
        head = (head + 1) % kQueueSlots;
        count--;
        pthread_cond_broadcast(&notFull);
        pthread_mutex_unlock(&mu);
    }
};

// A partner thread with the same real-time scheduling as the runtime's task (inherited when the
// privilege is missing).
pthread_t startPartner(void *(*body)(void *), void *arg) {
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setschedpolicy(&attr, SCHED_FIFO);
    struct sched_param sp {};
    sp.sched_priority = kPartnerPriority;
    pthread_attr_setschedparam(&attr, &sp);
    pthread_attr_setinheritsched(&attr, PTHREAD_EXPLICIT_SCHED);
    pthread_t th;
    if (pthread_create(&th, &attr, body, arg) != 0)
        pthread_create(&th, nullptr, body, arg);
    pthread_attr_destroy(&attr);
    return th;
}

struct PingPong {
    Flag ping, pong;
    std::atomic<int> stop{0};
};

void *pongThread(void *arg) {
    PingPong *pp = static_cast<PingPong *>(arg);
    for (;;) {
        pp->ping.take();
        if (pp->stop.load())
            break;
        pp->pong.give();
    }
    return nullptr;
}

void BM_PthreadPingPong(benchmark::State &state) {
    PingPong pp;
    pthread_t th = startPartner(pongThread, &pp);
    for (auto _ : state) {
        pp.ping.give();
        pp.pong.take();
    }
    pp.stop = 1;
    pp.ping.give();
    pthread_join(th, nullptr);
    state.SetItemsProcessed(state.iterations() * 2);
}

struct Stream {
    Ring ring;
    int64_t count = 0;
};

void *producerThread(void *arg) {
    Stream *s = static_cast<Stream *>(arg);
    Payload p{};
    for (int64_t i = 0; i < s->count; i++) {
        p.words[0] = static_cast<uint32_t>(i);
        s->ring.put(p);
    }
    return nullptr;
}

void BM_PthreadStream(benchmark::State &state) {
    Stream s;
    s.count = static_cast<int64_t>(state.max_iterations);
    pthread_t th = startPartner(producerThread, &s);
    Payload p;
    for (auto _ : state) {
        s.ring.get(&p);
        benchmark::DoNotOptimize(p);
    }
    pthread_join(th, nullptr);
    state.SetItemsProcessed(state.iterations());
}

// ---- a 50 ms one-shot timer: the actual delay, from start to the handler running ----

using Clock = std::chrono::steady_clock;
constexpr int kTimerMs = 50;
Clock::time_point gArmed;
double gFiredMs = 0;
Flag gFired;
std::map<std::string, std::vector<double>> gTimerDelays;  // ms, by benchmark

void watchdogFired(int32_t) {
    gFiredMs = std::chrono::duration<double, std::milli>(Clock::now() - gArmed).count();
    gFired.give();
}

void keepDelays(benchmark::State &state, const char *name, std::vector<double> ms) {
    std::sort(ms.begin(), ms.end());
    if (ms.empty())
        return;
    state.counters["min_ms"] = ms.front();
    state.counters["p50_ms"] = ms[ms.size() / 2];
    state.counters["max_ms"] = ms.back();
    gTimerDelays[name] = ms;
}

void BM_RuntimeWatchdog50ms(benchmark::State &state) {
    WDOG_ID wd = wdCreate();
    std::vector<double> ms;
    for (auto _ : state) {
        gArmed = Clock::now();
        wdStart(wd, kTimerMs, watchdogFired, 0);
        gFired.take();
        ms.push_back(gFiredMs);
    }
    wdDelete(wd);
    keepDelays(state, "watchdog", ms);
}

// The same with a thread that waits on a condition variable until the deadline.
struct OneShot {
    Flag armed;
    std::atomic<int> stop{0};
};

void *timerThread(void *arg) {
    OneShot *t = static_cast<OneShot *>(arg);
    for (;;) {
        t->armed.take();
        if (t->stop.load())
            break;
        timespec due;
        clock_gettime(CLOCK_REALTIME, &due);
        due.tv_nsec += kTimerMs * 1000000L;
        due.tv_sec += due.tv_nsec / 1000000000L;
        due.tv_nsec %= 1000000000L;
        Flag never;
        pthread_mutex_lock(&never.mu);
        while (pthread_cond_timedwait(&never.cond, &never.mu, &due) != ETIMEDOUT) {
        }
        pthread_mutex_unlock(&never.mu);
        watchdogFired(0);
    }
    return nullptr;
}

void BM_PthreadTimer50ms(benchmark::State &state) {
    OneShot t;
    pthread_t th = startPartner(timerThread, &t);
    std::vector<double> ms;
    for (auto _ : state) {
        gArmed = Clock::now();
        t.armed.give();
        gFired.take();
        ms.push_back(gFiredMs);
    }
    t.stop = 1;
    t.armed.give();
    pthread_join(th, nullptr);
    keepDelays(state, "pthread", ms);
}

BENCHMARK(BM_RuntimeSemPingPong)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_PthreadPingPong)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_RuntimeSemGiveTake)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_PthreadGiveTake)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_RuntimeMsgQStream)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_PthreadStream)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_RuntimeWatchdog50ms)->UseRealTime()->Iterations(20);
BENCHMARK(BM_PthreadTimer50ms)->UseRealTime()->Iterations(20);

// Console output plus the time per iteration of every run, for the ratios.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run> &runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &r : runs)
            if (r.iterations > 0)
                nsPerIteration[r.run_name.function_name] = r.GetAdjustedRealTime();
    }
    std::map<std::string, double> nsPerIteration;
};

}  // namespace

int main(int argc, char **argv) {
    // --markdown=FILE: also write the comparison as a Markdown section.
    const char *markdown = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (strncmp(argv[i], "--markdown=", 11) == 0) {
            markdown = argv[i] + 11;
            for (int j = i; j < argc; ++j)
                argv[j] = argv[j + 1];
            --argc;
            break;
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    v2lin_init();
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const struct {
        const char *what;
        const char *runtime;
        const char *plain;
        double goal;  // highest runtime/pthread time ratio wanted (0: none)
    } pairs[] = {
        {"semGive/semTake ping-pong", "BM_RuntimeSemPingPong", "BM_PthreadPingPong", 1.5},
        {"semGive+semTake in one thread", "BM_RuntimeSemGiveTake", "BM_PthreadGiveTake", 0},
        // Throughput at least 0.7 of the pthread ring: time per message at most 1/0.7.
        {"msgQSend/msgQReceive stream", "BM_RuntimeMsgQStream", "BM_PthreadStream", 1 / 0.7},
    };
    FILE *md = markdown != nullptr ? fopen(markdown, "w") : nullptr;
    if (md != nullptr) {
        fprintf(md,
                "## Runtime primitives beside pthread equivalents (both partners at SCHED_FIFO 80)\n\n"
                "| pattern | runtime ns | pthread ns | runtime / pthread time | goal |\n|---|---:|---:|---:|---|\n");
    }
    for (const auto &p : pairs) {
        auto a = reporter.nsPerIteration.find(p.runtime), b = reporter.nsPerIteration.find(p.plain);
        if (a == reporter.nsPerIteration.end() || b == reporter.nsPerIteration.end() || b->second <= 0)
            continue;
        const double ratio = a->second / b->second;
        std::printf("ratio runtime/pthread, %s: %.2f (%.0f ns vs %.0f ns per iteration)\n", p.what, ratio, a->second,
                    b->second);
        if (md != nullptr) {
            char goal[64] = "-";
            if (p.goal > 0)
                snprintf(goal, sizeof goal, "<= %.2f: %s", p.goal, ratio <= p.goal ? "met" : "**missed**");
            fprintf(md, "| %s | %.0f | %.0f | %.2f | %s |\n", p.what, a->second, b->second, ratio, goal);
        }
    }
    if (md != nullptr) {
        fprintf(md,
                "\nActual delay of a 50 ms one-shot timer (the watchdog fires on the first pass of the timer task "
                "after its delay; the pthread timer waits on a condition variable until its deadline):\n\n"
                "| timer | fired | min ms | p50 ms | max ms | spread ms |\n|---|---:|---:|---:|---:|---:|\n");
        for (const char *name : {"watchdog", "pthread"}) {
            const std::vector<double> &ms = gTimerDelays[name];
            if (ms.empty())
                continue;
            fprintf(md, "| %s | %zu | %.2f | %.2f | %.2f | %.2f |\n", name, ms.size(), ms.front(), ms[ms.size() / 2],
                    ms.back(), ms.back() - ms.front());
        }
        fprintf(md, "\n");
        fclose(md);
    }
    return 0;
}
