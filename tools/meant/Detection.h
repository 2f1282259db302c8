/// Which encoding a file has: its mark, what was told, what its bytes cannot but be, a guess.
#pragma once

#include <string_view>

#include "tools/meant/Meant.h"

namespace meant {

struct Detected {
    Encoding encoding;
    size_t markSize = 0;
};

Detected detectEncoding(std::string_view bytes, const Options& options, const Encodings& encodings);

}  // namespace meant
