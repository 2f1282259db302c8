/// SubRip (.srt): numbered entries, each a timing line, text lines and a blank line.
#pragma once

#include "subtitle/SubtitleParser.h"

namespace android {

class VXSUBTITLE_API SubtitleParserSRT : public SubtitleParser {
public:
    /// The file at `path`, of which up to 511 bytes are kept; `BeginParse` opens it.
    explicit SubtitleParserSRT(char* path);

    /// Takes a duplicate of `fd`; the whole file is read, `offset` and `length` are kept and not applied.
    SubtitleParserSRT(int fd, S64 offset, S64 length);

    /// Reads `length` bytes from `offset` on.
    SubtitleParserSRT(char* path, S64 offset, S64 length);
    ~SubtitleParserSRT() override;

    BOOL BeginParse() override;

    /// Fills `eSubtitleType` and `eCodeType` alone. Always `TRUE`.
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    /// The text of the entry after `index`, as `GetData`; 0 when `index` is the last.
    U32 GetNextData(const U32 track, U8* buf, const U32 size, const U32 index);

    /// Thread entry: runs `ParserThread` of the parser that `parser` points to. Always null.
    static void* ParserTask(void* parser);

    /// Scans the raw buffer into the tag table; runs on the worker thread.
    void ParserThread();
};

}  // namespace android
