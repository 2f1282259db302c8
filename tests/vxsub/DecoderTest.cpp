#include "tools/vxsub/Decoder.h"

#include <gtest/gtest.h>

#include "tools/vxsub/Text.h"

namespace {

using namespace android;
using namespace std::string_literals;
using vxsub::Decoder;
using vxsub::Reading;

vxsub::Units bytes(std::string_view text) {
    vxsub::Units units;
    for (const char c : text) units.values.push_back(U8(c));
    return units;
}

/// Of a file that holds nothing but the text, unless another is given.
Decoder decoderFor(SubtitleParser& parser, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType, const char* native,
                   const vxsub::Units& units, std::string file = {}) {
    if (file.empty())
        for (const U16 unit : units.values) file += char(U8(unit));
    return Decoder(parser, codeType, native == nullptr ? nullptr : vxsub::findNativeCharset(native), file);
}

std::string decoded(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType, const char* native, const vxsub::Units& units,
                    const std::string& file = {}) {
    SubtitleParser parser;
    return vxsub::encodeUtf8(decoderFor(parser, codeType, native, units, file).decode(units));
}

Reading reading(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType, const char* native, const vxsub::Units& units,
                const std::string& file = {}) {
    SubtitleParser parser;
    return decoderFor(parser, codeType, native, units, file).reading();
}

constexpr auto kNative = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;
constexpr auto kUtf8 = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8;
constexpr auto kGbk = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK;
constexpr auto kBig5 = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5;

TEST(NativeCharsets, GoThroughTheLibrarysTables) {
    const struct {
        const char* native;
        std::string bytes, text;
    } kRows[] = {
        {"utf-8", "caf\xC3\xA9 \xE9", "café \uFFFD"},
        {"gbk", "\xD6\xD0\xCE\xC4 ok", "中文 ok"},
        {"gbk", "\x81\x40", "丂"},
        {"gbk", "\xD6", "\uFFFD"},  // cut off
        {"gbk",
         "\xD6"
         "1",
         "\uFFFD"
         "1"},  // no trail byte: the character behind stays
        {"gbk",
         "\x80\xFF"
         "a",
         "\uFFFDa"},  // no lead bytes
        {"gbk", "\xD6\x7F", "\uFFFD\x7F"},
        {"big5", "\xA4\xA4\xA4\xE5", "中文"},
        {"big5", "\xA1\x40", "\u3000"},
        {"big5", "\xF9\xD5\xF9\xD6", "龘\uFFFD"},  // the last code, and one behind it
        {"big5", "\xA0\x41",
         "\uFFFD"
         "A"},
        {"1252", "caf\xE9 \x80 \x81", "café € \uFFFD"},
        {"1256", "\xE1\xC7", "لا"},
        {"8859-8", "\xF9\xEC\xE5\xED \xC0", "שלום \uFFFD"},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(decoded(kNative, row.native, bytes(row.bytes)), row.text) << row.native << ' ' << row.text;
}

TEST(NativeCharsets, AreFoundInAnyLetterCaseAndByTheWholeWord) {
    EXPECT_EQ(vxsub::findNativeCharset("GBK")->option, "gbk");
    EXPECT_EQ(vxsub::findNativeCharset("Big5")->option, "big5");
    for (const char* word : {"gbkk", "", "klingon", "utf-8/x", "utf-8//IGNORE", " 1252", "12"})
        EXPECT_EQ(vxsub::findNativeCharset(word), nullptr) << word;
}

TEST(NativeCharsets, AreAllThatIconvKnowsToo) {
    const struct {
        const char* word;
        const char* name;
        const char* bytes;
        const char* text;
    } kRows[] = {
        {"windows-1251", "WINDOWS-1251", "\xCF\xF0\xE8", "При"},
        {"1251", "WINDOWS-1251", "\xCF\xF0\xE8", "При"},
        {"koi8-r", "KOI8-R", "\xF0\xD2\xC9", "При"},
        {"8859-5", "ISO-8859-5", "\xBF\xE0\xD8", "При"},
        {"Shift_JIS", "SHIFT_JIS", "\x93\xFA\x96\x7B", "日本"},
        {"euc-kr", "EUC-KR", "\xC7\xD1", "한"},
        {"cp874", "CP874", "\xA1\xFF", "ก\uFFFD"},
    };
    for (const auto& row : kRows) {
        ASSERT_NE(vxsub::findNativeCharset(row.word), nullptr) << row.word;
        EXPECT_EQ(vxsub::findNativeCharset(row.word)->name, row.name);
        EXPECT_EQ(decoded(kNative, row.word, bytes(row.bytes)), row.text) << row.word;
        EXPECT_EQ(reading(kNative, row.word, bytes(row.bytes)), Reading::Chosen);
    }
}

TEST(Decoder, GuessesEightBitTextWithoutAMark) {
    EXPECT_EQ(decoded(kNative, nullptr, bytes("plain")), "plain");
    EXPECT_EQ(reading(kNative, nullptr, bytes("plain")), Reading::Ascii);
    EXPECT_EQ(reading(kNative, nullptr, bytes("")), Reading::Ascii);
    EXPECT_EQ(decoded(kNative, nullptr, bytes("caf\xC3\xA9 \xF0\x9F\x98\x80")), "café 😀");
    EXPECT_EQ(reading(kNative, nullptr, bytes("caf\xC3\xA9")), Reading::Content);
    EXPECT_EQ(decoded(kNative, nullptr, bytes("caf\xE9")), "café");
    const std::string russian =
        "\xCF\xF0\xE8\xE2\xE5\xF2, \xEC\xE8\xF0! \xCA\xE0\xEA \xE4\xE5\xEB\xE0 \xF3 \xE2\xE0\xF1 \xF1\xE5"
        "\xE3\xEE\xE4\xED\xFF?";
    EXPECT_EQ(decoded(kNative, nullptr, bytes("\xCF\xF0\xE8"), russian), "При");
    EXPECT_EQ(reading(kNative, nullptr, bytes("\xCF\xF0\xE8"), russian), Reading::Guessed);
}

TEST(Decoder, GuessesForTheWholeFile) {
    const std::string file = "na\xEFve caf\xE9, d\xE9j\xE0 vu, \xE0 la carte";
    // By itself, this would pass for UTF-8.
    EXPECT_EQ(decoded(kNative, nullptr, bytes("\xC3\xA9"), file), "Ã©");
    EXPECT_EQ(decoded(kNative, nullptr, bytes("\xC3\xA9"), "\xC3\xA9t\xC3\xA9"), "é");
    // What is damaged in a file of UTF-8 is not read as something else.
    std::string sound;
    for (int i = 0; i < 40; ++i) sound += "\xC3\xA9";
    EXPECT_EQ(decoded(kNative, nullptr, bytes("\xE9!"), sound + "\xE9!"), "\uFFFD!");
    // 16-bit text is none of 8 bits, whatever the file.
    EXPECT_EQ(reading(kNative, nullptr, bytes("\xE9"), std::string("a\0b\0c\0d\0e\0f\0g\0h\0", 16)), Reading::Assumed);
}

TEST(Decoder, ObeysTheUserExceptAgainstAMark) {
    EXPECT_EQ(decoded(kNative, "gbk", bytes("\xC3\xA9")), "茅");
    EXPECT_EQ(reading(kNative, "gbk", bytes("a")), Reading::Chosen);
    EXPECT_EQ(decoded(kGbk, "utf-8", bytes("\xC3\xA9")), "é");
    EXPECT_EQ(reading(kGbk, "utf-8", bytes("a")), Reading::Chosen);
    EXPECT_EQ(decoded(kUtf8, "1252", bytes("\xC3\xA9")), "é");
    EXPECT_EQ(reading(kUtf8, "1252", bytes("a")), Reading::Stated);
}

TEST(Decoder, FollowsTheLibrarysCodeType) {
    EXPECT_EQ(decoded(kUtf8, nullptr, bytes("caf\xC3\xA9 \xF0\x9F\x98\x80 \xE9")), "café 😀 \uFFFD");
    EXPECT_EQ(decoded(kGbk, nullptr, bytes("\xD6\xD0")), "中");
    EXPECT_EQ(decoded(kBig5, nullptr, bytes("\xA4\xA4")), "中");
    const vxsub::Units wide{{0x4E2D, 0xD83D, 0xDE00, 0xDC00}, true};
    for (const auto codeType :
         {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG}) {
        EXPECT_EQ(decoded(codeType, nullptr, wide), "中😀\uFFFD");
        EXPECT_EQ(decoded(codeType, "gbk", wide), "中😀\uFFFD");
        EXPECT_EQ(reading(codeType, "gbk", wide), Reading::Stated);
    }
}

}  // namespace
