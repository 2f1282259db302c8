/// An entry's way from the raw buffer through the work buffer into the caller's: the part of `GetData` that every text
/// format shares.
#pragma once

#include <string.h>

#include "subtitle/parser/TagTable.h"
#include "subtitle/text/WorkText.h"

namespace vxsubtitle {

/// The file's data, as far as it may be read, and until the parser's worker is asked to stop.
template <class Enc>
TextView<Enc> dataOf(const SubtitleParser& parser) {
    const S64 total = parser.m_s64DataTotalSize;
    const U32 limit = parser.mRawBufferLimit;
    const size_t size = total < 1 ? 0 : total < S64{limit} ? static_cast<size_t>(total) : limit;
    return {parser.m_pu8RawBuffer, size, StopRequest(parser.mWorkerState)};
}

/// Calls `use` with the file's data in the encoding of the parser's code type.
template <class Use>
bool withData(const SubtitleParser& parser, Use use) {
    return withEncoding(parser.m_eCodeType, [&](auto encoding) { return use(dataOf<decltype(encoding)>(parser)); });
}

/// The code types that an extraction reads; of any other there is no text.
class CodeTypes {
public:
    template <class... Types>
    explicit constexpr CodeTypes(Types... types) : mBits((bit(types) | ...)) {}
    constexpr bool hold(U32 codeType) const { return (bit(codeType) & mBits) != 0; }

private:
    static constexpr U32 bit(U32 codeType) { return codeType < 32 ? U32{1} << codeType : 0; }

    U32 mBits;
};

constexpr CodeTypes kUnicodeOrNative{
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8,
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE,
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE,
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG,
};

/// Calls `walk` with the work buffer in the encoding of the parser's code type, when that is one of `read`; answers 0
/// units otherwise.
template <class Walk>
U32 walkEntry(const SubtitleParser& parser, const CodeTypes& read, Walk walk) {
    if (!read.hold(parser.m_eCodeType)) return 0;
    return withEncoding(parser.m_eCodeType, [&](auto encoding) {
        return walk(WorkText<decltype(encoding)>(parser.m_pu8SubtitleBuffer, parser.mWorkBytes));
    });
}

/// Sets the parser's count of valid bytes for an extraction: the low 32 bits of the data's length.
inline void takeDataSize(SubtitleParser& parser) {
    parser.m_u32SubtitleBufferDataSize = static_cast<U32>(parser.m_s64DataTotalSize);
}

/// Whether text of tag `index` can be extracted into `buf`.
[[nodiscard]] inline bool canExtract(const SubtitleParser& parser, const U8* buf, U32 index) {
    return buf != nullptr && index < parser.m_u32TagNum && parser.m_pu8SubtitleBuffer != nullptr &&
           parser.m_pTagBuffer != nullptr;
}

/// How much of a buffer of a work buffer's size was written since it was zeros: `used` bytes, when what is behind them
/// still is zeros, as far as a look at both of its ends tells; else all of it.
inline U32 usedOf(const U8* buffer, U32 used) {
    U64 first, last;
    if (kWorkBufferSize - used < sizeof first) return kWorkBufferSize;
    memcpy(&first, buffer + used, sizeof first);
    memcpy(&last, buffer + kWorkBufferSize - sizeof last, sizeof last);
    return (first | last) == 0 ? used : kWorkBufferSize;
}

/// Fills the work buffer with the data from `pos` up to `end`, at most the buffer's size, and with zeros behind it and
/// where there is no data. An `end` before `pos` counts as very far. Answers the number of bytes copied.
U32 copyUpTo(SubtitleParser& parser, S64 pos, S64 end);

/// The same for tag `index`: up to the next tag's position, or to the end of the data for the last tag.
U32 copyEntry(SubtitleParser& parser, U32 index);

}  // namespace vxsubtitle
