// The README's example of a player's calls, taken from the README itself at configuration.
#include "readme_example.inc"

#include <gtest/gtest.h>

#include "tests/support/Interpose.h"

TEST(ReadmeExample, ShowsTheTextOfAnEntryAndNothingInAGap) {
    const test::TempFile file("1\n00:00:01,000 --> 00:00:02,000\nHello\n\n2\n00:00:04,000 --> 00:00:05,000\nBye\n\n");
    const struct {
        android::U32 timeMs;
        bool shown;
        const char* output;
    } rows[] = {
        {999, false, ""}, {1000, true, "Hello\n"}, {1999, true, "Hello\n"}, {2000, false, ""}, {4500, true, "Bye\n"}};
    for (const auto& row : rows) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(row.shown, showAt(file.fd(), row.timeMs)) << row.timeMs;
        EXPECT_EQ(row.output, testing::internal::GetCapturedStdout()) << row.timeMs;
    }
}

TEST(ReadmeExample, ShowsNothingOfAnEmptyFile) {
    const test::TempFile file("");
    EXPECT_FALSE(showAt(file.fd(), 0));
}
