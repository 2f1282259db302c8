// Subpicture units gathered out of the packs of a program stream: sizes, working block, window, colours.
#include "subtitle/SubtitleParserSUBIDX.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "subtitle/MPEGSubtitleDecoder.h"
#include "tests/support/Interpose.h"
#include "tests/support/SubpictureUnit.h"
#include "tests/support/VobSubIndex.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

using namespace android;
using namespace test;

namespace {

/// The decoded bitmap, as long as its size says.
std::vector<U8> bitmapOf(const SubtitleParserSUBIDX& parser, const stSubDecoderInfo& info) {
    return {parser.m_buffer, parser.m_buffer + size_t{info.u16Width} * info.u16Height};
}

const std::string kArea = area(0, 3, 0, 2);  // 4 x 2

/// What is allocated meanwhile holds 0x55 in every byte, where the C library's own allocator serves.
struct DirtyHeap {
    DirtyHeap() { mallopt(M_PERTURB, 0xAA); }
    ~DirtyHeap() { mallopt(M_PERTURB, 0); }
    DirtyHeap(const DirtyHeap&) = delete;
    DirtyHeap& operator=(const DirtyHeap&) = delete;
};

/// An index with a tag for each of these positions.
std::string indexOf(const std::vector<uint32_t>& positions) {
    std::string idx = "palette: 000000, ffffff, 202020, 808080, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0\n";
    unsigned ms = 0;
    for (const uint32_t position : positions) idx += samples::indexLine(ms += 1000, position) + "\n";
    return idx;
}

}  // namespace

// --- gathering a unit -------------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, GathersAndDecodesASubpicture) {
    const samples::Subpicture picture = smallPicture();
    const std::string unit = samples::encodeUnit(picture);
    VobSubInMemory files;
    files.load(indexOf({0}), samples::packUnit(unit));
    stSubDecoderInfo info = {};
    memset(files.parser.m_buffer, 3, 1920 * 1080);
    EXPECT_EQ(unit.size(), files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_EQ(picture.bitmap.width, info.u16Width);
    EXPECT_EQ(picture.bitmap.height, info.u16Height);
    EXPECT_EQ(picture.bitmap.codes, bitmapOf(files.parser, info));
    for (size_t i = picture.bitmap.codes.size(); i < 1920 * 1080; ++i)
        ASSERT_EQ(0, files.parser.m_buffer[i]) << "the rest is cleared " << i;
    EXPECT_EQ(0x00000000U, files.parser.m_au32Palette_result[0]);
    EXPECT_EQ(0xFFFFFFFFU, files.parser.m_au32Palette_result[1]);
    EXPECT_EQ(0xFF202020U, files.parser.m_au32Palette_result[2]);
    EXPECT_EQ(0xFF808080U, files.parser.m_au32Palette_result[3]);
    EXPECT_EQ(unit.size(), files.parser.GetData(0, nullptr, 0, 0, nullptr)) << "a record is not needed";
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 1, &info)) << "no such tag";
}

TEST(SubtitleParserSUBIDX, ATextIsReadThroughTheWindowOfThePictures) {
    VobSubInMemory files;
    files.load(indexOf({0, 3}), samples::packUnit(samples::encodeUnit(smallPicture())));
    SubtitleParserSUBIDX& parser = files.parser;
    for (int time = 0; time < 2; ++time) {
        ASSERT_NE(0U, parser.GetData(0, nullptr, 0, 0, nullptr));
        memset(parser.m_pu8SubtitleBuffer + 4000, 'x', 8);  // as a picture may have left it
        U8 text[16];
        parser.GetData(0, text, sizeof text, 0);  // of the index, as it lies in its window
        for (U32 i = 3; i < 8192; ++i) ASSERT_EQ(0, parser.m_pu8SubtitleBuffer[i]) << time << ", " << i;
        parser.m_u32SubtitleBufferDataSize = 0;  // so that the window is read again
    }
}

TEST(SubtitleParserSUBIDX, NothingElseStaysInTheBitmap) {
    std::vector<samples::Subpicture> pictures(3);
    pictures[0].bitmap = samples::Bitmap(40, 20);
    pictures[1].bitmap = samples::Bitmap(1920, 400);
    pictures[2].bitmap = samples::Bitmap(1920, 1080);
    samples::VobSub film(1920, 1080, {});
    film.track("en");
    for (samples::Subpicture& picture : pictures) {
        std::fill(picture.bitmap.codes.begin(), picture.bitmap.codes.end(), uint8_t{3});
        picture.spareLines = 1;
        film.add(1000, picture);
    }
    VobSubInMemory files;
    files.load(film.idx(), film.sub());
    U8* const bitmap = files.parser.m_buffer;
    for (const U32 index : {0U, 1U, 0U, 2U, 1U, 0U, 0U, 2U, 0U}) {
        // a player may write there
        for (const size_t at : {100000U, 0x20000U, 0x20FFFU, 1000000U, 1920U * 1080 - 1}) bitmap[at] = 0x77;
        ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, index, nullptr));
        std::vector<U8> expected = pictures[index].bitmap.codes;
        expected.resize(1920 * 1080);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), bitmap)) << index;
    }
    // of a picture that is not there nothing stays either
    files.parser.AddTag(0, 0, 0x7FFF, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    ASSERT_EQ(0U, files.parser.GetData(0, nullptr, 0, 3, nullptr));
    EXPECT_EQ(1920 * 1080, std::count(bitmap, bitmap + 1920 * 1080, 0));
}

// kept(vob-top-left)
TEST(SubtitleParserSUBIDX, TheColourOfTheTopLeftPixelIsBackground) {
    for (U32 code = 0; code < 4; ++code) {
        samples::Subpicture picture = smallPicture();
        for (uint8_t& contrast : picture.contrast) contrast = 15;
        picture.bitmap.at(0, 0) = static_cast<uint8_t>(code);
        VobSubInMemory files;
        files.load(indexOf({0}), samples::packUnit(samples::encodeUnit(picture)));
        files.parser.m_au32Palette_result[4] = 0x77;
        ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
        const U32 all[] = {0xFF000000, 0xFFFFFFFF, 0xFF202020, 0xFF808080};
        for (U32 i = 0; i < 4; ++i) EXPECT_EQ(i == code ? 0 : all[i], files.parser.m_au32Palette_result[i]) << code;
        EXPECT_EQ(0x77U, files.parser.m_au32Palette_result[4]);
    }
}

TEST(SubtitleParserSUBIDX, TheLastEntryOfThePaletteCounts) {
    samples::Subpicture picture = smallPicture();
    picture.colours[3] = 15;
    VobSubInMemory files;
    files.load("palette: 0, ffffff, 202020, 808080, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, abcdef\n" + kFirst,
               samples::packUnit(samples::encodeUnit(picture)));
    ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    EXPECT_EQ(0xFFABCDEFU, files.parser.m_au32Palette_result[3]);
}

// kept(vob-no-palette)
TEST(SubtitleParserSUBIDX, WithoutAPaletteEveryColourIsBlack) {
    VobSubInMemory files;
    files.load(kFirst, samples::packUnit(samples::encodeUnit(smallPicture())));
    ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    const U32 colours[] = {0x00000000, 0xFF000000, 0xFF000000, 0xFF000000};
    for (U32 code = 0; code < 4; ++code) EXPECT_EQ(colours[code], files.parser.m_au32Palette_result[code]) << code;
}

TEST(SubtitleParserSUBIDX, AUnitThatAppliesNothingIsReadAllTheSame) {
    const std::string unit = unitOf("", {{kArea + "FF", kZero}});
    VobSubInMemory files;
    files.load(indexOf({0}), samples::packUnit(unit));
    stSubDecoderInfo info = {1, 2, 3, 4};
    EXPECT_EQ(unit.size(), files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_EQ(0, info.u16Width | info.u16Height | info.u16X | info.u16Y);
}

TEST(SubtitleParserSUBIDX, UnitsOfSeveralPacks) {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({"A LONG LINE OF TEXT", "OVER SEVERAL PACKS", "OF THE STREAM."}, 6);
    picture.spareLines = 1;
    const std::string unit = samples::encodeUnit(picture);
    const std::string packs = samples::packUnit(unit);
    ASSERT_EQ(5 * 2048U, packs.size());
    VobSubInMemory files;
    files.load(indexOf({0}), packs);
    stSubDecoderInfo info = {};
    EXPECT_EQ(unit.size(), files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_EQ(picture.bitmap.codes, bitmapOf(files.parser, info));

    std::string broken = packs;
    broken[2048] = 1;
    files.load(indexOf({0}), broken);
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, &info)) << "a pack that does not begin with 0";
    files.load(indexOf({0}), packs.substr(0, 4 * 2048));
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, &info)) << "the last pack is missing";
    // A whole pack, but off a boundary.
    const std::string first = samples::packUnit(unit.substr(0, 1000)).substr(0, 29 + 1000);
    files.load(indexOf({0}), first + samples::packUnit(unit.substr(1000)));
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, &info));
    // kept(vob-packs-not-2048): a first payload of a byte less: the next pack would begin off a boundary.
    std::string shifted = packs;
    shifted[19] = static_cast<char>(shifted[19] - 1);
    files.load(indexOf({0}), shifted);
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, &info));
}

TEST(SubtitleParserSUBIDX, PackHeaders) {
    const std::string unit = samples::encodeUnit(smallPicture());
    const struct {
        const char* what;
        size_t at;
        int value;
        bool read;
    } kRows[] = {
        {"first byte", 0, 1, false},
        {"start code", 1, 1, false},
        {"start code", 2, 0, false},
        {"pack start", 3, 0xBB, false},  // kept(vob-no-pack)
        {"largest byte 4", 4, 0x7F, true},
        {"byte 4 too large", 4, 0x80, false},
        {"bytes 5 to 13 are not looked at", 9, 0xEE, true},
        {"stuffing in the pack header is not looked at", 13, 0xFF, true},  // kept(vob-stuffing)
        {"packet start code", 14, 1, false},
        {"packet start code", 15, 1, false},
        {"packet start code", 16, 2, false},
        {"another stream", 17, 0xBF, false},
        {"MPEG-2 flags", 20, 0x80, true},
        {"MPEG-2 flags", 20, 0xBF, true},
        {"MPEG-1 flags", 20, 0x01, false},
        {"MPEG-1 flags", 20, 0xC1, false},
        {"the substream, behind five bytes of header data", 28, 0x3F, true},  // kept(vob-substream)
    };
    for (const auto& row : kRows) {
        std::string sub = samples::packUnit(unit);
        ASSERT_EQ(5, sub[22]);
        sub[row.at] = static_cast<char>(row.value);
        VobSubInMemory files;
        files.load(indexOf({0}), sub);
        EXPECT_EQ(row.read ? unit.size() : 0, files.parser.GetData(0, nullptr, 0, 0, nullptr)) << row.what;
    }
    // No pack is taken for the one before it.
    const std::string two(3000, 'x');
    for (const auto& row : kRows) {
        std::string sub = samples::packUnit(unitOf(two, "FF"));
        ASSERT_EQ(2 * 2048U, sub.size());
        if (row.at == 28) continue;  // there is header data in the first pack alone
        sub[2048 + row.at] = static_cast<char>(row.value);
        VobSubInMemory files;
        files.load(indexOf({0}), sub);
        EXPECT_EQ(row.read ? 4 + two.size() + 5 : 0, files.parser.GetData(0, nullptr, 0, 0, nullptr)) << row.what;
    }
}

TEST(SubtitleParserSUBIDX, UnitSizes) {
    const std::string unit = samples::encodeUnit(smallPicture());
    const auto read = [](const std::string& data) {
        VobSubInMemory files;
        files.load(indexOf({0}), samples::packUnit(data));
        return files.parser.GetData(0, nullptr, 0, 0, nullptr);
    };
    std::string other = unit;
    other[0] = other[1] = 0;
    EXPECT_EQ(0U, read(other)) << "size 0";  // kept(vob-unit-size-0)
    other[1] = 1;
    EXPECT_EQ(unit.size(), read(other)) << "the count is that of all payload bytes";
    EXPECT_EQ(unit.size() + 100, read(unit + std::string(100, 'x')));
    other[0] = 0x7F;
    EXPECT_EQ(0U, read(other)) << "never complete";
    // a payload of less than four bytes behind a long header wraps at 65536
    std::string sub = samples::packUnit(unit);
    sub[18] = sub[19] = 0;
    VobSubInMemory files;
    files.load(indexOf({0}), sub);
    EXPECT_EQ(65536U - 5 - 4, files.parser.GetData(0, nullptr, 0, 0, nullptr));
}

TEST(SubtitleParserSUBIDX, LengthsBeyond65535AreDecodedWhole) {
    // 1,000 bytes and then a payload that wraps: together more than 16 bits tell
    std::string sub = samples::packUnit(std::string("\x40\x00", 2) + std::string(4000, '\0'));
    sub[2048 + 18] = sub[2048 + 19] = 0;  // length 0: 65532 bytes
    VobSubInMemory files;
    files.load(indexOf({0}), sub);
    EXPECT_EQ(2019U + 65532U, files.parser.GetData(0, nullptr, 0, 0, nullptr));

    // control sequences behind what 16 bits tell of the total, 2015
    sub = samples::packUnit(std::string("\x40\x00", 2) + unitOf(std::string(2096, '\0'), kArea + "FF").substr(2));
    sub[2048 + 18] = sub[2048 + 19] = 0;
    files.load(indexOf({0}), sub);
    stSubDecoderInfo info = {};
    EXPECT_EQ(2019U + 65532U, files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_EQ(4, info.u16Width);
}

TEST(SubtitleParserSUBIDX, WhatAPayloadLacksReadsZero) {
    // The first offsets, 4 and 10, give the lengths; the second ones lie behind the window, where the fields stay
    // background.
    const std::string commands = area(0, 3, 0, 8) + offsets(4, 10) + offsets(0x910, 0x810) + "FF";
    std::string sub = samples::packUnit(unitOf(std::string(20, '\0'), commands));
    sub[18] = sub[19] = 0;  // of 65527 bytes 2019 are there
    VobSubInMemory files;
    files.load(indexOf({0}), sub);
    const DirtyHeap dirty;
    stSubDecoderInfo info = {};
    EXPECT_EQ(65527U, files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_EQ(4, info.u16Width);
    EXPECT_EQ(6, files.parser.m_pDecoder->m_display_param.u16RLTopLen);
    EXPECT_EQ(std::vector<U8>(32), bitmapOf(files.parser, info));
}

// --- working block and window -----------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, TheWorkingBlockIsSizedByTheIndex) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    const std::string packs = samples::packUnit(samples::encodeUnit(smallPicture()));
    const std::string sub = packs + packs + packs + packs;
    const struct {
        std::vector<uint32_t> positions;
        U32 index;
        size_t size;
    } kRows[] = {
        {{0}, 0, 0x80000},
        {{0, 0x800}, 0, 0x800 + 32768},
        {{0, 0x800}, 1, 0x80000},
        {{0, 0x800, 0x1800}, 1, 0x1000 + 32768},
        {{0, 0x1000, 0x1800}, 2, 0x1000 + 32768},  // the last one by the first two
        {{0x800, 0x800, 0x1800}, 0, 32768},
    };
    for (const auto& row : kRows) {
        VobSubInMemory files;
        files.load(indexOf(row.positions), sub);
        {
            const AllocationFails fails(row.size);
            EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, row.index, nullptr)) << row.size;
        }
        const AllocationFails fails(row.size + 1);
        EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, row.index, nullptr)) << row.size;
    }
}

// kept(vob-descending)
TEST(SubtitleParserSUBIDX, DescendingPositions) {
    const std::string packs = samples::packUnit(samples::encodeUnit(smallPicture()));
    const std::string sub(packs + std::string(100000, '\0') + packs);
    VobSubInMemory files;
    files.load(indexOf({0x8000, 0, 0}), packs + std::string(0x8000 - 2048, '\0') + packs);
    EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr)) << "32768 back: an empty block, which grows";
    files.load(indexOf({0x8800, 0, 0}), packs + std::string(0x8000, '\0') + packs);
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr)) << "a negative size";
    EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, 1, nullptr));
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 2, nullptr)) << "sized by the first two";
}

TEST(SubtitleParserSUBIDX, TheWorkingBlockGrowsInSteps) {
    // 18 packs, more than a block of 32768 + 0 holds
    std::string unit(36000, '\0');
    unit[0] = static_cast<char>(36000 >> 8);
    unit[1] = static_cast<char>(36000 & 0xFF);
    const std::string sub = samples::packUnit(unit);
    VobSubInMemory files;
    files.load(indexOf({0, 0}), sub);
    EXPECT_EQ(36000U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    {
        const AllocationFails fails(65536);
        EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    }
    {
        const AllocationFails fails(65537);
        EXPECT_EQ(36000U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    }
    {  // the seventeenth payload makes it grow, the last one finds room
        const NthAllocationFails third(3, NthAllocationFails::Extent::kAndAllLater);
        const U32 read = files.parser.GetData(0, nullptr, 0, 0, nullptr);
        EXPECT_EQ(36000U, read);
        EXPECT_FALSE(third.wasReached());
    }
    // it grows already when the data fills it: 17 x 2019 bytes and so on never meet 32768 exactly, one payload does
    std::string exact = unit.substr(0, 2);
    exact.resize(32768);
    exact[0] = static_cast<char>(0x80);
    exact[1] = 0;
    files.load(indexOf({0, 0}), samples::packUnit(exact));
    EXPECT_EQ(32768U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    const AllocationFails fails(32769);
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
}

TEST(SubtitleParserSUBIDX, WindowsOnTheStream) {
    // 200 pictures of a pack each, in any order
    const samples::VobSub film = smallFilm(200);
    VobSubInMemory files;
    files.load(film.idx(), film.sub());
    ASSERT_EQ(200U, files.parser.GetTagNum());
    for (const U32 index : {0U, 1U, 199U, 24U, 23U, 25U, 31U, 32U, 100U, 0U, 150U, 199U}) {
        stSubDecoderInfo info = {};
        const samples::Subpicture picture = smallPicture(std::string(1, static_cast<char>('A' + index % 26)));
        ASSERT_EQ(samples::encodeUnit(picture).size(), files.parser.GetData(0, nullptr, 0, index, &info)) << index;
        EXPECT_EQ(picture.bitmap.codes, bitmapOf(files.parser, info)) << index;
        EXPECT_EQ(0, files.parser.m_s64SubtitleBufferPosition % 16384);
    }
}

TEST(SubtitleParserSUBIDX, TheWindowStaysWhileEnoughIsLeftOfIt) {
    const samples::VobSub film = smallFilm(64);  // 128 KB
    VobSubInMemory files;
    // An index whose window is full makes room for any unit at once: the second look at the window never moves it.
    std::string idx = film.idx();
    idx += "#" + std::string(0x10000 - 1 - idx.size(), 'x');
    files.load(idx, film.sub());
    ASSERT_EQ(0x10000U, files.parser.m_u32RawBufferDataSize);
    const struct {
        U32 index;
        S64 window;
    } kRows[] = {
        {0, 0},       {23, 0},      {24, 0},  // 16384 bytes are left
        {25, 0xC000},                         // 14336
        {30, 0xC000}, {23, 0x8000}, {31, 0x8000}, {63, 0x1C000}, {0, 0},
    };
    for (const auto& row : kRows) {
        EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, row.index, nullptr));
        EXPECT_EQ(row.window, files.parser.m_s64SubtitleBufferPosition) << row.index;
    }
    // With a short index it moves to the unit's payload each time.
    files.load(film.idx(), film.sub());
    EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, 23, nullptr));
    EXPECT_EQ(0x8000, files.parser.m_s64SubtitleBufferPosition);
}

// kept(vob-window)
TEST(SubtitleParserSUBIDX, TheFillOfTheIndexsWindowDecidesWhetherTheOtherMoves) {
    const samples::VobSub film = smallFilm(64);
    VobSubInMemory files;
    files.load(film.idx(), film.sub());
    const U32 payload = 9 * 2048 + 29;  // of the tenth picture; its unit counts as 2048 bytes
    const struct {
        U32 indexFill;
        S64 window;
    } kRows[] = {{payload + 2048, 0}, {payload + 2047, 0x4000}, {0x10000, 0}, {2048, 0x4000}, {0, 0x4000}};
    for (const auto& row : kRows) {
        files.parser.m_u32RawBufferDataSize = row.indexFill;
        ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
        ASSERT_EQ(0, files.parser.m_s64SubtitleBufferPosition);
        EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, 9, nullptr));
        EXPECT_EQ(row.window, files.parser.m_s64SubtitleBufferPosition) << row.indexFill;
    }
}

TEST(SubtitleParserSUBIDX, AUnitCountsInWholePacks) {
    const std::string small = samples::packUnit(samples::encodeUnit(smallPicture()));
    std::string before;
    while (before.size() < 9 * 2048) before += small;
    const U32 payload = 9 * 2048 + 29;
    const struct {
        size_t unit;
        U32 indexFill;
        S64 window;
    } kRows[] = {
        {2047, payload + 2048, 0}, {2048, payload + 2048, 0},      {2048, payload + 2047, 0x4000},
        {2049, payload + 4096, 0}, {2049, payload + 4095, 0x4000}, {4096, payload + 4096, 0},
    };
    for (const auto& row : kRows) {
        const std::string unit = unitOf(std::string(row.unit - 9, '\0'), "FF");
        ASSERT_EQ(row.unit, unit.size());
        VobSubInMemory files;
        files.load(indexOf({0, 9 * 2048}), before + samples::packUnit(unit) + std::string(0x10000, '\0'));
        ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
        files.parser.m_u32RawBufferDataSize = row.indexFill;
        EXPECT_EQ(row.unit, files.parser.GetData(0, nullptr, 0, 1, nullptr));
        EXPECT_EQ(row.window, files.parser.m_s64SubtitleBufferPosition) << row.unit << " " << row.indexFill;
    }
}

// kept(vob-window)
TEST(SubtitleParserSUBIDX, AUnitBehindTheWindowIsNotThere) {
    std::string unit(60000, '\0');
    unit[0] = static_cast<char>(60000 >> 8);
    unit[1] = static_cast<char>(60000 & 0xFF);
    const std::string packs = samples::packUnit(unit);  // 30 packs
    VobSubInMemory files;
    files.load(indexOf({0x800}), std::string(0x800, '\0') + packs);
    EXPECT_EQ(60000U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    // 4 packs into a window of 32: two packs too far
    files.load(indexOf({0x2000}), std::string(0x2000, '\0') + packs);
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
}

TEST(SubtitleParserSUBIDX, PositionsOutsideTheStream) {
    const std::string packs = samples::packUnit(samples::encodeUnit(smallPicture()));
    VobSubInMemory files;
    files.load(indexOf({0x800, 0x10000, 0x7FFFF800, 0xFFFFF800, 0}), packs);
    for (U32 index = 0; index < 4; ++index) EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, index, nullptr)) << index;
    files.parser.AddTag(0, 0, -1, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    files.parser.AddTag(0, 0, 0x7FFFFFFFFFFFFFFF, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    files.parser.AddTag(0, 0, -0x7FFFFFFFFFFFFFFF - 1, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    files.parser.AddTag(0, 0, 0, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    for (U32 index = 5; index < 8; ++index) EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, index, nullptr)) << index;
    // off a boundary of 2048: a pack may begin anywhere
    files.load(indexOf({5, 5}), std::string(5, '\0') + packs);
    EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
}

// --- areas and bitmap -------------------------------------------------------------------------------------------

// kept(vob-area-too-large)
TEST(SubtitleParserSUBIDX, APictureThatIsTooLarge) {
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap(2, 2);
    std::string unit = samples::encodeUnit(picture);
    const size_t area = unit.find("\x05", 8) + 1;
    unit.replace(area, 6, std::string("\x00\x0F\xFF\x00\x0F\xFF", 6));  // 4096 x 4094
    VobSubInMemory files;
    files.load(indexOf({0}), samples::packUnit(unit));
    const LogCapture log;
    stSubDecoderInfo info = {1, 2, 3, 4};
    files.parser.m_au32Palette_result[1] = 0x77;
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_EQ(Texts({"[error] not enough RL decode buffer len, need 3ff800, now 1fa400"}), log.texts());
    EXPECT_EQ(1, info.u16Width);
    EXPECT_EQ(0x77U, files.parser.m_au32Palette_result[1]);
}

TEST(SubtitleParserSUBIDX, FourTimesTheBitmapIsDecodedAsFarAsItFits) {
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap(2, 2);
    std::string unit = samples::encodeUnit(picture);
    const size_t area = unit.find("\x05", 8) + 1;
    unit.replace(area, 6, std::string("\x00\x0F\xFF\x00\x07\xE8", 6));  // 4096 x 2024: just under four times
    VobSubInMemory files;
    files.load(indexOf({0}), samples::packUnit(unit));
    stSubDecoderInfo info = {};
    EXPECT_EQ(unit.size(), files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_EQ(4096, info.u16Width);
    EXPECT_EQ(2024, info.u16Height);
}

// --- the operation for texts ------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, TextOfAnIndexIsTheBasesOwnBusiness) {
    Scanned scanned(kFirst + kSecond);
    SubtitleParserSUBIDX& parser = scanned.parser();
    U8 text[64];
    EXPECT_EQ(0U, parser.GetData(0, text, 0, 0)) << "no room";
    parser.GetData(0, text, sizeof text, 0);  // "timestamp ..." from the raw buffer
    EXPECT_EQ('t', text[0]);
    parser.AddTag(0, 0, 0xFFFF, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    parser.AddTag(0, 0, 0x7FFFFFFF, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    parser.AddTag(0, 0, 0, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    for (U32 index = 0; index < 5; ++index) parser.GetData(0, text, sizeof text, index);
    // The extraction leaves its own idea of the window; subpictures are looked for in it, within its bounds.
    for (U32 index = 0; index < 5; ++index) EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, index, nullptr));
}

TEST(SubtitleParserSUBIDX, TextOfALongIndexMakesNoLargerWindow) {
    const std::string packs = samples::packUnit(samples::encodeUnit(smallPicture()));
    std::string idx = indexOf({0, 0x10000});
    idx += "#" + std::string(0x18000 - 1 - idx.size(), 'x');
    VobSubInMemory files;
    files.load(idx, std::string(0x10000, '\0') + packs + std::string(0x8000, '\0'));
    SubtitleParserSUBIDX& parser = files.parser;
    // a pack behind the buffer, for whoever looks there
    free(parser.m_pu8SubtitleBuffer);
    parser.m_pu8SubtitleBuffer = static_cast<U8*>(calloc(1, 0x10000 + packs.size()));
    ASSERT_NE(nullptr, parser.m_pu8SubtitleBuffer);
    memcpy(parser.m_pu8SubtitleBuffer + 0x10000, packs.data(), packs.size());
    U8 text[64];
    parser.GetData(0, text, sizeof text, 0);
    ASSERT_EQ(0x18000U, parser.m_u32SubtitleBufferDataSize) << "taken for a window of that size";
    EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 1, nullptr));
    EXPECT_EQ(0, parser.m_s64SubtitleBufferPosition) << "it did not move";
}

TEST(SubtitleParserSUBIDX, BehindTheIndexNothingIsLeftOfEarlierWindows) {
    std::string idx = "id: en\n";
    while (idx.size() < 100000) idx += kFirst;
    Scanned scanned(idx);
    SubtitleParserSUBIDX& parser = scanned.parser();
    const U32 filled = parser.m_u32RawBufferDataSize;
    ASSERT_LT(filled, 0x10000U);
    for (U32 i = filled; i < 0x10000; ++i) ASSERT_EQ(0, parser.m_pu8RawBuffer[i]) << i;
    parser.AddTag(0, 0, filled + 1, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    parser.AddTag(0, 0, filled + 500, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    U8 text[64] = {1};
    EXPECT_EQ(0U, parser.GetData(0, text, sizeof text, parser.GetTagNum() - 2));
    EXPECT_EQ('\0', text[0]);
}
