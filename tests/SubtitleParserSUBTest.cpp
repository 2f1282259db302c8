// The dispatcher of .sub files: trial order, both sources, whole runs in the log, forwarding, what it leaves open.
#include "subtitle/SubtitleParserSUB.h"

#include <fcntl.h>
#include <stddef.h>
#include <unistd.h>

#include <algorithm>

#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/SubtitleParserSubMicroDVD.h"
#include "tests/support/Cuts.h"
#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"
#include "tests/support/Rows.h"

namespace {

using namespace test;

U8* pathOf(const char* path) { return pathFor<SubtitleParserSUB>(path); }

constexpr char kViewer20[] = "00:00:01.00,00:00:04.50\r\nHello\r\n\r\n";
constexpr char kViewer10[] = "[00:00:01]\r\nHello\r\n[00:00:04]\r\n\r\n";
constexpr char kMicroDvd[] = "{100}{150}Hello\r\n\xFF\r\n";   // 0xFF: not UTF-8
constexpr char kDvb[] = "0:00:01:00 0:00:04:00   Hello\r\n";  // two-digit hours would be SubViewer 2.0
constexpr char kNothing[] = "Nothing of interest\r\n";
constexpr const char* kSamples[] = {kViewer20, kViewer10, kMicroDvd, kDvb, kNothing};
constexpr EN_MEDIA_SUBTITLE_PARSER_TYPE kTypes[] = {
    E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_20, E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_10,
    E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_MICRO_DVD, E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_DVB_SUBTITLE_SYSTEM,
    E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID,
};

/// The dialect and code type of the delegate, and its entries; "refused" without one.
std::string outcomeOf(SubtitleParserSUB& parser) {
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
    info.eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID;
    if (parser.GetTrackInfo(0, &info) != TRUE) return "refused";
    const char* const names[] = {"SubViewer 1.0", "SubViewer 2.0", "MicroDVD", "DVB"};
    const U32 which = info.eSubtitleType - E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_10;
    return (which < 4 ? names[which] : "?") + " "s + std::to_string(info.eCodeType) + ": " +
           entriesOf(*parser.m_pParser);
}

// -------------------------------------------------------------------------------------------------- trial order

// kept(sub-order)
TEST(Sub, OpensTheFirstDialectThatAccepts) {
    const struct {
        std::string content;
        const char* outcome;
        U32 rate = 0;
    } rows[] = {
        {kViewer20, "SubViewer 2.0 4: 1000-4050 @25 Hello"},
        {kViewer10, "SubViewer 1.0 4: 1000-4000 @12 Hello"},
        {kMicroDvd, "MicroDVD 4: 4000-6000 @10 Hello", 25},
        {kDvb, "DVB 4: 1000-4000 @24 Hello"},
        {kNothing, "refused"},
        {"", "refused"},
        // order decides, never how well a dialect fits
        {"title\r\n"s + kViewer20 + kViewer10 + kMicroDvd + kDvb, "SubViewer 2.0 4: 1000-4050 @32 Hello"},
        {"title\r\n"s + kViewer10 + kMicroDvd + kViewer20, "SubViewer 1.0 4: 1000-4000 @19 Hello"},
        {kMicroDvd + "\r\n"s + kViewer10, "SubViewer 1.0 4: 1000-4000 @34 Hello"},
        {kMicroDvd + "\r\n"s + kViewer20, "MicroDVD 4: 4000-6000 @10 Hello", 25},
        {kUtf8Mark + "\r\n"s + kViewer20, "SubViewer 2.0 3: 1000-4050 @30 Hello"},
        {utf16le(kViewer20), "SubViewer 2.0 1: 1000-4050 @48 \nHello"},
        {utf16be(kViewer20), "SubViewer 2.0 1: 1000-4050 @48 \nHello"},
        {utf16le("x\r\n"s + kViewer10), "refused"},
        {utf16be("x\r\n"s + kViewer10), "SubViewer 1.0 2: 1000-4000 @32 Hello"},
        {utf16le("x\r\n{100}{150}Hello\r\n"), "MicroDVD 1: 4000-6000 @28 Hello", 25},
        {utf16be("x\r\n{100}{150}Hello\r\n"), "MicroDVD 2: 4000-6000 @28 Hello", 25},
        {utf16le(kDvb), "DVB 1: 1000-4000 @50 Hello"},
        {utf16be(kDvb), "refused"},
        // what a file's author may not expect
        // kept(dvb-as-sv2-colon)
        {"00:00:01:06 00:00:04:05 Hello\r\n00:00:05:00 00:00:06:00 World\r\n",
         "SubViewer 2.0 4: 1006-4005 @31 00:00:05:00 00:00:06:00 World"},
        // kept(dvb-as-sv2-numbered)
        {"12 00:00:01,500 00:00:04,000 Hello\r\n", "SubViewer 2.0 4: 43200001-1800000004 @36 "},
        {"{100}{150}A\r\n{200}{250}B\r\n", "MicroDVD 3: 0-0 @23 B", 25},
        {"[00:00:01]Hello\r\n[00:00:04]\r\n\r\n[00:00:05]World\r\n", "SubViewer 1.0 4: 1000-5000 @17 [00:00:04]"},
        {"[1072][1092]Hello\r\n", "refused"},
    };
    for (const auto& row : rows) {
        for (const bool byPath : {true, false}) {
            const TempFile file(row.content);
            int left = -1;
            {
                const std::unique_ptr<SubtitleParserSUB> parser(byPath ? new SubtitleParserSUB(pathOf(file.path()))
                                                                       : new SubtitleParserSUB(file.fd(), 5, 6));
                left = parser->u32FileFD;
                parser->SetFrameRate(row.rate);
                EXPECT_EQ(row.outcome == "refused"s ? FALSE : TRUE, parser->BeginParse());
                EXPECT_EQ(row.outcome, outcomeOf(*parser)) << show(row.content);
                EXPECT_EQ(row.outcome == "refused"s, parser->m_pParser == nullptr);
                EXPECT_EQ(parser->m_pParser != nullptr ? parser->m_pParser->GetTagNum() : 0, parser->GetTagNum());
                EXPECT_EQ(1u, threadCount());
            }
            if (!byPath) close(left);
        }
    }
}

TEST(Sub, HandsItsFrameRateToMicroDvdAlone) {
    const TempFile file(kMicroDvd);
    SubtitleParserSUB parser(pathOf(file.path()));
    parser.SetFrameRate(23976);
    ASSERT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ("MicroDVD 4: 4166-6249 @10 Hello", outcomeOf(parser));
    EXPECT_EQ(24u, parser.m_pParser->m_u32FrameRrate);
    EXPECT_EQ(23976u, parser.m_u32FrameRrate);

    const TempFile other(kViewer20);
    SubtitleParserSUB viewer(pathOf(other.path()));
    viewer.SetFrameRate(25);
    ASSERT_EQ(TRUE, viewer.BeginParse());
    EXPECT_EQ(0u, viewer.m_pParser->m_u32FrameRrate);
}

// --------------------------------------------------------------------------------------------------------- logs

LogLine sub(const std::string& text) {
    return {3, "SubtitleParserSUB", "SubtitleParserSUB::BeginParse - " + text + "\n"};
}

/// All dialects of the list; the first four are spelled out here.
constexpr size_t kDialects = 0
#define VX_SUB_DIALECT(...) +1
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
    ;

/// The log of a refused file without the trials of the dialects behind those four, three lines each.
Lines ofTheFirstFour(Lines lines) {
    EXPECT_LE((kDialects - 4) * 3, lines.size());
    lines.resize(lines.size() - std::min(lines.size(), (kDialects - 4) * 3));
    return lines;
}

enum class Call { kPath, kDescriptor, kExtra };

/// What a whole run logs: the entry line, then each trial up to the `accepted`-th (4: refused).
Lines expectedRun(Call run, size_t accepted, const TempFile& file, const std::string& content) {
    const auto from = [](const char* tag, const std::string& text) { return LogLine{3, tag, text}; };
    const auto loading = [&](const char* tag, const char* words) {
        return from(tag, "Zorb_MediaSubtitleParser"s + words +
                             "::ParserThread - Enter, data size = " + std::to_string(content.size()) + ", rawbuf: *\n");
    };
    const LogLine open = run == Call::kPath ? opening(file) : openingDescriptor();
    const char* const rule = "\n\n*************************************\n\n";
    constexpr char k20[] = "SubtitleParserSubViewer20", k10[] = "SubtitleParserSubViewer10",
                   kDvd[] = "SubtitleParserSubMicroDVD", kSystem[] = "SubtitleParserSubDvbSubtitleSystem";

    Lines lines = {sub("Enter"), sub(run == Call::kDescriptor ? "Try Subviewer 2.0 line=209" : "Try Subviewer 2.0"),
                   open, loading(k20, "SRT")};
    const auto add = [&](const Lines& more) { lines.insert(lines.end(), more.begin(), more.end()); };
    if (accepted == 0) {
        add({from(k20, "SubtitleParserSubViewer20::ParserThread -> Finished : Tag num = 1, 1\n"),
             from(k20, "Zorb_MediaSubtitleParserSubViewer20::bPareFinish -> 00000001\n")});
        return lines;
    }
    add({sub("Try Subviewer 1.0"), open, loading(k10, "SRT")});
    if (accepted == 1) {
        add({from(k10, "SubtitleParserSubViewer10::ParserThread -> Finished : Tag num = 1, 1\n"),
             from(k10, "Zorb_MediaSubtitleParserSRT::BeginParse2222222 -> 00000000\n")});
        return lines;
    }
    add({sub("Try MicroDVD"), open, loading(kDvd, "SubMicroDVD"),
         from(kDvd, accepted == 2 ? "m_eCodeType = 4 \n" : "m_eCodeType = 3 \n")});
    if (accepted == 2) {
        add({from(kDvd, "ParserThread first line::u32Frames1= 100, u32Frames2 = 150\n"),
             from(kDvd,
                  "ParserThread::m_u64NanoSecPerFrame = 40000000, u32Frames1= 100,u32Frames2= 150,u32Time1= 4000, "
                  "u32Time2 = 6000\n"),
             from(kDvd, "SubtitleParserSubMicroDVD::ParserThread -> Finished : Tag num = 1, 1\n"),
             from(kDvd, "SubtitleParserSubMicroDVD::BeginParse2222222 -> 00000000\n")});
        return lines;
    }
    add({sub("Try Dvb Subtitle system"), open, loading(kSystem, "SRT")});
    if (accepted == 3) {
        add({from(kSystem, rule), from(kSystem, "Time = 1000, 4000, 00000018\n"), from(kSystem, rule),
             from(kSystem, "SubtitleParserSubDvbSubtitleSystem::ParserThread -> Finished : Tag num = 1, 1\n"),
             from(kSystem, "Zorb_MediaSubtitleParserSRT::BeginParse2222222 -> 00000000\n")});
    }
    return lines;
}

TEST(Sub, LogsWholeRuns) {
    for (size_t accepted = 0; accepted < 5; ++accepted) {
        const std::string content = kSamples[accepted];
        for (const Call run : {Call::kPath, Call::kDescriptor, Call::kExtra}) {
            const TempFile file(content);
            int left = 0;
            {
                const std::unique_ptr<SubtitleParserSUB> parser(run == Call::kPath
                                                                    ? new SubtitleParserSUB(pathOf(file.path()))
                                                                    : new SubtitleParserSUB(file.fd(), 0, 0));
                left = parser->u32FileFD;
                parser->SetFrameRate(25);
                const LogCapture log;
                EXPECT_EQ(accepted < 4 ? TRUE : FALSE,
                          run == Call::kExtra ? parser->BeginParse(77) : parser->BeginParse());
                const Lines lines = levelled(log.lines());
                EXPECT_EQ(expectedRun(run, accepted, file, content), accepted < 4 ? lines : ofTheFirstFour(lines));
            }
            if (run != Call::kPath) close(left);
        }
    }
}

TEST(Sub, LogsNothingElse) {
    const TempFile file(kViewer20);
    const LogCapture log;
    {
        SubtitleParserSUB parser(pathOf(file.path()));
        parser.Deinit();
        parser.StopParse();
        parser.GetTag(0, 0);
        textOf(parser, 0);
    }
    EXPECT_EQ(Lines{}, log.lines());
}

TEST(Sub, ReportsEachTrialThatCannotOpen) {
    SubtitleParserSUB parser(pathOf("/nowhere"));
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    Lines expected = {sub("Enter")};
    for (const char* const dialect : {"Subviewer 2.0", "Subviewer 1.0", "MicroDVD", "Dvb Subtitle system"}) {
        expected.push_back(sub("Try "s + dialect));
        expected.push_back({3, "SubtitleFileProcess", "Open filename = /nowhere\n"});
        expected.push_back({3, "SubtitleFileProcess", "fopen fialded fun=Open line=110\n"});
    }
    EXPECT_EQ(expected, ofTheFirstFour(log.lines()));
}

// -------------------------------------------------------------------------------------------------- a second call

/// Counts the dispatcher's own `Deinit`.
class CountingSub : public SubtitleParserSUB {
public:
    using SubtitleParserSUB::SubtitleParserSUB;
    BOOL Deinit() override {
        ++deinits;
        return SubtitleParserSUB::Deinit();
    }
    int deinits = 0;
};

TEST(Sub, KeepsItsDelegateAtASecondCall) {
    const TempFile file(kViewer20);
    CountingSub parser(pathOf(file.path()));
    ASSERT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(0, parser.deinits);
    SubtitleParser* const delegate = parser.m_pParser;
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(FALSE, parser.BeginParse(0));
    EXPECT_EQ(2, parser.deinits);
    EXPECT_EQ(delegate, parser.m_pParser);
    EXPECT_EQ("SubViewer 2.0 4: 1000-4050 @25 Hello", outcomeOf(parser));
    EXPECT_EQ((Lines{sub("Enter"), sub("Enter")}), log.lines());
}

TEST(Sub, TriesAgainAfterARefusal) {
    const TempFile file(kNothing);
    CountingSub parser(pathOf(file.path()));
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(1, parser.deinits);
    EXPECT_EQ(nullptr, parser.m_pParser);
    const int out = open(file.path(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    ASSERT_GE(out, 0);
    ASSERT_EQ(static_cast<ssize_t>(sizeof kDvb - 1), write(out, kDvb, sizeof kDvb - 1));
    close(out);
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ("DVB 4: 1000-4000 @24 Hello", outcomeOf(parser));
}

// ----------------------------------------------------------------------------------------------------- forwarding

/// Notes what it is asked.
class Delegate : public SubtitleParser {
public:
    explicit Delegate(std::vector<std::string>& calls) : mCalls(calls) {}
    ~Delegate() override { mCalls.push_back("destroyed"); }

    BOOL Deinit() override { return note("Deinit", TRUE); }
    BOOL BeginParse() override { return note("BeginParse", TRUE); }
    BOOL StopParse() override { return note("StopParse", 11); }
    U32 GetTag(const U32 track, const U32 time) override { return note("GetTag " + numbers({track, time}), 12); }
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 index) override {
        *buf = 9;
        return note("GetData " + numbers({track, size, index}), 13);
    }
    U32 GetData(const U32, U8*, const U32, const U32, stSubDecoderInfo*) override { return note("GetData5", 14); }
    BOOL GetTagInfo(U32 track, U32 index, ST_MEDIA_SUBTITLE_PARSER_TAG* tag) override {
        tag->u32TimeStart = 9;
        return note("GetTagInfo " + numbers({track, index}), 15);
    }
    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override {
        info->u32Width = 9;
        return note("GetTrackInfo " + numbers({track}), 16);
    }
    U32 GetTagNum() override { return note("GetTagNum", 17); }
    void SetFrameRate(U32) override { note("SetFrameRate", 0); }
    BOOL Init(U64) override { return note("Init", TRUE); }

private:
    static std::string numbers(std::initializer_list<U32> values) {
        std::string text;
        for (const U32 value : values) text += (text.empty() ? "" : ",") + std::to_string(value);
        return text;
    }
    U8 note(const std::string& call, U8 result) {
        mCalls.push_back(call);
        return result;
    }

    std::vector<std::string>& mCalls;
};

// kept(sub-five-arguments)
TEST(Sub, ForwardsItsQueries) {
    std::vector<std::string> calls;
    SubtitleParserSUB parser(pathOf("/nowhere"));
    parser.m_pParser = new Delegate(calls);
    parser.m_u32TagNum = 5;
    U8 text[2] = {};
    ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
    EXPECT_EQ(11, parser.StopParse());
    EXPECT_EQ(12u, parser.GetTag(1, 2));
    EXPECT_EQ(13u, parser.GetData(3, text, 4, 5));
    EXPECT_EQ(9, text[0]);
    EXPECT_EQ(15, parser.GetTagInfo(6, 7, &tag));
    EXPECT_EQ(9u, tag.u32TimeStart);
    EXPECT_EQ(16, parser.GetTrackInfo(8, &info));
    EXPECT_EQ(9u, info.u32Width);
    EXPECT_EQ(
        (std::vector<std::string>{"StopParse", "GetTag 1,2", "GetData 3,4,5", "GetTagInfo 6,7", "GetTrackInfo 8"}),
        calls);

    calls.clear();
    EXPECT_EQ(0u, parser.GetData(0, text, 2, 0, nullptr)) << "not forwarded";
    EXPECT_EQ(5u, parser.GetTagNum()) << "its own";
    parser.SetFrameRate(25);
    EXPECT_EQ(25u, parser.m_u32FrameRrate);
    EXPECT_EQ(TRUE, parser.Init(1));
    EXPECT_EQ(TRUE, parser.Deinit());
    EXPECT_NE(nullptr, parser.m_pu8RawBuffer) << "Deinit does nothing";
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(FALSE, parser.BeginParse(1));
    EXPECT_EQ(std::vector<std::string>{}, calls);
}

TEST(Sub, ReleasesItsDelegateWhenItIsDestroyed) {
    std::vector<std::string> calls;
    {
        SubtitleParserSUB parser(pathOf("/nowhere"));
        parser.m_pParser = new Delegate(calls);
        parser.Deinit();
        EXPECT_EQ(std::vector<std::string>{}, calls);
    }
    EXPECT_EQ((std::vector<std::string>{"StopParse", "Deinit", "destroyed"}), calls);
}

TEST(Sub, AnswersWithoutADelegate) {
    TempFile file(kNothing);
    SubtitleParserSUB parser(pathOf(file.path()));
    for (const char* const when : {"before", "after a refusal"}) {
        U8 text[2] = {7, 7};
        ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
        const LogCapture log;
        EXPECT_EQ(FALSE, parser.StopParse()) << when;
        EXPECT_EQ(0xFFFFFFFFu, parser.GetTag(0, 0)) << when;
        EXPECT_EQ(0u, parser.GetData(0, text, 2, 0)) << when;
        EXPECT_EQ(7, text[0]) << when;
        EXPECT_EQ(0u, parser.GetData(0, text, 2, 0, nullptr)) << when;
        EXPECT_EQ(FALSE, parser.GetTagInfo(0, 0, &tag)) << when;
        EXPECT_EQ(FALSE, parser.GetTrackInfo(0, &info)) << when;
        EXPECT_EQ(0u, parser.GetTagNum()) << when;
        EXPECT_EQ(TRUE, parser.Deinit()) << when;
        EXPECT_EQ(Lines{}, log.lines()) << when;
        EXPECT_EQ(FALSE, parser.BeginParse());
    }
}

// kept(sub-deinit)
TEST(Sub, AnswersForItsDelegateAfterDeinit) {
    const TempFile file(kViewer20);
    SubtitleParserSUB parser(pathOf(file.path()));
    ASSERT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(TRUE, parser.StopParse());
    EXPECT_EQ(TRUE, parser.Deinit());
    EXPECT_EQ("Hello", textOf(parser, 0));
    EXPECT_EQ(0u, parser.GetTag(0, 2000));
    U8 text[8];
    EXPECT_EQ(0u, parser.GetData(0, text, sizeof text, 0, nullptr));
}

// ---------------------------------------------------------------------------------------------------- its sources

/// The file's path, made longer by detours.
std::string longPath(const TempFile& file, size_t length) {
    std::string path = file.path();
    const size_t slash = path.rfind('/');
    path.insert(slash, std::string((length - path.size()) % 2, '/'));
    while (path.size() < length) path.insert(slash, "/.");
    return path;
}

TEST(Sub, Keeps512BytesOfThePath) {
    const TempFile file(kViewer20);
    for (const size_t length : {40U, 510U, 511U, 512U, 513U, 600U}) {
        std::string path = longPath(file, length);
        ASSERT_EQ(length, path.size());
        SubtitleParserSUB parser(pathOf(path.c_str()));
        path.resize(512, '\0');
        EXPECT_EQ(path, std::string(reinterpret_cast<char*>(parser.m_pSubtitleName), 512));
        EXPECT_EQ(0, parser.u32FileFD);
        EXPECT_EQ(length <= 512 ? TRUE : FALSE, parser.BeginParse()) << length;
    }
    SubtitleParserSUB none(static_cast<U8*>(nullptr));
    EXPECT_EQ(std::string(512, '\0'), std::string(reinterpret_cast<char*>(none.m_pSubtitleName), 512));
    EXPECT_EQ(0, none.u32FileFD);
    EXPECT_EQ(nullptr, none.m_pParser);
    EXPECT_EQ(FALSE, none.BeginParse());
}

// kept(sub-descriptor-open)
TEST(Sub, KeepsADuplicateOfTheDescriptor) {
    const TempFile file(kDvb);  // the fourth trial reads from the start too
    const unsigned before = openDescriptors();
    int left = -1;
    {
        SubtitleParserSUB parser(file.fd(), 3, 4);
        left = parser.u32FileFD;
        EXPECT_NE(file.fd(), left);
        EXPECT_NE(-1, fcntl(left, F_GETFD));
        EXPECT_EQ(std::string(512, '\0'), std::string(reinterpret_cast<char*>(parser.m_pSubtitleName), 512));
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ("DVB 4: 1000-4000 @24 Hello", outcomeOf(parser));
    }
    EXPECT_EQ(before + 1, openDescriptors()) << "exactly its duplicate stays open";
    EXPECT_EQ(0, close(left));
    EXPECT_NE(-1, fcntl(file.fd(), F_GETFD));
}

TEST(Sub, ItsDescriptorsAreClosedOnExecWhenTheCallersIs) {
    const TempFile file(kDvb);
    const unsigned before = openDescriptors();
    for (const int flags : {FD_CLOEXEC, 0}) {
        ASSERT_EQ(0, fcntl(file.fd(), F_SETFD, flags));
        SubtitleParserSUB parser(file.fd(), 0, 0);
        EXPECT_EQ(flags, fcntl(parser.u32FileFD, F_GETFD));
        EXPECT_EQ(TRUE, parser.BeginParse());
        ASSERT_NE(nullptr, parser.m_pParser);
        EXPECT_EQ(flags, fcntl(parser.m_pParser->pFileProcess->mFd, F_GETFD));
        EXPECT_EQ(flags, fcntl(fileno(parser.m_pParser->pFileProcess->fpFile), F_GETFD));
        close(parser.u32FileFD);
    }
    SubtitleParserSUB byPath(pathOf(file.path()));
    EXPECT_EQ(TRUE, byPath.BeginParse());
    EXPECT_EQ(FD_CLOEXEC, fcntl(fileno(byPath.m_pParser->pFileProcess->fpFile), F_GETFD));
    EXPECT_EQ(before + 1, openDescriptors());
}

TEST(Sub, RefusesADescriptorThatCannotBeDuplicated) {
    const TempFile file(kViewer20);
    for (const bool failing : {true, false}) {
        const CallFails fails("dup", failing ? 1 : 0);
        SubtitleParserSUB parser(failing ? file.fd() : -1, 0, 0);
        EXPECT_EQ(-1, parser.u32FileFD);
        const LogCapture log;
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_EQ(sub("Try Subviewer 2.0 line=209"), log.lines()[1]) << "it is the descriptor's branch";
        EXPECT_EQ((LogLine{3, "SubtitleFileProcess", "Open filename = \n"}), log.lines()[2]);
        EXPECT_EQ(1 + kDialects * 3, log.lines().size());
    }
}

// kept(file-descriptor-0)
TEST(Sub, TakesDescriptor0ForNone) {
    const TempFile file(kViewer20);
    const TempFile other(kViewer10);
    SubtitleParserSUB parser(pathOf(file.path()));
    parser.u32FileFD = 0;
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ("SubViewer 2.0 4: 1000-4050 @25 Hello", outcomeOf(parser));
    SubtitleParserSUB both(pathOf(file.path()));
    both.u32FileFD = other.fd();
    EXPECT_EQ(TRUE, both.BeginParse());
    EXPECT_EQ("SubViewer 1.0 4: 1000-4000 @12 Hello", outcomeOf(both)) << "any other descriptor goes first";
}

// kept(sub-begin-argument)
TEST(Sub, ReadsTheDescriptorWhateverItIsInItsOwnBeginParse) {
    const TempFile file(kViewer20);
    const TempFile other(kViewer10);
    SubtitleParserSUB parser(pathOf(file.path()));
    parser.u32FileFD = other.fd();
    EXPECT_EQ(TRUE, parser.BeginParse(-5));
    EXPECT_EQ("SubViewer 1.0 4: 1000-4000 @12 Hello", outcomeOf(parser));

    const int input = dup(0);
    ASSERT_EQ(0, dup2(other.fd(), 0));
    SubtitleParserSUB fromZero(pathOf(file.path()));
    EXPECT_EQ(TRUE, fromZero.BeginParse(1));
    EXPECT_EQ("SubViewer 1.0 4: 1000-4000 @12 Hello", outcomeOf(fromZero));
    if (input >= 0) {
        dup2(input, 0);
        close(input);
    } else {
        close(0);
    }
}

// ------------------------------------------------------------------------------------------- threads and resources

TEST(Sub, TriesNoFurtherWhenATrialLacksMemoryForItsTable) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    std::string content;
    while (content.size() < 8300 * 26) content += "00:00:01.00,00:00:02.00\nA\n";
    content += "[00:00:01]\r\nHello\r\n[00:00:04]\r\n";  // the second trial would take it
    const TempFile file(content);
    CountingSub parser(pathOf(file.path()));
    VirtualClock clock;
    const ThreadsEndFirst order;
    const LogCapture log;
    {
        const AllocationFails fails(16384 * sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG));  // the first growth of the table
        EXPECT_EQ(FALSE, parser.BeginParse());
    }
    EXPECT_EQ(std::vector<unsigned>(1000, 100000u), clock.sleeps());
    EXPECT_EQ(1u, threadCount());
    EXPECT_EQ(nullptr, parser.m_pParser);
    EXPECT_EQ(1, parser.deinits);
    EXPECT_EQ("refused", outcomeOf(parser));
    const std::vector<std::string> texts = log.texts();
    EXPECT_EQ(1, std::count(texts.begin(), texts.end(),
                            "SubtitleParserSubViewer20::ParserThread -> Finished : Tag num = 0, 0\n"));
    EXPECT_EQ(1,
              std::count(texts.begin(), texts.end(), "Zorb_MediaSubtitleParserSubViewer20::bPareFinish -> 00000000\n"));
    EXPECT_EQ(0, std::count(texts.begin(), texts.end(), sub("Try Subviewer 1.0").text));
    EXPECT_EQ(TRUE, parser.BeginParse()) << "a later call may succeed";
}

TEST(Sub, TriesNoFurtherWhenATrialLacksMemoryForItsBuffers) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    constexpr size_t kTable = 8192 * sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG);
    const struct {
        const char* what;
        size_t from, to;  // bytes
    } kRows[] = {
        {"raw buffer", 5000 + sizeof kViewer10 - 1 + 64, 5000 + sizeof kViewer10 - 1 + 64},
        {"tag table", kTable, kTable},
        {"work buffer", 8192, 8192},
        {"file source", sizeof(SubtitleFileProcess), sizeof(SubtitleFileProcess)},
        {"the trial itself", sizeof(SubtitleParserSubMicroDVD), sizeof(SubtitleParserSubMicroDVD)},
    };
    const TempFile file(std::string(5000, ' ') + kViewer10);  // for the second trial
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.what);
        SubtitleParserSUB parser(pathOf(file.path()));
        const LogCapture log;
        {
            const AllocationFails fails(row.from, row.to);
            EXPECT_EQ(FALSE, parser.BeginParse());
        }
        EXPECT_EQ(nullptr, parser.m_pParser);
        const std::vector<std::string> texts = log.texts();
        EXPECT_EQ(1, std::count(texts.begin(), texts.end(), sub("Try Subviewer 2.0").text));
        EXPECT_EQ(0, std::count(texts.begin(), texts.end(), sub("Try Subviewer 1.0").text));
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ("SubViewer 1.0 4: 1000-4000 @5012 Hello", outcomeOf(parser));
    }
}

// Nor does an empty file, which has a length.
TEST(Sub, TriesNoFurtherWhenAnEmptyFileLacksMemory) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    const TempFile file("");
    SubtitleParserSUB parser(pathOf(file.path()));
    const LogCapture log;
    {
        const AllocationFails fails(8192 * sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG));  // the table
        EXPECT_EQ(FALSE, parser.BeginParse());
    }
    const std::vector<std::string> texts = log.texts();
    EXPECT_EQ(1, std::count(texts.begin(), texts.end(), sub("Try Subviewer 2.0").text));
    EXPECT_EQ(0, std::count(texts.begin(), texts.end(), sub("Try Subviewer 1.0").text));
}

TEST(Sub, NeedsAThreadForEachTrial) {
    const TempFile file("title\r\n"s + kViewer20 + kViewer10);
    SubtitleParserSUB parser(pathOf(file.path()));
    const ThreadCreateFails fails;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(nullptr, parser.m_pParser);
}

/// What every query answers without a delegate.
void expectNoDelegate(SubtitleParserSUB& parser) {
    U8 text[2] = {7, 7};
    ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
    EXPECT_EQ(FALSE, parser.StopParse());
    EXPECT_EQ(0xFFFFFFFFu, parser.GetTag(0, 0));
    EXPECT_EQ(0u, parser.GetData(0, text, 2, 0));
    EXPECT_EQ(7, text[0]);
    EXPECT_EQ(0u, parser.GetData(0, text, 2, 0, nullptr));
    EXPECT_EQ(FALSE, parser.GetTagInfo(0, 0, &tag));
    EXPECT_EQ(FALSE, parser.GetTrackInfo(0, &info));
    EXPECT_EQ(0u, parser.GetTagNum());
}

TEST(Sub, WaitsForNothingWhenATrialRunsOutOfTime) {
    const TempFile file("title\r\n"s + kViewer20 + kViewer10);
    const unsigned descriptors = openDescriptors();
    for (const bool again : {true, false}) {
        {
            CountingSub parser(pathOf(file.path()));
            {
                const VirtualClock clock;
                ThreadGate gate;  // the worker does not even begin
                const LogCapture log;
                EXPECT_EQ(FALSE, parser.BeginParse());
                EXPECT_EQ(std::vector<unsigned>(1000, 100000u), clock.sleeps());
                EXPECT_EQ("Zorb_MediaSubtitleParserSubViewer20::bPareFinish -> 00000000\n", log.texts().back())
                    << "no other dialect is tried";
                EXPECT_EQ(1, parser.deinits);
                EXPECT_EQ(2u, threadCount());
                ASSERT_NE(nullptr, parser.m_pParser) << "its worker may use it";
                expectNoDelegate(parser);
            }
            awaitFlag(*parser.m_pParser);
            expectNoDelegate(parser);  // BeginParse has said that there are no subtitles
            EXPECT_EQ(2u, threadCount());
            if (!again) continue;
            EXPECT_EQ(TRUE, parser.BeginParse()) << "begins anew, without the trial of before";
            EXPECT_EQ(1u, threadCount());
            EXPECT_EQ("SubViewer 2.0 4: 1000-4050 @32 Hello", outcomeOf(parser));
            EXPECT_EQ(1u, parser.GetTagNum());
        }
        EXPECT_EQ(1u, threadCount());
        EXPECT_EQ(descriptors, openDescriptors());
    }
}

TEST(Sub, LeavesNothingOpenOnPaths) {
    const TempFile files[] = {TempFile(kViewer20), TempFile(kViewer10), TempFile(kMicroDvd), TempFile(kDvb),
                              TempFile(kNothing)};
    const unsigned before = openDescriptors();
    for (unsigned round = 0; round < scaled(10000); ++round) {
        const size_t which = round % 5;
        SubtitleParserSUB parser(pathOf(files[which].path()));
        ASSERT_EQ(which < 4 ? TRUE : FALSE, parser.BeginParse());
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
        info.eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID;
        ASSERT_EQ(which < 4 ? TRUE : FALSE, parser.GetTrackInfo(0, &info));
        ASSERT_EQ(kTypes[which], info.eSubtitleType);
    }
    EXPECT_EQ(before, openDescriptors());
    EXPECT_EQ(1u, threadCount());
}

TEST(Sub, AnswersEveryBeginningOfEverySample) {
    for (const std::string sample : kSamples) {
        for (const std::string& content : {"title\r\n" + sample, kUtf8Mark + sample + sample, utf16le("x\r\n" + sample),
                                           utf16be("x\r\n" + sample)}) {
            forEachCut(content, [](const std::string& part) {
                Parsed<SubtitleParserSUB> parsed(part);
                EXPECT_EQ(parsed.result == TRUE, parsed.parser.m_pParser != nullptr);
                readEverything(parsed.parser);
            });
        }
    }
    EXPECT_EQ(1u, threadCount());
}

// ----------------------------------------------------------------------------------------------------------- layout

/// Where a virtual operation stands in the table.
template <class Member>
size_t slotOf(Member member) {
    size_t words[2];
    static_assert(sizeof member == sizeof words, "a pointer to member of another kind");
    memcpy(words, &member, sizeof words);
#ifdef __arm__
    EXPECT_EQ(1u, words[1] % 2) << "not virtual";
    return words[0] / sizeof(void*);
#else
    EXPECT_EQ(1u, words[0] % 2) << "not virtual";
    return (words[0] - 1) / sizeof(void*);
#endif
}

TEST(Sub, AddsOneOperationBehindTheBases) {
    const size_t last = slotOf(&SubtitleParser::SetIGraphicBufferProducer);
    EXPECT_EQ(30u, last);
    EXPECT_EQ(last + 1, slotOf(static_cast<BOOL (SubtitleParserSUB::*)(int)>(&SubtitleParserSUB::BeginParse)));
    EXPECT_EQ(6u, slotOf(static_cast<BOOL (SubtitleParserSUB::*)()>(&SubtitleParserSUB::BeginParse)));
}

TEST(Sub, AddsItsFieldsInOrder) {
    EXPECT_EQ(offsetof(SubtitleParserSUB, m_pParser) + sizeof(void*), offsetof(SubtitleParserSUB, m_pSubtitleName));
    EXPECT_EQ(offsetof(SubtitleParserSUB, m_pSubtitleName) + 512, offsetof(SubtitleParserSUB, u32FileFD));
    EXPECT_LE(offsetof(SubtitleParser, m_u8TimeStampTagSizeCase), offsetof(SubtitleParserSUB, m_pParser));
    EXPECT_LT(offsetof(SubtitleParserSUB, m_pParser),
              offsetof(SubtitleParser, m_u8TimeStampTagSizeCase) + 2 * sizeof(void*));
}

}  // namespace
