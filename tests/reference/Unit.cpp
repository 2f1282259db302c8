// A subpicture unit: control sequences, two fields of run lengths, four colours.
#include <stdio.h>

#include "tests/reference/Reference.h"

namespace reference {

namespace {

struct Command {
    unsigned code;
    std::vector<unsigned> args;
};

struct Decoder {
    const std::string& unit;
    Unit out;
    std::vector<Command> queue;
    unsigned colour[4] = {};  // background, pattern, emphasis 1, emphasis 2
    unsigned contrast[4] = {};
    unsigned field[2] = {};
    unsigned length[2] = {};

    unsigned at(size_t i) const { return byteAt(unit, i); }
    unsigned word(size_t i) const { return at(i) << 8 | at(i + 1); }

    /// False for an unknown command and for too many.
    bool sequence(size_t i) {
        const size_t kArguments[] = {0, 0, 0, 2, 2, 6, 4};
        while (true) {
            const unsigned code = at(i++);
            if (code == 0x07 || code == 0xFF) return true;
            if (code > 0x07) return false;
            Command command{code, {}};
            for (size_t k = 0; k < kArguments[code]; ++k) command.args.push_back(at(i++));
            if (queue.size() == 30) {
                out.log.push_back("Queue overflow!");
                out.log.push_back("Failed to push cmd to cmdQueue");
                return false;
            }
            queue.push_back(command);
        }
    }

    /// Only a chain that ends on a sequence that points to itself keeps its commands.
    void readChain() {
        size_t s = word(2);
        for (int count = 0; count < 65536; ++count) {
            if (!sequence(s + 4)) break;
            const size_t next = word(s + 2);
            if (next == 0) break;
            if (next == s) return;
            s = next;
        }
        queue.clear();
    }

    void apply(const Command& command) {
        const std::vector<unsigned>& a = command.args;
        switch (command.code) {
            case 3:
            case 4: {
                unsigned* const nibbles = command.code == 3 ? colour : contrast;
                nibbles[3] = a[0] >> 4;
                nibbles[2] = a[0] & 15;
                nibbles[1] = a[1] >> 4;
                nibbles[0] = a[1] & 15;
                break;
            }
            case 5: {
                const int left = static_cast<int>(a[0] << 4 | a[1] >> 4);
                const int right = static_cast<int>((a[1] & 15) << 8 | a[2]);
                const int top = static_cast<int>(a[3] << 4 | a[4] >> 4);
                const int bottom = static_cast<int>((a[4] & 15) << 8 | a[5]);
                int height = bottom - top;
                if (height % 2 != 0) --height;
                out.width = static_cast<U16>(right - left + 1);
                out.height = static_cast<U16>(height);
                out.x = static_cast<U16>(left);
                out.y = static_cast<U16>(top);
                break;
            }
            case 6:
                field[0] = a[0] << 8 | a[1];
                field[1] = a[2] << 8 | a[3];
                if (field[1] > field[0] && field[1] < word(2)) {
                    length[0] = field[1] - field[0];
                    length[1] = word(2) - field[1];
                }
                break;
            default:
                break;
        }
    }

    void decodeField(unsigned parity) {
        size_t nibble = 2 * size_t{field[parity]};
        const size_t end = nibble + 2 * size_t{length[parity]};
        const auto take = [&] {
            const unsigned byte = at(nibble / 2);
            return nibble++ % 2 == 0 ? byte >> 4 : byte & 15;
        };
        for (unsigned row = 0; row < out.height / 2U; ++row) {
            if (nibble % 2 != 0) ++nibble;
            size_t to = size_t{2 * row + parity} * out.width;
            unsigned count = 0;
            while (count < out.width && nibble < end) {
                unsigned code = take();
                bool whole = true;
                for (unsigned least = 4; least <= 0x40 && code < least; least *= 4) {
                    whole = nibble < end;
                    if (!whole) break;
                    code = code << 4 | take();
                }
                if (!whole) break;
                unsigned run = code >> 2;
                if (run == 0) run = out.width - count;
                for (unsigned k = 0; k < run; ++k, ++to) {
                    if (to < out.bitmap.size()) out.bitmap[to] = static_cast<char>(code & 3);
                }
                count += run;
            }
        }
    }
};

}  // namespace

Unit decodeUnit(const std::string& unit, const U32 (&palette)[16], U32 room) {
    Decoder decoder{unit, {}, {}};
    Unit& out = decoder.out;
    decoder.readChain();
    for (const Command& command : decoder.queue) decoder.apply(command);
    out.bitmap.assign(room, '\0');
    const U32 need = U32{out.width} * out.height / 4;
    if (need > room) {
        char line[80];
        snprintf(line, sizeof line, "[error] not enough RL decode buffer len, need %x, now %x", need, room);
        out.log.push_back(line);
        return out;
    }
    out.decoded = true;
    out.transparent = 0xFF;
    for (unsigned k = 4; k-- > 0;) {
        if (decoder.contrast[k] == 0) out.transparent = static_cast<U8>(k);
        out.colours[k] = 17 * decoder.contrast[k] << 24 | (palette[decoder.colour[k]] & 0xFFFFFF);
    }
    decoder.decodeField(0);
    decoder.decodeField(1);
    return out;
}

}  // namespace reference
