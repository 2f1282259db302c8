#include "Output.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "Errors.h"
#include "Text.h"

namespace vxsub {
namespace {

constexpr size_t kBufferSize = 65536;

void replaceDescriptor(int fd, int with) {
    if (with >= 0) dup2(with, fd);
}

[[noreturn]] void failWriting(int error) {
    if (error == EPIPE) throw ReaderGone();
    throw FileError(std::string("cannot write the output: ") + strerror(error));
}

}  // namespace

Output::Output() : mFd(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)), mIsTerminal(isatty(mFd) == 1) {
    mBuffer.reserve(kBufferSize);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    replaceDescriptor(STDOUT_FILENO, nowhere);
    if (nowhere >= 0) close(nowhere);
}

Output::~Output() {
    if (mFd >= 0) close(mFd);
}

void Output::showForeignOutput() {
    setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    replaceDescriptor(STDOUT_FILENO, STDERR_FILENO);
}

void Output::write(std::string_view text) {
    if (mBuffer.size() + text.size() > kBufferSize) flush();
    mBuffer += text;
}

void Output::flush() {
    std::string_view rest = mBuffer;
    while (!rest.empty()) {
        const ssize_t written = ::write(mFd, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(size_t(written));
        } else if (errno == EAGAIN) {
            pollfd writable = {mFd, POLLOUT, 0};
            poll(&writable, 1, -1);
        } else if (errno != EINTR) {
            const int error = errno;
            mBuffer.clear();
            failWriting(error);
        }
    }
    mBuffer.clear();
}

bool Output::wait(double seconds, int input) {
    if (seconds <= 0) return false;
    timespec left;
    left.tv_sec = time_t(seconds);
    left.tv_nsec = long((seconds - double(left.tv_sec)) * 1e9);
    pollfd ends[] = {{mFd, 0, 0}, {input, POLLIN, 0}};
    if (ppoll(ends, 2, &left, nullptr) <= 0) return false;
    if ((ends[0].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) throw ReaderGone();
    return ends[1].revents != 0;
}

void complain(std::string_view message) {
    const std::string text = "vxsub: " + printable(message) + "\n";
    // One call, so that lines of the platform log cannot stand in the middle.
    if (::write(STDERR_FILENO, text.data(), text.size()) < 0) return;
}

}  // namespace vxsub
