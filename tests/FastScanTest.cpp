// The quick ways of the scans answer as the plain ones do.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "subtitle/text/NumberScan.h"
#include "tests/support/Interpose.h"

namespace vxsubtitle {
namespace {

constexpr U32 kUntouched = 77;

/// The usual spelling of a time stamp, the format that it stands for, and how many numbers are in it.
struct Srt {
    static constexpr char kShape[] = "00:00:00,000 --> 00:00:00,000";
    static constexpr char kFormat[] = "%u:%u:%u,%u --> %u:%u:%u,%u";
    static constexpr U32 kNumbers = 8;
};

struct Ssa {
    static constexpr char kShape[] = "0:00:00.00,0:00:00.00";
    static constexpr char kFormat[] = "%u:%u:%u.%u,%u:%u:%u.%u";
    static constexpr U32 kNumbers = 8;
};

struct Txt {
    static constexpr char kShape[] = "00:00:00,0=";
    static constexpr char kFormat[] = "%u:%u:%u,%u=";
    static constexpr U32 kNumbers = 4;
};

struct SubViewer20 {
    static constexpr char kShape[] = "00:00:00.00,00:00:00.00";
    static constexpr char kFormat[] = "%u:%u:%u.%u,%u:%u:%u.%u";
    static constexpr U32 kNumbers = 8;
};

struct SubViewer10 {
    static constexpr char kShape[] = "[00:00:00]";
    static constexpr char kFormat[] = "[%u:%u:%u]";
    static constexpr U32 kNumbers = 3;
};

struct DvbSubtitleSystem {
    static constexpr char kShape[] = "00:00:00:00 00:00:00:00 ";
    static constexpr char kFormat[] = "%u:%u:%u:%u %u:%u:%u:%u";
    static constexpr U32 kNumbers = 8;
};

template <class Spelling>
struct Numbers {
    Numbers() { std::fill(v, std::end(v), kUntouched); }
    bool operator==(const Numbers& other) const { return std::equal(v, std::end(v), other.v); }
    U32 v[Spelling::kNumbers];
};

/// Whether `text` has the shape, the same in all encodings. Where it has, the numbers are the scanner's, also from the
/// narrowed text of the 16-bit formats; where it has not, no number is touched.
template <class Spelling, class Enc>
bool readIn(const std::string& text) {
    const std::vector<U8> exact(text.begin(), text.end());  // a read behind the end is seen
    const TextView<Enc> in(exact.data(), exact.size());
    Numbers<Spelling> columns;
    if (!scanColumns(in, 0, Spelling::kShape, columns.v)) {
        EXPECT_EQ(columns, Numbers<Spelling>());
        return false;
    }
    Numbers<Spelling> scanned;
    EXPECT_TRUE(scanLine<sizeof Spelling::kShape - 1>(in, 0, Spelling::kFormat, scanned.v));
    EXPECT_EQ(columns, scanned);
    return true;
}

template <class Spelling>
class ScanColumns : public testing::Test {
protected:
    static bool isRead(const std::string& text) {
        SCOPED_TRACE(text);
        const bool read = readIn<Spelling, Bytes>(text);
        EXPECT_EQ((readIn<Spelling, Utf16Le>(test::utf16le(text, false))), read);
        EXPECT_EQ((readIn<Spelling, Utf16Be>(test::utf16be(text, false))), read);
        return read;
    }

    /// The shape with every digit another.
    static std::string digits() {
        std::string line = Spelling::kShape;
        int digit = 0;
        for (char& c : line) {
            if (c == '0') c = static_cast<char>('0' + ++digit % 10);
        }
        return line;
    }

    const std::string line = digits();
};

using Spellings = testing::Types<Srt, Ssa, Txt, SubViewer20, SubViewer10, DvbSubtitleSystem>;
TYPED_TEST_SUITE(ScanColumns, Spellings);

TYPED_TEST(ScanColumns, ReadsTheShape) {
    EXPECT_TRUE(this->isRead(this->line));
    EXPECT_TRUE(this->isRead(this->line + "\r\n"));
    EXPECT_TRUE(this->isRead(this->line + " X1:40"));
    std::string same = TypeParam::kShape;
    EXPECT_TRUE(this->isRead(same));
    std::replace(same.begin(), same.end(), '0', '9');
    EXPECT_TRUE(this->isRead(same));
}

TYPED_TEST(ScanColumns, LeavesOtherSpellingsAlone) {
    EXPECT_FALSE(this->isRead("")) << "no data";
    EXPECT_FALSE(this->isRead(this->line.substr(0, this->line.size() - 1))) << "a character short";
    EXPECT_FALSE(this->isRead(this->line + "0")) << "goes on with a digit";
    EXPECT_FALSE(this->isRead(" " + this->line)) << "a blank in front";
    EXPECT_FALSE(this->isRead(this->line.substr(1))) << "less in front";
}

TYPED_TEST(ScanColumns, EveryOtherCharacterAtEveryPlaceIsSeen) {
    for (size_t i = 0; i < this->line.size(); ++i) {
        for (int c = 0; c < 256; ++c) {
            std::string other = this->line;
            other[i] = static_cast<char>(c);
            const bool fits = isDigit(static_cast<U8>(this->line[i])) ? isDigit(U32(c)) : other == this->line;
            EXPECT_EQ(this->isRead(other), fits);
        }
    }
}

TYPED_TEST(ScanColumns, TakesWideUnitsForNoDigits) {
    const size_t digit = 2 * this->line.find_first_of("0123456789");
    std::string wide = test::utf16le(this->line, false);
    wide[digit + 1] = '1';  // U+3131
    EXPECT_FALSE((readIn<TypeParam, Utf16Le>(wide)));
    wide = test::utf16be(this->line, false);
    wide[digit] = '1';
    EXPECT_FALSE((readIn<TypeParam, Utf16Be>(wide)));
    // Behind the shape they are none of its business: the narrowed text ends there.
    EXPECT_TRUE((readIn<TypeParam, Utf16Le>(test::utf16le(this->line, false) + "91")));
    EXPECT_TRUE((readIn<TypeParam, Utf16Be>(test::utf16be(this->line, false) + "91")));
}

TEST(ScanColumnsOf, NeedsAsManyNumbersAsTheShapeHas) {
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
