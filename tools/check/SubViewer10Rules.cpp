// What can go wrong in SubViewer 1.0 files.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

bool sv1Utf16le(const Scene& scene, const Difference&) {
    return !scene.shown.isAccepted && scene.meant.encoding.name == "UTF-16LE";
}

/// The entry, or one before it, has no end line of its own.
bool sv1EndLineMissing(const Scene& scene, const Difference& difference) {
    const size_t last = difference.entry != nullptr ? difference.entry->place.offset : scene.bytes.size();
    const std::vector<meant::Entry>& entries = scene.meant.entries;
    return std::any_of(entries.begin(), entries.end(), [&](const meant::Entry& entry) {
        return entry.place.offset <= last && entry.endFrom != meant::End::Given;
    });
}

bool sv1TimeWidth(const Scene& scene, const Difference& difference) {
    constexpr size_t kWidth = 10;
    return lineAt(scene, difference.entry->place.offset).size() < kWidth;
}

bool subUtf16Markup(const Scene& scene, const Difference&) { return isWide(scene.meant.encoding); }

/// The end line's time is shown with the text.
bool sv1Lf(const Scene& scene, const Difference& difference) {
    return hasBareLf(scene) && difference.shown->text.find("\n[") != std::string::npos;
}

}  // namespace

const std::vector<Rule> kSubViewer10Rules = {
    {"sv1-utf16le", kLost, sv1Utf16le},
    {"sv1-lf", kAltered | kOdd, sv1Lf},
    {"sv1-time-width", kAltered | kLost, sv1TimeWidth},
    {"sub-utf16-markup", kOdd | kAltered, subUtf16Markup},
    {"sv1-end-line-missing", kLost | kHidden | kFalse, sv1EndLineMissing},
};

}  // namespace check
