#include "Screen.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <string_view>

namespace vxsub {
namespace {

constexpr char kHideCursor[] = "\x1b[?25l";
constexpr char kLeave[] = "\r\x1b[0m\x1b[K\x1b[?25h";
constexpr char kCancel[] = "\x18";  // ends a command of which the terminal has seen only the beginning

// What the signal handlers read. They may run between any two instructions of draw().
volatile sig_atomic_t gActive = 0;     // the cursor is hidden
volatile sig_atomic_t gDrawing = 0;    // the cursor is somewhere inside the lines
volatile sig_atomic_t gContinued = 0;  // the program was stopped meanwhile
int gFd = -1;
char gDown[16];  // moves the cursor below the lines from wherever it is
struct sigaction gEarlier[NSIG];
volatile sig_atomic_t gKeysTaken = 0;  // keys come one by one and unseen
termios gEarlierKeys;

/// Signals whose default action ends the program and that can be caught, and the one that stops it from the
/// keyboard.
bool isHandled(int signal) {
    switch (signal) {
        case SIGKILL:
        case SIGSTOP:
        case SIGTTIN:
        case SIGTTOU:
        case SIGCHLD:
        case SIGCONT:
        case SIGURG:
        case SIGWINCH:
            return false;
        default:
            return true;
    }
}

bool isFault(int signal) {
    return signal == SIGSEGV || signal == SIGBUS || signal == SIGFPE || signal == SIGILL || signal == SIGTRAP ||
           signal == SIGSYS;
}

void put(const char* text) {
    if (::write(gFd, text, strlen(text)) < 0) return;
}

/// Leaves the terminal as it was found. Only async-signal-safe calls.
void leave() {
    if (gKeysTaken) tcsetattr(STDIN_FILENO, TCSANOW, &gEarlierKeys);
    gKeysTaken = 0;
    if (!gActive) return;
    gActive = 0;
    pollfd terminal = {gFd, POLLOUT, 0};
    if (poll(&terminal, 1, 100) != 1) return;  // its output is held
    if (gDrawing) {
        put(kCancel);
        put(gDown);
    }
    put(kLeave);
}

/// Lets the signal act now, on this thread, although one like it is being handled.
void act(int signal) {
    sigset_t one, before;
    sigemptyset(&one);
    sigaddset(&one, signal);
    raise(signal);
    pthread_sigmask(SIG_UNBLOCK, &one, &before);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void onEnd(int signal, siginfo_t* info, void*) {
    const int error = errno;
    leave();
    sigaction(signal, &gEarlier[signal], nullptr);
    // A fault happens again as soon as the instruction is repeated; everything else is sent anew.
    if (!isFault(signal) || info->si_code <= 0) act(signal);
    errno = error;
}

void onStop(int signal, siginfo_t*, void*) {
    const int error = errno;
    const bool wasActive = gActive;
    leave();
    struct sigaction own;
    sigaction(signal, &gEarlier[signal], &own);
    act(signal);  // stops here
    sigaction(signal, &own, nullptr);
    gActive = wasActive;
    gContinued = 1;
    errno = error;
}

void onContinue(int) { gContinued = 1; }

void handle(int signal) {
    struct sigaction own = {};
    own.sa_flags = SA_SIGINFO | SA_RESTART;
    own.sa_sigaction = signal == SIGTSTP ? onStop : onEnd;
    sigemptyset(&own.sa_mask);
    if (signal == SIGCONT) {
        own.sa_flags = SA_RESTART;
        own.sa_handler = onContinue;
    }
    if (sigaction(signal, nullptr, &gEarlier[signal]) != 0 || gEarlier[signal].sa_handler == SIG_IGN) return;
    sigaction(signal, &own, nullptr);
}

template <class Do>
void forEachSignal(Do apply) {
    for (int signal = 1; signal < NSIG; ++signal)
        if (isHandled(signal) || signal == SIGCONT) apply(signal);
}

/// Cuts the first key, or else the first byte, off what a terminal sends.
Key takeKey(std::string* typed) {
    static const struct {
        std::string_view bytes;
        Key key;
    } kKeys[] = {{"q", Key::Quit},       {"Q", Key::Quit},    {" ", Key::Space},     {"\x1b[D", Key::Left},
                 {"\x1b[C", Key::Right}, {"\x1b[A", Key::Up}, {"\x1b[B", Key::Down}, {"\x1bOD", Key::Left},
                 {"\x1bOC", Key::Right}, {"\x1bOA", Key::Up}, {"\x1bOB", Key::Down}};
    for (const auto& row : kKeys)
        if (typed->compare(0, row.bytes.size(), row.bytes) == 0) {
            typed->erase(0, row.bytes.size());
            return row.key;
        }
    typed->erase(0, 1);
    return Key::None;
}

}  // namespace

bool canRedraw(const Output& out) {
    const char* terminal = getenv("TERM");
    return out.isTerminal() && terminal != nullptr && *terminal != 0 && strcmp(terminal, "dumb") != 0;
}

bool canColour(const Output& out) {
    const char* refused = getenv("NO_COLOR");
    return canRedraw(out) && (refused == nullptr || *refused == 0);
}

Screen::Screen(Output& out, Keys keys) : mOut(out), mTakesKeys(keys == Keys::Taken && hasKeys()) {
    out.flush();
    gFd = out.descriptor();
    gDown[0] = 0;
    gDrawing = 0;
    gContinued = 0;
    forEachSignal(handle);
}

Screen::~Screen() {
    leave();
    forEachSignal([](int signal) {
        if (gEarlier[signal].sa_handler != SIG_IGN) sigaction(signal, &gEarlier[signal], nullptr);
    });
}

bool Screen::hasKeys() { return isatty(STDIN_FILENO) == 1; }

/// Ctrl-C and the like still make signals.
void Screen::takeKeys() {
    if (!mTakesKeys || gKeysTaken || tcgetattr(STDIN_FILENO, &gEarlierKeys) != 0) return;
    gKeysTaken = 1;  // first: a signal between the two restores what is still there
    setKeys();
}

void Screen::setKeys() const {
    termios keys = gEarlierKeys;
    keys.c_lflag &= ~tcflag_t(ICANON | ECHO);
    keys.c_cc[VMIN] = 0;
    keys.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &keys);
}

Key Screen::waitForKey(double seconds) {
    const bool isTaking = gKeysTaken && !isInBackground();
    if (mTyped.empty() && mOut.wait(seconds, isTaking ? STDIN_FILENO : -1)) {
        char bytes[64];
        const ssize_t size = read(STDIN_FILENO, bytes, sizeof bytes);
        if (size > 0) mTyped.assign(bytes, size_t(size));
        if (size == 0) {  // the terminal has gone
            mTakesKeys = false;
            gKeysTaken = 0;
        }
    }
    return mTyped.empty() ? Key::None : takeKey(&mTyped);
}

Screen::Size Screen::size() const {
    winsize window = {};
    if (ioctl(mOut.descriptor(), TIOCGWINSZ, &window) != 0 || window.ws_row == 0 || window.ws_col == 0) return {24, 80};
    return {window.ws_row, window.ws_col};
}

bool Screen::isInBackground() const {
    const pid_t foreground = tcgetpgrp(mOut.descriptor());
    return foreground > 0 && foreground != getpgrp();
}

void Screen::draw(std::vector<std::string> lines) {
    if (isInBackground()) return;
    takeKeys();
    const Size now = size();
    const size_t room = now.rows > 2 ? now.rows - 1 : 1;
    if (lines.size() > room) lines.erase(lines.begin(), lines.end() - ptrdiff_t(room));
    std::string frame = kHideCursor;
    if (mHeight > 0 && (now.rows != mDrawnAt.rows || now.columns != mDrawnAt.columns))
        frame += "\x1b[2J\x1b[H";  // nobody knows how the terminal has rearranged the lines
    else if (mHeight > 0)
        frame += "\x1b[" + std::to_string(mHeight) + "A";
    for (const std::string& line : lines) frame += "\r" + line + "\x1b[K\r\n";
    frame += "\x1b[J";

    snprintf(gDown, sizeof gDown, "\x1b[%zuB", lines.size());
    gActive = 1;
    gDrawing = 1;
    mOut.write(frame);
    mOut.flush();
    gDrawing = 0;
    mHeight = lines.size();
    mDrawnAt = now;
}

bool Screen::wasStopped() {
    const bool stopped = gContinued;
    gContinued = 0;
    // What stands on the terminal now was written by others: the next frame begins below it.
    if (stopped) mHeight = 0;
    // After SIGSTOP, which nobody sees coming, the shell has set the keys as it likes.
    if (stopped && gKeysTaken && !isInBackground()) setKeys();
    return stopped;
}

}  // namespace vxsub
