// Contention: many processes of many threads exchange with one voice module (a process of its
// own) through the one channel.  Every get carries a tag that the voice module echoes, so a
// reply taken by the wrong caller is seen; every set carries its caller and a sequence number,
// so the voice module sees whether each accepted set arrives exactly once and in order.
//
// Size: TR104_CONTENTION_OPS exchanges per thread (default 10000: 8 x 4 x 10000 = 320 000; the
// build may lower the default), TR104_CONTENTION_PROCS processes (default 8) of 4 threads.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <thread>
#include <vector>

#include "support/channel_fixture.h"
#include "tr104.h"

namespace {

constexpr uint32_t kEchoCmd = 20000;  // get: the voice module echoes the request's tag
constexpr uint32_t kSetCmd = 20001;  // set: {caller, sequence}
constexpr int kThreads = 4;
#ifndef TR104_CONTENTION_DEFAULT_OPS
#define TR104_CONTENTION_DEFAULT_OPS 10000
#endif

int fromEnv(const char *name, int fallback) {
    const char *v = std::getenv(name);
    return v != nullptr && std::atoi(v) > 0 ? std::atoi(v) : fallback;
}

struct Tag {
    uint32_t caller;
    uint32_t sequence;
    uint32_t nonce;
};

// What every caller and the voice module report, in memory shared across the processes.
struct Shared {
    std::atomic<uint64_t> gets, setsAccepted, failures, mixups;
    std::atomic<uint64_t> setsReceived, outOfOrder;
};

void voiceModule(Shared *shared, int stopFd) {
    vmemu::VoiceModuleEmulator emulator;
    emulator.setLogLimit(16);
    std::map<uint32_t, uint32_t> lastSet;  // per caller; touched under the emulator's lock
    emulator.setHandler(kEchoCmd, [](const vmemu::Request &request, vmemu::Payload &reply) {
        std::memcpy(reply.data(), request.payload.data(), sizeof(Tag));
        return true;
    });
    emulator.setHandler(kSetCmd, [&](const vmemu::Request &request, vmemu::Payload &) {
        const Tag tag = request.word<Tag>(0);
        uint32_t &last = lastSet[tag.caller];
        if (tag.sequence != last + 1) {
            ++shared->outOfOrder;
        }
        last = tag.sequence;
        ++shared->setsReceived;
        return false;  // a set is not answered
    });
    if (!emulator.start()) {
        _exit(3);
    }
    char byte;
    while (read(stopFd, &byte, 1) < 0 && errno == EINTR) {
    }
    emulator.stop();
    _exit(0);
}

void caller(Shared *shared, int process, int ops) {
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([=] {
            const uint32_t id = static_cast<uint32_t>(process * kThreads + t + 1);
            uint32_t setSequence = 0;
            for (int i = 0; i < ops; ++i) {
                if (i % 3 == 2) {
                    const Tag tag{id, setSequence + 1, 0};
                    if (sendtr104Msg(kSetCmd, &tag, sizeof(tag)) == 0) {
                        ++setSequence;
                        ++shared->setsAccepted;
                    } else {
                        ++shared->failures;
                    }
                    continue;
                }
                const Tag sent{id, static_cast<uint32_t>(i), static_cast<uint32_t>(i) * 2654435761u ^ id};
                Tag got = sent;
                Tr104Msg msg;
                tr104MsgConstruct(&msg);
                if (CfgPreHandleGetParam(&msg, &got, sizeof(got), kEchoCmd) != 0) {
                    ++shared->failures;
                } else if (std::memcmp(&got, &sent, sizeof(got)) != 0) {
                    ++shared->mixups;
                } else {
                    ++shared->gets;
                }
            }
        });
    }
    for (std::thread &t : threads) {
        t.join();
    }
}

TEST(Contention, EveryReplyReachesItsCallerAndEverySetArrivesOnceInOrder) {
    const int processes = fromEnv("TR104_CONTENTION_PROCS", 8);
    const int ops = fromEnv("TR104_CONTENTION_OPS", TR104_CONTENTION_DEFAULT_OPS);
    tr104test::resetChannelGlobals();
    ASSERT_EQ(tr104VoiceMsgQueuesInit(1), 0);  // module 7: the long reply wait
    auto *shared =
        static_cast<Shared *>(mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(shared, MAP_FAILED);
    new (shared) Shared{};

    int stop[2];
    ASSERT_EQ(pipe(stop), 0);
    const pid_t module = fork();
    if (module == 0) {
        close(stop[1]);
        voiceModule(shared, stop[0]);
    }
    close(stop[0]);

    const auto start = std::chrono::steady_clock::now();
    std::vector<pid_t> callers;
    for (int p = 0; p < processes; ++p) {
        const pid_t pid = fork();
        if (pid == 0) {
            caller(shared, p, ops);
            _exit(0);
        }
        callers.push_back(pid);
    }
    for (pid_t pid : callers) {
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a caller process died";
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    // Every accepted set has been served once the voice module answers a get sent after them.
    Tag probe{0, 0, 1};
    Tr104Msg msg;
    tr104MsgConstruct(&msg);
    EXPECT_EQ(CfgPreHandleGetParam(&msg, &probe, sizeof(probe), kEchoCmd), 0);
    ASSERT_EQ(write(stop[1], "x", 1), 1);
    waitpid(module, nullptr, 0);

    const uint64_t total = shared->gets + shared->setsAccepted + shared->failures + shared->mixups;
    std::printf(
        "[contention] %d processes x %d threads x %d exchanges = %llu in %.1f s: %.0f exchanges/s; "
        "mix-ups %llu, failures %llu, sets accepted %llu received %llu, out of order %llu\n",
        processes, kThreads, ops, static_cast<unsigned long long>(total), seconds, total / seconds,
        static_cast<unsigned long long>(shared->mixups.load()),
        static_cast<unsigned long long>(shared->failures.load()),
        static_cast<unsigned long long>(shared->setsAccepted.load()),
        static_cast<unsigned long long>(shared->setsReceived.load()),
        static_cast<unsigned long long>(shared->outOfOrder.load()));
    EXPECT_EQ(total, static_cast<uint64_t>(processes) * kThreads * ops);
    EXPECT_EQ(shared->mixups.load(), 0u);
    EXPECT_EQ(shared->outOfOrder.load(), 0u);
    EXPECT_EQ(shared->setsReceived.load(), shared->setsAccepted.load());
    EXPECT_EQ(shared->failures.load(), 0u);
    EXPECT_EQ(tr104test::semValue(), 1);
    munmap(shared, sizeof(Shared));
}

}  // namespace
