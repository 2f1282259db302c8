/// A counted reference, as far as library and inspector use it.
#pragma once

#include <stdint.h>

namespace android {

template <typename T>
class sp {
public:
    sp() = default;
    sp(T* other) : mPointer(other) { acquire(); }
    sp(const sp& other) : sp(other.mPointer) {}
    template <typename U>
    sp(const sp<U>& other) : sp(other.get()) {}
    ~sp() { release(); }

    sp& operator=(T* other) {
        const sp kept(other);
        T* const mine = mPointer;
        mPointer = kept.mPointer;
        acquire();
        if (mine != nullptr) mine->decStrong(this);
        return *this;
    }
    sp& operator=(const sp& other) { return *this = other.mPointer; }
    template <typename U>
    sp& operator=(const sp<U>& other) {
        return *this = other.get();
    }
    void clear() { *this = nullptr; }

    T& operator*() const { return *mPointer; }
    T* operator->() const { return mPointer; }
    T* get() const { return mPointer; }

    bool operator==(const T* other) const { return mPointer == other; }
    bool operator!=(const T* other) const { return mPointer != other; }

private:
    void acquire() {
        if (mPointer != nullptr) mPointer->incStrong(this);
    }
    void release() {
        if (mPointer != nullptr) mPointer->decStrong(this);
    }

    T* mPointer = nullptr;
};

}  // namespace android
