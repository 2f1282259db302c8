/// VobSub films of pictures of about 600x80.
#pragma once

#include "subtitle/SubtitleTypes.h"
#include "tools/samples/VobSubMaker.h"

namespace bench {

/// Two lines of text.
inline std::string textUnit() {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({"THE HARBOUR WAS EMPTY", "WHEN WE CAME BACK."}, 4);
    picture.spareLines = 1;
    return samples::encodeUnit(picture);
}

/// So many pictures of a 720x576 frame, one a second.
inline samples::VobSub textFilm(android::U32 pictures) {
    samples::VobSub film(720, 576, {0x000000, 0xFFFFFF, 0x202020});
    film.track("en");
    const std::string unit = textUnit();
    for (android::U32 i = 0; i < pictures; ++i) film.addUnit(i * 1000, unit);
    return film;
}

}  // namespace bench
