/// What the VobSub targets share: a surface to draw on, chosen by the input.
#pragma once

#include "fuzz/Drivers.h"
#include "subtitle/SubtitleParserSUBIDX.h"

namespace fuzz {

/// Gives a parser that was just constructed a bitmap that is kept from input to input, in place of its own: its two
/// megabytes of fresh pages cost more than all the rest. The parser clears it before it decodes. One input in 16 goes
/// on with the parser's own.
class KeptBitmap {
public:
    KeptBitmap(SubtitleParserSUBIDX& parser, Choice& choice);
    ~KeptBitmap();  ///< before the parser's end
    KeptBitmap(const KeptBitmap&) = delete;
    KeptBitmap& operator=(const KeptBitmap&) = delete;

private:
    SubtitleParserSUBIDX& mParser;
    const bool mKept;
};

struct FrameSize {
    U32 width, height;
};

/// A frame that is mostly small, so that drawing costs little: 0 x 0 too, which is always enlarged.
FrameSize someFrame(Choice& choice);

/// Attaches a surface in memory to the parser, for one input in eight none. By the frame of the index it is large
/// enough to draw enlarged, as it is or reduced, or too small; its rows are as long as its stride, which is sometimes
/// wider. Surfaces for large frames are mostly too small. Every pixel lies in a block of exactly the surface's size.
/// For one input in eight a step on the way of a buffer fails.
void attachSomeSurface(SubtitleParserSUBIDX& parser, FrameSize frame, Choice& choice);

}  // namespace fuzz
