// The lines of an index, taken apart.
#include "tools/vobsub/IndexLine.h"

#include <gtest/gtest.h>

#include <string>

namespace vobsub {
namespace {

TEST(VobSubIndexLine, Keywords) {
    const struct {
        const char* line;
        Keyword keyword;
        const char* rest;
    } kRows[] = {
        {"timestamp: 0", Keyword::Timestamp, "0"},   {"Id:\t en, index: 0", Keyword::Id, "en, index: 0"},
        {"DELAY:+1", Keyword::Delay, "+1"},          {"size: 1x1", Keyword::Size, "1x1"},
        {"palette:", Keyword::Palette, ""},          {"palette 1", Keyword::None, "palette 1"},
        {" size: 1x1", Keyword::None, " size: 1x1"}, {"", Keyword::None, ""},
    };
    for (const auto& row : kRows) {
        Scan in(row.line);
        EXPECT_EQ(row.keyword, eatKeyword(&in)) << row.line;
        EXPECT_EQ(row.rest, in.rest()) << row.line;
    }
}

std::string timeIn(std::string_view text) {
    Scan in(text);
    const std::optional<Time> time = eatTime(&in);
    if (!time) return "none";
    return std::string(time->sign != 0 ? 1 : 0, time->sign) + " " + std::to_string(time->ms) + " '" +
           std::string(in.rest()) + "'";
}

TEST(VobSubIndexLine, Times) {
    EXPECT_EQ(" 3723500 ', filepos'", timeIn("01:02:03:500, filepos"));
    EXPECT_EQ(" 1005 ''", timeIn("0:0:1:5"));
    EXPECT_EQ(" 1500 ''", timeIn("0:0:1.5"));
    EXPECT_EQ(" 1005 ''", timeIn("00:00:01,005"));
    EXPECT_EQ(" 6000 ''", timeIn("00:00:01:5000"));
    EXPECT_EQ("+ 1500 ''", timeIn(" +00:00:01:500"));
    EXPECT_EQ("- -1500 ''", timeIn("-00:00:01:500"));
    EXPECT_EQ("none", timeIn("00:00:01"));
    EXPECT_EQ("none", timeIn("00:00:01:"));
    EXPECT_EQ("none", timeIn("- 00:00:01:500"));
}

TEST(VobSubIndexLine, HexadecimalDigits) {
    const struct {
        const char* text;
        uint64_t value;
        size_t count;
    } kRows[] = {
        {"000001800", 0x1800, 9},
        {" \tFf,", 0xFF, 2},
        {"xyz", 0, 0},
        {"", 0, 0},
        {"123456789abcdef01", 0x23456789ABCDEF01, 17},
    };
    for (const auto& row : kRows) {
        Scan in(row.text);
        const Hex hex = eatHex(&in);
        EXPECT_EQ(row.value, hex.value) << row.text;
        EXPECT_EQ(row.count, hex.count) << row.text;
    }
}

TEST(VobSubIndexLine, FrameSizes) {
    const struct {
        const char* text;
        int64_t width, height;
        bool hasCross, hasBlanks;
    } kRows[] = {
        {"720x576", 720, 576, true, false}, {"720 x576", 720, 576, true, true}, {"720x 576", 720, 576, true, true},
        {"720", 720, 0, false, false},      {"720 576", 720, 576, false, true}, {"x576", 0, 576, true, false},
    };
    for (const auto& row : kRows) {
        Scan in(row.text);
        const FrameSize size = eatFrameSize(&in);
        EXPECT_EQ(row.width, size.width) << row.text;
        EXPECT_EQ(row.height, size.height) << row.text;
        EXPECT_EQ(row.hasCross, size.hasCross) << row.text;
        EXPECT_EQ(row.hasBlanks, size.hasBlanks) << row.text;
    }
}

TEST(VobSubIndexLine, Languages) {
    Scan in("en, index: 0"), blank("de index"), bare("fr");
    EXPECT_EQ("en", eatLanguage(&in));
    EXPECT_EQ(", index: 0", in.rest());
    EXPECT_EQ("de", eatLanguage(&blank));
    EXPECT_EQ("fr", eatLanguage(&bare));
}

}  // namespace
}  // namespace vobsub
