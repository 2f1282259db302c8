// What the rules share, and those of any format.
#include "tools/check/Rules.h"

#include <algorithm>
#include <cstdlib>

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

/// So damaged that a person would not know it as 16-bit text either.
bool utf16NoMarkDamaged(const Scene& scene, const Difference&) {
    return !isWide(scene.meant.encoding) && scene.facts->hasManyZeros;
}

bool utf16Shifted(const Scene& scene, const Difference&) { return scene.facts->isShifted; }

bool utf16beLf(const Scene& scene, const Difference&) {
    return scene.meant.encoding.name == "UTF-16BE" && hasBareLf(scene);
}

bool crOnly(const Scene& scene, const Difference&) {
    const meant::LineEnds& ends = scene.meant.lineEnds;
    return ends.cr > ends.lf + ends.crLf;
}

bool beyond32Bit(const Scene&, const Difference& difference) {
    constexpr Ms kLast = 0xFFFFFFFF;
    return difference.entry != nullptr && (difference.entry->start > kLast || difference.entry->end > kLast);
}

bool endsBeforeStart(const Scene&, const Difference& difference) {
    const std::optional<Ms>& shownEnd = difference.shown->end;
    return difference.entry->end <= difference.entry->start || (shownEnd && *shownEnd <= difference.shown->start);
}

/// The text in the file, as it stands.
std::string rawText(const Scene& scene, const Difference& difference) {
    return difference.entry != nullptr ? linesOf(scene, *difference.entry) : std::string();
}

bool zerosInText(const Scene& scene, const Difference& difference) {
    if (!scene.facts->hasZeros) return false;
    if (difference.entry == nullptr || isWide(scene.meant.encoding)) return true;
    const meant::Entry& entry = *difference.entry;
    return scene.bytes.substr(entry.place.offset, entry.behind - entry.place.offset).find('\0') != std::string::npos;
}

/// CR CR LF is a line end and an empty line to nobody but a person.
bool crCrLf(const Scene& scene, const Difference&) { return scene.facts->hasDoubleCr; }

/// CR among other line ends: a line that does not end, or a blank one that is none.
bool crAmongOthers(const Scene& scene, const Difference& difference) {
    const meant::Entry& entry = *difference.entry;
    if (scene.meant.lineEnds.cr == 0 || isWide(scene.meant.encoding)) return false;
    for (size_t cr = scene.bytes.find('\r', entry.place.offset); cr < entry.behind; cr = scene.bytes.find('\r', cr + 1))
        if (cr + 1 == scene.bytes.size() || scene.bytes[cr + 1] != '\n') return true;
    return false;
}

/// Whether a group in braces is the last thing on a line.
bool textBlockAtLineEnd(const Scene& scene, const Difference& difference) {
    return rawText(scene, difference).find("}\n") != std::string::npos;
}

bool textBraceUnclosed(const Scene& scene, const Difference& difference) {
    const std::string text = rawText(scene, difference);
    const size_t open = text.rfind('{');
    return open != text.npos && text.find('}', open) == text.npos;
}

bool trailByteBrace(const Scene& scene, const Difference& difference) {
    const std::string text = rawText(scene, difference);
    for (size_t open = text.find('{'); open != text.npos; open = text.find('{', open + 1))
        if (open > 0 && static_cast<unsigned char>(text[open - 1]) >= 0x81 && scene.meant.encoding.name != "UTF-8")
            return true;
    return false;
}

/// <br> goes as any other element does. SAMI has names of its own for that.
bool textBr(const Scene& scene, const Difference& difference) {
    if (scene.meant.format == meant::Format::Sami) return false;
    const std::string text = rawText(scene, difference);
    for (size_t at = text.find('<'); at != text.npos; at = text.find('<', at + 1))
        if (meant::Scan(std::string_view(text).substr(at)).eat("<br")) return true;
    return false;
}

bool textTagAtLineEnd(const Scene& scene, const Difference& difference) {
    const std::string text = rawText(scene, difference);
    return text.find(">\n") != text.npos || text.find("><") != text.npos;
}

/// A bracket that opens, and none that closes it on its line.
bool textOpenBracket(const Scene& scene, const Difference& difference) {
    const std::string text = rawText(scene, difference);
    for (size_t open = text.find('<'); open != text.npos; open = text.find('<', open + 1)) {
        const size_t end = text.find_first_of("<>\n", open + 1);
        if (end == text.npos || text[end] != '>') return true;
    }
    return false;
}

bool textTooLong(const Scene&, const Difference& difference) {
    constexpr size_t kMost = 8000;
    return difference.entry->text.size() > kMost;
}

bool sameStart(const Scene&, const Difference& difference) {
    return difference.instead != nullptr && difference.instead->start == difference.shown->start;
}

/// The next one has begun, and may be over again.
bool overlap(const Scene& scene, const Difference& difference) {
    const std::vector<ShownEntry>& entries = scene.shown.entries;
    const ShownEntry* next = difference.instead != nullptr ? difference.instead : difference.shown + 1;
    return next != entries.data() + entries.size() && next->start > difference.shown->start &&
           next->start <= difference.when;
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

/// `< i >`, `<\i>`
bool textDamagedTag(const Scene&, const Difference& difference) {
    const auto count = [](const std::string& text) {
        size_t tags = 0;
        for (size_t at = text.find('<'); at != text.npos && at + 2 < text.size(); at = text.find('<', at + 1)) {
            const char next = text[at + 1];
            tags += (next == ' ' || next == '\\') && (meant::isLetter(text[at + 2]) || text[at + 2] == '/');
        }
        return tags;
    };
    return count(difference.shown->text) > count(difference.entry->text);
}

/// "{so}" likewise.
bool textBraces(const Scene&, const Difference& difference) {
    const std::string& text = difference.entry->text;
    const size_t open = text.find('{');
    const size_t close = text.find('}', std::min(open, text.size()));
    return close != std::string::npos &&
           difference.shown->text.find(text.substr(open, close + 1 - open)) == std::string::npos;
}

/// The text stops at a blank line that stands in it.
bool srtBlankLineInText(const Scene& scene, const Difference& difference) {
    if (scene.meant.format != meant::Format::SubRip && scene.meant.format != meant::Format::SubViewer20) return false;
    const std::string lines = linesOf(scene, *difference.entry);
    const size_t last = lines.find_last_not_of(" \t\n");
    return last != lines.npos && lines.find("\n\n") < last &&
           difference.shown->text.size() < difference.entry->text.size();
}

bool breakN(const Scene&, const Difference& difference) {
    return (shownHas(difference, "\\N") && !meantHas(difference, "\\N")) ||
           (shownHas(difference, "\\n") && !meantHas(difference, "\\n"));
}

bool breakBar(const Scene&, const Difference& difference) {
    return shownHas(difference, "|") && !meantHas(difference, "|");
}

bool breakBr(const Scene&, const Difference& difference) {
    return (shownHas(difference, "[br]") && !meantHas(difference, "[br]")) ||
           (shownHas(difference, "[BR]") && !meantHas(difference, "[BR]"));
}

/// What old programs and copies by hand put behind the last line.
bool endOfFileMark(const Scene&, const Difference& difference) { return shownHas(difference, "\x1A"); }

/// As in files that were put together from several.
bool markInside(const Scene& scene, const Difference& difference) {
    if (difference.entry == nullptr) return false;
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    const size_t at = difference.entry->place.offset;
    const bool hasOne = scene.bytes.substr(at, kMark.size()) == kMark ||
                        (at >= kMark.size() && scene.bytes.substr(at - kMark.size(), kMark.size()) == kMark);
    return hasOne && at > kMark.size();
}

/// With that setting bytes from 0x80 to 0xA0 go, and others take the next one with them.
bool propertyBig5(const Scene& scene, const Difference& difference) {
    const std::string& name = scene.meant.encoding.name;
    if (!scene.isTvBig5 || isWide(scene.meant.encoding) || name.compare(0, 4, "BIG5") == 0) return false;
    const std::string& text = difference.entry != nullptr ? difference.entry->text : difference.shown->text;
    return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

/// A time line that is not in a customary form, or was not known as one; for what is false, any of them.
template <meant::Format kFormat>
bool timeForm(const Scene& scene, const Difference& difference) {
    if (scene.meant.format != kFormat) return false;
    const size_t loose = scene.facts->looseLine;
    if (difference.entry == nullptr) return loose != SIZE_MAX;
    if (loose > difference.entry->place.offset && loose < difference.entry->behind) return true;
    return !isUsualLine(kFormat, lineAt(scene, difference.entry->place.offset));
}

/// Where lines make pairs: one that stands before, or among, the entry's.
template <meant::Format kFormat>
bool pairForm(const Scene& scene, const Difference& difference) {
    if (scene.meant.format != kFormat) return false;
    return scene.facts->looseLine < (difference.entry != nullptr ? difference.entry->behind : SIZE_MAX);
}

/// Where lines make pairs: one that closes nothing.
bool pairStrayTime(const Scene& scene, const Difference& difference) {
    const bool arePairs =
        scene.meant.format == meant::Format::SubViewer10 || scene.meant.format == meant::Format::TimedText;
    return arePairs && !scene.meant.unseen.empty() &&
           scene.meant.unseen.front().place.offset <
               (difference.entry != nullptr ? difference.entry->behind : SIZE_MAX);
}

bool smiOddSync(const Scene& scene, const Difference&) { return scene.facts->hasOddSync; }

bool smiSyncWithoutP(const Scene& scene, const Difference&) { return scene.facts->hasSyncWithoutP; }

bool ssaEventForm(const Scene& scene, const Difference& difference) {
    if (scene.meant.format != meant::Format::SubStationAlpha) return false;
    const std::string line = difference.entry != nullptr ? lineAt(scene, difference.entry->place.offset) : "";
    const size_t comma = std::min(line.find(','), line.size());
    return !hasForm(std::string_view(line).substr(comma), ",0:00:00.00,0:00:00.00,");
}

bool isSub(meant::Format format) { return format >= meant::Format::SubViewer20 && format <= meant::Format::DvbText; }

bool subSecondDigit(const Scene& scene, const Difference&) {
    return isSub(scene.meant.format) && !scene.shown.isAccepted && scene.facts->hasSecondDigit;
}

bool subMark(const Scene& scene, const Difference& difference) {
    constexpr size_t kMark = 3;
    if (scene.meant.format == meant::Format::MicroDvd) return false;  // its own rules know
    // Where lines make pairs, all of them are broken.
    if (scene.meant.format == meant::Format::SubViewer10 && !scene.meant.entries.empty() &&
        scene.meant.entries.front().place.offset == kMark)
        return scene.meant.encoding.name == "UTF-8";
    return isSub(scene.meant.format) && scene.bytes.substr(0, kMark) == "\xEF\xBB\xBF" && difference.entry != nullptr &&
           difference.entry->place.offset == kMark;
}

/// Text of the DVB subtitle system has names of its own for that.
bool subOrder(const Scene& scene, const Difference&) {
    return isSub(scene.meant.format) && scene.meant.format != meant::Format::DvbText &&
           scene.takenAs != meant::Format::None && scene.takenAs != scene.meant.format;
}

}  // namespace

const std::vector<Rule> kFileRules = {
    {"property-big5", kAltered | kFalse, propertyBig5},
    {"mark-inside", kAny, markInside},
    {"utf32", kAny, utf32},
    {"utf16-no-mark", kAny, utf16NoMark},
    {"utf16-no-mark", kAny, utf16NoMarkDamaged},
    {"utf16-shifted", kAny, utf16Shifted},
    {"wrong-extension", kAny, wrongExtension},
    {"sub-order", kAny, subOrder},
    {"utf16be-lf", kLost | kFalse, utf16beLf},
    {"beyond-32-bit", kLost | kDisplaced | kHidden, beyond32Bit},
    {"cr-only", kAltered | kLost | kFalse, crOnly},
};

const std::vector<Rule> kCommonRules = {
    {"ends-before-start", kHidden, endsBeforeStart},
    {"same-start", kHidden, sameStart},
    {"overlap", kHidden, overlap},
    {"not-ascending", kHidden, notAscending},
    {"text-angle-brackets", kAltered, textAngleBrackets},
    {"break-N", kOdd | kAltered, breakN, true},
    {"break-bar", kOdd | kAltered, breakBar, true},
    {"break-br", kOdd | kAltered, breakBr, true},
    {"text-damaged-tag", kOdd | kAltered, textDamagedTag, true},
};

const std::vector<Rule> kLastRules = {
    {"zeros-in-text", kAny, zerosInText},
    {"end-of-file-mark", kAltered | kOdd | kFalse, endOfFileMark},
    {"cr-cr-lf", kAny, crCrLf},
    {"cr-only", kAltered, crAmongOthers},
    {"text-too-long", kAltered, textTooLong},
    {"srt-blank-line-in-text", kAltered, srtBlankLineInText},
    {"trail-byte-brace", kAltered, trailByteBrace},
    {"text-braces", kAltered, textBraces},
    {"text-block-at-line-end", kAltered, textBlockAtLineEnd},
    {"text-brace-unclosed", kAltered | kOdd, textBraceUnclosed},
    {"text-br", kAltered, textBr},
    {"text-tag-at-line-end", kAltered, textTagAtLineEnd},
    {"text-open-bracket", kAltered | kLost | kOdd | kFalse, textOpenBracket},
    {"srt-time-form", kAny, timeForm<meant::Format::SubRip>},
    {"ssa-event-form", kAny, ssaEventForm},
    {"sub-second-digit", kAny, subSecondDigit},
    {"sub-mark", kAny, subMark},
    {"sv2-time-form", kAny, timeForm<meant::Format::SubViewer20>},
    {"sv1-time-form", kAny, pairForm<meant::Format::SubViewer10>},
    {"mdvd-frame-form", kAny, timeForm<meant::Format::MicroDvd>},
    {"txt-broken-line", kAny, pairForm<meant::Format::TimedText>},
    {"srt-time-form", kLost | kAltered | kFalse, pairForm<meant::Format::SubRip>},
    {"mdvd-frame-form", kAny, pairForm<meant::Format::MicroDvd>},
    {"pair-stray-time", kAny, pairStrayTime},
    {"smi-sync-form", kAny, smiOddSync},
    {"smi-no-p", kAny, smiSyncWithoutP},
    {"dvb-time-form", kAny, timeForm<meant::Format::DvbText>},
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

bool bracesShown(const Scene&, const Difference& difference) {
    const auto braces = [](const std::string& text) { return std::count(text.begin(), text.end(), '{'); };
    return braces(difference.shown->text) > braces(difference.entry->text);
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

bool endsElsewhere(const Difference& difference) {
    const std::optional<Ms> end = difference.shown->end;
    return end && std::abs(*end - difference.entry->end) > 1;
}

bool hasBareLf(const Scene& scene) { return scene.meant.lineEnds.lf > 0; }

}  // namespace check
