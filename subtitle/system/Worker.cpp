// The thread of a worker: created, joined, and given a head start.
#include "subtitle/system/Worker.h"

#include <sched.h>
#include <time.h>

namespace vxsubtitle {

bool startWorker(WorkerSlot slot, void* (*main)(void*), void* argument) {
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

void joinWorker(WorkerSlot slot) {
    const U8 state = __atomic_load_n(&slot.state, __ATOMIC_ACQUIRE);
    if (state != kWorkerRunning && state != kWorkerEnded) return;
    pthread_join(slot.thread, nullptr);
    __atomic_store_n(&slot.state, U8{kWorkerJoined}, __ATOMIC_RELEASE);
}

void joinIfOver(WorkerSlot slot) {
    if (isRaised(slot.finished) || __atomic_load_n(&slot.state, __ATOMIC_ACQUIRE) == kWorkerEnded) joinWorker(slot);
}

void headStart(const U8& finished) {
    constexpr long kNanoseconds = 2000000;
    constexpr int kLooks = 20000;  // ends the head start when a test's clock stands still
    timespec start;
    clock_gettime(CLOCK_MONOTONIC, &start);
    for (int look = 0; look < kLooks && !isRaised(finished); ++look) {
        sched_yield();
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        if (now.tv_sec - start.tv_sec > 1) return;
        if ((now.tv_sec - start.tv_sec) * 1000000000L + (now.tv_nsec - start.tv_nsec) >= kNanoseconds) return;
    }
}

}  // namespace vxsubtitle
