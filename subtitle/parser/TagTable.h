/// The operations on a parser's tag table: allocate, add, position and span of an entry's text, lookup by time.
#pragma once

#include <stddef.h>

#include "subtitle/SubtitleParser.h"
#include "subtitle/system/Wraps.h"

namespace vxsubtitle {

using namespace android;

/// Entries that a tag table starts with, and by which it grows.
constexpr U32 kTagStep = 8192;

class TagTable {
public:
    explicit TagTable(SubtitleParser& parser) : mParser(parser) {}

    /// A zeroed table of `kTagStep` entries in place of none. False when memory is short.
    [[nodiscard]] bool allocate();

    void release();

    /// Appends a tag; the table grows when it is full. False when it could not, and the table is gone then. Without a
    /// table nothing is stored, and that is no failure.
    [[nodiscard]] bool add(U32 start, U32 end, S64 pos);

    /// Puts the tags in the order of `Compare`, those that it calls equal in the order in which they stand; ends early
    /// when the worker is asked to stop.
    void sort();

private:
    static bool grow(SubtitleParser& parser);

    SubtitleParser& mParser;
};

inline bool TagTable::add(U32 start, U32 end, S64 pos) {
    if (mParser.m_pTagBuffer == nullptr) return true;  // kept(tag-without-table): reported as success
    // the data type is not written; entries read as WHOLE because the table is zeroed
    if (mParser.m_u32TagNum < mParser.m_u32TagBufferNum) {
        ST_MEDIA_SUBTITLE_PARSER_TAG& tag = mParser.m_pTagBuffer[mParser.m_u32TagNum];
        tag.u32TimeStart = start;
        tag.u32TimeEnd = end;
        tag.s64Pos = pos;
    }
    return ++mParser.m_u32TagNum < mParser.m_u32TagBufferNum || grow(mParser);
}

/// The time at which an entry is looked for.
VX_WRAPS inline U32 withoutOffset(U32 timeMs, S32 offsetMs) {
    // kept(lookup-offset): the offset is subtracted only from times that are not below it, compared as signed values
    return static_cast<S32>(timeMs) < offsetMs ? timeMs : timeMs - static_cast<U32>(offsetMs);
}

/// Of the tags from `first` up to and including `last`, which are searched by halves, the index of the one that began
/// last at `timeMs` of play time; what lies around them shows at the edges.
U32 lookUpTag(const SubtitleParser& parser, U32 timeMs, U32 first, U32 last);

/// The position in record `index` of the tag table, 0 behind the table.
inline S64 positionOf(const SubtitleParser& parser, U32 index) {
    return index < parser.m_u32TagBufferNum ? parser.m_pTagBuffer[index].s64Pos : 0;
}

/// Bytes from tag `index` to the next record, as a wrapping difference of positions. The record behind the last
/// tag was never filled, so the span of the last tag wraps to a very large number.
VX_WRAPS inline U32 spanOf(const SubtitleParser& parser, U32 index) {
    return static_cast<U32>(positionOf(parser, index + 1)) - static_cast<U32>(positionOf(parser, index));
}

/// Adds a tag for the text at `offset` of the raw buffer, by the parser's own operation. False when it could not be
/// stored.
[[nodiscard]] inline bool addTag(SubtitleParser& parser, U32 start, U32 end, S64 offset) {
    return parser.AddTag(start, end, parser.m_s64RawBufferPosition + offset, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE) !=
           FALSE;
}

/// Logs the whole tag table between two rules, a line for each tag.
void logTags(const SubtitleParser& parser, const char* logTag);

}  // namespace vxsubtitle
