#include "tools/vxsub/Picture.h"

#include <gtest/gtest.h>
#include <png.h>

#include <string>

#include "tests/support/Interpose.h"

namespace {

using android::U8;

using vxsub::Background;
using vxsub::Colour;
using vxsub::Image;

bool same(Colour a, Colour b) { return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha; }

TEST(Background, IsNamedByAWordOrAColour) {
    const struct {
        const char* text;
        Colour colour;
    } kRows[] = {{"FF8000", {255, 128, 0, 255}}, {"#0a0B0c", {10, 11, 12, 255}}, {"none", {0, 0, 0, 0}}};
    for (const auto& row : kRows) {
        const auto background = Background::parse(row.text);
        ASSERT_TRUE(background) << row.text;
        EXPECT_TRUE(same(background->at(3, 50), row.colour)) << row.text;
    }
    for (const char* text : {"", "#", "12345", "1234567", "##12345", "GG0000", "None", " none", "0x1234"})
        EXPECT_FALSE(Background::parse(text)) << text;
    const Background board = *Background::parse("checkerboard");
    EXPECT_TRUE(same(board.at(15, 15), board.at(0, 0)));
    EXPECT_FALSE(same(board.at(16, 0), board.at(0, 0)));
    EXPECT_FALSE(same(board.at(0, 16), board.at(0, 0)));
}

TEST(Image, BlendsByAlpha) {
    Image below({1, 1}), above({1, 1});
    const struct {
        Colour above, below, both;
    } kRows[] = {
        {{10, 20, 30, 255}, {200, 200, 200, 255}, {10, 20, 30, 255}},
        {{10, 20, 30, 0}, {200, 201, 202, 255}, {200, 201, 202, 255}},
        {{255, 255, 255, 136}, {0, 0, 0, 255}, {136, 136, 136, 255}},
        {{255, 255, 255, 136}, {0, 0, 0, 0}, {255, 255, 255, 136}},
        {{9, 9, 9, 0}, {9, 9, 9, 0}, {0, 0, 0, 0}},
    };
    for (const auto& row : kRows) {
        above.at(0, 0) = row.above;
        below.at(0, 0) = row.below;
        below.lay(above, 0, 0);
        EXPECT_TRUE(same(below.at(0, 0), row.both)) << int(row.above.red) << ' ' << int(row.above.alpha);
    }
}

TEST(Image, LaysWhatFitsAndDropsTheRest) {
    Image dot({2, 2});
    for (int i = 0; i < 4; ++i) dot.at(i % 2, i / 2) = {1, 2, 3, 255};
    for (const auto& [left, top, pixels] :
         {std::tuple(0, 0, 4), {-1, 0, 2}, {2, 2, 1}, {3, 0, 0}, {0, -2, 0}, {-1, -1, 1}}) {
        Image image({3, 3});
        image.lay(dot, left, top);
        int seen = 0;
        for (int i = 0; i < 9; ++i) seen += image.at(i % 3, i / 3).alpha == 255;
        EXPECT_EQ(seen, pixels) << left << ' ' << top;
    }
}

TEST(Image, VisiblePartIsTheSmallestThatHoldsAll) {
    Image image({5, 4});
    EXPECT_TRUE(image.visibleBox().isEmpty());
    image.at(1, 2).alpha = 1;
    image.at(3, 3).alpha = 255;
    const vxsub::Box box = image.visibleBox();
    EXPECT_EQ(box.left, 1);
    EXPECT_EQ(box.top, 2);
    const Image part = image.part(box);
    EXPECT_EQ(part.size().width, 3);
    EXPECT_EQ(part.size().height, 2);
    EXPECT_EQ(part.at(0, 0).alpha, 1);
    EXPECT_EQ(part.at(2, 1).alpha, 255);
}

TEST(Image, IsReducedByAveraging) {
    Image image({8, 4});
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) image.at(x, y) = x % 2 == 0 ? Colour{100, 200, 40, 255} : Colour{9, 9, 9, 0};
    EXPECT_EQ(image.reduced(1).size().width, 8);
    const Image half = image.reduced(0.5);
    ASSERT_EQ(half.size().width, 4);
    ASSERT_EQ(half.size().height, 2);
    EXPECT_TRUE(same(half.at(3, 1), {100, 200, 40, 127})) << "what is not seen has no colour";
    const Image sliver = Image({1000, 2}).reduced(0.01);
    EXPECT_EQ(sliver.size().width, 10);
    EXPECT_EQ(sliver.size().height, 1);
    EXPECT_EQ(Image({0, 0}).reduced(0.5).size().width, 0);
}

/// What a PNG file shows.
Image readPng(const std::string& path) {
    png_image png = {};
    png.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&png, path.c_str()) == 0) return Image({0, 0});
    png.format = PNG_FORMAT_RGBA;
    Image image({int(png.width), int(png.height)});
    return png_image_finish_read(&png, nullptr, &image.at(0, 0), 0, nullptr) != 0 ? image : Image({0, 0});
}

TEST(Image, ReachesAPngFileWithAnyNumberOfColours) {
    const test::TempFile file("", ".png");
    for (const int colours : {1, 2, 3, 5, 17, 255, 256, 257, 1000}) {
        Image image({50, 41});
        for (int i = 0; i < 50 * 41; ++i) {
            const int number = i % colours;
            image.at(i % 50, i / 50) = {U8(number * 7), U8(number >> 3), U8(number & 7), U8(255 - number % 3)};
        }
        image.writePng(file.path(), *Background::parse("none"));
        const Image read = readPng(file.path());
        ASSERT_EQ(read.size().width, 50) << colours;
        ASSERT_EQ(read.size().height, 41) << colours;
        for (int i = 0; i < 50 * 41; ++i)
            ASSERT_TRUE(same(read.at(i % 50, i / 50), image.at(i % 50, i / 50))) << colours << " at " << i;
    }
}

TEST(Image, IsWrittenInFrontOfItsBackground) {
    const test::TempFile file("", ".png");
    Image image({40, 33});
    image.at(3, 30) = {255, 255, 255, 255};
    for (int x = 10; x < 37; ++x) image.at(x, 20) = {200, 100, 0, 128};
    for (const char* word : {"checkerboard", "none", "204060"}) {
        const Background background = *Background::parse(word);
        image.writePng(file.path(), background);
        const Image read = readPng(file.path());
        ASSERT_EQ(read.size().width, 40) << word;
        for (int y = 0; y < 33; ++y)
            for (int x = 0; x < 40; ++x) {
                Image both({1, 1}), above({1, 1});
                both.at(0, 0) = background.at(x, y);
                above.at(0, 0) = image.at(x, y);
                both.lay(above, 0, 0);
                ASSERT_TRUE(same(read.at(x, y), both.at(0, 0))) << word << ' ' << x << ' ' << y;
            }
    }
}

}  // namespace
