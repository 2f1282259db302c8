/// Reading a line from left to right, and the times in it.
#pragma once

#include <optional>
#include <string_view>

#include "tools/meant/Meant.h"

namespace meant {

inline bool isBlank(char c) { return c == ' ' || c == '\t'; }
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }
inline char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
inline bool isLetter(char c) { return lower(c) >= 'a' && lower(c) <= 'z'; }

/// Compares ASCII letters in any case.
bool sameWord(std::string_view a, std::string_view b);

/// Without blanks, and no-break spaces, at both ends.
std::string_view trimmed(std::string_view text);
std::string_view trimmedBehind(std::string_view text);

/// Whether the line has nothing but blanks.
inline bool isEmptyLine(std::string_view line) { return trimmed(line).empty(); }

/// Whether the line is a number.
bool isNumberLine(std::string_view line);

/// What is left of a line. `eat...` takes what it names, or nothing and says so; a copy is a place to come back to.
class Scan {
public:
    explicit Scan(std::string_view text) : mRest(text) {}

    std::string_view rest() const { return mRest; }
    bool atEnd() const { return mRest.empty(); }
    char peek() const { return mRest.empty() ? '\0' : mRest.front(); }

    bool eat(char c) {
        const bool isNext = !mRest.empty() && mRest.front() == c;
        if (isNext) mRest.remove_prefix(1);
        return isNext;
    }
    bool eat(std::string_view word);           ///< any letter case
    char eatAny(std::string_view characters);  ///< the one that was eaten; 0 for none
    void skipAny(std::string_view characters);
    void skipBlanks() {
        while (!mRest.empty() && isBlank(mRest.front())) mRest.remove_prefix(1);
    }
    void skip(size_t count) { mRest.remove_prefix(count < mRest.size() ? count : mRest.size()); }

    struct Digits {
        int64_t value = 0;  ///< large ones stop growing, at a value that products of times bear
        size_t count = 0;
        explicit operator bool() const { return count > 0; }
    };
    Digits eatDigits();

    /// Digits behind a decimal sign, as milliseconds: 5 and 500 are 500, 04 is 40.
    std::optional<Ms> eatFraction();

    /// `1:02:03`, as milliseconds; a minus sign may stand in front, minutes and seconds have one or two digits.
    std::optional<Ms> eatHms();

private:
    std::string_view mRest;
};

}  // namespace meant
