/// SubStation Alpha and its successor (.ssa, .ass): a script whose Dialogue lines are the entries.
///
/// The table is sorted by start time, and the code type of unmarked data may become BIG5 or GBK; both are over when
/// `BeginParse` returns `TRUE`.
#pragma once

#include "subtitle/SubtitleParser.h"

namespace android {

class VXSUBTITLE_API SubtitleParserSSA : public SubtitleParser {
public:
    /// The file at `path`, of which up to 511 bytes are kept; `BeginParse` opens it.
    explicit SubtitleParserSSA(char* path);

    /// Takes a duplicate of `fd`; the whole file is read, `offset` and `length` are kept and not applied.
    SubtitleParserSSA(int fd, S64 offset, S64 length);
    ~SubtitleParserSSA() override;

    using SubtitleParser::GetData;

    /// The text of one Dialogue line without override blocks and tags; `\N` and its like stay as written.
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index) override;

    BOOL BeginParse() override;

    /// Fills `eSubtitleType` and `eCodeType` alone. Always `TRUE`.
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    BOOL ConvertUnicode2ASCII(U16* src, U8* dst, U32 count) override;

    /// The base's check, with a log line for each entry that is looked at.
    void GetData2CheckPossibleEncodings() override;

    /// Thread entry: runs `ParserThread` of the parser that `parser` points to. Always null.
    static void* ParserTask(void* parser);

    /// Scans the raw buffer into the tag table; runs on the worker thread.
    void ParserThread();
};

}  // namespace android
