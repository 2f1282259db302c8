// The queue of pushed subtitles: order, braces, flush, expiry, lookups, log, memory, threads.
#include "subtitle/SubtitleParserInternal.h"

#include <gtest/gtest.h>
#include <inttypes.h>
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Interpose.h"
#include "tests/support/PushedQueueModel.h"

namespace android {
namespace {

constexpr U32 kNoTag = 0xFFFFFFFF;
constexpr auto kUnknown = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN;
constexpr auto kUtf8 = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8;
constexpr auto kNative = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;
constexpr auto kUnicode = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE;

#ifdef __arm__
using Entry = ST_MEDIA_FILE_PLAYER_MOVIE_SUBTITLE_INFO;
static_assert(sizeof(Entry) == 20 && offsetof(Entry, eType) == 0 && offsetof(Entry, u32QueueStart) == 4 &&
              offsetof(Entry, u32QueueSize) == 8 && offsetof(Entry, u32PTSStart) == 12 &&
              offsetof(Entry, u32PTSEnd) == 16);
constexpr size_t kOwnFields = sizeof(SubtitleParser);
static_assert(offsetof(SubtitleParserInternal, m_vSubtitleInfo) == kOwnFields && sizeof(std::vector<Entry>) == 12 &&
              offsetof(SubtitleParserInternal, m_u32LastTimeMs) == kOwnFields + 12 &&
              offsetof(SubtitleParserInternal, m_enCodeType) == kOwnFields + 16 &&
              offsetof(SubtitleParserInternal, mLock) == kOwnFields + 20);
#endif

/// The queue with the calls as tests like to write them.
class Queue : public SubtitleParserInternal {
public:
    BOOL push(U32 now, const std::string& text, U32 start, U32 end, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type = kUtf8) {
        const std::vector<char> exact(text.begin(), text.end());  // a byte read too far is seen
        return AddSubtitleText(type, now, exact.data(), static_cast<U32>(exact.size()), start, end);
    }

    /// A push that finds no memory: no machine has so much below 4 GiB.
    BOOL pushTooMuch(U32 now, U32 start, U32 size = 0xFFFFFFFF) {
        return AddSubtitleText(kNative, now, "never read", size, start, start + 100);
    }

    /// "1000-2000 text" for every entry.
    std::vector<std::string> entries() const {
        std::vector<std::string> all;
        for (const auto& entry : m_vSubtitleInfo) {
            all.push_back(std::to_string(entry.u32PTSStart) + "-" + std::to_string(entry.u32PTSEnd) + " " +
                          test::storedText(entry));
        }
        return all;
    }

    std::string text(U32 tag, U32 size = 100) {
        std::string buffer(size, '#');
        const U32 count = GetData(0, reinterpret_cast<U8*>(buffer.data()), size, tag);
        EXPECT_EQ(std::string(size - count, '#'), buffer.substr(count)) << "written behind the text";
        return buffer.substr(0, count);
    }

    EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType() {
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
        EXPECT_EQ(TRUE, GetTrackInfo(0, &info));
        EXPECT_EQ(11u, info.eSubtitleType);
        return info.eCodeType;
    }

    bool lockIsFree() {
        if (mLock.tryLock() != 0) return false;
        mLock.unlock();
        return true;
    }
};

using Entries = std::vector<std::string>;

// ------------------------------------------------------------------------------------------------------- shape

TEST(SubtitleParserInternal, StartsEmpty) {
    Queue queue;
    EXPECT_TRUE(queue.m_vSubtitleInfo.empty());
    EXPECT_EQ(0u, queue.m_u32LastTimeMs);
    EXPECT_EQ(kUnknown, queue.m_enCodeType);
    EXPECT_EQ(kNoTag, queue.GetTag(0, 0));
    ST_MEDIA_SUBTITLE_PARSER_TAG tag = {};
    EXPECT_EQ(FALSE, queue.GetTagInfo(0, 0, &tag));
    EXPECT_EQ("", queue.text(0));
    EXPECT_EQ(kUnknown, queue.codeType());
    EXPECT_TRUE(queue.lockIsFree());
}

TEST(SubtitleParserInternal, LeavesTheBaseAlone) {
    Queue queue;
    queue.push(0, "Hi", 0, 1000);
    EXPECT_EQ(TRUE, queue.BeginParse());
    EXPECT_EQ(TRUE, queue.StopParse());
    EXPECT_EQ(0u, queue.GetTagNum());
    EXPECT_EQ(nullptr, queue.pFileProcess);
    EXPECT_EQ(nullptr, queue.m_pTagBuffer);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID, queue.m_eSubtitleType);
    EXPECT_EQ(kUnknown, queue.m_eCodeType);
    stSubDecoderInfo picture = {};
    U8 buffer[8];
    EXPECT_EQ(0u, queue.GetData(0, buffer, sizeof buffer, 0, &picture));
    EXPECT_EQ(Entries{"0-1000 Hi"}, queue.entries());
}

TEST(SubtitleParserInternal, AnswersThroughTheBase) {
    Queue queue;
    queue.push(0, "Hello", 100, 200, kNative);
    SubtitleParser& parser = queue;
    EXPECT_EQ(100u, parser.GetTag(0, 150));
    ST_MEDIA_SUBTITLE_PARSER_TAG tag = {};
    EXPECT_EQ(TRUE, parser.GetTagInfo(0, 100, &tag));
    EXPECT_EQ(200u, tag.u32TimeEnd);
    U8 buffer[8] = {};
    EXPECT_EQ(5u, parser.GetData(0, buffer, sizeof buffer, 100));
    EXPECT_STREQ("Hello", reinterpret_cast<const char*>(buffer));
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
    EXPECT_EQ(TRUE, parser.GetTrackInfo(0, &info));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_INTERNAL, info.eSubtitleType);
}

// ------------------------------------------------------------------------------------------------------- order

// kept(push-same-start)
TEST(SubtitleParserInternal, KeepsEntriesByStart) {
    Queue queue;
    queue.push(0, "c", 3000, 4000);
    queue.push(0, "a", 1000, 2000);
    queue.push(0, "b", 2000, 3000);
    EXPECT_EQ((Entries{"1000-2000 a", "2000-3000 b", "3000-4000 c"}), queue.entries());
    queue.push(0, "B", 2000, 2500);
    EXPECT_EQ((Entries{"1000-2000 a", "2000-2500 B", "2000-3000 b", "3000-4000 c"}), queue.entries());
    EXPECT_EQ("B", queue.text(2000)) << "the one pushed last is found";
}

// ------------------------------------------------------------------------------------------------------ lookups

TEST(SubtitleParserInternal, FindsTheEntryThatCoversATime) {
    Queue queue;
    queue.push(0, "a", 1000, 2000);
    queue.push(0, "b", 2000, 3000);
    queue.push(0, "never shown", 3500, 3500);
    queue.push(0, "long", 4000, 9000);
    queue.push(0, "inside", 5000, 6000);
    queue.push(0, "to the end of time", 10000, 0xFFFFFFFF);
    const struct {
        U32 time, tag;
    } kRows[] = {
        {0, kNoTag},
        {999, kNoTag},
        {1000, 1000},
        {1999, 1000},
        {2000, 2000},  // the end is not part of the
                       // interval
        {2999, 2000},
        {3000, kNoTag},
        {3500, kNoTag},
        {5000, 4000},  // the first in queue order
        {5999, 4000},
        {8999, 4000},
        {9000, kNoTag},
        {10000, 10000},
        {0xFFFFFFFE, 10000},
        {0xFFFFFFFF, kNoTag},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(row.tag, queue.GetTag(0, row.time)) << "at " << row.time;
        EXPECT_EQ(row.tag, queue.GetTag(77, row.time)) << "the track does not count, at " << row.time;
    }
}

TEST(SubtitleParserInternal, TellsTheTimesOfATag) {
    Queue queue;
    queue.push(0, "a", 1000, 2000);
    queue.push(0, "b", 1500, 1800);
    queue.push(0, "B", 1500, 1700);
    const ST_MEDIA_SUBTITLE_PARSER_TAG before = {11, 22, 33, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_PART};
    const struct {
        U32 tag;
        BOOL found;
        U32 start, end;
    } kRows[] = {
        {1000, TRUE, 1000, 2000}, {1500, TRUE, 1500, 1700}, {999, FALSE, 11, 22},
        {1001, FALSE, 11, 22},    {0, FALSE, 11, 22},       {kNoTag, FALSE, 11, 22},
    };
    for (const auto& row : kRows) {
        ST_MEDIA_SUBTITLE_PARSER_TAG tag = before;
        EXPECT_EQ(row.found, queue.GetTagInfo(3, row.tag, &tag)) << row.tag;
        EXPECT_EQ(row.start, tag.u32TimeStart) << row.tag;
        EXPECT_EQ(row.end, tag.u32TimeEnd) << row.tag;
        EXPECT_EQ(33, tag.s64Pos);
        EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_PART, tag.eDataType);
    }
    EXPECT_EQ(FALSE, queue.GetTagInfo(0, 1000, nullptr));
    EXPECT_TRUE(queue.lockIsFree());
}

// kept(push-no-terminator)
TEST(SubtitleParserInternal, CopiesAsMuchTextAsFits) {
    Queue queue;
    queue.push(0, "Hello", 1000, 2000);
    const struct {
        U32 size;
        const char* text;
    } kRows[] = {{0, ""}, {1, "H"}, {4, "Hell"}, {5, "Hello"}, {6, "Hello"}, {100, "Hello"}};
    for (const auto& row : kRows) EXPECT_EQ(row.text, queue.text(1000, row.size)) << row.size;
    EXPECT_EQ("", queue.text(999));
    EXPECT_EQ("", queue.text(kNoTag));
    EXPECT_EQ(0u, queue.GetData(0, nullptr, 5, 1000));
    EXPECT_EQ("Hello", queue.text(1000)) << "reading takes nothing away";
}

TEST(SubtitleParserInternal, ReportsTheEncodingPushedOrReadLast) {
    Queue queue;
    queue.push(0, "a", 1000, 2000, kNative);
    EXPECT_EQ(kNative, queue.codeType());
    queue.push(0, "b", 2000, 3000, kUtf8);
    EXPECT_EQ(kUtf8, queue.codeType());
    queue.text(1000);
    EXPECT_EQ(kNative, queue.codeType());
    queue.text(1001);
    EXPECT_EQ(kNative, queue.codeType()) << "nothing was read";
    EXPECT_EQ(0u, queue.GetData(0, nullptr, 0, 2000));
    EXPECT_EQ(kUtf8, queue.codeType()) << "found, whatever was copied";
    queue.push(2500, "late, and over at once", 1000, 2000, kUnicode);
    EXPECT_TRUE(queue.entries().empty());
    EXPECT_EQ(kUnicode, queue.codeType());
    queue.ClearSubtitleData();
    EXPECT_EQ(kUnicode, queue.codeType());
}

TEST(SubtitleParserInternal, TrackInfoSetsTwoFieldsAlone) {
    Queue queue;
    queue.push(0, "a", 1000, 2000, kNative);
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info, before;
    memset(static_cast<void*>(&info), 0x5A, sizeof info);
    before = info;
    EXPECT_EQ(TRUE, queue.GetTrackInfo(9, &info));
    before.eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_INTERNAL;
    before.eCodeType = kNative;
    EXPECT_EQ(0, memcmp(&before, &info, sizeof info));
    EXPECT_EQ(TRUE, queue.GetTrackInfo(0, nullptr));
}

TEST(SubtitleParserInternal, ReadsNothingWhereTheTextIsReleased) {
    Queue queue;
    queue.push(0, "a", 1000, 2000, kNative);
    queue.push(0, "b", 2000, 3000, kUtf8);
    const U32 text = std::exchange(queue.m_vSubtitleInfo[0].u32QueueStart, 0u);
    EXPECT_EQ(0u, queue.text(1000).size());
    EXPECT_EQ(kNative, queue.codeType());
    queue.push(2600, "c", 3000, 4000);
    EXPECT_EQ(3u, queue.m_vSubtitleInfo.size()) << "expiry stops in front of it";
    queue.m_vSubtitleInfo[0].u32QueueStart = text;
    queue.push(2600, "d", 3500, 4000);
    EXPECT_EQ((Entries{"2000-3000 b", "3000-4000 c", "3500-4000 d"}), queue.entries());
}

// ---------------------------------------------------------------------------------------------- text, as stored

struct TextRow {
    std::string pushed, stored;
};

std::string repeated(size_t count, const std::string& text) {
    std::string all;
    for (size_t i = 0; i < count; ++i) all += text;
    return all;
}

TEST(SubtitleParserInternal, TakesBraceBlocksOut) {
    using namespace std::string_literals;
    const TextRow kRows[] = {
        {"Hello", "Hello"},
        {"{\\an8}Hello", "Hello"},
        {"Hi{unclosed", "Hi"},  // kept(push-brace-unclosed)
        {"Hi{", "Hi"},
        {"{", ""},
        {"", ""},
        {"{}", ""},
        {"{a}{b}{c}", ""},
        {"{a}Hi{b} there{c}", "Hi there"},
        {"Hi {a}{b}there", "Hi there"},
        {"a{b{c}d}e", "ad}e"},  // the first closing brace ends the block
        {"a{{{}b", "ab"},
        {"a}b", "a}b"},
        {"a}{b}c", "a}c"},
        {"{a}b{c", "b"},
        {"{a}{", ""},
        {"}{", "}"},
        {"<i>Hi</i> &amp; {\\b1}you\\N", "<i>Hi</i> &amp; you\\N"},  // other markup stays
        {"two\nlines{x}\r\n", "two\nlines\r\n"},
        {"{two\nlines}Hi", "Hi"},
        {"\xE4\xBD\xA0{x}\xE5\xA5\xBD", "\xE4\xBD\xA0\xE5\xA5\xBD"},
        {"\xA1\x7Bx\x7Dy", "\xA1y"},  // kept(trail-byte-brace)
        {"Hi\0{there}"s, "Hi"},       // the text ends at its first zero byte
        {"\0Hi"s, ""},
        {"{a\0}Hi"s, ""},
        {"Hi\0"s, "Hi"},
        {test::utf16le("Hi", false), "H"},  // kept(push-zero-byte)
        {test::utf16be("Hi", false), ""},
    };
    for (const TextRow& row : kRows) {
        Queue queue;
        ASSERT_EQ(TRUE, queue.push(0, row.pushed, 1000, 2000)) << row.pushed;
        ASSERT_EQ(1u, queue.m_vSubtitleInfo.size());
        const auto& entry = queue.m_vSubtitleInfo[0];
        EXPECT_EQ(row.stored, test::storedText(entry)) << row.pushed;
        EXPECT_EQ(row.stored, queue.text(1000)) << row.pushed;
        EXPECT_EQ(row.stored.size(), entry.u32QueueSize) << row.pushed;
        EXPECT_EQ(row.stored, test::PushedQueueModel::stored(row.pushed)) << "the model";
        const char* const memory = reinterpret_cast<const char*>(static_cast<uintptr_t>(entry.u32QueueStart));
        EXPECT_EQ('\0', memory[entry.u32QueueSize]) << row.pushed;
        EXPECT_EQ("\0\0\0\0"s, std::string(memory + row.pushed.size(), 4)) << row.pushed;
        if (row.pushed.find('\0') == std::string::npos) {
            EXPECT_EQ("\0\0\0\0"s, std::string(memory + entry.u32QueueSize, 4)) << row.pushed;
        }
    }
}

TEST(SubtitleParserInternal, TakesTextsOfAnySizeAndShape) {
    constexpr size_t kMega = 1 << 20;
    const TextRow kRows[] = {
        {std::string(kMega, 'x'), std::string(kMega, 'x')},
        {std::string(kMega, '{'), ""},
        {std::string(kMega, '}'), std::string(kMega, '}')},
        {repeated(kMega / 2, "{}"), ""},  // in linear time
        {repeated(kMega / 4, "{a}b"), std::string(kMega / 4, 'b')},
        {repeated(kMega / 2, "a{"), "a"},
        {"{" + std::string(kMega, 'x') + "}y", "y"},
        {std::string(kMega, '\0'), ""},
        {std::string(4092, 'x'), std::string(4092, 'x')},  // around a page
        {std::string(4096, 'x'), std::string(4096, 'x')},
        {std::string(4100, 'x'), std::string(4100, 'x')},
    };
    Queue queue;
    for (const TextRow& row : kRows) {
        ASSERT_EQ(TRUE, queue.push(0, row.pushed, 1000, 2000));
        EXPECT_TRUE(row.stored == queue.text(1000, kMega + 8)) << row.pushed.substr(0, 10);
    }
    EXPECT_EQ(std::size(kRows), queue.m_vSubtitleInfo.size());
}

TEST(SubtitleParserInternal, CopiesTheCallersText) {
    Queue queue;
    char text[] = "Hello";
    ASSERT_EQ(TRUE, queue.AddSubtitleText(kUtf8, 0, text, 5, 1000, 2000));
    text[0] = 'J';
    EXPECT_EQ("Hello", queue.text(1000));
    EXPECT_NE(reinterpret_cast<uintptr_t>(text), queue.m_vSubtitleInfo[0].u32QueueStart);
}

TEST(SubtitleParserInternal, TakesTextByAddress) {
    Queue queue;
    // An address that fits 32 bits on every machine: the text of an entry.
    queue.push(0, "Hello", 1000, 2000);
    const U32 address = queue.m_vSubtitleInfo[0].u32QueueStart;
    EXPECT_EQ(TRUE, queue.AddSubtitleData(kNative, 0, address, 5, 3000, 4000));
    EXPECT_EQ((Entries{"1000-2000 Hello", "3000-4000 Hello"}), queue.entries());
    EXPECT_EQ(TRUE, queue.AddSubtitleData(kNative, 3500, address, 4, 3400, 4400));
    EXPECT_EQ(Entries{"3400-4400 Hell"}, queue.entries()) << "copied before the flush releases it";
#if UINTPTR_MAX == 0xFFFFFFFF
    const char text[] = "from a pointer";
    queue.AddSubtitleData(kNative, 3500, reinterpret_cast<uintptr_t>(text), sizeof text - 1, 5000, 6000);
    EXPECT_EQ("from a pointer", queue.text(5000));
#endif
}

TEST(SubtitleParserInternal, NoTextReadsAsEmpty) {
    Queue queue;
    EXPECT_EQ(TRUE, queue.AddSubtitleData(kUtf8, 0, 0, 0, 1000, 2000));
    EXPECT_EQ(TRUE, queue.AddSubtitleData(kUtf8, 0, 0, 100, 2000, 3000));
    EXPECT_EQ((Entries{"1000-2000 ", "2000-3000 "}), queue.entries());
    EXPECT_EQ(2000u, queue.GetTag(0, 2500));
    EXPECT_EQ("", queue.text(2000));
}

// -------------------------------------------------------------------------------------------- flush and expiry

TEST(SubtitleParserInternal, FlushesOnALatePushAndOnAJumpBack) {
    const struct {
        const char* what;
        U32 before, now, start, end;
        Entries left;
    } kRows[] = {
        {"in time", 500, 500, 5000, 6000, {"1000-9000 old", "5000-6000 new"}},
        {"just in time", 500, 5000, 5000, 6000, {"1000-9000 old", "5000-6000 new"}},
        {"one millisecond late", 500, 5001, 5000, 6000, {"5000-6000 new"}},  // kept(push-late)
        {"late, ends now", 500, 6000, 5000, 6000, {"5000-6000 new"}},        // kept(push-ends-now)
        {"late and over", 500, 6001, 5000, 6000, {}},
        {"late and over, end before start", 500, 6001, 6000, 10, {}},
        {"the same time again", 500, 500, 5000, 6000, {"1000-9000 old", "5000-6000 new"}},
        {"one millisecond back", 500, 499, 5000, 6000, {"5000-6000 new"}},  // kept(push-late)
        {"back to the start", 500, 0, 5000, 6000, {"5000-6000 new"}},
        {"back and late", 5500, 5400, 5000, 6000, {"5000-6000 new"}},
    };
    for (const auto& row : kRows) {
        Queue queue;
        queue.push(0, "old", 1000, 9000);
        queue.m_u32LastTimeMs = row.before;
        EXPECT_EQ(TRUE, queue.push(row.now, "new", row.start, row.end)) << row.what;
        EXPECT_EQ(row.left, queue.entries()) << row.what;
        EXPECT_EQ(row.now, queue.m_u32LastTimeMs) << row.what;
    }
}

TEST(SubtitleParserInternal, ComparesWithThePushBefore) {
    Queue queue;
    queue.push(1000, "a", 5000, 9000);
    queue.push(3000, "b", 5000, 9000);
    queue.push(2999, "c", 5000, 9000);  // back
    EXPECT_EQ(Entries{"5000-9000 c"}, queue.entries());
    queue.push(2999, "d", 6000, 9000);
    EXPECT_EQ((Entries{"5000-9000 c", "6000-9000 d"}), queue.entries());
}

TEST(SubtitleParserInternal, DropsEntriesThatAreOver) {
    const struct {
        U32 now;
        Entries left;
    } kRows[] = {
        {1999, {"1000-2000 a", "1500-9000 b", "3000-4000 c", "99000-99999 new"}},
        {2000, {"1000-2000 a", "1500-9000 b", "3000-4000 c", "99000-99999 new"}},  // kept(push-ends-now)
        {2001, {"1500-9000 b", "3000-4000 c", "99000-99999 new"}},
        {5000, {"1500-9000 b", "3000-4000 c", "99000-99999 new"}},  // c is over, but b stands before it
        {9001, {"99000-99999 new"}},
    };
    for (const auto& row : kRows) {
        Queue queue;
        queue.push(0, "a", 1000, 2000);
        queue.push(0, "b", 1500, 9000);
        queue.push(0, "c", 3000, 4000);
        queue.push(row.now, "new", 99000, 99999);
        EXPECT_EQ(row.left, queue.entries()) << "at " << row.now;
    }
}

// kept(push-ends-now)
TEST(SubtitleParserInternal, AnEntryThatEndsNowStaysAndIsNotShown) {
    Queue queue;
    queue.push(0, "a", 1000, 2000);
    queue.push(2000, "b", 3000, 4000);
    EXPECT_EQ(kNoTag, queue.GetTag(0, 2000));
    EXPECT_EQ("a", queue.text(1000));
}

TEST(SubtitleParserInternal, ANewEntryCanBeOverAtOnce) {
    Queue queue;
    EXPECT_EQ(TRUE, queue.push(3000, "ends before it begins", 3000, 100));
    EXPECT_TRUE(queue.entries().empty());
    queue.push(3000, "a", 5000, 6000);
    EXPECT_EQ(TRUE, queue.push(3000, "the same in front of others", 3000, 100));
    EXPECT_EQ(Entries{"5000-6000 a"}, queue.entries());
}

TEST(SubtitleParserInternal, ClearsWithoutAWord) {
    Queue queue;
    queue.push(700, "a", 1000, 2000, kNative);
    queue.push(700, "b", 2000, 3000, kNative);
    const test::LogCapture log;
    EXPECT_EQ(TRUE, queue.ClearSubtitleData());
    EXPECT_EQ(TRUE, queue.ClearSubtitleData());
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(queue.m_vSubtitleInfo.empty());
    EXPECT_EQ(700u, queue.m_u32LastTimeMs);
    EXPECT_EQ(kNoTag, queue.GetTag(0, 1500));
    EXPECT_TRUE(queue.lockIsFree());
    queue.push(700, "c", 1000, 2000);
    EXPECT_EQ(Entries{"1000-2000 c"}, queue.entries());
}

// --------------------------------------------------------------------------------------------------------- log

TEST(SubtitleParserInternal, LogsToTheLetter) {
    Queue queue;
    const char text[] = "Hello";
    const std::string address = std::to_string(reinterpret_cast<uintptr_t>(text));
    ST_MEDIA_SUBTITLE_PARSER_TAG tag = {};
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
    U8 buffer[8];
    const test::LogCapture log;
    queue.AddSubtitleText(kUtf8, 7, text, 5, 4294967294, 4294967295);
    queue.GetTag(0, 4294967294);
    queue.GetTagInfo(0, 4294967294, &tag);
    queue.GetTagInfo(0, 1, &tag);
    queue.GetData(0, buffer, sizeof buffer, 4294967294);
    queue.GetData(0, buffer, sizeof buffer, 1);
    queue.GetTrackInfo(0, &info);
    queue.AddSubtitleData(kUtf8, 8, 0, 0, 9, 10);
    queue.pushTooMuch(8, 9, 4294967295);
    queue.ClearSubtitleData();
    const std::vector<std::string> kTexts = {
        "AddSubtitleData :7, " + address + ", 5, 4294967294, 4294967295",
        "GetTag  \n",
        "GetTagInfo enter \n",
        "Tag = 4294967294\n",
        "GetTagInfo leave \n",
        "GetTagInfo enter \n",
        "GetTagInfo leave \n",
        "GetData  \n",
        "GetData leave \n",
        "GetData  \n",
        "GetData leave \n",
        "GetTrackInfo  \n",
        "AddSubtitleData :8, 0, 0, 9, 10",
    };
    std::vector<std::string> texts = log.texts();
    ASSERT_EQ(kTexts.size() + 1, texts.size());
    EXPECT_EQ(0u, texts.back().find("AddSubtitleData :8, ")) << texts.back();
    texts.pop_back();
    EXPECT_EQ(kTexts, texts);
    for (const test::LogLine& line : log.lines()) {
        EXPECT_EQ(3, line.priority);
        EXPECT_EQ("SubtitleParserInternal", line.tag);
    }
}

// kept(push-no-limit)
TEST(SubtitleParserInternal, WarnsAboveAThousandAndThirtyTwo) {
    Queue queue;
    const auto warnings = [&queue](U32 now, U32 start) {
        const test::LogCapture log;
        EXPECT_EQ(TRUE, queue.push(now, "x", start, start + 1));
        std::vector<std::string> texts = log.texts();
        texts.erase(texts.begin());  // the push itself
        return texts;
    };
    for (U32 i = 1; i <= 1032; ++i) ASSERT_EQ(Entries{}, warnings(0, i * 10));
    EXPECT_EQ(Entries{"Currently subtitle queue with (1033) elements\n"}, warnings(0, 20000));
    EXPECT_EQ(Entries{"Currently subtitle queue with (1034) elements\n"}, warnings(0, 20010));
    EXPECT_EQ(1034u, queue.m_vSubtitleInfo.size()) << "nothing is dropped for size";
    // The count is taken before entries expire.
    EXPECT_EQ(Entries{"Currently subtitle queue with (1035) elements\n"}, warnings(32, 20020));
    EXPECT_EQ(1032u, queue.m_vSubtitleInfo.size());
    EXPECT_EQ(Entries{"Currently subtitle queue with (1033) elements\n"}, warnings(10000, 20030));
    EXPECT_EQ(Entries{}, warnings(10000, 20040));
}

// ------------------------------------------------------------------------------------------------------- memory

/// Bytes of the memory that texts are taken from: the heap, or everything writable below 4 GiB.
size_t textMemoryInUse() {
#if UINTPTR_MAX == 0xFFFFFFFF
    return mallinfo2().uordblks;
#else
    size_t bytes = 0;
    FILE* const maps = fopen("/proc/self/maps", "r");
    char line[512];
    while (maps != nullptr && fgets(line, sizeof line, maps) != nullptr) {
        uint64_t start = 0, end = 0;
        char access[5] = {};
        const bool read = sscanf(line, "%" SCNx64 "-%" SCNx64 " %4s", &start, &end, access) == 3;
        if (read && end <= uint64_t{1} << 32 && access[1] == 'w') bytes += static_cast<size_t>(end - start);
    }
    if (maps != nullptr) fclose(maps);
    return bytes;
#endif
}

TEST(SubtitleParserInternal, APushWithoutMemoryLeavesTheQueue) {
    for (const U32 size : {0xFFFFFFFFu, 0xFFFFFFFCu, 0xFFFFFFFBu, 0xFFFFF000u}) {
        Queue queue;
        queue.push(100, "old", 1000, 2000);
        EXPECT_EQ(FALSE, queue.pushTooMuch(100, 3000, size)) << size;
        EXPECT_EQ(FALSE, queue.pushTooMuch(5000, 3000, size)) << size << ", late";
        EXPECT_EQ(Entries{"1000-2000 old"}, queue.entries()) << size;
        EXPECT_EQ(kUtf8, queue.codeType());
        EXPECT_EQ(5000u, queue.m_u32LastTimeMs) << "the play time counts all the same";
        EXPECT_TRUE(queue.lockIsFree());
        queue.push(4000, "new", 6000, 7000);
        EXPECT_EQ(Entries{"6000-7000 new"}, queue.entries()) << "so this was a jump back";
    }
}

TEST(SubtitleParserInternal, APushWithoutHeapLeavesTheQueue) {
    if (sizeof(void*) > 4) GTEST_SKIP() << "texts come from the heap on 32-bit machines alone";
    if (!test::AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    Queue queue;
    queue.push(0, "old", 1000, 2000);
    const std::vector<char> text(100, 'x');
    for (const bool late : {false, true}) {
        const test::AllocationFails fails(104);
        EXPECT_EQ(FALSE, queue.AddSubtitleText(kNative, late ? 3000 : 0, text.data(), 100, 1500, 2500));
        EXPECT_EQ(TRUE, queue.AddSubtitleText(kUtf8, late ? 3000 : 0, text.data(), 99, 4000, 5000));
    }
    EXPECT_EQ(2u, queue.m_vSubtitleInfo.size()) << "old is over, both shorter ones are there";
}

TEST(SubtitleParserInternal, AQueueThatCannotGrowStaysAsItIs) {
    constexpr size_t kLimit = 20000;
    bool newFails = false;
    {
        const test::AllocationFails fails(kLimit);
        void* const block = ::operator new(kLimit, std::nothrow);
        newFails = block == nullptr;
        ::operator delete(block);
    }
    if (!newFails) GTEST_SKIP() << "operator new cannot be made to fail here";
    Queue queue;
    U32 pushed = 0;
    {
        const test::AllocationFails fails(kLimit);
        while (pushed < 2000 && queue.push(0, "x", 1000 + pushed, 9000, kUtf8) == TRUE) ++pushed;
        EXPECT_GT(pushed, 100u);
        EXPECT_LT(pushed, 2000u);
        const std::string text(kLimit / 2, 'y');
        const size_t before = textMemoryInUse();
        for (int i = 0; i < 50; ++i) EXPECT_EQ(FALSE, queue.push(0, text, 500, 9000, kUtf8)) << "again";
        EXPECT_LT(textMemoryInUse(), before + 64 * 1024) << "the refused texts are given back";
        EXPECT_TRUE(queue.lockIsFree());
    }
    EXPECT_EQ(pushed, queue.m_vSubtitleInfo.size());
    EXPECT_EQ(1000u, queue.GetTag(0, 5000));
    EXPECT_EQ(TRUE, queue.push(0, "z", 500, 9000));
    EXPECT_EQ(500u, queue.GetTag(0, 5000));
}

TEST(SubtitleParserInternal, GivesAllMemoryBack) {
    constexpr U32 kTexts = 100, kRounds = 20, kTextSize = 1000;
    const std::string text(kTextSize, 'x');
    const auto round = [&text] {
        Queue queue;
        const auto push = [&](U32 now, U32 start, U32 end) {
            queue.AddSubtitleText(kUtf8, now, text.data(), kTextSize, start, end);
        };
        for (U32 i = 0; i < kTexts; ++i) push(i, 100 + i, 200 + i);  // expire
        for (U32 i = 0; i < kTexts; ++i) push(300, 400 + i, 500 + i);
        const size_t full = textMemoryInUse();
        push(0, 1000, 2000);  // flush
        for (U32 i = 0; i < kTexts; ++i) push(0, 1000, 2000);
        queue.ClearSubtitleData();
        for (U32 i = 0; i < kTexts; ++i) push(0, 1000, 2000);
        queue.pushTooMuch(0, 1000);
        return full;  // and the rest with the queue
    };
    round();
    const size_t before = textMemoryInUse();
    size_t full = 0;
    for (U32 i = 0; i < kRounds; ++i) full = round();
    EXPECT_LT(textMemoryInUse(), before + kRounds * kTexts * kTextSize / 2);
    EXPECT_GE(full, before + kTexts * kTextSize / 2) << "the measure shows texts";
}

TEST(SubtitleParserInternal, HoldsTenThousandEntries) {
    constexpr U32 kCount = 10000;
    for (const bool ascending : {true, false}) {
        Queue queue;
        for (U32 i = 0; i < kCount; ++i) {
            const U32 start = 1000 + 10 * (ascending ? i : kCount - 1 - i);
            ASSERT_EQ(TRUE, queue.push(0, std::to_string(start), start, start + 10));
        }
        ASSERT_EQ(kCount, queue.m_vSubtitleInfo.size());
        EXPECT_TRUE(std::is_sorted(queue.m_vSubtitleInfo.begin(), queue.m_vSubtitleInfo.end(),
                                   [](const auto& a, const auto& b) { return a.u32PTSStart < b.u32PTSStart; }));
        EXPECT_EQ("51000", queue.text(queue.GetTag(0, 51009)));
        EXPECT_EQ("100990", queue.text(queue.GetTag(0, 100999)));
        queue.push(101001, "last", 200000, 300000);  // everything else is over
        EXPECT_EQ(Entries{"200000-300000 last"}, queue.entries());
    }
}

// ------------------------------------------------------------------------------------------------- as a whole

TEST(SubtitleParserInternal, BehavesLikeTheModel) {
    std::mt19937 random(20);
    const auto upTo = [&random](U32 limit) { return static_cast<U32>(random() % (limit + 1)); };
    const std::string kAlphabet = "ab{}{}\n";
    for (int run = 0; run < 50; ++run) {
        Queue queue;
        test::PushedQueueModel model;
        U32 now = 0;
        for (int step = 0; step < 200; ++step) {
            const U32 time = now + upTo(60);
            switch (upTo(5)) {
                case 0: {
                    const U32 size = upTo(8);
                    EXPECT_EQ(model.read(time, size), queue.text(time, size));
                    EXPECT_EQ(model.codeType(), queue.codeType());
                    break;
                }
                case 1:
                    EXPECT_EQ(model.tagAt(time), queue.GetTag(0, time));
                    break;
                case 2: {
                    ST_MEDIA_SUBTITLE_PARSER_TAG tag = {1, 2, 3, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE};
                    const auto* const entry = model.find(time);
                    EXPECT_EQ(entry != nullptr ? TRUE : FALSE, queue.GetTagInfo(0, time, &tag));
                    EXPECT_EQ(entry != nullptr ? entry->end : 2, tag.u32TimeEnd);
                    break;
                }
                default: {
                    now = upTo(40) == 0 ? upTo(now) : now + upTo(4);
                    std::string text;
                    for (U32 i = upTo(12); i > 0; --i) text += kAlphabet[upTo(6)];
                    const U32 start = now + upTo(50) - (upTo(60) == 0 && now != 0 ? 1 : 0);
                    const U32 end = start + upTo(30);
                    const auto type = static_cast<EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE>(upTo(4));
                    EXPECT_EQ(TRUE, queue.push(now, text, start, end, type));
                    model.push(type, now, text, start, end);
                    ASSERT_TRUE(test::sameEntries(queue, model)) << "run " << run << ", step " << step;
                }
            }
        }
    }
}

TEST(SubtitleParserInternal, ClearingWaitsForTheOthers) {
    Queue queue;
    queue.push(0, "a", 1000, 2000);
    std::atomic<bool> begun{false}, done{false};
    ASSERT_EQ(0, queue.mLock.tryLock());  // as a reader holds it
    std::thread clearing([&] {
        begun = true;
        queue.ClearSubtitleData();
        done = true;
    });
    while (!begun) std::this_thread::yield();
    test::giveWay(20000);
    EXPECT_FALSE(done);
    EXPECT_EQ(Entries{"1000-2000 a"}, queue.entries());
    queue.mLock.unlock();
    clearing.join();
    EXPECT_TRUE(queue.entries().empty());
}

/// Operations of the stress test, all threads together. VXSUBTITLE_STRESS_OPERATIONS=2000000 is the full measure.
unsigned stressOperations() {
    const char* const wish = getenv("VXSUBTITLE_STRESS_OPERATIONS");
    return wish != nullptr ? static_cast<unsigned>(strtoul(wish, nullptr, 10)) : 40000;
}

/// A text that a reader can check by its tag.
std::string stressText(U32 start) { return std::string(1 + start % 97, static_cast<char>('a' + start % 26)); }

TEST(SubtitleParserInternal, OneThreadPushesWhileFourRead) {
    constexpr unsigned kThreads = 5;
    const unsigned perThread = stressOperations() / kThreads;
    Queue queue;
    std::atomic<U32> clock{0};
    std::atomic<unsigned> pushed{0}, found{0}, wrong{0};

    std::thread pusher([&] {
        U32 now = 0;
        for (unsigned i = 0; i < perThread; ++i) {
            now = i % 1000 == 999 ? now / 2 : now + 3;  // now and then the player jumps back
            clock.store(now, std::memory_order_relaxed);
            const U32 start = now + i % 40;
            if (i % 250 == 249) {
                queue.ClearSubtitleData();
            } else if (queue.push(now, "{\\an8}" + stressText(start), start, start + 60) != TRUE) {
                ++wrong;
            }
            pushed = i + 1;
        }
    });
    std::vector<std::thread> readers;
    for (unsigned reader = 1; reader < kThreads; ++reader) {
        readers.emplace_back([&, reader] {
            U32 tag = kNoTag;
            for (unsigned i = 0; i < perThread; ++i) {
                while (pushed + 100 < i) std::this_thread::yield();  // no reader is done before there is much to read
                switch ((i + reader) % 4) {
                    case 0:
                        tag = queue.GetTag(reader, clock.load(std::memory_order_relaxed) + i % 50);
                        break;
                    case 1: {
                        ST_MEDIA_SUBTITLE_PARSER_TAG info = {};
                        if (queue.GetTagInfo(0, tag, &info) == TRUE && info.u32TimeEnd != tag + 60) ++wrong;
                        break;
                    }
                    case 2: {
                        char text[128];
                        const U32 size = queue.GetData(0, reinterpret_cast<U8*>(text), sizeof text, tag);
                        if (size == 0) break;  // gone in between
                        ++found;
                        if (std::string(text, size) != stressText(tag)) ++wrong;
                        break;
                    }
                    default: {
                        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info;
                        queue.GetTrackInfo(0, &info);
                        if (info.eCodeType != kUtf8 && info.eCodeType != kUnknown) ++wrong;
                    }
                }
            }
        });
    }
    pusher.join();
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(0u, wrong.load());
    EXPECT_GT(found.load(), 0u) << "no reader ever met a text";
    EXPECT_TRUE(queue.lockIsFree());
}

}  // namespace
}  // namespace android
