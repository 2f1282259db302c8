#include "subtitle/SubtitleParser.h"

#include <cutils/properties.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <algorithm>

#include "subtitle/charset/Charset.h"
#include "subtitle/parser/EncodingCheck.h"
#include "subtitle/parser/EntryText.h"
#include "subtitle/parser/ParserWorker.h"
#include "subtitle/system/Log.h"
#include "subtitle/system/Wraps.h"
#include "subtitle/text/BaseWalk.h"
#include "subtitle/text/Numbers.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr size_t kZeroGuard = 64;  // zeros behind the data, for the operations that read through bare pointers

/// Zeroed memory for `size` bytes of data and the guard; null when it cannot be had or addressed.
U8* allocateRawBuffer(U64 size) {
    constexpr U64 kLargest = PTRDIFF_MAX;  // what no object exceeds: nobody is asked for more
    if (size > kLargest - kZeroGuard) return nullptr;
    return static_cast<U8*>(calloc(1, static_cast<size_t>(size) + kZeroGuard));
}

template <class T>
void release(T*& memory) {
    free(memory);
    memory = nullptr;
}

/// Whether the player asks for Big5 text, in any letter case.
bool languageIsBig5() {
    char language[PROPERTY_VALUE_MAX] = {};
    property_get("vendor.quarn.subtitle.language", language, "");
    constexpr char kBig5[] = "BIG5";
    return std::equal(kBig5, kBig5 + sizeof kBig5 - 1, language, [](char a, char b) { return a == upperCase(b); });
}

template <class Unit>
BOOL copyInCapitals(const Unit* src, U32 count, Unit* dst) {
    if (src == nullptr || dst == nullptr) return FALSE;
    for (U32 i = 0; i < count; ++i) {
        Unit unit;
        memcpy(&unit, src + i, sizeof unit);
        unit = upperCase(unit);
        memcpy(dst + i, &unit, sizeof unit);
    }
    return TRUE;
}

/// Characters that a caller vouches for.
struct BarePointer {
    const U8* characters;
    U8 at(size_t i) const { return characters[i]; }
};

/// The text of one entry.
struct Extraction {
    const SubtitleParser& parser;
    U8* buf;
    U32 size;
    U32 span;
    bool big5;

    U32 operator()(WorkText<Bytes> in) const {
        return BaseWalk<Bytes>(in, buf, size, span, outputLimit8(size)).run8(big5);
    }
    U32 operator()(WorkText<Utf16Le> in) const {
        // kept(srt-brace-unclosed): the brace bound is the raw byte count, taken as units
        return BaseWalk<Utf16Le>(in, buf, size, span, outputLimit16(size))
            .runLe(units(), parser.m_u32RawBufferDataSize);
    }
    U32 operator()(WorkText<Utf16Be> in) const {
        return BaseWalk<Utf16Be>(in, buf, size, span, outputLimit16(size)).runBe(units());
    }

private:
    /// At most this many units of input: none when the data cannot hold one.
    U32 units() const { return parser.m_u32SubtitleBufferDataSize / 2; }
};

}  // namespace

SubtitleParser::SubtitleParser()
    : m_threadParser(0),
      m_pTagBuffer(nullptr),
      m_eFlag(E_MEDIA_SUBTITLE_PARSER_FLAG_NULL),
      m_pu8SubtitleBuffer(nullptr),
      m_pu8RawBuffer(nullptr),
      m_u32RawBufferDataSize(0),
      mRawBufferLimit(0),
      m_s64RawBufferPosition(0),
      m_u32ParsedPos(0),
      m_u32RawBufferSize(0),
      m_s64DataTotalSize(0),
      m_u32TagNum(0),
      m_u32FrameRrate(0),
      m_u32TagBufferNum(kTagStep),
      m_eCodeType(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN),
      m_eSubtitleType(E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID),
      m_u32SubtitleBufferDataSize(0),
      m_s64SubtitleBufferPosition(0),
      m_s32TimeOffsetMs(0),
      bParseFinish(FALSE),
      mWorkerState(kWorkerNone),
      mWorkBytes(kWorkBufferSize),
      m_u64NanoSecPerFrame(0),
      pFileProcess(nullptr),
      m_u8TimeStampTagSizeCase(0) {}

SubtitleParser::~SubtitleParser() { SubtitleParser::Deinit(); }

BOOL SubtitleParser::Init(U64 size) {
    SubtitleParser::Deinit();  // a worker or buffers of an earlier call
    m_u32TagNum = 0;
    m_u32TagBufferNum = kTagStep;
    m_s64DataTotalSize = static_cast<S64>(size);
    m_u32RawBufferDataSize = static_cast<U32>(size);
    m_pu8RawBuffer = allocateRawBuffer(size);
    if (m_pu8RawBuffer == nullptr) return FALSE;
    m_pu8SubtitleBuffer = TagTable(*this).allocate() ? static_cast<U8*>(malloc(kWorkBufferSize)) : nullptr;
    if (m_pu8SubtitleBuffer == nullptr) {
        SubtitleParser::Deinit();
        return FALSE;
    }
    mRawBufferLimit = size > 0xFFFFFFFF ? 0xFFFFFFFF : static_cast<U32>(size);
    mWorkBytes = kWorkBufferSize;
    return TRUE;
}

BOOL SubtitleParser::Deinit() {
    stopWorkerOf(*this);
    release(m_pu8RawBuffer);
    TagTable(*this).release();
    release(m_pu8SubtitleBuffer);
    mRawBufferLimit = 0;
    return TRUE;
}

U32 SubtitleParser::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    const bool big5 = languageIsBig5();  // kept(property-big5): decided by the device, not by the file
    takeDataSize(*this);
    if (!canExtract(*this, buf, index)) return 0;
    copyEntry(*this, index);
    return walkEntry(*this, kUnicodeOrNative, Extraction{*this, buf, size, spanOf(*this, index), big5});
}

U32 SubtitleParser::GetData(const U32, U8*, const U32, const U32, stSubDecoderInfo*) { return 0; }

BOOL SubtitleParser::BeginParse() { return TRUE; }

BOOL SubtitleParser::StopParse() { return TRUE; }

BOOL SubtitleParser::IsUTF8Encode(const void* data, const U64 length) {
    return isUtf8(static_cast<const U8*>(data), length);
}

U32 SubtitleParser::GetTag(const U32, const U32 timeMs) {
    if (m_pTagBuffer == nullptr || m_u32TagNum == 0) return 0;
    return lookUpTag(*this, timeMs, 0, m_u32TagNum - 1);
}

BOOL SubtitleParser::GetTagInfo(U32, U32 index, ST_MEDIA_SUBTITLE_PARSER_TAG* tag) {
    // kept(tag-behind-count): the bound is the capacity; entries behind the count read as times 0
    if (tag == nullptr || m_pTagBuffer == nullptr || index >= m_u32TagBufferNum) return FALSE;
    tag->u32TimeStart = m_pTagBuffer[index].u32TimeStart;
    tag->u32TimeEnd = m_pTagBuffer[index].u32TimeEnd;
    return TRUE;
}

BOOL SubtitleParser::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO*) { return TRUE; }

BOOL SubtitleParser::ConvertUnicode2ASCII(U16* src, U8* dst, U32 count) {
    const bool bigEndian = m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG;
    if (src == nullptr || dst == nullptr) return TRUE;
    const U8* const units = reinterpret_cast<const U8*>(src);
    for (U32 i = 0; i < count; ++i) {
        U8 narrow[2];
        const U32 n = narrowUnit(Utf16Le::load(units + size_t{2} * i), bigEndian, narrow);
        for (U32 b = 0; b < n; ++b) *dst++ = narrow[b];
    }
    return TRUE;
}

U32 SubtitleParser::SScanf(const U8* str, const char* format, ...) {
    if (str == nullptr || format == nullptr) return 0;
    va_list arguments;
    va_start(arguments, format);
    const U32 conversions = readNumbers(BarePointer{str}, 0, format, [&arguments] { return va_arg(arguments, U32*); });
    va_end(arguments);
    return conversions;
}

BOOL SubtitleParser::AddTag(const U32 start, const U32 end, const S64 pos, const EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE) {
    return TagTable(*this).add(start, end, pos) ? TRUE : FALSE;
}

U32 SubtitleParser::GetSystemTime() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<U32>(static_cast<U64>(now.tv_sec) * 1000 + static_cast<U64>(now.tv_nsec) / 1000000);
}

BOOL SubtitleParser::StrUpr(const U8* src, const U32 count, U8* dst) { return copyInCapitals(src, count, dst); }

BOOL SubtitleParser::StrUpr(const U16* src, const U32 count, U16* dst) { return copyInCapitals(src, count, dst); }

U32 SubtitleParser::CheckPossibleEncodings(const U8* text) { return possibleEncodings(text, ~U64{0}); }

void SubtitleParser::GetData2CheckPossibleEncodings() { checkEntries(*this, CheckStyle{}); }

U16 SubtitleParser::GBToUnicode(U16 code) { return gbToUnicode(code); }

U16 SubtitleParser::Farsi2Unicode(const U8 code) { return farsiToUnicode(code); }

U16 SubtitleParser::Hebrew2Unicode(const U8 code) { return hebrewToUnicode(code); }

U16 SubtitleParser::BIG52Unicode(U16 code) { return big5ToUnicode(code); }

U16 SubtitleParser::Spanish2Unicode(const U8 code) { return spanishToUnicode(code); }

BOOL SubtitleParser::RenderSubtitle() { return TRUE; }

U32 SubtitleParser::GetTagNum() { return m_u32TagNum; }

void SubtitleParser::SetFrameRate(U32 rate) {
    if (rate != 0) m_u32FrameRrate = rate;
}

BOOL SubtitleParser::Refresh() { return FALSE; }

BOOL SubtitleParser::_render(const U8*, U16, U16) { return FALSE; }

void SubtitleParser::SetIGraphicBufferProducer(const sp<IGraphicBufferProducer>&) {}

U16 SubtitleParser::UTF8ToUCS2(const U8* src, U16* dst, const U16 srcLen, const U16 dstLen) {
    return utf8ToUcs2(src, dst, srcLen, dstLen);
}

int SubtitleParser::UnicodeToUTF8(U16* src, int srcBytes, U8* dst) { return unicodeToUtf8(src, srcBytes, dst); }

VX_WRAPS int Compare(const void* a, const void* b) {
    const auto start = [](const void* tag) {
        return static_cast<const ST_MEDIA_SUBTITLE_PARSER_TAG*>(tag)->u32TimeStart;
    };
    return static_cast<int>(start(a) - start(b));
}

void ChangeUnicodeBigToUnicode(U8* buf, U32 len) {
    if (buf == nullptr) {
        VX_LOG("SubtitleParserSubViewer20", "Buffer is NULL !!!\n");  // logged under that parser's name
        return;
    }
    swapUnits(buf, len);
}

}  // namespace android
