/// Encodings of 8-bit text without a byte-order mark, converted by the library's own tables.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "subtitle/SubtitleParser.h"

namespace vxsub {

/// One encoding. For a new one, write a row in Native.cpp.
struct NativeCharset {
    const char* option;  ///< its word for --native
    const char* name;    ///< for people
    std::u32string (*decode)(android::SubtitleParser& parser, std::string_view bytes);
};

/// All of them, in the order of the help text.
const std::vector<NativeCharset>& nativeCharsets();

/// The one of that name, in any letter case; null when there is none.
const NativeCharset* findNativeCharset(std::string_view option);

}  // namespace vxsub
