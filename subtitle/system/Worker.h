/// The life of a parser's worker thread: started once, never outlives what it uses, stops when it is asked to.
#pragma once

#include <pthread.h>

#include "subtitle/system/StopRequest.h"

namespace vxsubtitle {

using namespace android;

/// The low bits of a worker's state byte; `StopRequest::kBit` is added while it is asked to stop.
enum WorkerState : U8 {
    kWorkerNone = 0,
    kWorkerRunning,
    kWorkerEnded,   ///< the worker's very last store
    kWorkerJoined,  ///< the thread handle keeps its value
};

/// The fields of a parser through which its worker is known.
struct WorkerSlot {
    pthread_t& thread;
    U8& state;  ///< a `WorkerState`, accessed atomically
};

inline bool isRaised(const U8& flag) { return __atomic_load_n(&flag, __ATOMIC_ACQUIRE) != 0; }
inline void raiseFlag(U8& flag) { __atomic_store_n(&flag, U8{1}, __ATOMIC_RELEASE); }

/// Starts `main(argument)` on a thread of its own with a stack of 65536 bytes. False when no thread could be
/// created; the thread handle is 0 then.
[[nodiscard]] bool startWorker(WorkerSlot slot, void* (*main)(void*), void* argument);

/// The worker's last call: whoever waits for its end goes on, and may destroy what it used.
void workerEnded(U8& state);

/// Whether a worker was started, and not joined yet.
[[nodiscard]] bool hasWorker(WorkerSlot slot);

/// Whether the worker is at its work, asked to stop or not.
[[nodiscard]] bool isRunning(WorkerSlot slot);

/// Whether the worker has ended, and was not joined yet.
[[nodiscard]] bool hasEnded(WorkerSlot slot);

/// Waits until the worker ends, but no longer than `periodUs` microseconds. Not at all for one that has ended since it
/// was seen running; one that was not running then (`wasRunning` is false) does not shorten the period.
void waitForEnd(WorkerSlot slot, U32 periodUs, bool wasRunning);

/// Waits for a worker that was started and not joined yet; nothing to do otherwise.
void joinWorker(WorkerSlot slot);

/// The same, and asks it to stop first.
void stopWorker(WorkerSlot slot);

}  // namespace vxsubtitle
