#include "tools/meant/Scan.h"

namespace meant {

bool sameWord(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

std::string_view trimmedBehind(std::string_view text) {
    constexpr std::string_view kNoBreakSpace = "\xC2\xA0";
    while (!text.empty()) {
        if (isBlank(text.back())) {
            text.remove_suffix(1);
        } else if (text.size() >= 2 && text.substr(text.size() - 2) == kNoBreakSpace) {
            text.remove_suffix(2);
        } else {
            break;
        }
    }
    return text;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kNoBreakSpace = "\xC2\xA0";
    while (!text.empty() && (isBlank(text.front()) || text.substr(0, 2) == kNoBreakSpace))
        text.remove_prefix(isBlank(text.front()) ? 1 : 2);
    return trimmedBehind(text);
}

bool isNumberLine(std::string_view line) {
    Scan in(trimmed(line));
    return in.eatDigits() && in.atEnd();
}

bool Scan::eat(std::string_view word) {
    if (!sameWord(mRest.substr(0, word.size()), word)) return false;
    mRest.remove_prefix(word.size());
    return true;
}

char Scan::eatAny(std::string_view characters) {
    for (const char c : characters)
        if (eat(c)) return c;
    return 0;
}

void Scan::skipAny(std::string_view characters) {
    const size_t end = mRest.find_first_not_of(characters);
    mRest.remove_prefix(end < mRest.size() ? end : mRest.size());
}

Scan::Digits Scan::eatDigits() {
    constexpr int64_t kLargest = 1000000000;
    Digits digits;
    for (; isDigit(peek()); mRest.remove_prefix(1), ++digits.count)
        if (digits.value < kLargest) digits.value = digits.value * 10 + (peek() - '0');
    return digits;
}

std::optional<Ms> Scan::eatFraction() {
    Ms ms = 0;
    size_t count = 0;
    for (Ms weight = 100; isDigit(peek()); mRest.remove_prefix(1), ++count, weight /= 10) ms += (peek() - '0') * weight;
    if (count == 0) return std::nullopt;
    return ms;
}

std::optional<Ms> Scan::eatHms() {
    Scan in = *this;
    const bool isNegative = in.eat('-');
    const Digits hours = in.eatDigits();
    if (!hours || !in.eat(':')) return std::nullopt;
    const Digits minutes = in.eatDigits();
    if (!minutes || minutes.count > 2 || !in.eat(':')) return std::nullopt;
    const Digits seconds = in.eatDigits();
    if (!seconds || seconds.count > 2) return std::nullopt;
    *this = in;
    const Ms ms = ((hours.value * 60 + minutes.value) * 60 + seconds.value) * 1000;
    return isNegative ? -ms : ms;
}

}  // namespace meant
