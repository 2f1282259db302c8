// Calls of Linux that Emscripten's C library lacks. They fail as they do on a system that is too old for them.
#include <errno.h>
#include <poll.h>
#include <stdio.h>

int renameat2(int, const char*, int, const char*, unsigned) {
    errno = ENOSYS;
    return -1;
}

extern "C" int ppoll(pollfd*, nfds_t, const timespec*, const sigset_t*) {
    errno = ENOSYS;
    return -1;
}
