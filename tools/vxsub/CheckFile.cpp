#include "CheckFile.h"

#include <strings.h>

#include "Errors.h"
#include "ShownEntries.h"
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

[[noreturn]] void refuse(const std::string& path, const std::string& reason) { throw FileError(path + ": " + reason); }

/// Of what is no text.
void requireText(const std::string& path, const meant::File& file) {
    if (file.format == meant::Format::None) refuse(path, "is no subtitle file but " + file.nature);
    if (file.format == meant::Format::VobSubPictures)
        refuse(path, "holds the pictures of a VobSub pair; check the index beside it");
    if (file.format == meant::Format::Sup)
        refuse(path, "holds SUP pictures, which a plug-in shows; nothing is known of them");
}

}  // namespace

check::Report checkFile(const CheckOptions& options) {
    const std::string& path = options.file.path;
    const std::string bytes = readFile(path);
    const meant::File meant =
        meant::read(bytes, meantOptions(options.file, options.encoding), meant::systemEncodings());
    requireText(path, meant);
    const ShownFile shown = openShown(options.file, meant.encoding);
    const bool isTvBig5 = strncasecmp(options.file.language.c_str(), "big5", 4) == 0;
    return check::reportOf({meant, shown.shown, bytes, takenFor(shown), isTvBig5, takenAs(shown)});
}

}  // namespace vxsub
