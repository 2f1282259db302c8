/// The base of every subtitle parser, and the only interface through which the media player holds one.
#pragma once

#include <pthread.h>

#include "subtitle/SubtitleTypes.h"

namespace android {

template <typename T>
class sp;
class IGraphicBufferProducer;
class SubtitleFileProcess;

/// Owns a file's data, the tag table and the text work buffer, answers which entry covers a play time and cuts
/// an entry's text out of the data.
///
/// Calling order of a file parser: construct; optionally `SetFrameRate`; `BeginParse` (which calls `Init` and
/// waits for the scan on a worker thread); any number of queries; `StopParse`; `Deinit`; destroy. All calls come
/// from the player's thread. Queries are meant for after `BeginParse` has returned `TRUE`.
///
/// Fields are public, and their order, like that of the virtual operations, is the contract with players and
/// plug-ins built against it: append nothing, reorder nothing.
class VXSUBTITLE_API SubtitleParser {
public:
    SubtitleParser();
    SubtitleParser(const SubtitleParser&) = delete;
    SubtitleParser& operator=(const SubtitleParser&) = delete;

    /// Asks a worker that still runs to stop, waits for it and frees the buffers.
    virtual ~SubtitleParser();

    /// Allocates a zeroed raw buffer of `size` bytes (with a zero guard behind it), a zeroed table of 8192 tags
    /// and the 8192-byte work buffer. What an earlier call allocated is freed first. `FALSE` when memory is
    /// short; nothing stays allocated then.
    virtual BOOL Init(U64 size);

    /// Frees the buffers. Always `TRUE`; may be called again.
    virtual BOOL Deinit();

    /// Writes the text of tag `index` into `buf` (capacity `size` bytes) in the file's encoding, UTF-16 in
    /// little-endian order, with a terminating 0, and returns its length in bytes (8-bit text) or 16-bit units.
    /// 0 means no text, a bad argument or an encoding that this parser does not read. `track` is not used.
    /// A text that ends right behind a tag has no 0 of its own: clear `buf` before the call. A 0 inside the length
    /// is where a group in braces closed its line; what is to be shown ends there.
    virtual U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index);

    /// Bitmap form of `GetData`: 0 here.
    virtual U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index, stSubDecoderInfo* info);

    /// Reads and scans the file. `TRUE` when the scan has finished within the parser's time limit.
    virtual BOOL BeginParse();

    /// Always `TRUE`, and nothing else: a worker that still runs is stopped by `Deinit` and by the destructor.
    virtual BOOL StopParse();

    /// Whether `length` bytes are UTF-8 of at most three bytes a character. A sequence cut off by the end counts
    /// as valid, and so do no bytes at all.
    virtual BOOL IsUTF8Encode(const void* data, const U64 length);

    /// Index of the tag that began last at `timeMs` milliseconds of play time; 0 also when none has begun yet
    /// (compare with the times from `GetTagInfo`). End times are not looked at.
    virtual U32 GetTag(const U32 track, const U32 timeMs);

    /// Copies the start and end time of tag `index` into `tag`, whose other fields stay. `FALSE` when `tag` is
    /// null, no table exists, or `index` is not below the table's capacity.
    virtual BOOL GetTagInfo(U32 track, U32 index, ST_MEDIA_SUBTITLE_PARSER_TAG* tag);

    /// Describes a track; the base fills nothing. Always `TRUE`.
    virtual BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info);

    /// Narrows `count` 16-bit units as stored: ASCII becomes one byte each, other units may become two. `dst`
    /// takes up to 2 x `count` bytes and is not terminated. Always `TRUE`.
    virtual BOOL ConvertUnicode2ASCII(U16* src, U8* dst, U32 count);

    /// Reads numbers from `str` under a format of "%u", "%x", literals (each takes any one character) and white
    /// space (ignored); every conversion fills a `U32*`. Returns the number of conversions. A literal takes a 0
    /// too, so as many bytes as the format has literals must be readable behind the 0 that ends `str`; in the raw
    /// buffer they are.
    virtual U32 SScanf(const U8* str, const char* format, ...);

    /// Appends a tag (times in milliseconds). The table grows by 8192 entries when it is full; `FALSE` when it
    /// could not, and the table is gone then. Without a table nothing is stored and `TRUE` is returned.
    virtual BOOL AddTag(const U32 start, const U32 end, const S64 pos, const EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE type);

    /// Milliseconds of the monotonic clock; wraps after 49.7 days.
    virtual U32 GetSystemTime();

    /// Copies `count` units with a-z turned into A-Z; `src` may be `dst`. `FALSE` when either is null.
    virtual BOOL StrUpr(const U8* src, const U32 count, U8* dst);
    virtual BOOL StrUpr(const U16* src, const U32 count, U16* dst);

    /// Which double-byte encodings the 0-terminated `text` could be: 1 Shift-JIS, 2 GBK, 4 Big5, added up; 7 when
    /// nothing speaks for any.
    virtual U32 CheckPossibleEncodings(const U8* text);

    /// Looks at the first 100 entries' texts and turns a NATIVE code type into BIG5 or GBK when one is decisive.
    virtual void GetData2CheckPossibleEncodings();

    /// Legacy codes to UTF-16: a double-byte code is lead x 256 + trail. Codes outside a table's domain come back
    /// unchanged, codes in it without a character as 0xFFFF.
    virtual U16 GBToUnicode(U16 code);
    virtual U16 Farsi2Unicode(const U8 code);
    virtual U16 Hebrew2Unicode(const U8 code);
    virtual U16 BIG52Unicode(U16 code);
    virtual U16 Spanish2Unicode(const U8 code);

    /// Draws nothing. Always `TRUE`.
    virtual BOOL RenderSubtitle();

    /// Number of tags in the table.
    virtual U32 GetTagNum();

    /// Frame rate for formats that count frames: 1 to 99 frames per second, or thousandths above 1000. 0 is
    /// ignored. Call before `BeginParse`.
    virtual void SetFrameRate(U32 rate);

    /// Bitmap formats only: draws nothing and returns `FALSE` here.
    virtual BOOL Refresh();
    virtual BOOL _render(const U8* bitmap, U16 width, U16 height);
    virtual void SetIGraphicBufferProducer(const sp<IGraphicBufferProducer>& producer);

    /// UTF-8 to UTF-16: reads at most `srcLen` bytes, writes fewer than `dstLen` units, no terminator, and
    /// returns the number of bytes written.
    U16 UTF8ToUCS2(const U8* src, U16* dst, const U16 srcLen, const U16 dstLen);

    /// UTF-16 to UTF-8, each unit on its own (surrogates become three bytes each), with a terminating 0. `dst`
    /// takes up to 3 bytes a unit and the 0. Returns the number of bytes before the 0.
    int UnicodeToUTF8(U16* src, int srcBytes, U8* dst);

    pthread_t m_threadParser;                    ///< the worker; 0 when none was started
    ST_MEDIA_SUBTITLE_PARSER_TAG* m_pTagBuffer;  ///< the tag table; owned
    EN_MEDIA_SUBTITLE_PARSER_FLAG m_eFlag;       ///< state word
    U8* m_pu8SubtitleBuffer;                     ///< text work buffer, 8192 bytes; owned, others only read it
    U8* m_pu8RawBuffer;                          ///< the file's data; owned
    U32 m_u32RawBufferDataSize;                  ///< valid bytes in the raw buffer
    U32 mRawBufferLimit;                         ///< bytes of the raw buffer that text may be read from (fills padding)
    S64 m_s64RawBufferPosition;                  ///< file position of the raw buffer's first byte
    U32 m_u32ParsedPos;                          ///< reserved
    U32 m_u32RawBufferSize;                      ///< raw buffer capacity, used by some formats
    S64 m_s64DataTotalSize;                      ///< length of the file's data, bytes
    U32 m_u32TagNum;                             ///< tags in the table
    U32 m_u32FrameRrate;                         ///< frame rate for frame-based formats
    U32 m_u32TagBufferNum;                       ///< tag table capacity, entries
    EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE m_eCodeType;  ///< encoding found
    EN_MEDIA_SUBTITLE_PARSER_TYPE m_eSubtitleType;   ///< format found
    U32 m_u32SubtitleBufferDataSize;                 ///< bytes of valid data in the work buffer
    S64 m_s64SubtitleBufferPosition;                 ///< file position that the work buffer holds
    S32 m_s32TimeOffsetMs;                           ///< subtracted from query times in `GetTag`, milliseconds
    BOOL bParseFinish;                               ///< set by the worker when its scan ended normally (atomic access)
    U8 mWorkerState;                    ///< the worker's life, see system/Worker.h (fills padding; atomic access)
    U16 mWorkBytes;                     ///< bytes of the work buffer that may not be 0 (fills padding)
    U64 m_u64NanoSecPerFrame;           ///< frame duration for frame-based formats, nanoseconds
    SubtitleFileProcess* pFileProcess;  ///< the file source; owned by the concrete parser
    U8 m_u8TimeStampTagSizeCase;        ///< format-specific
};

/// Orders two tag records by start time: the first's minus the second's as a signed 32-bit value, for `qsort`.
VXSUBTITLE_API int Compare(const void* a, const void* b);

/// Swaps the bytes of each 16-bit unit among `len` bytes in place; an odd last byte stays.
VXSUBTITLE_API void ChangeUnicodeBigToUnicode(U8* buf, U32 len);

}  // namespace android
