// What the four dialects of .sub files have in common: opening, loading, refusing, the worker and its limits, logs.
#include <fcntl.h>

#include <memory>
#include <type_traits>

#include "subtitle/SubtitleParserSubDvbSubtitleSystem.h"
#include "subtitle/SubtitleParserSubMicroDVD.h"
#include "subtitle/SubtitleParserSubViewer10.h"
#include "subtitle/SubtitleParserSubViewer20.h"
#include "tests/SubDialects.h"

namespace {

using namespace test;

constexpr char kRule[] = "\n\n*************************************\n\n";

/// A dialect: its words, a file of one entry and what is logged about it.
struct SubViewer20 {
    using Parser = SubtitleParserSubViewer20;
    static constexpr char kName[] = "SubtitleParserSubViewer20";
    static constexpr char kSource[] = "SRT";
    static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_20;
    static constexpr bool kStartsOnce = true;
    static constexpr char kSample[] = "00:00:01.00,00:00:04.50\r\nHello\r\n\r\n";
    static constexpr char kEntries[] = "1000-4050 @25 Hello";
    static std::vector<std::string> scanned(bool) { return {}; }
    static std::string waited(bool finished, const char*) {
        return "Zorb_MediaSubtitleParserSubViewer20::bPareFinish -> "s + (finished ? "00000001\n" : "00000000\n");
    }
};

struct SubViewer10 {
    using Parser = SubtitleParserSubViewer10;
    static constexpr char kName[] = "SubtitleParserSubViewer10";
    static constexpr char kSource[] = "SRT";
    static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_10;
    static constexpr bool kStartsOnce = true;
    static constexpr char kSample[] = "[00:00:01]\r\nHello\r\n[00:00:04]\r\n\r\n";
    static constexpr char kEntries[] = "1000-4000 @12 Hello";
    static std::vector<std::string> scanned(bool) { return {}; }
    static std::string waited(bool, const char* flag) {
        return "Zorb_MediaSubtitleParserSRT::BeginParse2222222 -> "s + flag + "\n";
    }
};

struct MicroDvd {
    using Parser = SubtitleParserSubMicroDVD;
    static constexpr char kName[] = "SubtitleParserSubMicroDVD";
    static constexpr char kSource[] = "SubMicroDVD";
    static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_MICRO_DVD;
    static constexpr bool kStartsOnce = false;
    static constexpr char kSample[] = "{100}{150}H\xE9llo\r\n";  // 0xE9: not UTF-8
    static constexpr char kEntries[] = "3448-5172 @10 H\\xE9llo";
    static std::vector<std::string> scanned(bool) {
        return {"ParserThread first line::u32Frames1= 100, u32Frames2 = 150\n",
                "ParserThread::m_u64NanoSecPerFrame = 34482758, u32Frames1= 100,u32Frames2= 150,u32Time1= 3448, "
                "u32Time2 = 5172\n"};
    }
    static std::string waited(bool, const char* flag) {
        return "SubtitleParserSubMicroDVD::BeginParse2222222 -> "s + flag + "\n";
    }
};

struct DvbSubtitleSystem {
    using Parser = SubtitleParserSubDvbSubtitleSystem;
    static constexpr char kName[] = "SubtitleParserSubDvbSubtitleSystem";
    static constexpr char kSource[] = "SRT";
    static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_DVB_SUBTITLE_SYSTEM;
    static constexpr bool kStartsOnce = true;
    static constexpr char kSample[] = "00:00:01:00 00:00:04:00 Hello\r\n";
    static constexpr char kEntries[] = "1000-4000 @24 Hello";
    static std::vector<std::string> scanned(bool complete) {
        if (!complete) return {};
        return {kRule, "Time = 1000, 4000, 00000018\n", kRule};
    }
    static std::string waited(bool, const char* flag) {
        return "Zorb_MediaSubtitleParserSRT::BeginParse2222222 -> "s + flag + "\n";
    }
};

template <class Dialect>
class SubDialect : public testing::Test {
protected:
    using Parser = typename Dialect::Parser;

    static LogLine line(const std::string& text) { return {3, Dialect::kName, text}; }

    static LogLine loading(size_t size) {
        return line("Zorb_MediaSubtitleParser"s + Dialect::kSource +
                    "::ParserThread - Enter, data size = " + std::to_string(size) + ", rawbuf: *\n");
    }

    static LogLine shortRead() { return line("Zorb_MediaSubtitleParserSRT Warning, Read data < Requied Data\n"); }

    /// Between loading and acceptance.
    static Lines typed(int codeType) {
        if (!std::is_same_v<Dialect, MicroDvd>) return {};
        return {line("m_eCodeType = " + std::to_string(codeType) + " \n")};
    }

    /// What the worker logs about the sample.
    static Lines scanned(bool complete, const std::string& tags) {
        Lines lines;
        for (const std::string& text : Dialect::scanned(complete)) lines.push_back(line(text));
        lines.push_back(
            line(Dialect::kName + "::ParserThread -> Finished : Tag num = "s + tags + (complete ? ", 1\n" : ", 0\n")));
        return lines;
    }

    static LogLine waited(bool finished, const char* flag = "00000000") {
        return line(Dialect::waited(finished, flag));
    }
};

Lines operator+(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}
Lines operator+(Lines lines, const LogLine& more) { return std::move(lines) + Lines{more}; }

using Dialects = testing::Types<SubViewer20, SubViewer10, MicroDvd, DvbSubtitleSystem>;

struct Names {
    template <class Dialect>
    static std::string GetName(int) {
        return Dialect::kName;
    }
};

TYPED_TEST_SUITE(SubDialect, Dialects, Names);

// ------------------------------------------------------------------------------------------- opening and logs

TYPED_TEST(SubDialect, IsConstructedWithoutAnything) {
    TempFile file("x");
    for (const bool byPath : {true, false}) {
        const std::unique_ptr<typename TestFixture::Parser> parser(
            byPath ? new typename TestFixture::Parser(bytesOf(file.path()))
                   : new typename TestFixture::Parser(file.fd(), 3, 4));
        EXPECT_EQ(FALSE, parser->bParseFinish);
        EXPECT_EQ(pthread_t{}, parser->m_threadParser);
        EXPECT_EQ(0u, parser->GetTagNum());
        EXPECT_EQ(0u, parser->m_u32FrameRrate);
        EXPECT_EQ(0u, parser->m_u64NanoSecPerFrame);
        ASSERT_NE(nullptr, parser->pFileProcess);
        EXPECT_STREQ(byPath ? file.path() : "", parser->pFileProcess->pFileName);
        EXPECT_EQ(byPath, parser->pFileProcess->mFd < 0);
        EXPECT_EQ(byPath ? 0 : 3, parser->pFileProcess->mOffset);
        EXPECT_EQ(byPath ? 0 : 4, parser->pFileProcess->mLength);
    }
}

TYPED_TEST(SubDialect, OpensAPath) {
    const std::string content = TypeParam::kSample;
    const TempFile file(content);
    typename TestFixture::Parser parser(bytesOf(file.path()));
    const LogCapture log;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(TypeParam::kEntries, entriesOf(parser));
    EXPECT_EQ(Lines{opening(file)} + this->loading(content.size()) + this->typed(kNative) + this->scanned(true, "1") +
                  this->waited(true),
              levelled(log.lines()));
    char address[40];
    snprintf(address, sizeof address, ", rawbuf: %x\n",
             static_cast<U32>(reinterpret_cast<uintptr_t>(parser.m_pu8RawBuffer)));
    const std::string loading = log.texts()[1];
    EXPECT_NE(std::string::npos, loading.find(address)) << loading;
    EXPECT_EQ(TRUE, parser.bParseFinish);
    EXPECT_EQ(0, parser.m_s64RawBufferPosition);
    EXPECT_EQ(1u, threadCount());
}

TYPED_TEST(SubDialect, OpensADescriptorAsTheWholeFile) {
    const std::string content = TypeParam::kSample;
    const TempFile file(content);
    typename TestFixture::Parser parser(file.fd(), 5, 6);
    const LogCapture log;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(TypeParam::kEntries, entriesOf(parser));
    EXPECT_EQ(Lines{openingDescriptor()} + this->loading(content.size()) + this->typed(kNative) +
                  this->scanned(true, "1") + this->waited(true),
              levelled(log.lines()));
}

TYPED_TEST(SubDialect, LogsTheStateWordOrTheFlag) {
    const TempFile file(TypeParam::kSample);
    typename TestFixture::Parser parser(bytesOf(file.path()));
    parser.m_eFlag = E_MEDIA_SUBTITLE_PARSER_FLAG_FINISHED;
    const LogCapture log;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(this->waited(true, "00000010"), log.lines().back());
}

TYPED_TEST(SubDialect, RefusesWithoutAWordOrAThread) {
    for (const std::string content : {"Nothing of interest\r\n", ""}) {
        const TempFile file(content);
        typename TestFixture::Parser parser(bytesOf(file.path()));
        const LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(Lines{opening(file)} + this->loading(content.size()) + this->typed(kUtf8), levelled(log.lines()));
        EXPECT_EQ(pthread_t{}, parser.m_threadParser);
        EXPECT_EQ(FALSE, parser.bParseFinish);
        EXPECT_EQ(0u, parser.GetTagNum());
    }
}

TYPED_TEST(SubDialect, NeedsAFileSource) {
    typename TestFixture::Parser parser(bytesOf("/nowhere"));
    delete parser.pFileProcess;
    parser.pFileProcess = nullptr;
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(Lines{}, log.lines());
}

TYPED_TEST(SubDialect, NeedsAFileThatOpens) {
    typename TestFixture::Parser parser(bytesOf("/nowhere/at all"));
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ((Lines{{3, "SubtitleFileProcess", "Open filename = /nowhere/at all\n"},
                     {3, "SubtitleFileProcess", "fopen fialded fun=Open line=110\n"}}),
              log.lines());
    EXPECT_EQ(nullptr, parser.m_pu8RawBuffer);
}

TYPED_TEST(SubDialect, RefusesAFolder) {
    typename TestFixture::Parser parser(bytesOf("/tmp"));
    EXPECT_EQ(FALSE, parser.BeginParse());
}

TYPED_TEST(SubDialect, NeedsBuffersFromInit) {
    const TempFile file(TypeParam::kSample);
    for (const BOOL answer : {BOOL{FALSE}, BOOL{2}}) {  // exactly TRUE is asked for
        Rigged<typename TestFixture::Parser> parser(bytesOf(file.path()));
        parser.initAnswer = answer;
        const LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(Lines{opening(file)}, log.lines());
    }
}

template <class Parser>
struct WithoutWorkBuffer : Rigged<Parser> {
    using Rigged<Parser>::Rigged;
    BOOL Init(U64 size) override {
        const BOOL result = Rigged<Parser>::Init(size);
        if (loseWorkBuffer) {
            free(this->m_pu8SubtitleBuffer);
            this->m_pu8SubtitleBuffer = nullptr;
        }
        return result;
    }
    bool loseWorkBuffer = false;
};

TYPED_TEST(SubDialect, NeedsItsTableAndItsWorkBuffer) {
    const std::string content = TypeParam::kSample;
    const TempFile file(content);
    for (const bool table : {true, false}) {
        WithoutWorkBuffer<typename TestFixture::Parser> parser(bytesOf(file.path()));
        parser.loseTable = table;
        parser.loseWorkBuffer = !table;
        const LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(Lines{opening(file)} + this->loading(content.size()), levelled(log.lines()));
        EXPECT_EQ(kUnknown, parser.m_eCodeType);
    }
}

TYPED_TEST(SubDialect, GoesOnWithAShortRead) {
    const std::string content = TypeParam::kSample;
    const TempFile file(content);
    Rigged<typename TestFixture::Parser> parser(bytesOf(file.path()));
    parser.missing = 4;
    const LogCapture log;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(Lines{opening(file)} + this->loading(content.size() + 4) + this->shortRead() + this->typed(kNative) +
                  this->scanned(true, "1") + this->waited(true),
              levelled(log.lines()));
    EXPECT_EQ(TypeParam::kEntries, entriesOf(parser));
}

TYPED_TEST(SubDialect, FillsTwoFieldsOfATrack) {
    Parsed<typename TestFixture::Parser> parsed(TypeParam::kSample);
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info;
    memset(static_cast<void*>(&info), 0xEE, sizeof info);
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO expected = info;
    expected.eSubtitleType = TypeParam::kType;
    expected.eCodeType = kNative;
    EXPECT_EQ(TRUE, parsed.parser.GetTrackInfo(77, &info));
    EXPECT_EQ(0, memcmp(&expected, &info, sizeof info));
    EXPECT_EQ(TRUE, parsed.parser.GetTrackInfo(0, nullptr));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID, parsed.parser.m_eSubtitleType);
}

// -------------------------------------------------------------------------------------------------- the worker

TYPED_TEST(SubDialect, NeedsAThread) {
    const std::string content = TypeParam::kSample;
    const TempFile file(content);
    typename TestFixture::Parser parser(bytesOf(file.path()));
    parser.m_threadParser = pthread_t{};
    const LogCapture log;
    {
        const ThreadCreateFails fails;
        EXPECT_EQ(FALSE, parser.BeginParse());
    }
    EXPECT_EQ(pthread_t{}, parser.m_threadParser);
    EXPECT_EQ(Lines{opening(file)} + this->loading(content.size()) + this->typed(kNative), levelled(log.lines()));
    EXPECT_EQ(TRUE, parser.BeginParse()) << "a thread that could not be created does not count as one";
}

TYPED_TEST(SubDialect, StartsAgainOrNot) {
    Parsed<typename TestFixture::Parser> parsed(TypeParam::kSample);
    ASSERT_EQ(TRUE, parsed.result);
    EXPECT_NE(pthread_t{}, parsed.parser.m_threadParser);
    const LogCapture log;
    EXPECT_EQ(TypeParam::kStartsOnce ? FALSE : TRUE, parsed.parser.BeginParse());
    EXPECT_EQ(TypeParam::kStartsOnce ? "" : TypeParam::kEntries, entriesOf(parsed.parser));
    EXPECT_EQ(1u, threadCount());
}

TYPED_TEST(SubDialect, WaitsForASlowWorker) {
    const TempFile file(TypeParam::kSample);
    typename TestFixture::Parser parser(bytesOf(file.path()));
    VirtualClock clock(4294960000u);  // the milliseconds wrap during the wait
    ThreadGate gate;
    clock.atSleep(1000, [&] {
        gate.open();
        while (!__atomic_load_n(&parser.bParseFinish, __ATOMIC_ACQUIRE)) sched_yield();
    });
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(std::vector<unsigned>(1000, 100000u), clock.sleeps());
    EXPECT_EQ(TypeParam::kEntries, entriesOf(parser));
    EXPECT_EQ(1u, threadCount());
}

TYPED_TEST(SubDialect, GivesUpAtTheLimit) {
    const std::string content = TypeParam::kSample;
    const TempFile file(content);
    {
        typename TestFixture::Parser parser(bytesOf(file.path()));
        const VirtualClock clock(4294960000u);
        ThreadGate gate;
        const LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(std::vector<unsigned>(1000, 100000u), clock.sleeps()) << "at least 100000 ms";
        EXPECT_EQ(Lines{opening(file)} + this->loading(content.size()) + this->typed(kNative) + this->waited(false),
                  levelled(log.lines()));
        EXPECT_EQ(2u, threadCount()) << "nothing waits for the worker";
        gate.open();
    }
    EXPECT_EQ(1u, threadCount()) << "the destructor does";
}

TYPED_TEST(SubDialect, StopsAtATagThatCannotBeStored) {
    const std::string content = TypeParam::kSample;
    for (const bool wide : {false, true}) {
        const std::string text = content + content + content;
        Rigged<typename TestFixture::Parser> parser(bytesOf(""));
        load(parser, wide ? utf16le(text) : text);
        parser.m_eCodeType = wide ? kUtf16Le : kNative;
        parser.tagsThatFit = 1;
        const LogCapture log;
        parser.ParserThread();
        EXPECT_EQ(FALSE, parser.bParseFinish);
        EXPECT_EQ(this->scanned(false, "1").back(), log.lines().back());
        EXPECT_EQ(1u, parser.GetTagNum());
    }
}

TYPED_TEST(SubDialect, WaitsInVainWhenATagCannotBeStored) {
    const std::string content = TypeParam::kSample;
    const TempFile file(content);
    Rigged<typename TestFixture::Parser> parser(bytesOf(file.path()));
    parser.tagsThatFit = 0;
    const VirtualClock clock;
    const ThreadsEndFirst order;
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(std::vector<unsigned>(1000, 100000u), clock.sleeps());
    EXPECT_EQ(Lines{opening(file)} + this->loading(content.size()) + this->typed(kNative) + this->scanned(false, "0") +
                  this->waited(false),
              levelled(log.lines()));
    EXPECT_EQ(1u, threadCount());
}

TYPED_TEST(SubDialect, ScansNothingInAnEmptyFile) {
    Loaded<typename TestFixture::Parser> loaded("");
    loaded.parser.m_s64RawBufferPosition = 7;
    const LogCapture log;
    EXPECT_EQ(nullptr, TestFixture::Parser::ParserTask(&loaded.parser));
    EXPECT_EQ(TRUE, loaded.parser.bParseFinish);
    EXPECT_EQ(0, loaded.parser.m_s64RawBufferPosition);
    EXPECT_EQ(this->scanned(true, "0").back(), log.lines().back());
}

TYPED_TEST(SubDialect, LeavesNothingOpen) {
    const std::string sample = TypeParam::kSample;
    const unsigned before = openDescriptors();
    for (const std::string& content : {sample, "Nothing"s, ""s}) {
        const TempFile file(content);
        const unsigned withFile = openDescriptors();
        {
            typename TestFixture::Parser byPath(bytesOf(file.path()));
            typename TestFixture::Parser byDescriptor(file.fd(), 0, 0);
            const BOOL expected = content == sample ? TRUE : FALSE;
            EXPECT_EQ(expected, byPath.BeginParse());
            EXPECT_EQ(expected, byDescriptor.BeginParse());
            EXPECT_LT(withFile, openDescriptors());
        }
        EXPECT_EQ(withFile, openDescriptors());
        EXPECT_NE(-1, fcntl(file.fd(), F_GETFD)) << "the caller's descriptor is the caller's";
    }
    EXPECT_EQ(before, openDescriptors());
    EXPECT_EQ(1u, threadCount());
}

// --------------------------------------------------------------------------------------------------- bad input

TYPED_TEST(SubDialect, AnswersEveryBeginningOfItsSample) {
    const std::string sample = TypeParam::kSample;
    const std::string twice = "title\r\n" + sample + sample;
    for (const std::string& content : inEveryEncoding(twice)) {
        forEachPrefix(content, [](const std::string& part) {
            Parsed<typename TestFixture::Parser> parsed(part);
            EXPECT_TRUE(parsed.result == TRUE || parsed.result == FALSE);
            readEverything(parsed.parser);
        });
    }
    EXPECT_EQ(1u, threadCount());
}

/// Every encoding of `content`: parsed, and scanned whatever the acceptance test says, and read.
template <class Parser>
void answer(const std::string& content) {
    const std::pair<std::string, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE> files[] = {
        {content, kNative},
        {kUtf8Mark + content, kUtf8},
        {utf16le(content), kUtf16Le},
        {utf16be(content), kUtf16Be},
    };
    for (const auto& [text, codeType] : files) {
        Parsed<Parser> parsed(text);
        EXPECT_TRUE(parsed.result == TRUE || parsed.result == FALSE);
        Loaded<Parser> loaded(text, codeType);
        loaded.parser.ParserThread();
        EXPECT_EQ(TRUE, loaded.parser.bParseFinish);
        for (SubtitleParser* const parser : {&parsed.parser, &loaded.parser}) {
            for (U32 i = 0; i < parser->GetTagNum() && i < 100; ++i) shownText(*parser, i);
        }
    }
}

TYPED_TEST(SubDialect, AnswersALineOfFiveMegabytes) {
    const std::string sample = TypeParam::kSample;
    const std::string head = sample.substr(0, sample.find("llo"));
    answer<typename TestFixture::Parser>(head + std::string(5 << 20, 'x'));
}

TYPED_TEST(SubDialect, AnswersALongRunOfOneCharacter) {
    const std::string sample = TypeParam::kSample;
    const std::string head = sample.substr(0, sample.find("llo"));
    for (const char c : {'x', ' ', '\n', '\r', '0', '{', '}', '<', '[', '\0'}) {
        const std::string run(scaled(1 << 18), c);
        answer<typename TestFixture::Parser>(run);
        answer<typename TestFixture::Parser>(head + run);
        answer<typename TestFixture::Parser>(sample + run);
    }
}

TYPED_TEST(SubDialect, AnswersManyShortLines) {
    for (const char* const line : {"{\n", "{1\r\n", "{1}\n", "{1}{\n", "<\n", "[\n", "1\n", "12:\r\n", "{1}{2\r\n"}) {
        std::string content = TypeParam::kSample;
        while (content.size() < scaled(1 << 20)) content += line;
        answer<typename TestFixture::Parser>(content);
    }
}

TYPED_TEST(SubDialect, AnswersOddLengthsOf16BitText) {
    const std::string sample = TypeParam::kSample;
    for (const std::string& content : {utf16le(sample), utf16be(sample), "\xFF\xFE"s, "\xFE\xFF"s, "\xFF"s, "\xFE"s}) {
        for (const char last : {'0', '{', '}', '[', '\n', '\0', '\xFF'}) {
            Parsed<typename TestFixture::Parser> parsed(content + last);
            readEverything(parsed.parser);
        }
    }
}

// ------------------------------------------------------------------------------------- the extraction of three

template <class Parser>
class LineText : public testing::Test {};

using LineParsers =
    testing::Types<SubtitleParserSubViewer10, SubtitleParserSubMicroDVD, SubtitleParserSubDvbSubtitleSystem>;

struct ParserNames {
    template <class Parser>
    static std::string GetName(int index) {
        return std::vector<std::string>{"SubViewer10", "MicroDvd", "DvbSubtitleSystem"}[static_cast<size_t>(index)];
    }
};

TYPED_TEST_SUITE(LineText, LineParsers, ParserNames);

const std::vector<TextRow> kLines8 = {
    {"Hello\r\n[00:00:04]\r\n\r\n", "Hello"},
    {"Hello\n\n[00:00:04]\n", "Hello"},
    {"Hello\n[00:00:04]\n\n", "Hello\\n[00:00:04]"},  // one LF ends nothing
    {"Hello\n", "Hello\\n"},
    {"Hello\r", "Hello\\r"},
    {"Hello\r\rmore\n\rmore\r\n", "Hello\\r\\rmore\\n\\rmore"},
    {"Hello\0more"s, "Hello"},
    {"", ""},
    {"\r\nHello", ""},
    {"one|two\r\n", "one|two"},
    {"\xC3\xA9\x81\r\n", "\\xC3\\xA9\\x81"},
    // brace groups
    {"{y:i}Hi\r\n", "Hi"},
    {"H{y:i}i\r\n", "Hi"},
    {"{1}{}{/}Hi\r\n", "Hi"},  // no letter is needed
    {"Hi{y:i}", "Hi"},
    {"Hi{y:i}\r\nmore\r\n", "Hi\\0"},  // closes its line
    {"Hi{y:i}\nmore\r\n", "Hi\\0"},
    {"Hi{y:i}\rmore\r\n", "Hi\\0"},
    {"{a}{b}\r\nmore\r\n", "\\0"},
    {"Hi{across\r\nlines}more\r\n", "Himore"},
    {"Hi{never closed\r\nmore\r\n", "Hi"},
    {"Hi}there\r\n", "Hi}there"},
    {"{a}<b>Hi\r\n", "Hi"},
    {"{a}<b>{c}<d>Hi\r\n", "Hi"},
    {"{a}<b>\r\nmore\r\n", ""},  // what stands behind is examined
    {"{a}<across\r\nlines>Hi\r\n", "Hi"},
    {"Hi{a}<never closed\r\nmore", "Hi"},
    {"Hi{a} <b>there\r\n", "Hi there"},
    // tags
    {"<i>Hi</i> there\r\n", "Hi there"},
    {"<3>Hi< >there\r\n", "Hithere"},  // no letter is needed
    {"<>Hi\r\n", "Hi"},
    {"Hi <i>there</i>\r\n[00:00:04]\r\n", "Hi there\\r\\n[00:00:04]"},  // the CR is not examined
    {"Hi <i>there</i>\n\n\nmore\r\n", "Hi there\\n"},
    {"<a><b>Hi\r\n", "<b>Hi"},  // nor is the second '<'
    {"<a>{b}Hi\r\n", "{b}Hi"},
    {"Hi<i>", "Hi\\0"},  // nor a 0, which counts
    {"Hi<i>\0more\r\n"s, "Hi\\0more"},
    {"a < b\r\n", "a < b"},
    {"a < b\r\n>c", "a < b"},  // a line break gives the tag up
    {"a < b\n\r>c", "a < b\\n\\r>c"},
    {"a < b\n>c\r\n", "a c"},  // one LF does not
    {"a <\0>c\r\n"s, "a c"},
    {"<<<<Hi\r\n", "<<<<Hi"},
    {"<<<<Hi>there\r\n", "there"},
    {"Hi<i>\r\n\r\nmore", "!open Hi"},  // the one way out without a terminating 0
    {"Hi<i>\r\n\n\nmore", "Hi\\r"},
    {"Hi<i>\r\n\rmore", "Hi\\r\\n\\rmore"},
    // sizes
    {"Hello", "Hello", 7},
    {"Hello", "Hell", 6},
    {"Hello", "H", 3},
    {"Hello", "", 2},
    {"Hello", "", 1},
    {"Hi{y:i}\r\n", "Hi", 4},
    {"Hi{y:i}\r\n", "Hi\\0", 5},
    {"Hi<i>there", "Hit", 5},
    {"{y:i}Hi", "H", 3},
};

TYPED_TEST(LineText, IsOneLineWithoutMarkup) {
    expectTexts<TypeParam>(kLines8, kNative);
    expectTexts<TypeParam>(kLines8, kUtf8);
}

std::vector<TextRow> widened(const std::vector<TextRow>& rows, bool bigEndian) {
    std::vector<TextRow> wide;
    for (const TextRow& row : rows) {
        wide.push_back({bigEndian ? utf16be(row.text, false) : utf16le(row.text, false), row.expected, row.size});
    }
    return wide;
}

/// 16-bit text in either order.
const std::vector<TextRow> kLines16 = {
    {"Hello\r\nmore", "Hello"},
    {"Hello\nmore\r\n", "Hello\\nmore"},
    {"Hello\rmore\r\n", "Hello\\rmore"},
    {"{y:i}Hi|<i>there</i>\r\n", "{y:i}Hi|<i>there</i>"},  // markup stays
    {"Hello\0more"s, "Hello"},
    {"", ""},
    {"Hello", "Hello", 16},
    {"Hello", "Hell", 15},
    {"Hello", "Hell", 14},
    {"Hello", "H", 9},
    {"Hello", "H", 8},
    {"Hello", "", 7},
    {"Hello", "", 6},
    {"Hello", "", 5},
    {"Hello", "", 2},
    {"Hello", "!untouched", 1},
};

TYPED_TEST(LineText, KeepsMarkupIn16BitText) {
    std::vector<TextRow> rows = widened(kLines16, false);
    rows.push_back({utf16le("Hello\n\nmore", false), "Hello"});
    rows.push_back({"\x42\x30\x0D\x0A\x0D\0\x0A\0"s, "??"});  // U+3042, U+0A0D
    expectTexts<TypeParam>(rows, kUtf16Le);
}

TYPED_TEST(LineText, SwapsBigEndianText) {
    if (std::is_same_v<TypeParam, SubtitleParserSubDvbSubtitleSystem>) {  // knows none
        expectTexts<TypeParam>({{utf16be("Hello", false), "!untouched"}}, kUtf16Be);
        return;
    }
    std::vector<TextRow> rows = widened(kLines16, true);
    rows.push_back({utf16be("Hello\n\nmore", false), "Hello\\n\\nmore"});
    rows.push_back({"\x30\x42\x0A\x0D\0\x0D\0\x0A"s, "??"});
    expectTexts<TypeParam>(rows, kUtf16Be);
}

TYPED_TEST(LineText, KnowsNoOtherEncoding) {
    for (const auto codeType : {kUnknown, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_ARGB8888,
                                E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK}) {
        expectTexts<TypeParam>({{"Hello\r\n", "!untouched"}}, codeType);
    }
}

TYPED_TEST(LineText, WantsABufferAnIndexAndItsMemory) {
    TwoEntries<TypeParam> entries("Hello\r\n", kNative);
    TypeParam& parser = entries.parser;
    EXPECT_EQ("Hello", shownText(parser, 0));
    EXPECT_EQ("[next]", shownText(parser, 1));
    EXPECT_EQ("!untouched", shownText(parser, 2));
    EXPECT_EQ("!untouched", shownText(parser, 0xFFFFFFFF));
    EXPECT_EQ(0u, parser.GetData(0, nullptr, 8, 0));
    U8 text[1] = {7};
    EXPECT_EQ(0u, parser.GetData(0, text, 0, 0));
    EXPECT_EQ(7, text[0]);

    U8* const work = parser.m_pu8SubtitleBuffer;
    parser.m_pu8SubtitleBuffer = nullptr;
    EXPECT_EQ("!untouched", shownText(parser, 0));
    parser.m_pu8SubtitleBuffer = work;
    ST_MEDIA_SUBTITLE_PARSER_TAG* const tags = parser.m_pTagBuffer;
    parser.m_pTagBuffer = nullptr;
    EXPECT_EQ("!untouched", shownText(parser, 0));
    parser.m_pTagBuffer = tags;
    EXPECT_EQ("Hello", shownText(parser, 0));
}

TYPED_TEST(LineText, FillsTheWorkBufferAnew) {
    TwoEntries<TypeParam> entries("Hello\r\n", kNative);
    TypeParam& parser = entries.parser;
    memset(parser.m_pu8SubtitleBuffer, 'x', 8192);
    parser.m_s64SubtitleBufferPosition = 5;
    parser.m_u32SubtitleBufferDataSize = 5;
    EXPECT_EQ("Hello", shownText(parser, 0));
    EXPECT_EQ(0, memcmp("Hello\r\n\0", parser.m_pu8SubtitleBuffer, 8));
    EXPECT_EQ(std::string(8192 - 7, '\0'),
              std::string(reinterpret_cast<char*>(parser.m_pu8SubtitleBuffer) + 7, 8192 - 7));
    EXPECT_EQ(0, parser.m_s64SubtitleBufferPosition);
    EXPECT_EQ(2 + 7 + 6u, parser.m_u32SubtitleBufferDataSize);
}

TYPED_TEST(LineText, CutsALongEntryToTheWorkBuffer) {
    for (const U32 length : {8191U, 8192U, 8193U, 100000U}) {
        TwoEntries<TypeParam> entries(std::string(length, 'x'), kNative);
        EXPECT_EQ(length < 8192 ? length : 8192u, shownText(entries.parser, 0, 200000).size());
    }
    TwoEntries<TypeParam> tags(std::string(100000, '<'), kNative);
    EXPECT_EQ(8192u, shownText(tags.parser, 0, 200000).size());
    TwoEntries<TypeParam> braces(std::string(100000, '{'), kNative);
    EXPECT_EQ("", shownText(braces.parser, 0, 200000));
}

TYPED_TEST(LineText, OfTheLastEntryGoesToTheEndOfTheData) {
    Loaded<TypeParam> loaded("##a <i>b</i> c");
    loaded.parser.AddTag(0, 1, 2, kWhole);
    EXPECT_EQ("a b c", shownText(loaded.parser, 0));
    loaded.parser.m_pTagBuffer[0].s64Pos = 14;  // the end of the data, and behind it
    EXPECT_EQ("", shownText(loaded.parser, 0));
    loaded.parser.m_pTagBuffer[0].s64Pos = 15;
    EXPECT_EQ("", shownText(loaded.parser, 0));
}

TYPED_TEST(LineText, EndsBeforeHalfAUnit) {
    Loaded<TypeParam> little("##" + utf16le("Hi", false) + "!", kUtf16Le);
    little.parser.AddTag(0, 1, 2, kWhole);
    EXPECT_EQ("Hi", shownText(little.parser, 0));
    Loaded<TypeParam> big("##" + utf16be("Hi", false) + "!", kUtf16Be);
    big.parser.AddTag(0, 1, 2, kWhole);
    const bool known = !std::is_same_v<TypeParam, SubtitleParserSubDvbSubtitleSystem>;
    EXPECT_EQ(known ? "Hi" : "!untouched", shownText(big.parser, 0));
}

TYPED_TEST(LineText, OfPositionsThatGoBackRunsOn) {
    Loaded<TypeParam> loaded("##one <i>two</i> three");
    loaded.parser.AddTag(0, 1, 6, kWhole);
    loaded.parser.AddTag(0, 1, 2, kWhole);
    EXPECT_EQ("two three", shownText(loaded.parser, 0));
}

}  // namespace
