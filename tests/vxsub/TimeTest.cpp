#include "tools/vxsub/Time.h"

#include <gtest/gtest.h>

namespace {

using android::U32;

struct TimeRow {
    const char* text;
    U32 ms;
};

TEST(Time, ReadsEveryForm) {
    const TimeRow kRows[] = {
        {"0", 0},
        {"61500", 61500},
        {"61500ms", 61500},
        {"61s", 61000},
        {"61.5s", 61500},
        {"61,5s", 61500},
        {"0.001s", 1},
        {"1:01.5", 61500},
        {"1:01,05", 61050},
        {"1:1", 61000},
        {"90:00", 5400000},
        {"00:01:01,500", 61500},
        {"1:00:00", 3600000},
        {"100:59:59.999", 363599999},
        {"1:01.5009", 61500},  // three digits count
        {"0000000000000000000000061500", 61500},
        {"4294967295", 4294967295u},
        {"4294967.295s", 4294967295u},
        {"1193:02:47,295", 4294967295u},
    };
    for (const TimeRow& row : kRows) EXPECT_EQ(vxsub::parseTime(row.text), std::optional<U32>(row.ms)) << row.text;
}

TEST(Time, RefusesEverythingElse) {
    const char* const kRows[] = {
        "",
        " ",
        "abc",
        "-1",
        "+1",
        "1.5",
        "1,5",
        "1:60",
        "1:60:00",
        "1:2:60",
        "1:2:3:4",
        ":1",
        "1:",
        "1:2:",
        "1.s",
        ".5s",
        "1:01.",
        "1m",
        "1sec",
        "1:01s",
        "1.5ms",
        "61 500",
        " 61500",
        "61500 ",
        "0x10",
        "1e3",
        "1:-1",
        "1:01.5s",
        "1:01,x",
        "00:01:01;5",
        "4294967296",
        "4294967.296s",
        "1193:02:47,296",
        "99999999999999999999999999",
    };
    for (const char* text : kRows) EXPECT_EQ(vxsub::parseTime(text), std::nullopt) << text;
}

TEST(Time, WritesTimesThatItReads) {
    const TimeRow kRows[] = {
        {"00:00:00,000", 0},          {"00:00:00,999", 999},           {"00:00:01,000", 1000},
        {"00:00:59,999", 59999},      {"00:01:00,000", 60000},         {"00:01:01,500", 61500},
        {"00:59:59,999", 3599999},    {"01:00:00,000", 3600000},       {"99:59:59,999", 359999999},
        {"100:00:00,000", 360000000}, {"1193:02:47,295", 4294967295u},
    };
    for (const TimeRow& row : kRows) {
        EXPECT_EQ(vxsub::formatTime(row.ms), row.text);
        EXPECT_EQ(vxsub::parseTime(row.text), std::optional<U32>(row.ms)) << row.text;
    }
}

}  // namespace
