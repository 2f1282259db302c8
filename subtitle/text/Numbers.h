/// The number reader, by which every time stamp of every format is read, and 16-bit characters narrowed to bytes for
/// it.
#pragma once

#include "subtitle/system/Wraps.h"
#include "subtitle/text/TextView.h"

namespace vxsubtitle {

/// Past the blanks of `in` at `i`.
template <class Characters>
constexpr size_t skipBlanks(const Characters& in, size_t i) {
    while (isBlank(in.at(i))) ++i;
    return i;
}
template <class Enc>
size_t skipBlanks(const TextView<Enc>& in, size_t i) {
    return in.skipBlanks(i);
}

/// `number` with one more digit, in 32 bits.
VX_WRAPS constexpr U32 withDigit(U32 number, U32 base, U32 digit) { return number * base + digit; }

/// Reads numbers from `in`, anything that answers `at(i)` in 8-bit characters, from `i` on under `format`: "%u" and
/// "%x" convert, white space in the format is ignored, any other character takes one input character whatever it is.
/// `nextSlot()` gives the `U32*` of the next conversion, null to end. Returns the number of conversions.
template <class Characters, class NextSlot>
constexpr U32 readNumbers(const Characters& in, size_t i, const char* format, NextSlot nextSlot) {
    const auto digitOf = [](U8 c, U32 base) -> U32 {
        if (isDigit(c)) return c - U32{'0'};
        if (base == 16 && (c | 32) >= 'a' && (c | 32) <= 'f') return (c | 32U) - 'a' + 10;
        return base;
    };
    U32 conversions = 0;
    for (const char* f = format; *f != 0; ++f) {
        if (isSpace(static_cast<U8>(*f))) continue;
        if (isBlank(in.at(i))) i = skipBlanks(in, i);
        if (*f != '%') {
            // kept(scan-separators): a literal takes any character, a line end and a 0 included; "%u:%u" reads 1.2
            ++i;
            continue;
        }
        ++f;
        if (*f != 'u' && *f != 'x') break;
        U32* const value = nextSlot();
        if (value == nullptr) break;
        *value = 0;
        const U32 base = *f == 'x' ? 16 : 10;
        U32 digits = 0;
        for (U32 d = 0; digits < 16 && (d = digitOf(in.at(i), base)) < base; ++digits, ++i)
            *value = withDigit(*value, base, d);
        if (digits == 0) break;
        ++conversions;
    }
    return conversions;
}

/// Reads the 8-bit characters of `in` from `pos` on into `values` and answers how many were converted. Values that
/// were not reached keep what they held, the one that failed is 0.
template <class View, size_t N>
constexpr U32 readSome(const View& in, size_t pos, const char* format, U32 (&values)[N]) {
    size_t next = 0;
    return readNumbers(in, pos, format, [&] { return next < N ? &values[next++] : nullptr; });
}

/// The same; true when all of them were converted.
template <class View, size_t N>
[[nodiscard]] constexpr bool readAll(const View& in, size_t pos, const char* format, U32 (&values)[N]) {
    return readSome(in, pos, format, values) == N;
}

/// Reads what stands at `pos` by its columns: any digit where `shape` has a '0', the very character elsewhere, and no
/// digit behind. What has that shape gives the numbers that `readAll` reads from it, at a fraction of the cost; false
/// for anything else, whatever `values` hold then. Built into each call, where the shape is a constant: nothing of it
/// is left to look at.
template <class View, size_t kSize, size_t N>
[[nodiscard]] __attribute__((always_inline)) constexpr bool readColumns(const View& in, size_t pos,
                                                                        const char (&shape)[kSize], U32 (&values)[N]) {
    using Enc = typename View::Encoding;
    size_t n = 0;
    U32 number = 0;
#pragma GCC unroll 64
    for (size_t column = 0; column < kSize - 1; ++column) {
        const auto unit = in.at(pos + column);
        if (shape[column] != '0') {
            if (unit != Enc::lit(shape[column])) return false;
            continue;
        }
        if (!isDigit(Enc::native(unit))) return false;
        const U32 digit = Enc::native(unit) - U32{'0'};
        const bool first = column == 0 || shape[column - 1] != '0';
        number = first ? digit : number * 10 + digit;
        if (shape[column + 1] == '0') continue;
        if (n == N) return false;
        values[n++] = number;
    }
    return n == N && !isDigit(Enc::native(in.at(pos + kSize - 1)));
}

/// Narrows one 16-bit unit as stored: its low byte, and its high byte when that is not 0; for big-endian data the
/// other way round. Returns the number of bytes, 1 or 2.
inline U32 narrowUnit(U16 unit, bool bigEndian, U8 out[2]) {
    out[0] = static_cast<U8>(bigEndian ? unit >> 8 : unit);
    out[1] = static_cast<U8>(bigEndian ? unit : unit >> 8);
    return out[1] != 0 ? 2 : 1;
}

/// `Count` 16-bit units narrowed to bytes for the number reader: the 0 stands at index `Count`, behind it lies what
/// wide units pushed there, and then zeros.
template <U32 Count>
class Narrowed {
public:
    template <class View>
    Narrowed(const View& in, size_t pos) : Narrowed(in, pos, Count) {}

    /// Narrows only `units` (at most `Count`) units; the 0 stands behind the last.
    template <class View>
    Narrowed(const View& in, size_t pos, U32 units) {
        U32 n = 0;
        for (U32 i = 0; i < units && i < Count; ++i) {
            n += narrowUnit(in.at(pos + i), View::Encoding::kBigEndian, mBytes + n);
        }
        mBytes[units < Count ? units : Count] = 0;
    }

    U8 at(size_t i) const { return i < sizeof mBytes ? mBytes[i] : U8{0}; }
    const U8* data() const { return mBytes; }

private:
    U8 mBytes[2 * Count + 1] = {};
};

/// Reads the numbers at `pos` into `values`: 8-bit data as it lies, of 16-bit data the first `Units` characters. True
/// when all values were converted.
template <U32 Units, class View, size_t N>
[[nodiscard]] bool readNarrowed(const View& in, size_t pos, const char* format, U32 (&values)[N]) {
    if constexpr (View::kWidth == 1) {
        return readAll(in, pos, format, values);
    } else {
        return readAll(Narrowed<Units>(in, pos), 0, format, values);
    }
}

/// Whether what stands at `pos`, narrowed and in capitals, begins with `word`.
template <class View, size_t N>
bool atKeyword(const View& in, size_t pos, const char (&word)[N]) {
    constexpr U32 kLength = N - 1;
    const auto spells = [&word](const auto& characters, size_t at, U32 length) {
        for (U32 i = 0; i < length; ++i) {
            if (upperCase(characters.at(at + i)) != static_cast<U8>(word[i])) return false;
        }
        return true;
    };
    if constexpr (View::kWidth == 1) {
        return spells(in, pos, kLength);
    } else {
        U8 first[2];
        narrowUnit(in.at(pos), View::Encoding::kBigEndian, first);
        return upperCase(first[0]) == static_cast<U8>(word[0]) && spells(Narrowed<kLength>(in, pos), 0, kLength);
    }
}

}  // namespace vxsubtitle
