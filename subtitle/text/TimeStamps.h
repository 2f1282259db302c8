/// How each format spells its times: one structure per format, with the shape of the usual spelling and the format
/// under which the number reader takes any other.
#pragma once

#include "subtitle/text/Numbers.h"

namespace vxsubtitle {

/// A time in milliseconds; the fraction counts as milliseconds whatever its digits. Wraps at 32 bits.
VX_WRAPS constexpr U32 milliseconds(U32 hours, U32 minutes, U32 seconds, U32 fraction = 0) {
    // kept(scan-no-range): no part of a time has a range
    return (hours * 3600 + minutes * 60 + seconds) * 1000 + fraction;  // kept(beyond-32-bit): in 32 bits
}

// ---- The spellings ----
//
// kShape: how nearly every file writes it, a '0' for each digit. kFormat: how it is read however it is written; its
// literals take any character. 16-bit data is narrowed by as many units as the shape has.

struct SrtSpelling {
    static constexpr char kShape[] = "00:00:00,000 --> 00:00:00,000";
    static constexpr char kFormat[] = "%u:%u:%u,%u --> %u:%u:%u,%u";
};

struct SsaSpelling {  // the fields Start and End
    static constexpr char kShape[] = "0:00:00.00,0:00:00.00";
    static constexpr char kFormat[] = "%u:%u:%u.%u,%u:%u:%u.%u";
};

struct TxtSpelling {
    static constexpr char kShape[] = "00:00:00,0=";
    static constexpr char kFormat[] = "%u:%u:%u,%u=";
};

struct SubViewer20Spelling {
    static constexpr char kShape[] = "00:00:00.00,00:00:00.00";
    static constexpr char kFormat[] = "%u:%u:%u.%u,%u:%u:%u.%u";
};

struct SubViewer10Spelling {
    static constexpr char kShape[] = "[00:00:00]";
    static constexpr char kFormat[] = "[%u:%u:%u]";
};

struct DvbSpelling {
    static constexpr char kShape[] = "00:00:00:00 00:00:00:00 ";
    static constexpr char kFormat[] = "%u:%u:%u:%u %u:%u:%u:%u";
};

struct NumberCrLf {
    static constexpr char kForm[] = "#\r\n";
};
struct NumberLf {
    static constexpr char kForm[] = "#\n";
};

// ---- Reading them ----

/// The numbers that a format converts.
constexpr U32 countOf(const char* format) {
    U32 count = 0;
    for (; *format != 0; ++format) count += *format == '%' ? 1 : 0;
    return count;
}

/// One time stamp, or the two of a time line, in the numbers of a spelling.
template <class Spelling>
struct TimeStamp {
    static constexpr U32 kLength = sizeof Spelling::kShape - 1;  ///< characters of the shape
    static constexpr U32 kNumbers = countOf(Spelling::kFormat);

    U32 v[kNumbers];

    /// Reads a stamp of exactly the shape.
    template <class View>
    [[nodiscard]] __attribute__((always_inline)) bool readShape(const View& in, size_t i) {
        return readColumns<Spelling>(in, i, v);
    }

    /// Reads a stamp however it is written.
    template <class View>
    [[nodiscard]] __attribute__((always_inline)) bool read(const View& in, size_t i) {
        return readShape(in, i) || readOther(in, i);
    }

    /// The same by the number reader.
    template <class View>
    [[nodiscard]] __attribute__((always_inline)) bool readOther(const View& in, size_t i) {
        TimeStamp other{};  // not the one that the usual spelling keeps in registers
        const bool isRead = readNumbersAt(in, i, other);
        *this = other;
        return isRead;
    }

private:
    template <class View>
    __attribute__((noinline)) static bool readNumbersAt(const View& in, size_t i, TimeStamp& stamp) {
        return readNarrowed<kLength>(in, i, Spelling::kFormat, stamp.v);
    }
};

/// Past a line that holds nothing but a number, if the usual line end follows it; else `i`. In front of a stamp of the
/// shape such a line is none itself: the number reader gives up in it, or within that stamp.
template <class View>
size_t pastNumberLine(const View& in, size_t i) {
    U32 number[1];
    if (const size_t length = readForm<NumberCrLf>(in, i, number)) return i + length;
    if (View::Encoding::kBigEndian) return i;  // there LF ends no line
    return i + readForm<NumberLf>(in, i, number);
}

// ---- Proof ----

/// Characters that a constant expression can look at: behind them everything is `behind`.
template <size_t N>
struct Spelled {
    using Encoding = Bytes;
    U8 units[N];
    U8 behind;
    constexpr U8 at(size_t i) const { return i < N ? units[i] : behind; }
    constexpr bool holds(size_t, size_t) const { return true; }
    constexpr U64 eight(size_t i) const {
        U64 characters = 0;
        for (size_t k = 0; k < 8; ++k) characters |= U64{at(i + k)} << 8 * k;
        return characters;
    }
};

/// Whether a stamp of the shape gives the same numbers by its columns and under the format, with `digit(column)` for
/// its digits and `behind` behind it.
template <class Spelling, class Digit>
constexpr bool readsAlike(Digit digit, U8 behind) {
    constexpr size_t kLength = sizeof Spelling::kShape - 1;
    Spelled<kLength> in = {};
    for (size_t i = 0; i < kLength; ++i) {
        const char c = Spelling::kShape[i];
        in.units[i] = static_cast<U8>(c == '0' ? '0' + digit(i) : c);
    }
    in.behind = behind;
    U32 byColumns[countOf(Spelling::kFormat)] = {};
    U32 byFormat[countOf(Spelling::kFormat)] = {};
    if (!readColumns<Spelling>(in, 0, byColumns) || !readAll(in, 0, Spelling::kFormat, byFormat)) return false;
    for (size_t i = 0; i < countOf(Spelling::kFormat); ++i) {
        if (byColumns[i] != byFormat[i]) return false;
    }
    return true;
}

template <class Spelling>
constexpr bool readsAlike() {
    const auto zeros = [](size_t) { return 0; };
    const auto nines = [](size_t) { return 9; };
    const auto mixed = [](size_t i) { return static_cast<int>((i * 7 + 3) % 10); };
    constexpr U8 kBehind[] = {0, kCr, ' ', ':', ',', 'x', 0xFF};
    for (const U8 unit : kBehind) {
        if (!readsAlike<Spelling>(zeros, unit) || !readsAlike<Spelling>(nines, unit)) return false;
        if (!readsAlike<Spelling>(mixed, unit)) return false;
    }
    return true;
}

static_assert(readsAlike<SrtSpelling>());
static_assert(readsAlike<SsaSpelling>());
static_assert(readsAlike<TxtSpelling>());
static_assert(readsAlike<SubViewer20Spelling>());
static_assert(readsAlike<SubViewer10Spelling>());
static_assert(readsAlike<DvbSpelling>());

}  // namespace vxsubtitle
