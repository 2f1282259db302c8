// A page shows pictures itself; it writes none.
#include "tools/vxsub/Errors.h"
#include "tools/vxsub/Picture.h"

namespace vxsub {

void Image::writePng(const std::string& path, const Background&) const {
    throw FileError(path + ": a page writes no PNG files");
}

}  // namespace vxsub
