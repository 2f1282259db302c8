/// Encodings that the C library's iconv knows.
#pragma once

#include "tools/meant/Encodings.h"

namespace meant {

/// As `Encodings::open`.
Encodings::Decode openIconv(const std::string& name);

}  // namespace meant
