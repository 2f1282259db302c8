#include "Native.h"

#include <strings.h>

#include "Text.h"

namespace vxsub {
namespace {

using android::SubtitleParser;
using android::U16;
using android::U8;

constexpr U16 kNoCharacter = 0xFFFF;  // what the library answers for a code without a character

char32_t fromTable(U16 unit) { return unit == kNoCharacter ? kInvalid : char32_t(unit); }

template <U16 (SubtitleParser::*Convert)(const U8)>
std::u32string decodeSingle(SubtitleParser& parser, std::string_view bytes) {
    std::u32string text;
    for (const char byte : bytes) text.push_back(fromTable((parser.*Convert)(U8(byte))));
    return text;
}

/// Pairs outside First..Last would come back from the library as they are; they are no text.
template <U16 (SubtitleParser::*Convert)(U16), U16 First, U16 Last>
std::u32string decodeDouble(SubtitleParser& parser, std::string_view bytes) {
    std::u32string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        const U8 lead = U8(bytes[i]);
        if (lead < 0x80) {
            text.push_back(lead);
            continue;
        }
        const U8 trail = i + 1 < bytes.size() ? U8(bytes[i + 1]) : U8(0);
        const U16 code = U16(lead << 8 | trail);
        const bool isPair = lead > 0x80 && lead < 0xFF && trail >= 0x40 && code >= First && code <= Last;
        const char32_t c = isPair ? fromTable((parser.*Convert)(code)) : kInvalid;
        text.push_back(c);
        // An ASCII character behind a lead byte that it does not go with stays readable.
        if (c != kInvalid || trail >= 0x80) ++i;
    }
    return text;
}

std::u32string decodeAsUtf8(SubtitleParser&, std::string_view bytes) { return decodeUtf8(bytes); }

}  // namespace

const std::vector<NativeCharset>& nativeCharsets() {
    static const std::vector<NativeCharset> kCharsets = {
        {"utf-8", "UTF-8", decodeAsUtf8},
        {"gbk", "GBK (simplified Chinese)", decodeDouble<&SubtitleParser::GBToUnicode, 0x8140, 0xFEFE>},
        {"big5", "Big5 (traditional Chinese)", decodeDouble<&SubtitleParser::BIG52Unicode, 0xA140, 0xF9D5>},
        {"1252", "Windows-1252 (western Europe)", decodeSingle<&SubtitleParser::Spanish2Unicode>},
        {"1256", "Windows-1256 (Arabic, Persian)", decodeSingle<&SubtitleParser::Farsi2Unicode>},
        {"8859-8", "ISO 8859-8 (Hebrew)", decodeSingle<&SubtitleParser::Hebrew2Unicode>},
    };
    return kCharsets;
}

const NativeCharset* findNativeCharset(std::string_view option) {
    for (const NativeCharset& charset : nativeCharsets())
        if (option.size() == std::string_view(charset.option).size() &&
            strncasecmp(option.data(), charset.option, option.size()) == 0)
            return &charset;
    return nullptr;
}

}  // namespace vxsub
