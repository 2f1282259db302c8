// The benchmarks' table. Arguments are Google Benchmark's: --benchmark_filter=scan, --benchmark_repetitions=9 ...
#include <stdio.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "bench/Table.h"

namespace bench {

namespace {

std::string processor() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.compare(0, 10, "model name") == 0) return line.substr(line.find(':') + 2);
    }
    return "unknown processor";
}

}  // namespace

bool Table::ReportContext(const Context& context) {
    fprintf(mOut, "%s, %d x %.0f MHz; compiler " __VERSION__ "\n", processor().c_str(), context.cpu_info.num_cpus,
            context.cpu_info.cycles_per_second / 1e6);
    fflush(mOut);
    return true;
}

void Table::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        const std::string name = run.run_name.function_name;
        if (run.error_occurred) {
            fprintf(mOut, "  %-42s %s\n", name.c_str(), run.error_message.c_str());
            mFailed = true;
            continue;
        }
        const bool aggregate = run.run_type == Run::RT_Aggregate;
        if (aggregate ? run.aggregate_name != "median" : run.repetitions > 1) continue;
        const size_t slash = name.find('/');
        if (name.compare(0, slash, mGroup) != 0) {
            mGroup = name.substr(0, slash);
            fprintf(mOut, "\n%s\n", mGroup.c_str());
        }
        for (const auto& [unit, counter] : run.counters) {
            const double value = counter.value;
            fprintf(mOut, "  %-42s %10.*f %s\n", name.c_str() + slash + 1,
                    value < 10    ? 2
                    : value < 100 ? 1
                                  : 0,
                    value, unit.c_str());
        }
    }
    fflush(mOut);
}

}  // namespace bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    // The table goes where standard output goes; what a worker prints there does not.
    FILE* const out = fdopen(dup(STDOUT_FILENO), "w");
    if (out == nullptr || freopen("/dev/null", "w", stdout) == nullptr) return 1;
    bench::registerTextFormats();
    bench::registerDispatcher();
    bench::registerCharset();
    bench::registerVobSub();
    bench::registerPushedQueue();
    bench::Table table(out);
    benchmark::RunSpecifiedBenchmarks(&table);
    return table.failed() ? 1 : 0;
}
