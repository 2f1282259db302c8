#include "tools/fix/Pictures.h"

#include <algorithm>

namespace fix {
namespace {

using namespace std::literals;

unsigned byteAt(std::string_view bytes, size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

unsigned wordAt(std::string_view bytes, size_t at) { return byteAt(bytes, at) << 8 | byteAt(bytes, at + 1); }

/// Gathers what the packs from `at` on carry, up to the size that stands in front of it.
std::string unitAt(std::string_view stream, uint64_t at) {
    std::string unit;
    while (at < stream.size() && (unit.size() < 2 || unit.size() < wordAt(unit, 0))) {
        const std::string_view rest = stream.substr(at);
        if (rest.substr(0, 4) == "\0\0\1\xBA"sv) {
            constexpr size_t kPackHeader = 14;
            at += kPackHeader + (byteAt(rest, 13) & 7);
        } else if (rest.substr(0, 3) == "\0\0\1"sv) {
            const size_t size = 6 + wordAt(rest, 4);
            const size_t payload = 9 + byteAt(rest, 8) + 1;  // behind the number of the substream
            constexpr unsigned kPrivateStream = 0xBD;
            if (byteAt(rest, 3) == kPrivateStream && payload < size)
                unit += rest.substr(0, size).substr(std::min(payload, rest.size()));
            at += size;
        } else {
            break;
        }
    }
    return unit;
}

constexpr unsigned kColours = 3, kContrasts = 4, kArea = 5, kFields = 6;

/// How many bytes a command has behind it; nothing for one that is not known.
std::optional<size_t> sizeOf(unsigned command) {
    constexpr size_t kSizes[] = {0, 0, 0, 2, 2, 6, 4};
    if (command >= std::size(kSizes)) return std::nullopt;
    return kSizes[command];
}

void apply(unsigned command, std::string_view unit, size_t at, Picture* picture, size_t (&fields)[2]) {
    const unsigned first = byteAt(unit, at), second = byteAt(unit, at + 1), third = byteAt(unit, at + 2);
    const unsigned nibbles[] = {second & 15, second >> 4, first & 15, first >> 4};
    for (size_t i = 0; i < 4; ++i) {
        if (command == kColours) picture->colours[i].index = nibbles[i];
        if (command == kContrasts) picture->colours[i].contrast = nibbles[i];
    }
    if (command == kArea) {
        picture->left = first << 4 | second >> 4;
        picture->right = (second & 15) << 8 | third;
        picture->top = byteAt(unit, at + 3) << 4 | byteAt(unit, at + 4) >> 4;
        picture->bottom = (byteAt(unit, at + 4) & 15) << 8 | byteAt(unit, at + 5);
    }
    if (command == kFields) {
        fields[0] = wordAt(unit, at);
        fields[1] = wordAt(unit, at + 2);
    }
}

/// Takes the runs of one row after the other.
class Runs {
public:
    explicit Runs(const std::string& bytes) : mBytes(bytes) {}

    bool atEnd() const { return mAt >= 2 * mBytes.size(); }

    /// A row of `width` pixel codes; a run that is longer ends with the row.
    std::string row(size_t width) {
        std::string codes;
        while (codes.size() < width && !atEnd()) {
            unsigned value = nibble();
            for (unsigned least = 0x4; least <= 0x40 && value < least; least <<= 2) value = value << 4 | nibble();
            const size_t left = width - codes.size();
            const size_t count = value >> 2 == 0 ? left : std::min<size_t>(value >> 2, left);
            codes.append(count, static_cast<char>(value & 3));
        }
        mAt += mAt % 2;
        codes.resize(width, '\0');
        return codes;
    }

private:
    unsigned nibble() {
        const unsigned byte = byteAt(mBytes, mAt / 2);
        return mAt++ % 2 == 0 ? byte >> 4 : byte & 15;
    }

    std::string_view mBytes;
    size_t mAt = 0;  ///< in half bytes
};

}  // namespace

std::optional<Picture> pictureAt(std::string_view stream, uint64_t position) {
    const std::string unit = unitAt(stream, position);
    constexpr size_t kSmallest = 8;
    if (unit.size() < kSmallest) return std::nullopt;
    Picture picture;
    size_t fields[2] = {};
    const size_t table = wordAt(unit, 2);
    size_t sequence = table;
    for (bool isLast = false; !isLast && sequence + 4 < unit.size();) {
        for (size_t at = sequence + 4; at < unit.size();) {
            const unsigned command = byteAt(unit, at++);
            const std::optional<size_t> size = sizeOf(command);
            if (!size) break;
            apply(command, unit, at, &picture, fields);
            at += *size;
        }
        const size_t next = wordAt(unit, sequence + 2);
        isLast = next <= sequence;
        sequence = next;
    }
    if (picture.right < picture.left || picture.bottom <= picture.top) return std::nullopt;
    for (size_t i = 0; i < 2; ++i) {
        const size_t other = fields[1 - i];
        const size_t end = other > fields[i] ? std::min(other, table) : table;
        if (fields[i] < end && end <= unit.size()) picture.fields[i] = unit.substr(fields[i], end - fields[i]);
    }
    return picture;
}

Usage usageOf(const Picture& picture) {
    Usage usage;
    const size_t width = picture.right - picture.left + 1;
    for (const std::string& field : picture.fields) {
        Runs runs(field);
        while (!runs.atEnd()) {
            const std::string row = runs.row(width);
            for (size_t x = 0; x < width; ++x) {
                const auto isUnseen = [&](size_t at) {
                    return at >= width || picture.colours[static_cast<size_t>(row[at])].contrast == 0;
                };
                const size_t code = static_cast<size_t>(row[x]);
                ++usage.pixels[code];
                if (isUnseen(x + 1) || isUnseen(x - 1)) ++usage.atEdge[code];
            }
        }
    }
    return usage;
}

}  // namespace fix
