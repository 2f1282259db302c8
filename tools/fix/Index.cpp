#include "tools/fix/Index.h"

#include <stdio.h>

#include <algorithm>
#include <optional>

#include "tools/fix/Pictures.h"
#include "tools/fix/Remarks.h"
#include "tools/meant/Scan.h"
#include "tools/meant/Source.h"
#include "tools/vobsub/IndexLine.h"

namespace fix {
namespace {

using Kind = Remark::Kind;
using meant::Scan;
using vobsub::Keyword;

/// Codes of languages that the library knows under another name, in two letters or three.
constexpr struct {
    const char* code;
    const char* known;
} kLanguages[] = {
    {"de", "ge"},  {"deu", "ge"}, {"ger", "ge"}, {"he", "iw"},  {"heb", "iw"}, {"hr", "sh"},  {"hrv", "sh"},
    {"scr", "sh"}, {"sr", "sh"},  {"srp", "sh"}, {"bs", "sh"},  {"spa", "es"}, {"gre", "el"}, {"ell", "el"},
    {"dut", "nl"}, {"nld", "nl"}, {"pol", "pl"}, {"por", "pt"}, {"rum", "ro"}, {"swe", "sv"}, {"chi", "zh"},
    {"jpn", "ja"}, {"per", "fa"}, {"nb", "no"},  {"nn", "no"},  {"nob", "no"}, {"bul", "bg"}, {"gr", "el"},
};
constexpr std::string_view kKnown = "ge en es el fr sh it nl pl pt ru ro sv ar zh ja ko fa fi no iw bg";

std::string lowerCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), meant::lower);
    return result;
}

std::string knownLanguage(std::string_view code) {
    std::string small = lowerCase(code);
    for (const auto& row : kLanguages)
        if (small == row.code) return row.known;
    return small;
}

bool isKnown(std::string_view code) { return code.size() >= 2 && kKnown.find(code.substr(0, 2)) != kKnown.npos; }

/// Hexadecimal digits, no more than any number here has.
std::optional<uint64_t> eatNumber(Scan* in) {
    constexpr size_t kMostDigits = 15;
    const vobsub::Hex hex = vobsub::eatHex(in);
    return hex.count > 0 && hex.count <= kMostDigits ? std::optional(hex.value) : std::nullopt;
}

std::string timeText(Ms time) {
    char text[40];
    snprintf(text, sizeof text, "%02d:%02d:%02d:%03d", static_cast<int>(time / 3600000),
             static_cast<int>(time / 60000 % 60), static_cast<int>(time / 1000 % 60), static_cast<int>(time % 1000));
    return text;
}

std::string hexText(const char* format, uint64_t value) {
    char text[40];
    snprintf(text, sizeof text, format, static_cast<unsigned long long>(value));
    return text;
}

/// Widths and heights of frames, and what palettes look like where nothing tells one.
constexpr struct { int width, height; } kFrames[] = {{720, 480}, {720, 576}, {1280, 720}, {1920, 1080}, {3840, 2160}};
constexpr unsigned kWhite = 0xFFFFFF, kGrey = 0x808080;

class IndexFixer {
public:
    IndexFixer(const meant::Source& source, std::string_view stream) : mSource(source), mStream(stream) {}

    FixedIndex fix() {
        for (const std::string_view line : mSource.lines()) takeLine(meant::trimmed(line));
        if (mResult.entries.empty()) {
            mResult.refusal = "names no picture";
            return std::move(mResult);
        }
        if (mSource.encoding().from == meant::EncodingFrom::Mark)
            changed("vob-mark", "The mark at the beginning is left out.", {});
        std::string head = "# VobSub index file, v7 (do not modify this line!)\r\n";
        if (!mHasSize) head += sizeLine();
        if (!mHasPalette) head += paletteLine();
        mResult.bytes = head + mLines;
        mResult.remarks = mRemarks.take();
        return std::move(mResult);
    }

private:
    void changed(const char* cause, const char* sentence, const meant::Place& place) {
        mRemarks.add(Kind::Changed, cause, sentence, place);
    }

    void put(std::string_view line) {
        mLines += line;
        mLines += "\r\n";
    }

    void takeLine(std::string_view line) {
        const meant::Place place = mSource.placeOf(line.data());
        if (line.empty() || line.front() == '#') {
            if (line.find("VobSub index file") == line.npos) put(line);
            return;
        }
        Scan in(line);
        switch (vobsub::eatKeyword(&in)) {
            case Keyword::Timestamp:
                return takeTimestamp(in, place);
            case Keyword::Id:
                return takeId(in, place);
            case Keyword::Delay:
                return takeDelay(in, place);
            case Keyword::Palette:
                return takePalette(in, place);
            case Keyword::Size:
                return takeSize(in, place);
            case Keyword::None:
                return takeOther(line);
        }
    }

    /// A keyword without a value would take the next line for one.
    void takeOther(std::string_view line) {
        const size_t colon = line.find(':');
        if (colon != line.npos && colon + 1 < line.size()) put(line);
    }

    void takeTimestamp(Scan in, const meant::Place& place) {
        const std::optional<vobsub::Time> time = vobsub::eatTime(&in);
        in.skipAny(" \t,");
        const std::optional<uint64_t> position = in.eat("filepos:") ? eatNumber(&in) : std::nullopt;
        constexpr uint64_t kPositions = 1ull << 32;
        constexpr Ms kLast = 100 * 3600000;
        if (!time || !position || *position >= kPositions || time->ms >= kLast) {
            mRemarks.add(Kind::NotMended, "", "The line of a picture cannot be read.", place);
            return;
        }
        const Ms start = time->ms + mDelay;
        if (start < 0) changed("vob-delay-wrap", "The delay puts it before the movie: it is shown from 0 on.", place);
        const Ms written = std::max<Ms>({time->ms, -mDelay, 0});
        mResult.entries.push_back({written + mDelay, *position, mTracks, place});
        put("timestamp: " + timeText(written) + ", filepos: " + hexText("%09llx", *position));
    }

    void takeId(Scan in, const meant::Place& place) {
        const std::string_view code = vobsub::eatLanguage(&in);
        const std::string known = knownLanguage(code);
        if (known != code && isKnown(known))
            changed("vob-language", "The language's code is written as the library knows it.", place);
        const bool isSaid = !known.empty() && known != "und" && known.front() != '-';
        if (isSaid && !isKnown(known))
            mRemarks.add(Kind::NotMended, "vob-language",
                         "The library has no code for the language: the track has none.", place);
        put("id: " + known + std::string(in.rest()));
        ++mTracks;
    }

    void takeDelay(Scan in, const meant::Place& place) {
        const std::optional<vobsub::Time> delay = vobsub::eatTime(&in);
        if (!delay) {
            mRemarks.add(Kind::NotMended, "", "The delay cannot be read; it counts as none.", place);
            if (mDelay != 0) putDelay(0);
            return;
        }
        if (delay->sign == 0) changed("vob-delay-sign", "The delay gets a sign.", place);
        putDelay(delay->ms);
    }

    void putDelay(Ms delay) {
        mDelay = delay;
        put(std::string("delay: ") + (delay < 0 ? "-" : "+") + timeText(delay < 0 ? -delay : delay));
    }

    void takePalette(Scan in, const meant::Place& place) {
        std::string colours;
        size_t count = 0;
        for (; count < 16; ++count) {
            const std::optional<uint64_t> colour = eatNumber(&in);
            if (!colour) break;
            colours += (count == 0 ? "" : ", ") + hexText("%06llx", *colour & kWhite);
            in.skipAny(" \t,;");
        }
        if (count == 0) return;
        if (count < 16) changed("vob-palette-short", "The palette has fewer than 16 colours: the rest is grey.", place);
        for (; count < 16; ++count) colours += ", " + hexText("%06llx", kGrey);
        put("palette: " + colours);
        mHasPalette = true;
    }

    void takeSize(Scan in, const meant::Place& place) {
        const vobsub::FrameSize size = vobsub::eatFrameSize(&in);
        constexpr int64_t kMost = 65535;
        const bool isSize =
            size.hasCross && size.width > 0 && size.height > 0 && size.width <= kMost && size.height <= kMost;
        if (isSize) {
            mHasSize = true;
            put("size: " + std::to_string(size.width) + "x" + std::to_string(size.height));
        } else {
            changed("vob-no-size", "The size cannot be read.", place);
        }
    }

    /// The smallest usual frame in which all pictures have room.
    std::string sizeLine() {
        int width = 0, height = 0;
        for (const IndexEntry& entry : mResult.entries) {
            const std::optional<vobsub::Picture> picture = pictureAt(mStream, entry.position);
            if (!picture) continue;
            width = std::max(width, picture->right + 1);
            height = std::max(height, picture->bottom + 1);
        }
        for (const auto& frame : kFrames) {
            if (frame.width < width || frame.height < height) continue;
            changed("vob-no-size", "The index has no size: the smallest usual one is written that holds all pictures.",
                    {});
            return "size: " + std::to_string(frame.width) + "x" + std::to_string(frame.height) + "\r\n";
        }
        mRemarks.add(Kind::NotMended, "vob-no-size", "The index has no size, and the pictures tell none.", {});
        return {};
    }

    /// White letters on black: the colour that stands least beside what is not seen is that of the letters.
    std::string paletteLine() {
        struct Count {
            uint64_t pixels = 0, atEdge = 0;
            double share() const { return double(atEdge) / double(pixels); }
        };
        Count counts[16];
        constexpr size_t kLookedAt = 100;
        for (size_t i = 0; i < mResult.entries.size() && i < kLookedAt; ++i) {
            const std::optional<vobsub::Picture> picture = pictureAt(mStream, mResult.entries[i].position);
            if (!picture) continue;
            const Usage usage = usageOf(*picture);
            for (size_t code = 0; code < 4; ++code) {
                if (picture->colours[code].contrast == 0) continue;
                counts[picture->colours[code].index].pixels += usage.pixels[code];
                counts[picture->colours[code].index].atEdge += usage.atEdge[code];
            }
        }
        std::vector<size_t> seen;
        for (size_t i = 0; i < 16; ++i)
            if (counts[i].pixels > 0) seen.push_back(i);
        std::sort(seen.begin(), seen.end(), [&](size_t a, size_t b) { return counts[a].share() < counts[b].share(); });
        unsigned palette[16] = {};
        for (size_t rank = 0; rank < seen.size(); ++rank)
            palette[seen[rank]] = rank == 0 ? kWhite : rank + 1 < seen.size() ? kGrey : 0;
        std::string line = "palette: ";
        for (size_t i = 0; i < 16; ++i) line += (i == 0 ? "" : ", ") + hexText("%06llx", palette[i]);
        changed("vob-no-palette", "The index has no palette: the letters are written white, their outlines black.", {});
        return line + "\r\n";
    }

    const meant::Source& mSource;
    std::string_view mStream;
    FixedIndex mResult;
    Remarks mRemarks;
    std::string mLines;
    Ms mDelay = 0;
    size_t mTracks = 0;
    bool mHasSize = false, mHasPalette = false;
};

}  // namespace

FixedIndex fixIndex(std::string_view bytes, std::string_view stream, const meant::Encodings& encodings) {
    return IndexFixer(meant::Source(bytes, {}, encodings), stream).fix();
}

}  // namespace fix
