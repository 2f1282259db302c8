// The memory of the tag table, and its log.
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

bool TagTable::grow() {
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
