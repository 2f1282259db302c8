/// Generated subtitles: the same film, with the same words at the same times, in each format.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "subtitle/SubtitleTypes.h"

namespace bench {

using namespace android;

struct Entry {
    U32 number;  ///< from 1
    U32 startMs, endMs;
    std::string firstLine, secondLine;  ///< the second is empty for half of the entries
};

/// Calls `write(entry, text)` for one entry after the other until the text has `size` characters. Times ascend and
/// stay below 99 hours.
std::string makeFilm(size_t size, const std::function<void(const Entry&, std::string*)>& write);

std::string srtFilm(size_t size);
std::string ssaFilm(size_t size);
std::string smiFilm(size_t size);
std::string txtFilm(size_t size);

/// Every first line as an entry of a .sub dialect, in the pattern of its row in the list.
std::string dialectFilm(std::string_view pattern, size_t size);

}  // namespace bench
