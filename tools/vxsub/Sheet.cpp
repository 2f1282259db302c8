// vxsub sheet: all pictures at a glance, in one image.
#include <algorithm>

#include "Commands.h"
#include "PictureOptions.h"
#include "Progress.h"
#include "Television.h"
#include "Text.h"
#include "Time.h"
#include "tools/samples/VobSubMaker.h"

namespace vxsub {
namespace {

using namespace android;

constexpr Size kThumbnail = {440, 120};  // at most
constexpr int kColumns = 3;
constexpr int kGap = 12;
constexpr size_t kMostThumbnails = 300;
constexpr unsigned kLetterScale = 2;

struct SheetOptions {
    PictureOptions picture;
    U32 fromMs = 0;
};

struct Thumbnail {
    Image picture, label;
};

/// White letters with a black outline.
Image drawLabel(const std::string& text) {
    constexpr Colour kColours[4] = {{0, 0, 0, 0}, {0xFF, 0xFF, 0xFF, 0xFF}, {0, 0, 0, 0xFF}, {0, 0, 0, 0}};
    const samples::Bitmap letters = samples::drawText({text}, kLetterScale);
    Image label({int(letters.width), int(letters.height)});
    for (unsigned y = 0; y < letters.height; ++y)
        for (unsigned x = 0; x < letters.width; ++x) label.at(int(x), int(y)) = kColours[letters.at(x, y) & 3];
    return label;
}

Image arrange(const std::vector<Thumbnail>& thumbnails) {
    Size cell = {1, 1};
    int labelHeight = 0;
    for (const Thumbnail& thumbnail : thumbnails) {
        cell.width = std::max({cell.width, thumbnail.picture.size().width, thumbnail.label.size().width});
        cell.height = std::max(cell.height, thumbnail.picture.size().height);
        labelHeight = thumbnail.label.size().height;
    }
    cell.height += labelHeight;
    const int count = int(thumbnails.size());
    const int columns = std::min(count, kColumns), rows = (count + kColumns - 1) / kColumns;
    Image sheet({columns * (cell.width + kGap) + kGap, rows * (cell.height + kGap) + kGap});
    for (int i = 0; i < count; ++i) {
        const Thumbnail& thumbnail = thumbnails[size_t(i)];
        const int left = kGap + i % kColumns * (cell.width + kGap), top = kGap + i / kColumns * (cell.height + kGap);
        const Size size = thumbnail.picture.size();
        sheet.lay(thumbnail.label, left, top);
        sheet.lay(thumbnail.picture, left + (cell.width - size.width) / 2, top + cell.height - size.height);
    }
    return sheet;
}

void makeSheet(const OpenOptions& open, const SheetOptions& options, Output& out) {
    requirePngName(options.picture.target);
    SubtitleFile file(open);
    requirePictures(file);
    Television television(file, options.picture.surface.value_or(frameSizeOf(file)));
    std::vector<U32> chosen;
    for (U32 i = 0; i < file.count(); ++i)
        if (file.isChosen(file.trackOf(i)) && file.entry(i).start >= options.fromMs) chosen.push_back(i);
    const size_t all = chosen.size();
    if (all == 0) {
        out.line(printable(file.path()) + ": no entries");
        return;
    }
    chosen.resize(std::min(all, kMostThumbnails));

    std::vector<Thumbnail> thumbnails;
    size_t missing = 0;
    {
        Progress progress(out, "Drawing", chosen.size());
        for (const U32 i : chosen) {
            const std::optional<Television::Shown> shown = television.show(i);
            const Image picture = shown ? shown->image.visiblePart() : Image({0, 0});
            if (picture.size().width == 0) ++missing;
            thumbnails.push_back(
                {picture.fitInto(kThumbnail), drawLabel(std::to_string(i) + " " + formatTime(file.entry(i).start))});
            progress.step();
        }
    }
    arrange(thumbnails).writePng(options.picture.target, options.picture.background);
    std::string text = printable(options.picture.target) + ": " + std::to_string(thumbnails.size()) +
                       (thumbnails.size() == 1 ? " entry" : " entries");
    if (missing > 0) text += ", " + std::to_string(missing) + " of them without a picture";
    if (all > thumbnails.size())
        text += "; " + std::to_string(all - thumbnails.size()) + " more have no room (see --from and --track)";
    out.line(text);
}

}  // namespace

void addSheet(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("sheet", "Draw all pictures at a glance into one image");
    command->footer(
        "Each thumbnail shows what the library draws, without the empty space around it,\n"
        "below the entry's index and start. Up to 300 fit on a sheet.\n\n"
        "Examples:  vxsub sheet movie.idx -o sheet.png\n"
        "           vxsub sheet movie.idx --track 1 --from 1:00:00 --background 203040 -o b.png");
    addFileArgument(*command, session);
    const auto options = std::make_shared<SheetOptions>();
    addTrackOption(*command, session, "only that track of a file that has several");
    command
        ->add_option_function<std::string>("--from", timeInto(&options->fromMs, "--from"),
                                           "only entries that start at this play time or later")
        ->type_name("TIME");
    addPictureOptions(*command, &options->picture, "the image to write (.png)",
                      "the surface to draw on; as large as the index's frame\n"
                      "when not given, and 1920x1080 when that is not known");
    command->callback(
        [options, &session] { session.run = [options, &session] { makeSheet(session.file, *options, session.out); }; });
}

}  // namespace vxsub
