// Bitmaps drawn straight onto memory, without a window.
#include "subtitle/vobsub/Blit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace vxsubtitle;

// The last row of a canvas ends in one code, and so does what lies behind it in memory.
TEST(Blit, NothingIsDrawnBehindTheCanvas) {
    constexpr U32 kBehind = 0x5A5A5A5A;
    constexpr size_t kPixels = 16;
    std::vector<U8> codes(10 * kPixels, 1);
    codes[0] = 2;
    PixelValues values = {};
    values[1] = 0x11111111;
    values[2] = 0x22222222;
    std::vector<U32> pixels(10 * kPixels, kBehind);
    Placement placement;
    placement.available = true;
    draw({reinterpret_cast<U8*>(pixels.data()), kPixels, 1, kPixels}, placement,
         {codes.data(), codes.size(), kPixels, 1}, values);
    std::vector<U32> expected(10 * kPixels, kBehind);
    std::fill_n(expected.begin(), kPixels, 0x11111111U);
    expected[0] = 0x22222222;
    EXPECT_EQ(expected, pixels);
}

// A row that is wider than the way to the next one goes on in that, which is written over it.
TEST(Blit, APictureWiderThanTheStrideSpills) {
    constexpr U32 kBehind = 0x5A5A5A5A;
    const std::vector<U8> codes = {1, 2, 3, 4,  5,  6,  //
                                   7, 8, 9, 10, 11, 12};
    PixelValues values = {};
    for (U32 code = 0; code < 16; ++code) values[code] = code;
    std::vector<U32> pixels(20, kBehind);
    Placement placement;
    placement.available = true;
    draw({reinterpret_cast<U8*>(pixels.data()), 6, 2, 4}, placement, {codes.data(), codes.size(), 6, 2}, values);
    std::vector<U32> expected = {1, 2, 3, 4, 7, 8, 9, 10};
    expected.resize(20, kBehind);
    EXPECT_EQ(expected, pixels);
}

TEST(Blit, ACanvasWithoutRowsOrStrideHasNoPixels) {
    const std::vector<U8> codes(8, 1);
    PixelValues values = {};
    for (U32& value : values) value = 0x11111111;
    Placement placement;
    placement.available = true;
    const std::vector<U32> untouched(20, 0x5A5A5A5A);
    for (const S64 size : {S64{0}, S64{-1}, -S64{0x80000000}}) {
        std::vector<U32> pixels = untouched;
        U8* const middle = reinterpret_cast<U8*>(pixels.data() + 8);
        for (const Canvas& canvas : {Canvas{middle, 4, size, 4}, Canvas{middle, 4, 2, size}}) {
            EXPECT_EQ(0, canvas.pixelCount()) << size;
            EXPECT_EQ(0U, canvas.byteCount()) << size;
            canvas.clear();
            draw(canvas, placement, {codes.data(), codes.size(), 4, 2}, values);
            EXPECT_EQ(untouched, pixels) << size;
        }
    }
}
