// What is written of a file, and what is said of it.
#include <gtest/gtest.h>

#include "tests/fix/Fixing.h"

namespace fix {
namespace {

TEST(Fix, WritesSubRip) {
    const Result result = fixed("srt", "1\n0:0:1,5 --> 0:0:2\nHello\n<i>World</i>\n\n00:03 --> 00:04\n{\\an8}b\n");
    EXPECT_EQ(
        "\xEF\xBB\xBF"
        "1\r\n00:00:01,500 --> 00:00:02,000\r\nHello\r\nWorld\r\n\r\n"
        "2\r\n00:00:03,000 --> 00:00:04,000\r\nb\r\n\r\n",
        result.bytes);
    EXPECT_EQ(meant::Format::SubRip, result.format);
    EXPECT_EQ("", listed(result.remarks));
    EXPECT_EQ((std::vector<bool>{true, true}), result.isWhole);
}

TEST(Fix, WritesUtf16) {
    Options options;
    options.letters = Letters::Utf16;
    const std::string bytes = fixed("srt", "1\n0:0:1,5 --> 0:0:2,0\na\n", options).bytes;
    EXPECT_EQ(std::string("\xFF\xFE"
                          "1\0\r\0\n\0"
                          "0\0",
                          10),
              bytes.substr(0, 10));
    EXPECT_EQ(2 * (3 + 31 + 5 + 1), static_cast<int>(bytes.size()));
    EXPECT_EQ("! srt-utf16-shape 1", listed(fixed("srt", "1\n100:0:1,0 --> 100:0:2,0\na\n", options).remarks));
}

TEST(Fix, EveryFormatBecomesSubRip) {
    const struct {
        const char* ending;
        const char* file;
        const char* pieces;
        const char* remarks;
    } kRows[] = {
        {"ass",
         "Format: Start, End, Text\nDialogue: 0:00:03.00,0:00:04.00,{\\i1}b\\Nc\nDialogue: 0:00:01.00,0:00:02.50,a\n",
         "1000-2500 a; 3000-4000 b/c", ""},
        {"ass",
         "Dialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,{\\p1}m 0 0\nDialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,a\n",
         "1000-2000 a", "ssa-drawing 1"},
        {"smi", "<SYNC Start=1000><P>a<br>b &amp; c<SYNC Start=2000><P>&nbsp;", "1000-2000 a/b & c", ""},
        {"smi", "<SYNC Start=1000><P Class=A>a<P Class=B>b<SYNC Start=2000><P>&nbsp;", "1000-2000 a/b",
         "overlap 2, smi-languages 1"},
        {"txt", "0:00:01:a|b\n0:00:03:c\n", "1000-3000 a/b; 3000-8000 c", "- 1"},
        {"sub", "{25}{50}a|b\n", "1000-2000 a/b", "- 1"},
        {"sub", "{1}{1}50\n{25}{50}a\n", "500-1000 a", ""},
        {"sub", "00:00:01.50,00:00:02.00\na[br]b\n", "1500-2000 a/b", ""},
        {"sub", "[00:00:01]\na\n[00:00:02]\n", "1000-2000 a", ""},
        {"sub", "00:00:01:05 00:00:02:00 a\n", "1200-2000 a", "- 1"},
        {"sub", "1\n00:00:01,000 --> 00:00:02,000\na\n", "1000-2000 a", ""},
    };
    for (const auto& row : kRows) {
        const Result result = fixed(row.ending, row.file);
        EXPECT_EQ(meant::Format::SubRip, result.format) << row.file;
        EXPECT_EQ(row.pieces, listed(result.pieces)) << row.file;
        EXPECT_EQ(row.remarks, listed(result.remarks)) << row.file;
    }
}

TEST(Fix, SaysWhatIsNotAsTheFileSays) {
    const auto remarksOf = [](const std::string& text) {
        return listed(fixed("srt", "1\n0:0:1,0 --> 0:0:2,0\n" + text + "\n").remarks);
    };
    EXPECT_EQ("text-angle-brackets 1", remarksOf("a <word> b"));
    EXPECT_EQ("text-braces 1", remarksOf("a {word} b"));
    EXPECT_EQ("! text-too-long 1", remarksOf(std::string(9000, 'x')));
    EXPECT_EQ("srt-text-as-time-line 1", remarksOf("a\n20h30, 21h00.\n12:30, 13:30"));
    const Result overlap = fixed("srt", "1\n0:0:1,0 --> 0:0:5,0\na\n\n2\n0:0:2,0 --> 0:0:3,0\nb\n");
    EXPECT_EQ("overlap 2", listed(overlap.remarks));
    EXPECT_EQ(2u, overlap.remarks[0].first.line);
    EXPECT_EQ((std::vector<size_t>{0, 1}), overlap.pieces[1].shows);
}

TEST(Fix, WritesNothingWhenNothingCanBeShown) {
    const Result result = fixed("srt", "1\n2000:0:1,0 --> 2000:0:5,0\na\n");
    EXPECT_EQ(meant::Format::None, result.format);
    EXPECT_EQ("has no entry that can be shown", result.refusal);
    EXPECT_EQ("! beyond-32-bit 1", listed(result.remarks));
    EXPECT_EQ("", result.bytes);
}

TEST(Fix, OneClassOfSami) {
    Options options;
    options.language = "b";
    const std::string file = "<SYNC Start=1000><P Class=A>a<P Class=B>b<SYNC Start=2000><P>&nbsp;";
    const Result result = fixed("smi", file, options);
    EXPECT_EQ("1000-2000 b", listed(result.pieces));
    EXPECT_EQ((std::vector<bool>{false, true}), result.isWhole);
    options.language = "c";
    EXPECT_EQ("has no class c; there are A, B", fixed("smi", file, options).refusal);
}

TEST(Fix, RefusesWhatIsNoSubtitleFile) {
    const struct {
        const char* file;
        const char* refusal;
    } kRows[] = {
        {"", "is no subtitle file but an empty file"},
        {"Hello", "is no subtitle file but text without times of any known form"},
        {"WEBVTT\n\n00:01.000 --> 00:02.000\na\n", "holds WebVTT, which cannot be mended"},
        {"1\n00:00:01,000 --> 00:00:02,000\n\n", "holds SubRip without entries"},
    };
    for (const auto& row : kRows) {
        const Result result = fixed("srt", row.file);
        EXPECT_EQ(meant::Format::None, result.format);
        EXPECT_EQ(row.refusal, result.refusal);
        EXPECT_EQ("", result.bytes);
    }
}

struct KeptRow {
    const char* ending;
    const char* file;
    const char* kept;
};

TEST(Fix, KeepsTheFormat) {
    const KeptRow kRows[] = {
        {"srt", "1\n0:0:1,5 --> 0:0:2,0\na\n",
         "\xEF\xBB\xBF"
         "1\r\n00:00:01,500 --> 00:00:02,000\r\na\r\n\r\n"},
        {"txt", "0:00:01:a|b\n0:00:03:c\n", "00:00:01:a|b\r\n00:00:03:\r\n00:00:03:c\r\n00:00:08:\r\n"},
        {"sub", "{1}{1}23.976\n{24}{48}a|b\n", "\xEF\xBB\xBF{1}{1}23.976\r\n{24}{48}a|b\r\n"},
        {"sub", "00:00:01.50,00:00:02.00\na[br]b\n",
         "[INFORMATION]\r\n[END INFORMATION]\r\n[SUBTITLE]\r\n00:00:01.500,00:00:02.000\r\na\r\nb\r\n\r\n"},
        {"sub", "[00:00:01]\na\n[00:00:02]\n",
         "[TITLE]\r\n\r\n[BEGIN]\r\n******** START SCRIPT ********\r\n[00:00:01]\r\na\r\n[00:00:02]\r\n\r\n"
         "[END]\r\n******** END SCRIPT ********\r\n"},
        {"sub", "0:00:01:05 0:00:02:00   a\n", "0:00:01:200 0:00:02:000 a\r\n"},
    };
    Options options;
    options.keepFormat = true;
    for (const KeptRow& row : kRows) EXPECT_EQ(row.kept, fixed(row.ending, row.file, options).bytes);
    const std::string sami =
        fixed("smi", "<SYNC Start=1000><P Class=A>a<BR>b<SYNC Start=2000><P>&nbsp;", options).bytes;
    EXPECT_NE(sami.npos, sami.find("<SYNC Start=1000><P Class=A>a<br>\r\nb\r\n<SYNC Start=2000><P Class=A>&nbsp;\r\n"));
}

TEST(Fix, KeepsAScript) {
    Options options;
    options.keepFormat = true;
    const Result result = fixed("ass",
                                "[Script Info]\nTitle: t\n\n[Events]\nFormat: Start, End, Actor, Text\n Dialogue: "
                                "0:00:03.0,0:00:04.00,x,{\\i1}b\\nc\n"
                                "Comment: 0:00:03.0,0:00:04.00,x,d\nDialogue: 00:00:01.500,0:00:02.5,,a\n[Fonts]\n",
                                options);
    EXPECT_EQ(
        "\xEF\xBB\xBF[Script Info]\r\nTitle: t\r\n\r\n[Events]\r\n"
        "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\r\n"
        "Dialogue: 0,0:00:01.50,0:00:02.50,Default,,0,0,0,,a\r\n"
        "Dialogue: 0,0:00:03.00,0:00:04.00,Default,x,0,0,0,,{\\i1}b\\Nc\r\n"
        "Comment: 0:00:03.0,0:00:04.00,x,d\r\n[Fonts]\r\n",
        result.bytes);
    EXPECT_EQ("1500-2500 a; 3000-4000 b/c", listed(result.pieces));
}

}  // namespace
}  // namespace fix
