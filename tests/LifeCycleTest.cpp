// The life of every text parser: construction, opening, what is logged, refusals, the worker and the wait for it, the
// end.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"
#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"

namespace {

using namespace test;

/// A parser at 25 frames a second.
template <class Parser>
std::unique_ptr<Parser> byPath(const char* path) {
    auto parser = std::make_unique<Parser>(pathFor<Parser>(path));
    parser->SetFrameRate(25);
    return parser;
}
template <class Parser>
std::unique_ptr<Parser> byPath(const TempFile& file) {
    return byPath<Parser>(file.path());
}
template <class Parser>
std::unique_ptr<Parser> byDescriptor(const TempFile& file, S64 offset = 0, S64 length = 0) {
    auto parser = std::make_unique<Parser>(file.fd(), offset, length);
    parser->SetFrameRate(25);
    return parser;
}

template <class Format>
class LifeCycle : public testing::Test {
protected:
    static constexpr size_t kLooks = Format::kLimitMs / Format::kPeriodMs;
    static std::vector<unsigned> sleeps(size_t count) { return std::vector<unsigned>(count, Format::kPeriodMs * 1000); }

    static Messages loading(size_t size) {
        return {Format::kLoader + "::ParserThread - Enter, data size = "s + std::to_string(size) + ", rawbuf: *\n"};
    }
    static Messages shortRead() { return {Format::kShortReader + " Warning, Read data < Requied Data\n"s}; }

    /// The whole run's lines, with `source`'s lines behind the format's first, then its other messages.
    static Lines run(const Lines& source, const Messages& rest) {
        Lines lines = linesFrom(Format::kTag, Format::entering());
        lines.insert(lines.end(), source.begin(), source.end());
        for (const LogLine& line : linesFrom(Format::kTag, rest)) lines.push_back(line);
        return lines;
    }
    static Messages finished(U32 tags, bool complete) { return {Format::finished(tags, complete)}; }
    static Messages waited(bool isFinished, U32 flag = 0) { return {Format::waited(isFinished, flag)}; }

    /// From the worker's start to the end, for the sample.
    static Messages worked(U32 flag = 0) {
        return Format::waiting() + Format::found() + finished(1, true) + waited(true, flag) + Format::leaving();
    }

    unsigned mThreads = threadCount();
    unsigned mDescriptors = openDescriptors();

    void TearDown() override {
        EXPECT_EQ(mThreads, threadCount()) << "a thread was left behind";
        EXPECT_EQ(mDescriptors, openDescriptors()) << "a descriptor was left behind";
    }
};

TYPED_TEST_SUITE(LifeCycle, TextFormats, FormatNames);

/// Whoever waits for its worker meets it only when it has ended: behind the look at the flag, before the wait.
template <class Parser>
struct EndsBeforeTheWait : Parser {
    using Parser::Parser;
    ~EndsBeforeTheWait() override { this->Deinit(); }
    U32 GetSystemTime() override {
        if (++asked == 2) {
            gate->open();
            while (__atomic_load_n(&this->mWorkerState, __ATOMIC_ACQUIRE) == 1) sched_yield();
        }
        return Parser::GetSystemTime();
    }
    int asked = 0;
    std::unique_ptr<ThreadGate> gate = std::make_unique<ThreadGate>();
};

// ---------------------------------------------------------------------------------------------- construction

TYPED_TEST(LifeCycle, ConstructorsPassTheirArgumentsOn) {
    using Parser = typename TypeParam::Parser;
    const TempFile file("x");
    for (const bool path : {true, false}) {
        const auto parser =
            path ? std::make_unique<Parser>(pathFor<Parser>(file.path())) : std::make_unique<Parser>(file.fd(), 3, 4);
        EXPECT_EQ(FALSE, parser->bParseFinish);
        EXPECT_EQ(pthread_t{}, parser->m_threadParser);
        EXPECT_EQ(0u, parser->GetTagNum());
        EXPECT_EQ(0u, parser->m_u32FrameRrate);
        EXPECT_EQ(0u, parser->m_u64NanoSecPerFrame);
        EXPECT_EQ(kUnknown, parser->m_eCodeType);
        ASSERT_NE(nullptr, parser->pFileProcess);
        EXPECT_EQ(SubtitleFileProcess::SOURCE_TYPE_URL, parser->pFileProcess->mSourceType);
        EXPECT_STREQ(path ? file.path() : "", parser->pFileProcess->pFileName);
        EXPECT_EQ(path, parser->pFileProcess->mFd < 1);
        EXPECT_EQ(path ? 0 : 3, parser->pFileProcess->mOffset);
        EXPECT_EQ(path ? 0 : 4, parser->pFileProcess->mLength);
    }
}

TYPED_TEST(LifeCycle, OpensAPath) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const std::string entries = TypeParam::entries();
    const TempFile file(sample);
    const auto parser = byPath<Parser>(file);
    VirtualClock clock;
    const LogCapture log;
    EXPECT_EQ(TRUE, beginSlowly(*parser, clock));
    EXPECT_EQ(entries, entriesOf(*parser));
    EXPECT_EQ(TestFixture::run({opening(file)},
                               TestFixture::loading(sample.size()) + TypeParam::typed(kNative) + TestFixture::worked()),
              levelled(log.lines()));
    const Messages texts = log.texts();
    const std::string address =
        numbered("rawbuf: %x\n", static_cast<U32>(reinterpret_cast<uintptr_t>(parser->m_pu8RawBuffer)));
    EXPECT_EQ(1, std::count_if(texts.begin(), texts.end(),
                               [&](const std::string& text) { return text.find(address) != std::string::npos; }));
    EXPECT_EQ(TRUE, parser->bParseFinish);
    EXPECT_EQ(0, parser->m_s64RawBufferPosition);
    EXPECT_EQ(this->mThreads, threadCount());
}

TYPED_TEST(LifeCycle, AnEndRightBeforeTheWaitIsNotWaitedFor) {
    using Parser = typename TypeParam::Parser;
    const TempFile file(TypeParam::file());
    EndsBeforeTheWait<Parser> parser(pathFor<Parser>(file.path()));
    parser.SetFrameRate(25);
    const VirtualClock clock;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(std::vector<unsigned>(), clock.sleeps());
}

TYPED_TEST(LifeCycle, OpensADescriptorAsTheWholeFile) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const std::string entries = TypeParam::entries();
    const TempFile file(sample);
    ASSERT_EQ(20, lseek(file.fd(), 20, SEEK_SET));
    const auto parser = byDescriptor<Parser>(file, 5, 6);
    VirtualClock clock;
    const LogCapture log;
    EXPECT_EQ(TRUE, beginSlowly(*parser, clock));
    EXPECT_EQ(entries, entriesOf(*parser));
    EXPECT_EQ(TestFixture::run({openingDescriptor()},
                               TestFixture::loading(sample.size()) + TypeParam::typed(kNative) + TestFixture::worked()),
              levelled(log.lines()));
    const Messages texts = log.texts();
    EXPECT_EQ(1,
              std::count(texts.begin(), texts.end(), "Open fd =" + std::to_string(parser->pFileProcess->mFd) + "\n"));
}

TYPED_TEST(LifeCycle, LogsTheStateWordOrTheFlag) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    const auto parser = byPath<Parser>(file);
    parser->m_eFlag = static_cast<EN_MEDIA_SUBTITLE_PARSER_FLAG>(0xABC0018);
    VirtualClock clock;
    const LogCapture log;
    EXPECT_EQ(TRUE, beginSlowly(*parser, clock));
    EXPECT_EQ(TestFixture::run({opening(file)}, TestFixture::loading(sample.size()) + TypeParam::typed(kNative) +
                                                    TestFixture::worked(0xABC0018)),
              levelled(log.lines()));
    EXPECT_EQ(0xABC0018u, parser->m_eFlag);
}

TYPED_TEST(LifeCycle, GoesOnWithAShortRead) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const std::string entries = TypeParam::entries();
    const TempFile file(sample);
    const auto parser = byPath<Rigged<Parser>>(file);
    parser->missing = 4;
    VirtualClock clock;
    const LogCapture log;
    EXPECT_EQ(TRUE, beginSlowly(*parser, clock));
    EXPECT_EQ(TestFixture::run({opening(file)}, TestFixture::loading(sample.size() + 4) + TestFixture::shortRead() +
                                                    TypeParam::typed(kNative) + TestFixture::worked()),
              levelled(log.lines()));
    EXPECT_EQ(entries, entriesOf(*parser)) << "the rest reads 0";
}

TYPED_TEST(LifeCycle, FillsTwoFieldsOfATrack) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    const auto parser = byPath<Parser>(file);
    ASSERT_EQ(TRUE, parser->BeginParse());
    for (const auto codeType : {kNative, kUtf8}) {
        parser->m_eCodeType = codeType;
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info;
        memset(static_cast<void*>(&info), 0xEE, sizeof info);
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO expected = info;
        expected.eSubtitleType = TypeParam::kType;
        expected.eCodeType = codeType;
        EXPECT_EQ(TRUE, parser->GetTrackInfo(77, &info));
        EXPECT_EQ(0, memcmp(&expected, &info, sizeof info));
    }
    EXPECT_EQ(TRUE, parser->GetTrackInfo(0, nullptr));
}

// --------------------------------------------------------------------------------- what there is nothing to scan in

// A format of its own takes any file; a dialect refuses without a word or a thread.
TYPED_TEST(LifeCycle, TakesOrRefusesAFileWithoutEntries) {
    using Parser = typename TypeParam::Parser;
    for (const std::string& content : {"Nothing of interest\r\n"s, ""s}) {
        SCOPED_TRACE(show(content));
        const TempFile file(content);
        const auto parser = byPath<Parser>(file);
        const LogCapture log;
        EXPECT_EQ(TypeParam::kRefuses ? FALSE : TRUE, parser->BeginParse());
        EXPECT_EQ(0u, parser->GetTagNum());
        EXPECT_EQ(0u, parser->GetTag(0, 1000));
        if (!TypeParam::kRefuses) {
            EXPECT_EQ(TRUE, parser->bParseFinish);
            continue;
        }
        EXPECT_EQ(TestFixture::run({opening(file)}, TestFixture::loading(content.size()) + TypeParam::typed(kUtf8)),
                  levelled(log.lines()));
        EXPECT_EQ(pthread_t{}, parser->m_threadParser);
        EXPECT_EQ(FALSE, parser->bParseFinish);
    }
}

TYPED_TEST(LifeCycle, ScansNothingInAnEmptyFile) {
    using Parser = typename TypeParam::Parser;
    Parser parser(-1, 0, 0);
    load(parser, "");
    parser.m_s64RawBufferPosition = 7;
    parser.m_u32RawBufferDataSize = 7;
    const LogCapture log;
    EXPECT_EQ(nullptr, Parser::ParserTask(&parser));
    EXPECT_EQ(TRUE, parser.bParseFinish);
    EXPECT_EQ(0u, parser.GetTagNum());
    EXPECT_EQ(0, parser.m_s64RawBufferPosition);
    EXPECT_EQ(kUnknown, parser.m_eCodeType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID, parser.m_eSubtitleType);
    EXPECT_EQ(TypeParam::foundNothing() + TestFixture::finished(0, true), log.texts());
}

TYPED_TEST(LifeCycle, ParserTaskScansTheParserItIsGiven) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const std::string entries = TypeParam::entries();
    Parser parser(-1, 0, 0);
    load(parser, sample);
    parser.SetFrameRate(25);
    if (TypeParam::kRefuses) parser.m_eCodeType = kNative;
    parser.m_s64RawBufferPosition = 500;
    parser.m_u32RawBufferDataSize = 3;
    EXPECT_EQ(nullptr, Parser::ParserTask(&parser));
    EXPECT_EQ(0, parser.m_s64RawBufferPosition);
    EXPECT_EQ(sample.size(), parser.m_u32RawBufferDataSize);
    EXPECT_EQ(TRUE, parser.bParseFinish);
    EXPECT_EQ(entries, entriesOf(parser));
}

TYPED_TEST(LifeCycle, ScansNothingBehindTheSizeOfTheData) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    Parser parser(-1, 0, 0);
    prepare<TypeParam>(parser, sample + sample);
    parser.m_s64DataTotalSize = static_cast<S64>(sample.size());
    parser.ParserThread();
    EXPECT_EQ(TRUE, parser.bParseFinish);
    EXPECT_EQ(TypeParam::entries(), entriesOf(parser));
    parser.m_u32TagNum = 0;
    parser.m_s64DataTotalSize = 0x7FFFFFFFFFFFFFFF;  // nor behind the buffer
    parser.ParserThread();
    EXPECT_EQ(2u, parser.GetTagNum());
}

TYPED_TEST(LifeCycle, NeedsAFileSource) {
    using Parser = typename TypeParam::Parser;
    const auto parser = byPath<Parser>("/nowhere");
    delete parser->pFileProcess;
    parser->pFileProcess = nullptr;
    parser->m_u32TagNum = 5;
    const LogCapture log;
    EXPECT_EQ(FALSE, parser->BeginParse());
    EXPECT_EQ(TestFixture::run({}, {}), log.lines());
    EXPECT_EQ(TypeParam::kCountsAnew ? 0u : 5u, parser->m_u32TagNum);
    EXPECT_EQ(pthread_t{}, parser->m_threadParser);
}

TYPED_TEST(LifeCycle, NeedsAFileThatOpens) {
    using Parser = typename TypeParam::Parser;
    const auto missing = byPath<Parser>("/nowhere/at all");
    const auto unopened = std::make_unique<Parser>(-1, 0, 0);
    for (Parser* const parser : {missing.get(), unopened.get()}) {
        parser->m_u32TagNum = 5;
        const LogCapture log;
        EXPECT_EQ(FALSE, parser->BeginParse());
        EXPECT_EQ(TestFixture::run({opening(parser == missing.get() ? "/nowhere/at all"s : ""s), openingFails()},
                                   TypeParam::leaving()),
                  log.lines());
        EXPECT_EQ(TypeParam::kCountsAnew ? 0u : 5u, parser->m_u32TagNum);
        EXPECT_EQ(nullptr, parser->m_pu8RawBuffer);
        EXPECT_EQ(pthread_t{}, parser->m_threadParser);
    }
}

TYPED_TEST(LifeCycle, FindsNothingInAFolder) {
    using Parser = typename TypeParam::Parser;
    const auto parser = byPath<Parser>("/tmp");
    const BOOL result = parser->BeginParse();  // what its length is differs between file systems
    if (TypeParam::kRefuses) {
        EXPECT_EQ(FALSE, result);
    }
    EXPECT_EQ(0u, parser->GetTagNum());
}

TYPED_TEST(LifeCycle, NeedsALength) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    const auto parser = byPath<Parser>(file);
    const CallFails fails("ftell", 1);
    const LogCapture log;
    EXPECT_EQ(FALSE, parser->BeginParse());
    EXPECT_EQ(TestFixture::run({opening(file)}, TypeParam::leaving()), log.lines());
    EXPECT_EQ(nullptr, parser->m_pTagBuffer);
    EXPECT_EQ(pthread_t{}, parser->m_threadParser);
}

TYPED_TEST(LifeCycle, NeedsBuffersFromInit) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    for (const BOOL answer : {BOOL{FALSE}, BOOL{2}}) {  // exactly TRUE is asked for
        const auto parser = byPath<Rigged<Parser>>(file);
        parser->initAnswer = answer;
        const LogCapture log;
        EXPECT_EQ(FALSE, parser->BeginParse());
        EXPECT_EQ(TestFixture::run({opening(file)}, TypeParam::leaving()), log.lines());
        EXPECT_EQ(pthread_t{}, parser->m_threadParser);
    }
}

TYPED_TEST(LifeCycle, NeedsItsTableAndItsWorkBuffer) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    for (const bool table : {true, false}) {
        const auto parser = byPath<Rigged<Parser>>(file);
        parser->loseTable = table;
        parser->loseWorkBuffer = !table;
        const LogCapture log;
        EXPECT_EQ(FALSE, parser->BeginParse());
        EXPECT_EQ(TestFixture::run({opening(file)}, TestFixture::loading(sample.size()) + TypeParam::leaving()),
                  levelled(log.lines()));
        EXPECT_EQ(kUnknown, parser->m_eCodeType);
        EXPECT_EQ(pthread_t{}, parser->m_threadParser);
    }
}

// ------------------------------------------------------------------------------------------------ the worker

TYPED_TEST(LifeCycle, NeedsAThread) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    const auto parser = byPath<Parser>(file);
    if (!TypeParam::kStartsOnce) parser->m_threadParser = static_cast<pthread_t>(1);  // an earlier one does not matter
    const LogCapture log;
    {
        const ThreadCreateFails fails;
        EXPECT_EQ(FALSE, parser->BeginParse());
    }
    EXPECT_EQ(pthread_t{}, parser->m_threadParser);
    EXPECT_EQ(FALSE, parser->bParseFinish);
    EXPECT_EQ(TestFixture::run({opening(file)}, TestFixture::loading(sample.size()) + TypeParam::typed(kNative) +
                                                    TypeParam::threadless() + TypeParam::leaving()),
              levelled(log.lines()));
    EXPECT_EQ(TRUE, parser->BeginParse()) << "a thread that could not be created does not count as one";
    if (TypeParam::kStartsOnce) return;
    {
        const ThreadCreateFails fails;
        EXPECT_EQ(FALSE, parser->BeginParse()) << "whatever the flag says by now";
    }
    EXPECT_EQ(pthread_t{}, parser->m_threadParser);
}

// kept(sub-begin-again)
TYPED_TEST(LifeCycle, StartsAgainOrNot) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const std::string entries = TypeParam::entries();
    const TempFile file(sample);
    const auto parser = byPath<Parser>(file);
    ASSERT_EQ(TRUE, parser->BeginParse());
    EXPECT_EQ(entries, entriesOf(*parser));
    for (int i = 0; i < 2; ++i) {
        const LogCapture log;
        EXPECT_EQ(TypeParam::kStartsOnce ? FALSE : TRUE, parser->BeginParse());
        EXPECT_NE(pthread_t{}, parser->m_threadParser);
        EXPECT_EQ(TypeParam::kStartsOnce ? "" : entries, entriesOf(*parser));
        if (TypeParam::kStartsOnce) {
            EXPECT_EQ(
                TestFixture::run({opening(file)}, TestFixture::loading(sample.size()) + TypeParam::typed(kNative)),
                levelled(log.lines()));
        }
        EXPECT_EQ(this->mDescriptors + 2, openDescriptors()) << "the test's own and the stream's";
        EXPECT_EQ(this->mThreads, threadCount());
    }
}

TYPED_TEST(LifeCycle, HasAStackOf65536Bytes) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    struct Measuring : Parser {
        using Parser::Parser;
        ~Measuring() override { this->Deinit(); }
        BOOL AddTag(const U32, const U32, const S64, const EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE) override {
            thread = pthread_self();
            pthread_attr_t attributes;
            if (pthread_getattr_np(thread, &attributes) != 0) return FALSE;
            pthread_attr_getstacksize(&attributes, &stack);
            pthread_attr_destroy(&attributes);
            return TRUE;
        }
        pthread_t thread = 0;
        size_t stack = 0;
    };
    const TempFile file(sample);
    const auto parser = byPath<Measuring>(file);
    ASSERT_EQ(TRUE, parser->BeginParse());
    EXPECT_NE(pthread_self(), parser->thread);
    EXPECT_EQ(parser->m_threadParser, parser->thread);
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    EXPECT_GE(parser->stack, 65536u);  // the sanitizers' own data comes on top
#else
    EXPECT_EQ(65536u, parser->stack);
#endif
}

// However fast the worker is, its line comes before those that close the ceremony: it has been joined.
TYPED_TEST(LifeCycle, TheWorkersLineComesBeforeTheClosingOnes) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const std::string entries = TypeParam::entries();
    const TempFile file(sample);
    for (int i = 0; i < 50; ++i) {
        const auto parser = byPath<Parser>(file);
        const LogCapture log;
        ASSERT_EQ(TRUE, parser->BeginParse());
        ASSERT_EQ(this->mThreads, threadCount()) << "joined";
        ASSERT_NE(pthread_t{}, parser->m_threadParser) << "which keeps its value";
        const Messages texts = log.texts(), closing = TestFixture::waited(true) + TypeParam::leaving();
        ASSERT_LT(closing.size(), texts.size());
        const auto end = texts.end() - static_cast<std::ptrdiff_t>(closing.size());
        ASSERT_EQ(closing, Messages(end, texts.end()));
        ASSERT_EQ(1, std::count(texts.begin(), end, TypeParam::finished(1, true)));
        ASSERT_EQ(entries, entriesOf(*parser));
    }
}

TYPED_TEST(LifeCycle, StopsAtATagThatCannotBeStored) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const std::string thrice = sample + sample + sample;
    std::vector<std::string> files{thrice, utf16le(thrice)};
    if (TypeParam::kScansBigEndian) files.push_back(utf16be(thrice));
    for (const std::string& content : files) {
        Rigged<Parser> parser(-1, 0, 0);
        parser.tagsThatFit = 1;
        const LogCapture log;
        scan<TypeParam>(parser, content);
        EXPECT_EQ(FALSE, parser.bParseFinish);
        EXPECT_EQ(TypeParam::finished(1, false), log.texts().back());
        EXPECT_EQ(1u, parser.GetTagNum());
    }
}

TYPED_TEST(LifeCycle, StopsAtATableThatCannotGrow) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    std::string many;
    for (int i = 0; i < 8200; ++i) many += sample;
    std::vector<std::string> files{many, utf16le(many)};
    if (TypeParam::kScansBigEndian) files.push_back(utf16be(many));
    for (const std::string& content : files) {
        Parser parser(-1, 0, 0);
        prepare<TypeParam>(parser, content);
        const LogCapture log;
        {
            constexpr size_t kGrown = 16384 * sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG);
            const AllocationFails shortage(kGrown, kGrown);
            parser.ParserThread();
        }
        EXPECT_EQ(FALSE, parser.bParseFinish);
        EXPECT_EQ(nullptr, parser.m_pTagBuffer);
        const Messages texts = log.texts();
        EXPECT_EQ(1, std::count(texts.begin(), texts.end(), TypeParam::finished(0, false)));
    }
}

// -------------------------------------------------------------------------------------------------- the wait

TYPED_TEST(LifeCycle, WaitsForASlowWorker) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const std::string entries = TypeParam::entries();
    const TempFile file(sample);
    for (const size_t pauses : {size_t{1}, size_t{2}, size_t{3}, TestFixture::kLooks - 1, TestFixture::kLooks}) {
        SCOPED_TRACE(pauses);
        const auto parser = byPath<Parser>(file);
        VirtualClock clock(4294960000u);  // the milliseconds wrap during the wait
        ThreadGate gate;
        clock.atSleep(pauses, [&] {
            gate.open();
            awaitFlag(*parser);
        });
        EXPECT_EQ(TRUE, parser->BeginParse());
        EXPECT_EQ(TestFixture::sleeps(pauses), clock.sleeps());
        EXPECT_EQ(entries, entriesOf(*parser));
        EXPECT_EQ(this->mThreads, threadCount());
    }
}

TYPED_TEST(LifeCycle, GivesUpAtTheLimit) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    {
        const auto parser = byPath<Rigged<Parser>>(file);
        const VirtualClock clock(4294960000u);
        ThreadGate gate;  // the worker does not even begin
        const LogCapture log;
        EXPECT_EQ(FALSE, parser->BeginParse());
        EXPECT_EQ(TestFixture::sleeps(TestFixture::kLooks), clock.sleeps());
        EXPECT_EQ(1 + TestFixture::kLooks + 1, parser->looks) << "the start, and one before each sleep and the end";
        EXPECT_EQ(TestFixture::run({opening(file)}, TestFixture::loading(sample.size()) + TypeParam::typed(kNative) +
                                                        TypeParam::waiting() + TestFixture::waited(false) +
                                                        TypeParam::leaving()),
                  levelled(log.lines()));
        EXPECT_EQ(this->mThreads + 1, threadCount()) << "nothing waits for the worker";
        EXPECT_EQ(FALSE, parser->bParseFinish);
        gate.open();
    }
    EXPECT_EQ(this->mThreads, threadCount()) << "the destructor does";
}

TYPED_TEST(LifeCycle, GivesUpEarlierWhenTheClockJumps) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    constexpr unsigned kLimit = TypeParam::kLimitMs, kPeriod = TypeParam::kPeriodMs;
    const struct {
        unsigned jump;
        size_t pauses;
    } kRows[] = {
        {0, kLimit / kPeriod}, {kLimit - 1 - 2 * kPeriod, 3}, {kLimit - 1 - kPeriod, 2}, {kLimit - kPeriod, 1}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.jump);
        const auto parser = byDescriptor<Parser>(file);
        VirtualClock clock(0xFFFFFF00);
        ThreadGate gate;
        clock.atSleep(1, [&] { clock.advance(row.jump); });
        EXPECT_EQ(FALSE, parser->BeginParse());
        EXPECT_EQ(TestFixture::sleeps(row.pauses), clock.sleeps());
    }
}

TYPED_TEST(LifeCycle, AScanThatIsOverBeforeTheWaitCostsNone) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    const auto parser = byPath<Rigged<Parser>>(file);
    const VirtualClock clock;
    const ThreadsEndFirst order;
    EXPECT_EQ(TRUE, parser->BeginParse());
    EXPECT_EQ(1u, parser->looks) << "the start of the wait";
    EXPECT_EQ(std::vector<unsigned>{}, clock.sleeps());
}

// On the machine's own clock: the worker's end interrupts the period.
TYPED_TEST(LifeCycle, AnOpeningIsOverWhenItsScanIs) {
    using Parser = typename TypeParam::Parser;
    using Clock = std::chrono::steady_clock;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    constexpr auto kPeriod = std::chrono::milliseconds(TypeParam::kPeriodMs);
    auto quickest = Clock::duration::max();
    for (int tries = 0; tries < 20 && quickest >= kPeriod * 9 / 10; ++tries) {
        const auto parser = byPath<Parser>(file);
        std::atomic<ThreadGate*> held{nullptr};
        const auto begin = Clock::now();
        std::thread opener([&] {  // well inside the first period
            while (held == nullptr || Clock::now() - begin < kPeriod / 10) sched_yield();
            held.load()->open();
        });
        ThreadGate gate;  // not for the opener
        held = &gate;
        EXPECT_EQ(TRUE, parser->BeginParse());
        quickest = std::min(quickest, Clock::now() - begin);
        opener.join();
    }
    EXPECT_GE(quickest, kPeriod / 10);
    EXPECT_LT(quickest, kPeriod * 9 / 10);
}

// The look at the end of the wait decides: what happens right behind it changes nothing.
TYPED_TEST(LifeCycle, AFlagThatRisesBehindTheLastLookComesTooLate) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    /// Lets the scan end inside one of its looks at the clock.
    struct Timely : Rigged<Parser> {
        using Rigged<Parser>::Rigged;
        U32 GetSystemTime() override {
            const U32 time = Rigged<Parser>::GetSystemTime();
            if (this->looks == endsAt) {
                gate->open();
                awaitFlag(*this);
            }
            return time;
        }
        size_t endsAt = 0;
        ThreadGate* gate = nullptr;
    };
    constexpr size_t kLast = 1 + TestFixture::kLooks + 1;
    for (const size_t endsAt : {kLast - 1, kLast}) {
        SCOPED_TRACE(endsAt);
        const VirtualClock clock;
        ThreadGate gate;
        const auto parser = byPath<Timely>(file);
        parser->endsAt = endsAt;
        parser->gate = &gate;
        const LogCapture log;
        EXPECT_EQ(endsAt == kLast ? FALSE : TRUE, parser->BeginParse());
        EXPECT_EQ(TRUE, parser->bParseFinish);
        const Messages texts = log.texts();
        EXPECT_EQ(1, std::count(texts.begin(), texts.end(), TypeParam::waited(endsAt != kLast, 0)));
        if (endsAt != kLast) {
            EXPECT_EQ(this->mThreads, threadCount()) << "TRUE only when it has been joined";
        }
    }
}

// kept(worker-fails-late)
TYPED_TEST(LifeCycle, WaitsInVainWhenATagCannotBeStored) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    for (const U32 fitting : {0u, 1u}) {
        const std::string content = sample + sample + sample;
        const TempFile file(content);
        const auto parser = byPath<Rigged<Parser>>(file);
        parser->tagsThatFit = fitting;
        VirtualClock clock;
        const LogCapture log;
        EXPECT_EQ(FALSE, beginSlowly(*parser, clock));
        EXPECT_EQ(TestFixture::sleeps(TestFixture::kLooks), clock.sleeps());
        EXPECT_EQ(FALSE, parser->bParseFinish);
        EXPECT_EQ(this->mThreads, threadCount()) << "a worker that is over is joined";
        const Messages expected =
                           TestFixture::finished(fitting, false) + TestFixture::waited(false) + TypeParam::leaving(),
                       texts = log.texts();
        ASSERT_LE(expected.size(), texts.size());
        EXPECT_EQ(expected, Messages(texts.end() - static_cast<std::ptrdiff_t>(expected.size()), texts.end()));
        EXPECT_EQ(TypeParam::entering() + Messages{opening(file).text} + TestFixture::loading(content.size()) +
                      TypeParam::typed(kNative) + TypeParam::waiting(),
                  [&] {
                      Messages first;
                      for (const LogLine& line : levelled(log.lines())) first.push_back(line.text);
                      first.resize(TypeParam::entering().size() + 2 + TypeParam::typed(kNative).size() +
                                   TypeParam::waiting().size());
                      return first;
                  }());
    }
}

TYPED_TEST(LifeCycle, TheWorkerMayEndAfterBeginParseHasGivenUp) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    const auto parser = byPath<Parser>(file);
    VirtualClock clock;
    ThreadGate gate;
    EXPECT_EQ(FALSE, parser->BeginParse());
    gate.open();
    awaitFlag(*parser);
    EXPECT_EQ(TRUE, parser->Deinit());
    EXPECT_EQ(this->mThreads, threadCount()) << "joined before its buffers went";
}

/// The earlier worker says its last words before the second start says its first; it was stopped, wherever it was.
template <class Format>
void expectASecondStart(SubtitleParser& parser, U32 tags, const LogLine& opened) {
    const LogCapture log;
    EXPECT_EQ(Format::kStartsOnce ? FALSE : TRUE, parser.BeginParse());
    const Lines lines = log.lines();
    const auto second = std::find(lines.begin(), lines.end(), opened);
    const LogLine finished{3, Format::kTag, Format::finished(tags, true)};
    EXPECT_LE(std::count(lines.begin(), second, finished), 1);
    EXPECT_EQ(Format::kStartsOnce ? 0 : 1, std::count(second, lines.end(), finished));
    if (!Format::kStartsOnce) {
        EXPECT_EQ(tags, parser.GetTagNum());
    }
}

// Whatever ends the buffers stops the worker that uses them, and waits for it.
TYPED_TEST(LifeCycle, TheWorkerIsWaitedForByWhateverTakesItsBuffers) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    constexpr U32 kMany = 5000;
    std::string content;
    for (U32 i = 0; i < kMany; ++i) content += sample;
    const TempFile file(content);
    enum class End { kDestructor, kDeinit, kInit, kBeginParse };
    for (const End end : {End::kDestructor, End::kDeinit, End::kInit, End::kBeginParse}) {
        SCOPED_TRACE(static_cast<int>(end));
        ThreadGate gate;
        auto parser = byPath<Parser>(file);
        {
            const VirtualClock clock;
            EXPECT_EQ(FALSE, parser->BeginParse());
        }
        gate.open();
        switch (end) {
            case End::kDestructor:
                parser.reset();
                break;
            case End::kDeinit:
                EXPECT_EQ(TRUE, parser->Deinit());
                break;
            case End::kInit:
                EXPECT_EQ(TRUE, parser->Init(10));
                EXPECT_EQ(0u, parser->m_u32TagNum) << "nobody adds to the new table";
                break;
            case End::kBeginParse:
                expectASecondStart<TypeParam>(*parser, kMany, opening(file));
                break;
        }
        EXPECT_EQ(this->mThreads, threadCount());
    }
}

TYPED_TEST(LifeCycle, AnotherStartWaitsForTheWorkerEvenWithoutAFile) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    auto file = std::make_unique<TempFile>(sample);
    const auto parser = byPath<Parser>(*file);
    {
        const VirtualClock clock;
        ThreadGate gate;
        EXPECT_EQ(FALSE, parser->BeginParse());
    }
    file.reset();
    EXPECT_EQ(FALSE, parser->BeginParse());
    EXPECT_EQ(this->mThreads, threadCount());
}

// --------------------------------------------------------------------------------------------------- the end

TYPED_TEST(LifeCycle, TheDestructorClosesTheFile) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    const unsigned descriptors = openDescriptors();
    {
        const auto parser = byDescriptor<Parser>(file);
        EXPECT_EQ(TRUE, parser->BeginParse());
        EXPECT_EQ(descriptors + 2, openDescriptors()) << "the duplicate, and the stream's own: open until the end";
        EXPECT_EQ(TRUE, parser->StopParse());
        EXPECT_EQ(TRUE, parser->Deinit());
        EXPECT_EQ(descriptors + 2, openDescriptors());
    }
    EXPECT_EQ(descriptors, openDescriptors());
}

TYPED_TEST(LifeCycle, TheDestructorClosesTheFileBehindTheWorker) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    const TempFile file(sample);
    std::atomic<Parser*> doomed{nullptr};
    std::thread owner([&] {
        while (doomed == nullptr) sched_yield();
        delete doomed.load();
    });
    ThreadGate gate;  // not for the owner
    auto parser = byPath<Parser>(file);
    {
        const VirtualClock clock;
        EXPECT_EQ(FALSE, parser->BeginParse());
    }
    const U8* const state = &parser->mWorkerState;
    const unsigned descriptors = openDescriptors();
    doomed = parser.release();
    while ((__atomic_load_n(state, __ATOMIC_ACQUIRE) & vxsubtitle::StopRequest::kBit) == 0) sched_yield();
    EXPECT_EQ(descriptors, openDescriptors()) << "open while the worker is waited for";
    gate.open();
    owner.join();
    EXPECT_EQ(descriptors - 1, openDescriptors());
}

TYPED_TEST(LifeCycle, LeavesNothingOpen) {
    using Parser = typename TypeParam::Parser;
    const std::string sample = TypeParam::file();
    for (const std::string& content : {sample, "Nothing"s, ""s}) {
        const TempFile file(content);
        const unsigned withFile = openDescriptors();
        const BOOL expected = content == sample || !TypeParam::kRefuses ? TRUE : FALSE;
        for (int i = 0; i < 20; ++i) {
            const auto path = byPath<Parser>(file), descriptor = byDescriptor<Parser>(file);
            if (i % 3 != 0) {
                EXPECT_EQ(expected, path->BeginParse());
                EXPECT_EQ(expected, descriptor->BeginParse());
            }
            EXPECT_LT(withFile, openDescriptors());
            if (i % 2 == 0) {
                path->Deinit();
                descriptor->Deinit();
            }
        }
        EXPECT_EQ(withFile, openDescriptors());
        EXPECT_NE(-1, fcntl(file.fd(), F_GETFD)) << "the caller's descriptor is the caller's";
    }
}

}  // namespace
