/// What the pictures of a VobSub stream say of the index that is missing: how large their frame is, and which of their
/// colours are letters.
#pragma once

#include <stdint.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fix {

struct Picture {
    struct Colour {
        unsigned index = 0;     ///< in the palette
        unsigned contrast = 0;  ///< 0: not seen
    };
    Colour colours[4];                                  ///< of the pixels' codes
    unsigned left = 0, right = 0, top = 0, bottom = 0;  ///< the last column and row belong to it
    std::string fields[2];                              ///< run lengths of the even and the odd rows
};

/// The picture that begins at a position of the stream; nothing when there is none.
std::optional<Picture> pictureAt(std::string_view stream, uint64_t position);

/// Of each code, how many pixels have it, and how many of them stand beside one that is not seen.
struct Usage {
    uint64_t pixels[4] = {}, atEdge[4] = {};
};
Usage usageOf(const Picture& picture);

}  // namespace fix
