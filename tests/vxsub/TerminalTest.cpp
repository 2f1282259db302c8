// vxsub play on a terminal: what it draws, and how it leaves.
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "tests/support/Interpose.h"
#include "tests/support/VobSubPair.h"
#include "tests/vxsub/Program.h"
#include "tools/samples/VobSubMaker.h"

namespace {

using test::Outcome;
using test::TempFile;
using test::TerminalJob;

constexpr char kHide[] = "\x1b[?25l";
constexpr char kShow[] = "\x1b[?25h";
constexpr char kLongMovie[] = "1\n00:00:00,000 --> 10:00:00,000\nStill here.\n\n";

class Terminal : public testing::Test {
protected:
    void SetUp() override {
        if (!TerminalJob::isPossible()) GTEST_SKIP() << "no terminal can be had here (is /dev/pts mounted?)";
    }
};

bool isCursorVisible(const std::string& output) {
    const size_t hidden = output.rfind(kHide), shown = output.rfind(kShow);
    return hidden == output.npos || (shown != output.npos && shown > hidden);
}

TEST_F(Terminal, ShowsTextsInTheMiddleAboveTheProgress) {
    const TempFile file("1\n00:00:00,000 --> 00:01:00,000\nTop line\nand more\n\n", ".srt");
    TerminalJob job({"play", "--speed", "100", file.path()});  // time enough for a busy machine to draw the first frame
    const Outcome outcome = job.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find(": SubRip, 1 entry, 100 times as fast\r\n"), outcome.out.npos);
    EXPECT_NE(outcome.out.find("\r" + std::string(35, ' ') + "Top line\x1b[K"), outcome.out.npos) << outcome.out;
    EXPECT_NE(outcome.out.find("\r" + std::string(35, ' ') + "and more\x1b[K"), outcome.out.npos);
    EXPECT_NE(outcome.out.find(" 00:01:00,000  entry 0\x1b[K"), outcome.out.npos);
    EXPECT_NE(outcome.out.rfind("\r00:01:00,000 [################################]"), outcome.out.npos) << outcome.out;
    EXPECT_TRUE(isCursorVisible(outcome.out));
    EXPECT_EQ(outcome.out.substr(outcome.out.size() - strlen(kShow)), kShow);
}

TEST_F(Terminal, IsLeftCleanByEverySignalThatEndsTheProgram) {
    const TempFile file(kLongMovie, ".srt");
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGALRM, SIGABRT, SIGVTALRM, SIGXCPU,
                             SIGSYS, SIGRTMIN, SIGRTMAX}) {
        TerminalJob job({"play", file.path()});
        job.waitFor("Still here.");
        job.kill(signal);
        const Outcome outcome = job.finish();
        EXPECT_EQ(outcome.signal, signal);
        EXPECT_TRUE(isCursorVisible(outcome.out)) << strsignal(signal);
    }
}

TEST_F(Terminal, IsLeftCleanByTheKeyboard) {
    const TempFile file(kLongMovie, ".srt");
    TerminalJob job({"play", file.path()});
    job.waitFor("Still here.");
    job.type("\x03");
    const Outcome outcome = job.finish();
    EXPECT_EQ(outcome.signal, SIGINT);
    EXPECT_TRUE(isCursorVisible(outcome.out));
}

TEST_F(Terminal, IsGivenBackWhileTheProgramIsStopped) {
    const TempFile file(kLongMovie, ".srt");
    TerminalJob job({"play", file.path()});
    job.waitFor("Still here.");
    job.type("\x1a");
    job.waitUntilStopped();
    size_t seen = job.waitFor(kShow).size();
    EXPECT_TRUE(isCursorVisible(job.waitFor("")));
    job.proceed();
    const std::string& output = job.waitFor("Still here.", seen);
    EXPECT_EQ(output.substr(seen).find(kHide), 0u) << "drawn anew, below what others wrote";
    EXPECT_EQ(output.substr(seen, strlen(kHide) + 1).back(), '\r') << "without going up";
    job.kill(SIGTERM);
    const Outcome outcome = job.finish();
    EXPECT_EQ(outcome.signal, SIGTERM);
    EXPECT_TRUE(isCursorVisible(outcome.out));
}

TEST_F(Terminal, ANewSizeIsDrawnAfresh) {
    const TempFile file(kLongMovie, ".srt");
    TerminalJob job({"play", file.path()});
    const size_t seen = job.waitFor("Still here.").size();
    job.resize(10, 30);
    const std::string& output = job.waitFor("\x1b[2J\x1b[H", seen);
    job.waitFor("\r" + std::string(9, ' ') + "Still here.\x1b[K", seen);
    EXPECT_NE(output.find("\r" + std::string(9, ' ') + "Still here.\x1b[K", seen), output.npos);
    job.kill(SIGTERM);
    EXPECT_EQ(job.finish().signal, SIGTERM);
}

TEST_F(Terminal, TheSmallestOneIsDrawnOn) {
    const TempFile file("1\n00:00:00,000 --> 10:00:00,000\nA text that is much wider than that.\n中\n\n", ".srt");
    TerminalJob job({"play", file.path()});
    job.waitFor("than that.");
    for (unsigned short size = 3; size > 0; --size) {
        const size_t seen = job.waitFor("").size();
        job.resize(size, size);
        job.waitFor("\x1b[2J\x1b[H", seen);
        job.waitFor("\x1b[J", seen);
    }
    job.kill(SIGTERM);
    EXPECT_EQ(job.finish().signal, SIGTERM);
}

TEST_F(Terminal, OtherCommandsUseNoControlCharacters) {
    const TempFile file(kLongMovie, ".srt");
    for (const char* command : {"info", "list"}) {
        const Outcome outcome = TerminalJob({command, file.path()}).finish();
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out.find('\x1b'), outcome.out.npos) << command;
        EXPECT_NE(outcome.out, "");
    }
}

TEST_F(Terminal, ShowsThePaletteAsBlocksOfColour) {
    const samples::VobSub film = samples::demoVobSub();
    const test::VobSubPair pair(film.idx(), film.sub());
    const Outcome outcome = TerminalJob({"info", pair.idx()}).finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("\x1b[48;2;240;208;64m  \x1b[0mf0d040 "), outcome.out.npos) << outcome.out;
}

TEST_F(Terminal, ShowsAProgressBarWhileFilesAreChecked) {
    const TempFile good("1\r\n00:00:00,000 --> 00:01:00,000\r\na\r\n\r\n", ".srt"), empty("", ".srt");
    const Outcome outcome = TerminalJob({"check", good.path(), empty.path()}).finish();
    EXPECT_EQ(outcome.status, 1);
    const size_t bar = outcome.out.rfind("Checking [");
    ASSERT_NE(bar, outcome.out.npos) << outcome.out;
    const size_t numbers = outcome.out.find("##] 2 of 2 files, ", bar);
    EXPECT_NE(numbers, outcome.out.npos) << outcome.out;
    EXPECT_NE(outcome.out.find("/s, 0 s left", numbers), outcome.out.npos);
    EXPECT_NE(outcome.out.find(": 1 of 1 entries show as meant (SubRip, ASCII)\r\n", numbers), outcome.out.npos);
    EXPECT_NE(outcome.out.find("2 files: 1 fully right, 0 with findings, 1 not checked\r\n", numbers),
              outcome.out.npos);
    EXPECT_TRUE(isCursorVisible(outcome.out));
}

TEST_F(Terminal, ShowsAProgressBarWhilePicturesAreDrawn) {
    const samples::VobSub film = samples::demoVobSub();
    const test::VobSubPair pair(film.idx(), film.sub());
    char folder[] = "/tmp/vxsub-terminal-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string sheet = std::string(folder) + "/sheet.png";
    const Outcome outcome = TerminalJob({"sheet", pair.idx(), "-o", sheet}).finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("Drawing [" + std::string(40, '-') + "] 0 of 8"), outcome.out.npos) << outcome.out;
    EXPECT_NE(outcome.out.find("Drawing [" + std::string(40, '#') + "] 8 of 8"), outcome.out.npos) << outcome.out;
    EXPECT_NE(outcome.out.find(sheet + ": 8 entries\r\n"), outcome.out.npos);
    EXPECT_TRUE(isCursorVisible(outcome.out));
    unlink(sheet.c_str());
    rmdir(folder);
}

}  // namespace
