#include "Television.h"

#include "Errors.h"
#include "host/MemoryProducer.h"
#include "subtitle/SubtitleParserSUBIDX.h"

namespace vxsub {

using namespace android;

Television::Television(SubtitleFile& file, Size size)
    : mFile(file), mSize(size), mProducer(new host::MemoryProducer({size.width, size.height, size.width})) {
    mFile.drawOn(mProducer);
}

Television::~Television() { mFile.drawOn(sp<IGraphicBufferProducer>()); }

std::optional<Television::Shown> Television::show(U32 index) {
    mProducer->forget();
    const std::optional<PictureArea> area = mFile.picture(index);
    if (!area) return std::nullopt;
    Shown shown = {*area, Image(mSize)};
    const host::Picture picture = mProducer->last();
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) {
            const U8* pixel = picture.pixel(x, y);
            shown.image.at(x, y) = {pixel[0], pixel[1], pixel[2], pixel[3]};
        }
    return shown;
}

Size frameSizeOf(const SubtitleFile& file) {
    constexpr U32 kMost = 4096;
    const SubtitleParserSUBIDX* index = file.vobSub();
    if (index == nullptr || index->m_u32Width - 1 >= kMost || index->m_u32Height - 1 >= kMost) return {1920, 1080};
    return {int(index->m_u32Width), int(index->m_u32Height)};
}

void requirePictures(const SubtitleFile& file) {
    if (!file.hasPictures()) throw FileError(file.path() + ": has texts, no pictures (vxsub list shows them)");
}

}  // namespace vxsub
