// Memory with 32-bit addresses.
#include "subtitle/system/LowMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "tests/support/Forward.h"

#if UINTPTR_MAX > 0xFFFFFFFF && !defined(TEST_SANITIZED)
#define TEST_OWN_MAPPINGS
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace vxsubtitle {
namespace {

#ifdef TEST_OWN_MAPPINGS

/// While it lives, the machine has no area for small addresses, and puts mappings where it likes.
class Machine {
public:
    enum class Places { kAsWished, kHigh, kAcrossTheLimit };

    explicit Machine(Places places) : mPlaces(places) { instance = this; }
    ~Machine() { instance = nullptr; }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    void* map(void* hint, size_t size, int protection, int flags, int file, off_t offset) {
        EXPECT_EQ(-1, file);
#ifdef MAP_32BIT
        if ((flags & MAP_32BIT) != 0) return MAP_FAILED;
#endif
        hints.push_back(reinterpret_cast<uintptr_t>(hint));
        ++mappings;
        if (mPlaces == Places::kHigh) hint = nullptr;
        if (mPlaces == Places::kAcrossTheLimit) {  // all but its last page lies below
            hint = reinterpret_cast<void*>((uintptr_t{1} << 32) + static_cast<uintptr_t>(sysconf(_SC_PAGESIZE)) - size);
            flags |= MAP_FIXED_NOREPLACE;
        }
        return kernel(hint, size, protection, flags, file, offset);
    }
    static void* kernel(void* hint, size_t size, int protection, int flags, int file, off_t offset) {
        return reinterpret_cast<void*>(syscall(SYS_mmap, hint, size, protection, flags, file, offset));
    }

    static Machine* instance;
    std::vector<uintptr_t> hints;
    int mappings = 0;  ///< made and not taken back

private:
    Places mPlaces;
};

Machine* Machine::instance = nullptr;

#endif

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
    if (sizeof(void*) == 4) GTEST_SKIP() << "the heap's own affair on 32-bit machines";
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

#ifdef TEST_OWN_MAPPINGS

TEST(LowMemory, IsFoundWithoutAnAreaForIt) {
    Machine machine(Machine::Places::kAsWished);
    std::vector<U32> blocks;
    for (int i = 0; i < 200; ++i) {
        blocks.push_back(allocateLow(100));
        ASSERT_NE(0u, blocks.back()) << i;
        ASSERT_EQ(i + 1, machine.mappings);
    }
    for (const U32 block : blocks) releaseLow(block);
    EXPECT_EQ(0, machine.mappings);
}

TEST(LowMemory, LiesBelowTheLimitWithItsEnd) {
    Machine machine(Machine::Places::kAcrossTheLimit);
    EXPECT_EQ(0u, allocateLow(3 * static_cast<U64>(sysconf(_SC_PAGESIZE))));
    EXPECT_EQ(64u, machine.hints.size());
    EXPECT_EQ(0, machine.mappings);
}

TEST(LowMemory, IsLookedForAllOverAndWhatLiesTooHighIsGivenBack) {
    Machine machine(Machine::Places::kHigh);
    EXPECT_EQ(0u, allocateLow(100));
    EXPECT_EQ(0, machine.mappings);
    EXPECT_EQ(64u, machine.hints.size());
    for (const uintptr_t hint : machine.hints) {
        EXPECT_EQ(0u, hint % static_cast<uintptr_t>(sysconf(_SC_PAGESIZE)));
        EXPECT_LE(0x10000000u, hint);
        EXPECT_GT(uintptr_t{1} << 32, hint);
    }
    EXPECT_LE(60u, std::set<uintptr_t>(machine.hints.begin(), machine.hints.end()).size());
    EXPECT_GT(0x60000000u, *std::min_element(machine.hints.begin(), machine.hints.end()));
    EXPECT_LT(0xA0000000u, *std::max_element(machine.hints.begin(), machine.hints.end()));
}

#endif

}  // namespace
}  // namespace vxsubtitle

#ifdef TEST_OWN_MAPPINGS

TEST_INTERPOSED void* mmap(void* hint, size_t size, int protection, int flags, int file, off_t offset) noexcept {
    using vxsubtitle::Machine;
    return Machine::instance != nullptr ? Machine::instance->map(hint, size, protection, flags, file, offset)
                                        : Machine::kernel(hint, size, protection, flags, file, offset);
}

TEST_INTERPOSED int munmap(void* start, size_t size) noexcept {
    if (vxsubtitle::Machine::instance != nullptr) --vxsubtitle::Machine::instance->mappings;
    return static_cast<int>(syscall(SYS_munmap, start, size));
}

#endif
