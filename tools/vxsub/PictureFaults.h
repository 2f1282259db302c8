/// Why nothing of a picture is seen on a television.
#pragma once

#include <optional>
#include <string>

#include "Television.h"
#include "tools/check/VobSub.h"

namespace vxsub {

class PictureFaults {
public:
    explicit PictureFaults(SubtitleFile& file) : mFile(file) {}

    /// Of an entry that was shown on the television, or could not be.
    std::string why(android::U32 index, const Television& television, const std::optional<Television::Shown>& shown);

private:
    struct Checked {
        check::Index index;
        check::Report report;
    };
    const Checked& checked();
    std::optional<size_t> lineOf(android::U32 index);
    std::string causeOf(android::U32 index);

    SubtitleFile& mFile;
    std::optional<Checked> mChecked;  ///< when a reason was asked for
};

}  // namespace vxsub
