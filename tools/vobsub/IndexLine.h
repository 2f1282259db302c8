/// The lines of a VobSub index, taken apart from left to right. What is odd about them is told, and never judged.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <optional>
#include <string_view>

#include "tools/meant/Scan.h"

namespace vobsub {

using meant::Ms;
using meant::Scan;

/// What a line is about.
enum class Keyword { None, Timestamp, Id, Delay, Size, Palette };

/// Takes a keyword with its colon, in any letter case, and the blanks behind it.
Keyword eatKeyword(Scan* in);

/// `1:02:03:500`, with or without a sign. Behind a colon stand milliseconds, behind a point or a comma a fraction of
/// any width.
struct Time {
    Ms ms = 0;
    char sign = 0;  ///< 0 where there is none
};
std::optional<Time> eatTime(Scan* in);

/// The digits of a position or a colour, whose blanks in front are skipped.
struct Hex {
    uint64_t value = 0;  ///< its low bits, where there are more digits
    size_t count = 0;    ///< of the digits
};
Hex eatHex(Scan* in);

/// `720x576`
struct FrameSize {
    int64_t width = 0, height = 0;  ///< 0 where there is no number
    bool hasCross = false;
    bool hasBlanks = false;  ///< between the two
};
FrameSize eatFrameSize(Scan* in);

/// The code of a language, up to a comma or a blank.
std::string_view eatLanguage(Scan* in);

}  // namespace vobsub
