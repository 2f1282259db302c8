// The reading of a file into its window.
#include "subtitle/vobsub/FileWindow.h"

namespace vxsubtitle {

void FileWindow::fill(S64 start) const {
    const long offset = static_cast<long>(start);
    const bool there = offset == start && fseek(file, offset, SEEK_SET) == 0;
    const size_t count = there ? fread(buffer, 1, kWindowSize, file) : 0;
    memset(buffer + count, 0, kWindowSize - count);
    filled = static_cast<U32>(count);
    position = start;
}

}  // namespace vxsubtitle
