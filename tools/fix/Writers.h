/// The formats' writers: from pieces to the bytes of a file.
#pragma once

#include "tools/fix/Fix.h"

namespace fix {

/// SubRip as the library reads it without a loss: a mark, CR LF, a number before each line of times.
std::string writeSubRip(const std::vector<Piece>& pieces, Letters letters);

}  // namespace fix
