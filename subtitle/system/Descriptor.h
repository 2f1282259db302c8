/// Duplicates of the player's descriptors.
#pragma once

namespace vxsubtitle {

/// A duplicate of `fd` that is closed when a program is executed if `fd` is; -1 when none can be had. The caller closes
/// it.
[[nodiscard]] int duplicate(int fd);

}  // namespace vxsubtitle
