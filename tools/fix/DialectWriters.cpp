// The other formats, each in the form of which the library shows most.
#include <algorithm>

#include "tools/fix/Times.h"
#include "tools/fix/Writers.h"
#include "tools/meant/Scan.h"
#include "tools/meant/Utf8.h"

namespace fix {
namespace {

constexpr Ms kHour = 3600000;
constexpr char kMark[] = "\xEF\xBB\xBF";

bool isAscii(const std::vector<Piece>& pieces) {
    return std::all_of(pieces.begin(), pieces.end(), [](const Piece& piece) { return meant::isAscii(piece.text); });
}

/// The mark, where letters need it; what follows begins with a line that is none of the entries.
std::string markFor(const std::vector<Piece>& pieces) { return isAscii(pieces) ? "" : kMark; }

std::string writeSami(const std::vector<Piece>& pieces, const meant::File& file) {
    const std::string name = file.languages.empty() || file.languages[0].name.empty() ? "SUB" : file.languages[0].name;
    std::string text = markFor(pieces) +
                       "<SAMI>\r\n<HEAD>\r\n<STYLE TYPE=\"text/css\">\r\n<!--\r\nP {text-align: center;}\r\n." + name +
                       " {Name: Subtitles; SAMIType: CC;}\r\n-->\r\n</STYLE>\r\n</HEAD>\r\n<BODY>\r\n";
    const auto begin = [&](Ms time) { return "<SYNC Start=" + std::to_string(time) + "><P Class=" + name + ">"; };
    for (size_t i = 0; i < pieces.size(); ++i) {
        text += begin(pieces[i].start) + replaced(pieces[i].text, "\n", "<br>\r\n") + "\r\n";
        const bool isOver = i + 1 == pieces.size() || pieces[i + 1].start > pieces[i].end;
        if (isOver) text += begin(pieces[i].end) + "&nbsp;\r\n";
    }
    return text + "</BODY>\r\n</SAMI>\r\n";
}

/// Without a mark, behind which no text is shown. A number in front of a text would be taken for one behind the time.
std::string writeTimedText(const std::vector<Piece>& pieces, const meant::File&) {
    std::string text;
    for (const Piece& piece : pieces)
        text += timeText("%02d:%02d:%02d:", piece.start) + (meant::isDigit(piece.text[0]) ? "\xC2\xA0" : "") +
                replaced(piece.text, "\n", "|") + "\r\n" + timeText("%02d:%02d:%02d:", piece.end) + "\r\n";
    return text;
}

std::string writeSubViewer20(const std::vector<Piece>& pieces, const meant::File&) {
    std::string text = markFor(pieces) + "[INFORMATION]\r\n[END INFORMATION]\r\n[SUBTITLE]\r\n";
    for (const Piece& piece : pieces)
        text += timeText("%02d:%02d:%02d.%03d,", piece.start) + timeText("%02d:%02d:%02d.%03d\r\n", piece.end) +
                replaced(piece.text, "\n", "\r\n") + "\r\n\r\n";
    return text;
}

std::string writeSubViewer10(const std::vector<Piece>& pieces, const meant::File&) {
    std::string text = markFor(pieces) + "[TITLE]\r\n\r\n[BEGIN]\r\n******** START SCRIPT ********\r\n";
    for (const Piece& piece : pieces)
        text += timeText("[%02d:%02d:%02d]\r\n", piece.start) + replaced(piece.text, "\n", "|") +
                timeText("\r\n[%02d:%02d:%02d]\r\n\r\n", piece.end);
    return text + "[END]\r\n******** END SCRIPT ********\r\n";
}

/// The mark is what makes the library read the rate.
std::string writeMicroDvd(const std::vector<Piece>& pieces, const meant::File& file) {
    const uint32_t rate = file.rate.thousandths;
    const auto frame = [rate](Ms time) { return std::to_string((time * rate + 500000) / 1000000); };
    std::string fraction = std::to_string(1000 + rate % 1000).substr(1);
    std::string text = std::string(kMark) + "{1}{1}" + std::to_string(rate / 1000) + "." + fraction + "\r\n";
    for (const Piece& piece : pieces)
        text += "{" + frame(piece.start) + "}{" + frame(piece.end) + "}" + replaced(piece.text, "\n", "|") + "\r\n";
    return text;
}

/// The text begins at the 25th character of the line.
std::string writeDvbText(const std::vector<Piece>& pieces, const meant::File&) {
    std::string text = isAscii(pieces) ? "" : kMark + std::string("#\r\n");
    for (const Piece& piece : pieces)
        text += timeText("%d:%02d:%02d:%03d ", piece.start) + timeText("%d:%02d:%02d:%03d ", piece.end) +
                replaced(piece.text, "\n", "|") + "\r\n";
    return text;
}

constexpr Form kForms[] = {
    {meant::Format::Sami, {}, Brackets::All, true, writeSami},
    {meant::Format::TimedText, {100 * kHour - 1000, 1000}, Brackets::All, true, writeTimedText},
    {meant::Format::SubViewer20, {100 * kHour - 1, 1}, Brackets::WithLetters, true, writeSubViewer20},
    {meant::Format::SubViewer10, {100 * kHour - 1000, 1000}, Brackets::All, false, writeSubViewer10},
    {meant::Format::MicroDvd, {}, Brackets::All, false, writeMicroDvd},
    {meant::Format::DvbText, {10 * kHour - 1, 1}, Brackets::All, false, writeDvbText},
};

}  // namespace

const Form* formOf(meant::Format format) {
    for (const Form& form : kForms)
        if (form.format == format) return &form;
    return nullptr;
}

}  // namespace fix
