// The benchmarks' table: vxsubtitle_bench [WORDS], where WORDS are a part of a group's or row's title.
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "bench/General.h"
#include "bench/Table.h"

namespace {

/// The value in /proc/cpuinfo, from the first processor that has it.
std::string processor(const std::string& key) {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.compare(0, key.size(), key) == 0) return line.substr(line.find(':') + 2);
    }
    return "?";
}

}  // namespace

int main(int argc, char** argv) {
    // The table goes where standard output goes; what a worker prints there does not.
    FILE* const out = fdopen(dup(STDOUT_FILENO), "w");
    if (out == nullptr || freopen("/dev/null", "w", stdout) == nullptr) return 1;
    fprintf(out, "%s, %ld x %.0f MHz; g++ %s; %s\n\n", processor("model name").c_str(), sysconf(_SC_NPROCESSORS_ONLN),
            strtod(processor("cpu MHz").c_str(), nullptr), __VERSION__, bench::generalLibraries().c_str());
    bench::registerMemory();  // first: no other row has torn the heap yet
    bench::registerScan();
    bench::registerText();
    bench::registerLookup();
    bench::registerOpening();
    bench::registerDispatcher();
    bench::registerPictures();
    bench::registerCharset();
    bench::registerPushedQueue();
    bench::run(out, argc > 1 ? argv[1] : "");
    return 0;
}
