/// A subpicture's data, gathered from the packs of a VobSub program stream.
#pragma once

#include "subtitle/vobsub/FileWindow.h"

namespace vxsubtitle {

/// The data of one unit, put together from its packs: the one allocation that a subpicture takes.
class WorkingBlock {
public:
    /// A negative capacity counts as memory that cannot be had.
    explicit WorkingBlock(S64 capacity);
    WorkingBlock(const WorkingBlock&) = delete;
    WorkingBlock& operator=(const WorkingBlock&) = delete;
    ~WorkingBlock();

    bool exists() const { return mBytes != nullptr; }
    U8* bytes() const { return mBytes; }
    U32 size() const { return mSize; }

    /// Appends `size` bytes of which `available` lie at `bytes`; the rest are zeros. False without memory.
    [[nodiscard]] bool append(const U8* bytes, size_t available, U16 size);

private:
    bool reserve(S64 size);

    U8* mBytes = nullptr;
    S64 mCapacity;
    U32 mSize = 0;
};

/// A guess at the size of the unit between two positions of the stream. Negative where these descend.
S64 guessUnitSize(S64 position, S64 nextPosition);

/// The guess for a unit that has none behind it, and nothing to be guessed from.
constexpr S64 kAnyUnitSize = 0x80000;

/// Reads units out of the .sub file, through a window.
class UnitReader {
public:
    /// `size`: length of the file; `indexFilled`: the fill count of the other window, on the index.
    UnitReader(const FileWindow& window, S64 size, U32 indexFilled)
        : mWindow(window), mSize(size), mIndexFilled(indexFilled) {}

    /// Gathers the unit at `position`. False when it is not there, or not whole.
    [[nodiscard]] bool gather(S64 position, WorkingBlock& block);

private:
    TextView<Bytes> view() const { return mWindow.view<Bytes>(); }
    size_t offsetInWindow(S64 position) const;
    void moveWindowTo(S64 position);
    void fillWindow(S64 position);
    bool take(size_t offset, U16 size, WorkingBlock& block) const;
    void makeRoomFor(U32 unitSize, size_t* offset);

    const FileWindow mWindow;
    const S64 mSize;
    const U32 mIndexFilled;
};

}  // namespace vxsubtitle
