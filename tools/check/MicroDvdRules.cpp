// What can go wrong in MicroDVD files: mostly that their first three bytes are passed over.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

/// The only line is hidden by the mark.
bool subMark(const Scene& scene, const Difference&) {
    return !scene.shown.isAccepted && scene.meant.encoding.name == "UTF-8" &&
           scene.meant.encoding.from == meant::EncodingFrom::Mark;
}

/// The library takes the file for UTF-8, and passes over a mark that is not there.
bool isUnmarked(const Scene& scene) {
    const meant::Encoding& encoding = scene.meant.encoding;
    const bool isAscii = encoding.name == "ASCII" || encoding.name == "ISO-2022-JP";  // as bytes go
    return (encoding.name == "UTF-8" || isAscii) && encoding.from != meant::EncodingFrom::Mark;
}

bool mdvdUnmarkedRateLine(const Scene& scene, const Difference&) {
    return isUnmarked(scene) && scene.meant.rate.from == meant::RateFrom::File;
}

/// `{1}{`: the fourth byte begins the second number.
bool mdvdUnmarkedFirstTwo(const Scene& scene, const Difference&) {
    constexpr size_t kPassedOver = 3;
    return isUnmarked(scene) && scene.bytes.size() > kPassedOver && scene.bytes[kPassedOver] == '{';
}

bool mdvdUnmarkedZero(const Scene& scene, const Difference&) { return isUnmarked(scene); }

/// The rate line is none in 16-bit text.
bool mdvdUtf16(const Scene& scene, const Difference&) {
    return isWide(scene.meant.encoding) && scene.meant.rate.from == meant::RateFrom::File;
}

bool mdvdRateRounded(const Scene& scene, const Difference&) {
    constexpr uint32_t kWhole = 1000;
    return scene.meant.rate.from == meant::RateFrom::Told && scene.meant.rate.thousandths % kWhole != 0;
}

/// No time is any but 0, because the first entry stands below something else.
bool mdvdFirstLine(const Scene& scene, const Difference&) {
    constexpr size_t kFirstLineBelow = 4;
    const std::vector<meant::Entry>& entries = scene.meant.entries;
    const std::vector<ShownEntry>& shown = scene.shown.entries;
    return !entries.empty() && entries.front().place.offset >= kFirstLineBelow && !shown.empty() &&
           std::all_of(shown.begin(), shown.end(), [](const ShownEntry& entry) { return entry.start == 0; });
}

/// `{10}{20}12:30 ...` as the first entry.
bool mdvdTextAsRate(const Scene& scene, const Difference&) {
    if (scene.meant.entries.empty() || scene.meant.rate.from == meant::RateFrom::File) return false;
    const std::string& text = scene.meant.entries.front().text;
    const size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    return digits > 0 && digits + 1 < text.size() && isDigit(text[digits + 1]);
}

/// `{1}{1}25`: it has no point.
bool mdvdRateWhole(const Scene& scene, const Difference&) {
    if (isUnmarked(scene) || scene.meant.rate.from != meant::RateFrom::File) return false;
    const std::string line = lineAt(scene, 0);
    return line.find('.') == line.npos;
}

/// `23.05`
bool mdvdRateZeros(const Scene& scene, const Difference&) {
    constexpr uint32_t kWhole = 1000, kTenth = 100;
    const uint32_t fraction = scene.meant.rate.thousandths % kWhole;
    return scene.meant.rate.from == meant::RateFrom::File && fraction != 0 && fraction < kTenth;
}

bool mdvdRate29(const Scene& scene, const Difference&) {
    return !isUnmarked(scene) && scene.meant.rate.from == meant::RateFrom::Assumed;
}

}  // namespace

const std::vector<Rule> kMicroDvdRules = {
    {"sub-mark", kLost, subMark},
    {"mdvd-unmarked-rate-line", kLost | kDisplaced | kHidden | kFalse, mdvdUnmarkedRateLine},
    {"mdvd-unmarked-first-two", kLost | kFalse, mdvdUnmarkedFirstTwo},
    {"mdvd-unmarked-zero", kLost | kDisplaced | kHidden | kFalse, mdvdUnmarkedZero},
    {"mdvd-rate-whole", kAny & ~kOdd, mdvdRateWhole},
    {"mdvd-first-line", kAny & ~kOdd, mdvdFirstLine},
    {"mdvd-text-as-rate", kAny & ~kOdd, mdvdTextAsRate},
    {"mdvd-rate-zeros", kAny & ~kOdd, mdvdRateZeros},
    {"mdvd-utf16", kAny & ~kOdd, mdvdUtf16},
    {"mdvd-rate-rounded", kAny & ~kOdd, mdvdRateRounded},
    {"mdvd-rate-29", kAny & ~kOdd, mdvdRate29},
};

}  // namespace check
