// The SubViewer 2.0 dialect of .sub files.
#include "subtitle/SubtitleParserSubViewer20.h"

#include "fuzz/Drivers.h"

const std::vector<fuzz::Driver> fuzz::drivers = fuzz::bothDrivers<android::SubtitleParserSubViewer20>();
