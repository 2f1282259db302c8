// Subpicture units: decoded from a block of exactly their size, and read out of well-formed packs.
#include <string.h>

#include "fuzz/Drivers.h"
#include "fuzz/Pictures.h"
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

/// Draws the pictures of an index and a stream onto some surface.
void drawPictures(const std::string& idx, const std::string& sub, U32 count, fuzz::FrameSize frame,
                  fuzz::Choice& choice) {
    test::VobSubInMemory files;
    const fuzz::KeptBitmap bitmap(files.parser, choice);
    files.load(idx, sub);
    fuzz::attachSomeSurface(files.parser, frame, choice);
    stSubDecoderInfo info = {};
    for (U32 tag = 0; tag < count; ++tag) files.parser.GetData(0, nullptr, 0, tag, &info);
}

void readFromPacks(fuzz::Input in) {
    std::string unit(reinterpret_cast<const char*>(in.data), in.size < 20000 ? in.size : 20000);
    if (unit.size() < 2) return;
    unit[0] = static_cast<char>(unit.size() >> 8);  // a size that is there, so that the unit is reached
    unit[1] = static_cast<char>(unit.size());
    fuzz::Choice choice(in);
    const fuzz::FrameSize frame = fuzz::someFrame(choice);
    samples::VobSub film(frame.width, frame.height, {0x000000, 0xFFFFFF});
    film.track("en");
    film.addUnit(1000, unit);
    const U32 pictures = choice.oneIn(4) ? 2 : 1;
    if (pictures > 1) film.addUnit(2000, unit);
    drawPictures(film.idx(), film.sub(), pictures, frame, choice);
}

/// Packs of the fuzzer's own making behind a well-formed index.
void readStream(fuzz::Input in) {
    fuzz::Choice choice(in);
    const fuzz::FrameSize frame = fuzz::someFrame(choice);
    const std::string idx = "size: " + std::to_string(frame.width) + "x" + std::to_string(frame.height) +
                            "\nid: en, index: 0\n" + samples::indexLine(1000, 0) + "\n" +
                            samples::indexLine(2000, 0x800) + "\n" + samples::indexLine(3000, 0x1000) + "\n";
    // what is in the second and third pack is no picture's beginning where there are none
    const U32 pictures = in.size > 0x1000 ? 3 : in.size > 0x800 ? 2 : 1;
    drawPictures(idx, std::string(reinterpret_cast<const char*>(in.data), in.size), choice.oneIn(8) ? 3 : pictures,
                 frame, choice);
}

}  // namespace

const std::vector<fuzz::Driver> fuzz::drivers = {{"decode", decode, fuzz::mutateUnit},
                                                 {"packs", readFromPacks, fuzz::mutateUnit},
                                                 {"stream", readStream, fuzz::mutateUnit}};
