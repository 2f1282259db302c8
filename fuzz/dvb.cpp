// The DVB subtitle system dialect of .sub files.
#include "subtitle/SubtitleParserSubDvbSubtitleSystem.h"

#include "fuzz/Drivers.h"

const std::vector<fuzz::Driver> fuzz::drivers = fuzz::bothDrivers<android::SubtitleParserSubDvbSubtitleSystem>();
