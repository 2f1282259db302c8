// The platform log. Without a logger that was set, no line is put together.
#include <android/log.h>
#include <stdarg.h>
#include <stdio.h>

#include "web/Log.h"

// Newer headers alone declare it.
extern "C" int __android_log_is_loggable(int priority, const char* tag, int byDefault);

namespace {

constexpr char kProgram[] = "vxsub";  // stands where no tag is given
constexpr int kAtFirst = ANDROID_LOG_INFO;

int lowest = ANDROID_LOG_DEFAULT;
__android_logger_function logger = nullptr;

__android_logger_function firstLogger = nullptr;
size_t firstLeft = 0, counted = 0;

__android_logger_function loggerFor(int priority, const char* tag) {
    if (firstLogger == nullptr) return __android_log_is_loggable(priority, tag, ANDROID_LOG_VERBOSE) ? logger : nullptr;
    if (firstLeft == 0) {
        ++counted;
        return nullptr;
    }
    --firstLeft;
    return firstLogger;
}

}  // namespace

void web::takeFirst(size_t most, __android_logger_function taker) {
    firstLogger = taker;
    firstLeft = most;
    counted = 0;
}

size_t web::messagesCounted() { return counted; }

extern "C" {

void __android_log_set_logger(__android_logger_function function) { logger = function; }

int __android_log_set_minimum_priority(int priority) {
    const int before = lowest;
    lowest = priority;
    return before;
}

int __android_log_get_minimum_priority() { return lowest; }

int __android_log_is_loggable(int priority, const char*, int) {
    return firstLogger == nullptr && logger != nullptr &&
           priority >= (lowest == ANDROID_LOG_DEFAULT ? kAtFirst : lowest);
}

int __android_log_print(int priority, const char* tag, const char* format, ...) {
    const __android_logger_function taker = loggerFor(priority, tag);
    if (taker == nullptr) return 0;
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const __android_logger_data line = {
        sizeof line, LOG_ID_MAIN, priority, tag == nullptr ? kProgram : tag, nullptr, 0};
    taker(&line, text);
    return 1;
}
}
