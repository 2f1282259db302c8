/// One entry of a .sub dialect, written from the pattern in the list of dialects.
#pragma once

#include <stdio.h>

#include <string>
#include <string_view>

namespace test {

/// `$h $m $s $c $f` are the start's hours, minutes, seconds and hundredths in two digits and its frame at 25 frames a
/// second, capitals the end's, `$t` the text.
inline std::string dialectEntry(std::string_view pattern, unsigned startMs, unsigned endMs, std::string_view text) {
    const auto number = [](const char* format, unsigned value) {
        char digits[16];
        snprintf(digits, sizeof digits, format, value);
        return std::string(digits);
    };
    std::string entry;
    for (size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != '$' || i + 1 == pattern.size()) {
            entry += pattern[i];
            continue;
        }
        const char field = pattern[++i];
        const bool isEnd = field >= 'A' && field <= 'Z';
        const unsigned ms = isEnd ? endMs : startMs;
        switch (isEnd ? field - 'A' + 'a' : field) {
            case 'h':
                entry += number("%02u", ms / 3600000);
                break;
            case 'm':
                entry += number("%02u", ms / 60000 % 60);
                break;
            case 's':
                entry += number("%02u", ms / 1000 % 60);
                break;
            case 'c':
                entry += number("%02u", ms / 10 % 100);
                break;
            case 'f':
                entry += number("%u", ms / 40);
                break;
            case 't':
                entry += text;
                break;
            default:
                entry += {'$', field};
        }
    }
    return entry;
}

}  // namespace test
