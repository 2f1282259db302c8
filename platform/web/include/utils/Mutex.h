/// A lock where there is one thread: nobody ever waits for it.
#pragma once

#include <utils/Errors.h>

namespace android {

class Mutex {
public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    status_t lock() { return OK; }
    void unlock() {}
    status_t tryLock() { return OK; }

    class Autolock {
    public:
        explicit Autolock(Mutex&) {}
        explicit Autolock(Mutex*) {}
        ~Autolock() {}  // a lock that is held counts as used
    };
};

}  // namespace android
