// Tasks: creation, ids and names, priorities, scheduler lock, delete safety, deletion, restart,
// delays and the show routines.
#include <errno.h>
#include <pthread.h>
#include <sched.h>
#include <string.h>

#include <atomic>
#include <cstdio>
#include <regex>
#include <string>
#include <vector>

#include "v2lin_test_util.h"

using namespace v2test;

namespace {

class Tasks : public Runtime {};

struct SchedSeen {
    std::atomic<int> policy{-1};
    std::atomic<int> priority{-1};
    void record() {
        int pol;
        struct sched_param sp;
        pthread_getschedparam(pthread_self(), &pol, &sp);
        priority = sp.sched_priority;
        policy = pol;
    }
};

TEST_F(Tasks, ErrorNamesAndStrerrorFallback) {
    const struct {
        int code;
        const char *name;
    } cases[] = {
        {0x00030065, "S_taskLib_ILLEGAL_PRIORITY"}, {0x00110001, "S_memLib_NOT_ENOUGH_MEMORY"},
        {0x00160068, "S_semLib_INVALID_OPERATION"}, {0x003D0001, "S_objLib_OBJ_ID_ERROR"},
        {0x003D0002, "S_objLib_OBJ_UNAVAILABLE"},   {0x003D0003, "S_objLib_OBJ_DELETED"},
        {0x003D0004, "S_objLib_OBJ_TIMEOUT"},       {0x00410001, "S_msgQLib_INVALID_MSG_LENGTH"},
        {0x00580001, "S_smObjLib_NOT_INITIALIZED"}, {EPERM, strerror(EPERM)},
    };
    for (const auto &c : cases)
        EXPECT_STREQ(VxWorksError(c.code), c.name) << c.code;
}

// Kernel priority to POSIX priority, as stored by taskPrioritySet in the base parameter.
TEST_F(Tasks, PriorityTranslationTable) {
    ASSERT_EQ(sched_get_priority_max(SCHED_FIFO), 99);
    const struct {
        int kernel;
        int posix;
        int rc;
    } cases[] = {
        {0, 1, 0}, {1, 1, 0}, {2, 97, 0}, {80, 67, 0}, {255, 1, 0}, {256, 1, -1},
    };
    V2LIN_TCB tcb;
    ASSERT_EQ(taskInit(&tcb, "xlate", 50, 0, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    for (const auto &c : cases) {
        errno = 0;
        EXPECT_EQ(taskPrioritySet(tcb.taskId, c.kernel), c.rc) << c.kernel;
        if (c.rc) {
            EXPECT_EQ(errno, S_taskLib_ILLEGAL_PRIORITY);
        }
        EXPECT_EQ(tcb.prvParam.sched_priority, c.posix) << c.kernel;
        int kp = -1;
        EXPECT_EQ(taskPriorityGet(tcb.taskId, &kp), 0);
        EXPECT_EQ(kp, c.kernel);  // stored even when refused
    }
    EXPECT_EQ(taskDeleteForce(tcb.taskId), 0);
}

TEST_F(Tasks, TaskInitRefusals) {
    V2LIN_TCB tcb;
    errno = 0;
    EXPECT_NE(taskInit(&tcb, "opt", 50, 1, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(errno, ENOSYS);
    EXPECT_EQ(taskInit(nullptr, "null", 50, 0, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR);
    EXPECT_EQ(taskInit(&tcb, "prio300", 300, 0, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), -1);
    EXPECT_EQ(errno, S_taskLib_ILLEGAL_PRIORITY);
    EXPECT_EQ(taskNameToId("prio300"), -1);
    EXPECT_EQ(taskTcb(tcb.taskId), nullptr);
}

// A caller-owned block runs at the kernel priority number itself, after activation only.
TEST_F(Tasks, TaskInitThenActivate) {
    static V2LIN_TCB tcb;
    static SchedSeen seen;
    auto entry = [](int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                    int32_t) -> int32_t {
        seen.record();
        return 0;
    };
    ASSERT_EQ(taskInit(&tcb, "tInit", 42, 0, nullptr, 0, entry, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    int32_t id = tcb.taskId;
    EXPECT_EQ(id, static_cast<int32_t>(reinterpret_cast<uintptr_t>(&tcb)));
    EXPECT_EQ(tcb.state, V2LIN_TASK_CREATED);
    EXPECT_EQ(taskIsReady(id), 0);
    EXPECT_EQ(taskNameToId("tInit"), id);
    EXPECT_EQ(taskActivate(id), 0);
    ASSERT_TRUE(waitGone(id));
    EXPECT_EQ(seen.policy.load(), SCHED_FIFO);
    EXPECT_EQ(seen.priority.load(), 42);
    EXPECT_EQ(taskActivate(id), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR);
}

TEST_F(Tasks, SpawnNamesIdsAndTaskInitBlocksDoNotCount) {
    std::atomic<int> release{0};
    auto body = [&] { waitFor([&] { return release.load() != 0; }, 10000); };
    int32_t a = spawn(nullptr, 50, body);
    ASSERT_GT(a, 0);
    V2LIN_TCB block;
    ASSERT_EQ(taskInit(&block, "blk", 50, 0, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    int32_t b = spawn(nullptr, 50, body);
    EXPECT_EQ(b, a + 1);
    EXPECT_EQ(std::string(taskName(a)), "t" + std::to_string(a));
    EXPECT_EQ(std::string(taskName(b)), "t" + std::to_string(b));
    EXPECT_EQ(taskNameToId(taskName(b)), b);
    EXPECT_STREQ(taskName(0x7777), "NULLTASK");
    EXPECT_EQ(taskNameToId(nullptr), -1);
    EXPECT_EQ(taskNameToId("no such task"), -1);
    release = 1;
    EXPECT_TRUE(waitGone(a));
    EXPECT_TRUE(waitGone(b));
    EXPECT_EQ(taskDeleteForce(block.taskId), 0);
}

TEST_F(Tasks, QueriesOfSelfAndUnknownIds) {
    int32_t self = taskIdSelf();
    EXPECT_EQ(self, taskNameToId("tUsrRoot"));
    EXPECT_EQ(taskTcb(0), my_task());
    EXPECT_EQ(taskIdVerify(0), 0);
    EXPECT_EQ(taskIsReady(0), 1);
    EXPECT_EQ(taskIdVerify(0x7777), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR);
    EXPECT_EQ(taskIsReady(0x7777), 0);
    int p = -1;
    EXPECT_EQ(taskPriorityGet(0, &p), 0);
    EXPECT_EQ(p, 80);
    EXPECT_EQ(taskPriorityGet(0x7777, &p), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR);
    EXPECT_EQ(taskPrioritySet(0x7777, 5), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR);
    EXPECT_EQ(taskNameToId("tExcTask"), taskTcb(taskNameToId("tExcTask"))->taskId);
    EXPECT_EQ(taskTcb(taskNameToId("tExcTask"))->vxPriority, 79);
}

TEST_F(Tasks, UnsupportedCallsReportEnosys) {
    errno = 0;
    EXPECT_EQ(taskSuspend(0), ENOSYS);
    EXPECT_EQ(errno, ENOSYS);
    errno = 0;
    EXPECT_EQ(taskResume(0), ENOSYS);
    EXPECT_EQ(errno, ENOSYS);
    errno = 0;
    EXPECT_EQ(taskIsSuspended(0), 0);
    EXPECT_EQ(errno, ENOSYS);
#if defined(__mips__)
    EXPECT_EQ(taskSuspend(0), 89);
#endif
}

TEST_F(Tasks, TaskIdListGetCopiesAtMostMax) {
    int32_t ids[64];
    int n = taskIdListGet(ids, 64);
    ASSERT_GE(n, 2);
    EXPECT_EQ(ids[0], taskNameToId("tUsrRoot"));
    EXPECT_EQ(ids[1], taskNameToId("tExcTask"));
    EXPECT_EQ(taskIdListGet(ids, 1), 1);
    EXPECT_EQ(taskIdListGet(ids, 0), 0);
}

TEST_F(Tasks, NestedLockNeedsAsManyUnlocks) {
    pthread_t self = pthread_self();
    for (int i = 0; i < 3; i++)
        taskLock();
    EXPECT_TRUE(pthread_equal(locker, self));
    EXPECT_EQ(taskLock_level, 3u);

    std::atomic<int> got{0}, foreignUnlockDone{0};
    // taskSpawn takes the scheduler lock too: the caller already owns it.
    int32_t other = spawn("tLocker", 50, [&] {
        taskLock();
        got = 1;
        taskUnlock();
    });
    int32_t stranger = spawn("tStranger", 50, [&] {
        taskUnlock();  // not the owner: changes nothing
        foreignUnlockDone = 1;
    });
    ASSERT_TRUE(waitFor([&] { return foreignUnlockDone.load() == 1; }));
    EXPECT_EQ(taskLock_level, 3u);
    taskUnlock();
    taskUnlock();
    usleep(100000);
    EXPECT_EQ(got.load(), 0);
    EXPECT_TRUE(pthread_equal(locker, self));
    taskUnlock();
    EXPECT_TRUE(waitFor([&] { return got.load() == 1; }));
    EXPECT_TRUE(waitGone(other));
    EXPECT_TRUE(waitGone(stranger));
}

TEST_F(Tasks, LockRaisesToEightyAndUnlockRestoresBase) {
    SchedSeen inLock, afterUnlock;
    int32_t id = spawn("tLockPrio", 30, [&] {
        taskLock();
        inLock.record();
        taskUnlock();
        afterUnlock.record();
    });
    ASSERT_TRUE(waitGone(id));
    EXPECT_EQ(inLock.policy.load(), SCHED_FIFO);
    EXPECT_EQ(inLock.priority.load(), 80);
    EXPECT_EQ(afterUnlock.priority.load(), 30);
}

TEST_F(Tasks, DelayZeroAndFive) {
    auto t0 = Clock::now();
    EXPECT_EQ(taskDelay(0), 0);
    EXPECT_LT(msSince(t0), 500);  // a yield, not a tick (generous: the machine may be loaded)
    t0 = Clock::now();
    EXPECT_EQ(taskDelay(5), 0);
    long long ms = msSince(t0);
    EXPECT_GE(ms, 50);
    EXPECT_LT(ms, 1500);
}

TEST_F(Tasks, RestartOfUnknownIdKeepsTheSchedulerLock) {
    ASSERT_EQ(taskLock_level, 0u);
    errno = 0;
    EXPECT_EQ(taskRestart(0x7777), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR);
    EXPECT_TRUE(pthread_equal(locker, pthread_self()));
    EXPECT_EQ(taskLock_level, 1u);
    taskUnlock();
    EXPECT_EQ(taskLock_level, 0u);
}

TEST_F(Tasks, RestartOfAnotherTaskRunsItsEntryAgain) {
    SEM_ID gate = semBCreate(0, 0);
    std::atomic<int> runs{0};
    int32_t id = spawn("tRestarted", 50, [&] {
        runs++;
        semTake(gate, V2LIN_WAIT_FOREVER);
    });
    ASSERT_TRUE(waitPended(id));
    EXPECT_EQ(taskRestart(id), 0);
    EXPECT_TRUE(waitFor([&] { return runs.load() == 2; }));
    ASSERT_TRUE(waitPended(id));
    // The cancelled take left the waiter list: one give ends the new run.
    EXPECT_EQ(taskTcb(id)->pendSem, gate);
    EXPECT_EQ(semGive(gate), 0);
    EXPECT_TRUE(waitGone(id));
    EXPECT_EQ(runs.load(), 2);
    EXPECT_EQ(semDelete(gate), 0);
}

TEST_F(Tasks, SelfRestartGoesThroughTheTimerTask) {
    std::atomic<int> runs{0};
    int32_t id = spawn("tSelfRestart", 50, [&] {
        if (++runs < 3) {
            taskLock();  // released by the dying thread
            taskRestart(0);
            ADD_FAILURE() << "taskRestart(0) returned";
        }
    });
    EXPECT_TRUE(waitFor([&] { return runs.load() == 3; }));
    EXPECT_TRUE(waitGone(id));
    EXPECT_TRUE(waitFor([] { return __atomic_load_n(&locker, __ATOMIC_RELAXED) == 0; }));
}

TEST_F(Tasks, EntryReturnDeletesTheTask) {
    int32_t id = spawn("tShort", 50, [] {});
    ASSERT_GT(id, 0);
    EXPECT_TRUE(waitGone(id));
    EXPECT_EQ(taskDelete(id), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_DELETED);
    EXPECT_EQ(taskDeleteForce(id), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_DELETED);
}

TEST_F(Tasks, DeleteCancelsAWaitingTaskAndCleansTheWaiterList) {
    SEM_ID sem = semBCreate(0, 0);
    int32_t id = spawn("tVictim", 50, [&] { semTake(sem, V2LIN_WAIT_FOREVER); });
    ASSERT_TRUE(waitPended(id));
    EXPECT_EQ(taskDelete(id), 0);
    EXPECT_EQ(taskIdVerify(id), -1);
    std::string shown = capture([&](FILE *f) { semShow(sem, f, nullptr); });
    EXPECT_NE(shown.find("() "), std::string::npos) << shown;
    auto t0 = Clock::now();
    EXPECT_EQ(semDelete(sem), 0);
    EXPECT_LT(msSince(t0), 1000);
}

TEST_F(Tasks, DeleteOfSafeTaskWaitsForUnsafeAndDoesNotDelete) {
    SEM_ID gate = semBCreate(0, 0);
    std::atomic<int> unsafeReturned{0}, deleterReturned{0}, deleterRc{-2};
    std::atomic<int> selfDeleteRc{0}, selfDeleteErr{0};
    int32_t target = spawn("tSafe", 50, [&] {
        taskSafe();
        selfDeleteRc = taskDelete(0);
        selfDeleteErr = errno;
        semTake(gate, V2LIN_WAIT_FOREVER);
        taskUnsafe();
        unsafeReturned = 1;
        semTake(gate, V2LIN_WAIT_FOREVER);
    });
    ASSERT_TRUE(waitPended(target));
    EXPECT_EQ(selfDeleteRc.load(), -1);
    EXPECT_EQ(selfDeleteErr.load(), S_objLib_OBJ_UNAVAILABLE);
    int32_t deleter = spawn("tDeleter", 50, [&] {
        deleterRc = taskDelete(target);
        deleterReturned = 1;
    });
    usleep(100000);
    EXPECT_EQ(deleterReturned.load(), 0);
    EXPECT_EQ(taskTcb(target)->pendingDeleters, taskTcb(deleter));
    EXPECT_EQ(semGive(gate), 0);
    EXPECT_TRUE(waitFor([&] { return deleterReturned.load() == 1; }));
    EXPECT_EQ(deleterRc.load(), 0);
    EXPECT_TRUE(waitFor([&] { return unsafeReturned.load() == 1; }));
    EXPECT_EQ(taskIdVerify(target), 0);  // still there
    EXPECT_EQ(taskDelete(target), 0);  // unsafe now: deleted at once
    EXPECT_EQ(taskIdVerify(target), -1);
    EXPECT_TRUE(waitGone(deleter));
    EXPECT_EQ(semDelete(gate), 0);
}

TEST_F(Tasks, DeleteForceIgnoresSafety) {
    SEM_ID gate = semBCreate(0, 0);
    int32_t target = spawn("tSafe2", 50, [&] {
        taskSafe();
        semTake(gate, V2LIN_WAIT_FOREVER);
    });
    ASSERT_TRUE(waitPended(target));
    EXPECT_EQ(taskDeleteForce(target), 0);
    EXPECT_EQ(taskIdVerify(target), -1);
    EXPECT_EQ(semDelete(gate), 0);
}

TEST_F(Tasks, SafeCountNests) {
    V2LIN_TCB *me = my_task();
    ASSERT_NE(me, nullptr);
    taskSafe();
    taskSafe();
    EXPECT_EQ(me->safeCount, 2);
    taskUnsafe();
    taskUnsafe();
    taskUnsafe();  // never below zero
    EXPECT_EQ(me->safeCount, 0);
}

TEST_F(Tasks, PrioritySetOfAnotherTaskAppliesAtOnce) {
    SEM_ID gate = semBCreate(0, 0);
    SchedSeen seen;
    int32_t id = spawn("tPrio", 50, [&] {
        semTake(gate, V2LIN_WAIT_FOREVER);
        seen.record();
    });
    ASSERT_TRUE(waitPended(id));
    EXPECT_EQ(taskPrioritySet(id, 80), 0);
    EXPECT_EQ(taskTcb(id)->vxPriority, 80);
    EXPECT_EQ(taskTcb(id)->prvParam.sched_priority, 67);
    EXPECT_EQ(semGive(gate), 0);
    ASSERT_TRUE(waitGone(id));
    EXPECT_EQ(seen.priority.load(), 67);
    EXPECT_EQ(semDelete(gate), 0);
}

TEST_F(Tasks, RoundRobinSwitch) {
    EXPECT_EQ(roundRobinIsEnabled(), 0);
    enableRoundRobin();
    EXPECT_EQ(roundRobinIsEnabled(), 1);
    V2LIN_TCB rr;
    ASSERT_EQ(taskInit(&rr, "rr", 50, 0, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    int policy = -1;
    pthread_attr_getschedpolicy(&rr.attr, &policy);
    EXPECT_EQ(policy, SCHED_RR);
    disableRoundRobin();
    EXPECT_EQ(roundRobinIsEnabled(), 0);
    EXPECT_EQ(kernelTimeSlice(5), 0);
    EXPECT_EQ(roundRobinIsEnabled(), 1);
    pthread_attr_getschedpolicy(&my_task()->attr, &policy);
    EXPECT_EQ(policy, SCHED_RR);
    EXPECT_EQ(kernelTimeSlice(0), 0);
    EXPECT_EQ(roundRobinIsEnabled(), 0);
    pthread_attr_getschedpolicy(&rr.attr, &policy);
    EXPECT_EQ(policy, SCHED_FIFO);
    EXPECT_EQ(taskDeleteForce(rr.taskId), 0);
}

TEST_F(Tasks, ShowRoutinesFormats) {
    V2LIN_TCB blk;
    ASSERT_EQ(taskInit(&blk, "tShow", 60, 0, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    char expect[256];
    snprintf(expect, sizeof expect, "%#10x %10x %10s th:0 s:0x80 w:0 w:0 s:0 SCHED_FIFO  pri 60  prv_pri 60 \n",
             static_cast<unsigned>(blk.taskId), static_cast<unsigned>(reinterpret_cast<uintptr_t>(&blk)), "tShow");
    EXPECT_EQ(capture([&](FILE *f) { taskShow(f, &blk); }), expect);

    snprintf(expect, sizeof expect,
             "Task %x Name: tShow  Task ID: %d  Thread ID: 0  Vxworks priority: 60schedpolicy: SCHED_FIFO  "
             "priority 60  prv_priority 60  detachstate 0 \n",
             static_cast<unsigned>(reinterpret_cast<uintptr_t>(&blk)), static_cast<int>(blk.taskId));
    EXPECT_EQ(capture([&](FILE *f) { display_task(f, blk.taskId); }), expect);

    std::string list = capture([&](FILE *f) { EXPECT_GE(taskList(f, nullptr), 3); });
    EXPECT_EQ(list.rfind("locker=0\ntaskLock_level=0\n", 0), 0u) << list;
    EXPECT_NE(list.find("tUsrRoot"), std::string::npos);
    EXPECT_NE(list.find(" tShow th:0 s:0x80 "), std::string::npos);
    std::string verbose = capture([&](FILE *f) { taskList(f, reinterpret_cast<void *>(1)); });
    EXPECT_GT(verbose.size(), list.size());

    // A pended task shows "P" and the semaphore it waits on.
    SEM_ID sem = semBCreate(0, 0);
    int32_t id = spawn("tPend", 50, [&] { semTake(sem, V2LIN_WAIT_FOREVER); });
    ASSERT_TRUE(waitPended(id));
    std::string pended = capture([&](FILE *f) { taskShow(f, taskTcb(id)); });
    char w[32];
    snprintf(w, sizeof w, "s:0x1 P w:%x ", static_cast<unsigned>(reinterpret_cast<uintptr_t>(sem)));
    EXPECT_NE(pended.find(w), std::string::npos) << pended;
    EXPECT_EQ(semDelete(sem), 0);
    EXPECT_TRUE(waitGone(id));
    EXPECT_EQ(taskDeleteForce(blk.taskId), 0);
}

TEST_F(Tasks, WaitListPrimitives) {
    V2LIN_TCB a, b;
    ASSERT_EQ(taskInit(&a, "wa", 10, 0, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    ASSERT_EQ(taskInit(&b, "wb", 20, 0, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    V2LIN_TCB *list = nullptr;
    link_susp_task(&list, &a);
    link_susp_task(&list, &b);
    link_susp_task(&list, &a);  // moves to the tail
    link_susp_task(&list, nullptr);
    EXPECT_EQ(list, &b);
    EXPECT_EQ(b.waitNext, &a);
    EXPECT_EQ(a.waitNext, nullptr);
    EXPECT_TRUE(a.state & V2LIN_TASK_PENDED);
    // The test thread is not on the list: it is never next.
    EXPECT_EQ(signal_for_my_task(&list, 0), 0);
    EXPECT_EQ(signal_for_my_task(&list, 1), 0);
    unlink_susp_task(&list, &b);
    EXPECT_EQ(list, &a);
    EXPECT_FALSE(b.state & V2LIN_TASK_PENDED);
    unlink_susp_task(&list, &a);
    EXPECT_EQ(list, nullptr);
    // An empty list: a caller that is a task is not next either.
    EXPECT_EQ(signal_for_my_task(&list, 0), 0);
    V2LIN_TCB *mine = nullptr;
    link_susp_task(&mine, my_task());
    EXPECT_EQ(signal_for_my_task(&mine, 0), 1);
    link_susp_task(&mine, &a);  // POSIX priority 10 below the caller's 80
    EXPECT_EQ(signal_for_my_task(&mine, 1), 1);
    unlink_susp_task(&mine, my_task());
    unlink_susp_task(&mine, &a);
    EXPECT_EQ(taskDeleteForce(a.taskId), 0);
    EXPECT_EQ(taskDeleteForce(b.taskId), 0);
}

}  // namespace
