// SubRip: what the scan makes of a file in each encoding, and parts of files.
#include "subtitle/SubtitleParserSRT.h"

#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "subtitle/SubtitleFileProcess.h"
#include "tests/support/Interpose.h"
#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"

namespace {

using namespace test;

using Srt = Scanned<SubtitleParserSRT>;

// ------------------------------------------------------------------------------------------------ 8-bit text

const char kT[] = "00:00:01,000 --> 00:00:02,000";   // 29 characters
const char kT2[] = "00:00:03,000 --> 00:00:04,000";  // 29 characters

TEST(SrtScan, FindsTimesAndTextPositions) {
    const Srt crlf("1\r\n"s + kT + "\r\nHello\r\nWorld\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n");
    EXPECT_EQ("1000-2000 @34; 3000-4000 @84", tagsOf(crlf));
    const Srt lf("1\n"s + kT + "\nHello\nWorld\n\n2\n" + kT2 + "\nBye\n");
    EXPECT_EQ("1000-2000 @32; 3000-4000 @77", tagsOf(lf));
    const Srt cr("1\r"s + kT + "\rHello\rWorld\r\r2\r" + kT2 + "\rBye\r");
    EXPECT_EQ("1000-2000 @32; 3000-4000 @77", tagsOf(cr));
    for (const Srt* parser : {&crlf, &lf, &cr}) {
        EXPECT_EQ(kNative, parser->m_eCodeType);
        EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_SRT, parser->m_eSubtitleType);
        EXPECT_EQ(TRUE, parser->bParseFinish);
        EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_FLAG_NULL, parser->m_eFlag);
    }
}

TEST(SrtScan, TextsOfASimpleFile) {
    Srt parser("1\r\n"s + kT + "\r\nHello\r\n<i>World</i>\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n");
    EXPECT_EQ("!open Hello\nWorld", textOf(parser, 0));  // a tag before the blank line: the early end
    EXPECT_EQ("Bye", textOf(parser, 1));
}

struct TimingLine {
    std::string_view line;
    bool timing;
    U32 start, end;
};

std::string tagAt(const TimingLine& row, size_t position) {
    return std::to_string(row.start) + "-" + std::to_string(row.end) + " @" + std::to_string(position);
}

constexpr U32 hours(U64 h) { return static_cast<U32>(h * 3600000); }

const TimingLine kTimingLines[] = {
    {"00:00:01,500 --> 00:00:03,250", true, 1500, 3250},
    {"00:00:01.500 --> 00:00:03.250", true, 1500, 3250},
    // kept(srt-fraction-digits)
    {"0:0:1,5 --> 0:0:2,75", true, 1005, 2075},  // the fraction is milliseconds whatever its digits
    {"01:02:03,004 --> 05:06:07,008", true, 3723004, 18367008},
    {"99:59:59,999 --> 100:00:00,000", true, 359999999, 360000000},
    {"0:99:99,5000 --> 0:0:0,99999", true, 6044000, 99999},  // kept(scan-no-range): no range is checked
    {"0:0:0,0 --> 0:0:0,0", true, 0, 0},
    {"0:0:9,0 --> 0:0:1,0", true, 9000, 1000},
    {"2000:0:0,0 --> 4294967295:0:0,1", true, hours(2000), hours(4294967295) + 1},  // 32 bits, wrapping
    {"4294967296:0:1,0 --> 0:0:18446744073709,0", true, 1000, 1271309768U},

    // Literals take any one character.
    {"00-00-01-500 xyz 00-00-03-250", true, 1500, 3250},  // kept(scan-separators)
    {"00:00:01,500 ->> 00:00:03,250", true, 1500, 3250},
    {"00:00:01,500-->00:00:03,250", true, 1500, 3250},
    {"00 : 00 : 01 , 500 --> 00 : 00 : 03 , 250", true, 1500, 3250},
    {"  \t00:00:01,500\t-->\t00:00:03,250", true, 1500, 3250},
    {"00:00:01,500 - - > 00:00:03,250", true, 1500, 3250},
    {"00:00:01,500 -> 10:00:03,250", true, 1500, 3250},  // the third of "-->" takes the 1
    {"00:00:01,500 --> 00:00:03,250  X1:40 X2:600", true, 1500, 3250},
    {"00:00:01,500 --> 00:00:03,250abc", true, 1500, 3250},
    {"00:00:01,500 --> 00:00:03,2501", true, 1500, 5501},
    {"000:00:01,500 --> 00:00:03,250", true, 1500, 3250},

    {"00:00:01,500 ---> 00:00:03,250", false, 0, 0},
    {"00:00:01 --> 00:00:03", false, 0, 0},    // kept(srt-no-fraction)
    {"00:01,500 --> 00:03,250", false, 0, 0},  // kept(srt-no-hours)
    {"00:00:01,500", false, 0, 0},
    {"00:00:01,500 --> 00:00:03,", false, 0, 0},
    {"-00:00:01,500 --> 00:00:03,250", false, 0, 0},
    {"x00:00:01,500 --> 00:00:03,250", false, 0, 0},
    {"\xC2\xA0"
     "00:00:01,500 --> 00:00:03,250",
     false, 0, 0},
    {"00::01,500 --> 00:00:03,250", false, 0, 0},
    {"12", false, 0, 0},
    {"Hello", false, 0, 0},
};

TEST(SrtScan, TimingLines) {
    for (const TimingLine& row : kTimingLines) {
        SCOPED_TRACE(show(row.line));
        for (const char* lineEnd : {"\r\n", "\n", "\r", ""}) {
            const std::string end = lineEnd;
            const Srt parser("1" + end + (end.empty() ? "\n" : "") + std::string(row.line) + end);
            std::string expected;
            const size_t size = 1 + std::max<size_t>(end.size(), 1) + row.line.size() + end.size();
            if (row.timing) expected = tagAt(row, size);
            EXPECT_EQ(expected, tagsOf(parser)) << "line end " << show(end);
        }
    }
}

struct ScanRow {
    const char* what;
    std::string in;
    std::string tags;
};

const ScanRow kScans[] = {
    {"a text position skips white space", kT + "\r\n \t\v\f Hi\r\n"s, "1000-2000 @36"},
    {"and blank lines with blanks in them", kT + "\r\n  \r\n\r\n\tHi\r\n"s, "1000-2000 @38"},
    {"a blank line behind the timing line: the position is its own CR", kT + "\r\n\r\nHi\r\n"s, "1000-2000 @29"},
    {"two of them: one line end further", kT + "\r\n\r\n\r\nHi\r\n"s, "1000-2000 @31"},
    {"LF alone: the next line is the text", kT + "\n\n2\n"s + kT2 + "\nHi\n", "1000-2000 @31; 3000-4000 @63"},
    {"CR, LF, LF, LF", kT + "\r\n\n\nHi"s, "1000-2000 @29"},
    {"CR, CR, CR, CR", kT + "\r\r\r\rHi"s, "1000-2000 @29"},
    {"CR, CR, CR: no CR four back", kT + "\r\r\rHi"s, "1000-2000 @32"},
    // kept(srt-text-as-time-line)
    {"the line behind a timing line is its text, whatever it is", kT + "\r\n"s + kT2 + "\r\nHi\r\n", "1000-2000 @31"},
    // kept(srt-text-as-time-line)
    {"the third is tried again", kT + "\nHi\n"s + kT2 + "\nYo", "1000-2000 @30; 3000-4000 @63"},
    {"at the end of the data", kT, "1000-2000 @29"},
    {"at the end of the data, CR LF", kT + "\r\n"s, "1000-2000 @31"},
    {"no timing line at all", "Hello\nWorld\n", ""},
    {"line ends alone", "\r\n\n\r\r\n", ""},
    {"one byte", "1", ""},
    {"NUL bytes", "\0\0\n\0"s + kT + "\nHi\0\n"s + kT2, "3000-4000 @67"},
    {"times out of order stay as they are", kT2 + "\nHi\n"s + kT + "\nYo", "3000-4000 @30; 1000-2000 @63"},

    // Literals cross line ends: nine lines of one digit are a timing line of four and four, with one eaten.
    {"digits down the page", "1\n2\n3\n4\n5\n6\n7\n8\n9\n", "3723004-22028009 @2"},
    {"and behind a CR: the position goes back, the scan does not", "X\r\n1\n2\n3\n4\n5\n6\n7\n8\n9\n",
     "3723004-22028009 @1"},
    {"but on to the very next line", "X\r\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n",
     "3723004-22028009 @1; 7384005-25689010 @7"},

    // The first bytes.
    {"a UTF-8 mark and an index line",
     "\xEF\xBB\xBF"
     "1\n"s +
         kT + "\nHi",
     "1000-2000 @35"},
    // kept(srt-mark-on-time-line)
    {"a UTF-8 mark spoils a timing line behind it", "\xEF\xBB\xBF"s + kT + "\nHi\n" + kT2, "3000-4000 @65"},
    {"half a mark spoils it too", "\xEF\xBB"s + kT + "\nHi", ""},
    {"FF alone is no mark", "\xFF\n"s + kT + "\nHi", "1000-2000 @32"},
};

TEST(SrtScan, EightBitText) {
    for (const ScanRow& row : kScans) {
        SCOPED_TRACE(row.what);
        const Srt parser(row.in);
        EXPECT_EQ(row.tags, tagsOf(parser));
        EXPECT_EQ(TRUE, parser.bParseFinish);
    }
}

TEST(SrtScan, CodeTypes) {
    const struct {
        std::string in;
        EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType;
    } kRows[] = {
        {"1\n", kNative},
        {"\xEF\xBB\xBF"
         "1\n",
         kUtf8},
        {"\xC3\xA9\n", kNative},  // kept(utf8-unmarked-native)
        {"\xEF\xBB"
         "1\n",
         kNative},
        {"\xFF\xFE"
         "1\0"s,
         kUtf16Le},
        {"\xFF\xFE", kUtf16Le},
        {"\xFE\xFF\0"
         "1"s,
         kUtf16Be},
        {"\xFF"
         "A",
         kNative},
        {"\xFF", kNative},
        {"\xFE", kNative},
        {"1\0\n\0"s, kNative},  // kept(utf16-no-mark): UTF-16 without a mark is not looked for
    };
    for (const auto& row : kRows) {
        const Srt parser(row.in);
        EXPECT_EQ(row.codeType, parser.m_eCodeType) << show(row.in);
        EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_SRT, parser.m_eSubtitleType);
        EXPECT_EQ(TRUE, parser.bParseFinish);
    }
}

// kept(srt-blank-below-time)
TEST(SrtScan, ATimingLineThenABlankLineHasNoText) {
    Srt parser("1\r\n"s + kT + "\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n");
    EXPECT_EQ("1000-2000 @32; 3000-4000 @70", tagsOf(parser));
    EXPECT_EQ("", textOf(parser, 0));
    EXPECT_EQ("Bye", textOf(parser, 1));
}

// kept(srt-empty-entry)
TEST(SrtScan, WithLfAloneAnEntryWithoutTextShowsWhatFollows) {
    Srt parser("1\n"s + kT + "\n\n2\n" + kT2 + "\nBye\n");
    EXPECT_EQ("1000-2000 @33; 3000-4000 @65", tagsOf(parser));
    EXPECT_EQ("2\n"s + kT2 + "\n", textOf(parser, 0));
}

// kept(srt-no-blank-line), kept(srt-blank-line-blanks)
TEST(SrtScan, OnlyAnEmptyLineKeepsTheNextEntryOutOfAText) {
    for (const std::string between : {"", " \r\n", "\t \r\n"}) {
        Srt parser("1\r\n"s + kT + "\r\nHello\r\n" + between + "2\r\n" + kT2 + "\r\nBye\r\n");
        std::string blanks = between;
        if (!blanks.empty()) blanks.erase(blanks.size() - 2, 1);  // CR LF comes out as LF
        EXPECT_EQ("1000-2000 Hello\n" + blanks + "2\n" + kT2 + "; 3000-4000 Bye", shownOf(parser));
    }
    Srt parser("1\r\n"s + kT + "\r\nHello\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n");
    EXPECT_EQ("1000-2000 Hello; 3000-4000 Bye", shownOf(parser));
}

// kept(utf32)
TEST(SrtScan, FindsNothingInUtf32) {
    std::string little("\xFF\xFE\0\0", 4), big("\0\0\xFE\xFF", 4);
    for (const char c : "1\r\n"s + kT + "\r\nHello\r\n") {
        little += std::string{c, 0, 0, 0};
        big += std::string{0, 0, 0, c};
    }
    EXPECT_EQ("", tagsOf(Srt(little)));
    EXPECT_EQ("", tagsOf(Srt(big)));
}

// ---------------------------------------------------------------------------------------------------- UTF-16

/// The same rows for both byte orders; positions in bytes, the mark included.
struct WideRow {
    const char* what;
    std::string in;
    std::string little, big;
};

const WideRow kWideScans[] = {
    {"a simple file", "1\r\n"s + kT + "\r\nHi\r\n\r\n2\r\n" + kT2 + "\r\nYo\r\n", "1000-2000 @70; 3000-4000 @150",
     "1000-2000 @66; 3000-4000 @146"},  // a big-endian CR is no white space: the text begins on it
    {"the timing line first", kT + "\r\nHi\r\n"s, "1000-2000 @64", "1000-2000 @60"},
    {"LF alone", kT + "\nHi\n\n2\n"s + kT2 + "\nYo\n", "1000-2000 @62; 3000-4000 @134",
     "1000-2000 @60"},  // no CR to end a big-endian line with
    {"LF alone, with an index line", "1\n"s + kT + "\nHi\n", "1000-2000 @66", ""},  // kept(utf16be-lf)
    {"white space behind the timing line", kT + " \t\v\f\r\n\r\n Hi"s, "1000-2000 @78", "1000-2000 @60"},
    {"more on the timing line is text", kT + " X1:40\r\nHi\r\n"s, "1000-2000 @62", "1000-2000 @60"},
    {"the next timing line is text, and skipped", kT + "\r\n"s + kT2 + "\r\nHi", "1000-2000 @64",
     "1000-2000 @60; 3000-4000 @122"},  // big-endian: the line skip starts on the first line's own CR
    {"a fourth digit is text", kT + "1\r\nHi\r\n"s, "1000-2000 @60", "1000-2000 @60"},
    {"no text", kT + "\r\n\r\n2\r\n"s + kT2 + "\r\nYo", "1000-2000 @68; 3000-4000 @136",
     "1000-2000 @60; 3000-4000 @132"},
    {"at the end of the data", kT, "1000-2000 @60", "1000-2000 @60"},
    {"nothing behind the mark", "", "", ""},
    {"no timing line", "Hello\r\nWorld\r\n", "", ""},
};

TEST(SrtScan, Utf16Text) {
    for (const WideRow& row : kWideScans) {
        SCOPED_TRACE(row.what);
        const Srt little(utf16le(row.in)), big(utf16be(row.in));
        EXPECT_EQ(row.little, tagsOf(little)) << "little-endian";
        EXPECT_EQ(row.big, tagsOf(big)) << "big-endian";
        EXPECT_EQ(TRUE, little.bParseFinish);
        EXPECT_EQ(TRUE, big.bParseFinish);
    }
}

// kept(srt-leading-break)
TEST(SrtScan, TextsOfUtf16Files) {
    const std::string file = "1\r\n"s + kT + "\r\nHello\r\nWorld\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n";
    Srt little(utf16le(file)), big(utf16be(file));
    EXPECT_EQ("Hello\nWorld", textOf(little, 0));
    EXPECT_EQ("Bye", textOf(little, 1));
    EXPECT_EQ("\nHello\nWorld", textOf(big, 0));
    EXPECT_EQ("\nBye\n", textOf(big, 1));
}

// kept(srt-utf16-shape)
const TimingLine kWideTimingLines[] = {
    {"00:00:01,500 --> 00:00:03,250", true, 1500, 3250},
    {"99:99:99.999 --> 00:00:00.001", true, 362439999, 1},
    {"00x00y01z500 abc 00x00y03z250", true, 1500, 3250},  // separators may be anything
    {"00:00:01,500 ->> 00:00:03,250", true, 1500, 3250},
    {"0:00:01,000 --> 0:00:02,000", false, 0, 0},  // kept(srt-utf16-shape): one-digit hours
    {"100:00:01,000 --> 100:00:02,000", false, 0, 0},
    {"00:00:01,50 --> 00:00:03,25", false, 0, 0},
    {"00:00:01,5000 --> 00:00:03,2500", false, 0, 0},
    {"00:00:01,500  --> 00:00:03,250", false, 0, 0},
    {"00:00:01,500-->00:00:03,250", false, 0, 0},
    {"00:00:01,500\t-->\t00:00:03,250", false, 0, 0},  // blanks only
    {" 00:00:01,500 --> 00:00:03,250", false, 0, 0},
    {"00:00:01,500 --> 00:00:03,25", false, 0, 0},
    {"00:00:01,500 --> 00:00:03,25x", false, 0, 0},
    {"0 :00:01,500 --> 00:00:03,250", false, 0, 0},
    {"00:00:01,500 --> 00:00:0x,250", false, 0, 0},
};

TEST(SrtScan, Utf16TimingLinesAreCanonical) {
    for (const TimingLine& row : kWideTimingLines) {
        SCOPED_TRACE(show(row.line));
        const std::string file = "1\r\n" + std::string(row.line) + "\r\n";
        const Srt little(utf16le(file)), big(utf16be(file));
        EXPECT_EQ(row.timing ? tagAt(row, 70) : "", tagsOf(little));
        EXPECT_EQ(row.timing ? tagAt(row, 66) : "", tagsOf(big));
    }
}

// A unit above 255 becomes two characters and pushes the rest out of shape.
TEST(SrtScan, WideUnitsInUtf16TimingLines) {
    std::string line = utf16le(kT);
    line[2 + 2 * 2 + 1] = '\x4E';  // the first ':' is U+4E3A now
    EXPECT_EQ("", tagsOf(Srt(line)));
    line = utf16le(kT);
    line[2 + 1] = '\x30';  // U+3030 is two digits once narrowed, but the rest no longer fits
    EXPECT_EQ("", tagsOf(Srt(line)));
}

TEST(SrtScan, OddLastByteOfUtf16) {
    // Little-endian: the last digit's low byte is enough; the position lies behind the file's end.
    std::string little = utf16le(kT);
    little.pop_back();
    Srt shortened(little);
    EXPECT_EQ("1000-2000 @60", tagsOf(shortened));
    EXPECT_EQ("", textOf(shortened, 0));
    // Big-endian: the half that is there says nothing.
    std::string big = utf16be(kT);
    big.pop_back();
    EXPECT_EQ("", tagsOf(Srt(big)));
    // A spare byte at the end hurts nobody.
    EXPECT_EQ("1000-2000 @64", tagsOf(Srt(utf16le(kT + "\r\nHi"s) + "x")));
    EXPECT_EQ("1000-2000 @60", tagsOf(Srt(utf16be(kT + "\r\nHi"s) + "x")));
    EXPECT_EQ("", tagsOf(Srt("\xFF\xFEx")));
}

// White space behind the timing line is looked for below half the data's size only.
TEST(SrtScan, OddLastByteIsNoWhiteSpaceBehindATimingLine) {
    EXPECT_EQ("1000-2000 @60", tagsOf(Srt(utf16le(kT) + "\n")));
}

// ------------------------------------------------------------------------------------------- small operations

TEST(SrtParser, GetNextDataIsTheTextOfTheEntryBehind) {
    Srt parser("1\n"s + kT + "\nOne\n\n2\n" + kT2 + "\nTwo\n\n3\n" + kT2 + "\nThree");
    U8 buffer[64] = {};
    EXPECT_EQ(3u, parser.GetNextData(0, buffer, sizeof buffer, 0));
    EXPECT_STREQ("Two", reinterpret_cast<char*>(buffer));
    EXPECT_EQ(5u, parser.GetNextData(7, buffer, sizeof buffer, 1));
    EXPECT_STREQ("Three", reinterpret_cast<char*>(buffer));
    memset(buffer, 'x', sizeof buffer);
    for (const U32 index : {2u, 3u, 0x7FFFFFFFu, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        EXPECT_EQ(0u, parser.GetNextData(0, buffer, sizeof buffer, index)) << index;
    }
    EXPECT_EQ('x', buffer[0]);
    Srt empty("");
    EXPECT_EQ(0u, empty.GetNextData(0, buffer, sizeof buffer, 0));
    EXPECT_EQ(0u, empty.GetNextData(0, buffer, sizeof buffer, 0xFFFFFFFF));
}

TEST(SrtParser, AConstructorTakesAPartOfAFile) {
    const TempFile file("content");
    const SubtitleParserSRT part(pathFor<SubtitleParserSRT>(file.path()), 5, 6);
    EXPECT_EQ(SubtitleFileProcess::SOURCE_TYPE_URL_OFFSET_LENGTH, part.pFileProcess->mSourceType);
    EXPECT_STREQ(file.path(), part.pFileProcess->pFileName);
    EXPECT_EQ(5, part.pFileProcess->mOffset);
    EXPECT_EQ(6, part.pFileProcess->mLength);
    EXPECT_EQ(FALSE, part.bParseFinish);
    EXPECT_EQ(pthread_t{0}, part.m_threadParser);
    EXPECT_EQ(kUnknown, part.m_eCodeType);
}

// ------------------------------------------------------------------------------------------------ BeginParse

const std::string kFile = "1\r\n"s + kT + "\r\nHello\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n";
constexpr char kFileTags[] = "1000-2000 @34; 3000-4000 @77";

LogLine openingPart(const TempFile& file) {
    return {3, "SubtitleFileProcess", "Open  " + std::string(file.path()) + "    offset \n"};
}
LogLine srtLine(const std::string& text) { return {3, "SubtitleParserSRT", text}; }

const LogLine kEnter = srtLine("Zorb_MediaSubtitleParserSRT::BeginParse -> Enter\n");
const LogLine kExit = srtLine("Zorb_MediaSubtitleParserSRT::BeginParse -> Exit\n");

TEST(SrtBeginParse, ReadsAPartOfAFile) {
    const TempFile file("garbage " + kFile + "more garbage");
    SubtitleParserSRT parser(pathFor<SubtitleParserSRT>(file.path()), 8, static_cast<S64>(kFile.size()));
    const LogCapture log;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(kFileTags, tagsOf(parser)) << "positions count from the offset";
    EXPECT_EQ("Bye", textOf(parser, 1));
    EXPECT_EQ(openingPart(file), log.lines().at(1));
}

TEST(SrtBeginParse, WarnsWhenLessCameThanWasAskedFor) {
    const TempFile file(kFile);
    SubtitleParserSRT parser(pathFor<SubtitleParserSRT>(file.path()), 0, 1000);
    VirtualClock clock;
    const LogCapture log;
    EXPECT_EQ(TRUE, beginSlowly(parser, clock));
    EXPECT_EQ((Lines{
                  kEnter,
                  openingPart(file),
                  srtLine("Zorb_MediaSubtitleParserSRT::ParserThread - Enter, data size = 1000, rawbuf: *\n"),
                  srtLine("Zorb_MediaSubtitleParserSRT Warning, Read data < Requied Data\n"),
                  srtLine("Zorb_MediaSubtitleParserSRT::BeginParse -> Wait...\n"),
                  srtLine("Zorb_MediaSubtitleParserSRT::ParserThread -> Finished : Tag num = 2\n"),
                  srtLine("Zorb_MediaSubtitleParserSRT::BeginParse -> 00000000\n"),
                  kExit,
              }),
              levelled(log.lines()));
    EXPECT_EQ(kFileTags, tagsOf(parser));
    EXPECT_EQ("Bye", textOf(parser, 1)) << "the rest reads 0";
}

TEST(SrtBeginParse, FailsWhenTheBuffersCannotBeHad) {
    const TempFile file(kFile);
    SubtitleParserSRT parser(pathFor<SubtitleParserSRT>(file.path()), 0, -1);
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ((Lines{kEnter, openingPart(file), kExit}), log.lines());
    EXPECT_EQ(nullptr, parser.m_pTagBuffer);
}

TEST(SrtBeginParse, ReadsTheFileAgainWhenRepeated) {
    const TempFile first(kFile), second(utf16le(kFile + "3\r\n" + kT + "\r\nMore"));
    const unsigned descriptors = openDescriptors();
    const unsigned threads = threadCount();
    {
        SubtitleParserSRT parser(pathFor<SubtitleParserSRT>(first.path()));
        for (int i = 0; i < 3; ++i) {
            ASSERT_EQ(TRUE, parser.BeginParse());
            ASSERT_EQ(kFileTags, tagsOf(parser));
            ASSERT_EQ("Hello", textOf(parser, 0));
            ASSERT_EQ(descriptors + 1, openDescriptors());
            ASSERT_EQ(threads, threadCount());
        }
        // another file under the same source
        strcpy(parser.pFileProcess->pFileName, second.path());
        ASSERT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(3u, parser.GetTagNum());
        EXPECT_EQ(kUtf16Le, parser.m_eCodeType);
        EXPECT_EQ("More", textOf(parser, 2));
    }
    EXPECT_EQ(descriptors, openDescriptors());
    EXPECT_EQ(threads, threadCount());
}

// The player's whole way: open, ask at each play time, read the text.
TEST(SrtParser, PlaysAMovie) {
    const TempFile file(
        "1\n00:01:00,000 --> 00:01:02,000\n<i>One</i> minute\n\n"
        "2\n00:01:01,500 --> 00:01:05,000\nand a half\n");
    SubtitleParser* const parser = new SubtitleParserSRT(file.fd(), 0, 0);
    ASSERT_EQ(TRUE, parser->BeginParse());
    EXPECT_EQ(2u, parser->GetTagNum());
    const U32 index = parser->GetTag(0, 61500);
    EXPECT_EQ(1u, index);
    ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
    EXPECT_EQ(TRUE, parser->GetTagInfo(0, index, &tag));
    EXPECT_EQ(61500u, tag.u32TimeStart);
    EXPECT_EQ(65000u, tag.u32TimeEnd);
    EXPECT_EQ("and a half\n", textOf(*parser, index));
    EXPECT_EQ("One minute", textOf(*parser, parser->GetTag(0, 61499)));
    EXPECT_EQ(0u, parser->GetTag(0, 10)) << "before the first";
    parser->StopParse();
    parser->Deinit();
    delete parser;
}

}  // namespace
