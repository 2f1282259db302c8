// The hidden machinery below the parsers: bounded views of a text, the number scanner, the pieces of text walks.
#include "subtitle/text/TextView.h"

#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "subtitle/text/Markup.h"
#include "subtitle/text/TimeStamps.h"
#include "tests/support/Interpose.h"

namespace {

using namespace vxsubtitle;
using namespace std::literals;

/// A view of a copy that is exactly as long: the sanitizers see the first byte too far.
template <class Enc>
struct Viewed {
    explicit Viewed(std::string_view bytes)
        : copy(new U8[bytes.size() + (bytes.empty() ? 1 : 0)]), view(copy.get(), bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), copy.get());
    }
    const TextView<Enc>* operator->() const { return &view; }
    const TextView<Enc>& operator*() const { return view; }

    std::unique_ptr<U8[]> copy;
    TextView<Enc> view;
};

// ---------------------------------------------------------------------------------------------------- classes

TEST(Units, WhiteSpaceDigitsAndLetters) {
    for (U32 unit = 0; unit < 0x10000; ++unit) {
        const bool space = unit == 9 || unit == 10 || unit == 11 || unit == 12 || unit == 13 || unit == 32;
        ASSERT_EQ(space, isSpace(unit)) << unit;
        ASSERT_EQ(unit >= 0x30 && unit <= 0x39, isDigit(unit)) << unit;
        ASSERT_EQ((unit >= 0x41 && unit <= 0x5A) || (unit >= 0x61 && unit <= 0x7A), isLetter(unit)) << unit;
    }
}

TEST(Units, LieInMemoryAsTheirEncodingSays) {
    const U8 stored[] = {0x12, 0x34};
    EXPECT_EQ(0x12, Bytes::load(stored));
    EXPECT_EQ(0x3412, Utf16Le::load(stored));
    EXPECT_EQ(0x3412, Utf16Be::load(stored)) << "as stored, not swapped";
    EXPECT_EQ(0x3412, Utf16Le::native(0x3412));
    EXPECT_EQ(0x1234, Utf16Be::native(0x3412));
    EXPECT_EQ(0x0041, Utf16Le::lit('A'));
    EXPECT_EQ(0x4100, Utf16Be::lit('A'));
    EXPECT_EQ(0x00E4, Utf16Le::lit('\xE4'));  // whether char is signed or not
    EXPECT_EQ(0xE400, Utf16Be::lit('\xE4'));
    EXPECT_EQ(0xE4, Bytes::lit('\xE4'));
    U8 written[2] = {};
    Utf16Le::store(written, 0x3412);
    EXPECT_EQ(0, memcmp(stored, written, 2));
}

// ------------------------------------------------------------------------------------------------------- view

TEST(TextView, ReadsZeroBehindTheData) {
    const Viewed<Bytes> narrow("AB");
    EXPECT_EQ('A', narrow->at(0));
    EXPECT_EQ('B', narrow->at(1));
    EXPECT_EQ(0, narrow->at(2));
    EXPECT_EQ(0, narrow->at(SIZE_MAX));
    const Viewed<Utf16Le> wide("A\0B\0"s);
    EXPECT_EQ('B', wide->at(1));
    EXPECT_EQ(0, wide->at(2));
    EXPECT_EQ(0, wide->at(SIZE_MAX));
    EXPECT_EQ(0, wide->at(SIZE_MAX / 2));
    EXPECT_EQ(0, wide->at(SIZE_MAX / 2 + 1)) << "an index whose byte offset wraps to 0";
}

TEST(TextView, AnOddLastByteIsOneMoreUnit) {
    const Viewed<Utf16Le> little("A\0B"s);
    EXPECT_EQ(1u, little->wholeUnits());
    EXPECT_EQ(2u, little->end());
    EXPECT_EQ('B', little->at(1));
    EXPECT_EQ(0, little->at(2));
    EXPECT_TRUE(little->inside(1));
    EXPECT_FALSE(little->inside(2));
    const Viewed<Utf16Be> big("\0A\x0D"s);
    EXPECT_EQ(0x4100, big->at(0));
    EXPECT_EQ(0x000D, big->at(1)) << "the high byte as stored is missing";
    const Viewed<Utf16Le> one("A");
    EXPECT_EQ(0u, one->wholeUnits());
    EXPECT_EQ(1u, one->end());
    EXPECT_EQ('A', one->at(0));
}

TEST(TextView, OfNothing) {
    const TextView<Bytes> null(nullptr, 100);
    EXPECT_EQ(0u, null.end());
    EXPECT_EQ(0, null.at(0));
    EXPECT_FALSE(null.inside(0));
    EXPECT_EQ(0u, null.nextLine(0));
    EXPECT_EQ(0u, null.skipSpace(0));
    const TextView<Utf16Be> wide(nullptr, 100);
    EXPECT_EQ(0u, wide.nextLine(0));
    const Viewed<Utf16Le> empty("");
    EXPECT_EQ(0u, empty->end());
    EXPECT_EQ(0u, empty->nextLine(0));
    EXPECT_EQ(0, empty->at(0));
}

TEST(TextView, ByteOffsets) {
    EXPECT_EQ(7, TextView<Bytes>::byteOffset(7));
    EXPECT_EQ(14, TextView<Utf16Le>::byteOffset(7));
    EXPECT_EQ(14, TextView<Utf16Be>::byteOffset(7));
}

/// Where each skip goes from each index of a text.
struct SkipRow {
    std::string_view in;
    std::vector<size_t> lineEnd, pastLineEnds, nextLine, space;  // from index 0, 1, ...; the last two lie behind
};

const SkipRow kSkips[] = {
    {"", {0, 1}, {0, 1}, {0, 1}, {0, 1}},
    {"A", {1, 1, 2}, {0, 1, 2}, {1, 1, 2}, {0, 1, 2}},
    {"\n", {0, 1, 2}, {1, 1, 2}, {1, 1, 2}, {1, 1, 2}},
    {"A\r\nB", {1, 1, 2, 4, 4, 5}, {0, 3, 3, 3, 4, 5}, {3, 3, 3, 4, 4, 5}, {0, 3, 3, 3, 4, 5}},
    {"A\n\r\n\n B",
     {1, 1, 2, 3, 4, 7, 7, 7, 8},
     {0, 5, 5, 5, 5, 5, 6, 7, 8},
     {5, 5, 5, 5, 5, 7, 7, 7, 8},
     {0, 6, 6, 6, 6, 6, 6, 7, 8}},
    {" \t\v\f\r\nA",
     {4, 4, 4, 4, 4, 5, 7, 7, 8},
     {0, 1, 2, 3, 6, 6, 6, 7, 8},
     {6, 6, 6, 6, 6, 6, 7, 7, 8},
     {6, 6, 6, 6, 6, 6, 6, 7, 8}},
};

template <class Enc>
void expectSkips(const SkipRow& row, const std::string& bytes) {
    const Viewed<Enc> in(bytes);
    for (size_t i = 0; i < row.lineEnd.size(); ++i) {
        SCOPED_TRACE(std::string(row.in) + " from " + std::to_string(i));
        EXPECT_EQ(row.lineEnd[i], in->toLineEnd(i));
        EXPECT_EQ(row.pastLineEnds[i], in->pastLineEnds(i));
        EXPECT_EQ(row.nextLine[i], in->nextLine(i));
        EXPECT_EQ(row.space[i], in->skipSpace(i));
    }
    for (const size_t behind : {row.in.size() + 1000, SIZE_MAX}) {
        EXPECT_EQ(behind, in->toLineEnd(behind));
        EXPECT_EQ(behind, in->pastLineEnds(behind));
        EXPECT_EQ(behind, in->nextLine(behind));
        EXPECT_EQ(behind, in->skipSpace(behind));
        EXPECT_EQ(behind, in->toUnit(behind, 'A'));
    }
}

TEST(TextView, SkipsStayWithinTheData) {
    for (const SkipRow& row : kSkips) {
        expectSkips<Bytes>(row, std::string(row.in));
        expectSkips<Utf16Le>(row, test::utf16le(row.in, false));
    }
}

// The search for line ends takes a machine word at a time: every length, every place of the first line end.
TEST(TextView, LineEndsAreFoundAtEveryPlace) {
    for (size_t length = 0; length <= 40; ++length) {
        for (const char end : {'\r', '\n'}) {
            for (size_t place = 0; place <= length; ++place) {
                // the fill has the neighbours of CR and LF, with and without high bit
                std::string bytes;
                for (size_t i = 0; i < length; ++i) bytes += "\x0B\x0C\x0E\x09\x8A\x8D\x00\xFF"[i % 8];
                if (place < length) bytes[place] = end;
                if (place + 1 < length) bytes[place + 1] = '\n';
                const Viewed<Bytes> in(bytes);
                for (size_t from = 0; from <= place; ++from) ASSERT_EQ(place, in->toLineEnd(from)) << length;
            }
        }
    }
}

struct BigLine {
    std::string_view in;
    std::vector<size_t> nextLine;
};

// Big-endian lines end with CR and the next LF, however far.
const BigLine kBigLines[] = {
    {"", {0, 1}},
    {"A", {1, 1, 2}},
    {"A\r\nB", {3, 3, 4, 4, 4, 5}},  // from the LF: no CR follows
    {"A\nB", {3, 3, 3, 3, 4}},
    {"A\rB", {3, 3, 3, 3, 4}},  // no LF behind the CR
    {"\rAB\nC", {4, 5, 5, 5, 5, 5, 6}},
    {"\r\r\n\nA", {3, 3, 5, 5, 5, 5, 6}},
    {"\r\n\r\nA", {2, 4, 4, 5, 5, 5, 6}},
};

TEST(TextView, BigEndianLinesEndWithCrAndTheNextLf) {
    for (const BigLine& row : kBigLines) {
        const Viewed<Utf16Be> in(test::utf16be(row.in, false));
        for (size_t i = 0; i < row.nextLine.size(); ++i) {
            EXPECT_EQ(row.nextLine[i], in->nextLine(i)) << row.in << " from " << i;
        }
    }
}

TEST(TextView, OddLastByteCountsForTheLineSkip) {
    const Viewed<Utf16Le> lineEnd("A\0\n"s);  // the LF lost its high byte
    EXPECT_EQ(1u, lineEnd->toLineEnd(0));
    EXPECT_EQ(2u, lineEnd->nextLine(0));
    const Viewed<Utf16Le> other("A\0B"s);
    EXPECT_EQ(2u, other->toLineEnd(0));
    EXPECT_EQ(2u, other->toLineEnd(1));
    const Viewed<Utf16Le> space("A\0 "s);
    EXPECT_EQ(2u, space->skipSpace(1));
    const Viewed<Utf16Be> big("\0\r\0"s);  // half an LF
    EXPECT_EQ(2u, big->nextLine(0));
}

TEST(TextView, SkipsToAUnit) {
    const Viewed<Bytes> narrow("AB=C=");
    EXPECT_EQ(2u, narrow->toUnit(0, '='));
    EXPECT_EQ(2u, narrow->toUnit(2, '='));
    EXPECT_EQ(4u, narrow->toUnit(3, '='));
    EXPECT_EQ(5u, narrow->toUnit(0, '?'));
    EXPECT_EQ(5u, narrow->toUnit(5, '='));
    const Viewed<Utf16Le> odd("A\0="s);
    EXPECT_EQ(1u, odd->toUnit(0, '='));
    EXPECT_EQ(2u, odd->toUnit(0, '?'));
}

/// A line, and a run of blanks, in which a request to stop is looked at several times.
template <class Enc>
void expectLongLines(std::string (*encoded)(std::string_view)) {
    constexpr size_t kLength = 3 * kStopStretch + 5;
    const Viewed<Enc> line(encoded(std::string(kLength, 'x') + "\n="));
    EXPECT_EQ(kLength, line->toLineEnd(0));
    EXPECT_EQ(kLength + 1, line->toUnit(0, Enc::lit('=')));
    EXPECT_EQ(kLength + 2, line->toUnit(0, Enc::lit('?')));
    const Viewed<Enc> blanks(encoded(std::string(kLength, ' ') + "x"));
    EXPECT_EQ(kLength, blanks->skipSpace(0));
    EXPECT_EQ(kLength, blanks->skipBlanks(0));
}

TEST(TextView, LongLinesAreSearchedToTheirEnd) {
    expectLongLines<Bytes>([](std::string_view text) { return std::string(text); });
    expectLongLines<Utf16Le>([](std::string_view text) { return test::utf16le(text, false); });
}

/// Once a request to stop is made nothing is inside any more, and every way through the text ends soon.
template <class Enc>
void expectToEndEarly(std::string (*encoded)(std::string_view)) {
    constexpr size_t kLength = 3 * kStopStretch;
    for (const bool asked : {false, true}) {
        SCOPED_TRACE(asked);
        const U8 state = asked ? StopRequest::kBit : 0;
        const std::string bytes = encoded(std::string(kLength, ' '));
        const TextView<Enc> in(reinterpret_cast<const U8*>(bytes.data()), bytes.size(), StopRequest(state));
        size_t looks = 0;
        EXPECT_EQ(kLength, in.find(7, [&looks](auto) { return ++looks == 0; })) << "not below the end";
        EXPECT_EQ(asked ? kStopStretch / sizeof(typename Enc::Unit) - 7 : kLength - 7, looks);
        EXPECT_EQ(Enc::kBigEndian ? 0 : kLength, in.skipSpace(0));
        EXPECT_EQ(kLength, in.toLineEnd(0));
        EXPECT_EQ(!asked, in.inside(0));
        EXPECT_EQ(kLength, in.end());
        EXPECT_EQ(Enc::lit(' '), in.at(kLength - 1)) << "the data is there all the same";
    }
}

TEST(TextView, EndsEarlyWhenAskedToStop) {
    expectToEndEarly<Bytes>([](std::string_view text) { return std::string(text); });
    expectToEndEarly<Utf16Le>([](std::string_view text) { return test::utf16le(text, false); });
    expectToEndEarly<Utf16Be>([](std::string_view text) { return test::utf16be(text, false); });
}

TEST(CodeTypeOf, TellsTheEncodingByTheMark) {
    const struct {
        std::string_view in;
        EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType;
    } kRows[] = {
        {"\xFF\xFE"
         "A\0"sv,
         E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE},
        {"\xFF\xFE", E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE},
        {"\xFE\xFF\0A"sv, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG},
        {"\xEF\xBB\xBF"
         "A",
         E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8},
        {"\xEF\xBB\xBF", E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8},
        {"\xEF\xBB"
         "A",
         E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE},
        {"\xEF\xBB", E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE},
        {"\xEF", E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE},
        {"\xFF", E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE},
        {"\xFF\xFF", E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE},
        {"\xFF"
         "A",
         E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE},
        {"\xFE\xFE", E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE},
        {"A\xFF\xFE", E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE},
        {"", E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE},
    };
    for (const auto& row : kRows) {
        const Viewed<Bytes> in(row.in);
        EXPECT_EQ(row.codeType, codeTypeOf(*in)) << row.in;
    }
}

// ---------------------------------------------------------------------------------------------------- numbers

TEST(ScanAll, ReadsWithinTheView) {
    const Viewed<Bytes> in("x12:34");
    U32 values[2] = {77, 77};
    EXPECT_TRUE(readAll(*in, 1, "%u:%u", values));
    EXPECT_EQ(12u, values[0]);
    EXPECT_EQ(34u, values[1]);
}

TEST(ScanAll, FailsAtTheEndOfTheView) {
    for (const size_t from : {size_t{4}, size_t{6}, size_t{7}, size_t{1000}, SIZE_MAX - 50}) {
        const Viewed<Bytes> in("x12:34");
        U32 values[2] = {77, 77};
        EXPECT_FALSE(readAll(*in, from, "%u:%u", values)) << from;
    }
}

TEST(ScanAll, KeepsValuesThatWereNotReached) {
    const Viewed<Bytes> in("5:x");
    U32 values[3] = {77, 77, 77};
    EXPECT_FALSE(readAll(*in, 0, "%u:%u:%u", values));
    EXPECT_EQ((std::vector<U32>{5, 0, 77}), std::vector<U32>(values, values + 3));
}

TEST(ScanAll, WantsExactlyAsManyConversionsAsValues) {
    const Viewed<Bytes> in("1 2 3");
    U32 two[2] = {};
    EXPECT_TRUE(readAll(*in, 0, "%u %u %u", two)) << "a third conversion has no slot and ends the scan";
    U32 three[3] = {};
    EXPECT_FALSE(readAll(*in, 0, "%u %u", three));
}

TEST(Milliseconds, CountWrapping) {
    EXPECT_EQ(3723004u, milliseconds(1, 2, 3, 4));
    EXPECT_EQ(61000u, milliseconds(0, 1, 1));
    EXPECT_EQ(99u * 60000 + 99 * 1000 + 5000, milliseconds(0, 99, 99, 5000)) << "no range is checked";
    EXPECT_EQ(static_cast<U32>(2000ULL * 3600000), milliseconds(2000, 0, 0, 0)) << "wraps at 32 bits";
    EXPECT_EQ(0xFFFFFFFFu, milliseconds(0, 0, 0, 0xFFFFFFFF));
}

TEST(Narrowed, PutsTheZeroAtItsIndex) {
    const Viewed<Utf16Le> in(
        "1\0"
        "2\0"
        "3\0"
        "4\0"
        "5\0"s);
    const Narrowed<3> all(*in, 1);
    EXPECT_EQ("234\0"s.substr(0, 3), std::string({char(all.at(0)), char(all.at(1)), char(all.at(2))}));
    EXPECT_EQ(0, all.at(3));
    EXPECT_EQ(0, all.at(6));
    EXPECT_EQ(0, all.at(7));
    EXPECT_EQ(0, all.at(SIZE_MAX));
    const Narrowed<3> fewer(*in, 1, 2);
    EXPECT_EQ('3', fewer.at(1));
    EXPECT_EQ(0, fewer.at(2));
    const Narrowed<3> more(*in, 1, 100);
    EXPECT_EQ('4', more.at(2));
    EXPECT_EQ(0, more.at(3));
}

TEST(Narrowed, WideUnitsPushTheRestBehindTheZero) {
    const Viewed<Utf16Le> little(
        "\x2D\x4E"
        "1\0"
        "2\0"s);
    const Narrowed<3> text(*little, 0);
    EXPECT_EQ(0x2D, text.at(0));
    EXPECT_EQ(0x4E, text.at(1));
    EXPECT_EQ('1', text.at(2));
    EXPECT_EQ(0, text.at(3)) << "the 2 stood here";
    EXPECT_EQ(0, text.at(4));

    const Viewed<Utf16Le> wide("\x2D\x4E\x2E\x4F\x2F\x50"s);
    const Narrowed<3> pushed(*wide, 0);
    EXPECT_EQ(0, pushed.at(3));
    EXPECT_EQ(0x2F, pushed.at(4)) << "what was pushed there";
    EXPECT_EQ(0x50, pushed.at(5));
    EXPECT_EQ(0, pushed.at(6));

    const Viewed<Utf16Be> big("\x4E\x2D\0001\0002"s);
    const Narrowed<3> swapped(*big, 0);
    EXPECT_EQ(0x2D, swapped.at(0));
    EXPECT_EQ(0x4E, swapped.at(1));
    EXPECT_EQ('1', swapped.at(2));
}

// ------------------------------------------------------------------------------------------------- walk pieces

struct WorkBuffer {
    explicit WorkBuffer(std::string_view content) : bytes(new U8[kWorkBufferSize]()) {
        memcpy(bytes.get(), content.data(), content.size());
    }
    std::unique_ptr<U8[]> bytes;  // exactly as long as a parser's
};

TEST(WorkText, ReadsZeroAndWritesNothingBehindTheBuffer) {
    WorkBuffer buffer("AB");
    memset(buffer.bytes.get(), 'x', kWorkBufferSize);
    WorkText<Bytes> narrow(buffer.bytes.get());
    EXPECT_EQ('x', narrow.at(8191));
    for (const U32 i : {8192u, 8193u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        EXPECT_EQ(0, narrow.at(i));
        narrow.set(i, 'y');
    }
    narrow.set(8191, 'y');
    EXPECT_EQ('y', narrow.at(8191));
    WorkText<Utf16Le> wide(buffer.bytes.get());
    EXPECT_EQ(('y' << 8) + 'x', wide.at(4095));
    for (const U32 i : {4096u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(0, wide.at(i));
        wide.set(i, 'z');
    }
    EXPECT_EQ('x', buffer.bytes[0]);
    std::vector<U8> longer(kWorkBufferSize + 2, 'x');
    WorkText<Bytes>(longer.data()).set(8192, 'y');
    WorkText<Utf16Le>(longer.data()).set(4096, 'z');
    EXPECT_EQ(std::vector<U8>(kWorkBufferSize + 2, 'x'), longer);
}

TEST(TextSink, CountsEverythingAndKeepsWhatFits) {
    for (U32 size = 0; size <= 6; ++size) {
        const std::unique_ptr<U8[]> buffer(new U8[size + (size == 0 ? 1 : 0)]);
        TextSink<U8> narrow(buffer.get(), size);
        for (const char c : "ABCD"s) narrow.put(static_cast<U8>(c));
        EXPECT_EQ(4u, narrow.finish());
        EXPECT_EQ("ABCD\0"s.substr(0, std::min(size, 5u)),
                  std::string(buffer.get(), buffer.get() + std::min(size, 5u)));
        TextSink<U16> wide(buffer.get(), size);
        for (const char c : "AB"s) wide.put(static_cast<U8>(c));
        EXPECT_EQ(2u, wide.finish());
        const size_t kept = std::min(size / 2 * 2, 6u);
        EXPECT_EQ("A\0B\0\0\0"s.substr(0, kept), std::string(buffer.get(), buffer.get() + kept));
    }
}

/// Pieces of a text, copied as wholes, against the same unit by unit.
template <class Enc>
void expectPiecesThatFit(const std::string& text) {
    std::vector<U8> source(kWorkBufferSize);
    std::copy(text.begin(), text.end(), source.begin());
    const WorkText<Enc> in(source.data());
    const U32 length = static_cast<U32>(text.size() / sizeof(typename Enc::Unit));
    for (U32 size = 0; size <= 40; ++size) {
        for (U32 piece = 0; piece <= length; ++piece) {
            std::vector<U8> whole(48, 'x'), single(48, 'x');
            TextSink<typename Enc::Unit> out(whole.data(), size), expected(single.data(), size);
            for (U32 from = 0, rounds = 0; rounds < 4; ++rounds, from = std::min(from + piece, length - piece)) {
                out.put(in, from, from + piece);  // the last ones begin behind the buffer's end
                for (U32 i = from; i < from + piece; ++i) expected.put(Enc::native(in.at(i)));
                ASSERT_EQ(expected.count(), out.count());
            }
            ASSERT_EQ(single, whole) << size << " bytes, pieces of " << piece;
        }
    }
}

TEST(TextSink, KeepsOfAPieceWhatFits) {
    expectPiecesThatFit<Bytes>("0123456789abcdefghij");
    expectPiecesThatFit<Utf16Le>(test::utf16le("0123456789abcdefghij", false));
    expectPiecesThatFit<Utf16Be>(test::utf16be("0123456789abcdefghij", false));
}

TEST(TextSink, LooksBackAndCuts) {
    U8 buffer[4];
    TextSink<U8> out(buffer, sizeof buffer);
    EXPECT_EQ(0, out.back(1)) << "nothing yet";
    for (const char c : "ABCDE"s) out.put(static_cast<U8>(c));
    EXPECT_EQ(0, out.back(1)) << "the E was dropped";
    EXPECT_EQ('D', out.back(2));
    EXPECT_EQ('A', out.back(5));
    EXPECT_EQ(0, out.back(6));
    EXPECT_EQ(0, out.back(0));
    out.cut(2);
    EXPECT_EQ('B', out.back(1));
    EXPECT_EQ(2u, out.finish());
    EXPECT_EQ(0, buffer[2]);
    EXPECT_EQ('D', buffer[3]);
}

TEST(TextSink, LooksAtNothingBehindItsBuffer) {
    U8 bytes[] = {0, 0, 0, 0, 'X', 'X'};
    TextSink<U8> out(bytes, 4);
    for (const char c : "ABCDE"s) out.put(static_cast<U8>(c));
    EXPECT_EQ(0, out.back(1)) << "not the X";
    EXPECT_EQ('D', out.back(2));
    TextSink<U16> wide(bytes, 5);  // a byte more than two units
    for (const char c : "abc"s) wide.put(static_cast<U8>(c));
    EXPECT_EQ(0, wide.back(1));
    EXPECT_EQ('b', wide.back(2));
}

TEST(OutputLimits, LeaveRoomForTheEnd) {
    const U32 k8[][2] = {{0, 0}, {1, 0}, {2, 0}, {3, 1}, {8192, 8190}, {0xFFFFFFFF, 0xFFFFFFFD}};
    for (const auto& row : k8) EXPECT_EQ(row[1], outputLimit8(row[0])) << row[0];
    const U32 k16[][2] = {{0, 0}, {1, 0}, {5, 0}, {6, 0}, {7, 0}, {8, 1}, {9, 1}, {10, 2}, {0xFFFFFFFF, 0x7FFFFFFC}};
    for (const auto& row : k16) EXPECT_EQ(row[1], outputLimit16(row[0])) << row[0];
}

struct LineEnd {
    std::string_view in;
    bool breaks;        // CR or LF, then LF
    bool ends;          // where it breaks: the text ends there
    bool breaksMarkup;  // CR LF or LF CR
    bool blank;         // CR LF CR LF
};

const LineEnd kLineEnds[] = {
    {"\r\nA", true, false, true, false},   {"\r\n", true, true, true, false},
    {"\r\n\r\n", true, true, true, true},  {"\r\n\r", true, false, true, false},
    {"\r\n\rA", true, false, true, false}, {"\r\n\n", true, false, true, false},
    {"\n\n", true, true, false, false},    {"\n\nA", true, true, false, false},
    {"\n\n\r", true, true, false, false},  {"\n\r\n", false, false, true, false},
    {"\n\r", false, false, true, false},   {"\n", false, false, false, false},
    {"\r", false, false, false, false},    {"\r\r\n", false, false, false, false},
    {"A\r\n", false, false, false, false},
};

template <class Enc>
void expectLineEnds(const LineEnd& row, const std::string& bytes) {
    const WorkBuffer buffer(bytes);
    const WorkText<Enc> in(buffer.bytes.get());
    EXPECT_EQ(row.breaks, atLineBreak(in, 0)) << row.in;
    if (row.breaks) {
        EXPECT_EQ(row.ends, endsText(in, 0)) << row.in;
    }
    EXPECT_EQ(row.breaksMarkup, atBreakInMarkup(in, 0)) << row.in;
    EXPECT_EQ(row.blank, atBlankLine(in, 0)) << row.in;
}

TEST(TextWalk, LineEnds) {
    for (const LineEnd& row : kLineEnds) {
        expectLineEnds<Bytes>(row, std::string(row.in));
        expectLineEnds<Utf16Le>(row, test::utf16le(row.in, false));
        expectLineEnds<Utf16Be>(row, test::utf16be(row.in, false));
    }
}

TEST(TextWalk, ALineEndAtTheEndOfTheBuffer) {
    const WorkBuffer buffer(std::string(8190, 'x') + "\r\n");
    const WorkText<Bytes> in(buffer.bytes.get());
    EXPECT_TRUE(atLineBreak(in, 8190));
    EXPECT_TRUE(endsText(in, 8190));
    EXPECT_FALSE(atLineBreak(in, 8191));
    EXPECT_FALSE(atBlankLine(in, 8190));
}

TEST(TextWalk, MarkupOpensWithALetterOrSlash) {
    for (U32 c = 0; c < 256; ++c) {
        const std::string in{'<', static_cast<char>(c)};
        const bool opens = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '/';
        const WorkBuffer narrow(in), little(test::utf16le(in, false)), big(test::utf16be(in, false));
        EXPECT_EQ(opens, opensMarkup(WorkText<Bytes>(narrow.bytes.get()), 0)) << c;
        EXPECT_EQ(opens, opensMarkup(WorkText<Utf16Le>(little.bytes.get()), 0)) << c;
        EXPECT_EQ(opens, opensMarkup(WorkText<Utf16Be>(big.bytes.get()), 0)) << c;
    }
}

TEST(TextWalk, FindsAUnitBelowItsBoundAcrossLines) {
    const WorkBuffer buffer("a\r\nb}c}");
    const WorkText<Bytes> in(buffer.bytes.get());
    EXPECT_EQ(4u, findUnit(in, 0, 100, '}'));
    EXPECT_EQ(4u, findUnit(in, 4, 5, '}'));
    EXPECT_EQ(kNone, findUnit(in, 0, 4, '}'));
    EXPECT_EQ(6u, findUnit(in, 5, 0xFFFFFFFF, '}'));
    EXPECT_EQ(kNone, findUnit(in, 7, 0xFFFFFFFF, '}'));
    EXPECT_EQ(kNone, findUnit(in, 0xFFFFFFFE, 0xFFFFFFFF, '}'));
}

struct Closing {
    std::string_view in;  // the markup opens at 0
    U32 bound;
    U32 single, joined;  // where it closes
};

const Closing kClosings[] = {
    {"<b>x", 100, 2, 2},
    {"<b>x", 3, 2, 2},
    {"<b>x", 2, kNone, kNone},
    {"<b", 100, kNone, kNone},
    {"<b", 0xFFFFFFFF, kNone, kNone},
    {"<b><i>x", 100, 2, 5},
    {"<b><i>x", 5, 2, kNone},
    {"<b><i", 100, 2, kNone},
    {"<b\r\n>", 100, kNone, kNone},
    {"<b\n\r>", 100, kNone, kNone},
    {"<b\n>", 100, 3, 3},
    {"<b\r>", 100, 3, 3},
    {"<b\0>"sv, 100, 3, 3},
    {"<>", 100, 1, 1},
};

TEST(CloseFinder, StaysOnItsLineAndBelowItsBound) {
    for (const Closing& row : kClosings) {
        const WorkBuffer buffer(row.in);
        const WorkText<Bytes> in(buffer.bytes.get());
        EXPECT_EQ(row.single, CloseFinder<Bytes>('>').find(in, 0, row.bound)) << row.in;
        EXPECT_EQ(row.joined, CloseFinder<Bytes>('>', Runs::kJoined).find(in, 0, row.bound)) << row.in;
        const WorkBuffer wide(test::utf16be(row.in, false));
        EXPECT_EQ(row.single, CloseFinder<Utf16Be>('>').find(WorkText<Utf16Be>(wide.bytes.get()), 0, row.bound));
    }
    const WorkBuffer zero("<b\0>"sv);
    EXPECT_EQ(
        kNone,
        CloseFinder<Bytes>('>', Runs::kSingle, Zeros::kEndSearch).find(WorkText<Bytes>(zero.bytes.get()), 0, 100));
}

// A search that failed answers for those that begin inside it, and for no others: asking at every place in turn
// gives what a fresh search gives.
TEST(CloseFinder, RemembersOnlyWhatStillHolds) {
    const std::string_view kTexts[] = {"<<<<\r\n<<>\r\n<<", "<a<b>c<d\n\re<f>g", "<\0<>\r<\n<\r\n>"sv, "><><>>\r\n<<>"};
    for (const std::string_view text : kTexts) {
        const WorkBuffer buffer(text);
        const WorkText<Bytes> in(buffer.bytes.get());
        for (const Runs runs : {Runs::kSingle, Runs::kJoined}) {
            for (const Zeros zeros : {Zeros::kPassed, Zeros::kEndSearch}) {
                for (U32 bound = 0; bound <= text.size() + 2; ++bound) {
                    CloseFinder<Bytes> asked('>', runs, zeros);
                    for (U32 open = 0; open < text.size() + 2; ++open) {
                        ASSERT_EQ(CloseFinder<Bytes>('>', runs, zeros).find(in, open, bound),
                                  asked.find(in, open, bound))
                            << "from " << open << " below " << bound;
                    }
                }
            }
        }
    }
}

TEST(TextWalk, StepsOverATagBehindABrace) {
    const struct {
        const char* in;  // the '}' stands at 1
        U32 bound;
        U32 behind;
    } kRows[] = {
        {"y}x", 100, 2},        {"y}", 100, 2},   {"y}<i>x", 100, 5},   {"y}<3>x", 100, 5},
        {"y}<i\r\n>x", 100, 7}, {"y}<i>x", 5, 5}, {"y}<i>x", 4, kNone}, {"y}<i", 100, kNone},
    };
    for (const auto& row : kRows) {
        const WorkBuffer buffer(row.in);
        EXPECT_EQ(row.behind, pastBraceAndTag(WorkText<Bytes>(buffer.bytes.get()), 1, row.bound)) << row.in;
    }
}

}  // namespace
