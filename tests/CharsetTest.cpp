// The character set tables, encoding detection and the conversions between encodings.
#include "subtitle/charset/Charset.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "subtitle/charset/CharsetTables.h"

namespace {

using namespace android;
using namespace std::literals;

template <class Row, size_t Count>
constexpr size_t countOf(const Row (&)[Count]) {
    return Count;
}

// ---------------------------------------------------------------------------------------------- range tables

template <size_t Count>
std::vector<bool> members(const CharRange (&ranges)[Count]) {
    std::vector<bool> member(0x10000);
    for (const CharRange& range : ranges) {
        for (unsigned code = range.first; code <= range.last; ++code) member[code] = true;
    }
    return member;
}

std::string show(const CharRange& range) {
    char text[16];
    snprintf(text, sizeof text, "%04X-%04X", unsigned(range.first), unsigned(range.last));
    return text;
}

TEST(CharRanges, CountsAndEnds) {
    EXPECT_EQ(102u, countOf(kShiftJISRanges));
    EXPECT_EQ("8140-817E", show(kShiftJISRanges[0]));
    EXPECT_EQ("8180-81AC", show(kShiftJISRanges[1]));
    EXPECT_EQ("81B8-81BF", show(kShiftJISRanges[2]));
    EXPECT_EQ("FC40-FC4B", show(kShiftJISRanges[101]));

    EXPECT_EQ(261u, countOf(kGBKRanges));
    EXPECT_EQ("8140-817E", show(kGBKRanges[0]));
    EXPECT_EQ("8180-81FE", show(kGBKRanges[1]));
    EXPECT_EQ("8240-827E", show(kGBKRanges[2]));
    EXPECT_EQ("FE40-FE4F", show(kGBKRanges[260]));

    EXPECT_EQ(174u, countOf(kBig5Ranges));
    EXPECT_EQ("A140-A17E", show(kBig5Ranges[0]));
    EXPECT_EQ("A1A1-A1FE", show(kBig5Ranges[1]));
    EXPECT_EQ("A240-A27E", show(kBig5Ranges[2]));
    EXPECT_EQ("F9A1-F9FE", show(kBig5Ranges[173]));
}

template <size_t Count>
void expectDisjointRows(const CharRange (&ranges)[Count]) {
    for (size_t i = 0; i < Count; ++i) {
        EXPECT_LE(ranges[i].first, ranges[i].last) << show(ranges[i]);
        EXPECT_EQ(ranges[i].first >> 8, ranges[i].last >> 8) << show(ranges[i]) << " leaves its row";
        if (i == 0) continue;
        EXPECT_LT(ranges[i - 1].last + 1, ranges[i].first) << show(ranges[i - 1]) << " goes on as " << show(ranges[i]);
    }
}

TEST(CharRanges, AscendDisjointRowByRow) {
    expectDisjointRows(kShiftJISRanges);
    expectDisjointRows(kGBKRanges);
    expectDisjointRows(kBig5Ranges);
}

// User-defined blocks are left out of the ranges, the euro sign's code is in.
TEST(CharRanges, BlocksThatAreLeftOut) {
    const std::vector<bool> shiftJisCodes = members(kShiftJISRanges);
    const std::vector<bool> gbkCodes = members(kGBKRanges);
    const std::vector<bool> big5Codes = members(kBig5Ranges);
    EXPECT_TRUE(shiftJisCodes[0xEEFC]);
    for (unsigned code = 0xF000; code < 0xFA00; ++code) EXPECT_FALSE(shiftJisCodes[code]) << std::hex << code;
    EXPECT_TRUE(shiftJisCodes[0xFA40]);
    EXPECT_FALSE(gbkCodes[0xA140]);
    EXPECT_FALSE(gbkCodes[0xAAA1]);
    EXPECT_TRUE(gbkCodes[0xAA40]);
    EXPECT_FALSE(gbkCodes[0xF8A1]);
    EXPECT_TRUE(big5Codes[0xA3E1]);
    EXPECT_FALSE(big5Codes[0xA3E0]);
    EXPECT_FALSE(big5Codes[0xA3E2]);
    EXPECT_TRUE(big5Codes[0xC67E]);
    for (unsigned code = 0xC6A1; code <= 0xC8FE; ++code) EXPECT_FALSE(big5Codes[code]) << std::hex << code;
    EXPECT_TRUE(big5Codes[0xC940]);
}

// ---------------------------------------------------------------------------------------------- detection

struct Utf8Row {
    std::string_view text;
    bool valid;
};

std::ostream& operator<<(std::ostream& out, const Utf8Row& row) { return out << testing::PrintToString(row.text); }

bool isUtf8(std::string_view text) {
    const std::vector<U8> exact(text.begin(), text.end());  // so that a read too far is seen
    return vxsubtitle::isUtf8(exact.data(), exact.size());
}

TEST(IsUtf8, Rows) {
    const Utf8Row rows[] = {
        {"", true},
        {"plain ASCII\r\n", true},
        {"a\0\x7F"sv, true},  // a 0 byte does not end the range
        {"\x80", false},
        {"\xBF", false},
        {"a\x80", false},
        {"\xC0", true},  // cut off by the end
        {"\xC3", true},
        {"\xDF", true},
        {"\xC3\xA9", true},
        {"\xC3\x7F", false},
        {"\xC3\x80", true},
        {"\xC3\xBF", true},
        {"\xC3\xC0", false},
        {"\xC0\x80", true},  // kept(charset-utf8-test): overlong
        {"\xC3\xA9\x80", false},
        {"\xC3\xA9\xC3", true},
        {"\xE4", true},
        {"\xE4\xB8", true},
        {"\xE4z", true},  // kept(charset-utf8-test): cut off, the byte there is not looked at
        {"\xE4\xC3", true},
        {"\xE4\xB8\xAD", true},
        {"\xE4z\xAD", false},
        {"\xE4\xB8z", false},
        {"\xE4\xC0\xAD", false},
        {"\xE4\xB8\xC0", false},
        {"\xE0\x80\x80", true},  // kept(charset-utf8-test): overlong
        {"\xED\xA0\x80", true},  // kept(charset-utf8-test): a surrogate
        {"\xEF\xBF\xBF", true},
        {"\xE4\xB8\xAD\xE6\x96\x87 \xC3\xA9", true},
        {"\xE4\xB8\xAD\xE6\x96z", false},
        {"\xF0", false},  // kept(charset-utf8-test): four-byte leads, even at the end
        {"\xF0\x9F\x98\x80", false},
        {"\xF8", false},
        {"\xFF", false},
        {"ok\xFF", false},
        {"\xB0\xA1\xB0\xA2", false},  // GBK
    };
    for (const Utf8Row& row : rows) EXPECT_EQ(row.valid, isUtf8(row.text)) << row;
}

TEST(IsUtf8, LengthBelowOne) {
    const U8 stray = 0x80;
    EXPECT_TRUE(vxsubtitle::isUtf8(&stray, 0));
    EXPECT_TRUE(vxsubtitle::isUtf8(nullptr, 0));
    EXPECT_TRUE(vxsubtitle::isUtf8(nullptr, 5));
}

// What each kind of byte may be followed by, over all pairs of bytes and a third that closes a sequence of three.
TEST(IsUtf8, AllPairs) {
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            const bool continues = second >= 0x80 && second < 0xC0;
            const bool begins = second < 0x80 || (second >= 0xC0 && second < 0xF0);
            const bool pair = first < 0x80 ? begins : first < 0xC0 ? false : first < 0xE0 ? continues : first < 0xF0;
            const char text[] = {char(first), char(second), '\xA9'};
            ASSERT_EQ(pair, isUtf8({text, 2})) << std::hex << first << ' ' << second;
            if (first >= 0xE0 && first < 0xF0) {
                ASSERT_EQ(continues, isUtf8({text, 3})) << std::hex << first << ' ' << second;
            }
        }
    }
}

U32 possibleEncodings(std::string_view text) {
    std::vector<U8> exact(text.begin(), text.end());
    const U32 unterminated = vxsubtitle::possibleEncodings(exact.data(), exact.size());
    exact.push_back(0);
    const U32 terminated = vxsubtitle::possibleEncodings(exact.data(), ~0ull);
    EXPECT_EQ(terminated, unterminated) << testing::PrintToString(text);
    return terminated;
}

struct EncodingRow {
    std::string_view text;
    U32 encodings;  // 1 Shift-JIS, 2 GBK, 4 Big5
};

TEST(PossibleEncodings, Rows) {
    const EncodingRow rows[] = {
        {"", 7},
        {"Plain ASCII, \x7F\r\n", 7},
        {"\xA4\x40", 4},
        {"\xFE\x45", 2},
        {"\xB0\xA1", 6},
        {"\x81\x40", 3},
        {"\xB0\xA1\x81\x40", 3},  // kept(charset-last-pair)
        {"\x81\x40\xB0\xA1", 6},
        {"\xB0\xA1 and more", 6},
        {"\xB0\xA1\xA4\x40\xFE\x45", 4},  // the first decisive pair ends the search
        {"\xB0\xA1\xFE\x45\xA4\x40", 2},
        {"a\xFE\x45", 2},  // pairs begin wherever a byte from 0x80 on stands
        {"a\xA4\x40", 4},
        {"\xA4\x31\xA4\x40", 4},  // a trail byte below 0x40 is taken all the same ...
        {"\xA4\xA4\x40\x41", 6},  // ... and pairs do not overlap: A4A4, then ASCII
        {"\xA4\x31", 0},
        {"\xA4\x31 text", 0},  // the last code decides, not the last byte
        {"\x80\x40", 0},
        {"\xFF\xFF", 0},
        {"\xFF\xA4\x40", 0},  // FFA4, then ASCII
        {"\xF9\xFE", 4},      // last codes of the tables
        {"\xFE\x4F", 2},
        {"\xFE\x50", 0},
        {"\xFC\x4B", 3},
        {"\xA3\xE1", 6},
        {"Stra\xC3\x9F\x65", 2},          // kept(utf8-unmarked-as-gbk): C39F
        {"\xE4\xB8\xAD\xE5\x9B\xBD", 4},  // kept(utf8-unmarked-as-big5): ADE5, behind E4B8 that all three have
        {"\xA4", 0},                      // kept(charset-last-pair): a lead byte at the end is a code, A400
        {"\xB0\xA1\xA4", 0},
        {"text\x81", 0},
        {"\xA4\x40\x81", 4},  // unless something decided before
    };
    for (const EncodingRow& row : rows) {
        EXPECT_EQ(row.encodings, possibleEncodings(row.text)) << testing::PrintToString(row.text);
    }
    EXPECT_EQ(7u, vxsubtitle::possibleEncodings(nullptr, 2));
}

TEST(PossibleEncodings, NothingBehindTheTerminatorIsRead) {
    const U8 direct[] = {'a', 0, 0xA4, 0x40, 0};
    EXPECT_EQ(7u, vxsubtitle::possibleEncodings(direct, sizeof direct));
    EXPECT_EQ(7u, vxsubtitle::possibleEncodings(direct + 1, sizeof direct - 1));
    const U8 afterLead[] = {0xB0, 0xA1, 0xB0, 0, 0xA4, 0x40, 0};  // the walk does not step over the terminator
    EXPECT_EQ(0u, vxsubtitle::possibleEncodings(afterLead, sizeof afterLead));
}

TEST(PossibleEncodings, CapacityEndsTheText) {
    const U8 text[] = {'a', 0xA4, 0x40, 0xFE, 0x45};
    EXPECT_EQ(7u, vxsubtitle::possibleEncodings(text, 0));
    EXPECT_EQ(7u, vxsubtitle::possibleEncodings(text, 1));
    EXPECT_EQ(0u, vxsubtitle::possibleEncodings(text, 2));
    EXPECT_EQ(4u, vxsubtitle::possibleEncodings(text, 3));
}

// Every code against a plain walk over the ranges.
TEST(PossibleEncodings, AllCodes) {
    const std::vector<bool> shiftJisCodes = members(kShiftJISRanges);
    const std::vector<bool> gbkCodes = members(kGBKRanges);
    const std::vector<bool> big5Codes = members(kBig5Ranges);
    for (unsigned code = 0x8000; code < 0x10000; ++code) {
        const U8 text[] = {U8(code >> 8), U8(code), 0};
        const U32 expected = (shiftJisCodes[code] ? 1u : 0u) + (gbkCodes[code] ? 2u : 0u) + (big5Codes[code] ? 4u : 0u);
        ASSERT_EQ(expected, vxsubtitle::possibleEncodings(text, sizeof text)) << std::hex << code;
    }
}

// ---------------------------------------------------------------------------------------------- conversion tables

struct Mapping {
    unsigned code, unicode;
};

template <class Row, size_t Count>
std::vector<Mapping> mappings(const Row (&rows)[Count]) {
    std::vector<Mapping> list;
    for (const Row& row : rows) list.push_back({vxsubtitle::firstCode(row), row.u16Unicode});
    return list;
}

U16 gb(U16 code) { return vxsubtitle::gbToUnicode(code); }
U16 big5(U16 code) { return vxsubtitle::big5ToUnicode(code); }
U16 farsi(U16 code) { return vxsubtitle::farsiToUnicode(U8(code)); }
U16 spanish(U16 code) { return vxsubtitle::spanishToUnicode(U8(code)); }
U16 hebrew(U16 code) { return vxsubtitle::hebrewToUnicode(U8(code)); }

struct Charset {
    const char* name;
    U16 (*convert)(U16);
    std::vector<Mapping> rows;
    size_t count;
    Mapping first, last;    // their codes bound the domain: what lies outside is returned unchanged
    const char* iconvName;  // the C library's name of the same or nearly the same set

    unsigned codes() const { return last.code > 0xFF ? 0x10000 : 0x100; }
};

// clang-format off
std::vector<Charset> charsets() {
    return {
        {"GBK",     gb,      mappings(GB2Unicode),       23940, {0x8140, 0x4E02}, {0xFEFE, 0xE4C5}, "GB18030"},
        {"Big5",    big5,    mappings(Big5toUnicode),    13710, {0xA140, 0x3000}, {0xF9D5, 0x9F98}, "CP950"},
        {"Farsi",   farsi,   mappings(FarsitoUnicode),     128, {0x80, 0x20AC}, {0xFF, 0x06D2},   "CP1256"},
        {"Spanish", spanish, mappings(SpanishtoUnicode),   123, {0x80, 0x20AC}, {0xFF, 0x00FF},   "CP1252"},
        {"Hebrew",  hebrew,  mappings(HebrewtoUnicode),     51, {0xAA, 0x00D7}, {0xFE, 0x200F},   "ISO-8859-8"},
    };
}
// clang-format on

TEST(ConversionTables, CountsOrderAndEnds) {
    for (const Charset& set : charsets()) {
        SCOPED_TRACE(set.name);
        ASSERT_EQ(set.count, set.rows.size());
        EXPECT_EQ(set.first.code, set.rows.front().code);
        EXPECT_EQ(set.first.unicode, set.rows.front().unicode);
        EXPECT_EQ(set.last.code, set.rows.back().code);
        EXPECT_EQ(set.last.unicode, set.rows.back().unicode);
        for (size_t i = 1; i < set.rows.size(); ++i) ASSERT_LT(set.rows[i - 1].code, set.rows[i].code) << i;
    }
    EXPECT_EQ(0xA141u, Big5toUnicode[1].u16Big5code);
    EXPECT_EQ(0xFF0Cu, Big5toUnicode[1].u16Unicode);
    EXPECT_EQ(0x067Eu, FarsitoUnicode[1].u16Unicode);
}

TEST(ConversionTables, CodesCovered) {
    std::vector<unsigned> gbk, farsiCodes, spanishCodes, hebrewCodes;
    for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
        for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
            if (trail != 0x7F) gbk.push_back(lead << 8 | trail);
        }
    }
    for (unsigned code = 0x80; code <= 0xFF; ++code) {
        farsiCodes.push_back(code);
        if (code != 0x81 && code != 0x8D && code != 0x8F && code != 0x90 && code != 0x9D) spanishCodes.push_back(code);
        if (code >= 0xAA && code != 0xFF && (code < 0xBF || code > 0xDE) && code != 0xFB && code != 0xFC) {
            hebrewCodes.push_back(code);
        }
    }
    const auto codes = [](const std::vector<Mapping>& rows) {
        std::vector<unsigned> list;
        for (const Mapping& row : rows) list.push_back(row.code);
        return list;
    };
    EXPECT_EQ(gbk, codes(mappings(GB2Unicode)));
    EXPECT_EQ(farsiCodes, codes(mappings(FarsitoUnicode)));
    EXPECT_EQ(spanishCodes, codes(mappings(SpanishtoUnicode)));
    EXPECT_EQ(hebrewCodes, codes(mappings(HebrewtoUnicode)));
}

// Every code of all five sets against a plain walk over the table.
TEST(Conversions, AllCodes) {
    for (const Charset& set : charsets()) {
        std::vector<unsigned> expected(set.codes());
        for (unsigned code = 0; code < set.codes(); ++code) {
            expected[code] = code >= set.first.code && code <= set.last.code ? 0xFFFF : code;
        }
        for (const Mapping& row : set.rows) expected[row.code] = row.unicode;
        for (unsigned code = 0; code < set.codes(); ++code) {
            ASSERT_EQ(expected[code], set.convert(U16(code))) << set.name << ' ' << std::hex << code;
        }
    }
}

struct CodeRow {
    U16 (*convert)(U16);
    U16 code, unicode;
};

TEST(Conversions, Rows) {
    const CodeRow rows[] = {
        {gb, 0x41, 0x41},        {gb, 0x7F, 0x7F},        {gb, 0x80, 0x80},
        {gb, 0x813F, 0x813F},    {gb, 0x8140, 0x4E02},    {gb, 0x817F, 0xFFFF},  // in the domain, no such trail byte
        {gb, 0x81FF, 0xFFFF},    {gb, 0x8200, 0xFFFF},    {gb, 0xA2E3, 0x20AC},
        {gb, 0xA8BC, 0xE7C7},                           // as the edition of 2000 has it
        {gb, 0xA6D9, 0xE78D},    {gb, 0xAAA1, 0xE000},  // user-defined
        {gb, 0xB0A1, 0x554A},    {gb, 0xD6D0, 0x4E2D},    {gb, 0xFE51, 0xE816},
        {gb, 0xFEA0, 0xE864},    {gb, 0xFEFE, 0xE4C5},    {gb, 0xFEFF, 0xFEFF},
        {gb, 0xFF00, 0xFF00},    {big5, 0x41, 0x41},      {big5, 0xA13F, 0xA13F},
        {big5, 0xA140, 0x3000},  {big5, 0xA141, 0xFF0C},  {big5, 0xA17F, 0xFFFF},
        {big5, 0xA3E1, 0xFFFF},  // the euro sign is in the ranges, not in the table
        {big5, 0xA440, 0x4E00},  {big5, 0xA4A4, 0x4E2D},  {big5, 0xC6A1, 0x30FE},
        {big5, 0xC8FE, 0xFFFF},  {big5, 0xF9D5, 0x9F98},  {big5, 0xF9D6, 0xF9D6},
        {farsi, 0x00, 0x00},     {farsi, 0x7F, 0x7F},     {farsi, 0x80, 0x20AC},
        {farsi, 0x81, 0x067E},   {farsi, 0xFF, 0x06D2},   {spanish, 0x7F, 0x7F},
        {spanish, 0x80, 0x20AC}, {spanish, 0x81, 0xFFFF}, {spanish, 0x83, 0x0192},
        {spanish, 0x8D, 0xFFFF}, {spanish, 0x9D, 0xFFFF}, {spanish, 0xE9, 0x00E9},
        {spanish, 0xFF, 0x00FF}, {hebrew, 0x41, 0x41},    {hebrew, 0x80, 0x80},  // kept(charset-hebrew)
        {hebrew, 0xA4, 0xA4},    {hebrew, 0xA9, 0xA9},    {hebrew, 0xAA, 0x00D7},
        {hebrew, 0xBE, 0x00BE},  {hebrew, 0xBF, 0xFFFF},  {hebrew, 0xC0, 0xFFFF},
        {hebrew, 0xDE, 0xFFFF},  {hebrew, 0xDF, 0x2017},  {hebrew, 0xE0, 0x05D0},
        {hebrew, 0xFA, 0x05EA},  {hebrew, 0xFB, 0xFFFF},  {hebrew, 0xFC, 0xFFFF},
        {hebrew, 0xFD, 0x200E},  {hebrew, 0xFE, 0x200F},  {hebrew, 0xFF, 0xFF},
    };
    for (const CodeRow& row : rows) {
        EXPECT_EQ(row.unicode, row.convert(row.code)) << &row - rows << ": " << std::hex << row.code;
    }
}

// Where the Big5 mapping and code page 950 disagree, files made on desktops mean the latter.
TEST(Conversions, Big5FollowsCodePage950) {
    const Mapping rows[] = {
        {0xA145, 0x2027}, {0xA14E, 0xFE51}, {0xA1C2, 0x00AF}, {0xA1E3, 0xFF5E}, {0xA1F2, 0x2295}, {0xA1F3, 0x2299},
        {0xA241, 0x2215}, {0xA242, 0xFE68}, {0xA244, 0xFFE5}, {0xA246, 0xFFE0}, {0xA247, 0xFFE1},
    };
    for (const Mapping& row : rows) EXPECT_EQ(row.unicode, vxsubtitle::big5ToUnicode(U16(row.code)));
}

class Iconv {
public:
    explicit Iconv(const char* name) : mState(iconv_open("UTF-16LE", name)) {}
    ~Iconv() {
        if (usable()) iconv_close(mState);
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    bool usable() const { return mState != iconv_t(-1); }

    // The unit for a code, or -1 where the code stands for no character or for one beyond 16 bits.
    int unit(unsigned code) {
        char in[] = {char(code >> 8), char(code)};
        U8 out[8];
        char* from = code > 0xFF ? in : in + 1;
        char* to = reinterpret_cast<char*>(out);
        size_t fromLeft = code > 0xFF ? 2 : 1;
        size_t toLeft = sizeof out;
        iconv(mState, nullptr, nullptr, nullptr, nullptr);
        if (iconv(mState, &from, &fromLeft, &to, &toLeft) == size_t(-1) || toLeft != sizeof out - 2) return -1;
        return out[0] | out[1] << 8;
    }

private:
    iconv_t mState;
};

// An independent source: the C library's own tables, but for the codes known to stand otherwise there.
TEST(Conversions, AgreeWithTheCLibrary) {
    const std::set<unsigned> laterEditions = {
        0xA6D9, 0xA6DA, 0xA6DB, 0xA6DC, 0xA6DD, 0xA6DE, 0xA6DF, 0xA6EC, 0xA6ED, 0xA6F3, 0xA8BC, 0xFE51, 0xFE52,
        0xFE53, 0xFE59, 0xFE61, 0xFE66, 0xFE67, 0xFE6C, 0xFE6D, 0xFE76, 0xFE7E, 0xFE90, 0xFE91, 0xFEA0,
    };
    for (const Charset& set : charsets()) {
        Iconv library(set.iconvName);
        if (!library.usable()) GTEST_SKIP() << "the C library has no " << set.iconvName << " here";
        for (const Mapping& row : set.rows) {
            if (set.iconvName == "GB18030"sv && laterEditions.count(row.code) != 0) continue;
            if (set.iconvName == "CP950"sv && row.code >= 0xC6A1 && row.code <= 0xC8FE) continue;  // private use there
            ASSERT_EQ(library.unit(row.code), int(row.unicode)) << set.name << ' ' << std::hex << row.code;
        }
    }
}

int gProbes;

struct CountedRow {
    U16 code;
};
U16 firstCode(const CountedRow& row) { return row.code; }
U16 lastCode(const CountedRow& row) {
    ++gProbes;
    return row.code;
}

TEST(FindRow, AtMostFifteenProbesInTheLargestTable) {
    static CountedRow rows[23940];
    for (size_t i = 0; i < countOf(rows); ++i) rows[i].code = U16(2 * i);
    int most = 0;
    for (unsigned code = 0; code < 0x10000; ++code) {
        gProbes = 0;
        const CountedRow* const row = vxsubtitle::findRow(rows, U16(code));
        ASSERT_EQ(code % 2 == 0 && code / 2 < countOf(rows), row != nullptr) << code;
        ASSERT_EQ(code, row != nullptr ? row->code : code);
        most = std::max(most, gProbes);
    }
    EXPECT_EQ(15, most);
}

TEST(InOrder, SeesWhatIsWrong) {
    const CharRange good[] = {{1, 2}, {3, 3}};
    const CharRange overlapping[] = {{1, 3}, {3, 4}};
    const CharRange turned[] = {{2, 1}, {3, 4}};
    const Farsi2UnicodeTb2 twice[] = {{0x80, 1}, {0x80, 2}};
    const Farsi2UnicodeTb2 descending[] = {{0x81, 1}, {0x80, 2}};
    EXPECT_TRUE(vxsubtitle::inOrder(good));
    EXPECT_FALSE(vxsubtitle::inOrder(overlapping));
    EXPECT_FALSE(vxsubtitle::inOrder(turned));
    EXPECT_FALSE(vxsubtitle::inOrder(twice));
    EXPECT_FALSE(vxsubtitle::inOrder(descending));
}

// ---------------------------------------------------------------------------------------------- UTF-8 to UTF-16

using Units = std::vector<U16>;

// Converts into a block of exactly `capacity` units, prefilled so that what is not written shows.
Units toUcs2(std::string_view text, U16 capacity) {
    const std::vector<U8> exact(text.begin(), text.end());
    Units out(capacity, 0xEEEE);
    const U16 bytes = vxsubtitle::utf8ToUcs2(exact.data(), out.data(), U16(exact.size()), capacity);
    EXPECT_EQ(0, bytes % 2);
    EXPECT_LE(bytes / 2u, out.size());
    for (size_t i = bytes / 2u; i < out.size(); ++i) EXPECT_EQ(0xEEEE, out[i]) << "unit " << i << " was written";
    out.resize(bytes / 2u);
    return out;
}

struct Ucs2Row {
    std::string_view text;
    U16 capacity;
    Units units;
};

TEST(Utf8ToUcs2, Rows) {
    const Ucs2Row rows[] = {
        {"Az\x7F", 8, {'A', 'z', 0x7F}},
        {"\xC3\xA9", 8, {0xE9}},
        {"\xE4\xB8\xAD", 2, {0x4E2D}},
        {"\xE4\xB8\xAD", 1, {}},
        {"\xE4\xB8\xAD", 0, {}},
        {"", 8, {}},
        {"a\xC3\xA9\xE4\xB8\xAD\x62", 8, {'a', 0xE9, 0x4E2D, 'b'}},
        {"ab", 2, {'a'}},  // kept(charset-last-unit): it is held back
        {"abc", 3, {'a', 'b'}},
        {"a\0b"sv, 8, {'a'}},
        {"\0b"sv, 8, {}},
        {"\xC3\0b"sv, 8, {0xC0, 'b'}},  // continuation bytes are not checked, not even a 0
        {"\xC3zb", 8, {0xFA, 'b'}},
        {"\xE4zz", 8, {0x4EBA}},
        {"\xE4\0\0x"sv, 8, {0x4000, 'x'}},
        {"\xC0\x80", 8, {0}},
        {"\xEF\xBF\xBF", 8, {0xFFFF}},
        {"\xED\xA0\xBD\xED\xB8\x80", 8, {0xD83D, 0xDE00}},  // surrogates one by one
        {"\x80z", 8, {'z'}},                                // stray bytes give nothing
        {"\xBF\x80\xBFz", 8, {'z'}},
        {"\xF8z", 8, {'z'}},
        {"\xFE\xFFz", 8, {'z'}},
        {"\xF8\x88\x80\x80\x80z", 8, {'z'}},
        {"z\xC3", 8, {'z'}},  // cut off: the lead gives nothing, the rest is walked on
        {"z\xE4\xB8", 8, {'z'}},
        {"\xE4z", 8, {'z'}},
        {"\xE4\xC3\xA9", 8, {0x40E9}},
        {"\xE4\xC3", 8, {}},
        {"\xF0\x9F\x98", 8, {}},
        {"\xF0z\x98", 8, {'z'}},
        {"\xF0\xC3\xA9", 8, {0xE9}},
        {"\xF0\x9F\x98\x80", 8, {0xDE00, 0xFFFD}},  // kept(charset-surrogates): the low half first
        {"\xF0\x9F\x98\x80z", 8, {0xDE00, 0xFFFD, 'z'}},
        {"\xF4\x8F\xBF\xBF", 8, {0xDFFF, 0xFFFF}},
        {"\xF0\x90\x80\x80", 8, {0xDC00, 0xFFC0}},
        {"\xF7zzz", 8, {0xDEBA, 0xFFEB}},
        {"\xF0\x9F\x98\x80", 2, {0xDE00, 0xFFFD}},  // kept(charset-last-unit): the second half fills it
        {"a\xF0\x9F\x98\x80", 3, {'a', 0xDE00, 0xFFFD}},
        {"a\xF0\x9F\x98\x80z", 3, {'a', 0xDE00, 0xFFFD}},
        {"a\xF0\x9F\x98\x80", 2, {'a'}},
    };
    for (const Ucs2Row& row : rows) {
        EXPECT_EQ(row.units, toUcs2(row.text, row.capacity)) << &row - rows << ": " << testing::PrintToString(row.text);
    }
}

TEST(Utf8ToUcs2, RefusesNothingness) {
    const U8 text[] = {'a', 'b'};
    U16 out[4] = {1, 2, 3, 4};
    EXPECT_EQ(0, vxsubtitle::utf8ToUcs2(nullptr, out, 2, 4));
    EXPECT_EQ(0, vxsubtitle::utf8ToUcs2(text, nullptr, 2, 4));
    EXPECT_EQ(0, vxsubtitle::utf8ToUcs2(text, out, 0, 4));
    EXPECT_EQ(0, vxsubtitle::utf8ToUcs2(text, out, 2, 1));
    EXPECT_EQ(0, vxsubtitle::utf8ToUcs2(text, out, 2, 0));
    EXPECT_EQ(1, out[0]);
    EXPECT_EQ(2, vxsubtitle::utf8ToUcs2(text, out, 2, 2));
    EXPECT_EQ('a', out[0]);
    EXPECT_EQ(2, out[1]);
}

// The two units of a four-byte form, over all values of the bytes that they are made of.
TEST(Utf8ToUcs2, AllFourByteForms) {
    for (unsigned second = 0; second < 256; ++second) {
        for (unsigned third = 0; third < 256; ++third) {
            const U8 last = U8(second ^ third);
            const U8 text[] = {U8(0xF0 | (third & 7)), U8(second), U8(third), last};
            U16 units[2];
            ASSERT_EQ(4, vxsubtitle::utf8ToUcs2(text, units, 4, 2));
            ASSERT_EQ(0xDC00 | 64 * (third % 64) | last % 64, U32(units[0])) << std::hex << second << ' ' << third;
            ASSERT_EQ(0xFFC0 | 4 * second | third % 64 / 16, U32(units[1])) << std::hex << second << ' ' << third;
        }
    }
}

// kept(charset-count-wraps)
TEST(Utf8ToUcs2, CountOfBytesWraps) {
    const std::vector<U8> text(0xFFFF, 'x');
    Units out(0xFFFF, 0);
    EXPECT_EQ(0xFFFE, vxsubtitle::utf8ToUcs2(text.data(), out.data(), 0x7FFF, 0xFFFF));
    EXPECT_EQ(0, vxsubtitle::utf8ToUcs2(text.data(), out.data(), 0x8000, 0xFFFF));
    EXPECT_EQ(2, vxsubtitle::utf8ToUcs2(text.data(), out.data(), 0x8001, 0xFFFF));
    EXPECT_EQ(0xFFFC, vxsubtitle::utf8ToUcs2(text.data(), out.data(), 0xFFFF, 0xFFFF));
    EXPECT_EQ('x', out[0xFFFD]);
    EXPECT_EQ(0, out[0xFFFE]);
}

// ---------------------------------------------------------------------------------------------- UTF-16 to UTF-8

std::string toUtf8(const Units& units, int bytes) {
    std::vector<U8> out(3 * units.size() + 1, 0xEE);
    const int written = vxsubtitle::unicodeToUtf8(units.data(), bytes, out.data());
    EXPECT_EQ(0, out[size_t(written)]) << "terminator";
    return std::string(out.begin(), out.begin() + written);
}

struct Utf16Row {
    Units units;
    std::string_view text;
};

TEST(UnicodeToUtf8, Rows) {
    const Utf16Row rows[] = {
        {{'A'}, "A"},
        {{0}, "\0"sv},  // a 0 unit is converted like any other
        {{'A', 0, 'B'}, "A\0B"sv},
        {{0x7F}, "\x7F"},
        {{0x80}, "\xC2\x80"},
        {{0xE9}, "\xC3\xA9"},
        {{0x7FF}, "\xDF\xBF"},
        {{0x800}, "\xE0\xA0\x80"},
        {{0x4E2D}, "\xE4\xB8\xAD"},
        {{0xFFFF}, "\xEF\xBF\xBF"},
        {{0xFEFF, 'a'}, "\xEF\xBB\xBF\x61"},
        {{0xD83D, 0xDE00}, "\xED\xA0\xBD\xED\xB8\x80"},  // kept(charset-surrogates): one by one
    };
    for (const Utf16Row& row : rows) {
        EXPECT_EQ(row.text, toUtf8(row.units, int(2 * row.units.size()))) << &row - rows;
    }
}

TEST(UnicodeToUtf8, BytesOfTheSource) {
    EXPECT_EQ("", toUtf8({'A', 'B'}, 0));
    EXPECT_EQ("", toUtf8({'A', 'B'}, 1));
    EXPECT_EQ("", toUtf8({'A', 'B'}, -2));
    EXPECT_EQ("A", toUtf8({'A', 'B'}, 2));
    EXPECT_EQ("A", toUtf8({'A', 'B'}, 3));  // an odd byte is left alone
    EXPECT_EQ("AB", toUtf8({'A', 'B'}, 4));
}

TEST(UnicodeToUtf8, NullPointers) {
    const U16 unit = 'A';
    U8 out[4] = {1, 2, 3, 4};
    EXPECT_EQ(0, vxsubtitle::unicodeToUtf8(nullptr, 2, out));
    EXPECT_EQ(0, out[0]);
    EXPECT_EQ(2, out[1]);
    EXPECT_EQ(0, vxsubtitle::unicodeToUtf8(&unit, 2, nullptr));
}

// All 65,536 units there and back; surrogates included, 0 ends the way back.
TEST(UnicodeToUtf8, RoundTripOfAllUnits) {
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const U16 source = U16(unit);
        U8 text[4];
        const int bytes = vxsubtitle::unicodeToUtf8(&source, 2, text);
        ASSERT_EQ(unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3, bytes) << unit;
        ASSERT_TRUE(vxsubtitle::isUtf8(text, U64(bytes))) << unit;
        U16 back[2] = {0xEEEE, 0xEEEE};
        ASSERT_EQ(unit == 0 ? 0 : 2, vxsubtitle::utf8ToUcs2(text, back, U16(bytes), 2)) << unit;
        ASSERT_EQ(unit == 0 ? 0xEEEE : unit, U32(back[0])) << unit;
        ASSERT_EQ(0xEEEE, back[1]) << unit;
    }
}

TEST(UnicodeToUtf8, RoundTripOfLongText) {
    Units units;
    for (unsigned unit = 1; unit < 0x10000; unit += 3) units.push_back(U16(unit));
    const std::string text = toUtf8(units, int(2 * units.size()));
    ASSERT_LT(text.size(), 0x10000u);
    EXPECT_EQ(units, toUcs2(text, U16(units.size() + 1)));
}

// Players hand over addresses of any alignment.
TEST(Conversions, UnalignedUnits) {
    alignas(2) U8 raw[12] = {0xEE, 0xE9, 0x00, 0x2D, 0x4E, 0xEE};
    U8 text[8];
    ASSERT_EQ(5, vxsubtitle::unicodeToUtf8(reinterpret_cast<const U16*>(raw + 1), 4, text));
    EXPECT_STREQ("\xC3\xA9\xE4\xB8\xAD", reinterpret_cast<const char*>(text));
    memset(raw, 0xEE, sizeof raw);
    ASSERT_EQ(4, vxsubtitle::utf8ToUcs2(text, reinterpret_cast<U16*>(raw + 1), 5, 3));
    const U8 expected[] = {0xEE, 0xE9, 0x00, 0x2D, 0x4E, 0xEE};
    EXPECT_EQ(0, memcmp(expected, raw, sizeof expected));
}

// ---------------------------------------------------------------------------------------------- byte order

std::string swapped(std::string_view text, size_t len) {
    std::vector<U8> bytes(text.begin(), text.end());
    vxsubtitle::swapUnits(bytes.data(), U32(len));
    return std::string(bytes.begin(), bytes.end());
}

TEST(SwapUnits, Rows) {
    EXPECT_EQ("\x41\0\x42\0"sv, swapped("\0\x41\0\x42"sv, 4));
    EXPECT_EQ("\x41\0\0\x42"sv, swapped("\0\x41\0\x42"sv, 3));  // an odd last byte is left alone
    EXPECT_EQ("\x41\0\0\x42"sv, swapped("\0\x41\0\x42"sv, 2));
    EXPECT_EQ("\0\x41\0\x42"sv, swapped("\0\x41\0\x42"sv, 1));
    EXPECT_EQ("\0\x41\0\x42"sv, swapped("\0\x41\0\x42"sv, 0));
    EXPECT_EQ("z", swapped("z", 1));
}

TEST(SwapUnits, AnyLength) {
    std::string text(40, '\0');
    for (size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(200 + i);
    for (size_t len = 0; len <= text.size(); ++len) {
        std::string expected = text;
        for (size_t i = 0; i + 1 < len; i += 2) std::swap(expected[i], expected[i + 1]);
        EXPECT_EQ(expected, swapped(text, len)) << len;
    }
}

TEST(SwapUnits, AnyAlignment) {
    U8 bytes[] = {0xEE, 1, 2, 3, 4, 0xEE};
    vxsubtitle::swapUnits(bytes + 1, 4);
    const U8 expected[] = {0xEE, 2, 1, 4, 3, 0xEE};
    EXPECT_EQ(0, memcmp(expected, bytes, sizeof expected));
}

}  // namespace
