// SAMI files.
#include "subtitle/SubtitleParserSMI.h"

#include "fuzz/Drivers.h"

const std::vector<fuzz::Driver> fuzz::drivers = fuzz::bothDrivers<android::SubtitleParserSMI>();
