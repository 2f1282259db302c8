// What can go wrong in MicroDVD files: mostly that their first three bytes are passed over.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

/// The library takes the file for UTF-8, and passes over a mark that is not there.
bool isUnmarked(const Scene& scene) {
    const meant::Encoding& encoding = scene.meant.encoding;
    return (encoding.name == "UTF-8" || encoding.name == "ASCII") && encoding.from != meant::EncodingFrom::Mark;
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

bool mdvdRate29(const Scene& scene, const Difference&) {
    return !isUnmarked(scene) && scene.meant.rate.from == meant::RateFrom::Assumed;
}

}  // namespace

const std::vector<Rule> kMicroDvdRules = {
    {"mdvd-unmarked-rate-line", kLost | kDisplaced | kHidden | kFalse, mdvdUnmarkedRateLine},
    {"mdvd-unmarked-first-two", kLost | kFalse, mdvdUnmarkedFirstTwo},
    {"mdvd-unmarked-zero", kLost | kDisplaced | kHidden | kFalse, mdvdUnmarkedZero},
    {"mdvd-utf16", kAny, mdvdUtf16},
    {"mdvd-rate-rounded", kAny, mdvdRateRounded},
    {"mdvd-rate-29", kAny, mdvdRate29},
};

}  // namespace check
