#include "tools/vobsub/Picture.h"

#include <algorithm>

namespace vobsub {
namespace {

/// Reads the commands of a unit.
class CommandReader {
public:
    explicit CommandReader(Unit unit) {
        mPicture.unit = std::move(unit);
        mUnit = Bytes(mPicture.unit.bytes);
    }

    Picture read() {
        mPicture.isBroken = mUnit.size() > 0;
        constexpr int kMostSequences = 32;
        size_t at = table();
        for (int i = 0; i < kMostSequences && at != 0 && at < mUnit.size(); ++i) {
            const size_t next = mUnit.word(at + 2);
            mPicture.endsEarly = !readSequence(at + 4, delayOf(mUnit.word(at)));
            if (mPicture.endsEarly) break;
            if (next == at) mPicture.isBroken = false;
            if (next <= at) break;
            at = next;
        }
        endFields();
        return std::move(mPicture);
    }

private:
    /// Where the commands begin, behind the pixels.
    size_t table() const { return mUnit.word(2); }

    /// Of a sequence, in units of 1024 ticks of a clock of 90 kHz.
    static Ms delayOf(unsigned units) { return Ms{units} * 1024 / 90; }

    /// Up to the command that ends them; false when there is none, or one that is not known.
    bool readSequence(size_t at, Ms delay) {
        constexpr size_t kSizes[] = {0, 0, 0, 2, 2, 6, 4};
        constexpr unsigned kWipe = 7, kEnd = 0xFF;
        while (at < mUnit.size()) {
            const unsigned command = mUnit.at(at++);
            if (command == kEnd) return true;
            if (command > kWipe) return false;
            apply(command, at, delay);
            at += command == kWipe ? mUnit.word(at) : kSizes[command];
        }
        return false;
    }

    void apply(unsigned command, size_t at, Ms delay) {
        switch (command) {
            case 0:
            case 1:
                mPicture.startDelay = delay;
                break;
            case 2:
                mPicture.stop = delay;
                break;
            case 3:
                for (unsigned code = 0; code < 4; ++code) mPicture.colours[code].index = ofCode(code, at);
                break;
            case 4:
                setContrasts(at);
                break;
            case 5:
                setArea(at);
                break;
            case 6:
                for (size_t i = 0; i < 2; ++i) mPicture.fields[i].begin = mUnit.word(at + 2 * i);
                break;
        }
    }

    /// Four bits for each code, the last one's first.
    unsigned ofCode(unsigned code, size_t at) const { return mUnit.word(at) >> (4 * code) & 0xF; }

    void setContrasts(size_t at) {
        for (unsigned code = 0; code < 4; ++code)
            if (mPicture.isVisible(code)) return;
        for (unsigned code = 0; code < 4; ++code) mPicture.colours[code].contrast = ofCode(code, at);
    }

    void setArea(size_t at) {
        mPicture.hasArea = true;
        mPicture.left = static_cast<int>(mUnit.word(at) >> 4);
        mPicture.right = static_cast<int>(mUnit.word(at + 1) & 0xFFF);
        mPicture.top = static_cast<int>(mUnit.word(at + 3) >> 4);
        mPicture.bottom = static_cast<int>(mUnit.word(at + 4) & 0xFFF);
    }

    /// A field ends where the other one begins, or the commands.
    void endFields() {
        Picture::Field(&fields)[2] = mPicture.fields;
        for (size_t i = 0; i < 2; ++i) {
            const size_t other = fields[1 - i].begin;
            fields[i].end = other > fields[i].begin ? std::min(other, table()) : table();
        }
    }

    Picture mPicture;
    Bytes mUnit{{}};
};

}  // namespace

Picture pictureAt(std::string_view stream, uint64_t position) { return CommandReader(unitAt(stream, position)).read(); }

Rows::Rows(const Picture& picture, size_t field)
    : mUnit(picture.unit.bytes),
      mAt(2 * picture.fields[field].begin),
      mEnd(std::min(picture.fields[field].end, mUnit.size())) {}

std::vector<Run> Rows::take(int width) {
    std::vector<Run> row;
    for (int x = 0; x < width && mAt / 2 < mUnit.size();) {
        const unsigned value = takeRun();
        const int left = width - x;
        const int length = value < 4 ? left : std::min(static_cast<int>(value >> 2), left);
        row.push_back({value & 3, length});
        x += length;
    }
    mAt += mAt % 2;
    return row;
}

/// One, two, three or four half bytes, as many as its zeros in front ask for.
unsigned Rows::takeRun() {
    unsigned value = mUnit.nibble(mAt++);
    for (unsigned least = 0x4; least <= 0x40 && value < least; least <<= 2) value = value << 4 | mUnit.nibble(mAt++);
    return value;
}

}  // namespace vobsub
