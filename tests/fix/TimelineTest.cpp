// Entries that overlap, and those without a proper end, as pieces that one screen shows one after the other.
#include <gtest/gtest.h>

#include "tests/fix/Fixing.h"
#include "tools/fix/Timeline.h"

namespace fix {
namespace {

struct Given {
    Ms start, end;
    const char* text;
};

struct Flat {
    std::string pieces, remarks, whole;
};

Flat flat(const std::vector<Given>& rows, const Clock& clock = {}, size_t mostBytes = 8000) {
    meant::File file;
    std::vector<size_t> chosen;
    std::vector<std::string> texts;
    for (const Given& row : rows) {
        meant::Entry entry;
        entry.start = row.start;
        entry.end = row.end;
        chosen.push_back(file.entries.size());
        file.entries.push_back(entry);
        texts.push_back(row.text);
    }
    std::vector<bool> isWhole(rows.size(), true);
    Remarks remarks;
    const std::vector<Piece> pieces =
        flattened(spansOf(file, chosen, clock, &isWhole, &remarks), texts, mostBytes, &isWhole);
    std::string whole;
    for (const bool one : isWhole) whole += one ? '1' : '0';
    return {listed(pieces), listed(remarks.take()), whole};
}

TEST(Timeline, KeepsWhatDoesNotOverlap) {
    EXPECT_EQ("1000-2000 a; 2000-3000 b; 5000-6000 c",
              flat({{1000, 2000, "a"}, {2000, 3000, "b"}, {5000, 6000, "c"}}).pieces);
    EXPECT_EQ("1000-2000 a; 2000-3000 a", flat({{1000, 2000, "a"}, {2000, 3000, "a"}}).pieces);
    EXPECT_EQ("", flat({}).pieces);
}

TEST(Timeline, Sorts) { EXPECT_EQ("1000-2000 b; 5000-6000 a", flat({{5000, 6000, "a"}, {1000, 2000, "b"}}).pieces); }

TEST(Timeline, JoinsWhatOverlaps) {
    const struct {
        const char* name;
        std::vector<Given> rows;
        const char* pieces;
    } kRows[] = {
        {"in part", {{1000, 4000, "a"}, {3000, 6000, "b"}}, "1000-3000 a; 3000-4000 a/b; 4000-6000 b"},
        {"within", {{1000, 6000, "a"}, {3000, 4000, "b"}}, "1000-3000 a; 3000-4000 a/b; 4000-6000 a"},
        {"same start", {{1000, 4000, "a"}, {1000, 2000, "b"}}, "1000-2000 a/b; 2000-4000 a"},
        {"same times", {{1000, 4000, "a"}, {1000, 4000, "b"}}, "1000-4000 a/b"},
        {"same text", {{1000, 4000, "a"}, {1000, 4000, "a"}}, "1000-4000 a"},
        {"same text, one goes on", {{1000, 4000, "a"}, {1000, 6000, "a"}}, "1000-6000 a"},
        {"same text, one begins", {{1000, 4000, "a"}, {2000, 6000, "a"}}, "1000-2000 a; 2000-6000 a"},
        {"the older first", {{2000, 4000, "b"}, {1000, 4000, "a"}}, "1000-2000 a; 2000-4000 a/b"},
        {"three", {{0, 3, "a"}, {1, 6, "b"}, {2, 4, "c"}}, "0-1 a; 1-2 a/b; 2-3 a/b/c; 3-4 b/c; 4-6 b"},
    };
    for (const auto& row : kRows) EXPECT_EQ(row.pieces, flat(row.rows).pieces) << row.name;
}

TEST(Timeline, AMillisecondIsRoundingAndNoOverlap) {
    EXPECT_EQ("1000-2000 a; 2000-3000 b", flat({{1000, 2001, "a"}, {2000, 3000, "b"}}).pieces);
    EXPECT_EQ("1000-2000 a; 2000-2002 a/b; 2002-3000 b", flat({{1000, 2002, "a"}, {2000, 3000, "b"}}).pieces);
}

TEST(Timeline, GivesEnds) {
    const Flat open = flat({{1000, 1000, "a"}, {3000, 2000, "b"}, {3000, 4000, "c"}, {20000, 20000, "d"}});
    EXPECT_EQ("1000-3000 a; 3000-4000 b/c; 4000-8000 b; 20000-25000 d", open.pieces);
    EXPECT_EQ("- 3", open.remarks);
    EXPECT_EQ("1111", open.whole);
}

TEST(Timeline, KeepsWithinWhatCanBeWritten) {
    const Ms hours = 3600000;
    const Flat cut =
        flat({{-2000, -1000, "a"}, {-500, 1000, "b"}, {5000, 2000 * hours, "c"}, {1300 * hours, 1301 * hours, "d"}});
    EXPECT_EQ("0-1000 b; 5000-4294967294 c", cut.pieces);
    EXPECT_EQ("! - 1, - 1, ! beyond-32-bit 1, ! beyond-32-bit 1", cut.remarks);
    EXPECT_EQ("0100", cut.whole);
}

TEST(Timeline, RoundsToTheFormatsUnit) {
    const Flat seconds = flat({{1499, 2500, "a"}, {5000, 6000, "b"}}, {360000000, 1000});
    EXPECT_EQ("1000-3000 a; 5000-6000 b", seconds.pieces);
    EXPECT_EQ("01", seconds.whole);
}

TEST(Timeline, LeavesTheOldestOutWhereItIsTooMuch) {
    EXPECT_EQ("0-1 abc; 1-2 ghi; 2-3 def", flat({{0, 3, "abc"}, {1, 3, "def"}, {1, 2, "ghi"}}, {}, 9).pieces);
    std::vector<Given> crowd(100, {0, 1000, "a"});
    EXPECT_EQ(68, static_cast<int>(std::string(flat(crowd).whole).find('1')));
}

TEST(Timeline, ThousandsAtATimeTakeNoSquares) {
    std::vector<Given> crowd;
    for (int i = 0; i < 5000; ++i) crowd.push_back({i, 100000 + i, "some text that is shown"});
    EXPECT_EQ('1', flat(crowd).whole.back());
}

}  // namespace
}  // namespace fix
