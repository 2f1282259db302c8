// SubViewer 1.0: which files are accepted, and how start, text and end line follow each other. Its extraction is
// tested with the other dialects'.
#include "subtitle/SubtitleParserSubViewer10.h"

#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"
#include "tests/support/Rows.h"

namespace {

using namespace test;
using Parser = SubtitleParserSubViewer10;

TEST(SubViewer10, ReadsStartTextAndEnd) {
    expectFiles<Parser>({
        {"[00:00:01]\r\nHello\r\n[00:00:04]\r\n\r\n", "1000-4000 @12 Hello"},
        {"[00:00:01]\r\nA\r\n[00:00:02]\r\n\r\n[00:00:03]\r\nB\r\n[00:00:04]\r\n", "1000-2000 @12 A; 3000-4000 @41 B"},
        {"[TITLE]\r\nx\r\n[DELAY]\r\n0\r\n[00:00:01]\r\nHello\r\n[00:00:04]\r\n", "1000-4000 @36 Hello"},
        {" \t[00:00:01]\r\nHello\r\n  [00:00:04]\r\n", "1000-4000 @14 Hello"},
        {"[00:00:01]\r\n\r\n\n\rHello\r\n\r\n[00:00:04]\r\n", "1000-4000 @16 Hello"},
        {"[00:00:01]\rHello\r[00:00:04]\r", "1000-4000 @11 Hello\r[00:00:04]\r"},
        // kept(sv1-lf)
        // in a file of LF the text does not end before the end line
        {"[00:00:01]\nHello\n[00:00:04]\n\n[00:00:05]\nB\n[00:00:06]",
         "1000-4000 @11 Hello\n[00:00:04]; 5000-6000 @40 B\n[00:00:06]"},
        {"[01:02:03]\r\nA\r\n[99:59:59]\r\n", "3723000-359999000 @12 A"},
        {"[4294967295:0:0]\r\nA\r\n[0:0:4294967296]\r\n", "4291367296-0 @18 A"},  // 32 bits, and no more
    });
}

// kept(sv1-end-line-missing)
TEST(SubViewer10, TakesTheLineBehindTheTextAsTheEnd) {
    expectFiles<Parser>({
        // without an end line, the next entry is lost
        {"[00:00:01]\r\nA\r\n[00:00:05]\r\nB\r\n[00:00:08]\r\n", "1000-5000 @12 A"},
        {"[00:00:01]\r\nA\r\n[00:00:05]\r\nB\r\n[00:00:08]\r\n[00:00:09]\r\nC\r\n[00:00:10]\r\n", "1000-5000 @12 A"},
        // an end line that is none costs the entry, and is consumed all the same
        {"[00:00:01]\r\nA\r\nB\r\n[00:00:05]\r\nC\r\n[00:00:08]\r\n", "5000-8000 @30 C"},
        {"[00:00:01]\r\nA\r\n[00:00]\r\n[00:00:05]\r\nC\r\n[00:00:08]\r\n", "5000-8000 @36 C"},
        {"[00:00:01]\r\nA\r\n  \r\n[00:00:04]\r\n", ""},             // a line of blanks is one
        {utf16le("x\r\n{00:00:01}\r\nA\r\n   [00:00:04]\r\n"), ""},  // blanks count among the ten characters
        // any character stands for the brackets and colons of an end line
        {"[00:00:01]\r\nA\r\n(00-00-04)\r\n", "1000-4000 @12 A"},
        {"[00:00:01]\r\nA\r\n[ 00 : 00 : 04\r\n", "1000-4000 @12 A"},
        {"[00:00:01]\r\nA\r\n00:00:04\r\n", "1000-4000 @12 A"},  // the first 0 is taken for the bracket
        {"[00:00:01]\r\nA\r\n", ""},
        {"[00:00:01]\r\nA", ""},
        {"[00:00:01]", ""},
    });
}

TEST(SubViewer10, LooksForTheLineEndFrom10CharactersOn) {
    expectFiles<Parser>({
        {"[00:00:01]text on the time line\r\nA\r\n[00:00:04]\r\n", "1000-4000 @33 A"},
        {"[00:00:01]\r\n  A\r\n[00:00:04]\r\n", "1000-4000 @12   A"},        // with the blanks in front of it
        {"[0:0:1]\r\nlost\r\nshown\r\n[0:0:4]\r\n", "1000-4000 @15 shown"},  // kept(sv1-time-width)
        {"[0:00:01]\r\nA\r\n[0:00:04]\r\n", "1000-4000 @11 A"},              // the line end is long enough
        {"[0:00:01]\nA\n[0:00:04]\n", ""},
        {"[0:0:1]\n", ""},
        // the text on the start line: the end line is taken for the text, the next start line for the end
        {"[00:00:01]Hello\r\n[00:00:04]\r\n\r\n[00:00:05]World\r\n[00:00:08]\r\n", "1000-5000 @17 [00:00:04]"},
    });
}

TEST(SubViewer10, AcceptsAFileThatHasAStartLine) {
    const std::string entry = "\r\n[00:00:01]\r\nA\r\n[00:00:04]\r\n";
    expectFiles<Parser>({
        {"{1}{25}Hello" + entry, "1000-4000 @26 A"},  // 8-bit text is never refused early
        {"x1" + entry, "1000-4000 @16 A"},            // kept(sub-second-digit)
        {"00:00:01.00,00:00:04.50" + entry, "1000-4000 @37 A"},
        {"[00:00]" + entry, "1000-4000 @21 A"},
        {"[1072][1092]x" + entry, "1000-4000 @27 A"},
        {"[00:00:x]" + entry, "1000-4000 @23 A"},
        {"(00:00:00)" + entry, "1000-4000 @24 A"},  // a start line needs its bracket
        {"", "refused"},
        {" \r\n", "refused"},
        {"[", "refused"},
        {"[00:00", "refused"},
        {"[00:00:", "refused"},
        {"(00:00:01)\r\n", "refused"},
        {"x[00:00:01]\r\n", "refused"},
        {"{100}{150}Hello\r\n", "refused"},
        {"[1072][1092]Hello\r\n", "refused"},
    });
}

// kept(sub-mark)
TEST(SubViewer10, LosesAStartLineBehindTheUtf8Mark) {
    expectFiles<Parser>({
        {kUtf8Mark + "[00:00:01]\r\nA\r\n[00:00:04]\r\n\r\n"s, ""},  // the end line is taken for a start line
        {kUtf8Mark + "\r\n[00:00:01]\r\nA\r\n[00:00:04]\r\n\r\n"s, "1000-4000 @17 A"},
    });
}

TEST(SubViewer10, TellsTheEncodingByTheMark) {
    const std::pair<std::string, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE> rows[] = {
        {"x\r\n[00:00:01]\r\n", kNative},
        {kUtf8Mark + "x\r\n[00:00:01]\r\n"s, kUtf8},
        {utf16le("x\r\n{00:00:01}\r\n"), kUtf16Le},
        {utf16be("x\r\n[00:00:01]\r\n"), kUtf16Be},
    };
    for (const auto& [content, codeType] : rows) {
        Parsed<Parser> parsed(content);
        EXPECT_EQ(TRUE, parsed.result) << show(content);
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
        parsed.parser.GetTrackInfo(0, &info);
        EXPECT_EQ(codeType, info.eCodeType) << show(content);
        EXPECT_EQ(0, memcmp(content.data(), parsed.parser.m_pu8RawBuffer, content.size())) << "nothing is swapped";
    }
}

// kept(sv1-utf16le)
TEST(SubViewer10, LooksForBracesInLittleEndianText) {
    const std::string entry = "\r\nA\r\n[00:00:04]\r\n";
    expectFiles<Parser>({
        {utf16le("x\r\n[00:00:01]" + entry), "refused"},
        {utf16le("[00:00:01]" + entry + "[00:00:05]" + entry), "refused"},
        {utf16le("x\r\n{00:00:01}" + entry), "1000-4000 @32 A"},
        {utf16le("x\r\n {00:00:01}" + entry), "1000-4000 @34 A"},
        {utf16le("[TITLE]\r\n{00:00:01}" + entry), "1000-4000 @44 A"},
        {utf16le("x\r\n{1 of 2\r\n{00:00:01}" + entry), "1000-4000 @50 A"},  // a brace is never refused early
        {utf16le("1\r\n{00:00:01}" + entry), "refused"},  // the mark is the first unit, the digit the second
        {utf16le("xy\r\n1\r\n{00:00:01}" + entry), "1000-4000 @40 A"},
        {utf16le("x\r\n12\r\n{00:00:01}" + entry), "refused"},
        {utf16le("{00:00:01}" + entry), "refused"},  // behind the mark, on the mark's line
        {utf16le(""), "refused"},
    });
}

TEST(SubViewer10, LooksForBracketsInBigEndianText) {
    const std::string entry = "\r\nA\r\n[00:00:04]\r\n";
    expectFiles<Parser>({
        {utf16be("x\r\n[00:00:01]" + entry), "1000-4000 @32 A"},
        {utf16be("12\r\n[00:00:01]" + entry), "1000-4000 @34 A"},  // digits are looked for as they are stored
        {"\xFE\xFF\x30\0"s + utf16be("\r\n[00:00:01]" + entry, false), "refused"},  // U+3000
        {utf16be("x\r\n{00:00:01}\r\nA\r\n{00:00:04}\r\n"), "refused"},
        {utf16be("x\r\n [00:00:01]\r\nA\r\n [00:00:04]\r\n"), "refused"},  // nor is a blank white space
        {utf16be("x\n[00:00:01]\nA\n[00:00:04]\n"), "refused"},            // LF alone ends no line
        {utf16be("x\r\n[00:00:01]\r\nA\nB\r\n[00:00:04]\r\n"), "1000-4000 @32 A\nB"},
        {utf16be(""), "refused"},
    });
}

// kept(sv1-utf16-bracket)
TEST(SubViewer10, NeedsNoBracketIn16BitScans) {
    expectFiles<Parser>({
        {utf16le("x\r\n{00:00:01}\r\nA\r\n(00:00:02)\r\n(00:00:03)\r\nB\r\n 00:00:04\r\n"),
         "1000-2000 @32 A; 3000-4000 @86 B"},
        {utf16be("x\r\n[00:00:01]\r\nA\r\n(00:00:02)\r\n(00:00:03)\r\nB\r\n(00:00:04)\r\n"),
         "1000-2000 @32 A; 3000-4000 @86 B"},
        // ten characters are looked at: of four digits of a second the last is lost
        {utf16le("x\r\n{00:00:1234}\r\nA\r\n[00:00:4567]\r\n"), "123000-456000 @36 A"},
        {utf16be("x\r\n[00:00:1234]\r\nA\r\n[00:00:4567]\r\n"), "123000-456000 @36 A"},
    });
}

}  // namespace
