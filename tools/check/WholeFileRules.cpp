// What is the whole file's: letters that a player will take from the wrong code page, empty lines before every text.
#include "tools/check/Rules.h"

namespace check {
namespace {

bool startsWith(const std::string& name, std::string_view begin) { return name.compare(0, begin.size(), begin) == 0; }

bool isUnmarkedUtf8(const Scene& scene) {
    const meant::Encoding& encoding = scene.meant.encoding;
    return encoding.name == "UTF-8" && encoding.from != meant::EncodingFrom::Mark;
}

/// Text that is neither Unicode nor ASCII nor one of the two encodings that the library looks for.
bool isCodePage(const Scene& scene) {
    const std::string& name = scene.meant.encoding.name;
    return !name.empty() && name != "ASCII" && !startsWith(name, "UTF-") && !startsWith(name, "GB") &&
           !startsWith(name, "BIG5");
}

bool utf8UnmarkedNative(const Scene& scene, const Difference&) {
    return isUnmarkedUtf8(scene) && scene.takenFor == TakenFor::Native;
}

bool utf8UnmarkedAsGbk(const Scene& scene, const Difference&) {
    return isUnmarkedUtf8(scene) && scene.takenFor == TakenFor::Gbk;
}

bool utf8UnmarkedAsBig5(const Scene& scene, const Difference&) {
    return isUnmarkedUtf8(scene) && scene.takenFor == TakenFor::Big5;
}

bool codepageAsGbk(const Scene& scene, const Difference&) {
    return isCodePage(scene) && scene.takenFor == TakenFor::Gbk;
}

bool codepageAsBig5(const Scene& scene, const Difference&) {
    return isCodePage(scene) && scene.takenFor == TakenFor::Big5;
}

bool beginWithABreak(const Scene& scene) {
    return !scene.shown.entries.empty() && scene.shown.entries.front().text.substr(0, 1) == "\n";
}

bool srtLeadingBreak(const Scene& scene, const Difference&) {
    return scene.meant.format == meant::Format::SubRip && scene.meant.encoding.name == "UTF-16BE" &&
           beginWithABreak(scene);
}

bool sv2LeadingBreak(const Scene& scene, const Difference&) {
    return scene.meant.format == meant::Format::SubViewer20 && isWide(scene.meant.encoding) && beginWithABreak(scene);
}

}  // namespace

const std::vector<Rule> kWholeFileRules = {
    {"utf8-unmarked-native", kWhole, utf8UnmarkedNative},  {"utf8-unmarked-as-gbk", kWhole, utf8UnmarkedAsGbk},
    {"utf8-unmarked-as-big5", kWhole, utf8UnmarkedAsBig5}, {"codepage-as-gbk", kWhole, codepageAsGbk},
    {"codepage-as-big5", kWhole, codepageAsBig5},          {"srt-leading-break", kWhole, srtLeadingBreak},
    {"sv2-leading-break", kWhole, sv2LeadingBreak},
};

}  // namespace check
