/// SubViewer 2.0 (.sub): header lines, then entries of a time line "00:00:01.00,00:00:04.50" and a text line.
#pragma once

#include "subtitle/SubtitleParser.h"

namespace android {

class VXSUBTITLE_API SubtitleParserSubViewer20 : public SubtitleParser {
public:
    /// The file at `path`, of which up to 511 bytes are kept; `BeginParse` opens it.
    explicit SubtitleParserSubViewer20(U8* path);

    /// Takes a duplicate of `fd`; the whole file is read, `offset` and `length` are kept and not applied.
    SubtitleParserSubViewer20(int fd, S64 offset, S64 length);
    ~SubtitleParserSubViewer20() override;

    /// `TRUE` when the first line that begins with a digit is a time line and the scan has finished. Big-endian data
    /// is swapped to little-endian in the raw buffer.
    BOOL BeginParse() override;

    /// Fills `eSubtitleType` and `eCodeType` alone. Always `TRUE`.
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    /// Thread entry: runs `ParserThread` of the parser that `parser` points to. Always null.
    static void* ParserTask(void* parser);

    /// Scans the raw buffer into the tag table; runs on the worker thread.
    void ParserThread();
};

}  // namespace android
