// From an entry's bytes to the text that is shown: the base's GetData in every encoding, and the small tools that
// the formats' scans stand on.
#include <gtest/gtest.h>
#include <string.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "subtitle/SubtitleParser.h"
#include "tests/support/Interpose.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"

namespace {

using namespace android;
using namespace test;
using namespace std::literals;

constexpr char kLanguage[] = "vendor.quarn.subtitle.language";

std::string encode(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, std::string_view in) {
    if (type == kUtf16Le) return utf16le(in, false);
    if (type == kUtf16Be) return utf16be(in, false);
    return std::string(in);
}

/// A parser whose file is these entries, one behind the other, in one encoding.
class Entries : public SubtitleParser {
public:
    Entries(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, const std::vector<std::string_view>& entries) {
        std::vector<std::string> encoded;
        for (const std::string_view entry : entries) encoded.push_back(encode(type, entry));
        fill(type, encoded);
    }

    /// Bytes as they are.
    static Entries raw(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, const std::vector<std::string>& entries) {
        return Entries(type, entries, 0);
    }

private:
    Entries(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, const std::vector<std::string>& entries, int) {
        fill(type, entries);
    }

    void fill(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, const std::vector<std::string>& entries) {
        std::string file = "....";  // so that no entry stands at position 0
        std::vector<size_t> positions;
        for (const std::string& entry : entries) {
            positions.push_back(file.size());
            file += entry;
        }
        load(*this, file);
        for (const size_t position : positions) AddTag(0, 0, static_cast<S64>(position), kWhole);
        m_eCodeType = type;
    }
};

// ------------------------------------------------------------------------------- one text, three encodings

const std::string kSame = "the same as in the column to the left";
const std::string kVerbatim = "as it is in the file";

struct Row {
    std::string_view in;              // in the file
    std::string narrow, little, big;  // as returned from 8-bit, little-endian and big-endian text
};

const Row kPlain[] = {
    {"", "", kSame, kSame},
    {"Hello", "Hello", kSame, kSame},
    {"Hello\r\nWorld\r\n\r\n2\r\n", "Hello\nWorld", kSame, kSame},
    {"One\nTwo\n\nThree", "One\nTwo", kSame, kVerbatim},  // big-endian: LF alone ends nothing
    {"Hello\n", "Hello\n", kSame, kSame},
    {"Hello\r\n", "Hello", kSame, "Hello\n"},  // big-endian: the end behind a line end is not looked for
    {"Hello\r", "Hello\r", kSame, kSame},
    {"A\rB", "A\rB", kSame, kSame},
    {"A\r\rB", "A\r\rB", kSame, kSame},  // kept(cr-only)
    {"A\n\rB", "A\n\rB", kSame, kSame},
    {"A\r\nB", "A\nB", kSame, kSame},
    {"A\r\n\rB", "A\n\rB", kSame, kSame},
    {"A\n\n", "A", kSame, kVerbatim},
    {"A\n\n\rB", "A", kSame, kVerbatim},
    {"A\n\n\r\nB", "A", kSame, "A\n\n\nB"},
    {"A\r\r\nB", "A\r\nB", kSame, kSame},
    {"A\r\n\nB", "A", kSame, "A\n\nB"},
    {"A\r\n\r\nB", "A", kSame, kSame},
    {"\r\nA", "\nA", kSame, kSame},
    {"\r\n\r\nA", "", kSame, kSame},
    {"\n\nA", "", kSame, kVerbatim},
    {"A\0B"sv, "A", kSame, kSame},
    {"A\n\0B"sv, "A\n", kSame, kSame},
    {"A\r\n\0B"sv, "A", kSame, "A\n"},
    // kept(srt-utf16be-zero)
    {"A\r\n0B", "A\n0B", kSame, "A"},  // big-endian: the digit 0 in the next line ends the text
    {"A\r\n1B", "A\n1B", kSame, kSame},
    {"a &amp; b &lt;c", "a &amp; b &lt;c", kSame, kSame},  // kept(srt-entity)
    {"A\r\n \r\nB", "A\n \nB", kSame, kSame},
    {"\xE4\xFF\x80 \t", "\xE4\xFF\x80 \t", kSame, kSame},
};

const Row kTags[] = {
    {"Hi <i>there</i>!", "Hi there!", kSame, kVerbatim},  // kept(srt-utf16be-markup)
    {"</i>x", "x", kSame, kVerbatim},
    {"</>x", "x", kSame, kVerbatim},
    {"<A>x<Z>x<a>x<z>x", "xxxx", kSame, kVerbatim},
    {"<@>x<[>x<`>x<{>x", kVerbatim, kSame, kSame},  // the neighbours of A, Z, a and z
    {"<\xC1>x<\xE1>x", kVerbatim, kSame, kSame},
    {"a <3 b", kVerbatim, kSame, kSame},
    {"a < b>c", kVerbatim, kSame, kSame},
    {"a <", kVerbatim, kSame, kSame},
    {"<font color=\"#ff0000\">x", "x", kSame, kVerbatim},

    // The byte behind a tag is text whatever it is, a 0 too.
    {"x</i>", "x\0"s, kSame, kVerbatim},
    {"<i>{y}x", "{y}x", kSame, kVerbatim},
    {"<i>\nx", "\nx", kSame, kVerbatim},
    {"<i>\n\nx", "\n\nx", kSame, kVerbatim},
    {"<i>\r\nx", "\r\nx", kSame, "<i>\nx"},
    {"<i>\0x"sv, "\0x"s, kSame, "<i>"},

    // Tags side by side go together in 8-bit text. In UTF-16 the second one's '<' is the unit behind the first.
    {"<b><i>x", "x", "<i>x", kVerbatim},  // kept(srt-utf16le-tags)
    {"x</i></b>", "x\0"s, "x</b>", kVerbatim},
    {"<b><i><u>x", "x", "<i>x", kVerbatim},  // LE: "<i>" went out, "<u>" is a tag again
    {"<b><3>x", "x", "<3>x", kVerbatim},
    {"<i><3", kVerbatim, "<3", kVerbatim},  // no last '>'

    // What is not closed on its line is no tag.
    {"a <b", kVerbatim, kSame, kSame},
    {"a <b\r\nc>d", "a <b\nc>d", kSame, kSame},
    {"a <b\n\rc>d", kVerbatim, kSame, kSame},
    {"a <b\nc>d", "a d", kSame, kVerbatim},  // LF or CR alone breaks no tag
    {"a <b\rc>d", "a d", kSame, kVerbatim},
    {"a <b\0c>d"sv, "a d", kSame, "a <b"},  // nor does a 0
    {"a <b <i>x", "a x", kSame, kVerbatim},
};

const Row kEarlyEnds[] = {
    // CR LF CR LF directly behind a tag: the text ends there and then, without a 0.
    {"<i>Hi</i>\r\n\r\n2", "!open Hi", kSame, "<i>Hi</i>"},  // kept(text-no-terminator)
    {"Hi</i>\r\n\r\n", "!open Hi", kSame, "Hi</i>"},
    {"<i>\r\n\r\nx", "!untouched", kSame, "<i>"},
    {"x</b></i>\r\n\r\n", "!open x", "x</i>", "x</b></i>"},
    {"x</i>\r\n\r", "x\r\n\r", kSame, "x</i>\n\r"},
    {"x</i>\r\n\ry", "x\r\n\ry", kSame, "x</i>\n\ry"},
    {"x</i>\n\n", "x\n\n", kSame, kVerbatim},  // kept(srt-tag-at-end-lf)
};

const Row kBraces[] = {
    {"{y:i}Hi", "Hi", kSame, kVerbatim},
    {"{/y}Hi", "Hi", kSame, kVerbatim},
    {"{}Hi", kVerbatim, kSame, kSame},
    {"{1}Hi{@}", kVerbatim, kSame, kSame},  // kept(srt-braces-shown)
    {"a {", kVerbatim, kSame, kSame},
    {"A{y}B", "AB", kSame, kVerbatim},
    {"A{y}", "A\0"s, kSame, kVerbatim},  // the 0 behind the group goes out

    // Behind a group: 8-bit text gives one byte out unexamined, little-endian text looks for markup again.
    {"{y}{b}Hi", "{b}Hi", "Hi", kVerbatim},     // kept(srt-behind-markup)
    {"{y}{b}{c}Hi", "{b}Hi", "Hi", kVerbatim},  // 8-bit: "{b}" went out as text, "{c}" is a group again
    {"{y}{3}Hi", "{3}Hi", kSame, kVerbatim},
    {"{y}<i>Hi", "Hi", kSame, kVerbatim},
    {"{y}<3>Hi", "Hi", kSame, kVerbatim},  // kept(srt-behind-brace): any '<' here
    {"{y}<i><b>Hi", "<b>Hi", "Hi", kVerbatim},
    {"{y}<i>{b}Hi", "{b}Hi", "Hi", kVerbatim},
    {"{y}<i>\r\n\r\nB", "\r\n\nB", kSame, "{y}<i>"},
    {"A{y}<i", "A\0"s, kSame, kVerbatim},
    {"A{y}<i\r\nB>C", "AC", kSame, "A{y}<i\nB>C"},  // behind a group a tag may cross lines

    // A group that closes its line: two 0 units, counted, and the walk goes on.
    {"A{y}\nB", "A\0\0\nB"s, kSame, kVerbatim},  // kept(srt-brace-at-line-end)
    {"A{y}\r\nB", "A\0\0\nB"s, kSame, "A{y}\nB"},
    {"A{y}\r\n\r\nB", "A\0\0"s, kSame, "A{y}"},  // kept(text-past-zero)
    {"A{y}\r", "A\0\0\r"s, kSame, kVerbatim},
    {"{y}\n{z}\nB", "\0\0\n\0\0\nB"s, kSame, kVerbatim},
    {"{y}{z}\nB", "{z}\nB", "\0\0\nB"s, kVerbatim},

    // Without its '}': text in 8-bit text, one 0 and the end in little-endian text, which may look across lines.
    {"A{y Hi", kVerbatim, "A\0"s, kVerbatim},  // kept(srt-brace-unclosed)
    {"{y\r\nz}Hi", "{y\nz}Hi", "Hi", "{y\nz}Hi"},
    {"{y\n\rz}Hi", kVerbatim, "Hi", kVerbatim},
    {"{y\r\n\r\nz}Hi", "{y", "Hi", "{y"},
    {"{y\nz}Hi", "Hi", kSame, kVerbatim},
    {"{y\0z}Hi"sv, "Hi", kSame, "{y"},
    {"{y <i>Hi}x", "x", kSame, kVerbatim},
};

void expectTexts(const Row& row) {
    SCOPED_TRACE(show(row.in));
    struct {
        EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type;
        std::string expected;
    } encodings[] = {{kNative, row.narrow}, {kUtf8, kSame}, {kUtf16Le, row.little}, {kUtf16Be, row.big}};
    std::string left;
    for (auto& encoding : encodings) {
        if (encoding.expected == kSame) encoding.expected = left;
        if (encoding.expected == kVerbatim) encoding.expected = std::string(row.in);
        left = encoding.expected;
        SCOPED_TRACE(encoding.type);
        Entries atTheEnd(encoding.type, {"first", row.in});
        EXPECT_EQ(encoding.expected, textOf(atTheEnd, 1, 256)) << "as the last entry";
        Entries between(encoding.type, {"first", row.in, "next"});
        EXPECT_EQ(encoding.expected, textOf(between, 1, 256)) << "before another entry";
    }
}

TEST(GetData, LineEndsAndBlankLines) {
    for (const Row& row : kPlain) expectTexts(row);
}

TEST(GetData, AngleTags) {
    for (const Row& row : kTags) expectTexts(row);
}

TEST(GetData, EndsBehindATagWithoutATerminator) {
    for (const Row& row : kEarlyEnds) expectTexts(row);
}

TEST(GetData, BraceGroups) {
    for (const Row& row : kBraces) expectTexts(row);
}

// ---------------------------------------------------------------------------------------- UTF-16 of its own

TEST(GetData, UnitsAreReturnedLittleEndian) {
    Entries little = Entries::raw(kUtf16Le, {"\x2D\x4E\x87\x65"});
    EXPECT_EQ("[4E2D][6587]", textOf(little, 0));
    Entries big = Entries::raw(kUtf16Be, {"\x4E\x2D\x65\x87"});
    EXPECT_EQ("[4E2D][6587]", textOf(big, 0));
}

TEST(GetData, OnlyWholeUnitsAreMarkup) {
    // U+3C69 and U+693C hold the bytes of '<' and 'i', U+0A0D those of CR and LF.
    Entries little = Entries::raw(kUtf16Le, {"\x3C\x69\x0D\x0A\x0D\x0A\x69\x3C"});
    EXPECT_EQ("[693C][0A0D][0A0D][3C69]", textOf(little, 0));
    Entries big = Entries::raw(kUtf16Be, {"\x0D\x0A\x0D\x0A"});
    EXPECT_EQ("[0D0A][0D0A]", textOf(big, 0));
    // '<' and U+0141, whose low byte is 'A': no tag
    Entries wide = Entries::raw(kUtf16Le, {"\x3C\0\x41\x01\x3E\0x\0"s});
    EXPECT_EQ("<[0141]>x", textOf(wide, 0));
}

TEST(GetData, AnOddLastByteIsNoUnit) {
    // Three bytes: half of that, one unit, bounds the walk.
    for (const auto type : {kUtf16Le, kUtf16Be}) {
        SubtitleParser parser;
        load(parser, type == kUtf16Le ? "A\0B"s : "\0AB"s);
        parser.m_eCodeType = type;
        parser.AddTag(0, 0, 0, kWhole);
        EXPECT_EQ("A", textOf(parser, 0)) << type;
    }
}

TEST(GetData, AFileOfOneByteHasNoUnit) {
    for (const auto type : {kUtf16Le, kUtf16Be}) {
        SubtitleParser parser;
        load(parser, "A");
        parser.m_eCodeType = type;
        parser.AddTag(0, 0, 0, kWhole);
        EXPECT_EQ("", textOf(parser, 0)) << type;
    }
}

// A brace group is looked for below the raw byte count, taken as units.
TEST(GetData, TheRawByteCountBoundsABraceGroupOfLittleEndianText) {
    for (const U32 bytes : {4u, 5u}) {  // the '}' is unit 4
        Entries parser(kUtf16Le, {"{y:i}Hi"});
        parser.m_u32RawBufferDataSize = bytes;
        EXPECT_EQ(bytes == 4 ? "\0"s : "Hi", textOf(parser, 0)) << bytes;
    }
}

// -------------------------------------------------------------------------------------- the caller's buffer

TEST(GetData, EightBitTextFillsTheBufferUpToItsLimit) {
    const struct {
        U32 size;
        std::string expected;
    } kRows[] = {
        {0, "!untouched"}, {1, ""},          {2, ""},          {3, "A"},           {4, "AB"},
        {9, "ABCDEFG"},    {10, "ABCDEFGH"}, {11, "ABCDEFGH"}, {8192, "ABCDEFGH"},
    };
    for (const auto& row : kRows) {
        for (const auto type : {kNative, kUtf8}) {
            Entries parser(type, {"ABCDEFGH", "next"});
            EXPECT_EQ(row.expected, textOf(parser, 0, row.size)) << row.size;
        }
    }
}

TEST(GetData, Utf16TextFillsTheBufferUpToItsLimit) {
    const struct {
        U32 size;
        std::string expected;
    } kRows[] = {
        {0, "!untouched"}, {1, "!untouched"},                             // no room for even the 0
        {2, ""},           {3, ""},           {5, ""},          {6, ""},  // treated as empty
        {7, ""},           {8, "A"},          {9, "A"},         {10, "AB"},
        {20, "ABCDEFG"},   {22, "ABCDEFGH"},  {24, "ABCDEFGH"}, {8192, "ABCDEFGH"},
    };
    for (const auto& row : kRows) {
        for (const auto type : {kUtf16Le, kUtf16Be}) {
            Entries parser(type, {"ABCDEFGH", "next"});
            EXPECT_EQ(row.expected, textOf(parser, 0, row.size)) << row.size << " bytes, code type " << type;
        }
    }
}

// The 0 bytes of a group that closes its line count, and the limit is not looked at between them.
TEST(GetData, ABraceGroupAtTheLimit) {
    Entries narrow(kNative, {"A{y}\nB"});
    EXPECT_EQ("A", textOf(narrow, 0, 3));
    EXPECT_EQ("A\0\0"s, textOf(narrow, 0, 4));
    EXPECT_EQ("A\0\0"s, textOf(narrow, 0, 5));
    EXPECT_EQ("A\0\0\n"s, textOf(narrow, 0, 6));
    Entries little(kUtf16Le, {"A{y}\nB"});
    EXPECT_EQ("A", textOf(little, 0, 8));
    EXPECT_EQ("A\0\0"s, textOf(little, 0, 10));
    EXPECT_EQ("A\0\0"s, textOf(little, 0, 12));
    EXPECT_EQ("A\0\0\n"s, textOf(little, 0, 14));
}

TEST(GetData, TakesABufferAtAnyAddress) {
    for (const auto type : {kUtf16Le, kUtf16Be}) {
        Entries parser(type, {"AB"});
        U8 buffer[33] = {};
        EXPECT_EQ(2u, parser.GetData(0, buffer + 1, 32, 0));
        EXPECT_EQ("A\0B\0\0\0"s, std::string(reinterpret_cast<char*>(buffer + 1), 6));
    }
}

// ------------------------------------------------------------------------------- which entry, and how much

TEST(GetData, TheTrackIsIgnored) {
    Entries parser(kNative, {"first", "next"});
    U8 buffer[16];
    EXPECT_EQ(5u, parser.GetData(0xFFFFFFFF, buffer, sizeof buffer, 0));
}

TEST(GetData, RefusesWhatIsNotThere) {
    Entries parser(kNative, {"first", "next"});
    U8 buffer[16];
    memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(0u, parser.GetData(0, nullptr, sizeof buffer, 0));
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 2));
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 8192));
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0xFFFFFFFF));

    U8* const work = parser.m_pu8SubtitleBuffer;
    parser.m_pu8SubtitleBuffer = nullptr;
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0));
    parser.m_pu8SubtitleBuffer = work;
    ST_MEDIA_SUBTITLE_PARSER_TAG* const table = parser.m_pTagBuffer;
    parser.m_pTagBuffer = nullptr;
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0));
    parser.m_pTagBuffer = table;
    EXPECT_TRUE(std::all_of(buffer, buffer + sizeof buffer, [](U8 byte) { return byte == 'x'; }));
    EXPECT_EQ("first", textOf(parser, 0));
}

TEST(GetData, WithoutDataTheTextIsEmpty) {
    Entries parser(kNative, {"first", "next"});
    U8* const raw = parser.m_pu8RawBuffer;
    parser.m_pu8RawBuffer = nullptr;
    EXPECT_EQ("", textOf(parser, 0));
    parser.m_pu8RawBuffer = raw;
}

TEST(GetData, OtherCodeTypesAreNotRead) {
    for (U32 type = 0; type <= 15; ++type) {
        if (type >= kUtf16Le && type <= kNative) continue;
        Entries parser(static_cast<EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE>(type), {"first"});
        EXPECT_EQ("!untouched", textOf(parser, 0, 64)) << type;
    }
}

TEST(GetData, TellsWhatTheWorkBufferHolds) {
    Entries parser(kUnknown, {"first", "next"});
    parser.m_s64SubtitleBufferPosition = 77;
    memset(parser.m_pu8SubtitleBuffer, 'x', 8192);
    U8 buffer[16];
    EXPECT_EQ(0u, parser.GetData(0, nullptr, 0, 0));
    EXPECT_EQ(13u, parser.m_u32SubtitleBufferDataSize) << "before any check: the length of the data";
    EXPECT_EQ(77, parser.m_s64SubtitleBufferPosition);
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0));
    EXPECT_EQ(0, parser.m_s64SubtitleBufferPosition);
    EXPECT_EQ("first\0\0"s, std::string(reinterpret_cast<char*>(parser.m_pu8SubtitleBuffer), 7));
    EXPECT_EQ(0, parser.m_pu8SubtitleBuffer[8191]);
}

std::string workBufferOf(const SubtitleParser& parser) {
    return std::string(reinterpret_cast<const char*>(parser.m_pu8SubtitleBuffer), 8192);
}

/// An entry's bytes as they come to lie in the work buffer.
std::string inWorkBuffer(std::string entry) {
    entry.resize(8192);
    return entry;
}

TEST(GetData, TheWorkBufferHoldsTheEntryAndZeros) {
    const std::vector<std::string> entries = {std::string(100, 'a'),  "b",  "", std::string(8185, 'c'), "d",
                                              std::string(8191, 'e'), "ff", "", std::string(8192, 'g'), "h",
                                              std::string(9000, 'i'), "",   "", std::string(60, 'j')};
    for (const auto type : {kNative, kUtf8, kUtf16Le, kUtf16Be, kUnknown}) {
        SCOPED_TRACE(type);
        Entries parser = Entries::raw(type, entries);
        U8 text[64];
        for (U32 before = 0; before < entries.size(); ++before) {
            for (U32 i = 0; i < entries.size(); ++i) {
                parser.GetData(0, text, sizeof text, before);
                parser.GetData(0, text, sizeof text, i);
                EXPECT_EQ(inWorkBuffer(entries[i]), workBufferOf(parser)) << i << " after " << before;
            }
        }
    }
}

TEST(GetData, AGroupThatClosesItsLineLosesItsBraceInTheWorkBuffer) {
    Entries parser(kNative, {"x{y:i}\r\nz", "next"});
    EXPECT_EQ("x\0\0\nz"s, textOf(parser, 0));
    EXPECT_EQ(inWorkBuffer("x{y:i\0\r\nz"s), workBufferOf(parser));
    EXPECT_EQ("next", textOf(parser, 1));
    EXPECT_EQ(inWorkBuffer("next"), workBufferOf(parser));
}

// The work buffer is the parser's own, but not even a player that writes into it changes a text.
TEST(GetData, WhatAPlayerLeavesInTheWorkBufferIsNoText) {
    Entries parser(kNative, {"first", "un{closed"});
    EXPECT_EQ("un{closed", textOf(parser, 1));
    for (const U32 at : {9u, 10u, 25u, 3000u, 8191u}) {
        parser.m_pu8SubtitleBuffer[at] = '}';
        EXPECT_EQ("un{closed", textOf(parser, 1)) << at;
    }
    for (const U32 used : {8192u, 100u, 17u, 8u}) {
        EXPECT_EQ("first", textOf(parser, 0));
        memset(parser.m_pu8SubtitleBuffer, 'x', used);
        EXPECT_EQ("first", textOf(parser, 0));
        EXPECT_EQ(inWorkBuffer("first"), workBufferOf(parser)) << used;
    }
    parser.m_pu8SubtitleBuffer[8191] = 'x';
    EXPECT_EQ("first", textOf(parser, 0));
    EXPECT_EQ(inWorkBuffer("first"), workBufferOf(parser));
}

TEST(GetData, ANewWorkBufferIsCleared) {
    Entries parser(kNative, {"first"});
    EXPECT_EQ("first", textOf(parser, 0));
    load(parser, "....anew");
    parser.m_pu8SubtitleBuffer[4000] = 'x';
    parser.AddTag(0, 0, 4, kWhole);
    EXPECT_EQ("anew", textOf(parser, 0));
    EXPECT_EQ(inWorkBuffer("anew"), workBufferOf(parser));
}

TEST(GetData, AnEntryEndsWhereTheNextBegins) {
    for (const auto type : {kNative, kUtf8, kUtf16Le, kUtf16Be}) {
        SCOPED_TRACE(type);
        Entries parser(type, {"first", "", "x", "last"});
        EXPECT_EQ("first", textOf(parser, 0));
        EXPECT_EQ("", textOf(parser, 1));
        EXPECT_EQ("x", textOf(parser, 2));
        EXPECT_EQ("last", textOf(parser, 3));
    }
}

// Markup and line ends do not look into the next entry.
TEST(GetData, TheNextEntryIsOutOfSight) {
    for (const auto type : {kNative, kUtf8, kUtf16Le}) {
        SCOPED_TRACE(type);
        Entries parser(type, {"a <b", ">c", "d\r", "\ne", "f\r\n", "g"});
        EXPECT_EQ("a <b", textOf(parser, 0));
        EXPECT_EQ("d\r", textOf(parser, 2));
        EXPECT_EQ("f", textOf(parser, 4));
    }
    Entries narrow(kNative, {"a {b", "}c"});
    EXPECT_EQ("a {b", textOf(narrow, 0));
    Entries little(kUtf16Le, {"a {b", "}c"});
    EXPECT_EQ("a \0"s, textOf(little, 0));
}

// The next position bounds a tag, be it that of no entry: a player may lower the count of entries.
TEST(GetData, ATagOfLittleEndianTextBeginsBelowTheNextPosition) {
    for (const U32 next : {2u, 3u}) {  // the '<' is unit 2
        SubtitleParser parser;
        load(parser, encode(kUtf16Le, "ab<i>c"));
        parser.m_eCodeType = kUtf16Le;
        parser.AddTag(0, 0, 0, kWhole);
        parser.AddTag(0, 0, next, kWhole);
        parser.m_u32TagNum = 1;
        EXPECT_EQ("ab<i>c", textOf(parser, 0)) << next;
    }
}

TEST(GetData, TheSameEntryReadsTheSameTwice) {
    for (const auto type : {kNative, kUtf16Le, kUtf16Be}) {
        Entries parser(type, {"A{y}\nB<i>C", "next"});
        const std::string first = textOf(parser, 0);
        EXPECT_EQ(first, textOf(parser, 0)) << "what the walk changes is a copy";
    }
}

TEST(GetData, NothingBehindTheLimitOfTheRawBufferIsRead) {
    SubtitleParser parser;
    load(parser, "0123456789abcdefghijklmnopqrstuvwxyz");
    parser.m_eCodeType = kNative;
    parser.mRawBufferLimit = 10;
    parser.AddTag(0, 1, 5, kWhole);
    EXPECT_EQ("56789", textOf(parser, 0));
}

TEST(GetData, LongEntriesAreCutToTheWorkBuffer) {
    for (const size_t length : {8190, 8191, 8192, 8193, 8194, 102400}) {
        SCOPED_TRACE(length);
        const std::string entry(length, 'x');
        const U32 kept = static_cast<U32>(std::min<size_t>(length, 8192));
        for (const bool last : {true, false}) {
            Entries narrow = Entries::raw(kNative, last ? std::vector{entry} : std::vector{entry, "next"s});
            EXPECT_EQ(std::string(kept, 'x'), textOf(narrow, 0, 200000));
            EXPECT_EQ(std::string(98, 'x'), textOf(narrow, 0, 100));
        }
        const std::string wide = utf16le(std::string(length / 2, 'x'), false);
        Entries little = Entries::raw(kUtf16Le, {wide});
        EXPECT_EQ(std::string(kept / 2, 'x'), textOf(little, 0, 200000));
        Entries big = Entries::raw(kUtf16Be, {utf16be(std::string(length / 2, 'x'), false)});
        EXPECT_EQ(std::string(kept / 2, 'x'), textOf(big, 0, 200000));
    }
}

TEST(GetData, MarkupIsCutWithTheEntry) {
    const std::string tag = "<" + std::string(9000, 'b') + ">x";
    Entries narrow = Entries::raw(kNative, {tag});
    EXPECT_EQ(tag.substr(0, 8192), textOf(narrow, 0, 20000));
    const std::string brace = "A{" + std::string(9000, 'b') + "}x";
    Entries little = Entries::raw(kUtf16Le, {utf16le(brace, false)});
    EXPECT_EQ("A\0"s, textOf(little, 0, 20000));
    const std::string fits = "<" + std::string(8189, 'b') + ">x";  // 8191 bytes of tag, 'x' is the last in the buffer
    Entries fitting = Entries::raw(kNative, {fits});
    EXPECT_EQ("x", textOf(fitting, 0, 20000));
    Entries tooLong = Entries::raw(kNative, {"." + fits});  // 'x' is behind it and reads 0
    EXPECT_EQ(".\0"s, textOf(tooLong, 0, 20000));
}

// A next entry that lies before this one: everything from here on is this entry's, as far as the buffer goes.
TEST(GetData, PositionsMayGoBack) {
    for (const auto type : {kNative, kUtf16Le, kUtf16Be}) {
        SCOPED_TRACE(type);
        const S64 width = isWide(type) ? 2 : 1;
        SubtitleParser parser;
        load(parser, encode(type, "0123456789"));
        parser.m_eCodeType = type;
        parser.AddTag(0, 0, 6 * width, kWhole);
        parser.AddTag(0, 0, 2 * width, kWhole);
        parser.AddTag(0, 0, 4 * width, kWhole);
        EXPECT_EQ("6789", textOf(parser, 0));
        EXPECT_EQ("23", textOf(parser, 1));
        EXPECT_EQ("456789", textOf(parser, 2));
    }
}

TEST(GetData, PositionsOutsideTheDataHaveNoText) {
    for (const auto type : {kNative, kUtf16Le, kUtf16Be}) {
        SCOPED_TRACE(type);
        const S64 positions[] = {10, 11, 5000, 1LL << 31, 1LL << 32, 1LL << 40, -1, -100, -(1LL << 40)};
        for (const S64 position : positions) {
            SCOPED_TRACE(position);
            SubtitleParser parser;
            load(parser, "0123456789");
            parser.m_eCodeType = type;
            parser.AddTag(0, 0, position, kWhole);
            EXPECT_EQ("", textOf(parser, 0)) << "as the last";
            parser.AddTag(0, 0, position + 20, kWhole);
            EXPECT_EQ("", textOf(parser, 0));
            parser.AddTag(0, 0, 0, kWhole);
            EXPECT_EQ("", textOf(parser, 1)) << "before one that goes back";
        }
    }
}

// The record behind the last one was never filled and reads as 0: an entry at 0 then spans nothing.
TEST(GetData, TheLastEntryAtPositionZeroIsEmptyIn8BitText) {
    for (const auto type : {kNative, kUtf16Le}) {
        SubtitleParser parser;
        load(parser, encode(type, "0123456789"));
        parser.m_eCodeType = type;
        parser.AddTag(0, 0, 0, kWhole);
        EXPECT_EQ(type == kNative ? "" : "0123456789", textOf(parser, 0)) << type;
    }
}

TEST(GetData, TheLastEntryOfAFullTableReadsLikeAnyOther) {
    SubtitleParser parser;
    load(parser, "..Hi <i>there</i>!");
    parser.m_eCodeType = kNative;
    for (U32 i = 0; i < 8192; ++i) parser.AddTag(i, i, 2, kWhole);
    EXPECT_EQ("Hi there!", textOf(parser, 8191, 64));
    EXPECT_EQ("", textOf(parser, 8190, 64)) << "the next one begins at the same place";
}

// ------------------------------------------------------------------------------------------- the Big5 viewer

struct Big5Row {
    std::string_view in;
    std::string big5;   // with the language set
    std::string plain;  // without
};

const Big5Row kBig5[] = {
    // kept(property-big5)
    {"A\x80\x85\xA0"
     "B",
     "AB", kVerbatim},  // below A1: dropped
    {"\xA1"
     "1B",
     "\xA1"
     "1B",
     kVerbatim},  // from A1 up: a pair
    {"\xA4\x40\xA4\x40", "\xA4\x40\xA4\x40", kVerbatim},
    {"\xFF\xFF\x85", "\xFF\xFF", kVerbatim},  // a trail byte may be anything
    {"\xA4<b>x", "\xA4<b>x", "\xA4x"},        // and is not looked at
    {"\xA4\r\nx", "\xA4\r\nx", "\xA4\nx"},
    {"x\xA4", "x\xA4\0"s, kVerbatim},  // even a 0
    {"x\xA4\0y"sv, "x\xA4\0y"s, "x\xA4"},
    {"<i>\x85x", "x", "\x85x"},  // behind a tag too
    {"<i>\xA4<x", "\xA4<x", "\xA4<x"},
    {"{y}\x85x", "x", "\x85x"},
};

TEST(GetDataBig5, KeepsPairsAndDropsStrayBytes) {
    for (const Big5Row& row : kBig5) {
        SCOPED_TRACE(show(row.in));
        for (const auto type : {kNative, kUtf8}) {
            Entries parser(type, {row.in});
            {
                const SystemProperty language(kLanguage, "big5");
                EXPECT_EQ(row.big5, textOf(parser, 0, 64));
            }
            EXPECT_EQ(row.plain == kVerbatim ? std::string(row.in) : row.plain, textOf(parser, 0, 64));
        }
    }
}

TEST(GetDataBig5, IsChosenByTheFirstFourLettersInAnyCase) {
    const struct {
        const char* language;
        bool big5;
    } kRows[] = {
        {"big5", true}, {"BIG5", true},  {"bIg5", true},   {"Big5-HKSCS", true}, {"big50", true},
        {"big", false}, {"big4", false}, {" big5", false}, {"gbk", false},       {"", false},
    };
    for (const auto& row : kRows) {
        const SystemProperty language(kLanguage, row.language);
        Entries parser(kNative, {"A\x85"
                                 "B"});
        EXPECT_EQ(row.big5 ? "AB"
                           : "A\x85"
                             "B",
                  textOf(parser, 0))
            << row.language;
    }
}

TEST(GetDataBig5, ALongPropertyIsCutNotOverrun) {
    const SystemProperty language(kLanguage, "BIG5" + std::string(300, 'x'));
    Entries parser(kNative, {"A\x85"
                             "B"});
    EXPECT_EQ("AB", textOf(parser, 0));
}

TEST(GetDataBig5, DoesNotConcernUtf16) {
    const SystemProperty language(kLanguage, "big5");
    for (const auto type : {kUtf16Le, kUtf16Be}) {
        Entries parser(type, {"A\x85\xA4"
                              "B"});
        EXPECT_EQ(
            "A\x85\xA4"
            "B",
            textOf(parser, 0));
    }
}

TEST(GetDataBig5, APairMayStepOverTheLimitByOne) {
    const SystemProperty language(kLanguage, "big5");
    Entries parser(kNative, {"\xA4\x40\xA4\x41\xA4\x42"});
    EXPECT_EQ("\xA4\x40", textOf(parser, 0, 3));
    EXPECT_EQ("\xA4\x40", textOf(parser, 0, 4));
    EXPECT_EQ("\xA4\x40\xA4\x41", textOf(parser, 0, 5));
}

// --------------------------------------------------------------------------------------------------- SScanf

struct Scan {
    std::string_view in;  // followed by zeros
    const char* format;
    U32 conversions;
    std::vector<U32> values;  // 77 where nothing was stored
};

const Scan kScans[] = {
    {"12:34", "%u:%u", 2, {12, 34, 77}},
    {"12 x", "%u %u", 1, {12, 0, 77}},
    {"\r\n5", "%u", 0, {0, 77, 77}},
    {"1.2", "%u:%u", 2, {1, 2, 77}},
    {"", "%u", 0, {0, 77, 77}},
    {"5", "", 0, {77, 77, 77}},
    {"5", "%u", 1, {5, 77, 77}},
    {"x", "%u", 0, {0, 77, 77}},
    {"-5", "%u", 0, {0, 77, 77}},
    {"+5", "%u", 0, {0, 77, 77}},

    // white space: ignored in the format, skipped in the input up to a line end
    {" \t\v\f 7", "%u", 1, {7, 77, 77}},
    {"\n7", "%u", 0, {0, 77, 77}},
    {"\r7", "%u", 0, {0, 77, 77}},
    {" \n7", "%u", 0, {0, 77, 77}},
    {"1 2", "%u%u", 2, {1, 2, 77}},
    {"12", "%u %u", 1, {12, 0, 77}},
    {"1   :  2", "%u:%u", 2, {1, 2, 77}},
    {"1:2", " %u\n: \t%u ", 2, {1, 2, 77}},
    {"1\n2", "%u %u", 1, {1, 0, 77}},
    {"\xA0"
     "7",
     "%u",
     0,
     {0, 77, 77}},  // no white space, whatever the locale
    {"\x85"
     "7",
     "%u",
     0,
     {0, 77, 77}},
    {"\x1F"
     "7",
     "%u",
     0,
     {0, 77, 77}},
    {"\x08"
     "7",
     "%u",
     0,
     {0, 77, 77}},

    // a literal takes one character, whatever it is
    {"ab12", "xy%u", 1, {12, 77, 77}},
    {"1\r2", "%u:%u", 2, {1, 2, 77}},
    {"1\n2", "%u:%u", 2, {1, 2, 77}},
    {"1\r\n2", "%u:%u", 1, {1, 0, 77}},
    {"1\r\n2", "%u::%u", 2, {1, 2, 77}},
    {"1\0002"sv, "%u:%u", 2, {1, 2, 77}},
    {"1 \0 2"sv, "%u:%u", 2, {1, 2, 77}},
    {"123:4", "%u4%u", 2, {123, 4, 77}},

    // up to 16 digits, 32 bits of them
    {"4294967295", "%u", 1, {4294967295, 77, 77}},
    {"4294967296", "%u", 1, {0, 77, 77}},
    {"1234567890123456", "%u%u", 1, {1015724736, 0, 77}},
    {"12345678901234567", "%u%u", 2, {1015724736, 7, 77}},
    {"00000000000000012", "%u%u", 2, {1, 2, 77}},
    {"0000000000000001"
     "2:3",
     "%u:%u",
     1,
     {1, 0, 77}},  // the 2 is the literal's; then ':' is no digit

    {"ff", "%x", 1, {255, 77, 77}},
    {"aBcDeF09", "%x", 1, {0xABCDEF09, 77, 77}},
    {"g", "%x", 0, {0, 77, 77}},
    {"@", "%x", 0, {0, 77, 77}},
    {"0x10", "%x", 1, {0, 77, 77}},
    {" 1a 2b", "%x %x", 2, {0x1A, 0x2B, 77}},
    {"12345678901234567", "%x%x", 2, {0x90123456, 7, 77}},
    {"fg", "%x%u", 1, {15, 0, 77}},
    {"ff", "%u", 0, {0, 77, 77}},

    // anything else behind '%' ends the scan
    {"5", "%d", 0, {77, 77, 77}},
    {"5", "%", 0, {77, 77, 77}},
    {"5", "% u", 0, {77, 77, 77}},
    {"%5", "%%%u", 0, {77, 77, 77}},
    {"5 6", "%u %U %u", 1, {5, 77, 77}},
    {"1 2 3", "%u %u %u", 3, {1, 2, 3}},
};

TEST(SScanf, ReadsNumbers) {
    for (const Scan& scan : kScans) {
        SCOPED_TRACE(show(scan.in) + " under \"" + scan.format + '"');
        U8 input[64] = {};
        memcpy(input, scan.in.data(), scan.in.size());
        SubtitleParser parser;
        std::vector<U32> values{77, 77, 77};
        EXPECT_EQ(scan.conversions, parser.SScanf(input, scan.format, &values[0], &values[1], &values[2]));
        EXPECT_EQ(scan.values, values);
    }
}

TEST(SScanf, ReadsATimingLine) {
    SubtitleParser parser;
    const char line[64] = "01:02:03,004 --> 05:06:07.008\r\n";
    U32 v[8] = {};
    EXPECT_EQ(8u, parser.SScanf(reinterpret_cast<const U8*>(line), "%u:%u:%u,%u --> %u:%u:%u,%u", &v[0], &v[1], &v[2],
                                &v[3], &v[4], &v[5], &v[6], &v[7]));
    EXPECT_EQ((std::vector<U32>{1, 2, 3, 4, 5, 6, 7, 8}), std::vector<U32>(v, v + 8));
}

TEST(SScanf, ANullPointerEndsTheScan) {
    SubtitleParser parser;
    const U8 input[16] = "1 2 3";
    U32 first = 77, third = 77;
    U32* const none = nullptr;
    EXPECT_EQ(1u, parser.SScanf(input, "%u %u %u", &first, none, &third));
    EXPECT_EQ(1u, first);
    EXPECT_EQ(77u, third);
    EXPECT_EQ(0u, parser.SScanf(input, "%x", none));
    EXPECT_EQ(0u, parser.SScanf(nullptr, "%u", &first));
    EXPECT_EQ(0u, parser.SScanf(input, nullptr, &first));
}

// ------------------------------------------------------------------------------------- ConvertUnicode2ASCII

struct Narrowing {
    std::vector<U16> units;  // as stored, read little-endian
    std::string other;       // for any code type but big-endian
    std::string big;
};

const Narrowing kNarrowings[] = {
    {{}, "", ""},
    {{'A', '1'},
     "A1",
     "\0A\0"
     "1"s},
    {{0x4100, 0x3100},
     "\0A\0"
     "1"s,
     "A1"},  // stored 00 41 00 31
    {{0x00FF}, "\xFF", "\0\xFF"s},
    {{0x0100}, "\0\x01"s, "\x01"},
    {{0x4E2D}, "\x2D\x4E", "\x4E\x2D"},
    {{0}, "\0"s, "\0"s},
    {{'A', 0x4E2D, 'B'},
     "A\x2D\x4E"
     "B",
     "\0A\x4E\x2D\0B"s},
};

TEST(ConvertUnicode2ASCII, NarrowsUnits) {
    for (const Narrowing& row : kNarrowings) {
        for (const auto type : {kUnknown, kUtf16Le, kUtf8, kNative, kUtf16Be}) {
            SubtitleParser parser;
            parser.m_eCodeType = type;
            std::vector<U16> units = row.units;
            units.push_back(0x5858);  // behind the count: not read
            std::string out(2 * row.units.size() + 2, '~');
            EXPECT_EQ(TRUE, parser.ConvertUnicode2ASCII(units.data(), reinterpret_cast<U8*>(out.data()),
                                                        static_cast<U32>(row.units.size())));
            std::string expected = type == kUtf16Be ? row.big : row.other;
            expected.resize(out.size(), '~');  // neither terminated nor touched behind
            EXPECT_EQ(show(expected), show(out)) << "code type " << type;
        }
    }
}

TEST(ConvertUnicode2ASCII, IsAlwaysTrue) {
    SubtitleParser parser;
    U16 unit = 'A';
    U8 byte = 'x';
    EXPECT_EQ(TRUE, parser.ConvertUnicode2ASCII(nullptr, &byte, 0));
    EXPECT_EQ(TRUE, parser.ConvertUnicode2ASCII(&unit, nullptr, 1));
    EXPECT_EQ(TRUE, parser.ConvertUnicode2ASCII(nullptr, nullptr, 5));
    EXPECT_EQ('x', byte);
}

// ------------------------------------------------------------------------------------------------------ StrUpr

TEST(StrUpr, TurnsLowerCaseAsciiIntoUpperCase) {
    SubtitleParser parser;
    std::vector<U8> bytes, upper(256, 0xEE);
    std::vector<U16> units, wideUpper(0x10000, 0xEEEE);
    for (U32 c = 0; c < 0x10000; ++c) {
        if (c < 256) bytes.push_back(static_cast<U8>(c));
        units.push_back(static_cast<U16>(c));
    }
    EXPECT_EQ(TRUE, parser.StrUpr(bytes.data(), 256, upper.data()));
    EXPECT_EQ(TRUE, parser.StrUpr(units.data(), 0x10000, wideUpper.data()));
    for (U32 c = 0; c < 0x10000; ++c) {
        const U32 expected = c >= 'a' && c <= 'z' ? c - 32 : c;
        if (c < 256) {
            ASSERT_EQ(expected, upper[c]);
        }
        ASSERT_EQ(expected, wideUpper[c]);
    }
}

TEST(StrUpr, TakesTheSameBufferAndNothingMoreThanItsCount) {
    SubtitleParser parser;
    U8 bytes[] = {'a', 'b', 'z', '{', '`', 'q', 'q'};
    EXPECT_EQ(TRUE, parser.StrUpr(bytes, 5, bytes));
    EXPECT_EQ("ABZ{`qq"s, std::string(bytes, bytes + 7));
    U16 units[] = {'a', 'b', 'z', '{', 0x0161, 'q'};
    EXPECT_EQ(TRUE, parser.StrUpr(units, 5, units));
    EXPECT_EQ((std::vector<U16>{'A', 'B', 'Z', '{', 0x0161, 'q'}), std::vector<U16>(units, units + 6));
}

TEST(StrUpr, RefusesNullAndTakesNothing) {
    SubtitleParser parser;
    U8 byte = 'a';
    U16 unit = 'a';
    EXPECT_EQ(FALSE, parser.StrUpr(static_cast<const U8*>(nullptr), 1, &byte));
    EXPECT_EQ(FALSE, parser.StrUpr(&byte, 1, nullptr));
    EXPECT_EQ(FALSE, parser.StrUpr(static_cast<const U16*>(nullptr), 0, &unit));
    EXPECT_EQ(FALSE, parser.StrUpr(&unit, 0, nullptr));
    EXPECT_EQ(TRUE, parser.StrUpr(&byte, 0, &byte));
    EXPECT_EQ(TRUE, parser.StrUpr(&unit, 0, &unit));
    EXPECT_EQ('a', byte);
    EXPECT_EQ('a', unit);
}

// ------------------------------------------------------------------------------------------- the buffers' ends

/// Zeros, and right behind them a page that nobody may touch. The size is one of whole pages.
class Guarded {
public:
    explicit Guarded(size_t size)
        : mPage(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
          mMapped(size + mPage),
          mMemory(mmap(nullptr, mMapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
        EXPECT_NE(MAP_FAILED, mMemory);
        EXPECT_EQ(0, mprotect(static_cast<U8*>(mMemory) + size, mPage, PROT_NONE));
    }
    ~Guarded() { munmap(mMemory, mMapped); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    template <class T>
    T* as() const {
        return static_cast<T*>(mMemory);
    }

private:
    size_t mPage, mMapped;
    void* mMemory;
};

TEST(BuffersEnds, NothingBehindTheWorkBufferIsLookedAt) {
    constexpr size_t kSize = 8192;
    const Guarded work(kSize);
    for (const auto type : {kNative, kUtf16Le, kUtf16Be}) {
        for (const char* const head : {"", "x", "<i>", "{y:i}12345"}) {
            Entries parser(type, {head + std::string(3 * kSize, 'a'), "end"});
            U8* const own = std::exchange(parser.m_pu8SubtitleBuffer, work.as<U8>());
            U8 shown[4 * kSize];
            EXPECT_LT(kSize / 2 - 32, parser.GetData(0, shown, sizeof shown, 0)) << type << head;
            parser.m_pu8SubtitleBuffer = own;
        }
    }
}

TEST(BuffersEnds, NothingBehindTheTagTableIsLookedAt) {
    constexpr U32 kRecords = 8192;
    using Tag = ST_MEDIA_SUBTITLE_PARSER_TAG;
    const Guarded table(kRecords * sizeof(Tag));
    Entries parser(kNative, {"text"});
    Tag* const own = std::exchange(parser.m_pTagBuffer, table.as<Tag>());
    const U32 count = std::exchange(parser.m_u32TagNum, kRecords);
    U8 shown[64];
    EXPECT_EQ(0U, parser.GetData(0, shown, sizeof shown, kRecords - 1));
    parser.m_pTagBuffer = own;
    parser.m_u32TagNum = count;
}

// --------------------------------------------------------------------------------------------------------- cost

// Markup that is never closed is searched for once, not once for each that opens.
TEST(TextCost, UnclosedMarkupCostsLittleMoreThanText) {
    const auto cost = [](EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, std::string_view piece) {
        std::string text;
        while (text.size() < 8000) text += piece;
        Entries parser(type, {text, "end"});
        U8 shown[20000];
        const clock_t began = clock();
        for (int i = 0; i < 100; ++i) parser.GetData(0, shown, sizeof shown, 0);
        return clock() - began;
    };
    for (const auto type : {kNative, kUtf16Le}) {
        const clock_t plain = cost(type, "xb");
        for (const char* const piece : {"<b", "{b"}) {
            EXPECT_LT(cost(type, piece), 50 * plain + CLOCKS_PER_SEC / 10) << type << piece;
        }
    }
}

}  // namespace
