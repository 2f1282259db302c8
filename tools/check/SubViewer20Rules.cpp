// What can go wrong in SubViewer 2.0 files.
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

bool sv2LeadingBreak(const Scene& scene, const Difference& difference) {
    return isWide(scene.meant.encoding) && difference.shown->text.substr(0, 1) == "\n";
}

}  // namespace

const std::vector<Rule> kSubViewer20Rules = {
    {"sv2-negative-first", kLost, sv2NegativeFirst},
    {"sv2-hundredths", kDisplaced | kHidden | kAltered, sv2Hundredths},
    {"sv2-leading-break", kOdd | kAltered, sv2LeadingBreak},
};

}  // namespace check
