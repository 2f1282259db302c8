// SubRip: a number, a line of times, lines of text, an empty line.
#include "tools/meant/Markup.h"
#include "tools/meant/Readers.h"
#include "tools/meant/Scan.h"

namespace meant {
namespace {

struct Times {
    Ms start, end;
    std::string_view rest;  ///< of the line
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

std::optional<Times> timesOf(std::string_view line) {
    Scan in(line);
    const std::optional<Ms> start = eatTime(&in);
    if (!start || !eatArrow(&in)) return std::nullopt;
    const std::optional<Ms> end = eatTime(&in);
    if (!end) return std::nullopt;
    return Times{*start, *end, trimmed(in.rest())};
}

/// `X1:40 Y1:20`, `align:start`: where the text should stand.
bool isPosition(std::string_view behindTimes) {
    const std::string_view word = behindTimes.substr(0, behindTimes.find_first_of(" \t"));
    const size_t colon = word.find(':');
    return colon != word.npos && colon > 0 && colon + 1 < word.size();
}

class SubRip {
public:
    SubRip(const Source& source, File* file) : mSource(source), mLines(source.lines()), mFile(file) {}

    void read() {
        size_t numbered = 0;
        for (size_t i = 0; i < mLines.size(); ++i) {
            if (!is::subRipTime(mLines[i])) continue;
            mTimeLines.push_back(i);
            numbered += i > 0 && isNumberLine(mLines[i - 1]);
        }
        mIsNumbered = numbered * 2 >= mTimeLines.size();
        if (!mTimeLines.empty()) mBeginsWithNumber = beginsAt(mTimeLines[0], 0) != mTimeLines[0];
        for (size_t i = 0; i < mTimeLines.size(); ++i) {
            const size_t text = mTimeLines[i] + 1;
            addEntry(mTimeLines[i], i + 1 < mTimeLines.size() ? beginsAt(mTimeLines[i + 1], text) : mLines.size());
        }
    }

private:
    /// The line that the entry of a time line begins with: its number, where it has one. `first` can be its first.
    size_t beginsAt(size_t timeLine, size_t first) {
        size_t at = timeLine;
        while (at > first && isEmptyLine(mLines[at - 1])) --at;
        if (at == first || !isNumberLine(mLines[at - 1])) return timeLine;
        const int64_t number = Scan(trimmed(mLines[at - 1])).eatDigits().value;
        const bool isDirect = at == timeLine && (mIsNumbered || (at - 1 > first && isEmptyLine(mLines[at - 2])));
        const bool isExpected = mBeginsWithNumber && number == mLastNumber + 1;
        if (!isDirect && !isExpected) return timeLine;
        mLastNumber = number;
        return at - 1;
    }

    void addEntry(size_t timeLine, size_t next) {
        Markup markup;
        markup.styles = true;
        markup.entities = true;
        markup.backslashes = true;
        const Times times = *timesOf(mLines[timeLine]);
        Entry entry = entryAt(mSource, timeLine, next, times.start, times.end);
        if (!isPosition(times.rest)) entry.text = plainText(times.rest, markup);
        appendLines(plainText(textOf(mSource, timeLine + 1, next), markup), &entry.text);
        add(std::move(entry), mFile);
    }

    const Source& mSource;
    const std::vector<std::string_view>& mLines;
    File* mFile;
    std::vector<size_t> mTimeLines;
    bool mIsNumbered = false;       ///< most time lines have a number right above them
    bool mBeginsWithNumber = true;  ///< the first one has, if not right above
    int64_t mLastNumber = 0;
};

}  // namespace

bool is::subRipTime(std::string_view line) { return line.size() >= 5 && timesOf(line).has_value(); }

void readSubRip(const Source& source, const Options&, File* file) { SubRip(source, file).read(); }

}  // namespace meant
