// malloc, calloc and realloc in front of the C library's, for programs that want allocations to fail.
//
// Where a program cannot have its own allocator the build leaves TEST_OWN_ALLOCATOR out: nothing is defined then,
// and `supported` says so. Under valgrind, which puts its own in front of these, the trial in it finds out.
#include <errno.h>
#include <stdint.h>
#include <stdlib.h>

#include <atomic>

#include "tests/support/Forward.h"
#include "tests/support/Interpose.h"

namespace {

std::atomic<size_t> refusedFrom{SIZE_MAX};  // bytes; the largest value refuses nothing
std::atomic<size_t> refusedUpTo{SIZE_MAX};

#ifdef TEST_OWN_ALLOCATOR
bool refuses(size_t bytes) {
    const size_t from = refusedFrom.load(std::memory_order_relaxed);
    if (from == SIZE_MAX || bytes < from || bytes > refusedUpTo.load(std::memory_order_relaxed)) return false;
    errno = ENOMEM;
    return true;
}
#endif

}  // namespace

#ifdef TEST_OWN_ALLOCATOR
extern "C" {
// The address sanitizer's, when there is one, else the C library's by its second name: looking a name up allocates.
__attribute__((weak)) void* __interceptor_malloc(size_t) noexcept;
__attribute__((weak)) void* __interceptor_calloc(size_t, size_t) noexcept;
__attribute__((weak)) void* __interceptor_realloc(void*, size_t) noexcept;
void* __libc_malloc(size_t) noexcept;
void* __libc_calloc(size_t, size_t) noexcept;
void* __libc_realloc(void*, size_t) noexcept;
}

#define TEST_NEXT_ALLOCATION(name) (__interceptor_##name != nullptr ? __interceptor_##name : __libc_##name)

TEST_INTERPOSED void* malloc(size_t size) noexcept {
    return refuses(size) ? nullptr : TEST_NEXT_ALLOCATION(malloc)(size);
}

TEST_INTERPOSED void* calloc(size_t count, size_t size) noexcept {
    size_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes)) bytes = SIZE_MAX;
    return refuses(bytes) ? nullptr : TEST_NEXT_ALLOCATION(calloc)(count, size);
}

TEST_INTERPOSED void* realloc(void* block, size_t size) noexcept {
    return refuses(size) ? nullptr : TEST_NEXT_ALLOCATION(realloc)(block, size);
}
#endif

namespace test {

bool AllocationFails::supported() {
    void* (*volatile const allocate)(size_t) = malloc;  // volatile: the compiler must not foresee the result
    const AllocationFails trial(4096);
    void* const block = allocate(4096);
    free(block);
    return block == nullptr;
}

AllocationFails::AllocationFails(size_t atLeastBytes, size_t atMostBytes) {
    refusedUpTo = atMostBytes;
    refusedFrom = atLeastBytes;
}
AllocationFails::~AllocationFails() { refusedFrom = SIZE_MAX; }

}  // namespace test
