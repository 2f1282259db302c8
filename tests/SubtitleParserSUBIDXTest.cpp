// VobSub indexes as their author writes them, what the parser makes of them, and how subpictures are gathered.
#include "subtitle/SubtitleParserSUBIDX.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <stddef.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "subtitle/MPEGSubtitleDecoder.h"
#include "tests/support/Interpose.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

using namespace android;

namespace {

using Texts = std::vector<std::string>;

constexpr char kUnknown[] = "unkonwn case,we will not handle\n";
constexpr char kUnused[] = "we will not use these informations\n";
constexpr char kUnusedWide[] = "now we will not use these informations\n";
constexpr char kPathDone[] = "Zorb_MediaSubtitleParserSRT::BeginParse -> 00000000\n";
constexpr char kDescriptorDone[] = "SubtitleParserSUBIDX::BeginParse -> 00000000\n";

const std::string kFirst = "timestamp: 00:00:01:000, filepos: 000000000\n";
const std::string kSecond = "timestamp: 00:00:02:000, filepos: 000000800\n";

/// "start@position" of each tag.
Texts tagsOf(const SubtitleParser& parser) {
    Texts tags;
    for (U32 i = 0; i < parser.m_u32TagNum; ++i) {
        char text[64];
        const auto& tag = parser.m_pTagBuffer[i];
        snprintf(text, sizeof text, "%u@%llx", tag.u32TimeStart, tag.s64Pos);
        tags.push_back(text);
        EXPECT_EQ(0xFFFFFFFFU, tag.u32TimeEnd);
        EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE, tag.eDataType);
    }
    return tags;
}

/// "language first-last" of each track.
Texts tracksOf(const SubtitleParserSUBIDX& parser) {
    Texts tracks;
    for (const auto& track : parser.m_vPrivateTrackInfo) {
        tracks.push_back(std::to_string(track.eLanguage) + " " + std::to_string(track.u32TagStart) + "-" +
                         std::to_string(track.u32TagEnd));
    }
    return tracks;
}

struct Scanned {
    explicit Scanned(const std::string& idx) {
        const test::LogCapture capture;
        files.load(idx, "");
        for (const test::LogLine& line : capture.lines()) {
            EXPECT_EQ(3, line.priority);
            EXPECT_EQ("", line.tag);
            log.push_back(line.text);
        }
    }
    SubtitleParserSUBIDX& parser() { return files.parser; }

    test::VobSubInMemory files;
    Texts log;
};

/// Letters that a later line of the same picture differs in.
samples::Subpicture smallPicture(const std::string& letters = "HI") {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({letters}, 1);
    picture.spareLines = 1;
    return picture;
}

samples::VobSub smallFilm(unsigned pictures) {
    samples::VobSub film(720, 576, {0x000000, 0xFFFFFF, 0x202020, 0x808080});
    film.track("en");
    for (unsigned i = 0; i < pictures; ++i)
        film.add(1000 + 1000 * i, smallPicture(std::string(1, static_cast<char>('A' + i % 26))));
    return film;
}

/// The decoded bitmap, as long as its size says.
std::vector<U8> bitmapOf(const SubtitleParserSUBIDX& parser, const stSubDecoderInfo& info) {
    return {parser.m_buffer, parser.m_buffer + size_t{info.u16Width} * info.u16Height};
}

/// A unit that holds nothing but this control sequence, which links to `next`; `at` bytes before it.
std::string unitOf(size_t at, size_t next, const std::string& commands) {
    const auto be16 = [](size_t value) { return std::string{static_cast<char>(value >> 8), static_cast<char>(value)}; };
    const std::string sequence = be16(0) + be16(next) + commands;
    std::string unit = be16(at + sequence.size()) + be16(at);
    unit.resize(at);
    return unit + sequence;
}

const std::string kArea("\x05\x00\x00\x03\x00\x00\x02", 7);  // 4 x 2

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

// --- construction ----------------------------------------------------------------------------------------------

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

TEST(SubtitleParserSUBIDX, LanguageCodes) {
    const char kCodes[] = "nageeneselfrshitnlplptrurosvarzhjakofafinoiwbg\0\0\0";
    static_assert(sizeof kCodes == 50);
    EXPECT_EQ(0, memcmp(kCodes, SubtitleParserSUBIDX::m_au8LanguageCode, sizeof kCodes));
    EXPECT_EQ(50U, sizeof SubtitleParserSUBIDX::m_au8LanguageCode);
}

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
    if (!test::AllocationFails::supported()) GTEST_SKIP();
    const struct {
        size_t atLeast;
        bool bitmap, tags, subtitle, raw;
    } kRows[] = {
        {2073601, true, true, true, true},
        {2073600, false, false, false, false},
    };
    for (const auto& row : kRows) {
        std::unique_ptr<SubtitleParserSUBIDX> parser;
        const test::VobSubPair pair(smallFilm(1).idx(), smallFilm(1).sub());
        std::string path = pair.idx();
        {
            const test::AllocationFails fails(row.atLeast);
            parser = std::make_unique<SubtitleParserSUBIDX>(&path[0]);
        }
        EXPECT_EQ(row.bitmap, parser->m_buffer != nullptr) << row.atLeast;
        EXPECT_EQ(row.tags, parser->m_pTagBuffer != nullptr) << row.atLeast;
        EXPECT_EQ(row.subtitle, parser->m_pu8SubtitleBuffer != nullptr) << row.atLeast;
        EXPECT_EQ(row.raw, parser->m_pu8RawBuffer != nullptr) << row.atLeast;
        const test::LogCapture log;
        EXPECT_EQ(row.raw ? TRUE : FALSE, parser->BeginParse());
        EXPECT_EQ(row.raw ? Texts({kUnused, kPathDone}) : Texts(), log.texts());
        EXPECT_EQ(row.raw, parser->GetData(0, nullptr, 0, 0, nullptr) != 0);
        EXPECT_EQ(pthread_t{0} == parser->m_threadParser, !row.raw);
    }
}

TEST(SubtitleParserSUBIDX, RefusesWithoutOneOfItsBuffers) {
    samples::VobSub film = smallFilm(1);
    test::VobSubPair pair(film.idx(), film.sub());
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
}

TEST(SubtitleParserSUBIDX, InitBringsBuffersOfItsOwnSizes) {
    samples::VobSub film = smallFilm(3);
    test::VobSubPair pair(film.idx(), film.sub());
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
    parser.AddTag(1, 2, 0, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    parser.m_vPrivateTrackInfo[0].u32TagEnd = 0x7FFFFFFE;  // a range without a table behind it
    parser.GetTag(0, 9999);
}

// --- BeginParse ------------------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, OpensBothFilesByTheIndexPath) {
    const struct {
        const char *idx, *sub;
        BOOL result;
    } kRows[] = {
        {"movie.idx", "movie.sub", TRUE}, {"MOVIE.IDX", "MOVIE.sub", TRUE}, {"movie.IDX", "movie.SUB", FALSE},
        {"movie.txt", "movie.sub", TRUE}, {"movieidx", "moviesub", TRUE},   {"movie.index", "movie.insub", TRUE},
    };
    for (const auto& row : kRows) {
        const samples::VobSub film = smallFilm(2);
        test::VobSubPair pair(film.idx(), film.sub(), row.idx, row.sub);
        SubtitleParserSUBIDX parser(pair.path());
        const test::LogCapture log;
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
        const test::LogCapture log;
        const test::FileCalls calls;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(std::vector<test::LogLine>(
                      {{3, "", "SubtitleParserSUBIDX could not open subtitle file:" + row.logged + "\n"}}),
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
        const test::VobSubPair pair(kFirst, "", row.idx, row.sub);
        ASSERT_EQ(0, chdir(pair.idx().substr(0, pair.idx().rfind('/')).c_str()));
        std::string path = row.idx;
        SubtitleParserSUBIDX parser(&path[0]);
        EXPECT_EQ(TRUE, parser.BeginParse()) << row.idx;
        ASSERT_EQ(0, chdir(before));
    }
}

TEST(SubtitleParserSUBIDX, DescriptorsBelongToTheParser) {
    const samples::VobSub film = smallFilm(2);
    const test::VobSubPair pair(film.idx(), film.sub());
    const auto open = [](const std::string& path, int flags = O_RDONLY) { return ::open(path.c_str(), flags); };
    const unsigned before = test::openDescriptors();
    {
        SubtitleParserSUBIDX parser(-1, -1, 0, 0);
        const int idx = open(pair.idx());
        const int sub = open(pair.sub());
        lseek(idx, 10, SEEK_SET);  // read from the start all the same
        lseek(sub, 10, SEEK_SET);
        const test::LogCapture log;
        EXPECT_EQ(TRUE, parser.BeginParse(idx, sub));
        EXPECT_EQ(std::vector<test::LogLine>({{3, "", kUnused}, {3, "", kDescriptorDone}}), log.lines());
        EXPECT_EQ(idx, fileno(parser.fpIdx));
        EXPECT_EQ(sub, fileno(parser.fpSub));
        EXPECT_EQ(2U, parser.GetTagNum());
        EXPECT_NE(0U, parser.GetData(0, nullptr, 0, 0, nullptr));
        EXPECT_EQ(before + 2, test::openDescriptors());
    }
    EXPECT_EQ(before, test::openDescriptors());

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
            const test::LogCapture log;
            const int idx = row.idxOpen ? open(pair.idx(), row.idxFlags) : -1;
            const int sub = row.subOpen ? open(pair.sub()) : -1;
            EXPECT_EQ(FALSE, parser.BeginParse(idx, sub)) << row.what;
            EXPECT_EQ(Texts({"SubtitleParserSUBIDX could not open subtitle file\n"}), log.texts()) << row.what;
            EXPECT_EQ(0U, parser.GetTagNum());
        }
        EXPECT_EQ(before, test::openDescriptors()) << row.what;
    }
    {
        const test::CallFails fails("fdopen", 1);
        SubtitleParserSUBIDX parser(-1, -1, 0, 0);
        EXPECT_EQ(FALSE, parser.BeginParse(open(pair.idx()), open(pair.sub())));
        EXPECT_EQ(1, fails.failed());
    }
    EXPECT_EQ(before, test::openDescriptors());
    {
        SubtitleParserSUBIDX parser(-1, -1, 0, 0);
        const int both = open(pair.idx());
        EXPECT_EQ(TRUE, parser.BeginParse(both, both));
        EXPECT_NE(fileno(parser.fpIdx), fileno(parser.fpSub)) << "or one would be closed twice";
    }
    EXPECT_EQ(before, test::openDescriptors());
}

TEST(SubtitleParserSUBIDX, FilesWithoutASize) {
    const samples::VobSub film = smallFilm(2);
    test::VobSubPair pair(film.idx(), film.sub());
    {
        const test::CallFails fails("ftell", 1);
        SubtitleParserSUBIDX parser(pair.path());
        EXPECT_EQ(TRUE, parser.BeginParse()) << "an index of length -1 is scanned at once";
        EXPECT_EQ(0U, parser.GetTagNum());
    }
    {
        const test::CallFails fails("ftell", 1, 1);
        SubtitleParserSUBIDX parser(pair.path());
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(2U, parser.GetTagNum());
        EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 0, nullptr)) << "the window is never filled";
    }
    {
        const test::CallFails fails("fseek", 1, 2);  // the first of the scan
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
    test::VobSubPair pair(film.idx(), film.sub());
    const unsigned before = test::openDescriptors();
    {
        SubtitleParserSUBIDX parser(pair.path());
        ASSERT_EQ(TRUE, parser.BeginParse());
        parser.m_au32Palette[0] = 0x123456;
        const test::LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(Texts(), log.texts());
        EXPECT_EQ(0x123456U, parser.m_au32Palette[0]) << "nothing is reset";
        EXPECT_EQ(1U, parser.m_vPrivateTrackInfo.size());
        EXPECT_EQ(before + 2, test::openDescriptors());
        EXPECT_NE(0U, parser.GetData(0, nullptr, 0, 1, nullptr)) << "read from the new stream";
        EXPECT_EQ(FALSE, parser.BeginParse(::open(pair.idx().c_str(), O_RDONLY), ::open(pair.sub().c_str(), O_RDONLY)));
        EXPECT_EQ(before + 2, test::openDescriptors());
        unlink(pair.idx().c_str());
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(before, test::openDescriptors()) << "closed before the new ones are tried";
        EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 1, nullptr));
    }
    EXPECT_EQ(before, test::openDescriptors());
}

TEST(SubtitleParserSUBIDX, ResetsBeforeItScans) {
    const samples::VobSub film = smallFilm(1);
    test::VobSubPair pair("size: 1x2\n", film.sub());
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
    test::VobSubPair pair(film.idx(), film.sub());
    SubtitleParserSUBIDX parser(pair.path());
    {
        const test::ThreadCreateFails fails;
        const test::LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(Texts(), log.texts());
        EXPECT_EQ(pthread_t{0}, parser.m_threadParser);
    }
    EXPECT_EQ(TRUE, parser.BeginParse()) << "no thread handle is held";
}

TEST(SubtitleParserSUBIDX, WaitsForAHundredSeconds) {
    const samples::VobSub film = smallFilm(1);
    test::VobSubPair pair(film.idx(), film.sub());
    {
        const test::VirtualClock clock;
        test::ThreadGate gate;
        SubtitleParserSUBIDX parser(pair.path());
        const test::LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(std::vector<unsigned>(1000, 100000), clock.sleeps());
        EXPECT_EQ(Texts({kPathDone}), log.texts());
        EXPECT_NE(pthread_t{0}, parser.m_threadParser);
        gate.open();
    }  // destroyed while the worker runs
    EXPECT_EQ(1U, test::threadCount());
    {
        test::VirtualClock clock;
        test::ThreadGate gate;
        SubtitleParserSUBIDX parser(pair.path());
        clock.atSleep(999, [&] { gate.open(); });
        clock.atSleep(1000, [&] {
            while (__atomic_load_n(&parser.bParseFinish, __ATOMIC_ACQUIRE) == FALSE) usleep(0);
        });
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(1U, parser.GetTagNum());
    }
}

TEST(SubtitleParserSUBIDX, AFullTableEndsTheScanWithoutTheFlag) {
    if (!test::AllocationFails::supported()) GTEST_SKIP();
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
    test::VobSubPair pair(idx, "");
    SubtitleParserSUBIDX parser(pair.path());
    const test::VirtualClock clock;
    const test::ThreadsEndFirst order;
    const test::LogCapture log;
    {
        const test::AllocationFails fails(0x30001);
        EXPECT_EQ(FALSE, parser.BeginParse());
    }
    EXPECT_EQ(1000U, clock.sleeps().size());
    EXPECT_EQ(Texts({kPathDone}), log.texts());
    EXPECT_EQ(0U, parser.GetTagNum());
    EXPECT_TRUE(parser.m_vPrivateTrackInfo.empty());
    EXPECT_EQ(0U, parser.GetTag(0, 1));
    EXPECT_EQ(0U, parser.GetData(0, nullptr, 0, 0, nullptr));
}

TEST(SubtitleParserSUBIDX, ATaskWithoutAFileEndsAtOnce) {
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    EXPECT_EQ(nullptr, SubtitleParserSUBIDX::ParserTask(&parser));
    EXPECT_EQ(FALSE, parser.bParseFinish);
}

// --- the index, line by line -----------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, Timestamps) {
    const struct {
        std::string idx;
        Texts tags;
    } kRows[] = {
        {"timestamp: 00:00:01:500, filepos: 000001800\n", {"1500@1800"}},
        {"delay: +00:00:02:000\ntimestamp: 00:00:01:500, filepos: 000001800\n", {"3500@1800"}},
        {"delay: -00:00:00:500\ntimestamp: 00:00:00:200, filepos: 000000000\n", {"4294966996@0"}},
        {"delay: 00:00:02:000\ntimestamp: 00:00:01:500, filepos: 000001800\n", {"1500@1800"}},
        {"timestamp:00:00:01:500,filepos: 000001800\n", {"1500@1800"}},
        {"  \t timestamp: \t 00:00:01:500,   filepos:   000001800\n", {"1500@1800"}},
        {"timestamp: 12:34:56:789, filepos: 0FEDCBA98\n", {"45296789@fedcba98"}},
        {"timestamp: 00.00-01x500, filepos: 000001800\n", {"1500@1800"}},  // literals are anything
        {"timestamp: 00:00:01 500, filepos: 000001800\n", {"1000@1800"}},  // but a blank, which is skipped
        {"timestamp: 00:00:01:500, filepos: 100001800\n", {"1500@1800"}},  // the first digit is not read
        {"timestamp: 00:00:01:500, filepos:000001800\n", {"1500@1800"}},
        {"timestamp: 00:00:01:500, filepos:12345\n", {"1500@345"}},
        {"timestamp: 00:00:01:500, filepos: 0123456789ABCDEF01\n", {"1500@9abcdef0"}},  // sixteen digits, 32 bits
        // the time counts as twelve characters and a comma
        {"timestamp: 0:00:01:500, filepos: 000001800\n", {"1500@1800"}},
        {"timestamp: 0:00:01:50, filepos: 000001800\n", {}},
        {"timestamp: 00:00:01:5000, filepos: 000001800\n", {}},
        {"timestamp: 00:00:01:500  filepos: 000001800\n", {"1500@1800"}},
        {"timestamp: 00:00:01, filepos: 000001800\n", {}},
        {"timestamp: 00:00:01:x, filepos: 000001800\n", {}},
        {"timestamp: 00:00:01:500, filepos 000001800\n", {}},
        {"timestamp: 00:00:01:500, Filepos: 000001800\n", {}},
        {"timestamp: 00:00:01:500, filepos: 0xyz\n", {}},
        {"timestamp: 00:00:01:500, filepos: \n" + kFirst, {}},  // the next line's text is no number, and is lost
        {"timestamp: 00:00:01:500, filepos: 0\ndelay: +00:00:00:001\n" + kFirst, {"1500@de", "1000@0"}},
        {"timestamp:\n" + kFirst + kSecond, {"2000@800"}},  // white space goes across line ends
        {"timestamp: \r\n 00:00:01:500,\n filepos: 000001800\n", {"1500@1800"}},
        {"Timestamp: 00:00:01:500, filepos: 000001800\n", {}},
        {"timestamp : 00:00:01:500, filepos: 000001800\n", {}},
        {kFirst + "\r\n\n\r" + kSecond, {"1000@0", "2000@800"}},
        {"timestamp: 00:00:01:000, filepos: 000000000\rtimestamp: 00:00:02:000, filepos: 000000800",
         {"1000@0", "2000@800"}},
        {"timestamp: 9999999:0:0:0 filepos: 000000001\n", {"3875492224@1"}},  // wraps at 32 bits
        {"", {}},
    };
    for (const auto& row : kRows) {
        Scanned scanned(row.idx);
        EXPECT_EQ(row.tags, tagsOf(scanned.parser())) << row.idx;
        EXPECT_EQ(TRUE, scanned.parser().bParseFinish);
    }
}

TEST(SubtitleParserSUBIDX, Delays) {
    const struct {
        const char* value;
        const char* log;
        U32 start;  // of a tag at 1000 ms
    } kRows[] = {
        {" +00:00:02:000", "delay:2000, sign:1, hh:0, mm:0, ss:2, ms:0", 3000},
        {"-00:00:00:500", "delay:-500, sign:-1, hh:0, mm:0, ss:0, ms:500", 500},
        {" +01:02:03:004", "delay:3723004, sign:1, hh:1, mm:2, ss:3, ms:4", 3724004},
        {" 00:00:02:000", "delay:0, sign:0, hh:0, mm:0, ss:0, ms:0", 1000},
        {" x00:00:02:000", "delay:0, sign:0, hh:0, mm:0, ss:0, ms:0", 1000},
        {" +00:00:02", "delay:0, sign:0, hh:0, mm:0, ss:0, ms:0", 1000},
        {" -", "delay:0, sign:0, hh:0, mm:0, ss:0, ms:0", 1000},
        {" - 00 : 00 : 02 : 000", "delay:-2000, sign:-1, hh:0, mm:0, ss:2, ms:0", 4294966296},
        {" -4294967295:4294967295:4294967295:4294967295",
         "delay:-15723879561962295, sign:-1, hh:4294967295, mm:4294967295, ss:4294967295, ms:4294967295",
         static_cast<U32>(1000 - 15723879561962295LL)},
    };
    for (const auto& row : kRows) {
        Scanned scanned("delay:" + std::string(row.value) + "\n" + kFirst);
        EXPECT_EQ(Texts({std::string("[SUBIDX] ") + row.log}), scanned.log) << row.value;
        ASSERT_EQ(1U, scanned.parser().GetTagNum());
        EXPECT_EQ(row.start, scanned.parser().m_pTagBuffer[0].u32TimeStart) << row.value;
    }
    // it holds for all that follows, across tracks, until the next one
    Scanned scanned(kFirst + "delay: +00:00:00:001\n" + kFirst + "id: fr\n" + kFirst + "delay: none\n" + kFirst);
    EXPECT_EQ(Texts({"1000@0", "1001@0", "1001@0", "1000@0"}), tagsOf(scanned.parser()));
}

TEST(SubtitleParserSUBIDX, Tracks) {
    const std::string nul(1, '\0');
    const struct {
        std::string idx;
        Texts tracks;
    } kRows[] = {
        {"id: en, index: 0\n" + kFirst + kSecond, {"2 0-1"}},
        {"id: ge\n" + kFirst, {"1 0-0"}},
        {"id: de\n" + kFirst, {"0 0-0"}},
        {"id: EN\n" + kFirst, {"0 0-0"}},
        {"id: na\n" + kFirst, {"0 0-0"}},
        {"id: bg\n" + kFirst, {"22 0-0"}},
        {"id: iw\n" + kFirst, {"21 0-0"}},
        {"id: he\n" + kFirst, {"0 0-0"}},
        {"id:english\n" + kFirst, {"2 0-0"}},
        {"id: e\n" + kFirst, {"0 0-0"}},
        {"id: --, index: 0\n" + kFirst, {"0 0-0"}},
        {"id: " + nul + nul + "\n" + kFirst, {"23 0-0"}},  // two zero bytes are Danish
        {"id: " + nul + "\n" + kFirst, {"0 0-0"}},
        {kFirst + "id: en\n" + kSecond, {"0 0-0", "2 1-1"}},  // what precedes the first id is a track, too
        {"id: en\nid: fr\n" + kFirst, {"5 0-0"}},             // no picture, no track
        {"id: en\n" + kFirst + "id: fr\nid: ru\n", {"2 0-0"}},
        {"id: en\n" + kFirst + "id: fr\n" + kFirst + kSecond, {"2 0-0", "5 1-2"}},
        {"id: en\n" + kFirst + "id: en\n" + kFirst, {"2 0-0", "2 1-1"}},
        {"id:\n" + kFirst + kSecond, {"0 0-0"}},  // white space goes across the line end: the first line is lost
        {"id: en", {}},
        {"id:", {}},
    };
    for (const auto& row : kRows) {
        Scanned scanned(row.idx);
        EXPECT_EQ(row.tracks, tracksOf(scanned.parser())) << row.idx;
    }
    for (U32 language = 1; language < 23; ++language) {
        const U8* const code = SubtitleParserSUBIDX::m_au8LanguageCode[language];
        Scanned scanned("id: " + std::string(code, code + 2) + "\n" + kFirst);
        EXPECT_EQ(Texts({std::to_string(language) + " 0-0"}), tracksOf(scanned.parser()));
    }
}

TEST(SubtitleParserSUBIDX, Palettes) {
    const std::string sixteen = "palette: 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, a, B, c, D, e, ff00FF";
    const std::string fifteen = "palette: 10, 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e";
    const struct {
        std::string idx;
        U32 first, second, fourteenth, last;
    } kRows[] = {
        {sixteen, 0, 1, 14, 0xFF00FF},
        {sixteen + "\n", 0, 1, 14, 0xFF00FF},
        {sixteen + ", 17\r\n", 0, 1, 14, 0xFF00FF},
        {"palette:00ff8000 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff\n", 0x00FF8000, 0x22, 0, 0},  // blanks only
        {"palette:0,1,2,3,4,5,6,7,8,9,a,b,c,d,e,f\n", 0, 1, 14, 15},
        {fifteen + "\r\nsize: 1x1", 0xFF000000, 1, 14, 0},
        {fifteen + "\nsize: 1x1", 0xFF000000, 1, 14, 0},
        {fifteen + "\ndelay: +00:00:00:000", 0x10, 1, 14, 0xDE},  // the line end counts as the comma
        {"palette: \n", 0xFF000000, 0x77, 0x77, 0x77},
        {"palette: 1, 2, x", 0xFF000000, 2, 0x77, 0x77},
    };
    for (const auto& row : kRows) {
        test::VobSubInMemory files;
        for (U32& colour : files.parser.m_au32Palette) colour = 0x77;
        const test::LogCapture log;
        files.load(row.idx, "");
        const U32(&palette)[16] = files.parser.m_au32Palette;
        if (row.idx.find("00ff8000 11") != std::string::npos) {
            // a comma takes one character: the digit behind the blank
            EXPECT_EQ(0x00FF8000U, palette[0]);
            EXPECT_EQ(1U, palette[1]);
            continue;
        }
        EXPECT_EQ(row.first, palette[0]) << row.idx;
        EXPECT_EQ(row.second, palette[1]) << row.idx;
        EXPECT_EQ(row.fourteenth, palette[14]) << row.idx;
        EXPECT_EQ(row.last, palette[15]) << row.idx;
    }
}

TEST(SubtitleParserSUBIDX, SizeAndOrigin) {
    const struct {
        const char* idx;
        U32 width, height, x, y;
    } kRows[] = {
        {"size: 720x576\norg: 8, 16\n", 720, 576, 8, 16},
        {"size:1920*1080\norg:8 16\n", 1920, 1080, 8, 6},  // the comma takes a character
        {"size: 720 x 576\norg: 8,16\n", 720, 576, 8, 16},
        {"size: 720x576\nsize: 720\norg: 8, 16\norg: 8\n", 0, 0, 0, 0},
        {"size: x576\norg: , 16\n", 0, 0, 0, 0},
        {"size: 720x576\nsize:\n640x480\n", 0, 0, 0, 0},
        {"Size: 720x576\nORG: 1, 1\n", 0, 0, 0, 0},
    };
    for (const auto& row : kRows) {
        Scanned scanned(std::string(row.idx) + kFirst + "id: en\n" + kFirst);
        for (const U32 track : {0U, 1U, 2U}) {
            ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
            EXPECT_EQ(TRUE, scanned.parser().GetTrackInfo(track, &info));
            EXPECT_EQ(row.width, info.u32Width) << row.idx;
            EXPECT_EQ(row.height, info.u32Height) << row.idx;
            EXPECT_EQ(row.x, info.u32OriginX) << row.idx;
            EXPECT_EQ(row.y, info.u32OriginY) << row.idx;
            EXPECT_EQ(
                track == 1 ? E_MEDIA_SUBTITLE_PARSER_LANGUAGE_ENGLISH : E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED,
                info.eLanguage);
        }
    }
}

TEST(SubtitleParserSUBIDX, LinesThatAreNotUsed) {
    const struct {
        std::string idx;
        Texts log;
    } kRows[] = {
        {"# a comment\n#timestamp: 00:00:01:000, filepos: 000000000\n\n   \n", {}},
        {"langidx: 0\n", {kUnused}},
        {"custom colors: OFF, tridx: 0000\n", {kUnused}},
        {"custom colours: OFF\n", {kUnknown}},
        {"scale: 100%, 100%\nalpha: 100%\r\nsmooth: OFF", {kUnknown, kUnknown, kUnknown}},
        {"id: en, index: 0\nsize: 1x1\norg: 0, 0\n" + kFirst, {}},
        {std::string("\0abc\n", 5), {}},  // an empty text
        {std::string("a\0bc\n", 5), {kUnknown}},
        {"i", {kUnknown}},
    };
    for (const auto& row : kRows) EXPECT_EQ(row.log, Scanned(row.idx).log) << row.idx;
}

TEST(SubtitleParserSUBIDX, ByteOrderMarks) {
    Scanned utf8("\xEF\xBB\xBF" + kFirst + kSecond);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8, utf8.parser().m_eCodeType);
    EXPECT_EQ(Texts({kUnknown}), utf8.log);
    EXPECT_EQ(Texts({"2000@800"}), tagsOf(utf8.parser())) << "the first line is lost";
    Scanned comment("\xEF\xBB\xBF# VobSub index file\n" + kSecond);
    EXPECT_EQ(Texts({kUnknown}), comment.log);

    Scanned native(kFirst);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, native.parser().m_eCodeType);
    Scanned empty("");
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN, empty.parser().m_eCodeType);
    EXPECT_EQ(TRUE, empty.parser().bParseFinish);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, Scanned("\xEF\xBB").parser().m_eCodeType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, Scanned("\xFF\xFE").parser().m_eCodeType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG, Scanned("\xFE\xFF").parser().m_eCodeType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, Scanned("\xFE").parser().m_eCodeType);
}

// --- 16-bit indexes --------------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, LittleEndianIndex) {
    const std::string sixteen = "palette: 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e, ff00ff\r\n";
    Scanned scanned(test::utf16le("# VobSub index\r\nsize: 720x576\r\norg: 8,16\r\n" + sixteen +
                                  "langidx: 0\r\ncustom colors: OFF\r\nscale: 100%\r\n\r\nid: en, index: 0\r\n"
                                  "timestamp: 00:00:01:500, filepos: 000001800\r\ndelay: +00:00:02:000\r\n" +
                                  kFirst + "id: fr\n" + kSecond));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, scanned.parser().m_eCodeType);
    EXPECT_EQ(Texts({"1500@1800", "3000@0", "4000@800"}), tagsOf(scanned.parser()));
    EXPECT_EQ(Texts({"2 0-1", "5 2-2"}), tracksOf(scanned.parser()));
    EXPECT_EQ(Texts({kUnusedWide, kUnknown, "[SUBIDX] delay:2000, sign:1, hh:0, mm:0, ss:2, ms:0"}), scanned.log)
        << "langidx says nothing here";
    EXPECT_EQ(720U, scanned.parser().m_u32Width);
    EXPECT_EQ(576U, scanned.parser().m_u32Height);
    EXPECT_EQ(8U, scanned.parser().m_u32OriginX);
    EXPECT_EQ(16U, scanned.parser().m_u32OriginY);
    EXPECT_EQ(0xFF00FFU, scanned.parser().m_au32Palette[15]);
    EXPECT_EQ(14U, scanned.parser().m_au32Palette[14]);
}

TEST(SubtitleParserSUBIDX, BigEndianIndex) {
    // A blank is no white space as it is stored, so none may stand where white space is skipped.
    Scanned scanned(
        test::utf16be("id:en\r\ntimestamp:00:00:01:500,filepos: 000001800\r\ndelay:+00:00:02:000\r\n"
                      "timestamp:00:00:01:000,filepos:  00000800\r\n" +
                      kSecond + "custom colors: OFF\nlangidx: 0\nscale: 100%\n"));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG, scanned.parser().m_eCodeType);
    EXPECT_EQ(Texts({"1500@1800", "3000@800"}), tagsOf(scanned.parser()));
    EXPECT_EQ(Texts({"2 0-1"}), tracksOf(scanned.parser()));
    EXPECT_EQ(Texts({"[SUBIDX] delay:2000, sign:1, hh:0, mm:0, ss:2, ms:0", kUnusedWide, kUnknown}), scanned.log);
    EXPECT_EQ(Texts({"0 0-0"}),
              tracksOf(Scanned(test::utf16be("id: en\ntimestamp:00:00:01:500,filepos: 01\n")).parser()));
}

TEST(SubtitleParserSUBIDX, SizesOfSixteenBitIndexes) {
    const struct {
        std::string idx;
        U32 width, x;
    } kRows[] = {
        {test::utf16le("size: 720x576\norg: 8, 16\n"), 720, 0},  // the origin ends at the blank
        {test::utf16le("size: 720 x576\norg:8,16"), 0, 8},
        {test::utf16le("size:\r\n720x576\norg: \t8,16"), 720, 8},
        {test::utf16be("size: 720x576\n"), 720, 0},  // to the end of the data, where a line end is no white space
        {test::utf16be("size: 720x576\norg:8, 16\n"), 720, 8},
        {test::utf16be("size: 720x576" + std::string(242, '.')), 720, 0},  // 254 units
        {test::utf16be("size: 720x576" + std::string(247, '.')), 0, 0},    // 255 and more are not read
        {test::utf16le("size: 720x576" + std::string(247, '.')), 720, 0},
        {test::utf16le("size: 720x576" + std::string(248, '.')), 0, 0},
    };
    for (const auto& row : kRows) {
        Scanned scanned(row.idx);
        EXPECT_EQ(row.width, scanned.parser().m_u32Width) << row.idx.size();
        EXPECT_EQ(row.x, scanned.parser().m_u32OriginX) << row.idx.size();
    }
}

TEST(SubtitleParserSUBIDX, SixteenBitNumbersAreReadInPieces) {
    const struct {
        const char* line;
        Texts tags;      // of 8-bit text
        Texts wideTags;  // of 16-bit text
    } kRows[] = {
        {"timestamp: 00:00:01:5000 filepos: 000001800", {"6000@1800"}, {"6000@1800"}},  // thirteen units of time
        {"timestamp: 00:00:01:500, filepos: 01800012345678", {"1500@12345678"}, {"1500@12345678"}},   // 13 of position
        {"timestamp: 00:00:01:500, filepos: 018000123456789", {"1500@23456789"}, {"1500@23456789"}},  // 14
        {"timestamp: 00:00:01:500, filepos: 0180001234567890",
         {"1500@34567890"},
         {"1500@23456789"}},                                                                      // 15: one too many
        {"delay: +00:00:02:1234\ntimestamp: 00:00:01:500, filepos: 01", {"4734@1"}, {"4734@1"}},  // fourteen units
        {"delay: +00:00:02:12345\ntimestamp: 00:00:01:500, filepos: 01", {"15845@1"}, {"4734@1"}},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(row.tags, tagsOf(Scanned(row.line).parser())) << row.line;
        EXPECT_EQ(row.wideTags, tagsOf(Scanned(test::utf16le(row.line)).parser())) << row.line;
    }
}

TEST(SubtitleParserSUBIDX, LongPalettesOfSixteenBitIndexes) {
    const std::string sixteen = " 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e, f, 10";
    const size_t rest = 254 - sixteen.size();
    EXPECT_EQ(1U, Scanned(test::utf16le("palette:" + sixteen + std::string(rest, ' '))).parser().m_au32Palette[0]);
    Scanned tooLong(test::utf16le("palette:" + sixteen + std::string(rest + 1, ' ')));
    EXPECT_EQ(0xFF000000U, tooLong.parser().m_au32Palette[0]);
    EXPECT_EQ(0U, tooLong.parser().m_au32Palette[1]) << "not even in part";
    Scanned tooFew(test::utf16le("palette: 1, 2\r\nsize: 1x1\r\n"));
    EXPECT_EQ(0xFF000000U, tooFew.parser().m_au32Palette[0]);
    EXPECT_EQ(2U, tooFew.parser().m_au32Palette[1]);
    EXPECT_EQ(16U, Scanned(test::utf16be("palette:" + sixteen + "\r\n")).parser().m_au32Palette[15]);
    // Wide units take two bytes each; what exceeds the 256 bytes of the converted text is dropped.
    std::string wide = test::utf16le("palette:");
    for (int i = 0; i < 16; ++i) wide += test::utf16le(",", false) + std::string("10");  // U+3031 reads as "10"
    EXPECT_EQ(0xFF000000U, Scanned(wide).parser().m_au32Palette[0]) << "begins with a comma";
}

TEST(SubtitleParserSUBIDX, WideUnitsReadAsTheirTwoBytes) {
    // U+6469 is "id", U+6E65 "en"
    const auto scan = [](const char* between) {
        return std::make_unique<Scanned>(std::string("\xFF\xFE") + "id" + test::utf16le(between, false) + "en" +
                                         test::utf16le("\r\n" + kFirst + kSecond, false));
    };
    const auto blank = scan(": ");
    EXPECT_EQ(Texts({"2 0-1"}), tracksOf(blank->parser()));
    EXPECT_EQ(Texts(), blank->log);
    // The keyword counts as three units, which reach past the code here: the next line is taken for it.
    const auto none = scan(":");
    EXPECT_EQ(Texts({"0 0-0"}), tracksOf(none->parser()));
    EXPECT_EQ(Texts({"2000@800"}), tagsOf(none->parser()));
}

TEST(SubtitleParserSUBIDX, OnlyAUnitOfZeroMakesAWideLineEmpty) {
    const struct {
        U8 high, low;
        Texts log;
    } kRows[] = {{0x01, 0x00, {kUnknown}}, {0x30, 0x00, {kUnknown}}, {0x00, 0x01, {kUnknown}}, {0x00, 0x00, {}}};
    for (const auto& row : kRows) {
        const std::string le{static_cast<char>(row.low), static_cast<char>(row.high)};
        const std::string be{static_cast<char>(row.high), static_cast<char>(row.low)};
        EXPECT_EQ(row.log, Scanned("\xFF\xFE" + le + test::utf16le("bc\r\n", false)).log) << int{row.high};
        EXPECT_EQ(row.log, Scanned("\xFE\xFF" + be + test::utf16be("bc\r\n", false)).log) << int{row.high};
    }
}

TEST(SubtitleParserSUBIDX, SixteenBitIndexesOfOddLength) {
    for (const char last : {'7', '\n', '\0'}) {
        Scanned scanned(test::utf16le(kFirst + "timestamp: 00:00:02:000, filepos: 00000080") + last);
        EXPECT_EQ(last == '7' ? Texts({"1000@0", "2000@807"}) : Texts({"1000@0", "2000@80"}), tagsOf(scanned.parser()));
        EXPECT_EQ(TRUE, scanned.parser().bParseFinish);
    }
}

// --- the window on the index -----------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, LongIndexesAreReadInWindows) {
    std::string idx = "id: en\n";
    Texts tags;
    for (unsigned i = 0; i < 6000; ++i) {  // 264 KB
        idx += samples::indexLine(i * 10, i * 0x800) + (i % 3 == 0 ? "\r\n" : "\n");
        char text[32];
        snprintf(text, sizeof text, "%u@%x", i * 10, i * 0x800);
        tags.push_back(text);
    }
    Scanned bytes(idx);
    EXPECT_EQ(tags, tagsOf(bytes.parser()));
    EXPECT_EQ(Texts({"2 0-5999"}), tracksOf(bytes.parser()));
    EXPECT_EQ(0, bytes.parser().m_s64RawBufferPosition % 4096);
    Scanned wide(test::utf16le(idx));
    EXPECT_EQ(tags, tagsOf(wide.parser()));
    EXPECT_EQ(Texts(), wide.log);
}

TEST(SubtitleParserSUBIDX, WindowsMoveOnWhenLessThan4096BytesAreLeft) {
    const auto idxWithLineAt = [](size_t at) {
        std::string idx(at, '\n');
        idx[0] = '#';
        return idx + kFirst + "#" + std::string(70000, 'x');
    };
    const size_t step = 0x10000 - 4096;
    // The skip of line ends reaches the line in question from the first window, which the scan then stands in.
    for (const size_t at : {step - 1, step, step + 1}) {
        Scanned scanned(idxWithLineAt(at));
        EXPECT_EQ(Texts({"1000@0"}), tagsOf(scanned.parser())) << at;
        EXPECT_EQ(TRUE, scanned.parser().bParseFinish);
    }
    // A line that is longer than what is buffered is cut there; its rest is a new line.
    const std::string cut = "#" + std::string(0x10000 - 1 - 10, 'x');
    EXPECT_EQ(Texts(), tagsOf(Scanned(cut + kFirst + std::string(5000, '\n')).parser()));
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(Scanned("#" + std::string(0x10000 - 1, 'x') + kFirst + "\n").parser()));
}

TEST(SubtitleParserSUBIDX, AMarkWhereAWindowBeginsCountsAsOne) {
    // The scan stands on a multiple of 4096 when the window moves: the mark is looked for again.
    const auto fill = [](size_t size) {
        std::string line = "#" + std::string(4094, 'x') + "\n";
        std::string text;
        while (text.size() < size) text += line;
        return text;
    };
    const std::string head = fill(0x10000);  // sixteen lines of 4096 bytes
    const std::string tail = fill(0x8000);
    Scanned utf8(head + "\xEF\xBB\xBF" + kFirst + kSecond + tail);
    EXPECT_EQ(Texts({"2000@800"}), tagsOf(utf8.parser()));
    EXPECT_EQ(Texts({kUnknown}), utf8.log);
    Scanned plain(head + kFirst + kSecond + tail);
    EXPECT_EQ(Texts({"1000@0", "2000@800"}), tagsOf(plain.parser()));

    // A 16-bit index goes on as 8-bit text there, when the mark is not repeated.
    const auto wide = [](size_t bytes) {
        std::string text = test::utf16le("#" + std::string(bytes / 2 - 3, 'x') + "\n");
        return text;  // the mark counts
    };
    const std::string wideHead = wide(0x10000 - 4096);
    EXPECT_EQ(0U, wideHead.size() % 4096);
    const std::string wideTail = test::utf16le("#" + std::string(10000, 'x') + "\n", false);
    Scanned forgets(wideHead + test::utf16le(kFirst, false) + wideTail);
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(forgets.parser())) << "exactly 4096 bytes are left: the window stays";
    const std::string further = wide(0x10000);
    Scanned native(further + kFirst + wideTail);
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(native.parser())) << "read as bytes";
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, native.parser().m_eCodeType);
    Scanned repeated(further + test::utf16le(kFirst) + wideTail);
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(repeated.parser()));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, repeated.parser().m_eCodeType);
}

TEST(SubtitleParserSUBIDX, AFileShorterThanItsSizeEndsTheScan) {
    test::VobSubInMemory files;
    files.load(kFirst, "");
    files.parser.m_s64DataTotalSize = 1000000;
    files.parser.m_u32TagNum = 0;
    files.parser.m_vPrivateTrackInfo.clear();
    files.parser.ParserThread();
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(files.parser));
    EXPECT_EQ(Texts({"0 0-0"}), tracksOf(files.parser));
}

TEST(SubtitleParserSUBIDX, OddIndexesAreScannedInLinearTime) {
    const std::string nul(300000, '\0');
    const std::string blanks(300000, ' ');
    const std::string digits(300000, '9');
    for (const std::string& idx : {nul, blanks, digits, "timestamp:" + blanks + kFirst, "timestamp: " + digits,
                                   "palette:" + digits + blanks, "id:" + nul + "\n" + kFirst, std::string(300000, '\n'),
                                   test::utf16le("size:" + digits), test::utf16be("org:" + blanks)}) {
        Scanned scanned(idx);
        EXPECT_EQ(TRUE, scanned.parser().bParseFinish);
    }
}

TEST(SubtitleParserSUBIDX, SizesWithoutAnEndAreReadOnlyAsFarAsTheyCount) {
    // Stored big-endian, a line end is no white space: each of these sizes goes on to the end of the data.
    std::string idx;
    while (idx.size() < 600000) idx += "size:\n";
    const auto cost = [](const std::string& text) {
        const clock_t began = clock();
        EXPECT_EQ(TRUE, Scanned(text).parser().bParseFinish);
        return clock() - began;
    };
    EXPECT_LT(cost(test::utf16be(idx)), 50 * cost(test::utf16le(idx)) + CLOCKS_PER_SEC / 10);
}

// --- lookups ---------------------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, FindsTheTagInForce) {
    std::string idx = "id: en\n";
    for (const unsigned ms : {1000, 2000, 3000}) idx += samples::indexLine(ms, 0) + "\n";
    idx += "id: fr\n";
    for (const unsigned ms : {1500, 2500, 3500, 4500}) idx += samples::indexLine(ms, 0) + "\n";
    idx += "id: ru\n" + samples::indexLine(500, 0) + "\n";
    Scanned scanned(idx);
    const struct {
        U32 track, ms, tag;
    } kRows[] = {
        {0, 0, 0},       {0, 999, 0},  {0, 1000, 0},       {0, 1999, 0}, {0, 2000, 1}, {0, 2999, 1}, {0, 3000, 2},
        {0, 1000000, 2}, {1, 1499, 0}, {1, 1500, 3},       {1, 2499, 3}, {1, 2500, 4}, {1, 3499, 4}, {1, 3500, 5},
        {1, 4499, 5},    {1, 4500, 6}, {1, 0xFFFFFFFF, 6}, {2, 500, 7},  {2, 499, 0},  {2, 0, 0},    {0, 0x7FFFFFFF, 2},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(row.tag, scanned.parser().GetTag(row.track, row.ms)) << row.track << " " << row.ms;
}

TEST(SubtitleParserSUBIDX, BeforeATracksFirstTagTheTrackBeforeMayAnswer) {
    // its last tag starts in time
    Scanned scanned("id: en\n" + samples::indexLine(100, 0) + "\nid: fr\n" + samples::indexLine(1000, 0) + "\n" +
                    samples::indexLine(2000, 0) + "\n");
    EXPECT_EQ(0U, scanned.parser().GetTag(1, 99));
    Scanned three("id: en\n" + kFirst + samples::indexLine(100, 0) + "\nid: fr\n" + samples::indexLine(1000, 0) + "\n");
    EXPECT_EQ(1U, three.parser().GetTag(1, 500)) << "the last tag of English";
    EXPECT_EQ(0U, three.parser().GetTag(1, 99));
}

TEST(SubtitleParserSUBIDX, FindsLikeALinearSearch) {
    for (unsigned count = 1; count < 40; ++count) {
        std::string idx = "id: en\n";
        for (unsigned i = 0; i < 3; ++i) idx += samples::indexLine(900000 + i, 0) + "\n";  // never in time
        idx += "id: fr\n";
        for (unsigned i = 0; i < count; ++i) idx += samples::indexLine(10 + i * 10, 0) + "\n";
        Scanned scanned(idx);
        for (U32 ms = 0; ms < 20 + count * 10; ++ms) {
            const U32 begun = ms < 10 ? 0 : ms / 10 > count ? count : ms / 10;
            ASSERT_EQ(begun == 0 ? 0 : 2 + begun, scanned.parser().GetTag(1, ms)) << count << " tags, " << ms;
        }
    }
}

TEST(SubtitleParserSUBIDX, LookupsOfNothingAndOfBadTracks) {
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    EXPECT_EQ(0U, parser.GetTag(0, 1000)) << "no tracks";
    EXPECT_EQ(0U, parser.GetTag(99, 1000)) << "not even a bad one";
    Scanned scanned("id: en\n" + kFirst + kSecond);
    EXPECT_EQ(1U, scanned.parser().GetTag(0, 5000));
    EXPECT_THROW(scanned.parser().GetTag(1, 5000), std::out_of_range);
    EXPECT_THROW(scanned.parser().GetTag(0xFFFFFFFF, 5000), std::out_of_range);
    scanned.parser().Deinit();
    EXPECT_EQ(0U, scanned.parser().GetTag(1, 5000)) << "no table";
}

TEST(SubtitleParserSUBIDX, TheTimeOffsetIsSubtracted) {
    Scanned scanned("id: en\n" + kFirst + kSecond);
    SubtitleParserSUBIDX& parser = scanned.parser();
    parser.m_s32TimeOffsetMs = 500;
    EXPECT_EQ(0U, parser.GetTag(0, 2499));
    EXPECT_EQ(1U, parser.GetTag(0, 2500));
    parser.m_s32TimeOffsetMs = 3000;
    EXPECT_EQ(1U, parser.GetTag(0, 2000)) << "not from times below it";
    parser.m_s32TimeOffsetMs = -1000;
    EXPECT_EQ(1U, parser.GetTag(0, 1000));
}

TEST(SubtitleParserSUBIDX, DescribesItsTracks) {
    Scanned scanned("size: 720x576\nid: en\n" + kFirst + "id: fr\n" + kFirst);
    SubtitleParserSUBIDX& parser = scanned.parser();
    for (U32 i = 0; i < 16; ++i) parser.m_au32Palette_result[i] = i + 100;
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info;
    memset(&info, 0x5A, sizeof info);
    EXPECT_EQ(TRUE, parser.GetTrackInfo(1, &info));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_LANGUAGE_FRENCH, info.eLanguage);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_SUBIDX, info.eSubtitleType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I2, info.eCodeType);
    EXPECT_EQ(100U, info.au32Palette[0]);
    EXPECT_EQ(115U, info.au32Palette[15]);
    EXPECT_EQ(0x5A5A5A5AU, info.au32Palette[16]);
    EXPECT_EQ(0x5A5A5A5AU, info.au32Palette[255]);
    EXPECT_EQ(TRUE, parser.GetTrackInfo(2, &info));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED, info.eLanguage);
    EXPECT_EQ(720U, info.u32Width);
    EXPECT_EQ(FALSE, parser.GetTrackInfo(0, nullptr));

    ST_MEDIA_SUBTITLE_PARSER_INFO overview;
    memset(&overview, 0x5A, sizeof overview);
    EXPECT_EQ(TRUE, parser.GetSubtitleInfo(&overview));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_SUBIDX, overview.eSubtitleType);
    EXPECT_EQ(2U, overview.u32TrackNum);
    EXPECT_EQ(0x5A5A5A5AU, overview.u32CurrentTrackIndex);
    EXPECT_EQ(FALSE, parser.GetSubtitleInfo(nullptr));

    ST_MEDIA_SUBTITLE_PARSER_BUFFER_SIZE size;
    memset(&size, 0x5A, sizeof size);
    EXPECT_EQ(TRUE, parser.QueryBufferSize(&size));
    EXPECT_EQ(0x10000U, size.u32RawBufferSize);
    EXPECT_EQ(0x10000U, size.u32SubtitleBufferSize);
    EXPECT_EQ(0x5A5A5A5AU, size.u32TagBufferIncNum);
    EXPECT_EQ(TRUE, parser.QueryBufferSize(nullptr));
}

// --- gathering a unit ------------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, GathersAndDecodesASubpicture) {
    const samples::Subpicture picture = smallPicture();
    const std::string unit = samples::encodeUnit(picture);
    test::VobSubInMemory files;
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

TEST(SubtitleParserSUBIDX, TheColourOfTheTopLeftPixelIsBackground) {
    for (U32 code = 0; code < 4; ++code) {
        samples::Subpicture picture = smallPicture();
        for (uint8_t& contrast : picture.contrast) contrast = 15;
        picture.bitmap.at(0, 0) = static_cast<uint8_t>(code);
        test::VobSubInMemory files;
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
    test::VobSubInMemory files;
    files.load("palette: 0, ffffff, 202020, 808080, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, abcdef\n" + kFirst,
               samples::packUnit(samples::encodeUnit(picture)));
    ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    EXPECT_EQ(0xFFABCDEFU, files.parser.m_au32Palette_result[3]);
}

TEST(SubtitleParserSUBIDX, AUnitThatAppliesNothingIsReadAllTheSame) {
    const std::string unit = unitOf(4, 0, kArea + "\xFF");  // a zero link
    test::VobSubInMemory files;
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
    test::VobSubInMemory files;
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
    // A first payload of a byte less: the next pack would begin off a boundary.
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
        {"pack start", 3, 0xBB, false},
        {"largest byte 4", 4, 0x7F, true},
        {"byte 4 too large", 4, 0x80, false},
        {"bytes 5 to 13 are not looked at", 9, 0xEE, true},
        {"stuffing in the pack header is not looked at", 13, 0xFF, true},
        {"packet start code", 14, 1, false},
        {"packet start code", 15, 1, false},
        {"packet start code", 16, 2, false},
        {"another stream", 17, 0xBF, false},
        {"MPEG-2 flags", 20, 0x80, true},
        {"MPEG-2 flags", 20, 0xBF, true},
        {"MPEG-1 flags", 20, 0x01, false},
        {"MPEG-1 flags", 20, 0xC1, false},
        {"the substream, behind five bytes of header data", 28, 0x3F, true},
    };
    for (const auto& row : kRows) {
        std::string sub = samples::packUnit(unit);
        ASSERT_EQ(5, sub[22]);
        sub[row.at] = static_cast<char>(row.value);
        test::VobSubInMemory files;
        files.load(indexOf({0}), sub);
        EXPECT_EQ(row.read ? unit.size() : 0, files.parser.GetData(0, nullptr, 0, 0, nullptr)) << row.what;
    }
}

TEST(SubtitleParserSUBIDX, UnitSizes) {
    const std::string unit = samples::encodeUnit(smallPicture());
    const auto read = [](const std::string& data) {
        test::VobSubInMemory files;
        files.load(indexOf({0}), samples::packUnit(data));
        return files.parser.GetData(0, nullptr, 0, 0, nullptr);
    };
    std::string other = unit;
    other[0] = other[1] = 0;
    EXPECT_EQ(0U, read(other)) << "size 0";
    other[1] = 1;
    EXPECT_EQ(unit.size(), read(other)) << "the count is that of all payload bytes";
    EXPECT_EQ(unit.size() + 100, read(unit + std::string(100, 'x')));
    other[0] = 0x7F;
    EXPECT_EQ(0U, read(other)) << "never complete";
    // a payload of less than four bytes behind a long header wraps at 65536
    std::string sub = samples::packUnit(unit);
    sub[18] = sub[19] = 0;
    test::VobSubInMemory files;
    files.load(indexOf({0}), sub);
    EXPECT_EQ(65536U - 5 - 4, files.parser.GetData(0, nullptr, 0, 0, nullptr));
}

TEST(SubtitleParserSUBIDX, LengthsBeyond65535AreDecodedWhole) {
    // 1,000 bytes and then a payload that wraps: together more than 16 bits tell
    std::string sub = samples::packUnit(std::string("\x40\x00", 2) + std::string(4000, '\0'));
    sub[2048 + 18] = sub[2048 + 19] = 0;  // length 0: 65532 bytes
    test::VobSubInMemory files;
    files.load(indexOf({0}), sub);
    EXPECT_EQ(2019U + 65532U, files.parser.GetData(0, nullptr, 0, 0, nullptr));

    // control sequences behind what 16 bits tell of the total, 2015
    sub = samples::packUnit(std::string("\x40\x00", 2) + unitOf(2100, 2100, kArea + "\xFF").substr(2));
    sub[2048 + 18] = sub[2048 + 19] = 0;
    files.load(indexOf({0}), sub);
    stSubDecoderInfo info = {};
    EXPECT_EQ(2019U + 65532U, files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_EQ(4, info.u16Width);
}

TEST(SubtitleParserSUBIDX, WhatAPayloadLacksReadsZero) {
    // The first offsets, 4 and 10, give the lengths; the second ones lie behind the window, where the fields stay
    // background.
    const std::string commands = "\x05" + std::string("\x00\x00\x03\x00\x00\x08", 6) + "\x06" +
                                 std::string("\x00\x04\x00\x0A", 4) + "\x06\x09\x10\x08\x10\xFF";
    std::string sub = samples::packUnit(unitOf(24, 24, commands));
    sub[18] = sub[19] = 0;  // of 65527 bytes 2019 are there
    test::VobSubInMemory files;
    files.load(indexOf({0}), sub);
    const DirtyHeap dirty;
    stSubDecoderInfo info = {};
    EXPECT_EQ(65527U, files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_EQ(4, info.u16Width);
    EXPECT_EQ(6, files.parser.m_pDecoder->m_display_param.u16RLTopLen);
    EXPECT_EQ(std::vector<U8>(32), bitmapOf(files.parser, info));
}

TEST(SubtitleParserSUBIDX, TheWorkingBlockIsSizedByTheIndex) {
    if (!test::AllocationFails::supported()) GTEST_SKIP();
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
        test::VobSubInMemory files;
        files.load(indexOf(row.positions), sub);
        {
            const test::AllocationFails fails(row.size);
            EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, row.index, nullptr)) << row.size;
        }
        const test::AllocationFails fails(row.size + 1);
        EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, row.index, nullptr)) << row.size;
    }
}

TEST(SubtitleParserSUBIDX, DescendingPositions) {
    const std::string packs = samples::packUnit(samples::encodeUnit(smallPicture()));
    const std::string sub(packs + std::string(100000, '\0') + packs);
    test::VobSubInMemory files;
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
    test::VobSubInMemory files;
    files.load(indexOf({0, 0}), sub);
    EXPECT_EQ(36000U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    if (!test::AllocationFails::supported()) GTEST_SKIP();
    {
        const test::AllocationFails fails(65536);
        EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    }
    {
        const test::AllocationFails fails(65537);
        EXPECT_EQ(36000U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    }
    // it grows already when the data fills it: 17 x 2019 bytes and so on never meet 32768 exactly, one payload does
    std::string exact = unit.substr(0, 2);
    exact.resize(32768);
    exact[0] = static_cast<char>(0x80);
    exact[1] = 0;
    files.load(indexOf({0, 0}), samples::packUnit(exact));
    EXPECT_EQ(32768U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    const test::AllocationFails fails(32769);
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
}

TEST(SubtitleParserSUBIDX, WindowsOnTheStream) {
    // 200 pictures of a pack each, in any order
    const samples::VobSub film = smallFilm(200);
    test::VobSubInMemory files;
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
    test::VobSubInMemory files;
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

TEST(SubtitleParserSUBIDX, TheFillOfTheIndexsWindowDecidesWhetherTheOtherMoves) {
    const samples::VobSub film = smallFilm(64);
    test::VobSubInMemory files;
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
        const std::string unit = unitOf(row.unit - 5, row.unit - 5, "\xFF");
        ASSERT_EQ(row.unit, unit.size());
        test::VobSubInMemory files;
        files.load(indexOf({0, 9 * 2048}), before + samples::packUnit(unit) + std::string(0x10000, '\0'));
        ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
        files.parser.m_u32RawBufferDataSize = row.indexFill;
        EXPECT_EQ(row.unit, files.parser.GetData(0, nullptr, 0, 1, nullptr));
        EXPECT_EQ(row.window, files.parser.m_s64SubtitleBufferPosition) << row.unit << " " << row.indexFill;
    }
}

TEST(SubtitleParserSUBIDX, AUnitBehindTheWindowIsNotThere) {
    std::string unit(60000, '\0');
    unit[0] = static_cast<char>(60000 >> 8);
    unit[1] = static_cast<char>(60000 & 0xFF);
    const std::string packs = samples::packUnit(unit);  // 30 packs
    test::VobSubInMemory files;
    files.load(indexOf({0x800}), std::string(0x800, '\0') + packs);
    EXPECT_EQ(60000U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    // 4 packs into a window of 32: two packs too far
    files.load(indexOf({0x2000}), std::string(0x2000, '\0') + packs);
    EXPECT_EQ(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
}

TEST(SubtitleParserSUBIDX, PositionsOutsideTheStream) {
    const std::string packs = samples::packUnit(samples::encodeUnit(smallPicture()));
    test::VobSubInMemory files;
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

TEST(SubtitleParserSUBIDX, APictureThatIsTooLarge) {
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap(2, 2);
    std::string unit = samples::encodeUnit(picture);
    const size_t area = unit.find("\x05", 8) + 1;
    unit.replace(area, 6, std::string("\x00\x0F\xFF\x00\x0F\xFF", 6));  // 4096 x 4094
    test::VobSubInMemory files;
    files.load(indexOf({0}), samples::packUnit(unit));
    const test::LogCapture log;
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
    test::VobSubInMemory files;
    files.load(indexOf({0}), samples::packUnit(unit));
    stSubDecoderInfo info = {};
    EXPECT_EQ(unit.size(), files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_EQ(4096, info.u16Width);
    EXPECT_EQ(2024, info.u16Height);
}

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
    test::VobSubInMemory files;
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
