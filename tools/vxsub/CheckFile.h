/// One file, checked: what it is, and what of it does not show as meant.
#pragma once

#include <string>

#include "Picture.h"
#include "SubtitleFile.h"
#include "tools/check/Report.h"

namespace vxsub {

struct CheckOptions {
    OpenOptions file;
    std::string encoding;         ///< of 8-bit text; empty: found out
    std::optional<Size> surface;  ///< of the television
};

/// Throws `FileError` for what cannot be read, and for what is no subtitle file.
check::Report checkFile(const CheckOptions& options);

}  // namespace vxsub
