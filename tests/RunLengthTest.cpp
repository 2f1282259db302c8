// The run lengths of a field, read a word at a time, against a reading of a half byte after the other.
#include "subtitle/vobsub/RunLength.h"

#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using namespace vxsubtitle;

namespace {

using Data = std::vector<U8>;

/// A field's place in a unit, and its rows in a bitmap.
struct Field {
    size_t offset, budget;
    U32 width, rows;
    size_t start, step;
};

/// The field as its code says, a pixel at a time; what lies behind the unit reads 0.
void decodePlainly(const Data& unit, const Field& field, Data& out) {
    size_t half = 2 * field.offset;
    const size_t end = 2 * (field.offset + field.budget);
    for (U32 row = 0; row < field.rows; ++row) {
        half += half % 2;
        size_t at = field.start + row * field.step;
        for (U32 column = 0; column < field.width;) {
            U32 code = 0;
            bool whole = false;
            for (U32 least = 4; !whole && half < end; least *= 4) {
                const U8 byte = half / 2 < unit.size() ? unit[half / 2] : U8{0};
                code = code << 4 | (half++ % 2 == 0 ? byte >> 4U : byte & 15U);
                whole = code >= least || least == 0x100;
            }
            if (!whole) break;
            const U32 run = code >> 2 != 0 ? code >> 2 : field.width - column;
            for (U32 i = 0; i < run; ++i, ++at) {
                if (at < out.size()) out[at] = code & 3;
            }
            column += run;
        }
    }
}

void decode(const Data& unit, const Field& field, Data& out) {
    FieldRows rows({out.data(), out.size()}, field.start, field.step);
    walkField(FieldWalk(RunReader({unit.data(), unit.size()}, field.offset, field.budget), field.width, rows),
              field.rows);
}

void decodeBoth(const Data& unit, const Field& top, const Field& bottom, Data& out) {
    const TextView<Bytes> in(unit.data(), unit.size());
    const CodeSink sink = {out.data(), out.size()};
    FieldRows topRows(sink, top.start, top.step);
    FieldRows bottomRows(sink, bottom.start, bottom.step);
    walkFields(FieldWalk({in, top.offset, top.budget}, top.width, topRows),
               FieldWalk({in, bottom.offset, bottom.budget}, bottom.width, bottomRows), top.rows);
}

/// Both into blocks of exactly their sizes that hold something already.
void expectTheSame(const Data& unit, const Field& field, size_t size) {
    Data out(size, 0x5A), expected(size, 0x5A);
    decode(unit, field, out);
    decodePlainly(unit, field, expected);
    ASSERT_EQ(expected, out) << "unit of " << unit.size() << ", field of " << field.budget << " at " << field.offset
                             << ", rows of " << field.width;
}

class Random {
public:
    explicit Random(unsigned seed) : mRandom(seed) {}
    U32 below(U32 n) { return static_cast<U32>(mRandom() % n); }

private:
    std::mt19937 mRandom;
};

/// Codes of all lengths, most of them short.
Data someUnit(Random& random, size_t size) {
    Data unit(size);
    for (U8& byte : unit) {
        byte = static_cast<U8>(random.below(256));
        if (random.below(4) == 0) byte &= 0x0F;
        if (random.below(16) == 0) byte = 0;
    }
    return unit;
}

/// Runs of 64 to 255, and now and then one to the end of the row.
Data longRuns(Random& random, size_t size) {
    Data unit;
    while (unit.size() < size) {
        const U32 code = random.below(30) == 0 ? random.below(4) : 0x100 + random.below(0x300);
        unit.push_back(static_cast<U8>(code >> 8));
        unit.push_back(static_cast<U8>(code));
    }
    return unit;
}

}  // namespace

// What a byte draws, and how many of its bits that takes, read a code at a time.
TEST(RunLength, TheTableOfShortRuns) {
    ShortRunTable (*const volatile make)() = makeShortRuns;  // when the test runs, too
    const ShortRunTable table = make();
    EXPECT_EQ(0, memcmp(&kShortRuns, &table, sizeof table));
    for (U32 byte = 0; byte < 256; ++byte) {
        const U32 codes[] = {byte >> 4, byte & 15};
        std::vector<U32> pixels;
        U32 bits = 0;
        if (codes[0] >= 4) {
            for (U32 i = 0; i < 2 && codes[i] >= 4; ++i, bits += 4)
                pixels.insert(pixels.end(), codes[i] >> 2, codes[i] & 3);
        } else if (codes[0] != 0) {
            pixels.assign(byte >> 2, byte & 3);
            bits = 8;
        }
        EXPECT_EQ(pixels.size() << 4 | bits, table.columnsAndBits[byte]) << byte;
        for (size_t i = 0; i < pixels.size(); ++i) {
            EXPECT_EQ(pixels[i], table.pixels[byte] >> 8 * std::min<size_t>(i, 7) & 0xFF) << byte << " at " << i;
        }
    }
}

TEST(RunLength, EveryCodeAtEveryPlace) {
    for (U32 code = 0; code < 0x10000; ++code) {
        const U8 high = static_cast<U8>(code >> 8), low = static_cast<U8>(code);
        const Data even = {high, low, 0x59};  // and two short ones
        const Data odd = {static_cast<U8>(0x70 | high >> 4), static_cast<U8>(high << 4 | low >> 4),
                          static_cast<U8>(low << 4 | 5)};
        for (const Data& unit : {even, odd}) {
            expectTheSame(unit, {0, unit.size(), 300, 1, 0, 300}, 600);
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

// The data of a word, and the last bytes: the code in front of them makes them begin anywhere.
TEST(RunLength, EveryLengthAtEveryPlaceOfAWord) {
    const char* const kCodes[] = {"6", "2A", "0BD", "01F3", "0002"};
    Random random(2);
    for (int round = 0; round < 2000; ++round) {
        std::string halves;
        while (halves.size() < 60) halves += kCodes[random.below(5)];
        if (halves.size() % 2 != 0) halves += '5';
        Data unit;
        for (size_t i = 0; i < halves.size(); i += 2) {
            unit.push_back(static_cast<U8>(std::stoul(halves.substr(i, 2), nullptr, 16)));
        }
        const U32 width = 1 + random.below(400);
        expectTheSame(unit, {0, unit.size(), width, 40, 0, width}, 40 * width + 300);
        if (HasFatalFailure()) return;
    }
}

TEST(RunLength, EndsAnywhere) {
    Random random(3);
    for (int round = 0; round < 40; ++round) {
        const Data unit = someUnit(random, 70);
        const U32 width = 1 + random.below(90);
        for (size_t end = 0; end <= unit.size(); ++end) {
            const size_t offset = random.below(20);
            const Field field = {offset, end, width, 12, 0, 2 * size_t{width}};
            expectTheSame(unit, field, 24 * width);                               // the budget ends, or the unit
            expectTheSame({unit.begin(), unit.begin() + static_cast<long>(end)},  // the unit does
                          {offset, 70, width, 12, width, 2 * size_t{width}}, 24 * width);
            expectTheSame(unit, field, end * 3);  // the bitmap does
            if (HasFatalFailure()) return;
        }
    }
}

TEST(RunLength, FieldsOfAnySize) {
    Random random(4);
    for (int round = 0; round < 2000; ++round) {
        const Data unit = someUnit(random, random.below(3000));
        const U32 width = random.below(8) == 0 ? 0 : 1 + random.below(800);
        const size_t step = 2 * size_t{width};
        expectTheSame(unit, {random.below(30), random.below(3000), width, 20, 0, step}, 40 * width);
        expectTheSame(unit, {random.below(3000), random.below(3000), width, 20, width, step}, 40 * width);
        if (HasFatalFailure()) return;
    }
}

// kept(vob-long-run): a run of the bottom field spills into a row of the top field that is there already.
TEST(RunLength, BothFieldsAreAsTheBottomOneBehindTheTopOne) {
    Random random(6);
    U32 spilt = 0;
    for (int round = 0; round < 6000; ++round) {
        const U32 kWidths[] = {0, 1 + random.below(60), 1 + random.below(800), 3800 + random.below(600), 65535};
        const U32 width = kWidths[random.below(100) == 0 ? 4 : random.below(4)];
        const U32 rows = random.below(width > 1000 ? 4 : 20);
        const size_t step = 2 * size_t{width};
        const Data unit = width > 1000 ? longRuns(random, 2000) : someUnit(random, random.below(2000));
        const Field top = {random.below(30), random.below(3000), width, rows, 0, step};
        const Field bottom = {random.below(2000), random.below(2000), width, rows, width, step};
        const size_t size = random.below(8) == 0 ? random.below(500) : rows * step + 300;
        Data out(size, 0x5A), expected(size, 0x5A), otherWay(size, 0x5A);
        decodeBoth(unit, top, bottom, out);
        decodePlainly(unit, top, expected);
        decodePlainly(unit, bottom, expected);
        ASSERT_EQ(expected, out) << "round " << round << ", rows of " << width;
        decodePlainly(unit, bottom, otherWay);
        decodePlainly(unit, top, otherWay);
        if (otherWay != expected) ++spilt;
    }
    EXPECT_LT(500U, spilt) << "the order of the fields has to matter";
}

// An area upside down gives such widths; no real one does.
TEST(RunLength, RowsWiderThanAnyArea) {
    Random random(5);
    for (const U32 width : {4090U, 4095U, 4096U, 4097U, 4100U, 5000U, 65535U}) {
        for (int round = 0; round < 10; ++round) {
            const Data unit = longRuns(random, 1500);
            const Field field = {0, unit.size(), width, 6, 0, 2 * size_t{width}};
            expectTheSame(unit, field, 12 * size_t{width});
            expectTheSame(unit, field, 3 * size_t{width});  // the third row and all later ones lie behind the bitmap
            if (HasFatalFailure()) return;
        }
    }
}

// The right edge of the widest area, reached by short runs behind long ones.
TEST(RunLength, ShortRunsUpToTheWidestAreasEdge) {
    Random random(7);
    for (int round = 0; round < 3000; ++round) {
        const U32 width = 4080 + random.below(30);
        Data unit;
        for (U32 column = random.below(60); column + 300 < width; column += 255) {
            unit.push_back(3);
            unit.push_back(static_cast<U8>(0xFC | random.below(4)));  // of 255 pixels
        }
        for (int i = 0; i < 60; ++i) unit.push_back(static_cast<U8>(0x10 + random.below(0xF0)));
        expectTheSame(unit, {0, unit.size(), width, 2, 0, 2 * size_t{width}}, 4 * size_t{width});
        if (HasFatalFailure()) return;
    }
}
