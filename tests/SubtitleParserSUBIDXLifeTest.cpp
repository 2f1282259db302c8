// The VobSub parser's life: construction, both ways to begin, whose descriptors are whose, worker, limits, memory.
#include "subtitle/SubtitleParserSUBIDX.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sched.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "subtitle/MPEGSubtitleDecoder.h"
#include "tests/support/Interpose.h"
#include "tests/support/VobSubIndex.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

using namespace android;
using namespace test;

namespace {

constexpr char kPathDone[] = "Zorb_MediaSubtitleParserSRT::BeginParse -> 00000000\n";
constexpr char kDescriptorDone[] = "SubtitleParserSUBIDX::BeginParse -> 00000000\n";

}  // namespace

// --- construction -----------------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, StartsEmpty) {
    SubtitleParserSUBIDX parser(7, 8, 9, 10);
    EXPECT_NE(nullptr, parser.m_pDecoder);
    EXPECT_TRUE(parser.m_vPrivateTrackInfo.empty());
    EXPECT_EQ(0xFF000000U, parser.m_au32Palette[0]);
    EXPECT_EQ(0xFF000000U, parser.m_au32Palette_result[0]);
    EXPECT_EQ(0U, parser.m_au32Palette[15]);
    EXPECT_EQ(0U, parser.m_u32OriginX + parser.m_u32OriginY + parser.m_u32Width + parser.m_u32Height);
    EXPECT_EQ(nullptr, parser.fpIdx);
    EXPECT_EQ(nullptr, parser.fpSub);
    EXPECT_EQ(0, parser.m_s64DataTotalSizeSub);
    EXPECT_EQ(0x10000U, parser.m_u32RawBufferSize);
    EXPECT_EQ(0x10000U, parser.m_u32SubtitleBufferSize);
    EXPECT_EQ(8192U, parser.m_u32TagBufferNum);
    EXPECT_EQ(0x10000U, parser.mRawBufferLimit);
    EXPECT_TRUE(parser.m_NativeWindow == nullptr);
    EXPECT_EQ('\0', parser.m_pSubtitleName[0]);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN, parser.m_eCodeType);
    EXPECT_EQ(FALSE, parser.bParseFinish);
    for (U32 i = 0; i < 1920 * 1080; ++i) ASSERT_EQ(0, parser.m_buffer[i]);
    for (U32 i = 0; i < 0x10000; ++i) ASSERT_EQ(0, parser.m_pu8RawBuffer[i] | parser.m_pu8SubtitleBuffer[i]);
    EXPECT_EQ(0U, parser.m_pTagBuffer[8191].u32TimeStart);
    parser.m_u32TagNum = 5;
    EXPECT_EQ(TRUE, parser.Init(100));
    EXPECT_EQ(0U, parser.m_u32TagNum);
}

TEST(SubtitleParserSUBIDX, FieldsStandInTheirOrder) {
    const size_t kOffsets[] = {
        offsetof(SubtitleParserSUBIDX, m_u8TimeStampTagSizeCase),  // the base's last
        offsetof(SubtitleParserSUBIDX, m_pDecoder),
        offsetof(SubtitleParserSUBIDX, m_vPrivateTrackInfo),
        offsetof(SubtitleParserSUBIDX, m_au32Palette),
        offsetof(SubtitleParserSUBIDX, m_au32Palette_result),
        offsetof(SubtitleParserSUBIDX, m_u32OriginX),
        offsetof(SubtitleParserSUBIDX, m_u32OriginY),
        offsetof(SubtitleParserSUBIDX, m_u32Width),
        offsetof(SubtitleParserSUBIDX, m_u32Height),
        offsetof(SubtitleParserSUBIDX, fpIdx),
        offsetof(SubtitleParserSUBIDX, fpSub),
        offsetof(SubtitleParserSUBIDX, m_s64DataTotalSizeSub),
        offsetof(SubtitleParserSUBIDX, m_u32RawBufferSize),
        offsetof(SubtitleParserSUBIDX, m_u32SubtitleBufferSize),
        offsetof(SubtitleParserSUBIDX, m_NativeWindow),
        offsetof(SubtitleParserSUBIDX, m_buffer),
        offsetof(SubtitleParserSUBIDX, mLock),
        offsetof(SubtitleParserSUBIDX, m_pSubtitleName),
    };
    for (size_t i = 1; i < std::size(kOffsets); ++i) EXPECT_LT(kOffsets[i - 1], kOffsets[i]) << i;
    EXPECT_EQ(128U, kOffsets[5] - kOffsets[3]);
    EXPECT_EQ(sizeof(Mutex), kOffsets[17] - kOffsets[16]);
    EXPECT_EQ(12U, sizeof(ST_MEDIA_SUBTITLE_PARSER_SUBIDX_PRIVATE_TRACK_INFO));
    const size_t kDecoder[] = {
        offsetof(MPEGSubtitleDecoder, m_CmdQueue),
        offsetof(MPEGSubtitleDecoder, m_FB_setting),
        offsetof(MPEGSubtitleDecoder, m_pPaletteTable),
        offsetof(MPEGSubtitleDecoder, m_display_param),
        offsetof(MPEGSubtitleDecoder, m_enSubType),
        offsetof(MPEGSubtitleDecoder, m_u16_DCSQCT_addr),
        offsetof(MPEGSubtitleDecoder, m_u32_SPU_Display_Pts),
        offsetof(MPEGSubtitleDecoder, m_bVobSubPaletteSetted),
        offsetof(MPEGSubtitleDecoder, m_u8IdxInnerCheck),
    };
    for (size_t i = 1; i < std::size(kDecoder); ++i) EXPECT_LT(kDecoder[i - 1], kDecoder[i]) << i;
}

// kept(file-long-path)
TEST(SubtitleParserSUBIDX, KeepsUpTo512BytesOfThePath) {
    for (const size_t length : {0U, 1U, 510U, 511U, 512U, 513U, 600U}) {
        std::string path(length, 'p');
        const SubtitleParserSUBIDX parser(&path[0]);
        const size_t kept = length < 512 ? length : 512;
        EXPECT_EQ(kept, strnlen(parser.m_pSubtitleName, 512)) << length;
    }
    const SubtitleParserSUBIDX none(nullptr);
    EXPECT_EQ('\0', none.m_pSubtitleName[0]);
}

TEST(SubtitleParserSUBIDX, AFailedAllocationLeavesTheLaterOnesOut) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    const struct {
        size_t atLeast;
        bool bitmap, tags, subtitle, raw;
    } kRows[] = {
        {2073601, true, true, true, true},
        {2073600, false, false, false, false},
    };
    for (const auto& row : kRows) {
        std::unique_ptr<SubtitleParserSUBIDX> parser;
        const VobSubPair pair(smallFilm(1).idx(), smallFilm(1).sub());
        std::string path = pair.idx();
        {
            const AllocationFails fails(row.atLeast);
            parser = std::make_unique<SubtitleParserSUBIDX>(&path[0]);
        }
        EXPECT_EQ(row.bitmap, parser->m_buffer != nullptr) << row.atLeast;
        EXPECT_EQ(row.tags, parser->m_pTagBuffer != nullptr) << row.atLeast;
        EXPECT_EQ(row.subtitle, parser->m_pu8SubtitleBuffer != nullptr) << row.atLeast;
        EXPECT_EQ(row.raw, parser->m_pu8RawBuffer != nullptr) << row.atLeast;
        const LogCapture log;
        EXPECT_EQ(row.raw ? TRUE : FALSE, parser->BeginParse());
        EXPECT_EQ(row.raw ? Texts({kUnused, kPathDone}) : Texts(), log.texts());
        EXPECT_EQ(row.raw, parser->GetData(0, nullptr, 0, 0, nullptr) != 0);
        EXPECT_EQ(pthread_t{0} == parser->m_threadParser, !row.raw);
    }
}

TEST(SubtitleParserSUBIDX, RefusesWithoutOneOfItsBuffers) {
    samples::VobSub film = smallFilm(1);
    VobSubPair pair(film.idx(), film.sub());
    for (int missing = 0; missing < 4; ++missing) {
        SubtitleParserSUBIDX parser(pair.path());
        U8** const buffers[] = {nullptr, &parser.m_pu8SubtitleBuffer, &parser.m_pu8RawBuffer, &parser.m_buffer};
        if (missing == 0) {
            free(parser.m_pTagBuffer);
            parser.m_pTagBuffer = nullptr;
        } else {
            free(*buffers[missing]);
            *buffers[missing] = nullptr;
        }
        const bool starts = missing == 3;  // without the bitmap alone the scan still runs
        EXPECT_EQ(starts ? TRUE : FALSE, parser.BeginParse()) << missing;
        EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 0, nullptr)) << missing;
        EXPECT_NE(nullptr, parser.fpIdx) << "open, although refused";
    }
    SubtitleParserSUBIDX parser(pair.path());
    ASSERT_EQ(TRUE, parser.BeginParse());
    delete parser.m_pDecoder;
    parser.m_pDecoder = nullptr;
    EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 0, nullptr)) << "without a decoder";
    SubtitleParserSUBIDX scanned(pair.path());
    ASSERT_EQ(TRUE, scanned.BeginParse());
    ASSERT_NE(0U, scanned.GetData(0, nullptr, 0, 0, nullptr));
    free(scanned.m_pTagBuffer);
    scanned.m_pTagBuffer = nullptr;
    EXPECT_EQ(0U, scanned.GetData(0, nullptr, 0, 0, nullptr)) << "without its table";
}

TEST(SubtitleParserSUBIDX, InitBringsBuffersOfItsOwnSizes) {
    samples::VobSub film = smallFilm(3);
    VobSubPair pair(film.idx(), film.sub());
    SubtitleParserSUBIDX parser(pair.path());
    for (const U64 size : {U64{0}, U64{100}, U64{1} << 40, ~U64{0}}) {
        EXPECT_EQ(TRUE, parser.Init(size));
        EXPECT_EQ(static_cast<S64>(size), parser.m_s64DataTotalSize);
        EXPECT_EQ(0x10000U, parser.mRawBufferLimit);
        memset(parser.m_pu8SubtitleBuffer, 0, 0x10000);
    }
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_NE(0U, parser.GetData(0, nullptr, 0, 2, nullptr));
    EXPECT_EQ(TRUE, parser.Deinit());
    EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 2, nullptr));
    EXPECT_EQ(0U, parser.GetTag(0, 9999));
    EXPECT_EQ(TRUE, parser.Init(5));
    EXPECT_EQ(0U, parser.GetTag(0, 9999)) << "no tags";
    EXPECT_EQ(0U, parser.m_u32RawBufferDataSize) << "and nothing in either window";
    EXPECT_EQ(0U, parser.m_u32SubtitleBufferDataSize);
    EXPECT_EQ(0, parser.m_s64SubtitleBufferPosition);
    parser.AddTag(1, 2, 0, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    parser.m_vPrivateTrackInfo[0].u32TagEnd = 0x7FFFFFFE;  // a range without a table behind it
    parser.GetTag(0, 9999);
}

TEST(SubtitleParserSUBIDX, InitWithoutMemoryKeepsNoBuffer) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    for (const size_t size : {8192 * sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG), size_t{0x10000}, size_t{0x10000 + 64}}) {
        SCOPED_TRACE(size);
        SubtitleParserSUBIDX parser(-1, -1, 0, 0);
        BOOL result = TRUE;
        {
            const AllocationFails fails(size, size);
            result = parser.Init(7);
        }
        EXPECT_EQ(FALSE, result);
        EXPECT_EQ(nullptr, parser.m_pTagBuffer);
        EXPECT_EQ(nullptr, parser.m_pu8SubtitleBuffer);
        EXPECT_EQ(nullptr, parser.m_pu8RawBuffer);
        EXPECT_EQ(0U, parser.mRawBufferLimit);
        EXPECT_EQ(TRUE, parser.Init(7)) << "a later call may succeed";
    }
}

TEST(SubtitleParserSUBIDX, InitForgetsHowFarTheTableHadGrown) {
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    for (U32 i = 0; i < 8192; ++i) parser.AddTag(i, i, i, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    ASSERT_EQ(16384U, parser.m_u32TagBufferNum);
    EXPECT_EQ(TRUE, parser.Init(7));
    EXPECT_EQ(8192U, parser.m_u32TagBufferNum);
}

// --- BeginParse -------------------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, OpensBothFilesByTheIndexPath) {
    const struct {
        const char *idx, *sub;
        BOOL result;
    } kRows[] = {
        {"movie.idx", "movie.sub", TRUE},     {"MOVIE.IDX", "MOVIE.sub", TRUE},
        {"movie.IDX", "movie.SUB", FALSE},  // kept(vob-no-stream)
        {"movie.txt", "movie.sub", TRUE},     {"movieidx", "moviesub", TRUE},
        {"movie.index", "movie.insub", TRUE},
    };
    for (const auto& row : kRows) {
        const samples::VobSub film = smallFilm(2);
        VobSubPair pair(film.idx(), film.sub(), row.idx, row.sub);
        SubtitleParserSUBIDX parser(pair.path());
        const LogCapture log;
        EXPECT_EQ(row.result, parser.BeginParse()) << row.idx;
        const std::string wanted = pair.idx().substr(0, pair.idx().size() - 3) + "sub";
        EXPECT_EQ(row.result == TRUE ? Texts({kUnused, kPathDone})
                                     : Texts({"SubtitleParserSUBIDX could not open subtitle file:" + wanted + "\n"}),
                  log.texts());
        EXPECT_EQ(row.result == TRUE ? 2U : 0U, parser.GetTagNum());
        if (row.result != TRUE) continue;
        EXPECT_EQ(static_cast<S64>(film.idx().size()), parser.m_s64DataTotalSize);
        EXPECT_EQ(static_cast<S64>(film.sub().size()), parser.m_s64DataTotalSizeSub);
        EXPECT_NE(0U, parser.GetData(0, nullptr, 0, 1, nullptr));
    }
}

TEST(SubtitleParserSUBIDX, AnIndexThatCannotBeOpened) {
    const struct {
        std::string path, logged;
    } kRows[] = {
        {"/nowhere/movie.idx", "/nowhere/movie.idx"},
        {"", ""},
        {"/nowhere/" + std::string(600, 'x'), "/nowhere/" + std::string(503, 'x')},
    };
    for (const auto& row : kRows) {
        std::string path = row.path;
        SubtitleParserSUBIDX parser(&path[0]);
        const LogCapture log;
        const FileCalls calls;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(
            std::vector<LogLine>({{3, "", "SubtitleParserSUBIDX could not open subtitle file:" + row.logged + "\n"}}),
            log.lines());
        EXPECT_EQ(1U, calls.calls().size()) << "the other file is not tried";
        EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 0, nullptr));
    }
}

TEST(SubtitleParserSUBIDX, PathsShorterThanThreeCharacters) {
    const struct { const char *idx, *sub; } kRows[] = {{"ab", "ub"}, {"a", "b"}, {"abc", "sub"}};
    char before[4096];
    ASSERT_NE(nullptr, getcwd(before, sizeof before));
    for (const auto& row : kRows) {
        const VobSubPair pair(kFirst, "", row.idx, row.sub);
        ASSERT_EQ(0, chdir(pair.idx().substr(0, pair.idx().rfind('/')).c_str()));
        std::string path = row.idx;
        SubtitleParserSUBIDX parser(&path[0]);
        EXPECT_EQ(TRUE, parser.BeginParse()) << row.idx;
        EXPECT_EQ(0, parser.m_s64DataTotalSizeSub) << "the index is not taken for the stream";
        ASSERT_EQ(0, chdir(before));
    }
}

TEST(SubtitleParserSUBIDX, DescriptorsBelongToTheParser) {
    const samples::VobSub film = smallFilm(2);
    const VobSubPair pair(film.idx(), film.sub());
    const auto open = [](const std::string& path, int flags = O_RDONLY) { return ::open(path.c_str(), flags); };
    const unsigned before = openDescriptors();
    {
        SubtitleParserSUBIDX parser(-1, -1, 0, 0);
        const int idx = open(pair.idx());
        const int sub = open(pair.sub());
        lseek(idx, 10, SEEK_SET);  // read from the start all the same
        lseek(sub, 10, SEEK_SET);
        const LogCapture log;
        EXPECT_EQ(TRUE, parser.BeginParse(idx, sub));
        EXPECT_EQ(std::vector<LogLine>({{3, "", kUnused}, {3, "", kDescriptorDone}}), log.lines());
        EXPECT_EQ(idx, fileno(parser.fpIdx));
        EXPECT_EQ(sub, fileno(parser.fpSub));
        EXPECT_EQ(2U, parser.GetTagNum());
        EXPECT_NE(0U, parser.GetData(0, nullptr, 0, 0, nullptr));
        EXPECT_EQ(before + 2, openDescriptors());
    }
    EXPECT_EQ(before, openDescriptors());

    const struct {
        const char* what;
        bool idxOpen, subOpen;
        int idxFlags;
    } kRows[] = {
        {"no index", false, true, O_RDONLY},
        {"no stream file", true, false, O_RDONLY},
        {"neither", false, false, O_RDONLY},
        {"an index that cannot be read", true, true, O_WRONLY},
    };
    for (const auto& row : kRows) {
        {
            SubtitleParserSUBIDX parser(-1, -1, 0, 0);
            const LogCapture log;
            const int idx = row.idxOpen ? open(pair.idx(), row.idxFlags) : -1;
            const int sub = row.subOpen ? open(pair.sub()) : -1;
            EXPECT_EQ(FALSE, parser.BeginParse(idx, sub)) << row.what;
            EXPECT_EQ(Texts({"SubtitleParserSUBIDX could not open subtitle file\n"}), log.texts()) << row.what;
            EXPECT_EQ(0U, parser.GetTagNum());
        }
        EXPECT_EQ(before, openDescriptors()) << row.what;
    }
    {
        const CallFails fails("fdopen", 1);
        SubtitleParserSUBIDX parser(-1, -1, 0, 0);
        EXPECT_EQ(FALSE, parser.BeginParse(open(pair.idx()), open(pair.sub())));
        EXPECT_EQ(1, fails.failed());
    }
    EXPECT_EQ(before, openDescriptors());
    {
        SubtitleParserSUBIDX parser(-1, -1, 0, 0);
        const int both = open(pair.idx());
        EXPECT_EQ(TRUE, parser.BeginParse(both, both));
        EXPECT_NE(fileno(parser.fpIdx), fileno(parser.fpSub)) << "or one would be closed twice";
    }
    EXPECT_EQ(before, openDescriptors());
}

TEST(SubtitleParserSUBIDX, OpenedFilesAreClosedOnExecAndDuplicatesAsTheCallersIs) {
    const samples::VobSub film = smallFilm(2);
    VobSubPair pair(film.idx(), film.sub());
    {
        SubtitleParserSUBIDX parser(pair.path());
        ASSERT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(FD_CLOEXEC, fcntl(fileno(parser.fpIdx), F_GETFD));
        EXPECT_EQ(FD_CLOEXEC, fcntl(fileno(parser.fpSub), F_GETFD));
    }
    for (const int flags : {FD_CLOEXEC, 0}) {
        SubtitleParserSUBIDX parser(-1, -1, 0, 0);
        const int both = ::open(pair.idx().c_str(), O_RDONLY);
        ASSERT_EQ(0, fcntl(both, F_SETFD, flags));
        ASSERT_EQ(TRUE, parser.BeginParse(both, both));
        EXPECT_NE(both, fileno(parser.fpSub));
        EXPECT_EQ(flags, fcntl(fileno(parser.fpSub), F_GETFD));
    }
}

TEST(SubtitleParserSUBIDX, FilesWithoutASize) {
    const samples::VobSub film = smallFilm(2);
    VobSubPair pair(film.idx(), film.sub());
    {
        const CallFails fails("ftell", 1);
        SubtitleParserSUBIDX parser(pair.path());
        EXPECT_EQ(TRUE, parser.BeginParse()) << "an index of length -1 is scanned at once";
        EXPECT_EQ(0U, parser.GetTagNum());
    }
    {
        const CallFails fails("ftell", 1, 1);
        SubtitleParserSUBIDX parser(pair.path());
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(2U, parser.GetTagNum());
        EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 0, nullptr)) << "the window is never filled";
    }
    {
        const CallFails fails("fseek", 1, 2);  // the first of the scan
        SubtitleParserSUBIDX parser(pair.path());
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(0U, parser.GetTagNum());
    }
    std::string folder = "/tmp";
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    EXPECT_EQ(TRUE, parser.BeginParse(::open("/tmp", O_RDONLY), ::open("/tmp", O_RDONLY))) << "a folder holds nothing";
    EXPECT_EQ(0U, parser.GetTagNum());
}

TEST(SubtitleParserSUBIDX, ASecondBeginParseReopensAndRefuses) {
    const samples::VobSub film = smallFilm(2);
    VobSubPair pair(film.idx(), film.sub());
    const unsigned before = openDescriptors();
    {
        SubtitleParserSUBIDX parser(pair.path());
        ASSERT_EQ(TRUE, parser.BeginParse());
        parser.m_au32Palette[0] = 0x123456;
        const LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(Texts(), log.texts());
        EXPECT_EQ(0x123456U, parser.m_au32Palette[0]) << "nothing is reset";
        EXPECT_EQ(1U, parser.m_vPrivateTrackInfo.size());
        EXPECT_EQ(before + 2, openDescriptors());
        EXPECT_NE(0U, parser.GetData(0, nullptr, 0, 1, nullptr)) << "read from the new stream";
        EXPECT_EQ(FALSE, parser.BeginParse(::open(pair.idx().c_str(), O_RDONLY), ::open(pair.sub().c_str(), O_RDONLY)));
        EXPECT_EQ(before + 2, openDescriptors());
        unlink(pair.idx().c_str());
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(before, openDescriptors()) << "closed before the new ones are tried";
        EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 1, nullptr));
    }
    EXPECT_EQ(before, openDescriptors());
}

TEST(SubtitleParserSUBIDX, ResetsBeforeItScans) {
    const samples::VobSub film = smallFilm(1);
    VobSubPair pair("size: 1x2\n", film.sub());
    SubtitleParserSUBIDX parser(pair.path());
    parser.m_au32Palette[0] = parser.m_au32Palette[1] = 1;
    parser.m_au32Palette_result[0] = parser.m_au32Palette_result[1] = 2;
    parser.m_vPrivateTrackInfo.push_back({E_MEDIA_SUBTITLE_PARSER_LANGUAGE_KOREAN, 1, 2});
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(0xFF000000U, parser.m_au32Palette[0]);
    EXPECT_EQ(1U, parser.m_au32Palette[1]);
    EXPECT_EQ(0xFF000000U, parser.m_au32Palette_result[0]);
    EXPECT_EQ(2U, parser.m_au32Palette_result[1]);
    EXPECT_TRUE(parser.m_vPrivateTrackInfo.empty());
}

TEST(SubtitleParserSUBIDX, WithoutAThread) {
    const samples::VobSub film = smallFilm(1);
    VobSubPair pair(film.idx(), film.sub());
    SubtitleParserSUBIDX parser(pair.path());
    {
        const ThreadCreateFails fails;
        const LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(Texts(), log.texts());
        EXPECT_EQ(pthread_t{0}, parser.m_threadParser);
    }
    EXPECT_EQ(TRUE, parser.BeginParse()) << "no thread handle is held";
}

TEST(SubtitleParserSUBIDX, WaitsForAHundredSeconds) {
    const samples::VobSub film = smallFilm(1);
    VobSubPair pair(film.idx(), film.sub());
    {
        const VirtualClock clock;
        ThreadGate gate;
        SubtitleParserSUBIDX parser(pair.path());
        const LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(std::vector<unsigned>(1000, 100000), clock.sleeps());
        EXPECT_EQ(Texts({kPathDone}), log.texts());
        EXPECT_NE(pthread_t{0}, parser.m_threadParser);
        gate.open();
    }  // destroyed while the worker runs
    EXPECT_EQ(1U, threadCount());
    {
        VirtualClock clock;
        ThreadGate gate;
        SubtitleParserSUBIDX parser(pair.path());
        clock.atSleep(999, [&] { gate.open(); });
        clock.atSleep(1000, [&] {
            while (__atomic_load_n(&parser.bParseFinish, __ATOMIC_ACQUIRE) == FALSE) sched_yield();
        });
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(1U, parser.GetTagNum());
    }
}

TEST(SubtitleParserSUBIDX, FilesAreClosedBehindAWorkerThatWasLate) {
    const samples::VobSub film = smallFilm(1);
    VobSubPair pair(film.idx(), film.sub());
    const VirtualClock clock;
    SubtitleParserSUBIDX parser(pair.path());
    {
        ThreadGate gate;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(2U, threadCount());
    }
    unlink(pair.idx().c_str());
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(1U, threadCount()) << "it has ended before its files were closed";
    EXPECT_EQ(nullptr, parser.fpIdx);
}

// The operations that read through bare pointers go on behind the buffer, up to 64 bytes.
TEST(SubtitleParserSUBIDX, ZerosStandBehindTheRawBuffer) {
    const SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    ASSERT_LE(0x10000U + 64, malloc_usable_size(parser.m_pu8RawBuffer));
    const std::vector<U8> behind(parser.m_pu8RawBuffer + 0x10000, parser.m_pu8RawBuffer + 0x10000 + 64);
    EXPECT_EQ(std::vector<U8>(64), behind);
}

// kept(worker-fails-late)
TEST(SubtitleParserSUBIDX, AFullTableEndsTheScanWithoutTheFlag) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    std::string idx = "id: en\n";
    for (unsigned i = 0; i < 8191; ++i) idx += samples::indexLine(i, i) + "\n";
    {
        Scanned fits(idx);
        EXPECT_EQ(TRUE, fits.parser().bParseFinish);
        EXPECT_EQ(Texts({"2 0-8190"}), tracksOf(fits.parser()));
    }
    idx += samples::indexLine(8191, 8191) + "\nid: fr\n" + kFirst;
    {
        Scanned grows(idx);
        EXPECT_EQ(TRUE, grows.parser().bParseFinish);
        EXPECT_EQ(Texts({"2 0-8191", "5 8192-8192"}), tracksOf(grows.parser()));
        EXPECT_EQ(16384U, grows.parser().m_u32TagBufferNum);
    }
    VobSubPair pair(idx, "");
    SubtitleParserSUBIDX parser(pair.path());
    const VirtualClock clock;
    const ThreadsEndFirst order;
    const LogCapture log;
    {
        const AllocationFails fails(0x30001);
        EXPECT_EQ(FALSE, parser.BeginParse());
    }
    EXPECT_EQ(1000U, clock.sleeps().size());
    EXPECT_EQ(Texts({kPathDone}), log.texts());
    EXPECT_EQ(0U, parser.GetTagNum());
    EXPECT_TRUE(parser.m_vPrivateTrackInfo.empty());
    EXPECT_EQ(0U, parser.GetTag(0, 1));
    EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 0, nullptr));
}

TEST(SubtitleParserSUBIDX, ATaskWithoutAWindowEndsAtOnce) {
    VobSubInMemory files;
    files.load("id: en\n" + kFirst, "");
    ASSERT_EQ(TRUE, files.parser.bParseFinish);
    ASSERT_EQ(1U, files.parser.GetTagNum());
    files.parser.Deinit();
    files.parser.bParseFinish = FALSE;
    EXPECT_EQ(nullptr, SubtitleParserSUBIDX::ParserTask(&files.parser));
    EXPECT_EQ(FALSE, files.parser.bParseFinish);
    EXPECT_EQ(1U, files.parser.GetTagNum()) << "nothing is read";
}

TEST(SubtitleParserSUBIDX, ATaskWithoutAFileEndsAtOnce) {
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    EXPECT_EQ(nullptr, SubtitleParserSUBIDX::ParserTask(&parser));
    EXPECT_EQ(FALSE, parser.bParseFinish);
}
