#include "tools/check/Compare.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "tools/meant/Markup.h"

namespace check {
namespace {

constexpr Ms kTolerance = 1;
constexpr size_t kNone = SIZE_MAX;

/// Blanks, no-break spaces and line ends, any number of them, as one blank.
std::string squeezed(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    bool isGap = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool isNoBreakSpace = c == '\xC2' && i + 1 < text.size() && text[i + 1] == '\xA0';
        if (isNoBreakSpace || c == ' ' || c == '\t' || c == '\r' || c == '\n') {
            isGap = true;
            i += isNoBreakSpace;
            continue;
        }
        if (isGap && !result.empty()) result += ' ';
        isGap = false;
        result += c;
    }
    return result;
}

/// Without the codes that a player may show, or not. Most texts have none.
std::string withoutCodes(const std::string& text, const std::string& squeezedText) {
    const auto isCode = [](char c) { return c == '<' || c == '{' || c == '\\' || c == '&' || c == '|' || c == '['; };
    if (std::none_of(text.begin(), text.end(), isCode)) return squeezedText;
    meant::Markup markup;
    markup.bars = true;
    markup.entities = true;
    markup.backslashes = true;
    return squeezed(meant::plainText(text, markup));
}

bool isAt(const ShownEntry& shown, const meant::Entry& entry) {
    return shown.start >= entry.start - kTolerance && shown.start <= entry.start + kTolerance;
}

class Comparer {
public:
    Comparer(const meant::File& meant, const Shown& shown) : mMeant(meant), mShown(shown) {}

    Comparison compare() {
        for (size_t i = 0; i < mShown.entries.size(); ++i) {
            mTexts.push_back(squeezed(mShown.entries[i].text));
            mBareTexts.push_back(withoutCodes(mShown.entries[i].text, mTexts.back()));
            mByStart.emplace(mShown.entries[i].start, i);
        }
        for (const meant::Entry& entry : mMeant.entries) {
            mMeantTexts.push_back(squeezed(entry.text));
            mBareMeantTexts.push_back(withoutCodes(entry.text, mMeantTexts.back()));
        }
        mPartners.assign(mMeant.entries.size(), kNone);
        mIsTaken.assign(mShown.entries.size(), false);
        pairAtTheirTimes([this](size_t meant, size_t shown) { return mMeantTexts[meant] == mTexts[shown]; });
        pairAtTheirTimes([this](size_t meant, size_t shown) { return mBareMeantTexts[meant] == mBareTexts[shown]; });
        pairByText();
        pairAtTheirTimes([](size_t, size_t) { return true; });
        for (size_t i = 0; i < mPartners.size(); ++i) judge(i);
        addFalse();
        mResult.meant = mMeant.entries.size();
        return std::move(mResult);
    }

private:
    template <class Accepts>
    void pairAtTheirTimes(Accepts accepts) {
        for (size_t i = 0; i < mPartners.size(); ++i) {
            if (mPartners[i] != kNone) continue;
            const Ms start = mMeant.entries[i].start;
            const auto end = mByStart.upper_bound(start + kTolerance);
            // At one time a few are looked at: a file with thousands there takes no squares.
            int left = 64;
            for (auto at = mByStart.lower_bound(start - kTolerance); at != end && left > 0; ++at, --left) {
                if (mIsTaken[at->second] || !accepts(i, at->second)) continue;
                take(i, at->second);
                mByStart.erase(at);
                break;
            }
        }
    }

    /// The first of those that are left with a text goes to the first that was meant with it, and so on.
    void pairByText() {
        std::unordered_map<std::string, std::vector<size_t>> left;
        for (size_t i = mTexts.size(); i-- > 0;)
            if (!mIsTaken[i] && !mBareTexts[i].empty()) left[mBareTexts[i]].push_back(i);
        for (size_t i = 0; i < mPartners.size(); ++i) {
            if (mPartners[i] != kNone) continue;
            const auto row = left.find(mBareMeantTexts[i]);
            if (row == left.end() || row->second.empty()) continue;
            take(i, row->second.back());
            row->second.pop_back();
        }
    }

    void take(size_t meant, size_t shown) {
        mPartners[meant] = shown;
        mIsTaken[shown] = true;
    }

    void judge(size_t i) {
        const meant::Entry& entry = mMeant.entries[i];
        if (mPartners[i] == kNone) {
            add({Verdict::Lost, &entry, nullptr, entry.start});
            return;
        }
        const ShownEntry& shown = mShown.entries[mPartners[i]];
        if (!isAt(shown, entry)) {
            add({Verdict::Displaced, &entry, &shown, entry.start});
        } else if (mMeantTexts[i] == mTexts[mPartners[i]]) {
            if (isAnswered(i)) ++mResult.right;
        } else if (mBareMeantTexts[i] == mBareTexts[mPartners[i]]) {
            add({Verdict::Odd, &entry, &shown, entry.start});
            isAnswered(i);
        } else {
            add({Verdict::Altered, &entry, &shown, entry.start});
        }
    }

    /// Asked at start, middle and end; what is answered may be another entry with the same text. If not, it is told.
    bool isAnswered(size_t i) {
        const meant::Entry& entry = mMeant.entries[i];
        const Ms start = std::max<Ms>(entry.start, 0);
        const Ms last = std::max(start, entry.end - 1 - kTolerance);
        for (const Ms time : {start, start + (last - start) / 2, last}) {
            const std::optional<size_t> answer = mShown.at ? mShown.at(time) : std::nullopt;
            if (answer && mTexts[*answer] == mTexts[mPartners[i]]) continue;
            const ShownEntry* instead = answer ? &mShown.entries[*answer] : nullptr;
            add({Verdict::Hidden, &entry, &mShown.entries[mPartners[i]], time, instead});
            return false;
        }
        return true;
    }

    void addFalse() {
        for (size_t i = 0; i < mTexts.size(); ++i)
            if (!mIsTaken[i] && !mTexts[i].empty())
                add({Verdict::False, nullptr, &mShown.entries[i], mShown.entries[i].start});
    }

    void add(Difference difference) { mResult.differences.push_back(difference); }

    const meant::File& mMeant;
    const Shown& mShown;
    std::vector<std::string> mTexts, mMeantTexts;          ///< squeezed
    std::vector<std::string> mBareTexts, mBareMeantTexts;  ///< and without codes
    std::multimap<Ms, size_t> mByStart;                    ///< of those that are not taken
    std::vector<size_t> mPartners;                         ///< of each meant entry
    std::vector<bool> mIsTaken;
    Comparison mResult;
};

}  // namespace

Comparison compare(const meant::File& meant, const Shown& shown) { return Comparer(meant, shown).compare(); }

}  // namespace check
