// What the lines of a VobSub index mean to the comparison.
#include <gtest/gtest.h>

#include <string>

#include "tools/check/VobSub.h"

namespace check {
namespace {

std::string startsIn(const std::string& lines) {
    std::string starts;
    for (const IndexLine& picture : readIndex(lines).pictures)
        starts += std::to_string(picture.track) + ":" + std::to_string(picture.start) + " ";
    return starts;
}

TEST(CheckVobSubIndex, TimesHaveTheLastDelayWhateverTheTrack) {
    const std::string picture = "timestamp: 00:00:02:000, filepos: 000000000\n";
    EXPECT_EQ("1:2000 ", startsIn("id: en, index: 0\n" + picture));
    EXPECT_EQ("1:3500 2:3500 ", startsIn("id: en, index: 0\ndelay: +00:00:01:500\n" + picture + "id: fr\n" + picture));
    EXPECT_EQ("0:1000 0:2000 ", startsIn("delay: -00:00:01:0\n" + picture + "delay: soon\n" + picture));
}

TEST(CheckVobSubIndex, MillisecondsBehindAColonAFractionBehindAPoint) {
    EXPECT_EQ("0:1005 0:1500 ", startsIn("timestamp: 0:00:01:5, filepos: 0\ntimestamp: 0:00:01.5, filepos: 0\n"));
}

}  // namespace
}  // namespace check
