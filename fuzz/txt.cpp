// Text files with a time in front of each line.
#include "subtitle/SubtitleParserTXT.h"

#include "fuzz/Drivers.h"

const std::vector<fuzz::Driver> fuzz::drivers = fuzz::bothDrivers<android::SubtitleParserTXT>();
