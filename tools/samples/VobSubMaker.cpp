#include "tools/samples/VobSubMaker.h"

#include <stdio.h>

#include <algorithm>

namespace samples {

namespace {

constexpr unsigned kLetterWidth = 5;
constexpr unsigned kLetterHeight = 7;
constexpr unsigned kPackSize = 2048;
constexpr unsigned kPackHeader = 14;
constexpr unsigned kPayloadStart = 24;  // behind pack header, packet header without data, substream byte

struct Letter {
    char name;
    uint8_t rows[kLetterHeight];  // five bits each, the left dot highest
};

constexpr Letter kLetters[] = {
    {'A', {14, 17, 17, 31, 17, 17, 17}}, {'B', {30, 17, 17, 30, 17, 17, 30}}, {'C', {14, 17, 16, 16, 16, 17, 14}},
    {'D', {30, 17, 17, 17, 17, 17, 30}}, {'E', {31, 16, 16, 30, 16, 16, 31}}, {'F', {31, 16, 16, 30, 16, 16, 16}},
    {'G', {14, 17, 16, 23, 17, 17, 15}}, {'H', {17, 17, 17, 31, 17, 17, 17}}, {'I', {14, 4, 4, 4, 4, 4, 14}},
    {'J', {7, 2, 2, 2, 2, 18, 12}},      {'K', {17, 18, 20, 24, 20, 18, 17}}, {'L', {16, 16, 16, 16, 16, 16, 31}},
    {'M', {17, 27, 21, 21, 17, 17, 17}}, {'N', {17, 25, 21, 19, 17, 17, 17}}, {'O', {14, 17, 17, 17, 17, 17, 14}},
    {'P', {30, 17, 17, 30, 16, 16, 16}}, {'Q', {14, 17, 17, 17, 21, 18, 13}}, {'R', {30, 17, 17, 30, 20, 18, 17}},
    {'S', {15, 16, 16, 14, 1, 1, 30}},   {'T', {31, 4, 4, 4, 4, 4, 4}},       {'U', {17, 17, 17, 17, 17, 17, 14}},
    {'V', {17, 17, 17, 17, 17, 10, 4}},  {'W', {17, 17, 17, 21, 21, 27, 17}}, {'X', {17, 17, 10, 4, 10, 17, 17}},
    {'Y', {17, 17, 10, 4, 4, 4, 4}},     {'Z', {31, 1, 2, 4, 8, 16, 31}},     {'0', {14, 17, 19, 21, 25, 17, 14}},
    {'1', {4, 12, 4, 4, 4, 4, 14}},      {'2', {14, 17, 1, 6, 8, 16, 31}},    {'3', {30, 1, 1, 14, 1, 1, 30}},
    {'4', {2, 6, 10, 18, 31, 2, 2}},     {'5', {31, 16, 30, 1, 1, 17, 14}},   {'6', {6, 8, 16, 30, 17, 17, 14}},
    {'7', {31, 1, 2, 4, 8, 8, 8}},       {'8', {14, 17, 17, 14, 17, 17, 14}}, {'9', {14, 17, 17, 15, 1, 2, 12}},
    {'.', {0, 0, 0, 0, 0, 12, 12}},      {',', {0, 0, 0, 0, 12, 4, 8}},       {'!', {4, 4, 4, 4, 4, 0, 4}},
    {'?', {14, 17, 1, 2, 4, 0, 4}},      {'-', {0, 0, 0, 14, 0, 0, 0}},       {'\'', {4, 4, 8, 0, 0, 0, 0}},
    {':', {0, 12, 12, 0, 12, 12, 0}},
};

bool dotOf(char name, unsigned x, unsigned y) {
    for (const Letter& letter : kLetters) {
        if (letter.name == name) return (letter.rows[y] >> (kLetterWidth - 1 - x) & 1) != 0;
    }
    return false;
}

void put(std::string& out, unsigned value, unsigned bytes) {
    while (bytes-- > 0) out.push_back(static_cast<char>(value >> (8 * bytes)));
}

/// Half bytes, high half first.
class NibbleWriter {
public:
    void put(unsigned value, unsigned nibbles) {
        while (nibbles-- > 0) {
            const unsigned nibble = value >> (4 * nibbles) & 15;
            if (mHalf) {
                mOut.back() = static_cast<char>(static_cast<uint8_t>(mOut.back()) | nibble);
            } else {
                mOut.push_back(static_cast<char>(nibble << 4));
            }
            mHalf = !mHalf;
        }
    }
    void toNextByte() { mHalf = false; }
    std::string& bytes() { return mOut; }

private:
    std::string mOut;
    bool mHalf = false;
};

std::string timeStamp(unsigned ms) {
    const uint64_t pts = uint64_t{ms} * 90;
    std::string out;
    put(out, static_cast<unsigned>(0x21 | (pts >> 30 & 7) << 1), 1);
    put(out, static_cast<unsigned>(1 | (pts >> 15 & 0x7FFF) << 1), 2);
    put(out, static_cast<unsigned>(1 | (pts & 0x7FFF) << 1), 2);
    return out;
}

constexpr unsigned kTimeStampBytes = 5;

}  // namespace

Bitmap::Bitmap(const std::vector<std::string>& rows)
    : Bitmap(rows.empty() ? 0 : static_cast<unsigned>(rows[0].size()), static_cast<unsigned>(rows.size())) {
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width && x < rows[y].size(); ++x) {
            const char c = rows[y][x];
            at(x, y) = c >= '1' && c <= '3' ? static_cast<uint8_t>(c - '0') : uint8_t{0};
        }
    }
}

Bitmap drawText(const std::vector<std::string>& lines, unsigned scale) {
    size_t longest = 0;
    for (const std::string& line : lines) longest = std::max(longest, line.size());
    const unsigned pitch = (kLetterWidth + 1) * scale;
    const unsigned lineHeight = (kLetterHeight + 2) * scale;
    Bitmap bitmap((static_cast<unsigned>(longest) * pitch + 4 * scale) & ~1U,
                  (static_cast<unsigned>(lines.size()) * lineHeight + 3 * scale) & ~1U);
    const auto lit = [&](unsigned x, unsigned y) {
        const unsigned row = y / lineHeight;
        const unsigned dotY = y % lineHeight / scale;
        if (row >= lines.size() || dotY >= kLetterHeight) return false;
        const std::string& line = lines[row];
        const unsigned indent = (static_cast<unsigned>(longest - line.size()) * pitch) / 2;
        if (x < indent || (x - indent) / pitch >= line.size()) return false;
        const unsigned dotX = (x - indent) % pitch / scale;
        return dotX < kLetterWidth && dotOf(line[(x - indent) / pitch], dotX, dotY);
    };
    const unsigned margin = 2 * scale;
    const unsigned outline = (scale + 1) / 2;
    for (unsigned y = margin; y < bitmap.height; ++y) {
        for (unsigned x = margin; x < bitmap.width; ++x) {
            if (lit(x - margin, y - margin)) bitmap.at(x, y) = 1;
        }
    }
    for (unsigned y = 0; y < bitmap.height; ++y) {
        for (unsigned x = 0; x < bitmap.width; ++x) {
            if (bitmap.at(x, y) != 1) continue;
            for (unsigned dy = 0; dy <= 2 * outline; ++dy) {
                for (unsigned dx = 0; dx <= 2 * outline; ++dx) {  // inside the margins
                    uint8_t& near = bitmap.at(x + dx - outline, y + dy - outline);
                    if (near == 0) near = 2;
                }
            }
        }
    }
    return bitmap;
}

std::string runLengthField(const Bitmap& bitmap, unsigned first) {
    NibbleWriter out;
    for (unsigned y = first; y < bitmap.height; y += 2) {
        for (unsigned x = 0; x < bitmap.width;) {
            const unsigned code = bitmap.at(x, y);
            unsigned run = 1;
            while (x + run < bitmap.width && bitmap.at(x + run, y) == code) ++run;
            if (x + run == bitmap.width && run > 63) {
                out.put(code, 4);  // to the end of the row
            } else {
                run = std::min(run, 255U);
                out.put(run << 2 | code, run < 4 ? 1 : run < 16 ? 2 : run < 64 ? 3 : 4);
            }
            x += run;
        }
        out.toNextByte();
    }
    return out.bytes();
}

std::string encodeUnit(const Subpicture& picture) {
    const Bitmap& bitmap = picture.bitmap;
    const std::string top = runLengthField(bitmap, 0);
    const std::string bottom = runLengthField(bitmap, 1);
    const unsigned topAt = 4;
    const unsigned bottomAt = topAt + static_cast<unsigned>(top.size());
    const unsigned controlAt = bottomAt + static_cast<unsigned>(bottom.size());
    const unsigned right = picture.left + bitmap.width - 1;
    const unsigned lastLine = picture.top + bitmap.height - 1 + picture.spareLines;

    const auto nibbles = [](const uint8_t(&values)[4]) {  // emphasis 2, emphasis 1, pattern, background
        return unsigned{values[3]} << 12 | unsigned{values[2]} << 8 | unsigned{values[1]} << 4 | values[0];
    };
    std::string control;
    const unsigned startBytes = 4 + 1 + 3 + 3 + 7 + 5 + 1;
    const unsigned stopAt = controlAt + startBytes;
    put(control, 0, 2);
    put(control, picture.shownMs != 0 ? stopAt : controlAt, 2);
    put(control, picture.forced ? 0 : 1, 1);
    put(control, 3, 1);
    put(control, nibbles(picture.colours), 2);
    put(control, 4, 1);
    put(control, nibbles(picture.contrast), 2);
    put(control, 5, 1);
    put(control, picture.left << 12 | right, 3);
    put(control, picture.top << 12 | lastLine, 3);
    put(control, 6, 1);
    put(control, topAt, 2);
    put(control, bottomAt, 2);
    put(control, 0xFF, 1);
    if (picture.shownMs != 0) {
        put(control, picture.shownMs * 90 / 1024, 2);
        put(control, stopAt, 2);
        put(control, 2, 1);
        put(control, 0xFF, 1);
    }
    std::string unit;
    put(unit, controlAt + static_cast<unsigned>(control.size()), 2);
    put(unit, controlAt, 2);
    return unit + top + bottom + control;
}

std::string pack(std::string_view payload, unsigned stream, unsigned headerBytes, unsigned startMs) {
    std::string out("\x00\x00\x01\xBA\x44\x00\x04\x00\x04\x01\x01\x89\xC3\xF8", kPackHeader);
    const unsigned used = kPayloadStart + headerBytes + static_cast<unsigned>(payload.size());
    const unsigned left = used < kPackSize ? kPackSize - used : 0;
    const unsigned stuffing = left < 6 ? left : 0;  // too little for a packet of padding
    const unsigned header = headerBytes + stuffing;
    const bool timed = headerBytes >= kTimeStampBytes;
    put(out, 0x1BD, 4);
    put(out, 4 + header + static_cast<unsigned>(payload.size()), 2);
    put(out, timed ? 0x8180 : 0x8100, 2);
    put(out, header, 1);
    if (timed) out += timeStamp(startMs);
    out.append(header - (timed ? kTimeStampBytes : 0), '\xFF');
    put(out, 0x20 + stream, 1);
    out += payload;
    if (out.size() < kPackSize) {
        const unsigned padding = kPackSize - static_cast<unsigned>(out.size()) - 6;
        put(out, 0x1BE, 4);
        put(out, padding, 2);
        out.append(padding, '\xFF');
    }
    return out;
}

std::string packUnit(std::string_view unit, unsigned stream, unsigned startMs) {
    std::string out;
    unsigned header = kTimeStampBytes;  // in the first pack alone
    do {
        const std::string_view payload = unit.substr(0, kPackSize - kPayloadStart - header);
        out += pack(payload, stream, header, startMs);
        unit.remove_prefix(payload.size());
        header = 0;
    } while (!unit.empty());
    return out;
}

std::string indexTime(unsigned ms) {
    char text[32];
    snprintf(text, sizeof text, "%02u:%02u:%02u:%03u", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60, ms % 1000);
    return text;
}

std::string indexLine(unsigned ms, uint32_t filePos) {
    char text[32];
    snprintf(text, sizeof text, "%09x", filePos);
    return "timestamp: " + indexTime(ms) + ", filepos: " + text;
}

VobSub::VobSub(unsigned frameWidth, unsigned frameHeight, const std::vector<uint32_t>& palette) {
    mIdx = "# VobSub index file, v7 (do not modify this line!)\n";
    mIdx += "size: " + std::to_string(frameWidth) + "x" + std::to_string(frameHeight) + "\norg: 0, 0\npalette: ";
    for (size_t i = 0; i < 16; ++i) {
        char colour[16];
        snprintf(colour, sizeof colour, "%s%06x", i != 0 ? ", " : "", i < palette.size() ? palette[i] : 0);
        mIdx += colour;
    }
    mIdx += "\nlangidx: 0\n";
}

void VobSub::track(std::string_view language) {
    mIdx += "\nid: " + std::string(language) + ", index: " + std::to_string(mTracks++) + "\n";
}

void VobSub::addUnit(unsigned startMs, std::string_view unit) {
    mIdx += indexLine(startMs, static_cast<uint32_t>(mSub.size())) + "\n";
    mSub += packUnit(unit, mTracks != 0 ? mTracks - 1 : 0, startMs);
}

bool VobSub::write(const std::string& path) const {
    if (path.size() < 3) return false;
    const auto writeFile = [](const std::string& name, const std::string& content) {
        FILE* const file = fopen(name.c_str(), "wb");
        if (file == nullptr) return false;
        const bool whole = fwrite(content.data(), 1, content.size(), file) == content.size();
        return fclose(file) == 0 && whole;
    };
    return writeFile(path, mIdx) && writeFile(path.substr(0, path.size() - 3) + "sub", mSub);
}

VobSub demoVobSub() {
    VobSub film(720, 576, {0x000000, 0xF0F0F0, 0x101010, 0x808080, 0xF0D040, 0x40A0F0});
    const auto add = [&film](unsigned startMs, const std::vector<std::string>& lines, uint8_t textColour) {
        Subpicture picture;
        picture.bitmap = drawText(lines, 3);
        picture.left = (720 - picture.bitmap.width) / 2 & ~1U;
        picture.top = 560 - picture.bitmap.height;
        picture.colours[1] = textColour;
        film.add(startMs, picture);
    };
    film.track("en");
    add(1000, {"THE LIGHTHOUSE", "KEEPER"}, 4);
    add(4000, {"THE LAMP IS LIT."}, 1);
    add(7000, {"WHO IS ON THE STAIRS?", "- ONLY THE WIND."}, 1);
    add(10500, {"THEN WHY", "DOES IT KNOCK?"}, 5);
    film.track("fr");
    add(1000, {"LE GARDIEN", "DU PHARE"}, 4);
    add(4000, {"LA LAMPE BRILLE."}, 1);
    add(7000, {"QUI MONTE L'ESCALIER?", "- LE VENT, RIEN D'AUTRE."}, 1);
    add(10500, {"POURQUOI", "FRAPPE-T-IL?"}, 5);
    return film;
}

}  // namespace samples
