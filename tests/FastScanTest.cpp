// The quick ways of the scans answer as the plain ones do.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "subtitle/text/TimeStamps.h"
#include "tests/support/Interpose.h"

namespace vxsubtitle {
namespace {

constexpr U32 kUntouched = 77;

template <class Spelling>
struct Numbers {
    Numbers() { std::fill(v, std::end(v), kUntouched); }
    bool operator==(const Numbers& other) const { return std::equal(v, std::end(v), other.v); }
    U32 v[TimeStamp<Spelling>::kNumbers];
};

/// Whether `text` has the shape, the same in all encodings. Where it has, the numbers are those under the format, also
/// from the narrowed text of the 16-bit formats; where it has not, the columns refuse it.
template <class Spelling, class Enc>
bool readIn(const std::string& text) {
    const std::vector<U8> exact(text.begin(), text.end());  // a read behind the end is seen
    const TextView<Enc> in(exact.data(), exact.size());
    Numbers<Spelling> columns;
    if (!readColumns(in, 0, Spelling::kShape, columns.v)) return false;
    Numbers<Spelling> byFormat;
    EXPECT_TRUE(readNarrowed<TimeStamp<Spelling>::kLength>(in, 0, Spelling::kFormat, byFormat.v));
    EXPECT_EQ(columns, byFormat);
    return true;
}

template <class Spelling>
class ReadColumns : public testing::Test {
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

using Spellings =
    testing::Types<SrtSpelling, SsaSpelling, TxtSpelling, SubViewer20Spelling, SubViewer10Spelling, DvbSpelling>;
TYPED_TEST_SUITE(ReadColumns, Spellings);

TYPED_TEST(ReadColumns, ReadsTheShape) {
    EXPECT_TRUE(this->isRead(this->line));
    EXPECT_TRUE(this->isRead(this->line + "\r\n"));
    EXPECT_TRUE(this->isRead(this->line + " X1:40"));
    std::string same = TypeParam::kShape;
    EXPECT_TRUE(this->isRead(same));
    std::replace(same.begin(), same.end(), '0', '9');
    EXPECT_TRUE(this->isRead(same));
}

TYPED_TEST(ReadColumns, LeavesOtherSpellingsAlone) {
    EXPECT_FALSE(this->isRead("")) << "no data";
    EXPECT_FALSE(this->isRead(this->line.substr(0, this->line.size() - 1))) << "a character short";
    EXPECT_FALSE(this->isRead(this->line + "0")) << "goes on with a digit";
    EXPECT_FALSE(this->isRead(" " + this->line)) << "a blank in front";
    EXPECT_FALSE(this->isRead(this->line.substr(1))) << "less in front";
}

TYPED_TEST(ReadColumns, EveryOtherCharacterAtEveryPlaceIsSeen) {
    for (size_t i = 0; i < this->line.size(); ++i) {
        for (int c = 0; c < 256; ++c) {
            std::string other = this->line;
            other[i] = static_cast<char>(c);
            const bool fits = isDigit(static_cast<U8>(this->line[i])) ? isDigit(U32(c)) : other == this->line;
            EXPECT_EQ(this->isRead(other), fits);
        }
    }
}

TYPED_TEST(ReadColumns, TakesWideUnitsForNoDigits) {
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

TEST(ReadColumnsOf, NeedsAsManyNumbersAsTheShapeHas) {
    const std::string text = "1:2";
    const TextView<Bytes> in(reinterpret_cast<const U8*>(text.data()), text.size());
    U32 one[1] = {kUntouched};
    U32 two[2] = {kUntouched, kUntouched};
    U32 three[3] = {kUntouched, kUntouched, kUntouched};
    EXPECT_FALSE(readColumns(in, 0, "0:0", one));
    EXPECT_TRUE(readColumns(in, 0, "0:0", two));
    EXPECT_FALSE(readColumns(in, 0, "0:0", three));
    EXPECT_EQ(two[0], 1U);
    EXPECT_EQ(two[1], 2U);
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
