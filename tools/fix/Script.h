/// A script of SubStation Alpha, mended line by line: what stands in front of the events stays as it is.
#pragma once

#include "tools/fix/Fix.h"
#include "tools/meant/Source.h"

namespace fix {

/// A mark, CR LF, events of ten fields in order. `pieces` gets an entry for each event.
std::string mendScript(const meant::File& file, const meant::Source& source, std::vector<Piece>* pieces);

}  // namespace fix
