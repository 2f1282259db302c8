/// Gives the processor access to a buffer's pixels.
#pragma once

#include <cutils/native_handle.h>
#include <stdint.h>
#include <ui/Rect.h>
#include <utils/Errors.h>
#include <utils/Singleton.h>

namespace android {

class __attribute__((visibility("default"))) GraphicBufferMapper : public Singleton<GraphicBufferMapper> {
public:
    static GraphicBufferMapper& get() { return getInstance(); }

    /// Stores the address of the buffer's top-left pixel in `vaddr`. A failure may be positive: a number of the
    /// hardware layer.
    status_t lock(buffer_handle_t handle, uint32_t usage, const Rect& bounds, void** vaddr);
    status_t unlock(buffer_handle_t handle);

private:
    friend class Singleton<GraphicBufferMapper>;
    GraphicBufferMapper() = default;
};

}  // namespace android
