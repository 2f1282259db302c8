// SubViewer 2.0: a line with start and end, lines of text, an empty line.
#include "tools/meant/Markup.h"
#include "tools/meant/Readers.h"
#include "tools/meant/Scan.h"

namespace meant {
namespace {

struct Times {
    Ms start, end;
};

/// A comma with a fraction behind it, not with the other time.
bool eatDecimalComma(Scan* in) {
    Scan next = *in;
    const bool isDecimal = next.eat(',') && next.eatDigits() && !next.eat(':');
    if (isDecimal) in->eat(',');
    return isDecimal;
}

std::optional<Ms> eatTime(Scan* in) {
    in->skipBlanks();
    const std::optional<Ms> whole = in->eatHms();
    if (!whole) return std::nullopt;
    const Ms fraction = in->eatAny(".:") != 0 || eatDecimalComma(in) ? in->eatFraction().value_or(0) : 0;
    in->skipBlanks();
    return *whole < 0 ? *whole - fraction : *whole + fraction;
}

std::optional<Times> timesOf(std::string_view line) {
    Scan in(line);
    const std::optional<Ms> start = eatTime(&in);
    if (!start || !in.eat(',')) return std::nullopt;
    const std::optional<Ms> end = eatTime(&in);
    if (!end || !in.atEnd()) return std::nullopt;
    return Times{*start, *end};
}

/// `[COLF]&HFFFFFF,[STYLE]bd,[SIZE]18,[FONT]Arial`: how the entries that follow look.
bool isStyle(std::string_view line) {
    Scan in(trimmed(line));
    return in.eat("[COLF]") || in.eat("[STYLE]") || in.eat("[SIZE]") || in.eat("[FONT]");
}

size_t endOfText(const std::vector<std::string_view>& lines, size_t first, size_t last) {
    while (first < last && !isStyle(lines[first])) ++first;
    return first;
}

}  // namespace

bool is::subViewer20Time(std::string_view line) { return timesOf(line).has_value(); }

void readSubViewer20(const Source& source, const Options&, File* file) {
    const std::vector<std::string_view>& lines = source.lines();
    bool isFirst = true;
    for (size_t i = 0; i < lines.size();) {
        const std::optional<Times> times = timesOf(lines[i]);
        const size_t first = i++;
        if (!times) continue;
        if (isFirst) file->delay = delayIn(source, first);
        isFirst = false;
        while (i < lines.size() && !timesOf(lines[i])) ++i;
        Entry entry = entryAt(source, first, i, times->start, times->end);
        entry.text = plainText(textOf(source, first + 1, endOfText(lines, first + 1, i)), markupWithBars());
        add(std::move(entry), file);
    }
}

}  // namespace meant
