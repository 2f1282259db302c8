/// Small pieces of text that every writer needs.
#pragma once

#include <string>
#include <string_view>

#include "tools/meant/Meant.h"

namespace fix {

/// Hours, minutes, seconds and milliseconds, as many of them as the format has, each for an `int`.
std::string timeText(const char* format, meant::Ms time);

std::string replaced(std::string_view text, std::string_view what, std::string_view with);

}  // namespace fix
