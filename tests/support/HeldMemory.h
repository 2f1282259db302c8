/// How much memory the program holds.
#pragma once

#include <malloc.h>
#include <stddef.h>

namespace test {

/// Bytes that the C library's allocator has given to all threads and not got back. 0 where another one stands in front
/// of it: the sanitizers look for themselves.
inline size_t heldBytes() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace test
