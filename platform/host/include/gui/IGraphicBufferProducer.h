/// The source of a surface's buffers. Its operations are this desktop layer's own: on a television they differ from
/// release to release, and the library only passes the reference on.
#pragma once

#include <stdint.h>
#include <system/window.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace android {

class __attribute__((visibility("default"))) IGraphicBufferProducer : public virtual RefBase {
public:
    /// Hands out a buffer that stays valid until it is queued or cancelled; `usage` is what the surface was set to.
    virtual status_t dequeue(ANativeWindowBuffer** buffer, uint64_t usage) = 0;
    virtual status_t queue(ANativeWindowBuffer* buffer, int fenceFd) = 0;
    virtual status_t cancel(ANativeWindowBuffer* buffer, int fenceFd) = 0;

    /// Who may dequeue from now on, and who no longer does.
    virtual status_t connect(int) { return OK; }
    virtual status_t disconnect(int) { return OK; }
};

}  // namespace android
