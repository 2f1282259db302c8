// Plain text with time stamps: which lines make an entry, and what is shown of them.
#include "subtitle/SubtitleParserTXT.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/Cuts.h"
#include "tests/support/Interpose.h"
#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"
#include "tests/support/Rows.h"

namespace {

using namespace android;
using namespace test;

using Txt = Scanned<SubtitleParserTXT>;

const std::string kHello = "0:00:01:Hello\r\n0:00:04:\r\n";
const std::string kTwoLines = "00:00:01,1=Top\r\n00:00:01,2=Bottom\r\n00:00:03,1=\r\n00:00:03,2=\r\n";
constexpr char kTag[] = "SubtitleParserTXT";

using ByHand = PutByHand<SubtitleParserTXT>;

// ------------------------------------------------------------------------------------------------------ scan

struct TimedRow : ScanRow {
    TimedRow(const char* called, std::string content, U8 width, std::string entries,
             std::optional<std::string> littleEndian = std::nullopt,
             std::optional<std::string> bigEndian = std::nullopt)
        : ScanRow{called, std::move(content), std::move(entries), std::move(littleEndian), std::move(bigEndian)},
          shortWidth(width) {}

    U8 shortWidth;  // as remembered: 0, 8 or 9
};

const TimedRow kScanRows[] = {
    // One line for each entry. 16-bit text knows the long forms alone
    // kept(txt-utf16-short)
    {"one-digit hours", "0:00:01:Hello\r\n0:00:04:\r\n0:00:05:World\r\n0:00:07:\r\n", 8,
     "1000-4000 Hello; 5000-7000 World", ""},
    {"two-digit hours", "00:00:01:Hello\r\n00:00:04:\r\n00:00:05:World\r\n00:00:07:\r\n", 9,
     "1000-4000 Hello; 5000-7000 World", ""},
    {"hours with a leading zero", "01:00:00:x\r\n01:00:05:\r\n", 9, "3600000-3605000 x", ""},
    {"hours above 9", "10:00:00:x\r\n10:00:05:\r\n", 9, "36000000-36005000 x", ""},
    {"nine hours", "9:00:00:x\r\n9:00:05:\r\n", 8, "32400000-32405000 x", ""},
    {"other separators", "0.00-01 Hello\r\n0 00 04 \r\n", 8, "1000-4000 Hello", ""},
    {"minutes and seconds above 59", "0:99:99:x\r\n99:99:99:\r\n", 8, "6039000-362439000 x", ""},
    {"times that wrap around 32 bits", "1193046:00:01:x\r\n0:00:02:\r\n", 9, "4293272296-2000 0:01:x", ""},
    {"only three numbers make a stamp", "0:00\r\n0:00:xx:no\r\n0:00:01\r\n0:xx:01:no\r\n" + kHello, 8,
     "1000-4000 Hello", ""},
    {"short numbers: the width is not looked up", "0:0:1:Hello\r\n0:0:4:\r\n", 8, "1000-4000 llo", ""},
    {"behind white space", " \t\r\n  0:00:01:Hello\r\n \v\f0:00:04:\r\n", 8, "1000-4000 Hello", ""},
    {"behind other text", "x0:00:01:no\r\n" + kHello, 8, "1000-4000 Hello", ""},

    // Two lines for each entry.
    {"comma, line number, equals sign", kTwoLines, 0, "1000-3000 Top\r\nBottom"},
    // kept(txt-tenths)
    {"point, line number, colon", "00:00:01.1:Top\r\n00:00:01.2:Bottom\r\n00:00:03.1:\r\n00:00:03.2:\r\n", 0,
     "1000-3000 Top\r\nBottom"},
    {"two of them", kTwoLines + "01:00:05,1=A\r\n01:00:05,2=B\r\n01:00:06,1=\r\n01:00:06,2=\r\n", 0,
     "1000-3000 Top\r\nBottom; 3605000-3606000 A\r\nB"},
    {"the last closing line stands alone", "00:00:01,1=Top|Line\r\n00:00:01,2=Bottom\r\n00:00:03,1=\r\n", 0,
     "1000-3000 Top\r\nLine\r\nBottom", "1000-3000 Top|Line\r\nBottom"},
    // kept(txt-second-line-missing)
    {"an entry without a second line: the next one is taken for it",
     "00:00:01,1=A\r\n00:00:03,1=B\r\n00:00:03,2=C\r\n00:00:05,1=D\r\n00:00:05,2=\r\n", 0, "1000-3000 A\r\nB"},
    {"an empty second line", "00:00:01,1=Top\r\n00:00:01,2=\r\n00:00:03,1=\r\n", 0, "1000-3000 Top\r\n"},
    {"behind blanks", "  " + kTwoLines, 0, "1000-3000 Top\r\nBottom", std::nullopt,
     "1000-3000 Bottom\r\n"},  // as stored, they are none: the second line opens an entry
    // Three characters and eight numbers make a time range, also when two of the three end the line
    // kept(txt-empty-first-line)
    {"an empty first line", "00:00:01,1=\r\n00:00:01,2=Bottom\r\n00:00:03,1=\r\n00:00:03,2=\r\n", 0,
     "1000-3000 Bottom\r\n", "1000-3000 \r\nBottom"},

    // SubRip's time ranges open nothing, but they close.
    {"a time range", "00:00:01,500 --> 00:00:03,000\r\n" + kHello, 8, "1000-4000 Hello", ""},
    {"a time range with points", "00:00:01.500 --> 00:00:03.000\r\n" + kHello, 8, "1000-4000 Hello", ""},
    {"any three characters for the arrow", "00:00:01,1=ab5:6:7,8\r\n" + kHello, 8, "1000-4000 Hello", ""},
    {"and blanks between", "00:00:01,1=  a b 5 :6 :7 ,8\r\n" + kHello, 8, "1000-4000 Hello", ""},
    {"seven numbers are no range", "00:00:01,1=ab5:6:7\r\n00:00:01,2=B\r\n00:00:03,1=\r\n", 0,
     "1000-3000 ab5:6:7\r\nB"},
    {"a time range closes an entry", "0:00:01:Hello\r\n00:00:04,500 --> 00:00:06,000\r\nx\r\n", 8, "1000-4000 Hello",
     ""},
    {"the end time of a range is too far right for 16-bit text",
     "00:00:01,1=T\r\n00:00:01,2=B\r\n00:00:03,1 --> 0:0:0,0\r\n", 0, "1000-3000 T\r\nB"},

    // Pairs. A closing line opens nothing, whatever text it has
    // kept(txt-no-closing-lines)
    {"every second line closes", "0:00:01:One\r\n0:00:02:Two\r\n0:00:03:Three\r\n", 8, "1000-2000 One", ""},
    {"the last line has no partner", "0:00:01:One\r\n0:00:02:\r\n0:00:03:Three", 8, "1000-2000 One", ""},
    // kept(txt-broken-line)
    {"a closing line that is none restarts the pairing", "0:00:01:One\r\nhuh\r\n0:00:02:Two\r\n0:00:03:\r\n", 8,
     "2000-3000 Two", ""},
    {"going back in time", "0:00:05:a\r\n0:00:01:\r\n0:00:02:b\r\n0:00:03:\r\n", 8, "5000-1000 a; 2000-3000 b", ""},

    // The width of the first short stamp stays.
    {"8, then a stamp of 9", "0:00:01:a\r\n0:00:02:\r\n10:00:05:b\r\n10:00:06:\r\n", 8,
     "1000-2000 a; 36005000-36006000 b", ""},
    {"9, then a stamp of 8", "10:00:01:a\r\n10:00:02:\r\n0:00:05:b\r\n0:00:06:\r\n", 9,
     "36001000-36002000 a; 5000-6000 b", ""},
    {"8, then a long stamp: one line all the same", "0:00:01:a\r\n0:00:02:\r\n00:00:05,1=b\r\n00:00:07,1=\r\n", 8,
     "1000-2000 a; 5000-7000 b", ""},
    // kept(txt-one-width)
    {"long stamps, then a short one: the first entries lose their second line", kTwoLines + kHello, 8,
     "1000-3000 Top; 1000-4000 Hello", "1000-3000 Top\r\nBottom"},
    {"a closing line's width is not remembered", "00:00:01,1=A\r\n00:00:01,2=B\r\n0:00:03:closing\r\n", 0,
     "1000-3000 A\r\nB", ""},
    {"a start line shorter than its width: the next line is its text", "0:0:1\r\n0:00:02:\r\n0:00:03:x\r\n", 8,
     "1000-3000 :00:02:", ""},
    // Behind a closing line the search for its end begins at its width, be it in the next line already.
    {"a closing line shorter than its width", "0:00:01:a\r\n0:0:2\r\n0:00:03:b\r\n0:00:04:\r\n", 8, "1000-2000 a", ""},
    {"the width counts from the first digit", "0:00:01:a\r\n         0:0:2\r\n0:00:03:b\r\n0:00:04:\r\n", 8,
     "1000-2000 a", ""},
    {"8 is the width of closing lines too",
     "0:00:01:a\r\n0:00:02:\r\n10:00:05:b\r\n0:00:07\r\n0:00:08:c\r\n0:00:09:\r\n", 8,
     "1000-2000 a; 36005000-7000 b; 8000-9000 c", ""},
    {"else it is 11",
     "00:00:01,1=A\r\n00:00:01,2=B\r\n0:00:03\r\n00:00:04,1=C\r\n00:00:04,2=D\r\n00:00:05,1=E\r\n00:00:05,2=F\r\n"
     "00:00:06,1=\r\n",
     0, "1000-3000 A\r\nB; 5000-6000 E\r\nF", "4000-5000 C\r\nD"},
    {"an indented closing line", "00:00:01,1=Top\r\n00:00:01,2=Bottom\r\n  00:00:03,1=\r\n", 0,
     "1000-3000 Top\r\nBottom", std::nullopt, ""},
    // A number first in the text makes the stamp a long one, and the entry one of two lines
    // kept(txt-number-first)
    {"a text that begins with a number", "0:00:01:5 apples\r\n0:00:04:\r\n0:00:05:World\r\n0:00:07:\r\n", 0,
     "1000-5000 pples\r\n:00:05:World", ""},

    // Line ends.
    // kept(txt-lf)
    {"LF", "0:00:01:Hello\n0:00:04:\n0:00:05:World\n0:00:07:\n", 8,
     "1000-4000 Hello\n0:00:04:\n0:00:05:\0\0; 5000-7000 World\n0:00:07:\n\0\0"s, ""},
    {"LF, two lines", "00:00:01,1=Top\n00:00:01,2=Bot\n00:00:03,1=\n", 0,
     "1000-3000 Top\n00:00:01,2=Bot\n00:00:03,1=\n\0\0\0\0"s,
     "1000-3000 Top\n00:00:01,2=Bot\n00:00:03,1=", ""},  // a big-endian file without CR is one line
    {"blank lines", "0:00:01:Hello\r\n\r\n\r\n0:00:04:\r\n\r\n" + kHello, 8, "1000-4000 Hello; 1000-4000 Hello", ""},
    {"blank lines between two lines", "00:00:01,1=Top\r\n\r\n00:00:01,2=Bottom\r\n\r\n00:00:03,1=\r\n", 0,
     "1000-3000 Top\r\n2=Bottom", std::nullopt, "1000-1000 Top\r\n2=Bottom"},  // big-endian: a blank line is a line
};

TEST(SubtitleParserTXT, Scans) {
    for (const TimedRow& row : kScanRows) expectScan<SubtitleParserTXT>(row, false);
}

TEST(SubtitleParserTXT, TheWidthOfTheFirstShortStampIsRemembered) {
    for (const TimedRow& row : kScanRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.shortWidth, Txt(row.file).m_u8TimeStampTagSizeCase);
        EXPECT_EQ(0, Txt(utf16le(row.file)).m_u8TimeStampTagSizeCase);
    }
}

TEST(SubtitleParserTXT, ALeadingZeroTakesThreeNumbersBehindIt) {
    EXPECT_EQ(8, Txt("1 23:4:Text\r\n").m_u8TimeStampTagSizeCase) << "behind the 1 there are two";
    EXPECT_EQ(9, Txt("01:2:3:Text\r\n").m_u8TimeStampTagSizeCase);
}

TEST(SubtitleParserTXT, PositionsAreBytesBehindTheStamp) {
    EXPECT_EQ("1000-4000 @8", tagsOf(Txt(kHello)));
    EXPECT_EQ("1000-4000 @11", tagsOf(Txt("  \n" + kHello)));
    EXPECT_EQ("1000-3000 @11", tagsOf(Txt(kTwoLines)));
    EXPECT_EQ("1000-3000 @24", tagsOf(Txt(utf16le(kTwoLines))));
    EXPECT_EQ("1000-3000 @24", tagsOf(Txt(utf16be(kTwoLines))));
    EXPECT_EQ(kWhole, Txt(kHello).m_pTagBuffer[0].eDataType);
    // A stamp that is shorter than its width at the data's end: the position may lie behind the data.
    EXPECT_EQ("1000-2000 @8", tagsOf(Txt("0:0:1\r\n\r\n0:0:2")));
}

// Eleven units that narrow to two bytes each hold a whole time range; the 0 behind the eleventh byte is taken for an
// arrow's character.
TEST(SubtitleParserTXT, WideUnitsMayHoldARange) {
    const std::string entry = "\r\nxx\r\n00:00:02,1=B\r\n00:00:02,2=C\r\n00:00:03,1=\r\n";
    const std::pair<std::string, std::string> kRows[] = {
        {"0:0:0,0-->0?0:0,0abcde", "2000-3000 @58"},  // eight numbers: opens nothing
        {"0:0:0,0-->0?0:0,xabcde", "0-2000 @24"},
    };
    for (const auto& [line, tags] : kRows) {
        ASSERT_EQ(22u, line.size());
        EXPECT_EQ(tags, tagsOf(Txt("\xFF\xFE" + line + utf16le(entry, false)))) << line;
        std::string swapped = line;
        for (size_t i = 0; i < swapped.size(); i += 2) std::swap(swapped[i], swapped[i + 1]);
        EXPECT_EQ(tags, tagsOf(Txt("\xFE\xFF" + swapped + utf16be(entry, false)))) << line;
    }
}

TEST(SubtitleParserTXT, AMarkSpoilsTheFirstLineOfUtf8) {
    Txt txt(
        "\xEF\xBB\xBF"
        "0:00:01:lost\r\n0:00:02:\r\n" +
        kHello);
    // What was the closing line opens the first entry.
    EXPECT_EQ("2000-1000 @25", tagsOf(txt));
}

TEST(SubtitleParserTXT, ScanningResetsWhatAnEarlierScanLeft) {
    SubtitleParserTXT parser(-1, 0, 0);
    load(parser, kTwoLines);
    parser.m_u8TimeStampTagSizeCase = 9;
    parser.m_s64RawBufferPosition = 5;
    parser.m_u32RawBufferDataSize = 5;
    parser.m_eCodeType = kUtf16Be;
    parser.ParserThread();
    EXPECT_EQ(0, parser.m_u8TimeStampTagSizeCase);
    EXPECT_EQ(0, parser.m_s64RawBufferPosition);
    EXPECT_EQ(kTwoLines.size(), parser.m_u32RawBufferDataSize);
    EXPECT_EQ("1000-3000 Top\r\nBottom", shownOf(parser));

    SubtitleParserTXT empty(-1, 0, 0);
    load(empty, "");
    empty.m_u8TimeStampTagSizeCase = 9;
    empty.ParserThread();
    EXPECT_EQ(0, empty.m_u8TimeStampTagSizeCase);
    EXPECT_EQ(TRUE, empty.bParseFinish);
    EXPECT_EQ(0u, empty.GetTagNum());
    EXPECT_EQ(kUnknown, empty.m_eCodeType);
}

// ------------------------------------------------------------------------------------------------------ text

struct TextRow {
    std::string line;  // as the file goes on behind the stamp
    std::string expected;
};

const TextRow kOneLine[] = {
    // Rule 1: CR LF ends the line, and so does a 0, which is put out with the byte behind it.
    {"Hello\r\nmore", "Hello"},
    {"Hello\nmore\r\n", "Hello\nmore"},
    {"Hello\rmore\r\n", "Hello\rmore"},
    {"Hello\r\r\n", "Hello\r"},
    {"\r\nmore", ""},
    {"\n\r\n", "\n"},
    {"Hello", "Hello\0\0"s},
    {"", "\0\0"s},
    {std::string("Hi\0x\r\n", 6), "Hi\0x"s},
    {std::string("Hi\0\r\n", 5), "Hi\0\r"s},  // behind a 0 nothing is cut
    {std::string("Hi\0\nx\r\n", 7), "Hi\0\n"s},
    // Rule 2: '|' breaks the line.
    {"a|b\r\n", "a\r\nb"},  // kept(txt-bar)
    {"a||b\r\n", "a\r\n\r\nb"},
    {"a|\r\n", "a\r\n"},  // two line-end characters are cut, no more
    {"|\r\n", "\r\n"},
    {"|a\r\n", "\r\na"},
    // Rule 3: blocks and tags.
    {"a{b}{c}d\r\n", "ad"},
    {"a{b}<c>d\r\n", "ad"},
    {"a{b}<c>|d\r\n", "a\r\nd"},
    {"a{b}|d\r\n", "a\r\nd"},
    {"Hi{b}\r\nmore\r\n", "Hi\0\0\r"s},  // the block's own 0, then the 0 it left, with the byte behind it
    {"Hi{b}\nmore\r\n", "Hi\0\0\n"s},
    {"a{b", "a\0\0"s},
    {"a{b\r\nc}d\r\n", "ad"},
    {"a{b}<c", "a\0\0"s},
    {"a<b>c</b>d\r\n", "acd"},
    {"a<b><c>d\r\n", "a<c>d"},
    {"a<b>|c\r\n", "a|c"},  // what stands behind a tag is text
    {"a<b>{c}\r\n", "a{c}"},
    {"a</b>\r\nmore\r\n", "a\r\nmore"},  // kept(text-tag-at-line-end): a line end too: the next line is shown
    {"a</b>\nmore\r\n", "a\nmore"},
    {"a</b>\r\n\r\nmore", "!open a"},  // a blank line behind a tag ends everything
    {"a < b\r\nc > d\r\n", "a < b"},
    {"a < b\nc > d\r\n", "a  d"},
    {"a > b } c\r\n", "a > b } c"},
    {"a&nbsp;\\Nb\r\n", "a&nbsp;\\Nb"},
};

TEST(SubtitleParserTXT, ExtractsOneLine) {
    for (const U8 width : {U8{8}, U8{9}}) {
        for (const TextRow& row : kOneLine) {
            SCOPED_TRACE(show(row.line));
            ByHand parser("." + row.line, {1});
            parser.m_u8TimeStampTagSizeCase = width;
            EXPECT_EQ(row.expected, textOf(parser, 0));
        }
    }
}

const TextRow kTwo[] = {
    {"Top\r\n00:00:01,2=Bottom\r\n", "Top\r\nBottom"},
    {"T|o|p\r\n00:00:01.2:Bot|tom\r\n", "T\r\no\r\np\r\nBot\r\ntom"},
    {"Top\r\n00:00:01,2=\r\n", "Top\r\n"},
    {"\r\n00:00:01,2=Bottom\r\n", "\r\nBottom"},
    {"\r\n00:00:01,2=\r\n", "\r\n"},
    {"Top\r\n00:00:01,2=Bottom", "Top\r\nBottom\0\0"s},
    {"Top\r\n", "Top\r\n\0\0"s},
    {"Top", "Top\0\0\0\0"s},
    // kept(txt-utf16-two-lines)
    // Eleven characters are skipped, whatever they are
    {"Top\r\n0:00:01:Bottom\r\n", "Top\r\ntom"},
    {"{a}T<b>op\r\n00:00:01,2={c}Bot<d>tom\r\n", "Top\r\nBottom"},
    // A line that ends at a 0 is left one byte behind it, so of the second line's stamp one character remains.
    {"Top{a}\r\n00:00:01,2=Bottom\r\n", "Top\0\0\r=Bottom"s},
    {"Top</a>\r\n00:00:01,2=Bottom\r\n00:00:02,1=x\r\n", "Top\r\n00:00:01,2=Bottom\r\nx"},
    {"Top\r\n00:00:01,2=Bot</a>\r\n\r\n", "!open Top\r\nBot"},
    {"Top</a>\r\n\r\n00:00:01,2=Bottom\r\n", "!open Top"},
};

TEST(SubtitleParserTXT, ExtractsTwoLines) {
    for (const U8 width : {U8{0}, U8{7}, U8{10}, U8{11}}) {
        for (const TextRow& row : kTwo) {
            SCOPED_TRACE(show(row.line));
            ByHand parser("." + row.line, {1});
            parser.m_u8TimeStampTagSizeCase = width;
            EXPECT_EQ(row.expected, textOf(parser, 0));
        }
    }
}

struct WideRow {
    std::string line;
    std::string expected;
    std::string bigEndian = expected;
};

const WideRow kWide[] = {
    {"Top\r\n00:00:01,2=Bottom\r\nmore", "Top\r\nBottom"},
    {"Top\r\n00:00:01,2=Bottom", "Top\r\nBottom"},
    {"Top\r\n00:00:01,2=\r\n", "Top\r\n"},
    {"\r\n00:00:01,2=Bottom\r\n", "\r\nBottom"},
    {"Top\r\n", "Top"},
    {"Top", "Top"},
    {"", ""},
    {"a{b}<c>|d\r\n00:00:01,2={e}<f>|g\r\n", "a{b}<c>|d\r\n{e}<f>|g"},  // no markup goes
    // Little-endian text loses any two line-end units, big-endian text only CR LF.
    {"Top\r\n00:00:01,2=b\n", "Top\r\nb", "Top\r\nb\n"},
    {"Top\r\n00:00:01,2=b\r", "Top\r\nb", "Top\r\nb\r"},
    {"Top\r\n00:00:01,2=b\n\n\n", "Top\r\nb\n", "Top\r\nb\n\n\n"},
    {"Top\r\n00:00:01,2=b\n\r", "Top\r\nb", "Top\r\nb\n\r"},
    {"Top\n00:00:01,2=b\r\n", "Top\n00:00:01,2=b"},
    // The second line begins where the first one's output says, and a 0 is not put out.
    {std::string("To\0p\r\n00:00:01,2=Bottom\r\n", 25), "To1,2=Bottom"},
};

TEST(SubtitleParserTXT, ExtractsTwoLinesOfUtf16) {
    for (const WideRow& row : kWide) {
        SCOPED_TRACE(show(row.line));
        for (const U8 width : {U8{0}, U8{8}, U8{9}}) {  // the width is not looked at
            ByHand le(utf16le(row.line), {2}, kUtf16Le), be(utf16be(row.line), {2}, kUtf16Be);
            le.m_u8TimeStampTagSizeCase = be.m_u8TimeStampTagSizeCase = width;
            EXPECT_EQ(row.expected, textOf(le, 0));
            EXPECT_EQ(row.bigEndian, textOf(be, 0));
        }
    }
}

TEST(SubtitleParserTXT, StopsBeforeTheBufferIsFull) {
    const std::string lines = ".Top\r\n00:00:01,2=Bottom\r\n";
    const struct {
        U32 size;
        std::string one;  // the bound of the first line is `size` - 3
        std::string two;  // of the second it is `size` - 2
    } kRows[] = {
        {0, "!untouched", "!untouched"},
        {1, "", ""},
        {2, "", ""},
        {3, "", "0"},  // eleven bytes are skipped from wherever the first line stopped
        {4, "T", "T1"},
        {5, "To", "To,"},
        {6, "Top", "Top2"},
        {7, "Top", "Top"},
        {8, "Top", "Top\r\nB"},
        {9, "Top", "Top\r\nBo"},
        {12, "Top", "Top\r\nBotto"},
        {13, "Top", "Top\r\nBottom"},
        {14, "Top", "Top\r\nBottom"},
        {15, "Top", "Top\r\nBottom"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.size);
        ByHand parser(lines, {1});
        EXPECT_EQ(row.two, textOf(parser, 0, row.size));
        parser.m_u8TimeStampTagSizeCase = 8;
        EXPECT_EQ(row.one, textOf(parser, 0, row.size));
    }
}

TEST(SubtitleParserTXT, StopsBeforeTheBufferIsFullInUtf16) {
    const std::string lines = "Top\r\n00:00:01,2=Bottom\r\n";
    const struct {
        U32 size;
        std::string expected;  // at most `size` / 2 - 3 units
    } kRows[] = {
        {0, "!untouched"},
        {1, "!untouched"},
        {2, ""},
        {7, ""},
        {8, "T"},
        {9, "T"},
        {10, "To"},
        {12, "Top"},
        {14, "Top"},  // the line end goes out as a pair, and is cut again
        {16, "Top"},
        {18, "Top\r\nB"},
        {26, "Top\r\nBotto"},
        {28, "Top\r\nBottom"},
    };
    ByHand cr(utf16le("a\r\r\n"), {2}, kUtf16Le);
    EXPECT_EQ("a", textOf(cr, 0, 10)) << "a full buffer takes no line end";
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.size);
        ByHand le(utf16le(lines), {2}, kUtf16Le), be(utf16be(lines), {2}, kUtf16Be);
        EXPECT_EQ(row.expected, textOf(le, 0, row.size));
        EXPECT_EQ(row.expected, textOf(be, 0, row.size));
    }
}

TEST(SubtitleParserTXT, CutsLongTextsToTheWorkBuffer) {
    const std::string x(100000, 'x');
    ByHand native(x, {0}), le(utf16le(x), {2}, kUtf16Le), be(utf16be(x), {2}, kUtf16Be);
    native.m_u8TimeStampTagSizeCase = 8;
    EXPECT_EQ(x.substr(0, 8192) + std::string(2, '\0'), textOf(native, 0, 20000));
    EXPECT_EQ(x.substr(0, 4096), textOf(le, 0, 20000));
    EXPECT_EQ(x.substr(0, 4096), textOf(be, 0, 20000));
}

TEST(SubtitleParserTXT, CopiesUpToTheNextEntry) {
    ByHand parser("0123456789", {2, 5, 5, 0, 10, 11, 5000, -1, 8});
    parser.m_u8TimeStampTagSizeCase = 8;
    const char* const kExpected[] = {"234", "", "56789", "0123456789", "", "", "", "", "89"};
    for (U32 i = 0; i < 9; ++i) EXPECT_EQ(kExpected[i] + std::string(2, '\0'), textOf(parser, i)) << i;
}

TEST(SubtitleParserTXT, MarkupBehindTheRawDataSizeIsText) {
    ByHand parser("a{b}c<d>e|f\r\n", {0});
    parser.m_u8TimeStampTagSizeCase = 8;
    EXPECT_EQ("ace\r\nf", textOf(parser, 0));
    parser.m_u32RawBufferDataSize = 0;
    EXPECT_EQ("a{b}c<d>e\r\nf", textOf(parser, 0));

    // The blank line that ends a text behind a tag lies below it, too.
    ByHand early("<b>\r\n\r\nx\r\n", {0});
    early.m_u8TimeStampTagSizeCase = 8;
    early.m_u32RawBufferDataSize = 7;
    EXPECT_EQ("!untouched", textOf(early, 0));
    early.m_u32RawBufferDataSize = 6;
    EXPECT_EQ("\r\n", textOf(early, 0));
}

TEST(SubtitleParserTXT, TextNeedsAnEntryABufferAndATextEncoding) {
    Txt txt(kHello);
    expectTextInCodeTypes(txt, {1, 2, 4});  // kept(txt-utf8-mark): not UTF-8
    txt.m_eCodeType = kNative;
    txt.m_u32SubtitleBufferDataSize = 7;
    txt.m_s64SubtitleBufferPosition = 5;
    EXPECT_EQ(0u, txt.GetData(0, nullptr, 10, 0));
    EXPECT_EQ(7u, txt.m_u32SubtitleBufferDataSize);  // set only for a text that can be had
    EXPECT_EQ("Hello", textOf(txt, 0));
    EXPECT_EQ(kHello.size(), txt.m_u32SubtitleBufferDataSize);
    EXPECT_EQ(0, txt.m_s64SubtitleBufferPosition);
    expectNoText(txt);
}

// ------------------------------------------------------------------------------------------------ life cycle

TEST(SubtitleParserTXT, ItsEntriesAreListed) {
    const TempFile file("0:00:01:Hello\r\n0:00:04:\r\n0:00:05:World\r\n0:00:07:\r\n");
    Rigged<SubtitleParserTXT> parser(file.fd(), 0, 0);
    parser.missing = 1;
    parser.m_eFlag = E_MEDIA_SUBTITLE_PARSER_FLAG_FINISHED;
    VirtualClock clock;
    const LogCapture log;
    EXPECT_EQ(TRUE, beginSlowly(parser, clock));
    EXPECT_EQ(1u, clock.sleeps().size());
    Messages texts = messages(log, kTag);
    ASSERT_LT(2u, texts.size());
    texts.erase(texts.begin(), texts.begin() + 2);  // on the way in
    EXPECT_EQ((Messages{
                  "Zorb_MediaSubtitleParserTXT Warning, Read data < Requied Data\n",
                  kRule,
                  "Time = 1000, 4000, 00000008\n",
                  "Time = 5000, 7000, 00000021\n",
                  kRule,
                  "Zorb_MediaSubtitleParserTXT::ParserThread -> Finished : Tag num = 2, 1\n",
                  "SubtitleParserTXT::BeginParse2222222 -> 00000010\n",
              }),
              texts);
}

TEST(SubtitleParserTXT, TheWorkerPrintsALine) {
    SubtitleParserTXT parser(-1, 0, 0);
    load(parser, kHello);
    testing::internal::CaptureStdout();
    EXPECT_EQ(nullptr, SubtitleParserTXT::ParserTask(&parser));
    // kept(txt-stdout)
    EXPECT_EQ("Thread name: .\n", testing::internal::GetCapturedStdout());
    EXPECT_EQ("1000-4000 Hello", shownOf(parser));
}

// ------------------------------------------------------------------------------------------------- bad input

const std::string kShortSample =
    "0:00:01:A{b}|<c>d</c>\r\n0:00:04:\r\n x\r\n10:00:05:a < b{c}\r\n0:00:07:\r\n00:00:08,1=y{z\r\n0:00:09:";
const std::string kLongSample =
    "00:00:01,1=A{b}|<c>d</c>e\r\n00:00:01,2=f{g}\r\n00:00:02,1=\r\n00:00:02,2=\r\n00:00:03,5 --> 00:00:04,6\r\n"
    "00:00:05.1:x\n00:00:05.2:y\r\n00:00:06.1:";

TEST(SubtitleParserTXT, CutAnywhere) {
    expectSafeAtEveryCut<SubtitleParserTXT>(kShortSample);
    expectSafeAtEveryCut<SubtitleParserTXT>(kLongSample);
}

TEST(SubtitleParserTXT, WithZerosAnywhere) {
    expectSafeWithZeros<SubtitleParserTXT>(kShortSample);
    expectSafeWithZeros<SubtitleParserTXT>(kLongSample);
}

TEST(SubtitleParserTXT, LongRuns) {
    for (const std::string& before : {kHello, kTwoLines}) {
        expectLinearTime<SubtitleParserTXT>(
            before, {"x",
                     "1",
                     "\r\n",
                     " ",
                     "\n \r",
                     "|",
                     "<",
                     "<>",
                     "{",
                     "{}",
                     "{}<",
                     "1\n",
                     "1:",
                     "1:2:3:\n",
                     "1\n ",
                     "0:00:01:\n",
                     "0:00:01:<<{a}|\n",
                     "00:00:01,1=x\n",
                     "0:0:0,0 --> 0:0:0,0\n",
                     "00:00:01,1=" + std::string(8000, '<') + "\n\n00:00:01,2=x\n00:00:02,1=\n\n00:00:02,2=\n"});
    }
}

}  // namespace
