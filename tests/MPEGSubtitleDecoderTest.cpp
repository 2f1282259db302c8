// Subpicture units, written as hexadecimal recipes, and what comes out of them.
#include "subtitle/MPEGSubtitleDecoder.h"

#include <gtest/gtest.h>
#include <stddef.h>
#include <string.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/Interpose.h"
#include "tests/support/SubpictureUnit.h"
#include "tools/samples/VobSubMaker.h"

using namespace android;
using namespace test;

namespace {

using Texts = std::vector<std::string>;

/// A unit of two fields for a bitmap of this size: the area is one line higher, so that all lines are decoded.
std::string picture(unsigned width, unsigned height, const std::string& top, const std::string& bottom) {
    const unsigned at = 4 + static_cast<unsigned>(hex(top).size());
    return unitOf(hex(top) + hex(bottom),
                  "01 03 3210 04 FFF0 " + area(0, width - 1, 0, height) + offsets(4, at) + "FF");
}

struct Decoded {
    BOOL result = FALSE;
    stSubDecoderInfo info = {};
    U8 transparent = 0x55;
    U32 colours[4] = {};
    std::vector<U8> out;
    Texts log;

    /// One character per pixel, one string per row.
    Texts rows() const {
        Texts text;
        for (size_t y = 0; y < info.u16Height; ++y) {
            std::string row;
            for (size_t x = 0; x < info.u16Width; ++x) row += ".123"[out[y * info.u16Width + x]];
            text.push_back(row);
        }
        return text;
    }
};

U32 testPalette[16] = {0x000000, 0xFF8000, 0x101010, 0x808080, 0x111111, 0x222222, 0x333333, 0x444444,
                       0x555555, 0x666666, 0x777777, 0x888888, 0x999999, 0xAAAAAA, 0xBBBBBB, 0x12CCCCCC};

/// Decodes from and into blocks of exactly these sizes, so that a sanitizer sees the first byte too far.
Decoded decode(MPEGSubtitleDecoder& decoder, const std::string& unit, size_t outSize = 4096) {
    const LogCapture log;
    Decoded d;
    std::vector<U8> in(unit.begin(), unit.end());
    in.shrink_to_fit();
    d.out.resize(outSize);
    d.out.shrink_to_fit();
    RGBPaletteColor colours[4];
    memset(colours, 0xFF, sizeof colours);
    d.result = decoder.Decode(in.data(), static_cast<U16>(in.size()), d.out.data(), static_cast<U32>(outSize),
                              &d.transparent, colours, &d.info);
    memcpy(d.colours, colours, sizeof colours);
    d.log = log.texts();
    return d;
}

Decoded decode(const std::string& unit, size_t outSize = 4096) {
    MPEGSubtitleDecoder decoder;
    decoder.Set_VobSub_Palette(testPalette, 16);
    return decode(decoder, unit, outSize);
}

std::string repeated(const std::string& text, int times) {
    std::string out;
    while (times-- > 0) out += text;
    return out;
}

}  // namespace

// --- records ---------------------------------------------------------------------------------------------------

static_assert(sizeof(Cmd) == 12 && offsetof(Cmd, u8cmdCode) == 4 && offsetof(Cmd, extendField) == 5);
static_assert(sizeof(FBSetting) == 6);
static_assert(offsetof(DisplayParam, u8Emp1Color) == 1 && offsetof(DisplayParam, u8Emp1Contrast) == 5 &&
              offsetof(DisplayParam, PaletteBkg) == 9 && offsetof(DisplayParam, u16AreaLeft) == 26 &&
              offsetof(DisplayParam, u16Width) == 34 && offsetof(DisplayParam, u16RLTopField) == 38 &&
              offsetof(DisplayParam, u16RLTopLen) == 42 && sizeof(DisplayParam) == 46);
static_assert(sizeof(stSubDecoderInfo) == 8 && sizeof(RGBPaletteColor) == 4);

TEST(MPEGSubtitleDecoder, StartsWithNothingSet) {
    const MPEGSubtitleDecoder decoder;
    EXPECT_TRUE(decoder.m_CmdQueue.empty());
    EXPECT_NE(nullptr, decoder.m_pPaletteTable);
    EXPECT_EQ(E_SUBTITLE_TYPE_UNKNOWN, decoder.m_enSubType);
    EXPECT_EQ(0, decoder.m_u16_DCSQCT_addr);
    EXPECT_EQ(0U, decoder.m_u32_SPU_Display_Pts);
    EXPECT_EQ(FALSE, decoder.m_bVobSubPaletteSetted);
    EXPECT_EQ(0, decoder.m_u8IdxInnerCheck);
    EXPECT_EQ(0, decoder.m_FB_setting.u16FullPixelBuffer_Width);
    const DisplayParam none = {};
    EXPECT_EQ(0, memcmp(&none, &decoder.m_display_param, sizeof none));
}

// --- command queue ---------------------------------------------------------------------------------------------

TEST(MPEGSubtitleDecoder, QueueIsFirstInFirstOutAndHoldsThirty) {
    MPEGSubtitleDecoder decoder;
    U8 arguments[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    Cmd cmd = {};
    EXPECT_EQ(FALSE, decoder.__cmd_queue_pop(&cmd));
    for (int round = 0; round < 3; ++round) {  // more than once around the ring
        const LogCapture log;
        for (U8 i = 0; i < 30; ++i) {
            arguments[0] = i;
            EXPECT_EQ(TRUE, decoder.__cmd_queue_push(i, 3, arguments, 2));
        }
        EXPECT_EQ(Texts(), log.texts());
        EXPECT_EQ(FALSE, decoder.__cmd_queue_push(30, 3, arguments, 2));
        EXPECT_EQ(std::vector<LogLine>({{3, "", "Queue overflow!"}}), log.lines());
        EXPECT_EQ(30, decoder.m_CmdQueue.size());
        for (U8 i = 0; i < 30; ++i) {
            ASSERT_EQ(TRUE, decoder.__cmd_queue_pop(&cmd));
            EXPECT_EQ(U32{i}, cmd.u32Pts);
            EXPECT_EQ(3, cmd.u8cmdCode);
            EXPECT_EQ(i, cmd.extendField[0]);
            EXPECT_EQ(2, cmd.extendField[1]);
            EXPECT_EQ(0, cmd.extendField[2]);
        }
        EXPECT_EQ(FALSE, decoder.__cmd_queue_pop(&cmd));
        decoder.__cmd_queue_push(0, 1, nullptr, 0);  // the ring turns by one
        decoder.__cmd_queue_pop(&cmd);
    }
    decoder.__cmd_queue_push(0, 5, arguments, 8);  // six fit
    ASSERT_EQ(TRUE, decoder.__cmd_queue_pop(&cmd));
    EXPECT_EQ(0, memcmp(arguments, cmd.extendField, 6));
    decoder.__cmd_queue_push(0, 1, nullptr, 0);
    decoder.__cmd_queue_reset();
    EXPECT_EQ(FALSE, decoder.__cmd_queue_pop(&cmd));
}

TEST(MPEGSubtitleDecoder, CommandsOfASequence) {
    const struct {
        const char* commands;
        BOOL result;
        Texts queued;  // code and arguments
    } kRows[] = {
        {"FF", TRUE, {}},
        {"00 FF", TRUE, {"0 000000000000"}},
        {"01 02 FF", TRUE, {"1 000000000000", "2 000000000000"}},
        {"03 3210 04 FFF0 FF", TRUE, {"3 321000000000", "4 fff000000000"}},
        {"05 0002cf 0001df 06 0004 0123 FF", TRUE, {"5 0002cf0001df", "6 000401230000"}},
        {"01 07 0304 05 FF", TRUE, {"1 000000000000"}},  // kept(vob-line-colours): what follows 07 is not read
        {"01 08 01 FF", FALSE, {"1 000000000000"}},
        {"01 FE 01 FF", FALSE, {"1 000000000000"}},
    };
    for (const auto& row : kRows) {
        MPEGSubtitleDecoder decoder;
        std::string unit = hex("0000 0000") + hex(row.commands);
        EXPECT_EQ(row.result, decoder.__decode_DCCMDs(reinterpret_cast<U8*>(&unit[0]), 4)) << row.commands;
        Texts queued;
        for (Cmd cmd; decoder.__cmd_queue_pop(&cmd) == TRUE;) {
            char text[32];
            const U8* a = cmd.extendField;
            snprintf(text, sizeof text, "%u %02x%02x%02x%02x%02x%02x", cmd.u8cmdCode, a[0], a[1], a[2], a[3], a[4],
                     a[5]);
            queued.push_back(text);
            EXPECT_EQ(0U, cmd.u32Pts);
        }
        EXPECT_EQ(row.queued, queued) << row.commands;
    }
}

TEST(MPEGSubtitleDecoder, AThirtyFirstCommandFailsTheSequence) {
    const std::string fields = hex("C0 C0");  // three pixels of code 0 each
    const std::string head = area(0, 3, 0, 2) + offsets(4, 5);
    const Decoded thirty = decode(unitOf(fields, head + repeated("01 ", 28) + "FF"));
    EXPECT_EQ(4, thirty.info.u16Width);
    EXPECT_EQ(Texts(), thirty.log);

    const Decoded thirtyOne = decode(unitOf(fields, head + repeated("01 ", 29) + "FF"));
    EXPECT_EQ(TRUE, thirtyOne.result);
    EXPECT_EQ(0, thirtyOne.info.u16Width);
    EXPECT_EQ(0, thirtyOne.info.u16Height);
    EXPECT_EQ(Texts({"Queue overflow!", "Failed to push cmd to cmdQueue"}), thirtyOne.log);

    // spread over sequences they count together
    const Decoded spread =
        decode(unitOf(fields, {{head + repeated("01 ", 13) + "FF", 1}, {repeated("02 ", 16) + "FF", kSelf}}));
    EXPECT_EQ(0, spread.info.u16Width);
    EXPECT_EQ(2U, spread.log.size());
}

// --- control sequences -----------------------------------------------------------------------------------------

TEST(MPEGSubtitleDecoder, AUnitIsDecodedWithItsValues) {
    const std::string data = hex("4F 4F 12 12");
    const Decoded d = decode(unitOf(data, "01 03 3210 04 F0F7 " + area(16, 19, 300, 304) + offsets(4, 6) + "FF"));
    EXPECT_EQ(TRUE, d.result);
    EXPECT_EQ(4, d.info.u16Width);
    EXPECT_EQ(4, d.info.u16Height);
    EXPECT_EQ(16, d.info.u16X);
    EXPECT_EQ(300, d.info.u16Y);
    EXPECT_EQ(Texts({".333", "2222", ".333", "2222"}), d.rows());
    EXPECT_EQ(0x77000000U, d.colours[0]);
    EXPECT_EQ(0xFFFF8000U, d.colours[1]);
    EXPECT_EQ(0x00101010U, d.colours[2]);
    EXPECT_EQ(0xFF808080U, d.colours[3]);
    EXPECT_EQ(2, d.transparent);
    EXPECT_EQ(Texts(), d.log);
}

// kept(vob-bad-commands)
TEST(MPEGSubtitleDecoder, OnlyAChainThatEndsOnItselfApplies) {
    const std::string data = hex("4F 4F");
    const std::string commands = "01 " + area(0, 3, 0, 2) + offsets(4, 5) + "FF";
    const struct {
        const char* what;
        std::vector<Sequence> sequences;
        unsigned width;
    } kRows[] = {
        {"points to itself", {{commands, kSelf}}, 4},
        {"zero link", {{commands, kZero}}, 0},
        {"second one points to itself", {{commands, 1}, {"02 FF", kSelf}}, 4},
        {"zero link in the second", {{commands, 1}, {"02 FF", kZero}}, 0},
        {"unknown command", {{"09 " + commands, kSelf}}, 0},
        {"unknown command in the second", {{commands, 1}, {"99 FF", kSelf}}, 0},
        {"back and forth: the queue overflows", {{commands, 1}, {"02 FF", 0}}, 0},
        {"back and forth without commands: stopped", {{"FF", 1}, {"FF", 0}}, 0},
        {"backward", {{"FF", 2}, {commands, kSelf}, {"02 FF", 1}}, 4},
    };
    for (const auto& row : kRows) {
        const Decoded d = decode(unitOf(data, row.sequences));
        EXPECT_EQ(TRUE, d.result) << row.what;
        EXPECT_EQ(row.width, d.info.u16Width) << row.what;
        EXPECT_EQ(row.width / 2, d.info.u16Height) << row.what;
    }
    // at offset 0 a link to itself is a zero link
    EXPECT_EQ(0, decode(hex("000C 0000" + area(0, 3, 0, 2) + "FF")).info.u16Width);
}

TEST(MPEGSubtitleDecoder, AChainMayBeAsLongAsAUnit) {
    std::vector<Sequence> chain;
    while (chain.size() < 13000) chain.push_back({"FF", static_cast<int>(chain.size()) + 1});
    chain.push_back({area(0, 3, 0, 2) + "FF", kSelf});
    EXPECT_EQ(4, decode(unitOf("", chain)).info.u16Width);
}

TEST(MPEGSubtitleDecoder, StepsOfTheWalk) {
    std::string unit = unitOf("", {{"01 FF", 1}, {"02 FF", kSelf}, {"FF", kZero}, {"88 FF", kSelf}});
    U8* const data = reinterpret_cast<U8*>(&unit[0]);
    MPEGSubtitleDecoder decoder;
    EXPECT_EQ(TRUE, decoder.__decode_header(data));
    EXPECT_EQ(4, decoder.m_u16_DCSQCT_addr);
    EXPECT_EQ(10, decoder.__decode_DCSQ(data, 4));
    EXPECT_EQ(10, decoder.__decode_DCSQ(data, 10));
    EXPECT_EQ(0, decoder.__decode_DCSQ(data, 16));
    EXPECT_EQ(0, decoder.__decode_DCSQ(data, 21));  // the link is there, the commands failed
    EXPECT_EQ(2, decoder.m_CmdQueue.size());

    EXPECT_EQ(TRUE, decoder.__decode_DCSQT(data));
    EXPECT_EQ(4, decoder.m_CmdQueue.size()) << "the table alone resets nothing";
    decoder.m_u16_DCSQCT_addr = 16;
    EXPECT_EQ(FALSE, decoder.__decode_DCSQT(data));
    decoder.m_u16_DCSQCT_addr = 21;
    EXPECT_EQ(FALSE, decoder.__decode_DCSQT(data));
    EXPECT_EQ(4, decoder.m_CmdQueue.size());

    EXPECT_EQ(TRUE, decoder.__decode_MpegSP(data));
    EXPECT_EQ(2, decoder.m_CmdQueue.size());
    unit[3] = 16;
    EXPECT_EQ(TRUE, decoder.__decode_MpegSP(data)) << "a broken chain counts as success";
    EXPECT_EQ(0, decoder.m_CmdQueue.size());
}

// kept(vob-start-delay)
TEST(MPEGSubtitleDecoder, ADelayedSequenceAppliesAtOnce) {
    std::string unit = unitOf(hex("4F 4F"), "01 " + area(0, 3, 0, 2) + offsets(4, 5) + "FF");
    unit.replace(6, 2, be16(0x0123));  // 3.2 seconds
    MPEGSubtitleDecoder decoder;
    decoder.Set_VobSub_Palette(testPalette, 16);
    const Decoded d = decode(decoder, unit);
    EXPECT_EQ(Texts({".333", ".333"}), d.rows());
    EXPECT_EQ(TRUE, decoder.m_display_param.bDisplayFlag);
    EXPECT_EQ(0U, decoder.m_u32_SPU_Display_Pts);
    EXPECT_EQ(6, decoder.__decode_DCSQ(reinterpret_cast<U8*>(&unit[0]), 6));
    for (Cmd cmd; decoder.__cmd_queue_pop(&cmd) == TRUE;) EXPECT_EQ(0U, cmd.u32Pts) << int{cmd.u8cmdCode};
}

TEST(MPEGSubtitleDecoder, CommandsApplyInOrder) {
    MPEGSubtitleDecoder decoder;
    decoder.Set_VobSub_Palette(testPalette, 16);
    const auto run = [&](const std::string& commands) {
        decode(decoder, unitOf("", commands + "FF"));
        return decoder.m_display_param;
    };
    EXPECT_EQ(TRUE, run("00").bDisplayFlag);
    EXPECT_EQ(TRUE, run("02 01").bDisplayFlag);
    EXPECT_EQ(FALSE, run("01 02").bDisplayFlag);
    EXPECT_EQ(4, run("01 " + area(0, 3, 0, 2)).u16Width);
    const DisplayParam afresh = run("");
    EXPECT_EQ(FALSE, afresh.bDisplayFlag) << "each unit starts afresh";
    EXPECT_EQ(0, afresh.u16Width);

    const DisplayParam colours = run("03 4321 03 ABCD");
    EXPECT_EQ(0xA, colours.u8Emp2Color);
    EXPECT_EQ(0xB, colours.u8Emp1Color);
    EXPECT_EQ(0xC, colours.u8PatternColor);
    EXPECT_EQ(0xD, colours.u8BkgrdColor);
    const DisplayParam contrast = run("04 1234");
    EXPECT_EQ(1, contrast.u8Emp2Contrast);
    EXPECT_EQ(2, contrast.u8Emp1Contrast);
    EXPECT_EQ(3, contrast.u8PatternContrast);
    EXPECT_EQ(4, contrast.u8BkgrdContrast);
    const DisplayParam corners = run("05 123 456 789 ABC");
    EXPECT_EQ(0x123, corners.u16AreaLeft);
    EXPECT_EQ(0x456, corners.u16AreaRight);
    EXPECT_EQ(0x789, corners.u16AreaTop);
    EXPECT_EQ(0xABC, corners.u16AreaBottom);
}

// kept(vob-fallback-colours)
TEST(MPEGSubtitleDecoder, WithoutAPaletteTheColourCommandLeavesFixedIndices) {
    MPEGSubtitleDecoder decoder;
    decode(decoder, unitOf("", "03 FFFF FF"));
    EXPECT_EQ(1, decoder.m_display_param.u8PatternColor);
    EXPECT_EQ(2, decoder.m_display_param.u8Emp1Color);
    EXPECT_EQ(3, decoder.m_display_param.u8Emp2Color);
    EXPECT_EQ(0, decoder.m_display_param.u8BkgrdColor);
}

TEST(MPEGSubtitleDecoder, TheHeightIsOneLineShortAndEven) {
    const struct {
        unsigned left, right, top, bottom;
        unsigned width, height;
    } kRows[] = {
        {0, 719, 0, 479, 720, 478},  // kept(vob-last-rows)
        {0, 719, 0, 480, 720, 480}, {0, 719, 0, 481, 720, 480}, {10, 10, 20, 20, 1, 0},
        {10, 10, 20, 21, 1, 0},                                                             // kept(vob-two-rows)
        {10, 10, 20, 22, 1, 2},     {11, 10, 20, 22, 0, 2},     {12, 10, 0, 2, 0xFFFF, 2},  // wraps at 16 bits
        {0, 0, 2, 0, 1, 0xFFFE},    {0, 0, 1, 0, 1, 0xFFFE},  // an odd height below 0 is lowered, too
        {0, 4095, 0, 2, 4096, 2},
    };
    for (const auto& row : kRows) {
        const Decoded d = decode(unitOf("", area(row.left, row.right, row.top, row.bottom) + "FF"), 1000000);
        EXPECT_EQ(TRUE, d.result);
        EXPECT_EQ(row.width, d.info.u16Width) << row.left << ".." << row.right;
        EXPECT_EQ(row.height, d.info.u16Height) << row.top << ".." << row.bottom;
        EXPECT_EQ(row.left, d.info.u16X);
        EXPECT_EQ(row.top, d.info.u16Y);
    }
}

// kept(vob-field-order)
TEST(MPEGSubtitleDecoder, LengthsFollowFromOffsetsInOrder) {
    const std::string data(20, '\0');  // control sequences at 24
    const struct {
        std::string commands;
        unsigned top, bottom, topLength, bottomLength;
    } kRows[] = {
        {offsets(4, 10), 4, 10, 6, 14}, {offsets(4, 5), 4, 5, 1, 19},
        {offsets(4, 4), 4, 4, 0, 0},    {offsets(10, 4), 10, 4, 0, 0},
        {offsets(4, 23), 4, 23, 19, 1}, {offsets(4, 24), 4, 24, 0, 0},
        {offsets(4, 25), 4, 25, 0, 0},  {offsets(4, 10) + offsets(12, 11), 12, 11, 6, 14},  // the earlier lengths stay
    };
    for (const auto& row : kRows) {
        MPEGSubtitleDecoder decoder;
        decode(decoder, unitOf(data, row.commands + "FF"));
        const DisplayParam& display = decoder.m_display_param;
        EXPECT_EQ(row.top, display.u16RLTopField) << row.commands;
        EXPECT_EQ(row.bottom, display.u16RLBottomField) << row.commands;
        EXPECT_EQ(row.topLength, display.u16RLTopLen) << row.commands;
        EXPECT_EQ(row.bottomLength, display.u16RLBottomLen) << row.commands;
    }
}

// --- output size -----------------------------------------------------------------------------------------------

// kept(vob-area-too-large)
TEST(MPEGSubtitleDecoder, AQuarterOfThePixelsMustFit) {
    const std::string unit = unitOf("", area(0, 99, 0, 10) + "FF");  // 100 x 10
    EXPECT_EQ(TRUE, decode(unit, 250).result);
    Decoded d = decode(unit, 249);
    EXPECT_EQ(FALSE, d.result);
    EXPECT_EQ(Texts({"[error] not enough RL decode buffer len, need fa, now f9"}), d.log);
    EXPECT_EQ(0x55, d.transparent) << "nothing is handed back";
    EXPECT_EQ(0, d.info.u16Width);
    EXPECT_EQ(0xFFFFFFFFU, d.colours[1]);

    d = decode(unitOf("", area(0, 4095, 0, 4095) + "FF"), 0x3FF800 - 1);  // 4096 x 4094 does not overflow
    EXPECT_EQ(Texts({"[error] not enough RL decode buffer len, need 3ff800, now 3ff7ff"}), d.log);
    d = decode(unitOf("", area(1, 0xFFF, 3, 2) + area(2, 0, 1, 0) + "FF"), 0);  // 65535 x 65534
    EXPECT_EQ(Texts({"[error] not enough RL decode buffer len, need 3fff4000, now 0"}), d.log);
}

TEST(MPEGSubtitleDecoder, PixelsBehindTheOutputAreDropped) {
    // 8 x 4 pixels, each row "to the end in code 2"; a quarter of them fits
    const std::string unit = picture(8, 4, "0002 0002", "0003 0003");
    for (const size_t size : {8U, 9U, 15U, 16U, 17U, 31U, 32U}) {
        const Decoded d = decode(unit, size);
        ASSERT_EQ(TRUE, d.result);
        for (size_t i = 0; i < size; ++i) EXPECT_EQ(i / 8 % 2 == 0 ? 2 : 3, d.out[i]) << i;
    }
}

TEST(MPEGSubtitleDecoder, RowsBehindTheAreaAreNotDecoded) {
    const Decoded d = decode(picture(4, 2, "0002 0002", "0003 0003"), 16);
    ASSERT_EQ(TRUE, d.result);
    EXPECT_EQ(std::vector<U8>({2, 2, 2, 2, 3, 3, 3, 3, 0, 0, 0, 0, 0, 0, 0, 0}), d.out);
}

TEST(MPEGSubtitleDecoder, WithoutAnOutputNothingIsWritten) {
    std::string unit = picture(4, 2, "0002", "0003");
    U8* const data = reinterpret_cast<U8*>(&unit[0]);
    MPEGSubtitleDecoder decoder;
    decoder.Set_VobSub_Palette(testPalette, 16);
    stSubDecoderInfo info = {};
    U8 transparent = 0;
    RGBPaletteColor colours[4];
    EXPECT_EQ(TRUE, decoder.Decode(data, static_cast<U16>(unit.size()), nullptr, 4096, &transparent, colours, &info));
    EXPECT_EQ(4, info.u16Width);
    EXPECT_EQ(TRUE, decoder.__decode_RLE(data, nullptr));
}

TEST(MPEGSubtitleDecoder, AQueuedCommandThatThereIsNotDoesNothing) {
    MPEGSubtitleDecoder decoder;
    EXPECT_EQ(TRUE, decoder.__cmd_queue_push(0, 9, nullptr, 0));
    EXPECT_EQ(TRUE, decoder.__cmd_queue_exec());
    EXPECT_TRUE(decoder.m_CmdQueue.empty());
    const DisplayParam none = {};
    EXPECT_EQ(0, memcmp(&none, &decoder.m_display_param, sizeof none));
}

TEST(MPEGSubtitleDecoder, AChainInACircleFails) {
    std::string unit = unitOf("", {{"FF", 1}, {"FF", 0}});
    U8* const data = reinterpret_cast<U8*>(&unit[0]);
    MPEGSubtitleDecoder decoder;
    EXPECT_EQ(TRUE, decoder.__decode_header(data));
    EXPECT_EQ(FALSE, decoder.__decode_DCSQT(data));
}

TEST(MPEGSubtitleDecoder, TheGuessByItself) {
    std::string unit = picture(4, 2, "9D 00", "00");  // most pixels in code 1
    MPEGSubtitleDecoder decoder;
    decode(decoder, unit);
    EXPECT_EQ(4 + 1, decoder.m_u8IdxInnerCheck);
    decoder.__setPaletteIdx(reinterpret_cast<U8*>(&unit[0]));
    EXPECT_EQ(8 + 1, decoder.m_u8IdxInnerCheck);
}

// Runs that come two at a time count with what each of them draws.
TEST(MPEGSubtitleDecoder, TheGuessCountsPixels) {
    const struct {
        const char* runs;  // two
        unsigned pixels;
        int most;
    } kRows[] = {{"D6", 4, 1}, {"7A", 3, 2}, {"9E", 5, 2}, {"B5", 3, 3}};
    for (const auto& row : kRows) {
        std::string field;
        for (int i = 0; i < 100; ++i) field += row.runs;
        MPEGSubtitleDecoder decoder;
        EXPECT_EQ(TRUE, decode(decoder, picture(100 * row.pixels, 2, field, "00")).result);
        EXPECT_EQ(4 + row.most, decoder.m_u8IdxInnerCheck) << row.runs;
    }
}

// --- run-length data -------------------------------------------------------------------------------------------

TEST(MPEGSubtitleDecoder, RunLengthData) {
    const struct {
        const char* what;
        unsigned width, height;
        const char *top, *bottom;
        Texts rows;
    } kRows[] = {
        {"4F: one of code 0, three of code 3", 4, 2, "4F", "4F", {".333", ".333"}},
        {"a field of one byte gives all its pixels", 4, 4, "4F", "4F 4F", {".333", ".333", "....", ".333"}},
        {"4 bits: runs of 1 to 3", 6, 2, "5 A F 0", "6 B D 0", {"122333", "233111"}},
        {"8 bits: runs of 4 to 15", 19, 2, "11 3E", "3D 12", {"1111222222222222222", "1111111111111112222"}},
        {"12 bits: runs of 16 to 63", 16, 2, "041 0", "042 0", {std::string(16, '1'), std::string(16, '2')}},
        {"12 bits: 63", 64, 2, "0FD 6", "0FE 5", {std::string(63, '1') + "2", std::string(63, '2') + "1"}},
        {"16 bits: 64", 65, 2, "0101 6 0", "0102 5 0", {std::string(64, '1') + "2", std::string(64, '2') + "1"}},
        {"16 bits: short runs, too", 6, 2, "0005 0016", "000D 000F", {"122222", "111333"}},
        {"0003 fills the rest of the row", 6, 2, "5 0003 0", "9 0003 0", {"133333", "113333"}},
        {"0000 fills with background", 4, 2, "0000", "5 0000 0", {"....", "1..."}},
        {"rows begin on a fresh byte", 1, 4, "5F 9F", "6F AF", {"1", "2", "1", "2"}},
        {"a code that ends in the budget", 4, 2, "5 0002 0", "F0 02", {"1222", "333."}},
        {"a code that needs more is abandoned", 4, 2, "50 00", "50 00", {"1...", "1..."}},
        {"and so is one of a single byte", 4, 2, "00", "01", {"....", "...."}},
        {"the bits of the last byte count", 2, 2, "55", "66", {"11", "22"}},
        {"rows without data stay background", 3, 6, "D0", "E0 E0", {"111", "222", "...", "222", "...", "..."}},
        {"runs spill into the next row", 5, 2, "1E", "50", {"22222", "12..."}},  // kept(vob-long-run)
        {"and into that of the other field", 5, 4, "1E 1E", "0001 50", {"22222", "11111", "22222", "12..."}},
        {"a spill ends the row", 5, 4, "1E 50", "50", {"22222", "12...", "1....", "....."}},
        {"a code crosses bytes, not rows", 5, 4, "1E 50", "50 50", {"22222", "1....", ".....", "....."}},
    };
    for (const auto& row : kRows) {
        const Decoded d = decode(picture(row.width, row.height, row.top, row.bottom));
        EXPECT_EQ(TRUE, d.result) << row.what;
        EXPECT_EQ(row.rows, d.rows()) << row.what;
    }
}

TEST(MPEGSubtitleDecoder, TheLongestRunSpills) {
    const Decoded d = decode(picture(2, 2, "03FD", "00"));  // 255 pixels of code 1 into a row of two
    for (size_t i = 0; i < 300; ++i) EXPECT_EQ(i < 255 ? 1 : 0, d.out[i]) << i;
}

TEST(MPEGSubtitleDecoder, TheLastRowSpillsToo) {
    const Decoded d = decode(picture(5, 2, "50", "1E"), 12);
    EXPECT_EQ(std::vector<U8>({1, 0, 0, 0, 0, 2, 2, 2, 2, 2, 2, 2}), d.out);
}

TEST(MPEGSubtitleDecoder, FieldsOfLengthZeroStayBackground) {
    const std::string data = hex("5555 5555");
    // offsets out of order: no lengths
    const Decoded none = decode(unitOf(data, area(0, 3, 0, 4) + offsets(6, 4) + "FF"));
    EXPECT_EQ(Texts({"....", "....", "....", "...."}), none.rows());
}

TEST(MPEGSubtitleDecoder, NoHeightOrWidthDecodesNothing) {
    const std::string data = hex("5555 5555");
    for (const std::string& size : {area(0, 3, 0, 1), area(4, 3, 0, 4), area(0, 3, 7, 7)}) {
        const Decoded d = decode(unitOf(data, size + offsets(4, 6) + "FF"));
        EXPECT_EQ(TRUE, d.result);
        EXPECT_EQ(std::vector<U8>(d.out.size()), d.out) << size;
    }
}

TEST(MPEGSubtitleDecoder, OnlyRunsAreWritten) {
    std::string unit = picture(4, 2, "A0", "50");
    MPEGSubtitleDecoder decoder;
    decoder.Set_VobSub_Palette(testPalette, 16);
    decode(decoder, unit);
    std::vector<U8> out(16, 7);
    EXPECT_EQ(TRUE, decoder.__decode_RLE(reinterpret_cast<U8*>(&unit[0]), out.data()));
    EXPECT_EQ(std::vector<U8>({2, 2, 7, 7, 1, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7}), out);
}

TEST(MPEGSubtitleDecoder, WhatTheMakerEncodesIsDecoded) {
    for (const unsigned scale : {1U, 2U, 5U, 9U}) {
        samples::Subpicture picture;
        picture.bitmap = samples::drawText({"THE QUICK BROWN FOX", "JUMPS, OVER 13 LAZY DOGS!"}, scale);
        picture.spareLines = 1;
        const Decoded d = decode(samples::encodeUnit(picture), picture.bitmap.codes.size());
        ASSERT_EQ(TRUE, d.result);
        ASSERT_EQ(picture.bitmap.width, d.info.u16Width);
        ASSERT_EQ(picture.bitmap.height, d.info.u16Height);
        EXPECT_EQ(picture.bitmap.codes, d.out);
        picture.spareLines = 0;  // the customary area loses two lines of an even height
        EXPECT_EQ(picture.bitmap.height - 2, decode(samples::encodeUnit(picture), d.out.size()).info.u16Height);
    }
}

// --- colours ---------------------------------------------------------------------------------------------------

TEST(MPEGSubtitleDecoder, PaletteEntriesAndContrastMakeColours) {
    const struct {
        const char* commands;
        U32 colours[4];
        unsigned transparent;
    } kRows[] = {
        // emphasis 2 and background opaque, emphasis 1 and pattern transparent
        {"03 3210 04 F00F FF", {0xFF000000, 0x00FF8000, 0x00101010, 0xFF808080}, 1},
        {"03 3211 04 FFFF FF", {0xFFFF8000, 0xFFFF8000, 0xFF101010, 0xFF808080}, 0xFF},
        {"03 3210 04 FFF0 FF", {0x00000000, 0xFFFF8000, 0xFF101010, 0xFF808080}, 0},
        {"03 3210 04 F0FF FF", {0xFF000000, 0xFFFF8000, 0x00101010, 0xFF808080}, 2},
        {"03 3210 04 0FFF FF", {0xFF000000, 0xFFFF8000, 0xFF101010, 0x00808080}, 3},
        {"03 3210 04 1278 FF", {0x88000000, 0x77FF8000, 0x22101010, 0x11808080}, 0xFF},
        {"03 F210 04 FFFF FF",
         {0xFF000000, 0xFFFF8000, 0xFF101010, 0xFFCCCCCC},
         0xFF},  // the table's own alpha is lost
        {"FF", {0, 0, 0, 0}, 0},
    };
    for (const auto& row : kRows) {
        const Decoded d = decode(unitOf("", row.commands));
        for (int i = 0; i < 4; ++i) EXPECT_EQ(row.colours[i], d.colours[i]) << row.commands << " colour " << i;
        EXPECT_EQ(row.transparent, d.transparent) << row.commands;
    }
}

TEST(MPEGSubtitleDecoder, ColoursAreStoredResolved) {
    MPEGSubtitleDecoder decoder;
    decoder.Set_VobSub_Palette(testPalette, 16);
    std::string unit = unitOf("", "03 3210 04 F00F FF");
    RGBPaletteColor colours[4];
    decoder.__decode_MpegSP(reinterpret_cast<U8*>(&unit[0]));
    decoder.__cmd_queue_exec();
    EXPECT_EQ(1, decoder.__setPalette(reinterpret_cast<U8*>(&unit[0]), colours));
    const DisplayParam& display = decoder.m_display_param;
    EXPECT_EQ(0, display.PaletteBkg.a);
    EXPECT_EQ(255, display.PalettePat.a);
    EXPECT_EQ(255, display.PaletteEmp1.a);
    EXPECT_EQ(0, display.PaletteEmp2.a);
    EXPECT_EQ(0xFF, display.PalettePat.r);
    EXPECT_EQ(0x80, display.PalettePat.g);
    EXPECT_EQ(0x00, display.PalettePat.b);
    const U8 expected[] = {0x00, 0x80, 0xFF, 0x00};  // blue, green, red, alpha
    EXPECT_EQ(0, memcmp(expected, &colours[1], 4));
}

TEST(MPEGSubtitleDecoder, SetPaletteCopiesItsEntries) {
    MPEGSubtitleDecoder decoder;
    decoder.Set_VobSub_Palette(testPalette, 0);
    EXPECT_EQ(TRUE, decoder.m_bVobSubPaletteSetted) << "also for a count of 0";
    decoder.Set_VobSub_Palette(testPalette + 15, 1);
    EXPECT_EQ(0x12, decoder.m_pPaletteTable[0].a);
    EXPECT_EQ(0xCC, decoder.m_pPaletteTable[0].r);
    EXPECT_EQ(0, decoder.m_pPaletteTable[1].r);
    U32 many[255];
    for (U32 i = 0; i < 255; ++i) many[i] = i;
    decoder.Set_VobSub_Palette(many, 255);
    EXPECT_EQ(254, decoder.m_pPaletteTable[254].b);
    EXPECT_EQ(0, decoder.m_pPaletteTable[255].b);
    decoder.Set_VobSub_Palette(nullptr, 16);
    EXPECT_EQ(254, decoder.m_pPaletteTable[254].b);
}

TEST(MPEGSubtitleDecoder, WithoutMemoryForTheTable) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    std::unique_ptr<MPEGSubtitleDecoder> decoder;
    {
        const AllocationFails fails(1024);
        decoder = std::make_unique<MPEGSubtitleDecoder>();
        EXPECT_EQ(nullptr, decoder->m_pPaletteTable);
        const LogCapture log;
        decoder->Set_VobSub_Palette(testPalette, 16);
        EXPECT_EQ(Texts({"Cannot allocate memory for palette table"}), log.texts());
        EXPECT_EQ(FALSE, decoder->m_bVobSubPaletteSetted);
    }
    const Decoded d = decode(*decoder, picture(4, 2, "4F", "4F"));  // colours come from nowhere
    EXPECT_EQ(TRUE, d.result);
    EXPECT_EQ(0xFF000000U, d.colours[1]);
    decoder->Set_VobSub_Palette(testPalette, 16);  // tries again
    EXPECT_EQ(TRUE, decoder->m_bVobSubPaletteSetted);
    EXPECT_NE(nullptr, decoder->m_pPaletteTable);
}

TEST(MPEGSubtitleDecoder, FallbackPalette) {
    MPEGSubtitleDecoder decoder;
    // top field: eight pixels of code 0, three of code 1, five of code 2
    const std::string unit = picture(16, 2, "20 D 16 0", "0003");
    Decoded d = decode(decoder, unit);
    EXPECT_EQ(0x00000000U, d.colours[0]) << "most pixels: black";
    EXPECT_EQ(0xFF777777U, d.colours[1]) << "third: mid grey";
    EXPECT_EQ(0xFFEEEEEEU, d.colours[2]) << "next: light grey";
    EXPECT_EQ(4 + 0, decoder.m_u8IdxInnerCheck);
    d = decode(decoder, unit);
    EXPECT_EQ(8 + 0, decoder.m_u8IdxInnerCheck);

    // two units agree: no longer computed
    const std::string other = picture(16, 2, "21 2E 0", "0003");  // eight of code 1, the rest of code 2
    d = decode(decoder, other);
    EXPECT_EQ(0x00000000U, d.colours[0]);
    EXPECT_EQ(0xFFEEEEEEU, d.colours[2]);
    EXPECT_EQ(8, decoder.m_u8IdxInnerCheck);

    decoder.m_u8IdxInnerCheck = 255;
    d = decode(decoder, other);
    EXPECT_EQ(0xFF000000U, d.colours[2]) << "eleven pixels, cut by nothing";
    EXPECT_EQ(0xFFEEEEEEU, d.colours[1]);
    EXPECT_EQ(4 + 2, decoder.m_u8IdxInnerCheck);
    d = decode(decoder, unit);
    EXPECT_EQ(4 + 0, decoder.m_u8IdxInnerCheck) << "another choice begins anew";
    decoder.m_u8IdxInnerCheck = 7;
    d = decode(decoder, unit);
    EXPECT_EQ(4 + 0, decoder.m_u8IdxInnerCheck);
}

TEST(MPEGSubtitleDecoder, FallbackPaletteOfOtherCases) {
    MPEGSubtitleDecoder decoder;
    Decoded d = decode(decoder, picture(4, 2, "9D 00", "00"));  // two of code 1, three of code 1: all of one code
    EXPECT_EQ(4 + 1, decoder.m_u8IdxInnerCheck);
    d = decode(decoder, picture(4, 2, "9A", "00"));  // two of code 1, two of code 2: the lower one wins
    EXPECT_EQ(0x00777777U, d.colours[0]);
    EXPECT_EQ(0xFF000000U, d.colours[1]);
    EXPECT_EQ(0xFFEEEEEEU, d.colours[2]);
    EXPECT_EQ(8 + 1, decoder.m_u8IdxInnerCheck);
    decoder.m_u8IdxInnerCheck = 0;
    d = decode(decoder, unitOf("", "04 FFFF FF"));  // no pixels, all indices 0: black wins the entry
    EXPECT_EQ(0xFF000000U, d.colours[0]);
    EXPECT_EQ(0xFF000000U, d.colours[3]);
    decoder.Set_VobSub_Palette(testPalette, 16);
    d = decode(decoder, picture(4, 2, "4F", "4F"));
    EXPECT_EQ(0xFFFF8000U, d.colours[1]) << "a palette of the index is not touched";
}

// --- bad input -------------------------------------------------------------------------------------------------

TEST(MPEGSubtitleDecoder, BehindTheUnitEverythingReadsZero) {
    EXPECT_EQ(TRUE, decode("").result);
    // Commands 0 without end: the queue overflows.
    const Decoded open = decode(hex("0004 0002"));
    EXPECT_EQ(TRUE, open.result);
    EXPECT_EQ(Texts({"Queue overflow!", "Failed to push cmd to cmdQueue"}), open.log);
    // A table far behind the end.
    EXPECT_EQ(0, decode(hex("0004 FFFF")).info.u16Width);
}

TEST(MPEGSubtitleDecoder, DataBehindTheUnitReadsZero) {
    // Offsets out of order keep the earlier lengths, 6 and 14; they lie far behind the unit. Three rows of the top
    // field are filled "to the end in code 0" for six bytes, all four of the bottom field for eight of the fourteen.
    std::string unit =
        unitOf(std::string(20, '\x55'), area(0, 3, 0, 8) + offsets(4, 10) + offsets(0xFFF0, 0xFFE0) + "FF");
    std::vector<U8> in(unit.begin(), unit.end());
    in.shrink_to_fit();
    std::vector<U8> out(32, 1);
    MPEGSubtitleDecoder decoder;
    decoder.Set_VobSub_Palette(testPalette, 16);
    Decoded d;
    RGBPaletteColor colours[4];
    EXPECT_EQ(TRUE,
              decoder.Decode(in.data(), static_cast<U16>(in.size()), out.data(), 32, &d.transparent, colours, &d.info));
    d.out = out;
    EXPECT_EQ(Texts({"....", "....", "....", "....", "....", "....", "1111", "...."}), d.rows());
}

TEST(MPEGSubtitleDecoder, TruncatedAtEveryByte) {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({"CUT ME"}, 2);
    const std::string whole = samples::encodeUnit(picture);
    for (size_t size = 0; size <= whole.size(); ++size) {
        const Decoded d = decode(whole.substr(0, size), 1000);
        EXPECT_EQ(size == whole.size() ? picture.bitmap.width : 0, d.info.u16Width) << size;
        if (HasFailure()) break;
    }
}

TEST(MPEGSubtitleDecoder, LongUnits) {
    // longer than 16 bits tell: only DecodeUnit takes the whole
    std::string unit = picture(4, 2, "4F", "4F");
    unit.resize(70000);
    std::vector<U8> in(unit.begin(), unit.end());
    std::vector<U8> out(8);
    MPEGSubtitleDecoder decoder;
    decoder.Set_VobSub_Palette(testPalette, 16);
    stSubDecoderInfo info = {};
    U8 transparent = 0;
    RGBPaletteColor colours[4];
    EXPECT_EQ(TRUE, decoder.DecodeUnit(in.data(), 70000, out.data(), 8, &transparent, colours, &info));
    EXPECT_EQ(4, info.u16Width);
    EXPECT_EQ(std::vector<U8>({0, 3, 3, 3, 0, 3, 3, 3}), out);
}

TEST(MPEGSubtitleDecoder, SequencesAcross64KilobytesAreReadOn) {
    for (const unsigned at : {0xFFF5U, 0xFFF8U, 0xFFFBU, 0xFFFCU, 0xFFFDU, 0xFFFEU, 0xFFFFU}) {
        std::string unit(70000, '\0');
        const std::string sequence = be16(0) + be16(at) + hex(area(0, 3, 0, 2) + "FF");
        unit.replace(2, 2, be16(at));
        unit.replace(at, sequence.size(), sequence);
        std::vector<U8> in(unit.begin(), unit.end());
        std::vector<U8> out(8);
        MPEGSubtitleDecoder decoder;
        stSubDecoderInfo info = {};
        U8 transparent = 0;
        RGBPaletteColor colours[4];
        EXPECT_EQ(TRUE, decoder.DecodeUnit(in.data(), 70000, out.data(), 8, &transparent, colours, &info));
        EXPECT_EQ(4, info.u16Width) << at;
        EXPECT_EQ(2, info.u16Height) << at;
    }
}
