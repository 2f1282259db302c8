// Writes vxsub's manual page, or its completion for a shell: vxsub_manual man|bash|zsh.
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <sstream>

#include "CommandLine.h"
#include "Errors.h"

namespace vxsub {
namespace {

using Options = std::vector<const CLI::Option*>;
using Apps = std::vector<const CLI::App*>;

Options optionsOf(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

Options argumentsOf(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

Apps commandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

/// "-h", "--help"
std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

bool takesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

bool takesMany(const CLI::Option& argument) { return argument.get_items_expected_max() > 1; }

bool isOfEveryCommand(const CLI::App& app, const CLI::Option& option) {
    const auto has = [&](const CLI::App* command) {
        return command->get_option_no_throw(namesOf(option).back()) != nullptr;
    };
    const Apps commands = commandsOf(app);
    return std::all_of(commands.begin(), commands.end(), has);
}

template <class Parts>
std::string joined(const Parts& parts, const std::string& separator) {
    std::string text;
    for (const auto& part : parts) text += (text.empty() ? "" : separator) + std::string(part);
    return text;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

std::string oneLine(const std::string& text) { return replaced(text, "\n", " "); }

/// The words that may be given: those in small letters; capitals stand for something.
std::vector<std::string> wordsOf(const CLI::Option& option) {
    std::vector<std::string> words;
    const std::string type = option.get_type_name();
    if (type.find('|') == type.npos) return words;
    for (const std::string& word : CLI::detail::split(type, '|'))
        if (std::none_of(word.begin(), word.end(), [](unsigned char c) { return isupper(c); })) words.push_back(word);
    return words;
}

bool isPath(const CLI::Option& option) { return option.get_type_name() == "PATH"; }

std::string extensions() {
    std::string all;
    for (const Format& format : formats())
        for (const std::string& extension : format.extensions) all += (all.empty() ? "" : "|") + extension;
    return all;
}

// ------------------------------------------------------------------------------------------------- the manual page

/// Text that means itself.
std::string roff(const std::string& text) {
    std::string escaped = replaced(replaced(text, "\\", "\\e"), "-", "\\-");
    escaped = replaced(replaced(escaped, "'", "\\(aq"), "\n.", "\n\\&.");
    return escaped;
}

/// Lines that stay as they are.
void writeLines(const std::string& lines, std::ostream& out) { out << ".PP\n.nf\n" << roff(lines) << "\n.fi\n"; }

std::string bold(const std::string& text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(const std::string& text) { return "\\fI" + roff(text) + "\\fR"; }

void writeOption(const CLI::Option& option, std::ostream& out) {
    std::vector<std::string> names;
    for (const std::string& name : namesOf(option)) names.push_back(bold(name));
    out << ".TP\n"
        << joined(names, ", ") << (takesValue(option) ? " " + italic(option.get_type_name()) : "") << "\n"
        << roff(oneLine(option.get_description())) << "\n";
}

void writeCommand(const CLI::App& app, const CLI::App& command, std::ostream& out) {
    const std::string name = "vxsub " + command.get_name();
    out << ".SS \"" << name << "\"\n" << bold(name) << " [" << italic("OPTIONS") << "]";
    for (const CLI::Option* argument : argumentsOf(command))
        out << " " << italic(argument->get_name()) << (takesMany(*argument) ? " ..." : "");
    out << "\n.PP\n" << roff(command.get_description()) << ".\n";
    for (const CLI::Option* option : optionsOf(command))
        if (!isOfEveryCommand(app, *option)) writeOption(*option, out);
    writeLines(command.get_footer(), out);
}

void writeManual(const CLI::App& app, std::ostream& out) {
    out << ".TH VXSUB 1 \"\" \"vxsub " VXSUB_VERSION "\" \"User Commands\"\n"
        << ".SH NAME\nvxsub \\- subtitles as a television shows them\n"
        << ".SH SYNOPSIS\n"
        << bold("vxsub") << " " << italic("COMMAND") << " [" << italic("OPTIONS") << "] " << italic("FILE") << " ...\n"
        << ".SH DESCRIPTION\n"
        << roff(app.get_description()) << "\n";
    writeLines(app.get_footer(), out);
    out << ".SH OPTIONS\nEvery command takes these; \\-\\-version stands alone.\n";
    for (const CLI::Option* option : optionsOf(app)) writeOption(*option, out);
    out << ".SH COMMANDS\n";
    for (const CLI::App* command : commandsOf(app)) writeCommand(app, *command, out);
}

// -------------------------------------------------------------------------------------------------- the completions

std::vector<std::string> allNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : optionsOf(app))
        for (const std::string& name : namesOf(*option)) names.push_back(name);
    return names;
}

std::vector<std::string> commandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : commandsOf(app)) names.push_back(command->get_name());
    return names;
}

/// Each option of any command once.
Options distinctOptions(const CLI::App& app) {
    Options options = optionsOf(app);
    for (const CLI::App* command : commandsOf(app))
        for (const CLI::Option* option : optionsOf(*command)) {
            const auto isSame = [option](const CLI::Option* other) { return namesOf(*other) == namesOf(*option); };
            if (std::none_of(options.begin(), options.end(), isSame)) options.push_back(option);
        }
    return options;
}

/// What bash completes behind an option; empty for what it cannot know.
std::string bashValue(const CLI::Option& option) {
    if (isPath(option)) return "compgen -f -- \"$current\"";
    const std::string words = joined(wordsOf(option), " ");
    return words.empty() ? "" : "compgen -W '" + words + "' -- \"$current\"";
}

void writeBashValues(const CLI::App& app, std::ostream& out) {
    std::vector<std::string> unknown;
    for (const CLI::Option* option : distinctOptions(app)) {
        if (!takesValue(*option)) continue;
        const std::string names = joined(namesOf(*option), " | "), value = bashValue(*option);
        if (value.empty())
            unknown.push_back(names);
        else
            out << "    " << names << ") mapfile -t COMPREPLY < <(" << value << ") && return ;;\n";
    }
    out << "    " << joined(unknown, " | ") << ") return ;;\n";
}

void writeBash(const CLI::App& app, std::ostream& out) {
    out << R"(# Completion of vxsub for bash.
_vxsub() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command= words= i
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in )"
        << joined(commandNames(app), " | ") << R"() command=${COMP_WORDS[i]} && break ;; esac
    done
    case $previous in
)";
    writeBashValues(app, out);
    out << "    esac\n    case $command in\n    '') words='" << joined(commandNames(app), " ") << " "
        << joined(allNames(app), " ") << "' ;;\n";
    for (const CLI::App* command : commandsOf(app))
        out << "    " << command->get_name() << ") words='" << joined(allNames(*command), " ") << "' ;;\n";
    out << R"(    esac
    if [[ -z $command || $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    else
        mapfile -t COMPREPLY < <(
            compgen -d -- "$current"
            shopt -s extglob nocasematch
            compgen -f -X '!*.@()"
        << extensions() << R"()' -- "$current"
        )
    fi
}
complete -o filenames -F _vxsub vxsub
)";
}

/// In brackets, or behind a colon.
std::string zshText(const std::string& text) {
    std::string escaped = replaced(oneLine(text), "'", "'\\''");
    for (const char* special : {"[", "]", ":"}) escaped = replaced(escaped, special, std::string("\\") + special);
    return escaped;
}

std::string zshOption(const CLI::Option& option) {
    const std::vector<std::string> names = namesOf(option);
    std::string spec = names.size() == 1 ? "'" + names[0] : "{" + joined(names, ",") + "}'";
    spec += "[" + zshText(option.get_description()) + "]";
    if (!takesValue(option)) return spec + "'";
    const std::vector<std::string> words = wordsOf(option);
    const std::string action = isPath(option) ? "_files" : words.empty() ? "" : "(" + joined(words, " ") + ")";
    return spec + ":" + zshText(words.empty() ? option.get_type_name() : "word") + ":" + action + "'";
}

std::string zshArgument(const CLI::Option& argument) {
    const std::string name = argument.get_name();
    const std::string action = name == "FILE" ? "_files -g \"(#i)*.(" + extensions() + ")(-.)\"" : "";
    return std::string("'") + (takesMany(argument) ? "*" : "") + ":" + name + ":" + action + "'";
}

void writeZsh(const CLI::App& app, std::ostream& out) {
    out << R"(#compdef vxsub
# Completion of vxsub for zsh.
_vxsub() {
    local context state state_descr line
    typeset -A opt_args
    local -a commands=(
)";
    for (const CLI::App* command : commandsOf(app))
        out << "        '" << command->get_name() << ":" << zshText(command->get_description()) << "'\n";
    out << "    )\n    _arguments -C \\\n";
    for (const CLI::Option* option : optionsOf(app)) out << "        " << zshOption(*option) << " \\\n";
    out << R"(        '1:command:->command' '*::argument:->argument'
    case $state in
    command) _describe command commands ;;
    argument)
        case $words[1] in
)";
    for (const CLI::App* command : commandsOf(app)) {
        out << "        " << command->get_name() << ")\n            _arguments";
        for (const CLI::Option* option : optionsOf(*command)) out << " \\\n                " << zshOption(*option);
        for (const CLI::Option* argument : argumentsOf(*command))
            out << " \\\n                " << zshArgument(*argument);
        out << "\n            ;;\n";
    }
    out << R"(        esac
        ;;
    esac
}
_vxsub "$@"
)";
}

int run(const char* what) {
    Output out;
    Session session{out, {}, false, kOk, {}};
    CLI::App app("", "vxsub");
    describe(app, session);
    const struct {
        const char* word;
        void (*write)(const CLI::App& app, std::ostream& out);
    } kWhats[] = {{"man", writeManual}, {"bash", writeBash}, {"zsh", writeZsh}};
    for (const auto& row : kWhats) {
        if (strcmp(what, row.word) != 0) continue;
        std::ostringstream text;
        row.write(app, text);
        out.write(text.str());
        out.flush();
        return 0;
    }
    fprintf(stderr, "vxsub_manual: man, bash or zsh is needed\n");
    return 2;
}

}  // namespace
}  // namespace vxsub

int main(int argc, char** argv) { return vxsub::run(argc == 2 ? argv[1] : ""); }
