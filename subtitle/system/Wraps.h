/// Marks functions whose unsigned arithmetic wraps on purpose: anywhere else in the library the tests built by clang
/// take a wrap for an error.
#pragma once

#if defined(__clang__)
#define VX_WRAPS __attribute__((no_sanitize("unsigned-integer-overflow", "unsigned-shift-base")))
#else
#define VX_WRAPS
#endif
