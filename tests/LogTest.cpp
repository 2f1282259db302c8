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

template <class... Numbers>
std::string logged(const char* format, Numbers... numbers) {
    const test::LogCapture capture;
    (LogLine(format) << ... << numbers).log("Tag");
    const test::Messages texts = test::messages(capture, "Tag");
    EXPECT_EQ(1U, texts.size());
    return texts.empty() ? "nothing" : texts[0];
}

TEST(LogLine, IsWhatPrintfWrites) {
    for (const S64 number : {0LL, 1LL, -1LL, 9LL, 10LL, -10LL, 4294967295LL, -2147483648LL, 9223372036854775807LL,
                             -9223372036854775807LL - 1}) {
        EXPECT_EQ(printed("a %lld, b\n", number), logged("a %lld, b\n", number));
        const long low = vxsubtitle::asLong(static_cast<U32>(number));
        const unsigned long bits = vxsubtitle::asUnsignedLong(static_cast<U32>(number));
        EXPECT_EQ(printed("%ld%lu;%08lx", low, bits, bits), logged("%ld%lu;%08lx", low, bits, bits));
    }
    EXPECT_EQ("01234567 89abcdef", logged("%08lx %08lx", 0x1234567L, 0x89ABCDEFUL));
    EXPECT_EQ("", logged(""));
    EXPECT_EQ("words", logged("words", 1L)) << "no place for the number";
    EXPECT_EQ("1", logged("%", 1L)) << "a conversion that ends too early";
}

TEST(LogLine, DropsWhatDoesNotFit) {
    for (size_t length = 240; length < 260; ++length) {
        const std::string words(length, 'x');
        const std::string number = length + 10 <= 255 ? "1234567890" : "";
        EXPECT_EQ((words + number + "!").substr(0, 255), logged((words + "%ld!").c_str(), 1234567890L)) << length;
    }
}

TEST(ManyMessages, AreLoggedWhetherTheLogTakesThemOrNot) {
    for (const int priority : {ANDROID_LOG_VERBOSE, ANDROID_LOG_INFO}) {
        const int before = __android_log_set_minimum_priority(priority);
        const test::LogCapture capture;
        EXPECT_EQ(priority == ANDROID_LOG_VERBOSE, vxsubtitle::isLogged("Tag"));
        vxsubtitle::ManyMessages("Tag").log("%lld, %ld, %08lx\n", S64{-5}, -7L, 255UL);
        EXPECT_EQ(test::Messages{"-5, -7, 000000ff\n"}, test::messages(capture, "Tag"));
        __android_log_set_minimum_priority(before);
    }
}

}  // namespace
