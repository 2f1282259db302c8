// The vocabulary, and its rules.
#include "tools/check/Causes.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tools/check/Rules.h"

namespace check {
namespace {

TEST(Causes, HaveNamesOfTheirOwnAndSentences) {
    std::set<std::string> names;
    for (const Cause& cause : causes()) {
        EXPECT_TRUE(names.insert(cause.name).second) << cause.name;
        EXPECT_EQ(&cause, findCause(cause.name));
        const std::string sentence = cause.sentence;
        EXPECT_TRUE(sentence.size() > 20 && sentence.back() == '.') << cause.name;
    }
    EXPECT_EQ(nullptr, findCause("no-such"));
    EXPECT_STREQ("hidden", wordFor(Cost::Hidden));
    EXPECT_TRUE(isLoss(Cost::Entries) && isLoss(Cost::Hidden));
    EXPECT_FALSE(isLoss(Cost::Letters) || isLoss(Cost::Looks));
}

TEST(Causes, OfRulesAreKnown) {
    for (const std::vector<Rule>* rules :
         {&kFileRules, &kWholeFileRules, &kCommonRules, &kLastRules, &kSubRipRules, &kSubStationAlphaRules,
          &kMicroDvdRules, &kSubViewer20Rules, &kSubViewer10Rules, &kTimedTextRules, &kDvbTextRules, &kSamiRules})
        for (const Rule& rule : *rules) EXPECT_NE(nullptr, findCause(rule.cause)) << rule.cause;
}

}  // namespace
}  // namespace check
