/// The DVB subtitle system dialect (.sub): one entry a line, "00:00:01:00 00:00:04:00 Hello" or
/// "12 00:00:01,000 00:00:04,000 Hello".
#pragma once

#include "subtitle/SubtitleParser.h"

namespace android {

class VXSUBTITLE_API SubtitleParserSubDvbSubtitleSystem : public SubtitleParser {
public:
    /// The file at `path`, of which up to 511 bytes are kept; `BeginParse` opens it.
    explicit SubtitleParserSubDvbSubtitleSystem(U8* path);

    /// Takes a duplicate of `fd`; the whole file is read, `offset` and `length` are kept and not applied.
    SubtitleParserSubDvbSubtitleSystem(int fd, S64 offset, S64 length);
    ~SubtitleParserSubDvbSubtitleSystem() override;

    /// One text line, as SubViewer 1.0 gives it.
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index) override;

    /// The text up to the next time stamp, across line ends, without a line break at its end; no bitmap: `info` is not
    /// used.
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index, stSubDecoderInfo* info) override;

    /// `TRUE` when a line with both times comes before any that speaks for another dialect, and the scan has finished.
    BOOL BeginParse() override;

    /// Fills `eSubtitleType` and `eCodeType` alone. Always `TRUE`.
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    /// Thread entry: runs `ParserThread` of the parser that `parser` points to. Always null.
    static void* ParserTask(void* parser);

    /// Scans the raw buffer into the tag table; runs on the worker thread.
    void ParserThread();
};

}  // namespace android
