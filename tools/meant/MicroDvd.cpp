// MicroDVD: the frames of start and end in braces, and the text.
#include "tools/meant/Markup.h"
#include "tools/meant/Readers.h"
#include "tools/meant/Scan.h"

namespace meant {
namespace {

struct Line {
    int64_t start;
    std::optional<int64_t> end;
    std::string_view text;
};

std::optional<Line> lineOf(std::string_view line) {
    Scan in(line);
    in.skipBlanks();
    if (!in.eat('{')) return std::nullopt;
    const Scan::Digits start = in.eatDigits();
    if (!start || !in.eat('}')) return std::nullopt;
    in.skipBlanks();
    if (!in.eat('{')) return std::nullopt;
    const Scan::Digits end = in.eatDigits();
    if (!in.eat('}')) return std::nullopt;
    return Line{start.value, end ? std::optional(end.value) : std::nullopt, in.rest()};
}

/// The rate, where a text is nothing else: `23.976`; 0 otherwise.
uint32_t rateOf(const Line& line) {
    constexpr int64_t kSlowest = 5, kFastest = 250, kLatestFrame = 1;
    if (line.start > kLatestFrame) return 0;
    Scan in(trimmed(line.text));
    const Scan::Digits whole = in.eatDigits();
    if (!whole || whole.value < kSlowest || whole.value > kFastest) return 0;
    const Ms thousandths = in.eatAny(".,") != 0 ? in.eatFraction().value_or(0) : 0;
    in.skipBlanks();
    in.eat("fps");
    return in.atEnd() ? static_cast<uint32_t>(whole.value * 1000 + thousandths) : 0;
}

Rate rateToldBy(const Options& options) {
    if (options.rateThousandths != 0) return {options.rateThousandths, RateFrom::Told};
    return {kUsualRate, RateFrom::Assumed};
}

/// A text that was wrapped.
bool continuesText(std::string_view line) { return !isEmptyLine(line) && line.front() != '{'; }

}  // namespace

bool is::microDvdLine(std::string_view line) { return lineOf(line).has_value(); }

void readMicroDvd(const Source& source, const Options& options, File* file) {
    const std::vector<std::string_view>& lines = source.lines();
    file->rate = rateToldBy(options);
    std::vector<Entry> entries;
    for (size_t i = 0; i < lines.size();) {
        const std::optional<Line> line = lineOf(lines[i]);
        const size_t first = i++;
        if (!line) continue;
        const uint32_t rate = entries.empty() ? rateOf(*line) : 0;
        if (rate != 0) {
            file->rate = {rate, RateFrom::File};
            continue;
        }
        while (i < lines.size() && continuesText(lines[i])) ++i;
        Entry entry = entryAt(source, first, i);
        entry.start = timeOfFrame(line->start, file->rate.thousandths);
        if (line->end) {
            entry.end = timeOfFrame(*line->end, file->rate.thousandths);
            entry.endFrom = End::Given;
        }
        entry.text = plainText(trimmed(textFrom(line->text, source, i)), markupWithBars());
        entries.push_back(std::move(entry));
    }
    addEndingAtNext(std::move(entries), file);
}

}  // namespace meant
