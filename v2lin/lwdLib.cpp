// Watchdog timers served by the timer task, the clock, start-up of the runtime inside the host
// process, the time-stamp trace and the crash hook.
#include <errno.h>
#include <pthread.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "v2lin/v2lin_internal.h"

using namespace v2lin;

struct v2lin_wdog {
    pthread_mutex_t lock;
    int32_t delay;  // armed delay in milliseconds, 0 = not armed
    uint32_t start;  // monotonic milliseconds when started (wraps)
    V2LIN_WDFUNC handler;
    int32_t arg;
    v2lin_wdog *next;  // global watchdog list
};

int32_t offset = 0;
V2LIN_TV start_tv = {0, 0};
V2LIN_TV prev_tv = {0, 0};
int exit_value = 0;

namespace {

constexpr int kTimerPassTicks = 5;
constexpr int kClockRate = 1000;
constexpr int kRootPriority = 80;
constexpr int kTimerTaskPriority = 79;
constexpr long kTraceQuietUsec = 10000;
constexpr size_t kPidTextSize = 19;

v2lin_wdog *gWdList = nullptr;
pthread_mutex_t gWdListLock = PTHREAD_MUTEX_INITIALIZER;

WDOG_ID gRestartWd = nullptr;
pthread_mutex_t gInitLock = PTHREAD_MUTEX_INITIALIZER;
int gInitDone = 0;
V2LIN_TCB gUsrRoot;
V2LIN_TCB gExcTask;
pid_t gGdbChild = 0;

v2lin_wdog *lookup(v2lin_wdog *wd, v2lin_wdog **next = nullptr, bool unlink = false) {
    return lookupRecord(&gWdList, &gWdListLock, wd, unlink, next);
}

uint32_t monotonicMs() {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<uint32_t>(static_cast<uint64_t>(ts.tv_sec) * 1000u +
                                 static_cast<uint64_t>(ts.tv_nsec) / 1000000u);
}

// Reads the first number of /proc/uptime; false when the file cannot be opened or read.
bool readUptime(double *seconds) {
    FILE *f = fopen("/proc/uptime", "r");
    if (!f)
        return false;
    int n = fscanf(f, "%lf", seconds);
    fclose(f);
    return n == 1;
}

// Restart of a task that restarted itself, run by the timer task.
void restartHandler(int32_t id) {
    wdDelete(gRestartWd);
    V2LIN_TCB *t = task_for(id);
    if (!t)
        return;
    pthread_mutex_lock(&task_list_lock);
    __atomic_store_n(&t->state, 0u, __ATOMIC_RELAXED);
    t->thread = 0;
    t->lockWait = nullptr;
    pthread_mutex_unlock(&task_list_lock);
    int rc = startTaskThread(t);
    if (rc != 0)
        errnoLine(rc);
}

V2LIN_TV tvNow() {
    struct timeval tv;
    gettimeofday(&tv, nullptr);
    return V2LIN_TV{static_cast<int32_t>(tv.tv_sec), static_cast<int32_t>(tv.tv_usec)};
}

V2LIN_TV tvSub(V2LIN_TV a, V2LIN_TV b) {
    V2LIN_TV d{a.tv_sec - b.tv_sec, a.tv_usec - b.tv_usec};
    if (d.tv_usec < 0) {
        d.tv_usec += 1000000;
        d.tv_sec -= 1;
    }
    return d;
}

}  // namespace

namespace v2lin {

void armSelfRestart(int32_t id) {
    gRestartWd = wdCreate();
    if (gRestartWd)
        wdStart(gRestartWd, 1, restartHandler, id);
}

}  // namespace v2lin

extern "C" {

WDOG_ID wdCreate(void) {
    v2lin_wdog *w = static_cast<v2lin_wdog *>(ts_malloc(sizeof(v2lin_wdog)));
    if (!w)
        return nullptr;
    memset(w, 0, sizeof *w);
    pthread_mutex_init(&w->lock, nullptr);
    appendRecord(&gWdList, &gWdListLock, w);
    return w;
}

int wdStart(WDOG_ID wd, int32_t delay, V2LIN_WDFUNC handler, int32_t argument) {
    v2lin_wdog *w = lookup(wd);
    if (!w)
        return fail(S_objLib_OBJ_ID_ERROR);
    w->start = monotonicMs();
    w->delay = delay < 1 ? 1 : delay;
    w->handler = handler;
    w->arg = argument;
    pthread_mutex_unlock(&w->lock);
    return kOk;
}

int wdCancel(WDOG_ID wd) {
    v2lin_wdog *w = lookup(wd);
    if (!w)
        return fail(S_objLib_OBJ_ID_ERROR);
    w->delay = 0;
    pthread_mutex_unlock(&w->lock);
    return kOk;
}

int wdDelete(WDOG_ID wd) {
    // Unlinked in the same step as the lookup, so that a timer pass cannot find it any more.
    v2lin_wdog *w = lookup(wd, nullptr, true);
    if (!w)
        return fail(S_objLib_OBJ_ID_ERROR);
    pthread_mutex_unlock(&w->lock);
    pthread_mutex_destroy(&w->lock);
    ts_free(w);
    return kOk;
}

int wdogShow(FILE *stream) {
    NoCancel quiet;
    int n = 0;
    pthread_mutex_lock(&gWdListLock);
    for (v2lin_wdog *w = gWdList; w; w = w->next, n++)
        fprintf(stream, "%x %i %i\n", static_cast<unsigned>(reinterpret_cast<uintptr_t>(w->handler)), w->delay, w->arg);
    pthread_mutex_unlock(&gWdListLock);
    return n;
}

void process_timer_list(void) {
    pthread_mutex_lock(&gWdListLock);
    v2lin_wdog *w = gWdList;
    pthread_mutex_unlock(&gWdListLock);
    while (w) {
        v2lin_wdog *next = nullptr;
        if (!lookup(w, &next))
            break;  // gone from the list: the pass ends
        if (w->delay > 0) {
            uint32_t now = monotonicMs();
            uint32_t elapsed = now < w->start ? now - w->start - 1 : now - w->start;
            if (elapsed >= static_cast<uint32_t>(w->delay) && w->handler) {
                V2LIN_WDFUNC handler = w->handler;
                int32_t arg = w->arg;
                w->delay = 0;
                pthread_mutex_unlock(&w->lock);
                // No runtime lock is held: the handler may restart its own timer.
                handler(arg);
                w = next;
                continue;
            }
        }
        pthread_mutex_unlock(&w->lock);
        w = next;
    }
}

int32_t exception_task(int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t) {
    for (;;) {
        process_timer_list();
        taskDelay(kTimerPassTicks);
    }
    return 0;
}

int sysClkRateGet(void) { return kClockRate; }

uint32_t tickGet(void) {
    double up = 0;
    if (!readUptime(&up))
        return 0;
    return static_cast<uint32_t>(static_cast<uint64_t>(up * 1000.0));
}

void tickSet(uint32_t ticks) {
    double up = 0;
    if (!readUptime(&up))
        return;
    // Recorded only: tickGet keeps counting milliseconds since boot.
    __atomic_store_n(&offset, static_cast<int32_t>(static_cast<int64_t>(ticks - up * 1000.0 / 10.0)), __ATOMIC_RELAXED);
}

int v2lin_init(void) {
    pthread_mutex_lock(&gInitLock);
    pthread_cleanup_push(unlockMutexCleanup, &gInitLock);
    if (!gInitDone) {
        gInitDone = 1;
        // The calling thread becomes "tUsrRoot" without changing its real priority.
        taskInit(&gUsrRoot, "tUsrRoot", kRootPriority, 0, nullptr, 0, nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
        pthread_mutex_lock(&task_list_lock);
        __atomic_store_n(&gUsrRoot.state, 0u, __ATOMIC_RELAXED);
        gUsrRoot.thread = pthread_self();
        pthread_mutex_unlock(&task_list_lock);
        taskActivate(gUsrRoot.taskId);
        taskInit(&gExcTask, "tExcTask", kTimerTaskPriority, 0, nullptr, 0, exception_task, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                 0);
        taskActivate(gExcTask.taskId);
    }
    pthread_cleanup_pop(1);
    return kOk;
}

int trace_time(void) {
    time_t clock = time(nullptr);
    V2LIN_TV now = tvNow();
    if (start_tv.tv_sec == 0 && start_tv.tv_usec == 0) {
        start_tv = now;
        struct tm local;
        localtime_r(&clock, &local);
        fprintf(stderr, "time=%04d-%02d-%02d %02d:%02d:%02d.%06d\n", local.tm_year + 1900, local.tm_mon + 1,
                local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, static_cast<int>(now.tv_usec));
    }
    V2LIN_TV up = tvSub(now, start_tv);
    V2LIN_TV delta{0, 0};
    if (prev_tv.tv_sec != 0 || prev_tv.tv_usec != 0) {
        delta = tvSub(now, prev_tv);
        // Only the microsecond part counts here: 3.005 s apart is as quiet as 5 ms apart.
        if (delta.tv_usec <= kTraceQuietUsec && (delta.tv_sec != 0 || delta.tv_usec != 0))
            return 1;
    }
    fprintf(stderr, "uptime=%d.%06d s ", static_cast<int>(up.tv_sec), static_cast<int>(up.tv_usec));
    fprintf(stderr, "+%d.%06d ", static_cast<int>(delta.tv_sec), static_cast<int>(delta.tv_usec));
    fputc('\n', stderr);
    prev_tv = now;
    return 0;
}

void signal_init(void) { signal(SIGSEGV, sighandler); }

void sighandler(int signum) {
    (void)signum;
    gdb();
}

void gdb(void) {
    char pidText[kPidTextSize];
    snprintf(pidText, sizeof pidText, "%i", static_cast<int>(getpid()));
    if (gGdbChild != 0)
        exit(1);
    pid_t child = fork();
    if (child == 0)
        return;  // the child returns from the handler
    gGdbChild = child;
    if (child > 0)
        waitpid(child, nullptr, 0);
}

}  // extern "C"
