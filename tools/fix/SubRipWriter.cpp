#include <stdio.h>

#include "tools/fix/SafeText.h"
#include "tools/fix/Writers.h"

namespace fix {
namespace {

std::string timeText(Ms time) {
    char text[40];
    snprintf(text, sizeof text, "%02lld:%02lld:%02lld,%03lld", static_cast<long long>(time / 3600000),
             static_cast<long long>(time / 60000 % 60), static_cast<long long>(time / 1000 % 60),
             static_cast<long long>(time % 1000));
    return text;
}

std::string withCrLf(const std::string& text) {
    std::string result;
    for (const char c : text) result += c == '\n' ? "\r\n" : std::string(1, c);
    return result;
}

}  // namespace

std::string writeSubRip(const std::vector<Piece>& pieces, Letters letters) {
    std::string text = "\xEF\xBB\xBF";
    size_t number = 0;
    for (const Piece& piece : pieces)
        text += std::to_string(++number) + "\r\n" + timeText(piece.start) + " --> " + timeText(piece.end) + "\r\n" +
                withCrLf(piece.text) + "\r\n\r\n";
    if (letters == Letters::Utf8) return text;
    std::string wide;
    appendUtf16(text, &wide);
    return wide;
}

}  // namespace fix
