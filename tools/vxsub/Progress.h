/// A bar on a terminal while something takes its time; nothing anywhere else.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "Screen.h"

namespace vxsub {

class Progress {
public:
    /// `what` is done in `total` steps.
    Progress(Output& out, std::string what, size_t total);
    ~Progress();

    /// Says that one more step is done, and something about the speed. Throws as `Output::flush`.
    void step(std::string note = {});

private:
    void draw();

    std::string mWhat, mNote;
    size_t mTotal, mDone = 0;
    std::unique_ptr<Screen> mScreen;
    std::chrono::steady_clock::time_point mDrawn;
};

}  // namespace vxsub
