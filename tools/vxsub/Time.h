/// Play times on the command line and in the output.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "subtitle/SubtitleTypes.h"

namespace vxsub {

/// How times may be written, for help and error texts.
constexpr char kTimeForms[] = "61500 (milliseconds), 61500ms, 61.5s, 1:01.5 or 00:01:01,500";

/// A play time in milliseconds. Bare numbers are milliseconds; "ms" and "s" name the unit; up to three fields with
/// colons are hours, minutes and seconds. The first field may be any number, those behind it stop at 59, and the
/// seconds may have a fraction behind a comma or a point, of which three digits count. Nothing when `text` is no
/// such time or does not fit into 32 bits (49.7 days).
std::optional<android::U32> parseTime(std::string_view text);

/// "00:01:01,500"; hours take more digits when they need them.
std::string formatTime(android::U32 ms);

/// Frames per second as `SetFrameRate` takes them: whole numbers up to 99 as they stand, others in thousandths.
/// Nothing for what is no rate from 1 to 999.
std::optional<android::U32> parseFrameRate(const std::string& text);

}  // namespace vxsub
