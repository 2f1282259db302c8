/// From entries that begin, end and overlap as they like to pieces of which one at a time is shown.
#pragma once

#include <functional>

#include "tools/fix/Remarks.h"

namespace fix {

/// When something can be shown, and how finely that can be told.
struct Clock {
    Ms last = 0xFFFFFFFE;  ///< the latest time that can be written
    Ms unit = 1;           ///< times are written in steps of so many milliseconds
    const char* lateCause = "beyond-32-bit";
};

/// An entry that can be shown; `index` is its number in the file.
struct Span {
    Ms start, end;
    size_t index;
};

/// When each entry is shown: with an end where the file gives none, within what can be written, in order. `isWhole`
/// loses those that are not shown from start to end.
std::vector<Span> spansOf(const meant::File& file, const std::vector<size_t>& chosen, const Clock& clock,
                          std::vector<bool>* isWhole, Remarks* remarks);

/// Cuts them wherever one begins or ends. Those that run at the same time are joined: the one that began first stands
/// first, the same text stands once.
std::vector<Piece> flattened(const std::vector<Span>& spans, const std::vector<std::string>& texts, size_t mostBytes,
                             std::vector<bool>* isWhole);

}  // namespace fix
