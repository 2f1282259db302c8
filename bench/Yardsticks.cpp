// What a scan can be expected to cost: finding the line ends alone, and the scans by hand.
#include <string.h>

#include "bench/ByHand.h"
#include "bench/Formats.h"
#include "bench/Table.h"

namespace bench {

namespace {

void memchrLines(benchmark::State& state, const Format& format) {
    const std::string data = format.film(kLargeFile);
    for (auto _ : state) {
        size_t lines = 0;
        const char* const end = data.data() + data.size();
        for (const char* p = data.data(); p != end; ++lines) {
            const void* const found = memchr(p, '\n', static_cast<size_t>(end - p));
            p = found == nullptr ? end : static_cast<const char*>(found) + 1;
        }
        benchmark::DoNotOptimize(lines);
    }
    reportRate(state, "MB/s", static_cast<double>(data.size()) / 1e6);
}

bool sameTags(const Tags& tags, const SubtitleParser& parser) {
    if (tags.count() != parser.m_u32TagNum) return false;
    for (size_t i = 0; i < tags.count(); ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& a = tags[i];
        const ST_MEDIA_SUBTITLE_PARSER_TAG& b = parser.m_pTagBuffer[i];
        if (a.u32TimeStart != b.u32TimeStart || a.u32TimeEnd != b.u32TimeEnd || a.s64Pos != b.s64Pos) return false;
    }
    return true;
}

void byHand(benchmark::State& state, const Format& format, ScanByHand scan) {
    const std::string data = format.film(kLargeFile);
    const std::unique_ptr<SubtitleParser> parser = loadAndScan(format, data);
    bool same = true;
    for (auto _ : state) {
        Tags tags;
        scan(data.data(), data.data() + data.size(), &tags);
        state.PauseTiming();
        same = same && sameTags(tags, *parser);
        state.ResumeTiming();
    }
    if (!same) state.SkipWithError("the tags differ from the parser's");
    reportRate(state, "MB/s", static_cast<double>(data.size()) / 1e6);
}

}  // namespace

void registerYardsticks() {
    for (const Format& format : formats) {
        add(kScanGroup, "memchr from line end to line end: " + std::string(format.name),
            [&format](benchmark::State& state) { memchrLines(state, format); })
            ->Repetitions(5);
        const ScanByHand scan = scanByHand(format.name);
        if (scan == nullptr) continue;
        add(kScanGroup, "by hand, the same tags: " + std::string(format.name),
            [&format, scan](benchmark::State& state) { byHand(state, format, scan); })
            ->Repetitions(5);
    }
}

}  // namespace bench
