/// The number reader, by which every time stamp of every format is read, and 16-bit characters narrowed to bytes for
/// it.
#pragma once

#include <utility>

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
        for (U32 d = 0; digits < 16 && (d = digitOf(in.at(i), base)) < base; ++digits, ++i) {
            *value = withDigit(*value, base, d);
        }
        if (digits == 0) break;
        ++conversions;
    }
    return conversions;
}

/// Whether a number can stand at `i`, behind blanks or not.
template <class View>
bool opensNumber(const View& in, size_t i) {
    const U32 unit = in.at(i);
    return isDigit(unit) || isBlank(unit);
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

// ---- The usual spellings, eight characters at a time ----
//
// Eight characters are a number whose lowest byte is the first of them. What is read here gives the numbers that the
// number reader reads from it, at a fraction of the cost; everything else is left to that.

constexpr U64 kEach = 0x0101010101010101;  ///< times a byte: that byte for each of eight characters

/// The highest bit of each of eight bytes that is above its limit, which is 127 less the byte of `slack`; behind the
/// first one they are not exact.
VX_WRAPS constexpr U64 above(U64 values, U64 slack) { return ((values + slack) | values) & kEach * 0x80; }
constexpr U64 kDigitSlack = 127 - 9;

/// Each digit with the one behind it as a number of two.
VX_WRAPS constexpr U64 pairsOf(U64 digits) { return digits * 10 + (digits >> 8); }

/// A shape taken apart: any digit where it has a '0', the very character elsewhere.
template <class Spelling>
struct Columns {
    static constexpr size_t kLength = sizeof Spelling::kShape - 1;
    static constexpr bool isDigit(size_t column) { return column < kLength && Spelling::kShape[column] == '0'; }
    static constexpr bool opensNumber(size_t column) {
        return isDigit(column) && (column == 0 || !isDigit(column - 1));
    }

    /// The numbers that begin in front of a column.
    static constexpr size_t numbersBefore(size_t column) {
        size_t count = 0;
        for (size_t c = 0; c < column; ++c) count += opensNumber(c) ? 1 : 0;
        return count;
    }

    static constexpr size_t digitsFrom(size_t column) { return isDigit(column) ? 1 + digitsFrom(column + 1) : 0; }

    // Eight columns from `first` on: the characters; what each may differ by; which of them belong to the shape.

    static constexpr U64 characters(size_t first) {
        return eight(first, [](size_t c) { return static_cast<U8>(Spelling::kShape[c]); });
    }
    static constexpr U64 slack(size_t first) {
        return eight(first, [](size_t c) { return isDigit(c) ? static_cast<U8>(kDigitSlack) : U8{127}; });
    }
    static constexpr U64 mask(size_t first) {
        return eight(first, [](size_t) { return U8{255}; });
    }

private:
    template <class Byte>
    static constexpr U64 eight(size_t first, Byte byte) {
        U64 bytes = 0;
        for (size_t c = first; c < first + 8 && c < kLength; ++c) bytes |= U64{byte(c)} << 8 * (c - first);
        return bytes;
    }
};

template <class Spelling, class View, size_t N, size_t... kEights, size_t... kColumns>
[[nodiscard]] VX_WRAPS __attribute__((always_inline)) constexpr bool readColumns(const View& in, size_t pos,
                                                                                 U32 (&values)[N],
                                                                                 std::index_sequence<kEights...>,
                                                                                 std::index_sequence<kColumns...>) {
    using Shape = Columns<Spelling>;
    static_assert(Shape::numbersBefore(Shape::kLength) == N);
    if (!in.holds(pos, 8 * sizeof...(kEights))) return false;
    U64 digits[sizeof...(kEights) + 1] = {};  // 0 for what is none
    const auto fits = [&](size_t k, U64 characters, U64 slack, U64 mask) {
        digits[k] = (in.eight(pos + 8 * k) ^ characters) & mask;
        return above(digits[k], slack) == 0;
    };
    if (!(fits(kEights, Shape::characters(8 * kEights), Shape::slack(8 * kEights), Shape::mask(8 * kEights)) && ...)) {
        return false;
    }
    const U64 pairs[] = {(pairsOf(digits[kEights]) + (digits[kEights + 1] << 56))...};
    const auto byteOf = [](const U64* eights, size_t column) {
        return static_cast<U8>(eights[column / 8] >> column % 8 * 8);
    };
    const auto number = [&](auto at) {
        constexpr size_t kAt = decltype(at)::value;
        if constexpr (Shape::opensNumber(kAt)) {
            constexpr size_t kDigits = Shape::digitsFrom(kAt);
            static_assert(kDigits <= 3);
            values[Shape::numbersBefore(kAt)] = kDigits == 1   ? byteOf(digits, kAt)
                                                : kDigits == 2 ? byteOf(pairs, kAt)
                                                               : byteOf(digits, kAt) * 100U + byteOf(pairs, kAt + 1);
        }
    };
    (number(std::integral_constant<size_t, kColumns>{}), ...);
    return !Shape::isDigit(Shape::kLength - 1) || !isDigit(View::Encoding::native(in.at(pos + Shape::kLength)));
}

/// Reads what stands at `pos` in the shape of a spelling, with no digit right behind its last one and a few characters
/// more. False for anything else, whatever `values` hold then.
template <class Spelling, class View, size_t N>
[[nodiscard]] __attribute__((always_inline)) constexpr bool readColumns(const View& in, size_t pos, U32 (&values)[N]) {
    constexpr size_t kLength = Columns<Spelling>::kLength;
    return readColumns<Spelling>(in, pos, values, std::make_index_sequence<(kLength + 7) / 8>{},
                                 std::make_index_sequence<kLength>{});
}

constexpr size_t kUsualDigits = 15;  ///< at most

/// Reads a number of one to `kUsualDigits` digits at `i`, which moves behind it; the view holds more characters there.
/// False when it has more digits, or none.
template <class View>
[[nodiscard]] VX_WRAPS __attribute__((always_inline)) constexpr bool takeNumber(const View& in, size_t& i, U32& value) {
    const U64 digits = in.eight(i) ^ kEach * '0';
    const U64 others = above(digits, kEach * kDigitSlack);
    const size_t zeros = others == 0 ? 71 : zerosBelow(others);  // 8 for each digit, and 7
    if (zeros < 8) return false;
    const size_t count = zeros / 8;
    i += count;
    // zeros in front; then neighbours are joined, the first one times 10, 100 or 10000
    const U64 pairs = (digits << (71 - zeros)) * (10 << 8 | 1) >> 8 & 0x00FF00FF00FF00FF;
    const U64 fours = pairs * (100 << 16 | 1) >> 16 & 0x0000FFFF0000FFFF;
    value = static_cast<U32>(fours * (U64{10000} << 32 | 1) >> 32);
    if (count < 8) return true;
    const size_t limit = i + kUsualDigits - 8;
    for (U32 digit = 0; (digit = U32{View::Encoding::native(in.unit(i))} - '0') <= 9; ++i) {
        if (i == limit) return false;
        value = value * 10 + digit;
    }
    return true;
}

template <class Form, class View, size_t N, size_t... kPlaces>
[[nodiscard]] __attribute__((always_inline)) constexpr size_t readForm(const View& in, size_t pos, U32 (&values)[N],
                                                                       std::index_sequence<kPlaces...>) {
    constexpr auto& kForm = Form::kForm;
    constexpr size_t kCount = ((kForm[kPlaces] == '#' ? 1 : 0) + ...);
    static_assert(kCount == N);
    if (!in.holds(pos, sizeof...(kPlaces) + kUsualDigits * kCount)) return 0;
    size_t at = pos;
    size_t n = 0;
    const auto fits = [&](char c) {
        return c == '#' ? takeNumber(in, at, values[n++]) : in.unit(at++) == View::Encoding::lit(c);
    };
    return (fits(kForm[kPlaces]) && ...) ? at - pos : 0;
}

/// Reads what stands at `pos` in the very characters of a form, where each '#' is a number of one to `kUsualDigits`
/// digits, and answers their count. 0 for anything else, whatever `values` hold then.
template <class Form, class View, size_t N>
[[nodiscard]] __attribute__((always_inline)) constexpr size_t readForm(const View& in, size_t pos, U32 (&values)[N]) {
    return readForm<Form>(in, pos, values, std::make_index_sequence<sizeof Form::kForm - 1>{});
}

// ---- 16-bit characters, narrowed ----

/// Narrows one 16-bit unit as stored: its low byte, and its high byte when that is not 0; for big-endian data the
/// other way round. Returns the number of bytes, 1 or 2.
inline U32 narrowUnit(U16 unit, bool bigEndian, U8 out[2]) {
    out[0] = static_cast<U8>(bigEndian ? unit >> 8 : unit);
    out[1] = static_cast<U8>(bigEndian ? unit : unit >> 8);
    return out[1] != 0 ? 2 : 1;
}

/// Narrows the `units` units at `pos`, one behind the other; apart from the scans, of which few need it.
template <class View>
__attribute__((noinline)) void narrow(const View& in, size_t pos, U32 units, U8* out) {
    for (U32 i = 0; i < units; ++i) out += narrowUnit(in.at(pos + i), View::Encoding::kBigEndian, out);
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
        const U32 count = units < Count ? units : Count;
        narrow(in, pos, count, mBytes);
        mBytes[count] = 0;
    }

    U8 at(size_t i) const { return i < sizeof mBytes ? mBytes[i] : U8{0}; }

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

/// Whether what stands at `pos` has the eight characters of `kWord` from `kFirst` on at their places, in whatever case.
template <const auto& kWord, size_t kFirst, class View>
bool spellsEight(const View& in, size_t pos) {
    constexpr auto eight = [](auto byte) {
        U64 bytes = 0;
        for (size_t i = 0; i < 8; ++i) bytes |= U64{byte(kWord[kFirst + i])} << 8 * i;
        return bytes;
    };
    // A small letter is the capital with one bit more.
    constexpr U64 kSmall = eight([](char c) { return static_cast<U8>(isLetter(static_cast<U8>(c)) ? 0x20 : 0); });
    constexpr U64 kCharacters = eight([](char c) { return static_cast<U8>(c); });
    return (in.eight(pos + kFirst) | kSmall) == (kCharacters | kSmall);
}

/// Whether what stands at `pos`, narrowed and in capitals, begins with `kWord`.
template <const auto& kWord, class View>
bool atKeyword(const View& in, size_t pos) {
    constexpr size_t kLength = sizeof kWord - 1;
    const auto spells = [](const auto& characters, size_t at) {
        for (size_t i = 0; i < kLength; ++i) {
            if (upperCase(characters.at(at + i)) != static_cast<U8>(kWord[i])) return false;
        }
        return true;
    };
    if (in.holds(pos, kLength)) {
        const bool begins = spellsEight<kWord, 0>(in, pos) && spellsEight<kWord, kLength - 8>(in, pos);
        if (begins || View::kWidth == 1) return begins;
    }
    if constexpr (View::kWidth == 1) {
        return spells(in, pos);
    } else {
        U8 first[2];
        narrowUnit(in.at(pos), View::Encoding::kBigEndian, first);
        return upperCase(first[0]) == static_cast<U8>(kWord[0]) && spells(Narrowed<kLength>(in, pos), 0);
    }
}

}  // namespace vxsubtitle
