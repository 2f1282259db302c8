// Encoding detection and conversion, compared with what must hold of every text.
#include <string.h>

#include "fuzz/Drivers.h"

namespace {

using namespace android;

/// Texts in blocks of exactly their size: a byte read too far is seen.
void convert(fuzz::Input in) {
    SubtitleParser parser;
    const U16 size = static_cast<U16>(in.size < 4096 ? in.size : 4096);
    const fuzz::Block source(size, 0);
    memcpy(source.data(), in.data, size);
    parser.IsUTF8Encode(source.data(), size);

    const fuzz::Block text(size + 1U, 0);
    memcpy(text.data(), in.data, size);
    fuzz::require(parser.CheckPossibleEncodings(text.data()) <= 7, "encodings are a sum of 1, 2 and 4");

    for (const U16 units : {U16{0}, U16{1}, U16{2}, U16{3}, size, static_cast<U16>(size + 2)}) {
        const fuzz::Block wide(units * 2U, 0);
        const U16 bytes = parser.UTF8ToUCS2(source.data(), reinterpret_cast<U16*>(wide.data()), size, units);
        fuzz::require(bytes % 2 == 0 && bytes <= units * 2, "the units that were written have room");
        const fuzz::Block back(units * 3U + 1, 0);
        const int utf8 = parser.UnicodeToUTF8(reinterpret_cast<U16*>(wide.data()), bytes, back.data());
        fuzz::require(utf8 <= bytes / 2 * 3, "three bytes a unit at the most");
    }
    for (U16 i = 0; i + 1 < size; i = static_cast<U16>(i + 2)) {
        const U16 code = static_cast<U16>(source.data()[i] << 8 | source.data()[i + 1]);
        parser.GBToUnicode(code);
        parser.BIG52Unicode(code);
        parser.Farsi2Unicode(source.data()[i]);
        parser.Hebrew2Unicode(source.data()[i]);
        parser.Spanish2Unicode(source.data()[i]);
    }
    ChangeUnicodeBigToUnicode(source.data(), size);
    ChangeUnicodeBigToUnicode(source.data(), size);
    fuzz::require(memcmp(source.data(), in.data, size) == 0, "swapped twice is as before");
}

}  // namespace

const std::vector<fuzz::Driver> fuzz::drivers = {{"convert", convert}};
