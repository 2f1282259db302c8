/// Why the library shows nothing of a VobSub picture.
#pragma once

#include <string>

#include "SubtitleFile.h"

namespace vxsub {

struct PictureFault {
    const char* name;   ///< that of the oddity, as in docs/formats.md
    std::string words;  ///< for people
};

/// Of a picture that is refused, or is empty, in a VobSub file.
PictureFault faultOf(SubtitleFile& file, android::U32 index);

}  // namespace vxsub
