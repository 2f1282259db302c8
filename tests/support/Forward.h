/// How a function defined by the test program reaches the one that it stands in front of.
#pragma once

#include <dlfcn.h>

/// Visible to the shared libraries that are to call it.
#define TEST_INTERPOSED extern "C" __attribute__((visibility("default")))

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define TEST_SANITIZED 1
#endif
#endif

/// Keeps a function that sanitizers call before they are ready from being instrumented.
#define TEST_UNINSTRUMENTED __attribute__((no_sanitize("address", "thread", "undefined")))

/// The next definition of `name` as a pointer like `Function`: a sanitizer's interceptor when there is one (its
/// weak name is `__interceptor_` + name), else the platform's.
#define TEST_NEXT(name) (__interceptor_##name != nullptr ? __interceptor_##name : test::next(#name, &name))

namespace test {

template <class Function>
Function* next(const char* name, Function*) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace test
