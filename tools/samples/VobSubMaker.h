/// Makes VobSub pairs from scratch: letters drawn into bitmaps, bitmaps encoded as subpicture units, units cut into
/// packs, packs listed in an index. For tests and the demo; needs nothing but the standard library.
#pragma once

#include <stdint.h>

#include <string>
#include <string_view>
#include <vector>

namespace samples {

/// Colour codes, one byte each: 0 background, 1 pattern, 2 emphasis 1, 3 emphasis 2.
struct Bitmap {
    Bitmap() = default;
    Bitmap(unsigned w, unsigned h) : width(w), height(h), codes(size_t{w} * h) {}

    /// Rows of the characters '.', '1', '2' and '3' (a blank is '.', too), all as long as the first.
    explicit Bitmap(const std::vector<std::string>& rows);

    uint8_t& at(unsigned x, unsigned y) { return codes[size_t{y} * width + x]; }
    uint8_t at(unsigned x, unsigned y) const { return codes[size_t{y} * width + x]; }

    unsigned width = 0, height = 0;
    std::vector<uint8_t> codes;
};

/// Lines of capital letters, digits and some punctuation, centred, in code 1 with an outline in code 2. A letter is
/// 5 x 7 dots of `scale` x `scale` pixels. Width and height come out even, with room to spare at the edges.
Bitmap drawText(const std::vector<std::string>& lines, unsigned scale);

struct Subpicture {
    Bitmap bitmap;
    unsigned left = 0, top = 0;             ///< of the display area
    uint8_t colours[4] = {0, 1, 2, 3};      ///< palette index of each colour code
    uint8_t contrast[4] = {0, 15, 15, 15};  ///< opacity of each colour code
    unsigned shownMs = 2000;                ///< 0: no command to end the display
    bool forced = false;

    /// The area's last line. A customary area is as high as the bitmap, of which a player that decodes one line less,
    /// lowered to even, then shows two lines less; one line more makes it show all.
    unsigned spareLines = 0;
};

/// Two-bit run-length data of the rows `first`, `first` + 2, ...; each row begins on a fresh byte.
std::string runLengthField(const Bitmap& bitmap, unsigned first);

/// Size, offset of the control sequences, both fields, control sequences.
std::string encodeUnit(const Subpicture& picture);

/// A unit cut into packs of 2048 bytes, the last one padded. `stream`: 0 for the first track.
std::string packUnit(std::string_view unit, unsigned stream = 0, unsigned startMs = 0);

/// One pack around `payload`, at most 2024 bytes less `headerBytes`.
std::string pack(std::string_view payload, unsigned stream = 0, unsigned headerBytes = 0, unsigned startMs = 0);

/// "hh:mm:ss:mmm"
std::string indexTime(unsigned ms);

/// "timestamp: 00:00:01:500, filepos: 000001800"
std::string indexLine(unsigned ms, uint32_t filePos);

/// Collects an index and its program stream.
class VobSub {
public:
    VobSub(unsigned frameWidth, unsigned frameHeight, const std::vector<uint32_t>& palette);

    /// Begins a track: two letters.
    void track(std::string_view language);
    void add(unsigned startMs, const Subpicture& picture) { addUnit(startMs, encodeUnit(picture)); }
    void addUnit(unsigned startMs, std::string_view unit);

    const std::string& idx() const { return mIdx; }
    const std::string& sub() const { return mSub; }

    /// Writes `path`, which must end in "idx", and the file beside it that ends in "sub".
    bool write(const std::string& path) const;

private:
    std::string mIdx, mSub;
    unsigned mTracks = 0;
};

/// A small film of a 720x576 frame in two languages.
VobSub demoVobSub();

}  // namespace samples
