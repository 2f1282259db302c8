// Pictures of a stream: their packs, their commands, their rows.
#include "tools/vobsub/Picture.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/samples/VobSubMaker.h"

namespace vobsub {
namespace {

using namespace std::literals;

/// A unit with four bytes of pixels, whose one sequence holds these commands.
std::string unitWith(std::string_view commands) {
    const std::string pixels(4, 0x44);
    std::string unit = "\0\0\0\x08"s + pixels + "\0\0\0\x08"s + std::string(commands);
    unit[1] = static_cast<char>(unit.size());
    return unit;
}

Picture pictureWith(std::string_view commands) { return pictureAt(samples::packUnit(unitWith(commands)), 0); }

TEST(VobSubPicture, WhatWasDrawn) {
    samples::Subpicture drawn;
    drawn.bitmap = samples::Bitmap({"..12", "3333", "1..."});
    drawn.left = 10;
    drawn.top = 20;
    drawn.colours[3] = 9;
    const Picture picture = pictureAt(samples::packUnit(samples::encodeUnit(drawn)), 0);
    EXPECT_FALSE(picture.isBroken || picture.endsEarly);
    EXPECT_TRUE(picture.hasArea);
    EXPECT_EQ(10, picture.left);
    EXPECT_EQ(20, picture.top);
    EXPECT_EQ(4, picture.width());
    EXPECT_EQ(3, picture.height());
    EXPECT_EQ(9u, picture.colours[3].index);
    EXPECT_FALSE(picture.isVisible(0));
    EXPECT_TRUE(picture.isVisible(3));
    const std::vector<std::string> kRows[] = {{"..12", "1..."}, {"3333"}};
    for (size_t field = 0; field < 2; ++field) {
        Rows rows(picture, field);
        for (const std::string& expected : kRows[field]) {
            std::string row;
            for (const vobsub::Run& run : rows.take(4)) row.append(static_cast<size_t>(run.length), ".123"[run.code]);
            EXPECT_EQ(expected, row);
        }
    }
    EXPECT_TRUE(Rows(picture, 0).take(0).empty());
}

TEST(VobSubPicture, Packs) {
    samples::Subpicture drawn;
    drawn.bitmap = samples::drawText({"HELLO"}, 3);
    const std::string stream = samples::packUnit(samples::encodeUnit(drawn));
    const Unit unit = unitAt(stream, 0);
    EXPECT_EQ(samples::encodeUnit(drawn), unit.bytes);
    EXPECT_TRUE(unit.hasPack && unit.hasSize);
    EXPECT_FALSE(unit.hasOddPack || unit.hasStuffing || unit.leavesGrid);
    EXPECT_FALSE(unitAt(stream, 1).hasPack);
    EXPECT_FALSE(unitAt(stream, stream.size()).hasPack);
    EXPECT_FALSE(unitAt(stream, ~0ull).hasPack);
    EXPECT_FALSE(unitAt(samples::pack("\0\0"sv), 0).hasSize);
    std::string odd = stream;
    odd[4] = '\x21';
    EXPECT_TRUE(unitAt(odd, 0).hasOddPack);
    std::string stuffed = stream;
    stuffed[13] = static_cast<char>(stuffed[13] | 2);
    stuffed.insert(14, 2, '\xFF');
    EXPECT_TRUE(unitAt(stuffed, 0).hasStuffing);
    EXPECT_EQ(unit.bytes, unitAt(stuffed, 0).bytes);
    for (size_t size = 0; size < stream.size(); size += 7) {
        const std::string cut = stream.substr(0, size);
        EXPECT_EQ(0u, unit.bytes.find(unitAt(cut, 0).bytes)) << size;
    }
}

TEST(VobSubPicture, AFadeHasTheFirstContrastThatIsSeen) {
    const Picture picture = pictureWith("\x04\0\0\x04\xF0\0\x04\0\0\xFF"sv);
    EXPECT_EQ(15u, picture.colours[3].contrast);
    EXPECT_EQ(0u, picture.colours[0].contrast);
}

TEST(VobSubPicture, CommandsThatAreNotKnownEndIt) {
    EXPECT_FALSE(pictureWith("\1\xFF"sv).isBroken);
    EXPECT_FALSE(pictureWith("\x07\0\x04\x42\x42\1\xFF"sv).isBroken);
    for (const std::string_view commands : {"\x08\xFF"sv, "\1"sv, "\x07\xFF\xFF\xFF"sv}) {
        EXPECT_TRUE(pictureWith(commands).isBroken);
        EXPECT_TRUE(pictureWith(commands).endsEarly);
    }
    EXPECT_FALSE(pictureAt({}, 0).isBroken);
}

TEST(VobSubPicture, AFieldEndsWhereTheOtherBegins) {
    const Picture picture = pictureWith("\x06\0\x04\0\x06\xFF"sv);
    EXPECT_EQ(4u, picture.fields[0].begin);
    EXPECT_EQ(6u, picture.fields[0].end);
    EXPECT_EQ(6u, picture.fields[1].begin);
    EXPECT_EQ(8u, picture.fields[1].end);
    EXPECT_EQ(6u, pictureWith("\x06\0\x06\0\x04\xFF"sv).fields[1].end);
    EXPECT_TRUE(Rows(pictureWith("\x06\xFF\xFF\0\x04\xFF"sv), 0).atEnd());
}

}  // namespace
}  // namespace vobsub
