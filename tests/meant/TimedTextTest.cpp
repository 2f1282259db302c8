// Text with times as meant: one line or two for an entry, with and without closing lines.
#include "tests/meant/Listing.h"

namespace meant {
namespace {

TEST(MeantTimedText, OneLine) {
    expectReadings(
        "txt", Format::TimedText,
        {
            {"closing lines", "0:00:01:Hi\n0:00:04:\n0:00:05:there\n0:00:06:\n", "1000-4000 Hi; 5000-6000 there"},
            {"none", "00:00:01:a\n00:00:04:b\n", "1000-4000n a; 4000- b"},
            {"some", "00:00:01:a\n00:00:02:\n00:00:04:b\n00:00:05:c\n", "1000-2000 a; 4000-5000n b; 5000- c"},
            {"equals signs", "0:00:01=a\n0:00:02=\n", "1000-2000 a"},
            {"blanks", "0:00:01 a\n0:00:02\n", "1000-2000 a"},
            {"tenths", "00:00:01.5:a\n00:00:02.0:\n", "1500-2000 a"},
            {"more digits", "00:00:01.50:a\n00:00:02.250=\n", "1500-2250 a"},
            {"tenths that count lines do not count", "00:00:01.1:a\n00:00:01.4:b\n", "1100-1400n a; 1400- b"},
            {"bars", "0:00:01:a|b[br]c\n", "1000- a/b/c"},
            {"a text that begins with a number", "0:00:01:5 apples\n", "1000- 5 apples"},
            {"hours", "12:34:56:a\n", "45296000- a"},
            {"the same time twice", "0:00:01:a\n0:00:01:b\n0:00:02:\n", "1000-2000 a; 1000-2000 b"},
            {"back in time", "0:00:05:a\n0:00:01:b\n", "5000- a; 1000- b"},
        });
}

TEST(MeantTimedText, TwoLines) {
    expectReadings("txt", Format::TimedText,
                   {
                       {"as usual", "00:00:01,1=a\n00:00:01,2=b\n00:00:03,1=\n00:00:03,2=\n", "1000-3000 a/b"},
                       {"points", "00:00:01.1:a\n00:00:01.2:b\n00:00:03.1:\n00:00:03.2:\n", "1000-3000 a/b"},
                       {"an empty first one", "00:00:01,1=\n00:00:01,2=b\n00:00:03,1=\n", "1000-3000 b"},
                       {"no second one", "00:00:01,1=a\n00:00:03,1=b\n00:00:03,2=c\n", "1000-3000n a; 3000- b/c"},
                       {"no first one", "00:00:01,2=a\n00:00:03,1=\n", "1000-3000 a"},
                       {"of another time", "00:00:01,1=a\n00:00:02,2=b\n", "1000-2000n a; 2000- b"},
                       {"a third", "00:00:01,1=a\n00:00:01,2=b\n00:00:01,3=c\n", "1000- a/b/c"},
                   });
}

TEST(MeantTimedText, StrayLines) {
    const File file = readAs("txt", "A.Title.2004\n00:00:02:a\n00:0x:06:no\n\n00:00:09:b\n");
    EXPECT_EQ("2000-9000n a; 9000- b", listed(file));
    ASSERT_EQ(2u, file.strayLines.size());
    EXPECT_EQ(1u, file.strayLines[0].line);
    EXPECT_EQ(3u, file.strayLines[1].line);
    EXPECT_EQ(24u, file.strayLines[1].offset);
}

}  // namespace
}  // namespace meant
