// The pixels of a subpicture, fitted to the surface and written row by row.
#include "subtitle/vobsub/Blit.h"

#include <string.h>

namespace vxsubtitle {

namespace {

constexpr size_t kPixelBytes = 4;

/// Which pixels leave a direction of `frame` pixels on a canvas of `size`, at least half of it.
Fit reduced(S64 frame, S64 size) {
    Fit fit;
    if (size < frame) fit.drop = 4 * size / frame >= 3 ? 4 : 12 * size / frame == 8 ? 3 : 2;
    return fit;
}

/// One drawn line: the pixels [`from`, `to`) of it lie inside the canvas.
struct Line {
    U8* first;  ///< the pixel of index `from`
    size_t from, to;
};

Line lineAt(const Canvas& canvas, S64 row, S64 left, S64 length) {
    // kept(vob-spill): a column outside the row lands in a neighbouring row
    const S64 start = row * canvas.stride + left;
    const S64 room = canvas.pixelCount() - start;
    const S64 from = start < 0 ? -start : 0;
    const S64 to = length < room ? length : room;
    if (from >= to) return {nullptr, 0, 0};
    return {canvas.pixels + (start + from) * S64{kPixelBytes}, static_cast<size_t>(from), static_cast<size_t>(to)};
}

/// Puts the pixel of source column `column(i)` at each index i of the line.
template <class Column, class Pixel>
void fillLine(const Line& line, Column column, Pixel pixel) {
    U8* at = line.first;
    for (size_t i = line.from; i < line.to; ++i, at += kPixelBytes) {
        const U32 value = pixel(column(i));
        memcpy(at, &value, sizeof value);
    }
}

template <class Pixel>
void drawLine(const Line& line, const Fit& fit, Pixel pixel) {
    if (fit.repeat == 2) {
        fillLine(
            line, [](size_t i) { return i / 2; }, pixel);
    } else if (fit.drop == 0) {
        fillLine(
            line, [](size_t i) { return i; }, pixel);
    } else {
        const size_t group = fit.drop - 1;  // pixels that stay, between two that go
        size_t taken = line.from % group;
        size_t source = line.from + line.from / group;
        const auto nextKept = [&](size_t) {
            if (taken == group) {
                taken = 0;
                ++source;
            }
            ++taken;
            return source++;
        };
        fillLine(line, nextKept, pixel);
    }
}

}  // namespace

void Canvas::clear() const { memset(pixels, 0, static_cast<size_t>(pixelCount()) * kPixelBytes); }

Placement placementFor(U32 frameWidth, U32 frameHeight, const Canvas& canvas) {
    const S64 frameW = frameWidth;
    const S64 frameH = frameHeight;
    const S64 w = canvas.width;
    const S64 h = canvas.height;
    const bool twiceAsWide = w >= 2 * frameW;
    const bool twiceAsHigh = h >= 2 * frameH;
    Placement placement;
    placement.available = true;
    // kept(vob-no-size): a frame of 0 x 0 is always enlarged
    if (w > frameW && h > frameH && (twiceAsWide || twiceAsHigh)) {
        // kept(vob-stretch): each direction by itself
        placement.across.repeat = twiceAsWide ? 2 : 1;
        placement.down.repeat = twiceAsHigh ? 2 : 1;
    } else if (w >= frameW && h >= frameH) {
        // as it is
    } else if (2 * h >= frameH && 2 * w >= frameW) {
        placement.across = reduced(frameW, w);
        placement.down = reduced(frameH, h);
    } else {
        placement.available = false;
    }
    return placement;
}

U32 pixelOf(U32 argb) {
    const U8 bytes[kPixelBytes] = {static_cast<U8>(argb >> 16), static_cast<U8>(argb >> 8), static_cast<U8>(argb),
                                   static_cast<U8>(argb >> 24)};
    U32 value;
    memcpy(&value, bytes, sizeof value);
    return value;
}

void draw(const Canvas& canvas, const Placement& placement, const CodeBitmap& bitmap, const U32 (&pixelValues)[256]) {
    if (!placement.available) return;
    const S64 length = placement.across.length(bitmap.width);
    // kept(vob-position): centred and at the bottom; where the area says that the picture belongs is not looked at
    const S64 left = (canvas.width - length) / 2;
    S64 row = canvas.height - placement.down.length(bitmap.height);
    for (U32 y = 0; y < bitmap.height; ++y) {
        if (placement.down.drop != 0 && (y + 1) % placement.down.drop == 0) continue;
        const size_t start = size_t{y} * bitmap.width;
        const size_t readable = start < bitmap.readable ? bitmap.readable - start : 0;
        const U8* const codes = readable != 0 ? bitmap.codes + start : nullptr;
        const auto pixel = [&](size_t x) { return pixelValues[x < readable ? codes[x] : 0]; };
        // Enlarged pixels are written as blocks in reading order: in a picture wider than the canvas's stride the
        // end of a block row's upper line is written after the start of its lower line.
        for (S64 line = placement.down.repeat; line-- > 0;) {
            drawLine(lineAt(canvas, row + line, left, length), placement.across, pixel);
        }
        row += placement.down.repeat;
    }
}

}  // namespace vxsubtitle
