// The test support itself, and the desktop's platform layer: what other tests lean on.
#include <android-base/properties.h>
#include <android/log.h>
#include <cutils/properties.h>
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "tests/support/Interpose.h"

namespace {

using namespace test;
using namespace std::literals;
using Lines = std::vector<LogLine>;
using Texts = std::vector<std::string>;

std::string contentOf(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool exists(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

timespec now(clockid_t clock = CLOCK_MONOTONIC) {
    timespec time{};
    EXPECT_EQ(0, clock_gettime(clock, &time));
    return time;
}

unsigned long long nowMs() {
    const timespec time = now();
    return static_cast<unsigned long long>(time.tv_sec) * 1000 +
           static_cast<unsigned long long>(time.tv_nsec) / 1000000;
}

// ------------------------------------------------------------------------------------------------------- log

TEST(LogCapture, KeepsPriorityTagAndText) {
    const LogCapture log;
    __android_log_print(ANDROID_LOG_DEBUG, "Tag", "%d of %s\n", 3, "four");
    __android_log_print(ANDROID_LOG_ERROR, nullptr, "no tag");
    EXPECT_EQ((Lines{{3, "Tag", "3 of four\n"}, {6, "", "no tag"}}), log.lines());
    EXPECT_EQ((Texts{"3 of four\n", "no tag"}), log.texts());
}

TEST(LogCapture, CutsAtThePlatformsLimit) {
    const LogCapture log;
    __android_log_print(ANDROID_LOG_DEBUG, "Tag", "%s", std::string(1023, 'x').c_str());
    __android_log_print(ANDROID_LOG_DEBUG, "Tag", "%s", std::string(1024, 'x').c_str());
    EXPECT_EQ((Texts{std::string(1023, 'x'), std::string(1023, 'x')}), log.texts());
}

TEST(LogCapture, HearsOnlyWhatIsSaidWhileItLives) {
    __android_log_print(ANDROID_LOG_DEBUG, "Tag", "before");
    {
        const LogCapture outer;
        {
            const LogCapture inner;
            __android_log_print(ANDROID_LOG_DEBUG, "Tag", "both");
            EXPECT_EQ(Texts{"both"}, inner.texts());
        }
        __android_log_print(ANDROID_LOG_DEBUG, "Tag", "outer");
        EXPECT_EQ((Texts{"both", "outer"}), outer.texts());
    }
    const LogCapture later;
    EXPECT_EQ(Texts{}, later.texts());
}

TEST(LogCapture, TakesLinesOfManyThreads) {
    const LogCapture log;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int line = 0; line < 100; ++line) __android_log_print(ANDROID_LOG_DEBUG, "Tag", "line");
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(400u, log.lines().size());
}

TEST(LogCapture, LeavesErrnoAlone) {
    const LogCapture log;
    errno = EBADF;
    __android_log_print(ANDROID_LOG_DEBUG, "Tag", "%s", std::string(2000, 'x').c_str());
    EXPECT_EQ(EBADF, errno);
}

TEST(LogLine, IsPrintedOnOneLine) {
    std::ostringstream out;
    out << LogLine{3, "Tag", "a\nb\n"};
    EXPECT_EQ("3 Tag: \"a\\nb\\n\"", out.str());
}

TEST(LogLine, DiffersInEachField) {
    const LogLine line{3, "Tag", "text"};
    EXPECT_EQ(line, (LogLine{3, "Tag", "text"}));
    EXPECT_NE(line, (LogLine{4, "Tag", "text"}));
    EXPECT_NE(line, (LogLine{3, "tag", "text"}));
    EXPECT_NE(line, (LogLine{3, "Tag", "texts"}));
}

// ----------------------------------------------------------------------------------------------------- clock

namespace {

/// Waits for what never comes, on a condition of the monotonic clock.
int waitInVain(unsigned microseconds) {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_t condition;
    pthread_cond_init(&condition, &attributes);
    pthread_condattr_destroy(&attributes);
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&mutex);
    timespec end = now();
    end.tv_nsec += static_cast<long>(microseconds) * 1000;
    end.tv_sec += end.tv_nsec / 1000000000;
    end.tv_nsec %= 1000000000;
    const int result = pthread_cond_timedwait(&condition, &mutex, &end);
    pthread_mutex_unlock(&mutex);
    pthread_cond_destroy(&condition);
    return result;
}

}  // namespace

TEST(VirtualClock, StandsStillUntilMoved) {
    VirtualClock clock(61500);
    EXPECT_EQ(61500u, nowMs());
    EXPECT_EQ(61500u, nowMs());
    clock.advance(250);
    EXPECT_EQ(61750u, nowMs());
    EXPECT_EQ(std::vector<unsigned>{}, clock.sleeps());
}

TEST(VirtualClock, MovesByTheWaits) {
    const VirtualClock clock;
    EXPECT_EQ(ETIMEDOUT, waitInVain(100000));
    EXPECT_EQ(100u, nowMs());
    EXPECT_EQ(ETIMEDOUT, waitInVain(1));
    EXPECT_EQ(100001000, now().tv_nsec);
    EXPECT_EQ((std::vector<unsigned>{100000, 1}), clock.sleeps());
}

TEST(VirtualClock, GoesPastThirtyTwoBitsOfMilliseconds) {
    VirtualClock clock(0xFFFFFFFFu);
    EXPECT_EQ(0xFFFFFFFFull, nowMs());
    clock.advance(1);
    EXPECT_EQ(0x100000000ull, nowMs());
}

TEST(VirtualClock, StartsAfresh) {
    {
        const VirtualClock clock(5000);
        waitInVain(7);
    }
    VirtualClock clock(1);
    EXPECT_EQ(1u, nowMs());
    EXPECT_EQ(std::vector<unsigned>{}, clock.sleeps());
}

TEST(VirtualClock, IsTheMonotonicClockAlone) {
    const VirtualClock clock(1000);
    EXPECT_GT(now(CLOCK_REALTIME).tv_sec, 1500000000);
}

TEST(VirtualClock, RunsAnActionInTheWaitAskedFor) {
    VirtualClock clock;
    std::vector<unsigned long long> seen;
    clock.atSleep(2, [&] { seen.push_back(nowMs()); });
    clock.atSleep(2, [&] { clock.advance(10); });
    for (int i = 0; i < 3; ++i) waitInVain(1000);
    EXPECT_EQ(std::vector<unsigned long long>{2}, seen);
    EXPECT_EQ(13u, nowMs());
}

TEST(VirtualClockDeathTest, IsAloneInItsTime) {
    const VirtualClock clock;
    EXPECT_DEATH(VirtualClock(), "a second VirtualClock");
}

TEST(Clock, IsTheMachinesOtherwise) {
    const unsigned long long before = nowMs();
    EXPECT_GT(before, 0u);
    while (nowMs() < before + 2) sched_yield();
    timespec time{};
    EXPECT_EQ(-1, clock_gettime(12345, &time));
    EXPECT_EQ(EINVAL, errno);
}

TEST(Clock, AWaitWithATimeLimitTakesItsTimeOtherwise) {
    const unsigned long long before = nowMs();
    EXPECT_EQ(ETIMEDOUT, waitInVain(3000));
    EXPECT_GE(nowMs() - before, 2u);
}

// --------------------------------------------------------------------------------------------------- threads

extern "C" void* setFlag(void* flag) {
    *static_cast<std::atomic<bool>*>(flag) = true;
    return flag;
}

extern "C" void* setFlagSlowly(void* flag) {
    giveWay(1000);
    return setFlag(flag);
}

extern "C" void* leaveEarly(void* result) { pthread_exit(result); }

TEST(Threads, GetTheirArgumentAndGiveTheirResult) {
    std::atomic<bool> ran{false};
    pthread_t thread;
    void* result = nullptr;
    ASSERT_EQ(0, pthread_create(&thread, nullptr, setFlag, &ran));
    ASSERT_EQ(0, pthread_join(thread, &result));
    EXPECT_TRUE(ran);
    EXPECT_EQ(&ran, result);
}

TEST(Threads, CountUntilTheyAreJoined) {
    EXPECT_EQ(1u, threadCount());
    std::atomic<bool> ran{false};
    pthread_t thread;
    ASSERT_EQ(0, pthread_create(&thread, nullptr, setFlag, &ran));
    while (!ran) sched_yield();
    EXPECT_EQ(2u, threadCount());
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    EXPECT_EQ(1u, threadCount());
}

TEST(Threads, CountUntilJoinedHoweverTheyEnd) {
    pthread_t thread;
    void* result = nullptr;
    int value = 0;
    ASSERT_EQ(0, pthread_create(&thread, nullptr, leaveEarly, &value));
    ASSERT_EQ(0, pthread_join(thread, &result));
    EXPECT_EQ(&value, result);
    EXPECT_EQ(1u, threadCount());
}

TEST(Threads, MayEndBeforeTheirCreationReturns) {
    const ThreadsEndFirst order;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    for (const int state : {PTHREAD_CREATE_JOINABLE, PTHREAD_CREATE_DETACHED}) {
        pthread_attr_setdetachstate(&attributes, state);
        std::atomic<bool> ran{false};
        pthread_t thread;
        ASSERT_EQ(0, pthread_create(&thread, &attributes, setFlagSlowly, &ran));
        EXPECT_TRUE(ran);
        EXPECT_EQ(state == PTHREAD_CREATE_JOINABLE ? 2u : 1u, threadCount());
        if (state == PTHREAD_CREATE_JOINABLE) {
            EXPECT_EQ(0, pthread_join(thread, nullptr));
        }
    }
    pthread_attr_destroy(&attributes);
}

TEST(Threads, CountUntilTheirEndWhenDetached) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    static std::atomic<bool> ran;
    for (const bool atOnce : {true, false}) {
        ran = false;
        pthread_t thread;
        {
            const ThreadGate gate;
            ASSERT_EQ(0, pthread_create(&thread, atOnce ? &attributes : nullptr, setFlag, &ran));
            if (!atOnce) {
                ASSERT_EQ(0, pthread_detach(thread));
            }
            EXPECT_EQ(2u, threadCount());
        }
        while (threadCount() != 1) sched_yield();
        EXPECT_TRUE(ran);
    }
    pthread_attr_destroy(&attributes);
}

TEST(Threads, CountOnWhenAJoinIsRefused) {
    // A thread that joins itself is told of the deadlock.
    static std::atomic<int> status;
    pthread_t thread;
    const auto joinSelf = [](void*) -> void* {
        status = pthread_join(pthread_self(), nullptr);
        return nullptr;
    };
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer takes the attempt for a join";
#endif
    ASSERT_EQ(0, pthread_create(&thread, nullptr, joinSelf, nullptr));
    while (status == 0) sched_yield();
    EXPECT_EQ(EDEADLK, status);
    EXPECT_EQ(2u, threadCount());
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    EXPECT_EQ(1u, threadCount());
}

TEST(ThreadCreateFails, StartsNothing) {
    std::atomic<bool> ran{false};
    pthread_t thread;
    {
        const ThreadCreateFails fails;
        EXPECT_EQ(EAGAIN, pthread_create(&thread, nullptr, setFlag, &ran));
        EXPECT_EQ(1u, threadCount());
    }
    EXPECT_FALSE(ran);
    ASSERT_EQ(0, pthread_create(&thread, nullptr, setFlag, &ran));
    pthread_join(thread, nullptr);
    EXPECT_TRUE(ran);
}

TEST(ThreadGate, HoldsThreadsBackUntilItOpens) {
    std::atomic<bool> ran{false};
    pthread_t thread;
    ThreadGate gate;
    ASSERT_EQ(0, pthread_create(&thread, nullptr, setFlag, &ran));
    giveWay(1000);
    EXPECT_FALSE(ran);
    gate.open();
    pthread_join(thread, nullptr);
    EXPECT_TRUE(ran);
    ran = false;
    ASSERT_EQ(0, pthread_create(&thread, nullptr, setFlag, &ran));  // an open gate holds nobody
    pthread_join(thread, nullptr);
    EXPECT_TRUE(ran);
}

TEST(ThreadGate, OpensAtItsEnd) {
    std::atomic<bool> ran{false};
    pthread_t thread;
    {
        const ThreadGate gate;
        ASSERT_EQ(0, pthread_create(&thread, nullptr, setFlag, &ran));
    }
    pthread_join(thread, nullptr);
    EXPECT_TRUE(ran);
}

TEST(ThreadGate, OpensFromASleep) {
    std::atomic<bool> ran{false};
    pthread_t thread;
    VirtualClock clock;
    ThreadGate gate;
    ASSERT_EQ(0, pthread_create(&thread, nullptr, setFlag, &ran));
    clock.atSleep(3, [&] {
        EXPECT_FALSE(ran);
        gate.open();
        pthread_join(thread, nullptr);
    });
    while (!ran) waitInVain(100000);
    EXPECT_EQ(3u, clock.sleeps().size());
}

// ------------------------------------------------------------------------------------------------ allocation

/// The compiler must not foresee what these return.
void* (*volatile const allocate)(size_t) = malloc;
void* (*volatile const allocateZeroed)(size_t, size_t) = calloc;
void* (*volatile const resize)(void*, size_t) = realloc;

TEST(AllocationFails, RefusesFromItsSizeOn) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    void* const kept = allocate(100);
    ASSERT_NE(nullptr, kept);
    memset(kept, 7, 100);
    {
        const AllocationFails fails(10000);
        errno = 0;
        EXPECT_EQ(nullptr, allocate(10000));
        EXPECT_EQ(ENOMEM, errno);
        EXPECT_EQ(nullptr, allocateZeroed(100, 100));
        EXPECT_EQ(nullptr, allocateZeroed(SIZE_MAX / 2, 4));
        EXPECT_EQ(nullptr, resize(kept, 10000));
        EXPECT_EQ(7, static_cast<char*>(kept)[99]);
        for (void* const small : {allocate(9999), allocateZeroed(9, 1111)}) {
            EXPECT_NE(nullptr, small);
            free(small);
        }
    }
    void* const grown = resize(kept, 10000);
    ASSERT_NE(nullptr, grown);
    EXPECT_EQ(7, static_cast<char*>(grown)[99]);
    free(grown);
}

TEST(AllocationFails, RefusesUpToASize) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    const AllocationFails fails(10000, 12000);
    EXPECT_EQ(nullptr, allocate(10000));
    EXPECT_EQ(nullptr, allocateZeroed(12, 1000));
    for (void* const other : {allocate(9999), allocate(12001)}) {
        EXPECT_NE(nullptr, other);
        free(other);
    }
}

TEST(AllocationFails, IsSupportedWhereItShouldBe) {
#if defined(__SANITIZE_THREAD__)
    EXPECT_FALSE(AllocationFails::supported());
#elif !defined(__clang__)
    const char* const preloaded = getenv("LD_PRELOAD");  // valgrind puts its own allocator in front
    if (preloaded != nullptr && strstr(preloaded, "vgpreload") != nullptr)
        GTEST_SKIP() << "valgrind brings an allocator of its own";
    EXPECT_TRUE(AllocationFails::supported());
#endif
}

TEST(Allocation, GivesNullWhenThereIsNotEnough) {
    // Also under the sanitizers, whose default is to stop the program.
    EXPECT_EQ(nullptr, allocate(SIZE_MAX - 65536));
    EXPECT_EQ(nullptr, allocateZeroed(1, SIZE_MAX - 65536));
}

// ---------------------------------------------------------------------------------------- descriptors, files

TEST(CallFails, FailsTheCallsAskedForAndNoOther) {
    const TempFile file("0123456789");
    const CallFails dups("dup", 2, 1);
    const int first = dup(file.fd());
    EXPECT_GE(first, 0);
    errno = 0;
    EXPECT_EQ(-1, dup(file.fd()));
    EXPECT_EQ(EMFILE, errno);
    EXPECT_EQ(-1, dup(file.fd()));
    const int last = dup(file.fd());
    EXPECT_GE(last, 0);
    EXPECT_EQ(2, dups.failed());
    close(first);
    close(last);
}

TEST(CallFails, ReachesEveryCallItNames) {
    const TempFile file("0123456789");
    FILE* const stream = fopen(file.path(), "rb");
    ASSERT_NE(nullptr, stream);
    {
        const CallFails opens("fopen", 1), duplicates("fdopen", 1), seeks("fseek", 1), tells("ftell", 1),
            moves("lseek", 1);
        EXPECT_EQ(nullptr, fopen(file.path(), "rb"));
        EXPECT_EQ(nullptr, fdopen(file.fd(), "rb"));
        EXPECT_EQ(-1, fseek(stream, 1, SEEK_SET));
        EXPECT_EQ(-1, ftell(stream));
        EXPECT_EQ(-1, lseek(file.fd(), 1, SEEK_SET));
        EXPECT_EQ(0, fseek(stream, 3, SEEK_SET));
        EXPECT_EQ(3, ftell(stream));
        EXPECT_EQ(4, lseek(file.fd(), 4, SEEK_SET));
    }
    { const CallFails unused("fseek", 5); }
    EXPECT_EQ(0, fseek(stream, 5, SEEK_SET));
    EXPECT_EQ('5', fgetc(stream));
    EXPECT_EQ(0, fclose(stream));
}

TEST(CallFailsDeathTest, KnowsItsNames) { EXPECT_DEATH(CallFails("fork", 1), "\"fork\" cannot be made to fail"); }

TEST(FileCalls, NotesCallsInTheirOrder) {
    const TempFile file("x");
    const std::string fd = std::to_string(file.fd());
    const FileCalls files;
    const int copy = dup(file.fd());
    FILE* const stream = fdopen(copy, "rb");
    const std::string copied = std::to_string(copy);
    EXPECT_EQ((Texts{"dup " + fd + " = " + copied, "fdopen " + copied}), files.calls());
    close(-1);
    fclose(stream);
    fclose(fopen(file.path(), "rb"));
    EXPECT_EQ((Texts{"dup " + fd + " = " + copied, "fdopen " + copied, "close -1", "fclose " + copied,
                     std::string("fopen ") + file.path(), "fclose " + copied}),
              files.calls());
}

TEST(TempFile, HoldsItsContentWhileItLives) {
    std::string path;
    const unsigned before = openDescriptors();
    {
        const TempFile file("a\0b\r\n"sv, ".srt");
        path = file.path();
        EXPECT_EQ(".srt", path.substr(path.size() - 4));
        EXPECT_EQ("a\0b\r\n"sv, contentOf(file.path()));
        char data[8];
        EXPECT_EQ(5, read(file.fd(), data, sizeof data));
        EXPECT_EQ("a\0b\r\n"sv, std::string_view(data, 5));
        EXPECT_EQ(before + 1, openDescriptors());
    }
    EXPECT_FALSE(exists(path));
    EXPECT_EQ(before, openDescriptors());
}

TEST(TempFile, MayBeEmptyOrLarge) {
    EXPECT_EQ("", contentOf(TempFile("").path()));
    const std::string large(3000000, 'x');
    EXPECT_EQ(large, contentOf(TempFile(large).path()));
}

TEST(OpenDescriptors, SeesALeak) {
    const unsigned before = openDescriptors();
    const int leak = dup(0);
    EXPECT_EQ(before + 1, openDescriptors());
    close(leak);
    EXPECT_EQ(before, openDescriptors());
}

TEST(Utf16, WidensBytes) {
    EXPECT_EQ(
        "\xFF\xFE"
        "a\0\xE9\0\0\0"sv,
        utf16le("a\xE9\0"sv));
    EXPECT_EQ(
        "\xFE\xFF"
        "\0a\0\xE9\0\0"sv,
        utf16be("a\xE9\0"sv));
    EXPECT_EQ("a\0"sv, utf16le("a", false));
    EXPECT_EQ("\0a"sv, utf16be("a", false));
    EXPECT_EQ("\xFF\xFE"sv, utf16le(""));
}

// --------------------------------------------------------------------------------------- the platform's layer

constexpr const char* kKey = "vendor.test.key";

struct PropertyRow {
    std::string value;
    const char* fallback;
    std::string read;
};

TEST(PropertyGet, ReadsAsOnAndroid) {
    const std::string longest(91, 'x'), tooLong(92, 'x'), far(200, 'x');
    const PropertyRow rows[] = {
        {"", nullptr, ""},
        {"", "", ""},
        {"", "other", "other"},
        {"big5", "other", "big5"},
        {"big5", nullptr, "big5"},
        {longest, "", longest},
        {tooLong, "", longest},
        {far, "", longest},
        {"", longest.c_str(), longest},
        {"", tooLong.c_str(), longest},
    };
    for (const PropertyRow& row : rows) {
        const SystemProperty property(kKey, row.value);
        char value[PROPERTY_VALUE_MAX + 1];
        memset(value, '#', sizeof value);
        EXPECT_EQ(static_cast<int>(row.read.size()), property_get(kKey, value, row.fallback)) << row.read;
        EXPECT_EQ(row.read, value);
        EXPECT_EQ('#', value[PROPERTY_VALUE_MAX]);
    }
}

TEST(PropertyGet, ForgetsWithTheTestsProperty) {
    char value[PROPERTY_VALUE_MAX];
    { const SystemProperty property(kKey, "set"); }
    EXPECT_EQ(0, property_get(kKey, value, nullptr));
    EXPECT_STREQ("", value);
}

}  // namespace
