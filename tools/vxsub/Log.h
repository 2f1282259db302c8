/// The platform log on standard error.
#pragma once

namespace vxsub {

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
