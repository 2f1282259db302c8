/// UTF-8, character by character.
#pragma once

#include <string>
#include <string_view>

namespace meant {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kByteOrderMark = 0xFEFF;

inline bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }
bool isAscii(std::string_view text);

/// Takes the first character off `in`, which is not empty. What is none gives `kReplacement`, and loses the bytes that
/// could have begun one.
char32_t takeUtf8(std::string_view* in);

/// What is no character is appended as `kReplacement`.
void appendUtf8(std::string* out, char32_t c);

/// How many of those a text has.
size_t countReplacements(std::string_view utf8);

/// How many UTF-16 units the text has.
size_t utf16Length(std::string_view utf8);

}  // namespace meant
