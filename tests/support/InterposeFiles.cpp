// Descriptors and streams as the test wants them: calls that fail, and a record of those made.
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <mutex>

#include "tests/support/Forward.h"
#include "tests/support/Interpose.h"

namespace test {

namespace {

enum Call : size_t { kDup, kFdopen, kFopen, kFseek, kFtell, kLseek, kCalls };

struct Injection {
    const char* name;
    int error;
    std::atomic<int> after{0};   // calls that still succeed
    std::atomic<int> times{0};   // calls that fail behind them
    std::atomic<int> failed{0};  // calls that did
};

Injection injections[kCalls] = {{"dup", EMFILE}, {"fdopen", EMFILE}, {"fopen", EMFILE},
                                {"fseek", EIO},  {"ftell", EIO},     {"lseek", EIO}};

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
    errno = injection.error;
    return true;
}

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
    const std::lock_guard<std::mutex> guard(record().lock);
    record().calls.push_back(std::string(function) + " " + argument);
}

void note(const char* function, int fd) {
    if (recorders != 0) note(function, std::to_string(fd));
}

}  // namespace

CallFails::CallFails(const char* name, int times, int after) : mCall(callNamed(name)) {
    Injection& injection = injections[mCall];
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
}

TEST_INTERPOSED int dup(int fd) noexcept {
    const int copy = test::failsNow(test::kDup) ? -1 : TEST_NEXT(dup)(fd);
    if (test::recorders != 0) test::note("dup", std::to_string(fd) + " = " + std::to_string(copy));
    return copy;
}

TEST_INTERPOSED int close(int fd) {
    test::note("close", fd);
    return TEST_NEXT(close)(fd);
}

TEST_INTERPOSED FILE* fopen(const char* path, const char* mode) {
    test::note("fopen", path);
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
