// vxsub check as scripts use it.
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/support/Interpose.h"
#include "tests/vxsub/Program.h"

namespace {

using namespace std::string_literals;
using nlohmann::json;
using test::Outcome;
using test::runVxsub;
using test::TempFile;

const std::string kGood = "1\r\n00:00:01,000 --> 00:00:02,000\r\na\r\n\r\n";
const std::string kOdd = "1\r\n00:00:01,000 --> 00:00:02,000\r\n{\\an8}a\r\n\r\n";
std::string bad(int entries) {
    std::string file = kGood;
    for (int i = 0; i < entries; ++i)
        file += "\r\n00:01:0" + std::to_string(i) + " --> 00:01:0" + std::to_string(i) + ",900\r\nb\r\n\r\n";
    return file;
}

/// Files in a folder of their own.
class Folder {
public:
    Folder() {
        char path[] = "/tmp/vxsub-check-XXXXXX";
        if (mkdtemp(path) == nullptr) abort();
        mPath = path;
    }
    ~Folder() {
        for (auto name = mNames.rbegin(); name != mNames.rend(); ++name) remove(name->c_str());
        rmdir(mPath.c_str());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    void addFolder(const std::string& name) {
        mNames.push_back(mPath + "/" + name);
        mkdir(mNames.back().c_str(), 0755);
    }
    void add(const std::string& name, const std::string& bytes) {
        mNames.push_back(mPath + "/" + name);
        FILE* const file = fopen(mNames.back().c_str(), "wb");
        if (file == nullptr) abort();
        fwrite(bytes.data(), 1, bytes.size(), file);
        fclose(file);
    }
    const std::string& path() const { return mPath; }

private:
    std::string mPath;
    std::vector<std::string> mNames;
};

/// Without the folder's name.
std::string shortened(std::string text, const std::string& path) {
    for (size_t at = text.find(path); at != text.npos; at = text.find(path)) text.erase(at, path.size());
    return text;
}

TEST(CheckProgram, TellsTheFirstThreePlacesOfACause) {
    const TempFile file(bad(5), ".srt");
    const Outcome outcome = runVxsub({"check", file.path()});
    EXPECT_EQ(3, outcome.status);
    EXPECT_EQ("", outcome.err);
    EXPECT_EQ(
        ":6: entry 2 at 0:01:00,000 is not shown: [srt-no-fraction] A time line without milliseconds is not "
        "recognised, "
        "and its entry is lost. Mend: Write three digits of milliseconds behind both times: 00:00:01,000.\n"
        ":10: entry 3 at 0:01:01,000 is not shown: [srt-no-fraction]\n"
        ":14: entry 4 at 0:01:02,000 is not shown: [srt-no-fraction]\n"
        ": 2 more of [srt-no-fraction]\n"
        ": 1 of 6 entries show as meant (SubRip, ASCII)\n",
        shortened(outcome.out, file.path()));
    EXPECT_NE(std::string::npos, runVxsub({"check", "--all", file.path()}).out.find(":22: entry 6 at"));
}

TEST(CheckProgram, ExitStatus) {
    const TempFile good(kGood, ".srt"), odd(kOdd, ".srt"), lost(bad(1), ".srt"),
        picture("\x89PNG\r\n\x1A\n\0"s, ".srt"), empty("", ".srt"),
        vtt("WEBVTT\n\n00:01.000 --> 00:02.000\na\n", ".vtt");
    const struct {
        std::vector<std::string> arguments;
        int status;
    } kRows[] = {
        {{good.path()}, 0},
        {{odd.path()}, 0},
        {{"--strict", good.path()}, 0},
        {{"--strict", odd.path()}, 3},
        {{lost.path()}, 3},
        {{vtt.path()}, 3},
        {{picture.path()}, 1},
        {{empty.path()}, 1},
        {{"/no/such.srt"}, 1},
        {{good.path(), odd.path()}, 0},
        {{good.path(), lost.path(), odd.path()}, 3},
        {{picture.path(), lost.path()}, 1},
        {{}, 2},
        {{"--jobs", "0", good.path()}, 2},
        {{"--encoding", "no-such", good.path()}, 2},
        {{"--surface", "big", good.path()}, 2},
    };
    for (const auto& row : kRows) {
        std::vector<std::string> arguments = {"check"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        EXPECT_EQ(row.status, runVxsub(arguments).status) << testing::PrintToString(row.arguments);
    }
    const Outcome outcome = runVxsub({"check", picture.path()});
    EXPECT_EQ("", outcome.out);
    EXPECT_EQ("vxsub: "s + picture.path() + ": is no subtitle file but a PNG picture\n", outcome.err);
}

TEST(CheckProgram, WritesJson) {
    const TempFile file(bad(1), ".srt");
    const json report = json::parse(runVxsub({"check", "--json", file.path()}).out);
    EXPECT_EQ(file.path(), report["file"]);
    EXPECT_EQ("srt", report["format"]);
    EXPECT_EQ("ASCII", report["encoding"]);
    EXPECT_EQ(2, report["meant"]);
    EXPECT_EQ(1, report["right"]);
    EXPECT_EQ(3, report["status"]);
    ASSERT_EQ(1u, report["findings"].size());
    const json& finding = report["findings"][0];
    EXPECT_EQ("srt-no-fraction", finding["name"]);
    EXPECT_EQ("entries", finding["cost"]);
    EXPECT_EQ(6, finding["line"]);
    EXPECT_EQ(41, finding["offset"]);
    EXPECT_EQ(2, finding["entry"]);
    EXPECT_EQ(60000, finding["start"]);
    EXPECT_EQ(60900, finding["end"]);
    EXPECT_TRUE(finding["sentence"].is_string() && finding["mend"].is_string());
}

TEST(CheckProgram, TellsWhatOnesDeviceMakesOfAFile) {
    const TempFile chinese("1\r\n00:00:01,000 --> 00:00:02,000\r\n\xE4\xBD\xA0\r\n\r\n", ".srt");
    EXPECT_EQ(0, runVxsub({"check", chinese.path()}).status);
    EXPECT_NE(std::string::npos, runVxsub({"check", "--language", "big5", chinese.path()}).out.find("[property-big5]"));
    const TempFile frames("\xEF\xBB\xBF{125}{150}a\r\n{250}{300}b\r\n", ".sub");
    EXPECT_NE(std::string::npos, runVxsub({"check", frames.path()}).out.find("[mdvd-rate-29]"));
    EXPECT_EQ(0, runVxsub({"check", "--fps", "25", frames.path()}).status);
    EXPECT_NE(std::string::npos, runVxsub({"check", "--fps", "23.976", frames.path()}).out.find("[mdvd-rate-rounded]"));
}

TEST(CheckProgram, TakesAnEncodingByEitherName) {
    const TempFile hebrew("1\r\n00:00:01,000 --> 00:00:02,000\r\n\xF9\xEC\xE5\xED\r\n\r\n", ".srt");
    for (const auto& arguments : {std::vector<std::string>{"--native", "8859-8"}, {"--encoding", "iso-8859-8"}}) {
        const Outcome outcome = runVxsub({"check", arguments[0], arguments[1], hebrew.path()});
        EXPECT_NE(std::string::npos, outcome.out.find("(SubRip, ISO-8859-8)")) << outcome.out;
    }
}

TEST(CheckProgram, GoesThroughFoldersInOneOrder) {
    Folder folder;
    folder.add("a.srt", kGood);
    folder.add("b.srt", bad(1));
    folder.add("notes.md", "no subtitles");
    folder.add("notes.txt", "no subtitles");
    folder.addFolder("deep");
    folder.add("deep/c.SRT", kOdd);
    folder.add("deep/d.srt", "");
    folder.add("deep/e.idx", "# VobSub index file, v7\nsize: 720x576\n");
    folder.add("deep/e.sub", "\0\0\1\xBA"s);
    const Outcome one = runVxsub({"check", "--jobs", "1", folder.path()});
    EXPECT_EQ(1, one.status);
    EXPECT_EQ("vxsub: /deep/d.srt: is no subtitle file but an empty file\n", shortened(one.err, folder.path()));
    const std::string text = shortened(one.out, folder.path());
    EXPECT_EQ(0u, text.find("/a.srt: 1 of 1 entries show as meant (SubRip, ASCII)\n/b.srt:6: "));
    EXPECT_NE(std::string::npos, text.find("\n5 files: 1 fully right, 3 with findings, 1 not checked\n"
                                           "2 of 4 entries show as meant\n"
                                           "  files  findings  cause\n"
                                           "      1         1  srt-braces-shown\n"
                                           "      1         1  srt-no-fraction\n"
                                           "      1         1  vob-no-palette\n"))
        << text;
    for (const char* jobs : {"2", "7"}) EXPECT_EQ(one.out, runVxsub({"check", "--jobs", jobs, folder.path()}).out);
    const Outcome lines = runVxsub({"check", "--json", folder.path()});
    EXPECT_EQ(5, std::count(lines.out.begin(), lines.out.end(), '\n'));
}

}  // namespace
