/// VobSub pairs: what the index and the pictures in the stream are meant to show, against what is shown.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/check/Report.h"
#include "tools/vobsub/Picture.h"

namespace check {

/// A picture as a player gets it.
struct ShownPicture {
    Ms start = 0;
    bool isGiven = false;  ///< it could be decoded
    unsigned width = 0, height = 0;
    bool hasLanguage = false;  ///< its track
};

struct Pair {
    std::string_view index;
    std::string_view stream;
    bool hasStream = true;  ///< under the name that is looked for
    bool isAccepted = false;
    std::vector<ShownPicture> shown;               ///< in the order of the table
    unsigned surfaceWidth = 0, surfaceHeight = 0;  ///< of the television; 0: not told
};

Report reportOf(const Pair& pair);

// ---- What the two files say; for the report.

/// A line of an index that names a picture.
struct IndexLine {
    Ms start = 0;  ///< with the delay
    uint32_t position = 0;
    meant::Place place;
    std::string line;
    size_t track = 0;          ///< number of the `id:` line, from 1; 0: none
    bool hasOddDelay = false;  ///< one without a sign, or in another form
    bool hasOddPosition = false;
};

struct Index {
    struct Track {
        std::string language;
        meant::Place place;
    };
    unsigned width = 0, height = 0;
    size_t colours = 0;
    bool hasUtf8Mark = false;
    bool isWide = false;
    bool isMarked = false;  ///< as that
    std::vector<Track> tracks;
    std::vector<IndexLine> pictures;
};

Index readIndex(std::string_view bytes);

/// What a picture has that is not shown as meant.
struct Pixels {
    bool isCutVisible = false;     ///< the rows that are cut off hold visible pixels
    bool isCornerVisible = false;  ///< the top left pixel's colour is one to be seen
};

Pixels pixelsOf(const vobsub::Picture& picture);

}  // namespace check
