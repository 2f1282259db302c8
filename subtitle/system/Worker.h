/// The life of a parser's worker thread: started once, never outlives what it uses.
#pragma once

#include <pthread.h>

#include "subtitle/SubtitleTypes.h"

namespace vxsubtitle {

using namespace android;

enum WorkerState : U8 {
    kWorkerNone = 0,
    kWorkerRunning,
    kWorkerEnded,   ///< the worker's very last store
    kWorkerJoined,  ///< the thread handle keeps its value
};

/// The fields of a parser through which its worker is known.
struct WorkerSlot {
    pthread_t& thread;
    U8& state;     ///< a `WorkerState`, accessed atomically
    U8& finished;  ///< raised by the worker when its scan ended normally, accessed atomically
};

inline bool isRaised(const U8& flag) { return __atomic_load_n(&flag, __ATOMIC_ACQUIRE) != 0; }
inline void raiseFlag(U8& flag) { __atomic_store_n(&flag, U8{1}, __ATOMIC_RELEASE); }
inline void workerEnded(U8& state) { __atomic_store_n(&state, U8{kWorkerEnded}, __ATOMIC_RELEASE); }

/// Starts `main(argument)` on a thread of its own with a stack of 65536 bytes. False when no thread could be
/// created; the thread handle is 0 then.
bool startWorker(WorkerSlot slot, void* (*main)(void*), void* argument);

/// Waits for a worker that was started and not joined yet; nothing to do otherwise.
void joinWorker(WorkerSlot slot);

/// Joins the worker when that costs no waiting to speak of: its flag is up, or it has ended without it.
void joinIfOver(WorkerSlot slot);

/// Gives the worker a head start: yields until the flag is up, 2 ms have passed or 20,000 looks were made, so that
/// small files never cost a poll period.
void headStart(const U8& finished);

}  // namespace vxsubtitle
