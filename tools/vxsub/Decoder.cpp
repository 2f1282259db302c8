#include "Decoder.h"

#include <algorithm>

#include "Text.h"

namespace vxsub {
namespace {

using namespace android;

const NativeCharset* statedCharset(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType) {
    switch (codeType) {
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8:
            return findNativeCharset("utf-8");
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5:
            return findNativeCharset("big5");
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK:
            return findNativeCharset("gbk");
        default:
            return nullptr;
    }
}

/// Whether 8-bit text is better read as UTF-8. The library's test lets any text pass that ends where a sequence
/// could be cut off, such as a western one that ends in an accented letter: what it lets pass must also hold a
/// character that is whole. It refuses sequences of four bytes, which are well-formed all the same.
bool looksLikeUtf8(SubtitleParser& parser, const std::string& bytes) {
    const std::u32string text = decodeUtf8(bytes);
    if (encodeUtf8(text) == bytes) return true;
    const auto isWhole = [](char32_t c) { return c >= 0x80 && c != kInvalid; };
    return parser.IsUTF8Encode(bytes.data(), bytes.size()) == TRUE && std::any_of(text.begin(), text.end(), isWhole);
}

std::string bytesOf(const Units& units) {
    std::string bytes;
    bytes.reserve(units.values.size());
    for (const U16 value : units.values) bytes.push_back(char(U8(value)));
    return bytes;
}

}  // namespace

Decoder::Decoder(SubtitleParser& parser, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType, const NativeCharset* native)
    : mParser(parser),
      mStated(statedCharset(codeType)),
      mIsChosen(native != nullptr && codeType != E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8) {
    if (mIsChosen) mStated = native;
}

const NativeCharset& Decoder::western() {
    static const NativeCharset& kWestern = *findNativeCharset("1252");
    return kWestern;
}

const NativeCharset* Decoder::charsetOf(const std::string& bytes) const {
    if (mStated != nullptr) return mStated;
    return looksLikeUtf8(mParser, bytes) ? findNativeCharset("utf-8") : &western();
}

std::u32string Decoder::decode(const Units& units) const {
    if (units.wide) return decodeUtf16(units.values);
    const std::string bytes = bytesOf(units);
    return charsetOf(bytes)->decode(mParser, bytes);
}

Reading Decoder::readingOf(const Units& units) const {
    if (units.wide) return Reading::Stated;
    if (mIsChosen) return Reading::Chosen;
    if (mStated != nullptr) return Reading::Stated;
    const std::string bytes = bytesOf(units);
    if (std::all_of(bytes.begin(), bytes.end(), [](char c) { return U8(c) < 0x80; })) return Reading::Ascii;
    return charsetOf(bytes) == &western() ? Reading::Western : Reading::Utf8;
}

}  // namespace vxsub
