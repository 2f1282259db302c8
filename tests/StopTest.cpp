// Workers that are asked to stop: whoever frees, replaces or destroys what a scan uses gets it at once, however large
// the file is and whatever is in it.
#include <gtest/gtest.h>
#include <sched.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "subtitle/SubtitleParserSUBIDX.h"
#include "subtitle/parser/ParserWorker.h"
#include "tests/support/Cuts.h"
#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"
#include "tests/support/VobSubPair.h"

namespace {

using namespace test;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Sanitizers and emulation take their time.
const auto kAtOnce = milliseconds(scaled(100) == 100 ? 20 : 200);
constexpr int kTries = 8;

size_t largeSize() { return scaled(16 << 20); }

void spin(Clock::duration time) {
    const auto begin = Clock::now();
    while (Clock::now() - begin < time) sched_yield();
}

/// What `end` takes of the processor, in all threads: what the machine does besides does not count. Of the time that
/// passes a fiftieth does, so that nothing sleeps either.
template <class Call>
Clock::duration costOf(Call end) {
    const clock_t atWork = clock();
    const auto begin = Clock::now();
    end();
    const auto passed = Clock::now() - begin;
    const std::chrono::duration<double> work((static_cast<double>(clock()) - static_cast<double>(atWork)) /
                                             CLOCKS_PER_SEC);
    return std::max(std::chrono::duration_cast<Clock::duration>(work), passed / 50);
}

// ------------------------------------------------------------------------------------------------------- contents

enum class Content { kEntries, kOneLine, kBlanks, kLineEnds };
constexpr Content kContents[] = {Content::kEntries, Content::kOneLine, Content::kBlanks, Content::kLineEnds};
constexpr const char* kContentNames[] = {"entries", "one line", "blanks", "line ends"};

enum class Encoding { kBytes, kLittle, kBig };
constexpr Encoding kEncodings[] = {Encoding::kBytes, Encoding::kLittle, Encoding::kBig};
constexpr const char* kEncodingNames[] = {"8 bits", "UTF-16LE", "UTF-16BE"};

std::string encoded(std::string_view text, Encoding encoding, bool mark) {
    return encoding == Encoding::kBytes    ? std::string(text)
           : encoding == Encoding::kLittle ? utf16le(text, mark)
                                           : utf16be(text, mark);
}

/// What is repeated in a file of the content.
std::string patternOf(Content content, Encoding encoding, const std::string& entry) {
    const std::string phrase = content == Content::kEntries   ? entry
                               : content == Content::kOneLine ? "x"s
                               : content == Content::kBlanks  ? " "s
                                                              : "\r\n"s;
    return encoded(runOf(phrase, 32768), encoding, false);
}

// ---------------------------------------------------------------------------------------------------- text formats

/// A parser with a large file in its buffer - a mark, an entry, then a pattern over and over - and a worker that is
/// about to scan it.
template <class Format, class ParserClass = typename Format::Parser>
struct Scanning {
    using Parser = ParserClass;

    Scanning(const std::string& pattern, Encoding encoding, size_t size, const char* path = "")
        : parser(std::make_unique<Parser>(pathFor<Parser>(path))), gate(std::make_unique<ThreadGate>()) {
        const std::string head = encoded(Format::file(), encoding, true);
        EXPECT_EQ(TRUE, parser->Init(size));
        U8* const data = parser->m_pu8RawBuffer;
        memcpy(data, head.data(), std::min(head.size(), size));
        for (size_t at = head.size(); at < size; at += pattern.size()) {
            memcpy(data + at, pattern.data(), std::min(pattern.size(), size - at));
        }
        parser->SetFrameRate(25);
        if (Format::kRefuses) {  // told on the player's thread
            parser->m_eCodeType = encoding == Encoding::kBytes    ? kNative
                                  : encoding == Encoding::kLittle ? kUtf16Le
                                                                  : kUtf16Be;
        }
        EXPECT_TRUE(vxsubtitle::startWorker({parser->m_threadParser, parser->mWorkerState},
                                            &vxsubtitle::workerMain<Parser>, parser.get()));
    }
    ~Scanning() { gate.reset(); }  // before the parser, which waits for the worker

    /// The worker begins.
    void letGo() { gate->open(); }

    std::unique_ptr<Parser> parser;
    std::unique_ptr<ThreadGate> gate;
};

enum class End { kDestructor, kDeinit, kInit, kBeginParse };
constexpr const char* kEndNames[] = {"destructor", "Deinit", "Init", "BeginParse"};

/// What takes the parser's buffers.
template <class Parser>
void take(End end, std::unique_ptr<Parser>& parser) {
    switch (end) {
        case End::kDestructor:
            parser.reset();
            break;
        case End::kDeinit:
            EXPECT_EQ(TRUE, parser->Deinit());
            break;
        case End::kInit:
            EXPECT_EQ(TRUE, parser->Init(10));
            break;
        case End::kBeginParse:
            parser->BeginParse();
            break;
    }
}

/// The best of several tries costs nothing to speak of, and none leaves a worker. Answers whether one of them found the
/// worker inside its scan.
template <class Make>
bool expectToStop(End end, Make make) {
    auto best = Clock::duration::max();
    bool inside = false;
    for (int tries = 0; tries < kTries && (best >= kAtOnce || !inside); ++tries) {
        auto scanning = make();
        scanning->letGo();
        spin(std::chrono::microseconds(500) / (1 << tries));  // at last the fastest machine is not through
        best = std::min(best, costOf([&] { take(end, scanning->parser); }));
        EXPECT_EQ(1u, threadCount());
        inside =
            inside || end == End::kDestructor || end == End::kBeginParse || scanning->parser->bParseFinish == FALSE;
    }
    EXPECT_LT(best, kAtOnce) << std::chrono::duration_cast<milliseconds>(best).count() << " ms";
    return inside;
}

template <class Format>
class Stop : public testing::Test {
    unsigned mDescriptors = openDescriptors();
    void TearDown() override {
        EXPECT_EQ(1u, threadCount());
        EXPECT_EQ(mDescriptors, openDescriptors());
    }
};

TYPED_TEST_SUITE(Stop, TextFormats, FormatNames);

TYPED_TEST(Stop, WhateverTheFileHolds) {
    bool inside = false;
    for (const Content content : kContents) {
        for (const Encoding encoding : kEncodings) {
            if (encoding == Encoding::kBig && !TypeParam::kScansBigEndian) continue;
            SCOPED_TRACE(kContentNames[static_cast<int>(content)] + ", "s + kEncodingNames[static_cast<int>(encoding)]);
            const std::string pattern = patternOf(content, encoding, TypeParam::file());
            inside |= expectToStop(
                End::kDeinit, [&] { return std::make_unique<Scanning<TypeParam>>(pattern, encoding, largeSize()); });
        }
    }
    EXPECT_TRUE(inside) << "every scan went to its end";
}

TYPED_TEST(Stop, ForWhoeverWantsTheBuffers) {
    const TempFile empty("");  // what a repeated BeginParse finds
    const std::string pattern = patternOf(Content::kEntries, Encoding::kBytes, TypeParam::file());
    const size_t size = scaled(64 << 20);
    for (const End end : {End::kDestructor, End::kInit, End::kBeginParse}) {
        SCOPED_TRACE(kEndNames[static_cast<int>(end)]);
        expectToStop(
            end, [&] { return std::make_unique<Scanning<TypeParam>>(pattern, Encoding::kBytes, size, empty.path()); });
    }
}

// A request is over with the worker that it was made for.
TYPED_TEST(Stop, LeavesNoTraceInWhatComesAfter) {
    const TempFile small(TypeParam::file());
    Scanning<TypeParam> scanning(patternOf(Content::kEntries, Encoding::kBytes, TypeParam::file()), Encoding::kBytes,
                                 1 << 20, small.path());
    scanning.letGo();
    auto& parser = *scanning.parser;
    EXPECT_EQ(TRUE, parser.Deinit());
    EXPECT_EQ(vxsubtitle::kWorkerJoined, parser.mWorkerState);
    scan<TypeParam>(parser, TypeParam::file());
    EXPECT_EQ(TRUE, parser.bParseFinish);
    EXPECT_EQ(TypeParam::entries(), entriesOf(parser));
    parser.m_threadParser = 0;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(TRUE, parser.bParseFinish);
    EXPECT_EQ(TypeParam::entries(), entriesOf(parser));
}

// However far a scan has come when it is asked to stop, it has not finished.
TYPED_TEST(Stop, RaisesNoFlag) {
    typename TypeParam::Parser parser(-1, 0, 0);
    prepare<TypeParam>(parser, TypeParam::file());
    parser.mWorkerState = vxsubtitle::kWorkerRunning | vxsubtitle::StopRequest::kBit;
    parser.ParserThread();
    EXPECT_EQ(FALSE, parser.bParseFinish);
    EXPECT_EQ(0u, parser.GetTagNum());
    parser.mWorkerState = vxsubtitle::kWorkerNone;
    parser.ParserThread();
    EXPECT_EQ(TRUE, parser.bParseFinish);
    EXPECT_EQ(TypeParam::entries(), entriesOf(parser));
}

/// Asked to stop in its first entry.
template <class Parser>
struct StopsItself : Parser {
    using Parser::Parser;
    BOOL AddTag(const U32 start, const U32 end, const S64 pos, const EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE type) override {
        const BOOL added = Parser::AddTag(start, end, pos, type);
        __atomic_fetch_or(&this->mWorkerState, vxsubtitle::StopRequest::kBit, __ATOMIC_RELAXED);
        return added;
    }
};

TYPED_TEST(Stop, BehindTheEntryInWhichItIsAsked) {
    StopsItself<typename TypeParam::Parser> parser(-1, 0, 0);
    prepare<TypeParam>(parser, runOf(TypeParam::file(), 10 * TypeParam::file().size()));
    parser.ParserThread();
    EXPECT_EQ(FALSE, parser.bParseFinish);
    EXPECT_EQ(1u, parser.GetTagNum());
}

// The first line is an entry twice over, and its braces are no longer looked for.
TEST(StopMicroDvd, WithinALine) {
    for (const bool asked : {true, false}) {
        const std::string line = "{1}{2}{ 3}{4}x";
        StopsItself<SubtitleParserSubMicroDVD> stopped(-1, 0, 0);
        SubtitleParserSubMicroDVD whole(-1, 0, 0);
        SubtitleParserSubMicroDVD& parser = asked ? stopped : whole;
        prepare<SubMicroDVD>(parser, line + "\r\n{5}{6}y\r\n");
        parser.ParserThread();
        EXPECT_EQ(asked ? FALSE : TRUE, parser.bParseFinish);
        ASSERT_EQ(asked ? 2u : 3u, parser.GetTagNum());
        EXPECT_EQ(asked ? parser.m_s64DataTotalSize : static_cast<S64>(line.size() - 1), parser.m_pTagBuffer[1].s64Pos);
    }
}

/// Destroys parsers of the file after times that differ, up to a little more than a scan takes. A machine that is slow
/// or busy does fewer rounds.
template <class Make>
void destroyAtAnyMoment(unsigned rounds, Make make) {
    constexpr unsigned kFewest = 10;
    const auto enough = Clock::now() + std::chrono::seconds(5);
    std::mt19937 random(20240229);
    auto whole = Clock::duration::max();
    for (int i = 0; i < 5; ++i) {
        auto scanning = make();
        scanning->letGo();
        const auto begin = Clock::now();
        while (__atomic_load_n(&scanning->parser->mWorkerState, __ATOMIC_ACQUIRE) != vxsubtitle::kWorkerEnded) {
            sched_yield();
        }
        whole = std::min(whole, Clock::now() - begin);
    }
    for (unsigned round = 0; round < rounds && (round < kFewest || Clock::now() < enough); ++round) {
        auto scanning = make();
        scanning->letGo();
        spin(whole * (random() % 1100) / 1000);
        scanning->parser.reset();
        ASSERT_EQ(1u, threadCount());
    }
}

TYPED_TEST(Stop, AtAnyMoment) {
    for (const Encoding encoding : {Encoding::kBytes, Encoding::kLittle}) {
        const std::string pattern = patternOf(Content::kEntries, encoding, TypeParam::file());
        destroyAtAnyMoment(scaled(150),
                           [&] { return std::make_unique<Scanning<TypeParam>>(pattern, encoding, scaled(200000)); });
    }
}

// ------------------------------------------------------------------------------------- behind the scan: SSA, listings

/// Says where its worker is.
struct Watched : SubtitleParserSSA {
    using SubtitleParserSSA::SubtitleParserSSA;
    ~Watched() override { Deinit(); }
    void GetData2CheckPossibleEncodings() override {
        SubtitleParserSSA::GetData2CheckPossibleEncodings();
        checked = true;
    }
    U32 CheckPossibleEncodings(const U8* text) override {
        ++texts;
        while (texts == askedAt && !vxsubtitle::StopRequest(mWorkerState).isMade()) sched_yield();
        return SubtitleParserSSA::CheckPossibleEncodings(text);
    }
    std::atomic<bool> checked{false};
    std::atomic<int> texts{0};
    int askedAt = 0;  ///< the text in which it is to be asked to stop
};

/// Dialogue lines whose starts go down.
std::string descending(unsigned lines) {
    std::string script;
    for (unsigned i = lines; i > 0; --i) {
        char line[80];
        snprintf(line, sizeof line, "Dialogue: 0,%u:%02u:%02u.%02u,9:00:00.00,D,,0,0,0,,x\r\n", i / 360000,
                 i / 6000 % 60, i / 100 % 60, i % 100);
        script += line;
    }
    return utf16le(script, false);
}

const size_t kSsaHead = utf16le(Ssa::file()).size();

TEST(StopSsa, InItsSort) {
    const unsigned lines = scaled(300000);
    const std::string script = descending(lines);
    auto best = Clock::duration::max();
    bool unsorted = false;
    for (int tries = 0; tries < kTries && (best >= kAtOnce || !unsorted); ++tries) {
        Scanning<Ssa, Watched> scanning(script, Encoding::kLittle, script.size() + kSsaHead);
        scanning.letGo();
        Watched& parser = *scanning.parser;
        while (!parser.checked) sched_yield();
        best = std::min(best, costOf([&] { vxsubtitle::stopWorker({parser.m_threadParser, parser.mWorkerState}); }));
        EXPECT_EQ(lines + 1, parser.GetTagNum());
        for (U32 i = 1; i < lines && !unsorted; ++i)
            unsorted = Compare(&parser.m_pTagBuffer[i - 1], &parser.m_pTagBuffer[i]) > 0;
    }
    EXPECT_LT(best, kAtOnce) << std::chrono::duration_cast<milliseconds>(best).count() << " ms";
    EXPECT_TRUE(unsorted);
    EXPECT_EQ(1u, threadCount());
}

TEST(StopSsa, InItsCheck) {
    const std::string pattern = patternOf(Content::kEntries, Encoding::kBytes, Ssa::file());
    auto best = Clock::duration::max();
    for (int tries = 0; tries < kTries && best >= kAtOnce; ++tries) {
        Scanning<Ssa, Watched> scanning(pattern, Encoding::kBytes, 20000);
        scanning.parser->askedAt = 3;
        scanning.letGo();
        while (scanning.parser->texts < 3) sched_yield();
        best = std::min(best, costOf([&] { scanning.parser->Deinit(); }));
        EXPECT_EQ(3, scanning.parser->texts) << "of a hundred";
    }
    EXPECT_LT(best, kAtOnce);
    EXPECT_EQ(1u, threadCount());
}

TEST(StopSsa, AtAnyMoment) {
    const std::string script = descending(scaled(10000));
    destroyAtAnyMoment(scaled(400), [&] {
        return std::make_unique<Scanning<Ssa>>(script, Encoding::kLittle, script.size() + kSsaHead);
    });
}

template <class Format>
class StopListing : public testing::Test {};

using Listing = testing::Types<Txt, SubDvbSubtitleSystem>;
TYPED_TEST_SUITE(StopListing, Listing, FormatNames);

TYPED_TEST(StopListing, OfTheTable) {
    const unsigned entries = scaled(200000);
    const std::string entry = TypeParam::file();
    auto best = Clock::duration::max();
    bool stopped = false;
    for (int tries = 0; tries < kTries && (best >= kAtOnce || !stopped); ++tries) {
        Scanning<TypeParam> scanning(entry, Encoding::kBytes, entry.size() * entries);
        const LogCapture log;
        scanning.letGo();
        while (log.texts().size() < 3) sched_yield();  // the rule and two tags
        best = std::min(best, costOf([&] { scanning.parser->Deinit(); }));
        const Messages texts = log.texts();
        const auto listed = texts.size() - static_cast<size_t>(std::count(texts.begin(), texts.end(), kRule)) - 1;
        stopped = stopped || (listed > 0 && listed < entries);
    }
    EXPECT_LT(best, kAtOnce) << std::chrono::duration_cast<milliseconds>(best).count() << " ms";
    EXPECT_TRUE(stopped);
}

// -------------------------------------------------------------------------------------------------------- VobSub

/// A VobSub parser at the limit of its wait, whose worker is about to scan.
struct ScanningIndex {
    explicit ScanningIndex(VobSubPair& pair)
        : parser(std::make_unique<SubtitleParserSUBIDX>(pair.path())), gate(std::make_unique<ThreadGate>()) {
        const VirtualClock clock;
        EXPECT_EQ(FALSE, parser->BeginParse());
    }
    ~ScanningIndex() { gate.reset(); }

    void letGo() { gate->open(); }

    std::unique_ptr<SubtitleParserSUBIDX> parser;
    std::unique_ptr<ThreadGate> gate;
};

std::string index(Content content, Encoding encoding, size_t size) {
    const std::string picture = "timestamp: 00:00:01:000, filepos: 000000800\r\n";
    return encoded(picture, encoding, true) + runOf(patternOf(content, encoding, picture), size);
}

TEST(StopVobSub, WhateverTheIndexHolds) {
    bool inside = false;
    for (const Content content : kContents) {
        for (const Encoding encoding : kEncodings) {
            SCOPED_TRACE(kContentNames[static_cast<int>(content)] + ", "s + kEncodingNames[static_cast<int>(encoding)]);
            VobSubPair pair(index(content, encoding, largeSize() / 2), "");
            inside |= expectToStop(End::kDeinit, [&] { return std::make_unique<ScanningIndex>(pair); });
        }
    }
    EXPECT_TRUE(inside) << "every scan went to its end";
    EXPECT_EQ(1u, threadCount());
}

TEST(StopVobSub, RaisesNoFlag) {
    const std::string film = index(Content::kEntries, Encoding::kBytes, 100);
    VobSubInMemory files;
    files.parser.mWorkerState = vxsubtitle::kWorkerRunning | vxsubtitle::StopRequest::kBit;
    files.load(film, "");
    EXPECT_EQ(FALSE, files.parser.bParseFinish);
    EXPECT_TRUE(files.parser.m_vPrivateTrackInfo.empty());
    files.parser.mWorkerState = vxsubtitle::kWorkerNone;
    files.load(film, "");
    EXPECT_EQ(TRUE, files.parser.bParseFinish);
    EXPECT_EQ(1u, files.parser.m_vPrivateTrackInfo.size());
}

TEST(StopVobSub, ForWhoeverWantsTheBuffers) {
    VobSubPair pair(index(Content::kEntries, Encoding::kBytes, largeSize()), "");
    for (const End end : {End::kDestructor, End::kInit, End::kBeginParse}) {
        SCOPED_TRACE(kEndNames[static_cast<int>(end)]);
        expectToStop(end, [&] { return std::make_unique<ScanningIndex>(pair); });
    }
}

TEST(StopVobSub, AtAnyMoment) {
    VobSubPair pair(index(Content::kEntries, Encoding::kBytes, scaled(200000)), "");
    destroyAtAnyMoment(scaled(400), [&] { return std::make_unique<ScanningIndex>(pair); });
}

}  // namespace
