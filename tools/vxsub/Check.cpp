// vxsub check: what does not show as its author meant, and why.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <set>

#include "CheckFile.h"
#include "Commands.h"
#include "Errors.h"
#include "Jobs.h"
#include "Json.h"
#include "PictureOptions.h"
#include "Progress.h"
#include "ShownEntries.h"
#include "Text.h"
#include "tools/meant/SystemEncodings.h"

namespace vxsub {
namespace {

namespace fs = std::filesystem;

struct CheckCommand {
    CheckOptions options;
    std::vector<std::string> paths;
    bool json = false, all = false, strict = false;
    size_t jobs = 0;
};

// -------------------------------------------------------------------------------------------------- one file

/// A file to check.
struct Candidate {
    std::string path;
    bool isFound;  ///< in a directory, not named
};

/// What a process says of its file.
struct Verdict {
    int status = kOk;
    bool isOther = false;  ///< it has nothing to do with subtitles, and nobody said that it had
    std::string words;     ///< for the output
    std::string error;     ///< for standard error
    size_t meant = 0, right = 0;
    std::map<std::string, size_t> causes;

    std::string packed() const {
        const Json json = {status, isOther, words, error, meant, right, causes};
        const std::vector<uint8_t> bytes = Json::to_cbor(json);
        return std::string(bytes.begin(), bytes.end());
    }
    static Verdict unpacked(const std::string& bytes) {
        const Json json = Json::from_cbor(bytes);
        return {json[0], json[1], json[2], json[3], json[4], json[5], json[6]};
    }
};

Json toJson(const check::Remark& remark) {
    Json json = {{"name", check::nameOf(remark)}, {"cost", check::wordFor(remark.cost)}};
    if (remark.place.line != 0) {
        json["line"] = remark.place.line;
        json["offset"] = remark.place.offset;
    }
    if (remark.entry != 0) json["entry"] = remark.entry;
    if (remark.start) json["start"] = *remark.start;
    if (remark.end) json["end"] = *remark.end;
    if (remark.shownAt) json["shown_at"] = *remark.shownAt;
    if (!remark.what.empty()) json["what"] = remark.what;
    json["sentence"] = check::sentenceOf(remark);
    if (remark.cause != nullptr) json["mend"] = remark.cause->mend;
    return json;
}

Json toJson(const check::Report& report, const std::string& path, int status) {
    Json json = {{"file", path}, {"status", status}, {"format", report.format}};
    if (!report.encoding.empty()) json["encoding"] = report.encoding;
    json["meant"] = report.meant;
    json["right"] = report.right;
    Json& findings = json["findings"] = Json::array();
    for (const check::Remark& remark : report.remarks) findings.push_back(toJson(remark));
    return json;
}

Verdict failed(const CheckCommand& command, const std::string& path, const std::string& error) {
    Verdict verdict;
    verdict.status = kFileFailed;
    verdict.error = error;
    if (command.json) verdict.words = toText({{"file", path}, {"status", kFileFailed}, {"error", error}}) + "\n";
    return verdict;
}

/// Notes and the like lie beside subtitles, and one format's ending is theirs as well.
bool isNote(const Candidate& candidate) {
    return candidate.isFound && formatOfPath(candidate.path) == findFormat("txt");
}

Verdict checkOne(const CheckCommand& command, const Candidate& candidate) try {
    const std::string& path = candidate.path;
    CheckOptions options = command.options;
    options.file.path = path;
    const check::Report report = checkFile(options);
    Verdict verdict;
    if (check::hasLoss(report) || (command.strict && !report.remarks.empty())) verdict.status = kFindings;
    verdict.words = command.json ? toText(toJson(report, path, verdict.status)) + "\n"
                                 : check::linesFor(report, printable(path), command.all);
    verdict.meant = report.meant;
    verdict.right = report.right;
    for (const check::Remark& remark : report.remarks) ++verdict.causes[check::nameOf(remark)];
    return verdict;
} catch (const NoSubtitles& error) {
    Verdict other;
    other.isOther = true;
    return isNote(candidate) ? other : failed(command, candidate.path, error.what());
} catch (const FileError& error) {
    return failed(command, candidate.path, error.what());
}

Verdict verdictOf(const CheckCommand& command, const std::string& path, const Jobs::Result& result) {
    if (result.kind == Jobs::Result::Kind::Done) return Verdict::unpacked(result.answer);
    const bool isHung = result.kind == Jobs::Result::Kind::Hung;
    return failed(command, path,
                  path + (isHung ? ": the check took too long and was ended"
                                 : ": the check crashed (signal " + std::to_string(result.signal) + ")"));
}

// ------------------------------------------------------------------------------------------------- all files

/// Endings of subtitle files that no format of the library has; they are checked as well, for what they are.
constexpr const char* kOtherEndings[] = {".vtt", ".mpl", ".lrc", ".ttml", ".dfxp", ".scc",
                                         ".stl", ".pjs", ".aqt", ".rt",   ".dks",  ".mps"};

bool isSubtitleName(const fs::path& path) {
    std::string extension = path.extension().string();
    for (char& c : extension) c = char(tolower(c));
    const bool isOther =
        std::find(std::begin(kOtherEndings), std::end(kOtherEndings), extension) != std::end(kOtherEndings);
    return isOther || formatOfPath(path.string()) != nullptr;
}

/// The pictures of a pair are checked with its index.
bool isOfPair(fs::path path) {
    if (formatOfPath(path.string()) != findFormat("sub")) return false;
    std::error_code ignored;
    return fs::exists(path.replace_extension(".idx"), ignored) || fs::exists(path.replace_extension(".IDX"), ignored);
}

void addFilesIn(const std::string& directory, std::vector<Candidate>* files) {
    std::vector<std::string> found;
    std::error_code error;
    fs::recursive_directory_iterator at(directory, fs::directory_options::skip_permission_denied, error);
    if (error) throw FileError(directory + ": " + error.message());
    for (; at != fs::recursive_directory_iterator(); at.increment(error)) {
        std::error_code ignored;
        if (at->is_regular_file(ignored) && isSubtitleName(at->path()) && !isOfPair(at->path()))
            found.push_back(at->path().string());
    }
    std::sort(found.begin(), found.end());
    for (const std::string& path : found) files->push_back({path, true});
}

std::vector<Candidate> filesOf(const std::vector<std::string>& paths) {
    std::vector<Candidate> files;
    for (const std::string& path : paths) {
        std::error_code ignored;
        if (fs::is_directory(path, ignored))
            addFilesIn(path, &files);
        else
            files.push_back({path, false});
    }
    return files;
}

/// Worst last.
int severityOf(int status) { return status == kFileFailed ? 2 : status == kFindings ? 1 : 0; }

/// What is counted over all files.
class Totals {
public:
    void add(const Verdict& verdict) {
        if (verdict.isOther) return;
        ++mFiles;
        if (severityOf(verdict.status) > severityOf(mStatus)) mStatus = verdict.status;
        mFailed += verdict.status == kFileFailed;
        mRight += verdict.status != kFileFailed && verdict.meant == verdict.right && verdict.causes.empty();
        mMeantEntries += verdict.meant;
        mRightEntries += verdict.right;
        for (const auto& [cause, count] : verdict.causes) {
            ++mCauses[cause].files;
            mCauses[cause].findings += count;
        }
    }

    int status() const { return mStatus; }

    void write(Output& out) const {
        out.line("");
        out.line(std::to_string(mFiles) + (mFiles == 1 ? " file: " : " files: ") + std::to_string(mRight) +
                 " fully right, " + std::to_string(mFiles - mRight - mFailed) + " with findings, " +
                 std::to_string(mFailed) + " not checked");
        out.line(std::to_string(mRightEntries) + " of " + std::to_string(mMeantEntries) + " entries show as meant");
        if (mCauses.empty()) return;
        out.line("  files  findings  cause");
        std::vector<std::pair<std::string, Count>> rows(mCauses.begin(), mCauses.end());
        std::stable_sort(rows.begin(), rows.end(),
                         [](const auto& a, const auto& b) { return a.second.files > b.second.files; });
        for (const auto& [cause, count] : rows) {
            char numbers[64];
            snprintf(numbers, sizeof numbers, "%7zu %9zu  ", count.files, count.findings);
            out.line(numbers + cause);
        }
    }

private:
    struct Count {
        size_t files = 0, findings = 0;
    };
    size_t mFiles = 0, mRight = 0, mFailed = 0, mMeantEntries = 0, mRightEntries = 0;
    std::map<std::string, Count> mCauses;
    int mStatus = kOk;
};

/// How fast it goes, for the bar.
class Pace {
public:
    explicit Pace(size_t total) : mTotal(total), mStart(std::chrono::steady_clock::now()) {}

    std::string step() {
        ++mDone;
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - mStart).count();
        const double rate = double(mDone) / std::max(seconds, 0.001);
        char text[64];
        snprintf(text, sizeof text, " files, %.0f/s, %.0f s left", rate, double(mTotal - mDone) / rate);
        return text;
    }

private:
    size_t mTotal, mDone = 0;
    std::chrono::steady_clock::time_point mStart;
};

void put(const Verdict& verdict, Output& out) {
    out.write(verdict.words);
    if (verdict.error.empty()) return;
    out.flush();  // so that both stand in their order where they end up in one place
    complain(verdict.error);
}

/// On a terminal that shows the bar, the words wait for its end.
int checkAll(const CheckCommand& command, const std::vector<Candidate>& files, Output& out) {
    constexpr double kSecondsEach = 20;
    const size_t jobs = command.jobs != 0 ? command.jobs : size_t(std::max(1L, sysconf(_SC_NPROCESSORS_ONLN)));
    const Jobs crew(jobs, kSecondsEach, [&](size_t number) { return checkOne(command, files[number]).packed(); });
    Totals totals;
    std::vector<Verdict> waiting;
    {
        Progress progress(out, "Checking", files.size());
        Pace pace(files.size());
        crew.run(
            files.size(), [&] { progress.step(pace.step()); },
            [&](size_t number, const Jobs::Result& result) {
                const Verdict verdict = verdictOf(command, files[number].path, result);
                totals.add(verdict);
                if (out.isTerminal())
                    waiting.push_back(verdict);
                else
                    put(verdict, out);
            });
    }
    for (const Verdict& verdict : waiting) put(verdict, out);
    if (!command.json) totals.write(out);
    return totals.status();
}

int check(const CheckCommand& command, Output& out) {
    const std::vector<Candidate> files = filesOf(command.paths);
    if (files.empty()) throw FileError(command.paths.front() + ": holds no subtitle files");
    if (files.size() > 1) return checkAll(command, files, out);
    const Verdict verdict = checkOne(command, files.front());
    put(verdict, out);
    return verdict.status;
}

constexpr char kFooter[] =
    "Compares what the author of a file meant with what the library shows of it: at\n"
    "the start, in the middle and at the end of every entry. Each difference is\n"
    "named by its cause, with the line, what it costs and what helps. Of a cause\n"
    "that repeats the first three places are told; --all tells all. A finding that\n"
    "no rule explains is called \"unexplained\". Entries are counted from 1, in the\n"
    "order of the file.\n\n"
    "Directories are searched for subtitle files; those that end in .txt and hold\n"
    "none are passed over. A file that crashes or hangs the check is reported, and\n"
    "the others go on.\n\n"
    "With --json, one object a line for each file:\n"
    "  {\"file\", \"status\", \"format\", \"encoding\", \"meant\", \"right\",\n"
    "   \"findings\": [{\"name\", \"cost\", \"line\", \"offset\", \"entry\", \"start\", \"end\",\n"
    "                 \"shown_at\", \"what\", \"sentence\", \"mend\"}, ...]}\n"
    "or {\"file\", \"status\", \"error\"}. Times are milliseconds, what does not apply is\n"
    "left out, \"cost\" is entries, times, text, hidden, letters or looks.\n\n"
    "Exit status: 0 nothing is lost, 3 an entry, a time or a text is (--strict: any\n"
    "finding), 1 no subtitle file, 2 wrong usage; of several files the worst, which\n"
    "is 1.\n\n"
    "Examples:  vxsub check movie.srt\n"
    "           vxsub check --language big5 movie.srt\n"
    "           vxsub check --json /media/movies | jq -r 'select(.status == 3).file'";

}  // namespace

void addCheck(CLI::App& app, Session& session) {
    CLI::App* sub = app.add_subcommand("check", "Say what does not show as meant, and why");
    sub->footer(kFooter);
    const auto command = std::make_shared<CheckCommand>();
    sub->add_option("FILE", command->paths, "subtitle files, and directories of them")->required()->type_name("");
    addFileOptions(*sub, session);
    const auto setEncoding = [command](const std::string& name) {
        if (!meant::systemEncodings().open(name))
            throw CLI::ValidationError("--encoding", name + " is no encoding that iconv knows");
        command->options.encoding = name;
    };
    sub->add_option_function<std::string>("--encoding", setEncoding,
                                          "what 8-bit text without a mark is meant to be, as\n"
                                          "iconv names it; when not given, UTF-8 where it is\n"
                                          "well-formed, else a guess for the whole file")
        ->type_name("NAME");
    addSurfaceOption(*sub, &command->options.surface, "the television's size, for pictures");
    sub->add_flag("--all", command->all, "tell every place of a repeated cause");
    sub->add_flag("--strict", command->strict, "exit status 3 for any finding");
    sub->add_flag("--json", command->json, "write JSON instead of lines for people");
    sub->add_option("--jobs", command->jobs,
                    "processes at work, up to 256; as many as cores when not\n"
                    "given")
        ->type_name("N")
        ->check(CLI::Range(1, 256).description(""));
    sub->callback([command, &session] {
        session.run = [command, &session] {
            command->options.file = session.file;
            if (command->options.encoding.empty() && session.file.native != nullptr)
                command->options.encoding = encodingOf(*session.file.native);
            session.status = check(*command, session.out);
        };
    });
}

}  // namespace vxsub
