#include "CheckFile.h"

#include <strings.h>
#include <unistd.h>

#include "Errors.h"
#include "ShownEntries.h"
#include "Stage.h"
#include "tools/check/VobSub.h"
#include "tools/meant/SystemEncodings.h"

namespace vxsub {
namespace {

using namespace android;

check::TakenFor takenFor(const ShownFile& file) {
    switch (file.codeType) {
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE:
            return check::TakenFor::Native;
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8:
            return check::TakenFor::Utf8;
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK:
            return check::TakenFor::Gbk;
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5:
            return check::TakenFor::Big5;
        default:
            return check::TakenFor::Unknown;
    }
}

meant::Format takenAs(const ShownFile& file) {
    switch (file.type) {
        case E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_20:
            return meant::Format::SubViewer20;
        case E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_10:
            return meant::Format::SubViewer10;
        case E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_MICRO_DVD:
            return meant::Format::MicroDvd;
        case E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_DVB_SUBTITLE_SYSTEM:
            return meant::Format::DvbText;
        default:
            return meant::Format::None;
    }
}

bool isEnding(const OpenOptions& file, meant::Format format) {
    return meant::isEndingOf(meantOptions(file).ending, format);
}

[[noreturn]] void refuse(const std::string& path, const std::string& reason) { throw FileError(path + ": " + reason); }

/// Of what is no text.
void requireText(const std::string& path, const meant::File& file) {
    if (file.format == meant::Format::None) throw NoSubtitles(path + ": is no subtitle file but " + file.nature);
    if (file.format == meant::Format::VobSubPictures)
        refuse(path, "holds the pictures of a VobSub pair; check the index beside it");
    if (file.format == meant::Format::Sup)
        refuse(path, "holds SUP pictures, which a plug-in shows; nothing is known of them");
}

std::vector<check::ShownPicture> picturesOf(SubtitleFile& file) {
    std::vector<check::ShownPicture> pictures(file.count());
    for (U32 i = 0; i < file.count(); ++i) {
        check::ShownPicture& picture = pictures[i];
        picture.start = file.entry(i).start;
        picture.hasLanguage = file.tracks()[file.trackOf(i)].language != E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED;
        if (const std::optional<PictureArea> area = file.picture(i)) {
            picture.isGiven = true;
            picture.width = area->u16Width;
            picture.height = area->u16Height;
        }
    }
    return pictures;
}

/// The file beside the index that the library looks for, or one of the same name in other letters.
std::string streamBeside(const std::string& path, bool* hasRightName) {
    const std::string base = path.substr(0, path.size() - std::min<size_t>(path.size(), 3));
    *hasRightName = access((base + "sub").c_str(), R_OK) == 0;
    for (const char* ending : {"sub", "SUB", "Sub"})
        if (access((base + ending).c_str(), R_OK) == 0) return base + ending;
    return {};
}

check::Report checkPair(const CheckOptions& options, const std::string& index) {
    check::Pair pair;
    const std::string path = streamBeside(options.file.path, &pair.hasStream);
    const std::string stream = path.empty() ? "" : readFile(path);
    pair.index = index;
    pair.stream = stream;
    if (options.surface) {
        pair.surfaceWidth = unsigned(options.surface->width);
        pair.surfaceHeight = unsigned(options.surface->height);
    }
    if (pair.hasStream) {
        SubtitleFile file(options.file);
        pair.shown = picturesOf(file);
    }
    enter(Stage::Comparing);
    return check::reportOf(pair);
}

}  // namespace

check::Report checkFile(const CheckOptions& options) {
    const std::string& path = options.file.path;
    const std::string bytes = readFile(path);
    enter(Stage::Meaning);
    const meant::File meant =
        meant::read(bytes, meantOptions(options.file, options.encoding), meant::systemEncodings());
    requireText(path, meant);
    if (meant.format == meant::Format::VobSubIndex && isEnding(options.file, meant::Format::VobSubIndex))
        return checkPair(options, bytes);
    const ShownFile shown = openShown(options.file, meant.encoding);
    enter(Stage::Comparing);
    const bool isTvBig5 = strncasecmp(options.file.language.c_str(), "big5", 4) == 0;
    return check::reportOf({meant, shown.shown, bytes, takenFor(shown), isTvBig5, takenAs(shown)});
}

}  // namespace vxsub
