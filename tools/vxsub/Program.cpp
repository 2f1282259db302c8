#include "Program.h"

#include "CommandLine.h"
#include "Errors.h"
#include "Log.h"

namespace vxsub {
namespace {

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

}  // namespace

int run(int argc, char** argv) {
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

}  // namespace vxsub
