// MicroDVD: which files are accepted, frames and rates, the first line, 16-bit headers. Its extraction is tested with
// the other dialects'.
#include "subtitle/SubtitleParserSubMicroDVD.h"

#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"
#include "tests/support/Rows.h"

namespace {

using namespace test;
using Parser = SubtitleParserSubMicroDVD;

// Behind the mark, an entry on the first line is met below index 4; in native text (0xFF is not UTF-8) too.
const std::string kMark = kUtf8Mark;
constexpr char kNotUtf8[] = "\r\n\xFF\r\n";

// --------------------------------------------------------------------------------------------- rates and times

TEST(MicroDvd, DerivesTheDurationFromThePlayersRate) {
    const struct {
        U32 rate;
        U64 nanoseconds;
        U32 stored;
    } rows[] = {
        {0, 34482758, 0},  // kept(mdvd-rate-29): 29 frames per second
        {1, 1000000000, 1},     {24, 41666666, 24},          {25, 40000000, 25},
        {99, 10101010, 99},     {100, 34482758, 100},        {120, 34482758, 120},
        {999, 34482758, 999},   {1000, 34482758, 1000},      {1001, 1000000000, 1},
        {1499, 1000000000, 1},  {1500, 500000000, 2},        {23976, 41666666, 24},  // kept(mdvd-rate-rounded)
        {25000, 40000000, 25},  {29970, 33333333, 30},       {99499, 10101010, 99},
        {99500, 10000000, 100}, {4294967295u, 232, 4294967},
    };
    for (const auto& row : rows) {
        Parsed<Parser> parsed("{0}{0}x"s + kNotUtf8, row.rate);
        EXPECT_EQ(TRUE, parsed.result);
        EXPECT_EQ(row.nanoseconds, parsed.parser.m_u64NanoSecPerFrame) << row.rate;
        EXPECT_EQ(row.stored, parsed.parser.m_u32FrameRrate) << row.rate;
    }
}

TEST(MicroDvd, DerivesTheDurationAgainForARepeatedParse) {
    Parsed<Parser> parsed("{100}{150}Hi"s + kNotUtf8, 25);
    EXPECT_EQ("4000-6000 @10 Hi", entriesOf(parsed.parser));
    parsed.parser.SetFrameRate(50);
    EXPECT_EQ(TRUE, parsed.parser.BeginParse());
    EXPECT_EQ("2000-3000 @10 Hi", entriesOf(parsed.parser));
}

TEST(MicroDvd, CountsFramesInUnsigned64Bits) {
    expectFiles<Parser>({
        {"{100}{150}Hi"s + kNotUtf8, "4000-6000 @10 Hi", 25},
        {"{100}{150}Hi"s + kNotUtf8, "3448-5172 @10 Hi", 0},
        {"{100}{150}Hi"s + kNotUtf8, "3448-5172 @10 Hi", 120},
        {"{100}{150}Hi"s + kNotUtf8, "4166-6249 @10 Hi", 23976},
        {"{0}{0}text"s + kNotUtf8, "0-0 @6 text", 25},
        {"{1}{2}Hi"s + kNotUtf8, "41-83 @6 Hi", 24},                            // cut, not rounded
        {"{4294967295}{4294967296}Hi"s + kNotUtf8, "4294967256-0 @24 Hi", 25},  // x 40, kept in 32 bits
        {"{150}{100}Hi"s + kNotUtf8, "6000-4000 @10 Hi", 25},
    });
    // 10000000000 ns per frame: the second product is cut to 64 bits
    expectFiles<Parser>({{kMark + "{1}{1}0.1\r\n{1000000000}{1}Hi", "1316134912-10000 @29 Hi"},
                         {kMark + "{1}{1}0.1\r\n{4294967295}{1}Hi", "280915220-10000 @29 Hi"}});
}

TEST(MicroDvd, TakesTheRateFromTheFirstLine) {
    const struct {
        const char* rate;
        U64 nanoseconds;
    } rows[] = {
        {"23.976", 41708375},
        {"25.0", 40000000},
        {"25.000", 40000000},
        {"29.97", 33366700},
        {"23.9", 41841004},
        {"23.5", 42553191},
        {"23.05", 42553191},  // kept(mdvd-rate-zeros): the fraction's value has one digit
        {"23.10", 43290043},
        {"23.999", 41668402},
        {"23.9999", 41668402},  // cut to thousandths
        {"0.0", 0},
        {"0.001", 10000000000},
        {"25,5", 39215686},  // any separator
        {"25 . 5", 39215686},
        {" 25.5 frames per second", 39215686},
        {"12:30, a quarter to one", 81300813},  // kept(mdvd-text-as-rate): and any text that begins with two numbers
        {"25.4294967295", 39325179},
        {"4294967295.5", 0},
        {"4294967.296", 232},
    };
    for (const auto& row : rows) {
        const std::string line = "{1}{1}"s + row.rate + "\r\n";
        Parsed<Parser> parsed(kMark + line + "{100}{150}Hi", 30);
        EXPECT_EQ(TRUE, parsed.result);
        EXPECT_EQ(row.nanoseconds, parsed.parser.m_u64NanoSecPerFrame) << row.rate;
        EXPECT_EQ(30u, parsed.parser.m_u32FrameRrate);
        EXPECT_EQ(1u, parsed.parser.GetTagNum()) << "a rate line is no entry";
        EXPECT_EQ(static_cast<S64>(3 + line.size() + 10), parsed.parser.m_pTagBuffer[0].s64Pos);
    }
    expectFiles<Parser>({{kMark + "{1}{1}23.976\r\n{2397}{2400}Hi", "99974-100100 @29 Hi"},
                         {"{1}{1}23.976\r\n{2397}{2400}Hi"s + kNotUtf8, "99974-100100 @26 Hi"}});
}

TEST(MicroDvd, TakesTheRateWhateverStandsInTheBracesBeforeIt) {
    expectFiles<Parser>({{kMark + "{100}{150}23.976\r\n{2397}{2400}Hi", "99974-100100 @33 Hi"},
                         {kMark + "{x}{y}23.976\r\n{2397}{2400}Hi", "99974-100100 @29 Hi"}});
}

TEST(MicroDvd, TakesOtherFirstLinesAsEntries) {
    expectFiles<Parser>({
        {kMark + "{1}{1}25\r\n{100}{150}Hi", "40-40 @9 25; 4000-6000 @23 Hi", 25},
        {kMark + "{1}{1}25 fps\r\n{100}{150}Hi", "40-40 @9 25 fps; 4000-6000 @27 Hi", 25},
        {kMark + "{1}{1}.5\r\n{100}{150}Hi", "40-40 @9 .5; 4000-6000 @23 Hi", 25},
        {kMark + "{10}{20}Hi\r\n{100}{150}Ho", "400-800 @11 Hi; 4000-6000 @25 Ho", 25},
        {kMark + "{10}{20}{y:i}Hi\r\n{100}{150}{y:i}Ho", "400-800 @11 Hi; 4000-6000 @30 Ho", 25},
        // two headers in a row are two entries, on the first line alone
        {"{10}{20}{30}{40}Hi\r\n{50}{60}{70}{80}Ho"s + kNotUtf8, "400-800 @8 ; 1200-1600 @16 Hi; 2000-2400 @28 Ho", 25},
    });
}

TEST(MicroDvd, GoesByTheIndexOfTheFirstLine) {
    expectFiles<Parser>({
        {"\n\n\n{100}{150}Hi"s + kNotUtf8, "4000-6000 @13 Hi", 25},
        {"x\r\n{100}{150}Hi"s + kNotUtf8, "4000-6000 @13 Hi", 25},
        {"x\n{1}{1}20.0\n{100}{150}Hi"s + kNotUtf8, "5000-7500 @23 Hi", 25},
        // kept(mdvd-first-line)
        {"\n\n\n\n{100}{150}Hi"s + kNotUtf8, "0-0 @14 Hi", 25},  // behind it, no rate is ever derived
        {"xx\r\n{100}{150}Hi"s + kNotUtf8, "0-0 @14 Hi", 25},
        {"xx\r\n{1}{1}25.0\r\n{100}{150}Hi"s + kNotUtf8, "0-0 @10 25.0; 0-0 @26 Hi", 25},
    });
    Parsed<Parser> parsed("xx\r\n{100}{150}Hi"s + kNotUtf8, 23976);
    EXPECT_EQ(0u, parsed.parser.m_u64NanoSecPerFrame);
    EXPECT_EQ(23976u, parsed.parser.m_u32FrameRrate);
}

TEST(MicroDvd, LosesThreeBytesOfUtf8WithoutAMark) {
    expectFiles<Parser>({
        {"{100}{150}A\r\n{200}{250}B", "0-0 @23 B", 25},  // kept(mdvd-unmarked-zero)
        {"\xC3\xA9\r\n{200}{250}B", "0-0 @14 B", 25},
        // kept(mdvd-unmarked-rate-line)
        {"{1}{1}23.976\r\n{2397}{2400}Hi", "40-120 @20 Hi", 25},  // "{1}23" is taken for two frames
        // kept(mdvd-unmarked-first-two)
        {"{0}{100}A\r\n{200}{250}B", "4000-0 @16 B", 25},  // "{100}A" for one, with the next line's text
        {"\n\n\n{100}{150}A", "4000-6000 @13 A", 25},
        {"x\r\n{100}{150}A", "4000-6000 @13 A", 25},
    });
    // the last byte is not looked at
    expectFiles<Parser>({{"{100}{150}A\r\n{200}{250}B\xFF", "0-0 @23 B\xFF", 25},
                         {"{100}{150}A\r\n{200}{250}B\xFF.", "4000-6000 @10 A; 8000-10000 @23 B\xFF.", 25}});
}

TEST(MicroDvd, ReadsTheFirstLineWhateverItsScanGives) {
    expectFiles<Parser>({
        // one number, and the second brace is the next line's
        {"{5}Hi\r\n{100}{150}A"s + kNotUtf8, "200-0 @12 A", 25},
        // none
        {"{x}Hi\r\n{100}{150}A"s + kNotUtf8, "0-0 @12 A", 25},
        // no brace at all: the data's end
        {"{1x{2"s + kNotUtf8, "40-80 @10 ", 25},
        {"{1x{2}"s + kNotUtf8, "40-80 @11 ", 25},
        {"{x\r\n{1x{2"s + kNotUtf8, "0-0 @14 ", 25},
    });
}

// ------------------------------------------------------------------------------------------------- other lines

// kept(mdvd-lf)
TEST(MicroDvd, ReadsAnEntryOfEachLine) {
    expectFiles<Parser>({
        {"{1}{2}A\n{3}{4}B\n\n\n{5}{6}C\r\n"s + "\xFF.", "40-80 @6 A\n; 120-160 @14 B; 200-240 @24 C", 25},
        {"{1}{2}A\r{3}{4}B\r"s + "\xFF.", "40-80 @6 A\r; 120-160 @14 B\r\xFF.", 25},
        {"{1}{2}A\r\n \t{3}{4}B"s + kNotUtf8, "40-80 @6 A; 120-160 @17 B", 25},
        {"{1}{2}A\r\nmore\r\n{3}{4}B"s + kNotUtf8, "40-80 @6 A; 120-160 @21 B", 25},
        {"{1}{2}A\r\n{3}B\r\n{}{}\r\n{5}{6}C"s + kNotUtf8, "40-80 @6 A; 200-240 @27 C", 25},
        {"{1}{2}a|b"s + kNotUtf8, "40-80 @6 a|b", 25},  // kept(break-bar)
        {"{1}{2}\r\n{3}{4}B"s + kNotUtf8, "40-80 @6 ; 120-160 @14 B", 25},
        {"{ 1 } { 2 }A"s + kNotUtf8, "40-80 @11 A", 25},
        {"{1}{2}A\r\n{3}{4"s + kNotUtf8, "40-80 @6 A; 120-160 @19 ", 25},  // one brace: the data's end
        {"{1}{2}A\r\n{3}{4\r\n{5}{6}B"s + kNotUtf8, "40-80 @6 A; 120-160 @19 B", 25},
        {"{1}{2}A\r\n{3}{4\r\n{5}C"s + kNotUtf8, "40-80 @6 A; 120-160 @19 C", 25},
        {"{1x{2}A}\r\n{3}{4}B"s + kNotUtf8, "40-80 @8 ; 120-160 @16 B", 25},
    });
}

TEST(MicroDvd, FindsTheEndOfAnUnusualHeaderBehindUsualOnes) {
    const std::string text(40, 'a');
    const std::string usual = "{1}{2}" + text + "}\r\n";
    const std::string shown = " " + text + "}";
    expectFiles<Parser>({
        {usual + usual + "{ 3 } { 4 }b\r\n" + usual + "{5} {6}" + text + kNotUtf8,
         "40-80 @6" + shown + "; 40-80 @55" + shown + "; 120-160 @109 b; 40-80 @118" + shown + "; 200-240 @168 " + text,
         25},
        // the second brace is the last one of its line
        {"{ 1 } { 2 }b}\r\n" + usual + usual + "{3}{4" + text + "}" + kNotUtf8,
         "40-80 @11 b}; 40-80 @21" + shown + "; 40-80 @70" + shown + "; 120-160 @159 ", 25},
    });
}

TEST(MicroDvd, StopsAtAFirstLineThatCannotBeStored) {
    Rigged<Parser> parser(-1, 0, 0);
    parser.tagsThatFit = 0;
    load(parser, "{1}{2}A"s + kNotUtf8);
    parser.ParserThread();
    EXPECT_EQ(FALSE, parser.bParseFinish);
}

TEST(MicroDvd, RefusesWhatSpeaksForAnotherDialect) {
    const std::string entry = "\r\n{100}{150}Hi";
    expectFiles<Parser>({
        {"x" + entry + kNotUtf8, "4000-6000 @13 Hi", 25},
        {"x1" + entry, "refused"},  // kept(sub-second-digit)
        {"[00:00:01]" + entry, "refused"},
        {"00:00:01.00,00:00:04.50" + entry, "refused"},
        {"12" + entry, "refused"},
        {"1" + entry + kNotUtf8, "4000-6000 @13 Hi", 25},
        {"title" + entry + kNotUtf8, "0-0 @17 Hi", 25},
        {"title\r\nx1" + entry, "refused"},
        {"{1}Hi" + entry + kNotUtf8, "40-0 @12 Hi", 25},
        {"{y:i}", "refused"},
        {"{1}", "refused"},
        {"{1}{", "refused"},
        {"{1}{2", "80-0 @5 ", 25},
        {"{1}{x}", "refused"},
        {" {1}{2}Hi"s + kNotUtf8, "40-80 @7 Hi", 25},
        {"", "refused"},
        {"x", "refused"},
        {" \r\n", "refused"},
        {kMark + "{100}{150}Hi", "refused"},  // the mark hides the only entry
        {kMark + "{100}{150}Hi" + entry, "4000-6000 @13 Hi; 4000-6000 @27 Hi", 25},
    });
}

TEST(MicroDvd, TellsTheEncodingByMarkAndContent) {
    const std::string sample = "x\r\n{100}{150}Hi\r\n";
    const std::pair<std::string, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE> rows[] = {
        {sample, kUtf8},
        {sample + "\xC3\xA9 ", kUtf8},
        {sample + "\xE9 ", kUtf8},  // cut off by the end that is looked at
        {sample + "\xE9  ", kUtf8},
        {sample + "\xE9   ", kNative},
        {sample + "\xFF", kUtf8},
        {sample + "\xFF ", kNative},
        {sample + "\xF0\x9F\x98\x80 ", kNative},  // four bytes a character
        {kMark + sample, kUtf8},
        {kMark + sample + "\xFF ", kUtf8},
        {utf16le(sample), kUtf16Le},
        {utf16be(sample), kUtf16Be},
    };
    for (const auto& [content, codeType] : rows) {
        const LogCapture log;
        Parsed<Parser> parsed(content);
        EXPECT_EQ(TRUE, parsed.result) << show(content);
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
        parsed.parser.GetTrackInfo(0, &info);
        EXPECT_EQ(codeType, info.eCodeType) << show(content);
        EXPECT_EQ("m_eCodeType = " + std::to_string(codeType) + " \n", log.texts()[2]);
        EXPECT_EQ(0, memcmp(content.data(), parsed.parser.m_pu8RawBuffer, content.size())) << "nothing is swapped";
    }
}

// ------------------------------------------------------------------------------------------------- 16-bit text

TEST(MicroDvd, Reads16BitText) {
    const FileRow rows[] = {
        {"x\r\n{100}{150}Hi\r\n", "4000-6000 @28 Hi", 25},
        {"x\r\n{100}{150}{y:i}a|<i>b\r\n", "4000-6000 @28 {y:i}a|<i>b", 25},
        {"{100}{150}A\r\n{200}{250}B\r\n", "4000-6000 @22 A; 8000-10000 @48 B", 25},
        {"{100}{150}A\r\n", "refused", 25},                    // the mark hides the only entry
        {"xxxx\r\n{100}{150}Hi\r\n", "4000-6000 @34 Hi", 25},  // a rate is derived for every line
        {"x\r\n{1}{1}23.976\r\n{100}{150}Hi\r\n", "40-40 @20 23.976; 4000-6000 @56 Hi", 25},  // kept(mdvd-utf16)
        {"x\r\n{100}{150}A\r\n{y:i}\r\n{1}B\r\nmore\r\n{200}{250}C\r\n", "4000-6000 @28 A; 8000-10000 @92 C", 25},
        {"x\r\n{1}{2}A\r\n{3}{4", "40-80 @20 A; 120-160 @36 ", 25},
        {"x\r\n{1}{2}A\r\n{3x{4\r\n{5}C", "40-80 @20 A; 120-160 @48 ", 25},
        {"x\r\n{1}{2}A\r\n{3}{4\r\n{5}C", "40-80 @20 A; 120-160 @46 C", 25},
        {"x\r\n{1}{2", "40-80 @18 ", 25},
        {"x\r\n{1}", "refused", 25},
        {"x\r\n{123456789}{1}A\r\n{1}{2}B\r\n", "643304264-40 @36 A; 40-80 @54 B", 25},
        {"x\r\n{123456789}{1}A\r\n", "refused", 25},  // twelve characters are looked at
        {"x\r\n{12345678}{1}A\r\n", "493827120-40 @34 A", 25},
        {"", "refused", 25},
    };
    for (const FileRow& row : rows) {
        expectFiles<Parser>(
            {{utf16le(row.content), row.expected, row.rate}, {utf16be(row.content), row.expected, row.rate}});
    }
    expectFiles<Parser>({
        {utf16le("x\n{100}{150}A\n{200}{250}B\n"), "4000-6000 @26 A\n{200}{250}; 8000-10000 @50 B\n", 25},
        {utf16be("x\n{100}{150}A\n{200}{250}B\n"), "refused", 25},  // LF alone ends no line
        {utf16le("x\r\n \t{100}{150}A\r\n"), "4000-6000 @32 A", 25},
        {utf16be("x\r\n {100}{150}A\r\n"), "refused", 25},  // a blank is no white space as it is stored
        {utf16le("1\r\n{100}{150}A\r\n"), "refused", 25},   // the mark is the first unit, the digit the second
        {utf16be("1\r\n{100}{150}A\r\n"), "4000-6000 @28 A", 25},
        {"\xFE\xFF\x30\0"s + utf16be("\r\n{100}{150}A\r\n", false), "refused", 25},  // U+3000, stored like a digit
        {utf16le("x\r\n12\r\n{100}{150}A\r\n"), "refused", 25},
        {utf16le("x\r\n{12\r\n{100}{150}A\r\n"), "4000-6000 @38 A", 25},
    });
}

TEST(MicroDvd, RoundsTheRateAgainForEach16BitLine) {
    // 3500 for the first line, 4 from the second on
    Parsed<Parser> twice(utf16le("x\r\n{1}{2}A\r\n{1}{2}B\r\n"), 3500000);
    EXPECT_EQ("250-500 @20 A; 250-500 @38 B", entriesOf(twice.parser));
    EXPECT_EQ(4u, twice.parser.m_u32FrameRrate);
    // 100 for the first line, which is too much for the others
    Parsed<Parser> tooMuch(utf16le("{1}{2}A\r\n{3}{4}B\r\n"), 100000);
    EXPECT_EQ("10-20 @14 A; 103-137 @32 B", entriesOf(tooMuch.parser));
    EXPECT_EQ(100u, tooMuch.parser.m_u32FrameRrate);
}

TEST(MicroDvd, ScansHeadersOf256Units) {
    for (const bool big : {false, true}) {
        for (const size_t length : {256U, 257U, 20004U}) {
            const std::string header = "{1}{" + std::string(length - 6, ' ') + "2}";
            const std::string content = "x\r\n{1}{2}A\r\n" + header + "B\r\n{3}{4}C\r\n";
            const LogCapture log;
            Parsed<Parser> parsed(big ? utf16be(content) : utf16le(content), 25);
            ASSERT_EQ(TRUE, parsed.result);
            const auto at = [](size_t units) { return " @" + std::to_string(2 * units) + " "; };
            EXPECT_EQ("40-80" + at(10) + "A; " + (length == 256 ? "40-80" + at(13 + length) + "B; " : "") + "120-160" +
                          at(13 + length + 9) + "C",
                      entriesOf(parsed.parser));
            const std::vector<std::string> texts = log.texts();
            EXPECT_EQ(1, std::count(texts.begin(), texts.end(),
                                    "SubtitleParserSubMicroDVD::parseThread u32TagSize = " + std::to_string(length)))
                << "a longer header is counted all the same";
        }
    }
}

TEST(MicroDvd, CountsAHeaderThatIsNeverClosedToTheEnd) {
    const LogCapture log;
    Parsed<Parser> parsed(utf16le("x\r\n{1}{2}A\r\n{3\r\n{4}"), 25);
    ASSERT_EQ(TRUE, parsed.result);
    const std::vector<std::string> texts = log.texts();
    EXPECT_EQ(1, std::count(texts.begin(), texts.end(), "SubtitleParserSubMicroDVD::parseThread u32TagSize = 7"));
    EXPECT_EQ(1, std::count(texts.begin(), texts.end(), "SubtitleParserSubMicroDVD::parseThread u32TagSize = 3"));
}

// --------------------------------------------------------------------------------------------------------- logs

Lines from(const Messages& texts) { return linesFrom("SubtitleParserSubMicroDVD", texts); }

TEST(MicroDvd, LogsARateLineAndEntries) {
    Loaded<Parser> loaded(kMark + "{1}{1}23.976\r\n{2397}{4294967295}Hi\r\n{x}\r\n", kUtf8);
    const LogCapture log;
    loaded.parser.ParserThread();
    EXPECT_EQ(from({"ParserThread first line::u32Frames1= 1, u32Frames2 = 1\n",
                    "ParserThread::m_u64NanoSecPerFrame = 41708375, u32Frames1= 2397,u32Frames2= -1,u32Time1= 99974, "
                    "u32Time2 = -1252519880\n",
                    "SubtitleParserSubMicroDVD::ParserThread -> Finished : Tag num = 1, 1\n"}),
              log.lines());
}

TEST(MicroDvd, LogsAFirstLineOnlyWithBothNumbers) {
    Loaded<Parser> loaded("{5}Hi\r\n{100}A", kNative);
    loaded.parser.SetFrameRate(25);
    const LogCapture log;
    loaded.parser.ParserThread();
    EXPECT_EQ(from({"ParserThread::m_u64NanoSecPerFrame = 40000000, u32Frames1= 5,u32Frames2= 0,u32Time1= 200, "
                    "u32Time2 = 0\n",
                    "SubtitleParserSubMicroDVD::ParserThread -> Finished : Tag num = 1, 1\n"}),
              log.lines());
}

TEST(MicroDvd, LogsTheRateOfAPlayerThatSetsNone) {
    Loaded<Parser> loaded("{100}{150}Hello\r\n", kNative);
    const LogCapture log;
    loaded.parser.ParserThread();
    EXPECT_EQ(from({"ParserThread first line::u32Frames1= 100, u32Frames2 = 150\n",
                    "ParserThread::m_u64NanoSecPerFrame = 34482758, u32Frames1= 100,u32Frames2= 150,u32Time1= 3448, "
                    "u32Time2 = 5172\n",
                    "SubtitleParserSubMicroDVD::ParserThread -> Finished : Tag num = 1, 1\n"}),
              log.lines());
}

TEST(MicroDvd, LogsEach16BitHeader) {
    for (const bool big : {false, true}) {
        const std::string content = "x\r\n{y:i}{z}\r\n{100}{150}A\r\n";
        Loaded<Parser> loaded(big ? utf16be(content) : utf16le(content), big ? kUtf16Be : kUtf16Le);
        loaded.parser.SetFrameRate(25);
        const LogCapture log;
        loaded.parser.ParserThread();
        EXPECT_EQ(from({"SubtitleParserSubMicroDVD::parseThread u32TagSize = 8",
                        "SubtitleParserSubMicroDVD::parseThread u32TagSize = 10",
                        "ParserThread::m_u64NanoSecPerFrame = 40000000,u32Frames1= 100,u32Frames2= 150,u32Time1= 4000, "
                        "u32Time2 = 6000\n",
                        "SubtitleParserSubMicroDVD::ParserThread -> Finished : Tag num = 1, 1\n"}),
                  log.lines());
    }
}

// ---------------------------------------------------------------------------------------------------- bad input

TEST(MicroDvd, AnswersHeadersOf10000Digits) {
    const std::string header = "{" + std::string(10000, '9') + "}{" + std::string(10000, '8') + "}Hi\r\n";
    // 16 digits are read, and two more are taken for brackets: 9999999999999999 modulo 2^32, twice
    expectFiles<Parser>({{header + kNotUtf8, "1982332888-1982332888 @20004 Hi", 25}});
    expectFiles<Parser>(
        {{kMark + header + header, "1982332888-1982332888 @20007 Hi; 1982332888-1982332888 @40015 Hi", 25}});
    expectFiles<Parser>({{utf16le("x\r\n{1}{2}A\r\n" + header), "40-80 @20 A", 25},
                         {utf16be("x\r\n{1}{2}A\r\n" + header), "40-80 @20 A", 25},
                         {utf16le("x\r\n" + header), "refused", 25}});
}

TEST(MicroDvd, AnswersBracesThatNeverClose) {
    std::string content = "{1}{2}A\r\n";
    while (content.size() < 1 << 20) content += "{1x{2\r\n";
    expectFiles<Parser>({{content + kNotUtf8, "40-80 @6 A; 40-80 @" + std::to_string(content.size() + 5) + " ", 25}});
    const std::string wide = "x\r\n{1}{2}A\r\n" + std::string(1 << 20, '{');
    expectFiles<Parser>({{utf16le(wide), "40-80 @20 A", 25}, {utf16be(wide), "40-80 @20 A", 25}});
}

}  // namespace
