#include "Progress.h"

namespace vxsub {
namespace {

constexpr auto kBetweenFrames = std::chrono::milliseconds(40);
constexpr size_t kLongestBar = 40;

}  // namespace

Progress::Progress(Output& out, std::string what, size_t total)
    : mWhat(std::move(what)), mTotal(total), mScreen(canRedraw(out) ? std::make_unique<Screen>(out) : nullptr) {
    draw();
}

Progress::~Progress() = default;

void Progress::step(std::string note) {
    ++mDone;
    mNote = std::move(note);
    if (mDone == mTotal || std::chrono::steady_clock::now() - mDrawn >= kBetweenFrames) draw();
}

void Progress::draw() {
    if (mScreen == nullptr || mTotal == 0) return;
    mDrawn = std::chrono::steady_clock::now();
    const std::string left = mWhat + " [";
    const std::string right = "] " + std::to_string(mDone) + " of " + std::to_string(mTotal) + mNote;
    const size_t columns = mScreen->size().columns;
    const size_t room = columns > left.size() + right.size() + 1 ? columns - left.size() - right.size() - 1 : 0;
    const size_t bar = std::min(room, kLongestBar);
    const size_t done = bar * mDone / mTotal;
    std::string line = left + std::string(done, '#') + std::string(bar - done, '-') + right;
    if (line.size() >= columns) line.resize(columns - 1);
    mScreen->draw({line});
}

}  // namespace vxsub
