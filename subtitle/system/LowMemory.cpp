// Memory from below 4 GiB: of the heap on 32-bit machines, of mappings on others.
#include "subtitle/system/LowMemory.h"

#include <stdlib.h>

#if UINTPTR_MAX > 0xFFFFFFFF
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include "subtitle/system/Wraps.h"
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>  // both macros vanish in builds without the sanitizer
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#endif
#endif

namespace vxsubtitle {

#if UINTPTR_MAX == 0xFFFFFFFF

U32 allocateLow(U64 size) {
    if (size > SIZE_MAX) return 0;
    return reinterpret_cast<uintptr_t>(calloc(1, static_cast<size_t>(size)));
}

void releaseLow(U32 address) { free(atLow(address)); }

#else

namespace {

constexpr U64 kLimit = U64{1} << 32;

/// Stands before the memory handed out, at the start of its mapping.
struct alignas(16) Head {
    size_t mapped;  ///< bytes of the whole mapping
};

/// A mapping that ends below 4 GiB; null when the machine put it elsewhere.
U8* mapLow(void* hint, size_t size, int flags) {
    void* const start = mmap(hint, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
    if (start == MAP_FAILED) return nullptr;
    if (reinterpret_cast<uintptr_t>(start) + size <= kLimit) return static_cast<U8*>(start);
    munmap(start, size);
    return nullptr;
}

VX_WRAPS U64 nextRandom(U64 random) { return random * 6364136223846793005u + 1442695040888963407u; }

/// Tries places all over the lower 4 GiB: for machines without a flag for them, or with that flag's area used up.
U8* mapAnywhereLow(size_t size, size_t page) {
    constexpr U64 kFirst = 0x10000000;  // programs that lie low begin below
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    U64 place = static_cast<U64>(now.tv_nsec);
    for (int tries = 0; tries < 64; ++tries) {
        place = nextRandom(place);
        const U64 hint = kFirst + (place >> 32) % (kLimit - kFirst) / page * page;
        if (U8* const start = mapLow(reinterpret_cast<void*>(static_cast<uintptr_t>(hint)), size, 0)) return start;
    }
    return nullptr;
}

}  // namespace

U32 allocateLow(U64 size) {
    if (size >= kLimit) return 0;
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t mapped = (sizeof(Head) + static_cast<size_t>(size) + page - 1) / page * page;
    U8* start = nullptr;
#ifdef MAP_32BIT
    start = mapLow(nullptr, mapped, MAP_32BIT);
#endif
    if (start == nullptr) start = mapAnywhereLow(mapped, page);
    if (start == nullptr) return 0;
    reinterpret_cast<Head*>(start)->mapped = mapped;
    U8* const memory = start + sizeof(Head);
    ASAN_POISON_MEMORY_REGION(start, sizeof(Head));
    ASAN_POISON_MEMORY_REGION(memory + size, mapped - sizeof(Head) - static_cast<size_t>(size));
    return static_cast<U32>(reinterpret_cast<uintptr_t>(memory));
}

void releaseLow(U32 address) {
    if (address == 0) return;
    U8* const start = atLow(address) - sizeof(Head);
    ASAN_UNPOISON_MEMORY_REGION(start, sizeof(Head));
    const size_t mapped = reinterpret_cast<const Head*>(start)->mapped;
    ASAN_UNPOISON_MEMORY_REGION(start, mapped);
    munmap(start, mapped);
}

#endif

}  // namespace vxsubtitle
