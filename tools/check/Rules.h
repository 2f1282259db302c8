/// The rules by which causes are found: one function each, named after its cause.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/check/Explain.h"

namespace check {

using Verdicts = unsigned;  ///< a sum of `bit(verdict)`
constexpr Verdicts bit(Verdict verdict) { return 1u << static_cast<unsigned>(verdict); }
constexpr Verdicts kLost = bit(Verdict::Lost), kDisplaced = bit(Verdict::Displaced), kAltered = bit(Verdict::Altered),
                   kOdd = bit(Verdict::Odd), kHidden = bit(Verdict::Hidden), kFalse = bit(Verdict::False),
                   kWhole = bit(Verdict::Right),  ///< the file as a whole
    kAny = kLost | kDisplaced | kAltered | kOdd | kHidden | kFalse;

struct Rule {
    const char* cause;
    Verdicts verdicts;  ///< which it may explain
    bool (*holds)(const Scene& scene, const Difference& difference);
};

/// Of letters in the whole file; each that holds is told.
extern const std::vector<Rule> kLetterRules;

/// Of whole files, whatever their format; asked first.
extern const std::vector<Rule> kFileRules;

/// Of entries in any format; asked behind those of the format.
extern const std::vector<Rule> kCommonRules;

/// Of one format; none where there are no rules yet.
const std::vector<Rule>& rulesFor(meant::Format format);
extern const std::vector<Rule> kSubRipRules;
extern const std::vector<Rule> kSubStationAlphaRules;
extern const std::vector<Rule> kMicroDvdRules;
extern const std::vector<Rule> kSubViewer20Rules;
extern const std::vector<Rule> kSubViewer10Rules;
extern const std::vector<Rule> kTimedTextRules;
extern const std::vector<Rule> kDvbTextRules;
extern const std::vector<Rule> kSamiRules;

/// A line of the file from `offset` on, as far as it is ASCII, whatever the width of its characters; without its end.
std::string lineAt(const Scene& scene, size_t offset);

/// All of an entry's lines, likewise, '\n' between them.
std::string linesOf(const Scene& scene, const meant::Entry& entry);

/// Whether lines end with LF alone.
bool hasBareLf(const Scene& scene);

bool isWide(const meant::Encoding& encoding);

}  // namespace check
