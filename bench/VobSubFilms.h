/// VobSub films of pictures of about 600x80.
#pragma once

#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "subtitle/SubtitleTypes.h"
#include "tools/samples/VobSubMaker.h"

namespace bench {

/// Two lines of text.
inline std::string textUnit(const std::vector<std::string>& lines = {"THE HARBOUR WAS EMPTY", "WHEN WE CAME BACK."}) {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText(lines, 4);
    picture.spareLines = 1;
    return samples::encodeUnit(picture);
}

/// So many pictures of a 720x576 frame, one a second: as many texts as no processor learns by heart.
inline samples::VobSub textFilm(android::U32 pictures) {
    constexpr android::U32 kTexts = 64;
    constexpr const char* kWords[] = {"HARBOUR", "EMPTY", "LISTEN:", "NOBODY", "FRIEND.", "WHEN", "BACK",
                                      "NEVER",   "TOLD",  "WHY",     "DID",    "THE",     "OF",   "YOU,"};
    std::minstd_rand random;
    const auto line = [&] {
        std::string words;
        while (words.size() < 17) words += kWords[random() % std::size(kWords)] + std::string(" ");
        return words.substr(0, 21);
    };
    std::vector<std::string> units;
    while (units.size() < kTexts) units.push_back(textUnit({line(), line()}));
    samples::VobSub film(720, 576, {0x000000, 0xFFFFFF, 0x202020});
    film.track("en");
    for (android::U32 i = 0; i < pictures; ++i) film.addUnit(i * 1000, units[i % kTexts]);
    return film;
}

}  // namespace bench
