/// A file's lines as the rules see them: ASCII, whatever the width of its characters.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/meant/Scan.h"

namespace check {

using meant::isDigit;

/// Whether a line begins as the form does: '0' is any digit, "0+" one or more; all else is itself.
bool hasForm(std::string_view line, std::string_view form);

/// The digits of each number in a line.
std::vector<std::string> numbersOf(std::string_view line);
size_t countNumbers(std::string_view line);

}  // namespace check
