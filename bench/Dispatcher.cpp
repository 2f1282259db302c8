// The dispatcher of .sub files: how long the decision takes, the opening of the dialect that it decides on included.
#include <string>

#include "bench/Films.h"
#include "bench/Table.h"
#include "subtitle/SubtitleParserSUB.h"
#include "tests/support/Interpose.h"

namespace bench {

namespace {

void decide(benchmark::State& state, const std::string& content, BOOL accepted) {
    const test::TempFile file(content);
    std::string path = file.path();
    for (auto _ : state) {
        SubtitleParserSUB parser(reinterpret_cast<U8*>(&path[0]));
        if (parser.BeginParse() != accepted) state.SkipWithError("decided otherwise");
    }
    state.counters["us"] = benchmark::Counter(
        1e-6, benchmark::Counter::Flags(benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert));
}

}  // namespace

void registerDispatcher() {
    constexpr size_t kFilm = 90000;
    const struct {
        const char* title;
        std::string film;
        BOOL accepted;
    } kRows[] = {
        {"SubViewer 2.0", subViewer20Film(kFilm), TRUE},
        {"SubViewer 1.0", subViewer10Film(kFilm), TRUE},
        {"MicroDVD", microDvdFilm(kFilm), TRUE},
        {"DVB subtitle system, one-digit hours", "1:00:01:00 1:00:04:00 text\r\n" + dvbFilm(kFilm), TRUE},
        {"none of them", smiFilm(kFilm), FALSE},
    };
    for (const auto& row : kRows) {
        add("opening a .sub of 90 KB through the dispatcher, wall time", row.title,
            [film = row.film, accepted = row.accepted](benchmark::State& state) { decide(state, film, accepted); })
            ->UseRealTime()
            ->Iterations(300);
    }
}

}  // namespace bench
