/// How far the bytes of an entry reach in the file.
#pragma once

#include <string_view>
#include <vector>

#include "tools/vxsub/SubtitleFile.h"

namespace page {

/// How far it is from each of the offsets to the next larger one, or to `size`.
std::vector<android::U32> gapsBehind(const std::vector<android::U32>& offsets, size_t size);

/// For entries that begin at `offsets` in a text file of `type`: up to what ends them in the format, or to the next.
std::vector<android::U32> extentsOf(std::string_view bytes, const std::vector<android::U32>& offsets,
                                    android::EN_MEDIA_SUBTITLE_PARSER_TYPE type, bool isWide);

}  // namespace page
