// Zeros from the processor for the front of a block, from the system's pages for the rest.
#include "subtitle/system/ZeroPages.h"

#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

namespace vxsubtitle {

void zeroPages(U8* block, size_t size, size_t used) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t written = used < size ? used : size;
    // from the first page behind what is written up to the last whole one
    const size_t skipped = (page - reinterpret_cast<uintptr_t>(block + written) % page) % page;
    const size_t start = written + skipped;
    const size_t given = start < size ? (size - start) / page * page : 0;
    // refused for memory that is locked
    if (given != 0 && madvise(block + start, given, MADV_DONTNEED) == 0) {
        memset(block, 0, start);
        memset(block + start + given, 0, size - start - given);
    } else {
        memset(block, 0, size);
    }
}

}  // namespace vxsubtitle
