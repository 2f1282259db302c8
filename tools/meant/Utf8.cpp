#include "tools/meant/Utf8.h"

#include <algorithm>

namespace meant {
namespace {

bool isSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

/// What a first byte says of its sequence: how many bytes follow, and the range of the first of them, which keeps out
/// longer forms than needed, surrogates and what lies behind U+10FFFF.
struct Lead {
    unsigned char first, last;
    unsigned char followers;
    unsigned char low, high;
    unsigned char bits;  ///< mask of the first byte's own bits
};
constexpr Lead kLeads[] = {
    {0x00, 0x7F, 0, 0x00, 0x00, 0x7F}, {0xC2, 0xDF, 1, 0x80, 0xBF, 0x1F}, {0xE0, 0xE0, 2, 0xA0, 0xBF, 0x0F},
    {0xE1, 0xEC, 2, 0x80, 0xBF, 0x0F}, {0xED, 0xED, 2, 0x80, 0x9F, 0x0F}, {0xEE, 0xEF, 2, 0x80, 0xBF, 0x0F},
    {0xF0, 0xF0, 3, 0x90, 0xBF, 0x07}, {0xF1, 0xF3, 3, 0x80, 0xBF, 0x07}, {0xF4, 0xF4, 3, 0x80, 0x8F, 0x07},
};

const Lead* leadOf(unsigned char byte) {
    for (const Lead& lead : kLeads)
        if (byte >= lead.first && byte <= lead.last) return &lead;
    return nullptr;
}

unsigned char firstOf(std::string_view in) { return static_cast<unsigned char>(in.front()); }

}  // namespace

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return isAscii(c); });
}

char32_t takeUtf8(std::string_view* in) {
    const unsigned char first = firstOf(*in);
    in->remove_prefix(1);
    const Lead* lead = leadOf(first);
    if (lead == nullptr) return kReplacement;
    char32_t c = first & lead->bits;
    unsigned char low = lead->low, high = lead->high;
    for (int left = lead->followers; left > 0; --left) {
        if (in->empty() || firstOf(*in) < low || firstOf(*in) > high) return kReplacement;
        c = c << 6 | (firstOf(*in) & 0x3F);
        in->remove_prefix(1);
        low = 0x80;
        high = 0xBF;
    }
    return c;
}

void appendUtf8(std::string* out, char32_t c) {
    if (isSurrogate(c) || c > 0x10FFFF) c = kReplacement;
    const auto put = [out](char32_t byte) { out->push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | c >> 6);
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

size_t countReplacements(std::string_view utf8) {
    constexpr std::string_view kEncoded = "\xEF\xBF\xBD";
    size_t count = 0;
    for (size_t at = utf8.find(kEncoded); at != utf8.npos; at = utf8.find(kEncoded, at + kEncoded.size())) ++count;
    return count;
}

size_t utf16Length(std::string_view utf8) {
    size_t units = 0;
    while (!utf8.empty()) units += takeUtf8(&utf8) >= 0x10000 ? 2 : 1;
    return units;
}

}  // namespace meant
