// A plug-in whose object is nothing but a table of functions: each logs the place at which it was called.
#include <android/log.h>

#include <utility>

#include "subtitle/SubtitleTypes.h"

namespace {

using android::S64;
using android::U32;

template <U32 kPlace>
U32 answer(void*) {
    __android_log_print(ANDROID_LOG_DEBUG, "PlacesPlugin", "place %u", kPlace);
    return 100 + kPlace;
}

using Function = U32 (*)(void*);

template <U32... kPlaces>
const Function* table(std::integer_sequence<U32, kPlaces...>) {
    static constexpr Function kTable[] = {answer<kPlaces>...};
    return kTable;
}

const Function* object;

}  // namespace

extern "C" VXSUBTITLE_API void* getInstance(int fd, S64 offset, S64 length) __asm__("_ZN7android11GetInstanceEPc");

void* getInstance(int fd, S64 offset, S64 length) {
    __android_log_print(ANDROID_LOG_DEBUG, "PlacesPlugin", "GetInstance %d %lld %lld", fd, offset, length);
    object = table(std::make_integer_sequence<U32, 31>());
    return &object;
}
