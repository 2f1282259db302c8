/// The C structures that windows and their buffers have in common.
#pragma once

#include <cutils/native_handle.h>
#include <stdint.h>
#include <string.h>

#define ANDROID_NATIVE_MAKE_CONSTANT(a, b, c, d) \
    (((unsigned)(a) << 24) | ((unsigned)(b) << 16) | ((unsigned)(c) << 8) | (unsigned)(d))

#define ANDROID_NATIVE_BUFFER_MAGIC ANDROID_NATIVE_MAKE_CONSTANT('_', 'b', 'f', 'r')

typedef struct android_native_base_t {
    int magic;
    int version;
    void* reserved[4];
    void (*incRef)(struct android_native_base_t* base);
    void (*decRef)(struct android_native_base_t* base);
} android_native_base_t;

typedef struct ANativeWindowBuffer {
    ANativeWindowBuffer() {
        memset(static_cast<void*>(this), 0, sizeof *this);
        common.magic = static_cast<int>(ANDROID_NATIVE_BUFFER_MAGIC);
        common.version = sizeof(ANativeWindowBuffer);
    }
    void incStrong(const void*) const { common.incRef(const_cast<android_native_base_t*>(&common)); }
    void decStrong(const void*) const { common.decRef(const_cast<android_native_base_t*>(&common)); }

    struct android_native_base_t common;
    int width;
    int height;
    int stride;  ///< pixels from one row to the next
    int format;
    int usage_deprecated;
    uintptr_t layerCount;
    void* reserved[1];
    const native_handle_t* handle;
    uint64_t usage;
    void* reserved_proc[8 - (sizeof(uint64_t) / sizeof(void*))];
} ANativeWindowBuffer_t;

typedef struct ANativeWindowBuffer ANativeWindowBuffer;
typedef ANativeWindowBuffer_t android_native_buffer_t;
