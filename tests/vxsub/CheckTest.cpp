// The smallest file for each cause, checked with the library itself.
#include "tools/vxsub/CheckFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>

#include "tests/support/Interpose.h"
#include "tests/support/VobSubPair.h"
#include "tools/check/Causes.h"
#include "tools/fix/Fix.h"
#include "tools/meant/SystemEncodings.h"
#include "tools/samples/VobSubMaker.h"
#include "tools/vxsub/Errors.h"
#include "tools/vxsub/ShownEntries.h"

namespace {

using namespace std::string_literals;
using test::TempFile;
using test::utf16be;
using test::utf16le;
using U8 = unsigned char;

const std::string kMark = "\xEF\xBB\xBF";

struct Row {
    const char* cause;
    const char* ending;
    std::string bytes;
    size_t line = 1;  ///< where the first finding of that name stands; 0: nowhere, it is the file's
    const char* language = "";
    unsigned frameRate = 0;
};

const std::string kA = "1\r\n00:00:01,000 --> 00:00:02,000\r\na\r\n\r\n";
const std::string kB = "2\r\n00:00:03,000 --> 00:00:04,000\r\nb\r\n\r\n";
const std::string kBLf = "2\n00:00:03,000 --> 00:00:04,000\nb\n\n";

std::string event(const char* start, const char* end, const char* text) {
    return "Dialogue: 0,"s + start + "," + end + ",D,,0,0,0,," + text + "\r\n";
}

std::string sync(const char* start, const char* text) {
    return "<SYNC Start="s + start + "><P Class=X>" + text + "\r\n";
}

const std::string kSamiEnd = sync("4000", "&nbsp;");

const std::vector<Row>& rowsOfSubRip() {
    static const std::vector<Row> kRows = {
        {"srt-no-fraction", ".srt", "1\r\n00:00:01 --> 00:00:02,000\r\na\r\n\r\n" + kB, 2},
        {"srt-no-hours", ".srt", kB + "1\r\n00:05,000 --> 00:06,000\r\na\r\n\r\n", 6},
        {"srt-fraction-digits", ".srt", "1\r\n0:0:1,5 --> 0:0:2,5\r\na\r\n\r\n", 2},
        {"srt-fraction-digits", ".srt", "1\r\n00:00:01,0 --> 00:00:02,5\r\na\r\n\r\n", 2},
        {"srt-utf16-shape", ".srt", utf16le("1\r\n0:00:01,000 --> 0:00:02,000\r\na\r\n\r\n"), 2},
        {"srt-mark-on-time-line", ".srt", kMark + kA.substr(3)},
        {"mark-inside", ".srt", kA + kMark + kB.substr(3), 5},
        {"srt-text-as-time-line", ".srt", "1\n00:00:01,000 --> 00:00:02,000\na\n20h30, 21h00.\n\n" + kBLf, 7},
        {"srt-time-form", ".srt", "1\r\n00:00:01,000 --> 00:00:::02,000\r\na\r\n\r\n", 2},
        {"srt-no-blank-line", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na\r\n" + kB, 2},
        {"srt-blank-line-blanks", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na\r\n \r\n" + kB, 2},
        {"srt-mixed-ends", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na\n\r\n" + kB, 2},
        {"srt-damaged-times", ".srt", kA + "2\r\n00:00:0x,000 --> 00:00:04,000\r\nb\r\n\r\n", 6},
        {"srt-damaged-times", ".srt", kA + "2\r\nb\r\n\r\n3\r\n00:00:05,000 --> 00:00:06,000\r\nc\r\n\r\n", 5},
        {"text-damaged-tag", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\n< i >a</i>\r\n\r\n", 2},
        {"srt-empty-entry", ".srt", "1\n00:00:01,000 --> 00:00:02,000\n\n" + kBLf, 5},
        {"srt-empty-entry", ".srt",
         kA + "2\r\n00:00:03,000 --> 00:00:04,000\r\n00:00:05,000 --> 00:00:06,000\r\nb\r\n\r\n", 7},
        {"srt-empty-entry", ".srt",
         kA + "2\r\n00:00:03,000 --> 00:00:04,000\r\n00:00:03,000 --> 00:00:04,000\r\nb\r\n\r\n", 7},
        {"srt-blank-below-time", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\n\r\na\r\n\r\n", 2},
        {"srt-blank-line-in-text", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na\r\n\r\nb c\r\n\r\n", 2},
        {"srt-tag-at-end-lf", ".srt", "1\n00:00:01,000 --> 00:00:02,000\n<i>a</i>\n\n" + kBLf, 2},
        {"srt-brace-at-line-end", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na{y:i}\r\nb\r\n\r\n", 2},
        {"srt-braces-shown", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\n{\\an8}a\r\n\r\n", 2},
        {"srt-entity", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na &amp; b\r\n\r\n", 2},
        {"srt-leading-break", ".srt", utf16be("1\r\n00:00:01,000 --> 00:00:02,000\r\na\r\n\r\n"), 0},
        {"srt-utf16-markup", ".srt", utf16be("1\r\n00:00:01,000 --> 00:00:02,000\r\n<i>a</i>\r\n\r\n"), 2},
        {"text-angle-brackets", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na <word> b\r\n\r\n", 2},
        {"text-open-bracket", ".srt", "1\n00:00:01,000 --> 00:00:02,000\na <word\n\n" + kBLf, 2},
        {"text-too-long", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\n" + std::string(8300, 'a') + "\r\n\r\n", 2},
        {"break-N", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na\\Nb\r\n\r\n", 2},
        {"utf16-no-mark", ".srt", utf16le(kA + kB, false), 2},
        {"utf16be-lf", ".srt", utf16be("1\n00:00:01,000 --> 00:00:02,000\na\n\n" + kBLf), 2},
        {"utf16-shifted", ".srt", utf16le(kA) + "\0"s + utf16le(kB, false), 2},
        {"utf32", ".srt", "\xFF\xFE\0\0"s + utf16le(utf16le(kA, false), false), 2},
        {"zeros-in-text", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na\0b\r\n\r\n"s, 2},
        {"cr-only", ".srt", "1\r00:00:01,000 --> 00:00:02,000\ra\r\r2\r00:00:03,000 --> 00:00:04,000\rb\r\r", 2},
        {"end-of-file-mark", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na\r\n\x1A", 2},
        {"cr-cr-lf", ".srt", "1\r\r\n00:00:01,000 --> 00:00:02,000\r\r\na\r\r\n\r\r\n" + kB, 2},
        {"break-br", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na[br]b\r\n\r\n", 2},
        {"text-br", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\na<br />b\r\n\r\n", 2},
        {"wrong-extension", ".sub", kA + kB, 2},
        {"not-supported", ".srt", "WEBVTT\n\n00:01.000 --> 00:02.000\na\n", 0},
        {"taken-for-another", ".srt", "WEBVTT\n\n00:00:01.000 --> 00:00:02.000\na\n", 0},
        {"overlap", ".srt", "1\r\n00:00:01,000 --> 00:00:09,000\r\na\r\n\r\n" + kB, 2},
        {"same-start", ".srt", kA + "2\r\n00:00:01,000 --> 00:00:04,000\r\nb\r\n\r\n", 2},
        {"not-ascending", ".srt", kB + "3\r\n00:00:09,000 --> 00:00:10,000\r\nc\r\n\r\n" + kA, 6},
        {"ends-before-start", ".srt", "1\r\n00:00:03,000 --> 00:00:02,000\r\na\r\n\r\n", 2},
        {"beyond-32-bit", ".srt", "1\r\n1234:00:00,000 --> 1234:00:01,000\r\na\r\n\r\n", 2},
        {"utf8-unmarked-native", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\n\xC3\xA9t\xC3\xA9\r\n\r\n", 0},
        {"property-big5", ".srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\n\xE4\xBD\xA0\r\n\r\n", 2, "big5"},
    };
    return kRows;
}

const std::vector<Row>& rowsOfScripts() {
    static const std::vector<Row> kRows = {
        {"ssa-mark", ".ass", kMark + event("0:00:01.00", "0:00:02.00", "a") + event("0:00:03.00", "0:00:04.00", "b")},
        {"pair-stray-time", ".txt", "0:00:00:\r\n0:00:01:a\r\n0:00:03:\r\n0:00:04:b\r\n0:00:05:\r\n", 2},
        {"ssa-leading-blank", ".ass", " " + event("0:00:01.00", "0:00:02.00", "a")},
        {"ssa-few-commas", ".ass", "Format: Start, End, Text\r\nDialogue: 0:00:01.00,0:00:02.00,a\r\n", 2},
        {"ssa-out-of-order", ".ass", event("0:00:03.00", "0:00:04.00", "b") + event("0:00:01.00", "0:00:02.00", "a"),
         2},
        {"ssa-fraction", ".ass", event("0:00:01.500", "0:00:09.00", "a")},
        {"ssa-time-width", ".ass", event("00:00:01.50", "0:00:02.00", "a")},
        {"ssa-field-order", ".ass",
         "Format: Layer, End, Start, Style, Name, MarginL, MarginR, MarginV, Effect, Text\r\n" +
             event("0:00:02.00", "0:00:01.00", "a"),
         2},
        {"ssa-event-form", ".ass", event("0:00:01", "0:00:02.00", "a")},
        {"ssa-drawing", ".ass", event("0:00:01.00", "0:00:02.00", "{\\p1}m 0 0 l 1 1{\\p0}"), 1},
        {"ssa-utf16be-markup", ".ass", utf16be("[Events]\r\n" + event("0:00:01.00", "0:00:02.00", "{\\i1}a{\\i0}b")),
         2},
        {"text-block-at-line-end", ".smi", sync("1000", "a{y:i}\r\nb") + kSamiEnd},
        {"text-braces", ".txt", "0:00:01:a {so} b\r\n0:00:03:\r\n"},
        {"utf8-unmarked-as-gbk", ".ass", event("0:00:01.00", "0:00:02.00", "\xD0\x9F\xD1\x80\xD0\xB8"), 0},
        {"utf8-unmarked-as-big5", ".ass", event("0:00:01.00", "0:00:02.00", "\xE4\xB8\xAD\xE6\x96\x87"), 0},
        {"codepage-as-gbk", ".ass", event("0:00:01.00", "0:00:02.00", "\xFE\x45"), 0},
        {"codepage-as-big5", ".ass", event("0:00:01.00", "0:00:02.00", "\xA4\x40"), 0},
        {"smi-sync-form", ".smi", "<SYNC  Start=1000><P Class=X>a\r\n" + kSamiEnd},
        {"smi-sync-not-at-line-start", ".smi", "<BODY><SYNC Start=1000><P Class=X>a\r\n" + kSamiEnd},
        {"smi-be-indented", ".smi", utf16be("<BODY>\r\n " + sync("1000", "a") + kSamiEnd), 2},
        {"smi-skipped-sync-text", ".smi", sync("1000", "a") + "<sync  start=2000><p class=x>b\r\n" + kSamiEnd},
        {"smi-negative", ".smi", sync("-1000", "a") + kSamiEnd},
        {"smi-no-p", ".smi", "<SYNC Start=1000>a\r\n" + kSamiEnd},
        {"smi-languages", ".smi",
         "<SYNC Start=1000><P Class=A>a\r\n<SYNC Start=1000><P Class=B>b\r\n<SYNC Start=4000><P Class=A>&nbsp;\r\n"
         "<SYNC Start=4000><P Class=B>&nbsp;\r\n"},
        {"smi-br-inline", ".smi", sync("1000", "a<br>b") + kSamiEnd},
        {"smi-br-at-line-end", ".smi", sync("1000", "a<BR>\r\nb") + kSamiEnd},
        {"smi-element-at-line-end", ".smi", sync("1000", "<i>a</i>\r\nb") + kSamiEnd},
        {"smi-behind-element", ".smi", sync("1000", "a <b>&nbsp;b") + kSamiEnd},
        {"smi-entity", ".smi", sync("1000", "a &amp; b") + kSamiEnd},
        {"smi-entity", ".smi", sync("1000", "a") + sync("2000", "&NBSP;") + kSamiEnd, 2},
        {"smi-utf16-markup", ".smi", utf16le("<BODY>\r\n" + sync("1000", "<b>a</b> b") + kSamiEnd), 2},
        {"txt-no-closing-lines", ".txt", "0:00:01:a\r\n0:00:03:b\r\n", 2},
        {"txt-broken-line", ".txt", "0:00:01:a\r\n0:0x:02:\r\n0:00:05:b\r\n0:00:06:\r\n"},
        {"txt-second-line-missing", ".txt",
         "00:00:01,1=a\r\n00:00:03,1=b\r\n00:00:03,2=c\r\n00:00:05,1=\r\n00:00:05,2=\r\n", 1},
        {"txt-lf", ".txt", "0:00:01:a\n0:00:03:\n"},
        {"txt-tenths", ".txt", "0:00:01.5:a\r\n0:00:02.0:\r\n"},
        {"txt-tenths", ".txt", "00:00:01.50:a\r\n00:00:02.00:\r\n"},
        {"txt-number-first", ".txt", "0:00:01:5 apples\r\n0:00:03:\r\n"},
        {"txt-one-width", ".txt",
         "0:00:01:a\r\n0:00:02:\r\n00:00:03,1=b\r\n00:00:03,2=c\r\n00:00:05,1=\r\n00:00:05,2=\r\n", 3},
        {"txt-utf8-mark", ".txt", kMark + "0:00:01:a\r\n0:00:03:\r\n"},
        {"txt-utf16-short", ".txt", utf16le("0:00:01:a\r\n0:00:03:\r\n")},
        {"text-brace-unclosed", ".txt", "0:00:01:a {b\r\n0:00:03:\r\n"},
    };
    return kRows;
}

const std::vector<Row>& rowsOfSub() {
    static const std::vector<Row> kRows = {
        {"mdvd-unmarked-zero", ".sub", "{25}{50}a\r\n{75}{100}b\r\n"},
        {"mdvd-unmarked-zero", ".sub", "{25}{50}\x1B$B$\"\x1B(B\r\n{75}{100}b\r\n"},
        {"mdvd-unmarked-first-two", ".sub", "{1}{50}a\r\n{75}{100}b\r\n{125}{150}c\r\n"},
        {"mdvd-unmarked-rate-line", ".sub", "{1}{1}25\r\n{25}{50}a\r\n{75}{100}b\r\n", 2},
        {"mdvd-rate-29", ".sub", kMark + "{25}{50}a\r\n{75}{100}b\r\n"},
        {"sub-mark", ".sub", kMark + "{25}{50}a\r\n"},
        {"mdvd-rate-whole", ".sub", kMark + "{1}{1}25\r\n{25}{50}a\r\n", 2},
        {"mdvd-rate-rounded", ".sub", kMark + "{2500}{2550}a\r\n{3500}{3550}b\r\n", 1, "", 23976},
        {"mdvd-rate-zeros", ".sub", kMark + "{1}{1}23.05\r\n{2500}{2550}a\r\n", 2},
        {"mdvd-first-line", ".sub", kMark + "title\r\n{25}{50}a\r\n", 2},
        {"mdvd-text-as-rate", ".sub", kMark + "{25}{50}12:30 a\r\n{75}{100}b\r\n"},
        {"mdvd-utf16", ".sub", utf16le("{1}{1}25.0\r\n{25}{50}a\r\n"), 2},
        {"mdvd-frame-form", ".sub", kMark + "{1}{1}25.0\r\n{25}{50}a\r\n{75 }{100}long\r\n", 3},
        {"break-bar", ".sub", kMark + "{1}{1}25.0\r\n{25}{50}a|b\r\n", 2},
        {"sv2-hundredths", ".sub", "00:00:01.50,00:00:02.00\r\na\r\n"},
        {"sv2-negative-first", ".sub", "-00:00:01.00,00:00:02.00\r\na\r\n"},
        {"sv2-first-digit", ".sub", "2 lines\r\n00:00:01.00,00:00:02.00\r\na\r\n", 2},
        {"sv2-time-width", ".sub", "0:0:1.000,0:0:2.000\r\na\r\n"},
        {"sv2-time-form", ".sub", "00:00:01.000,00:00:02.000\r\na\r\n\r\n00:00:03.000-00:00:04.000\r\nwords\r\n", 5},
        {"sv2-leading-break", ".sub", utf16le("00:00:01.00,00:00:02.00\r\na\r\n"), 0},
        {"break-br", ".sub", "00:00:01.000,00:00:02.000\r\na[br]b\r\n"},
        {"break-br", ".sub", "00:00:01.000,00:00:02.000\r\nA[BR]B\r\n"},
        {"srt-braces-shown", ".sub", "00:00:01.000,00:00:02.000\r\n{\\an8}a\r\n"},
        {"srt-blank-line-blanks", ".sub", "00:00:01.000,00:00:02.000\r\na\r\n \r\n00:00:03.000,00:00:04.000\r\nb\r\n"},
        {"sub-second-digit", ".sub", "A1\r\n00:00:01.000,00:00:02.000\r\na\r\n", 2},
        {"sub-mark", ".sub", kMark + "[00:00:01]\r\na\r\n[00:00:02]\r\n[00:00:03]\r\nb\r\n[00:00:04]\r\n"},
        {"sub-order", ".sub", kMark + "{1}{1}25.0\r\n{25}{50}a\r\n[00:00:05]\r\n{75}{90}b\r\n", 2},
        {"sv1-utf16le", ".sub", utf16le("[00:00:01]\r\na\r\n[00:00:04]\r\n")},
        {"sub-utf16-markup", ".sub", utf16be("[00:00:01]\r\n<i>a</i>\r\n[00:00:04]\r\n")},
        {"sv1-end-line-missing", ".sub", "[00:00:01]\r\na\r\n[00:00:04]\r\nb\r\n[00:00:06]\r\n", 3},
        {"sv1-time-width", ".sub", "[0:0:1]\r\na\r\n[0:0:4]\r\n"},
        {"sv1-time-form", ".sub", "[00:00:01]\r\na\r\n[00;00:04]\r\n[00:00:05]\r\nb\r\n[00:00:06]\r\n"},
        {"sv1-lf", ".sub", "[00:00:01]\na\n[00:00:04]\n"},
        {"text-tag-at-line-end", ".sub", "[00:00:01]\r\n<i>a</i>\r\n[00:00:04]\r\n"},
        {"trail-byte-brace", ".sub", "[00:00:01]\r\n\xB4\xFA\xB8\xD5\xA5{\xAA\xBA\xA4@\r\n[00:00:04]\r\n"},
        {"dvb-frames", ".sub", "0:00:01:12 0:00:04:00   a\r\n"},
        {"dvb-as-sv2-colon", ".sub", "00:00:01:00 00:00:04:00 a\r\n00:00:05:00 00:00:06:00 b\r\n"},
        {"dvb-as-sv2-numbered", ".sub", "1 00:00:01,000 00:00:04,000 a\r\n2 00:00:05,000 00:00:06,000 b\r\n"},
        {"dvb-mark", ".sub", kMark + "0:00:01:00 0:00:04:00   a\r\n0:00:05:00 0:00:06:00   b\r\n"},
        {"dvb-big-endian", ".sub", utf16be("0:00:01:00 0:00:04:00   a\r\n")},
        {"dvb-utf16", ".sub", utf16le("0:00:01:00 0:00:04:00   a\n0:00:05:00 0:00:06:00   b\n")},
        {"dvb-lf", ".sub", "0:00:01:00 0:00:04:00   a\n0:00:05:00 0:00:06:00   b\n"},
        {"dvb-text-column", ".sub", "0:00:01:00 0:00:04:00 abc\r\n"},
        {"dvb-time-form", ".sub", "0:00:01:00 0:00:04:00   a\r\n9:9:9:9.9:9:9:9            words\r\n"},
    };
    return kRows;
}

check::Report reportOf(const std::string& path, const Row& row) {
    vxsub::CheckOptions options;
    options.file.path = path;
    options.file.language = row.language;
    if (*row.language == 0) options.file.language = "none";  // what another row has set
    if (row.frameRate != 0) options.file.frameRate = row.frameRate;
    return vxsub::checkFile(options);
}

std::string namesOf(const check::Report& report) {
    std::string names;
    for (const check::Remark& remark : report.remarks)
        names += " " + std::string(check::nameOf(remark)) + ":" + std::to_string(remark.place.line) + " (" +
                 remark.what + ")";
    return names;
}

void expectIn(const check::Report& report, const char* cause, size_t line) {
    const auto remark = std::find_if(report.remarks.begin(), report.remarks.end(), [&](const check::Remark& each) {
        return check::nameOf(each) == std::string(cause);
    });
    EXPECT_EQ(std::string::npos, namesOf(report).find("unexplained")) << cause << ":" << namesOf(report);
    if (remark == report.remarks.end()) {
        ADD_FAILURE() << cause << " is not found, but:" << namesOf(report);
        return;
    }
    EXPECT_EQ(line, remark->place.line) << cause;
    EXPECT_STREQ(check::findCause(cause)->sentence, check::sentenceOf(*remark));
}

void expectFound(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        const TempFile file(row.bytes, row.ending);
        expectIn(reportOf(file.path(), row), row.cause, row.line);
    }
}

/// One cause does not keep another from being told.
TEST(Check, FindsSeveralCausesOfAnEntry) {
    const struct {
        const char* ending;
        std::string bytes;
        std::vector<const char*> causes;
    } kRows[] = {
        {".ass",
         event("0:00:01.00", "0:00:05.00", "a\\Nb") + event("0:00:03.00", "0:00:04.00", "c"),
         {"break-N", "overlap"}},
        {".sub", "{25}{50}a\r\n{75}{100}c|d\r\n", {"mdvd-unmarked-zero", "break-bar"}},
        {".sub",
         "00:00:01.50,00:00:04.00\r\na[br]b\r\n\r\n00:00:02.50,00:00:03.00\r\nc\r\n",
         {"sv2-hundredths", "break-br", "overlap"}},
        {".sub", "0:00:01:12 0:00:04:00   a\n0:00:05:00 0:00:06:00   b\n", {"dvb-frames", "dvb-lf"}},
        {".srt",
         "1\n00:00:01,000 --> 00:00:02,000\n{\\an8}<i>a</i>\n\n" + kBLf,
         {"srt-tag-at-end-lf", "srt-braces-shown"}},
        {".srt",
         "1\r\n00:00:01 --> 00:00:02,000\r\na\r\n\r\n2\r\n00:00:01 --> 00:00:02,000\r\nb\r\n\r\n",
         {"srt-no-fraction", "same-start"}},
    };
    for (const auto& row : kRows) {
        const TempFile file(row.bytes, row.ending);
        for (const char* cause : row.causes) {
            const std::string names = namesOf(reportOf(file.path(), Row()));
            EXPECT_NE(std::string::npos, names.find(cause + ":"s)) << cause << ", but:" << names;
            EXPECT_EQ(std::string::npos, names.find("unexplained")) << names;
        }
    }
}

// ---------------------------------------------------------------------------------------------------- pictures

struct PairRow {
    const char* cause;
    size_t line;  ///< 0: nowhere
    void (*change)(std::string* index, std::string* stream);
    samples::Subpicture (*make)() = nullptr;
    const char* streamName = "movie.sub";
    vxsub::Size surface = {0, 0};
};

/// In the middle of the bottom edge of 720x576, until the next one, with a row to spare.
samples::Subpicture plainPicture() {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({"HI"}, 3);
    picture.left = (720 - picture.bitmap.width) / 2;
    picture.top = 560 - picture.bitmap.height;
    picture.shownMs = 0;
    picture.spareLines = 1;
    return picture;
}

void replaceIn(std::string* text, const std::string& what, const std::string& with) {
    const size_t at = text->find(what);
    ASSERT_NE(std::string::npos, at) << what;
    text->replace(at, what.size(), with);
}

constexpr size_t kUnitAt = 14 + 9 + 5 + 1;  // in the first pack, behind the stream's number

const PairRow kPairRows[] = {
    {"vob-no-stream", 0, nullptr, nullptr, "movie.SUB"},
    {"vob-mark", 1, [](std::string* index, std::string*) { *index = kMark + *index; }},
    {"vob-no-size", 0, [](std::string* index, std::string*) { replaceIn(index, "size: 720x576\n", ""); }},
    {"vob-no-palette", 0, [](std::string* index, std::string*) { replaceIn(index, "palette:", "palace:"); }},
    {"vob-palette-short", 0, [](std::string* index, std::string*) { replaceIn(index, ", 000000\n", "\n"); }},
    {"vob-stretch", 0, nullptr, nullptr, "movie.sub", {1920, 1080}},
    {"vob-language", 7, [](std::string* index, std::string*) { replaceIn(index, "id: en", "id: de"); }},
    {"vob-time-width", 8, [](std::string* index, std::string*) { replaceIn(index, "00:00:01:000", "0:00:01:00"); }},
    {"vob-filepos-digit", 9,
     [](std::string* index, std::string*) { replaceIn(index, "filepos: 000000800", "filepos: 800"); }},
    {"vob-delay-sign", 9,
     [](std::string* index, std::string*) { replaceIn(index, "timestamp", "delay: 00:00:01:000\ntimestamp"); }},
    {"vob-delay-wrap", 9,
     [](std::string* index, std::string*) { replaceIn(index, "timestamp", "delay: -00:00:02:000\ntimestamp"); }},
    {"vob-utf16-values", 8,
     [](std::string* index, std::string*) {
         replaceIn(index, "00:00:01:000, ", "00:00:01:000,        ");
         *index = utf16be(*index);
     }},
    {"vob-descending", 8,
     [](std::string* index, std::string* stream) {
         *stream = stream->substr(2048) + std::string(65536, '\0') + stream->substr(0, 2048);
         replaceIn(index, "filepos: 000000800", "filepos: 0000?????");
         replaceIn(index, "filepos: 000000000", "filepos: 000010800");
         replaceIn(index, "filepos: 0000?????", "filepos: 000000000");
     }},
    {"vob-no-pack", 8, [](std::string*, std::string* stream) { (*stream)[3] = 0; }},
    {"vob-stuffing", 8,
     [](std::string*, std::string* stream) {
         (*stream)[13] = '\xF9';
         stream->insert(14, 1, '\xFF');
         stream->erase(2047, 1);
     }},
    {"vob-unit-size-0", 8, [](std::string*, std::string* stream) { (*stream)[kUnitAt] = (*stream)[kUnitAt + 1] = 0; }},
    {"vob-packs-not-2048", 8,
     [](std::string* index, std::string* stream) {
         const std::string unit = samples::encodeUnit(plainPicture());
         *stream = samples::pack(unit.substr(0, 100)).substr(0, 24 + 100) + samples::pack(unit.substr(100));
         index->erase(index->rfind("timestamp"));
     }},
    {"vob-bad-commands", 8,
     [](std::string*, std::string* stream) {
         const size_t control = size_t(U8((*stream)[kUnitAt + 2])) << 8 | U8((*stream)[kUnitAt + 3]);
         (*stream)[kUnitAt + control + 4] = 99;
     }},
    {"vob-area-too-large", 8, nullptr,
     [] {
         samples::Subpicture picture = plainPicture();
         picture.bitmap = samples::Bitmap(300, 20);
         picture.spareLines = 0U - picture.bitmap.height;
         return picture;
     }},
    {"vob-two-rows", 8, nullptr,
     [] {
         samples::Subpicture picture = plainPicture();
         picture.bitmap = samples::Bitmap({"...111", "...111"});
         picture.spareLines = 0;
         return picture;
     }},
    {"vob-last-rows", 8, nullptr,
     [] {
         samples::Subpicture picture = plainPicture();
         picture.bitmap = samples::Bitmap({".1..", ".1..", ".1..", ".1.."});
         picture.spareLines = 0;
         return picture;
     }},
    {"vob-top-left", 8, nullptr,
     [] {
         samples::Subpicture picture = plainPicture();
         picture.bitmap.at(0, 0) = 1;
         return picture;
     }},
    {"vob-position", 8, nullptr,
     [] {
         samples::Subpicture picture = plainPicture();
         picture.top = 20;
         return picture;
     }},
    {"vob-end-ignored", 8, nullptr,
     [] {
         samples::Subpicture picture = plainPicture();
         picture.shownMs = 500;
         return picture;
     }},
    {"vob-start-delay", 8,
     [](std::string*, std::string* stream) {
         const size_t control = size_t(U8((*stream)[kUnitAt + 2])) << 8 | U8((*stream)[kUnitAt + 3]);
         (*stream)[kUnitAt + control + 1] = 50;
     }},
};

check::Report reportOf(const PairRow& row) {
    samples::VobSub film(720, 576, {0x000000, 0xFFFFFF, 0x808080});
    film.track("en");
    for (const unsigned start : {1000U, 3000U}) film.add(start, row.make != nullptr ? row.make() : plainPicture());
    std::string index = film.idx(), stream = film.sub();
    if (row.change != nullptr) row.change(&index, &stream);
    test::VobSubPair pair(index, stream, "movie.idx", row.streamName);
    vxsub::CheckOptions options;
    options.file.path = pair.idx();
    if (row.surface.width != 0) options.surface = row.surface;
    return vxsub::checkFile(options);
}

TEST(Check, FindsTheCausesOfPictures) {
    EXPECT_EQ("", namesOf(reportOf({"", 0, nullptr})));
    for (const PairRow& row : kPairRows) expectIn(reportOf(row), row.cause, row.line);
}

TEST(Check, HasASampleForEachCause) {
    std::set<std::string> found;
    for (const auto* rows : {&rowsOfSubRip(), &rowsOfScripts(), &rowsOfSub()})
        for (const Row& row : *rows) found.insert(row.cause);
    for (const PairRow& row : kPairRows) found.insert(row.cause);
    for (const check::Cause& cause : check::causes()) EXPECT_EQ(1u, found.count(cause.name)) << cause.name;
}

// ------------------------------------------------------------------------------------------------------- copies

fix::Result fixed(const std::string& path, const Row& row) {
    vxsub::OpenOptions options;
    options.path = path;
    if (row.frameRate != 0) options.frameRate = row.frameRate;
    const meant::Options read = vxsub::meantOptions(options);
    const meant::Encodings encodings = meant::systemEncodings();
    fix::Options how;
    if (*row.language != 0) how.letters = fix::Letters::Utf16;
    return fix::fix(meant::read(row.bytes, read, encodings), meant::Source(row.bytes, read, encodings), how);
}

TEST(Check, FindsNothingLostInACopy) {
    const std::set<std::string> kNotMended = {"not-supported", "taken-for-another", "beyond-32-bit", "text-too-long",
                                              "ssa-drawing"};
    for (const auto* rows : {&rowsOfSubRip(), &rowsOfScripts(), &rowsOfSub()})
        for (const Row& row : *rows) {
            const TempFile file(row.bytes, row.ending);
            const fix::Result result = fixed(file.path(), row);
            const bool isWhole = std::count(result.isWhole.begin(), result.isWhole.end(), false) == 0;
            EXPECT_EQ(kNotMended.count(row.cause) == 0, result.format == meant::Format::SubRip && isWhole) << row.cause;
            if (result.format == meant::Format::None) continue;
            const TempFile copy(result.bytes, ".srt");
            const check::Report report = reportOf(copy.path(), row);
            EXPECT_EQ("", namesOf(report)) << row.cause;
            EXPECT_EQ(report.meant, report.right) << row.cause;
        }
}

TEST(Check, SaysWhatIsNoSubtitleFile) {
    for (const std::string& bytes : {""s, "\x7F"s + "ELF\2\1\1\0\0\0\0\0\0\0\0\0"s, "\x89PNG\r\n\x1A\n\0\0\0\rIHDR"s,
                                     "\1\2\3\4\5\6\7\x10\x11\x12"s}) {
        const TempFile file(bytes, ".srt");
        EXPECT_THROW(reportOf(file.path(), Row()), vxsub::FileError);
    }
}

// ----------------------------------------------------------------------------------------------------- damage

/// Changes a file in a few places, always the same for the same seed.
std::string damaged(std::string bytes, unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&random](size_t end) { return end == 0 ? 0 : random() % end; };
    static const std::string kPieces[] = {"\r\n", "\n", "<i>", "</i>",         "{", "}",
                                          "<",    ">",  "-->", "00:00:01,000", "0", "|"};
    for (size_t changes = 1 + below(3); changes > 0; --changes) {
        const size_t at = below(bytes.size());
        switch (below(5)) {
            case 0:
                bytes.insert(at, kPieces[below(std::size(kPieces))]);
                break;
            case 1:
                bytes.erase(at, 1 + below(3));
                break;
            case 2:
                if (!bytes.empty()) bytes[at] = char(below(256));
                break;
            case 3:
                bytes.insert(at, bytes.substr(below(bytes.size()), below(60)));
                break;
            default:
                bytes.resize(bytes.size() - below(bytes.size() / 4 + 1));
        }
    }
    return bytes;
}

TEST(Check, HardlyAnythingInDamagedFilesIsUnexplained) {
    size_t findings = 0, unexplained = 0;
    unsigned seed = 0;
    for (const auto* rows : {&rowsOfSubRip(), &rowsOfScripts(), &rowsOfSub()})
        for (const Row& row : *rows)
            for (int i = 0; i < 20; ++i) {
                const TempFile file(damaged(row.bytes + row.bytes + row.bytes, ++seed), row.ending);
                try {
                    const check::Report report = reportOf(file.path(), row);
                    findings += report.remarks.size();
                    for (const check::Remark& remark : report.remarks) unexplained += remark.cause == nullptr;
                    EXPECT_LE(report.right, report.meant);
                } catch (const vxsub::FileError&) {
                    // No subtitle file any more.
                }
            }
    EXPECT_GT(findings, 3000u);
    EXPECT_LE(unexplained, findings / 100) << findings;
}

TEST(Check, FindsTheCausesOfSubRip) { expectFound(rowsOfSubRip()); }
TEST(Check, FindsTheCausesOfScripts) { expectFound(rowsOfScripts()); }
TEST(Check, FindsTheCausesOfSub) { expectFound(rowsOfSub()); }

}  // namespace
