// vxsub as scripts and people at a prompt use it.
#include <gtest/gtest.h>
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

constexpr char kTwoEntries[] =
    "1\r\n00:00:01,000 --> 00:00:02,500\r\n<i>Hello</i>,\r\nworld!\r\n\r\n"
    "2\r\n00:01:01,500 --> 00:01:03,000\r\nBye.\r\n\r\n";

bool isOneLine(const std::string& text) { return !text.empty() && text.find('\n') == text.size() - 1; }

TEST(Usage, IsSaidInOneLineWithStatus2) {
    const TempFile file(kTwoEntries, ".srt");
    const struct {
        std::vector<std::string> arguments;
        const char* error;
    } kRows[] = {
        {{},
         "vxsub: a command is needed; there are info, list, at, play, render, sheet, push, check, fix, report (see "
         "vxsub "
         "--help)\n"},
        {{"lst"},
         "vxsub: there is no command lst; there are info, list, at, play, render, sheet, push, check, fix, report (see "
         "vxsub "
         "--help)\n"},
        {{"--foo"}, "vxsub: there is no option --foo (see vxsub --help)\n"},
        {{"list"}, "vxsub: FILE is required (see vxsub list --help)\n"},
        {{"list", "--foo", "a.srt"}, "vxsub: there is no option --foo (see vxsub list --help)\n"},
        {{"list", "a.srt", "b.srt"}, "vxsub: one argument too many: b.srt (see vxsub list --help)\n"},
        {{"list", "--type", "foo", "a.srt"}, nullptr},
        {{"list", "--type"}, nullptr},
        {{"list", "--native", "foo", "a.srt"}, nullptr},
        {{"at", file.path()}, "vxsub: TIME is required (see vxsub at --help)\n"},
        {{"at", file.path(), "soon"}, nullptr},
        {{"at", file.path(), "1.5"}, nullptr},
        {{"play", file.path(), "--speed", "0"}, nullptr},
        {{"play", file.path(), "--speed", "-1"}, nullptr},
        {{"play", file.path(), "--speed", "nan"}, nullptr},
        {{"play", file.path(), "--speed", "fast"}, nullptr},
        {{"play", file.path(), "--speed", "1000001"}, nullptr},
        {{"play", file.path(), "--from", "now"}, nullptr},
        {{"info", file.path(), "--speed", "1"}, nullptr},
    };
    for (const auto& row : kRows) {
        const Outcome outcome = runVxsub(row.arguments);
        SCOPED_TRACE(testing::PrintToString(row.arguments));
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(isOneLine(outcome.err)) << outcome.err;
        EXPECT_EQ(outcome.err.substr(0, 7), "vxsub: ");
        if (row.error != nullptr) {
            EXPECT_EQ(outcome.err, row.error);
        }
    }
}

TEST(Usage, HelpNamesEverything) {
    const Outcome help = runVxsub({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.err, "");
    for (const char* word : {"info", "list", "at", "play", "render", "sheet", "push", "SubRip", ".srt", ".ass", ".sami",
                             ".txt", ".sub", ".idx", ".sup", "by --type alone", "Exit status", "--version"})
        EXPECT_NE(help.out.find(word), help.out.npos) << word;
    EXPECT_EQ(runVxsub({"-h"}).out, help.out);
    for (const char* command : {"info", "list", "at", "play", "render", "sheet", "push"}) {
        const Outcome own = runVxsub({command, "--help"});
        EXPECT_EQ(own.status, 0) << command;
        for (const char* word : {"FILE", "--type", "--native", "--language", "--fps", "--log", "Example"})
            EXPECT_NE(own.out.find(word), own.out.npos) << command << ' ' << word;
    }
}

TEST(Usage, HelpFitsATerminal) {
    for (const char* command : {"", "info", "list", "at", "play", "render", "sheet", "push"}) {
        std::vector<std::string> arguments = {"--help"};
        if (*command != 0) arguments.insert(arguments.begin(), command);
        const std::string help = runVxsub(arguments).out;
        for (size_t begin = 0, end; (end = help.find('\n', begin)) != help.npos; begin = end + 1)
            EXPECT_LE(end - begin, 88u) << command << ": " << help.substr(begin, end - begin);
    }
}

TEST(Usage, VersionIsTheProjects) {
    const Outcome version = runVxsub({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, "vxsub " VXSUB_VERSION "\n");
}

TEST(Files, ThatCannotBeShownAreNamedInOneLineWithStatus1) {
    const TempFile unknown(kTwoEntries, ".xyz");
    const TempFile bare(kTwoEntries);
    const struct {
        std::string path;
        const char* why;
    } kRows[] = {
        {"/nowhere/movie.srt", ": No such file or directory\n"},
        {"/tmp", ": is a directory\n"},
        {"/dev/null", ": is not a regular file\n"},
        {unknown.path(), ": unknown extension .xyz; choose the format with --type (see vxsub --help)\n"},
        {bare.path(), ": no extension; choose the format with --type (see vxsub --help)\n"},
        {std::string(5000, 'x') + ".srt", ": File name too long\n"},
    };
    for (const auto& row : kRows)
        for (const char* command : {"info", "list", "play"}) {
            const Outcome outcome = runVxsub({command, row.path});
            EXPECT_EQ(outcome.status, 1) << row.path;
            EXPECT_EQ(outcome.out, "");
            EXPECT_EQ(outcome.err, "vxsub: " + row.path + row.why);
        }
    EXPECT_EQ(runVxsub({"at", "/nowhere/movie.srt", "0"}).status, 1);
}

TEST(Files, ADirectoryIsRefusedBeforeTheLibrarySeesIt) {
    const Outcome outcome = runVxsub({"info", "--log", "--type", "srt", "/tmp"});
    EXPECT_EQ(outcome.err, "vxsub: /tmp: is a directory\n");
}

TEST(Files, APipeIsNotWaitedFor) {
    const TempFile place("");
    const std::string path = place.path() + ".srt"s;
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const Outcome outcome = runVxsub({"info", path});
    unlink(path.c_str());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "vxsub: " + path + ": is a pipe, not a file on disk\n");
}

TEST(Files, AnUnreadableFileIsSaidToBe) {
    if (geteuid() == 0) GTEST_SKIP() << "root reads every file";
    const TempFile file(kTwoEntries, ".srt");
    ASSERT_EQ(chmod(file.path(), 0), 0);
    const Outcome outcome = runVxsub({"list", file.path()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "vxsub: "s + file.path() + ": Permission denied\n");
}

TEST(Files, NamesReachTheTerminalEscaped) {
    const Outcome outcome = runVxsub({"list", "/nowhere/\x1b[2J\xFF\n.srt"});
    EXPECT_EQ(outcome.err, "vxsub: /nowhere/\\x1b[2J\uFFFD\\n.srt: No such file or directory\n");
}

TEST(Files, ExtensionsMatchInAnyCaseAndTypeOverrides) {
    const TempFile upper(kTwoEntries, ".SRT");
    const TempFile other(kTwoEntries, ".srt.bak");
    EXPECT_EQ(runVxsub({"list", upper.path()}).status, 0);
    EXPECT_EQ(runVxsub({"list", other.path()}).status, 1);
    for (const char* type : {"srt", "SRT"}) {
        EXPECT_EQ(runVxsub({"list", "--type", type, other.path()}).out, runVxsub({"list", upper.path()}).out);
        EXPECT_EQ(runVxsub({"--type", type, "list", other.path()}).out, runVxsub({"list", upper.path()}).out);
    }
}

TEST(Files, LongPathsOpenToo) {
    const TempFile file(kTwoEntries, ".srt");
    std::string path = file.path();
    path.insert(path.rfind('/'), std::string(600, '/'));
    EXPECT_EQ(runVxsub({"list", path}).status, 0);
}

TEST(Files, ThatAreNoSubtitlesAreSaidToBeNone) {
    std::string noise;
    for (unsigned i = 0, x = 1; i < 5000; ++i, x = x * 1664525 + 1013904223) noise += char(x >> 24);
    const struct {
        std::string content;
        const char* nature;
    } kRows[] = {
        {"", "an empty file"},
        {noise, "binary data"},
        {"\x7F"
         "ELF\2\1\1\0\0\0"s +
             std::string(100, '\0'),
         "an executable"},
        {"\x89PNG\r\n\x1A\n\0\0\0\rIHDR"s, "a PNG picture"},
        {"Dear reader,\nall the best.\n", "text without times of any known form"},
    };
    for (const auto& row : kRows)
        for (const char* extension : {".srt", ".ass", ".smi", ".txt"})
            for (const char* command : {"info", "list", "play"}) {
                const TempFile file(row.content, extension);
                const Outcome outcome = runVxsub({command, file.path()});
                EXPECT_EQ(outcome.status, 1) << row.nature;
                EXPECT_EQ(outcome.out, "");
                EXPECT_EQ(outcome.err, "vxsub: "s + file.path() + ": is no subtitle file but " + row.nature + "\n");
            }
}

// A title page, or subtitles of another format than the name says.
constexpr char kNoEntries[] = "{0}{25}Hello\r\n{50}{75}Bye\r\n";

TEST(NoEntries, AreSaidToBeNone) {
    const TempFile file(kNoEntries, ".srt");
    const std::string path = file.path();
    EXPECT_EQ(runVxsub({"list", path}).out, path + ": no entries\n");
    EXPECT_EQ(runVxsub({"play", path}).out, path + ": no entries\n");
    EXPECT_EQ(runVxsub({"at", path, "5s"}).out, "00:00:05,000  nothing is shown (the file has no entries)\n");
    const std::string info = runVxsub({"info", path}).out;
    EXPECT_NE(info.find("Entries:      0 (nothing will be shown)\n"), info.npos);
    EXPECT_NE(info.find("Shown as meant: 0 of 2 entries; vxsub check " + path + " says why\n"), info.npos) << info;
    EXPECT_EQ(json::parse(runVxsub({"list", "--json", path}).out)["entries"], json::array());
    const json facts = json::parse(runVxsub({"info", "--json", path}).out);
    EXPECT_EQ(facts["entries"], 0);
    EXPECT_EQ(facts["times"], json({{"first", nullptr}, {"last", nullptr}}));
    const json at = json::parse(runVxsub({"at", "--json", path, "5s"}).out);
    EXPECT_EQ(at["entry"], nullptr);
    EXPECT_EQ(at["why"], "the file has no entries");
}

TEST(Info, TellsFormatEncodingEntriesAndTimes) {
    const TempFile file(kTwoEntries, ".srt");
    const Outcome outcome = runVxsub({"info", file.path()});
    EXPECT_EQ(outcome.status, 0);
    const size_t opened = outcome.out.find("Opened in:    ");
    ASSERT_NE(opened, outcome.out.npos);
    EXPECT_EQ(outcome.out.substr(0, opened), "File:         "s + file.path() + " (" +
                                                 std::to_string(sizeof kTwoEntries - 1) +
                                                 " bytes)\n"
                                                 "Format:       SubRip\n"
                                                 "Encoding:     8-bit, no byte-order mark\n"
                                                 "              plain ASCII, the same in every encoding\n"
                                                 "Entries:      2\n"
                                                 "First start:  00:00:01,000\n"
                                                 "Last end:     00:01:03,000\n");
    EXPECT_EQ(outcome.out.substr(outcome.out.find(" ms\n", opened)), " ms\nShown as meant: 2 of 2 entries\n");
}

TEST(Info, JsonHoldsTheSame) {
    const TempFile file(kTwoEntries, ".srt");
    json facts = json::parse(runVxsub({"info", "--json", file.path()}).out);
    EXPECT_GT(facts["opened"], 0.0);
    facts.erase("opened");
    EXPECT_EQ(facts, json({{"file", file.path()},
                           {"format", "srt"},
                           {"encoding", "native"},
                           {"bytes", sizeof kTwoEntries - 1},
                           {"texts", {{"encoding", "utf-8"}, {"from", "ascii"}}},
                           {"entries", 2},
                           {"times", {{"first", 1000}, {"last", 63000}}},
                           {"marks", json::object()},
                           {"meant", {{"entries", 2}, {"right", 2}}}}));
}

TEST(Info, SaysHowManyEntriesAreShownAsMeant) {
    const TempFile file("1\n00:00:01,5 --> 00:00:02,000\na\n\n2\n00:00:03,000 --> 00:00:04,000\nb\n\n", " 'a'.srt");
    const std::string path = file.path(), out = runVxsub({"info", path}).out;
    const std::string word = "'" + path.substr(0, path.size() - 7) + "'\\\\''a'\\\\''.srt'";
    EXPECT_NE(out.find("Shown as meant: 1 of 2 entries; vxsub check " + word + " says why\n"), out.npos) << out;
    const json meant = json::parse(runVxsub({"info", "--json", path}).out)["meant"];
    EXPECT_EQ(meant, json({{"entries", 2}, {"right", 1}}));
    const std::string log = runVxsub({"info", "--log", path}).err;
    const std::string enter = "BeginParse -> Enter";
    EXPECT_EQ(log.find(enter), log.rfind(enter)) << "the library is seen to open it once";
}

TEST(Info, OfWhatIsNotSupportedShowsNothingAsMeant) {
    const TempFile file("WEBVTT\n\n00:01.000 --> 00:02.000\nHello\n", ".srt");
    const std::string path = file.path(), out = runVxsub({"info", path}).out;
    EXPECT_NE(out.find("Shown as meant: 0 of 0 entries; vxsub check " + path + " says why\n"), out.npos) << out;
}

TEST(Info, SaysWhatWasGuessed) {
    const std::string line = "1\r\n00:00:01,000 --> 00:00:02,000\r\n";
    const struct {
        std::string text;
        std::vector<std::string> options;
        const char* words;
    } kRows[] = {
        {line + "caf\xC3\xA9\r\n\r\n", {}, "texts shown as UTF-8, because the whole file is well-formed\n"},
        {line + "caf\xE9, d\xE9j\xE0 vu, \x93na\xEFve\x94\r\n\r\n",
         {},
         "texts shown as Windows-1252 (western Europe), "},
        {line + "\xCF\xF0\xE8\xE2\xE5\xF2, \xEC\xE8\xF0! \xCA\xE0\xEA \xE4\xE5\xEB\xE0?\r\n\r\n",
         {},
         "texts shown as WINDOWS-1251, guessed from the whole file; choose another with --native\n"},
        {line + "\xCF\xF0\xE8\r\n\r\n", {"--native", "koi8-r"}, "texts shown as KOI8-R, as chosen\n"},
        {line + "caf\xE9.\r\n\r\n", {"--language", "big5"}, "texts shown as Big5 (traditional Chinese), as chosen\n"},
        {line + "caf\xE9.\r\n\r\n", {"--native", "1252"}, "texts shown as Windows-1252 (western Europe), as chosen\n"},
        {"\xEF\xBB\xBF" + line + "caf\xC3\xA9\r\n\r\n", {}, "UTF-8 (byte-order mark)\n"},
        {test::utf16le(line + "caf\xE9\r\n\r\n"), {}, "UTF-16, little-endian (byte-order mark)\n"},
        {test::utf16be(line + "caf\xE9\r\n\r\n"), {}, "UTF-16, big-endian (byte-order mark)\n"},
        {line + "a\r\n\r\n" + line + "b\r\n\r\n", {}, "2 entries share a start with another\n"},
        {"2\n00:00:09,000 --> 00:00:08,000\na\n\n" + line + "b\r\n\r\n", {}, "1 entry goes back in time\n"},
        {"2\n00:00:09,000 --> 00:00:08,000\na\n\n", {}, "1 entry ends before the start\n"},
        {"2\n00:00:09,000 --> 00:00:09,000\na\n\n", {}, "1 entry ends at the start\n"},
        {line + "a\r\n\r\n2\r\n00:00:01,500 --> 00:00:02,000\r\nb\r\n\r\n",
         {},
         "1 entry is hidden by another before the end\n"},
    };
    for (const auto& row : kRows) {
        const TempFile file(row.text, ".srt");
        std::vector<std::string> arguments = {"info", file.path()};
        arguments.insert(arguments.end(), row.options.begin(), row.options.end());
        const Outcome outcome = runVxsub(arguments);
        EXPECT_NE(outcome.out.find(row.words), outcome.out.npos) << row.words << "\n" << outcome.out;
    }
}

TEST(List, WritesAnEntryPerLine) {
    const TempFile file(kTwoEntries, ".srt");
    const Outcome outcome = runVxsub({"list", file.path()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out,
              "    0     00:00:01,000 --> 00:00:02,500  Hello,\\nworld!\n"
              "    1     00:01:01,500 --> 00:01:03,000  Bye.\n");
}

TEST(List, MarksEntriesAndExplainsTheMarks) {
    const TempFile file(
        "00:00:05,000 --> 00:00:06,000\na\n\n"
        "00:00:05,000 --> 00:00:06,000\nb\n\n"
        "00:00:03,000 --> 00:00:02,000\nc\n\n"
        "00:00:07,000 --> 00:00:08,000\nd\n\n"
        "00:00:09,000 --> 00:00:09,000\ne\n\n"
        "00:00:10,000 --> 00:00:12,000\nf\n\n"
        "00:00:11,000 --> 00:00:12,000\ng\n\n",
        ".srt");
    const std::string out = runVxsub({"list", file.path()}).out;
    EXPECT_EQ(out.substr(0, out.find("\n\n") + 1),
              "    0 =   00:00:05,000 --> 00:00:06,000  a\n"
              "    1 =   00:00:05,000 --> 00:00:06,000  b\n"
              "    2  <! 00:00:03,000 --> 00:00:02,000  c\n"
              "    3     00:00:07,000 --> 00:00:08,000  d\n"
              "    4   0 00:00:09,000 --> 00:00:09,000  e\n"
              "    5   ~ 00:00:10,000 --> 00:00:12,000  f\n"
              "    6     00:00:11,000 --> 00:00:12,000  g\n");
    for (const char* line : {"\n\n=  shares", "\n<  starts", "\n!  ends", "\n0  ends when", "\n~  another"})
        EXPECT_NE(out.find(line), out.npos) << line;
    const json list = json::parse(runVxsub({"list", "--json", file.path()}).out);
    EXPECT_EQ(list["entries"][0]["marks"], json({"shares-start"}));
    EXPECT_EQ(list["entries"][2]["marks"], json({"back-in-time", "ends-before-start"}));
    EXPECT_EQ(list["entries"][3]["marks"], json::array());
    EXPECT_EQ(list["entries"][4]["marks"], json({"zero-length"}));
    EXPECT_EQ(list["entries"][5]["marks"], json({"overlap"}));
    const json marks = json::parse(runVxsub({"info", "--json", file.path()}).out)["marks"];
    EXPECT_EQ(
        marks,
        json({{"shares-start", 2}, {"back-in-time", 1}, {"ends-before-start", 1}, {"zero-length", 1}, {"overlap", 1}}));
}

TEST(List, JsonHoldsTheSame) {
    const TempFile file(kTwoEntries, ".srt");
    const Outcome outcome = runVxsub({"list", "--json", file.path()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(
        json::parse(outcome.out),
        json({{"file", file.path()},
              {"format", "srt"},
              {"encoding", "native"},
              {"entries",
               {{{"index", 0}, {"start", 1000}, {"end", 2500}, {"text", "Hello,\nworld!"}, {"marks", json::array()}},
                {{"index", 1}, {"start", 61500}, {"end", 63000}, {"text", "Bye."}, {"marks", json::array()}}}}}));
}

TEST(List, ShowsNothingThatATerminalActsOn) {
    const TempFile file("1\n00:00:01,000 --> 00:00:02,000\n\x1b]0;title\x07\tx\\y\x7F\n\n", ".srt");
    EXPECT_EQ(runVxsub({"list", file.path()}).out,
              "    0     00:00:01,000 --> 00:00:02,000  \\x1b]0;title\\x07\\tx\\\\y\\x7f\n");
}

TEST(List, IsValidUtf8WhateverTheFileHolds) {
    std::string every;
    for (int c = 255; c > 0; --c)
        if (c != '\n' && c != '\r') every += char(c);
    const std::string line = "1\r\n00:00:01,000 --> 00:00:02,000\r\n", end = "\r\n\r\n";
    const std::string kFiles[] = {
        line + every + end,
        "\xEF\xBB\xBF" + line + every + end,
        "\xEF\xBB\xBF" + line + "\xC3\xE4\xB8\xF0\x9F\x98\x80\xED\xA0\x80" + end,
        test::utf16le(line) + "\x3D\xD8\x00\xDE\x00\xDC\x41\x00"s + test::utf16le(end, false),
        test::utf16be(line) + "\xD8\x3D\xDE\x00\xDC\x00\x00\x41"s + test::utf16be(end, false),
    };
    for (const std::string& content : kFiles)
        for (const char* native : {"utf-8", "gbk", "big5", "1252", "1256", "8859-8"}) {
            const TempFile file(content, ".srt");
            const Outcome outcome = runVxsub({"list", "--json", "--native", native, file.path()});
            EXPECT_EQ(outcome.status, 0);
            const json list = json::parse(outcome.out, nullptr, false);  // refuses what is not UTF-8
            ASSERT_FALSE(list.is_discarded()) << native << "\n" << outcome.out;
            EXPECT_EQ(list["entries"].size(), 1u);
            const std::string lines = runVxsub({"list", "--native", native, file.path()}).out;
            EXPECT_TRUE(json::accept(json(lines).dump(-1, ' ', false, json::error_handler_t::ignore)));
            EXPECT_NO_THROW((void)json(lines).dump()) << native;
            EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 1) << lines;
        }
}

TEST(List, JoinsSurrogatePairsAndReplacesLoneHalves) {
    const std::string line = "1\r\n00:00:01,000 --> 00:00:02,000\r\n";
    const TempFile file(test::utf16le(line) + "\x3D\xD8\x00\xDE\x00\xDC\x41\x00"s + test::utf16le("\r\n\r\n", false),
                        ".srt");
    EXPECT_EQ(runVxsub({"list", file.path()}).out, "    0     00:00:01,000 --> 00:00:02,000  😀\uFFFDA\n");
}

TEST(List, FileNamesThatAreNotUtf8StillGiveValidJson) {
    const TempFile file(kTwoEntries, "\xFF.srt");
    const json list = json::parse(runVxsub({"list", "--json", file.path()}).out, nullptr, false);
    ASSERT_FALSE(list.is_discarded());
    EXPECT_NE(list["file"].get<std::string>().find("\uFFFD.srt"), std::string::npos);
}

TEST(List, ManyEntriesComeOutWhole) {
    std::string content;
    for (int i = 0; i < 20000; ++i) content += "00:00:01,000 --> 00:00:02,000\nx\n\n";
    const TempFile file(content, ".srt");
    const std::string out = runVxsub({"list", file.path()}).out;
    EXPECT_NE(out.find("\n19999 =   00:00:01,000 --> 00:00:02,000  x\n"), out.npos);
    EXPECT_EQ(json::parse(runVxsub({"list", "--json", file.path()}).out)["entries"].size(), 20000u);
}

TEST(Raw, ShowsAllUnitsThatTheLibraryCounted) {
    // A brace group that closes a line ends what a reader of the text sees; two 0 bytes are counted for it.
    const TempFile file("1\r\n00:00:01,000 --> 00:00:02,000\r\nab{y:i}\r\ncd\r\n\r\n", ".srt");
    EXPECT_EQ(runVxsub({"list", file.path()}).out, "    0     00:00:01,000 --> 00:00:02,000  ab\n");
    EXPECT_EQ(runVxsub({"list", "--raw", file.path()}).out, "    0     00:00:01,000 --> 00:00:02,000  ab\\0\\0\\ncd\n");
    EXPECT_EQ(runVxsub({"at", "--raw", file.path(), "1s"}).out,
              "00:00:01,000  entry 0 (00:00:01,000 --> 00:00:02,000)\nab\\0\\0\\ncd\n");
    const json list = json::parse(runVxsub({"list", "--json", "--raw", file.path()}).out);
    EXPECT_EQ(list["entries"][0]["units"], json({97, 98, 0, 0, 10, 99, 100}));
    EXPECT_EQ(list["entries"][0]["text"], "ab\0\0\ncd"s);
    EXPECT_EQ(json::parse(runVxsub({"list", "--json", file.path()}).out)["entries"][0].count("units"), 0u);
}

TEST(At, SaysWhatIsShownOrThatNothingIs) {
    const TempFile file(kTwoEntries, ".srt");
    const struct {
        const char* time;
        const char* says;
    } kRows[] = {
        {"0", "00:00:00,000  nothing is shown (entry 0 starts at 00:00:01,000)\n"},
        {"999", "00:00:00,999  nothing is shown (entry 0 starts at 00:00:01,000)\n"},
        {"1000", "00:00:01,000  entry 0 (00:00:01,000 --> 00:00:02,500)\nHello,\nworld!\n"},
        {"2499", "00:00:02,499  entry 0 (00:00:01,000 --> 00:00:02,500)\nHello,\nworld!\n"},
        {"2.5s", "00:00:02,500  nothing is shown (entry 0 ended at 00:00:02,500, entry 1 starts at 00:01:01,500)\n"},
        {"1:01.5", "00:01:01,500  entry 1 (00:01:01,500 --> 00:01:03,000)\nBye.\n"},
        {"00:01:03,000", "00:01:03,000  nothing is shown (entry 1 ended at 00:01:03,000, and it is the last)\n"},
        {"4294967295", "1193:02:47,295  nothing is shown (entry 1 ended at 00:01:03,000, and it is the last)\n"},
    };
    for (const auto& row : kRows) {
        const Outcome outcome = runVxsub({"at", file.path(), row.time});
        EXPECT_EQ(outcome.status, 0) << row.time;
        EXPECT_EQ(outcome.out, row.says) << row.time;
    }
}

TEST(At, JsonHoldsTheSame) {
    const TempFile file(kTwoEntries, ".srt");
    json expected = {{"file", file.path()}, {"format", "srt"}, {"encoding", "native"}, {"time", 1500}};
    expected["entry"] = {{"index", 0}, {"start", 1000}, {"end", 2500}, {"text", "Hello,\nworld!"}};
    EXPECT_EQ(json::parse(runVxsub({"at", "--json", file.path(), "1500"}).out), expected);
    expected["entry"] = nullptr;
    expected["time"] = 0;
    expected["why"] = "entry 0 starts at 00:00:01,000";
    EXPECT_EQ(json::parse(runVxsub({"at", "--json", file.path(), "0"}).out), expected);
}

TEST(At, AnEntryWithoutTextIsNotAGap) {
    const TempFile file("1\r\n00:00:01,000 --> 00:00:02,000\r\n\r\n2\r\n00:00:03,000 --> 00:00:04,000\r\nx\r\n\r\n",
                        ".srt");
    EXPECT_EQ(runVxsub({"at", file.path(), "1s"}).out,
              "00:00:01,000  entry 0 (00:00:01,000 --> 00:00:02,000)\n(no text)\n");
}

TEST(Play, WritesALinePerChangeToAPipe) {
    const TempFile file(
        "00:00:01,000 --> 00:00:02,500\nHello,\x07\nworld!\n\n"
        "00:00:02,500 --> 00:00:09,000\nlong\n\n"
        "00:00:03,000 --> 00:00:04,000\nshort\n\n"
        "00:00:05,000 --> 00:00:05,000\nnever\n\n"
        "00:10:00,000 --> 00:10:01,000\nlast\n\n",
        ".srt");
    const Outcome outcome = runVxsub({"play", "--speed", "1000000", file.path()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out,
              "00:00:01,000  entry 0  Hello,\\x07\\nworld!\n"
              "00:00:02,500  entry 1  long\n"
              "00:00:03,000  entry 2  short\n"
              "00:00:04,000  nothing is shown\n"  // entry 1 still runs, but entry 2 began last
              "00:10:00,000  entry 4  last\n"
              "00:10:01,000  nothing is shown\n");
    EXPECT_EQ(runVxsub({"play", "--speed", "1e6", "--from", "3.5s", file.path()}).out,
              "00:00:03,500  entry 2  short\n"
              "00:00:04,000  nothing is shown\n"
              "00:10:00,000  entry 4  last\n"
              "00:10:01,000  nothing is shown\n");
    EXPECT_EQ(runVxsub({"play", "--from", "10:01", file.path()}).out,
              file.path() + ": nothing is shown from 00:10:01,000 on\n"s);
}

TEST(Play, RunsAsFastAsItIsTold) {
    const TempFile file("1\n00:00:30,000 --> 00:01:00,000\nx\n\n", ".srt");
    const auto seconds = [&](const char* speed) {
        timespec begin, end;
        clock_gettime(CLOCK_MONOTONIC, &begin);
        EXPECT_EQ(runVxsub({"play", "--speed", speed, file.path()}).status, 0);
        clock_gettime(CLOCK_MONOTONIC, &end);
        return double(end.tv_sec - begin.tv_sec) + double(end.tv_nsec - begin.tv_nsec) / 1e9;
    };
    EXPECT_GE(seconds("1200"), 0.05);  // a minute
}

TEST(Output, AClosedPipeEndsEveryCommandQuietly) {
    std::string content;
    for (int i = 0; i < 20000; ++i)
        content += "00:00:00,000 --> 50:00:00,000\nA text of some length, so that pipes fill up.\n\n";
    content += "100:00:00,000 --> 101:00:00,000\nfar away\n\n";
    const TempFile file(content, ".srt");
    // The first line goes through; what comes later finds nobody. The next change of the play is hours away.
    const char kPipeline[] = "{ \"$@\"; echo status $? >&2; } | head -n 1 >/dev/null";
    for (const char* command : {"list", "play"}) {
        const Outcome outcome = runVxsub({command, file.path()}, kPipeline);
        EXPECT_EQ(outcome.err, "status 0\n") << command;
    }
    EXPECT_EQ(runVxsub({"list", "--json", file.path()}, kPipeline).err, "status 0\n");
    EXPECT_EQ(runVxsub({"--help"}, "{ \"$@\"; echo status $? >&2; } | true").err, "status 0\n");
}

TEST(Output, AFullDiskIsAnError) {
    const TempFile file(kTwoEntries, ".srt");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"list", file.path()}, {"info", file.path()}, {"--help"}, {"--version"}}) {
        const Outcome outcome = runVxsub(arguments, "\"$@\" >/dev/full");
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "vxsub: cannot write the output: No space left on device\n");
    }
}

TEST(Output, ClosedDescriptorsDoNoHarm) {
    const TempFile file(kTwoEntries, ".srt");
    const Outcome closed = runVxsub({"list", file.path()}, "\"$@\" >&-");
    EXPECT_EQ(closed.status, 1);
    EXPECT_EQ(closed.err, "vxsub: cannot write the output: Bad file descriptor\n");
    EXPECT_EQ(runVxsub({"list", file.path()}, "\"$@\" <&- 2>&-").out, runVxsub({"list", file.path()}).out);
}

TEST(Log, IsTheLibrarysOwnOnStandardError) {
    const TempFile file(kTwoEntries, ".srt");
    EXPECT_EQ(runVxsub({"info", file.path()}).err, "");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"info", "--log", file.path()}, {"--log", "info", file.path()}}) {
        const Outcome outcome = runVxsub(arguments);
        EXPECT_EQ(outcome.err.find("D/SubtitleParserSRT: Zorb_MediaSubtitleParserSRT::BeginParse -> Enter\n"), 0u)
            << outcome.err;
        EXPECT_NE(outcome.err.find("D/SubtitleFileProcess: Open fd ="), outcome.err.npos);
        EXPECT_NE(outcome.err.find("D/SubtitleParserSRT: Zorb_MediaSubtitleParserSRT::BeginParse -> Exit\n"),
                  outcome.err.npos);
        EXPECT_EQ(outcome.err.find("\n\n"), outcome.err.npos);
        EXPECT_EQ(outcome.out.find("Zorb"), outcome.out.npos);
    }
}

TEST(Language, Big5KeepsPairsWhole) {
    // 0x85 is no Big5 byte; the pair's second byte is a letter.
    const TempFile file("1\r\n00:00:01,000 --> 00:00:02,000\r\n\x85\xA4\x40\r\n\r\n", ".srt");
    const auto text = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"list", "--json", file.path()});
        return json::parse(runVxsub(arguments).out)["entries"][0]["text"];
    };
    EXPECT_EQ(text({}), "…¤@");
    EXPECT_EQ(text({"--language", "big5"}), "一");
    EXPECT_EQ(text({"--language", "BIG5-HK"}), "一");
    EXPECT_EQ(text({"--language", "big5", "--native", "1252"}), "¤@");
    EXPECT_EQ(text({"--language", "gbk"}), "…¤@");
}

TEST(Demo, MovieShowsWhatANewcomerShouldSee) {
    const Outcome outcome = runVxsub({"list", "--json", VXSUB_DEMO});
    const json entries = json::parse(outcome.out)["entries"];
    ASSERT_EQ(entries.size(), 20u);
    bool hasGap = false, hasOverlap = false;
    for (size_t i = 0; i < entries.size(); ++i) {
        const std::string text = entries[i]["text"];
        EXPECT_EQ(text.find_first_of("<>{}\r"), entries[i]["start"] == 78000 ? text.find('<') : text.npos) << text;
        EXPECT_NE(text, "");
        const bool isCutShort = i + 1 < entries.size() && entries[i + 1]["start"] < entries[i]["end"];
        EXPECT_EQ(entries[i]["marks"], isCutShort ? json({"overlap"}) : json::array());
        if (i == 0) continue;
        hasGap |= entries[i]["start"] > entries[i - 1]["end"];
        hasOverlap |= entries[i]["start"] < entries[i - 1]["end"];
    }
    EXPECT_TRUE(hasGap);
    EXPECT_TRUE(hasOverlap);
    EXPECT_EQ(entries.back()["end"], 90000);
}

}  // namespace
