/// The platform log. Every message of the library goes to it at debug priority.
#pragma once

#include <android/log.h>

/// Logs a printf-style message under `tag` (null: no tag). Messages were written for 32-bit `long`: cast each
/// argument to exactly what its conversion reads on the building machine.
#define VX_LOG(tag, ...) ((void)__android_log_print(ANDROID_LOG_DEBUG, tag, __VA_ARGS__))
