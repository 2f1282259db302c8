// SubViewer 1.0: a time in brackets, lines of text, the time of the end.
#include "tools/meant/Markup.h"
#include "tools/meant/Readers.h"
#include "tools/meant/Scan.h"

namespace meant {
namespace {

std::optional<Ms> timeOf(std::string_view line) {
    Scan in(trimmed(line));
    if (!in.eat('[')) return std::nullopt;
    in.skipBlanks();
    const std::optional<Ms> time = in.eatHms();
    if (!time) return std::nullopt;
    const Ms fraction = in.eatAny(".,:") != 0 ? in.eatFraction().value_or(0) : 0;
    in.skipBlanks();
    if (!in.eat(']') || !in.atEnd()) return std::nullopt;
    return *time < 0 ? *time - fraction : *time + fraction;
}

/// `[END]`, `******** END SCRIPT ********`
bool isClosing(std::string_view line) {
    Scan in(trimmed(line));
    return in.eat("[END]") || in.eat("****");
}

}  // namespace

bool is::subViewer10Time(std::string_view line) { return timeOf(line).has_value(); }

void readSubViewer10(const Source& source, const Options&, File* file) {
    const std::vector<std::string_view>& lines = source.lines();
    std::vector<Entry> entries;
    for (size_t i = 0; i < lines.size();) {
        const std::optional<Ms> start = timeOf(lines[i]);
        const size_t first = i++;
        if (!start) continue;
        if (entries.empty()) file->delay = delayIn(source, first);
        while (i < lines.size() && !timeOf(lines[i]) && !isClosing(lines[i])) ++i;
        entries.push_back(entryAt(source, first, i));
        entries.back().start = *start;
        entries.back().text = plainText(textOf(source, first + 1, i), markupWithBars());
    }
    addEndingAtNext(std::move(entries), file);
}

}  // namespace meant
