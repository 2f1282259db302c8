/// Entry texts as people see them: code points, valid UTF-8, and nothing that a terminal would act on.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "subtitle/SubtitleTypes.h"

namespace vxsub {

/// Stands for what is no text in its encoding.
constexpr char32_t kInvalid = 0xFFFD;

/// Well-formed UTF-8 of one to four bytes a character. Of what is not, each longest beginning of a sequence, or
/// else each byte, becomes one `kInvalid`.
std::u32string decodeUtf8(std::string_view bytes);

/// Joins surrogate pairs; a surrogate alone becomes `kInvalid`.
std::u32string decodeUtf16(const std::vector<android::U16>& units);

/// Always valid UTF-8: what is no character comes out as `kInvalid`.
std::string encodeUtf8(std::u32string_view text);

/// UTF-8 on one line: line breaks and other control characters as \n, \r, \t, \0, \x1b or \u0085, a backslash
/// doubled.
std::string escapeLine(std::u32string_view text);

/// Bytes that should be UTF-8, such as a file name, as `escapeLine` shows them.
inline std::string printable(std::string_view bytes) { return escapeLine(decodeUtf8(bytes)); }

/// UTF-8 for display, a string per line: blank lines at both ends fall away and control characters other than line
/// breaks stand as in `escapeLine`. With a `width`, longer lines are broken at blanks, or anywhere when a word is
/// longer than that. A character of unknown width takes one column.
std::vector<std::string> displayLines(std::u32string_view text, size_t width = 0);

/// Columns that UTF-8 text without control characters takes on a terminal.
size_t displayWidth(std::string_view text);

}  // namespace vxsub
