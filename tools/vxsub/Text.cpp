#include "Text.h"

#include <stdio.h>
#include <wchar.h>

#include "tools/meant/Utf8.h"

namespace vxsub {
namespace {

using android::U16;
using meant::appendUtf8;
using meant::takeUtf8;

bool isSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

/// Characters that would move the cursor, begin a terminal command or break a line.
bool isControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028 || c == 0x2029; }

void appendEscaped(std::string* out, char32_t c) {
    char text[16];
    switch (c) {
        case '\n':
            *out += "\\n";
            return;
        case '\r':
            *out += "\\r";
            return;
        case '\t':
            *out += "\\t";
            return;
        case 0:
            *out += "\\0";
            return;
        default:
            break;
    }
    snprintf(text, sizeof text, c < 0x80 ? "\\x%02x" : "\\u%04x", unsigned(c));
    *out += text;
}

size_t columnsOf(char32_t c) {
    const int columns = wcwidth(wchar_t(c));
    return columns < 0 ? 1 : size_t(columns);
}

/// One line's characters, each as it is displayed, cut into rows of at most `width` columns.
class RowBreaker {
public:
    RowBreaker(std::vector<std::string>* rows, size_t width) : mRows(rows), mWidth(width) {}

    void put(char32_t c) {
        std::string shown;
        if (isControl(c))
            appendEscaped(&shown, c);
        else
            appendUtf8(&shown, c);
        const size_t columns = isControl(c) ? shown.size() : columnsOf(c);
        const bool isFull = mWidth > 0 && mColumns > 0 && mColumns + columns > mWidth;
        if (isFull) breakRow(c == ' ' ? Place{mRow.size(), mColumns} : mBlank);
        if (c == ' ' && mIsContinued && mRow.empty()) return;  // the break stands for it
        mRow += shown;
        mColumns += columns;
        if (c == ' ') mBlank = {mRow.size(), mColumns};
    }

    void endLine() {
        mRows->push_back(mRow);
        mRow.clear();
        mColumns = 0;
        mBlank = {0, 0};
        mIsContinued = false;
    }

private:
    struct Place {
        size_t bytes, columns;
    };

    /// Ends the row there, or here when no place was found.
    void breakRow(Place at) {
        if (at.bytes == 0) at = {mRow.size(), mColumns};
        std::string row = mRow.substr(0, at.bytes);
        while (!row.empty() && row.back() == ' ') row.pop_back();
        mRows->push_back(row);
        mRow.erase(0, at.bytes);
        mColumns -= at.columns;
        mBlank = {0, 0};
        mIsContinued = true;
    }

    std::vector<std::string>* mRows;
    size_t mWidth;
    std::string mRow;
    size_t mColumns = 0;
    Place mBlank = {0, 0};      ///< behind the row's last blank
    bool mIsContinued = false;  ///< the row goes on with a line that was broken
};

std::u32string_view withoutBlankEnds(std::u32string_view text) {
    const char32_t blanks[] = U" \t\r\n";
    const size_t first = text.find_first_not_of(blanks);
    if (first == text.npos) return {};
    const size_t line = text.substr(0, first).find_last_of(U'\n');
    if (line != text.npos) text.remove_prefix(line + 1);
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

}  // namespace

std::u32string decodeUtf8(std::string_view bytes) {
    std::u32string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) text.push_back(takeUtf8(&bytes));
    return text;
}

std::u32string decodeUtf16(const std::vector<U16>& units) {
    std::u32string text;
    text.reserve(units.size());
    for (size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        const char32_t next = i + 1 < units.size() ? units[i + 1] : 0;
        if (!isSurrogate(unit)) {
            text.push_back(unit);
        } else if (unit < 0xDC00 && next >= 0xDC00 && next <= 0xDFFF) {
            text.push_back(0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
            ++i;
        } else {
            text.push_back(kInvalid);
        }
    }
    return text;
}

std::string encodeUtf8(std::u32string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char32_t c : text) appendUtf8(&out, c);
    return out;
}

std::string escapeLine(std::u32string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char32_t c : text) {
        if (isControl(c))
            appendEscaped(&out, c);
        else if (c == '\\')
            out += "\\\\";
        else
            appendUtf8(&out, c);
    }
    return out;
}

std::vector<std::string> displayLines(std::u32string_view text, size_t width) {
    std::vector<std::string> rows;
    text = withoutBlankEnds(text);
    if (text.empty()) return rows;
    RowBreaker row(&rows, width);
    for (const char32_t c : text) {
        if (c == '\n')
            row.endLine();
        else
            row.put(c);
    }
    row.endLine();
    return rows;
}

size_t displayWidth(std::string_view text) {
    size_t columns = 0;
    while (!text.empty()) columns += columnsOf(takeUtf8(&text));
    return columns;
}

}  // namespace vxsub
