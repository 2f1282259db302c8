// The order that a table is put in, and what happens at its ends.
#include "subtitle/parser/TagTable.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <random>
#include <vector>

#include "tests/support/Cuts.h"
#include "tests/support/HeldMemory.h"
#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"

namespace {

using namespace test;

/// A start, and where the tag stood.
using Tags = std::vector<std::pair<U32, S64>>;
using Record = ST_MEDIA_SUBTITLE_PARSER_TAG;

std::vector<Record> recordsOf(const std::vector<U32>& starts) {
    std::vector<Record> records;
    for (const U32 start : starts) {
        records.push_back({start, ~start, static_cast<S64>(records.size()), kWhole});
    }
    return records;
}

Tags tagsOf(const Record* records, size_t count) {
    Tags tags;
    for (size_t i = 0; i < count; ++i) {
        EXPECT_EQ(~records[i].u32TimeStart, records[i].u32TimeEnd);
        tags.emplace_back(records[i].u32TimeStart, records[i].s64Pos);
    }
    return tags;
}

Tags sorted(const std::vector<U32>& starts) {
    SubtitleParser parser;
    load(parser, "");
    for (const Record& record : recordsOf(starts)) {
        EXPECT_EQ(TRUE, parser.AddTag(record.u32TimeStart, record.u32TimeEnd, record.s64Pos, kWhole));
    }
    vxsubtitle::TagTable(parser).sort();
    EXPECT_EQ(starts.size(), parser.GetTagNum());
    return tagsOf(parser.m_pTagBuffer, starts.size());
}

Tags stablySorted(const std::vector<U32>& starts) {
    std::vector<Record> records = recordsOf(starts);
    std::stable_sort(records.begin(), records.end(),
                     [](const Record& a, const Record& b) { return Compare(&a, &b) < 0; });
    return tagsOf(records.data(), records.size());
}

Tags quicklySorted(const std::vector<U32>& starts) {
    std::vector<Record> records = recordsOf(starts);
    if (!records.empty()) qsort(records.data(), records.size(), sizeof records[0], Compare);
    return tagsOf(records.data(), records.size());
}

/// A fixed sequence, the same on every machine.
class Random {
public:
    explicit Random(U32 seed) : mEngine(seed) {}
    U32 operator()() { return static_cast<U32>(mEngine()); }

private:
    std::mt19937 mEngine;
};

/// By halves, those of the left before equal ones of the right: what a sort does whose order is none.
void sortByHalves(std::vector<Record>& records) {
    if (records.size() < 2) return;
    std::vector<Record> left(records.begin(), records.begin() + static_cast<std::ptrdiff_t>(records.size() / 2));
    std::vector<Record> right(records.begin() + static_cast<std::ptrdiff_t>(records.size() / 2), records.end());
    sortByHalves(left);
    sortByHalves(right);
    size_t l = 0, r = 0;
    for (Record& record : records) {
        const bool fromLeft = r == right.size() || (l < left.size() && Compare(&left[l], &right[r]) <= 0);
        record = fromLeft ? left[l++] : right[r++];
    }
}

TEST(TagTableSort, KeepsTheOrderOfEqualStarts) {
    for (const std::vector<U32>& starts : std::vector<std::vector<U32>>{
             {},
             {7},
             {1, 2},
             {2, 1},
             {1, 1, 1},
             {2, 1, 2, 1, 2},
             {3, 2, 1, 0},
             {0, 1, 2, 3, 2},
             {0x7FFFFFFF, 0, 1},
             {0xFFFFFFFF, 0, 1, 0xFFFFFFFE},  // times around 0
             {0x80000000, 0x7FFFFFFF, 0x80000001},
             {0, 0, 0x7FFFFFFF, 0x7FFFFFFF, 5},
         }) {
        EXPECT_EQ(stablySorted(starts), sorted(starts)) << testing::PrintToString(starts);
    }
    Random random(4711);
    for (unsigned round = 0; round < scaled(3000); ++round) {
        const size_t count = random() % 70 + (round % 50 == 0 ? 9000 : 0);
        const U32 range = 1 + random() % (round % 2 == 0 ? 10 : 0x7FFFFFFF);
        const U32 first = round % 3 == 0 ? random() : 0;  // times that wrap
        std::vector<U32> starts;
        for (size_t i = 0; i < count; ++i) starts.push_back(first + random() % range);
        if (round % 5 == 0) {
            std::sort(starts.begin(), starts.end(), [first](U32 a, U32 b) { return a - first < b - first; });
        }
        ASSERT_EQ(stablySorted(starts), sorted(starts)) << round;
    }
}

TEST(TagTableSort, IsAsTheCLibrarysWhereNoneAreEqual) {
    std::mt19937 random(815);
    for (const size_t count : {0, 1, 2, 3, 5, 8191, 8192, 8193, 20001}) {
        for (const U32 first : {0u, 0xFFFFF000u}) {
            std::vector<U32> starts;
            for (size_t i = 0; i < count; ++i) starts.push_back(first + static_cast<U32>(i) * 3);
            EXPECT_EQ(quicklySorted(starts), sorted(starts)) << count;
            std::reverse(starts.begin(), starts.end());
            EXPECT_EQ(quicklySorted(starts), sorted(starts)) << count;
            std::shuffle(starts.begin(), starts.end(), random);
            EXPECT_EQ(quicklySorted(starts), sorted(starts)) << count;
        }
    }
}

// A table of neighbours in order is in none when its ends are too far apart for a signed difference.
TEST(TagTableSort, ComparesAcrossMoreThanHalfOfAllTimes) {
    Random random(99);
    std::vector<std::vector<U32>> tables{{0, 0x40000000, 0x80000000},
                                         {0, 0x7FFFFFFF},
                                         {0, 0x80000000},
                                         {0, 0x7FFFFFFF, 0x80000000},
                                         {0, 0x60000000, 0xC0000000, 0xC0000001, 0xF0000000}};
    for (unsigned round = 0; round < scaled(300); ++round) {
        std::vector<U32> starts;
        for (size_t count = random() % 40; count > 0; --count) starts.push_back(random());
        if (round % 2 == 0) std::sort(starts.begin(), starts.end());
        tables.push_back(starts);
    }
    for (const std::vector<U32>& starts : tables) {
        std::vector<Record> records = recordsOf(starts);
        sortByHalves(records);
        ASSERT_EQ(tagsOf(records.data(), records.size()), sorted(starts)) << testing::PrintToString(starts);
    }
}

TEST(TagTableSort, HasNothingToDoWithoutATable) {
    SubtitleParser parser;
    parser.m_u32TagNum = 5;
    vxsubtitle::TagTable(parser).sort();
    EXPECT_EQ(5u, parser.m_u32TagNum);
}

// The C library's sort, which takes over without memory, would exchange equal ones.
TEST(TagTableSort, LeavesATableInOrderAloneWithoutMemory) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    const std::vector<U32> same(1000, 7);
    std::vector<U32> apart(1000, 0);  // as far as starts in order can be
    std::fill(apart.begin() + 500, apart.end(), 0x7FFFFFFF);
    for (const std::vector<U32>& starts : {same, apart}) {
        std::vector<Record> records = recordsOf(starts);
        records.insert(records.begin(), {100, ~100U, 0, kWhole});  // in front of the table
        SubtitleParser parser;
        parser.m_pTagBuffer = &records[1];
        parser.m_u32TagNum = parser.m_u32TagBufferNum = 1000;
        {
            const AllocationFails fails(1);
            vxsubtitle::TagTable(parser).sort();
        }
        parser.m_pTagBuffer = nullptr;
        EXPECT_EQ(stablySorted(starts), tagsOf(&records[1], starts.size()));
    }
}

TEST(TagTableSort, GivesItsMemoryBack) {
    std::vector<U32> starts;
    for (U32 i = 9000; i > 0; --i) starts.push_back(i);
    sorted(starts);
    const size_t before = heldBytes();
    for (int i = 0; i < 20; ++i) sorted(starts);
    EXPECT_LT(heldBytes(), before + 10 * starts.size() * sizeof(Record));
}

TEST(TagTableSort, NeedsNoMemory) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    std::vector<U32> starts;
    for (U32 i = 1000; i > 0; --i) starts.push_back(i);
    SubtitleParser parser;
    load(parser, "");
    for (const Record& record : recordsOf(starts))
        parser.AddTag(record.u32TimeStart, record.u32TimeEnd, record.s64Pos, kWhole);
    {
        const AllocationFails fails(1);
        vxsubtitle::TagTable(parser).sort();
    }
    EXPECT_EQ(stablySorted(starts), tagsOf(parser.m_pTagBuffer, starts.size()));
}

// The count is a field that anybody may write.
TEST(TagTable, StoresNothingBehindItsEnd) {
    for (const U32 count : {8192u, 8193u, 100000u, 0xFFFFFFF0u}) {
        SCOPED_TRACE(count);
        SubtitleParser parser;
        load(parser, "");
        parser.m_u32TagNum = count;
        EXPECT_EQ(TRUE, parser.AddTag(1, 2, 3, kWhole));
        EXPECT_EQ(count + 1, parser.GetTagNum());
        EXPECT_EQ(16384u, parser.m_u32TagBufferNum) << "it has grown";
        for (U32 i = 0; i < parser.m_u32TagBufferNum; ++i) {
            const Record& tag = parser.m_pTagBuffer[i];
            ASSERT_EQ(0, tag.u32TimeStart | tag.u32TimeEnd | tag.s64Pos) << i;
        }
        parser.m_u32TagNum = 16383;
        EXPECT_EQ(TRUE, parser.AddTag(1, 2, 3, kWhole));
        EXPECT_EQ(1u, parser.m_pTagBuffer[16383].u32TimeStart);
    }
}

// A range of tags comes from a track's fields, which anybody may write, too: what lies outside the table reads 0.
TEST(TagTable, IsLookedUpInAnyRange) {
    SubtitleParser parser;
    load(parser, "");
    for (U32 i = 1; i <= 6; ++i) EXPECT_EQ(TRUE, parser.AddTag(1000 * i, 0, 0, kWhole));
    const struct {
        U32 first, last, ms, tag;
    } kRows[] = {
        {0, 5, 3999, 2},                    // as it should be
        {5, 0, 4000, 3},                    // its end in front of its start: the middle of both
        {5, 0, 3999, 2},                    // the one before it
        {5, 0, 2999, 0},                    // and no more
        {5, 3, 0xFFFFFFFF, 4},              //
        {0, 0x7FFFFFFE, 5000, 0x7FFFFFFE},  // all behind the table begin at 0
        {4, 8192, 0xFFFFFFFF, 8192},        //
        {8191, 8192, 0, 8192},              //
        {0xFFFFFFFF, 0xFFFFFFFF, 0, 0xFFFFFFFF},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(row.tag, vxsubtitle::lookUpTag(parser, row.ms, row.first, row.last))
            << row.first << " to " << row.last << " at " << row.ms;
    }
}

// The steps of the search one after the other: in a table out of order they decide which tag is found.
U32 stepByStep(const std::vector<U32>& starts, U32 t, S64 low, S64 last) {
    for (S64 high = last + 1;;) {
        const S64 middle = (low + high) / 2;
        const auto at = [&](S64 i) { return starts.at(static_cast<size_t>(i)); };
        if (t < at(middle)) {
            if (low + high < 2) return 0;
            high = middle - 1;
            if (t >= at(high)) return static_cast<U32>(high);
            if (low >= middle) return 0;
        } else {
            if (middle >= last || t < at(middle + 1)) return static_cast<U32>(middle);
            low = middle + 1;
            if (middle >= high) return 0;
        }
    }
}

TEST(TagTable, IsLookedUpStepByStepInAnyOrder) {
    std::mt19937 random(1);
    for (U32 tags = 1; tags <= 40; ++tags) {
        for (U32 times : {3u, 12u, 1000u}) {
            SubtitleParser parser;
            load(parser, "");
            std::vector<U32> starts;
            for (U32 i = 0; i < tags; ++i) starts.push_back(static_cast<U32>(random() % times));
            for (const U32 start : starts) EXPECT_EQ(TRUE, parser.AddTag(start, 0, 0, kWhole));
            // a range of the first tag, or one that has others before it
            for (const U32 first : {0u, tags / 3, tags - 1}) {
                for (U32 t = 0; t <= times; t += 1 + times / 50) {
                    ASSERT_EQ(stepByStep(starts, t, first, tags - 1), vxsubtitle::lookUpTag(parser, t, first, tags - 1))
                        << tags << " tags below " << times << ", from " << first << " at " << t;
                }
            }
        }
    }
}

TEST(TagTable, IsListedOnlyWhereThereIsOne) {
    SubtitleParser parser;
    for (const U32 count : {0u, 5u}) {
        parser.m_u32TagNum = count;
        const LogCapture log;
        vxsubtitle::logTags(parser, "any");
        EXPECT_EQ((std::vector<std::string>{kRule, kRule}), log.texts()) << count;
    }
}

TEST(TagTable, IsNeitherSortedNorListedWhenItsWorkerIsAskedToStop) {
    const std::vector<U32> starts{3, 2, 1};
    for (const bool asked : {true, false}) {
        SubtitleParser parser;
        load(parser, "");
        for (const Record& record : recordsOf(starts)) {
            EXPECT_EQ(TRUE, parser.AddTag(record.u32TimeStart, record.u32TimeEnd, record.s64Pos, kWhole));
        }
        if (asked) parser.mWorkerState = vxsubtitle::StopRequest::kBit;
        const LogCapture log;
        vxsubtitle::logTags(parser, "any");
        EXPECT_EQ(asked ? 2u : 2u + starts.size(), log.texts().size()) << "a rule in front and one behind";
        vxsubtitle::TagTable(parser).sort();
        EXPECT_EQ(asked ? (Tags{{3, 0}, {2, 1}, {1, 2}}) : (Tags{{1, 2}, {2, 1}, {3, 0}}),
                  tagsOf(parser.m_pTagBuffer, starts.size()));
    }
}

}  // namespace
