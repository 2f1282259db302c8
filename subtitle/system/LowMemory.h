/// Memory whose address fits a 32-bit field of the contract.
#pragma once

#include "subtitle/SubtitleTypes.h"

namespace vxsubtitle {

using namespace android;

/// `size` zeroed bytes, or 0 when memory is short. 32-bit machines take them from the general-purpose heap, others
/// from below 4 GiB, whole pages for each request. The caller gives them back with `releaseLow`. Any thread.
U32 allocateLow(U64 size);

/// Gives back what `allocateLow` answered; 0 is allowed.
void releaseLow(U32 address);

inline U8* atLow(U32 address) { return reinterpret_cast<U8*>(static_cast<uintptr_t>(address)); }

}  // namespace vxsubtitle
