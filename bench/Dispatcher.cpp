// The dispatcher of .sub files: how long the decision takes, the opening of the dialect that it decides on included.
#include <string>

#include "bench/Films.h"
#include "bench/Table.h"
#include "subtitle/SubtitleParserSUB.h"
#include "tests/support/Interpose.h"

namespace bench {

namespace {

constexpr size_t kFilm = 90000;

/// Opens the file; whose it is, INVALID when nobody's.
EN_MEDIA_SUBTITLE_PARSER_TYPE decide(const test::TempFile& file) {
    std::string path = file.path();
    SubtitleParserSUB parser(reinterpret_cast<U8*>(&path[0]));
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
    info.eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID;
    if (parser.BeginParse() == TRUE) parser.GetTrackInfo(0, &info);
    return info.eSubtitleType;
}

/// A row, unless an earlier dialect takes the film.
void addFilm(const char* title, EN_MEDIA_SUBTITLE_PARSER_TYPE type, const std::string& film) {
    if (decide(test::TempFile(film)) != type) return;
    add("opening a .sub of 90 KB through the dispatcher, wall time", title,
        [film, type](benchmark::State& state) {
            const test::TempFile file(film);
            for (auto _ : state) {
                if (decide(file) != type) state.SkipWithError("decided otherwise");
            }
            using benchmark::Counter;
            state.counters["us"] = Counter(1e-6, Counter::Flags(Counter::kIsIterationInvariantRate | Counter::kInvert));
        })
        ->UseRealTime()
        ->Iterations(300);
}

std::string filmOf(EN_MEDIA_SUBTITLE_PARSER_TYPE wanted) {
#define VX_SUB_DIALECT(name, type, target, people, pattern) \
    if (wanted == E_MEDIA_SUBTITLE_PARSER_TYPE_##type) return dialectFilm(pattern, kFilm);
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
    return {};
}

}  // namespace

void registerDispatcher() {
#define VX_SUB_DIALECT(name, type, target, people, pattern) \
    addFilm(people, E_MEDIA_SUBTITLE_PARSER_TYPE_##type, filmOf(E_MEDIA_SUBTITLE_PARSER_TYPE_##type));
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
    constexpr auto kDvb = E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_DVB_SUBTITLE_SYSTEM;
    addFilm("DVB subtitle system, one-digit hours", kDvb, "1:00:01:00 1:00:04:00 text\r\n" + filmOf(kDvb));
    addFilm("none of them", E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID, smiFilm(kFilm));
}

}  // namespace bench
