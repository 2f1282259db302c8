// Meant against shown, without causes.
#include "tools/check/Compare.h"

#include <gtest/gtest.h>

#include "tests/check/Tables.h"

namespace check {
namespace {

meant::File fileOf(const std::vector<meant::Entry>& entries) {
    meant::File file;
    file.format = meant::Format::SubRip;
    file.entries = entries;
    return file;
}

meant::Entry entry(Ms start, Ms end, const char* text) {
    meant::Entry result;
    result.start = start;
    result.end = end;
    result.endFrom = meant::End::Given;
    result.text = text;
    return result;
}

std::string verdictsOf(const std::vector<meant::Entry>& entries, const Table& table) {
    static const char* const kWords[] = {"right", "lost", "displaced", "altered", "odd", "hidden", "false"};
    const meant::File file = fileOf(entries);
    const Shown shown = shownOf(table);
    const Comparison comparison = compare(file, shown);
    EXPECT_EQ(entries.size(), comparison.meant);
    std::string list = std::to_string(comparison.right) + " right";
    for (const Difference& difference : comparison.differences)
        list +=
            std::string(", ") + kWords[static_cast<size_t>(difference.verdict)] + " " + std::to_string(difference.when);
    return list;
}

TEST(Compare, Verdicts) {
    const meant::Entry a = entry(1000, 2000, "a\nb"), c = entry(3000, 4000, "c");
    EXPECT_EQ("2 right", verdictsOf({a, c}, {{1000, 2000, "a\r\nb"}, {3000, 4000, " c \n"}}));
    EXPECT_EQ("2 right", verdictsOf({a, c}, {{999, 2000, "a b"}, {2999, 4000, "c"}}));
    EXPECT_EQ("1 right, lost 1000", verdictsOf({a, c}, {{3000, 4000, "c"}}));
    EXPECT_EQ("1 right, displaced 1000", verdictsOf({a, c}, {{1002, 2000, "a b"}, {3000, 4000, "c"}}));
    EXPECT_EQ("1 right, displaced 1000", verdictsOf({a, c}, {{1002, 2000, "a|b"}, {3000, 4000, "c"}}));
    EXPECT_EQ("1 right, altered 1000", verdictsOf({a, c}, {{1000, 2000, "a"}, {3000, 4000, "c"}}));
    EXPECT_EQ("1 right, odd 1000", verdictsOf({a, c}, {{1000, 2000, "{\\an8}a\\Nb"}, {3000, 4000, "c"}}));
    EXPECT_EQ("2 right, false 5000", verdictsOf({a, c}, {{1000, 2000, "a b"}, {3000, 4000, "c"}, {5000, 6000, "d"}}));
    EXPECT_EQ("2 right", verdictsOf({a, c}, {{1000, 2000, "a b"}, {3000, 4000, "c"}, {5000, 6000, " "}}));
}

TEST(Compare, WhatIsAnsweredAtStartMiddleAndEnd) {
    const meant::Entry a = entry(1000, 5000, "a"), b = entry(2000, 4000, "b");
    EXPECT_EQ("1 right, hidden 2999", verdictsOf({a, b}, {{1000, 5000, "a"}, {2000, 4000, "b"}}));
    EXPECT_EQ("0 right, hidden 4998", verdictsOf({a}, {{1000, 4500, "a"}}));
    EXPECT_EQ("1 right", verdictsOf({entry(-1, 1000, "a")}, {{0, 1000, "a"}}));
    EXPECT_EQ("1 right, odd 1000, hidden 2999", verdictsOf({a, b}, {{1000, 5000, "{\\an8}a"}, {2000, 4000, "b"}}));
    // Another entry of the same text will do.
    EXPECT_EQ("2 right", verdictsOf({a, entry(2000, 6000, "a")}, {{1000, 5000, "a"}, {2000, 6000, "a"}}));
}

TEST(Compare, TheSameTextOverAndOver) {
    std::vector<meant::Entry> entries;
    Table table;
    for (Ms i = 0; i < 2000; ++i) {
        entries.push_back(entry(i * 1000, i * 1000 + 500, "a"));
        table.push_back({i * 1000 + 100, i * 1000 + 500, "a"});
    }
    const meant::File file = fileOf(entries);
    const Shown shown = shownOf(table);
    const Comparison comparison = compare(file, shown);
    ASSERT_EQ(2000u, comparison.differences.size());
    for (size_t i = 0; i < 2000; ++i) EXPECT_EQ(&shown.entries[i], comparison.differences[i].shown);
}

}  // namespace
}  // namespace check
