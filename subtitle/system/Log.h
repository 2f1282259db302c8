/// The platform log: every message of the library goes to it at debug priority.
#pragma once

#include <android/log.h>
#include <string.h>

#include <charconv>

#include "subtitle/SubtitleTypes.h"
#include "subtitle/system/Wraps.h"

/// Logs a printf-style message under `tag` (null: no tag).
#define VX_LOG(tag, ...) ((void)__android_log_print(ANDROID_LOG_DEBUG, tag, __VA_ARGS__))

// Only newer headers declare it, and only newer platforms have it.
// NOLINTNEXTLINE(readability-redundant-declaration)
extern "C" int __android_log_is_loggable(int priority, const char* tag, int byDefault) __attribute__((weak));

namespace vxsubtitle {

// Messages were written for the device, whose `long` has 32 bits. These give "%ld", "%lu" and "%lx" what they read
// there, on every machine.

constexpr long asLong(android::U32 value) { return static_cast<long>(static_cast<android::S32>(value)); }
constexpr unsigned long asUnsignedLong(uintptr_t value) { return static_cast<unsigned long>(value); }

/// Whether the log takes messages under `tag`. The oldest platforms cannot be asked, and take all.
inline bool isLogged(const char* tag) {
    return __android_log_is_loggable == nullptr ||
           __android_log_is_loggable(ANDROID_LOG_DEBUG, tag, ANDROID_LOG_VERBOSE) != 0;
}

/// A message that is put together without printf, by a format of words and the conversions "%ld", "%lu", "%lld" and
/// "%08lx".
class LogLine {
public:
    explicit LogLine(const char* format) : mFormat(format) { putWords(); }

    VX_WRAPS LogLine& operator<<(android::S64 number) {
        if (*mFormat == '\0') return *this;
        const char conversion = *(mFormat += strcspn(mFormat, "dux"));
        if (conversion != '\0') ++mFormat;
        if (conversion == 'x') {
            putHex(static_cast<android::U32>(number));
        } else {
            const android::U64 bits = static_cast<android::U64>(number);
            if (number < 0) put('-');
            const std::to_chars_result written = std::to_chars(mEnd, last(), number < 0 ? 0 - bits : bits);
            if (written.ec == std::errc()) mEnd = written.ptr;
        }
        putWords();
        return *this;
    }

    void log(const char* tag) {
        *mEnd = '\0';
        VX_LOG(tag, "%s", mText);
    }

private:
    char* last() { return mText + sizeof mText - 1; }
    void put(char c) {
        if (mEnd != last()) *mEnd++ = c;
    }
    void putWords() {  // up to the next conversion
        for (; *mFormat != '\0' && *mFormat != '%'; ++mFormat) put(*mFormat);
    }
    void putHex(android::U32 number) {
        for (int shift = 28; shift >= 0; shift -= 4) put("0123456789abcdef"[number >> shift & 15]);
    }

    const char* mFormat;
    char mText[256];
    char* mEnd = mText;
};

/// Logs a message of which a file has thousands, as `VX_LOG` does. One that nobody takes is left to the log, which
/// drops it unread; any other is put together here, in a fraction of printf's time.
template <class... Numbers>
void logNumbers(const char* tag, const char* format, Numbers... numbers) {
    if (isLogged(tag)) {
        LogLine line(format);
        (line << ... << static_cast<android::S64>(numbers)).log(tag);
    } else {
        VX_LOG(tag, format, numbers...);
    }
}

}  // namespace vxsubtitle
