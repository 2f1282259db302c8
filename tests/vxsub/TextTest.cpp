#include "tools/vxsub/Text.h"

#include <gtest/gtest.h>
#include <locale.h>

namespace {

using namespace std::string_literals;
using vxsub::decodeUtf16;
using vxsub::decodeUtf8;
using vxsub::displayLines;
using vxsub::displayWidth;
using vxsub::encodeUtf8;
using vxsub::escapeLine;
using Lines = std::vector<std::string>;
using Units = std::vector<android::U16>;

TEST(Utf8, TakesWellFormedText) {
    const struct {
        std::string bytes;
        std::u32string text;
    } kRows[] = {
        {"", U""},
        {"abc", U"abc"},
        {"a\0b"s, std::u32string(U"a\0b", 3)},
        {"\x7F\xC2\x80\xDF\xBF", U"\u007F\u0080\u07FF"},
        {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", U"\u0800\uD7FF\uE000\uFFFF"},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", U"\U00010000\U0010FFFF"},
        {"\xEF\xBB\xBF"
         "a",
         U"\uFEFFa"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(decodeUtf8(row.bytes), row.text) << row.bytes;
        EXPECT_EQ(encodeUtf8(row.text), row.bytes);
    }
}

TEST(Utf8, ReplacesWhatIsNotWellFormed) {
    const struct {
        std::string bytes, shown;  // ? stands for U+FFFD
    } kRows[] = {
        {"\x80", "?"},
        {"\xBF"
         "a",
         "?a"},
        {"\xC0\x80", "??"},  // longer than needed
        {"\xC1\xBF", "??"},
        {"\xE0\x9F\xBF", "???"},
        {"\xF0\x8F\xBF\xBF", "????"},
        {"\xED\xA0\x80", "???"},       // a surrogate
        {"\xF4\x90\x80\x80", "????"},  // behind U+10FFFF
        {"\xF5\xFF\xFE", "???"},
        {"\xC3", "?"},  // cut off
        {"\xE4\xB8", "?"},
        {"\xF0\x9F\x98", "?"},
        {"\xE4\xB8"
         "a",
         "?a"},
        {"\xF0\x9F\xE4\xB8\xAD", "?\xE4\xB8\xAD"},
        {"\xC3\xC3\xA9", "?\xC3\xA9"},
        {"\xC3\0"s, "?\0"s},
    };
    for (const auto& row : kRows) {
        std::string shown;
        for (const char c : row.shown)
            if (c == '?')
                shown += "\xEF\xBF\xBD";
            else
                shown += c;
        EXPECT_EQ(encodeUtf8(decodeUtf8(row.bytes)), shown) << testing::PrintToString(row.bytes);
    }
}

TEST(Utf16, JoinsPairsAndReplacesLoneHalves) {
    const struct {
        Units units;
        std::u32string text;
    } kRows[] = {
        {{}, U""},
        {{0x61, 0xD7FF, 0xE000, 0xFFFF}, U"a\uD7FF\uE000\uFFFF"},
        {{0xD83D, 0xDE00}, U"\U0001F600"},
        {{0xD800, 0xDC00, 0xDBFF, 0xDFFF}, U"\U00010000\U0010FFFF"},
        {{0xD83D}, U"\uFFFD"},
        {{0xD83D, 0x61}, U"\uFFFDa"},
        {{0xDE00, 0x61}, U"\uFFFDa"},
        {{0xDE00, 0xD83D}, U"\uFFFD\uFFFD"},
        {{0xD83D, 0xD83D, 0xDE00}, U"\uFFFD\U0001F600"},
    };
    for (const auto& row : kRows) EXPECT_EQ(decodeUtf16(row.units), row.text);
}

TEST(Utf8, WritesOnlyCharacters) {
    EXPECT_EQ(encodeUtf8(std::u32string(1, char32_t(0xD800))), "\xEF\xBF\xBD");
    EXPECT_EQ(encodeUtf8(std::u32string(1, char32_t(0xDFFF))), "\xEF\xBF\xBD");
    EXPECT_EQ(encodeUtf8(std::u32string(1, char32_t(0x110000))), "\xEF\xBF\xBD");
}

TEST(EscapeLine, LeavesNothingThatATerminalActsOn) {
    const struct {
        std::u32string text;
        const char* line;
    } kRows[] = {
        {U"Hello\nWorld", "Hello\\nWorld"},
        {U"a\r\n\tb", "a\\r\\n\\tb"},
        {std::u32string(U"a\0b", 3), "a\\0b"},
        {U"\x1b[31mred\x07", "\\x1b[31mred\\x07"},
        {U"\u007F\u0085\u009B1m\u00A0", "\\x7f\\u0085\\u009b1m\u00A0"},
        {U"\u2028\u2029", "\\u2028\\u2029"},
        {U"C:\\new", "C:\\\\new"},
        {U"中文 é", "中文 é"},
    };
    for (const auto& row : kRows) EXPECT_EQ(escapeLine(row.text), row.line);
}

TEST(DisplayLines, BreaksAtLineEndsAndDropsBlankOnesAtBothEnds) {
    EXPECT_EQ(displayLines(U""), Lines());
    EXPECT_EQ(displayLines(U" \r\n\n"), Lines());
    EXPECT_EQ(displayLines(U"one"), Lines({"one"}));
    EXPECT_EQ(displayLines(U"\n\n  one\n\ntwo \n"), Lines({"  one", "", "two"}));
    EXPECT_EQ(displayLines(U"a\x1b[2Jb\\n"), Lines({"a\\x1b[2Jb\\n"}));
}

TEST(DisplayLines, FitsTheWidth) {
    EXPECT_EQ(displayLines(U"one two three", 13), Lines({"one two three"}));
    EXPECT_EQ(displayLines(U"one two three", 12), Lines({"one two", "three"}));
    EXPECT_EQ(displayLines(U"one two three", 7), Lines({"one two", "three"}));
    EXPECT_EQ(displayLines(U"one two three", 5), Lines({"one", "two", "three"}));
    EXPECT_EQ(displayLines(U"one two three", 3), Lines({"one", "two", "thr", "ee"}));
    EXPECT_EQ(displayLines(U"abcdef\ngh", 4), Lines({"abcd", "ef", "gh"}));
}

TEST(DisplayLines, CountsColumnsNotBytes) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    EXPECT_EQ(displayWidth("é"), 1u);
    EXPECT_EQ(displayWidth("中文"), 4u);
    EXPECT_EQ(displayWidth("e\u0301"), 1u);  // a combining accent
    EXPECT_EQ(displayLines(U"中文字", 5), Lines({"中文", "字"}));
    EXPECT_EQ(displayLines(U"ééé", 3), Lines({"ééé"}));
    EXPECT_EQ(displayLines(U"中", 1), Lines({"中"}));  // cannot be narrower
    setlocale(LC_CTYPE, "C");
}

}  // namespace
