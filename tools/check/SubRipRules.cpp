// What can go wrong in SubRip files.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

/// A time line as its parts of digits, and what stands between them.
struct TimeLine {
    std::vector<std::string> numbers;
    std::vector<std::string> between;
    size_t inFirst = 0;  ///< numbers before the arrow
};

TimeLine timeLineOf(const Scene& scene, const Difference& difference) {
    TimeLine parts;
    const std::string line = lineAt(scene, difference.entry->place.offset);
    const size_t arrow = line.find('>');
    for (size_t at = 0; at < line.size();) {
        const size_t begin = at;
        const bool areDigits = isDigit(line[at]);
        while (at < line.size() && isDigit(line[at]) == areDigits) ++at;
        (areDigits ? parts.numbers : parts.between).push_back(line.substr(begin, at - begin));
        if (areDigits && begin < arrow) ++parts.inFirst;
    }
    return parts;
}

/// The last number of a half stands behind a point or a comma.
bool hasFraction(std::string_view half) {
    const size_t sign = half.find_last_of(":.,");
    return sign != half.npos && half[sign] != ':';
}

std::string firstHalf(const std::string& line) { return line.substr(0, line.find('-')); }

bool srtUtf16Shape(const Scene& scene, const Difference& difference) {
    if (!isWide(scene.meant.encoding)) return false;
    const std::string line = lineAt(scene, difference.entry->place.offset);
    constexpr std::string_view kShape = "00:00:00,000 --> 00:00:00,000";
    if (line.size() < kShape.size()) return true;
    return !std::equal(kShape.begin(), kShape.end(), line.begin(),
                       [](char shape, char c) { return shape == '0' ? isDigit(c) : shape == c; });
}

bool srtMarkOnTimeLine(const Scene& scene, const Difference& difference) {
    constexpr size_t kMark = 3;
    return scene.meant.encoding.name == "UTF-8" && scene.meant.encoding.from == meant::EncodingFrom::Mark &&
           difference.entry->place.offset == kMark;
}

bool srtNoHours(const Scene& scene, const Difference& difference) {
    const TimeLine line = timeLineOf(scene, difference);
    return line.inFirst == 2 ||
           (line.inFirst == 3 && hasFraction(firstHalf(lineAt(scene, difference.entry->place.offset))));
}

bool srtNoFraction(const Scene& scene, const Difference& difference) {
    const TimeLine line = timeLineOf(scene, difference);
    return line.inFirst == 3 || (line.inFirst == 4 && line.numbers.size() == 7);
}

bool srtFractionDigits(const Scene& scene, const Difference& difference) {
    const TimeLine line = timeLineOf(scene, difference);
    constexpr size_t kMilliseconds = 3;
    const auto isShort = [&](size_t i) { return i < line.numbers.size() && line.numbers[i].size() != kMilliseconds; };
    return difference.verdict == Verdict::Hidden ? isShort(7) && endsElsewhere(difference) : isShort(3) || isShort(7);
}

/// The time line of another entry stands in the text.
bool runsOn(const Difference& difference) {
    return difference.shown != nullptr && difference.shown->text.find("-->") != std::string::npos;
}

/// What stands behind an entry's text and belongs to no other.
std::string gapBehind(const Scene& scene, const Difference& difference) {
    const std::string lines = linesOf(scene, *difference.entry);
    return lines.substr(std::min(lines.find_last_not_of(" \t\n") + 1, lines.size()));
}

bool srtBlankLineBlanks(const Scene& scene, const Difference& difference) {
    return runsOn(difference) && gapBehind(scene, difference).find_first_of(" \t") != std::string::npos;
}

bool srtNoBlankLine(const Scene& scene, const Difference& difference) {
    const std::string gap = gapBehind(scene, difference);
    return runsOn(difference) && std::count(gap.begin(), gap.end(), '\n') < 2;
}

/// LF and then CR LF.
bool srtMixedEnds(const Scene& scene, const Difference& difference) {
    const meant::LineEnds& ends = scene.meant.lineEnds;
    return runsOn(difference) && ends.lf > 0 && ends.crLf > 0 &&
           gapBehind(scene, difference).find("\n\n") != std::string::npos;
}

bool srtTagAtEndLf(const Scene& scene, const Difference& difference) {
    const std::string lines = linesOf(scene, *difference.entry);
    const size_t last = lines.find_last_not_of(" \t\n");
    return runsOn(difference) && hasBareLf(scene) && last != lines.npos && lines[last] == '>';
}

/// The text of another entry stands where an empty one was meant.
bool srtEmptyEntry(const Scene& scene, const Difference& difference) {
    const std::vector<meant::Entry>& unseen = scene.meant.unseen;
    return difference.shown != nullptr && std::any_of(unseen.begin(), unseen.end(), [&](const meant::Entry& entry) {
               return entry.start == difference.shown->start;
           });
}

/// Right before the lost one.
bool srtEmptyEntryBefore(const Scene& scene, const Difference& difference) {
    const std::vector<meant::Entry>& unseen = scene.meant.unseen;
    return std::any_of(unseen.begin(), unseen.end(), [&](const meant::Entry& entry) {
        return entry.place.offset < difference.entry->place.offset && entry.behind >= difference.entry->place.offset;
    });
}

bool srtEntity(const Scene&, const Difference& difference) {
    const std::string& text = difference.shown->text;
    const size_t sign = text.find('&');
    const size_t end = text.find(';', std::min(sign, text.size()));
    return end != text.npos && difference.entry->text.find(text.substr(sign, end + 1 - sign)) == std::string::npos;
}

bool srtBraceAtLineEnd(const Scene& scene, const Difference& difference) {
    const std::string lines = linesOf(scene, *difference.entry);
    return lines.find("}\n") != lines.npos && difference.shown->text.size() < difference.entry->text.size();
}

bool srtBlankBelowTime(const Scene& scene, const Difference& difference) {
    const std::string lines = linesOf(scene, *difference.entry);
    const size_t line = lines.find('\n');
    return line != lines.npos && lines.compare(line, 2, "\n\n") == 0;
}

bool srtTextAsTimeLine(const Scene& scene, const Difference&) { return scene.facts->hasStrayNumbers; }

bool srtUtf16Markup(const Scene& scene, const Difference&) { return isWide(scene.meant.encoding); }

}  // namespace

const std::vector<Rule> kSubRipRules = {
    {"srt-mark-on-time-line", kLost, srtMarkOnTimeLine},
    {"srt-utf16-shape", kLost, srtUtf16Shape},
    {"srt-no-hours", kLost, srtNoHours},
    {"srt-no-fraction", kLost, srtNoFraction},
    {"srt-fraction-digits", kDisplaced | kAltered | kHidden, srtFractionDigits},
    {"srt-empty-entry", kFalse, srtEmptyEntry},
    {"srt-empty-entry", kLost, srtEmptyEntryBefore},
    {"srt-tag-at-end-lf", kAltered, srtTagAtEndLf},
    {"srt-no-blank-line", kAltered, srtNoBlankLine},
    {"srt-blank-line-blanks", kAltered, srtBlankLineBlanks},
    {"srt-mixed-ends", kAltered, srtMixedEnds},
    {"srt-brace-at-line-end", kAltered, srtBraceAtLineEnd},
    {"srt-braces-shown", kOdd | kAltered, bracesShown, true},
    {"srt-entity", kOdd | kAltered, srtEntity, true},
    {"srt-blank-below-time", kAltered, srtBlankBelowTime},
    {"srt-text-as-time-line", kFalse, srtTextAsTimeLine},
    {"srt-utf16-markup", kOdd | kAltered, srtUtf16Markup},
    {"srt-empty-entry", kAltered, srtEmptyEntry},
};

}  // namespace check
