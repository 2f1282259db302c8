#include "subtitle/MPEGSubtitleDecoder.h"

#include <stdlib.h>
#include <string.h>

#include "subtitle/system/Log.h"
#include "subtitle/vobsub/RunLength.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr const char* kTag = nullptr;  // kept: this class logs without a tag

constexpr size_t kPaletteEntries = 256;

// What a caller that names no size vouches for: all that 16-bit offsets and lengths reach, and the largest bitmap.
constexpr size_t kUnitReach = 0x20000 + 256;
constexpr size_t kBitmapBytes = 1920 * 1080;

// No real unit comes near; a chain that runs in a circle without commands ends here.
constexpr U32 kMostSequences = 65536;

enum : U8 {
    kForcedStart = 0,
    kStart = 1,
    kStop = 2,
    kColours = 3,
    kContrast = 4,
    kArea = 5,
    kOffsets = 6,
    kLineColours = 7,
    kEnd = 0xFF,
};

constexpr U8 kArgumentBytes[] = {0, 0, 0, 2, 2, 6, 4};  // of the commands 0 to 6

constexpr U8 kContrastStep = 17;  // contrast 0-15 to alpha 0-255

constexpr U8 high(U8 byte) { return static_cast<U8>(byte >> 4); }
constexpr U8 low(U8 byte) { return byte & 15; }
constexpr U16 word(U8 first, U8 second) { return static_cast<U16>(first << 8 | second); }

U16 wordAt(const TextView<Bytes>& unit, size_t i) { return word(unit.at(i), unit.at(i + 1)); }

/// The unit's data. A caller of a single step names no size and vouches for what the unit's offsets reach.
TextView<Bytes> dataOf(const MPEGSubtitleDecoder& decoder, const U8* unit) {
    const auto& bounds = decoder.mBounds;
    return {unit, unit == bounds.unit ? bounds.unitSize : kUnitReach};
}

/// Writes a run as far as it lies below `limit`.
inline void fillCodes(U8* out, size_t limit, size_t at, size_t run, U8 code) {
    if (at >= limit) return;
    if (run > limit - at) run = limit - at;
    if (run < 4) {  // most runs of letters are this short: not worth a call
        do out[at + --run] = code;
        while (run != 0);
    } else {
        memset(out + at, code, run);
    }
}

}  // namespace

MPEGSubtitleDecoder::MPEGSubtitleDecoder()
    : m_FB_setting(),
      m_pPaletteTable(static_cast<RGBPaletteColor*>(calloc(kPaletteEntries, sizeof(RGBPaletteColor)))),
      m_display_param(),
      m_enSubType(E_SUBTITLE_TYPE_UNKNOWN),
      m_u16_DCSQCT_addr(0),
      m_u32_SPU_Display_Pts(0),
      m_bVobSubPaletteSetted(FALSE),
      m_u8IdxInnerCheck(0),
      mBounds() {}

MPEGSubtitleDecoder::~MPEGSubtitleDecoder() { free(m_pPaletteTable); }

BOOL MPEGSubtitleDecoder::Decode(U8* unit, U16 unitSize, U8* out, U32 outSize, U8* transparentIndex,
                                 RGBPaletteColor* colours, stSubDecoderInfo* info) {
    return DecodeUnit(unit, unitSize, out, outSize, transparentIndex, colours, info);
}

BOOL MPEGSubtitleDecoder::DecodeUnit(U8* unit, U32 unitSize, U8* out, U32 outSize, U8* transparentIndex,
                                     RGBPaletteColor* colours, stSubDecoderInfo* info) {
    mBounds = {unit, unitSize, out, outSize};
    __decode_MpegSP(unit);
    __cmd_queue_exec();
    const DisplayParam& display = m_display_param;
    // kept: a quarter of the pixels is compared although each takes a byte; what does not fit is not written
    const U32 needed = U32{display.u16Width} * display.u16Height / 4;
    const bool fits = needed <= outSize;
    if (fits) {
        *info = {display.u16Width, display.u16Height, display.u16AreaLeft, display.u16AreaTop};
        *transparentIndex = __setPalette(unit, colours);
        __decode_RLE(unit, out);
    } else {
        VX_LOG(kTag, "[error] not enough RL decode buffer len, need %lx, now %lx", static_cast<unsigned long>(needed),
               static_cast<unsigned long>(outSize));
    }
    mBounds = {};
    return fits ? TRUE : FALSE;
}

BOOL MPEGSubtitleDecoder::__decode_MpegSP(U8* unit) {
    __cmd_queue_reset();
    m_display_param = {};
    __decode_header(unit);
    // kept: a broken chain drops all of its commands, and this still counts as success
    if (__decode_DCSQT(unit) != TRUE) __cmd_queue_reset();
    return TRUE;
}

BOOL MPEGSubtitleDecoder::__decode_header(U8* unit) {
    m_u16_DCSQCT_addr = wordAt(dataOf(*this, unit), 2);
    return TRUE;
}

BOOL MPEGSubtitleDecoder::__decode_DCSQT(U8* unit) {
    U16 at = m_u16_DCSQCT_addr;
    for (U32 sequence = 0; sequence < kMostSequences; ++sequence) {
        const U16 next = __decode_DCSQ(unit, at);
        if (next == 0) return FALSE;
        if (next == at) return TRUE;
        at = next;
    }
    return FALSE;
}

U16 MPEGSubtitleDecoder::__decode_DCSQ(U8* unit, U16 offset) {
    // kept: the delay in the first two bytes is not used, all commands apply at once
    if (__decode_DCCMDs(unit, offset + U32{4}) != TRUE) return 0;
    return wordAt(dataOf(*this, unit), offset + size_t{2});
}

BOOL MPEGSubtitleDecoder::__decode_DCCMDs(U8* unit, U32 offset) {
    const TextView<Bytes> data = dataOf(*this, unit);
    size_t at = offset;
    for (;;) {
        const U8 code = data.at(at++);
        if (code == kEnd) return TRUE;
        if (code == kLineColours) return TRUE;  // kept: colours per line are not read, and end the sequence
        if (code > kLineColours) return FALSE;
        U8 arguments[sizeof Cmd::extendField];
        const U8 count = kArgumentBytes[code];
        for (U8 i = 0; i < count; ++i) arguments[i] = data.at(at++);
        if (__cmd_queue_push(0, code, arguments, count) != TRUE) {
            VX_LOG(kTag, "Failed to push cmd to cmdQueue");
            return FALSE;
        }
    }
}

BOOL MPEGSubtitleDecoder::__cmd_queue_push(U32 pts, U8 code, U8* args, U8 argLen) {
    if (m_CmdQueue.full()) {
        VX_LOG(kTag, "Queue overflow!");
        return FALSE;
    }
    Cmd cmd = {pts, code, {}};
    if (args != nullptr)
        memcpy(cmd.extendField, args, argLen < sizeof cmd.extendField ? argLen : sizeof cmd.extendField);
    m_CmdQueue.push(cmd);
    return TRUE;
}

BOOL MPEGSubtitleDecoder::__cmd_queue_pop(Cmd* cmd) {
    if (m_CmdQueue.empty()) return FALSE;
    *cmd = m_CmdQueue.pop();
    return TRUE;
}

void MPEGSubtitleDecoder::__cmd_queue_reset() { m_CmdQueue.clear(); }

BOOL MPEGSubtitleDecoder::__cmd_queue_exec() {
    DisplayParam& display = m_display_param;
    Cmd cmd;
    while (__cmd_queue_pop(&cmd) == TRUE) {
        const U8(&a)[6] = cmd.extendField;
        switch (cmd.u8cmdCode) {
            case kForcedStart:
            case kStart:
                display.bDisplayFlag = TRUE;
                break;
            case kStop:
                display.bDisplayFlag = FALSE;
                break;
            case kColours:
                if (m_bVobSubPaletteSetted == TRUE) {
                    display.u8Emp2Color = high(a[0]);
                    display.u8Emp1Color = low(a[0]);
                    display.u8PatternColor = high(a[1]);
                    display.u8BkgrdColor = low(a[1]);
                } else {  // kept: fixed places, whatever the bytes say; the fallback palette has its colours there
                    display.u8PatternColor = 1;
                    display.u8Emp1Color = 2;
                    display.u8Emp2Color = 3;
                    display.u8BkgrdColor = 0;
                }
                break;
            case kContrast:
                display.u8Emp2Contrast = high(a[0]);
                display.u8Emp1Contrast = low(a[0]);
                display.u8PatternContrast = high(a[1]);
                display.u8BkgrdContrast = low(a[1]);
                break;
            case kArea: {
                const int left = a[0] << 4 | high(a[1]);
                const int right = low(a[1]) << 8 | a[2];
                const int top = a[3] << 4 | high(a[4]);
                const int bottom = low(a[4]) << 8 | a[5];
                // kept: one line short of the area and even, so that both fields have the same number of lines
                const int height = (bottom - top) & ~1;
                display.u16AreaLeft = static_cast<U16>(left);
                display.u16AreaRight = static_cast<U16>(right);
                display.u16AreaTop = static_cast<U16>(top);
                display.u16AreaBottom = static_cast<U16>(bottom);
                display.u16Width = static_cast<U16>(right - left + 1);
                display.u16Height = static_cast<U16>(height);
                break;
            }
            case kOffsets:
                display.u16RLTopField = word(a[0], a[1]);
                display.u16RLBottomField = word(a[2], a[3]);
                // kept: lengths are taken only from offsets in this order; otherwise the earlier ones stay
                if (display.u16RLTopField < display.u16RLBottomField && display.u16RLBottomField < m_u16_DCSQCT_addr) {
                    display.u16RLTopLen = static_cast<U16>(display.u16RLBottomField - display.u16RLTopField);
                    display.u16RLBottomLen = static_cast<U16>(m_u16_DCSQCT_addr - display.u16RLBottomField);
                }
                break;
            default:
                break;
        }
    }
    return TRUE;
}

void MPEGSubtitleDecoder::Set_VobSub_Palette(U32* palette, U8 count) {
    if (m_pPaletteTable == nullptr) {
        m_pPaletteTable = static_cast<RGBPaletteColor*>(calloc(kPaletteEntries, sizeof(RGBPaletteColor)));
    }
    if (m_pPaletteTable == nullptr) {
        VX_LOG(kTag, "Cannot allocate memory for palette table");
        return;
    }
    for (U32 i = 0; i < count && palette != nullptr; ++i) {
        const U32 colour = palette[i];
        m_pPaletteTable[i] = {static_cast<U8>(colour >> 24), static_cast<U8>(colour >> 16),
                              static_cast<U8>(colour >> 8), static_cast<U8>(colour)};
    }
    m_bVobSubPaletteSetted = TRUE;  // kept: also for a count of 0
}

U8 MPEGSubtitleDecoder::__setPalette(U8* unit, RGBPaletteColor* colours) {
    if (m_bVobSubPaletteSetted != TRUE && (m_u8IdxInnerCheck < 8 || m_u8IdxInnerCheck == 255)) __setPaletteIdx(unit);

    DisplayParam& display = m_display_param;
    struct Resolve {  // in the order of the colour codes
        RGBPaletteColor& colour;
        U8 index;
        U8 contrast;
    };
    const Resolve codes[] = {
        {display.PaletteBkg, display.u8BkgrdColor, display.u8BkgrdContrast},
        {display.PalettePat, display.u8PatternColor, display.u8PatternContrast},
        {display.PaletteEmp1, display.u8Emp1Color, display.u8Emp1Contrast},
        {display.PaletteEmp2, display.u8Emp2Color, display.u8Emp2Contrast},
    };
    U8 transparent = 0xFF;
    for (U8 code = 4; code-- > 0;) {
        RGBPaletteColor& colour = codes[code].colour;
        colour = m_pPaletteTable != nullptr ? m_pPaletteTable[codes[code].index] : RGBPaletteColor{};
        colour.a = static_cast<U8>(255 - kContrastStep * codes[code].contrast);
        const U8 alpha = static_cast<U8>(255 - colour.a);
        // 0xAARRGGBB, so the bytes lie as blue, green, red, alpha
        colours[code] = {colour.b, colour.g, colour.r, alpha};
        if (colour.a == 255) transparent = code;
    }
    return transparent;
}

void MPEGSubtitleDecoder::__setPaletteIdx(U8* unit) {
    if (m_pPaletteTable == nullptr) return;
    const DisplayParam& display = m_display_param;
    U64 pixels[4] = {};
    walkField(NibbleReader(dataOf(*this, unit), display.u16RLTopField, display.u16RLTopLen), display.u16Width,
              display.u16Height / 2U, [&](U32, U32, U32 length, U8 code) { pixels[code] += length; });

    U8 ranking[4] = {0, 1, 2, 3};  // most pixels first, ties to the lower code
    for (U8 i = 1; i < 4; ++i) {
        for (U8 k = i; k > 0 && pixels[ranking[k]] > pixels[ranking[k - 1]]; --k) {
            const U8 code = ranking[k];
            ranking[k] = ranking[k - 1];
            ranking[k - 1] = code;
        }
    }
    const U8 indices[] = {display.u8BkgrdColor, display.u8PatternColor, display.u8Emp1Color, display.u8Emp2Color};
    constexpr U8 kGrey[] = {0, 238, 119};
    for (U8 rank = 3; rank-- > 0;) {  // black last: it wins where two codes share an index
        RGBPaletteColor& entry = m_pPaletteTable[indices[ranking[rank]]];
        entry.r = entry.g = entry.b = kGrey[rank];
    }

    const U8 choice = ranking[0];
    const bool agrees = m_u8IdxInnerCheck >= 4 && m_u8IdxInnerCheck != 255 && (m_u8IdxInnerCheck & 3) == choice;
    m_u8IdxInnerCheck = static_cast<U8>(agrees ? m_u8IdxInnerCheck + 4 : 4 + choice);
}

BOOL MPEGSubtitleDecoder::__decode_RLE(U8* unit, U8* out) {
    const TextView<Bytes> data = dataOf(*this, unit);
    const DisplayParam& display = m_display_param;
    const U32 width = display.u16Width;
    const size_t limit = out == nullptr ? 0 : out == mBounds.out ? mBounds.outSize : kBitmapBytes;
    const auto decodeField = [&](U32 firstRow, U16 offset, U16 length) {
        walkField(NibbleReader(data, offset, length), width, display.u16Height / 2U,
                  [=](U32 row, U32 column, U32 run, U8 code) {
                      const size_t at = (size_t{row} * 2 + firstRow) * width + column;
                      fillCodes(out, limit, at, run, code);
                  });
    };
    decodeField(0, display.u16RLTopField, display.u16RLTopLen);
    decodeField(1, display.u16RLBottomField, display.u16RLBottomLen);
    return TRUE;
}

}  // namespace android
