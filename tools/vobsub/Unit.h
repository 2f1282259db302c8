/// The unit of a picture: its bytes, put together from the packs of a VobSub stream.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <string_view>

namespace vobsub {

/// A unit, and what is unusual about its packs.
struct Unit {
    std::string bytes;  ///< as many as the size in front of them says, or as there are
    bool hasPack = false;
    bool hasOddPack = false;  ///< that is not of MPEG-2
    bool hasStuffing = false;
    bool leavesGrid = false;  ///< a pack of it does not end at a multiple of 2048
    bool hasSize = false;
};

/// The unit whose first pack stands at a position of the stream.
Unit unitAt(std::string_view stream, uint64_t position);

}  // namespace vobsub
