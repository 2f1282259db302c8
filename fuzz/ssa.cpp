// SubStation Alpha scripts.
#include "subtitle/SubtitleParserSSA.h"

#include "fuzz/Drivers.h"

const std::vector<fuzz::Driver> fuzz::drivers = fuzz::bothDrivers<android::SubtitleParserSSA>();
