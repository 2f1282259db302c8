// Reads the index of a VobSub pair as a person would.
#include <algorithm>

#include "tools/check/Lines.h"
#include "tools/check/VobSub.h"
#include "tools/vobsub/IndexLine.h"

namespace check {
namespace {

using meant::Scan;
using vobsub::Keyword;

/// A line without the zeros of 16-bit characters.
struct Line {
    std::string text;
    meant::Place place;
};

std::vector<Line> linesOf(std::string_view bytes) {
    std::vector<Line> lines;
    Line line;
    size_t number = 1;
    line.place.line = number;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\n' || bytes[i] == '\r') {
            lines.push_back(line);
            number += bytes[i] == '\n' || i + 1 == bytes.size() || bytes[i + 1] != '\n';
            line = {{}, {i + 1, number}};
        } else if (bytes[i] != '\0') {
            line.text += bytes[i];
        }
    }
    lines.push_back(line);
    return lines;
}

class IndexReader {
public:
    Index read(std::string_view bytes) {
        mIndex.hasUtf8Mark = bytes.substr(0, 3) == "\xEF\xBB\xBF";
        mIndex.isMarked = bytes.substr(0, 2) == "\xFF\xFE" || bytes.substr(0, 2) == "\xFE\xFF";
        const auto zeros = static_cast<size_t>(std::count(bytes.begin(), bytes.end(), '\0'));
        mIndex.isWide = mIndex.isMarked || zeros > bytes.size() / 8;
        for (const Line& line : linesOf(bytes)) take(line);
        return std::move(mIndex);
    }

private:
    void take(const Line& line) {
        Scan in(line.text);
        in.skipAny(" \t\xEF\xBB\xBF\xFF\xFE");
        switch (vobsub::eatKeyword(&in)) {
            case Keyword::Timestamp:
                return takePicture(line, in);
            case Keyword::Id:
                return takeTrack(line, in);
            case Keyword::Delay:
                return takeDelay(in);
            case Keyword::Size:
                return takeSize(in);
            case Keyword::Palette:
                return takePalette(meant::trimmed(in.rest()));
            case Keyword::None:
                return;
        }
    }

    void takeTrack(const Line& line, Scan in) {
        mIndex.tracks.push_back({std::string(vobsub::eatLanguage(&in)), line.place});
    }

    void takeDelay(Scan in) {
        mHasOddDelay = !hasForm(in.rest(), "-00:00:00:000") && !hasForm(in.rest(), "+00:00:00:000");
        mDelay = vobsub::eatTime(&in).value_or(vobsub::Time{}).ms;
    }

    /// A height behind a blank is not seen.
    void takeSize(Scan in) {
        const vobsub::FrameSize size = vobsub::eatFrameSize(&in);
        mIndex.width = static_cast<unsigned>(size.width);
        mIndex.height = size.hasBlanks ? 0 : static_cast<unsigned>(size.height);
    }

    void takePalette(std::string_view colours) {
        const auto commas = static_cast<size_t>(std::count(colours.begin(), colours.end(), ','));
        mIndex.colours = colours.empty() ? 0 : commas + 1;
    }

    void takePicture(const Line& line, Scan in) {
        const std::optional<vobsub::Time> time = vobsub::eatTime(&in);
        constexpr std::string_view kWord = "filepos:";
        const size_t word = in.rest().find(kWord);
        if (!time || word == std::string_view::npos) return;
        Scan position(meant::trimmed(in.rest().substr(word + kWord.size())));
        IndexLine picture;
        picture.start = time->ms + mDelay;
        picture.position = static_cast<uint32_t>(vobsub::eatHex(&position).value);
        picture.place = line.place;
        picture.line = std::string(meant::trimmed(line.text));
        picture.track = mIndex.tracks.size();
        picture.hasOddDelay = mHasOddDelay;
        constexpr size_t kDigits = 9;
        picture.hasOddPosition =
            line.text.find_first_not_of("0123456789abcdefABCDEF", line.text.rfind(' ') + 1) != line.text.npos ||
            line.text.size() - line.text.rfind(' ') != kDigits + 1;
        mIndex.pictures.push_back(picture);
    }

    Index mIndex;
    Ms mDelay = 0;  ///< of the last line that tells one, in whatever track
    bool mHasOddDelay = false;
};

}  // namespace

Index readIndex(std::string_view bytes) { return IndexReader().read(bytes); }

}  // namespace check
