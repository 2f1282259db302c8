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
