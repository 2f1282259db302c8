// The SubViewer 1.0 dialect of .sub files.
#include "subtitle/SubtitleParserSubViewer10.h"

#include "fuzz/Drivers.h"

const std::vector<fuzz::Driver> fuzz::drivers = fuzz::bothDrivers<android::SubtitleParserSubViewer10>();
