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

bool sv2FirstDigit(const Scene& scene, const Difference&) {
    return !scene.shown.isAccepted && !scene.facts->firstDigitLine.empty() &&
           !isUsualLine(meant::Format::SubViewer20, scene.facts->firstDigitLine);
}

/// The next time line is shown, because no empty line stands before it.
bool sv2NoBlankLine(const Scene&, const Difference& difference) {
    const std::string& text = difference.shown->text;
    for (size_t line = text.find('\n'); line != text.npos; line = text.find('\n', line + 1))
        if (isUsualLine(meant::Format::SubViewer20, std::string_view(text).substr(line + 1))) return true;
    return false;
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
    {"srt-no-blank-line", kAltered | kFalse, sv2NoBlankLine},
    {"sv2-time-width", kAltered | kLost, sv2TimeWidth},
    {"sv2-hundredths", kDisplaced | kHidden | kAltered, sv2Hundredths},
    {"sv2-hundredths", kLost, sv2Hundredths},
};

}  // namespace check
