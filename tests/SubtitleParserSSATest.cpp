// SSA/ASS: which lines of a script become entries, and what is shown of them.
#include "subtitle/SubtitleParserSSA.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Cuts.h"
#include "tests/support/Interpose.h"
#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"
#include "tests/support/Rows.h"

namespace {

using namespace android;
using namespace test;

using Script = Scanned<SubtitleParserSSA>;

/// A Dialogue line without its line end.
std::string dialogue(const std::string& start, const std::string& end, const std::string& text) {
    return "Dialogue: 0," + start + "," + end + ",Default,,0,0,0,," + text;
}

const std::string kHello = dialogue("0:00:01.50", "0:00:03.00", "Hello") + "\r\n";
constexpr char kTag[] = "SubtitleParserSSA";

using ByHand = PutByHand<SubtitleParserSSA>;

// ------------------------------------------------------------------------------------------------------ scan

const ScanRow kScanRows[] = {
    {"a script",
     "[Script Info]\r\nTitle: x\r\n\r\n[Events]\r\nFormat: Layer, Start, End, Text\r\n"
     "Comment: 0,0:00:00.00,0:00:09.00,Default,,0,0,0,,no\r\n" +
         kHello + dialogue("1:02:03.04", "1:02:05.99", "Bye") + "\r\n",
     "1500-3000 Hello; 3723040-3725990 Bye"},
    {"no line end behind the last line", dialogue("0:00:01.50", "0:00:03.00", "Hello"), "1500-3000 Hello"},
    {"lower case", "dialogue: 0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hello\r\n", "1500-3000 Hello"},
    {"mixed case", "DiaLOGUE: 0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hello\r\n", "1500-3000 Hello"},
    {"no blank behind the colon", "Dialogue:0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hello\r\n", "1500-3000 Hello"},
    {"a first field of any length", "Dialogue: Marked=0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hello\r\n",
     "1500-3000 Hello"},
    // kept(ssa-leading-blank)
    {"leading blanks", "  Dialogue: 0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hello\r\n", ""},
    {"a blank before the colon", "Dialogue : 0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hello\r\n", ""},
    {"another first letter", "Xialogue: 0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hello\r\n", ""},
    {"the word cut short", "Dialog", ""},
    {"the word alone", "Dialogue:", ""},
    {"no comma at all", "Dialogue: 0\r\nDialogue: 1", ""},

    // Times: eight numbers, the separators may be anything.
    {"other separators", "Dialogue: 0,0.00-01:50;0 00 03/00,Default,,0,0,0,,Hello\r\n", "1500-3000 Hello"},
    {"minutes and seconds above 59", dialogue("0:99:99.99", "9:99:99.99", "x"), "6039990-38439990 x"},
    {"seven numbers", dialogue("0:00:01.50", "0:00:03:xx", "Hello") + "\r\n" + kHello, "1500-3000 Hello"},
    {"a letter in the start", dialogue("a:00:01.50", "0:00:03.00", "Hello") + "\r\n" + kHello, "1500-3000 Hello"},
    // Three digits are hundredths too, and the End field's comma is counted: the text begins with Effect
    // kept(ssa-fraction)
    {"three digits in the fraction", dialogue("0:00:00.500", "0:00:03.00", "Hello"), "5000-3000 ,Hello",
     "5000-3000 ,Hello"},  // the end's last digit does not count in 16-bit text
    {"one digit in the fraction", dialogue("0:00:01.5", "0:00:03.00", "Hello"),
     "1050-3000 Hello"},  // the skip ends behind the End field's comma, one character into Style
    // kept(ssa-time-width)
    {"two-digit hours twice", dialogue("00:00:01.50", "00:00:03.00", "Hello") + "\r\n" + kHello,
     "1500-3000 ,Hello; 1500-3000 Hello", "1500-3000 Hello"},  // no fraction digit is left within 21 units
    {"two-digit hours at the end", dialogue("0:00:01.50", "00:00:03.25", "Hello"), "1500-3250 ,Hello",
     "1500-3020 ,Hello"},
    {"two-digit hours at the start", dialogue("00:00:01.50", "0:00:03.25", "Hello"), "1500-3250 ,Hello",
     "1500-3020 ,Hello"},
    {"an effect", "Dialogue: 0,00:00:01.50,00:00:03.00,Default,,0,0,0,Karaoke,Hello", "1500-3000 Karaoke,Hello", ""},
    // kept(beyond-32-bit)
    {"times that wrap around 32 bits", dialogue("1193046:0:0.0", "0:0:0.0", "Hello"), "4293271296-0 Hello"},

    // Commas are looked for across line ends.
    {"the first comma in the next line", "Dialogue:\r\nno, time\r\n" + kHello, "1500-3000 Hello"},
    {"the times in the next line", "Dialogue: 9\r\n" + kHello, "1500-3000 Hello"},
    // kept(ssa-few-commas)
    {"too few commas: the next line's are taken",
     "Dialogue: 0,0:00:01.50,0:00:03.00,A\r\n" + dialogue("0:00:05.00", "0:00:06.00", "Hello") + "\r\n",
     "1500-3000 0,0,,Hello"},
    {"too few commas: the data ends, and with it the scan",
     kHello + "Dialogue: 0,0:00:05.00,0:00:06.00,Default,,0,0,0\r\nmore text\r\n", "1500-3000 Hello"},
    {"the ninth comma is the last character", "Dialogue: 0,0:00:01.50,0:00:03.00,Default,,0,0,0,,", "1500-3000 "},
    {"the data ends right behind the times", "Dialogue: 0,0:00:01.50,0:00:03.00", ""},
    {"a Dialogue line in the text",
     dialogue("0:00:01.50", "0:00:03.00", dialogue("0:00:05.00", "0:00:06.00", "Hello")) + "\r\n",
     "1500-3000 " + dialogue("0:00:05.00", "0:00:06.00", "Hello")},
    {"a comma in the text", dialogue("0:00:01.50", "0:00:03.00", "Hello, you") + "\r\n", "1500-3000 Hello, you"},

    // Order. Only 8-bit text drops the lines that go back; the others are sorted.
    // kept(ssa-out-of-order)
    {"going back in time",
     dialogue("0:00:05.00", "0:00:06.00", "5") + "\r\n" + dialogue("0:00:01.00", "0:00:02.00", "1") + "\r\n" +
         dialogue("0:00:04.99", "0:00:06.00", "4") + "\r\n" + dialogue("0:00:07.00", "0:00:08.00", "7") + "\r\n",
     "5000-6000 5; 7000-8000 7", "1000-2000 1; 4990-6000 4; 5000-6000 5; 7000-8000 7"},
    {"a dropped line still needs its commas",
     dialogue("0:00:05.00", "0:00:06.00", "5") + "\r\nDialogue: 0,0:00:01.00,0:00:02.00,x\r\n", "5000-6000 5"},
    {"a start above 2^31 is not taken for a negative one",
     dialogue("700:00:00.00", "0:00:00.00", "a") + "\r\n" + kHello, "2520000000-0 ,a", "1500-3000 Hello"},

    // Line ends.
    {"LF", dialogue("0:00:01.50", "0:00:03.00", "Hello") + "\n" + dialogue("0:00:04.00", "0:00:05.00", "Bye") + "\n",
     "1500-3000 Hello; 4000-5000 Bye", std::nullopt,
     // A big-endian file without CR is one line, and none of its LFs ends the text
     "1500-3000 Hello\nDialogue: 0,0:00:04.00,0:00:05.00,Default,,0,0,0,,Bye\n"},
    {"CR", dialogue("0:00:01.50", "0:00:03.00", "Hello") + "\r" + dialogue("0:00:04.00", "0:00:05.00", "Bye") + "\r",
     "1500-3000 Hello\rDialogue: 0,0:00:04.00,0:00:05.00,Default,,0,0,0,,; 4000-5000 Bye\r", std::nullopt,
     "1500-3000 Hello\rDialogue: 0,0:00:04.00,0:00:05.00,Default,,0,0,0,,Bye\r"},
    {"blank lines", "\r\n\r\n\n" + kHello + "\r\n\r\n" + kHello, "1500-3000 Hello; 1500-3000 Hello", std::nullopt,
     "1500-3000 Hello"},  // the LF without a CR spoils the big-endian line behind it
    {"LF first in the line", "\n" + kHello + kHello, "1500-3000 Hello; 1500-3000 Hello", std::nullopt,
     "1500-3000 Hello"},
};

TEST(SubtitleParserSSA, Scans) {
    for (const ScanRow& row : kScanRows) expectScan<SubtitleParserSSA>(row);
}

TEST(SubtitleParserSSA, PositionsAreBytesBehindTheNinthComma) {
    const size_t text = kHello.size() - 7;
    const auto at = [](size_t position) { return "1500-3000 @" + std::to_string(position); };
    EXPECT_EQ(at(text), tagsOf(Script(kHello)));
    EXPECT_EQ(at(2 + 2 * text), tagsOf(Script(utf16le(kHello))));
    EXPECT_EQ(at(2 + 2 * text), tagsOf(Script(utf16be(kHello))));
    EXPECT_EQ(at(5 + text), tagsOf(Script("\xEF\xBB\xBF\r\n" + kHello)));
    EXPECT_EQ(kWhole, Script(kHello).m_pTagBuffer[0].eDataType);
}

// kept(utf8-mark): one byte of the mark is stepped over, so the first line is never a Dialogue line.
TEST(SubtitleParserSSA, AMarkSpoilsTheFirstLineOfUtf8) {
    Script script("\xEF\xBB\xBF" + kHello + kHello);
    EXPECT_EQ(kUtf8, script.m_eCodeType);
    EXPECT_EQ("1500-3000 Hello", shownOf(script));
}

TEST(SubtitleParserSSA, MarksAreReadFromTheFirstBytesAlone) {
    const struct {
        std::string first;
        EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE expected;
    } kRows[] = {
        {"\xFF\xFE", kUtf16Le}, {"\xFE\xFF", kUtf16Be}, {"\xEF\xBB\xBF", kUtf8}, {"\xEF\xBB", kNative},
        {"\xFF", kNative},      {"\xFF\xFD", kNative},  {" \xFF\xFE", kNative},  {"x", kNative},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(show(row.first));
        SubtitleParserSSA parser(-1, 0, 0);
        load(parser, row.first);
        parser.m_eCodeType = kGbk;  // whatever it was
        parser.ParserThread();
        EXPECT_EQ(row.expected, parser.m_eCodeType);
        EXPECT_EQ(0u, parser.GetTagNum());
        EXPECT_EQ(TRUE, parser.bParseFinish);
    }
}

TEST(SubtitleParserSSA, ScanningResetsThePosition) {
    SubtitleParserSSA parser(-1, 0, 0);
    load(parser, kHello);
    parser.m_s64RawBufferPosition = 1000;
    parser.m_u32RawBufferDataSize = 1;
    parser.ParserThread();
    EXPECT_EQ(0, parser.m_s64RawBufferPosition);
    EXPECT_EQ(kHello.size(), parser.m_u32RawBufferDataSize);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID, parser.m_eSubtitleType);
    EXPECT_EQ(1u, parser.GetTagNum());
}

TEST(SubtitleParserSSA, EqualStartsAreAccepted) {
    for (const std::string& file : {kHello + kHello + kHello, utf16le(kHello + kHello + kHello)}) {
        Script script(file);
        EXPECT_EQ("1500-3000 Hello; 1500-3000 Hello; 1500-3000 Hello", shownOf(script));
    }
}

// The last byte of an odd length is no unit to find a comma in.
TEST(SubtitleParserSSA, OddLengthInUtf16) {
    const std::string eightCommas = "Dialogue: 0,0:00:01.50,0:00:03.00,Default,,0,0,0,";
    Script none(utf16le(eightCommas) + ",");
    EXPECT_EQ(0u, none.GetTagNum());
    EXPECT_EQ(TRUE, none.bParseFinish);
    Script empty(utf16le(eightCommas + ",") + "x");
    EXPECT_EQ("1500-3000 x", shownOf(empty));  // but text it is
    Script ignored(utf16le(kHello) + "\n");
    EXPECT_EQ("1500-3000 Hello", shownOf(ignored));
}

// A wide unit gives two characters where a line or its times are narrowed.
TEST(SubtitleParserSSA, WideUnitsCountTwiceWhenNarrowed) {
    std::string file = utf16le("??ALOGUE:0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hello\r\n");
    file.replace(2, 4, "DI");  // one unit, 0x4944: the word ends one unit early
    Script script(file);
    EXPECT_EQ("1500-3000 Hello", shownOf(script));
}

TEST(SubtitleParserSSA, SortsALongTable) {
    std::string file;
    for (int i = 0; i < 9000; ++i) {
        const int second = (i * 37) % 9000;
        char start[32];
        snprintf(start, sizeof start, "%d:%02d:%02d.00", second / 3600, second / 60 % 60, second % 60);
        file += dialogue(start, "9:00:00.00", "x") + "\r\n";
    }
    Script script(utf16le(file));
    ASSERT_EQ(9000u, script.GetTagNum());
    for (U32 i = 0; i < 9000; ++i) ASSERT_EQ(i * 1000, script.m_pTagBuffer[i].u32TimeStart);
    EXPECT_EQ(4711u, script.GetTag(0, 4711999));
    // Sorted, most entries are followed by one that lies before them in the file.
    EXPECT_EQ("x", textOf(script, 4711));
}

// ------------------------------------------------------------------------------------------------------ text

struct TextRow {
    std::string line;      // as the file goes on behind the ninth comma
    std::string expected;  // 8-bit and little-endian
    std::string bigEndian = expected;
};

const TextRow kTextRows[] = {
    // Step 1: what ends the text.
    {"Hello", "Hello"},
    {"Hello\r\nmore", "Hello"},
    {"Hello\nmore", "Hello", "Hello\nmore"},
    {"Hello\rmore\r\nx", "Hello\rmore", "Hello\rmore"},
    {"Hello\r\r\nmore", "Hello\r"},
    {"Hello\r", "Hello\r"},
    {"\r\nHello", ""},
    {"", ""},
    // Step 3: blocks.
    {"{\\i1}Hi{\\i0}", "Hi", "{\\i1}Hi{\\i0}"},  // kept(ssa-utf16be-markup)
    {"a{b}{c}{d}e", "ae", "a{b}{c}{d}e"},
    {"a{}b", "ab", "a{}b"},
    {"a{b{c}d}e", "ad}e", "a{b{c}d}e"},
    {"Hi{\\b1}\r\nmore", "Hi\0"s, "Hi{\\b1}"},  // kept(text-block-at-line-end)
    {"Hi{\\b1}\nmore", "Hi\0"s, "Hi{\\b1}\nmore"},
    {"Hi{\\b1}\rmore", "Hi\0"s, "Hi{\\b1}\rmore"},
    {"{a}{b}\r\nmore", "\0"s, "{a}{b}"},
    {"a{b", "a", "a{b"},          // kept(text-brace-unclosed)
    {"a{b\r\nc}d", "ad", "a{b"},  // a block crosses lines
    {"{a}<b>c", "c", "{a}<b>c"},
    {"{a}<b>{c}<d>e", "e", "{a}<b>{c}<d>e"},
    {"x{a}<b>\r\nmore", "x", "x{a}<b>"},  // unlike a tag alone: the line's end behind it is seen
    {"x{a}<b\r\n>y", "xy", "x{a}<b"},
    {"x{a}<b", "x", "x{a}<b"},
    {"x{a}<>y", "xy", "x{a}<>y"},
    {"a}b", "a}b"},
    // Step 4: tags.
    {"A<b>B", "AB", "A<b>B"},
    {"A<b>B</b>C", "ABC", "A<b>B</b>C"},
    {"A<b>B</b>", "AB\0"s, "A<b>B</b>"},  // a reader sees AB
    {"A<3>B", "AB", "A<3>B"},             // whatever stands in it
    {"A<>B", "AB", "A<>B"},
    {"<b>B</b>\r\n\r\n", "!open B", "<b>B</b>"},
    {"<b>B</b>\r\nmore", "B\r", "<b>B</b>"},  // kept(text-tag-at-line-end)
    {"<b>B</b>\n\n\n\n", "B\n", "<b>B</b>\n\n\n\n"},
    {"<b>B</b>", "B\0"s, "<b>B</b>"},   // the 0 behind the data is the character behind the tag
    {"A<b><c>D", "A<c>D", "A<b><c>D"},  // tags do not join: the second '<' is a character
    {"A<b>{c}D", "A{c}D", "A<b>{c}D"},
    {"a < b", "a < b"},
    {"a < b\r\nc > d", "a < b"},
    {"a < b\n\rc > d", "a < b", "a < b\n\rc > d"},
    {"a < b\nc > d", "a  d", "a < b\nc > d"},  // LF alone does not end the search
    {"a < b\rc > d", "a  d", "a < b\rc > d"},
    {"<<<a", "<<<a"},
    {"<a<b>c", "c", "<a<b>c"},
    {"a>b", "a>b"},
    // Nothing else is touched.
    {"Line1\\NLine2\\nx\\h", "Line1\\NLine2\\nx\\h"},              // kept(break-N)
    {"{\\p1}m 0 0 l 10 0", "m 0 0 l 10 0", "{\\p1}m 0 0 l 10 0"},  // kept(ssa-drawing)
    {"a\xB5{b", "a\xB5", "a\xB5{b"},  // kept(trail-byte-brace): 0xB57B is one character in Big5 and GBK
    {"a&nbsp;b|c", "a&nbsp;b|c"},
};

TEST(SubtitleParserSSA, ExtractsText) {
    const std::string before = "Dialogue: 0,0:00:01.50,0:00:03.00,Default,,0,0,0,,";
    for (const TextRow& row : kTextRows) {
        SCOPED_TRACE(show(row.line));
        expectNarrowText<SubtitleParserSSA>(before + row.line, row.expected, {kNative, kBig5, kGbk});
        expectWideText<SubtitleParserSSA>(before + row.line, row.expected, row.bigEndian);
    }
}

// A 0 ends the text, except right behind a tag, where it is copied and counted.
TEST(SubtitleParserSSA, ZerosInTheText) {
    const std::string before = "Dialogue: 0,0:00:01.50,0:00:03.00,Default,,0,0,0,,";
    const std::string inside = before + std::string("a\0b", 3), behindTag = before + std::string("<b>\0a", 5);
    Script first(inside), second(behindTag);
    EXPECT_EQ("a", textOf(first, 0));
    EXPECT_EQ("\0a"s, textOf(second, 0));
    Script wide(utf16le(behindTag)), big(utf16be(inside));
    EXPECT_EQ("\0a"s, textOf(wide, 0));
    EXPECT_EQ("a", textOf(big, 0));
}

TEST(SubtitleParserSSA, StopsBeforeTheBufferIsFull) { expectHelloToFit<SubtitleParserSSA>(kHello); }

// The 0 of a block at the line's end counts against the limit as well, and nothing runs over.
TEST(SubtitleParserSSA, ABlockAtTheLimit) {
    Script script(dialogue("0:00:01.50", "0:00:03.00", "Hi{b}\r\n"));
    EXPECT_EQ("H", textOf(script, 0, 3));
    EXPECT_EQ("Hi", textOf(script, 0, 4));
    EXPECT_EQ("Hi\0"s, textOf(script, 0, 5));
}

TEST(SubtitleParserSSA, CutsLongTextsToTheWorkBuffer) {
    expectCutToTheWorkBuffer<SubtitleParserSSA>(dialogue("0:00:01.50", "0:00:03.00", ""), "\r\n");
    // Markup that begins inside and ends outside
    Script block(dialogue("0:00:01.50", "0:00:03.00", std::string(8190, 'x') + "{a}b"));
    EXPECT_EQ(std::string(8190, 'x'), textOf(block, 0, 20000));
    Script tag(dialogue("0:00:01.50", "0:00:03.00", std::string(8190, 'x') + "<a>b"));
    EXPECT_EQ(std::string(8190, 'x') + "<a", textOf(tag, 0, 20000));
}

TEST(SubtitleParserSSA, CopiesUpToTheNextEntryOnlyWhenThatLiesBehind) {
    ByHand parser("0123456789", {2, 5, 5, 0, 10, 11, 5000, -1, 8});
    const char* const kExpected[] = {"234", "56789", "56789", "0123456789", "", "", "", "", "89"};
    for (U32 i = 0; i < 9; ++i) EXPECT_EQ(kExpected[i], textOf(parser, i)) << i;

    parser.m_u32TagNum = 1;  // the last entry reads on whatever the record behind it says
    EXPECT_EQ("23456789", textOf(parser, 0));
}

// The bound of a tag is the way to the next entry: a difference of bytes, wrapping, and compared with units.
TEST(SubtitleParserSSA, TheBoundOfATag) {
    const std::string data = "ab<i>cd<i>ef";
    ByHand toTheLetter(data, {0, 4});  // the '>' is the first character behind the bound
    EXPECT_EQ("ab<i", textOf(toTheLetter, 0));
    ByHand within(data, {0, 5});
    EXPECT_EQ("ab\0"s, textOf(within, 0));
    ByHand backwards(data, {7, 0});  // wraps to a large number
    EXPECT_EQ("ef", textOf(backwards, 0));
    ByHand same(data, {7, 7});  // 0: no tag begins below it
    EXPECT_EQ("<i>ef", textOf(same, 0));

    ByHand wide(utf16le(data, false), {0, 12}, kUtf16Le);  // six units are copied, the bound allows for twelve
    EXPECT_EQ("abc", textOf(wide, 0));

    // CR LF CR LF behind the tag must lie below the bound to end the text there.
    ByHand last(" <i>\r\n\r\n", {1});
    EXPECT_EQ("!untouched", textOf(last, 0));
    ByHand seven(" <i>\r\n\r\nx", {1, 8});
    EXPECT_EQ("!untouched", textOf(seven, 0));
    ByHand six(" <i>\r\n\r\nx", {1, 7});
    EXPECT_EQ("\r", textOf(six, 0));
    ByHand first("<i>x", {0});  // the record behind the last one reads 0: no bound to speak of, but for position 0
    EXPECT_EQ("<i>x", textOf(first, 0));
}

TEST(SubtitleParserSSA, NoMoreUnitsAreReadThanTheDataHas) { expectTextWithinTheData<SubtitleParserSSA>(); }

// From the raw data's size on, everything is text; files do not get there, a player's own fields may.
TEST(SubtitleParserSSA, MarkupBehindTheRawDataSizeIsText) {
    ByHand parser(" ab{c}d<e>f", {1});
    EXPECT_EQ("abdf", textOf(parser, 0));
    parser.m_u32RawBufferDataSize = 0;
    EXPECT_EQ("ab{c}d<e>f", textOf(parser, 0));
    parser.m_u32RawBufferDataSize = 6;
    EXPECT_EQ("abd<e>f", textOf(parser, 0));
}

TEST(SubtitleParserSSA, TextNeedsAnEntryABufferAndATextEncoding) {
    Script script(kHello);
    EXPECT_EQ(TRUE, script.bParseFinish);
    expectTextInCodeTypes(script, {1, 2, 3, 4, 12, 13});
    script.m_eCodeType = kNative;
    script.m_u32SubtitleBufferDataSize = 0;
    script.m_s64SubtitleBufferPosition = 5;
    EXPECT_EQ(0u, script.GetData(0, nullptr, 10, 0));
    EXPECT_EQ(kHello.size(), script.m_u32SubtitleBufferDataSize);  // set all the same
    EXPECT_EQ("Hello", textOf(script, 0));
    EXPECT_EQ(0, script.m_s64SubtitleBufferPosition);
    expectNoText(script);
}

TEST(SubtitleParserSSA, ConvertsUnitsAsTheBaseDoes) {
    SubtitleParserSSA parser(-1, 0, 0);
    U16 units[] = {'a', 0x4E2D};
    U8 bytes[5] = {};
    EXPECT_EQ(TRUE, parser.ConvertUnicode2ASCII(units, bytes, 2));
    EXPECT_EQ(0, memcmp(bytes, "a\x2D\x4E\0", 4));
    parser.m_eCodeType = kUtf16Be;
    units[0] = 0x6100;
    EXPECT_EQ(TRUE, parser.ConvertUnicode2ASCII(units, bytes, 1));
    EXPECT_EQ('a', bytes[0]);
}

// ------------------------------------------------------------------------------------------- encoding check

std::string inChinese(const char* text) { return dialogue("0:00:01.50", "0:00:03.00", text) + "\r\n"; }

TEST(SubtitleParserSSA, TheCheckSettlesOnBig5OrGbk) {
    const struct {
        const char* name;
        std::string file;
        EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE expected;
        std::vector<std::string> log;  // of the check, its last line left out when it announces the decision
    } kRows[] = {
        // kept(codepage-as-big5)
        {"Big5 alone has 0xA440", inChinese("\xA4\x40"), kBig5, {"u32CurTagEncoding[0] = 4\n"}},
        // kept(codepage-as-gbk)
        {"GBK alone has 0xFE45", inChinese("\xFE\x45"), kGbk, {"u32CurTagEncoding[0] = 2\n"}},
        {"the second entry decides",
         inChinese("\xB0\xA1") + inChinese("\xA4\x40") + inChinese("\xFE\x45"),
         kBig5,
         {"u32CurTagEncoding[0] = 6\n", "u32CurTagEncoding[1] = 4\n"}},
        {"markup is not looked at",
         inChinese("{\xA4\x40}x") + inChinese("\xFE\x45"),
         kGbk,
         {"u32CurTagEncoding[0] = 7\n", "u32CurTagEncoding[1] = 2\n"}},
        // kept(utf8-unmarked-as-big5)
        {"UTF-8 without a mark, two Chinese characters",
         inChinese("\xE4\xB8\xAD\xE6\x96\x87"),
         kBig5,
         {"u32CurTagEncoding[0] = 4\n"}},
        // kept(utf8-unmarked-as-gbk)
        {"UTF-8 without a mark, three Cyrillic letters",
         inChinese("\xD0\x9F\xD1\x80\xD0\xB8"),
         kGbk,
         {"u32CurTagEncoding[0] = 2\n"}},
        {"what an earlier text left is not taken for one without a 0",  // else 6 for the second one
         inChinese("x\xB0\xA1") + inChinese("<b>\r\n\r\n") + inChinese("\xFE\x45"),
         kGbk,
         {"u32CurTagEncoding[0] = 6\n", "u32CurTagEncoding[1] = 7\n", "u32CurTagEncoding[2] = 2\n"}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        const LogCapture log;
        Script script(row.file);
        EXPECT_EQ(row.expected, script.m_eCodeType);
        const std::vector<std::string> texts = messages(log, kTag);
        std::vector<std::string> expected{
            "Zorb_MediaSubtitleParserSSA::ParserThread start to check possible encodings"};
        expected.insert(expected.end(), row.log.begin(), row.log.end());
        expected.push_back(row.expected == kBig5 ? "Zorb_MediaSubtitleParserSSA::ParserThread code type = 12\n"
                                                 : "Zorb_MediaSubtitleParserSSA::ParserThread code type = 13\n");
        expected.push_back("Zorb_MediaSubtitleParserSSA::ParserThread -> Finished : Tag num = " +
                           std::to_string(script.GetTagNum()) + ", 1\n");
        EXPECT_EQ(expected, texts);
    }
}

TEST(SubtitleParserSSA, TheCheckLooksAt100EntriesAtMost) {
    std::string file;
    for (int i = 0; i < 99; ++i) file += kHello;
    Script last(file + inChinese("\xA4\x40"));
    EXPECT_EQ(kBig5, last.m_eCodeType);
    const LogCapture log;
    Script tooLate(file + kHello + inChinese("\xA4\x40"));
    EXPECT_EQ(kNative, tooLate.m_eCodeType);
    const std::vector<std::string> texts = messages(log, kTag);
    ASSERT_EQ(102u, texts.size());
    EXPECT_EQ("u32CurTagEncoding[0] = 7\n", texts[1]);
    EXPECT_EQ("u32CurTagEncoding[99] = 7\n", texts[100]);
}

// Rounds behind the last entry read empty texts: the bound is the table's capacity.
TEST(SubtitleParserSSA, TheCheckRunsAll100RoundsForAnUndecidedFile) {
    const LogCapture log;
    Script script(kHello);
    EXPECT_EQ(kNative, script.m_eCodeType);
    EXPECT_EQ(102u, messages(log, kTag).size());
}

TEST(SubtitleParserSSA, TheCheckIsForUnmarkedTextAlone) {
    for (const std::string& file : {"\xEF\xBB\xBF\n" + inChinese("\xA4\x40"), utf16le(inChinese("\xA4\x40")),
                                    utf16be(inChinese("\xA4\x40")), std::string()}) {
        const LogCapture log;
        Script script(file);
        EXPECT_EQ(1u, messages(log, kTag).size());
        EXPECT_NE(kBig5, script.m_eCodeType);
    }
}

TEST(SubtitleParserSSA, TheCheckNeedsATagTable) {
    SubtitleParserSSA parser(-1, 0, 0);
    parser.m_eCodeType = kNative;
    const LogCapture log;
    parser.GetData2CheckPossibleEncodings();
    EXPECT_EQ(kNative, parser.m_eCodeType);
    EXPECT_EQ(std::vector<std::string>{"Zorb_MediaSubtitleParserSSA::ParserThread start to check possible encodings"},
              messages(log, kTag));
}

TEST(SubtitleParserSSA, TheCheckNeedsMemory) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    Script script(inChinese("\xA4\x40"));
    script.m_eCodeType = kNative;
    const LogCapture log;
    {
        const AllocationFails shortage(8192);
        script.GetData2CheckPossibleEncodings();
    }
    EXPECT_EQ(kNative, script.m_eCodeType);
    EXPECT_EQ(1u, messages(log, kTag).size());
}

// ------------------------------------------------------------------------------------------------ life cycle

TEST(SubtitleParserSSA, TheCheckSpeaksBetweenTheScanAndItsEnd) {
    const TempFile file(inChinese("\xA4\x40") + kHello);
    Rigged<SubtitleParserSSA> parser(file.fd(), 0, 0);
    parser.missing = 3;
    parser.m_eFlag = E_MEDIA_SUBTITLE_PARSER_FLAG_FINISHED;
    VirtualClock clock;
    const LogCapture log;
    EXPECT_EQ(TRUE, beginSlowly(parser, clock));
    EXPECT_EQ(1u, clock.sleeps().size());
    Messages texts = messages(log, kTag);
    ASSERT_LT(2u, texts.size());
    texts.erase(texts.begin(), texts.begin() + 2);  // on the way in
    EXPECT_EQ((Messages{
                  "Zorb_MediaSubtitleParserSSA Warning, Read data < Requied Data\n",
                  "Zorb_MediaSubtitleParserSSA::BeginParse -> Wait...\n",
                  "Zorb_MediaSubtitleParserSSA::ParserThread start to check possible encodings",
                  "u32CurTagEncoding[0] = 4\n",
                  "Zorb_MediaSubtitleParserSSA::ParserThread code type = 12\n",
                  "Zorb_MediaSubtitleParserSSA::ParserThread -> Finished : Tag num = 2, 1\n",
                  "Zorb_MediaSubtitleParserSSA::BeginParse2222222 -> 00000010\n",
                  "Zorb_MediaSubtitleParserSSA::BeginParse -> Exit\n",
              }),
              texts);
}

// Check and sort come behind the flag, but TRUE comes behind both.
TEST(SubtitleParserSSA, BeginParseAnswersWhenTheWorkerHasEnded) {
    std::string content;
    for (int i = 99; i >= 0; --i) content += dialogue("0:00:" + std::to_string(i) + ".00", "1:00:00.00", "x") + "\r\n";
    const TempFile file(utf16le(content));
    for (int i = 0; i < 50; ++i) {
        SubtitleParserSSA parser(file.fd(), 0, 0);
        ASSERT_EQ(TRUE, parser.BeginParse());
        ASSERT_EQ(100u, parser.GetTagNum());
        for (U32 tag = 1; tag < 100; ++tag) {
            ASSERT_LE(parser.m_pTagBuffer[tag - 1].u32TimeStart, parser.m_pTagBuffer[tag].u32TimeStart);
        }
    }
}

// ------------------------------------------------------------------------------------------------- bad input

const std::string kSample = "[Events]\r\n" + dialogue("0:00:01.50", "0:00:03.00", "{\\i1}A<b>B</b>{x}<y>z\\N{\\i0}") +
                            "\r\n" + dialogue("0:00:01.00", "00:00:03.00", "a < b{c}") + "\n" +
                            dialogue("0:00:04.00", "0:00:05.00", "<i>x</i>\r\n\r\n");

TEST(SubtitleParserSSA, CutAnywhere) { expectSafeAtEveryCut<SubtitleParserSSA>(kSample); }

TEST(SubtitleParserSSA, WithZerosAnywhere) { expectSafeWithZeros<SubtitleParserSSA>(kSample); }

TEST(SubtitleParserSSA, LongRuns) {
    expectLinearTime<SubtitleParserSSA>(
        dialogue("0:00:01.50", "0:00:03.00", ""),
        {"x", ",", "\r\n", "\r", "{", "<", "{}", "<>", "{}<", "{}<x", " ", "Dialogue:", "Dialogue:\r\n",
         "Dialogue: 0,\r\n", "Dialogue: 0,0:0:0.0,0:0:0.0,\r\n", dialogue("0:00:01.50", "0:00:03.00", "<<<{a}") + "\n",
         dialogue("0:00:01.50", "0:00:03.00", std::string(8000, '<')) + "\n"});
    // All lines look at the same far comma, and the times behind it take long to be refused.
    std::string far;
    for (int i = 0; i < 30000; ++i) far += "Dialogue:\n";
    far += ",1:" + std::string(400000, ' ') + "x";
    expectLinearTime<SubtitleParserSSA>(far, {"x"});
    // All lines look for a comma that is far away.
    std::string lone;
    for (int i = 0; i < 400000; ++i) lone += "Dialogue:\n";
    expectLinearTime<SubtitleParserSSA>(lone + ",", {"x"});
}

// ------------------------------------------------------------------------------------- behind a complete scan

/// Held in its check of the encodings, between the flag and its end.
struct Held : SubtitleParserSSA {
    using SubtitleParserSSA::SubtitleParserSSA;
    ~Held() override { Deinit(); }
    void GetData2CheckPossibleEncodings() override {
        flagInCheck = __atomic_load_n(&bParseFinish, __ATOMIC_ACQUIRE);
        startsInCheck = tagsOf(*this);
        inCheck = true;
        while (!released) sched_yield();
        SubtitleParserSSA::GetData2CheckPossibleEncodings();
    }
    BOOL flagInCheck = FALSE;
    std::string startsInCheck;
    std::atomic<bool> inCheck{false}, released{false};
};

const std::string kDescending = utf16le(
    "Dialogue: 0,0:00:02.00,0:00:03.00,Default,,0,0,0,,B\r\n"
    "Dialogue: 0,0:00:01.00,0:00:03.00,Default,,0,0,0,,A\r\n");

TEST(SsaEnd, TheFlagGoesUpBeforeCheckAndSortAndTrueComesBehindThem) {
    const TempFile file(kDescending);
    VirtualClock clock;
    Held parser(const_cast<char*>(file.path()));
    clock.atSleep(1, [&] {
        while (!parser.inCheck) sched_yield();
    });
    std::atomic<bool> returned{false};
    std::thread player([&] {
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_GE(1u, clock.sleeps().size()) << "the flag is up after the first, and then the worker is joined";
        returned = true;
    });
    while (!parser.inCheck) sched_yield();
    giveWay(1000);
    EXPECT_FALSE(returned) << "not before its worker has been joined";
    parser.released = true;
    player.join();
    EXPECT_EQ(TRUE, parser.flagInCheck);
    EXPECT_EQ(0u, parser.startsInCheck.find("2000-3000"));
    EXPECT_EQ(0u, tagsOf(parser).find("1000-3000")) << "sorted";
    EXPECT_EQ(1u, threadCount());
}

TEST(SsaEnd, ALastLookThatFindsTheFlagUpJoins) {
    const TempFile file(kDescending);
    for (const bool inTime : {true, false}) {
        VirtualClock clock;
        ThreadGate gate;
        Held parser(const_cast<char*>(file.path()));
        parser.released = inTime;
        clock.atSleep(inTime ? 100 : 101, [&] {  // ten seconds are a hundred periods
            gate.open();
            while (!parser.inCheck) sched_yield();
        });
        EXPECT_EQ(inTime ? TRUE : FALSE, parser.BeginParse());
        EXPECT_EQ(100u, clock.sleeps().size());
        EXPECT_EQ(inTime ? 1u : 2u, threadCount());
        gate.open();
        parser.released = true;
    }
    EXPECT_EQ(1u, threadCount());
}

}  // namespace
