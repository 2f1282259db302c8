// The one bridge to the PNG library.
#include <errno.h>
#include <png.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "Errors.h"
#include "Picture.h"

namespace vxsub {

void Image::writePng(const std::string& path, const Background& background) const {
    static_assert(sizeof(Colour) == 4, "pixels lie as the PNG library takes them");
    Indexed indexed;
    const bool few = numberColours(background, &indexed);
    const std::vector<Colour> pixels = few ? std::vector<Colour>() : over(background);
    FILE* file = fopen(path.c_str(), "wbe");
    if (file == nullptr) throw FileError(path + ": " + strerror(errno));
    png_image png = {};
    png.version = PNG_IMAGE_VERSION;
    png.width = png_uint_32(mSize.width);
    png.height = png_uint_32(mSize.height);
    png.format = few ? PNG_FORMAT_RGBA_COLORMAP : PNG_FORMAT_RGBA;
    png.flags = PNG_IMAGE_FLAG_FAST;
    png.colormap_entries = png_uint_32(indexed.colours.size());
    const void* const data = few ? static_cast<const void*>(indexed.pixels.data()) : pixels.data();
    errno = 0;
    const bool written = png_image_write_to_stdio(&png, file, 0, data, 0, indexed.colours.data()) != 0;
    int error = errno;
    if (fclose(file) == 0 && written) return;
    if (error == 0) error = errno;
    unlink(path.c_str());
    throw FileError(path + ": cannot be written: " + (error != 0 ? strerror(error) : png.message));
}

}  // namespace vxsub
