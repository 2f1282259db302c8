/// SAMI (.smi, .sami): entries that begin with a SYNC element and last until the next one.
///
/// Every tag ends at 0xFFFFFFFF; a text of one blank clears the screen. All classes go into one track.
#pragma once

#include "subtitle/SubtitleParser.h"

namespace android {

class VXSUBTITLE_API SubtitleParserSMI : public SubtitleParser {
public:
    /// The file at `path`, of which up to 511 bytes are kept; `BeginParse` opens it.
    explicit SubtitleParserSMI(U8* path);

    /// Takes a duplicate of `fd`; the whole file is read, `offset` and `length` are kept and not applied.
    SubtitleParserSMI(int fd, S64 offset, S64 length);
    ~SubtitleParserSMI() override;

    using SubtitleParser::GetData;

    /// The text of an entry. 8-bit text loses its markup, and `&nbsp;` becomes a blank; UTF-16 text keeps both.
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index) override;

    BOOL BeginParse() override;

    /// Fills `eSubtitleType` and `eCodeType` alone. Always `TRUE`.
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    /// Thread entry: runs `ParserThread` of the parser that `parser` points to. Always null.
    static void* ParserTask(void* parser);

    /// Scans the raw buffer into the tag table; runs on the worker thread.
    void ParserThread();
};

}  // namespace android
