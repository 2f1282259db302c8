// The quick ways of the scans answer as the plain ones do.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
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
    if (!readColumns<Spelling>(in, 0, columns.v)) return false;
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
    const std::string kBehind = std::string(8, '\n');  // a shape is taken where the view goes on behind it
};

using Spellings =
    testing::Types<SrtSpelling, SsaSpelling, TxtSpelling, SubViewer20Spelling, SubViewer10Spelling, DvbSpelling>;
TYPED_TEST_SUITE(ReadColumns, Spellings);

TYPED_TEST(ReadColumns, ReadsTheShape) {
    EXPECT_TRUE(this->isRead(this->line + this->kBehind));
    EXPECT_TRUE(this->isRead(this->line + "\r\n" + this->kBehind));
    EXPECT_TRUE(this->isRead(this->line + " X1:40" + this->kBehind));
    std::string same = TypeParam::kShape;
    EXPECT_TRUE(this->isRead(same + this->kBehind));
    std::replace(same.begin(), same.end(), '0', '9');
    EXPECT_TRUE(this->isRead(same + this->kBehind));
}

TYPED_TEST(ReadColumns, LeavesOtherSpellingsAlone) {
    EXPECT_FALSE(this->isRead("")) << "no data";
    EXPECT_FALSE(this->isRead(this->line.substr(0, this->line.size() - 1) + this->kBehind)) << "a character short";
    const bool endsInDigit = isDigit(static_cast<U8>(this->line.back()));
    EXPECT_EQ(this->isRead(this->line + "0" + this->kBehind), !endsInDigit) << "goes on with a digit";
    EXPECT_FALSE(this->isRead(" " + this->line + this->kBehind)) << "a blank in front";
    EXPECT_FALSE(this->isRead(this->line.substr(1) + this->kBehind)) << "less in front";
}

TYPED_TEST(ReadColumns, LeavesTheEndOfTheDataAlone) {
    bool read = false;
    for (size_t size = 0; size <= this->line.size() + this->kBehind.size(); ++size) {
        const bool longer = this->isRead((this->line + this->kBehind).substr(0, size));
        EXPECT_TRUE(longer || !read) << size;
        read = longer;
        EXPECT_TRUE(!read || size >= this->line.size()) << size;
    }
    EXPECT_TRUE(read);
}

TYPED_TEST(ReadColumns, EveryOtherCharacterAtEveryPlaceIsSeen) {
    for (size_t i = 0; i < this->line.size(); ++i) {
        for (int c = 0; c < 256; ++c) {
            std::string other = this->line;
            other[i] = static_cast<char>(c);
            const bool fits = isDigit(static_cast<U8>(this->line[i])) ? isDigit(U32(c)) : other == this->line;
            EXPECT_EQ(this->isRead(other + this->kBehind), fits);
        }
    }
}

TYPED_TEST(ReadColumns, TakesWideUnitsForNoCharacters) {
    for (size_t i = 0; i < this->line.size(); ++i) {
        for (const char high : {'\1', '1', '\x7F', '\x80', '\xFF'}) {
            std::string wide = test::utf16le(this->line + this->kBehind, false);
            wide[2 * i + 1] = high;
            EXPECT_FALSE((readIn<TypeParam, Utf16Le>(wide))) << i;
            wide = test::utf16be(this->line + this->kBehind, false);
            wide[2 * i] = high;
            EXPECT_FALSE((readIn<TypeParam, Utf16Be>(wide))) << i;
        }
    }
    // Behind the shape they are none of its business: the narrowed text ends there.
    EXPECT_TRUE(
        (readIn<TypeParam, Utf16Le>(test::utf16le(this->line, false) + "91" + test::utf16le(this->kBehind, false))));
    EXPECT_TRUE(
        (readIn<TypeParam, Utf16Be>(test::utf16be(this->line, false) + "91" + test::utf16be(this->kBehind, false))));
}

// ---- Forms ----

struct Braces {
    static constexpr char kForm[] = "{#}{#}";
    static constexpr char kFormat[] = "{%u}{%u}";
};

/// What the number reader makes of `text` in 8-bit data, and whether the form is taken from it in each encoding: then
/// the numbers are the same, as many as there are.
template <class Enc>
size_t formIn(const std::string& text, const std::string& narrow) {
    const std::vector<U8> exact(text.begin(), text.end());
    const TextView<Enc> in(exact.data(), exact.size());
    U32 byForm[2] = {};
    const size_t length = readForm<Braces>(in, 0, byForm);
    if (length == 0) return 0;
    const std::vector<U8> bytes(narrow.begin(), narrow.end());
    U32 byFormat[2] = {};
    EXPECT_TRUE(readAll(TextView<Bytes>(bytes.data(), bytes.size()), 0, Braces::kFormat, byFormat));
    EXPECT_EQ(byForm[0], byFormat[0]);
    EXPECT_EQ(byForm[1], byFormat[1]);
    EXPECT_EQ(narrow[length - 1], '}');
    return length;
}

size_t formOf(const std::string& text) {
    SCOPED_TRACE(text);
    const size_t length = formIn<Bytes>(text, text);
    EXPECT_EQ(formIn<Utf16Le>(test::utf16le(text, false), text), length);
    EXPECT_EQ(formIn<Utf16Be>(test::utf16be(text, false), text), length);
    return length;
}

const std::string kBehind(36, '\n');  // a form is taken where the view goes on behind it

TEST(ReadForm, TakesNumbersOfAnyUsualLength) {
    for (size_t first = 1; first <= kUsualDigits; ++first) {
        for (size_t second = 1; second <= kUsualDigits; ++second) {
            const std::string digits = "987654321098765432";
            const std::string text = "{" + digits.substr(0, first) + "}{" + digits.substr(18 - second) + "}";
            EXPECT_EQ(formOf(text + kBehind), text.size());
            EXPECT_EQ(formOf(text + "1" + kBehind), text.size());
        }
    }
    EXPECT_EQ(formOf("{0}{0}" + kBehind), 6U);
    EXPECT_EQ(formOf("{1234567890123456}{1}" + kBehind), 0U);
    EXPECT_EQ(formOf("{1}{1234567890123456}" + kBehind), 0U);
}

TEST(ReadForm, EveryOtherCharacterAtEveryPlaceIsSeen) {
    for (const std::string form : {"{1}{2}", "{12}{345}", "{1234567}{12345678}", "{123456789}{1}"}) {
        for (size_t i = 0; i < form.size(); ++i) {
            for (int c = 0; c < 256; ++c) {
                std::string other = form;
                other[i] = static_cast<char>(c);
                const bool digit = isDigit(static_cast<U8>(form[i]));
                if (digit && c == '}') continue;  // may end the last number
                const bool fits = digit ? isDigit(U32(c)) : other == form;
                EXPECT_EQ(formOf(other + kBehind), fits ? form.size() : 0);
            }
        }
    }
}

TEST(ReadForm, IsLeftToTheNumberReaderAtTheEndOfTheData) {
    const std::string text = "{12}{345}";
    for (size_t size = 0; size < text.size() + kBehind.size(); ++size) {
        const size_t length = formOf((text + kBehind).substr(0, size));
        EXPECT_TRUE(length == 0 || (length == text.size() && size > text.size())) << size;
    }
}

TEST(ReadForm, TakesWideUnitsForNoCharacters) {
    const std::string text = "{12}{345}";
    for (size_t i = 0; i < text.size(); ++i) {
        std::string wide = test::utf16le(text + kBehind, false);
        wide[2 * i + 1] = '1';
        EXPECT_EQ((formIn<Utf16Le>(wide, text)), 0U);
        wide[2 * i + 1] = '\xFF';
        EXPECT_EQ((formIn<Utf16Le>(wide, text)), 0U);
        wide = test::utf16be(text + kBehind, false);
        wide[2 * i] = '1';
        EXPECT_EQ((formIn<Utf16Be>(wide, text)), 0U);
    }
}

// A line with a number alone is stepped over in front of a time stamp: the number reader makes nothing of it.
TEST(PastNumberLine, IsNoTimingLine) {
    const std::string stamp = "12:34:56,789 --> 98:76:54,321";
    for (const std::string digits :
         {"0", "12", "123", "1234", "12345", "123456", "1234567", "12345678", "123456789012345"}) {
        for (const std::string end : {"\r\n", "\n"}) {
            const std::string text = digits + end + stamp + "\r\n";
            const std::vector<U8> bytes(text.begin(), text.end());
            const TextView<Bytes> in(bytes.data(), bytes.size());
            EXPECT_EQ(pastNumberLine(in, 0), digits.size() + end.size());
            EXPECT_EQ(in.nextLine(0), digits.size() + end.size());
            U32 numbers[8];
            EXPECT_FALSE(readAll(in, 0, SrtSpelling::kFormat, numbers)) << text;
            const std::string big = test::utf16be(text, false);
            const TextView<Utf16Be> wide(reinterpret_cast<const U8*>(big.data()), big.size());
            EXPECT_EQ(pastNumberLine(wide, 0), end == "\n" ? 0 : wide.nextLine(0));
        }
    }
}

TEST(PastNumberLine, OnlyANumberAndTheLineEnd) {
    for (const std::string text : {"\r\n", "1\r", "1 \r\n", " 1\r\n", "x\n", "1\n\r", "1x\n", "1234567890123456\n"}) {
        const std::vector<U8> bytes(text.begin(), text.end());
        std::vector<U8> more = bytes;
        more.resize(bytes.size() + 32, 'y');
        const TextView<Bytes> in(more.data(), more.size());
        EXPECT_EQ(pastNumberLine(in, 0), text == "1\n\r" ? 2U : 0U) << text;
    }
}

// ---- Keywords ----

constexpr char kWord[] = "<SYNC START=";

template <class Enc>
bool isKeyword(const std::string& text) {
    const std::vector<U8> exact(text.begin(), text.end());
    return atKeyword<kWord>(TextView<Enc>(exact.data(), exact.size()), 0);
}

TEST(AtKeyword, EveryOtherCharacterAtEveryPlaceIsSeen) {
    for (size_t i = 0; i < sizeof kWord - 1; ++i) {
        for (int c = 0; c < 256; ++c) {
            std::string text = "<sYnC sTaRt=";
            text[i] = static_cast<char>(c);
            const bool same = upperCase(static_cast<U8>(c)) == static_cast<U8>(kWord[i]);
            for (const std::string behind : {"", "1", "1234567890"}) {
                EXPECT_EQ(isKeyword<Bytes>(text + behind), same) << i << ' ' << c;
                EXPECT_EQ((isKeyword<Utf16Le>(test::utf16le(text + behind, false))), same) << i << ' ' << c;
                EXPECT_EQ((isKeyword<Utf16Be>(test::utf16be(text + behind, false))), same) << i << ' ' << c;
            }
        }
    }
    EXPECT_FALSE(isKeyword<Bytes>("<sync start"));
    EXPECT_TRUE(isKeyword<Utf16Le>("<S" + test::utf16le("YNC START=12", false))) << "two characters in a unit";
    EXPECT_TRUE(isKeyword<Utf16Be>("S<" + test::utf16be("YNC START=12", false)));
}

// ---- Lines and units ----

/// What a look at one unit after the other gives.
template <class Enc>
struct Plain {
    const TextView<Enc>& in;

    size_t skip(size_t i, bool lineEnds) const {
        while (i < in.end() && isLineEnd<Enc>(in.at(i)) == lineEnds) ++i;
        return i;
    }
    size_t nextLine(size_t i) const {
        if (!Enc::kBigEndian) return skip(skip(i, false), true);
        for (const char c : {'\r', '\n'}) {
            while (i < in.end() && in.at(i) != Enc::lit(c)) ++i;
            if (i < in.end()) ++i;
        }
        return i;
    }
    size_t find(size_t i, char c, U32 count) const {
        for (; i < in.wholeUnits(); ++i) {
            if (in.at(i) == Enc::lit(c) && --count == 0) return i;
        }
        return i;
    }
};

template <class Enc>
void expectPlain(const std::vector<U8>& bytes, const std::string& what) {
    const std::vector<U8> exact(bytes);
    const TextView<Enc> in(exact.data(), exact.size());
    const Plain<Enc> plain{in};
    size_t before = 0;
    for (size_t i = 0; i < in.end() + 3; ++i) {
        const size_t next = plain.nextLine(i);
        ASSERT_EQ(in.nextLine(i), next) << what << " from " << i;
        ASSERT_EQ(in.nextLineSoon(i), next) << what << " from " << i;
        ASSERT_EQ(in.template nextLineBehind<0>(i), next) << what << " from " << i;
        ASSERT_EQ(in.template nextLineBehind<11>(i), next) << what << " from " << i;
        ASSERT_EQ(in.nextLine(i, in.lineAhead(before)), next) << what << " from " << i << ", ahead of " << before;
        if (i % 7 == 0) before = i;
        ASSERT_EQ(in.toLineEnd(i), plain.skip(i, false)) << what << " from " << i;
        ASSERT_EQ(in.findUnit(i, Enc::lit('\r')), plain.find(i, '\r', 1)) << what << " from " << i;
        if (const size_t soon = in.behindSoon(i, Enc::lit('\r'))) {
            ASSERT_EQ(soon, plain.find(i, '\r', 1) + 1) << what << " from " << i;
        }
        for (U32 count = 1; count < 4; ++count) {
            const size_t near = in.behindNear(i, Enc::lit('\n'), count);
            if (near == 0) continue;
            ASSERT_EQ(near, plain.find(i, '\n', count) + 1) << what << " from " << i;
        }
    }
}

template <class Enc>
void expectPlain(const std::string& units, const std::string& what) {
    std::string text = sizeof(typename Enc::Unit) == 1 ? units
                       : Enc::kBigEndian               ? test::utf16be(units, false)
                                                       : test::utf16le(units, false);
    expectPlain<Enc>(std::vector<U8>(text.begin(), text.end()), what);
    for (const char odd : {'x', '\r', '\n'}) {
        text += odd;
        if (sizeof(typename Enc::Unit) == 2) expectPlain<Enc>(std::vector<U8>(text.begin(), text.end()), what);
        text.pop_back();
    }
}

void expectPlainInAll(const std::string& units) {
    expectPlain<Bytes>(units, "8 bits, " + std::to_string(units.size()));
    expectPlain<Utf16Le>(units, "little-endian, " + std::to_string(units.size()));
    expectPlain<Utf16Be>(units, "big-endian, " + std::to_string(units.size()));
}

// The units that are nearly a line end must not be taken for one, whatever stands around them.
TEST(Lines, AreFoundAtEveryPlaceAndLength) {
    const char kNearly[] = {0, 9, 11, 12, 14, '\x8D', '\x8A', '\xFF', '\x80', 1};
    for (size_t size = 0; size < 70; ++size) {
        for (size_t at = 0; at <= size; at += size < 12 ? 1 : 5) {
            std::string text(size, kNearly[(size + at) % sizeof kNearly]);
            if (at < size) text[at] = at % 2 != 0 ? '\r' : '\n';
            if (at + 1 < size) text[at + 1] = at % 2 != 0 ? '\n' : '\r';
            if (at + 2 < size && at % 3 == 0) text[at + 2] = '\r';
            expectPlainInAll(text);
        }
    }
}

TEST(Lines, AreFoundInLongRunsAndInLongLines) {
    for (const size_t size : {63, 64, 65, 127, 128, 129, 200}) {
        expectPlainInAll(std::string(size, '\n'));
        expectPlainInAll(std::string(size, 'x') + "\r\n");
        expectPlainInAll(std::string(size, 'x') + std::string(size, '\r') + "\nx");
        expectPlainInAll("x" + std::string(size - 1, '\n') + std::string(70, 'y'));
    }
}

// The breaks that are expected, and everything that differs from them in a character.
TEST(Lines, AreFoundWhereTheyAreExpected) {
    for (const std::string usual : {"00:00:07,2=\r\n0", "\r\n\r\nx", "Dia,logue"}) {
        expectPlainInAll(usual + std::string(70, 'y'));
        for (size_t length = 0; length <= usual.size(); ++length) expectPlainInAll(usual.substr(0, length));
        for (size_t at = 0; at < usual.size(); ++at) {
            for (const char c : {'\r', '\n', 'x'}) {
                std::string text = usual;
                text[at] = c;
                expectPlainInAll(text);
                expectPlainInAll(text + std::string(70, 'y'));
            }
        }
    }
}

TEST(Lines, AreFoundInAnyText) {
    std::mt19937 random(5);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts every time
    for (int round = 0; round < 60; ++round) {
        std::string text;
        const size_t size = random() % 300;
        const auto often = 2 + random() % 40;
        while (text.size() < size) text += random() % often == 0 ? (random() % 2 == 0 ? '\r' : '\n') : 'a';
        expectPlainInAll(text);
    }
}

}  // namespace
}  // namespace vxsubtitle
