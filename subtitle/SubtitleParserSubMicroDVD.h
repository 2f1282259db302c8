/// MicroDVD (.sub): one entry a line, timed in frames, "{100}{150}Hello"; the first may name the frame rate instead.
#pragma once

#include "subtitle/SubtitleParser.h"

namespace android {

class VXSUBTITLE_API SubtitleParserSubMicroDVD : public SubtitleParser {
public:
    /// The file at `path`, of which up to 511 bytes are kept; `BeginParse` opens it.
    explicit SubtitleParserSubMicroDVD(U8* path);

    /// Takes a duplicate of `fd`; the whole file is read, `offset` and `length` are kept and not applied.
    SubtitleParserSubMicroDVD(int fd, S64 offset, S64 length);
    ~SubtitleParserSubMicroDVD() override;

    /// One text line, as SubViewer 1.0 gives it; '|' stands as it is.
    using SubtitleParser::GetData;
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index) override;

    /// `TRUE` when a line with two braced numbers comes before any that speaks for another dialect, and the scan has
    /// finished. A frame rate in thousandths is rounded to whole frames per second in `m_u32FrameRrate`.
    BOOL BeginParse() override;

    /// Fills `eSubtitleType` and `eCodeType` alone. Always `TRUE`.
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    /// Thread entry: runs `ParserThread` of the parser that `parser` points to. Always null.
    static void* ParserTask(void* parser);

    /// Scans the raw buffer into the tag table; runs on the worker thread.
    void ParserThread();
};

}  // namespace android
