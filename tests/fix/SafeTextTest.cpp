// Texts in which the library finds nothing but text.
#include "tools/fix/SafeText.h"

#include <gtest/gtest.h>

#include "tools/meant/Utf8.h"

namespace fix {
namespace {

std::string safe(std::string_view text, Letters letters = Letters::Utf8) {
    Changes changes;
    return safeText(text, letters, letters == Letters::Utf16 ? Brackets::OpenBraces : Brackets::WithLetters, &changes);
}

TEST(SafeText, StaysAsItIs) {
    for (const char* text :
         {"a", "a\nb", "a < b > c", "I <3 you", "{ \\an8}", "{1}", "a > b", "<", "{", "a <b", "a {b"}) {
        Changes changes;
        EXPECT_EQ(text, safeText(text, Letters::Utf8, Brackets::WithLetters, &changes));
        EXPECT_FALSE(changes.angles || changes.braces || changes.isCut || changes.hasTimes) << text;
    }
}

TEST(SafeText, BracketsThatWouldBeEaten) {
    const struct {
        const char* text;
        const char* safe;
    } kRows[] = {
        {"<and>", "＜and＞"}, {"a </b> c", "a ＜/b＞ c"},     {"a <b c> d <e>", "a ＜b c＞ d ＜e＞"},
        {"{y:i}", "｛y:i｝"}, {"{a} {1} {b", "｛a｝ {1} {b"}, {"<a {b> c}", "＜a ｛b＞ c｝"},
        {"<a\nb>", "<a\nb>"},
    };
    for (const auto& row : kRows) {
        Changes changes;
        EXPECT_EQ(row.safe, safeText(row.text, Letters::Utf8, Brackets::WithLetters, &changes));
        EXPECT_EQ(std::string(row.safe) != row.text, changes.angles || changes.braces) << row.text;
    }
}

TEST(SafeText, ABraceOf16BitTextNeedsNoEnd) {
    EXPECT_EQ("a ｛b\nc}", safe("a {b\nc}", Letters::Utf16));
    EXPECT_EQ("a {1\n<b", safe("a {1\n<b", Letters::Utf16));
}

TEST(SafeText, AllBrackets) {
    Changes changes;
    EXPECT_EQ("＜3 ｛ ｛1｝ ＞ ｝", safeText("<3 { {1} > }", Letters::Utf8, Brackets::All, &changes));
}

TEST(SafeText, NoLineIsEmptyAndNoCharacterAControl) {
    EXPECT_EQ("a\n\xC2\xA0\nb", safe("\n\na\n \nb\n\n"));
    EXPECT_EQ("a b", safe("\x0B"
                          "a\x01"
                          "b\x7F"));
    EXPECT_EQ("", safe("\n\v\n"));
}

TEST(SafeText, IsCutAtALine) {
    const std::string line(99, 'x');
    std::string text;
    for (int i = 0; i < 100; ++i) text += line + "\n";
    Changes changes;
    const std::string cut = safeText(text, Letters::Utf8, Brackets::WithLetters, &changes);
    EXPECT_TRUE(changes.isCut);
    EXPECT_EQ(79u * 100 - 1, cut.size());  // CR LF: 101 bytes a line
    EXPECT_EQ(39u * 100 - 1, safe(text, Letters::Utf16).size());
}

TEST(SafeText, ALineThatIsTooLongIsCutBetweenWords) {
    std::string words;
    while (words.size() < 9000) words += "word ";
    EXPECT_EQ(words.substr(0, 7994), safe(words));
    EXPECT_EQ(std::string(7998, 'x'), safe(std::string(9000, 'x')));
    std::string wide;
    while (wide.size() < 9000) wide += "\xE4\xB8\xAD";
    EXPECT_EQ(wide.substr(0, 7998), safe(wide));
    EXPECT_EQ(7996u, 2 * meant::utf16Length(safe(wide + wide, Letters::Utf16)));
}

TEST(SafeText, NoLineReadsAsTimes) {
    const struct {
        const char* text;
        Letters letters;
        bool changed;
    } kRows[] = {
        {"20h30, 21h00.\n1 2 3 4", Letters::Utf8, false},  // the first line is never read
        {"a\n20h30, 21h00.\n12:30, 13:30", Letters::Utf8, true},
        {"a\n20h30, 21h00!\n12 30", Letters::Utf8, false},
        {"a\n00:00:01,000 --> 00:00:02,000", Letters::Utf8, true},
        {"a\n1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19", Letters::Utf8, true},
        {"a\n20h30, 21h00.", Letters::Utf8, false},
        {"a\n1", Letters::Utf8, false},
        {"a\n1\xC3\xA9"
         "2:3:4---5:6:7:8",
         Letters::Utf8, false},
        {"a\n1\xC3\xA9"
         "2:3:4---5:6:7:8",
         Letters::Utf16, true},
    };
    for (const auto& row : kRows) {
        Changes changes;
        const std::string safe = withoutTimeLines(row.text, row.letters, &changes);
        EXPECT_EQ(row.changed, changes.hasTimes) << row.text;
        std::string expected = row.text;
        if (row.changed) expected.insert(2, "\xC2\xA0");
        EXPECT_EQ(expected, safe);
    }
}

TEST(SafeText, Utf16) {
    std::string bytes;
    appendUtf16("a\xC3\xA9\xF0\x9F\x98\x80", &bytes);
    EXPECT_EQ(std::string("a\0\xE9\0\x3D\xD8\0\xDE", 8), bytes);
}

}  // namespace
}  // namespace fix
