// Memory that runs out: what a parser is left with, and what the player is told.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "subtitle/SubtitleParserSRT.h"
#include "tests/support/Interpose.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"

namespace {

using namespace android;
using namespace test;

constexpr U32 kStep = 8192;
constexpr size_t kTagBytes = sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG);

class Allocation : public testing::Test {
    void SetUp() override {
        if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    }
};

// Each of the three buffers in turn: none stays.
TEST_F(Allocation, InitLeavesNothingBehind) {
    const struct {
        const char* what;
        size_t from, to;  // bytes
    } kRows[] = {
        {"raw buffer", 1000000, SIZE_MAX},
        {"tag table", kStep * kTagBytes, 999999},
        {"text work buffer", 8192, 8192},
        {"everything", 1, SIZE_MAX},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.what);
        SubtitleParser parser;
        BOOL result = TRUE;
        {
            const AllocationFails fails(row.from, row.to);
            result = parser.Init(1000000);
        }
        EXPECT_EQ(FALSE, result);
        EXPECT_EQ(nullptr, parser.m_pu8RawBuffer);
        EXPECT_EQ(nullptr, parser.m_pTagBuffer);
        EXPECT_EQ(nullptr, parser.m_pu8SubtitleBuffer);
        EXPECT_EQ(1000000, parser.m_s64DataTotalSize);
        EXPECT_EQ(kStep, parser.m_u32TagBufferNum);
        EXPECT_EQ(TRUE, parser.AddTag(1, 2, 3, kWhole)) << "no table: success, nothing stored";
        EXPECT_EQ(0u, parser.GetTagNum());
        EXPECT_EQ(TRUE, parser.Init(1000000)) << "a later call may succeed";
    }
}

TEST_F(Allocation, ASecondInitThatFailsKeepsNothingOfTheFirst) {
    SubtitleParser parser;
    load(parser, "data");
    parser.AddTag(1, 2, 0, kWhole);
    {
        const AllocationFails fails(kStep * kTagBytes);
        EXPECT_EQ(FALSE, parser.Init(10));
    }
    EXPECT_EQ(nullptr, parser.m_pu8RawBuffer);
    EXPECT_EQ(nullptr, parser.m_pTagBuffer);
    EXPECT_EQ(0u, parser.m_u32TagNum);
}

TEST_F(Allocation, ATableThatCannotGrowIsGone) {
    for (U32 steps = 1; steps <= 2; ++steps) {
        SubtitleParser parser;
        load(parser, "data");
        parser.m_eCodeType = kNative;
        for (U32 i = 0; i < steps * kStep - 1; ++i) ASSERT_EQ(TRUE, parser.AddTag(i, i, 0, kWhole));
        ASSERT_EQ(steps * kStep, parser.m_u32TagBufferNum);
        BOOL result = TRUE;
        {
            const AllocationFails fails((steps + 1) * kStep * kTagBytes);
            result = parser.AddTag(5, 6, 0, kWhole);
        }
        EXPECT_EQ(FALSE, result);
        EXPECT_EQ(nullptr, parser.m_pTagBuffer);
        EXPECT_EQ(0u, parser.m_u32TagNum);
        EXPECT_EQ(0u, parser.m_u32TagBufferNum);

        // What the player finds then.
        U8 buffer[16];
        ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
        EXPECT_EQ(TRUE, parser.AddTag(1, 2, 3, kWhole));
        EXPECT_EQ(0u, parser.GetTagNum());
        EXPECT_EQ(0u, parser.GetTag(0, 100));
        EXPECT_EQ(FALSE, parser.GetTagInfo(0, 0, &tag));
        EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0));
    }
}

/// An SRT file of so many entries.
std::string fileOf(int entries) {
    std::string file;
    for (int i = 0; i < entries; ++i) file += "0:0:1,0 --> 0:0:2,0\nx\n";
    return file;
}

TEST_F(Allocation, BeginParseFailsAfterItsLimitWhenTheTableCannotGrow) {
    const TempFile file(fileOf(kStep));
    SubtitleParserSRT parser(const_cast<char*>(file.path()));
    const unsigned threads = threadCount();
    VirtualClock clock;
    const LogCapture log;
    BOOL result = TRUE;
    {
        const AllocationFails fails(2 * kStep * kTagBytes, 2 * kStep * kTagBytes);
        result = beginSlowly(parser, clock);
    }
    EXPECT_EQ(FALSE, result);
    EXPECT_EQ(FALSE, parser.bParseFinish);
    EXPECT_EQ(std::vector<unsigned>(1000, 100000), clock.sleeps());
    EXPECT_EQ(0u, parser.GetTagNum());
    EXPECT_EQ(nullptr, parser.m_pTagBuffer);
    EXPECT_EQ(threads, threadCount());
    const std::vector<std::string> texts = log.texts();
    ASSERT_EQ(7u, texts.size());
    EXPECT_EQ("Zorb_MediaSubtitleParserSRT::BeginParse -> Wait...\n", texts[3]);
    EXPECT_EQ("Zorb_MediaSubtitleParserSRT::ParserThread -> Finished : Tag num = 0\n", texts[4]);
    EXPECT_EQ("Zorb_MediaSubtitleParserSRT::BeginParse -> 00000000\n", texts[5]);
    EXPECT_EQ("Zorb_MediaSubtitleParserSRT::BeginParse -> Exit\n", texts[6]);
}

TEST_F(Allocation, OneEntryLessNeedsNoGrowth) {
    const TempFile file(fileOf(kStep - 1));
    SubtitleParserSRT parser(const_cast<char*>(file.path()));
    BOOL result = FALSE;
    {
        const AllocationFails fails(2 * kStep * kTagBytes, 2 * kStep * kTagBytes);
        result = parser.BeginParse();
    }
    EXPECT_EQ(TRUE, result);
    EXPECT_EQ(kStep - 1, parser.GetTagNum());
}

TEST_F(Allocation, BeginParseFailsAtOnceWithoutBuffers) {
    const TempFile file(fileOf(10));
    SubtitleParserSRT parser(const_cast<char*>(file.path()));
    const VirtualClock clock;
    const LogCapture log;
    BOOL result = TRUE;
    {
        const AllocationFails fails(kStep * kTagBytes);
        result = parser.BeginParse();
    }
    EXPECT_EQ(FALSE, result);
    EXPECT_EQ(std::vector<unsigned>{}, clock.sleeps());
    EXPECT_EQ(pthread_t{0}, parser.m_threadParser);
    const std::vector<std::string> texts = log.texts();
    ASSERT_EQ(3u, texts.size());
    EXPECT_EQ("Zorb_MediaSubtitleParserSRT::BeginParse -> Exit\n", texts[2]);
}

TEST_F(Allocation, TheCheckForEncodingsNeedsABuffer) {
    SubtitleParser parser;
    load(parser, ".\xA4\x40");
    parser.m_eCodeType = kNative;
    parser.AddTag(0, 0, 1, kWhole);
    {
        const AllocationFails fails(8192, 8192);
        parser.GetData2CheckPossibleEncodings();
    }
    EXPECT_EQ(kNative, parser.m_eCodeType);
    parser.GetData2CheckPossibleEncodings();
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5, parser.m_eCodeType);
}

}  // namespace
