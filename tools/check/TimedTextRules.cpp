// What can go wrong in text with times: mostly that time lines are read in pairs.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

bool txtUtf8Mark(const Scene& scene, const Difference&) {
    return scene.meant.encoding.name == "UTF-8" && scene.meant.encoding.from == meant::EncodingFrom::Mark;
}

/// `0:00:01.5:`
bool txtTenths(const Scene& scene, const Difference& difference) {
    if (difference.entry == nullptr) return false;
    const std::string line = lineAt(scene, difference.entry->place.offset);
    const size_t point = line.find('.');
    return point != line.npos && point < 12 && line.find(':', point) == point + 2;
}

/// The entry, or one before it, has a first line and no second one.
bool txtSecondLineMissing(const Scene& scene, const Difference& difference) {
    const size_t last = difference.entry != nullptr ? difference.entry->place.offset : scene.bytes.size();
    const std::vector<meant::Entry>& entries = scene.meant.entries;
    return std::any_of(entries.begin(), entries.end(), [&](const meant::Entry& entry) {
        if (entry.place.offset > last) return false;
        const std::string lines = linesOf(scene, entry);
        return lines.find(",1=") != lines.npos && lines.find(",2=") == lines.npos;
    });
}

bool txtNoClosingLines(const Scene& scene, const Difference&) {
    const std::vector<meant::Entry>& entries = scene.meant.entries;
    return std::any_of(entries.begin(), entries.end(),
                       [](const meant::Entry& entry) { return entry.endFrom != meant::End::Given; });
}

bool txtBrokenLine(const Scene& scene, const Difference&) {
    const std::vector<meant::Place>& stray = scene.meant.strayLines;
    return std::any_of(stray.begin(), stray.end(), [&](const meant::Place& place) {
        const std::string line = lineAt(scene, place.offset);
        return !line.empty() && line[0] >= '0' && line[0] <= '9' && line.find(':') != line.npos;
    });
}

bool txtUtf16Short(const Scene& scene, const Difference& difference) {
    if (!isWide(scene.meant.encoding)) return false;
    const std::string line = difference.entry != nullptr ? lineAt(scene, difference.entry->place.offset) : "";
    return !hasForm(line, "00:00:00,0=") && !hasForm(line, "00:00:00.0:");
}

/// Short times and long ones in one file.
bool txtOneWidth(const Scene& scene, const Difference&) {
    bool hasShort = false, hasLong = false;
    for (const meant::Entry& entry : scene.meant.entries) {
        const std::string line = lineAt(scene, entry.place.offset);
        const bool isLong = hasForm(line, "00:00:00,0=") || hasForm(line, "00:00:00.0:");
        (isLong ? hasLong : hasShort) = true;
        if (hasShort && hasLong) return true;
    }
    return false;
}

bool txtLf(const Scene& scene, const Difference&) { return hasBareLf(scene); }

bool txtNumberFirst(const Scene&, const Difference& difference) {
    const std::string& text = difference.entry->text;
    return !text.empty() && text[0] >= '0' && text[0] <= '9';
}

}  // namespace

const std::vector<Rule> kTimedTextRules = {
    {"txt-utf8-mark", kAltered, txtUtf8Mark},
    {"txt-tenths", kLost | kDisplaced | kAltered, txtTenths},
    {"txt-second-line-missing", kLost | kHidden | kAltered | kFalse, txtSecondLineMissing},
    {"txt-lf", kAltered | kOdd, txtLf},
    {"txt-broken-line", kLost | kHidden, txtBrokenLine},
    {"txt-no-closing-lines", kLost | kHidden | kFalse | kDisplaced, txtNoClosingLines},
    {"txt-utf16-short", kAny, txtUtf16Short},
    {"txt-one-width", kAny, txtOneWidth},
    {"txt-number-first", kAltered, txtNumberFirst},
};

}  // namespace check
