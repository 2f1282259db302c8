// What can go wrong in SubStation Alpha scripts.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

/// The script's Format line has fewer fields, or this event.
bool ssaFewCommas(const Scene& scene, const Difference& difference) {
    if (difference.entry == nullptr) return scene.facts->hasFewCommas;
    return hasFewCommas(lineAt(scene, difference.entry->place.offset));
}

bool ssaLeadingBlank(const Scene& scene, const Difference& difference) {
    const std::string line = lineAt(scene, difference.entry->place.offset);
    return line.substr(0, 1).find_first_of(" \t") == 0;
}

/// Some event has, and it swallows others.
bool ssaFewCommasElsewhere(const Scene& scene, const Difference&) { return scene.facts->hasFewCommas; }

bool ssaUtf16beMarkup(const Scene& scene, const Difference&) { return scene.meant.encoding.name == "UTF-16BE"; }

bool ssaMark(const Scene& scene, const Difference& difference) {
    constexpr size_t kMark = 3;
    return scene.meant.encoding.name == "UTF-8" && difference.entry->place.offset == kMark;
}

/// An entry that stands before it in the script begins later.
bool ssaOutOfOrder(const Scene& scene, const Difference& difference) {
    if (isWide(scene.meant.encoding)) return false;
    const std::vector<meant::Entry>& entries = scene.meant.entries;
    return std::any_of(entries.begin(), entries.end(), [&](const meant::Entry& entry) {
        return entry.place.offset < difference.entry->place.offset && entry.start > difference.entry->start;
    });
}

std::string fieldOf(const std::string& line, int number) {
    size_t begin = 0;
    for (; number > 0 && begin != 0 - size_t{1}; --number) begin = line.find(',', begin) + 1;
    return line.substr(begin, line.find(',', begin) - begin);
}

/// `0:00:01.500`: another width than that of `0:00:01.50`.
bool hasOtherWidth(const Scene& scene, const Difference& difference) {
    constexpr size_t kUsualWidth = 10;
    const std::string line = lineAt(scene, difference.entry->place.offset);
    return fieldOf(line, 1).size() != kUsualWidth || fieldOf(line, 2).size() != kUsualWidth;
}

/// Not two digits behind the point.
bool ssaFraction(const Scene& scene, const Difference& difference) {
    constexpr size_t kUsual = 2;
    const bool isEnd = difference.verdict == Verdict::Hidden;
    const std::string time = fieldOf(lineAt(scene, difference.entry->place.offset), isEnd ? 2 : 1);
    const size_t point = time.find('.');
    return point != time.npos && time.size() - point - 1 != kUsual && (!isEnd || endsElsewhere(difference));
}

/// `0:00:01`
bool ssaEventForm(const Scene& scene, const Difference& difference) {
    const std::string line = lineAt(scene, difference.entry->place.offset);
    return countNumbers(fieldOf(line, 1)) != 4 || countNumbers(fieldOf(line, 2)) != 4;
}

/// The Format line names the usual ten, and the library does not look at it.
bool ssaFieldOrder(const Scene& scene, const Difference&) { return scene.facts->hasOtherFields; }

bool ssaTimeWidth(const Scene& scene, const Difference& difference) { return hasOtherWidth(scene, difference); }

/// What is shown at the time of a drawing, be it instead of words that begin then, too.
bool ssaDrawing(const Scene& scene, const Difference& difference) {
    return std::any_of(scene.meant.unseen.begin(), scene.meant.unseen.end(), [&](const meant::Entry& entry) {
        return entry.unseen == meant::Unseen::Drawing && entry.start == difference.shown->start;
    });
}

/// An event with damaged times is read as one at another time: those behind it, which begin earlier, are dropped.
bool ssaEventFormBefore(const Scene& scene, const Difference& difference) {
    const std::vector<meant::Place>& stray = scene.meant.strayLines;
    return !stray.empty() && stray.front().offset < difference.entry->place.offset;
}

/// Beside words that are meant to be read.
bool ssaDrawingInText(const Scene& scene, const Difference& difference) {
    return lineAt(scene, difference.entry->place.offset).find("\\p1") != std::string::npos;
}

}  // namespace

const std::vector<Rule> kSubStationAlphaRules = {
    {"ssa-mark", kLost, ssaMark},
    {"ssa-leading-blank", kLost, ssaLeadingBlank},
    {"ssa-few-commas", kLost | kDisplaced | kAltered | kFalse | kHidden, ssaFewCommas},
    {"ssa-out-of-order", kLost, ssaOutOfOrder},
    {"ssa-fraction", kDisplaced | kLost | kHidden, ssaFraction},
    {"ssa-event-form", kLost | kDisplaced, ssaEventForm},
    {"ssa-time-width", kAltered | kLost, ssaTimeWidth},
    {"ssa-utf16be-markup", kOdd | kAltered, ssaUtf16beMarkup},
    {"ssa-few-commas", kAny, ssaFewCommasElsewhere},
    {"ssa-field-order", kAny, ssaFieldOrder},
    {"ssa-drawing", kFalse | kAltered, ssaDrawing},
    {"ssa-drawing", kAltered, ssaDrawingInText},
    {"ssa-event-form", kLost, ssaEventFormBefore},
};

}  // namespace check
