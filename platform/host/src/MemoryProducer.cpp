#include "host/MemoryProducer.h"

#include <string.h>

#include <map>
#include <utility>

#include "Handles.h"

namespace host {

using namespace android;

namespace {

constexpr status_t kBadBuffer = 3;  // "bad value" of the hardware layer, positive as there
constexpr size_t kPixelBytes = 4;
constexpr uint8_t kUnwritten = 0xA5;

struct Handles {
    std::mutex mutex;
    std::map<buffer_handle_t, MemoryProducer*> producers;
};

Handles& handles() {
    static Handles* const all = new Handles;  // outlives whatever is destroyed at exit
    return *all;
}

}  // namespace

void publish(buffer_handle_t handle, MemoryProducer* producer) {
    const std::lock_guard<std::mutex> lock(handles().mutex);
    handles().producers[handle] = producer;
}

void withdraw(buffer_handle_t handle) {
    const std::lock_guard<std::mutex> lock(handles().mutex);
    handles().producers.erase(handle);
}

sp<MemoryProducer> producerOf(buffer_handle_t handle) {
    const std::lock_guard<std::mutex> lock(handles().mutex);
    const auto found = handles().producers.find(handle);
    return found != handles().producers.end() ? sp<MemoryProducer>(found->second) : sp<MemoryProducer>();
}

/// A buffer that is out. Its pixels lie in a block of exactly their size, so that a sanitizer sees the first byte
/// too far.
struct MemoryProducer::Buffer : ANativeWindowBuffer {
    Buffer(const Geometry& geometry, uint64_t usageBits, MemoryProducer* owner, std::vector<uint8_t> spare)
        : pixels(std::move(spare)) {
        const size_t size = static_cast<size_t>(geometry.stride) * static_cast<size_t>(geometry.height) * kPixelBytes;
        if (pixels.size() != size) pixels = std::vector<uint8_t>(size, kUnwritten);
        if (size == 0) pixels.reserve(1);  // none has an address, too
        width = geometry.width;
        height = geometry.height;
        stride = geometry.stride;
        format = HAL_PIXEL_FORMAT_RGBA_8888;
        usage = usageBits;
        layerCount = 1;
        memset(&handleOfThis, 0, sizeof handleOfThis);
        handleOfThis.version = sizeof handleOfThis;
        handle = &handleOfThis;
        common.incRef = [](android_native_base_t*) {};  // lives until it is queued or cancelled
        common.decRef = [](android_native_base_t*) {};
        publish(handle, owner);
    }
    ~Buffer() { withdraw(handle); }

    native_handle_t handleOfThis;
    std::vector<uint8_t> pixels;
    bool out = true;
    bool locked = false;
};

MemoryProducer::MemoryProducer(const Geometry& geometry) { setGeometry(geometry); }

MemoryProducer::~MemoryProducer() = default;

void MemoryProducer::failNext(Step step, int status, unsigned passing) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mFailures.push_back({step, status, passing});
}

void MemoryProducer::setGeometry(const Geometry& geometry) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mGeometry = geometry;
    if (mGeometry.stride == 0) mGeometry.stride = mGeometry.width;
}

std::vector<Picture> MemoryProducer::queued() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mQueued;
}

Picture MemoryProducer::last() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mQueued.empty() ? Picture() : mQueued.back();
}

Picture MemoryProducer::takeLast() {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mQueued.empty()) return {};
    Picture picture = std::move(mQueued.back());
    mQueued.pop_back();
    return picture;
}

void MemoryProducer::giveBack(Picture picture) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (isOut()) return;
    mBuffer = std::make_unique<Buffer>(mGeometry, 0, this, std::move(picture.bytes));
    mBuffer->out = false;
}

void MemoryProducer::forget() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mQueued.clear();
    mLocks.clear();
    mSteps.clear();
}

std::vector<MemoryProducer::Lock> MemoryProducer::locks() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mLocks;
}

std::vector<Step> MemoryProducer::steps() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mSteps;
}

bool MemoryProducer::dequeued() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return isOut();
}

bool MemoryProducer::isOut() const { return mBuffer != nullptr && mBuffer->out; }

int MemoryProducer::takeFailure(Step step) {
    mSteps.push_back(step);
    for (auto failure = mFailures.begin(); failure != mFailures.end(); ++failure) {
        if (failure->step != step) continue;
        if (failure->passing-- > 0) return OK;
        const int status = failure->status;
        mFailures.erase(failure);
        return status;
    }
    return OK;
}

status_t MemoryProducer::dequeue(ANativeWindowBuffer** buffer, uint64_t usage) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (const int status = takeFailure(Step::kDequeue)) return status;
    if (mRequiresConnection && mConnected == 0) return NO_INIT;
    if (isOut()) return INVALID_OPERATION;
    std::vector<uint8_t> spare;
    if (mBuffer != nullptr) spare.swap(mBuffer->pixels);
    mBuffer = std::make_unique<Buffer>(mGeometry, usage, this, std::move(spare));
    *buffer = mBuffer.get();
    return OK;
}

status_t MemoryProducer::lock(uint32_t usage, const Rect& bounds, void** address) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mLocks.push_back({usage, bounds});
    if (const int status = takeFailure(Step::kLock)) return status;
    if (!isOut() || mBuffer->locked) return kBadBuffer;
    mBuffer->locked = true;
    *address = mBuffer->pixels.data();
    return OK;
}

status_t MemoryProducer::unlock() {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (const int status = takeFailure(Step::kUnlock)) return status;
    if (!isOut() || !mBuffer->locked) return kBadBuffer;
    mBuffer->locked = false;
    return OK;
}

status_t MemoryProducer::queue(ANativeWindowBuffer* buffer, int fenceFd) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (const int status = takeFailure(Step::kQueue)) return status;
    if (!isOut() || mBuffer.get() != buffer || mBuffer->locked) return BAD_VALUE;
    mQueued.push_back(
        {mBuffer->width, mBuffer->height, mBuffer->stride, mBuffer->usage, fenceFd, std::move(mBuffer->pixels)});
    mBuffer.reset();
    return OK;
}

status_t MemoryProducer::cancel(ANativeWindowBuffer* buffer, int) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (const int status = takeFailure(Step::kCancel)) return status;
    if (!isOut() || mBuffer.get() != buffer) return BAD_VALUE;
    mBuffer.reset();  // a lock that could not be undone ends with the buffer
    return OK;
}

status_t MemoryProducer::connect(int api) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mConnected != 0) return BAD_VALUE;
    mConnected = api;
    return OK;
}

status_t MemoryProducer::disconnect(int api) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mConnected != api) return BAD_VALUE;
    mConnected = 0;
    return OK;
}

void MemoryProducer::requireConnection() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mRequiresConnection = true;
}

int MemoryProducer::connected() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mConnected;
}

}  // namespace host
