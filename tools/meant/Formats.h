/// The formats that a subtitle file may have, supported or not.
#pragma once

#include <string_view>

namespace meant {

enum class Format {
    None,  ///< not a subtitle file
    SubRip,
    SubStationAlpha,
    Sami,
    TimedText,
    SubViewer20,
    SubViewer10,
    MicroDvd,
    DvbText,
    VobSubIndex,
    VobSubPictures,
    Sup,
    // Not supported.
    WebVtt,
    Mpl2,
    Dks,
    Lrc,
    Pjs,
    Ttml,
    Scc,
    SpruceStl,
    EbuStl,
    MpSub,
    Aqt,
    RealText,
    MPlayer,
    MacSub,
    PowerDivX,
    ViPlay,
    Sofni,
    Panimator,
    QuickTimeText,
    JacoSub,
    Vkt,
};

struct FormatName {
    Format format;
    const char* word;     ///< for programs: "srt"
    const char* phrase;   ///< for people: "SubRip"
    const char* endings;  ///< of files that are opened as this, blanks between; empty: it is not supported
};

/// Of any format; that of `None` is "none".
const FormatName& nameOf(Format format);

/// Whether a file name's ending, in any letter case, stands for the format.
bool isEndingOf(std::string_view ending, Format format);

/// Whether `read` gives entries.
bool hasReader(Format format);

}  // namespace meant
