// The sanitizers' settings for every program of ours that is run by hand, by ctest or by a fuzzer. An allocation
// that is too large gives null, as it does on the device; *SAN_OPTIONS in the environment come on top.

#define SANITIZER_OPTIONS(function, options)                                        \
    extern "C" __attribute__((visibility("default"), used)) const char* function(); \
    const char* function() { return options; }

SANITIZER_OPTIONS(__asan_default_options, "allocator_may_return_null=1:detect_stack_use_after_return=1")
SANITIZER_OPTIONS(__tsan_default_options, "allocator_may_return_null=1:second_deadlock_stack=1")
SANITIZER_OPTIONS(__ubsan_default_options, "print_stacktrace=1")
