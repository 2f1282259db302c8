// Where entries stand in the file: bytes and lines, in every encoding and with every line end.
#include "tests/meant/Listing.h"
#include "tools/meant/SystemEncodings.h"

namespace meant {
namespace {

using namespace std::string_literals;

/// `line@offset-behind` of each entry.
std::string placesOf(const File& file) {
    std::string list;
    for (const Entry& entry : file.entries)
        list += (list.empty() ? "" : "; ") + std::to_string(entry.place.line) + "@" +
                std::to_string(entry.place.offset) + "-" + std::to_string(entry.behind);
    return list;
}

std::string utf16(const std::string& text) {
    std::string bytes = "\xFF\xFE";
    for (const char c : text) bytes += {c, '\0'};
    return bytes;
}

TEST(MeantPlaces, OfSubRip) {
    const std::string lf = "1\n00:00:01,000 --> 00:00:02,000\na\n\n2\n00:00:03,000 --> 00:00:04,000\nb";
    const std::string crLf = "1\r\n00:00:01,000 --> 00:00:02,000\r\na\r\n\r\n2\r\n00:00:03,000 --> 00:00:04,000\r\nb";
    EXPECT_EQ("2@2-35; 6@37-68", placesOf(readAs("srt", lf)));
    EXPECT_EQ("2@3-39; 6@42-74", placesOf(readAs("srt", crLf)));
    EXPECT_EQ("2@5-38; 6@40-71", placesOf(readAs("srt", "\xEF\xBB\xBF" + lf)));
    EXPECT_EQ("2@6-72; 6@76-138", placesOf(readAs("srt", utf16(lf))));
}

TEST(MeantPlaces, BehindLettersOfOtherWidths) {
    const std::string gbk =
        "1\n00:00:01,000 --> 00:00:02,000\n\xCE\xD2\xB2\xBB\xD6\xAA\xB5\xC0\n\n2\n"
        "00:00:03,000 --> 00:00:04,000\nb\n";
    Options options;
    options.encoding = "gbk";
    EXPECT_EQ("2@2-42; 6@44-76", placesOf(read(gbk, options, systemEncodings())));
}

TEST(MeantPlaces, WithinALine) {
    const std::string sami = "<SYNC Start=1><P>\xCE\xD2<SYNC Start=2><P>b</BODY>";
    Options options;
    options.encoding = "gbk";
    EXPECT_EQ("1@0-19; 1@19-37", placesOf(read(sami, options, systemEncodings())));
    EXPECT_EQ("1@0-20; 1@20-38", placesOf(readAs("smi", "<SYNC Start=1><P>\xE4\xB8\xAD<SYNC Start=2><P>b</BODY>")));
    EXPECT_EQ("1@2-40; 1@40-76", placesOf(readAs("smi", utf16("<SYNC Start=1><P>ab<SYNC Start=2><P>b</BODY>"))));
}

TEST(MeantPlaces, LineEndsAreCounted) {
    const File file = readAs("txt", "0:00:01:a\n0:00:02:b\r\n0:00:03:c\r0:00:04:d\r\r\n0:00:05:e");
    EXPECT_EQ("1@0-10; 2@10-21; 3@21-31; 4@31-43; 5@43-52", placesOf(file));
    EXPECT_EQ(1u, file.lineEnds.lf);
    EXPECT_EQ(2u, file.lineEnds.crLf);
    EXPECT_EQ(1u, file.lineEnds.cr);
}

}  // namespace
}  // namespace meant
