// SAMI: where entries begin, and what is shown of them.
#include "subtitle/SubtitleParserSMI.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/Cuts.h"
#include "tests/support/Interpose.h"
#include "tests/support/Parsers.h"
#include "tests/support/Rows.h"

namespace {

using namespace android;
using namespace test;

using Sami = Scanned<SubtitleParserSMI>;

const std::string kHello = "<SYNC Start=1000><P Class=ENCC>Hello";

using ByHand = PutByHand<SubtitleParserSMI>;

// ------------------------------------------------------------------------------------------------------ scan

const ScanRow kScanRows[] = {
    {"one entry", kHello, "1000- Hello"},
    {"a file",
     "<SAMI>\r\n<HEAD>\r\n<TITLE>x</TITLE>\r\n</HEAD>\r\n<BODY>\r\n" + kHello +
         "\r\n<SYNC Start=2000><P Class=ENCC>&nbsp;\r\n</BODY>\r\n</SAMI>\r\n",
     "1000- Hello; 2000-  \n\0</BODY"s, "1000- Hello; 2000- &nbsp;\n</BODY>\n</SAMI>\n", "1000- Hello; 2000- &nbsp;"},
    {"a blank screen", "<SYNC Start=2000><P Class=ENCC>&nbsp;", "2000-  ", "2000- &nbsp;"},

    // The SYNC element.
    {"lower case", "<sync start=1000><p class=encc>Hello", "1000- Hello"},
    {"two blanks", "<SYNC  Start=1000><P Class=ENCC>Hello", ""},  // kept(smi-sync-form)
    {"a tab for the blank", "<SYNC\tStart=1000><P Class=ENCC>Hello", ""},
    {"a blank before the equals sign", "<SYNC Start =1000><P Class=ENCC>Hello", ""},
    {"a blank behind the equals sign", "<SYNC Start= 1000><P Class=ENCC>Hello", "1000- Hello"},
    {"quotes", "<SYNC Start=\"1000\"><P Class=ENCC>Hello", "1000- Hello"},
    {"a unit", "<SYNC Start=1000ms End=2000><P Class=ENCC>Hello", "1000- Hello"},
    {"a negative start", "<SYNC Start=-1000><P Class=ENCC>Hello", "1000- Hello"},  // kept(smi-negative)
    {"behind other text", "x<SYNC Start=1000><P Class=ENCC>Hello", ""},            // kept(smi-sync-not-at-line-start)
    // kept(smi-skipped-sync-text)
    {"two in a line", kHello + "<SYNC Start=2000><P Class=ENCC>Bye", "1000- HelloBye",
     "1000- Hello<SYNC Start=2000><P Class=ENCC>Bye"},
    // kept(smi-be-indented)
    {"blanks before it", " \t\v\f  " + kHello, "1000- Hello", std::nullopt, ""},  // as stored, they are none
    {"blank lines before it", "\r\n\r\n" + kHello, "1000- Hello", std::nullopt, "1000- Hello"},

    // The Start value.
    {"0", "<SYNC Start=0><P>x", "0- x"},
    {"ten digits", "<SYNC Start=4294967295><P>x", "4294967295- x"},
    {"eleven digits", "<SYNC Start=12345678901><P>x", "3755744309- x", "1234567890- x"},  // ten units are read
    {"ten digits, text", "<SYNC Start=4294967295><P>nothing but text", "4294967295- nothing but text"},
    {"eleven digits, text", "<SYNC Start=12345678901><P>nothing but text", "3755744309- nothing but text",
     "1234567890- nothing but text"},
    {"the first digit is elsewhere", "<SYNC Start=><P Class=1>Hello<b>2", "1- 2"},
    {"the first digit is in the next line", "<SYNC Start=>\r\n<P 77><b>x\r\n" + kHello, "77- x; 1000- Hello"},
    {"no digit at all", "<SYNC Start=><P Class=ENCC>Hello", ""},

    // The position: behind the second '>'.
    // kept(smi-no-p)
    {"no paragraph element", "<SYNC Start=1000>Hello\r\n<SYNC Start=2000><P>Bye", "1000- Bye",
     "1000- <P>Bye"},  // the next entry's SYNC counts as the paragraph
    {"text before the paragraph element", "<SYNC Start=1000>a<P>Hello", "1000- Hello"},
    {"a third element", kHello.substr(0, 31) + "<B>Hello", "1000- Hello", "1000- <B>Hello"},
    {"the paragraph element in the next line", "<SYNC Start=1000>\r\n<P Class=ENCC>Hello", "1000- Hello"},
    // One line-end byte is stepped over in 8-bit text, none in 16-bit text
    // kept(smi-leading-break)
    {"the text in the next line", "<SYNC Start=1000>\r\n<P Class=ENCC>\r\nHello", "1000- \nHello", "1000- \nHello",
     "1000- "},
    {"the text in the next line, LF", "<SYNC Start=1000>\n<P Class=ENCC>\nHello", "1000- Hello", "1000- \nHello",
     "1000- \nHello"},
    {"the text in the next line, CR", "<SYNC Start=1000>\r<P Class=ENCC>\rHello", "1000- Hello", "1000- \rHello",
     "1000- \rHello"},
    {"the scan stays on that line end", "<SYNC Start=1000><P>\r\n<SYNC Start=2000><P>Bye", "1000- \n\0; 2000- Bye"s,
     "1000- ; 2000- Bye"},
    // The two differ where the second '>' ends the data
    // kept(smi-last-element)
    {"no character behind the second '>'", "<SYNC Start=1000><P>", "", "1000- "},
    {"one character behind it", "<SYNC Start=1000><P>\n", "1000- ", "1000- \n"},
    {"no second '>'", "<SYNC Start=1000><P Class=ENCC\r\n", ""},
    {"no '>' at all", "<SYNC Start=1000\r\n", ""},
    {"the next entry's '>'", "<SYNC Start=1000\r\n<SYNC Start=2000><P>Bye", "1000- Bye"},

    // Line ends.
    {"LF", kHello + "\n<SYNC Start=2000><P>Bye\n", "1000- Hello\n\0; 2000- Bye\n"s,
     "1000- Hello\n<SYNC Start=2000><P>; 2000- Bye\n", "1000- Hello\n<SYNC Start=2000><P>Bye\n"},
    {"CR", kHello + "\r<SYNC Start=2000><P>Bye\r", "1000- Hello\r\0; 2000- Bye\r"s,
     "1000- Hello\r<SYNC Start=2000><P>; 2000- Bye\r", "1000- Hello\r<SYNC Start=2000><P>Bye\r"},
    {"in file order", "<SYNC Start=9><P>9\r\n<SYNC Start=1><P>1\r\n<SYNC Start=5><P>5", "9- 9; 1- 1; 5- 5"},
    // kept(smi-languages)
    {"all classes in one track", "<SYNC Start=1><P Class=EN>yes\r\n<SYNC Start=1><P Class=DE>ja", "1- yes; 1- ja"},
};

TEST(SubtitleParserSMI, Scans) {
    for (const ScanRow& row : kScanRows) expectScan<SubtitleParserSMI>(row);
}

TEST(SubtitleParserSMI, PositionsAreBytes) {
    EXPECT_EQ("1000- @31", tagsOf(Sami(kHello)));
    EXPECT_EQ("1000- @64", tagsOf(Sami(utf16le(kHello))));
    EXPECT_EQ("1000- @64", tagsOf(Sami(utf16be(kHello))));
    EXPECT_EQ("5- @18", tagsOf(Sami("<SYNC Start=5><P>\r\nx")));
    EXPECT_EQ("5- @36", tagsOf(Sami(utf16le("<SYNC Start=5><P>\r\nx"))));
    EXPECT_EQ(kWhole, Sami(kHello).m_pTagBuffer[0].eDataType);
}

// kept(utf8-mark)
TEST(SubtitleParserSMI, AMarkSpoilsTheFirstLineOfUtf8) {
    Sami sami("\xEF\xBB\xBF" + kHello + "\r\n" + kHello);
    EXPECT_EQ(kUtf8, sami.m_eCodeType);
    EXPECT_EQ("1000- Hello", shownOf(sami));
}

TEST(SubtitleParserSMI, TheMarkOverridesTheCodeType) {
    SubtitleParserSMI parser(-1, 0, 0);
    load(parser, kHello);
    parser.m_eCodeType = kUtf16Be;
    parser.m_s64RawBufferPosition = 99;
    parser.m_u32RawBufferDataSize = 0;
    parser.ParserThread();
    EXPECT_EQ(kNative, parser.m_eCodeType);
    EXPECT_EQ(0, parser.m_s64RawBufferPosition);
    EXPECT_EQ(kHello.size(), parser.m_u32RawBufferDataSize);
    EXPECT_EQ("1000- Hello", shownOf(parser));
    // No check for double-byte encodings is made.
    Sami chinese(kHello + "\xA4\x40");
    EXPECT_EQ(kNative, chinese.m_eCodeType);
}

TEST(SubtitleParserSMI, OddLengthInUtf16) {
    Sami none(utf16le("<SYNC Start=1000><P") + ">");
    EXPECT_EQ(0u, none.GetTagNum());
    Sami one(utf16le("<SYNC Start=1000><P>x") + "\n");
    EXPECT_EQ("1000- x\n", shownOf(one));
}

// ------------------------------------------------------------------------------------------------------ text

struct TextRow {
    std::string line;      // as the file goes on behind the second '>'
    std::string expected;  // 8-bit text
    std::string littleEndian = expected;
    std::string bigEndian = littleEndian;
};

const TextRow kTextRows[] = {
    {"Hello", "Hello"},
    // Line ends: CR LF comes out as LF, and so does LF LF.
    {"a\r\nb", "a\nb", "a\nb", "a"},  // kept(smi-utf16be-first-line)
    {"a\r\n\r\nb", "a\n\nb", "a\n\nb", "a"},
    {"a\nb", "a\nb"},
    {"a\n\nb", "a\nb", "a\nb", "a\n\nb"},
    {"a\rb\r", "a\rb\r"},
    {"a\r\n", "a\n", "a\n", "a"},
    {"a\n\rb", "a\n\rb"},
    {"", ""},
    {"\n", ""},  // 8-bit text begins behind it; see below for the others
    // The next SYNC element ends the text behind CR LF or LF LF, in capitals alone.
    {"a\r\n<SYNC b", "a", "a", "a"},
    {"a\n\n<SYNC b", "a", "a", "a\n\n<SYNC b"},
    {"a\n<SYNC b", "a\n<SYNC b"},                 // kept(smi-trailing-break)
    {"a\r\n<sync>b", "a\nb", "a\n<sync>b", "a"},  // kept(smi-trailing-break)
    {"a\r\n<SYN>b", "a\nb", "a\n<SYN>b", "a"},
    {"a\r\n <SYNC>b", "a\n b", "a\n <SYNC>b", "a"},
    {"a<SYNC>b", "ab", "a<SYNC>b"},
    // Blocks.
    {"a{b}{c}d", "ad", "a{b}{c}d"},
    {"a{b}\r\nc", "a\0"s, "a{b}\nc", "a{b}"},
    {"a{b}\nc", "a\0"s, "a{b}\nc"},
    {"a{b}<c>d", "ad", "a{b}<c>d"},
    {"a{b}<c>\r\nd", "a\nd", "a{b}<c>\nd", "a{b}<c>"},
    {"a{b", "a", "a{b"},
    {"a{b}<c", "a", "a{b}<c"},
    {"a{b}", "a", "a{b}"},
    // <br>
    {"Line one<br>\r\nLine two", "Line one\r\nLine two", "Line one<br>\nLine two", "Line one<br>"},
    {"a<br>\nb", "a\nb", "a<br>\nb"},
    {"a<br>\n\nb", "a\n\nb", "a<br>\nb", "a<br>\n\nb"},
    {"a<br>b", "a<br>b"},  // kept(smi-br-inline)
    {"a<br>", "a<br>"},
    {"a<br><br>\r\nb", "a<br>\r\nb", "a<br><br>\nb", "a<br><br>"},
    {"a<BR>b", "ab", "a<BR>b"},
    {"a<br/>b", "ab", "a<br/>b"},
    {"a<BR>\r\nb", "a\0<BR"s, "a<BR>\nb", "a<BR>"},          // kept(smi-br-at-line-end)
    {"a<br>\r\n<SYNC b", "a\r\n<SYNC b", "a<br>", "a<br>"},  // its LF is not part of a pair any more
    // Other elements.
    {"a<b>c</b>d", "acd", "a<b>c</b>d"},  // kept(smi-utf16-markup)
    {"a<b><i>c</i></b>d", "acd", "a<b><i>c</i></b>d"},
    {"a<b><br><i>c", "ac", "a<b><br><i>c"},  // inside a run <br> is like any other
    {"a<3>b", "ab", "a<3>b"},
    {"a<b>{c}d", "a{c}d", "a<b>{c}d"},           // what stands behind an element is text
    {"a<b>&nbsp;d", "a&nbsp;d", "a<b>&nbsp;d"},  // kept(smi-behind-element)
    {"a < b", "a < b"},
    {"a < b\r\nc > d", "a < b\nc > d", "a < b\nc > d", "a < b"},
    {"a < b\n\rc > d", "a < b\n\rc > d"},
    {"a < b\nc > d", "a  d", "a < b\nc > d"},
    {"a<b><c\r\n>d", "a<b><c\n>d", "a<b><c\n>d", "a<b><c"},  // nothing of a run goes
    {"a>b", "a>b"},
    {"a</b>", "a\0"s, "a</b>"},  // the 0 behind the data is the byte behind the element
    // An element at a line's end: a 0, then its name.
    {"<font color=red>Hi</font>\r\nx", "Hi\0</font"s, "<font color=red>Hi</font>\nx", "<font color=red>Hi</font>"},
    {"Hi</i>\nx", "Hi\0</i"s, "Hi</i>\nx"},  // kept(smi-element-at-line-end)
    {"Hi</i>\rx", "Hi\0</i"s, "Hi</i>\rx"},
    {"Hi</i></b>\r\nx", "Hi\0</i></b"s, "Hi</i></b>\nx", "Hi</i></b>"},
    {"Hi<b>\r\n</b>x", "Hi\0<b"s, "Hi<b>\n</b>x", "Hi<b>"},
    // &nbsp;
    {"a&nbsp;b", "a b", "a&nbsp;b"},
    {"a&nbspxb", "a b", "a&nbspxb"},  // kept(smi-nbsp)
    {"a&nbsp\r\nb", "a \nb", "a&nbsp\nb", "a&nbsp"},
    {"&nbsp;&nbsp;", "  ", "&nbsp;&nbsp;"},
    {"a&nbsp", "a ", "a&nbsp"},
    {"a&NBSP;&nbs;&", "a&NBSP;&nbs;&"},
    {"&amp;&lt;&#33;", "&amp;&lt;&#33;"},  // kept(smi-entity)
    {"a|b\\Nc", "a|b\\Nc"},
};

TEST(SubtitleParserSMI, ExtractsText) {
    const std::string before = "<SYNC Start=1><P>";
    for (const TextRow& row : kTextRows) {
        SCOPED_TRACE(show(row.line));
        if (row.line.empty()) {
            EXPECT_EQ(0u, Sami(before).GetTagNum());
            continue;
        }
        expectNarrowText<SubtitleParserSMI>(before + row.line, row.expected);
        if (row.line[0] == '\n') continue;
        expectWideText<SubtitleParserSMI>(before + row.line, row.littleEndian, row.bigEndian);
    }
}

TEST(SubtitleParserSMI, ZerosInTheText) {
    const std::string before = "<SYNC Start=1><P>";
    const struct {
        std::string line;
        std::string expected;
        std::string wide;
    } kRows[] = {
        {{"a\0b", 3}, "a", "a"},
        {{"<b>\0a", 5}, "\0a"s, "<b>"},  // copied like any other byte
        {{"x<b\0>a", 6}, "x<b", "x<b"},  // no element reaches over a 0
        {{"x<b><c\0>a", 9}, "x<b><c", "x<b><c"},
        {{"x{b\0}a", 6}, "xa", "x{b"},  // a block does
        {{"a&nbsp\0b", 8}, "a b", "a&nbsp"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(show(row.line));
        expectNarrowText<SubtitleParserSMI>(before + row.line, row.expected);
        expectWideText<SubtitleParserSMI>(before + row.line, row.wide, row.wide);
    }
}

TEST(SubtitleParserSMI, StopsBeforeTheBufferIsFull) { expectHelloToFit<SubtitleParserSMI>(kHello); }

// The two bytes of an element at a line's end are put out together, also across the limit.
TEST(SubtitleParserSMI, AnElementAtTheLimit) {
    Sami sami("<SYNC Start=1><P>Hi</i>\r\n");
    EXPECT_EQ("Hi", textOf(sami, 0, 4));
    EXPECT_EQ("Hi\0<"s, textOf(sami, 0, 5));
    EXPECT_EQ("Hi\0<"s, textOf(sami, 0, 6));
    EXPECT_EQ("Hi\0</"s, textOf(sami, 0, 7));
}

TEST(SubtitleParserSMI, CutsLongTextsToTheWorkBuffer) {
    const std::string before = "<SYNC Start=1><P>";
    expectCutToTheWorkBuffer<SubtitleParserSMI>(before);

    const struct {
        size_t lead;
        const char* tail;
        std::string expected;  // behind the lead
    } kRows[] = {
        {8186, "&nbsp;", " "},                                           // its blank is the work buffer's last byte
        {8187, "&nbsp;", ""},                                            // the blank would lie outside and is dropped
        {8188, "&nbsp;", "&nbs"}, {8189, "<b>c", std::string(1, '\0')},  // the byte behind it is outside and reads 0
        {8190, "<b>c", "<b"},     {8190, "{b}c", ""},
        {8188, "<br>\n", "<br>"}, {8187, "<br>\n", "\n"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.tail);
        Sami sami(before + std::string(row.lead, 'x') + row.tail);
        EXPECT_EQ(std::string(row.lead, 'x') + row.expected, textOf(sami, 0, 20000));
    }
}

TEST(SubtitleParserSMI, CopiesUpToTheNextEntry) {
    ByHand parser("0123456789", {2, 5, 5, 0, 10, 11, 5000, -1, 8});
    // A difference that is negative counts as a large one.
    const char* const kExpected[] = {"234", "", "56789", "0123456789", "", "", "", "", "89"};
    for (U32 i = 0; i < 9; ++i) EXPECT_EQ(kExpected[i], textOf(parser, i)) << i;
}

TEST(SubtitleParserSMI, NoMoreUnitsAreReadThanTheDataHas) { expectTextWithinTheData<SubtitleParserSMI>(); }

TEST(SubtitleParserSMI, MarkupBehindTheRawDataSizeIsText) {
    ByHand parser("a{b}c<d>e&nbsp;f<br>\nz\r\ny", {0});
    EXPECT_EQ("ace f\nz\ny", textOf(parser, 0));
    parser.m_u32RawBufferDataSize = 0;
    EXPECT_EQ("a{b}c<d>e&nbsp;f<br>\nz\ny", textOf(parser, 0));
}

TEST(SubtitleParserSMI, TextNeedsAnEntryABufferAndATextEncoding) {
    Sami sami(kHello);
    expectTextInCodeTypes(sami, {1, 2, 3, 4});
    sami.m_eCodeType = kNative;
    sami.m_u32SubtitleBufferDataSize = 0;
    sami.m_s64SubtitleBufferPosition = 5;
    EXPECT_EQ(0u, sami.GetData(0, nullptr, 10, 0));
    EXPECT_EQ(kHello.size(), sami.m_u32SubtitleBufferDataSize);  // set all the same
    EXPECT_EQ("Hello", textOf(sami, 0));
    EXPECT_EQ(0, sami.m_s64SubtitleBufferPosition);
    expectNoText(sami);
}

// ------------------------------------------------------------------------------------------------- bad input

const std::string kSample =
    "<SAMI>\r\n<BODY>\r\n<SYNC Start=1000><P Class=ENCC>A<b><i>b</i></b> c{d}e<br>\r\nf&nbsp;g < h\r\n"
    "<SYNC Start=2000><P>\r\nx</i>\r\n<sync start=3>\n<p>{y}<z>&nbsp;\r\n</BODY>\r\n";

TEST(SubtitleParserSMI, CutAnywhere) { expectSafeAtEveryCut<SubtitleParserSMI>(kSample); }

TEST(SubtitleParserSMI, WithZerosAnywhere) { expectSafeWithZeros<SubtitleParserSMI>(kSample); }

TEST(SubtitleParserSMI, LongRuns) {
    expectLinearTime<SubtitleParserSMI>(kHello, {"x",
                                                 "\r\n",
                                                 " ",
                                                 "\n \r",
                                                 "<",
                                                 ">",
                                                 "<>",
                                                 "<x><",
                                                 "{",
                                                 "{}",
                                                 "{}<",
                                                 "&nbsp",
                                                 "<br>",
                                                 "<br>\n",
                                                 "1",
                                                 "<SYNC",
                                                 "\r\n<SYNC",
                                                 "\n<SYNC Start=",
                                                 "\n<SYNC Start=1",
                                                 "\n<SYNC Start=1>",
                                                 "\n<SYNC Start=1><P><<<<{a}",
                                                 "\n\n<SYNC Start=1><P>" + std::string(8000, '<')});
}

}  // namespace
