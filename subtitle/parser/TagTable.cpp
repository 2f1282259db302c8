#include "subtitle/parser/TagTable.h"

#include <stdlib.h>
#include <string.h>

#include "subtitle/system/Log.h"

namespace vxsubtitle {

bool TagTable::allocate() {
    mParser.m_u32TagBufferNum = kTagStep;
    mParser.m_pTagBuffer =
        static_cast<ST_MEDIA_SUBTITLE_PARSER_TAG*>(calloc(kTagStep, sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG)));
    return mParser.m_pTagBuffer != nullptr;
}

void TagTable::release() {
    free(mParser.m_pTagBuffer);
    mParser.m_pTagBuffer = nullptr;
}

bool TagTable::add(U32 start, U32 end, S64 pos) {
    if (mParser.m_pTagBuffer == nullptr) return true;  // kept: reported as success
    // kept: the data type is not written; entries read as WHOLE because the table is zeroed
    if (mParser.m_u32TagNum < mParser.m_u32TagBufferNum) {
        ST_MEDIA_SUBTITLE_PARSER_TAG& tag = mParser.m_pTagBuffer[mParser.m_u32TagNum];
        tag.u32TimeStart = start;
        tag.u32TimeEnd = end;
        tag.s64Pos = pos;
    }
    if (++mParser.m_u32TagNum < mParser.m_u32TagBufferNum) return true;

    constexpr size_t kTagSize = sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG);
    const U64 entries = U64{mParser.m_u32TagBufferNum} + kTagStep;
    void* grown = nullptr;
    if (entries <= static_cast<size_t>(-1) / kTagSize && entries <= 0xFFFFFFFF) {
        grown = realloc(mParser.m_pTagBuffer, static_cast<size_t>(entries) * kTagSize);
    }
    if (grown == nullptr) {
        release();
        mParser.m_u32TagNum = 0;
        mParser.m_u32TagBufferNum = 0;
        return false;
    }
    mParser.m_pTagBuffer = static_cast<ST_MEDIA_SUBTITLE_PARSER_TAG*>(grown);
    memset(static_cast<void*>(mParser.m_pTagBuffer + mParser.m_u32TagBufferNum), 0, kTagStep * kTagSize);
    mParser.m_u32TagBufferNum = static_cast<U32>(entries);
    return true;
}

U32 TagTable::lookUp(U32 timeMs, U32 first, U32 last) const {
    const S32 offset = mParser.m_s32TimeOffsetMs;
    // kept: the offset is subtracted only from times that are not below it, compared as signed values
    const U32 t = static_cast<S32>(timeMs) < offset ? timeMs : timeMs - static_cast<U32>(offset);
    const ST_MEDIA_SUBTITLE_PARSER_TAG* const tags = mParser.m_pTagBuffer;
    const size_t capacity = mParser.m_u32TagBufferNum;
    using Index = ptrdiff_t;  // signed, and wide enough for every table that fits into memory
    const auto start = [=](Index i) { return static_cast<size_t>(i) < capacity ? tags[i].u32TimeStart : 0; };
    Index low = static_cast<Index>(first);
    Index high = static_cast<Index>(last) + 1;
    for (;;) {
        const Index middle = low + (high - low) / 2;
        if (t < start(middle)) {
            if (low + high < 2) return 0;
            high = middle - 1;
            // kept: before the first tag this looks at the one before it, the last of another track
            if (start(high) <= t) return static_cast<U32>(high);
            if (middle <= low) return 0;  // kept: 0 is a tag, and means none, too
        } else {
            if (middle >= static_cast<Index>(last)) return static_cast<U32>(middle);
            low = middle + 1;
            if (t < start(low)) return static_cast<U32>(middle);
            if (high <= middle) return 0;
        }
    }
}

S64 positionOf(const SubtitleParser& parser, U32 index) {
    return index < parser.m_u32TagBufferNum ? parser.m_pTagBuffer[index].s64Pos : 0;
}

U32 spanOf(const SubtitleParser& parser, U32 index) {
    return static_cast<U32>(positionOf(parser, index + 1)) - static_cast<U32>(positionOf(parser, index));
}

void logTags(const SubtitleParser& parser, const char* logTag) {
    constexpr char kRule[] = "\n\n*************************************\n\n";
    VX_LOG(logTag, "%s", kRule);
    for (U32 i = 0; parser.m_pTagBuffer != nullptr && i < parser.m_u32TagNum; ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& tag = parser.m_pTagBuffer[i];
        VX_LOG(logTag, "Time = %lu, %lu, %08lx\n", asUnsignedLong(tag.u32TimeStart), asUnsignedLong(tag.u32TimeEnd),
               asUnsignedLong(static_cast<U32>(tag.s64Pos)));
    }
    VX_LOG(logTag, "%s", kRule);
}

}  // namespace vxsubtitle
