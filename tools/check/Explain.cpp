#include "tools/check/Explain.h"

#include <algorithm>
#include <unordered_map>

#include "tools/check/Rules.h"

namespace check {
namespace {

const Cause* causeBy(const std::vector<Rule>& rules, const Scene& scene, const Difference& difference) {
    const auto rule = std::find_if(rules.begin(), rules.end(), [&](const Rule& row) {
        return (row.verdicts & bit(difference.verdict)) != 0 && row.holds(scene, difference);
    });
    return rule == rules.end() ? nullptr : findCause(rule->cause);
}

/// A file in a format that is not supported is refused, or something else is read in it.
bool isUnsupported(const Scene& scene) {
    return scene.meant.format != meant::Format::None && *meant::nameOf(scene.meant.format).endings == '\0';
}

/// What one difference brings about elsewhere has its cause: an entry whose text is shown with another one is lost
/// there, and one with a wrong time and a wrong text is both lost and false.
class Consequences {
public:
    explicit Consequences(std::vector<Finding>* findings) : mFindings(*findings) {}

    void name() {
        for (size_t i = 0; i < mFindings.size(); ++i)
            if (mFindings[i].cause == nullptr) mFindings[i].cause = causeOfRelated(i);
    }

private:
    /// A few on both sides are looked at.
    const Cause* causeOfRelated(size_t i) const {
        constexpr size_t kReach = 64;
        const size_t last = std::min(mFindings.size(), i + kReach);
        for (size_t k = i - std::min(i, kReach); k < last; ++k)
            if (mFindings[k].cause != nullptr && areRelated(mFindings[i].difference, mFindings[k].difference))
                return mFindings[k].cause;
        return nullptr;
    }

    static bool areRelated(const Difference& a, const Difference& b) {
        return isShownIn(a, b) || isShownIn(b, a) || haveOneText(a, b) || haveOneText(b, a);
    }

    /// The text that was meant in one is found in what the other shows.
    static bool isShownIn(const Difference& meant, const Difference& shown) {
        if (meant.entry == nullptr || shown.shown == nullptr || meant.shown == shown.shown) return false;
        const std::string_view line = firstLine(meant.entry->text);
        return !line.empty() && shown.shown->text.find(line) != std::string::npos;
    }

    static bool haveOneText(const Difference& meant, const Difference& shown) {
        if (meant.entry == nullptr || shown.shown == nullptr || shown.entry != nullptr) return false;
        const std::string_view line = firstLine(shown.shown->text);
        return !line.empty() && meant.entry->text.find(line) != std::string::npos;
    }

    static std::string_view firstLine(std::string_view text) {
        text.remove_prefix(std::min(text.find_first_not_of("\r\n"), text.size()));
        return text.substr(0, text.find_first_of("\r\n"));
    }

    std::vector<Finding>& mFindings;
};

/// What else an entry would meet if its first cause were mended: codes in its text, and others at the same time.
class Latent {
public:
    Latent(const Scene& scene, std::vector<Finding>* findings) : mScene(scene), mFindings(*findings) {
        for (const meant::Entry& entry : scene.meant.entries) mInTime.push_back(&entry);
        std::sort(mInTime.begin(), mInTime.end(), isBefore);
    }

    /// The findings that are there get theirs behind them.
    void add() {
        std::vector<Finding> all;
        for (const Finding& finding : mFindings) {
            all.push_back(finding);
            if ((bit(finding.difference.verdict) & (kLost | kDisplaced | kAltered)) == 0) continue;
            addCodes(finding, &all);
            addOverlap(finding, &all);
        }
        mFindings = std::move(all);
    }

private:
    /// Of one array.
    static bool isBefore(const meant::Entry* a, const meant::Entry* b) {
        return a->start != b->start ? a->start < b->start : a < b;
    }

    void addCodes(const Finding& finding, std::vector<Finding>* all) const {
        if (finding.difference.shown == nullptr) return;
        Difference odd = finding.difference;
        odd.verdict = Verdict::Odd;
        for (const auto* rules : {&rulesFor(mScene.meant.format), &kCommonRules})
            for (const Rule& rule : *rules)
                if (rule.isCode && findCause(rule.cause) != finding.cause && rule.holds(mScene, odd))
                    all->push_back({findCause(rule.cause), odd});
    }

    /// The next one begins before it is over, so it hides what is left.
    void addOverlap(const Finding& finding, std::vector<Finding>* all) const {
        constexpr Ms kTolerance = 2;
        const meant::Entry& entry = *finding.difference.entry;
        const auto next = std::upper_bound(mInTime.begin(), mInTime.end(), &entry, isBefore);
        if (next == mInTime.end() || (*next)->start + kTolerance > entry.end) return;
        const Cause* cause = findCause((*next)->start == entry.start ? "same-start" : "overlap");
        if (cause == finding.cause) return;
        Difference hidden = finding.difference;
        hidden.verdict = Verdict::Hidden;
        hidden.when = (*next)->start;
        all->push_back({cause, hidden});
    }

    const Scene& mScene;
    std::vector<Finding>& mFindings;
    std::vector<const meant::Entry*> mInTime;
};

}  // namespace

std::vector<Finding> explain(const Scene& bare, const Comparison& comparison) {
    const Facts facts = comparison.differences.empty() ? Facts() : factsOf(bare);
    Scene scene = bare;
    scene.facts = &facts;
    std::vector<Finding> findings;
    const Difference whole = {Verdict::Right};
    if (isUnsupported(scene))
        return {{findCause(scene.shown.entries.empty() ? "not-supported" : "taken-for-another"), whole}};
    for (const Rule& rule : kWholeFileRules)
        if (rule.holds(scene, whole)) findings.push_back({findCause(rule.cause), whole});
    for (const Difference& difference : comparison.differences) {
        const Cause* cause = causeBy(kFileRules, scene, difference);
        if (cause == nullptr) cause = causeBy(rulesFor(scene.meant.format), scene, difference);
        if (cause == nullptr) cause = causeBy(kCommonRules, scene, difference);
        if (cause == nullptr) cause = causeBy(kLastRules, scene, difference);
        findings.push_back({cause, difference});
    }
    Consequences(&findings).name();
    Latent(scene, &findings).add();
    return findings;
}

}  // namespace check
