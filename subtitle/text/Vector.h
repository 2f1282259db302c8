/// Several units of text looked at at once: sixteen bytes with SSE2 or NEON, a machine word elsewhere.
#pragma once

#include <stddef.h>
#include <string.h>

#include "subtitle/SubtitleTypes.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#define VX_VECTORS 1
#elif defined(__ARM_NEON)
#include <arm_neon.h>
#define VX_VECTORS 1
#else
#define VX_VECTORS 0
#endif

namespace vxsubtitle {

using namespace android;  // the fixed-width names

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the first unit is the lowest");

/// Some of the first 64 units of something, a bit for each.
class Hits {
public:
    explicit Hits(U64 bits = 0) : mBits(bits) {}

    explicit operator bool() const { return mBits != 0; }
    U64 bits() const { return mBits; }

    /// Where the first one stands; only of some.
    size_t first() const { return static_cast<size_t>(__builtin_ctzll(mBits)); }
    void dropFirst() { mBits &= mBits - 1; }

private:
    U64 mBits;
};

// A block is a few neighbouring units, loaded from anywhere. It answers matches: which of its units are what is asked
// for. Matches are combined, and then told as hits.

/// A block as a machine word.
template <class Unit>
class WordBlock {
public:
    using Word = uintptr_t;
    static constexpr size_t kUnits = sizeof(Word) / sizeof(Unit);

    /// The highest bit of each unit that is a match.
    class Matches {
    public:
        explicit Matches(Word bits) : mBits(bits) {}
        friend Matches operator|(Matches a, Matches b) { return Matches(a.mBits | b.mBits); }

        Hits hits() const {
            if (mBits == 0) return Hits();
            // each product of two bits comes to lie at a place of its own, and those wanted next to each other
            constexpr size_t kTop = 8 * sizeof(Word) - kBits;
            Word gather = 0;
            for (size_t i = 0; i < kUnits; ++i) gather |= Word{1} << (kTop - i * (kBits - 1));
            return Hits((mBits >> (kBits - 1)) * gather >> kTop & ((Word{1} << kUnits) - 1));
        }

    private:
        Word mBits;
    };

    explicit WordBlock(const U8* p) { memcpy(&mUnits, p, sizeof mUnits); }

    Matches operator==(Unit unit) const { return atMost(mUnits ^ kOnes * unit, 0); }

    /// Units from `low` up to and including `high`.
    Matches within(Unit low, Unit high) const {
        const Word lows = kOnes * low;
        const Word above = ((mUnits | kHighs) - (lows & ~kHighs)) ^ ((mUnits ^ ~lows) & kHighs);
        return atMost(above, static_cast<Unit>(high - low));
    }

private:
    static constexpr size_t kBits = 8 * sizeof(Unit);
    static constexpr Word kOnes = static_cast<Word>(-1) / static_cast<Unit>(-1);
    static constexpr Word kHighs = kOnes << (kBits - 1);

    static Matches atMost(Word units, Unit limit) {
        constexpr Unit kHigh = Unit{1} << (kBits - 1);
        const bool low = limit < kHigh;
        const Word beyond = (units & ~kHighs) + kOnes * static_cast<Unit>((low ? kHigh - 1 : kHigh * 2 - 1) - limit);
        return Matches(~(low ? beyond | units : beyond & units) & kHighs);
    }

    Word mUnits;
};

#if VX_VECTORS

template <class Unit>
struct VectorOf;
template <>
struct VectorOf<U8> {
    using Type = U8 __attribute__((vector_size(16)));
};
template <>
struct VectorOf<U16> {
    using Type = U16 __attribute__((vector_size(16)));
};

/// A block as a vector of the compiler's; only what turns matches into bits is written for each machine.
template <class Unit>
class VectorBlock {
public:
    using Vector = typename VectorOf<Unit>::Type;
    static constexpr size_t kUnits = 16 / sizeof(Unit);

    /// All bits of each unit that is a match.
    class Matches {
    public:
        explicit Matches(Vector units) : mUnits(units) {}
        friend Matches operator|(Matches a, Matches b) { return Matches(a.mUnits | b.mUnits); }

        Hits hits() const;

    private:
        Vector mUnits;
    };

    explicit VectorBlock(const U8* p) { memcpy(&mUnits, p, sizeof mUnits); }

    Matches operator==(Unit unit) const { return Matches(static_cast<Vector>(mUnits == all(unit))); }

    /// Units from `low` up to and including `high`.
    Matches within(Unit low, Unit high) const {
        return Matches(static_cast<Vector>(mUnits - all(low) <= all(static_cast<Unit>(high - low))));
    }

private:
    static Vector all(Unit unit) { return Vector{} + unit; }

    Vector mUnits;
};

#if defined(__SSE2__)

template <>
inline Hits VectorBlock<U8>::Matches::hits() const {
    return Hits(static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(mUnits))));
}

template <>
inline Hits VectorBlock<U16>::Matches::hits() const {
    const __m128i bytes = _mm_packs_epi16(reinterpret_cast<__m128i>(mUnits), _mm_setzero_si128());
    return Hits(static_cast<unsigned>(_mm_movemask_epi8(bytes)));
}

#else

/// A bit for each byte that is all ones.
inline U64 bitsOf(uint8x8_t low, uint8x8_t high) {
    const uint8x8_t places = vcreate_u8(0x8040201008040201);
    const uint8x8_t zero = vdup_n_u8(0);
    const uint8x8_t pairs = vpadd_u8(vand_u8(low, places), vand_u8(high, places));
    const uint8x8_t halves = vpadd_u8(vpadd_u8(pairs, zero), zero);
    return vget_lane_u16(vreinterpret_u16_u8(halves), 0);
}

template <>
inline Hits VectorBlock<U8>::Matches::hits() const {
    const uint8x16_t bytes = reinterpret_cast<uint8x16_t>(mUnits);
    return Hits(bitsOf(vget_low_u8(bytes), vget_high_u8(bytes)));
}

template <>
inline Hits VectorBlock<U16>::Matches::hits() const {
    return Hits(bitsOf(vmovn_u16(reinterpret_cast<uint16x8_t>(mUnits)), vdup_n_u8(0)));
}

#endif

template <class Unit>
using Block = VectorBlock<Unit>;

#else

template <class Unit>
using Block = WordBlock<Unit>;

#endif

}  // namespace vxsubtitle
