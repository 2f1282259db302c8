/// The scan of a VobSub index, line by line through a window on the file.
#pragma once

#include "subtitle/text/Numbers.h"
#include "subtitle/vobsub/FileWindow.h"

namespace vxsubtitle {

/// What an index says, but for its pictures: where the contract keeps it.
struct IndexValues {
    EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE& codeType;
    U32 (&palette)[16];  ///< 0xRRGGBB each
    U32 &width, &height;
    U32 &originX, &originY;
};

constexpr U32 kNoPalette = 0xFF000000;  ///< in the first entry of a palette: there is none

/// Who takes the pictures and tracks of an index. Each answers false when it could not store one.
class IndexTarget {
public:
    virtual bool addPicture(U32 startMs, U32 filePos) = 0;
    virtual bool addTrack(EN_MEDIA_SUBTITLE_PARSER_LANGUAGE language, U32 firstTag, U32 lastTag) = 0;
    virtual U32 pictureCount() const = 0;

protected:
    ~IndexTarget() = default;
};

/// Two letters for each EN_MEDIA_SUBTITLE_PARSER_LANGUAGE.
using LanguageCodes = U8[E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM][2];

class IndexScan {
public:
    /// `size`: length of the file, bytes.
    IndexScan(const FileWindow& window, S64 size, const IndexValues& values, const LanguageCodes& codes,
              IndexTarget& target, StopRequest stop)
        : mWindow(window), mSize(size), mValues(values), mCodes(codes), mTarget(target), mStop(stop) {
        mWindow.position = 0;
        mWindow.filled = 0;
    }

    /// False when a picture or a track could not be stored, and when it was asked to stop.
    [[nodiscard]] bool run();

private:
    template <class Enc>
    struct Keyword {
        const char* word;
        bool (IndexScan::*handle)(const TextView<Enc>& in, size_t* i, size_t length);
    };

    S64 position() const { return mWindow.position + static_cast<S64>(mAt); }
    bool moveWindow();
    void tellEncoding();
    bool scanLine();

    template <class Enc>
    bool handleLine(const TextView<Enc>& in, size_t* i);

    // The lines, by their keywords: `i` stands on the keyword, of `length` characters, and moves over what was read.
    template <class Enc>
    bool onTimestamp(const TextView<Enc>& in, size_t* i, size_t length);
    template <class Enc>
    bool onId(const TextView<Enc>& in, size_t* i, size_t length);
    template <class Enc>
    bool onDelay(const TextView<Enc>& in, size_t* i, size_t length);
    template <class Enc>
    bool onPalette(const TextView<Enc>& in, size_t* i, size_t length);
    template <class Enc>
    bool onSize(const TextView<Enc>& in, size_t* i, size_t length);
    template <class Enc>
    bool onOrg(const TextView<Enc>& in, size_t* i, size_t length);
    template <class Enc>
    bool onLangIdx(const TextView<Enc>& in, size_t* i, size_t length);
    template <class Enc>
    bool onCustomColors(const TextView<Enc>& in, size_t* i, size_t length);

    bool closeTrack();

    const FileWindow mWindow;
    const S64 mSize;
    const IndexValues mValues;
    const LanguageCodes& mCodes;
    IndexTarget& mTarget;
    const StopRequest mStop;
    size_t mAt = 0;  // scan position in the window, bytes
    S64 mDelayMs = 0;
    EN_MEDIA_SUBTITLE_PARSER_LANGUAGE mLanguage = E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED;
    U32 mTrackStart = 0;
};

}  // namespace vxsubtitle
