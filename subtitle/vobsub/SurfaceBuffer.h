/// The way of one buffer: dequeued from a window, painted by the processor, queued back.
#pragma once

#include <hardware/gralloc.h>
#include <system/window.h>
#include <ui/GraphicBufferMapper.h>
#include <ui/Rect.h>

#include "subtitle/system/Log.h"
#include "subtitle/vobsub/Blit.h"

namespace vxsubtitle {

/// What is logged, with the status, when a step fails.
struct SurfaceMessages {
    const char* dequeue;
    const char* lock;
    const char* unlock;
    const char* queue;
};

/// Calls `paint(canvas)`, which writes all of it, on a buffer of the window's and queues it. After a step that fails
/// the buffer is given back, so that the window has one to give again.
template <class Paint>
bool paintBuffer(ANativeWindow* window, const SurfaceMessages& messages, Paint paint) {
    ANativeWindowBuffer* buffer = nullptr;
    int status = native_window_dequeue_buffer_and_wait(window, &buffer);
    if (status != 0) {
        VX_LOG(nullptr, messages.dequeue, status);
        return false;
    }
    const auto fail = [&](const char* message) {
        VX_LOG(nullptr, message, status);
        window->cancelBuffer(window, buffer, -1);
        return false;
    };
    GraphicBufferMapper& mapper = GraphicBufferMapper::get();
    void* pixels = nullptr;
    status =
        mapper.lock(buffer->handle, GRALLOC_USAGE_SW_WRITE_OFTEN, Rect(0, 0, buffer->width, buffer->height), &pixels);
    if (status != 0) return fail(messages.lock);  // may be positive: a number of the hardware layer
    const Canvas canvas = {static_cast<U8*>(pixels), buffer->width, buffer->height, buffer->stride};
    paint(canvas);
    status = mapper.unlock(buffer->handle);
    if (status != 0) return fail(messages.unlock);
    status = window->queueBuffer(window, buffer, -1);
    if (status != 0) return fail(messages.queue);
    return true;
}

}  // namespace vxsubtitle
