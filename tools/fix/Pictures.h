/// What the pictures of a VobSub stream say of the index that is missing: how large their frame is, and which of their
/// colours are letters.
#pragma once

#include <stdint.h>

#include <optional>
#include <string_view>

#include "tools/vobsub/Picture.h"

namespace fix {

/// The picture that begins at a position of the stream; nothing when there is none.
std::optional<vobsub::Picture> pictureAt(std::string_view stream, uint64_t position);

/// Of each code, how many pixels have it; of those that are seen, how many stand beside one that is not.
struct Usage {
    uint64_t pixels[4] = {}, atEdge[4] = {};
};
Usage usageOf(const vobsub::Picture& picture);

}  // namespace fix
