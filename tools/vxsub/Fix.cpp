// vxsub fix: a copy that the television shows as its author meant.
#include "tools/fix/Fix.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "CheckFile.h"
#include "Commands.h"
#include "Errors.h"
#include "NewFile.h"
#include "ShownEntries.h"
#include "Stage.h"
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

/// Which of the meant entries show: all of them is in pieces, and every piece is shown as it was written.
std::vector<bool> whatIsShown(const fix::Result& result, const check::Shown& shown) {
    const meant::File plan = planOf(result);
    std::vector<bool> isWrong(result.isWhole.size()), isShown(result.isWhole.size());
    for (const check::Difference& difference : check::compare(plan, shown).differences) {
        if (difference.entry == nullptr) continue;
        const size_t piece = size_t(difference.entry - plan.entries.data());
        for (const size_t entry : result.pieces[piece].shows) isWrong[entry] = true;
    }
    for (const fix::Piece& piece : result.pieces)
        for (const size_t entry : piece.shows) isShown[entry] = result.isWhole[entry] && !isWrong[entry];
    return isShown;
}

/// How often each cause is found.
std::map<std::string, size_t> countsIn(const check::Report& report) {
    std::map<std::string, size_t> counts;
    for (const check::Remark& remark : report.remarks) ++counts[check::nameOf(remark)];
    return counts;
}

bool isNamedAs(const std::string& path, meant::Format format) {
    const std::string_view ending = extensionOf(path);
    return !ending.empty() && meant::isEndingOf(ending.substr(1), format);
}

/// The name of the new file: movie.fixed.srt beside movie.sub. Throws `UsageError` for one that nobody would open.
std::string outputFor(const FixOptions& options, meant::Format format) {
    const meant::FormatName& name = meant::nameOf(format);
    const std::string_view endings = name.endings, path = options.file.path, ending = extensionOf(path);
    const std::string usual = "." + std::string(endings.substr(0, endings.find(' ')));
    if (options.output.empty())
        return std::string(path.substr(0, path.size() - ending.size())) + ".fixed" +
               (isNamedAs(options.file.path, format) ? std::string(ending) : usual);
    if (isNamedAs(options.output, format)) return options.output;
    throw UsageError(std::string("the copy is ") + name.phrase + ": the name of OUT has to end in " + usual);
}

/// ":12: ", or ":12 and 3 more: ".
std::string placeOf(const fix::Remark& row) {
    std::string place = ":" + std::to_string(row.first.line);
    if (row.count > 1) place.append(" and ").append(std::to_string(row.count - 1)).append(" more");
    return place.append(": ");
}

void sayRemarks(fix::Remark::Kind kind, const char* word, const std::vector<fix::Remark>& remarks,
                const std::string& path, Output& out) {
    for (const fix::Remark& row : remarks) {
        if (row.kind != kind) continue;
        std::string line = "  ";
        line.append(word).append(": ");
        if (row.first.offset > 0 || row.count > 1) line.append(printable(path)).append(placeOf(row));
        if (*row.cause != 0) line.append("[").append(row.cause).append("] ");
        out.line(line.append(row.sentence));
    }
}

std::string summary(const std::string& path, size_t shown, size_t all, const char* what, size_t before) {
    return "written " + printable(path) + ": " + std::to_string(shown) + " of " + std::to_string(all) + " " + what +
           " show at their time (before: " + std::to_string(before) + ")";
}

/// What is found no more.
void sayMended(const check::Report& before, const check::Report& after, const std::vector<fix::Remark>& remarks,
               Output& out) {
    const std::map<std::string, size_t> left = countsIn(after);
    std::string mended;
    for (const auto& [name, count] : countsIn(before)) {
        const auto isNotMended = [&name = name](const fix::Remark& row) {
            return row.kind == fix::Remark::Kind::NotMended && name == row.cause;
        };
        if (left.count(name) > 0 || std::any_of(remarks.begin(), remarks.end(), isNotMended)) continue;
        mended += (mended.empty() ? "" : ", ") + name + " " + std::to_string(count);
    }
    if (!mended.empty()) out.line("  mended: " + mended);
}

/// What is still found in the new file.
void sayLeft(const check::Report& after, const std::string& path, Output& out) {
    const std::map<std::string, size_t> left = countsIn(after);
    std::map<std::string, size_t> said;
    for (const check::Remark& remark : after.remarks) {
        const std::string name = check::nameOf(remark);
        if (++said[name] > 1) continue;
        const size_t more = left.at(name) - 1;
        out.line("  not mended: " + printable(path) +
                 (remark.place.line > 0 ? ":" + std::to_string(remark.place.line) : "") +
                 (more > 0 ? " and " + std::to_string(more) + " more" : "") + ": [" + name + "] " +
                 check::sentenceOf(remark));
    }
}

class TextFixer {
public:
    TextFixer(const FixOptions& options, Session& session)
        : mOptions(options),
          mSession(session),
          mBytes(readFile(options.file.path)),
          mMeant(meant::read(mBytes, meantOptions(options.file, options.encoding), meant::systemEncodings())) {}

    void fix() {
        enter(Stage::Writing);
        const meant::Source source(mBytes, meantOptions(mOptions.file, mOptions.encoding), meant::systemEncodings());
        const fix::Result result = fix::fix(mMeant, source, mOptions.fix);
        const std::string& path = mOptions.file.path;
        if (result.format == meant::Format::None && result.remarks.empty())
            throw FileError(path + ": " + result.refusal);
        if (result.format == meant::Format::None) {
            mSession.out.line(printable(path) + ": nothing is written: the file " + result.refusal);
            sayRemarks(fix::Remark::Kind::NotMended, "not mended", result.remarks, path, mSession.out);
            mSession.status = kFindings;
            return;
        }
        NewFile file(outputFor(mOptions, result.format), path, mOptions.force);
        file.write(result.bytes);
        OpenOptions written = mOptions.file;
        written.path = file.pathUntilPut();
        written.format = nullptr;
        meant::Encoding utf8;
        utf8.name = "UTF-8";
        const std::vector<bool> isShown = whatIsShown(result, openShown(written, utf8).shown);
        const check::Report after = checkFile({written, "", std::nullopt});
        file.put();
        report(file.path(), isShown, result, after);
    }

private:
    void report(const std::string& path, const std::vector<bool>& isShown, const fix::Result& result,
                const check::Report& after) {
        const check::Report before = checkFile({mOptions.file, mOptions.encoding, std::nullopt});
        const size_t count = size_t(std::count(isShown.begin(), isShown.end(), true));
        Output& out = mSession.out;
        out.line(summary(path, count, isShown.size(), "entries", before.right));
        sayMended(before, after, result.remarks, out);
        sayRemarks(fix::Remark::Kind::Changed, "changed", result.remarks, mOptions.file.path, out);
        sayRemarks(fix::Remark::Kind::NotMended, "not mended", result.remarks, mOptions.file.path, out);
        sayLeft(after, path, out);
        const bool isCut = std::count(result.isWhole.begin(), result.isWhole.end(), false) > 0;
        if (isCut || check::hasLoss(after)) mSession.status = kFindings;
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
    enter(Stage::Writing);
    const fix::FixedIndex fixed = fix::fixIndex(readFile(path), readFile(stream), meant::systemEncodings());
    if (!fixed.refusal.empty()) throw FileError(path + ": " + fixed.refusal);
    const std::string output = outputFor(options, meant::Format::VobSubIndex);
    NewFile file(output, path, options.force);
    file.write(fixed.bytes);
    const TemporaryDirectory directory;
    fs::create_symlink(fs::absolute(file.pathUntilPut()), directory.path() + "/a.idx");
    fs::create_symlink(fs::absolute(stream), directory.path() + "/a.sub");
    const std::string written = directory.path() + "/a.idx";
    const size_t shown = picturesShown(written, fixed.entries), before = picturesShown(path, fixed.entries);
    CheckOptions check = {options.file, "", std::nullopt};
    const check::Report old = checkFile(check);
    check.file.path = written;
    check.file.format = nullptr;
    const check::Report now = checkFile(check);
    file.put();
    Output& out = session.out;
    out.line(summary(output, shown, fixed.entries.size(), "pictures", before));
    sayMended(old, now, fixed.remarks, out);
    sayRemarks(fix::Remark::Kind::Changed, "changed", fixed.remarks, path, out);
    sayRemarks(fix::Remark::Kind::NotMended, "not mended", fixed.remarks, path, out);
    sayLeft(now, output, out);
    const std::string expected = output.substr(0, output.size() - std::min<size_t>(3, output.size())) + "sub";
    if (!fs::exists(expected))
        out.line("  to do: the library looks for the pictures in " + printable(expected) + ": copy " +
                 printable(stream) + " to it, or put the new index in the place of the old one");
    if (shown < fixed.entries.size() || check::hasLoss(now)) session.status = kFindings;
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
        "stays as it is. Of a VobSub index a new index is written.\n\n"
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
            if (options->encoding.empty() && session.file.native != nullptr)
                options->encoding = encodingOf(*session.file.native);
            // On such a television UTF-8 is damaged.
            if (strncasecmp(session.file.language.c_str(), "big5", 4) == 0) options->fix.letters = fix::Letters::Utf16;
            if (isIndex(*options)) {
                fixIndexFile(*options, session);
            } else {
                TextFixer(*options, session).fix();
            }
        };
    });
}

}  // namespace vxsub
