// The DVB subtitle system's text as meant: frames are frames, fractions are fractions.
#include "tests/meant/Listing.h"

namespace meant {
namespace {

TEST(MeantDvbText, Entries) {
    expectReadings(
        "sub", Format::DvbText,
        {
            {"frames", "0:00:01:12 0:00:04:00   a|b\n", "1480-4000 a/b"},
            {"two-digit hours", "00:00:01:12 00:00:04:00 a\n", "1480-4000 a"},
            {"fractions and a number", "123 00:00:05,500 00:00:06,25 a\n", "5500-6250 a"},
            {"a number and a colon", "1 : 00:00:05:00 00:00:06:00 a\n", "5000-6000 a"},
            {"three digits are no frame", "0:00:01:500 0:00:04:000 a\n", "1500-4000 a"},
            {"points", "0:00:01.50 0:00:04.00 a\n", "1500-4000 a"},
            {"tabs", "1\t00:00:01:00\t00:00:04:00\ta\n", "1000-4000 a"},
            {"further lines", "0:00:01:00 0:00:04:00 a\nb\n\n0:00:05:00 0:00:06:00 c\n", "1000-4000 a/b; 5000-6000 c"},
            {"a text that begins with a number", "0:00:01:00 0:00:04:00 5 apples\n", "1000-4000 5 apples"},
            {"no text", "0:00:01:00 0:00:04:00\n0:00:05:00 0:00:06:00 a\n", "5000-6000 a"},
        });
}

TEST(MeantDvbText, Rates) {
    const struct {
        const char* file;
        uint32_t told;
        uint32_t rate;
        RateFrom from;
        const char* expected;
    } kRows[] = {
        {"0:00:01:12 0:00:04:24 a\n", 0, 25000, RateFrom::Assumed, "1480-4960 a"},
        {"0:00:01:12 0:00:04:24 a\n", 24000, 24000, RateFrom::Told, "1500-5000 a"},
        {"0:00:01:12 0:00:04:25 a\n", 0, 30000, RateFrom::Frames, "1400-4833 a"},
        {"0:00:01:12 0:00:04:49 a\n", 0, 50000, RateFrom::Frames, "1240-4980 a"},
        {"0:00:01,12 0:00:04,25 a\n", 24000, 0, RateFrom::None, "1120-4250 a"},
    };
    for (const auto& row : kRows) {
        const File file = readAs("sub", row.file, row.told);
        EXPECT_EQ(row.expected, listed(file)) << row.file;
        EXPECT_EQ(row.rate, file.rate.thousandths) << row.file;
        EXPECT_EQ(row.from, file.rate.from) << row.file;
    }
}

}  // namespace
}  // namespace meant
