/// What SSA, SAMI and timed plain text are tested for alike. Each format says who it is in a structure:
///
///     struct Smi {
///         using Parser = SubtitleParserSMI;
///         using Path = U8;                        // the constructor takes a pointer to these
///         static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_SMI;
///         static constexpr char kTag[] = "…";     // of its log lines
///         static constexpr char kEnter[] = "…";   // the first line of BeginParse
///         static constexpr char kLoading[] = "…"; // the line before the file is read, see loadingMessage
///         static constexpr unsigned kPeriodMs = 100;    // how often BeginParse looks for the worker's end
///         static constexpr bool kRestarts = false;      // BeginParse succeeds more than once
///         static std::vector<std::string> leaving();    // what is logged where BeginParse gives up early
///         static std::vector<std::string> threadless(); // the same where no thread can be had
///         static const std::string& file();             // one entry,
///         static const Entry& entry();                  // which is this one
///         static Text read(Parser& parser, U32 index);  // an entry's text
///         static Entries inUtf8(Entries entries);       // what is left of them when the file is UTF-8
///     };
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/FormatChecks.h"
#include "tests/ParserTools.h"
#include "tests/support/Interpose.h"

namespace test {

constexpr auto kBig5 = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5;
constexpr auto kGbk = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK;

/// An entry as a player gets it; without an end it lasts until the next one.
struct Entry {
    Entry(U32 from, U32 to, Text shown) : start(from), end(to), text(std::move(shown)) {}
    Entry(U32 from, Text shown) : Entry(from, 0xFFFFFFFF, std::move(shown)) {}

    U32 start;
    U32 end;
    Text text;
};
inline bool operator==(const Entry& a, const Entry& b) {
    return std::tie(a.start, a.end, a.text) == std::tie(b.start, b.end, b.text);
}
inline std::ostream& operator<<(std::ostream& out, const Entry& entry) {
    return out << entry.start << "-" << entry.end << " " << entry.text;
}
using Entries = std::vector<Entry>;

template <class Format>
Entries entriesIn(typename Format::Parser& parser) {
    Entries entries;
    for (const Tag& tag : tagsOf(parser)) {
        entries.emplace_back(tag.start, tag.end, Format::read(parser, static_cast<U32>(entries.size())));
    }
    return entries;
}

/// A parser with entries put by hand at the positions given.
template <class Parser>
struct PutByHand : Parser {
    PutByHand(std::string_view data, const std::vector<S64>& positions,
              EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type = kNative)
        : Parser(-1, 0, 0) {
        load(*this, data);
        this->m_eCodeType = type;
        for (const S64 pos : positions) this->AddTag(0, 0, pos, kWhole);
    }
};

// ------------------------------------------------------------------------------------------------------ scan

/// A file, and the entries that it has in every encoding.
struct ScanRow {
    const char* name;
    std::string file;
    Entries expected;
    std::optional<Entries> utf16Le = std::nullopt;  // where 16-bit text differs
    std::optional<Entries> utf16Be = std::nullopt;  // where big-endian text differs from that
};

template <class Format>
void expectScan(const ScanRow& row) {
    const auto expect = [](const char* name, const std::string& file, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType,
                           const Entries& entries) {
        SCOPED_TRACE(name);
        Scanned<typename Format::Parser> parser(file);
        EXPECT_EQ(codeType, parser.m_eCodeType);
        EXPECT_EQ(entries, entriesIn<Format>(parser));
        EXPECT_EQ(TRUE, parser.bParseFinish);
    };
    SCOPED_TRACE(row.name);
    expect("native", row.file, kNative, row.expected);
    // The mark's rest spoils the first line alone.
    expect("UTF-8", "\xEF\xBB\xBF\r\n" + row.file, kUtf8, Format::inUtf8(row.expected));
    const Entries& wide = row.utf16Le ? *row.utf16Le : row.expected;
    expect("UTF-16LE", utf16le(row.file), kUtf16Le, wide);
    expect("UTF-16BE", utf16be(row.file), kUtf16Be, row.utf16Be ? *row.utf16Be : wide);
}

// ------------------------------------------------------------------------------------------------------ text

/// The text of the first entry of `file` as 8-bit text of the code types given, and as UTF-8.
template <class Parser>
void expectNarrowText(const std::string& file, const Text& expected,
                      const std::vector<EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE>& codeTypes = {kNative}) {
    Scanned<Parser> native(file), utf8("\xEF\xBB\xBF\n" + file);
    for (const auto codeType : codeTypes) {
        native.m_eCodeType = codeType;
        EXPECT_EQ(expected, textOf(native, 0)) << "code type " << codeType;
    }
    EXPECT_EQ(expected, textOf(utf8, 0)) << "UTF-8";
}

/// The text of the first entry of `file` as 16-bit text.
template <class Parser>
void expectWideText(const std::string& file, const Text& littleEndian, const Text& bigEndian) {
    Scanned<Parser> le(utf16le(file)), be(utf16be(file));
    EXPECT_EQ(littleEndian, textOf(le, 0)) << "UTF-16LE";
    EXPECT_EQ(bigEndian, textOf(be, 0)) << "UTF-16BE";
}

/// The text "Hello" of `file` in buffers that are too small for it: two bytes stay free, or three units.
template <class Parser>
void expectHelloToFit(const std::string& file) {
    const struct {
        U32 size;
        const char* expected8;
        const char* expected16;
    } kRows[] = {
        {2, "", ""},         {3, "H", ""},          {4, "He", ""},          {5, "Hel", ""},
        {6, "Hell", ""},     {7, "Hello", ""},      {8, "Hello", "H"},      {9, "Hello", "H"},
        {10, "Hello", "He"}, {15, "Hello", "Hell"}, {16, "Hello", "Hello"},
    };
    Scanned<Parser> native(file), le(utf16le(file)), be(utf16be(file));
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.size);
        EXPECT_EQ(text(row.expected8), textOf(native, 0, row.size));
        EXPECT_EQ(text(row.expected16), textOf(le, 0, row.size));
        EXPECT_EQ(text(row.expected16), textOf(be, 0, row.size));
    }
    EXPECT_EQ(text(""), textOf(native, 0, 1));
    EXPECT_EQ(open(""), textOf(le, 0, 1));  // not even the 0 fits
    EXPECT_EQ(open(""), textOf(native, 0, 0));
}

/// A long text behind `before` is cut to the work buffer.
template <class Parser>
void expectCutToTheWorkBuffer(const std::string& before, const std::string& behind = {}) {
    const std::string file = before + std::string(100000, 'x') + behind;
    Scanned<Parser> native(file), le(utf16le(file)), be(utf16be(file));
    EXPECT_EQ(text(std::string(8192, 'x')), textOf(native, 0, 20000));
    EXPECT_EQ(text(std::string(4096, 'x')), textOf(le, 0, 20000));
    EXPECT_EQ(text(std::string(4096, 'x')), textOf(be, 0, 20000));
}

/// However far the next entry is, no more is read than the data has.
template <class Parser>
void expectTextWithinTheData() {
    using ByHand = PutByHand<Parser>;
    ByHand native("0123456789", {0, 9}), le(utf16le("0123456789", false), {0, 18}, kUtf16Le),
        be(utf16be("0123456789", false), {0, 18}, kUtf16Be);
    native.m_s64DataTotalSize = 4;
    le.m_s64DataTotalSize = be.m_s64DataTotalSize = 9;
    for (ByHand* parser : {&native, &le, &be}) EXPECT_EQ(text("0123"), textOf(*parser, 0));
    le.m_s64DataTotalSize = be.m_s64DataTotalSize = 1;
    for (ByHand* parser : {&le, &be}) EXPECT_EQ(text(""), textOf(*parser, 0));
}

/// Entry 0 of `parser` has text when the code type is one of these, else its buffer is left alone.
inline void expectTextInCodeTypes(SubtitleParser& parser, const std::vector<U32>& codeTypes) {
    for (U32 codeType = 0; codeType < 20; ++codeType) {
        parser.m_eCodeType = static_cast<EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE>(codeType);
        const bool isText = std::find(codeTypes.begin(), codeTypes.end(), codeType) != codeTypes.end();
        U8 buffer[64] = {'?', '?'};
        EXPECT_EQ(isText, parser.GetData(0, buffer, sizeof buffer, 0) > 0) << codeType;
        if (!isText) {
            EXPECT_EQ('?', buffer[0]) << codeType;
        }
    }
}

// ------------------------------------------------------------------------------------------------ life cycle

/// `BeginParse` of a parser rigged by `rig` with a slow worker answers so, and logs `lines` behind the first two.
template <class Format, class Rig>
void expectSpeech(const std::string& content, Rig rig, BOOL answer, const std::vector<std::string>& lines) {
    const TempFile file(content);
    VirtualClock clock;
    const LogCapture log;
    Rigged<typename Format::Parser> parser(file.fd(), 0, 0);
    rig(parser);
    EXPECT_EQ(answer, beginSlowly(parser, clock));
    EXPECT_EQ(answer, parser.bParseFinish);
    EXPECT_EQ(answer == TRUE ? 1 : 10000 / Format::kPeriodMs, clock.sleeps().size());
    std::vector<std::string> expected{Format::kEnter, loadingMessage(Format::kLoading, parser)};
    expected.insert(expected.end(), lines.begin(), lines.end());
    EXPECT_EQ(expected, messages(log, Format::kTag));
}

/// A second tag that cannot be stored ends the scan of `content`: `lines` are logged, and the wait runs out.
template <class Format>
void expectScanToEndAtTheSecondTag(const std::string& content, const std::vector<std::string>& lines) {
    expectSpeech<Format>(
        content, [](auto& parser) { parser.tagsThatFit = 1; }, FALSE, lines);
}

/// A tag table that cannot grow ends the scan of `content`, which has more than 8192 entries, and only `line` is
/// logged.
template <class Format>
void expectScanToEndWithoutMemory(const std::string& content, const std::string& line) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    typename Format::Parser parser(-1, 0, 0);
    load(parser, content);
    const LogCapture log;
    {
        const AllocationFails shortage(16384 * sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG));
        parser.ParserThread();
    }
    EXPECT_EQ(FALSE, parser.bParseFinish);
    EXPECT_EQ(nullptr, parser.m_pTagBuffer);
    EXPECT_EQ(std::vector<std::string>{line}, messages(log, Format::kTag));
}

/// `BeginParse` fails, starts no worker and logs its first line and `lines`.
template <class Format>
void expectNoStart(typename Format::Parser& parser, std::vector<std::string> lines) {
    const LogCapture log;
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(pthread_t{0}, parser.m_threadParser);
    lines.insert(lines.begin(), Format::kEnter);
    EXPECT_EQ(lines, messages(log, Format::kTag));
}

template <class Format>
class TextFormat : public testing::Test {};
TYPED_TEST_SUITE_P(TextFormat);

TYPED_TEST_P(TextFormat, AnEmptyFileHasNoEntries) {
    Scanned<typename TypeParam::Parser> parser("");
    EXPECT_EQ(TRUE, parser.bParseFinish);
    EXPECT_EQ(0u, parser.GetTagNum());
    EXPECT_EQ(kUnknown, parser.m_eCodeType);
}

TYPED_TEST_P(TextFormat, AnEmptyFileIsFinishedAtOnce) {
    const TempFile file("");
    typename TypeParam::Parser parser(file.fd(), 0, 0);
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(0u, parser.GetTagNum());
}

TYPED_TEST_P(TextFormat, BeginParseReadsAFileByPathAndByDescriptor) {
    const TempFile file(TypeParam::file(), ".txt");
    std::string path = file.path();
    typename TypeParam::Parser byPath(reinterpret_cast<typename TypeParam::Path*>(path.data()));
    typename TypeParam::Parser byDescriptor(file.fd(), 0, 0);
    for (auto* parser : {&byPath, &byDescriptor}) {
        SCOPED_TRACE(parser == &byPath ? "by path" : "by descriptor");
        EXPECT_EQ(FALSE, parser->bParseFinish);
        EXPECT_EQ(TRUE, parser->BeginParse());
        EXPECT_EQ(Entries{TypeParam::entry()}, entriesIn<TypeParam>(*parser));
        expectTrackInfo(*parser, TypeParam::kType);
    }
}

TYPED_TEST_P(TextFormat, BeginParseWaitsTenSeconds) {
    expectTimeLimit<typename TypeParam::Parser>(TypeParam::kPeriodMs, TypeParam::file());
}

TYPED_TEST_P(TextFormat, BeginParseAgain) {
    const TempFile file(TypeParam::file());
    typename TypeParam::Parser parser(file.fd(), 0, 0);
    EXPECT_EQ(TRUE, parser.BeginParse());
    EXPECT_EQ(Entries{TypeParam::entry()}, entriesIn<TypeParam>(parser));
    const LogCapture log;
    if constexpr (TypeParam::kRestarts) {
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(Entries{TypeParam::entry()}, entriesIn<TypeParam>(parser));
    } else {  // one worker in a lifetime
        EXPECT_EQ(FALSE, parser.BeginParse());
        EXPECT_NE(pthread_t{0}, parser.m_threadParser);
        EXPECT_EQ((std::vector<std::string>{TypeParam::kEnter, loadingMessage(TypeParam::kLoading, parser)}),
                  messages(log, TypeParam::kTag));
    }
}

TYPED_TEST_P(TextFormat, BeginParseWithoutAFile) {
    typename TypeParam::Parser unopened(-1, 0, 0);
    expectNoStart<TypeParam>(unopened, TypeParam::leaving());
}

TYPED_TEST_P(TextFormat, BeginParseWithoutAFileSource) {
    typename TypeParam::Parser parser(-1, 0, 0);
    SubtitleFileProcess* const source = parser.pFileProcess;
    parser.pFileProcess = nullptr;
    expectNoStart<TypeParam>(parser, {});
    parser.pFileProcess = source;
}

TYPED_TEST_P(TextFormat, BeginParseWithoutBuffers) {
    const TempFile file(TypeParam::file());
    for (const BOOL answer : {BOOL{FALSE}, BOOL{2}}) {
        SCOPED_TRACE(answer);
        Rigged<typename TypeParam::Parser> parser(file.fd(), 0, 0);
        parser.initAnswer = answer;
        expectNoStart<TypeParam>(parser, TypeParam::leaving());
    }
}

TYPED_TEST_P(TextFormat, BeginParseWithoutAThread) {
    const TempFile file(TypeParam::file());
    const LogCapture log;
    const ThreadCreateFails exhausted;
    typename TypeParam::Parser parser(file.fd(), 0, 0);
    if (TypeParam::kRestarts) parser.m_threadParser = static_cast<pthread_t>(1);  // an earlier one does not matter
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(pthread_t{0}, parser.m_threadParser);
    std::vector<std::string> expected = TypeParam::threadless();
    expected.insert(expected.begin(), {TypeParam::kEnter, loadingMessage(TypeParam::kLoading, parser)});
    EXPECT_EQ(expected, messages(log, TypeParam::kTag));
}

TYPED_TEST_P(TextFormat, LeavesNothingBehind) {
    const TempFile file(TypeParam::file());
    const unsigned descriptors = openDescriptors(), threads = threadCount();
    for (int i = 0; i < 20; ++i) {
        typename TypeParam::Parser parser(file.fd(), 0, 0);
        if (i % 3 != 0) parser.BeginParse();
        if (i % 2 == 0) parser.Deinit();
    }
    EXPECT_EQ(descriptors, openDescriptors());
    EXPECT_EQ(threads, threadCount());
}

REGISTER_TYPED_TEST_SUITE_P(TextFormat, AnEmptyFileHasNoEntries, AnEmptyFileIsFinishedAtOnce,
                            BeginParseReadsAFileByPathAndByDescriptor, BeginParseWaitsTenSeconds, BeginParseAgain,
                            BeginParseWithoutAFile, BeginParseWithoutAFileSource, BeginParseWithoutBuffers,
                            BeginParseWithoutAThread, LeavesNothingBehind);

}  // namespace test
