/// The operations on a parser's tag table: allocate, add, position and span of an entry's text, lookup by time.
#pragma once

#include "subtitle/SubtitleParser.h"

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

    /// Of the tags from `first` up to and including `last`, which are searched by halves, the index of the one that
    /// began last at `timeMs` of play time; what lies around them shows at the edges.
    U32 lookUp(U32 timeMs, U32 first, U32 last) const;

private:
    SubtitleParser& mParser;
};

/// The position in record `index` of the tag table, 0 behind the table.
S64 positionOf(const SubtitleParser& parser, U32 index);

/// Bytes from tag `index` to the next record, as a wrapping difference of positions. The record behind the last
/// tag was never filled, so the span of the last tag wraps to a very large number.
U32 spanOf(const SubtitleParser& parser, U32 index);

/// Adds a tag for the text at `offset` of the raw buffer, by the parser's own operation. False when it could not be
/// stored.
[[nodiscard]] inline bool addTag(SubtitleParser& parser, U32 start, U32 end, S64 offset) {
    return parser.AddTag(start, end, parser.m_s64RawBufferPosition + offset, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE) !=
           FALSE;
}

/// Logs the whole tag table between two rules, a line for each tag.
void logTags(const SubtitleParser& parser, const char* logTag);

}  // namespace vxsubtitle
