/// What a check has to say of a file, in words and numbers that refer to nothing any more.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/check/Explain.h"

namespace check {

struct Remark {
    const Cause* cause = nullptr;  ///< null: no rule explains it
    Cost cost = Cost::Entries;
    std::string what;         ///< "entry 12 at 0:01:02,500 is not shown"; empty: it is the whole file's
    meant::Place place;       ///< where that stands in the file; line 0: nowhere
    size_t entry = 0;         ///< the number among those that were meant, from 1; 0: none of them
    std::optional<Ms> start;  ///< as meant, or of a false entry as shown
    std::optional<Ms> end;
    std::optional<Ms> shownAt;  ///< where that is another time
};

struct Report {
    std::string format;      ///< the word for it
    std::string formatName;  ///< and the phrase
    std::string encoding;    ///< empty for pictures
    bool isMarked = false;
    const char* things = "entries";
    size_t meant = 0;
    size_t right = 0;
    std::vector<Remark> remarks;  ///< those of the whole file first
};

Report reportOf(const Scene& scene);

/// "unexplained" where no rule has a name.
const char* nameOf(const Remark& remark);
const char* sentenceOf(const Remark& remark);

/// Whether an entry, a time or a text is lost.
bool hasLoss(const Report& report);

/// "0:01:02,500", with a minus sign before 0.
std::string clock(Ms time);

/// Lines for people, each with `name` in front; of a repeated cause the first three places unless `all`.
std::string linesFor(const Report& report, const std::string& name, bool all);

}  // namespace check
