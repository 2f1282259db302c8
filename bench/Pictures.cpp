// VobSub: index lines, subpictures read and decoded, pictures drawn.
#include <fcntl.h>
#include <gui/IGraphicBufferProducer.h>
#include <stdlib.h>
#include <string.h>
#include <ui/GraphicBufferMapper.h>
#include <unistd.h>

#include <memory>

#include "bench/ByHand.h"
#include "bench/General.h"
#include "bench/Table.h"
#include "subtitle/MPEGSubtitleDecoder.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

namespace bench {

using namespace android;

namespace {

constexpr int kSurfaceWidth = 1920, kSurfaceHeight = 1080;
constexpr size_t kSurfaceBytes = size_t{kSurfaceWidth} * kSurfaceHeight * 4;

/// The pixels of the one surface there is here, touched once.
U8* surfacePixels() {
    static const std::vector<U8> pixels(kSurfaceBytes, 1);
    return const_cast<U8*>(pixels.data());
}

/// Hands out the same buffer again and again, and shows it nowhere: what is measured is the drawing.
class OneBuffer : public IGraphicBufferProducer {
public:
    OneBuffer() {
        mBuffer.width = mBuffer.stride = kSurfaceWidth;
        mBuffer.height = kSurfaceHeight;
        mBuffer.common.incRef = mBuffer.common.decRef = [](android_native_base_t*) {};
    }
    status_t dequeue(ANativeWindowBuffer** buffer, uint64_t) override {
        *buffer = &mBuffer;
        return OK;
    }
    status_t queue(ANativeWindowBuffer*, int) override { return OK; }
    status_t cancel(ANativeWindowBuffer*, int) override { return OK; }

private:
    ANativeWindowBuffer mBuffer;
};

/// Two lines of text, about 600x80.
std::string textUnit() {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({"THE HARBOUR WAS EMPTY", "WHEN WE CAME BACK."}, 4);
    picture.spareLines = 1;
    return samples::encodeUnit(picture);
}

std::vector<Measure> indexLines() {
    constexpr U32 kLines = 8000;
    std::string idx = "size: 720x576\nid: en, index: 0\n";
    for (U32 i = 0; i < kLines; ++i) idx += samples::indexLine(i * 1000, i * 0x800) + "\n";
    const auto files = std::make_shared<test::VobSubInMemory>();
    return {[=] {
        const double ns = cpuNsEach(kLines, [&] { files->load(idx, ""); });
        if (files->parser.GetTagNum() != kLines) fail("index lines are missing");
        return ns / 1e3;
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

/// A film of three pictures on disk.
struct Film {
    Film() : files(film().idx(), film().sub()), parser(files.path()), fd(open(files.sub().c_str(), O_RDONLY)) {
        if (parser.BeginParse() != TRUE || parser.GetTagNum() != 3) fail("the pictures did not open");
    }
    ~Film() { close(fd); }
    Film(const Film&) = delete;
    Film& operator=(const Film&) = delete;

    static samples::VobSub film() {
        samples::VobSub made(720, 576, {0x000000, 0xFFFFFF, 0x202020});
        made.track("en");
        for (U32 i = 0; i < 3; ++i) made.addUnit(i * 1000, textUnit());
        return made;
    }
    void ours(U32 tag) {
        if (parser.GetData(0, nullptr, 0, tag, &info) == 0) fail("a picture is missing");
    }
    void byHand(U32 tag) {
        const auto position = [this](U32 i) { return parser.m_pTagBuffer[i].s64Pos; };
        size = pictureByHand(fd, position(tag), tag < 2 ? position(tag + 1) : parser.m_s64DataTotalSizeSub, codes);
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
    film->ours(1);
    film->byHand(1);
    if (film->size.width != film->info.u16Width || film->size.height != film->info.u16Height ||
        memcmp(film->codes, film->parser.m_buffer, size_t{film->size.width} * film->size.height) != 0) {
        fail("another picture by hand");
    }
    const auto all = [film](void (Film::*picture)(U32)) -> Measure {
        return [=] {
            return cpuNsEach(3,
                             [&] {
                                 for (U32 tag = 0; tag < 3; ++tag) (film.get()->*picture)(tag);
                             }) /
                   1e3;
        };
    };
    return {all(&Film::ours), all(&Film::byHand)};
}

// ---- Drawing ----

/// A picture of a 720x576 frame, drawn on the cleared surface; beside it the surface cleared once.
std::vector<Measure> drawn(U16 width, U16 height, U8 code) {
    const auto parser = std::make_shared<SubtitleParserSUBIDX>(-1, -1, 0, 0);
    parser->m_u32Width = 720;
    parser->m_u32Height = 576;
    for (U32& colour : parser->m_au32Palette_result) colour = 0xFF808080;
    if (code == 0) parser->m_au32Palette_result[0] = 0;
    const sp<OneBuffer> producer = new OneBuffer;
    parser->SetIGraphicBufferProducer(producer);
    std::shared_ptr<std::vector<U8>> codes = std::make_shared<std::vector<U8>>(size_t{width} * height, code);
    if (code == 0) {
        const samples::Bitmap text = samples::drawText({"THE HARBOUR WAS EMPTY", "WHEN WE CAME BACK."}, 4);
        for (unsigned y = 0; y < height && y < text.height; ++y) {
            for (unsigned x = 0; x < width && x < text.width; ++x) (*codes)[size_t{y} * width + x] = text.at(x, y);
        }
    }
    return {[=] {
                return cpuNsEach(1,
                                 [&] {
                                     if (parser->_render(codes->data(), width, height) != TRUE)
                                         fail("nothing was drawn");
                                 }) /
                       1e3;
            },
            [] {
                return cpuNsEach(1,
                                 [] {
                                     memset(surfacePixels(), 0, kSurfaceBytes);
                                     keep(surfacePixels());
                                 }) /
                       1e3;
            }};
}

// ---- The inspector ----

#ifdef BENCH_VXSUB
/// Milliseconds a picture, the program's start included.
std::vector<Measure> rendered() {
    constexpr U32 kPictures = 100;
    samples::VobSub film(720, 576, {0x000000, 0xFFFFFF, 0x202020});
    film.track("en");
    for (U32 i = 0; i < kPictures; ++i) film.addUnit(i * 1000, textUnit());
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
    add("a line of an index", indexLines);
    add("a subpicture of 600x80 decoded", decoded);
    add("the same read from its packs and decoded", readAndDecoded);
    begin(
        {"Drawing a picture of a 720x576 frame on a surface of 1920x1080", "µs", Better::kLower, {"clearing it once"}});
    add("600x80, two lines of text", [] { return drawn(600, 80, 0); });
    add("720x576, opaque", [] { return drawn(720, 576, 1); });
#ifdef BENCH_VXSUB
    begin({"vxsub render --all", "ms a picture", Better::kLower, {}});
    add("600x80 on 1920x1080, into PNG files", rendered);
#endif
}

}  // namespace bench

// In place of the desktop's: there is one surface.
android::status_t android::GraphicBufferMapper::lock(buffer_handle_t, uint32_t, const Rect&, void** address) {
    *address = bench::surfacePixels();
    return OK;
}
android::status_t android::GraphicBufferMapper::unlock(buffer_handle_t) { return OK; }
