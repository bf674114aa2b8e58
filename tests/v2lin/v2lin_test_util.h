// Helpers of the runtime tests: tasks running a std::function, bounded waits on conditions,
// stream capture of the show routines.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "v2lin/v2lin.h"

namespace v2test {

using Clock = std::chrono::steady_clock;

inline long long msSince(Clock::time_point t0) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t0).count();
}

// Polls a condition every millisecond until it holds or `limitMs` has passed.
template <class Pred>
bool waitFor(Pred pred, int limitMs = 5000) {
    auto t0 = Clock::now();
    while (!pred()) {
        if (msSince(t0) > limitMs)
            return false;
        usleep(1000);
    }
    return true;
}

// Bodies of tasks spawned by the tests, indexed by the task's first argument.
class Bodies {
public:
    static int32_t add(std::function<void()> fn) {
        std::lock_guard<std::mutex> g(mu());
        int32_t key = ++next();
        table()[key] = std::move(fn);
        return key;
    }
    static int32_t run(int32_t key, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t) {
        std::function<void()> fn;
        {
            std::lock_guard<std::mutex> g(mu());
            fn = table()[key];
        }
        fn();
        return 0;
    }

private:
    static std::mutex &mu() {
        static std::mutex m;
        return m;
    }
    static int32_t &next() {
        static int32_t n = 0;
        return n;
    }
    static std::map<int32_t, std::function<void()>> &table() {
        static std::map<int32_t, std::function<void()>> t;
        return t;
    }
};

// Spawns a task that runs `fn`; the task ends (and is deleted) when `fn` returns.
inline int32_t spawn(const char *name, int priority, std::function<void()> fn) {
    int32_t key = Bodies::add(std::move(fn));
    return taskSpawn(name, priority, 0, 0, Bodies::run, key, 0, 0, 0, 0, 0, 0, 0, 0, 0);
}

// True once the task no longer exists.
inline bool waitGone(int32_t id, int limitMs = 5000) {
    return waitFor([&] { return taskIdVerify(id) != 0; }, limitMs);
}

// True while the task is on a wait list (semaphore, queue or pending deleters).
inline bool isPended(int32_t id) {
    V2LIN_TCB *t = taskTcb(id);
    return t && (__atomic_load_n(&t->state, __ATOMIC_RELAXED) & V2LIN_TASK_PENDED);
}

inline bool waitPended(int32_t id, int limitMs = 5000) {
    return waitFor([&] { return isPended(id); }, limitMs);
}

// Output of a show routine written to a memory stream.
template <class Fn>
std::string capture(Fn fn) {
    char *buf = nullptr;
    size_t len = 0;
    FILE *f = open_memstream(&buf, &len);
    fn(f);
    fclose(f);
    std::string s(buf, len);
    free(buf);
    return s;
}

// Every runtime test runs with the runtime started (the test thread becomes "tUsrRoot").
class Runtime : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(v2lin_init(), 0); }
};

}  // namespace v2test
