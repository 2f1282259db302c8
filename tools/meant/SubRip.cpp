// SubRip: a number, a line of times, lines of text, an empty line.
#include <algorithm>
#include <iterator>

#include "tools/meant/Markup.h"
#include "tools/meant/Readers.h"
#include "tools/meant/Scan.h"
#include "tools/meant/Utf8.h"

namespace meant {
namespace {

struct Times {
    Ms start;
    std::optional<Ms> end;
    std::string rest;  ///< of the line
};

/// Up to four numbers of a time, and the separators around the first and before the last.
struct Clock {
    int64_t numbers[4] = {};
    size_t count = 0;
    char firstSeparator = 0, lastSeparator = 0;
    std::string_view last;  ///< from the last number on
};

Clock eatNumbers(Scan* in) {
    Clock clock;
    while (clock.count < 4) {
        Scan next = *in;
        next.skipBlanks();
        const char separator = clock.count == 0 ? '\0' : next.eatAny(":;.,");
        if (clock.count > 0 && separator == 0) break;
        next.skipBlanks();
        const std::string_view last = next.rest();
        const Scan::Digits digits = next.eatDigits();
        if (clock.count == 0 && !digits) break;
        if (clock.count == 1) clock.firstSeparator = separator;
        clock.lastSeparator = separator;
        clock.last = last;
        clock.numbers[clock.count++] = digits.value;
        *in = next;
    }
    return clock;
}

/// The last of four numbers is a fraction; of fewer, what stands behind a point or comma that does not separate the
/// others as well.
bool endsInFraction(const Clock& clock) {
    if (clock.count == 4) return true;
    const bool isDecimal = clock.lastSeparator == '.' || clock.lastSeparator == ',';
    return isDecimal && (clock.count == 2 || clock.lastSeparator != clock.firstSeparator);
}

/// `00:00:01,500`, and whatever else is meant as a time: no hours, no fraction, other separators, blanks, no digits
/// where a 0 should stand.
std::optional<Ms> eatTime(Scan* in) {
    in->skipBlanks();
    const bool isNegative = in->eat('-');
    const Clock clock = eatNumbers(in);
    if (clock.count < 2) return std::nullopt;
    const size_t whole = clock.count - endsInFraction(clock);
    Ms ms = 0;
    for (size_t i = 0; i < whole; ++i) ms = ms * 60 + clock.numbers[i];
    ms *= 1000;
    if (whole < clock.count) ms += Scan(clock.last).eatFraction().value_or(0);
    return isNegative ? -ms : ms;
}

/// `-->`, and what stands for it: fewer or longer dashes, blanks between, an arrow's own character.
bool eatArrow(Scan* in) {
    Scan next = *in;
    size_t dashes = 0;
    for (;; ++dashes) {
        next.skipBlanks();
        if (!next.eat('-') && !next.eat('=') && !next.eat("\xE2\x80\x93") && !next.eat("\xE2\x80\x94") &&
            !next.eat("\xE2\x88\x92"))
            break;
    }
    const bool isArrow = dashes > 0 ? next.eat('>') || next.eat("&gt;") : next.eat("\xE2\x86\x92");
    if (isArrow) *in = next;
    return isArrow;
}

/// A character of a time as other scripts write it, and marks that are not seen: what stands for it in ASCII.
struct Spelling {
    char32_t first, last;
    char ascii;  ///< of `first`; 0: it goes
};
constexpr Spelling kSpellings[] = {
    {0x660, 0x669, '0'},   {0x6F0, 0x6F9, '0'}, {0xFF10, 0xFF19, '0'}, {0xFF0C, 0xFF0E, ','}, {0xFF1A, 0xFF1B, ':'},
    {0xFF1E, 0xFF1E, '>'}, {0x60C, 0x60C, ','}, {0x66B, 0x66B, ','},   {0xA0, 0xA0, ' '},     {0x3000, 0x3000, ' '},
    {0x200B, 0x200F, 0},   {0x202A, 0x202E, 0}, {0x2060, 0x2069, 0},
};

/// A line as it would be in ASCII, as far as a time has it.
std::string inAscii(std::string_view line) {
    std::string ascii;
    while (!line.empty()) {
        const std::string_view before = line;
        const char32_t c = takeUtf8(&line);
        const auto row = std::find_if(std::begin(kSpellings), std::end(kSpellings), [c](const Spelling& spelling) {
            return c >= spelling.first && c <= spelling.last;
        });
        if (row == std::end(kSpellings))
            ascii += before.substr(0, before.size() - line.size());
        else if (row->ascii != 0)
            ascii += static_cast<char>(row->ascii + static_cast<char>(c - row->first));
    }
    return ascii;
}

/// `1 00:00:01,000 -->`: an entry's number, on the line of its times.
void skipNumber(Scan* in) {
    Scan next = *in;
    if (!next.eatDigits() || !isBlank(next.peek())) return;
    const Scan behind = next;
    if (eatTime(&next) && eatArrow(&next)) *in = behind;
}

/// An end that is missing leaves the start what it is.
std::optional<Times> timesOfAscii(std::string_view line) {
    Scan in(line);
    in.skipBlanks();
    skipNumber(&in);
    const std::optional<Ms> start = eatTime(&in);
    if (!start || !eatArrow(&in)) return std::nullopt;
    if (isEmptyLine(in.rest())) return Times{*start, std::nullopt, {}};
    const std::optional<Ms> end = eatTime(&in);
    if (!end) return std::nullopt;
    return Times{*start, *end, std::string(trimmed(in.rest()))};
}

/// Digits begin it, or what they are in other scripts, or a mark. Most lines are text and begin with a letter.
bool mayBeginWithTime(std::string_view line) {
    Scan in(line);
    in.skipBlanks();
    return isDigit(in.peek()) || in.peek() == '-' || !isAscii(in.peek());
}

std::optional<Times> timesOf(std::string_view line) {
    if (!mayBeginWithTime(line)) return std::nullopt;
    std::optional<Times> times = timesOfAscii(line);
    if (times) return times;
    constexpr size_t kLongest = 200;
    const bool mayBeSpelledSo =
        line.size() <= kLongest && (line.find('>') != line.npos || line.find("\xEF\xBC\x9E") != line.npos);
    return mayBeSpelledSo && !isAscii(line) ? timesOfAscii(inAscii(line)) : std::nullopt;
}

/// A line that was meant as one of times, and has none that can be read.
bool isDamagedTime(std::string_view line) {
    const size_t arrow = line.find("-->");
    return arrow != line.npos && mayBeginWithTime(line) && isAscii(line) && line.find(':') != line.npos &&
           mayBeginWithTime(line.substr(arrow + 3));
}

/// `12`, `12.`, `#12`
std::optional<int64_t> numberOf(std::string_view line) {
    Scan in(trimmed(line));
    in.eat('#');
    const Scan::Digits digits = in.eatDigits();
    in.eatAny(".:)");
    return digits && in.atEnd() ? std::optional(digits.value) : std::nullopt;
}

/// `X1:40 Y1:20`, `align:start`: where the text should stand.
bool isPosition(std::string_view behindTimes) {
    const std::string_view word = behindTimes.substr(0, behindTimes.find_first_of(" \t"));
    const size_t colon = word.find(':');
    return colon != word.npos && colon > 0 && colon + 1 < word.size();
}

/// Where an entry begins.
struct Head {
    size_t timeLine;
    std::optional<Times> times;  ///< none: they are damaged
    size_t line = 0;             ///< of its number, where it has one
    int64_t number = 0;
};

class SubRip {
public:
    SubRip(const Source& source, File* file) : mSource(source), mLines(source.lines()), mFile(file) {}

    void read() {
        findHeads();
        std::vector<Entry> entries;
        for (size_t i = 0; i < mHeads.size(); ++i) {
            const Head& head = mHeads[i];
            const size_t end = endOf(i);
            if (head.times)
                entries.push_back(entryOf(head, end));
            else
                mFile->strayLines.push_back(mSource.placeOf(mLines[head.timeLine].data()));
        }
        addEndingAtNext(std::move(entries), mFile);
    }

private:
    void findHeads() {
        size_t numbered = 0;
        for (size_t i = 0; i < mLines.size(); ++i) {
            std::optional<Times> times = timesOf(mLines[i]);
            if (!times && !isDamagedTime(mLines[i])) continue;
            mHeads.push_back({i, std::move(times)});
            numbered += i > 0 && numberOf(mLines[i - 1]);
        }
        mIsNumbered = numbered * 2 >= mHeads.size();
        size_t first = 0;
        for (Head& head : mHeads) {
            setBegin(first, &head);
            if (first == 0) mBeginsWithNumber = head.line != head.timeLine;
            first = head.timeLine + 1;
        }
    }

    /// The line that an entry begins with: that of its number, where it has one. `first` can be its first.
    void setBegin(size_t first, Head* head) {
        head->line = head->timeLine;
        size_t at = head->timeLine;
        while (at > first && isEmptyLine(mLines[at - 1])) --at;
        const std::optional<int64_t> number = at > first ? numberOf(mLines[at - 1]) : std::nullopt;
        if (!number) return;
        const bool isDirect = at == head->timeLine && (mIsNumbered || (at - 1 > first && isEmptyLine(mLines[at - 2])));
        const bool isExpected = mBeginsWithNumber && *number == mLastNumber + 1;
        if (!isDirect && !isExpected) return;
        head->line = at - 1;
        head->number = mLastNumber = *number;
    }

    /// Behind an entry's last line: where the next one begins, or an entry that has a number and no times.
    size_t endOf(size_t i) {
        const Head& head = mHeads[i];
        const bool isLast = i + 1 == mHeads.size();
        const size_t end = isLast ? mLines.size() : mHeads[i + 1].line;
        const int64_t next = head.number + 1;
        if (head.number == 0 || (!isLast && mHeads[i + 1].number == next)) return end;
        for (size_t line = head.timeLine + 2; line < end; ++line) {
            if (!isEmptyLine(mLines[line - 1]) || numberOf(mLines[line]) != next) continue;
            const auto isText = [](std::string_view text) { return !isEmptyLine(text); };
            if (std::any_of(mLines.begin() + long(line) + 1, mLines.begin() + long(end), isText))
                mFile->strayLines.push_back(mSource.placeOf(mLines[line].data()));
            return line;
        }
        return end;
    }

    Entry entryOf(const Head& head, size_t end) const {
        Markup markup;
        markup.styles = true;
        markup.entities = true;
        markup.backslashes = true;
        const Times& times = *head.times;
        Entry entry = entryAt(mSource, head.timeLine, end, times.start, times.end.value_or(times.start));
        if (!times.end) entry.endFrom = End::Open;
        if (!isPosition(times.rest)) entry.text = plainText(times.rest, markup);
        appendLines(plainText(textOf(mSource, head.timeLine + 1, end), markup), &entry.text);
        return entry;
    }

    const Source& mSource;
    const std::vector<std::string_view>& mLines;
    File* mFile;
    std::vector<Head> mHeads;
    bool mIsNumbered = false;       ///< most time lines have a number right above them
    bool mBeginsWithNumber = true;  ///< the first one has, if not right above
    int64_t mLastNumber = 0;
};

}  // namespace

bool is::subRipTime(std::string_view line) { return line.size() >= 5 && timesOf(line).has_value(); }

void readSubRip(const Source& source, const Options&, File* file) { SubRip(source, file).read(); }

}  // namespace meant
