/// The program's output: standard output, kept for the program alone.
#pragma once

#include <string>
#include <string_view>

namespace vxsub {

/// Buffered writing to what was standard output when it was made. File descriptor 1 itself leads nowhere from then
/// on, so that what the library may print never mixes with the program's own words.
class Output {
public:
    Output();
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Sends what the library prints to standard error instead of dropping it.
    void showForeignOutput();

    bool isTerminal() const { return mIsTerminal; }
    int descriptor() const { return mFd; }

    /// Throws as `flush` when the buffer has to be emptied.
    void write(std::string_view text);
    void line(std::string_view text) {
        write(text);
        write("\n");
    }

    /// Throws `ReaderGone` when the reading end of a pipe was closed, `FileError` on any other failure.
    void flush();

    /// Waits for so long, or until something can be read from `input`, but ends with `ReaderGone` as soon as the
    /// reader has gone. May return early after a signal. Whether there is something to read.
    bool wait(double seconds, int input = -1);

private:
    int mFd;
    bool mIsTerminal;
    std::string mBuffer;
};

/// Says `message` on standard error, in one line that begins with the program's name.
void complain(std::string_view message);

}  // namespace vxsub
