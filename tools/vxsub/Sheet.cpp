// vxsub sheet: all pictures at a glance.
#include <algorithm>

#include "Commands.h"
#include "Errors.h"
#include "PictureOptions.h"
#include "Progress.h"
#include "Television.h"
#include "Text.h"
#include "Time.h"
#include "Viewer.h"
#include "tools/samples/VobSubMaker.h"

namespace vxsub {
namespace {

using namespace android;

constexpr int kWidest = 440;  // a frame on a sheet, pixels
constexpr int kColumns = 3;
constexpr size_t kOnASheet = 60;
constexpr int kGap = 12;
constexpr int kMargin = 6;  // between a cell's border and what it holds
constexpr Colour kBorder = {0xC8, 0xC8, 0xC8, 0xFF};
constexpr unsigned kLetterScale = 2;

struct SheetOptions {
    PictureOptions picture;
    U32 fromMs = 0;
    bool json = false;
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

/// A cell's size without its margin: as wide as a frame or a label, as high as a label and the highest picture.
Size cellOf(const std::vector<Thumbnail>& thumbnails, int frameWidth) {
    Size cell = {frameWidth, 1};
    int labelHeight = 0;
    for (const Thumbnail& thumbnail : thumbnails) {
        cell.width = std::max({cell.width, thumbnail.picture.size().width, thumbnail.label.size().width});
        cell.height = std::max(cell.height, thumbnail.picture.size().height);
        labelHeight = std::max(labelHeight, thumbnail.label.size().height);
    }
    return {cell.width, cell.height + labelHeight};
}

void drawBorder(Image* sheet, const Box& box) {
    for (int x = box.left; x < box.left + box.width; ++x)
        sheet->at(x, box.top) = sheet->at(x, box.top + box.height - 1) = kBorder;
    for (int y = box.top; y < box.top + box.height; ++y)
        sheet->at(box.left, y) = sheet->at(box.left + box.width - 1, y) = kBorder;
}

Image arrange(const std::vector<Thumbnail>& thumbnails, int frameWidth) {
    const Size cell = cellOf(thumbnails, frameWidth);
    const int count = int(thumbnails.size());
    const int columns = std::min(count, kColumns), rows = (count + kColumns - 1) / kColumns;
    const Size step = {cell.width + 2 * kMargin + kGap, cell.height + 2 * kMargin + kGap};
    Image sheet({columns * step.width + kGap, rows * step.height + kGap});
    for (int i = 0; i < count; ++i) {
        const Thumbnail& thumbnail = thumbnails[size_t(i)];
        const Box box = {kGap + i % kColumns * step.width, kGap + i / kColumns * step.height, step.width - kGap,
                         step.height - kGap};
        const Size size = thumbnail.picture.size();
        drawBorder(&sheet, box);
        sheet.lay(thumbnail.label, box.left + kMargin, box.top + kMargin);
        sheet.lay(thumbnail.picture, box.left + (box.width - size.width) / 2,
                  box.top + box.height - kMargin - size.height);
    }
    return sheet;
}

/// The entries that are drawn. Throws `FileError` when there are none.
std::vector<U32> choose(SubtitleFile& file, U32 fromMs) {
    std::vector<U32> chosen;
    for (U32 i = 0; i < file.count(); ++i)
        if (file.isChosen(file.trackOf(i)) && file.entry(i).start >= fromMs) chosen.push_back(i);
    if (file.count() == 0) throw FileError(file.path() + ": no entries");
    if (chosen.empty()) throw FileError(file.path() + ": no entry starts at " + formatTime(fromMs) + " or later");
    return chosen;
}

/// "sheet.png", or the `number`-th of several: "sheet-07.png".
std::string sheetName(const std::string& target, size_t number, size_t count) {
    if (count == 1) return target;
    std::string digits = std::to_string(number);
    digits.insert(0, std::to_string(count).size() - digits.size(), '0');
    const size_t stem = target.size() - extensionOf(target).size();
    return target.substr(0, stem) + "-" + digits + target.substr(stem);
}

/// Draws entries onto sheets, all at one scale.
class SheetMaker {
public:
    SheetMaker(SubtitleFile& file, const SheetOptions& options)
        : mFile(file), mOptions(options), mTelevision(file, options.picture.surface.value_or(frameSizeOf(file))) {}

    void make(const std::vector<U32>& chosen, Output& out) {
        const size_t count = (chosen.size() + kOnASheet - 1) / kOnASheet;
        Progress progress(out, "Drawing", chosen.size());
        for (size_t begin = 0; begin < chosen.size(); begin += kOnASheet) {
            std::vector<Thumbnail> thumbnails;
            for (size_t i = begin; i < std::min(chosen.size(), begin + kOnASheet); ++i) {
                thumbnails.push_back(draw(chosen[i]));
                progress.step();
            }
            const std::string path = sheetName(mOptions.picture.target, mPaths.size() + 1, count);
            arrange(thumbnails, int(mTelevision.size().width * scale())).writePng(path, mOptions.picture.background);
            mPaths.push_back(path);
        }
    }

    const std::vector<std::string>& paths() const { return mPaths; }
    size_t missing() const { return mMissing; }

private:
    double scale() const { return std::min(1.0, double(kWidest) / mTelevision.size().width); }

    Thumbnail draw(U32 index) {
        const std::optional<Television::Shown> shown = mTelevision.show(index);
        const Image picture = shown ? shown->image.part(shown->box) : Image({0, 0});
        if (picture.size().width == 0) ++mMissing;
        const U32 track = mFile.trackOf(index);
        std::string label = std::to_string(index) + " " + formatTime(mFile.entry(index).start);
        if (mFile.tracks().size() > 1) label += " TRACK " + std::to_string(track);  // the letters are capitals
        return {picture.reduced(scale()), drawLabel(label)};
    }

    SubtitleFile& mFile;
    const SheetOptions& mOptions;
    Television mTelevision;
    std::vector<std::string> mPaths;
    size_t mMissing = 0;
};

void makeSheet(const OpenOptions& open, const SheetOptions& options, Output& out) {
    requirePngName(options.picture.target);
    SubtitleFile file(open);
    requirePictures(file);
    const std::vector<U32> chosen = choose(file, options.fromMs);
    SheetMaker maker(file, options);
    maker.make(chosen, out);
    const std::vector<std::string>& paths = maker.paths();
    if (options.json) {
        Json value = headOf(file);
        value["sheets"] = paths;
        value["entries"] = chosen.size();
        value["missing"] = maker.missing();
        out.line(toText(value));
        return;
    }
    std::string text = printable(paths.front()) + (paths.size() > 1 ? " to " + printable(paths.back()) : "") + ": " +
                       std::to_string(chosen.size()) + (chosen.size() == 1 ? " entry" : " entries");
    if (maker.missing() > 0) text += ", " + std::to_string(maker.missing()) + " of them without a picture";
    out.line(text);
}

}  // namespace

void addSheet(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("sheet", "Draw all pictures at a glance");
    command->footer(
        "Each cell shows what the library draws, without the empty space around it, below\n"
        "the entry's index, start and track; all are at one scale. 60 cells make a sheet;\n"
        "more entries make more sheets: sheet-1.png, sheet-2.png and so on.\n\n"
        "With --json, one object: {\"file\", \"format\", \"encoding\", \"sheets\": [paths],\n"
        "\"entries\", \"missing\"}; missing are entries without a picture.\n\n"
        "Examples:  vxsub sheet movie.idx -o sheet.png\n"
        "           vxsub sheet movie.idx --track 1 --from 1:00:00 --background 203040 -o b.png");
    addFileArgument(*command, session);
    const auto options = std::make_shared<SheetOptions>();
    addTrackOption(*command, session, "only that track of a file that has several");
    command
        ->add_option_function<std::string>("--from", timeInto(&options->fromMs, "--from"),
                                           "only entries that start at this play time or later")
        ->type_name("TIME");
    addJsonOption(*command, &options->json);
    addPictureOptions(*command, &options->picture, "the image to write (.png)",
                      "the surface to draw on; as large as the index's frame\n"
                      "when not given, and 1920x1080 when that is not known");
    command->callback(
        [options, &session] { session.run = [options, &session] { makeSheet(session.file, *options, session.out); }; });
}

}  // namespace vxsub
