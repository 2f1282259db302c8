/// Results as a table: each benchmark reports one figure under its unit.
#pragma once

#include <stdio.h>

#include <benchmark/benchmark.h>

#include <string>

namespace bench {

// The rows of each file, in the table's order.
void registerTextFormats();  ///< every row of `formats`
void registerYardsticks();   ///< what the scans are measured against; right behind them
void registerDispatcher();
void registerCharset();
void registerVobSub();
void registerPushedQueue();

constexpr char kScanGroup[] = "scan of 32 MiB, from memory to tags";
constexpr size_t kLargeFile = 32 << 20;

/// A row `title` under the heading `group`.
template <class Body>
benchmark::internal::Benchmark* add(const std::string& group, const std::string& title, Body body) {
    return benchmark::RegisterBenchmark((group + "/" + title).c_str(), body);
}

/// Sets what the table shows: "how much" in `unit`.
inline void report(benchmark::State& state, const char* unit, double value) { state.counters[unit] = value; }

/// The same as a rate: `perIteration` units of work, in `unit` per second of CPU time.
inline void reportRate(benchmark::State& state, const char* unit, double perIteration) {
    state.counters[unit] = benchmark::Counter(perIteration, benchmark::Counter::kIsIterationInvariantRate);
}

/// CPU time per piece of work, with `perIteration` pieces in each iteration.
inline void reportNanosecondsEach(benchmark::State& state, double perIteration) {
    using benchmark::Counter;
    state.counters["ns"] =
        Counter(perIteration * 1e-9, Counter::Flags(Counter::kIsIterationInvariantRate | Counter::kInvert));
}

/// One row per benchmark: its name, the figure (the median where it was repeated) and the unit.
class Table : public benchmark::BenchmarkReporter {
public:
    explicit Table(FILE* out) : mOut(out) {}
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    bool failed() const { return mFailed; }

private:
    FILE* mOut;
    std::string mGroup;
    bool mFailed = false;
};

}  // namespace bench
