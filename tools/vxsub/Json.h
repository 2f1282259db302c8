/// JSON as every command writes it: one object, UTF-8 whatever the file holds, times in milliseconds.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "SubtitleFile.h"

namespace vxsub {

using Json = nlohmann::ordered_json;

/// On one line; what is not UTF-8 comes out as U+FFFD.
std::string toText(const Json& value);

/// What every object begins with: file, format, encoding.
Json headOf(const SubtitleFile& file);

/// Of an entry: index, start, end; of a file with several tracks also track and language.
Json timesOf(SubtitleFile& file, android::U32 index);

}  // namespace vxsub
