// vxsub fix: a copy that the television shows as its author meant.
#include "tools/fix/Fix.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "Commands.h"
#include "Errors.h"
#include "NewFile.h"
#include "ShownEntries.h"
#include "Text.h"
#include "Time.h"
#include "tools/check/Explain.h"
#include "tools/fix/Index.h"
#include "tools/meant/SystemEncodings.h"

namespace vxsub {
namespace {

using android::U32;

struct FixOptions {
    OpenOptions file;
    std::string output;    ///< empty: beside the file
    std::string encoding;  ///< of 8-bit text; empty: found out
    fix::Options fix;
    bool force = false;
};

/// A directory of our own, for as long as it takes.
class TemporaryDirectory {
public:
    TemporaryDirectory() : mPath((std::filesystem::temp_directory_path() / "vxsub.XXXXXX").string()) {
        if (mkdtemp(mPath.data()) == nullptr) throw FileError("cannot make " + mPath + ": " + strerror(errno));
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& path() const { return mPath; }

private:
    std::string mPath;
};

/// What a file of ours is compared with: the pieces, as if they were meant.
meant::File planOf(const fix::Result& result) {
    meant::File plan;
    plan.format = result.format;
    for (const fix::Piece& piece : result.pieces) {
        meant::Entry entry;
        entry.start = piece.start;
        entry.end = piece.end;
        entry.endFrom = meant::End::Given;
        entry.text = piece.text;
        plan.entries.push_back(std::move(entry));
    }
    return plan;
}

/// What became of the meant entries.
struct Outcome {
    std::vector<bool> isShown;  ///< as they were meant
    bool isLost = false;        ///< something is, by more than its looks
    size_t shown() const { return size_t(std::count(isShown.begin(), isShown.end(), true)); }
};

/// An entry shows when all of it is in pieces, and every piece is shown as it was written.
Outcome outcomeOf(const fix::Result& result, const check::Shown& shown) {
    Outcome outcome;
    const meant::File plan = planOf(result);
    std::vector<bool> isWrong(result.isWhole.size());
    for (const check::Difference& difference : check::compare(plan, shown).differences) {
        outcome.isLost |= difference.verdict != check::Verdict::Odd;
        if (difference.entry == nullptr) continue;
        const size_t piece = size_t(difference.entry - plan.entries.data());
        for (const size_t entry : result.pieces[piece].shows) isWrong[entry] = true;
    }
    outcome.isShown.assign(result.isWhole.size(), false);
    for (const fix::Piece& piece : result.pieces)
        for (const size_t entry : piece.shows) outcome.isShown[entry] = result.isWhole[entry] && !isWrong[entry];
    outcome.isLost |= std::count(result.isWhole.begin(), result.isWhole.end(), false) > 0;
    return outcome;
}

/// The causes of what is found in a file, each with its first finding and its count.
struct Causes {
    std::vector<check::Finding> first;
    std::map<std::string, size_t> counts;
};

std::string nameOf(const check::Finding& finding) {
    return finding.cause != nullptr ? finding.cause->name : "unexplained";
}

Causes causesIn(const check::Scene& scene, const check::Comparison& comparison) {
    Causes causes;
    for (const check::Finding& finding : check::explain(scene, comparison))
        if (++causes.counts[nameOf(finding)] == 1) causes.first.push_back(finding);
    return causes;
}

/// The name of the new file: movie.fixed.srt beside movie.sub.
std::string defaultOutput(const FixOptions& options, meant::Format format) {
    const std::string& path = options.file.path;
    const std::string_view ending = extensionOf(path);
    const std::string stem = path.substr(0, path.size() - ending.size());
    return stem + ".fixed" + (format == meant::Format::SubRip ? ".srt" : std::string(ending));
}

void sayRemarks(fix::Remark::Kind kind, const char* word, const std::vector<fix::Remark>& remarks,
                const std::string& path, Output& out) {
    for (const fix::Remark& row : remarks) {
        if (row.kind != kind) continue;
        std::string place;
        if (row.first.offset > 0 || row.count > 1)
            place = printable(path) + ":" + std::to_string(row.first.line) +
                    (row.count > 1 ? " and " + std::to_string(row.count - 1) + " more: " : ": ");
        const std::string cause = *row.cause != 0 ? "[" + std::string(row.cause) + "] " : "";
        out.line("  " + std::string(word) + ": " + place + cause + row.sentence);
    }
}

std::string summary(const std::string& path, size_t shown, size_t all, const char* what, size_t before) {
    return "written " + printable(path) + ": " + std::to_string(shown) + " of " + std::to_string(all) + " " + what +
           " show at their time (before: " + std::to_string(before) + ")";
}

class TextFixer {
public:
    TextFixer(const FixOptions& options, Session& session)
        : mOptions(options),
          mSession(session),
          mBytes(readFile(options.file.path)),
          mMeant(meant::read(mBytes, meantOptions(options.file, options.encoding), meant::systemEncodings())) {}

    void fix() {
        const meant::Source source(mBytes, meantOptions(mOptions.file, mOptions.encoding), meant::systemEncodings());
        const fix::Result result = fix::fix(mMeant, source, mOptions.fix);
        const std::string& path = mOptions.file.path;
        if (result.format == meant::Format::None) throw FileError(path + ": " + result.refusal);
        NewFile file(mOptions.output.empty() ? defaultOutput(mOptions, result.format) : mOptions.output, path,
                     mOptions.force);
        file.write(result.bytes);
        const check::Shown shown = shownAt(file.pathUntilPut(), result.format);
        file.put();
        report(file.path(), shown, result);
    }

private:
    check::Shown shownAt(const std::string& path, meant::Format format) const {
        OpenOptions options = mOptions.file;
        options.path = path;
        const std::string_view endings = meant::nameOf(format).endings;
        options.format = formatOfPath("." + std::string(endings.substr(0, endings.find(' '))));
        meant::Encoding utf8;
        utf8.name = "UTF-8";
        return openShown(options, utf8).shown;
    }

    void report(const std::string& path, const check::Shown& shown, const fix::Result& result) {
        const Outcome outcome = outcomeOf(result, shown);
        const ShownFile before = openShown(mOptions.file, mMeant.encoding);
        const check::Comparison comparison = check::compare(mMeant, before.shown);
        meant::Options options;
        options.ending = extensionOf(path).substr(std::min<size_t>(1, extensionOf(path).size()));
        const meant::File written = meant::read(result.bytes, options, meant::systemEncodings());
        const check::Comparison left = check::compare(written, shown);
        const Causes causesLeft = causesIn({written, shown, result.bytes}, left);

        Output& out = mSession.out;
        out.line(summary(path, outcome.shown(), outcome.isShown.size(), "entries", comparison.right));
        sayWhatIsMended(causesIn({mMeant, before.shown, mBytes}, comparison), causesLeft, result);
        sayRemarks(fix::Remark::Kind::Changed, "changed", result.remarks, mOptions.file.path, out);
        sayRemarks(fix::Remark::Kind::NotMended, "not mended", result.remarks, mOptions.file.path, out);
        for (const check::Finding& finding : causesLeft.first) sayWhatIsLeft(path, finding, causesLeft);
        if (outcome.isLost) mSession.status = kFindings;
    }

    void sayWhatIsMended(const Causes& before, const Causes& left, const fix::Result& result) {
        std::map<std::string, size_t> mended = before.counts;
        mended.erase("unexplained");
        for (const auto& row : left.counts) mended.erase(row.first);
        for (const fix::Remark& row : result.remarks)
            if (row.kind == fix::Remark::Kind::NotMended) mended.erase(row.cause);
        std::string list;
        for (const auto& [name, count] : mended)
            list += (list.empty() ? "" : ", ") + name + " " + std::to_string(count);
        if (!list.empty()) mSession.out.line("  mended: " + list);
    }

    /// What the library shows in another way than it was written to be, in the new file.
    void sayWhatIsLeft(const std::string& path, const check::Finding& finding, const Causes& causes) {
        const meant::Entry* entry = finding.difference.entry;
        const std::string line = entry != nullptr ? ":" + std::to_string(entry->place.line) : "";
        const size_t more = causes.counts.at(nameOf(finding)) - 1;
        mSession.out.line("  not mended: " + printable(path) + line +
                          (more > 0 ? " and " + std::to_string(more) + " more" : "") + ": [" + nameOf(finding) + "] " +
                          (finding.cause != nullptr ? finding.cause->sentence : "It is not shown as it was written."));
    }

    const FixOptions& mOptions;
    Session& mSession;
    const std::string mBytes;
    const meant::File mMeant;
};

/// The pictures' file of an index: of the same name, in whatever letter case the ending is written.
std::string streamOf(const std::string& path) {
    namespace fs = std::filesystem;
    const std::string stem = path.substr(0, path.size() - extensionOf(path).size());
    for (const char* ending : {".sub", ".SUB", ".Sub"})
        if (fs::exists(stem + ending)) return stem + ending;
    throw FileError(path + ": [vob-no-stream] " + check::findCause("vob-no-stream")->sentence);
}

/// Of the pictures that are meant, how many the library shows at their time in the index at `path`.
size_t picturesShown(const std::string& path, const std::vector<fix::IndexEntry>& meant) {
    std::map<std::pair<size_t, U32>, size_t> shown;
    try {
        OpenOptions options;
        options.path = path;
        options.format = findFormat("idx");
        SubtitleFile file(options);
        for (U32 i = 0; i < file.count(); ++i) {
            const std::optional<PictureArea> area = file.picture(i);
            if (area && area->u16Width > 0 && area->u16Height > 0) ++shown[{file.trackOf(i), file.entry(i).start}];
        }
    } catch (const FileError&) {
        return 0;
    }
    // The library counts the tracks that have pictures.
    std::map<size_t, size_t> tracks;
    for (const fix::IndexEntry& entry : meant) tracks.try_emplace(entry.track, tracks.size());
    size_t count = 0;
    for (const fix::IndexEntry& entry : meant) {
        const auto row = shown.find({tracks[entry.track], U32(entry.start)});
        if (row == shown.end() || row->second == 0) continue;
        --row->second;
        ++count;
    }
    return count;
}

/// The index anew; the pictures stay as they are.
void fixIndexFile(const FixOptions& options, Session& session) {
    namespace fs = std::filesystem;
    const std::string& path = options.file.path;
    const std::string stream = streamOf(path);
    const fix::FixedIndex fixed = fix::fixIndex(readFile(path), readFile(stream), meant::systemEncodings());
    if (!fixed.refusal.empty()) throw FileError(path + ": " + fixed.refusal);
    const std::string output =
        options.output.empty() ? path.substr(0, path.size() - extensionOf(path).size()) + ".fixed.idx" : options.output;
    NewFile file(output, path, options.force);
    file.write(fixed.bytes);
    const TemporaryDirectory directory;
    fs::create_symlink(fs::absolute(file.pathUntilPut()), directory.path() + "/a.idx");
    fs::create_symlink(fs::absolute(stream), directory.path() + "/a.sub");
    const size_t shown = picturesShown(directory.path() + "/a.idx", fixed.entries);
    file.put();
    session.out.line(summary(output, shown, fixed.entries.size(), "pictures", picturesShown(path, fixed.entries)));
    sayRemarks(fix::Remark::Kind::Changed, "changed", fixed.remarks, path, session.out);
    sayRemarks(fix::Remark::Kind::NotMended, "not mended", fixed.remarks, path, session.out);
    if (shown < fixed.entries.size())
        session.out.line("  not mended: " + std::to_string(fixed.entries.size() - shown) +
                         " pictures are refused or damaged in the stream itself");
    const std::string expected = output.substr(0, output.size() - std::min<size_t>(3, output.size())) + "sub";
    if (!fs::exists(expected))
        session.out.line("  to do: the library looks for the pictures in " + printable(expected) + ": copy " +
                         printable(stream) + " to it, or put the new index in the place of the old one");
    if (shown < fixed.entries.size()) session.status = kFindings;
}

bool isIndex(const FixOptions& options) {
    const std::string bytes = readFile(options.file.path);
    return meant::read(bytes, meantOptions(options.file, options.encoding), meant::systemEncodings()).format ==
           meant::Format::VobSubIndex;
}

}  // namespace

void addFix(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("fix", "Write a copy that the television shows as meant");
    command->footer(
        "Text of any format becomes SubRip in the form that shows without a loss: UTF-8 with\n"
        "a mark, CR LF, entries in order, those that overlap joined, no markup. The copy is\n"
        "opened with the library and compared before it is put in place; the file itself\n"
        "stays as it is.\n\n"
        "Exit status: 0 every entry shows, 3 some do not, 1 not a subtitle file, or the copy\n"
        "cannot be written, 2 wrong usage.\n\n"
        "Examples:  vxsub fix movie.sub --fps 23.976\n"
        "           vxsub fix movie.smi --class ENUSCC -o movie.en.srt");
    addFileArgument(*command, session);
    const auto options = std::make_shared<FixOptions>();
    command
        ->add_option("-o,--output", options->output, "the file to write; when not given, FILE's name\nwith .fixed.srt")
        ->type_name("OUT");
    command->add_flag("--force", options->force, "overwrite OUT");
    CLI::Option* const utf16 = command->add_flag_callback(
        "--utf16", [options] { options->fix.letters = fix::Letters::Utf16; },
        "write UTF-16, for televisions whose subtitle language is Big5");
    command->add_flag("--keep-format", options->fix.keepFormat, "keep the format, where it can show everything")
        ->excludes(utf16);
    command
        ->add_option("--encoding", options->encoding, "encoding of text without a mark; when not given, it is\nguessed")
        ->type_name("NAME");
    command->add_option("--class", options->fix.language, "of a SAMI file, the entries of this class alone")
        ->type_name("NAME");
    command->callback([options, &session] {
        session.run = [options, &session] {
            options->file = session.file;
            if (isIndex(*options)) {
                fixIndexFile(*options, session);
            } else {
                TextFixer(*options, session).fix();
            }
        };
    });
}

}  // namespace vxsub
