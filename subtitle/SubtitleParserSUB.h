/// The parser for a .sub file whose dialect the player does not know.
#pragma once

#include "subtitle/SubtitleParser.h"

namespace android {

/// Tries SubViewer 2.0, SubViewer 1.0, MicroDVD and the DVB subtitle system, in this order, and forwards the queries
/// to the first parser that accepts the file. Operations that are not overridden answer for the dispatcher itself:
/// `GetTagNum` the count copied at acceptance, `SetFrameRate` the rate that MicroDVD is given.
class VXSUBTITLE_API SubtitleParserSUB : public SubtitleParser {
public:
    /// Up to 511 bytes of `path` are kept with a terminator; a longer one fills the field without a terminator.
    explicit SubtitleParserSUB(U8* path);

    /// Keeps a duplicate of `fd` open for good, as the contract has it. The whole file is read; `offset` and `length`
    /// are not used.
    SubtitleParserSUB(int fd, S64 offset, S64 length);

    /// Stops, deinitialises and destroys the delegate. `u32FileFD` stays open.
    ~SubtitleParserSUB() override;

    /// Does nothing; the delegate and its data stay. Always `TRUE`.
    BOOL Deinit() override;

    /// The delegate's answer; 0 without one.
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index) override;

    /// Always 0, with a delegate too.
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index, stSubDecoderInfo* info) override;

    /// `TRUE` when a dialect has accepted the file and its scan has finished. `FALSE` once there is a delegate, which
    /// stays; when no dialect accepts the file; when memory is short; and when a dialect's scan runs out of time: a
    /// call after that begins anew.
    BOOL BeginParse() override;

    /// The delegate's answer; `FALSE` without one.
    BOOL StopParse() override;

    /// The delegate's answer; 0xFFFFFFFF without one.
    U32 GetTag(const U32 track, const U32 timeMs) override;

    /// The delegate's answer; `FALSE` without one.
    BOOL GetTagInfo(U32 track, U32 index, ST_MEDIA_SUBTITLE_PARSER_TAG* tag) override;
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    /// As `BeginParse()`, always from `u32FileFD`. The argument is not used.
    virtual BOOL BeginParse(int);

    SubtitleParser* m_pParser;  ///< the parser that accepted the file, is on trial or ran out of time; owned; or null
    U8 m_pSubtitleName[512];    ///< the path, padded with zeros
    S32 u32FileFD;  ///< a duplicate of the descriptor given; 0: none, the path is used; -1: could not be had
};

}  // namespace android
