// Log, clock, sleep and threads as the test wants them, and the small helpers beside them.
#include "tests/support/Interpose.h"

#include <android-base/properties.h>
#include <android/log.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <ostream>
#include <utility>

#include "tests/support/Forward.h"
#include "tests/support/OwnMemory.h"

// Of a plain type and without a constructor, so that allocators may look at it at any time.
__thread int testOwnMemory = 1;

/// The main thread.
__attribute__((constructor)) static void ownNothing() { testOwnMemory = 0; }

namespace test {

OwnMemory::OwnMemory() { ++testOwnMemory; }
OwnMemory::~OwnMemory() { --testOwnMemory; }

LibraryMemory::LibraryMemory() : mOwn(testOwnMemory) { testOwnMemory = 0; }
LibraryMemory::~LibraryMemory() { testOwnMemory = mOwn; }

namespace {

[[noreturn]] void fail(const char* what) {
    fprintf(stderr, "test support: %s\n", what);
    abort();
}

/// Never destroyed: detached threads may outlive static objects.
template <class T>
T& immortal() {
    static T* const object = new T;
    return *object;
}

}  // namespace

// ------------------------------------------------------------------------------------------------------- log

struct LogCapture::State {
    std::vector<LogLine> lines;
};

namespace {

struct Captures {
    std::mutex lock;
    std::vector<std::shared_ptr<LogCapture::State>> active;
};

/// Read before anything else, so that programs without a capture pay nothing for logging.
std::atomic<unsigned> activeCaptures{0};

void addLine(int priority, const char* tag, const char* text) {
    const OwnMemory own;
    Captures& captures = immortal<Captures>();
    const std::lock_guard<std::mutex> guard(captures.lock);
    for (const auto& capture : captures.active) {
        capture->lines.push_back({priority, tag != nullptr ? tag : "", text});
    }
}

}  // namespace

bool operator==(const LogLine& a, const LogLine& b) {
    return a.priority == b.priority && a.tag == b.tag && a.text == b.text;
}

bool operator!=(const LogLine& a, const LogLine& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
    out << line.priority << ' ' << line.tag << ": \"";
    for (const char c : line.text) {
        if (c == '\n') {
            out << "\\n";
        } else {
            out << c;
        }
    }
    return out << '"';
}

LogCapture::LogCapture() : mState(std::make_shared<State>()) {
    Captures& captures = immortal<Captures>();
    const std::lock_guard<std::mutex> guard(captures.lock);
    captures.active.push_back(mState);
    ++activeCaptures;
}

LogCapture::~LogCapture() {
    Captures& captures = immortal<Captures>();
    const std::lock_guard<std::mutex> guard(captures.lock);
    captures.active.erase(std::find(captures.active.begin(), captures.active.end(), mState));
    --activeCaptures;
}

std::vector<LogLine> LogCapture::lines() const {
    const std::lock_guard<std::mutex> guard(immortal<Captures>().lock);
    return mState->lines;
}

std::vector<std::string> LogCapture::texts() const {
    const std::lock_guard<std::mutex> guard(immortal<Captures>().lock);
    std::vector<std::string> texts;
    for (const LogLine& line : mState->lines) texts.push_back(line.text);
    return texts;
}

// ----------------------------------------------------------------------------------------------------- clock

namespace {

struct Clock {
    std::mutex lock;
    unsigned long long microseconds = 0;
    std::vector<unsigned> sleeps;
    std::multimap<size_t, std::function<void()>> actions;
};

std::atomic<bool> clockIsVirtual{false};

/// The waiting thread's part of a virtual wait: the clock goes to its end.
void virtualWait(const timespec& end) {
    const OwnMemory own;
    Clock& clock = immortal<Clock>();
    std::vector<std::function<void()>> actions;
    {
        const std::lock_guard<std::mutex> guard(clock.lock);
        const auto until =
            static_cast<unsigned long long>(end.tv_sec) * 1000000 + static_cast<unsigned long long>(end.tv_nsec) / 1000;
        const auto microseconds = static_cast<unsigned>(until > clock.microseconds ? until - clock.microseconds : 0);
        clock.microseconds += microseconds;
        clock.sleeps.push_back(microseconds);
        const auto due = clock.actions.equal_range(clock.sleeps.size());
        for (auto action = due.first; action != due.second; ++action) actions.push_back(action->second);
    }
    for (const auto& action : actions) action();
}

timespec virtualTime() {
    Clock& clock = immortal<Clock>();
    const std::lock_guard<std::mutex> guard(clock.lock);
    timespec time{};
    time.tv_sec = static_cast<time_t>(clock.microseconds / 1000000);
    time.tv_nsec = static_cast<long>(clock.microseconds % 1000000 * 1000);
    return time;
}

}  // namespace

VirtualClock::VirtualClock(unsigned startMs) {
    Clock& clock = immortal<Clock>();
    const std::lock_guard<std::mutex> guard(clock.lock);
    if (clockIsVirtual) fail("a second VirtualClock");
    clock.microseconds = startMs * 1000ULL;
    clock.sleeps.clear();
    clock.actions.clear();
    clockIsVirtual = true;
}

VirtualClock::~VirtualClock() { clockIsVirtual = false; }

void VirtualClock::advance(unsigned ms) {
    Clock& clock = immortal<Clock>();
    const std::lock_guard<std::mutex> guard(clock.lock);
    clock.microseconds += ms * 1000ULL;
}

void VirtualClock::advanceMicroseconds(unsigned us) {
    Clock& clock = immortal<Clock>();
    const std::lock_guard<std::mutex> guard(clock.lock);
    clock.microseconds += us;
}

std::vector<unsigned> VirtualClock::sleeps() const {
    Clock& clock = immortal<Clock>();
    const std::lock_guard<std::mutex> guard(clock.lock);
    return clock.sleeps;
}

void VirtualClock::atSleep(size_t count, std::function<void()> action) {
    Clock& clock = immortal<Clock>();
    const std::lock_guard<std::mutex> guard(clock.lock);
    clock.actions.emplace(count, std::move(action));
}

void giveWay(unsigned times) {
    constexpr long long kMostMs = 100;
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_MONOTONIC_RAW, &time);  // the machine's own, even while the other one is virtual
        return static_cast<long long>(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
    };
    for (const long long end = now() + kMostMs; times > 0 && now() < end; --times) sched_yield();
}

// --------------------------------------------------------------------------------------------------- threads

struct ThreadGate::State {
    std::mutex lock;
    std::condition_variable opened;
    bool open = false;
};

namespace {

struct Thread {
    bool ended = false;
    bool detached = false;
};

struct Threads {
    std::mutex lock;
    std::condition_variable oneEnded;
    std::map<pthread_t, Thread> known;  // created, not yet joined
    std::vector<std::shared_ptr<ThreadGate::State>> gates;
};

std::atomic<int> refusedThreads{0};
std::atomic<int> awaitedThreads{0};

struct Start {
    void* (*routine)(void*);
    void* argument;
    std::shared_ptr<ThreadGate::State> gate;
};

/// Marks the thread's end, however it ends.
struct Ending {
    ~Ending() {
        Threads& threads = immortal<Threads>();
        const std::lock_guard<std::mutex> guard(threads.lock);
        const auto self = threads.known.find(pthread_self());
        if (self == threads.known.end()) return;
        self->second.ended = true;
        threads.oneEnded.notify_all();
        if (self->second.detached) threads.known.erase(self);
    }
};

/// Requires the lock.
bool isRunning(pthread_t thread) {
    const Threads& threads = immortal<Threads>();
    const auto note = threads.known.find(thread);
    return note != threads.known.end() && !note->second.ended;
}

extern "C" void* runThread(void* argument) {
    const Start start = std::move(*static_cast<Start*>(argument));
    delete static_cast<Start*>(argument);
    const Ending ending;
    if (start.gate != nullptr) {
        std::unique_lock<std::mutex> lock(start.gate->lock);
        start.gate->opened.wait(lock, [&] { return start.gate->open; });
    }
    const LibraryMemory itsOwn;
    return start.routine(start.argument);
}

bool isDetached(const pthread_attr_t* attributes) {
    int state = PTHREAD_CREATE_JOINABLE;
    return attributes != nullptr && pthread_attr_getdetachstate(attributes, &state) == 0 &&
           state == PTHREAD_CREATE_DETACHED;
}

}  // namespace

ThreadCreateFails::ThreadCreateFails() { ++refusedThreads; }
ThreadCreateFails::~ThreadCreateFails() { --refusedThreads; }

ThreadsEndFirst::ThreadsEndFirst() { ++awaitedThreads; }
ThreadsEndFirst::~ThreadsEndFirst() { --awaitedThreads; }

ThreadGate::ThreadGate() : mState(std::make_shared<State>()) {
    Threads& threads = immortal<Threads>();
    const std::lock_guard<std::mutex> guard(threads.lock);
    threads.gates.push_back(mState);
}

ThreadGate::~ThreadGate() {
    open();
    Threads& threads = immortal<Threads>();
    const std::lock_guard<std::mutex> guard(threads.lock);
    threads.gates.erase(std::find(threads.gates.begin(), threads.gates.end(), mState));
}

void ThreadGate::open() {
    const std::lock_guard<std::mutex> guard(mState->lock);
    mState->open = true;
    mState->opened.notify_all();
}

unsigned threadCount() {
    Threads& threads = immortal<Threads>();
    const std::lock_guard<std::mutex> guard(threads.lock);
    return static_cast<unsigned>(threads.known.size()) + 1;
}

// -------------------------------------------------------------------------------------------- small helpers

SystemProperty::SystemProperty(std::string key, const std::string& value) : mKey(std::move(key)) {
    android::base::SetProperty(mKey, value);
}

SystemProperty::~SystemProperty() {
    android::base::SetProperty(mKey, "");  // empty reads as unset
}

std::string utf16le(std::string_view ascii, bool mark) {
    std::string units = mark ? "\xFF\xFE" : "";
    for (const char c : ascii) units.append({c, '\0'});
    return units;
}

std::string utf16be(std::string_view ascii, bool mark) {
    std::string units = mark ? "\xFE\xFF" : "";
    for (const char c : ascii) units.append({'\0', c});
    return units;
}

TempFile::TempFile(std::string_view content, const char* suffix) {
    const char* const folder = getenv("TMPDIR");
    mPath = std::string(folder != nullptr ? folder : "/tmp") + "/vxsubtitle-XXXXXX" + suffix;
    const int out = mkstemps(mPath.data(), static_cast<int>(strlen(suffix)));
    if (out < 0) fail("no temporary file");
    while (!content.empty()) {
        const ssize_t written = write(out, content.data(), content.size());
        if (written <= 0) fail("the temporary file takes no data");
        content.remove_prefix(static_cast<size_t>(written));
    }
    close(out);
    mFd = ::open(mPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (mFd < 0) fail("the temporary file cannot be read");
}

TempFile::~TempFile() {
    close(mFd);
    unlink(mPath.c_str());
}

unsigned openDescriptors() {
    unsigned count = 0;
    for (int fd = 0; fd < 1024; ++fd) {
        if (fcntl(fd, F_GETFD) != -1) ++count;
    }
    return count;
}

}  // namespace test

// ------------------------------------------------------------------------- what stands before the platform's

extern "C" {
__attribute__((weak)) int __interceptor_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
__attribute__((weak)) int __interceptor_pthread_join(pthread_t, void**);
__attribute__((weak)) int __interceptor_pthread_cond_timedwait(pthread_cond_t*, pthread_mutex_t*, const timespec*);
__attribute__((weak)) int __interceptor_pthread_detach(pthread_t);
}

TEST_INTERPOSED int __android_log_print(int priority, const char* tag, const char* format, ...) {
#ifndef TEST_SANITIZED  // a sanitizer looks at the arguments even when nobody listens
    if (test::activeCaptures == 0) return 0;
#endif
    const int error = errno;
    char text[1024];  // the platform's limit
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (test::activeCaptures != 0) test::addLine(priority, tag, text);
    errno = error;
    return 1;
}

TEST_INTERPOSED int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* end) {
    if (!test::clockIsVirtual) return TEST_NEXT(pthread_cond_timedwait)(condition, mutex, end);
    if (pthread_mutex_trylock(mutex) == 0) test::fail("a wait whose mutex nobody holds");
    pthread_mutex_unlock(mutex);
    test::virtualWait(*end);
    sched_yield();
    pthread_mutex_lock(mutex);
    return ETIMEDOUT;
}

TEST_INTERPOSED TEST_UNINSTRUMENTED int clock_gettime(clockid_t clock, timespec* time) noexcept {
    // The kernel's structure: the call below is the one with a `long` of seconds.
    static_assert(sizeof(timespec) == 2 * sizeof(long), "built for another time_t");
    if (clock == CLOCK_MONOTONIC && test::clockIsVirtual.load(std::memory_order_acquire)) {
        *time = test::virtualTime();
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
}

TEST_INTERPOSED int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                                   void* argument) noexcept {
    if (test::refusedThreads != 0) return EAGAIN;
    if (const int error = test::refusal("pthread_create")) return error;
    const auto create = TEST_NEXT(pthread_create);
    const test::OwnMemory own;
    test::Threads& threads = test::immortal<test::Threads>();
    const bool detached = test::isDetached(attributes);
    std::unique_lock<std::mutex> lock(threads.lock);  // the new thread finds itself noted when it ends
    if (test::awaitedThreads != 0 && !threads.gates.empty()) test::fail("ThreadsEndFirst under a ThreadGate");
    auto start = std::make_unique<test::Start>();
    *start = {routine, argument, threads.gates.empty() ? nullptr : threads.gates.back()};
    const int result = [&] {
        const test::LibraryMemory library;
        return create(thread, attributes, test::runThread, start.get());
    }();
    if (result == 0) {
        (void)start.release();  // the thread's now
        threads.known[*thread] = {false, detached};
        while (test::awaitedThreads != 0 && test::isRunning(*thread)) threads.oneEnded.wait(lock);
    }
    return result;
}

TEST_INTERPOSED int pthread_join(pthread_t thread, void** result) {
    test::Threads& threads = test::immortal<test::Threads>();
    const auto forget = [&] {
        const std::lock_guard<std::mutex> guard(threads.lock);
        return threads.known.extract(thread);
    };
    auto note = forget();  // before the join: the value may name another thread right after it
    const int status = TEST_NEXT(pthread_join)(thread, result);
    if (status != 0 && !note.empty()) {
        const std::lock_guard<std::mutex> guard(threads.lock);
        threads.known.insert(std::move(note));
    }
    return status;
}

TEST_INTERPOSED int pthread_detach(pthread_t thread) noexcept {
    test::Threads& threads = test::immortal<test::Threads>();
    const std::lock_guard<std::mutex> guard(threads.lock);
    const int status = TEST_NEXT(pthread_detach)(thread);
    const auto note = threads.known.find(thread);
    if (status == 0 && note != threads.known.end()) {
        note->second.detached = true;
        if (note->second.ended) threads.known.erase(note);
    }
    return status;
}
