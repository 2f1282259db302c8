// Close-on-exec from the first moment on, so that no program that another thread starts meanwhile inherits a duplicate.
#include "subtitle/system/Descriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace vxsubtitle {

int duplicate(int fd) {
    const int flags = fcntl(fd, F_GETFD);
    return flags >= 0 && (flags & FD_CLOEXEC) != 0 ? fcntl(fd, F_DUPFD_CLOEXEC, 0) : dup(fd);
}

}  // namespace vxsubtitle
