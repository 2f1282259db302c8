// The pixels of a subpicture, fitted to the surface and written row by row.
#include "subtitle/vobsub/Blit.h"

#include <string.h>

#include "subtitle/system/Wraps.h"

namespace vxsubtitle {

namespace {

constexpr size_t kPixelBytes = 4;

/// Which pixels leave a direction of `frame` pixels on a canvas of `size`, at least half of it.
Fit reduced(S64 frame, S64 size) {
    Fit fit;
    if (size < frame) fit.drop = 4 * size / frame >= 3 ? 4 : 12 * size / frame == 8 ? 3 : 2;
    return fit;
}

/// Where in the canvas a picture comes to lie.
struct Area {
    S64 left, top, width, height;
};

Area areaOf(const Canvas& canvas, const Placement& placement, const CodeBitmap& bitmap) {
    const S64 width = placement.across.length(bitmap.width);
    const S64 height = placement.down.length(bitmap.height);
    // kept(vob-position): centred and at the bottom; where the area says that the picture belongs is not looked at
    return {(canvas.width - width) / 2, canvas.height - height, width, height};
}

/// The codes of one row of a bitmap; what lies behind them reads as code 0.
struct Row {
    const U8* codes;
    size_t readable;

    U8 at(size_t i) const { return i < readable ? codes[i] : U8{0}; }
};

/// Calls `use(row)` for each row of the bitmap that stays.
template <class Use>
void forEachRow(const CodeBitmap& bitmap, const Fit& down, Use use) {
    for (U32 y = 0; y < bitmap.height; ++y) {
        if (down.drop != 0 && (y + 1) % down.drop == 0) continue;
        const size_t start = size_t{y} * bitmap.width;
        const size_t readable = start < bitmap.readable ? bitmap.readable - start : 0;
        use(Row{readable != 0 ? bitmap.codes + start : nullptr, readable});
    }
}

/// Calls `put(code)` for the pixels [`from`, `to`) of a line: those of the row, fitted.
template <class Put>
void forEachPixel(const Row& row, const Fit& across, size_t from, size_t to, Put put) {
    if (across.drop == 0) {
        for (size_t i = from; i < to; ++i) put(row.at(i / across.repeat));
        return;
    }
    const size_t group = across.drop - 1;  // pixels that stay, between two that go
    for (size_t taken = from % group, source = from + from / group; from < to; ++from, ++taken, ++source) {
        if (taken == group) {
            taken = 0;
            ++source;
        }
        put(row.at(source));
    }
}

/// Draws any picture onto a clear canvas, pixel by pixel: what reaches over an edge, too.
void drawAnywhere(const Canvas& canvas, const Placement& placement, const CodeBitmap& bitmap,
                  const PixelValues& values) {
    const Area area = areaOf(canvas, placement, bitmap);
    S64 top = area.top;
    forEachRow(bitmap, placement.down, [&](const Row& row) {
        // Enlarged pixels are written as blocks in reading order: in a picture wider than the canvas's stride the
        // end of a block row's upper line is written after the start of its lower line.
        for (S64 line = placement.down.repeat; line-- > 0;) {
            // kept(vob-spill): a column outside the row lands in a neighbouring row
            const S64 start = (top + line) * canvas.stride + area.left;
            const S64 room = canvas.pixelCount() - start;
            const S64 from = start < 0 ? -start : 0;
            const S64 to = area.width < room ? area.width : room;
            if (from >= to) continue;
            U8* at = canvas.pixels + (start + from) * S64{kPixelBytes};
            forEachPixel(row, placement.across, static_cast<size_t>(from), static_cast<size_t>(to), [&](U8 code) {
                memcpy(at, &values[code], kPixelBytes);
                at += kPixelBytes;
            });
        }
        top += placement.down.repeat;
    });
}

/// Four neighbouring pixels.
using Quad = U32 __attribute__((vector_size(4 * kPixelBytes)));

/// The pixels of any four codes 0 to 3.
class Quads {
public:
    explicit Quads(const PixelValues& values) {
        for (size_t i = 0; i < kCount; ++i) {
            mQuads[i] = Quad{values[i & 3], values[i >> 2 & 3], values[i >> 4 & 3], values[i >> 6]};
        }
    }

    VX_WRAPS Quad ofFour(const U8* codes) const {
        U32 four;
        memcpy(&four, codes, sizeof four);
        return mQuads[four * 0x01041040 >> 24];  // the product's top byte has them side by side, the first one lowest
    }
    Quad ofTwo(const U8* codes) const { return mQuads[codes[0] * 0x05 + codes[1] * 0x50]; }  ///< each twice

private:
    static constexpr size_t kCount = 256;
    Quad mQuads[kCount];
};

/// Draws lines that lie inside the canvas whole, from rows whose codes are all there: eight codes at a time.
class LinePainter {
public:
    LinePainter(const PixelValues& values, const Fit& across, size_t length)
        : mValues(values), mQuads(values), mAcross(across), mLength(length) {}

    void draw(U8* line, const Row& row) const {
        size_t done = 0;
        if (mAcross.drop == 0) {
            done = mAcross.repeat == 2 ? drawEights<2>(line, row.codes) : drawEights<1>(line, row.codes);
        }
        U8* to = line + done * kPixelBytes;
        forEachPixel(row, mAcross, done, mLength, [&](U8 code) { put(&to, mValues[code]); });
    }

private:
    static constexpr size_t kCodes = sizeof(U64);

    /// Draws as many codes as there are whole eights of. Answers how many pixels.
    template <size_t kRepeat>
    size_t drawEights(U8* line, const U8* codes) const {
        const size_t eights = mLength / (kCodes * kRepeat);
        for (size_t i = 0; i < eights;) {
            i += drawCodes<kRepeat>(line + i * kCodes * kRepeat * kPixelBytes, codes + i * kCodes, eights - i);
        }
        return eights * kCodes * kRepeat;
    }

    template <class Value>
    static void put(U8** to, const Value& value) {
        memcpy(*to, &value, sizeof value);
        *to += sizeof value;
    }

    /// Draws one code as long as nothing else follows, eight at a time and `most` eights at the most, or eight of
    /// different codes. Answers how many eights.
    template <size_t kRepeat>
    size_t drawCodes(U8* to, const U8* codes, size_t most) const {
        const U64 eight = eightAt(codes);
        if (eight != codes[0] * kOnes) {
            drawDifferent<kRepeat>(to, codes, (eight & ~(kOnes * 3)) == 0);
            return 1;
        }
        const U32 value = mValues[codes[0]];
        const Quad quad = {value, value, value, value};
        size_t count = 0;
        do {
            for (size_t i = 0; i < 2 * kRepeat; ++i) put(&to, quad);
            ++count;
        } while (count < most && eightAt(codes + count * kCodes) == eight);
        return count;
    }

    template <size_t kRepeat>
    void drawDifferent(U8* to, const U8* codes, bool fourColours) const {
        for (size_t i = 0; i < kCodes; i += 4 / kRepeat) {
            if (!fourColours) {
                for (size_t k = 0; k < 4; ++k) put(&to, mValues[codes[i + k / kRepeat]]);
            } else if (kRepeat == 2) {
                put(&to, mQuads.ofTwo(codes + i));
            } else {
                put(&to, mQuads.ofFour(codes + i));
            }
        }
    }

    static U64 eightAt(const U8* codes) {
        U64 eight;
        memcpy(&eight, codes, sizeof eight);
        return eight;
    }

    static constexpr U64 kOnes = 0x0101010101010101;

    const PixelValues& mValues;
    const Quads mQuads;
    const Fit mAcross;
    const size_t mLength;  ///< of a line, pixels
};

/// Draws a picture that lies inside the canvas, line by line, and clears what lies between the lines and around them.
void drawInside(const Canvas& canvas, const Placement& placement, const CodeBitmap& bitmap, const PixelValues& values) {
    const Area area = areaOf(canvas, placement, bitmap);
    const size_t length = static_cast<size_t>(area.width);
    const size_t stride = static_cast<size_t>(canvas.stride);
    const LinePainter painter(values, placement.across, length);
    size_t written = 0;  // all pixels in front of it are
    size_t line = static_cast<size_t>(area.top) * stride + static_cast<size_t>(area.left);
    const auto at = [&](size_t pixel) { return canvas.pixels + pixel * kPixelBytes; };
    forEachRow(bitmap, placement.down, [&](const Row& row) {
        for (U32 i = 0; i < placement.down.repeat; ++i, line += stride) {
            memset(at(written), 0, (line - written) * kPixelBytes);
            if (i == 0) {
                painter.draw(at(line), row);
            } else {
                memcpy(at(line), at(line - stride), length * kPixelBytes);
            }
            written = line + length;
        }
    });
    memset(at(written), 0, canvas.byteCount() - written * kPixelBytes);
}

/// Whether there are pixels, all of their codes, and room for each in its row.
bool liesInside(const Canvas& canvas, const Placement& placement, const CodeBitmap& bitmap) {
    const Area area = areaOf(canvas, placement, bitmap);
    return area.width > 0 && area.height > 0 && area.left >= 0 && area.top >= 0 &&
           area.left + area.width <= canvas.stride && bitmap.readable >= size_t{bitmap.width} * bitmap.height;
}

}  // namespace

size_t Canvas::byteCount() const { return static_cast<size_t>(pixelCount()) * kPixelBytes; }

void Canvas::clear() const { memset(pixels, 0, byteCount()); }

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

void draw(const Canvas& canvas, const Placement& placement, const CodeBitmap& bitmap, const PixelValues& values) {
    if (placement.available && liesInside(canvas, placement, bitmap)) {
        drawInside(canvas, placement, bitmap, values);
        return;
    }
    canvas.clear();
    if (placement.available) drawAnywhere(canvas, placement, bitmap, values);
}

}  // namespace vxsubtitle
