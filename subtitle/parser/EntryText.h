/// An entry's bytes on their way from the raw buffer into the work buffer: the part of `GetData` that every text
/// format shares. Not installed.
#pragma once

#include "subtitle/SubtitleParser.h"
#include "subtitle/text/Markup.h"

namespace vxsubtitle {

/// The file's data, as far as it may be read.
template <class Enc>
TextView<Enc> textOf(const SubtitleParser& parser) {
    const S64 total = parser.m_s64DataTotalSize;
    const U32 limit = parser.mRawBufferLimit;
    return {parser.m_pu8RawBuffer, total < 1 ? 0 : total < S64{limit} ? static_cast<size_t>(total) : limit};
}

/// Calls `scan` with the file's data as text of the parser's code type, 8-bit unless that is one of UTF-16.
template <class Scan>
bool withText(const SubtitleParser& parser, Scan scan) {
    if (parser.m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE) return scan(textOf<Utf16Le>(parser));
    if (parser.m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG) return scan(textOf<Utf16Be>(parser));
    return scan(textOf<Bytes>(parser));
}

/// What every worker does first: the scan begins at the data's start. Answers the data's length in bytes.
S64 startScan(SubtitleParser& parser);

/// A worker's whole scan: the first bytes tell the encoding, then `scan(text, firstUnit)` reads the data. False when
/// it said so: a tag could not be stored. Without data the code type stays and nothing is scanned.
template <class Scan>
bool scanFile(SubtitleParser& parser, Scan scan) {
    if (startScan(parser) < 1) return true;
    const Mark mark = readMark(textOf<Bytes>(parser));
    parser.m_eCodeType = mark.codeType;
    return withText(parser, [&](const auto& in) { return scan(in, mark.firstUnit); });
}

/// The `GetTrackInfo` of every text format: fills the format and the code type, nothing else.
BOOL describeTrack(const SubtitleParser& parser, EN_MEDIA_SUBTITLE_PARSER_TYPE type,
                   ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info);

/// Sets the parser's count of valid bytes for an extraction: the low 32 bits of the data's length.
void takeDataSize(SubtitleParser& parser);

/// Whether text of tag `index` can be extracted into `buf`.
bool canExtract(const SubtitleParser& parser, const U8* buf, U32 index);

/// The position in record `index` of the tag table, 0 behind the table.
S64 positionOf(const SubtitleParser& parser, U32 index);

/// Bytes from tag `index` to the next record, as a wrapping difference of positions. The record behind the last
/// tag was never filled, so the span of the last tag wraps to a very large number.
U32 spanOf(const SubtitleParser& parser, U32 index);

/// Clears the work buffer and copies the data from `pos` on into it: `length` bytes, at most the buffer's size and
/// zeros where there is no data. A negative length counts as very large. Answers the number of bytes copied.
U32 copyToWorkBuffer(SubtitleParser& parser, S64 pos, S64 length);

/// The same up to `end`.
U32 copyUpTo(SubtitleParser& parser, S64 pos, S64 end);

/// The same for tag `index`: up to the next tag's position, or to the end of the data for the last tag.
U32 copyEntry(SubtitleParser& parser, U32 index);

}  // namespace vxsubtitle
