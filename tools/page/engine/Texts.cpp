#include "Texts.h"

#include <wctype.h>

#include <algorithm>

#include "Stages.h"
#include "tools/vxsub/Text.h"

namespace page {
namespace {

constexpr android::U32 kToldEach = 10000;  // entries

/// One letter case, and blanks for all white space.
std::string folded(std::u32string text) {
    for (char32_t& c : text) c = c == '\n' || c == '\r' || c == '\t' || c == 0 ? U' ' : char32_t(towlower(wint_t(c)));
    return vxsub::encodeUtf8(text);
}

}  // namespace

Texts::Texts(vxsub::SubtitleFile& file) {
    mStarts.reserve(file.count());
    for (android::U32 i = 0; i < file.count(); ++i) {
        if (i % kToldEach == 0) tellStage("searching", double(i) / file.count());
        mStarts.push_back(mAll.size());
        mAll += folded(file.text(i));
        mAll += '\0';
    }
}

std::vector<android::U32> Texts::holding(const std::string& words) const {
    std::vector<android::U32> found;
    const std::string wanted = folded(vxsub::decodeUtf8(words));
    for (size_t at = mAll.find(wanted); at < mAll.size();) {
        const auto next = std::upper_bound(mStarts.begin(), mStarts.end(), at);
        found.push_back(android::U32(next - mStarts.begin() - 1));
        at = next == mStarts.end() ? mAll.npos : mAll.find(wanted, *next);
    }
    return found;
}

}  // namespace page
