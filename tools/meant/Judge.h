/// Which format a file has, by its content.
#pragma once

#include <string>
#include <string_view>

#include "tools/meant/Formats.h"
#include "tools/meant/Source.h"

namespace meant {

/// What bytes are that can be no text: a format of pictures, or `None` with its nature in words. False for others.
bool judgeBytes(std::string_view bytes, Format* format, std::string* nature);

/// In words, what bytes are that have turned out to be no subtitles.
std::string natureOf(std::string_view bytes);

/// The format that most lines of a text speak for; of several with as many, the one that the file name's ending stands
/// for.
Format judgeText(const Source& source, std::string_view ending);

}  // namespace meant
