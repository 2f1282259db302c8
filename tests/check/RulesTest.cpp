// The smallest file for each cause, with the table that the library makes of it.
#include <gtest/gtest.h>

#include "tests/check/Tables.h"

namespace check {
namespace {

struct RuleRow {
    const char* ending;
    std::string file;
    Table table;
    const char* found;
};

void expectFindings(const std::vector<RuleRow>& rows) {
    for (const RuleRow& row : rows) EXPECT_EQ(row.found, foundIn(row.ending, row.file, shownOf(row.table))) << row.file;
}

TEST(Rules, OfSubRip) {
    const std::string second = "\n2\n00:00:03,000 --> 00:00:04,000\nb\n";
    const std::string a = "1\n00:00:01,000 --> 00:00:02,000\n";
    const ShownEntry b = {3000, 4000, "b"};
    const auto running = [](const char* text) {
        return ShownEntry{1000, 2000, text + std::string("2\n00:00:03,000 --> 00:00:04,000\nb")};
    };
    expectFindings({
        {"srt", a + "a\n", {{1000, 2000, "a"}}, ""},
        {"srt", "1\n00:00:01 --> 00:00:02,000\na\n" + second, {b}, "srt-no-fraction 1"},
        {"srt", "1\n00:00:01,000 --> 00:00:02\na\n" + second, {b}, "srt-no-fraction 1"},
        {"srt", "1\n00:01,000 --> 00:02,000\na\n" + second, {b}, "srt-no-hours 1"},
        {"srt", "1\n0:0:1,5 --> 0:0:2,5\na\n" + second, {{1005, 2005, "a"}, b}, "srt-fraction-digits 1"},
        {"srt", "\xEF\xBB\xBF" + a.substr(2) + "a\n" + second, {b}, "srt-mark-on-time-line 1"},
        {"srt", a + "<i>a</i>\n" + second, {running("a\n\n"), b}, "srt-tag-at-end-lf 1"},
        {"srt", a + "a" + second, {running("a\n"), b}, "srt-no-blank-line 1"},
        {"srt", a + "a\n " + second, {running("a\n \n"), b}, "srt-blank-line-blanks 1"},
        {"srt", a + second, {running(""), b}, "srt-empty-entry 1"},
        {"srt", a + "{\\an8}a\n", {{1000, 2000, "{\\an8}a"}}, "srt-braces-shown 1"},
        {"srt", a + "a{y:i}\nc\n", {{1000, 2000, "a"}}, "srt-brace-at-line-end 1"},
        {"srt", a + "a &amp; c\n", {{1000, 2000, "a &amp; c"}}, "srt-entity 1"},
        {"srt", a + "a\\Nc\n", {{1000, 2000, "a\\Nc"}}, "break-N 1"},
        {"srt", a + "a\n", {}, "? 1"},
    });
}

TEST(Rules, OfAnyFormat) {
    const std::string a = "1\n00:00:01,000 --> 00:00:04,000\na\n\n";
    expectFindings({
        {"sub", a, {}, "wrong-extension 1"},
        {"srt", a + "2\n00:00:02,000 --> 00:00:03,000\nb\n", {{1000, 4000, "a"}, {2000, 3000, "b"}}, "overlap 1"},
        {"srt", a + "2\n00:00:01,000 --> 00:00:03,000\nb\n", {{1000, 4000, "a"}, {1000, 3000, "b"}}, "same-start 1"},
        {"srt",
         "1\n00:00:05,000 --> 00:00:06,000\nb\n\n" + a,
         {{5000, 6000, "b"}, {1000, 4000, "a"}},
         "not-ascending 2"},
        {"srt", "1\n00:00:01,000 --> 1234:00:00,000\na\n", {{1000, 147432704, "a"}}, "beyond-32-bit 1"},
    });
}

TEST(Rules, OfTheOtherFormats) {
    expectFindings({
        {"ass", " Dialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,a\n", {}, "ssa-leading-blank 1"},
        {"ass", "Format: Start, End, Text\nDialogue: 0:00:01.00,0:00:02.00,a\n", {}, "ssa-few-commas 1"},
        {"ass",
         "Dialogue: 0,0:00:03.00,0:00:04.00,D,,0,0,0,,b\nDialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,a\n",
         {{3000, 4000, "b"}},
         "ssa-out-of-order 1"},
        {"ass", "Dialogue: 0,0:00:01.500,0:00:02.00,D,,0,0,0,,a\n", {{6000, 2000, "a"}}, "ssa-fraction 1"},
        {"ass", "Dialogue: 0,00:00:01.50,0:00:02.00,D,,0,0,0,,a\n", {{1500, 2000, ",a"}}, "ssa-time-width 1"},
        {"ass", "Dialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,{\\p1}m 0 0\n", {{1000, 2000, "m 0 0"}}, "ssa-drawing 1"},
        {"sub", "{1}{25}a\n", {}, "mdvd-unmarked-first-two 1"},
        {"sub", "{10}{25}a\n", {}, "mdvd-unmarked-zero 1"},
        {"sub", "{1}{1}25\n{25}{50}a\n", {}, "mdvd-unmarked-rate-line 1"},
        {"sub", "\xEF\xBB\xBF{25}{50}a\n", {{862, 1724, "a"}}, "mdvd-rate-29 1"},
        {"sub", "00:00:01.50,00:00:02.00\na\n", {{1050, 2000, "a"}}, "sv2-hundredths 1"},
    });
    EXPECT_EQ("sv2-negative-first 1", foundIn("sub", "-00:00:01.50,00:00:02.00\na\n", {}));
}

}  // namespace
}  // namespace check
