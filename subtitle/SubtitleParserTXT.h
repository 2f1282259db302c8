/// Plain text with a time stamp before each line (.txt): stamped lines come in pairs, of which the second ends the
/// first. Whole seconds only.
#pragma once

#include "subtitle/SubtitleParser.h"

namespace android {

class VXSUBTITLE_API SubtitleParserTXT : public SubtitleParser {
public:
    /// The file at `path`, of which up to 511 bytes are kept; `BeginParse` opens it.
    explicit SubtitleParserTXT(U8* path);

    /// Takes a duplicate of `fd`; the whole file is read, `offset` and `length` are kept and not applied.
    SubtitleParserTXT(int fd, S64 offset, S64 length);
    ~SubtitleParserTXT() override;

    using SubtitleParser::GetData;

    /// The one or two lines of an entry, with CR LF between them. A UTF-8 file has no text.
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index) override;

    BOOL BeginParse() override;

    /// Fills `eSubtitleType` and `eCodeType` alone. Always `TRUE`.
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    /// Thread entry: prints a line to standard output and runs `ParserThread` of the parser that `parser` points to.
    /// Always null.
    static void* ParserTask(void* parser);

    /// Scans the raw buffer into the tag table; runs on the worker thread.
    void ParserThread();
};

}  // namespace android
