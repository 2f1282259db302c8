/// The platform log: its lines, on standard error or wherever else.
#pragma once

#include <android/log.h>

#include <string>

namespace vxsub {

/// A message as a line without an end: "D/SubtitleParserSRT: text".
std::string logLine(const __android_logger_data& data, const char* message);

/// Shows every line that the library logs from now on, as "D/SubtitleParserSRT: text". Without this call none
/// appears: they have debug priority, and a desktop's log begins at the next one.
void showPlatformLog();

/// As long as it lives, nothing is shown: what the library does then is none of the user's doing.
class HiddenLog {
public:
    HiddenLog();
    ~HiddenLog();
    HiddenLog(const HiddenLog&) = delete;
    HiddenLog& operator=(const HiddenLog&) = delete;

private:
    int mPriority;
};

}  // namespace vxsub
