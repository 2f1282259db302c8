// What can go wrong in SAMI files: mostly elements at the ends of lines.
#include <algorithm>
#include <set>

#include "tools/check/Rules.h"

namespace check {
namespace {

/// Of an entry in small letters: everything from its SYNC element to the next.
std::string elementsOf(const Scene& scene, const Difference& difference) {
    std::string lines = linesOf(scene, *difference.entry);
    std::transform(lines.begin(), lines.end(), lines.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lines;
}

bool smiLanguages(const Scene& scene, const Difference&) { return scene.meant.languages.size() > 1; }

bool smiNegative(const Scene&, const Difference& difference) { return difference.entry->start < 0; }

/// Not `<sync start=`.
bool smiSyncForm(const Scene& scene, const Difference& difference) {
    constexpr std::string_view kForm = "<sync start=";
    return elementsOf(scene, difference).substr(0, kForm.size()) != kForm;
}

/// In big-endian text, with blanks before it.
bool smiBeIndented(const Scene& scene, const Difference& difference) {
    const size_t at = difference.entry->place.offset;
    constexpr size_t kUnit = 2;
    return scene.meant.encoding.name == "UTF-16BE" && at >= kUnit &&
           (scene.bytes[at - 1] == ' ' || scene.bytes[at - 1] == '\t');
}

bool smiSyncNotAtLineStart(const Scene& scene, const Difference& difference) {
    size_t at = difference.entry->place.offset;
    const auto isFill = [](char c) { return c == ' ' || c == '\t' || c == '\0'; };
    while (at > 0 && isFill(scene.bytes[at - 1])) --at;
    return at > 0 && scene.bytes[at - 1] != '\n' && scene.bytes[at - 1] != '\r';
}

/// The text of one that is skipped is shown with the one before.
bool smiSkippedSyncText(const Scene& scene, const Difference& difference) {
    const std::vector<meant::Entry>& entries = scene.meant.entries;
    const auto next = std::find_if(entries.begin(), entries.end(), [&](const meant::Entry& entry) {
        return entry.place.offset > difference.entry->place.offset;
    });
    return next != entries.end() && difference.shown->text.find(next->text) != std::string::npos;
}

bool smiNoP(const Scene& scene, const Difference& difference) {
    return elementsOf(scene, difference).find("<p") == std::string::npos;
}

bool smiUtf16Markup(const Scene& scene, const Difference&) { return isWide(scene.meant.encoding); }

/// `<br>` of any spelling with text behind it on its line.
bool smiBrInline(const Scene& scene, const Difference& difference) {
    const std::string lines = elementsOf(scene, difference);
    const size_t element = lines.find("<br>");
    return element != lines.npos && difference.shown->text.find("<br>") != std::string::npos;
}

/// A line break in another spelling than `<br>`, or behind another element, as the last thing on a line.
bool smiBrAtLineEnd(const Scene& scene, const Difference& difference) {
    const std::string lines = linesOf(scene, *difference.entry);
    for (const char* element : {"<BR>\n", "<Br>\n", "<br/>\n", "<br />\n", "<BR/>\n", "<BR />\n", "><br>\n"})
        if (lines.find(element) != lines.npos) return true;
    return false;
}

bool smiElementAtLineEnd(const Scene& scene, const Difference& difference) {
    const std::string lines = elementsOf(scene, difference);
    return lines.find(">\n") != lines.npos;
}

bool smiBehindElement(const Scene& scene, const Difference& difference) {
    const std::string lines = elementsOf(scene, difference);
    return (lines.find(">&nbsp") != lines.npos && difference.shown->text.find("&nbsp") != std::string::npos) ||
           (lines.find(">{") != lines.npos && difference.shown->text.find('{') != std::string::npos);
}

bool smiEntity(const Scene&, const Difference& difference) {
    const size_t sign = difference.shown->text.find('&');
    return sign != std::string::npos && difference.shown->text.find(';', sign) != std::string::npos;
}

}  // namespace

const std::vector<Rule> kSamiRules = {
    {"smi-utf16-markup", kAltered | kOdd | kFalse, smiUtf16Markup},
    {"smi-languages", kHidden | kAltered | kLost | kFalse | kDisplaced, smiLanguages},
    {"smi-negative", kDisplaced | kHidden, smiNegative},
    {"smi-be-indented", kLost, smiBeIndented},
    {"smi-sync-not-at-line-start", kLost, smiSyncNotAtLineStart},
    {"smi-sync-form", kLost, smiSyncForm},
    {"smi-no-p", kLost | kAltered | kDisplaced, smiNoP},
    {"smi-skipped-sync-text", kAltered, smiSkippedSyncText},
    {"smi-br-inline", kAltered | kOdd, smiBrInline, true},
    {"smi-behind-element", kAltered | kOdd, smiBehindElement},
    {"smi-entity", kAltered | kOdd | kFalse, smiEntity},
    {"smi-br-at-line-end", kAltered, smiBrAtLineEnd},
    {"smi-element-at-line-end", kAltered, smiElementAtLineEnd},
};

}  // namespace check
