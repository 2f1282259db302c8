#include "tests/vxsub/Program.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace test {
namespace {

[[noreturn]] void execute(std::vector<std::string> words) {
    std::vector<char*> pointers(words.size() + 1);
    for (size_t i = 0; i < words.size(); ++i) pointers[i] = &words[i][0];
    execv(pointers[0], pointers.data());
    _exit(127);
}

struct Pipe {
    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) abort();
        read = ends[0];
        write = ends[1];
    }
    int read, write;
};

void setEnd(Outcome* outcome, int status) {
    if (WIFSIGNALED(status))
        outcome->signal = WTERMSIG(status);
    else
        outcome->status = WEXITSTATUS(status);
}

}  // namespace

Outcome runVxsub(const std::vector<std::string>& arguments, const std::string& shell) {
    std::vector<std::string> words = {"/bin/sh", "-c", shell, "sh", VXSUB_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    Pipe out, err;
    const pid_t child = fork();
    if (child == 0) {
        dup2(out.write, STDOUT_FILENO);
        dup2(err.write, STDERR_FILENO);
        execute(words);
    }
    close(out.write);
    close(err.write);
    Outcome outcome;
    pollfd ends[] = {{out.read, POLLIN, 0}, {err.read, POLLIN, 0}};
    std::string* texts[] = {&outcome.out, &outcome.err};
    for (int open = 2; open > 0;) {
        poll(ends, 2, -1);
        for (size_t i = 0; i < 2; ++i) {
            if (ends[i].revents == 0) continue;
            char chunk[4096];
            const ssize_t n = read(ends[i].fd, chunk, sizeof chunk);
            if (n > 0) {
                texts[i]->append(chunk, size_t(n));
            } else {
                close(ends[i].fd);
                ends[i].fd = -1;
                --open;
            }
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    setEnd(&outcome, status);
    return outcome;
}

bool TerminalJob::isPossible() {
    int terminal, slave;
    if (openpty(&terminal, &slave, nullptr, nullptr, nullptr) != 0) return false;
    close(terminal);
    close(slave);
    return true;
}

TerminalJob::TerminalJob(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
    std::vector<std::string> words = {VXSUB_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    Pipe reports, orders;
    winsize size = {24, 80, 0, 0};
    mShell = forkpty(&mTerminal, nullptr, nullptr, &size);
    if (mShell < 0) abort();  // `isPossible` tells before
    if (mShell == 0) {
        // The part of an interactive shell: a job gets a process group and the terminal, and is watched.
        setenv("TERM", "xterm", 1);
        unsetenv("NO_COLOR");
        for (const std::string& variable : environment) putenv(strdup(variable.c_str()));
        const pid_t job = fork();
        if (job == 0) {
            signal(SIGTTOU, SIG_IGN);
            setpgid(0, 0);
            tcsetpgrp(STDIN_FILENO, getpid());
            signal(SIGTTOU, SIG_DFL);
            execute(words);
        }
        const auto report = [&](char what, int value) {
            const Report message = {what, value};
            if (write(reports.write, &message, sizeof message) < 0) _exit(1);
        };
        report('b', job);
        for (int status = 0; waitpid(job, &status, WUNTRACED) == job;) {
            if (!WIFSTOPPED(status)) {
                report('e', status);
                _exit(0);
            }
            report('s', WSTOPSIG(status));
            char order;
            if (read(orders.read, &order, 1) != 1) _exit(1);
            ::kill(-job, SIGCONT);
        }
        _exit(1);
    }
    close(reports.write);
    close(orders.read);
    mReports = reports.read;
    mOrders = orders.write;
    mJob = nextReport().value;
}

TerminalJob::~TerminalJob() {
    if (mJob > 0) ::kill(mJob, SIGKILL);
    for (const int fd : {mTerminal, mReports, mOrders}) close(fd);
    waitpid(mShell, nullptr, 0);
}

bool TerminalJob::readOutput() {
    char chunk[4096];
    const ssize_t n = read(mTerminal, chunk, sizeof chunk);
    if (n <= 0) return false;  // the last user of the terminal has gone
    mOutput.append(chunk, size_t(n));
    return true;
}

TerminalJob::Report TerminalJob::nextReport() {
    // A job that waits for its terminal to be read would never come to an end.
    for (;;) {
        pollfd sources[] = {{mReports, POLLIN, 0}, {mTerminal, POLLIN, 0}};
        if (poll(sources, 2, -1) < 0) continue;
        Report report = {'e', 0};
        if ((sources[0].revents & POLLIN) && read(mReports, &report, sizeof report) == ssize_t(sizeof report))
            return report;
        if (sources[1].revents != 0 && !readOutput()) {
            if (read(mReports, &report, sizeof report) != ssize_t(sizeof report)) report.value = -1;
            return report;
        }
    }
}

const std::string& TerminalJob::waitFor(const std::string& text, size_t from) {
    while (mOutput.find(text, from) == mOutput.npos && readOutput()) {
    }
    return mOutput;
}

void TerminalJob::type(const std::string& keys) {
    if (write(mTerminal, keys.data(), keys.size()) < 0) abort();
}

bool TerminalJob::echoes() const {
    termios settings = {};
    return tcgetattr(mTerminal, &settings) == 0 && (settings.c_lflag & ECHO) != 0;
}

void TerminalJob::echo() {
    termios settings = {};
    tcgetattr(mTerminal, &settings);
    settings.c_lflag |= ECHO | ICANON;
    tcsetattr(mTerminal, TCSANOW, &settings);
}

void TerminalJob::resize(unsigned short rows, unsigned short columns) {
    const winsize size = {rows, columns, 0, 0};
    ioctl(mTerminal, TIOCSWINSZ, &size);
}

void TerminalJob::kill(int signal) { ::kill(mJob, signal); }

void TerminalJob::waitUntilStopped() {
    while (nextReport().what != 's') {
    }
}

void TerminalJob::proceed() {
    if (write(mOrders, "c", 1) != 1) abort();
}

Outcome TerminalJob::finish() {
    Outcome outcome;
    Report report;
    do report = nextReport();
    while (report.what != 'e');
    setEnd(&outcome, report.value);
    mJob = -1;
    while (readOutput()) {
    }
    outcome.out = mOutput;
    return outcome;
}

}  // namespace test
