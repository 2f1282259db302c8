// A worker's thread by itself.
#include "subtitle/system/Worker.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "tests/support/Interpose.h"

namespace vxsubtitle {
namespace {

TEST(Worker, IsWaitedForAsLongAsThePeriodSays) {
    const std::vector<unsigned> periods{1, 999, 1000, 999998, 999999, 1000000, 1000001, 2500000, 4294967295};
    for (const unsigned startMs : {0u, 1u, 999u, 4294967295u}) {
        pthread_t thread = 0;
        U8 state = kWorkerRunning;
        const test::VirtualClock clock(startMs);
        for (const unsigned period : periods) waitForEnd({thread, state}, period, true);
        EXPECT_EQ(periods, clock.sleeps()) << startMs;
    }
}

TEST(Worker, IsNotWaitedForWhenItHasEndedSinceItWasSeen) {
    pthread_t thread = 0;
    U8 state = kWorkerEnded;
    const test::VirtualClock clock;
    waitForEnd({thread, state}, 1000, true);
    EXPECT_EQ(std::vector<unsigned>(), clock.sleeps());
    waitForEnd({thread, state}, 1000, false);
    EXPECT_EQ(std::vector<unsigned>{1000}, clock.sleeps());
}

// On the machine's own clock, which the condition has to follow.
TEST(Worker, IsWaitedForOnTheMonotonicClock) {
    using Clock = std::chrono::steady_clock;
    pthread_t thread = 0;
    U8 state = kWorkerRunning;
    const auto begin = Clock::now();
    waitForEnd({thread, state}, 2000, true);
    EXPECT_LE(std::chrono::milliseconds(2), Clock::now() - begin);
}

TEST(StopRequest, IsOneBitOfItsByte) {
    U8 byte = 0x7F;
    const StopRequest stop(byte);
    EXPECT_FALSE(stop.isMade());
    byte = 0x80;
    EXPECT_TRUE(stop.isMade());
    EXPECT_FALSE(StopRequest().isMade());
}

}  // namespace
}  // namespace vxsubtitle
