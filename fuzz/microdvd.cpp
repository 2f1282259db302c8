// The MicroDVD dialect of .sub files.
#include "subtitle/SubtitleParserSubMicroDVD.h"

#include "fuzz/Drivers.h"

const std::vector<fuzz::Driver> fuzz::drivers = fuzz::bothDrivers<android::SubtitleParserSubMicroDVD>();
