/// A window on a file: a buffer that holds some of its bytes, and moves on.
#pragma once

#include <stdio.h>

#include "subtitle/text/TextView.h"

namespace vxsubtitle {

constexpr U32 kWindowSize = 0x10000;  ///< bytes of a window's buffer

/// The buffer, fill count and position of one file, where the contract keeps them.
struct FileWindow {
    FILE* file;
    U8* buffer;     ///< `kWindowSize` bytes
    U32& filled;    ///< bytes of the buffer that came from the file
    S64& position;  ///< of the buffer's first byte in the file

    /// Fills the buffer with the bytes from `start` on, and zeros behind the file's end; with zeros alone when that
    /// place cannot be reached.
    void fill(S64 start) const;

    template <class Enc>
    TextView<Enc> view() const {
        return {buffer, filled < kWindowSize ? filled : kWindowSize};
    }
};

}  // namespace vxsubtitle
