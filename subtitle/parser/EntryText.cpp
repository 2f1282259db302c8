// The copy of an entry's bytes from the raw buffer into the work buffer.
#include "subtitle/parser/EntryText.h"

#include <string.h>

#include <algorithm>

namespace vxsubtitle {

namespace {

/// Fills the work buffer with `size` bytes of the raw buffer and zeros. Behind what an earlier text left there are
/// zeros already: the buffer is the parser's own. A player that uses it all the same, from its start on or whole, is
/// noticed.
void fillWorkBuffer(SubtitleParser& parser, S64 pos, U32 size) {
    U8* const work = parser.m_pu8SubtitleBuffer;
    const U32 used = usedOf(work, std::max<U32>(parser.mWorkBytes, size));
    // memcpy is what a compiler that knows the bound makes a string instruction of, which is slow to start
    if (size > 0) memmove(work, parser.m_pu8RawBuffer + pos, size);
    if (used > size) memset(work + size, 0, used - size);
    parser.mWorkBytes = static_cast<U16>(size);
}

}  // namespace

U32 copyUpTo(SubtitleParser& parser, S64 pos, S64 end) {
    parser.m_s64SubtitleBufferPosition = 0;
    const S64 limit = parser.m_pu8RawBuffer != nullptr ? S64{parser.mRawBufferLimit} : 0;
    S64 span = 0;
    S64 available = 0;
    if (pos >= 0 && pos < limit && end != pos) {
        span = end > pos && end - pos < S64{kWorkBufferSize} ? end - pos : S64{kWorkBufferSize};
        available = limit - pos;
    }
    fillWorkBuffer(parser, pos, static_cast<U32>(std::min(span, available)));
    return static_cast<U32>(span);
}

U32 copyEntry(SubtitleParser& parser, U32 index) {
    const bool last = index + 1 >= parser.m_u32TagNum;
    const S64 end = last ? S64{static_cast<U32>(parser.m_s64DataTotalSize)} : positionOf(parser, index + 1);
    return copyUpTo(parser, positionOf(parser, index), end);
}

}  // namespace vxsubtitle
