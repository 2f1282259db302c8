/// The platform log on standard error.
#pragma once

namespace vxsub {

/// Shows every line that the library logs from now on, as "D/SubtitleParserSRT: text". Without this call none
/// appears: they have debug priority, and a desktop's log begins at the next one.
void showPlatformLog();

}  // namespace vxsub
