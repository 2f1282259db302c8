/// What ends a command early, told apart by the exit status that it leads to.
#pragma once

#include <stdexcept>

namespace vxsub {

enum ExitStatus : int { kOk = 0, kFileFailed = 1, kWrongUsage = 2, kFindings = 3 };

/// A file that cannot be shown, or output that cannot be written. The message is one line without the program's
/// name.
class FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A command line that makes no sense although each of its words does.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Whoever read the output has gone: nothing is wrong, nothing is left to do.
class ReaderGone {};

}  // namespace vxsub
