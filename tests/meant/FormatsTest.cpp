// Formats told by content, whatever the file is called, and what is no subtitle file.
#include <random>

#include "tests/meant/Listing.h"

namespace meant {
namespace {

using namespace std::string_literals;

const std::string kSubRip = "1\n00:00:01,000 --> 00:00:02,000\nHello\n";

TEST(MeantFormats, ContentDecidesAgainstTheEnding) {
    const struct {
        const char* ending;
        std::string file;
        Format format;
        bool misleads;
    } kRows[] = {
        {"srt", kSubRip, Format::SubRip, false},
        {"SRT", kSubRip, Format::SubRip, false},
        {"", kSubRip, Format::SubRip, false},
        {"ass", kSubRip, Format::SubRip, true},
        {"sub", kSubRip, Format::SubRip, true},
        {"srt", "[Events]\nDialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,Hi\n", Format::SubStationAlpha, true},
        {"ssa", "[Script Info]\n[Events]\nDialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,Hi\n", Format::SubStationAlpha,
         false},
        {"txt", "<SAMI><BODY><SYNC Start=1><P>Hi\n", Format::Sami, true},
        {"txt", "{25}{50}Hi\n", Format::MicroDvd, true},
        {"sub", "0:00:01:Hi\n0:00:02:\n", Format::TimedText, true},
        {"idx", "# VobSub index file, v7 (do not modify this line!)\n", Format::VobSubIndex, false},
        {"sub", "id: en, index: 0\ntimestamp: 00:00:01:000, filepos: 000000000\n", Format::VobSubIndex, true},
        {"sub", "\0\0\1\xBA\x44\0\4\0"s, Format::VobSubPictures, false},
        {"sup", "PG\0\0\1\2\3\4\5\6\x16\0\1\2\3\4"s, Format::Sup, false},
        // A line that speaks for another format is outvoted.
        {"srt", kSubRip + "\n2\n00:00:03,000 --> 00:00:04,000\n[00:00:05]\n", Format::SubRip, false},
        {"txt", "0:00:01:{1}{2}\n0:00:02:[1][2]\n", Format::TimedText, false},
        // As many lines for one as for the other: the ending.
        {"sub", "{25}{50}Hi\n0:00:01:Hi\n", Format::MicroDvd, false},
        {"txt", "{25}{50}Hi\n0:00:01:Hi\n", Format::TimedText, false},
    };
    for (const auto& row : kRows) {
        const File file = readAs(row.ending, row.file);
        EXPECT_EQ(row.format, file.format) << row.ending << " " << row.file;
        EXPECT_EQ(row.misleads, file.endingMisleads) << row.ending << " " << row.file;
        EXPECT_EQ("", file.nature);
    }
}

TEST(MeantFormats, UnsupportedOnesAreNamed) {
    const struct {
        const char* file;
        Format format;
        const char* phrase;
    } kRows[] = {
        {"WEBVTT\n\n00:01.000 --> 00:02.000\nHi\n", Format::WebVtt, "WebVTT"},
        {"[10][20]Hi\n[30][]there\n", Format::Mpl2, "MPL2"},
        {"[00:00:01]Hi\n[00:00:02]\n[00:00:03]there\n[00:00:04]\n", Format::Dks, "DKS"},
        {"[00:01.50]Hi\n", Format::Lrc, "LRC lyrics"},
        {"10,20,\"Hi\"\n", Format::Pjs, "Phoenix Japanimation Society"},
        {"<?xml version=\"1.0\"?>\n<tt xmlns=\"http://www.w3.org/ns/ttml\">\n<p begin=\"0s\">Hi</p>\n", Format::Ttml,
         "TTML"},
        {"Scenarist_SCC V1.0\n\n00:00:01:00\t9420 9420\n", Format::Scc, "Scenarist closed captions"},
        {"//Font select\n00:00:01:00 , 00:00:02:00 , Hi\n", Format::SpruceStl, "Spruce STL"},
        {"FORMAT=TIME\n1 2\nHi\n", Format::MpSub, "MPSub"},
        {"-->> 000100\nHi\n", Format::Aqt, "AQTitle"},
        {"2681,2735,0,Hi|there\n", Format::MPlayer, "MPlayer"},
        {"/2681\nHi\n/2735\n", Format::MacSub, "MacSUB"},
        {"{00:01:47}{00:01:49}Hi\n", Format::PowerDivX, "PowerDivX"},
        {"00:01:47,250-00:01:49,416=Hi\n", Format::ViPlay, "ViPlay"},
        {"00:01:47.06\\Hi\\00:01:49.10\n", Format::Sofni, "Sofni"},
        {"/d 107 25\nHi\n/d 3 4\n", Format::Panimator, "Panimator"},
        {"{QTtext} {font:Tahoma}\n[00:02:17.11]\nHi\n", Format::QuickTimeText, "QuickTime text"},
        {"#TITLE x\n0:01:47.25 0:01:49.41 D Hi\n", Format::JacoSub, "JACOsub"},
        {"# <HEAD>\n# </HEAD>\n{107250 Hi}\n", Format::Vkt, "karaoke lyrics VKT"},
        {"<window type=\"generic\">\n<time begin=\"1\"/>Hi\n", Format::RealText, "RealText"},
    };
    for (const auto& row : kRows) {
        const File file = readAs("srt", row.file);
        EXPECT_EQ(row.format, file.format) << row.file;
        EXPECT_STREQ(row.phrase, nameOf(file.format).phrase);
        EXPECT_FALSE(hasReader(file.format));
        EXPECT_TRUE(file.endingMisleads);
        EXPECT_TRUE(file.entries.empty());
    }
    const std::string stl = "850STL25.01" + std::string(1013, '0') + std::string(256, '\1');
    EXPECT_EQ(Format::EbuStl, readAs("stl", stl).format);
}

TEST(MeantFormats, WhatIsNoSubtitleFile) {
    std::mt19937 random(7);
    std::string noise;
    while (noise.size() < 10000) noise += static_cast<char>(random() & 0xFF);
    const struct {
        std::string file;
        const char* nature;
    } kRows[] = {
        {"", "an empty file"},
        {"\xEF\xBB\xBF\r\n \n", "a file without text"},
        {"\x7F"
         "ELF\2\1\1\0\0\0\0\0"s,
         "an executable"},
        {"MZ\x90\0\3\0\0\0\4\0\0\0\1\2\3\4"s, "an executable"},
        {"\x89PNG\r\n\x1A\n\0\0\0\rIHDR"s, "a PNG picture"},
        {"\xFF\xD8\xFF\xE0\0\x10JFIF"s, "a JPEG picture"},
        {"PK\3\4\x14\0\0\0"s, "a ZIP archive"},
        {"\x1F\x8B\b\0\0\0\0\0"s, "a gzip archive"},
        {"Rar!\x1A\7\0"s, "a RAR archive"},
        {"\x1A\x45\xDF\xA3\1\0\0\0"s, "a Matroska movie"},
        {noise, "binary data"},
        {std::string(1000, '\0'), "binary data"},
        {"Some words, and no time at all.\n", "text without times of any known form"},
        {"At 12:30 <SYNC Start=...> happens.\n", "text without times of any known form"},
    };
    for (const auto& row : kRows) {
        const File file = readAs("srt", row.file);
        EXPECT_EQ(Format::None, file.format) << row.nature;
        EXPECT_EQ(row.nature, file.nature);
        EXPECT_FALSE(file.endingMisleads);
    }
}

TEST(MeantFormats, TextMayBeginLikeSomethingElse) {
    for (const char* begin : {"PG rated\n", "MZ\n", "RIFF raff\n", "GIF89\n", "%PDF-\n"})
        EXPECT_EQ("1000-2000 Hello", listed(readAs("srt", begin + kSubRip))) << begin;
    EXPECT_EQ("1000-2000 Hello", listed(readAs("srt", "\0\0"s + kSubRip + "\0\0\x1A"s)));
}

TEST(MeantFormats, Endings) {
    EXPECT_TRUE(isEndingOf("srt", Format::SubRip));
    EXPECT_TRUE(isEndingOf("ASS", Format::SubStationAlpha));
    EXPECT_TRUE(isEndingOf("ssa", Format::SubStationAlpha));
    EXPECT_FALSE(isEndingOf("ss", Format::SubStationAlpha));
    EXPECT_FALSE(isEndingOf("", Format::SubRip));
    EXPECT_FALSE(isEndingOf("", Format::WebVtt));
    EXPECT_FALSE(isEndingOf("vtt", Format::WebVtt));
}

}  // namespace
}  // namespace meant
