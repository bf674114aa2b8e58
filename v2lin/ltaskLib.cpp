// Tasks: one POSIX thread plus a control block in the global task list.
#include <errno.h>
#include <pthread.h>
#include <sched.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <unistd.h>

#include "v2lin/v2lin_internal.h"

using namespace v2lin;

V2LIN_TCB *task_list = nullptr;
pthread_mutex_t task_list_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t v2pthread_task_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_t locker = 0;
uint32_t taskLock_level = 0;

namespace {

// The leading words of a block are 32-bit on every platform; the POSIX types after them follow
// the platform.
static_assert(offsetof(V2LIN_TCB, reserved) == 0);
static_assert(offsetof(V2LIN_TCB, taskId) == 4);
static_assert(sizeof(((V2LIN_TCB *)nullptr)->args) == 40);
static_assert(sizeof(V2LIN_TV) == 8 && offsetof(V2LIN_TV, tv_usec) == 4);

pthread_cond_t gLockCond = PTHREAD_COND_INITIALIZER;
uint8_t gRoundRobin = 0;
pthread_mutex_t gMallocLock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t gFreeLock = PTHREAD_MUTEX_INITIALIZER;
pthread_once_t gFallbackOnce = PTHREAD_ONCE_INIT;
// Serialises the choice of a new spawn id with its storing, so that two tasks spawned at the same
// time never share an id.
pthread_mutex_t gSpawnLock = PTHREAD_MUTEX_INITIALIZER;

constexpr int kLockPriority = 80;
constexpr int32_t kSpawnIdLimit = 0x10000;

struct ErrorName {
    int code;
    const char *name;
};
constexpr ErrorName kErrorNames[] = {
    {S_taskLib_ILLEGAL_PRIORITY, "S_taskLib_ILLEGAL_PRIORITY"},
    {S_memLib_NOT_ENOUGH_MEMORY, "S_memLib_NOT_ENOUGH_MEMORY"},
    {S_semLib_INVALID_OPERATION, "S_semLib_INVALID_OPERATION"},
    {S_objLib_OBJ_ID_ERROR, "S_objLib_OBJ_ID_ERROR"},
    {S_objLib_OBJ_UNAVAILABLE, "S_objLib_OBJ_UNAVAILABLE"},
    {S_objLib_OBJ_DELETED, "S_objLib_OBJ_DELETED"},
    {S_objLib_OBJ_TIMEOUT, "S_objLib_OBJ_TIMEOUT"},
    {S_msgQLib_INVALID_MSG_LENGTH, "S_msgQLib_INVALID_MSG_LENGTH"},
    {S_smObjLib_NOT_INITIALIZED, "S_smObjLib_NOT_INITIALIZED"},
};

// Broken invariants of this unit abort the process with the usual assertion message.
[[noreturn]] void assertionFailed(const char *expr, unsigned line, const char *function) {
    fprintf(stderr, "%s: v2lin/ltaskLib:%u: %s: Assertion `%s' failed.\n", program_invocation_short_name, line,
            function, expr);
    abort();
}

pthread_t lockerNow() { return __atomic_load_n(&locker, __ATOMIC_RELAXED); }
void setLocker(pthread_t who) { __atomic_store_n(&locker, who, __ATOMIC_RELAXED); }

// First block with the given id; task_list_lock held.
V2LIN_TCB *findLocked(int32_t id) {
    if (id == 0)
        return myTaskLocked();
    for (V2LIN_TCB *t = task_list; t; t = t->next)
        if (t->taskId == id)
            return t;
    return nullptr;
}

pthread_t threadOf(V2LIN_TCB *tcb) {
    pthread_mutex_lock(&task_list_lock);
    pthread_t th = tcb->thread;
    pthread_mutex_unlock(&task_list_lock);
    return th;
}

int attrPriority(const V2LIN_TCB *tcb) {
    struct sched_param sp {};
    pthread_attr_getschedparam(&tcb->attr, &sp);
    return sp.sched_priority;
}

int attrPolicy(const V2LIN_TCB *tcb) {
    int policy = SCHED_OTHER;
    pthread_attr_getschedpolicy(&tcb->attr, &policy);
    return policy;
}

// Kernel priority (0 most urgent .. 255) to POSIX priority.  Kernel priorities 0 and 1 wrap round
// to the policy's minimum because of the remainder step; that is how this runtime has always
// mapped them.
int translatePriority(int p, int policy, int *error) {
    if (p >= 256)
        *error = S_taskLib_ILLEGAL_PRIORITY;
    int min = sched_get_priority_min(policy);
    int max = sched_get_priority_max(policy);
    int q = ((255 - p) * max) / 256;
    if (max - 1 != 0)
        q = q % (max - 1);
    return q < min ? min : q;
}

void destroyBlockSync(V2LIN_TCB *tcb) {
    pthread_attr_destroy(&tcb->attr);
    pthread_mutex_destroy(&tcb->safeLock);
    pthread_cond_destroy(&tcb->safeCond);
    pthread_mutex_destroy(&tcb->delLock);
    pthread_cond_destroy(&tcb->delCond);
}

// Removes a task from the runtime: its semaphore wait, the task list, its name and (when the
// runtime owns it) the block.
void releaseTask(V2LIN_TCB *tcb) {
    pthread_mutex_lock(&task_list_lock);
    struct v2lin_sem *sem = tcb->pendSem;
    pthread_mutex_unlock(&task_list_lock);
    if (sem)
        semForgetWaiter(sem, tcb);
    pthread_mutex_lock(&task_list_lock);
    for (V2LIN_TCB **pp = &task_list; *pp; pp = &(*pp)->next) {
        if (*pp == tcb) {
            *pp = tcb->next;
            break;
        }
    }
    tcb->next = nullptr;
    char *name = tcb->name;
    tcb->name = nullptr;
    pthread_mutex_unlock(&task_list_lock);
    ts_free(name);
    // A pending deleter may still be leaving the block's safety and deletion mutexes.
    pthread_mutex_lock(&tcb->safeLock);
    pthread_mutex_unlock(&tcb->safeLock);
    pthread_mutex_lock(&tcb->delLock);
    pthread_mutex_unlock(&tcb->delLock);
    if (!tcb->callerOwned) {
        destroyBlockSync(tcb);
        ts_free(tcb);
    }
}

// Lets the pending deleters of a task go on and waits until they have left its list.
void notifyDeletion(V2LIN_TCB *tcb, bool forced) {
    if (!waitListHead(&tcb->pendingDeleters))
        return;
    pthread_mutex_lock(&tcb->delLock);
    pthread_cleanup_push(unlockMutexCleanup, &tcb->delLock);
    pthread_mutex_lock(&tcb->safeLock);
    if (forced)
        tcb->forceDeleting = 1;
    pthread_cond_broadcast(&tcb->safeCond);
    pthread_mutex_unlock(&tcb->safeLock);
    while (waitListHead(&tcb->pendingDeleters))
        pthread_cond_wait(&tcb->delCond, &tcb->delLock);
    pthread_cleanup_pop(1);
}

// Clean-up of the task wrapper: a dying thread gives up the scheduler lock.  Tasks waiting in
// taskLock are woken too; they only re-check the owner, and without the wake-up they would wait
// for an unrelated unlock.
void wrapperCleanup(void *) {
    pthread_mutex_lock(&v2pthread_task_lock);
    if (pthread_equal(lockerNow(), pthread_self())) {
        setLocker(0);
        __atomic_store_n(&taskLock_level, 0u, __ATOMIC_RELAXED);
        pthread_cond_broadcast(&gLockCond);
    }
    pthread_mutex_unlock(&v2pthread_task_lock);
}

void *taskWrapper(void *arg) {
    V2LIN_TCB *tcb = static_cast<V2LIN_TCB *>(arg);
    errno = 0;
    pthread_cleanup_push(wrapperCleanup, nullptr);
    sched_yield();
    // The creator stores the thread id after pthread_create returns.  A deletion meanwhile acts
    // between the sleeps, not inside one.
    while (threadOf(tcb) == 0) {
        pthread_testcancel();
        int oldState;
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &oldState);
        sched_yield();
        usleep(5000);
        pthread_setcancelstate(oldState, nullptr);
    }
    pthread_mutex_lock(&task_list_lock);
    V2LIN_FUNCPTR entry = tcb->entry;
    int32_t a[10];
    memcpy(a, tcb->args, sizeof a);
    pthread_mutex_unlock(&task_list_lock);
    if (entry)
        entry(a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9]);
    pthread_cleanup_pop(1);
    taskDeleteForce(0);
    return nullptr;
}

void reportFallback() { errnoLine(EPERM); }

// Pending deleter's clean-up when it is cancelled while waiting for the target to become unsafe.
struct PendCtx {
    V2LIN_TCB *target;
    V2LIN_TCB *me;
};
void pendCleanup(void *arg) {
    PendCtx *c = static_cast<PendCtx *>(arg);
    unlink_susp_task(&c->target->pendingDeleters, c->me);
    pthread_mutex_unlock(&c->target->safeLock);
    pthread_mutex_lock(&c->target->delLock);
    pthread_cond_broadcast(&c->target->delCond);
    pthread_mutex_unlock(&c->target->delLock);
}

void lockNoteCleanup(void *arg) {
    V2LIN_TCB *me = static_cast<V2LIN_TCB *>(arg);
    if (me)
        __atomic_store_n(&me->lockWait, nullptr, __ATOMIC_RELAXED);
    pthread_mutex_unlock(&v2pthread_task_lock);
}

const char *policyName(int policy) {
    switch (policy) {
    case SCHED_FIFO: return "SCHED_FIFO ";
    case SCHED_RR: return "SCHED_RR ";
    case SCHED_OTHER: return "SCHED_OTHER ";
    default: return nullptr;
    }
}

}  // namespace

namespace v2lin {

// Applies the priority in the block's attributes to its live thread; task_list_lock held.
void applyTaskPriority(V2LIN_TCB *tcb, int priority) {
    struct sched_param sp {};
    sp.sched_priority = priority;
    int rc = pthread_attr_setschedparam(&tcb->attr, &sp);
    if (rc != 0)
        errnoLine(rc);
    if (tcb->thread == 0)
        return;
    int policy = SCHED_FIFO;
    pthread_attr_getschedpolicy(&tcb->attr, &policy);
    rc = pthread_setschedparam(tcb->thread, policy, &sp);
    if (rc == EPERM)
        missingPrivilege();
    else if (rc != 0)
        errnoLine(rc);
}

void missingPrivilege() { pthread_once(&gFallbackOnce, reportFallback); }

void errnoLine(int code) {
    NoCancel quiet;
    int saved = errno;
    fprintf(stderr, "\terrno=%i(%x) %s \n", code, static_cast<unsigned>(code), VxWorksError(code));
    errno = saved;
}

void quietWrite(const char *text) {
    NoCancel quiet;
    int saved = errno;
    fputs(text, stderr);
    errno = saved;
}

void heldMutexCleanup(void *arg) {
    HeldMutex *h = static_cast<HeldMutex *>(arg);
    if (h->held)
        heldUnlock(h);
}
void heldLock(HeldMutex *h) {
    pthread_mutex_lock(h->mutex);
    h->held = 1;
}
void heldUnlock(HeldMutex *h) {
    h->held = 0;
    pthread_mutex_unlock(h->mutex);
}
void unlockMutexCleanup(void *mutex) { pthread_mutex_unlock(static_cast<pthread_mutex_t *>(mutex)); }

V2LIN_TCB *myTaskLocked() {
    pthread_t self = pthread_self();
    for (V2LIN_TCB *t = task_list; t; t = t->next)
        if (t->thread != 0 && pthread_equal(t->thread, self))
            return t;
    return nullptr;
}

V2LIN_TCB *waitListHead(V2LIN_TCB *const *list) {
    pthread_mutex_lock(&task_list_lock);
    V2LIN_TCB *head = *list;
    pthread_mutex_unlock(&task_list_lock);
    return head;
}

struct timespec makeDeadline(uint32_t ticks) {
    struct timeval now;
    gettimeofday(&now, nullptr);
    return deadlineFrom(now, ticks);
}

struct timespec deadlineFrom(const struct timeval &now, uint32_t ticks) {
    int64_t usec = static_cast<int64_t>(now.tv_usec) + static_cast<int64_t>(ticks) * kTickUsec;
    int64_t sec = now.tv_sec;
    if (usec >= 1000001) {
        sec += usec / 1000000;
        usec %= 1000000;
    }
    struct timespec ts;
    ts.tv_sec = static_cast<time_t>(sec);
    ts.tv_nsec = static_cast<long>(usec * 1000);
    return ts;
}

struct timespec normalisedDeadline(const struct timespec &deadline) {
    struct timespec ts = deadline;
    while (ts.tv_nsec >= 1000000000L) {
        ts.tv_sec += 1;
        ts.tv_nsec -= 1000000000L;
    }
    return ts;
}

bool deadlinePassed(const struct timespec &deadline) {
    struct timeval now;
    gettimeofday(&now, nullptr);
    if (deadline.tv_sec < now.tv_sec)
        return true;
    if (deadline.tv_sec > now.tv_sec)
        return false;
    return static_cast<long>(now.tv_usec) * 1000 >= deadline.tv_nsec;
}

int condWait(pthread_cond_t *cond, pthread_mutex_t *mutex, const struct timespec *deadline) {
    if (!deadline)
        return pthread_cond_wait(cond, mutex);
    struct timespec ts = normalisedDeadline(*deadline);
    return pthread_cond_timedwait(cond, mutex, &ts);
}

int startTaskThread(V2LIN_TCB *tcb) {
    pthread_t th;
    int rc = pthread_create(&th, &tcb->attr, taskWrapper, tcb);
    if (rc == EPERM) {
        // Explicit real-time scheduling needs a privilege this process lacks: run the task with
        // the creator's scheduling instead, and say so once.
        missingPrivilege();
        pthread_attr_setinheritsched(&tcb->attr, PTHREAD_INHERIT_SCHED);
        rc = pthread_create(&th, &tcb->attr, taskWrapper, tcb);
    }
    if (rc == 0) {
        pthread_mutex_lock(&task_list_lock);
        tcb->thread = th;
        pthread_mutex_unlock(&task_list_lock);
    } else {
        errnoLine(rc);
    }
    return rc;
}

void dumpWords(FILE *stream, const void *record, size_t size) {
    // Records are word aligned; the words are read one by one, as the owner may be updating them.
    const uint32_t *words = static_cast<const uint32_t *>(record);
    for (size_t i = 0; i < size / 4; i++)
        fprintf(stream, "%x ", __atomic_load_n(&words[i], __ATOMIC_RELAXED));
}

}  // namespace v2lin

extern "C" {

const char *VxWorksError(int errnum) {
    for (const ErrorName &e : kErrorNames)
        if (e.code == errnum)
            return e.name;
    return strerror(errnum);
}

V2LIN_TCB *my_task(void) {
    pthread_mutex_lock(&task_list_lock);
    V2LIN_TCB *t = myTaskLocked();
    pthread_mutex_unlock(&task_list_lock);
    return t;
}

V2LIN_TCB *task_for(int32_t id) {
    pthread_mutex_lock(&task_list_lock);
    V2LIN_TCB *t = findLocked(id);
    pthread_mutex_unlock(&task_list_lock);
    return t;
}

void link_susp_task(V2LIN_TCB **list, V2LIN_TCB *task) {
    if (!task)
        return;
    pthread_mutex_lock(&task_list_lock);
    // An earlier occurrence is spliced out with its link still intact, so that the tasks behind
    // it stay on the list; then the task goes to the tail with a cleared link.
    V2LIN_TCB **pp = list;
    while (*pp) {
        if (*pp == task)
            *pp = task->waitNext;
        else
            pp = &(*pp)->waitNext;
    }
    task->waitNext = nullptr;
    *pp = task;
    __atomic_or_fetch(&task->state, V2LIN_TASK_PENDED, __ATOMIC_RELAXED);
    pthread_mutex_unlock(&task_list_lock);
}

void unlink_susp_task(V2LIN_TCB **list, V2LIN_TCB *task) {
    if (!task)
        return;
    pthread_mutex_lock(&task_list_lock);
    for (V2LIN_TCB **pp = list; *pp; pp = &(*pp)->waitNext) {
        if (*pp == task) {
            *pp = task->waitNext;
            break;
        }
    }
    task->waitNext = nullptr;
    __atomic_and_fetch(&task->state, ~V2LIN_TASK_PENDED, __ATOMIC_RELAXED);
    pthread_mutex_unlock(&task_list_lock);
}

int signal_for_my_task(V2LIN_TCB **list, int byPriority) {
    pthread_mutex_lock(&task_list_lock);
    V2LIN_TCB *me = myTaskLocked();
    V2LIN_TCB *next = *list;
    if (byPriority) {
        for (V2LIN_TCB *t = *list; t; t = t->waitNext)
            if (t->prvParam.sched_priority > next->prvParam.sched_priority)
                next = t;
    }
    pthread_mutex_unlock(&task_list_lock);
    return next == me;
}

void *ts_malloc(size_t size) {
    pthread_mutex_lock(&gMallocLock);
    void *p = malloc(size);
    pthread_mutex_unlock(&gMallocLock);
    return p;
}

void ts_free(void *block) {
    pthread_mutex_lock(&gFreeLock);
    free(block);
    pthread_mutex_unlock(&gFreeLock);
}

int taskInit(V2LIN_TCB *tcb, const char *name, int priority, int options, char *stackBase, int stackSize,
             V2LIN_FUNCPTR entry, int32_t a1, int32_t a2, int32_t a3, int32_t a4, int32_t a5, int32_t a6, int32_t a7,
             int32_t a8, int32_t a9, int32_t a10) {
    (void)stackBase;
    (void)stackSize;
    if (options != 0)
        return fail(ENOSYS);
    if (!tcb)
        return fail(S_objLib_OBJ_ID_ERROR);

    pthread_mutex_lock(&task_list_lock);
    memset(tcb, 0, sizeof *tcb);
    // Ids are 32-bit: on a 64-bit host the id of a caller-owned block is its address's low word.
    tcb->taskId = static_cast<int32_t>(reinterpret_cast<uintptr_t>(tcb));
    if (name) {
        size_t len = strlen(name) + 1;
        tcb->name = static_cast<char *>(ts_malloc(len));
        if (tcb->name)
            memcpy(tcb->name, name, len);
    }
    tcb->vxPriority = priority;
    pthread_attr_init(&tcb->attr);
    pthread_attr_getschedparam(&tcb->attr, &tcb->prvParam);
    int policy = gRoundRobin ? SCHED_RR : SCHED_FIFO;
    int rc = pthread_attr_setschedpolicy(&tcb->attr, policy);
    if (rc != 0)
        errnoLine(rc);

    int error = 0;
    translatePriority(priority, policy, &error);
    if (error) {
        errno = error;
        errnoLine(error);
    }
    // The thread runs at the kernel priority number itself; the translation above only checks
    // the range.
    tcb->prvParam.sched_priority = priority;
    rc = pthread_attr_setschedparam(&tcb->attr, &tcb->prvParam);
    if (rc != 0)
        errnoLine(rc);
    pthread_attr_setinheritsched(&tcb->attr, PTHREAD_EXPLICIT_SCHED);

    tcb->entry = entry;
    const int32_t args[10] = {a1, a2, a3, a4, a5, a6, a7, a8, a9, a10};
    memcpy(tcb->args, args, sizeof args);
    tcb->callerOwned = 1;
    tcb->state = V2LIN_TASK_CREATED;
    pthread_mutex_init(&tcb->safeLock, nullptr);
    pthread_cond_init(&tcb->safeCond, nullptr);
    pthread_mutex_init(&tcb->delLock, nullptr);
    pthread_cond_init(&tcb->delCond, nullptr);

    if (!error) {
        V2LIN_TCB **pp = &task_list;
        while (*pp)
            pp = &(*pp)->next;
        *pp = tcb;
    }
    char *unusedName = error ? tcb->name : nullptr;
    if (error) {
        tcb->name = nullptr;
        destroyBlockSync(tcb);
    }
    pthread_mutex_unlock(&task_list_lock);
    ts_free(unusedName);
    return error ? fail(error) : kOk;
}

int taskActivate(int32_t id) {
    taskLock();
    int result = kOk;
    pthread_mutex_lock(&task_list_lock);
    V2LIN_TCB *tcb = findLocked(id);
    bool start = tcb && __atomic_load_n(&tcb->state, __ATOMIC_RELAXED) == V2LIN_TASK_CREATED;
    if (start) {
        __atomic_store_n(&tcb->state, 0u, __ATOMIC_RELAXED);
        tcb->thread = 0;
    }
    pthread_mutex_unlock(&task_list_lock);
    if (!tcb) {
        result = fail(S_objLib_OBJ_ID_ERROR);
    } else if (start && startTaskThread(tcb) != 0) {
        releaseTask(tcb);
        result = fail(S_memLib_NOT_ENOUGH_MEMORY);
    }
    taskUnlock();
    return result;
}

int32_t taskSpawn(const char *name, int priority, int options, int stackSize, V2LIN_FUNCPTR entry, int32_t a1,
                  int32_t a2, int32_t a3, int32_t a4, int32_t a5, int32_t a6, int32_t a7, int32_t a8, int32_t a9,
                  int32_t a10) {
    int32_t id = S_smObjLib_NOT_INITIALIZED;
    V2LIN_TCB *tcb = static_cast<V2LIN_TCB *>(ts_malloc(sizeof(V2LIN_TCB)));
    if (tcb) {
        memset(tcb, 0, sizeof *tcb);
        pthread_mutex_lock(&gSpawnLock);
        int32_t largest = 0;
        pthread_mutex_lock(&task_list_lock);
        // Only small positive ids come from taskSpawn; block-address ids are skipped (on a 64-bit
        // host an address's low word may even look negative).
        for (V2LIN_TCB *t = task_list; t; t = t->next)
            if (t->taskId > 0 && t->taskId < kSpawnIdLimit && t->taskId > largest)
                largest = t->taskId;
        pthread_mutex_unlock(&task_list_lock);
        id = largest + 1;
        char generated[16];
        if (!name) {
            snprintf(generated, sizeof generated, "t%d", static_cast<int>(id));
            name = generated;
        }
        if (taskInit(tcb, name, priority, options, nullptr, stackSize, entry, a1, a2, a3, a4, a5, a6, a7, a8, a9,
                     a10) == kOk) {
            pthread_mutex_lock(&task_list_lock);
            tcb->taskId = id;
            tcb->callerOwned = 0;
            pthread_mutex_unlock(&task_list_lock);
        } else {
            ts_free(tcb);
        }
        pthread_mutex_unlock(&gSpawnLock);
    }
    int rc = taskActivate(id);
    if (rc != kOk) {
        errno = rc;
        return kError;
    }
    return id;
}

int taskLock(void) {
    pthread_t self = pthread_self();
    V2LIN_TCB *me = my_task();
    for (;;) {
        bool owned = false;
        pthread_mutex_lock(&v2pthread_task_lock);
        pthread_cleanup_push(lockNoteCleanup, me);
        pthread_t owner = lockerNow();
        if (owner == 0 || pthread_equal(owner, self)) {
            setLocker(self);
            uint32_t level = __atomic_load_n(&taskLock_level, __ATOMIC_RELAXED);
            if (level != 0xFFFFFFFFu)
                __atomic_store_n(&taskLock_level, level + 1, __ATOMIC_RELAXED);
            pthread_cond_broadcast(&gLockCond);
            owned = true;
        } else {
            if (me)
                __atomic_store_n(&me->lockWait, &v2pthread_task_lock, __ATOMIC_RELAXED);
            pthread_cond_wait(&gLockCond, &v2pthread_task_lock);
        }
        pthread_cleanup_pop(1);
        pthread_testcancel();
        if (owned)
            break;
    }
    if (!pthread_equal(self, lockerNow()))
        assertionFailed("pthread_self() == locker", 210, __func__);

    pthread_mutex_lock(&task_list_lock);
    me = myTaskLocked();
    if (me)
        applyTaskPriority(me, kLockPriority);
    pthread_mutex_unlock(&task_list_lock);
    return kOk;
}

int taskUnlock(void) {
    pthread_mutex_lock(&v2pthread_task_lock);
    if (pthread_equal(lockerNow(), pthread_self())) {
        uint32_t level = __atomic_load_n(&taskLock_level, __ATOMIC_RELAXED);
        if (level > 0)
            __atomic_store_n(&taskLock_level, --level, __ATOMIC_RELAXED);
        if (level == 0) {
            pthread_mutex_lock(&task_list_lock);
            V2LIN_TCB *me = myTaskLocked();
            if (me)
                applyTaskPriority(me, me->prvParam.sched_priority);
            pthread_mutex_unlock(&task_list_lock);
            setLocker(0);
            pthread_cond_broadcast(&gLockCond);
        }
    }
    pthread_mutex_unlock(&v2pthread_task_lock);
    return kOk;
}

int taskSafe(void) {
    taskLock();
    V2LIN_TCB *me = my_task();
    if (me) {
        pthread_mutex_lock(&me->safeLock);
        if (++me->safeCount < 1) {
            quietWrite("delete_safe_count overflow");
            me->safeCount--;
        }
        pthread_mutex_unlock(&me->safeLock);
    }
    taskUnlock();
    return kOk;
}

int taskUnsafe(void) {
    taskLock();
    V2LIN_TCB *me = my_task();
    int32_t was = 0;
    if (me) {
        pthread_mutex_lock(&me->safeLock);
        was = me->safeCount;
        if (me->safeCount > 0)
            me->safeCount--;
        pthread_mutex_unlock(&me->safeLock);
    }
    taskUnlock();
    if (me && was == 1)
        notifyDeletion(me, false);
    return kOk;
}

int taskDelete(int32_t id) {
    V2LIN_TCB *me = my_task();
    taskLock();
    V2LIN_TCB *target = task_for(id);
    if (!target) {
        taskUnlock();
        return fail(S_objLib_OBJ_DELETED);
    }
    pthread_mutex_lock(&target->safeLock);
    int32_t count = target->safeCount;
    pthread_mutex_unlock(&target->safeLock);
    if (count < 1) {
        int rc = taskDeleteForce(id);
        int err = errno;
        taskUnlock();
        errno = err;
        return rc;
    }
    if (target == me) {
        taskUnlock();
        return fail(S_objLib_OBJ_UNAVAILABLE);
    }

    // Pend until the target becomes unsafe.  The call then returns OK without deleting it.
    link_susp_task(&target->pendingDeleters, me);
    pthread_mutex_lock(&target->safeLock);
    PendCtx ctx{target, me};
    bool forced = false;
    pthread_cleanup_push(pendCleanup, &ctx);
    taskUnlock();
    while (target->safeCount > 0 && !target->forceDeleting)
        pthread_cond_wait(&target->safeCond, &target->safeLock);
    forced = target->forceDeleting != 0;
    // A target that is being force-deleted holds the scheduler lock and waits for its pending
    // deleters to leave: re-taking the lock here would deadlock, so a released deleter leaves
    // without it.
    if (!forced)
        taskLock();
    if (me) {
        pthread_mutex_lock(&task_list_lock);
        struct v2lin_sem *sem = me->pendSem;
        pthread_mutex_unlock(&task_list_lock);
        if (sem)
            semForgetWaiter(sem, me);
    }
    // The deleter leaves the target's pending-deleter list before the target is told: a deleter
    // left on the list would keep the target waiting in taskUnsafe for ever and leave a stale link.
    pthread_cleanup_pop(1);
    if (!forced)
        taskUnlock();
    return kOk;
}

int taskDeleteForce(int32_t id) {
    taskLock();
    V2LIN_TCB *target = task_for(id);
    if (!target) {
        taskUnlock();
        return fail(S_objLib_OBJ_DELETED);
    }
    notifyDeletion(target, true);
    pthread_t self = pthread_self();
    pthread_t th = threadOf(target);
    if (th != 0 && pthread_equal(th, self)) {
        releaseTask(target);
        // Nobody joins a task that ends itself.
        pthread_detach(self);
        taskUnlock();
    } else {
        if (th != 0) {
            pthread_cancel(th);
            pthread_join(th, nullptr);
        }
        releaseTask(target);
    }
    taskUnlock();
    return kOk;
}

int taskRestart(int32_t id) {
    taskLock();
    V2LIN_TCB *me = my_task();
    V2LIN_TCB *target = id == 0 ? me : task_for(id);
    // An unknown id leaves the caller holding the scheduler lock.
    if (!target)
        return fail(S_objLib_OBJ_ID_ERROR);
    pthread_mutex_lock(&task_list_lock);
    struct v2lin_sem *sem = target->pendSem;
    pthread_mutex_unlock(&task_list_lock);
    if (sem)
        semForgetWaiter(sem, target);
    if (target == me) {
        pthread_detach(pthread_self());
        // The block no longer names this thread: until the timer task starts the new one, a
        // deletion finds no thread to cancel.
        pthread_mutex_lock(&task_list_lock);
        target->thread = 0;
        int32_t id = target->taskId;
        pthread_mutex_unlock(&task_list_lock);
        armSelfRestart(id);
        pthread_exit(nullptr);
    }
    pthread_t th = threadOf(target);
    if (th != 0) {
        pthread_cancel(th);
        pthread_join(th, nullptr);
    }
    pthread_mutex_lock(&task_list_lock);
    target->thread = 0;
    __atomic_store_n(&target->state, 0u, __ATOMIC_RELAXED);
    target->lockWait = nullptr;
    pthread_mutex_unlock(&task_list_lock);
    int result = kOk;
    if (startTaskThread(target) != 0) {
        perror("taskRestart pthread_create returned error:");
        result = fail(S_memLib_NOT_ENOUGH_MEMORY);
    }
    taskUnlock();
    return result;
}

int taskDelay(int ticks) {
    V2LIN_TCB *me = my_task();
    if (me)
        __atomic_or_fetch(&me->state, V2LIN_TASK_DELAYED, __ATOMIC_RELAXED);
    // The sleep goes in one-tick pieces and deletion acts between them: a task is never
    // cancelled inside usleep itself (whose blocking state would not be unwound cleanly), and a
    // deleter waits at most one tick.
    uint32_t pieces = ticks > 0 ? static_cast<uint32_t>(ticks) : 0;
    do {
        pthread_testcancel();
        int oldState;
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &oldState);
        usleep(pieces ? kTickUsec : 0);
        pthread_setcancelstate(oldState, nullptr);
    } while (pieces && --pieces);
    pthread_testcancel();
    if (me)
        __atomic_and_fetch(&me->state, ~V2LIN_TASK_DELAYED, __ATOMIC_RELAXED);
    return kOk;
}

int32_t taskIdSelf(void) {
    pthread_mutex_lock(&task_list_lock);
    V2LIN_TCB *me = myTaskLocked();
    int32_t id = me ? me->taskId : 0;
    pthread_mutex_unlock(&task_list_lock);
    return id;
}

int taskIdVerify(int32_t id) { return task_for(id) ? kOk : fail(S_objLib_OBJ_ID_ERROR); }

int taskIsReady(int32_t id) {
    pthread_mutex_lock(&task_list_lock);
    V2LIN_TCB *t = findLocked(id);
    int ready = t && (__atomic_load_n(&t->state, __ATOMIC_RELAXED) & V2LIN_TASK_NOT_READY) == 0;
    pthread_mutex_unlock(&task_list_lock);
    return ready;
}

int taskIsSuspended(int32_t id) {
    (void)id;
    errno = ENOSYS;
    return 0;
}

int taskSuspend(int32_t id) {
    (void)id;
    errno = ENOSYS;
    return ENOSYS;
}

int taskResume(int32_t id) {
    (void)id;
    errno = ENOSYS;
    return ENOSYS;
}

char *taskName(int32_t id) {
    static char unknown[] = "NULLTASK";
    pthread_mutex_lock(&task_list_lock);
    V2LIN_TCB *t = findLocked(id);
    char *name = t ? t->name : unknown;
    pthread_mutex_unlock(&task_list_lock);
    return name;
}

int32_t taskNameToId(const char *name) {
    if (!name)
        return kError;
    int32_t id = kError;
    pthread_mutex_lock(&task_list_lock);
    for (V2LIN_TCB *t = task_list; t; t = t->next) {
        if (t->name && strcmp(t->name, name) == 0) {
            id = t->taskId;
            break;
        }
    }
    pthread_mutex_unlock(&task_list_lock);
    return id;
}

V2LIN_TCB *taskTcb(int32_t id) { return task_for(id); }

int taskIdListGet(int32_t *list, int max) {
    if (!list)
        assertionFailed("list", 711, __func__);
    taskLock();
    int n = 0;
    pthread_mutex_lock(&task_list_lock);
    for (V2LIN_TCB *t = task_list; t && n < max; t = t->next)
        list[n++] = t->taskId;
    pthread_mutex_unlock(&task_list_lock);
    taskUnlock();
    return n;
}

int taskPriorityGet(int32_t id, int *priority) {
    pthread_mutex_lock(&task_list_lock);
    V2LIN_TCB *t = findLocked(id);
    if (t && priority)
        *priority = t->vxPriority;
    pthread_mutex_unlock(&task_list_lock);
    return t ? kOk : fail(S_objLib_OBJ_ID_ERROR);
}

int taskPrioritySet(int32_t id, int priority) {
    taskLock();
    pthread_mutex_lock(&task_list_lock);
    V2LIN_TCB *t = findLocked(id);
    int error = 0;
    if (t) {
        int q = translatePriority(priority, attrPolicy(t), &error);
        t->vxPriority = priority;
        t->prvParam.sched_priority = q;
        // The caller's own change takes effect when the taskUnlock below restores its base priority.
        if (id != 0 && t != myTaskLocked())
            applyTaskPriority(t, q);
    }
    pthread_mutex_unlock(&task_list_lock);
    taskUnlock();
    if (!t)
        return fail(S_objLib_OBJ_ID_ERROR);
    return error ? fail(error) : kOk;
}

int kernelTimeSlice(int ticks) {
    taskLock();
    gRoundRobin = ticks > 0;
    int policy = gRoundRobin ? SCHED_RR : SCHED_FIFO;
    pthread_mutex_lock(&task_list_lock);
    for (V2LIN_TCB *t = task_list; t; t = t->next) {
        int rc = pthread_attr_setschedpolicy(&t->attr, policy);
        if (rc != 0)
            errnoLine(rc);
        applyTaskPriority(t, attrPriority(t));
    }
    pthread_mutex_unlock(&task_list_lock);
    taskUnlock();
    return kOk;
}

int enableRoundRobin(void) {
    __atomic_store_n(&gRoundRobin, 1, __ATOMIC_RELAXED);
    return kOk;
}

int disableRoundRobin(void) {
    __atomic_store_n(&gRoundRobin, 0, __ATOMIC_RELAXED);
    return kOk;
}

int roundRobinIsEnabled(void) { return __atomic_load_n(&gRoundRobin, __ATOMIC_RELAXED); }

int taskShow(FILE *stream, V2LIN_TCB *tcb) {
    fprintf(stream, "%#10x %10x %10s ", static_cast<unsigned>(tcb->taskId), hex32(tcb), nameOrNull(tcb->name));
    fprintf(stream, "th:%x ", static_cast<unsigned>(tcb->thread));
    uint32_t state = __atomic_load_n(&tcb->state, __ATOMIC_RELAXED);
    fprintf(stream, "s:%#x ", state);
    if (state & V2LIN_TASK_PENDED)
        fputs("P ", stream);
    if (state & V2LIN_TASK_DELAYED)
        fputs("D ", stream);
    fprintf(stream, "w:%x ", hex32(tcb->pendSem));
    if (tcb->pendSem) {
        const char *owner = semOwnerName(tcb->pendSem);
        if (owner)
            fprintf(stream, "%s ", owner);
    }
    fprintf(stream, "w:%x ", hex32(__atomic_load_n(&tcb->lockWait, __ATOMIC_RELAXED)));
    fprintf(stream, "s:%x ", hex32(tcb->pendingDeleters));
    int policy = attrPolicy(tcb);
    const char *pn = policyName(policy);
    if (pn)
        fputs(pn, stream);
    else
        fprintf(stream, "schedpolicy: %d ", policy);
    fprintf(stream, " pri %d ", attrPriority(tcb));
    fprintf(stream, " prv_pri %d ", tcb->prvParam.sched_priority);
    fputc('\n', stream);
    return kOk;
}

int taskList(FILE *stream, void *verbose) {
    fprintf(stream, "locker=%x\n", static_cast<unsigned>(lockerNow()));
    fprintf(stream, "taskLock_level=%x\n", __atomic_load_n(&taskLock_level, __ATOMIC_RELAXED));
    int n = 0;
    for (V2LIN_TCB *t = task_list; t; t = t->next) {
        taskShow(stream, t);
        if (verbose) {
            dumpWords(stream, t, sizeof *t);
            fputc('\n', stream);
        }
        n++;
    }
    return n;
}

int display_task(FILE *stream, int32_t id) {
    V2LIN_TCB *t = task_for(id);
    if (!t)
        return kError;
    fprintf(stream, "Task %x Name: %s  Task ID: %d  Thread ID: %lx  Vxworks priority: %d", hex32(t),
            nameOrNull(t->name), static_cast<int>(t->taskId), static_cast<unsigned long>(t->thread),
            static_cast<int>(t->vxPriority));
    int policy = attrPolicy(t);
    const char *pn = policyName(policy);
    if (pn)
        fprintf(stream, "schedpolicy: %s", pn);
    else
        fprintf(stream, "schedpolicy: %d ", policy);
    int detach = 0;
    pthread_attr_getdetachstate(&t->attr, &detach);
    fprintf(stream, " priority %d ", attrPriority(t));
    fprintf(stream, " prv_priority %d ", t->prvParam.sched_priority);
    fprintf(stream, " detachstate %d ", detach);
    fputc('\n', stream);
    return kOk;
}

int taskVarInit(void) { return kOk; }
int taskVarAdd(int32_t id, int *pVar) {
    (void)id;
    (void)pVar;
    return kOk;
}
int taskVarDelete(int32_t id, int *pVar) {
    (void)id;
    (void)pVar;
    return kOk;
}
int taskVarGet(int32_t id, int *pVar) {
    (void)id;
    (void)pVar;
    return kOk;
}
int taskVarSet(int32_t id, int *pVar, int value) {
    (void)id;
    (void)pVar;
    (void)value;
    return kOk;
}

}  // extern "C"
