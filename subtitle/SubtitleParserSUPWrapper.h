/// SUP bitmap subtitles, which a plug-in library decodes: a parser that passes the player's calls on to the plug-in's.
#pragma once

#include <utils/Mutex.h>

#include "subtitle/SubtitleParser.h"

namespace android {

class SubtitleParserSUP;  // the plug-in's class: known by name alone, called as a `SubtitleParser`

/// Loads "/system/lib/libvxsubtitlesup.so" when constructed and asks its `android::GetInstance(char*)` for a parser
/// object, which the plug-in keeps owning. Without the plug-in every call has a neutral answer: `BeginParse` returns
/// `FALSE`, like every other truth value; counts are 0; `GetTag` and `GetData` return 0x80000000.
///
/// Calls are passed on by their place in the virtual table, on the caller's thread and without a lock. Operations
/// that are not listed here are the base's and do not reach the plug-in.
class VXSUBTITLE_API SubtitleParserSUPWrapper : public SubtitleParser {
public:
    /// Loads the plug-in and hands it `path`.
    explicit SubtitleParserSUPWrapper(char* path);

    /// The plug-in's entry point gets `fd`, `offset` and `length` in place of the path.
    SubtitleParserSUPWrapper(int fd, S64 offset, S64 length);

    /// Closes the plug-in library; its parser object is not destroyed.
    ~SubtitleParserSUPWrapper() override;

    using SubtitleParser::GetData;

    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 tag, stSubDecoderInfo* info) override;
    BOOL BeginParse() override;
    BOOL BeginParse(int);  ///< `BeginParse()`; the number does not count
    U32 GetTag(const U32 track, const U32 timeMs) override;
    BOOL GetTagInfo(U32 track, U32 tag, ST_MEDIA_SUBTITLE_PARSER_TAG* info) override;
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override;
    U32 GetTagNum() override;
    BOOL Refresh() override;
    void SetIGraphicBufferProducer(const sp<IGraphicBufferProducer>& producer) override;

    /// Part of every parser's face; there is no worker here, so both do nothing. Always null.
    static void* ParserTask(void* parser);
    void ParserThread();

    Mutex mLock;               ///< taken by no operation
    SubtitleParserSUP* mImpl;  ///< the plug-in's parser, or null; owned by the plug-in
    void* mSupHandle;          ///< the loaded plug-in library, or null
};

}  // namespace android
