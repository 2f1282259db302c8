#include "tools/fix/SafeText.h"

#include <algorithm>

#include "tools/meant/Scan.h"
#include "tools/meant/Utf8.h"

namespace fix {
namespace {

constexpr std::string_view kNoBreakSpace = "\xC2\xA0";

struct Bracket {
    char open, close;
    std::string_view safeOpen, safeClose;  ///< full width
};
constexpr Bracket kAngles = {'<', '>', "\xEF\xBC\x9C", "\xEF\xBC\x9E"};
constexpr Bracket kBraces = {'{', '}', "\xEF\xBD\x9B", "\xEF\xBD\x9D"};

/// Whether the bracket at `at` begins what the library leaves out. The line's last closing one stands at `lastClose`.
bool isEaten(std::string_view line, size_t at, char open, size_t lastClose, Brackets brackets) {
    if (line[at] != open) return false;
    if (brackets == Brackets::All) return true;
    if (at + 1 >= line.size() || !(meant::isLetter(line[at + 1]) || line[at + 1] == '/')) return false;
    const bool needsNoEnd = brackets == Brackets::OpenBraces && open == '{';
    return needsNoEnd || (lastClose != line.npos && lastClose > at);
}

void replaceEaten(const Bracket& bracket, Brackets brackets, std::string* line, bool* isChanged) {
    if (line->find(bracket.open) == line->npos) return;
    const size_t lastClose = line->rfind(bracket.close);
    std::string safe;
    size_t open = 0;  ///< replaced ones that are not closed yet
    for (size_t at = 0; at < line->size(); ++at) {
        const char c = (*line)[at];
        if (isEaten(*line, at, bracket.open, lastClose, brackets)) {
            safe += bracket.safeOpen;
            ++open;
        } else if (c == bracket.close && open > 0) {
            safe += bracket.safeClose;
            --open;
        } else {
            safe += c;
        }
    }
    *isChanged |= safe.size() != line->size();
    *line = std::move(safe);
}

/// Control characters are none to be seen, and some would be taken for blanks in front of the text.
std::string withoutControls(std::string_view line) {
    std::string clean(line);
    for (char& c : clean)
        if (static_cast<unsigned char>(c) < ' ' || c == 0x7F) c = ' ';
    return std::string(meant::trimmed(clean));
}

size_t sizeAs(std::string_view utf8, Letters letters) {
    return letters == Letters::Utf16 ? 2 * meant::utf16Length(utf8) : utf8.size();
}

/// As much of a line as `room` bytes take, cut between words where that costs little.
std::string_view cutLine(std::string_view line, size_t room, Letters letters) {
    std::string_view rest = line;
    size_t fitting = 0, word = 0, size = 0;
    while (!rest.empty()) {
        if (rest.front() == ' ') word = fitting;
        meant::takeUtf8(&rest);
        const size_t end = line.size() - rest.size();
        size += sizeAs(line.substr(fitting, end - fitting), letters);
        if (size > room) break;
        fitting = end;
    }
    constexpr size_t kLongestWord = 100;
    return line.substr(0, fitting - word <= kLongestWord ? word : fitting);
}

// ------------------------------------------------------------------------------------------------------ times

/// The characters as the library narrows them to look for times: 8-bit text as it is, of UTF-16 the bytes, without
/// those that are 0 above.
std::string narrowed(std::string_view utf8, Letters letters) {
    if (letters == Letters::Utf8) return std::string(utf8);
    std::string wide, narrow;
    appendUtf16(utf8, &wide);
    for (size_t i = 0; i < wide.size(); ++i)
        if (i % 2 == 0 || wide[i] != 0) narrow += wide[i];
    return narrow;
}

/// Whether the library reads times at the beginning of `text`: eight numbers with the right count of characters, of
/// whatever kind, between them. Blanks in front of anything are passed over, line ends are not.
bool readsAsTimes(std::string_view text) {
    constexpr size_t kMostDigits = 16;
    const auto skipBlanks = [&text] { text.remove_prefix(std::min(text.find_first_not_of(" \t\v\f"), text.size())); };
    for (const char c : std::string_view("%:%:%,%-->%:%:%,%")) {
        skipBlanks();
        if (text.empty()) return false;
        size_t size = 1;
        if (c == '%') {
            size = std::min({text.find_first_not_of("0123456789"), text.size(), kMostDigits});
            if (size == 0) return false;
        }
        text.remove_prefix(size);
    }
    return true;
}

}  // namespace

void appendUtf16(std::string_view utf8, std::string* bytes) {
    const auto append = [bytes](char32_t unit) {
        *bytes += static_cast<char>(unit & 0xFF);
        *bytes += static_cast<char>(unit >> 8);
    };
    while (!utf8.empty()) {
        const char32_t c = meant::takeUtf8(&utf8);
        if (c < 0x10000) {
            append(c);
        } else {
            append(0xD800 + ((c - 0x10000) >> 10));
            append(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
}

std::string safeText(std::string_view text, Letters letters, Brackets brackets, Changes* changes) {
    const size_t lineEnd = letters == Letters::Utf16 ? 4 : 2;
    std::string safe;
    size_t size = 0;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        std::string line = withoutControls(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() && (safe.empty() || text.empty())) continue;
        if (line.empty()) line = kNoBreakSpace;
        replaceEaten(kAngles, brackets, &line, &changes->angles);
        replaceEaten(kBraces, brackets, &line, &changes->braces);
        if (size + sizeAs(line, letters) + lineEnd > kMostBytes) {
            changes->isCut = true;
            if (safe.empty()) safe = cutLine(line, kMostBytes - lineEnd, letters);
            break;
        }
        size += sizeAs(line, letters) + lineEnd;
        safe += (safe.empty() ? "" : "\n") + line;
    }
    return safe;
}

std::string withoutTimeLines(const std::string& text, Letters letters, Changes* changes) {
    std::string safe;
    for (size_t at = 0; at <= text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        const char first = at < end ? text[at] : '\0';
        const bool mayBe = at > 0 && (meant::isDigit(first) || static_cast<unsigned char>(first) >= 0xC0);
        if (mayBe) {
            // The library goes on behind the line, where CR LF counts as two characters.
            constexpr size_t kLookedAt = 400;
            std::string ahead(text, at, kLookedAt);
            for (size_t i = ahead.find('\n'); i != ahead.npos; i = ahead.find('\n', i + 2)) ahead.replace(i, 1, "\r\n");
            if (readsAsTimes(narrowed(ahead, letters))) {
                safe += kNoBreakSpace;
                changes->hasTimes = true;
            }
        }
        safe.append(text, at, end - at);
        if (end < text.size()) safe += '\n';
        at = end + 1;
    }
    return safe;
}

}  // namespace fix
