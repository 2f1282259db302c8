/// A request to stop, made by one thread and looked at by the one that works.
#pragma once

#include <stddef.h>

#include "subtitle/SubtitleTypes.h"

namespace vxsubtitle {

using namespace android;

/// Whoever works on much data looks at its request at every line, and after so many bytes within one.
class StopRequest {
public:
    static constexpr U8 kBit = 0x80;  ///< of the byte that makes the request

    /// Never made.
    StopRequest() : mByte(&kNever) {}

    /// Made when `byte` has `kBit`; accessed atomically.
    explicit StopRequest(const U8& byte) : mByte(&byte) {}

    bool isMade() const { return (__atomic_load_n(mByte, __ATOMIC_RELAXED) & kBit) != 0; }

private:
    static constexpr U8 kNever = 0;

    const U8* mByte;
};

/// Bytes between two looks at a request within a line.
constexpr size_t kStopStretch = 65536;

}  // namespace vxsubtitle
