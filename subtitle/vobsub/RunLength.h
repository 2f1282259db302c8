/// The run-length code of DVD subpictures: a nibble reader, one code, and the walk over one interlaced field.
#pragma once

#include "subtitle/text/TextView.h"

namespace vxsubtitle {

/// Half bytes of one field's data, high half first. Ends with the budget of bytes; budget that lies behind the
/// unit's data reads 0.
class NibbleReader {
public:
    NibbleReader(const TextView<Bytes>& unit, size_t offset, size_t budget)
        : mUnit(unit), mNext(offset), mEnd(offset + budget) {}

    /// The next half byte; false when the budget is used up.
    bool take(U32* nibble) {
        if (mHalf) {
            *nibble = mByte & 15U;
        } else {
            if (mNext >= mEnd) return false;
            mByte = mUnit.at(mNext++);
            *nibble = mByte >> 4;
        }
        mHalf = !mHalf;
        return true;
    }

    /// Drops what is left of a byte that was begun; false when no whole byte is left.
    bool toNextByte() {
        mHalf = false;
        return mNext < mEnd;
    }

private:
    TextView<Bytes> mUnit;
    size_t mNext;
    size_t mEnd;
    U32 mByte = 0;
    bool mHalf = false;
};

struct Run {
    U32 length;  ///< 0: to the end of the row
    U8 colour;   ///< 0-3
};

/// One code of 4, 8, 12 or 16 bits. False when the budget ends within it: the code is abandoned.
inline bool takeRun(NibbleReader& in, Run* run) {
    U32 code;
    if (!in.take(&code)) return false;
    for (U32 least = 0x4; code < least && least <= 0x40; least <<= 2) {
        U32 nibble;
        if (!in.take(&nibble)) return false;
        code = code << 4 | nibble;
    }
    *run = {code >> 2, static_cast<U8>(code & 3)};
    return true;
}

/// Walks `rows` rows of `width` pixels and calls `fill(row, column, length, colour)` for each run. Rows begin on a
/// fresh byte; the walk ends with the budget.
template <class Fill>
void walkField(NibbleReader in, U32 width, U32 rows, Fill fill) {
    for (U32 row = 0; row < rows && in.toNextByte(); ++row) {
        Run run;
        for (U32 column = 0; column < width && takeRun(in, &run);) {
            const U32 length = run.length != 0 ? run.length : width - column;
            fill(row, column, length, run.colour);  // kept(vob-long-run): not clipped, it spills into the next row
            column += length;
        }
    }
}

}  // namespace vxsubtitle
