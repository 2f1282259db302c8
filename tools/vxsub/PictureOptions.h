/// Command-line pieces of the commands that write images.
#pragma once

#include <CLI/CLI.hpp>

#include "Picture.h"

namespace vxsub {

struct PictureOptions {
    std::string target;           ///< what -o names
    std::optional<Size> surface;  ///< nothing: the command's own choice
    Background background = Background::checkerboard();
};

/// --surface.
void addSurfaceOption(CLI::App& command, std::optional<Size>* surface, const char* description);

/// -o, --surface and --background.
void addPictureOptions(CLI::App& command, PictureOptions* options, const char* target, const char* surface);

/// Throws `UsageError` unless an image file is named.
void requirePngName(const std::string& path);

}  // namespace vxsub
