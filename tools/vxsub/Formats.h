/// The formats that vxsub opens, and the library's names for what it found in a file.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "subtitle/SubtitleParser.h"

namespace vxsub {

/// A file that the program has opened; the descriptor stays the program's.
struct SourceFile {
    std::string path;
    int fd;
    android::S64 length;
};

/// What a format's entries are.
enum class Content {
    Text,
    VobSub,    ///< pictures, from a parser whose own fields tell more
    Pictures,  ///< pictures, as far as the interface tells
};

/// How a file becomes a parser. For a new format, write a row in Formats.cpp; the dialects of .sub have theirs from
/// their list.
struct Format {
    const char* type;                     ///< its word for --type
    const char* name;                     ///< for people
    std::vector<std::string> extensions;  ///< lower case; none for a format that only --type opens
    std::unique_ptr<android::SubtitleParser> (*construct)(SourceFile& file);
    Content content = Content::Text;

    /// What to know of a file whether it opens or not; empty when there is nothing.
    std::string (*remark)(const SourceFile& file) = nullptr;

    /// Why the parser refused the file, where something better can be said than that; empty otherwise.
    std::string (*refusal)(android::SubtitleParser& parser, const SourceFile& file) = nullptr;
};

/// All formats, in the order of the help text.
const std::vector<Format>& formats();

/// The format of that --type word; null when there is none. Any letter case.
const Format* findFormat(std::string_view type);

/// The format that the file name's extension stands for; null when it has none that is known. Any letter case.
const Format* formatOfPath(std::string_view path);

/// From the last point of the file name on (".srt"); empty without one.
std::string_view extensionOf(std::string_view path);

/// Names of what a parser reports: a short one for programs, a longer one for people.
struct Name {
    const char* word;
    const char* phrase;
};
Name nameOf(android::EN_MEDIA_SUBTITLE_PARSER_TYPE type);
Name nameOf(android::EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType);
Name nameOf(android::EN_MEDIA_SUBTITLE_PARSER_LANGUAGE language);

}  // namespace vxsub
