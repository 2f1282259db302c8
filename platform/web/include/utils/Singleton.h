/// One object of a class, made when it is asked for.
#pragma once

#include <cutils/compiler.h>
#include <utils/Mutex.h>

namespace android {

template <typename TYPE>
class Singleton {
public:
    Singleton(const Singleton&) = delete;
    Singleton& operator=(const Singleton&) = delete;

    static TYPE& getInstance() {
        if (sInstance == nullptr) sInstance = new TYPE;
        return *sInstance;
    }

protected:
    Singleton() = default;
    ~Singleton() = default;

private:
    static TYPE* sInstance;
};

template <typename TYPE>
TYPE* Singleton<TYPE>::sInstance = nullptr;

}  // namespace android

#define ANDROID_SINGLETON_STATIC_INSTANCE(TYPE) template class Singleton<TYPE>;
