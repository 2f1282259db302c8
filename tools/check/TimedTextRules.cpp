// What can go wrong in text with times: mostly that time lines are read in pairs.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

bool txtUtf8Mark(const Scene& scene, const Difference&) {
    return scene.meant.encoding.name == "UTF-8" && scene.meant.encoding.from == meant::EncodingFrom::Mark;
}

/// `0:00:01.5:`, or more digits
bool txtTenths(const Scene& scene, const Difference& difference) {
    if (difference.entry == nullptr) return false;
    const std::string line = lineAt(scene, difference.entry->place.offset);
    const size_t point = line.find('.');
    const size_t behind = point < 12 ? line.find_first_not_of("0123456789", point + 1) : line.npos;
    return behind != line.npos && (line[behind] == ':' || line[behind] == '=');
}

/// The entry, or one before it, has a first line and no second one.
bool txtSecondLineMissing(const Scene& scene, const Difference& difference) {
    return scene.facts->oneOfTwoLines <= (difference.entry != nullptr ? difference.entry->place.offset : SIZE_MAX - 1);
}

bool txtNoClosingLines(const Scene& scene, const Difference&) {
    const std::vector<meant::Entry>& entries = scene.meant.entries;
    return std::any_of(entries.begin(), entries.end(),
                       [](const meant::Entry& entry) { return entry.endFrom != meant::End::Given; });
}

bool txtBrokenLine(const Scene& scene, const Difference&) { return scene.facts->hasBrokenTime; }

bool txtUtf16Short(const Scene& scene, const Difference& difference) {
    if (!isWide(scene.meant.encoding)) return false;
    const std::string line = difference.entry != nullptr ? lineAt(scene, difference.entry->place.offset) : "";
    return !hasForm(line, "00:00:00,0=") && !hasForm(line, "00:00:00.0:");
}

bool txtOneWidth(const Scene& scene, const Difference&) { return scene.facts->hasMixedWidths; }

bool txtLf(const Scene& scene, const Difference&) { return hasBareLf(scene); }

bool txtNumberFirst(const Scene&, const Difference& difference) {
    const std::string& text = difference.entry->text;
    return !text.empty() && text[0] >= '0' && text[0] <= '9';
}

}  // namespace

const std::vector<Rule> kTimedTextRules = {
    {"txt-utf8-mark", kAny, txtUtf8Mark},
    {"txt-tenths", kLost | kDisplaced | kAltered, txtTenths},
    {"txt-second-line-missing", kLost | kHidden | kAltered | kFalse, txtSecondLineMissing},
    {"txt-lf", kAltered | kOdd, txtLf},
    {"txt-broken-line", kLost | kHidden, txtBrokenLine},
    {"txt-no-closing-lines", kLost | kHidden | kFalse | kDisplaced, txtNoClosingLines},
    {"txt-utf16-short", kAny, txtUtf16Short},
    {"txt-one-width", kAny, txtOneWidth},
    {"txt-number-first", kAltered | kLost, txtNumberFirst},
};

}  // namespace check
