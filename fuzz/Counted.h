/// Read before every source of the library that is built to count its work: the C library's loops over memory, which
/// no counter of the compiler's sees, count what they touch.
#pragma once

#include <stdlib.h>
#include <string.h>

#include <cstdlib>
#include <cstring>

namespace fuzz {

/// Blocks of code that were run since the program's start, with a block for every 16 bytes that the C library touched.
extern unsigned long long work;

inline void countBytes(size_t bytes) { work += 1 + bytes / 16; }

inline void* countedCopy(void* to, const void* from, size_t size) {
    countBytes(size);
    return memcpy(to, from, size);
}
inline void* countedFill(void* to, int byte, size_t size) {
    countBytes(size);
    return memset(to, byte, size);
}
inline int countedCompare(const void* a, const void* b, size_t size) {
    countBytes(size);
    return memcmp(a, b, size);
}
inline const void* countedFind(const void* in, int byte, size_t size) {
    const void* const found = memchr(in, byte, size);
    countBytes(found != nullptr ? static_cast<size_t>(static_cast<const char*>(found) - static_cast<const char*>(in))
                                : size);
    return found;
}
inline void* countedGrowth(void* memory, size_t size) {
    countBytes(size);  // as if all of it were copied
    return realloc(memory, size);
}

}  // namespace fuzz

#define memcpy(to, from, size) ::fuzz::countedCopy(to, from, size)
#define memset(to, byte, size) ::fuzz::countedFill(to, byte, size)
#define memcmp(a, b, size) ::fuzz::countedCompare(a, b, size)
#define memchr(in, byte, size) ::fuzz::countedFind(in, byte, size)
#define realloc(memory, size) ::fuzz::countedGrowth(memory, size)
