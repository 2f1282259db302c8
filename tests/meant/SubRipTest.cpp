// SubRip as meant: times in any spelling, numbers that may be missing, texts that may hold anything.
#include "tests/meant/Listing.h"

namespace meant {
namespace {

std::string entry(const char* timeLine, const char* text = "x") {
    return "1\n" + std::string(timeLine) + "\n" + text + "\n\n";
}

TEST(MeantSubRip, TimesInAnySpelling) {
    expectReadings(
        "srt", Format::SubRip,
        {
            {"as usual", entry("00:00:01,500 --> 00:00:03,250"), "1500-3250 x"},
            {"with a point", entry("00:00:01.500 --> 00:00:03.250"), "1500-3250 x"},
            {"with a colon", entry("00:00:01:500 --> 00:00:03:250"), "1500-3250 x"},
            {"all of one kind", entry("00.00.01.500 --> 00.00.03.250"), "1500-3250 x"},
            {"short numbers", entry("0:0:1,500 --> 0:0:3,250"), "1500-3250 x"},
            {"a fraction has as many digits as it has", entry("0:0:1,5 --> 0:0:3,25"), "1500-3250 x"},
            {"a zero in front of it counts", entry("00:00:01,04 --> 00:00:03,004"), "1040-3004 x"},
            {"more digits than a millisecond", entry("00:00:01,5009 --> 00:00:03,2509"), "1500-3250 x"},
            {"no fraction", entry("00:00:01 --> 00:00:03"), "1000-3000 x"},
            {"no fraction, points", entry("00.00.01 --> 00.00.03"), "1000-3000 x"},
            {"no hours", entry("01:02,500 --> 01:03.250"), "62500-63250 x"},
            {"no hours, no fraction", entry("01:02 --> 01:03"), "62000-63000 x"},
            {"seconds alone", entry("2,500 --> 3.250"), "2500-3250 x"},
            {"no digits where a 0 should be", entry("00:00:,500 --> 00:00:03,"), "500-3000 x"},
            {"blanks within", entry(" 00 : 00 : 01 , 500  -->  00: 00: 03, 250 "), "1500-3250 x"},
            {"no blanks", entry("00:00:01,500-->00:00:03,250"), "1500-3250 x"},
            {"other arrows", entry("00:00:01,500 -> 00:00:03,250"), "1500-3250 x"},
            {"a broken arrow", entry("00:00:01,500 - -> 00:00:03,250"), "1500-3250 x"},
            {"a long dash", entry("00:00:01,500 \xE2\x80\x94> 00:00:03,250"), "1500-3250 x"},
            {"an arrow's own sign", entry("00:00:01,500 \xE2\x86\x92 00:00:03,250"), "1500-3250 x"},
            {"the number in front", "00:00:00,000 --> 00:00:01,000\nw\n\n2 00:00:01,500 --> 00:00:03,250\nx\n",
             "0-1000 w; 1500-3250 x"},
            {"full width", entry("00\uFF1A00\uFF1A01\uFF0C500 --\uFF1E 00\uFF1A00\uFF1A03\uFF0C250"), "1500-3250 x"},
            {"Arabic", entry("\u0660\u0660:\u0660\u0660:\u0660\u0661\u060C\u0665\u0660\u0660 --> 0:0:\u06F3,250"),
             "1500-3250 x"},
            {"marks and blanks that are not seen", entry("\u200E00:00:01,500\u00A0--> 00:00:03,250\u202C"),
             "1500-3250 x"},
            {"no end", "00:00:01,500 -->\na\n\n00:00:03,250 --> 00:00:04,000\nb\n", "1500-3250n a; 3250-4000 b"},
            {"an arrow of HTML", entry("00:00:01,500 --&gt; 00:00:03,250"), "1500-3250 x"},
            {"negative", entry("-00:00:01,500 --> 00:00:03,250"), "-1500-3250 x"},
            {"beyond what 32 bits hold", entry("1234:00:00,456 --> 9999:59:59,999"), "4442400456-35999999999 x"},
            {"minutes above 59", entry("00:99:99,999 --> 02:00:00,000"), "6039999-7200000 x"},
            {"backwards", entry("00:00:03,000 --> 00:00:01,000"), "3000-1000 x"},
        });
}

TEST(MeantSubRip, WhatElseStandsOnATimeLine) {
    expectReadings(
        "srt", Format::SubRip,
        {
            {"a place", entry("00:00:01,000 --> 00:00:02,000 X1:40 X2:600 Y1:20 Y2:50"), "1000-2000 x"},
            {"settings", entry("00:00:01,000 --> 00:00:02,000 align:start"), "1000-2000 x"},
            {"text", entry("00:00:01,000 --> 00:00:02,000 Hello", ""), "1000-2000 Hello"},
            {"markup", entry("00:00:01,000 --> 00:00:02,000 {\\an8}"), "1000-2000 x"},
            {"text that goes on", entry("00:00:01,000 --> 00:00:02,000 Note: this"), "1000-2000 Note: this/x"},
        });
    EXPECT_EQ(Format::None, readAs("srt", entry("00:00:01,000 -- 00:00:02,000")).format);
    EXPECT_EQ(Format::None, readAs("srt", entry("00:00:01,000 --> later")).format);
    EXPECT_EQ(Format::None, readAs("srt", entry("1 --> 2")).format);
}

TEST(MeantSubRip, EntriesWithAndWithoutNumbers) {
    const std::string first = "00:00:01,000 --> 00:00:02,000\n", second = "00:00:03,000 --> 00:00:04,000\n",
                      third = "00:00:05,000 --> 00:00:06,000\n";
    expectReadings(
        "srt", Format::SubRip,
        {
            {"as usual", "1\n" + first + "a\nb\n\n2\n" + second + "c\n", "1000-2000 a/b; 3000-4000 c"},
            {"none", first + "a\n\n" + second + "c\n", "1000-2000 a; 3000-4000 c"},
            {"none, and texts that are numbers", first + "1\n\n" + second + "2\n\n" + third + "3\n",
             "1000-2000 1; 3000-4000 2; 5000-6000 3"},
            {"one is missing", "1\n" + first + "a\n\n" + second + "b\n\n3\n" + third + "c",
             "1000-2000 a; 3000-4000 b; 5000-6000 c"},
            {"no empty line", "1\n" + first + "a\n2\n" + second + "b\n", "1000-2000 a; 3000-4000 b"},
            {"a line of blanks", "1\n" + first + "a\n \t \n2\n" + second + "b\n", "1000-2000 a; 3000-4000 b"},
            {"many empty lines", "\n\n1\n" + first + "a\n\n\n\n2\n" + second + "b\n", "1000-2000 a; 3000-4000 b"},
            {"an empty line behind each", "1\n\n" + first + "\na\n\nb\n\n2\n\n" + second + "\nc\n",
             "1000-2000 a//b; 3000-4000 c"},
            {"no text", "1\n" + first + "\n2\n" + second + "b\n", "3000-4000 b"},
            {"no text, no empty line", "1\n" + first + "2\n" + second + "b\n", "3000-4000 b"},
            {"an empty line within", "1\n" + first + "a\n\nb\n\n2\n" + second + "c\n", "1000-2000 a//b; 3000-4000 c"},
            {"a number within", "1\n" + first + "a\n42\nb\n\n2\n" + second + "c\n", "1000-2000 a/42/b; 3000-4000 c"},
            {"out of order", "2\n" + second + "b\n\n1\n" + first + "a\n", "3000-4000 b; 1000-2000 a"},
            {"four numbers in a text", "1\n" + first + "a\n20h30, 21h00.\n\n2\n" + second + "c\n",
             "1000-2000 a/20h30, 21h00.; 3000-4000 c"},
        });
}

TEST(MeantSubRip, NumbersAreWrittenInSeveralWays) {
    const std::string first = "00:00:01,000 --> 00:00:02,000\na\n", second = "00:00:03,000 --> 00:00:04,000\nb\n";
    for (const char* form : {"#%", "%.", "%)", "%:", " % "}) {
        std::string file;
        for (const auto& [number, entry] : {std::pair("1", first), std::pair("2", second)})
            file += std::string(form).replace(std::string(form).find('%'), 1, number) + "\n" + entry + "\n";
        EXPECT_EQ("1000-2000 a; 3000-4000 b", listed(readAs("srt", file))) << form;
    }
}

/// What cannot be placed in time is no part of the text before it.
TEST(MeantSubRip, EntriesWithoutTimes) {
    const std::string first = "1\n00:00:01,000 --> 00:00:02,000\na\n\n",
                      third = "3\n00:00:05,000 --> 00:00:06,000\nc\n";
    const struct {
        const char* name;
        std::string file;
        const char* expected;
        std::vector<size_t> lines;
    } kRows[] = {
        {"damaged", first + "2\n00:00:0x,000 --> 00:00:04,000\nb\n\n" + third, "1000-2000 a; 5000-6000 c", {6}},
        {"none", first + "2\nb\nbb\n\n" + third, "1000-2000 a; 5000-6000 c", {5}},
        {"none, and none behind it", first + "2\nb\n", "1000-2000 a", {5}},
        {"a number at the end", first + "2\n", "1000-2000 a", {}},
        {"another number is text", first + "7\nb\n\n" + third, "1000-2000 a//7/b; 5000-6000 c", {}},
        {"one that is not missing, too", first + "2\nb\n\n2\n" + third.substr(2), "1000-2000 a//2/b; 5000-6000 c", {}},
    };
    for (const auto& row : kRows) {
        const File file = readAs("srt", row.file);
        EXPECT_EQ(row.expected, listed(file)) << row.name;
        std::vector<size_t> lines;
        for (const Place& place : file.strayLines) lines.push_back(place.line);
        EXPECT_EQ(row.lines, lines) << row.name;
    }
}

TEST(MeantSubRip, EmptyEntriesAreKeptApart) {
    const File file = readAs("srt", "1\n00:00:01,000 --> 00:00:02,000\n<i></i>\n\n2\n0:0:3,0 --> 0:0:4,0\nb\n");
    ASSERT_EQ(1u, file.unseen.size());
    EXPECT_EQ(Unseen::Empty, file.unseen[0].unseen);
    EXPECT_EQ(1000, file.unseen[0].start);
}

TEST(MeantSubRip, Texts) {
    const auto text = [](const char* written) { return entry("00:00:01,000 --> 00:00:02,000", written); };
    expectReadings(
        "srt", Format::SubRip,
        {
            {"tags", text("<i>Hi</i> <B>there</B>"), "1000-2000 Hi there"},
            {"tags with values", text("<font color=\"#ff0000\">Hi</font>"), "1000-2000 Hi"},
            {"what looks like one", text("salt <and> a < b, I <3 you"), "1000-2000 salt <and> a < b, I <3 you"},
            {"codes in braces", text("{\\an8}Hi {y:i}there{\\i0}"), "1000-2000 Hi there"},
            {"other braces", text("{ \\an8}Hi {there}"), "1000-2000 { \\an8}Hi {there}"},
            {"entities", text("a &amp; b&nbsp;c &lt;d&gt; &#233;&#xE9;"), "1000-2000 a & b c <d> \xC3\xA9\xC3\xA9"},
            {"breaks", text("a<br>b\\Nc<BR/>d"), "1000-2000 a/b/c/d"},
            {"a bar is a bar", text("a|b"), "1000-2000 a|b"},
        });
}

}  // namespace
}  // namespace meant
