/// Runs vxsub as a shell does: with pipes, or in the foreground of a terminal.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace test {

/// How a program ended.
struct Outcome {
    int status = -1;  ///< its exit status
    int signal = 0;   ///< or what ended it
    std::string out, err;
};

/// Runs vxsub with these arguments to its end. `shell`, when given, is the command line of a shell around it, in
/// which "$@" is vxsub with its arguments.
Outcome runVxsub(const std::vector<std::string>& arguments, const std::string& shell = "\"$@\"");

/// vxsub as a job in the foreground of a new terminal of 24 rows and 80 columns.
class TerminalJob {
public:
    /// Whether a terminal can be had on this machine.
    static bool isPossible();

    /// `environment` holds NAME=VALUE.
    explicit TerminalJob(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {});
    ~TerminalJob();
    TerminalJob(const TerminalJob&) = delete;
    TerminalJob& operator=(const TerminalJob&) = delete;

    /// All that the terminal got so far, once it contains `text` behind the first `from` bytes; on end of output
    /// whatever came.
    const std::string& waitFor(const std::string& text, size_t from = 0);

    void type(const std::string& keys);

    /// Whether the terminal shows what is typed.
    bool echoes() const;
    void echo();  ///< makes it
    void resize(unsigned short rows, unsigned short columns);
    void kill(int signal);

    /// Waits until the job has been stopped by a signal.
    void waitUntilStopped();
    void proceed();

    /// Reads to the end; `out` is all that the terminal got.
    Outcome finish();

private:
    struct Report {
        char what;  ///< b: began, s: stopped, e: ended
        int value;  ///< process id, signal, or wait status
    };
    bool readOutput();
    Report nextReport();

    int mTerminal = -1, mReports = -1, mOrders = -1;
    pid_t mShell = -1, mJob = -1;
    std::string mOutput;
};

}  // namespace test
