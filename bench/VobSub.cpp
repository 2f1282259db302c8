// VobSub: index lines, subpictures decoded, pictures read and drawn into a surface.
#include <gui/IGraphicBufferProducer.h>
#include <host/MemoryProducer.h>

#include <vector>

#include "bench/Table.h"
#include "subtitle/MPEGSubtitleDecoder.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

namespace bench {

using namespace android;

namespace {

constexpr U32 kIndexLines = 8000;

/// Two lines of text, about 600x80.
std::string textUnit() {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({"THE HARBOUR WAS EMPTY", "WHEN WE CAME BACK."}, 4);
    picture.spareLines = 1;
    return samples::encodeUnit(picture);
}

void scanIndex(benchmark::State& state) {
    std::string idx = "size: 720x576\nid: en, index: 0\n";
    for (U32 i = 0; i < kIndexLines; ++i) idx += samples::indexLine(i * 1000, i * 0x800) + "\n";
    test::VobSubInMemory files;
    for (auto _ : state) files.load(idx, "");
    if (files.parser.GetTagNum() != kIndexLines) state.SkipWithError("entries are missing");
    reportRate(state, "lines/s", kIndexLines);
}

void decode(benchmark::State& state) {
    std::string unit = textUnit();
    std::vector<U8> bitmap(1920 * 1080);
    MPEGSubtitleDecoder decoder;
    U32 palette[16] = {0x000000, 0xFFFFFF, 0x202020};
    decoder.Set_VobSub_Palette(palette, 16);
    U8 transparent = 0;
    RGBPaletteColor colours[4] = {};
    stSubDecoderInfo info = {};
    for (auto _ : state) {
        decoder.Decode(reinterpret_cast<U8*>(&unit[0]), static_cast<U16>(unit.size()), bitmap.data(),
                       static_cast<U32>(bitmap.size()), &transparent, colours, &info);
    }
    if (info.u16Width < 500) state.SkipWithError("the picture did not decode");
    reportRate(state, "per s", 1);
}

/// From the stream: read, decoded and, with a surface, drawn.
void getData(benchmark::State& state, bool drawn) {
    samples::VobSub film(1920, 1080, {0x000000, 0xFFFFFF, 0x202020});
    film.track("en");
    for (U32 i = 0; i < 3; ++i) film.addUnit(i * 1000, textUnit());
    test::VobSubInMemory files;
    files.load(film.idx(), film.sub());
    if (drawn) {
        const sp<host::MemoryProducer> producer = new host::MemoryProducer({1920, 1080});
        files.parser.SetIGraphicBufferProducer(producer);
    }
    stSubDecoderInfo info = {};
    U32 tag = 0;
    for (auto _ : state) {
        tag = (tag + 1) % 3;
        if (files.parser.GetData(0, nullptr, 0, tag, &info) == 0) state.SkipWithError("a picture is missing");
    }
    reportRate(state, "per s", 1);
}

}  // namespace

void registerVobSub() {
    constexpr const char* kGroup = "VobSub";
    add(kGroup, "index lines", scanIndex);
    add(kGroup, "subpictures decoded, 600x80", decode);
    add(kGroup, "pictures read and decoded", [](benchmark::State& state) { getData(state, false); });
    add(kGroup, "and drawn into 1920x1080", [](benchmark::State& state) { getData(state, true); });
}

}  // namespace bench
