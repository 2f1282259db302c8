/// SubViewer 1.0 (.sub): entries of a start line "[00:00:01]", a text line and an end line "[00:00:04]".
#pragma once

#include "subtitle/SubtitleParser.h"

namespace android {

class VXSUBTITLE_API SubtitleParserSubViewer10 : public SubtitleParser {
public:
    /// The file at `path`, of which up to 511 bytes are kept; `BeginParse` opens it.
    explicit SubtitleParserSubViewer10(U8* path);

    /// Takes a duplicate of `fd`; the whole file is read, `offset` and `length` are kept and not applied.
    SubtitleParserSubViewer10(int fd, S64 offset, S64 length);
    ~SubtitleParserSubViewer10() override;

    /// One text line; in 8-bit text without brace groups and angle-bracket tags. Otherwise as the base's.
    using SubtitleParser::GetData;
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index) override;

    /// `TRUE` when some line is a start line and the scan has finished.
    BOOL BeginParse() override;

    /// Fills `eSubtitleType` and `eCodeType` alone. Always `TRUE`.
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    /// Thread entry: runs `ParserThread` of the parser that `parser` points to. Always null.
    static void* ParserTask(void* parser);

    /// Scans the raw buffer into the tag table; runs on the worker thread.
    void ParserThread();
};

}  // namespace android
