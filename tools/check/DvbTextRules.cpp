// What can go wrong in the DVB subtitle system's text: mostly that another dialect takes the file.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

/// `12 00:00:01,500 ...` in the first line: a number in front.
bool isNumbered(const std::string& line) {
    const size_t blank = line.find_first_of(" \t");
    return blank != line.npos && blank > 0 && std::all_of(line.begin(), line.begin() + long(blank), isDigit);
}

std::string firstLine(const Scene& scene) {
    return scene.meant.entries.empty() ? "" : lineAt(scene, scene.meant.entries.front().place.offset);
}

bool dvbAsSv2Numbered(const Scene& scene, const Difference&) { return isNumbered(firstLine(scene)); }

/// The second time has hours of two digits.
bool dvbAsSv2Colon(const Scene& scene, const Difference&) {
    const std::string line = firstLine(scene);
    const size_t second = line.find_first_not_of(" \t", std::min(line.find_first_of(" \t"), line.size()));
    return !isNumbered(line) && second != line.npos && line.size() > second + 2 && isDigit(line[second + 1]);
}

bool dvbMark(const Scene& scene, const Difference& difference) {
    constexpr size_t kMark = 3;
    return scene.meant.encoding.name == "UTF-8" && difference.entry->place.offset == kMark;
}

/// The fourth number of a time is not 0.
bool dvbFrames(const Scene& scene, const Difference& difference) {
    if (scene.meant.rate.from == meant::RateFrom::None) return false;
    const std::string line = lineAt(scene, difference.entry->place.offset);
    const size_t first = isNumbered(line) ? 4 : 3;
    const std::vector<std::string> numbers = numbersOf(line);
    return (numbers.size() > first && numbers[first].find_first_not_of('0') != std::string::npos) ||
           (numbers.size() > first + 4 && numbers[first + 4].find_first_not_of('0') != std::string::npos);
}

bool dvbBigEndian(const Scene& scene, const Difference&) {
    return !scene.shown.isAccepted && scene.meant.encoding.name == "UTF-16BE";
}

bool dvbTextColumn(const Scene& scene, const Difference& difference) {
    const std::string line = lineAt(scene, difference.entry->place.offset);
    const std::string first = difference.entry->text.substr(0, difference.entry->text.find('\n'));
    const size_t column = line.find(first);
    return column != line.npos && column != (isNumbered(line) ? 30U : 24U);
}

bool dvbUtf16(const Scene& scene, const Difference&) { return isWide(scene.meant.encoding); }

/// With a wrong time as well, the entry is both lost and false.
bool dvbLf(const Scene& scene, const Difference& difference) {
    return hasBareLf(scene) && (difference.shown == nullptr || difference.shown->text.find('\n') != std::string::npos);
}

}  // namespace

const std::vector<Rule> kDvbTextRules = {
    {"dvb-as-sv2-numbered", kAny, dvbAsSv2Numbered},
    {"dvb-as-sv2-colon", kAny, dvbAsSv2Colon},
    {"dvb-big-endian", kLost, dvbBigEndian},
    {"dvb-mark", kLost, dvbMark},
    {"dvb-utf16", kAltered, dvbUtf16},
    {"dvb-text-column", kAltered, dvbTextColumn},
    {"dvb-frames", kLost | kDisplaced | kHidden, dvbFrames},
    {"dvb-lf", kLost | kAltered | kFalse, dvbLf},
    {"dvb-frames", kAltered, dvbFrames},
};

}  // namespace check
