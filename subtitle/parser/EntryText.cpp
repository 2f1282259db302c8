#include "subtitle/parser/EntryText.h"

#include <string.h>

namespace vxsubtitle {

S64 startScan(SubtitleParser& parser) {
    parser.m_s64RawBufferPosition = 0;
    parser.m_u32RawBufferDataSize = static_cast<U32>(parser.m_s64DataTotalSize);
    return parser.m_s64DataTotalSize;
}

BOOL describeTrack(const SubtitleParser& parser, EN_MEDIA_SUBTITLE_PARSER_TYPE type,
                   ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    if (info != nullptr) {
        info->eSubtitleType = type;
        info->eCodeType = parser.m_eCodeType;
    }
    return TRUE;
}

void takeDataSize(SubtitleParser& parser) {
    parser.m_u32SubtitleBufferDataSize = static_cast<U32>(parser.m_s64DataTotalSize);
}

bool canExtract(const SubtitleParser& parser, const U8* buf, U32 index) {
    return buf != nullptr && index < parser.m_u32TagNum && parser.m_pu8SubtitleBuffer != nullptr &&
           parser.m_pTagBuffer != nullptr;
}

S64 positionOf(const SubtitleParser& parser, U32 index) {
    return index < parser.m_u32TagBufferNum ? parser.m_pTagBuffer[index].s64Pos : 0;
}

U32 spanOf(const SubtitleParser& parser, U32 index) {
    return static_cast<U32>(positionOf(parser, index + 1)) - static_cast<U32>(positionOf(parser, index));
}

U32 copyToWorkBuffer(SubtitleParser& parser, S64 pos, S64 length) {
    memset(parser.m_pu8SubtitleBuffer, 0, kWorkBufferSize);
    parser.m_s64SubtitleBufferPosition = 0;
    const S64 limit = parser.m_pu8RawBuffer != nullptr ? S64{parser.mRawBufferLimit} : 0;
    if (pos < 0 || pos >= limit || length == 0) return 0;
    S64 count = limit - pos;
    if (count > S64{kWorkBufferSize}) count = kWorkBufferSize;
    if (length > 0 && length < count) count = length;
    memcpy(parser.m_pu8SubtitleBuffer, parser.m_pu8RawBuffer + pos, static_cast<size_t>(count));
    return static_cast<U32>(count);
}

U32 copyUpTo(SubtitleParser& parser, S64 pos, S64 end) {
    return copyToWorkBuffer(parser, pos, static_cast<S64>(static_cast<U64>(end) - static_cast<U64>(pos)));
}

U32 copyEntry(SubtitleParser& parser, U32 index) {
    const bool last = index + 1 >= parser.m_u32TagNum;
    const S64 end = last ? S64{static_cast<U32>(parser.m_s64DataTotalSize)} : positionOf(parser, index + 1);
    return copyUpTo(parser, positionOf(parser, index), end);
}

}  // namespace vxsubtitle
