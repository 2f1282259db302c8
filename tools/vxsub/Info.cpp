// vxsub info: what the library makes of a file.
#include <algorithm>
#include <map>

#include "Commands.h"
#include "Text.h"
#include "Time.h"
#include "subtitle/SubtitleParserSUBIDX.h"

namespace vxsub {
namespace {

using namespace android;

std::string counted(size_t n, const char* one, const char* many) {
    return std::to_string(n) + " " + (n == 1 ? one : many);
}

/// What the texts were taken for, where the file does not say it.
std::vector<std::string> describeReadings(const std::map<Reading, size_t>& readings, const Decoder& decoder) {
    const auto count = [&](Reading reading) {
        const auto found = readings.find(reading);
        return found == readings.end() ? 0 : found->second;
    };
    if (count(Reading::Chosen) > 0) return {std::string("texts shown as ") + decoder.chosen()->name + ", as chosen"};
    const size_t ascii = count(Reading::Ascii), utf8 = count(Reading::Utf8), western = count(Reading::Western);
    std::vector<std::string> lines;
    if (ascii > 0 && utf8 + western == 0) lines.push_back("all texts are plain ASCII");
    if (utf8 > 0) lines.push_back(counted(utf8, "text", "texts") + " guessed to be UTF-8, because well-formed");
    if (western > 0)
        lines.push_back(counted(western, "text", "texts") + " guessed to be " + Decoder::western().name +
                        "; choose another encoding with --native");
    return lines;
}

void field(Output& out, const char* name, const std::string& value) {
    std::string line = std::string(name) + (*name == 0 ? "" : ":");
    line.resize(14, ' ');
    out.line(line + value);
}

std::string twoNumbers(U32 a, const char* between, U32 b) { return std::to_string(a) + between + std::to_string(b); }

/// Six hexadecimal digits each; on a terminal behind a block of their colour.
void showPalette(const U32 (&palette)[16], Output& out) {
    constexpr U32 kNone = 0xFF000000;
    const bool isWhole = palette[0] != kNone;
    if (!isWhole && std::all_of(palette + 1, palette + 16, [](U32 colour) { return colour == 0; })) {
        field(out, "Palette", "none; all that is drawn is black");
        return;
    }
    for (size_t row = 0; row < 16; row += 8) {
        std::string line;
        for (size_t i = row; i < row + 8; ++i) {
            char text[64];
            const U32 c = palette[i] & 0xFFFFFF;
            if (out.isTerminal()) {
                snprintf(text, sizeof text, "\x1b[48;2;%u;%u;%um  \x1b[0m", c >> 16, c >> 8 & 0xFF, c & 0xFF);
                line += text;
            }
            snprintf(text, sizeof text, "%06x ", c);
            line += text;
        }
        line.pop_back();
        field(out, row == 0 ? "Palette" : "", line);
    }
    if (!isWhole) field(out, "", "fewer than 16 colours are given; the first counts as black");
}

void showVobSub(const SubtitleParserSUBIDX& index, Output& out) {
    field(out, "Pictures", counted(size_t(index.m_s64DataTotalSizeSub), "byte", "bytes") + " in the .sub file");
    const bool hasSize = index.m_u32Width != 0 || index.m_u32Height != 0;
    field(out, "Frame",
          (hasSize ? twoNumbers(index.m_u32Width, "x", index.m_u32Height) : "of unknown size") + ", origin " +
              twoNumbers(index.m_u32OriginX, ", ", index.m_u32OriginY));
    showPalette(index.m_au32Palette, out);
}

struct Span {
    U32 first, last;
};

/// The earliest start and the latest end, or the latest start where entries have no end.
Span spanOf(const std::vector<Entry>& entries) {
    Span span = {entries[0].start, 0};
    for (const Entry& entry : entries) {
        span.first = std::min(span.first, entry.start);
        span.last = std::max(span.last, entry.isOpen() ? entry.start : entry.end);
    }
    return span;
}

void showInfo(const OpenOptions& options, Output& out) {
    SubtitleFile file(options);
    field(out, "File", printable(file.path()) + " (" + counted(size_t(file.length()), "byte", "bytes") + ")");
    field(out, "Format", nameOf(file.type()).phrase);
    field(out, "Encoding", file.encoding());
    if (file.vobSub() != nullptr) showVobSub(*file.vobSub(), out);

    std::vector<Entry> entries;
    std::map<Reading, size_t> readings;
    for (U32 i = 0; i < file.count(); ++i) {
        entries.push_back(file.entry(i));
        if (!file.hasPictures()) ++readings[file.decoder().readingOf(file.units(i))];
    }
    for (const std::string& line : describeReadings(readings, file.decoder())) field(out, "", line);

    if (options.frameRate)
        field(out, "Frame rate",
              file.followsFrameRate() ? "as given; the times follow it" : "given, but without effect on the times");
    field(out, "Entries", entries.empty() ? "0 (nothing will be shown)" : std::to_string(entries.size()));
    if (!entries.empty()) {
        const Span span = spanOf(entries);
        const bool isOpen = std::any_of(entries.begin(), entries.end(), [](const Entry& e) { return e.isOpen(); });
        field(out, "First start", formatTime(span.first));
        field(out, isOpen ? "Last start" : "Last end", formatTime(span.last));
    }
    size_t sharing = 0, back = 0, reversed = 0;
    for (size_t number = 0; number < file.tracks().size(); ++number) {
        const Track& track = file.tracks()[number];
        const std::vector<Entry> own(entries.begin() + track.first, entries.begin() + track.end);
        if (file.vobSub() != nullptr)
            field(out, ("Track " + std::to_string(number)).c_str(),
                  std::string(nameOf(track.language).phrase) + ", " + counted(own.size(), "entry", "entries") +
                      ", from " + formatTime(spanOf(own).first));
        for (const Marks& marks : marksOf(own)) {
            sharing += marks.sharesStart;
            back += marks.backInTime;
            reversed += marks.endsBeforeStart;
        }
    }
    if (sharing > 0) field(out, "Note", counted(sharing, "entry shares", "entries share") + " a start with another");
    if (back > 0) field(out, "Note", counted(back, "entry goes", "entries go") + " back in time");
    if (reversed > 0) field(out, "Note", counted(reversed, "entry ends", "entries end") + " before the start");

    char opened[32];
    snprintf(opened, sizeof opened, "%.3f ms", file.openMilliseconds());
    field(out, "Opened in", opened);
}

}  // namespace

void addInfo(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("info", "Say what the library makes of a file");
    command->footer(
        "Shows the format, the encoding (and what was guessed about it), the number of\n"
        "entries, the earliest start, the latest end, and how long the library took to\n"
        "open the file; of a VobSub index also its tracks, frame size and palette. With\n"
        "--fps it says whether the times follow that rate.\n\n"
        "Examples:  vxsub info movie.srt\n"
        "           vxsub info --fps 23.976 movie.sub");
    addFileArgument(*command, session);
    command->callback([&session] { session.run = [&session] { showInfo(session.file, session.out); }; });
}

}  // namespace vxsub
