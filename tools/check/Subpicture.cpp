// Reads a picture of a VobSub stream: packs, the unit in them, its commands, its pixels.
#include <algorithm>

#include "tools/check/VobSub.h"

namespace check {
namespace {

/// Bytes with zeros behind them.
class Data {
public:
    explicit Data(std::string_view bytes) : mBytes(bytes) {}
    unsigned at(size_t i) const { return i < mBytes.size() ? static_cast<unsigned char>(mBytes[i]) : 0; }
    unsigned word(size_t i) const { return at(i) << 8 | at(i + 1); }
    bool isStartCode(size_t i, unsigned id) const { return word(i) == 0 && at(i + 2) == 1 && at(i + 3) == id; }
    size_t size() const { return mBytes.size(); }

private:
    std::string_view mBytes;
};

constexpr unsigned kPack = 0xBA, kPrivateStream = 0xBD, kPadding = 0xBE;

/// Puts a picture's bytes together from its packs.
class Gatherer {
public:
    Gatherer(std::string_view stream, size_t position) : mBytes(stream), mStream(stream), mAt(position) {}

    std::string gather(Subpicture* picture) {
        constexpr size_t kGrid = 2048;
        constexpr int kMostPackets = 64;
        std::string unit;
        size_t wanted = 0;
        for (int i = 0; i < kMostPackets && (wanted == 0 || unit.size() < wanted); ++i) {
            if (!enterPacket(picture)) break;
            picture->hasPack = true;
            unit += mBytes.substr(std::min(mPayload, mBytes.size()), mEnd - std::min(mPayload, mEnd));
            if (unit.size() < 2) break;
            wanted = Data(unit).word(0);
            if (wanted == 0) break;
            picture->leavesGrid |= unit.size() < wanted && mEnd % kGrid != 0;
            mAt = mEnd;
        }
        picture->hasSize = wanted != 0;
        unit.resize(std::min(unit.size(), wanted));
        return unit;
    }

private:
    /// The next packet of pictures, behind its pack's header or padding.
    bool enterPacket(Subpicture* picture) {
        constexpr int kMostSteps = 16;
        for (int i = 0; i < kMostSteps; ++i) {
            if (mStream.isStartCode(mAt, kPack)) {
                const bool isMpeg2 = (mStream.at(mAt + 4) & 0xC0) == 0x40;
                const size_t stuffing = isMpeg2 ? mStream.at(mAt + 13) & 7 : 0;
                picture->hasStuffing |= stuffing != 0;
                picture->hasOddPack |= !isMpeg2;
                mAt += isMpeg2 ? 14 + stuffing : 12;
            } else if (mStream.isStartCode(mAt, kPadding)) {
                mAt += 6 + mStream.word(mAt + 4);
            } else {
                break;
            }
        }
        if (!mStream.isStartCode(mAt, kPrivateStream)) return false;
        picture->hasOddPack |= (mStream.at(mAt + 6) & 0xC0) != 0x80;
        mPayload = mAt + 9 + mStream.at(mAt + 8) + 1;
        mEnd = std::min(mAt + 6 + mStream.word(mAt + 4), mBytes.size());
        return true;
    }

    std::string_view mBytes;
    Data mStream;
    size_t mAt, mPayload = 0, mEnd = 0;
};

/// The commands of a unit, and the pixels that they place.
class UnitReader {
public:
    UnitReader(const std::string& unit, Subpicture* picture) : mUnit(unit), mPicture(*picture) {}

    void read() {
        size_t at = mUnit.word(2);
        constexpr int kMostSequences = 32;
        mPicture.isBroken = true;
        for (int i = 0; i < kMostSequences && at != 0 && at < mUnit.size(); ++i) {
            const size_t next = mUnit.word(at + 2);
            if (!readCommands(at + 4, delayOf(mUnit.word(at)))) return;
            if (next == at) mPicture.isBroken = false;
            if (next <= at) break;
            at = next;
        }
        if (mPicture.hasArea && mPicture.right >= mPicture.left && mPicture.bottom >= mPicture.top) lookAtPixels();
    }

private:
    /// Of a sequence, in units of 1024 ticks of a clock of 90 kHz.
    static Ms delayOf(unsigned units) { return Ms{units} * 1024 / 90; }

    bool readCommands(size_t at, Ms delay) {
        for (; at < mUnit.size(); ++at) {
            switch (mUnit.at(at)) {
                case 0:
                case 1:
                    mPicture.startDelay = delay;
                    break;
                case 2:
                    mPicture.stop = delay;
                    break;
                case 3:
                    at += 2;
                    break;
                case 4:
                    if (mOpacity == 0) mOpacity = mUnit.word(at + 1);
                    at += 2;
                    break;
                case 5:
                    setArea(at + 1);
                    at += 6;
                    break;
                case 6:
                    mFields[0] = mUnit.word(at + 1);
                    mFields[1] = mUnit.word(at + 3);
                    at += 4;
                    break;
                case 7:
                    at += mUnit.word(at + 1);
                    break;
                case 0xFF:
                    return true;
                default:
                    return false;
            }
        }
        return false;
    }

    void setArea(size_t at) {
        mPicture.hasArea = true;
        mPicture.left = static_cast<int>(mUnit.word(at) >> 4);
        mPicture.right = static_cast<int>(mUnit.word(at + 1) & 0xFFF);
        mPicture.top = static_cast<int>(mUnit.word(at + 3) >> 4);
        mPicture.bottom = static_cast<int>(mUnit.word(at + 4) & 0xFFF);
    }

    bool isVisible(unsigned code) const { return (mOpacity >> (4 * code) & 0xF) != 0; }

    void lookAtPixels() {
        const int height = mPicture.bottom - mPicture.top + 1;
        const int shown = (height - 1) & ~1;
        for (int field = 0; field < 2; ++field) {
            size_t at = mFields[field] * 2;  // nibbles
            const size_t end = 2 * (field == 0 && mFields[1] > mFields[0] ? mFields[1] : mUnit.word(2));
            for (int row = field; row < height && at < end; row += 2) lookAtRow(row, row >= shown, &at);
        }
    }

    /// Runs up to the row's end; it begins on a byte.
    void lookAtRow(int row, bool isCut, size_t* at) {
        const int width = mPicture.right - mPicture.left + 1;
        for (int x = 0; x < width && *at / 2 < mUnit.size();) {
            const unsigned run = takeRun(at);
            const unsigned code = run & 3;
            const int length = run < 4 ? width - x : std::min(static_cast<int>(run >> 2), width - x);
            if (row == 0 && x == 0) {
                mCorner = code;
                mPicture.isCornerVisible = isVisible(code);
            }
            mPicture.isCutVisible |= isCut && isVisible(code) && code != mCorner;
            x += length;
        }
        *at += *at % 2;
    }

    /// A run of 1, 2, 3 or 4 nibbles, as many as its zeros in front ask for.
    unsigned takeRun(size_t* at) const {
        unsigned run = nibble((*at)++);
        for (const unsigned atLeast : {0x4U, 0x10U, 0x40U}) {
            if (run >= atLeast) break;
            run = run << 4 | nibble((*at)++);
        }
        return run;
    }

    unsigned nibble(size_t at) const { return at % 2 == 0 ? mUnit.at(at / 2) >> 4 : mUnit.at(at / 2) & 0xF; }

    Data mUnit;
    Subpicture& mPicture;
    unsigned mOpacity = 0;  ///< four bits for each colour code
    size_t mFields[2] = {};
    unsigned mCorner = 4;
};

}  // namespace

Subpicture readSubpicture(std::string_view stream, size_t position) {
    Subpicture picture;
    const std::string unit = Gatherer(stream, position).gather(&picture);
    if (!unit.empty()) UnitReader(unit, &picture).read();
    return picture;
}

}  // namespace check
