/// VobSub: an index (.idx) of display times per language track, and a program stream (.sub) of DVD subpictures,
/// which the parser draws itself onto the player's surface.
#pragma once

#include <stdint.h>
#include <stdio.h>
#include <utils/Mutex.h>
#include <utils/StrongPointer.h>

#include <vector>

#include "subtitle/SubtitleParser.h"

struct ANativeWindow;

namespace android {

class MPEGSubtitleDecoder;

/// One track: the range of its tags in the tag table, both ends included.
struct ST_MEDIA_SUBTITLE_PARSER_SUBIDX_PRIVATE_TRACK_INFO {
    EN_MEDIA_SUBTITLE_PARSER_LANGUAGE eLanguage;  ///< UNDEFINED when the index names none that is known
    U32 u32TagStart;                              ///< index of its first tag
    U32 u32TagEnd;                                ///< index of its last tag
};

/// Tags of all tracks stand in one table in file order. A tag's start time has the index's delay added, its end time
/// is 0xFFFFFFFF, its position is that of the subpicture's first pack in the .sub file.
///
/// `BeginParse` returns once the index is scanned; lookups and `GetData` come after it, on the player's thread. Both
/// files stay open until the parser is destroyed.
class VXSUBTITLE_API SubtitleParserSUBIDX : public SubtitleParser {
public:
    /// Keeps up to 512 bytes of the path of the index; `BeginParse()` opens it.
    explicit SubtitleParserSUBIDX(char* path);

    /// For `BeginParse(int, int)`; the arguments are not kept.
    SubtitleParserSUBIDX(int idxFd, int subFd, S64 offset, S64 length);

    /// Stops a worker that still runs and clears the surface.
    ~SubtitleParserSUBIDX() override;

    /// Empties the tables and allocates buffers of the sizes that this format uses; `size` is only noted as the length
    /// of the data. The constructors have allocated already: players need not call it.
    BOOL Init(U64 size) override;

    /// Opens the index and, beside it, the file whose name ends in "sub" instead of the last three characters; scans
    /// the index. A second call opens both anew and returns `FALSE`.
    BOOL BeginParse() override;

    /// The same on open descriptors, read from the files' starts. They belong to the parser from then on, whatever
    /// the result, and are closed with it.
    BOOL BeginParse(int idxFd, int subFd);

    using SubtitleParser::GetData;

    /// Decodes the subpicture of tag `index` and draws it onto the surface, if there is one. `info` (may be null)
    /// receives its size and place. Returns the number of bytes of the unit's data, 0 when it could not be read. The
    /// first three arguments are not used.
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index, stSubDecoderInfo* info) override;

    /// Index of the tag of `track` that began last at `timeMs`. Before the first one: the last tag of the track before
    /// it when that has begun, else 0. A `track` that does not exist raises std::out_of_range.
    U32 GetTag(const U32 track, const U32 timeMs) override;

    /// Fills the language, formats, the first 16 palette entries (the first four: the colours drawn last), origin and
    /// frame size. `FALSE` for a null record.
    BOOL GetTrackInfo(const U32 index, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;

    /// Format and number of tracks. `FALSE` for a null record.
    BOOL GetSubtitleInfo(ST_MEDIA_SUBTITLE_PARSER_INFO* info);

    /// 0x10000 for both buffers. Always `TRUE`.
    BOOL QueryBufferSize(ST_MEDIA_SUBTITLE_PARSER_BUFFER_SIZE* size);

    /// Makes the surface transparent. `TRUE` also without a surface. Thread-safe against itself.
    BOOL Refresh() override;

    /// Draws a bitmap of colour codes, `width` x `height` bytes, in the colours of `m_au32Palette_result`: scaled by
    /// the frame size of the index, centred, at the bottom. `TRUE` also without a surface.
    BOOL _render(const U8* bitmap, U16 width, U16 height) override;

    /// Attaches the surface of `producer`, which the player must have connected; an empty reference detaches. Not
    /// while a subpicture is being drawn.
    void SetIGraphicBufferProducer(const sp<IGraphicBufferProducer>& producer) override;

    /// Thread entry: runs `ParserThread` of the parser that `parser` points to. Always null.
    static void* ParserTask(void* parser);

    /// Scans the open index into the tag table and the tracks; runs on the worker thread.
    void ParserThread();

    MPEGSubtitleDecoder* m_pDecoder;                                                      ///< owned
    std::vector<ST_MEDIA_SUBTITLE_PARSER_SUBIDX_PRIVATE_TRACK_INFO> m_vPrivateTrackInfo;  ///< in file order
    U32 m_au32Palette[16];                     ///< of the index, 0xRRGGBB each; the first 0xFF000000: none
    U32 m_au32Palette_result[16];              ///< first four: the colours of the subpicture decoded last, 0xAARRGGBB
    static const U8 m_au8LanguageCode[25][2];  ///< two letters for each EN_MEDIA_SUBTITLE_PARSER_LANGUAGE
    U32 m_u32OriginX, m_u32OriginY;            ///< of the index, pixels
    U32 m_u32Width, m_u32Height;               ///< frame size of the index, pixels
    FILE* fpIdx;                               ///< owned
    FILE* fpSub;                               ///< owned
    S64 m_s64DataTotalSizeSub;                 ///< length of the .sub file, bytes
    U32 m_u32RawBufferSize;                    ///< capacity of the raw buffer, which holds a window of the index
    U32 m_u32SubtitleBufferSize;               ///< capacity of the subtitle buffer, a window of the .sub file
    sp<ANativeWindow> m_NativeWindow;          ///< the surface; empty when none is attached
    U8* m_buffer;                              ///< the bitmap, 1920 x 1080 bytes; owned
    Mutex mLock;                               ///< held by `Refresh`
    char m_pSubtitleName[512];                 ///< path of the index; without a terminator when it fills the field
};

}  // namespace android
