/// One file, checked: what it is, and what of it does not show as meant.
#pragma once

#include <string>

#include "Errors.h"
#include "Picture.h"
#include "SubtitleFile.h"
#include "tools/check/Report.h"

namespace vxsub {

struct CheckOptions {
    OpenOptions file;
    std::string encoding;         ///< of 8-bit text; empty: found out
    std::optional<Size> surface;  ///< of the television
};

/// What is no subtitle file at all.
class NoSubtitles : public FileError {
public:
    using FileError::FileError;
};

/// Throws `NoSubtitles`, and `FileError` for what cannot be read, or is not looked into.
check::Report checkFile(const CheckOptions& options);

}  // namespace vxsub
