// What the whole file tells, found once for all its differences.
#include <algorithm>

#include "tools/check/Rules.h"

namespace check {
namespace {

using namespace std::literals;

constexpr size_t kMark = 2;  // bytes, of 16-bit text

/// Units of 16-bit text, with the byte that is 0 in ASCII first or last.
class Units {
public:
    explicit Units(const Scene& scene) : mBytes(scene.bytes), mIsBig(scene.meant.encoding.name == "UTF-16BE") {}
    size_t count() const { return mBytes.size() / 2; }
    unsigned at(size_t i) const {
        const unsigned first = static_cast<unsigned char>(mBytes[2 * i]),
                       second = static_cast<unsigned char>(mBytes[2 * i + 1]);
        return mIsBig ? first << 8 | second : second << 8 | first;
    }

private:
    std::string_view mBytes;
    bool mIsBig;
};

void lookAtUnits(const Scene& scene, Facts* facts) {
    const Units units(scene);
    for (size_t i = 0; i < units.count(); ++i) {
        const unsigned unit = units.at(i);
        facts->hasZeros |= unit == 0;
        facts->isShifted |= unit == 0x0A00;  // no character, but LF in two halves
    }
}

void lookAtBytes(const Scene& scene, Facts* facts) {
    const auto zeros = static_cast<size_t>(std::count(scene.bytes.begin(), scene.bytes.end(), '\0'));
    facts->hasZeros = zeros > 0;
    facts->hasManyZeros = zeros > scene.bytes.size() / 8;
}

/// Whether a line that is not usual could have been meant as one, or could be taken for one.
bool isNearly(meant::Format format, std::string_view line) {
    constexpr size_t kFew = 3;
    const char first = line.empty() ? '\0' : line[0];
    switch (format) {
        case meant::Format::SubViewer10:
            return first == '[' || first == '{' || countNumbers(line) >= kFew;
        case meant::Format::TimedText:
            return std::count(line.begin(), line.end(), ':') >= 2;
        case meant::Format::MicroDvd:
            return first == '{' || line.find("}{") != line.npos;
        default:
            return countNumbers(line) >= kFew;
    }
}

bool isOfTwoLines(const std::string& line) { return hasForm(line, "00:00:00,0=") || hasForm(line, "00:00:00.0:"); }

void lookAtEntry(const Scene& scene, const meant::Entry& entry, Facts* facts) {
    if (scene.meant.format == meant::Format::SubStationAlpha) {
        facts->hasFewCommas |= hasFewCommas(lineAt(scene, entry.place.offset));
    } else if (scene.meant.format == meant::Format::TimedText) {
        const std::string lines = linesOf(scene, entry);
        const bool isAlone = lines.find(",1=") != lines.npos && lines.find(",2=") == lines.npos;
        if (isAlone) facts->oneOfTwoLines = std::min(facts->oneOfTwoLines, entry.place.offset);
        const meant::Entry& first = scene.meant.entries.front();
        facts->hasMixedWidths |= isOfTwoLines(lines) != isOfTwoLines(lineAt(scene, first.place.offset));
    }
}

void lookAtStrayLines(const Scene& scene, Facts* facts) {
    for (const meant::Place& place : scene.meant.strayLines) {
        const std::string line = lineAt(scene, place.offset);
        facts->hasBrokenTime |= !line.empty() && isDigit(line[0]) && line.find(':') != line.npos;
    }
}

/// Any `<`, with the blanks and line ends behind the element left out of what follows.
void lookAtElements(std::string_view bytes, Facts* facts) {
    for (size_t at = bytes.find('<'); at != bytes.npos; at = bytes.find('<', at + 1)) {
        meant::Scan in(bytes.substr(at));
        if (!in.eat("<s")) continue;
        const bool isSync = in.eat("ync start=");
        in.eatAny("\"'");
        const bool isUsual = isSync && in.eatDigits() && (in.eatAny("\"'"), in.eat('>'));
        in.skipAny(" \t\r\n");
        facts->hasOddSync |= !isUsual && (isSync || in.eat("ync"));
        facts->hasSyncWithoutP |= isUsual && !in.eat("<p");
    }
}

/// A script's Format line of events that has not Start, End and Text where the library looks for them.
bool hasOtherFields(std::string_view line) {
    meant::Scan in(line);
    if (!in.eat("Format:")) return false;
    std::vector<std::string> fields(1);
    for (const char c : in.rest()) {
        if (c == ',')
            fields.emplace_back();
        else if (c != ' ' && c != '\t')
            fields.back() += meant::lower(c);
    }
    const auto isField = [&](size_t i, const char* name) { return i < fields.size() && fields[i] == name; };
    const bool isOfEvents = std::find(fields.begin(), fields.end(), "text") != fields.end();
    return isOfEvents && !(isField(1, "start") && isField(2, "end") && isField(9, "text"));
}

void lookAtLine(const Scene& scene, size_t offset, std::string_view line, Facts* facts) {
    const size_t begin = std::min(line.find_first_not_of(" \t\v\f"), line.size());
    const std::string_view text = line.substr(begin);
    const bool beginsWithDigit = !text.empty() && isDigit(text[0]);
    const size_t firstEntry = scene.meant.entries.empty() ? SIZE_MAX : scene.meant.entries.front().place.offset;
    if (beginsWithDigit && facts->firstDigitLine.empty()) facts->firstDigitLine = text;
    if (offset < firstEntry && text.size() > 1 && isDigit(text[1])) facts->hasSecondDigit = true;
    if (scene.meant.format == meant::Format::SubStationAlpha) facts->hasOtherFields |= hasOtherFields(text);
    if (isUsualLine(scene.meant.format, text)) return;
    facts->hasStrayNumbers |= beginsWithDigit && countNumbers(text) >= 4;
    if (facts->looseLine == SIZE_MAX && isNearly(scene.meant.format, text)) facts->looseLine = offset;
}

/// From one LF to the next; there may be more than one where CR ends lines.
void lookAtLines(const Scene& scene, size_t begin, size_t end, Facts* facts) {
    const std::string_view upToLf = scene.bytes.substr(0, end);
    while (begin < end) {
        const size_t cr = std::min(upToLf.find('\r', begin), end);
        if (isWide(scene.meant.encoding))
            lookAtLine(scene, begin, lineAt(scene, begin), facts);
        else
            lookAtLine(scene, begin, upToLf.substr(begin, cr - begin), facts);
        begin = cr + 1;
    }
}

}  // namespace

bool isUsualLine(meant::Format format, std::string_view line) {
    switch (format) {
        case meant::Format::SubRip:
            return hasForm(line, "00:00:00,000 --> 00:00:00,000") || hasForm(line, "00:00:00.000 --> 00:00:00.000");
        case meant::Format::SubViewer20:
            return hasForm(line, "00:00:00.00,00:00:00.00") || hasForm(line, "00:00:00.000,00:00:00.000");
        case meant::Format::SubViewer10:
            return hasForm(line, "[00:00:00]") && line.size() <= 10;
        case meant::Format::MicroDvd:
            return hasForm(line, "{0+}{0+}");
        case meant::Format::TimedText:
            return hasForm(line, "00:00:00:") || hasForm(line, "0:00:00:") || hasForm(line, "00:00:00,0=") ||
                   hasForm(line, "00:00:00.0:");
        case meant::Format::DvbText:
            return hasForm(line, "0:00:00:00 0:00:00:00   ") || hasForm(line, "0+ 00:00:00,000 00:00:00,000 ");
        default:
            return true;
    }
}

bool hasFewCommas(const std::string& line) {
    constexpr long kUsualCommas = 9;
    const std::string fields = line.substr(0, line.find_first_of("{\\"));
    return std::count(fields.begin(), fields.end(), ',') < kUsualCommas;
}

Facts factsOf(const Scene& scene) {
    Facts facts;
    if (isWide(scene.meant.encoding))
        lookAtUnits(scene, &facts);
    else
        lookAtBytes(scene, &facts);
    for (const meant::Entry& entry : scene.meant.entries) lookAtEntry(scene, entry, &facts);
    lookAtStrayLines(scene, &facts);
    for (const std::string_view end : {"\r\r\n"sv, "\r\0\r\0\n\0"sv, "\0\r\0\r\0\n"sv})
        facts.hasDoubleCr |= scene.bytes.find(end) != scene.bytes.npos;
    if (scene.meant.format == meant::Format::Sami) lookAtElements(scene.bytes, &facts);
    size_t offset = isWide(scene.meant.encoding) ? kMark : 0;
    if (scene.bytes.substr(0, 3) == "\xEF\xBB\xBF") offset = 3;
    while (offset < scene.bytes.size()) {
        const size_t end = std::min(scene.bytes.find('\n', offset), scene.bytes.size());
        lookAtLines(scene, offset, end, &facts);
        offset = end + 1;
    }
    return facts;
}

}  // namespace check
