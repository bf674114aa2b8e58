// Semaphores: creation refusals, no-wait and timed takes, tokens without bound, mutual-exclusion
// recursion and ownership, flush and delete with waiters, service order, show routines.
#include <errno.h>
#include <pthread.h>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "v2lin_test_util.h"

using namespace v2test;

namespace {

class Semaphores : public Runtime {};

std::string shown(SEM_ID s) {
    return capture([&](FILE *f) { semShow(s, f, nullptr); });
}

TEST_F(Semaphores, CreateRefusesPriorityDeleteSafeAndInversionSafe) {
    const struct {
        const char *what;
        SEM_ID (*make)(int);
        int options;
    } cases[] = {
        {"binary priority", [](int o) { return semBCreate(o, 1); }, 0x01},
        {"counting delete-safe", [](int o) { return semCCreate(o, 1); }, 0x04},
        {"mutex inversion-safe", [](int o) { return semMCreate(o); }, 0x08},
        {"mutex priority", [](int o) { return semMCreate(o); }, 0x01},
    };
    for (const auto &c : cases) {
        errno = 0;
        EXPECT_EQ(c.make(c.options), nullptr) << c.what;
        EXPECT_EQ(errno, ENOSYS) << c.what;
    }
}

TEST_F(Semaphores, OptionWordsOfTheThreeKinds) {
    SEM_ID b = semBCreate(0, 5), c = semCCreate(0, 5), m = semMCreate(0);
    EXPECT_NE(shown(b).find("tc:1 () 0 \n"), std::string::npos) << shown(b);
    EXPECT_NE(shown(c).find("tc:5 () 20 \n"), std::string::npos) << shown(c);
    EXPECT_NE(shown(m).find("tc:1 () 10 \n"), std::string::npos) << shown(m);
    for (SEM_ID s : {b, c, m})
        EXPECT_EQ(semDelete(s), 0);
}

// Task A holds the semaphore; task B's no-wait take reports success but takes nothing: owner,
// recursion count, token count and B's delete safety stay as they were, B cannot give it back,
// and A's give still returns the token.
TEST_F(Semaphores, NoWaitTakeOfEmptySemaphoreChangesNothing) {
    const struct {
        const char *what;
        SEM_ID (*make)();
        const char *held;  // recursion and token counts while A holds it
        bool owned;  // only the owner may give it
    } cases[] = {
        {"binary", [] { return semBCreate(0, 1); }, "rl:0 tc:0 ", false},
        {"counting", [] { return semCCreate(0, 1); }, "rl:0 tc:0 ", false},
        {"mutex", [] { return semMCreate(0); }, "rl:1 tc:0 ", true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        SEM_ID s = c.make();
        std::atomic<int> held{0}, release{0}, holderGive{-2};
        int32_t a = spawn("tHolder", 50, [&] {
            if (semTake(s, V2LIN_WAIT_FOREVER) != 0)
                return;
            held = 1;
            waitFor([&] { return release.load() != 0; }, 10000);
            holderGive = semGive(s);
        });
        ASSERT_TRUE(waitFor([&] { return held.load() != 0; }));
        const std::string before = shown(s);
        EXPECT_NE(before.find(std::string(" tHolder ") + c.held), std::string::npos) << before;

        std::atomic<int> takeRc{-2}, safeBefore{-1}, safeAfter{-1}, giveRc{-2}, giveErr{0};
        int32_t b = spawn("tNoWait", 50, [&] {
            V2LIN_TCB *me = taskTcb(taskIdSelf());
            safeBefore = me->safeCount;
            takeRc = semTake(s, V2LIN_NO_WAIT);
            safeAfter = me->safeCount;
            if (c.owned) {
                giveRc = semGive(s);
                giveErr = errno;
            }
        });
        ASSERT_TRUE(waitGone(b));
        EXPECT_EQ(takeRc.load(), 0);
        EXPECT_EQ(shown(s), before);  // owner block and name, recursion and token counts, no waiter
        EXPECT_EQ(safeAfter.load(), safeBefore.load());
        if (c.owned) {
            EXPECT_EQ(giveRc.load(), -1);
            EXPECT_EQ(giveErr.load(), S_semLib_INVALID_OPERATION);
        }

        release = 1;
        ASSERT_TRUE(waitGone(a));
        EXPECT_EQ(holderGive.load(), 0);
        EXPECT_NE(shown(s).find("rl:0 tc:1 "), std::string::npos) << shown(s);
        EXPECT_EQ(semDelete(s), 0);
    }
}

TEST_F(Semaphores, TimedTakeOfEmptySemaphoreTimesOut) {
    SEM_ID s = semCCreate(0, 0);
    auto t0 = Clock::now();
    EXPECT_EQ(semTake(s, 5), -1);
    long long ms = msSince(t0);
    EXPECT_EQ(errno, S_objLib_OBJ_TIMEOUT);
    EXPECT_GE(ms, 45);
    EXPECT_LT(ms, 2000);
    EXPECT_EQ(semDelete(s), 0);
}

TEST_F(Semaphores, BinarySemaphoreHasNoUpperBound) {
    SEM_ID s = semBCreate(0, 1);
    EXPECT_EQ(semGive(s), 0);
    EXPECT_EQ(semTake(s, 1), 0);
    EXPECT_EQ(semTake(s, 1), 0);
    EXPECT_EQ(semTake(s, 1), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_TIMEOUT);
    EXPECT_EQ(semDelete(s), 0);
}

TEST_F(Semaphores, TakeWaitsForAGive) {
    SEM_ID s = semBCreate(0, 0);
    std::atomic<int> rc{-2};
    int32_t id = spawn("tTaker", 50, [&] { rc = semTake(s, V2LIN_WAIT_FOREVER); });
    ASSERT_TRUE(waitPended(id));
    EXPECT_EQ(rc.load(), -2);
    EXPECT_EQ(semGive(s), 0);
    EXPECT_TRUE(waitGone(id));
    EXPECT_EQ(rc.load(), 0);
    EXPECT_EQ(semDelete(s), 0);
}

TEST_F(Semaphores, MutexRecursionAndForeignGive) {
    SEM_ID m = semMCreate(0);
    ASSERT_EQ(semTake(m, V2LIN_WAIT_FOREVER), 0);
    ASSERT_EQ(semTake(m, V2LIN_WAIT_FOREVER), 0);
    EXPECT_NE(shown(m).find("rl:2 tc:0 "), std::string::npos) << shown(m);
    EXPECT_NE(shown(m).find(" tUsrRoot "), std::string::npos) << shown(m);

    std::atomic<int> step{0}, giveRc{0}, giveErr{0}, take1{0}, take1Err{0}, take2{-2};
    int32_t other = spawn("tForeign", 50, [&] {
        giveRc = semGive(m);
        giveErr = errno;
        take1 = semTake(m, 5);
        take1Err = errno;
        step = 1;
        take2 = semTake(m, V2LIN_WAIT_FOREVER);
        semGive(m);
    });
    ASSERT_TRUE(waitFor([&] { return step.load() == 1; }));
    EXPECT_EQ(giveRc.load(), -1);
    EXPECT_EQ(giveErr.load(), S_semLib_INVALID_OPERATION);
    EXPECT_EQ(take1.load(), -1);
    EXPECT_EQ(take1Err.load(), S_objLib_OBJ_TIMEOUT);
    ASSERT_TRUE(waitPended(other));
    EXPECT_EQ(semGive(m), 0);  // one of two: still owned
    usleep(50000);
    EXPECT_EQ(take2.load(), -2);
    EXPECT_EQ(semGive(m), 0);
    EXPECT_TRUE(waitGone(other));
    EXPECT_EQ(take2.load(), 0);
    EXPECT_NE(shown(m).find("rl:0 tc:1 "), std::string::npos) << shown(m);
    EXPECT_EQ(semGive(m), -1);  // not the owner any more
    EXPECT_EQ(errno, S_semLib_INVALID_OPERATION);
    EXPECT_EQ(semFlush(m), -1);
    EXPECT_EQ(errno, S_semLib_INVALID_OPERATION);
    EXPECT_EQ(semDelete(m), 0);
}

// Flush and delete release both waiters and return only after both have left.
TEST_F(Semaphores, FlushAndDeleteWithTwoWaiters) {
    const struct {
        const char *what;
        int (*op)(SEM_ID);
        int waiterRc;
        int waiterErr;
    } cases[] = {
        {"flush", semFlush, 0, 0},
        {"delete", semDelete, -1, S_objLib_OBJ_ID_ERROR},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        SEM_ID s = semBCreate(0, 0);
        std::mutex mu;
        std::vector<std::pair<int, int>> results;
        std::atomic<int> release{0};
        auto waiter = [&] {
            errno = 0;
            int rc = semTake(s, V2LIN_WAIT_FOREVER);
            int err = errno;
            {
                std::lock_guard<std::mutex> g(mu);
                results.push_back({rc, err});
            }
            // Stay alive (and off every wait list) until the check below is done.
            waitFor([&] { return release.load() != 0; }, 10000);
        };
        int32_t w1 = spawn("tW1", 50, waiter);
        int32_t w2 = spawn("tW2", 50, waiter);
        ASSERT_TRUE(waitPended(w1));
        ASSERT_TRUE(waitPended(w2));
        EXPECT_EQ(c.op(s), 0);
        EXPECT_FALSE(isPended(w1));
        EXPECT_FALSE(isPended(w2));
        ASSERT_TRUE(waitFor([&] {
            std::lock_guard<std::mutex> g(mu);
            return results.size() == 2;
        }));
        for (auto &r : results) {
            EXPECT_EQ(r.first, c.waiterRc);
            if (c.waiterRc) {
                EXPECT_EQ(r.second, c.waiterErr);
            }
        }
        release = 1;
        EXPECT_TRUE(waitGone(w1));
        EXPECT_TRUE(waitGone(w2));
        if (c.op == semFlush) {
            EXPECT_NE(shown(s).find("tc:0 () "), std::string::npos) << shown(s);
            EXPECT_EQ(semDelete(s), 0);
        }
        EXPECT_EQ(semGive(s), -1);
        EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR);
    }
}

TEST_F(Semaphores, ThreeWaitersAreServedFirstComeFirstServed) {
    SEM_ID s = semCCreate(0, 0);
    std::mutex mu;
    std::vector<int> order;
    std::vector<int32_t> ids;
    for (int i = 1; i <= 3; i++) {
        int32_t id = spawn(nullptr, 50 + i, [&, i] {
            semTake(s, V2LIN_WAIT_FOREVER);
            std::lock_guard<std::mutex> g(mu);
            order.push_back(i);
        });
        ASSERT_TRUE(waitPended(id));
        ids.push_back(id);
    }
    std::string list = shown(s);
    for (int32_t id : ids)
        EXPECT_NE(list.find(taskName(id)), std::string::npos) << list;
    // One token at a time: each must go to the longest waiting task.
    for (size_t n = 1; n <= 3; n++) {
        EXPECT_EQ(semGive(s), 0);
        EXPECT_TRUE(waitFor([&] {
            std::lock_guard<std::mutex> g(mu);
            return order.size() == n;
        }));
    }
    for (int32_t id : ids)
        EXPECT_TRUE(waitGone(id));
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(semDelete(s), 0);
}

TEST_F(Semaphores, NullAndUnknownHandles) {
    errno = 1234;
    EXPECT_EQ(semTake(nullptr, 0), -1);
    EXPECT_EQ(semGive(nullptr), -1);
    EXPECT_EQ(semFlush(nullptr), -1);
    EXPECT_EQ(semDelete(nullptr), -1);
    EXPECT_EQ(errno, 1234);
    SEM_ID s = semBCreate(0, 1);
    ASSERT_EQ(semDelete(s), 0);
    const struct {
        const char *what;
        int (*op)(SEM_ID);
    } ops[] = {
        {"take", [](SEM_ID x) { return semTake(x, 0); }},
        {"give", semGive},
        {"flush", semFlush},
        {"delete", semDelete},
    };
    for (const auto &o : ops) {
        errno = 0;
        EXPECT_EQ(o.op(s), -1) << o.what;
        EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR) << o.what;
    }
}

TEST_F(Semaphores, ListShowsEveryRecordWithItsIndex) {
    SEM_ID a = semBCreate(0, 0), b = semCCreate(0, 3);
    std::string out = capture([&](FILE *f) { EXPECT_GE(semList(f, nullptr), 2); });
    char line[64];
    snprintf(line, sizeof line, "%x: o:0 rl:0 tc:3 () 20 \n", static_cast<unsigned>(reinterpret_cast<uintptr_t>(b)));
    EXPECT_NE(out.find(line), std::string::npos) << out;
    std::string verbose = capture([&](FILE *f) { semShow(a, f, reinterpret_cast<void *>(1)); });
    EXPECT_GT(verbose.size(), shown(a).size());
    EXPECT_EQ(semDelete(a), 0);
    EXPECT_EQ(semDelete(b), 0);
}

TEST_F(Semaphores, OwnerThatIsGoneShowsAsDeleted) {
    SEM_ID b = semBCreate(0, 1);
    int32_t id = spawn("tOwner", 50, [&] { semTake(b, 1); });
    ASSERT_TRUE(waitGone(id));
    EXPECT_NE(shown(b).find(" <deleted> "), std::string::npos) << shown(b);
    EXPECT_EQ(semDelete(b), 0);
}

TEST_F(Semaphores, RecursiveMutexConstruct) {
    pthread_mutex_t m;
    EXPECT_EQ(mgMutexConstruct(&m), &m);
    EXPECT_EQ(pthread_mutex_lock(&m), 0);
    EXPECT_EQ(pthread_mutex_lock(&m), 0);
    EXPECT_EQ(pthread_mutex_unlock(&m), 0);
    EXPECT_EQ(pthread_mutex_unlock(&m), 0);
    pthread_mutex_destroy(&m);
}

}  // namespace
