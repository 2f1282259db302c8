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

std::string decoded(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType, const char* native, const vxsub::Units& units) {
    SubtitleParser parser;
    const Decoder decoder(parser, codeType, native == nullptr ? nullptr : vxsub::findNativeCharset(native));
    return vxsub::encodeUtf8(decoder.decode(units));
}

Reading reading(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType, const char* native, const vxsub::Units& units) {
    SubtitleParser parser;
    const Decoder decoder(parser, codeType, native == nullptr ? nullptr : vxsub::findNativeCharset(native));
    return decoder.readingOf(units);
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
    EXPECT_STREQ(vxsub::findNativeCharset("GBK")->option, "gbk");
    EXPECT_STREQ(vxsub::findNativeCharset("Big5")->option, "big5");
    EXPECT_EQ(vxsub::findNativeCharset("gb"), nullptr);
    EXPECT_EQ(vxsub::findNativeCharset("gbkk"), nullptr);
    EXPECT_EQ(vxsub::findNativeCharset(""), nullptr);
}

TEST(Decoder, GuessesEightBitTextWithoutAMark) {
    EXPECT_EQ(decoded(kNative, nullptr, bytes("plain")), "plain");
    EXPECT_EQ(reading(kNative, nullptr, bytes("plain")), Reading::Ascii);
    EXPECT_EQ(reading(kNative, nullptr, bytes("")), Reading::Ascii);
    EXPECT_EQ(decoded(kNative, nullptr, bytes("caf\xC3\xA9")), "café");
    EXPECT_EQ(reading(kNative, nullptr, bytes("caf\xC3\xA9")), Reading::Utf8);
    EXPECT_EQ(decoded(kNative, nullptr, bytes("caf\xE9!")), "café!");
    EXPECT_EQ(reading(kNative, nullptr, bytes("caf\xE9!")), Reading::Western);
    // The library's test takes a sequence that the end cuts off for UTF-8.
    EXPECT_EQ(decoded(kNative, nullptr, bytes("caf\xE9")), "café");
    EXPECT_EQ(reading(kNative, nullptr, bytes("caf\xE9")), Reading::Western);
    EXPECT_EQ(decoded(kNative, nullptr, bytes("\xC3\xA9t\xC3")), "ét\uFFFD");
    EXPECT_EQ(reading(kNative, nullptr, bytes("\xC3\xA9t\xC3")), Reading::Utf8);
    // It refuses sequences of four bytes.
    EXPECT_EQ(decoded(kNative, nullptr, bytes("\xF0\x9F\x98\x80")), "😀");
    EXPECT_EQ(decoded(kNative, nullptr, bytes("\xF0\x9F\x98\x80 \xE9t")), "ðŸ˜€ ét");
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
