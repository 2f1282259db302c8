/// General libraries that read the same formats, where Debian's packages of them are installed: libavformat with
/// libavcodec, and libass. Each operation is what a player that is built on them does for the same purpose.
#pragma once

#include <functional>
#include <string>

#include "subtitle/SubtitleTypes.h"

namespace bench {

using namespace android;

/// Their names and versions.
std::string generalLibraries();

bool avInstalled();
bool assInstalled();

/// From a file in memory to all packets, one for each entry; answers how many. None where the format of that name in
/// `formats` is not read.
using AvScan = std::function<size_t(const std::string& data)>;
AvScan avScan(const char* format);

/// The same of a file on disk.
using AvOpen = std::function<size_t(const char* path)>;
AvOpen avOpen(const char* format);

/// Decodes the text of every entry of the film; answers how many came out.
using AvTexts = std::function<size_t()>;
AvTexts avTexts(const char* format, const std::string& film);

/// Decodes a subpicture unit into a bitmap; answers its width.
using AvPicture = std::function<int()>;
AvPicture avPicture(const std::string& unit);

/// Reads the next picture of a VobSub film on disk and decodes it, the first one behind the last; answers its width.
AvPicture avPictures(const char* idx);

/// From SSA in memory to all events; answers how many.
using AssScan = std::function<size_t(std::string& data)>;
AssScan assScan();

}  // namespace bench
