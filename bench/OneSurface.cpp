#include "bench/OneSurface.h"

#include <gui/IGraphicBufferProducer.h>
#include <ui/GraphicBufferMapper.h>

#include "tools/samples/VobSubMaker.h"

namespace bench {

namespace {

class OneBuffer : public IGraphicBufferProducer {
public:
    OneBuffer() {
        mBuffer.width = mBuffer.stride = kSurfaceWidth;
        mBuffer.height = kSurfaceHeight;
        mBuffer.common.incRef = mBuffer.common.decRef = [](android_native_base_t*) {};
    }
    status_t dequeue(ANativeWindowBuffer** buffer, uint64_t) override {
        *buffer = &mBuffer;
        return OK;
    }
    status_t queue(ANativeWindowBuffer*, int) override { return OK; }
    status_t cancel(ANativeWindowBuffer*, int) override { return OK; }

private:
    ANativeWindowBuffer mBuffer;
};

}  // namespace

U8* surfacePixels() {
    static std::vector<U8> pixels(kSurfaceBytes, 1);  // touched once
    return pixels.data();
}

std::vector<DrawnPicture> drawnPictures() {
    DrawnPicture text{"600x80, two lines of text", 600, 80, std::vector<U8>(600 * 80), true};
    const samples::Bitmap letters = samples::drawText({"THE HARBOUR WAS EMPTY", "WHEN WE CAME BACK."}, 4);
    for (unsigned y = 0; y < text.height && y < letters.height; ++y) {
        for (unsigned x = 0; x < text.width && x < letters.width; ++x) {
            text.codes[size_t{y} * text.width + x] = letters.at(x, y);
        }
    }
    return {text, {"720x576, opaque", 720, 576, std::vector<U8>(720 * 576, 1), false}};
}

std::shared_ptr<SubtitleParserSUBIDX> parserOfSurface(const DrawnPicture& picture) {
    auto parser = std::make_shared<SubtitleParserSUBIDX>(-1, -1, 0, 0);
    parser->m_u32Width = 720;
    parser->m_u32Height = 576;
    for (U32& colour : parser->m_au32Palette_result) colour = 0xFF808080;
    if (picture.transparentBackground) parser->m_au32Palette_result[0] = 0;
    const sp<OneBuffer> producer = new OneBuffer;
    parser->SetIGraphicBufferProducer(producer);
    return parser;
}

}  // namespace bench

// In place of the desktop's: there is one surface.
android::status_t android::GraphicBufferMapper::lock(buffer_handle_t, uint32_t, const Rect&, void** address) {
    *address = bench::surfacePixels();
    return OK;
}
android::status_t android::GraphicBufferMapper::unlock(buffer_handle_t) { return OK; }
