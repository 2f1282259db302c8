// DVB subtitle system: start, end and text on one line; a number may stand in front.
#include <algorithm>

#include "tools/meant/Markup.h"
#include "tools/meant/Readers.h"
#include "tools/meant/Scan.h"

namespace meant {
namespace {

/// A time whose part below the second is a frame, or milliseconds.
struct Time {
    Ms ms = 0;  ///< without a frame
    int64_t frame = -1;
};

struct Line {
    Time start, end;
    std::string_view text;
};

std::optional<Time> eatTime(Scan* in) {
    Time time;
    const std::optional<Ms> whole = in->eatHms();
    if (!whole) return std::nullopt;
    time.ms = *whole;
    const char separator = in->eatAny(":;,.");
    Scan digits = *in;
    const Scan::Digits part = in->eatDigits();
    if (separator == 0 || !part) return std::nullopt;
    const bool isFrame = (separator == ':' || separator == ';') && part.count <= 2;
    if (isFrame) {
        time.frame = part.value;
    } else {
        time.ms += digits.eatFraction().value_or(0);
    }
    return time;
}

std::optional<Line> lineOf(std::string_view line) {
    Scan in(line);
    in.skipBlanks();
    Scan numbered = in;
    if (numbered.eatDigits() && isBlank(numbered.peek())) in = numbered;
    in.skipBlanks();
    Scan separated = in;
    if (separated.eat(':') && isBlank(separated.peek())) in = separated;
    in.skipBlanks();
    const std::optional<Time> start = eatTime(&in);
    if (!start || !isBlank(in.peek())) return std::nullopt;
    in.skipBlanks();
    const std::optional<Time> end = eatTime(&in);
    if (!end || !(in.atEnd() || isBlank(in.peek()))) return std::nullopt;
    return Line{*start, *end, in.rest()};
}

Rate rateOf(const std::vector<Line>& lines, const Options& options) {
    int64_t last = -1;
    for (const Line& line : lines) last = std::max({last, line.start.frame, line.end.frame});
    if (last < 0) return {};
    if (options.rateThousandths != 0) return {options.rateThousandths, RateFrom::Told};
    if (last < kUsualRate / 1000) return {kUsualRate, RateFrom::Assumed};
    constexpr uint32_t kNextUsualRate = 30000;
    return {std::max(kNextUsualRate, static_cast<uint32_t>(last + 1) * 1000), RateFrom::Frames};
}

Ms msOf(const Time& time, const Rate& rate) {
    return time.frame < 0 ? time.ms : time.ms + timeOfFrame(time.frame, rate.thousandths);
}

}  // namespace

bool is::dvbTextLine(std::string_view line) { return lineOf(line).has_value(); }

void readDvbText(const Source& source, const Options& options, File* file) {
    const std::vector<std::string_view>& lines = source.lines();
    std::vector<Line> times;
    std::vector<Entry> entries;
    for (size_t i = 0; i < lines.size();) {
        const std::optional<Line> line = lineOf(lines[i]);
        const size_t first = i++;
        if (!line) continue;
        while (i < lines.size() && !isEmptyLine(lines[i]) && !lineOf(lines[i])) ++i;  // further lines of the text
        times.push_back(*line);
        entries.push_back(entryAt(source, first, i, 0, 0));
        entries.back().text = plainText(trimmed(textFrom(line->text, source, i)), markupWithBars());
    }
    file->rate = rateOf(times, options);
    for (size_t i = 0; i < entries.size(); ++i) {
        entries[i].start = msOf(times[i].start, file->rate);
        entries[i].end = msOf(times[i].end, file->rate);
        add(std::move(entries[i]), file);
    }
}

}  // namespace meant
