// SubViewer 1.0 and 2.0 as meant.
#include "tests/meant/Listing.h"

namespace meant {
namespace {

TEST(MeantSubViewer10, Entries) {
    expectReadings(
        "sub", Format::SubViewer10,
        {
            {"as usual", "[00:00:01]\na|b\n[00:00:04]\n\n[00:00:05]\nc\n[00:00:06]\n\n", "1000-4000 a/b; 5000-6000 c"},
            {"several lines", "[00:00:01]\na\nb\n[00:00:04]\n", "1000-4000 a/b"},
            {"no end line", "[00:00:01]\na\n[00:00:04]\nb\n[00:00:06]\n", "1000-4000n a; 4000-6000 b"},
            {"no end line at the end", "[00:00:01]\na\n", "1000- a"},
            {"short times", "[0:0:1]\na\n[0:0:4]\n", "1000-4000 a"},
            {"fractions", "[00:00:01.50]\na\n[00:00:04.25]\n", "1500-4250 a"},
            {"blanks", " [ 00:00:01 ] \na\n [00:00:04]\n", "1000-4000 a"},
            {"a header and an end",
             "[TITLE]\nx\n[DELAY]\n0\n[BEGIN]\n******** START SCRIPT ********\n[00:00:01]\na\n"
             "[00:00:04]\n\n[END]\n******** END SCRIPT ********\n",
             "1000-4000 a"},
            {"text that looks like a tag", "[00:00:01]\nFish & chips <large> <i>hot</i>\n[00:00:04]\n",
             "1000-4000 Fish & chips <large> hot"},
        });
}

TEST(MeantSubViewer20, Entries) {
    expectReadings(
        "sub", Format::SubViewer20,
        {
            {"looks of what follows",
             "00:00:01.50,00:00:04.00\na\n\n[COLF]&HFFFFFF,[SIZE]9\n00:00:05.00,00:00:06.00\nb\n",
             "1500-4000 a; 5000-6000 b"},
            {"as usual", "00:00:01.50,00:00:04.00\na[br]b\n\n00:00:05.00,00:00:06.00\nc\n",
             "1500-4000 a/b; 5000-6000 c"},
            {"commas", "00:00:01,50,00:00:04,00\na\n", "1500-4000 a"},
            {"several lines", "00:00:01.50,00:00:04.00\na\nb\n", "1500-4000 a/b"},
            {"milliseconds", "0:00:01.500,0:00:04.250\na\n", "1500-4250 a"},
            {"no fraction", "0:00:01,0:00:04\na\n", "1000-4000 a"},
            {"blanks", " 00:00:01.50 , 00:00:04.00 \na\n", "1500-4000 a"},
            {"no empty lines", "00:00:01.50,00:00:04.00\na\n00:00:05.00,00:00:06.00\nb\n", "1500-4000 a; 5000-6000 b"},
            {"a header",
             "[INFORMATION]\n[TITLE]x\n[DELAY]0\n[SUBTITLE]\n[COLF]&HFFFFFF,[SIZE]18\n"
             "00:00:01.50,00:00:04.00\na\n",
             "1500-4000 a"},
            {"negative", "-00:00:01.50,00:00:04.00\na\n", "-1500-4000 a"},
        });
}

TEST(MeantSubViewer, TheDelayIsToldAndNotAdded) {
    const struct {
        const char* file;
        const char* delay;
    } kRows[] = {
        {"[DELAY]\n2\n[00:00:01]\na\n[00:00:04]\n", "2"},      {"[DELAY]\n0\n[00:00:01]\na\n[00:00:04]\n", ""},
        {"[DELAY]-150\n00:00:01.00,00:00:04.00\na\n", "-150"}, {"[DELAY]0\n00:00:01.00,00:00:04.00\na\n", ""},
        {"[DELAY]\n00:00:01.00,00:00:04.00\na\n", ""},
    };
    for (const auto& row : kRows) {
        const File file = readAs("sub", row.file);
        EXPECT_EQ(row.delay, file.delay) << row.file;
        EXPECT_EQ("1000-4000 a", listed(file)) << row.file;
    }
}

}  // namespace
}  // namespace meant
