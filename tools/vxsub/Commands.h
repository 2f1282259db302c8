/// The commands of vxsub. Each has a file of its own; a new one is one more function here and one more row in
/// CommandLine.cpp.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>

#include "Output.h"
#include "SubtitleFile.h"

namespace vxsub {

/// What a command line asks for, filled while it is parsed.
struct Session {
    Output& out;
    OpenOptions file;           ///< what the options on files say
    bool log = false;           ///< show the platform log
    int status = 0;             ///< of the program, when the command has run through
    std::function<void()> run;  ///< the chosen command; throws FileError, ReaderGone
};

void addInfo(CLI::App& app, Session& session);
void addList(CLI::App& app, Session& session);
void addAt(CLI::App& app, Session& session);
void addPlay(CLI::App& app, Session& session);
void addRender(CLI::App& app, Session& session);
void addSheet(CLI::App& app, Session& session);
void addPush(CLI::App& app, Session& session);
void addCheck(CLI::App& app, Session& session);
void addFix(CLI::App& app, Session& session);
void addReport(CLI::App& app, Session& session);

/// The options that every command on a file takes. They stand on the command and, out of the help text's sight, on
/// the program, so that they may stand in front of the command's name, too.
void addFileOptions(CLI::App& command, Session& session);

/// The FILE argument and `addFileOptions`.
void addFileArgument(CLI::App& command, Session& session);

/// --raw, for commands that write texts out.
void addRawOption(CLI::App& command, Session& session);

/// --json, for commands that answer.
void addJsonOption(CLI::App& command, bool* json);

/// --track, for commands on files that may have several.
void addTrackOption(CLI::App& command, Session& session, const char* description);

/// --speed, for commands that play.
void addSpeedOption(CLI::App& command, double* speed);

/// Stores a time; `option` is its name for error texts.
std::function<void(const std::string&)> timeInto(android::U32* ms, const char* option);

}  // namespace vxsub
