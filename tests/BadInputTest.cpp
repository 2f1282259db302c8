// Files and calls that nobody should make, of every text format: nothing crashes, hangs, reads too far or is left
// behind.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "subtitle/SubtitleFileProcess.h"
#include "tests/support/Cuts.h"
#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"

namespace {

using namespace test;

constexpr U32 kSizes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 15, 16, 40, 64, 8191, 8192, 20000};

/// Everything that a player may ask of a parser in whatever state, into buffers of exactly the size named.
template <class Parser>
void askEverything(Parser& parser) {
    const U32 count = parser.GetTagNum();
    std::vector<U32> indices{count, count + 1, 8192, 0xFFFFFFFF};
    for (U32 i = 0; i < std::min(count, 20u); ++i) indices.push_back(i);
    if (count > 20) indices.insert(indices.end(), {count / 2, count - 2, count - 1});
    const U32 width = isWide(parser.m_eCodeType) ? 2 : 1;
    for (const U32 index : indices) {
        for (const U32 size : kSizes) {
            const std::unique_ptr<U8[]> buffer(new U8[size]);
            const U32 units = parser.GetData(0, buffer.get(), size, index);
            ASSERT_LE(units * width, size) << "entry " << index;
            stSubDecoderInfo info{};
            ASSERT_LE(parser.GetData(0, buffer.get(), size, index, &info) * width, size) << "entry " << index;
            if constexpr (std::is_same_v<Parser, SubtitleParserSRT>) parser.GetNextData(0, buffer.get(), size, index);
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
template <class Format>
U32 survive(std::string_view data) {
    typename Format::Parser parser(-1, 0, 0);
    scan<Format>(parser, data);
    EXPECT_EQ(TRUE, parser.bParseFinish) << show(data);
    askEverything(parser);
    return parser.GetTagNum();
}

/// The same through a file, as a player would; a dialect may refuse it.
template <class Format>
void surviveFile(std::string_view data) {
    Parsed<typename Format::Parser> parsed(data, 25);
    EXPECT_TRUE(parsed.result == TRUE || (Format::kRefuses && parsed.result == FALSE)) << show(data);
    askEverything(parsed.parser);
}

/// The format's file, longer: with something in front, markup in the text, three entries.
template <class Format>
std::string richSample() {
    const std::string sample = Format::file();
    std::string marked = sample;
    const size_t text = std::min(marked.find("llo"), marked.find("Top"));
    if (text != std::string::npos) marked.insert(text, "{y:i}a<b>c</b>d{e}<f>|g < h");
    return "title\r\n" + sample + marked + sample;
}

template <class Format>
class BadInput : public testing::Test {
    unsigned mThreads = threadCount(), mDescriptors = openDescriptors();
    void TearDown() override {
        EXPECT_EQ(mThreads, threadCount()) << "a thread was left behind";
        EXPECT_EQ(mDescriptors, openDescriptors()) << "a descriptor was left behind";
    }
};

template <class Format>
class BadContent : public BadInput<Format> {
protected:
    const std::string mSample = richSample<Format>();
    const std::string mHead = Format::file().substr(0, Format::file().find("llo"));  // up to inside the text
};

TYPED_TEST_SUITE(BadContent, TextFormats, FormatNames);

TYPED_TEST(BadContent, CutAtEveryByte) {
    for (const std::string& whole : inEveryEncoding(this->mSample)) {
        forEachCut(whole, [](const std::string& part) {
            survive<TypeParam>(part);
            if (part.size() % 8 == 0) surviveFile<TypeParam>(part);
        });
    }
}

TYPED_TEST(BadContent, NulAtEveryByte) {
    for (const std::string& whole : inEveryEncoding(this->mSample)) forEachZero(whole, survive<TypeParam>);
    EXPECT_EQ(0u, survive<TypeParam>(std::string(1000, '\0')));
    EXPECT_EQ(0u, survive<TypeParam>("\xFF\xFE" + std::string(1000, '\0')));
    EXPECT_EQ(0u, survive<TypeParam>("\xFE\xFF" + std::string(1001, '\0')));
}

TYPED_TEST(BadContent, AByteLostAnywhere) {
    for (const std::string& whole : inEveryEncoding(this->mSample)) forEachLoss(whole, survive<TypeParam>);
}

TYPED_TEST(BadContent, BytesInDisorder) {
    const unsigned rounds = std::is_same_v<TypeParam, Srt> ? 2000 : scaled(2000);
    forEachDisorder(inEveryEncoding(this->mSample), rounds, survive<TypeParam>);
    forEachDisorder(inEveryEncoding(this->mSample), scaled(200), surviveFile<TypeParam>);
}

TYPED_TEST(BadContent, OddLengthsOf16BitText) {
    const std::string sample = TypeParam::file();
    for (const std::string& content : {utf16le(sample), utf16be(sample), "\xFF\xFE"s, "\xFE\xFF"s, "\xFF"s, "\xFE"s}) {
        for (const char last : {'0', '{', '}', '[', '\r', '\n', '\0', '\xFF'}) {
            survive<TypeParam>(content + last);
            surviveFile<TypeParam>(content + last);
        }
    }
}

// Were any step worse than linear, these would not end in the test's time.
TYPED_TEST(BadContent, LongRuns) {
    const size_t length = scaled(1 << 16);
    for (const char c : {'x', ' ', '\n', '\r', '0', '{', '}', '<', '[', '\0'}) {
        SCOPED_TRACE(show(std::string(1, c)));
        const std::string run(length, c);
        for (const std::string& before : {""s, this->mHead, TypeParam::file()}) {
            for (const std::string& whole : inEveryEncoding(before + run)) survive<TypeParam>(whole);
            surviveFile<TypeParam>(before + run);
        }
    }
}

TYPED_TEST(BadContent, ManyShortLines) {
    for (const char* const line : {"{\n", "{1\r\n", "{1}\n", "{1}{\n", "<\n", "[\n", "1\n", "12:\r\n", "{1}{2\r\n"}) {
        SCOPED_TRACE(show(line));
        const std::string file = TypeParam::file() + runOf(line, scaled(1 << 17));
        for (const std::string& whole : inEveryEncoding(file)) survive<TypeParam>(whole);
        surviveFile<TypeParam>(file);
    }
}

TYPED_TEST(BadContent, ALineOfMegabytes) {
    const std::string file = this->mHead + std::string(scaled(5 << 20), 'x');
    for (const std::string& whole : inEveryEncoding(file)) survive<TypeParam>(whole);
    surviveFile<TypeParam>(file);
}

// ------------------------------------------------------------------------------------------------- bad SubRip files

const std::string kEntries =
    "1\r\n00:00:01,000 --> 00:00:02,000\r\nHello <i>World</i>\r\n{y:i}second line\r\n\r\n"
    "2\r\n00:00:03.500 --> 00:00:04.750\r\n\r\n"
    "3\r\n00:00:05,000 --> 00:00:06,000\r\n<b>{x}\r\nBye</b>\r\n\r\n";

TEST(BadSrt, HasNoMoreEntriesThanTimingLines) {
    for (const std::string& file : inEveryEncoding(kEntries)) {
        // One entry for each timing line that is there as far as its last millisecond.
        forEachCut(file, [](const std::string& part) { ASSERT_LE(survive<Srt>(part), 3u); });
        forEachZero(file, [](const std::string& holed) { ASSERT_LE(survive<Srt>(holed), 3u); });
        forEachLoss(file, survive<Srt>);
        EXPECT_EQ(3u, survive<Srt>(file));
    }
    forEachDisorder(inEveryEncoding(kEntries), 2000, survive<Srt>);
}

// A single line of 300 KB. Were any step worse than linear, this would not end in the test's time.
TEST(BadSrt, OneVeryLongLine) {
    constexpr size_t kLength = 300 * 1024;
    const char* const kPieces[] = {"x",     " ",       "\t",       "9",  "0:",          "0:0:0,0 --> ", "<b",   "<b>",
                                   "{b",    "{b}",     "\r",       "\n", "<",           "\r\n\r",       "\n\r", "1\n",
                                   "{b}\r", ">",       "}",        "</", "{",           "1 ",           "1:",   "0\r",
                                   "a\r\n", "<b>\r\n", "\xA4<b\r", "-",  "\xEF\xBB\xBF"};
    for (const std::string piece : kPieces) {
        SCOPED_TRACE(show(piece));
        const std::string line = runOf(piece, kLength);
        for (const std::string& file : inEveryEncoding(line)) survive<Srt>(file);
        for (const std::string& file : inEveryEncoding("00:00:01,000 --> 00:00:02,000\r\n" + line)) survive<Srt>(file);
    }
}

TEST(BadSrt, DigitsWithoutEnd) {
    const std::string digits(10000, '7');
    // A number takes 16 digits and a literal any one: seven numbers and nine literals later the eighth begins.
    EXPECT_EQ(0u, survive<Srt>(digits.substr(0, 7 * 16 + 9)));
    EXPECT_EQ(1u, survive<Srt>(digits.substr(0, 7 * 16 + 9 + 1)));
    EXPECT_EQ(1u, survive<Srt>(digits));
    EXPECT_EQ(1u, survive<Srt>(digits + "\n" + digits.substr(0, 100) + "\n"));
    EXPECT_EQ(1u, survive<Srt>("1:2:3,4 --> 5:6:7," + digits));
    EXPECT_EQ(1u, survive<Srt>("1:2:3,4 --> 5:6:" + digits));
    EXPECT_EQ(0u, survive<Srt>("1:2:3,4 --> 5:6:" + digits.substr(0, 17)));
    EXPECT_EQ(1u, survive<Srt>("1:2:3,4 --> 5:6:" + digits.substr(0, 18)));
    EXPECT_EQ(0u, survive<Srt>(utf16le("00:00:01,000 --> 00:00:02," + digits.substr(0, 2))));
    EXPECT_EQ(1u, survive<Srt>(utf16le("00:00:01,000 --> 00:00:02," + digits)));
}

TEST(BadSrt, TimesAboveThirtyTwoBits) {
    SubtitleParserSRT parser(-1, 0, 0);
    load(parser, "4294967296:0:0,0 --> 9999999999999999:9999999999999999:9999999999999999,9999999999999999\nHi"sv);
    parser.ParserThread();
    // 9999999999999999 is 0x6FC0FFFF in 32 bits; hours, minutes and seconds add up in 32 bits too.
    constexpr U32 kNines = 0x6FC0FFFF;
    EXPECT_EQ("0-" + std::to_string((kNines * 3600 + kNines * 60 + kNines) * 1000 + kNines) + " @89", tagsOf(parser));
    askEverything(parser);
}

TEST(BadSrt, Utf16WithAnOddLastByte) {
    for (const std::string& file : {utf16le(kEntries), utf16be(kEntries)}) {
        for (const char last : {'\0', '\r', '\n', '0', '\xFF'}) EXPECT_EQ(3u, survive<Srt>(file + last));
    }
    for (const std::string mark : {"\xFF\xFE", "\xFE\xFF"}) {
        for (const char last : {'\0', '\r', '\n', '0', '\xFF'}) EXPECT_EQ(0u, survive<Srt>(mark + last));
    }
}

TEST(BadSrt, TwentyThousandEntries) {
    std::string file;
    for (int i = 0; i < 20000; ++i) {
        const std::string seconds = std::to_string(i);
        file += seconds + "\n0:0:" + seconds + ",0 --> 0:0:" + seconds + ",500\nNumber " + seconds + "\n\n";
    }
    SubtitleParserSRT parser(-1, 0, 0);
    load(parser, file);
    parser.ParserThread();
    EXPECT_EQ(20000u, parser.GetTagNum());
    EXPECT_EQ(24576u, parser.m_u32TagBufferNum);
    for (const U32 i : {0u, 8191u, 8192u, 16383u, 16384u, 19999u}) {
        EXPECT_EQ(i, parser.GetTag(0, i * 1000 + 999));
        EXPECT_EQ("Number " + std::to_string(i), textOf(parser, i));
    }
    askEverything(parser);
}

TEST(BadSrt, AnEntryOfAHundredKilobytes) {
    const std::string timing = "00:00:01,000 --> 00:00:02,000\r\n";
    const std::string body(100 * 1024, 'x');
    for (const std::string& file : inEveryEncoding("1\r\n" + timing + body + "\r\n\r\n2\r\n" + timing + "next\r\n")) {
        SubtitleParserSRT parser(-1, 0, 0);
        load(parser, file);
        parser.ParserThread();
        ASSERT_EQ(2u, parser.GetTagNum());
        // cut to the work buffer of 8192 bytes; a big-endian text begins on the line end, whose CR is dropped
        const std::string kept = parser.m_eCodeType == kUtf16Be   ? "\n" + std::string(4094, 'x')
                                 : parser.m_eCodeType == kUtf16Le ? std::string(4096, 'x')
                                                                  : std::string(8192, 'x');
        EXPECT_EQ(kept, textOf(parser, 0, 300000));
        askEverything(parser);
    }
}

// --------------------------------------------------------------------------------------------------- bad files

/// A parser through BeginParse, whatever comes of it, and everything asked of it afterwards.
template <class Parser>
BOOL play(Parser& parser) {
    const BOOL result = parser.BeginParse();
    askEverything(parser);
    EXPECT_EQ(TRUE, parser.StopParse());
    EXPECT_EQ(TRUE, parser.Deinit());
    askEverything(parser);
    return result;
}

/// A parser of every kind that the class can be: by path, by descriptor, and of a part where there is such a thing.
template <class Parser>
std::vector<std::unique_ptr<Parser>> everyWay(const char* path, int fd, S64 offset = 3, S64 length = 50) {
    std::vector<std::unique_ptr<Parser>> parsers;
    parsers.push_back(std::make_unique<Parser>(pathFor<Parser>(path)));
    parsers.push_back(std::make_unique<Parser>(fd, 0, 0));
    if constexpr (std::is_constructible_v<Parser, char*, S64, S64>) {
        parsers.push_back(std::make_unique<Parser>(pathFor<Parser>(path), offset, length));
    }
    return parsers;
}

template <class Format>
class BadFile : public BadInput<Format> {};

TYPED_TEST_SUITE(BadFile, TextFormats, FormatNames);

TYPED_TEST(BadFile, Missing) {
    using Parser = typename TypeParam::Parser;
    for (const auto& parser : everyWay<Parser>("/nowhere/at/all.srt", -1)) EXPECT_EQ(FALSE, play(*parser));
    for (const auto& parser : everyWay<Parser>(nullptr, 1 << 20, 0, 0)) EXPECT_EQ(FALSE, play(*parser));
}

TYPED_TEST(BadFile, ADirectory) {
    using Parser = typename TypeParam::Parser;
    const int fd = open("/tmp", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    // What its length is differs between file systems; it has no entries on any.
    for (const auto& parser : everyWay<Parser>("/tmp", fd, 0, 100)) {
        play(*parser);
        EXPECT_EQ(0u, parser->GetTagNum());
    }
    close(fd);
}

TYPED_TEST(BadFile, AClosedDescriptor) {
    using Parser = typename TypeParam::Parser;
    const TempFile file(TypeParam::file());
    const int fd = dup(file.fd());
    close(fd);
    for (const int closed : {fd, -1, -100, 1 << 20}) {
        Parser parser(closed, 0, 100);
        EXPECT_EQ(FALSE, play(parser)) << closed;
    }
}

TYPED_TEST(BadFile, ADescriptorClosedBehindTheParsersBack) {
    using Parser = typename TypeParam::Parser;
    const TempFile file(TypeParam::file());
    Parser parser(file.fd(), 0, 0);
    close(parser.pFileProcess->mFd);
    EXPECT_EQ(FALSE, play(parser));
}

TYPED_TEST(BadFile, ADescriptorForWritingOnly) {
    using Parser = typename TypeParam::Parser;
    const TempFile file(TypeParam::file());
    const int fd = open(file.path(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    {
        Parser parser(fd, 0, 0);
        play(parser);
        EXPECT_EQ(0u, parser.GetTagNum());
    }
    close(fd);
}

TYPED_TEST(BadFile, APipe) {
    using Parser = typename TypeParam::Parser;
    int ends[2];
    ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
    {
        Parser parser(ends[0], 0, 0);
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

TYPED_TEST(BadFile, DescriptorZeroIsAsGoodAsAnyForTheCaller) {
    using Parser = typename TypeParam::Parser;
    const TempFile file(TypeParam::file());
    const WithoutInput closed;
    ASSERT_EQ(0, open(file.path(), O_RDONLY));
    Parser parser(0, 0, 0);
    EXPECT_GE(parser.pFileProcess->mFd, 1);
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(1u, parser.GetTagNum());
}

// kept(file-descriptor-0)
TYPED_TEST(BadFile, ADuplicateThatIsZeroIsNone) {
    using Parser = typename TypeParam::Parser;
    const TempFile file(TypeParam::file());
    const WithoutInput closed;  // so the duplicate comes out as 0
    {
        Parser parser(file.fd(), 0, 0);
        ASSERT_EQ(0, parser.pFileProcess->mFd);
        const LogCapture log;
        EXPECT_EQ(FALSE, play(parser));
        const size_t opened = TypeParam::entering().size();
        EXPECT_EQ(opening(""s), log.lines().at(opened));
        EXPECT_EQ(openingFails(), log.lines().at(opened + 1));
    }
    EXPECT_NE(-1, fcntl(0, F_GETFD)) << "and is never closed";
}

TYPED_TEST(BadFile, LongPaths) {
    using Parser = typename TypeParam::Parser;
    for (const size_t length : {510, 511, 512, 513, 600, 5000}) {
        const std::string missing(length, 'p');
        for (const auto& parser : everyWay<Parser>(missing.data(), -1, 0, 10)) {
            EXPECT_EQ(FALSE, play(*parser)) << length;
        }

        // The same file by a name of that length: 512 bytes of it are kept.
        const TempFile file(TypeParam::file());
        std::string path = file.path();
        path.insert(path.rfind('/'), length - path.size(), '/');
        Parser present(pathFor<Parser>(path.data()));
        EXPECT_EQ(length <= 512 ? TRUE : FALSE, present.BeginParse()) << length;
    }
}

TYPED_TEST(BadFile, AFileThatShrinksAndOneThatGrows) {
    using Parser = typename TypeParam::Parser;
    for (const off_t size : {off_t{10}, off_t{40}, off_t{100000}}) {
        const TempFile file(TypeParam::file() + TypeParam::file());
        Parser parser(pathFor<Parser>(file.path()));
        ASSERT_EQ(1, parser.pFileProcess->Open());
        ASSERT_EQ(TRUE, parser.Init(parser.pFileProcess->Length()));
        ASSERT_EQ(0, truncate(file.path(), size));
        parser.pFileProcess->Read(parser.m_pu8RawBuffer, static_cast<U64>(parser.m_s64DataTotalSize));
        if (TypeParam::kRefuses) parser.m_eCodeType = kNative;
        parser.ParserThread();
        askEverything(parser);
    }
}

// ------------------------------------------------------------------------------------------------ bad manners

TYPED_TEST(BadFile, NothingIsAskedOfAParserButToEnd) {
    const TempFile file(TypeParam::file());
    everyWay<typename TypeParam::Parser>(file.path(), file.fd());
}

TYPED_TEST(BadFile, EverythingIsAskedBeforeTheFileIsOpen) {
    using Parser = typename TypeParam::Parser;
    const TempFile file(TypeParam::file());
    Parser parser(file.fd(), 0, 0);
    for (const auto codeType : {kUnknown, kUtf16Le, kUtf16Be, kUtf8, kNative}) {
        parser.m_eCodeType = codeType;
        askEverything(parser);
    }
    EXPECT_EQ(TRUE, parser.StopParse());
    EXPECT_EQ(TRUE, parser.Deinit());
    EXPECT_EQ(TRUE, play(parser));
}

TYPED_TEST(BadFile, OpenedTwiceAndAgainAfterTheEnd) {
    using Parser = typename TypeParam::Parser;
    const BOOL again = TypeParam::kStartsOnce ? FALSE : TRUE;
    const TempFile file(TypeParam::file());
    Parser parser(file.fd(), 0, 0);
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(1u, parser.GetTagNum());
    EXPECT_EQ(again, parser.BeginParse());
    EXPECT_EQ(again == TRUE ? 1u : 0u, parser.GetTagNum());
    EXPECT_EQ(TRUE, parser.Deinit());
    askEverything(parser);
    EXPECT_EQ(again, parser.BeginParse());
    EXPECT_EQ(again == TRUE ? 1u : 0u, parser.GetTagNum());
    askEverything(parser);
}

TYPED_TEST(BadFile, DestroyedAtAnyMomentOfItsWorker) {
    using Parser = typename TypeParam::Parser;
    const U32 many = scaled(1000);
    std::string content;
    for (U32 i = 0; i < many; ++i) content += TypeParam::file();
    const TempFile file(content);
    for (int i = 0; i < 20; ++i) {
        VirtualClock clock;
        auto parser = std::make_unique<Parser>(pathFor<Parser>(file.path()));
        ThreadGate gate;
        // The wait ends while the worker is held back, has just begun or is under way.
        clock.atSleep(1, [&] {
            if (i % 2 == 0) gate.open();
            giveWay(static_cast<unsigned>(i) * 10);
            clock.advance(100000);
        });
        const BOOL result = parser->BeginParse();
        gate.open();
        if (result == TRUE) {
            EXPECT_EQ(many, parser->GetTagNum());
        }
        parser.reset();
    }
}

TYPED_TEST(BadFile, NoThreadCanBeHad) {
    using Parser = typename TypeParam::Parser;
    const TempFile file(TypeParam::file());
    Parser parser(file.fd(), 0, 0);
    for (int i = 0; i < 3; ++i) {
        const ThreadCreateFails fails;
        EXPECT_EQ(FALSE, parser.BeginParse());
        askEverything(parser);
    }
}

TYPED_TEST(BadFile, NoStreamCanBeHad) {
    using Parser = typename TypeParam::Parser;
    for (const char* call : {"dup", "fdopen", "fopen", "fseek", "ftell"}) {
        const TempFile file(TypeParam::file() + TypeParam::file());
        for (const auto& parser : everyWay<Parser>(file.path(), file.fd())) {
            {
                const CallFails fails(call, 1000);
                play(*parser);
            }
            const bool started =
                TypeParam::kStartsOnce && parser->m_threadParser != pthread_t{};  // this call was not met
            EXPECT_EQ(started ? FALSE : TRUE, parser->BeginParse()) << "all is well again after " << call;
        }
    }
}

// ------------------------------------------------------------------------------------------- bad sizes and sources

TEST(BadSrt, SizesThatCannotBe) {
    const TempFile file(kEntries);
    const auto part = [&](S64 offset, S64 length) {
        return SubtitleParserSRT(pathFor<SubtitleParserSRT>(file.path()), offset, length);
    };
    for (const S64 length : {-1LL, -2LL, -64LL, -65LL, 1LL << 62, -(1LL << 62)}) {
        SubtitleParserSRT parser = part(0, length);
        EXPECT_EQ(FALSE, play(parser)) << length;
    }
    for (const S64 offset : {-1LL, 1LL << 31, -(1LL << 31)}) {
        SubtitleParserSRT parser = part(offset, 10);
        EXPECT_EQ(FALSE, play(parser)) << offset;
    }
    SubtitleParserSRT empty = part(0, 0);
    EXPECT_EQ(TRUE, play(empty));
    EXPECT_EQ(0u, empty.GetTagNum());
    SubtitleParserSRT behind = part(1000000, 10);
    EXPECT_EQ(TRUE, play(behind)) << "ten bytes that nobody had";
    EXPECT_EQ(0u, behind.GetTagNum());
}

TEST(BadSource, ADirectory) {
    const int fd = open("/tmp", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    {
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

}  // namespace
