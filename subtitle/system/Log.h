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

/// The messages of which a file has thousands, under one tag. Ones that nobody takes are left to the log, which drops
/// them unread; others are put together here, in a fraction of printf's time.
class ManyMessages {
public:
    /// Asks the log once: its answer decides how the messages are put together, and nothing else.
    explicit ManyMessages(const char* tag) : mTag(tag), mTaken(isLogged(tag)) {}

    /// Logs one as `VX_LOG` does.
    template <class... Numbers>
    __attribute__((always_inline)) void log(const char* format, Numbers... numbers) const {
        if (mTaken) {
            putTogether(format, static_cast<android::S64>(numbers)...);
        } else {
            VX_LOG(mTag, format, numbers...);
        }
    }

private:
    template <class... Numbers>
    __attribute__((noinline)) void putTogether(const char* format, Numbers... numbers) const {
        LogLine line(format);
        (line << ... << numbers).log(mTag);
    }

    const char* mTag;
    bool mTaken;
};

}  // namespace vxsubtitle
