/// Bounded views of a file's data: one template over 8-bit, UTF-16 LE and UTF-16 BE.
///
/// Indices count units. Whatever lies behind the data reads 0, so a scan needs no bound of its own, and an index
/// may run past the end: a recorded position stays plain arithmetic.
#pragma once

#include <stddef.h>
#include <string.h>

#include "subtitle/SubtitleTypes.h"
#include "subtitle/system/StopRequest.h"
#include "subtitle/system/Wraps.h"

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
    static void store(U8* p, Unit u) { *p = u; }
    static constexpr Unit lit(char c) { return static_cast<U8>(c); }
    static constexpr Unit native(Unit u) { return u; }  ///< the unit's value as a character
};

struct Utf16Le {
    using Unit = U16;
    static constexpr bool kBigEndian = false;
    static Unit load(const U8* p) { return static_cast<U16>(p[0] | p[1] << 8); }
    static void store(U8* p, Unit u) {
        p[0] = static_cast<U8>(u);
        p[1] = static_cast<U8>(u >> 8);
    }
    static constexpr Unit lit(char c) { return static_cast<U8>(c); }
    static constexpr Unit native(Unit u) { return u; }
};

struct Utf16Be : Utf16Le {
    static constexpr bool kBigEndian = true;
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

namespace bytes {

using Word = uintptr_t;
constexpr Word kOnes = static_cast<Word>(-1) / 255;

/// High bit set in the first byte of `w` that equals `c`, and in none before it; 0 when none does.
VX_WRAPS inline Word matches(Word w, U8 c) {
    const Word x = w ^ (kOnes * c);
    return (x - kOnes) & ~x & (kOnes * 0x80);
}

/// The first CR or LF at or after `p`, else `end`: a machine word at a time.
inline const U8* findLineEnd(const U8* p, const U8* end) {
    static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "a word's first byte is its lowest");
    for (; static_cast<size_t>(end - p) >= sizeof(Word); p += sizeof(Word)) {
        Word w;
        memcpy(&w, p, sizeof w);
        const Word found = matches(w, kCr) | matches(w, kLf);
        if (found != 0) return p + __builtin_ctzll(found) / 8;
    }
    while (p != end && *p != kCr && *p != kLf) ++p;
    return p;
}

}  // namespace bytes

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
        if (i < wholeUnits()) return Enc::load(mData + i * kWidth);
        return kWidth == 2 && i == wholeUnits() && mSize % 2 != 0 ? Unit{mData[mSize - 1]} : Unit{0};
    }

    size_t wholeUnits() const { return mSize / kWidth; }
    size_t end() const { return mSize / kWidth + mSize % kWidth; }  ///< the index behind the last unit
    bool inside(size_t i) const { return i < end() && !mStop.isMade(); }
    static S64 byteOffset(size_t i) { return static_cast<S64>(i) * static_cast<S64>(kWidth); }

    // The skips move forward and never past the end; an index already behind it stays.

    size_t skipSpace(size_t i) const {
        return skip(i, [](Unit unit) { return isSpace(unit); });
    }

    /// The same within the line.
    size_t skipBlanks(size_t i) const {
        return skip(i, [](Unit unit) { return isBlank(unit); });
    }

    /// To the first CR or LF at or after `i`.
    size_t toLineEnd(size_t i) const {
        if constexpr (kWidth == 1) {
            return search(i, [](const U8* from, const U8* to) { return bytes::findLineEnd(from, to); });
        } else {
            i = find(i, isLineEnd<Enc>);
            return i < end() && !isLineEnd<Enc>(at(i)) ? end() : i;
        }
    }

    /// Past the whole run of CR and LF at `i`: blank lines vanish.
    size_t pastLineEnds(size_t i) const { return skip(i, isLineEnd<Enc>); }

    /// The first whole unit at or after `i` for which `is` holds. Not below `wholeUnits()` when there is none.
    template <class Is>
    size_t find(size_t i, Is is) const {
        const size_t last = wholeUnits();
        while (i < last) {
            const size_t to = stretchEnd(i, last);
            while (i < to && !is(Enc::load(mData + i * kWidth))) ++i;
            if (i < to) break;
            if (mStop.isMade()) return last;
        }
        return i;
    }
    size_t findUnit(size_t i, Unit unit) const {
        if constexpr (kWidth == 1) {
            return search(i, [unit](const U8* from, const U8* to) {
                const void* const found = memchr(from, unit, static_cast<size_t>(to - from));
                return found != nullptr ? static_cast<const U8*>(found) : to;
            });
        } else {
            return find(i, [unit](Unit u) { return u == unit; });
        }
    }

    /// To the first `unit` at or after `i`, the end of the data when there is none.
    size_t toUnit(size_t i, Unit unit) const {
        i = findUnit(i, unit);
        return i < end() && at(i) != unit ? end() : i;
    }

    /// From `i` to the start of the next line.
    size_t nextLine(size_t i) const {
        if constexpr (!Enc::kBigEndian) {
            return pastLineEnds(toLineEnd(i));
        } else {
            // kept(utf16be-lf): big-endian lines end with CR and the next LF, however far; LF alone ends none
            i = past(toUnit(i, Enc::lit('\r')));
            return past(toUnit(i, Enc::lit('\n')));
        }
    }

private:
    static constexpr size_t kStretch = kStopStretch / kWidth;  ///< units between two looks at the request to stop

    static size_t stretchEnd(size_t i, size_t last) { return last - i > kStretch ? i + kStretch : last; }

    /// Past the units at `i` for which `is` holds.
    template <class Is>
    size_t skip(size_t i, Is is) const {
        while (i < end() && is(at(i))) {
            if (++i % kStretch == 0 && mStop.isMade()) return end();
        }
        return i;
    }

    /// `hit(from, to)` answers the first hit in a stretch of bytes, or `to`: asked for one stretch after the other of
    /// those from `i` on. An index behind the data stays.
    template <class Hit>
    size_t search(size_t i, Hit hit) const {
        while (i < mSize) {
            const size_t to = stretchEnd(i, mSize);
            i = static_cast<size_t>(hit(mData + i, mData + to) - mData);
            if (i < to) break;
            if (mStop.isMade()) return mSize;
        }
        return i;
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
