/// Texts in which the library finds nothing but text.
#pragma once

#include <string>
#include <string_view>

#include "tools/fix/Fix.h"

namespace fix {

/// The longest text of SubRip, in bytes of UTF-8 or UTF-16 with CR LF: as much as the library's work buffer takes, less
/// a margin.
constexpr size_t kMostBytes = 8000;

/// What happened to a text.
struct Changes {
    bool angles = false;  ///< some are others of like look
    bool braces = false;  ///< likewise
    bool isCut = false;
    bool hasTimes = false;  ///< a line that reads as a line of times got a no-break space in front
};

/// Which brackets the library takes for markup.
enum class Brackets {
    WithLetters,  ///< those with a letter or '/' behind them, closed on their line
    OpenBraces,   ///< likewise, and braces that are not closed
    All,
};

/// The text without control characters; no line of it is empty. Brackets that would be taken for markup are replaced by
/// the full-width ones. Cut at a line when it is too long, or within the first.
std::string safeText(std::string_view text, Letters letters, Brackets brackets, Changes* changes);

/// Puts a no-break space in front of each line but the first that the library would read times from.
std::string withoutTimeLines(const std::string& text, Letters letters, Changes* changes);

/// Appends UTF-8 as UTF-16, little-endian.
void appendUtf16(std::string_view utf8, std::string* bytes);

}  // namespace fix
