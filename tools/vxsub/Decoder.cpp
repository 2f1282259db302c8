#include "Decoder.h"

#include "Text.h"
#include "tools/meant/Detection.h"
#include "tools/meant/SystemEncodings.h"

namespace vxsub {
namespace {

using namespace android;

/// Null where the library's code type leaves it open.
CharsetRef statedCharset(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType) {
    switch (codeType) {
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8:
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE:  // not asked about 8-bit text
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG:
            return findNativeCharset("utf-8");
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5:
            return findNativeCharset("big5");
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK:
            return findNativeCharset("gbk");
        default:
            return nullptr;
    }
}

bool isMarked(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType) {
    return codeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8 ||
           codeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE ||
           codeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG;
}

Reading readingOf(const meant::Encoding& found) {
    if (found.from == meant::EncodingFrom::Guessed) return Reading::Guessed;
    if (found.from == meant::EncodingFrom::Assumed) return Reading::Assumed;
    return found.name == "ASCII" ? Reading::Ascii : Reading::Content;
}

}  // namespace

Decoder::Decoder(SubtitleParser& parser, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType, const CharsetRef& native,
                 std::string_view file)
    : mParser(parser), mCharset(statedCharset(codeType)) {
    if (native != nullptr && !isMarked(codeType)) {
        mCharset = native;
        mReading = Reading::Chosen;
    }
    if (mCharset != nullptr) return;
    const meant::Encoding found = meant::detectEncoding(file, {}, meant::systemEncodings()).encoding;
    mReading = readingOf(found);
    if (mReading == Reading::Ascii || found.name == "UTF-8")
        mCharset = findNativeCharset("utf-8");
    else if (mReading == Reading::Guessed)
        mCharset = findNativeCharset(found.name == "WINDOWS-1252" ? "1252" : found.name);
    if (mCharset != nullptr) return;
    mCharset = findNativeCharset("1252");
    mReading = Reading::Assumed;
}

std::u32string Decoder::decode(const Units& units) const {
    if (units.wide) return decodeUtf16(units.values);
    std::string bytes;
    bytes.reserve(units.values.size());
    for (const U16 value : units.values) bytes.push_back(char(U8(value)));
    return mCharset->decode(mParser, bytes);
}

}  // namespace vxsub
