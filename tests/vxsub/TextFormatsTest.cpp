// vxsub on every text format, end to end.
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "tests/support/Interpose.h"
#include "tests/vxsub/Program.h"

namespace {

using namespace std::string_literals;
using nlohmann::json;
using test::Outcome;
using test::runVxsub;
using test::TempFile;

std::string line(const std::string& outcome, const std::string& name) {
    const size_t begin = outcome.find("\n" + name + ":");
    if (begin == outcome.npos) return "";
    const size_t value = outcome.find_first_not_of(' ', begin + name.size() + 2);
    return outcome.substr(value, outcome.find('\n', value) - value);
}

constexpr char kSsa[] =
    "[Events]\r\n"
    "Dialogue: 0,0:00:01.00,0:00:02.50,Default,,0,0,0,,Hello,\\Nworld!\r\n"
    "Dialogue: 0,0:01:01.50,0:01:03.00,Default,,0,0,0,,{\\i1}Bye.\r\n";
constexpr char kSmi[] =
    "<SAMI><BODY>\r\n"
    "<SYNC Start=1000><P Class=EN>Hello,\r\n"
    "<SYNC Start=61500><P Class=EN>Bye.";
constexpr char kTxt[] = "00:00:01:Hello\r\n00:00:03:\r\n00:01:01:Bye.\r\n00:01:03:\r\n";
constexpr char kSubViewer20[] = "00:00:01.00,00:00:02.50\r\nHello\r\n\r\n00:01:01.50,00:01:03.00\r\nBye.\r\n\r\n";
constexpr char kSubViewer10[] = "[00:00:01]\r\nHello\r\n[00:00:02]\r\n\r\n[00:01:01]\r\nBye.\r\n[00:01:03]\r\n";
constexpr char kMicroDvd[] = "\xEF\xBB\xBF{25}{50}Hello\r\n{1500}{1575}Bye.\r\n";
constexpr char kMicroDvdWithRate[] = "\xEF\xBB\xBF{1}{1}25.000\r\n{25}{50}Hello\r\n{1500}{1575}Bye.\r\n";
constexpr char kDvb[] = "0:00:01:00 0:00:02:00   Hello\r\n0:01:01:00 0:01:03:00   Bye.\r\n";

TEST(TextFormats, OpenByExtensionAndByType) {
    const struct {
        const char* content;
        std::vector<const char*> extensions, types;
        const char* format;
        const char* first;
        const char* last;
    } kRows[] = {
        {kSsa,
         {".ssa", ".ass", ".ASS"},
         {"ssa"},
         "SubStation Alpha",
         "00:00:01,000 --> 00:00:02,500  Hello,\\\\Nworld!",
         "00:01:01,500 --> 00:01:03,000  Bye."},
        {kSmi,
         {".smi", ".sami"},
         {"smi"},
         "SAMI",
         "00:00:01,000 --> the next  Hello,",
         "00:01:01,500 --> the next  Bye."},
        {kTxt,
         {".txt"},
         {"txt"},
         "time-prefixed text",
         "00:00:01,000 --> 00:00:03,000  Hello",
         "00:01:01,000 --> 00:01:03,000  Bye."},
        {kSubViewer20,
         {".sub"},
         {"sub", "sv20"},
         "SubViewer 2.0",
         "00:00:01,000 --> 00:00:02,050  Hello",
         "00:01:01,050 --> 00:01:03,000  Bye."},
        {kSubViewer10,
         {".sub"},
         {"sub", "sv10"},
         "SubViewer 1.0",
         "00:00:01,000 --> 00:00:02,000  Hello",
         "00:01:01,000 --> 00:01:03,000  Bye."},
        {kMicroDvdWithRate,
         {".sub"},
         {"sub", "microdvd"},
         "MicroDVD",
         "00:00:01,000 --> 00:00:02,000  Hello",
         "00:01:00,000 --> 00:01:03,000  Bye."},
        {kDvb,
         {".sub"},
         {"sub", "dvb"},
         "DVB subtitle system",
         "00:00:01,000 --> 00:00:02,000  Hello",
         "00:01:01,000 --> 00:01:03,000  Bye."},
    };
    for (const auto& row : kRows) {
        std::vector<Outcome> infos, lists;
        for (const char* extension : row.extensions) {
            const TempFile file(row.content, extension);
            infos.push_back(runVxsub({"info", file.path()}));
            lists.push_back(runVxsub({"list", file.path()}));
        }
        for (const char* type : row.types) {
            const TempFile file(row.content, ".dat");
            infos.push_back(runVxsub({"info", "--type", type, file.path()}));
            lists.push_back(runVxsub({"list", "--type", type, file.path()}));
        }
        SCOPED_TRACE(row.format);
        for (const Outcome& info : infos) {
            EXPECT_EQ(info.status, 0);
            EXPECT_EQ(info.err, "");
            EXPECT_EQ(line(info.out, "Format"), row.format);
        }
        for (const Outcome& list : lists) {
            EXPECT_EQ(list.out, "    0     "s + row.first + "\n    1     " + row.last + "\n");
            EXPECT_EQ(list.err, "");
        }
    }
}

TEST(TextFormats, ThatRefuseAFileAreNamed) {
    const TempFile file("nothing of the kind", ".sub");
    for (const auto& [type, name] : {std::pair("sub", "SubViewer, MicroDVD or DVB text"),
                                     {"sv20", "SubViewer 2.0"},
                                     {"sv10", "SubViewer 1.0"},
                                     {"microdvd", "MicroDVD"},
                                     {"dvb", "DVB subtitle system"}}) {
        const Outcome outcome = runVxsub({"list", "--type", type, file.path()});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "vxsub: "s + file.path() + ": the library refuses it as " + name +
                                   " (vxsub check says why, --log shows what it says)\n");
    }
}

TEST(TextFormats, WhatTheLibraryPrintsStaysOutOfTheOutput) {
    const TempFile file(kTxt, ".txt");
    EXPECT_EQ(runVxsub({"list", file.path()}).out.find("Thread"), std::string::npos);
    const Outcome logged = runVxsub({"list", "--log", file.path()});
    EXPECT_EQ(logged.out, runVxsub({"list", file.path()}).out);
    EXPECT_NE(logged.err.find("Thread name: "), std::string::npos);
}

TEST(TextFormats, TheLogIsTheFormatsOwn) {
    const TempFile file(kSubViewer10, ".sub");
    const std::string log = runVxsub({"list", "--log", file.path()}).err;
    EXPECT_LT(log.find("Try Subviewer 2.0"), log.find("Try Subviewer 1.0"));
    EXPECT_NE(log.find("Try Subviewer 1.0"), log.npos);
    EXPECT_EQ(log.find("Try MicroDVD"), log.npos);
}

TEST(Ssa, TextsShowAsThePlayerGetsThem) {
    for (const std::string& content :
         {std::string(kSsa), "\xEF\xBB\xBF"s + kSsa, test::utf16le(kSsa), test::utf16be(kSsa)}) {
        const TempFile file(content, ".ass");
        EXPECT_EQ(json::parse(runVxsub({"list", "--json", file.path()}).out)["entries"][0]["text"], "Hello,\\Nworld!");
        EXPECT_EQ(runVxsub({"at", file.path(), "1s"}).out,
                  "00:00:01,000  entry 0 (00:00:01,000 --> 00:00:02,500)\nHello,\\Nworld!\n");
    }
}

TEST(Encodings, FollowTheLibrarysJudgementUnlessOverruled) {
    std::string content;
    for (int i = 0; i < 4; ++i)
        content +=
            "Dialogue: 0,0:00:0" + std::to_string(i) + ".00,0:00:09.00,Default,,0,0,0,,\xD6\xD0\xCE\xC4\xD2\x80\r\n";
    const TempFile file(content, ".ass");
    const Outcome info = runVxsub({"info", file.path()});
    EXPECT_EQ(line(info.out, "Encoding"), "GBK, as the library judged from the texts (--native overrules)");
    const auto text = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {"list", "--json", file.path()});
        return json::parse(runVxsub(options).out)["entries"][0]["text"];
    };
    EXPECT_EQ(text({}), "中文襽");
    EXPECT_EQ(text({"--native", "1252"}).get<std::string>().substr(0, 4), "ÖÐ");
    EXPECT_EQ(json::parse(runVxsub({"list", "--json", file.path()}).out)["encoding"], "gbk");
}

TEST(Encodings, MarksAreToldFromJudgements) {
    const TempFile marked(kMicroDvd, ".sub"), bare(kMicroDvd + 3, ".sub");
    EXPECT_EQ(line(runVxsub({"info", marked.path()}).out, "Encoding"), "UTF-8 (byte-order mark)");
    const Outcome info = runVxsub({"info", bare.path()});
    EXPECT_EQ(line(info.out, "Encoding"), "UTF-8, as the library judged from the bytes (--native overrules)");
    const TempFile accents("{0}{1}x\r\n{25}{50}caf\xC3\xA9\r\n", ".sub");
    const auto text = [&](const char* native) {
        return json::parse(runVxsub({"list", "--json", "--native", native, accents.path()}).out)["entries"]
            .back()["text"];
    };
    EXPECT_EQ(text("utf-8"), "café");
    EXPECT_EQ(text("1252"), "cafÃ©");
}

TEST(FrameRate, SetsTheTimesAsThePlayerWould) {
    const TempFile file(kMicroDvd, ".sub");
    const auto firstStart = [&](const char* fps) {
        return line(runVxsub({"info", "--fps", fps, file.path()}).out, "First start");
    };
    EXPECT_EQ(firstStart("25"), "00:00:01,000");
    EXPECT_EQ(firstStart("25.000"), "00:00:01,000");
    EXPECT_EQ(firstStart("50"), "00:00:00,500");
    EXPECT_EQ(firstStart("1"), "00:00:25,000");
    EXPECT_EQ(firstStart("99"), "00:00:00,252");
    EXPECT_EQ(firstStart("23.976"), firstStart("24")) << "the library rounds";
    EXPECT_EQ(firstStart("23.4"), firstStart("23"));
    EXPECT_EQ(firstStart("100"), "00:00:00,250");
    EXPECT_NE(runVxsub({"list", "--fps", "50", file.path()}).out.find("00:00:00,500 -->"), std::string::npos);
}

TEST(FrameRate, IsAlwaysNamedWithItsSource) {
    const std::string mark = "\xEF\xBB\xBF";
    const struct {
        std::string content;
        std::vector<std::string> options;
        const char* words;
        json rate;
    } kRows[] = {
        {kMicroDvd,
         {},
         "29 frames a second, the library's own, as neither the file nor the player names one (see --fps)",
         {{"frames", 29.0}, {"from", "library"}, {"rounded", false}}},
        {kMicroDvd,
         {"--fps", "25"},
         "25 frames a second, from --fps",
         {{"frames", 25.0}, {"from", "player"}, {"rounded", false}}},
        {kMicroDvd,
         {"--fps", "23.976"},
         "24 frames a second, from --fps 23.976, rounded: a player's rate is whole",
         {{"frames", 24.0}, {"from", "player"}, {"rounded", true}}},
        {mark + "{1}{1}23.976\r\n{25}{50}Hello\r\n",
         {},
         "23.976 frames a second, from the file's first line",
         {{"frames", 23.976}, {"from", "file"}, {"rounded", false}}},
        {kMicroDvdWithRate,
         {"--fps", "50"},
         "25 frames a second, from the file's first line; --fps is without effect",
         {{"frames", 25.0}, {"from", "file"}, {"rounded", false}}},
        {"{25}{50}Hello\r\n{75}{90}Bye\r\n",
         {},
         "none: the file's first line is not read, and all times are 0 (mdvd-unmarked-zero)",
         {{"frames", 0.0}, {"from", "none"}, {"rounded", false}}},
    };
    for (const auto& row : kRows)
        for (const char* type : {"sub", "microdvd"}) {
            const TempFile file(row.content, ".sub");
            std::vector<std::string> arguments = {"info", "--type", type, file.path()};
            arguments.insert(arguments.end(), row.options.begin(), row.options.end());
            EXPECT_EQ(line(runVxsub(arguments).out, "Frame rate"), row.words);
            arguments.push_back("--json");
            EXPECT_EQ(json::parse(runVxsub(arguments).out)["rate"], row.rate) << row.words;
        }
}

TEST(FrameRate, ThatHasNoEffectIsSaidToHaveNone) {
    for (const char* content : {kSubViewer20, kSubViewer10, kDvb}) {
        const TempFile file(content, ".sub");
        for (const char* fps : {"25", "50"})
            EXPECT_EQ(line(runVxsub({"info", "--fps", fps, file.path()}).out, "Frame rate"),
                      "given, but without effect on the times")
                << content;
        EXPECT_EQ(line(runVxsub({"info", file.path()}).out, "Frame rate"), "");
    }
}

TEST(FrameRate, IsANumberFrom1To999) {
    const TempFile file(kMicroDvd, ".sub");
    for (const char* fps : {"0", "0.999", "1000", "fast", "", "25.", ".5", "-25", "25,5", "23.9761", "1e1", "+25"}) {
        const Outcome outcome = runVxsub({"info", "--fps", fps, file.path()});
        EXPECT_EQ(outcome.status, 2) << fps;
        EXPECT_EQ(outcome.out, "") << fps;
    }
}

TEST(Track, OfATextFileIsOneAlone) {
    const TempFile file(kSubViewer20, ".sub");
    EXPECT_EQ(runVxsub({"list", "--track", "0", file.path()}).out, runVxsub({"list", file.path()}).out);
    for (const char* command : {"list", "play"}) {
        const Outcome outcome = runVxsub({command, "--track", "1", file.path()});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "vxsub: "s + file.path() + ": there is no track 1; its only one is 0\n");
    }
    EXPECT_EQ(runVxsub({"list", "--track", "-1", file.path()}).status, 2);
}

TEST(SubFile, PointsToTheIndexBesideIt) {
    const TempFile file(kSubViewer20, ".sub");
    const std::string path = file.path(), stem = path.substr(0, path.size() - 3);
    const TempFile other("\x00\x00\x01\xBA"s, ".sub");
    const std::string otherPath = other.path(), otherStem = otherPath.substr(0, otherPath.size() - 3);
    for (const char* extension : {"idx", "IDX"}) {
        for (const std::string& index : {stem + extension, otherStem + extension}) fclose(fopen(index.c_str(), "w"));
        const Outcome opened = runVxsub({"list", path});
        EXPECT_EQ(opened.status, 0);
        EXPECT_EQ(opened.err,
                  "vxsub: " + path + ": " + stem + extension + " lies beside it; a VobSub pair is opened by that\n");
        EXPECT_NE(opened.out, "");
        const Outcome refused = runVxsub({"list", otherPath});
        EXPECT_EQ(refused.status, 1);
        EXPECT_NE(refused.err.find("; " + otherStem + extension + " lies beside it; a VobSub pair"), std::string::npos)
            << refused.err;
        EXPECT_EQ(runVxsub({"list", "--type", "sv20", path}).err, "") << "the dialect was chosen";
        for (const std::string& index : {stem + extension, otherStem + extension}) unlink(index.c_str());
    }
    EXPECT_EQ(runVxsub({"list", path}).err, "");
}

TEST(OpenEnds, LastUntilTheNextEntry) {
    const TempFile file(kSmi, ".smi");
    EXPECT_EQ(runVxsub({"at", file.path(), "30s"}).out, "00:00:30,000  entry 0 (00:00:01,000 --> the next)\nHello,\n");
    EXPECT_EQ(json::parse(runVxsub({"list", "--json", file.path()}).out)["entries"][1]["end"], nullptr);
    EXPECT_EQ(line(runVxsub({"info", file.path()}).out, "Last start"), "00:01:01,500");
    EXPECT_EQ(runVxsub({"play", "--speed", "1e6", file.path()}).out,
              "00:00:01,000  entry 0  Hello,\n"
              "00:01:01,500  entry 1  Bye.\n");
}

TEST(Push, ShowsWhatTheQueueAnswers) {
    const TempFile file(
        "00:00:02,000 --> 00:00:03,000\nsecond {b}line\n\n"
        "00:00:00,500 --> 00:00:01,500\nfirst\nof two\n\n"
        "00:00:09,000 --> 00:00:10,000\ncaf\xE9 !\n\n",
        ".srt");
    const Outcome outcome = runVxsub({"push", "--speed", "1e6", file.path()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out,
              "00:00:00,000  push  entry 1 (00:00:00,500 --> 00:00:01,500), 1 queued\n"
              "00:00:00,500  show  tag 500 (until 00:00:01,500)  first\\nof two\n"
              "00:00:01,000  push  entry 0 (00:00:02,000 --> 00:00:03,000), 2 queued\n"
              "00:00:01,500  show  nothing\n"
              "00:00:02,000  show  tag 2000 (until 00:00:03,000)  second line\n"
              "00:00:03,000  show  nothing\n"
              "00:00:08,000  push  entry 2 (00:00:09,000 --> 00:00:10,000), 1 queued, 2 dropped\n"
              "00:00:09,000  show  tag 9000 (until 00:00:10,000)  café !\n"
              "00:00:10,000  show  nothing\n");
}

TEST(Push, AJumpShowsTheFlush) {
    const TempFile file(
        "00:00:01,000 --> 00:00:05,000\none\n\n"
        "00:00:02,000 --> 00:00:05,000\ntwo\n\n",
        ".srt");
    EXPECT_EQ(
        runVxsub({"push", "--speed", "1e6", "--jump", "2.5s", file.path()}).out,
        "00:00:00,000  push  entry 0 (00:00:01,000 --> 00:00:05,000), 1 queued\n"
        "00:00:01,000  push  entry 1 (00:00:02,000 --> 00:00:05,000), 2 queued\n"
        "00:00:01,000  show  tag 1000 (until 00:00:05,000)  one\n"
        "00:00:02,500  jump  to 00:00:00,000\n"
        "00:00:00,000  show  nothing\n"
        "00:00:00,000  push  entry 0 (00:00:01,000 --> 00:00:05,000), 1 queued, 2 dropped: the time has gone back\n"
        "00:00:01,000  push  entry 1 (00:00:02,000 --> 00:00:05,000), 2 queued\n"
        "00:00:01,000  show  tag 1000 (until 00:00:05,000)  one\n"
        "00:00:05,000  show  nothing\n");
}

TEST(Push, NeedsTextsAndATime) {
    const TempFile empty(kMicroDvd, ".srt"), file(kSubViewer20, ".sub");
    EXPECT_EQ(runVxsub({"push", empty.path()}).out, empty.path() + ": no entries\n"s);
    EXPECT_EQ(runVxsub({"push", "--jump", "soon", file.path()}).status, 2);
    EXPECT_EQ(runVxsub({"push", "--speed", "0", file.path()}).status, 2);
}

}  // namespace
