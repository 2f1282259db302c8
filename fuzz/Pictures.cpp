#include "fuzz/Pictures.h"

#include <host/MemoryProducer.h>
#include <stdlib.h>

namespace fuzz {

namespace {

/// A surface's length in one direction, twice `longest` at the most: cases by what fits a frame of `frame` pixels.
int someLength(U32 frame, U32 longest, Choice& choice) {
    const U32 length = frame < longest ? frame : longest;
    const U32 lengths[] = {length,
                           2 * length,
                           2 * length + 1,
                           length + 1,
                           length + length / 2,
                           length * 3 / 4,
                           length * 2 / 3,
                           length / 2 + 1,
                           (length + 1) / 2,
                           length / 4,
                           1,
                           16 + choice.below(64)};
    const U32 chosen = lengths[choice.below(static_cast<U32>(std::size(lengths)))];
    return static_cast<int>(chosen != 0 ? chosen : 1);
}

constexpr U32 kBitmapSize = 1920 * 1080;

U8* keptBitmap() {
    static const Block bitmap(kBitmapSize, 0);
    return bitmap.data();
}

}  // namespace

KeptBitmap::KeptBitmap(SubtitleParserSUBIDX& parser, Choice& choice)
    : mParser(parser), mKept(choice.below(16) != 0 && parser.m_buffer != nullptr) {
    if (!mKept) return;
    free(parser.m_buffer);
    parser.m_buffer = keptBitmap();
}

KeptBitmap::~KeptBitmap() {
    if (mKept) mParser.m_buffer = nullptr;
}

FrameSize someFrame(Choice& choice) {
    constexpr FrameSize kFrames[] = {{64, 48}, {48, 64}, {17, 9}, {0, 0}, {96, 64}, {64, 1}, {33, 31}};
    if (choice.below(64) == 0) return {720, 576};
    return kFrames[choice.below(static_cast<U32>(std::size(kFrames)))];
}

void attachSomeSurface(SubtitleParserSUBIDX& parser, FrameSize frame, Choice& choice) {
    if (choice.below(8) == 0) return;
    constexpr int kSpare[] = {0, 0, 1, 16, 61};
    host::Geometry geometry;
    const U32 longest = choice.below(64) == 0 ? 1024 : 96;
    geometry.width = someLength(frame.width, longest, choice);
    geometry.height = someLength(frame.height, longest, choice);
    geometry.stride = geometry.width + kSpare[choice.below(static_cast<U32>(std::size(kSpare)))];
    const sp<host::MemoryProducer> producer(new host::MemoryProducer(geometry));
    constexpr host::Step kSteps[] = {host::Step::kDequeue, host::Step::kLock, host::Step::kUnlock, host::Step::kQueue};
    if (choice.below(8) == 0) {
        producer->failNext(kSteps[choice.below(4)], choice.below(2) == 0 ? -22 : 3, choice.below(2));
    }
    parser.SetIGraphicBufferProducer(producer);
}

}  // namespace fuzz
