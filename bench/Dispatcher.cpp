// The dispatcher of .sub files: how long the decision takes, the opening of the dialect that it decides on included.
#include "bench/Films.h"
#include "bench/Formats.h"
#include "bench/Table.h"
#include "subtitle/SubtitleParserSUB.h"
#include "tests/support/Interpose.h"

namespace bench {

namespace {

constexpr size_t kFilm = 90000;

using Type = EN_MEDIA_SUBTITLE_PARSER_TYPE;

/// Opens the file; whose it is, INVALID when nobody's.
Type decide(const test::TempFile& file) {
    std::string path = file.path();
    SubtitleParserSUB parser(reinterpret_cast<U8*>(&path[0]));
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
    info.eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID;
    if (parser.BeginParse() == TRUE) parser.GetTrackInfo(0, &info);
    return info.eSubtitleType;
}

/// The dispatcher, and the dialect's parser alone.
std::vector<Measure> ways(Type type, const std::string& film, const char* dialect) {
    const auto file = std::make_shared<test::TempFile>(film);
    std::vector<Measure> both = {medianWallUs([file, type] {
        if (decide(*file) != type) fail("the dispatcher decided otherwise");
    })};
    if (dialect == nullptr) return both;
    both.push_back(medianWallUs([file, &format = formatNamed(dialect)] {
        std::string path = file->path();
        format.onPath(path.data())->BeginParse();
    }));
    return both;
}

/// A row, unless an earlier dialect takes the film.
void addFilm(const char* title, Type type, const std::string& film, const char* dialect) {
    if (decide(test::TempFile(film)) != type) return;
    add(title, [=] { return ways(type, film, dialect); });
}

std::string filmOf(Type wanted) {
#define VX_SUB_DIALECT(name, type, target, people, pattern) \
    if (wanted == E_MEDIA_SUBTITLE_PARSER_TYPE_##type) return dialectFilm(pattern, kFilm);
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
    return {};
}

}  // namespace

void registerDispatcher() {
    begin({"Opening a .sub of 90 KB through the dispatcher, wall time", "µs", Better::kLower, {"its parser alone"}});
#define VX_SUB_DIALECT(name, type, target, people, pattern) \
    addFilm(people, E_MEDIA_SUBTITLE_PARSER_TYPE_##type, filmOf(E_MEDIA_SUBTITLE_PARSER_TYPE_##type), people);
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
    constexpr auto kDvb = E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_DVB_SUBTITLE_SYSTEM;
    addFilm("DVB subtitle system, one-digit hours", kDvb, "1:00:01:00 1:00:04:00 text\r\n" + filmOf(kDvb),
            "DVB subtitle system");
    addFilm("none of them", E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID, smiFilm(kFilm), nullptr);
}

}  // namespace bench
