#include "Jobs.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <vector>

#include "Errors.h"

namespace vxsub {
namespace {

using Clock = std::chrono::steady_clock;

/// False when the other side has gone.
bool sendAll(int fd, const void* data, size_t size) {
    const char* at = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t sent = send(fd, at, size, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        at += sent;
        size -= size_t(sent);
    }
    return true;
}

bool receiveAll(int fd, void* data, size_t size) {
    char* at = static_cast<char*>(data);
    while (size > 0) {
        const ssize_t received = recv(fd, at, size, 0);
        if (received < 0 && errno == EINTR) continue;
        if (received <= 0) return false;
        at += received;
        size -= size_t(received);
    }
    return true;
}

/// The life of a process: a number comes, its answer goes, behind its length.
[[noreturn]] void serve(int fd, const Jobs::Work& work) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // one that hangs does not outlive the program
    for (size_t number = 0; receiveAll(fd, &number, sizeof number);) {
        const std::string answer = work(number);
        const size_t size = answer.size();
        if (!sendAll(fd, &size, sizeof size) || !sendAll(fd, answer.data(), size)) break;
    }
    _exit(0);
}

/// One process, seen from outside.
struct Process {
    pid_t id = -1;
    int fd = -1;
    size_t number = SIZE_MAX;  ///< it works on; none
    Clock::time_point until;
    std::string received;

    bool isBusy() const { return number != SIZE_MAX; }
};

class Crew {
public:
    Crew(size_t size, double secondsEach, const Jobs::Work& work)
        : mProcesses(size),
          mLimit(std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(secondsEach))),
          mWork(work) {
        for (Process& process : mProcesses) start(&process);
    }
    ~Crew() {
        for (Process& process : mProcesses) end(&process, SIGKILL);
    }
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    bool isBusy() const {
        return std::any_of(mProcesses.begin(), mProcesses.end(), [](const Process& p) { return p.isBusy(); });
    }

    /// Gives numbers from `*next` on to those that have none.
    void assign(size_t* next, size_t count) {
        for (Process& process : mProcesses) {
            if (process.isBusy() || *next == count) continue;
            process.number = (*next)++;
            process.until = Clock::now() + mLimit;
            process.received.clear();
            sendAll(process.fd, &process.number, sizeof process.number);
        }
    }

    /// Waits, and tells what has ended.
    void wait(const Jobs::Take& tell) {
        std::vector<pollfd> polled;
        for (const Process& process : mProcesses) polled.push_back({process.isBusy() ? process.fd : -1, POLLIN, 0});
        const Clock::time_point before = Clock::now();
        constexpr int kTick = 100;
        poll(polled.data(), polled.size(), kTick);
        const Clock::duration passed = Clock::now() - before;
        for (size_t i = 0; i < polled.size(); ++i) {
            Process& process = mProcesses[i];
            // Time in which this program was stopped counts for nobody.
            if (passed > std::chrono::seconds(1)) process.until += passed;
            if (polled[i].revents != 0)
                receive(&process, tell);
            else if (process.isBusy() && Clock::now() > process.until)
                replace(&process, Jobs::Result::Kind::Hung, tell);
        }
    }

private:
    void start(Process* process) {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) fail("socketpair");
        const pid_t id = fork();
        if (id == 0) {
            for (const Process& other : mProcesses)
                if (other.fd >= 0) close(other.fd);
            close(ends[0]);
            serve(ends[1], mWork);
        }
        close(ends[1]);
        if (id < 0) {
            close(ends[0]);
            fail("fork");
        }
        *process = Process();
        process->id = id;
        process->fd = ends[0];
    }

    [[noreturn]] static void fail(const char* call) { throw FileError(std::string(call) + ": " + strerror(errno)); }

    /// Returns how it ended.
    static int end(Process* process, int signal) {
        int status = 0;
        if (process->id < 0) return status;
        close(process->fd);
        process->fd = -1;
        if (signal != 0) kill(process->id, signal);
        while (waitpid(process->id, &status, 0) < 0 && errno == EINTR) {
        }
        process->id = -1;
        return status;
    }

    void receive(Process* process, const Jobs::Take& tell) {
        char bytes[65536];
        const ssize_t size = recv(process->fd, bytes, sizeof bytes, MSG_DONTWAIT);
        if (size < 0 && (errno == EINTR || errno == EAGAIN)) return;
        if (size <= 0) {
            replace(process, Jobs::Result::Kind::Crashed, tell);
            return;
        }
        process->received.append(bytes, size_t(size));
        size_t length = 0;
        if (process->received.size() < sizeof length) return;
        memcpy(&length, process->received.data(), sizeof length);
        if (process->received.size() - sizeof length < length) return;
        const size_t number = process->number;
        process->number = SIZE_MAX;
        tell(number, {Jobs::Result::Kind::Done, process->received.substr(sizeof length), 0});
    }

    void replace(Process* process, Jobs::Result::Kind kind, const Jobs::Take& tell) {
        const size_t number = process->number;
        const int status = end(process, kind == Jobs::Result::Kind::Hung ? SIGKILL : 0);
        start(process);
        tell(number, {kind, {}, WIFSIGNALED(status) ? WTERMSIG(status) : 0});
    }

    std::vector<Process> mProcesses;
    Clock::duration mLimit;
    const Jobs::Work& mWork;
};

}  // namespace

void Jobs::run(size_t count, const std::function<void()>& finished, const Take& take) const {
    Crew crew(std::min(std::max<size_t>(mProcesses, 1), count), mSecondsEach, mWork);
    std::map<size_t, Result> early;  // until those before them are there
    size_t given = 0, taken = 0;
    const auto tell = [&](size_t number, const Result& result) {
        early[number] = result;
        finished();
        for (; !early.empty() && early.begin()->first == taken; ++taken) {
            take(taken, early.begin()->second);
            early.erase(early.begin());
        }
    };
    for (crew.assign(&given, count); crew.isBusy(); crew.assign(&given, count)) crew.wait(tell);
}

}  // namespace vxsub
