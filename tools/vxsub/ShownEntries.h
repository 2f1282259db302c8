/// The one bridge between the library and the meant reading: what a player gets of a file, in the words of the check.
#pragma once

#include <memory>
#include <string>

#include "SubtitleFile.h"
#include "tools/check/Compare.h"
#include "tools/meant/Meant.h"

namespace vxsub {

/// The bytes of a regular file. Throws `FileError`.
std::string readFile(const std::string& path);

/// What `read` is to know of a file that is opened with these options; `encoding` is that of 8-bit text, empty when it
/// is to be found out.
meant::Options meantOptions(const OpenOptions& options, const std::string& encoding = {});

/// What --encoding would call it.
std::string encodingOf(const NativeCharset& native);

/// What a player gets of a text file.
struct ShownFile {
    check::Shown shown;
    std::string refusal;  ///< why it is not accepted; empty when it is
    /// As the library tells them.
    android::EN_MEDIA_SUBTITLE_PARSER_TYPE type = android::E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID;
    android::EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType = android::E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN;
};

/// Opens a text file with the library; `shown.at` asks it, and keeps it open. Texts end at the first 0. Those of 8-bit
/// files are decoded as `encoding` says, whatever the library takes them for: that is a matter of the whole file.
ShownFile openShown(const OpenOptions& options, const meant::Encoding& encoding);

}  // namespace vxsub
