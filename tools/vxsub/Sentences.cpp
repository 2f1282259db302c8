#include "Sentences.h"

#include <stdio.h>

#include "Time.h"

namespace vxsub {
namespace {

using namespace android;

/// "23.976"
std::string rateText(U32 thousandths) {
    char text[32];
    snprintf(text, sizeof text, "%u.%03u", thousandths / 1000, thousandths % 1000);
    std::string rate = text;
    rate.erase(rate.find_last_not_of('0') + 1);
    if (rate.back() == '.') rate.pop_back();
    return rate;
}

/// The rate of --fps, which is whole or in thousandths.
U32 givenThousandths(U32 frameRate) { return frameRate < 1000 ? frameRate * 1000 : frameRate; }

}  // namespace

std::string describeReading(const Decoder& decoder) {
    const std::string shown = "texts shown as " + decoder.charset().name;
    switch (decoder.reading()) {
        case Reading::Stated:
            break;
        case Reading::Chosen:
            return shown + ", as chosen";
        case Reading::Ascii:
            return "plain ASCII, the same in every encoding";
        case Reading::Content:
            return shown + ", because the whole file is well-formed";
        case Reading::Guessed:
            return shown + ", guessed from the whole file; choose another with --native";
        case Reading::Assumed:
            return shown + ", because nothing tells; choose another with --native";
    }
    return {};
}

bool isRounded(const FrameRate& rate, const OpenOptions& options) {
    return rate.from == RateFrom::Player && rate.thousandths != givenThousandths(*options.frameRate);
}

std::string describeRate(const FrameRate& rate, const OpenOptions& options) {
    const std::string frames = rateText(rate.thousandths) + " frames a second, ";
    switch (rate.from) {
        case RateFrom::File:
            return frames + "from the file's first line" + (options.frameRate ? "; --fps is without effect" : "");
        case RateFrom::Player:
            return frames + "from --fps" +
                   (isRounded(rate, options)
                        ? " " + rateText(givenThousandths(*options.frameRate)) + ", rounded: a player's rate is whole"
                        : "");
        case RateFrom::Library:
            return frames + "the library's own, as neither the file nor the player names one (see --fps)";
        case RateFrom::None:
            break;
    }
    return "none: the file's first line is not read, and all times are 0 (mdvd-unmarked-zero)";
}

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

}  // namespace vxsub
