#include "tools/meant/Entities.h"

#include "tools/meant/Scan.h"

namespace meant {
namespace {

/// U+00A0 and the characters behind it.
constexpr const char* kLatin1[] = {
    "nbsp",   "iexcl",  "cent",   "pound",  "curren", "yen",    "brvbar", "sect",   "uml",    "copy",   "ordf",
    "laquo",  "not",    "shy",    "reg",    "macr",   "deg",    "plusmn", "sup2",   "sup3",   "acute",  "micro",
    "para",   "middot", "cedil",  "sup1",   "ordm",   "raquo",  "frac14", "frac12", "frac34", "iquest", "Agrave",
    "Aacute", "Acirc",  "Atilde", "Auml",   "Aring",  "AElig",  "Ccedil", "Egrave", "Eacute", "Ecirc",  "Euml",
    "Igrave", "Iacute", "Icirc",  "Iuml",   "ETH",    "Ntilde", "Ograve", "Oacute", "Ocirc",  "Otilde", "Ouml",
    "times",  "Oslash", "Ugrave", "Uacute", "Ucirc",  "Uuml",   "Yacute", "THORN",  "szlig",  "agrave", "aacute",
    "acirc",  "atilde", "auml",   "aring",  "aelig",  "ccedil", "egrave", "eacute", "ecirc",  "euml",   "igrave",
    "iacute", "icirc",  "iuml",   "eth",    "ntilde", "ograve", "oacute", "ocirc",  "otilde", "ouml",   "divide",
    "oslash", "ugrave", "uacute", "ucirc",  "uuml",   "yacute", "thorn",  "yuml",
};

constexpr struct {
    const char* name;
    char32_t character;
} kOthers[] = {
    {"amp", '&'},       {"lt", '<'},        {"gt", '>'},        {"quot", '"'},     {"apos", '\''},
    {"OElig", 0x152},   {"oelig", 0x153},   {"Scaron", 0x160},  {"scaron", 0x161}, {"Yuml", 0x178},
    {"circ", 0x2C6},    {"tilde", 0x2DC},   {"ensp", 0x2002},   {"emsp", 0x2003},  {"thinsp", 0x2009},
    {"zwnj", 0x200C},   {"zwj", 0x200D},    {"lrm", 0x200E},    {"rlm", 0x200F},   {"ndash", 0x2013},
    {"mdash", 0x2014},  {"lsquo", 0x2018},  {"rsquo", 0x2019},  {"sbquo", 0x201A}, {"ldquo", 0x201C},
    {"rdquo", 0x201D},  {"bdquo", 0x201E},  {"dagger", 0x2020}, {"bull", 0x2022},  {"hellip", 0x2026},
    {"lsaquo", 0x2039}, {"rsaquo", 0x203A}, {"euro", 0x20AC},   {"trade", 0x2122},
};

char32_t named(std::string_view name) {
    for (const auto& row : kOthers)
        if (name == row.name) return row.character;
    char32_t character = 0xA0;
    for (const char* row : kLatin1) {
        if (name == row) return character;
        ++character;
    }
    return 0;
}

/// `#39`, `#x27`; the semicolon is not looked at.
char32_t takeNumbered(Scan* in) {
    in->eat('#');
    if (!in->eat("x")) {
        const Scan::Digits digits = in->eatDigits();
        return digits && digits.value <= 0x10FFFF ? static_cast<char32_t>(digits.value) : 0;
    }
    char32_t value = 0;
    for (; isDigit(in->peek()) || (lower(in->peek()) >= 'a' && lower(in->peek()) <= 'f'); in->skip(1)) {
        const char c = lower(in->peek());
        if (value <= 0x10FFFF) value = value * 16 + static_cast<char32_t>(isDigit(c) ? c - '0' : c - 'a' + 10);
    }
    return value <= 0x10FFFF ? value : 0;
}

/// Those that are so common that their semicolon gets forgotten.
char32_t takeUnclosed(Scan* in) {
    for (const char* name : {"nbsp", "amp", "lt", "gt", "quot"})
        if (in->eat(name)) return named(name);
    return 0;
}

char32_t takeNamed(Scan* in) {
    constexpr size_t kLongestName = 8;
    const std::string_view rest = in->rest();
    const size_t end = rest.substr(0, kLongestName + 1).find(';');
    const char32_t character = end == rest.npos ? 0 : named(rest.substr(0, end));
    if (character == 0) return takeUnclosed(in);
    in->skip(end);
    return character;
}

}  // namespace

char32_t takeEntity(std::string_view* text) {
    Scan in(*text);
    if (!in.eat('&')) return 0;
    const char32_t character = in.peek() == '#' ? takeNumbered(&in) : takeNamed(&in);
    if (character == 0) return 0;
    in.eat(';');
    *text = in.rest();
    return character;
}

}  // namespace meant
