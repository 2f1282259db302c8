/// A subtitle file behind the library's interface, held as the media player holds it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Decoder.h"
#include "Formats.h"
#include "Native.h"

namespace android {
class SubtitleParserSUBIDX;
}

namespace vxsub {

/// What the user says about a file.
struct OpenOptions {
    std::string path;
    const Format* format = nullptr;         ///< null: as the extension says
    const NativeCharset* native = nullptr;  ///< null: guess
    std::string language;                   ///< the television's subtitle language; empty: not set
    bool raw = false;                       ///< texts with all units that the library counted
    std::optional<android::U32> frameRate;  ///< as `SetFrameRate` takes it; nothing: not set
    bool quiet = false;                     ///< no remarks on standard error
    std::optional<android::U32> track;      ///< nothing: the first, or all where all are shown
};

/// When an entry is shown, in milliseconds of play time: from `start` until just before `end`.
struct Entry {
    /// The end of an entry that has none of its own: it is shown until the next one starts.
    static constexpr android::U32 kOpenEnd = 0xFFFFFFFF;

    android::U32 start, end;
    bool covers(android::U32 ms) const { return start <= ms && ms < end; }
    bool isOpen() const { return end == kOpenEnd; }
};

/// "00:00:01,000 --> 00:00:02,500", or "00:00:01,000 --> the next".
std::string formatSpan(const Entry& entry);

/// A language's entries: those from `first` until just before `end`.
struct Track {
    android::EN_MEDIA_SUBTITLE_PARSER_LANGUAGE language;
    android::U32 first, end;
};

/// Where a picture stands on its frame, in pixels.
using PictureArea = android::stSubDecoderInfo;

/// Runs a parser through the player's calling order: construct and `BeginParse` here, queries in between,
/// `StopParse`, `Deinit` and destruction at the end.
class SubtitleFile {
public:
    /// Throws `FileError` when the file cannot be opened, is no regular file, has an unknown extension, is refused
    /// by the parser or has no such track. Complains about what is to be known of the file all the same.
    explicit SubtitleFile(const OpenOptions& options);
    ~SubtitleFile();
    SubtitleFile(const SubtitleFile&) = delete;
    SubtitleFile& operator=(const SubtitleFile&) = delete;

    const std::string& path() const { return mSource.path; }
    android::S64 length() const { return mSource.length; }
    double openMilliseconds() const { return mOpenMilliseconds; }
    android::EN_MEDIA_SUBTITLE_PARSER_TYPE type() const { return mTrackInfo.eSubtitleType; }
    android::EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType() const { return mTrackInfo.eCodeType; }
    std::string encoding() const;  ///< for people

    /// Whether the entries' times are others at another frame rate than the one that was set.
    bool followsFrameRate();

    android::U32 count() const { return mCount; }
    Entry entry(android::U32 index);

    /// One behind the other in the order of the entries, and all of them; a text file has one.
    const std::vector<Track>& tracks() const { return mTracks; }
    android::U32 track() const { return mOptions.track.value_or(0); }  ///< that the queries by play time are about
    android::U32 trackOf(android::U32 index) const;
    std::vector<Entry> trackEntries();  ///< those of that track
    bool isChosen(android::U32 track) const { return !mOptions.track || *mOptions.track == track; }

    /// The entry that the library names for a play time, whether it still runs or not; nothing when there is none.
    std::optional<android::U32> entryBegunAt(android::U32 ms);

    /// The entry that a television shows at a play time: the one that the library names, unless the time lies
    /// outside it.
    std::optional<android::U32> entryShownAt(android::U32 ms);

    bool hasPictures() const { return mFormat.content != Content::Text; }

    /// Decodes an entry's picture and draws it where the parser was told to draw; nothing when there is none.
    std::optional<PictureArea> picture(android::U32 index);

    /// Where pictures are drawn from now on; an empty reference: nowhere.
    void drawOn(const android::sp<android::IGraphicBufferProducer>& producer);

    /// What a VobSub index says; null for other files.
    const android::SubtitleParserSUBIDX* vobSub() const;

    /// An entry's text as the library gives it: up to the first 0, or with `raw` all units that it counted.
    Units units(android::U32 index);

    /// An entry for people: its text, or words for its picture.
    std::u32string text(android::U32 index);
    std::u32string text(const Units& units) const;  ///< what is none of a text's letters stands as people read it
    const Decoder& decoder() const { return *mDecoder; }

private:
    class Descriptor;

    void readTracks();

    OpenOptions mOptions;
    SourceFile mSource;
    std::unique_ptr<Descriptor> mDescriptor;  ///< closed after the parser is gone
    const Format& mFormat;
    std::unique_ptr<android::SubtitleParser> mParser;
    android::ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO mTrackInfo;
    std::vector<Track> mTracks;
    bool mHasUtf8Mark = false;
    android::U32 mCount = 0;
    double mOpenMilliseconds = 0;
    std::unique_ptr<Decoder> mDecoder;
    std::vector<android::U8> mBuffer;
};

/// How an entry stands to the others; the library's search for a play time expects starts to ascend.
struct Marks {
    bool sharesStart;      ///< another entry starts at the same time
    bool backInTime;       ///< starts before the entry in front of it
    bool endsBeforeStart;  ///< never shown
};

/// The marks of one track's entries.
std::vector<Marks> marksOf(const std::vector<Entry>& entries);

}  // namespace vxsub
