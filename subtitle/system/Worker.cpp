// The worker thread, and the one condition by which every worker's end is announced.
#include "subtitle/system/Worker.h"

#include <errno.h>
#include <time.h>

namespace vxsubtitle {

namespace {

pthread_once_t once = PTHREAD_ONCE_INIT;
pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;  // orders a worker's last store and the waits for it
pthread_cond_t someoneEnded;                        // by the monotonic clock; never destroyed

void makeCondition() {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&someoneEnded, &attributes);
    pthread_condattr_destroy(&attributes);
}

U8 stateOf(const WorkerSlot& slot) {
    return static_cast<U8>(__atomic_load_n(&slot.state, __ATOMIC_ACQUIRE) & ~StopRequest::kBit);
}

timespec fromNow(U32 microseconds) {
    timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_sec += static_cast<time_t>(microseconds / 1000000);
    time.tv_nsec += static_cast<long>(microseconds % 1000000) * 1000;
    if (time.tv_nsec >= 1000000000) {
        time.tv_nsec -= 1000000000;
        ++time.tv_sec;
    }
    return time;
}

}  // namespace

bool startWorker(WorkerSlot slot, void* (*main)(void*), void* argument) {
    pthread_once(&once, makeCondition);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 65536);
    __atomic_store_n(&slot.state, U8{kWorkerRunning}, __ATOMIC_RELEASE);
    // the attributes are not destroyed afterwards; they hold no memory
    if (pthread_create(&slot.thread, &attributes, main, argument) == 0) return true;
    slot.thread = 0;
    __atomic_store_n(&slot.state, U8{kWorkerNone}, __ATOMIC_RELEASE);
    return false;
}

void workerEnded(U8& state) {
    pthread_mutex_lock(&mutex);
    __atomic_store_n(&state, U8{kWorkerEnded}, __ATOMIC_RELEASE);
    pthread_mutex_unlock(&mutex);
    // behind the mutex: who wakes up finds it free
    pthread_cond_broadcast(&someoneEnded);
}

bool hasWorker(WorkerSlot slot) { return stateOf(slot) == kWorkerRunning || stateOf(slot) == kWorkerEnded; }

bool isRunning(WorkerSlot slot) { return stateOf(slot) == kWorkerRunning; }

bool hasEnded(WorkerSlot slot) { return stateOf(slot) == kWorkerEnded; }

void waitForEnd(WorkerSlot slot, U32 periodUs, bool wasRunning) {
    pthread_once(&once, makeCondition);
    const timespec end = fromNow(periodUs);
    pthread_mutex_lock(&mutex);
    // the ends of other parsers' workers wake it up, too
    for (int result = 0; result == 0 && !(wasRunning && hasEnded(slot));) {
        result = pthread_cond_timedwait(&someoneEnded, &mutex, &end);
    }
    pthread_mutex_unlock(&mutex);
}

void joinWorker(WorkerSlot slot) {
    if (!hasWorker(slot)) return;
    pthread_join(slot.thread, nullptr);
    __atomic_store_n(&slot.state, U8{kWorkerJoined}, __ATOMIC_RELEASE);
}

void stopWorker(WorkerSlot slot) {
    if (stateOf(slot) == kWorkerRunning) __atomic_fetch_or(&slot.state, StopRequest::kBit, __ATOMIC_RELAXED);
    joinWorker(slot);
}

}  // namespace vxsubtitle
