/// Play time.
#pragma once

#include <chrono>

#include "Output.h"
#include "subtitle/SubtitleTypes.h"

namespace vxsub {

/// Play time that runs `speed` times as fast as the clock on the wall.
class PlayClock {
public:
    PlayClock(android::U32 fromMs, double speed) : mFromMs(fromMs), mSpeed(speed), mStart(Clock::now()) {}

    double now() const {
        return mFromMs + std::chrono::duration<double, std::milli>(Clock::now() - mStart).count() * mSpeed;
    }
    double secondsUntil(android::U32 ms) const { return (ms - now()) / mSpeed / 1000; }

    /// Goes on from that play time.
    void set(double ms) {
        mFromMs = ms;
        mStart = Clock::now();
    }

    /// Throws as `Output::wait`.
    void waitUntil(android::U32 ms, Output& out) const {
        while (secondsUntil(ms) > 0) out.wait(secondsUntil(ms));
    }

private:
    using Clock = std::chrono::steady_clock;
    double mFromMs;
    double mSpeed;
    Clock::time_point mStart;
};

}  // namespace vxsub
