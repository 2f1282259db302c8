/// All texts of a file, to be searched in any letter case.
#pragma once

#include <string>
#include <vector>

#include "tools/vxsub/SubtitleFile.h"

namespace page {

class Texts {
public:
    explicit Texts(vxsub::SubtitleFile& file);

    /// The entries that hold `words`, which are UTF-8; a blank stands for a line break, too.
    std::vector<android::U32> holding(const std::string& words) const;

private:
    std::string mAll;             ///< folded, a zero behind each
    std::vector<size_t> mStarts;  ///< of the entries in it
};

}  // namespace page
