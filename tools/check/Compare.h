/// What was meant against what is shown, entry by entry.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/meant/Meant.h"

namespace check {

using meant::Ms;

/// An entry of the library's table, as a player gets it.
struct ShownEntry {
    Ms start = 0;
    std::optional<Ms> end;  ///< none: until the next one
    std::string text;       ///< UTF-8, up to the first 0
};

/// All that a player gets of a file.
struct Shown {
    bool isAccepted = false;          ///< the file was opened
    std::vector<ShownEntry> entries;  ///< in the table's order
    /// The number of the entry that is answered at a time.
    std::function<std::optional<size_t>(Ms time)> at;
};

enum class Verdict {
    Right,
    Lost,       ///< no entry shows it
    Displaced,  ///< its text is shown at another time
    Altered,    ///< another text is shown at its time
    Odd,        ///< the text is all there, with codes that are meant to do something
    Hidden,     ///< the table has it, and yet it is not answered somewhere between start and end
    False,      ///< an entry that nobody meant
};

struct Difference {
    Verdict verdict;
    const meant::Entry* entry = nullptr;  ///< null for a false one
    const ShownEntry* shown = nullptr;    ///< what stands for it; null for a lost one
    Ms when = 0;                          ///< the time that was asked about
    const ShownEntry* instead = nullptr;  ///< hidden: what is answered then, null for nothing
};

struct Comparison {
    size_t meant = 0;  ///< entries
    size_t right = 0;
    std::vector<Difference> differences;  ///< in the order of the file, the false ones behind
};

/// Both outlive the result. Times within a millisecond are the same, blanks and line breaks are alike.
Comparison compare(const meant::File& meant, const Shown& shown);

}  // namespace check
