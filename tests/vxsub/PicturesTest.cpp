// vxsub on VobSub pairs: what it says of them, and the images that it writes.
#include <dirent.h>
#include <gtest/gtest.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/support/Interpose.h"
#include "tests/support/VobSubPair.h"
#include "tests/vxsub/Program.h"
#include "tools/samples/VobSubMaker.h"

namespace {

using namespace std::string_literals;
using nlohmann::json;
using test::Outcome;
using test::runVxsub;
using test::TempFile;
using test::VobSubPair;

struct Png {
    unsigned width = 0, height = 0;
    std::vector<unsigned char> bytes;

    explicit Png(const std::string& path) {
        png_image image = {};
        image.version = PNG_IMAGE_VERSION;
        if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return;
        image.format = PNG_FORMAT_RGBA;
        bytes.resize(PNG_IMAGE_SIZE(image));
        if (png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr) == 0) return;
        width = image.width;
        height = image.height;
    }

    /// 0xRRGGBBAA
    unsigned at(unsigned x, unsigned y) const {
        const unsigned char* p = &bytes[(size_t{y} * width + x) * 4];
        return unsigned{p[0]} << 24 | unsigned{p[1]} << 16 | unsigned{p[2]} << 8 | p[3];
    }
    size_t count(unsigned colour) const {
        size_t n = 0;
        for (unsigned y = 0; y < height; ++y)
            for (unsigned x = 0; x < width; ++x) n += at(x, y) == colour;
        return n;
    }
};

/// A folder for what a test writes.
class Folder {
public:
    Folder() {
        char name[] = "/tmp/vxsub-pictures-XXXXXX";
        if (mkdtemp(name) == nullptr) abort();
        mPath = name;
    }
    ~Folder() { remove(mPath); }
    std::string operator/(const std::string& name) const { return mPath + "/" + name; }

    static std::vector<std::string> names(const std::string& path) {
        std::vector<std::string> names;
        DIR* const folder = opendir(path.c_str());
        if (folder == nullptr) return names;
        while (const dirent* entry = readdir(folder))
            if (entry->d_name[0] != '.') names.push_back(entry->d_name);
        closedir(folder);
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    static void remove(const std::string& path) {
        for (const std::string& name : names(path)) remove(path + "/" + name);
        if (rmdir(path.c_str()) != 0) unlink(path.c_str());
    }
    std::string mPath;
};

/// The areas of a small film: one square each of 8 x 4 pixels, whose heights come out even with a spare line.
samples::VobSub squares(unsigned width, unsigned height) {
    samples::VobSub film(width, height, {0x000000, 0xF0A030, 0x102030});
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap({"........", ".111111.", ".122221.", "........"});
    picture.spareLines = 1;
    film.track("en");
    film.add(1000, picture);
    film.add(2500, picture);
    film.track("fr");
    film.add(500, picture);
    return film;
}

constexpr unsigned kGrey = 0xC8C8C8FF, kOrange = 0xF0A030FF, kBlue = 0x102030FF;

TEST(VobSub, InfoTellsTracksFrameAndPalette) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const Outcome outcome = runVxsub({"info", pair.idx()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out.substr(0, outcome.out.find("Opened in")),
              "File:         " + pair.idx() + " (" + std::to_string(film.idx().size()) +
                  " bytes)\n"
                  "Format:       VobSub\n"
                  "Encoding:     pictures, 4 colours\n"
                  "Pictures:     6144 bytes in the .sub file\n"
                  "Frame:        16x8, origin 0, 0\n"
                  "Palette:      000000 f0a030 102030 000000 000000 000000 000000 000000\n"
                  "              000000 000000 000000 000000 000000 000000 000000 000000\n"
                  "Entries:      3\n"
                  "First start:  00:00:00,500\n"
                  "Last start:   00:00:02,500\n"
                  "Track 0:      English, 2 entries, from 00:00:01,000\n"
                  "Track 1:      French, 1 entry, from 00:00:00,500\n");
}

TEST(VobSub, InfoSaysWhatIsMissing) {
    const VobSubPair bare("timestamp: 00:00:01:000, filepos: 000000000\n", "");
    const std::string out = runVxsub({"info", bare.idx()}).out;
    EXPECT_NE(out.find("Frame:        of unknown size, origin 0, 0\n"), out.npos) << out;
    EXPECT_NE(out.find("Palette:      none; all that is drawn is black\n"), out.npos) << out;
    EXPECT_NE(out.find("Track 0:      language not known, 1 entry, from 00:00:01,000\n"), out.npos) << out;
    const VobSubPair shortOne("palette: ff0000, 00ff00\n", "");
    const std::string few = runVxsub({"info", shortOne.idx()}).out;
    EXPECT_NE(few.find("fewer than 16 colours are given; the first counts as black\n"), few.npos) << few;
    EXPECT_NE(few.find("00ff00"), few.npos);
    EXPECT_NE(few.find("Entries:      0 (nothing will be shown)\n"), few.npos);
}

TEST(VobSub, ListShowsTracksAndPictures) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const std::string english =
        "Track 0: English\n"
        "    0     00:00:01,000 --> the next  (picture 12x4 at 954, 1074)\n"
        "    1     00:00:02,500 --> the next  (picture 12x4 at 954, 1074)\n";
    const std::string french =
        "Track 1: French\n"
        "    2     00:00:00,500 --> the next  (picture 12x4 at 954, 1074)\n";
    EXPECT_EQ(runVxsub({"list", pair.idx()}).out, english + "\n" + french);
    EXPECT_EQ(runVxsub({"list", "--track", "0", pair.idx()}).out, english);
    EXPECT_EQ(runVxsub({"list", "--track", "1", pair.idx()}).out, french);
    const Outcome outcome = runVxsub({"list", "--track", "2", pair.idx()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "vxsub: " + pair.idx() + ": there is no track 2; it has 2, from 0 to 1\n");
}

TEST(VobSub, JsonHoldsTheSame) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub() + "");
    const json list = json::parse(runVxsub({"list", "--json", "--track", "1", pair.idx()}).out);
    EXPECT_EQ(list["format"], "idx");
    EXPECT_EQ(list["encoding"], "i2");
    const json expected = {{"index", 2},
                           {"start", 500},
                           {"end", nullptr},
                           {"track", 1},
                           {"language", "fr"},
                           {"picture", {{"x", 954}, {"y", 1074}, {"width", 12}, {"height", 4}}},
                           {"marks", json::array()}};
    EXPECT_EQ(list["entries"], json::array({expected}));
    const VobSubPair damaged(film.idx(), std::string(6144, '\xFF'));
    const json lost = json::parse(runVxsub({"list", "--json", damaged.idx()}).out);
    ASSERT_EQ(lost["entries"].size(), 3u);
    EXPECT_EQ(lost["entries"][0]["picture"], nullptr);
    EXPECT_EQ(lost["entries"][0]["why"],
              "[vob-no-pack] At the position that the index names there is no MPEG-2 pack with a subtitle packet: the "
              "picture is refused.");
}

TEST(VobSub, AtAndPlayKeepToATrack) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    EXPECT_EQ(runVxsub({"at", pair.idx(), "0.7s"}).out,
              "00:00:00,700  nothing is shown (entry 0 starts at 00:00:01,000)\n");
    EXPECT_EQ(runVxsub({"at", "--track", "1", pair.idx(), "0.7s"}).out,
              "00:00:00,700  entry 2 (00:00:00,500 --> the next)\n(picture 12x4 at 954, 1074)\n");
    EXPECT_EQ(runVxsub({"play", "--speed", "1e6", pair.idx()}).out,
              "00:00:01,000  entry 0  (picture 12x4 at 954, 1074)\n"
              "00:00:02,500  entry 1  (picture 12x4 at 954, 1074)\n");
    EXPECT_EQ(runVxsub({"play", "--speed", "1e6", "--track", "1", pair.idx()}).out,
              "00:00:00,500  entry 2  (picture 12x4 at 954, 1074)\n");
}

TEST(VobSub, AtSaysWhoseEntryTheLibraryNames) {
    samples::VobSub film(16, 8, {});
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap(4, 4);
    film.track("en");
    film.add(1000, picture);
    film.track("fr");
    film.add(5000, picture);
    film.add(6000, picture);
    const VobSubPair pair(film.idx(), film.sub());
    // Before a track's first entry the library may name the track in front's last.
    EXPECT_EQ(runVxsub({"at", "--track", "1", pair.idx(), "3s"}).out.substr(0, 68),
              "00:00:03,000  entry 0 (00:00:01,000 --> the next), of track 0\n(no pi");
}

TEST(VobSub, PicturesStandWhereTheyAreDrawn) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const auto picture = [&](const char* surface) {
        return json::parse(runVxsub({"at", "--json", "--surface", surface, pair.idx(), "1s"}).out)["entry"]["picture"];
    };
    EXPECT_EQ(picture("16x8"), json({{"x", 5}, {"y", 5}, {"width", 6}, {"height", 2}}));
    EXPECT_EQ(picture("32x16"), json({{"x", 10}, {"y", 10}, {"width", 12}, {"height", 4}}));
    EXPECT_EQ(
        runVxsub({"at", "--surface", "7x8", pair.idx(), "1s"}).out,
        "00:00:01,000  entry 0 (00:00:01,000 --> the next)\n(no picture: nothing is drawn on a surface of 7x8)\n");
}

TEST(VobSub, APictureThatIsNotThereSaysWhy) {
    const samples::Bitmap square({"........", ".111111.", ".122221.", "........"});
    const auto unitOf = [&](const samples::Bitmap& bitmap) {
        samples::Subpicture picture;
        picture.bitmap = bitmap;
        return samples::encodeUnit(picture);
    };
    const std::string good = unitOf(square);
    std::string cut = good + std::string(3000, '\0');
    cut[0] = char(cut.size() >> 8);
    std::string noSize = good, broken = good, upsideDown = good;
    noSize[0] = noSize[1] = '\0';
    const size_t table = size_t(uint8_t(good[2])) << 8 | uint8_t(good[3]);
    broken[table + 4] = '\x66';
    upsideDown.replace(table + 12, 6, "\x00\x0F\xFF\xFF\x00\x00"s);  // the area: left, right, top, bottom
    samples::Subpicture unseen;
    unseen.bitmap = square;
    std::fill(unseen.contrast, unseen.contrast + 4, uint8_t{0});
    const struct {
        std::string sub;
        const char* why;
    } kRows[] = {
        {std::string(2048, '\xFF'), "[vob-no-pack] "},
        {"", "[vob-no-pack] "},
        {[&] {
             std::string sub = samples::packUnit(good);
             sub[13] = char(sub[13] | 1);
             sub.insert(14, 1, '\xFF').pop_back();
             return sub;
         }(),
         "[vob-stuffing] "},
        {[&] {
             std::string sub = samples::packUnit(good);
             sub[17] = '\xE0';
             return sub;
         }(),
         "[vob-no-pack] "},
        {samples::packUnit(cut).substr(0, 2048), "[vob-no-pack] "},
        {samples::packUnit(noSize), "[vob-unit-size-0] "},
        {samples::pack(good.substr(0, 20)), "[vob-packs-not-2048] "},
        {samples::packUnit(broken), "[vob-bad-commands] "},
        {samples::packUnit(unitOf(samples::Bitmap({"1111"}))), "[vob-two-rows] "},
        {samples::packUnit(upsideDown), "[vob-area-too-large] "},
        {samples::packUnit(samples::encodeUnit(unseen)), "all of it is transparent"},
    };
    const std::string index = "size: 16x8\nid: en, index: 0\n" + samples::indexLine(1000, 0);
    for (const auto& row : kRows) {
        const VobSubPair pair(index + "\n", row.sub);
        const json entry = json::parse(runVxsub({"list", "--json", pair.idx()}).out)["entries"][0];
        EXPECT_EQ(entry["picture"], nullptr) << row.why;
        EXPECT_NE(entry["why"].get<std::string>().find(row.why), std::string::npos) << entry["why"] << row.why;
    }
    const std::string sub = samples::packUnit(good) + std::string(65536 - 2048, '\0') + samples::packUnit(good);
    const VobSubPair descending(
        "size: 16x8\n" + samples::indexLine(1000, 65536) + "\n" + samples::indexLine(2000, 0) + "\n", sub);
    EXPECT_NE(runVxsub({"list", descending.idx()}).out.find("(no picture: [vob-descending] "), std::string::npos);
}

TEST(VobSub, InfoJsonHoldsTheSame) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const json pictures = json::parse(runVxsub({"info", "--json", pair.idx()}).out)["pictures"];
    EXPECT_EQ(pictures["width"], 16);
    EXPECT_EQ(pictures["bytes"], 6144);
    EXPECT_EQ(pictures["palette"][1], "f0a030");
    EXPECT_EQ(pictures["palette"].size(), 16u);
    EXPECT_EQ(pictures["tracks"][1],
              json({{"language", "fr"}, {"entries", 1}, {"times", {{"first", 500}, {"last", 500}}}}));
}

TEST(VobSub, WithoutItsPicturesIsSaidToLackThem) {
    const TempFile file("id: en, index: 0\n", ".idx");
    const std::string path = file.path(), pictures = path.substr(0, path.size() - 3) + "sub";
    const Outcome outcome = runVxsub({"info", path});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "vxsub: " + path + ": its pictures, " + pictures + ", cannot be read\n");
    const TempFile other("x", ".idx");
    std::string longPath = other.path();
    longPath.insert(longPath.rfind('/'), std::string(600, '/'));
    EXPECT_EQ(runVxsub({"info", longPath}).err,
              "vxsub: " + longPath + ": its path is too long for the library, which keeps 511 bytes\n");
}

TEST(Render, WritesWhatTheTelevisionShows) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const std::string path = folder / "a.png";
    const Outcome outcome =
        runVxsub({"render", pair.idx(), "--index", "0", "--surface", "16x8", "--background", "FF0000", "-o", path});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out,
              path + ": entry 0 (00:00:01,000 --> the next), a picture of 6x2 at 5, 5, on a surface of 16x8\n");
    const Png png(path);
    ASSERT_EQ(png.width, 16u);
    ASSERT_EQ(png.height, 8u);
    const std::vector<std::string> expected = {"................", "................", "................",
                                               "................", "................", ".....oooooo.....",
                                               ".....obbbbo.....", "................"};
    for (unsigned y = 0; y < png.height; ++y) {
        std::string row;
        for (unsigned x = 0; x < png.width; ++x) {
            const unsigned colour = png.at(x, y);
            row += colour == kOrange ? 'o' : colour == kBlue ? 'b' : colour == 0xFF0000FF ? '.' : '?';
        }
        EXPECT_EQ(row, expected[y]) << y;
    }
}

TEST(Render, ScalesAsTheLibraryDoes) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const struct {
        const char* surface;
        size_t orange, blue;
    } kRows[] = {{"16x8", 8, 4}, {"31x15", 8, 4}, {"32x16", 32, 16}, {"32x15", 16, 8}, {"7x8", 0, 0}};
    for (const auto& row : kRows) {
        const std::string path = folder / "b.png";
        const Outcome outcome = runVxsub(
            {"render", pair.idx(), "--index", "1", "--surface", row.surface, "--background", "none", "-o", path});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        const Png png(path);
        EXPECT_EQ(png.count(kOrange), row.orange) << row.surface;
        EXPECT_EQ(png.count(kBlue), row.blue) << row.surface;
        EXPECT_EQ(png.count(0), size_t{png.width} * png.height - row.orange - row.blue) << row.surface;
        EXPECT_EQ(outcome.out.find("nothing is drawn on a surface of 7x8") != outcome.out.npos, row.orange == 0)
            << outcome.out;
    }
}

TEST(Render, LiesOnAChequerboardAndATelevisionUnlessTold) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const std::string path = folder / "c.png";
    EXPECT_EQ(runVxsub({"render", pair.idx(), "--index", "0", "-o", path}).status, 0);
    const Png png(path);
    EXPECT_EQ(png.width, 1920u);
    EXPECT_EQ(png.height, 1080u);
    EXPECT_NE(png.at(0, 0), png.at(16, 0));
    EXPECT_EQ(png.at(0, 0), png.at(16, 16));
    EXPECT_EQ(png.at(0, 0) & 0xFF, 0xFFu);
}

TEST(Render, HalfTransparentColoursLetTheBackgroundThrough) {
    samples::VobSub film(4, 4, {0x000000, 0xFFFFFF});
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap({"....", ".11.", ".11.", "...."});
    picture.contrast[1] = 8;
    picture.spareLines = 1;
    film.add(0, picture);
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const std::string path = folder / "d.png";
    ASSERT_EQ(
        runVxsub({"render", pair.idx(), "--index", "0", "--surface", "4x4", "--background", "none", "-o", path}).status,
        0);
    const unsigned own = Png(path).at(1, 1);
    const unsigned alpha = own & 0xFF;
    EXPECT_EQ(own >> 8, 0xFFFFFFu);
    EXPECT_GT(alpha, 100u);
    EXPECT_LT(alpha, 160u);
    ASSERT_EQ(
        runVxsub({"render", pair.idx(), "--index", "0", "--surface", "4x4", "--background", "#000000", "-o", path})
            .status,
        0);
    EXPECT_EQ(Png(path).at(1, 1), alpha * 0x01010100u + 0xFF);
    EXPECT_EQ(Png(path).at(0, 0), 0xFFu);
}

TEST(Render, AllGoToAFolder) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const std::string all = folder / "all", one = folder / "one";
    const Outcome outcome = runVxsub({"render", pair.idx(), "--all", "--surface", "16x8", "-o", all});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, all + ": 3 pictures\n");
    EXPECT_EQ(Folder::names(all),
              (std::vector<std::string>{"0000_track0_00-00-01-000.png", "0001_track0_00-00-02-500.png",
                                        "0002_track1_00-00-00-500.png"}));
    EXPECT_EQ(Png(all + "/0002_track1_00-00-00-500.png").count(kBlue), 4u);
    EXPECT_EQ(runVxsub({"render", pair.idx(), "--all", "--track", "1", "--surface", "16x8", "-o", one}).out,
              one + ": 1 picture\n");
    EXPECT_EQ(Folder::names(one), (std::vector<std::string>{"0002_track1_00-00-00-500.png"}));
    EXPECT_EQ(runVxsub({"render", pair.idx(), "--all", "--surface", "7x8", "-o", one}).out,
              "entry 0: nothing is drawn on a surface of 7x8\n"
              "entry 1: nothing is drawn on a surface of 7x8\n"
              "entry 2: nothing is drawn on a surface of 7x8\n" +
                  one + ": 3 pictures\n");
}

TEST(Render, WhatCannotBeDecodedIsNamed) {
    const samples::VobSub film = squares(16, 8);
    std::string sub = film.sub();
    sub[2048] = '\xFF';
    const VobSubPair pair(film.idx(), sub);
    const Folder folder;
    const std::string all = folder / "all";
    const Outcome outcome = runVxsub({"render", pair.idx(), "--all", "--surface", "16x8", "-o", all});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out,
              "entry 1 has no picture: [vob-no-pack] At the position that the index names there is no MPEG-2 pack with "
              "a subtitle packet: the picture is refused.\n" +
                  all + ": 2 pictures\n");
    const Outcome one = runVxsub({"render", pair.idx(), "--index", "1", "-o", folder / "x.png"});
    EXPECT_EQ(one.status, 1);
    EXPECT_EQ(one.err, "vxsub: " + pair.idx() +
                           ": entry 1 has no picture: [vob-no-pack] At the position that the index names there is no "
                           "MPEG-2 pack with a subtitle packet: the picture is refused.\n");
    EXPECT_EQ(Folder::names(folder / ""), (std::vector<std::string>{"all"}));
    const VobSubPair none(film.idx(), std::string(6144, '\xFF'));
    EXPECT_EQ(runVxsub({"render", none.idx(), "--all", "-o", all}).status, 1);
}

TEST(Render, JsonHoldsTheSame) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub().substr(0, 4096));
    const Folder folder;
    const std::string all = folder / "all";
    const json result =
        json::parse(runVxsub({"render", "--json", pair.idx(), "--all", "--surface", "16x8", "-o", all}).out);
    EXPECT_EQ(result["surface"], json({{"width", 16}, {"height", 8}}));
    ASSERT_EQ(result["images"].size(), 3u);
    EXPECT_EQ(result["images"][0], json({{"index", 0},
                                         {"start", 1000},
                                         {"end", nullptr},
                                         {"track", 0},
                                         {"language", "en"},
                                         {"path", all + "/0000_track0_00-00-01-000.png"},
                                         {"picture", {{"x", 5}, {"y", 5}, {"width", 6}, {"height", 2}}}}));
    EXPECT_EQ(result["images"][2]["path"], nullptr);
    EXPECT_NE(result["images"][2]["why"].get<std::string>().find("vob-no-pack"), std::string::npos);
}

TEST(Render, RefusesWhatMakesNoSense) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const TempFile text("1\n00:00:01,000 --> 00:00:02,000\nx\n\n", ".srt");
    const Folder folder;
    const std::string png = folder / "a.png";
    const std::string before = runVxsub({"list", pair.idx()}).out;
    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string words;
    } kRows[] = {
        {{"render", pair.idx(), "-o", png}, 2, "either --index or --all is needed"},
        {{"render", pair.idx(), "--index", "0", "--all", "-o", png}, 2, "--index and --all exclude each other"},
        {{"render", pair.idx(), "--index", "0"}, 2, "-o is required"},
        {{"render", pair.idx(), "--index", "0", "-o", pair.idx()}, 2, "it must end in .png"},
        {{"sheet", pair.idx(), "-o", pair.sub()}, 2, "it must end in .png"},
        {{"render", pair.idx(), "--index", "3", "-o", png}, 1, "there is no entry 3; it has 3"},
        {{"render", pair.idx(), "--index", "0", "--track", "1", "-o", png}, 1, "entry 0 is of track 0"},
        {{"render", pair.idx(), "--index", "0", "-o", folder / "no/a.png"}, 1, "No such file or directory"},
        {{"render", pair.idx(), "--all", "-o", folder / "no/folder"}, 1, "No such file or directory"},
        {{"render", pair.idx(), "--all", "-o", pair.sub()}, 1, "Not a directory"},
        {{"render", text.path(), "--all", "-o", png}, 1, "has texts, no pictures"},
        {{"sheet", text.path(), "-o", png}, 1, "has texts, no pictures"},
        {{"sheet", pair.idx(), "--from", "3s", "-o", png}, 1, "no entry starts at 00:00:03,000 or later"},
        {{"list", pair.idx(), "--surface", "16"}, 2, "16 is no size"},
        {{"push", pair.idx()}, 1, "has pictures; only texts can be pushed"},
        {{"sheet", pair.idx(), "--background", "red", "-o", png}, 2, "red is none of"},
        {{"sheet", pair.idx(), "--background", "12345", "-o", png}, 2, "12345 is none of"},
        {{"sheet", pair.idx(), "--surface", "0x8", "-o", png}, 2, "0x8 is no size"},
        {{"sheet", pair.idx(), "--surface", "4097x8", "-o", png}, 2, "4097x8 is no size"},
        {{"sheet", pair.idx(), "--surface", "16", "-o", png}, 2, "16 is no size"},
        {{"sheet", pair.idx(), "--surface", "16x8x4", "-o", png}, 2, "16x8x4 is no size"},
    };
    for (const auto& row : kRows) {
        const Outcome outcome = runVxsub(row.arguments);
        EXPECT_EQ(outcome.status, row.status) << testing::PrintToString(row.arguments) << outcome.err;
        EXPECT_NE(outcome.err.find(row.words), outcome.err.npos) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(runVxsub({"list", pair.idx()}).out, before) << "the pair is as it was";
    EXPECT_EQ(Folder::names(folder / ""), std::vector<std::string>{});
}

TEST(Render, AFullDiskIsAnError) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const std::string path = folder / "full.png";
    ASSERT_EQ(symlink("/dev/full", path.c_str()), 0);
    const Outcome outcome = runVxsub({"render", pair.idx(), "--index", "0", "-o", path});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "vxsub: " + path + ": cannot be written: No space left on device\n");
    EXPECT_EQ(Folder::names(folder / ""), std::vector<std::string>{});
}

TEST(Sheet, ShowsEveryPictureBelowItsTime) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const std::string path = folder / "sheet.png";
    const Outcome outcome = runVxsub({"sheet", pair.idx(), "--background", "none", "-o", path});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, path + ": 3 entries\n");
    const Png sheet(path);
    EXPECT_EQ(sheet.count(kOrange), 24u);
    EXPECT_EQ(sheet.count(kBlue), 12u);
    EXPECT_GT(sheet.count(0xFFFFFFFF), 300u) << "the times";
    ASSERT_EQ(runVxsub({"sheet", pair.idx(), "--background", "none", "--track", "0", "--from", "2s", "-o", path}).out,
              path + ": 1 entry\n");
    EXPECT_EQ(Png(path).count(kOrange), 8u);
    EXPECT_LT(Png(path).width, sheet.width);
}

TEST(Sheet, NamesTracksAndDrawsBorders) {
    const samples::VobSub film = squares(16, 8);
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const std::string all = folder / "all.png", one = folder / "one.png";
    const json sheet = json::parse(runVxsub({"sheet", "--json", pair.idx(), "--background", "none", "-o", all}).out);
    EXPECT_EQ(sheet, json({{"file", pair.idx()},
                           {"format", "idx"},
                           {"encoding", "i2"},
                           {"sheets", {all}},
                           {"entries", 3},
                           {"missing", 0}}));
    ASSERT_EQ(runVxsub({"sheet", pair.idx(), "--background", "none", "--track", "1", "-o", one}).status, 0);
    const Png image(one);
    const unsigned left = 12, right = image.width - 13, top = 12, bottom = image.height - 13;
    for (unsigned x = left; x <= right; ++x) {
        EXPECT_EQ(image.at(x, top), kGrey);
        EXPECT_EQ(image.at(x, bottom), kGrey);
    }
    EXPECT_EQ(image.count(kGrey), 2 * (right - left + 1) + 2 * (bottom - top - 1));
    samples::VobSub single(16, 8, {0x000000, 0xF0A030, 0x102030});
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap(8, 4);
    single.addUnit(500, samples::encodeUnit(picture));
    const VobSubPair other(single.idx(), single.sub());
    const std::string without = folder / "without.png";
    ASSERT_EQ(runVxsub({"sheet", other.idx(), "--background", "none", "-o", without}).status, 0);
    EXPECT_GT(image.count(0xFFFFFFFF), Png(without).count(0xFFFFFFFF) + 6 * 40) << "TRACK 1";
}

TEST(Sheet, LargePicturesAreReducedAndMissingOnesCounted) {
    samples::VobSub film(1280, 720, {0x000000, 0xF0A030, 0x102030});
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap(1200, 100);
    std::fill(picture.bitmap.codes.begin() + 1, picture.bitmap.codes.end(), uint8_t{1});
    film.add(1000, picture);
    film.addUnit(2000, "");
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const std::string path = folder / "sheet.png";
    EXPECT_EQ(runVxsub({"sheet", pair.idx(), "--background", "none", "-o", path}).out,
              path + ": 2 entries, 1 of them without a picture\n");
    const Png sheet(path);
    EXPECT_EQ(sheet.width, 2 * (440u + 2 * 6 + 12) + 12);
    EXPECT_NEAR(double(sheet.count(kOrange)), 1200 * 440 / 1280 * (98.0 * 440 / 1280), 500);
}

TEST(Sheet, AllPicturesAreAtOneScale) {
    samples::VobSub film(1280, 720, {0x000000, 0xF0A030, 0x102030});
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap(1200, 100);
    std::fill(picture.bitmap.codes.begin() + 1, picture.bitmap.codes.end(), uint8_t{2});
    film.add(1000, picture);
    picture.bitmap = samples::Bitmap(130, 42);
    std::fill(picture.bitmap.codes.begin() + 1, picture.bitmap.codes.end(), uint8_t{1});
    film.add(2000, picture);
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const std::string path = folder / "sheet.png";
    ASSERT_EQ(runVxsub({"sheet", pair.idx(), "--background", "none", "-o", path}).status, 0);
    EXPECT_NEAR(double(Png(path).count(kOrange)), 130 * 40 * (440.0 / 1280) * (440.0 / 1280), 60)
        << "it would fit as it is, but would look as large as the other";
}

TEST(Sheet, SixtyMakeOneAndMoreMakeSeveral) {
    samples::VobSub film(16, 8, {});
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap({"....", ".11.", ".11.", "...."});
    const std::string unit = samples::encodeUnit(picture);
    for (unsigned i = 0; i < 121; ++i) film.addUnit(i * 1000, unit);
    const VobSubPair pair(film.idx(), film.sub());
    const Folder folder;
    const std::string path = folder / "sheet.png";
    EXPECT_EQ(runVxsub({"sheet", pair.idx(), "--from", "61s", "-o", path}).out, path + ": 60 entries\n");
    EXPECT_EQ(Folder::names(folder / ""), std::vector<std::string>{"sheet.png"});
    EXPECT_EQ(runVxsub({"sheet", pair.idx(), "-o", path}).out,
              folder / "sheet-1.png" + " to " + folder / "sheet-3.png" + ": 121 entries\n");
    EXPECT_EQ(Folder::names(folder / ""),
              (std::vector<std::string>{"sheet-1.png", "sheet-2.png", "sheet-3.png", "sheet.png"}));
    EXPECT_EQ(Png(folder / "sheet-1.png").height, Png(path).height);
    EXPECT_EQ(Png(folder / "sheet-2.png").height, Png(path).height);
    EXPECT_LT(Png(folder / "sheet-3.png").width, Png(path).width);
}

TEST(Demo, PairShowsTwoLanguages) {
    const samples::VobSub film = samples::demoVobSub();
    const VobSubPair pair(film.idx(), film.sub());
    const json entries = json::parse(runVxsub({"list", "--json", pair.idx()}).out)["entries"];
    ASSERT_EQ(entries.size(), 8u);
    for (const json& entry : entries) EXPECT_TRUE(entry["picture"].is_object());
    EXPECT_EQ(entries[0]["language"], "en");
    EXPECT_EQ(entries[7]["language"], "fr");
}

}  // namespace
