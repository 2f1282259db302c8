// VobSub: index lines, subpictures read and decoded, pictures drawn.
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <memory>

#include "bench/ByHand.h"
#include "bench/General.h"
#include "bench/OneSurface.h"
#include "bench/Table.h"
#include "bench/VobSubFilms.h"
#include "subtitle/MPEGSubtitleDecoder.h"
#include "tests/support/VobSubPair.h"

namespace bench {

using namespace android;

namespace {

std::vector<Measure> indexLines() {
    constexpr U32 kLines = 8000;
    const std::string idx = textFilm(kLines).idx();
    const auto files = std::make_shared<test::VobSubInMemory>();
    return {[=] {
        const double us = cpuNsEach(kLines / 100, [&] { files->load(idx, ""); }) / 1e3;
        if (files->parser.GetTagNum() != kLines) fail("index lines are missing");
        return us;
    }};
}

// ---- Decoding ----

struct Decoding {
    std::string unit = textUnit();
    std::vector<U8> codes = std::vector<U8>(1920 * 1080);
    MPEGSubtitleDecoder decoder;
    stSubDecoderInfo info = {};

    void decode() {
        U8 transparent = 0;
        RGBPaletteColor colours[4];
        decoder.Decode(reinterpret_cast<U8*>(unit.data()), static_cast<U16>(unit.size()), codes.data(),
                       static_cast<U32>(codes.size()), &transparent, colours, &info);
    }
};

std::vector<Measure> decoded() {
    const auto ours = std::make_shared<Decoding>();
    U32 palette[16] = {0x000000, 0xFFFFFF, 0x202020};
    ours->decoder.Set_VobSub_Palette(palette, 16);
    ours->decode();
    const AvPicture picture = avPicture(ours->unit);
    if (ours->info.u16Width < 500 || (picture && picture() < 500)) fail("the picture did not decode");
    return {[=] { return cpuNsEach(1, [&] { ours->decode(); }) / 1e3; }, nullptr,
            picture ? Measure([=] { return cpuNsEach(1, [&] { keep(picture()); }) / 1e3; }) : notInstalled()};
}

constexpr U32 kFilmPictures = 300;

/// A film on disk.
struct Film {
    Film()
        : files(textFilm(kFilmPictures).idx(), textFilm(kFilmPictures).sub()),
          parser(files.path()),
          fd(open(files.sub().c_str(), O_RDONLY)) {
        if (parser.BeginParse() != TRUE || parser.GetTagNum() != kFilmPictures) fail("the pictures did not open");
    }
    ~Film() { close(fd); }
    Film(const Film&) = delete;
    Film& operator=(const Film&) = delete;

    void ours(U32 tag) {
        if (parser.GetData(0, nullptr, 0, tag, &info) == 0) fail("a picture is missing");
    }
    void byHand(U32 tag) {
        const auto position = [this](U32 i) { return parser.m_pTagBuffer[i].s64Pos; };
        size = pictureByHand(fd, position(tag),
                             tag + 1 < kFilmPictures ? position(tag + 1) : parser.m_s64DataTotalSizeSub, codes);
    }

    test::VobSubPair files;
    SubtitleParserSUBIDX parser;
    int fd;
    stSubDecoderInfo info = {};
    PictureSize size = {};
    U8 codes[1920 * 1080] = {};
};

std::vector<Measure> readAndDecoded() {
    const auto film = std::make_shared<Film>();
    for (U32 tag = 0; tag < kFilmPictures; ++tag) {
        film->ours(tag);
        film->byHand(tag);
        if (film->size.width != film->info.u16Width || film->size.height != film->info.u16Height ||
            memcmp(film->codes, film->parser.m_buffer, size_t{film->size.width} * film->size.height) != 0) {
            fail("another picture by hand");
        }
    }
    const AvPicture general = avPictures(film->files.path());
    if (general && general() < 300) fail("another picture by libavcodec");
    const auto all = [](auto picture) -> Measure {
        return [=] {
            return cpuNsEach(kFilmPictures,
                             [&] {
                                 for (U32 tag = 0; tag < kFilmPictures; ++tag) picture(tag);
                             }) /
                   1e3;
        };
    };
    return {all([film](U32 tag) { film->ours(tag); }), all([film](U32 tag) { film->byHand(tag); }),
            general ? all([general](U32) { keep(general()); }) : notInstalled()};
}

// ---- Drawing ----

/// A picture drawn on the cleared surface; beside it the surface cleared once.
std::vector<Measure> drawn(const DrawnPicture& picture) {
    const auto draw = [picture, parser = parserOfSurface(picture)] {
        if (parser->_render(picture.codes.data(), picture.width, picture.height) != TRUE) fail("nothing was drawn");
    };
    const auto clear = [] {
        memset(surfacePixels(), 0, kSurfaceBytes);
        keep(surfacePixels());
    };
    return {[=] { return cpuNsEach(1, draw) / 1e3; }, [=] { return cpuNsEach(1, clear) / 1e3; }};
}

// ---- The inspector ----

#ifdef BENCH_VXSUB
/// Milliseconds a picture, the program's start included.
std::vector<Measure> rendered() {
    constexpr U32 kPictures = 100;
    const samples::VobSub film = textFilm(kPictures);
    const auto files = std::make_shared<test::VobSubPair>(film.idx(), film.sub());
    return {[=] {
        const std::string folder = files->idx() + ".pictures";
        const std::string command = BENCH_VXSUB " render '" + files->idx() + "' --all -o '" + folder + "' >/dev/null";
        const double ns = wallNs([&] {
            if (system(command.c_str()) != 0) fail("vxsub render failed");  // NOLINT(cert-env33-c): our own program
        });
        if (system(("rm -r '" + folder + "'").c_str()) != 0) fail("no pictures");  // NOLINT(cert-env33-c)
        return ns / 1e6 / kPictures;
    }};
}
#endif

}  // namespace

void registerPictures() {
    begin({"VobSub", "µs", Better::kLower, {"by hand", "libavcodec"}});
    add("100 lines of an index", indexLines);
    add("a subpicture of 600x80 decoded", decoded);
    add("pictures of a film, read from their packs and decoded", readAndDecoded);
    begin(
        {"Drawing a picture of a 720x576 frame on a surface of 1920x1080", "µs", Better::kLower, {"clearing it once"}});
    for (const DrawnPicture& picture : drawnPictures()) add(picture.title, [picture] { return drawn(picture); });
#ifdef BENCH_VXSUB
    begin({"vxsub render --all", "ms a picture", Better::kLower, {}});
    add("600x80 on 1920x1080, into PNG files", rendered);
#endif
}

}  // namespace bench
