#include "tools/meant/Source.h"

#include <algorithm>

#include "tools/meant/Detection.h"
#include "tools/meant/Utf8.h"

namespace meant {
namespace {

/// A file's units by number, whatever their width.
template <size_t Width, bool BigEndian>
struct Units {
    static constexpr size_t kWidth = Width;
    std::string_view bytes;

    size_t size() const { return bytes.size() / Width; }
    char32_t operator[](size_t i) const {
        char32_t unit = 0;
        for (size_t k = 0; k < Width; ++k)
            unit = unit << 8 | static_cast<unsigned char>(bytes[i * Width + (BigEndian ? k : Width - 1 - k)]);
        return unit;
    }
};
using Bytes = Units<1, true>;

/// Encodings in which ASCII bytes may be parts of characters, as an escape sequence before them tells.
bool hasStates(const std::string& encoding) {
    return encoding.compare(0, 8, "ISO-2022") == 0 || encoding.compare(0, 2, "HZ") == 0 || encoding == "UTF-7";
}

/// A zero, and the character that used to end files.
bool isLeftOut(char32_t c) { return c == 0 || c == 0x1A; }

void appendCleanUtf8(std::string_view bytes, std::string* out) {
    while (!bytes.empty()) appendUtf8(out, takeUtf8(&bytes));
}

void appendLatin1(std::string_view bytes, std::string* out) {
    for (const char c : bytes) appendUtf8(out, static_cast<unsigned char>(c));
}

Encodings::Decode decoderOf(const std::string& name, const Encodings& encodings) {
    if (name == "UTF-8" || name == "ASCII") return appendCleanUtf8;
    Encodings::Decode decode = encodings.open ? encodings.open(name) : nullptr;
    return decode ? decode : appendLatin1;
}

/// A character of 16-bit text, which may be two units, or of 32-bit text.
template <class Wide>
char32_t takeWide(const Wide& in, size_t* at) {
    const char32_t c = in[(*at)++];
    const bool isHigh = Wide::kWidth == 2 && c >= 0xD800 && c <= 0xDBFF;
    if (!isHigh || *at == in.size() || in[*at] < 0xDC00 || in[*at] > 0xDFFF) return c;
    return 0x10000 + ((c - 0xD800) << 10) + (in[(*at)++] - 0xDC00);
}

}  // namespace

Source::Source(std::string_view bytes, const Options& options, const Encodings& encodings) {
    mText.reserve(bytes.size() + bytes.size() / 8 + 1);
    const Detected detected = detectEncoding(bytes, options, encodings);
    mEncoding = detected.encoding;
    const std::string& name = mEncoding.name;
    if (name == "UTF-16LE") {
        readWide(Units<2, false>{bytes}, detected.markSize);
    } else if (name == "UTF-16BE") {
        readWide(Units<2, true>{bytes}, detected.markSize);
    } else if (name == "UTF-32LE") {
        readWide(Units<4, false>{bytes}, detected.markSize);
    } else if (name == "UTF-32BE") {
        readWide(Units<4, true>{bytes}, detected.markSize);
    } else {
        readBytes(bytes, detected.markSize, encodings);
    }
    if (!mText.empty() && mText.back() != '\n') mText.push_back('\n');
    setWaymark(bytes.size());
    cutLines();
    mEncoding.damaged = countReplacements(mText);
}

/// Hands the text out in pieces that neither line ends nor zeros are part of.
template <class Units, class Append>
void Source::split(const Units& in, size_t at, bool cutsAtTags, Append append) {
    setWaymark(at * Units::kWidth);
    while (at < in.size()) {
        const char32_t first = in[at];
        if (first == '\r' || first == '\n') {
            at = endLines(in, at);
        } else if (isLeftOut(first)) {
            ++at;
        } else {
            size_t end = at + 1;
            for (; end < in.size(); ++end) {
                const char32_t c = in[end];
                if (c <= '<' && (c == '\r' || c == '\n' || isLeftOut(c) || (c == '<' && cutsAtTags))) break;
            }
            append(at, end);
            at = end;
        }
        setWaymark(at * Units::kWidth);
    }
}

/// CR LF is one end, and so are several CR before one LF, which careless conversion leaves; returns what follows.
template <class Units>
size_t Source::endLines(const Units& in, size_t at) {
    size_t end = at;
    while (end < in.size() && in[end] == '\r') ++end;
    if (end < in.size() && in[end] == '\n') {
        ++(end == at ? mLineEnds.lf : mLineEnds.crLf);
        mText.push_back('\n');
        return end + 1;
    }
    for (; at < end; ++at) {
        ++mLineEnds.cr;
        mText.push_back('\n');
        if (at + 1 < end) setWaymark((at + 1) * Units::kWidth);
    }
    return end;
}

template <class Units>
void Source::readWide(const Units& in, size_t mark) {
    mWidth = Units::kWidth;
    split(in, mark / mWidth, true, [&](size_t at, size_t end) {
        while (at < end) {
            const char32_t c = takeWide(in, &at);
            if (c != kByteOrderMark) appendUtf8(&mText, c);
        }
    });
}

void Source::readBytes(std::string_view bytes, size_t mark, const Encodings& encodings) {
    const Encodings::Decode decode = decoderOf(mEncoding.name, encodings);
    const bool isPlain = !hasStates(mEncoding.name);
    split(Bytes{bytes}, mark, isPlain, [&](size_t at, size_t end) {
        constexpr std::string_view kMark = "\xEF\xBB\xBF";  // of a file that was put behind another
        std::string_view piece = bytes.substr(at, end - at);
        if (piece.substr(0, kMark.size()) == kMark) {
            piece.remove_prefix(kMark.size());
            setWaymark(at + kMark.size());
        }
        if (isPlain && isAscii(piece)) {
            mText += piece;
        } else {
            decode(piece, &mText);
        }
    });
}

void Source::cutLines() {
    std::string_view rest = mText;
    while (!rest.empty()) {
        const size_t end = rest.find('\n');
        mLines.push_back(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
}

Place Source::placeOf(const char* at) const {
    const size_t inText = static_cast<size_t>(at - mText.data());
    Place place;
    const auto isBefore = [](size_t position, const Waymark& mark) { return position < mark.inText; };
    auto mark = std::upper_bound(mWaymarks.begin(), mWaymarks.end(), inText, isBefore);
    if (mark != mWaymarks.begin()) {
        --mark;
        const std::string_view between = text().substr(mark->inText, inText - mark->inText);
        place.offset = mark->inFile + (mWidth == 1 ? between.size() : mWidth == 4 ? 0 : utf16Length(between) * 2);
    }
    const auto isBehind = [](const char* position, std::string_view line) { return position < line.data(); };
    const auto line = std::upper_bound(mLines.begin(), mLines.end(), at, isBehind);
    place.line = std::max<size_t>(1, static_cast<size_t>(line - mLines.begin()));
    return place;
}

}  // namespace meant
