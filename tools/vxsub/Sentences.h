/// What more than one command has to say of a file.
#pragma once

#include <string>

#include "SubtitleFile.h"

namespace vxsub {

/// What the texts were taken for, where the file does not say it.
std::string describeReading(const Decoder& decoder);

/// Whether it is not the rate that the player named.
bool isRounded(const FrameRate& rate, const OpenOptions& options);

/// "25 frames a second, from --fps"
std::string describeRate(const FrameRate& rate, const OpenOptions& options);

/// Why nothing is shown: how the time lies to the entry that the library names, and what comes next.
std::string describeGap(SubtitleFile& file, android::U32 ms);

}  // namespace vxsub
