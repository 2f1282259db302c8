/// Several units of text looked at at once: sixteen bytes with SSE2 or NEON, a machine word elsewhere.
#pragma once

#include <stddef.h>
#include <string.h>

#include "subtitle/SubtitleTypes.h"
#include "subtitle/system/Wraps.h"

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

/// The zeros below the lowest bit, of some: a 32-bit machine counts them in halves.
constexpr size_t zerosBelow(U64 bits) {
#if __SIZEOF_POINTER__ == 4
    const U32 low = static_cast<U32>(bits);
    return static_cast<size_t>(low != 0 ? __builtin_ctz(low) : 32 + __builtin_ctz(static_cast<U32>(bits >> 32)));
#else
    return static_cast<size_t>(__builtin_ctzll(bits));
#endif
}

/// Some of the first 64 units of something, a bit for each.
class Hits {
public:
    explicit Hits(U64 bits = 0) : mBits(bits) {}  ///< the lowest for the first

    explicit operator bool() const { return mBits != 0; }
    U64 bits() const { return mBits; }

    /// Where the first one stands; only of some.
    size_t first() const { return zerosBelow(mBits); }
    VX_WRAPS void dropFirst() { mBits &= mBits - 1; }  ///< of none: nothing

    /// The place right behind the first neighbouring ones, into which they carry over; of those that `count` units
    /// have.
    VX_WRAPS Hits behindFirstRun(size_t count) const {
        return Hits((mBits + (mBits & -mBits)) & ~mBits & ~U64{0} >> (64 - count));
    }

private:
    U64 mBits;
};

// A block is a few neighbouring units, loaded from anywhere. It answers matches: which of its units are what is asked
// for. Matches are combined, and then told as hits; those of a window, some blocks in a row, at one blow.

/// A block as a machine word.
template <class Unit>
class WordBlock {
public:
    using Word = uintptr_t;
    static constexpr size_t kUnits = sizeof(Word) / sizeof(Unit);
    static constexpr size_t kWindow = 4 * kUnits;

    /// The highest bit of each unit that is a match.
    class Matches {
    public:
        explicit Matches(Word bits) : mBits(bits) {}
        friend Matches operator|(Matches a, Matches b) { return Matches(a.mBits | b.mBits); }

        VX_WRAPS Hits hits() const {
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

    /// The hits among the `kWindow` units at `p`, where `match` tells the matches of a block.
    template <class Match>
    static Hits window(const U8* p, Match match) {
        U64 bits = 0;
        for (size_t i = 0; i < kWindow; i += kUnits) {
            bits |= match(WordBlock(p + i * sizeof(Unit))).hits().bits() << i;
        }
        return Hits(bits);
    }

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

    VX_WRAPS static Matches atMost(Word units, Unit limit) {
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
template <>
struct VectorOf<U64> {
    using Type = U64 __attribute__((vector_size(16)));
};

/// A block as a vector of the compiler's; only what turns matches into bits is written for each machine.
template <class Unit>
class VectorBlock {
public:
    using Vector = typename VectorOf<Unit>::Type;
    static constexpr size_t kUnits = 16 / sizeof(Unit);
    static constexpr size_t kWindow = 64;

    /// All bits of each unit that is a match.
    class Matches {
    public:
        explicit Matches(Vector units) : mUnits(units) {}
        friend Matches operator|(Matches a, Matches b) { return Matches(a.mUnits | b.mUnits); }

        Hits hits() const;

    private:
        friend class VectorBlock;
        Vector mUnits;
    };

    explicit VectorBlock(const U8* p) { memcpy(&mUnits, p, sizeof mUnits); }

    /// The hits among the `kWindow` units at `p`, where `match` tells the matches of a block.
    template <class Match>
    static Hits window(const U8* p, Match match);

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

using Sixteen = __m128i;  ///< matches of sixteen units, a byte for each

inline Sixteen sixteen(VectorOf<U8>::Type units) { return reinterpret_cast<Sixteen>(units); }
inline Sixteen sixteen(VectorOf<U16>::Type low, VectorOf<U16>::Type high) {
    return _mm_packs_epi16(reinterpret_cast<__m128i>(low), reinterpret_cast<__m128i>(high));
}
inline U64 bitsOf(Sixteen matches) { return static_cast<unsigned>(_mm_movemask_epi8(matches)); }
inline U64 bitsOf(Sixteen a, Sixteen b, Sixteen c, Sixteen d) {
    return (bitsOf(d) << 16 | bitsOf(c)) << 32 | bitsOf(b) << 16 | bitsOf(a);
}

#else

using Sixteen = uint8x16_t;  ///< matches of sixteen units, a byte for each

inline Sixteen sixteen(VectorOf<U8>::Type units) { return reinterpret_cast<Sixteen>(units); }
inline Sixteen sixteen(VectorOf<U16>::Type low, VectorOf<U16>::Type high) {
    return vcombine_u8(vmovn_u16(reinterpret_cast<uint16x8_t>(low)), vmovn_u16(reinterpret_cast<uint16x8_t>(high)));
}

/// The bits of the eight bytes of each half, spread over two.
inline uint8x8_t bitPairs(Sixteen matches) {
    const uint8x16_t bits = vandq_u8(matches, vreinterpretq_u8_u64(vdupq_n_u64(0x8040201008040201)));
    return vpadd_u8(vget_low_u8(bits), vget_high_u8(bits));
}
inline U64 bitsOf(Sixteen a, Sixteen b, Sixteen c, Sixteen d) {
    const uint8x8_t low = vpadd_u8(bitPairs(a), bitPairs(b));
    const uint8x8_t high = vpadd_u8(bitPairs(c), bitPairs(d));
    return vget_lane_u64(vreinterpret_u64_u8(vpadd_u8(low, high)), 0);
}
inline U64 bitsOf(Sixteen matches) {
    const uint8x8_t zero = vdup_n_u8(0);
    const uint8x8_t bits = vpadd_u8(vpadd_u8(bitPairs(matches), zero), zero);
    return vget_lane_u16(vreinterpret_u16_u8(bits), 0);
}

#endif

template <>
inline Hits VectorBlock<U8>::Matches::hits() const {
    return Hits(bitsOf(sixteen(mUnits)));
}
template <>
inline Hits VectorBlock<U16>::Matches::hits() const {
    return Hits(bitsOf(sixteen(mUnits, Vector{})));
}

template <class Unit>
template <class Match>
Hits VectorBlock<Unit>::window(const U8* p, Match match) {
    const auto matches = [&](size_t i) {
        if constexpr (sizeof(Unit) == 1) {
            return sixteen(match(VectorBlock(p + 16 * i)).mUnits);
        } else {
            return sixteen(match(VectorBlock(p + 32 * i)).mUnits, match(VectorBlock(p + 32 * i + 16)).mUnits);
        }
    };
    return Hits(bitsOf(matches(0), matches(1), matches(2), matches(3)));
}

template <class Unit>
using Block = VectorBlock<Unit>;

#else

template <class Unit>
using Block = WordBlock<Unit>;

#endif

/// Eight 16-bit units at `p` as bytes of a number, the first one lowest. What does not fit into a byte becomes 0 or
/// 255.
template <bool kBigEndian>
U64 eightNarrowed(const U8* p) {
#if VX_VECTORS
    VectorOf<U16>::Type units;
    memcpy(&units, p, sizeof units);
    if (kBigEndian) units = units << 8 | units >> 8;
#if defined(__SSE2__)
    const auto vector = reinterpret_cast<__m128i>(units);
    const VectorOf<U64>::Type bytes = reinterpret_cast<VectorOf<U64>::Type>(_mm_packus_epi16(vector, vector));
    return bytes[0];
#else
    return vget_lane_u64(vreinterpret_u64_u8(vqmovn_u16(reinterpret_cast<uint16x8_t>(units))), 0);
#endif
#else
    U64 bytes = 0;
    for (size_t i = 0; i < 8; ++i) {
        const U8 low = p[2 * i + (kBigEndian ? 1 : 0)];
        const U8 high = p[2 * i + (kBigEndian ? 0 : 1)];
        bytes |= U64{high == 0 ? low : U8{255}} << 8 * i;
    }
    return bytes;
#endif
}

}  // namespace vxsubtitle
