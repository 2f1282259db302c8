#include "Television.h"

#include <string.h>

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
    Shown shown = {*area, Image(mSize), {}};
    host::Picture picture = mProducer->takeLast();
    for (int y = 0; y < picture.height && picture.width != 0; ++y)
        memcpy(&shown.image.at(0, y), picture.pixel(0, y), size_t(picture.width) * sizeof(Colour));
    mProducer->giveBack(std::move(picture));
    shown.box = shown.image.visibleBox();
    return shown;
}

Size frameSizeOf(const SubtitleFile& file) {
    constexpr U32 kMost = 4096;
    const SubtitleParserSUBIDX* index = file.vobSub();
    if (index == nullptr || index->m_u32Width - 1 >= kMost || index->m_u32Height - 1 >= kMost) return kTelevision;
    return {int(index->m_u32Width), int(index->m_u32Height)};
}

void requirePictures(const SubtitleFile& file) {
    if (!file.hasPictures()) throw FileError(file.path() + ": has texts, no pictures (vxsub list shows them)");
}

}  // namespace vxsub
