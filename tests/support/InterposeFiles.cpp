// Descriptors and streams as the test wants them: calls that fail, and a record of those made.
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <mutex>

#include "tests/support/Forward.h"
#include "tests/support/Interpose.h"
#include "tests/support/OwnMemory.h"

namespace test {

namespace {

enum Call : size_t {
    kDup,
    kFdopen,
    kFopen,
    kFseek,
    kFtell,
    kLseek,
    kFread,
    kRead,
    kHalfFread,
    kHalfRead,
    kPthreadCreate,
    kCalls
};

struct Injection {
    const char* name;
    int usual;                   // error
    std::atomic<int> error{0};   // the one now
    std::atomic<int> after{0};   // calls that still succeed
    std::atomic<int> times{0};   // calls that fail behind them
    std::atomic<int> failed{0};  // calls that did
};

Injection injections[kCalls] = {{"dup", EMFILE},
                                {"fdopen", EMFILE},
                                {"fopen", EMFILE},
                                {"fseek", EIO},
                                {"ftell", EIO},
                                {"lseek", EIO},
                                {"fread", EIO},
                                {"read", EIO},
                                {"half fread", 0},
                                {"half read", 0},
                                {"pthread_create", EAGAIN}};

size_t callNamed(const char* name) {
    for (size_t call = 0; call < kCalls; ++call) {
        if (strcmp(injections[call].name, name) == 0) return call;
    }
    fprintf(stderr, "test support: \"%s\" cannot be made to fail\n", name);
    abort();
}

/// Takes one from a count unless there is none left.
bool takeOne(std::atomic<int>& count) {
    int left = count;
    while (left > 0) {
        if (count.compare_exchange_weak(left, left - 1)) return true;
    }
    return false;
}

bool failsNow(Call call) {
    Injection& injection = injections[call];
    if (takeOne(injection.after) || !takeOne(injection.times)) return false;
    ++injection.failed;
    if (injection.error != 0) errno = injection.error;
    return true;
}

bool isDuplication(int command) { return command == F_DUPFD || command == F_DUPFD_CLOEXEC; }

struct Record {
    std::mutex lock;
    std::vector<std::string> calls;
};

Record& record() {
    static Record* const calls = new Record;  // never destroyed: files are closed until the very end
    return *calls;
}

std::atomic<int> recorders{0};

void note(const char* function, const std::string& argument) {
    if (recorders == 0) return;
    const OwnMemory own;
    const std::lock_guard<std::mutex> guard(record().lock);
    record().calls.push_back(std::string(function) + " " + argument);
}

void note(const char* function, int fd) {
    if (recorders == 0) return;
    const OwnMemory own;
    note(function, std::to_string(fd));
}

void notePath(const char* path) {
    if (recorders == 0) return;
    const OwnMemory own;
    note("fopen", std::string(path));
}

void noteCopy(int fd, int copy) {
    if (recorders == 0) return;
    const OwnMemory own;
    note("dup", std::to_string(fd) + " = " + std::to_string(copy));
}

using Fcntl = int (*)(int, int, ...);

/// `fcntl` under either of its names: the argument is passed on as the pointer or number that it is.
int passOn(Fcntl function, int fd, int command, void* argument) {
    if (isDuplication(command) && failsNow(kDup)) {
        noteCopy(fd, -1);
        return -1;
    }
    const int result = function(fd, command, argument);
    if (isDuplication(command)) noteCopy(fd, result);
    return result;
}

}  // namespace

int refusal(const char* name) {
    const Call call = static_cast<Call>(callNamed(name));
    return failsNow(call) ? injections[call].error.load() : 0;
}

CallFails::CallFails(const char* name, int times, int after, int error) : mCall(callNamed(name)) {
    Injection& injection = injections[mCall];
    injection.error = error != 0 ? error : injection.usual;
    injection.failed = 0;
    injection.after = after;
    injection.times = times;
}

CallFails::~CallFails() {
    Injection& injection = injections[mCall];
    injection.after = 0;
    injection.times = 0;
}

int CallFails::failed() const { return injections[mCall].failed; }

FileCalls::FileCalls() {
    const std::lock_guard<std::mutex> guard(record().lock);
    if (recorders++ == 0) record().calls.clear();
}

FileCalls::~FileCalls() { --recorders; }

std::vector<std::string> FileCalls::calls() const {
    const std::lock_guard<std::mutex> guard(record().lock);
    return record().calls;
}

}  // namespace test

// Weak: a sanitizer has some of them, the plain C library none.
extern "C" {
__attribute__((weak)) int __interceptor_close(int);
__attribute__((weak)) int __interceptor_dup(int);
__attribute__((weak)) int __interceptor_fclose(FILE*);
__attribute__((weak)) FILE* __interceptor_fdopen(int, const char*);
__attribute__((weak)) FILE* __interceptor_fopen(const char*, const char*);
__attribute__((weak)) int __interceptor_fseek(FILE*, long, int);
__attribute__((weak)) long __interceptor_ftell(FILE*);
__attribute__((weak)) off_t __interceptor_lseek(int, off_t, int);
__attribute__((weak)) size_t __interceptor_fread(void*, size_t, size_t, FILE*);
__attribute__((weak)) ssize_t __interceptor_read(int, void*, size_t);
}

TEST_INTERPOSED int dup(int fd) noexcept {
    const int copy = test::failsNow(test::kDup) ? -1 : TEST_NEXT(dup)(fd);
    test::noteCopy(fd, copy);
    return copy;
}

// Both names of one function: which of them a call reaches depends on the width of file offsets.
extern "C" {
__attribute__((weak)) int __interceptor_fcntl(int, int, ...);
__attribute__((weak)) int __interceptor_fcntl64(int, int, ...);
__attribute__((visibility("default"))) int testFcntl(int fd, int command, ...) __asm__("fcntl");
__attribute__((visibility("default"))) int testFcntl64(int fd, int command, ...) __asm__("fcntl64");
}

#define TEST_FCNTL(name)                                                                                               \
    va_list arguments;                                                                                                 \
    va_start(arguments, command);                                                                                      \
    void* const argument = va_arg(arguments, void*);                                                                   \
    va_end(arguments);                                                                                                 \
    static const auto next = __interceptor_##name != nullptr ? &__interceptor_##name                                   \
                                                             : reinterpret_cast<test::Fcntl>(dlsym(RTLD_NEXT, #name)); \
    return test::passOn(next, fd, command, argument)

int testFcntl(int fd, int command, ...) { TEST_FCNTL(fcntl); }
int testFcntl64(int fd, int command, ...) { TEST_FCNTL(fcntl64); }

TEST_INTERPOSED int close(int fd) {
    test::note("close", fd);
    return TEST_NEXT(close)(fd);
}

TEST_INTERPOSED FILE* fopen(const char* path, const char* mode) {
    test::notePath(path);
    return test::failsNow(test::kFopen) ? nullptr : TEST_NEXT(fopen)(path, mode);
}

TEST_INTERPOSED FILE* fdopen(int fd, const char* mode) noexcept {
    test::note("fdopen", fd);
    return test::failsNow(test::kFdopen) ? nullptr : TEST_NEXT(fdopen)(fd, mode);
}

TEST_INTERPOSED int fclose(FILE* stream) {
    test::note("fclose", fileno(stream));
    return TEST_NEXT(fclose)(stream);
}

TEST_INTERPOSED int fseek(FILE* stream, long offset, int whence) {
    return test::failsNow(test::kFseek) ? -1 : TEST_NEXT(fseek)(stream, offset, whence);
}

TEST_INTERPOSED long ftell(FILE* stream) { return test::failsNow(test::kFtell) ? -1 : TEST_NEXT(ftell)(stream); }

TEST_INTERPOSED off_t lseek(int fd, off_t offset, int whence) noexcept {
    return test::failsNow(test::kLseek) ? -1 : TEST_NEXT(lseek)(fd, offset, whence);
}

TEST_INTERPOSED size_t fread(void* buffer, size_t size, size_t count, FILE* stream) {
    if (test::failsNow(test::kFread)) return 0;
    return TEST_NEXT(fread)(buffer, size, test::failsNow(test::kHalfFread) ? count / 2 : count, stream);
}

TEST_INTERPOSED ssize_t read(int fd, void* buffer, size_t size) {
    if (test::failsNow(test::kRead)) return -1;
    return TEST_NEXT(read)(fd, buffer, test::failsNow(test::kHalfRead) ? size / 2 : size);
}
