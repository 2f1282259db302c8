/// The vocabulary of what can go wrong: a name, what it costs, a sentence, and what helps.
#pragma once

#include <string_view>
#include <vector>

namespace check {

enum class Cost {
    Entries,  ///< entries lost, or false ones
    Times,    ///< wrong ones
    Text,     ///< wrong or cut
    Hidden,   ///< in the table, but never answered
    Letters,  ///< of a wrong code page
    Looks,    ///< shown oddly
};

struct Cause {
    const char* name;
    Cost cost;
    const char* sentence;
    const char* mend;  ///< what the author can do
};

/// All of them, the most frequent first.
const std::vector<Cause>& causes();

/// The one of that name; null when there is none.
const Cause* findCause(std::string_view name);

const char* wordFor(Cost cost);

/// Whether an entry, a time or a text is lost by it.
bool isLoss(Cost cost);

}  // namespace check
