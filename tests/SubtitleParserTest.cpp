// The base class: life cycle, tag table, clock and the answers of the operations that formats replace.
#include "subtitle/SubtitleParser.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <malloc.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/HeldMemory.h"
#include "tests/support/Interpose.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"

namespace {

using namespace android;
using namespace test;

constexpr U32 kStep = 8192;  // entries by which the table grows
constexpr size_t kZeroGuard = 64;

bool allZero(const void* memory, size_t bytes) {
    const U8* const p = static_cast<const U8*>(memory);
    return std::all_of(p, p + bytes, [](U8 byte) { return byte == 0; });
}

// ------------------------------------------------------------------------------------------------ life cycle

TEST(SubtitleParser, BeginsEmpty) {
    const SubtitleParser parser;
    EXPECT_EQ(pthread_t{0}, parser.m_threadParser);
    EXPECT_EQ(nullptr, parser.m_pTagBuffer);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_FLAG_NULL, parser.m_eFlag);
    EXPECT_EQ(nullptr, parser.m_pu8SubtitleBuffer);
    EXPECT_EQ(nullptr, parser.m_pu8RawBuffer);
    EXPECT_EQ(0u, parser.m_u32RawBufferDataSize);
    EXPECT_EQ(0, parser.m_s64RawBufferPosition);
    EXPECT_EQ(0u, parser.m_u32ParsedPos);
    EXPECT_EQ(0u, parser.m_u32RawBufferSize);
    EXPECT_EQ(0, parser.m_s64DataTotalSize);
    EXPECT_EQ(0u, parser.m_u32TagNum);
    EXPECT_EQ(0u, parser.m_u32FrameRrate);
    EXPECT_EQ(8192u, parser.m_u32TagBufferNum);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN, parser.m_eCodeType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID, parser.m_eSubtitleType);
    EXPECT_EQ(0u, parser.m_u32SubtitleBufferDataSize);
    EXPECT_EQ(0, parser.m_s64SubtitleBufferPosition);
    EXPECT_EQ(0, parser.m_s32TimeOffsetMs);
    EXPECT_EQ(FALSE, parser.bParseFinish);
    EXPECT_EQ(0u, parser.m_u64NanoSecPerFrame);
    EXPECT_EQ(nullptr, parser.pFileProcess);
    EXPECT_EQ(0, parser.m_u8TimeStampTagSizeCase);
}

TEST(SubtitleParser, InitAllocatesZeroedBuffers) {
    SubtitleParser parser;
    EXPECT_EQ(TRUE, parser.Init(1000));
    EXPECT_EQ(1000, parser.m_s64DataTotalSize);
    EXPECT_EQ(1000u, parser.m_u32RawBufferDataSize);
    EXPECT_EQ(0u, parser.m_u32TagNum);
    EXPECT_EQ(kStep, parser.m_u32TagBufferNum);
    ASSERT_NE(nullptr, parser.m_pu8RawBuffer);
    EXPECT_TRUE(allZero(parser.m_pu8RawBuffer, 1000 + kZeroGuard));
    ASSERT_NE(nullptr, parser.m_pTagBuffer);
    EXPECT_TRUE(allZero(parser.m_pTagBuffer, kStep * sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG)));
    ASSERT_NE(nullptr, parser.m_pu8SubtitleBuffer);
    memset(parser.m_pu8SubtitleBuffer, 'x', 8192);  // the sanitizers know whether it is that large
}

TEST(SubtitleParser, InitTakesAnEmptyFile) {
    SubtitleParser parser;
    EXPECT_EQ(TRUE, parser.Init(0));
    EXPECT_EQ(0, parser.m_s64DataTotalSize);
    ASSERT_NE(nullptr, parser.m_pu8RawBuffer);
    EXPECT_TRUE(allZero(parser.m_pu8RawBuffer, kZeroGuard));
}

// Whatever the allocator rounds sizes to.
TEST(SubtitleParser, SixtyFourZerosStandBehindAnyData) {
    for (U64 size = 0; size < 32; ++size) {
        SubtitleParser parser;
        ASSERT_EQ(TRUE, parser.Init(size));
        ASSERT_LE(size + kZeroGuard, malloc_usable_size(parser.m_pu8RawBuffer));
        EXPECT_TRUE(allZero(parser.m_pu8RawBuffer, static_cast<size_t>(size) + kZeroGuard));
    }
}

TEST(SubtitleParser, InitReplacesWhatAnEarlierOneMade) {
    SubtitleParser parser;
    load(parser, "first");
    for (U32 i = 0; i < kStep; ++i) ASSERT_EQ(TRUE, parser.AddTag(i + 1, i + 2, i, kWhole));
    ASSERT_EQ(2 * kStep, parser.m_u32TagBufferNum);

    EXPECT_EQ(TRUE, parser.Init(7));  // leaks are the address sanitizer's to see
    EXPECT_EQ(0u, parser.m_u32TagNum);
    EXPECT_EQ(kStep, parser.m_u32TagBufferNum);
    EXPECT_EQ(7, parser.m_s64DataTotalSize);
    EXPECT_TRUE(allZero(parser.m_pu8RawBuffer, 7 + kZeroGuard));
    EXPECT_TRUE(allZero(parser.m_pTagBuffer, kStep * sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG)));
}

TEST(SubtitleParser, InitKeepsTheSizeWhenMemoryIsShort) {
    const U64 kSizes[] = {
        ~U64{0},                                     // the length of a source that could not be measured
        ~U64{0} - (kZeroGuard - 1),                  // does not fit together with its guard
        ~U64{0} - kZeroGuard,                        // fits, but nobody has so much
        U64{1} << 63,                                //
        static_cast<U64>(SIZE_MAX) - kZeroGuard,     // the largest that this machine can address
        static_cast<U64>(SIZE_MAX) - kZeroGuard + 1  // and the first that it cannot
    };
    for (const U64 size : kSizes) {
        SCOPED_TRACE(size);
        SubtitleParser parser;
        ASSERT_EQ(TRUE, parser.Init(10));
        EXPECT_EQ(FALSE, parser.Init(size));
        EXPECT_EQ(static_cast<S64>(size), parser.m_s64DataTotalSize);
        EXPECT_EQ(static_cast<U32>(size), parser.m_u32RawBufferDataSize);
        EXPECT_EQ(nullptr, parser.m_pu8RawBuffer);
        EXPECT_EQ(nullptr, parser.m_pTagBuffer);
        EXPECT_EQ(nullptr, parser.m_pu8SubtitleBuffer);
        EXPECT_EQ(kStep, parser.m_u32TagBufferNum);

        U8 buffer[16] = {};
        ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
        EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0));
        EXPECT_EQ(0u, parser.GetTag(0, 5));
        EXPECT_EQ(FALSE, parser.GetTagInfo(0, 0, &tag));
    }
}

// What does not fit into the address type must not come out as a small allocation.
TEST(SubtitleParser, InitDoesNotWrapAround) {
    if (sizeof(size_t) > 4) GTEST_SKIP() << "a 64-bit machine may have 4 GiB";
    for (const U64 size : {U64{1} << 32, (U64{1} << 32) + 100, (U64{1} << 32) - kZeroGuard}) {
        SubtitleParser parser;
        EXPECT_EQ(FALSE, parser.Init(size)) << size;
        EXPECT_EQ(nullptr, parser.m_pu8RawBuffer);
    }
}

TEST(SubtitleParser, DeinitFreesAndMayBeRepeated) {
    SubtitleParser parser;
    EXPECT_EQ(TRUE, parser.Deinit());
    load(parser, "data");
    parser.AddTag(1, 2, 0, kWhole);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(TRUE, parser.Deinit());
        EXPECT_EQ(nullptr, parser.m_pu8RawBuffer);
        EXPECT_EQ(nullptr, parser.m_pTagBuffer);
        EXPECT_EQ(nullptr, parser.m_pu8SubtitleBuffer);
    }
}

TEST(SubtitleParser, NothingIsReadFromABufferOfTheCallersAfterDeinit) {
    SubtitleParser parser;
    ASSERT_EQ(TRUE, parser.Init(100));
    EXPECT_EQ(100U, parser.mRawBufferLimit);
    parser.Deinit();
    EXPECT_EQ(0U, parser.mRawBufferLimit);
}

TEST(SubtitleParser, QueriesAfterDeinitFindNothing) {
    SubtitleParser parser;
    load(parser, "data");
    parser.m_eCodeType = kNative;
    parser.AddTag(1, 2, 0, kWhole);
    parser.Deinit();
    U8 buffer[16] = {'x'};
    ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
    EXPECT_EQ(1u, parser.GetTagNum());
    EXPECT_EQ(0u, parser.GetTag(0, 1));
    EXPECT_EQ(FALSE, parser.GetTagInfo(0, 0, &tag));
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0));
    EXPECT_EQ('x', buffer[0]);
}

TEST(SubtitleParser, CanBeInitialisedAgainAfterDeinit) {
    SubtitleParser parser;
    parser.Init(5);
    parser.Deinit();
    EXPECT_EQ(TRUE, parser.Init(6));
    EXPECT_NE(nullptr, parser.m_pu8RawBuffer);
}

// ------------------------------------------------------------------------------------------ default answers

TEST(SubtitleParser, AnswersForFormatsThatDoNot) {
    SubtitleParser parser;
    U8 buffer[16] = {'x'};
    stSubDecoderInfo info{1, 2, 3, 4};
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0, &info));
    EXPECT_EQ('x', buffer[0]);
    EXPECT_EQ(1, info.u16Width);
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(TRUE, parser.StopParse());
    EXPECT_EQ(TRUE, parser.RenderSubtitle());
    EXPECT_EQ(FALSE, parser.Refresh());
    EXPECT_EQ(FALSE, parser._render(buffer, 4, 4));
    void* producer = nullptr;
    parser.SetIGraphicBufferProducer(reinterpret_cast<const sp<IGraphicBufferProducer>&>(producer));
    EXPECT_EQ(nullptr, producer);
}

TEST(SubtitleParser, GetTrackInfoFillsNothing) {
    SubtitleParser parser;
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info, untouched;
    memset(static_cast<void*>(&info), 0x5A, sizeof info);
    memset(static_cast<void*>(&untouched), 0x5A, sizeof untouched);
    EXPECT_EQ(TRUE, parser.GetTrackInfo(3, &info));
    EXPECT_EQ(0, memcmp(&info, &untouched, sizeof info));
    EXPECT_EQ(TRUE, parser.GetTrackInfo(0, nullptr));
}

TEST(SubtitleParser, SetFrameRateIgnoresZero) {
    SubtitleParser parser;
    parser.SetFrameRate(0);
    EXPECT_EQ(0u, parser.m_u32FrameRrate);
    parser.SetFrameRate(23976);
    EXPECT_EQ(23976u, parser.m_u32FrameRrate);
    parser.SetFrameRate(0);
    EXPECT_EQ(23976u, parser.m_u32FrameRrate);
    parser.SetFrameRate(0xFFFFFFFF);
    EXPECT_EQ(0xFFFFFFFFu, parser.m_u32FrameRrate);
}

// Nothing is pure, so a player or a plug-in may derive and replace what it likes, and be destroyed by the base.
TEST(SubtitleParser, CanBeDerivedFrom) {
    struct Plugin : SubtitleParser {
        explicit Plugin(int& ends) : mEnds(ends) {}
        ~Plugin() override { ++mEnds; }
        U32 GetTagNum() override { return 77; }
        int& mEnds;
    };
    int ends = 0;
    SubtitleParser* const parser = new Plugin(ends);
    EXPECT_EQ(77u, parser->GetTagNum());
    EXPECT_EQ(TRUE, parser->Init(10));
    delete parser;
    EXPECT_EQ(1, ends);
}

// ------------------------------------------------------------------------------------------------- tag table

// kept(tag-without-table)
TEST(AddTag, WithoutATableReportsSuccessAndStoresNothing) {
    SubtitleParser parser;
    EXPECT_EQ(TRUE, parser.AddTag(1, 2, 3, kWhole));
    EXPECT_EQ(0u, parser.m_u32TagNum);
    EXPECT_EQ(0u, parser.GetTagNum());
}

TEST(AddTag, StoresTimesAndPositionInOrder) {
    SubtitleParser parser;
    parser.Init(0);
    EXPECT_EQ(TRUE, parser.AddTag(5000, 6000, 70, kWhole));
    EXPECT_EQ(TRUE, parser.AddTag(1000, 0xFFFFFFFF, (S64{1} << 40) + 1, kWhole));
    EXPECT_EQ(TRUE, parser.AddTag(0, 0, -1, kWhole));
    EXPECT_EQ(3u, parser.GetTagNum());
    EXPECT_EQ("5000-6000 @70; 1000- @1099511627777; 0-0 @-1", tagsOf(parser));
}

TEST(AddTag, DoesNotWriteTheDataType) {
    SubtitleParser parser;
    parser.Init(0);
    parser.AddTag(1, 2, 3, kPart);
    EXPECT_EQ(kWhole, parser.m_pTagBuffer[0].eDataType);
    parser.m_pTagBuffer[1].eDataType = kPart;
    parser.AddTag(1, 2, 3, kWhole);
    EXPECT_EQ(kPart, parser.m_pTagBuffer[1].eDataType);
}

TEST(AddTag, GrowsAWholeStepAsSoonAsTheTableIsFull) {
    SubtitleParser parser;
    parser.Init(0);
    for (U32 i = 0; i < kStep - 1; ++i) ASSERT_EQ(TRUE, parser.AddTag(i, i + 1, i + 2, kWhole));
    EXPECT_EQ(kStep, parser.m_u32TagBufferNum);
    EXPECT_EQ(TRUE, parser.AddTag(kStep - 1, kStep, kStep + 1, kWhole));
    EXPECT_EQ(kStep, parser.m_u32TagNum);
    EXPECT_EQ(2 * kStep, parser.m_u32TagBufferNum);
    for (U32 i = 0; i < kStep; ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& tag = parser.m_pTagBuffer[i];
        ASSERT_TRUE(tag.u32TimeStart == i && tag.u32TimeEnd == i + 1 && tag.s64Pos == i + 2) << i;
    }
    EXPECT_TRUE(allZero(parser.m_pTagBuffer + kStep, kStep * sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG)));
}

TEST(AddTag, GrowsWithoutUpperLimit) {
    SubtitleParser parser;
    parser.Init(0);
    for (U32 i = 0; i < 3 * kStep - 1; ++i) ASSERT_EQ(TRUE, parser.AddTag(i, i, i, kWhole));
    EXPECT_EQ(3 * kStep, parser.m_u32TagBufferNum);
    EXPECT_EQ(TRUE, parser.AddTag(3 * kStep - 1, 0, 0, kWhole));
    EXPECT_EQ(4 * kStep, parser.m_u32TagBufferNum);
    for (U32 i = 0; i < 3 * kStep; ++i) ASSERT_EQ(i, parser.m_pTagBuffer[i].u32TimeStart);
}

// ----------------------------------------------------------------------------------------------- GetTagInfo

TEST(GetTagInfo, CopiesTheTimesAlone) {
    SubtitleParser parser;
    parser.Init(0);
    parser.AddTag(1000, 2000, 30, kWhole);
    ST_MEDIA_SUBTITLE_PARSER_TAG tag{7, 8, 9, kPart};
    EXPECT_EQ(TRUE, parser.GetTagInfo(5, 0, &tag));
    EXPECT_EQ(1000u, tag.u32TimeStart);
    EXPECT_EQ(2000u, tag.u32TimeEnd);
    EXPECT_EQ(9, tag.s64Pos);
    EXPECT_EQ(kPart, tag.eDataType);
}

// kept(tag-behind-count)
TEST(GetTagInfo, IsBoundedByTheCapacity) {
    SubtitleParser parser;
    parser.Init(0);
    parser.AddTag(1000, 2000, 30, kWhole);
    for (const U32 index : {1u, kStep - 1}) {
        ST_MEDIA_SUBTITLE_PARSER_TAG tag{7, 8, 9, kWhole};
        EXPECT_EQ(TRUE, parser.GetTagInfo(0, index, &tag)) << index;
        EXPECT_EQ(0u, tag.u32TimeStart);
        EXPECT_EQ(0u, tag.u32TimeEnd);
    }
    for (const U32 index : {kStep, kStep + 1, 0xFFFFFFFFu}) {
        ST_MEDIA_SUBTITLE_PARSER_TAG tag{7, 8, 9, kWhole};
        EXPECT_EQ(FALSE, parser.GetTagInfo(0, index, &tag)) << index;
        EXPECT_EQ(7u, tag.u32TimeStart);
    }
    EXPECT_EQ(FALSE, parser.GetTagInfo(0, 0, nullptr));
}

TEST(GetTagInfo, FollowsAGrownTable) {
    SubtitleParser parser;
    parser.Init(0);
    for (U32 i = 0; i < kStep; ++i) parser.AddTag(i, i, i, kWhole);
    ST_MEDIA_SUBTITLE_PARSER_TAG tag{7, 8, 9, kWhole};
    EXPECT_EQ(TRUE, parser.GetTagInfo(0, 2 * kStep - 1, &tag));
    EXPECT_EQ(0u, tag.u32TimeStart);
    EXPECT_EQ(FALSE, parser.GetTagInfo(0, 2 * kStep, &tag));
}

TEST(GetTagInfo, WithoutATableIsFalse) {
    SubtitleParser parser;
    ST_MEDIA_SUBTITLE_PARSER_TAG tag{7, 8, 9, kWhole};
    EXPECT_EQ(FALSE, parser.GetTagInfo(0, 0, &tag));
    EXPECT_EQ(7u, tag.u32TimeStart);
}

// --------------------------------------------------------------------------------------------------- GetTag

struct Search {
    std::vector<U32> starts;
    S32 offset;
    U32 time;
    U32 found;
};

std::ostream& operator<<(std::ostream& out, const Search& search) {
    for (const U32 start : search.starts) out << start << ' ';
    return out << "offset " << search.offset << " time " << search.time;
}

const Search kSearches[] = {
    // starts, offset, time, index found
    {{}, 0, 5, 0},
    {{10}, 0, 0, 0},
    {{10}, 0, 9, 0},  // kept(before-first): before the first: 0, as for the first
    {{10}, 0, 10, 0},
    {{10}, 0, 0xFFFFFFFF, 0},
    {{10, 20}, 0, 9, 0},
    {{10, 20}, 0, 10, 0},
    {{10, 20}, 0, 19, 0},
    {{10, 20}, 0, 20, 1},
    {{10, 20}, 0, 0xFFFFFFFF, 1},  // behind the last one's end: still the last
    {{10, 20, 30, 40, 50}, 0, 9, 0},
    {{10, 20, 30, 40, 50}, 0, 29, 1},
    {{10, 20, 30, 40, 50}, 0, 30, 2},
    {{10, 20, 30, 40, 50}, 0, 31, 2},
    {{10, 20, 30, 40, 50}, 0, 49, 3},
    {{10, 20, 30, 40, 50}, 0, 50, 4},
    {{10, 0x80000000, 0xF0000000}, 0, 0x7FFFFFFF, 0},  // times compare as unsigned values
    {{10, 0x80000000, 0xF0000000}, 0, 0x80000000, 1},
    {{10, 0x80000000, 0xF0000000}, 0, 0xFFFFFFFF, 2},

    // the offset
    {{10, 20, 30}, 5, 24, 0},  // 19
    {{10, 20, 30}, 5, 25, 1},  // 20
    // kept(lookup-offset)
    {{10, 20, 30}, 25, 24, 1},               // below the offset: the time as it is, 24
    {{10, 20, 30}, 25, 25, 0},               // at the offset: 0, before the first
    {{10, 20, 30}, 25, 35, 0},               // 10
    {{10, 20, 30}, 25, 55, 2},               // 30
    {{10, 20, 30}, -5, 14, 0},               // 19
    {{10, 20, 30}, -5, 15, 1},               // 20
    {{10, 20, 30}, -5, 0x80000000, 2},       // a negative time, below any offset: as it is
    {{10, 20, 30}, -5, 0xFFFFFFFA, 2},       // -6 is below -5
    {{10, 20, 30}, -5, 0xFFFFFFFB, 0},       // -5 is not: 0
    {{10, 20, 30}, 5, 0xFFFFFFFF, 2},        // -1 is below 5
    {{10, 20, 30}, INT_MIN, 0x80000000, 0},  // 0
    {{10, 20, 30}, INT_MIN, 0x80000014, 1},  // 20

    // Tables out of order: the halving decides, and it is part of the contract.
    // kept(not-ascending)
    {{30, 10}, 0, 20, 1},              // 20 >= 10, the last
    {{30, 10}, 0, 5, 0},               // 5 < 10, 5 < 30
    {{30, 20, 10}, 0, 15, 0},          // 15 < 20, 15 < 30
    {{50, 10, 40, 20, 30}, 0, 25, 1},  // 25 < 40, one back: 25 >= 10
    {{10, 40, 20, 30}, 0, 25, 2},      // 25 >= 20, and the next is 30
    {{10, 40, 20, 30}, 0, 35, 3},      // 35 >= 20 and 35 >= 30, the last
    {{10, 40, 20, 30}, 0, 45, 3},
    {{10, 40, 20, 30}, 0, 15, 0},  // 15 < 20, one back: 15 < 40; 15 >= 10, and the next is 40
};

TEST(GetTag, FindsTheTagThatBeganLast) {
    for (const Search& search : kSearches) {
        SCOPED_TRACE(search);
        SubtitleParser parser;
        parser.Init(0);
        for (const U32 start : search.starts) parser.AddTag(start, start, 0, kWhole);
        parser.m_s32TimeOffsetMs = search.offset;
        EXPECT_EQ(search.found, parser.GetTag(0, search.time));
        EXPECT_EQ(search.found, parser.GetTag(9, search.time)) << "the track is ignored";
    }
}

// Every table length up to 40, every time at, before and behind every start.
TEST(GetTag, AgreesWithASimpleSearchOnAscendingStarts) {
    SubtitleParser parser;
    parser.Init(0);
    for (U32 count = 1; count <= 40; ++count) {
        parser.AddTag(count * 10, count * 10 + 3, 0, kWhole);
        for (U32 time = 0; time <= count * 10 + 11; ++time) {
            const U32 begun = time / 10;  // how many tags have begun
            const U32 expected = begun == 0 ? 0 : std::min(begun, count) - 1;
            ASSERT_EQ(expected, parser.GetTag(0, time)) << "time " << time << " of " << count << " tags";
        }
    }
}

// kept(same-start)
TEST(GetTag, FindsOneOfTwoThatBeganTogether) {
    SubtitleParser parser;
    parser.Init(0);
    for (const U32 start : {10u, 20u, 20u, 30u}) parser.AddTag(start, start, 0, kWhole);
    const U32 found = parser.GetTag(0, 25);
    EXPECT_TRUE(found == 1 || found == 2) << found;
    EXPECT_EQ(0u, parser.GetTag(0, 19));
    EXPECT_EQ(3u, parser.GetTag(0, 30));
}

// kept(overlap)
TEST(GetTag, OfOverlappingEntriesFindsTheOneThatBeganLast) {
    SubtitleParser parser;
    parser.Init(0);
    parser.AddTag(10, 100, 0, kWhole);
    parser.AddTag(20, 30, 0, kWhole);
    parser.AddTag(40, 90, 0, kWhole);
    EXPECT_EQ(0u, parser.GetTag(0, 19));
    EXPECT_EQ(1u, parser.GetTag(0, 20));
    EXPECT_EQ(1u, parser.GetTag(0, 35)) << "over, while the first one still lasts";
    EXPECT_EQ(2u, parser.GetTag(0, 95)) << "whatever still lasts";
}

TEST(GetTag, WithoutATableIsZero) {
    SubtitleParser parser;
    parser.m_u32TagNum = 5;
    EXPECT_EQ(0u, parser.GetTag(0, 100));
}

TEST(GetTag, SearchesAFullTable) {
    SubtitleParser parser;
    parser.Init(0);
    for (U32 i = 0; i < 20000; ++i) parser.AddTag(i * 100, i * 100 + 50, i, kWhole);
    for (U32 i = 0; i < 20000; i += 37) {
        ASSERT_EQ(i, parser.GetTag(0, i * 100));
        ASSERT_EQ(i, parser.GetTag(0, i * 100 + 99));
    }
    EXPECT_EQ(19999u, parser.GetTag(0, 0xFFFFFFFF));
}

// -------------------------------------------------------------------------------------------- clock, Compare

TEST(GetSystemTime, IsTheMonotonicClockInMilliseconds) {
    SubtitleParser parser;
    VirtualClock clock(61500);
    EXPECT_EQ(61500u, parser.GetSystemTime());
    clock.advance(1);
    EXPECT_EQ(61501u, parser.GetSystemTime());
    clock.advanceMicroseconds(999);
    EXPECT_EQ(61501u, parser.GetSystemTime()) << "cut, not rounded";
    clock.advanceMicroseconds(1);
    EXPECT_EQ(61502u, parser.GetSystemTime());
    clock.advance(497);
    clock.advanceMicroseconds(999);
    EXPECT_EQ(61999u, parser.GetSystemTime());
}

TEST(GetSystemTime, WrapsAtThirtyTwoBits) {
    SubtitleParser parser;
    VirtualClock clock(0xFFFFFFFF);
    EXPECT_EQ(0xFFFFFFFFu, parser.GetSystemTime());
    clock.advance(1);
    EXPECT_EQ(0u, parser.GetSystemTime());
    clock.advance(1234);
    EXPECT_EQ(1234u, parser.GetSystemTime());
}

TEST(Compare, IsTheDifferenceOfStartTimes) {
    const struct {
        U32 first, second;
        int result;
    } kRows[] = {
        {0, 0, 0},
        {1000, 400, 600},
        {400, 1000, -600},
        {0x7FFFFFFF, 0, INT_MAX},
        {0, 0xFFFFFFFF, 1},         // wraps
        {0x80000000, 0, INT_MIN},   // wraps
        {0, 0x80000000, INT_MIN},   // wraps
        {0x80000001, 0, -INT_MAX},  // wraps
    };
    for (const auto& row : kRows) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG a{row.first, 5, 9, kWhole}, b{row.second, 4, 8, kPart};
        EXPECT_EQ(row.result, Compare(&a, &b)) << row.first << " - " << row.second;
    }
}

// ---------------------------------------------------------------------------------------- encodings, conversions

TEST(IsUTF8Encode, LooksAtTheBytesAlone) {
    const struct {
        std::string bytes;
        BOOL expected;
    } kRows[] = {
        {"\xE4\xB8\xAD", TRUE}, {"\xF0\x9F\x98\x80", FALSE}, {"\xC3", TRUE}, {"\x80", FALSE}, {"", TRUE},
    };
    SubtitleParser parser;
    for (const auto& row : kRows) {
        EXPECT_EQ(row.expected, parser.IsUTF8Encode(row.bytes.data(), row.bytes.size())) << show(row.bytes);
    }
    EXPECT_EQ(TRUE, parser.IsUTF8Encode(nullptr, 0));
}

TEST(CheckPossibleEncodings, ReadsUpToTheFirstZero) {
    const struct {
        const char* text;
        U32 expected;
    } kRows[] = {
        {"", 7},
        {"ASCII", 7},
        {"\xA4\x40", 4},
        {"\xFE\x45", 2},
        {"\xB0\xA1", 6},
        {"\x81\x40", 3},
        {"\x81\x40\xB0\xA1\xA4\x40\xFE\x45", 4},  // the first decisive pair
        {"\xA4\x40\0\xFE\x45", 4},
    };
    SubtitleParser parser;
    for (const auto& row : kRows) {
        EXPECT_EQ(row.expected, parser.CheckPossibleEncodings(reinterpret_cast<const U8*>(row.text))) << show(row.text);
    }
    EXPECT_EQ(7u, parser.CheckPossibleEncodings(nullptr));
}

/// A parser of unmarked text, one entry for each of `texts`, that counts what the check asks of it.
struct Unmarked : SubtitleParser {
    explicit Unmarked(const std::vector<std::string>& texts) {
        std::string data = ".";  // the span of a last entry at position 0 is 0
        std::vector<S64> positions;
        for (const std::string& entry : texts) {
            positions.push_back(static_cast<S64>(data.size()));
            data += entry + "\r\n\r\n";
        }
        load(*this, data);
        m_eCodeType = kNative;
        for (const S64 pos : positions) AddTag(0, 0, pos, kWhole);
    }
    using SubtitleParser::GetData;
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index) override {
        EXPECT_EQ(0u, track);
        EXPECT_EQ(8192u, size);
        EXPECT_EQ(rounds++, index);
        EXPECT_TRUE(allZero(buf, size));
        return SubtitleParser::GetData(track, buf, size, index);
    }
    BOOL GetTagInfo(U32 track, U32 index, ST_MEDIA_SUBTITLE_PARSER_TAG* tag) override {
        EXPECT_EQ(0u, track);
        EXPECT_TRUE(allZero(tag, sizeof *tag));
        return index == refusedAt ? refusal : SubtitleParser::GetTagInfo(track, index, tag);
    }
    U32 CheckPossibleEncodings(const U8* text) override {
        ++classified;
        return SubtitleParser::CheckPossibleEncodings(text);
    }
    U32 rounds = 0;
    U32 classified = 0;
    U32 refusedAt = 0xFFFFFFFF;
    BOOL refusal = FALSE;
};

TEST(GetData2CheckPossibleEncodings, TheFirstDecisiveEntrySettlesTheCodeType) {
    const std::vector<std::string> ninetyNine(99, "x");
    std::vector<std::string> hundred = ninetyNine, more = ninetyNine;
    hundred.push_back("\xA4\x40");
    more.insert(more.end(), {"x", "\xA4\x40"});
    const struct {
        const char* name;
        std::vector<std::string> texts;
        EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE expected;
        U32 rounds;
    } kRows[] = {
        {"Big5 alone", {"\xA4\x40"}, kBig5, 1},
        {"GBK alone", {"\xFE\x45"}, kGbk, 1},
        {"neither of these decides", {"x", "\xB0\xA1", "\x81\x40", "\xFE\x45", "\xA4\x40"}, kGbk, 4},
        {"rounds behind the last entry read nothing", {"x"}, kNative, 100},
        {"no entry", {}, kNative, 100},
        {"the hundredth entry", hundred, kBig5, 100},
        {"the next one is not looked at", more, kNative, 100},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        Unmarked parser(row.texts);
        const LogCapture log;
        parser.GetData2CheckPossibleEncodings();
        EXPECT_EQ(row.expected, parser.m_eCodeType);
        EXPECT_EQ(row.rounds, parser.rounds);
        EXPECT_EQ(row.rounds, parser.classified);
        EXPECT_EQ(std::vector<LogLine>{}, log.lines());
    }
}

TEST(GetData2CheckPossibleEncodings, GivesEachEntryABufferOfZeros) {
    /// Writes more into the buffer than it tells, which finds it zeroed.
    struct Untidy : Unmarked {
        Untidy(U32 bytes, U32 count) : Unmarked({"x"}), written(bytes), told(count) {}
        using SubtitleParser::GetData;
        U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index) override {
            Unmarked::GetData(track, buf, size, index);
            memset(buf, 'x', written);
            return told;
        }
        U32 CheckPossibleEncodings(const U8*) override { return 7; }  // none but zeros end what fills the buffer
        const U32 written;
        const U32 told;
    };
    constexpr struct {
        U32 written, told;
    } kRows[] = {{1, 0},       {100, 10},    {8192, 0},    {8192, 8192},
                 {8192, 8191}, {8186, 8185}, {8192, 9000}, {10, 0xFFFFFFFF}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.written);
        Untidy parser(row.written, row.told);
        parser.GetData2CheckPossibleEncodings();
        EXPECT_EQ(100u, parser.rounds);
    }
}

TEST(GetData2CheckPossibleEncodings, IsForUnmarkedTextAlone) {
    for (U32 codeType = 0; codeType < 15; ++codeType) {
        Unmarked parser({"\xA4\x40"});
        parser.m_eCodeType = static_cast<EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE>(codeType);
        parser.GetData2CheckPossibleEncodings();
        EXPECT_EQ(codeType == kNative ? kBig5 : static_cast<EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE>(codeType),
                  parser.m_eCodeType);
        EXPECT_EQ(codeType == kNative ? 1u : 0u, parser.rounds);
    }
}

TEST(GetData2CheckPossibleEncodings, EndsWhereTheTableDoes) {
    for (const BOOL refusal : {BOOL{FALSE}, BOOL{2}}) {  // anything but TRUE
        Unmarked parser({"x", "y", "\xA4\x40"});
        parser.refusedAt = 2;
        parser.refusal = refusal;
        parser.GetData2CheckPossibleEncodings();
        EXPECT_EQ(kNative, parser.m_eCodeType);
        EXPECT_EQ(2u, parser.rounds);
    }
    SubtitleParser tableless;
    tableless.m_eCodeType = kNative;
    tableless.GetData2CheckPossibleEncodings();
    EXPECT_EQ(kNative, tableless.m_eCodeType);
}

// An entry that ends behind a tag has no 0 of its own; what an earlier one left must not be taken for its text
TEST(GetData2CheckPossibleEncodings, EveryEntryIsReadIntoAClearedBuffer) {
    Unmarked parser({"xx\xB0\xA1", "<b>\r\n\r\n", "\xFE\x45"});
    parser.GetData2CheckPossibleEncodings();  // each round looks at the buffer that it is given
    EXPECT_EQ(kGbk, parser.m_eCodeType);
    EXPECT_EQ(3u, parser.rounds);
}

TEST(GetData2CheckPossibleEncodings, GivesItsMemoryBack) {
    SubtitleParser parser;
    load(parser, "x");
    parser.m_eCodeType = kNative;
    parser.GetData2CheckPossibleEncodings();
    const size_t before = heldBytes();
    for (int i = 0; i < 100; ++i) parser.GetData2CheckPossibleEncodings();
    EXPECT_LT(heldBytes(), before + size_t{50} * 8192);
}

TEST(Conversions, AreReachedThroughTheParser) {
    const struct {
        U16 (SubtitleParser::*convert)(U16);
        U16 code, unicode;
    } kDouble[] = {
        {&SubtitleParser::GBToUnicode, 0x8140, 0x4E02},  {&SubtitleParser::GBToUnicode, 0x41, 0x41},
        {&SubtitleParser::GBToUnicode, 0xFF00, 0xFF00},  {&SubtitleParser::GBToUnicode, 0x817F, 0xFFFF},
        {&SubtitleParser::GBToUnicode, 0xFEFE, 0xE4C5},  {&SubtitleParser::BIG52Unicode, 0xA140, 0x3000},
        {&SubtitleParser::BIG52Unicode, 0xA17F, 0xFFFF}, {&SubtitleParser::BIG52Unicode, 0xF9D5, 0x9F98},
        {&SubtitleParser::BIG52Unicode, 0xF9D6, 0xF9D6},
    };
    const struct {
        U16 (SubtitleParser::*convert)(const U8);
        U8 code;
        U16 unicode;
    } kSingle[] = {
        {&SubtitleParser::Farsi2Unicode, 0x7F, 0x7F},     {&SubtitleParser::Farsi2Unicode, 0x81, 0x067E},
        {&SubtitleParser::Farsi2Unicode, 0xFF, 0x06D2},   {&SubtitleParser::Spanish2Unicode, 0x81, 0xFFFF},
        {&SubtitleParser::Spanish2Unicode, 0x83, 0x0192}, {&SubtitleParser::Spanish2Unicode, 0xE9, 0x00E9},
        {&SubtitleParser::Hebrew2Unicode, 0xA4, 0xA4},    {&SubtitleParser::Hebrew2Unicode, 0xC0, 0xFFFF},
        {&SubtitleParser::Hebrew2Unicode, 0xE0, 0x05D0},  {&SubtitleParser::Hebrew2Unicode, 0xFF, 0xFF},
    };
    SubtitleParser parser;
    for (const auto& row : kDouble) {
        EXPECT_EQ(row.unicode, (parser.*row.convert)(row.code)) << &row - kDouble << ": " << std::hex << row.code;
    }
    for (const auto& row : kSingle) {
        EXPECT_EQ(row.unicode, (parser.*row.convert)(row.code)) << &row - kSingle << ": " << std::hex << U32{row.code};
    }

    const U8 utf8[] = {0xE4, 0xB8, 0xAD};
    U16 units[] = {0xEEEE, 0xEEEE};
    EXPECT_EQ(0, parser.UTF8ToUCS2(utf8, units, 3, 1));
    EXPECT_EQ(2, parser.UTF8ToUCS2(utf8, units, 3, 2));
    EXPECT_EQ(0x4E2D, units[0]);
    EXPECT_EQ(0xEEEE, units[1]);  // no terminator

    U16 accented[] = {0x00E9};
    U8 bytes[] = {0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(2, parser.UnicodeToUTF8(accented, 2, bytes));
    EXPECT_EQ(0, memcmp(bytes, "\xC3\xA9\0\xEE", 4));
    EXPECT_EQ(0, parser.UnicodeToUTF8(accented, 1, bytes));
    EXPECT_EQ(0, memcmp(bytes, "\0\xA9\0\xEE", 4));
}

TEST(ChangeUnicodeBigToUnicode, SwapsInPlace) {
    const struct {
        U32 len;
        const char* expected;
    } kRows[] = {
        {4, "A\0B\0"}, {3, "A\0\0B"}, {2, "A\0\0B"}, {1, "\0A\0B"}, {0, "\0A\0B"},
    };
    const LogCapture log;
    for (const auto& row : kRows) {
        U8 bytes[] = {0, 'A', 0, 'B'};
        ChangeUnicodeBigToUnicode(bytes, row.len);
        EXPECT_EQ(0, memcmp(row.expected, bytes, sizeof bytes)) << row.len;
    }
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST(ChangeUnicodeBigToUnicode, NamesAnotherParserWhenThereIsNoBuffer) {
    const LogCapture log;
    ChangeUnicodeBigToUnicode(nullptr, 4);
    EXPECT_EQ((std::vector<LogLine>{{3, "SubtitleParserSubViewer20", "Buffer is NULL !!!\n"}}), log.lines());
}

}  // namespace
