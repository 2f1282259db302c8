/// What the tests of the .sub parsers share: a parser on a file of its own, its entries in one line, texts out of
/// buffers of exactly their size, and log lines whose changing numbers are levelled.
#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "subtitle/SubtitleFileProcess.h"
#include "tests/FormatChecks.h"
#include "tests/support/Forward.h"
#include "tests/support/Interpose.h"

namespace test {

using namespace android;
using namespace std::literals;
using Lines = std::vector<LogLine>;

constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";

inline U8* bytesOf(const char* path) { return reinterpret_cast<U8*>(const_cast<char*>(path)); }

/// How often a costly test repeats: `rounds` on a desk, less under emulation and sanitizers, or the part of it in
/// percent that the environment's VXSUBTITLE_TEST_PERCENT says.
inline unsigned scaled(unsigned rounds) {
#if defined(TEST_SANITIZED) || defined(__arm__)
    unsigned percent = 10;
#else
    unsigned percent = 100;
#endif
    if (const char* const asked = getenv("VXSUBTITLE_TEST_PERCENT")) percent = static_cast<unsigned>(atoi(asked));
    const unsigned count = static_cast<unsigned>(static_cast<unsigned long long>(rounds) * percent / 100);
    return count > 0 ? count : 1;
}

/// Line ends, zeros and what is not ASCII made visible.
inline std::string visible(std::string_view text) {
    std::string out;
    for (const char c : text) {
        char code[8];
        const unsigned char u = static_cast<unsigned char>(c);
        snprintf(code, sizeof code, "\\x%02X", unsigned{u});
        out += c == '\r' ? "\\r" : c == '\n' ? "\\n" : c == '\0' ? "\\0" : u < 32 || u > 126 ? code : std::string(1, c);
    }
    return out;
}

/// A parser that has parsed a file of its own.
template <class Parser>
class Parsed {
public:
    /// `rate` is set before the parse, 0 leaves it alone.
    explicit Parsed(std::string_view content, U32 rate = 0) : file(content, ".sub"), parser(bytesOf(file.path())) {
        parser.SetFrameRate(rate);
        result = parser.BeginParse();
    }

    TempFile file;
    Parser parser;
    BOOL result;
};

/// A parser with `content` in its raw buffer, as text of a code type; no file and no thread.
template <class Parser>
class Loaded {
public:
    explicit Loaded(std::string_view content, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType = kNative) : parser(nullptr) {
        load(parser, content);
        parser.m_eCodeType = codeType;
    }

    Parser parser;
};

/// The text that an extraction gives: what it counted, 16-bit units as bytes ('?' from 256 up). "!" and a word in
/// front: the buffer was not terminated, or something was written without a count.
template <class Extract>
std::string textFrom(const SubtitleParser& parser, U32 size, Extract extract) {
    constexpr U8 kUntouched = 0xA5;
    std::vector<U8> buffer(size, kUntouched);  // exactly so many bytes: a sanitizer sees one too many
    const U32 count = extract(buffer.data());
    const size_t width = isWide(parser.m_eCodeType) ? 2 : 1;
    const auto unit = [&](size_t i) {
        const size_t at = i * width;
        return at + width > size ? 0xFFFFU : width == 2 ? buffer[at] + 256U * buffer[at + 1] : unsigned{buffer[at]};
    };
    std::string text;
    for (size_t i = 0; i < count; ++i) text += unit(i) < 256 ? static_cast<char>(unit(i)) : '?';
    const std::string shown = visible(text);
    if (count == 0 && size > 0 && buffer[0] == kUntouched) return "!untouched";
    return unit(count) == 0 ? shown : "!open " + shown;
}

inline std::string shownText(SubtitleParser& parser, U32 index, U32 size = 1024) {
    return textFrom(parser, size, [&](U8* buffer) { return parser.GetData(0, buffer, size, index); });
}

/// Every entry as `start-end @position text`, one after the other.
inline std::string entriesOf(SubtitleParser& parser) {
    std::string out;
    for (U32 i = 0; i < parser.GetTagNum(); ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& tag = parser.m_pTagBuffer[i];
        out += (i > 0 ? "; " : "") + std::to_string(tag.u32TimeStart) + "-" + std::to_string(tag.u32TimeEnd) + " @" +
               std::to_string(tag.s64Pos) + " " + shownText(parser, i);
    }
    return out;
}

/// A file, and what a dialect makes of it: its entries, or "refused".
struct FileRow {
    std::string content;
    std::string expected;
    U32 rate = 0;
};

template <class Parser>
void expectFiles(const std::vector<FileRow>& rows) {
    for (const FileRow& row : rows) {
        Parsed<Parser> parsed(row.content, row.rate);
        EXPECT_EQ(row.expected, parsed.result == TRUE ? entriesOf(parsed.parser) : "refused")
            << visible(row.content.substr(0, 200));
        if (parsed.result == TRUE) continue;
        EXPECT_EQ(FALSE, parsed.result);
        EXPECT_EQ(pthread_t{}, parsed.parser.m_threadParser) << "a thread was started for a refused file";
    }
}

/// A text between two tags, and what an extraction makes of it. Behind it stands the next entry's "[next]".
struct TextRow {
    std::string text;
    std::string expected;
    U32 size = 1024;
};

/// Puts `text` as the first of two entries into a parser.
template <class Parser>
class TwoEntries : public Loaded<Parser> {
public:
    TwoEntries(std::string_view text, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType)
        : Loaded<Parser>("##" + std::string(text) + "[next]", codeType) {
        this->parser.AddTag(0, 1, 2, kWhole);
        this->parser.AddTag(2, 3, static_cast<S64>(text.size()) + 2, kWhole);
    }
};

template <class Parser>
void expectTexts(const std::vector<TextRow>& rows, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType) {
    for (const TextRow& row : rows) {
        TwoEntries<Parser> entries(row.text, codeType);
        EXPECT_EQ(row.expected, shownText(entries.parser, 0, row.size))
            << visible(row.text.substr(0, 200)) << " into " << row.size << " bytes";
    }
}

/// The text with each number behind `word` replaced by `by`.
inline std::string levelled(std::string text, std::string_view word, std::string_view digits, char by) {
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at)) {
        at += word.size();
        const size_t end = text.find_first_not_of(digits, at);
        text.replace(at, (end == std::string::npos ? text.size() : end) - at, 1, by);
    }
    return text;
}

/// Log lines with the raw buffer's address as '*' and a descriptor as '#'.
inline Lines levelled(Lines lines) {
    for (LogLine& line : lines) {
        line.text = levelled(line.text, "rawbuf: ", "0123456789abcdef", '*');
        line.text = levelled(line.text, "Open fd =", "0123456789", '#');
    }
    return lines;
}

inline LogLine opening(const TempFile& file) {
    return {3, "SubtitleFileProcess", "Open filename = "s + file.path() + "\n"};
}
inline LogLine openingDescriptor() { return {3, "SubtitleFileProcess", "Open fd =#\n"}; }

/// Calls `use` with every beginning of `content`, from nothing to the whole.
template <class Use>
void forEachPrefix(const std::string& content, Use use) {
    for (size_t length = 0; length <= content.size(); ++length) use(content.substr(0, length));
}

}  // namespace test
