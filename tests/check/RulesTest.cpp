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
        {"ass",
         "Dialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,{\\p1}m 0{\\p0}a\n",
         {{1000, 2000, "m 0a"}},
         "ssa-drawing 1"},
        {"ass",
         "Dialogue: 0,0:091:02.00,0:01:03.00,D,,0,0,0,,a\nDialogue: 0,0:00:03.00,0:00:04.00,D,,0,0,0,,b\n",
         {},
         "ssa-event-form 1"},
        {"ass",
         "Dialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,{\\p1}m 0 0\nDialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,b\n",
         {{1000, 2000, "m 0 0"}},
         "ssa-drawing 1"},
        {"sub", "{1}{25}a\n", {}, "mdvd-unmarked-first-two 1"},
        {"sub", "{10}{25}a\n", {}, "mdvd-unmarked-zero 1"},
        {"sub", "{1}{1}25\n{25}{50}a\n", {}, "mdvd-unmarked-rate-line 1"},
        {"sub", "\xEF\xBB\xBF{25}{50}a\n", {{862, 1724, "a"}}, "mdvd-rate-29 1"},
        {"sub", "00:00:01.50,00:00:02.00\na\n", {{1050, 2000, "a"}}, "sv2-hundredths 1"},
    });
    EXPECT_EQ("sv2-negative-first 1", foundIn("sub", "-00:00:01.50,00:00:02.00\na\n", {}));
}

TEST(Rules, OfTimedText) {
    expectFindings({
        {"txt", "0:00:01:a\r\n0:00:02:b\r\n", {{1000, 2000, "a"}}, "txt-no-closing-lines 1"},
        {"txt", "0:00:01:a\n0:00:02:\n", {{1000, 2000, "a\n0:00:02:"}}, "txt-lf 1"},
        {"txt", "0:00:01:a\r\n0:0x:02:\r\n0:00:05:b\r\n", {{1000, 5000, "a"}}, "txt-broken-line 1"},
        {"txt", "0:00:01.5:a\r\n0:00:02.0:\r\n", {{1000, 2000, "a"}}, "txt-tenths 1"},
        {"txt",
         "\xEF\xBB\xBF"
         "0:00:01:a\r\n0:00:02:\r\n",
         {{1000, 2000, ""}},
         "txt-utf8-mark 1"},
        {"txt", "0:00:01:5 a\r\n0:00:02:\r\n", {{1000, 2000, "a"}}, "txt-number-first 1"},
        {"txt",
         "0:00:01,1=a\r\n0:00:03,1=b\r\n0:00:03,2=c\r\n0:00:05,1=\r\n",
         {{1000, 3000, "a\nb"}},
         "txt-second-line-missing 2"},
    });
}

TEST(Rules, OfDvbTextAndSubViewer10) {
    expectFindings({
        {"sub", "00:00:01:00 00:00:04:00 a\r\n", {}, "dvb-as-sv2-colon 1"},
        {"sub", "1 0:00:01,000 0:00:04,000 a\r\n", {}, "dvb-as-sv2-numbered 1"},
        {"sub", "0:00:01:12 0:00:04:00   a\r\n", {{1012, 4000, "a"}}, "dvb-frames 1"},
        {"sub",
         "\xEF\xBB\xBF"
         "0:00:01:00 0:00:04:00   a\r\n",
         {},
         "dvb-mark 1"},
        {"sub", "[00:00:01]\na\n[00:00:04]\n", {{1000, 4000, "a\n[00:00:04]"}}, "sv1-lf 1"},
        {"sub", "[00:00:01]\r\na\r\n[00:00:04]\r\nb\r\n[00:00:06]\r\n", {{1000, 4000, "a"}}, "sv1-end-line-missing 1"},
        {"sub", "[00:00:01]\r\na <and> b\r\n[00:00:04]\r\n", {{1000, 4000, "a b"}}, "text-angle-brackets 1"},
    });
}

TEST(Rules, OfSami) {
    const std::string end = "<SYNC Start=4000><P>&nbsp;\r\n";
    expectFindings({
        {"smi", "<SYNC Start=-200><P>a\r\n" + end, {{200, 4000, "a"}}, "smi-negative 1"},
        {"smi", "<SYNC  Start=1000><P>a\r\n" + end, {}, "smi-sync-form 1"},
        {"smi", "<BODY><SYNC Start=1000><P>a\r\n" + end, {}, "smi-sync-not-at-line-start 1"},
        {"smi", "<SYNC Start=1000>a\r\n" + end, {}, "smi-no-p 1"},
        {"smi", "<SYNC Start=1000><P>a<br>b\r\n" + end, {{1000, 4000, "a<br>b"}}, "smi-br-inline 1"},
        {"smi", "<SYNC Start=1000><P>a<BR>\r\nb\r\n" + end, {{1000, 4000, "a"}}, "smi-br-at-line-end 1"},
        {"smi", "<SYNC Start=1000><P>a<b>\r\nb\r\n" + end, {{1000, 4000, "a"}}, "smi-element-at-line-end 1"},
        {"smi", "<SYNC Start=1000><P>a &amp; b\r\n" + end, {{1000, 4000, "a &amp; b"}}, "smi-entity 1"},
        {"smi", "<SYNC Start=1000><P Class=A>a<P Class=B>b\r\n" + end, {{1000, 4000, "a"}}, "smi-languages 1"},
    });
}

}  // namespace
}  // namespace check
