/// A test's hands on what the library asks of the platform: log, clock, sleep, threads, files and memory.
///
/// The functions themselves (`__android_log_print`, `pthread_cond_timedwait`, `clock_gettime`, `pthread_create`, `dup`
/// ...) are defined by every program that links this support and so come before the platform's. They behave like the
/// platform's except while one of the objects below lives. All objects are RAII, may be used from any thread and end
/// their effect when they are destroyed.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// One message as the platform log receives it: formatted, cut to 1023 bytes. A null tag reads as "".
struct LogLine {
    int priority;
    std::string tag;
    std::string text;
};
bool operator==(const LogLine& a, const LogLine& b);
bool operator!=(const LogLine& a, const LogLine& b);
std::ostream& operator<<(std::ostream& out, const LogLine& line);

/// Collects what is logged while it lives. Without one, log lines are dropped.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> lines() const;
    std::vector<std::string> texts() const;

    struct State;

private:
    std::shared_ptr<State> mState;
};

/// CLOCK_MONOTONIC stands still and moves only by `advance` and by waits with a time limit: `pthread_cond_timedwait`
/// takes no time, runs out, and the clock stands at its end. One at a time.
class VirtualClock {
public:
    explicit VirtualClock(unsigned startMs = 0);
    ~VirtualClock();
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

    void advance(unsigned ms);
    void advanceMicroseconds(unsigned us);

    /// Every wait so far, in microseconds.
    std::vector<unsigned> sleeps() const;

    /// Runs `action` inside the `count`-th wait (counted from 1), on the waiting thread.
    void atSleep(size_t count, std::function<void()> action);
};

/// `pthread_create` returns EAGAIN and starts nothing.
class ThreadCreateFails {
public:
    ThreadCreateFails();
    ~ThreadCreateFails();
    ThreadCreateFails(const ThreadCreateFails&) = delete;
    ThreadCreateFails& operator=(const ThreadCreateFails&) = delete;
};

/// Threads created meanwhile wait before their first step until `open` is called or the gate is destroyed. Under
/// a gate a wait with a time limit needs a VirtualClock, or it waits in earnest.
class ThreadGate {
public:
    ThreadGate();
    ~ThreadGate();
    ThreadGate(const ThreadGate&) = delete;
    ThreadGate& operator=(const ThreadGate&) = delete;

    void open();

    struct State;

private:
    std::shared_ptr<State> mState;
};

/// `pthread_create` returns only when the new thread has run to its end, so that the order of events is fixed. Not
/// together with a ThreadGate.
class ThreadsEndFirst {
public:
    ThreadsEndFirst();
    ~ThreadsEndFirst();
    ThreadsEndFirst(const ThreadsEndFirst&) = delete;
    ThreadsEndFirst& operator=(const ThreadsEndFirst&) = delete;
};

/// `malloc`, `calloc` and `realloc` of so many bytes, at least and at most, give null. For programs declared with
/// ALLOC; when `supported` is false (thread sanitizer, clang's sanitizers, valgrind) the object has no effect: skip
/// the test.
class AllocationFails {
public:
    static bool supported();

    explicit AllocationFails(size_t atLeastBytes, size_t atMostBytes = SIZE_MAX);
    ~AllocationFails();
    AllocationFails(const AllocationFails&) = delete;
    AllocationFails& operator=(const AllocationFails&) = delete;
};

/// While it lives, what this thread allocates is the test's own: it neither counts for `NthAllocationFails` nor fails
/// by it.
class OwnMemory {
public:
    OwnMemory();
    ~OwnMemory();
    OwnMemory(const OwnMemory&) = delete;
    OwnMemory& operator=(const OwnMemory&) = delete;
};

/// While it lives, what this thread allocates counts again, whatever `OwnMemory` is around it.
class LibraryMemory {
public:
    LibraryMemory();
    ~LibraryMemory();
    LibraryMemory(const LibraryMemory&) = delete;
    LibraryMemory& operator=(const LibraryMemory&) = delete;

private:
    int mOwn;
};

/// Of all allocations of all threads - `malloc`, `calloc`, `realloc` and `operator new` - those that are not the test's
/// own are counted from 1, and one of them fails, or all from that one on. Supported where `AllocationFails` is.
class NthAllocationFails {
public:
    enum class Extent { kAlone, kAndAllLater };

    NthAllocationFails(size_t number, Extent extent);
    ~NthAllocationFails();
    NthAllocationFails(const NthAllocationFails&) = delete;
    NthAllocationFails& operator=(const NthAllocationFails&) = delete;

    /// Whether there were as many allocations: one at least has failed then.
    bool wasReached() const;
};

/// Calls number `after` + 1 to `after` + `times` of a function fail: "dup" (also by `fcntl` with F_DUPFD_CLOEXEC),
/// "fdopen", "fopen", "fseek", "ftell", "lseek", "fread", "read" or "pthread_create". -1, null or no items are
/// returned, errno is EMFILE where a descriptor was wanted, EAGAIN for a thread and EIO elsewhere, or the one named.
/// "half fread" and "half read" read half of what was asked for instead.
class CallFails {
public:
    CallFails(const char* name, int times, int after = 0, int error = 0);
    ~CallFails();
    CallFails(const CallFails&) = delete;
    CallFails& operator=(const CallFails&) = delete;

    /// How many calls were made to fail.
    int failed() const;

private:
    size_t mCall;
};

/// Notes the file calls made while it lives, in order: "dup 5 = 7" (whichever call duplicated it), "fdopen 7",
/// "fopen /a/path", "fclose 7", "close 5". Streams are shown by their descriptor.
class FileCalls {
public:
    FileCalls();
    ~FileCalls();
    FileCalls(const FileCalls&) = delete;
    FileCalls& operator=(const FileCalls&) = delete;

    std::vector<std::string> calls() const;
};

/// A system property that has `value` while this lives and is unset afterwards.
class SystemProperty {
public:
    SystemProperty(std::string key, const std::string& value);
    ~SystemProperty();
    SystemProperty(const SystemProperty&) = delete;
    SystemProperty& operator=(const SystemProperty&) = delete;

private:
    std::string mKey;
};

/// Bytes widened to 16-bit units (Latin-1), with a byte-order mark in front.
std::string utf16le(std::string_view ascii, bool mark = true);
std::string utf16be(std::string_view ascii, bool mark = true);

/// A file with this content, removed at the end.
class TempFile {
public:
    explicit TempFile(std::string_view content, const char* suffix = "");
    ~TempFile();
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    const char* path() const { return mPath.c_str(); }

    /// Open for reading at offset 0; closed at the end, unless the test has closed it.
    int fd() const { return mFd; }

private:
    std::string mPath;
    int mFd;
};

/// Yields so many times, so that other threads come to something; for a part of a second at the most, as each yield is
/// a long one on a busy machine.
void giveWay(unsigned times);

/// Open descriptors of the process. Compare before and after: what the machine itself holds open counts too.
unsigned openDescriptors();

/// The main thread, and every thread of `pthread_create` that nobody has joined yet (detached: that has not ended).
unsigned threadCount();

}  // namespace test
