/// The window that buffers are dequeued from and queued to.
#pragma once

#include <errno.h>
#include <nativebase/nativebase.h>
#include <stdint.h>
#include <string.h>
#include <system/graphics.h>

#define ANDROID_NATIVE_WINDOW_MAGIC ANDROID_NATIVE_MAKE_CONSTANT('_', 'w', 'n', 'd')

enum {
    NATIVE_WINDOW_API_CONNECT = 13,
    NATIVE_WINDOW_API_DISCONNECT = 14,
    NATIVE_WINDOW_SET_USAGE64 = 30,
};

/// Who fills a window's buffers.
enum {
    NATIVE_WINDOW_API_CPU = 2,
};

struct ANativeWindow {
    ANativeWindow() : flags(0), minSwapInterval(0), maxSwapInterval(0), xdpi(0), ydpi(0) {
        memset(&common, 0, sizeof common);
        memset(oem, 0, sizeof oem);
        common.magic = static_cast<int>(ANDROID_NATIVE_WINDOW_MAGIC);
        common.version = sizeof(ANativeWindow);
    }
    void incStrong(const void*) const { common.incRef(const_cast<android_native_base_t*>(&common)); }
    void decStrong(const void*) const { common.decRef(const_cast<android_native_base_t*>(&common)); }

    struct android_native_base_t common;
    const uint32_t flags;
    const int minSwapInterval;
    const int maxSwapInterval;
    const float xdpi;
    const float ydpi;
    intptr_t oem[4];

    // All results: 0, or a negative errno. A fence of -1 is none.
    int (*setSwapInterval)(struct ANativeWindow* window, int interval);
    int (*dequeueBuffer_DEPRECATED)(struct ANativeWindow* window, struct ANativeWindowBuffer** buffer);
    int (*lockBuffer_DEPRECATED)(struct ANativeWindow* window, struct ANativeWindowBuffer* buffer);
    int (*queueBuffer_DEPRECATED)(struct ANativeWindow* window, struct ANativeWindowBuffer* buffer);
    int (*query)(const struct ANativeWindow* window, int what, int* value);
    int (*perform)(struct ANativeWindow* window, int operation, ...);
    int (*cancelBuffer_DEPRECATED)(struct ANativeWindow* window, struct ANativeWindowBuffer* buffer);
    int (*dequeueBuffer)(struct ANativeWindow* window, struct ANativeWindowBuffer** buffer, int* fenceFd);
    int (*queueBuffer)(struct ANativeWindow* window, struct ANativeWindowBuffer* buffer, int fenceFd);
    int (*cancelBuffer)(struct ANativeWindow* window, struct ANativeWindowBuffer* buffer, int fenceFd);
};

typedef struct ANativeWindow ANativeWindow;

/// Sets the usage bits of buffers that are dequeued from now on.
static inline int native_window_set_usage(struct ANativeWindow* window, uint64_t usage) {
    return window->perform(window, NATIVE_WINDOW_SET_USAGE64, usage);
}

/// Takes the queue behind the window for `api`, or gives it free. BAD_VALUE when somebody has it, or somebody else.
static inline int native_window_api_connect(struct ANativeWindow* window, int api) {
    return window->perform(window, NATIVE_WINDOW_API_CONNECT, api);
}
static inline int native_window_api_disconnect(struct ANativeWindow* window, int api) {
    return window->perform(window, NATIVE_WINDOW_API_DISCONNECT, api);
}

/// Dequeues a buffer and waits for its fence.
static inline int native_window_dequeue_buffer_and_wait(ANativeWindow* window, struct ANativeWindowBuffer** buffer) {
    return window->dequeueBuffer_DEPRECATED(window, buffer);
}
