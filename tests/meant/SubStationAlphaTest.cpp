// SubStation Alpha as meant: fields by the Format line, times of any width, codes as what they do.
#include "tests/meant/Listing.h"

namespace meant {
namespace {

std::string event(const std::string& fields) { return "[Events]\nDialogue: " + fields + "\n"; }

TEST(MeantSubStationAlpha, FieldsByTheFormatLine) {
    expectReadings(
        "ass", Format::SubStationAlpha,
        {
            {"the usual ones, untold", event("0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hi, there"),
             "1500-3000 Hi, there"},
            {"of SSA", event("Marked=0,0:00:01.50,0:00:03.00,*Default,NTP,0000,0000,0000,!Effect,Hi"), "1500-3000 Hi"},
            {"fewer", "[Events]\nFormat: Start, End, Text\nDialogue: 0:00:01.50,0:00:03.00,Hi, there\n",
             "1500-3000 Hi, there"},
            {"in another order",
             "[Events]\nformat: Layer,End , Start,Text\nDialogue: 0,0:00:03.00,0:00:01.50,Hi, there\n",
             "1500-3000 Hi, there"},
            {"styles have a Format line, too",
             "[V4+ Styles]\nFormat: Name, Bold\nStyle: Default,0\n" +
                 event("0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hi"),
             "1500-3000 Hi"},
            {"fewer, untold",
             "Dialogue: 0,0:00:01.50,0:00:03.00,D,Joe,Hi, there\nDialogue: 0,0:00:05.00,0:00:06.00,D,Joe,x\n",
             "1500-3000 Hi, there; 5000-6000 x"},
            {"three, untold", "Dialogue: 0:00:01.50,0:00:03.00,Hi\n", "1500-3000 Hi"},
            {"the usual ones, untold, and one that is cut",
             event("0,0:00:01.50,0:00:03.00,D,,0,0,0,,Hi, there") + "Dialogue: 0,0:00:05.00,0:00:06.00,D",
             "1500-3000 Hi, there; 5000-6000 D"},
            {"a Format line that does not fit",
             "[Events]\nFormat: Text\nDialogue: 0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hi\n", "1500-3000 Hi"},
        });
}

TEST(MeantSubStationAlpha, LinesAndTimes) {
    expectReadings(
        "ssa", Format::SubStationAlpha,
        {
            {"blanks in front", "[Events]\n  Dialogue: 0,0:00:01.50,0:00:03.00,D,,0,0,0,,Hi\n", "1500-3000 Hi"},
            {"small letters", "[events]\ndialogue: 0,0:00:01.50,0:00:03.00,D,,0,0,0,,Hi\n", "1500-3000 Hi"},
            {"three digits", event("0,0:00:01.500,0:00:03.250,D,,0,0,0,,Hi"), "1500-3250 Hi"},
            {"one digit", event("0,0:00:01.5,0:00:03.2,D,,0,0,0,,Hi"), "1500-3200 Hi"},
            {"no digit", event("0,0:00:01,0:00:03,D,,0,0,0,,Hi"), "1000-3000 Hi"},
            {"a colon", event("0,0:00:01:50,0:00:03:25,D,,0,0,0,,Hi"), "1500-3250 Hi"},
            {"two-digit hours", event("0,01:00:01.50,12:00:03.25,D,,0,0,0,,Hi"), "3601500-43203250 Hi"},
            {"out of order",
             event("0,0:00:05.00,0:00:06.00,D,,0,0,0,,b") + event("0,0:00:01.00,0:00:02.00,D,,0,0,0,,a"),
             "5000-6000 b; 1000-2000 a"},
            {"a comment",
             event("0,0:00:01.50,0:00:03.00,D,,0,0,0,,Hi") + "Comment: 0,0:00:05.00,0:00:06.00,D,,0,0,0,,no\n",
             "1500-3000 Hi; #5000-6000 no"},
        });
    const File file =
        readAs("ass", event("0,soon,0:00:03.00,D,,0,0,0,,Hi") + event("0,0:00:05.00,0:00:06.00,D,,0,0,0,,b"));
    EXPECT_EQ("5000-6000 b", listed(file));
    ASSERT_EQ(1u, file.strayLines.size());
    EXPECT_EQ(2u, file.strayLines[0].line);
}

TEST(MeantSubStationAlpha, Texts) {
    const auto text = [](const std::string& written) { return event("0,0:00:01.50,0:00:03.00,D,,0,0,0,," + written); };
    expectReadings("ass", Format::SubStationAlpha,
                   {
                       {"codes", text("{\\i1}Hi{\\i0} {anything}there"), "1500-3000 Hi there"},
                       {"breaks and blanks", text("a\\Nb\\nc\\hd"), "1500-3000 a/b/c d"},
                       {"an open brace", text("a {b"), "1500-3000 a {b"},
                       {"a tag of another format", text("<i>a</i> <b"), "1500-3000 a <b"},
                       {"no entities", text("a &amp; b|c"), "1500-3000 a &amp; b|c"},
                       {"a drawing", text("{\\p1}m 0 0 l 1 1{\\p0}"), "~1500-3000"},
                       {"a drawing with text", text("{\\pos(1,2)\\p4}m 0 0{\\p0}Hi"), "1500-3000 Hi"},
                       {"\\pos is none", text("{\\pos(1,2)}Hi"), "1500-3000 Hi"},
                   });
}

TEST(MeantSubStationAlpha, AScriptWithoutEventsIsOne) {
    const File file = readAs("ass", "[Script Info]\nTitle: x\n");
    EXPECT_EQ(Format::SubStationAlpha, file.format);
    EXPECT_TRUE(file.entries.empty());
}

}  // namespace
}  // namespace meant
