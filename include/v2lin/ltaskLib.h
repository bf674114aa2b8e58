/* Tasks of the real-time-kernel runtime: control block, task list, wait lists, task operations,
 * scheduler lock, delete safety, priorities, show routines and the shared error codes. */
#ifndef V2LIN_LTASKLIB_H
#define V2LIN_LTASKLIB_H

#include <pthread.h>
#include <sched.h>
#include <stdint.h>
#include <stdio.h>

#include "tr104/export.h"

/* Kernel error codes left in errno by the runtime. */
#define S_taskLib_ILLEGAL_PRIORITY 0x00030065
#define S_memLib_NOT_ENOUGH_MEMORY 0x00110001
#define S_semLib_INVALID_OPERATION 0x00160068
#define S_objLib_OBJ_ID_ERROR 0x003D0001
#define S_objLib_OBJ_UNAVAILABLE 0x003D0002
#define S_objLib_OBJ_DELETED 0x003D0003
#define S_objLib_OBJ_TIMEOUT 0x003D0004
#define S_msgQLib_INVALID_MSG_LENGTH 0x00410001
#define S_smObjLib_NOT_INITIALIZED 0x00580001

/* Timeouts count ticks of 10 ms. */
#define V2LIN_NO_WAIT 0
#define V2LIN_WAIT_FOREVER ((int32_t)0xFFFFFFFF)

/* Task state bits. */
#define V2LIN_TASK_PENDED 0x01u
#define V2LIN_TASK_DELAYED 0x02u
#define V2LIN_TASK_CREATED 0x80u
#define V2LIN_TASK_NOT_READY 0x8Fu

TR104_EXTERN_C_BEGIN

/* Entry function of a task: ten 32-bit arguments. */
typedef int32_t (*V2LIN_FUNCPTR)(int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                 int32_t);

struct v2lin_sem;

/* Task control block; zeroed at creation.  Blocks made by taskInit belong to the caller. */
typedef struct v2lin_tcb {
    int32_t reserved; /* never set by the runtime */
    int32_t taskId; /* block address (taskInit) or small integer (taskSpawn) */
    char *name; /* heap copy of the name, or null */
    pthread_t thread; /* 0 while the thread does not exist */
    pthread_attr_t attr; /* policy and current POSIX priority */
    struct sched_param prvParam; /* base POSIX priority, restored by taskUnlock */
    V2LIN_FUNCPTR entry; /* entry function */
    int32_t args[10]; /* its arguments */
    int32_t callerOwned; /* 1: the caller owns the memory; 0: freed on deletion */
    int32_t spare; /* 0, not otherwise used */
    uint32_t state; /* V2LIN_TASK_* bits */
    int32_t vxPriority; /* kernel priority, 0 most urgent */
    struct v2lin_tcb *waitNext; /* link on the wait list the task is on */
    int32_t safeCount; /* delete-safe count */
    pthread_mutex_t safeLock; /* guards safeCount */
    pthread_cond_t safeCond; /* broadcast when a task with pending deleters becomes unsafe */
    pthread_mutex_t delLock; /* a task being deleted waits here ... */
    pthread_cond_t delCond; /* ... until its pending-deleter list is empty */
    struct v2lin_tcb *pendingDeleters; /* tasks waiting in taskDelete for this one to become unsafe */
    struct v2lin_tcb *next; /* next block in the task list */
    struct v2lin_sem *pendSem; /* semaphore the task pends on, or null */
    pthread_mutex_t *lockWait; /* scheduler-lock mutex while waiting in taskLock, or null */
    int32_t forceDeleting; /* set while taskDeleteForce releases the pending deleters */
} V2LIN_TCB;

/* Error names. */
TR104_API const char *VxWorksError(int errnum);

/* Task list, its lock and the scheduler lock. */
TR104_API extern V2LIN_TCB *task_list;
TR104_API extern pthread_mutex_t task_list_lock;
TR104_API extern pthread_mutex_t v2pthread_task_lock;
TR104_API extern pthread_t locker;
TR104_API extern uint32_t taskLock_level;

/* Lookups and wait lists. */
TR104_API V2LIN_TCB *my_task(void);
TR104_API V2LIN_TCB *task_for(int32_t id);
TR104_API void link_susp_task(V2LIN_TCB **list, V2LIN_TCB *task);
TR104_API void unlink_susp_task(V2LIN_TCB **list, V2LIN_TCB *task);
TR104_API int signal_for_my_task(V2LIN_TCB **list, int byPriority);

/* Memory. */
TR104_API void *ts_malloc(size_t size);
TR104_API void ts_free(void *block);

/* Creation and deletion. */
TR104_API int taskInit(V2LIN_TCB *tcb, const char *name, int priority, int options, char *stackBase, int stackSize,
                       V2LIN_FUNCPTR entry, int32_t a1, int32_t a2, int32_t a3, int32_t a4, int32_t a5, int32_t a6,
                       int32_t a7, int32_t a8, int32_t a9, int32_t a10);
TR104_API int taskActivate(int32_t id);
TR104_API int32_t taskSpawn(const char *name, int priority, int options, int stackSize, V2LIN_FUNCPTR entry, int32_t a1,
                            int32_t a2, int32_t a3, int32_t a4, int32_t a5, int32_t a6, int32_t a7, int32_t a8,
                            int32_t a9, int32_t a10);
TR104_API int taskDelete(int32_t id);
TR104_API int taskDeleteForce(int32_t id);
TR104_API int taskRestart(int32_t id);

/* Scheduler lock and delete safety. */
TR104_API int taskLock(void);
TR104_API int taskUnlock(void);
TR104_API int taskSafe(void);
TR104_API int taskUnsafe(void);

/* Delays and queries. */
TR104_API int taskDelay(int ticks);
TR104_API int32_t taskIdSelf(void);
TR104_API int taskIdVerify(int32_t id);
TR104_API int taskIsReady(int32_t id);
TR104_API int taskIsSuspended(int32_t id);
TR104_API int taskSuspend(int32_t id);
TR104_API int taskResume(int32_t id);
TR104_API char *taskName(int32_t id);
TR104_API int32_t taskNameToId(const char *name);
TR104_API V2LIN_TCB *taskTcb(int32_t id);
TR104_API int taskIdListGet(int32_t *list, int max);

/* Priorities and round robin. */
TR104_API int taskPriorityGet(int32_t id, int *priority);
TR104_API int taskPrioritySet(int32_t id, int priority);
TR104_API int kernelTimeSlice(int ticks);
TR104_API int enableRoundRobin(void);
TR104_API int disableRoundRobin(void);
TR104_API int roundRobinIsEnabled(void);

/* Show routines. */
TR104_API int taskShow(FILE *stream, V2LIN_TCB *tcb);
TR104_API int taskList(FILE *stream, void *verbose);
TR104_API int display_task(FILE *stream, int32_t id);

/* Task variables: accepted and ignored. */
TR104_API int taskVarInit(void);
TR104_API int taskVarAdd(int32_t id, int *pVar);
TR104_API int taskVarDelete(int32_t id, int *pVar);
TR104_API int taskVarGet(int32_t id, int *pVar);
TR104_API int taskVarSet(int32_t id, int *pVar, int value);

TR104_EXTERN_C_END

#endif
