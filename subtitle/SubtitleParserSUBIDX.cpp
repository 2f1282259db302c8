#include "subtitle/SubtitleParserSUBIDX.h"

#include <errno.h>
#include <gui/IGraphicBufferProducer.h>
#include <gui/Surface.h>
#include <stdlib.h>
#include <string.h>
#include <system/window.h>
#include <unistd.h>

#include <algorithm>
#include <new>

#include "subtitle/MPEGSubtitleDecoder.h"
#include "subtitle/parser/ParserWorker.h"
#include "subtitle/parser/TagTable.h"
#include "subtitle/system/Descriptor.h"
#include "subtitle/system/Log.h"
#include "subtitle/system/PathField.h"
#include "subtitle/system/ZeroPages.h"
#include "subtitle/text/WorkText.h"
#include "subtitle/vobsub/Blit.h"
#include "subtitle/vobsub/IndexScan.h"
#include "subtitle/vobsub/SurfaceBuffer.h"
#include "subtitle/vobsub/UnitReader.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr const char* kTag = nullptr;  // this class logs without a tag

constexpr size_t kZeroGuard = 64;  // behind the raw buffer, for the operations that read through bare pointers
constexpr U32 kBitmapSize = 1920 * 1080;

// a parser made from a path reports under the SRT parser's words
constexpr WorkerStyle kPathStyle{.waited = "Zorb_MediaSubtitleParserSRT::BeginParse -> %08x\n"};
constexpr WorkerStyle kDescriptorStyle{.waited = "SubtitleParserSUBIDX::BeginParse -> %08x\n"};

// a surface that is being cleared reports every step under the words of the first one
constexpr SurfaceMessages kRefreshMessages = {
    "Surface::dequeueBuffer returned error %d",
    "Surface::dequeueBuffer returned error %d",
    "Surface::dequeueBuffer returned error %d",
    "Surface::dequeueBuffer returned error %d",
};
constexpr SurfaceMessages kRenderMessages = {
    "Surface::dequeueBuffer returned error %d",
    "Surface::dequeueBuffer returned error %d",  // the lock's words, too
    "mapper.unlock returned error %d",
    "queueBuffer returned error %d",
};

template <class T>
T* allocate(size_t count, size_t guard = 0) {
    return static_cast<T*>(calloc(1, count * sizeof(T) + guard));
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

/// Replaces the last three characters, whatever they are; what would come to lie before the start is dropped.
void endInSub(Path& path) {
    const size_t length = strlen(path.text);
    for (size_t i = length < 3 ? 3 - length : 0; i < 3; ++i) path.text[length + i - 3] = "sub"[i];
}

FileWindow indexWindow(SubtitleParserSUBIDX& parser) {
    return {parser.fpIdx, parser.m_pu8RawBuffer, parser.m_u32RawBufferDataSize, parser.m_s64RawBufferPosition};
}

FileWindow streamWindow(SubtitleParserSUBIDX& parser) {
    parser.mWorkBytes = kWorkBufferSize;
    return {parser.fpSub, parser.m_pu8SubtitleBuffer, parser.m_u32SubtitleBufferDataSize,
            parser.m_s64SubtitleBufferPosition};
}

/// Takes an index's pictures as tags, and its tracks.
class Table final : public IndexTarget {
public:
    explicit Table(SubtitleParserSUBIDX& parser) : mParser(parser) {}

    bool addPicture(U32 startMs, U32 filePos) override {
        // kept(vob-end-ignored): a picture has no end here
        return mParser.AddTag(startMs, 0xFFFFFFFF, filePos, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE) != FALSE;
    }
    bool addTrack(EN_MEDIA_SUBTITLE_PARSER_LANGUAGE language, U32 firstTag, U32 lastTag) override {
        try {
            mParser.m_vPrivateTrackInfo.push_back({language, firstTag, lastTag});
        } catch (const std::bad_alloc&) {
            return false;
        }
        return true;
    }
    U32 pictureCount() const override { return mParser.m_u32TagNum; }

private:
    SubtitleParserSUBIDX& mParser;
};

/// A guess at the size of tag `index`'s unit, from the positions in the index.
S64 guessOf(const SubtitleParserSUBIDX& parser, U32 index) {
    const bool last = index + 1 >= parser.m_u32TagNum;
    if (last && parser.m_u32TagNum < 3) return kAnyUnitSize;
    const U32 like = last ? 0 : index;  // kept(vob-descending): the last is sized by the first
    return guessUnitSize(positionOf(parser, like), positionOf(parser, like + 1));
}

/// How much of the bitmap pictures are expected to take, bytes: as much as the last one, or a quarter of the frame.
size_t usualBitmap(const SubtitleParserSUBIDX& parser) {
    const DisplayParam& last = parser.m_pDecoder->m_display_param;
    const U64 usual = std::max(U64{last.u16Width} * last.u16Height, U64{parser.m_u32Width} * parser.m_u32Height / 4);
    return static_cast<size_t>(std::min(usual, U64{kBitmapSize}));
}

/// Allocates the tables and windows, in this order. False without memory; those before stay.
bool allocateBuffers(SubtitleParserSUBIDX& parser) {
    if (!TagTable(parser).allocate()) return false;
    parser.m_pu8SubtitleBuffer = allocate<U8>(kWindowSize);
    if (parser.m_pu8SubtitleBuffer == nullptr) return false;
    parser.m_u32SubtitleBufferSize = kWindowSize;
    parser.m_pu8RawBuffer = allocate<U8>(kWindowSize, kZeroGuard);
    if (parser.m_pu8RawBuffer == nullptr) return false;
    parser.m_u32RawBufferSize = kWindowSize;
    parser.mRawBufferLimit = kWindowSize;
    return true;
}

/// Closes what an earlier `BeginParse` opened, when its worker no longer reads it.
void closeFiles(SubtitleParserSUBIDX& parser) {
    stopWorkerOf(parser);
    for (FILE** const file : {&parser.fpIdx, &parser.fpSub}) {
        if (*file != nullptr) fclose(*file);
        *file = nullptr;
    }
}

/// What both ways to open the files go on with.
BOOL parseOpenFiles(SubtitleParserSUBIDX& parser, const WorkerStyle& style) {
    parser.m_s64DataTotalSize = sizeOf(parser.fpIdx);
    parser.m_s64DataTotalSizeSub = sizeOf(parser.fpSub);
    if (!mayStart(parser, style)) return FALSE;  // in silence, and both files stay open
    parser.m_au32Palette_result[0] = kNoPalette;
    parser.m_au32Palette[0] = kNoPalette;
    parser.m_vPrivateTrackInfo.clear();
    return runWorker(parser, style);
}

/// Draws a bitmap that a caller vouches for, in the colours of `m_au32Palette_result`.
BOOL drawBitmap(SubtitleParserSUBIDX& parser, const CodeBitmap& bitmap) {
    PixelValues values = {};
    for (U32 code = 0; code < 16; ++code) values[code] = pixelOf(parser.m_au32Palette_result[code]);
    const auto paint = [&](const Canvas& canvas) {
        const Placement placement = placementFor(parser.m_u32Width, parser.m_u32Height, canvas);
        draw(canvas, placement, bitmap, values);
        if (!placement.available) VX_LOG(kTag, "the surface is unavaliable");
    };
    return paintBuffer(parser.m_NativeWindow.get(), kRenderMessages, paint) ? TRUE : FALSE;
}

}  // namespace

// kept(vob-language): German is "ge" and Hebrew "iw"; Danish and Hindi have no letters and are never found
const U8 SubtitleParserSUBIDX::m_au8LanguageCode[25][2] = {
    {'n', 'a'}, {'g', 'e'}, {'e', 'n'}, {'e', 's'}, {'e', 'l'}, {'f', 'r'}, {'s', 'h'}, {'i', 't'}, {'n', 'l'},
    {'p', 'l'}, {'p', 't'}, {'r', 'u'}, {'r', 'o'}, {'s', 'v'}, {'a', 'r'}, {'z', 'h'}, {'j', 'a'}, {'k', 'o'},
    {'f', 'a'}, {'f', 'i'}, {'n', 'o'}, {'i', 'w'}, {'b', 'g'}, {0, 0},     {0, 0},
};

SubtitleParserSUBIDX::SubtitleParserSUBIDX(char* path) : SubtitleParserSUBIDX(-1, -1, 0, 0) {
    // kept(file-long-path): 512 bytes and more leave no terminator
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
    stopWorkerOf(*this);
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
        FILE* const file = fopen(path.text, "rbe");
        if (file == nullptr) VX_LOG(kTag, "SubtitleParserSUBIDX could not open subtitle file:%s\n", path.text);
        return file;
    };
    Path path(m_pSubtitleName);
    fpIdx = open(path);
    if (fpIdx == nullptr) return FALSE;
    endInSub(path);  // kept(vob-no-stream): the same name and small letters, or nothing
    fpSub = open(path);
    if (fpSub == nullptr) return FALSE;
    return parseOpenFiles(*this, kPathStyle);
}

BOOL SubtitleParserSUBIDX::BeginParse(int idxFd, int subFd) {
    closeFiles(*this);
    // One descriptor for both would be closed twice.
    const int subOwn = subFd == idxFd ? duplicate(subFd) : subFd;
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
    // kept(worker-fails-late): without the flag `BeginParse` fails, when its limit has passed
    const IndexValues values = {m_eCodeType, m_au32Palette, m_u32Width, m_u32Height, m_u32OriginX, m_u32OriginY};
    Table table(*this);
    IndexScan scan(indexWindow(*this), m_s64DataTotalSize, values, m_au8LanguageCode, table, stopOf(*this));
    if (scan.run()) raiseFlag(bParseFinish);
}

U32 SubtitleParserSUBIDX::GetData(const U32, U8*, const U32, const U32 index, stSubDecoderInfo* info) {
    if (index >= m_u32TagNum || m_buffer == nullptr || m_pu8SubtitleBuffer == nullptr || m_pTagBuffer == nullptr ||
        m_pDecoder == nullptr || fpSub == nullptr) {
        return 0;
    }
    zeroPages(m_buffer, kBitmapSize, usualBitmap(*this));
    WorkingBlock block(guessOf(*this, index));
    UnitReader reader(streamWindow(*this), m_s64DataTotalSizeSub, m_u32RawBufferDataSize);
    if (!block.exists() || !reader.gather(positionOf(*this, index), block)) return 0;

    // kept(vob-no-palette): set in any case, and all black without a palette line
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
    m_au32Palette_result[m_buffer[0] & 3] = 0;  // kept(vob-top-left): the top-left pixel's colour is the background
    const size_t pixels = size_t{decoded.u16Width} * decoded.u16Height;
    if (pixels <= kBitmapSize) {
        // kept(vob-draw-failure): a drawing that fails goes unnoticed here
        _render(m_buffer, decoded.u16Width, decoded.u16Height);
    } else if (U8* const whole = allocate<U8>(pixels)) {  // an area that the bitmap does not hold: the rest is code 0
        memcpy(whole, m_buffer, kBitmapSize);
        _render(whole, decoded.u16Width, decoded.u16Height);
        free(whole);
    }
    return block.size();
}

U32 SubtitleParserSUBIDX::GetTag(const U32 track, const U32 timeMs) {
    if (m_vPrivateTrackInfo.empty() || m_u32TagNum == 0 || m_pTagBuffer == nullptr) return 0;
    const ST_MEDIA_SUBTITLE_PARSER_SUBIDX_PRIVATE_TRACK_INFO& range = m_vPrivateTrackInfo.at(track);
    return lookUpTag(*this, timeMs, range.u32TagStart, range.u32TagEnd);
}

BOOL SubtitleParserSUBIDX::GetTrackInfo(const U32 index, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    if (info == nullptr) return FALSE;
    info->eLanguage = index < m_vPrivateTrackInfo.size() ? m_vPrivateTrackInfo[index].eLanguage
                                                         : E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED;
    info->eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_SUBIDX;
    info->eCodeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I2;
    // kept(vob-track-palette): the other 240 stay
    memcpy(info->au32Palette, m_au32Palette_result, sizeof m_au32Palette_result);
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
        size->u32RawBufferSize = kWindowSize;
        size->u32SubtitleBufferSize = kWindowSize;
    }
    return TRUE;
}

void SubtitleParserSUBIDX::SetIGraphicBufferProducer(const sp<IGraphicBufferProducer>& producer) {
    if (producer == nullptr) {
        m_NativeWindow = nullptr;
        return;
    }
    m_NativeWindow = new (std::nothrow) Surface(producer, false);
    if (m_NativeWindow == nullptr) return;
    native_window_set_usage(m_NativeWindow.get(), GRALLOC_USAGE_SW_WRITE_OFTEN);
}

BOOL SubtitleParserSUBIDX::Refresh() {
    const Mutex::Autolock lock(mLock);
    if (m_NativeWindow == nullptr) return TRUE;
    return paintBuffer(m_NativeWindow.get(), kRefreshMessages, [](const Canvas& canvas) { canvas.clear(); }) ? TRUE
                                                                                                             : FALSE;
}

BOOL SubtitleParserSUBIDX::_render(const U8* bitmap, U16 width, U16 height) {
    if (m_NativeWindow == nullptr) return TRUE;
    return drawBitmap(*this, {bitmap, bitmap != nullptr ? size_t{width} * height : 0, width, height});
}

}  // namespace android
