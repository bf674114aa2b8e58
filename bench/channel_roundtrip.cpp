// Cost of one handler-style get through the library against the in-process emulator, beside
// the raw System V round trip (same semaphore, same queues, same emulator) in the same run.
// Each benchmark reports p50 and p99 of single exchanges; the ratios are printed at the end.
#include <benchmark/benchmark.h>
#include <sched.h>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/sem.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

#include "emulator/voice_module_emulator.h"
#include "tr104.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Percentiles {
    double p50 = 0;
    double p99 = 0;
};
Percentiles gLibrary, gRaw;

vmemu::VoiceModuleEmulator &emulator() {
    static vmemu::VoiceModuleEmulator instance;
    return instance;
}

Percentiles summarise(std::vector<double> &us, benchmark::State &state) {
    std::sort(us.begin(), us.end());
    Percentiles p;
    if (!us.empty()) {
        p.p50 = us[us.size() / 2];
        p.p99 = us[std::min(us.size() - 1, us.size() * 99 / 100)];
    }
    state.counters["p50_us"] = p.p50;
    state.counters["p99_us"] = p.p99;
    return p;
}

void BM_LibraryGet(benchmark::State &state) {
    std::vector<double> us;
    us.reserve(100000);
    char block[TR104_PORT_STATUS_LEN] = {1};
    for (auto _ : state) {
        const auto t0 = Clock::now();
        Tr104Msg msg;
        tr104MsgConstruct(&msg);
        const int rc = CfgPreHandleGetParam(&msg, block, sizeof(block), TR104_GET_PORT_STATUS_ID);
        us.push_back(std::chrono::duration<double, std::micro>(Clock::now() - t0).count());
        if (rc != 0) {
            state.SkipWithError("get failed");
            break;
        }
    }
    gLibrary = summarise(us, state);
}

// The same exchange written directly: take the semaphore, send, block for the reply, give.
void BM_RawRoundTrip(benchmark::State &state) {
    std::vector<double> us;
    us.reserve(100000);
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
        us.push_back(std::chrono::duration<double, std::micro>(Clock::now() - t0).count());
        if (n <= 0) {
            state.SkipWithError("raw receive failed");
            break;
        }
    }
    gRaw = summarise(us, state);
}

BENCHMARK(BM_RawRoundTrip)->MinTime(1.0)->UseRealTime();
BENCHMARK(BM_LibraryGet)->MinTime(1.0)->UseRealTime();

}  // namespace

int main(int argc, char **argv) {
    if (unshare(CLONE_NEWIPC) != 0) {
        std::fprintf(stderr, "note: no private IPC namespace (not root); using the machine's channel keys\n");
    }
    if (tr104VoiceMsgQueuesInit(1) != 0 || !emulator().start()) {
        std::fprintf(stderr, "cannot open the channel\n");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    emulator().stop();
    if (gRaw.p50 > 0 && gRaw.p99 > 0) {
        std::printf("library get / raw round trip: p50 %.1f us / %.1f us = %.2fx, p99 %.1f us / %.1f us = %.2fx\n",
                    gLibrary.p50, gRaw.p50, gLibrary.p50 / gRaw.p50, gLibrary.p99, gRaw.p99, gLibrary.p99 / gRaw.p99);
    }
    return 0;
}
