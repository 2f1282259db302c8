/// A VobSub index that the library reads as it is meant.
#pragma once

#include "tools/fix/Fix.h"
#include "tools/meant/Encodings.h"

namespace fix {

struct IndexEntry {
    Ms start = 0;           ///< with the delay
    uint64_t position = 0;  ///< in the stream
    size_t track = 0;
    meant::Place place;
};

struct FixedIndex {
    std::string refusal;  ///< why there is no new one
    std::string bytes;
    std::vector<IndexEntry> entries;  ///< what is meant, in the order of the file
    std::vector<Remark> remarks;
};

/// `stream` holds the pictures, which tell what the index does not.
FixedIndex fixIndex(std::string_view bytes, std::string_view stream, const meant::Encodings& encodings);

}  // namespace fix
