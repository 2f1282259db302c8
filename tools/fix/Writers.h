/// The formats' writers: from pieces to the bytes of a file.
#pragma once

#include "tools/fix/SafeText.h"
#include "tools/fix/Timeline.h"

namespace fix {

/// What a format can hold of a piece, and how.
struct Form {
    meant::Format format;
    Clock clock;
    Brackets brackets;
    bool hasRealBreaks;  ///< of lines; elsewhere a "|" may be shown
    std::string (*write)(const std::vector<Piece>& pieces, const meant::File& file);
};

/// SubRip as the library reads it without a loss: a mark, CR LF, a number before each line of times.
std::string writeSubRip(const std::vector<Piece>& pieces, Letters letters);

/// The form in which a format shows most; null for SubRip, and for those that are mended line by line.
const Form* formOf(meant::Format format);

}  // namespace fix
