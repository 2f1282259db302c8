#include "text.cpp"

#include <gtest/gtest.h>

namespace {

using namespace android;
using CodeType = EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE;

TEST(TextSample, MakesUtf8OfEveryCodeType) {
    const CodePage windows1252 = &SubtitleParser::Spanish2Unicode;
    const struct {
        CodeType codeType;
        std::string text;
        CodePage page;
        const char* utf8;
    } rows[] = {
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8, u8"é 中 😀", windows1252, u8"é 中 😀"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, {"H\0i\0\xE9\0\x2D\x4E", 8}, windows1252, u8"Hié中"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG, {"H\0i\0\x2D\x4E", 6}, windows1252, u8"Hi中"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, {"\x3D\xD8\x00\xDE.\0", 6}, windows1252, u8"😀."},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, {"\x3D\xD8.\0\x00\xDE", 6}, windows1252, u8"\uFFFD.\uFFFD"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, {"\x3D\xD8", 2}, windows1252, u8"\uFFFD"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK, "a\xD6\xD0\xCE\xC4", windows1252, u8"a中文"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK, "\xD6\n\x80\xFF\xFE.\xD6", windows1252,
         u8"\uFFFD\n\uFFFD\uFFFD\uFFFD.\uFFFD"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5, "a\xA4\xA4\xA4\xE5", windows1252, u8"a中文"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5, "\x80\xA4", windows1252, u8"\uFFFD\uFFFD"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, u8"é 中", windows1252, u8"é 中"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, "caf\xE9 \x80\x81", windows1252, u8"café €\uFFFD"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, "\xE3\xD1\x81", &SubtitleParser::Farsi2Unicode, u8"مرپ"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, "\xF9\xEC\xE5\xED", &SubtitleParser::Hebrew2Unicode, u8"שלום"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN, "caf\xE9", windows1252, u8"café"},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I2, "\x1\x2", windows1252, ""},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_ARGB8888, "abcd", windows1252, ""},
        {E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_INVALID, "abcd", windows1252, ""},
    };
    SubtitleParser parser;
    for (const auto& row : rows)
        EXPECT_EQ(row.utf8, toUtf8(row.text, row.codeType, parser, row.page)) << row.codeType << ": " << row.utf8;
}

TEST(TextSample, OfNothingMakesNothing) {
    SubtitleParser parser;
    for (U32 codeType = 0; codeType <= E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NUM; ++codeType)
        EXPECT_EQ("", toUtf8("", static_cast<CodeType>(codeType), parser, &SubtitleParser::Spanish2Unicode))
            << codeType;
}

/// Every code of a table makes one character, and the bytes are UTF-8.
TEST(TextSample, KnowsEveryDoubleByteCode) {
    SubtitleParser parser;
    for (unsigned code = 0x8140; code <= 0xFEFE; ++code) {
        if ((code & 0xFF) < 0x40) continue;
        const std::string text = {static_cast<char>(code >> 8), static_cast<char>(code)};
        const std::string utf8 =
            toUtf8(text, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK, parser, &SubtitleParser::Spanish2Unicode);
        ASSERT_LE(utf8.size(), 3u) << code;
        ASSERT_EQ(TRUE, parser.IsUTF8Encode(utf8.data(), utf8.size())) << code;
    }
}

TEST(TextSample, WritesCharactersOfOneToFourBytes) {
    const struct {
        unsigned character;
        const char* utf8;
    } rows[] = {{0x7F, "\x7F"},
                {0x80, "\xC2\x80"},
                {0x7FF, "\xDF\xBF"},
                {0x800, "\xE0\xA0\x80"},
                {0xFFFE, "\xEF\xBF\xBE"},
                {0x10000, "\xF0\x90\x80\x80"},
                {0x10FFFF, "\xF4\x8F\xBF\xBF"},
                {0xD800, "\xEF\xBF\xBD"},
                {0xDFFF, "\xEF\xBF\xBD"},
                {0xFFFF, "\xEF\xBF\xBD"}};
    for (const auto& row : rows) {
        std::string utf8;
        append(utf8, row.character);
        EXPECT_EQ(row.utf8, utf8) << row.character;
    }
}

}  // namespace
