/// The statistical check that turns unmarked data into Big5 or GBK.
#pragma once

#include "subtitle/SubtitleParser.h"

namespace vxsubtitle {

using namespace android;

/// How a format's check speaks. Null words are not logged.
struct CheckStyle {
    const char* tag;      ///< log tag: the class name
    const char* start;    ///< before the first entry
    const char* entry;    ///< after each: its index (%ld) and what it could be (%ld)
    const char* decided;  ///< the new code type (%u)
};

/// Looks at the texts of the parser's first 100 entries and turns the code type NATIVE into BIG5 or GBK when one is
/// decisive. Other code types stay, and nothing is logged.
void checkEntries(SubtitleParser& parser, const CheckStyle& style);

}  // namespace vxsubtitle
