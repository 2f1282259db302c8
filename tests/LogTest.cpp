// Messages that are put together without a format read as printf would write them.
#include "subtitle/system/Log.h"

#include <gtest/gtest.h>
#include <stdarg.h>
#include <stdio.h>

#include <string>

#include "tests/support/Logs.h"

namespace {

using namespace android;
using vxsubtitle::LogLine;

std::string printed(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string printed(const char* format, ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

template <class Put>
std::string logged(Put put) {
    const test::LogCapture capture;
    LogLine line;
    put(line);
    line.log("Tag");
    EXPECT_EQ(1U, capture.lines().size());
    const test::Messages texts = test::messages(capture, "Tag");
    return texts.empty() ? "nothing" : texts[0];
}

TEST(LogLine, IsWhatPrintfWrites) {
    for (const S64 number : {0LL, 1LL, -1LL, 9LL, 10LL, -10LL, 4294967295LL, -2147483648LL, 9223372036854775807LL,
                             -9223372036854775807LL - 1}) {
        EXPECT_EQ(printed("a %lld, %%b\n", number), logged([&](LogLine& line) { line << "a " << number << ", %b\n"; }));
        const U32 low = static_cast<U32>(number);
        EXPECT_EQ(printed("%08x;%d", low, static_cast<S32>(low)),
                  logged([&](LogLine& line) { line.hex(low) << ";" << static_cast<S32>(low); }));
    }
    EXPECT_EQ("01234567 89abcdef", logged([](LogLine& line) { (line.hex(0x1234567) << " ").hex(0x89ABCDEF); }));
    EXPECT_EQ("", logged([](LogLine&) {}));
}

TEST(LogLine, DropsWhatDoesNotFit) {
    for (size_t length = 245; length < 260; ++length) {
        const std::string words(length, 'x');
        const std::string all = words + "1234567890" + "!";
        const std::string shown = logged([&](LogLine& line) { line << words << S64{1234567890} << "!"; });
        const bool numberFits = length + 10 <= 255;
        EXPECT_EQ((numberFits ? all : words + "!").substr(0, 255), shown) << length;
    }
}

}  // namespace
