#include "CommandLine.h"

namespace vxsub {
namespace {

constexpr void (*kCommands[])(CLI::App&, Session&) = {addInfo,  addList, addAt,    addPlay, addRender,
                                                      addSheet, addPush, addCheck, addFix,  addReport};

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

}  // namespace

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
               "  vxsub report movie.srt              a page for a browser, to mail\n"
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

}  // namespace vxsub
