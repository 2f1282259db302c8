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
    CharsetRef native;                      ///< null: guess
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

/// Where a text file's times come from that counts frames.
enum class RateFrom {
    File,     ///< its first line names it
    Player,   ///< set by `OpenOptions::frameRate`
    Library,  ///< its own, as nobody names one
    None,     ///< none was read: all times are 0
};

struct FrameRate {
    android::U32 thousandths;  ///< of a frame in a second
    RateFrom from;
};

/// Where a picture says that it stands on its frame, in pixels.
using PictureArea = android::stSubDecoderInfo;

/// Runs a parser through the player's calling order: construct and `BeginParse` here, queries in between,
/// `StopParse`, `Deinit` and destruction at the end.
class SubtitleFile {
public:
    /// Throws `FileError` when the file cannot be opened, is no regular file, has an unknown extension, is refused
    /// by the parser, has no such track, or is no subtitle file and has no entries, either. Complains about what is to
    /// be known of the file all the same.
    explicit SubtitleFile(const OpenOptions& options);
    ~SubtitleFile();
    SubtitleFile(const SubtitleFile&) = delete;
    SubtitleFile& operator=(const SubtitleFile&) = delete;

    const OpenOptions& options() const { return mOptions; }
    const std::string& path() const { return mSource.path; }
    android::S64 length() const { return mSource.length; }
    std::string bytes() const;  ///< all of them
    double openMilliseconds() const { return mOpenMilliseconds; }
    android::EN_MEDIA_SUBTITLE_PARSER_TYPE type() const { return mTrackInfo.eSubtitleType; }
    android::EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType() const { return mTrackInfo.eCodeType; }
    std::string encoding() const;  ///< for people

    /// Whether the entries' times are others at another frame rate than the one that was set.
    bool followsFrameRate();

    /// Of MicroDVD, the rate that its times were reckoned with; nothing for other formats.
    std::optional<FrameRate> frameRate();

    android::U32 count() const { return mCount; }
    Entry entry(android::U32 index);

    /// Where an entry's text, or picture, begins in the file, or in the pictures' file.
    android::S64 position(android::U32 index) const;

    /// One behind the other in the order of the entries, and all of them; a text file has one.
    const std::vector<Track>& tracks() const { return mTracks; }
    android::U32 track() const { return mOptions.track.value_or(0); }  ///< that the queries by play time are about
    void chooseTrack(android::U32 track) { mOptions.track = track; }
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
    Units units(android::U32 index) { return units(index, mOptions.raw); }
    Units units(android::U32 index, bool raw);

    /// An entry's text as the player gets it.
    std::u32string text(android::U32 index) { return decoder().decode(units(index)); }
    const Decoder& decoder();

private:
    class Descriptor;

    void readTracks();
    void requireSubtitles() const;
    const android::SubtitleParser& dialect() const;

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
    std::unique_ptr<Decoder> mDecoder;  ///< made when it is asked for: a guess takes time
    std::vector<android::U8> mBuffer;
};

/// How an entry stands to the others; the library's search for a play time expects starts to ascend.
struct Marks {
    bool sharesStart;      ///< another entry starts at the same time
    bool backInTime;       ///< starts before the entry in front of it
    bool endsBeforeStart;  ///< never shown
    bool lastsNoTime;      ///< ends when it starts: never shown
    bool isCutShort;       ///< another entry starts before it ends, and hides it from then on
};

/// What each of them is called.
struct MarkKind {
    bool Marks::*isSet;
    char letter;          ///< in a list for people
    size_t column;        ///< of the letter; those that no entry has together share one
    const char* word;     ///< for programs
    const char* meaning;  ///< for people
    const char* one;      ///< "1 entry" does this
    const char* many;     ///< "2 entries" do this
};
constexpr size_t kMarkColumns = 3;
extern const MarkKind kMarkKinds[5];

/// The marks of one track's entries.
std::vector<Marks> marksOf(const std::vector<Entry>& entries);

}  // namespace vxsub
