// Reads the index of a VobSub pair as a person would.
#include <algorithm>

#include "tools/check/Lines.h"
#include "tools/check/VobSub.h"

namespace check {
namespace {

using meant::Scan;

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

/// `1:02:03:500`, and a sign in front; milliseconds behind a colon, a point or a comma.
std::optional<Ms> timeOf(Scan* in) {
    const bool isNegative = in->eat('-');
    if (!isNegative) in->eat('+');
    const std::optional<Ms> seconds = in->eatHms();
    if (!seconds || in->eatAny(":.,") == 0) return std::nullopt;
    const Scan::Digits ms = in->eatDigits();
    if (!ms) return std::nullopt;
    const Ms time = *seconds + ms.value;
    return isNegative ? -time : time;
}

uint32_t hexOf(std::string_view text) {
    uint32_t value = 0;
    for (const char c : text) {
        const char digit = meant::lower(c);
        if (isDigit(c))
            value = value << 4 | static_cast<uint32_t>(c - '0');
        else if (digit >= 'a' && digit <= 'f')
            value = value << 4 | static_cast<uint32_t>(digit - 'a' + 10);
        else
            break;
    }
    return value;
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
        if (in.eat("timestamp:")) {
            takePicture(line, in);
        } else if (in.eat("id:")) {
            in.skipBlanks();
            mIndex.tracks.push_back({std::string(in.rest().substr(0, in.rest().find_first_of(", \t"))), line.place});
            mDelay = 0;
            mHasOddDelay = false;
        } else if (in.eat("delay:")) {
            takeDelay(in);
        } else if (in.eat("size:")) {
            in.skipBlanks();
            mIndex.width = static_cast<unsigned>(in.eatDigits().value);
            in.eat('x');
            mIndex.height = static_cast<unsigned>(in.eatDigits().value);
        } else if (in.eat("palette:")) {
            const std::string_view colours = meant::trimmed(in.rest());
            mIndex.colours =
                colours.empty() ? 0 : static_cast<size_t>(std::count(colours.begin(), colours.end(), ',')) + 1;
        }
    }

    void takeDelay(Scan in) {
        in.skipBlanks();
        mHasOddDelay = !hasForm(in.rest(), "-00:00:00:000") && !hasForm(in.rest(), "+00:00:00:000");
        mDelay = timeOf(&in).value_or(0);
    }

    void takePicture(const Line& line, Scan in) {
        in.skipBlanks();
        const std::optional<Ms> time = timeOf(&in);
        const size_t word = in.rest().find("filepos:");
        if (!time || word == std::string_view::npos) return;
        IndexLine picture;
        picture.start = *time + mDelay;
        picture.position = hexOf(meant::trimmed(in.rest().substr(word + std::string_view("filepos:").size())));
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
    Ms mDelay = 0;
    bool mHasOddDelay = false;
};

}  // namespace

Index readIndex(std::string_view bytes) { return IndexReader().read(bytes); }

}  // namespace check
