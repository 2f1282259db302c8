#include "subtitle/SubtitleParserSUBIDX.h"

#include <errno.h>
#include <gui/IGraphicBufferProducer.h>
#include <gui/Surface.h>
#include <stdlib.h>
#include <string.h>
#include <system/window.h>
#include <unistd.h>

#include <new>

#include "subtitle/MPEGSubtitleDecoder.h"
#include "subtitle/parser/TextParser.h"
#include "subtitle/vobsub/Blit.h"
#include "subtitle/vobsub/IndexText.h"
#include "subtitle/system/Log.h"
#include "subtitle/vobsub/ProgramPack.h"
#include "subtitle/vobsub/SurfaceBuffer.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr const char* kTag = nullptr;  // kept: this class logs without a tag

constexpr U32 kBufferSize = 0x10000;  // of the windows on both files
constexpr size_t kZeroGuard = 64;     // behind the raw buffer, for the operations that read through bare pointers
constexpr U32 kTagStep = 8192;
constexpr U32 kBitmapSize = 1920 * 1080;
constexpr U32 kNoPalette = 0xFF000000;  // in entry 0
constexpr U32 kIndexStep = 4096;        // where windows on the index begin
constexpr U32 kSubStep = 16384;         // where windows on the .sub file begin
constexpr U32 kBlockStep = 32768;       // by which a working block exceeds its guess, and grows

constexpr ParseStyle parseStyle(const char* waited) {
    return {kTag, nullptr, nullptr, nullptr, nullptr, nullptr, waited, nullptr, 100000, 100000, true, false};
}

// kept: a parser made from a path reports under the SRT parser's text
constexpr ParseStyle kPathStyle = parseStyle("Zorb_MediaSubtitleParserSRT::BeginParse -> %08x\n");
constexpr ParseStyle kDescriptorStyle = parseStyle("SubtitleParserSUBIDX::BeginParse -> %08x\n");

// kept: a surface that is being cleared reports every step under the text of the first one
constexpr SurfaceMessages kRefreshMessages = {
    "Surface::dequeueBuffer returned error %d",
    "Surface::dequeueBuffer returned error %d",
    "Surface::dequeueBuffer returned error %d",
    "Surface::dequeueBuffer returned error %d",
};
constexpr SurfaceMessages kRenderMessages = {
    "Surface::dequeueBuffer returned error %d",
    "Surface::dequeueBuffer returned error %d",  // kept: the lock's text, too
    "mapper.unlock returned error %d",
    "queueBuffer returned error %d",
};

template <class T>
T* allocate(size_t count, size_t guard = 0) {
    return static_cast<T*>(calloc(1, count * sizeof(T) + guard));
}

/// Fills `buffer` with the bytes from `position` on, and zeros behind the file's end. Answers how many came; none when
/// the position cannot be reached.
U32 readAt(FILE* file, S64 position, U8* buffer) {
    const long offset = static_cast<long>(position);
    const bool there = offset == position && fseek(file, offset, SEEK_SET) == 0;
    const size_t count = there ? fread(buffer, 1, kBufferSize, file) : 0;
    memset(buffer + count, 0, kBufferSize - count);
    return static_cast<U32>(count);
}

S64 sizeOf(FILE* file) {
    fseek(file, 0, SEEK_END);
    return ftell(file);
}

/// A stream on `fd` itself, which it closes one day; a descriptor that can have none is closed at once.
FILE* adopt(int fd) {
    FILE* const stream = fdopen(fd, "rb");
    if (stream == nullptr && errno != EBADF) close(fd);
    return stream;
}

/// The path field with the terminator that a long path leaves out.
struct Path {
    explicit Path(const char (&field)[512]) { memcpy(text, field, sizeof field); }

    /// Replaces the last three characters, whatever they are; what would come to lie before the start is dropped.
    void endInSub() {
        const size_t length = strlen(text);
        for (size_t i = length < 3 ? 3 - length : 0; i < 3; ++i) text[length + i - 3] = "sub"[i];
    }

    char text[513] = {};
};

/// The scan of an index, a window of the file at a time.
class IndexScan {
public:
    explicit IndexScan(SubtitleParserSUBIDX& parser) : mParser(parser) {
        mParser.m_s64RawBufferPosition = 0;
        mParser.m_u32RawBufferDataSize = 0;
    }

    /// False when a tag or a track could not be stored.
    bool run() {
        while (position() < mParser.m_s64DataTotalSize && fillWindow()) {
            // kept: the mark is looked for wherever a window begins at the scan, not only at the file's start
            if (mAt == 0) readByteOrder();
            if (!scanLine()) return false;
        }
        return closeTrack();
    }

private:
    S64 position() const { return mParser.m_s64RawBufferPosition + static_cast<S64>(mAt); }

    /// Moves the window on when little of it is left. False when the file ends before its size.
    bool fillWindow() {
        U32& have = mParser.m_u32RawBufferDataSize;
        const bool toTheEnd = mParser.m_s64RawBufferPosition + have >= mParser.m_s64DataTotalSize;
        if (!toTheEnd && mAt + kIndexStep > have) {
            const size_t behindStep = static_cast<size_t>(position() % kIndexStep);
            mParser.m_s64RawBufferPosition = position() - static_cast<S64>(behindStep);
            have = readAt(mParser.fpIdx, mParser.m_s64RawBufferPosition, mParser.m_pu8RawBuffer);
            mAt = behindStep;
        }
        return mAt < have;
    }

    void readByteOrder() {
        const Mark mark = readMark(window<Bytes>());
        mParser.m_eCodeType = mark.codeType;
        mAt = mark.firstUnit;
        if (mark.codeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE ||
            mark.codeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG) {
            mAt *= sizeof(U16);
        }
    }

    template <class Enc>
    TextView<Enc> window() const {
        return {mParser.m_pu8RawBuffer, mParser.m_u32RawBufferDataSize};
    }

    bool scanLine() {
        if (mParser.m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE) return scanLine(window<Utf16Le>());
        if (mParser.m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG) return scanLine(window<Utf16Be>());
        return scanLine(window<Bytes>());
    }

    /// One line; what its keyword's handling has passed over does not count again, be it the next line's start.
    template <class Enc>
    bool scanLine(const TextView<Enc>& in) {
        size_t i = in.skipSpace(mAt / TextView<Enc>::kWidth);
        const bool stored = handleLine(in, &i);
        mAt = static_cast<size_t>(TextView<Enc>::byteOffset(in.pastLineEnds(in.toLineEnd(i))));
        return stored;
    }

    template <class Enc>
    bool handleLine(const TextView<Enc>& in, size_t* i) {
        constexpr bool kWide = TextView<Enc>::kWidth == 2;
        const IndexText<Enc> line(in, *i, kLongestIndexKeyword);
        if (line.at(0) == '#' || in.at(*i) == 0) return true;
        switch (keywordAt(line)) {
            case IndexKeyword::kTimestamp:
                return readTimestamp(in, i);
            case IndexKeyword::kId:
                return readId(in, i);
            case IndexKeyword::kLangIdx:
                // kept: 16-bit indexes pass over it in silence, and have a text of their own for custom colours
                if (!kWide) VX_LOG(kTag, "we will not use these informations\n");
                break;
            case IndexKeyword::kDelay:
                readDelay(in, i);
                break;
            case IndexKeyword::kPalette:
                readPalette(in, i);
                break;
            case IndexKeyword::kSize:
                readPair(in, i, 5, "%ux%u", &mParser.m_u32Width, &mParser.m_u32Height);
                break;
            case IndexKeyword::kOrg:
                readPair(in, i, 4, "%u, %u", &mParser.m_u32OriginX, &mParser.m_u32OriginY);
                break;
            case IndexKeyword::kCustomColors:
                VX_LOG(kTag, "%s",
                       kWide ? "now we will not use these informations\n" : "we will not use these informations\n");
                break;
            case IndexKeyword::kNone:
                VX_LOG(kTag, "unkonwn case,we will not handle\n");
                break;
        }
        return true;
    }

    // "timestamp: 00:01:47:250, filepos: 000001800". White space that is skipped may be a line end.
    // kept: of 16-bit text no more than 13 units are read for the time, and 14 for the position
    template <class Enc>
    bool readTimestamp(const TextView<Enc>& in, size_t* i) {
        *i = in.skipSpace(*i + 10);
        U32 t[4];
        if (!scanAll(IndexText<Enc>(in, *i, 13), 0, "%u:%u:%u:%u", t)) return true;
        *i = in.skipSpace(*i + 13);  // kept: a time counts as twelve characters and a comma, however it is written
        if (!startsWith(IndexText<Enc>(in, *i, 12), "filepos:")) return true;
        *i = in.skipSpace(*i + 10);  // kept: one too many, the first digit of the position is not read
        U32 filePos[1];
        if (!scanAll(IndexText<Enc>(in, *i, 14), 0, "%x", filePos)) return true;
        // kept: 32 bits, so a start before 0 wraps
        const U32 start = static_cast<U32>(mDelayMs) + milliseconds(t[0], t[1], t[2], t[3]);
        return mParser.AddTag(start, 0xFFFFFFFF, filePos[0], E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE) != FALSE;
    }

    // "id: en, index: 0"
    template <class Enc>
    bool readId(const TextView<Enc>& in, size_t* i) {
        *i = in.skipSpace(*i + 3);
        if (!closeTrack()) return false;
        const IndexText<Enc> code(in, *i, 2);
        mLanguage = E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED;
        for (U32 language = 1; language < E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM; ++language) {
            const U8(&known)[2] = SubtitleParserSUBIDX::m_au8LanguageCode[language];
            if (code.at(0) != known[0] || code.at(1) != known[1]) continue;
            mLanguage = static_cast<EN_MEDIA_SUBTITLE_PARSER_LANGUAGE>(language);
            break;
        }
        return true;
    }

    // "delay: -00:00:00:500"
    template <class Enc>
    void readDelay(const TextView<Enc>& in, size_t* i) {
        *i = in.skipSpace(*i + 6);
        const IndexText<Enc> text(in, *i, 14);  // kept: of 16-bit text no more than these units are read
        const bool isSigned = text.at(0) == '-' || text.at(0) == '+';
        int sign = text.at(0) == '-' ? -1 : 1;
        U32 t[4] = {};
        // kept: without a sign there is no delay. A literal takes any character, so '+' needs no format of its own
        if (!isSigned || !scanAll(text, 0, "-%u:%u:%u:%u", t)) {
            sign = 0;
            memset(t, 0, sizeof t);
        }
        mDelayMs = sign * ((S64{3600} * t[0] + S64{60} * t[1] + t[2]) * 1000 + t[3]);
        VX_LOG(kTag, "[SUBIDX] delay:%lld, sign:%d, hh:%u, mm:%u, ss:%u, ms:%u", mDelayMs, sign, t[0], t[1], t[2],
               t[3]);
    }

    // "palette: 000000, ffffff, ..."
    // kept: the entries that were read stay even when there are too few
    template <class Enc>
    void readPalette(const TextView<Enc>& in, size_t* i) {
        *i += 8;
        const char* const format = "%x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x";
        const size_t units = in.toLineEnd(*i) - *i;
        const bool readable = TextView<Enc>::kWidth == 1 || units <= IndexText<Utf16Le>::kMostUnits;
        if (!readable || !scanAll(IndexText<Enc>(in, *i, units), 0, format, mParser.m_au32Palette)) {
            mParser.m_au32Palette[0] = kNoPalette;
        }
    }

    // "size: 720x576", "org: 0, 0"
    template <class Enc>
    void readPair(const TextView<Enc>& in, size_t* i, size_t keyword, const char* format, U32* first, U32* second) {
        *i += keyword;
        size_t units = 0;
        if (TextView<Enc>::kWidth == 2) {
            *i = in.skipSpace(*i);
            // kept: 16-bit text ends at the next blank, so "org: 8, 16" has one number only
            while (units <= IndexText<Utf16Le>::kMostUnits && in.inside(*i + units) && !isSpace(in.at(*i + units)))
                ++units;
        }
        U32 pair[2];
        const bool readable = units <= IndexText<Utf16Le>::kMostUnits;
        if (!readable || !scanAll(IndexText<Enc>(in, *i, units), 0, format, pair)) pair[0] = pair[1] = 0;
        *first = pair[0];
        *second = pair[1];
    }

    /// Ends the track of the tags since the last one, if there are any. False when it could not be stored.
    bool closeTrack() {
        const U32 count = mParser.m_u32TagNum;
        if (count <= mTrackStart) return true;  // kept: a language without a picture is no track
        try {
            mParser.m_vPrivateTrackInfo.push_back({mLanguage, mTrackStart, count - 1});
        } catch (const std::bad_alloc&) {
            return false;
        }
        mTrackStart = count;
        return true;
    }

    SubtitleParserSUBIDX& mParser;
    size_t mAt = 0;  // scan position in the window, bytes
    S64 mDelayMs = 0;
    EN_MEDIA_SUBTITLE_PARSER_LANGUAGE mLanguage = E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED;
    U32 mTrackStart = 0;
};

/// The data of one unit, put together from its packs: the one allocation that a subpicture takes.
class WorkingBlock {
public:
    explicit WorkingBlock(S64 capacity) : mCapacity(capacity) {
        if (capacity >= 0 && static_cast<U64>(capacity) <= static_cast<size_t>(-1)) {
            mBytes = static_cast<U8*>(malloc(capacity != 0 ? static_cast<size_t>(capacity) : 1));
        }
    }
    WorkingBlock(const WorkingBlock&) = delete;
    WorkingBlock& operator=(const WorkingBlock&) = delete;
    ~WorkingBlock() { free(mBytes); }

    bool exists() const { return mBytes != nullptr; }
    U8* bytes() const { return mBytes; }
    U32 size() const { return mSize; }

    /// Appends `size` bytes of which `available` lie at `bytes`; the rest are zeros. False without memory.
    bool append(const U8* bytes, size_t available, U16 size) {
        if (!reserve(S64{mSize} + size)) return false;
        const size_t copied = size < available ? size : available;
        if (copied != 0) memcpy(mBytes + mSize, bytes, copied);
        memset(mBytes + mSize + copied, 0, size - copied);
        mSize += size;
        return true;
    }

private:
    /// Keeps the capacity above `size`, in steps.
    bool reserve(S64 size) {
        S64 capacity = mCapacity;
        while (size >= capacity) capacity += kBlockStep;
        if (capacity == mCapacity) return true;
        U8* const grown = static_cast<U8*>(realloc(mBytes, static_cast<size_t>(capacity)));
        if (grown == nullptr) return false;
        mBytes = grown;
        mCapacity = capacity;
        return true;
    }

    U8* mBytes = nullptr;
    S64 mCapacity;
    U32 mSize = 0;
};

/// Reads units out of the .sub file, through the window that the subtitle buffer holds.
class UnitReader {
public:
    explicit UnitReader(SubtitleParserSUBIDX& parser) : mParser(parser) {}

    /// A guess at the unit's size, from the positions in the index. Negative where these descend.
    S64 blockSize(U32 index) const {
        const bool last = index + 1 >= mParser.m_u32TagNum;
        if (!last) return guess(index);
        return mParser.m_u32TagNum >= 3 ? guess(0) : 0x80000;  // kept: the last is sized by the first
    }

    /// Gathers the unit of tag `index`. False when it is not there, or not whole.
    bool gather(U32 index, WorkingBlock& block) {
        const S64 position = positionOf(index);
        moveWindowTo(position);
        size_t pack = offsetInWindow(position);
        if (window().at(pack) != 0) return false;
        for (U32 unitSize = 0;;) {
            PackPayload payload;
            if (!readPack(window(), pack, &payload)) return false;
            if (unitSize == 0) {
                unitSize = U32{window().at(payload.offset)} << 8 | window().at(payload.offset + 1);
                if (unitSize == 0) return false;
                makeRoomFor(unitSize, &payload);
            }
            if (!take(payload, block)) return false;
            if (block.size() >= unitSize) return true;
            pack = payload.offset + payload.size;
            if (pack % kPackSize != 0 || window().at(pack) != 0) return false;
        }
    }

private:
    S64 positionOf(U32 index) const {
        return index < mParser.m_u32TagBufferNum ? mParser.m_pTagBuffer[index].s64Pos : 0;
    }

    /// A size for the unit between a tag's position and the next tag's.
    S64 guess(U32 index) const {
        return static_cast<S64>(static_cast<U64>(positionOf(index + 1)) - static_cast<U64>(positionOf(index)) +
                                kBlockStep);
    }

    TextView<Bytes> window() const {
        const U32 size = mParser.m_u32SubtitleBufferDataSize;
        return {mParser.m_pu8SubtitleBuffer, size < kBufferSize ? size : kBufferSize};
    }

    /// A position outside the window counts as right behind it: everything there reads 0.
    size_t offsetInWindow(S64 position) const {
        const U64 offset = static_cast<U64>(position) - static_cast<U64>(mParser.m_s64SubtitleBufferPosition);
        return offset < kBufferSize ? static_cast<size_t>(offset) : kBufferSize;
    }

    bool take(const PackPayload& payload, WorkingBlock& block) const {
        const size_t end = window().end();
        const size_t offset = payload.offset < end ? payload.offset : end;
        return block.append(mParser.m_pu8SubtitleBuffer + offset, end - offset, payload.size);
    }

    void moveWindowTo(S64 position) {
        const S64 start = mParser.m_s64SubtitleBufferPosition;
        const S64 end = start + mParser.m_u32SubtitleBufferDataSize;
        const bool near = position >= start && position <= end && end - position >= S64{kSubStep};
        if (mParser.m_s64DataTotalSizeSub >= end && !near) fillWindow(position);
    }

    /// Moves the window on, so that a unit that begins in it lies in it whole.
    void makeRoomFor(U32 unitSize, PackPayload* payload) {
        const S64 rounded = (S64{unitSize} + kPackSize - 1) / kPackSize * kPackSize;
        const S64 offset = static_cast<S64>(payload->offset);
        // kept: the fill count compared is that of the index's window, not of this one
        if (rounded <= S64{mParser.m_u32RawBufferDataSize} - offset) return;
        fillWindow(mParser.m_s64SubtitleBufferPosition + offset);
        payload->offset %= kSubStep;
    }

    void fillWindow(S64 position) {
        const S64 start = position - position % kSubStep;
        mParser.m_u32SubtitleBufferDataSize = readAt(mParser.fpSub, start, mParser.m_pu8SubtitleBuffer);
        mParser.m_s64SubtitleBufferPosition = start;
    }

    SubtitleParserSUBIDX& mParser;
};

/// Allocates the tables and windows, in this order. False without memory; those before stay.
bool allocateBuffers(SubtitleParserSUBIDX& parser) {
    parser.m_u32TagBufferNum = kTagStep;
    parser.m_pTagBuffer = allocate<ST_MEDIA_SUBTITLE_PARSER_TAG>(kTagStep);
    if (parser.m_pTagBuffer == nullptr) return false;
    parser.m_pu8SubtitleBuffer = allocate<U8>(kBufferSize);
    if (parser.m_pu8SubtitleBuffer == nullptr) return false;
    parser.m_u32SubtitleBufferSize = kBufferSize;
    parser.m_pu8RawBuffer = allocate<U8>(kBufferSize, kZeroGuard);
    if (parser.m_pu8RawBuffer == nullptr) return false;
    parser.m_u32RawBufferSize = kBufferSize;
    parser.mRawBufferLimit = kBufferSize;
    return true;
}

/// Closes what an earlier `BeginParse` opened, when its worker no longer reads it.
void closeFiles(SubtitleParserSUBIDX& parser) {
    joinWorkerOf(parser);
    for (FILE** const file : {&parser.fpIdx, &parser.fpSub}) {
        if (*file != nullptr) fclose(*file);
        *file = nullptr;
    }
}

/// What both ways to open the files go on with.
BOOL parseOpenFiles(SubtitleParserSUBIDX& parser, const ParseStyle& style) {
    parser.m_s64DataTotalSize = sizeOf(parser.fpIdx);
    parser.m_s64DataTotalSizeSub = sizeOf(parser.fpSub);
    if (!mayStart(parser, style)) return FALSE;  // kept: in silence, and both files stay open
    parser.m_au32Palette_result[0] = kNoPalette;
    parser.m_au32Palette[0] = kNoPalette;
    parser.m_vPrivateTrackInfo.clear();
    return runWorker(parser, style);
}

}  // namespace

// kept: German is "ge" and Hebrew "iw"; Danish and Hindi have no letters and are never found
const U8 SubtitleParserSUBIDX::m_au8LanguageCode[25][2] = {
    {'n', 'a'}, {'g', 'e'}, {'e', 'n'}, {'e', 's'}, {'e', 'l'}, {'f', 'r'}, {'s', 'h'}, {'i', 't'}, {'n', 'l'},
    {'p', 'l'}, {'p', 't'}, {'r', 'u'}, {'r', 'o'}, {'s', 'v'}, {'a', 'r'}, {'z', 'h'}, {'j', 'a'}, {'k', 'o'},
    {'f', 'a'}, {'f', 'i'}, {'n', 'o'}, {'i', 'w'}, {'b', 'g'}, {0, 0},     {0, 0},
};

SubtitleParserSUBIDX::SubtitleParserSUBIDX(char* path) : SubtitleParserSUBIDX(-1, -1, 0, 0) {
    // kept: 512 bytes and more leave no terminator
    if (path != nullptr) memcpy(m_pSubtitleName, path, strnlen(path, sizeof m_pSubtitleName));
}

SubtitleParserSUBIDX::SubtitleParserSUBIDX(int, int, S64, S64)
    : m_pDecoder(new (std::nothrow) MPEGSubtitleDecoder),
      m_au32Palette(),
      m_au32Palette_result(),
      m_u32OriginX(0),
      m_u32OriginY(0),
      m_u32Width(0),
      m_u32Height(0),
      fpIdx(nullptr),
      fpSub(nullptr),
      m_s64DataTotalSizeSub(0),
      m_u32RawBufferSize(0),
      m_u32SubtitleBufferSize(0),
      m_buffer(nullptr),
      m_pSubtitleName() {
    m_au32Palette[0] = kNoPalette;
    m_au32Palette_result[0] = kNoPalette;
    m_buffer = allocate<U8>(kBitmapSize);
    if (m_buffer != nullptr) allocateBuffers(*this);
}

SubtitleParserSUBIDX::~SubtitleParserSUBIDX() {
    joinWorkerOf(*this);
    SubtitleParserSUBIDX::Refresh();
    delete m_pDecoder;
    closeFiles(*this);
    m_NativeWindow = nullptr;
    free(m_buffer);
}

BOOL SubtitleParserSUBIDX::Init(U64 size) {
    Deinit();
    m_u32TagNum = 0;
    m_s64DataTotalSize = static_cast<S64>(size);
    m_u32RawBufferDataSize = 0;
    m_u32SubtitleBufferDataSize = 0;
    m_s64SubtitleBufferPosition = 0;
    if (allocateBuffers(*this)) return TRUE;
    Deinit();
    return FALSE;
}

BOOL SubtitleParserSUBIDX::BeginParse() {
    closeFiles(*this);
    const auto open = [](const Path& path) {
        FILE* const file = fopen(path.text, "rb");
        if (file == nullptr) VX_LOG(kTag, "SubtitleParserSUBIDX could not open subtitle file:%s\n", path.text);
        return file;
    };
    Path path(m_pSubtitleName);
    fpIdx = open(path);
    if (fpIdx == nullptr) return FALSE;
    path.endInSub();
    fpSub = open(path);
    if (fpSub == nullptr) return FALSE;
    return parseOpenFiles(*this, kPathStyle);
}

BOOL SubtitleParserSUBIDX::BeginParse(int idxFd, int subFd) {
    closeFiles(*this);
    // One descriptor for both would be closed twice.
    const int subOwn = subFd == idxFd ? dup(subFd) : subFd;
    fpIdx = adopt(idxFd);
    fpSub = adopt(subOwn);
    if (fpIdx == nullptr || fpSub == nullptr) {
        VX_LOG(kTag, "SubtitleParserSUBIDX could not open subtitle file\n");
        return FALSE;
    }
    return parseOpenFiles(*this, kDescriptorStyle);
}

void* SubtitleParserSUBIDX::ParserTask(void* parser) {
    static_cast<SubtitleParserSUBIDX*>(parser)->ParserThread();
    return nullptr;
}

void SubtitleParserSUBIDX::ParserThread() {
    if (fpIdx == nullptr || m_pu8RawBuffer == nullptr) return;
    // kept: without the flag `BeginParse` fails, when its limit has passed
    if (IndexScan(*this).run()) raise(bParseFinish);
}

U32 SubtitleParserSUBIDX::GetData(const U32, U8*, const U32, const U32 index, stSubDecoderInfo* info) {
    if (index >= m_u32TagNum || m_buffer == nullptr || m_pu8SubtitleBuffer == nullptr || m_pTagBuffer == nullptr ||
        m_pDecoder == nullptr || fpSub == nullptr) {
        return 0;
    }
    memset(m_buffer, 0, kBitmapSize);
    UnitReader reader(*this);
    WorkingBlock block(reader.blockSize(index));
    if (!block.exists() || !reader.gather(index, block)) return 0;

    m_pDecoder->Set_VobSub_Palette(m_au32Palette, 16);
    RGBPaletteColor colours[4];
    memset(colours, 0xFF, sizeof colours);
    U8 transparent = 0;
    stSubDecoderInfo decoded = {};
    if (m_pDecoder->DecodeUnit(block.bytes(), block.size(), m_buffer, kBitmapSize, &transparent, colours, &decoded) !=
        TRUE) {
        return 0;
    }
    if (info != nullptr) *info = decoded;
    memcpy(m_au32Palette_result, colours, sizeof colours);
    m_au32Palette_result[m_buffer[0] & 3] = 0;  // kept: the colour of the top-left pixel counts as background
    _render(m_buffer, decoded.u16Width, decoded.u16Height);  // kept: a drawing that fails goes unnoticed here
    return block.size();
}

U32 SubtitleParserSUBIDX::GetTag(const U32 track, const U32 timeMs) {
    if (m_vPrivateTrackInfo.empty() || m_u32TagNum == 0 || m_pTagBuffer == nullptr) return 0;
    const ST_MEDIA_SUBTITLE_PARSER_SUBIDX_PRIVATE_TRACK_INFO& range = m_vPrivateTrackInfo.at(track);
    // kept: the offset is subtracted only from times that are not below it, compared as signed values
    const U32 t = static_cast<S32>(timeMs) < m_s32TimeOffsetMs ? timeMs : timeMs - static_cast<U32>(m_s32TimeOffsetMs);
    const auto start = [this](S32 i) {
        return static_cast<U32>(i) < m_u32TagBufferNum ? m_pTagBuffer[i].u32TimeStart : 0;
    };
    const S32 last = static_cast<S32>(range.u32TagEnd);
    S32 lo = static_cast<S32>(range.u32TagStart);
    S32 hi = last + 1;
    for (;;) {
        const S32 mid = lo + (hi - lo) / 2;
        if (t < start(mid)) {
            if (S64{lo} + hi < 2) return 0;
            hi = mid - 1;
            // kept: before the track's first tag this looks at the last tag of the track before
            if (start(hi) <= t) return static_cast<U32>(hi);
            if (mid <= lo) return 0;  // kept: 0 is a tag of the first track, and means none, too
        } else {
            if (mid >= last) return static_cast<U32>(mid);
            lo = mid + 1;
            if (t < start(lo)) return static_cast<U32>(mid);
            if (hi <= mid) return 0;
        }
    }
}

BOOL SubtitleParserSUBIDX::GetTrackInfo(const U32 index, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    if (info == nullptr) return FALSE;
    info->eLanguage = index < m_vPrivateTrackInfo.size() ? m_vPrivateTrackInfo[index].eLanguage
                                                         : E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED;
    info->eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_SUBIDX;
    info->eCodeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I2;
    memcpy(info->au32Palette, m_au32Palette_result, sizeof m_au32Palette_result);  // kept: the other 240 stay
    info->u32OriginX = m_u32OriginX;
    info->u32OriginY = m_u32OriginY;
    info->u32Width = m_u32Width;
    info->u32Height = m_u32Height;
    return TRUE;
}

BOOL SubtitleParserSUBIDX::GetSubtitleInfo(ST_MEDIA_SUBTITLE_PARSER_INFO* info) {
    if (info == nullptr) return FALSE;
    info->eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_SUBIDX;
    info->u32TrackNum = static_cast<U32>(m_vPrivateTrackInfo.size());
    return TRUE;
}

BOOL SubtitleParserSUBIDX::QueryBufferSize(ST_MEDIA_SUBTITLE_PARSER_BUFFER_SIZE* size) {
    if (size != nullptr) {
        size->u32RawBufferSize = kBufferSize;
        size->u32SubtitleBufferSize = kBufferSize;
    }
    return TRUE;
}

void SubtitleParserSUBIDX::SetIGraphicBufferProducer(const sp<IGraphicBufferProducer>& producer) {
    if (producer == nullptr) {
        m_NativeWindow = nullptr;
        return;
    }
    m_NativeWindow = new Surface(producer, false);
    native_window_set_usage(m_NativeWindow.get(), GRALLOC_USAGE_SW_WRITE_OFTEN);
}

BOOL SubtitleParserSUBIDX::Refresh() {
    const Mutex::Autolock lock(mLock);
    if (m_NativeWindow == nullptr) return TRUE;
    return paintBuffer(m_NativeWindow.get(), kRefreshMessages, [](const Canvas&) {}) ? TRUE : FALSE;
}

BOOL SubtitleParserSUBIDX::_render(const U8* bitmap, U16 width, U16 height) {
    if (m_NativeWindow == nullptr) return TRUE;
    // The parser's own bitmap has this many bytes, whatever the size; a caller vouches for his.
    const size_t bytes = bitmap == m_buffer ? kBitmapSize : size_t{width} * height;
    const CodeBitmap codes = {bitmap, bitmap != nullptr ? bytes : 0, width, height};
    U32 pixelValues[256] = {};
    for (U32 code = 0; code < 16; ++code) pixelValues[code] = pixelOf(m_au32Palette_result[code]);
    const auto paint = [&](const Canvas& canvas) {
        const Placement placement = placementFor(m_u32Width, m_u32Height, canvas);
        if (!placement.available) VX_LOG(kTag, "the surface is unavaliable");
        draw(canvas, placement, codes, pixelValues);
    };
    return paintBuffer(m_NativeWindow.get(), kRenderMessages, paint) ? TRUE : FALSE;
}

}  // namespace android
