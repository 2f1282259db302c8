/// The rules by which causes are found: one function each, named after its cause.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/check/Explain.h"
#include "tools/check/Lines.h"

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
    bool isCode = false;  ///< a code that is shown: told whatever else is wrong with the entry
};

/// Of what is the whole file's; each that holds is told.
extern const std::vector<Rule> kWholeFileRules;

/// Of whole files, whatever their format; asked first.
extern const std::vector<Rule> kFileRules;

/// Of entries in any format; asked behind those of the format.
extern const std::vector<Rule> kCommonRules;

/// Of entries in any format; asked last.
extern const std::vector<Rule> kLastRules;

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

/// Whether what stands for an entry ends at another time than was meant.
bool endsElsewhere(const Difference& difference);

/// Whether lines end with LF alone.
bool hasBareLf(const Scene& scene);

/// What the whole file tells, found once for all its differences.
struct Facts {
    bool isShifted = false;           ///< 16-bit text with line ends in halves of two characters
    bool hasZeros = false;            ///< characters of value 0
    bool hasManyZeros = false;        ///< as 16-bit text has that is taken for 8-bit
    bool hasDoubleCr = false;         ///< lines that end with CR CR LF
    bool hasFewCommas = false;        ///< an event of a script has fewer than usual
    bool hasOtherFields = false;      ///< its Format line does not name Start, End and Text where they are looked for
    size_t looseLine = SIZE_MAX;      ///< offset of the first line that the format's time lines are nearly like
    std::string firstDigitLine;       ///< the first one that begins with a digit
    bool hasSecondDigit = false;      ///< before the first entry, a line whose second character is one
    size_t oneOfTwoLines = SIZE_MAX;  ///< text with times: offset of the first entry that lacks its second line
    bool hasMixedWidths = false;      ///< and times of one line and of two
    bool hasBrokenTime = false;       ///< and lines that begin nearly as a time
    bool hasOddSync = false;          ///< SAMI: a SYNC element that is not of the usual form
    bool hasSyncWithoutP = false;     ///< or no paragraph element behind it
    bool hasStrayNumbers = false;     ///< a line that begins with four numbers, and is no time line to a person
};
Facts factsOf(const Scene& scene);

/// Whether an event of a script has fewer fields than the library passes over.
bool hasFewCommas(const std::string& line);

/// Whether a line begins an entry of the format in one of the forms that are customary.
bool isUsualLine(meant::Format format, std::string_view line);

bool isWide(const meant::Encoding& encoding);

/// More braces are shown than were meant, as of `{\an8}`.
bool bracesShown(const Scene& scene, const Difference& difference);

}  // namespace check
