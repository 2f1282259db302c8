// vxsub render: pictures as a television shows them, written to image files.
#include <errno.h>
#include <string.h>
#include <sys/stat.h>

#include "Commands.h"
#include "Errors.h"
#include "PictureOptions.h"
#include "Progress.h"
#include "Television.h"
#include "Text.h"
#include "Time.h"

namespace vxsub {
namespace {

using namespace android;

constexpr Size kTelevision = {1920, 1080};

struct RenderOptions {
    PictureOptions picture;
    std::optional<U32> index;
    bool all = false;
};

std::string describe(const Television::Shown& shown, Size surface) {
    const std::string size = std::to_string(surface.width) + "x" + std::to_string(surface.height);
    if (shown.image.isBlank()) return "nothing is drawn on a surface of " + size;
    const PictureArea& area = shown.area;
    return "a picture of " + std::to_string(area.u16Width) + "x" + std::to_string(area.u16Height) +
           " on a surface of " + size;
}

void renderOne(SubtitleFile& file, U32 index, Television& television, const RenderOptions& options, Output& out) {
    const std::string& path = options.picture.target;
    requirePngName(path);
    const std::string name = "entry " + std::to_string(index);
    if (index >= file.count())
        throw FileError(file.path() + ": there is no " + name + "; it has " + std::to_string(file.count()));
    if (!file.isChosen(file.trackOf(index)))
        throw FileError(file.path() + ": " + name + " is of track " + std::to_string(file.trackOf(index)));
    const std::optional<Television::Shown> shown = television.show(index);
    if (!shown) throw FileError(file.path() + ": the picture of " + name + " cannot be decoded");
    shown->image.writePng(path, options.picture.background);
    out.line(printable(path) + ": " + name + " (" + formatSpan(file.entry(index)) + "), " +
             describe(*shown, shown->image.size()));
}

/// "0012_00-01-02-500.png"
std::string fileNameOf(U32 index, U32 startMs) {
    std::string number = std::to_string(index);
    if (number.size() < 4) number.insert(0, 4 - number.size(), '0');
    std::string time = formatTime(startMs);
    for (char& c : time)
        if (c == ':' || c == ',') c = '-';
    return number + "_" + time + ".png";
}

void renderAll(SubtitleFile& file, Television& television, const RenderOptions& options, Output& out) {
    const std::string& folder = options.picture.target;
    if (mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST) throw FileError(folder + ": " + strerror(errno));
    std::vector<U32> chosen;
    for (U32 i = 0; i < file.count(); ++i)
        if (file.isChosen(file.trackOf(i))) chosen.push_back(i);
    std::vector<std::string> remarks;
    size_t written = 0;
    {
        Progress progress(out, "Rendering", chosen.size());
        for (const U32 i : chosen) {
            const std::optional<Television::Shown> shown = television.show(i);
            const std::string name = "entry " + std::to_string(i) + ": ";
            if (!shown) {
                remarks.push_back(name + "its picture cannot be decoded");
            } else {
                if (shown->image.isBlank()) remarks.push_back(name + describe(*shown, shown->image.size()));
                const std::string path = folder + "/" + fileNameOf(i, file.entry(i).start);
                shown->image.writePng(path, options.picture.background);
                ++written;
            }
            progress.step();
        }
    }
    for (const std::string& remark : remarks) out.line(remark);
    out.line(printable(folder) + ": " + std::to_string(written) + (written == 1 ? " picture" : " pictures"));
    if (written == 0) throw FileError(file.path() + ": has no picture that could be rendered");
}

void render(const OpenOptions& open, const RenderOptions& options, Output& out) {
    if (options.all == options.index.has_value())
        throw UsageError("either --index or --all is needed (see vxsub render --help)");
    if (options.index) requirePngName(options.picture.target);
    SubtitleFile file(open);
    requirePictures(file);
    Television television(file, options.picture.surface.value_or(kTelevision));
    if (options.index)
        renderOne(file, *options.index, television, options, out);
    else
        renderAll(file, television, options, out);
}

}  // namespace

void addRender(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("render", "Draw pictures as a television shows them");
    command->footer(
        "The library decodes the pictures and draws them on a surface of that size; how it\n"
        "scales them depends on the frame size that the index names. With --all, each file\n"
        "is named after its entry's index and start: 0012_00-01-02-500.png.\n\n"
        "Examples:  vxsub render movie.idx --index 0 -o first.png\n"
        "           vxsub render movie.idx --all --surface 1280x720 -o pictures");
    addFileArgument(*command, session);
    const auto options = std::make_shared<RenderOptions>();
    command
        ->add_option_function<U32>(
            "--index", [options](const U32& index) { options->index = index; },
            "the entry to draw, counted as \"vxsub list\" does")
        ->type_name("N");
    command->add_flag("--all", options->all, "draw all entries");
    addTrackOption(*command, session, "only that track of a file that has several");
    addPictureOptions(*command, &options->picture, "the image to write (.png), or with --all the folder",
                      "the television's size; 1920x1080 when not given");
    command->callback(
        [options, &session] { session.run = [options, &session] { render(session.file, *options, session.out); }; });
}

}  // namespace vxsub
