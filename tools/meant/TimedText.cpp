// Text with times: a line is a time and a text, or a time, the number of a line, and that line.
#include <algorithm>

#include "tools/meant/Markup.h"
#include "tools/meant/Readers.h"
#include "tools/meant/Scan.h"

namespace meant {
namespace {

/// `0:00:01:text`, `0:00:01=text`, `00:00:01,1=text`, `00:00:01.5:text`, `00:00:01.50:text`
struct Line {
    Ms time;
    int64_t digit = -1;  ///< between time and text: the number of a line, or tenths
    bool isTenths = false;
    std::string_view text;
    size_t number = 0;  ///< in the file
};

std::optional<Line> lineOf(std::string_view line) {
    Scan in(line);
    in.skipBlanks();
    const std::optional<Ms> time = in.eatHms();
    if (!time) return std::nullopt;
    Line result;
    result.time = *time;
    Scan next = in;
    const bool isPoint = next.peek() == '.';
    if (next.eatAny(",.") != 0) {
        Scan fraction = next;
        const Scan::Digits digits = next.eatDigits();
        if (!digits || digits.count > 3 || next.eatAny("=:") == 0) return std::nullopt;
        if (digits.count == 1) {
            result.digit = digits.value;
            result.isTenths = isPoint;
        } else {
            result.time += fraction.eatFraction().value_or(0);
        }
        result.text = next.rest();
    } else {
        if (!in.atEnd() && in.eatAny(":= \t") == 0) return std::nullopt;
        result.text = in.rest();
    }
    return result;
}

/// Digits behind a point are the numbers of lines when a 2 follows a 1 at the same time, and nothing else occurs.
bool areLineNumbers(const std::vector<Line>& lines) {
    bool hasPair = false;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (!lines[i].isTenths) continue;
        if (lines[i].digit < 1 || lines[i].digit > 3) return false;
        hasPair |= i > 0 && lines[i].digit == 2 && lines[i - 1].digit == 1 && lines[i - 1].time == lines[i].time;
    }
    return hasPair;
}

bool continues(const Line& line, const Line& before) {
    return line.digit > 1 && !line.isTenths && before.digit == line.digit - 1 && before.time == line.time;
}

/// The lines that have a time; the others are stray, when they are not empty.
std::vector<Line> linesOf(const Source& source, File* file) {
    std::vector<Line> lines;
    for (size_t i = 0; i < source.lines().size(); ++i) {
        const std::string_view text = source.lines()[i];
        std::optional<Line> line = lineOf(text);
        if (line) {
            line->number = i;
            lines.push_back(*line);
        } else if (!isEmptyLine(text)) {
            file->strayLines.push_back(source.placeOf(text.data()));
        }
    }
    return lines;
}

void join(const Entry& behind, Entry* entry) {
    appendLines(behind.text, &entry->text);
    entry->behind = behind.behind;
}

}  // namespace

bool is::timedTextLine(std::string_view line) { return lineOf(line).has_value(); }

void readTimedText(const Source& source, const Options&, File* file) {
    std::vector<Line> lines = linesOf(source, file);
    const bool areNumbers = areLineNumbers(lines);
    std::vector<Entry> entries;
    const Line* before = nullptr;
    for (Line& line : lines) {
        if (areNumbers) line.isTenths = false;
        if (line.isTenths) line.time += line.digit * 100;
        Entry entry = entryAt(source, line.number, line.number + 1);
        entry.start = line.time;
        entry.text = plainText(trimmed(line.text), markupWithBars());
        if (before != nullptr && continues(line, *before)) {
            join(entry, &entries.back());
        } else {
            entries.push_back(std::move(entry));
        }
        before = &line;
    }
    addEndingAtNext(std::move(entries), file);
}

}  // namespace meant
