// Memory with 32-bit addresses.
#include "subtitle/system/LowMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace vxsubtitle {
namespace {

TEST(LowMemory, IsZeroedWritableAndOnesOwn) {
    std::vector<U32> blocks;
    const U64 kSizes[] = {4, 1, 16, 4079, 4080, 4081, 65536, 1 << 20};
    U8 mark = 0;
    for (const U64 size : kSizes) {
        const U32 block = allocateLow(size);
        ASSERT_NE(0u, block) << size;
        U8* const bytes = atLow(block);
        EXPECT_EQ(static_cast<std::ptrdiff_t>(size), std::count(bytes, bytes + size, 0)) << size;
        EXPECT_EQ(0u, block % 8) << size;
        std::fill(bytes, bytes + size, ++mark);
        blocks.push_back(block);
    }
    mark = 0;
    for (size_t i = 0; i < blocks.size(); ++i) {
        const U8* const bytes = atLow(blocks[i]);
        EXPECT_EQ(static_cast<std::ptrdiff_t>(kSizes[i]), std::count(bytes, bytes + kSizes[i], ++mark));
        releaseLow(blocks[i]);
    }
}

TEST(LowMemory, ReleasesNothingForNothing) { releaseLow(0); }

TEST(LowMemory, RefusesWhatCannotBe) {
    for (const U64 size : {U64{0xFFFFF000}, U64{0xFFFFFFFF}, U64{0x100000000}, U64{0x100000003}, ~U64{0}}) {
        EXPECT_EQ(0u, allocateLow(size)) << size;
    }
}

TEST(LowMemory, IsFoundBeyondTheFirstAreaUntilThereIsNone) {
    if (sizeof(void*) == 4) GTEST_SKIP() << "SKIPPED: the heap's own affair on 32-bit machines";
    constexpr U64 kSize = U64{100} << 20;
    std::vector<U32> blocks;
    for (U32 block = allocateLow(kSize); block != 0; block = allocateLow(kSize)) {
        ASSERT_LT(blocks.size(), 41u) << "more than 4 GiB";
        atLow(block)[kSize - 1] = 1;
        blocks.push_back(block);
    }
    EXPECT_GE(blocks.size(), 5u);
    std::sort(blocks.begin(), blocks.end());
    for (size_t i = 1; i < blocks.size(); ++i) EXPECT_GE(blocks[i] - blocks[i - 1], kSize);
    for (const U32 block : blocks) releaseLow(block);
    const U32 again = allocateLow(kSize);
    EXPECT_NE(0u, again) << "given back";
    releaseLow(again);
}

}  // namespace
}  // namespace vxsubtitle
