// malloc, calloc, realloc and operator new in front of the C library's, for programs that want allocations to fail.
//
// Where a program cannot have its own allocator the build leaves TEST_OWN_ALLOCATOR out: nothing is defined then,
// and `supported` says so. Under valgrind, which puts its own in front of these, the trial in it finds out.
#include <errno.h>
#include <stdint.h>
#include <stdlib.h>

#include <atomic>
#include <new>

#include "tests/support/Forward.h"
#include "tests/support/Interpose.h"
#include "tests/support/OwnMemory.h"

namespace {

std::atomic<size_t> refusedFrom{SIZE_MAX};  // bytes; the largest value refuses nothing
std::atomic<size_t> refusedUpTo{SIZE_MAX};

std::atomic<size_t> firstRefused{0};  // number of an allocation; 0 counts none
std::atomic<bool> laterOnesToo{false};
std::atomic<size_t> counted{0};

#ifdef TEST_OWN_ALLOCATOR
bool refusesSize(size_t bytes) {
    const size_t from = refusedFrom.load(std::memory_order_relaxed);
    return from != SIZE_MAX && testOwnMemory == 0 && bytes >= from &&
           bytes <= refusedUpTo.load(std::memory_order_relaxed);
}

bool refusesNumber() {
    const size_t first = firstRefused.load(std::memory_order_relaxed);
    if (first == 0 || testOwnMemory != 0) return false;
    const size_t number = ++counted;
    return number == first || (number > first && laterOnesToo);
}

bool refuses(size_t bytes) {
    if (!refusesSize(bytes) && !refusesNumber()) return false;
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

// A sanitizer's operators would not come by.
void* operator new(size_t size, const std::nothrow_t&) noexcept { return malloc(size != 0 ? size : 1); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return malloc(size != 0 ? size : 1); }
void* operator new(size_t size) {
    void* const block = malloc(size != 0 ? size : 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void* operator new[](size_t size) { return operator new(size); }
void operator delete(void* block) noexcept { free(block); }
void operator delete[](void* block) noexcept { free(block); }
void operator delete(void* block, size_t) noexcept { free(block); }
void operator delete[](void* block, size_t) noexcept { free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { free(block); }
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

NthAllocationFails::NthAllocationFails(size_t number, Extent extent) {
    counted = 0;
    laterOnesToo = extent == Extent::kAndAllLater;
    firstRefused = number;
}
NthAllocationFails::~NthAllocationFails() { firstRefused = 0; }

bool NthAllocationFails::wasReached() const { return counted >= firstRefused; }

}  // namespace test
