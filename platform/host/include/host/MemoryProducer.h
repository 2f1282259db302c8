/// The desktop's side of the graphics stand-ins: a buffer producer in memory, for tests and the inspector.
#pragma once

#include <gui/IGraphicBufferProducer.h>
#include <ui/Rect.h>

#include <memory>
#include <mutex>
#include <vector>

namespace host {

/// The steps of a buffer's way, in the order in which a drawing takes them.
enum class Step { kDequeue, kLock, kUnlock, kQueue, kCancel };

struct Geometry {
    int width = 0;
    int height = 0;
    int stride = 0;  ///< pixels from one row to the next; 0: as wide as the buffer
};

/// What a consumer would show: a copy of a queued buffer, 4 bytes a pixel.
struct Picture {
    int width = 0, height = 0, stride = 0;
    uint64_t usage = 0;  ///< the surface's usage when the buffer was dequeued
    int fence = -1;
    std::vector<uint8_t> bytes;  ///< stride x height x 4

    /// The bytes of a pixel: red, green, blue, alpha. Columns up to the stride may be looked at.
    const uint8_t* pixel(int column, int row) const {
        return &bytes[(static_cast<size_t>(row) * static_cast<size_t>(stride) + static_cast<size_t>(column)) * 4];
    }
};

/// Hands out one buffer at a time, its pixels 0xA5 in each byte, and keeps what is queued. Thread-safe.
///
/// As on a television a buffer that is neither queued nor cancelled blocks the queue: the next dequeue answers
/// INVALID_OPERATION. Wrong orders are refused: a lock of what is locked or not dequeued (3, bad value), an unlock
/// of what is not locked, a queue of what is still locked or not dequeued (BAD_VALUE).
class __attribute__((visibility("default"))) MemoryProducer : public android::IGraphicBufferProducer {
public:
    explicit MemoryProducer(const Geometry& geometry);

    /// Makes the next `step` fail with `status` (not 0), after `passing` steps of that kind that do not fail.
    void failNext(Step step, int status, unsigned passing = 0);

    /// From now on as on a television, where a queue that nobody is connected to hands out no buffer: NO_INIT.
    void requireConnection();
    int connected() const;  ///< the interface that is connected; 0: none

    /// The size of buffers that are dequeued from now on.
    void setGeometry(const Geometry& geometry);

    std::vector<Picture> queued() const;
    Picture last() const;  ///< the picture queued last; an empty one when there is none
    Picture takeLast();    ///< the same, which is no longer queued then
    void forget();         ///< pictures, steps and locks so far

    /// While no buffer is out: the next one takes a picture's memory when that has its size, and shows what was on it,
    /// as buffers of a television do.
    void giveBack(Picture picture);

    struct Lock {
        uint32_t usage;
        android::Rect bounds;
    };
    std::vector<Lock> locks() const;
    std::vector<Step> steps() const;  ///< every step asked for, failed ones included
    bool dequeued() const;            ///< a buffer is out and was neither queued nor cancelled

    android::status_t dequeue(ANativeWindowBuffer** buffer, uint64_t usage) override;
    android::status_t queue(ANativeWindowBuffer* buffer, int fenceFd) override;
    android::status_t cancel(ANativeWindowBuffer* buffer, int fenceFd) override;
    android::status_t connect(int api) override;
    android::status_t disconnect(int api) override;

    // The mapper's way to the pixels.
    android::status_t lock(uint32_t usage, const android::Rect& bounds, void** address);
    android::status_t unlock();

protected:
    ~MemoryProducer() override;

private:
    struct Buffer;
    struct Failure {
        Step step;
        int status;
        unsigned passing;
    };

    bool isOut() const;
    int takeFailure(Step step);  ///< records the step; the status that it is to fail with, 0: none

    mutable std::mutex mMutex;
    Geometry mGeometry;
    int mConnected = 0;
    bool mRequiresConnection = false;
    std::unique_ptr<Buffer> mBuffer;  ///< the one that is out, or whose memory waits for the next
    std::vector<Failure> mFailures;
    std::vector<Picture> mQueued;
    std::vector<Lock> mLocks;
    std::vector<Step> mSteps;
};

}  // namespace host
