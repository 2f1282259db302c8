// vxsub info: what the library makes of a file.
#include <algorithm>
#include <map>

#include "CheckFile.h"
#include "Commands.h"
#include "Errors.h"
#include "Json.h"
#include "Log.h"
#include "Screen.h"
#include "Sentences.h"
#include "Text.h"
#include "Time.h"
#include "subtitle/SubtitleParserSUBIDX.h"

namespace vxsub {
namespace {

using namespace android;

std::string counted(size_t n, const char* one, const char* many) {
    return std::to_string(n) + " " + (n == 1 ? one : many);
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

/// Nothing where there is nothing to compare with.
std::optional<check::Report> compareWithMeant(const OpenOptions& options) {
    const HiddenLog hidden;
    CheckOptions check = {options, {}, {}};
    check.file.quiet = true;
    try {
        return checkFile(check);
    } catch (const FileError&) {
        return std::nullopt;
    }
}

/// All that is said of a file.
struct Facts {
    SubtitleFile& file;
    std::vector<Entry> entries;
    std::optional<FrameRate> rate;            ///< of times that are frame numbers
    bool isRateIdle = false;                  ///< --fps was given, and has no effect
    std::map<const MarkKind*, size_t> marks;  ///< how many entries have them
    std::optional<check::Report> asMeant;

    std::vector<Entry> entriesOf(const Track& track) const {
        return {entries.begin() + track.first, entries.begin() + track.end};
    }
    bool hasOpenEnds() const {
        return std::any_of(entries.begin(), entries.end(), [](const Entry& e) { return e.isOpen(); });
    }
};

Facts gather(SubtitleFile& file, const OpenOptions& options) {
    Facts facts = {file, {}, file.frameRate(), false, {}, compareWithMeant(options)};
    for (U32 i = 0; i < file.count(); ++i) facts.entries.push_back(file.entry(i));
    facts.isRateIdle =
        options.frameRate && (facts.rate ? facts.rate->from == RateFrom::File : !file.followsFrameRate());
    for (const Track& track : file.tracks())
        for (const Marks& marks : marksOf(facts.entriesOf(track)))
            for (const MarkKind& kind : kMarkKinds)
                if (marks.*kind.isSet) ++facts.marks[&kind];
    return facts;
}

// ----------------------------------------------------------------------------------------------------- for people

void field(Output& out, const std::string& name, const std::string& value) {
    std::string line = name + (name.empty() ? "" : ":");
    line.resize(std::max<size_t>(line.size() + 1, 14), ' ');
    out.line(line + value);
}

std::string twoNumbers(U32 a, const char* between, U32 b) { return std::to_string(a) + between + std::to_string(b); }

bool hasPalette(const SubtitleParserSUBIDX& index) {
    constexpr U32 kNone = 0xFF000000;
    const U32* const palette = index.m_au32Palette;
    return palette[0] != kNone || std::any_of(palette + 1, palette + 16, [](U32 colour) { return colour != 0; });
}

std::string hexadecimal(U32 colour) {
    char text[16];
    snprintf(text, sizeof text, "%06x", colour & 0xFFFFFF);
    return text;
}

/// Six hexadecimal digits each; where colours can be shown, behind a block of their own.
void showPalette(const SubtitleParserSUBIDX& index, Output& out) {
    if (!hasPalette(index)) {
        field(out, "Palette", "none; all that is drawn is black");
        return;
    }
    for (size_t row = 0; row < 16; row += 8) {
        std::string line;
        for (size_t i = row; i < row + 8; ++i) {
            const U32 c = index.m_au32Palette[i];
            char block[64] = "";
            if (canColour(out))
                snprintf(block, sizeof block, "\x1b[48;2;%u;%u;%um  \x1b[0m", c >> 16 & 0xFF, c >> 8 & 0xFF, c & 0xFF);
            line += (line.empty() ? "" : " ") + (block + hexadecimal(c));
        }
        field(out, row == 0 ? "Palette" : "", line);
    }
    if (index.m_au32Palette[0] >> 24 != 0) field(out, "", "fewer than 16 colours are given; the first counts as black");
}

void showVobSub(const SubtitleParserSUBIDX& index, Output& out) {
    field(out, "Pictures", counted(size_t(index.m_s64DataTotalSizeSub), "byte", "bytes") + " in the .sub file");
    const bool hasSize = index.m_u32Width != 0 || index.m_u32Height != 0;
    field(out, "Frame",
          (hasSize ? twoNumbers(index.m_u32Width, "x", index.m_u32Height) : "of unknown size") + ", origin " +
              twoNumbers(index.m_u32OriginX, ", ", index.m_u32OriginY));
    showPalette(index, out);
}

void showRate(const Facts& facts, const OpenOptions& options, Output& out) {
    if (facts.rate)
        field(out, "Frame rate", describeRate(*facts.rate, options));
    else if (options.frameRate)
        field(out, "Frame rate",
              facts.isRateIdle ? "given, but without effect on the times" : "as given; the times follow it");
}

void showEntries(const Facts& facts, Output& out) {
    field(out, "Entries", facts.entries.empty() ? "0 (nothing will be shown)" : std::to_string(facts.entries.size()));
    if (!facts.entries.empty()) {
        const Span span = spanOf(facts.entries);
        field(out, "First start", formatTime(span.first));
        field(out, facts.hasOpenEnds() ? "Last start" : "Last end", formatTime(span.last));
    }
    for (size_t i = 0; i < facts.file.tracks().size() && facts.file.vobSub() != nullptr; ++i) {
        const Track& track = facts.file.tracks()[i];
        const std::vector<Entry> own = facts.entriesOf(track);
        field(out, "Track " + std::to_string(i),
              std::string(nameOf(track.language).phrase) + ", " + counted(own.size(), "entry", "entries") + ", from " +
                  formatTime(spanOf(own).first));
    }
    for (const MarkKind& kind : kMarkKinds) {
        const auto found = facts.marks.find(&kind);
        if (found == facts.marks.end()) continue;
        const bool isOne = found->second == 1;
        field(out, "Note", counted(found->second, "entry ", "entries ") + (isOne ? kind.one : kind.many));
    }
}

/// A path that a shell takes as one word.
std::string shellWord(const std::string& path) {
    const char kPlain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-+,:@%=";
    if (path.find_first_not_of(kPlain) == path.npos) return path;
    std::string word = "'";
    for (const char c : path) word += c == '\'' ? "'\\''" : std::string(1, c);
    return printable(word + "'");
}

void show(const Facts& facts, const OpenOptions& options, Output& out) {
    SubtitleFile& file = facts.file;
    field(out, "File", printable(file.path()) + " (" + counted(size_t(file.length()), "byte", "bytes") + ")");
    field(out, "Format", nameOf(file.type()).phrase);
    field(out, "Encoding", file.encoding());
    const std::string reading = file.hasPictures() ? "" : describeReading(file.decoder());
    if (!reading.empty()) field(out, "", reading);
    if (file.vobSub() != nullptr) showVobSub(*file.vobSub(), out);
    showRate(facts, options, out);
    showEntries(facts, out);
    char opened[32];
    snprintf(opened, sizeof opened, "%.3f ms", file.openMilliseconds());
    field(out, "Opened in", opened);
    if (!facts.asMeant) return;
    const check::Report& report = *facts.asMeant;
    const std::string says = report.right < report.meant || report.meant == 0 ? "why" : "more";
    out.line("Shown as meant: " + std::to_string(report.right) + " of " + std::to_string(report.meant) + " " +
             report.things +
             (report.remarks.empty() ? "" : "; vxsub check " + shellWord(file.path()) + " says " + says));
}

// --------------------------------------------------------------------------------------------------- for programs

const char* wordFor(Reading reading) {
    static constexpr const char* kWords[] = {"stated", "chosen", "ascii", "content", "guessed", "assumed"};
    return kWords[size_t(reading)];
}

const char* wordFor(RateFrom from) {
    static constexpr const char* kWords[] = {"file", "player", "library", "none"};
    return kWords[size_t(from)];
}

Json spanJson(const std::vector<Entry>& entries) {
    if (entries.empty()) return {{"first", nullptr}, {"last", nullptr}};
    const Span span = spanOf(entries);
    return {{"first", span.first}, {"last", span.last}};
}

Json vobSubJson(const Facts& facts) {
    const SubtitleParserSUBIDX& index = *facts.file.vobSub();
    Json value = {{"bytes", index.m_s64DataTotalSizeSub},
                  {"width", index.m_u32Width},
                  {"height", index.m_u32Height},
                  {"x", index.m_u32OriginX},
                  {"y", index.m_u32OriginY},
                  {"palette", nullptr}};
    if (hasPalette(index))
        for (const U32 colour : index.m_au32Palette) value["palette"].push_back(hexadecimal(colour));
    for (const Track& track : facts.file.tracks()) {
        const std::vector<Entry> own = facts.entriesOf(track);
        value["tracks"].push_back(
            {{"language", nameOf(track.language).word}, {"entries", own.size()}, {"times", spanJson(own)}});
    }
    return value;
}

void showJson(const Facts& facts, const OpenOptions& options, Output& out) {
    SubtitleFile& file = facts.file;
    Json value = headOf(file);
    value["bytes"] = file.length();
    if (!file.hasPictures())
        value["texts"] = {{"encoding", file.decoder().charset().option}, {"from", wordFor(file.decoder().reading())}};
    if (file.vobSub() != nullptr) value["pictures"] = vobSubJson(facts);
    if (facts.rate)
        value["rate"] = {{"frames", facts.rate->thousandths / 1000.0},
                         {"from", wordFor(facts.rate->from)},
                         {"rounded", isRounded(*facts.rate, options)}};
    value["entries"] = facts.entries.size();
    value["times"] = spanJson(facts.entries);
    value["marks"] = Json::object();
    for (const auto& [kind, count] : facts.marks) value["marks"][kind->word] = count;
    value["opened"] = file.openMilliseconds();
    if (facts.asMeant) value["meant"] = {{"entries", facts.asMeant->meant}, {"right", facts.asMeant->right}};
    out.line(toText(value));
}

}  // namespace

void addInfo(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("info", "Say what the library makes of a file");
    command->footer(
        "Shows the format, the encoding, the number of entries, the earliest start, the\n"
        "latest end, how long the library took to open the file, and how many entries are\n"
        "shown as their author meant them; of a VobSub index also its tracks, frame size\n"
        "and palette, of MicroDVD the frame rate and where it comes from.\n\n"
        "Encoding, as the library tells it to the player; the words are those of --json:\n"
        "  utf-8, utf-16le, utf-16be  as the byte-order mark says; utf-8 also by the bytes\n"
        "  native                     8-bit, and the player chooses (see --native)\n"
        "  gbk, big5                  judged by the library from the texts\n"
        "  i2, i8, argb8888 ...       pictures\n\n"
        "With --json, one object: {\"file\", \"format\", \"encoding\", \"bytes\",\n"
        "\"texts\": {\"encoding\", \"from\"}, \"entries\", \"times\": {\"first\", \"last\"}, \"marks\",\n"
        "\"opened\", \"meant\": {\"entries\", \"right\"}}, and where there are any \"rate\":\n"
        "{\"frames\", \"from\", \"rounded\"} and \"pictures\". \"from\" of texts is stated, chosen,\n"
        "ascii, content, guessed or assumed; of a rate file, player, library or none.\n\n"
        "Examples:  vxsub info movie.srt\n"
        "           vxsub info --fps 23.976 movie.sub");
    addFileArgument(*command, session);
    const auto json = std::make_shared<bool>(false);
    addJsonOption(*command, json.get());
    command->callback([json, &session] {
        session.run = [json, &session] {
            SubtitleFile file(session.file);
            (*json ? showJson : show)(gather(file, session.file), session.file, session.out);
        };
    });
}

}  // namespace vxsub
