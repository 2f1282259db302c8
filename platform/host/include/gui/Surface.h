/// The window on a buffer producer.
#pragma once

#include <gui/IGraphicBufferProducer.h>
#include <system/window.h>
#include <ui/ANativeObjectBase.h>
#include <utils/RefBase.h>

namespace android {

class __attribute__((visibility("default"))) Surface : public ANativeObjectBase<ANativeWindow, Surface, RefBase> {
public:
    explicit Surface(const sp<IGraphicBufferProducer>& bufferProducer, bool controlledByApp = false);

    sp<IGraphicBufferProducer> getIGraphicBufferProducer() const { return mGraphicBufferProducer; }

protected:
    ~Surface() override;

private:
    friend class ANativeObjectBase<ANativeWindow, Surface, RefBase>;

    static int hookPerform(ANativeWindow* window, int operation, ...);

    sp<IGraphicBufferProducer> mGraphicBufferProducer;
    uint64_t mUsage = 0;
};

}  // namespace android
