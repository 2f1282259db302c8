// MicroDVD as meant: frames at the rate of the file, else the one that was told, else 25.
#include "tests/meant/Listing.h"

namespace meant {
namespace {

TEST(MeantMicroDvd, Entries) {
    expectReadings("sub", Format::MicroDvd,
                   {
                       {"as usual", "{25}{50}a|b\n{75}{100}c\n", "1000-2000 a/b; 3000-4000 c"},
                       {"no end", "{25}{}a\n{75}{}b\n", "1000-3000n a; 3000- b"},
                       {"codes", "{25}{50}{y:i}a|{Y:b,u}{C:$0000ff}b{f:Arial}{s:12}\n", "1000-2000 a/b"},
                       {"blanks", " {25} {50} a\n", "1000-2000 a"},
                       {"a wrapped text", "{25}{50}a\nb\n\nno\n{75}{100}c\n", "1000-2000 a/b; 3000-4000 c"},
                       {"what is no entry", "{DEFAULT}{}{y:b}\n{25}{50}a\n", "1000-2000 a"},
                       {"other braces", "{25}{50}a {b} c\n", "1000-2000 a {b} c"},
                   });
}

TEST(MeantMicroDvd, Rates) {
    const struct {
        const char* file;
        uint32_t told;
        uint32_t rate;
        RateFrom from;
        const char* expected;
    } kRows[] = {
        {"{25}{50}a\n", 0, 25000, RateFrom::Assumed, "1000-2000 a"},
        {"{30}{60}a\n", 30000, 30000, RateFrom::Told, "1000-2000 a"},
        {"{100}{200}a\n", 23976, 23976, RateFrom::Told, "4171-8342 a"},
        {"{1}{1}23.976\n{100}{200}a\n", 0, 23976, RateFrom::File, "4171-8342 a"},
        {"{1}{1}23.976\n{100}{200}a\n", 30000, 23976, RateFrom::File, "4171-8342 a"},
        {"{0}{0}25\n{25}{50}a\n", 30000, 25000, RateFrom::File, "1000-2000 a"},
        {"{1}{1}23,976 fps\n{100}{200}a\n", 0, 23976, RateFrom::File, "4171-8342 a"},
        {"{1}{1}29.97\n{2997}{5994}a\n", 0, 29970, RateFrom::File, "100000-200000 a"},
        {"{25}{50}25\n", 0, 25000, RateFrom::Assumed, "1000-2000 25"},
        {"{1}{50}12:30 pm\n", 0, 25000, RateFrom::Assumed, "40-2000 12:30 pm"},
        {"{1}{50}4\n", 0, 25000, RateFrom::Assumed, "40-2000 4"},
        {"{1}{50}1000\n", 0, 25000, RateFrom::Assumed, "40-2000 1000"},
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
