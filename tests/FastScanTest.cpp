// The quick ways of the scans answer as the plain ones do.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "subtitle/detail/NumberScan.h"
#include "tests/support/Interpose.h"

namespace vxsubtitle {
namespace {

constexpr char kShape[] = "00:00:00,000 --> 00:00:00,000";
constexpr char kFormat[] = "%u:%u:%u,%u --> %u:%u:%u,%u";
constexpr U32 kUntouched = 77;

struct Numbers {
    U32 v[8] = {kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};
    bool operator==(const Numbers& other) const { return std::equal(v, v + 8, other.v); }
};

/// Whether `text` has the shape, the same in all encodings. Where it has, the numbers are the scanner's, also from the
/// narrowed text of the 16-bit formats; where it has not, no number is touched.
template <class Enc>
bool readIn(const std::string& text) {
    const std::vector<U8> exact(text.begin(), text.end());  // a read behind the end is seen
    const TextView<Enc> in(exact.data(), exact.size());
    Numbers columns;
    if (!scanColumns(in, 0, kShape, columns.v)) {
        EXPECT_EQ(columns, Numbers());
        return false;
    }
    Numbers scanned;
    if constexpr (TextView<Enc>::kWidth == 1) {
        EXPECT_TRUE(scanAll(in, 0, kFormat, scanned.v));
    } else {
        EXPECT_TRUE(scanAll(NarrowText<sizeof kShape - 1>(in, 0), 0, kFormat, scanned.v));
    }
    EXPECT_EQ(columns, scanned);
    return true;
}

bool isRead(const std::string& text) {
    SCOPED_TRACE(text);
    const bool read = readIn<Bytes>(text);
    EXPECT_EQ(readIn<Utf16Le>(test::utf16le(text, false)), read);
    EXPECT_EQ(readIn<Utf16Be>(test::utf16be(text, false)), read);
    return read;
}

const std::string kLine = "12:34:56,789 --> 98:76:54,321";

TEST(ScanColumns, ReadsTheShape) {
    EXPECT_TRUE(isRead(kLine));
    EXPECT_TRUE(isRead(kLine + "\r\n"));
    EXPECT_TRUE(isRead(kLine + " X1:40"));
    EXPECT_TRUE(isRead("00:00:00,000 --> 00:00:00,000"));
    EXPECT_TRUE(isRead("99:99:99,999 --> 99:99:99,999"));
}

TEST(ScanColumns, LeavesOtherSpellingsAlone) {
    EXPECT_FALSE(isRead("")) << "no data";
    EXPECT_FALSE(isRead(kLine.substr(0, kLine.size() - 1))) << "a digit short";
    EXPECT_FALSE(isRead(kLine + "0")) << "the last number goes on";
    EXPECT_FALSE(isRead(" " + kLine)) << "a blank in front";
    EXPECT_FALSE(isRead("12:34:56.789 --> 98:76:54.321")) << "points for commas";
    EXPECT_FALSE(isRead("2:34:56,789 --> 8:76:54,321")) << "one-digit hours";
}

TEST(ScanColumns, EveryOtherCharacterAtEveryPlaceIsSeen) {
    for (size_t i = 0; i < kLine.size(); ++i) {
        for (int c = 0; c < 256; ++c) {
            std::string line = kLine;
            line[i] = static_cast<char>(c);
            const bool fits = isDigit(static_cast<U8>(kLine[i])) ? isDigit(U32(c)) : line == kLine;
            EXPECT_EQ(isRead(line), fits);
        }
    }
}

TEST(ScanColumns, TakesWideUnitsForNoDigits) {
    std::string wide = test::utf16le(kLine, false);
    wide[1] = '1';  // U+3131
    EXPECT_FALSE(readIn<Utf16Le>(wide));
    wide = test::utf16be(kLine, false);
    wide[0] = '1';
    EXPECT_FALSE(readIn<Utf16Be>(wide));
}

TEST(ScanColumns, NeedsAsManyNumbersAsTheShapeHas) {
    const std::string text = "1:2";
    const TextView<Bytes> in(reinterpret_cast<const U8*>(text.data()), text.size());
    U32 one[1] = {kUntouched};
    U32 two[2] = {kUntouched, kUntouched};
    U32 three[3] = {kUntouched, kUntouched, kUntouched};
    EXPECT_FALSE(scanColumns(in, 0, "0:0", one));
    EXPECT_TRUE(scanColumns(in, 0, "0:0", two));
    EXPECT_FALSE(scanColumns(in, 0, "0:0", three));
    EXPECT_EQ(one[0], kUntouched);
    EXPECT_EQ(two[0], 1U);
    EXPECT_EQ(two[1], 2U);
    EXPECT_EQ(three[2], kUntouched);
}

// The bytes that are nearly a line end must not be taken for one, whatever stands in front of them in the word.
TEST(FindLineEnd, FindsTheFirstAtEveryPlaceAndLength) {
    const U8 kNearly[] = {0, 9, 11, 12, 14, 0x0D ^ 0x80, 0x0A ^ 0x80, 0xFF, 0x80, 0x0E, 0x01};
    for (size_t size = 0; size < 35; ++size) {
        for (size_t at = 0; at <= size; ++at) {
            for (const U8 filler : kNearly) {
                for (const U8 end : {kCr, kLf}) {
                    std::vector<U8> text(size, filler);
                    if (at < size) text[at] = end;
                    if (at + 1 < size) text[at + 1] = end == kCr ? kLf : kCr;
                    if (at + 2 < size) text[at + 2] = end;
                    const U8* const begin = text.data();
                    EXPECT_EQ(bytes::findLineEnd(begin, begin + size), begin + at)
                        << size << " bytes of " << int{filler} << ", " << int{end} << " at " << at;
                }
            }
        }
    }
}

}  // namespace
}  // namespace vxsubtitle
