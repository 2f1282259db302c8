#include "tools/vobsub/IndexLine.h"

namespace vobsub {
namespace {

constexpr struct {
    std::string_view word;
    Keyword keyword;
} kKeywords[] = {
    {"timestamp:", Keyword::Timestamp}, {"id:", Keyword::Id},           {"delay:", Keyword::Delay},
    {"size:", Keyword::Size},           {"palette:", Keyword::Palette},
};

}  // namespace

Keyword eatKeyword(Scan* in) {
    for (const auto& row : kKeywords) {
        if (!in->eat(row.word)) continue;
        in->skipBlanks();
        return row.keyword;
    }
    return Keyword::None;
}

std::optional<Time> eatTime(Scan* in) {
    in->skipBlanks();
    const char sign = in->eatAny("+-");
    const std::optional<Ms> whole = in->eatHms();
    const char separator = in->eatAny(":.,");
    if (!whole || separator == 0) return std::nullopt;
    Scan digits = *in;
    const Scan::Digits part = in->eatDigits();
    if (!part) return std::nullopt;
    const Ms ms = *whole + (separator == ':' ? part.value : digits.eatFraction().value_or(0));
    return Time{sign == '-' ? -ms : ms, sign};
}

Hex eatHex(Scan* in) {
    in->skipBlanks();
    Hex hex;
    for (; !in->atEnd(); in->skip(1), ++hex.count) {
        const char c = meant::lower(in->peek());
        const bool isHexLetter = c >= 'a' && c <= 'f';
        if (!meant::isDigit(c) && !isHexLetter) break;
        hex.value = hex.value << 4 | static_cast<uint64_t>(isHexLetter ? c - 'a' + 10 : c - '0');
    }
    return hex;
}

FrameSize eatFrameSize(Scan* in) {
    FrameSize size;
    size.width = in->eatDigits().value;
    size.hasBlanks = meant::isBlank(in->peek());
    in->skipBlanks();
    size.hasCross = in->eat('x');
    size.hasBlanks |= meant::isBlank(in->peek());
    in->skipBlanks();
    size.height = in->eatDigits().value;
    return size;
}

std::string_view eatLanguage(Scan* in) {
    const std::string_view code = in->rest().substr(0, in->rest().find_first_of(", \t"));
    in->skip(code.size());
    return code;
}

}  // namespace vobsub
