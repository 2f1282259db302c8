/// What a programmer would write for well-formed files of one format without another thought: no other spelling than
/// the usual one, which is looked at before it is believed, and no encoding but 8-bit. The measure for what the parsers
/// do.
#pragma once

#include <stddef.h>
#include <stdlib.h>

#include "subtitle/SubtitleTypes.h"

namespace bench {

using namespace android;

/// The parser's own record and its way of growing; not cleared.
class Tags {
public:
    Tags() = default;
    ~Tags() { free(mTags); }
    Tags(const Tags&) = delete;
    Tags& operator=(const Tags&) = delete;

    void add(U32 start, U32 end, S64 pos) {
        if (mCount == mCapacity) grow();
        mTags[mCount++] = {start, end, pos, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE};
    }
    size_t count() const { return mCount; }
    const ST_MEDIA_SUBTITLE_PARSER_TAG* begin() const { return mTags; }
    const ST_MEDIA_SUBTITLE_PARSER_TAG* end() const { return mTags + mCount; }
    const ST_MEDIA_SUBTITLE_PARSER_TAG& operator[](size_t i) const { return mTags[i]; }

private:
    __attribute__((noinline)) void grow() {
        mCapacity += 8192;
        void* const grown = realloc(mTags, mCapacity * sizeof *mTags);
        if (grown == nullptr) abort();
        mTags = static_cast<ST_MEDIA_SUBTITLE_PARSER_TAG*>(grown);
    }

    ST_MEDIA_SUBTITLE_PARSER_TAG* mTags = nullptr;
    size_t mCount = 0;
    size_t mCapacity = 0;
};

/// A scan: the tags of the text from `text` up to `end`, where a 0 stands.
using ScanByHand = void (*)(const char* text, const char* end, Tags* tags);

/// The scan of the format with that name in `formats`; null when there is none.
ScanByHand scanByHand(const char* format);

/// The text that begins at `text`, put to `out`, not terminated; answers its end. The next entry's begins at `end`.
using TextByHand = char* (*)(const char* text, const char* end, char* out);

/// The same for texts.
TextByHand textByHand(const char* format);

/// Reads the file whole and scans it, on the calling thread; answers the number of tags, 0 when it cannot be read.
size_t openByHand(const char* path, ScanByHand scan);

/// Size of a decoded subpicture; 0 x 0 for none.
struct PictureSize {
    unsigned width, height;
};

/// Reads the subpicture from `begin` to `end` of a VobSub stream and decodes it into `codes`, a byte a pixel. Up to
/// 16 bytes behind them are written, too.
PictureSize pictureByHand(int fd, S64 begin, S64 end, U8* codes);

}  // namespace bench
