// Command-line pieces that several commands share.
#include "Commands.h"
#include "Time.h"

namespace vxsub {
namespace {

using android::U32;

template <class Rows, class Word>
std::string joined(const Rows& rows, Word word, const char* separator) {
    std::string text;
    for (const auto& row : rows) text += (text.empty() ? "" : separator) + std::string(word(row));
    return text;
}

std::string typeWords() {
    return joined(
        formats(), [](const Format& format) { return format.type; }, "|");
}

std::string nativeWords() {
    return joined(
        libraryCharsets(), [](const CharsetRef& charset) { return charset->option; }, "|");
}

constexpr double kSlowest = 0.001, kFastest = 1e6;

}  // namespace

void addFileOptions(CLI::App& command, Session& session) {
    OpenOptions& options = session.file;
    const auto chooseType = [&options](const std::string& word) {
        options.format = findFormat(word);
        if (options.format == nullptr) throw CLI::ValidationError("--type", word + " is none of " + typeWords());
    };
    const auto chooseNative = [&options](const std::string& word) {
        options.native = findNativeCharset(word);
        if (options.native == nullptr)
            throw CLI::ValidationError("--native",
                                       word + " is none of " + nativeWords() + ", and no encoding that iconv knows");
    };
    command
        .add_option_function<std::string>("--type", chooseType, "read the file as this format, whatever its extension")
        ->type_name(typeWords());
    command
        .add_option_function<std::string>("--native", chooseNative,
                                          "encoding of 8-bit text without a byte-order mark, as\n"
                                          "the library converts it, or any NAME that iconv knows;\n"
                                          "when not given, guessed for the whole file")
        ->type_name(nativeWords() + "|NAME");
    command
        .add_option("--language", options.language,
                    "set the television's subtitle language; with big5 the\n"
                    "library keeps Big5 pairs whole, and texts are shown\n"
                    "as Big5 when --native is not given")
        ->type_name("WORD");
    const auto setFrameRate = [&options](const std::string& text) {
        options.frameRate = parseFrameRate(text);
        if (!options.frameRate)
            throw CLI::ValidationError("--fps",
                                       text + " is no frame rate; write 25, 23.976 or the like, from 1 to 999");
    };
    command
        .add_option_function<std::string>("--fps", setFrameRate,
                                          "frames per second of the movie, for files whose times\n"
                                          "are frame numbers; the library rounds to whole frames")
        ->type_name("N");
    command.add_flag("--log", session.log, "show the library's platform log on standard error");
}

void addFileArgument(CLI::App& command, Session& session) {
    command.add_option("FILE", session.file.path, "the subtitle file")->required()->type_name("");
    addFileOptions(command, session);
}

void addRawOption(CLI::App& command, Session& session) {
    command.add_flag("--raw", session.file.raw,
                     "show all units that the library counted in a text;\n"
                     "otherwise a text ends at its first 0");
}

void addJsonOption(CLI::App& command, bool* json) {
    command.add_flag("--json", *json, "write JSON instead of lines for people");
}

void addTrackOption(CLI::App& command, Session& session, const char* description) {
    const auto choose = [&session](const U32& track) { session.file.track = track; };
    command.add_option_function<U32>("--track", choose, description)->type_name("N");
}

void addSpeedOption(CLI::App& command, double* speed) {
    command
        .add_option("--speed", *speed,
                    "how many times as fast as a movie runs, from 0.001\nto 1000000; 1 when not given")
        ->type_name("N")
        ->check([](const std::string& text) -> std::string {
            double value = 0;
            const bool isNumber = CLI::detail::lexical_cast(text, value);
            if (isNumber && value >= kSlowest && value <= kFastest) return {};
            return text + " is no number from 0.001 to 1000000";
        });
}

std::function<void(const std::string&)> timeInto(U32* ms, const char* option) {
    return [ms, option](const std::string& text) {
        const std::optional<U32> time = parseTime(text);
        if (!time) throw CLI::ValidationError(option, text + " is no play time; write " + kTimeForms);
        *ms = *time;
    };
}

}  // namespace vxsub
