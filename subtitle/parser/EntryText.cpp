// The copy of an entry's bytes from the raw buffer into the work buffer.
#include "subtitle/parser/EntryText.h"

#include <string.h>

#include <algorithm>

namespace vxsubtitle {

void takeDataSize(SubtitleParser& parser) {
    parser.m_u32SubtitleBufferDataSize = static_cast<U32>(parser.m_s64DataTotalSize);
}

bool canExtract(const SubtitleParser& parser, const U8* buf, U32 index) {
    return buf != nullptr && index < parser.m_u32TagNum && parser.m_pu8SubtitleBuffer != nullptr &&
           parser.m_pTagBuffer != nullptr;
}

U32 copyUpTo(SubtitleParser& parser, S64 pos, S64 end) {
    memset(parser.m_pu8SubtitleBuffer, 0, kWorkBufferSize);
    parser.m_s64SubtitleBufferPosition = 0;
    const S64 limit = parser.m_pu8RawBuffer != nullptr ? S64{parser.mRawBufferLimit} : 0;
    if (pos < 0 || pos >= limit || end == pos) return 0;
    const S64 span = end > pos && end - pos < S64{kWorkBufferSize} ? end - pos : S64{kWorkBufferSize};
    const S64 available = limit - pos;
    memcpy(parser.m_pu8SubtitleBuffer, parser.m_pu8RawBuffer + pos, static_cast<size_t>(std::min(span, available)));
    return static_cast<U32>(span);
}

U32 copyEntry(SubtitleParser& parser, U32 index) {
    const bool last = index + 1 >= parser.m_u32TagNum;
    const S64 end = last ? S64{static_cast<U32>(parser.m_s64DataTotalSize)} : positionOf(parser, index + 1);
    return copyUpTo(parser, positionOf(parser, index), end);
}

}  // namespace vxsubtitle
