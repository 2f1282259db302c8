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

}  // namespace

std::vector<Finding> explain(const Scene& scene, const Comparison& comparison) {
    std::vector<Finding> findings;
    findings.reserve(comparison.differences.size());
    for (const Difference& difference : comparison.differences) {
        const Cause* cause = causeBy(kFileRules, scene, difference);
        if (cause == nullptr) cause = causeBy(rulesFor(scene.meant.format), scene, difference);
        if (cause == nullptr) cause = causeBy(kCommonRules, scene, difference);
        findings.push_back({cause, difference});
    }
    return findings;
}

}  // namespace check
