// Subpicture units: decoded from a block of exactly their size, and read out of well-formed packs.
#include <string.h>

#include "fuzz/Drivers.h"
#include "subtitle/MPEGSubtitleDecoder.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

namespace {

using namespace android;

constexpr U32 kBitmap = 1920 * 1080;

void decode(fuzz::Input in) {
    const U32 size = static_cast<U32>(in.size < 65535 ? in.size : 65535);
    const fuzz::Block unit(size, 0);
    memcpy(unit.data(), in.data, size);
    static const fuzz::Block bitmap(kBitmap, 0);
    MPEGSubtitleDecoder decoder;
    U8 transparent = 0;
    RGBPaletteColor colours[4] = {};
    stSubDecoderInfo info = {};
    for (int palette = 0; palette < 2; ++palette) {
        decoder.Decode(unit.data(), static_cast<U16>(size), bitmap.data(), kBitmap, &transparent, colours, &info);
        U32 entries[16] = {0x000000, 0xFFFFFF, 0x808080};
        decoder.Set_VobSub_Palette(entries, 16);
    }
}

void readFromPacks(fuzz::Input in) {
    std::string unit(reinterpret_cast<const char*>(in.data), in.size < 20000 ? in.size : 20000);
    if (unit.size() < 2) return;
    unit[0] = static_cast<char>(unit.size() >> 8);  // a size that is there, so that the unit is reached
    unit[1] = static_cast<char>(unit.size());
    samples::VobSub film(720, 576, {0x000000, 0xFFFFFF});
    film.track("en");
    film.addUnit(1000, unit);
    film.addUnit(2000, unit);
    test::VobSubInMemory files;
    files.load(film.idx(), film.sub());
    stSubDecoderInfo info = {};
    for (U32 tag = 0; tag < 2; ++tag) files.parser.GetData(0, nullptr, 0, tag, &info);
}

/// Packs of the fuzzer's own making behind a well-formed index.
void readStream(fuzz::Input in) {
    const std::string idx = "id: en, index: 0\n" + samples::indexLine(1000, 0) + "\n" +
                            samples::indexLine(2000, 0x800) + "\n" + samples::indexLine(3000, 0x1000) + "\n";
    test::VobSubInMemory files;
    files.load(idx, std::string(reinterpret_cast<const char*>(in.data), in.size));
    stSubDecoderInfo info = {};
    for (U32 tag = 0; tag < 3; ++tag) files.parser.GetData(0, nullptr, 0, tag, &info);
}

}  // namespace

const std::vector<fuzz::Driver> fuzz::drivers = {{"decode", decode}, {"packs", readFromPacks}, {"stream", readStream}};
