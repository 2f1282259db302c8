// Files and calls that nobody should make: nothing crashes, hangs, reads too far or is left behind.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/SubtitleParserSRT.h"
#include "tests/ParserTools.h"
#include "tests/support/Interpose.h"

namespace {

using namespace android;
using namespace test;
using namespace std::literals;

char* pathOf(const TempFile& file) { return const_cast<char*>(file.path()); }

/// Everything that a player may ask of a parser in whatever state, into buffers of exactly the size named.
void askEverything(SubtitleParserSRT& parser) {
    const U32 count = parser.GetTagNum();
    std::vector<U32> indices{count, count + 1, 8192, 0xFFFFFFFF};
    for (U32 i = 0; i < std::min(count, 20u); ++i) indices.push_back(i);
    if (count > 20) indices.insert(indices.end(), {count / 2, count - 2, count - 1});
    for (const U32 index : indices) {
        for (const U32 size : {0u, 1u, 2u, 3u, 4u, 6u, 7u, 8u, 9u, 64u, 8192u, 20000u}) {
            const std::unique_ptr<U8[]> buffer(new U8[size]);
            const U32 units = parser.GetData(0, buffer.get(), size, index);
            ASSERT_LE(units, size) << "entry " << index;
            parser.GetNextData(0, buffer.get(), size, index);
        }
        ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
        parser.GetTagInfo(0, index, &tag);
        const U32 found = parser.GetTag(0, tag.u32TimeStart);
        ASSERT_LT(found, std::max(count, 1u));
    }
    for (const U32 time : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        ASSERT_LT(parser.GetTag(0, time), std::max(count, 1u));
    }
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
    parser.GetTrackInfo(0, &info);
}

/// Scans `data` on this thread and asks for all that came of it. Answers the number of tags.
U32 survive(std::string_view data) {
    SubtitleParserSRT parser(nullptr);
    load(parser, data);
    parser.ParserThread();
    EXPECT_EQ(TRUE, parser.bParseFinish) << show(data);
    askEverything(parser);
    return parser.GetTagNum();
}

const std::string kEntries =
    "1\r\n00:00:01,000 --> 00:00:02,000\r\nHello <i>World</i>\r\n{y:i}second line\r\n\r\n"
    "2\r\n00:00:03.500 --> 00:00:04.750\r\n\r\n"
    "3\r\n00:00:05,000 --> 00:00:06,000\r\n<b>{x}\r\nBye</b>\r\n\r\n";

/// The same text in every encoding.
std::vector<std::string> encoded(const std::string& in) { return {in, "\xEF\xBB\xBF" + in, utf16le(in), utf16be(in)}; }

// ------------------------------------------------------------------------------------------------- bad content

TEST(BadContent, CutAtEveryByte) {
    for (const std::string& file : encoded(kEntries)) {
        for (size_t size = 0; size <= file.size(); ++size) {
            // One entry for each timing line that is there as far as its last millisecond.
            ASSERT_LE(survive(std::string_view(file).substr(0, size)), 3u);
        }
        EXPECT_EQ(3u, survive(file));
    }
}

TEST(BadContent, NulAtEveryByte) {
    for (const std::string& file : encoded(kEntries)) {
        for (size_t i = 0; i < file.size(); ++i) {
            std::string spoiled = file;
            spoiled[i] = 0;
            ASSERT_LE(survive(spoiled), 3u) << i;
        }
    }
    EXPECT_EQ(0u, survive(std::string(1000, '\0')));
    EXPECT_EQ(0u, survive("\xFF\xFE" + std::string(1000, '\0')));
    EXPECT_EQ(0u, survive("\xFE\xFF" + std::string(1001, '\0')));
}

TEST(BadContent, AByteLostAnywhere) {
    for (const std::string& file : encoded(kEntries)) {
        for (size_t i = 0; i < file.size(); ++i) {
            std::string spoiled = file;
            spoiled.erase(i, 1);
            survive(spoiled);
        }
    }
}

TEST(BadContent, BytesInDisorder) {
    // A fixed sequence, the same on every machine: each round changes a few bytes for ones that mean something.
    U32 state = 12345;
    const auto next = [&state](size_t below) {
        state = state * 1664525 + 1013904223;
        return static_cast<size_t>(state >> 8) % below;
    };
    constexpr std::string_view kBytes = "\0\x01\r\n \t0159:,.-><{}/aZ\x7F\x80\xA4\xEF\xFE\xFF"sv;
    const std::vector<std::string> files = encoded(kEntries);
    for (int round = 0; round < 2000; ++round) {
        std::string file = files[next(files.size())];
        for (size_t changes = 1 + next(12); changes > 0; --changes) {
            const size_t at = next(file.size());
            switch (next(3)) {
                case 0:
                    file[at] = kBytes[next(kBytes.size())];
                    break;
                case 1:
                    file.insert(at, 1 + next(4), kBytes[next(kBytes.size())]);
                    break;
                default:
                    file.erase(at, 1 + next(4));
            }
        }
        survive(file);
    }
}

// A single line of 300 KB. Were any step worse than linear, this would not end in the test's time.
TEST(BadContent, OneVeryLongLine) {
    constexpr size_t kLength = 300 * 1024;
    const char* const kPieces[] = {"x",     " ",       "\t",       "9",  "0:",          "0:0:0,0 --> ", "<b",   "<b>",
                                   "{b",    "{b}",     "\r",       "\n", "<",           "\r\n\r",       "\n\r", "1\n",
                                   "{b}\r", ">",       "}",        "</", "{",           "1 ",           "1:",   "0\r",
                                   "a\r\n", "<b>\r\n", "\xA4<b\r", "-",  "\xEF\xBB\xBF"};
    for (const std::string piece : kPieces) {
        SCOPED_TRACE(show(piece));
        std::string line;
        while (line.size() < kLength) line += piece;
        for (const std::string& file : encoded(line)) survive(file);
        for (const std::string& file : encoded("00:00:01,000 --> 00:00:02,000\r\n" + line)) survive(file);
    }
}

TEST(BadContent, DigitsWithoutEnd) {
    const std::string digits(10000, '7');
    // A number takes 16 digits and a literal any one: seven numbers and nine literals later the eighth begins.
    EXPECT_EQ(0u, survive(digits.substr(0, 7 * 16 + 9)));
    EXPECT_EQ(1u, survive(digits.substr(0, 7 * 16 + 9 + 1)));
    EXPECT_EQ(1u, survive(digits));
    EXPECT_EQ(1u, survive(digits + "\n" + digits.substr(0, 100) + "\n"));
    EXPECT_EQ(1u, survive("1:2:3,4 --> 5:6:7," + digits));
    EXPECT_EQ(1u, survive("1:2:3,4 --> 5:6:" + digits));
    EXPECT_EQ(0u, survive("1:2:3,4 --> 5:6:" + digits.substr(0, 17)));
    EXPECT_EQ(1u, survive("1:2:3,4 --> 5:6:" + digits.substr(0, 18)));
    EXPECT_EQ(0u, survive(utf16le("00:00:01,000 --> 00:00:02," + digits.substr(0, 2))));
    EXPECT_EQ(1u, survive(utf16le("00:00:01,000 --> 00:00:02," + digits)));
}

TEST(BadContent, TimesAboveThirtyTwoBits) {
    SubtitleParserSRT parser(nullptr);
    load(parser, "4294967296:0:0,0 --> 9999999999999999:9999999999999999:9999999999999999,9999999999999999\nHi"sv);
    parser.ParserThread();
    // 9999999999999999 is 0x6FC0FFFF in 32 bits; hours, minutes and seconds add up in 32 bits too.
    constexpr U32 kNines = 0x6FC0FFFF;
    EXPECT_EQ((std::vector<Tag>{{0, (kNines * 3600 + kNines * 60 + kNines) * 1000 + kNines, 89}}), tagsOf(parser));
    askEverything(parser);
}

TEST(BadContent, Utf16WithAnOddLastByte) {
    for (const std::string& file : {utf16le(kEntries), utf16be(kEntries)}) {
        for (const char last : {'\0', '\r', '\n', '0', '\xFF'}) EXPECT_EQ(3u, survive(file + last));
    }
    for (const std::string mark : {"\xFF\xFE", "\xFE\xFF"}) {
        for (const char last : {'\0', '\r', '\n', '0', '\xFF'}) EXPECT_EQ(0u, survive(mark + last));
    }
}

TEST(BadContent, TwentyThousandEntries) {
    std::string file;
    for (int i = 0; i < 20000; ++i) {
        const std::string seconds = std::to_string(i);
        file += seconds + "\n0:0:" + seconds + ",0 --> 0:0:" + seconds + ",500\nNumber " + seconds + "\n\n";
    }
    SubtitleParserSRT parser(nullptr);
    load(parser, file);
    parser.ParserThread();
    EXPECT_EQ(20000u, parser.GetTagNum());
    EXPECT_EQ(24576u, parser.m_u32TagBufferNum);
    for (const U32 i : {0u, 8191u, 8192u, 16383u, 16384u, 19999u}) {
        EXPECT_EQ(i, parser.GetTag(0, i * 1000 + 999));
        EXPECT_EQ(text("Number " + std::to_string(i)), textOf(parser, i));
    }
    askEverything(parser);
}

TEST(BadContent, AnEntryOfAHundredKilobytes) {
    const std::string timing = "00:00:01,000 --> 00:00:02,000\r\n";
    const std::string body(100 * 1024, 'x');
    for (const std::string& file : encoded("1\r\n" + timing + body + "\r\n\r\n2\r\n" + timing + "next\r\n")) {
        SubtitleParserSRT parser(nullptr);
        load(parser, file);
        parser.ParserThread();
        ASSERT_EQ(2u, parser.GetTagNum());
        // cut to the work buffer of 8192 bytes; a big-endian text begins on the line end, whose CR is dropped
        const std::string kept = parser.m_eCodeType == kUtf16Be   ? "\n" + std::string(4094, 'x')
                                 : parser.m_eCodeType == kUtf16Le ? std::string(4096, 'x')
                                                                  : std::string(8192, 'x');
        EXPECT_EQ(text(kept), textOf(parser, 0, 300000));
        askEverything(parser);
    }
}

// --------------------------------------------------------------------------------------------------- bad files

/// A parser through BeginParse, whatever comes of it, and everything asked of it afterwards.
BOOL play(SubtitleParserSRT& parser) {
    const BOOL result = parser.BeginParse();
    askEverything(parser);
    EXPECT_EQ(TRUE, parser.StopParse());
    EXPECT_EQ(TRUE, parser.Deinit());
    askEverything(parser);
    return result;
}

class BadFile : public testing::Test {
    void SetUp() override {
        mThreads = threadCount();
        mDescriptors = openDescriptors();
    }
    void TearDown() override {
        EXPECT_EQ(mThreads, threadCount()) << "a thread was left behind";
        EXPECT_EQ(mDescriptors, openDescriptors()) << "a descriptor was left behind";
    }
    unsigned mThreads = 0, mDescriptors = 0;
};

TEST_F(BadFile, Missing) {
    char path[] = "/nowhere/at/all.srt";
    SubtitleParserSRT byPath(path), part(path, 0, 100), null(nullptr), nullPart(nullptr, 0, 0);
    for (SubtitleParserSRT* parser : {&byPath, &part, &null, &nullPart}) EXPECT_EQ(FALSE, play(*parser));
}

TEST_F(BadFile, ADirectory) {
    char path[] = "/tmp";
    const int fd = open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    {
        // What its length is differs between file systems; it has no entries on any.
        SubtitleParserSRT byPath(path), byFd(fd, 0, 100), part(path, 0, 100);
        for (SubtitleParserSRT* parser : {&byPath, &byFd, &part}) {
            play(*parser);
            EXPECT_EQ(0u, parser->GetTagNum());
        }
        SubtitleFileProcess bare(fd, 0, 0);
        bare.mSourceType = SubtitleFileProcess::SOURCE_TYPE_FD;
        bare.Open();
        bare.Length();
        U8 buffer[16];
        EXPECT_EQ(0xFFFFFFFFu, bare.Read(buffer, sizeof buffer));
        bare.Close();
    }
    close(fd);
}

TEST_F(BadFile, AClosedDescriptor) {
    const TempFile file(kEntries);
    const int fd = dup(file.fd());
    close(fd);
    for (const int closed : {fd, -1, -100, 1 << 20}) {
        SubtitleParserSRT parser(closed, 0, 100);
        EXPECT_EQ(FALSE, play(parser)) << closed;
    }
}

TEST_F(BadFile, ADescriptorClosedBehindTheParsersBack) {
    const TempFile file(kEntries);
    SubtitleParserSRT parser(file.fd(), 0, 0);
    close(parser.pFileProcess->mFd);
    EXPECT_EQ(FALSE, play(parser));
}

TEST_F(BadFile, ADescriptorForWritingOnly) {
    const TempFile file(kEntries);
    const int fd = open(file.path(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    {
        SubtitleParserSRT parser(fd, 0, 0);
        play(parser);
        EXPECT_EQ(0u, parser.GetTagNum());
    }
    close(fd);
}

TEST_F(BadFile, APipe) {
    int ends[2];
    ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
    {
        SubtitleParserSRT parser(ends[0], 0, 0);
        EXPECT_EQ(FALSE, play(parser));
    }
    close(ends[0]);
    close(ends[1]);
}

/// Descriptor 0 closed while this lives.
class WithoutInput {
public:
    WithoutInput() : mKept(fcntl(0, F_DUPFD_CLOEXEC, 3)) { close(0); }
    ~WithoutInput() {
        close(0);
        if (mKept >= 0) {
            dup2(mKept, 0);
            close(mKept);
        }
    }

private:
    int mKept;
};

TEST_F(BadFile, DescriptorZeroIsAsGoodAsAnyForTheCaller) {
    const TempFile file(kEntries);
    const WithoutInput closed;
    ASSERT_EQ(0, open(file.path(), O_RDONLY));
    SubtitleParserSRT parser(0, 0, 0);
    EXPECT_GE(parser.pFileProcess->mFd, 1);
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(3u, parser.GetTagNum());
}

TEST_F(BadFile, ADuplicateThatIsZeroIsNone) {
    const TempFile file(kEntries);
    const WithoutInput closed;  // so the duplicate comes out as 0
    {
        SubtitleParserSRT parser(file.fd(), 0, 0);
        ASSERT_EQ(0, parser.pFileProcess->mFd);
        const LogCapture log;
        EXPECT_EQ(FALSE, play(parser));
        EXPECT_EQ("Open filename = \n", log.texts().at(1));
        EXPECT_EQ("fopen fialded fun=Open line=110\n", log.texts().at(2));
    }
    EXPECT_NE(-1, fcntl(0, F_GETFD)) << "and is never closed";
}

TEST_F(BadFile, LongPaths) {
    for (const size_t length : {510, 511, 512, 513, 600, 5000}) {
        std::string missing(length, 'p');
        SubtitleParserSRT byPath(missing.data()), part(missing.data(), 0, 10);
        EXPECT_EQ(FALSE, play(byPath)) << length;
        EXPECT_EQ(FALSE, play(part)) << length;

        // The same file by a name of that length: 512 bytes of it are kept.
        const TempFile file(kEntries);
        std::string path = file.path();
        path.insert(path.rfind('/'), length - path.size(), '/');
        SubtitleParserSRT present(path.data());
        EXPECT_EQ(length <= 512 ? TRUE : FALSE, present.BeginParse()) << length;
    }
}

TEST_F(BadFile, SizesThatCannotBe) {
    const TempFile file(kEntries);
    for (const S64 length : {-1LL, -2LL, -64LL, -65LL, 1LL << 62, -(1LL << 62)}) {
        SubtitleParserSRT parser(pathOf(file), 0, length);
        EXPECT_EQ(FALSE, play(parser)) << length;
    }
    for (const S64 offset : {-1LL, 1LL << 31, -(1LL << 31)}) {
        SubtitleParserSRT parser(pathOf(file), offset, 10);
        EXPECT_EQ(FALSE, play(parser)) << offset;
    }
    SubtitleParserSRT empty(pathOf(file), 0, 0);
    EXPECT_EQ(TRUE, play(empty));
    EXPECT_EQ(0u, empty.GetTagNum());
    SubtitleParserSRT behind(pathOf(file), 1000000, 10);
    EXPECT_EQ(TRUE, play(behind)) << "ten bytes that nobody had";
    EXPECT_EQ(0u, behind.GetTagNum());
}

TEST_F(BadFile, AFileThatShrinksAndOneThatGrows) {
    for (const off_t size : {off_t{40}, off_t{100000}}) {
        const TempFile file(kEntries);
        SubtitleParserSRT parser(pathOf(file));
        ASSERT_EQ(1, parser.pFileProcess->Open());
        ASSERT_EQ(TRUE, parser.Init(parser.pFileProcess->Length()));
        ASSERT_EQ(0, truncate(file.path(), size));
        parser.pFileProcess->Read(parser.m_pu8RawBuffer, static_cast<U64>(parser.m_s64DataTotalSize));
        parser.ParserThread();
        askEverything(parser);
    }
}

// ------------------------------------------------------------------------------------------------ bad manners

TEST_F(BadFile, NothingIsAskedOfAParserButToEnd) {
    const TempFile file(kEntries);
    SubtitleParserSRT byPath(pathOf(file)), byFd(file.fd(), 0, 0), part(pathOf(file), 0, 10);
}

TEST_F(BadFile, EverythingIsAskedBeforeTheFileIsOpen) {
    const TempFile file(kEntries);
    SubtitleParserSRT parser(file.fd(), 0, 0);
    askEverything(parser);
    parser.m_eCodeType = kNative;
    askEverything(parser);
    EXPECT_EQ(TRUE, parser.StopParse());
    EXPECT_EQ(TRUE, parser.Deinit());
    EXPECT_EQ(TRUE, play(parser));
}

TEST_F(BadFile, OpenedTwiceAndAgainAfterTheEnd) {
    const TempFile file(kEntries);
    SubtitleParserSRT parser(file.fd(), 0, 0);
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(3u, parser.GetTagNum());
    EXPECT_EQ(TRUE, parser.Deinit());
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(3u, parser.GetTagNum());
}

TEST_F(BadFile, DestroyedAtAnyMomentOfItsWorker) {
    std::string content;
    for (int i = 0; i < 2000; ++i) content += kEntries;
    const TempFile file(content);
    for (int i = 0; i < 40; ++i) {
        VirtualClock clock;
        auto parser = std::make_unique<SubtitleParserSRT>(pathOf(file));
        ThreadGate gate;
        // The wait ends while the worker is held back, has just begun or is under way.
        clock.atSleep(1, [&] {
            if (i % 2 == 0) gate.open();
            for (int k = 0; k < i * 20; ++k) sched_yield();
            clock.advance(100000);
        });
        const BOOL result = parser->BeginParse();
        gate.open();
        if (result == TRUE) {
            EXPECT_EQ(6000u, parser->GetTagNum());
        }
        parser.reset();
    }
}

TEST_F(BadFile, NoThreadCanBeHad) {
    const TempFile file(kEntries);
    SubtitleParserSRT parser(file.fd(), 0, 0);
    for (int i = 0; i < 3; ++i) {
        const ThreadCreateFails fails;
        EXPECT_EQ(FALSE, parser.BeginParse());
        askEverything(parser);
    }
}

TEST_F(BadFile, NoStreamCanBeHad) {
    for (const char* call : {"dup", "fdopen", "fopen", "fseek", "ftell"}) {
        const TempFile file(kEntries);
        SubtitleParserSRT byPath(pathOf(file)), byFd(file.fd(), 0, 0), part(pathOf(file), 3, 50);
        for (SubtitleParserSRT* parser : {&byPath, &byFd, &part}) {
            {
                const CallFails fails(call, 1000);
                play(*parser);
            }
            EXPECT_EQ(TRUE, parser->BeginParse()) << "all is well again after " << call;
        }
    }
}

}  // namespace
