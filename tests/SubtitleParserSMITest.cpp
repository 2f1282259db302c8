// SAMI: where entries begin, and what is shown of them.
#include "subtitle/SubtitleParserSMI.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/FormatChecks.h"
#include "tests/ParserTools.h"
#include "tests/TextFormats.h"
#include "tests/support/Interpose.h"

namespace {

using namespace android;
using namespace test;

using Sami = Scanned<SubtitleParserSMI>;

const std::string kHello = "<SYNC Start=1000><P Class=ENCC>Hello";
const Entry kHelloEntry{1000, text("Hello")};

struct Smi {
    using Parser = SubtitleParserSMI;
    using Path = U8;
    static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_SMI;
    static constexpr char kTag[] = "SubtitleParserSMI";
    // kept: the other parsers' wording
    static constexpr char kEnter[] = "Zorb_MediaSubtitleParserSSA::BeginParse -> Enter\n";
    static constexpr char kLoading[] =
        "Zorb_MediaSubtitleParserSRT::ParserThread - Enter, data size = %ld, rawbuf: %x\n";
    static constexpr unsigned kPeriodMs = 100;
    static constexpr bool kRestarts = false;
    static std::vector<std::string> leaving() { return {}; }
    static std::vector<std::string> threadless() { return {}; }
    static const std::string& file() { return kHello; }
    static const Entry& entry() { return kHelloEntry; }
    static Text read(Parser& parser, U32 index) { return textOf(parser, index); }
    static Entries inUtf8(Entries entries) { return entries; }
};

Entries entriesOf(SubtitleParserSMI& parser) { return entriesIn<Smi>(parser); }

using ByHand = PutByHand<SubtitleParserSMI>;

// ------------------------------------------------------------------------------------------------------ scan

const ScanRow kScanRows[] = {
    {"one entry", kHello, {kHelloEntry}},
    {"a file",
     "<SAMI>\r\n<HEAD>\r\n<TITLE>x</TITLE>\r\n</HEAD>\r\n<BODY>\r\n" + kHello +
         "\r\n<SYNC Start=2000><P Class=ENCC>&nbsp;\r\n</BODY>\r\n</SAMI>\r\n",
     {kHelloEntry, {2000, text({" \n\0</BODY", 9})}},
     Entries{kHelloEntry, {2000, text("&nbsp;\n</BODY>\n</SAMI>\n")}},
     Entries{kHelloEntry, {2000, text("&nbsp;")}}},
    {"a blank screen", "<SYNC Start=2000><P Class=ENCC>&nbsp;", {{2000, text(" ")}}, Entries{{2000, text("&nbsp;")}}},

    // The SYNC element.
    {"lower case", "<sync start=1000><p class=encc>Hello", {kHelloEntry}},
    {"two blanks", "<SYNC  Start=1000><P Class=ENCC>Hello", {}},
    {"a tab for the blank", "<SYNC\tStart=1000><P Class=ENCC>Hello", {}},
    {"a blank before the equals sign", "<SYNC Start =1000><P Class=ENCC>Hello", {}},
    {"a blank behind the equals sign", "<SYNC Start= 1000><P Class=ENCC>Hello", {kHelloEntry}},
    {"quotes", "<SYNC Start=\"1000\"><P Class=ENCC>Hello", {kHelloEntry}},
    {"a unit", "<SYNC Start=1000ms End=2000><P Class=ENCC>Hello", {kHelloEntry}},
    {"a negative start", "<SYNC Start=-1000><P Class=ENCC>Hello", {kHelloEntry}},
    {"behind other text", "x<SYNC Start=1000><P Class=ENCC>Hello", {}},
    {"two in a line",
     kHello + "<SYNC Start=2000><P Class=ENCC>Bye",
     {{1000, text("HelloBye")}},
     Entries{{1000, text("Hello<SYNC Start=2000><P Class=ENCC>Bye")}}},
    {"blanks before it", " \t\v\f  " + kHello, {kHelloEntry}, std::nullopt, Entries{}},  // as stored, they are none
    {"blank lines before it", "\r\n\r\n" + kHello, {kHelloEntry}, std::nullopt, Entries{kHelloEntry}},

    // The Start value.
    {"0", "<SYNC Start=0><P>x", {{0, text("x")}}},
    {"ten digits", "<SYNC Start=4294967295><P>x", {{4294967295u, text("x")}}},
    {"eleven digits",
     "<SYNC Start=12345678901><P>x",
     {{3755744309u, text("x")}},
     Entries{{1234567890, text("x")}}},  // kept: ten units are read
    {"the first digit is elsewhere", "<SYNC Start=><P Class=1>Hello<b>2", {{1, text("2")}}},
    {"the first digit is in the next line", "<SYNC Start=>\r\n<P 77><b>x\r\n" + kHello, {{77, text("x")}, kHelloEntry}},
    {"no digit at all", "<SYNC Start=><P Class=ENCC>Hello", {}},

    // The position: behind the second '>'.
    {"no paragraph element",
     "<SYNC Start=1000>Hello\r\n<SYNC Start=2000><P>Bye",
     {{1000, text("Bye")}},
     Entries{{1000, text("<P>Bye")}}},  // the next entry's SYNC counts as the paragraph
    {"text before the paragraph element", "<SYNC Start=1000>a<P>Hello", {kHelloEntry}},
    {"a third element", kHello.substr(0, 31) + "<B>Hello", {kHelloEntry}, Entries{{1000, text("<B>Hello")}}},
    {"the paragraph element in the next line", "<SYNC Start=1000>\r\n<P Class=ENCC>Hello", {kHelloEntry}},
    // kept: one line-end byte is stepped over in 8-bit text, none in 16-bit text
    {"the text in the next line",
     "<SYNC Start=1000>\r\n<P Class=ENCC>\r\nHello",
     {{1000, text("\nHello")}},
     Entries{{1000, text("\nHello")}},
     Entries{{1000, text("")}}},
    {"the text in the next line, LF",
     "<SYNC Start=1000>\n<P Class=ENCC>\nHello",
     {kHelloEntry},
     Entries{{1000, text("\nHello")}},
     Entries{{1000, text("\nHello")}}},
    {"the text in the next line, CR",
     "<SYNC Start=1000>\r<P Class=ENCC>\rHello",
     {kHelloEntry},
     Entries{{1000, text("\rHello")}},
     Entries{{1000, text("\rHello")}}},
    {"the scan stays on that line end",
     "<SYNC Start=1000><P>\r\n<SYNC Start=2000><P>Bye",
     {{1000, text({"\n\0", 2})}, {2000, text("Bye")}},
     Entries{{1000, text("")}, {2000, text("Bye")}}},
    // kept: the two differ where the second '>' ends the data
    {"no character behind the second '>'", "<SYNC Start=1000><P>", {}, Entries{{1000, text("")}}},
    {"one character behind it", "<SYNC Start=1000><P>\n", {{1000, text("")}}, Entries{{1000, text("\n")}}},
    {"no second '>'", "<SYNC Start=1000><P Class=ENCC\r\n", {}},
    {"no '>' at all", "<SYNC Start=1000\r\n", {}},
    {"the next entry's '>'", "<SYNC Start=1000\r\n<SYNC Start=2000><P>Bye", {{1000, text("Bye")}}},

    // Line ends.
    {"LF",
     kHello + "\n<SYNC Start=2000><P>Bye\n",
     {{1000, text({"Hello\n\0", 7})}, {2000, text("Bye\n")}},
     Entries{{1000, text("Hello\n<SYNC Start=2000><P>")}, {2000, text("Bye\n")}},
     Entries{{1000, text("Hello\n<SYNC Start=2000><P>Bye\n")}}},
    {"CR",
     kHello + "\r<SYNC Start=2000><P>Bye\r",
     {{1000, text({"Hello\r\0", 7})}, {2000, text("Bye\r")}},
     Entries{{1000, text("Hello\r<SYNC Start=2000><P>")}, {2000, text("Bye\r")}},
     Entries{{1000, text("Hello\r<SYNC Start=2000><P>Bye\r")}}},
    {"in file order",
     "<SYNC Start=9><P>9\r\n<SYNC Start=1><P>1\r\n<SYNC Start=5><P>5",
     {{9, text("9")}, {1, text("1")}, {5, text("5")}}},
    {"all classes in one track",
     "<SYNC Start=1><P Class=EN>yes\r\n<SYNC Start=1><P Class=DE>ja",
     {{1, text("yes")}, {1, text("ja")}}},
};

TEST(SubtitleParserSMI, Scans) {
    for (const ScanRow& row : kScanRows) expectScan<Smi>(row);
}

TEST(SubtitleParserSMI, PositionsAreBytes) {
    EXPECT_EQ((std::vector<Tag>{{1000, 0xFFFFFFFF, 31}}), tagsOf(Sami(kHello)));
    EXPECT_EQ((std::vector<Tag>{{1000, 0xFFFFFFFF, 64}}), tagsOf(Sami(utf16le(kHello))));
    EXPECT_EQ((std::vector<Tag>{{1000, 0xFFFFFFFF, 64}}), tagsOf(Sami(utf16be(kHello))));
    EXPECT_EQ((std::vector<Tag>{{5, 0xFFFFFFFF, 18}}), tagsOf(Sami("<SYNC Start=5><P>\r\nx")));
    EXPECT_EQ((std::vector<Tag>{{5, 0xFFFFFFFF, 36}}), tagsOf(Sami(utf16le("<SYNC Start=5><P>\r\nx"))));
    EXPECT_EQ(kWhole, Sami(kHello).m_pTagBuffer[0].eDataType);
}

TEST(SubtitleParserSMI, AMarkSpoilsTheFirstLineOfUtf8) {
    Sami sami("\xEF\xBB\xBF" + kHello + "\r\n" + kHello);
    EXPECT_EQ(kUtf8, sami.m_eCodeType);
    EXPECT_EQ(Entries{kHelloEntry}, entriesOf(sami));
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
    EXPECT_EQ(Entries{kHelloEntry}, entriesOf(parser));
    // No check for double-byte encodings is made.
    Sami chinese(kHello + "\xA4\x40");
    EXPECT_EQ(kNative, chinese.m_eCodeType);
}

TEST(SubtitleParserSMI, OddLengthInUtf16) {
    Sami none(utf16le("<SYNC Start=1000><P") + ">");
    EXPECT_EQ(0u, none.GetTagNum());
    Sami one(utf16le("<SYNC Start=1000><P>x") + "\n");
    EXPECT_EQ((Entries{{1000, text("x\n")}}), entriesOf(one));
}

// ------------------------------------------------------------------------------------------------------ text

struct TextRow {
    std::string line;  // as the file goes on behind the second '>'
    Text expected;     // 8-bit text
    Text littleEndian = expected;
    Text bigEndian = littleEndian;
};

const TextRow kTextRows[] = {
    {"Hello", text("Hello")},
    // Line ends: CR LF comes out as LF, and so does LF LF.
    {"a\r\nb", text("a\nb"), text("a\nb"), text("a")},
    {"a\r\n\r\nb", text("a\n\nb"), text("a\n\nb"), text("a")},
    {"a\nb", text("a\nb")},
    {"a\n\nb", text("a\nb"), text("a\nb"), text("a\n\nb")},
    {"a\rb\r", text("a\rb\r")},
    {"a\r\n", text("a\n"), text("a\n"), text("a")},
    {"a\n\rb", text("a\n\rb")},
    {"", text("")},
    {"\n", text("")},  // 8-bit text begins behind it; see below for the others
    // The next SYNC element ends the text behind CR LF or LF LF, in capitals alone.
    {"a\r\n<SYNC b", text("a"), text("a"), text("a")},
    {"a\n\n<SYNC b", text("a"), text("a"), text("a\n\n<SYNC b")},
    {"a\n<SYNC b", text("a\n<SYNC b")},
    {"a\r\n<sync>b", text("a\nb"), text("a\n<sync>b"), text("a")},
    {"a\r\n<SYN>b", text("a\nb"), text("a\n<SYN>b"), text("a")},
    {"a\r\n <SYNC>b", text("a\n b"), text("a\n <SYNC>b"), text("a")},
    {"a<SYNC>b", text("ab"), text("a<SYNC>b")},
    // Blocks.
    {"a{b}{c}d", text("ad"), text("a{b}{c}d")},
    {"a{b}\r\nc", text({"a\0", 2}), text("a{b}\nc"), text("a{b}")},
    {"a{b}\nc", text({"a\0", 2}), text("a{b}\nc")},
    {"a{b}<c>d", text("ad"), text("a{b}<c>d")},
    {"a{b}<c>\r\nd", text("a\nd"), text("a{b}<c>\nd"), text("a{b}<c>")},
    {"a{b", text("a"), text("a{b")},
    {"a{b}<c", text("a"), text("a{b}<c")},
    {"a{b}", text("a"), text("a{b}")},
    // <br>
    {"Line one<br>\r\nLine two", text("Line one\r\nLine two"), text("Line one<br>\nLine two"), text("Line one<br>")},
    {"a<br>\nb", text("a\nb"), text("a<br>\nb")},
    {"a<br>\n\nb", text("a\n\nb"), text("a<br>\nb"), text("a<br>\n\nb")},
    {"a<br>b", text("a<br>b")},
    {"a<br>", text("a<br>")},
    {"a<br><br>\r\nb", text("a<br>\r\nb"), text("a<br><br>\nb"), text("a<br><br>")},
    {"a<BR>b", text("ab"), text("a<BR>b")},
    {"a<br/>b", text("ab"), text("a<br/>b")},
    {"a<BR>\r\nb", text({"a\0<BR", 5}), text("a<BR>\nb"), text("a<BR>")},
    {"a<br>\r\n<SYNC b", text("a\r\n<SYNC b"), text("a<br>"), text("a<br>")},  // its LF is not part of a pair any more
    // Other elements.
    {"a<b>c</b>d", text("acd"), text("a<b>c</b>d")},
    {"a<b><i>c</i></b>d", text("acd"), text("a<b><i>c</i></b>d")},
    {"a<b><br><i>c", text("ac"), text("a<b><br><i>c")},  // inside a run <br> is like any other
    {"a<3>b", text("ab"), text("a<3>b")},
    {"a<b>{c}d", text("a{c}d"), text("a<b>{c}d")},  // what stands behind an element is text
    {"a<b>&nbsp;d", text("a&nbsp;d"), text("a<b>&nbsp;d")},
    {"a < b", text("a < b")},
    {"a < b\r\nc > d", text("a < b\nc > d"), text("a < b\nc > d"), text("a < b")},
    {"a < b\n\rc > d", text("a < b\n\rc > d")},
    {"a < b\nc > d", text("a  d"), text("a < b\nc > d")},
    {"a<b><c\r\n>d", text("a<b><c\n>d"), text("a<b><c\n>d"), text("a<b><c")},  // nothing of a run goes
    {"a>b", text("a>b")},
    {"a</b>", text({"a\0", 2}), text("a</b>")},  // the 0 behind the data is the byte behind the element
    // An element at a line's end: a 0, then its name.
    {"<font color=red>Hi</font>\r\nx", text({"Hi\0</font", 9}), text("<font color=red>Hi</font>\nx"),
     text("<font color=red>Hi</font>")},
    {"Hi</i>\nx", text({"Hi\0</i", 6}), text("Hi</i>\nx")},
    {"Hi</i>\rx", text({"Hi\0</i", 6}), text("Hi</i>\rx")},
    {"Hi</i></b>\r\nx", text({"Hi\0</i></b", 10}), text("Hi</i></b>\nx"), text("Hi</i></b>")},
    {"Hi<b>\r\n</b>x", text({"Hi\0<b", 5}), text("Hi<b>\n</b>x"), text("Hi<b>")},
    // &nbsp;
    {"a&nbsp;b", text("a b"), text("a&nbsp;b")},
    {"a&nbspxb", text("a b"), text("a&nbspxb")},
    {"a&nbsp\r\nb", text("a \nb"), text("a&nbsp\nb"), text("a&nbsp")},
    {"&nbsp;&nbsp;", text("  "), text("&nbsp;&nbsp;")},
    {"a&nbsp", text("a "), text("a&nbsp")},
    {"a&NBSP;&nbs;&", text("a&NBSP;&nbs;&")},
    {"&amp;&lt;&#33;", text("&amp;&lt;&#33;")},
    {"a|b\\Nc", text("a|b\\Nc")},
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
        Text expected;
        Text wide;
    } kRows[] = {
        {{"a\0b", 3}, text("a"), text("a")},
        {{"<b>\0a", 5}, text({"\0a", 2}), text("<b>")},  // copied like any other byte
        {{"x<b\0>a", 6}, text("x<b"), text("x<b")},      // no element reaches over a 0
        {{"x<b><c\0>a", 9}, text("x<b><c"), text("x<b><c")},
        {{"x{b\0}a", 6}, text("xa"), text("x{b")},  // a block does
        {{"a&nbsp\0b", 8}, text("a b"), text("a&nbsp")},
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
    EXPECT_EQ(text("Hi"), textOf(sami, 0, 4));
    EXPECT_EQ(text({"Hi\0<", 4}), textOf(sami, 0, 5));
    EXPECT_EQ(text({"Hi\0<", 4}), textOf(sami, 0, 6));
    EXPECT_EQ(text({"Hi\0</", 5}), textOf(sami, 0, 7));
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
        EXPECT_EQ(text(std::string(row.lead, 'x') + row.expected), textOf(sami, 0, 20000));
    }
}

TEST(SubtitleParserSMI, CopiesUpToTheNextEntry) {
    ByHand parser("0123456789", {2, 5, 5, 0, 10, 11, 5000, -1, 8});
    // A difference that is negative counts as a large one.
    const char* const kExpected[] = {"234", "", "56789", "0123456789", "", "", "", "", "89"};
    for (U32 i = 0; i < 9; ++i) EXPECT_EQ(text(kExpected[i]), textOf(parser, i)) << i;
}

TEST(SubtitleParserSMI, NoMoreUnitsAreReadThanTheDataHas) { expectTextWithinTheData<SubtitleParserSMI>(); }

TEST(SubtitleParserSMI, MarkupBehindTheRawDataSizeIsText) {
    ByHand parser("a{b}c<d>e&nbsp;f<br>\nz\r\ny", {0});
    EXPECT_EQ(text("ace f\nz\ny"), textOf(parser, 0));
    parser.m_u32RawBufferDataSize = 0;
    EXPECT_EQ(text("a{b}c<d>e&nbsp;f<br>\nz\ny"), textOf(parser, 0));
}

TEST(SubtitleParserSMI, TextNeedsAnEntryABufferAndATextEncoding) {
    Sami sami(kHello);
    expectTextInCodeTypes(sami, {1, 2, 3, 4});
    sami.m_eCodeType = kNative;
    sami.m_u32SubtitleBufferDataSize = 0;
    sami.m_s64SubtitleBufferPosition = 5;
    EXPECT_EQ(0u, sami.GetData(0, nullptr, 10, 0));
    EXPECT_EQ(kHello.size(), sami.m_u32SubtitleBufferDataSize);  // set all the same
    EXPECT_EQ(text("Hello"), textOf(sami, 0));
    EXPECT_EQ(0, sami.m_s64SubtitleBufferPosition);
    expectNoText(sami);
}

// ------------------------------------------------------------------------------------------------ life cycle

TEST(SubtitleParserSMI, BeginParseSpeaksInThisOrder) {
    const auto rig = [](auto& parser) {
        parser.missing = 1;
        parser.m_eFlag = E_MEDIA_SUBTITLE_PARSER_FLAG_STOP;
    };
    expectSpeech<Smi>(kHello, rig, TRUE,
                      {
                          "Zorb_MediaSubtitleParserSRT Warning, Read data < Requied Data\n",
                          "Zorb_MediaSubtitleParserSMI::ParserThread -> Finished : Tag num = 1\n",
                          "SubtitleParserSMI::BeginParse2222222 -> 00000008\n",
                      });
}

TEST(SubtitleParserSMI, ATagThatCannotBeStoredEndsTheScan) {
    expectScanToEndAtTheSecondTag<Smi>(kHello + "\r\n" + kHello + "\r\n" + kHello,
                                       {
                                           "Zorb_MediaSubtitleParserSMI::ParserThread -> Finished : Tag num = 1\n",
                                           "SubtitleParserSMI::BeginParse2222222 -> 00000000\n",
                                       });
}

TEST(SubtitleParserSMI, ATableThatCannotGrowEndsTheScan) {
    std::string content;
    for (int i = 0; i < 8200; ++i) content += kHello + "\r\n";
    for (const std::string& file : {content, utf16be(content)}) {
        expectScanToEndWithoutMemory<Smi>(file,
                                          "Zorb_MediaSubtitleParserSMI::ParserThread -> Finished : Tag num = 0\n");
    }
}

TEST(SubtitleParserSMI, BeginParseWithoutATagTable) {
    const TempFile file(kHello);
    const LogCapture log;
    Rigged<SubtitleParserSMI> parser(file.fd(), 0, 0);
    parser.loseTable = true;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(pthread_t{0}, parser.m_threadParser);
    EXPECT_EQ((std::vector<std::string>{Smi::kEnter, loadingMessage(Smi::kLoading, parser)}), messages(log, Smi::kTag));
}

INSTANTIATE_TYPED_TEST_SUITE_P(SubtitleParserSMI, TextFormat, Smi);

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
