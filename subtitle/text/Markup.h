/// The pieces from which every text extraction is composed: the work buffer that is walked, the output that drops
/// what does not fit, and the markup rules that the formats share.
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
    return isLineEnd<Enc>(in.at(i)) && isLf<Enc>(in.at(i + 1));
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

// ---- Where markup ends ----

/// A letter or '/' behind the bracket tells markup from a mere less-than sign or brace.
template <class Enc>
bool opensMarkup(const WorkText<Enc>& in, U32 i) {
    const auto next = Enc::native(in.at(i + 1));
    return isLetter(next) || next == '/';
}

/// The first `close` at or after `from` and below `bound`, across line ends; `kNone` when there is none.
template <class Enc>
U32 findUnit(const WorkText<Enc>& in, U32 from, U32 bound, char close) {
    for (U32 i = from; i < bound && i < in.kUnits; ++i) {
        if (in.at(i) == Enc::lit(close)) return i;
    }
    return kNone;
}

enum class Runs { kSingle, kJoined };
enum class Zeros { kPassed, kEndSearch };

/// Looks for the end of markup, on the markup's line and below a bound that stays the same. A search that failed is
/// remembered: a text full of open brackets costs one pass, not one for each.
template <class Enc>
class CloseFinder {
public:
    /// Joined runs: a `close` directly followed by '<' is not the last one.
    explicit CloseFinder(char close, Runs runs = Runs::kSingle, Zeros zeros = Zeros::kPassed)
        : mClose(Enc::lit(close)), mJoined(runs == Runs::kJoined), mEndAtZero(zeros == Zeros::kEndSearch) {}

    /// Where the markup that opens at `open` closes; `kNone` gives the markup up.
    U32 find(const WorkText<Enc>& in, U32 open, U32 bound) {
        if (open < mFailedUpTo) return kNone;
        U32 i = open + 1;
        for (; i < bound && i < in.kUnits && !atBreakInMarkup(in, i); ++i) {
            const auto unit = in.at(i);
            if (unit == mClose && !(mJoined && in.at(i + 1) == Enc::lit('<'))) return i;
            if (unit == 0 && mEndAtZero) break;
        }
        mFailedUpTo = i;
        return kNone;
    }

private:
    typename Enc::Unit mClose;
    bool mJoined;
    bool mEndAtZero;
    U32 mFailedUpTo = 0;
};

/// Whether CR LF CR LF stands right behind the markup that closes at `close`, all of it below `bound`.
template <class Enc>
bool blankLineBehind(const WorkText<Enc>& in, U32 close, U32 bound) {
    return atBlankLine(in, close + 1) && U64{close} + 4 < bound;
}

/// Markup that closes its line ends the visible text: its closing bracket becomes 0 in the work buffer and a 0 goes
/// out (and counts).
template <class Enc, class Unit>
void closeLineAt(WorkText<Enc>& in, U32 close, TextSink<Unit>& out) {
    in.set(close, 0);  // kept: the count runs past the 0 that a reader of the text stops at
    out.put(0);
}

/// Behind the '}' at `close`: past the tag that directly follows it, if one does. `kNone` when that tag does not
/// close below `bound`.
template <class Enc>
U32 pastBraceAndTag(const WorkText<Enc>& in, U32 close, U32 bound) {
    if (in.at(close + 1) != Enc::lit('<')) return close + 1;
    const U32 end = findUnit(in, close + 1, bound, '>');
    return end == kNone ? kNone : end + 1;
}

/// Behind the override block that opens at `open`: past its '}' and a tag that directly follows it, or on the former
/// '}' when the block closes its line. Without a '}', or with a tag left open, the block takes the rest of the text.
template <class Enc, class Unit>
U32 pastBlock(WorkText<Enc>& in, U32 open, U32 bound, TextSink<Unit>& out) {
    const U32 close = findUnit(in, open + 1, bound, '}');
    if (close == kNone) return in.kUnits;
    if (isLineEnd<Enc>(in.at(close + 1))) {
        closeLineAt(in, close, out);
        return close;
    }
    const U32 behind = pastBraceAndTag(in, close, bound);
    return behind == kNone ? in.kUnits : behind;
}

/// Override blocks and tags as most formats drop them: a block wherever a '{' stands, a tag when it closes on its
/// line and below a bound.
template <class Enc>
class Markup {
public:
    /// From `dataBound` on everything is text; tags begin and end below `tagBound`.
    Markup(U32 dataBound, U32 tagBound) : mDataBound(dataBound), mTagBound(tagBound) {}

    /// One step of a walk whose unit at `at` does not end the line: a block goes, or one unit is put out with the tag
    /// before it gone. False when the text ends here without a terminating 0.
    template <class Unit>
    bool step(WorkText<Enc>& in, U32& at, TextSink<Unit>& out) {
        if (at < mDataBound && in.at(at) == Enc::lit('{')) {
            at = pastBlock(in, at, mDataBound, out);
            return true;
        }
        if (at < mDataBound && in.at(at) == Enc::lit('<')) {
            const U32 close = mTags.find(in, at, mTagBound);
            if (close != kNone) {
                if (blankLineBehind(in, close, mTagBound)) return false;  // kept: no terminating 0 on this way out
                at = close + 1;  // kept: what stands behind a tag is text, be it a line end or a 0
            }
        }
        out.put(in.at(at++));
        return true;
    }

private:
    U32 mDataBound;
    U32 mTagBound;
    CloseFinder<Enc> mTags{'>'};
};

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
