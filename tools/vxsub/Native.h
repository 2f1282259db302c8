/// Encodings of 8-bit text without a byte-order mark: those that the library has tables for, and all that iconv knows.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "subtitle/SubtitleParser.h"

namespace vxsub {

/// One encoding. For a new one with a table of the library's, write a row in Native.cpp.
struct NativeCharset {
    std::string option;  ///< its word for --native
    std::string name;    ///< for people
    std::function<std::u32string(android::SubtitleParser& parser, std::string_view bytes)> decode;
};
using CharsetRef = std::shared_ptr<const NativeCharset>;

/// Those of the library, in the order of the help text.
const std::vector<CharsetRef>& libraryCharsets();

/// The one of that name, in any letter case; "1251" and "8859-5" will do for iconv's longer ones. Null when there is
/// none.
CharsetRef findNativeCharset(std::string_view option);

}  // namespace vxsub
