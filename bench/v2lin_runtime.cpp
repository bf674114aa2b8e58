// Runtime cost against plain POSIX code: a task-to-task semGive/semTake ping-pong, the same
// give and take in one thread, and a msgQSend/msgQReceive stream, each beside the same pattern
// written with a pthread mutex and condition variables.  Both partners of a pair run at SCHED_FIFO 80 (the runtime raises the
// benchmark thread to 80 when it starts a task).  Prints the runtime/pthread time ratios.
#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sched.h>
#include <string.h>

#include <atomic>
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
        if (gStop.load()) break;
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
    while (taskIdVerify(id) == 0) taskDelay(1);
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

int32_t producerTask(int32_t count, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                     int32_t) {
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
    while (taskIdVerify(id) == 0) taskDelay(1);
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
        while (tokens < 1) pthread_cond_wait(&cond, &mu);
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
        while (count == kQueueSlots) pthread_cond_wait(&notFull, &mu);
        memcpy(&slots[(head + count) % kQueueSlots], &p, sizeof p);
        count++;
        pthread_cond_broadcast(&notEmpty);
        pthread_mutex_unlock(&mu);
    }
    void get(Payload *p) {
        pthread_mutex_lock(&mu);
        while (count == 0) pthread_cond_wait(&notEmpty, &mu);
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
    if (pthread_create(&th, &attr, body, arg) != 0) pthread_create(&th, nullptr, body, arg);
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
        if (pp->stop.load()) break;
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

BENCHMARK(BM_RuntimeSemPingPong)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_PthreadPingPong)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_RuntimeSemGiveTake)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_PthreadGiveTake)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_RuntimeMsgQStream)->UseRealTime()->MinTime(0.5);
BENCHMARK(BM_PthreadStream)->UseRealTime()->MinTime(0.5);

// Console output plus the time per iteration of every run, for the ratios.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run> &runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &r : runs)
            if (r.iterations > 0) nsPerIteration[r.benchmark_name()] = r.GetAdjustedRealTime();
    }
    std::map<std::string, double> nsPerIteration;
};

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    v2lin_init();
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const struct {
        const char *what;
        const char *runtime;
        const char *plain;
    } pairs[] = {
        {"semGive/semTake ping-pong", "BM_RuntimeSemPingPong/min_time:0.500/real_time",
         "BM_PthreadPingPong/min_time:0.500/real_time"},
        {"semGive+semTake in one thread", "BM_RuntimeSemGiveTake/min_time:0.500/real_time",
         "BM_PthreadGiveTake/min_time:0.500/real_time"},
        {"msgQSend/msgQReceive stream", "BM_RuntimeMsgQStream/min_time:0.500/real_time",
         "BM_PthreadStream/min_time:0.500/real_time"},
    };
    for (const auto &p : pairs) {
        auto a = reporter.nsPerIteration.find(p.runtime), b = reporter.nsPerIteration.find(p.plain);
        if (a == reporter.nsPerIteration.end() || b == reporter.nsPerIteration.end() || b->second <= 0) continue;
        std::printf("ratio runtime/pthread, %s: %.2f (%.0f ns vs %.0f ns per iteration)\n", p.what,
                    a->second / b->second, a->second, b->second);
    }
    return 0;
}
