// Encodings: by mark, by content, as told, as guessed; and what they make of the texts.
#include "tests/meant/Listing.h"
#include "tools/meant/SystemEncodings.h"
#include "tools/meant/Utf8.h"

namespace meant {
namespace {

using namespace std::string_literals;

const std::string kTimes = "1\n00:00:01,000 --> 00:00:02,000\n";

/// ASCII text in units of `width` bytes, with `units` behind it.
std::string wide(const std::string& text, size_t width, bool bigEndian) {
    std::string bytes;
    for (const char c : text) {
        std::string unit(width, '\0');
        unit[bigEndian ? width - 1 : 0] = c;
        bytes += unit;
    }
    return bytes;
}

TEST(MeantEncoding, MarksAndContent) {
    const std::string text = kTimes + "Hi\n";
    const struct {
        std::string file;
        const char* name;
        EncodingFrom from;
    } kRows[] = {
        {text, "ASCII", EncodingFrom::Content},
        {text + "\xC3\xA9\n", "UTF-8", EncodingFrom::Content},
        {"\xEF\xBB\xBF" + text, "UTF-8", EncodingFrom::Mark},
        {"\xFF\xFE" + wide(text, 2, false), "UTF-16LE", EncodingFrom::Mark},
        {"\xFE\xFF" + wide(text, 2, true), "UTF-16BE", EncodingFrom::Mark},
        {"\xFF\xFE\0\0"s + wide(text, 4, false), "UTF-32LE", EncodingFrom::Mark},
        {"\0\0\xFE\xFF"s + wide(text, 4, true), "UTF-32BE", EncodingFrom::Mark},
        {text + "\x1B$B$\"\x1B(B\n", "ISO-2022-JP", EncodingFrom::Content},
        {text + "\x1B$B\n", "ASCII", EncodingFrom::Content},
        {wide(text, 2, false), "UTF-16LE", EncodingFrom::Content},
        {wide(text, 2, true), "UTF-16BE", EncodingFrom::Content},
        {wide(text, 4, false), "UTF-32LE", EncodingFrom::Content},
        {wide(text, 4, true), "UTF-32BE", EncodingFrom::Content},
    };
    for (const auto& row : kRows) {
        const File file = readAs("srt", row.file);
        EXPECT_EQ(row.name, file.encoding.name);
        EXPECT_EQ(row.from, file.encoding.from) << row.name;
        EXPECT_EQ(0u, file.encoding.damaged) << row.name;
        EXPECT_EQ("1000-2000 Hi", listed(file).substr(0, 12)) << row.name;
    }
}

TEST(MeantEncoding, CharactersOf16And32Bits) {
    const std::string expected = "1000-2000 \xE4\xB8\xAD\xF0\x9F\x98\x80";
    const auto le = "\xFF\xFE" + wide(kTimes, 2, false) + "\x2D\x4E\x3D\xD8\x00\xDE"s;
    const auto be = "\xFE\xFF" + wide(kTimes, 2, true) + "\x4E\x2D\xD8\x3D\xDE\x00"s;
    const auto le32 = "\xFF\xFE\0\0"s + wide(kTimes, 4, false) + "\x2D\x4E\0\0\0\xF6\1\0"s;
    EXPECT_EQ(expected, listed(readAs("srt", le)));
    EXPECT_EQ(expected, listed(readAs("srt", be)));
    EXPECT_EQ("1000-2000 \xE4\xB8\xAD\xF0\x9F\x98\x80",
              listed(readAs("srt", le32.substr(0, le32.size() - 4) + "\0\xF6\1\0"s)));
    const File lone = readAs("srt", "\xFF\xFE" + wide(kTimes, 2, false) + "\x3D\xD8\x41\0"s);
    EXPECT_EQ(
        "1000-2000 \xEF\xBF\xBD"
        "A",
        listed(lone));
    EXPECT_EQ(1u, lone.encoding.damaged);
}

TEST(MeantEncoding, MarksAndZerosWithinTheTextAreLeftOut) {
    EXPECT_EQ("1000-2000 Hi", listed(readAs("srt", kTimes + "H\0i\n"s)));
    EXPECT_EQ("1000-2000 Hi", listed(readAs("srt", "\xEF\xBB\xBF\xEF\xBB\xBF" + kTimes + "\xEF\xBB\xBFHi\n")));
    EXPECT_EQ("1000-2000 Hi", listed(readAs("srt", "\xFF\xFE\xFF\xFE" + wide(kTimes + "Hi", 2, false))));
}

TEST(MeantEncoding, DamageInUtf8) {
    std::string text;
    for (int i = 0; i < 40; ++i) text += "\xC3\xA9";
    const File few = readAs("srt", kTimes + text + "\xC3(\n");
    EXPECT_EQ("UTF-8", few.encoding.name);
    EXPECT_EQ(1u, few.encoding.damaged);
    const File many = readAs("srt", kTimes + "\xC3\xA9\xE9\xE8\n");
    EXPECT_EQ("WINDOWS-1252", many.encoding.name);
}

TEST(MeantEncoding, WithoutKnowledgeOfEncodingsEachByteIsItsCharacter) {
    const File file = readAs("srt", kTimes + "caf\xE9\n");
    EXPECT_EQ(EncodingFrom::Assumed, file.encoding.from);
    EXPECT_EQ("1000-2000 caf\xC3\xA9", listed(file));
}

TEST(MeantEncoding, ToldOnesCountForTextWithoutAMark) {
    Options options;
    options.encoding = "big5";
    const File big5 = read(kTimes + "\xA4\xA4\xA4\xE5\n", options, systemEncodings());
    EXPECT_EQ("BIG5-HKSCS", big5.encoding.name);
    EXPECT_EQ(EncodingFrom::Told, big5.encoding.from);
    EXPECT_EQ("1000-2000 \xE4\xB8\xAD\xE6\x96\x87", listed(big5));
    EXPECT_EQ("UTF-8", read("\xEF\xBB\xBF" + kTimes + "Hi\n", options, systemEncodings()).encoding.name);
    options.encoding = "1251";
    EXPECT_EQ("1000-2000 \xD0\xB4\xD0\xB0", listed(read(kTimes + "\xE4\xE0\n", options, systemEncodings())));
    options.encoding = "no-such";
    EXPECT_EQ("1000-2000 caf\xC3\xA9", listed(read(kTimes + "caf\xE9\n", options, systemEncodings())));
}

/// What a guess gives, and what it is taken for.
TEST(MeantEncoding, GuessesBecomeTheWiderEncoding) {
    const struct {
        const char* guess;
        std::string text;
        const char* name;
        EncodingFrom from;
    } kRows[] = {
        {"ISO-8859-1", "\xE9", "WINDOWS-1252", EncodingFrom::Guessed},
        {"gb2312", "\xE9\xE9", "GB18030", EncodingFrom::Guessed},
        {"EUC-KR", "\xE9\xE9", "UHC", EncodingFrom::Guessed},
        {"SHIFT_JIS", "\xE9\xE9", "CP932", EncodingFrom::Guessed},
        {"BIG5", "\xE9\xE9", "BIG5-HKSCS", EncodingFrom::Guessed},
        {"ISO-8859-2", "\xE9", "ISO-8859-2", EncodingFrom::Guessed},
        {"ISO-8859-2", "\xE9\x84", "WINDOWS-1250", EncodingFrom::Guessed},
        {"ISO-8859-7", "\xE9", "WINDOWS-1253", EncodingFrom::Guessed},
        {"ISO-8859-7", "\xB6 \xE9", "WINDOWS-1253", EncodingFrom::Guessed},
        {"ISO-8859-7", "\xB6\xE9", "ISO-8859-7", EncodingFrom::Guessed},
        {"ISO-8859-7", "\xB6\xE9\x85", "WINDOWS-1253", EncodingFrom::Guessed},
        {"WINDOWS-1250", "s\xB1", "ISO-8859-2", EncodingFrom::Guessed},
        {"WINDOWS-1250", " \xB1 5 \xB6 a", "WINDOWS-1250", EncodingFrom::Guessed},
        {"ISO-8859-15", "c\xBDur", "ISO-8859-15", EncodingFrom::Guessed},
        {"ISO-8859-15", "1\xBDh", "WINDOWS-1252", EncodingFrom::Guessed},
        {"KOI8-R", "\xE9", "KOI8-R", EncodingFrom::Guessed},
        {"", "\xC3\xC4\xC5 \xD2\xDB", "WINDOWS-1251", EncodingFrom::Guessed},
        {"", "\xE9", "WINDOWS-1252", EncodingFrom::Assumed},
        {"ASCII", "\xE9", "WINDOWS-1252", EncodingFrom::Assumed},
        {"VISCII", "\xE9", "WINDOWS-1252", EncodingFrom::Assumed},
        {"VISCII", std::string(64, '\xE9'), "VISCII", EncodingFrom::Guessed},
    };
    for (const auto& row : kRows) {
        Encodings encodings;
        std::string seen;
        encodings.guess = [&](std::string_view bytes) {
            seen = bytes;
            return std::string(row.guess);
        };
        const File file = read("1\n00:00:01,000 --> 00:00:02,000\nHi\n" + row.text + "\n", {}, encodings);
        EXPECT_EQ(row.name, file.encoding.name) << row.guess;
        EXPECT_EQ(row.from, file.encoding.from) << row.guess;
        EXPECT_EQ(row.text + "\n", seen) << "lines of plain ASCII tell nothing";
    }
}

TEST(MeantEncoding, TheSystemGuesses) {
    const struct {
        const char* name;
        std::string bytes;
        const char* utf8;
    } kRows[] = {
        {"WINDOWS-1252",
         "Je ne sais pas o\xF9 aller, c'\xE9tait l'\xE9poque d\xE9j\xE0 pass\xE9"
         "e",
         "Je ne sais pas o\xC3\xB9 aller, c'\xC3\xA9tait l'\xC3\xA9poque d\xC3\xA9j\xC3\xA0 pass\xC3\xA9"
         "e"},
        {"WINDOWS-1251", "\xDF \xED\xE5 \xE7\xED\xE0\xFE, \xEA\xF3\xE4\xE0 \xE8\xE4\xF2\xE8",
         "\xD0\xAF \xD0\xBD\xD0\xB5 \xD0\xB7\xD0\xBD\xD0\xB0\xD1\x8E, \xD0\xBA\xD1\x83\xD0\xB4\xD0\xB0 "
         "\xD0\xB8\xD0\xB4\xD1\x82\xD0\xB8"},
        {"GB18030", "\xCE\xD2\xB2\xBB\xD6\xAA\xB5\xC0\xC8\xA5\xC4\xC4\xC0\xEF\xA1\xA3",
         "\xE6\x88\x91\xE4\xB8\x8D\xE7\x9F\xA5\xE9\x81\x93\xE5\x8E\xBB\xE5\x93\xAA\xE9\x87\x8C\xE3\x80\x82"},
        {"BIG5-HKSCS", "\xA7\xDA\xA4\xA3\xAA\xBE\xB9\x44\xA5\x68\xAD\xFE\xB8\xCC\xA1\x43",
         "\xE6\x88\x91\xE4\xB8\x8D\xE7\x9F\xA5\xE9\x81\x93\xE5\x8E\xBB\xE5\x93\xAA\xE8\xA3\xA1\xE3\x80\x82"},
    };
    for (const auto& row : kRows) {
        const File file = read(kTimes + row.bytes + "\n", {}, systemEncodings());
        EXPECT_EQ(row.name, file.encoding.name);
        EXPECT_EQ(EncodingFrom::Guessed, file.encoding.from);
        EXPECT_EQ("1000-2000 " + std::string(row.utf8), listed(file));
    }
}

/// Chinese with a line of Japanese is guessed as Japanese, whose encoding has no comma there.
TEST(MeantEncoding, AGuessThatDoesNotFitGivesWay) {
    Encodings encodings = systemEncodings();
    encodings.guess = [](std::string_view) { return "EUC-JP"; };
    const File chinese = read(kTimes + "\xC9\xCF\xB3\xB5\xA3\xAC\xBF\xEC\xA3\xA1\n\xA4\xCF\xA4\xA4\n", {}, encodings);
    EXPECT_EQ("GB18030", chinese.encoding.name);
    EXPECT_EQ("1000-2000 \u4E0A\u8F66\uFF0C\u5FEB\uFF01/\u306F\u3044", listed(chinese));
    EXPECT_EQ("EUC-JP", read(kTimes + "\xA4\xCF\xA4\xA4\xA1\xA3\n", {}, encodings).encoding.name);
}

TEST(MeantEncoding, TheCharactersOfHongKong) {
    const File file =
        read(kTimes +
                 "\xCA\x5C\x92\x5D\x9D\xF6\xC3\xE4\xAB\xD7\xA7\x72\xA1\x48\xA7\xDA\x92\x5D\xAD\xF8\xAA\xBE\xA1\x43"
                 "\n",
             {}, systemEncodings());
    EXPECT_EQ("BIG5-HKSCS", file.encoding.name);
    EXPECT_EQ(
        "1000-2000 "
        "\xE4\xBD\xA2\xE5\x93\x8B\xE5\x96\xBA\xE9\x82\x8A\xE5\xBA\xA6\xE5\x91\x80\xEF\xBC\x9F\xE6\x88\x91\xE5\x93\x8B"
        "\xE5\x94\x94\xE7\x9F\xA5\xE3\x80\x82",
        listed(file));
}

TEST(MeantEncoding, TheSystemConverts) {
    const auto convert = [](const char* name, std::string_view bytes) {
        const Encodings::Decode decode = systemEncodings().open(name);
        std::string utf8;
        if (decode) decode(bytes, &utf8);
        return decode ? utf8 : "unknown";
    };
    EXPECT_EQ("unknown", convert("no-such", "a"));
    EXPECT_EQ("", convert("UHC", ""));
    EXPECT_EQ(
        "\xEF\xBF\xBD"
        "a\xEF\xBF\xBD",
        convert("UHC",
                "\xFF"
                "a\xB0"));
    EXPECT_EQ("\xE3\x81\x81", convert("BIG5-HKSCS", "\xC6\xE7")) << "kana, which plain Big5 loses";
    EXPECT_EQ("\xD7\x90", convert("WINDOWS-1255", "\xE0")) << "a letter that a point might follow";
    std::string expected;
    for (int i = 0; i < 5000; ++i) expected += "\xC3\xA9";
    EXPECT_EQ(expected, convert("WINDOWS-1252", std::string(5000, '\xE9')));
}

TEST(MeantUtf8, LengthIn16BitUnits) {
    EXPECT_EQ(0u, utf16Length(""));
    EXPECT_EQ(5u, utf16Length("a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"));
}

}  // namespace
}  // namespace meant
