#include "tools/check/Explain.h"

#include <algorithm>

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

}  // namespace

std::vector<Finding> explain(const Scene& scene, const Comparison& comparison) {
    std::vector<Finding> findings;
    const Difference whole = {Verdict::Right};
    if (isUnsupported(scene))
        return {{findCause(scene.shown.entries.empty() ? "not-supported" : "taken-for-another"), whole}};
    for (const Rule& rule : kLetterRules)
        if (rule.holds(scene, whole)) findings.push_back({findCause(rule.cause), whole});
    for (const Difference& difference : comparison.differences) {
        const Cause* cause = causeBy(kFileRules, scene, difference);
        if (cause == nullptr) cause = causeBy(rulesFor(scene.meant.format), scene, difference);
        if (cause == nullptr) cause = causeBy(kCommonRules, scene, difference);
        findings.push_back({cause, difference});
    }
    return findings;
}

}  // namespace check
