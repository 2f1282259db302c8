/// Character entities of HTML.
#pragma once

#include <string_view>

namespace meant {

/// The character of the entity that `text` begins with, and its size; 0 when it is none.
char32_t takeEntity(std::string_view* text);

}  // namespace meant
