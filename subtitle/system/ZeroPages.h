/// Large blocks that hold little.
#pragma once

#include <stddef.h>

#include "subtitle/SubtitleTypes.h"

namespace vxsubtitle {

using namespace android;

/// Zeroes `size` bytes of the heap. About `used` of them, the first ones, are expected to be used again, and are
/// written. Whole pages behind them go back to the system instead, which has zeros for whoever looks there again: of
/// what nobody touched that takes no time, and no memory. A bad guess costs time alone.
void zeroPages(U8* block, size_t size, size_t used);

}  // namespace vxsubtitle
