/// Tables of files and texts, and the loops that hold a parser against each row in every encoding.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Interpose.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"

namespace test {

// ------------------------------------------------------------------------------------------------------ files

/// A file, and what it shows in every encoding: `1000-2000 Hello; 3000-4000 World`.
struct ScanRow {
    const char* name;
    std::string file;
    std::string expected;
    std::optional<std::string> utf16Le = std::nullopt;  // where 16-bit text differs
    std::optional<std::string> utf16Be = std::nullopt;  // where big-endian text differs from that
};

/// `showsUtf8`: the format has texts when its file is UTF-8.
template <class Parser>
void expectScan(const ScanRow& row, bool showsUtf8 = true) {
    const auto expect = [](const char* name, const std::string& file, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType,
                           const std::string& entries, bool shows = true) {
        SCOPED_TRACE(name);
        Scanned<Parser> parser(file);
        EXPECT_EQ(TRUE, parser.bParseFinish);
        EXPECT_EQ(codeType, parser.m_eCodeType);
        if (!shows) {
            for (U32 i = 0; i < parser.GetTagNum(); ++i) EXPECT_EQ("!untouched", textOf(parser, i));
            parser.m_eCodeType = kNative;  // the texts that would be there
        }
        EXPECT_EQ(entries, shownOf(parser));
    };
    SCOPED_TRACE(row.name);
    expect("native", row.file, kNative, row.expected);
    // The mark's rest spoils the first line alone.
    expect("UTF-8", kUtf8Mark + "\r\n"s + row.file, kUtf8, row.expected, showsUtf8);
    const std::string& wide = row.utf16Le ? *row.utf16Le : row.expected;
    expect("UTF-16LE", utf16le(row.file), kUtf16Le, wide);
    expect("UTF-16BE", utf16be(row.file), kUtf16Be, row.utf16Be ? *row.utf16Be : wide);
}

/// A file, and what a .sub parser makes of it: `1000-2000 @25 Hello`, or "refused".
struct FileRow {
    std::string content;
    std::string expected;
    U32 rate = 0;
};

template <class Parser>
void expectFiles(const std::vector<FileRow>& rows) {
    for (const FileRow& row : rows) {
        Parsed<Parser> parsed(row.content, row.rate);
        EXPECT_EQ(row.expected, parsed.result == TRUE ? entriesOf(parsed.parser) : "refused") << show(row.content);
        if (parsed.result == TRUE) continue;
        EXPECT_EQ(FALSE, parsed.result);
        EXPECT_EQ(pthread_t{}, parsed.parser.m_threadParser) << "a thread was started for a refused file";
    }
}

// ------------------------------------------------------------------------------------------------------ texts

/// A text between two tags, and what an extraction makes of it. Behind it stands the next entry's "[next]".
struct TextRow {
    std::string text;
    std::string expected;
    U32 size = 1024;
};

/// The same rows in 16-bit text.
inline std::vector<TextRow> widened(std::vector<TextRow> rows, bool bigEndian) {
    for (TextRow& row : rows) row.text = bigEndian ? utf16be(row.text, false) : utf16le(row.text, false);
    return rows;
}

/// Puts `text` as the first of two entries into a parser.
template <class Parser>
struct TwoEntries : Loaded<Parser> {
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
        EXPECT_EQ(row.expected, textOf(entries.parser, 0, row.size))
            << show(row.text) << " into " << row.size << " bytes";
    }
}

/// The text of the first entry of `file` as 8-bit text of the code types given, and as UTF-8.
template <class Parser>
void expectNarrowText(const std::string& file, const std::string& expected,
                      const std::vector<EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE>& codeTypes = {kNative}) {
    Scanned<Parser> native(file), utf8(kUtf8Mark + "\n"s + file);
    for (const auto codeType : codeTypes) {
        native.m_eCodeType = codeType;
        EXPECT_EQ(expected, textOf(native, 0)) << "code type " << codeType;
    }
    EXPECT_EQ(expected, textOf(utf8, 0)) << "UTF-8";
}

/// The text of the first entry of `file` as 16-bit text.
template <class Parser>
void expectWideText(const std::string& file, const std::string& littleEndian, const std::string& bigEndian) {
    Scanned<Parser> le(utf16le(file)), be(utf16be(file));
    EXPECT_EQ(littleEndian, textOf(le, 0)) << "UTF-16LE";
    EXPECT_EQ(bigEndian, textOf(be, 0)) << "UTF-16BE";
}

/// The text "Hello" of `file` in buffers that are too small for it: two bytes stay free, or three units.
template <class Parser>
void expectHelloToFit(const std::string& file) {
    const struct {
        U32 size;
        const char* expected8;
        const char* expected16;
    } kRows[] = {
        {2, "", ""},         {3, "H", ""},          {4, "He", ""},          {5, "Hel", ""},
        {6, "Hell", ""},     {7, "Hello", ""},      {8, "Hello", "H"},      {9, "Hello", "H"},
        {10, "Hello", "He"}, {15, "Hello", "Hell"}, {16, "Hello", "Hello"},
    };
    Scanned<Parser> native(file), le(utf16le(file)), be(utf16be(file));
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.size);
        EXPECT_EQ(row.expected8, textOf(native, 0, row.size));
        EXPECT_EQ(row.expected16, textOf(le, 0, row.size));
        EXPECT_EQ(row.expected16, textOf(be, 0, row.size));
    }
    EXPECT_EQ("", textOf(native, 0, 1));
    EXPECT_EQ("!untouched", textOf(le, 0, 1));  // not even the 0 fits
    EXPECT_EQ("!untouched", textOf(native, 0, 0));
}

/// A long text behind `before` is cut to the work buffer.
template <class Parser>
void expectCutToTheWorkBuffer(const std::string& before, const std::string& behind = {}) {
    const std::string file = before + std::string(100000, 'x') + behind;
    Scanned<Parser> native(file), le(utf16le(file)), be(utf16be(file));
    EXPECT_EQ(std::string(8192, 'x'), textOf(native, 0, 20000));
    EXPECT_EQ(std::string(4096, 'x'), textOf(le, 0, 20000));
    EXPECT_EQ(std::string(4096, 'x'), textOf(be, 0, 20000));
}

/// However far the next entry is, no more is read than the data has.
template <class Parser>
void expectTextWithinTheData() {
    using ByHand = PutByHand<Parser>;
    ByHand native("0123456789", {0, 9}), le(utf16le("0123456789", false), {0, 18}, kUtf16Le),
        be(utf16be("0123456789", false), {0, 18}, kUtf16Be);
    native.m_s64DataTotalSize = 4;
    le.m_s64DataTotalSize = be.m_s64DataTotalSize = 9;
    for (ByHand* parser : {&native, &le, &be}) EXPECT_EQ("0123", textOf(*parser, 0));
    le.m_s64DataTotalSize = be.m_s64DataTotalSize = 1;
    for (ByHand* parser : {&le, &be}) EXPECT_EQ("", textOf(*parser, 0));
}

/// Entry 0 of `parser` has text when the code type is one of these, else its buffer is left alone.
inline void expectTextInCodeTypes(SubtitleParser& parser, const std::vector<U32>& codeTypes) {
    for (U32 codeType = 0; codeType < 20; ++codeType) {
        parser.m_eCodeType = static_cast<EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE>(codeType);
        const bool isText = std::find(codeTypes.begin(), codeTypes.end(), codeType) != codeTypes.end();
        EXPECT_EQ(isText, textOf(parser, 0, 64) != "!untouched") << codeType;
    }
}

/// `GetData` of `parser`, whose entry 0 has text, with arguments that give none.
inline void expectNoText(SubtitleParser& parser) {
    U8 buffer[64] = {'x'};
    EXPECT_EQ(0u, parser.GetData(0, nullptr, sizeof buffer, 0));
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, parser.GetTagNum()));
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0xFFFFFFFF));
    EXPECT_EQ(0u, parser.GetData(0, buffer, 0, 0));
    stSubDecoderInfo info{};
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0, &info));
    EXPECT_EQ('x', buffer[0]);
    const U32 count = parser.GetTagNum();
    parser.Deinit();
    ASSERT_EQ(count, parser.GetTagNum());
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0));
    EXPECT_EQ('x', buffer[0]);
}

}  // namespace test
