/// Images in memory, and how they reach a PNG file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "subtitle/SubtitleTypes.h"

namespace vxsub {

struct Size {
    int width, height;
};

/// A part of an image.
struct Box {
    int left, top, width, height;
    bool isEmpty() const { return width == 0 || height == 0; }
};

struct Colour {
    android::U8 red, green, blue, alpha;

    bool operator==(const Colour& other) const {
        return red == other.red && green == other.green && blue == other.blue && alpha == other.alpha;
    }
};

/// What lies behind a picture, as the movie does on a television.
class Background {
public:
    /// Squares in two greys, on which both white and black letters stand out.
    static Background checkerboard() { return Background(Kind::Checkerboard, {}); }

    /// "checkerboard", "none" (the picture's own transparency), or a colour as RRGGBB, with or without '#' in front.
    static std::optional<Background> parse(std::string_view text);

    Colour at(int x, int y) const;

    /// Behind column x, the first one whose colour may be another, in any row.
    static int sameUntil(int x);

private:
    enum class Kind { Checkerboard, None, Plain };
    Background(Kind kind, Colour colour) : mKind(kind), mColour(colour) {}

    Kind mKind;
    Colour mColour;
};

/// Pixels from the top left, row by row. Colours are not multiplied by their alpha.
class Image {
public:
    explicit Image(Size size);

    Size size() const { return mSize; }
    Colour& at(int x, int y) { return mPixels[index(x, y)]; }
    const Colour& at(int x, int y) const { return mPixels[index(x, y)]; }

    /// The smallest part that holds every pixel that would be seen; empty when there is none.
    Box visibleBox() const;

    Image part(const Box& box) const;

    /// Each side times `factor`, which is at most 1, by averaging; at least one pixel stays.
    Image reduced(double factor) const;

    /// Draws `image` over this one; what would lie outside is dropped.
    void lay(const Image& image, int left, int top);

    /// Writes the image in front of a background. Throws `FileError` when the file cannot be written; none stays behind
    /// then.
    void writePng(const std::string& path, const Background& background) const;

private:
    /// An image of few colours.
    struct Indexed {
        std::vector<Colour> colours;
        std::vector<android::U8> pixels;  ///< their numbers
    };

    /// The image in front of a background. False when it has too many colours.
    bool numberColours(const Background& background, Indexed* indexed) const;
    std::vector<Colour> over(const Background& background) const;

    size_t index(int x, int y) const { return size_t(y) * size_t(mSize.width) + size_t(x); }

    Size mSize;
    std::vector<Colour> mPixels;
};

}  // namespace vxsub
