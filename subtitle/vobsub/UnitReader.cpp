// The headers of a program stream's packs, and the window that moves over them.
#include "subtitle/vobsub/UnitReader.h"

#include <stdlib.h>

#include "subtitle/system/Wraps.h"

namespace vxsubtitle {

namespace {

constexpr U32 kStep = 16384;       // where windows begin, bytes
constexpr U32 kBlockStep = 32768;  // by which a working block exceeds its guess, and grows
constexpr U32 kPackSize = 2048;

/// The subpicture's bytes in one pack.
struct PackPayload {
    size_t offset;  ///< from where the pack's offset counts
    U16 size;
};

/// Reads the headers of the pack at `pack`: an MPEG-2 pack with one private stream 1 packet. False for any other.
bool readPack(const TextView<Bytes>& in, size_t pack, PackPayload* payload) {
    const auto startCode = [&](size_t at, U8 id) {
        return in.at(at) == 0 && in.at(at + 1) == 0 && in.at(at + 2) == 1 && in.at(at + 3) == id;
    };
    if (!startCode(pack, 0xBA) || in.at(pack + 4) >= 0x80) return false;  // kept(vob-no-pack): not looked for elsewhere
    if (!startCode(pack + 14, 0xBD)) return false;  // kept(vob-stuffing): a pack header with stuffing bytes is not read
    if ((in.at(pack + 20) & 0xC0) != 0x80) return false;
    const U32 length = U32{in.at(pack + 18)} << 8 | in.at(pack + 19);
    const U32 header = in.at(pack + 22);
    // kept(vob-substream): the substream byte behind the header is skipped unseen, the index alone selects the track
    payload->offset = pack + 24 + header;
    payload->size = static_cast<U16>(0x10000 + length - header - 4);  // modulo 65536
    return true;
}

}  // namespace

WorkingBlock::WorkingBlock(S64 capacity) : mCapacity(capacity) {
    if (capacity >= 0 && static_cast<U64>(capacity) <= static_cast<size_t>(-1)) {
        mBytes = static_cast<U8*>(malloc(capacity != 0 ? static_cast<size_t>(capacity) : 1));
    }
}

WorkingBlock::~WorkingBlock() { free(mBytes); }

bool WorkingBlock::append(const U8* bytes, size_t available, U16 size) {
    if (!reserve(S64{mSize} + size)) return false;
    const size_t copied = size < available ? size : available;
    if (copied != 0) memcpy(mBytes + mSize, bytes, copied);
    memset(mBytes + mSize + copied, 0, size - copied);
    mSize += size;
    return true;
}

/// Keeps the capacity above `size`, in steps.
bool WorkingBlock::reserve(S64 size) {
    S64 capacity = mCapacity;
    while (size >= capacity) capacity += kBlockStep;
    if (capacity == mCapacity) return true;
    U8* const grown = static_cast<U8*>(realloc(mBytes, static_cast<size_t>(capacity)));
    if (grown == nullptr) return false;
    mBytes = grown;
    mCapacity = capacity;
    return true;
}

VX_WRAPS S64 guessUnitSize(S64 position, S64 nextPosition) {
    // kept(vob-descending): negative where the positions go back far, and the picture is refused
    return static_cast<S64>(static_cast<U64>(nextPosition) - static_cast<U64>(position) + kBlockStep);
}

bool UnitReader::gather(S64 position, WorkingBlock& block) {
    moveWindowTo(position);
    size_t pack = offsetInWindow(position);
    if (view().at(pack) != 0) return false;
    for (U32 unitSize = 0;;) {
        PackPayload payload;
        if (!readPack(view(), pack, &payload)) return false;
        if (unitSize == 0) {
            unitSize = U32{view().at(payload.offset)} << 8 | view().at(payload.offset + 1);
            if (unitSize == 0) return false;  // kept(vob-unit-size-0): nothing is made up for it
            makeRoomFor(unitSize, &payload.offset);
        }
        if (!take(payload.offset, payload.size, block)) return false;
        if (block.size() >= unitSize) return true;
        pack = payload.offset + payload.size;
        // kept(vob-packs-not-2048): the next pack begins at a multiple of 2048 bytes, or not at all
        if (pack % kPackSize != 0 || view().at(pack) != 0) return false;
    }
}

/// A position outside the window counts as right behind it: everything there reads 0.
size_t UnitReader::offsetInWindow(S64 position) const {
    const U64 offset = static_cast<U64>(position) - static_cast<U64>(mWindow.position);
    return offset < kWindowSize ? static_cast<size_t>(offset) : kWindowSize;
}

bool UnitReader::take(size_t offset, U16 size, WorkingBlock& block) const {
    const size_t end = view().end();
    if (offset > end) offset = end;
    return block.append(mWindow.buffer + offset, end - offset, size);
}

void UnitReader::moveWindowTo(S64 position) {
    const S64 start = mWindow.position;
    const S64 end = start + mWindow.filled;
    const bool near = position >= start && position <= end && end - position >= S64{kStep};
    if (mSize >= end && !near) fillWindow(position);
}

/// Moves the window on, so that a unit that begins at `offset` in it lies in it whole.
void UnitReader::makeRoomFor(U32 unitSize, size_t* offset) {
    const S64 rounded = (S64{unitSize} + kPackSize - 1) / kPackSize * kPackSize;
    const S64 start = static_cast<S64>(*offset);
    // kept(vob-window): the fill count compared is that of the index's window, not of this one
    if (rounded <= S64{mIndexFilled} - start) return;
    fillWindow(mWindow.position + start);
    *offset %= kStep;
}

void UnitReader::fillWindow(S64 position) { mWindow.fill(position - position % kStep); }

}  // namespace vxsubtitle
