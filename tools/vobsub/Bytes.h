/// Bytes of a VobSub stream; numbers in it have the high byte first.
#pragma once

#include <stddef.h>

#include <string_view>

namespace vobsub {

/// Behind them all is 0.
class Bytes {
public:
    explicit Bytes(std::string_view bytes) : mBytes(bytes) {}
    unsigned at(size_t i) const { return i < mBytes.size() ? static_cast<unsigned char>(mBytes[i]) : 0; }
    unsigned word(size_t i) const { return at(i) << 8 | at(i + 1); }
    unsigned nibble(size_t i) const { return i % 2 == 0 ? at(i / 2) >> 4 : at(i / 2) & 0xF; }
    bool isStartCode(size_t i, unsigned id) const { return word(i) == 0 && at(i + 2) == 1 && at(i + 3) == id; }
    size_t size() const { return mBytes.size(); }
    std::string_view part(size_t begin, size_t end) const {
        return begin < end && begin < size() ? mBytes.substr(begin, end - begin) : std::string_view();
    }

private:
    std::string_view mBytes;
};

}  // namespace vobsub
