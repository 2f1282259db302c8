#include "tools/check/Lines.h"

namespace check {

bool hasForm(std::string_view line, std::string_view form) {
    while (!form.empty()) {
        const bool isMany = form.size() > 1 && form[0] == '0' && form[1] == '+';
        if (line.empty() || !(form[0] == '0' ? isDigit(line[0]) : line[0] == form[0])) return false;
        do line.remove_prefix(1);
        while (isMany && !line.empty() && isDigit(line[0]));
        form.remove_prefix(isMany ? 2 : 1);
    }
    return true;
}

std::vector<std::string> numbersOf(std::string_view line) {
    std::vector<std::string> numbers;
    bool isInside = false;
    for (const char c : line) {
        if (isDigit(c) && !isInside) numbers.emplace_back();
        isInside = isDigit(c);
        if (isInside) numbers.back() += c;
    }
    return numbers;
}

size_t countNumbers(std::string_view line) {
    size_t count = 0;
    for (size_t i = 0; i < line.size(); ++i) count += isDigit(line[i]) && (i == 0 || !isDigit(line[i - 1]));
    return count;
}

}  // namespace check
