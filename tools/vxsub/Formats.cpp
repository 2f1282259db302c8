#include "Formats.h"

#include <SubDialectHeaders.h>
#include <unistd.h>

#include "subtitle/SubtitleParserSMI.h"
#include "subtitle/SubtitleParserSRT.h"
#include "subtitle/SubtitleParserSSA.h"
#include "subtitle/SubtitleParserSUB.h"
#include "subtitle/SubtitleParserSUBIDX.h"
#include "subtitle/SubtitleParserSUPWrapper.h"
#include "subtitle/SubtitleParserTXT.h"

namespace vxsub {
namespace {

using namespace android;

/// As the player does it: an open descriptor, and the whole file.
template <class Parser>
std::unique_ptr<SubtitleParser> fromDescriptor(SourceFile& file) {
    return std::make_unique<Parser>(file.fd, 0, file.length);
}

/// For formats that find more by the file's name.
template <class Parser>
std::unique_ptr<SubtitleParser> fromPath(SourceFile& file) {
    return std::make_unique<Parser>(&file.path[0]);
}

bool exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

std::string withExtension(const std::string& path, const char* extension) {
    return path.substr(0, path.size() - extensionOf(path).size()) + extension;
}

std::string indexBeside(const SourceFile& file) {
    for (const char* extension : {".idx", ".IDX"}) {
        const std::string index = withExtension(file.path, extension);
        if (index != file.path && exists(index)) return index + " lies beside it; a VobSub pair is opened by that";
    }
    return {};
}

std::string missingPictures(SubtitleParser&, const SourceFile& file) {
    constexpr size_t kPathField = 512;
    if (file.path.size() >= kPathField) return "its path is too long for the library, which keeps 511 bytes";
    if (file.path.size() < 3) return "its name is too short to be an index's";
    const std::string pictures = file.path.substr(0, file.path.size() - 3) + "sub";
    return access(pictures.c_str(), R_OK) == 0 ? "" : "its pictures, " + pictures + ", cannot be read";
}

std::string missingPlugIn(SubtitleParser& parser, const SourceFile&) {
    const std::string plugIn = "/system/lib/libvxsubtitlesup.so";
    const auto& wrapper = static_cast<SubtitleParserSUPWrapper&>(parser);
    if (wrapper.mSupHandle == nullptr)
        return "SUP subtitles need a plug-in, " + plugIn +
               (exists(plugIn) ? ", which cannot be loaded" : ", which is missing");
    return wrapper.mImpl == nullptr ? "the plug-in " + plugIn + " gives no parser for it" : "";
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    return lower;
}

}  // namespace

const std::vector<Format>& formats() {
    static const std::vector<Format> kFormats = {
        {"srt", "SubRip", {"srt"}, fromDescriptor<SubtitleParserSRT>},
        {"ssa", "SubStation Alpha", {"ssa", "ass"}, fromDescriptor<SubtitleParserSSA>},
        {"smi", "SAMI", {"smi", "sami"}, fromDescriptor<SubtitleParserSMI>},
        {"txt", "time-prefixed text", {"txt"}, fromDescriptor<SubtitleParserTXT>},
        {"sub",
         "SubViewer, MicroDVD or DVB text",
         {"sub"},
         fromDescriptor<SubtitleParserSUB>,
         Content::Text,
         indexBeside},
#define VX_SUB_DIALECT(name, type, word, phrase, ...) {#word, phrase, {}, fromDescriptor<SubtitleParser##name>},
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
        {"idx", "VobSub", {"idx"}, fromPath<SubtitleParserSUBIDX>, Content::VobSub, nullptr, missingPictures},
        {"sup", "SUP", {"sup"}, fromPath<SubtitleParserSUPWrapper>, Content::Pictures, nullptr, missingPlugIn},
    };
    return kFormats;
}

const Format* findFormat(std::string_view type) {
    for (const Format& format : formats())
        if (lowerCase(type) == format.type) return &format;
    return nullptr;
}

std::string_view extensionOf(std::string_view path) {
    const size_t name = path.rfind('/') + 1;  // npos + 1 is 0
    const size_t point = path.find_last_of('.');
    return point == path.npos || point < name ? std::string_view() : path.substr(point);
}

const Format* formatOfPath(std::string_view path) {
    const std::string extension = lowerCase(extensionOf(path));
    for (const Format& format : formats())
        for (const std::string& known : format.extensions)
            if (extension == "." + known) return &format;
    return nullptr;
}

Name nameOf(EN_MEDIA_SUBTITLE_PARSER_TYPE type) {
    switch (type) {
        case E_MEDIA_SUBTITLE_PARSER_TYPE_SMI:
            return {"smi", "SAMI"};
        case E_MEDIA_SUBTITLE_PARSER_TYPE_SRT:
            return {"srt", "SubRip"};
        case E_MEDIA_SUBTITLE_PARSER_TYPE_SSA:
            return {"ssa", "SubStation Alpha"};
#define VX_SUB_DIALECT(name, type, word, phrase, ...) \
    case E_MEDIA_SUBTITLE_PARSER_TYPE_##type:         \
        return {#word, phrase};
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
        case E_MEDIA_SUBTITLE_PARSER_TYPE_TXT:
            return {"txt", "time-prefixed text"};
        case E_MEDIA_SUBTITLE_PARSER_TYPE_LRC:
            return {"lrc", "LRC"};
        case E_MEDIA_SUBTITLE_PARSER_TYPE_SUBIDX:
            return {"idx", "VobSub"};
        case E_MEDIA_SUBTITLE_PARSER_TYPE_SUP:
            return {"sup", "SUP"};
        case E_MEDIA_SUBTITLE_PARSER_TYPE_INTERNAL:
            return {"internal", "pushed subtitles"};
        case E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID:
            break;
    }
    return {"unknown", "unknown"};
}

Name nameOf(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType) {
    switch (codeType) {
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE:
            return {"utf-16le", "UTF-16, little-endian (byte-order mark)"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG:
            return {"utf-16be", "UTF-16, big-endian (byte-order mark)"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8:
            return {"utf-8", "UTF-8"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE:
            return {"native", "8-bit, no byte-order mark"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_ARGB8888:
            return {"argb8888", "pictures, ARGB 8-8-8-8"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_ARGB1555:
            return {"argb1555", "pictures, ARGB 1-5-5-5"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_ARGB4444:
            return {"argb4444", "pictures, ARGB 4-4-4-4"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_YUV422:
            return {"yuv422", "pictures, YUV 4:2:2"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I2:
            return {"i2", "pictures, 4 colours"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I4:
            return {"i4", "pictures, 16 colours"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I8:
            return {"i8", "pictures, 256 colours"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5:
            return {"big5", "Big5, as the library judged from the texts (--native overrules)"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK:
            return {"gbk", "GBK, as the library judged from the texts (--native overrules)"};
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN:
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_INVALID:
            break;
    }
    return {"unknown", "unknown"};
}

Name nameOf(EN_MEDIA_SUBTITLE_PARSER_LANGUAGE language) {
    static constexpr Name kLanguages[] = {
        {"undefined", "language not known"},
        {"ge", "German"},
        {"en", "English"},
        {"es", "Spanish"},
        {"el", "Greek"},
        {"fr", "French"},
        {"sh", "Croatian"},
        {"it", "Italian"},
        {"nl", "Dutch"},
        {"pl", "Polish"},
        {"pt", "Portuguese"},
        {"ru", "Russian"},
        {"ro", "Romanian"},
        {"sv", "Swedish"},
        {"ar", "Arabic"},
        {"zh", "Chinese"},
        {"ja", "Japanese"},
        {"ko", "Korean"},
        {"fa", "Farsi"},
        {"fi", "Finnish"},
        {"no", "Norwegian"},
        {"iw", "Hebrew"},
        {"bg", "Bulgarian"},
        {"danish", "Danish"},
        {"hindi", "Hindi"},
    };
    static_assert(sizeof kLanguages / sizeof *kLanguages == E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM, "a row for each");
    return language < E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM ? kLanguages[language] : kLanguages[0];
}

}  // namespace vxsub
