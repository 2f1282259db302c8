/// A picture of a VobSub stream: what the commands of its unit say, and its rows of pixels.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <optional>
#include <string_view>
#include <vector>

#include "tools/meant/Meant.h"
#include "tools/vobsub/Bytes.h"
#include "tools/vobsub/Unit.h"

namespace vobsub {

using meant::Ms;

struct Picture {
    struct Colour {
        unsigned index = 0;     ///< in the palette
        unsigned contrast = 0;  ///< 0: not seen
    };
    struct Field {
        size_t begin = 0, end = 0;  ///< in the unit
    };

    Unit unit;
    bool isBroken = false;   ///< its commands
    bool endsEarly = false;  ///< they do, at one that is not known or at the unit's end
    bool hasArea = false;
    int left = 0, right = 0, top = 0, bottom = 0;  ///< the last column and row belong to it
    Colour colours[4];                             ///< of the pixels' codes; of a fade, the first that is seen
    Field fields[2];                               ///< the even rows and the odd ones
    Ms startDelay = 0;
    std::optional<Ms> stop;

    int width() const { return right - left + 1; }
    int height() const { return bottom - top + 1; }
    bool isVisible(unsigned code) const { return colours[code].contrast != 0; }
};

/// Of nothing that can be read there is nothing in it.
Picture pictureAt(std::string_view stream, uint64_t position);

/// Pixels of a code, side by side.
struct Run {
    unsigned code;
    int length;
};

/// The rows of a field, one after the other.
class Rows {
public:
    Rows(const Picture& picture, size_t field);

    bool atEnd() const { return mAt / 2 >= mEnd; }

    /// A row begins on a byte of the field. A run that is longer ends with it; the unit may end before.
    std::vector<Run> take(int width);

private:
    unsigned takeRun();

    Bytes mUnit;
    size_t mAt;  ///< in half bytes
    size_t mEnd;
};

}  // namespace vobsub
