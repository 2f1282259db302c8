/// Text subtitles from inside the movie: the player pushes them as it demultiplexes, and reads them back by time.
#pragma once

#include <utils/Mutex.h>

#include <vector>

#include "subtitle/SubtitleParser.h"

namespace android {

/// One queued subtitle.
struct ST_MEDIA_FILE_PLAYER_MOVIE_SUBTITLE_INFO {
    EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE eType;  ///< encoding of the text, as pushed
    U32 u32QueueStart;                         ///< address of the queue's own copy of the text; 0 when released
    U32 u32QueueSize;                          ///< length of the text without its brace blocks, bytes
    U32 u32PTSStart;                           ///< start, milliseconds; also the entry's tag
    U32 u32PTSEnd;                             ///< end, milliseconds; not part of the interval
};

/// A queue of pushed subtitles in the order of their start times. A tag is an entry's start time, so it stays valid
/// while other entries come and go; an entry may be gone (expired or flushed) between `GetTag` and `GetData`.
///
/// One thread may push while others read: every operation takes `mLock` for its whole run, the destructor alone does
/// not. Nothing is to be started: `BeginParse`, `Init` and `StopParse` are the base's and play no part.
class VXSUBTITLE_API SubtitleParserInternal : public SubtitleParser {
public:
    SubtitleParserInternal();

    /// Releases every entry. No other operation may run at the same time.
    ~SubtitleParserInternal() override;

    using SubtitleParser::GetData;

    /// Copies up to `size` bytes of the text of the first entry that starts at `tag` into `buf`, as pushed but for its
    /// brace blocks and without a terminator, and returns how many. 0 when no entry has that start. The encoding that
    /// `GetTrackInfo` reports becomes the entry's. `track` is not used.
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 tag) override;

    /// The start time of the first entry with start <= `timeMs` < end, or 0xFFFFFFFF. `track` is not used.
    U32 GetTag(const U32 track, const U32 timeMs) override;

    /// Fills in the start and end time of the first entry that starts at `tag`; the record's other fields stay. `FALSE`
    /// when there is none, or no record; nothing is written then.
    BOOL GetTagInfo(U32 track, U32 tag, ST_MEDIA_SUBTITLE_PARSER_TAG* info) override;

    /// Fills `eSubtitleType`, and `eCodeType` with the encoding of the entry pushed or read last. Always `TRUE`.
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    /// Queues a copy of the `size` bytes of text at address `data`; the caller's text stays the caller's. The text ends
    /// at its first zero byte, and blocks in braces are taken out. Times are milliseconds, `curTimeMs` is the play
    /// time. When that has passed `startMs`, or is earlier than at the push before, everything queued is dropped first.
    /// Entries at the front that ended before `curTimeMs` are dropped afterwards, be it the new one. `FALSE` when
    /// memory is short.
    BOOL AddSubtitleData(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, U32 curTimeMs, U32 data, U32 size, U32 startMs,
                         U32 endMs);

    /// `AddSubtitleData` for a text at any address, on machines where an address does not fit 32 bits.
    BOOL AddSubtitleText(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, U32 curTimeMs, const void* text, U32 size,
                         U32 startMs, U32 endMs);

    /// Drops everything queued. Takes `mLock` like the others: a caller must not hold it. Always `TRUE`.
    BOOL ClearSubtitleData();

    std::vector<ST_MEDIA_FILE_PLAYER_MOVIE_SUBTITLE_INFO>
        m_vSubtitleInfo;                              ///< the queue, by start time; guarded by mLock
    U32 m_u32LastTimeMs;                              ///< play time of the last push, milliseconds; guarded by mLock
    EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE m_enCodeType;  ///< encoding of the entry pushed or read last; guarded by mLock
    Mutex mLock;                                      ///< held by every operation for its whole run
};

}  // namespace android
