/// Bounded views of a file's data: one template over 8-bit, UTF-16 LE and UTF-16 BE.
///
/// Indices count units. Whatever lies behind the data reads 0, so a scan needs no bound of its own, and an index
/// may run past the end: a recorded position stays plain arithmetic.
#pragma once

#include <stddef.h>
#include <string.h>

#include <algorithm>

#include "subtitle/SubtitleTypes.h"
#include "subtitle/system/StopRequest.h"
#include "subtitle/text/Vector.h"

namespace vxsubtitle {

using namespace android;  // the fixed-width names

constexpr U8 kCr = 13;
constexpr U8 kLf = 10;

/// White space of every scan: 9 to 13 and 32 on the unit as stored, whatever the locale.
constexpr bool isSpace(U32 unit) { return unit == ' ' || (unit >= 9 && unit <= 13); }
constexpr bool isBlank(U32 unit) { return isSpace(unit) && unit != kCr && unit != kLf; }
constexpr bool isDigit(U32 unit) { return unit >= '0' && unit <= '9'; }
constexpr bool isLetter(U32 unit) { return (unit | 32) >= 'a' && (unit | 32) <= 'z'; }

/// The unit with a-z turned into A-Z, everything else as it is.
template <class Unit>
constexpr Unit upperCase(Unit unit) {
    return unit >= 'a' && unit <= 'z' ? static_cast<Unit>(unit - 32) : unit;
}

/// An encoding: its unit, how a unit lies in memory and how an ASCII character reads. Units stay as stored (read
/// little-endian); big-endian data differs in its literals alone.
struct Bytes {
    using Unit = U8;
    static constexpr bool kBigEndian = false;
    static Unit load(const U8* p) { return *p; }
    static U64 eight(const U8* p) {
        U64 characters;
        memcpy(&characters, p, sizeof characters);
        return characters;
    }
    static void store(U8* p, Unit u) { *p = u; }
    static constexpr Unit lit(char c) { return static_cast<U8>(c); }
    static constexpr Unit native(Unit u) { return u; }  ///< the unit's value as a character
};

struct Utf16Le {
    using Unit = U16;
    static constexpr bool kBigEndian = false;
    static Unit load(const U8* p) { return static_cast<U16>(p[0] | p[1] << 8); }
    static U64 eight(const U8* p) { return eightNarrowed<false>(p); }
    static void store(U8* p, Unit u) {
        p[0] = static_cast<U8>(u);
        p[1] = static_cast<U8>(u >> 8);
    }
    static constexpr Unit lit(char c) { return static_cast<U8>(c); }
    static constexpr Unit native(Unit u) { return u; }
};

struct Utf16Be : Utf16Le {
    static constexpr bool kBigEndian = true;
    static U64 eight(const U8* p) { return eightNarrowed<true>(p); }
    static constexpr Unit lit(char c) { return static_cast<U16>(static_cast<U8>(c) << 8); }
    static constexpr Unit native(Unit u) { return static_cast<U16>(u << 8 | u >> 8); }
};

/// Calls `use` with the encoding of data of a code type: 8-bit, unless that is one of UTF-16. The one place that asks.
template <class Use>
auto withEncoding(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType, Use use) {
    switch (codeType) {
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE:
            return use(Utf16Le{});
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG:
            return use(Utf16Be{});
        default:
            return use(Bytes{});
    }
}

template <class Enc>
constexpr bool isCr(typename Enc::Unit u) {
    return u == Enc::lit('\r');
}
template <class Enc>
constexpr bool isLf(typename Enc::Unit u) {
    return u == Enc::lit('\n');
}
template <class Enc>
constexpr bool isLineEnd(typename Enc::Unit u) {
    return isCr<Enc>(u) || isLf<Enc>(u);
}

/// Matches CR and LF.
template <class Enc>
struct LineEnds {
    auto operator()(Block<typename Enc::Unit> block) const {
        return (block == Enc::lit('\r')) | (block == Enc::lit('\n'));
    }
};

template <class Enc>
class TextView {
public:
    using Encoding = Enc;
    using Unit = typename Enc::Unit;
    static constexpr size_t kWidth = sizeof(Unit);

    /// Views `size` bytes at `data`; an odd last byte of 16-bit data counts as one more unit with high byte 0. Once
    /// `stop` is made nothing is inside any more, and searches end early.
    TextView(const U8* data, size_t size, StopRequest stop = {})
        : mData(data), mSize(data != nullptr ? size : 0), mStop(stop) {}

    /// The unit at `i`, 0 behind the data.
    Unit at(size_t i) const {
        if (i < wholeUnits()) return unit(i);
        return kWidth == 2 && i == wholeUnits() && mSize % 2 != 0 ? Unit{mData[mSize - 1]} : Unit{0};
    }

    /// The first of `count` bytes at `i` of 8-bit data; null unless all of them lie inside.
    const U8* stretch(size_t i, size_t count) const {
        static_assert(kWidth == 1);
        return i <= mSize && count <= mSize - i ? mData + i : nullptr;
    }

    size_t wholeUnits() const { return mSize / kWidth; }
    size_t end() const { return mSize / kWidth + mSize % kWidth; }  ///< the index behind the last unit
    bool inside(size_t i) const { return i < end() && !mStop.isMade(); }
    /// Whether the `count` units from `i` on all lie inside.
    bool holds(size_t i, size_t count) const { return i < wholeUnits() && wholeUnits() - i >= count; }
    Unit unit(size_t i) const { return Enc::load(mData + i * kWidth); }  ///< of those that lie inside
    /// Eight characters from `i` on, where the view holds as many: the first one is the lowest byte. What is no
    /// character of a byte reads 0 or 255.
    U64 eight(size_t i) const { return Enc::eight(mData + i * kWidth); }
    static S64 byteOffset(size_t i) { return static_cast<S64>(i) * static_cast<S64>(kWidth); }

    // The skips move forward and never past the end; an index already behind it stays.

    size_t skipSpace(size_t i) const {
        if (i < wholeUnits() && unit(i) > ' ') return i;
        return skip(i, [](Unit unit) { return isSpace(unit); });
    }

    /// The same within the line.
    size_t skipBlanks(size_t i) const {
        return skip(i, [](Unit unit) { return isBlank(unit); });
    }

    /// To the first CR or LF at or after `i`.
    size_t toLineEnd(size_t i) const { return search(i, kLineEnds); }

    /// Past the whole run of CR and LF at `i`: blank lines vanish.
    size_t pastLineEnds(size_t i) const { return skip(i, isLineEnd<Enc>); }

    /// To the first `unit` at or after `i`, the end of the data when there is none.
    size_t toUnit(size_t i, Unit unit) const {
        return search(i, [unit](Block<Unit> block) { return block == unit; });
    }

    /// The same, of whole units alone. Not below `wholeUnits()` when there is none.
    size_t findUnit(size_t i, Unit unit) const {
        const size_t found = toUnit(i, unit);
        return found < end() ? found : i < wholeUnits() ? wholeUnits() : i;
    }

    /// Behind the `count`th `unit` at or after `i`, if it is not far; else 0.
    size_t behindNear(size_t i, Unit unit, U32 count) const {
        Hits hits = window(i, [unit](Block<Unit> block) { return block == unit; });
        for (; count > 1; --count) hits.dropFirst();
        return hits ? i + hits.first() + 1 : 0;
    }

    /// Behind the first `unit` at or after `i`, if it is among the next few; else 0.
    size_t behindSoon(size_t i, Unit soon) const {
        constexpr size_t kFew = 4;
        if (!holds(i, kFew)) return 0;
        for (size_t k = 0; k < kFew; ++k) {
            if (unit(i + k) == soon) return i + k + 1;
        }
        return 0;
    }

    /// The first whole unit at or after `i` for which `is` holds. Not below `wholeUnits()` when there is none.
    template <class Is>
    size_t find(size_t i, Is is) const {
        while (i < wholeUnits() && !is(unit(i))) {
            if (++i % kStretch == 0 && mStop.isMade()) return wholeUnits();
        }
        return i;
    }

    /// From `i` to the start of the next line.
    size_t nextLine(size_t i) const {
        if constexpr (!Enc::kBigEndian) {
            const Hits behind = window(i, kLineEnds).behindFirstRun(kWindow);
            return behind ? i + behind.first() : farLine(i);
        } else {
            // kept(utf16be-lf): big-endian lines end with CR and the next LF, however far; LF alone ends none
            i = past(toUnit(i, Enc::lit('\r')));
            return past(isLf<Enc>(at(i)) ? i : toUnit(i, Enc::lit('\n')));
        }
    }

    /// The same from a place where CR LF, the usual line break, can be expected once or twice.
    size_t nextLineSoon(size_t i) const {
        if (holds(i, 5) && breaksAt(i)) {
            if (Enc::kBigEndian || !isLineEnd<Enc>(unit(i + 2))) return i + 2;
            if (breaksAt(i + 2) && !isLineEnd<Enc>(unit(i + 4))) return i + 4;
        }
        return nextLine(i);
    }

    /// The same from the start of a line that can be expected to have so many characters. What is expected need not be
    /// waited for.
    template <size_t kLength>
    size_t nextLineBehind(size_t i) const {
        constexpr U64 kBreak = U64{3} << kLength;
        constexpr U64 kLooked = ~U64{0} >> (61 - kLength);  // the character behind the break, too
        const bool asExpected = holds(i, std::max(kLength + 3, Block<Unit>::kUnits)) &&
                                (lineEnds<kLength + 3>(i).bits() & kLooked) == kBreak;
        return asExpected && breaksAt(i + kLength) ? i + kLength + 2 : nextLine(i);
    }

    /// The next line of a place at or before `i`, looked for before it is known whether `i` is still in front of it; 0
    /// where that would not be the next line of all places in between.
    size_t lineAhead(size_t i) const { return Enc::kBigEndian ? 0 : nextLine(i); }

    /// From `i` to the start of the next line, which may be `ahead`.
    size_t nextLine(size_t i, size_t ahead) const { return i < ahead ? ahead : nextLine(i); }

private:
    static constexpr size_t kWindow = Block<Unit>::kWindow;
    static constexpr size_t kStretch = kStopStretch / kWidth;  ///< units between two looks at the request to stop
    static_assert(kStretch % kWindow == 0);

    static constexpr LineEnds<Enc> kLineEnds = {};

    /// The line ends among so many units and more, which lie inside.
    template <size_t kCount>
    Hits lineEnds(size_t i) const {
        if constexpr (kCount <= Block<Unit>::kUnits) {
            return kLineEnds(Block<Unit>(mData + i * kWidth)).hits();
        } else {
            return window(i, kLineEnds);
        }
    }

    bool breaksAt(size_t i) const { return isCr<Enc>(unit(i)) && isLf<Enc>(unit(i + 1)); }

    /// Past the units at `i` for which `is` holds.
    template <class Is>
    size_t skip(size_t i, Is is) const {
        while (i < end() && is(at(i))) {
            if (++i % kStretch == 0 && mStop.isMade()) return end();
        }
        return i;
    }

    /// The hits among the units from `i` on, as many as are looked at at once.
    template <class Match>
    Hits window(size_t i, Match match) const {
        return holds(i, kWindow) ? Block<Unit>::window(mData + i * kWidth, match) : lastWindow(i, match);
    }

    /// The same where the data ends within the window.
    template <class Match>
    __attribute__((noinline, cold)) Hits lastWindow(size_t i, Match match) const {
        U8 last[kWindow * kWidth] = {};
        if (i >= end()) return Hits();
        memcpy(last, mData + i * kWidth, mSize - i * kWidth);
        return Hits(Block<Unit>::window(last, match).bits() & ~U64{0} >> (64 - (end() - i)));
    }

    /// The line behind one that does not end among the units looked at at once.
    __attribute__((noinline)) size_t farLine(size_t i) const {
        // those that have been looked at hold no line end, or one that may go on behind them
        const bool ends = holds(i, kWindow) && isLineEnd<Enc>(unit(i + kWindow - 1));
        if (!ends && holds(i, 2 * kWindow)) {
            const Hits behind = window(i + kWindow, kLineEnds).behindFirstRun(kWindow);
            if (behind) return i + kWindow + behind.first();
        }
        return pastLineEnds(ends || !holds(i, kWindow) ? toLineEnd(i) : toLineEnd(i + kWindow));
    }

    /// To the first hit at or after `i`, the end of the data when there is none. An index behind the data stays.
    template <class Match>
    size_t search(size_t i, Match match) const {
        if (i >= end()) return i;
        for (size_t at = i; at < end(); at += kWindow) {
            if (const Hits hits = window(at, match)) return at + hits.first();
            if ((at - i) % kStretch == 0 && mStop.isMade()) break;
        }
        return end();
    }

    size_t past(size_t i) const { return i < end() ? i + 1 : i; }

    const U8* mData;
    size_t mSize;
    StopRequest mStop;
};

/// What the byte-order mark of `in` tells: FF FE: UTF-16 LE, FE FF: UTF-16 BE, EF BB BF: UTF-8, anything else: NATIVE.
inline EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeTypeOf(const TextView<Bytes>& in) {
    // kept(utf32): its little-endian mark begins as that of UTF-16, and is read as one
    if (in.at(0) == 0xFF && in.at(1) == 0xFE) return E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE;
    if (in.at(0) == 0xFE && in.at(1) == 0xFF) return E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG;
    if (in.at(0) == 0xEF && in.at(1) == 0xBB && in.at(2) == 0xBF) return E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8;
    // kept(utf16-no-mark): the mark alone tells UTF-16
    // kept(utf8-unmarked-native): UTF-8 without a mark is not told from a code page
    return E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;
}

}  // namespace vxsubtitle
