// vxsub at: what a television shows at one play time.
#include "Commands.h"
#include "Text.h"
#include "Time.h"

namespace vxsub {
namespace {

using namespace android;

/// Why nothing is shown: how the time lies to the entry that the library names, and what comes next.
std::string describeGap(SubtitleFile& file, U32 ms) {
    const std::optional<U32> begun = file.entryBegunAt(ms);
    if (file.count() == 0) return "the file has no entries";
    if (!begun) return "the library names no entry";
    const Entry entry = file.entry(*begun);
    const std::string name = "entry " + std::to_string(*begun);
    if (ms < entry.start) return name + " starts at " + formatTime(entry.start);
    std::string text = name + " ended at " + formatTime(entry.end);
    const U32 next = *begun + 1;
    if (next == file.tracks()[file.trackOf(*begun)].end) return text + ", and it is the last";
    return text + ", entry " + std::to_string(next) + " starts at " + formatTime(file.entry(next).start);
}

void showAt(const OpenOptions& options, U32 ms, Output& out) {
    SubtitleFile file(options);
    const std::optional<U32> shown = file.entryShownAt(ms);
    if (!shown) {
        out.line(formatTime(ms) + "  nothing is shown (" + describeGap(file, ms) + ")");
        return;
    }
    const Entry entry = file.entry(*shown);
    // The library may name the last entry of the track in front, and a television shows it.
    const U32 track = file.trackOf(*shown);
    const std::string ofTrack = track == file.track() ? "" : ", of track " + std::to_string(track);
    out.line(formatTime(ms) + "  entry " + std::to_string(*shown) + " (" + formatSpan(entry) + ")" + ofTrack);
    const std::u32string text = file.text(*shown);
    std::vector<std::string> lines = displayLines(text);
    if (options.raw && !text.empty()) lines = {escapeLine(text)};
    if (lines.empty()) lines = {"(no text)"};
    for (const std::string& line : lines) out.line(line);
}

}  // namespace

void addAt(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("at", "Show what a television shows at one play time");
    command->footer(std::string("TIME is written as ") + kTimeForms +
                    ".\n\n"
                    "An entry is shown from its start until just before its end. Where entries\n"
                    "overlap, the one that began last counts, also after it has ended. A picture\n"
                    "stays until the next one starts.\n\n"
                    "Example:  vxsub at movie.srt 1:01.5");
    addFileArgument(*command, session);
    const auto ms = std::make_shared<U32>(0);
    command->add_option_function<std::string>("TIME", timeInto(ms.get(), "TIME"), "the play time")
        ->required()
        ->type_name("");
    addTrackOption(*command, session, "the track of a file that has several; 0 when not given");
    addRawOption(*command, session);
    command->callback([ms, &session] { session.run = [ms, &session] { showAt(session.file, *ms, session.out); }; });
}

}  // namespace vxsub
