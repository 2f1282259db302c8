/// Decoder of DVD subpicture units: control sequences, run-length bitmap, colours.
#pragma once

#include "subtitle/SubtitleTypes.h"

namespace android {

/// One queued display command.
struct Cmd {
    U32 u32Pts;         ///< always 0: the date of the control sequence is not kept
    U8 u8cmdCode;       ///< 0-6
    U8 extendField[6];  ///< the argument bytes, as many as the command has
};

/// Size of a frame buffer; nobody looks at it.
struct FBSetting {
    U16 u16FullPixelBuffer_Width, u16FullPixelBuffer_Height, u16FullPixelBuffer_Pitch;  ///< pixels
};

/// What the commands of a unit build up.
struct DisplayParam {
    BOOL bDisplayFlag;  ///< as the last start or stop command left it; nobody looks at it
    U8 u8Emp1Color, u8Emp2Color, u8PatternColor, u8BkgrdColor;              ///< indices into the palette, 0-15
    U8 u8Emp1Contrast, u8Emp2Contrast, u8PatternContrast, u8BkgrdContrast;  ///< opacity, 0-15
    RGBPaletteColor PaletteBkg, PalettePat, PaletteEmp1, PaletteEmp2;       ///< the resolved colours
    U16 u16AreaLeft, u16AreaRight, u16AreaTop, u16AreaBottom;               ///< display area, pixels
    U16 u16Width, u16Height;                                                ///< bitmap size, pixels
    U16 u16RLTopField, u16RLBottomField;                                    ///< offsets of the fields within the unit
    U16 u16RLTopLen, u16RLBottomLen;                                        ///< their lengths, bytes
};

/// Commands in the order of arrival: a ring of 30, nothing is allocated.
class CmdQueue {
public:
    static constexpr U8 kCapacity = 30;  ///< commands that it holds at most

    /// How many it holds.
    U8 size() const { return mCount; }

    /// Whether there is none, or room for none.
    bool empty() const { return mCount == 0; }
    bool full() const { return mCount == kCapacity; }

    /// Drops all.
    void clear() { mFirst = mCount = 0; }

    /// Requires `!full()`.
    void push(const Cmd& cmd) { mCmds[(mFirst + mCount++) % kCapacity] = cmd; }

    /// Requires `!empty()`.
    Cmd pop() {
        const Cmd& cmd = mCmds[mFirst];
        mFirst = static_cast<U8>((mFirst + 1) % kCapacity);
        --mCount;
        return cmd;
    }

private:
    Cmd mCmds[kCapacity] = {};
    U8 mFirst = 0;
    U8 mCount = 0;
};

/// Decodes one unit at a time; each `Decode` starts afresh, only the palette persists. Not thread-safe.
///
/// The operations that take a bare `unit` read as far into it as its own offsets lead; `Decode` reads zeros behind the
/// unit's size.
class VXSUBTITLE_API MPEGSubtitleDecoder {
public:
    MPEGSubtitleDecoder();
    MPEGSubtitleDecoder(const MPEGSubtitleDecoder&) = delete;
    MPEGSubtitleDecoder& operator=(const MPEGSubtitleDecoder&) = delete;
    ~MPEGSubtitleDecoder();

    /// Decodes the unit into `out`: width x height bytes, one colour code (0 background, 1 pattern, 2 emphasis 1,
    /// 3 emphasis 2) each. Only the runs are written: the caller clears `out`. `colours` receives four colours, each
    /// 0xAARRGGBB when viewed as `U32`, `transparentIndex` what `__setPalette` returns, `info` the size and the
    /// top-left corner of the display area. `FALSE` when width x height / 4 exceeds `outSize`.
    BOOL Decode(U8* unit, U16 unitSize, U8* out, U32 outSize, U8* transparentIndex, RGBPaletteColor* colours,
                stSubDecoderInfo* info);

    /// The same for units whose gathered data is longer than 65535 bytes.
    BOOL DecodeUnit(U8* unit, U32 unitSize, U8* out, U32 outSize, U8* transparentIndex, RGBPaletteColor* colours,
                    stSubDecoderInfo* info);

    /// Loads `count` colours 0xTTRRGGBB into the first entries of the colour table.
    void Set_VobSub_Palette(U32* palette, U8 count);

    /// Resolves the four colours into `colours`; returns the lowest colour code whose contrast is 0, 0xFF when none
    /// is.
    U8 __setPalette(U8* unit, RGBPaletteColor* colours);

    /// The palette of units that come without one: the colour code of most pixels black, the next light grey, the
    /// third mid grey.
    void __setPaletteIdx(U8* unit);

    /// Decodes both fields of the unit, as the display parameters describe them, into `out`. Always `TRUE`.
    BOOL __decode_RLE(U8* unit, U8* out);

    /// Reads the control sequences of the unit into the queue; it stays empty when their chain is broken. Always
    /// `TRUE`.
    BOOL __decode_MpegSP(U8* unit);

    /// Reads the offset of the control sequence table. Always `TRUE`.
    BOOL __decode_header(U8* unit);

    /// Queues the commands of all control sequences. `TRUE` when the chain ends on a sequence that points to itself.
    BOOL __decode_DCSQT(U8* unit);

    /// Queues the commands of the sequence at `offset` and returns the offset of the next; 0 when they failed.
    U16 __decode_DCSQ(U8* unit, U16 offset);

    /// Queues the commands from `offset` on up to the end of their sequence. `FALSE` for an unknown command or a
    /// full queue.
    BOOL __decode_DCCMDs(U8* unit, U32 offset);

    /// Applies and removes all queued commands. Always `TRUE`.
    BOOL __cmd_queue_exec();

    /// Queues a command with `argLen` (at most 6) argument bytes. `FALSE` when the queue is full.
    BOOL __cmd_queue_push(U32 pts, U8 code, U8* args, U8 argLen);

    /// Moves the first command out. `FALSE` when there is none.
    BOOL __cmd_queue_pop(Cmd* cmd);

    /// Drops all commands.
    void __cmd_queue_reset();

    CmdQueue m_CmdQueue;               ///< the commands of the unit, until they are applied
    FBSetting m_FB_setting;            ///< not used
    RGBPaletteColor* m_pPaletteTable;  ///< 256 entries, the first 16 from the index; owned; null without memory
    DisplayParam m_display_param;      ///< what they built up
    EN_SBT_TYPE m_enSubType;           ///< not used
    U16 m_u16_DCSQCT_addr;             ///< offset of the control sequence table within the unit
    U32 m_u32_SPU_Display_Pts;         ///< not used
    BOOL m_bVobSubPaletteSetted;       ///< a palette was loaded
    U8 m_u8IdxInnerCheck;              ///< the fallback palette's choice (low two bits) and 4 for each unit that agreed
};

}  // namespace android
