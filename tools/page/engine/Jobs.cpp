// A page has no processes: one piece of work after the other.
#include "tools/vxsub/Jobs.h"

namespace vxsub {

void Jobs::run(size_t count, const std::function<void()>& finished, const Take& take) const {
    (void)mProcesses;
    (void)mSecondsEach;  // the page ends a worker that hangs
    for (size_t number = 0; number < count; ++number) {
        const Result result = {Result::Kind::Done, mWork(number), 0};
        finished();
        take(number, result);
    }
}

}  // namespace vxsub
