/// The platform log: every message of the library goes to it at debug priority.
#pragma once

#include <android/log.h>
#include <string.h>

#include <charconv>
#include <string_view>

#include "subtitle/SubtitleTypes.h"
#include "subtitle/system/Wraps.h"

/// Logs a printf-style message under `tag` (null: no tag).
#define VX_LOG(tag, ...) ((void)__android_log_print(ANDROID_LOG_DEBUG, tag, __VA_ARGS__))

namespace vxsubtitle {

// Messages were written for the device, whose `long` has 32 bits. These give "%ld", "%lu" and "%lx" what they read
// there, on every machine.

constexpr long asLong(android::U32 value) { return static_cast<long>(static_cast<android::S32>(value)); }
constexpr unsigned long asUnsignedLong(uintptr_t value) { return static_cast<unsigned long>(value); }

/// A message of words and numbers, put together without a format: for those that a file has thousands of.
class LogLine {
public:
    LogLine& operator<<(std::string_view words) {
        const size_t fit = words.size() < room() ? words.size() : room();
        memcpy(mEnd, words.data(), fit);
        mEnd += fit;
        return *this;
    }
    VX_WRAPS LogLine& operator<<(android::S64 number) {  ///< as "%lld"
        const android::U64 bits = static_cast<android::U64>(number);
        if (number < 0) *this << "-";
        const std::to_chars_result written = std::to_chars(mEnd, mEnd + room(), number < 0 ? 0 - bits : bits);
        if (written.ec == std::errc()) mEnd = written.ptr;
        return *this;
    }
    LogLine& hex(android::U32 number) {  ///< as "%08x"
        char digits[8];
        for (char* digit = digits + sizeof digits; digit != digits; number >>= 4) {
            *--digit = "0123456789abcdef"[number & 15];
        }
        return *this << std::string_view(digits, sizeof digits);
    }
    void log(const char* tag) {
        *mEnd = '\0';
        VX_LOG(tag, "%s", mText);
    }

private:
    size_t room() const { return static_cast<size_t>(mText + sizeof mText - 1 - mEnd); }

    char mText[256];
    char* mEnd = mText;
};

}  // namespace vxsubtitle
