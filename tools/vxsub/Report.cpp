// vxsub report: files inside the inspector's page, to mail or to attach.
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "Commands.h"
#include "Errors.h"
#include "NewFile.h"
#include "ReportPage.h"
#include "ShownEntries.h"
#include "Text.h"

namespace vxsub {
namespace {

namespace fs = std::filesystem;

struct ReportOptions {
    std::vector<std::string> paths;
    std::string output = "report.html";
    std::string page;  ///< empty: beside the program
    std::optional<android::U32> entry;
    bool force = false;
};

/// The page as it lies beside an installed program, and in a build.
std::string pageBeside(const fs::path& program) {
    std::error_code ignored;
    const fs::path folder = program.parent_path();
    for (const char* place : {"../share/vxsub/vxsub.html", "../page/vxsub.html"})
        if (fs::is_regular_file(folder / place, ignored)) return (folder / place).lexically_normal().string();
    throw FileError(
        "the page that a report is made of has not been built: \"make page\" in the sources builds it, and "
        "--page names one that lies elsewhere");
}

std::string pageFor(const ReportOptions& options) {
    if (!options.page.empty()) return options.page;
    std::error_code ignored;
    return pageBeside(fs::read_symlink("/proc/self/exe", ignored));
}

/// The pictures' file beside an index, in whatever letter case its ending is written; empty when there is none.
std::string picturesOf(const std::string& path) {
    if (strcasecmp(std::string(extensionOf(path)).c_str(), ".idx") != 0) return {};
    const std::string stem = path.substr(0, path.size() - extensionOf(path).size());
    std::error_code ignored;
    for (const char* ending : {".sub", ".SUB", ".Sub"})
        if (fs::is_regular_file(stem + ending, ignored)) return stem + ending;
    return {};
}

/// Files by names that differ also where letter case does not count: "movie.srt", "movie (2).srt".
class Collection {
public:
    void add(const std::string& path) {
        const std::string pictures = picturesOf(path);
        const std::string stem = newStem({path, pictures});
        put(path, stem);
        if (!pictures.empty()) put(pictures, stem);
    }
    const std::vector<EmbeddedFile>& files() const { return mFiles; }

private:
    static std::string nameFor(const std::string& path, const std::string& stem) {
        return stem + std::string(extensionOf(path));
    }
    static std::string lowerCase(std::string text) {
        for (char& c : text) c = char(tolower(c));
        return text;
    }

    std::string newStem(const std::vector<std::string>& paths) const {
        const std::string plain = fs::path(paths[0]).stem().string();
        std::string stem = plain;
        const auto isTaken = [&](const std::string& path) {
            return !path.empty() && isNamed(lowerCase(nameFor(path, stem)));
        };
        for (int number = 2; isTaken(paths[0]) || isTaken(paths[1]); ++number)
            stem = plain + " (" + std::to_string(number) + ")";
        return stem;
    }

    /// Also when a file of another folder would be taken for the other half of its pair.
    bool isNamed(const std::string& name) const {
        const std::string ending(extensionOf(name)), stem = name.substr(0, name.size() - ending.size());
        const char* const other = ending == ".idx" ? ".sub" : ending == ".sub" ? ".idx" : nullptr;
        return mNames.count(name) > 0 || (other != nullptr && mNames.count(stem + other) > 0);
    }

    void put(const std::string& path, const std::string& stem) {
        mFiles.push_back({nameFor(path, stem), readFile(path)});
        mNames.insert(lowerCase(mFiles.back().name));
    }

    std::vector<EmbeddedFile> mFiles;
    std::set<std::string> mNames;
};

/// Pictures that an index takes along are no files of their own.
std::vector<std::string> withoutPictures(const std::vector<std::string>& paths) {
    std::vector<std::string> taken, left;
    for (const std::string& path : paths)
        if (std::string pictures = picturesOf(path); !pictures.empty()) taken.push_back(std::move(pictures));
    for (const std::string& path : paths) {
        std::error_code ignored;
        const bool isTaken = std::any_of(
            taken.begin(), taken.end(), [&](const std::string& other) { return fs::equivalent(path, other, ignored); });
        if (!isTaken) left.push_back(path);
    }
    return left;
}

/// What is read is never overwritten.
void keepSources(const std::string& output, const std::vector<std::string>& paths, const std::string& page) {
    const auto isOutput = [&](const std::string& path) {
        std::error_code ignored;
        return !path.empty() && fs::equivalent(path, output, ignored);
    };
    if (isOutput(page)) throw FileError("cannot write " + output + ": it is the page itself");
    for (const std::string& path : paths)
        if (isOutput(path) || isOutput(picturesOf(path)))
            throw FileError("cannot write " + output + ": it is one of the files");
}

void report(const ReportOptions& options, Output& out) {
    const std::string pagePath = pageFor(options);
    const std::string page = readFile(pagePath);
    Collection collection;
    for (const std::string& path : withoutPictures(options.paths)) collection.add(path);
    const std::string& first = collection.files().front().name;
    keepSources(options.output, options.paths, pagePath);
    NewFile file(options.output, options.paths.front(), options.force);
    file.write(pageWith(collection.files(), page, pagePath));
    file.put();
    const size_t count = collection.files().size();
    out.line("written " + printable(file.path()) + ": the page with " + std::to_string(count) +
             (count == 1 ? " file" : " files"));
    if (options.entry)
        out.line("  to entry " + std::to_string(*options.entry) + " of " + printable(first) + ": " +
                 linkTo(file.path(), first, *options.entry));
}

}  // namespace

void addReport(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("report", "Write a page for a browser, with the files inside");
    command->footer(
        "The page needs no network and no installation: whoever gets it opens it in a browser\n"
        "and sees what the television shows, and why something is missing. An index takes its\n"
        "pictures' file with it. It is as large as the page and, at most, 1.4 times the files.\n\n"
        "In the browser, #file=NAME&entry=N behind the page's name leads to an entry, counted\n"
        "from 0 as in \"vxsub list\"; --entry prints the whole link for the first file.\n\n"
        "Examples:  vxsub report movie.srt -o ticket.html\n"
        "           vxsub report --entry 12 movie.idx");
    const auto options = std::make_shared<ReportOptions>();
    command->add_option("FILE", options->paths, "the files")->required()->type_name("");
    command->add_option("-o,--output", options->output, "the page to write; report.html when not given")
        ->type_name("OUT");
    command->add_option("--entry", options->entry, "an entry of the first file, whose link is printed")->type_name("N");
    command
        ->add_option("--page", options->page,
                     "the page as \"make page\" built it; when not given, the\n"
                     "one that is installed beside vxsub")
        ->type_name("PAGE");
    command->add_flag("--force", options->force, "overwrite OUT");
    command->callback([options, &session] { session.run = [options, &session] { report(*options, session.out); }; });
}

}  // namespace vxsub
