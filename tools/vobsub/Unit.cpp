#include "tools/vobsub/Unit.h"

#include <algorithm>

#include "tools/vobsub/Bytes.h"

namespace vobsub {
namespace {

constexpr unsigned kPack = 0xBA, kPrivateStream = 0xBD, kPadding = 0xBE;

/// Puts a unit together, packet by packet.
class Gatherer {
public:
    Gatherer(std::string_view stream, size_t position) : mStream(stream), mAt(position) {}

    Unit gather() {
        constexpr size_t kGrid = 2048;
        constexpr int kMostPackets = 64;
        size_t wanted = 0;
        for (int i = 0; i < kMostPackets && (wanted == 0 || mUnit.bytes.size() < wanted); ++i) {
            const bool isThere = enterPacket();
            mUnit.hasPack = isThere || mUnit.leavesGrid;
            if (!isThere) break;
            mUnit.bytes += mStream.part(mPayload, mEnd);
            if (mUnit.bytes.size() < 2) break;
            wanted = Bytes(mUnit.bytes).word(0);
            if (wanted == 0) break;
            mUnit.leavesGrid |= mUnit.bytes.size() < wanted && mEnd % kGrid != 0;
            mAt = mEnd;
        }
        mUnit.hasSize = wanted != 0;
        mUnit.bytes.resize(std::min(mUnit.bytes.size(), wanted));
        return std::move(mUnit);
    }

private:
    /// The next packet of pictures, behind its pack's header or padding.
    bool enterPacket() {
        constexpr int kMostSteps = 16;
        for (int i = 0; i < kMostSteps; ++i) {
            if (mStream.isStartCode(mAt, kPack)) {
                skipPackHeader();
            } else if (mStream.isStartCode(mAt, kPadding)) {
                mAt += 6 + mStream.word(mAt + 4);
            } else {
                break;
            }
        }
        if (!mStream.isStartCode(mAt, kPrivateStream)) return false;
        mUnit.hasOddPack |= (mStream.at(mAt + 6) & 0xC0) != 0x80;
        mPayload = mAt + 9 + mStream.at(mAt + 8) + 1;  // behind the number of the substream
        mEnd = std::min(mAt + 6 + mStream.word(mAt + 4), mStream.size());
        return true;
    }

    void skipPackHeader() {
        const bool isMpeg2 = (mStream.at(mAt + 4) & 0xC0) == 0x40;
        const size_t stuffing = isMpeg2 ? mStream.at(mAt + 13) & 7 : 0;
        mUnit.hasStuffing |= stuffing != 0;
        mUnit.hasOddPack |= !isMpeg2;
        mAt += isMpeg2 ? 14 + stuffing : 12;
    }

    Bytes mStream;
    size_t mAt, mPayload = 0, mEnd = 0;
    Unit mUnit;
};

}  // namespace

Unit unitAt(std::string_view stream, uint64_t position) {
    if (position >= stream.size()) return {};
    return Gatherer(stream, static_cast<size_t>(position)).gather();
}

}  // namespace vobsub
