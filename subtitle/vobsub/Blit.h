/// Where a subpicture goes on a surface and how its colour codes become pixels. Nothing here knows a window.
#pragma once

#include "subtitle/text/TextView.h"

namespace vxsubtitle {

/// A locked buffer of 4-byte pixels (red, green, blue, alpha).
struct Canvas {
    U8* pixels;
    S64 width, height, stride;  ///< pixels

    S64 pixelCount() const { return stride > 0 && height > 0 ? stride * height : 0; }

    size_t byteCount() const;

    /// Makes all of it transparent, what lies between the rows included.
    void clear() const;
};

/// A bitmap of colour codes, one byte each, row after row without gaps.
struct CodeBitmap {
    const U8* codes;
    size_t readable;  ///< bytes at `codes`; what lies behind them reads as code 0
    U32 width, height;
};

/// How one direction of a bitmap is fitted: each pixel `repeat` times, or every `drop`-th left out (0: none).
struct Fit {
    U32 repeat = 1;
    U32 drop = 0;

    S64 length(U32 pixels) const { return S64{pixels} * repeat - (drop != 0 ? pixels / drop : 0); }
};

struct Placement {
    bool available = false;  ///< false: the surface is too small, nothing is drawn
    Fit across, down;
};

/// Chooses by the size of the frame that the bitmap was made for and the size of the canvas.
Placement placementFor(U32 frameWidth, U32 frameHeight, const Canvas& canvas);

/// The pixel value of 0xAARRGGBB: its bytes lie in memory as red, green, blue, alpha.
U32 pixelOf(U32 argb);

/// The pixel value of each code.
using PixelValues = U32[256];

/// Makes the canvas transparent and draws the bitmap, if there is a place for it: centred, with its last row on the
/// canvas's last row. A pixel goes to row x stride + column and is dropped only when that lies outside the canvas.
void draw(const Canvas& canvas, const Placement& placement, const CodeBitmap& bitmap, const PixelValues& values);

}  // namespace vxsubtitle
