/// The two ends of every text extraction: the work buffer that is walked, with its line ends, and the output that drops
/// what does not fit. A walk looks at units where one of its rules may apply; the plain text between them is copied.
#pragma once

#include <algorithm>
#include <type_traits>

#include "subtitle/text/TextView.h"
#include "subtitle/text/Vector.h"

namespace vxsubtitle {

constexpr U32 kWorkBufferSize = 8192;

/// The work buffer in units of an encoding. Behind what it holds everything reads 0 and nothing is written. Handed on
/// by value: nothing that a walk writes can change where it reads, and both stay in registers.
template <class Enc>
class WorkText {
public:
    using Encoding = Enc;
    using Unit = typename Enc::Unit;
    static constexpr U32 kUnits = kWorkBufferSize / sizeof(Unit);

    /// `bytes`: how many the buffer holds; an odd last one of 16-bit text has a 0 behind it.
    explicit WorkText(U8* buffer, U32 bytes = kWorkBufferSize)
        : mBuffer(buffer), mUnits((bytes + U32{sizeof(Unit)} - 1) / U32{sizeof(Unit)}) {}

    U32 units() const { return mUnits; }
    /// Whether the buffer holds the `count` units from `i` on.
    bool holds(U32 i, U32 count) const { return i <= mUnits && mUnits - i >= count; }
    Unit at(U32 i) const { return i < mUnits ? Enc::load(bytesAt(i)) : Unit{0}; }
    void set(U32 i, Unit unit) {
        if (i < mUnits) Enc::store(mBuffer + i * sizeof(Unit), unit);
    }
    const U8* bytesAt(U32 i) const { return mBuffer + i * sizeof(Unit); }  ///< of a unit in the buffer

    /// The first of `Stops` at or after `i`; `end` when none stands below it. May give up earlier, at the buffer's end.
    template <class Stops>
    U32 plainEnd(U32 i, U32 end) const {
        using UnitBlock = Block<Unit>;
        for (; i < end && i + UnitBlock::kUnits <= kUnits; i += U32{UnitBlock::kUnits}) {
            const Hits hits = Stops::template in<Enc>(UnitBlock(bytesAt(i))).hits();
            if (hits) return std::min(end, i + static_cast<U32>(hits.first()));
        }
        return std::min(i, end);
    }

private:
    U8* mBuffer;
    U32 mUnits;
};

/// Copies big-endian units in little-endian order.
inline void copySwapped(U8* to, const U8* from, size_t units) {
    U16 block[8];
    for (; units >= 8; units -= 8, from += sizeof block, to += sizeof block) {
        memcpy(block, from, sizeof block);
        for (U16& unit : block) unit = Utf16Be::native(unit);
        memcpy(to, block, sizeof block);
    }
    for (; units > 0; --units, from += 2, to += 2) Utf16Le::store(to, Utf16Be::native(Utf16Be::load(from)));
}

/// The caller's buffer, written from its start on: counts every unit, keeps those that fit.
template <class Unit>
class TextSink {
public:
    TextSink(U8* buffer, U32 bytes) : mBuffer(buffer), mUnits(bytes / U32{sizeof(Unit)}) {}
    void put(Unit unit) { write(mCount++, unit); }

    /// The units of `in` from `from` up to `to`, in little-endian order.
    template <class Enc>
    void put(WorkText<Enc> in, U32 from, U32 to) {
        const U32 fit = mCount < mUnits ? std::min(mUnits - mCount, to - from) : 0;
        U8* const end = mBuffer + size_t{mCount} * sizeof(Unit);
        if constexpr (Enc::kBigEndian) {
            copySwapped(end, in.bytesAt(from), fit);
        } else if (fit != 0) {
            memmove(end, in.bytesAt(from), fit * sizeof(Unit));  // a player may extract into the work buffer itself
        }
        mCount += to - from;
    }
    U32 count() const { return mCount; }
    void cut(U32 count) { mCount = count; }
    Unit back(U32 fromEnd) const {  ///< the unit `fromEnd` places before the end, 1 for the last; 0 when there is none
        Unit unit = 0;
        if (fromEnd <= mCount && mCount - fromEnd < mUnits) {
            memcpy(&unit, mBuffer + (mCount - fromEnd) * sizeof(Unit), sizeof unit);
        }
        return unit;
    }
    U32 finish() {  ///< terminates the text and answers its length
        write(mCount, 0);
        return mCount;
    }

private:
    void write(U32 at, Unit unit) {
        if (at < mUnits) memcpy(mBuffer + at * sizeof(Unit), &unit, sizeof unit);
    }

    U8* mBuffer;
    U32 mUnits;
    U32 mCount = 0;
};

/// Room for units of output in 8-bit text: the walk stops when the count has reached it. 0 when even the empty
/// text leaves none.
constexpr U32 outputLimit8(U32 size) { return size > 2 ? size - 2 : 0; }
/// The same for 16-bit text; sizes of 6 and 7 bytes are treated as empty on purpose, smaller ones by necessity.
constexpr U32 outputLimit16(U32 size) { return size >= 8 ? size / 2 - 3 : 0; }

constexpr U32 kNone = 0xFFFFFFFF;

// ---- Where a line ends ----

/// A CR or LF at `i` directly followed by LF.
template <class Enc>
bool atLineBreak(WorkText<Enc> in, U32 i) {
    return isLineEnd<Enc>(in.at(i)) && isLf<Enc>(in.at(i + 1));  // kept(cr-only): CR alone ends no text
}

/// CR LF or LF CR at `i`: markup that runs into one is not markup.
template <class Enc>
bool atBreakInMarkup(WorkText<Enc> in, U32 i) {
    return (isLf<Enc>(in.at(i)) && isCr<Enc>(in.at(i + 1))) || (isCr<Enc>(in.at(i)) && isLf<Enc>(in.at(i + 1)));
}

/// CR LF CR LF at `i`.
template <class Enc>
bool atBlankLine(WorkText<Enc> in, U32 i) {
    return isCr<Enc>(in.at(i)) && isLf<Enc>(in.at(i + 1)) && isCr<Enc>(in.at(i + 2)) && isLf<Enc>(in.at(i + 3));
}

/// Whether the line break at `i` (see `atLineBreak`) ends the text: a blank line follows, or nothing does.
template <class Enc>
bool endsText(WorkText<Enc> in, U32 i) {
    const bool lf = isLf<Enc>(in.at(i));
    const auto after = in.at(i + 2);
    // kept(srt-no-blank-line): a blank line ends the text, the next number does not
    // kept(srt-blank-line-blanks): a line of blanks is not blank
    return isCr<Enc>(after) ? lf || isLf<Enc>(in.at(i + 3)) : lf || after == 0;
}

/// Whether `kSize` bytes are the same, by two looks that may overlap.
template <size_t kSize>
bool sameBytes(const void* a, const void* b) {
    using Look = std::conditional_t<(kSize > 2 * sizeof(U32)), U64, U32>;
    static_assert(kSize >= sizeof(Look) && kSize <= 2 * sizeof(Look));
    const auto differ = [&](size_t from) {
        Look inA, inB;
        memcpy(&inA, static_cast<const U8*>(a) + from, sizeof inA);
        memcpy(&inB, static_cast<const U8*>(b) + from, sizeof inB);
        return inA ^ inB;
    };
    return (differ(0) | differ(kSize - sizeof(Look))) == 0;
}

/// Whether `word` stands at `i`.
template <class Enc, size_t N>
__attribute__((always_inline)) inline bool atWord(const WorkText<Enc>& in, U32 i, const char (&word)[N]) {
    if (!in.holds(i, N - 1)) return false;
    typename Enc::Unit units[N - 1];
    for (size_t k = 0; k < N - 1; ++k) units[k] = Enc::lit(word[k]);
    return sameBytes<sizeof units>(in.bytesAt(i), units);
}

// ---- Plain text ----

/// Where a walk has to look: at control characters from 0 to CR, and at `kChars`. All else is text as it stands.
template <char... kChars>
struct Stops {
    template <class Enc>
    static auto in(const Block<typename Enc::Unit>& block) {
        const auto ends = Enc::kBigEndian ? (block == 0) | (block == Enc::lit('\r')) | (block == Enc::lit('\n'))
                                          : block.within(0, kCr);
        return (ends | ... | (block == Enc::lit(kChars)));
    }
};

/// Those, and units from `kFirst` to `kLast`.
template <U8 kFirst, U8 kLast, class Others>
struct StopsWithin {
    template <class Enc>
    static auto in(const Block<typename Enc::Unit>& block) {
        return block.within(kFirst, kLast) | Others::template in<Enc>(block);
    }
};

/// Puts the plain text at `at` out, which moves behind it. A walk goes on there unit by unit, be the next one plain;
/// but not at a 0, at `bound` or when the output holds `limit` units: false.
template <class Stops, class Enc>
__attribute__((always_inline)) inline bool copyPlain(const WorkText<Enc>& in, U32& at, U32 bound,
                                                     TextSink<typename Enc::Unit>& out, U32 limit) {
    const U32 end = std::min(bound, in.units());
    if (at < end && out.count() < limit) {
        const U32 from = at;
        at = in.template plainEnd<Stops>(from, from + std::min(end - from, limit - out.count()));
        if (at != from) out.put(in, from, at);
    }
    return at < bound && out.count() < limit && in.at(at) != 0;
}

// ---- Text that keeps its markup ----

/// CR LF at `i`.
template <class Enc>
bool atCrLf(WorkText<Enc> in, U32 i) {
    return isCr<Enc>(in.at(i)) && isLf<Enc>(in.at(i + 1));
}

/// Puts the units from `at` on out in little-endian order until `ends(i)`, which only one of `Stops` does, a 0, `bound`
/// or until the output holds `limit` units. Answers where it stopped.
template <class Stops, class Enc, class Ends>
U32 copyUntil(WorkText<Enc> in, U32 at, U32 bound, TextSink<typename Enc::Unit>& out, U32 limit, Ends ends) {
    while (copyPlain<Stops>(in, at, bound, out, limit) && !ends(at)) out.put(Enc::native(in.at(at++)));
    return at;
}

/// The first line of big-endian text as little-endian units: at most `units` of input and `limit` of output.
inline U32 copyFirstLine(WorkText<Utf16Be> in, TextSink<U16> out, U32 units, U32 limit) {
    copyUntil<Stops<>>(in, 0, units, out, limit, [&in](U32 i) { return atCrLf(in, i); });
    return out.finish();
}

}  // namespace vxsubtitle
