// Surface and GraphicBufferMapper over the producers of this desktop layer.
#include <gui/Surface.h>
#include <ui/GraphicBufferMapper.h>

#include <stdarg.h>

#include "Handles.h"

namespace android {

ANDROID_SINGLETON_STATIC_INSTANCE(GraphicBufferMapper)

namespace {

constexpr status_t kBadDescriptor = 1;  // a number of the hardware layer, positive as there

}  // namespace

status_t GraphicBufferMapper::lock(buffer_handle_t handle, uint32_t usage, const Rect& bounds, void** vaddr) {
    const sp<host::MemoryProducer> producer = host::producerOf(handle);
    return producer != nullptr ? producer->lock(usage, bounds, vaddr) : kBadDescriptor;
}

status_t GraphicBufferMapper::unlock(buffer_handle_t handle) {
    const sp<host::MemoryProducer> producer = host::producerOf(handle);
    return producer != nullptr ? producer->unlock() : kBadDescriptor;
}

Surface::Surface(const sp<IGraphicBufferProducer>& bufferProducer, bool) : mGraphicBufferProducer(bufferProducer) {
    setSwapInterval = [](ANativeWindow*, int) { return int{OK}; };
    dequeueBuffer = [](ANativeWindow* window, ANativeWindowBuffer** buffer, int* fenceFd) {
        *fenceFd = -1;
        return window->dequeueBuffer_DEPRECATED(window, buffer);
    };
    dequeueBuffer_DEPRECATED = [](ANativeWindow* window, ANativeWindowBuffer** buffer) {
        const Surface* const self = getSelf(window);
        return self->mGraphicBufferProducer->dequeue(buffer, self->mUsage);
    };
    lockBuffer_DEPRECATED = [](ANativeWindow*, ANativeWindowBuffer*) { return int{OK}; };
    queueBuffer = [](ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) {
        return getSelf(window)->mGraphicBufferProducer->queue(buffer, fenceFd);
    };
    queueBuffer_DEPRECATED = [](ANativeWindow* window, ANativeWindowBuffer* buffer) {
        return window->queueBuffer(window, buffer, -1);
    };
    cancelBuffer = [](ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) {
        return getSelf(window)->mGraphicBufferProducer->cancel(buffer, fenceFd);
    };
    cancelBuffer_DEPRECATED = [](ANativeWindow* window, ANativeWindowBuffer* buffer) {
        return window->cancelBuffer(window, buffer, -1);
    };
    query = [](const ANativeWindow*, int, int*) { return int{BAD_VALUE}; };
    perform = hookPerform;
}

Surface::~Surface() = default;

int Surface::hookPerform(ANativeWindow* window, int operation, ...) {
    Surface* const self = getSelf(window);
    status_t status = OK;
    va_list arguments;
    va_start(arguments, operation);
    switch (operation) {
        case NATIVE_WINDOW_SET_USAGE64:
            self->mUsage = va_arg(arguments, uint64_t);  // 64 bits, on 32-bit machines too
            break;
        case NATIVE_WINDOW_API_CONNECT:
            status = self->mGraphicBufferProducer->connect(va_arg(arguments, int));
            break;
        case NATIVE_WINDOW_API_DISCONNECT:
            status = self->mGraphicBufferProducer->disconnect(va_arg(arguments, int));
            break;
        default:
            status = NAME_NOT_FOUND;
    }
    va_end(arguments);
    return status;
}

}  // namespace android
