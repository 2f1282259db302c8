#include "Picture.h"

#include <string.h>

#include <algorithm>
#include <cmath>

#include "Errors.h"

namespace vxsub {
namespace {

using android::U32;
using android::U8;

constexpr int kSquare = 16;  // pixels
constexpr Colour kDark = {0x60, 0x60, 0x60, 0xFF}, kLight = {0x78, 0x78, 0x78, 0xFF};

Colour blend(Colour above, Colour below) {
    if (above.alpha == 255) return above;
    if (above.alpha == 0) return below.alpha != 0 ? below : Colour{0, 0, 0, 0};
    const U32 alpha = above.alpha * 255u + below.alpha * (255u - above.alpha);  // in 255ths
    const auto mix = [&](U8 a, U8 b) {
        const U32 sum = a * above.alpha * 255u + b * below.alpha * (255u - above.alpha);
        return U8((sum + alpha / 2) / alpha);
    };
    return {mix(above.red, below.red), mix(above.green, below.green), mix(above.blue, below.blue),
            U8((alpha + 127) / 255)};
}

/// The colours of an image, numbered as they appear, as many as a PNG's palette holds.
class Palette {
public:
    explicit Palette(std::vector<Colour>* colours) : mColours(*colours) {}

    /// Negative when there is no room for one more.
    int numberOf(Colour colour) {
        const auto found = std::find(mColours.begin(), mColours.end(), colour);
        if (found != mColours.end()) return int(found - mColours.begin());
        if (mColours.size() == kMost) return -1;
        mColours.push_back(colour);
        return int(mColours.size()) - 1;
    }

private:
    static constexpr size_t kMost = 256;
    std::vector<Colour>& mColours;
};

/// Averages pixels, each counting by its alpha.
class Average {
public:
    void add(Colour c) {
        mRed += c.red * c.alpha;
        mGreen += c.green * c.alpha;
        mBlue += c.blue * c.alpha;
        mAlpha += c.alpha;
        ++mCount;
    }
    Colour value() const {
        if (mAlpha == 0) return {0, 0, 0, 0};
        return {U8(mRed / mAlpha), U8(mGreen / mAlpha), U8(mBlue / mAlpha), U8(mAlpha / mCount)};
    }

private:
    android::U64 mRed = 0, mGreen = 0, mBlue = 0, mAlpha = 0, mCount = 0;
};

}  // namespace

std::optional<Background> Background::parse(std::string_view text) {
    if (text == "checkerboard") return checkerboard();
    if (text == "none") return Background(Kind::None, {0, 0, 0, 0});
    if (!text.empty() && text[0] == '#') text.remove_prefix(1);
    if (text.size() != 6 || text.find_first_not_of("0123456789abcdefABCDEF") != text.npos) return std::nullopt;
    const unsigned long value = std::stoul(std::string(text), nullptr, 16);
    return Background(Kind::Plain, {U8(value >> 16), U8(value >> 8), U8(value), 0xFF});
}

Colour Background::at(int x, int y) const {
    if (mKind != Kind::Checkerboard) return mColour;
    return (x / kSquare + y / kSquare) % 2 == 0 ? kDark : kLight;
}

int Background::sameUntil(int x) { return (x / kSquare + 1) * kSquare; }

Image::Image(Size size) : mSize(size), mPixels(size_t(size.width) * size_t(size.height)) {}

Box Image::visibleBox() const {
    const auto isSeen = [](const Colour& c) { return c.alpha != 0; };
    int left = mSize.width, top = -1, right = 0, bottom = 0;
    for (int y = 0; y < mSize.height; ++y) {
        const Colour* const row = mPixels.data() + index(0, y);
        const Colour* const first = std::find_if(row, row + mSize.width, isSeen);
        if (first == row + mSize.width) continue;
        if (top < 0) top = y;
        bottom = y + 1;
        left = std::min(left, int(first - row));
        int last = mSize.width;
        while (!isSeen(row[last - 1])) --last;
        right = std::max(right, last);
    }
    if (top < 0) return {0, 0, 0, 0};
    return {left, top, right - left, bottom - top};
}

Image Image::part(const Box& box) const {
    Image part({box.width, box.height});
    for (int y = 0; y < box.height; ++y)
        for (int x = 0; x < box.width; ++x) part.at(x, y) = at(box.left + x, box.top + y);
    return part;
}

Image Image::reduced(double factor) const {
    if (factor >= 1 || mPixels.empty()) return *this;
    const auto reduced = [factor](int side) { return std::max(1, int(std::lround(side * factor))); };
    Image small({reduced(mSize.width), reduced(mSize.height)});
    const auto edge = [](int i, int from, int to) { return int(long(i) * to / from); };
    for (int y = 0; y < small.mSize.height; ++y)
        for (int x = 0; x < small.mSize.width; ++x) {
            Average average;
            for (int v = edge(y, small.mSize.height, mSize.height); v < edge(y + 1, small.mSize.height, mSize.height);
                 ++v)
                for (int u = edge(x, small.mSize.width, mSize.width); u < edge(x + 1, small.mSize.width, mSize.width);
                     ++u)
                    average.add(at(u, v));
            small.at(x, y) = average.value();
        }
    return small;
}

void Image::lay(const Image& image, int left, int top) {
    for (int y = std::max(0, -top); y < image.mSize.height && top + y < mSize.height; ++y)
        for (int x = std::max(0, -left); x < image.mSize.width && left + x < mSize.width; ++x)
            at(left + x, top + y) = blend(image.at(x, y), at(left + x, top + y));
}

bool Image::numberColours(const Background& background, Indexed* indexed) const {
    indexed->pixels.resize(mPixels.size());
    Palette palette(&indexed->colours);
    for (int y = 0; y < mSize.height; ++y) {
        for (int x = 0, end; x < mSize.width; x = end) {
            // a stretch of one colour, before one background
            const int most = std::min(mSize.width, Background::sameUntil(x));
            const Colour& colour = at(x, y);
            for (end = x + 1; end < most && colour == at(end, y);) ++end;
            const int number = palette.numberOf(blend(colour, background.at(x, y)));
            if (number < 0) return false;
            memset(&indexed->pixels[index(x, y)], number, size_t(end - x));
        }
    }
    return true;
}

std::vector<Colour> Image::over(const Background& background) const {
    std::vector<Colour> pixels;
    pixels.reserve(mPixels.size());
    for (int y = 0; y < mSize.height; ++y)
        for (int x = 0; x < mSize.width; ++x) pixels.push_back(blend(at(x, y), background.at(x, y)));
    return pixels;
}

}  // namespace vxsub
