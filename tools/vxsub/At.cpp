// vxsub at: what a television shows at one play time.
#include "Commands.h"
#include "PictureOptions.h"
#include "Sentences.h"
#include "Text.h"
#include "Time.h"
#include "Viewer.h"

namespace vxsub {
namespace {

using namespace android;

struct AtOptions {
    U32 ms = 0;
    bool json = false;
    std::optional<Size> surface;
};

void show(SubtitleFile& file, U32 ms, std::optional<U32> shown, const AtOptions& options, bool raw, Output& out) {
    if (!shown) {
        out.line(formatTime(ms) + "  nothing is shown (" + describeGap(file, ms) + ")");
        return;
    }
    // The library may name the last entry of the track in front, and a television shows it.
    const U32 track = file.trackOf(*shown);
    const std::string ofTrack = track == file.track() ? "" : ", of track " + std::to_string(track);
    out.line(formatTime(ms) + "  entry " + std::to_string(*shown) + " (" + formatSpan(file.entry(*shown)) + ")" +
             ofTrack);
    const std::u32string text = Viewer(file, options.surface).text(*shown);
    std::vector<std::string> lines = displayLines(text);
    if (raw && !text.empty()) lines = {escapeLine(text)};
    if (lines.empty()) lines = {"(no text)"};
    for (const std::string& line : lines) out.line(line);
}

void showJson(SubtitleFile& file, U32 ms, std::optional<U32> shown, const AtOptions& options, bool raw, Output& out) {
    Json value = headOf(file);
    value["time"] = ms;
    value["entry"] = shown ? Viewer(file, options.surface).json(*shown, raw) : Json(nullptr);
    if (!shown) value["why"] = describeGap(file, ms);
    out.line(toText(value));
}

void showAt(const OpenOptions& open, const AtOptions& options, Output& out) {
    SubtitleFile file(open);
    (options.json ? showJson : show)(file, options.ms, file.entryShownAt(options.ms), options, open.raw, out);
}

}  // namespace

void addAt(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("at", "Show what a television shows at one play time");
    command->footer(std::string("TIME is written as ") + kTimeForms +
                    ".\n\n"
                    "An entry is shown from its start until just before its end. Where entries\n"
                    "overlap, the one that began last counts, also after it has ended. A picture\n"
                    "stays until the next one starts.\n\n"
                    "With --json, one object: {\"file\", \"format\", \"encoding\", \"time\", \"entry\"}. The\n"
                    "entry is as in \"vxsub list --json\", or null, and then there is \"why\".\n\n"
                    "Example:  vxsub at movie.srt 1:01.5");
    addFileArgument(*command, session);
    const auto options = std::make_shared<AtOptions>();
    command->add_option_function<std::string>("TIME", timeInto(&options->ms, "TIME"), "the play time")
        ->required()
        ->type_name("");
    addJsonOption(*command, &options->json);
    addTrackOption(*command, session, "the track of a file that has several; 0 when not given");
    addSurfaceOption(*command, &options->surface, kTelevisionSize);
    addRawOption(*command, session);
    command->callback(
        [options, &session] { session.run = [options, &session] { showAt(session.file, *options, session.out); }; });
}

}  // namespace vxsub
