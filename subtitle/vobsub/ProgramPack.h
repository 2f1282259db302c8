/// The 2048-byte packs of a VobSub program stream.
#pragma once

#include "subtitle/text/TextView.h"

namespace vxsubtitle {

constexpr U32 kPackSize = 2048;

struct PackPayload {
    size_t offset;  ///< of the subpicture's bytes, from where the pack's offset counts
    U16 size;
};

/// Reads the headers of the pack at `pack`: an MPEG-2 pack with one private stream 1 packet. False for any other.
inline bool readPack(const TextView<Bytes>& in, size_t pack, PackPayload* payload) {
    const auto startCode = [&](size_t at, U8 id) {
        return in.at(at) == 0 && in.at(at + 1) == 0 && in.at(at + 2) == 1 && in.at(at + 3) == id;
    };
    if (!startCode(pack, 0xBA) || in.at(pack + 4) >= 0x80) return false;
    if (!startCode(pack + 14, 0xBD)) return false;  // kept: a pack header with stuffing bytes is not read
    if ((in.at(pack + 20) & 0xC0) != 0x80) return false;
    const U32 length = U32{in.at(pack + 18)} << 8 | in.at(pack + 19);
    const U32 header = in.at(pack + 22);
    // kept: the substream byte behind the header is skipped unseen; the position in the index selects the track
    payload->offset = pack + 24 + header;
    payload->size = static_cast<U16>(length - header - 4);  // kept: modulo 65536
    return true;
}

}  // namespace vxsubtitle
