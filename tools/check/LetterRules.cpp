// Letters that a player will take from the wrong code page, and the setting that damages them.
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

}  // namespace

const std::vector<Rule> kLetterRules = {
    {"utf8-unmarked-native", kWhole, utf8UnmarkedNative},  {"utf8-unmarked-as-gbk", kWhole, utf8UnmarkedAsGbk},
    {"utf8-unmarked-as-big5", kWhole, utf8UnmarkedAsBig5}, {"codepage-as-gbk", kWhole, codepageAsGbk},
    {"codepage-as-big5", kWhole, codepageAsBig5},
};

}  // namespace check
