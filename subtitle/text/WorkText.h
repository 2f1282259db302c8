/// The two ends of every text extraction: the work buffer that is walked, with its line ends, and the output that drops
/// what does not fit.
#pragma once

#include "subtitle/text/TextView.h"

namespace vxsubtitle {

constexpr U32 kWorkBufferSize = 8192;

/// The work buffer in units of an encoding. Behind it everything reads 0 and nothing is written.
template <class Enc>
class WorkText {
public:
    using Encoding = Enc;
    using Unit = typename Enc::Unit;
    static constexpr U32 kUnits = kWorkBufferSize / sizeof(Unit);

    explicit WorkText(U8* buffer) : mBuffer(buffer) {}
    Unit at(U32 i) const { return i < kUnits ? Enc::load(mBuffer + i * sizeof(Unit)) : Unit{0}; }
    void set(U32 i, Unit unit) {
        if (i < kUnits) Enc::store(mBuffer + i * sizeof(Unit), unit);
    }

private:
    U8* mBuffer;
};

/// The caller's buffer, written unit by unit: counts every unit, keeps those that fit.
template <class Unit>
class TextSink {
public:
    TextSink(U8* buffer, U32 bytes) : mBuffer(buffer), mUnits(bytes / U32{sizeof(Unit)}) {}
    void put(Unit unit) { write(mCount++, unit); }
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
bool atLineBreak(const WorkText<Enc>& in, U32 i) {
    return isLineEnd<Enc>(in.at(i)) && isLf<Enc>(in.at(i + 1));  // kept(cr-only): CR alone ends no text
}

/// CR LF or LF CR at `i`: markup that runs into one is not markup.
template <class Enc>
bool atBreakInMarkup(const WorkText<Enc>& in, U32 i) {
    return (isLf<Enc>(in.at(i)) && isCr<Enc>(in.at(i + 1))) || (isCr<Enc>(in.at(i)) && isLf<Enc>(in.at(i + 1)));
}

/// CR LF CR LF at `i`.
template <class Enc>
bool atBlankLine(const WorkText<Enc>& in, U32 i) {
    return isCr<Enc>(in.at(i)) && isLf<Enc>(in.at(i + 1)) && isCr<Enc>(in.at(i + 2)) && isLf<Enc>(in.at(i + 3));
}

/// Whether the line break at `i` (see `atLineBreak`) ends the text: a blank line follows, or nothing does.
template <class Enc>
bool endsText(const WorkText<Enc>& in, U32 i) {
    const bool lf = isLf<Enc>(in.at(i));
    const auto after = in.at(i + 2);
    // kept(srt-no-blank-line): a blank line ends the text, the next number does not
    // kept(srt-blank-line-blanks): a line of blanks is not blank
    return isCr<Enc>(after) ? lf || isLf<Enc>(in.at(i + 3)) : lf || after == 0;
}

/// Whether `word` stands at `i`.
template <class Enc, size_t N>
bool atWord(const WorkText<Enc>& in, U32 i, const char (&word)[N]) {
    for (U32 k = 0; k < N - 1; ++k) {
        if (in.at(i + k) != Enc::lit(word[k])) return false;
    }
    return true;
}

// ---- Text that keeps its markup ----

/// CR LF at `i`.
template <class Enc>
bool atCrLf(const WorkText<Enc>& in, U32 i) {
    return isCr<Enc>(in.at(i)) && isLf<Enc>(in.at(i + 1));
}

/// Puts the units from `at` on out in little-endian order until `ends(i)`, a 0, `bound` or until the output holds
/// `limit` units. Answers where it stopped.
template <class Enc, class Ends>
U32 copyUntil(const WorkText<Enc>& in, U32 at, U32 bound, TextSink<typename Enc::Unit>& out, U32 limit, Ends ends) {
    while (at < bound && out.count() < limit && in.at(at) != 0 && !ends(at)) out.put(Enc::native(in.at(at++)));
    return at;
}

/// The first line of big-endian text as little-endian units: at most `units` of input and `limit` of output.
inline U32 copyFirstLine(WorkText<Utf16Be> in, TextSink<U16> out, U32 units, U32 limit) {
    copyUntil(in, 0, units, out, limit, [&in](U32 i) { return atCrLf(in, i); });
    return out.finish();
}

}  // namespace vxsubtitle
