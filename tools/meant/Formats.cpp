#include "tools/meant/Formats.h"

#include <algorithm>

#include "tools/meant/Scan.h"

namespace meant {
namespace {

constexpr FormatName kNames[] = {
    {Format::None, "none", "no subtitle file", ""},
    {Format::SubRip, "srt", "SubRip", "srt"},
    {Format::SubStationAlpha, "ssa", "SubStation Alpha", "ssa ass"},
    {Format::Sami, "smi", "SAMI", "smi sami"},
    {Format::TimedText, "txt", "time-prefixed text", "txt"},
    {Format::SubViewer20, "sv20", "SubViewer 2.0", "sub"},
    {Format::SubViewer10, "sv10", "SubViewer 1.0", "sub"},
    {Format::MicroDvd, "microdvd", "MicroDVD", "sub"},
    {Format::DvbText, "dvb", "DVB subtitle system", "sub"},
    {Format::VobSubIndex, "idx", "VobSub", "idx"},
    {Format::VobSubPictures, "vobsub-pictures", "VobSub pictures", "sub"},
    {Format::Sup, "sup", "SUP", "sup"},
    {Format::WebVtt, "webvtt", "WebVTT", ""},
    {Format::Mpl2, "mpl2", "MPL2", ""},
    {Format::Dks, "dks", "DKS", ""},
    {Format::Lrc, "lrc", "LRC lyrics", ""},
    {Format::Pjs, "pjs", "Phoenix Japanimation Society", ""},
    {Format::Ttml, "ttml", "TTML", ""},
    {Format::Scc, "scc", "Scenarist closed captions", ""},
    {Format::SpruceStl, "stl", "Spruce STL", ""},
    {Format::EbuStl, "ebu-stl", "EBU STL", ""},
    {Format::MpSub, "mpsub", "MPSub", ""},
    {Format::Aqt, "aqt", "AQTitle", ""},
    {Format::RealText, "realtext", "RealText", ""},
    {Format::MPlayer, "mplayer", "MPlayer", ""},
    {Format::MacSub, "macsub", "MacSUB", ""},
    {Format::PowerDivX, "powerdivx", "PowerDivX", ""},
    {Format::ViPlay, "viplay", "ViPlay", ""},
    {Format::Sofni, "sofni", "Sofni", ""},
    {Format::Panimator, "panimator", "Panimator", ""},
    {Format::QuickTimeText, "qttext", "QuickTime text", ""},
    {Format::JacoSub, "jacosub", "JACOsub", ""},
    {Format::Vkt, "vkt", "karaoke lyrics VKT", ""},
};

}  // namespace

const FormatName& nameOf(Format format) {
    const auto row =
        std::find_if(std::begin(kNames), std::end(kNames), [&](auto& name) { return name.format == format; });
    return row == std::end(kNames) ? kNames[0] : *row;
}

bool isEndingOf(std::string_view ending, Format format) {
    std::string_view endings = nameOf(format).endings;
    while (!endings.empty()) {
        const size_t blank = std::min(endings.find(' '), endings.size());
        if (sameWord(ending, endings.substr(0, blank))) return true;
        endings.remove_prefix(std::min(blank + 1, endings.size()));
    }
    return false;
}

bool hasReader(Format format) { return format >= Format::SubRip && format <= Format::DvbText; }

}  // namespace meant
