// A subpicture by hand: one read, packs of 2048 bytes with one packet each, the commands of one sequence, two fields.
#include <string.h>
#include <unistd.h>

#include "bench/ByHand.h"

namespace bench {

namespace {

constexpr size_t kPack = 2048;
constexpr size_t kLargestUnit = 0x10000;

U32 word(const U8* p) { return U32{p[0]} << 8 | p[1]; }

/// Moves the subpicture's bytes of all packs together, to the front; answers their number.
size_t joinPacks(U8* packs, size_t size) {
    size_t joined = 0;
    for (size_t pack = 0; pack + kPack <= size; pack += kPack) {
        const U8* const packet = packs + pack + 14;
        const size_t header = 9 + size_t{packet[8]} + 1;  // with the number of the substream
        const size_t payload = word(packet + 4) + 6 - header;
        memmove(packs + joined, packet + header, payload);
        joined += payload;
    }
    return joined;
}

struct Commands {
    PictureSize size;
    const U8* fields[2];
};

Commands readCommands(const U8* unit) {
    static constexpr U8 kArguments[] = {0, 0, 0, 2, 2, 6, 4};
    Commands found = {};
    for (const U8* p = unit + word(unit + 2) + 4; *p != 0xFF; p += 1 + kArguments[*p]) {
        if (*p == 5) {
            const U32 left = word(p + 1) >> 4, right = (p[2] & 15U) << 8 | p[3];
            const U32 top = word(p + 4) >> 4, bottom = (p[5] & 15U) << 8 | p[6];
            found.size = {right - left + 1, (bottom - top) & ~1U};
        } else if (*p == 6) {
            found.fields[0] = unit + word(p + 1);
            found.fields[1] = unit + word(p + 3);
        }
    }
    return found;
}

/// One row of codes at `data`, each of as many half bytes as its leading zeros ask for; answers the next row of its
/// field. Up to 16 bytes behind the row are written, too.
const U8* decodeRow(const U8* data, unsigned width, U8* codes) {
    size_t half = 0;  // of the row's data
    const auto next = [&] {
        const U8 byte = data[half / 2];
        return half++ % 2 == 0 ? byte >> 4U : byte & 15U;
    };
    for (unsigned x = 0; x < width;) {
        U32 code = next();
        for (U32 least = 4; code < least && least <= 64; least *= 4) code = code << 4 | next();
        U32 run = code >> 2;
        if (run == 0 || run > width - x) run = width - x;
        const U64 pixels = (code & 3) * 0x0101010101010101;
        memcpy(codes + x, &pixels, sizeof pixels);
        memcpy(codes + x + 8, &pixels, sizeof pixels);
        if (run > 16) memset(codes + x, static_cast<int>(code & 3), run);
        x += run;
    }
    return data + (half + 1) / 2;
}

}  // namespace

PictureSize pictureByHand(int fd, S64 begin, S64 end, U8* codes) {
    static U8 unit[kLargestUnit];
    const size_t size = static_cast<size_t>(end - begin);
    if (size > sizeof unit || pread(fd, unit, size, static_cast<off_t>(begin)) != static_cast<ssize_t>(size)) return {};
    if (joinPacks(unit, size) < word(unit)) return {};
    Commands commands = readCommands(unit);
    for (unsigned y = 0; y < commands.size.height; ++y) {
        const U8*& field = commands.fields[y % 2];
        field = decodeRow(field, commands.size.width, codes + size_t{y} * commands.size.width);
    }
    return commands.size;
}

}  // namespace bench
