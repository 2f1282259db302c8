// vxsub fix: what it writes, what it never touches, what it says, how it ends.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/vxsub/Program.h"
#include "tools/samples/VobSubMaker.h"

namespace {

namespace fs = std::filesystem;
using test::Outcome;
using test::runVxsub;

class VxsubFix : public testing::Test {
protected:
    VxsubFix() {
        char name[] = "/tmp/vxsub-fix-XXXXXX";
        if (mkdtemp(name) == nullptr) abort();
        mFolder = name;
    }
    ~VxsubFix() override { fs::remove_all(mFolder); }

    std::string path(const std::string& name) const { return mFolder / name; }
    std::string put(const std::string& name, const std::string& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }
    std::string get(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    ptrdiff_t files() const { return std::distance(fs::directory_iterator(mFolder), fs::directory_iterator()); }

    fs::path mFolder;
};

const std::string kEntry = "1\n0:0:1,5 --> 0:0:2,5\na\n\n2\n0:0:3,000 --> 0:0:4,000\nb <word>\n\n";
const std::string kCopy =
    "\xEF\xBB\xBF"
    "1\r\n00:00:01,500 --> 00:00:02,500\r\na\r\n\r\n2\r\n00:00:03,000 --> 00:00:04,000\r\nb ＜word＞\r\n\r\n";

TEST_F(VxsubFix, WritesBesideTheFile) {
    const std::string movie = put("movie.srt", kEntry);
    const Outcome outcome = runVxsub({"fix", movie});
    EXPECT_EQ("written " + path("movie.fixed.srt") +
                  ": 2 of 2 entries show at their time (before: 0)\n"
                  "  mended: srt-fraction-digits 1, text-angle-brackets 1\n"
                  "  changed: " +
                  movie +
                  ":6: [text-angle-brackets] Words in angle brackets would be taken for markup: they are written "
                  "in full width.\n",
              outcome.out);
    EXPECT_EQ("", outcome.err);
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ(kCopy, get("movie.fixed.srt"));
    EXPECT_EQ(kEntry, get("movie.srt"));
    EXPECT_EQ(2, files());
}

TEST_F(VxsubFix, WritesWhereItIsTold) {
    EXPECT_EQ(0, runVxsub({"fix", put("movie.srt", kEntry), "-o", path("a.srt")}).status);
    EXPECT_EQ(kCopy, get("a.srt"));
    EXPECT_EQ(0, runVxsub({"fix", path("movie.srt"), "-o", path("b.srt"), "--utf16", "--language", "big5"}).status);
    EXPECT_EQ("\xFF\xFE", get("b.srt").substr(0, 2));
    const std::string kyrillic = put("movie.txt", "0:00:01:\xCF\xF0\xE8\r\n0:00:02:\r\n");
    EXPECT_EQ(0, runVxsub({"fix", kyrillic, "-o", path("c.srt"), "--native", "big5"}).status);
    EXPECT_EQ(0, runVxsub({"fix", kyrillic, "-o", path("d.srt"), "--encoding", "windows-1251"}).status);
    EXPECT_NE(std::string::npos, get("d.srt").find("\xD0\x9F\xD1\x80\xD0\xB8"));
    EXPECT_NE(get("c.srt"), get("d.srt"));
    EXPECT_EQ(0, runVxsub({"fix", put("movie.sub", "{1}{1}50\n{50}{100}a\n"), "--keep-format"}).status);
    EXPECT_EQ("\xEF\xBB\xBF{1}{1}50.000\r\n{50}{100}a\r\n", get("movie.fixed.sub"));
    EXPECT_EQ(8, files());
}

TEST_F(VxsubFix, OverwritesNothingUnasked) {
    const std::string movie = put("movie.srt", kEntry), taken = put("movie.fixed.srt", "mine");
    const Outcome outcome = runVxsub({"fix", movie});
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("vxsub: cannot write " + taken + ": there is a file of that name; --force overwrites it\n", outcome.err);
    EXPECT_EQ("mine", get("movie.fixed.srt"));
    EXPECT_EQ(0, runVxsub({"fix", movie, "--force"}).status);
    EXPECT_EQ(kCopy, get("movie.fixed.srt"));
    EXPECT_EQ(2, files());
}

TEST_F(VxsubFix, NeverTouchesItsInput) {
    const std::string movie = put("movie.srt", kEntry);
    fs::create_hard_link(movie, path("link.srt"));
    for (const std::string& output : {movie, path("link.srt"), path("./movie.srt")}) {
        const Outcome outcome = runVxsub({"fix", movie, "--force", "-o", output});
        EXPECT_EQ(1, outcome.status);
        EXPECT_EQ("vxsub: cannot write " + output + ": it is the file itself\n", outcome.err);
    }
    EXPECT_EQ(kEntry, get("movie.srt"));
    EXPECT_EQ(2, files());
}

TEST_F(VxsubFix, SaysWhyItCannotWrite) {
    const std::string movie = put("movie.srt", kEntry);
    EXPECT_EQ(1, runVxsub({"fix", movie, "-o", path("none/a.srt")}).status);
    fs::create_directory(path("folder.srt"));
    EXPECT_EQ(1, runVxsub({"fix", movie, "-o", path("folder.srt"), "--force"}).status);
    EXPECT_EQ(2, files());
}

TEST_F(VxsubFix, SaysWhatCannotBeMended) {
    const std::string movie = put("movie.srt", kEntry + "3\n00:00:09,000 --> 2000:00:00,000\nb\n");
    const Outcome outcome = runVxsub({"fix", movie});
    EXPECT_EQ(3, outcome.status);
    EXPECT_NE(std::string::npos, outcome.out.find(": 2 of 3 entries show at their time (before: 0)\n")) << outcome.out;
    EXPECT_NE(std::string::npos, outcome.out.find("  not mended: " + movie + ":10: [beyond-32-bit] ")) << outcome.out;
    const Outcome kept = runVxsub({"fix", put("movie.sub", "{1}{1}50\n{50}{100}a|b\n"), "--keep-format"});
    EXPECT_EQ(0, kept.status);
    EXPECT_NE(std::string::npos, kept.out.find("movie.fixed.sub:2: [break-bar] ")) << kept.out;
}

TEST_F(VxsubFix, WritesNothingWhenNothingCanBeShown) {
    const std::string movie = put("movie.srt", "1\n2000:00:00,000 --> 2000:00:01,000\nb\n");
    const Outcome outcome = runVxsub({"fix", movie});
    EXPECT_EQ(3, outcome.status);
    EXPECT_EQ(movie + ": nothing is written: the file has no entry that can be shown\n  not mended: " + movie +
                  ":2: [beyond-32-bit] It begins later than times can be written.\n",
              outcome.out);
    EXPECT_EQ(1, files());
}

TEST_F(VxsubFix, OtherFiles) {
    const struct {
        const char* name;
        const char* bytes;
        const char* message;
    } kRows[] = {
        {"empty.srt", "", "is no subtitle file but an empty file"},
        {"web.srt", "WEBVTT\n\n00:01.000 --> 00:02.000\na\n", "holds WebVTT, which cannot be mended"},
        {"script.srt",
         "\x7F"
         "ELF\1\1\1",
         "is no subtitle file but an executable"},
    };
    for (const auto& row : kRows) {
        const std::string file = put(row.name, row.bytes);
        const Outcome outcome = runVxsub({"fix", file});
        EXPECT_EQ(1, outcome.status);
        EXPECT_EQ("vxsub: " + file + ": " + row.message + "\n", outcome.err);
    }
    EXPECT_EQ(1, runVxsub({"fix", path("none.srt")}).status);
    EXPECT_EQ(2, runVxsub({"fix"}).status);
    EXPECT_EQ(2, runVxsub({"fix", put("movie.srt", kEntry), "--utf16", "--keep-format"}).status);
    const Outcome named = runVxsub({"fix", path("movie.srt"), "-o", path("a.sub")});
    EXPECT_EQ(2, named.status);
    EXPECT_EQ(0,
              runVxsub({"fix", put("script.sub", "Dialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,a\n"), "--keep-format"})
                  .status);
    EXPECT_NE("", get("script.fixed.ssa"));
    EXPECT_EQ("vxsub: the copy is SubRip: the name of OUT has to end in .srt\n", named.err);
    EXPECT_EQ(6, files());
}

TEST_F(VxsubFix, AnIndexAnew) {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({"HELLO"}, 3);
    const std::string stream = samples::packUnit(samples::encodeUnit(picture));
    const std::string movie =
        put("movie.idx", "id: de, index: 0\ndelay: 00:00:01:000\ntimestamp: 00:00:02:000, filepos: 000000000\n");
    EXPECT_EQ("vxsub: " + movie + ": [vob-no-stream] ", runVxsub({"fix", movie}).err.substr(0, 25 + movie.size()));
    put("movie.sub", stream);
    const Outcome outcome = runVxsub({"fix", movie});
    EXPECT_EQ(3, outcome.status) << outcome.err;  // the end inside the picture is not used
    const std::string begin =
        "written " + path("movie.fixed.idx") + ": 1 of 1 pictures show at their time (before: 0)\n";
    EXPECT_EQ(begin, outcome.out.substr(0, begin.size()));
    EXPECT_NE(std::string::npos, outcome.out.find("movie.fixed.idx")) << outcome.out;
    for (const char* cause : {"vob-language", "vob-delay-sign", "vob-no-size", "vob-no-palette", "vob-end-ignored"})
        EXPECT_NE(std::string::npos, outcome.out.find(std::string("[") + cause + "]")) << outcome.out;
    EXPECT_NE(std::string::npos, outcome.out.find("copy " + path("movie.sub") + " to it")) << outcome.out;
    EXPECT_EQ(stream, get("movie.sub"));
    EXPECT_EQ(3, files());
    put("movie.fixed.sub", stream);
    EXPECT_EQ(std::string::npos, runVxsub({"fix", movie, "--force"}).out.find("to do:"));
}

}  // namespace
