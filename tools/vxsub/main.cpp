// vxsub: a player without a television. What a process needs around it.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "Program.h"

namespace {

/// Descriptors 0 to 2 are taken from here on, whatever the caller had closed: no file of ours becomes one of them.
void occupyStandardDescriptors() {
    for (int fd = open("/dev/null", O_RDONLY); fd >= 0; fd = open("/dev/null", O_RDONLY)) {
        if (fd <= STDERR_FILENO) continue;
        close(fd);
        return;
    }
}

}  // namespace

int main(int argc, char** argv) {
    occupyStandardDescriptors();
    signal(SIGPIPE, SIG_IGN);  // a reader that has gone is seen where the output is written
    return vxsub::run(argc, argv);
}
