// A VobSub index, line by line, and what its pictures tell.
#include "tools/fix/Index.h"

#include <gtest/gtest.h>

#include "tests/fix/Fixing.h"
#include "tools/fix/Pictures.h"
#include "tools/samples/VobSubMaker.h"

namespace fix {
namespace {

const std::string kHead = "# VobSub index file, v7 (do not modify this line!)\r\n";
const std::string kWhole = "size: 720x576\npalette: 1,2,3,4,5,6,7,8,9,a,b,c,d,e,f,10\n";
const std::string kWholeKept =
    "size: 720x576\r\npalette: 000001, 000002, 000003, 000004, 000005, 000006, 000007, 000008, 000009, 00000a, 00000b, "
    "00000c, 00000d, 00000e, 00000f, 000010\r\n";

TEST(FixIndex, WritesEachLineAsItIsRead) {
    const struct {
        const char* line;
        const char* kept;
        const char* remarks;
    } kRows[] = {
        {"timestamp: 00:00:01:500, filepos: 000001800\n", "timestamp: 00:00:01:500, filepos: 000001800\r\n", ""},
        {"timestamp: 0:00:01:5, filepos:1800\n", "timestamp: 00:00:01:005, filepos: 000001800\r\n", ""},
        {"  Timestamp:00:00:01.5 filepos: 1800\n", "timestamp: 00:00:01:500, filepos: 000001800\r\n", ""},
        {"id: de, index: 0\n", "id: ge, index: 0\r\n", "vob-language 1"},
        {"id: ger, index: 0\n", "id: ge, index: 0\r\n", "vob-language 1"},
        {"id: en, index: 0\n", "id: en, index: 0\r\n", ""},
        {"id: und, index: 0\n", "id: und, index: 0\r\n", ""},
        {"id: th, index: 0\n", "id: th, index: 0\r\n", "! vob-language 1"},
        {"delay: 00:00:01:500\n", "delay: +00:00:01:500\r\n", "vob-delay-sign 1"},
        {"delay: -0:00:01:500\n", "delay: -00:00:01:500\r\n", "vob-delay-wrap 1"},
        {"delay: soon\n", "", "! - 1"},
        {"delay: +0:00:01:0\ndelay: soon\n", "delay: +00:00:01:000\r\ndelay: +00:00:00:000\r\n", "! - 1"},
        {"timestamp: -00:00:01:500, filepos: 0\n", "timestamp: 00:00:00:000, filepos: 000000000\r\n",
         "vob-delay-wrap 1"},
        {"org:\nalpha: 100%\n# note\n\n", "alpha: 100%\r\n# note\r\n\r\n", ""},
        {"timestamp: soon, filepos: 0\n", "", "! - 1"},
    };
    for (const auto& row : kRows) {
        const FixedIndex index = fixIndex(kWhole + row.line + "timestamp: 00:00:00:000, filepos: 000000000\n", {}, {});
        const bool isMoved = std::string(row.line) == "delay: -0:00:01:500\n";
        const std::string last = isMoved ? "00:00:01:500" : "00:00:00:000";
        EXPECT_EQ(kHead + kWholeKept + row.kept + "timestamp: " + last + ", filepos: 000000000\r\n", index.bytes);
        EXPECT_EQ(row.remarks, listed(index.remarks)) << row.line;
    }
}

TEST(FixIndex, TimesHaveTheDelay) {
    const FixedIndex index = fixIndex(kWhole +
                                          "timestamp: 00:00:01:000, filepos: 000000000\nid: en, index: 0\n"
                                          "delay: 00:00:01:500\ntimestamp: 00:00:02:000, filepos: 000001000\n",
                                      {}, {});
    ASSERT_EQ(2u, index.entries.size());
    EXPECT_EQ(1000, index.entries[0].start);
    EXPECT_EQ(3500, index.entries[1].start);
    EXPECT_EQ(0x1000u, index.entries[1].position);
    EXPECT_EQ(1u, index.entries[1].track);
}

TEST(FixIndex, AnyEncodingBecomesPlain) {
    const FixedIndex index =
        fixIndex("\xEF\xBB\xBF" + kWhole + "timestamp: 00:00:00:000, filepos: 000000000\r", {}, {});
    EXPECT_EQ(kHead + kWholeKept + "timestamp: 00:00:00:000, filepos: 000000000\r\n", index.bytes);
    EXPECT_EQ("vob-mark 1", listed(index.remarks));
}

TEST(FixIndex, RefusesOneWithoutPictures) {
    EXPECT_EQ("names no picture", fixIndex(kWhole, {}, {}).refusal);
    EXPECT_EQ("names no picture", fixIndex("", {}, {}).refusal);
}

std::string streamOf(unsigned left, unsigned top) {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({"HELLO"}, 3);
    picture.left = left;
    picture.top = top;
    picture.colours[1] = 7;
    picture.colours[2] = 2;
    return samples::packUnit(samples::encodeUnit(picture));
}

TEST(FixIndex, PicturesTellSizeAndPalette) {
    const std::string line = "timestamp: 00:00:00:000, filepos: 000000000\n";
    const FixedIndex index = fixIndex(line, streamOf(10, 500), {});
    EXPECT_EQ(kHead +
                  "size: 720x576\r\npalette: 000000, 000000, 000000, 000000, 000000, 000000, 000000, ffffff, 000000, "
                  "000000, 000000, 000000, 000000, 000000, 000000, 000000\r\ntimestamp: 00:00:00:000, filepos: "
                  "000000000\r\n",
              index.bytes);
    EXPECT_EQ("vob-no-size 1, vob-no-palette 1", listed(index.remarks));
    EXPECT_NE(std::string::npos, fixIndex(line, streamOf(1100, 600), {}).bytes.find("size: 1280x720\r\n"));
    EXPECT_NE(std::string::npos, fixIndex(line, streamOf(10, 10), {}).bytes.find("size: 720x480\r\n"));
}

TEST(FixIndex, APictureIsReadAsItWasDrawn) {
    const std::optional<vobsub::Picture> picture = pictureAt(streamOf(10, 20), 0);
    ASSERT_TRUE(picture.has_value());
    const samples::Bitmap bitmap = samples::drawText({"HELLO"}, 3);
    EXPECT_EQ(10, picture->left);
    EXPECT_EQ(20, picture->top);
    EXPECT_EQ(int(bitmap.width), picture->width());
    const Usage usage = usageOf(*picture);
    for (unsigned code = 0; code < 4; ++code)
        EXPECT_EQ(size_t(std::count(bitmap.codes.begin(), bitmap.codes.end(), code)), usage.pixels[code]) << code;
    EXPECT_EQ(0u, usage.atEdge[1]);
    EXPECT_FALSE(pictureAt(streamOf(10, 20), 5000).has_value());
}

TEST(FixIndex, APaletteThatIsTooShort) {
    const FixedIndex index =
        fixIndex("size: 720x576\npalette: ff, 1\ntimestamp: 00:00:00:000, filepos: 000000000\n", {}, {});
    EXPECT_NE(std::string::npos, index.bytes.find("palette: 0000ff, 000001, 808080, 808080"));
    EXPECT_EQ("vob-palette-short 1", listed(index.remarks));
}

}  // namespace
}  // namespace fix
