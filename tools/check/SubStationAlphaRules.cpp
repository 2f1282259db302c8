// What can go wrong in SubStation Alpha scripts.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

/// The commas that the library passes over before an event's text.
constexpr long kUsualCommas = 9;

/// The script's Format line has fewer fields, or this event.
bool ssaFewCommas(const Scene& scene, const Difference& difference) {
    for (const meant::Entry& entry : scene.meant.entries) {
        if (difference.entry != nullptr && &entry != difference.entry) continue;
        const std::string line = lineAt(scene, entry.place.offset);
        const std::string fields = line.substr(0, line.find_first_of("{\\"));
        if (std::count(fields.begin(), fields.end(), ',') < kUsualCommas) return true;
    }
    return false;
}

bool ssaLeadingBlank(const Scene& scene, const Difference& difference) {
    const std::string line = lineAt(scene, difference.entry->place.offset);
    return line.substr(0, 1).find_first_of(" \t") == 0;
}

/// Some event has, and it swallows others.
bool ssaFewCommasElsewhere(const Scene& scene, const Difference&) { return scene.facts->hasFewCommas; }

bool ssaUtf16beMarkup(const Scene& scene, const Difference&) { return scene.meant.encoding.name == "UTF-16BE"; }

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

bool ssaFraction(const Scene& scene, const Difference& difference) { return hasOtherWidth(scene, difference); }

bool ssaTimeWidth(const Scene& scene, const Difference& difference) { return hasOtherWidth(scene, difference); }

bool ssaDrawing(const Scene& scene, const Difference& difference) {
    return std::any_of(scene.meant.unseen.begin(), scene.meant.unseen.end(), [&](const meant::Entry& entry) {
        return entry.unseen == meant::Unseen::Drawing && entry.start == difference.shown->start;
    });
}

}  // namespace

const std::vector<Rule> kSubStationAlphaRules = {
    {"ssa-leading-blank", kLost, ssaLeadingBlank},
    {"ssa-few-commas", kLost | kDisplaced | kAltered | kFalse | kHidden, ssaFewCommas},
    {"ssa-out-of-order", kLost, ssaOutOfOrder},
    {"ssa-fraction", kDisplaced, ssaFraction},
    {"ssa-time-width", kAltered | kLost, ssaTimeWidth},
    {"ssa-utf16be-markup", kOdd | kAltered, ssaUtf16beMarkup},
    {"ssa-few-commas", kAny, ssaFewCommasElsewhere},
    {"ssa-drawing", kFalse, ssaDrawing},
};

}  // namespace check
