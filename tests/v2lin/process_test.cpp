// Behaviour that needs a process of its own: real-time scheduling without the privilege, the
// crash hook, assertion failures and the stand-alone start-up.  Each case runs in a forked child
// (this binary starts no runtime thread before forking).
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "v2lin_test_util.h"

using namespace v2test;

namespace {

// Runs `child` in a forked process whose stderr goes into a pipe; returns the exit status and
// what the child wrote.
template <class Fn>
int inChild(Fn child, std::string *err) {
    int fds[2];
    if (pipe(fds) != 0)
        return -1;
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        dup2(fds[1], 2);
        _exit(child());
    }
    close(fds[1]);
    char buf[512];
    ssize_t n;
    while ((n = read(fds[0], buf, sizeof buf)) > 0)
        err->append(buf, static_cast<size_t>(n));
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    return status;
}

size_t countOf(const std::string &text, const std::string &what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        n++;
    return n;
}

std::atomic<int> gPolicy{-1};
std::atomic<int> gRuns{0};
int32_t recordPolicy(int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t) {
    int policy;
    struct sched_param sp;
    pthread_getschedparam(pthread_self(), &policy, &sp);
    gPolicy = policy;
    gRuns++;
    return 0;
}

int32_t sleepAWhile(int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t) {
    taskDelay(100);
    return 0;
}

// Spawns two tasks at real-time priority 50 and reports how they ran.
int spawnTwo() {
    if (v2lin_init() != 0)
        return 10;
    for (int i = 0; i < 2; i++) {
        int32_t id = taskSpawn(nullptr, 50, 0, 0, recordPolicy, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
        if (id <= 0)
            return 11;
        if (!waitGone(id))
            return 12;
    }
    taskLock();  // applies priority 80: refused as well without the privilege
    taskUnlock();
    return gRuns.load() == 2 ? 0 : 13;
}

TEST(RuntimeProcess, PrivilegedTasksRunWithRealTimeScheduling) {
    std::string err;
    int status = inChild(
        [] {
            int rc = spawnTwo();
            return rc ? rc : (gPolicy.load() == SCHED_FIFO ? 0 : 14);
        },
        &err);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << err;
    EXPECT_EQ(countOf(err, "errno="), 0u) << err;
}

TEST(RuntimeProcess, WithoutThePrivilegeTasksInheritSchedulingAndSayItOnce) {
    std::string err;
    int status = inChild(
        [] {
            struct rlimit none = {0, 0};
            if (setrlimit(RLIMIT_RTPRIO, &none) != 0)
                return 20;
            if (setgid(65534) != 0 || setuid(65534) != 0)
                return 21;
            int rc = spawnTwo();
            return rc ? rc : (gPolicy.load() == SCHED_OTHER ? 0 : 22);
        },
        &err);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << err;
    std::string line = std::string("\terrno=1(1) ") + strerror(EPERM) + " \n";
    EXPECT_EQ(countOf(err, line), 1u) << err;
    EXPECT_EQ(countOf(err, "errno="), 1u) << err;
}

// In a fresh process the first unnamed tasks are "t1" and "t2"; blocks made by taskInit (the
// runtime's own included) do not raise the next id.
TEST(RuntimeProcess, FirstSpawnedTasksAreT1AndT2) {
    std::string err;
    int status = inChild(
        [] {
            if (v2lin_init() != 0)
                return 60;
            static V2LIN_TCB block;
            if (taskInit(&block, "blk", 50, 0, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0) != 0)
                return 61;
            int32_t a = taskSpawn(nullptr, 50, 0, 0, sleepAWhile, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
            int32_t b = taskSpawn(nullptr, 50, 0, 0, sleepAWhile, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
            std::string nameA = taskName(a), nameB = taskName(b);
            if (a != 1 || b != 2)
                return 62;
            return nameA == "t1" && nameB == "t2" ? 0 : 63;
        },
        &err);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << err;
}

// The hook forks once: the child returns from it, the parent waits for that child; a second
// call in the parent exits with status 1.
TEST(RuntimeProcess, CrashHookForksOnceThenExits) {
    std::string err;
    int status = inChild(
        [] {
            pid_t me = getpid();
            gdb();
            if (getpid() != me)
                _exit(7);  // the hook's child
            gdb();
            return 30;  // not reached
        },
        &err);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
}

TEST(RuntimeProcess, TaskIdListGetWithoutAListIsAnAssertionFailure) {
    std::string err;
    int status = inChild(
        [] {
            taskIdListGet(nullptr, 4);
            return 50;
        },
        &err);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) << status;
    EXPECT_NE(err.find("v2lin/ltaskLib:711"), std::string::npos) << err;
    EXPECT_NE(err.find("Assertion `list' failed."), std::string::npos) << err;
}

}  // namespace
