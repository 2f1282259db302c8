// Blocks of units: every machine's way gives what a look at one unit after the other gives.
#include "subtitle/text/Vector.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace vxsubtitle {
namespace {

template <class BlockType>
struct Of;
template <template <class> class BlockOf, class UnitType>
struct Of<BlockOf<UnitType>> {
    using Unit = UnitType;
};

template <class BlockType>
class Blocks : public testing::Test {
protected:
    using BlockUnit = typename Of<BlockType>::Unit;
    static constexpr size_t kUnits = BlockType::kUnits;

    /// Units around `middle` and its look-alikes, and any.
    void fill(std::mt19937& random, BlockUnit middle) {
        constexpr unsigned kHigh = 1U << (8 * sizeof(BlockUnit) - 1);
        for (BlockUnit& unit : units) {
            const unsigned choice = random() % 8;
            unit = choice == 0   ? static_cast<BlockUnit>(random())
                   : choice == 1 ? static_cast<BlockUnit>(middle ^ kHigh)
                   : choice == 2 ? static_cast<BlockUnit>(0U - random() % 2)
                                 : static_cast<BlockUnit>(middle + random() % 5 - 2);
        }
    }

    BlockType block() const {
        bytes.assign(1 + sizeof units, 0);  // at an odd address, and no byte more
        memcpy(bytes.data() + 1, units, sizeof units);
        return BlockType(bytes.data() + 1);
    }

    template <class Is>
    U64 bitsOf(Is is) const {
        U64 bits = 0;
        for (size_t i = 0; i < kUnits; ++i) bits |= U64{is(units[i])} << i;
        return bits;
    }

    BlockUnit units[kUnits] = {};
    mutable std::vector<U8> bytes;
};

#if VX_VECTORS
using Types = testing::Types<WordBlock<U8>, WordBlock<U16>, VectorBlock<U8>, VectorBlock<U16>>;
#else
using Types = testing::Types<WordBlock<U8>, WordBlock<U16>>;
#endif
TYPED_TEST_SUITE(Blocks, Types);

TYPED_TEST(Blocks, FindEqualUnits) {
    using Unit = typename TestFixture::BlockUnit;
    std::mt19937 random(1);
    for (unsigned round = 0; round < 30000; ++round) {
        const Unit a = static_cast<Unit>(random());
        const Unit b = static_cast<Unit>(a + random() % 5 - 2);
        this->fill(random, a);
        EXPECT_EQ((this->block() == a).hits().bits(), this->bitsOf([=](Unit unit) { return unit == a; }));
        EXPECT_EQ(((this->block() == a) | (this->block() == b)).hits().bits(),
                  this->bitsOf([=](Unit unit) { return unit == a || unit == b; }));
    }
}

TYPED_TEST(Blocks, FindUnitsWithinBounds) {
    using Unit = typename TestFixture::BlockUnit;
    constexpr Unit kLast = static_cast<Unit>(-1);
    std::mt19937 random(2);
    for (unsigned round = 0; round < 30000; ++round) {
        Unit low = static_cast<Unit>(random());
        Unit high = random() % 4 == 0 ? kLast : static_cast<Unit>(random());
        if (random() % 4 == 0) low = 0x80;
        if (low > high) std::swap(low, high);
        this->fill(random, random() % 2 == 0 ? low : high);
        EXPECT_EQ(this->block().within(low, high).hits().bits(), this->bitsOf([=](Unit unit) {
            return unit >= low && unit <= high;
        })) << low
            << " to " << high;
    }
}

TYPED_TEST(Blocks, StandInARowInAWindow) {
    using Unit = typename TestFixture::BlockUnit;
    std::mt19937 random(3);
    for (unsigned round = 0; round < 30000; ++round) {
        Unit row[TypeParam::kWindow];
        U64 bits = 0;
        for (size_t i = 0; i < TypeParam::kWindow; ++i) {
            row[i] = static_cast<Unit>(7 + random() % 3);
            bits |= U64{row[i] == 7 || row[i] == 9} << i;
        }
        const Hits hits = TypeParam::window(reinterpret_cast<const U8*>(row),
                                            [](TypeParam block) { return (block == Unit{7}) | (block == Unit{9}); });
        EXPECT_EQ(hits.bits(), bits);
    }
}

TYPED_TEST(Blocks, EachUnitHasItsBit) {
    using Unit = typename TestFixture::BlockUnit;
    for (size_t i = 0; i < this->kUnits; ++i) {
        for (size_t k = i; k < this->kUnits; ++k) {
            for (Unit& unit : this->units) unit = 0x0A0B & static_cast<Unit>(-1);
            this->units[i] = this->units[k] = 7;
            Hits hits = (this->block() == 7).hits();
            ASSERT_TRUE(hits);
            EXPECT_EQ(hits.first(), i);
            hits.dropFirst();
            EXPECT_EQ(static_cast<bool>(hits), i != k);
            if (i != k) {
                EXPECT_EQ(hits.first(), k);
            }
        }
    }
}

}  // namespace
}  // namespace vxsubtitle
