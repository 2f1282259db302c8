// The transcripts in docs/inspector.md are what the program says.
//
// Each block of "console" is run, all in one folder that holds the files of examples/inspector and the demo's VobSub
// pair. A line that begins with "$ " is a command; what follows is all that it writes. "..." stands for anything within
// a line, and as a line of its own for any lines.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "tests/vxsub/Program.h"

namespace {

using Lines = std::vector<std::string>;

struct Step {
    size_t line;  ///< of the command in the document
    std::string command;
    Lines output;
};

std::vector<Step> stepsOf(std::istream& document) {
    std::vector<Step> steps;
    bool isTranscript = false;
    std::string line;
    for (size_t number = 1; std::getline(document, line); ++number) {
        if (line.compare(0, 3, "```") == 0)
            isTranscript = line == "```console";
        else if (isTranscript && line.compare(0, 2, "$ ") == 0)
            steps.push_back({number, line.substr(2), {}});
        else if (isTranscript && !steps.empty())
            steps.back().output.push_back(line);
    }
    return steps;
}

Lines linesOf(const std::string& text) {
    Lines lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

/// Whether the line is what the pattern says, each of whose "..." stands for anything.
bool matchesLine(std::string_view pattern, std::string_view line) {
    const size_t gap = pattern.find("...");
    if (gap == pattern.npos) return pattern == line;
    if (line.substr(0, gap) != pattern.substr(0, gap)) return false;
    const std::string_view rest = pattern.substr(gap + 3);
    for (size_t at = gap; at <= line.size(); ++at)
        if (matchesLine(rest, line.substr(at))) return true;
    return false;
}

bool matches(const Lines& patterns, size_t p, const Lines& lines, size_t i) {
    if (p == patterns.size()) return i == lines.size();
    if (patterns[p] == "...") {
        for (; i <= lines.size(); ++i)
            if (matches(patterns, p + 1, lines, i)) return true;
        return false;
    }
    return i < lines.size() && matchesLine(patterns[p], lines[i]) && matches(patterns, p + 1, lines, i + 1);
}

TEST(Matching, KnowsGaps) {
    EXPECT_TRUE(matchesLine("a...c", "abc"));
    EXPECT_TRUE(matchesLine("a...c...", "accd"));
    EXPECT_FALSE(matchesLine("a...c", "ab"));
    EXPECT_FALSE(matchesLine("abc", "ab"));
    EXPECT_TRUE(matches({"a", "...", "d"}, 0, {"a", "b", "c", "d"}, 0));
    EXPECT_TRUE(matches({"a", "..."}, 0, {"a"}, 0));
    EXPECT_FALSE(matches({"a", "...", "d"}, 0, {"a", "b"}, 0));
    EXPECT_FALSE(matches({"a"}, 0, {"a", "b"}, 0));
}

TEST(Transcripts, AreWhatTheProgramSays) {
    char folder[] = "/tmp/vxsub-transcripts-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string place = std::string("cd ") + folder + " && ";
    ASSERT_EQ(
        system((place + "cp " VXSUB_EXAMPLES "/* . && '" MAKE_VOBSUB "' movie.idx >made.txt && rm made.txt").c_str()),
        0);
    std::ifstream document(VXSUB_DOCUMENT);
    const std::vector<Step> steps = stepsOf(document);
    EXPECT_GT(steps.size(), 10u);
    for (const Step& step : steps) {
        const test::Outcome outcome = test::runVxsub(
            {}, place + "program=$1 && vxsub() { \"$program\" \"$@\"; } && { " + step.command + "\n} 2>&1");
        EXPECT_TRUE(matches(step.output, 0, linesOf(outcome.out), 0))
            << VXSUB_DOCUMENT ":" << step.line << ": $ " << step.command << "\n"
            << outcome.out << outcome.err;
    }
    EXPECT_EQ(system(("rm -r " + std::string(folder)).c_str()), 0);
}

}  // namespace
