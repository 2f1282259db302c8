/// A rectangle; right and bottom are exclusive.
#pragma once

#include <stdint.h>

namespace android {

class Rect {
public:
    int32_t left = 0, top = 0, right = 0, bottom = 0;

    Rect() = default;
    template <typename T>
    Rect(T w, T h) : right(static_cast<int32_t>(w)), bottom(static_cast<int32_t>(h)) {}
    Rect(int32_t l, int32_t t, int32_t r, int32_t b) : left(l), top(t), right(r), bottom(b) {}

    int32_t getWidth() const { return right - left; }
    int32_t getHeight() const { return bottom - top; }
};

}  // namespace android
