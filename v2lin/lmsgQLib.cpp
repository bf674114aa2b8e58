// Message queues between tasks: fixed-size slots in a ring with one spare slot, normal and urgent
// sending, timeouts in ticks, ordered readers and writers.
#include <errno.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "v2lin/v2lin_internal.h"

using namespace v2lin;

struct v2lin_msgq {
    pthread_mutex_t lock;  // guards every field below and the ring
    pthread_cond_t recvCond;  // broadcast when a message is put, and on delete
    pthread_mutex_t hsLock;  // the deleting task waits here ...
    pthread_cond_t hsCond;  // ... until every reader and writer has left
    pthread_mutex_t spaceLock;  // writers waiting for room wait on spaceCond with this mutex
    pthread_cond_t spaceCond;
    uint8_t *readPtr;  // slot of the next message to receive
    uint8_t *writePtr;  // slot for the next normal message
    uint32_t state;  // 0x02 deleted, 0x01 last put was urgent
    uint8_t *ringStart;
    uint8_t *ringEnd;  // last slot: ringStart + maxMsgs * slotSize
    v2lin_msgq *next;  // global queue list
    V2LIN_TCB *readers;
    V2LIN_TCB *writers;
    int32_t count;
    int32_t maxMsgs;
    int32_t maxLen;
    int32_t slotSize;  // maxLen + 4: a 32-bit length, then the bytes
    int32_t order;  // 1: readers and writers served by priority
    int32_t inside;  // readers and writers inside a wait, tasks or not
};

namespace {

constexpr uint32_t kUrgent = 0x01;
constexpr uint32_t kDeleted = 0x02;
constexpr int kUrgentPriority = 1;

v2lin_msgq *gQueueList = nullptr;
pthread_mutex_t gQueueListLock = PTHREAD_MUTEX_INITIALIZER;

// Count and state are also read by writers that hold only the space mutex.
int32_t countOf(v2lin_msgq *q) { return __atomic_load_n(&q->count, __ATOMIC_RELAXED); }
void addCount(v2lin_msgq *q, int32_t d) { __atomic_add_fetch(&q->count, d, __ATOMIC_RELAXED); }
bool deleted(v2lin_msgq *q) { return __atomic_load_n(&q->state, __ATOMIC_RELAXED) & kDeleted; }
void setState(v2lin_msgq *q, uint32_t v) { __atomic_store_n(&q->state, v, __ATOMIC_RELAXED); }

v2lin_msgq *lookup(v2lin_msgq *queue, bool unlink = false) {
    return lookupRecord(&gQueueList, &gQueueListLock, queue, unlink);
}

// Ring positions run from ringStart to ringEnd inclusive.
uint8_t *advance(const v2lin_msgq *q, uint8_t *p) {
    size_t off = static_cast<size_t>(p - q->ringStart) + static_cast<size_t>(q->slotSize);
    return off > static_cast<size_t>(q->ringEnd - q->ringStart) ? q->ringStart : q->ringStart + off;
}
uint8_t *stepBack(const v2lin_msgq *q, uint8_t *p) {
    size_t off = static_cast<size_t>(p - q->ringStart);
    return off < static_cast<size_t>(q->slotSize) ? q->ringEnd : p - q->slotSize;
}

void store(uint8_t *slot, const void *buffer, uint32_t nBytes) {
    if (buffer && nBytes)
        memcpy(slot + 4, buffer, nBytes);
    memcpy(slot, &nBytes, 4);
}

void normalPut(v2lin_msgq *q, const void *buffer, uint32_t nBytes) {
    store(q->writePtr, buffer, nBytes);
    q->writePtr = advance(q, q->writePtr);
    addCount(q, 1);
    setState(q, 0);
    pthread_cond_broadcast(&q->recvCond);
}

void urgentPut(v2lin_msgq *q, const void *buffer, uint32_t nBytes) {
    q->readPtr = stepBack(q, q->readPtr);
    store(q->readPtr, buffer, nBytes);
    addCount(q, 1);
    setState(q, kUrgent);
    pthread_cond_broadcast(&q->recvCond);
}

void put(v2lin_msgq *q, const void *buffer, uint32_t nBytes, int priority) {
    if (priority == kUrgentPriority)
        urgentPut(q, buffer, nBytes);
    else
        normalPut(q, buffer, nBytes);
}

bool nobodyWaits(v2lin_msgq *q) {
    return !waitListHead(&q->readers) && !waitListHead(&q->writers) &&
           __atomic_load_n(&q->inside, __ATOMIC_RELAXED) == 0;
}

// State of one send or receive, shared with its cancellation clean-up.
struct WaitCtx {
    v2lin_msgq *q;
    V2LIN_TCB *me;
    V2LIN_TCB **list;
    HeldMutex queueHeld;
    HeldMutex spaceHeld;
    int inWait;
};

void enterWait(WaitCtx *c) {
    link_susp_task(c->list, c->me);
    __atomic_add_fetch(&c->q->inside, 1, __ATOMIC_RELAXED);
    c->inWait = 1;
}

// Leaves the reader or writer list (queue mutex held); the last one out of a deleted queue tells
// the deleting task.
void leaveWait(WaitCtx *c) {
    v2lin_msgq *q = c->q;
    unlink_susp_task(c->list, c->me);
    __atomic_sub_fetch(&q->inside, 1, __ATOMIC_RELAXED);
    c->inWait = 0;
    if (deleted(q) && nobodyWaits(q)) {
        pthread_mutex_lock(&q->hsLock);
        pthread_cond_broadcast(&q->hsCond);
        pthread_mutex_unlock(&q->hsLock);
    }
}

void waitCleanup(void *arg) {
    WaitCtx *c = static_cast<WaitCtx *>(arg);
    if (c->spaceHeld.held)
        heldUnlock(&c->spaceHeld);
    if (!c->queueHeld.held)
        heldLock(&c->queueHeld);
    if (c->inWait)
        leaveWait(c);
    heldUnlock(&c->queueHeld);
}

// Sleeps one tick with `held` released; true when the deadline (if any) has then passed.
bool pollTick(HeldMutex *held, const struct timespec *deadline) {
    heldUnlock(held);
    taskDelay(1);
    heldLock(held);
    return deadline && deadlinePassed(*deadline);
}

// Space mutex held.
bool maySend(WaitCtx *c, const struct timespec *deadline) {
    v2lin_msgq *q = c->q;
    for (;;) {
        if (countOf(q) >= q->maxMsgs && !(q->maxMsgs == 0 && waitListHead(&q->readers)))
            return false;
        if (signal_for_my_task(&q->writers, q->order))
            return true;
        if (pollTick(&c->spaceHeld, deadline) || deleted(q))
            return false;
    }
}

// Queue mutex held.
bool mayReceive(WaitCtx *c, const struct timespec *deadline) {
    v2lin_msgq *q = c->q;
    for (;;) {
        if (countOf(q) < 1)
            return false;
        if (signal_for_my_task(&q->readers, q->order))
            return true;
        if (pollTick(&c->queueHeld, deadline))
            return false;
    }
}

const struct timespec *deadlineFor(uint32_t timeout, struct timespec *storage) {
    if (timeout == kWaitForever)
        return nullptr;
    *storage = makeDeadline(timeout);
    return storage;
}

// Queue mutex held on entry and on return.
int waitToSend(WaitCtx *c, uint32_t timeout, const void *buffer, uint32_t nBytes, int priority) {
    v2lin_msgq *q = c->q;
    if (timeout == 0)
        return S_objLib_OBJ_UNAVAILABLE;
    enterWait(c);
    heldUnlock(&c->queueHeld);
    struct timespec storage;
    const struct timespec *deadline = deadlineFor(timeout, &storage);
    int last = 0;
    bool mayPut = false;
    for (;;) {
        heldLock(&c->spaceHeld);
        last = 0;
        mayPut = false;
        while (!deleted(q)) {
            if (maySend(c, deadline)) {
                mayPut = true;
                break;
            }
            if (last == ETIMEDOUT)
                break;
            last = condWait(&q->spaceCond, &q->spaceLock, deadline);
        }
        heldUnlock(&c->spaceHeld);
        heldLock(&c->queueHeld);
        // A sender that did not wait may have filled the spare slot meanwhile: a full ring has no
        // room for this message, so wait again rather than overwrite the oldest one.
        if (mayPut && last != ETIMEDOUT && !deleted(q) && countOf(q) > q->maxMsgs) {
            heldUnlock(&c->queueHeld);
            continue;
        }
        break;
    }
    leaveWait(c);
    if (deleted(q))
        return S_objLib_OBJ_DELETED;
    if (last == ETIMEDOUT)
        return S_objLib_OBJ_TIMEOUT;
    put(q, buffer, nBytes, priority);
    return 0;
}

}  // namespace

extern "C" {

MSG_Q_ID msgQCreate(int maxMsgs, int maxMsgLength, int options) {
    uint64_t ringSize = (static_cast<uint64_t>(maxMsgs) + 1) * (static_cast<uint64_t>(maxMsgLength) + 4);
    if (maxMsgs < 0 || maxMsgLength < 0 || maxMsgLength > INT32_MAX - 4 || ringSize > SIZE_MAX / 2) {
        errno = S_memLib_NOT_ENOUGH_MEMORY;
        return nullptr;
    }
    v2lin_msgq *q = static_cast<v2lin_msgq *>(ts_malloc(sizeof(v2lin_msgq)));
    uint8_t *ring = static_cast<uint8_t *>(ts_malloc(static_cast<size_t>(ringSize)));
    if (!q || !ring) {
        ts_free(q);
        ts_free(ring);
        errno = S_memLib_NOT_ENOUGH_MEMORY;
        return nullptr;
    }
    memset(q, 0, sizeof *q);
    memset(ring, 0, static_cast<size_t>(ringSize));
    pthread_mutex_init(&q->lock, nullptr);
    pthread_cond_init(&q->recvCond, nullptr);
    pthread_mutex_init(&q->hsLock, nullptr);
    pthread_cond_init(&q->hsCond, nullptr);
    pthread_mutex_init(&q->spaceLock, nullptr);
    pthread_cond_init(&q->spaceCond, nullptr);
    q->maxMsgs = maxMsgs;
    q->maxLen = maxMsgLength;
    q->slotSize = maxMsgLength + 4;
    q->order = options & 0x01;
    q->ringStart = ring;
    q->ringEnd = ring + static_cast<size_t>(maxMsgs) * static_cast<size_t>(q->slotSize);
    q->readPtr = ring;
    q->writePtr = ring;
    appendRecord(&gQueueList, &gQueueListLock, q);
    return q;
}

int msgQSend(MSG_Q_ID queue, const void *buffer, uint32_t nBytes, int32_t timeout, int priority) {
    V2LIN_TCB *me = my_task();
    v2lin_msgq *q = lookup(queue);
    if (!q)
        return fail(S_objLib_OBJ_ID_ERROR);
    WaitCtx ctx{q, me, &q->writers, {&q->lock, 1}, {&q->spaceLock, 0}, 0};
    int rc = 0;
    pthread_cleanup_push(waitCleanup, &ctx);
    int32_t count = countOf(q);
    if (nBytes > static_cast<uint32_t>(q->maxLen)) {
        rc = S_msgQLib_INVALID_MSG_LENGTH;
    } else if (count < q->maxMsgs) {
        put(q, buffer, nBytes, priority);
    } else if (count == q->maxMsgs && q->maxMsgs == 0 && waitListHead(&q->readers)) {
        // A queue without room hands the message over through the spare slot.
        normalPut(q, buffer, nBytes);
    } else if (count == q->maxMsgs && priority == kUrgentPriority) {
        // An urgent message goes into the spare slot even when the queue is full.
        urgentPut(q, buffer, nBytes);
    } else {
        rc = waitToSend(&ctx, static_cast<uint32_t>(timeout), buffer, nBytes, priority);
    }
    pthread_cleanup_pop(1);
    return rc ? fail(rc) : kOk;
}

int msgQReceive(MSG_Q_ID queue, void *buffer, uint32_t maxNBytes, int32_t timeout) {
    V2LIN_TCB *me = my_task();
    v2lin_msgq *q = lookup(queue);
    if (!q)
        return fail(S_objLib_OBJ_ID_ERROR);
    if (maxNBytes < static_cast<uint32_t>(q->maxLen)) {
        pthread_mutex_unlock(&q->lock);
        return fail(S_msgQLib_INVALID_MSG_LENGTH);
    }
    WaitCtx ctx{q, me, &q->readers, {&q->lock, 1}, {&q->spaceLock, 0}, 0};
    int rc = 0;
    int length = 0;
    pthread_cleanup_push(waitCleanup, &ctx);
    enterWait(&ctx);
    if (q->maxMsgs == 0 && waitListHead(&q->writers)) {
        pthread_mutex_lock(&q->spaceLock);
        pthread_cond_broadcast(&q->spaceCond);
        pthread_mutex_unlock(&q->spaceLock);
    }
    struct timespec storage;
    const struct timespec *deadline = deadlineFor(static_cast<uint32_t>(timeout), &storage);
    int last = 0;
    bool mayTake = false;
    while (!deleted(q)) {
        if (mayReceive(&ctx, deadline)) {
            mayTake = true;
            break;
        }
        if (last == ETIMEDOUT)
            break;
        last = condWait(&q->recvCond, &q->lock, deadline);
    }
    leaveWait(&ctx);
    if (deleted(q)) {
        rc = S_objLib_OBJ_DELETED;
    } else if (last == ETIMEDOUT) {
        rc = timeout ? S_objLib_OBJ_TIMEOUT : S_objLib_OBJ_UNAVAILABLE;
    } else if (!mayTake) {
        rc = S_objLib_OBJ_UNAVAILABLE;
    } else {
        uint8_t *slot = q->readPtr;
        uint32_t len;
        memcpy(&len, slot, 4);
        if (len > static_cast<uint32_t>(q->maxLen))
            len = static_cast<uint32_t>(q->maxLen);
        if (buffer && len)
            memcpy(buffer, slot + 4, len);
        if (q->maxLen > 0)
            slot[4] = 0;
        memset(slot, 0, 4);
        q->readPtr = advance(q, q->readPtr);
        addCount(q, -1);
        length = static_cast<int>(len);
        if (waitListHead(&q->writers) && countOf(q) < q->maxMsgs) {
            pthread_mutex_lock(&q->spaceLock);
            pthread_cond_broadcast(&q->spaceCond);
            pthread_mutex_unlock(&q->spaceLock);
        }
    }
    pthread_cleanup_pop(1);
    return rc ? fail(rc) : length;
}

int msgQDelete(MSG_Q_ID queue) {
    // The scheduler lock comes before the queue mutex; leaving the list at once keeps newcomers
    // away while the waiting readers and writers leave.
    taskLock();
    v2lin_msgq *q = lookup(queue, true);
    if (!q) {
        taskUnlock();
        return fail(S_objLib_OBJ_ID_ERROR);
    }
    __atomic_or_fetch(&q->state, kDeleted, __ATOMIC_RELAXED);
    if (!nobodyWaits(q)) {
        pthread_mutex_lock(&q->hsLock);
        pthread_cleanup_push(unlockMutexCleanup, &q->hsLock);
        pthread_cond_broadcast(&q->recvCond);
        pthread_mutex_unlock(&q->lock);
        pthread_mutex_lock(&q->spaceLock);
        pthread_cond_broadcast(&q->spaceCond);
        pthread_mutex_unlock(&q->spaceLock);
        while (!nobodyWaits(q))
            pthread_cond_wait(&q->hsCond, &q->hsLock);
        pthread_cleanup_pop(1);
    } else {
        pthread_mutex_unlock(&q->lock);
    }
    // The last reader or writer may still be releasing the queue mutex.
    pthread_mutex_lock(&q->lock);
    pthread_mutex_unlock(&q->lock);
    pthread_mutex_destroy(&q->lock);
    pthread_cond_destroy(&q->recvCond);
    pthread_mutex_destroy(&q->hsLock);
    pthread_cond_destroy(&q->hsCond);
    pthread_mutex_destroy(&q->spaceLock);
    pthread_cond_destroy(&q->spaceCond);
    ts_free(q->ringStart);
    ts_free(q);
    taskUnlock();
    return kOk;
}

int msgQNumMsgs(MSG_Q_ID queue) {
    v2lin_msgq *q = lookup(queue);
    if (!q)
        return kError;
    int n = countOf(q);
    pthread_mutex_unlock(&q->lock);
    return n;
}

int msgQShow(MSG_Q_ID queue, FILE *stream, void *verbose) {
    constexpr int kShown = 11;
    NoCancel quiet;
    v2lin_msgq *q = queue;
    fprintf(stream, "%x num=%i len=%i: ", hex32(q), q->maxMsgs, q->maxLen);
    V2LIN_TCB *const *lists[2] = {&q->readers, &q->writers};
    const char *titles[2] = {"readers: ", "writers: "};
    pthread_mutex_lock(&task_list_lock);
    for (int i = 0; i < 2; i++) {
        fputs(titles[i], stream);
        int n = 0;
        for (V2LIN_TCB *t = *lists[i]; t && n < kShown; t = t->waitNext, n++)
            fprintf(stream, "%x %s ", hex32(t), nameOrNull(t->name));
    }
    pthread_mutex_unlock(&task_list_lock);
    if (verbose)
        dumpWords(stream, q, sizeof *q);
    fputc('\n', stream);
    return kOk;
}

int msgQList(FILE *stream, void *verbose) {
    int n = 0;
    for (v2lin_msgq *q = gQueueList; q; q = q->next) {
        fprintf(stream, "%i ", ++n);
        msgQShow(q, stream, verbose);
    }
    return n;
}

}  // extern "C"
