// SubRip: what the scan makes of a file in each encoding, and BeginParse from its first log line to its last.
#include "subtitle/SubtitleParserSRT.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "subtitle/SubtitleFileProcess.h"
#include "tests/ParserTools.h"
#include "tests/support/Interpose.h"

namespace {

using namespace android;
using namespace test;
using namespace std::literals;
using Lines = std::vector<LogLine>;
using Tags = std::vector<Tag>;

char* pathOf(const TempFile& file) { return const_cast<char*>(file.path()); }

/// A parser whose data was scanned on this thread.
struct Scanned : SubtitleParserSRT {
    explicit Scanned(std::string_view data) : SubtitleParserSRT(nullptr) {
        load(*this, data);
        ParserThread();
    }
};

// ------------------------------------------------------------------------------------------------ 8-bit text

const char kT[] = "00:00:01,000 --> 00:00:02,000";   // 29 characters
const char kT2[] = "00:00:03,000 --> 00:00:04,000";  // 29 characters

TEST(SrtScan, FindsTimesAndTextPositions) {
    const Scanned crlf("1\r\n"s + kT + "\r\nHello\r\nWorld\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n");
    EXPECT_EQ((Tags{{1000, 2000, 34}, {3000, 4000, 84}}), tagsOf(crlf));
    const Scanned lf("1\n"s + kT + "\nHello\nWorld\n\n2\n" + kT2 + "\nBye\n");
    EXPECT_EQ((Tags{{1000, 2000, 32}, {3000, 4000, 77}}), tagsOf(lf));
    const Scanned cr("1\r"s + kT + "\rHello\rWorld\r\r2\r" + kT2 + "\rBye\r");
    EXPECT_EQ((Tags{{1000, 2000, 32}, {3000, 4000, 77}}), tagsOf(cr));
    for (const Scanned* parser : {&crlf, &lf, &cr}) {
        EXPECT_EQ(kNative, parser->m_eCodeType);
        EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_SRT, parser->m_eSubtitleType);
        EXPECT_EQ(TRUE, parser->bParseFinish);
        EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_FLAG_NULL, parser->m_eFlag);
    }
}

TEST(SrtScan, TextsOfASimpleFile) {
    Scanned parser("1\r\n"s + kT + "\r\nHello\r\n<i>World</i>\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n");
    EXPECT_EQ(open("Hello\nWorld"), textOf(parser, 0));  // a tag before the blank line: the early end
    EXPECT_EQ(text("Bye"), textOf(parser, 1));
}

TEST(SrtScan, AnEmptyFileHasNoTags) {
    const Scanned parser("");
    EXPECT_EQ(Tags{}, tagsOf(parser));
    EXPECT_EQ(TRUE, parser.bParseFinish);
    EXPECT_EQ(kUnknown, parser.m_eCodeType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID, parser.m_eSubtitleType);
}

TEST(SrtScan, StartsFromTheDatasBeginning) {
    SubtitleParserSRT parser(nullptr);
    load(parser, kT);
    parser.m_s64RawBufferPosition = 500;
    parser.m_u32RawBufferDataSize = 3;
    parser.ParserThread();
    EXPECT_EQ(0, parser.m_s64RawBufferPosition);
    EXPECT_EQ(29u, parser.m_u32RawBufferDataSize);
    EXPECT_EQ((Tags{{1000, 2000, 29}}), tagsOf(parser));
}

struct TimingLine {
    std::string_view line;
    bool timing;
    U32 start, end;
};

constexpr U32 hours(U64 h) { return static_cast<U32>(h * 3600000); }

const TimingLine kTimingLines[] = {
    {"00:00:01,500 --> 00:00:03,250", true, 1500, 3250},
    {"00:00:01.500 --> 00:00:03.250", true, 1500, 3250},
    {"0:0:1,5 --> 0:0:2,75", true, 1005, 2075},  // the fraction is milliseconds whatever its digits
    {"01:02:03,004 --> 05:06:07,008", true, 3723004, 18367008},
    {"99:59:59,999 --> 100:00:00,000", true, 359999999, 360000000},
    {"0:99:99,5000 --> 0:0:0,99999", true, 6044000, 99999},  // no range is checked
    {"0:0:0,0 --> 0:0:0,0", true, 0, 0},
    {"0:0:9,0 --> 0:0:1,0", true, 9000, 1000},
    {"2000:0:0,0 --> 4294967295:0:0,1", true, hours(2000), hours(4294967295) + 1},  // 32 bits, wrapping
    {"4294967296:0:1,0 --> 0:0:18446744073709,0", true, 1000, 1271309768U},

    // Literals take any one character.
    {"00-00-01-500 xyz 00-00-03-250", true, 1500, 3250},
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
    {"00:00:01 --> 00:00:03", false, 0, 0},
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
            const Scanned parser("1" + end + (end.empty() ? "\n" : "") + std::string(row.line) + end);
            Tags expected;
            const size_t size = 1 + std::max<size_t>(end.size(), 1) + row.line.size() + end.size();
            if (row.timing) expected.push_back({row.start, row.end, static_cast<S64>(size)});
            EXPECT_EQ(expected, tagsOf(parser)) << "line end " << show(end);
        }
    }
}

struct ScanRow {
    const char* what;
    std::string in;
    Tags tags;
};

const ScanRow kScans[] = {
    {"a text position skips white space", kT + "\r\n \t\v\f Hi\r\n"s, {{1000, 2000, 36}}},
    {"and blank lines with blanks in them", kT + "\r\n  \r\n\r\n\tHi\r\n"s, {{1000, 2000, 38}}},
    {"a blank line behind the timing line: the position is its own CR", kT + "\r\n\r\nHi\r\n"s, {{1000, 2000, 29}}},
    {"two of them: one line end further", kT + "\r\n\r\n\r\nHi\r\n"s, {{1000, 2000, 31}}},
    {"LF alone: the next line is the text", kT + "\n\n2\n"s + kT2 + "\nHi\n", {{1000, 2000, 31}, {3000, 4000, 63}}},
    {"CR, LF, LF, LF", kT + "\r\n\n\nHi"s, {{1000, 2000, 29}}},
    {"CR, CR, CR, CR", kT + "\r\r\r\rHi"s, {{1000, 2000, 29}}},
    {"CR, CR, CR: no CR four back", kT + "\r\r\rHi"s, {{1000, 2000, 32}}},
    {"the line behind a timing line is its text, whatever it is",
     kT + "\r\n"s + kT2 + "\r\nHi\r\n",
     {{1000, 2000, 31}}},
    {"the third is tried again", kT + "\nHi\n"s + kT2 + "\nYo", {{1000, 2000, 30}, {3000, 4000, 63}}},
    {"at the end of the data", kT, {{1000, 2000, 29}}},
    {"at the end of the data, CR LF", kT + "\r\n"s, {{1000, 2000, 31}}},
    {"no timing line at all", "Hello\nWorld\n", {}},
    {"line ends alone", "\r\n\n\r\r\n", {}},
    {"one byte", "1", {}},
    {"NUL bytes", "\0\0\n\0"s + kT + "\nHi\0\n"s + kT2, {{3000, 4000, 67}}},
    {"times out of order stay as they are", kT2 + "\nHi\n"s + kT + "\nYo", {{3000, 4000, 30}, {1000, 2000, 63}}},

    // Literals cross line ends: nine lines of one digit are a timing line of four and four, with one eaten.
    {"digits down the page", "1\n2\n3\n4\n5\n6\n7\n8\n9\n", {{3723004, 22028009, 2}}},
    {"and behind a CR: the position goes back, the scan does not",
     "X\r\n1\n2\n3\n4\n5\n6\n7\n8\n9\n",
     {{3723004, 22028009, 1}}},
    {"but on to the very next line",
     "X\r\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n",
     {{3723004, 22028009, 1}, {7384005, 25689010, 7}}},

    // The first bytes.
    {"a UTF-8 mark and an index line",
     "\xEF\xBB\xBF"
     "1\n"s +
         kT + "\nHi",
     {{1000, 2000, 35}}},
    {"a UTF-8 mark spoils a timing line behind it", "\xEF\xBB\xBF"s + kT + "\nHi\n" + kT2, {{3000, 4000, 65}}},
    {"half a mark spoils it too", "\xEF\xBB"s + kT + "\nHi", {}},
    {"FF alone is no mark", "\xFF\n"s + kT + "\nHi", {{1000, 2000, 32}}},
};

TEST(SrtScan, EightBitText) {
    for (const ScanRow& row : kScans) {
        SCOPED_TRACE(row.what);
        const Scanned parser(row.in);
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
        {"1\0\n\0"s, kNative},  // UTF-16 without a mark is not looked for
    };
    for (const auto& row : kRows) {
        const Scanned parser(row.in);
        EXPECT_EQ(row.codeType, parser.m_eCodeType) << show(row.in);
        EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_SRT, parser.m_eSubtitleType);
        EXPECT_EQ(TRUE, parser.bParseFinish);
    }
}

TEST(SrtScan, ATimingLineThenABlankLineHasNoText) {
    Scanned parser("1\r\n"s + kT + "\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n");
    EXPECT_EQ((Tags{{1000, 2000, 32}, {3000, 4000, 70}}), tagsOf(parser));
    EXPECT_EQ(text(""), textOf(parser, 0));
    EXPECT_EQ(text("Bye"), textOf(parser, 1));
}

TEST(SrtScan, WithLfAloneAnEntryWithoutTextShowsWhatFollows) {
    Scanned parser("1\n"s + kT + "\n\n2\n" + kT2 + "\nBye\n");
    EXPECT_EQ((Tags{{1000, 2000, 33}, {3000, 4000, 65}}), tagsOf(parser));
    EXPECT_EQ(text("2\n"s + kT2 + "\n"), textOf(parser, 0));
}

// ---------------------------------------------------------------------------------------------------- UTF-16

/// The same rows for both byte orders; positions in bytes, the mark included.
struct WideRow {
    const char* what;
    std::string in;
    Tags little, big;
};

const WideRow kWideScans[] = {
    {"a simple file",
     "1\r\n"s + kT + "\r\nHi\r\n\r\n2\r\n" + kT2 + "\r\nYo\r\n",
     {{1000, 2000, 70}, {3000, 4000, 150}},
     {{1000, 2000, 66}, {3000, 4000, 146}}},  // a big-endian CR is no white space: the text begins on it
    {"the timing line first", kT + "\r\nHi\r\n"s, {{1000, 2000, 64}}, {{1000, 2000, 60}}},
    {"LF alone",
     kT + "\nHi\n\n2\n"s + kT2 + "\nYo\n",
     {{1000, 2000, 62}, {3000, 4000, 134}},
     {{1000, 2000, 60}}},  // no CR to end a big-endian line with
    {"LF alone, with an index line", "1\n"s + kT + "\nHi\n", {{1000, 2000, 66}}, {}},
    {"white space behind the timing line", kT + " \t\v\f\r\n\r\n Hi"s, {{1000, 2000, 78}}, {{1000, 2000, 60}}},
    {"more on the timing line is text", kT + " X1:40\r\nHi\r\n"s, {{1000, 2000, 62}}, {{1000, 2000, 60}}},
    {"the next timing line is text, and skipped",
     kT + "\r\n"s + kT2 + "\r\nHi",
     {{1000, 2000, 64}},
     {{1000, 2000, 60}, {3000, 4000, 122}}},  // big-endian: the line skip starts on the first line's own CR
    {"a fourth digit is text", kT + "1\r\nHi\r\n"s, {{1000, 2000, 60}}, {{1000, 2000, 60}}},
    {"no text",
     kT + "\r\n\r\n2\r\n"s + kT2 + "\r\nYo",
     {{1000, 2000, 68}, {3000, 4000, 136}},
     {{1000, 2000, 60}, {3000, 4000, 132}}},
    {"at the end of the data", kT, {{1000, 2000, 60}}, {{1000, 2000, 60}}},
    {"nothing behind the mark", "", {}, {}},
    {"no timing line", "Hello\r\nWorld\r\n", {}, {}},
};

TEST(SrtScan, Utf16Text) {
    for (const WideRow& row : kWideScans) {
        SCOPED_TRACE(row.what);
        const Scanned little(utf16le(row.in)), big(utf16be(row.in));
        EXPECT_EQ(row.little, tagsOf(little)) << "little-endian";
        EXPECT_EQ(row.big, tagsOf(big)) << "big-endian";
        EXPECT_EQ(TRUE, little.bParseFinish);
        EXPECT_EQ(TRUE, big.bParseFinish);
    }
}

TEST(SrtScan, TextsOfUtf16Files) {
    const std::string file = "1\r\n"s + kT + "\r\nHello\r\nWorld\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n";
    Scanned little(utf16le(file)), big(utf16be(file));
    EXPECT_EQ(text("Hello\nWorld"), textOf(little, 0));
    EXPECT_EQ(text("Bye"), textOf(little, 1));
    EXPECT_EQ(text("\nHello\nWorld"), textOf(big, 0));
    EXPECT_EQ(text("\nBye\n"), textOf(big, 1));
}

const TimingLine kWideTimingLines[] = {
    {"00:00:01,500 --> 00:00:03,250", true, 1500, 3250},
    {"99:99:99.999 --> 00:00:00.001", true, 362439999, 1},
    {"00x00y01z500 abc 00x00y03z250", true, 1500, 3250},  // separators may be anything
    {"00:00:01,500 ->> 00:00:03,250", true, 1500, 3250},
    {"0:00:01,000 --> 0:00:02,000", false, 0, 0},  // one-digit hours
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
        const Scanned little(utf16le(file)), big(utf16be(file));
        const Tags none;
        EXPECT_EQ(row.timing ? (Tags{{row.start, row.end, 70}}) : none, tagsOf(little));
        EXPECT_EQ(row.timing ? (Tags{{row.start, row.end, 66}}) : none, tagsOf(big));
    }
}

// A unit above 255 becomes two characters and pushes the rest out of shape.
TEST(SrtScan, WideUnitsInUtf16TimingLines) {
    std::string line = utf16le(kT);
    line[2 + 2 * 2 + 1] = '\x4E';  // the first ':' is U+4E3A now
    EXPECT_EQ(Tags{}, tagsOf(Scanned(line)));
    line = utf16le(kT);
    line[2 + 1] = '\x30';  // U+3030 is two digits once narrowed, but the rest no longer fits
    EXPECT_EQ(Tags{}, tagsOf(Scanned(line)));
}

TEST(SrtScan, OddLastByteOfUtf16) {
    // Little-endian: the last digit's low byte is enough; the position lies behind the file's end.
    std::string little = utf16le(kT);
    little.pop_back();
    Scanned shortened(little);
    EXPECT_EQ((Tags{{1000, 2000, 60}}), tagsOf(shortened));
    EXPECT_EQ(text(""), textOf(shortened, 0));
    // Big-endian: the half that is there says nothing.
    std::string big = utf16be(kT);
    big.pop_back();
    EXPECT_EQ(Tags{}, tagsOf(Scanned(big)));
    // A spare byte at the end hurts nobody.
    EXPECT_EQ((Tags{{1000, 2000, 64}}), tagsOf(Scanned(utf16le(kT + "\r\nHi"s) + "x")));
    EXPECT_EQ((Tags{{1000, 2000, 60}}), tagsOf(Scanned(utf16be(kT + "\r\nHi"s) + "x")));
    EXPECT_EQ(Tags{}, tagsOf(Scanned("\xFF\xFEx")));
}

// White space behind the timing line is looked for below half the data's size only.
TEST(SrtScan, OddLastByteIsNoWhiteSpaceBehindATimingLine) {
    EXPECT_EQ((Tags{{1000, 2000, 60}}), tagsOf(Scanned(utf16le(kT) + "\n")));
}

// ------------------------------------------------------------------------------------------- small operations

TEST(SrtParser, GetNextDataIsTheTextOfTheEntryBehind) {
    Scanned parser("1\n"s + kT + "\nOne\n\n2\n" + kT2 + "\nTwo\n\n3\n" + kT2 + "\nThree");
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
    Scanned empty("");
    EXPECT_EQ(0u, empty.GetNextData(0, buffer, sizeof buffer, 0));
    EXPECT_EQ(0u, empty.GetNextData(0, buffer, sizeof buffer, 0xFFFFFFFF));
}

TEST(SrtParser, GetTrackInfoFillsFormatAndCodeTypeAlone) {
    Scanned parser("\xEF\xBB\xBF"s + kT);
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info, expected;
    memset(static_cast<void*>(&info), 0x5A, sizeof info);
    memset(static_cast<void*>(&expected), 0x5A, sizeof expected);
    expected.eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_SRT;
    expected.eCodeType = kUtf8;
    EXPECT_EQ(TRUE, parser.GetTrackInfo(5, &info));
    EXPECT_EQ(0, memcmp(&expected, &info, sizeof info));
    EXPECT_EQ(TRUE, parser.GetTrackInfo(0, nullptr));
}

TEST(SrtParser, ConstructorsPassTheirArgumentsOn) {
    const TempFile file("content");
    const SubtitleParserSRT byPath(pathOf(file)), byFd(file.fd(), 3, 4), part(pathOf(file), 5, 6);
    EXPECT_EQ(SubtitleFileProcess::SOURCE_TYPE_URL, byPath.pFileProcess->mSourceType);
    EXPECT_STREQ(file.path(), byPath.pFileProcess->pFileName);
    EXPECT_EQ(SubtitleFileProcess::SOURCE_TYPE_URL, byFd.pFileProcess->mSourceType);
    EXPECT_GE(byFd.pFileProcess->mFd, 1);
    EXPECT_EQ(3, byFd.pFileProcess->mOffset);
    EXPECT_EQ(4, byFd.pFileProcess->mLength);
    EXPECT_EQ(SubtitleFileProcess::SOURCE_TYPE_URL_OFFSET_LENGTH, part.pFileProcess->mSourceType);
    EXPECT_EQ(5, part.pFileProcess->mOffset);
    EXPECT_EQ(6, part.pFileProcess->mLength);
    for (const SubtitleParserSRT* parser : {&byPath, &byFd, &part}) {
        EXPECT_EQ(FALSE, parser->bParseFinish);
        EXPECT_EQ(pthread_t{0}, parser->m_threadParser);
        EXPECT_EQ(kUnknown, parser->m_eCodeType);
    }
}

TEST(SrtParser, ParserTaskScansTheParserItIsGiven) {
    SubtitleParserSRT parser(nullptr);
    load(parser, kT);
    EXPECT_EQ(nullptr, SubtitleParserSRT::ParserTask(&parser));
    EXPECT_EQ(TRUE, parser.bParseFinish);
    EXPECT_EQ(1u, parser.m_u32TagNum);
}

// ------------------------------------------------------------------------------------------------ BeginParse

const std::string kFile = "1\r\n"s + kT + "\r\nHello\r\n\r\n2\r\n" + kT2 + "\r\nBye\r\n";
const Tags kFileTags{{1000, 2000, 34}, {3000, 4000, 77}};

LogLine srtLine(const std::string& text) { return {3, "SubtitleParserSRT", text}; }
LogLine fileLine(const std::string& text) { return {3, "SubtitleFileProcess", text}; }

const LogLine kEnter = srtLine("Zorb_MediaSubtitleParserSRT::BeginParse -> Enter\n");
const LogLine kShortRead = srtLine("Zorb_MediaSubtitleParserSRT Warning, Read data < Requied Data\n");
const LogLine kWait = srtLine("Zorb_MediaSubtitleParserSRT::BeginParse -> Wait...\n");
const LogLine kFlagNull = srtLine("Zorb_MediaSubtitleParserSRT::BeginParse -> 00000000\n");
const LogLine kExit = srtLine("Zorb_MediaSubtitleParserSRT::BeginParse -> Exit\n");

LogLine opening(const TempFile& file) { return fileLine("Open filename = " + std::string(file.path()) + "\n"); }

LogLine loading(const SubtitleParser& parser, long size) {
    char text[128];
    snprintf(text, sizeof text, "Zorb_MediaSubtitleParserSRT::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
             size, static_cast<unsigned>(reinterpret_cast<uintptr_t>(parser.m_pu8RawBuffer)));
    return srtLine(text);
}

LogLine finished(int tags) {
    return srtLine("Zorb_MediaSubtitleParserSRT::ParserThread -> Finished : Tag num = " + std::to_string(tags) + "\n");
}

/// Lets the worker run, and waits for it, inside the `count`-th sleep of BeginParse.
void releaseAtSleep(VirtualClock& clock, size_t count, ThreadGate& gate, SubtitleParser& parser) {
    clock.atSleep(count, [&] {
        gate.open();
        while (__atomic_load_n(&parser.bParseFinish, __ATOMIC_ACQUIRE) == FALSE) sched_yield();
    });
}

TEST(SrtBeginParse, LogsEachStepInOrder) {
    const TempFile file(kFile);
    SubtitleParserSRT parser(pathOf(file));
    VirtualClock clock;
    ThreadGate gate;  // so that "Wait..." comes before the worker's line
    releaseAtSleep(clock, 1, gate, parser);
    const LogCapture log;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ((Lines{kEnter, opening(file), loading(parser, 82), kWait, finished(2), kFlagNull, kExit}), log.lines());
    EXPECT_EQ(kFileTags, tagsOf(parser));
}

// However fast the worker is, its line comes before those that close the ceremony: it has been joined.
TEST(SrtBeginParse, TheWorkersLineComesBeforeTheClosingOnes) {
    const TempFile file(kFile);
    for (int i = 0; i < 50; ++i) {
        SubtitleParserSRT parser(pathOf(file));
        const unsigned threads = threadCount();
        const LogCapture log;
        ASSERT_EQ(TRUE, parser.BeginParse());
        ASSERT_EQ(threads, threadCount()) << "joined";
        ASSERT_NE(pthread_t{0}, parser.m_threadParser) << "which keeps its value";
        const Lines lines = log.lines();
        ASSERT_EQ(7u, lines.size());
        ASSERT_EQ(kFlagNull, lines[5]);
        ASSERT_EQ(kExit, lines[6]);
        ASSERT_EQ(1, std::count(lines.begin() + 3, lines.begin() + 5, finished(2)));
        ASSERT_EQ(kFileTags, tagsOf(parser));
    }
}

TEST(SrtBeginParse, AnEmptyFileSucceeds) {
    const TempFile file("");
    SubtitleParserSRT parser(pathOf(file));
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(0u, parser.GetTagNum());
    EXPECT_EQ(0u, parser.GetTag(0, 1000));
}

TEST(SrtBeginParse, ShowsTheStateWord) {
    const TempFile file(kFile);
    SubtitleParserSRT parser(pathOf(file));
    parser.m_eFlag = static_cast<EN_MEDIA_SUBTITLE_PARSER_FLAG>(0xABC0018);
    const LogCapture log;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(srtLine("Zorb_MediaSubtitleParserSRT::BeginParse -> 0abc0018\n"), log.lines().at(5));
    EXPECT_EQ(0xABC0018u, parser.m_eFlag);
}

TEST(SrtBeginParse, ReadsFromADescriptorTheWholeFile) {
    const TempFile file(kFile);
    ASSERT_EQ(20, lseek(file.fd(), 20, SEEK_SET));
    SubtitleParserSRT parser(file.fd(), 10, 5);
    const LogCapture log;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(kFileTags, tagsOf(parser));
    EXPECT_EQ(fileLine("Open fd =" + std::to_string(parser.pFileProcess->mFd) + "\n"), log.lines().at(1));
    EXPECT_EQ(text("Hello"), textOf(parser, 0));
}

TEST(SrtBeginParse, ReadsAPartOfAFile) {
    const TempFile file("garbage " + kFile + "more garbage");
    SubtitleParserSRT parser(pathOf(file), 8, static_cast<S64>(kFile.size()));
    const LogCapture log;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(kFileTags, tagsOf(parser)) << "positions count from the offset";
    EXPECT_EQ(text("Bye"), textOf(parser, 1));
    EXPECT_EQ(fileLine("Open  " + std::string(file.path()) + "    offset \n"), log.lines().at(1));
}

TEST(SrtBeginParse, WarnsWhenLessCameThanWasAskedFor) {
    const TempFile file(kFile);
    SubtitleParserSRT parser(pathOf(file), 0, 1000);
    VirtualClock clock;
    ThreadGate gate;
    releaseAtSleep(clock, 1, gate, parser);
    const LogCapture log;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ((Lines{kEnter, fileLine("Open  " + std::string(file.path()) + "    offset \n"), loading(parser, 1000),
                     kShortRead, kWait, finished(2), kFlagNull, kExit}),
              log.lines());
    EXPECT_EQ(kFileTags, tagsOf(parser));
    EXPECT_EQ(text("Bye"), textOf(parser, 1)) << "the rest reads 0";
}

TEST(SrtBeginParse, WithoutAFileSourceEndsAtOnce) {
    SubtitleParserSRT parser(nullptr);
    delete parser.pFileProcess;
    parser.pFileProcess = nullptr;
    parser.m_u32TagNum = 5;
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(Lines{kEnter}, log.lines());
    EXPECT_EQ(0u, parser.m_u32TagNum);
}

TEST(SrtBeginParse, FailsWhenTheFileCannotBeOpened) {
    char path[] = "/nowhere/a.srt";
    SubtitleParserSRT parser(path);
    parser.m_u32TagNum = 5;
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ((Lines{kEnter, fileLine("Open filename = /nowhere/a.srt\n"),
                     fileLine("fopen fialded fun=Open line=110\n"), kExit}),
              log.lines());
    EXPECT_EQ(0u, parser.m_u32TagNum);
    EXPECT_EQ(nullptr, parser.m_pu8RawBuffer);
}

TEST(SrtBeginParse, FailsWhenTheBuffersCannotBeHad) {
    const TempFile file(kFile);
    SubtitleParserSRT parser(pathOf(file), 0, -1);
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ((Lines{kEnter, fileLine("Open  " + std::string(file.path()) + "    offset \n"), kExit}), log.lines());
    EXPECT_EQ(nullptr, parser.m_pTagBuffer);
}

TEST(SrtBeginParse, FailsWhenTheLengthCannotBeMeasured) {
    const TempFile file(kFile);
    SubtitleParserSRT parser(pathOf(file));
    const CallFails fails("ftell", 1);
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ((Lines{kEnter, opening(file), kExit}), log.lines());
}

TEST(SrtBeginParse, FailsWithoutAThread) {
    const TempFile file(kFile);
    SubtitleParserSRT parser(pathOf(file));
    {
        const ThreadCreateFails fails;
        const LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ((Lines{kEnter, opening(file), loading(parser, 82), kExit}), log.lines());
    }
    EXPECT_EQ(pthread_t{0}, parser.m_threadParser);
    EXPECT_EQ(FALSE, parser.bParseFinish);
    EXPECT_EQ(TRUE, parser.BeginParse()) << "a later call may succeed";
    {
        const ThreadCreateFails fails;
        EXPECT_EQ(FALSE, parser.BeginParse()) << "whatever the flag says by now";
    }
    EXPECT_EQ(pthread_t{0}, parser.m_threadParser);
}

// --------------------------------------------------------------------------------------------------- the wait

/// Counts the looks at the clock.
struct Watched : SubtitleParserSRT {
    using SubtitleParserSRT::SubtitleParserSRT;
    ~Watched() override { Deinit(); }  // waits for a worker that still calls what this class replaces
    U32 GetSystemTime() override {
        ++looks;
        return SubtitleParserSRT::GetSystemTime();
    }
    size_t looks = 0;
};

TEST(SrtWait, EndsAfterAHundredSecondsInTenthsOfASecond) {
    const TempFile file(kFile);
    Watched parser(pathOf(file));
    const unsigned threads = threadCount();
    VirtualClock clock(5000);
    ThreadGate gate;  // the worker does not even begin
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(std::vector<unsigned>(1000, 100000), clock.sleeps());
    EXPECT_EQ(1 + 1001u, parser.looks) << "the start, and one before each sleep and the end";
    EXPECT_EQ((Lines{kEnter, opening(file), loading(parser, 82), kWait, kFlagNull, kExit}), log.lines());
    EXPECT_EQ(threads + 1, threadCount()) << "nothing waits for a worker that still runs";
    EXPECT_EQ(FALSE, parser.bParseFinish);
}

TEST(SrtWait, IsMeasuredAcrossTheClocksWrap) {
    const TempFile file(kFile);
    SubtitleParserSRT parser(pathOf(file));
    VirtualClock clock(0xFFFFFFFF - 50000);
    ThreadGate gate;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(1000u, clock.sleeps().size());
}

TEST(SrtWait, SucceedsWhenTheFlagIsUpAfterTheLastSleep) {
    for (const size_t sleeps : {1, 3, 999, 1000}) {
        const TempFile file(kFile);
        SubtitleParserSRT parser(pathOf(file));
        VirtualClock clock;
        ThreadGate gate;
        releaseAtSleep(clock, sleeps, gate, parser);
        EXPECT_EQ(TRUE, parser.BeginParse()) << sleeps;
        EXPECT_EQ(std::vector<unsigned>(sleeps, 100000), clock.sleeps());
        EXPECT_EQ(kFileTags, tagsOf(parser));
    }
}

TEST(SrtWait, EndsEarlierWhenTheClockJumps) {
    const TempFile file(kFile);
    for (const unsigned jump : {99899u, 99900u}) {
        SubtitleParserSRT parser(pathOf(file));
        VirtualClock clock;
        ThreadGate gate;
        clock.atSleep(1, [&] { clock.advance(jump); });
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(jump == 99899u ? 2u : 1u, clock.sleeps().size()) << "99999 ms are not enough, 100000 are";
    }
}

TEST(SrtWait, ASmallFileCostsNoSleep) {
    const TempFile file(kFile);
    BOOL result = FALSE;
    size_t looks = 0;
    std::vector<unsigned> sleeps{0};
    for (int i = 0; i < 100 && !sleeps.empty(); ++i) {  // a busy machine may not run the worker within the head start
        Watched parser(pathOf(file));
        const VirtualClock clock;  // stands still: the head start ends by its count of looks alone
        result = parser.BeginParse();
        looks = parser.looks;
        sleeps = clock.sleeps();
    }
    EXPECT_EQ(TRUE, result);
    EXPECT_EQ(1u, looks) << "the head start looks at a clock of its own";
    EXPECT_EQ(std::vector<unsigned>{}, sleeps);
}

/// A table that takes no more than so many tags.
struct Limited : SubtitleParserSRT {
    Limited(const TempFile& file, U32 tags) : SubtitleParserSRT(pathOf(file)), limit(tags) {}
    BOOL AddTag(const U32 start, const U32 end, const S64 pos, const EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE type) override {
        return m_u32TagNum < limit ? SubtitleParserSRT::AddTag(start, end, pos, type) : FALSE;
    }
    const U32 limit;
};

TEST(SrtWait, ATagThatCannotBeStoredFailsAfterTheLimit) {
    for (const std::string& content : {kFile, utf16le(kFile), utf16be(kFile)}) {
        const TempFile file(content);
        Limited parser(file, 1);
        const unsigned threads = threadCount();
        VirtualClock clock;
        const LogCapture log;
        EXPECT_EQ(FALSE, beginSlowly(parser, clock));
        EXPECT_EQ(std::vector<unsigned>(1000, 100000), clock.sleeps());
        EXPECT_EQ(FALSE, parser.bParseFinish);
        EXPECT_EQ(threads, threadCount()) << "a worker that is over is joined";
        EXPECT_EQ((Lines{kEnter, opening(file), loading(parser, static_cast<long>(content.size())), kWait, finished(1),
                         kFlagNull, kExit}),
                  log.lines());
    }
}

// ------------------------------------------------------------------------------------------------- the worker

TEST(SrtWorker, HasAStackOf65536Bytes) {
    struct Measuring : SubtitleParserSRT {
        using SubtitleParserSRT::SubtitleParserSRT;
        BOOL AddTag(const U32, const U32, const S64, const EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE) override {
            thread = pthread_self();
            pthread_attr_t attributes;
            if (pthread_getattr_np(thread, &attributes) != 0) return FALSE;
            pthread_attr_getstacksize(&attributes, &stack);
            pthread_attr_destroy(&attributes);
            return TRUE;
        }
        pthread_t thread = 0;
        size_t stack = 0;
    };
    const TempFile file(kFile);
    Measuring parser(pathOf(file));
    ASSERT_EQ(TRUE, parser.BeginParse());
    EXPECT_NE(pthread_self(), parser.thread);
    EXPECT_EQ(parser.m_threadParser, parser.thread);
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    EXPECT_GE(parser.stack, 65536u);  // the sanitizers' own data comes on top
#else
    EXPECT_EQ(65536u, parser.stack);
#endif
}

TEST(SrtWorker, MayEndAfterBeginParseHasGivenUp) {
    const TempFile file(kFile);
    SubtitleParserSRT parser(pathOf(file));
    const unsigned threads = threadCount();
    VirtualClock clock;
    ThreadGate gate;
    EXPECT_EQ(FALSE, parser.BeginParse());
    gate.open();
    while (__atomic_load_n(&parser.bParseFinish, __ATOMIC_ACQUIRE) == FALSE) sched_yield();
    EXPECT_EQ(TRUE, parser.Deinit());
    EXPECT_EQ(threads, threadCount()) << "joined before its buffers went";
}

/// A file that takes a worker some time.
std::string longFile() {
    std::string content;
    for (int i = 0; i < 5000; ++i) content += kFile;
    return content;
}

// Whatever ends the buffers waits for the worker that uses them.
TEST(SrtWorker, IsWaitedForByWhateverTakesItsBuffers) {
    const TempFile file(longFile());
    const auto runningWorker = [&file](ThreadGate& gate) {
        auto parser = std::make_unique<SubtitleParserSRT>(pathOf(file));
        EXPECT_EQ(FALSE, parser->BeginParse());
        gate.open();
        return parser;
    };
    const unsigned threads = threadCount();
    const unsigned descriptors = openDescriptors();
    {
        VirtualClock clock;
        ThreadGate gate;
        runningWorker(gate).reset();
    }
    {
        VirtualClock clock;
        ThreadGate gate;
        const auto parser = runningWorker(gate);
        EXPECT_EQ(TRUE, parser->Deinit());
        EXPECT_EQ(threads, threadCount());
    }
    {
        VirtualClock clock;
        ThreadGate gate;
        const auto parser = runningWorker(gate);
        EXPECT_EQ(TRUE, parser->Init(10));
        EXPECT_EQ(0u, parser->m_u32TagNum) << "nobody adds to the new table";
        EXPECT_EQ(threads, threadCount());
    }
    {
        VirtualClock clock;
        ThreadGate gate;
        const auto parser = runningWorker(gate);
        const LogCapture log;
        EXPECT_EQ(TRUE, parser->BeginParse());
        EXPECT_EQ(10000u, parser->GetTagNum());
        const Lines lines = log.lines();
        const auto enter = std::find(lines.begin(), lines.end(), kEnter);
        EXPECT_LE(std::count(lines.begin(), enter, finished(10000)), 1);
        EXPECT_EQ(1, std::count(enter, lines.end(), finished(10000)))
            << "the earlier worker ended before anything began";
        EXPECT_EQ(threads, threadCount());
    }
    EXPECT_EQ(threads, threadCount());
    EXPECT_EQ(descriptors, openDescriptors());
}

TEST(SrtWorker, OfARepeatedBeginParseReadsTheFileAgain) {
    const TempFile first(kFile), second(utf16le(kFile + "3\r\n" + kT + "\r\nMore"));
    const unsigned descriptors = openDescriptors();
    const unsigned threads = threadCount();
    {
        SubtitleParserSRT parser(pathOf(first));
        for (int i = 0; i < 3; ++i) {
            ASSERT_EQ(TRUE, parser.BeginParse());
            ASSERT_EQ(kFileTags, tagsOf(parser));
            ASSERT_EQ(text("Hello"), textOf(parser, 0));
            ASSERT_EQ(descriptors + 1, openDescriptors());
            ASSERT_EQ(threads, threadCount());
        }
        // another file under the same source
        strcpy(parser.pFileProcess->pFileName, second.path());
        ASSERT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(3u, parser.GetTagNum());
        EXPECT_EQ(kUtf16Le, parser.m_eCodeType);
        EXPECT_EQ(text("More"), textOf(parser, 2));
    }
    EXPECT_EQ(descriptors, openDescriptors());
    EXPECT_EQ(threads, threadCount());
}

TEST(SrtParser, TheDestructorClosesTheFile) {
    const TempFile file(kFile);
    const unsigned descriptors = openDescriptors();
    {
        SubtitleParserSRT parser(file.fd(), 0, 0);
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(descriptors + 2, openDescriptors()) << "the duplicate, and the stream's own: open until the end";
        EXPECT_EQ(TRUE, parser.StopParse());
        EXPECT_EQ(TRUE, parser.Deinit());
        EXPECT_EQ(descriptors + 2, openDescriptors());
    }
    EXPECT_EQ(descriptors, openDescriptors());
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
    EXPECT_EQ(text("and a half\n"), textOf(*parser, index));
    EXPECT_EQ(text("One minute"), textOf(*parser, parser->GetTag(0, 61499)));
    EXPECT_EQ(0u, parser->GetTag(0, 10)) << "before the first";
    parser->StopParse();
    parser->Deinit();
    delete parser;
}

}  // namespace
