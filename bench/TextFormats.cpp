// Every row of `formats`: scan, open, look up, extract, memory.
#include <malloc.h>
#include <string.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>

#include "bench/Formats.h"
#include "bench/Table.h"
#include "tests/support/Interpose.h"

namespace bench {

namespace {

constexpr size_t kFilm = 90000;

constexpr struct {
    Encoding encoding;
    const char* name;
} kEncodings[] = {{kEightBit, "8-bit"}, {kUtf16Le, "UTF-16 LE"}, {kUtf16Be, "UTF-16 BE"}};

/// The last file that was asked for, so that the repetitions of a benchmark share it.
const std::string& file(const Format& format, Encoding encoding, size_t size) {
    static std::string data;
    static std::string key;
    const std::string wanted = format.name + std::string("/") + std::to_string(encoding) + "/" + std::to_string(size);
    if (key != wanted) data = encode(format, encoding, size);
    key = wanted;
    return data;
}

/// From an empty tag table on; loading is not counted.
void scan(benchmark::State& state, const Format& format, Encoding encoding) {
    const std::string& data = file(format, encoding, kLargeFile);
    for (auto _ : state) {
        state.PauseTiming();
        auto parser = load(format, data);
        state.ResumeTiming();
        format.scan(*parser);
        state.PauseTiming();
        if (parser->GetTagNum() < data.size() / 400) {
            state.SkipWithError("entries are missing");
            break;
        }
        parser.reset();
        state.ResumeTiming();
    }
    reportRate(state, "MB/s", static_cast<double>(data.size()) / 1e6);
}

/// The median wall time of one call, in microseconds.
template <class Action>
void reportMedian(benchmark::State& state, Action action) {
    std::vector<double> samples;
    for (auto _ : state) samples.push_back(action());
    const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    report(state, "us", *middle);
}

/// Construction and `BeginParse`, which reads the file and waits for the scan.
template <class Construct>
void open(benchmark::State& state, Construct construct) {
    using Clock = std::chrono::steady_clock;
    reportMedian(state, [&] {
        const auto start = Clock::now();
        const std::unique_ptr<SubtitleParser> parser = construct();
        const BOOL opened = parser->BeginParse();
        const std::chrono::duration<double, std::micro> passed = Clock::now() - start;
        if (opened != TRUE || parser->GetTagNum() == 0) state.SkipWithError("the file did not open");
        return passed.count();
    });
}

void openPath(benchmark::State& state, const Format& format) {
    const test::TempFile film(encode(format, kEightBit, kFilm));
    std::string path = film.path();
    open(state, [&] { return format.onPath(path.data()); });
}

void openDescriptor(benchmark::State& state, const Format& format) {
    const test::TempFile film(encode(format, kEightBit, kFilm));
    open(state, [&] { return format.onDescriptor(film.fd()); });
}

void getTag(benchmark::State& state, const Format& format, size_t size) {
    const auto parser = loadAndScan(format, file(format, kEightBit, size));
    const U32 count = parser->GetTagNum();
    ST_MEDIA_SUBTITLE_PARSER_TAG last = {};
    parser->GetTagInfo(0, count - 1, &last);
    U64 time = 0;
    for (auto _ : state) {
        time = (time + 2654435761U) % last.u32TimeEnd;  // here and there in the film
        benchmark::DoNotOptimize(parser->GetTag(0, static_cast<U32>(time)));
    }
    reportNanosecondsEach(state, 1);
}

/// The texts of the whole film, in its order.
void getData(benchmark::State& state, const Format& format, Encoding encoding) {
    const auto parser = loadAndScan(format, file(format, encoding, kFilm));
    const U32 count = parser->GetTagNum();
    U8 text[8192];
    for (auto _ : state) {
        for (U32 i = 0; i < count; ++i) {
            if (parser->GetData(0, text, sizeof text, i) == 0) state.SkipWithError("a text is missing");
        }
    }
    reportNanosecondsEach(state, count);
}

/// A line of /proc/self/status in kilobytes.
double statusOf(const char* key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, strlen(key), key) == 0) return std::stod(line.substr(strlen(key) + 1));
    }
    return 0;
}

/// What opening a file adds to the process at its highest, against the size of the file.
void memory(benchmark::State& state, const Format& format, size_t size) {
    const test::TempFile film(encode(format, kEightBit, size));
    format.onDescriptor(film.fd())->BeginParse();  // what only the first one of all touches is not counted
    for (auto _ : state) {
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << "5\n";  // the highest so far is what is in use now
        const double before = statusOf("VmRSS:");
        const auto parser = format.onDescriptor(film.fd());
        if (parser->BeginParse() != TRUE) state.SkipWithError("the file did not open");
        report(state, "KiB", statusOf("VmHWM:") - before);
    }
}

}  // namespace

void registerTextFormats() {
    for (const Format& format : formats) {
        for (const auto& [encoding, title] : kEncodings) {
            if (!reads(format, encoding)) continue;
            add(kScanGroup, format.name + std::string(", ") + title, [&format, e = encoding](benchmark::State& state) {
                scan(state, format, e);
            })->Repetitions(5);
        }
    }
    registerYardsticks();
    for (const Format& format : formats) {
        add("opening a film of 90 KB, wall time", format.name + std::string(", path"),
            [&format](benchmark::State& state) { openPath(state, format); })
            ->Iterations(500);
        add("opening a film of 90 KB, wall time", format.name + std::string(", descriptor"),
            [&format](benchmark::State& state) { openDescriptor(state, format); })
            ->Iterations(500);
    }
    for (const Format& format : formats) {
        add("GetTag, each", format.name + std::string(", 90 KB"),
            [&format](benchmark::State& state) { getTag(state, format, kFilm); });
        add("GetTag, each", format.name + std::string(", 32 MiB"),
            [&format](benchmark::State& state) { getTag(state, format, kLargeFile); });
    }
    for (const Format& format : formats) {
        for (const auto& [encoding, title] : kEncodings) {
            if (!reads(format, encoding)) continue;
            add("GetData, each", format.name + std::string(", ") + title,
                [&format, e = encoding](benchmark::State& state) { getData(state, format, e); });
        }
    }
    for (const Format& format : formats) {
        add("memory at its highest while a file is opened", format.name + std::string(", 90 KB"),
            [&format](benchmark::State& state) { memory(state, format, kFilm); })
            ->Iterations(1);
        add("memory at its highest while a file is opened", format.name + std::string(", 32 MiB"),
            [&format](benchmark::State& state) { memory(state, format, kLargeFile); })
            ->Iterations(1);
    }
}

}  // namespace bench
