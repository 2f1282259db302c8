// What can go wrong in SubViewer 2.0 files.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

/// `00:00:01.50,`: two digits behind the point.
bool sv2Hundredths(const Scene& scene, const Difference& difference) {
    const std::string line = lineAt(scene, difference.entry->place.offset);
    const size_t point = line.find('.'), comma = line.find(',');
    return point != line.npos && comma != line.npos && comma - point == 3;
}

bool sv2NegativeFirst(const Scene& scene, const Difference&) {
    const std::vector<meant::Entry>& entries = scene.meant.entries;
    return !scene.shown.isAccepted && !entries.empty() && entries.front().start < 0;
}

bool sv2FirstDigit(const Scene& scene, const Difference&) {
    return !scene.shown.isAccepted && !scene.facts->firstDigitLine.empty() &&
           !isUsualLine(meant::Format::SubViewer20, scene.facts->firstDigitLine);
}

/// Where the next time line begins in the shown text, behind a line end and blanks; `npos`: it is not shown.
size_t shownTimeLine(const std::string& text) {
    for (size_t line = text.find('\n'); line != text.npos; line = text.find('\n', line + 1)) {
        const size_t begin = std::min(text.find_first_not_of(" \t", line + 1), text.size());
        if (isUsualLine(meant::Format::SubViewer20, std::string_view(text).substr(begin))) return begin;
    }
    return text.npos;
}

/// The line before it holds blanks, and is not empty.
bool sv2BlankLineBlanks(const Scene&, const Difference& difference) {
    const std::string& text = difference.shown->text;
    const size_t time = shownTimeLine(text);
    if (time == text.npos) return false;
    const size_t lastOfText = text.find_last_not_of(" \t\n", time - 1);
    const std::string_view gap = std::string_view(text).substr(lastOfText + 1, time - lastOfText - 1);
    return std::count(gap.begin(), gap.end(), '\n') > 1;
}

bool sv2NoBlankLine(const Scene&, const Difference& difference) {
    return shownTimeLine(difference.shown->text) != std::string::npos;
}

bool sv2TimeWidth(const Scene& scene, const Difference& difference) {
    constexpr size_t kWidth = 23;
    const size_t width = lineAt(scene, difference.entry->place.offset).size();
    return width < kWidth - 2 || (width > kWidth && isWide(scene.meant.encoding));
}

}  // namespace

const std::vector<Rule> kSubViewer20Rules = {
    {"sv2-negative-first", kLost, sv2NegativeFirst},
    {"sv2-first-digit", kLost, sv2FirstDigit},
    {"srt-blank-line-blanks", kAltered | kFalse, sv2BlankLineBlanks},
    {"srt-no-blank-line", kAltered | kFalse, sv2NoBlankLine},
    {"sv2-time-width", kAltered | kLost, sv2TimeWidth},
    {"sv2-hundredths", kDisplaced | kHidden | kAltered, sv2Hundredths},
    {"sv2-hundredths", kLost, sv2Hundredths},
    {"srt-braces-shown", kOdd | kAltered, bracesShown, true},
};

}  // namespace check
