// A file opened by hand.
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "bench/ByHand.h"

namespace bench {

size_t openByHand(const char* path, ScanByHand scan) {
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return 0;
    Tags tags;
    struct stat status;
    char* text = nullptr;
    if (fstat(fd, &status) == 0) {
        const size_t size = static_cast<size_t>(status.st_size);
        text = static_cast<char*>(malloc(size + 8));
        if (text != nullptr && read(fd, text, size) == status.st_size) {
            for (size_t i = 0; i < 8; ++i) text[size + i] = 0;
            scan(text, text + size, &tags);
        }
    }
    free(text);
    close(fd);
    return tags.count();
}

}  // namespace bench
