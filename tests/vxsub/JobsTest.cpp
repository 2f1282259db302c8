#include "tools/vxsub/Jobs.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

using vxsub::Jobs;
using Kind = Jobs::Result::Kind;

struct Taken {
    std::vector<std::string> results;
    size_t finished = 0;
};

Taken run(size_t processes, size_t count, double seconds, const Jobs::Work& work) {
    Taken taken;
    Jobs(processes, seconds, work)
        .run(
            count, [&] { ++taken.finished; },
            [&](size_t number, const Jobs::Result& result) {
                EXPECT_EQ(taken.results.size(), number);
                const std::string kind = result.kind == Kind::Done   ? ""
                                         : result.kind == Kind::Hung ? "hung"
                                                                     : "crashed";
                const std::string signal = result.signal != 0 ? " " + std::to_string(result.signal) : "";
                taken.results.push_back(result.answer + kind + signal);
            });
    return taken;
}

std::string squareOf(size_t number) { return std::to_string(number * number); }

TEST(Jobs, AnswersComeInTheOrderOfTheNumbers) {
    for (const size_t processes : {0, 1, 3, 50}) {
        const Taken taken = run(processes, 20, 10, [](size_t number) {
            usleep(useconds_t(number % 3 * 1000));
            return squareOf(number);
        });
        ASSERT_EQ(20u, taken.results.size());
        EXPECT_EQ(20u, taken.finished);
        for (size_t i = 0; i < 20; ++i) EXPECT_EQ(squareOf(i), taken.results[i]);
    }
    EXPECT_EQ(0u, run(2, 0, 10, squareOf).finished);
}

TEST(Jobs, AnswersAreAnyBytesOfAnyLength) {
    const Taken taken = run(2, 3, 10, [](size_t number) { return std::string(number * 1000000, '\0'); });
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(std::string(i * 1000000, '\0'), taken.results[i]);
}

TEST(Jobs, OneThatCrashesEndsOrHangsCostsNoMoreThanItself) {
    const std::vector<std::string> expected{"0", "crashed 9", "4", "crashed", "16", "hung 9", "36"};
    std::vector<std::string> results;
    for (double seconds = 0.3; results != expected && seconds < 20; seconds *= 4) {  // a busy machine gets more time
        results = run(2, 7, seconds, [](size_t number) {
                      if (number == 1) kill(getpid(), SIGKILL);
                      if (number == 3) _exit(0);
                      while (number == 5) pause();
                      return squareOf(number);
                  }).results;
    }
    EXPECT_EQ(expected, results);
}

}  // namespace
