// vxsub: a player without a television. Command line, and how each outcome ends the program.
#include <fcntl.h>
#include <signal.h>
#include <strings.h>
#include <unistd.h>

#include "Commands.h"
#include "Errors.h"
#include "Log.h"

namespace vxsub {
namespace {

constexpr void (*kCommands[])(CLI::App&, Session&) = {addInfo,  addList, addAt,    addPlay, addRender,
                                                      addSheet, addPush, addCheck, addFix};

/// Descriptors 0 to 2 are taken from here on, whatever the caller had closed: no file of ours becomes one of them.
void occupyStandardDescriptors() {
    for (int fd = open("/dev/null", O_RDONLY); fd >= 0; fd = open("/dev/null", O_RDONLY)) {
        if (fd <= STDERR_FILENO) continue;
        close(fd);
        return;
    }
}

std::string formatList() {
    std::string text = "Formats:\n";
    for (const Format& format : formats()) {
        std::string extensions;
        for (const std::string& extension : format.extensions) extensions += " ." + extension;
        text += "  " + std::string(format.type) + ":  " + format.name +
                (extensions.empty() ? ", by --type alone" : ", files" + extensions) + "\n";
    }
    return text;
}

void describe(CLI::App& app, Session& session) {
    app.description("vxsub opens a subtitle file with libvxsubtitle and shows what a television would.");
    app.footer(formatList() +
               "\n"
               "Examples:\n"
               "  vxsub info movie.srt                what is in the file\n"
               "  vxsub list movie.srt                all entries\n"
               "  vxsub at movie.srt 1:01.5           what is shown at this play time\n"
               "  vxsub check movie.srt               why something does not show\n"
               "  vxsub fix movie.srt                 write a copy that shows as meant\n"
               "  vxsub play movie.srt --speed 8      watch it\n"
               "  vxsub sheet movie.idx -o sheet.png  all pictures at a glance\n"
               "\n"
               "\"vxsub COMMAND --help\" tells more of each command and lists its options.\n"
               "Exit status: 0 done, 1 the file cannot be shown or the output not be written,\n"
               "2 wrong usage, 3 something does not show as meant.");
    app.get_formatter()->label("REQUIRED", "");
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.get_formatter()->label("Positionals", "Arguments");
    app.get_formatter()->column_width(28);
    app.set_version_flag("--version", "vxsub " VXSUB_VERSION, "print the version and end");
    app.set_help_flag("-h,--help", "print this text and end");
    for (const auto add : kCommands) add(app, session);
    for (CLI::App* command : app.get_subcommands({})) command->group("Commands");
    app.require_subcommand(1);
    addFileOptions(app, session);
    for (CLI::Option* option : app.get_options([](const CLI::Option* o) { return o->nonpositional(); }))
        if (option != app.get_help_ptr() && option != app.get_version_ptr()) option->group("");
}

std::string commandNames(const CLI::App& app) {
    std::string names;
    for (const CLI::App* command : app.get_subcommands({})) names += (names.empty() ? "" : ", ") + command->get_name();
    return names;
}

/// One line that also says where help is.
std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    const std::string help =
        " (see vxsub " + (chosen.empty() ? std::string() : chosen[0]->get_name() + " ") + "--help)";
    const std::vector<std::string> unknown = app.remaining(true);
    if (!unknown.empty() && (unknown[0][0] == '-' || !chosen.empty()))
        return (unknown[0][0] == '-' ? "there is no option " : "one argument too many: ") + unknown[0] + help;
    if (!chosen.empty() || dynamic_cast<const CLI::RequiredError*>(&error) == nullptr) return error.what() + help;
    return (unknown.empty() ? "a command is needed" : "there is no command " + unknown[0]) + "; there are " +
           commandNames(app) + help;
}

int parseAndRun(int argc, char** argv, Output& out) {
    Session session{out, {}, false, kOk, {}};
    CLI::App app("", "vxsub");
    describe(app, session);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        out.write(app.help());
        return kOk;
    } catch (const CLI::CallForVersion& version) {
        out.line(version.what());
        return kOk;
    } catch (const CLI::ParseError& error) {
        throw UsageError(whatIsWrong(app, error));
    }
    if (session.log) {
        showPlatformLog();
        out.showForeignOutput();
    }
    session.run();
    return session.status;
}

int run(int argc, char** argv) {
    occupyStandardDescriptors();
    signal(SIGPIPE, SIG_IGN);  // a reader that has gone is seen where the output is written
    Output out;
    try {
        const int status = parseAndRun(argc, argv, out);
        out.flush();
        return status;
    } catch (const ReaderGone&) {
        return kOk;
    } catch (const UsageError& error) {
        complain(error.what());
        return kWrongUsage;
    } catch (const std::exception& error) {
        complain(error.what());
        return kFileFailed;
    }
}

}  // namespace
}  // namespace vxsub

int main(int argc, char** argv) { return vxsub::run(argc, argv); }
