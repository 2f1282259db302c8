/// The fixed path field of the contract.
#pragma once

#include <string.h>

#include "subtitle/SubtitleTypes.h"

namespace vxsubtitle {

using namespace android;

/// Fills `field` with `path` (null: no path), padded with zeros.
template <class Byte>
void storePath(Byte (&field)[512], const U8* path) {
    static_assert(sizeof(Byte) == 1, "a field of bytes");
    memset(field, 0, sizeof field);
    if (path == nullptr) return;
    const char* const text = reinterpret_cast<const char*>(path);
    memcpy(field, text, strnlen(text, sizeof field));  // kept(file-long-path): 512 bytes and more leave no terminator
}

/// What the field holds, with the terminator that a long path leaves out.
struct Path {
    explicit Path(const char (&field)[512]) { memcpy(text, field, sizeof field); }
    char text[513] = {};
};

}  // namespace vxsubtitle
