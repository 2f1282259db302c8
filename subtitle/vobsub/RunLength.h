/// The run-length code of DVD subpictures: the codes of one interlaced field, and the walk over its rows.
#pragma once

#include "subtitle/system/Wraps.h"
#include "subtitle/text/TextView.h"

namespace vxsubtitle {

struct Run {
    U32 length;  ///< 0: to the end of the row
    U8 colour;   ///< 0-3
};

/// The codes of one field's data. Ends with the budget of bytes; budget that lies behind the unit's data reads 0.
class RunReader {
public:
    RunReader(const TextView<Bytes>& unit, size_t offset, size_t budget)
        : mUnit(unit), mNext(offset), mEnd(offset + budget) {}

    /// The next code. False when the budget ends within it: the code is abandoned.
    bool take(Run* run) {
        if (mCount < kLongestCode) fetch();
        // 4 bits, and 4 more for each pair of zeros in front. What lies behind the budget cannot make a code end in it.
        U32 length = 4;
        while (length < kLongestCode && mBits >> (kWordBits - length / 2) == 0) length += 4;
        if (length > mCount) {
            mNext = mEnd;
            mCount = 0;
            return false;
        }
        const U32 code = static_cast<U32>(mBits >> (kWordBits - length));
        drop(length);
        *run = {code >> 2, static_cast<U8>(code & 3)};
        return true;
    }

    /// Drops what is left of a byte that was begun; false when no whole byte is left.
    bool toNextByte() {
        drop(mCount % 8);
        return mCount != 0 || mNext < mEnd;
    }

private:
    using Word = uintptr_t;
    static constexpr U32 kWordBits = 8 * sizeof(Word);
    static constexpr U32 kLongestCode = 16;

    VX_WRAPS void drop(U32 bits) {
        mBits <<= bits;
        mCount -= bits;
    }

    /// Fetches whole bytes, as many as there is room for: of a word, or one by one where the data ends.
    void fetch() {
        const U8* const bytes = mEnd - mNext >= sizeof(Word) ? mUnit.stretch(mNext, sizeof(Word)) : nullptr;
        if (bytes != nullptr) {
            const U32 fetched = (kWordBits - mCount) / 8;
            mBits |= bigEndian(bytes) >> mCount;  // the bits of a byte that is not whole are fetched again
            mNext += fetched;
            mCount += 8 * fetched;
            return;
        }
        for (; mCount <= kWordBits - 8 && mNext < mEnd; mCount += 8) {
            mBits |= Word{mUnit.at(mNext++)} << (kWordBits - 8 - mCount);
        }
    }

    static Word bigEndian(const U8* bytes) {
        Word word;
        memcpy(&word, bytes, sizeof word);
        return static_cast<Word>(__builtin_bswap64(word) >> (64 - kWordBits));
    }

    TextView<Bytes> mUnit;
    size_t mNext;    ///< the byte to be fetched next
    size_t mEnd;     ///< of the budget
    Word mBits = 0;  ///< fetched bits, from the highest on
    U32 mCount = 0;  ///< how many of them count
};

/// Walks `rows` rows of `width` pixels: `target.add(column, run)` for each run, 0 resolved, and
/// `target.endRow(columns)` behind each row that has data. Rows begin on a fresh byte; the walk ends with the budget.
template <class Target>
void walkField(RunReader in, U32 width, U32 rows, Target& target) {
    for (U32 row = 0; row < rows && in.toNextByte(); ++row) {
        Run run;
        U32 column = 0;
        for (; column < width && in.take(&run); column += run.length) {
            if (run.length == 0) run.length = width - column;
            target.add(column, run);  // kept(vob-long-run): not clipped, it spills into the next row
        }
        target.endRow(column);
    }
}

/// Where the colour codes of a bitmap go: what does not fit is dropped.
struct CodeSink {
    U8* codes;
    size_t size;

    void fill(size_t at, size_t count, U8 code) const {
        if (const size_t fits = fitting(at, count)) memset(codes + at, code, fits);
    }
    void copy(size_t at, const U8* from, size_t count) const {
        if (const size_t fits = fitting(at, count)) memcpy(codes + at, from, fits);
    }

private:
    size_t fitting(size_t at, size_t count) const { return at >= size ? 0 : count < size - at ? count : size - at; }
};

/// The rows of one field on their way into a bitmap. A row is put together beside it, where runs are written a block
/// at a time: the bitmap gets what belongs to them, and nothing else of it changes.
class FieldRows {
public:
    /// Rows begin at `start`, and `step` further each.
    FieldRows(const CodeSink& out, size_t start, size_t step) : mOut(out), mRow(start), mStep(step) {}

    void add(U32 column, const Run& run) {
        if (column + run.length > kRoom) {
            mOut.fill(mRow + column, run.length, run.colour);
            if (column < mWaiting) mWaiting = column;
            return;
        }
        U8* const codes = mCodes + column;
        memset(codes, run.colour, kBlock);  // a constant size: no call. What is too much is overwritten by the next
        if (run.length > kBlock) memset(codes + kBlock, run.colour, run.length - kBlock);
    }

    void endRow(U32 columns) {
        mOut.copy(mRow, mCodes, columns < mWaiting ? columns : mWaiting);
        mWaiting = kRoom;
        mRow += mStep;
    }

private:
    static constexpr U32 kRoom = 4096;  ///< the widest area
    static constexpr U32 kBlock = 32;

    const CodeSink mOut;
    size_t mRow;
    const size_t mStep;
    U32 mWaiting = kRoom;  ///< columns of the row that are not in the bitmap yet, at the most
    U8 mCodes[kRoom + kBlock];
};

}  // namespace vxsubtitle
