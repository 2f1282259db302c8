/// The markup rules from which the extractions are composed: what opens a tag or a group in braces, where it closes,
/// and what goes with it.
#pragma once

#include "subtitle/text/WorkText.h"

namespace vxsubtitle {

// ---- Where markup ends ----

/// A letter or '/' behind the bracket tells markup from a mere less-than sign or brace.
template <class Enc>
bool opensMarkup(WorkText<Enc> in, U32 i) {
    const auto next = Enc::native(in.at(i + 1));
    // kept(srt-braces-shown): so "{\an8}" is text, and "I <3 you"
    return isLetter(next) || next == '/';
}

/// The first `close` at or after `from` and below `bound`, across line ends; `kNone` when there is none.
template <class Enc>
U32 findUnit(WorkText<Enc> in, U32 from, U32 bound, char close) {
    for (U32 i = from; i < bound && i < in.units(); ++i) {
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
    U32 find(WorkText<Enc> in, U32 open, U32 bound) {
        if (open < mFailedUpTo) return kNone;
        U32 i = open + 1;
        for (; i < bound && i < in.units() && !atBreakInMarkup(in, i); ++i) {
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
bool blankLineBehind(WorkText<Enc> in, U32 close, U32 bound) {
    return atBlankLine(in, close + 1) && U64{close} + 4 < bound;
}

/// Markup that closes its line ends the visible text: its closing bracket becomes 0 in the work buffer and a 0 goes
/// out (and counts).
template <class Enc, class Unit>
inline void closeLineAt(WorkText<Enc> in, U32 close, TextSink<Unit>& out) {
    in.set(close, 0);  // kept(text-past-zero): the count runs past the 0 that a reader of the text stops at
    out.put(0);
}

/// Behind the '}' at `close`: past the tag that directly follows it, if one does. `kNone` when that tag does not
/// close below `bound`.
template <class Enc>
U32 pastBraceAndTag(WorkText<Enc> in, U32 close, U32 bound) {
    if (in.at(close + 1) != Enc::lit('<')) return close + 1;
    // kept(srt-behind-brace): up to the next '>', over lines too
    const U32 end = findUnit(in, close + 1, bound, '>');
    return end == kNone ? kNone : end + 1;
}

/// Behind the override block that opens at `open`: past its '}' and a tag that directly follows it, or on the former
/// '}' when the block closes its line. Without a '}', or with a tag left open, the block takes the rest of the text.
template <class Enc, class Unit>
__attribute__((always_inline)) inline U32 pastBlock(WorkText<Enc> in, U32 open, U32 bound, TextSink<Unit>& out) {
    const U32 close = findUnit(in, open + 1, bound, '}');
    if (close == kNone) return in.kUnits;    // kept(text-brace-unclosed): takes the rest of the text
    if (isLineEnd<Enc>(in.at(close + 1))) {  // kept(text-block-at-line-end): ends the visible text
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
    using Stops = vxsubtitle::Stops<'{', '<'>;  ///< what plain text has none of

    /// From `dataBound` on everything is text; tags begin and end below `tagBound`.
    Markup(U32 dataBound, U32 tagBound) : mDataBound(dataBound), mTagBound(tagBound) {}

    /// One step of a walk whose unit at `at` does not end the line: a block goes, or one unit is put out with the tag
    /// before it gone. False when the text ends here without a terminating 0.
    template <class Unit>
    __attribute__((always_inline)) bool step(WorkText<Enc> in, U32& at, TextSink<Unit>& out) {
        // kept(trail-byte-brace): byte by byte, so the second byte of a double-byte character counts, too
        if (at < mDataBound && in.at(at) == Enc::lit('{')) {
            at = pastBlock(in, at, mDataBound, out);
            return true;
        }
        if (at < mDataBound && in.at(at) == Enc::lit('<')) {
            const U32 close = mTags.find(in, at, mTagBound);
            if (close != kNone) {
                // kept(text-no-terminator): no terminating 0 on this way out
                if (blankLineBehind(in, close, mTagBound)) return false;
                at = close + 1;  // kept(text-tag-at-line-end): what stands behind is text, be it a line end or a 0
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

}  // namespace vxsubtitle
