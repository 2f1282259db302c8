// vxsub render: pictures as a television shows them, written to image files.
#include <errno.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>

#include "Commands.h"
#include "Errors.h"
#include "PictureOptions.h"
#include "Progress.h"
#include "Television.h"
#include "Text.h"
#include "Time.h"
#include "Viewer.h"

namespace vxsub {
namespace {

using namespace android;

struct RenderOptions {
    PictureOptions picture;
    std::optional<U32> index;
    bool all = false;
    bool json = false;
};

/// Writes pictures, and remembers what became of each.
class Renderer {
public:
    Renderer(SubtitleFile& file, const RenderOptions& options)
        : mFile(file),
          mOptions(options),
          mFaults(file),
          mTelevision(file, options.picture.surface.value_or(kTelevision)) {}

    /// Writes an entry's picture, if it has one.
    void write(U32 index, const std::string& path) {
        const std::optional<Television::Shown> shown = mTelevision.show(index);
        if (shown) shown->image.writePng(path, mOptions.picture.background);
        const Box box = shown ? placeOf(mFile, *shown) : Box{};
        const bool isSeen = shown && !shown->box.isEmpty();
        mResults.push_back({index, shown ? path : "", box, isSeen ? "" : mFaults.why(index, mTelevision, shown)});
    }

    struct Result {
        U32 index;
        std::string path;  ///< empty: nothing was written
        Box box;
        std::string why;  ///< nothing of the picture is seen; otherwise empty
    };
    const std::vector<Result>& results() const { return mResults; }
    size_t written() const {
        return size_t(std::count_if(mResults.begin(), mResults.end(), [](const Result& r) { return !r.path.empty(); }));
    }

    Json json() const {
        Json value = headOf(mFile);
        value["surface"] = {{"width", mTelevision.size().width}, {"height", mTelevision.size().height}};
        value["images"] = Json::array();
        for (const Result& result : mResults) {
            Json image = timesOf(mFile, result.index);
            image["path"] = result.path.empty() ? Json(nullptr) : Json(result.path);
            image["picture"] = result.why.empty() ? boxJson(result.box) : Json(nullptr);
            if (!result.why.empty()) image["why"] = result.why;
            value["images"].push_back(image);
        }
        return value;
    }

private:
    SubtitleFile& mFile;
    const RenderOptions& mOptions;
    PictureFaults mFaults;
    Television mTelevision;
    std::vector<Result> mResults;
};

void renderOne(SubtitleFile& file, U32 index, const RenderOptions& options, Output& out) {
    const std::string name = "entry " + std::to_string(index);
    if (index >= file.count())
        throw FileError(file.path() + ": there is no " + name + "; it has " + std::to_string(file.count()));
    if (!file.isChosen(file.trackOf(index)))
        throw FileError(file.path() + ": " + name + " is of track " + std::to_string(file.trackOf(index)));
    Renderer renderer(file, options);
    renderer.write(index, options.picture.target);
    const Renderer::Result& result = renderer.results()[0];
    if (result.path.empty()) throw FileError(file.path() + ": " + name + " has no picture: " + result.why);
    if (options.json) {
        out.line(toText(renderer.json()));
        return;
    }
    const Size surface = options.picture.surface.value_or(kTelevision);
    out.line(printable(result.path) + ": " + name + " (" + formatSpan(file.entry(index)) + "), " +
             (result.why.empty() ? "a picture of " + sizeText(result.box.width, result.box.height) + " at " +
                                       std::to_string(result.box.left) + ", " + std::to_string(result.box.top)
                                 : result.why) +
             ", on a surface of " + sizeText(surface.width, surface.height));
}

/// "0012_track0_00-01-02-500.png"
std::string fileNameOf(const SubtitleFile& file, U32 index, U32 startMs) {
    std::string number = std::to_string(index);
    if (number.size() < 4) number.insert(0, 4 - number.size(), '0');
    std::string time = formatTime(startMs);
    for (char& c : time)
        if (c == ':' || c == ',') c = '-';
    return number + "_track" + std::to_string(file.trackOf(index)) + "_" + time + ".png";
}

void renderAll(SubtitleFile& file, const RenderOptions& options, Output& out) {
    const std::string& folder = options.picture.target;
    if (mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST) throw FileError(folder + ": " + strerror(errno));
    std::vector<U32> chosen;
    for (U32 i = 0; i < file.count(); ++i)
        if (file.isChosen(file.trackOf(i))) chosen.push_back(i);
    Renderer renderer(file, options);
    {
        Progress progress(out, "Rendering", chosen.size());
        for (const U32 i : chosen) {
            renderer.write(i, folder + "/" + fileNameOf(file, i, file.entry(i).start));
            progress.step();
        }
    }
    const size_t written = renderer.written();
    if (options.json) {
        out.line(toText(renderer.json()));
    } else {
        for (const Renderer::Result& result : renderer.results())
            if (!result.why.empty())
                out.line("entry " + std::to_string(result.index) + (result.path.empty() ? " has no picture: " : ": ") +
                         result.why);
        out.line(printable(folder) + ": " + std::to_string(written) + (written == 1 ? " picture" : " pictures"));
    }
    if (written == 0) throw FileError(file.path() + ": has no picture that could be rendered");
}

void render(const OpenOptions& open, const RenderOptions& options, Output& out) {
    const char kSee[] = " (see vxsub render --help)";
    if (options.all && options.index)
        throw UsageError(std::string("--index and --all exclude each other: one entry, or all") + kSee);
    if (!options.all && !options.index) throw UsageError(std::string("either --index or --all is needed") + kSee);
    if (options.index) requirePngName(options.picture.target);
    SubtitleFile file(open);
    requirePictures(file);
    if (options.index)
        renderOne(file, *options.index, options, out);
    else
        renderAll(file, options, out);
}

}  // namespace

void addRender(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("render", "Draw pictures as a television shows them");
    command->footer(
        "The library decodes the pictures and draws them on a surface of that size; how it\n"
        "scales them depends on the frame size that the index names. With --all, each file\n"
        "is named after its entry's index, track and start: 0012_track0_00-01-02-500.png.\n\n"
        "With --json, one object: {\"file\", \"format\", \"encoding\", \"surface\", \"images\":\n"
        "[{\"index\", \"start\", \"end\", \"track\", \"language\", \"path\", \"picture\"}, ...]}; the\n"
        "picture is where it is seen, or null, and then there is \"why\".\n\n"
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
                      kTelevisionSize);
    addJsonOption(*command, &options->json);
    command->callback(
        [options, &session] { session.run = [options, &session] { render(session.file, *options, session.out); }; });
}

}  // namespace vxsub
