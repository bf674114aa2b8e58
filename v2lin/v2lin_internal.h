// Internal helpers shared by the runtime's units (never exported).
#pragma once

#include <errno.h>
#include <pthread.h>
#include <stdint.h>
#include <sys/time.h>
#include <time.h>

#include "v2lin/v2lin.h"

namespace v2lin {

constexpr int kOk = 0;
constexpr int kError = -1;
constexpr uint32_t kWaitForever = 0xFFFFFFFFu;
constexpr int kTickUsec = 10000;

// Leaves a kernel error code in errno and returns ERROR.
inline int fail(int code) {
    errno = code;
    return kError;
}

// Semaphores, queues and watchdogs live in global lists through their `next` field, each guarded
// by a list mutex, each record by its own `lock`.

// Appends a record at the tail of its list.
template <class R>
void appendRecord(R **head, pthread_mutex_t *listLock, R *record) {
    pthread_mutex_lock(listLock);
    R **pp = head;
    while (*pp)
        pp = &(*pp)->next;
    *pp = record;
    pthread_mutex_unlock(listLock);
}

// Finds a handle in its list and returns it with its mutex held (null when unknown): the list
// mutex is released only once the record mutex is taken.  `next` receives the successor; with
// `unlink` the record leaves the list in the same step, so no later lookup can reach it.
template <class R>
R *lookupRecord(R **head, pthread_mutex_t *listLock, R *wanted, bool unlink = false, R **next = nullptr) {
    pthread_mutex_lock(listLock);
    R **pp = head;
    while (*pp && *pp != wanted)
        pp = &(*pp)->next;
    R *r = *pp;
    if (r) {
        pthread_mutex_lock(&r->lock);
        if (next)
            *next = r->next;
        if (unlink)
            *pp = r->next;
    }
    pthread_mutex_unlock(listLock);
    return r;
}

// Writes the errno line for a failed POSIX call.  `code` is the failing call's error number; the
// caller's errno is left as it was, and the write cannot be a cancellation point.
void errnoLine(int code);

// Keeps the calling thread from being cancelled while it exists (writes under a runtime mutex:
// output calls may be cancellation points).
class NoCancel {
public:
    NoCancel() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &old_); }
    ~NoCancel() { pthread_setcancelstate(old_, nullptr); }
    NoCancel(const NoCancel &) = delete;
    NoCancel &operator=(const NoCancel &) = delete;

private:
    int old_;
};

// Writes text to stderr outside cancellation, errno kept.
void quietWrite(const char *text);

// A mutex whose ownership a cancellation clean-up handler must know about: waits that drop and
// retake the mutex (polling sleeps) flip `held`, so the handler unlocks only what is held.
struct HeldMutex {
    pthread_mutex_t *mutex;
    int held;
};
void heldMutexCleanup(void *arg);  // unlocks when held
void heldLock(HeldMutex *h);
void heldUnlock(HeldMutex *h);

// Plain unlock for pthread_cleanup_push.
void unlockMutexCleanup(void *mutex);

// Calling task's block looked up without taking task_list_lock (caller holds it).
V2LIN_TCB *myTaskLocked();

// Puts a POSIX priority into a block's attributes and applies it to its live thread with the
// attributes' policy (errno line on failure); task_list_lock held.
void applyTaskPriority(V2LIN_TCB *tcb, int priority);

// Real-time scheduling is not permitted in this process (EPERM): the errno line is printed once
// per process, however many scheduling calls meet the same refusal.
void missingPrivilege();

// Reads a wait-list head under task_list_lock.
V2LIN_TCB *waitListHead(V2LIN_TCB *const *list);

// Absolute deadline of a timed wait: gettimeofday plus ticks * 10 ms, whole seconds carried only
// when the microsecond sum is 1 000 001 or more, so tv_nsec may be exactly 1 000 000 000.
struct timespec makeDeadline(uint32_t ticks);
// The same from a given time of day.
struct timespec deadlineFrom(const struct timeval &now, uint32_t ticks);
// The same deadline in the form pthread_cond_timedwait accepts (tv_nsec below one second).
struct timespec normalisedDeadline(const struct timespec &deadline);
// True once the deadline has passed (seconds first, then microseconds against nanoseconds).
bool deadlinePassed(const struct timespec &deadline);
// Waits on `cond` until the deadline (or for ever when `deadline` is null); returns the wait's result.
int condWait(pthread_cond_t *cond, pthread_mutex_t *mutex, const struct timespec *deadline);

// Drops a task from the waiter list of the semaphore it pends on (used when a task is released).
void semForgetWaiter(struct v2lin_sem *sem, V2LIN_TCB *task);

// Name of the task that owns a semaphore, or null when it has none.
const char *semOwnerName(struct v2lin_sem *sem);

// Starts the thread of a task block with its attributes and the task wrapper; falls back to
// inherited scheduling when explicit real-time scheduling is not permitted.  Returns 0 or the
// pthread_create error.
int startTaskThread(V2LIN_TCB *tcb);

// Self restart through a one-tick watchdog (arranged by taskRestart of the calling task).
void armSelfRestart(int32_t id);

// Dumps every 32-bit word of a record as "%x ".
void dumpWords(FILE *stream, const void *record, size_t size);

// Pointers printed with "%x" show their low 32 bits.
inline unsigned hex32(const void *p) { return static_cast<unsigned>(reinterpret_cast<uintptr_t>(p)); }
inline const char *nameOrNull(const char *s) { return s ? s : "(null)"; }

}  // namespace v2lin
