// The causes of VobSub pairs, each asked for by itself.
#include <algorithm>
#include <map>

#include "tools/check/Lines.h"
#include "tools/check/VobSub.h"

namespace check {
namespace {

/// A picture of the index with what became of it.
struct Seen {
    const Index& index;
    const IndexLine& line;
    const vobsub::Picture& picture;
    const Pixels& pixels;
    const ShownPicture* shown;  ///< null: not in the table
    std::optional<Ms> next;     ///< when the next one of its track begins
    bool goesBack;              ///< in the stream, far behind the next one
};

bool isTooLarge(const vobsub::Picture& picture) {
    constexpr long kMost = 4L * 1920 * 1080;
    if (picture.width() <= 0 || picture.height() <= 0) return true;
    return long{picture.width()} * picture.height() > kMost;
}

/// Not in the middle of the bottom edge.
bool isElsewhere(const Index& index, const vobsub::Picture& picture) {
    if (index.width == 0 || index.height == 0 || !picture.hasArea) return false;
    const int width = static_cast<int>(index.width), height = static_cast<int>(index.height);
    const int aside = std::abs(picture.left + picture.right + 1 - width) / 2;
    return aside > width / 20 || picture.bottom < height * 3 / 4;
}

const struct PictureRule {
    const char* cause;
    bool isLoss;  ///< of a picture that is not shown; asked of those alone, and the first one counts
    bool (*holds)(const Seen& seen);
} kPictureRules[] = {
    {"utf16-no-mark", true, [](const Seen& s) { return s.shown == nullptr && s.index.isWide && !s.index.isMarked; }},
    {"vob-utf16-values", true, [](const Seen& s) { return s.shown == nullptr && s.index.isWide; }},
    {"vob-delay-wrap", true, [](const Seen& s) { return s.shown == nullptr && s.line.start < 0; }},
    {"vob-delay-sign", true, [](const Seen& s) { return s.shown == nullptr && s.line.hasOddDelay; }},
    {"vob-time-width", true,
     [](const Seen& s) { return s.shown == nullptr && !hasForm(s.line.line, "timestamp: 00:00:00:000, filepos: "); }},
    {"beyond-32-bit", true, [](const Seen& s) { return s.shown == nullptr && s.line.start > 0xFFFFFFFF; }},
    {"vob-no-pack", true,
     [](const Seen& s) { return s.shown != nullptr && (!s.picture.unit.hasPack || s.picture.unit.hasOddPack); }},
    {"vob-stuffing", true, [](const Seen& s) { return s.picture.unit.hasStuffing; }},
    {"vob-unit-size-0", true, [](const Seen& s) { return s.picture.unit.hasPack && !s.picture.unit.hasSize; }},
    {"vob-packs-not-2048", true, [](const Seen& s) { return s.picture.unit.leavesGrid; }},
    {"vob-filepos-digit", true, [](const Seen& s) { return s.line.hasOddPosition; }},
    {"vob-bad-commands", true, [](const Seen& s) { return s.picture.isBroken; }},
    {"vob-area-too-large", true, [](const Seen& s) { return s.picture.hasArea && isTooLarge(s.picture); }},
    {"vob-two-rows", true, [](const Seen& s) { return s.picture.hasArea && s.picture.height() <= 2; }},
    {"vob-descending", true, [](const Seen& s) { return s.goesBack; }},
    {"vob-filepos-digit", false, [](const Seen& s) { return s.line.hasOddPosition; }},
    {"vob-start-delay", false, [](const Seen& s) { return s.picture.startDelay > 0; }},
    {"vob-end-ignored", false,
     [](const Seen& s) { return s.picture.stop && (!s.next || s.line.start + *s.picture.stop < *s.next); }},
    {"vob-last-rows", false, [](const Seen& s) { return s.pixels.isCutVisible; }},
    {"vob-position", false, [](const Seen& s) { return isElsewhere(s.index, s.picture); }},
    {"vob-top-left", false, [](const Seen& s) { return s.pixels.isCornerVisible; }},
};

class PairReporter {
public:
    explicit PairReporter(const Pair& pair) : mPair(pair), mIndex(readIndex(pair.index)) {}

    Report report() {
        mReport.format = meant::nameOf(meant::Format::VobSubIndex).word;
        mReport.formatName = meant::nameOf(meant::Format::VobSubIndex).phrase;
        mReport.things = "pictures";
        mReport.meant = mIndex.pictures.size();
        tellWhole();
        if (mPair.hasStream) tellPictures();
        return std::move(mReport);
    }

private:
    void add(const char* cause, meant::Place place = {0, 0}) {
        Remark remark;
        remark.cause = findCause(cause);
        remark.cost = remark.cause->cost;
        remark.place = place;
        mReport.remarks.push_back(remark);
    }

    void tellWhole() {
        if (!mPair.hasStream) add("vob-no-stream");
        if (mIndex.hasUtf8Mark) add("vob-mark", {0, 1});
        if (mIndex.width == 0 || mIndex.height == 0) add("vob-no-size");
        if (mIndex.colours == 0)
            add("vob-no-palette");
        else if (mIndex.colours < 16)
            add("vob-palette-short");
        if (isStretched()) add("vob-stretch");
    }

    /// A screen that is larger doubles each direction by itself.
    bool isStretched() const {
        if (mPair.surfaceWidth <= mIndex.width || mPair.surfaceHeight <= mIndex.height) return false;
        const bool isTwiceAsWide = mPair.surfaceWidth >= 2 * mIndex.width;
        const bool isTwiceAsHigh = mPair.surfaceHeight >= 2 * mIndex.height;
        return isTwiceAsWide != isTwiceAsHigh;
    }

    void tellPictures() {
        std::multimap<Ms, const ShownPicture*> byStart;
        for (const ShownPicture& shown : mPair.shown) byStart.emplace(shown.start, &shown);
        std::vector<bool> isTold(mIndex.tracks.size() + 1);
        for (size_t i = 0; i < mIndex.pictures.size(); ++i) {
            const IndexLine& line = mIndex.pictures[i];
            const auto found = byStart.find(line.start);
            const ShownPicture* shown = found == byStart.end() ? nullptr : found->second;
            if (found != byStart.end()) byStart.erase(found);
            if (shown != nullptr && !shown->hasLanguage && line.track > 0 && !isTold[line.track]) {
                add("vob-language", mIndex.tracks[line.track - 1].place);
                isTold[line.track] = true;
            }
            tellPicture(i, shown);
        }
    }

    void tellPicture(size_t i, const ShownPicture* shown) {
        const IndexLine& line = mIndex.pictures[i];
        const vobsub::Picture picture = vobsub::pictureAt(mPair.stream, line.position);
        const Pixels pixels = pixelsOf(picture);
        const bool isShown =
            shown != nullptr && shown->isGiven && shown->width > 0 && shown->height > 0 && !isTooLarge(picture);
        const Seen seen = {mIndex, line, picture, pixels, shown, nextStart(i), goesBack(i)};
        mReport.right += isShown;
        bool isExplained = isShown;
        for (const PictureRule& rule : kPictureRules) {
            if (rule.isLoss ? isExplained : !isShown) continue;
            if (!rule.holds(seen)) continue;
            addOf(i, findCause(rule.cause));
            isExplained = true;
        }
        if (!isExplained) addOf(i, nullptr);
    }

    /// When the picture goes, if a later one of its track begins.
    std::optional<Ms> nextStart(size_t i) const {
        const std::vector<IndexLine>& pictures = mIndex.pictures;
        if (i + 1 == pictures.size() || pictures[i + 1].track != pictures[i].track) return std::nullopt;
        return pictures[i + 1].start;
    }

    bool goesBack(size_t i) const {
        constexpr uint32_t kFar = 0x8000;
        const std::vector<IndexLine>& pictures = mIndex.pictures;
        const bool isLast = i + 1 == pictures.size();
        if (pictures.size() < 2) return false;
        const uint32_t here = pictures[isLast ? 0 : i].position, next = pictures[isLast ? 1 : i + 1].position;
        return here > next && here - next > kFar;
    }

    void addOf(size_t i, const Cause* cause) {
        const IndexLine& line = mIndex.pictures[i];
        Remark remark;
        remark.cause = cause;
        remark.cost = cause != nullptr ? cause->cost : Cost::Entries;
        remark.place = line.place;
        remark.entry = i + 1;
        remark.start = line.start;
        const bool isLost = remark.cost == Cost::Entries;
        remark.what = "picture " + std::to_string(i + 1) + " at " + clock(line.start) + (isLost ? " is not shown" : "");
        mReport.remarks.push_back(remark);
    }

    const Pair& mPair;
    Index mIndex;
    Report mReport;
};

}  // namespace

Report reportOf(const Pair& pair) { return PairReporter(pair).report(); }

}  // namespace check
