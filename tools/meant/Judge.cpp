#include "tools/meant/Judge.h"

#include <algorithm>
#include <iterator>

#include "tools/meant/Readers.h"
#include "tools/meant/Scan.h"
#include "tools/meant/Utf8.h"

namespace meant {
namespace {

using namespace std::literals;

// ------------------------------------------------------------------------------------------------------ bytes

const struct {
    std::string_view bytes;
    Format format;
    const char* nature;
} kSignatures[] = {
    {"\0\0\1\xBA"sv, Format::VobSubPictures, ""},
    {"PG"sv, Format::Sup, ""},
    {"\x7F"
     "ELF"sv,
     Format::None, "an executable"},
    {"MZ"sv, Format::None, "an executable"},
    {"\x89PNG\r\n\x1A\n"sv, Format::None, "a PNG picture"},
    {"\xFF\xD8\xFF"sv, Format::None, "a JPEG picture"},
    {"GIF8"sv, Format::None, "a GIF picture"},
    {"%PDF-"sv, Format::None, "a PDF document"},
    {"PK\3\4"sv, Format::None, "a ZIP archive"},
    {"Rar!\x1A"sv, Format::None, "a RAR archive"},
    {"7z\xBC\xAF\x27\x1C"sv, Format::None, "a 7-Zip archive"},
    {"\x1F\x8B"sv, Format::None, "a gzip archive"},
    {"\x1A\x45\xDF\xA3"sv, Format::None, "a Matroska movie"},
    {"RIFF"sv, Format::None, "a movie or sound"},
};

/// Characters that texts do not have.
bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 && "\t\n\v\f\r\x1A\x1B"sv.find(c) == std::string_view::npos;
}

/// Zeros are left out: 16-bit text has plenty of them. The other control characters are, in that, halves of characters.
bool isBinary(std::string_view bytes) {
    constexpr size_t kLookedAt = 4096;
    bytes = bytes.substr(0, kLookedAt);
    const auto zeros = std::count(bytes.begin(), bytes.end(), '\0');
    const auto controls = std::count_if(bytes.begin(), bytes.end(), isControl) - zeros;
    const bool hasMark = bytes.substr(0, 2) == "\xFF\xFE" || bytes.substr(0, 2) == "\xFE\xFF";
    return !hasMark && controls * 20 > static_cast<long>(bytes.size()) && zeros < 2 * controls;
}

/// What no text begins with needs no further look.
bool isSure(std::string_view signature) {
    return std::any_of(signature.begin(), signature.end(),
                       [](char c) { return isControl(c) || c == '\x7F' || !isAscii(c); });
}

// ------------------------------------------------------------------------------------------------------ lines

bool isDks(std::string_view line) {
    Scan in(line);
    in.skipBlanks();
    return in.eat('[') && in.eatHms() && in.eat(']') && !isEmptyLine(in.rest());
}

/// Whether a line begins as the form says: `#` stands for digits, a blank for any number of blanks, `$` for the end.
bool begins(std::string_view line, std::string_view form) {
    Scan in(line);
    for (const char c : form) {
        if (c == '$') return isEmptyLine(in.rest());
        if (c == ' ') {
            in.skipBlanks();
        } else if (c == '#' ? !in.eatDigits() : !in.eat(c)) {
            return false;
        }
    }
    return true;
}

bool isMpl2(std::string_view line) { return begins(line, " [#] [#]") || begins(line, " [#] []"); }
bool isLrc(std::string_view line) { return begins(line, "[#:#.#]") || begins(line, "[#:#:#]"); }
bool isPjs(std::string_view line) { return begins(line, " #, #,\""); }
bool isSpruceStl(std::string_view line) {
    return begins(line, "#:#:#:# , #:#:#:# ,") || begins(line, "#:#:#;# , #:#:#;# ,") ||
           begins(line, "#:#:#.# , #:#:#.# ,");
}
bool isAqt(std::string_view line) { return begins(line, "-->> #$"); }
bool isMPlayer(std::string_view line) { return begins(line, "#,#,0,"); }
bool isMacSub(std::string_view line) { return begins(line, "/#$"); }
bool isPowerDivX(std::string_view line) { return begins(line, "{#:#:#}{#:#:#}"); }
bool isViPlay(std::string_view line) { return begins(line, "#:#:#,#-#:#:#,#="); }
bool isSofni(std::string_view line) { return begins(line, "#:#:#.#\\"); }
bool isPanimator(std::string_view line) { return begins(line, "/d # #$"); }

bool isIndexLine(std::string_view line) {
    return Scan(trimmed(line)).eat("timestamp:") && line.find("filepos:") != line.npos;
}

bool isTtml(std::string_view line) {
    return line.find("www.w3.org/ns/ttml") != line.npos || line.find("www.w3.org/2006/") != line.npos ||
           line.find("<p begin=\"") != line.npos;
}

bool isRealText(std::string_view line) {
    Scan in(line);
    in.skipBlanks();
    return in.eat("<time begin") || in.eat("<window type");
}

// ------------------------------------------------------------------------------------------------------ verdict

/// Lines that speak for a format. A line that two can own is the first one's.
const struct Judge {
    Format format;
    bool (*owns)(std::string_view line);
} kJudges[] = {
    {Format::SubStationAlpha, is::subStationEvent},
    {Format::RealText, isRealText},
    {Format::Ttml, isTtml},
    {Format::Sami, is::samiSync},
    {Format::Aqt, isAqt},
    {Format::VobSubIndex, isIndexLine},
    {Format::SubRip, is::subRipTime},
    {Format::SpruceStl, isSpruceStl},
    {Format::DvbText, is::dvbTextLine},
    {Format::SubViewer20, is::subViewer20Time},
    {Format::MicroDvd, is::microDvdLine},
    {Format::Mpl2, isMpl2},
    {Format::SubViewer10, is::subViewer10Time},
    {Format::Dks, isDks},
    {Format::Lrc, isLrc},
    {Format::Pjs, isPjs},
    {Format::MPlayer, isMPlayer},
    {Format::MacSub, isMacSub},
    {Format::PowerDivX, isPowerDivX},
    {Format::ViPlay, isViPlay},
    {Format::Sofni, isSofni},
    {Format::Panimator, isPanimator},
    {Format::TimedText, is::timedTextLine},
};

/// First words that say all.
struct Head {
    const char* begin;
    Format format;
};
const Head kHeads[] = {
    {"WEBVTT", Format::WebVtt},
    {"Scenarist_SCC", Format::Scc},
    {"FORMAT=", Format::MpSub},
    {"TITLE=", Format::MpSub},
    {"# VobSub index file", Format::VobSubIndex},
    {"{QTtext}", Format::QuickTimeText},
    {"#TITLE", Format::JacoSub},
    {"#TIMERES", Format::JacoSub},
    {"# <HEAD>", Format::Vkt},
};

/// First words that say what the lines may as well not say, because there are no entries.
const Head kWeakHeads[] = {
    {"[Script Info]", Format::SubStationAlpha},
    {"<SAMI", Format::Sami},
    {"[INFORMATION]", Format::SubViewer20},
};

template <class Heads>
Format judgeHead(const Source& source, const Heads& heads) {
    for (const std::string_view line : source.lines()) {
        if (isEmptyLine(line)) continue;
        for (const Head& head : heads)
            if (Scan(trimmed(line)).eat(head.begin)) return head.format;
        return Format::None;
    }
    return Format::None;
}

}  // namespace

bool judgeBytes(std::string_view bytes, Format* format, std::string* nature) {
    const bool isBlank = bytes.find_first_not_of("\xEF\xBB\xBF \t\r\n"sv) == bytes.npos;
    if (isBlank) {
        *nature = bytes.empty() ? "an empty file" : "a file without text";
        return true;
    }
    constexpr size_t kStlHeader = 1024;
    if (bytes.size() > kStlHeader && bytes.substr(3, 3) == "STL" && isBinary(bytes.substr(kStlHeader))) {
        *format = Format::EbuStl;
        return true;
    }
    const bool seemsBinary = isBinary(bytes);
    for (const auto& signature : kSignatures) {
        if (bytes.substr(0, signature.bytes.size()) != signature.bytes) continue;
        if (!seemsBinary && !isSure(signature.bytes)) continue;
        *format = signature.format;
        *nature = signature.nature;
        return true;
    }
    if (seemsBinary) *nature = natureOf(bytes);
    return seemsBinary;
}

std::string natureOf(std::string_view bytes) {
    constexpr size_t kLookedAt = 4096;
    bytes = bytes.substr(0, kLookedAt);
    return std::any_of(bytes.begin(), bytes.end(), isControl) ? "binary data" : "text without times of any known form";
}

Format judgeText(const Source& source, std::string_view ending) {
    const Format head = judgeHead(source, kHeads);
    if (head != Format::None) return head;
    size_t votes[std::size(kJudges)] = {};
    for (const std::string_view line : source.lines()) {
        const auto owner =
            std::find_if(std::begin(kJudges), std::end(kJudges), [&](const Judge& judge) { return judge.owns(line); });
        if (owner == std::end(kJudges)) continue;
        // Every other line of DKS is one that SubViewer 1.0 has as well.
        votes[owner - kJudges] += owner->format == Format::Dks ? 3 : 2;
    }
    size_t best = 0;
    for (size_t i = 1; i < std::size(votes); ++i) {
        const bool isTie = votes[i] == votes[best] && isEndingOf(ending, kJudges[i].format);
        if (votes[i] > votes[best] || isTie) best = i;
    }
    return votes[best] == 0 ? judgeHead(source, kWeakHeads) : kJudges[best].format;
}

}  // namespace meant
