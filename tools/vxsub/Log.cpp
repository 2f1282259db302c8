#include "Log.h"

#include <unistd.h>

#include <string_view>

#include "Text.h"

namespace vxsub {
namespace {

char letterOf(int priority) {
    constexpr std::string_view kLetters = "??VDIWEFS";
    return priority >= 0 && size_t(priority) < kLetters.size() ? kLetters[size_t(priority)] : '?';
}

/// Called on the thread that logs; one call writes one line.
void writeLine(const __android_logger_data* data, const char* message) {
    const std::string line = logLine(*data, message) + "\n";
    if (write(STDERR_FILENO, line.data(), line.size()) < 0) return;  // nobody listens
}

}  // namespace

std::string logLine(const __android_logger_data& data, const char* message) {
    std::string_view text = message;
    if (!text.empty() && text.back() == '\n') text.remove_suffix(1);
    std::string line(1, letterOf(data.priority));
    line += '/';
    line += data.tag == nullptr ? "" : data.tag;
    return line + ": " + printable(text);
}

void showPlatformLog() {
    __android_log_set_logger(writeLine);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

HiddenLog::HiddenLog() : mPriority(__android_log_get_minimum_priority()) {
    __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
}

HiddenLog::~HiddenLog() { __android_log_set_minimum_priority(mPriority); }

}  // namespace vxsub
