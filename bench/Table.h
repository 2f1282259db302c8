/// The benchmarks' table: groups of rows, each a piece of work done in several ways. Every row is measured in rounds
/// that take its ways in turn, so that a machine that is slow for a while is slow for all of them; figures are medians
/// over the rounds, and so are the ratios to the first way.
#pragma once

#include <stdio.h>
#include <time.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace bench {

// The groups of each file, in the table's order.
void registerMemory();
void registerScan();
void registerText();
void registerLookup();
void registerOpening();
void registerDispatcher();
void registerPictures();
void registerCharset();
void registerPushedQueue();

/// One round's figure, in the unit of its group. None: there is nothing to compare with, or it is not installed.
using Measure = std::function<double()>;

/// What a way stands for that could be measured if it were installed.
Measure notInstalled();

enum class Better { kLower, kHigher };

struct Group {
    std::string title;
    const char* unit;
    Better better;
    std::vector<const char*> others;  ///< the ways that the library is measured against
};

/// A group; rows that are added from now on belong to it.
void begin(const Group& group);

/// A row of the last group. `prepare` makes its ways, the library's first, right before they are measured; what they
/// own is gone behind the row. Not all of the group's ways need to be there.
void add(const std::string& title, std::function<std::vector<Measure>()> prepare);

/// The table of all rows whose group or title holds `filter`, as Markdown.
void run(FILE* out, const std::string& filter);

/// Ends the program: what was measured did not do its work.
[[noreturn]] void fail(const std::string& why);

/// The compiler has to come up with the value.
template <class T>
void keep(const T& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

// ---- Time ----

inline double clockNs(clockid_t clock) {
    timespec now;
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

/// Nanoseconds of this thread's processor time that one call takes.
template <class Work>
double cpuNs(Work work) {
    const double start = clockNs(CLOCK_THREAD_CPUTIME_ID);
    work();
    return clockNs(CLOCK_THREAD_CPUTIME_ID) - start;
}

/// The same on the wall clock.
template <class Work>
double wallNs(Work work) {
    const double start = clockNs(CLOCK_MONOTONIC);
    work();
    return clockNs(CLOCK_MONOTONIC) - start;
}

/// Nanoseconds of processor time for each of `pieces` pieces of work that a call does, called again and again for a
/// while.
template <class Work>
double cpuNsEach(double pieces, Work work) {
    constexpr double kWhile = 15e6;
    double passed = 0;
    size_t calls = 0;
    for (size_t batch = 1; passed < kWhile; batch *= 2, calls += batch / 2) {
        passed += cpuNs([&] {
            for (size_t i = 0; i < batch; ++i) work();
        });
    }
    return passed / (static_cast<double>(calls) * pieces);
}

/// The median wall time of 60 calls, in microseconds; each finds a heap with nothing to spare, as the one film does
/// that a player opens.
Measure medianWallUs(std::function<void()> work);

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace bench
