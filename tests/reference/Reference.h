/// A second reading of every format: slow, plain, and written apart from the library, of which it knows the types
/// alone. `DifferentialTest` holds the two against each other.
///
/// Every read of a byte is checked: outside there is 0.
#pragma once

#include <stddef.h>

#include <string>
#include <vector>

#include "subtitle/SubtitleTypes.h"

namespace reference {

using namespace android;
using CodeType = EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE;

constexpr CodeType kUnknown = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN;
constexpr CodeType kUtf16Le = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE;
constexpr CodeType kUtf16Be = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG;
constexpr CodeType kUtf8 = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8;
constexpr CodeType kNative = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;
constexpr CodeType kUndecided = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NUM;  ///< this reading cannot tell

constexpr unsigned kCr = 13;
constexpr unsigned kLf = 10;
constexpr unsigned kBigCr = 0x0D00;  ///< as it lies in the file, read as little-endian
constexpr unsigned kBigLf = 0x0A00;

// ------------------------------------------------------------------------------------------------ characters

inline unsigned byteAt(const std::string& data, size_t i) {
    return i < data.size() ? static_cast<unsigned char>(data[i]) : 0;
}
inline unsigned unitAt(const std::string& data, size_t i) { return byteAt(data, 2 * i) | byteAt(data, 2 * i + 1) << 8; }
inline unsigned swapped(unsigned unit) { return (unit & 0xFF) << 8 | unit >> 8; }

inline bool isSpace(unsigned c) { return c == ' ' || (c >= 9 && c <= 13); }
inline bool isDigit(unsigned c) { return c >= '0' && c <= '9'; }
inline bool isLetter(unsigned c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
inline bool isLineEnd(unsigned c) { return c == kCr || c == kLf; }
inline bool isLineBreak(unsigned c, unsigned next) { return (c == kCr && next == kLf) || (c == kLf && next == kCr); }

/// A file, in units of its encoding.
struct File {
    std::string data;
    CodeType code = kUnknown;

    bool wide() const { return code == kUtf16Le || code == kUtf16Be; }
    bool big() const { return code == kUtf16Be; }
    unsigned at(size_t i) const { return wide() ? unitAt(data, i) : byteAt(data, i); }
    unsigned character(size_t i) const { return big() ? swapped(at(i)) : at(i); }
    size_t count() const { return wide() ? data.size() / 2 : data.size(); }
    size_t position(size_t i) const { return wide() ? 2 * i : i; }
    bool inside(size_t i) const { return position(i) < data.size(); }
};

/// The byte-order mark's code type.
inline CodeType codeOf(const std::string& data) {
    if (byteAt(data, 0) == 0xFF && byteAt(data, 1) == 0xFE) return kUtf16Le;
    if (byteAt(data, 0) == 0xFE && byteAt(data, 1) == 0xFF) return kUtf16Be;
    if (byteAt(data, 0) == 0xEF && byteAt(data, 1) == 0xBB && byteAt(data, 2) == 0xBF) return kUtf8;
    return kNative;
}

inline size_t skipSpace(const File& in, size_t i) {
    while (in.inside(i) && isSpace(in.at(i))) ++i;
    return i;
}

/// Behind the line's end: all CR and LF there are, and in big-endian text a CR and the next LF. Half a unit at the end
/// counts.
inline size_t skipLine(const File& in, size_t i) {
    if (in.big()) {
        while (in.inside(i) && in.at(i) != kBigCr) ++i;
        if (in.inside(i)) ++i;
        while (in.inside(i) && in.at(i) != kBigLf) ++i;
        if (in.inside(i)) ++i;
        return i;
    }
    while (in.inside(i) && !isLineEnd(in.at(i))) ++i;
    while (in.inside(i) && isLineEnd(in.at(i))) ++i;
    return i;
}

/// Behind the line's end, and all CR and LF that follow, in big-endian text too.
inline size_t skipLineEnds(const File& in, size_t i) {
    while (in.inside(i) && !isLineEnd(in.character(i))) ++i;
    while (in.inside(i) && isLineEnd(in.character(i))) ++i;
    return i;
}

/// `count` units made bytes: one each, two where the other half is not 0.
inline std::string narrowedOpen(const File& in, size_t i, size_t count) {
    std::string out;
    for (size_t k = 0; k < count; ++k) {
        const unsigned unit = in.character(i + k);
        out += static_cast<char>(unit & 0xFF);
        if (unit >> 8 != 0) out += static_cast<char>(unit >> 8);
    }
    return out;
}

/// The same with a 0 at `count`, whatever stood there.
inline std::string narrowed(const File& in, size_t i, size_t count) {
    std::string out = narrowedOpen(in, i, count);
    out.resize(2 * count + 1);
    out[count] = '\0';
    return out;
}

/// The first `count` bytes of the text at `i`.
inline std::string head(const File& in, size_t i, size_t count) {
    if (in.wide()) return narrowed(in, i, count).substr(0, count);
    return in.data.substr(i < in.data.size() ? i : in.data.size(), count);
}

inline std::string upper(std::string text) {
    for (char& c : text) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
    }
    return text;
}

// --------------------------------------------------------------------------------------------------- numbers

inline int hexDigit(unsigned c) {
    if (isDigit(c)) return static_cast<int>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<int>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') return static_cast<int>(c - 'A' + 10);
    return -1;
}

/// The numbers that are read from `at` on, up to the first that is none. A literal takes any one character.
inline std::vector<U32> numbers(const std::string& data, size_t at, const std::string& format) {
    std::vector<U32> found;
    for (size_t f = 0; f < format.size(); ++f) {
        if (isSpace(byteAt(format, f))) continue;
        while (isSpace(byteAt(data, at)) && !isLineEnd(byteAt(data, at))) ++at;
        if (format[f] != '%') {
            ++at;
            continue;
        }
        const bool hex = format[++f] == 'x';
        U32 value = 0;
        int digits = 0;
        while (digits < 16) {
            const int digit = hexDigit(byteAt(data, at));
            if (digit < 0 || (!hex && digit > 9)) break;
            value = value * (hex ? 16 : 10) + static_cast<U32>(digit);
            ++digits;
            ++at;
        }
        if (digits == 0) break;
        found.push_back(value);
    }
    return found;
}

/// Hours, minutes, seconds, thousandths of numbers `i` to `i` + 3.
inline U32 milliseconds(const std::vector<U32>& n, size_t i) {
    return (n[i] * 3600 + n[i + 1] * 60 + n[i + 2]) * 1000 + n[i + 3];
}
inline U32 wholeSeconds(const std::vector<U32>& n) { return (n[0] * 3600 + n[1] * 60 + n[2]) * 1000; }

// ---------------------------------------------------------------------------------------------------- answers

struct Tag {
    U32 start, end;
    S64 pos;
};

/// What a file holds.
struct Film {
    bool accepted = true;
    File file;
    std::vector<Tag> tags;
    size_t shortWidth = 0;  ///< timed plain text: of the first time stamp of one-line entries

    void add(U32 start, U32 end, size_t pos) { tags.push_back({start, end, static_cast<S64>(pos)}); }
};

/// What a text request answers and writes.
struct Shown {
    std::vector<unsigned> units;
    bool terminated = false;
};

constexpr size_t kWorkSize = 8192;

/// The bytes of an entry, at the start of a cleared buffer of 8192.
struct Work {
    Work(const Film& film, size_t index) : bytes(kWorkSize, '\0') {
        const bool last = index + 1 == film.tags.size();
        const S64 from = film.tags[index].pos;
        limit = static_cast<U32>((last ? 0 : film.tags[index + 1].pos) - from);
        const S64 to = last ? static_cast<S64>(film.file.data.size()) : film.tags[index + 1].pos;
        copied = last && to < from ? 0 : static_cast<U32>(to - from);
        if (copied > kWorkSize) copied = kWorkSize;
        for (size_t i = 0; i < copied; ++i) {
            bytes[i] = static_cast<char>(byteAt(film.file.data, static_cast<size_t>(from) + i));
        }
    }
    unsigned at(size_t i) const { return byteAt(bytes, i); }
    unsigned unit(size_t i) const { return unitAt(bytes, i); }

    std::string bytes;
    size_t copied;
    U32 limit;  ///< the next position less this one's; behind the last entry the next one is 0
};

inline Shown notShown() { return {}; }

/// A text for which there is no room.
inline Shown emptyText(U32 size, bool wide) {
    if (size < (wide ? 2U : 1U)) return notShown();
    return {{}, true};
}

/// The index of the entry at a time, among entries first to last.
inline U32 entryAt(const std::vector<Tag>& tags, U32 time, S32 first, S32 last) {
    if (tags.empty()) return 0;
    const auto start = [&](S32 i) {
        return i >= 0 && static_cast<size_t>(i) < tags.size() ? tags[static_cast<size_t>(i)].start : 0;
    };
    S32 lo = first, hi = last + 1;
    while (true) {
        const S32 mid = (lo + hi) / 2;
        if (time < start(mid)) {
            if (lo + hi < 2) return 0;
            hi = mid - 1;
            if (time >= start(hi)) return static_cast<U32>(hi);
            if (mid <= lo) return 0;
        } else {
            if (mid >= last) return static_cast<U32>(mid);
            if (time < start(mid + 1)) return static_cast<U32>(mid);
            lo = mid + 1;
            if (hi <= mid) return 0;
        }
    }
}

// ---------------------------------------------------------------------------------------------------- formats

/// The text of the base class. `big5`: the device's language.
Shown baseText(const Film& film, size_t index, U32 size, bool big5);

Film scanSrt(const std::string& data);

Film scanSsa(const std::string& data);
Shown ssaText(const Film& film, size_t index, U32 size);

Film scanSmi(const std::string& data);
Shown smiText(const Film& film, size_t index, U32 size);

Film scanTxt(const std::string& data);
Shown txtText(const Film& film, size_t index, U32 size);

Film scanSubViewer20(const std::string& data);

Film scanSubViewer10(const std::string& data);
Shown lineText(const Film& film, size_t index, U32 size);

Film scanMicroDvd(const std::string& data, U32 rate);

Film scanDvb(const std::string& data);
Shown timedText(const Film& film, size_t index, U32 size);  ///< of the five-argument form

struct Track {
    U32 language, first, last;
};

struct Index {
    CodeType code = kNative;
    std::vector<Tag> tags;
    std::vector<Track> tracks;
    U32 palette[16] = {0xFF000000};
    U32 width = 0, height = 0, originX = 0, originY = 0;
    std::vector<std::string> log;
};

/// An index that fits into the parser's window.
Index scanIndex(const std::string& data);

struct Unit {
    bool decoded = false;
    U16 width = 0, height = 0, x = 0, y = 0;
    U32 colours[4] = {};
    U8 transparent = 0;
    std::string bitmap;  ///< as large as the room for it
    std::vector<std::string> log;
};

Unit decodeUnit(const std::string& unit, const U32 (&palette)[16], U32 room);

}  // namespace reference
