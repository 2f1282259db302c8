// vxsub fix: a copy that the television shows as its author meant.
#include "tools/fix/Fix.h"

#include <algorithm>
#include <map>

#include "Commands.h"
#include "Errors.h"
#include "NewFile.h"
#include "ShownEntries.h"
#include "Text.h"
#include "Time.h"
#include "tools/check/Explain.h"
#include "tools/meant/SystemEncodings.h"

namespace vxsub {
namespace {

struct FixOptions {
    OpenOptions file;
    std::string output;    ///< empty: beside the file
    std::string encoding;  ///< of 8-bit text; empty: found out
    fix::Options fix;
    bool force = false;
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
std::vector<bool> shownIn(const check::Shown& shown, const fix::Result& result) {
    const meant::File plan = planOf(result);
    std::vector<bool> isRight = result.isWhole;
    std::vector<bool> isSeen(isRight.size());
    std::vector<bool> isPieceRight(result.pieces.size(), true);
    for (const check::Difference& difference : check::compare(plan, shown).differences)
        if (difference.entry != nullptr) isPieceRight[size_t(difference.entry - plan.entries.data())] = false;
    for (size_t i = 0; i < result.pieces.size(); ++i) {
        for (const size_t entry : result.pieces[i].shows) {
            isSeen[entry] = true;
            if (!isPieceRight[i]) isRight[entry] = false;
        }
    }
    for (size_t i = 0; i < isRight.size(); ++i) isRight[i] = isRight[i] && isSeen[i];
    return isRight;
}

/// The name of the new file: movie.fixed.srt beside movie.sub.
std::string defaultOutput(const FixOptions& options, meant::Format format) {
    const std::string& path = options.file.path;
    const std::string_view ending = extensionOf(path);
    const std::string stem = path.substr(0, path.size() - ending.size());
    return stem + ".fixed" + (format == meant::Format::SubRip ? ".srt" : std::string(ending));
}

class TextFixer {
public:
    TextFixer(const FixOptions& options, Session& session)
        : mOptions(options),
          mSession(session),
          mBytes(readFile(options.file.path)),
          mMeant(meant::read(mBytes, meantOptions(options.file, options.encoding), meant::systemEncodings())) {}

    void fix() {
        const fix::Result result = fix::fix(mMeant, mOptions.fix);
        const std::string& path = mOptions.file.path;
        if (result.format == meant::Format::None) throw FileError(path + ": " + result.refusal);
        NewFile file(mOptions.output.empty() ? defaultOutput(mOptions, result.format) : mOptions.output, path,
                     mOptions.force);
        file.write(result.bytes);
        const std::vector<bool> isShown = shownIn(shownAt(file.pathUntilPut(), result.format), result);
        file.put();
        report(file.path(), isShown, result);
    }

private:
    check::Shown shownAt(const std::string& path, meant::Format format) const {
        OpenOptions options = mOptions.file;
        options.path = path;
        options.format = findFormat(format == meant::Format::SubRip ? "srt" : meant::nameOf(format).endings);
        meant::Encoding utf8;
        utf8.name = "UTF-8";
        return openShown(options, utf8).shown;
    }

    void report(const std::string& path, const std::vector<bool>& isShown, const fix::Result& result) {
        const ShownFile before = openShown(mOptions.file, mMeant.encoding);
        const check::Comparison comparison = check::compare(mMeant, before.shown);
        const size_t count = size_t(std::count(isShown.begin(), isShown.end(), true));
        mSession.out.line("written " + printable(path) + ": " + std::to_string(count) + " of " +
                          std::to_string(isShown.size()) +
                          " entries show at their time (before: " + std::to_string(comparison.right) + ")");
        sayWhatWasWrong(before.shown, comparison);
        sayRemarks(fix::Remark::Kind::Changed, "changed", result);
        sayRemarks(fix::Remark::Kind::NotMended, "not mended", result);
        sayUnexplained(isShown, result);
        if (count < isShown.size()) mSession.status = kFindings;
    }

    void sayWhatWasWrong(const check::Shown& shown, const check::Comparison& comparison) {
        std::map<std::string, size_t> counts;
        for (const check::Finding& finding : check::explain({mMeant, shown, mBytes}, comparison))
            if (finding.cause != nullptr) ++counts[finding.cause->name];
        std::string list;
        for (const auto& [name, count] : counts)
            list += (list.empty() ? "" : ", ") + name + " " + std::to_string(count);
        if (!list.empty()) mSession.out.line("  mended: " + list);
    }

    void sayRemarks(fix::Remark::Kind kind, const char* word, const fix::Result& result) {
        for (const fix::Remark& row : result.remarks) {
            if (row.kind != kind) continue;
            const bool isOfEntries = row.first.offset > 0 || row.count > 1;
            mSession.out.line("  " + std::string(word) + ": " + (isOfEntries ? placesOf(row) : "") +
                              (*row.cause != 0 ? "[" + std::string(row.cause) + "] " : "") + row.sentence);
        }
    }

    std::string placesOf(const fix::Remark& row) const {
        return printable(mOptions.file.path) + ":" + std::to_string(row.first.line) +
               (row.count > 1 ? " and " + std::to_string(row.count - 1) + " more: " : ": ");
    }

    /// What the library shows in another way than it was written to be.
    void sayUnexplained(const std::vector<bool>& isShown, const fix::Result& result) {
        for (size_t i = 0; i < isShown.size(); ++i)
            if (!isShown[i] && result.isWhole[i])
                mSession.out.line("  not mended: " + printable(mOptions.file.path) + ":" +
                                  std::to_string(mMeant.entries[i].place.line) + ": entry " + std::to_string(i + 1) +
                                  " does not show, and nothing says why");
    }

    const FixOptions& mOptions;
    Session& mSession;
    const std::string mBytes;
    const meant::File mMeant;
};

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
    command->add_flag_callback(
        "--utf16", [options] { options->fix.letters = fix::Letters::Utf16; },
        "write UTF-16, for televisions whose subtitle language is Big5");
    command->add_flag("--keep-format", options->fix.keepFormat, "keep the format, where it can show everything");
    command
        ->add_option("--encoding", options->encoding, "encoding of text without a mark; when not given, it is\nguessed")
        ->type_name("NAME");
    command->add_option("--class", options->fix.language, "of a SAMI file, the entries of this class alone")
        ->type_name("NAME");
    command->callback([options, &session] {
        session.run = [options, &session] {
            options->file = session.file;
            TextFixer(*options, session).fix();
        };
    });
}

}  // namespace vxsub
