/// The run-length code of DVD subpictures: the codes of an interlaced field, and the walk over the rows of both.
#pragma once

#include "subtitle/system/Wraps.h"
#include "subtitle/text/TextView.h"

/// What a walk does for each code: in the walk itself, so that what it goes by stays in registers.
#define VX_INLINED __attribute__((always_inline))

namespace vxsubtitle {

constexpr U32 kWidestArea = 4096;  ///< pixels; one upside down is wider
constexpr U32 kLongestRun = 255;

struct Run {
    U32 length;  ///< 0: to the end of the row
    U8 colour;   ///< 0-3
};

/// What any byte of data begins with, when that is short: a run of up to 15 pixels, or two of up to 3.
struct ShortRunTable {
    U64 pixels[256];         ///< their colours, the first pixel lowest; the last run's colour goes on
    U8 columnsAndBits[256];  ///< pixels, above the bits that they take; 0: a longer run
};

constexpr ShortRunTable makeShortRuns() {
    ShortRunTable table = {};
    for (U32 byte = 0x10; byte < 0x100; ++byte) {
        constexpr U64 kEach = 0x0101010101010101;
        const U32 high = byte >> 4;
        const U32 low = byte & 15;
        U32 columns = byte >> 2;
        U32 bits = 8;
        U64 pixels = kEach * (byte & 3);
        if (high >= 4 && low < 4) {
            columns = high >> 2;
            bits = 4;
            pixels = kEach * (high & 3);
        } else if (high >= 4) {
            const U64 first = (U64{1} << 8 * (high >> 2)) - 1;
            columns = (high >> 2) + (low >> 2);
            pixels = (kEach * (high & 3) & first) | (kEach * (low & 3) & ~first);
        }
        table.pixels[byte] = pixels;
        table.columnsAndBits[byte] = static_cast<U8>(columns << 4 | bits);
    }
    return table;
}

inline constexpr ShortRunTable kShortRuns = makeShortRuns();

/// The codes of one field's data. Ends with the budget of bytes; budget that lies behind the unit's data reads 0.
class RunReader {
public:
    RunReader(const TextView<Bytes>& unit, size_t offset, size_t budget)
        : mUnit(unit), mNext(offset), mEnd(offset + budget) {}

    /// The next code. False when the budget ends within it: the code is abandoned.
    VX_INLINED bool take(Run* run) {
        if (mCount < kLongestCode) fetch();
        if (codeLength() > mCount) {
            mNext = mEnd;
            mCount = 0;
            return false;
        }
        *run = takeFetched();
        return true;
    }

    /// Drops what is left of a byte that was begun; false when no whole byte is left.
    bool toNextByte() {
        drop(mCount % 8);
        return mCount != 0 || mNext < mEnd;
    }

    /// Codes that can be taken behind a word without another: short runs, but for the last.
    static constexpr U32 kCodesAWord = sizeof(uintptr_t) == 8 ? 3 : 2;

    /// Fetches whole bytes, as many as a word has room for, where some bits have been taken; false where the data ends.
    VX_INLINED bool fetchWord() {
        const U8* const bytes = mEnd - mNext >= sizeof(Word) ? mUnit.stretch(mNext, sizeof(Word)) : nullptr;
        if (bytes == nullptr) return false;
        const U32 fetched = (kWordBits - mCount) / 8;
        mBits |= bigEndian(bytes) >> mCount;  // the bits of a byte that is not whole are fetched again
        mNext += fetched;
        mCount += 8 * fetched;
        return true;
    }

    /// Of the bits that a word brought, the next eight.
    VX_INLINED U32 byte() const { return static_cast<U32>(mBits >> (kWordBits - 8)); }

    VX_INLINED VX_WRAPS void drop(U32 bits) {
        mBits <<= bits;
        mCount -= bits;
    }

    /// The code that they begin with.
    VX_INLINED Run takeFetched() {
        const U32 length = codeLength();
        const U32 code = static_cast<U32>(mBits >> (kWordBits - length));
        drop(length);
        return {code >> 2, static_cast<U8>(code & 3)};
    }

private:
    using Word = uintptr_t;
    static constexpr U32 kWordBits = 8 * sizeof(Word);
    static constexpr U32 kLongestCode = 16;
    static_assert(8 * (kCodesAWord - 1) + kLongestCode <= kWordBits - 7);

    /// 4 bits, and 4 more for each pair of zeros in front. What lies behind the budget cannot make a code end in it.
    VX_INLINED U32 codeLength() const {
        U32 length = 4;
        while (length < kLongestCode && mBits >> (kWordBits - length / 2) == 0) length += 4;
        return length;
    }

    /// Fetches whole bytes: a word of them, or one by one where the data ends.
    VX_INLINED void fetch() {
        if (fetchWord()) return;
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

/// The walk over the rows of a field, `width` pixels each. Rows begin on a fresh byte; the walk ends with the budget.
/// `target.add(column, run)` gets a run, 0 resolved; `target.addShort(column, pixels, columns)` what short runs make;
/// `target.endRow(columns)` stands behind each row that has data.
template <class Target>
class FieldWalk {
public:
    FieldWalk(const RunReader& in, U32 width, Target& target) : mIn(in), mTarget(target), mWidth(width) {}

    /// False when there is no more data.
    bool beginRow() {
        mColumn = 0;
        return mIn.toNextByte();
    }

    /// Takes the runs of a word; false where the row or the data comes to its end, and runs are taken one by one.
    VX_INLINED bool takeWord() {
        constexpr U32 kShort = 15;
        constexpr U32 kReach = (RunReader::kCodesAWord - 1) * kShort + 3;  // where the last run begins, at the most
        if (mColumn + kReach >= mWidth || mColumn + RunReader::kCodesAWord * kShort > kWidestArea) return false;
        if (!mIn.fetchWord()) return false;
        for (U32 i = 0; i < RunReader::kCodesAWord; ++i) {
            const U32 byte = mIn.byte();
            const U32 columnsAndBits = kShortRuns.columnsAndBits[byte];
            if (columnsAndBits == 0) {
                add(mIn.takeFetched());
                break;
            }
            mTarget.addShort(mColumn, kShortRuns.pixels[byte], columnsAndBits >> 4);
            mColumn += columnsAndBits >> 4;
            mIn.drop(columnsAndBits & 15);
        }
        return true;
    }

    /// Takes what is left of the row.
    VX_INLINED void takeRow() {
        while (takeWord()) {
        }
        for (Run run; mColumn < mWidth && mIn.take(&run);) add(run);
    }

    U32 width() const { return mWidth; }
    /// Whether the last run went on behind the row.
    bool spilt() const { return mColumn > mWidth; }
    void endRow() { mTarget.endRow(mColumn); }

private:
    VX_INLINED void add(Run run) {
        if (run.length == 0) run.length = mWidth - mColumn;
        mTarget.add(mColumn, run);  // kept(vob-long-run): not clipped, it spills into the next row
        mColumn += run.length;
    }

    RunReader mIn;
    Target& mTarget;
    U32 mWidth;
    U32 mColumn = 0;
};

/// Walks `rows` rows of one field.
template <class Target>
__attribute__((noinline)) void walkField(FieldWalk<Target> field, U32 rows) {
    for (; rows > 0 && field.beginRow(); --rows) {
        field.takeRow();
        field.endRow();
    }
}

/// Walks `rows` rows of both fields: as if the bottom one came behind the top one, but row by row, so that the
/// processor has two chains of codes to follow.
template <class Target>
void walkFields(FieldWalk<Target> top, FieldWalk<Target> bottom, U32 rows) {
    const bool inTurn = top.width() + kLongestRun <= kWidestArea;  // rows that are put together before they are written
    for (; inTurn && rows > 0 && top.beginRow() && bottom.beginRow(); --rows) {
        for (bool both = true; both;) {
            const bool more = top.takeWord();
            both = bottom.takeWord() && more;
        }
        top.takeRow();
        top.endRow();
        bottom.takeRow();
        if (bottom.spilt()) {  // into the top field's next row, which has to be there by then
            walkField(top, rows - 1);
            bottom.endRow();
            return walkField(bottom, rows - 1);
        }
        bottom.endRow();
    }
    walkField(top, rows);
    walkField(bottom, rows);
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
        if (column + run.length > kWidestArea) {
            mOut.fill(mRow + column, run.length, run.colour);
            if (column < mWaiting) mWaiting = column;
            return;
        }
        U8* const codes = mCodes + column;
        memset(codes, run.colour, kBlock);  // a constant size: no call. What is too much is overwritten by the next
        if (run.length > kBlock) memset(codes + kBlock, run.colour, run.length - kBlock);
    }

    /// Some of the codes, and what the next ones overwrite, in a row of the widest area.
    void addShort(U32 column, U64 codes, U32) {
        memcpy(mCodes + column, &codes, sizeof codes);
        memcpy(mCodes + column + sizeof codes, &codes, sizeof codes);
    }

    void endRow(U32 columns) {
        mOut.copy(mRow, mCodes, columns < mWaiting ? columns : mWaiting);
        mWaiting = kWidestArea;
        mRow += mStep;
    }

private:
    static constexpr U32 kBlock = 32;

    const CodeSink mOut;
    size_t mRow;
    const size_t mStep;
    U32 mWaiting = kWidestArea;  ///< columns of the row that are not in the bitmap yet, at the most
    U8 mCodes[kWidestArea + kBlock];
};

}  // namespace vxsubtitle
