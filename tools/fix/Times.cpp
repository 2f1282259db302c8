#include "tools/fix/Times.h"

#include <stdio.h>

#include <algorithm>

namespace fix {

std::string timeText(const char* format, meant::Ms time) {
    char text[80];
    snprintf(text, sizeof text, format, static_cast<int>(time / 3600000), static_cast<int>(time / 60000 % 60),
             static_cast<int>(time / 1000 % 60), static_cast<int>(time % 1000));
    return text;
}

std::string replaced(std::string_view text, std::string_view what, std::string_view with) {
    std::string result;
    for (size_t at = 0; at < text.size();) {
        const size_t found = std::min(text.find(what, at), text.size());
        result.append(text, at, found - at);
        if (found < text.size()) result += with;
        at = found + what.size();
    }
    return result;
}

}  // namespace fix
