/// The platform log: every message of the library goes to it at debug priority.
#pragma once

#include <android/log.h>

#include "subtitle/SubtitleTypes.h"

/// Logs a printf-style message under `tag` (null: no tag).
#define VX_LOG(tag, ...) ((void)__android_log_print(ANDROID_LOG_DEBUG, tag, __VA_ARGS__))

namespace vxsubtitle {

// Messages were written for the device, whose `long` has 32 bits. These give "%ld", "%lu" and "%lx" what they read
// there, on every machine.

constexpr long asLong(android::U32 value) { return static_cast<long>(static_cast<android::S32>(value)); }
constexpr unsigned long asUnsignedLong(uintptr_t value) { return static_cast<unsigned long>(value); }

}  // namespace vxsubtitle
