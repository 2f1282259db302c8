/// Generated subtitles: the same film, with the same words at the same times, in each format.
#pragma once

#include <functional>
#include <string>

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
std::string subViewer20Film(size_t size);
std::string subViewer10Film(size_t size);
std::string microDvdFilm(size_t size);
std::string dvbFilm(size_t size);

}  // namespace bench
