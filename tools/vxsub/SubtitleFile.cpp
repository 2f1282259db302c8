#include "SubtitleFile.h"

#include <android-base/properties.h>
#include <errno.h>
#include <fcntl.h>
#include <gui/IGraphicBufferProducer.h>
#include <string.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string_view>

#include "Errors.h"
#include "Log.h"
#include "Output.h"
#include "Stage.h"
#include "Time.h"
#include "subtitle/SubtitleParserSUB.h"
#include "subtitle/SubtitleParserSUBIDX.h"
#include "tools/meant/Meant.h"
#include "tools/meant/SystemEncodings.h"

namespace vxsub {
namespace {

using namespace android;

constexpr char kLanguageProperty[] = "vendor.quarn.subtitle.language";

/// Twice the parsers' own work buffer, so that no text is cut for the buffer's sake.
constexpr size_t kTextBufferSize = 16384;

/// A byte for each pixel of the largest television, for plug-ins that write their pictures out.
constexpr size_t kPictureBufferSize = 1920 * 1080;

constexpr U32 kNoPicture = 0x80000000;  // a plug-in's answer

constexpr auto kUtf8 = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8;
constexpr auto kNative = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;

/// A television set to Big5 shows 8-bit text as that.
CharsetRef nativeFor(const OpenOptions& options) {
    if (options.native != nullptr || strncasecmp(options.language.c_str(), "big5", 4) != 0) return options.native;
    return findNativeCharset("big5");
}

const char* kindOf(mode_t mode) {
    if (S_ISDIR(mode)) return "is a directory";
    if (S_ISFIFO(mode)) return "is a pipe, not a file on disk";
    return "is not a regular file";
}

/// Says of the file at `fd` what a parser needs to know, and which one is its.
const Format& formatFor(const OpenOptions& options, int fd, SourceFile* source) {
    struct stat status;
    if (fstat(fd, &status) != 0) throw FileError(options.path + ": " + strerror(errno));
    if (!S_ISREG(status.st_mode)) throw FileError(options.path + ": " + kindOf(status.st_mode));
    source->fd = fd;
    source->length = status.st_size;
    if (options.format != nullptr) return *options.format;
    const Format* format = formatOfPath(options.path);
    if (format != nullptr) return *format;
    const std::string_view extension = extensionOf(options.path);
    throw FileError(options.path + ": " +
                    (extension.empty() ? "no extension" : "unknown extension " + std::string(extension)) +
                    "; choose the format with --type (see vxsub --help)");
}

std::string describeRefusal(const Format& format, SubtitleParser& parser, const SourceFile& source) {
    std::string reason = format.refusal == nullptr ? "" : format.refusal(parser, source);
    if (!reason.empty()) return reason;
    const char* more = format.content == Content::Pictures ? "" : "vxsub check says why, ";
    return std::string("the library refuses it as ") + format.name + " (" + more + "--log shows what it says)";
}

/// As far as the player goes before it asks for entries.
bool begin(SubtitleParser& parser, const std::optional<U32>& frameRate) {
    if (frameRate) parser.SetFrameRate(*frameRate);
    return parser.BeginParse() == TRUE;
}

void end(SubtitleParser& parser) {
    parser.StopParse();
    parser.Deinit();
}

bool beginsWithUtf8Mark(int fd) {
    char bytes[3] = {};
    return pread(fd, bytes, sizeof bytes, 0) == ssize_t(sizeof bytes) && memcmp(bytes, "\xEF\xBB\xBF", 3) == 0;
}

}  // namespace

class SubtitleFile::Descriptor {
public:
    explicit Descriptor(const std::string& path) : mFd(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        if (mFd < 0) throw FileError(path + ": " + strerror(errno));
    }
    ~Descriptor() { close(mFd); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return mFd; }

private:
    int mFd;
};

SubtitleFile::SubtitleFile(const OpenOptions& options)
    : mOptions(options),
      mSource{options.path, -1, 0},
      mDescriptor(std::make_unique<Descriptor>(options.path)),
      mFormat(formatFor(options, mDescriptor->get(), &mSource)),
      mTrackInfo(),
      mBuffer(mFormat.content == Content::Text ? kTextBufferSize : kPictureBufferSize) {
    if (!options.language.empty()) base::SetProperty(kLanguageProperty, options.language);
    const std::string remark = mFormat.remark == nullptr ? "" : mFormat.remark(mSource);

    enter(Stage::Scanning);
    const auto start = std::chrono::steady_clock::now();
    mParser = mFormat.construct(mSource);
    const bool parsed = begin(*mParser, options.frameRate);
    mOpenMilliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    if (!parsed) {
        const std::string refusal = describeRefusal(mFormat, *mParser, mSource);
        throw FileError(path() + ": " + refusal + (remark.empty() ? "" : "; " + remark));
    }
    if (!remark.empty() && !options.quiet) complain(path() + ": " + remark);

    mHasUtf8Mark = beginsWithUtf8Mark(mSource.fd);
    readTracks();
    requireSubtitles();
}

const Decoder& SubtitleFile::decoder() {
    if (mDecoder != nullptr) return *mDecoder;
    // The user overrules what the library judged from the bytes, but no mark.
    const bool isOverruled = mOptions.native != nullptr && !mHasUtf8Mark && codeType() == kUtf8;
    mDecoder = std::make_unique<Decoder>(*mParser, isOverruled ? kNative : codeType(), nativeFor(mOptions), bytes());
    return *mDecoder;
}

SubtitleFile::~SubtitleFile() { end(*mParser); }

void SubtitleFile::readTracks() {
    mTrackInfo.eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID;
    mTrackInfo.eCodeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN;
    mParser->GetTrackInfo(track(), &mTrackInfo);
    mCount = mParser->GetTagNum();
    if (const SubtitleParserSUBIDX* index = vobSub())
        for (const auto& range : index->m_vPrivateTrackInfo)
            mTracks.push_back({range.eLanguage, range.u32TagStart, range.u32TagEnd + 1});
    else
        mTracks.push_back({E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED, 0, mCount});
    if (!mOptions.track || *mOptions.track < mTracks.size()) return;
    throw FileError(path() + ": there is no track " + std::to_string(*mOptions.track) + "; " +
                    (mTracks.empty()       ? "it has none"
                     : mTracks.size() == 1 ? "its only one is 0"
                                           : "it has " + std::to_string(mTracks.size()) + ", from 0 to " +
                                                 std::to_string(mTracks.size() - 1)));
}

std::string SubtitleFile::bytes() const {
    std::string bytes(size_t(length()), '\0');
    size_t size = 0;
    for (ssize_t n = 1; size < bytes.size() && n > 0; size += size_t(std::max<ssize_t>(n, 0)))
        n = pread(mSource.fd, &bytes[size], bytes.size() - size, off_t(size));
    bytes.resize(size);
    return bytes;
}

/// Without entries, the format was perhaps only the name's.
void SubtitleFile::requireSubtitles() const {
    const SubtitleParserSUBIDX* index = vobSub();
    const bool saysSomething = index != nullptr && (index->m_u32Width != 0 || index->m_au32Palette[1] != 0);
    if (mCount > 0 || saysSomething) return;
    const meant::File found = meant::read(bytes(), {}, meant::systemEncodings());
    if (found.format != meant::Format::None) return;
    throw FileError(path() + ": is no subtitle file but " + found.nature);
}

std::string SubtitleFile::encoding() const {
    std::string phrase = nameOf(codeType()).phrase;
    if (codeType() != kUtf8) return phrase;
    return phrase +
           (mHasUtf8Mark ? " (byte-order mark)" : ", as the library judged from the bytes (--native overrules)");
}

bool SubtitleFile::followsFrameRate() {
    const HiddenLog hidden;
    const U32 other = mOptions.frameRate == 25u ? 50 : 25;
    const std::unique_ptr<SubtitleParser> parser = mFormat.construct(mSource);
    bool differs = !begin(*parser, other) || parser->GetTagNum() != mCount;
    for (U32 i = 0; i < mCount && !differs; ++i) {
        ST_MEDIA_SUBTITLE_PARSER_TAG tag = {};
        parser->GetTagInfo(track(), i, &tag);
        differs = tag.u32TimeStart != entry(i).start || tag.u32TimeEnd != entry(i).end;
    }
    end(*parser);
    return differs;
}

/// Of .sub files, the parser that was chosen for the dialect.
const SubtitleParser& SubtitleFile::dialect() const {
    const bool isDispatched = std::string_view(mFormat.type) == "sub";
    return isDispatched ? *static_cast<const SubtitleParserSUB&>(*mParser).m_pParser : *mParser;
}

std::optional<FrameRate> SubtitleFile::frameRate() {
    if (type() != E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_MICRO_DVD) return std::nullopt;
    const U64 nanoseconds = dialect().m_u64NanoSecPerFrame;
    if (nanoseconds == 0) return FrameRate{0, RateFrom::None};
    const U32 thousandths = U32((1000000000000 + nanoseconds / 2) / nanoseconds);
    if (!followsFrameRate()) return FrameRate{thousandths, RateFrom::File};
    return FrameRate{thousandths, mOptions.frameRate ? RateFrom::Player : RateFrom::Library};
}

Entry SubtitleFile::entry(U32 index) {
    ST_MEDIA_SUBTITLE_PARSER_TAG tag = {};
    mParser->GetTagInfo(trackOf(index), index, &tag);
    return {tag.u32TimeStart, tag.u32TimeEnd};
}

S64 SubtitleFile::position(U32 index) const {
    const SubtitleParser& parser = dialect();
    return parser.m_pTagBuffer != nullptr && index < parser.m_u32TagBufferNum ? parser.m_pTagBuffer[index].s64Pos : 0;
}

U32 SubtitleFile::trackOf(U32 index) const {
    const auto endsBefore = [](U32 i, const Track& track) { return i < track.end; };
    return U32(std::upper_bound(mTracks.begin(), mTracks.end(), index, endsBefore) - mTracks.begin());
}

std::vector<Entry> SubtitleFile::trackEntries() {
    std::vector<Entry> entries;
    if (track() >= mTracks.size()) return entries;
    for (U32 i = mTracks[track()].first; i < mTracks[track()].end; ++i) entries.push_back(entry(i));
    return entries;
}

std::optional<U32> SubtitleFile::entryBegunAt(U32 ms) {
    const U32 index = mParser->GetTag(track(), ms);
    if (index >= mCount) return std::nullopt;
    return index;
}

std::optional<U32> SubtitleFile::entryShownAt(U32 ms) {
    const std::optional<U32> index = entryBegunAt(ms);
    // Without a current entry the library names the first or the last that ran.
    if (!index || !entry(*index).covers(ms)) return std::nullopt;
    return index;
}

Units SubtitleFile::units(U32 index, bool raw) {
    Units units;
    units.wide = codeType() == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE ||
                 codeType() == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG;
    // One way out of the library's text walk writes no terminator.
    std::fill(mBuffer.begin(), mBuffer.end(), U8(0));
    const size_t counted = mParser->GetData(track(), mBuffer.data(), U32(mBuffer.size()), index);
    const size_t width = units.wide ? 2 : 1;
    const size_t limit = mBuffer.size() / width;
    units.values.reserve(std::min(counted, limit));
    for (size_t i = 0; i < (raw ? std::min(counted, limit) : limit); ++i) {
        const U8* unit = &mBuffer[i * width];
        const U16 value = units.wide ? U16(unit[0] | unit[1] << 8) : U16(unit[0]);
        if (value == 0 && !raw) break;
        units.values.push_back(value);
    }
    return units;
}

std::optional<PictureArea> SubtitleFile::picture(U32 index) {
    PictureArea area = {};
    const U32 size = mParser->GetData(trackOf(index), mBuffer.data(), U32(mBuffer.size()), index, &area);
    if (size == 0 || size == kNoPicture) return std::nullopt;
    return area;
}

void SubtitleFile::drawOn(const sp<IGraphicBufferProducer>& producer) { mParser->SetIGraphicBufferProducer(producer); }

const SubtitleParserSUBIDX* SubtitleFile::vobSub() const {
    if (mFormat.content != Content::VobSub) return nullptr;
    return static_cast<const SubtitleParserSUBIDX*>(mParser.get());
}

std::string formatSpan(const Entry& entry) {
    return formatTime(entry.start) + " --> " + (entry.isOpen() ? "the next" : formatTime(entry.end));
}

const MarkKind kMarkKinds[5] = {
    {&Marks::sharesStart, '=', 0, "shares-start", "shares its start with another entry: the library may name either",
     "shares a start with another", "share a start with another"},
    {&Marks::backInTime, '<', 1, "back-in-time",
     "starts before the entry in front of it: the library expects starts to ascend", "goes back in time",
     "go back in time"},
    {&Marks::endsBeforeStart, '!', 2, "ends-before-start", "ends before it starts: it is never shown",
     "ends before the start", "end before the start"},
    {&Marks::lastsNoTime, '0', 2, "zero-length", "ends when it starts: it is never shown", "ends at the start",
     "end at the start"},
    {&Marks::isCutShort, '~', 2, "overlap", "another entry starts before it ends, and hides it from then on",
     "is hidden by another before the end", "are hidden by another before the end"},
};

std::vector<Marks> marksOf(const std::vector<Entry>& entries) {
    std::vector<U32> starts;
    starts.reserve(entries.size());
    for (const Entry& entry : entries) starts.push_back(entry.start);
    std::sort(starts.begin(), starts.end());
    std::vector<Marks> marks;
    marks.reserve(entries.size());
    for (size_t i = 0; i < entries.size(); ++i) {
        const Entry& entry = entries[i];
        const auto same = std::equal_range(starts.begin(), starts.end(), entry.start);
        const bool isCutShort = !entry.isOpen() && same.second != starts.end() && *same.second < entry.end;
        marks.push_back({same.second - same.first > 1, i > 0 && entry.start < entries[i - 1].start,
                         entry.end < entry.start, entry.end == entry.start, isCutShort});
    }
    return marks;
}

}  // namespace vxsub
