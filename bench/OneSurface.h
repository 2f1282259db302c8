/// The one surface of a program that measures drawing: 1920x1080, the same buffer again and again, shown nowhere.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "subtitle/SubtitleParserSUBIDX.h"

namespace bench {

using namespace android;

constexpr int kSurfaceWidth = 1920, kSurfaceHeight = 1080;
constexpr size_t kSurfaceBytes = size_t{kSurfaceWidth} * kSurfaceHeight * 4;

U8* surfacePixels();

/// A picture of a 720x576 frame, and which colour codes are transparent.
struct DrawnPicture {
    std::string title;
    U16 width, height;
    std::vector<U8> codes;
    bool transparentBackground;
};
std::vector<DrawnPicture> drawnPictures();

/// A parser with the surface, and with the picture's frame and colours.
std::shared_ptr<SubtitleParserSUBIDX> parserOfSurface(const DrawnPicture& picture);

}  // namespace bench
