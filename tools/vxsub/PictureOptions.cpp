#include "PictureOptions.h"

#include "Errors.h"
#include "Formats.h"

namespace vxsub {
namespace {

constexpr int kLargest = 4096;  // pixels

/// "1920x1080"
std::optional<Size> parseSize(const std::string& text) {
    const size_t cross = text.find('x');
    if (cross == text.npos) return std::nullopt;
    const auto side = [](const std::string& digits) {
        const bool isNumber =
            !digits.empty() && digits.size() <= 4 && digits.find_first_not_of("0123456789") == digits.npos;
        const int value = isNumber ? std::stoi(digits) : 0;
        return value <= kLargest ? value : 0;
    };
    const Size size = {side(text.substr(0, cross)), side(text.substr(cross + 1))};
    if (size.width == 0 || size.height == 0) return std::nullopt;
    return size;
}

}  // namespace

void addSurfaceOption(CLI::App& command, std::optional<Size>* surface, const char* description) {
    const auto setSurface = [surface](const std::string& text) {
        *surface = parseSize(text);
        if (!*surface)
            throw CLI::ValidationError("--surface", text + " is no size; write 1920x1080 or the like, up to 4096x4096");
    };
    command.add_option_function<std::string>("--surface", setSurface, description)->type_name("WxH");
}

void addPictureOptions(CLI::App& command, PictureOptions* options, const char* target, const char* surface) {
    const auto setBackground = [options](const std::string& text) {
        const std::optional<Background> background = Background::parse(text);
        if (!background)
            throw CLI::ValidationError("--background", text + " is none of checkerboard, none and a colour RRGGBB");
        options->background = *background;
    };
    command.add_option("-o", options->target, target)->required()->type_name("PATH");
    addSurfaceOption(command, &options->surface, surface);
    command
        .add_option_function<std::string>("--background", setBackground,
                                          "what lies behind the pictures: checkerboard (when not\n"
                                          "given), none (they stay transparent) or RRGGBB")
        ->type_name("WORD");
}

void requirePngName(const std::string& path) {
    // Nothing else is ever written over, least of all the subtitles.
    if (extensionOf(path) != ".png") throw UsageError(path + " is no name for an image: it must end in .png");
}

}  // namespace vxsub
