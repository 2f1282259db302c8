// Fixed work for callgrind, which counts its instructions: each operation ends with a dump that has its name.
#include <stdio.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <string>
#include <vector>

#include "bench/Formats.h"
#include "bench/OneSurface.h"
#include "bench/VobSubFilms.h"
#include "subtitle/MPEGSubtitleDecoder.h"
#include "tests/support/VobSubPair.h"

namespace bench {

namespace {

constexpr size_t kFilm = 64 << 10;

template <class Work>
void count(const std::string& operation, Work work) {
    CALLGRIND_ZERO_STATS;
    work();
    CALLGRIND_DUMP_STATS_AT(operation.c_str());
}

void countFormat(const Format& format, Encoding encoding, const std::string& name) {
    const auto parser = load(format, encode(format, encoding, kFilm));
    count("scan, " + name, [&] { format.scan(*parser); });
    static U8 text[8192];
    const U32 entries = parser->GetTagNum();
    count("text, " + name, [&] {
        for (U32 i = 0; i < entries; ++i) parser->GetData(0, text, sizeof text, i);
    });
}

void countLookup(U32 entries) {
    const auto parser = load(formatNamed("SRT"), "");
    for (U32 i = 0; i < entries; ++i) parser->AddTag(i * 40, i * 40 + 20, i, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    count("lookup in " + std::to_string(entries), [&] {
        U64 time = 0;
        for (int i = 0; i < 1000; ++i) {
            time = (time + 2654435761U) % (U64{entries} * 40);
            parser->GetTag(0, static_cast<U32>(time));
        }
    });
}

void countSubpicture() {
    const samples::VobSub film = textFilm(3);
    test::VobSubInMemory files;
    files.load(film.idx(), film.sub());
    count("subpicture 600x80", [&] {
        stSubDecoderInfo info;
        for (U32 i = 0; i < 3; ++i) files.parser.GetData(0, nullptr, 0, i, &info);
    });
}

void countIndex() {
    const std::string idx = textFilm(1000).idx();
    test::VobSubInMemory files;
    count("index of 1000 lines", [&] { files.load(idx, ""); });
}

void countDrawing() {
    for (const DrawnPicture& picture : drawnPictures()) {
        const auto parser = parserOfSurface(picture);
        count("draw " + picture.title, [&] { parser->_render(picture.codes.data(), picture.width, picture.height); });
    }
}

}  // namespace

}  // namespace bench

int main() {
    using namespace bench;
    if (freopen("/dev/null", "w", stdout) == nullptr) return 1;
    for (const Format& format : formats) {
        for (const auto& [encoding, name] : encodings) {
            if (reads(format, encoding)) countFormat(format, encoding, format.name + std::string(", ") + name);
        }
    }
    countLookup(1500);
    countLookup(20000);
    countIndex();
    countSubpicture();
    countDrawing();
    return 0;
}
