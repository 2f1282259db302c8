#include "subtitle/MPEGSubtitleDecoder.h"

#include <stdlib.h>
#include <string.h>

#include "subtitle/system/Log.h"
#include "subtitle/vobsub/RunLength.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr const char* kTag = nullptr;  // this class logs without a tag

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

// A caller of a single step names no size and vouches for what the unit's offsets reach, and for the largest bitmap.
TextView<Bytes> vouchedFor(const U8* unit) { return {unit, kUnitReach}; }

using Unit = TextView<Bytes>;

void readHeader(MPEGSubtitleDecoder& decoder, const Unit& unit) { decoder.m_u16_DCSQCT_addr = wordAt(unit, 2); }

/// Queues the commands from `at` on up to the end of their sequence. False for an unknown command or a full queue.
bool queueCommands(MPEGSubtitleDecoder& decoder, const Unit& unit, size_t at) {
    for (;;) {
        const U8 code = unit.at(at++);
        if (code == kEnd) return true;
        if (code == kLineColours) return true;  // kept(vob-line-colours): not read, they end the sequence
        if (code > kLineColours) return false;
        U8 arguments[sizeof Cmd::extendField];
        const U8 count = kArgumentBytes[code];
        for (U8 i = 0; i < count; ++i) arguments[i] = unit.at(at++);
        if (decoder.__cmd_queue_push(0, code, arguments, count) != TRUE) {
            VX_LOG(kTag, "Failed to push cmd to cmdQueue");
            return false;
        }
    }
}

/// Queues the commands of the sequence at `offset` and answers the offset of the next; 0 when they failed.
U16 queueSequence(MPEGSubtitleDecoder& decoder, const Unit& unit, U16 offset) {
    // kept(vob-start-delay): the delay in the first two bytes is not used, all commands apply at once
    if (!queueCommands(decoder, unit, offset + size_t{4})) return 0;
    return wordAt(unit, offset + size_t{2});
}

/// Queues the commands of all sequences. True when the chain ends on a sequence that points to itself.
bool queueTable(MPEGSubtitleDecoder& decoder, const Unit& unit) {
    U16 at = decoder.m_u16_DCSQCT_addr;
    for (U32 sequence = 0; sequence < kMostSequences; ++sequence) {
        const U16 next = queueSequence(decoder, unit, at);
        if (next == 0) return false;
        if (next == at) return true;
        at = next;
    }
    return false;
}

void queueUnit(MPEGSubtitleDecoder& decoder, const Unit& unit) {
    decoder.__cmd_queue_reset();
    decoder.m_display_param = {};
    readHeader(decoder, unit);
    // kept(vob-bad-commands): a broken chain drops all of its commands, and this still counts as success
    if (!queueTable(decoder, unit)) decoder.__cmd_queue_reset();
}

/// The codes of a unit that comes without a palette, by their pixels in the first field: most first, ties to the lower.
void rankCodes(const DisplayParam& display, const Unit& unit, U8 (&ranking)[4]) {
    struct {
        U64 pixels[4] = {};
        void add(U32, const Run& run) { pixels[run.colour] += run.length; }
        void addShort(U32, U64 codes, U32 columns) {
            for (U32 i = 0; i < columns; ++i) ++pixels[codes >> (8 * (i & 7)) & 3];
        }
        void endRow(U32) {}
    } count;
    const RunReader top(unit, display.u16RLTopField, display.u16RLTopLen);
    walkField(FieldWalk(top, display.u16Width, count), display.u16Height / 2U);
    for (U8 i = 0; i < 4; ++i) ranking[i] = i;
    for (U8 i = 1; i < 4; ++i) {
        for (U8 k = i; k > 0 && count.pixels[ranking[k]] > count.pixels[ranking[k - 1]]; --k) {
            const U8 code = ranking[k];
            ranking[k] = ranking[k - 1];
            ranking[k - 1] = code;
        }
    }
}

void guessPalette(MPEGSubtitleDecoder& decoder, const Unit& unit) {
    if (decoder.m_pPaletteTable == nullptr) return;
    const DisplayParam& display = decoder.m_display_param;
    U8 ranking[4];
    rankCodes(display, unit, ranking);
    const U8 indices[] = {display.u8BkgrdColor, display.u8PatternColor, display.u8Emp1Color, display.u8Emp2Color};
    constexpr U8 kGrey[] = {0, 238, 119};
    for (int rank = 2; rank >= 0; --rank) {  // black last: it wins where two codes share an index
        RGBPaletteColor& entry = decoder.m_pPaletteTable[indices[ranking[rank]]];
        entry.r = entry.g = entry.b = kGrey[rank];
    }

    const U8 choice = ranking[0];
    U8& check = decoder.m_u8IdxInnerCheck;
    const bool agrees = check >= 4 && check != 255 && (check & 3) == choice;
    check = static_cast<U8>(agrees ? check + 4 : 4 + choice);
}

/// Resolves the four colours into `colours`; answers the lowest colour code whose contrast is 0, 0xFF when none is.
U8 resolveColours(MPEGSubtitleDecoder& decoder, const Unit& unit, RGBPaletteColor* colours) {
    const U8 check = decoder.m_u8IdxInnerCheck;
    if (decoder.m_bVobSubPaletteSetted != TRUE && (check < 8 || check == 255)) guessPalette(decoder, unit);

    DisplayParam& display = decoder.m_display_param;
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
    for (int code = 3; code >= 0; --code) {
        RGBPaletteColor& colour = codes[code].colour;
        colour = decoder.m_pPaletteTable != nullptr ? decoder.m_pPaletteTable[codes[code].index] : RGBPaletteColor{};
        colour.a = static_cast<U8>(255 - kContrastStep * codes[code].contrast);
        const U8 alpha = static_cast<U8>(255 - colour.a);
        // 0xAARRGGBB, so the bytes lie as blue, green, red, alpha
        colours[code] = {colour.b, colour.g, colour.r, alpha};
        if (colour.a == 255) transparent = static_cast<U8>(code);
    }
    return transparent;
}

/// Decodes both fields of the unit, as the display parameters describe them.
void decodeFields(const DisplayParam& display, const Unit& unit, const CodeSink& out) {
    const U32 width = display.u16Width;
    FieldRows top(out, 0, 2 * size_t{width});
    FieldRows bottom(out, width, 2 * size_t{width});
    walkFields(FieldWalk({unit, display.u16RLTopField, display.u16RLTopLen}, width, top),
               FieldWalk({unit, display.u16RLBottomField, display.u16RLBottomLen}, width, bottom),
               display.u16Height / 2U);
}

// ---- The commands ----

void setColours(DisplayParam& display, const U8 (&a)[6], bool paletteSet) {
    if (paletteSet) {
        display.u8Emp2Color = high(a[0]);
        display.u8Emp1Color = low(a[0]);
        display.u8PatternColor = high(a[1]);
        display.u8BkgrdColor = low(a[1]);
    } else {  // kept(vob-fallback-colours): fixed places; the guessed palette has its colours there
        display.u8PatternColor = 1;
        display.u8Emp1Color = 2;
        display.u8Emp2Color = 3;
        display.u8BkgrdColor = 0;
    }
}

void setContrast(DisplayParam& display, const U8 (&a)[6]) {
    display.u8Emp2Contrast = high(a[0]);
    display.u8Emp1Contrast = low(a[0]);
    display.u8PatternContrast = high(a[1]);
    display.u8BkgrdContrast = low(a[1]);
}

void setArea(DisplayParam& display, const U8 (&a)[6]) {
    const int left = a[0] << 4 | high(a[1]);
    const int right = low(a[1]) << 8 | a[2];
    const int top = a[3] << 4 | high(a[4]);
    const int bottom = low(a[4]) << 8 | a[5];
    // kept(vob-last-rows): one line short of the area and even, so that both fields have the same number of lines
    // kept(vob-two-rows): of one or two rows nothing is left
    const int height = (bottom - top) & ~1;
    display.u16AreaLeft = static_cast<U16>(left);
    display.u16AreaRight = static_cast<U16>(right);
    display.u16AreaTop = static_cast<U16>(top);
    display.u16AreaBottom = static_cast<U16>(bottom);
    display.u16Width = static_cast<U16>(right - left + 1);
    display.u16Height = static_cast<U16>(height);
}

void setOffsets(DisplayParam& display, const U8 (&a)[6], U16 tableOffset) {
    display.u16RLTopField = word(a[0], a[1]);
    display.u16RLBottomField = word(a[2], a[3]);
    // kept(vob-field-order): lengths are taken only from offsets in this order; otherwise the earlier ones stay
    if (display.u16RLTopField < display.u16RLBottomField && display.u16RLBottomField < tableOffset) {
        display.u16RLTopLen = static_cast<U16>(display.u16RLBottomField - display.u16RLTopField);
        display.u16RLBottomLen = static_cast<U16>(tableOffset - display.u16RLBottomField);
    }
}

RGBPaletteColor* allocatePalette() {
    return static_cast<RGBPaletteColor*>(calloc(kPaletteEntries, sizeof(RGBPaletteColor)));
}

}  // namespace

MPEGSubtitleDecoder::MPEGSubtitleDecoder()
    : m_FB_setting(),
      m_pPaletteTable(allocatePalette()),
      m_display_param(),
      m_enSubType(E_SUBTITLE_TYPE_UNKNOWN),
      m_u16_DCSQCT_addr(0),
      m_u32_SPU_Display_Pts(0),
      m_bVobSubPaletteSetted(FALSE),
      m_u8IdxInnerCheck(0) {}

MPEGSubtitleDecoder::~MPEGSubtitleDecoder() { free(m_pPaletteTable); }

BOOL MPEGSubtitleDecoder::Decode(U8* unit, U16 unitSize, U8* out, U32 outSize, U8* transparentIndex,
                                 RGBPaletteColor* colours, stSubDecoderInfo* info) {
    return DecodeUnit(unit, unitSize, out, outSize, transparentIndex, colours, info);
}

BOOL MPEGSubtitleDecoder::DecodeUnit(U8* unit, U32 unitSize, U8* out, U32 outSize, U8* transparentIndex,
                                     RGBPaletteColor* colours, stSubDecoderInfo* info) {
    const Unit data(unit, unitSize);
    queueUnit(*this, data);
    __cmd_queue_exec();
    const DisplayParam& display = m_display_param;
    // kept(vob-area-too-large): a quarter of the pixels is compared, each takes a byte; the rest is not written
    const U32 needed = U32{display.u16Width} * display.u16Height / 4;
    if (needed > outSize) {
        VX_LOG(kTag, "[error] not enough RL decode buffer len, need %lx, now %lx", asUnsignedLong(needed),
               asUnsignedLong(outSize));
        return FALSE;
    }
    *info = {display.u16Width, display.u16Height, display.u16AreaLeft, display.u16AreaTop};
    *transparentIndex = resolveColours(*this, data, colours);
    decodeFields(display, data, {out, out != nullptr ? outSize : 0});
    return TRUE;
}

// The steps by themselves.

BOOL MPEGSubtitleDecoder::__decode_MpegSP(U8* unit) {
    queueUnit(*this, vouchedFor(unit));
    return TRUE;
}

BOOL MPEGSubtitleDecoder::__decode_header(U8* unit) {
    readHeader(*this, vouchedFor(unit));
    return TRUE;
}

BOOL MPEGSubtitleDecoder::__decode_DCSQT(U8* unit) { return queueTable(*this, vouchedFor(unit)) ? TRUE : FALSE; }

U16 MPEGSubtitleDecoder::__decode_DCSQ(U8* unit, U16 offset) { return queueSequence(*this, vouchedFor(unit), offset); }

BOOL MPEGSubtitleDecoder::__decode_DCCMDs(U8* unit, U32 offset) {
    return queueCommands(*this, vouchedFor(unit), offset) ? TRUE : FALSE;
}

U8 MPEGSubtitleDecoder::__setPalette(U8* unit, RGBPaletteColor* colours) {
    return resolveColours(*this, vouchedFor(unit), colours);
}

void MPEGSubtitleDecoder::__setPaletteIdx(U8* unit) { guessPalette(*this, vouchedFor(unit)); }

BOOL MPEGSubtitleDecoder::__decode_RLE(U8* unit, U8* out) {
    decodeFields(m_display_param, vouchedFor(unit), {out, out != nullptr ? kBitmapBytes : 0});
    return TRUE;
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
        switch (cmd.u8cmdCode) {
            case kForcedStart:
            case kStart:
                display.bDisplayFlag = TRUE;
                break;
            case kStop:
                display.bDisplayFlag = FALSE;  // kept(vob-end-ignored): nobody looks at it
                break;
            case kColours:
                setColours(display, cmd.extendField, m_bVobSubPaletteSetted == TRUE);
                break;
            case kContrast:
                setContrast(display, cmd.extendField);
                break;
            case kArea:
                setArea(display, cmd.extendField);
                break;
            case kOffsets:
                setOffsets(display, cmd.extendField, m_u16_DCSQCT_addr);
                break;
            default:
                break;
        }
    }
    return TRUE;
}

void MPEGSubtitleDecoder::Set_VobSub_Palette(U32* palette, U8 count) {
    if (m_pPaletteTable == nullptr) m_pPaletteTable = allocatePalette();
    if (m_pPaletteTable == nullptr) {
        VX_LOG(kTag, "Cannot allocate memory for palette table");
        return;
    }
    for (U32 i = 0; i < count && palette != nullptr; ++i) {
        const U32 colour = palette[i];
        m_pPaletteTable[i] = {static_cast<U8>(colour >> 24), static_cast<U8>(colour >> 16),
                              static_cast<U8>(colour >> 8), static_cast<U8>(colour)};
    }
    m_bVobSubPaletteSetted = TRUE;  // kept(vob-fallback-colours): gone with any palette, be its count 0
}

}  // namespace android
