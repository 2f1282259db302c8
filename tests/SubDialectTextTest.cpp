// The text of one line, without markup, as SubViewer 1.0, MicroDVD and the DVB subtitle system give it.
#include <type_traits>

#include "subtitle/SubtitleParserSubDvbSubtitleSystem.h"
#include "subtitle/SubtitleParserSubMicroDVD.h"
#include "subtitle/SubtitleParserSubViewer10.h"
#include "tests/support/Parsers.h"
#include "tests/support/Rows.h"

namespace {

using namespace test;

template <class Parser>
class LineText : public testing::Test {};

using LineParsers =
    testing::Types<SubtitleParserSubViewer10, SubtitleParserSubMicroDVD, SubtitleParserSubDvbSubtitleSystem>;

struct ParserNames {
    template <class Parser>
    static std::string GetName(int index) {
        return std::vector<std::string>{"SubViewer10", "MicroDvd", "DvbSubtitleSystem"}[static_cast<size_t>(index)];
    }
};

TYPED_TEST_SUITE(LineText, LineParsers, ParserNames);

const std::vector<TextRow> kLines8 = {
    {"Hello\r\n[00:00:04]\r\n\r\n", "Hello"},
    {"Hello\n\n[00:00:04]\n", "Hello"},
    {"Hello\n[00:00:04]\n\n", "Hello\n[00:00:04]"},  // one LF ends nothing
    {"Hello\n", "Hello\n"},
    {"Hello\r", "Hello\r"},
    {"Hello\r\rmore\n\rmore\r\n", "Hello\r\rmore\n\rmore"},
    {"Hello\0more"s, "Hello"},
    {"", ""},
    {"\r\nHello", ""},
    {"one|two\r\n", "one|two"},
    {"\xC3\xA9\x81\r\n", "\xC3\xA9\x81"},
    // brace groups
    {"{y:i}Hi\r\n", "Hi"},
    {"H{y:i}i\r\n", "Hi"},
    {"{1}{}{/}Hi\r\n", "Hi"},  // no letter is needed
    {"Hi{y:i}", "Hi"},
    {"Hi{y:i}\r\nmore\r\n", "Hi\0"s},  // kept(text-block-at-line-end): closes its line
    {"Hi{y:i}\nmore\r\n", "Hi\0"s},
    {"Hi{y:i}\rmore\r\n", "Hi\0"s},
    {"{a}{b}\r\nmore\r\n", "\0"s},
    {"Hi{across\r\nlines}more\r\n", "Himore"},
    {"Hi{never closed\r\nmore\r\n", "Hi"},   // kept(text-brace-unclosed)
    {"Hi\xB5{there\r\nmore\r\n", "Hi\xB5"},  // kept(trail-byte-brace): 0xB57B is one character in Big5 and GBK
    {"Hi}there\r\n", "Hi}there"},
    {"{a}<b>Hi\r\n", "Hi"},
    {"{a}<b>{c}<d>Hi\r\n", "Hi"},
    {"{a}<b>\r\nmore\r\n", ""},  // what stands behind is examined
    {"{a}<across\r\nlines>Hi\r\n", "Hi"},
    {"Hi{a}<never closed\r\nmore", "Hi"},
    {"Hi{a} <b>there\r\n", "Hi there"},
    // tags
    {"<i>Hi</i> there\r\n", "Hi there"},
    {"<3>Hi< >there\r\n", "Hithere"},  // no letter is needed
    {"<>Hi\r\n", "Hi"},
    // kept(text-tag-at-line-end)
    {"Hi <i>there</i>\r\n[00:00:04]\r\n", "Hi there\r\n[00:00:04]"},  // the CR is not examined
    {"Hi <i>there</i>\n\n\nmore\r\n", "Hi there\n"},
    {"<a><b>Hi\r\n", "<b>Hi"},  // nor is the second '<'
    {"<a>{b}Hi\r\n", "{b}Hi"},
    {"Hi<i>", "Hi\0"s},  // nor a 0, which counts
    {"Hi<i>\0more\r\n"s, "Hi\0more"s},
    {"a < b\r\n", "a < b"},
    {"a < b\r\n>c", "a < b"},  // a line break gives the tag up
    {"a < b\n\r>c", "a < b\n\r>c"},
    {"a < b\n>c\r\n", "a c"},  // one LF does not
    {"a <\0>c\r\n"s, "a c"},
    {"<<<<Hi\r\n", "<<<<Hi"},
    {"<<<<Hi>there\r\n", "there"},
    {"Hi<i>\r\n\r\nmore", "!open Hi"},  // the one way out without a terminating 0
    {"Hi<i>\r\n\n\nmore", "Hi\r"},
    {"Hi<i>\r\n\rmore", "Hi\r\n\rmore"},
    // sizes
    {"Hello", "Hello", 7},
    {"Hello", "Hell", 6},
    {"Hello", "H", 3},
    {"Hello", "", 2},
    {"Hello", "", 1},
    {"Hi{y:i}\r\n", "Hi", 4},
    {"Hi{y:i}\r\n", "Hi\0"s, 5},
    {"Hi<i>there", "Hit", 5},
    {"{y:i}Hi", "H", 3},
};

TYPED_TEST(LineText, IsOneLineWithoutMarkup) {
    expectTexts<TypeParam>(kLines8, kNative);
    expectTexts<TypeParam>(kLines8, kUtf8);
}

/// 16-bit text in either order.
const std::vector<TextRow> kLines16 = {
    {"Hello\r\nmore", "Hello"},
    {"Hello\nmore\r\n", "Hello\nmore"},  // kept(dvb-utf16)
    {"Hello\rmore\r\n", "Hello\rmore"},
    {"{y:i}Hi|<i>there</i>\r\n", "{y:i}Hi|<i>there</i>"},  // markup stays
    {"Hello\0more"s, "Hello"},
    {"", ""},
    {"Hello", "Hello", 16},
    {"Hello", "Hell", 15},
    {"Hello", "Hell", 14},
    {"Hello", "H", 9},
    {"Hello", "H", 8},
    {"Hello", "", 7},
    {"Hello", "", 6},
    {"Hello", "", 5},
    {"Hello", "", 2},
    {"Hello", "!untouched", 1},
};

TYPED_TEST(LineText, KeepsMarkupIn16BitText) {
    std::vector<TextRow> rows = widened(kLines16, false);
    rows.push_back({utf16le("Hello\n\nmore", false), "Hello"});
    rows.push_back({"\x42\x30\x0D\x0A\x0D\0\x0A\0"s, "[3042][0A0D]"});  // U+3042, U+0A0D
    expectTexts<TypeParam>(rows, kUtf16Le);
}

TYPED_TEST(LineText, SwapsBigEndianText) {
    if (std::is_same_v<TypeParam, SubtitleParserSubDvbSubtitleSystem>) {  // knows none
        expectTexts<TypeParam>({{utf16be("Hello", false), "!untouched"}}, kUtf16Be);
        return;
    }
    std::vector<TextRow> rows = widened(kLines16, true);
    // kept(sub-utf16be-first-line)
    rows.push_back({utf16be("Hello\n\nmore", false), "Hello\n\nmore"});
    rows.push_back({"\x30\x42\x0A\x0D\0\x0D\0\x0A"s, "[3042][0A0D]"});
    expectTexts<TypeParam>(rows, kUtf16Be);
}

TYPED_TEST(LineText, KnowsNoOtherEncoding) {
    for (const auto codeType : {kUnknown, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_ARGB8888, kBig5, kGbk}) {
        expectTexts<TypeParam>({{"Hello\r\n", "!untouched"}}, codeType);
    }
}

TYPED_TEST(LineText, WantsABufferAnIndexAndItsMemory) {
    TwoEntries<TypeParam> entries("Hello\r\n", kNative);
    TypeParam& parser = entries.parser;
    EXPECT_EQ("Hello", textOf(parser, 0));
    EXPECT_EQ("[next]", textOf(parser, 1));
    EXPECT_EQ("!untouched", textOf(parser, 2));
    EXPECT_EQ("!untouched", textOf(parser, 0xFFFFFFFF));
    EXPECT_EQ(0u, parser.GetData(0, nullptr, 8, 0));
    U8 text[1] = {7};
    EXPECT_EQ(0u, parser.GetData(0, text, 0, 0));
    EXPECT_EQ(7, text[0]);

    U8* const work = parser.m_pu8SubtitleBuffer;
    parser.m_pu8SubtitleBuffer = nullptr;
    EXPECT_EQ("!untouched", textOf(parser, 0));
    parser.m_pu8SubtitleBuffer = work;
    ST_MEDIA_SUBTITLE_PARSER_TAG* const tags = parser.m_pTagBuffer;
    parser.m_pTagBuffer = nullptr;
    EXPECT_EQ("!untouched", textOf(parser, 0));
    parser.m_pTagBuffer = tags;
    EXPECT_EQ("Hello", textOf(parser, 0));
}

TYPED_TEST(LineText, FillsTheWorkBufferAnew) {
    TwoEntries<TypeParam> entries("Hello\r\n", kNative);
    TypeParam& parser = entries.parser;
    memset(parser.m_pu8SubtitleBuffer, 'x', 8192);
    parser.m_s64SubtitleBufferPosition = 5;
    parser.m_u32SubtitleBufferDataSize = 5;
    EXPECT_EQ("Hello", textOf(parser, 0));
    EXPECT_EQ(0, memcmp("Hello\r\n\0", parser.m_pu8SubtitleBuffer, 8));
    EXPECT_EQ(std::string(8192 - 7, '\0'),
              std::string(reinterpret_cast<char*>(parser.m_pu8SubtitleBuffer) + 7, 8192 - 7));
    EXPECT_EQ(0, parser.m_s64SubtitleBufferPosition);
    EXPECT_EQ(2 + 7 + 6u, parser.m_u32SubtitleBufferDataSize);
    for (const size_t touched : {size_t{7}, size_t{8191}}) {
        parser.m_pu8SubtitleBuffer[touched] = 'x';
        EXPECT_EQ("Hello", textOf(parser, 0));
        EXPECT_EQ(0, parser.m_pu8SubtitleBuffer[touched]) << touched;
    }
}

TYPED_TEST(LineText, CutsALongEntryToTheWorkBuffer) {
    for (const U32 length : {8191U, 8192U, 8193U, 100000U}) {
        TwoEntries<TypeParam> entries(std::string(length, 'x'), kNative);
        EXPECT_EQ(length < 8192 ? length : 8192u, textOf(entries.parser, 0, 200000).size());
    }
    TwoEntries<TypeParam> tags(std::string(100000, '<'), kNative);
    EXPECT_EQ(8192u, textOf(tags.parser, 0, 200000).size());
    TwoEntries<TypeParam> braces(std::string(100000, '{'), kNative);
    EXPECT_EQ("", textOf(braces.parser, 0, 200000));
}

TYPED_TEST(LineText, OfTheLastEntryGoesToTheEndOfTheData) {
    Loaded<TypeParam> loaded("##a <i>b</i> c");
    loaded.parser.AddTag(0, 1, 2, kWhole);
    EXPECT_EQ("a b c", textOf(loaded.parser, 0));
    loaded.parser.m_pTagBuffer[0].s64Pos = 14;  // the end of the data, and behind it
    EXPECT_EQ("", textOf(loaded.parser, 0));
    loaded.parser.m_pTagBuffer[0].s64Pos = 15;
    EXPECT_EQ("", textOf(loaded.parser, 0));
}

TYPED_TEST(LineText, EndsBeforeHalfAUnit) {
    Loaded<TypeParam> little("##" + utf16le("Hi", false) + "!", kUtf16Le);
    little.parser.AddTag(0, 1, 2, kWhole);
    EXPECT_EQ("Hi", textOf(little.parser, 0));
    Loaded<TypeParam> big("##" + utf16be("Hi", false) + "!", kUtf16Be);
    big.parser.AddTag(0, 1, 2, kWhole);
    const bool known = !std::is_same_v<TypeParam, SubtitleParserSubDvbSubtitleSystem>;
    EXPECT_EQ(known ? "Hi" : "!untouched", textOf(big.parser, 0));
}

/// Data in which the next entry's position lies before, at or behind the end, and the text of the first.
struct SpanRow {
    std::string data;
    S64 next;
    std::string expected;
};

/// 16-bit text is bounded by the entry's span alone; what the span has behind the data reads 0.
template <class Parser>
void expectSpans(const std::vector<SpanRow>& rows, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type) {
    for (const SpanRow& row : rows) {
        PutByHand<Parser> parser(row.data, {0, row.next}, type);
        EXPECT_EQ(row.expected, textOf(parser, 0, 64)) << show(row.data) << " up to " << row.next;
    }
}

const std::string kLittle = utf16le("abcd", false), kBig = utf16be("abcd", false);

const std::vector<SpanRow> kLittleSpans = {
    {kLittle, 8, "abcd"},
    {kLittle, 7, "abc"},  // whole units
    {kLittle, 6, "abc"},
    {kLittle, 1, ""},
    {kLittle, 9, "abcd"},
    {kLittle, 10, "abcd"},
    {kLittle, 1000, "abcd"},
    {kLittle.substr(0, 7), 8, "abcd"},  // the half unit is one, with a 0
    {kLittle.substr(0, 7), 9, "abcd"},
    {kLittle.substr(0, 7), 10, "abcd"},
    {kLittle.substr(0, 7), 7, "abc"},
    {kLittle.substr(0, 7), 1000, "abcd"},
    {kLittle.substr(0, 6) + "\x4E", 8, "abcN"},
    {"x", 2, "x"},
    {"x", 1, ""},
};

const std::vector<SpanRow> kBigSpans = {
    {kBig, 8, "abcd"},
    {kBig, 7, "abc"},
    {kBig, 9, "abcd"},
    {kBig, 1000, "abcd"},
    {kBig.substr(0, 6) + "\x4E", 8, "abc[4E00]"},
    {kBig.substr(0, 6) + "\x4E", 7, "abc"},
    {kBig.substr(0, 6) + "\x4E", 1000, "abc[4E00]"},
    {kBig.substr(0, 7), 8, "abc"},  // a unit 0 ends the text
    {"\x4E", 2, "[4E00]"},
};

TYPED_TEST(LineText, IsBoundedByItsSpanIn16BitText) {
    expectSpans<TypeParam>(kLittleSpans, kUtf16Le);
    if (!std::is_same_v<TypeParam, SubtitleParserSubDvbSubtitleSystem>) expectSpans<TypeParam>(kBigSpans, kUtf16Be);
}

// The DVB subtitle system's other text, up to the next time stamp.
TEST(ToTimeStampText, IsBoundedByItsSpanIn16BitText) {
    for (const SpanRow& row : kLittleSpans) {
        PutByHand<SubtitleParserSubDvbSubtitleSystem> parser(row.data, {0, row.next}, kUtf16Le);
        stSubDecoderInfo info{};
        EXPECT_EQ(row.expected,
                  textFrom(parser, 64, [&](U8* buffer) { return parser.GetData(0, buffer, 64, 0, &info); }))
            << show(row.data) << " up to " << row.next;
    }
}

TEST(MicroDvdText, OfAnEntryBeforeHalfATag) {
    Loaded<SubtitleParserSubMicroDVD> loaded(utf16le("{1}{2}a\n{3}{4}").substr(0, 29), kUtf16Le);
    SubtitleParserSubMicroDVD& parser = loaded.parser;
    parser.SetFrameRate(25);
    parser.ParserThread();
    ASSERT_EQ(2u, parser.GetTagNum());
    EXPECT_EQ("a\n{3}{4}", textOf(parser, 0, 40));
}

TYPED_TEST(LineText, OfPositionsThatGoBackRunsOn) {
    Loaded<TypeParam> loaded("##one <i>two</i> three");
    loaded.parser.AddTag(0, 1, 6, kWhole);
    loaded.parser.AddTag(0, 1, 2, kWhole);
    EXPECT_EQ("two three", textOf(loaded.parser, 0));
}

}  // namespace
