// SubViewer 2.0: which files are accepted, where the texts begin, big-endian files.
#include "subtitle/SubtitleParserSubViewer20.h"

#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"
#include "tests/support/Rows.h"

namespace {

using namespace test;
using Parser = SubtitleParserSubViewer20;

constexpr char kTime[] = "00:00:01.00,00:00:04.50";

// kept(break-br)
TEST(SubViewer20, ReadsEntriesBehindTheirTimeLines) {
    expectFiles<Parser>({
        {"[INFORMATION]\r\n[TITLE]x\r\n00:00:01.00,00:00:04.50\r\nHello\r\n\r\n", "1000-4050 @50 Hello"},
        {"00:00:01.00,00:00:02.00\nA[br]B\n\n00:00:03.00,00:00:04.00\nC\n\n", "1000-2000 @24 A[br]B; 3000-4000 @56 C"},
        {"00:00:01.00,00:00:02.00\rA\r00:00:03.00,00:00:04.00\rB\r",
         "1000-2000 @24 A\r00:00:03.00,00:00:04.00\r; 3000-4000 @50 B\r"},
        {" \t\r\n\v\f 00:00:01.00,00:00:02.00\nA\n\n", "1000-2000 @31 A"},
        {"00:00:01.00,00:00:02.00\r\n\r\n\n\rA\r\n\r\n", "1000-2000 @29 A"},
        {"00:00:01.00,00:00:02.00 and more\nA\n\n", "1000-2000 @33 A"},
        {"00:00:01.00,00:00:02.00\n   A\n\n", "1000-2000 @24    A"},
    });
}

TEST(SubViewer20, TakesFractionsAsMilliseconds) {
    expectFiles<Parser>({
        {"00:00:01.50,00:00:02.05\nA\n\n", "1050-2005 @24 A"},  // kept(sv2-hundredths)
        {"00:00:01.5,00:00:02.500\nA\n\n", "1005-2500 @24 A"},
        {"01:02:03.04,99:59:59.99\nA\n\n", "3723004-359999099 @24 A"},
        {"0:0:0.4294967295,0:0:2.0\nA\n\n", "4294967295-2000 @25 A"},
        {"4294967295:0:0.0,0:0:0.4294967296\nA\n\n", "4291367296-0 @34 A"},  // 32 bits, and no more
    });
}

TEST(SubViewer20, TakesAnySeparators) {
    expectFiles<Parser>({
        {"00-00-01x50;00_00_02+75\nA\n\n", "1050-2075 @24 A"},
        {"00 : 00 : 01 . 50 , 00 : 00 : 02 . 75\nA\n\n", "1050-2075 @38 A"},
        {"00:00:01:06 00:00:02:07 Hello\nA\n\n", "1006-2007 @30 A"},  // another dialect's line
    });
}

TEST(SubViewer20, LooksForTheLineEndFrom23CharactersOn) {
    expectFiles<Parser>({
        {"0:00:01.00,0:00:04.50\nlost\nshown\n\n", "1000-4050 @27 shown"},  // kept(sv2-time-width)
        {"0:00:01.00,00:00:04.50\nl\nshown\n\n", "1000-4050 @25 shown"},
        {"00:00:01.00,00:00:04.5\nA\nshown\n\n", "1000-4005 @25 shown"},
        {"00:00:01.00,00:00:04.50", "1000-4050 @23 "},
        {"0:0:1.0,0:0:4.5", "1000-4005 @23 "},  // behind the data: the plain sum
        {"0:0:1.0,0:0:4.5\nA", "1000-4005 @23 "},
        {"00:00:01.00,00:00:04.50\n", "1000-4050 @24 "},
    });
}

// kept(sv2-unseen-line)
TEST(SubViewer20, SkipsTheTextLineUnseen) {
    expectFiles<Parser>({
        {"00:00:01.00,00:00:02.00\n7 dwarfs\n\n00:00:03.00,00:00:04.00\nB\n\n",
         "1000-2000 @24 7 dwarfs; 3000-4000 @58 B"},
        {"00:00:01.00,00:00:02.00\r\n00:00:03.00,00:00:04.00\r\n00:00:05.00,00:00:06.00\r\nB\r\n\r\n",
         "1000-2000 @25 00:00:03.00,00:00:04.00\n00:00:05.00,00:00:06.00; 5000-6000 @75 B"},
        {"00:00:01.00,00:00:02.00\nA\n1 of 2\n00:00:03.00,00:00:04.00\nB\n\n",
         "1000-2000 @24 A\n1 of 2\n00:00:03.00,00:00:04.00\n; 3000-4000 @57 B"},
        // seven numbers, and with the line end as a separator the next line's first
        {"00:00:01.00,00:00:02.00\nA\n00:00:03.00,00:00:04\n05:00:05.00,00:00:06.00\nB\n\n",
         "1000-2000 @24 A\n00:00:03.00,00:00:04\n05:00:05.00,00:00:06.00\n; 3000-4005 @71 B"},
    });
}

TEST(SubViewer20, RefusesWhatTheFirstLinesSay) {
    const std::string entry = "\n"s + kTime + "\nA\n\n";
    expectFiles<Parser>({
        {"[INFORMATION]" + entry, "1000-4050 @38 A"},
        {"{1}{25}Hello", "refused"},
        {"{1}{25}Hello" + entry, "refused"},
        {"[00:00:01]" + entry, "refused"},
        {"x1" + entry, "refused"},
        {"-00:00:01.00,00:00:04.50" + entry, "refused"},  // kept(sv2-negative-first)
        {"x" + entry, "1000-4050 @26 A"},
        {"x\n1" + entry, "3600001-4 @28 A"},  // line ends as separators
        {"x\n1 of 2" + entry, "refused"},     // a digit opens the first time line, whatever it is
        {"  x1" + entry, "refused"},
        {"title\n{1}{25}Hello" + entry, "refused"},
        {"1", "refused"},
        {"12 monkeys" + entry, "refused"},  // kept(sv2-first-digit)
        {"00:00:01.00,00:00:04", "refused"},
        {"00:00:01.00,00:00:04.", "refused"},
        {"00:00:01.00\n00:00:04.50", "1000-4050 @23 "},  // a literal takes a line end
        {"", "refused"},
        {" \r\n\t ", "refused"},
        {"no time line\r\nat all\r\n", "refused"},
        {"\0\0\0"s + entry, "1000-4050 @28 A"},
        {"x\0"s + "1" + entry, "1000-4050 @28 A"},
    });
}

// kept(sub-mark)
TEST(SubViewer20, LosesATimeBehindTheUtf8Mark) {
    expectFiles<Parser>({
        {kUtf8Mark + "00:00:01.00,00:00:04.50\nA\n00:00:05.00,00:00:06.00\nB\n\n"s, "5000-6000 @53 B"},
        {kUtf8Mark + "00:00:01.00,00:00:04.50\nA\n"s, "refused"},
        {kUtf8Mark + "1\n00:00:05.00,00:00:06.00\nB\n\n"s, "5000-6000 @29 B"},
        {kUtf8Mark + "\n00:00:05.00,00:00:06.00\nB\n\n"s, "5000-6000 @28 B"},
    });
}

TEST(SubViewer20, TellsTheEncodingByTheMark) {
    const std::string sample = "[I]\r\n"s + kTime + "\r\nA\r\n\r\n";
    const std::pair<std::string, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE> rows[] = {
        {sample, kNative},
        {kUtf8Mark + sample, kUtf8},
        {"\xEF\xBB" + sample, kNative},
        {"\xC3\xA9\r\n" + sample, kNative},
        {utf16le(sample), kUtf16Le},
        {utf16be(sample), kUtf16Le},  // kept(sv2-big-endian): swapped
    };
    for (const auto& [content, codeType] : rows) {
        Parsed<Parser> parsed(content);
        EXPECT_EQ(TRUE, parsed.result) << show(content);
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
        parsed.parser.GetTrackInfo(0, &info);
        EXPECT_EQ(codeType, info.eCodeType) << show(content);
    }
}

TEST(SubViewer20, SwapsABigEndianFileInPlace) {
    const std::string sample = "[I]\r\n"s + kTime + "\r\nA\r\n\r\n";
    const std::string little = utf16le(sample);
    Parsed<Parser> parsed(utf16be(sample));
    ASSERT_EQ(TRUE, parsed.result);
    EXPECT_EQ(0, memcmp(little.data(), parsed.parser.m_pu8RawBuffer, little.size()));
    EXPECT_EQ("1000-4050 @58 \nA", entriesOf(parsed.parser));

    Parsed<Parser> odd(utf16be(sample) + "\x01");
    ASSERT_EQ(TRUE, odd.result);
    EXPECT_EQ(0, memcmp((little + "\x01").data(), odd.parser.m_pu8RawBuffer, little.size() + 1));
}

// kept(sv2-leading-break)
TEST(SubViewer20, Reads16BitTextRightBehindTheTimeStamp) {
    const FileRow rows[] = {
        {"00:00:01.00,00:00:04.50\r\nHello\r\n\r\n", "1000-4050 @48 \nHello"},
        {"[TITLE]\r\n00:00:01.00,00:00:04.50\r\nHello\r\n\r\n", "1000-4050 @66 \nHello"},
        {" \t00:00:01.00,00:00:04.50\r\nHello\r\n\r\n", "1000-4050 @52 \nHello"},
        {"00:00:01.00,00:00:04.50 more\r\nHello\r\n\r\n", "1000-4050 @48  more\nHello"},
        // what is longer than 23 characters is cut there
        {"00:00:01.000,00:00:04.567\r\nA\r\n\r\n", "1000-4005 @48 67\nA"},
        // and what is shorter takes from the text
        {"0:00:01.00,0:00:04.50\nHi\n\n", "1000-4050 @48 i"},
        {"0:0:1.0,0:0:4.5", "1000-4005 @48 "},
        // every line is looked at, the text line too
        {"00:00:01.00,00:00:02.00\r\n00:00:03.00,00:00:04.00\r\nB\r\n\r\n",
         "1000-2000 @48 \n00:00:03.00,00:00:04.00; 3000-4000 @98 \nB"},
        {"00:00:01.00,00:00:02.00\r\n7 dwarfs\r\n\r\n00:00:03.00,00:00:04.00\r\nB\r\n\r\n",
         "1000-2000 @48 \n7 dwarfs; 3000-4000 @122 \nB"},
        {"00:00:01.00,00:00:02.00\nA\n12 !\n00:00:03.00,00:00:04.00\nB\n\n",
         "1000-2000 @48 \nA\n12 !\n00:00:03.00,00:00:04.00; 3000-4000 @110 \nB"},
        {"{1}{25}Hello", "refused"},
        {"[00:00:01]", "refused"},
        {"x1\r\n00:00:01.00,00:00:02.00\r\n", "refused"},
        {"12 monkeys\r\n00:00:01.00,00:00:02.00\r\n", "refused"},
        {"no time line\r\n", "refused"},
        {"", "refused"},
        {"1", "refused"},
    };
    for (const FileRow& row : rows) {
        expectFiles<Parser>({{utf16le(row.content), row.expected}, {utf16be(row.content), row.expected}});
    }
}

TEST(SubViewer20, ReadsUnitsNotBytes) {
    // U+3031: a digit in its low byte is none
    const std::string wide = "\xFF\xFE\x31\x30\r\0\n\0"s + utf16le("00:00:01.00,00:00:04.50\r\nA\r\n\r\n", false);
    expectFiles<Parser>({{wide, "1000-4050 @54 \nA"}});
    // ... but inside a time line it becomes two characters, both digits here, and the last character falls away
    const std::string inside = utf16le("00:00:0") + "\x31\x30"s + utf16le(".00,00:00:04.50\r\nA\r\n\r\n", false);
    expectFiles<Parser>({{inside, "10000-4005 @48 \nA"}});
    // ... and where a line begins, it is no digit, whatever would come out of it
    const std::string first = utf16le("00:00:01.00,00:00:04.50\r\nA\r\n") + "\x31\x30"s +
                              utf16le(":00:05.00,00:00:06.00\r\nB\r\n\r\n", false);
    expectFiles<Parser>({{first, "1000-4050 @48 \nA\n[3031]:00:05.00,00:00:06.00\nB"}});
}

TEST(SubViewer20, HasNoTextBehindTheData) {
    Parsed<Parser> parsed("00:00:01.00,00:00:02.00\nA\n\n0:0:3.0,0:0:4.0");
    ASSERT_EQ(TRUE, parsed.result);
    EXPECT_EQ("1000-2000 @24 A; 3000-4000 @50 ", entriesOf(parsed.parser));
    U8 text[8] = {1, 1};
    EXPECT_EQ(0u, parsed.parser.GetData(0, text, sizeof text, 1));
    EXPECT_EQ(0, text[0]);
}

TEST(SubViewer20, IsAskedLikeEveryParser) {
    Parsed<Parser> parsed("00:00:01.00,00:00:02.00\nA\n\n00:00:03.00,00:00:04.00\nB\n\n");
    ASSERT_EQ(2u, parsed.parser.GetTagNum());
    EXPECT_EQ(0u, parsed.parser.GetTag(0, 500));
    EXPECT_EQ(0u, parsed.parser.GetTag(0, 2999));
    EXPECT_EQ(1u, parsed.parser.GetTag(0, 3000));
    ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
    EXPECT_EQ(TRUE, parsed.parser.GetTagInfo(0, 1, &tag));
    EXPECT_EQ(3000u, tag.u32TimeStart);
    EXPECT_EQ(4000u, tag.u32TimeEnd);
    EXPECT_EQ(0u, parsed.parser.GetData(0, nullptr, 8, 1, nullptr));
    EXPECT_EQ(TRUE, parsed.parser.StopParse());
    EXPECT_EQ(TRUE, parsed.parser.Deinit());
}

}  // namespace
