// The DVB subtitle system dialect: both line shapes, the fixed distance of the text, the listing, and the extraction
// that ends at a time stamp. Its one-line extraction is tested with the other dialects'.
#include "subtitle/SubtitleParserSubDvbSubtitleSystem.h"

#include "tests/support/Cuts.h"
#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"
#include "tests/support/Rows.h"

namespace {

using namespace test;
using Parser = SubtitleParserSubDvbSubtitleSystem;

TEST(DvbSubtitleSystem, ReadsBothShapes) {
    expectFiles<Parser>({
        {"00:00:01:00 00:00:04:00 Hello\r\n", "1000-4000 @24 Hello"},
        // kept(dvb-text-column)
        {"12 00:00:01,500 00:00:04,000 Hello\r\n", "1500-4000 @30 ello"},  // one further than this line's text
        {"123 00:00:01,500 00:00:04,000 Hello\r\n", "1500-4000 @30 Hello"},
        // kept(dvb-number-0)
        {"0 00:00:01,500 00:00:04,000 Hello\r\n", "1500-4000 @24 000 Hello"},  // a number 0 counts as none
        {"000 00:00:01,500 00:00:04,000 Hello\r\n", "1500-4000 @24 4,000 Hello"},
        {"00:00:01:00 00:00:04:00 A\r\n12 00:00:05,000 00:00:06,000 B\r\n00:00:07:00 00:00:08:00 C",
         "1000-4000 @24 A; 5000-6000 @57 ; 7000-8000 @83 C"},
        {"00:00:01:00 00:00:02:00 A\n00:00:03:00 00:00:04:00 B\n",
         "1000-2000 @24 A\n00:00:03:00 00:00:04:00 ; 3000-4000 @50 B\n"},
        {"00:00:01:00 00:00:02:00 A\r00:00:03:00 00:00:04:00 B\r\n",
         "1000-2000 @24 A\r00:00:03:00 00:00:04:00 ; 3000-4000 @50 B"},
        {" \t\r\n00:00:01:00 00:00:04:00 Hello\r\n", "1000-4000 @28 Hello"},
    });
}

TEST(DvbSubtitleSystem, TakesTheFourthFieldAsMilliseconds) {
    expectFiles<Parser>({
        {"00:00:01:24 00:00:04:5 x Hello\r\n", "1024-4005 @24  Hello"},  // kept(dvb-frames)
        {"01:02:03:04 99:59:59:99 Hello\r\n", "3723004-359999099 @24 Hello"},
        {"123 00:00:01,5 00:00:04,50 x x Hello\r\n", "1005-4050 @30  Hello"},
        {"00-00-01-24 00_00_04_5 x Hello\r\n", "1024-4005 @24  Hello"},                       // any separators
        {"4294967295:0:0:0 0:0:0:4294967296 Hello\r\n", "4291367296-0 @24 294967296 Hello"},  // 32 bits, and no more
    });
}

TEST(DvbSubtitleSystem, TakesTheTextAtAFixedDistance) {
    expectFiles<Parser>({
        {"0:00:01:00 0:00:04:00 Hello\r\n", "1000-4000 @24 llo"},
        {"00:00:01:00  00:00:04:00 Hello\r\n", "1000-4000 @24  Hello"},
        {"0:0:1:0 0:0:2:0\r\nof the next line\r\n0:00:03:00 0:00:04:00   B\r\n",
         "1000-2000 @24 next line; 3000-4000 @59 B"},
        {"0:0:1:0 0:0:2:0 x\r\nlost\r\n0:00:03:00 0:00:04:00   B\r\n",
         "1000-2000 @24 \n0:00:03:00 0:00:04:00   ; 3000-4000 @49 B"},
        // an entry that begins within that distance is lost
        {"0:0:1:0 0:0:2:0\r\n00:00:03:00 00:00:04:00 B\r\n0:00:05:00 0:00:06:00   C",
         "1000-2000 @24 3:00 00:00:04:00 B; 5000-6000 @68 C"},
        {"7 0:0:1,0 0:0:2,0 A\r\n00:00:03:00 00:00:04:00 B\r\n0:00:05:00 0:00:06:00   C",
         "1000-2000 @30 00 00:00:04:00 B; 5000-6000 @72 C"},
        {"0:0:1:0 0:0:2:0", "1000-2000 @24 "},  // behind the data: the plain sum
        {"7 0:0:1,0 0:0:2,0", "1000-2000 @30 "},
        {"00:00:01:00 00:00:04:00", "1000-4000 @24 "},
        {"00:00:01:00 00:00:04:00\r\n00:00:05:00 00:00:06:00 B\r\n",
         "1000-4000 @24 \n00:00:05:00 00:00:06:00 ; 5000-6000 @49 B"},
    });
}

TEST(DvbSubtitleSystem, SkipsOtherLines) {
    const std::string entry = "\r\n00:00:01:00 00:00:04:00 Hello\r\n";
    expectFiles<Parser>({
        {"title" + entry, "1000-4000 @31 Hello"},
        {"1" + entry, "1000-4000 @27 Hello"},
        {"12 monkeys" + entry, "1000-4000 @36 Hello"},
        {"00:00:01:00 00:00:04" + entry, "1000-4000 @46 Hello"},
        {"00:00:01:00 00:00:04:00 A\r\nmore\r\n7 dwarfs\r\n12\r\n\r\n\r\n00:00:05:00 00:00:06:00 B",
         "1000-4000 @24 A; 5000-6000 @75 B"},
        {"{y}" + entry, "1000-4000 @29 Hello"},
        // kept(dvb-mark)
        {kUtf8Mark + "00:00:01:00 00:00:04:00 A"s + entry, "1000-4000 @54 Hello"},  // the mark hides the first
        {kUtf8Mark + "00:00:01:00 00:00:04:00 A"s, "refused"},
        {"x1" + entry, "refused"},
        {"{1}{25}Hello" + entry, "refused"},
        {"[00:00:01]" + entry, "refused"},
        {"title\r\n  x1" + entry, "refused"},
        {"", "refused"},
        {"1", "refused"},
        {" \r\n", "refused"},
        {"no time line\r\nat all\r\n", "refused"},
        {"00:00:01:00 00:00:04", "refused"},
        {"12 00:00:01,500 00:00:04", "refused"},
    });
    // behind the acceptance such a line is only skipped
    expectFiles<Parser>(
        {{"00:00:01:00 00:00:04:00 A\r\nx1\r\n00:00:05:00 00:00:06:00 B", "1000-4000 @24 A; 5000-6000 @55 B"}});
}

TEST(DvbSubtitleSystem, TellsTheEncodingByTheMark) {
    const std::string sample = "x\r\n00:00:01:00 00:00:04:00 Hello\r\n";
    const std::pair<std::string, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE> rows[] = {
        {sample, kNative},
        {kUtf8Mark + sample, kUtf8},
        {utf16le(sample), kUtf16Le},
        {"\xFE\xFF" + sample, kNative},  // kept(dvb-big-endian): a big-endian mark is not known
    };
    for (const auto& [content, codeType] : rows) {
        Parsed<Parser> parsed(content);
        EXPECT_EQ(TRUE, parsed.result) << show(content);
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
        parsed.parser.GetTrackInfo(0, &info);
        EXPECT_EQ(codeType, info.eCodeType) << show(content);
        EXPECT_EQ("Hello", textOf(parsed.parser, 0));
    }
    Parsed<Parser> refused(utf16be(sample));
    EXPECT_EQ(FALSE, refused.result);
    EXPECT_EQ(kNative, refused.parser.m_eCodeType);
}

TEST(DvbSubtitleSystem, ReadsTheFirstShapeIn16BitText) {
    expectFiles<Parser>({
        {utf16le("00:00:01:00 00:00:04:00 Hello\r\n"), "1000-4000 @50 Hello"},
        {utf16le("x\r\n \t00:00:01:00 00:00:04:00 Hello\r\n"), "1000-4000 @60 Hello"},
        {utf16le("00:00:01:00 00:00:04:00 A\r\n1\r\n12 monkeys\r\n00:00:05:00 00:00:06:00 {y:i}B\r\n"),
         "1000-4000 @50 A; 5000-6000 @134 {y:i}B"},
        {utf16le("0:00:01:00 0:00:04:00 Hello\r\n"), "1000-4000 @50 llo"},
        {utf16le("0:0:1:0 0:0:2:0\r\nof the next line\r\n"), "1000-2000 @50 next line"},
        {utf16le("0:0:1:0 0:0:2:0"), "1000-2000 @50 "},
        // an entry that begins within the distance of the text is lost
        {utf16le("0:0:1:0 0:0:2:0 A\r\n00:00:03:00 00:00:04:00 B\r\n00:00:05:00 00:00:06:00 C"),
         "1000-2000 @50 :03:00 00:00:04:00 B; 5000-6000 @142 C"},
        {utf16le("00:00:01:000 00:00:04:0000 Hello\r\n"), "1000-4000 @50 00 Hello"},
        {utf16le("00:00:01:000 00:00:04:1234 Hello\r\n"), "1000-4012 @50 34 Hello"},  // 24 characters are looked at
        {utf16le("12 00:00:01,500 00:00:04,000 Hello\r\n"), "refused"},               // kept(dvb-utf16-number)
        {utf16le("12 00:00:01,500 00:00:04,000 A\r\n00:00:01:00 00:00:04:00 B"), "1000-4000 @114 B"},
        {utf16le("x1\r\n00:00:01:00 00:00:04:00 Hello\r\n"), "refused"},
        {utf16le("{1}{25}Hello\r\n00:00:01:00 00:00:04:00 Hello\r\n"), "refused"},
        {utf16le(""), "refused"},
        {utf16le("1"), "refused"},
        {utf16le("no time line\r\n"), "refused"},
        // U+3031, two digits once it is narrowed, is none where a line begins
        {utf16le("00:00:01:00 00:00:04:00 A\r\n") + "\x31\x30"s + utf16le(":00:05:00 00:00:06:00 B\r\n", false),
         "1000-4000 @50 A"},
        {"\xFF\xFE\x31\x30"s + utf16le(":00:05:00 00:00:06:00 B\r\n", false), "refused"},
    });
}

TEST(DvbSubtitleSystem, ListsItsTags) {
    Loaded<Parser> loaded("00:00:05:00 00:00:06:00 A\r\n00:00:01:00 00:00:04:00 B\r\n0:0:0:4294967295 0:0:0:0 C");
    const LogCapture log;
    loaded.parser.ParserThread();
    EXPECT_EQ(linesFrom("SubtitleParserSubDvbSubtitleSystem",
                        {kRule, "Time = 5000, 6000, 00000018\n", "Time = 1000, 4000, 00000033\n",
                         "Time = 4294967295, 0, 0000004e\n", kRule,
                         "SubtitleParserSubDvbSubtitleSystem::ParserThread -> Finished : Tag num = 3, 1\n"}),
              log.lines());
}

TEST(DvbSubtitleSystem, ListsNothingOfAnEmptyFile) {
    Loaded<Parser> loaded("");
    const LogCapture log;
    loaded.parser.ParserThread();
    EXPECT_EQ((std::vector<std::string>{
                  kRule, kRule, "SubtitleParserSubDvbSubtitleSystem::ParserThread -> Finished : Tag num = 0, 1\n"}),
              log.texts());
}

// ---------------------------------------------------------------------------- the extraction up to a time stamp

/// The text of entry `index` up to the next time stamp. Behind it the line break that was cut off may stand.
std::string stampTextOf(Parser& parser, U32 index, U32 size = 64, stSubDecoderInfo* info = nullptr) {
    return textFrom(
        parser, size, [&](U8* buffer) { return parser.GetData(9, buffer, size, index, info); }, 2);
}

void expectStampTexts(const std::vector<TextRow>& rows, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType) {
    for (const TextRow& row : rows) {
        TwoEntries<Parser> entries(row.text, codeType);
        stSubDecoderInfo info{1, 2, 3, 4};
        EXPECT_EQ(row.expected, stampTextOf(entries.parser, 0, row.size, &info))
            << show(row.text) << " into " << row.size << " bytes";
        EXPECT_TRUE(info.u16Width == 1 && info.u16Height == 2 && info.u16X == 3 && info.u16Y == 4);
    }
}

const std::vector<TextRow> kTimeStamps = {
    {"Hello\r\n00:00:05:00 00:00:06:00 World", "Hello"},
    {"Hello\r\nWorld\r\n00:00:05:00", "Hello\r\nWorld"},  // a line break ends nothing
    {"Hello\r\n\r\nWorld\n\n00:00:05:00", "Hello\r\n\r\nWorld"},
    {"Hello 00:00:05:00", "Hello "},
    {"1000:00:05:00", "10"},
    {"00:00:05:00", ""},
    {"00:00:05:0", "00:00:05:0"},
    {"00:00:05,00", "00:00:05,00"},
    {"0:00:05:00", "0:00:05:00"},
    {"aa:00:05:00", "aa:00:05:00"},
    {"12 00:00:05,000 00:00:06,000 World", "12 00:00:05,000 00:00:06,000 World"},
    {"Hello\0more"s, "Hello"},
    {"", ""},
    {"one|two", "one|two"},
    // at most two line-end characters are taken from the end
    {"A\r\n", "A"},
    {"A\n\r", "A"},
    {"A\n", "A"},
    {"A\r", "A"},
    {"AB\n", "AB"},
    {"A\r\n\r\n", "A\r\n"},
    {"A\r\nB", "A\r\nB"},
    {"\r\n\r\n", "\r\n"},
    {"\n\n\n", "\n"},
    {"\r\n", "\r"},  // kept(dvb-five-arguments): of two one stays
    {"\n", "\n"},    // and of one, one
};

TEST(DvbSubtitleSystem, ReadsUpToATimeStamp) {
    for (const auto codeType : {kNative, kUtf8}) {
        expectStampTexts(kTimeStamps, codeType);
        expectStampTexts(
            {
                {"{y:i}Hi<b>there\r\n00:00:05:00", "Hithere"},
                {"Hi{y:i}\r\nmore\r\n00:00:05:00", "Hi\0"s},
                {"{a}00:00:05:00", ""},  // what stands behind a group is examined
                {"{a}<b>00:00:05:00", ""},
                {"<b>00:00:05:00 x", "00:00:05:00 x"},  // behind a tag it is not
                {"Hi <i>there</i>\r\n00:00:05:00", "Hi there"},
                {"Hi<i>", "Hi\0"s},
                {"Hi{never", "Hi"},
                {"Hi\r\n{never", "Hi"},
                {"Hi{a}<never", "Hi"},
                {"a < b\r\n>c\r\n", "a < b\r\n>c"},
                {"a < b\n>c\r\n", "a c"},
                {"Hi\r\n<i>\r\n\r\nmore", "!open Hi\r\n"},  // neither terminated nor trimmed
                {"{00:00:05:00}Hi<00:00:06:00>there", "Hithere"},
                {"Hello", "Hel", 5},
                {"Hello", "H", 3},
                {"Hello", "", 2},
                {"Hello", "", 1},
                {"AB\r\nC", "AB", 5},  // cut first, trimmed then
                {"A\r\nB", "A", 5},
                {"A\r\nB", "A", 4},
                {"\r\nA", "\r", 4},
                {"\r\nA", "\r", 3},
            },
            codeType);
    }
}

TEST(DvbSubtitleSystem, ReadsUpToATimeStampIn16BitText) {
    std::vector<TextRow> rows;
    for (const TextRow& row : kTimeStamps) rows.push_back({utf16le(row.text, false), row.expected});
    for (const TextRow& row : std::vector<TextRow>{
             {"{y:i}Hi<b>there\r\n00:00:05:00", "{y:i}Hi<b>there"},  // markup stays
             {"{00:00:05:00}", "{"},
             {"Hello", "Hello", 14},
             {"Hello", "Hell", 13},
             {"Hello", "Hell", 12},
             {"Hello", "He", 8},
             {"Hello", "H", 7},
             {"Hello", "H", 6},
             {"Hello", "", 5},
             {"Hello", "", 4},
             {"Hello", "", 3},
             {"Hello", "", 2},
             {"Hello", "!untouched", 1},
             {"A\r\nB", "A", 10},
         }) {
        rows.push_back({utf16le(row.text, false), row.expected, row.size});
    }
    rows.push_back(
        {"\x30\x30\x30\x30:\0"s + utf16le("00:05:00", false), "[3030][3030]:00:05:00"});  // U+3030 is no digit
    expectStampTexts(rows, kUtf16Le);
}

TEST(DvbSubtitleSystem, ReadsNoOtherEncodingUpToATimeStamp) {
    for (const auto codeType : {kUnknown, kUtf16Be, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK}) {
        expectStampTexts({{"Hello", "!untouched"}}, codeType);
    }
}

TEST(DvbSubtitleSystem, WantsABufferAnIndexAndItsMemoryHereToo) {
    TwoEntries<Parser> entries("Hello\r\n", kNative);
    Parser& parser = entries.parser;
    const auto text = [&](U32 index) { return stampTextOf(parser, index); };
    EXPECT_EQ("Hello", text(0));
    EXPECT_EQ("[next]", text(1));
    EXPECT_EQ("!untouched", text(2));
    EXPECT_EQ(0u, parser.GetData(0, nullptr, 64, 0, nullptr));
    U8 one[1] = {7};
    EXPECT_EQ(0u, parser.GetData(0, one, 0, 0, nullptr));
    EXPECT_EQ(7, one[0]);
    free(parser.m_pu8SubtitleBuffer);
    parser.m_pu8SubtitleBuffer = nullptr;
    EXPECT_EQ("!untouched", text(0));
    parser.Deinit();
    EXPECT_EQ("!untouched", text(0));

    Loaded<Parser> empty("");
    empty.parser.AddTag(0, 1, 0, kWhole);
    EXPECT_EQ("", stampTextOf(empty.parser, 0));
}

TEST(DvbSubtitleSystem, StopsRightBeforeTheNextEntry) {
    Parsed<Parser> parsed("00:00:01:00 00:00:04:00 Hello\r\nthere\r\n00:00:05:00 00:00:06:00 World\r\n");
    ASSERT_EQ(2u, parsed.parser.GetTagNum());
    const auto text = [&](U32 index) { return stampTextOf(parsed.parser, index); };
    EXPECT_EQ("Hello\r\nthere", text(0));
    EXPECT_EQ("World", text(1));
    EXPECT_EQ("Hello", textOf(parsed.parser, 0));
}

TEST(DvbSubtitleSystem, AnswersEveryBeginningUpToATimeStamp) {
    const std::string sample =
        "00:00:01:00 00:00:04:00 {y:i}Hello <b>there</b>\r\nagain\r\n\r\n00:00:05:00 00:00:06:00 <i>World{a}\r\n";
    for (const std::string& whole : inEveryEncoding(sample)) {
        forEachCut(whole, [](const std::string& part) {
            Parsed<Parser> parsed(part);
            readEverything(parsed.parser, [&](U8* buffer, U32 size, U32 index) {
                return parsed.parser.GetData(0, buffer, size, index, nullptr);
            });
        });
    }
}

}  // namespace
