/// Pieces of work shared among processes, so that one that crashes or hangs costs no more than itself.
#pragma once

#include <stddef.h>

#include <functional>
#include <string>

namespace vxsub {

class Jobs {
public:
    struct Result {
        enum class Kind {
            Done,
            Crashed,  ///< the process ended
            Hung,     ///< it was ended, after the time limit
        };
        Kind kind = Kind::Done;
        std::string answer;  ///< any bytes
        int signal = 0;      ///< what ended the process, 0 when it ended by itself
    };

    /// Gives the answer to a number; called in a process of its own.
    using Work = std::function<std::string(size_t number)>;
    using Take = std::function<void(size_t number, const Result& result)>;

    Jobs(size_t processes, double secondsEach, Work work)
        : mProcesses(processes), mSecondsEach(secondsEach), mWork(std::move(work)) {}

    /// Has the numbers below `count` worked on. `finished` is called at once for each that is done, in any order,
    /// `take` in the order of the numbers. Throws `FileError` when there can be no process.
    void run(size_t count, const std::function<void()>& finished, const Take& take) const;

private:
    size_t mProcesses;
    double mSecondsEach;
    Work mWork;
};

}  // namespace vxsub
