/// Reference counts, on the one thread that a page's worker has.
#pragma once

#include <utils/Errors.h>
#include <utils/StrongPointer.h>

namespace android {

class RefBase {
public:
    void incStrong(const void*) const { ++mCount; }
    void decStrong(const void*) const {
        if (--mCount == 0) delete this;
    }
    RefBase(const RefBase&) = delete;
    RefBase& operator=(const RefBase&) = delete;

protected:
    RefBase() = default;
    virtual ~RefBase() = default;

private:
    mutable int mCount = 0;
};

}  // namespace android
