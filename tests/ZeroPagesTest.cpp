#include "subtitle/system/ZeroPages.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <vector>

using namespace vxsubtitle;

namespace {

const size_t kPage = static_cast<size_t>(sysconf(_SC_PAGESIZE));

/// Bytes that hold something, with more around those that are zeroed.
class Block {
public:
    /// Begins so many bytes behind the start of a page.
    Block(size_t behind, size_t size) : mBytes(behind + size + 3 * kPage, 0xA5), mSize(size) {
        mStart = kPage - reinterpret_cast<uintptr_t>(mBytes.data()) % kPage + behind;
    }

    U8* at() { return mBytes.data() + mStart; }

    /// How many bytes are not what they should be.
    size_t wrong() const {
        size_t count = 0;
        for (size_t i = 0; i < mBytes.size(); ++i) {
            const bool inside = i >= mStart && i < mStart + mSize;
            count += mBytes[i] != (inside ? 0 : 0xA5);
        }
        return count;
    }

private:
    std::vector<U8> mBytes;
    size_t mStart, mSize;
};

}  // namespace

TEST(ZeroPages, ZeroesTheBlockAndNothingElse) {
    for (const size_t behind : {size_t{0}, size_t{1}, kPage - 1}) {
        for (const size_t size : {size_t{0}, size_t{1}, kPage - 1, kPage, kPage + 1, 5 * kPage, 5 * kPage + 17}) {
            for (const size_t used :
                 {size_t{0}, size_t{1}, kPage - 1, kPage, 2 * kPage + 9, 5 * kPage, 5 * kPage + 16, 9 * kPage}) {
                Block block(behind, size);
                zeroPages(block.at(), size, used);
                EXPECT_EQ(0U, block.wrong()) << behind << " " << size << " " << used;
                if (size == 0) continue;
                block.at()[size / 2] = 0xA5;
                zeroPages(block.at(), size, used);
                EXPECT_EQ(0U, block.wrong()) << "again " << behind << " " << size << " " << used;
            }
        }
    }
}

TEST(ZeroPages, PagesThatCannotBeGivenBackAreWritten) {
    Block block(0, 4 * kPage);
    if (mlock(block.at() + 2 * kPage, kPage) != 0) GTEST_SKIP() << "no memory may be locked";
    zeroPages(block.at(), 4 * kPage, 0);
    EXPECT_EQ(0U, block.wrong());
    munlock(block.at() + 2 * kPage, kPage);
}
