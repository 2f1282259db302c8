// SubRip files.
#include "subtitle/SubtitleParserSRT.h"

#include "fuzz/Drivers.h"

const std::vector<fuzz::Driver> fuzz::drivers = fuzz::bothDrivers<android::SubtitleParserSRT>();
