#include "Native.h"

#include <ctype.h>
#include <string.h>
#include <strings.h>

#include <algorithm>

#include "Text.h"
#include "tools/meant/SystemEncodings.h"

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

template <class Decode>
CharsetRef charset(const char* option, const char* name, Decode decode) {
    return std::make_shared<NativeCharset>(NativeCharset{option, name, decode});
}

/// Null when iconv does not know the name.
CharsetRef fromIconv(const std::string& name) {
    const meant::Encodings::Decode decode = meant::systemEncodings().open(name);
    if (!decode) return nullptr;
    return std::make_shared<NativeCharset>(NativeCharset{name, name, [decode](SubtitleParser&, std::string_view bytes) {
                                                             std::string utf8;
                                                             decode(bytes, &utf8);
                                                             return decodeUtf8(utf8);
                                                         }});
}

bool isCharsetName(std::string_view name) {
    const auto isNamed = [](unsigned char c) { return isalnum(c) || strchr("-_.:+()", c) != nullptr; };
    return !name.empty() && std::all_of(name.begin(), name.end(), isNamed);
}

}  // namespace

const std::vector<CharsetRef>& libraryCharsets() {
    static const std::vector<CharsetRef> kCharsets = {
        charset("utf-8", "UTF-8", decodeAsUtf8),
        charset("gbk", "GBK (simplified Chinese)", decodeDouble<&SubtitleParser::GBToUnicode, 0x8140, 0xFEFE>),
        charset("big5", "Big5 (traditional Chinese)", decodeDouble<&SubtitleParser::BIG52Unicode, 0xA140, 0xF9D5>),
        charset("1252", "Windows-1252 (western Europe)", decodeSingle<&SubtitleParser::Spanish2Unicode>),
        charset("1256", "Windows-1256 (Arabic, Persian)", decodeSingle<&SubtitleParser::Farsi2Unicode>),
        charset("8859-8", "ISO 8859-8 (Hebrew)", decodeSingle<&SubtitleParser::Hebrew2Unicode>),
    };
    return kCharsets;
}

CharsetRef findNativeCharset(std::string_view option) {
    std::string name(option);
    for (const CharsetRef& charset : libraryCharsets())
        if (strcasecmp(name.c_str(), charset->option.c_str()) == 0) return charset;
    if (!isCharsetName(name)) return nullptr;
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return char(toupper(c)); });
    for (const char* prefix : {"", "WINDOWS-", "ISO-"})
        if (CharsetRef charset = fromIconv(prefix + name)) return charset;
    return nullptr;
}

}  // namespace vxsub
