// What the rules share, and those of any format.
#include "tools/check/Rules.h"

#include <algorithm>

namespace check {
namespace {

bool shownHas(const Difference& difference, std::string_view code) {
    return difference.shown != nullptr && difference.shown->text.find(code) != std::string::npos;
}

bool meantHas(const Difference& difference, std::string_view code) {
    return difference.entry != nullptr && difference.entry->text.find(code) != std::string::npos;
}

bool wrongExtension(const Scene& scene, const Difference&) {
    return scene.meant.endingMisleads && hasReader(scene.meant.format);
}

bool utf32(const Scene& scene, const Difference&) { return scene.meant.encoding.name.compare(0, 6, "UTF-32") == 0; }

bool utf16NoMark(const Scene& scene, const Difference&) {
    return scene.meant.encoding.name.compare(0, 6, "UTF-16") == 0 &&
           scene.meant.encoding.from != meant::EncodingFrom::Mark;
}

bool utf16beLf(const Scene& scene, const Difference&) {
    return scene.meant.encoding.name == "UTF-16BE" && hasBareLf(scene) && scene.meant.lineEnds.crLf == 0;
}

bool crOnly(const Scene& scene, const Difference&) {
    const meant::LineEnds& ends = scene.meant.lineEnds;
    return ends.cr > ends.lf + ends.crLf;
}

bool beyond32Bit(const Scene&, const Difference& difference) {
    constexpr Ms kLast = 0xFFFFFFFF;
    return difference.entry != nullptr && (difference.entry->start > kLast || difference.entry->end > kLast);
}

bool sameStart(const Scene&, const Difference& difference) {
    return difference.instead != nullptr && difference.instead->start == difference.shown->start;
}

bool overlap(const Scene&, const Difference& difference) {
    return difference.instead != nullptr && difference.instead->start > difference.shown->start &&
           difference.instead->start <= difference.when;
}

bool notAscending(const Scene& scene, const Difference&) {
    const std::vector<ShownEntry>& entries = scene.shown.entries;
    return !std::is_sorted(entries.begin(), entries.end(),
                           [](const ShownEntry& a, const ShownEntry& b) { return a.start < b.start; });
}

/// "<and>" is a word to people, and an element to the library.
bool textAngleBrackets(const Scene&, const Difference& difference) {
    const std::string& text = difference.entry->text;
    const size_t open = text.find('<');
    const size_t close = text.find('>', std::min(open, text.size()));
    return close != std::string::npos &&
           difference.shown->text.find(text.substr(open, close + 1 - open)) == std::string::npos;
}

bool breakN(const Scene&, const Difference& difference) {
    return (shownHas(difference, "\\N") && !meantHas(difference, "\\N")) ||
           (shownHas(difference, "\\n") && !meantHas(difference, "\\n"));
}

bool breakBar(const Scene&, const Difference& difference) {
    return shownHas(difference, "|") && !meantHas(difference, "|");
}

bool breakBr(const Scene&, const Difference& difference) {
    return shownHas(difference, "[br]") && !meantHas(difference, "[br]");
}

/// With that setting bytes from 0x80 to 0xA0 go, and others take the next one with them.
bool propertyBig5(const Scene& scene, const Difference& difference) {
    const std::string& name = scene.meant.encoding.name;
    if (!scene.isTvBig5 || isWide(scene.meant.encoding) || name.compare(0, 4, "BIG5") == 0) return false;
    const std::string& text = difference.entry != nullptr ? difference.entry->text : difference.shown->text;
    return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

}  // namespace

const std::vector<Rule> kFileRules = {
    {"property-big5", kAltered | kOdd | kLost | kFalse, propertyBig5},
    {"utf32", kAny, utf32},
    {"utf16-no-mark", kAny, utf16NoMark},
    {"wrong-extension", kAny, wrongExtension},
    {"utf16be-lf", kLost | kFalse, utf16beLf},
    {"beyond-32-bit", kLost | kDisplaced | kHidden, beyond32Bit},
    {"cr-only", kAltered | kLost | kFalse, crOnly},
};

const std::vector<Rule> kCommonRules = {
    {"same-start", kHidden, sameStart},       {"overlap", kHidden, overlap},
    {"not-ascending", kHidden, notAscending}, {"text-angle-brackets", kAltered, textAngleBrackets},
    {"break-N", kOdd | kAltered, breakN},     {"break-bar", kOdd | kAltered, breakBar},
    {"break-br", kOdd | kAltered, breakBr},
};

const std::vector<Rule>& rulesFor(meant::Format format) {
    static const std::vector<Rule> kNoRules;
    switch (format) {
        case meant::Format::SubRip:
            return kSubRipRules;
        case meant::Format::SubStationAlpha:
            return kSubStationAlphaRules;
        case meant::Format::MicroDvd:
            return kMicroDvdRules;
        case meant::Format::SubViewer20:
            return kSubViewer20Rules;
        case meant::Format::SubViewer10:
            return kSubViewer10Rules;
        case meant::Format::TimedText:
            return kTimedTextRules;
        case meant::Format::DvbText:
            return kDvbTextRules;
        case meant::Format::Sami:
            return kSamiRules;
        default:
            return kNoRules;
    }
}

bool isWide(const meant::Encoding& encoding) {
    return encoding.name.compare(0, 6, "UTF-16") == 0 || encoding.name.compare(0, 6, "UTF-32") == 0;
}

/// Zeros are the other halves of 16-bit ASCII.
std::string lineAt(const Scene& scene, size_t offset) {
    std::string line;
    for (size_t at = offset; at < scene.bytes.size(); ++at) {
        const char c = scene.bytes[at];
        if (c == '\r' || c == '\n') break;
        if (c != '\0') line += c;
    }
    return line;
}

std::string linesOf(const Scene& scene, const meant::Entry& entry) {
    std::string lines;
    for (size_t at = entry.place.offset; at < entry.behind && at < scene.bytes.size(); ++at)
        if (scene.bytes[at] != '\0' && scene.bytes[at] != '\r') lines += scene.bytes[at];
    return lines;
}

bool hasBareLf(const Scene& scene) { return scene.meant.lineEnds.lf > 0; }

}  // namespace check
